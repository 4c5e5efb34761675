#include "ovsel/cache/loadtoolboxcache.hpp"

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/storage.hpp"
#include "host_interfaces/text.hpp"
#include "host_interfaces/utility.hpp"
#include "ovsel/cache/cachestate.hpp"
#include "ovsel/cache/handreader.hpp"
#include "ovsel/cache/xmlreader.hpp"
#include "ovsel/reading/vfsmode.hpp"

namespace Quorrant::ovsel {

namespace {

foundation::storage::vfs::AbsoluteIRI LocationOf(const ustring& name) {
    return foundation::storage::vfs::toAbsoluteIRI(u"file", fl::filesystem::make_native_form(name, true));
}

/// A file without contents leaves the tree of an earlier loading in place; bad contents leave none.
bool ReadIntoTree(const char* fileName) {
    CacheState& state = CacheState::Get();
    HandReading reading = ReadCacheFileByHand(fileName);
    if (!reading.opened && state.IsTalkative())
        HostPrintf("Unable to open Toolbox Path Cache file: %s\n", fileName);
    state.directoryCount = reading.directoryCount;
    const bool good = reading.root != nullptr;
    if (reading.reachedContents)
        state.SetTree(std::move(reading.root));
    return good;
}

} // namespace

bool LoadToolboxCache(const ovPath& path, const char* fileName, const ustring& prefix) {
    const CacheState& state = CacheState::Get();
    if (state.IsTalkative())
        HostPrintf("Attempting to load Toolbox Path Cache %s\n", fileName);
    HostTic();
    const bool loaded =
        IsVFSMode() ? ReadCacheFileXML(path, LocationOf(fl::i18n::to_ustring(fileName)), LocationOf(prefix))
                    : ReadIntoTree(fileName);
    if (!loaded)
        return false;
    const double seconds = HostToc("cachepath");
    if (state.IsTalkative() || state.report)
        HostPrintf("  Toolbox Path Cache read in %.2f seconds.\n", seconds);
    if (state.IsTalkative())
        HostPrintf("Toolbox Path Cache contains %d directories.\n", state.directoryCount);
    return true;
}

} // namespace Quorrant::ovsel
