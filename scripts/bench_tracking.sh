#!/bin/bash
# bench_tracking.sh [FOLDER]: prints every figure of docs/tracking.md beside its goal, and fails when
# one is missed. FOLDER has recordings NAME.bin with their truth NAME.csv; without it they are those
# of QLT_RECORDINGS or of ../shared/recordings.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
folder=$(realpath "${1:-${QLT_RECORDINGS:-$root/../shared/recordings}}")
cd "$root"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
{ cmake --preset linux && cmake --build --preset linux --target qlt_tracking_bench -j2; } >"$log" 2>&1 ||
    { cat "$log" >&2; exit 2; }
build/linux/bin/qlt_tracking_bench "$folder"
