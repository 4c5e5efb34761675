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
/// remembers the answer until the file's directory is read again. Only files in `.sv`, `.p`, `.svx` and
/// `.svapp` can define a class; of others the hook is not asked.

/// Does the file of that full name define a class? Must neither change nor refresh a path.
using ovIsClassFcn = bool (*)(const ustring& fileName);

/// Stores the hook that reads source text, for all paths. Null clears it: then no file of which nothing is
/// known counts as a class, and a later hook can still answer.
OVSEL_API void ovSetIsClassFcn(ovIsClassFcn fcn);

/// Is the name a class?
/// @param path must be in service.
/// @param name ASCII, dotted for a class in packages (`a.b.Name`); any other text is no class. Not null.
/// @param extensions without dots, ASCII, in *rising* priority, null-terminated:
/// @code
/// const char* const extensions[] = {"sv", "p", nullptr};   // a .p beats a .sv
/// @endcode
/// @throws fl::i18n::CvtInvalidCharacter for an extension beyond ASCII, if a file of the name is there. What
/// the hook throws passes through.
OVSEL_API bool ovDoesClassFileExist(ovPath path, const char* name, ovExtensionList extensions);

/// The file that defines a class: its absolute name in @p result, which is left alone if there is none.
/// Arguments and errors as for ovDoesClassFileExist. @return whether there is one.
OVSEL_API bool ovGetClassFile(ovPath path, const char* name, ustring& result, ovExtensionList extensions);
/// The same, narrow, cut to @p bufferSize - 1 bytes and terminated; an empty text if there is none.
/// @throws boost::numeric::negative_overflow for a negative @p bufferSize;
/// fl::i18n::CvtInvalidCharacter for a file whose name has no narrow form.
OVSEL_API bool ovGetClassFile(ovPath path, const char* name, char* buffer, int bufferSize,
                              ovExtensionList extensions);

/// Does the file @p name of @p dir define a class? The name is the stem, or stem and extension, exactly;
/// @p fullName is what the hook is asked, if it is asked.
/// @return false for a null handle or record.
OVSEL_API bool ovIsFileClassdef(ovDir dir, const ustring& fullName, const ustring& name);
/// The same with narrow names; null counts as empty.
OVSEL_API bool ovIsFileClassdef(ovDir dir, const char* fullName, const char* name);
