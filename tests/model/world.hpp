#pragma once

#include <sstream>

#include "model/naive_resolver.hpp"

namespace model {

/// One thing that is done to the path or to the disk, by its place in System::Commands. Numbers choose from
/// what there is, whatever that is, so that every operation is possible in every world and a sequence may
/// lose any of its parts.
struct Operation {
    std::size_t command = 0;
    unsigned a = 0, b = 0, c = 0;
};

/// Swap makes a folder of a file, or the other way round; Rewrite makes a class of a file, or the other way.
enum class DiskChange { Put, Erase, Swap, Rename, Rewrite, Link };

using Names = std::vector<std::string>;

inline const Names PathPool{"R:\\A", "R:\\B", "R:\\C\\A", "R:\\D", "R:\\C"};
/// One is on the path as well, one is a package.
inline const Names CWDPool{"R:\\cwd", "R:\\other", "R:\\B", "R:\\C\\+K"};
inline const Names FilePool{"plot.sv", "plot.p", "Plot.sv",   "draw.sv", "K.sv",
                            "n",       "n.",     "n.longext", "a.b.sv"};
inline const Names FolderPool{"@K", "@plot", "+p", "+K", "private", "sub", "n"};
/// What stands in lists for a whole path: folders, and what must be left out.
inline const Names TokenPool{"R:\\A",     "R:\\B",          "R:\\C\\A",    "R:\\D",
                             "R:\\C",     "R:/D",           "R:\\nowhere", "",
                             "R:\\A\\@K", "R:\\B\\private", "R:\\C\\+K",   "R:\\" + std::string(1022, 'x'),
                             "R:\\cwd"};

/// What is on the disk, and what the library must take for true of it.
struct World {
    World() {
        for (const Names* pool : {&PathPool, &CWDPool})
            for (const std::string& dir : *pool)
                disk[dir];
        // Enough of everything from the start, so that a short sequence meets it.
        std::istringstream words("A/plot.sv A/@K/K.sv A/@K/draw.sv A/@K/private/plot.p A/+p/plot.sv A/+p/n "
                                 "A/+p/+K/K.sv A/+p/@K/K.sv "
                                 "A/+p/@K/draw.sv A/private/draw.sv A/private/Plot.sv B/plot.p B/K.sv "
                                 "B/@plot/plot.sv B/@plot/plot.p "
                                 "B/sub/ C/A/n C/A/a.b.sv C/A/@K/K.sv C/+K/ far/plot.sv far/private/ "
                                 "cwd/draw.sv cwd/@plot/plot.sv");
        for (std::string word, place, element; words >> word;) {
            std::istringstream elements(word);
            std::getline(elements, element, '/');
            for (place = "R:\\" + element; std::getline(elements, element, '/'); place += "\\" + element)
                Put(place, element, elements.eof() ? PlainOrClass(element, 1) : Entry::Folder);
        }
        cwd = Read(CWDPool[0]);
        for (const unsigned i : {0U, 1U})
            path.push_back(Read(PathPool[i]));
    }

    Disk disk;
    Dir cwd;
    std::vector<Dir> path;
    std::set<std::string> frozen; ///< of the path
    bool hidden = false;
    bool changed = false; ///< what replacing the path told
    bool reloads = false; ///< has the last operation to be followed by a reload, to be predictable?

    // What kind of world it is.
    /// In the storage layer's mode a reload gives a hidden directory its contents back, whenever it comes.
    bool canHide = true;
    Untold untold = Untold::LinksAndSome;
    bool hasLinks = false;
    bool pathIsExact = true;
    bool knowsOrder = true; ///< that of the files that were there before and those that came

    std::vector<Dir> Known() const {
        std::vector<Dir> known{cwd};
        known.insert(known.end(), path.begin(), path.end());
        return known;
    }
    bool IsOnPath(const std::string& name) const { return std::ranges::count(path, name, &Dir::name) > 0; }

    void Apply(const Operation& op);

    // What the commands do.
    void Add(const std::string& dir, bool atBegin, bool freeze = false) {
        if (IsOnPath(dir))
            return;
        // In its place before it is read, which a hidden current directory can tell.
        Dir& added = *path.insert(atBegin ? path.begin() : path.end(), Empty(dir));
        added = Read(dir);
        if (freeze)
            frozen.insert(dir);
    }
    void Remove(const std::string& dir) {
        std::erase_if(path, [&](const Dir& entry) { return entry.name == dir; });
        frozen.erase(dir);
    }
    void ChangeCWD(const std::string& dir) {
        cwd = Empty(dir);
        cwd = Read(dir);
        reloads = true;
    }
    /// After a look.
    void Freeze(const std::string& dir) {
        Refresh(false);
        if (IsOnPath(dir))
            frozen.insert(dir);
    }
    /// With a reload.
    void Thaw(const std::string& dir) {
        frozen.erase(dir);
        Refresh(false);
    }
    void Hide() {
        hidden = reloads = canHide;
        if (hidden)
            cwd = Empty(cwd.name);
    }
    /// With a reload.
    void Unhide() {
        hidden = false;
        Refresh(false);
    }
    void Refresh(bool alsoFrozen) {
        for (Dir& dir : path)
            if (alsoFrozen || !frozen.contains(dir.name))
                dir = Read(dir.name, &dir);
        cwd = Read(cwd.name, &cwd);
    }
    /// Without what lies below.
    void RefreshOne(const std::string& name, bool alsoFrozen) {
        for (Dir& dir : path)
            if (dir.name == name && (alsoFrozen || !frozen.contains(name)))
                dir = Read(name, &dir, false);
    }
    /// A list that may hold anything in any order, twice or not at all.
    static Names Choice(const Operation& op) {
        Names tokens;
        for (unsigned i = op.a % 7, rest = op.b; i > 0; --i, rest /= 13)
            tokens.push_back(TokenPool[(rest + op.c) % TokenPool.size()]);
        return tokens;
    }
    /// One of the changes that are seen the same way however often one looks meanwhile: no file becomes a
    /// folder.
    void ChangeMeanwhile(const Operation& op, unsigned i) {
        Operation change{op.command, op.a / (i + 1), op.b + i, op.c / 7 + i};
        const DiskChange kind = std::vector{DiskChange::Put, DiskChange::Erase, DiskChange::Rename,
                                            DiskChange::Put}[(op.c + i) % 4];
        if (kind == DiskChange::Put && change.b % 2 == 0)
            change.c %= static_cast<unsigned>(FolderPool.size() - 1);
        ChangeDisk(kind, change);
    }
    void Interfere(const Operation& op) {
        for (unsigned i = 0; i < 3; ++i)
            ChangeMeanwhile(op, i);
        ReadAnew();
    }
    /// Everything as it is read for the first time.
    void ReadAnew() {
        frozen.clear();
        hidden = false;
        cwd = Read(cwd.name);
        for (Dir& dir : path)
            dir = Read(dir.name);
    }
    /// Any folder that there is, and every other time one of the path's own.
    std::string Place(unsigned number) const {
        if (number % 2 == 0)
            return PathPool[number / 2 % PathPool.size()];
        return std::next(disk.begin(), static_cast<std::ptrdiff_t>(number % disk.size()))->first;
    }

