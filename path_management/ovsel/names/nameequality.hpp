#pragma once

#include <string_view>

/// What a unit of ASCII folds to; others stay.
constexpr char16_t LowerAscii(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
}

/// The one equality of names. Names of different length in code units differ, also where folding would make
/// them equal; otherwise code units are compared, or ICU's full case folding of both.
/// @throws std::bad_cast, "bad cast", for names of more than 0x7fffffff units without regard to case.
bool NamesEqual(std::u16string_view a, std::u16string_view b, bool caseSensitive);
