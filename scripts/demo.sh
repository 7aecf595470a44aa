#!/bin/bash
# demo.sh [RECORDING.bin [TRUTH.csv]]: installs the missing packages, builds the SDK natively and shows
# its main job. It replays sensor recordings through the headset's tracker and shows two seconds of the
# simulator. Then it draws the picture of the headset's panel, build/demo/view.png.
#
# Without an argument it replays every recording in ../shared/recordings. If there is none, a software
# headset makes one first.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build/demo
qlt=$build/bin/qlt

show()
{
    echo
    echo "\$ qlt $*"
    "$qlt" "$@"
}

if [[ $# -gt 2 ]]; then
    echo "usage: scripts/demo.sh [RECORDING.bin [TRUTH.csv]]" >&2
    exit 2
fi
for file in "$@"; do
    if [[ ! -f $file ]]; then
        echo "demo.sh: there is no file $file" >&2
        exit 1
    fi
done

"$root/scripts/setup.sh" demo
echo "demo.sh: building the library and the command qlt in $build"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# The demo has its own build folder, because CMake keeps the options there.
{ cmake -S "$root" --preset linux -B "$build" -DQLT_BUILD_TESTS=OFF -DQLT_BUILD_BENCH=OFF \
    -DQLT_WERROR=OFF &&
    cmake --build "$build" --target qlt -j "$(nproc)"; } >"$log" 2>&1 ||
    { cat "$log" >&2; exit 1; }

recordings=("$(dirname "$root")"/shared/recordings/*.bin)
if [[ $# -gt 0 ]]; then
    show replay "$1" ${2:+--truth "$2"}
elif [[ -f ${recordings[0]} ]]; then
    for recording in "${recordings[@]}"; do
        truth=${recording%.bin}.csv
        [[ -f $truth ]] || truth=
        show replay "$recording" ${truth:+--truth "$truth"}
    done
else
    show synthesize "$build/demo.bin" --truth "$build/demo.csv" --seconds 60
    show replay "$build/demo.bin" --truth "$build/demo.csv"
fi
show monitor --seconds 2
show view --png "$build/view.png"
