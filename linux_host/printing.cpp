#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>

#include "host_interfaces/utility.hpp"
#include "linux_host/linux_host.hpp"

namespace {

std::function<void(std::string_view)>& Sink() {
    static std::function<void(std::string_view)> sink;
    return sink;
}

int PrintToSink(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length < 0) {
        return length;
    }
    // Printing is a service by the way: what fails in it must not interrupt what somebody prints about.
    try {
        std::string text(static_cast<std::size_t>(length) + 1, '\0');
        std::vsnprintf(text.data(), text.size(), format, arguments);
        text.pop_back();
        const auto sink = Sink(); // it may replace itself
        sink(text);
        return length;
    } catch (...) {
        return -1;
    }
}

} // namespace

int HostPrintf(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = Sink() ? PrintToSink(format, arguments) : std::vprintf(format, arguments);
    va_end(arguments);
    return length;
}

namespace linux_host {

void SetPrintSink(std::function<void(std::string_view)> sink) { Sink() = std::move(sink); }

} // namespace linux_host
