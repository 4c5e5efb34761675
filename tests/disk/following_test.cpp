// A path that follows the disk: what changes between two refreshes is seen by the second, by notification and
// by time.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include <ovsel/ovsel.hpp>

#include "host_interfaces/filesystem.hpp"
#include "linux_hooks/linux_hooks.hpp"
#include "linux_host/linux_host.hpp"
#include "support/temp_tree.hpp"
#include "support/texts.hpp"

namespace {

using linux_host::DriveMap;
using test::TempTree;

int warnings = 0;

/// A path over a real tree, whose folders lie under `T:`, a local drive, and under `R:`, a remote one.
class Following : public testing::Test {
  protected:
    Following() {
        linux_hooks::InstallDefaultHooks();
        warnings = 0;
        ovSetMessageFcns(
            nullptr, [](const char*) { ++warnings; }, nullptr);
        DriveMap::Add(u"T:", tree.Root(), DriveMap::Kind::Fixed);
        DriveMap::Add(u"R:", tree.Root(), DriveMap::Kind::Remote);
    }
    ~Following() override {
        path = ovPath();
        ovTerminate();
        fl::filesystem::current_path(before);
        linux_host::testing::SetNotificationFaults({});
        DriveMap::Reset();
        ovSetMessageFcns(nullptr, nullptr, nullptr);
    }
    /// Now no folder gets a handle.
    void Deafen() {
        linux_host::testing::NotificationFaults faults;
        faults.fileSystem = NFS_SUPER_MAGIC;
        linux_host::testing::SetNotificationFaults(faults);
    }
    void Open() {
        path = ovCreatePathWithPreFrozen(0, "main", static_cast<const char16_t*>(nullptr), ovCaseSensitive,
                                         true);
        tree.Add({"cwd/"});
        ASSERT_EQ(nullptr, ovSetCWDName(path, u"T:\\cwd"));
    }
    ovDir Add(const std::string& name, const char* root = "T:\\") {
        return ovAddDir(path, U(root + name), ovDirAddAtEnd);
    }
    void Refresh() { ovRefreshAllDirectories(path, ovRefreshCheck); }
    /// What a name means, without `T:\`.
    std::string Where(const std::string& name) {
        ustring file;
        ovFindFirstFileInAll(path, U(name), nullptr, nullptr, file);
        return file.empty() ? "" : N(file).substr(3);
    }
    /// The folders that one refresh reads again.
    std::string Reloads() {
        std::vector<std::string> loaded;
        const auto token = ovRegisterPathInterest(path, [&](ovEventType event, ovDir dir) {
            if (event == ovEventDirContentsLoaded)
                loaded.push_back(N(ovGetDirName(dir)).substr(3));
        });
        Refresh();
        ovCancelPathInterest(token);
        return Join(loaded, " ");
    }
    /// Creates a file in each of a thousand rounds, as fast as it goes. @return the names that were missed.
    std::string MissedInAThousandRounds(const char* root) {
        Open();
        ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp);
        tree.Add({"a/"});
        Add("a", root);
        std::string missed;
        for (int i = 0; i < 1000; ++i) {
            const std::string name = "f" + std::to_string(i);
            const int file = ::open(tree.Path("a/" + name + ".sv").c_str(), O_CREAT | O_WRONLY, 0600);
            ::close(file);
            Refresh();
            if (Where(name).empty())
                missed += name + " ";
        }
        return missed;
    }

    const ustring before = fl::filesystem::current_path();
    TempTree tree = TempTree::InMemory();
    ovPath path;
};

TEST_F(Following, ByNotificationMissesNothingWithinASecond) {
    EXPECT_EQ("", MissedInAThousandRounds("T:\\"));
    EXPECT_EQ(0, warnings);
}

TEST_F(Following, ByTimeMissesNothingWithinASecond) {
    Deafen();
    EXPECT_EQ("", MissedInAThousandRounds("R:\\"));
}

TEST_F(Following, SeesEveryKindOfChange) {
    tree.Add({"a/plot.p", "a/@K/K.p", "b/plot.p", "up/c/deep.p", "up/c/private/"});
    Open();
    for (const char* folder : {"a", "b", "up\\c"})
        Add(folder);
    Refresh(); // folders that were made a moment ago are looked at once more
    EXPECT_EQ("", Reloads()) << "nothing has happened";
    struct {
        const char* what;
        std::function<void()> act;
        const char* name;
        const char* means;
    } const rows[] = {
        {"created", [&] { tree.Add({"a/new.p"}); }, "new", "a\\new.p"},
        {"removed", [&] { tree.Remove("a/plot.p"); }, "plot", "b\\plot.p"},
        {"moved in", [&] { tree.Rename("b/plot.p", "a/plot.p"); }, "plot", "a\\plot.p"},
        {"a class added", [&] { tree.Add({"b/@L/L.p"}); }, "L", "b\\@L\\L.p"},
        {"a method added", [&] { tree.Add({"a/@K/draw.p"}); }, "draw", "a\\@K\\draw.p"},
        {"a class removed", [&] { tree.Remove("a/@K"); }, "draw", ""},
        {"a file became a folder", [&] { tree.Remove("a/new.p"), tree.Add({"a/new.p/"}); }, "new", ""},
        {"and back", [&] { tree.Remove("a/new.p"), tree.Add({"a/new.p"}); }, "new", "a\\new.p"},
        {"a folder gone", [&] { tree.Remove("a"); }, "new", ""},
        {"and made anew", [&] { tree.Add({"a/again.p"}); }, "again", "a\\again.p"},
        {"a file in it", [&] { tree.Add({"a/later.p"}); }, "later", "a\\later.p"},
        {"a folder moved away", [&] { tree.Rename("b", "elsewhere"); }, "L", ""},
        {"and another put in its place", [&] { tree.Add({"b/other.p"}); }, "other", "b\\other.p"},
        {"a parent moved", [&] { tree.Rename("up", "down"); }, "deep", ""},
        {"and moved back", [&] { tree.Rename("down", "up"); }, "deep", "up\\c\\deep.p"},
        {"something below", [&] { tree.Add({"up/c/private/own.p"}); }, "own", "up\\c\\private\\own.p"},
    };
    for (const auto& row : rows) {
        row.act();
        Refresh();
        EXPECT_EQ(row.means, Where(row.name)) << row.what;
    }
    EXPECT_EQ("", Reloads()) << "all of that is over";
}

