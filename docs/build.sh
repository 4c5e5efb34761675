#!/bin/sh
# usage: build.sh DIR VERSION - writes the reference to DIR/html; fails at any warning.
set -eu
mkdir -p "$1"
OVSEL_DOCS_OUTPUT=$(cd "$1" && pwd) OVSEL_VERSION=$2
export OVSEL_DOCS_OUTPUT OVSEL_VERSION
cd "$(dirname "$0")/.."
exec doxygen docs/Doxyfile
