#pragma once

#include <cstddef>

#include <host_interfaces/ustring.hpp>

#include <ovsel/export.hpp>

/// @file
/// Path names as text: joining, splitting, absolute names, the grammar of `@`, `+` and `private`, and the
/// names of classes and packages. Only ovFullPath and ovIsWinPathRemote ask the system anything.
///
/// The grammar is `\` between elements, `X:` a drive, `\\server\share` a network root, on every platform.
///
/// Most functions exist twice. The `ustring` forms work on UTF-16. The plain forms work on NUL-terminated
/// text in the encoding of file names (on Linux UTF-8), and they are *not* conversions of the others: where
/// the two answer differently, their comments say so. For the plain forms:
/// - Lengths, sizes and indices are bytes.
/// - The caller owns every buffer. Where no size is passed, the buffer must hold the result with its
///   terminator; for a joining form that is both inputs, one separator and the terminator.
/// - A null pointer is a caller's fault unless the function says what it means.
/// - A name longer than 2,147,483,647 bytes raises boost::numeric::positive_overflow in every form but
///   ovCombineDirectory, ovIsAbsolutePath and the class and package functions.

class ovPath;

namespace foundation::storage::vfs {
class AbsoluteIRI;
}

/// @name Joining
/// @{

/// Appends @p name to @p dst as one more element, with one `\` between the two. A `\` or `/` at the end of
/// @p dst serves as that separator, and one leading `\` or `/` of @p name is dropped. Onto an empty @p dst
/// the name goes unchanged. @p dst and @p name may be one object.
///
/// Only one separator is ever dropped, and nothing is normalised: `C:\a` and `//b` give `C:\a\/b`. An
/// absolute @p name is appended too: test it with ovIsAbsolutePath before.
OVSEL_API void ovConcatPathName(ustring& dst, const ustring& name);
/// As the `ustring` form. @p dst is both input and result. @return @p dst
OVSEL_API char* ovConcatPathName(char* dst, const char* name);

/// The same as ovConcatPathName.
OVSEL_API void ovConcatPathSubdir(ustring& dst, const ustring& name);
/// The same as ovConcatPathName.
OVSEL_API char* ovConcatPathSubdir(char* dst, const char* name);

/// Writes @p a joined with @p b, as ovConcatPathName joins them, to @p dst. @p dst may be the buffer of
/// @p a, but not that of @p b. @return @p dst
OVSEL_API char* ovCombinePathName(char* dst, const char* a, const char* b);

/// Writes to @p dst what @p name means from the directory @p base: @p name itself if it begins with a drive
/// (`X:`), with a backslash, or with one or two dots and a backslash; else @p base, a backslash, @p name. `/`
/// is an ordinary character here, and the separator is written even behind one that @p base ends in: `C:\a\`
/// and `b` give `C:\a\\b`.
/// @p dst needs room for 1280 bytes and a terminator.
/// @return false, with @p dst not written, if the result would exceed 1280 bytes
OVSEL_API bool ovCombineDirectory(char* dst, const char* base, const char* name);

/// Writes @p src to @p dst with its extension replaced by @p ext, or with @p ext added if it has none, by
/// the measure of the plain ovFindFileExt. @p ext brings its own dot: `a.sv` and `x` give `ax`.
/// @p dst may be the buffer of @p src.
OVSEL_API void ovChangeFileExtension(const char* src, char* dst, const char* ext);
/// @}

/// @name Splitting
/// @{

/// The file part of @p full: what stands behind the last `\`, `/` or `:`, or all of it.
OVSEL_API ustring ovSeparatePathName(const ustring& full);
/// The same, and @p dir becomes the directory part: without the separator between the two unless it belongs
/// to a root (`C:\a` lies in `C:\`), and without the colon of a drive that has no separator (`C:a` lies in
/// `C`). Empty when @p full has no separator. @p dir may be the object @p full.
OVSEL_API ustring ovSeparatePathName(const ustring& full, ustring& dir);
/// The same for narrow text. @p dir may be null, and is not written then; else it must hold @p full.
/// A null @p full gives null and an empty @p dir.
///
/// @p dir may be the buffer of @p full: the name is then cut in place, and stays as it is when it has no
/// directory part. Behind a root nothing of the file part survives the cut:
/// @code
/// char name[] = "C:\\a";
/// const char* file = ovSeparatePathName(name, name); // name is "C:\", file is "": use a second buffer
/// @endcode
/// @return the file part, a pointer into @p full
OVSEL_API const char* ovSeparatePathName(const char* full, char* dir);

