#include "host_interfaces/text.hpp"

#include <algorithm>
#include <cstring>
#include <unicode/ucnv.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include "linux_host/encoding.hpp"

namespace linux_host {

namespace {

constexpr char16_t EscapeBase = 0xDC00;

bool IsEscape(char16_t unit) { return unit >= EscapeBase + 0x80 && unit <= EscapeBase + 0xFF; }

struct Character {
    UChar32 codePoint; ///< negative for a byte that is no valid UTF-8
    std::size_t length;
};

Character Decode(std::string_view text) {
    // ICU counts in 32 bits and passes over several bytes of a broken character at once; a window of four
    // bytes holds any whole one, and the bytes of a broken one are taken one by one.
    const auto window = static_cast<std::int32_t>(std::min<std::size_t>(text.size(), U8_MAX_LENGTH));
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    std::int32_t index = 0;
    UChar32 codePoint = 0;
    U8_NEXT(bytes, index, window, codePoint);
    return {codePoint, codePoint < 0 ? 1 : static_cast<std::size_t>(index)};
}

void AppendUnits(ustring& out, UChar32 codePoint) {
    if (U_IS_BMP(codePoint)) {
        out.push_back(static_cast<char16_t>(codePoint));
    } else {
        out.push_back(static_cast<char16_t>(U16_LEAD(codePoint)));
        out.push_back(static_cast<char16_t>(U16_TRAIL(codePoint)));
    }
}

void AppendBytes(std::string& out, UChar32 codePoint) {
    std::uint8_t bytes[U8_MAX_LENGTH];
    std::size_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, codePoint);
    out.append(reinterpret_cast<const char*>(bytes), length);
}

/// How many bytes or units stand before the first character above ASCII: nearly always all, so they are
/// looked at a word at a time.
template <typename Source>
std::size_t AsciiLength(Source source) {
    using Unit = typename Source::value_type;
    constexpr std::uint64_t beyondAscii = sizeof(Unit) == 1 ? 0x8080'8080'8080'8080U : 0xff80'ff80'ff80'ff80U;
    constexpr std::size_t unitsPerWord = sizeof beyondAscii / sizeof(Unit);
    std::size_t length = 0;
    for (; source.size() - length >= unitsPerWord; length += unitsPerWord) {
        std::uint64_t word = 0;
        std::memcpy(&word, source.data() + length, sizeof word);
        if ((word & beyondAscii) != 0) {
            break;
        }
    }
    while (length < source.size() && (static_cast<unsigned>(source[length]) & ~0x7FU) == 0) {
        ++length;
    }
    return length;
}

/// Appends what stands before the first character above ASCII.
/// @return its length.
template <typename Text, typename Source>
std::size_t AppendAscii(Text& out, Source source) {
    const std::size_t length = AsciiLength(source);
    const std::size_t before = out.size();
    out.resize(before + length);
    // A plain loop between plain pointers, which compilers turn into a few wide steps.
    auto* const to = out.data() + before;
    const auto* const from = source.data();
    for (std::size_t i = 0; i < length; ++i) {
        to[i] = static_cast<typename Text::value_type>(from[i]);
    }
    return length;
}

/// Appends the character at the start of @p units, which is not ASCII. @return its length in units, or 0.
std::size_t AppendWideCharacter(std::string& out, std::u16string_view units, Escapes escapes) {
    const char16_t unit = units[0];
    // A pair comes before an escape: the low half of a pair may lie in the escapes' range.
    if (U16_IS_LEAD(unit) && units.size() > 1 && U16_IS_TRAIL(units[1])) {
        AppendBytes(out, U16_GET_SUPPLEMENTARY(unit, units[1]));
        return 2;
    }
    if (escapes == Escapes::Taken && IsEscape(unit)) {
        out.push_back(static_cast<char>(unit - EscapeBase));
        return 1;
    }
    if (U16_IS_SURROGATE(unit)) {
        return 0;
    }
    AppendBytes(out, unit);
    return 1;
}

} // namespace

