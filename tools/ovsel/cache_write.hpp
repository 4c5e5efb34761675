#pragma once

#include "tools/ovsel/output.hpp"
#include "tools/ovsel/session.hpp"

namespace tool {

/// `ovsel cache write FILE`: keeps what the path holds under the prefix.
/// @return ExitNotFound, with nothing written, when there are names that a cache cannot carry.
int RunCacheWrite(const Options& options, Session& session, Output& output);

} // namespace tool
