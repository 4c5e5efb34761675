#pragma once

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// What names mean, by the plainest means: everything is listed, every entry is judged. No index, no chains,
/// nothing of the library's.

namespace model {

/// What a disk holds: by folder, in the system's grammar, its entries, and whether each is a folder.
using Disk = std::map<std::string, std::map<std::string, bool>>;

/// A directory as it was when it was read.
struct Dir {
    enum class Kind { Path, Package, Class, Private };
    std::string name; ///< full
    Kind kind = Kind::Path;
    std::vector<std::string> files, subdirs;
    std::vector<Dir> below; ///< packages, classes and the private directory

    std::string Leaf() const {
        const std::string leaf = name.substr(name.rfind('\\') + 1);
        return kind == Kind::Package || kind == Kind::Class ? leaf.substr(1) : leaf;
    }
};

/// What a directory of that kind takes of what the disk holds; nothing if it is not there.
inline Dir Read(const Disk& disk, const std::string& name, Dir::Kind kind = Dir::Kind::Path) {
    using Kind = Dir::Kind;
    Dir dir{name, kind, {}, {}, {}};
    const auto found = disk.find(name);
    if (found == disk.end())
        return dir;
    for (const auto& [entry, isFolder] : found->second) {
        const bool special = isFolder && entry.find('.') == std::string::npos;
        if (!isFolder)
            dir.files.push_back(entry);
        else if (kind == Kind::Private)
            continue;
        else if (special && entry == "private")
            dir.below.push_back(Read(disk, name + "\\" + entry, Kind::Private));
        else if (special && entry[0] == '@' && kind != Kind::Class)
            dir.below.push_back(Read(disk, name + "\\" + entry, Kind::Class));
        else if (special && entry[0] == '+' && kind != Kind::Class)
            dir.below.push_back(Read(disk, name + "\\" + entry, Kind::Package));
        else if (kind == Kind::Path && entry[0] != '@' && entry[0] != '+')
            dir.subdirs.push_back(entry);
    }
    return dir;
}

enum class Scope { All, PathOnly, Visible, Method, Private, Dir };

struct Question {
    std::string name; ///< as the host asks, with `\`
    std::vector<std::string> extensions;
    bool exact = true; ///< case counts
    Scope scope = Scope::All;
    std::string from; ///< full name of the directory that asks, or in which is searched
};

/// An answer and what it is sorted by; among answers of one rank the order is the library's own.
struct Answer {
    std::vector<int> rank;
    int match;
    std::string name;
};

/// Judges every file of a path for one question. @p path holds the current directory first.
class Resolver {
  public:
    Resolver(const std::vector<Dir>& path, const Question& question) : m_path(path), m_question(question) {
        Split();
    }

    /// Sorted by rank, and by name within one.
    std::vector<Answer> Run() {
        for (m_entry = 0; m_entry < static_cast<int>(m_path.size()); ++m_entry)
            Visit(m_path[static_cast<std::size_t>(m_entry)], 0, false);
        std::sort(m_answers.begin(), m_answers.end(), [](const Answer& a, const Answer& b) {
            return std::pair(a.rank, a.name) < std::pair(b.rank, b.name);
        });
        return m_answers;
    }

  private:
    void Split() {
        const std::string& name = m_question.name;
        m_separators = static_cast<int>(std::count(name.begin(), name.end(), '\\'));
        const std::size_t cut = name.rfind('\\');
        std::string leaf = cut == std::string::npos ? name : name.substr(cut + 1);
        m_dirPart = cut == std::string::npos ? "" : name.substr(0, cut);
        if (const std::size_t dot = leaf.rfind('.'); dot != std::string::npos) {
            m_extension = leaf.substr(dot + 1);
            leaf.resize(dot);
        }
        m_base = leaf;
        // Where a name is qualified, it does not matter where it is asked from.
        m_scope = m_question.scope == Scope::Visible && m_separators > 0 ? Scope::All : m_question.scope;
    }

