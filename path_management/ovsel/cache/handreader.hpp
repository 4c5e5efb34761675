#pragma once

#include <memory>

#include "ovsel/cache/cachedirnode.hpp"

namespace Quorrant::ovsel {

/// What came out of a cache file.
struct HandReading {
    bool opened = false;
    bool reachedContents = false;       ///< the root's tag was passed
    std::unique_ptr<CacheDirNode> root; ///< null unless the contents were good
    int directoryCount = 0;             ///< directory blocks met, also in contents that were not good
};

/// Reads a cache file without an XML parser: the fixed shapes that the writer makes, and nothing else. Root
/// tag, version and everything between tags are passed over unread.
HandReading ReadCacheFileByHand(const char* fileName);

} // namespace Quorrant::ovsel
