#pragma once

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <map>
#include <pty.h>
#include <stdexcept>
#include <string>
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

  private:
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
        const std::string start = losesCwd ? cwd + "/gone" : cwd;
        if (::chdir(start.c_str()) == 0 && (!losesCwd || ::rmdir(start.c_str()) == 0))
            ::execv(OVSEL_TOOL, argv.data());
        ::_exit(127);
    }

    static std::string Content(const std::string& file) {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
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
