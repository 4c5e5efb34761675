// The message catalogue: every message has a text in every language, and a stranger's message is still
// readable.

#include <gtest/gtest.h>

#include "host_interfaces/text.hpp"

namespace {

using namespace fl::i18n;

Message Own(const std::string& id, std::vector<ustring> arguments) { return {"SORVEN:ovsel", id, arguments}; }
ustring English(const Message& message) { return message_text(message, Locale("en_GB")); }

TEST(Catalogue, HasATextForEveryMessageThatUsesAllItsArguments) {
    const std::pair<const char*, int> messages[] = {
        {"cannotConstructPathNoIOFunctions", 0},
        {"cannotConstructPathDuplicate", 1},
        {"cannotConstructPathNoMemory", 0},
        {"nameNonexistentOrNotADirectory", 1},
        {"directoryPermissionDenied", 1},
        {"directoryAccessFailure", 1},
        {"methodDirectoriesNotAllowedOnPath", 1},
        {"packageDirectoriesNotAllowedOnPath", 1},
        {"privateDirectoriesNotAllowedOnPath", 1},
        {"directoryNameTooLong", 1},
        {"cannotAbsolutizePath", 1},
        {"noChangeTimestampDiagnostic", 0},
        {"changedThisTickTimestampDiagnostic", 0},
        {"changedLastTickTimestampDiagnostic", 0},
        {"changedTimestampDiagnostic", 0},
        {"timestampDiagnostic", 4},
        {"couldNotGetHandleLocalChangeNotification", 1},
        {"noSupportRemoteChangeNotification", 1},
        {"ranOutOfHandlesRemoteChangeNotification", 1},
        {"nonResponsiveRemoteChangeNotification", 1},
        {"inUseFindFirstDirCheck", 3},
        {"skipFindFirstDirCheck", 1},
        {"changeNotificationDirCheck", 2},
        {"forceReloadDirCheck", 1},
        {"releaseNotificationHandle", 1},
        {"reloadDirCheck", 1},
        {"unableToLoadCache", 2},
        {"pathCacheXMLParseError", 1},
        {"cacheFileWrongFormat", 0},
    };
    const std::vector<ustring> all = {u"<1'{x}>", u"<2>", u"<3>", u"<4>"};
    for (const auto& [id, count] : messages) {
        const Message message = Own(id, {all.begin(), all.begin() + count});
        for (const char* locale : {"en", "de_AT"}) {
            const ustring text = message_text(message, Locale(locale));
            const auto used = [&](const ustring& argument) { return text.find(argument) != ustring::npos; };
            EXPECT_EQ(text.find(u"ovsel:"), ustring::npos) << id << " has no text in " << locale;
            EXPECT_EQ(std::count_if(all.begin(), all.end(), used), count) << id << " in " << locale;
            EXPECT_EQ(text.find(u"{0}"), ustring::npos) << id << " in " << locale;
        }
        EXPECT_NE(message_text(message, Locale("de")), English(message)) << id << " is not translated";
    }
}

TEST(Catalogue, FormatsByPositionAndFallsBackToEnglish) {
    const Message message = Own("timestampDiagnostic", {u"unchanged", u"17", u"18", u"C:\\ä"});
    EXPECT_EQ(English(message), u"Time stamp unchanged (was 17, is 18): C:\\ä");
    EXPECT_EQ(message_text(message, Locale("fr_FR")), English(message));
    EXPECT_EQ(message_text(message, Locale("de.UTF-8")), u"Zeitstempel unchanged (war 17, ist 18): C:\\ä");
    EXPECT_EQ(
        English(Own("couldNotGetHandleLocalChangeNotification", {u"X"})),
        u"No change notification could be had for the local directory X. It is read anew at each refresh. "
        u"The system may have reached its limit of watched directories (fs.inotify.max_user_watches).");
}

TEST(Catalogue, SpellsOutAMessageItDoesNotKnow) {
    EXPECT_EQ(English(Own("unheardOf", {u"a", u"b{0}"})), u"SORVEN:ovsel:unheardOf: a, b{0}");
    EXPECT_EQ(English({"OTHER:part", "reloadDirCheck", {}}), u"OTHER:part:reloadDirCheck");
    EXPECT_EQ(English(Own("", {})), u"SORVEN:ovsel:");
    EXPECT_EQ(English(Own("unableToLoadCache", {u"a"})), u"Unable to load the toolbox path cache a: {1}");
}

TEST(Catalogue, RaisesMessagesInTheGlobalLocale) {
    const Locale before = Locale::set_global(Locale("de"));
    const MessageException exception(Own("reloadDirCheck", {{u'x', 0xD800}}));
    EXPECT_EQ(Locale::set_global(before).name(), "de");
    EXPECT_STREQ(exception.what(), "Verzeichnis wurde neu gelesen: x\uFFFD");
    EXPECT_EQ(exception.identifier(), "SORVEN:ovsel:reloadDirCheck");
    EXPECT_EQ(exception.arguments().size(), 1U);
}

} // namespace
