#pragma once

#include <cstdint>

#include <host_interfaces/ustring.hpp>
#include <ovsel/export.hpp>
#include <ovsel/handles.hpp>

/// @file
/// The ordered list of a path's directories: adding, removing, replacing, walking, and finding by full name.
///
/// Names are UTF-16, or narrow (the encoding of file names) in the plain forms, and may use `/` or `\`. A
/// rejected directory is reported through the warning hook with its name; nothing here throws for it. All
/// functions expect handles on live paths and directories unless they say otherwise: see handles.hpp.

/// Where ovAddDir puts a directory.
enum ovDirAddLocn : std::uint32_t {
    ovDirAddAtBegin = 0, ///< in front of all others, behind the current directory
    ovDirAddAtEnd = 1    ///< behind all others; so does any other value
};

/// Adds a directory to the path, reads it, and returns its handle.
///
/// Class, package and private directories are refused, and so is what does not exist or cannot be entered;
/// a warning says why. A directory that is already on the path stays where it is, without a warning:
/// @code
/// ovAddDir(path, u"C:\\a", ovDirAddAtEnd);
/// ovDir again = ovAddDir(path, u"C:\\a", ovDirAddAtBegin);   // the null record: nothing was added or moved
/// @endcode
/// @param path must be in service.
/// @param name absolute, or relative to the process's current directory. An absolute name is kept as it is
/// given.
/// @param location in front or behind.
/// @return the directory, or the path's null record if nothing was added.
OVSEL_API ovDir ovAddDir(ovPath path, const ustring& name, ovDirAddLocn location);
/// The same with a narrow name; a null one gives the null record.
OVSEL_API ovDir ovAddDir(ovPath path, const char* name, ovDirAddLocn location);

/// Removes a directory from the path. Handles on it and on what lay below stay safe to hold. Silent on a null
/// or invalid handle, on the current directory and on class,
/// package and private directories.
OVSEL_API void ovRemoveDir(ovDir dir);

/// Replaces the whole list by the directories of @p path, separated by `;`; empty names between are ignored.
/// Directories that are on the path already are kept as they are and only put in order, so that just the new
/// ones are read. A name of more than 1,024 code units ends the work early: a warning, what came before it
/// holds, and nothing is removed.
/// @return true if a directory was added or removed, or if adding one was tried; a new order alone gives
/// false. Prints "asserted here" on a null or removed path, which must not be given.
OVSEL_API bool ovReplacePath(ovPath path, const ustring& directories);

/// The next of: null record, current directory, path directories, null record.
/// @code
/// for (ovDir d = ovGetNextPathDir(ovGetNullDir(path)); ovGetDirType(d) != ovDirTypeNull; d =
/// ovGetNextPathDir(d))
///     use(d);
/// @endcode
/// @pre @p dir is the null record, the current directory or a path directory.
OVSEL_API ovDir ovGetNextPathDir(ovDir dir);

/// The one of the two whose path-level directory comes first; @p a when they lie in the same one. A null
/// handle or record counts as the first place.
OVSEL_API ovDir ovSelectDirFirstOnPath(ovDir a, ovDir b);

/// Removes every path directory that exists no longer. The current directory is never looked at.
/// @pre @p path is in service.
OVSEL_API void ovDeleteNonExistentDirectories(ovPath path);

/// The record of an absolute name: current directory, path, class, package or private directory; the path's
/// null record if there is none, also for an empty name. Plain sub-directories have no record.
/// @pre @p path is in service.
OVSEL_API ovDir ovFindDirFullName(ovPath path, const ustring& name);
/// The same with a narrow name, which must not be null.
OVSEL_API ovDir ovFindDirFullName(ovPath path, const char* name);

/// The directory that holds a class, package or private directory; the null record for one on the path.
/// @pre @p dir is not null; the null record gives itself, here and below.
OVSEL_API ovDir ovGetParentDir(const ovDir& dir);

/// The current directory or path directory that a directory lies under; itself if it is one.
/// @pre as ovGetParentDir.
OVSEL_API ovDir ovGetPathDir(const ovDir& dir);

/// The directory's own `private` directory, else the null record.
/// @pre as ovGetParentDir.
OVSEL_API ovDir ovGetPrivateDir(const ovDir& dir);
