#include "tools/ovsel/output.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fmt/format.h>
#include <langinfo.h>
#include <locale.h>
#include <unistd.h>

#include <host_interfaces/text.hpp>

#include "tools/ovsel/exit_status.hpp"

namespace tool {
namespace {

ustring ToUnits(std::string_view text) { return fl::i18n::codecvt_narrow_string_to_ustring{}(text); }
std::string ToBytes(const ustring& text) { return fl::i18n::codecvt_ustring_to_narrow_string{}(text); }

/// A byte that is not UTF-8 travels as a low surrogate without its partner; that is also how it is
/// recognised.
bool IsHigh(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLow(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

/// Does a byte that is not UTF-8 stand at @p i?
bool IsByteAt(const ustring& text, std::size_t i) {
    return IsLow(text[i]) && (i == 0 || !IsHigh(text[i - 1]));
}

bool IsUtf8(const ustring& text) {
    for (std::size_t i = 0; i < text.size(); ++i)
        if (IsByteAt(text, i))
            return false;
    return true;
}

/// Control characters, and those that reorder or hide the text around them.
bool IsDangerous(char16_t unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x061C ||
           (unit >= 0x200B && unit <= 0x200F) || (unit >= 0x2028 && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069) || unit == 0xFEFF;
}

/// Bytes rather than code points, since that is what every shell understands between `$'` and `'`.
std::string EscapedUnit(char16_t unit) {
    switch (unit) {
    case u'\n':
        return "\\n";
    case u'\r':
        return "\\r";
    case u'\t':
        return "\\t";
    default:
        break;
    }
    std::string escaped;
    for (const char byte : ToBytes(ustring(1, unit)))
        escaped += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
    return escaped;
}

/// @param quotable also escape what would end or change a `$'...'`.
std::string Escaped(const ustring& text, bool quotable, bool& changed) {
    // Harmless text is gathered and converted in one go: pairs of surrogates must stay together.
    std::string result;
    ustring plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool dangerous = IsDangerous(text[i]) || IsByteAt(text, i);
        if (!dangerous) {
            if (quotable && (text[i] == u'\\' || text[i] == u'\''))
                plain += u'\\';
            plain += text[i];
            continue;
        }
        changed = true;
        result += ToBytes(plain) + EscapedUnit(text[i]);
        plain.clear();
    }
    return result + ToBytes(plain);
}

/// With padding, so that any decoder takes it.
std::string Base64(std::string_view bytes) {
    static constexpr char Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        unsigned group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (std::size_t k = 0; k < 4; ++k)
            result += i + k <= bytes.size() ? Digits[group >> (18 - 6 * k) & 63U] : '=';
    }
    return result;
}

/// --color stands above the environment, and NO_COLOR above the terminal; an empty NO_COLOR counts as not
/// set.
bool WantsColors(ColorWhen when) {
    if (when != ColorWhen::Auto)
        return when == ColorWhen::Always;
    const char* refused = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) != 0 && !(refused != nullptr && *refused != '\0') && terminal != nullptr &&
           std::strcmp(terminal, "dumb") != 0;
}

/// Asks the environment without changing the process's own locale.
bool IsUtf8Locale() {
    const locale_t locale = newlocale(LC_CTYPE_MASK, "", locale_t{});
    if (locale == locale_t{})
        return false;
    const bool result = std::strcmp(nl_langinfo_l(CODESET, locale), "UTF-8") == 0;
    freelocale(locale);
    return result;
}

const char* ColorCode(Style style) {
    switch (style) {
    case Style::Faint:
        return "\x1b[2m";
    case Style::Class:
        return "\x1b[32m";
    case Style::Package:
        return "\x1b[34m";
    case Style::Private:
        return "\x1b[35m";
    case Style::Heading:
        return "\x1b[1m";
    case Style::File:
    case Style::Plain:
        break;
    }
    return "";
}

} // namespace

std::string Shown(std::string_view text) {
    bool changed = text.substr(0, 2) == "$'"; // else it would pass for one of ours
    const ustring units = ToUnits(text);
    const std::string quoted = Escaped(units, true, changed);
    return changed ? "$'" + quoted + "'" : std::string(text);
}

std::string Harmless(std::string_view message) {
    bool changed = false;
    return Escaped(ToUnits(message), false, changed);
}

// One call per line, so that lines of several processes on one terminal do not mix.
void Complain(const std::string& message) { fmt::print(stderr, "ovsel: {}\n", Harmless(message)); }

Json JsonName(std::string_view name) {
    if (IsUtf8(ToUnits(name)))
        return std::string(name);
    return Json{{"bytes", Base64(name)}};
}

Output::Output(const Options& options)
    : m_json(options.json),
      m_nul(options.nul),
      m_form(options.form),
      m_colors(WantsColors(options.color)),
      m_boxes(isatty(STDOUT_FILENO) != 0 && IsUtf8Locale()) {}

std::string Output::InForm(const ustring& name) const {
    if (m_form == Form::Native)
        if (auto path = linux_host::DriveMap::ToPath(name))
            return *path;
    // A name below no mapped root has no path, and its own form is better than nothing.
    return ToBytes(name);
}

std::string Output::Paint(Style style, const std::string& text) const {
    const std::string code = m_colors ? ColorCode(style) : "";
    return code.empty() ? text : code + text + "\x1b[0m";
}

void Output::Write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        Fail();
}

void Output::WriteRecord(const std::string& name) { Write(name + '\0'); }

// Indented: people read it too, and programs do not mind.
void Output::WriteJson(const Json& document) { Write(document.dump(2) + '\n'); }

void Output::Finish() {
    if (std::fflush(stdout) != 0)
        Fail();
}

void Output::Fail() const {
    // Reached only where SIGPIPE is ignored; otherwise the signal has ended the tool already.
    if (errno == EPIPE)
        throw ReaderGone();
    throw EnvironmentError(std::string("standard output cannot be written: ") + std::strerror(errno));
}

} // namespace tool
