#pragma once

#include <string_view>
#include <vector>

#include <ovsel/classfiles.hpp>

#include "host_interfaces/text.hpp"

class PathAllDirItemInfo;
class PathDirItemInfo;
class PathFileItemInfo;
class PathItemInfo;

/// One question: which file defines this class?
class ClassFileSearch {
  public:
    ClassFileSearch(const ovPath& path, const char* name, ovExtensionList extensions)
        : m_path(path), m_name(name), m_extensions(extensions) {}

    /// The file that defines the class, or null.
    PathFileItemInfo* Find();

  private:
    using Names = std::vector<ustring>;

    int FindExtensionIndex(const PathFileItemInfo& file, ovExtensionList list) const;
    /// Of the files of @p name in the directory, the one whose extension comes last in the caller's list.
    PathFileItemInfo* FindBestExtension(const PathAllDirItemInfo* dir, std::u16string_view name) const;
    bool IsEligibleDir(const PathDirItemInfo* dir) const;
    bool IsClassFile(PathFileItemInfo& file) const;

    PathFileItemInfo* FindPlain(const ustring& name);
    PathFileItemInfo* FindInClassDirs(const PathItemInfo* chain, const ustring& name) const;
    PathFileItemInfo* FindAmongFiles(const PathItemInfo* chain, const ustring& name) const;
    PathFileItemInfo* FindInPackages(const Names& components);
    const PathAllDirItemInfo* Descend(const PathItemInfo* package, const Names& components) const;

    ovPath m_path;
    const char* m_name;
    ovExtensionList m_extensions;
    fl::i18n::codecvt_ascii_to_ustring m_converter;
};
