// Change handles on the real kernel: what signals them, what kills them, what they cost.

#include <linux/magic.h>
#include <sched.h>
#include <sys/mount.h>

#include "host_test.hpp"

namespace {

using namespace test;
using host::ChangeHandle;

host::IPlatform& Platform() { return host::Platform(); }
linux_host::Counters Counters() { return linux_host::GetCounters(); }

/// One handle, closed with this object. A new one may begin signalled, so it is armed at once unless told not
/// to.
class Watch {
  public:
    explicit Watch(const ustring& name, bool armed = true)
        : m_handle(Platform().FindFirstChangeNotification(name, false, host::ChangeFileName)) {
        if (armed)
            Platform().FindNextChangeNotification(m_handle);
    }
    ~Watch() { Platform().FindCloseChangeNotification(m_handle); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    bool Refused() const { return m_handle == host::InvalidChangeHandle; }

    std::string State(std::uint32_t milliseconds = 0) const {
        const std::uint32_t answer = Platform().WaitForSingleObject(m_handle, milliseconds);
        return answer == host::WaitObject0 ? "signalled" : answer == host::WaitTimeout ? "quiet" : "dead";
    }
    /// The states that so many refreshes see.
    std::string Polls(int count) const {
        std::string states = Poll();
        for (int i = 1; i < count; ++i)
            states += " " + Poll();
        return states;
    }
    /// The state as a refresh sees it, which arms the handle again.
    std::string Poll(std::uint32_t milliseconds = 0) const {
        const std::string state = State(milliseconds);
        if (state == "signalled" && State() != state)
            return "signalled only once";
        Platform().FindNextChangeNotification(m_handle);
        return state;
    }

  private:
    ChangeHandle m_handle;
};

/// Tests leave nothing behind: no watch, no handle, no fault, no descriptor but those of the first use.
class ChangeHandles : public testing::Test {
  protected:
    ChangeHandles() {
        linux_host::testing::RestartNotification();
        const std::ptrdiff_t inherited = Descriptors(true);
        Watch warming(u"C:\\");
        EXPECT_EQ(Descriptors(true), inherited);
        m_descriptors = Descriptors();
        linux_host::ResetCounters();
    }
    ~ChangeHandles() override {
        linux_host::testing::SetNotificationFaults({});
        EXPECT_EQ(Counters().watches, 0U);
        EXPECT_EQ(Counters().handles, 0U);
        EXPECT_EQ(Descriptors(), m_descriptors);
    }

