#include "linux_host/change_notification.hpp"

#include <fcntl.h>
#include <unistd.h>

#include "linux_host/drive_map.hpp"

namespace linux_host {

bool WriteProbeFile(const ustring& name, std::string_view text) {
    const ResolvedPath resolved = ResolveName(name);
    if (resolved.fault != PathFault::None) {
        return false;
    }
    // The name can be guessed, and others may write to the folder: a file or link that stands there is
    // theirs.
    const int file =
        ::open(resolved.path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0) {
        return false;
    }
    // A full disk takes no text; that the file came and went is what the probe is about.
    [[maybe_unused]] const ::ssize_t written = ::write(file, text.data(), text.size());
    ::close(file);
    ::unlink(resolved.path.c_str());
    return true;
}

} // namespace linux_host
