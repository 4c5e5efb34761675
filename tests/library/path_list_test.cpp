#include "support/path_fixture.hpp"

namespace {

class PathList : public PathFixture {
  protected:
    PathList() { disk.Put("C:", "A/ { f.sv } B/ { f.sv } D/ { f.sv }"); }
    std::string Replace(const std::string& directories) {
        const bool changed = ovReplacePath(path, U(directories));
        CheckIndex();
        return PathText(path) + (changed ? " (changed)" : "");
    }
};

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
    Add("C:/A");
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(Add("C:\\A", ovDirAddAtBegin)))
        << "on the path already, and silent";
    EXPECT_EQ("C:\\cwd; C:\\A", PathText(path));
    EXPECT_EQ("", TakeMessages());
}

TEST_F(PathList, MakesRelativeNamesAbsolute) {
    const std::string here = N(fl::filesystem::current_path());
    disk.Put(here + "\\rel", "");
    EXPECT_EQ(here + "\\rel", N(ovGetDirName(Add("sub\\..\\rel"))));
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

TEST_F(PathList, LosesWhatIsRemovedByNameOrExistsNoLonger) {
    disk.Put("C:\\A", "@C/");
    for (const char* name : {"C:\\A", "C:\\B", "C:\\D"})
        Add(name);
    for (const ovDir& kept : {ovGetCWD(path), Find("C:\\A\\@C"), ovGetNullDir(path), ovDir()})
        ovRemoveDir(kept);
    EXPECT_EQ("C:\\cwd; C:\\A; C:\\B; C:\\D", PathText(path));
    path->RemoveDirByName(u"C:/A");
    for (const char* name : {"C:\\D", "C:\\cwd"})
        disk.dirs.erase(name);
    ovDeleteNonExistentDirectories(path);
    EXPECT_EQ("C:\\cwd; C:\\B", PathText(path));
}

TEST_F(PathList, RanksDirectoriesByTheirPathEntry) {
    disk.Put("C:", "A/ { @C/ } B/ { @C/ }");
    Add("C:\\A"), Add("C:\\B");
    const auto first = [&](const char* a, const char* b) {
        return N(ovGetDirName(ovSelectDirFirstOnPath(Find(a), Find(b))));
    };
    EXPECT_EQ("C:\\A\\@C", first("C:\\B\\@C", "C:\\A\\@C"));
    EXPECT_EQ("C:\\A", first("C:\\A", "C:\\A\\@C")) << "a tie gives the first";
    EXPECT_EQ("C:\\A\\@C", first("C:\\A\\@C", "C:\\A"));
    EXPECT_EQ("", first("C:\\A", "")) << "the null record comes before all";
}

TEST_F(PathList, FindsRecordsByFullNameUnderThePathsRule) {
    disk.Put("C:", "A/ { @C/ +p/ sub/ } B/ { @C/ private/ }");
    disk.Put("C:\\", "");
    Add("C:\\A"), Add("C:\\");
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(Find("C:\\A\\sub"))) << "a plain sub-directory has no record";
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(Find("C:\\"))) << "a root is never found";
    EXPECT_EQ(ovDirTypePath, ovGetDirType(ovFindDirFullName(path, "C:/A")));
    const auto type = [&](const char16_t* name, ovDirType asked) {
        PathItemInfo* found = path->FindDirFullName(name, asked);
        return found ? static_cast<int>(found->GetItemClass()) : -1;
    };
    EXPECT_EQ(static_cast<int>(ItemClass::SubDir), type(u"C:\\A\\sub", ovDirTypeNull));
    EXPECT_EQ(-1, type(u"C:\\A\\sub", ovDirTypePath));
    EXPECT_EQ(-1, type(u"C:\\A\\C", ovDirTypeClass)) << "the sentinel is needed";
    EXPECT_EQ(static_cast<int>(ItemClass::PackageDir), type(u"C:\\A\\+p", ovDirTypePackage));
    EXPECT_EQ(-1, type(u"C:\\A\\+p", static_cast<ovDirType>(7)));

    ovPath blind = NewPath("blind", ovCaseInsensitive);
    const ovDir b = ovAddDir(blind, "C:\\B", ovDirAddAtEnd);
    EXPECT_EQ("C:\\B\\@C", N(ovGetDirName(ovFindDirFullName(blind, "c:\\b\\@c"))));
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(ovAddDir(blind, "c:\\b", ovDirAddAtEnd))) << "on the path already";
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
