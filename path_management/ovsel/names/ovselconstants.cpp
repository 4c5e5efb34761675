#include "ovsel/names/ovselconstants.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>

#include <ovsel/names.hpp>

#include "host_interfaces/filesystem.hpp"
#include "ovsel/names/pathnames.hpp"

namespace {

/// Index of the first @p sentinel that begins an element, or npos. Takes bytes and units as they stand:
/// asked of many names, this spends no call of the host on multi-byte characters.
template <class Char>
std::size_t FindSentinel(std::basic_string_view<Char> name, Char sentinel, Char separator) {
    std::size_t at = name.find(sentinel);
    while (at != name.npos && at != 0 && name[at - 1] != separator)
        at = name.find(sentinel, at + 1);
    return at;
}

bool HasSentinel(const ustring& name, char16_t sentinel) {
    return FindSentinel<char16_t>(name, sentinel, fl::filesystem::PATHNAME_SEPARATOR[0]) != ustring::npos;
}

bool HasSentinel(const char* name, char sentinel) {
    return FindSentinel<char>(name, sentinel, '\\') != std::string_view::npos;
}

template <class Char>
const Char* FindPackage(std::basic_string_view<Char> name) {
    const std::size_t at = FindSentinel<Char>(name, '+', '\\');
    return at == name.npos ? nullptr : name.data() + at;
}

/// Is what follows the sentinel fit to be the name of a class or a package?
bool NamesScope(std::u16string_view name) {
    return name.size() > 1 &&
           std::all_of(name.begin(), name.end(), [](char16_t unit) { return unit < 128 && unit != u'.'; });
}

} // namespace

DirItemKind ClassifyDirEntryName(std::u16string_view name) {
    switch (name.empty() ? u'\0' : name.front()) {
    case OvselConstants::U16_OBJPKGSENTINEL[0]:
        return NamesScope(name) ? DirItemPackageDir : DirItemSubdir;
    case OvselConstants::U16_OOPSENTINEL[0]:
        return NamesScope(name) ? DirItemClassDir : DirItemSubdir;
    case PrivateDirName[0]:
        return name == PrivateDirName ? DirItemPrivateDir : DirItemSubdir;
    default:
        return DirItemSubdir;
    }
}

bool ovIsDirNameMethodDirName(const ustring& name) {
    return HasSentinel(name, OvselConstants::U16_OOPSENTINEL[0]);
}

bool ovIsDirNameMethodDirName(const char* name) { return HasSentinel(name, '@'); }

bool ovIsDirNamePackageDirName(const ustring& name) {
    return HasSentinel(name, OvselConstants::U16_OBJPKGSENTINEL[0]);
}

bool ovIsDirNamePackageDirName(const char* name) { return HasSentinel(name, '+'); }

const char16_t* ovGetPackageDirName(const char16_t* name) { return FindPackage(std::u16string_view(name)); }

const char* ovGetPackageDirName(const char* name) { return FindPackage(std::string_view(name)); }

bool ovIsPrivateDirName(const ustring& name) { return FilePartOf(name) == PrivateDirName; }

bool ovIsPrivateDirName(const char* name) {
    return name != nullptr && std::strcmp(ovSeparatePathName(name, nullptr), PrivateDirNamePlain) == 0;
}
