#pragma once

#include "tools/ovsel/output.hpp"
#include "tools/ovsel/session.hpp"

namespace tool {

/// `ovsel tree`: what the path holds, by kind, as a drawing.
int RunTree(const Options& options, Session& session, Output& output);

} // namespace tool
