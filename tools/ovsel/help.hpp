#pragma once

/// Texts of --help: what the tool and each command say beside the list of their options. The first line of a
/// command's text is also its line in the list of commands.
namespace tool::help {

extern const char* const Introduction;
extern const char* const Conclusion;

extern const char* const Which;
extern const char* const Tree;
extern const char* const Dirs;
extern const char* const Watch;
extern const char* const Class;
extern const char* const Cache;
extern const char* const CacheWrite;
extern const char* const CacheShow;
extern const char* const CacheVerify;

/// At the end of each command's help.
extern const char* const CommonHint;

} // namespace tool::help
