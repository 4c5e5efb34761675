#pragma once

#include "tools/ovsel/output.hpp"
#include "tools/ovsel/session.hpp"

namespace tool {

/// `ovsel watch [NAME...]`: refreshes the path on a timer and tells what changed, until it is interrupted.
int RunWatch(const Options& options, Session& session, Output& output);

} // namespace tool
