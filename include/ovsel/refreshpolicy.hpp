#pragma once

#include <cstdint>

#include <ovsel/export.hpp>
#include <ovsel/handles.hpp>

/// @file
/// How directories are checked for changes when the operating system does not report on them.
///
/// Every directory that is not frozen asks for a notification handle when it is read. One that gets none is
/// checked by a policy: local directories are read again at each refresh; remote ones by what is set here.

/// How a directory is checked.
enum ovRefreshPolicy : std::uint32_t {
    ovRefreshAlways = 0,           ///< not checked: taken as changed at every refresh
    ovRefreshByTimeStampQuiet = 1, ///< by its time, without a warning that it is not notified
    ovRefreshByTimeStamp = 2,      ///< by its time
    ovRefreshUnchecked = 3,        ///< as ovRefreshNever
    ovRefreshNotified = 4,         ///< by the operating system's notifications
    ovRefreshNever = 5             ///< never checked; changes are seen only when declared
};

/// When a directory without notifications is worth a warning. Any other value acts as ovWarnCNHNever.
enum ovWarnInvalidCNH : std::uint32_t {
    ovWarnCNHNever = 0, ///< silence
    ovWarnCNHOnce = 1,  ///< the start: each local directory, and one for each remote file system
    ovWarnCNHAlways = 2 ///< each directory
};

/// Sets the policy of a remote current directory that has no notification handle.
/// @param path must be in service.
/// @param policy ovRefreshNotified changes nothing and only asks.
/// @return the policy that held so far.
OVSEL_API ovRefreshPolicy ovNonNotifiedRemoteCWDRefreshPolicy(ovPath path, ovRefreshPolicy policy);

/// The same for all other remote directories, those that are there already included. Prints "asserted here"
/// on a null or removed path, which must not be given.
OVSEL_API ovRefreshPolicy ovNonNotifiedRemotePathRefreshPolicy(ovPath path, ovRefreshPolicy policy);

/// Sets when a directory without a handle is worth a warning through the warning hook. There is no value for
/// a pure question.
/// @return the mode that held so far.
/// @pre @p path is not null.
OVSEL_API ovWarnInvalidCNH ovSetNotificationHandleWarnings(ovPath path, ovWarnInvalidCNH mode);
