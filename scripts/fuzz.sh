#!/usr/bin/env bash
# Builds the libFuzzer targets (in the ASan+UBSan build directory of scripts/test-sanitizers.sh)
# and runs each for a given time, then prints the figures of the run as a Markdown table.
#
#   scripts/fuzz.sh [--time SECONDS] [--no-build] [TARGET...]
#   scripts/fuzz.sh --bad-inputs [--no-build]
#
# TARGET: fuzz_tuning_file, fuzz_blob, fuzz_user_gains, fuzz_lsp_server (default: all four, one
# after another).
# The corpus of each target grows in fuzz/corpus-work/<target> (not committed) and is reused by
# later runs; the seeds are rebuilt from the project's own files every run. Findings are written
# to fuzz/corpus-work/artifacts/<target>/. Exits non-zero when a target finds a crash, a leak, a
# timeout or an out-of-memory. --bad-inputs instead runs the hand-picked bad inputs (fuzz_bad_inputs)
# and prints the table of what the library did with each.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KORVA_ASAN_BUILD_DIR:-$root/build-asan}
jobs=${KORVA_JOBS:-2}
work=$root/fuzz/corpus-work
seconds=60
build_first=1
bad_inputs=0
targets=()

while [ $# -gt 0 ]; do
    case "$1" in
        --time) seconds=$2; shift 2 ;;
        --no-build) build_first=0; shift ;;
        --bad-inputs) bad_inputs=1; shift ;;
        fuzz_*) targets+=("$1"); shift ;;
        *) echo "fuzz.sh: unknown argument $1" >&2; exit 2 ;;
    esac
done
if [ ${#targets[@]} -eq 0 ]; then
    targets=(fuzz_tuning_file fuzz_blob fuzz_user_gains fuzz_lsp_server)
fi

if [ "$bad_inputs" = 1 ]; then
    targets=(fuzz_bad_inputs)
fi
if [ "$build_first" = 1 ]; then
    KORVA_ASAN_BUILD_DIR=$build "$root/scripts/test-sanitizers.sh" configure-asan
    cmake --build "$build" -j "$jobs" --target "${targets[@]}" fuzz_seed_dump
fi
if [ "$bad_inputs" = 1 ]; then
    exec "$build/fuzz/fuzz_bad_inputs" "$work/bad-inputs" "$root"/examples/kvx-default-spatializer.xml
fi

# Seeds: the tuning files of the tests and the example; blobs dumped from the store (built-in
# tables and the blobs the example turns into); user-gain texts of every shape the reader meets.
make_seeds() {
    local target=$1 dir=$2
    rm -rf "$dir"
    mkdir -p "$dir"
    case "$target" in
        fuzz_tuning_file)
            cp "$root"/tests/data/*.xml "$dir"/ 2>/dev/null || true
            cp "$root"/examples/*.xml "$dir"/ 2>/dev/null || true
            ;;
        fuzz_blob)
            "$build/fuzz/fuzz_seed_dump" "$dir" "$root"/examples/*.xml >/dev/null
            ;;
        fuzz_user_gains)
            # First byte: feature bit and product, then the property text.
            local i=0 mode text
            for text in "000" "0,0,0,0,0,0,0,0,0,0" "1,2,3,4,5,6,7,8,9,10" "-1.5 2.3,2.2 2.8 -0.1,1,2,3,4,5" \
                        "1 2,3, 4" "1,2,3,4,5,6,7,8,9" "1,2,3,4,5,6,7,8,9,10,11" "3e38,-3e38,1,1,1,1,1,1,1,1"; do
                for mode in '\x00' '\x01' '\x03' '\x05'; do
                    printf "$mode%s" "$text" >"$dir/seed-$i"
                    i=$((i + 1))
                done
            done
            ;;
        fuzz_lsp_server)
            find "$root/tests/data" -name '*.xml' -size -8k -print0 |
                xargs -0 python3 "$root/fuzz/lsp_seeds.py" "$dir"
            ;;
    esac
}

status=0
rows=()
for target in "${targets[@]}"; do
    corpus=$work/$target
    seeds=$work/seeds/$target
    artifacts=$work/artifacts/$target
    log=$work/logs/$target.log
    mkdir -p "$corpus" "$artifacts" "$(dirname "$log")"
    make_seeds "$target" "$seeds"
    dict=()
    case "$target" in
        fuzz_tuning_file) dict=(-dict="$root/fuzz/tuning.dict") ;;
        fuzz_lsp_server) dict=(-dict="$root/fuzz/lsp.dict") ;;
    esac
    found_before=$(find "$artifacts" -type f | wc -l)
    start=$(date +%s)
    set +e
    "$build/fuzz/$target" -max_total_time="$seconds" -print_final_stats=1 -timeout=20 \
        -rss_limit_mb=2560 -artifact_prefix="$artifacts/" "${dict[@]}" "$corpus" "$seeds" \
        >"$log" 2>&1
    result=$?
    set -e
    wall=$(( $(date +%s) - start ))
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    files=$(find "$corpus" -type f | wc -l)
    kib=$(du -sk "$corpus" | cut -f1)
    found=$(( $(find "$artifacts" -type f | wc -l) - found_before ))
    if [ "$result" -ne 0 ]; then
        status=1
        echo "fuzz.sh: $target stopped with status $result; see $log" >&2
        grep -E '^(SUMMARY|==[0-9]+==ERROR)' "$log" >&2 || true
    fi
    rows+=("| $target | $wall | ${executions:-?} | $(( ${executions:-0} / (wall > 0 ? wall : 1) )) | $files | $kib | $found |")
done

echo
echo "| target | wall time (s) | executions | executions/s | corpus files | corpus KiB | findings |"
echo "|---|---|---|---|---|---|---|"
printf '%s\n' "${rows[@]}"
exit $status
