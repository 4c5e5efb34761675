#pragma once

#include <cstdint>

#include <host_interfaces/ustring.hpp>
#include <ovsel/export.hpp>

/// @file
/// The two handles, `ovPath` and `ovDir`, and the small questions that a handle answers.
///
/// Handles count, and nothing else: they are one pointer wide and passed by value. Neither kind is
/// thread-safe; a path and everything reached through it belongs to one thread at a time.
///
/// A handle is *null* (it holds nothing), *live*, or *dead* (its path or directory has been removed). The
/// rule for every function of the library: where the comment says nothing else, paths must be in service and
/// directory handles live. A null handle there is dereferenced, which ends the program, and a dead one may
/// be: there is no error to catch. Making, copying, comparing and dropping handles, ovIsDirHandleValid and
/// ovIsSameDir are safe with all three.

class IPathManager;
class PathAllDirItemInfo;

/// Which rule compares names.
enum ovCaseSensitivity : std::uint32_t {
    ovCaseSensitive = 0,       ///< names compare exactly
    ovCaseInsensitive = 1,     ///< names compare without regard to case; so does any value not listed here
    ovCasePlatformDefault = 2, ///< the platform's rule: without regard to case
    ovCaseOfPath = 3           ///< for searches only: the rule that the path was created with
};

/// What kind of directory a record is.
enum ovDirType : std::uint32_t {
    ovDirTypeNull = 0,    ///< the null record, or a null handle
    ovDirTypeCWD = 1,     ///< the current directory
    ovDirTypePath = 2,    ///< a directory on the path
    ovDirTypePackage = 3, ///< a `+` directory
    ovDirTypeClass = 4,   ///< an `@` directory
    ovDirTypePrivate = 5, ///< a `private` directory
    ovDirTypeSubDir = 6   ///< a plain sub-directory: an entry only, never behind an ovDir
};

/// A counted handle on one search path.
///
/// A path lives as long as an ovPath holds it, or until ovRemovePath; after that its handles stay safe to
/// hold and to drop.
///
/// @warning Copying a handle onto itself (`p = p`, `p.copy(p)`) drops the path and leaves a null handle:
/// @code
/// ovPath p = ovCreatePath(0, "main");
/// ovPath& alias = p;
/// p = alias;               // p is null now, and the path is gone with its last handle
/// @endcode
class OVSEL_API ovPath {
  public:
    /// A null handle.
    ovPath() = default;
    /// Takes what @p other holds, a path that has been removed included.
    ovPath(const ovPath& other);
    /// Holds @p manager if it is neither null nor removed from service; else a null handle.
    ovPath(IPathManager* manager);
    ~ovPath();

    /// As copy.
    ovPath& operator=(const ovPath& other);
    /// Lets go of the old path and holds @p manager, removed from service or not. Null is allowed.
    ovPath& operator=(IPathManager* manager);
    /// Lets go of the old path, becomes null, and then takes what @p other holds at that moment.
    void copy(const ovPath& other);

    /// Same path, or both null.
    bool operator==(const ovPath& other) const { return m_manager == other.m_manager; }
    /// Not the same path.
    bool operator!=(const ovPath& other) const { return m_manager != other.m_manager; }
    /// Mostly for `path == nullptr`.
    bool operator==(const IPathManager* manager) const { return m_manager == manager; }
    /// Mostly for `path != nullptr`.
    bool operator!=(const IPathManager* manager) const { return m_manager != manager; }

    /// The plain pointer, not counted, null for a null handle.
    operator const IPathManager*() const { return m_manager; }
    /// For the library's own use, as is the next: the class behind is not public.
    IPathManager* operator->() const { return m_manager; }
    /// The plain pointer, not counted, null for a null handle.
    IPathManager* operator*() const { return m_manager; }

  private:
    IPathManager* m_manager = nullptr;
};

/// A counted handle on the record of one directory.
///
/// Removing a directory leaves its handles safe to hold, compare and drop; ovIsDirHandleValid then answers
/// false, and nothing else may be asked of them. An ovDir does not keep its path alive.
///
/// @warning As with ovPath, copying a handle onto itself makes it null.
class OVSEL_API ovDir {
  public:
    /// A null handle, which is not the same as a handle on a path's null record (ovGetNullDir).
    ovDir() = default;
    /// Takes what @p other holds, a removed directory included.
    ovDir(const ovDir& other);
    /// Holds @p record if it is not null, removed or not.
    ovDir(PathAllDirItemInfo* record);
    ~ovDir();

    /// As copy.
    ovDir& operator=(const ovDir& other);
    /// Lets go of the old record and holds @p record, removed or not. Null is allowed.
    ovDir& operator=(PathAllDirItemInfo* record);
    /// Lets go of the old record, becomes null, and then takes what @p other holds at that moment.
    void copy(const ovDir& other);

    /// Same record, or both null.
    bool operator==(const ovDir& other) const { return m_record == other.m_record; }
    /// Not the same record.
    bool operator!=(const ovDir& other) const { return m_record != other.m_record; }

    /// The plain pointer, not counted, null for a null handle.
    PathAllDirItemInfo* operator->() const { return m_record; }
    /// The same; `*dir == nullptr` is the test for a null handle.
    PathAllDirItemInfo* operator*() const { return m_record; }

  private:
    PathAllDirItemInfo* m_record = nullptr;
};

/// The path that a directory belongs to; a null handle if that path has been removed.
/// @pre @p dir is not null, and the path's manager still exists.
OVSEL_API ovPath ovGetPathOfDir(const ovDir& dir);

/// True only for a handle on a directory that is still part of a path in service. Safe on every handle.
OVSEL_API bool ovIsDirHandleValid(const ovDir& dir);

/// The path's null record: where a walk over the path begins and ends, and what "no directory" means in
/// results. Prints "asserted here" through the host on a null or removed path.
/// @pre @p path is not null.
OVSEL_API ovDir ovGetNullDir(ovPath path);

/// The kind of a directory; ovDirTypeNull for a null handle.
OVSEL_API ovDirType ovGetDirType(const ovDir& dir);

/// The directory's absolute name in UTF-16; empty for the null record.
/// @pre @p dir is not null.
OVSEL_API ustring ovGetDirName(const ovDir& dir);

/// The same, narrow, written to @p buffer with its terminator.
/// @pre @p buffer holds ovGetDirNameLen(dir) + 1 bytes: nothing is checked.
/// @code
/// std::vector<char> name(static_cast<std::size_t>(ovGetDirNameLen(dir)) + 1); // and its terminator
/// ovGetDirName(dir, name.data());
/// @endcode
/// @return @p buffer
/// @throws fl::i18n::CvtInvalidCharacter for a name with no narrow form.
OVSEL_API char* ovGetDirName(const ovDir& dir, char* buffer);

/// Length in bytes of the narrow form of the directory's name, without terminator.
/// @pre @p dir is not null.
/// @throws fl::i18n::CvtInvalidCharacter for a name with no narrow form.
OVSEL_API int ovGetDirNameLen(const ovDir& dir);

/// The directory's own last name component, without the sentinel of a class or package directory. A root is
/// called by its whole name.
/// @pre @p dir is not null.
OVSEL_API ustring ovGetBaseDirName(const ovDir& dir);

/// True if both handles hold the same record; two null handles do.
OVSEL_API bool ovIsSameDir(ovDir a, ovDir b);

/// Every directory of a path has an absolute name: always true, also for a null handle.
OVSEL_API bool ovIsAbsoluteDir(const ovDir& dir);
