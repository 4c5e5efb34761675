#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include "ovsel/cache/cachedirnode.hpp"
#include "ovsel/names/unitwords.hpp"

namespace Quorrant::ovsel {

/// The directories of a cache, and the answers of a depth-first search among them without the walk: each node
/// has its place in that order, and an index leads from a name to the places where it stands. The number of
/// comparisons that the walk would have made is the distance between two places.
class CacheTree {
  public:
    /// A place in depth-first order; the root's is 0.
    using Place = std::uint32_t;

    struct Answer {
        std::optional<Place> found;
        std::uint32_t compares = 0; ///< that a walk makes until then, or in vain
    };

    /// @p root has no siblings.
    explicit CacheTree(std::unique_ptr<CacheDirNode> root);

    /// Searches the node at @p start, what lies below it, and its later siblings with what lies below them.
    Answer Find(Place start, std::u16string_view name, bool caseSensitive);

    const CacheDirNode& At(Place place) const { return *m_nodes[place].node; }
    /// Of all directories together.
    std::size_t GetEntryCount() const { return m_entryCount; }

  private:
    struct Node {
        const CacheDirNode* node;
        Place reach = 0; ///< the first place that a search from here does not come to
    };
    struct Hash {
        using is_avalanching = void;
        std::size_t operator()(std::u16string_view name) const { return HashUnits(name); }
    };
    static constexpr Place Nowhere = static_cast<Place>(-1);

    /// For one case rule: names as that rule compares them. Places of equal names are linked upwards.
    struct Index {
        boost::unordered_flat_map<std::u16string_view, Place, Hash> first; ///< names of nodes, or folded
        std::vector<Place> next;
        std::vector<ustring> folded;
    };

    void NumberChildren(const CacheDirNode& parent);
    const Index& IndexFor(bool caseSensitive);

    std::unique_ptr<CacheDirNode> m_root;
    std::vector<Node> m_nodes;
    std::size_t m_entryCount = 0;
    std::array<std::optional<Index>, 2> m_indexes; ///< by case rule, made at the first search
};

} // namespace Quorrant::ovsel
