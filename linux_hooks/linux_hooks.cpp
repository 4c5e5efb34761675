#include "linux_hooks/linux_hooks.hpp"

#include "linux_host/linux_host.hpp"
#include "ovsel/ovsel.hpp"

namespace linux_hooks {

namespace {

char16_t* ReadDirectory(ovPath /*path*/, const ustring& dirName, unsigned short** attributes) {
    auto listing = linux_host::ListDirectoryInBlocks(dirName);
    if (attributes != nullptr) {
        *attributes = listing ? listing->words.release() : nullptr;
    }
    return listing ? listing->names.release() : nullptr;
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
