#!/bin/bash
# with-wine.sh COMMAND...: runs COMMAND with its own X display and one live Wine server. It ends both
# and returns COMMAND's exit code. A Windows program then starts in 50 ms instead of a second.
#
# The display starts first and ends last, because Wine keeps the display that it was started with.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wineprefix}
wine=$root/scripts/wine-run.sh
server=/usr/lib/wine/wineserver64
display_pid=

end()
{
    "$server" -k || true # it fails when no server runs, and that is fine
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
    # Mesa renders in the program's own thread. At the end of a program Wine stops its threads wherever
    # they are, and a wait for one of Mesa's threads would then sometimes never end.
    export LP_NUM_THREADS=0 MESA_SHADER_CACHE_DISABLE=true
}

start_wine()
{
    [[ -f $WINEPREFIX/system.reg ]] || { "$wine" wineboot -i >/dev/null 2>&1 9>&-; "$server" -w; }
    "$server" -p 9>&-
    # Start Wine's services here. A service that a test starts inherits the output pipe of the test and
    # holds it open, so a reader of that output would wait for the service.
    "$wine" cmd /c exit </dev/null >/dev/null 2>&1 9>&-
    export QLT_WITH_WINE=1
}

# Only one command runs at a time. Two commands would end each other's server.
mkdir -p "$WINEPREFIX"
exec 9>"$WINEPREFIX.lock"
flock 9
display_name=$(mktemp)
trap end EXIT
# The build may have left a server without a display.
{ "$server" -k || true; "$server" -w; } 2>/dev/null
start_display
start_wine
"$@" 9>&-
