// Does the cost of an item stay the same when there are ten times as many? Each job runs at a tenth, a third
// and the whole of its size, each size three times in a process of its own; a row shows the least cost of one
// item at each size, and the ratio of the whole to the tenth. What grows with the number of items grows in
// that ratio.
//
//   million_files    5,000 folders with 200 files each; every tenth name is also in the folder before
//   one_folder       500,000 files in one folder
//   one_name         5,000 folders with the same file and the same class in each
//   one_leaf         5,000 folders of one file whose full names end the same
//   many_paths       1,000 paths alive at once, each with five folders of twenty files
//   watched_folders  100,000 folders of one file under watch, or as many as fs.inotify.max_user_watches
//   allows;
//                    the library's policy serves the others
//
// The first five list folders that are made up by the hooks, so that the library is measured and not the
// disk; the last is real, in memory (/dev/shm). Times are the processor's for this process, so that others at
// work shift them little; memory is what the heap has grown by.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <functional>
#include <malloc.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <host_interfaces/text.hpp>
#include <host_interfaces/utility.hpp>
#include <linux_hooks/linux_hooks.hpp>
#include <linux_host/linux_host.hpp>
#include <ovsel/ovsel.hpp>

namespace {

constexpr int turnCount = 3;
constexpr int questionCount = 20'000;
constexpr double parts[] = {0.1, 1.0 / 3, 1};

ustring Wide(const std::string& text) { return fl::i18n::to_ustring(text.c_str()); }

/// What the job in this process tells its parent: a line for each quantity.
std::FILE* results = nullptr;

void Tell(const char* quantity, double value) { std::fprintf(results, "%s\t%.9g\n", quantity, value); }

/// Processor time of @p work in nanoseconds for each of @p count items.
void Time(const char* quantity, int count, const std::function<void()>& work) {
    const auto now = [] {
        timespec time{};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
    };
    const double start = now();
    work();
    Tell(quantity, (now() - start) / count);
}

/// The same with the bytes that stay on the heap.
void TimeAndWeigh(const char* quantity, const char* weight, int count, const std::function<void()>& work) {
    const auto held = [] {
        const struct mallinfo2 heap = ::mallinfo2();
        return static_cast<double>(heap.uordblks + heap.hblkhd);
    };
    const double before = held();
    Time(quantity, count, work);
    Tell(weight, (held() - before) / count);
}

/// Folders that are made up when they are listed: R:\0, R:\1 and so on.
namespace made_up {

int filesPerFolder = 0;
bool oneName = false; ///< `same.sv` and `@same` in each folder, and nothing else

/// Of a folder, by its name.
int Number(const ustring& dirName) {
    int number = 0;
    for (const char16_t digit : dirName.substr(3)) {
        if (digit == u'\\')
            break;
        number = number * 10 + (digit - u'0');
    }
    return number;
}

std::string FileName(int folder, int file) {
    if (folder > 0 && file % 10 == 0)
        --folder, ++file;
    return "name" + std::to_string(folder * filesPerFolder + file);
}

char16_t* List(ovPath, const ustring& dirName, unsigned short** attributes) {
    if (dirName[0] != u'R')
        return nullptr;
    std::string names;
    std::vector<unsigned short> words;
    const auto add = [&](const std::string& name, unsigned short word) {
        names += name + '\0';
        words.push_back(word);
    };
    const bool isClass = dirName.find(u'@') != ustring::npos;
    if (oneName && !isClass)
        add("@same", linux_host::DirectoryWord);
    if (oneName)
        add("same.sv", linux_host::FileWord);
    else
        for (int i = 0, folder = Number(dirName); i < filesPerFolder; ++i)
            add(FileName(folder, i) + ".sv", linux_host::FileWord);
    auto* block = static_cast<char16_t*>(HostCalloc(names.size() + 1, sizeof(char16_t)));
    std::copy(names.begin(), names.end(), block);
    *attributes = static_cast<unsigned short*>(HostCalloc(words.size() + 1, sizeof(unsigned short)));
    std::copy(words.begin(), words.end(), *attributes);
    return block;
}

/// On a remote drive, so that nobody tries to watch what is not there.
void Install() {
    linux_host::DriveMap::Add(u"R:", "/nowhere", linux_host::DriveMap::Kind::Remote);
    ovSetDefaultIOFcns(
        &List, [](ovPath, const ustring&) { return ovDirAccessible; }, [](const ustring&) { return false; },
        [](ovPath, const ustring&) { return true; }, [](ovPath, const ustring&) { return 1'000'000L; });
}

} // namespace made_up

ovPath NewPath(const std::string& name = "scale") {
    const ovPath path = ovCreatePathWithPreFrozen(0, name.c_str(), static_cast<const char16_t*>(nullptr),
                                                  ovCaseSensitive, true);
    ovSetNotificationHandleWarnings(path, ovWarnCNHNever);
    ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp);
    ovNonNotifiedRemoteCWDRefreshPolicy(path, ovRefreshByTimeStamp);
    return path;
}

