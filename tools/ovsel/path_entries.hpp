#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <host_interfaces/ustring.hpp>

#include "tools/ovsel/options.hpp"

namespace tool {

/// A folder that is to stand on the path: as the user wrote it, and made absolute.
struct PathEntry {
    std::string shown;
    std::string path;
};

/// Makes an absolute POSIX path by text alone: `.` and `..` resolved, no separator at the end, links not
/// followed. A relative one is taken from the process's current directory. Names of the library's own grammar
/// (`C:\a`, `\\server\share\a`) are accepted too, where the drive map knows their root.
/// @throws EnvironmentError when there is no current directory to start from.
std::string AbsolutePath(const std::string& text);

/// The library's name of @p path, or nothing, with a complaint, when the grammar cannot spell it.
std::optional<ustring> LibraryName(const std::string& path);

/// All folders of the path in order: the sources as the command line gives them, then OVSEL_PATH.
/// @throws EnvironmentError when a list cannot be read, UsageError when it holds NUL without -0.
std::vector<PathEntry> CollectPathEntries(const Options& options);

} // namespace tool
