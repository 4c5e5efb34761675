#pragma once

#include <ovsel/handles.hpp>

#include "host_interfaces/storage.hpp"

namespace Quorrant::ovsel {

/// Reads a cache file through the storage layer and installs what it tells of the directories under
/// @p rootLocation in the path's factory. A document type is refused unread; no entity, no other file and no
/// address is ever followed.
/// @return true
/// @throws fl::i18n::MessageException unableToLoadCache, pathCacheXMLParseError
bool ReadCacheFileXML(const ovPath& path, const foundation::storage::vfs::AbsoluteIRI& fileLocation,
                      const foundation::storage::vfs::AbsoluteIRI& rootLocation);

} // namespace Quorrant::ovsel
