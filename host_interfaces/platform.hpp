#pragma once

#include <cstdint>
#include <ctime>

#include "host_interfaces/export.hpp"
#include "host_interfaces/ustring.hpp"

/// @file
/// The platform: every operation beneath the library that touches the operating system itself.

namespace host {

/// Answers of IPlatform::GetDriveType that have a meaning here.
inline constexpr std::uint32_t DriveNoRoot = 1;
inline constexpr std::uint32_t DriveFixed = 3;
inline constexpr std::uint32_t DriveRemote = 4;

/// The seam between the library and the machine. An implementation may throw std::bad_alloc and nothing else.
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

    virtual std::uint32_t CurrentProcessId() = 0;

    /// The value of an environment variable, or null. Valid until the environment changes.
    virtual const char* GetEnvironment(const char* name) = 0;

    /// Start of the character of narrow text that ends before @p p; @p start if there is none before it.
    /// @pre start <= p, and the bytes between are readable.
    virtual const char* PreviousCharacter(const char* start, const char* p) = 0;
};

/// The platform in force.
OVSEL_HOST_API IPlatform& Platform();

/// Replaces the platform and returns the one that was in force. The caller keeps ownership of both, and
/// @p platform must outlive its time in force. Null restores the host's own.
OVSEL_HOST_API IPlatform* SetPlatform(IPlatform* platform);

} // namespace host
