#pragma once

#include <string_view>

#include "ovsel/frame/ipathmanager.hpp"

/// Finds directory records by their full name: one probe with the last element, then the few records of that
/// name. Names compare by the path's own case rule.
class FullNameLookup {
  public:
    explicit FullNameLookup(const IPathManager& manager) : m_manager(manager) {}

    /// A path-level record. A root's last element is empty, so that a root is never found.
    PathDirItemInfo* FindPathDir(std::u16string_view fullName, DirScope scope) const;
    PathDirItemInfo* FindPathDir(std::u16string_view fullName, std::u16string_view leaf,
                                 DirScope scope) const;
    /// From @p first along its chain; items off the path are passed over.
    PathItemInfo* FindDirInChain(PathItemInfo* first, std::u16string_view fullName) const;
    /// Any item that is a directory, or one of type @p type; a plain sub-directory's entry among them.
    PathItemInfo* FindDirFullName(std::u16string_view fullName, ovDirType type) const;
    /// @p leaf is the name without sentinel under which such a directory stands in the index.
    PathItemInfo* FindDirOfType(std::u16string_view fullName, std::u16string_view leaf, ovDirType type) const;

  private:
    PathItemInfo* FindPathLevel(PathItemInfo* first, std::u16string_view fullName) const;
    PathItemInfo* FindByForm(std::u16string_view fullName) const;
    PathItemInfo* FindPlain(std::u16string_view fullName, std::u16string_view leaf) const;
    PathItemInfo* FindPrivateDir(std::u16string_view fullName) const;

    const IPathManager& m_manager;
};
