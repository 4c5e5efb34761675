#pragma once

#include <cstdint>

#include <host_interfaces/ustring.hpp>
#include <ovsel/export.hpp>
#include <ovsel/handles.hpp>

/// @file
/// Searches: which file does this name mean, seen from here?
///
/// A search is created for a name, an extension list and a place to look from; each ovFindNext... call gives
/// the next candidate, best first. It sees the path as it is and must be destroyed before the path changes.
///
/// **Names** are in UTF-16, or narrow in the char forms, where null counts as empty. A name may carry an
/// extension and be qualified by directories (`pkg\foo`, `@Class\method`; `/` works too). An empty name
/// stands for every item.
///
/// **Extension lists** are null-terminated arrays of ASCII strings, with or without a leading dot; an empty
/// string stands for "no extension", a null list for "any". The order does not change what comes first: each
/// result tells its extension's place in the list.
///
/// **Results** of file searches: 0 for no further file, -1 for a match without an extension list, else the
/// 1-based place of the extension. The directory is the one that holds the file, the null record at the end;
/// the name is the file's full name, empty at the end.
///
/// **Handles and errors.** Paths must be in service and directories live or a null record: see handles.hpp.
/// The functions that take an extension list raise fl::i18n::CvtInvalidCharacter for one beyond ASCII, the
/// finds that write narrow text for a file whose name has no narrow form, and both pass on what an I/O hook
/// throws: the first use of an entry that the listing left open asks the disk once. A miss is no error.

/// One search. Opaque; made by the functions below and ended by ovDestroySearch.
class ovSearch;

/// A null-terminated array of ASCII strings, or null. Read while the function runs and not kept.
using ovExtensionList = const char* const*;

/// Every item of the path: direct files first, then those in class and package directories, then private
/// ones.
/// @pre @p path is in service, here and below.
/// @return never null; the caller ends it with ovDestroySearch, as every search below.
OVSEL_API ovSearch* ovCreateAllSearchIterator(ovPath path, const ustring& name, ovExtensionList extensions,
                                              ovCaseSensitivity rule);
/// The same with a narrow name.
OVSEL_API ovSearch* ovCreateAllSearchIterator(ovPath path, const char* name, ovExtensionList extensions,
                                              ovCaseSensitivity rule);

/// The same without the current directory.
OVSEL_API ovSearch* ovCreatePathOnlySearchIterator(ovPath path, const ustring& name,
                                                   ovExtensionList extensions, ovCaseSensitivity rule);
/// The same with a narrow name; the second path plays no part.
OVSEL_API ovSearch* ovCreatePathOnlySearchIterator(ovPath path, ovPath ignored, const char* name,
                                                   ovExtensionList extensions, ovCaseSensitivity rule);

/// Files in class and package directories, in path order.
/// @pre @p path is in service.
OVSEL_API ovSearch* ovCreateMethodSearchIterator(ovPath path, const ustring& name, ovExtensionList extensions,
                                                 ovCaseSensitivity rule);

/// What lies directly in one directory.
/// @pre @p dir is a live directory, or a null record, in which nothing lies; as in the next two.
OVSEL_API ovSearch* ovCreateDirSearchIterator(ovDir dir, const ustring& name, ovExtensionList extensions,
                                              ovCaseSensitivity rule);
/// The same with a narrow name.
OVSEL_API ovSearch* ovCreateDirSearchIterator(ovDir dir, const char* name, ovExtensionList extensions,
                                              ovCaseSensitivity rule);

/// What lies in the private directory of @p dir.
OVSEL_API ovSearch* ovCreatePrivateSearchIterator(ovDir dir, const ustring& name, ovExtensionList extensions,
                                                  ovCaseSensitivity rule);

/// What a file in @p dir means by a name: its own private directory, constructors, the current directory, the
/// path in order. A qualified name means the same from everywhere and is looked up as by
/// ovCreateAllSearchIterator.
OVSEL_API ovSearch* ovCreateVisibleSearchIterator(ovDir dir, const ustring& name, ovExtensionList extensions,
                                                  ovCaseSensitivity rule);
