#!/usr/bin/env bash
# Saved scans side by side with ncdu on one tree, in one run:
#   writing: tidewick-cli scan TREE --export F   vs  ncdu -0 -x -o F TREE
#   reading: tidewick-cli open F (its own, and ncdu's file)  vs  ncdu -0 -f F -o /dev/null
# and the tree's bytes per entry, opened vs live. Usage: bench/run_scanfile_bench.sh [BUILD_DIR]
# TIDEWICK_BENCH_TREE (default /tmp/tidewick-bench-tree, made by gen_tree.py
# --scale 1.08, about 1.1 million entries, when missing), TIDEWICK_BENCH_RUNS (default 5).
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-${TIDEWICK_BUILD_DIR:-$here/../build/dev}}
tree=${TIDEWICK_BENCH_TREE:-/tmp/tidewick-bench-tree}
runs=${TIDEWICK_BENCH_RUNS:-5}
cli=$build/tools/tidewick-cli
command -v ncdu >/dev/null && command -v /usr/bin/time >/dev/null || { echo "needs ncdu and GNU time (tools/setup-debian.sh, apt-get install time)" >&2; exit 1; }
cmake --build "$build" --target tidewick-cli >/dev/null
[ -d "$tree" ] || python3 "$here/gen_tree.py" "$tree" --scale 1.08
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
own=$work/own.json; theirs=$work/ncdu.json

declare -A label=(
  [write_tw]="tidewick-cli scan TREE --workers 1 --export FILE --quiet"
  [write_ncdu]="ncdu -0 -x -o FILE TREE"
  [read_tw]="tidewick-cli open OWN_FILE"
  [read_tw_ncdu]="tidewick-cli open NCDU_FILE"
  [read_ncdu]="ncdu -0 -f NCDU_FILE -o /dev/null"
)
run() {
  case $1 in
    write_tw) "$cli" scan "$tree" --workers 1 --export "$own" --quiet ;;
    write_ncdu) ncdu -0 -x -o "$theirs" "$tree" ;;
    read_tw) "$cli" open "$own" ;;
    read_tw_ncdu) "$cli" open "$theirs" ;;
    read_ncdu) ncdu -0 -f "$theirs" -o /dev/null ;;
  esac
}
order=(write_tw write_ncdu read_tw read_tw_ncdu read_ncdu)
sync
for c in "${order[@]}"; do run "$c" >/dev/null; done # warm-up, and the files to read
: > "$work/times"
for ((r = 0; r < runs; ++r)); do
  for ((i = 0; i < ${#order[@]}; ++i)); do
    c=${order[$(((i + r) % ${#order[@]}))]}
    start=$(date +%s%N)
    /usr/bin/time -f '%M' -o "$work/rss" bash -c "$(declare -f run); cli='$cli' tree='$tree' own='$own' theirs='$theirs'; run $c" >/dev/null
    end=$(date +%s%N)
    echo "$c $(((end - start) / 1000000)) $(cat "$work/rss")" >> "$work/times"
  done
done
median() { sort -n | awk '{a[NR]=$1} END {print (NR % 2) ? a[(NR + 1) / 2] : (a[NR / 2] + a[NR / 2 + 1]) / 2}'; }
entries=$("$cli" scan "$tree" --workers 1 --depth 0 --quiet | awk '/^nodes:/ {print $2}')
echo "Tree: $tree, $entries entries; own file $(stat -c %s "$own") bytes, ncdu's $(stat -c %s "$theirs") bytes; $runs runs, interleaved; load $(cut -d' ' -f1-3 /proc/loadavg)"
echo
echo "| Command | Wall s (median) | Peak RSS MiB (median) |"
echo "|---|---:|---:|"
for c in "${order[@]}"; do
  w=$(awk -v c="$c" '$1 == c {print $2}' "$work/times" | median)
  m=$(awk -v c="$c" '$1 == c {print $3}' "$work/times" | median)
  printf '| `%s` | %.3f | %.1f |\n' "${label[$c]}" "$(echo "$w / 1000" | bc -l)" "$(echo "$m / 1024" | bc -l)"
done
live=$("$cli" scan "$tree" --workers 1 --depth 0 --quiet | awk '/^tree_bytes:/ {t=$2} /^nodes:/ {n=$2} END {printf "%.1f", t / n}')
opened=$("$cli" open "$own" | awk '/^tree_bytes:/ {t=$2} /^nodes:/ {n=$2} END {printf "%.1f", t / n}')
echo
echo "Tree bytes per entry: live scan $live, opened saved scan $opened"
