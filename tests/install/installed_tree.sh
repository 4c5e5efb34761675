#!/bin/sh
# usage: installed_tree.sh BUILD_DIR VERSION - installs a build, moves it, and uses it as a stranger would: the tool
# runs, and the example builds by CMake and by pkg-config, with each compiler, and has its session.
set -eu
build=$(realpath "$1") version=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "$*"
    exit 1
}
quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log"; fail "failed: $*"; }; }

for component in runtime development tool doc; do
    quietly cmake --install "$build" --prefix "$work/built" --component "$component"
done
quietly cmake --install "$build" --prefix "$work/whole"
diff -r "$work/built" "$work/whole" || fail "the components are not the whole"
mv "$work/built" "$work/moved here"
prefix="$work/moved here"
rm -rf "$work/whole"
! grep -rlF -e "$build" -e "$work/built" "$prefix" || fail "refers to where it was built"

# Nothing on the way may be found by other means.
unset LD_LIBRARY_PATH CMAKE_PREFIX_PATH PKG_CONFIG_PATH
[ "$("$prefix/bin/ovsel" --version)" = "ovsel $version" ] || fail "the tool does not run"

compilers=
for compiler in g++ clang++; do
    command -v "$compiler" >/dev/null && compilers="$compilers $compiler"
done

# Each header by itself, in a program that warns of more than we do about ourselves.
for header in $(cd "$prefix/include" && find . -name '*.hpp'); do
    echo "#include <$header>" >"$work/alone.cpp"
    quietly "${compilers##* }" -std=c++20 -fsyntax-only -Wall -Wextra -Werror -I"$prefix/include" "$work/alone.cpp"
done

pkgconfig=$(find "$prefix" -type d -name pkgconfig)
example=$(find "$prefix" -type d -path '*/examples/embed')
for compiler in $compilers; do
    echo "$compiler"
    quietly cmake -S "$example" -B "$work/$compiler" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" \
        -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror"
    quietly cmake --build "$work/$compiler"
    "$here/session.sh" "$work/$compiler/embed"

    cp -r "$example" "$work/make-$compiler"
    quietly make -C "$work/make-$compiler" CXX="$compiler" CXXFLAGS="-Wall -Wextra -Werror" \
        PKG_CONFIG_PATH="$pkgconfig"
    "$here/session.sh" "$work/make-$compiler/embed"
done
