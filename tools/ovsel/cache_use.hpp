#pragma once

#include <string>
#include <string_view>

#include <ovsel/ovsel.hpp>

#include "tools/ovsel/path_entries.hpp"

namespace tool {

/// Lets @p path take from a cache what lies under @p prefix.
/// @throws EnvironmentError when the library cannot use the file.
void UseCache(const ovPath& path, const PathEntry& file, const ustring& prefix);

/// What the library tells of a cache in use: it prints its counts and nothing else gives them.
class CacheReport {
  public:
    /// To be called before the cache is used.
    void Begin();
    /// @return whether a text that the library prints belongs here.
    bool Take(std::string_view text);
    /// Ends the use of the cache. @return a line about it; empty when the library has counted nothing.
    std::string Finish(const ovPath& path);

  private:
    int m_folders = 0;
    int m_lookups = 0;
    int m_hits = 0;
    int m_compares = 0;
    int m_missing = 0;
};

} // namespace tool
