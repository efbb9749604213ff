#!/usr/bin/env bash
# Set-up, build, tests and the demo of Flurix on Debian 12.
#   ./flurix.sh demo    installs what is missing, builds, and runs the main job on the bundled samples
#   ./flurix.sh test    installs what is missing, builds, and runs all tests
#   ./flurix.sh test --sanitize   the same with ASan and UBSan, in build-sanitize
#   ./flurix.sh setup | build | bench
#   ./flurix.sh fuzz [ziel] [sekunden]   builds the fuzz targets with clang (ASan+UBSan) into build-fuzz
#                                        and runs one or all, each until 1,000,000 inputs or the seconds
set -euo pipefail
cd "$(dirname "$0")"
QUELLEN=$PWD
BUILD=${FLURIX_BUILD:-$QUELLEN/build}

PAKETE=(
    build-essential cmake ninja-build ccache pkg-config
    libsqlite3-dev libzip-dev libxlsxwriter-dev libpugixml-dev libpolyclipping-dev
    googletest libgtest-dev libgmock-dev libbenchmark-dev
    qt6-base-dev qt6-translations-l10n libgl-dev xvfb xauth
    locales zip unzip xz-utils
    qpdf poppler-utils
    sqlite3 python3 gdal-bin libsqlite3-mod-spatialite python3-ezdxf
    libcurl4-openssl-dev proj-bin mapserver-bin cgi-mapserver
)

