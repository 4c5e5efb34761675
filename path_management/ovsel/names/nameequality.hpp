#pragma once

#include <string_view>

/// The one equality of names. Names of different length in code units differ, also where folding would make
/// them equal; otherwise code units are compared, or ICU's full case folding of both.
/// @throws std::bad_cast, "bad cast", for names of more than 0x7fffffff units without regard to case.
bool NamesEqual(std::u16string_view a, std::u16string_view b, bool caseSensitive);
