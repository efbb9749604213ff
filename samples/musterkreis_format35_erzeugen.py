#!/usr/bin/env python3
"""Writes samples/musterkreis_format35.wldge: an invented WLDGE extract of format 35 for the quick
reader, with three parcels, their owners in "Z" lines and the key texts of blocks 7 and 8
(Windows-1252, CR LF)."""
import os

from musterkreis_erzeugen import satz


def eigentuemer(key, blatt, bvnr, name, zusatz, strasse, ort):
    """The "Z" lines of one owner: part 1 with the sub-parts 0 (new owner) to 4."""
    kopf = [(40, blatt), (47, bvnr), (56, '1'), (57, '1')]
    return [satz('4', key, 'Z', kopf + [(77, str(nr)), (78, text)])
            for nr, text in enumerate(['', name, zusatz, strasse, ort])]


def flurstueck(zaehler, nenner, flaeche, weitere, besitzer, bemerkung=None):
    key = '051234-001-%s/%s' % (zaehler, nenner)
    r = [satz('4', key, 'B', [(22, '.00'), (25, 'A'), (84, flaeche), (95, '07')]),
         satz('4', key, 'D', [(72, '35001234'), (81, '56001234')])]
    r += [satz('4', key, art, f) for art, f in weitere]
    for b in besitzer:
        r += eigentuemer(key, *b)
    if bemerkung:
        r.append(satz('4', key, 'Z', [(57, '2'), (64, bemerkung)]))
    return r


L = [satz('1', '05', ' ', [(27, 'E   01'), (34, '35'), (40, 'Musterkreis Auszug 23.11.2026')])]
L += flurstueck('00042', '000', '000000512',
                [('G', [(43, '00100'), (49, '0003')]),
                 ('K', [(34, '12-345 0000512')])],
                [('00123', '0001', 'Mustermann, Erika', 'geb. Beispiel', 'Musterweg 3',
                  '12345 Musterstadt'),
                 ('00123', '0001', ',,,Dr. Max Mustermann', '', 'Musterweg 3', '12345 Musterstadt')],
                'Gütergemeinschaft')
L += flurstueck('00043', '001', '000000000',
                [('G', [(43, '00100'), (49, '0005'), (54, 'a')]),
                 ('N', [(34, 'Fläche unter 1 m²: 0,5')]),
                 ('U', [(31, '12345 Flurbereinigung Musterbach')])],
                [('00456', '0001', 'Gemeinde Musterstadt', '', 'Rathausplatz 1', '12345 Musterstadt')])
L += flurstueck('00044', '000', '000003456',
                [('H', [(34, 'Am Feldrain')]),
                 ('K', [(34, '21-110 0003456')])],
                [])
L += [satz('7', '0512', 'A', [(28, '00'), (30, 'Katasteramt'), (57, 'Musterkreis')]),
      satz('7', '051234', 'B', [(9, '05123000'), (22, '0815'), (28, '09'), (30, 'Musterstadt')]),
      satz('7', '05123', 'C', [(28, '09'), (30, 'Musterkreis')]),
      satz('7', '05123000', 'D', [(28, '09'), (30, 'Musterstadt')]),
      satz('7', '05123000    00100', 'E', [(28, '09'), (30, 'Musterweg')]),
      satz('8', '0815', 'A', [(28, '0'), (30, 'Amtsgericht Musterstadt')])]

ziel = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'musterkreis_format35.wldge')
with open(ziel, 'wb') as f:
    f.write(('\r\n'.join(L) + '\r\n').encode('cp1252'))
