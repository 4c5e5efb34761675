#pragma once

#include <cstdint>
#include <string_view>

#include <boost/unordered/unordered_flat_set.hpp>

#include "ovsel/lookup/namekey.hpp"
#include "ovsel/lookup/pathnameinfo.hpp"

/// The name index of a path: one entry for each name, ASCII case aside, that anything below the path has.
/// Other letters keep their case in the key.
class NameTable {
  public:
    /// @p pool has to outlive the table.
    explicit NameTable(BlockPool& pool) : m_pool(pool) { m_slots.reserve(16); }
    ~NameTable();
    NameTable(const NameTable&) = delete;
    NameTable& operator=(const NameTable&) = delete;

    /// One hash, one probe; no allocation for names of up to 64 units.
    PathNameInfo* Find(std::u16string_view name) const {
        const auto found = m_slots.find(NameKey(name));
        return found == m_slots.end() ? nullptr : found->info;
    }
    /// The entry of a name, made if it is new; @p spelling gets the index of this exact spelling.
    PathNameInfo* Add(std::u16string_view name, std::int32_t& spelling);
    /// Makes room for so many names, lest the table grow step by step. A wish: where memory is short nothing
    /// happens, and beyond a million names whoever says so has to bring them first.
    void Expect(std::size_t count);
    /// Deletes an entry.
    void Remove(PathNameInfo* info);

    /// Has no name beyond ASCII ever been entered? Then names that compare equal, in whatever case, have one
    /// key.
    bool IsAscii() const { return m_isAscii; }
    std::size_t GetSize() const { return m_slots.size(); }
    template <class Visit>
    void ForEach(Visit visit) const {
        for (const Slot& slot : m_slots)
            visit(*slot.info);
    }

  private:
    /// The hash stands in the slot, so that neither a growing table nor a miss looks at an entry.
    struct Slot {
        Slot(std::uint64_t nameHash, PathNameInfo* entry) : hash(nameHash), info(entry) {}
        /// By the fields, as it was made: in one step, a processor would wait for both to leave for the
        /// caches.
        Slot(const Slot& other) : hash(other.hash), info(other.info) {}
        Slot& operator=(const Slot& other) = default;

        std::uint64_t hash;
        PathNameInfo* info;
    };
    struct SlotHash {
        using is_transparent = void;
        using is_avalanching = void;
        std::size_t operator()(const Slot& slot) const { return slot.hash; }
        std::size_t operator()(const NameKey& key) const { return key.GetHash(); }
    };
    struct SlotEqual {
        using is_transparent = void;
        bool operator()(const Slot& a, const Slot& b) const { return a.info == b.info; }
        bool operator()(const NameKey& key, const Slot& slot) const {
            return key.GetHash() == slot.hash && key.IsKeyOf(slot.info->FirstSpelling());
        }
        bool operator()(const Slot& slot, const NameKey& key) const { return (*this)(key, slot); }
    };

    BlockPool& m_pool;
    boost::unordered_flat_set<Slot, SlotHash, SlotEqual> m_slots; ///< owns the entries
    bool m_isAscii = true;
};
