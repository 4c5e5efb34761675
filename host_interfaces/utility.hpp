#pragma once

#include <cstddef>

#include "host_interfaces/export.hpp"

/// @file
/// The utility layer: the allocator that crosses the border between a host and the library, printing,
/// timing, and two questions about narrow text.

/// A zeroed block of @p count times @p size bytes, or null. Freed with HostFree.
OVSEL_HOST_API void* HostCalloc(std::size_t count, std::size_t size);

/// @p block grown or shrunk to @p size bytes (a null block is a new one), or null, which leaves the old
/// block as it was.
OVSEL_HOST_API void* HostRealloc(void* block, std::size_t size);

/// A block of @p size bytes; ends the process through the diagnostics layer when there is none.
OVSEL_HOST_API void* HostMallocWithCheck(std::size_t size);

/// Gives a block of this layer back. Null is allowed.
OVSEL_HOST_API void HostFree(void* block);

/// Prints as printf does, to standard output or to where the host has directed it.
/// @return the number of bytes printed, negative on failure.
OVSEL_HOST_API int HostPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Starts the process-wide stop watch.
OVSEL_HOST_API void HostTic();

/// Seconds since the last HostTic; 0 if there was none. @p label names the measurement for the host's own
/// records and may be null.
OVSEL_HOST_API double HostToc(const char* label);

/// True if each of the @p length bytes at @p text is below 128. Null counts as empty.
OVSEL_HOST_API bool IsAll7Bit(const char* text, std::size_t length);

/// Index of the last separator (`\`, `/` or `:`) among the @p length bytes of narrow text, or -1. A byte in
/// the middle of a multi-byte character is never taken for one.
OVSEL_HOST_API std::ptrdiff_t ovsel_pathname_index(const char* text, std::size_t length);
