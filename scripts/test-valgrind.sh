#!/usr/bin/env bash
# Runs every test case under valgrind memcheck, each in its own process as ctest runs them, and
# fails on any invalid access and on any definite or indirect leak. Blocks still reachable at
# exit (the store and the other process-wide singletons, which are never destroyed) are counted
# but allowed. Prints a summary line of the totals.
#
#   scripts/test-valgrind.sh [CTEST_REGEX]
#
# Uses the build directory of scripts/test.sh ($KORVA_BUILD_DIR, default build).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KORVA_BUILD_DIR:-$root/build}
jobs=${KORVA_JOBS:-2}
filter=()
if [ $# -gt 0 ]; then
    filter=(-R "$1")
fi

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKORVA_BUILD_TESTS=ON >/dev/null
cmake --build "$build" -j "$jobs"
rm -f "$build"/Testing/Temporary/MemoryChecker.*.log

options="--leak-check=full --show-leak-kinds=definite,indirect"
options+=" --errors-for-leak-kinds=definite,indirect --error-exitcode=1 --num-callers=40"
set +e
# Tests labelled valgrind already run valgrind themselves.
ctest --test-dir "$build" -T memcheck --output-on-failure -j "$jobs" -LE valgrind "${filter[@]}" \
    --overwrite "MemoryCheckCommand=$(command -v valgrind)" \
    --overwrite "MemoryCheckCommandOptions=$options"
status=$?
set -e

# Totals over the per-test logs.
awk '
    /ERROR SUMMARY:/ { errors += $4; runs++ }
    /definitely lost:/ { gsub(",", "", $4); definite += $4 }
    /indirectly lost:/ { gsub(",", "", $4); indirect += $4 }
    /still reachable:/ { gsub(",", "", $4); if ($4 + 0 > reachable) reachable = $4 + 0 }
    /Invalid (read|write)/ { invalid++ }
    END {
        printf "valgrind: %d processes, %d errors, %d invalid accesses, %d bytes definitely lost, " \
               "%d bytes indirectly lost, at most %d bytes still reachable at exit\n",
               runs, errors, invalid, definite, indirect, reachable
    }' "$build"/Testing/Temporary/MemoryChecker.*.log
exit $status
