#!/usr/bin/env python3
"""Writes samples/musterkreis_format32.wldge: an invented WLDGE extract of format 32 with
four Bestände, four parcels and the key texts of blocks 7 to 9 (Windows-1252, CR LF)."""
import os


def satz(block, schluessel, art, felder=()):
    """One record: block digit in column 1, key from column 2, kind in column 27, then fields
    placed at their 1-based columns."""
    z = [' '] * 140
    z[0] = block
    for i, c in enumerate(schluessel):
        z[1 + i] = c
    z[26] = art
    for spalte, text in felder:
        for i, c in enumerate(text):
            while len(z) < spalte + i:
                z.append(' ')
            z[spalte - 1 + i] = c
    return ''.join(z).rstrip()


def eigentuemer(bestand, pos, anrede, name, zusatz, geb, strasse, ort, anteil):
    """The five lines of one owner; `pos` is the number in the register, "0001.00.00000.00"."""
    return [satz('2', bestand, '1', [(28, pos), (45, anrede), (48, '0'), (50, '01'), (53, anteil)]),
            satz('2', bestand, '1', [(28, pos), (48, '1'), (49, name)]),
            satz('2', bestand, '1', [(28, pos), (48, '2'), (49, zusatz), (91, geb)]),
            satz('2', bestand, '1', [(28, pos), (48, '3'), (49, strasse)]),
            satz('2', bestand, '1', [(28, pos), (48, '4'), (49, ort)])]


def buchung(bestand, zaehler, nenner, bvnr):
    """The line of a Bestand that books a parcel: its key at 31, "." behind it."""
    return satz('2', bestand, '0', [(16, bvnr), (26, '1'), (31, '051234-001-%s/%s' % (zaehler, nenner)),
                                    (51, '.')])


def flurstueck(zaehler, nenner, flaeche, weitere, buchungen):
    key = '051234-001-%s/%s' % (zaehler, nenner)
    r = [satz('3', key, 'B', [(22, '.00'), (25, 'A'), (32, '0'), (34, '2001/00123-00'), (84, flaeche),
                              (95, '07')]),
         satz('3', key, 'D', [(31, 'Flur 1 Blatt 2'), (72, '35001234'), (81, '56001234'),
                              (90, '0815'), (95, '2301')])]
    r += [satz('3', key, art, f) for art, f in weitere]
    r += [satz('3', key, 'X', [(33, '051234-' + blatt), (47, bvnr), (56, '1')])
          for blatt, bvnr in buchungen]
    return r


def main():
    ziel = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'musterkreis_format32.wldge')
    with open(ziel, 'wb') as f:
        f.write(('\r\n'.join(zeilen()) + '\r\n').encode('cp1252'))


def zeilen():
    L = [satz('1', '05', ' ', [(27, 'E   01'), (34, '32'), (40, 'Musterkreis Auszug 23.11.2026')])]
    # Block 2: each Bestand with its owners, then the lines that book its parcels.
    L += eigentuemer('051234-000123', '0001.00.00000.00', '2', 'Mustermann, Erika, , ', 'geb. Beispiel',
                     '12.08.1964', 'Musterweg 3', '12345 Musterstadt', '1/2')
    L += eigentuemer('051234-000123', '0002.00.00000.00', '1', 'Mustermann, Max, , Dr.', '', '03.02.1960',
                     'Musterweg 3', '12345 Musterstadt', '1/2')
    L += [satz('2', '051234-000123', '2', [(31, '01'), (34, 'Gütergemeinschaft')])]
    L += [buchung('051234-000123', '00042', '000', '0001'), buchung('051234-000123', '00043', '001', '0002')]
    L += eigentuemer('051234-000456', '0001.00.00000.00', '3', 'Gemeinde Musterstadt', '', '',
                     'Rathausplatz 1', '12345 Musterstadt', '')
    L += [buchung('051234-000456', '00043', '001', '0001')]
    L += eigentuemer('051234-000789', '0001.00.00000.00', '1', 'Beispiel, Jürgen, , ', '', '30.11.1971',
                     'Lindenallee 17', '12346 Nordstadt', '')
    L += [buchung('051234-000789', '00044', '000', '0001')]
    # Block 3: the parcels.
    L += flurstueck('00042', '000', '000000512',
                    [('G', [(31, '051234000001'), (43, '00100'), (49, '3')]),
                     ('H', [(31, '01'), (34, 'Musterweg 3')]),
                     ('K', [(34, '12-345 0000512'), (41, '0000512')])],
                    [('000123', '0001')])
    L += flurstueck('00043', '001', '000001200',
                    [('G', [(31, '051234000001'), (43, '00100'), (49, '5')]),
                     ('K', [(34, '12-345 0000800'), (41, '0000800')]),
                     ('K', [(34, '21-110 0000400'), (41, '0000400')]),
                     ('M', [(34, '32-101 0000400'), (41, '0000400'), (49, 'L 4 V'), (60, '045'), (64, '050')])],
                    [('000123', '0002'), ('000456', '0001')])
    L += flurstueck('00044', '000', '000003456',
                    [('H', [(31, '01'), (34, 'Am Feldrain')]),
                     ('K', [(34, '21-110 0003456'), (41, '0003456')]),
                     ('M', [(34, '32-101 0002000'), (41, '0002000'), (49, 'sL 3 D'), (60, '060'), (64, '058')]),
                     ('M', [(34, '32-102 0001456'), (41, '0001456'), (49, 'L 5 V'), (60, '040'), (64, '038')])],
                    [('000789', '0001')])
    # A parcel booked on a folio that is not in the extract: the trailer counts it, the complete
    # reader's table doesn't show it.
    L += flurstueck('00045', '000', '000000250', [('G', [(31, '051234000001'), (43, '00200')])],
                    [('000999', '0001')])
    # Blocks 7 to 9: the key texts; the place and street lines in both forms the readers use.
    L += [satz('7', '0512', 'A', [(28, '00'), (30, 'Katasteramt'), (57, 'Musterkreis')]),
          satz('7', '051234', 'B', [(9, '051234000001'), (22, '0815'), (30, 'Musterstadt')]),
          satz('7', '05123', 'C', [(30, 'Musterkreis')]),
          satz('7', '051234000001', 'D', [(30, 'Musterstadt')]),
          satz('7', '05123400000100100', 'E', [(28, '00'), (30, 'Musterweg')]),
          satz('7', '05123400000100100', 'E', [(28, '09')]),
          satz('7', '05123400000100200', 'E', [(28, '00'), (30, 'Lindenallee')]),
          satz('7', '05123400000100200', 'E', [(28, '09')]),
          satz('8', '0815', 'A', [(28, '0'), (30, 'Amtsgericht'), (57, 'Musterstadt')]),
          satz('8', '01', 'B', [(28, '0'), (30, 'Natürliche Person')]),
          satz('8', '1', 'C', [(28, '0'), (30, 'Grundstück')]),
          satz('9', '2301', 'B', [(30, 'Finanzamt'), (57, 'Musterstadt')]),
          satz('9', '12345', 'D', [(30, 'Wohnbaufläche')]),
          satz('9', '21110', 'D', [(30, 'Ackerland')]),
          satz('9', '32101', 'E', [(30, 'Acker, Bodenschätzung')]),
          satz('9', '32102', 'E', [(30, 'Acker, Bodenschätzung')])]
    L += [satz('9', '', 'Z', [(30, '%07d' % (len(L) + 1)), (37, '0000004'), (44, '0000004')])]
    return L


if __name__ == "__main__":
    main()
