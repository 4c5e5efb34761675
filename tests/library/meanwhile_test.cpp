// What a party does in the middle of an operation that goes on: it removes, adds or refreshes what is just
// being looked at.

#include <functional>
#include <stdexcept>

#include "support/path_fixture.hpp"

namespace {

/// What the next call of a hook does, once. A message hook is a plain function and has nothing else to hold
/// it.
std::function<void()> g_act;

void Act() {
    if (g_act)
        std::exchange(g_act, nullptr)();
}

class Meanwhile : public PathFixture {
  protected:
    Meanwhile() {
        for (const char* name : {"C:\\A", "C:\\B", "C:\\D"})
            disk.Put(name, "f.sv +p/ { @K/ { K.sv } }");
        g_act = nullptr;
    }
    static void ActAtMessages(bool warnings) {
        const auto act = [](const char*) { Act(); };
        ovSetMessageFcns(nullptr, warnings ? +act : nullptr, warnings ? nullptr : +act);
    }
    void ActAtFileTimes() {
        ovSetIOFcns(path, nullptr, nullptr, nullptr, nullptr, [](ovPath, const ustring&) -> long {
            Act();
            return 7;
        });
    }
    void Remove(const char* name) { ovRemoveDir(Find(name)); }
    void Refresh() { ovRefreshAllDirectories(path, ovRefreshCheck); }
    /// A change that its handle tells of.
    void Put(const char* name, const char* contents) {
        disk.Put(name, contents);
        platform.Signal(U(name));
    }
};

TEST_F(Meanwhile, NewsBehindAnEntryThatGoesAreTakenInTheSameRefresh) {
    const auto settle = [this] {
        for (const char* name : {"C:\\A", "C:\\B", "C:\\D"})
            Add(name);
        Refresh();
        ASSERT_TRUE(path->IsSettled());
    };
    settle();
    for (const char* name : {"C:\\A", "C:\\B", "C:\\D"})
        Put(name, "g.sv");
    At(ovEventDirContentsLoaded, "C:\\A", [this](ovDir) { Remove("C:\\A"); });
    Refresh();
    EXPECT_EQ("-1 B\\g.sv | -1 D\\g.sv", Everywhere("g"));

    settle();
    Put("C:\\B", "f.sv");
    disk.Put("C:\\D", "h.sv");
    At(ovEventDirContentsLoaded, "C:\\B", [this](ovDir) {
        Remove("C:\\A");
        ovSetDirChanged(Find("C:\\D"));
    });
    Refresh();
    EXPECT_EQ("-1 D\\h.sv", Everywhere("h")) << "marked meanwhile";
}

TEST_F(Meanwhile, ARefreshOfWhatIsBeingReadComesWithTheNextOne) {
    Add("C:\\B");
    Refresh();
    disk.Put("C:\\B", "f.sv"); // of which no handle tells, as of the next change
    ovSetDirChanged(Find("C:\\B"));
    At(ovEventDirRemoved, "C:\\B\\+p", [this](ovDir) { Refresh(); });
    Refresh();
    disk.Put("C:\\B", "g.sv");
    Refresh();
    EXPECT_EQ("-1 B\\g.sv", Everywhere("g"));
}

TEST_F(Meanwhile, AHookThatThrowsHidesNothingThatStandsBehind) {
    platform.refusesAt = [](const ustring& name) { return name == u"C:\\B"; }; // read at every refresh
    Add("C:\\A"), Add("C:\\B");
    Refresh();
    Put("C:\\A", "f.sv");
    const auto burn = [](ovPath, const ustring&, unsigned short**) -> char16_t* {
        throw std::runtime_error("the disk is on fire");
    };
    ovSetIOFcns(path, burn, nullptr, nullptr, nullptr, nullptr);
    EXPECT_THROW(Refresh(), std::runtime_error);
    disk.Install();
    ovSetIOFcns(path, &FakeDisk::Read, nullptr, nullptr, nullptr, nullptr);
    disk.Put("C:\\B", "g.sv");
    Refresh();
    EXPECT_EQ("-1 B\\g.sv", Everywhere("g"));
}

TEST_F(Meanwhile, AWarningThatNoHandleIsToBeHadMayRefresh) {
    Refresh();
    platform.handlesRefused = true;
    disk.Put("C:\\bare", "f.sv");
    int warnings = 0;
    const std::function<void()> refresh = [&] {
        g_act = ++warnings < 9 ? refresh : nullptr;
        Refresh();
    };
    ActAtMessages(true);
    g_act = refresh;
    ovSetCWDName(path, u"C:\\bare");
    EXPECT_EQ(1, warnings) << "it is not asked for again";

    disk.Put("C:\\B", "f.sv");
    g_act = [this] { Refresh(); };
    Add("C:\\B");
    g_act = nullptr;
    disk.Put("C:\\B", "g.sv");
    Refresh();
    EXPECT_EQ("-1 B\\g.sv", Everywhere("g")) << "the refresh did not know of it yet";
}

TEST_F(Meanwhile, AMessageOfACheckMayRemoveWhatIsChecked) {
    platform.refusesAt = [](const ustring& name) { return name == u"C:\\A\\+p\\@K"; };
    for (const bool tree : {true, false}) {
        Add("C:\\A");
        ovSetDirectoryReloadMessages(path, true);
        ActAtMessages(false);
        g_act = [this] { Remove("C:\\A"); };
        if (tree)
            Refresh();
        else
            ovRefreshDirectory(Find("C:\\A\\+p\\@K"), ovRefreshCheck);
        EXPECT_EQ("C:\\cwd", PathText(path));
    }
}

TEST_F(Meanwhile, AHookForTimesMayRemoveWhatIsLookedAt) {
    platform.driveTypes[u"R:\\"] = host::DriveRemote;
    platform.fullPaths[u"R:\\A"] = u"R:\\A";
    platform.probeFilesRefused = platform.handlesRefused = true;
    disk.Put("R:\\A", "f.sv +p/ { @K/ { K.sv } +q/ }");
    ActAtFileTimes();
    // A policy that comes into force has the time noted of each.
    Add("R:\\A");
    g_act = [this] { g_act = [this] { Remove("R:\\A"); }; };
    ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp);
    EXPECT_EQ("C:\\cwd", PathText(path));
    // What was declared has its detection asked all the same.
    Add("R:\\A");
    ovSetDirChanged(Find("R:\\A\\+p\\@K"));
    g_act = [this] { Remove("R:\\A"); };
    Refresh();
    EXPECT_EQ("C:\\cwd", PathText(path));
}

TEST_F(Meanwhile, WhatAPartyAddsAndRemovesLeavesTheRestInItsPlace) {
    At(ovEventDirAdded, "C:\\A\\+p", [this](ovDir) { Add("C:\\B"); });
    Add("C:\\A");
    EXPECT_EQ("C:\\cwd; C:\\B; C:\\A", PathText(path)) << "at the end is where it was to go";
    Add("C:\\D");
    for (const char* name : {"C:\\cwd", "C:\\B"})
        disk.dirs.erase(name);
    disk.existenceQueries = 0;
    At(ovEventDirRemoved, "C:\\B", [this](ovDir) { Remove("C:\\A"); });
    ovDeleteNonExistentDirectories(path);
    EXPECT_EQ("C:\\cwd; C:\\D", PathText(path));
    EXPECT_EQ(2, disk.existenceQueries) << "neither of what has gone nor of the current directory";
}

} // namespace
