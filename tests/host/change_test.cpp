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
    /// The state as a refresh sees it, which arms the handle again.
    std::string Poll(std::uint32_t milliseconds = 0) const {
        const std::string state = State(milliseconds);
        if (state == "signalled" && State() != state)
            return "signalled only once";
        Platform().FindNextChangeNotification(m_handle);
        return state;
    }
    /// The states that two refreshes see.
    std::string Polls() const {
        const std::string first = Poll();
        return first + " " + Poll();
    }

  private:
    ChangeHandle m_handle;
};

const std::string told = "signalled quiet", untold = "quiet quiet", lost = "dead dead";

/// Changes a tree: `-a` goes, `a > b` is renamed, all else is made, or written anew.
void Change(TempTree& tree, const std::string& act) {
    if (const std::size_t to = act.find(" > "); to != act.npos)
        tree.Rename(act.substr(0, to), act.substr(to + 3));
    else if (act.starts_with('-'))
        tree.Remove(act.substr(1));
    else if (!act.empty())
        tree.Add({act});
}

/// Acts, each with the states that two refreshes see then, or none if nobody asks.
void Follow(const Watch& watch, TempTree& tree,
            const std::vector<std::pair<std::string, std::string>>& story) {
    for (const auto& [act, states] : story) {
        Change(tree, act);
        if (!states.empty())
            EXPECT_EQ(watch.Polls(), states) << act;
    }
}

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
    const Watch watch(NameOf(tree, "p/d"));
    Follow(watch, tree,
           {{"", untold},
            {"p/d/file", told},
            {"p/d/file > q/file", told},
            {"q/file > p/d/file", told},
            {"p/d/sub/file", untold},
            {"p/file", untold},
            {"p/sibling > p/d2", untold}});
    tree.SetTime("p/d/file", 1);
    EXPECT_EQ(watch.Polls(), told);
    linux_host::ListDirectory(NameOf(tree, "p/d"));
    EXPECT_EQ(watch.Poll(), "quiet");
}

TEST_F(ChangeHandles, DieWithTheirNameAndLiveAgainWithIt) {
    const std::tuple<std::string, const char*, const char*> table[] = {
        {"a/b/d", "-a", "a/b/d/"},          {"a/b/d", "a/b/d > d", "a/b/d/"},
        {"a/b/d", "a > c", "c > a"},        {"link/b/d", "-link", "link -> other"},
        {"link/b/d", "a > c", "other > a"},
    };
    for (const auto& [name, lose, restore] : table)
        for (const bool askedMeanwhile : {true, false}) {
            TempTree tree{"a/b/d/", "other/b/d/", "link -> a"};
            const Watch watch(NameOf(tree, name));
            Follow(watch, tree,
                   {{lose, askedMeanwhile ? lost : ""},
                    {restore, told},
                    {name + "/new", told},
                    {name[0] == 'l' ? "-link" : "a > last", lost}});
        }
}

TEST_F(ChangeHandles, OfOneFolderShareItsWatchUntilTheLastIsClosed) {
    TempTree tree{"d/", "link -> d"};
    std::vector<std::unique_ptr<Watch>> watches;
    for (const char* name : {"d", "link", "d", "link"})
        watches.push_back(std::make_unique<Watch>(NameOf(tree, name)));
    const std::uint64_t held = Counters().watches;
    for (const std::size_t closed : {2U, 3U, 1U, 0U}) {
        tree.Write("d/file" + std::to_string(closed), "");
        for (const auto& watch : watches)
            EXPECT_TRUE(watch == nullptr || watch->Poll() == "signalled");
        EXPECT_EQ(Counters().watches, held);
        watches[closed].reset();
    }
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
}

TEST_F(ChangeHandles, TakeNothingAtTheLimitMidwayAndFollowTheirNamesThere) {
    TempTree tree{"0/d/", "1/d/", "2/d/", "3/d/"};
    const Watch standing(NameOf(tree));
    const std::uint64_t needed = Counters().watches;
    linux_host::testing::SetNotificationFaults({.mostWatches = needed + 5});
    std::vector<std::unique_ptr<Watch>> watches;
    for (const std::size_t granted : {1U, 2U, 2U, 2U}) { // two watches each, or none
        watches.push_back(std::make_unique<Watch>(NameOf(tree, std::to_string(watches.size()) + "/d")));
        EXPECT_EQ(Counters().watches, needed + 2 * granted);
    }
    linux_host::testing::SetNotificationFaults({.mostWatches = Counters().watches});
    for (const char* act : {"-0/d", "1/d > elsewhere", "0/d/", "1/d/", "new"})
        Change(tree, act);
    EXPECT_EQ(standing.Polls(), told);
    for (const std::size_t i : {0U, 1U})
        EXPECT_EQ(watches[i]->Polls(), told);
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
    /// So late that a further change would have a time of its own.
    const auto list = [&] {
        const auto start = std::chrono::steady_clock::now();
        do
            linux_host::ListDirectory(name);
        while (begin() != "quiet" && std::chrono::steady_clock::now() - start < std::chrono::seconds(5));
        linux_host::ListDirectory(name);
    };
    EXPECT_EQ(begin(), "signalled") << "never listed";
    list();
    EXPECT_EQ(begin(), "quiet");
    list();
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
    list();
    tree.Rename("d", "e");
    tree.Add({"d/"});
    EXPECT_EQ(begin(), "signalled") << "another folder";
}

