#!/usr/bin/env bash
# Runs every case of a gtest binary under valgrind, one process per case (the store is made once
# per process), and fails on any memory error or on memory definitely or indirectly lost.
# Usage: valgrind-each.sh <valgrind> <test binary>
set -euo pipefail
valgrind=$1
binary=$2

cases=$("$binary" --gtest_list_tests | awk '
    /^[^ ]/ { suite = $1; next }
    /^  / { print suite $1 }')

failed=0
total=0
for name in $cases; do
    total=$((total + 1))
    log=$(mktemp)
    if "$valgrind" --quiet --leak-check=full --errors-for-leak-kinds=definite,indirect \
            --show-leak-kinds=definite,indirect \
            --error-exitcode=99 "$binary" --gtest_filter="$name" > "$log" 2>&1; then
        echo "ok      $name"
    else
        failed=$((failed + 1))
        echo "FAILED  $name"
        cat "$log"
    fi
    rm -f "$log"
done
echo "$((total - failed)) passed, $failed failed"
[ "$failed" -eq 0 ]
