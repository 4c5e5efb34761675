#include "support/path_fixture.hpp"

#include <stdexcept>

namespace {

class Interest : public PathFixture {
  protected:
    ovRegisteredInterest Note(const char* name) {
        return ovRegisterPathInterest(path, [this, name](ovEventType, ovDir) { called.push_back(name); });
    }
    std::string Ring() {
        called.clear();
        path->NotifyInterests(*ovGetNullDir(path), ovEventRefreshBegin);
        return Join(called, " ");
    }
    std::vector<std::string> called;
};

TEST_F(Interest, IsToldInOrderOfSlotsAndReusesTheLowest) {
    const ovRegisteredInterest a = Note("a");
    Note("b"), Note("c");
    EXPECT_EQ("a b c", Ring());
    ovCancelPathInterest(a);
    const ovRegisteredInterest d = Note("d");
    EXPECT_EQ(a.m_index, d.m_index);
    EXPECT_EQ("d b c", Ring());
    ovCancelPathInterest(a);
    EXPECT_EQ("b c", Ring()) << "an old token cancels whoever has its slot now";
}

TEST_F(Interest, MayChangeDuringAPass) {
    std::vector<ovRegisteredInterest> tokens;
    tokens.push_back(ovRegisterPathInterest(path, [&](ovEventType, ovDir) {
        called.push_back("canceller");
        ovCancelPathInterest(tokens[2]);
        for (int i = 0; i < 100; ++i)
            Note("late"); // one into the slot ahead, the others behind the end of this pass
        ovCancelPathInterest(tokens[0]);
    }));
    tokens.push_back(Note("second"));
    tokens.push_back(Note("third"));
    EXPECT_EQ("canceller second late", Ring());
}

TEST_F(Interest, ThatThrowsStopsNobody) {
    ovRegisterPathInterest(path, [](ovEventType, ovDir) { throw std::runtime_error("no"); });
    ovRegisterPathInterest(path, [](ovEventType, ovDir) { throw 7; });
    Note("next");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ("next", Ring()) << "they stay registered";
    EXPECT_EQ("", TakeMessages());
}

TEST_F(Interest, OnARemovedPathIsNone) {
    const ovRegisteredInterest token = Note("a");
    ovRemovePath(path);
    EXPECT_EQ("a", Join(called)) << "removal itself is told, once";
    ovCancelPathInterest(token);
    for (const ovPath& none : {path, ovPath()})
        EXPECT_TRUE(ovRegisterPathInterest(none, [](ovEventType, ovDir) {}).m_path == nullptr);
}

} // namespace
