#!/usr/bin/env bash
# Work-sharing benchmark: tidewick-cli scan with 1 and 2 workers beside the
# bare walk at the same thread counts (which shares work the same way), on a
# home-like tree and on a skewed one where one first-level folder holds about
# 85 % of the entries. Optionally beside an earlier tidewick-cli.
#
#   bench/run_sharing_bench.sh [BUILD_DIR]
#
# Environment:
#   TIDEWICK_BENCH_SCALE     gen_tree.py --scale of both trees (default 0.4: about 410,000 entries)
#   TIDEWICK_BENCH_TREES     where the trees live (default /tmp); generated once, then reused
#   TIDEWICK_BENCH_RUNS      measured runs of each command (default 7)
#   TIDEWICK_BENCH_BASELINE  another tidewick-cli to measure beside (e.g. one built from an
#                            earlier commit), shown as "before"
#   TIDEWICK_BENCH_NICE      run the measured commands at this nice value (e.g. -15, as root)
#                            when other work shares the machine
#   TIDEWICK_BENCH_README    where the results go (default bench/README.md), between the
#                            scan-sharing markers
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
src=$(cd "$here/.." && pwd)
build=${1:-$src/build/dev}
scale=${TIDEWICK_BENCH_SCALE:-0.4}
trees=${TIDEWICK_BENCH_TREES:-/tmp}
runs=${TIDEWICK_BENCH_RUNS:-7}
baseline=${TIDEWICK_BENCH_BASELINE:-}
readme=${TIDEWICK_BENCH_README:-$here/README.md}

say() { printf '==> %s\n' "$*" >&2; }
die() { printf 'run_sharing_bench: %s\n' "$*" >&2; exit 1; }

cmake --build "$build" --target barewalk tidewick-cli >/dev/null || die "build failed in $build"
cli=$build/tools/tidewick-cli
barewalk=$build/bench/barewalk

declare -A tree_of=([home]="$trees/tidewick-sharing-home-$scale" [skewed]="$trees/tidewick-sharing-skewed-$scale")
for kind in home skewed; do
    tree=${tree_of[$kind]}
    if [[ ! -f $tree.info ]]; then
        [[ -e $tree ]] && die "$tree exists without $tree.info; remove it"
        say "generating the $kind tree in $tree"
        extra=()
        [[ $kind == skewed ]] && extra=(--skewed)
        python3 "$here/gen_tree.py" "$tree" --scale "$scale" "${extra[@]}" >"$tree.info"
    fi
done
sync

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
results=$work/results.tsv
printf 'tree\tname\tround\twall\tcpu\tfiles\tsize\n' >"$results"

names=(tw-w1 tw-w2 bw-j1 bw-j2)
[[ -n $baseline ]] && names+=(before-w1 before-w2)

run_one() { # kind name round
    local tree=${tree_of[$1]} argv t0 t1
    case $2 in
        tw-w*) argv=("$cli" scan "$tree" --workers "${2#tw-w}" --depth 0 --quiet) ;;
        before-w*) argv=("$baseline" scan "$tree" --workers "${2#before-w}" --depth 0 --quiet) ;;
        bw-j*) argv=("$barewalk" -j "${2#bw-j}" "$tree") ;;
    esac
    t0=$(date +%s%N)
    nice -n "${TIDEWICK_BENCH_NICE:-0}" /usr/bin/time -f '%U %S' -o "$work/time" "${argv[@]}" >"$work/out" 2>"$work/err" || die "$2 failed: $(cat "$work/err")"
    t1=$(date +%s%N)
    printf '%s\t%s\t%s\t%s\t%s\t%s\t%s\n' "$1" "$2" "$3" "$(awk -v a="$t0" -v b="$t1" 'BEGIN { printf "%.3f", (b - a) / 1e9 }')" \
        "$(awk '{ printf "%.2f", $1 + $2 }' "$work/time")" \
        "$(sed -n 's/^files: //p' "$work/out")" "$(sed -n 's/^\(size\|bytes\): //p' "$work/out")" >>"$results"
}

