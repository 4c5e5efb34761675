// Narrow text and UTF-16: every byte string survives, and nothing strange is let through in return.

#include "host_test.hpp"

namespace {

using namespace fl::i18n;
using namespace test;

template <typename Converter, typename Text>
bool Takes(const Converter& convert, const Text& text) {
    try {
        return convert(text), true;
    } catch (const CvtInvalidCharacter&) {
        return false;
    }
}

/// Which bytes are text is held to ICU by the fuzzed conversions, and so are steps back over characters.
TEST(Text, DecodesCharactersAndEscapesOrRefusesTheBytesOfBrokenOnes) {
    const std::tuple<std::string, ustring, bool> table[] = {
        {"", u"", true},
        {"\xC2\x80", u"\u0080", true},
        {"\xED\x9F\xBF\xEE\x80\x80", u"\uD7FF\uE000", true},
        {"\xF0\x90\x92\x80", {0xD801, 0xDC80}, true}, // the low half lies in the escapes' range
        {std::string(1, '\0'), ustring(1, 0), true},
        {"\xF0\x9F\x98", {0xDCF0, 0xDC9F, 0xDC98}, false},
        {"\xC0\xAF", {0xDCC0, 0xDCAF}, false},                         // an overlong separator
        {"\xED\xB3\xBF", {0xDCED, 0xDCB3, 0xDCBF}, false},             // an encoded escape unit
        {"\xF4\x90\x80\x80", {0xDCF4, 0xDC90, 0xDC80, 0xDC80}, false}, // above the last code point
    };
    // Plain text before it is converted in runs, which must not move or cut it.
    for (const std::size_t before : {0U, 1U, 7U, 8U, 100U})
        for (const auto& [inside, unitsInside, isText] : table) {
            const std::string bytes = std::string(before, 'a') + inside + "z";
            const ustring units = ustring(before, u'a') + unitsInside + u"z";
            EXPECT_EQ(Wide(bytes), units);
            EXPECT_EQ(Narrow(units), bytes);
            EXPECT_EQ(Takes(codecvt_string_to_ustring("UTF-8"), bytes), isText);
            EXPECT_EQ(Takes(codecvt_ustring_to_string("utf8"), units), isText);
        }
    EXPECT_EQ(to_ustring(nullptr), u"");
}

TEST(Text, RefusesWhatHasNoBytesAndEncodingsThatItDoesNotHave) {
    for (const ustring& units : {ustring{0xD800}, ustring{0xDC00}, ustring{0xDC7F}, ustring{0xDD00},
                                 ustring{u'a', 0xD800, u'b'}, ustring{0xD800, 0xD800, 0xDC80}}) {
        EXPECT_FALSE(Takes(codecvt_ustring_to_narrow_string(), units)) << testing::PrintToString(units);
        EXPECT_FALSE(Takes(codecvt_ustring_to_string("UTF-8"), units));
    }
    for (const char* encoding : {"", "UTF-16", "UTF-81", "ISO-8859-1"}) {
        EXPECT_THROW(codecvt_ustring_to_string{encoding}, CvtInvalidCharacter);
        EXPECT_THROW(codecvt_string_to_ustring{encoding}, CvtInvalidCharacter);
    }
    EXPECT_EQ(codecvt_ascii_to_ustring()("a\x7F"), u"a\x7F");
    EXPECT_EQ(codecvt_ustring_to_ascii()(u"a\x7F"), "a\x7F");
    EXPECT_FALSE(Takes(codecvt_ascii_to_ustring(), "a\x80"));
    EXPECT_FALSE(Takes(codecvt_ustring_to_ascii(), u"a\x80"));
}

} // namespace
