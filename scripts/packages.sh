# shellcheck shell=bash
# Sourced by the scripts beside it: the Debian packages that a build needs, and what single scripts need beyond.

ovsel_packages=(
  g++ clang libclang-rt-14-dev cmake ninja-build make pkgconf dpkg-dev
  libboost1.81-dev libicu-dev libxerces-c-dev
  libgtest-dev libgmock-dev librapidcheck-dev
  libcli11-dev nlohmann-json3-dev libfmt-dev
  doxygen groff-base strace
)
ovsel_packages_lint=(clang-tidy-14 cppcheck jq)
ovsel_packages_coverage=(gcovr)
ovsel_packages_valgrind=(valgrind)

# install_packages [GROUP...]: what a build needs, and what stands above for each group. Installs what is missing
# and asks nobody anything; does nothing at all when everything is there.
# shellcheck disable=SC2120 # groups may be missing
install_packages() {
  local wanted=("${ovsel_packages[@]}") missing=() group package
  for group in "$@"; do
    local -n packages_of_group=ovsel_packages_$group
    wanted+=("${packages_of_group[@]}")
  done
  for package in "${wanted[@]}"; do
    if [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
      missing+=("$package")
    fi
  done
  if ((${#missing[@]} == 0)); then
    return 0
  fi

  local as_root=()
  if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
      echo "Missing packages, and neither root nor sudo to install them: ${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo)
  fi
  echo "Installing: ${missing[*]}" >&2
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq >&2
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
}

# Runs a command with its output in a file; the output is shown only if the command fails.
quietly() {
  local log=$1
  shift
  if ! "$@" >"$log" 2>&1; then
    echo "Failed: $*" >&2
    echo "--- $log" >&2
    cat "$log" >&2
    return 1
  fi
}

# Arguments for a configuration: a compiler cache, where there is one.
launcher_arguments() {
  if command -v ccache >/dev/null; then
    echo -DCMAKE_CXX_COMPILER_LAUNCHER=ccache
  fi
}
