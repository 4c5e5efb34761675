#pragma once

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

/// Asks the library what @p dir holds. Links are followed first, so that one to a folder is not taken for a
/// file.
Contents ReadContents(const Session& session, const ovDir& dir);

} // namespace tool
