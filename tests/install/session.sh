#!/bin/sh
# usage: session.sh EMBED - has a session with the example host on a small tree and compares what it answers.
set -eu
embed=$(realpath "$1")
world=$(mktemp -d)
trap 'rm -rf "$world"' EXIT
"$(dirname "$0")/../../scripts/demo-tree.sh" "$world"
mkdir -p "$world/tools/sig"
echo '# fft, of the toolbox' >"$world/tools/sig/fft.sv"
cd "$world/C"

talk() {
    "$embed" --toolbox ../tools --cache ../tools.xml ../tools/sig ../A ../B 2>&1 | sed "s|$world|~|g"
}

talk >../first <<'END'
plot
in ../B/caller.sv
plot
gfx/plot
fft
!rm ../B/private/plot.sv
!rm -r ../A/@plot && echo '# plot, new here' >plot.sv
nothing
cd ../nowhere
cd ../A
plot
save
quit
END
diff - ../first <<'END'
toolbox from the disk
> plot
~/A/@plot/plot.sv says: # the constructor of class plot
  hides ~/C/plot.p
  hides ~/A/plot.sv
  hides ~/B/plot.sv
  hides ~/B/plot.p
> in ../B/caller.sv
> plot
~/B/private/plot.sv says: # plot, for the files of B alone
  hides ~/A/@plot/plot.sv
  hides ~/C/plot.p
  hides ~/A/plot.sv
  hides ~/B/plot.sv
  hides ~/B/plot.p
> gfx/plot
~/A/+gfx/plot.sv says: # plot of the package gfx
> fft
~/tools/sig/fft.sv says: # fft, of the toolbox
> !rm ../B/private/plot.sv
(plot in ~/B/caller.sv is now ~/A/@plot/plot.sv)
> !rm -r ../A/@plot && echo '# plot, new here' >plot.sv
(plot is now ~/C/plot.p)
(plot in ~/B/caller.sv is now ~/C/plot.p)
> nothing
nothing is not known here
> cd ../nowhere
Name is nonexistent or not a directory: ../nowhere
> cd ../A
(plot is now ~/A/plot.sv)
(plot in ~/B/caller.sv is now ~/A/plot.sv)
> plot
~/A/plot.sv says: # plot, a plain file
  hides ~/B/plot.sv
  hides ~/B/plot.p
> save
saved
> quit
END

# The cache is believed: what came into the toolbox since then does not count.
echo '# fft, too new' >../tools/sig/fft.p
talk >../second <<'END'
fft
quit
END
diff - ../second <<'END'
toolbox from the cache
> fft
~/tools/sig/fft.sv says: # fft, of the toolbox
> quit
END