/// The extension of the last element with its dot: what the filesystem layer's extract_extension gives for
/// the native form of @p name. Empty for a name that is null, empty or has none.
OVSEL_API ustring ovFindFileExt(const char16_t* name);
/// The byte index of the last dot of the last element, also when it stands first (`.abc` gives 0).
/// `\`, `/` and `:` end an element, but the first byte never does. @return -1 for none, null or empty
OVSEL_API int ovFindFileExt(const char* name);

/// The last element of @p name *without* its extension: what the filesystem layer's extract_stem gives for
/// the native form. Empty for an empty name.
OVSEL_API ustring ovExtractSubdir(const ustring& name);
/// The last element of @p name *with* its extension, one `\` at the end not counted; only `\` separates.
/// A null or empty @p name, or a lone `\`, gives the empty text. @return @p dst, or null if that is null
OVSEL_API char* ovExtractSubdir(char* dst, const char* name);

/// Is @p c the separator `\`?
OVSEL_API bool ovIsPathNameSep(char16_t c);
/// Is the byte at @p p a `\` and a character of its own, not the end of a multi-byte one? @p start is where
/// the text begins that @p p points into.
OVSEL_API bool ovIsPathNameSep(const char* start, const char* p);
/// @}

/// @name Absolute names
/// @{

/// Has the name a complete root, `X:\` or `\\server\share`, with `/` taken for `\`?
OVSEL_API bool ovIsAbsolutePath(const ustring& name);
/// Does the name begin with `\\` or with a drive? Unlike the other form this takes `C:` and `C:a` for
/// absolute, `\\server` without a share too, and `/` never.
OVSEL_API bool ovIsAbsolutePath(const char* name);

/// Makes a name absolute against the process's current directory. `.` and `..` are resolved by text: links
/// are not followed and `..` above the root vanishes. @p dst and @p name may be one object.
///
/// An absolute name comes back exactly as it was given, `..` included, and need not exist: true says nothing
/// about the disk in that case.
/// @return true with the absolute name in @p dst; false with @p dst empty if a relative name does not exist
///   or the root is a server without a share; false with @p dst as it was if the filesystem layer failed
OVSEL_API bool ovFullPath(ustring& dst, const ustring& name);
/// Makes a name absolute without asking whether it exists. @p size is the size of @p dst in bytes.
///
/// A name that begins with `\\` or a drive is copied as strncpy copies: one of @p size bytes or more leaves
/// @p dst without a terminator, and a shorter one fills the rest with NULs.
/// @return @p dst, or null, with @p dst not written, if a relative name cannot be expanded or does not fit
OVSEL_API char* ovFullPath(char* dst, const char* name, std::size_t size);

/// Does the name, made absolute, lie on a network drive? False if it cannot be made absolute within 259
/// units. Remembers the last root for which the answer was yes, for the life of the process: a drive letter
/// that stops being remote keeps its answer until another remote root is asked for.
OVSEL_API bool ovIsWinPathRemote(const ustring& name);

/// A copy of @p name: nothing is expanded, and `~` is an ordinary character.
OVSEL_API ustring ovTildeExpansion(const ustring& name);
/// @return @p name itself; @p dst is not used
OVSEL_API const char* ovTildeExpansion(char* dst, const char* name);
/// @}

/// @name The current path's name
/// The name under which the current scope's current path is registered. The library stores the pointer
/// alone: the text must live until it is replaced or the scope ends. Null means that there is none.
/// @{

/// Sets the name, making the scope's storage if this is the first call in the scope.
OVSEL_API void ovSetDefaultPathname(const char* name);
/// Replaces the name. @pre ovSetDefaultPathname was called in this scope; anything else ends the process.
OVSEL_API void ovSetCurrentPathname(const char* name);
/// The pointer that was stored. @pre as ovSetCurrentPathname
OVSEL_API const char* ovGetCurrentPathname();
/// The name as UTF-16, empty for null. @pre as ovSetCurrentPathname
OVSEL_API ustring ovGetCurrentPathname_u();
/// 1 if the scope has a name that is not null, else 0. May be called at any time.
OVSEL_API int ovCurrentPathExists();
/// @}

