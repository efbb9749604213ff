#!/usr/bin/env python3
"""Writes ALKIS_Werteart.dat, the code-to-text table of the NAS import, from the ALKIS code lists.

    werteart_erzeugen.py [code-list CSV] [output file] [code-list CSV of GID 7.1]

The CSV is the list of the Wertearten of the AAA catalogue (GeoInfoDok 6.0), ";"-separated, UTF-8,
with the header "typ;uml_typ;wert;beschreibung;dokumentation" (typ is the name of the code list,
for instance AX_Anrede_Person). By default it is read from the shared test data beside the
repository and the output goes beside this script; the list of GeoInfoDok 7.1 is read from the
same folder ("alkis-wertearten-gid71.csv") unless a third argument names it.

Both versions of NAS compile to the same table: the texts are those of 6.0, and the codes that
only 7.1 knows follow with their 7.1 texts. 7.1 renamed and split some lists of the soil
assessment (kulturart became nutzungsart, zustandsstufeOderBodenstufe became zustandsstufe and
bodenstufe, entstehungsartOderKlimastufeWasserverhaeltnisse became entstehungsart, klimastufe and
wasserverhaeltnisse); the node file reads the new elements into the old columns, and the table
AUS_GID71 below gives their codes the old keys.

Each line of the output reads "<Objektart> = <Attribut> = <Code> = <Text>". The lines of one
"<Objektart> = <Attribut>" stand together, because the import collects them by that key. The file
is Windows-1252 with CR LF line ends, like every configuration file of the program.

Which code list gives which "<Objektart> = <Attribut>" is the table ZUORDNUNG below; a site that
needs a further attribute adds its code list there and runs the script again.
"""

import csv
import pathlib
import re
import sys

# (code list, Objektart, Attribut, form of the text)
#   "text": the description of the catalogue
#   "kurz": the abbreviation in the last parentheses of the description, as the soil assessment
#           writes it ("Anlehmiger Sand (Sl)" gives "Sl"); the description when there is none
ZUORDNUNG = [
    # register values that the import replaces in the tables after reading
    ("AX_Anrede_Person", "AX_Person", "anrede", "text"),
    ("AX_ArtDerRechtsgemeinschaft_Namensnummer", "AX_Namensnummer", "artDerRechtsgemeinschaft", "text"),
    ("AX_Eigentuemerart_Namensnummer", "AX_Namensnummer", "eigentuemerart", "text"),
    ("AX_Blattart_Buchungsblatt", "AX_Buchungsblatt", "blattart", "text"),
    ("AX_Buchungsart_Buchungsstelle", "AX_Buchungsstelle", "buchungsart", "text"),
    ("AX_ArtDerFestlegung_BauRaumOderBodenordnungsrecht", "AX_BauRaumOderBodenordnungsrecht",
     "artDerFestlegung", "text"),
    # soil assessment: the short notation of the Bodenschätzung
    ("AX_Kulturart_Bodenschaetzung", "AX_Bodenschaetzung", "kulturart", "kurz"),
    ("AX_Bodenart_Bodenschaetzung", "AX_Bodenschaetzung", "bodenart", "kurz"),
    ("AX_ZustandsstufeOderBodenstufe_Bodenschaetzung", "AX_Bodenschaetzung",
     "zustandsstufeOderBodenstufe", "kurz"),
    ("AX_EntstehungsartOderKlimastufeWasserverhaeltnisse_Bodenschaetzung", "AX_Bodenschaetzung",
     "entstehungsartOderKlimastufeWasserverhaeltnisse", "kurz"),
    ("AX_SonstigeAngaben_Bodenschaetzung", "AX_Bodenschaetzung", "sonstigeAngaben", "kurz"),
    # land use: the attributes the area computation reads (funktion, else vegetationsmerkmal)
    ("AX_Funktion_IndustrieUndGewerbeflaeche", "AX_IndustrieUndGewerbeflaeche", "funktion", "text"),
    ("AX_Funktion_FlaecheGemischterNutzung", "AX_FlaecheGemischterNutzung", "funktion", "text"),
    ("AX_Funktion_FlaecheBesondererFunktionalerPraegung", "AX_FlaecheBesondererFunktionalerPraegung",
     "funktion", "text"),
    ("AX_Funktion_SportFreizeitUndErholungsflaeche", "AX_SportFreizeitUndErholungsflaeche",
     "funktion", "text"),
    ("AX_Funktion_Friedhof", "AX_Friedhof", "funktion", "text"),
    # the code list of Straßenverkehr is named after the street
    ("AX_Funktion_Strasse", "AX_Strassenverkehr", "funktion", "text"),
    ("AX_Funktion_Weg", "AX_Weg", "funktion", "text"),
    ("AX_Funktion_Platz", "AX_Platz", "funktion", "text"),
    ("AX_Funktion_Bahnverkehr", "AX_Bahnverkehr", "funktion", "text"),
    ("AX_Funktion_Flugverkehr", "AX_Flugverkehr", "funktion", "text"),
    ("AX_Funktion_Schiffsverkehr", "AX_Schiffsverkehr", "funktion", "text"),
    ("AX_Vegetationsmerkmal_Landwirtschaft", "AX_Landwirtschaft", "vegetationsmerkmal", "text"),
    ("AX_Vegetationsmerkmal_Wald", "AX_Wald", "vegetationsmerkmal", "text"),
    ("AX_Funktion_Gehoelz", "AX_Gehoelz", "funktion", "text"),
    ("AX_Vegetationsmerkmal_Gehoelz", "AX_Gehoelz", "vegetationsmerkmal", "text"),
    ("AX_Funktion_UnlandVegetationsloseFlaeche", "AX_UnlandVegetationsloseFlaeche", "funktion", "text"),
    ("AX_Funktion_Fliessgewaesser", "AX_Fliessgewaesser", "funktion", "text"),
    ("AX_Funktion_Hafenbecken", "AX_Hafenbecken", "funktion", "text"),
    ("AX_Funktion_StehendesGewaesser", "AX_StehendesGewaesser", "funktion", "text"),
    ("AX_Funktion_Meer", "AX_Meer", "funktion", "text"),
]

