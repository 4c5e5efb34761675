#pragma once

#include <cstdint>

#include <host_interfaces/ustring.hpp>
#include <ovsel/export.hpp>
#include <ovsel/handles.hpp>

/// @file
/// Stamps by which a host can tell whether a file that it has loaded has changed. File names are absolute, in
/// UTF-16 or narrow (the encoding of file names); times are whole seconds. Stamps must not be null where
/// nothing else is said. What the file-time hook throws passes through.

/// What is remembered of a file. Belongs to the caller and refers to no record: it outlives directories and
/// paths.
struct ovTimeStamp_tag {
    std::uint32_t m_fileTime; ///< seconds since the epoch; 0xFFFFFFFF for none
    std::uint32_t m_dirTick;  ///< the directory's counter of changes when last looked at; 0 for none
};

/// What ovHasFileChanged does with the stamp. Any value but 0 keeps it.
enum ovTimeStampUpdate : std::uint32_t {
    ovUpdateTimeStamp = 0, ///< takes over what was found
    ovKeepTimeStamp = 1    ///< leaves the file's time; an unchanged file still takes over the counter
};

/// A stamp of no file, or null if there is no memory. Ended by ovDestroyTimeStamp.
OVSEL_API ovTimeStamp_tag* ovCreateTimeStamp();
/// Null is allowed.
OVSEL_API void ovDestroyTimeStamp(ovTimeStamp_tag* stamp);
/// Makes @p to what @p from is.
OVSEL_API void ovCopyTimeStamp(ovTimeStamp_tag* to, ovTimeStamp_tag* from);
/// Compares the file times only.
OVSEL_API bool ovIsFileTimeStampDifferent(ovTimeStamp_tag* a, ovTimeStamp_tag* b);

/// Stamps a file as it is now. Under a frozen directory, and for a file that is not there, a stamp of no
/// file.
/// @return false, and the stamp untouched, for a null handle or record.
OVSEL_API bool ovGetTimeStampFromDir(ovDir dir, const ustring& name, ovTimeStamp_tag* stamp);
/// The same with a narrow name.
OVSEL_API bool ovGetTimeStampFromDir(ovDir dir, const char* name, ovTimeStamp_tag* stamp);

/// Has the file changed since it was stamped? Under a frozen directory nothing does.
///
/// @param dir its directory, not null; a removed one is found anew by the file's name. An ovPath on its path,
/// removed or not, must still exist.
/// @param name the file's absolute name.
/// @param stamp what was remembered of it.
/// @param update is the stamp to take over what was found?
/// @param useDirTick do not look at the file while its directory has not been seen to change. That is one
/// comparison of integers, and right as long as the host refreshes the path:
/// @code
/// ovRefreshAllDirectories(path, ovRefreshCheck);
/// if (ovHasFileChanged(dir, file, stamp, ovUpdateTimeStamp, true))
///     reload(file);
/// @endcode
OVSEL_API bool ovHasFileChanged(ovDir dir, const ustring& name, ovTimeStamp_tag* stamp,
                                ovTimeStampUpdate update, bool useDirTick);
/// The same with a narrow name.
OVSEL_API bool ovHasFileChanged(ovDir dir, const char* name, ovTimeStamp_tag* stamp, ovTimeStampUpdate update,
                                bool useDirTick);
