#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "host_interfaces/ustring.hpp"

namespace Quorrant::ovsel {

/// One directory of the tree that a cache file is read into. Owns its children through the first of them, and
/// each child the next one.
struct CacheDirNode {
    explicit CacheDirNode(ustring name) : m_name(std::move(name)) {}
    ~CacheDirNode();
    CacheDirNode(const CacheDirNode&) = delete;
    CacheDirNode& operator=(const CacheDirNode&) = delete;

    /// Adds an entry with the letter of its element; a `/` in the name becomes `\`. @throws std::bad_alloc
    void AddName(std::string_view name, char letter);
    /// Ends the list of names with an empty one; nothing may be added afterwards. @throws std::bad_alloc
    void CompleteNames();

    ustring m_name; ///< from the cache's prefix on, with `\` between elements
    std::unique_ptr<CacheDirNode> m_firstChild;
    /// The entries' names as bytes of the file, each with a NUL behind it. From HostRealloc, as the next.
    char* m_names = nullptr;
    char* m_letters = nullptr;
    std::size_t m_namesCapacity = 0;
    std::size_t m_namesLength = 0; ///< the last, empty name included once the list is complete
    std::size_t m_lettersCapacity = 0;
    std::size_t m_lettersCount = 0;
    std::unique_ptr<CacheDirNode> m_nextSibling;
    std::vector<std::size_t> m_noFiles; ///< where the names of other entries than files begin in m_names
};

} // namespace Quorrant::ovsel
