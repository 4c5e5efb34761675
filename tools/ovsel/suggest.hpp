#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// At most three of @p known that are within two edits of @p name (one, if it is short), nearest first.
std::vector<std::string> ClosestNames(std::string_view name, const std::vector<std::string>& known);

/// Asks "did you mean ...?" on standard error, unless there is nothing to suggest.
void Suggest(const std::vector<std::string>& names);

} // namespace tool
