#include <cstring>

#include <gtest/gtest.h>
#include <ovsel/names.hpp>

#include "host_interfaces/filesystem.hpp"
#include "linux_host/linux_host.hpp"
#include "ovsel/names/pathnormalizer.hpp"
#include "tests/support/fake_platform.hpp"
#include "tests/support/texts.hpp"

namespace {

using Texts = std::vector<std::string>;

TEST(JoinedNames, GetOneSeparatorInBothForms) {
    for (const char* row :
         {R"(C:\a | b | C:\a\b)", R"(C:\a\ | \b | C:\a\b)", R"(C:\a/ | //b | C:\a//b)",
          R"(C:\a | //b | C:\a\/b)", R"( | \b | \b)", R"( | /b | /b)", R"(a\\ | b | a\\b)", R"(a |  | a\)",
          R"(C: | b | C:\b)", R"(é | b | é\b)", R"(a\ | C:\b | a\C:\b)", " |  | "}) {
        const Texts fields = Fields(row);
        ustring wide = U(fields[0]);
        char subdir[64], combined[64];
        std::strcpy(subdir, fields[0].c_str());
        std::memset(combined, '\\', sizeof combined); // what the buffer held before must not matter
        ovConcatPathSubdir(wide, U(fields[1]));
        EXPECT_EQ((Texts{N(wide), ovConcatPathSubdir(subdir, fields[1].c_str()),
                         ovCombinePathName(combined, fields[0].c_str(), fields[1].c_str())}),
                  Texts(3, fields[2]))
            << row;
    }
    ustring self = u"/ab";
    ovConcatPathName(self, self);
    EXPECT_EQ(self, u"/ab\\ab");
}

TEST(JoinedNames, TakeTheSecondByteOfACharacterForNoSeparator) {
    FakePlatform platform;
    platform.isLeadByte = [](unsigned char c) { return c == 0x81; };
    char name[16] = "a\x81\\";
    EXPECT_STREQ(ovConcatPathName(name, "b"), "a\x81\\\\b");
    EXPECT_TRUE(ovIsPathNameSep(name, name + 3) && ovIsPathNameSep(u'\\'));
    EXPECT_FALSE(ovIsPathNameSep(name, name + 2) || ovIsPathNameSep("/", "/") || ovIsPathNameSep(u'/'));
}

TEST(CombinedDirectory, TakesARootedNameAlone) {
    for (const char* row :
         {R"(C:\a | b | C:\a\b)", R"(C:\a\ | b | C:\a\\b)", R"(C:\a | ..\b | ..\b)", R"(C:\a | .x | C:\a\.x)",
          R"(C:\a | D:b | D:b)", R"(C:\a | /b | C:\a\/b)", R"(C:\a | \b | \b)", R"(C:\a | .\b | .\b)",
          R"(C:\a | .. | C:\a\..)", R"(C:\a | 1:b | C:\a\1:b)", R"( | b | \b)"}) {
        const Texts fields = Fields(row);
        char dst[1281];
        ASSERT_TRUE(ovCombineDirectory(dst, fields[0].c_str(), fields[1].c_str()));
        EXPECT_EQ(dst, fields[2]) << row;
    }
}

TEST(CombinedDirectory, HoldsAtMost1280Bytes) {
    const std::string base(1000, 'a'), untouched(1281, '#');
    for (const std::string& name : {std::string(279, 'b'), "\\" + std::string(1279, 'b')}) {
        std::string dst = untouched;
        EXPECT_FALSE(ovCombineDirectory(dst.data(), base.c_str(), (name + "b").c_str()));
        EXPECT_EQ(dst, untouched);
        EXPECT_TRUE(ovCombineDirectory(dst.data(), base.c_str(), name.c_str()));
        EXPECT_EQ(std::strlen(dst.c_str()), 1280U);
    }
}

TEST(SeparatedNames, AreTwoPartsOfTheName) {
    for (const char* row : {R"(C:\a\b.sv | C:\a | b.sv)", R"(C:\a | C:\ | a)", R"(C:\ | C:\ | )",
                            "C:a | C | a", "xy:a | xy | a", R"(\a | \ | a)", R"(\\srv\share | \\srv | share)",
                            R"(a\b\ | a\b | )", "abc |  | abc", "C:/a/b | C:/a | b", ":a | : | a", " |  | ",
                            "xy::a | xy:: | a", R"(:\a | : | a)", R"(C:\é\€ | C:\é | €)"}) {
        const Texts fields = Fields(row);
        const char* full = fields[0].c_str();
        char dir[64] = "old";
        const char* file = ovSeparatePathName(full, dir);
        EXPECT_EQ((Texts{full, dir, file}), fields);
        EXPECT_EQ(file, full + fields[0].size() - fields[2].size()) << "a pointer into the name";
        EXPECT_EQ(ovSeparatePathName(full, nullptr), file);
    }
    char root[] = "C:\\a", dir[] = "old";
    EXPECT_STREQ(ovSeparatePathName(root, root), "") << "the terminator falls on the file part";
    EXPECT_EQ(ovSeparatePathName(nullptr, dir), nullptr);
    EXPECT_STREQ(dir, "");
    EXPECT_FALSE(ovIsPrivateDirName(nullptr));
}

TEST(Extensions, BeginAtTheLastDotOfTheLastElement) {
    for (const char* row :
         {R"(a.b\c | -1 | a.b\c!)", "a.b.sv | 3 | a.b!", R"(\.sv | 1 | \!)", ".abc | 0 | !", " | -1 | !",
          "abc | -1 | abc!", "a. | 1 | a!", "a.b/c | -1 | a.b/c!", "a.b:c | -1 | a.b:c!", ":a.b | 2 | :a!"}) {
        const Texts fields = Fields(row);
        const char* name = fields[0].c_str();
        char changed[32];
        ovChangeFileExtension(name, changed, "!");
        EXPECT_EQ((Texts{name, std::to_string(ovFindFileExt(name)), changed}), fields);
    }
    EXPECT_EQ(ovFindFileExt(static_cast<const char*>(nullptr)), -1);
    EXPECT_EQ(ovFindFileExt(static_cast<const char16_t*>(nullptr)), u"");
    EXPECT_EQ(ovFindFileExt(u"a.b/c.d.sv"), u".sv");
    EXPECT_EQ(ovFindFileExt(u"") + ovFindFileExt(u"a.b/c"), u"");
}

TEST(LastElement, KeepsItsExtensionInThePlainFormOnly) {
    for (const char* row : {R"(C:\a\b.sv\ | b.sv)", R"(C:\a\b.sv | b.sv)", "a/b | a/b", R"(\a | a)",
                            R"(\ | )", R"(\\ | )", R"(a\\ | )", " | "}) {
        const Texts fields = Fields(row);
        char dst[32] = "old";
        EXPECT_EQ(ovExtractSubdir(dst, fields[0].c_str()), fields[1]) << row;
    }
    char dst[] = "old";
    EXPECT_STREQ(ovExtractSubdir(dst, nullptr), "");
    EXPECT_EQ(ovExtractSubdir(nullptr, "a"), nullptr);
    EXPECT_EQ(ovExtractSubdir(u"C:\\a/b.sv\\"), fl::filesystem::extract_stem(u"C:\\a\\b.sv\\"));
    EXPECT_EQ(ovExtractSubdir(u"a/b.c.sv"), u"b.c");
    EXPECT_EQ(ovExtractSubdir(u""), u"");
}

TEST(AbsoluteNames, AreJudgedByEachFormsOwnRule) {
    for (const char* row :
         {R"(C:\a | 11)", "C:/a | 11", R"(\\s\h | 11)", "//s/h | 10", "C: | 01", "C:a | 01", R"(\\s | 01)",
          R"(\a | 00)", "/a | 00", "a | 00", " | 00", R"(1:\a | 00)"}) { // wide, plain
        const std::string name = Fields(row)[0];
        EXPECT_EQ(std::to_string(ovIsAbsolutePath(U(name))) + std::to_string(ovIsAbsolutePath(name.c_str())),
                  Fields(row)[1])
            << row;
    }
}

TEST(AbsoluteNames, AreNormalisedByText) {
    const char* const tilde = "~";
    EXPECT_EQ(ovTildeExpansion(nullptr, tilde), tilde) << "an ordinary character";
    EXPECT_EQ(ovTildeExpansion(u"~\\a"), u"~\\a");
    for (const char* row : {R"(C:\..\a | C:\a)", R"(C:\a\..\b | C:\b)", R"(C:\a\.\b\ | C:\a\b)",
                            R"(C:\a\\b | C:\a\b)", R"(C:\ | C:\)", R"(C:\a\..\..\..\b | C:\b)",
                            R"(\\s\h\..\a | \\s\h\a)", R"(\\s\h | \\s\h\)", R"(C:\...\.a | C:\...\.a)"}) {
        const ustring name = U(Fields(row)[0]);
        EXPECT_EQ(N(PathNormalizer(name).Normalize()), Fields(row)[1]) << row;
    }
    const ustring server = u"\\\\server";
    EXPECT_THROW(PathNormalizer(server).Normalize(), ovsel::incorrect_root_exception);
}

TEST(FullPath, ExpandsRelativeNamesThatExistAndLeavesAbsoluteOnesAlone) {
    ustring here = u"a/../.", dst = u"old";
    EXPECT_TRUE(ovFullPath(here, here));
    EXPECT_EQ(here, fl::filesystem::current_path());
    EXPECT_FALSE(ovFullPath(dst, ustring(5000, u'a'))); // the filesystem layer fails
    EXPECT_EQ(dst, u"old");
    for (const char16_t* name : {u"C:\\x/..\\no such name", u"no such name", u"\\\\server"}) {
        EXPECT_EQ(ovFullPath(dst, name), *name == u'C');
        EXPECT_EQ(dst, *name == u'C' ? name : u"");
    }
}

TEST(FullPath, InThePlainFormIsThePlatformsUnlessRooted) {
    FakePlatform platform;
    platform.fullPaths = {{u"a", u"C:\\\u00e9"}};
    char dst[] = "########";
    EXPECT_EQ(ovFullPath(dst, "a", 5), nullptr) << "five bytes, but no room for the terminator";
    EXPECT_EQ(ovFullPath(dst, "unknown", 8), nullptr);
    EXPECT_STREQ(dst, "########");
    EXPECT_STREQ(ovFullPath(dst, "a", 6), "C:\\\xC3\xA9");
    EXPECT_EQ(std::string(ovFullPath(dst, "C:..", 3), 4), "C:.\xC3") << "cut to the size, no terminator";
    EXPECT_STREQ(ovFullPath(dst, "\\\\s", 8), "\\\\s");
    EXPECT_EQ(platform.calls["FullPath"], 3);
}

TEST(RemoteNames, AreRememberedByTheirRootOnlyWhenRemote) {
    FakePlatform platform;
    platform.driveTypes = {{u"W:\\", host::DriveRemote}, {u"X:\\", host::DriveRemote}};
    for (const char16_t* name : {u"W:\\", u"X:\\a", u"X:\\b\\c", u"Y:\\a", u"x:\\a", u"\\\\s\\h\\a"})
        platform.fullPaths[name] = name;
    platform.fullPaths[u"fits"] = u"X:\\" + ustring(256, u'a');
    platform.fullPaths[u"long"] = u"X:\\" + ustring(257, u'a');
    EXPECT_TRUE(ovIsWinPathRemote(u"W:\\")); // the process may remember X: from elsewhere
    platform.calls.clear();
    std::string answers;
    for (const char16_t* name : {u"X:\\a", u"X:\\b\\c", u"fits", u"long", u"Y:\\a", u"Y:\\a", u"x:\\a",
                                 u"\\\\s\\h\\a", u"unknown", u"X:\\a"})
        answers += ovIsWinPathRemote(name) ? '1' : '0';
    EXPECT_EQ(answers, "1110000101");
    EXPECT_EQ(platform.calls["GetDriveType"], 4) << "X: once, Y: twice, x: once";
}

TEST(CurrentPathName, BelongsToTheScope) {
    const std::size_t before = linux_host::EnterScope(71);
    const char name[] = "main";
    std::string exists;
    const auto ask = [&] { exists += std::to_string(ovCurrentPathExists()); };
    ask(), ovSetDefaultPathname(name);
    EXPECT_EQ(ovGetCurrentPathname(), name);
    EXPECT_EQ(ovGetCurrentPathname_u(), u"main");
    linux_host::EnterScope(72), ask();
    linux_host::EnterScope(71), ask();
    ovSetCurrentPathname(nullptr), ask();
    ovSetDefaultPathname(name), ask();
    EXPECT_EQ(exists, "00101") << "unset, other scope, set, null, set again";
    linux_host::EnterScope(before);
    linux_host::DestroyScope(71);
}

} // namespace
