#!/usr/bin/env bash
# Runs the benchmarks and prints each one's ratio to its rivals, measured beside it in the same run.
#
#   scripts/bench.sh            all programs
#   scripts/bench.sh NAME...    some of them, such as: text bridge
#
# The raw numbers go to bench-results/NAME.json. Ratios are of the medians of several repetitions: as many as
# REPETITIONS says (7), each of at least MIN_TIME seconds (0.1).
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/progress.sh

known=()
for source in bench/*_bench.cpp; do known+=("$(basename "${source%_bench.cpp}")"); done
names=()
for argument in "$@"; do
  case "$argument" in -h|--help) help "$0"; exit ;; esac
  [[ " ${known[*]} " == *" $argument "* ]] || { echo "bench.sh: there is no benchmark '$argument': ${known[*]}" >&2; exit 2; }
  names+=("$argument")
done
[ ${#names[@]} -gt 0 ] || names=("${known[@]}")

scripts/setup.sh bench
mkdir -p build/bench bench-results
cmake --preset bench >/dev/null
follow "Building the benchmarks" build/bench/build.log cmake --build build/bench -j "$(nproc)" \
  || { tail -n 100 build/bench/build.log; exit 1; }

for name in "${names[@]}"; do
  program=build/bench/bench/${name}_bench
  # A benchmark can ask for what only one system has.
  [ -x "$program" ] || { echo "bench.sh: '$name' isn't built on this system" >&2; continue; }
  follow "Measuring $name" build/bench/run.log \
    "$program" --benchmark_repetitions="${REPETITIONS:-7}" --benchmark_min_time="${MIN_TIME:-0.1}" \
    --benchmark_enable_random_interleaving=true \
    --benchmark_out="bench-results/$name.json" --benchmark_out_format=json \
    || { tail -n 100 build/bench/run.log; exit 1; }
  scripts/bench_ratios.py "bench-results/$name.json"
done
