#include "support/path_fixture.hpp"

#include "host_interfaces/diagnostics.hpp"
#include "support/temp_tree.hpp"

#include <stdexcept>

namespace {

class CurrentDirectory : public PathFixture {
  protected:
    CurrentDirectory() {
        disk.Put("C:", "cwd/ { f.sv @C/ { private/ } } A/ { f.sv }");
        EXPECT_EQ(nullptr, ovSetCWDName(path, u"C:\\cwd"));
    }
    std::string Change(const std::string& name) {
        const char* error = ovSetCWDName(path, name.c_str());
        CheckIndex();
        return error ? error : N(ovGetCWDName(path));
    }
};

TEST_F(CurrentDirectory, AnswersEveryBadNameWithItsText) {
    disk.accessibility = {{"C:\\denied", ovDirPermissionDenied}, {"C:\\broken", ovDirAccessFailure}};
    const std::string longest = "C:\\" + std::string(1021, 'x');
    disk.Put(longest, "");
    const std::pair<std::string, std::string> rows[] = {
        {"", "No directory specified"},
        {"C:\\denied", "Directory permission denied"},
        {"C:\\nowhere", "Name is nonexistent or not a directory"},
        {"C:\\broken", "Directory access failure"},
        {longest + "x", "Directory name too long"},
        {longest, longest},
        {"C:/A", "C:\\A"},
    };
    for (const auto& [name, result] : rows)
        EXPECT_EQ(result, Change(name)) << name;
    EXPECT_STREQ("No directory specified", ovSetCWDName(path, static_cast<const char*>(nullptr)));
    EXPECT_EQ("C:\\A", N(ovGetCWDName(path))) << "failures change nothing";
    EXPECT_EQ("", TakeMessages()) << "the text is the report";
}

TEST_F(CurrentDirectory, IsCutToTheCallersBufferAndLeftAloneOnARemovedPath) {
    char buffer[16];
    EXPECT_EQ(nullptr, ovGetCWDName(path, buffer, 0));
    for (const auto& [size, text] : {std::pair(4U, "C:\\"), {1U, ""}, {16U, "C:\\cwd"}})
        EXPECT_STREQ(text, ovGetCWDName(path, buffer, size));
    ovRemovePath(path);
    for (const char16_t* name : {u"C:\\nowhere", u""}) // the path is tested before the name
        EXPECT_EQ(nullptr, ovSetCWDName(path, name));
    EXPECT_STREQ("No directory specified", ovSetCWDName(path, static_cast<const char*>(nullptr)));
    EXPECT_EQ(u"", ovGetCWDName(path));
    EXPECT_EQ(nullptr, ovGetCWDName(path, buffer, sizeof buffer));
}

TEST_F(CurrentDirectory, EndsTheProcessOnAnAnswerThatIsNone) {
    disk.accessibility = {{"C:\\odd", static_cast<ovDirAccessibility>(2)}};
    const auto old = host::SetFatalHandler(
        [](const char* text, const char*, int, const char*) { throw std::logic_error(text); });
    try {
        ovSetCWDName(path, u"C:\\odd");
        ADD_FAILURE() << "came back";
    } catch (const std::logic_error& e) {
        EXPECT_STREQ("Unexpected dirAccess identifier to report cd error message", e.what());
    }
    host::SetFatalHandler(old);
}

TEST_F(CurrentDirectory, IsReplacedWhole) {
    const ovDir old = ovGetCWD(path);
    Listen();
    EXPECT_EQ("C:\\cwd", Change("C:\\cwd"));
    EXPECT_EQ(R"(CWDBegin | Removed cwd | Removed cwd\@C | Removed cwd\@C\private | Added cwd\@C\private | )"
              R"(Added cwd\@C | Added cwd | CWDEnd)",
              Short(TakeEvents()));
    EXPECT_FALSE(ovIsDirHandleValid(old));
    EXPECT_EQ("No directory specified", Change(""));
    EXPECT_EQ("", TakeEvents());
}

TEST_F(CurrentDirectory, MayBeMissingFromTheStart) {
    disk.dirs.erase(N(fl::filesystem::current_path()));
    path =
        ovCreatePathWithPreFrozen(0, "homeless", static_cast<const char*>(nullptr), ovCaseSensitive, false);
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(ovGetCWD(path)));
    EXPECT_EQ(u"", ovGetCWDName(path));
    EXPECT_FALSE(ovIsCWDOnPath(path));
    ovHideCWD(path, true), ovHideCWD(path, false);
    Add("C:\\A"), CheckIndex();
    EXPECT_EQ("C:\\A", PathText(path));
    EXPECT_EQ(ovDirTypePath, ovGetDirType(Find("C:\\A"))) << "the slot of the current directory stays free";
    EXPECT_EQ("-1 A\\f.sv", Everywhere(""));
    ovRefreshAllDirectories(path, ovRefreshReload), ovSetAllChanged(path);
    ovDeleteNonExistentDirectories(path);
    EXPECT_TRUE(ovReplacePath(path, u"")), CheckIndex();
    EXPECT_EQ("C:\\cwd", Change("C:\\cwd"));
    EXPECT_EQ("C:\\cwd", PathText(path));
}

/// The path that owns the process's directory, on the real disk.
TEST(ProcessDirectory, FollowsThePathThatOwnsIt) {
    const ustring before = fl::filesystem::current_path();
    FakeDisk& disk = FakeDisk::Get() = FakeDisk();
    test::TempTree tree({"real/", "link -> real"});
    const std::string real = N(fl::filesystem::canonical(U("C:" + tree.Path("real")), u""));
    const std::string link = N(fl::filesystem::make_native_form(U("C:" + tree.Path("link")), true));
    disk.Put(N(before), ""), disk.Put(real, ""), disk.Install();
    ovPath owner = ovCreatePath(0, "owner");
    EXPECT_EQ(before, ovGetCWDName(owner));
    EXPECT_EQ(nullptr, ovSetCWDName(owner, U(link)));
    EXPECT_EQ(real, N(ovGetCWDName(owner))) << "in the operating system's spelling";
    EXPECT_EQ(real, N(fl::filesystem::current_path()));

    EXPECT_STREQ("Name is nonexistent or not a directory", ovSetCWDName(owner, U(real + "\\nowhere")));
    disk.dirs.erase(real);
    EXPECT_STREQ("Name is nonexistent or not a directory", ovSetCWDName(owner, U(real)))
        << "the process is there, the path is not";

    const ovPath second = ovCreatePath(0, "second");
    EXPECT_EQ(nullptr, ovSetCWDName(second, before));
    EXPECT_EQ(real, N(fl::filesystem::current_path())) << "others leave the process alone";
    owner = ovPath();
    fl::filesystem::current_path(before);
}

} // namespace
