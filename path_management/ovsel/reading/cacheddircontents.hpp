#pragma once

#include <vector>

#include <boost/container_hash/hash.hpp>
#include <boost/unordered_map.hpp>

#include "host_interfaces/ustring.hpp"

namespace Quorrant::ovsel {

/// What a cache file tells of one directory, by kind of entry. Bare names, except that special directories
/// and nested ones stand under their name from the cache's prefix on.
struct CachedDirContents {
    std::vector<ustring> subdirs;
    std::vector<ustring> files;
    std::vector<ustring> classFiles;
    std::vector<ustring> noClassFiles;
    std::vector<ustring> unconfirmed;
};

/// The contents of every directory of a cache, by name from the prefix on, with `/` between elements. What a
/// key leads to stays where it is while other keys come.
class CachedDirMap : public boost::unordered_map<ustring, CachedDirContents> {
  public:
    using unordered_map::unordered_map;
};

} // namespace Quorrant::ovsel
