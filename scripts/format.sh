#!/bin/bash
# format.sh [--check]: formats every C and C++ file of the tree in place. With --check it changes no
# file. It then names the files that are not formatted, and fails if there is one.
set -euo pipefail

cd "$(dirname "$0")/.."
mode=(-i)
case ${1-} in
'') ;;
--check) mode=(--dry-run -Werror) ;;
*)
    echo "usage: scripts/format.sh [--check]" >&2
    exit 2
    ;;
esac
find . -path ./build -prune -o -type f \( -name '*.h' -o -name '*.c' -o -name '*.cpp' \) -print0 |
    xargs -0 clang-format --style=file "${mode[@]}"
