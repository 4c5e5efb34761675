// What does it cost to start from the cache? 500 folders with 50,000 files, in a child process for each mode,
// since a process has one. Each row is a ratio to a limit taken turn by turn with it:
//
//   load_MODE    the cache file is read, by hand where hooks are asked and as XML in the storage layer's mode
//       limit: the file's bytes are read once and its line ends found
//   start_MODE   a path with all the folders, from the cache
//       limit: the same from the disk, warm
//
// Beneath them: what a start and 10,000 look-ups ask of the disk, how many comparisons a search of the cache
// stands for, and how long hostile files take to be refused.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <host_interfaces/text.hpp>
#include <linux_hooks/linux_hooks.hpp>
#include <linux_host/linux_host.hpp>
#include <ovsel/ovsel.hpp>

#include "rows.hpp"

namespace {

using bench::PrintRow;
using bench::Seconds;

constexpr int folderCount = 500;
constexpr int filesPerFolder = 100;
constexpr char16_t prefix[] = u"T:\\toolbox";

ustring Wide(const std::string& text) { return fl::i18n::to_ustring(text.c_str()); }

/// In memory, so that the disk's own speed plays no part.
class Tree {
  public:
    Tree() {
        std::string pattern = "/dev/shm/ovsel-bench-XXXXXX";
        m_root = ::mkdtemp(pattern.data());
        linux_host::DriveMap::Add(u"T:", m_root, linux_host::DriveMap::Kind::Fixed);
        for (int d = 0; d < folderCount; ++d) {
            const std::string folder = Path("toolbox/" + Folder(d));
            std::filesystem::create_directories(folder);
            for (int f = 0; f < filesPerFolder; ++f)
                ::mknod((folder + "/file" + std::to_string(d * 31 % 977) + "_" + std::to_string(f) + ".sv")
                            .c_str(),
                        S_IFREG | 0600, 0);
        }
    }
    ~Tree() { std::filesystem::remove_all(m_root); }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    static std::string Folder(int index) {
        return "group" + std::to_string(index % 25) + "/folder" + std::to_string(index);
    }
    std::string Path(const std::string& name) const { return m_root + "/" + name; }
    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(Path(name), std::ios::binary) << text;
    }

  private:
    std::string m_root;
};

ovPath NewPath(const char* name = "bench") {
    return ovCreatePathWithPreFrozen(0, name, prefix, ovCaseSensitive, true);
}

/// @p stride other than 1 leaves the order of the file.
void AddFolders(const ovPath& path, int count = folderCount, int stride = 1) {
    for (int d = 0; d < count; ++d) {
        const int index = static_cast<int>(static_cast<long>(d) * stride % count);
        ovAddDir(path, ustring(prefix) + u"\\" + Wide(Tree::Folder(index)), ovDirAddAtEnd);
    }
}

double ReadAndFindLines(const std::string& file) {
    return Seconds([&] {
        std::FILE* stream = std::fopen(file.c_str(), "r");
        std::fseek(stream, 0, SEEK_END);
        const auto size = static_cast<std::size_t>(std::ftell(stream));
        std::rewind(stream);
        const auto text = std::make_unique<char[]>(size);
        [[maybe_unused]] const std::size_t got = std::fread(text.get(), 1, size, stream);
        std::fclose(stream);
        volatile std::size_t lines = 0;
        const char* end = text.get() + size;
        for (const char* at = text.get();
             (at = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)))); ++at)
            lines = lines + 1;
    });
}

/// From nothing to a path that answers.
double Start(bool fromCache) {
    ovPath path;
    const double seconds = Seconds([&] {
        path = NewPath("start");
        if (fromCache)
            ovUseToolboxCache(path, u"T:\\cache.xml", prefix, false);
        AddFolders(path);
    });
    if (fromCache)
        ovRevertFromToolboxCache(path);
    return seconds;
}

void CountQuestions() {
    const ovPath path = NewPath("questions");
    ovUseToolboxCache(path, u"T:\\cache.xml", prefix, false);
    linux_host::ResetCounters();
    AddFolders(path);
    int found = 0;
    for (int i = 0; i < 10'000; ++i) {
        ustring file;
        const std::string name = "file" + std::to_string(i % 977) + "_" + std::to_string(i % filesPerFolder);
        found += ovFindFirstFileInAll(path, Wide(name), nullptr, nullptr, file) != 0 ? 1 : 0;
    }
    const linux_host::Counters counters = linux_host::GetCounters();
    std::printf(
        "|   a start from the cache and 10,000 look-ups (%d found): %llu listings, %llu questions for "
        "existence\n",
        found, static_cast<unsigned long long>(counters.listings),
        static_cast<unsigned long long>(counters.existenceQueries));
    ovRevertFromToolboxCache(path);
}

