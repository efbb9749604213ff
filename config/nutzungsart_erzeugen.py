#!/usr/bin/env python3
"""Writes ALKIS_Nutzungsart.dat, the land-use texts of the area computation, from the ALKIS code
lists and the groups of the AdV land-use catalogue.

    nutzungsart_erzeugen.py [code-list CSV] [output file] [code-list CSV of GID 7.1]

Two kinds of lines, Windows-1252 with CR LF like every configuration file of the program:

  Nutzungsartengruppe = <key> = <group> = <area>
      the 26 groups of the AdV Nutzungsartenkatalog (the five-digit key whose thousands digit names
      the group, 11000 Wohnbaufläche ... 44000 Meer) and the area they belong to (Siedlung,
      Verkehr, Vegetation, Gewässer). The recoding of the table into the catalogue finds them by
      "= <key> =". The groups and keys are those the catalogue publishes; its finer keys (hundreds
      and tens) are not in the public material this script is made from, so every class maps to
      its group.
  Nutzungsart = <class> = <attribute> = <code> = <text> = <key>
      per land-use class the codes of the attribute the area computation reads (funktion where the
      class has it, else vegetationsmerkmal), from the code lists of GeoInfoDok 6.0 followed by the
      codes only 7.1 knows, and the line of code 0 for a polygon without a code: its text is the
      class name. <key> is the class's group.

The code lists and their classes are the land-use part of the table ZUORDNUNG of
werteart_erzeugen.py; the class names come from the list of the land-use classes beside the code
lists.
"""

import pathlib
import sys

sys.dont_write_bytecode = True  # no __pycache__ in the configuration folder
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import werteart_erzeugen  # noqa: E402  (the same code lists and the same cleaning of texts)

BEREICHE = {1: "Siedlung", 2: "Verkehr", 3: "Vegetation", 4: "Gewässer"}

# class, group key, group name (AdV Nutzungsartenkatalog); the attribute read by the computation
# follows the node file: funktion where the class has it, vegetationsmerkmal where it has only
# that, and for a class with neither the key "vegetationsmerkmal = 0".
KLASSEN = [
    ("AX_Wohnbauflaeche", 11000, "Wohnbaufläche", None),
    ("AX_IndustrieUndGewerbeflaeche", 12000, "Industrie- und Gewerbefläche", "funktion"),
    ("AX_Halde", 13000, "Halde", None),
    ("AX_Bergbaubetrieb", 14000, "Bergbaubetrieb", None),
    ("AX_TagebauGrubeSteinbruch", 15000, "Tagebau, Grube, Steinbruch", None),
    ("AX_FlaecheGemischterNutzung", 16000, "Fläche gemischter Nutzung", "funktion"),
    ("AX_FlaecheBesondererFunktionalerPraegung", 17000, "Fläche besonderer funktionaler Prägung", "funktion"),
    ("AX_SportFreizeitUndErholungsflaeche", 18000, "Sport-, Freizeit- und Erholungsfläche", "funktion"),
    ("AX_Friedhof", 19000, "Friedhof", "funktion"),
    ("AX_Strassenverkehr", 21000, "Straßenverkehr", "funktion"),
    ("AX_Weg", 22000, "Weg", "funktion"),
    ("AX_Platz", 23000, "Platz", "funktion"),
    ("AX_Bahnverkehr", 24000, "Bahnverkehr", "funktion"),
    ("AX_Flugverkehr", 25000, "Flugverkehr", "funktion"),
    ("AX_Schiffsverkehr", 26000, "Schiffsverkehr", "funktion"),
    ("AX_Landwirtschaft", 31000, "Landwirtschaft", "vegetationsmerkmal"),
    ("AX_Wald", 32000, "Wald", "vegetationsmerkmal"),
    ("AX_Gehoelz", 33000, "Gehölz", "funktion"),
    ("AX_Heide", 34000, "Heide", None),
    ("AX_Moor", 35000, "Moor", None),
    ("AX_Sumpf", 36000, "Sumpf", None),
    ("AX_UnlandVegetationsloseFlaeche", 37000, "Unland, Vegetationslose Fläche", "funktion"),
    # the class of older data sets that the catalogue of 2016 folded into Unland
    ("AX_UnkultivierteFlaeche", 37000, "Unkultivierte Fläche", "funktion"),
    ("AX_Fliessgewaesser", 41000, "Fließgewässer", "funktion"),
    ("AX_Hafenbecken", 42000, "Hafenbecken", "funktion"),
    ("AX_StehendesGewaesser", 43000, "Stehendes Gewässer", "funktion"),
    ("AX_Meer", 44000, "Meer", "funktion"),
]

KOPF = """\
***********************************************************************************************
* ALKIS_Nutzungsart.dat - Texte der Nutzungsarten für die Flächenverschneidung
*
* Nutzungsartengruppe = <Schlüssel> = <Gruppe> = <Bereich>
*     die 26 Gruppen des Nutzungsartenkatalogs der AdV (Schlüssel 11000 bis 44000) mit ihrem
*     Nutzungsartenbereich; die Umschlüsselung der Tabelle (Spalte NA-2019) sucht "= <Schlüssel> =".
* Nutzungsart = <Objektart> = <Attribut> = <Wert> = <Text> = <Schlüssel>
*     Text des Werts von funktion (oder, wo die Objektart keine hat, vegetationsmerkmal) und die
*     Gruppe der Objektart; Wert 0 steht für eine Fläche ohne Wert.
*
* Herkunft: Gruppen und Schlüssel aus dem Nutzungsartenkatalog der AdV, Werte und Texte aus den
* Wertearten der GeoInfoDok 6.0, dahinter die Werte, die erst GeoInfoDok 7.1 kennt, mit ihren
* Texten aus 7.1. Erzeugt mit nutzungsart_erzeugen.py. Ein Text darf weder ";"
* noch "=" enthalten.
***********************************************************************************************
"""


def main(argv):
    csv_pfad, csv71, ziel = werteart_erzeugen.Pfade(argv, "ALKIS_Nutzungsart.dat")
    listen = werteart_erzeugen.Wertelisten(csv_pfad)
    listen71 = werteart_erzeugen.Wertelisten(csv71)
    codeliste = {(objektart, attribut): liste
                 for liste, objektart, attribut, _ in werteart_erzeugen.ZUORDNUNG}

    zeilen = []
    for gruppe in sorted({(k, n) for _, k, n, _ in KLASSEN}):
        schlüssel, name = gruppe
        if name == "Unkultivierte Fläche":
            continue
        zeilen.append(f"Nutzungsartengruppe = {schlüssel} = {name} = {BEREICHE[schlüssel // 10000]}")
    for klasse, schlüssel, name, attribut in KLASSEN:
        gelesen = attribut or "vegetationsmerkmal"
        zeilen.append(f"Nutzungsart = {klasse} = {gelesen} = 0 = {name} = {schlüssel}")
        liste = codeliste.get((klasse, attribut)) if attribut else None
        codes = werteart_erzeugen.Codes(listen, listen71, liste, klasse, attribut) if liste else []
        for code, beschreibung in codes:
            text = werteart_erzeugen.Säubern(beschreibung)
            zeilen.append(f"Nutzungsart = {klasse} = {gelesen} = {code} = {text} = {schlüssel}")

    werteart_erzeugen.Schreiben(ziel, KOPF, zeilen)


if __name__ == "__main__":
    main(sys.argv)
