#!/usr/bin/env bash
# Runs the benchmarks and prints each one's ratio to its rivals, measured beside it in the same run, and how often
# it asks the heap for memory.
#
#   scripts/bench.sh [HOME]            all programs
#   scripts/bench.sh [HOME] NAME...    some of them, such as: values bridge
#   scripts/bench.sh --publish         the tables and charts of docs/performance.md, from the results so far
#
# HOME is --windows, the product's own home, 32 bits under Wine; or --windows64, its twin; else it is Linux, where
# there are more programs.
#
# The raw numbers go to bench-results/HOME/NAME.json. Ratios are of the medians of several repetitions: as many as
# REPETITIONS says (7), each of at least MIN_TIME seconds (0.1).
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/progress.sh

preset=bench
home=linux
known=()
for source in bench/*_bench.cpp; do known+=("$(basename "${source%_bench.cpp}")"); done
names=()
for argument in "$@"; do
  case "$argument" in
    -h|--help)   help "$0"; exit ;;
    --windows)   preset=bench-win32 home=win32; continue ;;
    --windows64) preset=bench-win64 home=win64; continue ;;
    --publish)   scripts/setup.sh bench; exec /usr/bin/python3 scripts/bench_publish.py ;;
  esac
  [[ " ${known[*]} " == *" $argument "* ]] || { echo "bench.sh: there is no benchmark '$argument': ${known[*]}" >&2; exit 2; }
  names+=("$argument")
done
[ ${#names[@]} -gt 0 ] || names=("${known[@]}")

if [ "$home" = linux ]; then scripts/setup.sh bench; else scripts/setup.sh windows; fi
build=build/$preset
results=bench-results/$home
mkdir -p "$build" "$results"
cmake --preset "$preset" >/dev/null
follow "Building the benchmarks" "$build/build.log" cmake --build "$build" -j "$(nproc)" \
  || { tail -n 100 "$build/build.log"; exit 1; }

run=()
suffix=
if [ "$home" != linux ]; then
  run=(cmake/wine-run.sh)
  suffix=.exe
  KESTROLUMEN_WINEPREFIX=$PWD/$build/wineprefix cmake/wine-run.sh wineboot --init >/dev/null 2>&1 || true
fi
for name in "${names[@]}"; do
  program=$build/bench/${name}_bench$suffix
  # A benchmark can ask for what only one system has.
  [ -x "$program" ] || { echo "bench.sh: '$name' isn't built for this home" >&2; continue; }
  follow "Measuring $name" "$build/run.log" \
    "${run[@]}" "$program" --benchmark_repetitions="${REPETITIONS:-7}" --benchmark_min_time="${MIN_TIME:-0.1}" \
    --benchmark_enable_random_interleaving=true \
    --benchmark_out="$results/$name.json" --benchmark_out_format=json \
    || { tail -n 100 "$build/run.log"; exit 1; }
  scripts/bench_ratios.py "$results/$name.json"
done

case "$home" in
  linux) compiler=$(g++ --version | head -n 1) ;;
  win32) compiler="$(i686-w64-mingw32-g++-posix --version | head -n 1), $(wine --version)" ;;
  win64) compiler="$(x86_64-w64-mingw32-g++-posix --version | head -n 1), $(wine --version)" ;;
esac
scripts/bench_machine.py "$compiler" >"$results/machine.json"
