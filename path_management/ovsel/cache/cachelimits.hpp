#pragma once

#include <cstddef>

/// How far a cache file is followed before it is refused. A real one stays below: a name of 4096 bytes has
/// room for 1365 directories in each other, and a hundred thousand directories take less than a tenth of the
/// size.
inline constexpr int MostCacheDepth = 2048; ///< of directories in directories
inline constexpr std::size_t MostCacheBytes = std::size_t{256} << 20;
