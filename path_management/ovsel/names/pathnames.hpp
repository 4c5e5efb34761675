#pragma once

#include <cstddef>
#include <string_view>

/// @file
/// Allocation-free forms of the path-name functions, for the library's own use, and the three sets of
/// separators. The sets are not interchangeable: each function names the one that it keeps to.

/// `\` and `/`: what concatenation takes for a separator.
constexpr bool IsSlash(char16_t unit) { return unit == u'\\' || unit == u'/'; }

/// `\`, `/` and `:`: where a name is split into directory and file. A drive letter thus counts as directory.
constexpr bool IsNameSplit(char16_t unit) { return IsSlash(unit) || unit == u':'; }

/// Letters that a drive may have; never asks the locale.
constexpr bool IsDriveLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// Length of the directory part of a name whose last split unit stands at @p split. A root keeps its
/// separator (`\`, `C:\`); a drive without one loses its colon, so `C:a` lies in `C`.
template <class View>
constexpr std::size_t DirPartLength(View full, std::size_t split) {
    const bool keepsSeparator = split == 0 || (split > 1 && full[split - 1] == ':');
    return keepsSeparator ? split + 1 : split;
}

/// Index of the last split unit, or npos.
constexpr std::size_t LastNameSplit(std::u16string_view full) {
    for (std::size_t i = full.size(); i-- > 0;)
        if (IsNameSplit(full[i]))
            return i;
    return std::u16string_view::npos;
}

/// What stands behind the last split unit; the whole name if there is none. A view into @p full.
constexpr std::u16string_view FilePartOf(std::u16string_view full) {
    // npos + 1 is 0.
    return full.substr(LastNameSplit(full) + 1);
}

/// The directory that ovSeparatePathName finds; empty if there is no split unit. A view into @p full that
/// begins where @p full does.
constexpr std::u16string_view DirPartOf(std::u16string_view full) {
    const std::size_t split = LastNameSplit(full);
    return split == std::u16string_view::npos ? full.substr(0, 0)
                                              : full.substr(0, DirPartLength(full, split));
}
