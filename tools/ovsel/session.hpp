#pragma once

#include <chrono>
#include <string>
#include <unordered_map>
#include <vector>

#include <linux_host/linux_host.hpp>
#include <ovsel/ovsel.hpp>

#include "tools/ovsel/options.hpp"
#include "tools/ovsel/path_entries.hpp"
#include "tools/ovsel/refusals.hpp"

namespace tool {

/// The path that the options describe, loaded. One per process: it owns the current directory, the drive map
/// and the message hooks, and takes the path out of service at the end.
class Session {
  public:
    /// @throws EnvironmentError when none of the folders asked for could be used.
    explicit Session(const Options& options);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const ovPath& Path() const { return m_path; }
    /// The current directory, then the path in order: the place in the list is the position.
    const std::vector<ovDir>& Folders() const { return m_folders; }
    /// The position of the folder of the path that holds @p dir.
    std::size_t PositionOf(const ovDir& dir) const;

    /// Null-terminated, or null for any extension.
    ovExtensionList Extensions() const { return m_anyExtension ? nullptr : m_extensionList.data(); }

    /// Full name of the folder of the asking file, empty for a question from nowhere.
    const ustring& AskerFolderName() const { return m_askerFolderName; }
    /// Its record at present, the null record if it has none.
    ovDir AskerFolder() const;

    /// The folder of --prefix, without a separator at its end; empty without that option.
    const ustring& Prefix() const { return m_prefix; }
    /// Does a full name lie below it?
    bool IsUnderPrefix(const ustring& fullName) const;
    /// Is the cache believed in all that lies there?
    bool UsesCache() const { return m_usesCache; }
    /// The FILE of a command on caches.
    const PathEntry& File() const { return m_file; }

    /// The folders that are to be watched and for which there is no notification.
    Refusals& Unnotified() const;

    /// Writes what --stats promises. To be called last: it ends the use of a cache.
    void PrintStats();

  private:
    /// @throws UsageError, EnvironmentError
    void SetPrefix(const std::string& folder);
    void CreatePath(const Options& options);
    /// @throws EnvironmentError when the directory of --cwd is refused.
    void SetCurrentDirectory(const Options& options);
    void StandInForCurrentDirectory(const Options& options);
    void AddFolders(const std::vector<PathEntry>& entries);
    void SetAsker(const std::string& file);

    using Clock = std::chrono::steady_clock;

    std::vector<std::string> m_extensions; ///< owns what m_extensionList points to
    std::vector<const char*> m_extensionList;
    bool m_anyExtension;
    bool m_ignoresCase;
    bool m_usesCache;
    ustring m_prefix;
    PathEntry m_file;
    ovPath m_path;
    std::vector<ovDir> m_folders;
    /// By record, as long as m_folders holds the handles.
    std::unordered_map<const PathAllDirItemInfo*, std::size_t> m_positions;
    ustring m_askerFolderName;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_loaded;
    linux_host::Counters m_loadCounters;
};

} // namespace tool