TEST_F(ChangeHandles, AreCheckedAsOfTheBeginningAndLeaveNothingInTheQueue) {
    TempTree tree = TempTree::InMemory();
    std::vector<std::unique_ptr<Watch>> watches;
    for (int i = 0; i < 600; ++i) {
        std::filesystem::create_directory(tree.Path(std::to_string(i)));
        watches.push_back(std::make_unique<Watch>(NameOf(tree, std::to_string(i))));
    }
    Platform().BeginChangeChecks();
    tree.Write("7/late", "");
    EXPECT_EQ(watches[7]->State(), "quiet") << "news since the beginning wait for the next time";
    Platform().EndChangeChecks();
    EXPECT_EQ(watches[7]->Poll(), "signalled");
    linux_host::ResetCounters();
    watches.clear();
    EXPECT_GT(Counters().events, 500U) << "what closed watches leave in the queue must not fill it";
}

TEST_F(ChangeHandles, ChecksTellTheTimesOfNeighboursAsOneByOne) {
    TempTree tree{"p/a/", "p/b/", "p/file", "p/link -> a", "p/lost -> none", "far/link -> ../p/b"};
    std::vector<ustring> names{NameOf(tree), ustring(u"C:\\"), ustring(u"Q:\\"), NameOf(tree, "far/link")};
    for (const char* entry :
         {"a", "b", "none", "file", "link", "lost", ".", "..", "a/", "file/", "a/..", "b/."})
        names.push_back(NameOf(tree, std::string("p/") + entry));
    const auto times = [&] {
        std::vector<long> found;
        for (const ustring& name : names)
            for (int i = 0; i < 3; ++i) { // its folder is known by then
                Platform().BeginNeighbours();
                found.push_back(linux_host::FileTime(name));
            }
        return found;
    };
    const std::vector<long> alone = times();
    Platform().BeginChangeChecks();
    EXPECT_EQ(times(), alone);
    tree.Remove("p/b");
    const auto isThere = [&](const char* entry) { return linux_host::FileTime(NameOf(tree, entry)) != 0; };
    EXPECT_EQ(std::pair(isThere("p/a"), isThere("p/b")), std::pair(true, false));
    Platform().EndNeighbours();
    for (const bool among : {true, false}) {
        if (among)
            Platform().BeginNeighbours();
        EXPECT_TRUE(isThere("p/a") && isThere("p/file"));
        Platform().EndNeighbours();
        tree.Rename("p", "q");
        EXPECT_FALSE(isThere("p/a")) << "somebody may have been called";
        tree.Rename("q", "p");
    }
    Platform().BeginNeighbours();
    EXPECT_TRUE(isThere("p/a") && isThere("p/file"));
    Platform().EndChangeChecks();
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
    Unprivileged([&] {
        linux_host::testing::RestartNotification();
        EXPECT_TRUE(Watch(NameOf(tree, "unlisted")).Refused());
        const Watch watch(NameOf(tree, "shut/link/d"));
        Follow(watch, tree,
               {{"", untold},
                {"-shut/link", ""},
                {"shut/link -> b", told},
                {"shut/b/d/file", told},
                {"shut/b > shut/c", lost},
                {"shut/c > shut/b", told}});
    });
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
    for (const bool table : {true, false})
        InChild(separate, [&] {
            linux_host::testing::RestartNotification();
            EXPECT_TRUE(table || ::umount2("/proc", MNT_DETACH) == 0);
            const Watch watch(NameOf(tree, "p/d")), other(NameOf(tree, "p/d"));
            const auto sees = [&](bool done, const std::string& states) {
                EXPECT_TRUE(done);
                EXPECT_EQ(watch.Polls(), states) << (table ? "with" : "without") << " a mount table";
            };
            sees(mount("elsewhere"), untold);
            sees(mount("p/d"), table ? told : "quiet signalled");
            EXPECT_EQ(other.Poll(), "signalled");
            Follow(watch, tree, {{"p/d/file", told}});
            sees(unmount("p/d"), told);
            sees(mount("p"), table ? lost : "quiet dead");
            sees(unmount("p"), told);
            Follow(watch, tree, {{"p/d/file", told}});
        });
}

} // namespace
