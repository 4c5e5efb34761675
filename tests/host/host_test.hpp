#pragma once

#include <cstdlib>
#include <functional>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host_interfaces/ustring.hpp"
#include "linux_host/linux_host.hpp"
#include "tests/support/temp_tree.hpp"

namespace test {

/// The name of a path inside a tree. The tree's own path can be spelled in the grammar.
inline ustring NameOf(const TempTree& tree, const std::string& path = {}) {
    return linux_host::DriveMap::ToName(tree.Path(path)).value();
}

inline constexpr int CannotDropPrivileges = 125;

/// What @p question answers (0 to 124) to somebody whom permissions bind: root passes every check, so that it
/// is asked in a child process of the user nobody then.
inline int AskUnprivileged(const std::function<int()>& question) {
    if (::geteuid() != 0) {
        return question();
    }
    const ::pid_t child = ::fork();
    if (child == 0) {
        constexpr ::uid_t Nobody = 65534;
        const bool dropped = ::setgroups(0, nullptr) == 0 && ::setgid(Nobody) == 0 && ::setuid(Nobody) == 0;
        ::_exit(dropped ? question() : CannotDropPrivileges);
    }
    int status = 0;
    const bool ended = ::waitpid(child, &status, 0) == child && WIFEXITED(status);
    return ended ? WEXITSTATUS(status) : -1;
}

} // namespace test