  private:
    std::ptrdiff_t m_descriptors;
};

/// What comes and goes is seen to by the random operations on a real tree.
TEST_F(ChangeHandles, AreSignalledByWhatHappensInTheFolderAndByNothingElse) {
    TempTree tree{"p/d/file", "p/d/sub/file", "p/sibling/file", "p/file", "q/"};
    Watch watch(NameOf(tree, "p/d"));
    const std::tuple<const char*, std::function<void()>, std::string> table[] = {
        {"nothing", [] {}, "quiet"},
        {"rewritten in place", [&] { tree.Write("p/d/file", "text"); }, "signalled"},
        {"time set back", [&] { tree.SetTime("p/d/file", 1); }, "signalled"},
        {"moved out", [&] { tree.Rename("p/d/file", "q/file"); }, "signalled"},
        {"moved in", [&] { tree.Rename("q/file", "p/d/file"); }, "signalled"},
        {"read", [&] { linux_host::ListDirectory(NameOf(tree, "p/d")); }, "quiet"},
        {"file of a sub-folder", [&] { tree.Write("p/d/sub/file", "text"); }, "quiet"},
        {"file beside it", [&] { tree.Write("p/file", "text"); }, "quiet"},
        {"folder beside it", [&] { tree.Rename("p/sibling", "p/d2"); }, "quiet"},
    };
    for (const auto& [label, change, state] : table) {
        change();
        EXPECT_EQ(watch.Polls(2), state + " quiet") << label;
    }
}

TEST_F(ChangeHandles, DieWithTheirNameAndLiveAgainWithIt) {
    using Act = std::function<void(TempTree&)>;
    const auto rename = [](const char* from, const char* to) {
        return [=](TempTree& tree) { tree.Rename(from, to); };
    };
    const auto make = [](TempTree& tree) { tree.Add({"a/b/d/"}); };
    const auto point = [](const char* target) {
        return [=](TempTree& tree) {
            tree.Remove("link");
            std::filesystem::create_symlink(target, tree.Path("link"));
        };
    };
    const std::tuple<std::string, Act, Act> table[] = {
        {"deleted with its parents", [](TempTree& tree) { tree.Remove("a"); }, make},
        {"moved away, another in its place", rename("a/b/d", "d"), make},
        {"parent of the parent renamed", rename("a", "c"), rename("c", "a")},
        {"link turned", point("none"), point("other")},
        {"link's folder moved", rename("a", "other/a"), point("other/a")},
    };
    for (const auto& [label, lose, restore] : table)
        for (const bool askedMeanwhile : {true, false}) {
            TempTree tree{"a/b/d/", "other/b/d/", "link -> a"};
            const Watch named(NameOf(tree, "a/b/d")), linked(NameOf(tree, "link/b/d"));
            const bool byLink = label.starts_with("link");
            const Watch& watch = byLink ? linked : named;
            lose(tree);
            if (askedMeanwhile)
                EXPECT_EQ(watch.Polls(2), "dead dead") << label;
            restore(tree);
            EXPECT_EQ(watch.Polls(2), "signalled quiet") << label;
            tree.Write((byLink ? "link" : "a") + std::string("/b/d/new"), "");
            EXPECT_EQ(watch.Polls(2), "signalled quiet") << label;
            byLink ? tree.Remove("link") : tree.Rename("a", "last");
            EXPECT_EQ(watch.Poll(), "dead") << label;
        }
}

TEST_F(ChangeHandles, OfOneFolderShareItsWatchUntilTheLastIsClosed) {
    constexpr std::size_t owners = 10;
    TempTree tree{"d/", "link -> d"};
    std::vector<std::unique_ptr<Watch>> watches;
    for (std::size_t i = 0; i < owners; ++i)
        watches.push_back(std::make_unique<Watch>(NameOf(tree, i % 2 == 0 ? "d" : "link")));
    const std::uint64_t held = Counters().watches;
    for (std::size_t closed = 0; closed < owners; ++closed) {
        tree.Write("d/file" + std::to_string(closed), "");
        for (const auto& watch : watches)
            EXPECT_TRUE(watch == nullptr || watch->Poll() == "signalled");
        EXPECT_EQ(Counters().watches, held);
        watches[closed * 3 % owners].reset(); // in an order of their own
    }
    EXPECT_EQ(Counters().watches, 0U);
}

TEST_F(ChangeHandles, AreRefusedWhereNothingCanBeToldAndNothingIsKept) {
    TempTree tree{"d/file", "round -> round", "lost -> none"};
    for (const ustring& name :
         {NameOf(tree, "none"), NameOf(tree, "d/file"), NameOf(tree, "round"), NameOf(tree, "lost"),
          ustring(u"C:\\proc"), ustring(u"C:\\proc\\self\\fd"), ustring(u"C:\\sys"), ustring(u"Q:\\"),
          ustring(), NameOf(tree) + ustring(u"\\d\0", 3)})
        EXPECT_TRUE(Watch(name).Refused()) << testing::PrintToString(name);
    EXPECT_EQ(Platform().FindFirstChangeNotification(NameOf(tree), true, 0), host::InvalidChangeHandle);
    for (const std::uint32_t type : {0U + NFS_SUPER_MAGIC, 0U + FUSE_SUPER_MAGIC, SMB2_SUPER_MAGIC}) {
        linux_host::testing::SetNotificationFaults({.fileSystem = type});
        EXPECT_TRUE(Watch(NameOf(tree, "d")).Refused()) << type;
    }
    EXPECT_EQ(Counters().watches, 0U);
}

TEST_F(ChangeHandles, TakeNothingWhenTheLimitIsReachedMidway) {
    TempTree tree{"p0/d/", "p1/d/", "p2/d/", "p3/d/"};
    Watch standing(NameOf(tree));
    const std::uint64_t needed = Counters().watches;
    linux_host::testing::SetNotificationFaults({.mostWatches = needed + 5});
    std::vector<std::unique_ptr<Watch>> watches;
    for (const std::size_t granted : {1U, 2U, 2U, 2U}) { // two watches each, or none
        watches.push_back(std::make_unique<Watch>(NameOf(tree, "p" + std::to_string(watches.size()) + "/d")));
        EXPECT_EQ(Counters().watches, needed + 2 * granted);
    }
    tree.Add({"new"});
    EXPECT_EQ(standing.Polls(2), "signalled quiet") << "the others live on";
}

TEST_F(ChangeHandles, FollowTheirNamesWhereNoWatchIsToSpare) {
    TempTree tree{"gone/", "moved/"};
    const Watch gone(NameOf(tree, "gone")), alsoGone(NameOf(tree, "gone")), moved(NameOf(tree, "moved"));
    linux_host::testing::SetNotificationFaults({.mostWatches = Counters().watches});
    tree.Remove("gone");
    std::filesystem::rename(tree.Path("moved"), tree.Path("elsewhere"));
    tree.Add({"gone/", "moved/"});
    EXPECT_EQ(gone.Polls(2) + ", " + alsoGone.Polls(2), "signalled quiet, signalled quiet");
    EXPECT_EQ(moved.Polls(2), "signalled quiet");
}

TEST_F(ChangeHandles, AreAllSignalledOnceWhenEventsAreLost) {
    long most = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> most;
    TempTree tree = TempTree::InMemory();
    tree.Add({"busy/", "still/", "p/doomed/"});
    Watch busy(NameOf(tree, "busy")), still(NameOf(tree, "still")), doomed(NameOf(tree, "p/doomed"));
    for (long i = 0; i <= most / 2; ++i) {
        std::filesystem::create_directory(tree.Path("busy/d"));
        std::filesystem::remove(tree.Path("busy/d"));
    }
    tree.Remove("p");
    const auto poll = [&] { return busy.Poll() + " " + still.Poll() + " " + doomed.Poll(); };
    EXPECT_EQ(poll(), "signalled signalled dead");
    EXPECT_EQ(poll(), "quiet quiet dead");
    EXPECT_EQ(Counters().overflows, 1U);
    tree.Add({"still/file", "p/doomed/"});
    EXPECT_EQ(poll(), "quiet signalled signalled");
}

TEST_F(ChangeHandles, BeginSignalledUnlessTheFolderIsSurelyAsItWasListed) {
    TempTree tree{"d/file"};
    const ustring name = NameOf(tree, "d");
    const auto begin = [&] { return Watch(name, false).State(); };
    /// Until a further change would have a time of its own; not long, unless the disk keeps whole seconds.
    const auto age = [&] {
        struct ::stat status {};
        ::stat(tree.Path("d").c_str(), &status);
        const long grain = status.st_ctim.tv_nsec == 0 ? 2'100'000'000 : 20'000'000;
        for (::timespec now{};
             (now.tv_sec - status.st_ctim.tv_sec) * 1'000'000'000 + now.tv_nsec - status.st_ctim.tv_nsec <
             grain;)
            ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
    };
    EXPECT_EQ(begin(), "signalled") << "never listed";
    age();
    linux_host::ListDirectory(name);
    EXPECT_EQ(begin(), "quiet");
    linux_host::ListDirectory(name);
    tree.Add({"d/new"});
    EXPECT_EQ(begin(), "signalled") << "changed in between";
    // Just before is within the grain of times; a machine that is busy may need a few tries to be that quick.
    std::string begun;
    for (int i = 0; i < 50 && begun != "signalled"; ++i) {
        tree.Write("d/just" + std::to_string(i), "");
        linux_host::ListDirectory(name);
        begun = begin();
    }
    EXPECT_EQ(begun, "signalled") << "changed just before";
    age();
    linux_host::ListDirectory(name);
    tree.Rename("d", "e");
    tree.Add({"d/"});
    EXPECT_EQ(begin(), "signalled") << "another folder";
}

TEST_F(ChangeHandles, AreCheckedAtTheCostOfOneSystemCallAndLeaveNothingInTheQueue) {
    TempTree tree = TempTree::InMemory();
    std::vector<std::unique_ptr<Watch>> watches;
    while (watches.size() < 600) {
        const std::string folder = "d" + std::to_string(watches.size());
        std::filesystem::create_directory(tree.Path(folder));
        watches.push_back(std::make_unique<Watch>(NameOf(tree, folder)));
    }
    Platform().BeginChangeChecks();
    Platform().EndChangeChecks();
    linux_host::ResetCounters();
    Platform().BeginChangeChecks();
    tree.Write("d7/late", "");
    EXPECT_EQ(watches[7]->State(), "quiet") << "news since the beginning wait for the next time";
    Platform().EndChangeChecks();
    EXPECT_EQ(Counters().systemCalls, 1U);
    EXPECT_EQ(watches[7]->Poll(), "signalled");
    linux_host::ResetCounters();
    watches.clear();
    EXPECT_GT(Counters().events, 500U) << "what closed watches leave in the queue must not fill it";
}

TEST_F(ChangeHandles, AreToldApartFromClosedOnesAndFromNumbersThatNeverWereOne) {
    TempTree tree;
    const ChangeHandle first = Platform().FindFirstChangeNotification(NameOf(tree), false, 0);
    EXPECT_TRUE(Platform().FindCloseChangeNotification(first));
    const ChangeHandle second = Platform().FindFirstChangeNotification(NameOf(tree), false, 0);
    for (const ChangeHandle handle : {first, second + 1, ChangeHandle{0}, host::InvalidChangeHandle}) {
        EXPECT_EQ(Platform().WaitForSingleObject(handle, 0), host::WaitFailed);
        EXPECT_FALSE(Platform().FindNextChangeNotification(handle));
        EXPECT_FALSE(Platform().FindCloseChangeNotification(handle));
    }
    EXPECT_TRUE(Platform().FindCloseChangeNotification(second));
}

TEST_F(ChangeHandles, HearOfTheProbeWhichTouchesNothingThatWasThere) {
    TempTree tree{"d/", "kept"};
    Watch watch(NameOf(tree, "d"));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(watch.Poll(20), "quiet") << "time is up";
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(20));
    EXPECT_TRUE(Platform().WriteProbeFile(NameOf(tree, "d/probe"), "text"));
    EXPECT_EQ(watch.Poll(1000), "signalled");
    EXPECT_EQ(watch.Poll(), "quiet") << "consumed whole";
    EXPECT_TRUE(std::filesystem::is_empty(tree.Path("d")));

