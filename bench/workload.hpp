#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "host_interfaces/ustring.hpp"

/// @file
/// What the benchmarks work on: a tree of files on the disk and questions about it, the same in every run.

namespace bench {

inline constexpr std::size_t FolderCount = 500;
inline constexpr std::size_t FilesPerFolder = 100;
inline constexpr std::size_t FileCount = FolderCount * FilesPerFolder;
inline constexpr std::size_t QuestionCount = 10'000;

/// What does a file mean by a name?
struct Question {
    ustring name;  ///< a stem as it is spelled on the disk
    ustring asker; ///< full name of the file that asks, in any folder of the tree
    ustring key;   ///< the name with its capitals lowered
};

/// A tree below the system's temporary folder, gone with this object. As long as it lives, an empty folder of
/// it is the process's current directory, so that what lies where the benchmark is started plays no part.
class Workload {
  public:
    Workload();
    ~Workload();
    Workload(const Workload&) = delete;
    Workload& operator=(const Workload&) = delete;

    std::vector<std::string> folders; ///< as POSIX paths
    std::vector<ustring> folderNames; ///< the same in the library's form
    std::vector<ustring> keys;        ///< one for each name in the tree, without regard to case
    std::vector<Question> hits;
    std::vector<Question> misses;
    double meanNameLength = 0; ///< of the stems

  private:
    std::filesystem::path m_start;
    std::filesystem::path m_root;
};

} // namespace bench