TEST_F(Following, SeesWhatHappensBetweenTheListingAndItsHandle) {
    tree.Add({"a/@K/K.p"});
    Open();
    // The class folder is told of when its parent has been listed and is not watched yet.
    ovRegisterPathInterest(path, [&](ovEventType event, ovDir dir) {
        if (event == ovEventDirAdded && ovGetDirType(dir) == ovDirTypeClass)
            tree.Add({"a/between.p"});
    });
    Add("a");
    EXPECT_EQ("", Where("between"));
    Refresh();
    EXPECT_EQ("a\\between.p", Where("between"));
}

TEST_F(Following, WithFewWatchesFollowsAllTheSame) {
    constexpr int folders = 120;
    for (int i = 0; i < folders; ++i)
        tree.Add({"d" + std::to_string(i) + "/f.p"});
    // Some watches go to the folders above.
    for (const std::size_t limit : {0u, 1u, 100u, 100000u}) {
        SCOPED_TRACE(limit);
        linux_host::testing::NotificationFaults faults;
        faults.mostWatches = limit;
        linux_host::testing::SetNotificationFaults(faults);
        warnings = 0;
        Open();
        for (int i = 0; i < folders; ++i)
            Add("d" + std::to_string(i));
        const auto handles = static_cast<int>(linux_host::GetCounters().handles) - (limit > 1 ? 1 : 0); // cwd
        EXPECT_EQ(folders - handles, warnings) << "each local folder without a handle is told of";
        EXPECT_EQ(limit <= 1, handles == 0);
        EXPECT_EQ(limit > folders, handles == folders);
        const std::string name = "n" + std::to_string(limit);
        for (const int i : {0, 50, folders - 1})
            tree.Add({"d" + std::to_string(i) + "/" + name + ".p"});
        Refresh();
        EXPECT_EQ("d0\\" + name + ".p", Where(name));
        tree.Remove("d0/" + name + ".p"), tree.Remove("d50/" + name + ".p");
        Refresh();
        EXPECT_EQ("d119\\" + name + ".p", Where(name));
        path = ovPath();
    }
    EXPECT_EQ(0u, linux_host::GetCounters().handles);
    EXPECT_EQ(0u, linux_host::GetCounters().watches);
}

TEST_F(Following, QuietRefreshesCostTheSameForAnyNumberOfFolders) {
    const auto cost = [&](int folders) {
        Open();
        for (int i = 0; i < folders; ++i) {
            const std::string name = "q" + std::to_string(i);
            tree.Add({name + "/"});
            Add(name);
        }
        Refresh();
        linux_host::ResetCounters();
        EXPECT_EQ("", Reloads());
        const auto counters = linux_host::GetCounters();
        EXPECT_EQ(0u, counters.listings + counters.existenceQueries);
        path = ovPath();
        return counters.systemCalls;
    };
    // One poll; now and then a read of what the system has to say of watches that were given back.
    EXPECT_LE(cost(10), 3u);
    EXPECT_LE(cost(1000), 3u);
}

TEST_F(Following, ABurstThatOverflowsTheQueueLosesNothing) {
    tree.Add({"a/", "b/", "c/f.p"});
    Open();
    for (const char* folder : {"a", "b", "c"})
        Add(folder);
    for (int i = 0; i < 100000; ++i)
        ASSERT_EQ(0, ::mknod(tree.Path((i % 2 ? "a/x" : "b/x") + std::to_string(i) + ".p").c_str(),
                             S_IFREG | 0600, 0));
    tree.Add({"c/late.p"});
    EXPECT_EQ("cwd a b c", Reloads()) << "each once, those that nothing is known of too";
    EXPECT_EQ("a\\x99999.p", Where("x99999"));
    EXPECT_EQ("b\\x0.p", Where("x0"));
    EXPECT_EQ("c\\late.p", Where("late"));
    EXPECT_EQ("", Reloads());
    EXPECT_GE(linux_host::GetCounters().overflows, 1u);
}

TEST_F(Following, StampsTellFilesThatAreRewrittenInPlace) {
    tree.Write("a/f.p", "one");
    tree.SetTime("a/f.p", 1000000);
    Open();
    const ovDir dir = Add("a");
    ovTimeStamp_tag* stamp = ovCreateTimeStamp();
    ovGetTimeStampFromDir(dir, u"T:\\a\\f.p", stamp);
    const auto changed = [&] {
        Refresh();
        return ovHasFileChanged(dir, u"T:\\a\\f.p", stamp, ovUpdateTimeStamp, true);
    };
    EXPECT_FALSE(changed());
    tree.Write("a/f.p", "two");
    EXPECT_TRUE(changed());
    EXPECT_FALSE(changed());
    tree.SetTime("a/f.p", 500000);
    EXPECT_TRUE(changed()) << "a time set back is a change";
    tree.Remove("a/f.p");
    EXPECT_TRUE(changed());
    ovDestroyTimeStamp(stamp);
}

} // namespace