    tree.Add({"d/link -> ../kept", "d/lost -> ../none", "d/file"});
    for (const char* name : {"d/link", "d/lost", "d/file", "none/probe"})
        EXPECT_FALSE(Platform().WriteProbeFile(NameOf(tree, name), "text")) << name;
    EXPECT_TRUE(std::filesystem::is_symlink(tree.Path("d/link")) &&
                std::filesystem::exists(tree.Path("d/file")));
    EXPECT_TRUE(std::filesystem::is_empty(tree.Path("kept")) && !std::filesystem::exists(tree.Path("none")));
}

TEST_F(ChangeHandles, AskForTheirNameBeneathAFolderThatMayNotBeRead) {
    TempTree tree{"shut/a/d/", "shut/b/d/", "shut/link -> a", "unlisted/"};
    tree.Permit("", 0755);
    tree.Permit("unlisted", 0311);
    for (const char* path : {"shut", "shut/a", "shut/b", "shut/a/d", "shut/b/d"})
        EXPECT_TRUE(::geteuid() != 0 || ::chown(tree.Path(path).c_str(), Nobody, Nobody) == 0);
    tree.Permit("shut", 0300);
    const int answer = AskUnprivileged([&] {
        linux_host::testing::RestartNotification();
        const Watch watch(NameOf(tree, "shut/link/d"));
        const auto sees = [&](const char* states) { return watch.Polls(2) == states; };
        const bool begins = watch.Poll() == "quiet" && Watch(NameOf(tree, "unlisted")).Refused();
        tree.Remove("shut/link");
        tree.Add({"shut/link -> b"});
        const bool turned = sees("signalled quiet");
        tree.Write("shut/b/d/file", "");
        const bool written = sees("signalled quiet");
        tree.Rename("shut/b", "shut/c");
        const bool gone = sees("dead dead");
        tree.Rename("shut/c", "shut/b");
        return begins && turned && written && gone && sees("signalled quiet") ? 0 : 1;
    });
    if (answer == CannotPrepare)
        GTEST_SKIP() << "cannot become another user";
    EXPECT_EQ(answer, 0);
}

TEST_F(ChangeHandles, NoticeMountsOverTheirFolderAtOnceOrWithoutAMountTableWhenArmed) {
    TempTree tree{"p/d/", "elsewhere/"};
    const auto mount = [&](const char* path) {
        return ::mount("tmpfs", tree.Path(path).c_str(), "tmpfs", 0, nullptr) == 0;
    };
    const auto unmount = [&](const char* path) { return ::umount(tree.Path(path).c_str()) == 0; };
    // Mounts of its own, unseen by others.
    const auto separate = [] {
        return ::unshare(CLONE_NEWNS) == 0 && ::mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    };
    for (const bool table : {true, false}) {
        const int answer = AskInChild(separate, [&] {
            linux_host::testing::RestartNotification();
            bool right = table || ::umount2("/proc", MNT_DETACH) == 0;
            const Watch watch(NameOf(tree, "p/d")), other(NameOf(tree, "p/d"));
            right = right && mount("elsewhere") && watch.Poll() == "quiet";
            right =
                right && mount("p/d") && watch.Polls(2) == (table ? "signalled quiet" : "quiet signalled");
            right = right && other.Poll() == "signalled";
            tree.Write("p/d/file", "");
            right = right && watch.Polls(2) == "signalled quiet";
            right = right && unmount("p/d") && watch.Polls(2) == "signalled quiet";
            right = right && mount("p") && watch.Polls(2) == (table ? "dead dead" : "quiet dead");
            right = right && unmount("p") && watch.Polls(2) == "signalled quiet";
            tree.Write("p/d/file", "");
            return right && watch.Polls(2) == "signalled quiet" ? 0 : 1;
        });
        if (answer == CannotPrepare)
            GTEST_SKIP() << "may not mount";
        EXPECT_EQ(answer, 0) << (table ? "with" : "without") << " a mount table";
    }
}

} // namespace
