#pragma once

#include <cstdint>
#include <ctime>
#include <string_view>

#include "host_interfaces/export.hpp"
#include "host_interfaces/ustring.hpp"

/// @file
/// The platform: every operation beneath the library that touches the operating system itself.

/// The machine and the surroundings of the library, as far as it may know them.
namespace host {

/// @name Answers of IPlatform::GetDriveType that have a meaning here
/// @{
inline constexpr std::uint32_t DriveNoRoot = 1; ///< no such root
inline constexpr std::uint32_t DriveFixed = 3;  ///< on this machine
inline constexpr std::uint32_t DriveRemote = 4; ///< on another one
/// @}

/// Stands for one folder under watch, see IPlatform::FindFirstChangeNotification.
using ChangeHandle = std::uintptr_t;
/// No handle: all bits set.
inline constexpr ChangeHandle InvalidChangeHandle = ~ChangeHandle{0};

/// @name Answers of IPlatform::WaitForSingleObject
/// @{
inline constexpr std::uint32_t WaitObject0 = 0;         ///< signalled
inline constexpr std::uint32_t WaitTimeout = 258;       ///< not signalled within the time
inline constexpr std::uint32_t WaitFailed = 0xFFFFFFFF; ///< the handle can tell nothing
/// @}

/// @name What a handle is to report: the filter of IPlatform::FindFirstChangeNotification
/// @{
inline constexpr std::uint32_t ChangeFileName = 0x1;   ///< a file made, removed or renamed
inline constexpr std::uint32_t ChangeDirName = 0x2;    ///< the same for a folder
inline constexpr std::uint32_t ChangeSize = 0x8;       ///< a file's size
inline constexpr std::uint32_t ChangeLastWrite = 0x10; ///< a file's time of writing
/// @}

/// The seam between the library and the machine. An implementation may throw std::bad_alloc and nothing else,
/// and nothing at all where something is given back: in FindCloseChangeNotification, EndNeighbours and
/// EndChangeChecks.
/// Called on the host's one thread; outlives every call that it serves.
class OVSEL_HOST_API IPlatform {
  public:
    virtual ~IPlatform();

    /// Classifies a drive root such as `C:\` or `\\server\`. 4 is a network drive.
    virtual std::uint32_t GetDriveType(const ustring& root) = 0;

    /// @p name made absolute against the current directory, `.` and `..` resolved by text; empty on failure.
    virtual ustring FullPath(const ustring& name) = 0;

    /// Seconds since the epoch.
    virtual std::int64_t CurrentTime() = 0;

    /// The local calendar time of @p seconds since the epoch. @return false if it cannot be had.
    virtual bool LocalTime(std::int64_t seconds, std::tm& result) = 0;

    /// Tells the probe files of several processes apart.
    virtual std::uint32_t CurrentProcessId() = 0;

    /// The value of an environment variable, or null. Valid until the environment changes.
    virtual const char* GetEnvironment(const char* name) = 0;

    /// Start of the character of narrow text that ends before @p p; @p start if there is none before it.
    /// @pre start <= p, and the bytes between are readable.
    virtual const char* PreviousCharacter(const char* start, const char* p) = 0;

    /// Puts the folder @p dirName under watch: from here on, a change inside it signals the handle. A host
    /// may report more than @p filter asks for, never less, and may signal without a change. The caller owns
    /// the handle and gives it back by FindCloseChangeNotification.
    /// @return InvalidChangeHandle if there is no such folder, if it cannot be watched, or if its changes
    /// would not be told reliably.
    virtual ChangeHandle FindFirstChangeNotification(const ustring& dirName, bool watchSubtree,
                                                     std::uint32_t filter) = 0;

    /// Arms a signalled handle again. What changed before this call may signal no more, so the caller looks
    /// at the folder afterwards. @return false for what is no open handle.
    virtual bool FindNextChangeNotification(ChangeHandle handle) = 0;

    /// Gives a handle back. @return false for what is no open handle.
    virtual bool FindCloseChangeNotification(ChangeHandle handle) = 0;

    /// Is the handle signalled, or does it become so within the time? Leaves it signalled.
    /// @return WaitObject0; WaitTimeout; WaitFailed when the handle can tell nothing at the moment, as after
    /// the folder has gone, and for what is no open handle.
    virtual std::uint32_t WaitForSingleObject(ChangeHandle handle, std::uint32_t milliseconds) = 0;

    /// A refresh of many folders stands between the two. A host may take its news in at the beginning and
    /// answer each wait of no time from memory until the end. The pairs do not nest.
    virtual void BeginChangeChecks() {}
    /// Between the two: may a wait of no time on any handle answer other than WaitTimeout? A host that does
    /// not keep account of that says true, and each handle is asked.
    virtual bool HasNews() { return true; }
    /// Between the two: a check is about to ask for a folder's time. Until EndNeighbours nothing outside the
    /// library is called but the hook for that, so a host may hold on to the folder in which the last one
    /// lay: the next one is nearly always its neighbour. Begun anew for each question.
    virtual void BeginNeighbours() {}
    /// Something outside may be called, which may move folders. Does not throw; may come without a beginning.
    virtual void EndNeighbours() {}
    /// The end of what BeginChangeChecks began, also when a refresh ends by an exception.
    virtual void EndChangeChecks() {}

    /// Makes a file that is not there yet, never through a link, writes @p text, and removes the file again.
    /// @return false if it could not be made; nothing was touched then.
    virtual bool WriteProbeFile(const ustring& name, std::string_view text) = 0;
};

/// The platform in force.
OVSEL_HOST_API IPlatform& Platform();

/// Replaces the platform and returns the one that was in force. The caller keeps ownership of both, and
/// @p platform must outlive its time in force. Null restores the host's own.
OVSEL_HOST_API IPlatform* SetPlatform(IPlatform* platform);

} // namespace host
