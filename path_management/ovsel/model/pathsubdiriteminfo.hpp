#pragma once

#include "ovsel/model/pathiteminfo.hpp"

/// A plain sub-directory: that the name exists as a directory is all that is known; its contents are never
/// read.
class PathSubDirItemInfo final : public PathItemInfo {
  public:
    PathSubDirItemInfo(IPathManager* manager, PathAllDirItemInfo* parent, std::u16string_view name,
                       bool confirmed)
        : PathItemInfo(manager, parent, name, confirmed, ItemClass::SubDir) {
        LinkAtHead();
    }

    /// Ends the record. @pre its parent's container no longer holds it.
    void Remove() {
        UnlinkFromNameInfo();
        DeleteIfUnreferenced();
    }
};
