#include "tools/ovsel/watch.hpp"

#include <algorithm>
#include <map>

#include <fmt/format.h>

#include <linux_host/linux_host.hpp>

#include "tools/ovsel/contents.hpp"
#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/meanings.hpp"
#include "tools/ovsel/wakeup.hpp"

namespace tool {
namespace {

/// Kept as text, because a folder that is told as removed is gone when the line is written.
struct Event {
    ovEventType type;
    ovDirType kind;
    ustring folder;
};

const char* WordFor(ovEventType type) {
    switch (type) {
    case ovEventDirAdded:
        return "added";
    case ovEventDirRemoved:
        return "removed";
    default:
        return "loaded";
    }
}

const char* WordFor(ovDirType kind) {
    switch (kind) {
    case ovDirTypeCWD:
        return "current_directory";
    case ovDirTypePackage:
        return "package";
    case ovDirTypeClass:
        return "class";
    case ovDirTypePrivate:
        return "private";
    default:
        return "path";
    }
}

/// Collects events as long as it lives.
class Listener {
  public:
    explicit Listener(const ovPath& path)
        : m_interest(ovRegisterPathInterest(path, [this](ovEventType type, ovDir dir) { Note(type, dir); })) {
    }
    ~Listener() { ovCancelPathInterest(m_interest); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::vector<Event> Take() { return std::exchange(m_events, {}); }

  private:
    void Note(ovEventType type, const ovDir& dir) {
        if (type == ovEventDirContentsLoaded || type == ovEventDirAdded || type == ovEventDirRemoved)
            m_events.push_back({type, ovGetDirType(dir), ovGetDirName(dir)});
    }

    std::vector<Event> m_events;
    ovRegisteredInterest m_interest;
};

class Watcher {
  public:
    Watcher(const Options& options, Session& session, Output& output)
        : m_options(options),
          m_session(session),
          m_output(output),
          m_meanings(session, options.names),
          m_listener(session.Path()) {
        // What changes before the first refresh is compared with this.
        for (const ovDir& folder : session.Folders())
            for (const ovDir& dir : FoldersBelow(folder))
                if (IsReread(ovGetDirName(dir)))
                    HasOtherNames(ovGetDirName(dir));
    }

    /// @throws Wakeup::Interrupted, ReaderGone, EnvironmentError
    void Run() {
        Introduce();
        while (m_wakeup.Sleep(m_options.interval)) {
            Refresh();
            if (m_options.once)
                return;
        }
        throw Wakeup::Interrupted();
    }

    void Summarize() const;

  private:
    void Introduce();
    void Refresh();

    bool IsWorthTelling(const Event& event);
    bool IsReread(const ustring& folder) const;
    bool HasOtherNames(const ustring& folder);

    void Tell(const Event& event);
    void Tell(const Meanings::Change& change);
    Json ToJson(const Meanings::Change& change) const;
    std::string ToText(const Meanings::Change& change) const;
    void WriteLine(const std::string& text);
    void WriteLine(const Json& json) { WriteLine(json.dump() + '\n'); }

