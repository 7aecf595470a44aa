#!/bin/bash
# bench_tracking.sh [FOLDER]: prints every figure of docs/tracking.md beside its goal, and fails when a
# goal is missed. FOLDER has recordings NAME.bin with their truth NAME.csv. Without FOLDER the script
# takes the folder of the variable QLT_RECORDINGS, or else ../shared/recordings.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
folder=$(realpath "${1:-${QLT_RECORDINGS:-$root/../shared/recordings}}")
cd "$root"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
{ cmake --preset linux && cmake --build --preset linux --target qlt_tracking_bench -j2; } >"$log" 2>&1 ||
    { cat "$log" >&2; exit 2; }
build/linux/bin/qlt_tracking_bench "$folder"
