#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host_interfaces/text.hpp"

/// Fields of a table's row, which is written as one text with " | " between them.
inline std::vector<std::string> Fields(std::string_view row) {
    std::vector<std::string> fields;
    for (std::size_t end; (end = row.find(" | ")) != row.npos; row.remove_prefix(end + 3))
        fields.emplace_back(row.substr(0, end));
    fields.emplace_back(row);
    return fields;
}

inline ustring Wide(const std::string& text) { return fl::i18n::to_ustring(text.c_str()); }
inline std::string Narrow(const ustring& text) { return fl::i18n::codecvt_ustring_to_narrow_string()(text); }
