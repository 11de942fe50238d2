#!/usr/bin/env bash
# Scan benchmark: tidewick-cli scan side by side with a bare C walk, du, gdu
# and ncdu's export, on one generated home-folder tree, in one run.
#
#   bench/run_scan_bench.sh [BUILD_DIR]
#
# BUILD_DIR (or TIDEWICK_BUILD_DIR): the CMake build to use; configured and
# built (RelWithDebInfo) if needed. Default: build/dev if it is an optimised
# build, otherwise build/bench, both under the source tree.
#
# Environment:
#   TIDEWICK_BENCH_TREE    where the tree lives (default /tmp/tidewick-bench-tree);
#                          generated once, reused while TREE.info matches
#   TIDEWICK_BENCH_SCALE   gen_tree.py --scale (default 1: about a million entries)
#   TIDEWICK_BENCH_SEED    gen_tree.py --seed (default 20240413)
#   TIDEWICK_BENCH_RUNS    measured runs of each command (default 5)
#   TIDEWICK_BENCH_README  where the results go (default bench/README.md);
#                          only the part between the scan-bench markers is rewritten
#
# Needs root only to install missing tools (gdu, ncdu, GNU time).
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
src=$(cd "$here/.." && pwd)
tree=${TIDEWICK_BENCH_TREE:-/tmp/tidewick-bench-tree}
scale=${TIDEWICK_BENCH_SCALE:-1}
seed=${TIDEWICK_BENCH_SEED:-20240413}
runs=${TIDEWICK_BENCH_RUNS:-5}
readme=${TIDEWICK_BENCH_README:-$here/README.md}

say() { printf '==> %s\n' "$*" >&2; }
die() { printf 'run_scan_bench: %s\n' "$*" >&2; exit 1; }

# --- tools -------------------------------------------------------------------

missing=()
command -v gdu >/dev/null || missing+=(gdu)
command -v ncdu >/dev/null || missing+=(ncdu)
[[ -x /usr/bin/time ]] || missing+=(time)
command -v python3 >/dev/null || missing+=(python3)
command -v cmake >/dev/null || missing+=(cmake)
command -v ninja >/dev/null || missing+=(ninja-build)
command -v cc >/dev/null || missing+=(gcc)
if ((${#missing[@]})); then
    [[ $(id -u) == 0 ]] || die "missing ${missing[*]}; install them or run as root"
    say "installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# --- build -------------------------------------------------------------------

build_type_of() { sed -n 's/^CMAKE_BUILD_TYPE:STRING=//p' "$1/CMakeCache.txt" 2>/dev/null; }

build=${1:-${TIDEWICK_BUILD_DIR:-}}
if [[ -z $build ]]; then
    case $(build_type_of "$src/build/dev") in
        RelWithDebInfo | Release) build=$src/build/dev ;;
        *) build=$src/build/bench ;;
    esac
fi
if [[ ! -f $build/CMakeCache.txt ]]; then
    say "configuring $build (RelWithDebInfo)"
    cmake -S "$src" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DTIDEWICK_BUILD_TESTS=OFF >/dev/null ||
        die "configure failed; install the project's dependencies as README.md says"
fi
case $(build_type_of "$build") in
    RelWithDebInfo | Release) ;;
    *) say "warning: $build is a $(build_type_of "$build") build; timings mean little" ;;
esac
say "building barewalk and tidewick-cli in $build"
cmake --build "$build" -j2 --target barewalk >/dev/null || die "barewalk did not build"
barewalk=$build/bench/barewalk
cli=$build/tools/tidewick-cli
have_cli=1
if ! cmake --build "$build" -j2 --target tidewick-cli >/dev/null 2>&1 || [[ ! -x $cli ]]; then
    say "warning: tidewick-cli did not build; its rows are left out"
    have_cli=0
fi

# --- tree --------------------------------------------------------------------

info=$tree.info
want="seed=$seed scale=$scale"
if [[ -f $info && $(head -n1 "$info") == "$want" && -d $tree ]]; then
    say "reusing the tree in $tree ($want)"
else
    if [[ -e $tree ]] && [[ -n $(ls -A "$tree" 2>/dev/null) ]]; then
        die "$tree exists and is not a tree made for $want; remove it or set TIDEWICK_BENCH_TREE"
    fi
    say "generating the tree in $tree ($want); this takes a few minutes at full scale"
    rm -f "$info"
    gen_out=$(python3 "$here/gen_tree.py" "$tree" --seed "$seed" --scale "$scale")
    { echo "$want"; echo "$gen_out"; } >"$info"
fi
# Dirty pages written back during a measured run would land on whichever
# command happened to be running.
sync

