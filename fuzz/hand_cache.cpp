// A cache file for the reader that is no XML parser: any bytes. The tree must be whole, and a path that runs
// from it too.

#include "fuzz/cache_session.hpp"
#include "ovsel/cache/handreader.hpp"

namespace {

using Quorrant::ovsel::CacheDirNode;

/// Collects the directories below a node, which is whole as they are.
void Collect(const CacheDirNode& node, std::vector<ustring>& dirs) {
    const char* name = node.m_names;
    for (std::size_t i = 0; i < node.m_lettersCount; ++i, name += std::strlen(name) + 1)
        Expect(std::string_view("DdCFNU").find(node.m_letters[i]) != std::string_view::npos, "known letters");
    name += node.m_lettersCount == 0 ? 1 : 0;
    Expect(*name == '\0' && name + 1 == node.m_names + node.m_namesLength, "an empty name ends the list");
    Expect(node.m_namesLength <= node.m_namesCapacity && node.m_lettersCount <= node.m_lettersCapacity,
           "lists are no longer than their blocks");
    for (const CacheDirNode* child = node.m_firstChild.get(); child; child = child->m_nextSibling.get()) {
        dirs.push_back(child->m_name);
        Collect(*child, dirs);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static cache_session::Session session("");
    cache_session::g_file.assign(data, data + size);
    const auto reading = Quorrant::ovsel::ReadCacheFileByHand("cache");
    if (!reading.root)
        return 0;
    std::vector<ustring> dirs;
    Collect(*reading.root, dirs);
    Expect(static_cast<std::size_t>(reading.directoryCount) >= dirs.size(), "every directory is counted");
    session.RunFromCache(dirs);
    return 0;
}
