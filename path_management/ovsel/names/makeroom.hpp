#pragma once

#include <algorithm>
#include <vector>

/// Makes sure that the next push_back cannot fail, at the usual amortised cost. Called before something is
/// built that must not be left without its owner.
template <class T>
void MakeRoom(std::vector<T>& items) {
    if (items.size() == items.capacity())
        items.reserve(std::max<std::size_t>(4, 2 * items.capacity()));
}
