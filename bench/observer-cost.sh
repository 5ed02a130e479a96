#!/usr/bin/env bash
# What the load observer's hooks cost a load when nobody listens: the same store load built from
# a commit without the hooks (BASE) and from one with them (HEAD), on the same files.
#
#   bench/observer-cost.sh [--counts N] [--rounds N] [--with-10m] [BASE [HEAD]]
#
# BASE defaults to 653a2c8, the last commit before the hooks; HEAD to the checked-out commit. The
# hooks cannot be switched off inside one tree: besides the test of the listener count, they add
# work at their call sites that a switch would leave in place. So the two commits are built side
# by side in temporary worktrees, each in Release with the flags of bench/run, and
# bench/LoadOnce.cpp of this checkout is compiled against both. Prints, as Markdown:
#   - callgrind's instruction count of one load (after one untimed load) of the example and of a
#     generated 1 MB file (and 10 MB with --with-10m): the median of N runs per side (--counts,
#     default 3) with their range, and the instructions of the library's own code;
#   - medians of CPU and wall time of a load, BASE and HEAD run one after the other in each of N
#     rounds (--rounds, default 30, the first side alternating), and the median of the ratios
#     within a round, which a slow spell of the machine moves far less than the medians.
# Everything else that changed between the two commits counts too: compare the per-function
# lists (callgrind-*.txt) left in the work folder.
#
# KORVA_OBSERVER_COST_DIR chooses the work folder (default: build-observer-cost at the root).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
work=${KORVA_OBSERVER_COST_DIR:-$root/build-observer-cost}
rounds=30
counts=3
with10m=0
commits=()
while [ $# -gt 0 ]; do
    case "$1" in
        --rounds) rounds=$2; shift ;;
        --counts) counts=$2; shift ;;
        --with-10m) with10m=1 ;;
        -*) echo "bench/observer-cost.sh: unknown option $1" >&2; exit 2 ;;
        *) commits+=("$1") ;;
    esac
    shift
done
base=$(git -C "$root" rev-parse --short "${commits[0]:-653a2c8}")
head=$(git -C "$root" rev-parse --short "${commits[1]:-HEAD}")
command -v valgrind >/dev/null || { echo "bench/observer-cost.sh: needs valgrind" >&2; exit 2; }

mkdir -p "$work"
cleanup() {
    for side in base head; do
        if [ -d "$work/tree-$side" ]; then
            git -C "$root" worktree remove --force "$work/tree-$side"
        fi
    done
}
trap cleanup EXIT

# build SIDE COMMIT: the library of COMMIT in Release and korva-load-once against it.
# shellcheck source=bench/build-driver.sh
. "$root/bench/build-driver.sh"
build() {
    local side=$1 commit=$2
    git -C "$root" worktree add --detach "$work/tree-$side" "$commit" >/dev/null 2>&1
    echo "building $side ($commit) ..." >&2
    build_driver "$work/tree-$side" "$work/build-$side" "$root/bench/LoadOnce.cpp" \
        "$work/load-once-$side"
}
build base "$base"
build head "$head"

# The same files for both sides.
files=$work/files
mkdir -p "$files"
example=$(find "$root/examples" -maxdepth 1 -name '*.xml' | sort | head -n 1)
cp "$example" "$files/example.xml"
sizes=(1000000)
[ "$with10m" = 1 ] && sizes+=(10000000)
names=(example)
for size in "${sizes[@]}"; do
    name=$([ "$size" = 1000000 ] && echo 1M || echo 10M)
    "$work/build-head/bench/korva-gen-tuning" "$size" "$files/$name.xml" 1 >/dev/null
    names+=("$name")
done

# libxml2 seeds its name dictionary from the clock and the heap's state differs from run to run,
# so the instructions of libc's allocator (and a few of libxml2's) vary by a few percent between
# runs of one program; the library's own instructions do not. Each count is run several times.
echo "counting instructions ($counts runs per file and side) ..." >&2
for name in "${names[@]}"; do
    for run in $(seq "$counts"); do
        for side in base head; do
            out=$work/callgrind-$side-$name-$run.out
            valgrind --tool=callgrind --toggle-collect='*measuredLoad*' \
                --callgrind-out-file="$out" "$work/load-once-$side" "$files/$name.xml" \
                >/dev/null 2>"$work/callgrind-$side-$name-$run.log"
            callgrind_annotate --inclusive=no --threshold=100 "$out" >"${out%.out}.txt"
        done
    done
