#pragma once

#include <cstdint>

/// @file
/// How directories that the operating system does not report on are checked for changes.

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
    ovWarnCNHNever = 0,
    ovWarnCNHOnce = 1, ///< once for each file system
    ovWarnCNHAlways = 2
};
