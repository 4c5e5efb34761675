#include "ovsel/cache/cacheerrors.hpp"

namespace Quorrant::ovsel {

namespace {

constexpr char Component[] = "SORVEN:ovsel";

} // namespace

fl::i18n::MessageException UnableToLoadCache(const ustring& fileName, const ustring& reason) {
    return fl::i18n::MessageException({Component, "unableToLoadCache", {fileName, reason}});
}

fl::i18n::MessageException PathCacheXMLParseError(const ustring& reason) {
    return fl::i18n::MessageException({Component, "pathCacheXMLParseError", {reason}});
}

fl::i18n::MessageException CacheFileWrongFormat() {
    return PathCacheXMLParseError(
        fl::i18n::message_text({Component, "cacheFileWrongFormat", {}}, fl::i18n::Locale::global()));
}

} // namespace Quorrant::ovsel
