// Benchmark of the complete WLDGE reader: a generated extract of format 32 (about a million lines
// by default) is read into the staging database and joined into the table.
//   bench_wldge [lines in thousands] [folder]     (or FLURIX_BENCH_ZEILEN_TSD)
#include "bench/messen.hpp"
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

// A district as the register delivers it: 1 to 5 owners a Bestand, two parcels a Bestand, each
// booked on 1 to 3 folios, with 1 to 3 land-use and 0 to 3 classification lines, 200 Gemarkungen,
// 3,000 streets in 50 Gemeinden and the other key blocks with their hundreds of entries. About
// 32 lines a Bestand.
long long Erzeugen(const std::filesystem::path& datei, long long zeilenZiel) {
    std::ofstream aus(datei, std::ios::binary);
    long long zeilen = 0;
    const auto schreiben = [&](const std::string& z) {
        aus << z << "\r\n";
        ++zeilen;
    };
    const auto gemarkung = [](long long n) { return "05" + Ziffern(1000 + n % 200, 4); };
    const auto gemeinde = [](long long n) { return "05" + Ziffern(n % 50, 10); };
    schreiben(Satz('1', "05", ' ', {{27, "E   01"}, {34, "32"}}));
    const long long bestände = std::max<long long>(1, zeilenZiel / 32);
    for (long long b = 0; b < bestände; ++b) {
        const std::string bestand = gemarkung(b) + "-" + Ziffern(b, 6);
        for (long long e = 1; e <= 1 + b % 5; ++e) {
            const std::string pos = Ziffern(e, 4) + ".00.00000.00";
            schreiben(Satz('2', bestand, '1', {{28, pos}, {45, "1"}, {48, "0"}, {50, Ziffern(1 + e % 9, 2)}, {53, "1/2"}}));
            schreiben(Satz('2', bestand, '1', {{28, pos}, {48, "1"}, {49, "Mustermann" + std::to_string(b) + ", Max, , "}}));
            schreiben(Satz('2', bestand, '1', {{28, pos}, {48, "2"}, {91, "01.01.1960"}}));
            schreiben(Satz('2', bestand, '1', {{28, pos}, {48, "3"}, {49, "Musterweg " + std::to_string(e)}}));
            schreiben(Satz('2', bestand, '1', {{28, pos}, {48, "4"}, {49, "12345 Musterstadt"}}));
        }
    }
    for (long long b = 0; b < bestände; ++b)
        for (int f = 0; f < 2; ++f) {
            const long long n = b * 2 + f;
            const std::string key = gemarkung(b) + "-" + Ziffern(1 + b % 30, 3) + "-" + Ziffern(n % 100000, 5) + "/" + Ziffern(n / 100000, 3);
            schreiben(Satz('3', key, 'B', {{22, ".00"}, {25, "A"}, {84, Ziffern(100 + n % 90000, 9)}}));
            schreiben(Satz('3', key, 'D', {{72, "35001234"}, {81, "56001234"}, {95, Ziffern(n % 60, 4)}}));
            schreiben(Satz('3', key, 'G', {{31, gemeinde(b)}, {43, Ziffern(n % 3000, 5)}, {49, std::to_string(1 + n % 120)}}));
            for (long long k = 0; k <= n % 3; ++k)
                schreiben(Satz('3', key, 'K', {{34, Ziffern(10 + (n + k) % 90, 2) + "-" + Ziffern((n + k) % 300, 3) + " 0000512"}, {41, "0000512"}}));
            for (long long m = 0; m < n % 4; ++m)
                schreiben(Satz('3', key, 'M', {{34, "32-1" + Ziffern(m, 2) + " 0000500"}, {41, "0000500"}, {49, "L 4 V"}, {60, "045"}, {64, "050"}}));
            for (long long x = 0; x <= n % 3; ++x)
                schreiben(Satz('3', key, 'X', {{33, gemarkung((b + x) % bestände) + "-" + Ziffern((b + x) % bestände, 6)}, {47, Ziffern(1 + x, 4)}, {56, "1"}}));
        }
    for (long long g = 0; g < 200; ++g)
        schreiben(Satz('7', gemarkung(g), 'B', {{9, gemeinde(g)}, {22, Ziffern(g % 20, 4)}, {30, "Gemarkung " + std::to_string(g)}}));
    for (long long g = 0; g < 50; ++g)
        schreiben(Satz('7', gemeinde(g), 'D', {{30, "Gemeinde " + std::to_string(g)}}));
    for (long long s = 0; s < 3000; ++s) {
        schreiben(Satz('7', gemeinde(s) + Ziffern(s, 5), 'E', {{28, "00"}, {30, "Straße " + std::to_string(s)}}));
        schreiben(Satz('7', gemeinde(s) + Ziffern(s, 5), 'E', {{28, "09"}}));
    }
    for (long long a = 0; a < 20; ++a)
        schreiben(Satz('8', Ziffern(a, 4), 'A', {{28, "0"}, {30, "Amtsgericht " + std::to_string(a)}}));
    for (long long a = 1; a < 10; ++a)
        schreiben(Satz('8', Ziffern(a, 2), 'B', {{28, "0"}, {30, "Eigentümerart " + std::to_string(a)}}));
    for (long long f = 0; f < 60; ++f)
        schreiben(Satz('9', Ziffern(f, 4), 'B', {{30, "Finanzamt " + std::to_string(f)}}));
    for (long long k = 0; k < 9000; k += 30)
        schreiben(Satz('9', Ziffern(10 + k / 300 % 90, 2) + Ziffern(k % 300, 3), 'D', {{30, "Nutzung " + std::to_string(k)}}));
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

    // A fifth of the size and the size itself, each read in a process of its own: the peak shows
    // what the reader needs beyond the table it fills.
    bool alleOk = true;
    for (const long long zielTausend : {std::max(1LL, tausend / 5), tausend}) {
        auto start = std::chrono::steady_clock::now();
        const long long zeilen = Erzeugen(datei, zielTausend * 1000);
        std::printf("Erzeugt: %lld Zeilen, %.1f MB in %.2f s\n", zeilen,
                    static_cast<double>(std::filesystem::file_size(datei)) / 1e6, Sekunden(start));
        const long spitze = flurix::bench::SpitzeImKindMB([&] {
            flurix::Kataster kataster;
            flurix::BatchOberfläche ui(std::cerr);
            flurix::import::ImportOptionen optionen;
            flurix::import::WldgeKomplettUmgebung umgebung{ordner, {}, "alles"};
            const auto anfang = std::chrono::steady_clock::now();
            const auto ergebnis = flurix::import::WldgeKomplettLesen(datei, optionen, umgebung, kataster, ui);
            const double s = Sekunden(anfang);
            std::printf("Komplett eingelesen: %s, %zu Tabellenzeilen, %zu Spalten in %.2f s (%.0f Zeilen/s)\n",
                        ergebnis ? "ok" : ergebnis.Meldung().c_str(), kataster.Zeilenzahl(),
                        kataster.Spaltenzahl(), s, static_cast<double>(zeilen) / s);
            return static_cast<bool>(ergebnis);
        });
        std::printf("Spitzen-RSS bei %lld Zeilen: %ld MB\n", zeilen, spitze);
        alleOk = alleOk && spitze >= 0;
    }
    std::filesystem::remove_all(ordner);
    return alleOk ? 0 : 1;
}
