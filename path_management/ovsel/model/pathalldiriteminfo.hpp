#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <ovsel/handles.hpp>

#include "ovsel/model/pathiteminfo.hpp"

class IDirItemsIterator;
class PathClassDirItemInfo;
class PathFileItemInfo;
class PathPackageDirItemInfo;
class PathPrivateDirItemInfo;
class PathSubDirItemInfo;
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
    std::uint32_t type = 0;
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
    PathSubDirItemInfo* FindSubDir(std::u16string_view name) const;
    PathFileItemInfo* FindFileEntry(const ustring& diskName) const;
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
    std::int32_t GetFileSystemIndex() const { return m_fileSystemIndex; }
    void SetFileSystemIndex(std::int32_t index) { m_fileSystemIndex = index; }
    bool IsRemote() const { return m_remote; }
    /// Fills m_resolvedName from the platform and returns it; empty if the name cannot be made absolute.
    const ustring& ResolveName();
    const ustring& GetResolvedName() const { return m_resolvedName; }

    void PlaceAllItems();

  protected:
    /// A path-level record.
    PathAllDirItemInfo(IPathManager* manager, const ustring& fullName, std::u16string_view leaf,
                       ovDirType type);
    /// A record below another.
    PathAllDirItemInfo(IPathManager* manager, PathAllDirItemInfo* parent, std::u16string_view name,
                       bool confirmed, ovDirType type);

    /// A record for each entry of the source; nothing is looked up.
    virtual void ReadContents(IDirItemsIterator& items, bool freeze);
    /// Finds or makes a record for each entry, and unmarks it.
    virtual void ReloadContents(IDirItemsIterator& items, const RefreshOptions& options);

    void AddFile(const DirItemInfo& entry, std::uint32_t fileKind);
    void AddClassDir(std::u16string_view name, bool freeze, bool confirmed);
    void AddPackageDir(std::u16string_view name, bool freeze, bool confirmed);
    void AddPrivateDir(std::u16string_view name, bool freeze, bool confirmed);
    void FindOrAddFile(const DirItemInfo& entry, std::uint32_t fileKind);
    void FindOrAddClassDir(std::u16string_view name, const RefreshOptions& options, bool confirmed);
    void FindOrAddPackageDir(std::u16string_view name, const RefreshOptions& options, bool confirmed);
    void FindOrAddPrivateDir(std::u16string_view name, const RefreshOptions& options, bool confirmed);
    void FindOrAddSubDir(const DirItemInfo& entry);

    /// What ends every record, whether anybody is told or not.
    void DestroySilently();

  private:
    void ReadFromSource(bool freeze);
    void ReloadFromSource(const RefreshOptions& options);
    void MarkAllStale();
    void RemoveStaleChildren();
    template <class Child>
    void AddChild(std::vector<Child*>& children, std::u16string_view name, bool freeze, bool confirmed);
    template <class Child>
    std::unique_ptr<Child, Discard> LoadedChild(std::u16string_view name, bool freeze, bool confirmed);

    ovDirType m_dirType;
    std::vector<PathFileItemInfo*> m_files;
    std::vector<PathPackageDirItemInfo*> m_packageDirs;
    std::vector<PathClassDirItemInfo*> m_classDirs;
    std::vector<PathSubDirItemInfo*> m_subDirs;
    PathPrivateDirItemInfo* m_privateDir = nullptr;
    DirState m_state = DirUnloaded;
    ustring m_resolvedName;
    std::int32_t m_fileSystemIndex = 0;
    bool m_remote : 1;
    bool m_beingDestroyed : 1;

  protected:
    /// Belongs to path-level records; stands here to share their flag word.
    bool m_replaceMark : 1;
};
