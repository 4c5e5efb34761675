#pragma once

/// @file
/// Which names a host library shows.

/// Marks what a host library shows to those that link it; everything else stays hidden.
#define OVSEL_HOST_API __attribute__((visibility("default")))
