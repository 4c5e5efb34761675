#pragma once

#include "tools/ovsel/output.hpp"
#include "tools/ovsel/session.hpp"

namespace tool {

/// `ovsel cache verify FILE`: compares a cache with the disk.
/// @return ExitNotFound when they differ.
int RunCacheVerify(const Options& options, Session& session, Output& output);

} // namespace tool
