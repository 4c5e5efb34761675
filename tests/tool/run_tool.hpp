#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <linux/capability.h>
#include <map>
#include <optional>
#include <poll.h>
#include <pty.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tests/support/temp_tree.hpp"

namespace test {

/// What a program left behind. A signal that ended it stands as 128 + its number, as in a shell.
struct Outcome {
    int status;
    std::string out;
    std::string err;

    /// Both streams, and the status if it is not 0.
    std::string All() const { return out + err + (status == 0 ? "" : "-> " + std::to_string(status) + "\n"); }
};

/// The real tool in a process of its own.
struct Tool {
    enum class Stdout { Captured, Terminal, ClosedPipe, FullDisk };

    std::string cwd = "/";
    std::map<std::string, std::string> environment = {};
    std::string input = {};
    Stdout target = Stdout::Captured;
    /// What paths in the output are shortened by.
    std::string root = {};
    bool losesCwd = false;           ///< the directory that it is started in is gone
    bool ignoresBrokenPipes = false; ///< as below a parent that ignores SIGPIPE
    /// No file may grow beyond so many bytes.
    std::optional<::rlim_t> fileSizeLimit = {};

    Outcome operator()(const std::vector<std::string>& arguments) const {
        const TempTree files;
        std::ofstream(files.Path("in"), std::ios::binary) << input;
        int master = -1;
        const int out = OpenStdout(files, master);
        if (losesCwd)
            std::filesystem::create_directory(cwd + "/gone");
        const ::pid_t child = ::fork();
        if (child == 0)
            Become(arguments, files, out);
        ::close(out);
        int status = 0;
        ::waitpid(child, &status, 0);
        const std::string output = master >= 0 ? ReadAll(master) : Content(files.Path("out"));
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), Shortened(output),
                Shortened(Content(files.Path("err")))};
    }

    /// Arguments that hold no blanks, as one line.
    Outcome operator()(const char* line) const {
        std::istringstream words(line);
        using Word = std::istream_iterator<std::string>;
        return (*this)(std::vector<std::string>(Word(words), Word()));
    }

    static std::string Content(const std::string& file) {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

  private:
    friend class RunningTool;

    int OpenStdout(const TempTree& files, int& master) const {
        std::array<int, 2> ends{};
        switch (target) {
        case Stdout::Captured:
            return ::open(files.Path("out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        case Stdout::FullDisk:
            return ::open("/dev/full", O_WRONLY | O_CLOEXEC);
        case Stdout::ClosedPipe:
            if (::pipe2(ends.data(), O_CLOEXEC) == 0)
                ::close(ends[0]);
            return ends[1];
        case Stdout::Terminal:
            return ::openpty(&master, &ends[1], nullptr, nullptr, nullptr) == 0 ? ends[1] : -1;
        }
        return -1;
    }

    [[noreturn]] void Become(const std::vector<std::string>& arguments, const TempTree& files,
                             int out) const {
        ::dup2(::open(files.Path("in").c_str(), O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        ::dup2(out, STDOUT_FILENO);
        ::dup2(::open(files.Path("err").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), STDERR_FILENO);
        ::unsetenv("OVSEL_PATH");
        for (const auto& [name, value] : environment)
            ::setenv(name.c_str(), value.c_str(), 1);
        std::vector<char*> argv = {const_cast<char*>("ovsel")};
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        if (ignoresBrokenPipes)
            ::signal(SIGPIPE, SIG_IGN);
        if (fileSizeLimit) {
            const ::rlimit limit{*fileSizeLimit, *fileSizeLimit};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        }
        // Not even root is to look into what is closed: then nothing depends on who runs the tests.
        ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
        ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0);
        const std::string start = losesCwd ? cwd + "/gone" : cwd;
        if (::chdir(start.c_str()) == 0 && (!losesCwd || ::rmdir(start.c_str()) == 0))
            ::execv(OVSEL_TOOL, argv.data());
        ::_exit(127);
    }

    /// What is left in a terminal after its program has ended; its newlines back to one character.
    static std::string ReadAll(int descriptor) {
        std::string text;
        std::array<char, 4096> buffer{};
        for (::ssize_t n; (n = ::read(descriptor, buffer.data(), buffer.size())) > 0;)
            text.append(buffer.data(), static_cast<std::size_t>(n));
        ::close(descriptor);
        text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
        return text;
    }

    std::string Shortened(std::string text) const {
        for (std::size_t at; !root.empty() && (at = text.find(root + "/")) != std::string::npos;)
            text.erase(at, root.size() + 1);
        return text;
    }
};

/// The tool while it runs, its standard output read line by line. Nothing here waits longer than a healthy
/// tool could ever need.
class RunningTool {
  public:
    RunningTool(Tool tool, const std::vector<std::string>& arguments) : m_tool(std::move(tool)) {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        m_out = ends[0];
        m_child = ::fork();
        if (m_child == 0)
            m_tool.Become(arguments, m_files, ends[1]);
        ::close(ends[1]);
        m_process = static_cast<int>(::syscall(SYS_pidfd_open, m_child, 0));
    }
    ~RunningTool() {
        if (m_child > 0)
            Finish();
        CloseOutput();
        ::close(m_process);
    }
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;

    /// Nothing at the end of the output, and when the line does not come.
    std::optional<std::string> NextLine() {
        std::array<char, 4096> buffer{};
        for (;;) {
            if (const std::size_t end = m_text.find('\n'); end != std::string::npos) {
                const std::string line = m_tool.Shortened(m_text.substr(0, end));
                m_text.erase(0, end + 1);
                return line;
            }
            const ::ssize_t count =
                IsReady(m_out) ? ::read(m_out, buffer.data(), buffer.size()) : ::ssize_t{0};
            if (count <= 0)
                return std::nullopt;
            m_text.append(buffer.data(), static_cast<std::size_t>(count));
        }
    }

    void CloseOutput() {
        if (m_out >= 0)
            ::close(m_out);
        m_out = -1;
    }

    /// Sends @p signal, if there is one, and waits for the end. `out` is what nobody has read.
    Outcome Finish(int signal = 0) {
        if (signal != 0)
            ::kill(m_child, signal);
        if (!IsReady(m_process))
            ::kill(m_child, SIGKILL);
        int status = 0;
        ::waitpid(m_child, &status, 0);
        m_child = 0;
        std::string rest;
        while (const auto line = m_out >= 0 ? NextLine() : std::nullopt)
            rest += *line + '\n';
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), rest,
                m_tool.Shortened(Tool::Content(m_files.Path("err")))};
    }

  private:
    static bool IsReady(int descriptor) {
        ::pollfd end{descriptor, POLLIN, 0};
        constexpr std::chrono::milliseconds deadline = std::chrono::seconds(20);
        return ::poll(&end, 1, static_cast<int>(deadline.count())) > 0;
    }

    Tool m_tool;
    TempTree m_files{"in"};
    std::string m_text;
    int m_out = -1;
    int m_process = -1;
    ::pid_t m_child = 0;
};

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
