#pragma once

#include "model/naive_resolver.hpp"

namespace model {

/// How the library is to learn of changes.
enum class Detection { Handles, Times, Mixed };

/// One thing that is done to the path or to the disk. Numbers choose from what there is, whatever that is, so
/// that every operation is possible in every world and a sequence may lose any of its parts.
struct Operation {
    enum class Kind {
        AddAtBegin,
        AddAtEnd,
        AddFrozen,
        Remove,
        Replace, ///< by a list of anything
        ChangeCWD,
        Freeze, ///< after a look
        Thaw,   ///< and reload
        Hide,
        Unhide, ///< and reload
        Mark,   ///< tells the library that something changed, in one of the ways to do so
        Refresh,
        RefreshOne, ///< without what lies below
        Put,        ///< creates a file or folder
        Erase,
        Swap, ///< a file becomes a folder, or the other way round
        Rename,
        Rewrite, ///< a file becomes a class, or ceases to be one
        Link,    ///< where the disk has links
        SetTime, ///< of a folder, anywhere but where it was
        Tick,    ///< the clock goes on, or jumps
        KeepHandle,
        DropHandles,
        Listen,
        StopListening,
        Search,    ///< opens one, walks a few steps and leaves it
        Interfere, ///< changes of the disk; then callbacks that do anything at every event. All is new after
                   ///< it
        Count
    };
    Kind kind = Kind::Tick;
    unsigned a = 0, b = 0, c = 0;
};

using Names = std::vector<std::string>;

inline const Names& PathPool() {
    static const Names pool{"R:\\A", "R:\\B", "R:\\C\\A", "R:\\D", "R:\\C"};
    return pool;
}
/// One is on the path as well, one is a package.
inline const Names& CWDPool() {
    static const Names pool{"R:\\cwd", "R:\\other", "R:\\B", "R:\\C\\+K"};
    return pool;
}
inline const Names& FilePool() {
    static const Names pool{"plot.sv", "plot.p", "Plot.sv", "draw.sv", "K.sv", "n", "a.b.sv"};
    return pool;
}
inline const Names& FolderPool() {
    static const Names pool{"@K", "@plot", "+p", "+K", "private", "sub", "n"};
    return pool;
}
/// What stands in lists for a whole path: folders, and what must be left out.
inline const Names& TokenPool() {
    static const Names pool = [] {
        Names tokens = PathPool();
        tokens.insert(tokens.end(), {"R:/D", "R:\\nowhere", "", "R:\\A\\@K", "R:\\B\\private", "R:\\C\\+K",
                                     "R:\\" + std::string(1022, 'x'), "R:\\cwd"});
        return tokens;
    }();
    return pool;
}

/// What is on the disk, and what the library must take for true of it.
struct World {
    World() {
        for (const Names* pool : {&PathPool(), &CWDPool()})
            for (const std::string& dir : *pool)
                disk[dir];
        disk["R:\\C"] = {{"A", Entry::Folder}, {"+K", Entry::Folder}};
        // Enough of everything from the start, so that a short sequence meets it.
        for (const auto& [place, names] :
             std::map<std::string, Names>{{"R:\\A", {"plot.sv", "@K/", "+p/", "private/"}},
                                          {"R:\\A\\@K", {"K.sv", "draw.sv", "private/"}},
                                          {"R:\\A\\@K\\private", {"plot.p"}},
                                          {"R:\\A\\+p", {"plot.sv", "n", "+K/", "@K/"}},
                                          {"R:\\A\\+p\\+K", {"K.sv"}},
                                          {"R:\\A\\+p\\@K", {"K.sv", "draw.sv"}},
                                          {"R:\\A\\private", {"draw.sv", "Plot.sv"}},
                                          {"R:\\B", {"plot.p", "K.sv", "@plot/", "sub/"}},
                                          {"R:\\B\\@plot", {"plot.sv", "plot.p"}},
                                          {"R:\\C\\A", {"n", "a.b.sv", "@K/"}},
                                          {"R:\\C\\A\\@K", {"K.sv"}},
                                          {LinkedFolder, {"plot.sv", "private/"}},
                                          {CWDPool()[0], {"draw.sv", "@plot/"}},
                                          {CWDPool()[0] + "\\@plot", {"plot.sv"}}})
            for (const std::string& name : names)
                Put(place, name.substr(0, name.find('/')),
                    name.back() == '/' ? Entry::Folder : PlainOrClass(name, 1));
        cwd = Read(CWDPool()[0]);
        for (const std::size_t i : {0, 1})
            path.push_back(Read(PathPool()[i]));
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
    bool IsOnPath(const std::string& name) const { return FindOnPath(name) != path.end(); }

    void Apply(const Operation& op) {
        using Kind = Operation::Kind;
        const bool wasOnPath = IsOnPath(cwd.name);
        const std::string& dir = PathPool()[op.a % PathPool().size()];
        switch (op.kind) {
        case Kind::AddAtBegin:
        case Kind::AddAtEnd:
            Add(dir, op.kind == Kind::AddAtBegin);
            break;
        case Kind::AddFrozen:
            if (!IsOnPath(dir))
                frozen.insert(dir);
            Add(dir, false);
            break;
        case Kind::Remove:
            std::erase_if(path, [&](const Dir& entry) { return entry.name == dir; });
            frozen.erase(dir);
            break;
        case Kind::Replace:
            Replace(Choice(op));
            break;
        case Kind::ChangeCWD:
            cwd = Empty(CWDPool()[op.a % CWDPool().size()]);
            cwd = Read(cwd.name);
            break;
        case Kind::Freeze:
            Refresh(false);
            if (IsOnPath(dir))
                frozen.insert(dir);
            break;
        case Kind::Thaw:
            frozen.erase(dir);
            Refresh(false);
            break;
        case Kind::Hide:
            hidden = canHide;
            if (hidden)
                cwd = Empty(cwd.name);
            break;
        case Kind::Unhide:
            hidden = false;
            Refresh(false);
            break;
        case Kind::Refresh:
            Refresh(RefreshType(op) == 3);
            break;
        case Kind::RefreshOne:
            for (Dir& entry : path)
                if (entry.name == dir && (RefreshType(op) == 3 || !frozen.contains(dir)))
                    entry = Read(dir, &entry, false);
            break;
        case Kind::Interfere:
            for (unsigned i = 0; i < 3; ++i)
                ChangeDisk(Change(op, i));
            ReadAnew();
            break;
        default:
            ChangeDisk(op);
            break;
        }
        reloads = hidden &&
                  (op.kind == Kind::Hide || op.kind == Kind::ChangeCWD || wasOnPath != IsOnPath(cwd.name));
        if (reloads)
            Refresh(false);
    }

    /// 9 stands for all that are none.
    static unsigned RefreshType(const Operation& op) {
        return std::vector<unsigned>{1, 2, 3, 0, 1, op.kind == Operation::Kind::Refresh ? 9U : 1U}[op.a % 6];
    }
    /// A list that may hold anything in any order, twice or not at all.
    static Names Choice(const Operation& op) {
        Names tokens;
        for (unsigned i = op.a % 7, rest = op.b; i > 0; --i, rest /= 13)
            tokens.push_back(TokenPool()[(rest + op.c) % TokenPool().size()]);
        return tokens;
    }
    /// The changes that are seen the same way however often one looks meanwhile: no file becomes a folder.
    static Operation Change(const Operation& op, unsigned i) {
        using Kind = Operation::Kind;
        Operation change{Kind::Put, op.a / (i + 1), op.b + i, op.c / 7 + i};
        change.kind = std::vector{Kind::Put, Kind::Erase, Kind::Rename, Kind::Put}[(op.c + i) % 4];
        if (change.kind == Kind::Put && change.b % 2 == 0)
            change.c %= static_cast<unsigned>(FolderPool().size() - 1);
        return change;
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
            return PathPool()[number / 2 % PathPool().size()];
        return std::next(disk.begin(), static_cast<std::ptrdiff_t>(number % disk.size()))->first;
    }

  private:
    std::vector<Dir>::const_iterator FindOnPath(const std::string& name) const {
        return std::find_if(path.begin(), path.end(), [&](const Dir& dir) { return dir.name == name; });
    }
    Dir Read(const std::string& name, const Dir* old = nullptr, bool deep = true) const {
        return Reader(disk, untold, hidden && !IsOnPath(cwd.name) ? cwd.name : "").Read(name, old, deep);
    }
    static Dir Empty(const std::string& name) { return {name, Dir::Kind::Path, {}, {}, {}}; }
    void Add(const std::string& dir, bool atBegin) {
        if (!IsOnPath(dir)) { // in its place before it is read, which a hidden current directory can tell
            Dir& added = *path.insert(atBegin ? path.begin() : path.end(), Empty(dir));
            added = Read(dir);
        }
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
    void Refresh(bool alsoFrozen) {
        for (Dir& dir : path)
            if (alsoFrozen || !frozen.contains(dir.name))
                dir = Read(dir.name, &dir);
        cwd = Read(cwd.name, &cwd);
    }

    void ChangeDisk(const Operation& op) {
        using Kind = Operation::Kind;
        const std::string place = Place(op.a);
        const bool isFolder = op.b % 2 == 0;
        const Names& pool = isFolder ? FolderPool() : FilePool();
        const std::string& newName = pool[op.c % pool.size()];
        if (op.kind == Kind::Put)
            return Put(place, newName, isFolder ? Entry::Folder : PlainOrClass(newName, op.b / 2));
        if (op.kind == Kind::Link && hasLinks && !place.starts_with(LinkedFolder))
            return Put(
                place, newName,
                std::vector{Entry::LinkToFolder, Entry::LinkToFile, Entry::LinkToNothing}[op.b / 2 % 3]);
        auto& entries = disk[place];
        if (entries.empty())
            return;
        const auto [name, what] =
            *std::next(entries.begin(), static_cast<std::ptrdiff_t>(op.b % entries.size()));
        const bool isRoot = std::count(PathPool().begin(), PathPool().end(), place + "\\" + name) +
                                std::count(CWDPool().begin(), CWDPool().end(), place + "\\" + name) >
                            0;
        if (isRoot)
            return;
        if (op.kind == Kind::Rewrite && !IsFolder(what) && !IsLink(what))
            entries[name] = what == Entry::ClassFile ? Entry::File : PlainOrClass(name, 1);
        if (op.kind == Kind::Erase || op.kind == Kind::Swap || op.kind == Kind::Rename)
            Erase(place, name);
        if (op.kind == Kind::Swap)
            Put(place, name, IsFolder(what) ? Entry::File : Entry::Folder);
        if (op.kind == Kind::Rename && !IsFolder(what))
            Put(place, FilePool()[op.c % FilePool().size()], what == Entry::ClassFile ? Entry::File : what);
    }
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
