#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include <boost/function.hpp>

#include <ovsel/hooks.hpp>
#include <ovsel/interest.hpp>
#include <ovsel/refresh.hpp>
#include <ovsel/refreshpolicy.hpp>

#include "host_interfaces/storage.hpp"
#include "host_interfaces/ustring.hpp"

class BlockPool;
class IDirItemsIterator;
class IDirItemsIteratorFactory;
class NullDirItemInfo;
class PathAllDirItemInfo;
class PathDirItemInfo;
class PathInfo;
class PathItemInfo;
class PathNameInfo;
class WatchTable;
namespace Quorrant::ovsel {
class CachedDirMap;
}
enum DirState : std::uint32_t;
struct FileSystemEntry;

/// Which path-level records a look-up by full name takes.
enum class DirScope : std::int32_t {
    Any = 0,  ///< on the path or in the current-directory slot
    CWD = 1,  ///< the current-directory slot only
    Path = 2, ///< path directories only
};

/// A directory name made absolute.
struct DirLocation {
    bool resolved = false;
    ustring fullName; ///< empty unless resolved
};

/// The interface of one path, and the only way in which records, item sources and searches reach it.
///
/// Lifetime: only ovPath handles count. The object deletes itself with the last of them; records and the
/// registry hold plain pointers. After RemovePath it is out of service, and slots that need the path list may
/// no longer be called.
class IPathManager {
  public:
    using InterestFcn = boost::function<void(ovEventType, ovDir)>;

    virtual ~IPathManager() = default;

    virtual void AddRef() = 0;
    /// May delete the object.
    virtual void Release() = 0;
    virtual void RemovePath() = 0;
    virtual bool IsValid() const = 0;

    /// @pre 0 <= index < number of rows. The reference lasts until the next row is added.
    virtual FileSystemEntry& GetFileSystemEntry(int index) = 0;
    virtual ovRefreshPolicy GetNonNotifiedCWDRefreshPolicy() const = 0;
    /// The drive or server of a name; false if it has none.
    virtual bool GetFileSystemName(ustring& out, const ustring& name) const = 0;
    /// Called once by each directory record with a name, at the end of its construction.
    virtual void AssignFileSystem(PathAllDirItemInfo* record) = 0;
    virtual void SetNonNotifiedCWDRefreshPolicy(ovRefreshPolicy policy) = 0;
    virtual ovRefreshPolicy GetNonNotifiedPathRefreshPolicy() const = 0;
    virtual void SetNonNotifiedPathRefreshPolicy(ovRefreshPolicy policy) = 0;
    virtual ovRefreshPolicy GetNonNotifiedRemoteCWDRefreshPolicy() const = 0;
    virtual void ApplyRefreshPolicyToPathEntry(int index, ovRefreshPolicy policy) = 0;
    /// To every record but the null record, and to what lies below them.
    virtual void ApplyRefreshPolicyToAllDirs(ovRefreshPolicy policy) = 0;
    virtual void SetNonNotifiedRemoteCWDRefreshPolicy(ovRefreshPolicy policy) = 0;
    virtual ovRefreshPolicy GetNonNotifiedRemotePathRefreshPolicy() const = 0;
    virtual int GetNotifiedDirCount() const = 0;
    virtual void IncrementNotifiedDirCount() = 0;
    virtual void DecrementNotifiedDirCount() = 0;
    /// As many as are counted.
    virtual WatchTable& GetWatches() = 0;
    virtual void SetNonNotifiedRemotePathRefreshPolicy(ovRefreshPolicy policy) = 0;
    virtual ovWarnInvalidCNH GetNotificationHandleWarnings() const = 0;
    virtual void SetNotificationHandleWarnings(ovWarnInvalidCNH mode) = 0;
    virtual const char* GetPathName() const = 0;

    /// One probe of the name index; never inserts, looks at no disk, and allocates nothing for names of up to
    /// 64 units.
    virtual PathNameInfo* FindNameInfo(std::u16string_view name) const = 0;
    /// Where name entries and file records live.
    virtual BlockPool& GetBlockPool() = 0;
    /// Memory for the records of directories on the path, which handles may keep longer than the path.
    virtual BlockPool& GetDirBlockPool() = 0;
    virtual PathNameInfo* AddNameInfo(std::u16string_view name, std::int32_t& spelling) = 0;
    /// See NameTable::Expect.
    virtual void ExpectNames(std::size_t count) = 0;
    /// See NameTable::IsAscii.
    virtual bool HasAsciiNamesOnly() const = 0;
    /// Deletes @p info, whose chains must be empty.
    virtual void RemoveNameInfo(PathNameInfo* info) = 0;

    /// A null hook is replaced by the current default.
    virtual void SetIOFcns(ovReadDirectoryFcn readDirectory, ovDirAccessibilityFcn dirAccessibility,
                           ovReservedIOFcn reserved, ovDirExistsFcn dirExists, ovFileTimeFcn fileTime) = 0;
    /// Listing and attributes as the hook returned them; the caller frees both with HostFree.
    virtual char16_t* ReadDirectory(const ustring& name, unsigned short** attributes) = 0;
    virtual ovDirAccessibility GetDirAccessibility(const ustring& name) = 0;
    virtual bool DirExistsIRI(const foundation::storage::vfs::AbsoluteIRI& location) = 0;
    virtual bool DirExists(const ustring& name) = 0;
    virtual long GetFileTime(const ustring& name) = 0;

