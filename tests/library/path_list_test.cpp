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
    const std::string relative = N(fl::filesystem::current_path()) + "\\rel";
    disk.Put(relative, ""), disk.Put("C:\\A\\..\\B", "");
    Add("sub\\..\\rel"), Add("C:\\A\\..\\B");
    EXPECT_EQ("C:\\cwd; C:\\A; " + relative + "; C:\\A\\..\\B", PathText(path))
        << "only what is relative is made absolute";
    EXPECT_EQ("", TakeMessages());
}

TEST_F(PathList, StopsAtANameThatIsTooLongAndTellsWhatChangesInOrder) {
    const std::string longest = "C:\\" + std::string(1021, 'x');
    Replace("C:\\A;C:\\B");
    TakeMessages();
    EXPECT_EQ("C:\\cwd; C:\\A; C:\\B; C:\\D (changed)", Replace("C:\\D;" + longest + "y;C:\\A"));
    EXPECT_EQ(MessageText('W', "directoryNameTooLong", {U(longest + "y")}), TakeMessages());
    disk.Put(longest, "");
    Listen();
    EXPECT_EQ("C:\\cwd; " + longest + " (changed)", Replace(longest));
    EXPECT_EQ("ReplaceBegin | Added " + longest +
                  " | Removed C:\\A | Removed C:\\B | Removed C:\\D | ReplaceEnd",
              TakeEvents());
}

TEST_F(PathList, LosesWhatIsRemovedByNameOrExistsNoLonger) {
    disk.Put("C:\\A", "@C/");
    Replace("C:\\A;C:\\B;C:\\D");
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
    disk.Put("C:", "A/ { +p/ sub/ } B/ { @C/ private/ }");
    disk.Put("C:\\", "");
    Add("C:\\A"), Add("C:\\");
    for (const char* name : {"C:\\A\\sub", "C:\\"}) // has no record; is a root
        EXPECT_EQ(ovDirTypeNull, ovGetDirType(Find(name)));
    EXPECT_EQ(ovDirTypePath, ovGetDirType(ovFindDirFullName(path, "C:/A")));
    const std::tuple<const char16_t*, ovDirType, int> rows[] = {
        {u"C:\\A\\sub", ovDirTypeNull, static_cast<int>(ItemClass::SubDir)},
        {u"C:\\A\\sub", ovDirTypePath, -1},
        {u"C:\\A\\p", ovDirTypePackage, -1}, // the sentinel is needed
        {u"C:\\A\\+p", ovDirTypePackage, static_cast<int>(ItemClass::PackageDir)},
        {u"C:\\A\\+p", static_cast<ovDirType>(7), -1},
    };
    for (const auto& [name, asked, itemClass] : rows) {
        const PathItemInfo* found = path->FindDirFullName(name, asked);
        EXPECT_EQ(itemClass, found ? static_cast<int>(found->GetItemClass()) : -1) << N(name) << asked;
    }
    ovPath blind = NewPath("blind", ovCaseInsensitive);
    const ovDir b = ovAddDir(blind, "C:\\B", ovDirAddAtEnd);
    EXPECT_EQ("C:\\B\\@C", N(ovGetDirName(ovFindDirFullName(blind, "c:\\b\\@c"))));
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(ovAddDir(blind, "c:\\b", ovDirAddAtEnd))) << "on the path already";
    EXPECT_EQ(b->GetPrivateDir(), blind->FindDirFullName(u"C:\\B\\PRIVATE", ovDirTypePrivate))
        << "asked for by type, the leaf is not looked at";
}

TEST_F(PathList, HoldsTheCurrentDirectoryASecondTime) {
    const ovDir second = Add("C:\\cwd");
    EXPECT_TRUE(ovIsPathDirAlsoCWD(second) && ovIsCWDOnPath(path));
    EXPECT_FALSE(ovIsPathDirAlsoCWD(ovGetCWD(path)));
    EXPECT_EQ(*second, path->FindPathDir(u"C:\\cwd", DirScope::Path));
    EXPECT_EQ(*ovGetCWD(path), path->FindPathDir(u"C:\\cwd", DirScope::Any));
}

} // namespace
