#include "host_interfaces/diagnostics.hpp"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace host {

namespace {

void PrintToStandardError(const char* text, const char* source, int line, const char* function) {
    std::fprintf(stderr, "%s:%d: %s: %s\n", source, line, function, text);
}

FatalHandler g_handler = &PrintToStandardError;

} // namespace

void Fatal(const char* text, const char* source, int line, const char* function) {
    // A handler that throws takes the caller out of here; one that returns has not understood.
    g_handler(text, source, line, function);
    std::abort();
}

FatalHandler SetFatalHandler(FatalHandler handler) {
    return std::exchange(g_handler, handler != nullptr ? handler : &PrintToStandardError);
}

} // namespace host
