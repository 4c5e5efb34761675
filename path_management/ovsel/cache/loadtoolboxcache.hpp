#pragma once

#include <ovsel/handles.hpp>

#include "host_interfaces/ustring.hpp"

namespace Quorrant::ovsel {

/// Reads a cache file for @p path by the reader of the mode: into the process's tree, or into the path's
/// factory.
/// @param prefix with its separator.
/// @return whether the cache can be used.
/// @throws fl::i18n::MessageException in the storage layer's mode.
bool LoadToolboxCache(const ovPath& path, const char* fileName, const ustring& prefix);

} // namespace Quorrant::ovsel
