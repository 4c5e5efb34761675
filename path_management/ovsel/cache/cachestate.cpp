#include "ovsel/cache/cachestate.hpp"

#include "host_interfaces/text.hpp"
#include "host_interfaces/utility.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/names/nameequality.hpp"

namespace Quorrant::ovsel {

namespace {

/// From the last hit first, since a host asks for neighbours in turn, then from the root.
std::optional<CacheTree::Place> Search(CacheState& state, CacheTree& tree, std::u16string_view relative,
                                       bool caseSensitive) {
    if (state.lastHit) {
        const CacheTree::Answer near = tree.Find(*state.lastHit, relative, caseSensitive);
        state.compares += near.compares;
        if (near.found) {
            if (state.trace)
                HostPrintf("  Cache-Cached");
            return near.found;
        }
    }
    const CacheTree::Answer anywhere = tree.Find(0, relative, caseSensitive);
    state.compares += anywhere.compares;
    return anywhere.found;
}

} // namespace

CacheState& CacheState::Get() {
    static CacheState state;
    return state;
}

void CacheState::ResetCounts() {
    directoryCount = 0;
    compares = 0;
    totalDirLookupRequests = 0;
    totalDirLookupHits = 0;
    lastHit.reset();
}

void CacheState::SetTree(std::unique_ptr<CacheDirNode> root) {
    std::shared_ptr<CacheTree> made = root ? std::make_shared<CacheTree>(std::move(root)) : nullptr;
    lastHit.reset();
    tree = std::move(made);
}

std::string PrintableName(const ustring& name) {
    try {
        return fl::i18n::codecvt_ustring_to_narrow_string()(name);
    } catch (const fl::i18n::CvtInvalidCharacter&) {
        return "(a name with no narrow form)";
    }
}

bool MatchesCachePrefix(const ovPath& path, const ustring& name) {
    const CacheState& state = CacheState::Get();
    const auto front = std::u16string_view(name).substr(0, state.prefix.size());
    if (NamesEqual(front, state.prefix, IsCaseSensitive(path)))
        return true;
    if (state.trace) {
        HostPrintf("\n    Did not match cache prefix %s (%d)", PrintableName(state.prefix).c_str(),
                   static_cast<int>(state.prefix.size()));
        HostPrintf("    Failed.\n");
    }
    return false;
}

bool IsCaseSensitive(const ovPath& path) { return path == nullptr || path->IsCaseSensitive(); }

std::shared_ptr<const CacheDirNode> FindInCache(const ovPath& path, const ustring& name) {
    CacheState& state = CacheState::Get();
    const std::uint32_t before = state.compares;
    if (state.trace)
        HostPrintf("    Cache search for %s...", PrintableName(name).c_str());
    ++state.totalDirLookupRequests;
    if (!MatchesCachePrefix(path, name))
        return nullptr;
    const std::shared_ptr<CacheTree> tree = state.tree;
    std::optional<CacheTree::Place> found;
    if (tree)
        found = Search(state, *tree, std::u16string_view(name).substr(state.prefix.size()),
                       IsCaseSensitive(path));
    if (state.tree == tree)
        state.lastHit = found;
    if (!found) {
        if (state.trace) {
            HostPrintf("\n    Cache search failure, ");
            HostPrintf("    Failed.\n");
        }
        return nullptr;
    }
    if (state.trace)
        HostPrintf("  Success, %d compares.\n", static_cast<int>(state.compares - before));
    ++state.totalDirLookupHits;
    return {tree, &tree->At(*found)};
}

} // namespace Quorrant::ovsel
