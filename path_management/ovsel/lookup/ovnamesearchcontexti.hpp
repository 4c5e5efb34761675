#pragma once

#include "ovsel/lookup/nameiterators.hpp"
#include "ovsel/lookup/ovsearchcontexti.hpp"

namespace Quorrant::ovsel {

/// A search for a name: one probe of the index, then the chains of that name in the order of precedence.
class ovNameSearchContextI final : public ovSearchContextI {
  public:
    explicit ovNameSearchContextI(const SearchQuestion& question);

    ovDir FindNextDir(ustring& fullName) override;
    ovDir FindNextSubDir(ustring& fullName) override;

  private:
    void BuildIterators() override;
    void AppendIterators();
    void AppendDirScope(const ovDir& dir);
    PathItemInfo* NextItem() override;
    void ForgetMatch(std::int32_t* match) const override;
    std::int32_t ItemClassOf(const PathItemInfo& item) const override;

    const PathNameInfo* m_nameInfo = nullptr;
    ovDir m_dir;
    boost::container::small_vector<NameIterator, 3> m_iterators;
};

} // namespace Quorrant::ovsel
