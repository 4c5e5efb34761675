#pragma once

#include <cstdint>
#include <string_view>

#include "ovsel/names/ovselconstants.hpp"

/// One entry of a directory as an item source delivers it.
struct DirItemInfo {
    std::u16string_view name; ///< with its sentinel, if it has one; the text is the source's
    DirItemKind kind = DirItemUnknown;
    bool confirmed = true;      ///< false: only assumed to be a file, to be verified on first use
    std::uint32_t fileKind = 0; ///< for files: 0 not known, 1 a class definition, 2 none
};
