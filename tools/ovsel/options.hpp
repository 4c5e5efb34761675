#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <linux_host/linux_host.hpp>

namespace tool {

enum class Command { Which, Tree, Dirs, Watch, Class, CacheWrite, CacheShow, CacheVerify };
enum class Scope { All, Visible, Path, Method, Private, Dir };
enum class Form { Native, System };
enum class ColorWhen { Auto, Always, Never };

/// One of -p, -r and --path-file. Their common order on the command line is the order of the path.
struct PathSource {
    enum class Kind { Folder, Recursive, List };
    Kind kind;
    std::string text;
};

struct Mount {
    std::string root;
    std::string folder;
    linux_host::DriveMap::Kind kind;
};

/// The command line, checked as far as that goes without looking at the disk.
struct Options {
    Command command = Command::Which;

    std::vector<PathSource> sources;
    std::optional<std::string> cwd;
    bool hideCwd = false;
    /// What OVSEL_PATH holds; it comes behind all sources.
    std::string environmentPath;

    /// Without value: any extension. An empty string in it stands for files without one.
    std::optional<std::vector<std::string>> extensions;
    std::optional<std::string> from;
    bool ignoreCase = false;
    std::vector<Mount> mounts;

    std::optional<std::string> cache;  ///< the file to start from
    std::optional<std::string> prefix; ///< with a cache, in use, written or verified

    bool json = false;
    /// Names end in NUL, on the way out and in --path-file.
    bool nul = false;
    ColorWhen color = ColorWhen::Auto;
    Form form = Form::Native;
    bool stats = false;

    std::vector<std::string> names; ///< which, class; watch, where none means all
    bool all = false;               ///< which
    bool dirs = false;              ///< which
    Scope scope = Scope::Visible;   ///< which
    std::optional<unsigned> depth;  ///< tree

    std::chrono::milliseconds interval{200}; ///< watch
    bool once = false;                       ///< watch

    std::string classPattern = R"(^\s*classdef\b)"; ///< class, cache write, cache verify
    /// The same; a program and its arguments. Empty: the pattern decides.
    std::vector<std::string> classCommand;

    std::string file;     ///< cache write, show, verify
    bool classes = false; ///< cache write
};

/// Reads the command line into @p options.
/// @return the exit status if the run ends here: help, version, or wrong usage (already reported).
/// @throws UsageError for what only a second look finds.
std::optional<int> ParseOptions(int argc, const char* const* argv, Options& options);

} // namespace tool
