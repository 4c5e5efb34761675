// A host to start from: a miniature interpreter, whose programs "run" by showing their first line.
//
//   embed [--toolbox FOLDER [--cache FILE]] [FOLDER...]
//
// FOLDERs become the path; those in the toolbox count as unchanging, and the cache spares reading them. A
// line of the input is the name of a program, or one of
//
//   in FILE       names are asked for by this file from now on
//   cd FOLDER     changes the current directory
//   save          writes what is known of the toolbox to the cache file
//   !COMMAND      runs a command of the shell
//   quit
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include <host_interfaces/text.hpp>
#include <linux_hooks/linux_hooks.hpp>
#include <linux_host/linux_host.hpp>
#include <ovsel/ovsel.hpp>

namespace {

struct Options {
    std::string toolbox;
    std::string cache;
    std::vector<std::string> folders;
};

// The library speaks names of its own grammar in UTF-16, people speak POSIX paths. These two stand between.

ustring NameOf(const std::string& path) {
    std::string absolute = std::filesystem::absolute(path).lexically_normal();
    if (absolute.size() > 1 && absolute.back() == '/')
        absolute.pop_back();
    if (const auto name = linux_host::DriveMap::ToName(absolute))
        return *name;
    throw std::runtime_error(path + ": no name for the path manager");
}

std::string PathOf(const ustring& name) {
    return linux_host::DriveMap::ToPath(name).value_or(fl::i18n::codecvt_ustring_to_narrow_string()(name));
}

/// Searches are not counted: whoever creates one destroys it before the path changes.
struct DestroySearch {
    void operator()(ovSearch* search) const { ovDestroySearch(&search); }
};

class Interpreter {
  public:
    explicit Interpreter(const Options& options) : m_options(options) {
        linux_hooks::InstallDefaultHooks();
        const auto complain = [](const char* text) { std::cerr << text << '\n'; };
        ovSetMessageFcns(complain, complain, nullptr);

        // What lies under the prefix is taken as unchanging, which is also what a cache may tell of.
        const ustring prefix = options.toolbox.empty() ? ustring() : NameOf(options.toolbox);
        m_path = ovCreatePathWithPreFrozen(0, "main", prefix.empty() ? nullptr : prefix.c_str(),
                                           ovCaseSensitive, true);
        if (!options.cache.empty()) {
            // Before folders are added: what has been read is not taken from the cache any more.
            ovUseToolboxCache(m_path, NameOf(options.cache), prefix, false);
            std::cout << (ovInToolboxCacheMode() ? "toolbox from the cache\n" : "toolbox from the disk\n");
        }
        for (const std::string& folder : options.folders)
            ovAddDir(m_path, NameOf(folder), ovDirAddAtEnd);
        m_interest = ovRegisterPathInterest(m_path, [this](ovEventType event, ovDir) { Hear(event); });
    }

    ~Interpreter() {
        ovCancelPathInterest(m_interest);
        ovRemovePath(m_path);
    }

    Interpreter(const Interpreter&) = delete;
    Interpreter& operator=(const Interpreter&) = delete;

    void Run(std::istream& input) {
        for (std::string line; Prompt(input, line) && line != "quit";) {
            if (!line.empty())
                Execute(line);
        }
    }

  private:
    /// Answers to one name, best first: the first is meant, the others are hidden by it.
    using Meanings = std::vector<ustring>;

    /// The only moment at which the disk is looked at: nothing changes its meaning while a program runs.
    bool Prompt(std::istream& input, std::string& line) {
        ovRefreshAllDirectories(m_path, ovRefreshCheck);
        if (std::exchange(m_stale, false))
            AskAgain();
        std::cout << "> " << std::flush;
        if (!std::getline(input, line)) {
            std::cout << '\n';
            return false;
        }
        if (!::isatty(STDIN_FILENO))
            std::cout << line << '\n'; // so that a session from a file reads like one by hand
        return true;
    }

    void Execute(const std::string& line) {
        const auto argument = [&](const char* command) {
            return line.starts_with(command) ? line.substr(std::char_traits<char>::length(command)) : "";
        };
        if (const std::string file = argument("in "); !file.empty())
            m_asker = NameOf(file);
        else if (const std::string folder = argument("cd "); !folder.empty())
            ChangeDirectory(folder);
        else if (const std::string command = argument("!"); !command.empty())
            std::cout << (std::system(command.c_str()) == 0 ? "" : "the command failed\n");
        else if (line == "save")
            SaveCache();
        else
            RunProgram(line);
    }

