#include "host_interfaces/utility.hpp"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "host_interfaces/diagnostics.hpp"

namespace {

using Clock = std::chrono::steady_clock;

std::optional<Clock::time_point> g_tic;

} // namespace

void* HostCalloc(std::size_t count, std::size_t size) { return std::calloc(count, size); }

// Size 0 would free the block and answer null, which a caller takes for a failure that left it alone.
void* HostRealloc(void* block, std::size_t size) {
    return std::realloc(block, std::max<std::size_t>(size, 1));
}

void* HostMallocWithCheck(std::size_t size) {
    void* block = std::malloc(std::max<std::size_t>(size, 1));
    if (block == nullptr) {
        HOST_FATAL("Out of memory.");
    }
    return block;
}

void HostFree(void* block) { std::free(block); }

void HostTic() { g_tic = Clock::now(); }

double HostToc(const char* /*label*/) {
    return g_tic ? std::chrono::duration<double>(Clock::now() - *g_tic).count() : 0.0;
}

bool IsAll7Bit(const char* text, std::size_t length) {
    return text == nullptr ||
           std::all_of(text, text + length, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::ptrdiff_t ovsel_pathname_index(const char* text, std::size_t length) {
    // In UTF-8 no byte of a multi-byte character is ASCII, so that bytes may be compared alone.
    const std::size_t index = std::string_view(text, length).find_last_of("\\/:");
    return index == std::string_view::npos ? -1 : static_cast<std::ptrdiff_t>(index);
}
