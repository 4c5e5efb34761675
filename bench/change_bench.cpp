#include <array>
#include <cstdint>
#include <linux/magic.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ovsel/ovsel.hpp>

#include "bench/groups.hpp"
#include "bench/workload.hpp"
#include "linux_host/linux_host.hpp"

namespace bench {

namespace {

constexpr std::size_t folderCount = 5'000;
constexpr std::size_t filesPerFolder = 100;
constexpr std::size_t pollCount = 1'000;
constexpr char newFile[] = "/newcomer.sv";

bool IsFound(const ovPath& path, const ustring& name) {
    ovDir dir;
    ustring fullName;
    return ovFindFirstFileInAll(path, name, nullptr, &dir, fullName) != 0;
}

std::vector<std::string> NumberedNames(std::size_t count) {
    std::vector<std::string> names;
    while (names.size() < count)
        names.push_back("f" + std::to_string(names.size()) + ".sv");
    return names;
}

/// Refreshes in which nothing has changed and no folder is read again.
Turn Refresh(const ovPath& path, int count) {
    const auto listings = linux_host::GetCounters().listings;
    const double seconds = Seconds([&] {
        for (int i = 0; i < count; ++i)
            ovRefreshAllDirectories(path, ovRefreshCheck);
    });
    return {seconds, linux_host::GetCounters().listings == listings};
}

/// An inotify instance of the benchmark's own.
class Watcher {
  public:
    ~Watcher() { ::close(m_descriptor); }
    Watcher() = default;
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    void Watch(const std::string& folder) const {
        ::inotify_add_watch(m_descriptor, folder.c_str(), IN_CREATE | IN_DELETE);
    }
    bool Poll() const {
        pollfd request{m_descriptor, POLLIN, 0};
        return ::poll(&request, 1, 0) == 1;
    }
    void Read() const {
        std::array<char, 4096> events{};
        [[maybe_unused]] const ssize_t size = ::read(m_descriptor, events.data(), events.size());
    }

