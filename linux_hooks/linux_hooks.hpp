#pragma once

/// @file
/// The five default I/O hooks of a program on Linux, made of the host layer's listing, accessibility,
/// existence and time.

/// The hooks of a program on Linux.
namespace linux_hooks {

/// Installs the hooks as the defaults of paths created from now on. Call once at start, before the first
/// path.
/// @return what ovSetDefaultIOFcns returned, which is true.
bool InstallDefaultHooks();

} // namespace linux_hooks
