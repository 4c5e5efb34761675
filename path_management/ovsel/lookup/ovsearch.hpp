#pragma once

#include <cstdint>

#include <ovsel/search.hpp>

/// A search as the host holds it. No operation fails: the end reads as the null directory, an empty name and
/// match 0. The path must not change while a search lives, but for what the search itself finds out about its
/// items.
class ovSearch {
  public:
    virtual ~ovSearch() = default;

    /// @return the directory that holds the file. @p match may be null; see ovFindNextFile for its values.
    virtual ovDir FindNextFile(ustring& fullName, std::int32_t* match) = 0;
    /// The next file or plain sub-directory as it is called on disk, unfiltered; empty at the end. @p
    /// itemClass is 1 for what is no file, 2 for a file, 0 for one that has not been verified where that is
    /// told apart.
    virtual ustring GetCurrentItemInfo(std::int32_t& itemClass, std::int32_t& fileKind) = 0;
    virtual ovDir FindNextFileBounded(ustring& fullName, std::int32_t* match) = 0;
    /// @return the directory found; a null handle at the end, and for a plain sub-directory.
    virtual ovDir FindNextDir(ustring& fullName) = 0;
    /// @return the directory that holds the plain sub-directory.
    virtual ovDir FindNextSubDir(ustring& fullName) = 0;
    virtual ovDir FindNextUnspecified(ustring& fullName, std::int32_t* match) = 0;
};
