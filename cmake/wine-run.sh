#!/usr/bin/env bash
# Runs a Windows program under Wine, in a prefix of the build's own: the folder of the build tree that
# holds the program, or KESTROLUMEN_WINEPREFIX.
set -euo pipefail
if [ -z "${KESTROLUMEN_WINEPREFIX:-}" ]; then
  folder=$(cd "$(dirname "$1")" && pwd)
  while [ "$folder" != / ] && [ ! -f "$folder/CMakeCache.txt" ]; do folder=$(dirname "$folder"); done
  [ "$folder" != / ] || { echo "wine-run.sh: '$1' lies in no build tree; set KESTROLUMEN_WINEPREFIX" >&2; exit 2; }
  KESTROLUMEN_WINEPREFIX=$folder/wineprefix
fi
export WINEARCH=win64 WINEPREFIX=$KESTROLUMEN_WINEPREFIX WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
exec wine "$@"
