// One cache file for both readers: what both take, they take for the same. They may differ where only one of
// them is an XML parser, so those files are compared that hold nothing but ASCII, double quotes and the
// shapes of the writer, in a root of the right name.

#include <set>

#include "fuzz/cache_session.hpp"
#include "ovsel/cache/handreader.hpp"

namespace {

/// Each directory by its name, and each entry as "directory: letter name".
using Listing = std::multiset<std::string>;

bool IsComparable(const std::string& file) {
    const auto isPlain = [](char c) { return c > 0 && c != '&' && c != '\'' && c != '\\'; };
    return file.starts_with("<Quorrant") && std::ranges::all_of(file, isPlain) &&
           file.find("<!") == file.npos && file.find("<?") == file.npos;
}

/// A name as an XML parser hands it out: the end of a line is one blank, and so is a tabulator.
std::string Normalized(const std::string& name) {
    std::string result;
    for (std::size_t i = 0; i < name.size(); ++i)
        if (name[i] != '\r' || name[i + 1] != '\n')
            result += name[i] < ' ' ? ' ' : name[i];
    return result;
}

/// A directory counts by its last element: one reader keeps the rest.
std::string Entry(const std::string& dir, char letter, const std::string& name) {
    const bool isDir = letter == 'D' || letter == 'd';
    return dir + ": " + (isDir ? "d " + N(ovSeparatePathName(U(name))) : letter + (" " + name));
}

void Collect(const Quorrant::ovsel::CacheDirNode& parent, Listing& listing) {
    for (const auto* child = parent.m_firstChild.get(); child; child = child->m_nextSibling.get()) {
        const std::string dir = Normalized(N(child->m_name));
        listing.insert(dir);
        const char* name = child->m_names;
        for (std::size_t i = 0; i < child->m_lettersCount; ++i, name += std::strlen(name) + 1)
            listing.insert(Entry(dir, child->m_letters[i], Normalized(name)));
        Collect(*child, listing);
    }
}

void Collect(const cache_session::CachedDirMap& contents, Listing& listing) {
    const auto native = [](const ustring& name) { return N(fl::filesystem::make_native_form(name, true)); };
    for (const auto& [dir, listed] : contents) {
        listing.insert(native(dir));
        const std::vector<ustring>* const lists[] = {&listed.subdirs, &listed.files, &listed.classFiles,
                                                     &listed.noClassFiles, &listed.unconfirmed};
        for (std::size_t i = 0; i < std::size(lists); ++i)
            for (const ustring& name : *lists[i])
                listing.insert(Entry(native(dir), "dFCNU"[i], native(name)));
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static cache_session::Session session("vfs");
    cache_session::g_file.assign(data, data + size);
    if (!IsComparable(cache_session::g_file))
        return 0;
    const auto reading = Quorrant::ovsel::ReadCacheFileByHand("cache");
    cache_session::CachedDirMap contents;
    if (!reading.root || !session.ReadXml(contents))
        return 0;
    Listing byHand, byXml;
    Collect(*reading.root, byHand);
    Collect(contents, byXml);
    Expect(byHand == byXml, "both readers list the same");
    return 0;
}
