# Reads the XML export argv[1] with ElementTree: first a row of "ok" for each column whose element
# name, unescaped, gives its key, then the captions, then one row of cells per <Zeile> in column
# order (US after each cell, RS after each row).
import sys, re, xml.etree.ElementTree as ET
wurzel = ET.parse(sys.argv[1]).getroot()
assert wurzel.tag == 'Kataster'
spalten = wurzel.find('Spalten').findall('Spalte')
def zurueck(name):
    return re.sub(r'_x([0-9A-F]{8}|[0-9A-F]{4})_', lambda m: chr(int(m.group(1), 16)), name)
aus = ''.join(('ok' if zurueck(s.get('name')) == s.get('schluessel') else 'FALSCH:' + s.get('name')) + '\x1f' for s in spalten) + '\x1e'
aus += ''.join(s.get('ueberschrift') + '\x1f' for s in spalten) + '\x1e'
for z in wurzel.findall('Zeile'):
    kinder = list(z)
    assert [k.tag for k in kinder] == [s.get('name') for s in spalten]
    aus += ''.join((k.text or '') + '\x1f' for k in kinder) + '\x1e'
sys.stdout.buffer.write(aus.encode('utf-8'))
