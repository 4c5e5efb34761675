#pragma once

#include <host_interfaces/ustring.hpp>
#include <ovsel/export.hpp>
#include <ovsel/handles.hpp>

/// @file
/// The toolbox path cache: a file that tells what the directories under one prefix contain, so that a host
/// starts without reading them.
///
/// A cache is written once, by a program whose path has those directories frozen, and used at every start:
/// @code
/// // Writing: the prefix is given when the path is created, without a separator at its end.
/// ovPath path = ovCreatePathWithPreFrozen(0, "main", u"C:\\host\\toolbox", ovCaseSensitive, false);
/// ovAddDir(path, "C:\\host\\toolbox\\sig", ovDirAddAtEnd); // frozen, since it is under the prefix
/// ovWritePathToCacheFile(path, "C:\\host\\toolbox.xml");
///
/// // Using: before the directories are added.
/// ovUseToolboxCache(path, u"C:\\host\\toolbox.xml", u"C:\\host\\toolbox", false);
/// if (!ovInToolboxCacheMode())
///     log("no cache: directories are read from the disk");
/// @endcode
///
/// What is under the prefix then counts as unchanging: the cache is believed, whatever the disk holds. A
/// directory that the cache does not list is read from the disk, and so is everything outside the prefix.
///
/// The state is one for the process: two paths cannot use two caches. Diagnostics go to HostPrintf.
///
/// The format carries names as they are. A name with `"`, `&`, `<` or a unit beyond ASCII makes a file that
/// one of the readers refuses or reads as other names, so a host that writes a cache looks for them first.

/// Writes what the frozen directories under the path's prefix contain, the current directory excepted. With
/// no prefix every frozen directory is written under its full name; an empty prefix is a prefix, of one
/// separator.
/// @param path must be in service.
/// @param fileName narrow, in the system's grammar. An existing file is overwritten in place: write beside it
/// and rename, if a crash must not cost the old one.
/// @return true
/// @throws whatever the storage layer and the text layer say of a file that cannot be written and of a name
/// that is no valid UTF-16; std::runtime_error "could not convert calendar time to local time". A part of the
/// file may then be there.
OVSEL_API bool ovWritePathToCacheFile(ovPath path, const char* fileName);

/// Loads a cache file and lets @p path take from it what lies under @p prefix. Directories that the path has
/// read already stay as they are. Does nothing after ovDisableToolboxCache. The I/O hooks that the path has
/// give way to the cache's, which fall back on the defaults of ovSetDefaultIOFcns.
///
/// A file that cannot be used leaves the mode as it was; ask ovInToolboxCacheMode.
/// @param path must be in service, here and below.
/// @param cacheFile in the system's grammar.
/// @param prefix must end without a separator: one is added in any case, and nothing lies behind two.
/// @param report shall the time it took, and directories under the prefix that the cache does not list, be
/// printed?
/// @throws fl::i18n::CvtInvalidCharacter for a @p cacheFile that has no narrow form; and, only where
/// PATH_MGR_MODE is vfs, fl::i18n::MessageException: "SORVEN:ovsel:unableToLoadCache" with the file and the
/// reason, "SORVEN:ovsel:pathCacheXMLParseError" with the reason.
/// @warning In that mode, while a cache is in use, a question whether a name no longer than the prefix is a
/// directory ends in std::out_of_range. ovDeleteNonExistentDirectories asks it of every path directory.
OVSEL_API void ovUseToolboxCache(ovPath path, const ustring& cacheFile, const ustring& prefix, bool report);

/// Ends the use of the cache and gives the path the default I/O hooks. What was learnt from the cache stays
/// in the path until it is refreshed. Harmless when no cache is in use.
OVSEL_API void ovRevertFromToolboxCache(ovPath path);

/// From now on ovUseToolboxCache does nothing; a cache in use stays in use. There is no way back.
OVSEL_API void ovDisableToolboxCache();

/// Is a cache in use?
OVSEL_API bool ovInToolboxCacheMode();

/// Shall every question to the cache be printed? Off at the start.
OVSEL_API void ovEnableToolboxCacheDiagnosticTrace(bool on);

/// Shall loading, misses and the counts at the end be printed? Off at the start.
OVSEL_API void ovEnableToolboxCacheDiagnosticStatusReport(bool on);
