#include "tools/ovsel/session.hpp"

#include <algorithm>
#include <cstdio>
#include <optional>

#include <fmt/format.h>
#include <unistd.h>

#include <host_interfaces/text.hpp>
#include <linux_hooks/linux_hooks.hpp>

#include "tools/ovsel/cache_use.hpp"
#include "tools/ovsel/contents.hpp"
#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/output.hpp"
#include "tools/ovsel/replacement.hpp"

namespace tool {
namespace {

/// What the library is busy with, for its messages: they carry names in its own grammar, the user wrote
/// others.
std::string g_subject;

/// Beside the subject because the hooks for messages know no path either.
Refusals g_refusals;
CacheReport g_cacheReport;

void PrintMessage(const char* text) {
    if (g_refusals.Take(text))
        return;
    Complain(g_subject.empty() ? std::string(text) : Shown(g_subject) + ": " + text);
}

void PrintDiagnostic(std::string_view text) {
    if (!g_cacheReport.Take(text))
        Complain(std::string(text.substr(0, text.find_last_not_of(" \n") + 1)));
}

/// `ovsel: reading ...` on a terminal, once the work has become long; gone again at the end.
class Progress {
  public:
    explicit Progress(std::size_t total) : m_total(total), m_wanted(isatty(STDERR_FILENO) != 0) {}
    ~Progress() {
        if (m_visible)
            std::fputs("\r\x1b[K", stderr);
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(std::size_t done) {
        const auto now = std::chrono::steady_clock::now();
        if (!m_wanted || now < m_next)
            return;
        m_next = now + std::chrono::milliseconds(100);
        m_visible = true;
        fmt::print(stderr, "\rovsel: reading folder {} of {}\x1b[K", done + 1, m_total);
    }

  private:
    std::size_t m_total;
    bool m_wanted;
    bool m_visible = false;
    std::chrono::steady_clock::time_point m_next =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
};

double Milliseconds(std::chrono::steady_clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

/// Before the path is created, because a drive map must not change under a path.
void ApplyMounts(const std::vector<Mount>& mounts) {
    for (const Mount& mount : mounts) {
        const ustring root = fl::i18n::to_ustring(mount.root.c_str());
        if (!linux_host::DriveMap::Add(root, AbsolutePath(mount.folder), mount.kind))
            throw UsageError(
                fmt::format("--mount: {} is no root such as X: or \\\\server\\share", Shown(mount.root)));
    }
}

/// Of every extension: the figure says how much was read, not how much was asked for.
std::size_t CountFiles(const std::vector<ovDir>& folders) {
    std::size_t count = 0;
    for (const ovDir& folder : folders)
        for (const ovDir& dir : FoldersBelow(folder))
            count += FilesIn(dir, nullptr).size();
    return count;
}

} // namespace

Session::Session(const Options& options)
    : m_anyExtension(!options.extensions), m_ignoresCase(options.ignoreCase), m_usesCache(options.cache) {
    if (options.extensions)
        m_extensions = *options.extensions;
    // The list that the library takes holds pointers into m_extensions, which does not change any more.
    for (const std::string& extension : m_extensions)
        m_extensionList.push_back(extension.c_str());
    m_extensionList.push_back(nullptr);

    // Standard output is for the answer alone, also where the library prints by itself.
    linux_host::SetPrintSink(PrintDiagnostic);
    ApplyMounts(options.mounts);
    if (options.command == Command::CacheWrite)
        Replacement::MapOpenFiles();
    linux_hooks::InstallDefaultHooks();
    // The third hook carries diagnostics of change detection, for whoever works on that.
    ovSetMessageFcns(PrintMessage, PrintMessage, nullptr);

    // Relative names mean the directory that the tool was started in, so they are resolved before --cwd.
    const std::vector<PathEntry> entries = CollectPathEntries(options);
    if (options.prefix)
        SetPrefix(*options.prefix);
    if (const std::string file = options.cache.value_or(options.file); !file.empty())
        m_file = {file, AbsolutePath(file)};
    CreatePath(options);
    if (options.from)
        SetAsker(*options.from);
    SetCurrentDirectory(options);
    AddFolders(entries);
    if (options.from && ovGetDirType(AskerFolder()) == ovDirTypeNull)
        Complain(fmt::format("--from {}: its folder is not on the path; asking as from nowhere",
                             Shown(*options.from)));
    m_loaded = Clock::now();
    m_loadCounters = linux_host::GetCounters();
}

Session::~Session() {
    // Handles on folders stay safe without their path; they go first so that the path is the last to go.
    m_folders.clear();
    ovRemovePath(m_path);
    linux_host::SetPrintSink(nullptr);
}

void Session::SetPrefix(const std::string& folder) {
    constexpr std::size_t longest = 1022; // with its separator below 1024, which is what the library allows
    const auto name = linux_host::DriveMap::ToName(AbsolutePath(folder));
    if (!name)
        throw EnvironmentError(fmt::format(
            "--prefix {}: no mapped root holds it, or there is a \\ or : in its name", Shown(folder)));
    if (name->back() == u'\\')
        throw UsageError(fmt::format("--prefix {}: a whole root cannot be a prefix", Shown(folder)));
    if (name->size() > longest)
        throw UsageError(fmt::format("--prefix: longer than {} characters", longest));
    m_prefix = *name;
}

/// Who looks once takes every folder as unchanging, which spares the handles for change notification. The
/// writer of a cache lets the prefix alone decide.
void Session::CreatePath(const Options& options) {
    const bool watches = options.command == Command::Watch;
    const bool writes = options.command == Command::CacheWrite;
    m_path = ovCreatePathWithPreFrozen(0, "ovsel",
                                       watches  ? nullptr
                                       : writes ? m_prefix.c_str()
                                                : u"",
                                       options.ignoreCase ? ovCaseInsensitive : ovCaseSensitive, true);
    if (m_path == nullptr)
        throw EnvironmentError("no path could be created");
    ovSetFreezeAllAddedDirectories(m_path, !watches && !writes);
    // To be counted, each folder has to be told.
    ovSetNotificationHandleWarnings(m_path, watches ? ovWarnCNHAlways : ovWarnCNHNever);
    if (options.stats && m_usesCache)
        g_cacheReport.Begin();
    if (m_usesCache)
        UseCache(m_path, m_file, m_prefix);
    if (!watches)
        return;
    // Left alone, remote folders without notification would not be looked at.
    ovNonNotifiedRemoteCWDRefreshPolicy(m_path, ovRefreshByTimeStamp);
    ovNonNotifiedRemotePathRefreshPolicy(m_path, ovRefreshByTimeStamp);
}

void Session::SetCurrentDirectory(const Options& options) {
    if (options.cwd) {
        const auto name = LibraryName(AbsolutePath(*options.cwd));
        const char* failure = name ? ovSetCWDName(m_path, *name) : "No such name";
        if (failure != nullptr)
            throw EnvironmentError(fmt::format("--cwd {}: {}", Shown(*options.cwd), failure));
    }
    // Hiding empties the record that is there, so it comes after the change and not before.
    bool hide = options.hideCwd;
    if (ovGetCWDName(m_path).empty()) {
        StandInForCurrentDirectory(options);
        hide = true;
    }
    if (hide)
        ovHideCWD(m_path, true);
}

/// Position 0 belongs to the current directory, and without one the first folder of the path would get it.
void Session::StandInForCurrentDirectory(const Options& options) {
    Complain("the current directory cannot be used; going on without it");
    std::vector<ustring> candidates;
    if (const auto root = linux_host::DriveMap::ToName("/"))
        candidates.push_back(*root);
    for (const Mount& mount : options.mounts)
        candidates.push_back(fl::i18n::to_ustring(mount.root.c_str()) + u'\\');
    for (const ustring& candidate : candidates)
        if (ovSetCWDName(m_path, candidate) == nullptr)
            return;
    throw EnvironmentError("there is no folder to start from");
}

void Session::AddFolders(const std::vector<PathEntry>& entries) {
    const bool freezesAll = ovSetFreezeAllAddedDirectories(m_path, false);
    Progress progress(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        progress.Show(i);
        g_subject = entries[i].shown;
        const auto name = LibraryName(entries[i].path);
        if (!name)
            continue;
        // What comes from a cache does not change, and to watch it would be in vain.
        const bool freezes = freezesAll || (m_usesCache && IsUnderPrefix(*name));
        ovSetFreezeAllAddedDirectories(m_path, freezes);
        ovAddDir(m_path, *name, ovDirAddAtEnd);
    }
    ovSetFreezeAllAddedDirectories(m_path, freezesAll);
    g_subject.clear();

    // A null record in return says either "rejected" or "known already"; the walk tells what is really there.
    const ovDir end = ovGetNullDir(m_path);
    for (ovDir dir = ovGetNextPathDir(end); dir != end; dir = ovGetNextPathDir(dir)) {
        m_positions[*dir] = m_folders.size();
        m_folders.push_back(dir);
    }
    if (!entries.empty() && m_folders.size() == 1)
        throw EnvironmentError(fmt::format("none of the {} folders given could be used", entries.size()));
    const auto isUnderPrefix = [this](const ovDir& dir) { return IsUnderPrefix(ovGetDirName(dir)); };
    if (m_usesCache && std::none_of(m_folders.begin() + 1, m_folders.end(), isUnderPrefix))
        Complain("note: no folder of the path lies under --prefix, so that nothing comes from the cache");
}

/// As the library compares, but for letters beyond ASCII where case does not count.
bool Session::IsUnderPrefix(const ustring& fullName) const {
    const auto lower = [](char16_t unit) {
        return unit >= u'A' && unit <= u'Z' ? char16_t(unit + 32) : unit;
    };
    const auto same = [&](char16_t a, char16_t b) { return m_ignoresCase ? lower(a) == lower(b) : a == b; };
    return fullName.size() > m_prefix.size() + 1 && fullName[m_prefix.size()] == u'\\' &&
           std::equal(m_prefix.begin(), m_prefix.end(), fullName.begin(), same);
}

void Session::SetAsker(const std::string& file) {
    const std::string path = AbsolutePath(file);
    // The file need not exist: only its folder plays a part in the answer.
    const std::size_t slash = path.rfind('/');
    if (const auto folder = linux_host::DriveMap::ToName(path.substr(0, slash == 0 ? 1 : slash)))
        m_askerFolderName = *folder;
}

// Asked anew, since a class, package or private folder may come and go while the path is watched.
ovDir Session::AskerFolder() const {
    return m_askerFolderName.empty() ? ovGetNullDir(m_path) : ovFindDirFullName(m_path, m_askerFolderName);
}

Refusals& Session::Unnotified() const { return g_refusals; }

std::size_t Session::PositionOf(const ovDir& dir) const { return m_positions.at(*ovGetPathDir(dir)); }

void Session::PrintStats() {
    // Taken before the files are counted, which is no part of the answer.
    const auto answered = Clock::now();
    const linux_host::Counters now = linux_host::GetCounters();
    Complain(
        fmt::format("read in {:.1f} ms: {} folders on the path, {} files, {} listings, {} existence queries, "
                    "{} change handles",
                    Milliseconds(m_loaded - m_start), m_folders.size() - 1, CountFiles(m_folders),
                    m_loadCounters.listings, m_loadCounters.existenceQueries, m_loadCounters.handles));
    Complain(fmt::format("answered in {:.3f} ms: {} listings, {} existence queries",
                         Milliseconds(answered - m_loaded), now.listings - m_loadCounters.listings,
                         now.existenceQueries - m_loadCounters.existenceQueries));
    Complain(fmt::format("left out: {} names with \\ or :, {} sockets, pipes or devices, {} special folders "
                         "inside themselves",
                         now.unspellable, now.specialFiles, now.ancestorLinks));
    if (!m_usesCache)
        return;
    if (const std::string report = g_cacheReport.Finish(m_path); !report.empty())
        Complain(report);
}

} // namespace tool
