#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "tools/ovsel/cache_file.hpp"
#include "tools/ovsel/session.hpp"

namespace tool {

/// What folders under the prefix hold on the disk, in the form of a cache.
///
/// Of a file it is not known whether it defines a class, so its letter is `F`. A link to a folder is one too,
/// as the library takes it for a file until somebody asks for its name, or `U` if the disk is asked.
class Snapshot {
  public:
    enum class Links : bool { Unasked, Asked };

    Snapshot(const Session& session, Links links) : m_session(session), m_links(links) {}

    /// Takes a folder of the path, with all below it. @return what it holds, until another is added.
    const CacheFolder& Add(const ovDir& dir) { return m_folders.emplace_back(Take(dir)); }

    const std::vector<CacheFolder>& Folders() const { return m_folders; }
    /// Is the folder there, but closed to this process? It counts as empty then.
    bool IsUnreadable(const CacheFolder& folder) const { return m_unreadable.contains(folder.name); }

  private:
    CacheFolder Take(const ovDir& dir);

    const Session& m_session;
    Links m_links;
    std::vector<CacheFolder> m_folders;
    std::unordered_set<std::string> m_unreadable;
};

/// A name as a cache holds it, from the prefix on.
/// @pre @p fullName lies under the prefix.
std::string RelativeName(const Session& session, const ustring& fullName);

/// The reverse, for a folder's name or, behind that and `/`, an entry's.
ustring FullName(const Session& session, const std::string& relativeName);

} // namespace tool
