#pragma once

#include "ovsel/model/pathdiriteminfo.hpp"

/// "No directory": one for each path, without name, contents or place. A walk over the path begins and ends
/// at it.
class NullDirItemInfo final : public PathDirItemInfo {
  public:
    explicit NullDirItemInfo(IPathManager* manager)
        : PathDirItemInfo(manager, ustring(), u"", -1, ovDirTypeNull) {}

    void AppendName(ustring&) const override {}
    bool MatchesDiskName(std::u16string_view) const override { return false; }
    /// It is in no chain, and nobody is told.
    void Destroy() override {
        MarkUnlinked();
        DeleteIfUnreferenced();
    }
};
