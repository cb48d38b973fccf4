#!/usr/bin/env bash
# Makes the files that users download, twice, and looks at them as a user's machine would: scripts/test.sh package.
#
#   - both times they are the same to the byte
#   - the sums hold; the DLLs import Windows' own DLLs alone, say what they are hardened by, are stripped, and name no
#     folder of this machine
#   - what is in the zip calculates the iris sheet, in both widths, under Wine; what is in the tarball does on Linux
set -euo pipefail
cd "$(dirname "$0")/.."
failed=0
check() { if "${@:2}"; then echo "ok: $1"; else echo "FAILED: $1"; failed=$((failed + 1)); fi; }

scratch=build/package/test
rm -rf "$scratch"
scripts/package.sh "$scratch/first" >/dev/null
# Linked anew: the same objects in the same order have to give the same files.
find build/package/win32 build/package/win64 build/package/native \
  -type f \( -name '*.xll' -o -name 'excelhost*' -perm -u+x \) -delete
scripts/package.sh "$scratch/second" >/dev/null
check "both times the same to the byte" diff -r "$scratch/first" "$scratch/second"

python3 -m zipfile -e "$scratch"/first/*-windows.zip "$scratch/windows"
mkdir -p "$scratch/linux" && tar -C "$scratch/linux" -xzf "$scratch"/first/*-linux.tar.gz
windows=$(echo "$scratch"/windows/*) linux=$(echo "$scratch"/linux/*)
check "the sums of the two files" sh -c "cd '$scratch/first' && sha256sum --quiet -c SHA256SUMS"
check "the sums inside the zip" sh -c "cd '$windows' && sha256sum --quiet -c SHA256SUMS"

# A library of Windows' own, by its name; our own XLCALL32 lies beside the program.
system='ADVAPI32|KERNEL32|OLEAUT32|SHELL32|USER32|VERSION|msvcrt|ole32|XLCALL32'
has() { objdump -x "$1" | grep -cE "$2" >/dev/null; }
lacks() { ! grep -aqF "$2" "$1"; }
foreign() { ! objdump -p "$1" | sed -n 's/.*DLL Name: //p' | grep -vqiE "^($system)\.dll$"; }
stripped() { ! objdump -h "$1" | grep -q debug_ && objdump -t "$1" | grep -q 'no symbols'; }
for width in 32 64; do
  dll=$windows/$width-bit/kestrolumen.xll
  check "$width bits: imports Windows' own DLLs alone" foreign "$dll"
  check "$width bits: address space layout randomization" has "$dll" 'DYNAMIC_BASE'
  check "$width bits: no data that runs" has "$dll" 'NX_COMPAT'
  check "$width bits: stripped" stripped "$dll"
  check "$width bits: no folder of this machine" lacks "$dll" "$PWD"
done
check "32 bits: no handlers of structured exceptions" has "$windows/32-bit/kestrolumen.xll" 'NO_SEH'
check "64 bits: all of them for the layout" has "$windows/64-bit/kestrolumen.xll" 'HIGH_ENTROPY_VA'

export KESTROLUMEN_WINEPREFIX=$PWD/$scratch/wineprefix
calculates() { "${@:2}" run "$1/sheet.csv" 2>/dev/null | tr -d '\r' | cmp -s - "$1/calculated.csv"; }
for width in 32 64; do
  check "$width bits: the iris sheet under Wine" calculates "$windows/example" cmake/wine-run.sh "$windows/$width-bit/excelhost.exe"
done
check "the iris sheet on Linux" calculates examples/iris "$linux/bin/excelhost"
WINEPREFIX=$KESTROLUMEN_WINEPREFIX wineserver -k >/dev/null 2>&1 || true
stat -c '%s bytes: %n' "$windows"/*/kestrolumen.xll
exit $((failed > 0))
