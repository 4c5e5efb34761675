// What a party does in the middle of an operation that goes on: it removes, adds or refreshes what is just
// being looked at.

#include <functional>
#include <stdexcept>

#include "support/path_fixture.hpp"

namespace {

class Reentrancy : public PathFixture {
  protected:
    Reentrancy() {
        disk.Put("C:", "A/ { f.sv @C/ { C.sv } +p/ { f.sv @D/ } private/ { p.sv } } B/ { f.sv } D/ { f.sv } "
                       "cwd/ { f.sv @K/ private/ } cwd2/ { f.sv @K/ private/ } cwd3/ { f.sv }");
        ovSetCWDName(path, u"C:\\cwd");
    }
};

TEST_F(Reentrancy, AnOperationTakesTurnsWithTheOneThatItCalls) {
    const auto remove = [](ovDir dir) { ovRemoveDir(ovGetPathDir(dir)); };
    const auto goToA = [this](ovDir) { ovSetCWDName(path, u"C:\\A"); };
    const auto add = [this] {
        const ovDir added = Add("C:\\A");
        EXPECT_EQ(ovGetDirType(added), ovGetDirType(Find("C:\\A")));
    };
    const auto change = [this](const char16_t* name) { EXPECT_EQ(nullptr, ovSetCWDName(path, name)); };
    // What happens to which directory, what a party does then, what it does it in, and what is left.
    const std::tuple<ovEventType, const char*, std::function<void(ovDir)>, std::function<void()>, const char*>
        rows[] = {
            {ovEventDirAdded, "C:\\A", remove, add, "cwd"}, // was not added
            {ovEventDirAdded, "C:\\B", remove, [&] { ovReplacePath(path, u"C:\\B;C:\\A"); }, "cwd; A"},
            {ovEventDirRemoved, "C:\\A", remove, [&] { ovRemoveDir(Find("C:\\A")); }, "cwd"},
            {ovEventDirAdded, "C:\\A\\@C", remove, add,
             "cwd; A"}, // not on the path yet, so nothing to remove
            {ovEventDirRemoved, "C:\\cwd", goToA, [&] { change(u"C:\\cwd2"); }, "cwd2; A"},
            {ovEventDirAdded, "C:\\cwd\\@K", goToA, [&] { change(u"C:\\cwd"); }, "cwd; A"},
            {ovEventCWDChangeEnd, "", goToA, [&] { change(u"C:\\cwd3"); }, "A; A"}, // a change as any other
            {ovEventDirRemoved, "C:\\cwd2\\@K", goToA, [&] { change(u"C:\\cwd2"), ovHideCWD(path, true); },
             "A; A"},
        };
    for (const auto& [event, on, act, operation, left] : rows) {
        At(event, on, act);
        operation(), CheckIndex();
        EXPECT_EQ(left, Short(PathText(path))) << event << " " << on;
    }
}

TEST_F(Reentrancy, AHookMayKeepItsHandleWhileAPathIsMade) {
    static ovPath kept;
    const auto keep = [](ovPath asked, const ustring&, unsigned short**) -> char16_t* {
        return kept = asked, nullptr;
    };
    ovSetDefaultIOFcns(keep, nullptr, nullptr, nullptr, nullptr);
    ovCreatePath(0, "kept");
    disk.Install();
    EXPECT_TRUE(ovLookupPath("kept") != nullptr) << "a handle holds it still";
    kept = ovPath();
    EXPECT_TRUE(ovLookupPath("kept") == nullptr);
}

TEST_F(Reentrancy, TheLastHandleMayGoWhileADirectoryIsFrozen) {
    ovPath victim = NewPath("victim");
    const ovDir dir = ovAddDir(victim, "C:\\B", ovDirAddAtEnd);
    ovRegisterPathInterest(victim, [&](ovEventType event, ovDir) {
        if (event == ovEventDirContentsLoaded)
            victim = ovPath();
    });
    ovSetDirChanged(dir), ovFreeze(dir);
    EXPECT_TRUE(ovLookupPath("victim") == nullptr);
}

TEST_F(Reentrancy, AWarningMayAddDirectories) {
    static ovPath current;
    static std::string drives;
    current = path, drives = "DEFGHIJKLMNOPQ";
    for (const char drive : drives)
        disk.Put(drive + std::string(":\\x"), "");
    platform.handlesRefused = true;
    const auto addThem = [](const char*) {
        for (const char drive : std::exchange(drives, ""))
            ovAddDir(current, (drive + std::string(":\\x")).c_str(), ovDirAddAtEnd);
    };
    ovSetMessageFcns(nullptr, addThem, nullptr);
    Add("C:\\B");
    current = ovPath();
    EXPECT_NE(std::string::npos, PathText(path).find("C:\\B"));
}

class Meanwhile : public PathFixture {
  protected:
    Meanwhile() {
        for (const char* name : {"C:\\A", "C:\\B", "C:\\D"})
            disk.Put(name, "f.sv +p/ { @K/ { K.sv } }");
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

TEST_F(Meanwhile, AHookThatThrowsHidesNothingThatStandsBehindAndThawsNothing) {
    platform.refusesAt = [](const ustring& name) { return name == u"C:\\B"; }; // read at every refresh
    Add("C:\\A"), Add("C:\\B");
    const ovDir frozen = Add("C:\\D");
    ovFreeze(frozen);
    Refresh();
    Put("C:\\A", "f.sv");
    const auto burn = [](ovPath, const ustring&, unsigned short**) -> char16_t* {
        throw std::runtime_error("the disk is on fire");
    };
    ovSetIOFcns(path, burn, nullptr, nullptr, nullptr, nullptr);
    EXPECT_THROW(Refresh(), std::runtime_error);
    EXPECT_THROW(ovRefreshDirectory(frozen, ovRefreshReloadFrozen), std::runtime_error);
    EXPECT_TRUE(ovIsFrozen(frozen));
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
    static std::function<void()> act; // a message hook is a plain function and has nothing else to hold it
    int warnings = 0;
    act = [&] {
        if (++warnings < 9)
            Refresh();
    };
    ovSetMessageFcns(
        nullptr, [](const char*) { act(); }, nullptr);
    ovSetCWDName(path, u"C:\\bare");
    EXPECT_EQ(1, warnings) << "it is not asked for again";

    disk.Put("C:\\B", "f.sv");
    Add("C:\\B");
    act = [] {};
    disk.Put("C:\\B", "g.sv");
    Refresh();
    EXPECT_EQ("-1 B\\g.sv", Everywhere("g")) << "the refresh did not know of it yet";
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
