#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "host_interfaces/ustring.hpp"
#include "ovsel/handles.hpp"

/// @file
/// Folders and files for the benchmarks to work on, and the bare system calls that they are measured against.

namespace bench {

/// A folder of its own, known to the library as `T:`, and as the remote drive `R:` too; gone with this
/// object. As long as it lives, an empty folder in it is the process's current directory, so that what lies
/// where the benchmark is started plays no part. One at a time.
class Tree {
  public:
    /// @p place is a folder in memory, unless the speed of a real disk's file system is wanted.
    explicit Tree(const std::filesystem::path& place = "/dev/shm");
    ~Tree();
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    /// The POSIX path of a name in the tree.
    std::string Path(const std::string& name) const { return m_root / name; }
    void AddFolder(const std::string& name) const { std::filesystem::create_directories(Path(name)); }
    void AddFile(const std::string& name) const;
    /// One file under many names: it lists the same as many files, is made faster, and needs one inode. Some
    /// file systems search long for a new one when many have just been freed.
    void AddFiles(const std::string& folder, const std::vector<std::string>& names) const;

  private:
    std::filesystem::path m_start;
    std::filesystem::path m_root;
};

/// Young folders are distrusted; makes this one years old.
void Age(const std::string& path);

/// ASCII as the library wants it.
ustring Wide(const std::string& ascii);

/// A path with the platform's case rule, and a name that no other has, which takes what lies under
/// @p frozenPrefix as unchanging. Null: nothing.
ovPath NewPath(const char16_t* frozenPrefix = nullptr);

/// ovAddDir for each, behind one another.
void AddFolders(const ovPath& path, const std::vector<ustring>& names);

/// The files on a path, by walking through all of them but those of packages.
std::size_t CountFiles(const ovPath& path);

/// What reading folders costs at the very least: a loop of getdents64. @return their entries, without `.` and
/// `..`.
std::size_t ListBare(const std::vector<std::string>& folders);

} // namespace bench
