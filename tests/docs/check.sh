#!/usr/bin/env bash
# usage: check.sh CASE [ARGUMENT...] - one case of the documentation's tests; 77 says that what it needs is
# not installed.
# shellcheck disable=SC2086 # commands such as `cache write` are split into words on purpose
set -euo pipefail
export LC_ALL=C
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
world=$(mktemp -d -t ovsel-docs.XXXXXX)
trap 'rm -rf "$world"' EXIT

fail() {
  printf '%s\n' "$*" >&2
  exit 1
}

need() {
  if ! command -v "$1" >/dev/null; then
    echo "skipped: there is no $1 here" >&2
    exit 77
  fi
}

# The reference is made without a warning: every public name has a comment, every reference leads somewhere.
check_reference() {
  need doxygen
  "$root/docs/build.sh" "$world" "$1"
  [[ -s $world/html/index.html ]]
}

# Every link of a page to a file leads to one, and every link to a section to a heading.
check_links() {
  local page link target status=0
  cd "$root"
  for page in *.md docs/*.md; do
    while read -r link; do
      target=${link%%#*}
      [[ -n $target ]] && target=$(dirname "$page")/$target || target=$page
      if [[ ! -e $target ]]; then
        echo "$page: $link leads nowhere" >&2 && status=1
      elif [[ $link == *'#'* ]] &&
        ! sed -n 's/^#* //p' "$target" | tr 'A-Z ' 'a-z-' | tr -cd 'a-z0-9\n_-' | grep -qxF -- "${link#*#}"; then
        echo "$page: $link is no heading" >&2 && status=1
      fi
    done < <(awk '/^```/ { code = !code } !code' "$page" | grep -oE '\]\([^)]+\)' | tr -d ']()' | grep -v '://')
  done
  return $status
}

# Runs the console sessions of a page in one shell and writes them down as the page does. The demo tree stands
# elsewhere than the page says.
play() {
  local line command status=0
  while IFS= read -r line; do
    [[ $line == '$ '* ]] || continue
    printf '%s\n' "$line"
    command=${line#'$ '}
    (exit $status) || true
    eval "${command//\/tmp\/demo/$world/demo}" </dev/null 2>&1 || status=$?
  done | sed -e "s|$world/demo|/tmp/demo|g" -e "s|C:${world//\//\\\\}\\\\demo|C:\\\\tmp\\\\demo|g"
}

check_sessions() {
  local page sessions=0 status=0
  mkdir -p "$world/bin" "$world/home"
  ln -s "$1" "$world/bin/ovsel"
  ln -s "$2" "$world/home/example"
  ln -s "$root/scripts" "$world/home/scripts"
  unset OVSEL_PATH
  for page in "$root"/README.md "$root"/docs/*.md; do
    awk '/^```console/ { on = 1; next } /^```/ { on = 0 } on' "$page" >"$world/told"
    [[ -s $world/told ]] || continue
    sessions=$((sessions + 1))
    rm -rf "$world/demo"
    (cd "$world/home" && PATH=$world/bin:$PATH && play <"$world/told") >"$world/seen"
    diff -u --label "$page" "$world/told" --label "as it is" "$world/seen" >&2 || status=1
  done
  ((sessions > 0)) || fail "no page shows a session"
  return $status
}

# The options that the tool knows, sorted, of one command or of all.
options_of() { "$tool" "$@" --help | sed -nE 's/^  (-[^ ]+).*/\1/p' | tr ',' '\n' | sort -u; }
commands_of() { "$tool" "$@" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p'; }
# Each command with those below it, one per line.
all_commands() {
  local sub
  for sub in $(commands_of "$@"); do
    echo "$* $sub" | sed 's/^ //'
    all_commands "$@" "$sub"
  done
}

check_manuals() {
  tool=$1
  need groff
  local page messages
  for page in "$root"/docs/man/*.[1-9]; do
    messages=$(groff -mdoc -ww -b -z -Tutf8 "$page" 2>&1) || true
    [[ -z $messages ]] || fail "$page: $messages"
  done
  page=$root/docs/man/ovsel.1
  { options_of && all_commands | while read -r command; do options_of $command; done; } | sort -u >"$world/options"
  groff -mdoc -Tascii -P-cbou -rLL=400n "$page" | sed '/^EXAMPLES/,$d' | grep -oE '(^|[][ ,(|])--?[a-z0-9][a-z-]*' |
    tr -d '[] ,(|' | sort -u >"$world/described"
  diff --label "the tool's options" "$world/options" --label "$page" "$world/described" >&2
  all_commands | sort >"$world/commands"
  sed -n 's/^\.Ss ovsel //p' "$page" | sort >"$world/sections"
  diff --label "the tool's commands" "$world/commands" --label "$page" "$world/sections" >&2
}

# What bash offers where the line ends.
offered() {
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  _ovsel
  printf '%s\n' "${COMPREPLY[@]}" | sort
}

check_completions() {
  tool=$1
  local shell line command
  "$root/tools/ovsel/completions/generate.sh" "$tool" "$world"
  for shell in ovsel.bash _ovsel ovsel.fish; do
    diff "$root/tools/ovsel/completions/$shell" "$world/$shell" >&2 ||
      fail "$shell is out of date: run tools/ovsel/completions/generate.sh"
  done

  # What is generated is also what the help says, asked of the shell itself.
  # shellcheck source=tools/ovsel/completions/ovsel.bash
  source "$root/tools/ovsel/completions/ovsel.bash"
  while read -r command; do
    { options_of && options_of $command; } | sort -u |
      diff --label "ovsel $command --help" - --label bash <(offered ovsel $command -) >&2
  done < <(echo && all_commands)
  mkdir -p "$world/there/folder"
  touch "$world/there/file"
  cd "$world/there"
  while IFS='|' read -r line expected; do
    diff --label "ovsel $line" <(tr ' ' '\n' <<<"$expected") --label bash <(eval "offered ovsel $line") >&2
  done <<'ROWS'
''|cache class dirs tree watch which
wh|which
nothing|
--no-c|--no-cwd
--color ''|always auto never
--color = a|always auto
--color never t|tree
-p which wh|which
-p ''|folder
--from f|file folder
tree --d|--depth
cache v|verify
cache show f|file folder
which --scope p|path private
which --scope = d|dir
which plot --j|--json
--interval 1s watch --o|--once
ROWS

  if command -v zsh >/dev/null; then
    zsh -n "$root/tools/ovsel/completions/_ovsel"
  fi
  if command -v fish >/dev/null; then
    fish -n "$root/tools/ovsel/completions/ovsel.fish"
    while read -r command; do
      { options_of && options_of $command; } | grep -- '^--' | sort -u |
        diff --label "ovsel $command --help" - --label fish <(
          fish --no-config -c "source $root/tools/ovsel/completions/ovsel.fish; complete -C'ovsel $command --'" |
            cut -f1 | sort -u
        ) >&2
    done < <(all_commands)
  fi
}

"check_$1" "${@:2}"
