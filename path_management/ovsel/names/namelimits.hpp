#pragma once

#include <cstddef>

/// Longest directory name, in code units, that a path string and a change of directory accept.
inline constexpr std::size_t MaxDirNameLength = 1024;
