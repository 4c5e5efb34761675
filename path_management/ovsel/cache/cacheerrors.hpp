#pragma once

#include "host_interfaces/text.hpp"

namespace Quorrant::ovsel {

/// A cache file that could not be read at all.
fl::i18n::MessageException UnableToLoadCache(const ustring& fileName, const ustring& reason);
/// A cache file that was read and is none.
fl::i18n::MessageException PathCacheXMLParseError(const ustring& reason);
/// The same, for well-formed XML of another shape.
fl::i18n::MessageException CacheFileWrongFormat();

} // namespace Quorrant::ovsel
