#include "ovsel/reading/vfsmode.hpp"

#include <string_view>

#include "host_interfaces/platform.hpp"
#include "host_interfaces/utility.hpp"

namespace {

bool ReadMode() {
    const char* mode = host::Platform().GetEnvironment("PATH_MGR_MODE");
    const bool vfs = mode && std::string_view(mode) == "vfs";
    if (vfs)
        HostPrintf("Path Manager is running in VFS mode. \n");
    return vfs;
}

} // namespace

bool IsVFSMode() {
    static const bool vfs = ReadMode();
    return vfs;
}