    /// What the list names keeps its contents and moves behind what is there; the rest goes.
    void Replace(const Names& tokens) {
        changed = false;
        std::vector<Dir> left = std::move(path);
        path.clear();
        for (std::string token : tokens) {
            std::replace(token.begin(), token.end(), '/', '\\');
            if (token.size() > 1024) { // ends the work, and nothing goes
                path.insert(path.begin(), left.begin(), left.end());
                left.clear();
                break;
            }
            const auto kept =
                std::find_if(left.begin(), left.end(), [&](const Dir& dir) { return dir.name == token; });
            if (kept != left.end()) {
                path.push_back(*kept);
                left.erase(kept);
            } else if (!token.empty()) {
                changed = true;
                const std::string leaf = LeafOf(token);
                if (disk.contains(token) && leaf[0] != '@' && leaf[0] != '+' && leaf != "private")
                    Add(token, false);
            }
        }
        changed = changed || !left.empty();
        std::erase_if(frozen, [&](const std::string& dir) { return !IsOnPath(dir); });
    }
    void ChangeDisk(DiskChange kind, const Operation& op) {
        const std::string place = Place(op.a);
        const bool isFolder = op.b % 2 == 0;
        const Names& pool = isFolder ? FolderPool : FilePool;
        const std::string& newName = pool[op.c % pool.size()];
        if (kind == DiskChange::Put)
            return Put(place, newName, isFolder ? Entry::Folder : PlainOrClass(newName, op.b / 2));
        if (kind == DiskChange::Link && hasLinks && !place.starts_with(LinkedFolder))
            return Put(
                place, newName,
                std::vector{Entry::LinkToFolder, Entry::LinkToFile, Entry::LinkToNothing}[op.b / 2 % 3]);
        auto& entries = disk[place];
        if (entries.empty())
            return;
        const auto [name, what] =
            *std::next(entries.begin(), static_cast<std::ptrdiff_t>(op.b % entries.size()));
        const std::string full = place + "\\" + name;
        if (std::ranges::count(PathPool, full) + std::ranges::count(CWDPool, full) > 0)
            return;
        if (kind == DiskChange::Rewrite && !IsFolder(what) && !IsLink(what))
            entries[name] = what == Entry::ClassFile ? Entry::File : PlainOrClass(name, 1);
        if (kind == DiskChange::Erase || kind == DiskChange::Swap || kind == DiskChange::Rename)
            Erase(place, name);
        if (kind == DiskChange::Swap)
            Put(place, name, IsFolder(what) ? Entry::File : Entry::Folder);
        if (kind == DiskChange::Rename && !IsFolder(what))
            Put(place, FilePool[op.c % FilePool.size()], what == Entry::ClassFile ? Entry::File : what);
    }

  private:
    Dir Read(const std::string& name, const Dir* old = nullptr, bool deep = true) const {
        return Reader(disk, untold, hidden && !IsOnPath(cwd.name) ? cwd.name : "").Read(name, old, deep);
    }
    static Dir Empty(const std::string& name) { return {name, Dir::Kind::Path, {}, {}, {}}; }
    /// Some files cannot be classes, whatever is in them.
    static Entry PlainOrClass(const std::string& name, unsigned number) {
        return number % 2 == 1 && (name.ends_with(".sv") || name.ends_with(".p")) ? Entry::ClassFile
                                                                                  : Entry::File;
    }
    void Put(const std::string& place, const std::string& name, Entry what) {
        if (disk[place].contains(name) || std::count(place.begin(), place.end(), '\\') > 4)
            return;
        disk[place][name] = what;
        if (what == Entry::Folder)
            disk[place + "\\" + name];
    }
    void Erase(const std::string& place, const std::string& name) {
        const std::string whole = place + "\\" + name;
        std::erase_if(disk, [&](const auto& folder) {
            return folder.first == whole || folder.first.starts_with(whole + "\\");
        });
        disk[place].erase(name);
    }
};

} // namespace model
