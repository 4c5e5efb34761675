#pragma once

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "host_interfaces/ustring.hpp"
#include "ovsel/model/namecategory.hpp"

class PathItemInfo;

/// All that a path knows under one name, without regard to ASCII case: every exact spelling, and for each
/// category the head of a chain of items.
///
/// Invariants, whenever no operation of the path is running:
///  1. an item that is linked is in exactly one chain, that of its category, and the first item of a chain is
///  its head;
///  2. order numbers never fall along a chain;
///  3. items of one order number are neighbours, the one linked last in front;
///  4. no item is pending;
///  5. at least one chain holds an item: the last one to go takes the entry along;
///  6. a path-level record's order number is its position in the path list.
class PathNameInfo {
  public:
    PathNameInfo(std::u16string_view name, std::u16string_view key) : m_key(key) {
        m_spellings.reserve(2);
        m_spellings.emplace_back(name);
    }

    const ustring& GetKey() const { return m_key; }

    /// Spellings are never forgotten while the entry lives, so that the index in an item stays good.
    const ustring& GetSpelling(std::int32_t index) const {
        return m_spellings[static_cast<std::size_t>(index)];
    }
    std::size_t GetSpellingCount() const { return m_spellings.size(); }
    std::int32_t AddSpelling(std::u16string_view name);

    PathItemInfo* GetChain(NameCategory category) const {
        return m_chains[static_cast<std::size_t>(category)];
    }
    void SetChain(NameCategory category, PathItemInfo* head) {
        m_chains[static_cast<std::size_t>(category)] = head;
    }
    bool HasNoItems() const {
        return std::all_of(m_chains.begin(), m_chains.end(), [](const PathItemInfo* head) { return !head; });
    }

  private:
    std::vector<ustring> m_spellings;
    ustring m_key;
    std::array<PathItemInfo*, NameCategoryCount> m_chains{};
};
