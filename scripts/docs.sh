#!/bin/bash
# docs.sh: makes the reference of both interfaces under build/docs/html. A warning of doxygen makes the
# script fail.
set -euo pipefail

cd "$(dirname "$0")/.."
mkdir -p build/docs
doxygen docs/Doxyfile
echo "docs.sh: build/docs/html/index.html"