/// @name The grammar of directory names
/// Only `\` separates elements in the first three; `/` is an ordinary character to them.
/// @{

/// Does *any* element of the name begin with `@`? True for a class directory and for all below it.
OVSEL_API bool ovIsDirNameMethodDirName(const ustring& name);
/// The same for narrow text.
OVSEL_API bool ovIsDirNameMethodDirName(const char* name);

/// Does *any* element of the name begin with `+`? `a\+b\c` qualifies, `a+b` does not.
OVSEL_API bool ovIsDirNamePackageDirName(const ustring& name);
/// The same for narrow text.
OVSEL_API bool ovIsDirNamePackageDirName(const char* name);

/// The first `+` that begins an element, a pointer into @p name, or null.
OVSEL_API const char16_t* ovGetPackageDirName(const char16_t* name);
/// The same for narrow text.
OVSEL_API const char* ovGetPackageDirName(const char* name);

/// Is the last element, split off as by ovSeparatePathName, exactly `private`? `a\private` is, and
/// `a\private\` (whose last element is empty) and `a\Private` are not.
OVSEL_API bool ovIsPrivateDirName(const ustring& name);
/// The same; false for null.
OVSEL_API bool ovIsPrivateDirName(const char* name);
/// @}

/// @name Names of packages, classes and objects
/// Each writes a dotted name to @p dst, which holds @p dstLen units (bytes, or UTF-16 units in the Location
/// forms) with the terminator, and returns @p dst; or returns null with @p dst empty when there is no such
/// name or it does not fit. @p dst is emptied even if @p dstLen is 0, so it must hold one unit.
/// Runs of separators count as one in the FullName and Location forms; in the FullName forms @p dst may be
/// the buffer of the name, in the others not. A null name is a caller's fault.
/// @{

/// The package that a full name lies in: `a.b` for `C:\t\+a\+b\@C\f.sv`. The first run of consecutive `+`
/// elements counts.
OVSEL_API char* ovGetPackageNameFromFullName(const char* fullName, char* dst, std::size_t dstLen);

/// The class that a full name lies in, qualified by its package: `a.b.C` for `C:\t\+a\+b\@C\f.sv`. The `@`
/// elements must follow the package directly: there is none in `C:\t\+a\x\@C\f.sv`.
///
/// A package that does not fit in @p dst is passed over, so that a small buffer may get a name that is not
/// qualified: `+abc\@C` gives `abc.C` with room for it and `C` with a @p dstLen of 3.
OVSEL_API char* ovGetClassNameFromFullName(const char* fullName, char* dst, std::size_t dstLen);

/// As ovGetPackageNameFromFullName, on the location's path with `/` between its elements.
OVSEL_API char16_t* ovGetPackageNameFromLocation(const foundation::storage::vfs::AbsoluteIRI& location,
                                                 char16_t* dst, std::size_t dstLen);
/// As ovGetClassNameFromFullName, on the location's path with `/` between its elements.
OVSEL_API char16_t* ovGetClassNameFromLocation(const foundation::storage::vfs::AbsoluteIRI& location,
                                               char16_t* dst, std::size_t dstLen);

/// The class that a file or class directory belongs to, *without* its package: `Foo` for
/// `C:\t\@Foo\bar.sv`, for what lies in or below its private directory, and for `C:\t\@Foo` itself.
/// Only when the name ends in the class directory do directly enclosing ones count: `C:\t\@a\@b` is `a.b`,
/// but `C:\t\@a\@b\f.sv` is `b`. An `@` that does not begin an element, behind all others, gives null.
/// @p path plays no part in the result and is released.
OVSEL_API char* ovGetObjectNameFromPath(ovPath path, const char* fullName, char* dst, std::size_t dstLen);
/// The same for UTF-16; @p dst gets ASCII.
/// @throws fl::i18n::CvtInvalidCharacter, with @p dst empty, for a class name beyond ASCII
OVSEL_API char* ovGetObjectNameFromPath(ovPath path, const char16_t* fullName, char* dst, std::size_t dstLen);
/// @}
