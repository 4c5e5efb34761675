#pragma once

#include <unordered_set>
#include <vector>

#include <ovsel/ovsel.hpp>

#include "tools/ovsel/session.hpp"

namespace tool {

/// What one folder of a path holds, by kind.
struct Contents {
    std::vector<ustring> files; ///< full names, of the extensions that count
    std::vector<ovDir> packages;
    std::vector<ovDir> classes;
    ovDir privateFolder;             ///< a null handle if there is none
    std::vector<ustring> subFolders; ///< full names; the library does not look into them
};

/// Asks the library what @p dir holds. A link to a folder counts as a folder, though the library may still
/// take it for a file: it looks where a link leads when somebody asks for its name, and not before.
Contents ReadContents(const Session& session, const ovDir& dir);

/// The package, class and private folders directly in @p dir.
std::vector<ovDir> FoldersIn(const ovDir& dir);

/// @p dir, and all package, class and private folders below it.
std::vector<ovDir> FoldersBelow(const ovDir& dir);

/// The full names of the files directly in @p dir.
std::vector<ustring> FilesIn(const ovDir& dir, ovExtensionList extensions);

/// The full names of the files and plain sub-folders directly in @p dir.
std::vector<ustring> NamesIn(const ovDir& dir);

/// Those of @p files, full names in @p dir, that are links to folders. Asks the disk.
std::unordered_set<ustring> FolderLinks(const ovDir& dir, const std::unordered_set<ustring>& files);

/// The last part of a file's full name, in its exact bytes.
std::string LeafOf(const ustring& fullName, bool withExtension);

} // namespace tool
