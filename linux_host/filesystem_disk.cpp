#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/text.hpp"
#include "linux_host/drive_map.hpp"
#include "linux_host/encoding.hpp"
#include "linux_host/regular_file.hpp"

namespace fl::filesystem {

namespace {

/// Raises what an error number of the operating system amounts to.
[[noreturn]] void ThrowFailure(int error, const std::string& subject) {
    const std::string what = subject + ": " + std::strerror(error);
    switch (error) {
    case EACCES:
    case EPERM:
        throw AccessDenied(what);
    case ENOENT:
    case ENOTDIR:
        throw PathNotFound(what);
    case ENAMETOOLONG:
        throw FileNameTooLarge(what);
    default:
        throw SystemError(what);
    }
}

/// Raises what is wrong with a name before the disk is asked at all.
[[noreturn]] void ThrowFailure(linux_host::PathFault fault, const ustring& name) {
    const std::string what = linux_host::NarrowForDisplay(name) + ": " + linux_host::TextOf(fault);
    switch (fault) {
    case linux_host::PathFault::NulInside:
        throw InvalidArgument(what);
    case linux_host::PathFault::Unconvertible:
        throw FileNameConversionFailure(what);
    default:
        throw PathNotFound(what);
    }
}

} // namespace

bool exists(const ustring& name) {
    const linux_host::ResolvedPath resolved = linux_host::ResolveName(name);
    if (resolved.fault == linux_host::PathFault::NoRoot) {
        return false;
    }
    if (resolved.fault != linux_host::PathFault::None) {
        ThrowFailure(resolved.fault, name);
    }
    struct stat status {};
    if (::stat(resolved.path.c_str(), &status) == 0) {
        return true;
    }
    if (errno != ENOENT && errno != ENOTDIR) {
        ThrowFailure(errno, resolved.path);
    }
    return false;
}

std::FILE* open_for_reading(const char* name) {
    const linux_host::ResolvedPath resolved = linux_host::ResolveName(fl::i18n::to_ustring(name));
    if (resolved.fault != linux_host::PathFault::None) {
        return nullptr;
    }
    const int descriptor = linux_host::OpenRegularFile(resolved.path, O_RDONLY);
    if (descriptor < 0) {
        return nullptr;
    }
    std::FILE* file = ::fdopen(descriptor, "r");
    if (file == nullptr) {
        ::close(descriptor);
    }
    return file;
}

ustring current_path() {
    // A current directory may be deeper than PATH_MAX; glibc allocates what it takes.
    const std::unique_ptr<char, decltype(&std::free)> path(::getcwd(nullptr, 0), &std::free);
    if (path == nullptr) {
        ThrowFailure(errno, "current directory");
    }
    // Outside of the process's root the kernel answers "(unreachable)...", which is no absolute path either.
    std::optional<ustring> name = linux_host::DriveMap::ToName(path.get());
    if (!name) {
        throw SystemError(std::string("current directory without a name: ") + path.get());
    }
    return *std::move(name);
}

void current_path(const ustring& name) {
    if (name.empty()) {
        throw InvalidArgument("an empty name");
    }
    const linux_host::ResolvedPath resolved = linux_host::ResolveName(name);
    if (resolved.fault != linux_host::PathFault::None) {
        ThrowFailure(resolved.fault, name);
    }
    if (::chdir(resolved.path.c_str()) != 0) {
        ThrowFailure(errno, resolved.path);
    }
}

} // namespace fl::filesystem
