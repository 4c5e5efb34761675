#include "linux_host/counters.hpp"

namespace linux_host {

Counters& CountersInForce() {
    static Counters counters;
    return counters;
}

Counters GetCounters() { return CountersInForce(); }

void ResetCounters() {
    Counters fresh;
    fresh.watches = CountersInForce().watches;
    fresh.handles = CountersInForce().handles;
    CountersInForce() = fresh;
}

} // namespace linux_host
