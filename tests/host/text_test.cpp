// Narrow text and UTF-16: every byte string survives, and nothing strange is let through in return.

#include "host_test.hpp"

namespace {

using namespace fl::i18n;
using namespace test;

/// "-" for what the converter refuses.
template <typename Converter, typename Text>
auto OrRefusal(const Converter& convert, const Text& text) {
    using Result = decltype(convert(text));
    try {
        return convert(text);
    } catch (const CvtInvalidCharacter&) {
        return Result(1, '-');
    }
}

/// Which bytes are text is held to ICU by the fuzzed conversions.
TEST(Text, DecodesCharactersAndEscapesOrRefusesTheBytesOfBrokenOnes) {
    using Rows = std::vector<std::pair<std::string, ustring>>;
    const Rows whole = {
        {"", u""},
        {"\xC2\x80", u"\u0080"},
        {"\xED\x9F\xBF\xEE\x80\x80", u"\uD7FF\uE000"},
        {"\xF0\x90\x92\x80", {0xD801, 0xDC80}}, // the low half lies in the escapes' range
        {std::string(1, '\0'), ustring(1, 0)},
    };
    const Rows broken = {
        {"\xC3", {0xDCC3}},
        {"\xF0\x9F\x98", {0xDCF0, 0xDC9F, 0xDC98}},
        {"\xC0\xAF", {0xDCC0, 0xDCAF}},                         // an overlong separator
        {"\xED\xB3\xBF", {0xDCED, 0xDCB3, 0xDCBF}},             // an encoded escape unit
        {"\xF4\x90\x80\x80", {0xDCF4, 0xDC90, 0xDC80, 0xDC80}}, // above the last code point
    };
    const codecvt_string_to_ustring strictlyWide("UTF-8");
    const codecvt_ustring_to_string strictlyNarrow("utf8");
    // Plain text before it is converted in runs, which must not move or cut it.
    for (const std::size_t before : {0U, 1U, 7U, 8U, 100U}) {
        for (const Rows* rows : {&whole, &broken}) {
            for (const auto& row : *rows) {
                const std::string bytes = std::string(before, 'a') + row.first + "z";
                const ustring units = ustring(before, u'a') + row.second + u"z";
                EXPECT_EQ(Wide(bytes), units);
                EXPECT_EQ(Narrow(units), bytes);
                EXPECT_EQ(OrRefusal(strictlyWide, bytes), rows == &whole ? units : u"-");
                EXPECT_EQ(OrRefusal(strictlyNarrow, units), rows == &whole ? bytes : "-");
                EXPECT_EQ(OrRefusal(strictlyWide, row.first), rows == &whole ? row.second : u"-");
            }
        }
    }
    EXPECT_EQ(to_ustring(nullptr), u"");
}

TEST(Text, RefusesWhatHasNoBytesAndEncodingsThatItDoesNotHave) {
    for (const ustring& units : {ustring{0xD800}, ustring{0xDC00}, ustring{0xDC7F}, ustring{0xDD00},
                                 ustring{u'a', 0xD800, u'b'}, ustring{0xD800, 0xD800, 0xDC80}}) {
        EXPECT_THROW(Narrow(units), CvtInvalidCharacter) << testing::PrintToString(units);
        EXPECT_THROW(codecvt_ustring_to_string("UTF-8")(units), CvtInvalidCharacter);
    }
    for (const char* encoding : {"", "UTF-16", "UTF-81", "ISO-8859-1"}) {
        EXPECT_THROW(codecvt_ustring_to_string{encoding}, CvtInvalidCharacter);
        EXPECT_THROW(codecvt_string_to_ustring{encoding}, CvtInvalidCharacter);
    }
    EXPECT_EQ(codecvt_ascii_to_ustring()("a\x7F"), u"a\x7F");
    EXPECT_EQ(codecvt_ustring_to_ascii()(u"a\x7F"), "a\x7F");
    EXPECT_THROW(codecvt_ascii_to_ustring()("a\x80"), CvtInvalidCharacter);
    EXPECT_THROW(codecvt_ustring_to_ascii()(u"a\x80"), CvtInvalidCharacter);
    EXPECT_THROW(codecvt_ustring_to_ascii()({0xDC41}), CvtInvalidCharacter);
}

TEST(Text, IsSteppedBackThroughCharacterByCharacter) {
    const std::string text = "a\xC3\xA4\xF0\x9F\x98\x80\xE2\x82\xFFz";
    std::string steps;
    for (const char* p = text.data() + text.size(); p != text.data();) {
        p = host::Platform().PreviousCharacter(text.data(), p);
        steps += std::to_string(p - text.data()) + " ";
    }
    EXPECT_EQ(steps, "10 9 8 7 3 1 0 ");
    EXPECT_EQ(host::Platform().PreviousCharacter(text.data(), text.data()), text.data());
}

} // namespace
