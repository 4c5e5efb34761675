#include <ovsel/names.hpp>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/platform.hpp"
#include "ovsel/names/pathnames.hpp"
#include "ovsel/names/plaintext.hpp"

namespace {

/// What ovCombineDirectory writes at most, terminator not counted.
constexpr std::size_t MaxCombinedLength = 1280;

bool EndsWithSlash(const char* text, std::size_t length) {
    const char* end = text + length;
    const char* last = host::Platform().PreviousCharacter(text, end);
    return last + 1 == end && IsSlash(*last);
}

/// Joins @p name to the @p length bytes in @p dst, which must be terminated: the platform may look there.
char* AppendPlainElement(char* dst, std::size_t length, const char* name) {
    if (length != 0) {
        if (!EndsWithSlash(dst, length))
            dst[length++] = '\\';
        if (IsSlash(*name))
            ++name;
    }
    std::strcpy(dst + length, name);
    return dst;
}

/// Is the name one that a base directory has no part in? Only `\` counts; `.x` is no `.\`.
bool IsRooted(const char* name) {
    return *name == '\\' || std::strncmp(name, ".\\", 2) == 0 || std::strncmp(name, "..\\", 3) == 0 ||
           BeginsWithDrive(name);
}

} // namespace

void AppendElement(ustring& path, std::u16string_view name) {
    if (path.empty()) {
        path = name;
        return;
    }
    if (!name.empty() && IsSlash(name.front()))
        name.remove_prefix(1);
    if (!IsSlash(path.back()))
        path.push_back(fl::filesystem::PATHNAME_SEPARATOR[0]);
    path += name;
}

void ovConcatPathName(ustring& dst, const ustring& name) {
    if (&dst == &name)
        AppendElement(dst, ustring(name));
    else
        AppendElement(dst, name);
}

char* ovConcatPathName(char* dst, const char* name) {
    return AppendPlainElement(dst, PlainLength(dst), name);
}

void ovConcatPathSubdir(ustring& dst, const ustring& name) { ovConcatPathName(dst, name); }

char* ovConcatPathSubdir(char* dst, const char* name) { return ovConcatPathName(dst, name); }

char* ovCombinePathName(char* dst, const char* a, const char* b) {
    const std::size_t length = PlainLength(a);
    CopyPlain(dst, a, length);
    return AppendPlainElement(dst, length, b);
}

bool ovCombineDirectory(char* dst, const char* base, const char* name) {
    const std::size_t nameLength = std::strlen(name);
    if (IsRooted(name)) {
        if (nameLength > MaxCombinedLength)
            return false;
        CopyPlain(dst, name, nameLength);
        return true;
    }
    const std::size_t baseLength = std::strlen(base);
    if (baseLength + 1 + nameLength > MaxCombinedLength)
        return false;
    CopyPlain(dst, base, baseLength);
    dst[baseLength] = '\\';
    CopyPlain(dst + baseLength + 1, name, nameLength);
    return true;
}

void ovChangeFileExtension(const char* src, char* dst, const char* ext) {
    const int dot = ovFindFileExt(src);
    const std::size_t kept = dot < 0 ? PlainLength(src) : static_cast<std::size_t>(dot);
    CopyPlain(dst, src, kept);
    std::strcpy(dst + kept, ext);
}
