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

/// What stands under a name in a folder. A link leads to one folder, to a file, or nowhere.
enum class Entry { File, ClassFile, Folder, LinkToFolder, LinkToFile, LinkToNothing };

inline bool IsFolder(Entry entry) { return entry == Entry::Folder || entry == Entry::LinkToFolder; }
inline bool IsLink(Entry entry) { return entry >= Entry::LinkToFolder; }

/// Where links to a folder lead.
inline const std::string LinkedFolder = "R:\\far";

/// By folder, in the system's grammar, its entries.
using Disk = std::map<std::string, std::map<std::string, Entry>>;

inline std::string LeafOf(const std::string& name) { return name.substr(name.rfind('\\') + 1); }
inline std::string ParentOf(const std::string& name) {
    return name.substr(0, std::min(name.rfind('\\'), name.size()));
}
inline std::string StemOf(const std::string& entry) { return entry.substr(0, entry.rfind('.')); }

/// A directory as it was when it was read.
struct Dir {
    enum class Kind { Path, Package, Class, Private };
    struct File {
        std::string name;
        bool isClass;
    };
    std::string name; ///< full
    Kind kind = Kind::Path;
    std::vector<File> files; ///< what was there before stands first
    std::vector<std::string> subdirs;
    std::vector<Dir> below; ///< packages, classes and the private directory

    std::string Leaf() const {
        const std::string leaf = LeafOf(name);
        return kind == Kind::Package || kind == Kind::Class ? leaf.substr(1) : leaf;
    }
    std::size_t IndexOf(const std::string& file) const {
        return static_cast<std::size_t>(
            std::find_if(files.begin(), files.end(), [&](const File& f) { return f.name == file; }) -
            files.begin());
    }
};

/// Of what a listing tells the names only. Such an entry is a file until somebody asks for it, and then
/// stays what it was found to be as long as it is listed.
enum class Untold { Nothing, Links, LinksAndSome };

/// The names that some listings say nothing of.
inline bool IsAmongUntold(const std::string& entry) {
    static const std::set<std::string> names{"draw.sv", "n", "sub", "@plot", "+K", "private", "plot.p"};
    return names.contains(entry);
}

/// Reads directories from a disk.
class Reader {
  public:
    /// Nothing is seen in @p hidden either.
    Reader(const Disk& disk, Untold untold, std::string hidden)
        : m_disk(disk), m_untold(untold), m_hidden(std::move(hidden)) {}

    /// Nothing is in a directory that is not there. @p old is what was known of it; with @p deep also the
    /// directories below that were known are read again.
    Dir Read(const std::string& name, const Dir* old = nullptr, bool deep = true) const {
        return Read(name, name, Dir::Kind::Path, old, deep);
    }

  private:
    using Kind = Dir::Kind;

    Dir Read(const std::string& name, const std::string& place, Kind kind, const Dir* old, bool deep) const {
        Dir dir{name, kind, {}, {}, {}};
        const auto found = m_disk.find(place);
        if (found == m_disk.end() || name == m_hidden)
            return dir;
        for (const auto& [entry, what] : found->second) {
            const std::optional<Kind> special = SpecialKind(entry);
            const bool untold = IsUntold(entry, what);
            const bool isKnownFile = old && old->IndexOf(entry) < old->files.size();
            if (IsFolder(what) && special)
                ReadBelow(dir, *special, entry, IsLink(what) ? LinkedFolder : place + "\\" + entry, old,
                          deep);
            else if (!IsFolder(what) || (untold && isKnownFile))
                dir.files.push_back({entry, what == Entry::ClassFile});
            else if (untold)
                dir.subdirs.push_back(StemOf(entry)); // it came in as a file
            else if (kind == Kind::Path)
                dir.subdirs.push_back(entry);
        }
        if (old)
            std::stable_sort(dir.files.begin(), dir.files.end(), [&](const Dir::File& a, const Dir::File& b) {
                return old->IndexOf(a.name) < old->IndexOf(b.name);
            });
        return dir;
    }

    void ReadBelow(Dir& dir, Kind kind, const std::string& entry, const std::string& place, const Dir* old,
                   bool deep) const {
        if (dir.kind == Kind::Private || (dir.kind == Kind::Class && kind != Kind::Private))
            return;
        const std::string name = dir.name + "\\" + entry;
        const Dir* known = nullptr;
        if (old)
            for (const Dir& child : old->below)
                if (child.name == name)
                    known = &child;
        dir.below.push_back(known && !deep ? *known : Read(name, place, kind, known, deep));
    }

