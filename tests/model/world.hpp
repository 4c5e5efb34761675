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
        Replace, ///< by a permutation and choice of folders
        ChangeCWD,
        Freeze, ///< after a look
        Thaw,   ///< and reload
        Hide,
        Unhide, ///< and reload
        Mark,   ///< tells the library that something changed, in one of the ways to do so
        Refresh,
        Put, ///< creates a file or folder
        Erase,
        Swap, ///< a file becomes a folder, or the other way round
        Rename,
        Tick, ///< the clock goes on
        KeepHandle,
        DropHandles,
        Listen,
        StopListening,
        Search, ///< opens one, walks a few steps and leaves it
        Count
    };
    Kind kind = Kind::Tick;
    unsigned a = 0, b = 0, c = 0;
};

inline const std::vector<std::string>& PathPool() {
    static const std::vector<std::string> pool{"R:\\A", "R:\\B", "R:\\C\\A", "R:\\D"};
    return pool;
}
inline const std::vector<std::string>& CWDPool() {
    static const std::vector<std::string> pool{"R:\\cwd", "R:\\other"};
    return pool;
}
inline const std::vector<std::string>& FilePool() {
    static const std::vector<std::string> pool{"plot.sv", "plot.p", "Plot.sv", "draw.sv",
                                               "K.sv",    "n",      "a.b.sv"};
    return pool;
}
inline const std::vector<std::string>& FolderPool() {
    static const std::vector<std::string> pool{"@K", "@plot", "+p", "+K", "private", "sub", "n"};
    return pool;
}

/// What is on the disk, and what the library must take for true of it.
struct World {
    World() {
        for (const auto* pool : {&PathPool(), &CWDPool()})
            for (const std::string& dir : *pool)
                disk[dir];
        disk["R:\\C"];
        // Enough of everything from the start, so that a short sequence meets it.
        for (const auto& [place, names] :
             std::map<std::string, std::vector<std::string>>{{"R:\\A", {"plot.sv", "@K/", "+p/", "private/"}},
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
                                                             {CWDPool()[0], {"draw.sv", "@plot/"}},
                                                             {CWDPool()[0] + "\\@plot", {"plot.sv"}}})
            for (const std::string& name : names)
                Put(place, name.substr(0, name.find('/')), name.back() == '/');
        cwd = Read(disk, CWDPool()[0]);
        for (const std::size_t i : {0U, 1U})
            path.push_back(Read(disk, PathPool()[i]));
    }

    Disk disk;
    Dir cwd;
    std::vector<Dir> path;
    std::set<std::string> frozen;
    bool hidden = false;
    /// In the storage layer's mode a reload gives a hidden directory its contents back, whenever it comes.
    bool canHide = true;

    std::vector<Dir> Known() const {
        std::vector<Dir> known{cwd};
        known.insert(known.end(), path.begin(), path.end());
        return known;
    }
    bool IsOnPath(const std::string& name) const {
        return std::any_of(path.begin(), path.end(), [&](const Dir& dir) { return dir.name == name; });
    }

    void Apply(const Operation& op) {
        using Kind = Operation::Kind;
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
            cwd = Load(CWDPool()[op.a % CWDPool().size()]);
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
                cwd = Load(cwd.name);
            break;
        case Kind::Unhide:
            hidden = false;
            Refresh(false);
            break;
        case Kind::Refresh:
            Refresh(op.a % 3 == 2);
            break;
        case Kind::Put:
        case Kind::Erase:
        case Kind::Swap:
        case Kind::Rename:
            ChangeDisk(op);
            break;
        default:
            break; // nothing that a question could tell
        }
    }

    /// The folders that a choice and a permutation leave, in order.
    static std::vector<std::string> Choice(const Operation& op) {
        std::vector<std::string> dirs = PathPool();
        for (unsigned i = op.a % 24; i > 0; --i)
            std::next_permutation(dirs.begin(), dirs.end());
        for (std::size_t i = dirs.size(); i-- > 0;)
            if ((op.b >> i & 1U) != 0)
                dirs.erase(dirs.begin() + static_cast<std::ptrdiff_t>(i));
        return dirs;
    }

  private:
    Dir Load(const std::string& name) const {
        const bool isCWD = std::count(CWDPool().begin(), CWDPool().end(), name) > 0;
        return hidden && isCWD ? Dir{name, Dir::Kind::Path, {}, {}, {}} : Read(disk, name);
    }
    void Add(const std::string& dir, bool atBegin) {
        if (!IsOnPath(dir))
            path.insert(atBegin ? path.begin() : path.end(), Load(dir));
    }
    void Replace(const std::vector<std::string>& dirs) {
        std::vector<Dir> old = std::move(path);
        path.clear();
        for (const std::string& dir : dirs) {
            const auto kept =
                std::find_if(old.begin(), old.end(), [&](const Dir& entry) { return entry.name == dir; });
            if (kept != old.end())
                path.push_back(*kept);
            else
                Add(dir, false);
        }
        std::erase_if(frozen, [&](const std::string& dir) { return !IsOnPath(dir); });
    }
    void Refresh(bool alsoFrozen) {
        for (Dir& dir : path)
            if (alsoFrozen || !frozen.contains(dir.name))
                dir = Load(dir.name);
        cwd = Load(cwd.name);
    }
    /// Any folder that there is, and every other time one of the path's own.
    std::string Place(unsigned number) const {
        if (number % 2 == 0)
            return PathPool()[number / 2 % PathPool().size()];
        auto place = disk.begin();
        std::advance(place, static_cast<std::ptrdiff_t>(number % disk.size()));
        return place->first;
    }
    void ChangeDisk(const Operation& op) {
        using Kind = Operation::Kind;
        const std::string place = Place(op.a);
        if (op.kind == Kind::Put) {
            const bool isFolder = op.b % 2 == 0;
            const auto& pool = isFolder ? FolderPool() : FilePool();
            Put(place, pool[op.c % pool.size()], isFolder);
            return;
        }
        auto& entries = disk[place];
        if (entries.empty())
            return;
        auto entry = entries.begin();
        std::advance(entry, static_cast<std::ptrdiff_t>(op.b % entries.size()));
        const auto [name, isFolder] = *entry;
        if (IsRoot(place + "\\" + name))
            return;
        const bool swaps = op.kind == Kind::Swap;
        if (swaps && std::count(FolderPool().begin(), FolderPool().end(), name) == 0)
            return; // a listing that said nothing of a file must not be proved wrong behind its back
        Erase(place, name);
        if (swaps)
            Put(place, name, !isFolder);
        else if (op.kind == Kind::Rename && !isFolder)
            Put(place, FilePool()[op.c % FilePool().size()], false);
    }
    static bool IsRoot(const std::string& name) {
        return std::count(PathPool().begin(), PathPool().end(), name) > 0;
    }
    void Put(const std::string& place, const std::string& name, bool isFolder) {
        if (disk[place].contains(name) || std::count(place.begin(), place.end(), '\\') > 4)
            return;
        disk[place][name] = isFolder;
        if (isFolder)
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
