#pragma once

#include <cstddef>
#include <memory>

#include "host_interfaces/export.hpp"

/// @file
/// Storage per scope: one slot of data for each of the host's virtual machines. Which scope is current is the
/// host's affair; a program with one interpreter has one scope.

namespace host {

/// Names a slot.
using ScopeSlotId = std::size_t;

/// A new slot in every scope, present and future. Thread-safe; a slot is never given back.
OVSEL_HOST_API ScopeSlotId AllocateScopeSlot();

/// What the current scope holds in the slot, or null.
OVSEL_HOST_API void* FindScopeValue(ScopeSlotId slot);

/// Puts @p value in the slot of the current scope if that is empty, and keeps it as long as the scope lives.
/// @return false, leaving the slot as it was, if it was taken.
OVSEL_HOST_API bool InsertScopeValue(ScopeSlotId slot, std::shared_ptr<void> value);

} // namespace host
