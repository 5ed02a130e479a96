#!/usr/bin/env bash
# The main job: builds spatializer-paramtool and runs it on the bundled example tuning file. It
# writes the full visual report (build/report.html), says how to look at one blob, and ends on
# the check of what the library made of the file with the store's summary and port table. Needs
# what scripts/setup.sh installs. The build tree is build (or $KORVA_BUILD_DIR); cmake's output
# goes to a log in it, shown only when the build fails.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
build=${KORVA_BUILD_DIR:-build}
jobs=$(nproc)
mkdir -p "$build"
log=$build/run-build.log
example=examples/kvx-default-spatializer.xml

echo "== building spatializer-paramtool in $build (log: $log)"
start=$(date +%s)
if ! { cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKORVA_BUILD_TOOLS=ON &&
       cmake --build "$build" -j "$jobs" --target spatializer-paramtool; } >"$log" 2>&1; then
    tail -n 40 "$log"
    echo "run.sh: the build failed; the whole log is $log" >&2
    exit 1
fi
echo "   built in $(($(date +%s) - start)) s"
tool=$build/tools/spatializer-paramtool

echo
echo "== the full report: findings, ports, EQ curves, mix matrices, every blob with its sources"
"$tool" report "$example" -o "$build/report.html"
report=$(cd "$build" && pwd)/report.html
echo "   open it in a browser: file://${report// /%20}"
echo
echo "== one blob, entry by entry, with where each entry came from:"
echo "   $tool blobs --profile 0"
echo "   $tool blobs --device default_usb"
echo
echo "== one entry traced to its lines and rules:"
echo "   $tool explain $example dea --profile movie"
echo "   every command: $tool --help"
echo
echo "== $tool check $example"
"$tool" check "$example"
