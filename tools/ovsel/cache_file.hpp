#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// How far both of the library's readers follow a cache.
inline constexpr std::size_t MostCacheBytes = std::size_t{256} << 20;
inline constexpr std::size_t MostCacheName = 1280;
inline constexpr std::size_t MostCacheLevels = 2048;

/// One entry of a folder. `d` is a plain sub-folder; a file is `C` if it is known to define a class, `N` if
/// it is known not to, `U` if it may be a folder too (a link), and otherwise `F`.
struct CacheEntry {
    char letter;
    std::string name;

    // The 0 that is no nullptr is in the code that the compiler makes of this.
    auto operator<=>(const CacheEntry&) const = default; // NOLINT(modernize-use-nullptr)
};

/// One folder of a cache.
struct CacheFolder {
    std::string name;                 ///< from the prefix on, with `/` between its elements
    std::vector<CacheFolder> folders; ///< packages, classes and the private folder
    std::vector<CacheEntry> entries;

    bool operator==(const CacheFolder&) const = default;
};

struct CacheFile {
    std::string version;
    std::string date;
    std::vector<CacheFolder> folders; ///< those of the path, in its order
};

/// The last element of a folder's name.
std::string_view LeafOf(const CacheFolder& folder);

struct CacheCounts {
    std::size_t folders = 0; ///< at any depth
    std::size_t entries = 0;
};
CacheCounts CountAll(const std::vector<CacheFolder>& folders);

/// Why a name cannot stand in a cache so that both readers take it for what it is; null if it can.
const char* WhyNotCarried(std::string_view name);

/// Reads the text of a cache, line by line, and takes nothing that a writer would not have written: what the
/// library would make of anything else is not to be guessed.
/// @param file what messages call it.
/// @throws FindingError with the number of the first line that is wrong.
CacheFile ParseCache(std::string_view text, std::string_view file);

/// The same from a regular file.
/// @throws EnvironmentError for one that cannot be read.
CacheFile ReadCache(const std::string& path, std::string_view file);

} // namespace tool
