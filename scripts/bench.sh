#!/usr/bin/env bash
# Runs the benchmarks and prints each one's ratio to its rivals, measured beside it in the same run.
#
#   scripts/bench.sh            all programs
#   scripts/bench.sh NAME...    some of them, such as: text bridge
#
# The raw numbers go to bench-results/NAME.json. Ratios are of the medians of several repetitions.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh bench
cmake --preset bench >/dev/null
cmake --build build/bench -j "$(nproc)" >build/bench/build.log 2>&1 || { tail -n 100 build/bench/build.log; exit 1; }
mkdir -p bench-results

names=("$@")
if [ ${#names[@]} -eq 0 ]; then
  for program in build/bench/bench/*_bench; do names+=("$(basename "${program%_bench}")"); done
fi
for name in "${names[@]}"; do
  program=build/bench/bench/${name}_bench
  [ -x "$program" ] || { echo "bench.sh: there is no benchmark named '$name'" >&2; exit 2; }
  echo "== $name" >&2
  "$program" --benchmark_repetitions="${REPETITIONS:-7}" --benchmark_min_time="${MIN_TIME:-0.1}" \
    --benchmark_enable_random_interleaving=true \
    --benchmark_out="bench-results/$name.json" --benchmark_out_format=json >/dev/null
  scripts/bench_ratios.py "bench-results/$name.json"
done
