#!/bin/bash
# with-wine.sh COMMAND...: runs COMMAND with an X display of its own and one live Wine server, ends
# both, and returns COMMAND's exit code. A Windows program then starts in 50 ms instead of a second.
#
# The display comes first and goes last: Wine keeps the one it was started with.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wineprefix}
wine=$root/scripts/wine-run.sh
server=/usr/lib/wine/wineserver64
display_pid=

end()
{
    "$server" -k || true # it fails when no server runs, which is what we want
    "$server" -w || true
    [[ -z $display_pid ]] || { kill "$display_pid" && wait "$display_pid"; } 2>/dev/null || true
    rm -f "$display_name"
}

start_display()
{
    Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$display_name" 2>/dev/null 9>&- &
    display_pid=$!
    local number
    until read -r number <"$display_name"; do
        kill -0 "$display_pid" 2>/dev/null || { echo "with-wine.sh: Xvfb did not start" >&2; exit 1; }
        sleep 0.05
    done
    export DISPLAY=:$number
    # Software rendering in the programs' own threads: at a program's end Wine stops its threads
    # wherever they are, and Mesa's would be waited for, now and then for good.
    export LP_NUM_THREADS=0 MESA_SHADER_CACHE_DISABLE=true
}

start_wine()
{
    [[ -f $WINEPREFIX/system.reg ]] || { "$wine" wineboot -i >/dev/null 2>&1 9>&-; "$server" -w; }
    "$server" -p 9>&-
    # Wine's services start here: under a test they would inherit its output pipe and hold it open,
    # and whoever reads the test's output to the end would wait for them.
    "$wine" cmd /c exit </dev/null >/dev/null 2>&1 9>&-
    export QLT_WITH_WINE=1
}

# Two commands at a time would end each other's server.
mkdir -p "$WINEPREFIX"
exec 9>"$WINEPREFIX.lock"
flock 9
display_name=$(mktemp)
trap end EXIT
{ "$server" -k || true; "$server" -w; } 2>/dev/null # what the build has left, without a display
start_display
start_wine
"$@" 9>&-
