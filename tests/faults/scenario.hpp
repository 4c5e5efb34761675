#pragma once

#include <string>

namespace faults {

/// What a host does in its life, over the real disk and once through everything that the library offers.
struct Outcome {
    std::string answers; ///< to all questions, in the end
    std::string wrong;   ///< what broke a rule on the way
};

/// Only what the host does itself runs armed. In the end the faults are over; the host puts right what it can
/// see, and refreshes once.
Outcome PlayScenario();

} // namespace faults
