// The public interface over the real disk and its notifications. A path follows the disk: what changes
// between two refreshes is seen by the second, by notification and by time. A start from the cache reads
// nothing of a toolbox that is gone, and no name needs the system then.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <ovsel/ovsel.hpp>

#include "host_interfaces/filesystem.hpp"
#include "linux_hooks/linux_hooks.hpp"
#include "linux_host/linux_host.hpp"
#include "support/temp_tree.hpp"
#include "support/texts.hpp"

namespace {

/// A path over a real tree, which lies under `T:`, a local drive, and under `R:`, a remote one. It stands in
/// `T:\cwd`.
class RealDisk : public testing::Test {
  protected:
    RealDisk() {
        using linux_host::DriveMap;
        linux_hooks::InstallDefaultHooks();
        DriveMap::Add(u"T:", tree.Root(), DriveMap::Kind::Fixed);
        DriveMap::Add(u"R:", tree.Root(), DriveMap::Kind::Remote);
        linux_host::SetPrintSink([](std::string_view) {});
    }
    ~RealDisk() override {
        Close();
        linux_host::testing::SetNotificationFaults({});
        linux_host::SetPrintSink({});
        linux_host::DriveMap::Reset();
    }
    void Open(const char16_t* prefix = nullptr) {
        tree.Add({"cwd/"});
        path = ovCreatePathWithPreFrozen(0, "main", prefix, ovCaseSensitive, true);
        ASSERT_EQ(nullptr, ovSetCWDName(path, u"T:\\cwd"));
    }
    void Close() {
        path = ovPath();
        ovTerminate();
        fl::filesystem::current_path(before); // which the path has moved
    }
    ovDir Add(const std::string& name) { return ovAddDir(path, U(name), ovDirAddAtEnd); }
    void Refresh() { ovRefreshAllDirectories(path, ovRefreshCheck); }
    /// What a name means to a file of the toolbox.
    std::string Where(const std::string& name) {
        ustring file;
        ovFindFirstFileVisibleToFile(path, u"T:\\box\\sig\\x.sv", U(name), nullptr, nullptr, file);
        return N(file);
    }
    std::string Answers() {
        std::string all;
        for (const char* name : {"plot", "@plot\\draw", "gfx\\fill", "link", "own", "nothing"})
            all += Where(name) + " | ";
        return all;
    }

    const ustring before = fl::filesystem::current_path();
    test::TempTree tree = test::TempTree::InMemory();
    ovPath path;
};
using Following = RealDisk;
using CacheStart = RealDisk;

TEST_F(Following, MissesNothingWithinASecondByNotificationAndByTime) {
    for (const std::string root : {"T:\\", "R:\\"}) {
        Open();
        ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp);
        tree.Add({"a/"});
        Add(root + "a");
        std::string missed;
        for (int i = 0; i < 1000; ++i) { // as fast as it goes
            const std::string name = "f" + std::to_string(i);
            ::close(::open(tree.Path("a/" + name + ".sv").c_str(), O_CREAT | O_WRONLY, 0600));
            Refresh();
            if (Where(name).empty())
                missed += name + " ";
        }
        EXPECT_EQ("", missed) << root;
        EXPECT_EQ(root == "T:\\" ? 2u : 0u, linux_host::GetCounters().handles);
        path = ovPath();
        tree.Remove("a");
        linux_host::testing::SetNotificationFaults(
            {.fileSystem = NFS_SUPER_MAGIC}); // no folder gets a handle
    }
}

TEST_F(Following, SeesWhatHappensBetweenTheListingAndItsHandle) {
    tree.Add({"a/@K/K.p"});
    Open();
    // The class folder is told of when its parent has been listed and is not watched yet.
    ovRegisterPathInterest(path, [&](ovEventType event, ovDir dir) {
        if (event == ovEventDirAdded && ovGetDirType(dir) == ovDirTypeClass)
            tree.Add({"a/between.p"});
    });
    Add("T:\\a");
    EXPECT_EQ("", Where("between"));
    Refresh();
    EXPECT_EQ("T:\\a\\between.p", Where("between"));
}

TEST_F(Following, QuietRefreshesCostTheSameForAnyNumberOfFolders) {
    Open();
    for (int i = 0; i < 1000; ++i) {
        std::filesystem::create_directory(tree.Path("q" + std::to_string(i)));
        Add("T:\\q" + std::to_string(i));
    }
    Refresh();
    linux_host::ResetCounters();
    Refresh();
    EXPECT_EQ(0u, linux_host::GetCounters().listings + linux_host::GetCounters().existenceQueries);
    // One as a rule; what other programs mount and move meanwhile may cost another.
    EXPECT_LE(linux_host::GetCounters().systemCalls, 3u);
}

TEST_F(CacheStart, NeedsNothingOfTheToolboxAndThenNoSystemCall) {
    const auto addAll = [&] { Add("T:\\box\\sig"), Add("T:\\box\\img"), Add("T:\\own"); };
    tree.Add({"box/sig/plot.sv", "box/sig/@plot/plot.sv", "box/sig/@plot/draw.sv", "own/own.sv",
              "box/sig/private/plot.p", "box/target.sv", "box/img/+gfx/fill.sv", "box/img/plot.p",
              "box/img/link.sv -> ../target.sv", "box/img/folder -> ../sig"});
    Open(u"T:\\box");
    addAll();
    ovWritePathToCacheFile(path, "T:\\cache.xml");
    const std::string expected = Answers();
    EXPECT_EQ("T:\\box\\sig\\private\\plot.p | T:\\box\\sig\\@plot\\draw.sv | T:\\box\\img\\+gfx\\fill.sv | "
              "T:\\box\\img\\link.sv | T:\\own\\own.sv |  | ",
              expected);
    Close();

    // In the storage layer's mode the accessibility of a path's folder is still asked of the disk.
    tree.Rename("box", "elsewhere");
    tree.Add({"box/sig/", "box/img/", "box/img/link.sv"});
    Open(u"T:\\box");
    ovUseToolboxCache(path, u"T:/cache.xml", u"T:\\box", false);
    ASSERT_TRUE(ovInToolboxCacheMode());
    linux_host::ResetCounters();
    addAll();
    EXPECT_EQ(expected, Answers()); // looks once at each item of unknown kind
    EXPECT_EQ(1u, linux_host::GetCounters().listings) << "T:\\own, and nothing under the prefix";
    Refresh();
    EXPECT_EQ(expected, Answers());
    [[maybe_unused]] const auto askStrictly = [&] {
        // From here on any call but read, write and exit kills the process.
        if (::prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0)
            ::_exit(2);
        bool same = true;
        for (int i = 0; i < 1000; ++i)
            same = same && Answers() == expected;
        ::syscall(SYS_exit, same ? 0 : 1);
    };
#if !defined(__SANITIZE_ADDRESS__) // whose allocator maps memory when it pleases
    EXPECT_EXIT(askStrictly(), testing::ExitedWithCode(0), "");
#endif
    ovRevertFromToolboxCache(path);
}

} // namespace