# --- commands ------------------------------------------------------------------

names=()
rule_workers=1
if ((have_cli)); then
    rule_workers=$("$cli" scan "$tree" --depth 0 --quiet | sed -n 's/^workers: //p')
    [[ $rule_workers =~ ^[0-9]+$ ]] || die "tidewick-cli printed no workers line"
    names+=(tidewick-w1 tidewick-rule tidewick-w2)
fi
names+=(barewalk-j1 barewalk-j2)
if ((rule_workers > 2)); then names+=("barewalk-j$rule_workers"); fi
names+=(du gdu ncdu-export)

argv_for() { # name: sets argv to that command on the tree
    case $1 in
        tidewick-w1) argv=("$cli" scan "$tree" --workers 1 --depth 0 --quiet) ;;
        tidewick-rule) argv=("$cli" scan "$tree" --depth 0 --quiet) ;;
        tidewick-w2) argv=("$cli" scan "$tree" --workers 2 --depth 0 --quiet) ;;
        barewalk-j*) argv=("$barewalk" -j "${1#barewalk-j}" "$tree") ;;
        du) argv=(du -sB1 "$tree") ;;
        gdu) argv=(gdu -n -s -p "$tree") ;;
        ncdu-export) argv=(ncdu -0 -x -o /dev/null "$tree") ;;
        *) die "unknown command $1" ;;
    esac
}

# --- runs --------------------------------------------------------------------

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
results=$work/results.tsv
printf 'name\tround\twall\tuser\tsys\tmaxrss_kb\tfiles\tnodes\tsize\ttree_bytes\tworkers\n' >"$results"

run_one() { # name round
    local name=$1 round=$2 t0 t1
    local -a argv
    argv_for "$name"
    t0=$(date +%s%N)
    /usr/bin/time -f '%U %S %M' -o "$work/time" "${argv[@]}" >"$work/out" 2>"$work/err" ||
        die "$name failed: $(cat "$work/err")"
    t1=$(date +%s%N)
    local user sys rss
    read -r user sys rss <"$work/time"
    local files='' nodes='' size='' tree_bytes='' workers=''
    if [[ $name == tidewick-* ]]; then
        files=$(sed -n 's/^files: //p' "$work/out")
        nodes=$(sed -n 's/^nodes: //p' "$work/out")
        size=$(sed -n 's/^size: //p' "$work/out")
        tree_bytes=$(sed -n 's/^tree_bytes: //p' "$work/out")
        workers=$(sed -n 's/^workers: //p' "$work/out")
    elif [[ $name == barewalk-* ]]; then
        files=$(sed -n 's/^files: //p' "$work/out")
        nodes=$(sed -n 's/^entries: //p' "$work/out")
        size=$(sed -n 's/^bytes: //p' "$work/out")
    elif [[ $name == du ]]; then
        size=$(cut -f1 "$work/out")
    fi
    printf '%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\n' "$name" "$round" \
        "$(awk -v a="$t0" -v b="$t1" 'BEGIN { printf "%.3f", (b - a) / 1e9 }')" \
        "$user" "$sys" "$rss" "$files" "$nodes" "$size" "$tree_bytes" "$workers" >>"$results"
}

load_at_start=$(cut -d' ' -f1-3 /proc/loadavg)
# What the process holds before any tree: Qt, the C++ runtime, the stacks.
baseline_kb=0
if ((have_cli)); then
    mkdir "$work/empty"
    /usr/bin/time -f '%M' -o "$work/time" "$cli" scan "$work/empty" --depth 0 --quiet >/dev/null
    baseline_kb=$(tail -n1 "$work/time")
fi

say "warming the cache (one unmeasured round)"
for name in "${names[@]}"; do
    run_one "$name" 0
