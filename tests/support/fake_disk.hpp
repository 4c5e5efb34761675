#pragma once

#include <cstring>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <ovsel/hooks.hpp>

#include "host_interfaces/utility.hpp"
#include "support/texts.hpp"

/// A disk in memory behind the five I/O hooks, in the system's grammar. Listings keep the order in which they
/// were written down; calls are counted.
///
/// @code
/// disk.Put("C:\\A", "plot.sv @plot/ { draw.sv private/ } note? old.p:N");
/// @endcode
/// An entry is a file; `/` behind it makes it a directory (empty unless its entries follow in braces or it is
/// put itself), `?` gives it the attribute word 0, `:C` and `:N` a file kind, and `=` followed by a number in
/// hexadecimal any word.
class FakeDisk {
  public:
    struct Entry {
        std::string name;
        unsigned short word;
    };

    static FakeDisk& Get() {
        static FakeDisk disk;
        return disk;
    }

    void Put(const std::string& dir, const std::string& entries) {
        std::istringstream words(entries);
        Fill(dir, words);
    }

    bool Install() { return ovSetDefaultIOFcns(&Read, &Accessibility, &Reserved, &Exists, &FileTime); }

    std::map<std::string, std::vector<Entry>> dirs;
    std::map<std::string, ovDirAccessibility> accessibility; ///< where it is not 1 or 4
    bool withAttributes = true;
    int listings = 0;
    std::map<std::string, long> times; ///< any other name has none
    int existenceQueries = 0;
    int timeQueries = 0;
    std::string lastQuery;

    static char16_t* Read(ovPath, const ustring& dirName, unsigned short** attributes) {
        FakeDisk& disk = Get();
        ++disk.listings;
        const auto found = disk.dirs.find(N(dirName));
        if (found == disk.dirs.end())
            return nullptr;
        ustring names;
        for (const Entry& entry : found->second)
            names += fl::i18n::to_ustring(entry.name.c_str()) + u'\0';
        auto* block = static_cast<char16_t*>(HostCalloc(names.size() + 1, sizeof(char16_t)));
        std::memcpy(block, names.data(), names.size() * sizeof(char16_t));
        if (attributes && disk.withAttributes)
            *attributes = Words(found->second);
        return block;
    }
    static ovDirAccessibility Accessibility(ovPath, const ustring& name) {
        const auto special = Get().accessibility.find(N(name));
        if (special != Get().accessibility.end())
            return special->second;
        return Get().dirs.count(N(name)) ? ovDirAccessible : ovDirNonexistent;
    }
    static bool Reserved(const ustring&) { return false; }
    static bool Exists(ovPath, const ustring& name) {
        ++Get().existenceQueries;
        Get().lastQuery = N(name);
        return Get().dirs.count(Get().lastQuery) != 0;
    }
    static long FileTime(ovPath, const ustring& name) {
        ++Get().timeQueries;
        const auto found = Get().times.find(N(name));
        return found == Get().times.end() ? 0 : found->second;
    }

  private:
    static unsigned short* Words(const std::vector<Entry>& entries) {
        auto* words = static_cast<unsigned short*>(HostCalloc(entries.size() + 1, sizeof(unsigned short)));
        for (std::size_t i = 0; i < entries.size(); ++i)
            words[i] = entries[i].word;
        return words;
    }

    /// Takes the words up to the brace that closes this directory, or all.
    void Fill(const std::string& dir, std::istream& words) {
        std::vector<Entry> listing;
        for (std::string word; words >> word && word != "}";)
            if (word == "{")
                Fill(dir + "\\" + listing.back().name, words);
            else
                listing.push_back(Parse(dir, word));
        dirs[dir] = listing;
    }
    Entry Parse(const std::string& dir, std::string word) {
        if (word.back() == '/') {
            word.pop_back();
            dirs.try_emplace(dir + "\\" + word);
            return {word, 0x4000};
        }
        for (const auto& [mark, bits] : {std::pair{"?", 0}, {":C", 0x8001}, {":N", 0x8002}})
            if (word.ends_with(mark))
                return {word.substr(0, word.rfind(mark[0])), static_cast<unsigned short>(bits)};
        if (const auto at = word.find('='); at != std::string::npos)
            return {word.substr(0, at),
                    static_cast<unsigned short>(std::stoul(word.substr(at + 1), nullptr, 16))};
        return {word, 0x8000};
    }
};
