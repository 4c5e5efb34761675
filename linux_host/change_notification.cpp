#include "linux_host/change_notification.hpp"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <limits>
#include <linux/magic.h>
#include <sys/statfs.h>
#include <unistd.h>

#include "linux_host/counters.hpp"
#include "linux_host/drive_map.hpp"
#include "linux_host/recent_listings.hpp"

namespace linux_host {

namespace {

/// A handle is a place in the lower half and that place's generation, never all ones, in the upper.
constexpr int HalfBits = 32;
static_assert(sizeof(host::ChangeHandle) * 8 == 2 * HalfBits);
constexpr std::uint32_t LastGeneration = 0x7FFFFFFF;

testing::NotificationFaults& Faults() {
    static testing::NotificationFaults faults;
    return faults;
}

struct FileSystem {
    ::dev_t device;
    bool tells;
};

/// Do changes on the folder's file system reach inotify, whoever makes them? Watches are accepted everywhere,
/// but on these others write past us, or the kernel makes up the contents as they are read. @return nothing
/// if the folder cannot be asked.
std::optional<FileSystem> FileSystemOf(const std::string& folder) {
    constexpr std::uint32_t MadeUp[] = {PROC_SUPER_MAGIC,    SYSFS_MAGIC,   CGROUP_SUPER_MAGIC,
                                        CGROUP2_SUPER_MAGIC, DEBUGFS_MAGIC, TRACEFS_MAGIC};
    // Both questions are about one folder, whatever becomes of its name meanwhile.
    ++CountersInForce().systemCalls;
    const int descriptor = ::open(folder.c_str(), O_PATH | O_CLOEXEC);
    if (descriptor < 0) {
        return std::nullopt;
    }
    struct ::stat status {};
    struct ::statfs fileSystem {};
    const bool answered = ::fstat(descriptor, &status) == 0 && ::fstatfs(descriptor, &fileSystem) == 0;
    ::close(descriptor);
    if (!answered) {
        return std::nullopt;
    }
    const auto type = FaultsInForce().fileSystem.value_or(static_cast<std::uint32_t>(fileSystem.f_type));
    return FileSystem{status.st_dev,
                      !IsRemoteFileSystem(type) &&
                          std::find(std::begin(MadeUp), std::end(MadeUp), type) == std::end(MadeUp)};
}

bool Status(const std::string& path, struct ::stat& status) {
    ++CountersInForce().systemCalls;
    return ::stat(path.c_str(), &status) == 0;
}

} // namespace

const testing::NotificationFaults& FaultsInForce() { return Faults(); }

void testing::SetNotificationFaults(const NotificationFaults& faults) { Faults() = faults; }

void testing::RestartNotification() { ChangeNotification::Get().Restart(); }

ChangeNotification& ChangeNotification::Get() {
    static auto& notification = *new ChangeNotification;
    return notification;
}

/// Leaves nothing in a place that is not filled in the end, also if memory runs out on the way.
class ChangeNotification::EmptyUnlessOpen {
  public:
    EmptyUnlessOpen(Folder& folder, const bool& open) : m_folder(folder), m_open(open) {}
    ~EmptyUnlessOpen() {
        if (!m_open) {
            m_folder = {};
        }
    }
    EmptyUnlessOpen(const EmptyUnlessOpen&) = delete;
    EmptyUnlessOpen& operator=(const EmptyUnlessOpen&) = delete;