/// The counts are told only in words, when the cache is left.
void CountComparisons(const Tree& tree, int count, int stride) {
    std::string text = "<Quorrant>\n";
    for (int d = 0; d < count; ++d)
        text += " <D name=\"" + Tree::Folder(d) + "\">\n </D>\n";
    tree.Write("count.xml", text + "</Quorrant>\n");
    const ovPath path = NewPath("counts");
    ovUseToolboxCache(path, u"T:\\count.xml", prefix, false);
    const double seconds = Seconds([&] { AddFolders(path, count, stride); });
    std::string told;
    linux_host::SetPrintSink([&](std::string_view words) { told += words; });
    ovEnableToolboxCacheDiagnosticStatusReport(true);
    ovRevertFromToolboxCache(path);
    ovEnableToolboxCacheDiagnosticStatusReport(false);
    linux_host::SetPrintSink({});
    const auto number = [&](const char* label) {
        return std::atof(told.c_str() + told.find(label) + std::strlen(label));
    };
    const double requests = number("TotalDirLookupRequests = ");
    std::printf(
        "|   %5d folders %s: %8.1f comparisons for each of %5.0f searches; %6.2f us for each folder\n", count,
        stride == 1 ? "in order" : "at random", number("NumCompares = ") / requests, requests,
        seconds * 1e6 / count);
}

std::string Repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

/// Files that no cache writer makes, by name; the worst of five.
void RefuseHostileFiles(const Tree& tree) {
    const std::string entities = "<!ENTITY a \"aaaaaaaaaa\">";
    const struct {
        const char* what;
        std::string text;
    } files[] = {
        {"external entity",
         "<!DOCTYPE q [<!ENTITY e SYSTEM \"file:///etc/passwd\">]><Quorrant>&e;</Quorrant>"},
        {"external type", "<!DOCTYPE q SYSTEM \"http://127.0.0.1:9/x.dtd\"><Quorrant/>"},
        {"bomb in text", "<!DOCTYPE q [<!ENTITY a \"" + Repeated("x", 1000) + "\"><!ENTITY b \"" +
                             Repeated("&a;", 1000) + "\">]><Quorrant>" + Repeated("&b;", 1000) +
                             "</Quorrant>"},
        {"bomb in attribute", "<!DOCTYPE q [" + entities + "<!ENTITY b \"" + Repeated("&a;", 1000) +
                                  "\">]><Quorrant><D name=\"" + Repeated("&b;", 1000) + "\"/></Quorrant>"},
        {"quadratic", "<!DOCTYPE q [<!ENTITY a \"" + Repeated("x", 50'000) + "\">]><Quorrant>" +
                          Repeated("&a;", 4000) + "</Quorrant>"},
        {"a million levels", "<Quorrant>" + Repeated("<D name=\"a\">", 1'000'000)},
        {"a million roots", Repeated("<Quorrant>", 1'000'000)},
        {"a long name", "<Quorrant><D name=\"" + Repeated("n", 1'000'000)},
        {"no XML", Repeated("\x89PNG\r\n", 100'000)},
        {"another encoding", Repeated(std::string("<\0Q\0", 4), 100'000)},
        {"zeros", std::string(1'000'000, '\0')},
        {"cut off", "<Quorrant>\n" + Repeated(" <D name=\"a\">\n", 100) + " <F name=\"x"},
        {"nothing", ""},
    };
    for (const auto& file : files) {
        tree.Write("hostile.xml", file.text);
        double worst = 0;
        std::string refusal;
        const ovPath path = NewPath("hostile");
        for (int i = 0; i < 5; ++i)
            worst = std::max(worst, Seconds([&] {
                                 try {
                                     ovUseToolboxCache(path, u"T:\\hostile.xml", prefix, false);
                                     refusal = ovInToolboxCacheMode() ? "TAKEN" : "refused";
                                 } catch (const fl::i18n::MessageException& message) {
                                     refusal = message.identifier();
                                 }
                             }));
        std::printf("|   %-18s %7.2f ms  %s\n", file.what, worst * 1e3, refusal.c_str());
    }
}

void RunRows(const char* mode) {
    linux_hooks::InstallDefaultHooks();
    const Tree tree;
    const ovPath writer = NewPath("writer");
    AddFolders(writer);
    const std::string file = tree.Path("cache.xml");
    ovWritePathToCacheFile(writer, "T:\\cache.xml");
    std::printf("| %s: %ju bytes\n", mode, static_cast<std::uintmax_t>(std::filesystem::file_size(file)));
    const auto load = [&] {
        return Seconds([&] { ovUseToolboxCache(writer, u"T:\\cache.xml", prefix, false); });
    };
    PrintRow((std::string("load_") + mode).c_str(), load, [&] { return ReadAndFindLines(file); });
    ovRevertFromToolboxCache(writer);
    PrintRow((std::string("start_") + mode).c_str(), [] { return Start(true); }, [] { return Start(false); });
    CountQuestions();
    if (std::strcmp(mode, "hooks") == 0)
        for (const int count : {100, 1'000, 10'000})
            for (const int stride : {1, 7919})
                CountComparisons(tree, count, stride);
    RefuseHostileFiles(tree);
}

void RunInChild(const char* mode, const char* environment) {
    std::fflush(stdout);
    if (const pid_t child = ::fork(); child != 0) {
        int status = 0;
        ::waitpid(child, &status, 0);
        return;
    }
    ::setenv("PATH_MGR_MODE", environment, 1);
    linux_host::SetPrintSink([](std::string_view) {});
    RunRows(mode);
    std::fflush(stdout);
    ::_exit(0);
}

} // namespace

int main() {
    bench::PrintHead();
    RunInChild("hooks", "");
    RunInChild("storage", "vfs");
}
