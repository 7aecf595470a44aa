#!/bin/bash
# count_code.sh [--check]: prints how many lines of code and of tests the tree has, without blank
# lines, and the share of the tests. It leaves out prose, data and files of third parties. With --check
# it fails when the share is above 34 %.
set -euo pipefail

cd "$(dirname "$0")/.."

lines_of()
{
    git ls-files -z -- "$@" ':!*.md' ':!*.json' ':!*.supp' ':!*/uplot/*' | xargs -0 -r cat | grep -c '[^[:space:]]'
}

tests=$(lines_of 'tests/*' 'fuzz/*' 'bindings/*/tests/*')
product=$(lines_of 'include/*' 'src/*' 'tools/*' 'bindings/*' 'examples/*' 'bench/*' \
    ':!bindings/*/tests/*')
all=$((product + tests))
permille=$((1000 * tests / all))
echo "$all lines: $product of the product, $tests of tests, $((permille / 10)).$((permille % 10)) % tests"
[[ ${1-} != --check || $permille -le 340 ]] || { echo "count_code.sh: at most 34 %" >&2; exit 1; }