  private:
    Folder& m_folder;
    const bool& m_open;
};

host::ChangeHandle ChangeNotification::Open(const ustring& name) {
    ResolvedPath resolved = ResolveName(name);
    if (resolved.fault != PathFault::None) {
        return host::InvalidChangeHandle;
    }
    // Old events must not reach a new owner of a watch, nor old names be taken for true.
    Take(0);
    // The place stays among the free ones until it is filled.
    const std::uint32_t number = FreePlace();
    const EmptyUnlessOpen empty(m_folders[number], m_states[number].open);
    m_folders[number].path = std::move(resolved.path);
    if (!Attach(number)) {
        return host::InvalidChangeHandle;
    }
    m_free.pop_back();
    State& state = m_states[number];
    state.open = true;
    state.generation = state.generation % LastGeneration + 1;
    ++CountersInForce().handles;
    return host::ChangeHandle{state.generation} << HalfBits | number;
}

bool ChangeNotification::Rearm(host::ChangeHandle handle) {
    State* const state = Find(handle);
    if (state == nullptr) {
        return false;
    }
    state->signalled = false;
    m_mayHaveNews = true; // it may turn out to be dead
    // The mount table tells of mounts; where there is none to be read, this is the last occasion to notice.
    state->dead = state->dead || !LeadsToItsFolder(NumberOf(*state));
    return true;
}

bool ChangeNotification::Close(host::ChangeHandle handle) {
    State* const state = Find(handle);
    if (state == nullptr) {
        return false;
    }
    state->open = false;
    const std::uint32_t number = NumberOf(*state);
    m_folders[number] = {};
    m_free.push_back(number);
    --CountersInForce().handles;
    TakeEchoes();
    return true;
}

std::uint32_t ChangeNotification::Wait(host::ChangeHandle handle, std::uint32_t milliseconds) {
    const State* const state = Find(handle);
    if (state == nullptr) {
        return host::WaitFailed;
    }
    if (!m_checking || milliseconds > 0) {
        Take(0);
    }
    const std::uint32_t number = NumberOf(*state);
    std::uint32_t answer = Answer(number);
    if (answer == host::WaitTimeout && milliseconds > 0) {
        answer = AnswerWithin(number, milliseconds);
    }
    TakeEchoes();
    return answer;
}

/// Goes on waiting when what happened was news for others.
std::uint32_t ChangeNotification::AnswerWithin(std::uint32_t number, std::uint32_t milliseconds) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    std::uint32_t answer = host::WaitTimeout;
    for (auto left = end - Clock::now(); answer == host::WaitTimeout && left > Clock::duration::zero();
         left = end - Clock::now()) {
        const std::int64_t count = std::chrono::ceil<std::chrono::milliseconds>(left).count();
        Take(static_cast<int>(std::min<std::int64_t>(count, std::numeric_limits<int>::max())));
        answer = Answer(number);
    }
    return answer;
}

void ChangeNotification::BeginChecks() {
    Take(0);
    m_checking = true;
}

bool ChangeNotification::HasNews() {
    const auto speaks = [](const State& s) { return s.open && (s.signalled || s.dead || s.blind); };
    m_mayHaveNews = m_mayHaveNews && std::any_of(m_states.begin(), m_states.end(), speaks);
    return m_mayHaveNews || !m_checking;
}

ChangeNotification::State* ChangeNotification::Find(host::ChangeHandle handle) {
    const auto number = static_cast<std::uint32_t>(handle);
    if (number >= m_states.size()) {
        return nullptr;
    }
    State& state = m_states[number];
    return state.open && state.generation == handle >> HalfBits ? &state : nullptr;
}

std::uint32_t ChangeNotification::NumberOf(const State& state) const {
    return static_cast<std::uint32_t>(&state - m_states.data());
}

std::uint32_t ChangeNotification::FreePlace() {
    if (m_free.empty()) {
        const std::size_t number = m_states.size();
        m_folders.resize(number + 1);
        m_free.reserve(m_folders.capacity());
        m_states.resize(number + 1);
        m_free.push_back(static_cast<std::uint32_t>(number));
    }
    return m_free.back();
}

