#!/bin/bash
# demo.sh [RECORDING.bin [TRUTH.csv]]: installs what is missing, builds natively and shows the main
# job: replays sensor recordings through the headset's tracker, then two seconds of the simulator, and
# at last a picture of what the headset's panel shows, build/demo/view.png.
#
# Without an argument it takes every recording in ../shared/recordings, or else one of a software
# headset that it makes itself.
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
# A folder of its own, because the options stay in it.
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
