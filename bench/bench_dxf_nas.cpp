// The DXF export of a NAS drawing on a large district: a GEOgraf file of 50,000 square parcels of
// 20 m in a grid of 250 × 200 (each boundary point with its DA line and shared by four parcels,
// each boundary segment once as LI, a parcel number each, every fifth a fraction, an SCH Typ 0
// outline each), and 20,000 hatched buildings (SCH Typ 1, 1 m apart, with a courtyard as hole).
// Exported with every option on. Prints the seconds, the drawing's megabytes and the peak memory.

#include "core/oberflaeche.hpp"
#include "export/dxf_nas.hpp"
#include "export/dxf_schreiber.hpp"

#include "messen.hpp"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

// The UI of an unattended run that counts the protocol lines and shows nothing.
class StilleOberfläche final : public flurix::Oberfläche {
public:
    void Meldung(std::string_view text, std::string_view, flurix::Stil) override {
        std::fprintf(stderr, "%.*s\n", static_cast<int>(text.size()), text.data());
    }
    flurix::Antwort Frage(const flurix::Fragestellung& frage) override { return frage.unbeaufsichtigt; }
    void Status(int, std::string_view) override {}
    void Fortschritt(long long, long long) override {}
    bool AbbruchGewünscht() override { return false; }
    void Protokoll(std::string_view) override { ++protokoll; }
    long protokoll = 0;
};

constexpr int Spalten = 250, Zeilen = 200, Gebäude = 20000;
constexpr double Seite = 20.0, Y0 = 350000.0, X0 = 5600000.0;

std::string Zahl(double wert) { return flurix::ausgabe::detail::DxfZahl(wert); }

long PunktNr(int spalte, int zeile) { return 1 + zeile * (Spalten + 1) + spalte; }

void OutSchreiben(const std::filesystem::path& datei) {
    std::ofstream aus(datei, std::ios::binary);
    std::string z;
    const auto zeile = [&](const std::string& text) {
        z += text;
        z += "\r\n";
        if (z.size() > (1 << 20)) {
            aus << z;
            z.clear();
        }
    };
    zeile("* Ausgabe ALKIS/NAS f\xFCr Geograf");
    zeile("* erstellt mit GeografOutWriter");
    zeile("Typ: GRAFBAT V4");
    zeile("PAR: \"zvautneu.art\",\"zvautal.sym\",\"GEOGRAF\", 500");
    for (int r = 0; r <= Zeilen; ++r)
        for (int s = 0; s <= Spalten; ++s) {
            const long nr = PunktNr(s, r);
            zeile("PK" + std::to_string(nr) + ": " + std::to_string(100000 + nr) + ",52.1," +
                  Zahl(Y0 + s * Seite) + "," + Zahl(X0 + r * Seite) + ",,,0,0,,,,,,0,,0,,0,0,,1,0,0,0,,,,");
            zeile("DA" + std::to_string(nr) + ": ;ABM=" + (nr % 3 == 0 ? "9500" : "1100") +
                  ";GST=1000;GWT=3;LZK=1100;BEM=");
        }
    long li = 0;
    for (int r = 0; r <= Zeilen; ++r)
        for (int s = 0; s < Spalten; ++s)
            zeile("LI" + std::to_string(++li) + ": " + std::to_string(PunktNr(s, r)) + "," +
                  std::to_string(PunktNr(s + 1, r)) + ",1.1,,");
    for (int r = 0; r < Zeilen; ++r)
        for (int s = 0; s <= Spalten; ++s)
            zeile("LI" + std::to_string(++li) + ": " + std::to_string(PunktNr(s, r)) + "," +
                  std::to_string(PunktNr(s, r + 1)) + ",1.1,,");
    long te = 0, sch = 0;
    for (int r = 0; r < Zeilen; ++r)
        for (int s = 0; s < Spalten; ++s) {
            const double y = Y0 + s * Seite, x = X0 + r * Seite;
            ++te;
            zeile("TE" + std::to_string(te) + ": ,2.233, " + Zahl(y + 10) + ", " + Zahl(x + 10) + ", " +
                  Zahl(y + 10) + ", " + Zahl(x + 10) + ", 2, 0, 0, 1, 0, , 0, , , , , , \"");
            zeile("  TX" + std::to_string(te) + ": " + std::to_string(te) +
                  (te % 5 == 0 ? "_" + std::to_string(te % 17 + 1) : ""));
            ++sch;
            zeile("SCH" + std::to_string(sch) + ": ,1.1,0,0,0");
            zeile("  POS" + std::to_string(sch) + ": " + Zahl(y) + " " + Zahl(x) + " " + Zahl(y + Seite) +
                  " " + Zahl(x) + " " + Zahl(y + Seite) + " " + Zahl(x + Seite) + " " + Zahl(y) + " " +
                  Zahl(x + Seite));
        }
    for (int g = 0; g < Gebäude; ++g) {
        const double y = Y0 + (g % Spalten) * Seite + 3.5, x = X0 + (g / Spalten) * Seite + 3.5;
        ++sch;
        zeile("SCH" + std::to_string(sch) + ": ,11.1,1,1,50");
        zeile("  POS" + std::to_string(sch) + ": " + Zahl(y) + " " + Zahl(x) + " " + Zahl(y + 12) + " " +
              Zahl(x) + " " + Zahl(y + 12) + " " + Zahl(x + 9) + " " + Zahl(y) + " " + Zahl(x + 9) + ";" +
              Zahl(y + 5) + " " + Zahl(x + 3) + " " + Zahl(y + 7) + " " + Zahl(x + 3) + " " + Zahl(y + 7) +
              " " + Zahl(x + 5) + " " + Zahl(y + 5) + " " + Zahl(x + 5));
    }
    aus << z;
}

} // namespace

int main() {
    using namespace flurix;
    bench::Ordner ordner("bench_dxf_nas");
    const auto out = ordner.pfad() / "karte_dxf.out";
    const auto ziel = ordner.pfad() / "karte.dxf";
    OutSchreiben(out);
    const long spitzeVorher = bench::SpitzeMB();
    StilleOberfläche ui;
    ausgabe::DxfNasZählung zählung;
    const auto anfang = std::chrono::steady_clock::now();
    const Ergebnis ergebnis = ausgabe::DXFExport(
        out, ziel,
        {.schraffur = true, .punktnummern = true, .sachdaten = true, .calibri = false,
         .arbeitsverzeichnis = ordner.pfad(), .protokoll = {}},
        ui, &zählung);
    const double sekunden = bench::Sekunden(anfang);
    if (!ergebnis)
        return 1;
    std::printf("DXF-Export NAS: %.1f MB .out, %zu Punkte, %zu Linien, %zu Texte, %zu Polylines, "
                "%zu Schraffuren: %.2f s, %.0f MB DXF, Spitze %ld MB vorher, %ld MB nachher\n",
                static_cast<double>(std::filesystem::file_size(out)) / 1e6, zählung.punkte,
                zählung.linien, zählung.texte, zählung.polylinien, zählung.schraffuren, sekunden,
                static_cast<double>(std::filesystem::file_size(ziel)) / 1e6, spitzeVorher,
                bench::SpitzeMB());
    return 0;
}
