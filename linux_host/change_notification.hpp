#pragma once

#include <string_view>

#include "host_interfaces/ustring.hpp"

/// @file
/// Change notification beneath host::IPlatform.

namespace linux_host {

/// Makes, fills and removes a file that did not exist; see host::IPlatform::WriteProbeFile.
bool WriteProbeFile(const ustring& name, std::string_view text);

} // namespace linux_host
