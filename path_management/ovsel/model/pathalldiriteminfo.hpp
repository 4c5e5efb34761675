#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include <ovsel/handles.hpp>
#include <ovsel/refresh.hpp>
#include <ovsel/refreshpolicy.hpp>

#include "host_interfaces/platform.hpp"
#include "ovsel/model/pathiteminfo.hpp"

class IDirItemsIterator;
class PathClassDirItemInfo;
class PathFileItemInfo;
class PathPackageDirItemInfo;
class PathPrivateDirItemInfo;
class PathSubDirItemInfo;
class ReloadIndex;
struct DirItemInfo;

/// What is known of a directory's contents.
enum DirState : std::uint32_t {
    DirUnloaded = 0, ///< not read yet
    DirLoaded = 1,   ///< read, no change known
    DirFrozen = 2,   ///< read and taken as unchanging
    DirRecheck = 3,  ///< as loaded; the next check that finds nothing makes it so
    DirChanged = 4   ///< known to have changed
};

/// The contents of a directory by kind. The numbers are bit positions in the masks of iterators and searches.
enum DirChildGroup : std::int32_t {
    DirChildFile = 0,
    DirChildPackageDir = 1,
    DirChildClassDir = 2,
    DirChildPrivateDir = 3, ///< one at most
    DirChildSubDir = 4,
    DirChildGroupCount = 5
};

/// How a directory is to be refreshed.
struct RefreshOptions {
    ovDirRefreshType type = ovRefreshCheck;
    bool freeze = false;    ///< what is read becomes frozen
    bool recursive = false; ///< go on into package, class and private directories
};

/// The record of one directory, what an ovDir points to: a path directory, or a class, package or private
/// directory below one. It owns the records of what the directory holds, reads them once from an item source
/// and reads them again by mark and sweep.
///
/// Containers keep the order of the source, with what a later reading added behind; nothing in them is
/// sorted, for look-ups across directories go through the name index.
class PathAllDirItemInfo : public PathItemInfo {
  public:
    /// Ends a record that nobody else owns yet, without telling anybody; for the time between construction
    /// and entry in a container.
    struct Discard {
        void operator()(PathAllDirItemInfo* record) const { record->DestroySilently(); }
    };

    ~PathAllDirItemInfo() override;

    /// What GetManager answers for the record and for all that it owns.
    IPathManager* GetOwnManager() const { return m_manager; }
    /// The same for GetPathDir.
    PathDirItemInfo* GetOwnPathDir() const { return m_pathDir; }

    /// ovDirTypeCWD for the path-level record at position 0, else the kind it was made with.
    ovDirType GetDirType() const;

    /// Child @p index of a group, or null behind the last and for no group.
    PathItemInfo* GetItem(std::int32_t group, std::int32_t index) const;
    /// The child behind @p after, the first if that is null; null at the end or if @p after is no child.
    PathClassDirItemInfo* GetNextClassDir(const PathItemInfo* after) const;
    PathPackageDirItemInfo* GetNextPackageDir(const PathItemInfo* after) const;
    PathPrivateDirItemInfo* GetPrivateDir() const { return m_privateDir; }
    const std::vector<PathFileItemInfo*>& GetFiles() const { return m_files; }
    const std::vector<PathPackageDirItemInfo*>& GetPackageDirs() const { return m_packageDirs; }
    const std::vector<PathClassDirItemInfo*>& GetClassDirs() const { return m_classDirs; }
    const std::vector<PathSubDirItemInfo*>& GetSubDirs() const { return m_subDirs; }

    PathClassDirItemInfo* FindClassDir(std::u16string_view name) const;
    PathPackageDirItemInfo* FindPackageDir(std::u16string_view name) const;
    /// The next file behind @p after (null: from the first) of that name. An empty name matches all files;
    /// one without a dot every file of that stem; one with a dot the file of that stem and extension.
    PathFileItemInfo* FindNextFile(const PathFileItemInfo* after, std::u16string_view name,
                                   bool caseSensitive) const;

