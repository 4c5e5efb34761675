#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ovsel/frame/filesystemtable.hpp"
#include "ovsel/frame/interestslots.hpp"
#include "ovsel/frame/iohooks.hpp"
#include "ovsel/frame/ipathmanager.hpp"

class FullNameIndex;
class NameTable;

/// One named search path; the one implementation of IPathManager.
///
/// States: under construction (one reference of its own, so that handles made meanwhile cannot delete it), in
/// service, removed (out of the registry, allocated while a handle exists), dying.
class PathMgr final : public IPathManager {
  public:
    /// Enters the registry and picks up the process's current directory. @p preFrozenPrefix may be null.
    PathMgr(const char* name, const char16_t* preFrozenPrefix, ovCaseSensitivity caseSensitivity,
            bool disableTempFileProbe);
    ~PathMgr() override;

    PathMgr(const PathMgr&) = delete;
    PathMgr& operator=(const PathMgr&) = delete;

    void AddRef() override;
    void Release() override;
    void RemovePath() override;
    bool IsValid() const override { return m_isValid; }

    FileSystemEntry& GetFileSystemEntry(int index) override { return m_fileSystems[index]; }
    ovRefreshPolicy GetNonNotifiedCWDRefreshPolicy() const override { return m_nonNotifiedCWDRefreshPolicy; }
    bool GetFileSystemName(ustring& out, const ustring& name) const override {
        return FileSystemTable::NameOf(out, name);
    }
    void AssignFileSystem(PathAllDirItemInfo* record) override;
    void SetNonNotifiedCWDRefreshPolicy(ovRefreshPolicy policy) override {
        m_nonNotifiedCWDRefreshPolicy = policy;
    }
    ovRefreshPolicy GetNonNotifiedPathRefreshPolicy() const override {
        return m_nonNotifiedPathRefreshPolicy;
    }
    void SetNonNotifiedPathRefreshPolicy(ovRefreshPolicy policy) override {
        m_nonNotifiedPathRefreshPolicy = policy;
    }
    ovRefreshPolicy GetNonNotifiedRemoteCWDRefreshPolicy() const override {
        return m_nonNotifiedRemoteCWDRefreshPolicy;
    }
    void ApplyRefreshPolicyToPathEntry(int index, ovRefreshPolicy policy) override;
    void ApplyRefreshPolicyToAllDirs(ovRefreshPolicy policy) override;
    void SetNonNotifiedRemoteCWDRefreshPolicy(ovRefreshPolicy policy) override {
        m_nonNotifiedRemoteCWDRefreshPolicy = policy;
    }
    ovRefreshPolicy GetNonNotifiedRemotePathRefreshPolicy() const override {
        return m_nonNotifiedRemotePathRefreshPolicy;
    }
    int GetNotifiedDirCount() const override { return m_notifiedDirCount; }
    void IncrementNotifiedDirCount() override { ++m_notifiedDirCount; }
    void DecrementNotifiedDirCount() override { --m_notifiedDirCount; }
    WatchTable& GetWatches() override { return *m_watches; }
    void SetNonNotifiedRemotePathRefreshPolicy(ovRefreshPolicy policy) override {
        m_nonNotifiedRemotePathRefreshPolicy = policy;
    }
    ovWarnInvalidCNH GetNotificationHandleWarnings() const override { return m_notificationHandleWarnings; }
    void SetNotificationHandleWarnings(ovWarnInvalidCNH mode) override {
        m_notificationHandleWarnings = mode;
    }
    const char* GetPathName() const override { return m_name.c_str(); }

    PathNameInfo* FindNameInfo(std::u16string_view name) const override;
    BlockPool& GetBlockPool() override { return *m_blocks; }
    BlockPool& GetDirBlockPool() override { return *m_dirBlocks; }
    PathNameInfo* AddNameInfo(std::u16string_view name, std::int32_t& spelling) override;
    void ExpectNames(std::size_t count) override;
    bool HasAsciiNamesOnly() const override;
    void RemoveNameInfo(PathNameInfo* info) override;

