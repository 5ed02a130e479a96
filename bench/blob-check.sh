#!/usr/bin/env bash
# Whether two commits build the same blobs: the example and generated files of 100 KB, 1 MB and
# 10 MB are loaded by a Release build of each commit, and every blob the loader files (in filing
# order, with its fate) and every answer of the store afterwards are compared
# (bench/BlobDump.cpp, compiled from this checkout against both trees).
#
#   bench/blob-check.sh [BASE [HEAD]]      BASE defaults to main, HEAD to the checked-out tree
#
# Prints a digest per file and side; exits 1 when any file differs. KORVA_BLOB_CHECK_DIR chooses
# the work folder (default: build-blob-check at the root).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
work=${KORVA_BLOB_CHECK_DIR:-$root/build-blob-check}
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
    build_driver "$2" "$work/build-$1" "$root/bench/BlobDump.cpp" "$work/blob-dump-$1"
}
git -C "$root" worktree add --detach "$work/tree-base" "$base" >/dev/null 2>&1
build base "$work/tree-base"
if [ -n "$head" ]; then
    git -C "$root" worktree add --detach "$work/tree-head" "$head" >/dev/null 2>&1
    build head "$work/tree-head"
else
    build head "$root"
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
        "$work/blob-dump-$side" "$file" >"$work/$side-$(basename "$file" .xml).txt" 2>/dev/null
    done
    b=$(sha256sum <"$work/base-$(basename "$file" .xml).txt" | cut -c1-16)
    h=$(sha256sum <"$work/head-$(basename "$file" .xml).txt" | cut -c1-16)
    lines=$(wc -l <"$work/head-$(basename "$file" .xml).txt")
    verdict=same
    [ "$b" = "$h" ] || { verdict=DIFFERENT; status=1; }
    echo "$(basename "$file"): base $base $b, head ${head:-worktree} $h ($lines lines): $verdict"
done
exit $status