    const Options& m_options;
    Session& m_session;
    Output& m_output;
    Wakeup m_wakeup;
    Meanings m_meanings;
    /// The contents of the folders that are read again in every refresh.
    std::map<ustring, std::vector<ustring>> m_reread;
    Listener m_listener;
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    std::size_t m_refreshes = 0;
    std::map<ovEventType, std::size_t> m_told;
    std::size_t m_changes = 0;
};

/// The library does not tell how one folder is checked; what all have in common follows from the handles that
/// are open and from its warnings.
void Watcher::Introduce() {
    std::size_t folders = 0;
    std::size_t frozen = 0;
    for (const ovDir& folder : m_session.Folders())
        for (const ovDir& dir : FoldersBelow(folder)) {
            ++folders;
            frozen += ovIsFrozen(dir) ? 1U : 0U;
        }
    const Refusals& refusals = m_session.Unnotified();
    const std::size_t notified = std::min<std::size_t>(linux_host::GetCounters().handles, folders);
    const std::size_t unchecked = std::min(refusals.CountUnchecked() + frozen, folders - notified);
    const std::size_t polled = folders - notified - unchecked;
    m_session.Unnotified().Report();
    if (m_output.IsNul())
        return;
    if (!m_output.IsJson())
        return WriteLine(
            fmt::format("watching {} folders every {} ms: {} notified, {} polled, {} unchecked\n", folders,
                        m_options.interval.count(), notified, polled, unchecked));
    Json reasons = Json::array();
    for (const Refusals::Kind& kind : refusals.Kinds())
        if (!kind.folders.empty())
            reasons.push_back({{"reason", kind.reason},
                               {"check", kind.check},
                               {"folders", kind.folders.size()},
                               {"example", JsonName(m_output.InForm(*kind.folders.begin()))}});
    WriteLine(Json{{"schema", 1},
                   {"command", "watch"},
                   {"interval_ms", m_options.interval.count()},
                   {"folders", folders},
                   {"notified", notified},
                   {"polled", polled},
                   {"unchecked", unchecked},
                   {"unnotified", reasons}});
}

void Watcher::Refresh() {
    ovRefreshAllDirectories(m_session.Path(), ovRefreshCheck);
    ++m_refreshes;
    m_session.Unnotified().Report();
    std::vector<Event> events = m_listener.Take();
    events.erase(std::remove_if(events.begin(), events.end(),
                                [this](const Event& event) { return !IsWorthTelling(event); }),
                 events.end());
    if (events.empty())
        return;
    // Before the first line, since a reader may keep the tool waiting there.
    const std::vector<Meanings::Change> changes = m_meanings.Update();
    for (const Event& event : events)
        Tell(event);
    for (const Meanings::Change& change : changes)
        Tell(change);
}

bool Watcher::IsWorthTelling(const Event& event) {
    if (event.kind == ovDirTypeCWD && ovIsCWDHidden(m_session.Path()))
        return false;
    if (event.type != ovEventDirContentsLoaded)
        return true;
    if (IsReread(event.folder))
        return HasOtherNames(event.folder);
    m_reread.erase(event.folder);
    return true;
}

/// Is the folder read again in every refresh? One that is gone is too, until it comes back.
bool Watcher::IsReread(const ustring& folder) const {
    return m_session.Unnotified().IsReread(folder) || !linux_host::DirectoryExists(folder);
}

/// Has the folder come to hold other names since this was last asked?
bool Watcher::HasOtherNames(const ustring& folder) {
    std::vector<ustring> names = NamesIn(ovFindDirFullName(m_session.Path(), folder));
    const auto [known, isFirst] = m_reread.try_emplace(folder);
    const bool differs = isFirst || names != known->second;
    known->second = std::move(names);
    return differs;
}

void Watcher::Tell(const Event& event) {
    ++m_told[event.type];
    if (m_output.IsNul())
        return;
    const std::string folder = m_output.InForm(event.folder);
    if (m_output.IsJson())
        WriteLine(Json{
            {"event", WordFor(event.type)}, {"folder", JsonName(folder)}, {"kind", WordFor(event.kind)}});
    else
        WriteLine(m_output.Paint(Style::Faint, fmt::format("{:<8} {}", WordFor(event.type), Shown(folder))) +
                  "\n");
}

void Watcher::Tell(const Meanings::Change& change) {
    ++m_changes;
    if (m_output.IsJson())
        return WriteLine(ToJson(change));
    if (!m_output.IsNul())
        return WriteLine(ToText(change));
    const std::string now = change.now ? m_output.InForm(*change.now) : "";
    WriteLine(change.name + '\0' + now + '\0');
}

Json Watcher::ToJson(const Meanings::Change& change) const {
    const auto file = [this](const std::optional<ustring>& name) {
        return name ? JsonName(m_output.InForm(*name)) : Json();
    };
    Json json{{"event", "meaning"},      {"name", JsonName(change.name)},
              {"was", file(change.was)}, {"now", file(change.now)},
              {"reason", nullptr},       {"position", nullptr},
              {"detail", nullptr}};
    if (change.reason) {
        json["reason"] = change.reason->Code();
        json["position"] = change.reason->position;
        json["detail"] = change.reason->text;
    }
    return json;
}

std::string Watcher::ToText(const Meanings::Change& change) const {
    const std::string now = change.now ? fmt::format("now means {} ({})", Shown(m_output.InForm(*change.now)),
                                                     change.reason->text)
                                       : "means nothing any more";
    const std::string was =
        change.was ? fmt::format("it was {}", Shown(m_output.InForm(*change.was))) : "it meant nothing";
    return fmt::format("{} {}; {}\n", m_output.Paint(Style::Heading, Shown(change.name)), now, was);
}

/// In pieces, each of them after a look whether it can be written at once: a write that waits for its reader
/// could not be interrupted.
void Watcher::WriteLine(const std::string& text) {
    for (std::size_t begin = 0; begin < text.size(); begin += Wakeup::ChunkSize) {
        m_wakeup.AwaitReader();
        m_output.Write(std::string_view(text).substr(begin, Wakeup::ChunkSize));
        m_output.Finish();
    }
}

void Watcher::Summarize() const {
    const auto count = [this](ovEventType type) {
        const auto found = m_told.find(type);
        return found == m_told.end() ? 0 : found->second;
    };
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - m_start;
    Complain(
        fmt::format("watched for {:.1f} s: {} looks, {} folders loaded, {} added, {} removed, {} changes "
                    "of meaning, {} folders without notification",
                    time.count(), m_refreshes, count(ovEventDirContentsLoaded), count(ovEventDirAdded),
                    count(ovEventDirRemoved), m_changes, m_session.Unnotified().Count()));
}

} // namespace

int RunWatch(const Options& options, Session& session, Output& output) {
    Watcher watcher(options, session, output);
    try {
        watcher.Run();
    } catch (const Wakeup::Interrupted&) {
        watcher.Summarize();
    }
    return ExitFound;
}

} // namespace tool
