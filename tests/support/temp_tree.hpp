#pragma once

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace test {

/// A real folder of its own under the system's temporary directory, gone with this object whatever happened
/// to its permissions. Paths are POSIX paths; those that the operations take are relative to the folder.
///
///     TempTree tree{"a/foo.p", "a/@C/", "link -> a"};   // file, folder, symbolic link; parents are made
class TempTree {
  public:
    TempTree() : TempTree(std::filesystem::temp_directory_path()) {}
    TempTree(std::initializer_list<std::string_view> entries) : TempTree() { Add(entries); }
    /// In memory where the system allows it, for trees whose size would tire a disk.
    static TempTree InMemory() {
        return ::access("/dev/shm", W_OK) == 0 ? TempTree(std::filesystem::path("/dev/shm")) : TempTree();
    }
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;

    ~TempTree() {
        std::error_code ignored;
        MakeAccessible(m_root);
        std::filesystem::remove_all(m_root, ignored);
    }

    void Add(std::initializer_list<std::string_view> entries) {
        for (const std::string_view entry : entries)
            AddOne(std::string(entry));
    }

    /// Writes a file, making its parents.
    void Write(const std::string& path, std::string_view text) {
        MakeParent(path);
        std::ofstream stream(Path(path), std::ios::binary);
        stream << text;
        if (!stream.flush())
            throw std::runtime_error("cannot write " + Path(path));
    }

    std::string Read(const std::string& path) const {
        std::ifstream stream(Path(path), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// Removes an entry and all beneath it.
    void Remove(const std::string& path) { std::filesystem::remove_all(Path(path)); }

    void Rename(const std::string& from, const std::string& to) {
        std::filesystem::rename(Path(from), Path(to));
    }

    void Permit(const std::string& path, ::mode_t mode) {
        if (::chmod(Path(path).c_str(), mode) != 0)
            throw std::runtime_error("cannot change permissions of " + Path(path));
    }

    /// Sets the modification time of an entry, in seconds since the epoch.
    void SetTime(const std::string& path, long seconds) {
        const ::timespec times[2] = {{seconds, 0}, {seconds, 0}};
        if (::utimensat(AT_FDCWD, Path(path).c_str(), times, 0) != 0)
            throw std::runtime_error("cannot set the time of " + Path(path));
    }

    const std::string& Root() const { return m_root; }
    std::string Path(const std::string& path) const { return path.empty() ? m_root : m_root + "/" + path; }

  private:
    explicit TempTree(const std::filesystem::path& parent) {
        std::string pattern = std::filesystem::canonical(parent) / "tree-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("no temporary folder");
        m_root = pattern;
    }

    void AddOne(const std::string& entry) {
        const std::size_t arrow = entry.find(" -> ");
        if (arrow != std::string::npos) {
            const std::string link = entry.substr(0, arrow);
            MakeParent(link);
            std::filesystem::create_symlink(entry.substr(arrow + 4), Path(link));
        } else if (entry.ends_with('/')) {
            std::filesystem::create_directories(Path(entry));
        } else {
            Write(entry, "");
        }
    }

    void MakeParent(const std::string& path) {
        std::filesystem::create_directories(std::filesystem::path(Path(path)).parent_path());
    }

    static void MakeAccessible(const std::string& folder) {
        std::error_code ignored;
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ignored);
        for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
            if (entry.is_directory(ignored) && !entry.is_symlink(ignored))
                MakeAccessible(entry.path());
        }
    }

    std::string m_root;
};

} // namespace test
