#!/bin/bash
# run.sh SDK OTHER SCRIPTED FOLDER compiles the package, its sample and Tests.cs into FOLDER. It runs the
# tests with the library SDK, without a library, with a file that is no library, with the wrong library
# OTHER, and with SCRIPTED. SCRIPTED has a headset and finds the host service OTHER beside it.
set -euo pipefail

package=$(cd "$(dirname "$0")/.." && pwd)
sdk=$1 other=$2 scripted=$3 folder=$4

# tests LIBRARY ARGUMENT... runs the tests with LIBRARY as the installed library.
tests()
{
    local place=$folder/library
    rm -rf "$place"
    mkdir -p "$place"
    [[ -z $1 ]] || ln -s "$1" "$place/libQueltaSDK.so"
    [[ $1 != "$sdk" ]] || ln -s "$(dirname "$sdk")/libQueltaKit.so" "$place"
    [[ $1 != "$scripted" ]] || ln -s "$other" "$place/libvr_host_client_lib.so"
    LD_LIBRARY_PATH=$place mono "$folder/Tests.exe" "${@:2}"
}

mkdir -p "$folder"
# Unity 2019 understands C# 7.2 and nothing newer.
mcs -nologo -langversion:7.2 -warn:4 -warnaserror+ "-out:$folder/Tests.exe" "$package"/Runtime/*.cs \
    "$package"/Samples~/*/*.cs "$package"/tests/*.cs
headers=$package/../../include
tests "$sdk" "$headers/qlt/qlt_c_api.h" "$headers/qltkit/qltkit_c_api.h" "$folder"
tests "" refused is missing or cannot be loaded
tests "$package/package.json" refused is missing or cannot be loaded
tests "$other" refused is another library, or another version of it, and lacks the function qlt_
tests "$scripted" scripted
