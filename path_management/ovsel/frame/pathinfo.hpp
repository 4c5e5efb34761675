#pragma once

#include <vector>

#include <ovsel/refresh.hpp>

#include "host_interfaces/ustring.hpp"

enum DirState : std::uint32_t;
class IPathManager;
class PathDirItemInfo;

/// The ordered list of a path's directories. Position 0 is the current-directory slot; it is empty (null)
/// only when the process had no usable directory as the path was created. `m_order` of the record at position
/// i is i.
class PathInfo {
  public:
    explicit PathInfo(IPathManager* manager) : m_manager(manager) {}
    virtual ~PathInfo();

    PathInfo(const PathInfo&) = delete;
    PathInfo& operator=(const PathInfo&) = delete;

    /// @pre the list is not empty
    virtual PathDirItemInfo* GetCWD() { return m_entries.front(); }
    /// The error text, or null for success. An empty name picks up the process's directory.
    virtual const char* SetCWD(const ustring& name);
    /// The new record, or null when the directory is on the path already or was rejected with a warning.
    virtual PathDirItemInfo* AddDir(const ustring& name, bool atBegin, bool freeze);
    virtual void RemoveDirByName(const ustring& name);
    /// @pre @p record is an entry of this list.
    virtual void RemoveDir(PathDirItemInfo* record);

    /// Removes the entries from the last to the first.
    void Clear();
    bool ReplacePath(const ustring& path);
    void RefreshAllDirectories(ovDirRefreshType type);
    void SetAllChanged(DirState state);
    PathDirItemInfo* GetPathEntry(int index) const {
        return static_cast<std::size_t>(index) < m_entries.size() ? m_entries[static_cast<std::size_t>(index)]
                                                                  : nullptr;
    }
    int GetPathEntryCount() const { return static_cast<int>(m_entries.size()); }

  private:
    class Moving;

    bool IsActive() const;
    bool ValidatePathDirName(const ustring& fullName) const;
    void Insert(PathDirItemInfo* record, bool atBegin);
    void RenumberEntries(std::size_t from);
    void MoveEntryToEnd(PathDirItemInfo* record);
    void FinishMoves();
    bool ReplaceByToken(const ustring& token);
    bool ReplaceByTokens(const ustring& path, bool& changed);
    void RefreshAllEntries(ovDirRefreshType type);
    std::vector<PathDirItemInfo*> FindEntriesWithNews() const;
    void RefreshEntriesWithNews(ovDirRefreshType type);
    void SetReplaceMarks(bool on);
    bool RemoveMarked();
    const char* ResolveCWDName(const ustring& name, ustring& resolved) const;
    void InstallCWD(const ustring& name);
    PathDirItemInfo* ReplaceCWD(const ustring& name);

    IPathManager* const m_manager;
    std::vector<PathDirItemInfo*> m_entries;
    std::vector<PathDirItemInfo*> m_movingEntries; ///< to the end, in the order noted
    bool m_changingCWD = false;                    ///< the slot is between two directories
};
