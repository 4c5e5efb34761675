#include <gtest/gtest.h>
#include <ovsel/handles.hpp>
#include <ovsel/names.hpp>

#include "tests/support/fake_platform.hpp"
#include "tests/support/texts.hpp"

namespace {

using Texts = std::vector<std::string>;

/// What is answered, or "null" with what is left in the buffer.
template <class Char>
std::string Object(const Char* name, std::size_t size = 64) {
    char dst[64] = "old";
    const char* result = ovGetObjectNameFromPath({}, name, dst, size);
    return result == nullptr ? std::string("null") + dst : result == dst ? dst : "elsewhere";
}

TEST(ScopeNames, MayBeWrittenOverTheName) {
    char name[] = R"(C:\+a\@C)";
    EXPECT_STREQ(ovGetClassNameFromFullName(name, name, sizeof name), "a.C");
}

TEST(ObjectNames, AreReadOffTheInnermostClass) {
    for (const char* row :
         {R"(C:\t\@Foo\bar.sv | Foo)", R"(@Foo\private\bar.sv | Foo)", R"(@Foo\private\a\bar.sv | Foo)",
          R"(C:\t\@Foo\sub\bar.sv | null)", R"(C:\t\x@Foo\bar.sv | null)", R"(C:\t\@a\@b\f.sv | b)",
          R"(C:\t\@a\x\@b | b)", R"(@Foo\privateer\bar | Foo)", R"(@Foo\Private\bar | null)",
          R"(@Foo\ | Foo)", R"(@Foo\a\ | null)", R"(@a\@b\@c | a.b.c)", R"(@a\x\@b\@c | b.c)",
          R"(@a\x@b | null)", R"(x@a\@b | a.b)", "a/@b | null", R"(C:\t\f.sv | null)", "@ | "}) {
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