# Installs the Debian packages of the list that are missing.
installieren() {
    local fehlend=()
    for p in "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || fehlend+=("$p")
    done
    if ((${#fehlend[@]})); then
        echo "Installiere: ${fehlend[*]}"
        local sudo=""
        [ "$(id -u)" -eq 0 ] || sudo="sudo"
        $sudo apt-get update -qq
        DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${fehlend[@]}"
    fi
}

setup() {
    installieren "${PAKETE[@]}"
    # One test runs a batch job under a comma-decimal locale; make sure it exists.
    if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
        local sudo=""
        [ "$(id -u)" -eq 0 ] || sudo="sudo"
        $sudo localedef -i de_DE -f UTF-8 de_DE.UTF-8 || echo "Hinweis: Locale de_DE.UTF-8 nicht erzeugt"
    fi
}

build() {
    local werror=OFF
    [ "${CI:-}" = "true" ] && werror=ON
    local generator=()
    command -v ninja >/dev/null && generator=(-G Ninja)
    if [ ! -f "$BUILD/CMakeCache.txt" ]; then
        cmake -S "$QUELLEN" -B "$BUILD" "${generator[@]}" -DFLURIX_WERROR=$werror
    else
        cmake "$BUILD" -DFLURIX_WERROR=$werror >/dev/null
    fi
    cmake --build "$BUILD" -j"$(nproc)"
}

tests() {
    QT_QPA_PLATFORM=offscreen ctest --test-dir "$BUILD" --output-on-failure -j"$(nproc)"
}

# The whole suite built with AddressSanitizer and UndefinedBehaviorSanitizer, every report fatal:
# the run developers make before they stop (CI keeps the plain run for its time limit).
sanitize_build() {
    BUILD=${FLURIX_SANITIZE_BUILD:-$QUELLEN/build-sanitize}
    # -Wno-maybe-uninitialized: GCC warns falsely about the standard library under the sanitizers.
    local san="-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -Wno-maybe-uninitialized"
    if [ ! -f "$BUILD/CMakeCache.txt" ]; then
        local generator=()
        command -v ninja >/dev/null && generator=(-G Ninja)
        cmake -S "$QUELLEN" -B "$BUILD" "${generator[@]}" -DFLURIX_BENCH=OFF \
            "-DCMAKE_CXX_FLAGS=$san" "-DCMAKE_EXE_LINKER_FLAGS=-fsanitize=address,undefined"
    fi
    cmake --build "$BUILD" -j"$(nproc)"
    # allocator_may_return_null: a picture too large to allocate must come back as a null QImage (as
    # it does without the sanitizer), which the map reports; the sanitizer would abort instead.
    export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1:allocator_may_return_null=1}
    export LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$QUELLEN/tests/lsan_unterdrueckt.txt}
    export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
}

demo() {
    bash "$QUELLEN/samples/demo.sh" "$BUILD/bin/flurix"
}

# ---- Fuzzing: one libFuzzer program per reader of outside data (fuzz/ziele.hpp) ----
FUZZ_BUILD=${FLURIX_FUZZ_BUILD:-$QUELLEN/build-fuzz}
# The targets are the programs fuzz/fuzz_<ziel>.cpp.
mapfile -t FUZZ_ZIELE < <(cd "$QUELLEN/fuzz" && ls fuzz_*.cpp | sed 's/^fuzz_//; s/\.cpp$//')
GEMEINSAM=$QUELLEN/../shared/testdata

fuzz_bauen() {
    # libFuzzer comes with clang's runtime libraries.
    installieren clang libclang-rt-14-dev
    if [ ! -f "$FUZZ_BUILD/CMakeCache.txt" ]; then
        CC=clang CXX=clang++ cmake -S "$QUELLEN" -B "$FUZZ_BUILD" -G Ninja -DFLURIX_FUZZ=ON \
            -DCMAKE_BUILD_TYPE=RelWithDebInfo
    fi
    local ziele=()
    for z in "$@"; do ziele+=("fuzz_$z"); done
    cmake --build "$FUZZ_BUILD" -j"${FLURIX_JOBS:-$(nproc)}" --target "${ziele[@]}"
}

# The seed files of a target, one path a line: the samples and test fixtures of its kind, the small
# files of the shared test data (never the large RLP extract), and its own inputs of tests/daten/fuzz.
# A missing file or folder (the shared test data may be absent) is passed over.
fuzz_saatdateien() {
    local d=$QUELLEN/tests/daten
    case "$1" in
        wldge_komplett | wldge_schnell)
            ls "$QUELLEN"/samples/*.wldge "$d"/import/wldge_*faelle.txt 2>/dev/null || true ;;
        webxml) ls "$QUELLEN"/samples/musterstadt_webxml_auszug.xml "$d"/import/webxml_faelle.txt 2>/dev/null || true ;;
        nas_einlesen | objekt_schneider | nas_form)
            ls "$QUELLEN"/samples/musterstadt_*.xml "$d"/nas/*.xml "$GEMEINSAM"/state-wfs-nas/*.xml \
                "$GEMEINSAM"/nrw-wfs-nas/*.gml "$GEMEINSAM"/gdal-autotest-nas/*.xml 2>/dev/null || true ;;
        nba_leser) ls "$GEMEINSAM"/gdal-autotest-nas/*.xml 2>/dev/null || true ;;
        tabellendatei) ls "$d"/gui/*.fil "$d"/markierung/*.tsv "$d"/report/*.tsv "$QUELLEN"/config/*.fil 2>/dev/null || true ;;
        einstellungen) ls "$QUELLEN"/config/Flurix.dat 2>/dev/null || true ;;
        konfig_suche) ls "$QUELLEN"/config/ALKIS_EPSG.dat "$QUELLEN"/config/ALKIS_Amtsgerichte.dat "$d"/nas/konfig_*.dat 2>/dev/null || true ;;
        knoten) ls "$QUELLEN"/config/ALKIS_Knoten.dat 2>/dev/null || true ;;
        zuordnung) ls "$QUELLEN"/config/ALKIS_Zuordnung.dat "$d"/nas/zuordnung_befehle.txt 2>/dev/null || true ;;
        markierung) ls "$d"/markierung/*.lst 2>/dev/null || true ;;
        grafbat) ls "$d"/export/geograf/*.out 2>/dev/null || true ;;
    esac
    [ -d "$d/fuzz/$1" ] && find "$d/fuzz/$1" -type f
    return 0
}

# Fills the seed folder of a target anew. The element reader takes one feature: its seeds are the
# features cut from the NAS seeds.
fuzz_saat() {
    local ziel=$1 saat=$FUZZ_BUILD/saat/$1
    rm -rf "$saat"
    mkdir -p "$saat"
    if [ "$ziel" = element_leser ]; then
        fuzz_saatdateien nas_einlesen | python3 -c '
import re, sys, pathlib
ziel = pathlib.Path(sys.argv[1]); n = 0
for name in sys.stdin.read().split():
    text = pathlib.Path(name).read_bytes()
    for tag in (b"gml:featureMember", b"wfs:member"):
        for m in re.finditer(b"<" + tag + b">(.*?)</" + tag + b">", text, re.S):
            if n < 400:
                (ziel / ("merkmal_%03d" % n)).write_bytes(m.group(1)); n += 1
' "$saat"
        return
    fi
    local i=0
    while read -r datei; do
        [ -f "$datei" ] && cp "$datei" "$saat/$((i++))_$(basename "$datei")"
    done < <(fuzz_saatdateien "$ziel")
}

# Runs one target until 1,000,000 inputs or the seconds; prints inputs, time and result. A finding
# stays in build-fuzz/funde/<target>/; the return code is then 1.
fuzz_ziel() {
    local ziel=$1 sekunden=$2
    local korpus=$FUZZ_BUILD/korpus/$ziel funde=$FUZZ_BUILD/funde/$ziel log=$FUZZ_BUILD/funde/$ziel.log
    mkdir -p "$korpus" "$funde"
    fuzz_saat "$ziel"
    local laenge=16384 woerter=()
    case "$ziel" in
        nas_einlesen | objekt_schneider | nba_leser | webxml) laenge=65536 ;;
    esac
    case "$ziel" in
        nas_einlesen | objekt_schneider | element_leser | nas_form | nba_leser) woerter=(-dict="$QUELLEN/fuzz/nas.dict") ;;
        wldge_komplett | wldge_schnell) woerter=(-dict="$QUELLEN/fuzz/wldge.dict") ;;
        webxml | tabellendatei | grafbat | knoten | zuordnung) woerter=(-dict="$QUELLEN/fuzz/$ziel.dict") ;;
    esac
    local anfang=$SECONDS rc=0
    ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1} UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1} \
        "$FUZZ_BUILD/bin/fuzz_$ziel" -runs=1000000 -max_total_time="$sekunden" -max_len=$laenge \
        -timeout=30 -rss_limit_mb=4096 -print_final_stats=1 -artifact_prefix="$funde/" "${woerter[@]}" \
        "$korpus" "$FUZZ_BUILD/saat/$ziel" >"$log" 2>&1 || rc=$?
    local ausfuehrungen
    ausfuehrungen=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    local ergebnis="ohne Fund"
    if [ "$rc" -ne 0 ]; then
        ergebnis="FUND (Code $rc): $(ls "$funde" | tr '\n' ' ')- siehe $log"
    fi
    printf '%-18s %10s Eingaben %5d s  %s\n' "$ziel" "${ausfuehrungen:-?}" $((SECONDS - anfang)) "$ergebnis"
    return $((rc != 0))
}

fuzz() {
    local ziel=${1:-alle} sekunden=${2:-600}
    local ziele=("${FUZZ_ZIELE[@]}")
    if [ "$ziel" != alle ]; then
        [[ " ${FUZZ_ZIELE[*]} " == *" $ziel "* ]] || { echo "Unbekanntes Ziel: $ziel (Ziele: ${FUZZ_ZIELE[*]})" >&2; exit 2; }
        ziele=("$ziel")
    fi
    fuzz_bauen "${ziele[@]}"
    local fund=0
    for z in "${ziele[@]}"; do
        fuzz_ziel "$z" "$sekunden" || fund=1
    done
    return $fund
}

case "${1:-}" in
    setup) setup ;;
    build) setup; build ;;
    test)
        setup
        if [ "${2:-}" = --sanitize ]; then sanitize_build; else build; fi
        tests ;;
    demo) setup; build; demo ;;
    bench) setup; build; bash "$QUELLEN/bench/laufen.sh" "$BUILD" ;;
    fuzz) setup; fuzz "${@:2}" ;;
    *) echo "Aufruf: $0 demo|test [--sanitize]|setup|build|bench|fuzz [ziel] [sekunden]" >&2; exit 2 ;;
esac
