#!/usr/bin/env python3
"""Writes an invented NAS file (ALKIS Bestandsdatenauszug, GeoInfoDok 6.0) of the municipality
Musterstadt in the county Musterkreis: two Gemarkungen, parcels with their locations, labels,
bookings, folios, owners and addresses, and the land use over the parcels.

    nas_muster_erzeugen.py [--flurstuecke N] [--seed S] [--gid 6.0|7.1] [--bodenschaetzung]
                           [--out DATEI]

Without --out the file is samples/musterstadt_nas.xml beside this script. --gid 7.1 writes the
same district in the namespace of GeoInfoDok 7.1; --bodenschaetzung adds a soil assessment
(AX_Bodenschaetzung) over every agricultural area, with the attribute names of the version (6.0:
kulturart, zustandsstufeOderBodenstufe, entstehungsartOderKlimastufeWasserverhaeltnisse; 7.1:
nutzungsart, zustandsstufe or bodenstufe, entstehungsart, klimastufe, wasserverhaeltnisse). Both
versions of one district compile to the same table. Everything in it is
made up: names, addresses, places, keys and coordinates (ETRS89 / UTM zone 32).

The structure repeats with a period of 24 parcels (the table PERIODE and the folio list BLAETTER):
what kind of location a parcel has, how it is booked and who owns it follows from its position in
the period, so the number of features of each class follows from N alone. The seed chooses only
values: names, dates, widths and depths of the parcels, house number suffixes. The same
arguments always give the same bytes.

The file is written as it is made, feature by feature, with no document tree; 50,000 parcels
take well under a minute.
"""
import argparse
import itertools
import math
import os
import random
import sys

# --- keys of the invented administration --------------------------------------------------------

LAND = '07'
REGIERUNGSBEZIRK = '3'
KREIS = '99'
GEMEINDE = '001'
KATASTERAMT = '0099'      # AX_Dienststelle of the Gemarkungen (istAmtsbezirkVon)
AMTSGERICHT = '1234'      # AX_Dienststelle of the Buchungsblattbezirke (gehoertZu)
GEMARKUNGEN = (('6001', 'Musterhausen'), ('6002', 'Beispielfeld'))
CRS = 'urn:adv:crs:ETRS89_UTM32'
BEGINNT = '2024-03-01T10:00:00Z'
KENNUNG_PRAEFIX = 'DEMU'

# --- the period of 24 parcels -------------------------------------------------------------------
# Per position in the period: (location kind, numbering, geometry).
#   Location kinds: 'HX' house numbers on two streets (its row's street and the cross street),
#   'H1' one house number, 'H2' two house numbers of one street, 'HG' one house number and a
#   field name, 'OS' a street without house number (keyed), 'OG' a field name (unkeyed text).
#   Numbering: '' a number of its own, 'n' a number with denominator /1, 'n+' the same number as
#   the parcel before with the next denominator (a new number with /1 at the start of a Flur).
#   Geometry: '' a four-corner ring, 'bogen' the street side is an arc, 'loch' a ring with a hole.
# Position 13 has no AP_PTO label, position 22 is not booked (a parcel free of booking).
PERIODE = (
    ('HX', '', ''),        # 0
    ('H1', '', ''),        # 1
    ('H2', 'n', ''),       # 2
    ('H1', 'n+', 'bogen'), # 3
    ('OS', '', ''),        # 4
    ('OG', '', ''),        # 5
    ('H1', '', ''),        # 6
    ('H1', '', ''),        # 7  booked as a divided plot, one share attached
    ('H2', 'n', ''),       # 8
    ('OS', 'n+', ''),      # 9
    ('HG', '', ''),        # 10
    ('H1', '', ''),        # 11
    ('OG', 'n', ''),       # 12
    ('OG', 'n+', ''),      # 13 no label
    ('OG', '', 'loch'),    # 14
    ('H1', '', ''),        # 15
    ('HX', '', ''),        # 16
    ('H1', 'n', 'bogen'),  # 17
    ('H2', '', ''),        # 18
    ('H1', '', ''),        # 19 booked as a divided plot, two shares attached
    ('OS', '', ''),        # 20
    ('OG', 'n', ''),       # 21
    ('OS', '', ''),        # 22 not booked
    ('H1', '', ''),        # 23
)
OHNE_BESCHRIFTUNG = 13
UNGEBUCHT = 22

# The folios of one period, in the order they are written:
#   ('grund', positions, owners): the parcels at these positions booked as plots (1100), numbered
#       1, 2, ... on the folio;
#   ('fiktiv', position, buchungsart): the parcel booked on a fictitious folio (no owners);
#   ('an', position, (buchungsart, zaehler, nenner, nummerImAufteilungsplan), owners): a share
#       booked on a folio of its own and attached ("an") to the booking of that parcel.
# Owners: 'einzel' one person, 'ehepaar' two with 1/2 each and one address, 'zwei' two with 1/2
# and an address each, 'erben3' three with 1/3, 'ungleich3' three with 1/2, 1/4, 1/4, 'firma' a
# company, 'gemeinde' the municipality, 'ohne_anschrift' one person without an address.
BLAETTER = (
    ('grund', (0, 1), 'ehepaar'),
    ('grund', (2,), 'einzel'),
    ('grund', (3, 4, 5), 'erben3'),
    ('grund', (6,), 'firma'),
    ('fiktiv', 7, '1102'),
    ('an', 7, ('1302', '1', '4', ''), 'einzel'),
    ('grund', (8, 9), 'einzel'),
    ('grund', (10,), 'zwei'),
    ('grund', (11,), 'ohne_anschrift'),
    ('grund', (12, 13, 14), 'gemeinde'),
    ('grund', (15,), 'zwei'),
    ('grund', (16,), 'einzel'),
    ('grund', (17,), 'ungleich3'),
    ('grund', (18,), 'einzel'),
    ('fiktiv', 19, '1101'),
    ('an', 19, ('1301', '520', '1000', '1'), 'einzel'),
    ('an', 19, ('1301', '480', '1000', '2'), 'zwei'),
    ('grund', (20, 21), 'einzel'),
    ('grund', (23,), 'einzel'),
)
ANTEILE = {'einzel': (None,), 'ohne_anschrift': (None,), 'firma': (None,), 'gemeinde': (None,),
           'ehepaar': (('1', '2'), ('1', '2')), 'zwei': (('1', '2'), ('1', '2')),
           'erben3': (('1', '3'), ('1', '3'), ('1', '3')),
           'ungleich3': (('1', '2'), ('1', '4'), ('1', '4'))}

