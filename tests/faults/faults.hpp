#pragma once

#include <algorithm>
#include <array>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

/// Faults on demand: the n-th call that the library makes of one operation fails, once or from then on.
namespace faults {

/// By an exception, or by the failure that the operation's own interface provides for.
enum Ways { Throws = 1, Answers = 2, Both = 3 };
enum class Form { Once, FromThenOn };

struct Plan {
    std::string_view operation = {};
    Ways way = Throws;
    Form form = Form::Once;
    long number = 0; ///< of the call, from 1
};

/// Something that the library asks of others, known from the first call on.
struct Operation {
    std::string_view name = {};
    Ways ways = Both;
    long calls = 0;
};

/// What is planned, and what has been seen while armed.
struct State {
    Plan plan = {};
    bool armed = false;
    bool fired = false;
    std::array<Operation, 50> operations = {}; ///< up to the first without a name
    long liveBlocks = 0;                       ///< of operator new, armed or not
};
inline constinit State state;

/// Counts a call. @return whether it is to fail.
inline bool IsDue(std::string_view name, Ways ways) {
    if (!state.armed)
        return false;
    const auto isSame = [&](const Operation& known) { return known.name.empty() || known.name == name; };
    Operation& operation = *std::find_if(state.operations.begin(), state.operations.end() - 1, isSame);
    operation = {name, ways, operation.calls + 1};
    const Plan& plan = state.plan;
    const bool due = plan.operation == name && (plan.form == Form::Once ? operation.calls == plan.number
                                                                        : operation.calls >= plan.number);
    state.fired = state.fired || due;
    return due;
}

/// The same for all but memory; throws where that is planned. The host's own hooks throw what they like; the
/// layers beneath run out of memory.
inline bool Fails(std::string_view name, Ways ways = Both) {
    if (!IsDue(name, ways))
        return false;
    if (state.plan.way == Answers)
        return true;
    if (name.starts_with("hook"))
        throw std::runtime_error("the disk is on fire");
    throw std::bad_alloc();
}

/// What a host does in its life, over the real disk and once through everything that the library offers.
struct Outcome {
    std::string answers; ///< to all questions, in the end
    std::string wrong;   ///< what broke a rule on the way
};

/// Only what the host does itself runs armed. In the end the faults are over; the host puts right what it can
/// see, and refreshes once.
Outcome PlayScenario();

} // namespace faults
