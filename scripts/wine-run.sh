#!/bin/sh
# Runs one Windows program of the build under Wine, quietly, in the build's own prefix. The tests'
# emulator; with-wine.sh keeps a server alive around many of them. Without it Wine's services are
# started first: of a program they would inherit the output and hold it open.
here=$(cd "$(dirname "$0")/.." && pwd)
: "${WINEPREFIX:=$here/build/wineprefix}"
: "${WINEDEBUG:=-all}"
: "${WINEDLLOVERRIDES:=mscoree=;mshtml=;winemenubuilder.exe=}"
export WINEPREFIX WINEDEBUG WINEDLLOVERRIDES
[ -n "$QLT_WITH_WINE" ] || /usr/lib/wine/wine64 cmd /c exit </dev/null >/dev/null 2>&1
exec /usr/lib/wine/wine64 "$@"
