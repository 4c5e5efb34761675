#include "tools/ovsel/cache_verify.hpp"

#include <algorithm>
#include <map>
#include <set>

#include <fmt/format.h>

#include "tools/ovsel/cache_file.hpp"
#include "tools/ovsel/class_check.hpp"
#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/snapshot.hpp"

namespace tool {
namespace {

/// What a name stands for, in the words of the answer; empty for nothing.
using Kind = std::string_view;
constexpr Kind Nothing = "";
constexpr Kind Folder = "folder";
constexpr Kind File = "file";
constexpr Kind ClassFile = "class file";
constexpr Kind OtherFile = "file without a class";

struct Difference {
    std::string_view change;
    std::string name; ///< from the prefix on
    Kind inCache;
    Kind onDisk;
};

/// What has the same name in a folder of the cache and on the disk.
struct Pair {
    const CacheEntry* inCache = nullptr;
    const CacheFolder* folderInCache = nullptr;
    const CacheEntry* onDisk = nullptr;
    const CacheFolder* folderOnDisk = nullptr;
};

Kind KindOf(const CacheEntry* entry, const CacheFolder* folder) {
    const bool isFolder = folder != nullptr || (entry != nullptr && entry->letter == 'd');
    return isFolder ? Folder : entry != nullptr ? File : Nothing;
}

class Comparison {
  public:
    Comparison(const Options& options, const Session& session, const Snapshot& snapshot)
        : m_session(session), m_snapshot(snapshot), m_check(options) {}

    void Compare(const CacheFolder& inCache, const CacheFolder& onDisk) {
        if (m_snapshot.IsUnreadable(onDisk))
            return Note("unreadable", onDisk.name, Folder, Folder);
        std::map<std::string_view, Pair> pairs;
        for (const CacheFolder& folder : inCache.folders)
            pairs[LeafOf(folder)].folderInCache = &folder;
        for (const CacheEntry& entry : inCache.entries)
            pairs[entry.name].inCache = &entry;
        for (const CacheFolder& folder : onDisk.folders)
            pairs[LeafOf(folder)].folderOnDisk = &folder;
        for (const CacheEntry& entry : onDisk.entries)
            pairs[entry.name].onDisk = &entry;
        for (const auto& [name, pair] : pairs)
            Compare(inCache.name + '/' + std::string(name), pair);
    }

    void Note(std::string_view change, const std::string& name, Kind inCache, Kind onDisk) {
        m_differences.push_back({change, name, inCache, onDisk});
    }

    const std::vector<Difference>& Differences() const { return m_differences; }

    /// @throws EnvironmentError when classes could not be checked.
    void Finish() const {
        if (!m_check.Failure().empty())
            throw EnvironmentError(m_check.Failure());
    }

  private:
    void Compare(const std::string& name, const Pair& pair) {
        const Kind inCache = KindOf(pair.inCache, pair.folderInCache);
        const Kind onDisk = KindOf(pair.onDisk, pair.folderOnDisk);
        // A cache in one of its own folders was not there when that was read.
        if (inCache == Nothing &&
            linux_host::DriveMap::ToPath(FullName(m_session, name)) == m_session.File().path)
            return;
        if (inCache == Nothing || onDisk == Nothing)
            Note(inCache == Nothing ? "added" : "removed", name, inCache, onDisk);
        else if (pair.folderInCache != nullptr && pair.folderOnDisk != nullptr)
            Compare(*pair.folderInCache, *pair.folderOnDisk);
        else
            CompareKinds(name, pair, inCache, onDisk);
    }

    void CompareKinds(const std::string& name, const Pair& pair, Kind inCache, Kind onDisk) {
        // An unconfirmed entry may be either, and a link to a folder is listed as either.
        const bool open = pair.inCache != nullptr && pair.inCache->letter == 'U';
        if (pair.onDisk != nullptr && pair.onDisk->letter == 'U')
            onDisk = Folder;
        if (!open && inCache != onDisk)
            return Note("changed", name, inCache, onDisk);
        const char letter = pair.inCache != nullptr ? pair.inCache->letter : 'D';
        // In a private folder no file defines a class, whatever it holds.
        if ((letter != 'C' && letter != 'N') || name.find("/private/") != std::string::npos)
            return;
        const bool isClass = m_check.Defines(FullName(m_session, name));
        if (isClass != (letter == 'C'))
            Note("changed", name, isClass ? OtherFile : ClassFile, isClass ? ClassFile : OtherFile);
    }

