#!/usr/bin/env bash
# Makes the files that users download, the same to the byte each time from the same commit.
#
#   scripts/package.sh [FOLDER]     into FOLDER, else build/package:
#     kestrolumen-VERSION-windows.zip     both add-ins, the companion's module, the simulated Excel, how to use them
#     kestrolumen-VERSION-linux.tar.gz    the layers as a CMake package, and the simulated Excel
#     SHA256SUMS                          of these two
#
# Times in the files are those of the commit, or of SOURCE_DATE_EPOCH.
set -euo pipefail
case "${1:-}" in
  -h|--help) sed -n '2,/^set /s/^# \{0,1\}//p' "$0"; exit ;;
  -*) echo "package.sh: '$1' is no folder" >&2; exit 2 ;;
esac
output=$(realpath -m "${1:-$(dirname "$0")/../build/package}")
cd "$(dirname "$0")/.."

export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
export LC_ALL=C.UTF-8 TZ=UTC
version=$(sed -n 's/^project(Kestrolumen VERSION \([0-9]*\.[0-9]*\.[0-9]*\).*/\1/p' CMakeLists.txt)
stage=build/package/stage
log=build/package/build.log

scripts/setup.sh package
mkdir -p build/package "$output"
rm -rf "$stage"
: >"$log"
quietly() { "$@" >>"$log" 2>&1 || { tail -n 50 "$log" >&2; exit 1; }; }

# build LANE: what is released of a lane, without tests, installed and stripped into the stage.
build() {
  local lane=$1
  echo "Building for $lane ..."
  quietly cmake --preset "$lane" -B "build/package/$lane" -DCMAKE_BUILD_TYPE=Release -DKESTROLUMEN_TESTS=OFF \
    -DKESTROLUMEN_EXCELHOST_OPTIONS= "${@:2}"
  quietly cmake --build "build/package/$lane" -j "$(nproc)"
  quietly cmake --install "build/package/$lane" --strip --prefix "$stage/$lane"
}
build native -DCMAKE_CXX_FLAGS=
build win32
build win64

echo "Packing ..."
windows=$stage/kestrolumen-$version-windows
for width in 32 64; do
  mkdir -p "$windows/$width-bit"
  cp "$stage/win$width"/bin/* "$windows/$width-bit/"
done
scripts/page.py --stamp "$windows"/*-bit/*
mkdir -p "$windows/example"
cp examples/iris/sheet.csv examples/iris/calculated.csv "$windows/example/"
cp examples/Kestrolumen.bas examples/kestrolumen.intellisense.xml CHANGELOG.md SECURITY.md "$windows/"
sed -i 's/$/\r/' "$windows/Kestrolumen.bas"
scripts/page.py docs/using-in-excel.md "$windows/using-in-excel.html"
(cd "$windows" && find . -type f ! -name SHA256SUMS -printf '%P\0' | sort -z | xargs -0 sha256sum >SHA256SUMS)

linux=$stage/kestrolumen-$version-linux
mv "$stage/native" "$linux"
cp CHANGELOG.md SECURITY.md "$linux/"

zip=$output/kestrolumen-$version-windows.zip
tar=$output/kestrolumen-$version-linux.tar.gz
scripts/page.py --zip "$windows" "$zip"
tar --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner --mode=go=rX,u+rw \
  -C "$stage" -c "$(basename "$linux")" | gzip -9n >"$tar"
(cd "$output" && sha256sum "$(basename "$zip")" "$(basename "$tar")" | tee SHA256SUMS)
