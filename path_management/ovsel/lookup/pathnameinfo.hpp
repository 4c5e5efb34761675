#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "host_interfaces/ustring.hpp"
#include "ovsel/model/namecategory.hpp"

class BlockPool;
class PathItemInfo;

/// All that a path knows under one name, without regard to ASCII case: every exact spelling, and for each
/// category the head of a chain of items.
///
/// Nearly all names have one spelling and items of one category, so that the entry is one small block: the
/// head of one chain, and the first spelling right behind it. What else a name has stands apart.
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
    struct Deleter {
        void operator()(PathNameInfo* info) const;
    };
    using Owner = std::unique_ptr<PathNameInfo, Deleter>;

    /// The only way to make one, since the name lies in its block. @p pool has to outlive it.
    static Owner Create(BlockPool& pool, std::u16string_view name);
    PathNameInfo(const PathNameInfo&) = delete;
    PathNameInfo& operator=(const PathNameInfo&) = delete;

    /// The name with ASCII capitals lowered.
    ustring GetKey() const;

    /// NUL-terminated. Spellings are never forgotten while the entry lives, nor moved, so that the index in
    /// an item and the text stay good.
    std::u16string_view GetSpelling(std::int32_t index) const {
        return index == 0 ? FirstSpelling() : *m_more->spellings[static_cast<std::size_t>(index) - 1];
    }
    std::u16string_view FirstSpelling() const {
        return {reinterpret_cast<const char16_t*>(this + 1), m_length};
    }
    std::size_t GetSpellingCount() const { return m_more ? 1 + m_more->spellings.size() : 1; }
    std::int32_t AddSpelling(std::u16string_view name);

    /// Both ends, so that what belongs behind all others need not walk past them.
    struct Chain {
        PathItemInfo* first = nullptr;
        PathItemInfo* last = nullptr;
    };

    PathItemInfo* GetChain(NameCategory category) const { return GetEnds(category).first; }
    Chain GetEnds(NameCategory category) const {
        if (category == m_category)
            return m_chain;
        return m_more ? m_more->chains[static_cast<std::size_t>(category)] : Chain();
    }
    /// May allocate where @p chain is one that the entry has not had before.
    void SetEnds(NameCategory category, Chain chain);
    bool HasNoItems() const;

  private:
    /// What few names have: chains of further categories, and spellings behind the first.
    struct More {
        std::array<Chain, NameCategoryCount> chains;
        std::vector<std::unique_ptr<const ustring>> spellings;
    };

    explicit PathNameInfo(std::u16string_view name);
    ~PathNameInfo() = default;
    More& GetMore();

    Chain m_chain; ///< that of m_category
    std::unique_ptr<More> m_more;
    std::uint32_t m_length;
    NameCategory m_category = NameFile;
};
