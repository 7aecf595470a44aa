#!/bin/sh
# Runs one Windows program of the build under Wine, quietly, in the build's own prefix. The tests'
# emulator; with-wine.sh keeps a server alive around many of them.
here=$(cd "$(dirname "$0")/.." && pwd)
: "${WINEPREFIX:=$here/build/wineprefix}"
: "${WINEDEBUG:=-all}"
: "${WINEDLLOVERRIDES:=mscoree=;mshtml=;winemenubuilder.exe=}"
export WINEPREFIX WINEDEBUG WINEDLLOVERRIDES
exec /usr/lib/wine/wine64 "$@"
