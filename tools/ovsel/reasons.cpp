#include "tools/ovsel/reasons.hpp"

#include <fmt/format.h>

#include <host_interfaces/text.hpp>

#include "tools/ovsel/output.hpp"

namespace tool {
namespace {

/// The kind of the folder tells the rank: each stage of a search looks at one kind only, and a private folder
/// is the asker's own exactly if it lies in the asker's folder.
Rank RankOf(const Session& session, const ovDir& dir, bool constructorsOnly) {
    switch (ovGetDirType(dir)) {
    case ovDirTypeCWD:
        return Rank::CurrentDirectory;
    case ovDirTypeClass:
        return constructorsOnly ? Rank::Constructor : Rank::ClassFolder;
    case ovDirTypePackage:
        return Rank::PackageFolder;
    case ovDirTypePrivate:
        return ovIsSameDir(ovGetParentDir(dir), session.AskerFolder()) ? Rank::OwnPrivate
                                                                       : Rank::OtherPrivate;
    default:
        return Rank::PathFolder;
    }
}

/// The folder as it lies below its folder of the path, such as `+gfx/@plot`.
std::string NameBelowPath(const ovDir& dir) {
    const std::size_t length = ovGetDirName(ovGetPathDir(dir)).size();
    ustring below = ovGetDirName(dir).substr(length);
    below.erase(0, below.find_first_not_of(u'\\'));
    const std::string narrow = fl::i18n::codecvt_ustring_to_narrow_string{}(below);
    std::string shown;
    for (const char c : narrow)
        shown += c == '\\' ? '/' : c;
    return Shown(shown);
}

/// Positions are the library's own: 0 is kept for the current directory, the path begins at 1.
std::string Location(std::size_t position) {
    return position == 0 ? "the current directory" : fmt::format("path position {}", position);
}

std::string Text(Rank rank, std::size_t position, const ovDir& dir) {
    switch (rank) {
    case Rank::OwnPrivate:
        return "own private folder";
    // A file of a class folder that bears the class's name: the name is said again, since that is the reason.
    case Rank::Constructor: {
        const std::string name = fl::i18n::codecvt_ustring_to_narrow_string{}(ovGetBaseDirName(dir));
        return fmt::format("constructor ({}/{}) in {}", NameBelowPath(dir), Shown(name), Location(position));
    }
    case Rank::CurrentDirectory:
        return "current directory";
    case Rank::PathFolder:
        return Location(position);
    case Rank::ClassFolder:
        return fmt::format("class folder {} in {}", NameBelowPath(dir), Location(position));
    case Rank::PackageFolder:
        return fmt::format("package folder {} in {}", NameBelowPath(dir), Location(position));
    case Rank::OtherPrivate:
        return fmt::format("{} folder in {}", NameBelowPath(dir), Location(position));
    }
    return {};
}

} // namespace

// Scripts compare these words: they are promised in the help and do not change with the texts above.
const char* Reason::Code() const {
    switch (rank) {
    case Rank::OwnPrivate:
        return "own_private";
    case Rank::Constructor:
        return "constructor";
    case Rank::CurrentDirectory:
        return "current_directory";
    case Rank::PathFolder:
        return "path";
    case Rank::ClassFolder:
        return "class_folder";
    case Rank::PackageFolder:
        return "package_folder";
    case Rank::OtherPrivate:
        return "private";
    }
    return "";
}

Reason Explain(const Session& session, const ovDir& dir, bool constructorsOnly) {
    const Rank rank = RankOf(session, dir, constructorsOnly);
    const std::size_t position = session.PositionOf(dir);
    return {rank, position, Text(rank, position, dir)};
}

} // namespace tool
