#!/bin/sh
# usage: filter.sh PAGE - a Markdown page as Doxygen takes it. Names of the library in code marks become
# references, so that a page that names what is no longer there is a warning; links to headers lead to their
# pages, links to what has no page (files outside of docs/, sections) become their text.
exec sed -E \
    -e '/^ *```/,/^ *```/b' \
    -e 's/`ovSearch`/<tt>ovSearch<\/tt>/g' \
    -e 's/`(ov(sel_)?[A-Za-z_]+|host::[A-Za-z:]+|linux_(host|hooks)::[A-Za-z:]+)(\(\))?`/<tt>\@ref \1<\/tt>/g' \
    -e 's/\[[^]]*\]\(\.\.\/([a-z_]+\/)*([a-z_]+\.hpp)\)/\@ref \2/g' \
    -e 's/\[([^]]*)\]\((\.\.\/|man\/|#)[^)]*\)/\1/g' "$1"