done

echo "timing $rounds rounds ..." >&2
declare -A loads=([example]=200 [1M]=30 [10M]=4)
declare -A samples
for round in $(seq "$rounds"); do
    for name in "${names[@]}"; do
        # Alternate which side goes first.
        order=(base head)
        [ $((round % 2)) = 0 ] && order=(head base)
        for side in "${order[@]}"; do
            samples[$side-$name]+="$("$work/load-once-$side" "$files/$name.xml" \
                "${loads[$name]}" 2>/dev/null) "
        done
    done
done

cpu=$(sed -n 's/^model name[[:space:]]*: //p' /proc/cpuinfo | head -n 1)
echo "Base $base, head $head; $(date -u +%Y-%m-%d); ${cpu:-unknown CPU}, $(nproc) cores," \
    "$(c++ --version | head -n 1); load average at the end $(cut -d' ' -f1-3 /proc/loadavg)."
echo
python3 - "$work" "$counts" "${names[@]}" <<'EOF'
import re, statistics, sys
work, counts, names = sys.argv[1], int(sys.argv[2]), sys.argv[3:]
def by_object(path):
    # Self instructions per shared object, from callgrind_annotate's function list.
    objects = {}
    for line in open(path):
        found = re.match(r"\s*([\d,]+)\s+\(.*\[(.*?)\]\s*$", line)
        if found:
            name = found.group(2).split("/")[-1].split(".so")[0]
            objects[name] = objects.get(name, 0) + int(found.group(1).replace(",", ""))
    return objects
def summary(path):
    for line in open(path):
        if line.startswith("summary:"):
            return int(line.split()[1])
    raise SystemExit(f"no summary in {path}")
print("| file | instructions base (min-max) | head (min-max) | head / base | library's own code base "
      "| head | own-code difference / base load |")
print("|---|---|---|---|---|---|---|")
for name in names:
    runs = {side: [by_object(f"{work}/callgrind-{side}-{name}-{run}.txt")
                   for run in range(1, counts + 1)] for side in ("base", "head")}
    total = {side: [summary(f"{work}/callgrind-{side}-{name}-{run}.out")
                     for run in range(1, counts + 1)] for side in ("base", "head")}
    own = {side: statistics.median(r.get("libspatializerparamstorage", 0) for r in runs[side])
           for side in runs}
    b, h = statistics.median(total["base"]), statistics.median(total["head"])
    print(f"| {name} | {b:,.0f} ({min(total['base']):,}-{max(total['base']):,}) "
          f"| {h:,.0f} ({min(total['head']):,}-{max(total['head']):,}) | {h / b:.4f} "
          f"| {own['base']:,.0f} | {own['head']:,.0f} | {(own['head'] - own['base']) / b:+.2%} |")
EOF
echo
echo "| file | loads per run x rounds | CPU base | CPU head | head / base, per round: median (quartiles) | wall base | wall head | head / base, per round |"
echo "|---|---|---|---|---|---|---|---|"
for name in "${names[@]}"; do
    # Each run prints its medians "cpu wall". The two sides of a round ran one after the other,
    # so the ratio within a round is what cancels the machine's drift.
    python3 - "$name" "${loads[$name]}" "$rounds" "${samples[base-$name]}" \
        "${samples[head-$name]}" <<'EOF'
import statistics, sys
name, loads, rounds, base, head = sys.argv[1:]
base = [float(v) for v in base.split()]
head = [float(v) for v in head.split()]
cells = []
for column in (0, 1):
    b, h = base[column::2], head[column::2]
    ratios = [y / x for x, y in zip(b, h)]
    low, middle, high = statistics.quantiles(ratios, n=4)
    cells += [f"{statistics.median(b):.3f} ms", f"{statistics.median(h):.3f} ms",
              f"{statistics.median(ratios):.3f} ({low:.3f}-{high:.3f})"]
print(f"| {name} | {loads} x {rounds} | " + " | ".join(cells) + " |")
EOF
done
