#pragma once

#include <array>
#include <csignal>
#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <pty.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include "tests/support/temp_tree.hpp"
#include "tests/support/texts.hpp"

namespace test {

using nlohmann::json;
using namespace std::string_literals; // for what -0 writes

/// What a program left behind. A signal that ended it stands as 128 + its number, as in a shell.
struct Outcome {
    int status;
    std::string out, err;

    /// Both streams, and the status if it is not 0.
    std::string All() const { return out + err + (status == 0 ? "" : "-> " + std::to_string(status) + "\n"); }
};

/// The real tool in a process of its own, and its surroundings. It is started by a shell's line, which
/// begins behind the tool's name.
struct Tool {
    std::string root;        ///< what paths in the output are shortened by
    std::string cwd = root;  ///< that of the shell
    std::string before = {}; ///< what the shell does before it becomes the tool
    bool onTerminal = false;

    Outcome operator()(const std::string& line) const;
    json Json(const std::string& line) const { return json::parse((*this)(line + " --json").out); }
};

/// The tool while it runs, its standard output read as it comes. It does not run longer than a healthy tool
/// could ever need.
class RunningTool {
  public:
    RunningTool(const Tool& tool, const std::string& line) : m_root(tool.root + "/") {
        const std::string script = fmt::format(
            "set -e; unset OVSEL_PATH; ROOT='{}'; exec </dev/null 2>'{}'; cd '{}'\n{}\nexec '{}' {}",
            tool.root, m_files.Path("err"), tool.cwd, tool.before, OVSEL_TOOL, line);
        std::array<int, 2> ends{};
        if ((tool.onTerminal ? ::openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr)
                             : ::pipe2(ends.data(), O_CLOEXEC)) != 0)
            throw std::runtime_error("no pipe");
        m_out = ends[0];
        m_child = ::fork();
        if (m_child == 0) {
            ::dup2(ends[1], STDOUT_FILENO);
            // Not even root is to look into what is closed: then nothing depends on who runs the tests.
            ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
            ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0);
            ::alarm(300);
            ::execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
    }
    ~RunningTool() {
        if (m_child > 0)
            Finish();
        CloseOutput();
    }
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;

    /// Nothing at the end of the output.
    std::optional<std::string> NextLine() {
        std::size_t end = 0;
        while ((end = m_text.find('\n')) == std::string::npos)
            if (!Read())
                return std::nullopt;
        const std::string line = Without(m_root, m_text.substr(0, end));
        m_text.erase(0, end + 1);
        return line;
    }

    void CloseOutput() { ::close(std::exchange(m_out, -1)); }

    /// Sends @p signal, if there is one, and waits for the end, during which only a tool that was sent none
    /// is listened to. `out` is what nobody has read.
    Outcome Finish(int signal = 0) {
        if (signal != 0)
            ::kill(m_child, signal);
        while (signal == 0 && Read()) {
        }
        int status = 0;
        ::waitpid(std::exchange(m_child, 0), &status, 0);
        while (Read()) {
        }
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), Without(m_root, m_text),
                Without(m_root, m_files.Read("err"))};
    }

  private:
    /// Takes what comes next. @return false at the end.
    bool Read() {
        std::array<char, 4096> buffer{};
        const ::ssize_t count = ::read(m_out, buffer.data(), buffer.size());
        m_text.append(buffer.data(), static_cast<std::size_t>(std::max(count, ::ssize_t{0})));
        return count > 0;
    }

    TempTree m_files;
    std::string m_root, m_text;
    int m_out = -1;
    ::pid_t m_child = 0;
};

inline Outcome Tool::operator()(const std::string& line) const { return RunningTool(*this, line).Finish(); }

/// Holds the tool to a session: each line with a prompt, and all that is said to it, with `^@` for NUL. A
/// line that does not end is shown as one that does.
inline void ExpectSession(const Tool& tool, const std::string& name) {
    std::ifstream file(OVSEL_SESSIONS + name);
    std::string told, seen;
    for (std::string line; std::getline(file, line); told += line + "\n")
        if (const std::string_view prompt = "$ ovsel"; line.starts_with(prompt)) {
            seen += line + "\n";
            for (const char c : tool(line.substr(prompt.size())).All())
                seen += c == '\0' ? "^@" : std::string(1, c);
            seen += seen.ends_with('\n') ? "" : "\n";
        }
    EXPECT_NE(told, "") << name;
    EXPECT_EQ(seen, told) << name;
}

/// The world of scripts/demo-tree.sh, seen from its folder C.
struct DemoWorld {
    TempTree tree{"A/+gfx/plot.sv", "A/@plot/draw.sv", "A/@plot/plot.sv",   "A/plot.sv",
                  "B/plot.p",       "B/plot.sv",       "B/private/plot.sv", "C/plot.p"};
    Tool tool{tree.Root(), tree.Path("C"), "export OVSEL_PATH=" + tree.Path("A") + ":" + tree.Path("B")};
};

} // namespace test