# GeoInfoDok 7.1: code lists of renamed or split attributes and the column of 6.0 they fill.
# Their codes are those of the 6.0 list (7.1 added a few, which follow).
AUS_GID71 = [
    ("AX_Nutzungsart_Bodenschaetzung", "AX_Bodenschaetzung", "kulturart"),
    ("AX_Zustandsstufe", "AX_Bodenschaetzung", "zustandsstufeOderBodenstufe"),
    ("AX_Bodenstufe", "AX_Bodenschaetzung", "zustandsstufeOderBodenstufe"),
    ("AX_Entstehungsart", "AX_Bodenschaetzung", "entstehungsartOderKlimastufeWasserverhaeltnisse"),
    ("AX_Klimastufe", "AX_Bodenschaetzung", "entstehungsartOderKlimastufeWasserverhaeltnisse"),
    ("AX_Wasserverhaeltnisse", "AX_Bodenschaetzung", "entstehungsartOderKlimastufeWasserverhaeltnisse"),
]

KOPF = """\
***********************************************************************************************
* ALKIS_Werteart.dat - Texte zu den Schlüsselwerten (Wertearten) der NAS-Daten
*
* Form einer Zeile:  <Objektart> = <Attribut> = <Schlüssel> = <Text>
* Die Zeilen einer Objektart und eines Attributs stehen unmittelbar untereinander: der Import
* liest sie als Gruppe. Nach dem Einlesen ersetzt er in den Tabellen AX_Person (anrede),
* AX_Namensnummer (artDerRechtsgemeinschaft, eigentuemerart), AX_Buchungsblatt (blattart),
* AX_Buchungsstelle (buchungsart) und AX_BauRaumOderBodenordnungsrecht (artDerFestlegung) die
* Schlüssel durch die Texte. Die Flächenverschneidung nimmt die Kurzzeichen der Bodenschätzung
* (Bodenart 1200 ergibt Sl) und die Texte von funktion und vegetationsmerkmal der Nutzungsarten.
*
* Herkunft: die Wertearten des AAA-Katalogs der AdV (GeoInfoDok 6.0), dahinter je Attribut die
* Schlüssel, die erst GeoInfoDok 7.1 kennt, mit ihren Texten aus 7.1. Erzeugt mit
* werteart_erzeugen.py aus den Listen der Wertearten; die Zuordnung von Werteart zu Objektart und
* Attribut steht in dem Skript.
*
* Erweitern: die Werteart in die Tabelle ZUORDNUNG des Skripts aufnehmen und das Skript erneut
* ausführen, oder Zeilen von Hand anfügen, dann direkt bei den anderen Zeilen derselben
* Objektart und desselben Attributs. Ein Text darf weder ";" noch "=" noch Anführungszeichen
* enthalten.
***********************************************************************************************
"""


