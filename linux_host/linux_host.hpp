#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host_interfaces/export.hpp"
#include "host_interfaces/ustring.hpp"
#include "host_interfaces/utility.hpp"

/// @file
/// What a program on Linux may ask of its host layer beyond the interfaces that the library calls: how names
/// of the system's grammar map to POSIX paths, listings of directories, and the host's own counters.

namespace foundation::storage::vfs {
class StorageSystem;
}

/// What a program on Linux may ask of its host layer beyond the interfaces.
namespace linux_host {

/// Directs HostPrintf to @p sink instead of standard output; an empty function restores that. The sink gets
/// each text whole and must not print through HostPrintf itself; what it throws makes HostPrintf fail.
OVSEL_HOST_API void SetPrintSink(std::function<void(std::string_view)> sink);

/// Ties roots of the system's grammar to POSIX folders. One map per process; `C:` is `/` at the start.
/// Changed before paths are created, not while they are in use.
class OVSEL_HOST_API DriveMap {
  public:
    /// How a root answers the question whether it is a network drive.
    enum class Kind {
        Fixed,
        Remote,
        Detect, ///< by the type of the file system that the folder lies on
    };

    /// Maps @p root (`X:` or `\\server\share`, `/` accepted, letters without regard to case) to the absolute
    /// POSIX @p folder, replacing what the root meant before.
    /// @return false for a malformed root or a folder that is not absolute.
    static bool Add(const ustring& root, const std::string& folder, Kind kind);

    /// Back to `C:` alone.
    static void Reset();

    /// The POSIX path of an absolute name, or nothing when no root fits or the name cannot be a path (a NUL
    /// inside, a unit with no byte form). Elements are carried over as they are, `..` included.
    static std::optional<std::string> ToPath(const ustring& name);

    /// The name of an absolute POSIX path, by the longest mapped folder that holds it, or nothing when none
    /// does or when an element cannot be spelled in the grammar (`\` or `:` inside).
    static std::optional<ustring> ToName(std::string_view path);
};

// The questions below take any name in either form; a relative one is meant against the process's current
// directory. A name that cannot be a path (see DriveMap::ToPath) stands for nothing that exists.

inline constexpr unsigned short DirectoryWord = 0x4000; ///< of Listing::words: a directory
inline constexpr unsigned short FileWord = 0x8000;      ///< a file

/// One directory as it was read: entries sorted by name, by code unit.
struct Listing {
    /// Names one after the other, each with a NUL behind it, and an empty name at the end.
    ustring names;
    /// One word per name: one of the two above, or 0 for a link and what the system does not tell.
    std::vector<unsigned short> words;
};

/// Reads a directory in one pass. Sockets, pipes, devices, `.` and `..`, names that the grammar cannot spell,
/// and links under a special name (`@...`, `+...`, `private`) that lead to one of their own ancestors, or
/// that stand behind three such links already, are left out.
/// @return nothing if there is no such directory or it cannot be read; what was read when it vanishes midway.
OVSEL_HOST_API std::optional<Listing> ListDirectory(const ustring& name);

/// Gives a block back with HostFree.
struct FreeForHost {
    /// Null is allowed.
    void operator()(void* block) const { HostFree(block); }
};

/// A Listing as a read-directory hook hands it out: in blocks that go back with HostFree.
struct ListingBlocks {
    std::unique_ptr<char16_t[], FreeForHost> names;       ///< as Listing::names
    std::unique_ptr<unsigned short[], FreeForHost> words; ///< as Listing::words
};

/// The same in blocks, which spares the hook a copy.
OVSEL_HOST_API std::optional<ListingBlocks> ListDirectoryInBlocks(const ustring& name);

/// 1 accessible, 3 permission denied, 4 nonexistent or no directory, 5 any other failure.
OVSEL_HOST_API int DirectoryAccessibility(const ustring& name);

/// Is the name an existing directory, also through a link?
OVSEL_HOST_API bool DirectoryExists(const ustring& name);

/// Modification time in seconds since the epoch, held to 1..2147483647; 0 when there is no such file. Behind
/// host::IPlatform::BeginNeighbours the entries of one folder are looked up in it as it was found for the
/// second of them, until EndNeighbours.
OVSEL_HOST_API long FileTime(const ustring& name);

/// Counts since the start of the process or the last ResetCounters.
struct Counters {
    std::uint64_t listings = 0;         ///< directories read
    std::uint64_t unspellable = 0;      ///< entries left out: `\` or `:` in the name
    std::uint64_t specialFiles = 0;     ///< entries left out: sockets, pipes, devices
    std::uint64_t ancestorLinks = 0;    ///< entries left out: special links in a circle or behind too many
    std::uint64_t existenceQueries = 0; ///< questions whether a name is a directory
    std::uint64_t events = 0;           ///< change events read
    std::uint64_t overflows = 0;        ///< times that the system lost events, and every handle was signalled
    std::uint64_t systemCalls = 0;      ///< made for change notification
    std::uint64_t watches = 0;          ///< directories under watch at present
    std::uint64_t handles = 0;          ///< change handles open at present
};

/// The counts of this moment.
OVSEL_HOST_API Counters GetCounters();

/// Sets the counts to zero; what is held at present stays.
OVSEL_HOST_API void ResetCounters();

/// Makes the scope of that number the current one of this thread, for programs with several interpreters;
/// scope 0 is current at the start. @return the number that was current.
OVSEL_HOST_API std::size_t EnterScope(std::size_t scope);

/// Ends a scope and destroys what it holds.
OVSEL_HOST_API void DestroyScope(std::size_t scope);

/// For tests: what a machine rarely does on demand.
namespace testing {

struct NotificationFaults {
    /// So many directories may be under watch; the next one finds the limit of the system reached.
    std::size_t mostWatches = static_cast<std::size_t>(-1);
    /// The type, as statfs tells it, that every file system is taken for.
    std::optional<std::uint32_t> fileSystem = std::nullopt;
};

/// Puts the faults in force in place of the earlier ones.
OVSEL_HOST_API void SetNotificationFaults(const NotificationFaults& faults);

/// Closes the descriptors of change notification until the next handle is opened, as a child process must
/// that moves to other mounts. @pre no handle is open.
OVSEL_HOST_API void RestartNotification();

/// What createStorageSystem returns from now on; null for new Linux ones again.
OVSEL_HOST_API void SetStorageSystem(std::shared_ptr<foundation::storage::vfs::StorageSystem> system);

} // namespace testing

} // namespace linux_host
