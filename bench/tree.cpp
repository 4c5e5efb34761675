#include "bench/tree.hpp"

#include <array>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

#include <ovsel/ovsel.hpp>

#include "linux_host/linux_host.hpp"

namespace bench {

namespace {

std::filesystem::path MakeRoot(const std::filesystem::path& place) {
    std::string pattern = std::filesystem::canonical(place) / "ovsel-bench-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no folder can be made in " + place.string());
    return pattern;
}

/// A benchmark of half a tree would look fast.
void Require(int result, const std::string& what) {
    if (result < 0)
        throw std::runtime_error("cannot make " + what);
}

} // namespace

Tree::Tree(const std::filesystem::path& place)
    : m_start(std::filesystem::current_path()), m_root(MakeRoot(place)) {
    linux_host::DriveMap::Add(u"T:", m_root, linux_host::DriveMap::Kind::Fixed);
    linux_host::DriveMap::Add(u"R:", m_root, linux_host::DriveMap::Kind::Remote);
    AddFolder("empty");
    std::filesystem::current_path(Path("empty"));
}

Tree::~Tree() {
    std::error_code ignored;
    std::filesystem::current_path(m_start, ignored);
    std::filesystem::remove_all(m_root, ignored);
}

void Tree::AddFile(const std::string& name) const {
    Require(::mknod(Path(name).c_str(), S_IFREG | 0600, 0), name);
}

void Tree::AddFiles(const std::string& folder, const std::vector<std::string>& names) const {
    AddFolder(folder);
    if (names.empty())
        return;
    AddFile(folder + "/" + names.front());
    const int descriptor = ::open(Path(folder).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    for (auto name = names.begin() + 1; name != names.end(); ++name)
        Require(::linkat(descriptor, names.front().c_str(), descriptor, name->c_str(), 0), *name);
    ::close(descriptor);
}

void Age(const std::string& path) {
    const timespec times[2] = {{1'000'000, 0}, {1'000'000, 0}};
    Require(::utimensat(AT_FDCWD, path.c_str(), times, 0), path);
}

ustring Wide(const std::string& ascii) { return ustring(ascii.begin(), ascii.end()); }

ovPath NewPath(const char16_t* frozenPrefix) {
    // Paths of several turns and rows live side by side, and two cannot bear one name.
    static int count = 0;
    const std::string name = "path" + std::to_string(++count);
    return ovCreatePathWithPreFrozen(0, name.c_str(), frozenPrefix, ovCasePlatformDefault, true);
}

void AddFolders(const ovPath& path, const std::vector<ustring>& names) {
    for (const ustring& name : names)
        ovAddDir(path, name, ovDirAddAtEnd);
}

std::size_t CountFiles(const ovPath& path) {
    ovSearch* search = ovCreateAllSearchIterator(path, ustring(), nullptr, ovCaseOfPath);
    std::size_t count = 0;
    ustring name;
    while (ovFindNextFile(search, nullptr, name) != 0)
        ++count;
    ovDestroySearch(&search);
    return count;
}

std::size_t ListBare(const std::vector<std::string>& folders) {
    // As large as the block of the C library's readdir.
    alignas(dirent64) static std::array<char, 32768> block;
    std::size_t entries = 0;
    for (const std::string& folder : folders) {
        const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ssize_t size = 0;
        while ((size = ::getdents64(descriptor, block.data(), block.size())) > 0)
            for (ssize_t at = 0; at < size; ++entries)
                at += reinterpret_cast<const dirent64*>(block.data() + at)->d_reclen;
        ::close(descriptor);
    }
    return entries - 2 * folders.size();
}

} // namespace bench