    static std::optional<Kind> SpecialKind(const std::string& entry) {
        if (entry.find('.') != std::string::npos)
            return std::nullopt;
        return entry == "private" ? std::optional(Kind::Private)
               : entry[0] == '@'  ? std::optional(Kind::Class)
               : entry[0] == '+'  ? std::optional(Kind::Package)
                                  : std::nullopt;
    }
    bool IsUntold(const std::string& entry, Entry what) const {
        return (m_untold != Untold::Nothing && IsLink(what)) ||
               (m_untold == Untold::LinksAndSome && IsAmongUntold(entry));
    }

    const Disk& m_disk;
    Untold m_untold;
    std::string m_hidden;
};

enum class Scope { All, PathOnly, Visible, Method, Private, Dir };
enum class Rule { Exact, AnyCase, OfPath };
/// What is asked for. The last two are answered by one file at most.
enum class Form { Files, Dirs, FilesAndSubDirs, FirstFile, ClassFile };

struct Question {
    std::string name; ///< as the host asks, with `\`
    std::vector<std::string> extensions;
    Rule rule = Rule::Exact;
    Scope scope = Scope::All;
    std::string from = ""; ///< full name of the directory that asks, or in which is searched
    Form form = Form::Files;
};

/// An answer and what it is sorted by; among answers of one rank the order is the library's own.
struct Answer {
    std::vector<int> rank;
    int match;
    std::string name;
    bool endsWalk = false; ///< this, and what is behind it, is not seen
};

/// Judges every item of a path. @p path holds the current directory first.
class Resolver {
  public:
    Resolver(const std::vector<Dir>& path, bool pathIsExact) : m_pathIsExact(pathIsExact) {
        for (const Dir& dir : path) {
            m_items.push_back({PathDir, nullptr, &dir, dir.name, dir.Leaf(), {}, m_entry, 0, 0, false});
            Visit(dir, 0, false);
            ++m_entry;
        }
    }

    /// Sorted by rank, and by name within one.
    std::vector<Answer> Run(const Question& question) {
        m_question = &question;
        m_exact = question.rule == Rule::OfPath ? m_pathIsExact : question.rule == Rule::Exact;
        std::vector<Answer> answers;
        if (question.form == Form::ClassFile) {
            if (const Dir::File* file = ClassFile())
                answers.push_back({{}, 1, m_found->name + "\\" + file->name});
            return answers;
        }
        Split();
        m_asker = Find(question.from);
        m_askersPrivate = nullptr;
        for (const Item& item : m_items)
            if (item.group == Private && item.parent == m_asker)
                m_askersPrivate = item.dir;
        for (const Item& item : m_items)
            if (auto rank = RankOf(item); !rank.empty() && Fits(item))
                if (const int match = MatchOf(item.extension); match != 0)
                    answers.push_back(
                        {rank, IsForm(Form::Dirs) ? 1 : match, item.name, IsForm(Form::Dirs) && !item.dir});
        std::stable_sort(answers.begin(), answers.end(), [](const Answer& a, const Answer& b) {
            return std::pair(a.rank, a.name) < std::pair(b.rank, b.name);
        });
        const auto isEnd = [](const Answer& answer) { return answer.endsWalk; };
        answers.erase(std::find_if(answers.begin(), answers.end(), isEnd), answers.end());
        return answers;
    }

  private:
    /// In the order in which a directory gives what it holds.
    enum Group { File, Package, Class, Private, Sub, PathDir };

    struct Item {
        Group group;
        const Dir* parent; ///< null for a directory of the path
        const Dir* dir;    ///< null for files and plain folders
        std::string name, base;
        std::optional<std::string> extension;
        int entry, place, depth;
        bool inPackage;
    };

    /// @p depth counts from the path directory; @p inPackage if a package lies on the way, this one included.
    void Visit(const Dir& dir, int depth, bool inPackage) {
        int place = 0;
        const auto add = [&](Group group, const std::string& entry, const std::string& base, const Dir* child,
                             std::optional<std::string> extension) {
            m_items.push_back({group, &dir, child, dir.name + "\\" + entry, base, std::move(extension),
                               m_entry, place++, depth, inPackage});
        };
        const auto extensionOf = [](const std::string& name, std::size_t behind) {
            const std::size_t dot = name.rfind('.');
            return dot == std::string::npos ? std::nullopt : std::optional(name.substr(dot + behind));
        };
        for (const Dir::File& file : dir.files)
            add(File, file.name, StemOf(file.name), nullptr, extensionOf(file.name, 1));
        for (const std::string& sub : dir.subdirs)
            add(Sub, sub, sub, nullptr, extensionOf(sub, 0));
        for (const Dir& child : dir.below) {
            add(static_cast<Group>(child.kind), LeafOf(child.name), child.Leaf(), &child, std::nullopt);
            Visit(child, depth + 1, inPackage || child.kind == Dir::Kind::Package);
        }
    }

