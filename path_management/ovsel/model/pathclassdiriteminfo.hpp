#pragma once

#include "ovsel/model/pathalldiriteminfo.hpp"

/// A `@` directory: the methods of a class, with its constructor in the file of its own name. Holds files and
/// a private directory; class, package and plain directories inside are invisible. The record's name is
/// without the sentinel.
class PathClassDirItemInfo final : public PathAllDirItemInfo {
  public:
    PathClassDirItemInfo(IPathManager* manager, PathAllDirItemInfo* parent, std::u16string_view name,
                         bool confirmed);

    void AppendName(ustring& path) const override;
    bool MatchesDiskName(std::u16string_view name) const override;

  private:
    void ReadContents(IDirItemsIterator& items, bool freeze) override;
    void ReloadContents(IDirItemsIterator& items, const RefreshOptions& options, ReloadIndex& index) override;
};
