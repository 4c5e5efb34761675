#pragma once

#include <sys/stat.h>

/// @file
/// Closes the gap between the listing of a folder and its watch: what folders looked like when they were
/// listed.

namespace linux_host {

/// To be called for an open directory before its first entry is read. Remembers the last few thousand folders
/// that no handle was taken on.
void RememberListing(int directory);

/// Is a folder that @p status was just taken of surely as it was when it was listed last? A folder that was
/// not listed, or that had changed so shortly before that a further change would leave the same time, is not.
/// Forgets the listing.
bool IsAsListed(const struct ::stat& status);

} // namespace linux_host
