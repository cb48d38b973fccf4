#!/usr/bin/env bash
# clang-format and clang-tidy over all of our sources; nothing may be left to say.
#
#   scripts/lint.sh             everything
#   scripts/lint.sh FILE...     these sources
#   scripts/lint.sh --fix       formats everything in place
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8

if [ "${1:-}" = --fix ]; then
  git ls-files '*.cpp' '*.h' | xargs -r clang-format -i
  exit
fi
mapfile -t sources < <(if [ $# -gt 0 ]; then printf '%s\n' "$@"; else git ls-files '*.cpp' '*.h'; fi)
clang-format --dry-run -Werror "${sources[@]}"

# The rules for clang-tidy are for what we ship; a test may do what a fault needs.
cmake --preset native-asan >/dev/null
mapfile -t checked < <(printf '%s\n' "${sources[@]}" | grep -E '\.cpp$' \
  | grep -E '^(winapi|text|errors|automation|platform|objectmodel|excelvalues|addin|excelhost)/' \
  | while read -r source; do grep -q "/$source\"" build/native-asan/compile_commands.json && echo "$source"; done)
printf '%s\n' "${checked[@]}" | xargs -r -P "$(nproc)" -n 4 clang-tidy -p build/native-asan --quiet 2>/dev/null \
  || { echo "lint.sh: clang-tidy has something to say"; exit 1; }
echo "lint: ${#sources[@]} files are clean"
