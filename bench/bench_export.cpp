// Exports of a large table: 500,000 rows × 70 columns saved as ".fil" and loaded again, written as
// TAB text and as an Excel workbook. The generator makes cadastre-like cells (a unique parcel key
// per row, names with umlauts, zero-filled numbers, now and then a TAB or a line break), so that
// escaping and code-page conversion do real work. Each step runs once and prints its seconds and
// the file's megabytes.

#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "export/tabellenschreiber.hpp"

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace flurix;
namespace fs = std::filesystem;

constexpr std::size_t Zeilen = 500000;
constexpr std::size_t Spaltenzahl = 70;

// The table: column 0 a unique key, the others drawn from pools of a few hundred texts per column.
Kataster TabelleErzeugen() {
    const std::array<std::string, 8> wörter = {"Müller, Hans-Jürgen", "Groß Schönebeck", "Weiß",
                                               "Gemeinde Musterhausen", "Straße 12",
                                               "Öztürk, Ayşe", "Ackerland", "Wald\tForst"};
    Kataster k;
    for (std::size_t s = 0; s < Spaltenzahl; ++s)
        k.SpalteHinzufügen({"Spalte" + std::to_string(s), "Überschrift " + std::to_string(s),
                            1000 + static_cast<int>(s) * 10});
    std::vector<std::vector<std::string>> pools(Spaltenzahl);
    for (std::size_t s = 1; s < Spaltenzahl; ++s)
        for (std::size_t i = 0; i < 97 + s * 7; ++i)
            pools[s].push_back(s % 3 == 0 ? std::string(wörter[(i + s) % wörter.size()]) +
                                                (i % 50 == 0 ? "\nZeile 2" : "") + " " +
                                                std::to_string(i)
                                          : std::to_string(100000 + i * 37 + s).substr(1));
    std::vector<std::string_view> zellen(Spaltenzahl);
    std::string schlüssel;
    for (std::size_t z = 0; z < Zeilen; ++z) {
        schlüssel = "121955" + std::to_string(10000000000000 + z * 7).substr(1);
        zellen[0] = schlüssel;
        for (std::size_t s = 1; s < Spaltenzahl; ++s)
            zellen[s] = pools[s][(z * (s + 3) + s) % pools[s].size()];
        k.ZeileHinzufügen(zellen);
    }
    return k;
}

template <class Arbeit> double Sekunden(Arbeit&& arbeit) {
    const auto anfang = std::chrono::steady_clock::now();
    arbeit();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - anfang).count();
}

double Megabyte(const fs::path& datei) { return static_cast<double>(fs::file_size(datei)) / 1e6; }

} // namespace

int main() {
    const fs::path ordner = fs::temp_directory_path() / ("flurix-bench-export-" + std::to_string(::getpid()));
    fs::create_directories(ordner);
    std::printf("Tabelle %zu Zeilen x %zu Spalten erzeugen ...\n", Zeilen, Spaltenzahl);
    Kataster tabelle;
    const double erzeugt = Sekunden([&] { tabelle = TabelleErzeugen(); });
    std::printf("  erzeugt in %.2f s, %.0f MB im Speicher\n", erzeugt,
                static_cast<double>(tabelle.Speicher()) / 1e6);

    const fs::path fil = ordner / "tabelle.fil";
    const double gespeichert = Sekunden([&] { KatasterSpeichern(tabelle, fil); });
    Kataster geladen;
    const double gelesen = Sekunden([&] { KatasterLaden(geladen, fil); });
    std::printf(".fil speichern   %6.2f s  (%.0f MB)\n", gespeichert, Megabyte(fil));
    std::printf(".fil laden       %6.2f s  (%zu Zeilen)\n", gelesen, geladen.Zeilenzahl());
    std::printf(".fil zusammen    %6.2f s  (Ziel: unter 5 s)\n", gespeichert + gelesen);

    const ausgabe::Ausgabeauswahl auswahl = ausgabe::AusgabeauswahlBilden(tabelle);
    const auto spalten = ausgabe::Ausgabespalten(tabelle, auswahl);
    const fs::path txt = ordner / "tabelle.txt";
    const double text = Sekunden([&] {
        ausgabe::TrennzeichenSchreiber schreiber(txt, spalten, '\t');
        ausgabe::TabelleSchreiben(tabelle, auswahl, schreiber);
    });
    std::printf("TAB-Text         %6.2f s  (%.0f MB, %.0f MB/s)\n", text, Megabyte(txt),
                Megabyte(txt) / text);

    const fs::path xlsx = ordner / "tabelle.xlsx";
    const double excel = Sekunden([&] {
        ausgabe::XlsxSchreiber schreiber(xlsx, spalten, ordner);
        ausgabe::TabelleSchreiben(tabelle, auswahl, schreiber);
    });
    std::printf(".xlsx            %6.2f s  (%.0f MB; Ziel: unter 60 s)\n", excel, Megabyte(xlsx));

    std::error_code ec;
    fs::remove_all(ordner, ec);
    return 0;
}