    void RunProgram(const std::string& name) {
        const ustring asked = fl::i18n::to_ustring(name.c_str());
        auto known = m_known.find({m_asker, asked});
        if (known == m_known.end())
            known = m_known.emplace(std::pair(m_asker, asked), Resolve(m_asker, asked)).first;
        const Meanings& meanings = known->second;
        if (meanings.empty()) {
            std::cout << name << " is not known here\n";
            return;
        }
        std::ifstream program(PathOf(meanings[0]));
        std::string text;
        std::getline(program, text);
        std::cout << PathOf(meanings[0]) << " says: " << text << '\n';
        for (std::size_t i = 1; i < meanings.size(); ++i)
            std::cout << "  hides " << PathOf(meanings[i]) << '\n';
    }

    /// Within one folder the extension that stands first in the list wins; the library leaves that to us.
    Meanings Resolve(const ustring& asker, const ustring& name) const {
        static const char* const extensions[] = {".p", ".sv", nullptr};
        ustring folder;
        ovSeparatePathName(asker, folder);
        const std::unique_ptr<ovSearch, DestroySearch> search(
            ovCreateDirnameVisibleSearchIterator(m_path, folder, name, extensions, ovCaseOfPath));
        Meanings found;
        ovDir where;
        ustring file;
        const auto add = [&] {
            // The current directory may stand on the path as well.
            if (std::find(found.begin(), found.end(), file) == found.end())
                found.push_back(file);
        };
        int best = ovFindNextFile(search.get(), &where, file);
        if (best == 0)
            return found;
        add();
        for (int rank; (rank = ovFindNextFileBounded(search.get(), &where, file)) != 0;) {
            add();
            if (rank < best) {
                best = rank;
                std::swap(found.front(), found.back());
            }
        }
        while (ovFindNextFile(search.get(), &where, file) != 0)
            add();
        return found;
    }

    /// Called in the middle of a change, so it takes a note and asks the path nothing.
    void Hear(ovEventType event) {
        if (event != ovEventRefreshBegin && event != ovEventRefreshEnd)
            m_stale = true;
    }

    /// Tells where a known name has come to mean another file: there a host drops what it compiled.
    void AskAgain() {
        for (auto& [question, meanings] : m_known) {
            Meanings now = Resolve(question.first, question.second);
            const ustring before = meanings.empty() ? ustring() : meanings[0];
            const ustring after = now.empty() ? ustring() : now[0];
            meanings = std::move(now);
            if (before != after)
                std::cout << "(" << PathOf(question.second)
                          << (question.first.empty() ? "" : " in " + PathOf(question.first)) << " is now "
                          << (after.empty() ? "unknown" : PathOf(after)) << ")\n";
        }
    }

    void ChangeDirectory(const std::string& folder) {
        if (const char* refused = ovSetCWDName(m_path, NameOf(folder)))
            std::cout << refused << ": " << folder << '\n';
    }

    /// The old file stays whole until the new one is.
    void SaveCache() const {
        if (m_options.cache.empty() || m_options.toolbox.empty()) {
            std::cout << "there is no cache to save\n";
            return;
        }
        const std::string beside = std::filesystem::absolute(m_options.cache).string() + ".new";
        ovWritePathToCacheFile(m_path, fl::i18n::codecvt_ustring_to_narrow_string()(NameOf(beside)).c_str());
        std::filesystem::rename(beside, m_options.cache);
        std::cout << "saved\n";
    }

    const Options m_options;
    ovPath m_path;
    ovRegisteredInterest m_interest;
    ustring m_asker;
    std::map<std::pair<ustring, ustring>, Meanings> m_known; ///< by asker and name
    bool m_stale = false;                                    ///< may m_known be wrong?
};

Options Parse(int argc, char** argv) {
    // Made absolute here: `cd` changes what a relative path means.
    const auto absolute = [](const char* path) { return std::filesystem::absolute(path).string(); };
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--toolbox" && i + 1 < argc)
            options.toolbox = absolute(argv[++i]);
        else if (word == "--cache" && i + 1 < argc)
            options.cache = absolute(argv[++i]);
        else
            options.folders.push_back(absolute(argv[i]));
    }
    return options;
}

} // namespace

int main(int argc, char** argv) {
    try {
        Interpreter(Parse(argc, argv)).Run(std::cin);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
