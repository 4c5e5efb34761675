// The message catalogue: every message has a text in every language, and a stranger's message is still
// readable; and the conversions of text.

#include <algorithm>
#include <gtest/gtest.h>

#include "host_interfaces/text.hpp"

namespace {

using namespace fl::i18n;

Message Own(const std::string& id, std::vector<ustring> arguments) { return {"SORVEN:ovsel", id, arguments}; }
ustring English(const Message& message) { return message_text(message, Locale("en_GB")); }

TEST(Catalogue, HasATextForEveryMessageThatUsesAllItsArguments) {
    const std::vector<const char*> byArgumentCount[] = {
        {"cannotConstructPathNoIOFunctions", "cannotConstructPathNoMemory", "noChangeTimestampDiagnostic",
         "changedThisTickTimestampDiagnostic", "changedLastTickTimestampDiagnostic",
         "changedTimestampDiagnostic", "cacheFileWrongFormat"},
        {"cannotConstructPathDuplicate", "nameNonexistentOrNotADirectory", "directoryPermissionDenied",
         "directoryAccessFailure", "methodDirectoriesNotAllowedOnPath", "packageDirectoriesNotAllowedOnPath",
         "privateDirectoriesNotAllowedOnPath", "directoryNameTooLong", "cannotAbsolutizePath",
         "couldNotGetHandleLocalChangeNotification", "noSupportRemoteChangeNotification",
         "ranOutOfHandlesRemoteChangeNotification", "nonResponsiveRemoteChangeNotification",
         "skipFindFirstDirCheck", "forceReloadDirCheck", "releaseNotificationHandle", "reloadDirCheck",
         "pathCacheXMLParseError"},
        {"changeNotificationDirCheck", "unableToLoadCache"},
        {"inUseFindFirstDirCheck"},
        {"timestampDiagnostic"}};
    const std::vector<ustring> all = {u"<1'{x}>", u"<2>", u"<3>", u"<4>"};
    for (int count = 0; count < 5; ++count)
        for (const char* id : byArgumentCount[count]) {
            const Message message = Own(id, {all.begin(), all.begin() + count});
            for (const char* locale : {"en", "de_AT"}) {
                const std::string text =
                    codecvt_ustring_to_narrow_string()(message_text(message, Locale(locale)));
                const auto used = [&](const ustring& argument) {
                    return text.find(codecvt_ustring_to_narrow_string()(argument)) != text.npos;
                };
                EXPECT_FALSE(used(u"ovsel:") || used(u"{0}")) << text;
                EXPECT_EQ(std::count_if(all.begin(), all.end(), used), count) << text;
            }
            EXPECT_NE(message_text(message, Locale("de")), English(message)) << id << " is not translated";
        }
}

TEST(Catalogue, FormatsByPositionAndSpellsOutWhatItDoesNotKnow) {
    const Message message = Own("timestampDiagnostic", {u"unchanged", u"17", u"18", u"C:\\ä"});
    EXPECT_EQ(English(message), u"Time stamp unchanged (was 17, is 18): C:\\ä");
    EXPECT_EQ(message_text(message, Locale("fr_FR")), English(message));
    EXPECT_EQ(message_text(message, Locale("de.UTF-8")), u"Zeitstempel unchanged (war 17, ist 18): C:\\ä");
    EXPECT_EQ(English(Own("unheardOf", {u"a", u"b{0}"})), u"SORVEN:ovsel:unheardOf: a, b{0}");
    EXPECT_EQ(English({"OTHER:part", "reloadDirCheck", {}}), u"OTHER:part:reloadDirCheck");
    EXPECT_EQ(English(Own("unableToLoadCache", {u"a"})), u"Unable to load the toolbox path cache a: {1}");
}

TEST(Catalogue, RaisesMessagesInTheGlobalLocale) {
    const Locale before = Locale::set_global(Locale("de"));
    const MessageException exception(Own("reloadDirCheck", {{u'x', 0xD800}}));
    EXPECT_EQ(Locale::set_global(before).name(), "de");
    EXPECT_STREQ(exception.what(), "Verzeichnis wurde neu gelesen: x\uFFFD");
    EXPECT_EQ(exception.identifier(), "SORVEN:ovsel:reloadDirCheck");
}

/// What bytes and units read as is held to ICU by the fuzzed conversions.
TEST(Text, RefusesWhatHasNoBytesAndEncodingsThatItDoesNotHave) {
    for (const ustring& units : {ustring{0xD800}, ustring{0xDC00}, ustring{0xDC7F}, ustring{0xDD00},
                                 ustring{u'a', 0xD800, u'b'}, ustring{0xD800, 0xD800, 0xDC80}}) {
        EXPECT_THROW(codecvt_ustring_to_narrow_string()(units), CvtInvalidCharacter);
        EXPECT_THROW(codecvt_ustring_to_string("UTF-8")(units), CvtInvalidCharacter);
    }
    for (const char* encoding : {"", "UTF-16", "UTF-81", "ISO-8859-1"}) {
        EXPECT_THROW(codecvt_ustring_to_string{encoding}, CvtInvalidCharacter);
        EXPECT_THROW(codecvt_string_to_ustring{encoding}, CvtInvalidCharacter);
    }
    EXPECT_EQ(codecvt_ustring_to_string("utf8")(u"\u00e4"), "\xC3\xA4");
    EXPECT_EQ(to_ustring(nullptr), u"");
    EXPECT_EQ(codecvt_ascii_to_ustring()("a\x7F"), u"a\x7F");
    EXPECT_EQ(codecvt_ustring_to_ascii()(u"a\x7F"), "a\x7F");
    EXPECT_THROW(codecvt_ascii_to_ustring()("a\x80"), CvtInvalidCharacter);
    EXPECT_THROW(codecvt_ustring_to_ascii()(u"a\x80"), CvtInvalidCharacter);
}

} // namespace