# --- layout ---------------------------------------------------------------------------------------
# A Gemarkung is rows of six parcels, each row on its own street (in front, to the south) and
# forty rows to a column; each column has a cross street on its west side, which the first parcel
# of a row faces as well. Land use covers each row in two pieces of three parcels.
REIHE = 6
REIHEN_JE_SPALTE = 40
REIHENABSTAND = 55.0
SPALTENBREITE = 230.0
QUERSTRASSE = 14.0
URSPRUNG = (372000.0, 5561000.0)

# --- name lists (all invented combinations) -------------------------------------------------------

NACHNAMEN = ('Mustermann', 'Musterfrau', 'Beispiel', 'Lindner', 'Sommer', 'Winter', 'Brunner',
             'Keller', 'Vogel', 'Fischer', 'Becker', 'Hofmann', 'Schäfer', 'Köhler', 'Lehmann',
             'Krüger', 'Wagner', 'Weber', 'Meier', 'Schulze', 'Zimmermann', 'Hartmann', 'Wolff',
             'Brandt', 'Kühn', 'Roth', 'Busch', 'Engel', 'Graf', 'Haas', 'Jäger', 'Kraus', 'Lang',
             'Mohr', 'Nagel', 'Otto', 'Pfeiffer', 'Reuter', 'Seidel', 'Thiel', 'Ullrich', 'Vollmer',
             'Walter', 'Ziegler', 'Bäcker', 'Förster', 'Gärtner', 'Müller-Beispiel')
VORNAMEN_F = ('Erika', 'Anna', 'Maria', 'Ursula', 'Monika', 'Petra', 'Sabine', 'Claudia', 'Jutta',
              'Bärbel', 'Käthe', 'Renate', 'Heike', 'Sandra', 'Julia', 'Lena', 'Sophie', 'Hannah',
              'Luise', 'Greta', 'Anna Maria', 'Eva-Maria', 'Ingrid', 'Gisela', 'Doris')
VORNAMEN_M = ('Max', 'Hans', 'Peter', 'Klaus', 'Jürgen', 'Jörg', 'Michael', 'Thomas', 'Stefan',
              'Andreas', 'Uwe', 'Dieter', 'Günter', 'Frank', 'Lukas', 'Jonas', 'Felix', 'Paul',
              'Karl-Heinz', 'Hans Peter', 'Wolfgang', 'Bernd', 'Matthias', 'Tobias', 'Rüdiger')
FIRMEN = ('Musterbau GmbH', 'Beispiel Wohnbau GmbH & Co. KG', 'Muster Immobilien AG',
          'Landhandel Beispielfeld eG', 'Mustermann & Söhne OHG', 'Beispiel Energie GmbH')
ORTE = (('12345', 'Musterstadt'), ('12346', 'Musterdorf'), ('12347', 'Beispielheim'),
        ('12348', 'Musterau'), ('12349', 'Oberbeispiel'), ('12350', 'Untermuster'),
        ('12351', 'Probehausen'), ('12352', 'Beispielbach'))
# Street names: a stem and a form, both walked at once (their numbers of entries have no common
# divisor, so every pair comes once), then again with each adjective.
STAEMME = ('Haupt', 'Linden', 'Kirch', 'Schul', 'Garten', 'Mühlen', 'Birken', 'Eichen', 'Rosen',
           'Wiesen', 'Berg', 'Bach', 'Brunnen', 'Burg', 'Dorf', 'Feld', 'Wald', 'Tannen', 'Ahorn',
           'Buchen', 'Sonnen', 'Hasel', 'Ulmen')
FORMEN = (('{}straße', '{a}e {}straße'), ('Am {}weg', 'Am {a}en {}weg'),
          ('{}gasse', '{a}e {}gasse'), ('{}weg', '{a}er {}weg'), ('{}allee', '{a}e {}allee'),
          ('{}ring', '{a}er {}ring'), ('{}pfad', '{a}er {}pfad'))
ADJEKTIVE = ('', 'Alt', 'Neu', 'Ober', 'Unter', 'Hinter', 'Klein', 'Lang')
GEWANNE = ('Im Wiesengrund', 'Auf dem Mustergarten', 'Am Beispielrain', 'In der Langen Furche',
           'Hinter den Gärten', 'Unterm Lindenbühl', 'Auf der Höhe', 'Im Erlenbruch',
           'Am Sonnenhang', 'Vor dem Musterwald', 'In den Krautäckern', 'Über der Bachwiese')
STRASSEN_KAPAZITAET = len(STAEMME) * len(FORMEN) * len(ADJEKTIVE)


