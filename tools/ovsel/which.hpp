#pragma once

#include "tools/ovsel/output.hpp"
#include "tools/ovsel/session.hpp"

namespace tool {

/// `ovsel which NAME...`: the winner of each name, or all candidates with their reasons.
/// @return ExitFound only if every name was found.
int RunWhich(const Options& options, Session& session, Output& output);

} // namespace tool
