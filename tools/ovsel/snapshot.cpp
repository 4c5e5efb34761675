#include "tools/ovsel/snapshot.hpp"

#include <algorithm>

#include <host_interfaces/text.hpp>

#include "tools/ovsel/contents.hpp"

namespace tool {

CacheFolder Snapshot::Take(const ovDir& dir) {
    const ustring fullName = ovGetDirName(dir);
    CacheFolder folder{RelativeName(m_session, fullName), {}, {}};
    if (linux_host::DirectoryAccessibility(fullName) != ovDirAccessible)
        m_unreadable.insert(folder.name);
    const std::vector<ustring> list = FilesIn(dir, nullptr);
    const std::unordered_set<ustring> files(list.begin(), list.end());
    std::unordered_set<ustring> links;
    if (m_links == Links::Asked)
        links = FolderLinks(dir, files);
    for (const ustring& name : NamesIn(dir)) {
        const char letter = !files.contains(name) ? 'd' : links.contains(name) ? 'U' : 'F';
        folder.entries.push_back({letter, LeafOf(name, true)});
    }
    for (const ovDir& child : FoldersIn(dir))
        folder.folders.push_back(Take(child));
    return folder;
}

std::string RelativeName(const Session& session, const ustring& fullName) {
    std::string name =
        fl::i18n::codecvt_ustring_to_narrow_string{}(fullName.substr(session.Prefix().size() + 1));
    std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

ustring FullName(const Session& session, const std::string& relativeName) {
    std::string name = relativeName;
    std::replace(name.begin(), name.end(), '/', '\\');
    return session.Prefix() + u'\\' + fl::i18n::codecvt_narrow_string_to_ustring{}(name);
}

} // namespace tool