    /// The special kinds come before the directories of the path, and the current directory before others.
    const Dir* Find(const std::string& name) const {
        const Dir* found = nullptr;
        const bool isPrivate = LeafOf(name) == "private";
        const Dir* parent = isPrivate ? Find(ParentOf(name)) : nullptr;
        for (const Item& item : m_items)
            if (item.dir && item.name == name && (!isPrivate || item.parent == parent) &&
                (!found || (found->kind == Dir::Kind::Path && item.group != PathDir)))
                found = item.dir;
        return found;
    }

    bool IsForm(Form form) const { return m_question->form == form; }

    void Split() {
        const std::string& name = m_question->name;
        m_separators = static_cast<int>(std::count(name.begin(), name.end(), '\\'));
        m_dirPart = m_separators > 0 ? ParentOf(name) : "";
        m_base = LeafOf(name);
        m_extension.clear();
        if (const std::size_t dot = m_base.rfind('.'); dot != std::string::npos && !IsForm(Form::Dirs)) {
            m_extension = m_base.substr(dot + 1);
            m_base.resize(dot);
        }
        m_sentinel = !m_base.empty() && (m_base[0] == '@' || m_base[0] == '+') ? m_base.substr(0, 1) : "";
        m_base.erase(0, m_sentinel.size());
        // Where a name is qualified, it does not matter where it is asked from.
        const bool isQualified = m_question->scope == Scope::Visible && m_separators > 0;
        m_scope = isQualified ? Scope::All : m_question->scope;
    }

    /// Empty for what cannot be seen.
    std::vector<int> RankOf(const Item& item) const {
        const bool isNameless = m_question->name.empty();
        const Dir* here = m_scope == Scope::Dir                                    ? m_asker
                          : m_scope == Scope::Private || m_scope == Scope::Visible ? m_askersPrivate
                                                                                   : nullptr;
        if (here && item.parent == here)
            return IsWanted(item, true) ? std::vector<int>{0, item.group} : std::vector<int>{};
        if (m_scope == Scope::Dir || m_scope == Scope::Private || !IsWanted(item, isNameless) ||
            (m_scope == Scope::PathOnly && item.entry == 0))
            return {};
        if (m_scope == Scope::Visible && IsConstructor(item))
            return {1, item.entry};
        return isNameless ? RankOfNameless(item) : RankByCategory(item);
    }

    bool IsWanted(const Item& item, bool inWalk) const {
        switch (m_question->form) {
        case Form::Dirs: // a walk by name that comes upon a plain folder ends there
            return item.dir || (item.group == Sub && inWalk && !m_question->name.empty());
        case Form::FilesAndSubDirs:
            return item.group == Sub || (item.group == File && (inWalk || IsDirect(item)));
        default:
            return item.group == File;
        }
    }

    static bool IsDirect(const Item& item) { return item.parent && item.parent->kind == Dir::Kind::Path; }

    bool IsConstructor(const Item& item) const {
        if (item.group != File || item.parent->kind != Dir::Kind::Class)
            return false;
        const std::string wanted = item.parent->Leaf();
        if (!m_question->name.empty())
            return !IsForm(Form::FilesAndSubDirs) && Same(wanted, m_base);
        // Nobody asks for a name: one constructor of each class that lies in a directory of the path.
        const auto& files = item.parent->files;
        const auto first = std::find_if(files.begin(), files.end(),
                                        [&](const auto& file) { return Same(StemOf(file.name), wanted); });
        return item.depth == 1 && first - files.begin() == item.place;
    }

    /// Directories of the path as they stand, then classes, then private directories.
    std::vector<int> RankOfNameless(const Item& item) const {
        if (IsDirect(item))
            return m_scope == Scope::Method ? std::vector<int>{}
                                            : std::vector<int>{2, item.entry, item.group};
        if (item.depth != 1 || m_scope == Scope::Visible)
            return {};
        if (item.parent->kind == Dir::Kind::Class)
            return {3, item.entry};
        const bool isSeen = item.parent->kind == Dir::Kind::Private && m_scope != Scope::Method;
        return isSeen ? std::vector<int>{4, item.entry} : std::vector<int>{};
    }

