// The drawing of a large NAS data set end to end: an object database of 50,000 square parcels of
// 20 m in a grid of 250 × 200 (four Flure, each corner a boundary point with its Punktort, a label
// position per parcel, every fifth parcel with a denominator) and 20,000 buildings with a
// courtyard, a land-use area and a soil assessment per 100 parcels; then the GEOgraf file with
// outlines and hatching (PositionNachGG) and the DXF of it with every option. Prints the seconds of
// each step, the sizes and the peak memory. Goal: both steps under 30 s together.
// With an object database as argument (the scan of a real district: `flurix nas x.xml --db
// x.sqlite`) it draws that one instead; goal there: under 2 s.

#include "core/datenbank.hpp"
#include "core/oberflaeche.hpp"
#include "export/dxf_nas.hpp"
#include "nas/nas_geograf.hpp"
#include "nas/nas_protokoll.hpp"

#include "messen.hpp"

#include <chrono>
#include <cstdio>
#include <string>

namespace {

using namespace flurix;

class Stumm final : public Oberfläche {
public:
    void Meldung(std::string_view text, std::string_view, Stil) override {
        std::fprintf(stderr, "%.*s\n", static_cast<int>(text.size()), text.data());
    }
    Antwort Frage(const Fragestellung& frage) override { return frage.unbeaufsichtigt; }
    void Status(int, std::string_view) override {}
    void Fortschritt(long long, long long) override {}
    bool AbbruchGewünscht() override { return false; }
    void Protokoll(std::string_view) override {}
};

constexpr int Spalten = 250, Zeilen = 200, Gebäude = 20000;
constexpr double Seite = 20.0;

std::string Lage(double y, double x) {
    return std::to_string(350000.0 + y).substr(0, 10) + " " +
           std::to_string(5600000.0 + x).substr(0, 11);
}

std::string Quadrat(double y, double x, double seite) {
    return Lage(y, x) + " " + Lage(y + seite, x) + " " + Lage(y + seite, x + seite) + " " +
           Lage(y, x + seite) + " " + Lage(y, x);
}

void Erzeugen(Datenbank& db) {
    const char* tabellen[] = {
        "CREATE TABLE AX_Flurstueck (id TEXT, srsName TEXT, \"gml:exterior\" TEXT, "
        "\"gml:interior\" TEXT, "
        "\"gml:Arc\" TEXT, flurnummer TEXT, \"gemarkung/AX_Gemarkung_Schluessel/land\" TEXT, "
        "\"gemarkung/AX_Gemarkung_Schluessel/gemarkungsnummer\" TEXT, "
        "\"flurstuecksnummer/AX_Flurstuecksnummer/zaehler\" TEXT, "
        "\"flurstuecksnummer/AX_Flurstuecksnummer/nenner\" TEXT)",
        "CREATE TABLE AX_Grenzpunkt (id TEXT, punktkennung TEXT, abmarkung_Marke TEXT)",
        "CREATE TABLE AX_PunktortTA (id TEXT, srsName TEXT, position TEXT)",
        "CREATE TABLE \"AX_PunktortTA_istTeilVon#ori_Punkt\" (id TEXT, ori_Punkt TEXT)",
        "CREATE TABLE AX_Gebaeude (id TEXT, srsName TEXT, \"gml:exterior\" TEXT, \"gml:interior\" "
        "TEXT, "
        "\"gml:Arc\" TEXT)",
        "CREATE TABLE AX_Landwirtschaft (id TEXT, srsName TEXT, \"gml:exterior\" TEXT, "
        "\"gml:interior\" TEXT, "
        "\"gml:Arc\" TEXT)",
        "CREATE TABLE AP_PTO (id TEXT, srsName TEXT, art TEXT, schriftinhalt TEXT, position TEXT, "
        "drehwinkel TEXT)",
        "CREATE TABLE \"AP_PTO_dientZurDarstellungVon#AX_Flurstueck\" (id TEXT, AX_Flurstueck "
        "TEXT)"};
    Transaktion t(db);
    for (const char* sql : tabellen)
        db.AusführenNativ(sql);
    Anweisung flst = db.VorbereitenNativ(
        "INSERT INTO AX_Flurstueck VALUES (?, '25832_32', ?, '', '', ?, '07', '2566', ?, ?)");
    Anweisung pto =
        db.VorbereitenNativ("INSERT INTO AP_PTO VALUES (?, '25832_32', 'ZAE_NEN', '', ?, '')");
    Anweisung bezug = db.VorbereitenNativ(
        "INSERT INTO \"AP_PTO_dientZurDarstellungVon#AX_Flurstueck\" VALUES (?, ?)");
    Anweisung nutzung =
        db.VorbereitenNativ("INSERT INTO AX_Landwirtschaft VALUES (?, '25832_32', ?, '', '')");
    for (int z = 0; z < Zeilen; ++z)
        for (int s = 0; s < Spalten; ++s) {
            const int n = z * Spalten + s;
            const std::string id = "DERP" + std::to_string(1000000 + n);
            const int flur = 1 + (z >= Zeilen / 2 ? 2 : 0) + (s >= Spalten / 2 ? 1 : 0);
            flst.Binde(id).Binde(Quadrat(s * Seite, z * Seite, Seite)).Binde(std::to_string(flur));
            flst.Binde(std::to_string(n + 1)).Binde(n % 5 == 0 ? std::string("2") : std::string());
            flst.Schritt();
            flst.Zurücksetzen();
            pto.Binde("PTO" + id).Binde(Lage(s * Seite + 10, z * Seite + 8));
            pto.Schritt();
            pto.Zurücksetzen();
            bezug.Binde("PTO" + id).Binde(id);
            bezug.Schritt();
            bezug.Zurücksetzen();
            if (s % 10 == 0 && z % 10 == 0) {
                nutzung.Binde("LW" + id).Binde(Quadrat(s * Seite, z * Seite, 10 * Seite));
                nutzung.Schritt();
                nutzung.Zurücksetzen();
            }
        }
    Anweisung punkt = db.VorbereitenNativ("INSERT INTO AX_Grenzpunkt VALUES (?, ?, '1000')");
    Anweisung ort = db.VorbereitenNativ("INSERT INTO AX_PunktortTA VALUES (?, '25832_32', ?)");
    Anweisung teil =
        db.VorbereitenNativ("INSERT INTO \"AX_PunktortTA_istTeilVon#ori_Punkt\" VALUES (?, ?)");
    for (int z = 0; z <= Zeilen; ++z)
        for (int s = 0; s <= Spalten; ++s) {
            const std::string id = "GP" + std::to_string(z * (Spalten + 1) + s);
            punkt.Binde(id).Binde("3256653" + std::to_string(100000 + z * (Spalten + 1) + s));
            punkt.Schritt();
            punkt.Zurücksetzen();
            ort.Binde("O" + id).Binde(Lage(s * Seite, z * Seite));
            ort.Schritt();
            ort.Zurücksetzen();
            teil.Binde("O" + id).Binde(id);
            teil.Schritt();
            teil.Zurücksetzen();
        }
    Anweisung haus =
        db.VorbereitenNativ("INSERT INTO AX_Gebaeude VALUES (?, '25832_32', ?, ?, '')");
    for (int g = 0; g < Gebäude; ++g) {
        const double y = (g % Spalten) * Seite + 4, x = (g / Spalten) * Seite + 4;
        haus.Binde("G" + std::to_string(g))
            .Binde(Quadrat(y, x, 12))
            .Binde(Quadrat(y + 4, x + 4, 4));
        haus.Schritt();
        haus.Zurücksetzen();
    }
    t.Bestätigen();
}

} // namespace

