#include <ovsel/names.hpp>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/platform.hpp"
#include "host_interfaces/utility.hpp"
#include "ovsel/names/pathnames.hpp"
#include "ovsel/names/plaintext.hpp"

namespace {

/// Index of the last split byte, or npos. A multi-byte name is the host's to judge, since a byte in the
/// middle of a character may look like a separator.
std::size_t LastPlainNameSplit(std::string_view full) {
    if (IsAll7Bit(full.data(), full.size()))
        return LastNameSplit(full);
    return static_cast<std::size_t>(ovsel_pathname_index(full.data(), full.size()));
}

/// Where the last element of @p name begins. Byte 0 is never tested as a separator, so the first element
/// reaches to the start of the name even if that is one.
const char* LastElementForExtension(const char* name, std::size_t length) {
    const char* at = name + length;
    while (at != name && !IsNameSplit(*at))
        at = host::Platform().PreviousCharacter(name, at);
    return at == name ? name : at + 1;
}

} // namespace

ustring ovSeparatePathName(const ustring& full) { return ustring(FilePartOf(full)); }

ustring ovSeparatePathName(const ustring& full, ustring& dir) {
    // The file part first: dir may be the object that it is a part of.
    ustring file(FilePartOf(full));
    dir.assign(DirPartOf(full));
    return file;
}

const char* ovSeparatePathName(const char* full, char* dir) {
    if (full == nullptr) {
        if (dir != nullptr)
            *dir = '\0';
        return nullptr;
    }
    const std::string_view name(full, PlainLength(full));
    const std::size_t split = LastPlainNameSplit(name);
    if (split == std::string_view::npos) {
        if (dir != nullptr && dir != full)
            *dir = '\0';
        return full;
    }
    if (dir != nullptr)
        CopyPlain(dir, full, DirPartLength(name, split));
    return full + split + 1;
}

ustring ovFindFileExt(const char16_t* name) {
    if (name == nullptr || *name == u'\0')
        return {};
    return fl::filesystem::extract_extension(fl::filesystem::make_native_form(name, true));
}

int ovFindFileExt(const char* name) {
    if (name == nullptr || *name == '\0')
        return -1;
    const std::size_t length = PlainLength(name);
    const std::string_view element(LastElementForExtension(name, length), name + length);
    const std::size_t dot = element.rfind('.');
    return dot == std::string_view::npos ? -1 : static_cast<int>(element.data() + dot - name);
}

ustring ovExtractSubdir(const ustring& name) {
    if (name.empty())
        return {};
    return fl::filesystem::extract_stem(fl::filesystem::make_native_form(name, true));
}

char* ovExtractSubdir(char* dst, const char* name) {
    if (dst == nullptr)
        return nullptr;
    const char* text = name == nullptr ? "" : name;
    std::string_view element(text, PlainLength(text));
    if (element.ends_with('\\'))
        element.remove_suffix(1);
    // npos + 1 is 0.
    element.remove_prefix(element.rfind('\\') + 1);
    CopyPlain(dst, element.data(), element.size());
    return dst;
}

bool ovIsPathNameSep(char16_t c) { return c == fl::filesystem::PATHNAME_SEPARATOR[0]; }

bool ovIsPathNameSep(const char* start, const char* p) {
    return *p == '\\' && host::Platform().PreviousCharacter(start, p + 1) == p;
}

ustring ovTildeExpansion(const ustring& name) { return name; }

const char* ovTildeExpansion(char*, const char* name) { return name; }
