#pragma once

#include "ovsel/model/pathalldiriteminfo.hpp"

/// A `private` directory: files that only its parent sees. Flat: nothing but files in it leaves a record.
class PathPrivateDirItemInfo final : public PathAllDirItemInfo {
  public:
    PathPrivateDirItemInfo(IPathManager* manager, PathAllDirItemInfo* parent, std::u16string_view name,
                           bool confirmed);

  private:
    void ReadContents(IDirItemsIterator& items, bool freeze) override;
    void ReloadContents(IDirItemsIterator& items, const RefreshOptions& options, ReloadIndex& index) override;
};
