#!/bin/bash
# fetch_sources.sh: puts the sources of GLEW and GLFW into build/sources/glew and build/sources/glfw3.
# Debian has no Windows build of them. The script takes Debian's source packages and does not change
# the system's package lists. It prints nothing when the sources are already there.
set -euo pipefail

cd "$(dirname "$0")/.."
target=$PWD/build/sources
missing=()
[[ -f $target/glew/src/glew.c ]] || missing+=(glew)
[[ -f $target/glfw3/CMakeLists.txt ]] || missing+=(glfw3)
[[ ${#missing[@]} -gt 0 ]] || exit 0

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/lists/partial"
# Use the servers of the system's packages, and ask them for sources.
apt-get indextargets --format 'deb-src $(REPO_URI) $(CODENAME) main' 'Created-By: Packages' |
    grep -E '/debian/? ' | sort -u >"$work/sources.list"
apt=(apt-get -q -o Dir::Etc::SourceList="$work/sources.list" -o Dir::Etc::SourceParts=-
    -o Dir::State::Lists="$work/lists")
echo "fetch_sources.sh: fetching Debian's source packages ${missing[*]} into build/sources"
cd "$work"
{ "${apt[@]}" update && "${apt[@]}" source --download-only "${missing[@]}"; } >log 2>&1 </dev/null ||
    { tail -n 20 log >&2; echo "fetch_sources.sh: cannot fetch the sources" >&2; exit 1; }
for package in "${missing[@]}"; do
    mkdir -p "$target/$package"
    tar -xf "$package"_*.orig.tar.* -C "$target/$package" --strip-components=1
done
