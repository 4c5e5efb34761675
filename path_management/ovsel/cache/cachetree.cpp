#include "ovsel/cache/cachetree.hpp"

#include "ovsel/cache/specialnames.hpp"

namespace Quorrant::ovsel {

CacheTree::CacheTree(std::unique_ptr<CacheDirNode> root) : m_root(std::move(root)) {
    m_nodes.push_back({m_root.get()});
    NumberChildren(*m_root);
    m_nodes[0].reach = static_cast<Place>(m_nodes.size());
}

/// As deep as the file is, which its reader limits.
void CacheTree::NumberChildren(const CacheDirNode& parent) {
    m_entryCount += parent.m_lettersCount;
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
    Index made;
    made.first.reserve(m_nodes.size());
    made.next.resize(m_nodes.size(), Nowhere);
    if (!caseSensitive)
        made.folded.reserve(m_nodes.size()); // all of them, since the names are looked at where they are
    for (auto place = static_cast<Place>(m_nodes.size()); place-- > 0;) {
        std::u16string_view name = m_nodes[place].node->m_name;
        if (!caseSensitive)
            name = made.folded.emplace_back(FoldedName(name));
        Place& first = made.first.try_emplace(name, Nowhere).first->second;
        made.next[place] = first;
        first = place;
    }
    return index.emplace(std::move(made));
}

CacheTree::Answer CacheTree::Find(Place start, std::u16string_view name, bool caseSensitive) {
    const Index& index = IndexFor(caseSensitive);
    const Place reach = m_nodes[start].reach;
    const auto entry = index.first.find(caseSensitive ? name : std::u16string_view(FoldedName(name)));
    Place place = entry == index.first.end() ? Nowhere : entry->second;
    while (place < start)
        place = index.next[place];
    if (place >= reach || m_nodes[place].node->m_name.size() != name.size())
        return {std::nullopt, reach - start};
    return {place, place - start + 1};
}

} // namespace Quorrant::ovsel
