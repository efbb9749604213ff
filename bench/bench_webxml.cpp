// Benchmark of the Web-XML reader: 1,000 extract files in one run, and one large file of many
// extracts.
//   bench_webxml [files] [folder]
#include "core/kataster.hpp"
#include "core/oberflaeche_batch.hpp"
#include "import/datenladen.hpp"
#include "import/webxml.hpp"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <algorithm>
#include <sstream>
#include <string>

namespace {

std::string Auszug(long long n) {
    const std::string nr = std::to_string(100000 + n).substr(1);
    std::string t = "<auszug format=\"WebALB\" aktualitaet=\"07\" kennzeichen=\"051234001" + nr + "000100\">\n"
                    "  <zustaendigeStelle>\n    <amt id=\"0512\">Katasteramt Musterkreis</amt>\n  </zustaendigeStelle>\n"
                    "  <verwaltungsangaben>\n    <kreis id=\"05123\">Landkreis Muster</kreis>\n"
                    "    <gemeindezugehoerigkeit id=\"05123000\">Musterstadt</gemeindezugehoerigkeit>\n"
                    "    <gemarkung id=\"051234\">Musterstadt</gemarkung>\n  </verwaltungsangaben>\n"
                    "  <basisangaben>\n    <amtlicheFlaeche einheit=\"m2\">512</amtlicheFlaeche>\n"
                    "    <gml:Point srsName=\"EPSG:25832\">\n      <gml:coordinates>350012.3,5600123.4</gml:coordinates>\n"
                    "    </gml:Point>\n  </basisangaben>\n  <lage>\n    <verschluesselt id=\"00100\">Musterweg 3</verschluesselt>\n  </lage>\n"
                    "  <nutzungsarten>\n    <abschnitt schluessel=\"12-345\" flaeche=\"512\">Wohnbaufläche</abschnitt>\n  </nutzungsarten>\n"
                    "  <klassifizierung>\n    <klasse schluessel=\"32-101\" flaeche=\"400\" schaetzung=\"L 4 V\" wertzahl=\"45/50\" emz=\"200\">Acker</klasse>\n  </klassifizierung>\n"
                    "  <bestaende>\n";
    for (int b = 1; b <= 2; ++b) {
        t += "    <bestand laufendeNummer=\"000" + std::to_string(b) + "\" buchungsart=\"1\" buchungsblattkennzeichen=\"000123\">\n"
             "      <amtsgericht id=\"0815\">Amtsgericht Musterstadt</amtsgericht>\n";
        for (int e = 1; e <= 2; ++e)
            t += "      <eigentuemer nr=\"000" + std::to_string(e) + "\" anteil=\"1/2\">\n"
                 "        <namenszeile nr=\"1\">Mustermann" + nr + ", Max, , Dr.</namenszeile>\n"
                 "        <namenszeile nr=\"3\">Musterweg 3</namenszeile>\n        <namenszeile nr=\"4\">12345 Musterstadt</namenszeile>\n"
                 "      </eigentuemer>\n";
        t += "    </bestand>\n";
    }
    return t + "  </bestaende>\n</auszug>\n";
}

void Messen(const char* name, const std::vector<std::filesystem::path>& dateien, long long zeilen) {
    flurix::import::ImportOptionen optionen;
    flurix::Kataster kataster;
    std::ostringstream still; // the questions of the run are not shown
    flurix::BatchOberfläche stumm(still);
    const auto start = std::chrono::steady_clock::now();
    const auto ergebnis = flurix::import::WebXmlLesen(dateien, optionen, false, kataster, stumm);
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("%-32s %6zu Dateien %9lld Zeilen  %6.2f s  %10.0f Zeilen/s  %8zu Tabellenzeilen  %s\n", name,
                dateien.size(), zeilen, s, static_cast<double>(zeilen) / s, kataster.Zeilenzahl(), ergebnis ? "ok" : "FEHLER");
}

} // namespace

int main(int argc, char** argv) {
    const long long anzahl = argc > 1 ? std::atoll(argv[1]) : 1000;
    const std::filesystem::path ordner = argc > 2 ? argv[2] : std::filesystem::temp_directory_path() / "flurix_bench_webxml";
    std::filesystem::create_directories(ordner);
    std::vector<std::filesystem::path> dateien;
    long long zeilen = 0;
    const auto zählen = [](const std::string& t) { return static_cast<long long>(std::count(t.begin(), t.end(), '\n')); };
    for (long long n = 0; n < anzahl; ++n) {
        dateien.push_back(ordner / ("auszug" + std::to_string(n) + ".xml"));
        const std::string t = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + Auszug(n);
        zeilen += zählen(t);
        std::ofstream(dateien.back(), std::ios::binary) << t;
    }
    Messen("einzelne Auszüge", dateien, zeilen);
    const auto groß = ordner / "gross.xml";
    long long großZeilen = 0;
    {
        std::ofstream aus(groß, std::ios::binary);
        for (long long n = 0; n < 100 * anzahl; ++n) {
            const std::string t = Auszug(n % 100000);
            großZeilen += zählen(t);
            aus << t;
        }
    }
    Messen("eine große Datei", {groß}, großZeilen);
    std::filesystem::remove_all(ordner);
    return 0;
}
