#include <vector>

#include <ovsel/cwd.hpp>
#include <ovsel/pathlist.hpp>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/text.hpp"
#include "ovsel/frame/handlecheck.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/model/pathwalk.hpp"

namespace {

/// @pre @p dir is the null record or a path-level one.
ovDir NextPathDir(IPathManager& manager, const ovDir& dir) {
    const bool atNull = ovGetDirType(dir) == ovDirTypeNull;
    const int position = atNull ? 0 : static_cast<PathDirItemInfo*>(*dir)->GetOrder() + 1;
    return OrNullDir(manager, EntryFrom(manager, position));
}

} // namespace

ovDir ovAddDir(ovPath path, const ustring& name, ovDirAddLocn location) {
    const ustring native = fl::filesystem::make_native_form(name, true);
    if (native.empty())
        return ovDir(path->GetNullDir());
    return OrNullDir(**path, path->AddDir(native, location == ovDirAddAtBegin));
}

ovDir ovAddDir(ovPath path, const char* name, ovDirAddLocn location) {
    return ovAddDir(path, fl::i18n::to_ustring(name), location);
}

void ovRemoveDir(ovDir dir) {
    if (!ovIsDirHandleValid(dir) || ovGetDirType(dir) != ovDirTypePath)
        return;
    // A callback may drop the last handle on the path, which must not end it in the middle of this.
    const ovPath held = ovGetPathOfDir(dir);
    held->RemoveDir(static_cast<PathDirItemInfo*>(*dir));
}

bool ovReplacePath(ovPath path, const ustring& directories) {
    AssertPathInService(path);
    return path->ReplacePath(directories);
}

ovDir ovGetNextPathDir(ovDir dir) { return NextPathDir(*dir->GetManager(), dir); }

ovDir ovSelectDirFirstOnPath(ovDir a, ovDir b) {
    const auto position = [](const ovDir& dir) {
        return ovGetDirType(dir) == ovDirTypeNull ? 0 : dir->GetOrderNumber();
    };
    return position(a) > position(b) ? b : a;
}

void ovDeleteNonExistentDirectories(ovPath path) {
    std::vector<ovDir> present;
    for (ovDir dir = ovGetNextPathDir(ovGetCWD(path)); ovGetDirType(dir) != ovDirTypeNull;
         dir = ovGetNextPathDir(dir))
        present.push_back(dir);
    for (const ovDir& dir : present)
        if (ovIsDirHandleValid(dir) && !path->DirExists(ovGetDirName(dir)))
            ovRemoveDir(dir);
}

ovDir ovFindDirFullName(ovPath path, const ustring& name) {
    const ustring native = fl::filesystem::make_native_form(name, true);
    PathItemInfo* found = native.empty() ? nullptr : path->FindDirFullName(native, ovDirTypeNull);
    // A plain sub-directory has an entry and no record.
    return OrNullDir(**path,
                     found && found->IsDirRecord() ? static_cast<PathAllDirItemInfo*>(found) : nullptr);
}

ovDir ovFindDirFullName(ovPath path, const char* name) {
    return ovFindDirFullName(path, fl::i18n::to_ustring(name));
}

ovDir ovGetParentDir(const ovDir& dir) { return OrNullDir(*dir->GetManager(), dir->GetParent()); }

ovDir ovGetPathDir(const ovDir& dir) { return OrNullDir(*dir->GetManager(), dir->GetPathDir()); }

ovDir ovGetPrivateDir(const ovDir& dir) { return OrNullDir(*dir->GetManager(), dir->GetPrivateDir()); }
