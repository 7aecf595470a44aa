#!/bin/bash
# test.sh [--soak] [SUITE...]: installs the missing packages, builds and tests. A suite is a preset
# (linux, linux-debug, linux-asan, linux-tsan, windows) or "house", which checks the rules of the tree:
# format, clang-tidy, room order, the reference and the share of the tests. Without a suite it runs all but
# linux-debug. --soak adds the long tests and the path analysis of clang-tidy, which takes longer than
# all its other checks.
#
# A suite that fails does not stop the next one. The last line has the sums over all suites.
set -euo pipefail

cd "$(dirname "$0")/.."
without=(-LE soak)
tidy_without=(-checks=-clang-analyzer-*)
if [[ ${1-} == --soak ]]; then
    without=()
    tidy_without=()
    shift
fi
if [[ ${1-} == -* ]]; then
    echo "usage: scripts/test.sh [--soak] [SUITE...]" >&2
    exit 2
fi
suites=("$@")
[[ $# -gt 0 ]] || suites=(linux house linux-asan linux-tsan windows)

passed=0
failed=0
skipped=0
summary=()

# count SUITE PASSED FAILED SKIPPED: adds the numbers to the sums and keeps the suite's line.
count()
{
    passed=$((passed + $2))
    failed=$((failed + $3))
    skipped=$((skipped + $4))
    summary+=("$(printf '%-11s %s' "$1" "$(result "$2" "$3" "$4"), $((SECONDS - start)) s")")
}

result()
{
    echo "$1 passed, $2 failed$([[ $3 -eq 0 ]] || echo ", $3 skipped")"
}

needs()
{
    case $1 in
    windows) echo windows ;;
    house) echo house ;;
    *) echo linux ;;
    esac
}

run_preset()
{
    local preset=$1 report=$PWD/build/$1/junit.xml around=() again=() ok=true
    # Most of the long tests wait for a time, so each core has two of them.
    local jobs=$((2 * $(nproc)))
    if ! cmake --preset "$preset" || ! cmake --build --preset "$preset" -j "$(nproc)"; then
        echo "test.sh: $preset does not build"
        count "$preset" 0 1 0
        return
    fi
    case $preset in
    windows)
        around=(scripts/with-wine.sh)
        # Sometimes Wine does not end a program whose tests have passed. Such a test runs again.
        again=(--repeat after-timeout:2)
        jobs=$(nproc) # all programs share one Wine server
        ;;
    # GCC 12's thread sanitizer does not support the wide address randomisation of newer kernels.
    linux-tsan) ! setarch -R true 2>/dev/null || around=(setarch -R) ;;
    esac
    rm -f "$report"
    # Most of the long tests only wait, so each core runs two tests.
    "${around[@]}" ctest --preset "$preset" -j "$((2 * $(nproc)))" "${without[@]}" "${again[@]}" \
        --no-tests=error --output-on-failure --output-junit "$report" || ok=false
    count_report "$preset" "$report" "$ok"
}

# count_report SUITE JUNIT CTEST_SUCCEEDED: counts a test that could not be started as failed. The report
# calls such a test "not run", as it calls a skipped one.
count_report()
{
    local all good away bad
    all=$(occurrences '<testcase ' "$2")
    good=$(occurrences '<testcase .* status="run"' "$2")
    away=$(occurrences '<skipped message="SKIP_|<testcase .* status="disabled"' "$2")
    bad=$((all - good - away))
    [[ $3 == true || $bad -gt 0 ]] || bad=1
    count "$1" "$good" "$bad" "$away"
    mapfile -t -O ${#summary[@]} summary < <(sed -nE \
        's/^\s*<testcase name="([^"]+)".* status="(fail|notrun|disabled)".*/    \2: \1/p' "$2" 2>/dev/null)
}

occurrences()
{
    grep -cE "^[[:space:]]*($1)" "$2" 2>/dev/null || true
}

run_house()
{
    local good=0 broken=() check
    for check in check_format check_tidy check_rooms check_docs check_share_of_tests; do
        if "$check"; then
            good=$((good + 1))
        else
            broken+=("    fail: $check")
        fi
    done
    count house "$good" ${#broken[@]} 0
    summary+=("${broken[@]}")
}

check_format()
{
    scripts/format.sh --check
}

check_rooms()
{
    python3 scripts/check_rooms.py
}

check_docs()
{
    scripts/docs.sh
}

check_share_of_tests()
{
    scripts/count_code.sh --check
}

# Checks the files that the Linux build compiles. Some of them include headers that the build makes. It
# leaves out the tests, because their long functions are lists of cases. -Wconversion also means signs for
# clang, but not for GCC, with which the tree is built.
check_tidy()
{
    local log=build/linux/clang-tidy.log
    { cmake --preset linux && cmake --build --preset linux -j "$(nproc)"; } >/dev/null || return 1
    run-clang-tidy -quiet -p build/linux -j "$(nproc)" "${tidy_without[@]}" \
        -extra-arg=-Wno-sign-conversion "^$PWD/(src|tools|bench)/" >"$log" 2>&1 ||
        { grep -E -A 3 '(warning|error):' "$log" || cat "$log"; return 1; }
}

for suite in "${suites[@]}"; do
    echo "=== $suite"
    start=$SECONDS
    if ! scripts/setup.sh "$(needs "$suite")"; then
        count "$suite" 0 1 0
    elif [[ $suite == house ]]; then
        run_house
    else
        run_preset "$suite"
    fi
done

echo
printf '%s\n' "${summary[@]}"
result "$passed" "$failed" "$skipped"
[[ $failed -eq 0 ]]
