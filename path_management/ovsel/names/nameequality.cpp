#include "ovsel/names/nameequality.hpp"

#include <cstdint>
#include <cstring>
#include <limits>
#include <typeinfo>

#include <unicode/ustring.h>

namespace {

class LengthBeyondInt : public std::bad_cast {
  public:
    const char* what() const noexcept override { return "bad cast"; }
};

std::int32_t CheckedLength(std::u16string_view text) {
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        throw LengthBeyondInt();
    return static_cast<std::int32_t>(text.size());
}

bool FoldedEqual(std::u16string_view a, std::u16string_view b) {
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t order =
        u_strCaseCompare(a.data(), CheckedLength(a), b.data(), CheckedLength(b), 0, &status);
    return U_SUCCESS(status) && order == 0;
}

/// @pre @p a and @p b have the same length
bool HaveSameUnits(std::u16string_view a, std::u16string_view b) {
    constexpr std::size_t fewUnits = 4;
    if (a.size() > fewUnits)
        return std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0;
    // Unit by unit, as a search has only just written the extensions that it wants.
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i])
            return false;
    return true;
}

} // namespace

bool NamesEqual(std::u16string_view a, std::u16string_view b, bool caseSensitive) {
    if (a.size() != b.size())
        return false;
    const bool same = HaveSameUnits(a, b);
    if (same || caseSensitive)
        return same;
    // ASCII folds to ASCII, so the full comparison is needed only from the first other unit on; but folding
    // is a matter of the whole text there, since one unit may fold to several.
    for (std::size_t i = 0; i < a.size(); ++i) {
        if ((a[i] | b[i]) >= 0x80)
            return FoldedEqual(a, b);
        if (LowerAscii(a[i]) != LowerAscii(b[i]))
            return false;
    }
    return true;
}
