#pragma once

#include <vector>

#include "ovsel/lookup/ovsearchcontexti.hpp"
#include "ovsel/lookup/pathitemiterators.hpp"

namespace Quorrant::ovsel {

/// A search without a name: every item of the scope, directory by directory.
class ovSearchAllContextI final : public ovSearchContextI {
  public:
    explicit ovSearchAllContextI(const SearchQuestion& question);

    ovDir FindNextFileBounded(ustring& fullName, std::int32_t* match) override;
    ovDir FindNextDir(ustring& fullName) override;
    ovDir FindNextSubDir(ustring& fullName) override;

  private:
    void AppendIterators(const ovDir& dir);
    PathItemInfo* NextItem() override;
    /// Keeps what the walk wrote.
    void ForgetMatch(std::int32_t*) const override {}
    std::int32_t ItemClassOf(const PathItemInfo& item) const override;

    std::vector<PathItemIterator> m_iterators;
};

} // namespace Quorrant::ovsel
