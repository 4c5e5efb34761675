#pragma once

#include <array>
#include <string_view>

/// What stands behind the last dot of a file's name, in ten bytes: up to four units in place, a longer text
/// in a block of its own.
///
/// The first unit says which: NUL is a name without a dot, `;` an extension that is there and empty (a real
/// extension that begins with it reads as empty too), and `.`, which no extension holds, that the others are
/// the address of the text.
class FileExtension {
  public:
    explicit FileExtension(std::u16string_view diskName);
    ~FileExtension();
    FileExtension(const FileExtension&) = delete;
    FileExtension& operator=(const FileExtension&) = delete;

    /// NUL-terminated, without the dot; null if the name has none.
    const char16_t* Get() const {
        switch (m_units[0]) {
        case u'\0':
            return nullptr;
        case emptyMark:
            return u"";
        case longMark:
            return LongText();
        default:
            return m_units.data();
        }
    }

  private:
    static constexpr char16_t emptyMark = u';';
    static constexpr char16_t longMark = u'.';
    static constexpr std::size_t longestInPlace = 4;

    char16_t* LongText() const;

    std::array<char16_t, longestInPlace + 1> m_units{};
};
