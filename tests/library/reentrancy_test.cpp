#include <functional>
#include <stdexcept>

#include "support/path_fixture.hpp"

namespace {

/// Callbacks that change the path in the middle of the operation that called them.
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
    const struct {
        ovEventType event;
        const char* on;
        std::function<void(ovDir)> act;
        std::function<void()> operation;
        const char* left;
    } rows[] = {
        {ovEventDirAdded, "C:\\A", remove, add, "cwd"}, // was not added
        {ovEventDirAdded, "C:\\B", remove, [&] { ovReplacePath(path, u"C:\\B;C:\\A"); }, "cwd; A"},
        {ovEventDirRemoved, "C:\\A", remove, [&] { ovRemoveDir(Find("C:\\A")); }, "cwd"},
        {ovEventDirAdded, "C:\\A\\@C", remove, add, "cwd; A"}, // not on the path yet, so nothing to remove
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

TEST_F(Reentrancy, AHookThatThrowsLeavesAFrozenDirectoryFrozen) {
    const ovDir a = Add("C:\\A");
    ovFreeze(a);
    const auto burn = [](ovPath, const ustring&, unsigned short**) -> char16_t* {
        throw std::runtime_error("the disk is on fire");
    };
    ovSetIOFcns(path, burn, nullptr, nullptr, nullptr, nullptr);
    EXPECT_THROW(ovRefreshDirectory(a, ovRefreshReloadFrozen), std::runtime_error);
    EXPECT_TRUE(ovIsFrozen(a));
}

TEST_F(Reentrancy, ARefreshGoesOnWithWhatIsLeft) {
    for (const char* name : {"C:\\A", "C:\\B", "C:\\D"})
        Add(name);
    At(ovEventDirContentsLoaded, "C:\\A", [](ovDir dir) { ovRemoveDir(dir); });
    disk.Put("C:\\B", "g.sv");
    ovRefreshAllDirectories(path, ovRefreshReload), CheckIndex();
    EXPECT_EQ("C:\\cwd; C:\\B; C:\\D", PathText(path));
    EXPECT_NE(nullptr, path->FindNameInfo(u"g")) << "the one behind the removed one is not left out";

    const auto removeA = [this](ovDir) { ovRemoveDir(Find("C:\\A")); };
    Add("C:\\A");
    ovSetDirChanged(Find("C:\\A\\@C"));
    At(ovEventDirContentsLoaded, "C:\\A\\@C", removeA);
    ovFreeze(Find("C:\\A\\@C")), CheckIndex();
    Add("C:\\A");
    disk.Put("C:\\A\\@C", "C.sv private/ later.sv");
    At(ovEventDirAdded, "C:\\A\\@C\\private", removeA);
    ovRefreshAllDirectories(path, ovRefreshReload), CheckIndex();
    EXPECT_EQ(nullptr, path->FindNameInfo(u"later")) << "nothing is read into a class folder that has gone";
}

TEST_F(Reentrancy, ADirectoryIsReadOnceAtATime) {
    disk.Put("C:\\E", "@K/ @L/ private/ f.sv");
    const ovDir e = Add("C:\\E");
    const auto refresh = [e](ovDir) { ovRefreshDirectory(e, ovRefreshReload); };
    const auto contents = [&] {
        CheckIndex();
        return std::to_string(e->GetFiles().size()) + " files, " + std::to_string(e->GetClassDirs().size()) +
               " classes, " + (e->GetPrivateDir() ? "private" : "no private");
    };
    disk.Put("C:\\E", "@K/ @New/ f.sv g.sv");
    At(ovEventDirAdded, "C:\\E\\@New", refresh);
    At(ovEventDirRemoved, "C:\\E\\@L", [this](ovDir) { disk.Put("C:\\E", "@K/ @Last/ private/ f.sv"); });
    At(ovEventDirRemoved, "C:\\E\\private", refresh);
    ovRefreshAllDirectories(path, ovRefreshReload);
    EXPECT_EQ("2 files, 2 classes, no private", contents());
    EXPECT_EQ(DirChanged, e->GetState()) << "what was asked for meanwhile comes with the next refresh";
    ovRefreshAllDirectories(path, ovRefreshCheck);
    EXPECT_EQ("1 files, 2 classes, private", contents());
    At(ovEventDirAdded, "C:\\cwd2\\@K", [this](ovDir) { ovRefreshAllDirectories(path, ovRefreshCheck); });
    ovSetCWDName(path, u"C:\\cwd2"), CheckIndex();
    EXPECT_EQ(1u, ovGetCWD(path)->GetFiles().size());
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

} // namespace