std::size_t AppendText(ustring& out, std::string_view bytes, Escapes escapes) {
    for (std::size_t at = 0;;) {
        at += AppendAscii(out, bytes.substr(at));
        if (at == bytes.size()) {
            return at;
        }
        const Character character = Decode(bytes.substr(at));
        if (character.codePoint < 0 && escapes == Escapes::Refused) {
            return at;
        }
        AppendUnits(out, character.codePoint < 0 ? EscapeBase + static_cast<unsigned char>(bytes[at])
                                                 : character.codePoint);
        at += character.length;
    }
}

std::size_t AppendText(std::string& out, std::u16string_view units, Escapes escapes) {
    for (std::size_t at = 0;;) {
        at += AppendAscii(out, units.substr(at));
        if (at == units.size()) {
            return at;
        }
        const std::size_t length = AppendWideCharacter(out, units.substr(at), escapes);
        if (length == 0) {
            return at;
        }
        at += length;
    }
}

void AppendWide(ustring& out, std::string_view bytes) { AppendText(out, bytes, Escapes::Taken); }

bool AppendNarrow(std::string& out, std::u16string_view units) {
    return AppendText(out, units, Escapes::Taken) == units.size();
}

std::string NarrowForDisplay(std::u16string_view units) {
    std::string text;
    while (!units.empty()) {
        units.remove_prefix(AppendAscii(text, units));
        if (!units.empty()) {
            const std::size_t length = AppendWideCharacter(text, units, Escapes::Taken);
            if (length == 0) {
                AppendBytes(text, 0xFFFD);
            }
            units.remove_prefix(std::max<std::size_t>(length, 1));
        }
    }
    return text;
}

std::size_t CharacterLength(std::string_view text) { return Decode(text).length; }

} // namespace linux_host

namespace fl::i18n {

namespace {

/// The one encoding of this host, under any spelling of its name.
void RequireUtf8(const std::string& encoding) {
    if (::ucnv_compareNames(encoding.c_str(), "UTF-8") != 0) {
        throw CvtInvalidCharacter("no such encoding: " + encoding);
    }
}

template <typename Text, typename Source>
Text Strictly(Source source, const char* fault) {
    Text result;
    result.reserve(source.size());
    const std::size_t taken = linux_host::AppendText(result, source, linux_host::Escapes::Refused);
    if (taken != source.size()) {
        throw CvtInvalidCharacter(fault + (" at " + std::to_string(taken)));
    }
    return result;
}

} // namespace

CvtInvalidCharacter::~CvtInvalidCharacter() = default;

ustring codecvt_narrow_string_to_ustring::operator()(std::string_view text) const {
    ustring result;
    linux_host::AppendWide(result, text);
    return result;
}

std::string codecvt_ustring_to_narrow_string::operator()(const ustring& text) const {
    std::string result;
    if (!linux_host::AppendNarrow(result, text)) {
        throw CvtInvalidCharacter("unpaired surrogate in a name");
    }
    return result;
}

ustring codecvt_ascii_to_ustring::operator()(std::string_view text) const {
    ustring result;
    if (linux_host::AppendAscii(result, text) != text.size()) {
        throw CvtInvalidCharacter("byte above 127 in ASCII text");
    }
    return result;
}

std::string codecvt_ustring_to_ascii::operator()(const ustring& text) const {
    std::string result;
    if (linux_host::AppendAscii(result, std::u16string_view(text)) != text.size()) {
        throw CvtInvalidCharacter("unit above 127 in text that is to be ASCII");
    }
    return result;
}

codecvt_ustring_to_string::codecvt_ustring_to_string(const std::string& encoding) { RequireUtf8(encoding); }

std::string codecvt_ustring_to_string::operator()(const ustring& text) const {
    return Strictly<std::string>(std::u16string_view(text), "unpaired surrogate");
}

codecvt_string_to_ustring::codecvt_string_to_ustring(const std::string& encoding) { RequireUtf8(encoding); }

ustring codecvt_string_to_ustring::operator()(std::string_view text) const {
    return Strictly<ustring>(text, "no valid UTF-8");
}

ustring to_ustring(const char* text) {
    return text == nullptr ? ustring() : codecvt_narrow_string_to_ustring()(text);
}

} // namespace fl::i18n
