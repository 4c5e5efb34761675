#pragma once

#include <cstdint>

/// The kinds of item that a name entry keeps apart, one chain for each. The numbers are bit positions in the
/// masks of searches. Direct means: the parent is the path-level directory itself.
enum NameCategory : std::int32_t {
    NameFile = 0,             ///< direct files
    NamePrivateFile = 1,      ///< files in private directories
    NameNestedFile = 2,       ///< files in class and package directories
    NameSubDir = 3,           ///< direct plain sub-directories
    NamePrivateDir = 4,       ///< private directories, direct or not
    NamePackageDir = 5,       ///< direct package directories
    NameClassDir = 6,         ///< direct class directories
    NameNestedSubDir = 7,     ///< plain sub-directories, not direct
    NameNestedPackageDir = 8, ///< package directories, not direct
    NameNestedClassDir = 9,   ///< class directories, not direct
    NamePathDir = 10,         ///< path-level directories
    NameCategoryCount = 11
};
