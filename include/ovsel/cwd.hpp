#pragma once

#include <host_interfaces/ustring.hpp>
#include <ovsel/export.hpp>
#include <ovsel/handles.hpp>

/// @file
/// The current directory of a path: it stands in front of all other directories.
///
/// Names are UTF-16, or narrow (the encoding of file names) in the plain forms. Nothing here throws for a
/// name that cannot be used.

/// Changes the path's current directory, and for the path that owns it also the process's.
///
/// @param path null or removed: null is returned, which reads like success, and nothing changes.
/// @param name at most 1,024 code units; absolute, or for the path that owns the process's directory also
/// relative to that.
/// @return null for success, else one of these constant English texts, which the caller shows:
/// "No directory specified", "Directory name too long", "Directory permission denied",
/// "Name is nonexistent or not a directory", "Directory access failure", "Failed to change current
/// directory". After a failure the old directory is still the current one.
/// @code
/// if (!ovSetCWDName(removedPath, u"C:\\a")) { /* reached, although nothing was done */ }
/// @endcode
OVSEL_API const char* ovSetCWDName(ovPath path, const ustring& name);
/// The same with a narrow name; null counts as empty.
OVSEL_API const char* ovSetCWDName(ovPath path, const char* name);

/// The current directory, or the null record when the process had none as the path was created. Prints
/// "asserted here" on a null or removed path, which must not be given.
OVSEL_API ovDir ovGetCWD(ovPath path);

/// The current directory's absolute name; empty for a null or removed path or when there is none.
OVSEL_API ustring ovGetCWDName(ovPath path);

/// The same, narrow, cut to @p size - 1 bytes and terminated; the cut may fall inside a character.
/// @return @p buffer, or null (nothing written) when there is no name or @p size is 0.
OVSEL_API char* ovGetCWDName(ovPath path, char* buffer, unsigned size);

/// Hides the current directory or shows it again. Hidden, and not also on the path, it counts as empty; shown
/// again, its contents come back when it is next read:
/// @code
/// ovHideCWD(path, false);
/// ovRefreshDirectory(ovGetCWD(path), ovRefreshReload);
/// @endcode
/// @pre @p path is not null.
OVSEL_API void ovHideCWD(ovPath path, bool hide);
/// Is it hidden? @pre @p path is not null.
OVSEL_API bool ovIsCWDHidden(ovPath path);

/// Is the current directory also a directory of the path?
/// @pre @p path is in service.
OVSEL_API bool ovIsCWDOnPath(ovPath path);

/// Is this path directory also the current directory? False for a null handle and for every other kind of
/// directory, the current directory's own record included.
OVSEL_API bool ovIsPathDirAlsoCWD(const ovDir& dir);
