// What does it cost to follow the disk? Each row is a ratio to what the same knowledge costs at the very
// least, taken turn by turn in one run:
//
//   quiet_notified   a refresh of 20,000 notified folders in which nothing changed
//       limit: one poll of one descriptor and a walk over 20,000 flags
//   quiet_by_time    a refresh of 20,000 folders that are checked by their time
//       limit: one stat for each
//   reload_N         a folder of N files, one of them new, is read again
//       limit: its first load
//
// Beneath the table: how many of a thousand files, each created right after the folder was last looked at,
// are missed by comparing whole seconds, and by the library.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <linux/magic.h>
#include <memory>
#include <poll.h>
#include <string>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <host_interfaces/text.hpp>
#include <linux_hooks/linux_hooks.hpp>
#include <linux_host/linux_host.hpp>
#include <ovsel/ovsel.hpp>

#include "rows.hpp"

namespace {

using bench::PrintRow;
using bench::Seconds;

constexpr int folderCount = 20'000;

/// A tree in memory, so that the disk's own speed plays no part; gone with this object.
class Tree {
  public:
    Tree() {
        std::string pattern = "/dev/shm/ovsel-bench-XXXXXX";
        m_root = ::mkdtemp(pattern.data());
        linux_host::DriveMap::Add(u"T:", m_root, linux_host::DriveMap::Kind::Fixed);
        linux_host::DriveMap::Add(u"R:", m_root, linux_host::DriveMap::Kind::Remote);
    }
    ~Tree() { std::filesystem::remove_all(m_root); }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    std::string Path(const std::string& name) const { return m_root + "/" + name; }
    void Folder(const std::string& name) const { ::mkdir(Path(name).c_str(), 0700); }
    /// Young folders are distrusted, and that is not what a quiet refresh is about.
    void Age(const std::string& name) const {
        const timespec times[2] = {{1'000'000, 0}, {1'000'000, 0}};
        ::utimensat(AT_FDCWD, Path(name).c_str(), times, 0);
    }
    void File(const std::string& name) const { ::mknod(Path(name).c_str(), S_IFREG | 0600, 0); }

  private:
    std::string m_root;
};

ustring Wide(const std::string& text) { return fl::i18n::to_ustring(text.c_str()); }

ovPath NewPath() {
    return ovCreatePathWithPreFrozen(0, "bench", static_cast<const char16_t*>(nullptr), ovCaseSensitive,
                                     true);
}

void QuietRefreshes(const char* job, const char* root, const std::function<double()>& limit) {
    const ovPath path = NewPath();
    ovSetNotificationHandleWarnings(path, ovWarnCNHNever);
    ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp);
    ovSetCWDName(path, Wide(root + std::string("0")));
    for (int i = 0; i < folderCount; ++i)
        ovAddDir(path, Wide(root + std::to_string(i)), ovDirAddAtEnd);
    ovRefreshAllDirectories(path, ovRefreshCheck);
    linux_host::ResetCounters();
    const auto refresh = [&] { ovRefreshAllDirectories(path, ovRefreshCheck); };
    refresh();
    const auto counters = linux_host::GetCounters();
    PrintRow(
        job, [&] { return Seconds(refresh); }, limit);
    std::printf("|   %llu system calls for notification, %llu folders read again by one quiet refresh\n",
                static_cast<unsigned long long>(counters.systemCalls),
                static_cast<unsigned long long>(counters.listings));
}

double PollAndWalk() {
    static const int descriptor = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    static std::vector<std::uint8_t> flags(folderCount);
    return Seconds([&] {
        pollfd request{descriptor, POLLIN, 0};
        volatile int ready = ::poll(&request, 1, 0);
        for (const std::uint8_t& flag : flags)
            ready = ready + const_cast<const volatile std::uint8_t&>(flag);
    });
}

