// Benchmark of the complete WLDGE reader: a generated extract of format 32 (about a million lines
// by default) is read into the staging database and joined into the table.
//   bench_wldge [lines in thousands] [folder]     (or FLURIX_BENCH_ZEILEN_TSD)
#include "bench/wldge_erzeugen.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_batch.hpp"
#include "import/datenladen.hpp"
#include "import/wldge_komplett.hpp"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

namespace {

using flurix::bench::Satz;
using flurix::bench::Ziffern;

// About 20 lines per Bestand: two owners with five lines each, two parcels with five lines each.
long long Erzeugen(const std::filesystem::path& datei, long long zeilenZiel) {
    std::ofstream aus(datei, std::ios::binary);
    long long zeilen = 0;
    const auto schreiben = [&](const std::string& z) {
        aus << z << "\r\n";
        ++zeilen;
    };
    schreiben(Satz('1', "05", ' ', {{27, "E   01"}, {34, "32"}}));
    const long long bestände = zeilenZiel / 20;
    for (long long b = 0; b < bestände; ++b) {
        const std::string bestand = "051234-" + Ziffern(b, 6);
        for (int e = 1; e <= 2; ++e) {
            const std::string pos = Ziffern(e, 4) + ".00";
            schreiben(Satz('2', bestand, '1', {{28, pos}, {45, "1"}, {48, "0"}, {50, "01"}, {53, "1/2"}}));
            schreiben(Satz('2', bestand, '1', {{28, pos}, {48, "1"}, {49, "Mustermann" + std::to_string(b) + ", Max, , "}}));
            schreiben(Satz('2', bestand, '1', {{28, pos}, {48, "2"}, {91, "01.01.1960"}}));
            schreiben(Satz('2', bestand, '1', {{28, pos}, {48, "3"}, {49, "Musterweg " + std::to_string(e)}}));
            schreiben(Satz('2', bestand, '1', {{28, pos}, {48, "4"}, {49, "12345 Musterstadt"}}));
        }
    }
    for (long long b = 0; b < bestände; ++b)
        for (int f = 0; f < 2; ++f) {
            const std::string key = "051234-" + Ziffern(1 + b % 30, 3) + "-" + Ziffern(b * 2 + f, 5) + "/000";
            schreiben(Satz('3', key, 'B', {{25, "A"}, {84, "000000512"}}));
            schreiben(Satz('3', key, 'G', {{31, "051234000001"}, {43, "00100"}, {49, "3"}}));
            schreiben(Satz('3', key, 'K', {{34, "12-345 0000512"}, {41, "0000512"}}));
            schreiben(Satz('3', key, 'M', {{34, "32-101 0000500"}, {41, "0000500"}, {60, "045"}, {64, "050"}}));
            schreiben(Satz('3', key, 'X', {{33, "051234-" + Ziffern(b, 6)}, {47, "0001"}}));
        }
    schreiben(Satz('7', "051234", 'B', {{9, "051234000001"}, {30, "Musterstadt"}}));
    schreiben(Satz('9', "12345", 'D', {{30, "Wohnbaufläche"}}));
    schreiben(Satz('9', "", 'Z', {{30, Ziffern(zeilen + 1, 7)}, {37, Ziffern(bestände * 2, 7)}, {44, Ziffern(bestände, 7)}}));
    return zeilen;
}

double Sekunden(std::chrono::steady_clock::time_point seit) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - seit).count();
}

} // namespace

int main(int argc, char** argv) {
    long long tausend = 1000;
    if (argc > 1)
        tausend = std::atoll(argv[1]);
    else if (const char* env = std::getenv("FLURIX_BENCH_ZEILEN_TSD"))
        tausend = std::atoll(env);
    const std::filesystem::path ordner =
        argc > 2 ? std::filesystem::path(argv[2]) : std::filesystem::temp_directory_path() / "flurix-bench-wldge";
    std::filesystem::create_directories(ordner);
    const auto datei = ordner / "bench.wldge";

    auto start = std::chrono::steady_clock::now();
    const long long zeilen = Erzeugen(datei, tausend * 1000);
    std::printf("Erzeugt: %lld Zeilen, %.1f MB in %.2f s\n", zeilen,
                static_cast<double>(std::filesystem::file_size(datei)) / 1e6, Sekunden(start));

    flurix::Kataster kataster;
    flurix::BatchOberfläche ui(std::cerr);
    flurix::import::ImportOptionen optionen;
    flurix::import::WldgeKomplettUmgebung umgebung{ordner, {}, "alles"};
    start = std::chrono::steady_clock::now();
    const auto ergebnis = flurix::import::WldgeKomplettLesen(datei, optionen, umgebung, kataster, ui);
    const double s = Sekunden(start);
    std::printf("Komplett eingelesen: %s, %zu Tabellenzeilen, %zu Spalten in %.2f s (%.0f Zeilen/s)\n",
                ergebnis ? "ok" : ergebnis.Meldung().c_str(), kataster.Zeilenzahl(), kataster.Spaltenzahl(), s,
                static_cast<double>(zeilen) / s);
    std::filesystem::remove_all(ordner);
    return ergebnis ? 0 : 1;
}