void AddFolders(const ovPath& path, int count, ovDirAddLocn location = ovDirAddAtEnd,
                const char* root = "R:\\") {
    for (int i = 0; i < count; ++i)
        ovAddDir(path, Wide(root + std::to_string(i)), location);
}

void Ask(const char* quantity, const ovPath& path, const std::function<std::string(int)>& name, bool there) {
    std::vector<ustring> names;
    for (int i = 0; i < questionCount; ++i)
        names.push_back(Wide(name(static_cast<int>(i * 2'654'435'761L % 1'000'003))));
    int found = 0;
    ustring file;
    Time(quantity, questionCount, [&] {
        for (const ustring& each : names)
            found += ovFindFirstFileInAll(path, each, nullptr, nullptr, file) != 0 ? 1 : 0;
    });
    if (found != (there ? questionCount : 0))
        Tell("WRONG ANSWERS", found);
}

void Fill(int folders, int files) {
    made_up::filesPerFolder = files;
    const int count = folders * files;
    const ovPath path = NewPath();
    TimeAndWeigh("load, ns a file", "memory, bytes a file", count, [&] { AddFolders(path, folders); });
    Ask(
        "find, ns", path, [&](int i) { return "name" + std::to_string((i % count) / 10 * 10 + 5); }, true);
    Ask(
        "miss, ns", path, [](int i) { return "none" + std::to_string(i); }, false);
    Time("quiet refresh, ns a folder", folders, [&] { ovRefreshAllDirectories(path, ovRefreshCheck); });
    Time("reload, ns a file", count, [&] { ovRefreshAllDirectories(path, ovRefreshReload); });
    Time("remove, ns a file", count, [&] { ovRemovePath(path); });
}

void MillionFiles(int folders) { Fill(folders, 200); }
void OneFolder(int files) { Fill(1, files); }

/// Every file of the name, first to last; @return how many.
int WalkFiles(const ovPath& path) {
    int count = 0;
    ovDir dir;
    ustring file;
    ovSearch* search = ovCreateAllSearchIterator(path, u"same", nullptr, ovCaseSensitive);
    while (ovFindNextFile(search, &dir, file) != 0)
        ++count;
    ovDestroySearch(&search);
    return count;
}

int WalkClasses(const ovPath& path) {
    int count = 0;
    for (ovDir dir = ovGetNextMethodClassDir(ovGetNullDir(path), "same", ovCaseSensitive);
         ovGetDirType(dir) != ovDirTypeNull; dir = ovGetNextMethodClassDir(dir, "same", ovCaseSensitive))
        ++count;
    return count;
}

/// Folders that share their last name, found by their full ones, and what they hold asked for from within.
void OneLeaf(int folders) {
    made_up::filesPerFolder = 1;
    const auto name = [](int i) { return Wide("R:\\" + std::to_string(i) + "\\src"); };
    const ovPath path = NewPath();
    TimeAndWeigh("add behind, ns a folder", "memory, bytes a folder", folders, [&] {
        for (int i = 0; i < folders; ++i)
            ovAddDir(path, name(i), ovDirAddAtEnd);
    });
    int found = 0;
    Time("find each by its full name, ns", folders, [&] {
        for (int i = 0; i < folders; ++i)
            found += ovGetDirType(ovFindDirFullName(path, name(i))) == ovDirTypePath ? 1 : 0;
    });
    ustring file;
    Time("ask from within each, ns", folders, [&] {
        for (int i = 0; i < folders; ++i)
            found += ovFindFirstFileVisibleToFile(path, name(i) + u"\\x.sv", Wide(made_up::FileName(i, 0)),
                                                  nullptr, nullptr, file) != 0
                         ? 1
                         : 0;
    });
    if (found != 2 * folders)
        Tell("WRONG ANSWERS", found);
    Time("remove, ns a folder", folders, [&] { ovRemovePath(path); });
}

/// Every way in which a folder comes, goes or moves among others that hold the same names.
void OneName(int folders) {
    made_up::oneName = true;
    const ovPath path = NewPath();
    TimeAndWeigh("add behind, ns a folder", "memory, bytes a folder", folders,
                 [&] { AddFolders(path, folders); });
    int files = 0, classes = 0;
    Time("walk the files, ns a folder", folders, [&] { files = WalkFiles(path); });
    Time("walk the classes, ns a folder", folders, [&] { classes = WalkClasses(path); });
    if (files != 2 * folders || classes != folders)
        Tell("WRONG ANSWERS", files);
    Ask(
        "find, ns", path, [](int) { return "same"; }, true);
    Time("quiet refresh, ns a folder", folders, [&] { ovRefreshAllDirectories(path, ovRefreshCheck); });
    Time("reload, ns a folder", folders, [&] { ovRefreshAllDirectories(path, ovRefreshReload); });
    ustring list;
    for (int i = folders; i-- > 0;)
        list += Wide("R:\\" + std::to_string(i) + ";");
    Time("turn the order, ns a folder", folders, [&] { ovReplacePath(path, list); });
    Time("take from the front, ns a folder", folders, [&] {
        for (int i = 0; i < folders; ++i)
            ovRemoveDir(ovGetNextPathDir(ovGetCWD(path)));
    });
    Time("add in front, ns a folder", folders, [&] { AddFolders(path, folders, ovDirAddAtBegin); });
    Time("take from the back, ns a folder", folders, [&] {
        for (int i = 0; i < folders; ++i)
            ovRemoveDir(ovFindDirFullName(path, Wide("R:\\" + std::to_string(i))));
    });
    AddFolders(path, folders);
    Time("remove, ns a folder", folders, [&] { ovRemovePath(path); });
}

void ManyPaths(int count) {
    made_up::filesPerFolder = 20;
    std::vector<ovPath> paths;
    paths.reserve(static_cast<std::size_t>(count));
    NewPath("first"); // which has the current directory to itself
    TimeAndWeigh("make, ns a path", "memory, bytes a path", count, [&] {
        for (int i = 0; i < count; ++i)
            AddFolders(paths.emplace_back(NewPath(std::to_string(i))), 5);
    });
    const auto each = [&](const char* quantity, const std::function<void(const ovPath&)>& work) {
        Time(quantity, count, [&] { std::for_each(paths.begin(), paths.end(), work); });
    };
    each("find, ns", [](const ovPath& path) {
        ustring file;
        ovFindFirstFileInAll(path, u"name55", nullptr, nullptr, file);
    });
    each("look up the path, ns", [&](const ovPath&) { ovLookupPath("0"); });
    each("quiet refresh, ns a path",
         [](const ovPath& path) { ovRefreshAllDirectories(path, ovRefreshCheck); });
    each("remove, ns a path", [](const ovPath& path) { ovRemovePath(path); });
}

/// A tree in memory, gone with this object.
class WatchedTree {
  public:
    explicit WatchedTree(int folders) {
        std::string pattern = "/dev/shm/ovsel-scale-XXXXXX";
        m_root = ::mkdtemp(pattern.data());
        linux_host::DriveMap::Add(u"T:", m_root, linux_host::DriveMap::Kind::Fixed);
        const std::string file = m_root + "/file.sv";
        ::mknod(file.c_str(), S_IFREG | 0600, 0);
        for (int i = 0; i < folders; ++i) {
            const std::string folder = m_root + "/" + std::to_string(i);
            ::mkdir(folder.c_str(), 0700);
            if (::link(file.c_str(), (folder + "/file" + std::to_string(i) + ".sv").c_str()) != 0)
                ::mknod((folder + "/file.sv").c_str(), S_IFREG | 0600, 0);
        }
    }
    ~WatchedTree() { std::filesystem::remove_all(m_root); }
    WatchedTree(const WatchedTree&) = delete;
    WatchedTree& operator=(const WatchedTree&) = delete;

    /// Something to notice in one folder.
    void Touch(int folder) const {
        ::mknod((m_root + "/" + std::to_string(folder) + "/new.sv").c_str(), S_IFREG | 0600, 0);
    }
    void Forget(int folder) const { ::unlink((m_root + "/" + std::to_string(folder) + "/new.sv").c_str()); }

  private:
    std::string m_root;
};

const WatchedTree* watchedTree = nullptr;

void WatchedFolders(int count) {
    linux_hooks::InstallDefaultHooks();
    const ovPath path = NewPath();
    TimeAndWeigh("add, ns a folder", "memory, bytes a folder", count,
                 [&] { AddFolders(path, count, ovDirAddAtEnd, "T:\\"); });
    ovRefreshAllDirectories(path, ovRefreshCheck);
    Time("quiet refresh, ns a folder", count, [&] { ovRefreshAllDirectories(path, ovRefreshCheck); });
    watchedTree->Touch(count / 2);
    linux_host::ResetCounters();
    Time("refresh with one change, ns a folder", count,
         [&] { ovRefreshAllDirectories(path, ovRefreshCheck); });
    Tell("folders read again by it", static_cast<double>(linux_host::GetCounters().listings));
    watchedTree->Forget(count / 2);
    Tell("watches held, for each folder", static_cast<double>(linux_host::GetCounters().watches) / count);
    Time("remove, ns a folder", count, [&] { ovRemovePath(path); });
}

/// One turn of a job in a child; its quantities keep the order in which they are told.
std::vector<std::pair<std::string, double>> RunTurn(void (*job)(int), int size) {
    int ends[2];
    if (::pipe(ends) != 0)
        std::abort();
    if (::fork() == 0) {
        results = ::fdopen(ends[1], "w");
        linux_host::SetPrintSink([](std::string_view) {});
        made_up::Install();
        job(size);
        std::fflush(results);
        ::_exit(0);
    }
    ::close(ends[1]);
    std::FILE* told = ::fdopen(ends[0], "r");
    std::vector<std::pair<std::string, double>> quantities;
    char name[64];
    for (double value = 0; std::fscanf(told, "%63[^\t]\t%lf\n", name, &value) == 2;)
        quantities.emplace_back(name, value);
    std::fclose(told);
    int status = 0;
    ::wait(&status);
    if (status != 0)
        quantities.emplace_back("ENDED EARLY, status", status);
    return quantities;
}

void RunJob(const char* name, void (*job)(int), int whole) {
    std::vector<std::string> order;
    std::map<std::string, std::vector<double>> costs; // by quantity, one for each size
    for (std::size_t part = 0; part < std::size(parts); ++part)
        for (int turn = 0; turn < turnCount; ++turn)
            for (const auto& [quantity, value] : RunTurn(job, static_cast<int>(whole * parts[part]))) {
                std::vector<double>& sizes = costs[quantity];
                if (sizes.empty())
                    order.push_back(quantity);
                sizes.resize(std::max(sizes.size(), part + 1), value);
                sizes[part] = std::min(sizes[part], value);
            }
    for (const std::string& quantity : order) {
        std::vector<double>& sizes = costs[quantity];
        sizes.resize(std::size(parts));
        std::printf("| %-15s | %-36s | %9.1f | %9.1f | %9.1f | %5.2f |\n", name, quantity.c_str(), sizes[0],
                    sizes[1], sizes[2], sizes[2] / sizes[0]);
    }
    std::fflush(stdout);
}

} // namespace

/// @p argv names the jobs to run; all of them if there are none.
int main(int argc, char** argv) {
    const auto wanted = [&](const char* name) {
        return argc == 1 || std::any_of(argv + 1, argv + argc,
                                        [&](const char* each) { return std::strcmp(each, name) == 0; });
    };
    std::printf(
        "| job             | of one item                          |   a tenth |   a third | the whole | "
        "ratio |\n"
        "|:----------------|:-------------------------------------|----------:|----------:|----------:|"
        "------:|\n");
    const struct {
        const char* name;
        void (*job)(int);
        int whole;
    } jobs[] = {{"million_files", &MillionFiles, 5'000},
                {"one_folder", &OneFolder, 500'000},
                {"one_name", &OneName, 5'000},
                {"one_leaf", &OneLeaf, 5'000},
                {"many_paths", &ManyPaths, 1'000}};
    for (const auto& [name, job, whole] : jobs)
        if (wanted(name))
            RunJob(name, job, whole);
    if (wanted("watched_folders")) {
        const WatchedTree tree(100'000);
        watchedTree = &tree;
        RunJob("watched_folders", &WatchedFolders, 100'000);
        watchedTree = nullptr;
    }
}
