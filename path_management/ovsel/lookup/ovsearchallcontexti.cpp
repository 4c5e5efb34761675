#include "ovsel/lookup/ovsearchallcontexti.hpp"

#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"

namespace Quorrant::ovsel {

ovSearchAllContextI::ovSearchAllContextI(const SearchQuestion& question) : ovSearchContextI(question) {
    AppendIterators(ovDir(question.dir));
    m_advance = m_iterators.empty() ? AdvanceState::AtEnd : AdvanceState::Advance;
}

void ovSearchAllContextI::AppendIterators(const ovDir& dir) {
    const IPathManager& manager = **m_path;
    const bool includeCWD = m_scope != SearchScopePathOnly;
    const auto ownPrivate = [&] {
        if (*dir && dir->GetPrivateDir())
            m_iterators.push_back(std::make_unique<SpecificDirIteratorImpl>(ovDir(dir->GetPrivateDir())));
    };
    switch (m_scope) {
    case SearchScopeAll:
    case SearchScopePathOnly:
        m_iterators.push_back(std::make_unique<PathDirIteratorImpl>(manager, includeCWD));
        m_iterators.push_back(std::make_unique<MethodDirIteratorImpl>(manager, includeCWD));
        m_iterators.push_back(std::make_unique<PrivateDirIteratorImpl>(manager, includeCWD));
        break;
    case SearchScopeVisible:
        ownPrivate();
        m_iterators.push_back(
            std::make_unique<ConstructorIteratorImpl>(manager, m_caseSensitive, includeCWD));
        m_iterators.push_back(std::make_unique<PathDirIteratorImpl>(manager, includeCWD));
        break;
    case SearchScopeMethod:
        m_iterators.push_back(std::make_unique<MethodDirIteratorImpl>(manager, includeCWD));
        break;
    case SearchScopePrivate:
        ownPrivate();
        break;
    case SearchScopeDir:
        if (ovGetDirType(dir) != ovDirTypeNull)
            m_iterators.push_back(std::make_unique<SpecificDirIteratorImpl>(dir));
        break;
    }
}

PathItemInfo* ovSearchAllContextI::NextItem() {
    for (;; ++m_iteratorIndex) {
        if (PathItemInfo* item = m_iterators[m_iteratorIndex]->Next(m_itemKindMask))
            return item;
        if (m_iteratorIndex + 1 >= m_iterators.size())
            return nullptr;
    }
}

std::int32_t ovSearchAllContextI::ItemClassOf(const PathItemInfo& item) const {
    if (!item.IsFile())
        return 1;
    return item.IsVerified() ? 2 : 0;
}

ovDir ovSearchAllContextI::FindNextFileBounded(ustring& fullName, std::int32_t* match) {
    fullName.clear();
    return ovSearchContextI::FindNextFileBounded(fullName, match);
}

ovDir ovSearchAllContextI::FindNextDir(ustring& fullName) {
    SetMode(SearchModeDir);
    do
        WalkToMatch(fullName, nullptr);
    while (m_current && !m_current->IsDirRecord());
    return CurrentAsDir();
}

ovDir ovSearchAllContextI::FindNextSubDir(ustring& fullName) {
    SetMode(SearchModeSubDir);
    return WalkToMatch(fullName, nullptr);
}

} // namespace Quorrant::ovsel
