// A cache file for the XML reader: any bytes. A path that runs from what is taken must be whole.

#include "fuzz/cache_session.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static cache_session::Session session("vfs");
    cache_session::g_file.assign(data, data + size);
    cache_session::CachedDirMap contents;
    if (!session.ReadXml(contents))
        return 0;
    std::vector<ustring> dirs;
    for (const auto& [name, listed] : contents)
        dirs.push_back(name);
    std::sort(dirs.begin(), dirs.end());
    session.RunFromCache(dirs);
    return 0;
}
