#include "tools/ovsel/contents.hpp"

#include <algorithm>
#include <unordered_set>

#include <host_interfaces/text.hpp>
#include <linux_host/linux_host.hpp>

#include "tools/ovsel/search.hpp"

namespace tool {
namespace {

using NameSet = std::unordered_set<ustring>;

/// An empty name stands for every item, so the walk costs one step per entry and no look-up.
Search EverythingIn(const ovDir& dir, ovExtensionList extensions) {
    return Search(ovCreateDirSearchIterator(dir, ustring(), extensions, ovCaseOfPath));
}

void ReadFilesAndSubFolders(const Session& session, const ovDir& dir, Contents& contents) {
    const std::vector<ustring> all = FilesIn(dir, nullptr);
    const NameSet files(all.begin(), all.end());
    // A cache is believed, whatever the disk holds.
    const bool fromCache = session.UsesCache() && session.IsUnderPrefix(ovGetDirName(dir));
    const NameSet links = fromCache ? NameSet() : FolderLinks(dir, files);
    for (ustring& file : FilesIn(dir, session.Extensions()))
        if (links.count(file) == 0)
            contents.files.push_back(std::move(file));
    // In the storage layer's mode a cache gives them by what is known of them.
    std::sort(contents.files.begin(), contents.files.end());

    // Special folders keep no plain sub-folders; showing a link to one there would be inconsistent.
    const bool showsSubFolders = ovIsSameDir(dir, ovGetPathDir(dir));
    if (!showsSubFolders)
        return;
    contents.subFolders.assign(links.begin(), links.end());
    // Sub-folders can be asked for together with files only.
    for (Search search = EverythingIn(dir, nullptr); auto item = search.NextUnspecified();)
        if (files.count(item->name) == 0)
            contents.subFolders.push_back(std::move(item->name));
    std::sort(contents.subFolders.begin(), contents.subFolders.end());
}

} // namespace

NameSet FolderLinks(const ovDir& dir, const NameSet& files) {
    NameSet links;
    const ustring folder = ovGetDirName(dir);
    const auto listing = linux_host::ListDirectory(folder);
    if (!listing)
        return links;
    // A root ends in its separator already.
    const ustring prefix = folder.back() == u'\\' ? folder : folder + u'\\';
    const char16_t* name = listing->names.c_str();
    for (const unsigned short word : listing->words) {
        ustring full = prefix + name;
        name += full.size() - prefix.size() + 1;
        // Only where the system told no kind is there anything to ask, so an ordinary folder costs no
        // question.
        if (word == 0 && files.count(full) != 0 && linux_host::DirectoryExists(full))
            links.insert(std::move(full));
    }
    return links;
}

std::vector<ustring> FilesIn(const ovDir& dir, ovExtensionList extensions) {
    std::vector<ustring> files;
    for (Search search = EverythingIn(dir, extensions); auto file = search.NextFile();)
        files.push_back(std::move(file->name));
    return files;
}

Contents ReadContents(const Session& session, const ovDir& dir) {
    Contents contents;
    ReadFilesAndSubFolders(session, dir, contents);
    for (const ovDir& child : FoldersIn(dir)) {
        switch (ovGetDirType(child)) {
        case ovDirTypePackage:
            contents.packages.push_back(child);
            break;
        case ovDirTypeClass:
            contents.classes.push_back(child);
            break;
        default: // a folder holds nothing else that has a record
            contents.privateFolder = child;
            break;
        }
    }
    return contents;
}

std::vector<ovDir> FoldersIn(const ovDir& dir) {
    std::vector<ovDir> folders;
    for (Search search = EverythingIn(dir, nullptr); auto child = search.NextDir();)
        folders.push_back(*child);
    return folders;
}

std::vector<ovDir> FoldersBelow(const ovDir& dir) {
    std::vector<ovDir> folders = {dir};
    // The list grows while it is walked, level by level; an index stays good where an iterator would not.
    for (std::size_t i = 0; i < folders.size(); ++i)
        for (const ovDir& child : FoldersIn(folders[i]))
            folders.push_back(child);
    return folders;
}

std::vector<ustring> NamesIn(const ovDir& dir) {
    std::vector<ustring> names;
    for (Search search = EverythingIn(dir, nullptr); auto item = search.NextUnspecified();)
        names.push_back(std::move(item->name));
    return names;
}

std::string LeafOf(const ustring& fullName, bool withExtension) {
    const std::string full = fl::i18n::codecvt_ustring_to_narrow_string{}(fullName);
    std::string leaf = full.substr(full.rfind('\\') + 1);
    if (!withExtension)
        leaf.resize(std::min(leaf.rfind('.'), leaf.size()));
    return leaf;
}

} // namespace tool
