#pragma once

#include <algorithm>
#include <functional>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/platform.hpp"
#include "host_interfaces/storage.hpp"
#include "host_interfaces/text.hpp"
#include "host_interfaces/utility.hpp"
#include "linux_host/linux_host.hpp"
#include "tests/support/temp_tree.hpp"

namespace test {

namespace fs = fl::filesystem;
namespace vfs = foundation::storage::vfs;
using linux_host::DriveMap;

inline ustring Wide(std::string_view text) { return fl::i18n::codecvt_narrow_string_to_ustring()(text); }
inline std::string Narrow(const ustring& text) { return fl::i18n::codecvt_ustring_to_narrow_string()(text); }

/// The name of a path inside a tree. The tree's own path can be spelled in the grammar.
inline ustring NameOf(const TempTree& tree, const std::string& path = {}) {
    return DriveMap::ToName(tree.Path(path)).value();
}

inline constexpr int CannotPrepare = 125;
inline constexpr ::uid_t Nobody = 65534;

/// What @p question answers (0 to 124) in a child process, once @p prepare has succeeded there.
inline int AskInChild(const std::function<bool()>& prepare, const std::function<int()>& question) {
    const ::pid_t child = ::fork();
    if (child == 0) {
        try {
            ::_exit(prepare() ? question() : CannotPrepare);
        } catch (...) {
            ::_exit(CannotPrepare + 1); // the tests behind this one are the parent's
        }
    }
    int status = 0;
    const bool ended = ::waitpid(child, &status, 0) == child && WIFEXITED(status);
    return ended ? WEXITSTATUS(status) : -1;
}

/// What @p question answers to somebody whom permissions bind: root passes every check, so that it is asked
/// in a child process of the user nobody then.
inline int AskUnprivileged(const std::function<int()>& question) {
    const auto drop = [] {
        return ::setgroups(0, nullptr) == 0 && ::setgid(Nobody) == 0 && ::setuid(Nobody) == 0;
    };
    return ::geteuid() != 0 ? question() : AskInChild(drop, question);
}

/// The descriptors that are open, or those that a program started from here would get.
inline std::ptrdiff_t Descriptors(bool inherited = false) {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::count_if(begin(all), end(all), [=](const auto& entry) {
        const int flags = ::fcntl(std::stoi(entry.path().filename()), F_GETFD);
        return !inherited || (flags & FD_CLOEXEC) == 0;
    });
}

} // namespace test
