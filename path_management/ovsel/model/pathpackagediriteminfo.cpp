#include "ovsel/model/pathpackagediriteminfo.hpp"

#include "ovsel/names/pathnames.hpp"

#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/names/ovselconstants.hpp"
#include "ovsel/reading/idiritemsiterator.hpp"

PathPackageDirItemInfo::PathPackageDirItemInfo(IPathManager* manager, PathAllDirItemInfo* parent,
                                               std::u16string_view name, bool confirmed)
    : PathAllDirItemInfo(manager, parent, name, confirmed, ovDirTypePackage) {
    manager->AssignFileSystem(this);
    LinkAtHead();
}

void PathPackageDirItemInfo::AppendName(ustring& path) const {
    AppendElement(path, OvselConstants::U16_OBJPKGSENTINEL);
    path += GetName();
}

bool PathPackageDirItemInfo::MatchesDiskName(std::u16string_view name) const {
    return !name.empty() && name.front() == OvselConstants::U16_OBJPKGSENTINEL[0] &&
           name.substr(1) == GetName();
}
