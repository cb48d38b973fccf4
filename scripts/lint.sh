#!/usr/bin/env bash
# What the tools that read sources have to say of ours: nothing may be left.
#
#   scripts/lint.sh             everything: C++, shell, Python
#   scripts/lint.sh FILE...     these sources
#   scripts/lint.sh --fix       formats all C++ in place
#
# scripts/setup.sh lint installs the tools. clang-tidy takes a few seconds a source; what it found clean it reads
# again only when the source, a header of it or .clang-tidy has changed.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/progress.sh
export LC_ALL=C.UTF-8

case "${1:-}" in
  -h|--help) help "$0"; exit ;;
  --fix) git ls-files '*.cpp' '*.h' | xargs clang-format -i; exit ;;
esac
for tool in clang-format clang-tidy shellcheck pyflakes3; do
  command -v "$tool" >/dev/null || { echo "lint.sh: $tool isn't installed; scripts/setup.sh lint does that" >&2; exit 2; }
done

for file in "$@"; do [ -e "$file" ] || { echo "lint.sh: there is no $file" >&2; exit 2; }; done
mapfile -t files < <(if [ $# -gt 0 ]; then printf '%s\n' "$@"; else git ls-files; fi)
# these REGEX: the files whose names match.
these() { printf '%s\n' "${files[@]}" | grep -E "$1" || true; }

these '\.(cpp|h)$' | xargs -r clang-format --dry-run -Werror
these '\.sh$|^\.ci/run$' | xargs -r shellcheck
these '\.py$' | xargs -r pyflakes3

# The rules for clang-tidy are for what we ship; a test may do what a fault needs. Sources that are compiled for
# Windows alone are read with MinGW's headers.
commands=build/lint
# Without the lanes' precompiled headers, which are there only when a lane has been built, and options for GCC alone.
cmake --preset native-asan -B "$commands/native" -DKESTROLUMEN_PRECOMPILE=OFF >/dev/null
cmake --preset win64 -B "$commands/windows" -DKESTROLUMEN_PRECOMPILE=OFF -DKESTROLUMEN_EXCELHOST_OPTIONS= >/dev/null
library=$(x86_64-w64-mingw32-g++-posix -print-file-name=include/c++)
mkdir -p "$commands/clean"
sed -i -E -e 's/ -(fno-keep-inline-dllexport|Wno-restrict|fno-var-tracking-assignments)//g' \
  -e "s| -c | --target=x86_64-w64-mingw32 -isystem $library -isystem $library/x86_64-w64-mingw32 -c |" \
  "$commands/windows/compile_commands.json"

read_by() { grep -q "/$2\"" "$commands/$1/compile_commands.json"; }
checked=()
while read -r source; do
  for home in native windows; do
    if read_by "$home" "$source"; then checked+=("$home" "$source"); break; fi
  done
done < <(these '^(winapi|text|errors|automation|platform|objectmodel|excelvalues|addin|excelhost|examples)/.*\.cpp$')

# preprocessed HOME SOURCE: what clang-tidy gets to see of a source, comments too.
preprocessed() {
  local command
  command=$(grep -F " -c $PWD/$2\"" "$commands/$1/compile_commands.json" | head -n 1 |
    sed -E 's/^ *"command": "[^ ]+(.*)",?$/clang++\1/; s/\\(["\\])/\1/g; s/ -o [^ ]+//; s/ -c / -E -C -w /')
  (cd "$commands/$1" && eval "$command")
}
# tidy NUMBER HOME SOURCE: what was clean once and hasn't changed since is not read again.
tidy() {
  echo "[$1/$total] $3"
  local clean
  clean=$commands/clean/$(set -o pipefail; { cat .clang-tidy && preprocessed "$2" "$3"; } 2>/dev/null | sha256sum) || clean=
  clean=${clean%% *}
  [ -n "$clean" ] && [ -e "$clean" ] && return
  clang-tidy -p "$commands/$2" --quiet "$3" 2>/dev/null || return
  [ -z "$clean" ] || touch "$clean"
}
export -f preprocessed tidy
export commands total=$((${#checked[@]} / 2))
for ((i = 0; i < total; ++i)); do printf '%s\n' $((i + 1)) "${checked[@]:i * 2:2}"; done |
  xargs -r -P "$(nproc)" -n 3 bash -c 'tidy "$@"' tidy \
  || { echo "lint.sh: clang-tidy has something to say"; exit 1; }
echo "lint: all is clean, files: ${#files[@]}"
