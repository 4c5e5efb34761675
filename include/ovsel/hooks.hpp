#pragma once

#include <cstdint>

#include <host_interfaces/ustring.hpp>
#include <ovsel/export.hpp>
#include <ovsel/handles.hpp>

/// @file
/// The two tables of functions that a host hands to the library: five I/O hooks, through which a path reaches
/// the file system, and three message hooks, through which every message leaves. Both tables are process-wide
/// and set before the first path is created.
///
/// Hooks are called on the host's thread, inside the call that needs them, with absolute names in UTF-16 and
/// the system's grammar. What an I/O hook throws passes through the library to the host's call, and the path
/// stays usable. A hook may ask paths, but must neither change nor refresh the one that calls it.

/// What hook 2 says of a directory.
enum ovDirAccessibility : std::uint32_t {
    ovDirAccessible = 1,       ///< a directory that may be entered and read
    ovDirPermissionDenied = 3, ///< there, but not for this process
    ovDirNonexistent = 4,      ///< or not a directory
    ovDirAccessFailure = 5     ///< any other failure
};

/// Hook 1. Lists a directory. An ovPath given to a hook is the hook's own handle.
///
/// @param dirName the directory's absolute name.
/// @param[out] attributes optional array, one word per name in the order of the names: 0x4000 a directory,
/// 0x8000 a file, with 0x0001 a class definition, with 0x0002 none; 0 where nothing is known. Null for none.
/// @return names in UTF-16, each with its terminator, and an empty name at the end; null for nothing. Both
/// blocks come from HostCalloc or its kin and are freed by the library with HostFree.
using ovReadDirectoryFcn = char16_t* (*)(ovPath path, const ustring& dirName, unsigned short** attributes);

/// Hook 2. Classifies a directory. Any value outside ovDirAccessibility ends the process in ovSetCWDName and
/// counts as an access failure elsewhere.
using ovDirAccessibilityFcn = ovDirAccessibility (*)(ovPath path, const ustring& dirName);

/// Hook 3. Has to be there and is never called.
using ovReservedIOFcn = bool (*)(const ustring& name);

/// Hook 4. Is the name an existing directory?
using ovDirExistsFcn = bool (*)(ovPath path, const ustring& name);

/// Hook 5. Modification time of a file or directory in seconds since the epoch, in the range of a signed
/// 32-bit number; 0 when there is none.
using ovFileTimeFcn = long (*)(ovPath path, const ustring& name);

/// A message hook. @p text is narrow, in the global locale, and valid during the call only.
using ovMessageFcn = void (*)(const char* text);

/// The three message hooks.
struct ovEnvironmentFcns {
    ovMessageFcn errorFcn;   ///< a path could not be created, or memory ran out
    ovMessageFcn warningFcn; ///< a directory was rejected
    ovMessageFcn infoFcn;    ///< diagnostics
};

/// Sets the default I/O hooks for paths created from now on. A null argument keeps the default that was
/// there:
/// @code
/// ovSetDefaultIOFcns(read, access, reserved, exists, nullptr);        // false: no hook 5 yet
/// ovSetDefaultIOFcns(nullptr, nullptr, nullptr, nullptr, fileTime);   // true: complete
/// @endcode
/// Paths that exist keep their hooks until ovUpdatePathArrayDefaultIOFcns.
/// @return whether all five defaults are set now. Without that no path can be created.
OVSEL_API bool ovSetDefaultIOFcns(ovReadDirectoryFcn readDirectory, ovDirAccessibilityFcn dirAccessibility,
                                  ovReservedIOFcn reserved, ovDirExistsFcn dirExists, ovFileTimeFcn fileTime);

/// Sets the hooks of one path. Here a null argument means the current default, not what the path had before.
/// @return true
/// @pre @p path is in service; a removed one takes the hooks too, after a line "asserted here" through
/// HostPrintf.
OVSEL_API bool ovSetIOFcns(ovPath path, ovReadDirectoryFcn readDirectory,
                           ovDirAccessibilityFcn dirAccessibility, ovReservedIOFcn reserved,
                           ovDirExistsFcn dirExists, ovFileTimeFcn fileTime);

/// Gives every path in service the current default hooks; hooks of its own are lost.
OVSEL_API void ovUpdatePathArrayDefaultIOFcns();

/// Replaces the three message hooks. Null means silence.
OVSEL_API void ovSetMessageFcns(ovMessageFcn errorFcn, ovMessageFcn warningFcn, ovMessageFcn infoFcn);

/// A block with a copy of the three message hooks, or null if there is no memory. The caller gives it back
/// with ovReturnEnvironmentFcns, which is how hooks are replaced for a while:
/// @code
/// ovEnvironmentFcns* saved = ovGetEnvironmentFcns();
/// ovSetMessageFcns(nullptr, collect, nullptr);
/// ovReplacePath(path, directories); // what is refused is told to collect
/// ovReturnEnvironmentFcns(saved);
/// @endcode
OVSEL_API ovEnvironmentFcns* ovGetEnvironmentFcns();

/// Installs the hooks of a block from ovGetEnvironmentFcns and frees it.
/// @pre @p fcns is not null and has not been returned before.
OVSEL_API void ovReturnEnvironmentFcns(ovEnvironmentFcns* fcns);
