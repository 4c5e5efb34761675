#pragma once

/// @file
/// Which names the library shows.

/// Marks the public functions and classes of libovsel.so; everything else is hidden.
#define OVSEL_API __attribute__((visibility("default")))