    const Session& m_session;
    const Snapshot& m_snapshot;
    ClassCheck m_check;
    std::vector<Difference> m_differences;
};

Json ToJson(const std::vector<Difference>& differences, const Session& session, const Output& output) {
    Json list = Json::array();
    const auto word = [](Kind kind) { return kind == Nothing ? Json() : Json(kind); };
    for (const Difference& difference : differences)
        list.push_back({{"change", difference.change},
                        {"path", JsonName(output.InForm(FullName(session, difference.name)))},
                        {"in_cache", word(difference.inCache)},
                        {"on_disk", word(difference.onDisk)}});
    return list;
}

void Write(const Difference& difference, const Session& session, Output& output) {
    const std::string path = output.InForm(FullName(session, difference.name));
    if (output.IsNul())
        return output.WriteRecord(path);
    std::string kinds(difference.inCache == Nothing ? difference.onDisk : difference.inCache);
    if (difference.change == "changed")
        kinds = fmt::format("{} in the cache, {} on the disk", difference.inCache, difference.onDisk);
    output.Write(fmt::format("{:<10}  {}  {}\n", difference.change, Shown(path),
                             output.Paint(Style::Faint, "(" + kinds + ")")));
}

/// Reads the folders of the cache from the disk, and compares.
void CompareAll(const CacheFile& cache, const Session& session, Snapshot& snapshot, Comparison& comparison) {
    std::set<std::string> known;
    for (const CacheFolder& folder : cache.folders) {
        known.insert(folder.name);
        const ustring name = FullName(session, folder.name);
        const int accessibility = linux_host::DirectoryAccessibility(name);
        if (accessibility == ovDirNonexistent) {
            comparison.Note("removed", folder.name, Folder, Nothing);
            continue;
        }
        ovDir dir;
        if (accessibility == ovDirAccessible)
            dir = ovAddDir(session.Path(), name, ovDirAddAtEnd);
        if (accessibility == ovDirAccessible && ovGetDirType(dir) == ovDirTypeNull)
            dir = ovFindDirFullName(session.Path(), name); // on the path already
        if (ovGetDirType(dir) == ovDirTypeNull)
            comparison.Note("unreadable", folder.name, Folder, Folder);
        else
            comparison.Compare(folder, snapshot.Add(dir));
    }
    // Folders that were asked for on the command line besides.
    for (std::size_t position = 1; position < session.Folders().size(); ++position) {
        const ustring name = ovGetDirName(session.Folders()[position]);
        if (session.IsUnderPrefix(name) && !known.contains(RelativeName(session, name)))
            comparison.Note("added", RelativeName(session, name), Nothing, Folder);
    }
}

} // namespace

int RunCacheVerify(const Options& options, Session& session, Output& output) {
    const CacheFile cache = ReadCache(session.File().path, session.File().shown);
    Snapshot snapshot(session, Snapshot::Links::Asked);
    Comparison comparison(options, session, snapshot);
    CompareAll(cache, session, snapshot, comparison);
    comparison.Finish();
    const bool equal = comparison.Differences().empty();
    const CacheCounts counts = CountAll(cache.folders);
    if (output.IsJson())
        output.WriteJson({{"schema", 1},
                          {"command", "cache verify"},
                          {"equal", equal},
                          {"folders", counts.folders},
                          {"entries", counts.entries},
                          {"differences", ToJson(comparison.Differences(), session, output)}});
    for (const Difference& difference : comparison.Differences())
        if (!output.IsJson())
            Write(difference, session, output);
    if (equal && !output.IsJson() && !output.IsNul())
        output.Write(fmt::format("{}: as on the disk, {} folders, {} entries\n", Shown(session.File().shown),
                                 counts.folders, counts.entries));
    return equal ? ExitFound : ExitNotFound;
}

} // namespace tool
