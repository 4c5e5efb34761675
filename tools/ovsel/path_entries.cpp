#include "tools/ovsel/path_entries.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include <fmt/format.h>

#include <host_interfaces/filesystem.hpp>
#include <host_interfaces/text.hpp>
#include <linux_host/linux_host.hpp>

#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/output.hpp"

namespace fs = std::filesystem;

namespace tool {
namespace {

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

/// Spelling alone cannot tell `C:\a` from a POSIX name, but nobody means a relative folder called `C:`.
bool HasSystemRoot(std::string_view text) {
    const bool isDrive = text.size() >= 3 && ((text[0] | 0x20) >= 'a' && (text[0] | 0x20) <= 'z') &&
                         text[1] == ':' && IsSeparator(text[2]);
    return isDrive || text.substr(0, 2) == "\\\\";
}

/// Nothing for a name whose root is mapped nowhere: it may still be an odd POSIX name.
std::optional<std::string> PathOfSystemName(const std::string& text) {
    const ustring native = fl::filesystem::make_native_form(fl::i18n::to_ustring(text.c_str()), true);
    try {
        return linux_host::DriveMap::ToPath(fl::filesystem::canonical(native, ustring()));
    } catch (const fl::filesystem::Failure&) {
        return std::nullopt;
    }
}

/// The plain sub-folders in order. Links stay out, since they could lead back; so do dot folders, which the
/// library does not see either.
std::vector<std::string> PlainSubFolders(const std::string& folder) {
    std::error_code error;
    fs::directory_iterator entries(folder, error);
    if (error)
        return {}; // the library says why when the folder is to be added
    std::vector<std::string> names;
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        const std::string name = entries->path().filename().string();
        const bool special = name[0] == '@' || name[0] == '+' || name[0] == '.' || name == "private";
        std::error_code ignored;
        if (!special && entries->symlink_status(ignored).type() == fs::file_type::directory)
            names.push_back(name);
    }
    if (error)
        Complain(fmt::format("{}: {}", Shown(folder), error.message()));
    std::sort(names.begin(), names.end());
    return names;
}

/// In the order of a sorted recursive walk, parents first. It keeps a list of its own instead of calling
/// itself, since the depth of a foreign tree is nobody's choice.
void AddWithSubFolders(const std::string& folder, std::vector<PathEntry>& entries) {
    std::vector<std::string> pending = {folder};
    while (!pending.empty()) {
        const std::string next = std::move(pending.back());
        pending.pop_back();
        entries.push_back({next, next});
        const std::vector<std::string> names = PlainSubFolders(next);
        // Taken from the back: the first name goes in last.
        for (auto name = names.rbegin(); name != names.rend(); ++name)
            pending.push_back(next == "/" ? next + *name : next + "/" + *name);
    }
}

/// Empty parts are dropped: `a::b` means two folders, and an empty one is never the current directory.
std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        if (end != begin)
            parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

std::string ReadWhole(const std::string& file) {
    const bool isStandardInput = file == "-";
    std::ifstream opened;
    if (!isStandardInput)
        opened.open(file, std::ios::binary);
    std::istream& in = isStandardInput ? std::cin : opened;
    // A directory can be opened and fails only when it is read.
    in.peek();
    if (in.bad() || (!isStandardInput && !opened.is_open()))
        throw EnvironmentError(fmt::format("--path-file {}: {}", Shown(file), std::strerror(errno)));
    in.clear(); // an empty list is a list: peek has met its end
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::vector<std::string> ReadList(const std::string& file, bool nulSeparated) {
    const std::string text = ReadWhole(file);
    if (nulSeparated)
        return Split(text, '\0');
    // Taken as lines, such a list would name folders that nobody has written down.
    if (text.find('\0') != std::string::npos)
        throw UsageError(
            fmt::format("--path-file {}: there is a NUL in it; -0 reads such lists", Shown(file)));
    std::vector<std::string> lines = Split(text, '\n');
    lines.erase(std::remove_if(lines.begin(), lines.end(), [](const auto& line) { return line[0] == '#'; }),
                lines.end());
    return lines;
}

} // namespace

std::string AbsolutePath(const std::string& text) {
    if (HasSystemRoot(text))
        if (auto path = PathOfSystemName(text))
            return AbsolutePath(*path);
    // The library keeps an absolute name as it is given, so that `a` and `a/` would be two folders to it.
    fs::path path = text;
    if (path.is_relative()) {
        std::error_code error;
        const fs::path base = fs::current_path(error);
        if (error)
            throw EnvironmentError(fmt::format("{}: no current directory: {}", Shown(text), error.message()));
        path = base / path;
    }
    std::string result = path.lexically_normal().string();
    if (result.size() > 1 && result.back() == '/')
        result.pop_back();
    return result;
}

std::optional<ustring> LibraryName(const std::string& path) {
    auto name = linux_host::DriveMap::ToName(path);
    if (!name)
        Complain(fmt::format("{}: left out: no mapped root holds it, or there is a \\ or : in its name",
                             Shown(path)));
    return name;
}

std::vector<PathEntry> CollectPathEntries(const Options& options) {
    std::vector<PathEntry> entries;
    const auto add = [&](const std::string& folder) { entries.push_back({folder, AbsolutePath(folder)}); };
    // A name given twice may stand twice: the library takes the first and is silent about the second.
    for (const PathSource& source : options.sources) {
        switch (source.kind) {
        case PathSource::Kind::Folder:
            add(source.text);
            break;
        case PathSource::Kind::Recursive:
            AddWithSubFolders(AbsolutePath(source.text), entries);
            break;
        case PathSource::Kind::List:
            for (const std::string& folder : ReadList(source.text, options.nul))
                add(folder);
            break;
        }
    }
    for (const std::string& folder : Split(options.environmentPath, ':'))
        add(folder);
    return entries;
}

} // namespace tool