    /// Null when the path was created without a prefix.
    virtual const ustring* GetPreFrozenPrefix() const = 0;
    virtual int RegisterInterest(InterestFcn callback) = 0;
    virtual void CancelInterest(int index) = 0;
    /// Tells all parties; nothing they throw comes back. Silent once the path is out of service.
    virtual void NotifyInterests(PathAllDirItemInfo* dir, ovEventType event) = 0;
    virtual bool IsCaseSensitive() const = 0;

    /// Entries of the path list, the current-directory slot included.
    virtual int GetPathEntryCount() const = 0;
    virtual void RegisterDirRecord(PathDirItemInfo* record) = 0;
    virtual void UnregisterDirRecord(PathDirItemInfo* record) = 0;
    virtual NullDirItemInfo* GetNullDir() const = 0;
    /// Path-level records as long as they are in a chain, by full name; see FullNameIndex.
    virtual void EnterFullName(PathDirItemInfo* record) = 0;
    virtual void LeaveFullName(PathDirItemInfo* record) = 0;
    virtual std::optional<PathDirItemInfo*> FindByFullName(std::u16string_view fullName) const = 0;
    /// The current directory's record, or the null record when there is none.
    virtual PathDirItemInfo* GetCWD() const = 0;
    virtual const char* SetCWD(const ustring& name) = 0;
    virtual bool GetDirectoryReloadMessages() const = 0;
    virtual void SetDirectoryReloadMessages(bool on) = 0;
    virtual bool GetFreezeAllAddedDirectories() const = 0;
    virtual void SetFreezeAllAddedDirectories(bool on) = 0;
    virtual bool IsCWDHidden() const = 0;
    virtual void HideCWD(bool hide) = 0;
    virtual bool IsTempFileProbeDisabled() const = 0;
    /// Null while the path list is being torn down and afterwards.
    virtual PathInfo* GetPathInfo() const = 0;
    virtual bool IsProcessCWDOwner() const = 0;

    virtual PathDirItemInfo* AddDir(const ustring& name, bool atBegin) = 0;
    virtual void RemoveDir(PathDirItemInfo* record) = 0;
    virtual void RemoveDirByName(const ustring& name) = 0;
    /// Null at or past the end, and for the current-directory slot while that is empty. @pre index >= 0
    virtual PathDirItemInfo* GetPathEntry(int index) const = 0;
    virtual bool ReplacePath(const ustring& path) = 0;
    virtual void RefreshAllDirectories(ovDirRefreshType type) = 0;
    /// Is each directory of the path frozen, or loaded and checked by nothing but its handle? A refresh that
    /// finds it so, and the host without news, need not look at any of them.
    virtual bool IsSettled() const = 0;
    /// A refresh supposes it at its beginning; whoever leaves a directory in another state takes it back.
    virtual void SetSettled(bool settled) = 0;
    /// Marks every directory of the path as @p state, DirRecheck or DirChanged.
    virtual void SetAllChanged(DirState state) = 0;

    virtual PathDirItemInfo* FindDirByIRI(const foundation::storage::vfs::AbsoluteIRI& location,
                                          DirScope scope) const = 0;
    virtual PathDirItemInfo* FindPathDir(const ustring& fullName, DirScope scope) const = 0;
    /// From @p first along its chain, by the path's own case rule.
    virtual PathItemInfo* FindDirInChain(PathItemInfo* first, const ustring& fullName) const = 0;
    /// @p type is an ovDirType; 0 is any.
    virtual PathItemInfo* FindDirFullName(const ustring& fullName, ovDirType type) const = 0;
    virtual PathItemInfo* FindDirOfType(const ustring& fullName, std::u16string_view leaf,
                                        ovDirType type) const = 0;

    // Files and folders on this path's storage system; none is opened.

    virtual void GetFile(foundation::storage::vfs::File& out, const foundation::storage::vfs::Folder& parent,
                         const ustring& name) const = 0;
    virtual void GetFileByIRI(foundation::storage::vfs::File& out,
                              const foundation::storage::vfs::AbsoluteIRI& location) const = 0;
    virtual void GetFolder(foundation::storage::vfs::Folder& out,
                           const foundation::storage::vfs::Folder& parent, const ustring& name) const = 0;
    virtual void GetFolderByIRI(foundation::storage::vfs::Folder& out,
                                const foundation::storage::vfs::AbsoluteIRI& location) const = 0;

    // The factory exists in the storage layer's mode only; without one these do nothing.

    virtual void InstallCachedDirItems(Quorrant::ovsel::CachedDirMap contents,
                                       const foundation::storage::vfs::AbsoluteIRI& root) = 0;
    /// Null when no factory is set.
    virtual std::unique_ptr<IDirItemsIterator>
    CreateDirItemsIterator(const foundation::storage::vfs::AbsoluteIRI& location) = 0;
    virtual void ClearCachedDirItems() = 0;
    virtual void SetDirItemsIteratorFactory(std::unique_ptr<IDirItemsIteratorFactory> factory) = 0;
    /// Directories tell when their reading begins and ends.
    virtual void ReadingBegins() = 0;
    virtual void ReadingEnds() = 0;
    virtual bool IsReading() const = 0;
    /// Searches tell when they begin and end: an item that one of them takes away may be the next of another.
    virtual void SearchBegins() = 0;
    virtual void SearchEnds() = 0;
    /// Makes sure that the next DeleteAfterSearches has the memory for what it notes.
    virtual void PrepareDeletion() = 0;
    /// Deletes an unlinked item that no handle holds when the last search has ended; at once if there is
    /// none. @pre PrepareDeletion
    virtual void DeleteAfterSearches(PathItemInfo* item) = 0;
    /// Makes a directory name absolute; a failure is reported as a warning, save for those that have no
    /// message.
    virtual void ResolveDirLocation(DirLocation& result, const ustring& name) = 0;
};
