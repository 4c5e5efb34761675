#include "tools/ovsel/cache_write.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fmt/format.h>
#include <unistd.h>

#include "tools/ovsel/class_check.hpp"
#include "tools/ovsel/contents.hpp"
#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/replacement.hpp"
#include "tools/ovsel/snapshot.hpp"

namespace tool {
namespace {

/// A name, from the prefix on, and what is to be said of it.
struct Finding {
    std::string name;
    std::string text;
};

/// Looks for what a cache would not give back as it is on the disk.
class Examination {
  public:
    explicit Examination(const Snapshot& snapshot) : m_snapshot(snapshot) {
        for (const CacheFolder& folder : snapshot.Folders()) {
            if (LeafOf(folder).find('.') != std::string_view::npos)
                Warn(folder.name,
                     "has a dot in its name: with a cache, too, the disk is asked whether it is there");
            Examine(folder, 1);
        }
    }

    /// What a cache cannot carry at all.
    const std::vector<Finding>& Refusals() const { return m_refusals; }
    /// What it answers in a way that nobody would expect.
    const std::vector<Finding>& Warnings() const { return m_warnings; }

  private:
    void Refuse(const std::string& name, const char* reason) {
        if (reason != nullptr)
            m_refusals.push_back({name, reason});
    }
    void Warn(const std::string& name, std::string text) { m_warnings.push_back({name, std::move(text)}); }

    void Examine(const CacheFolder& folder, std::size_t level) {
        Refuse(folder.name, WhyNotCarried(folder.name));
        Refuse(folder.name, m_snapshot.IsUnreadable(folder) ? "cannot be read" : nullptr);
        Refuse(folder.name, level > MostCacheLevels ? "is nested deeper than 2048 folders" : nullptr);
        for (const CacheEntry& entry : folder.entries) {
            const std::string name = folder.name + '/' + entry.name;
            Refuse(name, WhyNotCarried(entry.name));
            const std::size_t dot = entry.name.rfind('.');
            if (entry.letter == 'd' && dot != std::string::npos)
                Warn(name, fmt::format("has a dot in its name: the storage layer's mode takes it for {}",
                                       dot == 0 ? "nothing" : Shown(entry.name.substr(0, dot))));
        }
        for (const CacheFolder& child : folder.folders)
            Examine(child, level + 1);
    }

