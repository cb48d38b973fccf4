#!/usr/bin/env bash
# Builds the add-in and the simulated Excel, calculates examples/iris/sheet.csv through them, and prints the result
# as a table: which iris is each flower, by its measurements.
#
#   scripts/demo.sh               on Linux
#   scripts/demo.sh --windows     the 32-bit Windows DLL, in a Windows program under Wine
#   scripts/demo.sh --all         all 150 flowers; without it the first five of each species
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/progress.sh

lane=native
setup=build
rows=()
for argument in "$@"; do
  case "$argument" in
    --windows) lane=win32; setup=windows ;;
    --all) rows=(--all) ;;
    -h|--help) help "$0"; exit ;;
    *) echo "demo.sh: '$argument' is none of: --windows, --all" >&2; exit 2 ;;
  esac
done

sheet=examples/iris/sheet.csv
expected=examples/iris/calculated.csv
result=build/$lane/demo.csv
log=build/$lane/demo.log

scripts/setup.sh "$setup"
mkdir -p "build/$lane"
step() { follow "$1" "$log" "${@:2}" || { tail -n 200 "$log" >&2; exit 1; }; }
step "Configuring $lane" cmake --preset "$lane"
step "Building the add-in and the simulated Excel" cmake --build "build/$lane" --target excelhost_program

program=(build/"$lane"/addin/excelhost)
if [ "$lane" = win32 ]; then program=(cmake/wine-run.sh build/win32/addin/excelhost.exe); fi
if [ "$lane" = win32 ]; then
  export KESTROLUMEN_WINEPREFIX=$PWD/build/win32/wineprefix
  follow "Making Wine's folders" "$log" cmake/wine-run.sh wineboot --init || true
fi
echo "Calculating $sheet ..." >&2
"${program[@]}" run "$sheet" --trace >"$result" 2>"$log" || { grep -v '^[0-9]* xl' "$log" >&2; exit 1; }
if [ "$lane" = win32 ]; then WINEPREFIX=$KESTROLUMEN_WINEPREFIX wineserver -k || true; fi

echo
python3 examples/iris/show.py ${rows[@]+"${rows[@]}"} "$result"
echo
echo "Calls of the add-in into Excel: $(grep -c '^[0-9]* xl' "$log"); $(sed -n 's/^account: //p' "$log")"
if cmp -s "$result" "$expected"; then
  echo "Every number is the same, to the last digit, as in $expected, which all builds share."
else
  echo "demo.sh: $result differs from $expected" >&2
  exit 1
fi
