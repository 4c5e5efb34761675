#pragma once

#include <cstdint>

#include <boost/function.hpp>

#include <ovsel/export.hpp>
#include <ovsel/handles.hpp>

/// @file
/// Interest in a path: callbacks that are told when it changes.

/// What happened. "Directory" is the second argument of the callback; "none" stands for the null record. What
/// tells an end comes also when a hook has thrown in between.
enum ovEventType : std::uint32_t {
    ovEventDirContentsLoaded = 0, ///< directory: it has been read again
    ovEventPathReplaceBegin = 1,  ///< none
    ovEventCWDChangeBegin = 2,    ///< none: all checks are passed, the old directory is still there
    ovEventRefreshBegin = 3,      ///< directory, or none for a refresh of the whole path
    ovEventDirRemoved = 4,        ///< directory: about to go, still whole
    ovEventDirAdded = 5,          ///< directory: read, and part of the path or of its parent
    ovEventPathReplaceEnd = 6,    ///< none
    ovEventCWDChangeEnd = 7,      ///< none
    ovEventRefreshEnd = 8,        ///< as for ovEventRefreshBegin
    ovEventPathRemoved = 9 ///< none; a handle on the path that is taken now must not be kept: the path still
                           ///< answers; nothing more is told afterwards
};

/// The token of a registration. It keeps the path's memory alive as long as it exists.
struct ovRegisteredInterest {
    ovPath m_path;            ///< null if nothing was registered
    std::int32_t m_index = 0; ///< the slot, for the library's own use
};

/// Registers a callback on a path.
///
/// Callbacks run on the host's thread inside the operation that caused the event, in the order of their
/// slots, and may ask the path anything; what they throw is swallowed. A cancelled slot goes to the next
/// registration.
/// @warning From inside a callback, register only while a cancelled slot is free.
/// @return a token; one with a null path if @p path is null or removed, in which case the callback is
/// dropped.
OVSEL_API ovRegisteredInterest ovRegisterPathInterest(ovPath path,
                                                      boost::function<void(ovEventType, ovDir)> callback);

/// Ends a registration; the callback is destroyed at once. Nothing happens with a null token and when the
/// path has been removed.
/// Cancel a token once only: its slot may belong to somebody else by then.
OVSEL_API void ovCancelPathInterest(ovRegisteredInterest interest);
