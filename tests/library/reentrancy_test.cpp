#include <functional>
#include <stdexcept>

#include "support/path_fixture.hpp"

namespace {

/// Callbacks that change the path in the middle of the operation that called them.
class Reentrancy : public PathFixture {
  protected:
    Reentrancy() {
        disk.Put("C:\\A", "f.sv @C/ +p/ private/");
        disk.Put("C:\\A\\@C", "C.sv");
        disk.Put("C:\\A\\+p", "f.sv @D/");
        disk.Put("C:\\A\\private", "p.sv");
        disk.Put("C:\\B", "f.sv");
        disk.Put("C:\\cwd", "f.sv @K/ private/");
        disk.Put("C:\\cwd2", "f.sv @K/ private/");
        disk.Put("C:\\cwd3", "f.sv");
        ovSetCWDName(path, u"C:\\cwd");
    }
    /// Runs @p act once, at the first event of that kind on that directory.
    void At(ovEventType wanted, const std::string& name, std::function<void(ovDir)> act) {
        ovRegisterPathInterest(path, [=, done = false](ovEventType event, ovDir dir) mutable {
            if (done || event != wanted || N(ovGetDirName(dir)) != name)
                return;
            done = true;
            act(dir);
        });
    }
};

TEST_F(Reentrancy, ADirectoryRemovedWhileItIsAddedWasNotAdded) {
    At(ovEventDirAdded, "C:\\A", [](ovDir dir) { ovRemoveDir(dir); });
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(Add("C:\\A")));
    EXPECT_EQ("C:\\cwd", PathText(path));
    At(ovEventDirAdded, "C:\\B", [](ovDir dir) { ovRemoveDir(dir); });
    ovReplacePath(path, u"C:\\B;C:\\A"), CheckIndex();
    EXPECT_EQ("C:\\cwd; C:\\A", PathText(path));
    ovRemoveDir(Find("C:\\A"));
    At(ovEventDirAdded, "C:\\A\\@C", [](ovDir dir) { ovRemoveDir(ovGetPathDir(dir)); });
    EXPECT_EQ(ovDirTypePath, ovGetDirType(Add("C:\\A")))
        << "not on the path yet, so there was nothing to remove";
}

TEST_F(Reentrancy, TheCurrentDirectoryChangesOnceAtATime) {
    const auto goToA = [this](ovDir) { ovSetCWDName(path, u"C:\\A"); };
    At(ovEventDirRemoved, "C:\\cwd", goToA);
    EXPECT_EQ(nullptr, ovSetCWDName(path, u"C:\\cwd2")), CheckIndex();
    EXPECT_EQ("C:\\cwd2", PathText(path));
    At(ovEventDirAdded, "C:\\cwd\\@K", goToA);
    ovSetCWDName(path, u"C:\\cwd"), CheckIndex();
    EXPECT_EQ("C:\\cwd", PathText(path));
    At(ovEventCWDChangeEnd, "", goToA);
    ovSetCWDName(path, u"C:\\cwd3"), CheckIndex();
    EXPECT_EQ("C:\\A", PathText(path)) << "at the end a change is a change";
    ovSetCWDName(path, u"C:\\cwd2");
    At(ovEventDirRemoved, "C:\\cwd2\\@K", goToA);
    ovHideCWD(path, true), CheckIndex();
    EXPECT_EQ("C:\\A", PathText(path));
}

TEST_F(Reentrancy, APathMayBeRemovedInsideEveryOperation) {
    struct {
        const char* label;
        ovEventType event;
        const char* dir;
        std::function<void()> operation;
    } const rows[] = {
        {"add", ovEventDirAdded, "C:\\A", [&] { Add("C:\\A"); }},
        {"load", ovEventDirAdded, "C:\\A\\@C", [&] { Add("C:\\A"); }},
        {"deep load", ovEventDirAdded, "C:\\A\\+p\\@D", [&] { Add("C:\\A"); }},
        {"remove", ovEventDirRemoved, "C:\\B", [&] { ovRemoveDir(Find("C:\\B")); }},
        {"replace", ovEventPathReplaceBegin, "", [&] { ovReplacePath(path, u"C:\\A"); }},
        {"replace, sweep", ovEventDirRemoved, "C:\\B", [&] { ovReplacePath(path, u"C:\\A"); }},
        {"change, begin", ovEventCWDChangeBegin, "", [&] { ovSetCWDName(path, u"C:\\cwd2"); }},
        {"change, old", ovEventDirRemoved, "C:\\cwd", [&] { ovSetCWDName(path, u"C:\\cwd2"); }},
        {"change, load", ovEventDirAdded, "C:\\cwd2\\@K", [&] { ovSetCWDName(path, u"C:\\cwd2"); }},
        {"change, end", ovEventCWDChangeEnd, "", [&] { ovSetCWDName(path, u"C:\\cwd2"); }},
        {"hide", ovEventDirRemoved, "C:\\cwd\\@K", [&] { ovHideCWD(path, true); }},
        {"refresh", ovEventDirContentsLoaded, "C:\\B",
         [&] { ovRefreshAllDirectories(path, ovRefreshReload); }},
        {"refresh, new child", ovEventDirAdded, "C:\\B\\@N",
         [&] {
             disk.Put("C:\\B", "f.sv @N/ +o/ z.sv");
             ovRefreshAllDirectories(path, ovRefreshReload);
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        path = NewPath("victim");
        disk.Put("C:\\B", "f.sv");
        ovSetCWDName(path, u"C:\\cwd"), Add("C:\\B");
        At(row.event, row.dir, [&](ovDir) { ovRemovePath(path); });
        row.operation();
        EXPECT_FALSE(path->IsValid());
    }
}

TEST_F(Reentrancy, AHookMayKeepItsHandleWhileAPathIsMade) {
    static ovPath kept;
    ovSetDefaultIOFcns(
        [](ovPath asked, const ustring&, unsigned short**) -> char16_t* {
            kept = asked;
            return nullptr;
        },
        nullptr, nullptr, nullptr, nullptr);
    ovCreatePath(0, "kept");
    disk.Install();
    EXPECT_TRUE(ovLookupPath("kept") != nullptr) << "a handle holds it still";
    kept = ovPath();
    EXPECT_TRUE(ovLookupPath("kept") == nullptr);
}

TEST_F(Reentrancy, AHookThatThrowsLeavesThePathInOrder) {
    static const char16_t* burning = nullptr;
    ovSetIOFcns(
        path,
        [](ovPath asked, const ustring& name, unsigned short** words) {
            if (burning && name == burning)
                throw std::runtime_error("the disk is on fire");
            return FakeDisk::Read(asked, name, words);
        },
        nullptr, nullptr, nullptr, nullptr);
    burning = u"C:\\cwd2\\@K";
    EXPECT_THROW(ovSetCWDName(path, u"C:\\cwd2"), std::runtime_error);
    CheckIndex();
    EXPECT_EQ("C:\\cwd2", PathText(path));
    burning = u"C:\\A\\+p";
    EXPECT_THROW(Add("C:\\A"), std::runtime_error);
    CheckIndex();
    burning = nullptr;
    EXPECT_EQ(ovDirTypePath, ovGetDirType(Add("C:\\A")));
}

} // namespace