/// Takes the watches of a handle's name in place of those that it has.
bool ChangeNotification::Attach(std::uint32_t number) {
    Folder& folder = m_folders[number];
    struct ::stat status {};
    // In the second round nothing of what is known is relied on: a name may have changed where nobody told
    // us.
    for (const bool trusting : {true, false}) {
        if (!trusting) {
            m_names.LoseAll();
        }
        std::optional<WatchedNames::Attached> attached;
        if (MayTell(folder.path)) {
            attached = m_names.Attach(folder.path, number);
            if (!attached && !folder.anchor.IsEmpty()) {
                // The last watch to be had may be this name's own, on a folder that was moved away.
                folder.anchor = {};
                attached = m_names.Attach(folder.path, number);
            }
        }
        // The new watches come before the old ones go, so that those in both stay.
        folder.anchor = attached ? std::move(attached->anchor) : WatchedNames::Anchor();
        if (!attached) {
            break;
        }
        if (attached->look) {
            status = *attached->look;
        } else if (!Status(folder.path, status)) {
            break;
        }
        if (folder.anchor.IsFolder(status)) {
            if (!TellsItsChanges(status.st_dev, folder.path)) {
                break;
            }
            m_mayHaveNews = true;
            m_states[number] = {.generation = m_states[number].generation,
                                .open = m_states[number].open,
                                .signalled = !IsAsListed(status),
                                .dead = false,
                                .blind = folder.anchor.IsBlind()};
            return true;
        }
    }
    folder.anchor = {};
    return false;
}

/// Is the folder worth a watch? The question is left for behind it, where the device is known, until a file
/// system has been met that tells nothing: there a watch may cost more than a question.
bool ChangeNotification::MayTell(const std::string& folder) {
    if (!m_metSilent) {
        return true;
    }
    const std::optional<FileSystem> found = FileSystemOf(folder);
    return found && found->tells;
}

/// Asks once for each file system that does; only what was surely said of this device counts for the next.
bool ChangeNotification::TellsItsChanges(::dev_t device, const std::string& folder) {
    // Without a mount table nothing says when a device becomes another's.
    const bool lasts = m_names.SeesMounts() && !FaultsInForce().fileSystem;
    if (lasts && m_telling.contains(device)) {
        return true;
    }
    const std::optional<FileSystem> found = FileSystemOf(folder);
    if (lasts && found && found->device == device && found->tells) {
        m_telling.insert(device);
    }
    m_metSilent = m_metSilent || (lasts && found && !found->tells);
    return found && found->tells;
}

bool ChangeNotification::LeadsToItsFolder(std::uint32_t number) const {
    struct ::stat status {};
    return Status(m_folders[number].path, status) && m_folders[number].anchor.IsFolder(status);
}

std::uint32_t ChangeNotification::Answer(std::uint32_t number) {
    State& state = m_states[number];
    // A name that changed unseen may have left false places behind, which others lead through too.
    if (state.blind && !state.dead && !LeadsToItsFolder(number)) {
        m_names.LoseAll();
    }
    if (state.dead) {
        if (!Attach(number)) {
            return host::WaitFailed;
        }
        // Whatever was listed there in the meantime: nobody was told what the name leads to now.
        state.signalled = true;
    }
    return state.signalled ? host::WaitObject0 : host::WaitTimeout;
}

/// Keeps the queue from filling with what given-back watches leave in it. Not from within a walk over places.
void ChangeNotification::TakeEchoes() {
    if (m_names.NeedsTaking()) {
        Take(0);
    }
}

/// Takes the events in. Where something was mounted, names lead elsewhere without one.
void ChangeNotification::Take(int milliseconds) {
    if (!m_names.Take(milliseconds)) {
        return;
    }
    ForgetFileSystems();
    for (std::uint32_t number = 0; number < m_states.size(); ++number) {
        if (m_states[number].open && !m_states[number].dead && !LeadsToItsFolder(number)) {
            m_names.LoseAll();
            return;
        }
    }
}

bool WriteProbeFile(const ustring& name, std::string_view text) {
    const ResolvedPath resolved = ResolveName(name);
    if (resolved.fault != PathFault::None) {
        return false;
    }
    // The name can be guessed, and others may write to the folder: a file or link that stands there is
    // theirs.
    const int file =
        ::open(resolved.path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0) {
        return false;
    }
    // A full disk takes no text; that the file came and went is what the probe is about.
    [[maybe_unused]] const ::ssize_t written = ::write(file, text.data(), text.size());
    ::close(file);
    ::unlink(resolved.path.c_str());
    return true;
}

} // namespace linux_host
