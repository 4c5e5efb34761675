#!/usr/bin/env bash
# Lays out a small world for trying ovsel: scripts/demo-tree.sh DIR
#
# DIR/C is meant as the current directory, DIR/A and DIR/B as the path. Each file says what it is.
set -euo pipefail

if (($# != 1)) || [[ -z $1 ]]; then
  echo "usage: ${0##*/} DIR" >&2
  exit 2
fi

put() {
  mkdir -p "$(dirname "$1")"
  echo "# $2" >"$1"
}

mkdir -p "$1"
cd "$1"
put C/plot.p          "plot, in the current directory"
put A/plot.sv         "plot, a plain file"
put A/@plot/plot.sv   "the constructor of class plot"
put A/@plot/draw.sv   "a method of class plot"
put A/+gfx/plot.sv    "plot of the package gfx"
put B/plot.sv         "plot, a plain file further back"
put B/plot.p          "plot, with the other extension"
put B/private/plot.sv "plot, for the files of B alone"
