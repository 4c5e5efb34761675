// Narrow text and UTF-16: every byte string survives, and nothing strange is let through in return.

#include <gtest/gtest.h>
#include <random>

#include "host_interfaces/platform.hpp"
#include "host_interfaces/text.hpp"

namespace {

using namespace fl::i18n;

ustring Wide(std::string_view text) { return codecvt_narrow_string_to_ustring()(text); }
std::string Narrow(const ustring& text) { return codecvt_ustring_to_narrow_string()(text); }

TEST(Text, DecodesCharactersAndEscapesTheBytesOfBrokenOnes) {
    const std::pair<std::string, ustring> table[] = {
        {"", u""},
        {"plain", u"plain"},
        {"\xC3\xA4", u"\u00E4"},
        {"\xE2\x82\xAC", u"\u20AC"},
        {"\xF0\x9F\x98\x80", u"\U0001F600"},
        {"a\xFFz", {u'a', 0xDCFF, u'z'}},
        {"\xC3", {0xDCC3}},
        {"\xE2\x82z", {0xDCE2, 0xDC82, u'z'}},
        {"\xC0\xAF", {0xDCC0, 0xDCAF}},                         // an overlong separator
        {"\xED\xB3\xBF", {0xDCED, 0xDCB3, 0xDCBF}},             // an encoded escape unit
        {"\xF0\x90\x92\x80", {0xD801, 0xDC80}},                 // the low half lies in the escapes' range
        {"\xF4\x90\x80\x80", {0xDCF4, 0xDC90, 0xDC80, 0xDC80}}, // above the last code point
        {std::string("a\0b", 3), {u'a', 0, u'b'}},
    };
    for (const auto& [bytes, units] : table) {
        EXPECT_EQ(Wide(bytes), units) << testing::PrintToString(bytes);
        EXPECT_EQ(Narrow(units), bytes);
    }
    EXPECT_EQ(to_ustring(nullptr), u"");
}

TEST(Text, BringsEveryByteStringBack) {
    for (unsigned pair = 0; pair < 0x10000; ++pair) {
        const std::string bytes = {static_cast<char>(pair >> 8), static_cast<char>(pair & 0xFF)};
        ASSERT_EQ(Narrow(Wide(bytes)), bytes) << pair;
    }
    // Longer ones from bytes that lead, trail and break characters.
    const std::string alphabet = "a\\\x80\x8F\x90\xA0\xBF\xC0\xC3\xDF\xE0\xE2\xED\xEF\xF0\xF4\xF5\xFF";
    std::mt19937 random(1);
    for (int round = 0; round < 50000; ++round) {
        std::string bytes(random() % 12, ' ');
        for (char& byte : bytes) {
            byte = alphabet[random() % alphabet.size()];
        }
        ASSERT_EQ(Narrow(Wide(bytes)), bytes) << testing::PrintToString(bytes);
    }
}

TEST(Text, RefusesWhatHasNoBytes) {
    for (const ustring& units : {ustring{0xD800}, ustring{0xDC00}, ustring{0xDC7F}, ustring{0xDD00},
                                 ustring{u'a', 0xD800, u'b'}, ustring{0xD800, 0xD800, 0xDC80}}) {
        EXPECT_THROW(Narrow(units), CvtInvalidCharacter) << testing::PrintToString(units);
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
