#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/ovsel/reasons.hpp"
#include "tools/ovsel/search.hpp"
#include "tools/ovsel/session.hpp"

namespace tool {

/// What names mean to the file that asks, and what has become of that since the last look.
class Meanings {
  public:
    struct Change {
        std::string name;
        std::optional<ustring> was; ///< full name of the file
        std::optional<ustring> now;
        std::optional<Reason> reason; ///< of what it means now
    };

    /// @param names none for all unqualified names that have a meaning at either look.
    Meanings(const Session& session, const std::vector<std::string>& names);

    /// Looks up every name, one search each, and tells the differences in the order of the names.
    std::vector<Change> Update();

    std::size_t Count() const { return m_files.size(); }

  private:
    using Files = std::map<std::string, Search::File>;

    Files LookUpAll() const;
    std::vector<std::string> AllNames() const;
    Change MakeChange(const std::string& name, const Search::File* was, const Search::File* now) const;

    const Session& m_session;
    std::vector<std::string> m_names;
    Files m_files; ///< only of names that mean something
};

} // namespace tool