double StatEach(const Tree& tree) {
    std::vector<std::string> paths;
    paths.reserve(folderCount);
    for (int i = 0; i < folderCount; ++i)
        paths.push_back(tree.Path(std::to_string(i)));
    return Seconds([&] {
        struct stat status {};
        for (const std::string& path : paths)
            ::stat(path.c_str(), &status);
    });
}

void Reload(const Tree& tree, int count) {
    const std::string folder = "reload" + std::to_string(count);
    tree.Folder(folder);
    for (int i = 0; i < count; ++i)
        tree.File(folder + "/f" + std::to_string(i) + ".sv");
    const ustring name = Wide("T:\\" + folder);
    int added = 0;
    const ovPath path = NewPath();
    const ovDir dir = ovAddDir(path, name, ovDirAddAtEnd);
    const auto reload = [&] {
        tree.File(folder + "/new" + std::to_string(added++) + ".sv");
        return Seconds([&] { ovRefreshDirectory(dir, ovRefreshReload); });
    };
    const auto load = [&] {
        const ovPath fresh = ovCreatePathWithPreFrozen(0, "fresh", static_cast<const char16_t*>(nullptr),
                                                       ovCaseSensitive, true);
        return Seconds([&] { ovAddDir(fresh, name, ovDirAddAtEnd); });
    };
    PrintRow(("reload_" + std::to_string(count)).c_str(), reload, load);
}

/// A folder that is looked at, and a file that appears right behind the look, a thousand times.
template <class Look>
int Missed(const Tree& tree, const std::string& folder, Look isSeen) {
    int missed = 0;
    for (int i = 0; i < 1000; ++i) {
        const std::string name = "f" + std::to_string(i);
        tree.File(folder + "/" + name + ".sv");
        missed += isSeen(name) ? 0 : 1;
    }
    return missed;
}

void CountMissed(const Tree& tree) {
    tree.Folder("naive");
    time_t last = 0;
    const int naive = Missed(tree, "naive", [&](const std::string&) {
        struct stat status {};
        ::stat(tree.Path("naive").c_str(), &status);
        return std::exchange(last, status.st_mtime) != status.st_mtime;
    });
    const auto ours = [&](const std::string& folder, const char* root) {
        tree.Folder(folder);
        const ovPath path = NewPath();
        ovSetNotificationHandleWarnings(path, ovWarnCNHNever);
        ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp);
        ovAddDir(path, Wide(root + folder), ovDirAddAtEnd);
        return Missed(tree, folder, [&](const std::string& name) {
            ovRefreshAllDirectories(path, ovRefreshCheck);
            ustring file;
            return ovFindFirstFileInAll(path, Wide(name), nullptr, nullptr, file) != 0;
        });
    };
    const int notified = ours("notified", "T:\\");
    linux_host::testing::NotificationFaults network;
    network.fileSystem = NFS_SUPER_MAGIC;
    linux_host::testing::SetNotificationFaults(network);
    const int byTime = ours("timed", "R:\\");
    linux_host::testing::SetNotificationFaults({});
    std::printf(
        "\nmissed of 1000 files: %d by comparing whole seconds, %d by notification, %d by time stamps\n",
        naive, notified, byTime);
}

} // namespace

int main() {
    linux_hooks::InstallDefaultHooks();
    const Tree tree;
    for (int i = 0; i < folderCount; ++i) {
        tree.Folder(std::to_string(i));
        tree.Age(std::to_string(i));
    }
    bench::PrintHead();
    QuietRefreshes("quiet_notified", "T:\\", &PollAndWalk);
    linux_host::testing::NotificationFaults network;
    network.fileSystem = NFS_SUPER_MAGIC;
    linux_host::testing::SetNotificationFaults(network);
    QuietRefreshes("quiet_by_time", "R:\\", [&] { return StatEach(tree); });
    linux_host::testing::SetNotificationFaults({});
    for (const int count : {1'000, 10'000, 100'000})
        Reload(tree, count);
    CountMissed(tree);
}
