#include "support/path_fixture.hpp"

#include "support/fake_platform.hpp"

namespace {

class PathList : public PathFixture {
  protected:
    PathList() {
        for (const char* name : {"A", "B", "D"})
            disk.Put(std::string("C:\\") + name, "f.sv");
    }
    std::string Replace(const std::string& directories) {
        const bool changed = ovReplacePath(path, U(directories));
        CheckIndex();
        return PathText(path) + (changed ? " (changed)" : "");
    }
};

TEST_F(PathList, LeavesADirectoryWhereItIs) {
    Add("C:\\B"), Add("C:/D");
    const int listings = disk.listings;
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(Add("C:\\D", ovDirAddAtBegin)));
    EXPECT_EQ("C:\\cwd; C:\\B; C:\\D", PathText(path));
    EXPECT_EQ(listings, disk.listings);
    EXPECT_EQ("", TakeMessages());
}

TEST_F(PathList, RefusesWhatCannotStandOnIt) {
    disk.accessibility = {{"C:\\denied", ovDirPermissionDenied},
                          {"C:\\broken", ovDirAccessFailure},
                          {"C:\\odd", static_cast<ovDirAccessibility>(2)}};
    const std::pair<const char*, const char*> rows[] = {
        {"C:\\A\\@C", "methodDirectoriesNotAllowedOnPath"},
        {"C:\\@C\\sub", "methodDirectoriesNotAllowedOnPath"},
        {"C:\\A\\+p", "packageDirectoriesNotAllowedOnPath"},
        {"C:\\A\\private", "privateDirectoriesNotAllowedOnPath"},
        {"C:\\A\\Private", "nameNonexistentOrNotADirectory"},
        {"C:\\denied", "directoryPermissionDenied"},
        {"C:\\nowhere", "nameNonexistentOrNotADirectory"},
        {"C:\\broken", "directoryAccessFailure"},
        {"C:\\odd", "directoryAccessFailure"},
        {"\\\\server", "nameNonexistentOrNotADirectory"},
        {"", nullptr}, // silent
    };
    for (const auto& [name, warning] : rows) {
        EXPECT_EQ(ovDirTypeNull, ovGetDirType(Add(name))) << name;
        EXPECT_EQ(warning ? MessageText('W', warning, {U(name)}) : "", TakeMessages()) << name;
    }
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(ovAddDir(path, static_cast<const char*>(nullptr), ovDirAddAtEnd)));
    EXPECT_EQ("C:\\cwd", PathText(path));
}

TEST_F(PathList, MakesRelativeNamesAbsolute) {
    const std::string here = N(fl::filesystem::current_path());
    disk.Put(here + "\\rel", "");
    EXPECT_EQ(here + "\\rel", N(ovGetDirName(Add("sub\\..\\rel"))));
    EXPECT_EQ("C:\\A", N(ovGetDirName(Add("C:\\A"))));
    disk.Put("C:\\A\\..\\B", "");
    EXPECT_EQ("C:\\A\\..\\B", N(ovGetDirName(Add("C:\\A\\..\\B")))) << "an absolute name is kept as given";
}

TEST_F(PathList, IsReplacedKeepingWhatItKnows) {
    const std::tuple<const char*, const char*, int> rows[] = {
        {"C:\\A;;C:\\B;", "C:\\cwd; C:\\A; C:\\B (changed)", 2},
        {"C:\\B;C:\\A", "C:\\cwd; C:\\B; C:\\A", 0},
        {"C:\\A;C:\\B;C:\\A", "C:\\cwd; C:\\A; C:\\B (changed)", 0},
        {"C:\\D;C:\\B", "C:\\cwd; C:\\D; C:\\B (changed)", 1},
        {"C:/B;C:/D", "C:\\cwd; C:\\B; C:\\D", 0},
        {"C:\\nowhere;C:\\D", "C:\\cwd; C:\\D (changed)", 0},
        {"C:\\nowhere;C:\\D", "C:\\cwd; C:\\D (changed)", 0},
        {";;", "C:\\cwd (changed)", 0},
        {"", "C:\\cwd", 0},
    };
    for (const auto& [directories, result, listings] : rows) {
        const int before = disk.listings;
        EXPECT_EQ(result, Replace(directories)) << directories;
        EXPECT_EQ(listings, disk.listings - before) << directories;
    }
}

TEST_F(PathList, StopsAtANameThatIsTooLong) {
    const std::string longest = "C:\\" + std::string(1021, 'x');
    Replace("C:\\A;C:\\B");
    TakeMessages();
    EXPECT_EQ("C:\\cwd; C:\\A; C:\\B; C:\\D (changed)", Replace("C:\\D;" + longest + "y;C:\\A"));
    EXPECT_EQ(MessageText('W', "directoryNameTooLong", {U(longest + "y")}), TakeMessages());
    disk.Put(longest, "");
    EXPECT_EQ("C:\\cwd; " + longest + " (changed)", Replace(longest));
}

