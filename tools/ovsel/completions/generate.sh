#!/usr/bin/env bash
# usage: generate.sh TOOL DIR - writes the completions of bash, zsh and fish to DIR, from what TOOL says of
# itself in --help. To be run again whenever an option or a command has changed:
#   tools/ovsel/completions/generate.sh build/release/bin/ovsel tools/ovsel/completions
set -euo pipefail
export LC_ALL=C
tool=$1
target=$2

# One line for each option (o), sub-command (c) and positional (p) of the command "$*" and of all below it,
# fields between tabs: kind, command, short form, long form, argument, summary.
table() {
  local help
  help=$("$tool" "$@" --help)
  awk -v command="$*" '
    function flush() { if (row != "") print row "\t" repeats clause(text); row = text = "" }
    function begin(kind, head,   word, names, argument, short, long, i) {
      sub(/ (Excludes|Needs):.*/, "", head)
      sub(/ REQUIRED/, "", head)
      split(head, word, " ")
      if (kind != "o") return kind "\t" command "\t\t" word[1] "\t"
      split(word[1], names, ",")
      for (i = 1; i in names; ++i)
        if (names[i] ~ /^--/) long = names[i]; else short = names[i]
      return kind "\t" command "\t" short "\t" long "\t" word[2]
    }
    # The first clause is enough for a list, unless it is a word or two.
    function clause(s) {
      sub(/( \(|[;.:] ).*/, "", s)
      sub(/\.$/, "", s)
      return match(s, /^............+, /) && match(substr(s, 13), /, /) ? substr(s, 1, 11 + RSTART) : s
    }
    /^(Options|Subcommands|Positionals):$/ {
      flush(); kind = /^O/ ? "o" : /^S/ ? "c" : "p"; next
    }
    /^[^ ]/ || NF == 0 { flush(); kind = "" }
    kind == "" { next }
    # A name in the second column; what it does stands on the same line, or on the next if the name is long.
    /^  [^ ]/ {
      flush()
      head = substr($0, 3)
      if (match(head, /  +/)) { text = substr(head, RSTART + RLENGTH); head = substr(head, 1, RSTART - 1) }
      row = begin(kind, head)
    }
    /^   / && text == "" { text = $0; sub(/^ +/, "", text) }
    { repeats = text ~ /\(repeatable\)/ ? "*" : "" }
    END { flush() }' <<<"$help"
  local sub
  for sub in $(sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p' <<<"$help"); do
    table "$@" "$sub"
  done
}

rows=$(table)
generate() { awk -F '\t' -v form="$1" -f "$(dirname "${BASH_SOURCE[0]}")/generate.awk" <<<"$rows"; }
generate bash >"$target/ovsel.bash"
generate zsh >"$target/_ovsel"
generate fish >"$target/ovsel.fish"
