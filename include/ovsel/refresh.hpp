#pragma once

#include <cstdint>

#include <host_interfaces/ustring.hpp>
#include <ovsel/export.hpp>
#include <ovsel/handles.hpp>

/// @file
/// Refreshing and freezing. A path looks at the disk for changes here and nowhere else; when, is the host's
/// decision.
///
/// All names are absolute, in UTF-16 or narrow (the encoding of file names). Paths must be in service and
/// handles live: see handles.hpp. A refresh reads directories through the I/O hooks and lets through what
/// those throw; a directory that was being read then keeps what had been read, and a check reads it again. A
/// frozen one is passed over by checks: there the forced reload has to be repeated.

/// What a refresh does with a directory. 0 acts as ovRefreshCheck.
enum ovDirRefreshType : std::uint32_t {
    ovRefreshCheck = 1, ///< look whether it has changed, and read it again if so; frozen ones are passed over
    ovRefreshReload = 2,       ///< read it again unless it is frozen
    ovRefreshReloadFrozen = 3, ///< read it again in any case; a frozen one stays frozen
};

/// Refreshes one directory without its class, package and private directories. A null record only tells
/// parties that a refresh began and ended.
/// @pre @p dir is not null.
OVSEL_API void ovRefreshDirectory(ovDir dir, ovDirRefreshType type);

/// Refreshes the whole path with all that lies in its directories. Prints "asserted here" on a null or
/// removed path, which must not be given.
///
/// When nothing changed and every directory is notified, this costs the host one look at its events.
OVSEL_API void ovRefreshAllDirectories(ovPath path, ovDirRefreshType type);

/// Marks a directory as changed: the next refresh of any type reads it again. Frozen directories take no
/// mark.
/// @pre @p dir is not null; a null record takes no mark.
OVSEL_API void ovSetDirChanged(ovDir dir);

/// Tells the path that something changed in a directory. For an unknown class, package or private directory,
/// which must be new, the nearest known parent is marked; for any other unknown one every directory becomes a
/// case for a check.
/// @return the directory marked, or the null record.
/// @pre @p path is in service.
OVSEL_API ovDir ovSetDirChanged(ovPath path, const ustring& fullName);
/// The same with a narrow name; null counts as empty.
OVSEL_API ovDir ovSetDirChanged(ovPath path, const char* fullName);

/// Tells the path that a directory is gone: its parent is marked.
/// @return the parent, or the null record if that is not known.
/// @pre @p path is in service.
OVSEL_API ovDir ovSetDirRemoved(ovPath path, const ustring& fullName);

/// Tells the path that a file changed: its directory is marked as by ovSetDirChanged.
/// @return as there; the null record for an empty name.
/// @pre @p path is in service.
OVSEL_API ovDir ovSetFullnameChanged(ovPath path, const ustring& fullName);

/// Marks every directory as changed.
/// @pre @p path is in service.
OVSEL_API void ovSetAllChanged(ovPath path);

/// Makes every directory a case for a check at the next refresh.
/// @pre @p path is in service.
OVSEL_API void ovChangedUnknownDir(ovPath path);

/// Takes a directory, with all below it, as unchanging; one that is known to have changed is read first. The
/// current directory cannot be frozen.
/// @return whether it was frozen before.
/// @pre @p dir is not null; nothing happens to a null record.
OVSEL_API bool ovFreeze(ovDir dir);

/// Ends that. What changed meanwhile stays unseen until a reload is forced:
/// @code
/// ovUnFreeze(dir);
/// ovRefreshDirectory(dir, ovRefreshCheck);    // sees only what happens from now on
/// ovRefreshDirectory(dir, ovRefreshReload);   // sees everything
/// @endcode
/// @return whether it was frozen before.
/// @pre as ovFreeze.
OVSEL_API bool ovUnFreeze(ovDir dir);

/// False for a null handle or record.
OVSEL_API bool ovIsFrozen(ovDir dir);

/// Shall directories that are added or appear from now on be frozen? @return what held so far.
/// @pre @p path is not null.
OVSEL_API bool ovSetFreezeAllAddedDirectories(ovPath path, bool freeze);

/// Shall each directory that is read again be told through the third message hook? @return what held so far.
/// @pre @p path is not null.
OVSEL_API bool ovSetDirectoryReloadMessages(ovPath path, bool on);
