#!/usr/bin/env bash
# Installs what the lanes need on a Debian 12 machine. Quick and quiet when all is there.
#
#   scripts/setup.sh            the native lanes
#   scripts/setup.sh windows    native, the 32-bit native lane, MinGW and Wine
#   scripts/setup.sh bench      native, and the rivals that the benchmarks measure against
#   scripts/setup.sh all        everything
set -euo pipefail

what=${1:-native}

native=(cmake ninja-build ccache g++ googletest python3)
# German, for the tests that no text depends on the locale.
locales=(locales)
sanitizers=(clang clang-tidy clang-format libclang-rt-14-dev)
native32=(g++-multilib)
mingw=(g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix)
wine=(wine wine32:i386 wine64)
bench=(libbenchmark-dev libicu-dev libfmt-dev libeigen3-dev zlib1g-dev liblzma-dev)

case "$what" in
  native)  packages=("${native[@]}"); want_wine= ;;
  bench)   packages=("${native[@]}" "${bench[@]}"); want_wine= ;;
  windows) packages=("${native[@]}" "${native32[@]}" "${mingw[@]}"); want_wine=1 ;;
  all)     packages=("${native[@]}" "${locales[@]}" "${sanitizers[@]}" "${native32[@]}" "${mingw[@]}" "${bench[@]}"); want_wine=1 ;;
  *) echo "setup.sh: '$what' is none of: native, windows, bench, all" >&2; exit 2 ;;
esac

say() { echo "setup.sh: $*" >&2; }
installed() { dpkg-query -W -f '${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed; }

missing=()
for package in "${packages[@]}"; do installed "$package" || missing+=("$package"); done

as_root=()
if [ "$(id -u)" -ne 0 ]; then as_root=(sudo); fi
export DEBIAN_FRONTEND=noninteractive

log=$(mktemp)
scratch=$(mktemp -d)
trap 'rm -rf "$log" "$scratch"' EXIT
quietly() { "$@" >"$log" 2>&1 || { cat "$log" >&2; return 1; }; }

install_packages() {
  say "installing: ${missing[*]}"
  quietly "${as_root[@]}" apt-get update
  quietly "${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}" \
    || { say "these packages can't be installed here: ${missing[*]}"; exit 1; }
}

# Both widths of Wine must come from one index, or the newer one pushes the older out. The security
# suite's i386 packages lag behind its amd64 ones, so Wine is taken from the main suite alone.
install_wine() {
  say "installing Wine for both widths"
  local suite
  suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
  local uri
  uri=$({ cat /etc/apt/sources.list /etc/apt/sources.list.d/*.sources /etc/apt/sources.list.d/*.list 2>/dev/null || true; } \
        | grep -vE '^ *#' | grep -oE '(https?|file|mirror[^ ]*)://?[^ ]+' | grep -v security | head -n 1) || true
  [ -n "$uri" ] || { say "no package source found in /etc/apt"; exit 1; }
  local signed=/usr/share/keyrings/debian-archive-keyring.gpg
  printf 'deb [signed-by=%s] %s %s main\n' "$signed" "$uri" "$suite" >"$scratch/main.list"
  local only_main=(-o "Dir::Etc::sourcelist=$scratch/main.list" -o "Dir::Etc::sourceparts=-")
  chmod 755 "$scratch"
  quietly "${as_root[@]}" dpkg --add-architecture i386
  quietly "${as_root[@]}" apt-get "${only_main[@]}" update
  quietly "${as_root[@]}" apt-get "${only_main[@]}" install -y --no-install-recommends "${wine[@]}" \
    || { say "Wine can't be installed here: the win32 and win64 lanes need it"; exit 1; }
}

[ ${#missing[@]} -eq 0 ] || install_packages
if [ "$what" = all ] && ! locale -a | grep -qix 'de_DE\.utf-\?8'; then
  quietly "${as_root[@]}" localedef -i de_DE -f UTF-8 de_DE.UTF-8
fi
if [ -n "$want_wine" ]; then
  for package in "${wine[@]}"; do installed "$package" || { install_wine; break; }; done
fi
