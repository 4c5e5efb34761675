#pragma once

namespace tool {

/// What stands in front of an entry of a drawing: its own branch, and below it the trunk of its parent or
/// nothing.
struct Branches {
    const char* middle;
    const char* last;
    const char* through;
    const char* blank;

    /// @param boxes as Output::HasBoxes says.
    static const Branches& Of(bool boxes) {
        static constexpr Branches Boxes = {"├── ", "└── ", "│   ", "    "};
        static constexpr Branches Ascii = {"|-- ", "`-- ", "|   ", "    "};
        return boxes ? Boxes : Ascii;
    }
};

} // namespace tool
