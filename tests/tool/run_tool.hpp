#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <iterator>
#include <linux/capability.h>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <pty.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <vector>

#include "tests/support/temp_tree.hpp"

namespace test {

using nlohmann::json;

/// What a program left behind. A signal that ended it stands as 128 + its number, as in a shell.
struct Outcome {
    int status;
    std::string out, err;

    /// Both streams, and the status if it is not 0.
    std::string All() const { return out + err + (status == 0 ? "" : "-> " + std::to_string(status) + "\n"); }
};

/// The real tool in a process of its own, and its surroundings.
struct Tool {
    enum class Stdout { Captured, Terminal, ClosedPipe, FullDisk };

    std::string cwd = "/";
    std::map<std::string, std::string> environment = {};
    std::string input = {};
    Stdout target = Stdout::Captured;
    std::string root = {};           ///< what paths in the output are shortened by
    bool losesCwd = false;           ///< the directory that it is started in is gone
    bool ignoresBrokenPipes = false; ///< as below a parent that ignores SIGPIPE
    std::optional<::rlim_t> fileSizeLimit = {};

    Outcome operator()(const std::vector<std::string>& arguments) const;
    /// Arguments that hold no blanks, as one line.
    Outcome Ask(const std::string& line) const {
        std::istringstream words(line);
        using Word = std::istream_iterator<std::string>;
        return (*this)(std::vector<std::string>(Word(words), Word()));
    }
    Outcome operator()(const char* line) const { return Ask(line); }
    json Json(const std::string& line) const { return json::parse(Ask(line + " --json").out); }
};

/// The tool while it runs, its standard output read as it comes. It does not run longer than a healthy tool
/// could ever need.
class RunningTool {
  public:
    RunningTool(Tool tool, const std::vector<std::string>& arguments) : m_tool(std::move(tool)) {
        m_files.Write("in", m_tool.input);
        if (m_tool.losesCwd)
            std::filesystem::create_directory(m_tool.cwd + "/gone");
        std::array<int, 2> ends{};
        const bool onTerminal = m_tool.target == Tool::Stdout::Terminal;
        if ((onTerminal ? ::openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr)
                        : ::pipe2(ends.data(), O_CLOEXEC)) != 0)
            throw std::runtime_error("no pipe");
        m_out = ends[0];
        if (m_tool.target == Tool::Stdout::ClosedPipe)
            CloseOutput();
        m_child = ::fork();
        if (m_child == 0)
            Become(arguments, ends[1]);
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
        const std::string line = Shortened(m_text.substr(0, end));
        m_text.erase(0, end + 1);
        return line;
    }

    void CloseOutput() {
        if (m_out >= 0)
            ::close(m_out);
        m_out = -1;
    }

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
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), Shortened(m_text),
                Shortened(m_files.Read("err"))};
    }

  private:
    [[noreturn]] void Become(const std::vector<std::string>& arguments, int out) const {
        ::dup2(::open(m_files.Path("in").c_str(), O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        ::dup2(m_tool.target == Tool::Stdout::FullDisk ? ::open("/dev/full", O_WRONLY | O_CLOEXEC) : out,
               STDOUT_FILENO);
        ::dup2(::open(m_files.Path("err").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), STDERR_FILENO);
        ::unsetenv("OVSEL_PATH");
        for (const auto& [name, value] : m_tool.environment)
            ::setenv(name.c_str(), value.c_str(), 1);
        std::vector<char*> argv = {const_cast<char*>("ovsel")};
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        if (m_tool.ignoresBrokenPipes)
            ::signal(SIGPIPE, SIG_IGN);
        if (m_tool.fileSizeLimit) {
            const ::rlimit limit{*m_tool.fileSizeLimit, *m_tool.fileSizeLimit};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        }
        // Not even root is to look into what is closed: then nothing depends on who runs the tests.
        ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
        ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0);
        ::alarm(300);
        const std::string start = m_tool.cwd + (m_tool.losesCwd ? "/gone" : "");
        if (::chdir(start.c_str()) == 0 && (!m_tool.losesCwd || ::rmdir(start.c_str()) == 0))
            ::execv(OVSEL_TOOL, argv.data());
        ::_exit(127);
    }

    /// Takes what comes next. @return false at the end.
    bool Read() {
        std::array<char, 4096> buffer{};
        const ::ssize_t count = ::read(m_out, buffer.data(), buffer.size());
        m_text.append(buffer.data(), static_cast<std::size_t>(std::max(count, ::ssize_t{0})));
        return count > 0;
    }
    /// Without the tree's root, and with the newlines of a terminal as one character.
    std::string Shortened(std::string text) const {
        const std::string& root = m_tool.root;
        for (std::size_t at; !root.empty() && (at = text.find(root + "/")) != std::string::npos;)
            text.erase(at, root.size() + 1);
        if (m_tool.target == Tool::Stdout::Terminal)
            std::erase(text, '\r');
        return text;
    }

    Tool m_tool;
    TempTree m_files;
    std::string m_text;
    int m_out = -1;
    ::pid_t m_child = 0;
};

inline Outcome Tool::operator()(const std::vector<std::string>& arguments) const {
    return RunningTool(*this, arguments).Finish();
}

/// Names as -0 writes them.
inline std::string Records(std::initializer_list<std::string> names) {
    std::string text;
    for (const std::string& name : names)
        text += name + '\0';
    return text;
}

/// The world of scripts/demo-tree.sh, seen from its folder C.
struct DemoWorld {
    TempTree tree;
    Tool tool;

    DemoWorld() {
        if (std::system((std::string("bash '") + OVSEL_DEMO_TREE + "' '" + tree.Root() + "'").c_str()) != 0)
            throw std::runtime_error("the demo tree cannot be laid out");
        tool.cwd = tree.Path("C");
        tool.root = tree.Root();
        tool.environment["OVSEL_PATH"] = tree.Path("A") + ":" + tree.Path("B");
    }
};

} // namespace test