    std::vector<int> RankByCategory(const Item& item) const {
        // Each letter is a category; those of what lies directly in a directory of the path are capitals.
        static const std::map<Scope, std::string> orders{{Scope::All, "FfpSKCskcDP"},
                                                         {Scope::PathOnly, "FfpSKCskcDP"},
                                                         {Scope::Visible, "FDSKC"},
                                                         {Scope::Method, "fC"}};
        const bool direct = IsDirect(item);
        const char category = item.group == PathDir                     ? 'D'
                              : item.group == Private                   ? 'P'
                              : direct                                  ? "FKC.S"[item.group]
                              : item.group != File                      ? "fkc.s"[item.group]
                              : item.parent->kind == Dir::Kind::Private ? 'p'
                                                                        : 'f';
        const std::size_t rank = orders.at(m_scope).find(category);
        return rank == std::string::npos ? std::vector<int>{}
                                         : std::vector<int>{2, static_cast<int>(rank), item.entry};
    }

    bool Fits(const Item& item) const {
        if (item.parent && item.inPackage && m_separators < item.depth && m_scope != Scope::Dir)
            return false;
        if (!m_question->name.empty() && !Same(item.base, m_base))
            return false;
        if (!m_sentinel.empty() && item.name[item.name.size() - m_base.size() - 1] != m_sentinel[0])
            return false;
        return m_question->name[0] != '\\' && IsQualified(ParentOf(item.name));
    }

    int MatchOf(const std::optional<std::string>& extension) const {
        const bool isWritten = extension && Same(*extension, m_extension);
        if (!m_extension.empty() && !isWritten)
            return 0;
        const auto& list = m_question->extensions;
        for (std::size_t i = 0; i < list.size(); ++i)
            if (Same(list[i].substr(list[i][0] == '.'), extension.value_or("")) ||
                (list[i].empty() && !m_extension.empty()))
                return static_cast<int>(i) + 1;
        return list.empty() ? -1 : 0;
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
        const std::string leaf = LeafOf(name);
        name = name == leaf ? "" : ParentOf(name);
        return leaf;
    }

    bool Same(const std::string& a, const std::string& b) const { return Same(a, b, m_exact); }
    static bool Same(const std::string& a, const std::string& b, bool exact) {
        const auto equal = [&](char x, char y) {
            return exact ? x == y : std::tolower(x) == std::tolower(y);
        };
        return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), equal);
    }

    /// A current directory that is itself a package or class is passed over.
    bool IsEligible(const Item& item) const {
        const std::string leaf = LeafOf(m_items.front().name);
        return item.entry > 0 || (leaf[0] != '@' && leaf[0] != '+');
    }
    /// The file of that stem whose extension stands last in the list.
    const Dir::File* Best(const Dir* dir, const std::string& stem) const {
        const Dir::File* best = nullptr;
        const auto& list = m_question->extensions;
        for (std::size_t i = 0; dir && i < list.size(); ++i)
            for (const Dir::File& file : dir->files)
                if (StemOf(file.name) == stem && file.name.size() > stem.size() &&
                    Same(file.name.substr(stem.size() + 1), list[i], m_pathIsExact))
                    best = &file, m_found = dir;
        return best;
    }
    const Dir::File* ClassFile() const {
        const std::string& name = m_question->name;
        const std::size_t dot = name.rfind('.');
        const std::string stem = name.substr(dot + 1);
        const Dir::File* plain = nullptr;
        for (const Item& item : m_items) { // only the first plain file counts
            const bool fits = dot == name.npos ? item.group == PathDir : IsPackage(item, name.substr(0, dot));
            if (!fits || !IsEligible(item))
                continue;
            const Dir::File* inClass = nullptr;
            for (const Dir& child : item.dir->below)
                if (child.kind == Dir::Kind::Class && Same(child.Leaf(), stem, dot != name.npos))
                    inClass = inClass ? inClass : Best(&child, stem);
            if (inClass)
                return inClass->isClass ? inClass : nullptr;
            if (!plain && (plain = Best(item.dir, stem)) && plain->isClass)
                return plain;
        }
        return nullptr;
    }
    /// Is it the package `a.b` by names: `a` lies directly in a directory of the path, `b` in it?
    static bool IsPackage(const Item& item, const std::string& dotted) {
        std::string expected = item.name;
        for (int i = item.depth; item.group == Package && i >= 0; --i)
            expected = ParentOf(expected);
        std::string rest = item.name.substr(expected.size());
        std::string path;
        for (const char c : "." + dotted)
            path += c == '.' ? std::string("\\+") : std::string(1, c);
        return item.group == Package && rest == path;
    }

    std::vector<Item> m_items;
    int m_entry = 0;
    bool m_pathIsExact;
    const Question* m_question = nullptr;
    bool m_exact = true;
    Scope m_scope = Scope::All;
    std::string m_dirPart, m_base, m_extension, m_sentinel;
    int m_separators = 0;
    const Dir* m_asker = nullptr;
    const Dir* m_askersPrivate = nullptr;
    mutable const Dir* m_found = nullptr; ///< where Best found something
};

} // namespace model
