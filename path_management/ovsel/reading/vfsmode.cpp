#include "ovsel/reading/vfsmode.hpp"

#include <string_view>
#include <utility>

#include "host_interfaces/platform.hpp"
#include "host_interfaces/utility.hpp"

namespace {

bool ReadMode() {
    const char* mode = host::Platform().GetEnvironment("PATH_MGR_MODE");
    return mode && std::string_view(mode) == "vfs";
}

} // namespace

bool IsVFSMode() {
    static const bool vfs = ReadMode();
    // Behind the reading, since the host's print function may ask again.
    static bool isTold = false;
    if (vfs && !std::exchange(isTold, true))
        HostPrintf("Path Manager is running in VFS mode. \n");
    return vfs;
}
