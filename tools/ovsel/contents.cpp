#include "tools/ovsel/contents.hpp"

#include <unordered_set>

#include <linux_host/linux_host.hpp>

#include "tools/ovsel/search.hpp"

namespace tool {
namespace {

/// The library finds out whether a link leads to a file or a folder when somebody asks for its very name, and
/// not before. So each one is asked for.
void SettleLinks(const Session& session, const ovDir& dir) {
    const auto listing = linux_host::ListDirectory(ovGetDirName(dir));
    if (!listing)
        return;
    const char16_t* name = listing->names.c_str();
    for (const unsigned short word : listing->words) {
        const ustring text = name;
        name += text.size() + 1;
        if (word != 0 || text[0] == u'.')
            continue;
        Search search(ovCreateAllSearchIterator(session.Path(), text, nullptr, ovCaseOfPath));
        while (search.NextFile())
            continue;
    }
}

Search EverythingIn(const ovDir& dir, ovExtensionList extensions) {
    return Search(ovCreateDirSearchIterator(dir, ustring(), extensions, ovCaseOfPath));
}

} // namespace

Contents ReadContents(const Session& session, const ovDir& dir) {
    SettleLinks(session, dir);
    Contents contents;
    for (Search search = EverythingIn(dir, session.Extensions()); auto file = search.NextFile();)
        contents.files.push_back(std::move(file->name));

    for (Search search = EverythingIn(dir, nullptr); auto child = search.NextDir();) {
        switch (ovGetDirType(*child)) {
        case ovDirTypePackage:
            contents.packages.push_back(*child);
            break;
        case ovDirTypeClass:
            contents.classes.push_back(*child);
            break;
        default:
            contents.privateFolder = *child;
            break;
        }
    }

    // Files and sub-folders can be asked for together only.
    std::unordered_set<ustring> files;
    for (Search search = EverythingIn(dir, nullptr); auto file = search.NextFile();)
        files.insert(std::move(file->name));
    for (Search search = EverythingIn(dir, nullptr); auto item = search.NextUnspecified();)
        if (files.count(item->name) == 0)
            contents.subFolders.push_back(std::move(item->name));
    return contents;
}

} // namespace tool
