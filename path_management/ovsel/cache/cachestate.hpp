#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include <ovsel/handles.hpp>

#include "host_interfaces/ustring.hpp"
#include "ovsel/cache/cachetree.hpp"

namespace Quorrant::ovsel {

/// What cache mode knows: one for the process, whichever path asks.
struct CacheState {
    static CacheState& Get();

    /// Shall detailed diagnostics, or a summary at least, be printed?
    bool IsTalkative() const { return trace || statusReport; }
    /// Forgets what was counted since the last loading.
    void ResetCounts();
    /// The tree goes, and with it the places in it.
    void SetTree(std::unique_ptr<CacheDirNode> root);

    bool disabled = false;
    bool inMode = false;
    bool trace = false;
    bool statusReport = false;
    bool report = false;
    ustring prefix; ///< with its separator
    /// Shared with a search that runs: what it prints may end cache mode.
    std::shared_ptr<CacheTree> tree;
    std::optional<CacheTree::Place> lastHit;
    int directoryCount = 0; ///< directory blocks that the hand reader met
    int totalDirLookupRequests = 0;
    int totalDirLookupHits = 0;
    std::uint32_t compares = 0; ///< wraps; printed as a signed number
};

/// Is the name under the prefix, by the path's case rule?
bool MatchesCachePrefix(const ovPath& path, const ustring& name);

/// The directory of that full name in the tree, or null; counted and traced. The tree stays with the answer.
std::shared_ptr<const CacheDirNode> FindInCache(const ovPath& path, const ustring& name);

/// The path's case rule. A hook may be called for a path that is going out of service, and then case counts.
bool IsCaseSensitive(const ovPath& path);

/// A name as diagnostics show it; never fails.
std::string PrintableName(const ustring& name);

} // namespace Quorrant::ovsel
