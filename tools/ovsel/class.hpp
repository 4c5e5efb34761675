#pragma once

#include "tools/ovsel/output.hpp"
#include "tools/ovsel/session.hpp"

namespace tool {

/// `ovsel class NAME...`: the file that defines each class.
/// @return ExitFound only if all are classes.
int RunClass(const Options& options, Session& session, Output& output);

} // namespace tool
