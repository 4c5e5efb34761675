#pragma once

#include <cstdint>

/// What a search looks through; fixed at its creation.
enum SearchScope : std::int32_t {
    SearchScopeAll = 1,
    SearchScopeVisible = 2,
    SearchScopeMethod = 3,
    SearchScopePrivate = 4,
    SearchScopeDir = 5,
    SearchScopePathOnly = 6
};

/// What a search is walking for at the moment; follows the operation called.
enum SearchMode : std::int32_t {
    SearchModeFile = 0,
    SearchModeDir = 1,
    SearchModeSubDir = 2,
    SearchModePackage = 3,     ///< selected by no operation
    SearchModeClass = 4,       ///< selected by no operation
    SearchModeUnspecified = 5, ///< files and plain sub-directories
    SearchModeUnset = 6        ///< before the first operation, so that this one always counts as a change
};
