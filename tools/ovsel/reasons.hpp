#pragma once

#include <string>

#include <ovsel/ovsel.hpp>

#include "tools/ovsel/session.hpp"

namespace tool {

/// What gave a candidate its rank.
enum class Rank {
    OwnPrivate,
    Constructor,
    CurrentDirectory,
    PathFolder,
    ClassFolder,
    PackageFolder,
    OtherPrivate
};

struct Reason {
    Rank rank;
    std::size_t position; ///< of the path's folder that holds it; 0 is the current directory
    std::string text;     ///< for people

    /// The word that stands for the rank in JSON.
    const char* Code() const;
    /// Would the answer be another without the current directory?
    bool IsFromCurrentDirectory() const { return position == 0; }
};

/// Explains a candidate by the folder @p dir that holds it (or that it is, when folders are searched).
/// @param constructorsOnly what is found in class folders was found as a constructor: true for an unqualified
/// name in the visible scope, which shows nothing else of a class.
Reason Explain(const Session& session, const ovDir& dir, bool constructorsOnly);

} // namespace tool
