#include "tools/ovsel/help.hpp"

namespace tool::help {

const char* const Introduction = R"(Which file does this name mean, seen from here?

Examples:
  ovsel which plot -p ~/toolbox -p ~/more     the file that plot means
  ovsel which -a plot --from ~/more/main.sv   all candidates in order, each with its reason
  ovsel which gfx/plot @plot/draw             names in package and class folders
  ovsel tree -r ~/toolbox                     what a folder and its sub-folders hold
  ovsel dirs --path-file folders.txt          the path in order, with counts
  ovsel watch plot -p ~/toolbox               tell when plot comes to mean another file
  ovsel class a.b.Name -p ~/toolbox           the file that defines a class
  ovsel cache --help                          how to start without reading the disk

The current directory stands in front of the path (--no-cwd hides it). The path itself is made of -p, -r and
--path-file in the order given, then of OVSEL_PATH, whose folders are separated by ':'.
)";

const char* const Conclusion = R"(
Exit status: 0 found or in order; 1 not found, or findings: names that a cache cannot carry, a file that is no
cache, a cache that differs from the disk; 2 wrong usage; 3 no usable folder, an unreadable list, a cache that
cannot be read, written or used; 4 internal error.

JSON: one object with "schema": 1 and "command". A name that is not UTF-8 is {"bytes": "<base64>"}.
  which  "answers": one per NAME: "query", "found", "won_by", "winner", with -a "candidates", when nothing was
         found "suggestions". A candidate has "path", "folder", "reason" (own_private, constructor,
         current_directory, path, class_folder, package_folder, private), "position" (0 is the current
         directory), "detail", "extension_place" (1 is the first of --ext; null with --dirs or --ext '*').
  tree   "folders": "path", "kind", "position", "files", "packages", "classes", "private", "subfolders";
         packages, classes and the private folder hold the same fields again.
  dirs   "folders": "path", "kind", "position", "hidden", "files", "classes", "packages", "private_files",
         "subfolders"; "totals": the sums.
  class  "answers": one per NAME: "query", "found", "path".
  watch  one object per line. The first alone has "schema" and "command": "interval_ms", "folders" of which so
         many are "notified", "polled" and "unchecked"; "unnotified" says why: "reason" (local_refused,
         remote_unsupported, remote_exhausted), "check" (reread, by_time, never), "folders", "example".
         Then "event": "loaded", "added", "removed" with "folder" and "kind"; "meaning" with "name", "was",
         "now" (null for nothing), and for what it means now "reason", "position", "detail" as in which.
  cache write   "written", "folders" and "entries" counted, "refused" and "warnings": "path", "reason".
  cache show    "date", "version", "folders": "name" from the prefix on, "folders" the same again, "entries":
                "letter", "name".
  cache verify  "equal", "folders" and "entries" of the cache counted, "differences": "change" (added, removed,
                changed, unreadable), "path", "in_cache" and "on_disk" (folder, file, class file, file without
                a class, null for nothing).)";

const char* const Which = R"(Show the file that a name means.

Examples:
  ovsel which plot -p ~/toolbox               the winner's path, nothing else
  ovsel which -a plot --from ~/more/main.sv   all candidates, best first, each with its reason
  ovsel which --scope method draw             files in class and package folders
  ovsel which --dirs gfx                      folders instead of files
)";

const char* const Tree = R"(Show what the path holds, by kind.

Examples:
  ovsel tree -p ~/toolbox                     files, packages, classes, private folder, sub-folders
  ovsel tree -r ~/toolbox --depth 1           without the contents of special folders
)";

const char* const Dirs = R"(Show the path in order, with counts.

Examples:
  ovsel dirs -p ~/toolbox -p ~/more
  ovsel dirs -r ~/toolbox -0                  the folders' names for a script
)";

const char* const Watch = R"(Tell when folders change and when a name comes to mean another file.

Examples:
  ovsel watch -p ~/toolbox                    all names that a file outside of packages has
  ovsel watch plot gfx/plot --from ~/m.sv     two names, as that file sees them
  ovsel watch --json --interval 1s            one JSON object per line

It looks once per interval and ends with 0 on an interrupt. A folder whose changes the system does not report
is read again at each look, and told only when the names in it have changed. With -0 standard output holds each
name that has changed its meaning and the file that it means now, both ended by NUL, an empty one for nothing.
)";

const char* const Class = R"(Show the file that defines a class.

Examples:
  ovsel class plot a.b.Name -p ~/toolbox
  ovsel class plot --classdef-command 'grep -q ^class'

A file defines a class if its first MiB matches the pattern, or if the command, called with the file as its
last argument, ends with 0. Here the order of --ext decides, in rising priority: of Name.p and Name.sv in one
folder, --ext .p,.sv takes Name.sv. Only files in .p, .sv, .svx and .svapp can define a class.
)";

const char* const Cache = R"(Write, show and verify the file from which a path starts without the disk.

A cache keeps what the folders below one folder, the prefix, hold. Any other command takes it with
--cache FILE --prefix DIR and believes it, whatever the disk holds by then; folders that it does not list, and
all outside the prefix, are read from the disk. -r still walks the disk to find sub-folders; --path-file and -p
do not. --stats tells how much was read.
)";

const char* const CacheWrite = R"(Keep what the path holds below the prefix.

Examples:
  ovsel cache write tb.xml --prefix /opt/host -r /opt/host/toolbox
  ovsel which plot --cache tb.xml --prefix /opt/host -p /opt/host/toolbox/plots

FILE is replaced in one step and only by a whole cache, read back before. A name that is not ASCII or holds a
control character, ", & or < cannot stand in a cache; nor can one beyond 1280 bytes from the prefix on, a folder
that cannot be read, and one nested deeper than 2048. If there is one, all are named (with -0 on standard output,
else on standard error) and nothing is written.
)";

const char* const CacheShow = R"(Show what a cache holds.

Examples:
  ovsel cache show tb.xml
  ovsel cache show tb.xml --json

A letter stands before each name: D a folder with contents of its own, d another one, C a file that defines a
class, N one that does not, F one of which that is not known, U one that may be a folder. The file is read
strictly: what no writer would have written is reported with its line (exit status 1).
)";

const char* const CacheVerify = R"(Compare a cache with the disk.

Examples:
  ovsel cache verify tb.xml --prefix /opt/host
  ovsel cache verify tb.xml --prefix /opt/host --path-file folders.txt   also whether it lacks a folder

Told, with -0 by name alone, are names that the disk has besides (added) or has no more (removed), that are a
folder instead of a file, define a class or no longer do (changed), and folders that cannot be read
(unreadable). Whether a file defines a class is looked at only where the cache says something about it.
)";

const char* const CommonHint = "All further options: ovsel --help";

} // namespace tool::help