def Kurzform(beschreibung):
    """The abbreviation in the last parentheses ("Sand auf Lehm (S/L)" gives "S/L"), quotes
    removed; the description itself when it does not end with parentheses."""
    text = beschreibung.strip()
    if not text.endswith(")"):
        return text
    tiefe = 0
    for i in range(len(text) - 1, -1, -1):
        if text[i] == ")":
            tiefe += 1
        elif text[i] == "(":
            tiefe -= 1
            if tiefe == 0:
                inhalt = text[i + 1:-1].replace('"', "").strip()
                return inhalt if inhalt else text
    return text


def Säubern(text):
    """One line of text that the lookups and the SQL of the import can carry: no line breaks,
    no ";" (list separator), no "=" (column separator), no double quotes (string delimiter)."""
    text = re.sub(r"\s+", " ", text).strip()
    return text.replace(";", ",").replace("=", "-").replace('"', "'")


def Pfade(argv, zielname):
    """The code-list CSVs of 6.0 and 7.1 and the output file from the command line, or their
    defaults: the shared test data beside the repository and `zielname` beside this script."""
    hier = pathlib.Path(__file__).resolve().parent
    csv_pfad = pathlib.Path(argv[1]) if len(argv) > 1 else \
        hier.parent.parent / "shared" / "testdata" / "alkis-codelists" / "alkis-wertearten-gid6.csv"
    ziel = pathlib.Path(argv[2]) if len(argv) > 2 else hier / zielname
    csv71 = pathlib.Path(argv[3]) if len(argv) > 3 else csv_pfad.parent / "alkis-wertearten-gid71.csv"
    return csv_pfad, csv71, ziel


def Wertelisten(csv_pfad):
    """The code lists of the CSV: list name -> [(code, description), ...] in file order."""
    listen = {}
    with open(csv_pfad, encoding="utf-8", newline="") as f:
        for zeile in csv.DictReader(f, delimiter=";"):
            listen.setdefault(zeile["typ"], []).append((zeile["wert"].strip(), zeile["beschreibung"]))
    return listen


def Codes(listen, listen71, liste, objektart, attribut):
    """The codes of one "<Objektart> = <Attribut>": those of the 6.0 list, then the codes that
    only 7.1 knows, from the list of the same name and from the renamed lists of AUS_GID71."""
    codes = list(listen[liste])
    bekannt = {code for code, _ in codes}
    quellen = [liste] + [l71 for l71, o, a in AUS_GID71 if (o, a) == (objektart, attribut)]
    for quelle in quellen:
        for code, beschreibung in listen71.get(quelle, []):
            if code not in bekannt:
                bekannt.add(code)
                codes.append((code, beschreibung))
    return codes


def Schreiben(ziel, kopf, zeilen):
    """Windows-1252 with CR LF, as every configuration file of the program."""
    inhalt = kopf + "\n".join(zeilen) + "\n"
    ziel.write_bytes(inhalt.replace("\n", "\r\n").encode("cp1252"))
    print(f"{ziel}: {len(zeilen)} Zeilen")


def main(argv):
    csv_pfad, csv71, ziel = Pfade(argv, "ALKIS_Werteart.dat")
    listen = Wertelisten(csv_pfad)
    listen71 = Wertelisten(csv71)

    zeilen = []
    gesehen = set()
    for liste, objektart, attribut, form in ZUORDNUNG:
        if liste not in listen:
            raise SystemExit(f"Werteart {liste} fehlt in {csv_pfad}")
        for code, beschreibung in Codes(listen, listen71, liste, objektart, attribut):
            text = Säubern(Kurzform(beschreibung) if form == "kurz" else beschreibung)
            schlüssel = (objektart, attribut, code)
            if schlüssel in gesehen:
                raise SystemExit(f"Schlüssel doppelt: {objektart} {attribut} {code}")
            gesehen.add(schlüssel)
            zeilen.append(f"{objektart} = {attribut} = {code} = {text}")

    Schreiben(ziel, KOPF, zeilen)


if __name__ == "__main__":
    main(sys.argv)
