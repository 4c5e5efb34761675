#pragma once

#include <ovsel/hooks.hpp>

namespace Quorrant::ovsel {

// The I/O hooks of a path that runs from the cache. Each answers from the tree what lies under the prefix,
// and asks the default hook about everything else.

char16_t* CacheReadDirectory(ovPath path, const ustring& name, unsigned short** attributes);
/// Accessible if CacheIsDirectory says that it is a directory.
ovDirAccessibility CacheGetAccessibility(ovPath path, const ustring& name);
/// A name under the prefix whose last element has a dot is taken for a file, also if the cache lists it; a
/// name whose last element is `private` or begins with `@` is taken for a directory, wherever it lies. The
/// disk is asked in neither case.
bool CacheIsDirectory(ovPath path, const ustring& name);
/// 0, which no change follows, for what the cache knows and for files in what it knows.
long CacheGetFileTime(ovPath path, const ustring& name);

} // namespace Quorrant::ovsel
