#pragma once

#include <cstddef>

/// How far a cache file is followed before it is refused. A real one stays far below: folders in folders are
/// limited by the length of a name, and a hundred thousand directories take less than a tenth of the size.
inline constexpr int MostCacheDepth = 256;
inline constexpr std::size_t MostCacheBytes = std::size_t{256} << 20;
