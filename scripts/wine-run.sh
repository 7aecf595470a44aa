#!/bin/sh
# wine-run.sh PROGRAM [ARGUMENT...]: runs one Windows program of the build under Wine, in the build's
# own prefix and without Wine's messages. The tests use it as their emulator. with-wine.sh keeps one
# Wine server alive for many programs. Without with-wine.sh this script starts Wine's services first.
# Otherwise the services would inherit the output of the program and hold it open.
here=$(cd "$(dirname "$0")/.." && pwd)
: "${WINEPREFIX:=$here/build/wineprefix}"
: "${WINEDEBUG:=-all}"
: "${WINEDLLOVERRIDES:=mscoree=;mshtml=;winemenubuilder.exe=}"
export WINEPREFIX WINEDEBUG WINEDLLOVERRIDES
[ -n "$QLT_WITH_WINE" ] || /usr/lib/wine/wine64 cmd /c exit </dev/null >/dev/null 2>&1
exec /usr/lib/wine/wine64 "$@"
