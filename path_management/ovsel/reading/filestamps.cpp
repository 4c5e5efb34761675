#include <ovsel/timestamps.hpp>

#include <ovsel/pathlist.hpp>

#include "host_interfaces/text.hpp"
#include "host_interfaces/utility.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/pathalldiriteminfo.hpp"
#include "ovsel/names/pathnames.hpp"

namespace {

constexpr ovTimeStamp_tag noFile = {0xFFFFFFFF, 0};

std::uint32_t FileTimeOf(const ovDir& dir, const ustring& name) {
    return static_cast<std::uint32_t>(dir->GetManager()->GetFileTime(name));
}

/// The directory itself if it is still there, else the one that the file's name says.
ovDir LiveDir(const ovDir& dir, const ustring& name) {
    if (ovIsDirHandleValid(dir) && ovGetDirType(dir) != ovDirTypeNull)
        return dir;
    const ovPath path = ovGetPathOfDir(dir);
    return path == nullptr ? ovDir() : ovFindDirFullName(path, ustring(DirPartOf(name)));
}

} // namespace

ovTimeStamp_tag* ovCreateTimeStamp() {
    auto* stamp = static_cast<ovTimeStamp_tag*>(HostCalloc(1, sizeof(ovTimeStamp_tag)));
    if (stamp)
        *stamp = noFile;
    return stamp;
}

void ovDestroyTimeStamp(ovTimeStamp_tag* stamp) { HostFree(stamp); }

void ovCopyTimeStamp(ovTimeStamp_tag* to, ovTimeStamp_tag* from) { *to = *from; }

bool ovIsFileTimeStampDifferent(ovTimeStamp_tag* a, ovTimeStamp_tag* b) {
    return a->m_fileTime != b->m_fileTime;
}

bool ovGetTimeStampFromDir(ovDir dir, const ustring& name, ovTimeStamp_tag* stamp) {
    if (ovGetDirType(dir) == ovDirTypeNull)
        return false;
    const std::uint32_t time = dir->IsFrozen() ? 0 : FileTimeOf(dir, name);
    *stamp = time == 0 ? noFile : ovTimeStamp_tag{time, dir->GetChangeTick()};
    return true;
}

bool ovGetTimeStampFromDir(ovDir dir, const char* name, ovTimeStamp_tag* stamp) {
    return ovGetTimeStampFromDir(dir, fl::i18n::to_ustring(name), stamp);
}

bool ovHasFileChanged(ovDir dir, const ustring& name, ovTimeStamp_tag* stamp, ovTimeStampUpdate update,
                      bool useDirTick) {
    if (ovGetDirType(dir) != ovDirTypeNull && dir->IsFrozen())
        return false;
    const bool updates = update == ovUpdateTimeStamp;
    if (useDirTick) {
        dir = ovDir(LiveDir(dir, name));
        if (ovGetDirType(dir) == ovDirTypeNull) {
            if (updates)
                stamp->m_dirTick = 0;
            return false;
        }
        if (stamp->m_dirTick == dir->GetChangeTick())
            return false;
        if (updates)
            stamp->m_dirTick = dir->GetChangeTick();
    }
    const std::uint32_t time = FileTimeOf(dir, name);
    if (time == stamp->m_fileTime) {
        stamp->m_dirTick =
            dir->GetChangeTick(); // also in the mode that keeps the stamp: the next call is cheap
        return false;
    }
    if (updates)
        stamp->m_fileTime = time;
    return true;
}

bool ovHasFileChanged(ovDir dir, const char* name, ovTimeStamp_tag* stamp, ovTimeStampUpdate update,
                      bool useDirTick) {
    return ovHasFileChanged(dir, fl::i18n::to_ustring(name), stamp, update, useDirTick);
}
