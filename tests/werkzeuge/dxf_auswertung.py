#!/usr/bin/python3
"""What ezdxf reads in a drawing, for the tests: one line per layer and entity type with its count
("L <layer> <type> <n>"), one line per POLYLINE of the layer named as the second argument with its
closed flag and area ("P <closed> <area>", in file order), and the number of entities that lie at
the origin ("NULL <n>")."""
import collections
import sys

import ezdxf

doc = ezdxf.readfile(sys.argv[1])
flaechenlayer = sys.argv[2] if len(sys.argv) > 2 else ""
zahlen = collections.Counter()
am_nullpunkt = 0
for e in doc.modelspace():
    t = e.dxftype()
    zahlen[(e.dxf.layer, t)] += 1
    if t == "POLYLINE":
        punkte = [v.dxf.location for v in e.vertices]
        erster = punkte[0] if punkte else None
        if e.dxf.layer == flaechenlayer:
            flaeche = 0.0
            for (x1, y1, *_), (x2, y2, *_) in zip(punkte, punkte[1:] + punkte[:1]):
                flaeche += x1 * y2 - x2 * y1
            print("P", int(e.is_closed), abs(flaeche) / 2)
    elif t == "LINE":
        erster = e.dxf.start
    elif t in ("TEXT", "INSERT"):
        erster = e.dxf.insert
    elif t == "POINT":
        erster = e.dxf.location
    elif t == "ARC":
        erster = e.dxf.center
    else:
        erster = None
    if erster is not None and abs(erster[0]) < 1 and abs(erster[1]) < 1:
        am_nullpunkt += 1
for (layer, t), n in sorted(zahlen.items()):
    print("L", layer, t, n)
print("NULL", am_nullpunkt)