    /// @p depth counts from the path directory; @p inPackage if a package lies on the way, this one included.
    void Visit(const Dir& dir, int depth, bool inPackage) {
        for (const std::string& file : dir.files)
            Judge(dir, file, depth, inPackage);
        for (const Dir& child : dir.below) {
            m_above.push_back(&dir);
            Visit(child, depth + 1, inPackage || child.kind == Dir::Kind::Package);
            m_above.pop_back();
        }
    }

    void Judge(const Dir& dir, const std::string& file, int depth, bool inPackage) {
        const std::size_t dot = file.rfind('.');
        const std::string base = file.substr(0, dot);
        const std::optional<std::string> extension =
            dot == std::string::npos ? std::nullopt : std::optional(file.substr(dot + 1));
        const std::optional<int> rank = RankOf(dir);
        const int match = MatchOf(extension);
        const bool deepEnough = !inPackage || m_separators >= depth || m_scope == Scope::Dir;
        if (rank && match != 0 && Same(base, m_base) && deepEnough && IsQualified(dir.name))
            m_answers.push_back({{*rank, *rank == RankHere ? 0 : m_entry}, match, dir.name + "\\" + file});
    }

    static constexpr int RankHere = 0;

    std::optional<int> RankOf(const Dir& dir) const {
        using Kind = Dir::Kind;
        const bool nested = dir.kind == Kind::Package || dir.kind == Kind::Class;
        switch (m_scope) {
        case Scope::PathOnly:
            if (m_entry == 0)
                return std::nullopt;
            [[fallthrough]];
        case Scope::All:
            return dir.kind == Kind::Path ? 1 : nested ? 2 : 3;
        case Scope::Method:
            return nested ? std::optional(1) : std::nullopt;
        case Scope::Dir:
            return IsAsker(dir) ? std::optional(RankHere) : std::nullopt;
        case Scope::Private:
            return IsAskersPrivate(dir) ? std::optional(RankHere) : std::nullopt;
        case Scope::Visible:
            if (IsAskersPrivate(dir))
                return RankHere;
            if (dir.kind == Kind::Class && Same(dir.Leaf(), m_base))
                return 1;
            return dir.kind == Kind::Path ? std::optional(2) : std::nullopt;
        }
        return std::nullopt;
    }

    bool IsAsker(const Dir& dir) const { return dir.name == m_question.from; }
    bool IsAskersPrivate(const Dir& dir) const {
        return dir.kind == Dir::Kind::Private && !m_above.empty() && IsAsker(*m_above.back());
    }

    int MatchOf(const std::optional<std::string>& extension) const {
        if (!m_extension.empty() && !(extension && Same(*extension, m_extension)))
            return 0;
        for (std::size_t i = 0; i < m_question.extensions.size(); ++i) {
            const std::string& wanted = m_question.extensions[i];
            if (Same(wanted, extension.value_or("")) || (wanted.empty() && !m_extension.empty()))
                return static_cast<int>(i) + 1;
        }
        return m_question.extensions.empty() ? -1 : 0;
    }

    /// Does the directory end in what is written before the name, its sentinels optional?
    bool IsQualified(std::string dir) const {
        std::string wanted = m_dirPart;
        while (!wanted.empty()) {
            const std::string asked = CutLeaf(wanted);
            const std::string there = CutLeaf(dir);
            const bool marked = !there.empty() && (there[0] == '@' || there[0] == '+');
            if (!Same(there, asked) && !(marked && Same(there.substr(1), asked)))
                return false;
        }
        return true;
    }
    static std::string CutLeaf(std::string& name) {
        const std::size_t cut = name.rfind('\\');
        const std::string leaf = cut == std::string::npos ? name : name.substr(cut + 1);
        name.resize(cut == std::string::npos ? 0 : cut);
        return leaf;
    }

    bool Same(const std::string& a, const std::string& b) const {
        const auto equal = [&](char x, char y) {
            return m_question.exact ? x == y : std::tolower(x) == std::tolower(y);
        };
        return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), equal);
    }

    const std::vector<Dir>& m_path;
    const Question& m_question;
    Scope m_scope = Scope::All;
    std::string m_dirPart, m_base, m_extension;
    int m_separators = 0;
    int m_entry = 0;
    std::vector<const Dir*> m_above;
    std::vector<Answer> m_answers;
};

} // namespace model
