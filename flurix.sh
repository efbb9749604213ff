#!/usr/bin/env bash
# Set-up, build, tests and the demo of Flurix on Debian 12.
#   ./flurix.sh demo    installs what is missing, builds, and runs the main job on the bundled samples
#   ./flurix.sh test    installs what is missing, builds, and runs all tests
#   ./flurix.sh setup | build | bench
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
)

setup() {
    local fehlend=()
    for p in "${PAKETE[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || fehlend+=("$p")
    done
    if ((${#fehlend[@]})); then
        echo "Installiere: ${fehlend[*]}"
        local sudo=""
        [ "$(id -u)" -eq 0 ] || sudo="sudo"
        $sudo apt-get update -qq
        DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${fehlend[@]}"
    fi
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

demo() {
    bash "$QUELLEN/samples/demo.sh" "$BUILD/bin/flurix"
}

case "${1:-}" in
    setup) setup ;;
    build) setup; build ;;
    test) setup; build; tests ;;
    demo) setup; build; demo ;;
    bench) setup; build; bash "$QUELLEN/bench/laufen.sh" "$BUILD" ;;
    *) echo "Aufruf: $0 demo|test|setup|build|bench" >&2; exit 2 ;;
esac