TEST_F(PathList, TellsWhatChangesInOrder) {
    Add("C:\\A");
    Listen();
    Replace("C:\\B;C:\\nowhere");
    EXPECT_EQ("ReplaceBegin | Added C:\\B | Removed C:\\A | ReplaceEnd", TakeEvents());
}

TEST_F(PathList, KeepsCurrentAndNestedDirectoriesFromRemoval) {
    disk.Put("C:\\A", "@C/");
    Add("C:\\A");
    ovRemoveDir(ovGetCWD(path));
    ovRemoveDir(Find("C:\\A\\@C"));
    ovRemoveDir(ovGetNullDir(path));
    ovRemoveDir(ovDir());
    EXPECT_EQ("C:\\cwd; C:\\A", PathText(path));
    path->RemoveDirByName(u"C:/A");
    EXPECT_EQ("C:\\cwd", PathText(path));
}

TEST_F(PathList, DropsWhatExistsNoLonger) {
    for (const char* name : {"C:\\A", "C:\\B", "C:\\D"})
        Add(name);
    for (const char* name : {"C:\\A", "C:\\D", "C:\\cwd"})
        disk.dirs.erase(name);
    ovDeleteNonExistentDirectories(path);
    EXPECT_EQ("C:\\cwd; C:\\B", PathText(path));
}

TEST_F(PathList, RanksDirectoriesByTheirPathEntry) {
    disk.Put("C:\\A", "@C/"), disk.Put("C:\\B", "@C/");
    const ovDir a = Add("C:\\A"), b = Add("C:\\B");
    const ovDir aC = Find("C:\\A\\@C"), bC = Find("C:\\B\\@C");
    EXPECT_TRUE(ovIsSameDir(aC, ovSelectDirFirstOnPath(bC, aC)));
    EXPECT_TRUE(ovIsSameDir(a, ovSelectDirFirstOnPath(a, aC))) << "a tie gives the first";
    EXPECT_TRUE(ovIsSameDir(aC, ovSelectDirFirstOnPath(aC, a)));
    EXPECT_TRUE(ovIsSameDir(b, ovSelectDirFirstOnPath(b, b)));
    EXPECT_TRUE(ovIsSameDir(ovGetNullDir(path), ovSelectDirFirstOnPath(a, ovGetNullDir(path))));
}

TEST_F(PathList, FindsRecordsByFullNameUnderThePathsRule) {
    disk.Put("C:\\A", "@C/ +p/ sub/");
    disk.Put("C:\\", "");
    Add("C:\\A"), Add("C:\\");
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(Find("C:\\A\\sub"))) << "a plain sub-directory has no record";
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(Find("C:\\"))) << "a root is never found";
    EXPECT_EQ(ovDirTypePath, ovGetDirType(ovFindDirFullName(path, "C:/A")));
    ovPath blind = NewPath("blind", ovCaseInsensitive);
    ovAddDir(blind, "C:\\A", ovDirAddAtEnd);
    EXPECT_EQ("C:\\A\\@C", N(ovGetDirName(ovFindDirFullName(blind, "c:\\a\\@c"))));
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(ovAddDir(blind, "c:\\a", ovDirAddAtEnd))) << "on the path already";

    const auto type = [&](const char16_t* name, ovDirType asked) {
        PathItemInfo* found = path->FindDirFullName(name, asked);
        return found ? static_cast<int>(found->GetItemClass()) : -1;
    };
    EXPECT_EQ(static_cast<int>(ItemClass::SubDir), type(u"C:\\A\\sub", ovDirTypeNull));
    EXPECT_EQ(-1, type(u"C:\\A\\sub", ovDirTypePath));
    EXPECT_EQ(-1, type(u"C:\\A\\C", ovDirTypeClass)) << "the sentinel is needed";
    EXPECT_EQ(static_cast<int>(ItemClass::PackageDir), type(u"C:\\A\\+p", ovDirTypePackage));
    EXPECT_EQ(-1, type(u"C:\\A\\+p", static_cast<ovDirType>(7)));
    disk.Put("C:\\B", "private/");
    const ovDir b = ovAddDir(blind, "C:\\B", ovDirAddAtEnd);
    EXPECT_EQ(b->GetPrivateDir(), blind->FindDirFullName(u"C:\\B\\PRIVATE", ovDirTypePrivate))
        << "asked for by type, the leaf is not looked at";
}

TEST_F(PathList, HoldsTheCurrentDirectoryASecondTime) {
    const ovDir second = Add("C:\\cwd");
    EXPECT_TRUE(ovIsPathDirAlsoCWD(second));
    EXPECT_FALSE(ovIsPathDirAlsoCWD(ovGetCWD(path)));
    EXPECT_NE(path->FindPathDir(u"C:\\cwd", DirScope::CWD), path->FindPathDir(u"C:\\cwd", DirScope::Path));
    EXPECT_EQ(path->FindPathDir(u"C:\\cwd", DirScope::CWD), path->FindPathDir(u"C:\\cwd", DirScope::Any));
    EXPECT_TRUE(ovIsCWDOnPath(path));
}

} // namespace
