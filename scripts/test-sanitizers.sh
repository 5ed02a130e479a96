#!/usr/bin/env bash
# Runs the test suite under AddressSanitizer + UndefinedBehaviorSanitizer, and the concurrency
# test under ThreadSanitizer. Any sanitizer report fails the run.
#
#   scripts/test-sanitizers.sh            both
#   scripts/test-sanitizers.sh asan       ASan+UBSan suite only
#   scripts/test-sanitizers.sh tsan       TSan concurrency test only
#   scripts/test-sanitizers.sh configure-asan   only configure the ASan+UBSan build directory
#
# Build directories: $KORVA_ASAN_BUILD_DIR (default build-asan, shared with scripts/fuzz.sh) and
# $KORVA_TSAN_BUILD_DIR (default build-tsan). KORVA_JOBS sets the parallelism (default 2).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
asan_build=${KORVA_ASAN_BUILD_DIR:-$root/build-asan}
tsan_build=${KORVA_TSAN_BUILD_DIR:-$root/build-tsan}
jobs=${KORVA_JOBS:-2}
what=${1:-all}

# Warnings are the gcc build's business (scripts/test.sh, -Werror): clang words some of them
# differently, and a sanitizer run must not stop on wording.
# The ASan build also carries the fuzz targets: their coverage instrumentation costs the tests
# little, and CI then builds the library once for both.
configure_asan() {
    CC=clang CXX=clang++ cmake -S "$root" -B "$asan_build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DKORVA_SANITIZE=address,undefined -DKORVA_BUILD_FUZZ=ON -DKORVA_BUILD_TESTS=ON \
        -DKORVA_WERROR=OFF >/dev/null
}

run_asan() {
    configure_asan
    cmake --build "$asan_build" -j "$jobs"
    ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:strict_string_checks=1:detect_stack_use_after_return=1 \
    UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
        ctest --test-dir "$asan_build" --output-on-failure -j "$jobs"
}

run_tsan() {
    CC=clang CXX=clang++ cmake -S "$root" -B "$tsan_build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DKORVA_SANITIZE=thread -DKORVA_BUILD_TESTS=ON -DKORVA_BUILD_TOOLS=OFF -DKORVA_WERROR=OFF \
        >/dev/null
    cmake --build "$tsan_build" -j "$jobs" --target concurrency_tests
    # No suppressions: the prebuilt AOSP libraries' locks go through pthread, which TSan sees.
    TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" \
        ctest --test-dir "$tsan_build" --output-on-failure -j "$jobs" -R '^Concurrency'
}

case "$what" in
    all) run_asan; run_tsan ;;
    asan) run_asan ;;
    tsan) run_tsan ;;
    configure-asan) configure_asan ;;
    *) echo "test-sanitizers.sh: unknown mode $what (all, asan, tsan, configure-asan)" >&2; exit 2 ;;
esac