    void SetIOFcns(ovReadDirectoryFcn readDirectory, ovDirAccessibilityFcn dirAccessibility,
                   ovReservedIOFcn reserved, ovDirExistsFcn dirExists, ovFileTimeFcn fileTime) override;
    char16_t* ReadDirectory(const ustring& name, unsigned short** attributes) override;
    ovDirAccessibility GetDirAccessibility(const ustring& name) override;
    bool DirExistsIRI(const foundation::storage::vfs::AbsoluteIRI& location) override;
    bool DirExists(const ustring& name) override;
    long GetFileTime(const ustring& name) override;

    const ustring* GetPreFrozenPrefix() const override {
        return m_preFrozenPrefix ? &*m_preFrozenPrefix : nullptr;
    }
    int RegisterInterest(InterestFcn callback) override;
    void CancelInterest(int index) override { m_interests.Cancel(index); }
    void NotifyInterests(PathAllDirItemInfo* dir, ovEventType event) override;
    bool IsCaseSensitive() const override { return m_isCaseSensitive; }

    int GetPathEntryCount() const override;
    void RegisterDirRecord(PathDirItemInfo* record) override {
        m_dirRecords.push_back(record);
        SetSettled(false);
    }
    void UnregisterDirRecord(PathDirItemInfo* record) override;
    void EnterFullName(PathDirItemInfo* record) override;
    void LeaveFullName(PathDirItemInfo* record) override;
    std::optional<PathDirItemInfo*> FindByFullName(std::u16string_view fullName) const override;
    NullDirItemInfo* GetNullDir() const override;
    PathDirItemInfo* GetCWD() const override;
    const char* SetCWD(const ustring& name) override;
    bool GetDirectoryReloadMessages() const override { return Flag(DirectoryReloadMessages); }
    void SetDirectoryReloadMessages(bool on) override { SetFlag(DirectoryReloadMessages, on); }
    bool GetFreezeAllAddedDirectories() const override { return Flag(FreezeAllAddedDirectories); }
    void SetFreezeAllAddedDirectories(bool on) override { SetFlag(FreezeAllAddedDirectories, on); }
    bool IsCWDHidden() const override { return Flag(CWDHidden); }
    void HideCWD(bool hide) override;
    bool IsTempFileProbeDisabled() const override { return Flag(TempFileProbeDisabled); }
    PathInfo* GetPathInfo() const override { return m_pathInfo.get(); }
    bool IsProcessCWDOwner() const override { return Flag(ProcessCWDOwner); }

    PathDirItemInfo* AddDir(const ustring& name, bool atBegin) override;
    void RemoveDir(PathDirItemInfo* record) override;
    void RemoveDirByName(const ustring& name) override;
    PathDirItemInfo* GetPathEntry(int index) const override;
    bool ReplacePath(const ustring& path) override;
    void RefreshAllDirectories(ovDirRefreshType type) override;
    bool IsSettled() const override { return Flag(Settled); }
    void SetSettled(bool settled) override { SetFlag(Settled, settled); }
    void SetAllChanged(DirState state) override;

    PathDirItemInfo* FindDirByIRI(const foundation::storage::vfs::AbsoluteIRI& location,
                                  DirScope scope) const override;
    PathDirItemInfo* FindPathDir(const ustring& fullName, DirScope scope) const override;
    PathItemInfo* FindDirInChain(PathItemInfo* first, const ustring& fullName) const override;
    PathItemInfo* FindDirFullName(const ustring& fullName, ovDirType type) const override;
    PathItemInfo* FindDirOfType(const ustring& fullName, std::u16string_view leaf,
                                ovDirType type) const override;

