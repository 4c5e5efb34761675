#pragma once

#include "host_interfaces/export.hpp"
#include "host_interfaces/ustring.hpp"

/// @file
/// The array layer: values of the host's interpreter, as far as the library's builtin handles them, and the
/// interpreter's current working folder.

/// A value of the interpreter. What is inside is the host's affair: the library passes pointers on and asks
/// through the functions below.
class HostArray;

namespace host {

/// The text of a value.
/// @throws whatever the host raises for a value that is no text; it leaves the builtin as it is.
OVSEL_HOST_API ustring TextOfArray(const HostArray& value);

/// A new value that holds @p text; never null. It belongs to the caller, and with the return of the builtin
/// to the interpreter that called it.
OVSEL_HOST_API HostArray* NewTextArray(const ustring& text);

/// Ends a value of NewTextArray. Null does nothing.
OVSEL_HOST_API void DestroyArray(HostArray* value);

/// @p name against the interpreter's current working folder, in the native form. Nothing is normalised, and
/// nothing need exist.
/// @throws one of the failures of fl::filesystem when there is no current folder.
OVSEL_HOST_API ustring AbsolutizeByCurrentFolder(const ustring& name);

} // namespace host
