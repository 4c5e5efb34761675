#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "linux_host/linux_host.hpp"

/// @file
/// What the other rooms of the host ask of the drive map beyond its public face.

namespace linux_host {

/// Why a name has no POSIX path.
enum class PathFault {
    None,
    NoRoot,        ///< not absolute, or no root is mapped that fits
    NulInside,     ///< a system call would see it cut short
    Unconvertible, ///< a unit without a byte form
};

/// What is wrong, for the end of a sentence.
const char* TextOf(PathFault fault);

struct ResolvedPath {
    std::string path; ///< meaningful without a fault only
    PathFault fault = PathFault::None;
};

/// The POSIX path of a name, telling the faults apart. A relative one is taken against the process's current
/// directory; one for which that cannot be had has no root.
ResolvedPath ResolveName(const ustring& name);

/// A drive type of host_interfaces/platform.hpp for `X:\`, `\\server\share` or `\\server\`; a server alone
/// is remote if any of its mapped shares is.
std::uint32_t RootType(const ustring& root);

/// Is this a type of file system, as statfs tells it, whose changes others may make: network, cluster, user
/// space?
bool IsRemoteFileSystem(std::uint32_t type);

/// Does the folder lie on such a file system?
bool LiesOnRemoteFileSystem(const std::string& folder);

} // namespace linux_host
