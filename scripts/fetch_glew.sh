#!/bin/bash
# fetch_glew.sh: puts GLEW's sources, which Debian has no Windows build of, into build/sources/glew;
# from Debian's source package, without changing the system's package lists. Silent when they are
# there.
set -euo pipefail

cd "$(dirname "$0")/.."
target=$PWD/build/sources/glew
[[ ! -f $target/src/glew.c ]] || exit 0

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/lists/partial" "$target"
# The same places that the system's packages come from, asked for sources.
apt-get indextargets --format 'deb-src $(REPO_URI) $(CODENAME) main' 'Created-By: Packages' |
    grep -E '/debian/? ' | sort -u >"$work/sources.list"
apt=(apt-get -q -o Dir::Etc::SourceList="$work/sources.list" -o Dir::Etc::SourceParts=-
    -o Dir::State::Lists="$work/lists")
echo "fetch_glew.sh: fetching Debian's source package glew into build/sources"
cd "$work"
{ "${apt[@]}" update && "${apt[@]}" source --download-only glew; } >log 2>&1 </dev/null ||
    { tail -n 20 log >&2; echo "fetch_glew.sh: cannot fetch the sources of glew" >&2; exit 1; }
tar -xf glew_*.orig.tar.* -C "$target" --strip-components=1