    /// Reads the directory for the first time.
    void Load(bool freeze);
    /// Reads it again: survivors stay the same records in the same order, new ones stand behind them.
    void Reload(const RefreshOptions& options);
    /// Removes this directory and all that it holds; parties are told first. Deletes the record unless
    /// handles hold it.
    virtual void Destroy();
    /// Is Destroy at work on this record?
    bool IsBeingDestroyed() const { return m_beingDestroyed; }
    void ClearContents();

    void AddSubDir(std::u16string_view name, bool confirmed);
    /// Takes a file out of the container; neither unlinks nor deletes it.
    void RemoveFile(const PathItemInfo* file);

    DirState GetState() const { return m_state; }
    bool IsFrozen() const { return m_state == DirFrozen; }

    // Time stamps, notification, refreshing and freezing stand with the reading of directories.

    /// The name under which the directory is watched, built in @p room if it has to be.
    const ustring& GetCheckName(ustring& room) const;
    /// Counts changes and checks; what a file's stamp remembers of its directory.
    std::uint32_t GetChangeTick() const { return m_changeTick; }
    ovRefreshPolicy GetRefreshPolicy() const { return m_refreshPolicy; }
    bool HasNotificationHandle() const { return m_notificationHandle != host::InvalidChangeHandle; }

    /// Decides how the directory is checked from now on: by a handle if it gets one, else by policy. @p watch
    /// false: not at all.
    void StartChangeDetection(bool watch);
    /// Has the directory changed? Consumes what the answer rests on.
    bool CheckChanged();
    /// For a remote directory without a handle, after the host has changed a policy.
    void ApplyRefreshPolicy(ovRefreshPolicy policy);
    void ApplyRefreshPolicyToTree(ovRefreshPolicy policy);

    /// This directory alone, told as one refresh.
    void RefreshDirectory(ovDirRefreshType type);
    bool IsAskedForNews() const;
    /// With all below it.
    void RefreshTree(ovDirRefreshType type);
    /// A mark for the next refresh, for directories that are loaded and not frozen.
    void SetChangeState(DirState state);
    void SetChangeStateTree(DirState state);
    /// @return whether it was frozen before.
    bool SetFrozen(bool freeze);
    std::int32_t GetFileSystemIndex() const { return m_fileSystemIndex; }
    void SetFileSystemIndex(std::int32_t index) { m_fileSystemIndex = index; }
    bool IsRemote() const { return m_remote; }
    std::uint32_t GetRemovals() const { return m_removals; }
    /// Fills m_resolvedName from the platform and returns it; empty if the name cannot be made absolute.
    const ustring& ResolveName();
    const ustring& GetResolvedName() const { return m_resolvedName; }

  protected:
    /// Visits this record and all below it that stand in chains.
    template <class Visit>
    void ForEachChained(Visit visit);
    /// A path-level record.
    /// @p self is the record that is being made.
    PathAllDirItemInfo(IPathManager* manager, PathDirItemInfo* self, const ustring& fullName, ovDirType type);
    /// A record below another.
    PathAllDirItemInfo(IPathManager* manager, PathAllDirItemInfo* parent, std::u16string_view name,
                       bool confirmed, ovDirType type);

    /// A record for each entry of the source; nothing is looked up.
    virtual void ReadContents(IDirItemsIterator& items, bool freeze);
    /// Finds or makes a record for each entry, and unmarks it.
    /// @p index is what the directory holds already.
    virtual void ReloadContents(IDirItemsIterator& items, const RefreshOptions& options, ReloadIndex& index);

