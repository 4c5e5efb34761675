#pragma once

#include <optional>

#include <ovsel/ovsel.hpp>

namespace tool {

/// Owns one search of the library and walks it. Like any search it must end before the path changes, which a
/// loaded path of the tool does only when it is refreshed.
class Search {
  public:
    struct File {
        ustring name;
        ovDir folder;
        int match; ///< as ovFindNextFile answers
    };

    /// Takes over what an ovCreate...SearchIterator function gave.
    explicit Search(ovSearch* search) : m_search(search) {}
    ~Search() { ovDestroySearch(&m_search); }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    std::optional<File> NextFile() { return Next(ovFindNextFile); }
    /// The next file or plain sub-folder.
    std::optional<File> NextUnspecified() { return Next(ovFindNextUnspecified); }
    /// The next class, package, private or path folder.
    std::optional<ovDir> NextDir() {
        ovDir dir;
        return ovFindNextDir(m_search, &dir) ? std::optional<ovDir>(dir) : std::nullopt;
    }

  private:
    std::optional<File> Next(int (*find)(ovSearch*, ovDir*, ustring&)) {
        File file;
        file.match = find(m_search, &file.folder, file.name);
        return file.match != 0 ? std::optional<File>(std::move(file)) : std::nullopt;
    }

    ovSearch* m_search;
};

} // namespace tool
