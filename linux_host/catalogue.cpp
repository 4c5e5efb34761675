#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <string_view>
#include <unicode/msgfmt.h>
#include <utility>

#include "catalogue_texts.hpp"
#include "host_interfaces/text.hpp"
#include "linux_host/encoding.hpp"

namespace fl::i18n {

namespace {

constexpr std::string_view Component = "SORVEN:ovsel";

using Patterns = std::map<std::string, std::string, std::less<>>;

std::string_view Trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t");
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(" \t") + 1 - begin);
}

/// One line, joined with those that a backslash at its end continues; takes them off @p text.
std::string TakeLine(std::string_view& text) {
    std::string line;
    bool continued = true;
    while (continued && !text.empty()) {
        const std::size_t length = std::min(text.find('\n'), text.size());
        std::string_view part = Trimmed(text.substr(0, length));
        text.remove_prefix(std::min(length + 1, text.size()));
        continued = part.ends_with('\\');
        line += continued ? part.substr(0, part.size() - 1) : part;
    }
    return line;
}

/// Reads a message file. It was compiled in, so what is malformed is left to the tests to find.
Patterns Parse(std::string_view text) {
    Patterns patterns;
    while (!text.empty()) {
        const std::string line = TakeLine(text);
        const std::size_t equals = line.find('=');
        if (!line.starts_with('#') && equals != std::string::npos) {
            const std::string_view view = line;
            patterns.emplace(Trimmed(view.substr(0, equals)), Trimmed(view.substr(equals + 1)));
        }
    }
    return patterns;
}

/// English for every language without a file of its own.
const Patterns& PatternsOf(const Locale& locale) {
    static const Patterns english = Parse(linux_host::EnglishTexts);
    static const Patterns german = Parse(linux_host::GermanTexts);
    const std::string_view name = locale.name();
    const std::string_view language = name.substr(0, name.find_first_of("_-.@"));
    return language == "de" ? german : english;
}

/// The pattern of a message, or null for a stranger's message and an unknown identifier.
const std::string* FindPattern(const Message& message, const Locale& locale) {
    const Patterns& patterns = PatternsOf(locale);
    const auto found = patterns.find(message.id);
    return message.component == Component && found != patterns.end() ? &found->second : nullptr;
}

/// What a message says without the catalogue.
ustring PlainText(const Message& message) {
    ustring text = to_ustring(message.FullId().c_str());
    const char16_t* separator = u": ";
    for (const ustring& argument : message.arguments) {
        text.append(separator).append(argument);
        separator = u", ";
    }
    return text;
}

/// Encoding and modifier are cut off: texts leave as UTF-8 whatever the terminal takes.
std::string LocaleOfEnvironment() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') {
            const std::string_view name = value;
            const std::string_view bare = name.substr(0, name.find_first_of(".@"));
            return bare == "C" || bare == "POSIX" ? "en" : std::string(bare);
        }
    }
    return "en";
}

Locale& GlobalLocale() {
    static Locale locale(LocaleOfEnvironment());
    return locale;
}

} // namespace

std::string Message::FullId() const { return component + ":" + id; }

const Locale& Locale::global() { return GlobalLocale(); }

Locale Locale::set_global(Locale locale) { return std::exchange(GlobalLocale(), std::move(locale)); }

ustring message_text(const Message& message, const Locale& locale) {
    const std::string* pattern = FindPattern(message, locale);
    if (pattern == nullptr) {
        return PlainText(message);
    }
    const auto count = static_cast<std::int32_t>(message.arguments.size());
    // Formattable counts its arrays in 32 bits and has no view of text: one copy each.
    const auto arguments = std::make_unique<icu::Formattable[]>(message.arguments.size());
    std::transform(
        message.arguments.begin(), message.arguments.end(), arguments.get(),
        [](const ustring& text) { return icu::UnicodeString(text.data(), std::int32_t(text.size())); });
    UErrorCode status = U_ZERO_ERROR;
    const icu::MessageFormat format(icu::UnicodeString::fromUTF8(*pattern),
                                    icu::Locale(locale.name().c_str()), status);
    icu::UnicodeString text;
    icu::FieldPosition nowhere;
    format.format(arguments.get(), count, text, nowhere, status);
    // A message must come through even if its pattern cannot be formatted.
    return U_FAILURE(status) ? PlainText(message)
                             : ustring(text.getBuffer(), static_cast<std::size_t>(text.length()));
}

MessageException::MessageException(Message message)
    : m_message(std::move(message)),
      m_text(linux_host::NarrowForDisplay(message_text(m_message, Locale::global()))) {}

MessageException::~MessageException() = default;

} // namespace fl::i18n
