#pragma once

#include "bench/table.hpp"
#include "bench/workload.hpp"

/// @file
/// The groups of rows. Each runs in a process of its own, since a process has one mode and one heap.

namespace bench {

void RunLookups(Table& rows);
void RunLoads(Table& rows);
void RunChanges(Table& rows);
/// In the mode that PATH_MGR_MODE names.
void RunCacheStarts(Table& rows);

/// Asks what each name means where it is asked from; @p found of the questions must have an answer.
Turn AskVisible(const ovPath& path, const Questions& questions, std::size_t found);

} // namespace bench
