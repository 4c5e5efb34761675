#pragma once

#include <cstddef>

/// @file
/// Counts the heap allocations of the whole process, those inside of shared libraries included. The program's
/// malloc and its kin stand in front of the C library's; operator new takes its memory from there, so that
/// each allocation counts once, whichever way it came.

namespace bench {

/// Allocations since the start of the process. Meant for one thread.
std::size_t AllocationCount();

/// Bytes of the heap that are in use, large blocks outside of the main area included.
std::size_t HeapBytes();

/// Does the counter see what the library and its host allocate? Without that, "no allocation" says nothing.
bool AllocationsAreSeen();

} // namespace bench
