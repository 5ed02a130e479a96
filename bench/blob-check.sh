#!/usr/bin/env bash
# Whether two commits build the same blobs: the example and generated files of 100 KB, 1 MB and
# 10 MB are loaded by a Release build of each commit, and every blob the loader files (in filing
# order, with its fate) and every answer of the store afterwards are compared
# (bench/BlobDump.cpp, compiled from this checkout against both trees).
#
#   bench/blob-check.sh [--report-off] [BASE [HEAD]]
#
# BASE defaults to main, HEAD to the checked-out tree. --report-off builds HEAD without the load
# report, as the device library is built: its dump then holds the store's answers alone (every
# profile and tuning blob, gains and mix matrix), and those are what is compared.
#
# Prints a digest per file and side; exits 1 when any file differs. KORVA_BLOB_CHECK_DIR chooses
# the work folder (default: build-blob-check at the root).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
work=${KORVA_BLOB_CHECK_DIR:-$root/build-blob-check}
head_args=()
if [ "${1:-}" = --report-off ]; then
    head_args=(-DKORVA_LOAD_REPORT=OFF)
    shift
fi
base=$(git -C "$root" rev-parse --short "${1:-main}")
head=${2:-}
mkdir -p "$work"
cleanup() {
    if [ -d "$work/tree-base" ]; then git -C "$root" worktree remove --force "$work/tree-base"; fi
    if [ -d "$work/tree-head" ]; then git -C "$root" worktree remove --force "$work/tree-head"; fi
}
trap cleanup EXIT

# build SIDE TREE: the library of TREE in Release, and korva-blob-dump of this checkout against it.
# shellcheck source=bench/build-driver.sh
. "$root/bench/build-driver.sh"
build() {
    echo "building $1 ..." >&2
    local side=$1 tree=$2
    shift 2
    build_driver "$tree" "$work/build-$side" "$root/bench/BlobDump.cpp" "$work/blob-dump-$side" "$@"
}
git -C "$root" worktree add --detach "$work/tree-base" "$base" >/dev/null 2>&1
build base "$work/tree-base"
if [ -n "$head" ]; then
    git -C "$root" worktree add --detach "$work/tree-head" "$head" >/dev/null 2>&1
    build head "$work/tree-head" "${head_args[@]}"
else
    build head "$root" "${head_args[@]}"
fi

files=$work/files
mkdir -p "$files"
cp "$(find "$root/examples" -maxdepth 1 -name '*.xml' | sort | head -n 1)" "$files/example.xml"
for size in 100000 1000000 10000000; do
    "$work/build-base/bench/korva-gen-tuning" "$size" "$files/$size.xml" 1 >/dev/null
done
status=0
for file in "$files"/*.xml; do
    for side in base head; do
        out=$work/$side-$(basename "$file" .xml).txt
        "$work/blob-dump-$side" "$file" >"$out" 2>/dev/null
        if [ ${#head_args[@]} -gt 0 ]; then
            # Only a listener hears the blobs as they are filed.
            grep -vE '^(stored|dropped|replaced) |^end of load$' "$out" >"$out.answers" || true
            mv "$out.answers" "$out"
        fi
    done
    b=$(sha256sum <"$work/base-$(basename "$file" .xml).txt" | cut -c1-16)
    h=$(sha256sum <"$work/head-$(basename "$file" .xml).txt" | cut -c1-16)
    lines=$(wc -l <"$work/head-$(basename "$file" .xml).txt")
    verdict=same
    [ "$b" = "$h" ] || { verdict=DIFFERENT; status=1; }
    echo "$(basename "$file"): base $base $b, head ${head:-worktree} $h ($lines lines): $verdict"
done
exit $status
