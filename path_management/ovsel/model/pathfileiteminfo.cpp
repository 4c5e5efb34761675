#include "ovsel/model/pathfileiteminfo.hpp"

#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/blockpool.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/names/pathnames.hpp"

PathFileItemInfo::PathFileItemInfo(IPathManager* manager, PathAllDirItemInfo* parent,
                                   std::u16string_view itemName, std::u16string_view diskName, bool confirmed,
                                   std::uint32_t fileKind)
    : PathItemInfo(manager, parent, itemName, confirmed, ItemClass::File), m_extension(diskName) {
    SetFileKind(fileKind);
    LinkAtHead();
}

void* PathFileItemInfo::operator new(std::size_t size, IPathManager* manager) {
    return manager->GetBlockPool().Allocate(size);
}

void PathFileItemInfo::operator delete(void* block) { BlockPool::Free(block, sizeof(PathFileItemInfo)); }

void PathFileItemInfo::AppendName(ustring& path) const {
    AppendElement(path, GetName());
    if (const char16_t* extension = GetExtension())
        path.append(1, u'.').append(extension);
}

bool PathFileItemInfo::MatchesDiskName(std::u16string_view name) const {
    const std::u16string_view stem = GetName();
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
    GetManager()->PrepareDeletion();
    // The directory comes first, so that the name entry never stands empty.
    GetParent()->AddSubDir(GetName(), true);
    GetPathDir()->PlacePendingItems();
    GetParent()->RemoveFile(this);
    UnlinkKeepingNext();
    GetManager()->DeleteAfterSearches(this);
}