    void AddFile(std::u16string_view name, bool confirmed, std::uint32_t fileKind);
    /// Null in a class directory, which has no class directories.
    PathClassDirItemInfo* AddClassDir(std::u16string_view name, bool freeze, bool confirmed);
    PathPackageDirItemInfo* AddPackageDir(std::u16string_view name, bool freeze, bool confirmed);
    void AddPrivateDir(std::u16string_view name, bool freeze, bool confirmed);
    void FindOrAddFile(const DirItemInfo& entry, std::uint32_t fileKind, ReloadIndex& index);
    void FindOrAddClassDir(std::u16string_view name, const RefreshOptions& options, bool confirmed,
                           ReloadIndex& index);
    void FindOrAddPackageDir(std::u16string_view name, const RefreshOptions& options, bool confirmed,
                             ReloadIndex& index);
    void FindOrAddPrivateDir(std::u16string_view name, const RefreshOptions& options, bool confirmed);
    void FindOrAddSubDir(const DirItemInfo& entry, ReloadIndex& index);

    /// What ends every record, whether anybody is told or not.
    void DestroySilently();

  private:
    void RecordDirTimeStamp();
    bool CheckTimeStamp(const ustring& name);
    bool NoChangeSeen();
    void ProbeNotification(const ustring& name);
    void HandleRefused(const ustring& name);
    bool CheckNotification();
    bool TakeAsChanged();
    void ReleaseNotification();
    ovRefreshPolicy PolicyWithoutHandle() const;
    bool IsWarningDue() const;

    bool Refresh(const RefreshOptions& options);
    bool RefreshChildren(const RefreshOptions& options);
    bool IsChanged();
    bool IsSettled() const;
    bool SetFrozenTree(bool freeze, const RefreshOptions& options);
    void SetFrozenOne(bool freeze, const RefreshOptions& options);
    RefreshOptions OptionsFor(ovDirRefreshType type, bool recursive) const;

    class Reading;
    class Loose;

    void ReadFromSource(bool freeze);
    void ReadAgain(const RefreshOptions& options);
    void TakeRefreshAskedMeanwhile();
    void ReloadFromSource(const RefreshOptions& options);
    void MarkAllStale();
    void RemoveStaleChildren();
    void EndPrivateDir();
    void ForEachLooseBelow(const std::function<void(PathAllDirItemInfo&)>& visit);
    template <class Child>
    Child* AddChild(std::vector<Child*>& children, std::u16string_view name, bool freeze, bool confirmed);
    template <class Child>
    std::unique_ptr<Child, Discard> LoadedChild(std::u16string_view name, bool freeze, bool confirmed);

    // What a check of thousands of quiet directories looks at stands together.
    PathDirItemInfo* const m_pathDir;
    IPathManager* const m_manager;
    ovDirType m_dirType;
    DirState m_state = DirUnloaded;
    host::ChangeHandle m_notificationHandle = host::InvalidChangeHandle;
    ovRefreshPolicy m_refreshPolicy = ovRefreshAlways;
    std::uint32_t m_changeTick = 0;
    PathPrivateDirItemInfo* m_privateDir = nullptr;
    std::vector<PathPackageDirItemInfo*> m_packageDirs;
    std::vector<PathClassDirItemInfo*> m_classDirs;
    std::vector<PathFileItemInfo*> m_files;
    std::vector<PathSubDirItemInfo*> m_subDirs;
    std::int32_t m_dirTimeStamp = 0; ///< reference time, seconds since the epoch
    ustring m_resolvedName;
    std::int32_t m_fileSystemIndex = 0;
    std::size_t m_watchPlace = 0; ///< of the handle, if there is one
    /// Moves whenever a child may have gone, so that an index of the children can tell that it is out of
    /// date.
    std::uint32_t m_removals = 0;
    bool m_changeSeen : 1; ///< the last check has consumed the change that led to the present reload
    bool m_remote : 1;
    bool m_beingDestroyed : 1;
    bool m_reading : 1; ///< being loaded or reloaded
    bool m_refreshAskedMeanwhile : 1;

  protected:
    /// Belongs to path-level records; stands here to share their flag word.
    bool m_replaceMark : 1;
};