load=$(cut -d' ' -f1-3 /proc/loadavg)
count=${#names[@]}
for ((round = 0; round <= runs; round++)); do
    say "round $round of $runs (round 0 warms the cache)"
    for kind in home skewed; do
        for ((k = 0; k < count; k++)); do
            run_one "$kind" "${names[$(((k + round) % count))]}" "$round"
        done
    done
done
cp "$results" "$here/last_sharing_bench.tsv"

python3 - "$results" "$readme" "$load" "$runs" "$scale" "${tree_of[home]}.info" "${tree_of[skewed]}.info" <<'PY'
import csv, statistics, sys
results, readme, load, runs, scale, home_info, skewed_info = sys.argv[1:]
rows = [r for r in csv.DictReader(open(results), delimiter="\t") if r["round"] != "0"]
def entries(info):
    for line in open(info):
        if line.startswith("entries: "):
            return int(line.split()[1])
    return 0
med, spread, sizes, cpu = {}, {}, {}, {}
for r in rows:
    med.setdefault((r["tree"], r["name"]), []).append(float(r["wall"]))
    cpu.setdefault((r["tree"], r["name"]), []).append(float(r["cpu"]))
    sizes.setdefault((r["tree"], r["name"]), set()).add(r["size"])
for key, walls in med.items():
    spread[key] = (min(walls), max(walls))
    med[key] = statistics.median(walls)
out = []
w = out.append
w("<!-- scan-sharing:begin (written by bench/run_sharing_bench.sh; edits here are lost) -->")
w("### Work sharing: results")
w("")
w("%s measured runs of each command after one warm-up round, interleaved; warm cache; %d CPUs; "
  "load average when the run began %s (the machine is shared). Trees: `gen_tree.py --scale %s` "
  "(home-like, %d entries) and `gen_tree.py --scale %s --skewed` (%d entries, 85 %% of them in "
  "`Library`)." % (runs, __import__("os").cpu_count(), load, scale, entries(home_info), scale,
                   entries(skewed_info)))
w("")
w("| Tree | Command | Wall s, median (min–max) | ÷ bare walk, same threads | CPU s (user+sys), median |")
w("|---|---|---:|---:|---:|")
label = {"tw-w1": "`tidewick-cli scan TREE --workers 1`", "tw-w2": "`tidewick-cli scan TREE --workers 2`",
         "bw-j1": "`barewalk -j 1 TREE`", "bw-j2": "`barewalk -j 2 TREE` (work sharing)",
         "before-w1": "before: `tidewick-cli --workers 1` (first-level fan-out)",
         "before-w2": "before: `tidewick-cli --workers 2` (first-level fan-out)"}
for tree in ("home", "skewed"):
    for name in ("tw-w1", "tw-w2", "bw-j1", "bw-j2", "before-w1", "before-w2"):
        if (tree, name) not in med:
            continue
        ratio = ""
        if name[-1] in "12" and not name.startswith("bw"):
            ratio = "%.2f" % (med[(tree, name)] / med[(tree, "bw-j" + name[-1])])
        lo, hi = spread[(tree, name)]
        w("| %s | %s | %.3f (%.3f–%.3f) | %s | %.2f |" % (tree, label[name], med[(tree, name)], lo, hi, ratio,
                                                   statistics.median(cpu[(tree, name)])))
w("")
w("| Ratio | Measured | Target | |")
w("|---|---:|---:|---|")
def line(what, value, target, ok):
    w("| %s | %.2f | %s | %s |" % (what, value, target, "met" if ok else "**missed**"))
for tree in ("home", "skewed"):
    speed = med[(tree, "tw-w1")] / med[(tree, "tw-w2")]
    if tree == "skewed":
        line("skewed: 1 worker ÷ 2 workers (speed-up)", speed, "≥ 1.7", speed >= 1.7)
    else:
        w("| home: 1 worker ÷ 2 workers (speed-up) | %.2f | | |" % speed)
    bare = med[(tree, "bw-j1")] / med[(tree, "bw-j2")]
    w("| %s: bare walk 1 thread ÷ 2 threads (speed-up) | %.2f | | |" % (tree, bare))
    for n in ("1", "2"):
        r = med[(tree, "tw-w" + n)] / med[(tree, "bw-j" + n)]
        line("%s: tidewick %s worker%s ÷ bare walk" % (tree, n, "" if n == "1" else "s"), r, "≤ 1.15", r <= 1.15)
    if (tree, "before-w2") in med:
        r = med[(tree, "tw-w2")] / med[(tree, "before-w2")]
        if tree == "home":
            line("home: 2 workers now ÷ before", r, "≤ 1.0 (no slower)", r <= 1.0)
        else:
            w("| skewed: 2 workers now ÷ before | %.2f | | |" % r)
same = all(len(sizes[(t, n)]) == 1 for (t, n) in sizes if n.startswith("tw"))
w("")
w("Every tidewick run of a tree printed the same size: %s. Raw numbers: `bench/last_sharing_bench.tsv`." %
  ("yes" if same else "**no**"))
w("<!-- scan-sharing:end -->")
section = "\n".join(out) + "\n"
text = open(readme).read()
b, e = text.find("<!-- scan-sharing:begin"), text.find("<!-- scan-sharing:end -->")
if b >= 0 and e >= 0:
    text = text[:b] + section + text[e + len("<!-- scan-sharing:end -->\n"):]
else:
    marker = "## What a scan costs the GUI thread"
    at = text.find(marker)
    text = text[:at] + section + "\n" + text[at:] if at >= 0 else text + "\n" + section
open(readme, "w").write(text)
print(section)
PY