/// The same from the directory of that full name; an unknown or empty one has no private directory.
OVSEL_API ovSearch* ovCreateDirnameVisibleSearchIterator(ovPath path, const ustring& dirName,
                                                         const ustring& name, ovExtensionList extensions,
                                                         ovCaseSensitivity rule);

/// The next file.
/// @param search null gives 0.
/// @param[out] dir may be null.
/// @param[out] name the full name.
OVSEL_API int ovFindNextFile(ovSearch* search, ovDir* dir, ustring& name);
/// The same, narrow. @p name may be null, and must else hold a full name with its terminator: nothing is
/// checked.
OVSEL_API int ovFindNextFile(ovSearch* search, ovDir* dir, char* name);

/// The next file only if it lies in the directory of the one before, so that a caller can see all extensions
/// of a name there and choose. The first file of the next directory is held back for the next ovFindNextFile:
/// @code
/// int best = ovFindNextFile(search, &dir, name);
/// for (int match; (match = ovFindNextFileBounded(search, &dir, other)) != 0;)
///     if (match < best) { best = match; name = other; }
/// @endcode
/// A search without a name ends such a walk with a null record in @p dir but returns the rank of the file
/// that it holds back; test the directory there.
/// @pre @p dir is not null. A null @p search gives 0.
OVSEL_API int ovFindNextFileBounded(ovSearch* search, ovDir* dir, ustring& name);
/// The same, narrow; @p name as for ovFindNextFile.
OVSEL_API int ovFindNextFileBounded(ovSearch* search, ovDir* dir, char* name);

/// The next file or plain sub-directory. Arguments and result as for ovFindNextFile.
OVSEL_API int ovFindNextUnspecified(ovSearch* search, ovDir* dir, ustring& name);

/// The next class, package, private or path directory.
/// @param search null gives false.
/// @param[out] dir may be null; a null handle at the end.
/// @return false at the end.
OVSEL_API bool ovFindNextDir(ovSearch* search, ovDir* dir);

/// Ends a search and sets the pointer to null.
/// @pre @p search is not null; what it points to may be.
OVSEL_API void ovDestroySearch(ovSearch** search);

/// The first file of a name anywhere on the path, by the path's case rule.
/// @return and out values as for ovFindNextFile.
OVSEL_API int ovFindFirstFileInAll(ovPath path, const ustring& name, ovExtensionList extensions, ovDir* dir,
                                   ustring& fullName);
/// The same, narrow; @p fullName as the name of ovFindNextFile.
OVSEL_API int ovFindFirstFileInAll(ovPath path, const char* name, ovExtensionList extensions, ovDir* dir,
                                   char* fullName);

/// What the file @p asker means by @p name, by the path's case rule: the interpreter's question. The asker is
/// a full name, of which only the directory counts; empty for a question from nowhere. Result and out values
/// are those of ovFindNextFile.
/// @pre @p path is in service.
OVSEL_API int ovFindFirstFileVisibleToFile(ovPath path, const ustring& asker, const ustring& name,
                                           ovExtensionList extensions, ovDir* dir, ustring& fullName);

/// The class directory of @p dir that follows @p previous, the first one if @p previous is @p dir itself; the
/// null record at the end, and after a null handle.
/// @pre @p dir is not null; nothing lies in a null record.
OVSEL_API ovDir ovGetMethodDirs(ovDir dir, ovDir previous);
/// The same over package directories.
OVSEL_API ovDir ovGetPackageDirs(ovDir dir, ovDir previous);

/// The next class directory in path order. Begun from the null record the walk includes the current
/// directory, begun from any other directory that is no class directory it starts at the path's first.
/// @pre @p dir is not null, here and below.
OVSEL_API ovDir ovGetNextMethodDir(ovDir dir);

/// The next class directory of one name in path order. From a class directory the walk goes on along the name
/// that this directory has, and @p className and @p rule are not looked at. The name is ASCII, without `@`;
/// any other text gives the null record, and so does the end.
OVSEL_API ovDir ovGetNextMethodClassDir(ovDir dir, const char* className, ovCaseSensitivity rule);
