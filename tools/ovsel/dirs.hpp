#pragma once

#include "tools/ovsel/output.hpp"
#include "tools/ovsel/session.hpp"

namespace tool {

/// `ovsel dirs`: the path in order, with counts and their totals.
int RunDirs(Session& session, Output& output);

} // namespace tool
