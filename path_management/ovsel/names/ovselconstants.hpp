#pragma once

#include <cstdint>
#include <string_view>

#include "host_interfaces/ustring.hpp"

/// @file
/// The grammar of directory names: `@Name` holds a class, `+name` a package, and `private` what its parent
/// directory alone may see.

/// The sentinels, one-character texts that are compared and appended alike.
class OvselConstants {
  public:
    static constexpr char16_t U16_OOPSENTINEL[] = u"@";
    static constexpr char16_t U16_OBJPKGSENTINEL[] = u"+";
};

/// The name of a private directory. It has no other spelling, also on a path that ignores case.
inline constexpr char16_t PrivateDirName[] = u"private";
inline constexpr char PrivateDirNamePlain[] = "private";
/// As it ends the full name of a private directory.
inline constexpr std::u16string_view PrivateDirSuffix = u"\\private";

/// What an entry of a directory is, as far as its name and its source tell.
enum DirItemKind : std::uint32_t {
    DirItemUnknown = 0,
    DirItemSubdir = 1, ///< a plain name: as a directory, an ordinary sub-directory
    DirItemFile = 2,
    DirItemClassDir = 3,
    DirItemPackageDir = 4,
    DirItemPrivateDir = 5
};

/// What a directory of that name would be; never DirItemUnknown or DirItemFile. A class or package has a
/// name behind its sentinel, pure ASCII and without a dot; `@a.b` is an ordinary sub-directory.
/// Runs once for each entry of each listing: no allocation, one pass.
DirItemKind ClassifyDirEntryName(std::u16string_view name);
