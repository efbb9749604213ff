#!/usr/bin/env bash
# Runs every benchmark of bench/ once and prints its figures. Not part of the tests.
#   bench/laufen.sh <build folder>
# The sizes are the benchmarks' defaults; each benchmark says how to change them.
set -euo pipefail
build=${1:?Aufruf: laufen.sh <build-ordner>}
for programm in "$build"/bin/bench_*; do
    [ -x "$programm" ] || continue
    echo "== $(basename "$programm")"
    "$programm"
    echo
done
