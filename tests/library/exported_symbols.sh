#!/bin/sh
# usage: exported_symbols.sh LIBRARY LIST - compares what the library shows with the list of public names.
# A function that was added or taken away on purpose is put in the list by
#   tests/library/exported_symbols.sh build/release/lib/libovsel.so /dev/null | sed -n 's/^> //p'
set -eu
shown=$(mktemp)
trap 'rm -f "$shown"' EXIT
nm -DC --defined-only "$1" | sed -e 's/^[0-9a-f]* [A-Z] //' \
    -e 's/std::__cxx11::basic_string<char16_t, std::char_traits<char16_t>, std::allocator<char16_t> >/ustring/g' \
    -e 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' |
    LC_ALL=C sort -u >"$shown"
diff "$2" "$shown"
