#pragma once

#include <host_interfaces/ustring.hpp>
#include <ovsel/export.hpp>
#include <ovsel/handles.hpp>
#include <ovsel/search.hpp>

/// @file
/// Class files: where a class is defined, in a folder `@Name` or in a plain file `Name` whose text turns out
/// to be a class definition.
///
/// The library does not read source text. It finds the candidate, asks the host through one hook, and
/// remembers the answer until the file's directory is read again.

/// Does the file of that full name define a class? Must neither change nor refresh a path.
using ovIsClassFcn = bool (*)(const ustring& fileName);

/// Stores the hook that reads source text, for all paths. Null clears it: then no file of which nothing is
/// known counts as a class, and a later hook can still answer.
OVSEL_API void ovSetIsClassFcn(ovIsClassFcn fcn);

/// Is the name a class? Never fails.
/// @param name ASCII, dotted for a class in packages (`a.b.Name`); any other text is no class. Not null.
/// @param extensions without dots, ASCII, in *rising* priority, null-terminated:
/// @code
/// const char* const extensions[] = {"sv", "p", nullptr};   // a .p beats a .sv, the reverse of a search's
/// list
/// @endcode
/// @pre @p path is a path in service.
OVSEL_API bool ovDoesClassFileExist(ovPath path, const char* name, ovExtensionList extensions);

/// The file that defines a class.
/// @param[out] result its absolute name; left alone if there is none.
/// @return whether there is one.
OVSEL_API bool ovGetClassFile(ovPath path, const char* name, ustring& result, ovExtensionList extensions);
/// The same, narrow, cut to @p bufferSize - 1 bytes and terminated; an empty text if there is none.
/// @throws boost::numeric::negative_overflow for a negative @p bufferSize.
OVSEL_API bool ovGetClassFile(ovPath path, const char* name, char* buffer, int bufferSize,
                              ovExtensionList extensions);

/// Does the file @p name of @p dir define a class?
/// @param fullName what the hook is asked, if it is asked.
/// @param name stem, or stem and extension, exactly.
/// @return false for a null handle or record.
OVSEL_API bool ovIsFileClassdef(ovDir dir, const ustring& fullName, const ustring& name);
OVSEL_API bool ovIsFileClassdef(ovDir dir, const char* fullName, const char* name);
