#pragma once

#include <array>
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

/// The same for the length of one question about the disk. A usual name, short and of ASCII, is turned into
/// its path in one pass and takes nothing from the heap.
class DiskPath {
  public:
    explicit DiskPath(const ustring& name);
    DiskPath(const DiskPath&) = delete;
    DiskPath& operator=(const DiskPath&) = delete;

    bool IsGood() const { return m_long.fault == PathFault::None; }
    /// @pre IsGood
    const char* Get() const { return m_isUsual ? m_usual.data() : m_long.path.c_str(); }

  private:
    bool TakeUsual(std::u16string_view rest, const std::string& folder);

    std::array<char, 256> m_usual;
    bool m_isUsual = false;
    ResolvedPath m_long; ///< where m_usual does not do
};

/// A drive type of host_interfaces/platform.hpp for `X:\`, `\\server\share` or `\\server\`; a server alone
/// is remote if any of its mapped shares is.
std::uint32_t RootType(const ustring& root);

/// Is this a type of file system, as statfs tells it, whose changes others may make: network, cluster, user
/// space?
bool IsRemoteFileSystem(std::uint32_t type);

/// Does the folder lie on such a file system?
bool LiesOnRemoteFileSystem(const std::string& folder);

} // namespace linux_host
