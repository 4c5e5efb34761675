// A path that follows the disk: what changes between two refreshes is seen by the second, by notification and
// by time.

#include <fcntl.h>
#include <linux/magic.h>

#include "real_disk.hpp"

namespace {

int warnings = 0;

/// The tree lies under `R:` as well, a remote drive.
class Following : public RealDisk {
  protected:
    Following() {
        warnings = 0;
        ovSetMessageFcns(
            nullptr, [](const char*) { ++warnings; }, nullptr);
        linux_host::DriveMap::Add(u"R:", tree.Root(), linux_host::DriveMap::Kind::Remote);
    }
    ~Following() override {
        linux_host::testing::SetNotificationFaults({});
        ovSetMessageFcns(nullptr, nullptr, nullptr);
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
};

TEST_F(Following, MissesNothingWithinASecondByNotificationAndByTime) {
    EXPECT_EQ("", MissedInAThousandRounds("T:\\"));
    EXPECT_EQ(0, warnings);
    path = ovPath();
    tree.Remove("a");
    linux_host::testing::SetNotificationFaults({.fileSystem = NFS_SUPER_MAGIC}); // no folder gets a handle
    EXPECT_EQ("", MissedInAThousandRounds("R:\\"));
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
    EXPECT_EQ("", Reloads());
    EXPECT_EQ(0u, linux_host::GetCounters().listings + linux_host::GetCounters().existenceQueries);
    // One as a rule; what other programs mount and move meanwhile may cost another.
    EXPECT_LE(linux_host::GetCounters().systemCalls, 3u);
}

} // namespace
