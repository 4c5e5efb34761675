#pragma once

#include <cstddef>
#include <cstring>

#include <boost/numeric/conversion/cast.hpp>

/// @file
/// What the plain forms share: text in buffers of the caller.

/// Length of plain text in bytes. Plain results are told in `int`, so a text whose length that cannot hold
/// is refused before anything is written.
/// @throws boost::numeric::positive_overflow
inline std::size_t PlainLength(const char* text) {
    return static_cast<std::size_t>(boost::numeric_cast<int>(std::strlen(text)));
}

/// Has it nothing but ASCII? Then every text layer converts it alike.
inline bool IsAscii(const char* text) {
    // Signed, whatever plain char is here: what is beyond ASCII is below zero.
    while (static_cast<signed char>(*text) > 0)
        ++text;
    return *text == '\0';
}

/// Does the text begin with a drive, `X:`? Letters are those of ASCII, whatever the locale.
inline bool BeginsWithDrive(const char* name) {
    const bool letter = (name[0] >= 'a' && name[0] <= 'z') || (name[0] >= 'A' && name[0] <= 'Z');
    return letter && name[1] == ':';
}

/// Writes @p length bytes of @p text and a terminator to @p dst; the two may overlap, so that a caller may
/// work within one buffer.
inline void CopyPlain(char* dst, const char* text, std::size_t length) {
    std::memmove(dst, text, length);
    dst[length] = '\0';
}
