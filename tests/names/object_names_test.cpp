#include <algorithm>

#include <gtest/gtest.h>
#include <ovsel/handles.hpp>
#include <ovsel/names.hpp>

#include "host_interfaces/storage.hpp"
#include "ovsel/names/ovselconstants.hpp"
#include "tests/support/fake_platform.hpp"
#include "tests/support/texts.hpp"

namespace {

using Texts = std::vector<std::string>;

/// What a naming function answered: the name, or "null" with what it left in the buffer.
template <class Char, class Function>
std::string Answer(Function function, std::size_t size) {
    Char dst[1024] = {'o', 'l', 'd'};
    const Char* result = function(dst, size);
    std::string text;
    if constexpr (sizeof(Char) == 1)
        text = dst;
    else
        text = N(dst);
    return result == nullptr ? "null" + text : result == dst ? text : "elsewhere";
}

std::string Plain(decltype(ovGetClassNameFromFullName) function, const std::string& name,
                  std::size_t size = 64) {
    return Answer<char>([&](char* dst, std::size_t n) { return function(name.c_str(), dst, n); }, size);
}

/// The same question to the Location form, with the separators turned.
std::string Location(decltype(ovGetClassNameFromLocation) function, std::string name, std::size_t size = 64) {
    std::replace(name.begin(), name.end(), '\\', '/');
    const foundation::storage::vfs::AbsoluteIRI location(u"file", U(name));
    return Answer<char16_t>([&](char16_t* dst, std::size_t n) { return function(location, dst, n); }, size);
}

template <class Char>
std::string Object(const Char* name, std::size_t size = 64) {
    return Answer<char>([&](char* dst, std::size_t n) { return ovGetObjectNameFromPath({}, name, dst, n); },
                        size);
}

TEST(DirectoryNames, AreClassifiedByTheirSpelling) {
    const std::pair<DirItemKind, std::vector<ustring>> rows[] = {
        {DirItemPackageDir, {u"+p", u"+@", u"+\x01"}},
        {DirItemClassDir, {u"@C", u"@\x7f"}},
        {DirItemPrivateDir, {u"private"}},
        {DirItemSubdir,
         {u"+", u"@", u"+a.b", u"@a.b", u"@\u00e9", u"+\u0080", u"Private", u"privates", u"p", u"a@", u""}}};
    for (const auto& [kind, names] : rows)
        for (const ustring& name : names)
            EXPECT_EQ(ClassifyDirEntryName(name), kind) << N(name);
}

TEST(DirectoryNames, AreMarkedByAnyElementButPrivateByTheLast) {
    const auto marks = [](const auto& name) {
        return std::string(ovIsDirNameMethodDirName(name) ? "@" : "") +
               (ovIsDirNamePackageDirName(name) ? "+" : "") + (ovIsPrivateDirName(name) ? "p" : "");
    };
    for (const char* row :
         {R"(a\+b\c | +)", "a+b | ", "+ | +", R"(a\@b\c | @)", "a@b | ", "@ | @", "a/+b | ",
          R"(x+\+@\@ | @+)", " | ", "a/@b | ", R"(a\private | p)", R"(a\private\ | )", R"(a\Private | )",
          "private | p", "a/private | p", R"(a\privates | )", R"(é\private | p)", R"(@a\private | @p)"}) {
        const std::string name = Fields(row)[0];
        EXPECT_EQ((Texts{marks(name.c_str()), marks(U(name))}), Texts(2, Fields(row)[1])) << row;
    }
    EXPECT_FALSE(ovIsPrivateDirName(nullptr));
    EXPECT_STREQ(ovGetPackageDirName(R"(a+\+b\+c)"), R"(+b\+c)");
    EXPECT_EQ(ustring(ovGetPackageDirName(u"a+\\+b\\+c")), u"+b\\+c");
    EXPECT_EQ(ovGetPackageDirName("a+b"), nullptr);
    EXPECT_EQ(ovGetPackageDirName(u"a+b"), nullptr);
}

TEST(ScopeNames, AreReadOffTheElements) {
    for (const char* row :
         {R"(C:\t\+a\+b\@C\f.sv | a.b | a.b.C)", R"(C:\t\@C\@D\f.sv | null | C.D)",
          R"(C:\t\+a\f.sv | a | null)", R"(C:\t\+a\x\@C\f.sv | a | null)", R"(C:\t\x.sv | null | null)",
          R"(a\\+p\\f | p | null)", R"(\\+a\\\@C\\ | a | a.C)", R"(+a | a | null)", R"(@C\x\@D | null | C)",
          R"(+a\x\+b\@C | a | null)", R"(@C\+a\@D | a | a.D)", R"(x@C\x+a | null | null)",
          R"(+\+a\@ | .a | .a.)", " | null | null"}) {
        const Texts fields = Fields(row);
        const std::string& name = fields[0];
        EXPECT_EQ(
            (Texts{name, Plain(ovGetPackageNameFromFullName, name), Plain(ovGetClassNameFromFullName, name)}),
            fields);
        EXPECT_EQ((Texts{name, Location(ovGetPackageNameFromLocation, name),
                         Location(ovGetClassNameFromLocation, name)}),
                  fields);
    }
}

TEST(ScopeNames, MustFitWithTheirTerminator) {
    Texts answers;
    for (std::size_t size = 0; size <= 6; ++size)
        answers.push_back(Plain(ovGetPackageNameFromFullName, R"(+abc\@C)", size) + " " +
                          Plain(ovGetClassNameFromFullName, R"(+abc\@C)", size));
    // A package that does not fit is passed over, and the bare class may fit then.
    EXPECT_EQ(answers,
              (Texts{"null null", "null null", "null C", "null C", "abc null", "abc null", "abc abc.C"}));
    EXPECT_EQ(Location(ovGetClassNameFromLocation, R"(+a\@C)", 3), "null");
    EXPECT_EQ(Location(ovGetClassNameFromLocation, R"(+a\@C)", 4), "a.C");
}

TEST(ScopeNames, MayOutgrowTheLocalBuffers) {
    for (const std::size_t length : {127U, 128U, 253U, 254U, 600U}) {
        const std::string package(length, 'p');
        EXPECT_EQ(Plain(ovGetClassNameFromFullName, "+" + package + R"(\@C)", 1024), package + ".C");
        EXPECT_EQ(Location(ovGetPackageNameFromLocation, "+" + package, 1024), package);
    }
    char name[] = R"(C:\+a\@C)";
    EXPECT_STREQ(ovGetClassNameFromFullName(name, name, sizeof name), "a.C") << "written over the name";
}

TEST(ObjectNames, AreReadOffTheInnermostClass) {
    for (const char* row : {R"(C:\t\@Foo\bar.sv | Foo)",
                            R"(C:\t\@Foo\private\bar.sv | Foo)",
                            R"(@Foo\private\a\bar.sv | Foo)",
                            R"(C:\t\@Foo\sub\bar.sv | null)",
                            R"(C:\t\x@Foo\bar.sv | null)",
                            R"(C:\t\@a\@b\f.sv | b)",
                            R"(C:\t\@a\@b | a.b)",
                            R"(C:\t\@a\x\@b | b)",
                            R"(@Foo\bar | Foo)",
                            R"(C:\t\+p\@Foo\bar.sv | Foo)",
                            R"(@Foo\privateer\bar | Foo)",
                            R"(@Foo\Private\bar | null)",
                            R"(@Foo\ | Foo)",
                            R"(@Foo\a\ | null)",
                            R"(@a\@b\@c | a.b.c)",
                            R"(@a\x\@b\@c | b.c)",
                            R"(@a\x@b | null)",
                            R"(x@a\@b | a.b)",
                            "a/@b | null",
                            R"(C:\t\f.sv | null)",
                            " | null",
                            "@ | "}) {
        const std::string name = Fields(row)[0];
        EXPECT_EQ((Texts{Object(name.c_str()), Object(U(name).c_str())}), Texts(2, Fields(row)[1])) << row;
    }
    // The bound counts the name before its separators shrink.
    EXPECT_EQ((Texts{Object(u"@a\\@b", 0), Object(u"@a\\@b", 4), Object("@a\\@b", 4), Object("@a\\@b", 5)}),
              (Texts{"null", "null", "null", "a.b"}));
}

TEST(ObjectNames, OfOtherAlphabetsFailInTheWideFormAlone) {
    char dst[16] = "old";
    EXPECT_THROW(ovGetObjectNameFromPath({}, u"@\u00e9\\f", dst, 16), fl::i18n::CvtInvalidCharacter);
    EXPECT_STREQ(dst, "");
    EXPECT_EQ(Object("@é\\f"), "é");
}

TEST(ObjectNames, KeepTwoByteCharactersWhole) {
    FakePlatform platform;
    platform.isLeadByte = [](unsigned char c) { return c == 0x81; };
    EXPECT_EQ(Object("@A\x81\\B\\f\x81@"), "A\x81\\B");
    EXPECT_EQ(Object("x\x81\\@A\\f"), "null");
}

} // namespace
