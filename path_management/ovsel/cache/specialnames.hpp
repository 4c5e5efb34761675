#pragma once

#include <boost/unordered/unordered_flat_set.hpp>

#include "host_interfaces/ustring.hpp"

namespace Quorrant::ovsel {

/// The form in which names that are equal without regard to case are equal. Names of other lengths may share
/// it, which equality tells apart.
ustring FoldedName(std::u16string_view name);

/// Tells the second coming of a special directory in one listing. A real listing has none; one in a cache
/// file would have the directory read once for each, and so would those within it, until there are more
/// records than anybody has memory for.
class SpecialNames {
  public:
    explicit SpecialNames(bool caseSensitive) : m_caseSensitive(caseSensitive) {}
    /// Notes the name. False for a name that is no special directory's, however often it comes.
    bool IsRepeated(std::u16string_view name);

  private:
    bool m_caseSensitive;
    boost::unordered_flat_set<ustring> m_names;
};

} // namespace Quorrant::ovsel
