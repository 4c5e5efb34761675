#pragma once

#include <cstddef>

#include <ovsel/export.hpp>

/// @file
/// What the library tells of itself, and the builtin that it brings for the host's interpreter. All names
/// have C linkage, so that a host that loads the library at run time finds them by dlsym under these names:
///
/// @code
/// void* library = dlopen("libovsel.so.0.2", RTLD_NOW);
/// auto version = static_cast<const char* const*>(dlsym(library, "ovsel_version"));          // "0.2.0"
/// auto query = reinterpret_cast<const ovFcnTable* (*)()>(dlsym(library, "QuerySVFcnTable_ovsel"));
/// interpreter.Register("absolutize", query()->entries[0].function);
/// @endcode

class HostArray;

/// A builtin as the interpreter calls it. It puts new values into @p outputs, which then belong to the
/// caller; the inputs stay the caller's. There is room for one output even if none is asked for.
using ovBuiltinFcn = void (*)(int outputCount, HostArray* outputs[], int inputCount,
                              const HostArray* inputs[]);

/// One builtin. Which name it gets is decided by the interpreter that registers it.
struct ovFcnTableEntry {
    ovBuiltinFcn function; ///< never null
    const void* reserved;  ///< null
};

/// The builtins of a library, and behind them what identifies it.
struct ovFcnTable {
    const ovFcnTableEntry* entries; ///< the first of them
    std::size_t entryCount;         ///< 1
    std::size_t layout;             ///< of this record: 1; a higher number only adds fields behind these
    const char* library;            ///< "ovsel"
    const char* version;            ///< as ovsel_version
};

extern "C" {

/// The version, such as "0.2.0".
extern OVSEL_API const char* const ovsel_version;

/// The day of the build in the form "Nov 21 2026"; with SOURCE_DATE_EPOCH in the environment of g++, that
/// day.
extern OVSEL_API const char* const ovsel_build_date;

/// The library's path relative to the folder that it is installed under, such as "lib/libovsel.so.0.2".
extern OVSEL_API const char* const ovsel_relative_path;

/// The library's one builtin. It takes a path name as text, in either form and relative to the interpreter's
/// current folder or not, and gives the absolute native name with links and dots resolved.
///
/// Calling it needs at least one input. It raises fl::i18n::MessageException
/// "SORVEN:ovsel:cannotAbsolutizePath" with the given name where the name leads nowhere.
/// @return a record that lives as long as the library; never null.
OVSEL_API const ovFcnTable* QuerySVFcnTable_ovsel();
}
