#!/usr/bin/env bash
# Runs the host suite (scripts/test.sh) once more from a second clone of this repository, placed
# where a user's checkout may well live: under a folder whose path is long (at least 150
# characters) and has spaces in it, reached through a symbolic link. A test or script that
# assumes a short path, one without blanks, or a resolved one fails here. The clone is made of
# the committed HEAD, inside a temporary folder that is removed afterwards.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

folder="$scratch/a checkout folder/with spaces in more than one name"
while [ ${#folder} -lt 150 ]; do
    folder="$folder/and one more level"
done
# The link stands inside the long folder, so that the path is long whether a tool resolves it or
# not.
mkdir -p "$folder/the real one"
ln -s "$folder/the real one" "$folder/the link"
clone="$folder/the link/spatializer param storage"
git clone --quiet --no-hardlinks "$root" "$clone"
echo "test-elsewhere.sh: running the host suite in a clone at \"$clone\" (${#clone} characters)"

cd "$clone"
KORVA_BUILD_DIR="$clone/build" scripts/test.sh