  private:
    const int m_descriptor = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
};

/// Each poll with a walk over the flags of folders.
Turn PollOften(const Watcher& watcher, const std::vector<std::uint8_t>& flags) {
    return Measure(0, [&] {
        std::size_t news = 0;
        for (std::size_t i = 0; i < pollCount; ++i) {
            news += watcher.Poll() ? 1U : 0U;
            for (const std::uint8_t& flag : flags)
                news += const_cast<const volatile std::uint8_t&>(flag);
        }
        return news;
    });
}

/// Another one each time, so that the processor has no side's folder in its caches.
const std::string& NextFolder(const Workload& work) {
    static std::size_t next = 0;
    return work.folders[next++ % work.folders.size()];
}

/// From the creation of a file in one of the path's folders to the answer about it.
Turn FollowNewFile(const ovPath& path, const Workload& work) {
    const std::string file = NextFolder(work) + newFile;
    const ustring name = u"newcomer";
    ::mknod(file.c_str(), S_IFREG | 0600, 0);
    Turn turn = Measure(1, [&] {
        ovRefreshAllDirectories(path, ovRefreshCheck);
        return IsFound(path, name) ? 1U : 0U;
    });
    ::unlink(file.c_str());
    ovRefreshAllDirectories(path, ovRefreshCheck);
    turn.right = turn.right && !IsFound(path, name);
    return turn;
}

/// What a program has to do that follows the same folders and keeps nothing.
/// @pre @p watcher has nothing to read
Turn FollowNewFileBare(const Watcher& watcher, const ovPath& path, const Workload& work) {
    const std::string& folder = NextFolder(work);
    const std::string file = folder + newFile;
    ::mknod(file.c_str(), S_IFREG | 0600, 0);
    const Turn turn = Measure(filesPerFolder + 1, [&]() -> std::size_t {
        if (!watcher.Poll())
            return 0;
        watcher.Read();
        return ListBare({folder});
    });
    ::unlink(file.c_str());
    ovRefreshAllDirectories(path, ovRefreshCheck);
    watcher.Read();
    return turn;
}

Turn StatEach(const std::vector<std::string>& folders) {
    return Measure(folders.size(), [&] {
        std::size_t there = 0;
        struct stat status {};
        for (const std::string& folder : folders)
            there += ::stat(folder.c_str(), &status) == 0 ? 1U : 0U;
        return there;
    });
}

void PrintNotified(Table& rows, const Workload& work) {
    constexpr int refreshes = 20;
    const ovPath path = NewPath();
    AddFolders(path, work.folderNames);
    ovRefreshAllDirectories(path, ovRefreshCheck); // handles may begin signalled
    const Watcher watcher;
    const auto limit = [&](std::size_t flags) {
        return Side{pollCount, [&watcher, flags = std::vector<std::uint8_t>(flags)] {
                        return PollOften(watcher, flags);
                    }};
    };
    const Side ours{refreshes, [&] { return Refresh(path, refreshes); }};
    rows.PrintRatio("quiet_notified", {15, 100}, ours, limit(0));
    rows.PrintRatio("quiet_and_walk", {}, ours, limit(folderCount));

    for (const std::string& folder : work.folders)
        watcher.Watch(folder);
    const auto follow = [&] {
        const Turn turn = FollowNewFile(path, work);
        watcher.Read();
        return turn;
    };
    rows.PrintRatio("new_file", {6, 15}, {1, follow},
                    {1, [&] { return FollowNewFileBare(watcher, path, work); }});
}

/// The same folders on a drive that reports no changes.
void PrintByTime(Table& rows, const Tree& tree, const Workload& work) {
    linux_host::testing::NotificationFaults network;
    network.fileSystem = NFS_SUPER_MAGIC;
    linux_host::testing::SetNotificationFaults(network);
    const ovPath path = NewPath();
    ovSetNotificationHandleWarnings(path, ovWarnCNHNever);
    ovNonNotifiedRemoteCWDRefreshPolicy(path, ovRefreshByTimeStamp);
    ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp);
    Age(tree.Path("empty"));
    ovSetCWDName(path, u"R:\\empty");
    for (ustring name : work.folderNames) {
        name[0] = u'R';
        ovAddDir(path, name, ovDirAddAtEnd);
    }
    // A path that looks at nothing would be quiet too.
    const bool isWatched = FollowNewFile(path, work).right;
    for (const std::string& folder : work.folders)
        Age(folder);
    ovRefreshAllDirectories(path, ovRefreshCheck);
    const auto refresh = [&] {
        const Turn turn = Refresh(path, 1);
        return Turn{turn.seconds, turn.right && isWatched};
    };
    rows.PrintRatio("quiet_by_time", {1.1, 1.5}, {folderCount, refresh},
                    {folderCount, [&] { return StatEach(work.folders); }});
    linux_host::testing::SetNotificationFaults({});
}

void PrintReload(Table& rows, const Tree& tree) {
    constexpr std::size_t count = 100'000;
    tree.AddFiles("reload", NumberedNames(count));
    std::size_t added = 0;
    const ovPath path = NewPath();
    const ovDir dir = ovAddDir(path, u"T:\\reload", ovDirAddAtEnd);
    const auto reload = [&] {
        const std::string name = "new" + std::to_string(added++);
        tree.AddFile("reload/" + name + ".sv");
        const double seconds = Seconds([&] { ovRefreshDirectory(dir, ovRefreshReload); });
        return Turn{seconds, IsFound(path, Wide(name)) && IsFound(path, u"f0")};
    };
    const auto load = [&] {
        const ovPath fresh = NewPath();
        const double seconds = Seconds([&] { ovAddDir(fresh, u"T:\\reload", ovDirAddAtEnd); });
        return Turn{seconds, IsFound(fresh, u"f0") && IsFound(fresh, Wide("f" + std::to_string(count - 1)))};
    };
    rows.PrintRatio("reload", {1.2, 2}, {count, reload}, {count, load});
}

} // namespace

void RunChanges(Table& rows) {
    const Tree tree;
    const Workload work(tree, "followed", {folderCount, filesPerFolder, 0, 0, 0});
    PrintNotified(rows, work);
    PrintByTime(rows, tree, work);
    PrintReload(rows, tree);
}

} // namespace bench
