#pragma once

#include <algorithm>
#include <vector>

/// Apart, so that MakeRoom itself is a comparison.
template <class T>
[[gnu::noinline, gnu::cold]] void Grow(std::vector<T>& items, std::size_t first) {
    items.reserve(std::max(first, 2 * items.capacity()));
}

/// Makes sure that the next push_back cannot fail, at the usual amortised cost. Called before something is
/// built that must not be left without its owner. @p first is the room that an empty one gets.
template <class T>
void MakeRoom(std::vector<T>& items, std::size_t first = 4) {
    if (items.size() == items.capacity()) [[unlikely]]
        Grow(items, first);
}
