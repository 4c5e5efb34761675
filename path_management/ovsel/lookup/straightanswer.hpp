#pragma once

#include <cstdint>
#include <optional>

#include <ovsel/handles.hpp>

#include "host_interfaces/ustring.hpp"

namespace Quorrant::ovsel {

struct SearchQuestion;

/// Answers a question for the first file without a search, if a look at the index is enough: the name is
/// plain, and what stands first under it is meant beyond doubt, or nothing stands there. That is what nearly
/// all questions of an interpreter are like.
///
/// Only reads, and calls nobody: whatever has to be asked of the disk or of the host is left to a search.
/// @pre the scope is SearchScopeAll or SearchScopeVisible.
/// @param dir may be null.
/// @param fullName may be the very text that the question's name is in.
/// @return the match as a search gives it, and @p dir and @p fullName are set; nothing if a search has to be
/// made, and neither has been touched.
std::optional<std::int32_t> AnswerStraight(const SearchQuestion& question, ovDir* dir, ustring& fullName);

} // namespace Quorrant::ovsel
