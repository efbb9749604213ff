# Reads sheet 1 of the workbook argv[1] with zipfile and ElementTree: each row's cells (US after
# each cell, RS after each row), then one last row with the number formats of all cells below
# the captions.
import re, sys, zipfile, xml.etree.ElementTree as ET
M = '{http://schemas.openxmlformats.org/spreadsheetml/2006/main}'
z = zipfile.ZipFile(sys.argv[1])
geteilt = []
if 'xl/sharedStrings.xml' in z.namelist():
    for si in ET.fromstring(z.read('xl/sharedStrings.xml')).iter(M + 'si'):
        geteilt.append(''.join(t.text or '' for t in si.iter(M + 't')))
xfs = ET.fromstring(z.read('xl/styles.xml')).find(M + 'cellXfs').findall(M + 'xf')
blatt = ET.fromstring(z.read('xl/worksheets/sheet1.xml'))
def spalte(ref):
    n = 0
    for c in ref:
        if c.isalpha():
            n = n * 26 + ord(c) - 64
    return n - 1
zeilen, formate = [], set()
for r in blatt.find(M + 'sheetData').findall(M + 'row'):
    zellen = {}
    for c in r.findall(M + 'c'):
        t = c.get('t')
        if t == 'inlineStr':
            v = ''.join(x.text or '' for x in c.iter(M + 't'))
        elif t == 's':
            v = geteilt[int(c.find(M + 'v').text)]
        else:
            v = 'ZAHL:' + (c.find(M + 'v').text if c.find(M + 'v') is not None else '')
        # Excel's own escape of characters that XML can't carry raw (CR is "_x000D_").
        zellen[spalte(c.get('r'))] = re.sub(r'_x([0-9A-Fa-f]{4})_', lambda m: chr(int(m.group(1), 16)), v)
        if int(r.get('r')) > 1:
            formate.add(xfs[int(c.get('s', '0'))].get('numFmtId'))
    zeilen.append(zellen)
breite = max((max(z) + 1 for z in zeilen if z), default=0)
aus = ''
for z in zeilen:
    aus += ''.join(z.get(i, '') + '\x1f' for i in range(breite)) + '\x1e'
aus += ''.join(f + '\x1f' for f in sorted(formate)) + '\x1e'
sys.stdout.buffer.write(aus.encode('utf-8'))
