#include "cli/befehle.hpp"

#include "core/programm.hpp"

#include <ostream>

namespace flurix::cli {

const std::vector<Befehl>& Befehle() {
    static const std::vector<Befehl> befehle = {
        {"erkennen", "sagt, welcher Art eine Eingabedatei ist und welcher Leser sie nimmt",
         "Aufruf: flurix erkennen <datei>...\n"
         "  Sieht sich jede Datei an, ohne sie zu ändern, und gibt je Datei eine Zeile aus:\n"
         "  <datei> TAB <Art> TAB <Leser>. Ende mit 1, wenn eine Datei nicht unterstützt wird.\n",
         BefehlErkennen},
        {"import", "liest eine Eingabedatei wie \"Datei öffnen\", ohne Fenster und ohne Fragen",
         "Aufruf: flurix import <datei> [<datei>...] [Optionen]\n"
         "  Die Art folgt der Dateiendung: .wldge, .fil, .xml (Web-XML oder NAS), .mdb, .fkz.\n"
         "  --komplett        WLDGE-Daten komplett einlesen (nur Abgabeformat 32)\n"
         "  --schnell         WLDGE-Daten teilweise einlesen (Vorgabe)\n"
         "  --alle-eigentuemer-in-einer-zeile   alle Eigentümer je Flurstück eine Datenzeile\n"
         "  --name-umdrehen   [Name, Vorname] in [Vorname Name] ändern\n"
         "  --nutzung-verschluesselt   tatsächliche Nutzung nicht vollständig\n"
         "  --anfuegen        Web-XML an die Tabelle aus --out anfügen (nur .xml)\n"
         "  --out <datei>     die Tabelle schreiben (.tsv, .fil)\n"
         "  Mehrere .xml-Dateien sind Web-XML-Auszüge und werden in einem Lauf eingelesen.\n"
         "  Fragen werden so beantwortet, dass der Lauf weitergeht, und stehen auf stderr:\n"
         "  \"Es werden <n> ausgewählte XML-Dateien eingelesen! Weiter?\" mit Ja; mit --anfuegen\n"
         "  und einer vorhandenen --out-Tabelle \"Sollen die Daten an die vorhandene Datenbank\n"
         "  angefügt werden?\" mit Ja. Ohne --anfuegen ersetzen die Daten die Tabelle, ohne Frage,\n"
         "  da die Tabelle leer beginnt.\n",
         BefehlImport},
        {"konfig", "sichert das Konfigurationsverzeichnis als Zip-Archiv oder liest es zurück",
         "Aufruf: flurix konfig sichern <archiv.zip>\n"
         "        flurix konfig einlesen <archiv.zip>\n"
         "        flurix konfig starteinstellung <dienst> <rechtswert;hochwert> <epsg> <maßstab>\n"
         "  Sichert alle Dateien von config/ der Installation mit ihren Pfaden, oder packt ein\n"
         "  solches Archiv über config/ aus. \"starteinstellung\" schreibt den Start der Karte\n"
         "  (StartMapWebService...) in Flurix.dat, nach einer Sicherungskopie der Datei.\n",
         BefehlKonfig},
        {"suchen", "sucht einen Begriff in einer Spalte der Tabelle wie die Suchleiste",
         "Aufruf: flurix suchen <tabelle> --spalte <schlüssel> [--begriff <begriff>] [Optionen]\n"
         "  Sucht wie die Suchleiste: der Begriff wird für die Spalte mit Nullen aufgefüllt\n"
         "  (Fläche 9 Stellen, Grundbuchblatt 7, Flur 4, Flurstück \"231\" als \"00231/0000\",\n"
         "  \"231/1\" als \"00231/0001\", \"12_3\" als \"00012_0003\"), sonst wie eingegeben. Er trifft\n"
         "  die ganze Zelle ohne Rücksicht auf Groß- und Kleinschreibung, mit \"*\" am Ende ihren\n"
         "  Anfang. Ohne Begriff trifft jede Zeile (mit --gemarkung und --flur die Zeilen der Flur).\n"
         "  Die Treffer werden nach Gemarkungsschlüssel und Eigentümerposition sortiert.\n"
         "  Findet die aufgefüllte Form nichts, wird der Begriff wie eingegeben gesucht (WLDGE\n"
         "  \"00012/003\", Web-XML \"12/3\"); trifft er so, steht ein Hinweis auf stderr.\n"
         "  --gemarkung <name> --flur <nr>   nur Zeilen dieser Gemarkung (Name) und Flur\n"
         "  --alle-eigentuemer-in-einer-zeile   \"*\" anhängen: trifft den Anfang einer Namensliste\n"
         "  --out <datei>     die Trefferzeilen als Tabelle schreiben (.tsv, .fil), alle Spalten;\n"
         "                    auf stdout steht dann die Zahl der Treffer\n"
         "  Ohne --out stehen die Trefferzeilen als .tsv auf stdout. Kein Treffer: die Meldung\n"
         "  steht auf stderr, die Ausgabe hat keine Zeile, Ende mit 0.\n",
         BefehlSuchen},
        {"markieren", "markiert die Flurstücke einer Flurstücksliste (.lst) in der Tabelle",
         "Aufruf: flurix markieren <tabelle> --liste <datei.lst> --out <tabelle>\n"
         "  Wie \"Markierung laden\": jede Zeile, deren Flurstückskennzeichen die Liste nennt, wird\n"
         "  markiert (Spalte checkdruck = 1, angelegt, wenn sie fehlt). Eine Zeile der Liste ist ein\n"
         "  Flurstückskennzeichen oder <Gemarkungsnummer> <Flur> <Flurstücksnummer>, z.B.\n"
         "  \"12195500700231000100\", \"121955 7 231/1\" oder \"12-1955-007-00231/0001\".\n"
         "  Nicht gefundene Kennzeichen stehen in <datei.lst>.err neben der Liste. Markierte Zeilen\n"
         "  stehen vorn, nach Gemarkungsschlüssel, Flur, Grundbuchblatt, Flurstück sortiert.\n"
         "  --out <datei>     die Tabelle mit den Markierungen schreiben (.tsv, .fil)\n"
         "  Ende mit 1, wenn eine Zeile der Liste kein gültiges Format hat: die Meldung steht auf\n"
         "  stderr, die Markierungen bis dahin werden geschrieben.\n",
         BefehlMarkieren},
        {"export", "schreibt die Tabelle als Text, Excel, XML, Tabelle, Access-Form oder HTML",
         "Aufruf: flurix export <tabelle> --format <format> --out <datei> [--nur-markierte]\n"
         "                     [--ansicht <ansicht>]\n"
         "  Wie \"Speichern unter\" des Hauptfensters; <tabelle> ist eine .fil oder .tsv.\n"
         "  --format txt-tab     Text, Spaltentrenner TAB (Windows-1252, CR LF, Überschriften in\n"
         "                       der ersten Zeile, ein Trenner auch hinter dem letzten Feld)\n"
         "           txt-dollar  dasselbe mit \"$\" als Trenner\n"
         "           xlsx        Excel-Arbeitsmappe, alle Spalten als Text\n"
         "           xml         XML-Dokument (Aufbau: README.md, \"XML-Export\")\n"
         "           fil         gespeicherte Tabelle: alle Zeilen und Spalten\n"
         "           sqlite      Access-Form: SQLite-Datenbank mit der Tabelle ACCESS\n"
         "           html        Bericht \"DataGrid Report\": alle Zeilen, sichtbare Spalten\n"
         "           tsv         Maschinenform: alle Zeilen und Spalten\n"
         "           geograf     GEOgraf-Stapeldatei GRAFBAT (.out, Windows-1252, CR LF); Zeilen\n"
         "                       ohne Koordinaten stehen in <datei>.err\n"
         "  --out <datei>        genau diese Datei wird geschrieben (kein Abschneiden am ersten\n"
         "                       Punkt wie im Dialog); ihr Pfad steht danach auf stdout\n"
         "  --nur-markierte      nur die markierten Zeilen (checkdruck) statt aller; fil, tsv und\n"
         "                       html schreiben immer alle Zeilen\n"
         "  --ansicht <ansicht>  die Spaltenansicht aus ALB_DatenbankSpalten.dat anwenden; sonst\n"
         "                       gelten Sichtbarkeit und Reihenfolge der Spalten aus der Tabelle\n"
         "  Für geograf:\n"
         "  --form ohne|alle|plausibel|stempel-a|stempel-b\n"
         "                       Textblock (nur Werte, alle mit Spaltenname, nur plausible\n"
         "                       beschriftet) oder Stempel A/B\n"
         "  --spalten <s1,s2,...> Ausgabespalten in Reihenfolge (Stempel ohne Angabe: Flurstück,\n"
         "                       Fläche, Grundbuchblatt, BVNR, Anteil_Grundstück, Name,\n"
         "                       Namenszusatz)\n"
         "  --art <n> --ebene <n> GEOgraf-Art und -Ebene (Art 233, wenn Flurstück gewählt ist)\n"
         "  --mkz <text>         Meridiankennziffer vor jedem Rechtswert (Vorgabe 3)\n"
         "  --ohne-fuehrende-nullen  Nummern ohne führende Nullen\n"
         "  --eine-zeile         Stempel: markierte Zeilen gleichen Flurstücks und Blatts in eine\n"
         "                       Zeile\n"
         "  SOURCE_DATE_EPOCH=<sekunden> legt Datum und Uhrzeit im Dateikopf fest (UTC).\n"
         "  Ohne Fenster wird jede Frage mit Ja beantwortet: eine vorhandene Datei wird ersetzt,\n"
         "  \"alle sichtbaren Datenspalten\" und \"alle selektierten Datenzeilen\" werden\n"
         "  ausgegeben. Fragen und Meldungen stehen auf stderr. Ende mit 1, wenn nichts\n"
         "  geschrieben wurde (leere Tabelle, Ordner nicht beschreibbar, Datei in Bearbeitung).\n",
         BefehlExport},
        {"nas", "liest eine NAS-Datei (ALKIS) ein und stellt daraus die Flurix-Tabelle zusammen",
         "Aufruf: flurix nas <datei.xml>|<gespeichert.sqlite> [--out <tabelle>] [Optionen]\n"
         "  Mit --out: liest jedes Objekt der NAS-Datei nach config/ALKIS_Knoten.dat in die\n"
         "  Objektdatenbank, stellt daraus die Tabelle Alkis zusammen (eine Zeile je Flurstück,\n"
         "  Buchung und Eigentümer; Spalten nach config/ALKIS_Zuordnung.dat) und schreibt sie wie\n"
         "  \"Import direkt in den Flurix\" als Flurix-Tabelle. Auf stdout steht die Zahl der Zeilen.\n"
         "  Ohne --out: nur das Einlesen; die Tabellen der Objektdatenbank mit ihrer Zeilenzahl\n"
         "  stehen TAB-getrennt auf stdout.\n"
         "  --out <datei>      die Tabelle schreiben; das Format folgt der Endung (.tsv, .fil, .txt,\n"
         "                     .xlsx, .xml, .sqlite, .html) oder --format\n"
         "  --format <format>  txt-tab, txt-dollar, xlsx, xml, fil, sqlite, html, tsv\n"
         "  --db <datei>       die Objektdatenbank (bleibt erhalten); ohne --db entsteht\n"
         "                     _tmpDAOdbFile<Datum Zeit>.sqlite im Arbeitsverzeichnis und wird\n"
         "                     am Ende gelöscht\n"
         "  --ohne-protokoll   keine Protokolldatei <datei.xml>.prn schreiben\n"
         "  --nutzung-ohne-ax  Anzeige \"Nutzung_tatsächlich\" ohne \"AX-Nutzung\" im Text\n"
         "  --optionen <text>  NAS-Optionen wie gespeichert: \"#chkNutzung_tatsächlich,1#...\"\n"
         "  --flaechen <art>   Flächenverschneidung vor der Zusammenstellung: alle (Nutzungsarten,\n"
         "                     Bodenschätzung, BOV), schnell (ausgewählte NA-Flächen und\n"
         "                     Bodenschätzung), bs, lw oder bov (nur diese Klasse)\n"
         "  --ohne-anpassung   die Flächen nicht an die Buchfläche anpassen\n"
         "  --svg <ordner>     Zeichnung und Austauschdateien jeder Verschneidung dort ablegen\n"
         "  --aktualisieren    die Datei ist eine NBA-Aktualisierung: ihre Operationen (Einfügen,\n"
         "                     Ersetzen, Löschen) in die Objektdatenbank --db übernehmen, alle in\n"
         "                     einer Transaktion (ein Fehler lässt die Datenbank unverändert)\n"
         "  Eine gespeicherte NAS-Datenbank (.sqlite, .mdb, .db, erkannt an der Tabelle AP_PTO)\n"
         "  wird ohne neues Einlesen in die Arbeitsdatenbank kopiert.\n"
         "  Meldungen, Hinweise und Protokoll stehen auf stderr. Ende mit 1, wenn die Datei nicht\n"
         "  gelesen oder keine Zeile zusammengestellt werden konnte.\n",
         BefehlNas},
        // The name fills the overview's 12 columns: the short text brings its own blank.
        {"nas-werkzeug", " NAS-XML-Werkzeuge: zusammenfügen, ID-Prüfung, ausdünnen, ANSI, GG-Out-Batch",
         "Aufruf: flurix nas-werkzeug <werkzeug> <datei>... [Optionen]\n"
         "  Die XML-Werkzeuge des NAS-Fensters; sie lesen NAS-Dateien als Text, ohne Datenbank:\n"
         "  zusammenfuegen <a.xml> <b.xml>...   Objekte mehrerer Dateien, jede gml:id einmal\n"
         "  idpruefung <a.xml>                  Kopie ohne wiederholte gml:id, mit Fehlerliste\n"
         "  ausduennen <a.xml>                  Kopie ohne die Objektarten der Liste\n"
         "  ansi <a.xml>                        UTF-8 nach Windows-1252\n"
         "  ggout-batch <ordner>|<a.xml>...     Stapeldatei für den unbeaufsichtigten NAS-Lauf\n"
         "  flurix nas-werkzeug <werkzeug> --help sagt mehr. --ersetzen ersetzt eine vorhandene\n"
         "  Zieldatei. Ende mit 1, wenn nichts geschrieben wurde.\n",
         BefehlNasWerkzeug},
        {"auszug", "schreibt den Auszug aus dem Liegenschaftskataster eines Flurstücks (PDF)",
         "Aufruf: flurix auszug <tabelle> (--zeile <n> | --fkz <kennzeichen>) [--out <datei.pdf>]\n"
         "  Wie der Knopf \"ALB-Auszug\": Flurstücks- und Eigentümernachweis des Flurstücks der\n"
         "  Zeile, mit allen Eigentümern (Zeilen mit demselben Flurstückskennzeichen, sonst mit\n"
         "  gleichem Gemarkungsschlüssel, Flur und Flurstück), vom ersten Eigentümer an.\n"
         "  --zeile <n>       die n-te Zeile der Tabelle, von 1 an gezählt\n"
         "  --fkz <kennz.>    die erste Zeile mit diesem Flurstückskennzeichen\n"
         "  --out <datei>     genau diese Datei schreiben; ohne --out steht der Auszug als\n"
         "                    ALB-<Gemarkungsschlüssel>-<Flur>-<Flurstück>.pdf im\n"
         "                    Arbeitsverzeichnis, und sein Pfad steht auf stdout\n"
         "  --titel <text>    Programmtitel in Fußzeile und /Producer statt \"Flurix V...\"\n"
         "  SOURCE_DATE_EPOCH=<sekunden> legt Erstellungsdatum und \"Datum\" fest (UTC), damit\n"
         "  zwei Läufe dieselben Bytes schreiben. Ende mit 1, wenn die Mehrfacheigentümer falsch\n"
         "  sortiert sind: die Meldung steht auf stderr, die Datei enthält, was bis dahin steht.\n",
         BefehlAuszug},
        {"karte", "lädt ein Kartenbild von WMS-Diensten, wie das Kartenfenster es zeigt (PNG, JPEG, ...)",
         "Aufruf: flurix karte --zentrum <rechtswert;hochwert> --dienst <name>[/<name2>/<name3>]\n"
         "                    --out <bild.png|.jpg|.bmp|.tif> [Optionen]\n"
         "  Fragt die Dienste des Dienstkatalogs (config/WebService.fil) nach dem Ausschnitt um das\n"
         "  Zentrum und setzt die Ebenen zusammen: die erste liegt vorn, die dritte hinten, Weiß ist\n"
         "  durchsichtig. Eine Anfrage, deren Bild schon im Arbeitsverzeichnis liegt, wird nicht\n"
         "  noch einmal geladen. Ohne Angabe gelten die StartMapWebService-Werte aus Flurix.dat.\n"
         "  --massstab <s>     Maßstab 1:s bei 96 dpi (Vorgabe 1000)\n"
         "  --epsg <code>      25832 oder 25833 (Vorgabe 25833)\n"
         "  --groesse <b>x<h>  Bildfeld in Pixeln (Vorgabe 1000x750)\n"
         "  --faktor <f>       Bitmap-Faktor: so viel mal mehr Pixel für denselben Ausschnitt\n"
         "  --katalog <datei>  ein anderer Dienstkatalog (.fil oder .dat)\n"
         "  --temp <ordner>    Ordner der zwischengespeicherten Bilder\n"
         "  --neu              vorhandene Bilder verwerfen und neu laden (\"Hardzoom\")\n"
         "  --protokoll        die Anfragen an _MAP-Anfrage.prn im Ordner anhängen\n"
         "  --zeitlimit <s>    Sekunden je Anfrage (Vorgabe 60)\n"
         "  stdout: Datei, Pixel, Maßstab, Zahl der Downloads. Ende mit 1, wenn eine Ebene fehlt\n"
         "  (die Meldung des Dienstes steht auf stderr) oder kein Bild entstand.\n",
         BefehlKarte},
        {"koordinaten", "rechnet Koordinatenpaare um: ETRS89/UTM 32, 33 und geographisch",
         "Aufruf: flurix koordinaten --von <system> --nach <system> [<datei>]\n"
         "  Rechnet wie die Karte: <system> ist 25832 oder 25833 (ETRS89/UTM, Streifen 32 oder 33)\n"
         "  oder geo (geographisch auf GRS 1980, Breite und Länge in Grad).\n"
         "  Je Zeile der Datei (ohne Datei: stdin) ein Paar \"Rechtswert Hochwert\" oder\n"
         "  \"Breite Länge\", getrennt durch Leerzeichen, TAB oder \";\"; Dezimalkomma erlaubt,\n"
         "  Winkel auch in Grad, Minuten und Sekunden: 52°30'15.5\".\n"
         "  Ausgabe: je Eingabezeile eine Zeile, metrisch auf Millimeter gerundet (3 Stellen),\n"
         "  geographisch in Grad mit 10 Stellen; eine leere Zeile bleibt leer.\n"
         "  Ende mit 1, wenn eine Zeile kein Paar enthält: die Meldung auf stderr nennt die Zeile,\n"
         "  die Ausgabe hat an ihrer Stelle eine leere Zeile.\n",
         BefehlKoordinaten},
        {"dienste", "zeigt den Web-Service-Katalog der Karte und liest Capabilities ein",
         "Aufruf: flurix dienste liste [--katalog <datei>] [--out <datei.tsv>]\n"
         "        flurix dienste einlesen <name>|--alle [--katalog <datei>]\n"
         "  Der Katalog ist config/WebService.fil der Installation oder --katalog (.fil, .dat).\n"
         "  liste: je Dienst eine Zeile, TAB-getrennt: id, Web-Service, URL, Anfrage, die\n"
         "  gewählten Layer (LAYERS) und Maßstab; mit --out als .tsv-Datei.\n"
         "  einlesen: fragt GetCapabilities des Dienstes (oder aller) an, übernimmt Layer,\n"
         "  Legende und Maßstab in den Katalog und speichert ihn (.fil mit .dat daneben). Die\n"
         "  neuen Zeilen stehen danach auf stdout. Dienste mit Zugang brauchen ihre Key-Datei\n"
         "  neben dem Katalog. Ende mit 1, wenn ein Dienst nicht \"erfolgt\" ergab.\n",
         BefehlDienste},
    };
    return befehle;
}

std::string Version() { return "flurix " + FensterTitel().substr(std::string("Flurix ").size()); }

void Hilfe(std::ostream& aus) {
    aus << "Flurix: Daten des Liegenschaftskatasters (WLDGE, Web-XML, NAS) einlesen und ausgeben.\n\n"
           "Aufruf: flurix <befehl> [argumente]   (flurix <befehl> --help sagt mehr)\n\n"
           "Befehle:\n";
    for (const auto& befehl : Befehle()) {
        std::string name(befehl.name);
        name.resize(12, ' ');
        aus << "  " << name << befehl.kurz << '\n';
    }
    aus << "\nAuftragszeilen wie im Windows-Programm:\n"
           "  flurix <pfad>/<datei>.wldge|.xml|.fil|.mdb   öffnet die Datei in flurix-gui\n"
           "  flurix <pfad>/<auftrag>.xml /ggout /still    unbeaufsichtigter NAS-Lauf (GEOgraf)\n"
           "  flurix <pfad>/<auftrag>.xml /ggout /still /txt-sch\n"
           "  flurix <pfad>/<auftrag>.xml /dxfout /still   unbeaufsichtigter NAS-Lauf (DXF)\n"
           "  flurix /map [<rechtswert>;<hochwert>]        öffnet die Karte\n"
           "\nMeldungen stehen auf stderr. Ende: 0 erledigt, 1 Fehler, 2 falscher Aufruf.\n";
}

} // namespace flurix::cli
