#pragma once

#include <host_interfaces/ustring.hpp>
#include <ovsel/export.hpp>
#include <ovsel/handles.hpp>

/// @file
/// Paths: named search paths of one process. Names are narrow and compare byte for byte. A path lives as long
/// as the last ovPath on it, or until ovRemovePath.

/// Creates a path whose directories are all taken as unchanging, with the platform's case rule: the same as
/// ovCreatePathWithPreFrozen with an empty (not null) prefix.
///
/// The path starts with the process's current directory and nothing else. The first path of a process owns
/// that directory: changing the one changes the other.
/// @param unused ignored.
/// @param name the path's name, not null.
/// @return a null handle, with a message through the error hook, if the default I/O hooks are incomplete or
/// the name is taken.
OVSEL_API ovPath ovCreatePath(int unused, const char* name);

/// Creates a path.
///
/// @param unused ignored.
/// @param name the path's name, not null.
/// @param preFrozenPrefix directories whose names begin with these characters are taken as unchanging once
/// they are read. Null: none. Empty: all. It is compared character by character, so that `C:\tool` also
/// covers `C:\toolbox`.
/// @param caseSensitivity only ovCaseSensitive makes a case-sensitive path.
/// @param disableTempFileProbe no temporary file is written to find out whether a remote file system reports
/// changes.
/// @return as ovCreatePath.
/// @throws what an I/O hook throws while the current directory is read; there is no path then.
OVSEL_API ovPath ovCreatePathWithPreFrozen(int unused, const char* name, const char16_t* preFrozenPrefix,
                                           ovCaseSensitivity caseSensitivity, bool disableTempFileProbe);
/// The same with a narrow prefix, in the encoding of file names.
OVSEL_API ovPath ovCreatePathWithPreFrozen(int unused, const char* name, const char* preFrozenPrefix,
                                           ovCaseSensitivity caseSensitivity, bool disableTempFileProbe);

/// The path in service of that name, else a null handle.
/// @pre @p name is not null.
OVSEL_API ovPath ovLookupPath(const char* name);
/// The same with a name in UTF-16. @throws fl::i18n::CvtInvalidCharacter for a name with no narrow form.
OVSEL_API ovPath ovLookupPath(const ustring& name);

/// Takes a path out of service: parties are told, all directories go, the name is free again. Handles stay
/// safe to hold. Nothing happens on a null handle or a removed path.
OVSEL_API void ovRemovePath(ovPath path);

/// Removes every path.
/// @return false if any path was in service, which a host at its end may want to hear of.
OVSEL_API bool ovTerminate();