def strassenname(k):
    """The k-th street name; unique for k below STRASSEN_KAPAZITAET."""
    paare = len(STAEMME) * len(FORMEN)
    stamm = STAEMME[k % len(STAEMME)]
    form = FORMEN[(k % paare) % len(FORMEN)]
    adjektiv = ADJEKTIVE[(k // paare) % len(ADJEKTIVE)]
    return form[0].format(stamm) if not adjektiv else form[1].format(stamm, a=adjektiv)


def xml_text(text):
    return text.replace('&', '&amp;').replace('<', '&lt;').replace('>', '&gt;')


class Kennungen:
    """Feature identifiers: "DEMU" and twelve characters of a running number in base 36. Some get
    lower-case letters; as their digits differ anyway, no two are equal even ignoring case."""

    ZIFFERN = '0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ'

    def __init__(self):
        self.n = 0
        self.geometrie = 0

    def neu(self):
        self.n += 1
        n, s = self.n, []
        while n:
            n, r = divmod(n, 36)
            s.append(self.ZIFFERN[r])
        teil = ''.join(reversed(s)).rjust(12, '0')
        if self.n % 11 == 5:
            teil = teil.lower()
        return KENNUNG_PRAEFIX + teil

    def geo(self):
        """Short gml:id values of the geometry elements, "G" and a number."""
        self.geometrie += 1
        return 'G%X' % self.geometrie


# --- the model ----------------------------------------------------------------------------------

class Flurstueck:
    __slots__ = ('id', 'gem', 'reihe', 'spalte', 'flur', 'zaehler', 'nenner', 'unten', 'oben',
                 'bogen', 'loch', 'flaeche', 'mit', 'ohne', 'buchung', 'pto', 'entstehung')


class Modell:
    def __init__(self, anzahl, seed):
        self.zufall = random.Random(seed).random
        self.ids = Kennungen()
        self.anzahl = anzahl
        self.strassen = {}        # key -> [id, lage, name, next house number]
        self.strassen_liste = []
        self.loh = {}             # key -> (id, kind, value)
        self.loh_liste = []
        self.lmh = []             # (id, lage, hausnummer)
        self.flurstuecke = []
        self.buchungen = []       # (id, art, lfd, anteil, nr, blatt-id, an-id)
        self.blaetter = []        # (id, bezirk, nummer, blattart)
        self.namensnummern = []   # (id, lfd, anteil, eigentuemerart, blatt-id, person-id)
        self.personen = []        # (id, nachname, anrede, vorname, geburtsname, geburtsdatum, anschrift)
        self.anschriften = []     # (id, ort, plz, strasse, hausnummer)
        self.nutzung = []         # (klasse, id, merkmal, aussen segments, loecher)
        self.verwaltung = {}
        self._verwaltung()
        self._flurstuecke()
        self._buchungen()
        self._nutzung()

    def zahl(self, a, b):
        """A whole number from a to b, both included."""
        return a + int(self.zufall() * (b - a + 1))

    def wahl(self, folge):
        return folge[int(self.zufall() * len(folge))]

    def _verwaltung(self):
        for name in ('bundesland', 'kreis', 'gemeinde', 'katasteramt', 'amtsgericht'):
            self.verwaltung[name] = self.ids.neu()
        self.verwaltung['gemarkungen'] = [self.ids.neu() for _ in GEMARKUNGEN]
        self.verwaltung['bezirke'] = [self.ids.neu() for _ in GEMARKUNGEN]

    # streets and locations

    def strasse(self, schluessel):
        eintrag = self.strassen.get(schluessel)
        if eintrag is None:
            k = len(self.strassen_liste)
            if k >= STRASSEN_KAPAZITAET:
                raise SystemExit('zu viele Straßen für die Namensliste')
            eintrag = [self.ids.neu(), '%05d' % (k + 1), strassenname(k), 1]
            self.strassen[schluessel] = eintrag
            self.strassen_liste.append(eintrag)
        return eintrag

    def hausnummer(self, strasse, schritt):
        nummer = strasse[3]
        strasse[3] += schritt
        return str(nummer) + (' a' if self.zufall() < 0.08 else '')

    def mit_hausnummer(self, strasse, schritt):
        kennung = self.ids.neu()
        self.lmh.append((kennung, strasse[1], self.hausnummer(strasse, schritt)))
        return kennung

    def ohne_hausnummer(self, schluessel, art, wert):
        eintrag = self.loh.get(schluessel)
        if eintrag is None:
            eintrag = (self.ids.neu(), art, wert)
            self.loh[schluessel] = eintrag
            self.loh_liste.append(eintrag)
        return eintrag[0]

    # parcels

    def _flurstuecke(self):
        n = self.anzahl
        je_gemarkung = ((n + 1) // 2, n // 2)
        reihen = [math.ceil(k / REIHE) for k in je_gemarkung]
        # Long districts get long streets, so that the street names last: each column of rows
        # has a cross street, and R rows share one street, R as small as the names allow.
        querstrassen = sum(math.ceil(k / REIHEN_JE_SPALTE) for k in reihen)
        reihen_je_strasse = 1
        while sum(math.ceil(k / reihen_je_strasse) for k in reihen) + querstrassen > STRASSEN_KAPAZITAET:
            reihen_je_strasse += 1
            if reihen_je_strasse > max(reihen):
                raise SystemExit('zu viele Flurstücke für die Straßennamen')
        x0 = URSPRUNG[0]
        zeile = 0       # rows of the whole file, for the field names
        i = 0
        for gem in range(2):
            anzahl = je_gemarkung[gem]
            flurgroesse = max(10, math.ceil(anzahl / 900))
            reihen_hier = reihen[gem]
            for r in range(reihen_hier):
                spalte, rr = divmod(r, REIHEN_JE_SPALTE)
                links = x0 + spalte * SPALTENBREITE + QUERSTRASSE
                y = URSPRUNG[1] + rr * REIHENABSTAND
                tiefe = self.zahl(32, 47) + self.zahl(0, 9) / 10
                # Nodes shared by neighbours: the street side slightly bent, the rear uneven.
                unten, oben = [], []
                x = links
                for c in range(REIHE + 1):
                    unten.append((round(x, 3), round(y + self.zufall() * 0.4, 3)))
                    oben.append((round(x + self.zufall() * 3 - 1.5, 3),
                                 round(y + tiefe + self.zufall() * 2 - 1, 3)))
                    x += self.zahl(18, 31) + self.zahl(0, 99) / 100
                strasse = ('reihe', gem, r // reihen_je_strasse)
                quer = ('quer', gem, spalte)
                gewann = GEWANNE[zeile % len(GEWANNE)]
                gewann_schluessel = ('gewann', gem, zeile)
                zeile += 1
                for c in range(REIHE):
                    j = r * REIHE + c
                    if j >= anzahl:
                        break
                    self.flurstueck(i, gem, j, flurgroesse, unten[c], unten[c + 1], oben[c + 1],
                                    oben[c], strasse, quer, gewann, gewann_schluessel)
                    self.flurstuecke[-1].reihe, self.flurstuecke[-1].spalte = r, c
                    i += 1
            x0 += (math.ceil(reihen_hier / REIHEN_JE_SPALTE)) * SPALTENBREITE + 400

    def flurstueck(self, i, gem, j, flurgroesse, ul, ur, orr, ol, strasse_schl, quer_schl,
                   gewann, gewann_schl):
        lage, nummerierung, form = PERIODE[i % 24]
        f = Flurstueck()
        f.id = self.ids.neu()
        f.gem = gem
        f.flur = 1 + j // flurgroesse
        vorher = self.flurstuecke[-1] if self.flurstuecke else None
        erstes = j % flurgroesse == 0 or vorher is None
        f.zaehler = 1 if erstes else vorher.zaehler + 1
        f.nenner = None
        if nummerierung == 'n':
            f.nenner = 1
        elif nummerierung == 'n+':
            if not erstes and vorher.nenner:
                f.zaehler, f.nenner = vorher.zaehler, vorher.nenner + 1
            else:
                f.nenner = 1
        f.unten = (ul, ur)
        f.oben = (orr, ol)
        f.bogen = None
        f.loch = None
        flaeche = abs(ringflaeche((ul, ur, orr, ol, ul)))
        if form == 'bogen':
            # The arc bulges into the street: its middle point lies below the chord's middle.
            pfeil = 1.2 + self.zufall() * 1.3
            mitte = (round((ul[0] + ur[0]) / 2, 3), round((ul[1] + ur[1]) / 2 - pfeil, 3))
            f.bogen = mitte
            flaeche += kreisabschnitt(math.dist(ul, ur), pfeil)
        elif form == 'loch':
            cx = (ul[0] + ur[0] + orr[0] + ol[0]) / 4
            cy = (ul[1] + ur[1] + orr[1] + ol[1]) / 4
            b, h = 3 + self.zahl(0, 3), 2 + self.zahl(0, 2)
            # Clockwise, as a hole runs against the outer ring.
            f.loch = ((round(cx - b, 3), round(cy - h, 3)), (round(cx - b, 3), round(cy + h, 3)),
                      (round(cx + b, 3), round(cy + h, 3)), (round(cx + b, 3), round(cy - h, 3)),
                      (round(cx - b, 3), round(cy - h, 3)))
            flaeche -= 4 * b * h
        f.flaeche = int(round(flaeche))
        f.entstehung = '%04d-%02d-01' % (self.zahl(1960, 2023), self.zahl(1, 12))
        f.mit, f.ohne = [], []
        strasse = None
        if lage[0] == 'H' or lage == 'OS':
            strasse = self.strasse(strasse_schl)
        if lage == 'HX':
            f.mit.append(self.mit_hausnummer(strasse, 2))
            f.mit.append(self.mit_hausnummer(self.strasse(quer_schl), 2))
        elif lage == 'H1':
            f.mit.append(self.mit_hausnummer(strasse, 2))
        elif lage == 'H2':
            f.mit.append(self.mit_hausnummer(strasse, 2))
            f.mit.append(self.mit_hausnummer(strasse, 2))
        elif lage == 'HG':
            f.mit.append(self.mit_hausnummer(strasse, 2))
            f.ohne.append(self.ohne_hausnummer(gewann_schl, 'text', gewann))
        elif lage == 'OS':
            f.ohne.append(self.ohne_hausnummer(strasse_schl, 'lage', strasse[1]))
        else:
            f.ohne.append(self.ohne_hausnummer(gewann_schl, 'text', gewann))
        f.pto = self.ids.neu() if i % 24 != OHNE_BESCHRIFTUNG else None
        f.buchung = None
        self.flurstuecke.append(f)

    # bookings, folios, owners

    def _buchungen(self):
        naechste = [self.zahl(100, 140), self.zahl(100, 140)]   # folio numbers per district
        fiktiv = [900000, 900000]
        for anfang in range(0, self.anzahl, 24):
            def fl(pos):
                k = anfang + pos
                return self.flurstuecke[k] if k < self.anzahl else None
            for eintrag in BLAETTER:
                art = eintrag[0]
                if art == 'grund':
                    gebucht = [fl(p) for p in eintrag[1] if fl(p) is not None]
                    if not gebucht:
                        continue
                    gem = gebucht[0].gem
                    blatt = self.blatt(gem, naechste, '1000')
                    for lfd, f in enumerate(gebucht, 1):
                        f.buchung = self.ids.neu()
                        self.buchungen.append((f.buchung, '1100', lfd, None, '', blatt, None))
                    self.eigentuemer(blatt, eintrag[2])
                elif art == 'fiktiv':
                    f = fl(eintrag[1])
                    if f is None:
                        continue
                    fiktiv[f.gem] += 1
                    blatt = self.ids.neu()
                    self.blaetter.append((blatt, f.gem, str(fiktiv[f.gem]), '5000'))
                    f.buchung = self.ids.neu()
                    self.buchungen.append((f.buchung, eintrag[2], 1, None, '', blatt, None))
                else:
                    f = fl(eintrag[1])
                    if f is None:
                        continue
                    buchungsart, zaehler, nenner, nummer = eintrag[2]
                    blatt = self.blatt(f.gem, naechste, '1000')
                    self.buchungen.append((self.ids.neu(), buchungsart, 1, (zaehler, nenner),
                                           nummer, blatt, f.buchung))
                    self.eigentuemer(blatt, eintrag[3])

    def blatt(self, gem, naechste, blattart):
        kennung = self.ids.neu()
        self.blaetter.append((kennung, gem, str(naechste[gem]), blattart))
        naechste[gem] += self.zahl(1, 4)
        return kennung

    def eigentuemer(self, blatt, art):
        anteile = ANTEILE[art]
        nachname = self.wahl(NACHNAMEN)
        # The first couple of every file is Erika and Max Mustermann, the names of every German form.
        muster = art == 'ehepaar' and not self.personen
        gemeinsame_anschrift = None
        for k, anteil in enumerate(anteile, 1):
            lfd = '%04d.00.00.00.00' % k
            if art == 'firma':
                person = self.person(self.wahl(FIRMEN), '3000', '', '', '', True)
                eigentuemerart = '2000'
            elif art == 'gemeinde':
                person = self.person('Stadt Musterstadt', '', '', '', '', True)
                eigentuemerart = '5500'
            else:
                eigentuemerart = '1000'
                frau = k == 1 if art == 'ehepaar' else self.zufall() < 0.5
                if art == 'ehepaar' or (art in ('erben3', 'ungleich3') and self.zufall() < 0.7):
                    name = nachname
                else:
                    name = self.wahl(NACHNAMEN)
                vorname = self.wahl(VORNAMEN_F if frau else VORNAMEN_M)
                geburtsname = self.wahl(NACHNAMEN) if frau and self.zufall() < 0.4 else ''
                if geburtsname == name:
                    geburtsname = ''
                if muster:
                    name, vorname, geburtsname = 'Mustermann', ('Erika', 'Max')[k - 1], ('Gabler', '')[k - 1]
                datum = '%04d-%02d-%02d' % (self.zahl(1930, 2001), self.zahl(1, 12), self.zahl(1, 28))
                anrede = '1000' if frau else '2000'
                if gemeinsame_anschrift:
                    person = self.person(name, anrede, vorname, geburtsname, datum, False,
                                         gemeinsame_anschrift)
                else:
                    person = self.person(name, anrede, vorname, geburtsname, datum,
                                         art != 'ohne_anschrift')
                    if art == 'ehepaar':
                        gemeinsame_anschrift = self.personen[-1][6]
            self.namensnummern.append((self.ids.neu(), lfd, anteil, eigentuemerart, blatt, person))

    def person(self, name, anrede, vorname, geburtsname, datum, mit_anschrift, anschrift=None):
        kennung = self.ids.neu()
        if mit_anschrift:
            anschrift = self.ids.neu()
            if self.zufall() < 0.7 and self.strassen_liste:
                plz, ort = ORTE[0]
                strasse = self.wahl(self.strassen_liste)[2]
            else:
                plz, ort = self.wahl(ORTE[1:])
                strasse = strassenname(self.zahl(0, 160))
            hausnummer = str(self.zahl(1, 120)) + (' b' if self.zufall() < 0.05 else '')
            self.anschriften.append((anschrift, ort, plz, strasse, hausnummer))
        self.personen.append((kennung, name, anrede, vorname, geburtsname, datum, anschrift))
        return kennung

    # land use: each row in two pieces of three parcels

    def _nutzung(self):
        for (gem, reihe, teil), gruppe in itertools.groupby(
                self.flurstuecke, key=lambda f: (f.gem, f.reihe, f.spalte // 3)):
            stueck = list(gruppe)
            if gem == 0:
                klasse = 'AX_Wohnbauflaeche' if teil == 0 or reihe % 2 == 0 else 'AX_Landwirtschaft'
            else:
                klasse = 'AX_Landwirtschaft' if teil == 0 else 'AX_Wald'
            merkmal = {'AX_Wohnbauflaeche': '', 'AX_Landwirtschaft': '1010',
                       'AX_Wald': self.wahl(('1100', '1200', '1300'))}[klasse]
            # The outer ring: the street sides from west to east (arcs kept), then back along
            # the rear corners; the parcels' holes stay holes.
            segmente = []
            for f in stueck:
                a, b = f.unten
                if f.bogen:
                    segmente.append(('Arc', [a, f.bogen, b]))
                elif segmente and segmente[-1][0] == 'LineString':
                    segmente[-1][1].append(b)
                else:
                    segmente.append(('LineString', [a, b]))
            rueckweg = [stueck[-1].oben[0]] + [f.oben[1] for f in reversed(stueck)] + [stueck[0].unten[0]]
            if segmente[-1][0] == 'LineString':
                segmente[-1][1].extend(rueckweg)
            else:
                segmente.append(('LineString', [stueck[-1].unten[1]] + rueckweg))
            loecher = [f.loch for f in stueck if f.loch]
            self.nutzung.append((klasse, self.ids.neu(), merkmal, segmente, loecher))


def ringflaeche(ring):
    s = 0.0
    for (x1, y1), (x2, y2) in zip(ring, ring[1:]):
        s += x1 * y2 - x2 * y1
    return s / 2


def kreisabschnitt(sehne, pfeil):
    """The area between a chord and its arc, from the chord's length and the arc's height."""
    r = (sehne * sehne / 4 + pfeil * pfeil) / (2 * pfeil)
    winkel = 2 * math.asin(min(1.0, sehne / (2 * r)))
    return r * r / 2 * (winkel - math.sin(winkel))


# --- writing --------------------------------------------------------------------------------------

T4, T5, T6 = '\t' * 4, '\t' * 5, '\t' * 6


def poslist(punkte):
    return ' '.join('%.3f %.3f' % p for p in punkte)


def kopf(klasse, kennung, modellart='DLKM'):
    return (f'\t\t\t<gml:featureMember>\n{T4}<{klasse} gml:id="{kennung}">\n'
            f'{T5}<gml:identifier codeSpace="http://www.adv-online.de/">urn:adv:oid:{kennung}'
            f'</gml:identifier>\n'
            f'{T5}<lebenszeitintervall>\n{T6}<AA_Lebenszeitintervall>\n'
            f'{T6}\t<beginnt>{BEGINNT}</beginnt>\n{T6}</AA_Lebenszeitintervall>\n'
            f'{T5}</lebenszeitintervall>\n{T5}<modellart>\n{T6}<AA_Modellart>\n'
            f'{T6}\t<advStandardModell>{modellart}</advStandardModell>\n{T6}</AA_Modellart>\n'
            f'{T5}</modellart>\n{T5}<anlass>000000</anlass>\n')


def fuss(klasse):
    return f'{T4}</{klasse}>\n\t\t\t</gml:featureMember>\n'


def verweis(element, ziel):
    return f'{T5}<{element} xlink:href="urn:adv:oid:{ziel}"/>\n'


def schluessel_block(element, typ, felder, tiefe=5):
    t = '\t' * tiefe
    innen = ''.join(f'{t}\t\t<{name}>{wert}</{name}>\n' for name, wert in felder)
    return f'{t}<{element}>\n{t}\t<{typ}>\n{innen}{t}\t</{typ}>\n{t}</{element}>\n'


def kurve(ids, segmente, tiefe):
    """One gml:curveMember with its gml:Curve of the segments [(kind, points)]."""
    t = '\t' * tiefe
    teile = [f'{t}<gml:curveMember>\n{t}\t<gml:Curve gml:id="{ids.geo()}">\n{t}\t\t<gml:segments>\n']
    for art, punkte in segmente:
        element = 'gml:Arc' if art == 'Arc' else 'gml:LineStringSegment'
        teile.append(f'{t}\t\t\t<{element}>\n{t}\t\t\t\t<gml:posList>{poslist(punkte)}</gml:posList>\n'
                     f'{t}\t\t\t</{element}>\n')
    teile.append(f'{t}\t\t</gml:segments>\n{t}\t</gml:Curve>\n{t}</gml:curveMember>\n')
    return ''.join(teile)


def flaeche(ids, aussen, loecher):
    """gml:Surface in a position element: `aussen` is a list of curves (each a segment list),
    `loecher` a list of closed point lists."""
    teile = [f'{T5}<position>\n{T6}<gml:Surface srsName="{CRS}" gml:id="{ids.geo()}">\n'
             f'{T6}\t<gml:polygonPatches>\n{T6}\t\t<gml:PolygonPatch>\n'
             f'{T6}\t\t\t<gml:exterior>\n{T6}\t\t\t\t<gml:Ring>\n']
    for segmente in aussen:
        teile.append(kurve(ids, segmente, 11))
    teile.append(f'{T6}\t\t\t\t</gml:Ring>\n{T6}\t\t\t</gml:exterior>\n')
    for loch in loecher:
        teile.append(f'{T6}\t\t\t<gml:interior>\n{T6}\t\t\t\t<gml:Ring>\n')
        teile.append(kurve(ids, [('LineString', loch)], 11))
        teile.append(f'{T6}\t\t\t\t</gml:Ring>\n{T6}\t\t\t</gml:interior>\n')
    teile.append(f'{T6}\t\t</gml:PolygonPatch>\n{T6}\t</gml:polygonPatches>\n'
                 f'{T6}</gml:Surface>\n{T5}</position>\n')
    return ''.join(teile)


def lage_verschluesselt(lage, tiefe):
    return schluessel_block('verschluesselt', 'AX_VerschluesselteLagebezeichnung',
                            (('land', LAND), ('regierungsbezirk', REGIERUNGSBEZIRK),
                             ('kreis', KREIS), ('gemeinde', GEMEINDE), ('lage', lage)), tiefe)


def kennzeichen(f):
    nummer = GEMARKUNGEN[f.gem][0]
    nenner = '%04d' % f.nenner if f.nenner else '____'
    return f'{LAND}{nummer}{f.flur:03d}{f.zaehler:05d}{nenner}__'


def verwaltung(m):
    v = m.verwaltung
    yield (kopf('AX_Bundesland', v['bundesland']) +
           f'{T5}<schluesselGesamt>{LAND}</schluesselGesamt>\n{T5}<bezeichnung>Rheinland-Pfalz</bezeichnung>\n' +
           schluessel_block('schluessel', 'AX_Bundesland_Schluessel', (('land', LAND),)) +
           fuss('AX_Bundesland'))
    yield (kopf('AX_KreisRegion', v['kreis']) +
           f'{T5}<schluesselGesamt>{LAND}{REGIERUNGSBEZIRK}{KREIS}</schluesselGesamt>\n'
           f'{T5}<bezeichnung>Musterkreis</bezeichnung>\n' +
           schluessel_block('schluessel', 'AX_Kreis_Schluessel',
                            (('land', LAND), ('regierungsbezirk', REGIERUNGSBEZIRK), ('kreis', KREIS))) +
           fuss('AX_KreisRegion'))
    yield (kopf('AX_Gemeinde', v['gemeinde']) +
           f'{T5}<schluesselGesamt>{LAND}{REGIERUNGSBEZIRK}{KREIS}{GEMEINDE}</schluesselGesamt>\n'
           f'{T5}<bezeichnung>Musterstadt</bezeichnung>\n' +
           schluessel_block('gemeindekennzeichen', 'AX_Gemeindekennzeichen',
                            (('land', LAND), ('regierungsbezirk', REGIERUNGSBEZIRK), ('kreis', KREIS),
                             ('gemeinde', GEMEINDE))) +
           fuss('AX_Gemeinde'))
    for kennung, (nummer, name) in zip(v['gemarkungen'], GEMARKUNGEN):
        yield (kopf('AX_Gemarkung', kennung) +
               f'{T5}<schluesselGesamt>{LAND}{nummer}</schluesselGesamt>\n{T5}<bezeichnung>{name}</bezeichnung>\n' +
               schluessel_block('schluessel', 'AX_Gemarkung_Schluessel',
                                (('land', LAND), ('gemarkungsnummer', nummer))) +
               schluessel_block('istAmtsbezirkVon', 'AX_Dienststelle_Schluessel',
                                (('land', LAND), ('stelle', KATASTERAMT))) +
               fuss('AX_Gemarkung'))
    for kennung, stelle, name, art in (
            (v['katasteramt'], KATASTERAMT,
             'Vermessungs- und Katasteramt Musterkreis Am Vermessungsamt 1 12345 Musterstadt', '1100'),
            (v['amtsgericht'], AMTSGERICHT, 'Musterstadt', '1000')):
        yield (kopf('AX_Dienststelle', kennung) +
               f'{T5}<schluesselGesamt>{LAND}{stelle}</schluesselGesamt>\n{T5}<bezeichnung>{name}</bezeichnung>\n' +
               schluessel_block('schluessel', 'AX_Dienststelle_Schluessel', (('land', LAND), ('stelle', stelle))) +
               f'{T5}<stellenart>{art}</stellenart>\n' + fuss('AX_Dienststelle'))
    for kennung, (nummer, name) in zip(v['bezirke'], GEMARKUNGEN):
        yield (kopf('AX_Buchungsblattbezirk', kennung) +
               f'{T5}<schluesselGesamt>{LAND}{nummer}</schluesselGesamt>\n{T5}<bezeichnung>{name}</bezeichnung>\n' +
               schluessel_block('schluessel', 'AX_Buchungsblattbezirk_Schluessel',
                                (('land', LAND), ('bezirk', nummer))) +
               schluessel_block('gehoertZu', 'AX_Dienststelle_Schluessel',
                                (('land', LAND), ('stelle', AMTSGERICHT))) +
               fuss('AX_Buchungsblattbezirk'))


def lagen(m):
    for kennung, lage, name, _ in m.strassen_liste:
        yield (kopf('AX_LagebezeichnungKatalogeintrag', kennung) +
               f'{T5}<schluesselGesamt>{LAND}{REGIERUNGSBEZIRK}{KREIS}{GEMEINDE}{lage}</schluesselGesamt>\n'
               f'{T5}<bezeichnung>{name}</bezeichnung>\n' +
               schluessel_block('schluessel', 'AX_VerschluesselteLagebezeichnung',
                                (('land', LAND), ('regierungsbezirk', REGIERUNGSBEZIRK), ('kreis', KREIS),
                                 ('gemeinde', GEMEINDE), ('lage', lage))) +
               fuss('AX_LagebezeichnungKatalogeintrag'))
    for kennung, art, wert in m.loh_liste:
        if art == 'text':
            inhalt = f'{T6}\t<unverschluesselt>{xml_text(wert)}</unverschluesselt>\n'
        else:
            inhalt = lage_verschluesselt(wert, 7)
        yield (kopf('AX_LagebezeichnungOhneHausnummer', kennung) +
               f'{T5}<lagebezeichnung>\n{T6}<AX_Lagebezeichnung>\n{inhalt}{T6}</AX_Lagebezeichnung>\n'
               f'{T5}</lagebezeichnung>\n' + fuss('AX_LagebezeichnungOhneHausnummer'))
    for kennung, lage, nummer in m.lmh:
        yield (kopf('AX_LagebezeichnungMitHausnummer', kennung) +
               f'{T5}<lagebezeichnung>\n{T6}<AX_Lagebezeichnung>\n{lage_verschluesselt(lage, 7)}'
               f'{T6}</AX_Lagebezeichnung>\n{T5}</lagebezeichnung>\n{T5}<hausnummer>{nummer}</hausnummer>\n' +
               fuss('AX_LagebezeichnungMitHausnummer'))


GEMEINDEZUGEHOERIGKEIT = schluessel_block(
    'gemeindezugehoerigkeit', 'AX_Gemeindekennzeichen',
    (('land', LAND), ('regierungsbezirk', REGIERUNGSBEZIRK), ('kreis', KREIS), ('gemeinde', GEMEINDE)))


def flurstuecke(m):
    ids = m.ids
    gemarkung = [schluessel_block('gemarkung', 'AX_Gemarkung_Schluessel',
                                  (('land', LAND), ('gemarkungsnummer', nummer))) for nummer, _ in GEMARKUNGEN]
    for f in m.flurstuecke:
        ul, ur = f.unten
        orr, ol = f.oben
        if f.bogen:
            aussen = [[('Arc', (ul, f.bogen, ur))], [('LineString', (ur, orr, ol, ul))]]
        else:
            aussen = [[('LineString', (ul, ur, orr, ol, ul))]]
        nummer = f'{T6}\t<zaehler>{f.zaehler}</zaehler>\n'
        if f.nenner:
            nummer += f'{T6}\t<nenner>{f.nenner}</nenner>\n'
        teile = [kopf('AX_Flurstueck', f.id), flaeche(ids, aussen, [f.loch] if f.loch else []),
                 gemarkung[f.gem],
                 f'{T5}<flurstuecksnummer>\n{T6}<AX_Flurstuecksnummer>\n{nummer}{T6}</AX_Flurstuecksnummer>\n'
                 f'{T5}</flurstuecksnummer>\n'
                 f'{T5}<flurstueckskennzeichen>{kennzeichen(f)}</flurstueckskennzeichen>\n'
                 f'{T5}<amtlicheFlaeche uom="urn:adv:uom:m2">{f.flaeche}.00</amtlicheFlaeche>\n'
                 f'{T5}<flurnummer>{f.flur}</flurnummer>\n'
                 f'{T5}<rechtsbehelfsverfahren>false</rechtsbehelfsverfahren>\n'
                 f'{T5}<zeitpunktDerEntstehung>{f.entstehung}</zeitpunktDerEntstehung>\n',
                 GEMEINDEZUGEHOERIGKEIT]
        if f.buchung:
            teile.append(verweis('istGebucht', f.buchung))
        for ziel in f.ohne:
            teile.append(verweis('zeigtAuf', ziel))
        for ziel in f.mit:
            teile.append(verweis('weistAuf', ziel))
        teile.append(fuss('AX_Flurstueck'))
        yield ''.join(teile)


def beschriftungen(m):
    ids = m.ids
    for f in m.flurstuecke:
        if not f.pto:
            continue
        (ul, ur), (orr, ol) = f.unten, f.oben
        x = (ul[0] + ur[0] + orr[0] + ol[0]) / 4
        y = (ul[1] + ur[1] + orr[1] + ol[1]) / 4
        text = f'{f.zaehler}/{f.nenner}' if f.nenner else str(f.zaehler)
        yield (kopf('AP_PTO', f.pto, 'DKKM1000') +
               f'{T5}<position>\n{T6}<gml:Point srsName="{CRS}" gml:id="{ids.geo()}">\n'
               f'{T6}\t<gml:pos>{x:.3f} {y:.3f}</gml:pos>\n{T6}</gml:Point>\n{T5}</position>\n'
               f'{T5}<schriftinhalt>{text}</schriftinhalt>\n{T5}<fontSperrung>0.0</fontSperrung>\n'
               f'{T5}<skalierung>1.000</skalierung>\n{T5}<horizontaleAusrichtung>zentrisch</horizontaleAusrichtung>\n'
               f'{T5}<vertikaleAusrichtung>Basis</vertikaleAusrichtung>\n{T5}<signaturnummer>4111</signaturnummer>\n'
               f'{T5}<art>ZAE_NEN</art>\n' + verweis('dientZurDarstellungVon', f.id) + fuss('AP_PTO'))


def anteil_block(anteil):
    zaehler, nenner = anteil
    return (f'{T5}<anteil>\n{T6}<AX_Anteil>\n{T6}\t<zaehler>{zaehler}.000000000000</zaehler>\n'
            f'{T6}\t<nenner>{nenner}.000000000000</nenner>\n{T6}</AX_Anteil>\n{T5}</anteil>\n')


def grundbuch(m):
    for kennung, art, lfd, anteil, nummer, blatt, an in m.buchungen:
        teile = [kopf('AX_Buchungsstelle', kennung), f'{T5}<buchungsart>{art}</buchungsart>\n',
                 f'{T5}<laufendeNummer>{lfd}</laufendeNummer>\n']
        if anteil:
            teile.append(anteil_block(anteil))
        if nummer:
            teile.append(f'{T5}<nummerImAufteilungsplan>{nummer}</nummerImAufteilungsplan>\n')
        teile.append(verweis('istBestandteilVon', blatt))
        if an:
            teile.append(verweis('an', an))
        teile.append(fuss('AX_Buchungsstelle'))
        yield ''.join(teile)
    for kennung, gem, nummer, blattart in m.blaetter:
        bezirk = GEMARKUNGEN[gem][0]
        yield (kopf('AX_Buchungsblatt', kennung) +
               f'{T5}<buchungsblattkennzeichen>{LAND}{bezirk}{nummer.rjust(7, "0")}</buchungsblattkennzeichen>\n' +
               schluessel_block('buchungsblattbezirk', 'AX_Buchungsblattbezirk_Schluessel',
                                (('land', LAND), ('bezirk', bezirk))) +
               f'{T5}<buchungsblattnummerMitBuchstabenerweiterung>{nummer}'
               f'</buchungsblattnummerMitBuchstabenerweiterung>\n{T5}<blattart>{blattart}</blattart>\n' +
               fuss('AX_Buchungsblatt'))
    for kennung, lfd, anteil, eigentuemerart, blatt, person in m.namensnummern:
        yield (kopf('AX_Namensnummer', kennung) +
               f'{T5}<laufendeNummerNachDIN1421>{lfd}</laufendeNummerNachDIN1421>\n' +
               (anteil_block(anteil) if anteil else '') +
               f'{T5}<eigentuemerart>{eigentuemerart}</eigentuemerart>\n' +
               verweis('istBestandteilVon', blatt) + verweis('benennt', person) + fuss('AX_Namensnummer'))
    for kennung, name, anrede, vorname, geburtsname, datum, anschrift in m.personen:
        teile = [kopf('AX_Person', kennung), f'{T5}<nachnameOderFirma>{xml_text(name)}</nachnameOderFirma>\n']
        if anrede:
            teile.append(f'{T5}<anrede>{anrede}</anrede>\n')
        if vorname:
            teile.append(f'{T5}<vorname>{vorname}</vorname>\n')
        if geburtsname:
            teile.append(f'{T5}<geburtsname>{geburtsname}</geburtsname>\n')
        if datum:
            teile.append(f'{T5}<geburtsdatum>{datum}</geburtsdatum>\n')
        if anschrift:
            teile.append(verweis('hat', anschrift))
        teile.append(fuss('AX_Person'))
        yield ''.join(teile)
    for kennung, ort, plz, strasse, hausnummer in m.anschriften:
        yield (kopf('AX_Anschrift', kennung) + f'{T5}<ort_Post>{ort}</ort_Post>\n'
               f'{T5}<postleitzahlPostzustellung>{plz}</postleitzahlPostzustellung>\n'
               f'{T5}<strasse>{strasse}</strasse>\n{T5}<hausnummer>{hausnummer}</hausnummer>\n' +
               fuss('AX_Anschrift'))


def nutzung(m):
    ids = m.ids
    for klasse, kennung, merkmal, segmente, loecher in m.nutzung:
        yield (kopf(klasse, kennung) + flaeche(ids, [segmente], loecher) +
               (f'{T5}<vegetationsmerkmal>{merkmal}</vegetationsmerkmal>\n' if merkmal else '') +
               fuss(klasse))


# The soil assessment of the agricultural areas, alternately arable land and grassland:
# (6.0 element, 7.1 element, code) in the order of the schema, then the two numbers.
BODENSCHAETZUNG = (
    ((('kulturart', 'nutzungsart', '1000'), ('bodenart', 'bodenart', '3100'),
      ('zustandsstufeOderBodenstufe', 'zustandsstufe', '1300'),
      ('entstehungsartOderKlimastufeWasserverhaeltnisse', 'entstehungsart', '4000')), '62', '58'),
    ((('kulturart', 'nutzungsart', '3000'), ('bodenart', 'bodenart', '2100'),
      ('zustandsstufeOderBodenstufe', 'bodenstufe', '2200'),
      ('entstehungsartOderKlimastufeWasserverhaeltnisse', 'klimastufe', '6200'),
      ('entstehungsartOderKlimastufeWasserverhaeltnisse', 'wasserverhaeltnisse', '7300')), '45', '41'),
)


def bodenschaetzung(m, gid):
    ids = m.ids
    nummer = 0
    for klasse, _, _, segmente, loecher in m.nutzung:
        if klasse != 'AX_Landwirtschaft':
            continue
        merkmale, bodenzahl, ackerzahl = BODENSCHAETZUNG[nummer % 2]
        nummer += 1
        werte = ''.join(f'{T5}<{e60 if gid == "6.0" else e71}>{code}</{e60 if gid == "6.0" else e71}>\n'
                        for e60, e71, code in merkmale)
        yield (kopf('AX_Bodenschaetzung', ids.neu()) + flaeche(ids, [segmente], loecher) + werte +
               f'{T5}<bodenzahlOderGruenlandgrundzahl>{bodenzahl}</bodenzahlOderGruenlandgrundzahl>\n'
               f'{T5}<ackerzahlOderGruenlandzahl>{ackerzahl}</ackerzahlOderGruenlandzahl>\n' +
               fuss('AX_Bodenschaetzung'))


def ausdehnung(m):
    xs = [p[0] for f in m.flurstuecke for p in (f.unten + f.oben)]
    ys = [p[1] for f in m.flurstuecke for p in (f.unten + f.oben)]
    ys += [f.bogen[1] for f in m.flurstuecke if f.bogen]
    return (min(xs), min(ys)), (max(xs), max(ys))


def schreiben(m, ziel, argumente, gid='6.0', mit_bodenschaetzung=False):
    unten, oben = ausdehnung(m)
    namensraum = f'http://www.adv-online.de/namespaces/adv/gid/{gid}'
    kopfzeilen = (
        '<?xml version="1.0" encoding="UTF-8"?>\n'
        f'<!-- Invented sample data (Musterstadt), written by samples/nas_muster_erzeugen.py: {argumente} -->\n'
        '<AX_Bestandsdatenauszug\n'
        f'\txmlns="{namensraum}"\n'
        f'\txmlns:adv="{namensraum}"\n'
        '\txmlns:gml="http://www.opengis.net/gml/3.2"\n'
        '\txmlns:wfs="http://www.adv-online.de/namespaces/adv/gid/wfs"\n'
        '\txmlns:xlink="http://www.w3.org/1999/xlink"\n'
        '\txmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"\n'
        f'\txsi:schemaLocation="{namensraum} NAS-Operationen.xsd">\n'
        '\t<erlaeuterung>Musterdaten Musterstadt</erlaeuterung>\n'
        '\t<erfolgreich>true</erfolgreich>\n'
        '\t<antragsnummer>MUSTER0001</antragsnummer>\n'
        '\t<allgemeineAngaben>\n\t\t<AX_K_Benutzungsergebnis>\n\t\t\t<empfaenger>\n'
        '\t\t\t\t<AA_Empfaenger>\n\t\t\t\t\t<manuell>true</manuell>\n\t\t\t\t</AA_Empfaenger>\n'
        '\t\t\t</empfaenger>\n\t\t</AX_K_Benutzungsergebnis>\n\t</allgemeineAngaben>\n'
        '\t<koordinatenangaben>\n\t\t<AA_Koordinatenreferenzsystemangaben>\n'
        f'\t\t\t<crs xlink:href="{CRS}"></crs>\n'
        '\t\t\t<anzahlDerNachkommastellen>3</anzahlDerNachkommastellen>\n'
        '\t\t\t<standard>true</standard>\n'
        '\t\t</AA_Koordinatenreferenzsystemangaben>\n\t</koordinatenangaben>\n'
        '\t<enthaelt>\n'
        '\t\t<wfs:FeatureCollection gml:id="MUSTER">\n'
        '\t\t\t<gml:boundedBy>\n\t\t\t\t<gml:Envelope>\n'
        f'\t\t\t\t\t\t<gml:pos srsName="{CRS}">{unten[0]:.3f} {unten[1]:.3f}</gml:pos>\n'
        f'\t\t\t\t\t\t<gml:pos srsName="{CRS}">{oben[0]:.3f} {oben[1]:.3f}</gml:pos>\n'
        '\t\t\t\t</gml:Envelope>\n\t\t\t</gml:boundedBy>\n')
    with open(ziel, 'w', encoding='utf-8', newline='\n') as aus:
        aus.write(kopfzeilen)
        puffer = []
        teile = [verwaltung, lagen, flurstuecke, beschriftungen, grundbuch, nutzung]
        if mit_bodenschaetzung:
            teile.append(lambda m: bodenschaetzung(m, gid))
        for teil in teile:
            for objekt in teil(m):
                puffer.append(objekt)
                if len(puffer) >= 2000:
                    aus.write(''.join(puffer))
                    puffer.clear()
        puffer.append('\t\t</wfs:FeatureCollection>\n\t</enthaelt>\n</AX_Bestandsdatenauszug>\n')
        aus.write(''.join(puffer))


def main(argv=None):
    parser = argparse.ArgumentParser(description=__doc__.split('\n\n')[0])
    parser.add_argument('--flurstuecke', type=int, default=24, help='number of parcels (default 24)')
    parser.add_argument('--seed', type=int, default=1, help='seed of the values (default 1)')
    parser.add_argument('--gid', choices=('6.0', '7.1'), default='6.0',
                        help='GeoInfoDok version of the namespace and the element names (default 6.0)')
    parser.add_argument('--bodenschaetzung', action='store_true',
                        help='add a soil assessment over the agricultural areas')
    parser.add_argument('--out', help='output file (default: musterstadt_nas.xml beside this script)')
    args = parser.parse_args(argv)
    if args.flurstuecke < 1:
        parser.error('--flurstuecke must be at least 1')
    ziel = args.out or os.path.join(os.path.dirname(os.path.abspath(__file__)), 'musterstadt_nas.xml')
    modell = Modell(args.flurstuecke, args.seed)
    # "--" may not stand in an XML comment: the arguments are named in words.
    worte = f'{args.flurstuecke} parcels, seed {args.seed}'
    if args.gid != '6.0':
        worte += f', GeoInfoDok {args.gid}'
    if args.bodenschaetzung:
        worte += ', with soil assessment'
    schreiben(modell, ziel, worte, args.gid, args.bodenschaetzung)
    return 0


if __name__ == '__main__':
    sys.exit(main())
