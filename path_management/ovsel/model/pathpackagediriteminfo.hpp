#pragma once

#include "ovsel/model/pathalldiriteminfo.hpp"

/// A `+` directory: a package: files, classes, packages and a private directory. Plain sub-directories inside
/// leave no record. The record's name is without the sentinel.
class PathPackageDirItemInfo final : public PathAllDirItemInfo {
  public:
    PathPackageDirItemInfo(IPathManager* manager, PathAllDirItemInfo* parent, std::u16string_view name,
                           bool confirmed);

    void AppendName(ustring& path) const override;
    bool MatchesDiskName(std::u16string_view name) const override;
};
