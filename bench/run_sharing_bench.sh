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
#   TIDEWICK_BENCH_RT        run them under the real-time FIFO policy at this priority
#                            (e.g. 50, as root): other processes then cannot take their CPUs
#                            while they run, though they still share the caches
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
printf 'tree\tname\tround\twall\tcpu\tfiles\tsize\twalk\n' >"$results"

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
    "${prefix[@]}" /usr/bin/time -f '%U %S' -o "$work/time" "${argv[@]}" >"$work/out" 2>"$work/err" || die "$2 failed: $(cat "$work/err")"
    t1=$(date +%s%N)
    printf '%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\n' "$1" "$2" "$3" "$(awk -v a="$t0" -v b="$t1" 'BEGIN { printf "%.3f", (b - a) / 1e9 }')" \
        "$(awk '{ printf "%.2f", $1 + $2 }' "$work/time")" \
        "$(sed -n 's/^files: //p' "$work/out")" "$(sed -n 's/^\(size\|bytes\): //p' "$work/out")" \
        "$(sed -n 's/^seconds: //p' "$work/out")" >>"$results"
}

prefix=(nice -n "${TIDEWICK_BENCH_NICE:-0}")
policy="ordinary scheduling"
if [[ -n ${TIDEWICK_BENCH_RT:-} ]]; then
    prefix=(chrt -f "$TIDEWICK_BENCH_RT")
    policy="real-time FIFO priority $TIDEWICK_BENCH_RT (\`chrt -f\`)"
fi
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

python3 - "$results" "$readme" "$load" "$runs" "$scale" "${tree_of[home]}.info" "${tree_of[skewed]}.info" "$policy" <<'PY'
import csv, statistics, sys
results, readme, load, runs, scale, home_info, skewed_info, policy = sys.argv[1:]
rows = [r for r in csv.DictReader(open(results), delimiter="\t") if r["round"] != "0"]
def entries(info):
    for line in open(info):
        if line.startswith("entries: "):
            return int(line.split()[1])
    return 0
med, spread, sizes, cpu, walk = {}, {}, {}, {}, {}
for r in rows:
    key = (r["tree"], r["name"])
    med.setdefault(key, []).append(float(r["wall"]))
    cpu.setdefault(key, []).append(float(r["cpu"]))
    walk.setdefault(key, []).append(float(r["walk"]))
    sizes.setdefault(key, set()).add(r["size"])
for key, walls in med.items():
    spread[key] = (min(walls), max(walls))
    med[key] = statistics.median(walls)
    walk[key] = statistics.median(walk[key])
out = []
w = out.append
w("<!-- scan-sharing:begin (written by bench/run_sharing_bench.sh; edits here are lost) -->")
w("### Work sharing: results")
w("")
w("%s measured runs of each command after one warm-up round, interleaved; warm cache; %d CPUs; "
  "load average when the run began %s; %s. Trees: `gen_tree.py --scale %s` "
  "(home-like, %d entries) and `gen_tree.py --scale %s --skewed` (%d entries, 85 %% of them in "
  "`Library`). *Wall* is the whole command, process start included; *walk* is the time the "
  "command itself reports for its walk (`seconds:`), which leaves out loading the program "
  "(about 10 ms more for tidewick-cli, which links Qt)." % (runs, __import__("os").cpu_count(), load, policy,
                                                           scale, entries(home_info), scale, entries(skewed_info)))
w("")
w("| Tree | Command | Wall s, median (min–max) | Walk s, median | ÷ bare walk, same threads (wall / walk) | CPU s (user+sys), median |")
w("|---|---|---:|---:|---:|---:|")
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
            bare = (tree, "bw-j" + name[-1])
            ratio = "%.2f / %.2f" % (med[(tree, name)] / med[bare], walk[(tree, name)] / walk[bare])
        lo, hi = spread[(tree, name)]
        w("| %s | %s | %.3f (%.3f–%.3f) | %.3f | %s | %.2f |" % (tree, label[name], med[(tree, name)], lo, hi,
                                                            walk[(tree, name)], ratio,
                                                            statistics.median(cpu[(tree, name)])))
w("")
w("| Ratio (wall / walk) | Measured | Target | |")
w("|---|---:|---:|---|")
def line(what, values, target, ok):
    w("| %s | %s | %s | %s |" % (what, " / ".join("%.2f" % v for v in values), target,
                                  "met" if all(ok(v) for v in values) else "**missed**"))
def both(a, b, f):
    return [f(med, a, b), f(walk, a, b)]
ratio = lambda table, a, b: table[a] / table[b]
for tree in ("home", "skewed"):
    speed = both((tree, "tw-w1"), (tree, "tw-w2"), ratio)
    if tree == "skewed":
        line("skewed: 1 worker ÷ 2 workers (speed-up)", speed, "≥ 1.7", lambda v: v >= 1.7)
    else:
        w("| home: 1 worker ÷ 2 workers (speed-up) | %s | | |" % " / ".join("%.2f" % v for v in speed))
    bare = both((tree, "bw-j1"), (tree, "bw-j2"), ratio)
    w("| %s: bare walk 1 thread ÷ 2 threads (speed-up) | %s | | |" % (tree, " / ".join("%.2f" % v for v in bare)))
    for n in ("1", "2"):
        r = both((tree, "tw-w" + n), (tree, "bw-j" + n), ratio)
        line("%s: tidewick %s worker%s ÷ bare walk" % (tree, n, "" if n == "1" else "s"), r, "≤ 1.15",
             lambda v: v <= 1.15)
    if (tree, "before-w2") in med:
        r = both((tree, "tw-w2"), (tree, "before-w2"), ratio)
        if tree == "home":
            line("home: 2 workers now ÷ before", r, "≤ 1.0 (no slower)", lambda v: v <= 1.0)
        else:
            w("| skewed: 2 workers now ÷ before | %s | | |" % " / ".join("%.2f" % v for v in r))
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
