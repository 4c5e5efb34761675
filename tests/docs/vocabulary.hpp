#pragma once

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <dlfcn.h>
#include <iostream>
#include <string>
#include <vector>

#include <host_interfaces/filesystem.hpp>
#include <host_interfaces/platform.hpp>
#include <host_interfaces/text.hpp>
#include <host_interfaces/utility.hpp>
#include <linux_hooks/linux_hooks.hpp>
#include <linux_host/linux_host.hpp>
#include <ovsel/descriptors.hpp>
#include <ovsel/ovsel.hpp>

/// What the examples of the documentation take as given: the names that a reader fills in.
namespace reader {

inline ovPath path, removedPath;
inline ovDir dir, where;
inline ovSearch* search = nullptr;
inline ustring file, name, other, directories;
inline ovTimeStamp_tag* stamp = nullptr;
inline const char* const extensions[] = {".p", ".sv", nullptr};

inline void run(const ustring&) {}
inline void reload(const ustring&) {}
inline void use(const ovDir&) {}
inline void log(const char*) {}
inline void collect(const char*) {}
inline std::vector<ustring> TakeQueue() { return {}; }
inline ustring NamesIn(const ustring&) { return {}; }

/// The interpreter that takes in builtins.
struct Interpreter {
    void Register(const char*, ovBuiltinFcn) {}
};
inline Interpreter interpreter;

inline constexpr ovReadDirectoryFcn read = nullptr;
inline constexpr ovDirAccessibilityFcn access = nullptr;
inline constexpr ovReservedIOFcn reserved = nullptr;
inline constexpr ovDirExistsFcn exists = nullptr;
inline constexpr ovFileTimeFcn fileTime = nullptr;

} // namespace reader
