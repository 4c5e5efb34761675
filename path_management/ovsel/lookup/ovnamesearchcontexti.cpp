#include "ovsel/lookup/ovnamesearchcontexti.hpp"

#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"

namespace Quorrant::ovsel {

ovNameSearchContextI::ovNameSearchContextI(const SearchQuestion& question)
    : ovSearchContextI(question), m_dir(question.dir) {
    ovNameSearchContextI::BuildIterators();
}

/// Iterators of a name that the search had before stay in front; they find nothing more.
void ovNameSearchContextI::BuildIterators() {
    m_nameInfo = m_path->FindNameInfo(m_name);
    if (m_nameInfo) {
        AppendIterators();
        m_iteratorIndex = 0;
    }
    m_advance = m_iterators.empty() ? AdvanceState::AtEnd : AdvanceState::Advance;
}

void ovNameSearchContextI::AppendIterators() {
    IPathManager& manager = **m_path;
    const auto general = [&] {
        m_iterators.emplace_back(std::in_place_type<GeneralNameIteratorImpl>, manager, m_nameInfo, m_name,
                                 m_scope, m_caseSensitive);
    };
    const auto ownPrivate = [&] {
        if (*m_dir && m_dir->GetPrivateDir())
            AppendDirScope(ovDir(m_dir->GetPrivateDir()));
    };
    switch (m_scope) {
    case SearchScopeAll:
    case SearchScopePathOnly:
    case SearchScopeMethod:
        general();
        break;
    case SearchScopeVisible:
        ownPrivate();
        m_iterators.emplace_back(std::in_place_type<ConstructorNameIteratorImpl>, manager, m_nameInfo, m_name,
                                 m_caseSensitive);
        general();
        break;
    case SearchScopePrivate:
        ownPrivate();
        break;
    case SearchScopeDir:
        if (ovGetDirType(m_dir) != ovDirTypeNull)
            AppendDirScope(m_dir);
        break;
    }
}

void ovNameSearchContextI::AppendDirScope(const ovDir& dir) {
    m_iterators.emplace_back(std::in_place_type<DirScopeNameIteratorImpl>, **m_path, m_nameInfo, m_name, dir,
                             m_caseSensitive);
}

PathItemInfo* ovNameSearchContextI::NextItem() {
    for (;; ++m_iteratorIndex) {
        if (PathItemInfo* item = m_iterators[m_iteratorIndex].Next(m_categoryMask, m_itemKindMask))
            return item;
        if (m_iteratorIndex + 1 >= m_iterators.size())
            return nullptr;
    }
}

void ovNameSearchContextI::ForgetMatch(std::int32_t* match) const {
    if (match)
        *match = 0;
}

std::int32_t ovNameSearchContextI::ItemClassOf(const PathItemInfo& item) const {
    return item.IsFile() ? 2 : 1;
}

ovDir ovNameSearchContextI::FindNextDir(ustring& fullName) {
    SetMode(SearchModeDir);
    WalkToMatch(fullName, nullptr);
    return CurrentAsDir();
}

ovDir ovNameSearchContextI::FindNextSubDir(ustring& fullName) {
    SetMode(SearchModeSubDir);
    ovDir found;
    do
        found = WalkToMatch(fullName, nullptr);
    while (ovGetDirType(found) != ovDirTypeNull && !m_current->IsSubDir());
    return found;
}

} // namespace Quorrant::ovsel
