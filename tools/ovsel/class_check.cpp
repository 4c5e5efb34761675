#include "tools/ovsel/class_check.hpp"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <functional>
#include <optional>

#include <boost/regex.hpp>
#include <fcntl.h>
#include <fmt/format.h>
#include <linux_host/linux_host.hpp>
#include <ovsel/ovsel.hpp>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/output.hpp"
#include "tools/ovsel/regular_file.hpp"

namespace tool {
namespace {

constexpr std::size_t MostText = 1U << 20;

std::function<bool(const std::string& path)> g_check;
std::string g_failure;

std::optional<std::string> ReadBeginning(const std::string& path) {
    const Descriptor file(OpenRegular(path));
    return *file < 0 ? std::nullopt : ReadUpTo(*file, MostText);
}

/// Boost's expressions, because those of the standard library go one call deeper with each character and end
/// the process on a long run of blanks; these give up with an error instead.
bool Matches(const boost::regex& pattern, const std::string& path) {
    const auto text = ReadBeginning(path);
    if (!text)
        return false;
    try {
        return boost::regex_search(*text, pattern);
    } catch (const std::runtime_error& error) {
        Complain(fmt::format("{}: taken for no class: {}", Shown(path), error.what()));
        return false;
    }
}

/// What the program prints must not mix with the answers, and it must not wait for input.
class SpawnActions {
  public:
    SpawnActions() {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&m_actions, STDERR_FILENO, STDOUT_FILENO);
    }
    ~SpawnActions() { posix_spawn_file_actions_destroy(&m_actions); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;
    const posix_spawn_file_actions_t* operator*() const { return &m_actions; }

  private:
    posix_spawn_file_actions_t m_actions;
};

bool Accepts(std::vector<std::string> command, const std::string& path) {
    if (const Descriptor file(OpenRegular(path)); *file < 0)
        return false;
    command.push_back(path);
    std::vector<char*> arguments;
    for (std::string& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    const SpawnActions actions;
    ::pid_t child = 0;
    if (const int error =
            ::posix_spawnp(&child, arguments[0], *actions, nullptr, arguments.data(), environ)) {
        g_failure = fmt::format("--classdef-command {}: {}", Shown(command[0]), std::strerror(error));
        return false;
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool IsClass(const ustring& fileName) {
    const auto path = linux_host::DriveMap::ToPath(fileName);
    return path && g_check(*path);
}

} // namespace

ClassCheck::ClassCheck(const Options& options) {
    if (!options.classCommand.empty()) {
        // A parent that ignores the ends of its children would let them go without their status.
        std::signal(SIGCHLD, SIG_DFL);
        g_check = [command = options.classCommand](const std::string& path) {
            return Accepts(command, path);
        };
    } else {
        try {
            g_check = [pattern = boost::regex(options.classPattern)](const std::string& path) {
                return Matches(pattern, path);
            };
        } catch (const boost::regex_error& error) {
            throw UsageError(fmt::format("--classdef-pattern: {}", error.what()));
        }
    }
    ovSetIsClassFcn(IsClass);
}

ClassCheck::~ClassCheck() {
    ovSetIsClassFcn(nullptr);
    g_check = nullptr;
}

bool ClassCheck::Defines(const ustring& fileName) const { return IsClass(fileName); }

const std::string& ClassCheck::Failure() const { return g_failure; }

} // namespace tool
