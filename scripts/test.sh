#!/usr/bin/env bash
# Builds and tests one lane, or all of them.
#
#   scripts/test.sh             the native lane
#   scripts/test.sh LANE...     native, native-asan, native-tsan, native32, win32, win64, lint, fuzz, package
#   scripts/test.sh all         the six that run the suites: lint's findings change with no behaviour, the fuzzer's
#                               1,000,000 inputs a target take long (all replays its committed ones), and package
#                               builds all again as it is released
#   scripts/test.sh mutants [FOLDER...] [OPTION...]
#                               how many small faults, planted into product code, the native suites catch;
#                               mutants --help tells the options
#
# The last line says what passed, in ctest's own words.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/progress.sh

all=(native native-asan native-tsan native32 win32 win64)
known=("${all[@]}" lint fuzz package)
if [ "${1:-}" = mutants ]; then
  shift
  case " $* " in *" -h "*|*" --help "*) exec scripts/mutants.py --help ;; esac
  ! command -v python3 >/dev/null || scripts/mutants.py --check "$@" || exit
  scripts/setup.sh native
  exec scripts/mutants.py "$@"
fi
lanes=()
for argument in "$@"; do
  case "$argument" in
    -h|--help) help "$0"; exit ;;
    all) lanes+=("${all[@]}") ;;
    *)
      [[ " ${known[*]} " == *" $argument "* ]] || { echo "test.sh: '$argument' is none of: ${known[*]} all mutants" >&2; exit 2; }
      lanes+=("$argument") ;;
  esac
done
[ ${#lanes[@]} -gt 0 ] || lanes=(native)

case "${lanes[*]}" in
  native | lint) scripts/setup.sh "${lanes[0]}" ;;
  *) scripts/setup.sh all ;;
esac

jobs=$(nproc)
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
passed=0
failed=0
failures=()
spent=()

# build LANE [TARGET]
build() {
  follow "$1: configuring" "$logs/configure" cmake --preset "$1" || { cat "$logs/configure"; return 1; }
  follow "$1: building" "$logs/build" cmake --build "build/$1" --target "${2:-all}" -j "$jobs" || { grep -vE '^\[[0-9]+/[0-9]+\] ' "$logs/build" | tail -n 200; return 1; }
}

# One Wine server for the whole lane: the prefix is made before the tests run side by side.
start_wine() {
  export KESTROLUMEN_WINEPREFIX=$PWD/build/$1/wineprefix
  follow "$1: making Wine's folders" "$logs/wineboot" cmake/wine-run.sh wineboot --init || true
}
stop_wine() { WINEPREFIX=$KESTROLUMEN_WINEPREFIX wineserver -k >/dev/null 2>&1 || true; unset KESTROLUMEN_WINEPREFIX; }

count() {
  local line
  line=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+' "$1" | tail -n 1)
  local bad=0 total=0
  if [[ $line =~ ([0-9]+)\ tests?\ failed\ out\ of\ ([0-9]+) ]]; then bad=${BASH_REMATCH[1]}; total=${BASH_REMATCH[2]}; fi
  passed=$((passed + total - bad))
  failed=$((failed + bad))
}

# Each target with as many inputs, from its committed ones on. What it finds stays in build/fuzz/findings.
run_fuzzers() {
  build fuzz fuzzers || { failed=$((failed + 1)); failures+=(fuzz); return; }
  local folder target
  local folders=(fuzz/corpus/*)
  mkdir -p build/fuzz/findings
  for folder in "${folders[@]}"; do
    target=$(basename "$folder")
    mkdir -p "$logs/new-$target"
    if follow "fuzz: $target, one of ${#folders[@]}" "$logs/fuzz" "build/fuzz/fuzz/${target}_fuzz" -runs=1000000 -seed=1 -max_len=512 -verbosity=0 -print_final_stats=1 \
        -artifact_prefix=build/fuzz/findings/ "$logs/new-$target" "$folder"; then
      passed=$((passed + 1))
      echo "$target: $(sed -n 's/^stat::number_of_executed_units: *//p' "$logs/fuzz") inputs, nothing found"
    else
      failed=$((failed + 1)); failures+=("fuzz of $target")
      cat "$logs/fuzz"
    fi
  done
}

run_lane() {
  local lane=$1
  echo "== $lane"
  if [ "$lane" = fuzz ]; then run_fuzzers; return; fi
  if [ "$lane" = package ]; then
    if scripts/package_test.sh; then passed=$((passed + 1)); else failed=$((failed + 1)); failures+=(package); fi
    return
  fi
  if [ "$lane" = lint ]; then
    if follow "lint: reading all sources" "$logs/lint" scripts/lint.sh; then passed=$((passed + 1)); else failed=$((failed + 1)); failures+=(lint); fi
    grep -vE '^\[[0-9]+/[0-9]+\] ' "$logs/lint" || true
    return
  fi
  local begun=$SECONDS built
  if ! build "$lane"; then
    echo "$lane: the build failed"
    failed=$((failed + 1)); failures+=("$lane")
    return
  fi
  built=$SECONDS
  case "$lane" in win*) start_wine "$lane" ;; esac
  local status=0
  follow "$lane: testing" "$logs/ctest" \
    ctest --test-dir "build/$lane" -j "$jobs" --output-on-failure --no-tests=error || status=$?
  case "$lane" in win*) stop_wine ;; esac
  if [ $status -ne 0 ]; then cat "$logs/ctest"; failures+=("$lane"); else grep -E 'Test +#|tests passed|Skipped' "$logs/ctest"; fi
  count "$logs/ctest"
  spent+=("$(printf '%-12s %5d s building, %5d s testing' "$lane" $((built - begun)) $((SECONDS - built)))")
}

for lane in "${lanes[@]}"; do run_lane "$lane"; done

total=$((passed + failed))
echo
[ ${#failures[@]} -eq 0 ] || echo "Lanes with failures: ${failures[*]}"
[ $total -gt 0 ] || { echo "no test ran"; exit 1; }
[ ${#spent[@]} -eq 0 ] || printf '%s\n' "${spent[@]}"
echo "Lanes: ${lanes[*]}"
echo "$((100 * passed / total))% tests passed, $failed tests failed out of $total"
[ ${#failures[@]} -eq 0 ]
