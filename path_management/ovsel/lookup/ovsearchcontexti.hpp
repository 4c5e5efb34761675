#pragma once

#include <boost/container/small_vector.hpp>

#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/lookup/ovsearch.hpp"
#include "ovsel/lookup/searchscope.hpp"
#include "ovsel/model/pathiteminfo.hpp"

class PathAllDirItemInfo;

namespace Quorrant::ovsel {

/// One question put to a path. What it points to outlives it.
struct SearchQuestion {
    const ovPath& path;
    std::u16string_view name; ///< with either separator
    ovExtensionList extensions;
    PathAllDirItemInfo* dir; ///< the place that the search looks from; null for none
    SearchScope scope;
    ovCaseSensitivity rule;

    bool IsCaseSensitive() const {
        return rule == ovCaseOfPath ? path->IsCaseSensitive() : rule == ovCaseSensitive;
    }
};

/// What both kinds of search share: the question taken apart, and the loop that filters candidates.
///
/// A candidate passes if its extension matches (MatchExtension) and the name is qualified deeply enough and
/// in the right words for where the candidate lies (QualifyItem). The search ranks by extension but never
/// sorts.
class ovSearchContextI : public ovSearch {
  public:
    ~ovSearchContextI() override { m_path->SearchEnds(); }
    ovSearchContextI(const ovSearchContextI&) = delete;
    ovSearchContextI& operator=(const ovSearchContextI&) = delete;

    ustring GetCurrentItemInfo(std::int32_t& itemClass, std::int32_t& fileKind) override;
    ovDir FindNextFile(ustring& fullName, std::int32_t* match) override;
    ovDir FindNextFileBounded(ustring& fullName, std::int32_t* match) override;
    ovDir FindNextUnspecified(ustring& fullName, std::int32_t* match) override;

    /// For a search that outlives the question.
    void KeepExtensions() { GetExtensions(); }

  protected:
    /// Looks at the question's list of extensions when the first candidate comes, unless KeepExtensions has
    /// been called before.
    explicit ovSearchContextI(const SearchQuestion& question);

    /// Which step comes before the next candidate is looked at.
    enum class AdvanceState {
        Advance,
        HoldOnce, ///< the current item was found but not delivered
        AtEnd
    };

    /// Makes iterators for m_name behind those there are. Searches for a name only.
    virtual void BuildIterators() {}
    /// The next item that the iterators yield under the masks of the mode, or null.
    virtual PathItemInfo* NextItem() = 0;
    /// What a bounded call leaves in its match when it has crossed into another directory.
    virtual void ForgetMatch(std::int32_t* match) const = 0;
    virtual std::int32_t ItemClassOf(const PathItemInfo& item) const = 0;

    /// Iterators go on from where they stand: only what they have not passed can still come.
    void SetMode(SearchMode mode);
    void Step();
    /// The first candidate from here on that passes; the directory that holds it.
    ovDir WalkToMatch(ustring& fullName, std::int32_t* match);
    /// The current item as a directory; a null handle if it is none.
    ovDir CurrentAsDir() const;

    ovPath m_path;
    boost::container::small_vector<char16_t, 64> m_text; ///< the name as asked, which the views below lie in
    ustring m_longerName;                                ///< m_name with its dot, once that belongs to it
    std::u16string_view m_name;
    char16_t m_prefixChar = 0;
    std::u16string_view m_extension;
    bool m_hasDot = false;
    std::u16string_view m_dirPart;
    std::int32_t m_separatorCount = 0;
    SearchScope m_scope;
    bool m_caseSensitive;
    SearchMode m_mode = SearchModeUnset;
    std::uint32_t m_categoryMask = 0;
    std::uint32_t m_itemKindMask = 0;
    PathItemInfo* m_current = nullptr;
    std::size_t m_iteratorIndex = 0;
    AdvanceState m_advance = AdvanceState::AtEnd;

  private:
    using Extensions = boost::container::small_vector<ustring, 4>;

    const Extensions& GetExtensions() const;
    void TakeName(std::u16string_view name);
    std::u16string_view SplitName(std::u16string_view name);
    std::int32_t MatchExtension(const PathItemInfo& item) const;
    bool QualifyItem(const PathAllDirItemInfo& dir, const PathItemInfo& item, ustring& fullName) const;
    bool IsQualifiedEnough(const PathAllDirItemInfo& dir) const;
    bool MatchQualifier(std::u16string_view fullName) const;
    bool MatchDirPart(std::u16string_view parent) const;

    mutable ovExtensionList m_givenExtensions; ///< null once they have been taken over
    mutable Extensions m_extensions;
};

} // namespace Quorrant::ovsel
