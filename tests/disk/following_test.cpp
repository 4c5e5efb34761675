// A path that follows the disk: what changes between two refreshes is seen by the second, by notification and
// by time.

#include <fcntl.h>
#include <linux/magic.h>

#include "real_disk.hpp"

namespace {

/// The tree lies under `R:` as well, a remote drive.
class Following : public RealDisk {
  protected:
    Following() { linux_host::DriveMap::Add(u"R:", tree.Root(), linux_host::DriveMap::Kind::Remote); }
    ~Following() override { linux_host::testing::SetNotificationFaults({}); }
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
};

TEST_F(Following, MissesNothingWithinASecondByNotificationAndByTime) {
    for (const char* root : {"T:\\", "R:\\"}) {
        Open();
        ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp);
        tree.Add({"a/"});
        Add("a", root);
        std::string missed;
        for (int i = 0; i < 1000; ++i) { // as fast as it goes
            const std::string name = "f" + std::to_string(i);
            ::close(::open(tree.Path("a/" + name + ".sv").c_str(), O_CREAT | O_WRONLY, 0600));
            Refresh();
            if (Where(name).empty())
                missed += name + " ";
        }
        EXPECT_EQ("", missed) << root;
        EXPECT_EQ(*root == 'T' ? 2u : 0u, linux_host::GetCounters().handles);
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
    Add("a");
    EXPECT_EQ("", Where("between"));
    Refresh();
    EXPECT_EQ("a\\between.p", Where("between"));
}

TEST_F(Following, QuietRefreshesCostTheSameForAnyNumberOfFolders) {
    Open();
    for (int i = 0; i < 1000; ++i) {
        std::filesystem::create_directory(tree.Path("q" + std::to_string(i)));
        Add("q" + std::to_string(i));
    }
    Refresh();
    linux_host::ResetCounters();
    Refresh();
    EXPECT_EQ(0u, linux_host::GetCounters().listings + linux_host::GetCounters().existenceQueries);
    // One as a rule; what other programs mount and move meanwhile may cost another.
    EXPECT_LE(linux_host::GetCounters().systemCalls, 3u);
}

} // namespace
