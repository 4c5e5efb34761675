#pragma once

#include <vector>

#include "ovsel/frame/messages.hpp"

/// The switch that lets change detection tell all it does through the third message hook. Off; for a debugger
/// and for tests to turn on.
bool& ChangeDiagnostics();

/// A message through that hook, if the switch is on; only then are its arguments made.
template <class MakeArguments>
void ReportDiagnostic(const char* id, MakeArguments makeArguments) {
    if (ChangeDiagnostics())
        ReportMessage(MessageChannel::Info, id, makeArguments());
}
