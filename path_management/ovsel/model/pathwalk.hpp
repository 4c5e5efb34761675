#pragma once

#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/nulldiriteminfo.hpp"

/// The entry at @p position, or the first behind it where that is a current-directory slot without a
/// directory; null past the end.
inline PathDirItemInfo* EntryFrom(const IPathManager& manager, int position) {
    PathDirItemInfo* entry = manager.GetPathEntry(position);
    return entry || position != 0 ? entry : manager.GetPathEntry(1);
}

/// A handle on @p record, or on the path's null record where that is null.
template <class Record>
ovDir OrNullDir(const IPathManager& manager, Record* record) {
    return record ? ovDir(record) : ovDir(manager.GetNullDir());
}
