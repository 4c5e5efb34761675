#pragma once

#include "tools/ovsel/output.hpp"

namespace tool {

/// `ovsel cache show FILE`: what a cache tells, from the file alone.
int RunCacheShow(const Options& options, Output& output);

} // namespace tool
