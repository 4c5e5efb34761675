#pragma once

#include <cstdint>
#include <string_view>

#include <boost/unordered/unordered_flat_set.hpp>

#include "ovsel/names/unitwords.hpp"

class PathAllDirItemInfo;
class PathClassDirItemInfo;
class PathFileItemInfo;
class PathItemInfo;
class PathPackageDirItemInfo;
class PathSubDirItemInfo;

/// Finds what a directory holds already, by exact name, while it is read again: the child that a walk from
/// the first one on would find, at the cost of one probe. Made anew when a callback has taken children away
/// meanwhile.
class ReloadIndex {
  public:
    explicit ReloadIndex(const PathAllDirItemInfo& dir);

    PathFileItemInfo* FindFile(std::u16string_view diskName);
    PathClassDirItemInfo* FindClassDir(std::u16string_view name);
    PathPackageDirItemInfo* FindPackageDir(std::u16string_view name);
    PathSubDirItemInfo* FindSubDir(std::u16string_view name);

    /// Enters a child that has just been added, unless one of its name stands before it.
    void Enter(PathFileItemInfo* file) { EnterIn(m_files, file); }
    void Enter(PathClassDirItemInfo* dir) { EnterIn(m_classDirs, dir); }
    void Enter(PathPackageDirItemInfo* dir) { EnterIn(m_packageDirs, dir); }
    void Enter(PathSubDirItemInfo* dir) { EnterIn(m_subDirs, dir); }

  private:
    struct Name {
        std::u16string_view operator()(std::u16string_view name) const { return name; }
        std::u16string_view operator()(const PathItemInfo* item) const;
    };
    struct Hash {
        using is_transparent = void;
        using is_avalanching = void;
        std::size_t operator()(std::u16string_view name) const { return HashUnits(name); }
        std::size_t operator()(const PathItemInfo* item) const { return (*this)(Name()(item)); }
    };
    struct Equal {
        using is_transparent = void;
        template <class A, class B>
        bool operator()(const A& a, const B& b) const {
            return Name()(a) == Name()(b);
        }
    };
    /// A file's name on disk is its stem, a dot and its extension, which stand in two places.
    struct FileHash {
        using is_transparent = void;
        using is_avalanching = void;
        std::size_t operator()(std::u16string_view diskName) const;
        std::size_t operator()(const PathFileItemInfo* file) const;
    };
    struct FileEqual {
        using is_transparent = void;
        bool operator()(const PathFileItemInfo* a, const PathFileItemInfo* b) const;
        bool operator()(std::u16string_view diskName, const PathFileItemInfo* file) const;
        bool operator()(const PathFileItemInfo* file, std::u16string_view diskName) const {
            return (*this)(diskName, file);
        }
    };
    template <class Child>
    using Set = boost::unordered_flat_set<Child*, Hash, Equal>;

    bool IsOutdated() const;
    /// An outdated index is filled anew before it is asked.
    template <class Set, class Child>
    void EnterIn(Set& set, Child* child) {
        if (!IsOutdated())
            set.insert(child);
    }
    void Fill();
    void RefillIfOutdated();

    const PathAllDirItemInfo& m_dir;
    std::uint32_t m_removals;
    boost::unordered_flat_set<PathFileItemInfo*, FileHash, FileEqual> m_files;
    Set<PathClassDirItemInfo> m_classDirs;
    Set<PathPackageDirItemInfo> m_packageDirs;
    Set<PathSubDirItemInfo> m_subDirs;
};
