#include "linux_host/counters.hpp"

namespace linux_host {

Counters& CountersInForce() {
    static Counters counters;
    return counters;
}

Counters GetCounters() { return CountersInForce(); }

void ResetCounters() { CountersInForce() = {}; }

} // namespace linux_host
