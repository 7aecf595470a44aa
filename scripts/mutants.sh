#!/bin/bash
# mutants.sh [--sample N] [--seed S] [--list] [--windows] [FILE...]: plants one-line faults in FILEs, or in core,
# kit, command and bindings, one at a time in a copy of the tree under build/mutants. It builds and
# runs the tests that reach each fault, and prints per room how many faults the tests caught.
#
# --list prints the faults of the sample without planting them. scripts/mutants.py has the rules;
# scripts/mutants_equivalent.txt lists the faults that change no behaviour, each with its reason.
set -euo pipefail

exec python3 "$(dirname "$0")/mutants.py" "$@"
