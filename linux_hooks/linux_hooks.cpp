#include "linux_hooks/linux_hooks.hpp"

#include <algorithm>

#include "host_interfaces/utility.hpp"
#include "linux_host/linux_host.hpp"
#include "ovsel/ovsel.hpp"

namespace linux_hooks {

namespace {

/// A block that the library gives back with HostFree.
template <typename Range>
auto* NewBlock(const Range& range) {
    using Value = typename Range::value_type;
    auto* block = static_cast<Value*>(HostMallocWithCheck(range.size() * sizeof(Value)));
    std::copy(range.begin(), range.end(), block);
    return block;
}

char16_t* ReadDirectory(ovPath /*path*/, const ustring& dirName, unsigned short** attributes) {
    const auto listing = linux_host::ListDirectory(dirName);
    if (attributes != nullptr) {
        *attributes = listing ? NewBlock(listing->words) : nullptr;
    }
    return listing ? NewBlock(listing->names) : nullptr;
}

ovDirAccessibility GetAccessibility(ovPath /*path*/, const ustring& dirName) {
    return static_cast<ovDirAccessibility>(linux_host::DirectoryAccessibility(dirName));
}

bool Reserved(const ustring& /*name*/) { return false; }

bool DirExists(ovPath /*path*/, const ustring& name) { return linux_host::DirectoryExists(name); }

long GetFileTime(ovPath /*path*/, const ustring& name) { return linux_host::FileTime(name); }

} // namespace

bool InstallDefaultHooks() {
    return ovSetDefaultIOFcns(&ReadDirectory, &GetAccessibility, &Reserved, &DirExists, &GetFileTime);
}

} // namespace linux_hooks
