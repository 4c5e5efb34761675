#pragma once

#include "bench/tree.hpp"

/// @file
/// The toolbox that the benchmarks ask about: files with names like people give them, and questions, the same
/// in every run.

namespace bench {

/// How large a toolbox is, and where in a folder of the path its files lie.
struct Shape {
    std::size_t folders = 500; ///< on the path
    std::size_t plain = 80;    ///< files of such a folder itself, at least one,
    std::size_t methods = 8;   ///< in its one class directory,
    std::size_t package = 6;   ///< in its one package directory,
    std::size_t internals = 6; ///< and in its private one

    std::size_t FilesPerFolder() const { return plain + methods + package + internals; }
    std::size_t FileCount() const { return folders * FilesPerFolder(); }
    /// A file of a package goes by a qualified name only.
    std::size_t FilesWithBareNames() const { return FileCount() - folders * package; }
};

/// What does a file mean by a name?
struct Question {
    ustring name;  ///< a stem as it is spelled on the disk, without an extension
    ustring asker; ///< full name of the file that asks, in a folder of the path
    ustring key;   ///< the name with its capitals lowered
};
using Questions = std::vector<Question>;

inline constexpr std::size_t questionCount = 10'000;

/// Makes a toolbox in a tree, and says what is in it.
class Workload {
  public:
    Workload(const Tree& tree, const std::string& place, const Shape& shape = {});

    const Shape shape;
    std::vector<ustring> folderNames; ///< of the path, in its order
    std::vector<std::string> folders; ///< all of them, as POSIX paths
    std::size_t entries = 0;          ///< files and folders in them
    std::vector<ustring> keys;        ///< one for each name of a file, without regard to case
    Questions hits;                   ///< any file outside of a package, each as likely as any other
    Questions zipfHits;    ///< the nth of them, in random order, n times less likely than the first
    Questions visibleHits; ///< any plain file, and private ones of the asker's own folder
    Questions misses;
    double meanNameLength = 0; ///< of the stems

  private:
    class Builder;
};

} // namespace bench
