#include "support/path_fixture.hpp"

namespace {

class Handles : public PathFixture {};

TEST_F(Handles, CopiedOntoThemselvesBecomeNullAndLetGo) {
    disk.Put("C:\\A", "");
    ovDir dir = Add("C:\\A");
    ovDir& sameDir = dir;
    dir = sameDir;
    EXPECT_EQ(nullptr, *dir);
    ovPath only = NewPath("only");
    ovPath& samePath = only;
    only.copy(samePath);
    EXPECT_TRUE(only == nullptr && ovLookupPath("only") == nullptr) << "the last handle has gone";
}

TEST_F(Handles, OfWhatHasBeenRemovedStaySafeAndInvalid) {
    disk.Put("C:\\A", "a.sv");
    const ovDir dir = Add("C:\\A"), other(dir), kept = ovGetCWD(path);
    EXPECT_TRUE(ovIsDirHandleValid(dir));
    ovRemoveDir(dir);
    EXPECT_TRUE(!ovIsDirHandleValid(dir) && ovIsSameDir(dir, other));
    ovRemoveDir(dir); // silent

    ovRemovePath(path);
    IPathManager* manager = *path;
    EXPECT_TRUE(ovPath(manager) == nullptr) << "no new handle";
    ovPath assigned;
    assigned = manager;
    EXPECT_TRUE(assigned == manager && !assigned->IsValid());
    path = assigned = ovPath();
    EXPECT_FALSE(ovIsDirHandleValid(kept) || ovIsDirHandleValid(ovDir()));
}

TEST_F(Handles, TellKindNameAndPlace) {
    disk.Put("C:\\A", "+p/ { @D/ { private/ } }");
    disk.Put("C:\\", "");
    const ovDir dir = Add("C:\\A");
    Add("C:\\");
    for (const char* row :
         {"C:\\cwd | 1 | cwd | ", "C:\\A | 2 | A | ", "C:\\A\\+p | 3 | p | C:\\A",
          "C:\\A\\+p\\@D | 4 | D | C:\\A\\+p", "C:\\A\\+p\\@D\\private | 5 | private | C:\\A\\+p\\@D"}) {
        const ovDir found = Find(Fields(row)[0]);
        EXPECT_EQ(row, Join({N(ovGetDirName(found)), std::to_string(ovGetDirType(found)),
                             N(ovGetBaseDirName(found)), N(ovGetDirName(ovGetParentDir(found)))}));
        EXPECT_EQ(*found,
                  path->FindDirOfType(ovGetDirName(found), ovGetBaseDirName(found), ovGetDirType(found)));
        EXPECT_EQ(Fields(row)[0].starts_with("C:\\A"), ovIsSameDir(dir, ovGetPathDir(found))) << row;
    }
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(Find("C:\\A\\+\xc3\xb6\\@D")));
    EXPECT_EQ("C:\\", N(ovGetBaseDirName(ovGetNextPathDir(dir)))) << "a root is called by its whole name";

    char buffer[32];
    EXPECT_STREQ("C:\\A", ovGetDirName(dir, buffer));
    EXPECT_EQ(4, ovGetDirNameLen(dir));
    EXPECT_STREQ("", ovGetDirName(ovGetNullDir(path), buffer));
    EXPECT_EQ(u"", ovGetBaseDirName(ovGetNullDir(path)) + ovGetDirName(ovGetParentDir(dir)));
    EXPECT_TRUE(ovIsAbsoluteDir(dir));
    EXPECT_TRUE(*ovGetPathOfDir(dir) == *path);
}

TEST_F(Handles, OfNestedDirectoriesFindTheirOwnPathDirectory) {
    // Names that end in `private` many times are found by a loop, and a current directory may be called that.
    disk.Put("C:\\cwd\\private", "private/ { f.sv }");
    ASSERT_EQ(nullptr, ovSetCWDName(path, u"C:\\cwd\\private"));
    for (const ovDirType type : {ovDirTypeCWD, ovDirTypePrivate, ovDirTypeNull}) {
        static std::string name = "C:\\cwd";
        EXPECT_EQ(type, ovGetDirType(Find(name += "\\private")));
    }
    std::string deep = "C:\\cwd";
    for (int i = 0; i < 100000; ++i)
        deep += "\\private";
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(Find(deep)));
}

} // namespace
