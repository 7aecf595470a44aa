#!/bin/bash
# demo_openxr.sh: installs what is missing, builds the OpenXR runtime and runs hello_xr on it, a
# program of the OpenXR project. A headset script moves the head. The result is a picture of the
# panel, build/demo/openxr.png. The script needs neither a headset nor a screen.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build/demo
picture=$build/openxr.png

"$root/scripts/setup.sh" openxr
echo "demo_openxr.sh: building the OpenXR runtime and the command qlt in $build"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
{ cmake -S "$root" --preset linux -B "$build" -DQLT_BUILD_TESTS=OFF -DQLT_BUILD_BENCH=OFF \
    -DQLT_WERROR=OFF &&
    cmake --build "$build" --target qlt quelta_openxr -j "$(nproc)" &&
    g++ -shared -fPIC -o "$build/libvidmode.so" "$root/tests/openxr/Arch/Linux/VidMode.cpp"; } \
    >"$log" 2>&1 || { cat "$log" >&2; exit 1; }

# hello_xr needs an extension of the display that a display in memory does not have. It ends at the
# end of its input, so its input must stay open.
echo "\$ qlt openxr run --source scripts/headsets/conversation.json --png $picture hello_xr -g OpenGL"
xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" env "LD_PRELOAD=$build/libvidmode.so" \
    "$build/bin/qlt" openxr run --source "$root/scripts/headsets/conversation.json" \
    --png "$picture" --frames 120 hello_xr -g OpenGL < <(sleep 120 & echo $! >"$log"; wait)
kill "$(cat "$log")" 2>/dev/null || true
echo "demo_openxr.sh: the panel of the headset is in $picture"
