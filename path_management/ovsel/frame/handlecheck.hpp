#pragma once

#include <ovsel/handles.hpp>

#include "ovsel/frame/ipathmanager.hpp"

/// Is there a path behind the handle, and is it in service?
inline bool IsPathInService(const ovPath& path) { return path != nullptr && path->IsValid(); }

/// Tells the host's print function of a handle that must not have been given; the caller carries on.
void AssertPathInService(const ovPath& path);
