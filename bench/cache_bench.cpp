#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string_view>

#include <ovsel/ovsel.hpp>

#include "bench/groups.hpp"
#include "bench/workload.hpp"
#include "linux_host/linux_host.hpp"

namespace bench {

namespace {

constexpr char16_t prefix[] = u"T:\\toolbox";
constexpr char16_t cacheFile[] = u"T:\\cache.xml";

/// Reads the file at once and finds its line ends. The block is new each time, as a reader's is.
Turn ReadAndFindLines(const std::string& file, std::size_t lines) {
    return Measure(lines, [&] {
        std::FILE* stream = std::fopen(file.c_str(), "r");
        std::fseek(stream, 0, SEEK_END);
        const auto size = static_cast<std::size_t>(std::ftell(stream));
        std::rewind(stream);
        const auto text = std::make_unique_for_overwrite<char[]>(size);
        const char* at = text.get();
        const char* const end = at + std::fread(text.get(), 1, size, stream);
        std::fclose(stream);
        std::size_t count = 0;
        while ((at = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at))))) {
            ++count;
            ++at;
        }
        return count;
    });
}

std::size_t CountLines(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return static_cast<std::size_t>(std::count(std::istreambuf_iterator<char>(stream), {}, '\n'));
}

Turn LoadCache() {
    const ovPath path = NewPath(prefix);
    const double seconds = Seconds([&] { ovUseToolboxCache(path, cacheFile, prefix, false); });
    const bool right = ovInToolboxCacheMode();
    ovRevertFromToolboxCache(path); // so that the next turn replaces nothing
    return {seconds, right && !ovInToolboxCacheMode()};
}

/// From nothing to a path that answers, and no folder read.
Turn Start(const Workload& work) {
    const auto listings = linux_host::GetCounters().listings;
    ovPath path;
    const double seconds = Seconds([&] {
        path = NewPath(prefix);
        ovUseToolboxCache(path, cacheFile, prefix, false);
        AddFolders(path, work.folderNames);
    });
    const bool right = CountFiles(path) == work.shape.FilesWithBareNames() &&
                       linux_host::GetCounters().listings == listings + 1; // the current directory
    ovRevertFromToolboxCache(path);
    return {seconds, right};
}

} // namespace

void RunCacheStarts(Table& rows) {
    const char* const mode = std::getenv("PATH_MGR_MODE");
    const bool readsXml = mode != nullptr && std::strcmp(mode, "vfs") == 0;
    const Tree tree(std::filesystem::temp_directory_path());
    const Workload work(tree, "toolbox");
    {
        const ovPath writer = NewPath(prefix);
        AddFolders(writer, work.folderNames);
        ovWritePathToCacheFile(writer, "T:\\cache.xml");
    }
    // The first watch of the folders above the current directory costs what the kernel has cached of them,
    // which in a temporary folder is what others left there: held by a path that stays.
    const ovPath bystander = NewPath(prefix);
    const std::string file = tree.Path("cache.xml");
    const std::size_t lines = CountLines(file);
    const Side bareRead{1, [&] { return ReadAndFindLines(file, lines); }};
    const Side bareList{1, [&] { return Measure(work.entries, [&] { return ListBare(work.folders); }); }};
    const Side start{1, [&] { return Start(work); }};
    if (readsXml) {
        rows.PrintRatio("read_xml", {36, 55}, {1, &LoadCache}, bareRead);
        rows.PrintRatio("start_xml", {}, start, bareList);
    } else {
        rows.PrintRatio("read_by_hand", {7, 12}, {1, &LoadCache}, bareRead);
        rows.PrintRatio("start", {0.7, 1.2}, start, bareList);
    }
}

} // namespace bench
