#!/bin/sh
# usage: debian_packages.sh BUILD_DIR VERSION - packs a build, and looks at what the packages hold and need.
set -eu
build=$(realpath "$1") version=$2
command -v dpkg-shlibdeps >/dev/null || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/packing" >log 2>&1 || {
    cat log
    exit 1
}
soname=$(readelf -d "$build/lib/libovsel.so" | sed -n 's/.*SONAME.*\[libovsel\.so\.\(.*\)\]/\1/p')
status=0
expect() { # PACKAGE FIELD PATTERN
    dpkg-deb -f packing/"$1"_"$version"_*.deb "$2" | grep -qE "$3" || {
        echo "$1: $2 does not match $3:"
        dpkg-deb -f packing/"$1"_"$version"_*.deb
        status=1
    }
}
same="libovsel$soname \(= $version\)"
expect "libovsel$soname" Depends '^libc6 .*libicu[0-9].*libxerces-c'
expect "libovsel$soname" Description '^path manager.*libraries$'
expect libovsel-dev Depends "^$same, libboost1"
expect ovsel Depends "^$same, libc6 .*libfmt"
expect ovsel-doc Architecture '^all$'
dpkg-deb -e packing/"libovsel${soname}_${version}"_*.deb control
printf '%s\n' "libovsel $soname libovsel$soname (>= $version)" \
    "libovsel_host $soname libovsel$soname (>= $version)" | diff - control/shlibs || status=1

# Together they are what an installation is, and no two hold one file.
for package in packing/*.deb; do
    dpkg-deb -c "$package" | sed -n 's/^[-l].* \.\/usr\/\([^ ]*\).*/\1/p' >>packed
    dpkg-deb -x "$package" root
done
cmake --install "$build" --prefix "$work/installed" >log
(cd installed && find . ! -type d -printf '%P\n') | sort >installed.txt
sort packed | diff installed.txt - || status=1
[ "$(root/usr/bin/ovsel --version)" = "ovsel $version" ] || status=1
exit $status
