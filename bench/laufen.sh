#!/usr/bin/env bash
# Runs every benchmark of bench/ once and prints its figures. Not part of the tests.
#   bench/laufen.sh <build folder>
# The sizes are the benchmarks' defaults; each benchmark says how to change them.
# bench_nas (the NAS import at 100 and 500 MB beside GDAL's ogr2ogr, which alone takes minutes)
# gets its options from FLURIX_BENCH_NAS, e.g. FLURIX_BENCH_NAS="500 /tmp --gdal-bis 100".
set -euo pipefail
build=${1:?Aufruf: laufen.sh <build-ordner>}
for programm in "$build"/bin/bench_*; do
    [ -x "$programm" ] || continue
    echo "== $(basename "$programm")"
    case $(basename "$programm") in
        bench_nas) "$programm" ${FLURIX_BENCH_NAS:-} ;;
        *) "$programm" ;;
    esac
    echo
done
