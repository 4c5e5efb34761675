#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <ovsel/ovsel.hpp>

#include "host_interfaces/text.hpp"

/// Short forms for tests: names as narrow text, whole answers as one line.

inline ustring U(const std::string& text) { return fl::i18n::codecvt_narrow_string_to_ustring()(text); }
inline std::string N(const ustring& text) { return fl::i18n::codecvt_ustring_to_narrow_string()(text); }

inline std::string Join(const std::vector<std::string>& words, const char* between = " | ") {
    std::string line;
    for (const std::string& word : words)
        line += (line.empty() ? "" : between) + word;
    return line;
}

/// A text without what its names begin with.
inline std::string Without(const std::string& prefix, std::string text) {
    for (std::size_t at; (at = text.find(prefix)) != text.npos;)
        text.erase(at, prefix.size());
    return text;
}
/// Names on the drive `C:` without it.
inline std::string Short(const std::string& text) { return Without("C:\\", text); }

/// Fields of a table's row, which is written as one text with " | " between them.
inline std::vector<std::string> Fields(std::string_view row) {
    std::vector<std::string> fields;
    for (std::size_t end; (end = row.find(" | ")) != row.npos; row.remove_prefix(end + 3))
        fields.emplace_back(row.substr(0, end));
    fields.emplace_back(row);
    return fields;
}

/// An extension list for a search.
class Extensions {
  public:
    Extensions(std::initializer_list<const char*> list) : m_list(list) { m_list.push_back(nullptr); }
    operator ovExtensionList() const { return m_list.data(); }

  private:
    std::vector<const char*> m_list;
};

/// Owns a search.
class Search {
  public:
    explicit Search(ovSearch* search) : m_search(search) {}
    ~Search() { ovDestroySearch(&m_search); }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;
    ovSearch* Get() const { return m_search; }

    /// One step: "2 C:\a\b.sv", or "0" at the end.
    std::string Step(int (*find)(ovSearch*, ovDir*, ustring&) = &ovFindNextFile) {
        ovDir dir;
        ustring name;
        const int match = find(m_search, &dir, name);
        return std::to_string(match) + (name.empty() ? "" : " " + N(name));
    }
    /// All steps to the end.
    std::string All(int (*find)(ovSearch*, ovDir*, ustring&) = &ovFindNextFile) {
        std::vector<std::string> answers;
        for (std::string answer; (answer = Step(find)).find(' ') != std::string::npos;)
            answers.push_back(answer);
        return Join(answers);
    }
    std::string AllDirs() {
        std::vector<std::string> answers;
        for (ovDir dir; ovFindNextDir(m_search, &dir);)
            answers.push_back(N(ovGetDirName(dir)));
        return Join(answers);
    }

  private:
    ovSearch* m_search;
};

/// The path in order: "C:\cwd; C:\a; C:\b".
inline std::string PathText(const ovPath& path) {
    std::vector<std::string> names;
    for (ovDir d = ovGetNextPathDir(ovGetNullDir(path)); ovGetDirType(d) != ovDirTypeNull;
         d = ovGetNextPathDir(d))
        names.push_back(N(ovGetDirName(d)));
    return Join(names, "; ");
}