    const Snapshot& m_snapshot;
    std::vector<Finding> m_refusals;
    std::vector<Finding> m_warnings;
};

/// The folders of the path that a cache for the prefix holds.
std::vector<ovDir> FoldersUnderPrefix(const Session& session) {
    std::vector<ovDir> folders;
    // The current directory is none of them: it is another one at every start.
    for (std::size_t position = 1; position < session.Folders().size(); ++position) {
        const ovDir& dir = session.Folders()[position];
        const ustring name = ovGetDirName(dir);
        if (session.IsUnderPrefix(name))
            folders.push_back(dir);
        else if (name == session.Prefix())
            Complain("note: the folder of --prefix itself is not part of a cache; with the one above as "
                     "prefix it is");
    }
    return folders;
}

/// Lets the library find out of each file whether it defines a class; it remembers, and the writer asks it.
void CheckClasses(const Options& options, const std::vector<ovDir>& folders) {
    const ClassCheck check(options);
    for (const ovDir& folder : folders)
        for (const ovDir& dir : FoldersBelow(folder))
            for (const ustring& file : FilesIn(dir, nullptr))
                ovIsFileClassdef(dir, file, ovSeparatePathName(file));
    if (!check.Failure().empty())
        throw EnvironmentError(check.Failure());
}

/// In an order and with letters that do not depend on who tells.
CacheFolder Normalized(CacheFolder folder) {
    for (CacheEntry& entry : folder.entries)
        entry.letter = entry.letter == 'd' ? 'd' : 'F';
    std::sort(folder.entries.begin(), folder.entries.end());
    for (CacheFolder& child : folder.folders)
        child = Normalized(std::move(child));
    std::sort(folder.folders.begin(), folder.folders.end(),
              [](const CacheFolder& a, const CacheFolder& b) { return a.name < b.name; });
    return folder;
}

/// @throws EnvironmentError unless the file holds what it was to hold.
void CheckWritten(int file, const std::vector<CacheFolder>& wanted, const std::string& shown) {
    const auto text = ::lseek(file, 0, SEEK_SET) == 0 ? ReadUpTo(file, MostCacheBytes + 1) : std::nullopt;
    if (!text)
        throw EnvironmentError(fmt::format("{}: {}", Shown(shown), std::strerror(errno)));
    if (text->size() > MostCacheBytes)
        throw EnvironmentError(fmt::format("{}: this would be larger than any reader follows", Shown(shown)));
    try {
        const std::vector<CacheFolder> written = ParseCache(*text, shown).folders;
        if (std::equal(
                written.begin(), written.end(), wanted.begin(), wanted.end(),
                [](const CacheFolder& a, const CacheFolder& b) { return Normalized(a) == Normalized(b); }))
            return;
    } catch (const FindingError& error) {
        throw EnvironmentError(fmt::format("what was written reads back wrong: {}", error.what()));
    }
    throw EnvironmentError(fmt::format("{}: what was written reads back as something else", Shown(shown)));
}

void WriteFile(const Session& session, const std::vector<CacheFolder>& wanted) {
    Replacement file(session.File());
    try {
        ovWritePathToCacheFile(session.Path(), file.LibraryName().c_str());
    } catch (const std::exception& error) {
        // In front of the reason stands the descriptor, which tells nobody anything.
        const std::string text = error.what();
        const std::size_t colon = text.rfind(": ");
        throw EnvironmentError(fmt::format("{}: {}", Shown(session.File().shown),
                                           colon == std::string::npos ? text : text.substr(colon + 2)));
    }
    CheckWritten(file.File(), wanted, session.File().shown);
    file.Commit();
}

/// Findings as people, scripts and programs want them.
Json Tell(const std::vector<Finding>& findings, const char* kind, const Session& session, Output& output) {
    Json list = Json::array();
    for (const Finding& finding : findings) {
        const std::string path = output.InForm(FullName(session, finding.name));
        if (output.IsJson())
            list.push_back({{"path", JsonName(path)}, {"reason", finding.text}});
        else
            Complain(fmt::format("{}: {} {}", kind, Shown(path), finding.text));
    }
    return list;
}

} // namespace

int RunCacheWrite(const Options& options, Session& session, Output& output) {
    const std::vector<ovDir> folders = FoldersUnderPrefix(session);
    if (folders.empty())
        throw EnvironmentError(fmt::format("no folder of the path lies under --prefix {}; nothing is written",
                                           Shown(*options.prefix)));
    if (options.classes)
        CheckClasses(options, folders);
    Snapshot snapshot(session, Snapshot::Links::Unasked);
    for (const ovDir& folder : folders)
        snapshot.Add(folder);
    const Examination examination(snapshot);
    const bool writes = examination.Refusals().empty();
    if (writes)
        WriteFile(session, snapshot.Folders());

    const Json warnings = Tell(examination.Warnings(), "note", session, output);
    const Json refusals = Tell(examination.Refusals(), "refused", session, output);
    const CacheCounts counts = CountAll(snapshot.Folders());
    if (output.IsJson())
        output.WriteJson({{"schema", 1},
                          {"command", "cache write"},
                          {"written", writes},
                          {"folders", counts.folders},
                          {"entries", counts.entries},
                          {"refused", refusals},
                          {"warnings", warnings}});
    else if (output.IsNul())
        for (const Finding& finding : examination.Refusals())
            output.WriteRecord(output.InForm(FullName(session, finding.name)));
    else if (writes)
        output.Write(fmt::format("{}: {} folders, {} entries\n", Shown(session.File().shown), counts.folders,
                                 counts.entries));
    if (!writes && !output.IsJson())
        Complain("nothing is written: a cache holds names as they are, and would be read as something else");
    return writes ? ExitFound : ExitNotFound;
}

} // namespace tool
