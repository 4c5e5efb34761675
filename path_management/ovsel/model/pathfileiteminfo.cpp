#include "ovsel/model/pathfileiteminfo.hpp"

#include <algorithm>

#include <ovsel/names.hpp>

#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"

namespace {
/// Stands in the short extension for one that is there and empty. A real extension that begins with it reads
/// as empty too.
constexpr char16_t emptyExtensionMark = u';';
constexpr std::size_t longestShortExtension = 4;
} // namespace

PathFileItemInfo::PathFileItemInfo(IPathManager* manager, PathAllDirItemInfo* parent,
                                   std::u16string_view itemName, std::u16string_view diskName, bool confirmed,
                                   std::uint32_t fileKind)
    : PathItemInfo(manager, parent, itemName, confirmed, true, ItemClass::File), m_fileKind(fileKind) {
    StoreExtension(diskName);
    LinkAtHead();
}

void PathFileItemInfo::StoreExtension(std::u16string_view diskName) {
    const std::size_t dot = diskName.rfind(u'.');
    if (dot == std::u16string_view::npos)
        return;
    const std::u16string_view extension = diskName.substr(dot + 1);
    if (extension.empty())
        m_shortExtension[0] = emptyExtensionMark;
    else if (extension.size() > longestShortExtension)
        m_longExtension = extension;
    else
        std::copy(extension.begin(), extension.end(), m_shortExtension);
}

const char16_t* PathFileItemInfo::GetExtension() const {
    if (!m_longExtension.empty())
        return m_longExtension.c_str();
    if (m_shortExtension[0] == 0)
        return nullptr;
    return m_shortExtension[0] == emptyExtensionMark ? u"" : m_shortExtension;
}

void PathFileItemInfo::AppendName(ustring& path) const {
    ovConcatPathName(path, GetName());
    if (const char16_t* extension = GetExtension())
        path.append(1, u'.').append(extension);
}

bool PathFileItemInfo::MatchesDiskName(std::u16string_view name) const {
    const ustring& stem = GetName();
    const char16_t* extension = GetExtension();
    if (!extension)
        return name == stem;
    return name.size() > stem.size() && name[stem.size()] == u'.' && name.starts_with(stem) &&
           name.substr(stem.size() + 1) == extension;
}

void PathFileItemInfo::Remove() {
    UnlinkFromNameInfo();
    DeleteIfUnreferenced();
}

void PathFileItemInfo::RemoveFromParent() {
    GetParent()->RemoveFile(this);
    Remove();
}

void PathFileItemInfo::ConvertToSubDir() {
    // The directory comes first, so that the name entry never stands empty.
    GetParent()->AddSubDir(GetName(), true);
    GetPathDir()->PlacePendingItems();
    GetParent()->RemoveFile(this);
    UnlinkKeepingNext();
    GetManager()->DeleteAfterSearches(this);
}
