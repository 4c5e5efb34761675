#pragma once

#include "linux_host/linux_host.hpp"

namespace linux_host {

/// The counters that GetCounters copies. The host's one thread writes them.
Counters& CountersInForce();

} // namespace linux_host
