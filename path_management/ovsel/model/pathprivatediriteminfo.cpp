#include "ovsel/model/pathprivatediriteminfo.hpp"

#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/reading/idiritemsiterator.hpp"

PathPrivateDirItemInfo::PathPrivateDirItemInfo(IPathManager* manager, PathAllDirItemInfo* parent,
                                               std::u16string_view name, bool confirmed)
    : PathAllDirItemInfo(manager, parent, name, confirmed, ovDirTypePrivate) {
    manager->AssignFileSystem(this);
    LinkAtHead();
}

// A private file defines no class, whatever the source says of it.

void PathPrivateDirItemInfo::ReadContents(IDirItemsIterator& items, bool) {
    for (items.First(); !items.IsDone() && IsLinked(); items.Next()) {
        const DirItemInfo& entry = items.CurrentItem();
        if (entry.kind == DirItemFile)
            AddFile(entry.name, entry.confirmed, FileKindNoClass);
    }
}

void PathPrivateDirItemInfo::ReloadContents(IDirItemsIterator& items, const RefreshOptions&,
                                            ReloadIndex& index) {
    for (items.First(); !items.IsDone() && IsLinked(); items.Next())
        if (items.CurrentItem().kind == DirItemFile)
            FindOrAddFile(items.CurrentItem(), FileKindNoClass, index);
}
