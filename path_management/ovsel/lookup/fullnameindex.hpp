#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>

class PathDirItemInfo;

/// Finds the path-level records of a path by full name. They stand in the name index under their last element
/// too, but a path may have thousands of folders that are all called alike.
class FullNameIndex {
  public:
    /// @pre a record is in the chain of path-level directories as long as it is in here.
    void Enter(PathDirItemInfo* record);
    void Leave(PathDirItemInfo* record);

    /// The record of that name that stands on the path or is the current directory, or null; nothing where
    /// only a walk along the chain can tell: names beyond ASCII fold as a whole, and of two equal names the
    /// one in front counts.
    std::optional<PathDirItemInfo*> Find(std::u16string_view fullName, bool caseSensitive) const;

  private:
    std::unordered_multimap<std::uint64_t, PathDirItemInfo*> m_records; ///< by the hash of the name's key
    std::size_t m_beyondAscii = 0;                                      ///< how many have such names
};
