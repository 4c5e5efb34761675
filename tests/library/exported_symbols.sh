#!/bin/sh
# usage: exported_symbols.sh LIBRARY LIST [VERSION] - compares what the library shows with the list of public names,
# and the list with that of the last release (abi/, by version) if VERSION, the project's, is given.
#
# A function that was added or taken away on purpose is put in the list by
#   tests/library/exported_symbols.sh build/release/lib/libovsel.so /dev/null | sed -n 's/^> //p'
# with `# VERSION` as its first line. A release copies the list to abi/; such a copy is never edited.
set -eu
export LC_ALL=C
library=$1 list=$2 version=${3:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Inline functions (W) come and go with the optimisation, types of functions with a sanitizer; what only tests call is
# nobody's interface.
nm -DC --defined-only "$library" | grep -v ' W ' | sed -e 's/^[0-9a-f]* [A-Z] //' -e '/^linux_host::testing::/d' \
    -e '/^typeinfo.*(/d' \
    -e 's/std::__cxx11::basic_string<char16_t, std::char_traits<char16_t>, std::allocator<char16_t> >/ustring/g' \
    -e 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' |
    sort -u >"$work/shown"
grep -v '^#' "$list" >"$work/listed" || true
diff "$work/listed" "$work/shown"
[ -n "$version" ] || exit 0

fail() {
    echo "$list: $*"
    exit 1
}
series() { echo "$1" | sed -E 's/^(0\.[0-9]+|[1-9][0-9]*).*/\1/'; }

[ "$(head -n 1 "$list")" = "# $version" ] || fail "its first line is to be '# $version'"
name=$(basename "$library")
name=${name%%.so*}
releases=$(dirname "$list")/abi
released=$(cd "$releases" && ls "$name"-*.txt | sed -e "s/^$name-//" -e 's/\.txt$//' | sort -V | tail -n 1)
[ "$(printf '%s\n' "$released" "$version" | sort -V | tail -n 1)" = "$version" ] ||
    fail "$released was released already, this is $version"
grep -v '^#' "$releases/$name-$released.txt" >"$work/released"
if [ "$version" = "$released" ]; then
    diff "$work/released" "$work/shown" || fail "$version was released with other names: move the version"
elif [ "$(series "$version")" = "$(series "$released")" ]; then
    comm -23 "$work/released" "$work/shown" | grep . &&
        fail "$version takes away what programs linked with $released use: move to the next series"
fi
exit 0
