#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include <boost/container_hash/hash.hpp>
#include <boost/unordered/unordered_flat_map.hpp>

#include "ovsel/lookup/pathnameinfo.hpp"

/// The name index of a path: one entry for each name, ASCII case aside, that anything below the path has.
/// Other letters keep their case in the key.
class NameTable {
  public:
    NameTable() { m_entries.reserve(16); }

    /// One hash, one probe; no allocation for names of up to 64 units.
    PathNameInfo* Find(std::u16string_view name) const;
    /// The entry of a name, made if it is new; @p spelling gets the index of this exact spelling.
    PathNameInfo* Add(std::u16string_view name, std::int32_t& spelling);
    /// Deletes an entry.
    void Remove(const PathNameInfo* info);

    std::size_t GetSize() const { return m_entries.size(); }
    template <class Visit>
    void ForEach(Visit visit) const {
        for (const auto& [key, info] : m_entries)
            visit(*info);
    }

  private:
    struct KeyHash {
        std::size_t operator()(std::u16string_view key) const {
            return boost::hash_range(key.begin(), key.end());
        }
    };

    /// A key is a view of the one that its entry holds.
    boost::unordered_flat_map<std::u16string_view, std::unique_ptr<PathNameInfo>, KeyHash> m_entries;
};
