#!/bin/bash
# wheel.sh PREFIX FOLDER: makes a wheel of the Python module in FOLDER, from an installation of the SDK. The
# wheel contains the libraries. It needs Python with setuptools and wheel, and no network.
set -euo pipefail

prefix=$1 folder=$2
source=$prefix/share/QueltaSDK/bindings/python
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$source/." "$work"
if [[ -e $prefix/bin/QueltaKit.dll ]]; then
    platform=win_amd64
    cp "$prefix"/bin/Quelta{SDK,Kit}.dll "$work/quelta"
else
    platform=linux_$(uname -m)
    cp -L "$prefix"/lib/libQuelta{SDK,Kit}.so "$work/quelta"
fi
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)
cd "$work"
"${PYTHON:-python3}" -c 'import setuptools; setuptools.setup()' -q bdist_wheel \
    --plat-name "$platform" --dist-dir "$folder"
