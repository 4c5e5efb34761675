#include <cstring>

#include <ovsel/search.hpp>

#include "host_interfaces/text.hpp"
#include "host_interfaces/utility.hpp"
#include "ovsel/lookup/pathnameinfo.hpp"
#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathpackagediriteminfo.hpp"
#include "ovsel/model/pathwalk.hpp"
#include "ovsel/names/nameequality.hpp"

namespace {

/// What a walk over children starts behind: nothing if it is handed the directory itself.
const PathItemInfo* StartOf(const ovDir& dir, const ovDir& previous) {
    return previous == dir ? nullptr : *previous;
}

bool IsWalkOver(const ovDir& dir, const ovDir& previous) { return previous != dir && !*previous; }

bool LiesIn(const PathItemInfo* item, const PathDirItemInfo* dir) { return item->GetPathDir() == dir; }

/// The first class directory of the chain that a walk from @p dir may begin at.
const PathItemInfo* ChainStart(const IPathManager& manager, const PathItemInfo* head, const ovDir& dir) {
    const PathDirItemInfo* cwd = manager.GetCWD();
    const bool skipsCWD = *dir == cwd || manager.IsCWDHidden();
    return head && skipsCWD && LiesIn(head, cwd) ? head->GetNext() : head;
}

} // namespace

ovDir ovGetMethodDirs(ovDir dir, ovDir previous) {
    PathClassDirItemInfo* next =
        IsWalkOver(dir, previous) ? nullptr : dir->GetNextClassDir(StartOf(dir, previous));
    return OrNullDir(*dir->GetManager(), next);
}

ovDir ovGetPackageDirs(ovDir dir, ovDir previous) {
    PathPackageDirItemInfo* next =
        IsWalkOver(dir, previous) ? nullptr : dir->GetNextPackageDir(StartOf(dir, previous));
    return OrNullDir(*dir->GetManager(), next);
}

ovDir ovGetNextMethodDir(ovDir dir) {
    const IPathManager& manager = *dir->GetManager();
    const ovDirType type = ovGetDirType(dir);
    const PathItemInfo* previous = type == ovDirTypeClass ? *dir : nullptr;
    const PathDirItemInfo* entry =
        previous ? dir->GetPathDir() : EntryFrom(manager, type == ovDirTypeNull ? 0 : 1);
    for (; entry; entry = manager.GetPathEntry(entry->GetOrder() + 1), previous = nullptr)
        if (PathClassDirItemInfo* next = entry->GetNextClassDir(previous))
            return ovDir(next);
    return ovDir(manager.GetNullDir());
}

ovDir ovGetNextMethodClassDir(ovDir dir, const char* className, ovCaseSensitivity rule) {
    const IPathManager& manager = *dir->GetManager();
    if (ovGetDirType(dir) == ovDirTypeClass)
        return OrNullDir(manager, static_cast<PathAllDirItemInfo*>(dir->GetNext()));
    if (!IsAll7Bit(className, std::strlen(className)))
        return ovDir(manager.GetNullDir());
    const ustring name = fl::i18n::codecvt_ascii_to_ustring()(className);
    const bool caseSensitive = rule == ovCaseOfPath ? manager.IsCaseSensitive() : rule == ovCaseSensitive;
    const PathNameInfo* info = manager.FindNameInfo(name);
    const PathItemInfo* item = ChainStart(manager, info ? info->GetChain(NameClassDir) : nullptr, dir);
    for (; item; item = item->GetNext())
        if (item->GetParent()->IsPathDir() && NamesEqual(item->GetName(), name, caseSensitive))
            return ovDir(static_cast<PathAllDirItemInfo*>(const_cast<PathItemInfo*>(item)));
    return ovDir(manager.GetNullDir());
}
