#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// @file
/// Allocation-free forms of the path-name functions, for the library's own use, and the sets of separators.
/// The sets are not interchangeable: each function names the one that it keeps to.

/// `\` and `/`: what concatenation takes for a separator.
template <class Char>
constexpr bool IsSlash(Char c) {
    return c == '\\' || c == '/';
}

/// `\`, `/` and `:`: where a name is split into directory and file. A drive letter thus counts as directory.
template <class Char>
constexpr bool IsNameSplit(Char c) {
    // Letters in small stand behind all three, and most of a name is that.
    return c <= '\\' && (IsSlash(c) || c == ':');
}

/// Index of the last split unit, or npos. Narrow text must be 7-bit.
template <class View>
constexpr std::size_t LastNameSplit(View full) {
    for (std::size_t i = full.size(); i-- > 0;)
        if (IsNameSplit(full[i]))
            return i;
    return View::npos;
}

/// Length of the directory part of a name whose last split unit stands at @p split. A root keeps its
/// separator (`\`, `C:\`); a drive without one loses its colon, so `C:a` lies in `C`.
template <class View>
constexpr std::size_t DirPartLength(View full, std::size_t split) {
    const bool keepsSeparator = split == 0 || (split > 1 && full[split - 1] == ':');
    return keepsSeparator ? split + 1 : split;
}

/// What stands behind the last split unit; the whole name if there is none. A view into @p full.
constexpr std::u16string_view FilePartOf(std::u16string_view full) {
    // npos + 1 is 0.
    return full.substr(LastNameSplit(full) + 1);
}

/// Appends an element to a path that is being built: one separator between them, which @p name may bring. The
/// text of @p name lies outside @p path.
void AppendElement(std::u16string& path, std::u16string_view name);

/// The directory that ovSeparatePathName finds; empty if there is no split unit. A view into @p full that
/// begins where @p full does.
constexpr std::u16string_view DirPartOf(std::u16string_view full) {
    const std::size_t split = LastNameSplit(full);
    return full.substr(0, split == std::u16string_view::npos ? 0 : DirPartLength(full, split));
}
