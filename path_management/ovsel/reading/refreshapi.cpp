#include <ovsel/names.hpp>
#include <ovsel/pathlist.hpp>
#include <ovsel/refresh.hpp>

#include "host_interfaces/text.hpp"
#include "ovsel/frame/handlecheck.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/pathalldiriteminfo.hpp"
#include "ovsel/names/ovselconstants.hpp"
#include "ovsel/names/pathnames.hpp"

namespace {

/// Would a directory of that last element be a class, package or private one?
bool IsSpecialLeaf(std::u16string_view leaf) {
    return leaf.starts_with(OvselConstants::U16_OOPSENTINEL) ||
           leaf.starts_with(OvselConstants::U16_OBJPKGSENTINEL) || leaf == PrivateDirName;
}

ovDir ParentOf(const ovPath& path, const ustring& fullName) {
    return ovFindDirFullName(path, ustring(DirPartOf(fullName)));
}

} // namespace

void ovRefreshDirectory(ovDir dir, ovDirRefreshType type) {
    // A callback may drop the last handle on the path, which must not end it in the middle of this.
    const ovPath held = ovGetPathOfDir(dir);
    dir->RefreshDirectory(type);
}

void ovRefreshAllDirectories(ovPath path, ovDirRefreshType type) {
    AssertPathInService(path);
    path->RefreshAllDirectories(type);
}

void ovSetDirChanged(ovDir dir) { dir->SetChangeState(DirChanged); }

ovDir ovSetDirChanged(ovPath path, const ustring& fullName) {
    std::u16string_view name = fullName;
    for (;;) {
        const ovDir dir = ovFindDirFullName(path, ustring(name));
        if (ovGetDirType(dir) != ovDirTypeNull) {
            dir->SetChangeState(DirChanged);
            return dir;
        }
        // A special directory that is not known has just come into being: its parent has changed.
        if (!IsSpecialLeaf(FilePartOf(name))) {
            ovChangedUnknownDir(path);
            return dir;
        }
        name = DirPartOf(name);
    }
}

ovDir ovSetDirChanged(ovPath path, const char* fullName) {
    return ovSetDirChanged(path, fl::i18n::to_ustring(fullName));
}

ovDir ovSetDirRemoved(ovPath path, const ustring& fullName) {
    const ovDir parent = ParentOf(path, fullName);
    if (ovGetDirType(parent) != ovDirTypeNull)
        parent->SetChangeState(DirChanged);
    return parent;
}

ovDir ovSetFullnameChanged(ovPath path, const ustring& fullName) {
    AssertPathInService(path);
    if (fullName.empty())
        return ovGetNullDir(path);
    return ovSetDirChanged(path, ustring(DirPartOf(fullName)));
}

void ovSetAllChanged(ovPath path) {
    AssertPathInService(path);
    path->SetAllChanged(DirChanged);
}

void ovChangedUnknownDir(ovPath path) {
    AssertPathInService(path);
    path->SetAllChanged(DirRecheck);
}

bool ovFreeze(ovDir dir) {
    const ovPath held = ovGetPathOfDir(dir);
    return dir->SetFrozen(true);
}

bool ovUnFreeze(ovDir dir) {
    const ovPath held = ovGetPathOfDir(dir);
    return dir->SetFrozen(false);
}

bool ovIsFrozen(ovDir dir) { return ovGetDirType(dir) != ovDirTypeNull && dir->IsFrozen(); }

bool ovSetFreezeAllAddedDirectories(ovPath path, bool freeze) {
    AssertPathInService(path);
    const bool old = path->GetFreezeAllAddedDirectories();
    path->SetFreezeAllAddedDirectories(freeze);
    return old;
}

bool ovSetDirectoryReloadMessages(ovPath path, bool on) {
    AssertPathInService(path);
    const bool old = path->GetDirectoryReloadMessages();
    path->SetDirectoryReloadMessages(on);
    return old;
}
