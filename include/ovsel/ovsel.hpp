#pragma once

/// @file
/// ovsel: which file does this name mean, seen from here?
///
/// Three things to know:
///
/// - An **ovPath** is an ordered list of directories with a current directory in front. Each is read
///   once, when it is added; from then on questions are answered from memory.
/// - An **ovDir** is one directory of a path: the current directory, a path directory, or one of the special
///   directories inside: `private` (seen by its parent only), `@Class` (methods of a class), `+package`.
/// - An **ovSearch** walks the candidates for one name, best first.
///
/// @code
/// #include <linux_hooks/linux_hooks.hpp>
/// #include <ovsel/ovsel.hpp>
///
/// linux_hooks::InstallDefaultHooks();
/// const char16_t* const nothingFrozen = nullptr;
/// ovPath path = ovCreatePathWithPreFrozen(0, "main", nothingFrozen, ovCaseSensitive, false);
/// ovAddDir(path, "/usr/lib/host/toolbox", ovDirAddAtEnd);
///
/// const char* const extensions[] = {".p", ".sv", nullptr};
/// ovDir where;
/// ustring file;
/// if (ovFindFirstFileVisibleToFile(path, u"C:\\work\\main.sv", u"plot", extensions, &where, file) != 0)
///     run(file);
/// @endcode
///
/// Nothing here looks at the disk behind the host's back, starts a thread, or locks: a path and all its
/// handles belong to one thread at a time.

#include <ovsel/cache.hpp>
#include <ovsel/classfiles.hpp>
#include <ovsel/cwd.hpp>
#include <ovsel/cwdevent.hpp>
#include <ovsel/descriptors.hpp>
#include <ovsel/handles.hpp>
#include <ovsel/hooks.hpp>
#include <ovsel/interest.hpp>
#include <ovsel/names.hpp>
#include <ovsel/pathlist.hpp>
#include <ovsel/paths.hpp>
#include <ovsel/refresh.hpp>
#include <ovsel/refreshpolicy.hpp>
#include <ovsel/search.hpp>
#include <ovsel/timestamps.hpp>
