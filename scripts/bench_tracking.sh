#!/bin/bash
# bench_tracking.sh [FOLDER]: prints every figure of docs/tracking.md beside its goal, and fails when a
# goal is missed. FOLDER has recordings NAME.bin with their truth NAME.csv. Without FOLDER the script
# takes the folder of the variable QLT_RECORDINGS, or else ../shared/recordings. The last figures are
# those of the page of an hour; chromium draws it.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
folder=$(realpath "${1:-${QLT_RECORDINGS:-$root/../shared/recordings}}")
cd "$root"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
{ cmake --preset linux && cmake --build --preset linux --target qlt_tracking_bench qlt -j2; } \
    >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 2; }

# goal NAME FIGURE MOST UNIT
goal()
{
    local met=met
    [[ $2 -le $3 ]] || { met=MISSED; failed=1; }
    printf '  %-58s %8d  at most %7d %-9s %s\n' "$@" "$met"
}

failed=0
build/linux/bin/qlt_tracking_bench "$folder" || failed=$?
[[ $failed -ne 2 ]] || exit 2
printf '\nThe page of an hour\n'
build/linux/bin/qlt synthesize "$work/hour.bin" --truth "$work/hour.csv" --seconds 3600 >"$work/log"
build/linux/bin/qlt compare "$work/hour.bin" --truth "$work/hour.csv" --html "$work/hour.html" >"$work/log"
goal "size" "$(($(stat -c %s "$work/hour.html") / 1000))" 5000 kB
drawn=$(chromium --headless --no-sandbox --disable-gpu --user-data-dir="$work/browser" --dump-dom \
    --timeout=30000 "file://$work/hour.html" 2>"$work/log" | grep -o 'data-drawn-ms="[0-9]*"')
goal "drawn in" "$(tr -dc 0-9 <<<"$drawn")" 2000 ms
exit "$failed"
