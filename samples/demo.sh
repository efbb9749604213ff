#!/usr/bin/env bash
# The main job of this version on the bundled samples: each input is looked at and dispatched as
# "Datei öffnen" would, in a scratch copy (the dispatch converts UNIX line ends in place).
set -euo pipefail
flurix=${1:?Aufruf: demo.sh <pfad zu flurix>}
hier=$(cd "$(dirname "$0")" && pwd)
arbeit=$(mktemp -d)
trap 'rm -rf "$arbeit"' EXIT
cp "$hier"/musterkreis_format32.wldge "$hier"/musterstadt_bestandsdatenauszug.xml "$arbeit"/

echo "== flurix erkennen: Art und Leser jeder Eingabedatei"
"$flurix" erkennen "$arbeit"/musterkreis_format32.wldge "$arbeit"/musterstadt_bestandsdatenauszug.xml
echo
for datei in musterkreis_format32.wldge musterstadt_bestandsdatenauszug.xml; do
    echo "== flurix import $datei"
    "$flurix" import "$arbeit/$datei" 2>&1 && code=0 || code=$?
    echo "(Ende mit $code)"
done
