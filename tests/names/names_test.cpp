#include <cstring>
#include <functional>

#include <gtest/gtest.h>
#include <ovsel/handles.hpp>
#include <ovsel/names.hpp>

#include "host_interfaces/filesystem.hpp"
#include "linux_host/linux_host.hpp"
#include "ovsel/names/pathnormalizer.hpp"
#include "tests/support/fake_platform.hpp"
#include "tests/support/texts.hpp"

namespace {

using Texts = std::vector<std::string>;

/// Holds each row to what is made of its first fields, all fields together.
void ExpectRows(std::initializer_list<const char*> rows, const std::function<Texts(const Texts&)>& made) {
    for (const char* row : rows)
        EXPECT_EQ(made(Fields(row)), Fields(row)) << row;
}

TEST(JoinedNames, GetOneSeparatorInBothForms) {
    ExpectRows({R"(C:\a | b | C:\a\b)", R"(C:\a\ | \b | C:\a\b)", R"(C:\a/ | //b | C:\a//b)",
                R"(C:\a | //b | C:\a\/b)", R"( | \b | \b)", R"( | /b | /b)", R"(a\\ | b | a\\b)",
                R"(a |  | a\)", R"(C: | b | C:\b)", R"(é | b | é\b)", R"(a\ | C:\b | a\C:\b)", " |  | "},
               [](const Texts& row) {
                   ustring wide = U(row[0]);
                   char subdir[64], combined[64];
                   std::strcpy(subdir, row[0].c_str());
                   std::memset(combined, '\\', sizeof combined); // what it held before must not matter
                   ovConcatPathSubdir(wide, U(row[1]));
                   EXPECT_EQ(N(wide), ovConcatPathSubdir(subdir, row[1].c_str()));
                   EXPECT_EQ(N(wide), ovCombinePathName(combined, row[0].c_str(), row[1].c_str()));
                   return Texts{row[0], row[1], N(wide)};
               });
    ustring self = u"/ab";
    ovConcatPathName(self, self);
    EXPECT_EQ(self, u"/ab\\ab");
}

TEST(CombinedDirectory, TakesARootedNameAloneAndHoldsAtMost1280Bytes) {
    ExpectRows({R"(C:\a | b | C:\a\b)", R"(C:\a\ | b | C:\a\\b)", R"(C:\a | ..\b | ..\b)",
                R"(C:\a | .x | C:\a\.x)", R"(C:\a | D:b | D:b)", R"(C:\a | /b | C:\a\/b)",
                R"(C:\a | \b | \b)", R"(C:\a | .\b | .\b)", R"(C:\a | .. | C:\a\..)",
                R"(C:\a | 1:b | C:\a\1:b)", R"( | b | \b)"},
               [](const Texts& row) {
                   char dst[1281];
                   EXPECT_TRUE(ovCombineDirectory(dst, row[0].c_str(), row[1].c_str()));
                   return Texts{row[0], row[1], dst};
               });
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
    ExpectRows({R"(C:\a\b.sv | C:\a | b.sv)", R"(C:\a | C:\ | a)", R"(C:\ | C:\ | )", "C:a | C | a",
                "xy:a | xy | a", R"(\a | \ | a)", R"(\\srv\share | \\srv | share)", R"(a\b\ | a\b | )",
                "abc |  | abc", "C:/a/b | C:/a | b", ":a | : | a", " |  | ", "xy::a | xy:: | a",
                R"(:\a | : | a)", R"(C:\é\€ | C:\é | €)"},
               [](const Texts& row) {
                   char dir[64] = "old";
                   const char* file = ovSeparatePathName(row[0].c_str(), dir);
                   EXPECT_EQ(file, row[0].c_str() + row[0].size() - row[2].size()) << "a pointer into it";
                   EXPECT_EQ(ovSeparatePathName(row[0].c_str(), nullptr), file);
                   return Texts{row[0], dir, file};
               });
    char root[] = "C:\\a", dir[] = "old";
    EXPECT_STREQ(ovSeparatePathName(root, root), "") << "the terminator falls on the file part";
    EXPECT_EQ(ovSeparatePathName(nullptr, dir), nullptr);
    EXPECT_STREQ(dir, "");
    EXPECT_FALSE(ovIsPrivateDirName(nullptr));
}

TEST(Extensions, BeginAtTheLastDotOfTheLastElement) {
    ExpectRows({R"(a.b\c | -1 | a.b\c!)", "a.b.sv | 3 | a.b!", R"(\.sv | 1 | \!)", ".abc | 0 | !",
                " | -1 | !", "abc | -1 | abc!", "a. | 1 | a!", "a.b/c | -1 | a.b/c!", "a.b:c | -1 | a.b:c!",
                ":a.b | 2 | :a!"},
               [](const Texts& row) {
                   char changed[32];
                   ovChangeFileExtension(row[0].c_str(), changed, "!");
                   return Texts{row[0], std::to_string(ovFindFileExt(row[0].c_str())), changed};
               });
    EXPECT_EQ(ovFindFileExt(static_cast<const char*>(nullptr)), -1);
    EXPECT_EQ(ovFindFileExt(static_cast<const char16_t*>(nullptr)), u"");
    EXPECT_EQ(ovFindFileExt(u"a.b/c.d.sv"), u".sv");
}

TEST(LastElement, KeepsItsExtensionInThePlainFormOnly) {
    ExpectRows({R"(C:\a\b.sv\ | b.sv)", R"(C:\a\b.sv | b.sv)", "a/b | a/b", R"(\a | a)", R"(\ | )",
                R"(\\ | )", R"(a\\ | )", " | "},
               [](const Texts& row) {
                   char dst[32] = "old";
                   return Texts{row[0], ovExtractSubdir(dst, row[0].c_str())};
               });
    char dst[] = "old";
    EXPECT_STREQ(ovExtractSubdir(dst, nullptr), "");
    EXPECT_EQ(ovExtractSubdir(nullptr, "a"), nullptr);
    EXPECT_EQ(ovExtractSubdir(u"a/b.c.sv"), u"b.c");
}

TEST(AbsoluteNames, AreJudgedByEachFormsOwnRuleAndNormalisedByText) {
    ExpectRows({R"(C:\a | 1 | 1)", "C:/a | 1 | 1", R"(\\s\h | 1 | 1)", "//s/h | 1 | 0", "C: | 0 | 1",
                "C:a | 0 | 1", R"(\\s | 0 | 1)", R"(\a | 0 | 0)", "/a | 0 | 0", "a | 0 | 0", " | 0 | 0",
                R"(1:\a | 0 | 0)"}, // wide, plain
               [](const Texts& row) {
                   return Texts{row[0], std::to_string(ovIsAbsolutePath(U(row[0]))),
                                std::to_string(ovIsAbsolutePath(row[0].c_str()))};
               });
    ExpectRows({R"(C:\..\a | C:\a)", R"(C:\a\..\b | C:\b)", R"(C:\a\.\b\ | C:\a\b)", R"(C:\a\\b | C:\a\b)",
                R"(C:\ | C:\)", R"(C:\a\..\..\..\b | C:\b)", R"(\\s\h\..\a | \\s\h\a)", R"(\\s\h | \\s\h\)",
                R"(C:\...\.a | C:\...\.a)"},
               [](const Texts& row) {
                   const ustring name = U(row[0]);
                   return Texts{row[0], N(PathNormalizer(name).Normalize())};
               });
    const char* const tilde = "~";
    EXPECT_EQ(ovTildeExpansion(nullptr, tilde), tilde) << "an ordinary character";
    EXPECT_EQ(ovTildeExpansion(u"~\\a"), u"~\\a");
}

TEST(FullPath, ExpandsRelativeNamesThatExistAndLeavesAbsoluteOnesAlone) {
    ustring here = u"a/../.", dst = u"old";
    EXPECT_TRUE(ovFullPath(here, here));
    EXPECT_EQ(here, fl::filesystem::current_path());
    EXPECT_FALSE(ovFullPath(dst, ustring(5000, u'a'))); // the filesystem layer fails
    EXPECT_EQ(dst, u"old");
    for (const char16_t* name : {u"C:\\x/..\\no such name", u"no such name", u"\\\\server"}) {
        dst = u"old";
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
    const ustring fits = u"X:\\" + ustring(256, u'a');
    std::string answers;
    for (const ustring& name :
         {ustring(u"W:\\"), ustring(u"X:\\a"), ustring(u"X:\\b\\c"), fits, fits + u'a', ustring(u"Y:\\a"),
          ustring(u"Y:\\a"), ustring(u"x:\\a"), ustring(u"\\\\s\\h\\a"), ustring(u"X:\\a")}) {
        platform.fullPaths[name] = name;
        answers += ovIsWinPathRemote(name) ? '1' : '0';
        if (name == u"W:\\")
            platform.calls.clear(); // the process may remember X: from elsewhere before that
    }
    EXPECT_EQ(answers + (ovIsWinPathRemote(u"unknown") ? '1' : '0'), "11110000110");
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

/// What is answered, or "null" with what is left in the buffer.
template <class Char>
std::string Object(const Char* name, std::size_t size = 64) {
    char dst[64] = "old";
    const char* result = ovGetObjectNameFromPath({}, name, dst, size);
    return result == nullptr ? std::string("null") + dst : result == dst ? dst : "elsewhere";
}

TEST(ObjectNames, AreReadOffTheInnermostClass) {
    ExpectRows({R"(C:\t\@Foo\bar.sv | Foo)", R"(@Foo\private\bar.sv | Foo)", R"(@Foo\private\a\bar.sv | Foo)",
                R"(C:\t\@Foo\sub\bar.sv | null)", R"(C:\t\x@Foo\bar.sv | null)", R"(C:\t\@a\@b\f.sv | b)",
                R"(C:\t\@a\x\@b | b)", R"(@Foo\privateer\bar | Foo)", R"(@Foo\Private\bar | null)",
                R"(@Foo\ | Foo)", R"(@Foo\a\ | null)", R"(@a\@b\@c | a.b.c)", R"(@a\x\@b\@c | b.c)",
                R"(@a\x@b | null)", R"(x@a\@b | a.b)", "a/@b | null", R"(C:\t\f.sv | null)", "@ | "},
               [](const Texts& row) {
                   EXPECT_EQ(Object(U(row[0]).c_str()), row[1]);
                   return Texts{row[0], Object(row[0].c_str())};
               });
    // The bound counts the name before its separators shrink.
    EXPECT_EQ((Texts{Object(u"@a\\@b", 0), Object(u"@a\\@b", 4), Object("@a\\@b", 4), Object("@a\\@b", 5)}),
              (Texts{"null", "null", "null", "a.b"}));
    char name[] = R"(C:\+a\@C)";
    EXPECT_STREQ(ovGetClassNameFromFullName(name, name, sizeof name), "a.C") << "written over the name";
}

TEST(ObjectNames, OfOtherAlphabetsFailInTheWideFormAlone) {
    char dst[16] = "old";
    EXPECT_THROW(ovGetObjectNameFromPath({}, u"@\u00e9\\f", dst, 16), fl::i18n::CvtInvalidCharacter);
    EXPECT_STREQ(dst, "");
    EXPECT_EQ(Object("@é\\f"), "é");
}

TEST(TwoByteCharacters, StayWholeAndTheirSecondByteIsNoSeparator) {
    FakePlatform platform;
    platform.isLeadByte = [](unsigned char c) { return c == 0x81; };
    char name[16] = "a\x81\\";
    EXPECT_STREQ(ovConcatPathName(name, "b"), "a\x81\\\\b");
    EXPECT_TRUE(ovIsPathNameSep(name, name + 3) && ovIsPathNameSep(u'\\'));
    EXPECT_FALSE(ovIsPathNameSep(name, name + 2) || ovIsPathNameSep("/", "/") || ovIsPathNameSep(u'/'));
    EXPECT_EQ(Object("@A\x81\\B\\f\x81@"), "A\x81\\B");
    EXPECT_EQ(Object("x\x81\\@A\\f"), "null");
}

} // namespace
