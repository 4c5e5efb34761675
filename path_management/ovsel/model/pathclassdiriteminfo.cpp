#include "ovsel/model/pathclassdiriteminfo.hpp"

#include "ovsel/names/pathnames.hpp"

#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/names/ovselconstants.hpp"
#include "ovsel/reading/idiritemsiterator.hpp"

PathClassDirItemInfo::PathClassDirItemInfo(IPathManager* manager, PathAllDirItemInfo* parent,
                                           std::u16string_view name, bool confirmed)
    : PathAllDirItemInfo(manager, parent, name, confirmed, ovDirTypeClass) {
    manager->AssignFileSystem(this);
    LinkAtHead();
}

void PathClassDirItemInfo::AppendName(ustring& path) const {
    AppendElement(path, OvselConstants::U16_OOPSENTINEL);
    path += GetName();
}

bool PathClassDirItemInfo::MatchesDiskName(std::u16string_view name) const {
    return !name.empty() && name.front() == OvselConstants::U16_OOPSENTINEL[0] && name.substr(1) == GetName();
}

void PathClassDirItemInfo::ReadContents(IDirItemsIterator& items, bool freeze) {
    for (items.First(); !items.IsDone() && IsLinked(); items.Next()) {
        const DirItemInfo& entry = items.CurrentItem();
        if (entry.kind == DirItemFile)
            AddFile(entry.name, entry.confirmed, entry.fileKind);
        else if (entry.kind == DirItemPrivateDir)
            AddPrivateDir(entry.name, freeze, entry.confirmed);
    }
}

void PathClassDirItemInfo::ReloadContents(IDirItemsIterator& items, const RefreshOptions& options,
                                          ReloadIndex& index) {
    for (items.First(); !items.IsDone() && IsLinked(); items.Next()) {
        const DirItemInfo& entry = items.CurrentItem();
        if (entry.kind == DirItemFile)
            FindOrAddFile(entry, entry.fileKind, index);
        else if (entry.kind == DirItemPrivateDir)
            FindOrAddPrivateDir(entry.name, options, entry.confirmed);
    }
}
