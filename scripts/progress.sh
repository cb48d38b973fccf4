# For scripts to source: long steps say what they do and how far they are.
# shellcheck shell=bash

# follow TITLE LOG COMMAND...: runs the command with its output in LOG and gives its status. On a terminal one line
# shows how far it is; elsewhere a plain line tells the beginning, and further ones each half minute.
follow() {
  local title=$1 log=$2 status=0
  shift 2
  : >"$log"
  if [ -t 2 ]; then show_progress "$title" "$log" & else tell_progress "$title" "$log" & fi
  local watcher=$!
  "$@" >"$log" 2>&1 || status=$?
  kill "$watcher" 2>/dev/null || true
  wait "$watcher" 2>/dev/null || true
  if [ -t 2 ]; then printf '\r\033[K%s ... %s\n' "$title" "$([ $status -eq 0 ] && echo "done" || echo failed)" >&2; fi
  return $status
}

# "12/340", from what Ninja, ctest or apt-get has written so far.
progress_of() {
  local found
  found=$(tail -n 40 "$1" | sed -nE 's/^\[([0-9]+\/[0-9]+)\].*/\1/p; s/^ *([0-9]+\/[0-9]+) Test +#.*/\1/p' | tail -n 1)
  if [ -z "$found" ]; then
    local packages
    packages=$(sed -nE 's/^[0-9]+ upgraded, ([0-9]+) newly installed.*/\1/p' "$1" | tail -n 1)
    [ -z "$packages" ] || found="$(grep -c '^Setting up ' "$1")/$packages packages"
  fi
  echo "$found"
}

# Both end with the script that they watch for.
show_progress() {
  while kill -0 $$ 2>/dev/null; do
    printf '\r\033[K%s ... %s' "$1" "$(progress_of "$2")" >&2
    sleep 1
  done
}
tell_progress() {
  local told='' now seconds=0
  echo "$1 ..." >&2
  while kill -0 $$ 2>/dev/null; do
    sleep 1
    seconds=$((seconds + 1))
    [ $((seconds % 30)) -eq 0 ] || continue
    now=$(progress_of "$2")
    [ "$now" = "$told" ] || echo "$1 ... $now" >&2
    told=$now
  done
}

# help SCRIPT: the comment at its head.
help() { sed -n '2,/^[^#]/{s/^# \{0,1\}//p}' "$1"; }
