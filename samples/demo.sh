#!/usr/bin/env bash
# The main job on the bundled samples, in a scratch copy (the dispatch converts UNIX line ends in
# place): each input is recognised, the WLDGE extract is read completely into the table Kataster
# and written as .tsv and .fil, and a few columns of the result are shown; the NAS sample goes
# into its object database.
set -euo pipefail
flurix=${1:?Aufruf: demo.sh <pfad zu flurix>}
hier=$(cd "$(dirname "$0")" && pwd)
arbeit=$(mktemp -d)
trap 'rm -rf "$arbeit"' EXIT
cp "$hier"/musterkreis_format32.wldge "$hier"/musterstadt_nas.xml "$arbeit"/

echo "== flurix erkennen: Art und Leser jeder Eingabedatei"
"$flurix" erkennen "$arbeit"/musterkreis_format32.wldge "$arbeit"/musterstadt_nas.xml
echo
echo "== flurix import musterkreis_format32.wldge --komplett --out kataster.tsv"
"$flurix" import "$arbeit"/musterkreis_format32.wldge --komplett --out "$arbeit"/kataster.tsv 2>&1
"$flurix" import "$arbeit"/musterkreis_format32.wldge --komplett --out "$arbeit"/kataster.fil >/dev/null 2>&1
echo
echo "== Auszug aus kataster.tsv"
awk -F'\t' '
    NR == 1 { for (i = 1; i <= NF; i++) spalte[$i] = i; next }
    { printf "%-12s %-4s %-10s %-5s %-22s %-26s %s\n", $spalte["Gemarkung"], $spalte["Flur"],
             $spalte["Flurstück"], $spalte["Eigentümerposition"], $spalte["Name"],
             $spalte["Lagebezeichnung"], $spalte["Nutzung_tatsächlich"] }' "$arbeit"/kataster.tsv
echo
echo "== flurix import musterkreis_format32.wldge (schnell, alle Eigentümer in einer Zeile)"
"$flurix" import "$arbeit"/musterkreis_format32.wldge --alle-eigentuemer-in-einer-zeile --out "$arbeit"/schnell.tsv 2>&1
echo
echo "== flurix suchen kataster.tsv --spalte Name --begriff \"Dr. Mustermann, Max\""
"$flurix" suchen "$arbeit"/kataster.tsv --spalte Name --begriff "Dr. Mustermann, Max" --out "$arbeit"/treffer.tsv 2>&1
echo
echo "== flurix export kataster.tsv --format txt-tab / xlsx"
"$flurix" export "$arbeit"/kataster.tsv --format txt-tab --out "$arbeit"/kataster.txt >/dev/null 2>&1
"$flurix" export "$arbeit"/kataster.tsv --format xlsx --out "$arbeit"/kataster.xlsx >/dev/null 2>&1
ls -l "$arbeit"/kataster.txt "$arbeit"/kataster.xlsx | awk '{print $5, $NF}'
echo
echo "== flurix auszug kataster.tsv --zeile 3"
"$flurix" auszug "$arbeit"/kataster.tsv --zeile 3 --out "$arbeit"/auszug.pdf 2>&1
head -c 8 "$arbeit"/auszug.pdf; echo " ($(stat -c %s "$arbeit"/auszug.pdf) Byte)"
echo
echo "== flurix nas musterstadt_nas.xml --out nas.tsv --flaechen alle (NAS-Datei direkt in die Flurix-Tabelle, mit Nutzungsarten)"
"$flurix" nas "$arbeit"/musterstadt_nas.xml --out "$arbeit"/nas.tsv --flaechen alle 2>&1
echo
echo "== Auszug aus nas.tsv"
awk -F'\t' '
    NR == 1 { for (i = 1; i <= NF; i++) spalte[$i] = i; next }
    NR <= 16 { printf "%-12s %-4s %-10s %-4s %-22s %-30s %-26s %s\n", $spalte["Gemarkung"], $spalte["Flur"],
             $spalte["Flurstück"], $spalte["Eigentümerposition"], $spalte["Name"],
             $spalte["Straße"] ", " $spalte["Ort"], $spalte["Lagebezeichnung"], $spalte["Nutzungsart"] }' "$arbeit"/nas.tsv
echo "-- Protokoll (Auszug) $(basename "$arbeit")/musterstadt_nas.xml.prn:"
iconv -f WINDOWS-1252 -t UTF-8 "$arbeit"/musterstadt_nas.xml.prn | tr -d '\r' |
    grep -v "Zeile ALKIS\|Zeile Zuordnung\|, Index: " | sed -n 1,30p
echo
# The register extract of the first parcel with three owners.
fkz=$(awk -F'\t' 'NR == 1 { for (i = 1; i <= NF; i++) spalte[$i] = i; next }
                  $spalte["Eigentümerposition"] == "0003" { print $spalte["Flurstückskennzeichen"]; exit }' "$arbeit"/nas.tsv)
echo "== flurix auszug nas.tsv --fkz $fkz"
"$flurix" auszug "$arbeit"/nas.tsv --fkz "$fkz" --out "$arbeit"/nas_auszug.pdf 2>&1
head -c 8 "$arbeit"/nas_auszug.pdf; echo " ($(stat -c %s "$arbeit"/nas_auszug.pdf) Byte)"
if command -v pdftotext >/dev/null; then
    pdftotext -layout "$arbeit"/nas_auszug.pdf - 2>/dev/null | grep -v '^\s*$' | sed -n 1,40p
fi
