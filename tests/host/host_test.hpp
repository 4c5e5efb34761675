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

inline constexpr ::uid_t Nobody = 65534;

/// A test in a child process, once @p prepare has succeeded there; skipped where it does not.
inline void InChild(const std::function<bool()>& prepare, const std::function<void()>& test) {
    constexpr int unprepared = 125;
    const ::pid_t child = ::fork();
    if (child == 0) {
        try {
            if (!prepare())
                ::_exit(unprepared);
            test();
            ::_exit(testing::Test::HasFailure() ? 1 : 0);
        } catch (...) {
            ::_exit(2); // the tests behind this one are the parent's
        }
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    if (WIFEXITED(status) && WEXITSTATUS(status) == unprepared)
        GTEST_SKIP() << "the system does not allow it";
    EXPECT_EQ(status, 0) << "of the child process";
}

/// The same for somebody whom permissions bind: root passes every check, and becomes the user nobody there.
inline void Unprivileged(const std::function<void()>& test) {
    const auto drop = [] {
        return ::geteuid() != 0 ||
               (::setgroups(0, nullptr) == 0 && ::setgid(Nobody) == 0 && ::setuid(Nobody) == 0);
    };
    InChild(drop, test);
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
