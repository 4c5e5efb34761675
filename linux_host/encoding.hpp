#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host_interfaces/ustring.hpp"

/// @file
/// File names between bytes and UTF-16, without a temporary: the core of the named converters.
/// Every byte string survives the way there and back: a byte that belongs to no valid UTF-8 character, which
/// is always above 0x7F, travels as the unpaired unit 0xDC00 + byte.

namespace linux_host {

/// Is a byte of no character carried as an escape unit, or does the text end there?
enum class Escapes : bool { Refused, Taken };

/// Appends one form of a text to the other, up to what cannot be carried: broken UTF-8 or an unpaired
/// surrogate, so far as they are not taken as escapes.
/// @return how much of the source that is.
std::size_t AppendText(ustring& out, std::string_view bytes, Escapes escapes);
std::size_t AppendText(std::string& out, std::u16string_view units, Escapes escapes);

/// Appends the UTF-16 of @p bytes to @p out.
void AppendWide(ustring& out, std::string_view bytes);

/// Appends the bytes of @p units to @p out.
/// @return false at a surrogate that has no partner and is no escape unit; @p out then holds what stood
/// before.
bool AppendNarrow(std::string& out, std::u16string_view units);

/// The bytes of @p units for a reader's eyes: what has no byte form becomes U+FFFD.
std::string NarrowForDisplay(std::u16string_view units);

/// Length of the one character that begins at @p text: 1 for a byte that is no valid UTF-8.
/// @pre @p text is not empty.
std::size_t CharacterLength(std::string_view text);

} // namespace linux_host
