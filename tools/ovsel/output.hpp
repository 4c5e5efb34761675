#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include <host_interfaces/ustring.hpp>

#include "tools/ovsel/options.hpp"

namespace tool {

using Json = nlohmann::ordered_json;

/// Text as a person may see it: itself, or `$'...'` in the manner of a shell if it holds control characters,
/// characters that change the direction of writing, or bytes that are not UTF-8.
std::string Shown(std::string_view text);

/// A message as a person may see it: the same escapes, without the quotes around it.
std::string Harmless(std::string_view message);

/// Writes `ovsel: message` and a newline to standard error. The message is made harmless first.
void Complain(const std::string& message);

/// A name for JSON: a string if it is UTF-8, else an object with its bytes in base64.
Json JsonName(std::string_view name);

enum class Style { Plain, Faint, File, Class, Package, Private, Heading };

/// Standard output in the way that the options ask for.
class Output {
  public:
    explicit Output(const Options& options);

    bool IsJson() const { return m_json; }
    bool IsNul() const { return m_nul; }
    /// Are box-drawing characters welcome? Only on a terminal whose locale is UTF-8.
    bool HasBoxes() const { return m_boxes; }

    /// The exact bytes of a full name of the library in the form asked for.
    std::string InForm(const ustring& name) const;
    /// @p text between colour codes, or itself when there are no colours.
    std::string Paint(Style style, const std::string& text) const;

    /// @throws ReaderGone, EnvironmentError when the text cannot be written.
    void Write(std::string_view text);
    /// A name and its NUL.
    void WriteRecord(const std::string& name);
    void WriteJson(const Json& document);
    /// To be called at the end, since the last of the text may fail to be written as well, and wherever a
    /// reader must not wait for more.
    void Finish();

  private:
    [[noreturn]] void Fail() const;

    bool m_json;
    bool m_nul;
    Form m_form;
    bool m_colors;
    bool m_boxes;
};

} // namespace tool
