#!/usr/bin/env bash
# Runs velloran-bench, then prints the peak memory of reading the 10 MB
# property lists and times converting them against plistutil (libplist-utils,
# used here only as a yardstick).
# Usage: bench/run.sh BUILD_DIR [Google Benchmark arguments...]
set -euo pipefail
BUILD_DIR=${1:?usage: bench/run.sh BUILD_DIR [benchmark arguments]}
shift
BENCH="$BUILD_DIR/bench/velloran-bench"
RUNS=${RUNS:-5}

"$BENCH" "$@"

WORK=$(mktemp -d /tmp/velloran-bench.XXXXXX)
trap 'rm -rf "$WORK"' EXIT
echo
"$BENCH" --write-plist-files "$WORK"

echo
echo "Peak memory of reading:"
"$BENCH" --plist-read-memory "$WORK/composition.bplist"
"$BENCH" --plist-read-memory "$WORK/composition.xml"

# Mean wall time in seconds of RUNS runs, after one warm-up run.
mean_seconds() {
  "$@" >/dev/null
  local total=0 start end
  for _ in $(seq "$RUNS"); do
    start=$(date +%s.%N)
    "$@" >/dev/null
    end=$(date +%s.%N)
    total=$(awk -v t="$total" -v s="$start" -v e="$end" 'BEGIN { print t + e - s }')
  done
  awk -v t="$total" -v n="$RUNS" 'BEGIN { printf "%.3f", t / n }'
}

echo
if ! command -v plistutil >/dev/null; then
  echo "plistutil not found (apt-get install libplist-utils): no comparison"
  exit 0
fi
echo "Conversion wall time, whole process, mean of $RUNS runs (seconds):"
printf "%-16s %14s %10s\n" "conversion" "velloran-bench" "plistutil"
# Only across formats: plistutil copies a file that is already in the
# asked format.
for conversion in "bplist xml" "xml bin"; do
  read -r from to <<<"$conversion"
  ours_format=$([ "$to" = xml ] && echo xml || echo binary)
  ours=$(mean_seconds "$BENCH" --plist-convert "$WORK/composition.$from" "$WORK/ours.out" "$ours_format")
  theirs=$(mean_seconds plistutil -i "$WORK/composition.$from" -o "$WORK/theirs.out" -f "$to")
  printf "%-16s %14s %10s\n" "$from -> $to" "$ours" "$theirs"
done
