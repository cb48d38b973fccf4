#!/usr/bin/env bash
# Installs what the lanes need on a Debian 12 machine. Quick and quiet when all is there.
#
#   scripts/setup.sh            the native lanes: to build, and to test
#   scripts/setup.sh build      the native build alone, without what opens pages in its tests
#   scripts/setup.sh windows    build, the 32-bit native lane, MinGW and Wine
#   scripts/setup.sh bench      build, and the rivals that the benchmarks measure against
#   scripts/setup.sh package    build, MinGW, and what makes pages of the documentation
#   scripts/setup.sh lint       build, MinGW, and what reads the sources
#   scripts/setup.sh all        everything
#
# A package index that can't be fetched is told and ends nothing: a package that can't be installed does, by name.
set -euo pipefail
. "$(dirname "$0")/progress.sh"

what=${1:-native}

build=(cmake ninja-build ccache g++ gdb googletest libffi-dev python3)
# Chromium and its driver open the pages that the simulated Excel makes; a workflow to copy is read as YAML.
native=("${build[@]}" chromium chromium-driver python3-selenium python3-yaml)
# German, for the tests that no text depends on the locale.
locales=(locales)
sanitizers=(clang libclang-rt-14-dev)
# What reads sources: C++, shell and Python.
lint=(clang clang-tidy clang-format shellcheck pyflakes3)
native32=(g++-multilib)
mingw=(g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix
  g++-mingw-w64-i686-win32 g++-mingw-w64-x86-64-win32)
wine=(wine wine32:i386 wine64)
# matplotlib draws the charts of docs/performance.md.
bench=(libbenchmark-dev libicu-dev libfmt-dev libeigen3-dev zlib1g-dev liblzma-dev python3-matplotlib)

pages=(doxygen python3-markdown)

case "$what" in
  build)   packages=("${build[@]}"); want_wine= ;;
  native)  packages=("${native[@]}"); want_wine= ;;
  bench)   packages=("${build[@]}" "${bench[@]}"); want_wine= ;;
  windows) packages=("${build[@]}" "${native32[@]}" "${mingw[@]}"); want_wine=1 ;;
  package) packages=("${build[@]}" "${mingw[@]}" "${pages[@]}"); want_wine= ;;
  lint)    packages=("${build[@]}" "${mingw[@]}" "${lint[@]}"); want_wine= ;;
  all)     packages=("${native[@]}" "${locales[@]}" "${sanitizers[@]}" "${lint[@]}" "${native32[@]}" "${mingw[@]}" "${bench[@]}" "${pages[@]}"); want_wine=1 ;;
  -h|--help) help "$0"; exit ;;
  *) echo "setup.sh: '$what' is none of: native, build, windows, bench, package, lint, all" >&2; exit 2 ;;
esac

say() { echo "setup.sh: $*" >&2; }
installed() { dpkg-query -W -f '${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed; }

missing=()
for package in "${packages[@]}"; do installed "$package" || missing+=("$package"); done

as_root=()
if [ "$(id -u)" -ne 0 ]; then as_root=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
apt=("${as_root[@]}" apt-get -o DPkg::Lock::Timeout=300)

scratch=$(mktemp -d)
log=$scratch/log
trap 'rm -rf "$scratch"' EXIT

# update [OPTION...]: one source that is out of reach, or of two minds, leaves the others and the indexes of before.
update() {
  follow "setup.sh: reading the package indexes" "$log" "${apt[@]}" "$@" update || say "not every index could be read; going on without:"
  { grep -E '^(E|W|Err)\b' "$log" || true; } | head -n 5 >&2
}

# install WHAT PACKAGE... [-- OPTION...]: what can't be installed is found one by one.
install() {
  local title=$1 names=() broken=() name
  shift
  while [ $# -gt 0 ] && [ "$1" != -- ]; do names+=("$1"); shift; done
  [ $# -eq 0 ] || shift
  follow "setup.sh: installing $title" "$log" "${apt[@]}" "$@" install -y --no-install-recommends "${names[@]}" && return
  for name in "${names[@]}"; do
    "${apt[@]}" "$@" install -y --no-install-recommends "$name" >"$scratch/one" 2>&1 || broken+=("$name")
  done
  [ ${#broken[@]} -gt 0 ] || return 0
  grep -E '^(E|W|Err)\b|^ .*(Depends|Breaks|Conflicts):' "$log" | head -n 20 >&2
  say "these packages can't be installed here: ${broken[*]}"
  return 1
}

# Both widths of Wine must come from one index, or the newer one pushes the older out. The security
# suite's i386 packages lag behind its amd64 ones, so Wine is taken from the main suite alone.
install_wine() {
  local suite
  suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
  local uri
  uri=$({ cat /etc/apt/sources.list /etc/apt/sources.list.d/*.sources /etc/apt/sources.list.d/*.list 2>/dev/null || true; } \
        | grep -vE '^ *#' | grep -oE '(https?|file|mirror[^ ]*)://?[^ ]+' | grep -v security | head -n 1) || true
  [ -n "$uri" ] || { say "no package source found in /etc/apt"; exit 1; }
  local signed=/usr/share/keyrings/debian-archive-keyring.gpg
  printf 'deb [signed-by=%s] %s %s main\n' "$signed" "$uri" "$suite" >"$scratch/main.list"
  # The indexes of the other suites stay.
  local only_main=(-o "Dir::Etc::sourcelist=$scratch/main.list" -o "Dir::Etc::sourceparts=-" -o APT::Get::List-Cleanup=0)
  chmod 755 "$scratch"
  "${as_root[@]}" dpkg --add-architecture i386
  update "${only_main[@]}"
  install "Wine for both widths" "${wine[@]}" -- "${only_main[@]}" && return
  # A library that the security suite has renewed wants its twin from there.
  say "trying all package sources"
  update
  install "Wine for both widths" "${wine[@]}" || { say "the win32 and win64 lanes need Wine"; exit 1; }
}

if [ ${#missing[@]} -gt 0 ]; then
  update
  install "${missing[*]}" "${missing[@]}" || exit 1
fi
if [ "$what" = all ] && ! locale -a | grep -qix 'de_DE\.utf-\?8'; then
  "${as_root[@]}" localedef -i de_DE -f UTF-8 de_DE.UTF-8
fi
if [ -n "$want_wine" ]; then
  for package in "${wine[@]}"; do installed "$package" || { install_wine; break; }; done
fi
