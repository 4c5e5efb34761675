#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host_interfaces/export.hpp"
#include "host_interfaces/ustring.hpp"

/// @file
/// The text layer: conversions between narrow text and `ustring`, and the message catalogue.
/// Narrow text is in the encoding of file names, on Linux UTF-8 in which every byte survives.

/// Text in its encodings, and the messages for people.
namespace fl::i18n {

/// A unit or byte that the target of a conversion cannot carry.
class OVSEL_HOST_API CvtInvalidCharacter : public std::runtime_error {
  public:
    /// @p what is English and for logs.
    explicit CvtInvalidCharacter(const std::string& what) : std::runtime_error(what) {}
    ~CvtInvalidCharacter() override;
};

/// Narrow text to UTF-16. Never fails: bytes that are no valid text become escape units and come back.
class OVSEL_HOST_API codecvt_narrow_string_to_ustring {
  public:
    /// Also of text with NULs inside.
    ustring operator()(std::string_view text) const;
};

/// UTF-16 to narrow text, the exact reverse of the above.
/// @throws CvtInvalidCharacter for a surrogate without its partner that is no escape unit.
class OVSEL_HOST_API codecvt_ustring_to_narrow_string {
  public:
    /// @throws CvtInvalidCharacter as said above.
    std::string operator()(const ustring& text) const;
};

/// ASCII to UTF-16. @throws CvtInvalidCharacter for a byte above 127.
class OVSEL_HOST_API codecvt_ascii_to_ustring {
  public:
    /// @throws CvtInvalidCharacter as said above.
    ustring operator()(std::string_view text) const;
};

/// UTF-16 to ASCII. @throws CvtInvalidCharacter for a unit above 127.
class OVSEL_HOST_API codecvt_ustring_to_ascii {
  public:
    /// @throws CvtInvalidCharacter as said above.
    std::string operator()(const ustring& text) const;
};

/// UTF-16 to text in a named encoding; "UTF-8" is the one that every host has. Strict: nothing escapes.
class OVSEL_HOST_API codecvt_ustring_to_string {
  public:
    /// @throws CvtInvalidCharacter for an encoding that the host does not have.
    explicit codecvt_ustring_to_string(const std::string& encoding);
    /// @throws CvtInvalidCharacter for a unit that the encoding cannot carry.
    std::string operator()(const ustring& text) const;
};

/// Text in a named encoding to UTF-16, the exact reverse.
class OVSEL_HOST_API codecvt_string_to_ustring {
  public:
    /// @throws CvtInvalidCharacter for an encoding that the host does not have.
    explicit codecvt_string_to_ustring(const std::string& encoding);
    /// @throws CvtInvalidCharacter for bytes that are no text in the encoding.
    ustring operator()(std::string_view text) const;
};

/// Short for the first of the converters above. Null counts as empty.
OVSEL_HOST_API ustring to_ustring(const char* text);

/// A message: its component, its identifier within that, and its arguments by position.
struct OVSEL_HOST_API Message {
    std::string component;          ///< such as "SORVEN:ovsel"
    std::string id;                 ///< the key in the catalogue
    std::vector<ustring> arguments; ///< by position

    /// `component:id`.
    std::string FullId() const;
};

/// Names a locale, such as "en_US" or "de"; the catalogue falls back to English.
class OVSEL_HOST_API Locale {
  public:
    /// Any text: an unknown locale reads English.
    explicit Locale(std::string name) : m_name(std::move(name)) {}
    /// The name that it was made with.
    const std::string& name() const { return m_name; }

    /// The global locale; at start the one of the environment.
    static const Locale& global();
    /// Replaces the global locale and returns the old one.
    static Locale set_global(Locale locale);

  private:
    std::string m_name;
};

/// The text of a message in a locale. A message that the catalogue does not know reads as its full
/// identifier followed by its arguments; this never throws for want of a text.
OVSEL_HOST_API ustring message_text(const Message& message, const Locale& locale);

/// Raises a message as an exception; what() is its text in the global locale, narrow.
class OVSEL_HOST_API MessageException : public std::exception {
  public:
    /// Fetches the text at once, in the global locale of this moment.
    explicit MessageException(Message message);
    ~MessageException() override;

    /// The text, narrow, as long as the exception lives.
    const char* what() const noexcept override { return m_text.c_str(); }
    /// What was raised.
    const Message& message() const { return m_message; }
    /// `component:id` of the message.
    std::string identifier() const { return m_message.FullId(); }
    /// The message's arguments.
    const std::vector<ustring>& arguments() const { return m_message.arguments; }

  private:
    Message m_message;
    std::string m_text;
};

} // namespace fl::i18n
