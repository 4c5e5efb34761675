// ovsel_bench [GROUP [PART]] prints the rows of all groups or of one, and of those that have PART in their
// names. README.md beside this file tells what each row and its limit are.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/allocation_counter.hpp"
#include "bench/groups.hpp"
#include "linux_hooks/linux_hooks.hpp"
#include "linux_host/linux_host.hpp"

namespace {

struct Group {
    const char* name;
    const char* mode; ///< for PATH_MGR_MODE
    void (*run)(bench::Table& rows);
};

constexpr Group groups[] = {
    {"lookup", "", &bench::RunLookups},     {"load", "", &bench::RunLoads},
    {"change", "", &bench::RunChanges},     {"cache", "", &bench::RunCacheStarts},
    {"xml", "vfs", &bench::RunCacheStarts},
};

bool Run(const Group& group, const char* part) {
    try {
        ::setenv("PATH_MGR_MODE", group.mode, 1);
        linux_host::SetPrintSink([](std::string_view) {});
        if (!linux_hooks::InstallDefaultHooks() || !bench::AllocationsAreSeen()) {
            std::fprintf(stderr, "the allocations of the libraries are not seen\n");
            return false;
        }
        bench::Table rows(part);
        group.run(rows);
        return !rows.HasFailed();
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", group.name, failure.what());
        return false;
    }
}

bool RunInChild(const Group& group, const char* part) {
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        const bool right = Run(group, part);
        std::fflush(stdout);
        ::_exit(right ? 0 : 1);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view wanted = argc > 1 ? argv[1] : "";
    const char* const part = argc > 2 ? argv[2] : "";
    bench::Table::PrintHead();
    bool right = true;
    for (const Group& group : groups)
        if (wanted.empty() || wanted == group.name)
            right = RunInChild(group, part) && right;
    return right ? 0 : 1;
}