done
# Each round starts one command further along, so that drift and position in
# the round hit every command alike.
count=${#names[@]}
for ((round = 1; round <= runs; round++)); do
    say "round $round of $runs"
    for ((k = 0; k < count; k++)); do
        run_one "${names[$(((k + round - 1) % count))]}" "$round"
    done
done
cp "$results" "$(dirname "$readme")/last_scan_bench.tsv"

# --- report ------------------------------------------------------------------

machine=$work/machine
{
    echo "cpus=$(nproc)"
    echo "cpu=$(lscpu | sed -n 's/^Model name: *//p' | head -n1)"
    echo "kernel=$(uname -sr)"
    echo "memory=$(awk '/MemTotal/ { printf "%.1f GiB", $2 / 1048576 }' /proc/meminfo)"
    dev=$(df --output=source "$tree" | tail -n1)
    fstype=$(df --output=fstype "$tree" | tail -n1)
    base=$(basename "$dev")
    rota=$(cat "/sys/class/block/$base/queue/rotational" 2>/dev/null || echo "?")
    size_h=$(lsblk -dno SIZE "$dev" 2>/dev/null | tr -d ' ' || true)
    echo "disk=$dev, $fstype, ${size_h:-size ?}, rotational=$rota (virtual disk)"
    echo "du=$(du --version | head -n1)"
    echo "gdu=$(gdu --version 2>/dev/null | sed -n 's/^Version:[[:space:]]*//p' | head -n1)"
    echo "ncdu=$(ncdu -v 2>&1 | head -n1)"
    echo "time=GNU time $(dpkg-query -W -f '${Version}' time 2>/dev/null || echo '?')"
    echo "build=$(build_type_of "$build")"
    echo "rule_workers=$rule_workers"
    echo "runs=$runs"
    echo "load=$load_at_start"
    echo "baseline_kb=$baseline_kb"
    echo "date=$(date -u +%Y-%m-%dT%H:%MZ)"
} >"$machine"

python3 - "$results" "$machine" "$info" "$readme" "$tree" <<'PY'
import csv
import statistics
import sys

results, machine_file, info_file, readme, tree = sys.argv[1:]
rows = [r for r in csv.DictReader(open(results), delimiter="\t") if r["round"] != "0"]
machine = dict(line.rstrip("\n").split("=", 1) for line in open(machine_file) if "=" in line)
info = open(info_file).read().splitlines()
gen = dict(l.split(": ", 1) for l in info[1:] if ": " in l)

order = []
for r in rows:
    if r["name"] not in order:
        order.append(r["name"])
med = {}
for name in order:
    rs = [r for r in rows if r["name"] == name]
    walls = [float(r["wall"]) for r in rs]
    med[name] = {
        "n": len(rs),
        "wall": statistics.median(walls),
        "min": min(walls),
        "max": max(walls),
        "cpu": statistics.median(float(r["user"]) + float(r["sys"]) for r in rs),
        "rss": statistics.median(int(r["maxrss_kb"]) * 1024 for r in rs),
        "last": rs[-1],
    }

# One count of the tree for every row: the bare walk's, which sees every name.
bw = med["barewalk-j1"]["last"]
entries = int(bw["nodes"])
files = int(bw["files"])
tw_rule = next((n for n in order if n == "tidewick-rule"), None)
rule_workers = int(machine["rule_workers"])

label = {
    "tidewick-w1": "`tidewick-cli scan TREE --workers 1 --depth 0 --quiet`",
    "tidewick-rule": "`tidewick-cli scan TREE --depth 0 --quiet` (rule: %d worker%s)"
    % (rule_workers, "" if rule_workers == 1 else "s"),
    "tidewick-w2": "`tidewick-cli scan TREE --workers 2 --depth 0 --quiet`",
    "barewalk-j1": "`barewalk -j 1 TREE`",
    "barewalk-j2": "`barewalk -j 2 TREE`",
    "du": "`du -sB1 TREE`",
    "gdu": "`gdu -n -s -p TREE`",
    "ncdu-export": "`ncdu -0 -x -o /dev/null TREE`",
}

out = []
w = out.append
w("<!-- scan-bench:begin (written by bench/run_scan_bench.sh; edits here are lost) -->")
w("## Results")
w("")
w("Run of %s, %d measured runs of each command after one unmeasured warm-up round, "
  "interleaved (each round starts one command further along). Warm cache." % (
      machine["date"], med["barewalk-j1"]["n"]))
w("")
w("Machine:")
w("")
w("- CPUs (`nproc`): %s; CPU: %s; memory: %s" % (machine["cpus"], machine["cpu"], machine["memory"]))
w("- Kernel: %s" % machine["kernel"])
w("- Disk: %s" % machine["disk"])
w("- Tools: %s; gdu %s; %s; %s" % (machine["du"], machine["gdu"], machine["ncdu"], machine["time"]))
w("- Tidewick build: %s" % machine["build"])
w("- Load average when the run began: %s (the machine is shared)" % machine["load"])
w("")
w("Tree: `python3 bench/gen_tree.py TREE --%s`: %s entries below the root (%s files, "
  "%s folders, %s symbolic links, of the files %s extra hard-link names), %s large and %s sparse "
  "files; generated in %s s. The bare walk counts %d entries with the root, %d of them files, "
  "%d allocated bytes in regular files." % (
      info[0].replace(" ", " --").replace("=", " "), gen.get("entries", "?"), gen.get("files", "?"),
      gen.get("dirs", "?"), gen.get("symlinks", "?"), gen.get("hardlinks", "?"),
      gen.get("large_files", "?"), gen.get("sparse_files", "?"), gen.get("seconds", "?"),
      entries, files, int(bw["size"])))
w("")
w("Medians (wall time min–max in brackets). Files per second and bytes per entry use the "
  "bare walk's counts for every row (%d files, %d entries); peak RSS is the whole process, "
  "from GNU time's %%M." % (files, entries))
w("")
w("| Command | Wall s | CPU s (user+sys) | Peak RSS MiB | Files/s | Bytes/entry |")
w("|---|---:|---:|---:|---:|---:|")
for name in order:
    m = med[name]
    w("| %s | %.2f (%.2f–%.2f) | %.2f | %.1f | %s | %.0f |" % (
        label.get(name, "`%s`" % name), m["wall"], m["min"], m["max"], m["cpu"], m["rss"] / 2**20,
        format(int(files / m["wall"]), ","), m["rss"] / entries))
w("")

def ratio_line(what, num, den, target, better):
    if num not in med or den not in med:
        return
    r = med[num]["wall"] / med[den]["wall"]
    ok = r <= target if better == "le" else r >= target
    w("| %s | %.2f | %s %.1f | %s |" % (what, r, "≤" if better == "le" else "≥", target,
                                       "met" if ok else "**missed**"))

if "tidewick-w1" in med:
    w("Targets:")
    w("")
    w("| Ratio | Measured | Target | |")
    w("|---|---:|---:|---|")
    rule_bw = "barewalk-j%d" % rule_workers if rule_workers > 1 else "barewalk-j1"
    ratio_line("tidewick (rule, %d) ÷ bare walk -j %d, wall" % (rule_workers, max(1, rule_workers)),
               "tidewick-rule", rule_bw, 1.2, "le")
    ratio_line("tidewick --workers 1 ÷ bare walk -j 1, wall", "tidewick-w1", "barewalk-j1", 1.2, "le")
    ratio_line("tidewick --workers 2 ÷ bare walk -j 2, wall", "tidewick-w2", "barewalk-j2", 1.2, "le")
    for other in ("du", "ncdu-export"):
        if other in med:
            r = med[other]["wall"] / med["tidewick-w2"]["wall"]
            w("| %s ÷ tidewick --workers 2, wall (speed-up) | %.2f | ≥ 1.6 | %s |" % (
                label[other], r, "met" if r >= 1.6 else "**missed**"))
    last = med["tidewick-w2"]["last"]
    nodes = int(last["nodes"])
    tree_bytes = int(last["tree_bytes"])
    per_node = tree_bytes / nodes
    w("| tidewick tree bytes ÷ nodes (`tree_bytes` / `nodes`) | %.1f | ≤ 64 | %s |" % (
        per_node, "met" if per_node <= 64 else "**missed**"))
    worst = max(med[n]["rss"] for n in order if n.startswith("tidewick-"))
    w("| tidewick peak RSS ÷ entries (whole process, worst of the three) | %.1f | ≤ 64 | %s |" % (
        worst / entries, "met" if worst / entries <= 64 else "**missed**"))
    base = int(machine["baseline_kb"]) * 1024
    w("| the same, less the %.1f MiB of a scan of an empty folder | %.1f | ≤ 64 | %s |" % (
        base / 2**20, (worst - base) / entries, "met" if (worst - base) / entries <= 64 else "**missed**"))
    w("")
    sizes = {n: med[n]["last"]["size"] for n in order if med[n]["last"]["size"]}
    w("Cross-checks: tidewick printed `nodes: %d`, `files: %s`, `tree_bytes: %d`, `size: %s`; "
      "the bare walk's bytes are %s (regular files, hard links once); `du -sB1` gives %s, "
      "which also charges the folders' own blocks and long symbolic links." % (
          nodes, last["files"], tree_bytes, last["size"], bw["size"], sizes.get("du", "?")))
else:
    w("tidewick-cli was not available in this run; only the reference tools were measured.")
w("")
w("Raw numbers of every run: `bench/last_scan_bench.tsv`.")
w("<!-- scan-bench:end -->")
section = "\n".join(out) + "\n"

try:
    text = open(readme).read()
except FileNotFoundError:
    text = ""
begin = text.find("<!-- scan-bench:begin")
end = text.find("<!-- scan-bench:end -->")
if begin >= 0 and end >= 0:
    text = text[:begin] + section + text[end + len("<!-- scan-bench:end -->\n"):]
else:
    text = text + ("\n" if text and not text.endswith("\n\n") else "") + section
open(readme, "w").write(text)
print(section)
PY