int main(int argc, char** argv) {
    bench::Ordner ordner("flurix-bench-nas-zeichnung");
    Stumm ui;
    const bool gegeben = argc > 1;
    Datenbank db(gegeben ? std::filesystem::path(argv[1]) : ordner.pfad() / "objekte.sqlite");
    auto start = std::chrono::steady_clock::now();
    if (!gegeben) {
        Erzeugen(db);
        std::printf("Objektdatenbank: %d Flurstücke, %d Gebäude erzeugt in %.2f s\n",
                    Spalten * Zeilen, Gebäude, bench::Sekunden(start));
    }

    nas::NasProtokoll protokoll(ui, {});
    nas::NasZeichnungsauftrag auftrag;
    auftrag.umringe = auftrag.schraffur = true;
    const auto out = ordner.pfad() / "zeichnung_dxf.out";
    start = std::chrono::steady_clock::now();
    const nas::NasZeichnungsbericht bericht = nas::PositionNachGG(db, out, auftrag, protokoll, ui);
    const double sekundenOut = bench::Sekunden(start);
    std::printf("GEOgraf-Datei: %zu Punkte, %zu Linien, %zu Texte, %zu Flächen, %.1f MB in %.2f s, "
                "Spitze %ld MB\n",
                bericht.punkte, bericht.linien, bericht.texte, bericht.flächen,
                static_cast<double>(std::filesystem::file_size(out)) / 1e6, sekundenOut,
                bench::SpitzeMB());

    ausgabe::DxfNasOptionen optionen;
    optionen.schraffur = optionen.punktnummern = optionen.sachdaten = true;
    optionen.arbeitsverzeichnis = ordner.pfad();
    const auto dxf = ordner.pfad() / "zeichnung.dxf";
    start = std::chrono::steady_clock::now();
    if (!ausgabe::DXFExport(out, dxf, optionen, ui))
        return 1;
    const double sekundenDxf = bench::Sekunden(start);
    std::printf("DXF: %.1f MB in %.2f s, Spitze %ld MB; zusammen %.2f s (Ziel: unter 30 s)\n",
                static_cast<double>(std::filesystem::file_size(dxf)) / 1e6, sekundenDxf,
                bench::SpitzeMB(), sekundenOut + sekundenDxf);
    return 0;
}
