#include "ovsel/cache/cachetree.hpp"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

namespace Quorrant::ovsel {

namespace {

/// The form in which names that are equal without regard to case are equal. Other names may share it: a
/// folding that changes the length does not make names equal.
ustring Folded(std::u16string_view name) {
    const auto length = static_cast<std::int32_t>(name.size());
    ustring folded(name.size(), u'\0');
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t needed =
        u_strFoldCase(folded.data(), length, name.data(), length, U_FOLD_CASE_DEFAULT, &status);
    // Longer than the name: equal to none of the same length in ASCII, which all nodes' names are.
    folded.resize(needed > length ? 0 : static_cast<std::size_t>(needed));
    return folded;
}

} // namespace

CacheTree::CacheTree(std::unique_ptr<CacheDirNode> root) : m_root(std::move(root)) {
    m_nodes.push_back({m_root.get()});
    NumberChildren(*m_root);
    m_nodes[0].reach = static_cast<Place>(m_nodes.size());
}

/// As deep as the file is, which its reader limits.
void CacheTree::NumberChildren(const CacheDirNode& parent) {
    std::vector<Place> children;
    for (const CacheDirNode* child = parent.m_firstChild.get(); child; child = child->m_nextSibling.get()) {
        children.push_back(static_cast<Place>(m_nodes.size()));
        m_nodes.push_back({child});
        NumberChildren(*child);
    }
    for (const Place child : children)
        m_nodes[child].reach = static_cast<Place>(m_nodes.size());
}

const CacheTree::Index& CacheTree::IndexFor(bool caseSensitive) {
    std::optional<Index>& index = m_indexes[caseSensitive ? 1 : 0];
    if (index)
        return *index;
    index.emplace();
    index->first.reserve(m_nodes.size());
    index->next.resize(m_nodes.size(), Nowhere);
    for (auto place = static_cast<Place>(m_nodes.size()); place-- > 0;) {
        const ustring& name = m_nodes[place].node->m_name;
        Place& first = index->first.try_emplace(caseSensitive ? name : Folded(name), Nowhere).first->second;
        index->next[place] = first;
        first = place;
    }
    return *index;
}

CacheTree::Answer CacheTree::Find(Place start, std::u16string_view name, bool caseSensitive) {
    const Index& index = IndexFor(caseSensitive);
    const Place reach = m_nodes[start].reach;
    const auto entry = caseSensitive ? index.first.find(name) : index.first.find(Folded(name));
    Place place = entry == index.first.end() ? Nowhere : entry->second;
    while (place < start)
        place = index.next[place];
    if (place >= reach || m_nodes[place].node->m_name.size() != name.size())
        return {std::nullopt, reach - start};
    return {place, place - start + 1};
}

} // namespace Quorrant::ovsel
