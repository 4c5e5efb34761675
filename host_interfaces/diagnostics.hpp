#pragma once

#include "host_interfaces/export.hpp"

/// @file
/// The diagnostics layer: internal assertions that end the process.

namespace host {

/// Called with the text of an assertion and where it stands. Must not return normally; a test's handler
/// throws. All pointers are valid during the call only.
using FatalHandler = void (*)(const char* text, const char* source, int line, const char* function);

/// Reports a broken assumption and ends the process: through the handler, and by abort() should that return.
[[noreturn]] OVSEL_HOST_API void Fatal(const char* text, const char* source, int line, const char* function);

/// Replaces the handler and returns the old one; null restores the default, which prints to standard error.
OVSEL_HOST_API FatalHandler SetFatalHandler(FatalHandler handler);

} // namespace host

/// Ends the process with @p text, naming the place where the macro stands.
#define HOST_FATAL(text) ::host::Fatal((text), __FILE__, __LINE__, static_cast<const char*>(__func__))
