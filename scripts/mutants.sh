#!/bin/bash
# mutants.sh [--sample N] [--seed S] [--list] [--windows] [FILE...]: plants one-line faults in the
# FILEs. Without a FILE it takes the core, the kit, the command and the bindings. It works on a copy of
# the tree under build/mutants and plants one fault at a time. For each fault it builds and runs the
# tests that reach it. At the end it prints for each room how many faults the tests caught.
#
# --windows takes the Windows wings and runs their tests with Wine. --list prints the faults of the
# sample without planting them. scripts/mutants.py has the rules.
# If the file scripts/mutants_equivalent.txt exists, it lists the faults that change no behaviour, with
# reasons.
set -euo pipefail

exec python3 "$(dirname "$0")/mutants.py" "$@"
