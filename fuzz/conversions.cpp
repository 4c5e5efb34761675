// Text between bytes and UTF-16 as the Linux host converts it: strict conversions against ICU's, lenient ones
// there and back, and characters one by one. The input is taken as bytes, and as units.

#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include "fuzz/body.hpp"
#include "host_interfaces/platform.hpp"
#include "host_interfaces/text.hpp"
#include "host_interfaces/utility.hpp"

namespace {

using namespace fl::i18n;

const codecvt_string_to_ustring fromUtf8("UTF-8");
const codecvt_ustring_to_string toUtf8("UTF-8");

/// What a converter makes of a text, and whether it takes it.
template <class Converter, class Source, class Result>
bool Converts(const Converter& converter, const Source& source, Result& result) {
    try {
        result = converter(source);
        return true;
    } catch (const CvtInvalidCharacter&) {
        return false;
    }
}

/// The same for a function of ICU. @pre @p result has room for it.
template <class Function, class Source, class Result>
bool ConvertsInIcu(Function convert, const Source& source, Result& result) {
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = 0;
    convert(result.data(), static_cast<std::int32_t>(result.size()), &length, source.data(),
            static_cast<std::int32_t>(source.size()), &status);
    result.resize(static_cast<std::size_t>(length));
    return U_SUCCESS(status) != 0;
}

void CheckBytes(const std::string& bytes) {
    const ustring lenient = codecvt_narrow_string_to_ustring()(bytes);
    ExpectSame(codecvt_ustring_to_narrow_string()(lenient), bytes, "every byte comes back");
    ustring strict, ascii, expected(bytes.size(), u'\0');
    const bool isText = Converts(fromUtf8, bytes, strict);
    Expect(isText == ConvertsInIcu(u_strFromUTF8, bytes, expected), "ICU takes the same bytes for text");
    Expect(!isText || (strict == expected && strict == lenient), "text reads as ICU reads it");
    const bool isAscii = Converts(codecvt_ascii_to_ustring(), bytes, ascii);
    Expect(isAscii == IsAll7Bit(bytes.data(), bytes.size()), "ASCII has seven bits");
    Expect(!isAscii || ascii == lenient, "ASCII reads alike everywhere");
}

/// Both directions meet the same characters, and each byte of none has a unit of its own.
void CheckCharacters(const std::string& bytes) {
    const Block text = Terminated(bytes);
    ustring units;
    for (std::size_t at = 0; at < bytes.size();) {
        const char* const p = text.get() + at;
        std::int32_t step = 0;
        UChar32 character = 0;
        U8_NEXT(reinterpret_cast<const std::uint8_t*>(p), step, static_cast<std::int32_t>(bytes.size() - at),
                character);
        at += character < 0 ? 1 : static_cast<std::size_t>(step); // bytes of no character stand alone
        if (character > 0xFFFF)
            units += {U16_LEAD(character), U16_TRAIL(character)};
        else
            units +=
                static_cast<char16_t>(character < 0 ? 0xDC00 | static_cast<std::uint8_t>(*p) : character);
        Expect(host::Platform().PreviousCharacter(text.get(), text.get() + at) == p,
               "a step back undoes one");
    }
    Expect(codecvt_narrow_string_to_ustring()(bytes) == units, "bytes of no character escape one by one");
}

void CheckUnits(const ustring& units) {
    std::string strict, lenient, expected(units.size() * 3, '\0');
    const bool isText = Converts(toUtf8, units, strict);
    Expect(isText == ConvertsInIcu(u_strToUTF8, units, expected), "ICU takes the same units for text");
    Expect(!isText || strict == expected, "units read as ICU reads them");
    const bool isName = Converts(codecvt_ustring_to_narrow_string(), units, lenient);
    Expect(!isText || (isName && lenient == strict), "text is a name");
    Expect(!isText || codecvt_narrow_string_to_ustring()(lenient) == units, "and comes back from one");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    CheckBytes(bytes);
    CheckCharacters(bytes);
    ustring units(size / 2, u'\0');
    if (size > 1)
        std::memcpy(units.data(), data, units.size() * sizeof(char16_t));
    CheckUnits(units);
    return 0;
}