    void GetFile(foundation::storage::vfs::File& out, const foundation::storage::vfs::Folder& parent,
                 const ustring& name) const override;
    void GetFileByIRI(foundation::storage::vfs::File& out,
                      const foundation::storage::vfs::AbsoluteIRI& location) const override;
    void GetFolder(foundation::storage::vfs::Folder& out, const foundation::storage::vfs::Folder& parent,
                   const ustring& name) const override;
    void GetFolderByIRI(foundation::storage::vfs::Folder& out,
                        const foundation::storage::vfs::AbsoluteIRI& location) const override;
    void InstallCachedDirItems(Quorrant::ovsel::CachedDirMap contents,
                               const foundation::storage::vfs::AbsoluteIRI& root) override;
    std::unique_ptr<IDirItemsIterator>
    CreateDirItemsIterator(const foundation::storage::vfs::AbsoluteIRI& location) override;
    void ClearCachedDirItems() override;
    void SetDirItemsIteratorFactory(std::unique_ptr<IDirItemsIteratorFactory> factory) override;
    void SearchBegins() override { ++m_searchCount; }
    void SearchEnds() override;
    void PrepareDeletion() override;
    void ReadingBegins() override { ++m_readingCount; }
    void ReadingEnds() override { --m_readingCount; }
    bool IsReading() const override { return m_readingCount > 0; }
    void DeleteAfterSearches(PathItemInfo* item) override;
    void ResolveDirLocation(DirLocation& result, const ustring& name) override;

    /// For checks of the whole index.
    const NameTable& GetNameTable() const { return *m_nameIndex; }

  private:
    enum FlagBit : std::uint8_t {
        DirectoryReloadMessages = 0x01,
        ProcessCWDOwner = 0x02,
        FreezeAllAddedDirectories = 0x04,
        CWDHidden = 0x08,
        TempFileProbeDisabled = 0x10,
        Settled = 0x20,
    };

    bool Flag(FlagBit bit) const { return (m_flags & bit) != 0; }
    void SetFlag(FlagBit bit, bool on) {
        m_flags = static_cast<std::uint8_t>(on ? m_flags | bit : m_flags & ~bit);
    }
    void EnterService();
    void TearDown();

    std::int32_t m_refCount = 1;
    bool m_isValid = true;
    bool m_isDying = false;
    bool m_isBeingRemoved = false;
    std::unique_ptr<BlockPool> m_blocks;
    std::shared_ptr<BlockPool> m_dirBlocks; ///< stays as long as its last block
    std::unique_ptr<NameTable> m_nameIndex;
    std::unique_ptr<FullNameIndex> m_fullNameIndex;
    /// Shared with the operations that run on it: one of their callbacks may take the path out of service.
    std::shared_ptr<PathInfo> m_pathInfo;
    /// The null record first, then every path-level record that is alive.
    std::vector<PathDirItemInfo*> m_dirRecords;
    bool m_isCaseSensitive;
    IOHooks m_hooks;
    std::string m_name;
    std::optional<ustring> m_preFrozenPrefix;
    InterestSlots m_interests;
    std::shared_ptr<foundation::storage::vfs::StorageSystem> m_storageSystem;
    std::unique_ptr<IDirItemsIteratorFactory> m_dirItemsIteratorFactory;
    std::int32_t m_searchCount = 0;
    std::vector<PathItemInfo*> m_itemsToDelete; ///< when the last search has ended
    FileSystemTable m_fileSystems;
    ovRefreshPolicy m_nonNotifiedCWDRefreshPolicy = ovRefreshAlways;
    ovRefreshPolicy m_nonNotifiedPathRefreshPolicy = ovRefreshAlways;
    ovRefreshPolicy m_nonNotifiedRemoteCWDRefreshPolicy = ovRefreshByTimeStamp;
    ovRefreshPolicy m_nonNotifiedRemotePathRefreshPolicy = ovRefreshNever;
    std::int32_t m_notifiedDirCount = 0;
    std::unique_ptr<WatchTable> m_watches;
    std::int32_t m_readingCount = 0;
    ovWarnInvalidCNH m_notificationHandleWarnings = ovWarnCNHOnce;
    std::uint8_t m_flags = 0;
};
