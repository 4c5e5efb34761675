// A cache file for the reader that is no XML parser: any bytes. The tree must be whole, and a path that runs
// from it too; and from each directory a name is found where a walk would find it.

#include <algorithm>

#include "fuzz/cache_session.hpp"
#include "ovsel/cache/cachetree.hpp"
#include "ovsel/cache/handreader.hpp"
#include "ovsel/names/nameequality.hpp"

namespace {

using Quorrant::ovsel::CacheDirNode, Quorrant::ovsel::CacheTree;

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

/// A node, what is below it and its later siblings, in the order of a walk.
void Walk(const CacheDirNode* node, std::vector<const CacheDirNode*>& met) {
    for (; node; node = node->m_nextSibling.get()) {
        met.push_back(node);
        Walk(node->m_firstChild.get(), met);
    }
}

/// In trees that are small enough for a walk from each directory to each name.
void CheckFinding(std::unique_ptr<CacheDirNode> root, std::vector<ustring> names) {
    if (names.size() > 30)
        return;
    for (const char16_t* name : {u"", u"CachePath", u"K", u"\u212A", u"\uFB01", u"none"})
        names.push_back(name);
    std::vector<const CacheDirNode*> nodes;
    Walk(root.get(), nodes);
    CacheTree tree(std::move(root));
    for (std::size_t start = 0; start < nodes.size(); ++start)
        for (const ustring& name : names)
            for (const bool exact : {true, false}) {
                std::vector<const CacheDirNode*> met;
                Walk(nodes[start], met);
                const auto found = std::ranges::find_if(
                    met, [&](auto* node) { return NamesEqual(node->m_name, name, exact); });
                const auto answer = tree.Find(static_cast<CacheTree::Place>(start), name, exact);
                Expect(found == met.end() ? !answer.found : answer.found && &tree.At(*answer.found) == *found,
                       "a name is found where a walk finds it");
                Expect(found - met.begin() + (found == met.end() ? 0 : 1) == answer.compares,
                       "a search is counted as a walk's comparisons");
            }
}

/// The lines that can be read although the reading fails at the end. Longer ones count as several.
std::string WholeLines(const std::string& bytes) {
    constexpr std::size_t mostLineBytes = 4094;
    for (std::size_t at = 0;;) {
        const std::size_t end = std::min(bytes.find('\n', at), at + mostLineBytes - 1);
        if (end >= bytes.size())
            return bytes.substr(0, at);
        at = end + 1;
    }
}

void CheckFailing() {
    cache_session::g_readingFails = true;
    const auto failing = Quorrant::ovsel::ReadCacheFileByHand("cache");
    cache_session::g_readingFails = false;
    const std::string whole = std::exchange(cache_session::g_file, WholeLines(cache_session::g_file));
    const auto cut = Quorrant::ovsel::ReadCacheFileByHand("cache");
    cache_session::g_file = whole;
    Expect(failing.reachedContents == cut.reachedContents && failing.directoryCount == cut.directoryCount &&
               (failing.root == nullptr) == (cut.root == nullptr),
           "a file that cannot be read to its end ends behind its last whole line");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static cache_session::Session session("");
    cache_session::g_file.assign(data, data + size);
    auto reading = Quorrant::ovsel::ReadCacheFileByHand("cache");
    CheckFailing();
    if (!reading.root)
        return 0;
    std::vector<ustring> dirs;
    Collect(*reading.root, dirs);
    Expect(static_cast<std::size_t>(reading.directoryCount) >= dirs.size(), "every directory is counted");
    session.RunFromCache(dirs);
    CheckFinding(std::move(reading.root), dirs);
    return 0;
}
