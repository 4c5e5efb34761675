#pragma once

#include <algorithm>
#include <array>

#include <ovsel/ovsel.hpp>

#include "fuzz/body.hpp"
#include "host_interfaces/utility.hpp"
#include "support/texts.hpp"

/// @file
/// Two listings as inputs write them, line by line an attribute word and a name, with "--" between them and
/// "-" for a hook that gives no words; and the hooks that hand them over, in blocks of just the size that the
/// interface promises.

namespace listing {

struct Entry {
    ustring name;
    unsigned short word;

    /// A bit that has no meaning to the library says that a directory of that name is not there.
    bool IsThere() const { return (word & 0x0100) == 0; }
};

/// The directory `R:\A` has one of the listings, and those in it have the other.
struct Disk {
    std::array<std::vector<Entry>, 2> listings;
    std::size_t current = 0;
    bool withWords = true;

    const std::vector<Entry>* Of(const ustring& dir) const {
        if (dir == u"R:\\A")
            return &listings[current];
        // No deeper, whatever separators a name brings along: a tree without end would be read without end.
        const bool isChild = dir.starts_with(u"R:\\A\\") && dir.find_first_of(u"\\/", 5) == dir.npos;
        return isChild ? &listings[1 - current] : nullptr;
    }
};
inline Disk g_disk;

inline void Parse(Lines lines) {
    g_disk.withWords = true;
    for (auto& entries : g_disk.listings)
        entries.clear();
    for (std::size_t i = g_disk.current = 0; !lines.AtEnd();) {
        const std::string line(lines.NextPlain());
        char* name = nullptr;
        const auto word = static_cast<unsigned short>(std::strtoul(line.c_str(), &name, 16));
        if (line == "--")
            i = 1;
        else if (line == "-")
            g_disk.withWords = false;
        else
            g_disk.listings[i].push_back({U(*name == ' ' ? name + 1 : name), word});
    }
    // An empty name ends a listing.
    for (auto& entries : g_disk.listings)
        entries.erase(std::find_if(entries.begin(), entries.end(), [](auto& e) { return e.name.empty(); }),
                      entries.end());
}

inline char16_t* Read(ovPath, const ustring& dir, unsigned short** attributes) {
    const std::vector<Entry>* entries = g_disk.Of(dir);
    if (!entries)
        return nullptr;
    ustring names;
    for (const Entry& entry : *entries)
        names += entry.name + u'\0';
    auto* block = static_cast<char16_t*>(HostCalloc(names.size() + 1, sizeof(char16_t)));
    std::copy(names.begin(), names.end(), block);
    if (attributes && g_disk.withWords) {
        *attributes = static_cast<unsigned short*>(HostCalloc(entries->size(), sizeof(unsigned short)));
        std::transform(entries->begin(), entries->end(), *attributes, [](auto& entry) { return entry.word; });
    }
    return block;
}

inline bool Exists(ovPath, const ustring& name) {
    return std::ranges::none_of(g_disk.listings[g_disk.current], [&](const Entry& entry) {
        return !entry.IsThere() && name == u"R:\\A\\" + entry.name;
    });
}

/// The path that all inputs find, with nothing on it.
inline ovPath Path() {
    static const ovPath path = [] {
        ovSetDefaultIOFcns(
            &Read, [](ovPath, const ustring&) { return ovDirAccessible; },
            [](const ustring&) { return false; }, &Exists, [](ovPath, const ustring&) { return 0L; });
        return ovCreatePathWithPreFrozen(0, "fuzz", static_cast<const char16_t*>(nullptr), ovCaseSensitive,
                                         false);
    }();
    return path;
}

} // namespace listing
