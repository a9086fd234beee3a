#!/usr/bin/env bash
# walk.sh - the cost of a whole walk of a large store, in one run:
#   - the walk's wall time (every message's name, display name and text,
#     through the exports) against `cat` of all the message files;
#   - system calls per message (strace -c -f);
#   - the walk's peak resident set;
#   - the time per message with 1,000 and with 100,000 messages in one folder
#     (the small folder walked 100 times for each walk of the large one).
# Each time is the best of REPEAT runs, with the files in the page cache.
#
#   bench/walk.sh [MESSAGES [REPEAT]]      (default 100000 and 3)
# Environment: BUILD (default build-bench), WORK (default a new temporary folder).
set -euo pipefail
cd "$(dirname "$0")/.."
messages=${1:-100000}
repeat=${2:-3}
build=${BUILD:-build-bench}
work=${WORK:-$(mktemp -d "${TMPDIR:-/tmp}/tqnralm-bench.XXXXXX")}
mkdir -p "$work"
trap 'rm -rf "$work"/store "$work"/small "$work"/large' EXIT

command -v strace >/dev/null || { echo "walk.sh: strace is needed" >&2; exit 2; }
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTQNRALM_BENCH=ON >/dev/null
cmake --build "$build" -j"$(nproc)" --target samplestore walk_host TQNRALM sNqxMsgNet >/dev/null
gen=$build/bin/samplestore
host=$build/bin/walk_host

now() { date +%s.%N; }
calc() { awk "BEGIN { print $* }"; }
# The best wall time of the command in seconds, over $repeat runs.
best_of() {
  local best="" start end t
  for _ in $(seq "$repeat"); do
    start=$(now); "$@" >/dev/null; end=$(now)
    t=$(calc "$end - $start")
    if [ -z "$best" ] || [ "$(calc "$t < $best")" = 1 ]; then best=$t; fi
  done
  printf '%.3f' "$best"
}
# The least CPU time (user and system) of the command in seconds, over $repeat runs:
# steadier than wall time on a machine that others share.
cpu_of() {
  local best="" t TIMEFORMAT='%U %S'
  for _ in $(seq "$repeat"); do
    t=$( { time "$@" >/dev/null 2>&1; } 2>&1 | awk '{ print $1 + $2 }')
    if [ -z "$best" ] || [ "$(calc "$t < $best")" = 1 ]; then best=$t; fi
  done
  printf '%.3f' "$best"
}
# A field of the host's line: field NAME LINE.
field() { sed -n "s/.* $1=\([0-9.]*\).*/\1/p;s/^$1=\([0-9.]*\).*/\1/p" <<<"$2"; }
walk() { WINEPREFIX=$1 "$host"; }
# Microseconds per message in a folder's message list: the best of $repeat
# rounds, a round being walks of the prefix until 100,000 messages are read,
# so that the small folder and the large one meet the same machine load.
per_message_us() {
  local best="" sum line t
  for _ in $(seq "$repeat"); do
    sum=0
    for _ in $(seq $((100000 / $2))); do
      line=$(walk "$1"); sum=$(calc "$sum + $(field message_seconds "$line")")
    done
    t=$(calc "$sum * 1000000 / 100000")
    if [ -z "$best" ] || [ "$(calc "$t < $best")" = 1 ]; then best=$t; fi
  done
  echo "$best"
}

echo "store: $messages messages of about 2048 bytes in 10 folders ($work/store)"
"$gen" --generate "$work/store" --messages "$messages" --folders 10 >/dev/null
find "$work/store" -name '*.alm' -print0 >"$work/files"
xargs -0 -a "$work/files" cat >/dev/null  # into the page cache

cat_s=$(best_of xargs -0 -a "$work/files" cat)
walk_s=$(best_of walk "$work/store")
line=$(walk "$work/store")
[ "$(field failed "$line")" = 0 ] || { echo "walk.sh: the walk failed: $line" >&2; exit 1; }
printf 'cat of every message file: %s s; walk: %s s = %.2f x cat (goal <= 1.1)\n' \
  "$cat_s" "$walk_s" "$(calc "$walk_s / $cat_s")"
cat_cpu=$(cpu_of xargs -0 -a "$work/files" cat)
walk_cpu=$(cpu_of walk "$work/store")
printf 'CPU time (user + system): cat %s s; walk %s s = %.2f x cat\n' "$cat_cpu" "$walk_cpu" "$(calc "$walk_cpu / $cat_cpu")"
printf 'peak RSS of the walk: %.1f MiB (goal <= 64)\n' "$(calc "$(field peak_rss_kb "$line") / 1024")"

WINEPREFIX=$work/store strace -c -f -o "$work/strace" "$host" >/dev/null
# "% time, seconds, usecs/call, calls, [errors,] syscall": calls is the 4th column.
total=$(awk '$NF == "total" {print $4; exit}' "$work/strace")
per=$(awk -v n="$messages" '$1 ~ /^[0-9.]+$/ && $NF != "total" && $4 / n >= 0.01 {printf "%s %.2f, ", $NF, $4 / n}' "$work/strace")
printf 'system calls per message: %.2f (%s) (goal <= 4)\n' "$(calc "$total / $messages")" "${per%, }"

"$gen" --generate "$work/small" --messages 1000 --folders 1 >/dev/null
"$gen" --generate "$work/large" --messages 100000 --folders 1 >/dev/null
walk "$work/small" >/dev/null; walk "$work/large" >/dev/null
small=$(per_message_us "$work/small" 1000)
large=$(per_message_us "$work/large" 100000)
printf 'one folder: %.1f us per message at 1,000, %.1f us at 100,000 = %.2f x (goal <= 1.2)\n' \
  "$small" "$large" "$(calc "$large / $small")"
