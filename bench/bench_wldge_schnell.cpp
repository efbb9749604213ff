// Benchmark of the quick WLDGE reader: generated extracts of format "32" and "35" (about a million
// lines each by default) are read into the table.
//   bench_wldge_schnell [lines in thousands] [folder]
#include "bench/messen.hpp"
#include "bench/wldge_erzeugen.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_batch.hpp"
#include "import/datenladen.hpp"
#include "import/wldge_schnell.hpp"

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

std::string Fkz(long long n) {
    return "051234-" + Ziffern(n / 90000 % 1000, 3) + "-" + Ziffern(n % 90000, 5) + "/000";
}

// Format 32: per Bestand two owners (five lines each), a remark, two booking lines, and two parcels
// of five lines each: about 23 lines.
long long Format32(const std::filesystem::path& datei, long long zeilenZiel) {
    std::ofstream aus(datei, std::ios::binary);
    long long zeilen = 0;
    const auto schreiben = [&](const std::string& z) { aus << z << "\r\n"; ++zeilen; };
    schreiben(Satz('1', "05", ' ', {{27, "E   01"}, {34, "32"}}));
    const long long bestände = zeilenZiel / 23;
    for (long long b = 0; b < bestände; ++b) {
        const std::string bestand = "051234-" + Ziffern(b % 1000000, 6);
        for (int e = 1; e <= 2; ++e)
            for (char nr = '0'; nr <= '4'; ++nr)
                schreiben(Satz('2', bestand, '1', {{28, Ziffern(e, 4) + ".00.00000.00"}, {48, std::string(1, nr)},
                                                   {49, nr == '1' ? "Mustermann" + std::to_string(b) + ",Max" : "Musterweg 1"}}));
        schreiben(Satz('2', bestand, '2', {{31, "01"}, {34, "Erbengemeinschaft"}}));
        for (int f = 0; f < 2; ++f)
            schreiben(Satz('2', bestand, '0', {{16, "0001"}, {26, "1"}, {31, Fkz(2 * b + f) + ".00"}}));
    }
    for (long long p = 0; p < 2 * bestände; ++p) {
        const std::string fkz = Fkz(p);
        schreiben(Satz('3', fkz, 'B', {{22, ".00"}, {25, "A"}, {84, "000000512"}, {95, "07"}}));
        schreiben(Satz('3', fkz, 'D', {{72, "35001234"}, {81, "56001234"}}));
        schreiben(Satz('3', fkz, 'G', {{43, Ziffern(p % 300, 5)}, {49, "0003"}}));
        schreiben(Satz('3', fkz, 'K', {{34, "12-345 0000512"}}));
        schreiben(Satz('3', fkz, 'X', {{33, "051234-000001"}}));
    }
    schreiben(Satz('7', "051234", 'B', {{9, "05123000"}, {22, "0815"}, {28, "09"}, {30, "Musterstadt"}}));
    for (int s = 0; s < 300; ++s)
        schreiben(Satz('7', "05123000", 'E', {{14, Ziffern(s, 5)}, {28, "09"}, {30, "Straße " + std::to_string(s)}}));
    return zeilen;
}

// Format 35: per parcel five parcel lines and two owners of five "Z" lines each: 15 lines.
long long Format35(const std::filesystem::path& datei, long long zeilenZiel) {
    std::ofstream aus(datei, std::ios::binary);
    long long zeilen = 0;
    const auto schreiben = [&](const std::string& z) { aus << z << "\r\n"; ++zeilen; };
    schreiben(Satz('1', "05", ' ', {{27, "E   01"}, {34, "35"}}));
    for (long long p = 0; p < zeilenZiel / 15; ++p) {
        const std::string fkz = Fkz(p);
        schreiben(Satz('4', fkz, 'B', {{25, "A"}, {84, "000000512"}, {95, "07"}}));
        schreiben(Satz('4', fkz, 'D', {{72, "35001234"}, {81, "56001234"}}));
        schreiben(Satz('4', fkz, 'G', {{43, Ziffern(p % 300, 5)}, {49, "0003"}}));
        schreiben(Satz('4', fkz, 'K', {{34, "12-345 0000512"}}));
        schreiben(Satz('4', fkz, 'H', {{34, "Am Feldrain"}}));
        for (int e = 0; e < 2; ++e)
            for (char nr = '0'; nr <= '4'; ++nr)
                schreiben(Satz('4', fkz, 'Z', {{40, "00123"}, {47, "0001"}, {56, "1"}, {57, "1"}, {77, std::string(1, nr)},
                                              {78, nr == '1' ? "Mustermann" + std::to_string(p) : "Text"}}));
    }
    schreiben(Satz('7', "051234", 'B', {{9, "05123000"}, {22, "0815"}, {28, "09"}, {30, "Musterstadt"}}));
    return zeilen;
}

// One read in a process of its own, so that its peak memory is its own.
void Messen(const char* name, const std::filesystem::path& datei, long long zeilen, bool alleInEiner) {
    const long spitze = flurix::bench::SpitzeImKindMB([&] {
        flurix::BatchOberfläche ui(std::cerr);
        flurix::import::ImportOptionen optionen;
        optionen.alleEigentümerInEinerZeile = alleInEiner;
        flurix::Kataster kataster;
        const auto start = std::chrono::steady_clock::now();
        const auto ergebnis = flurix::import::WldgeSchnellLesen(datei, optionen, kataster, ui);
        const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        std::printf("%-40s %9lld Zeilen  %7.2f s  %10.0f Zeilen/s  %8zu Tabellenzeilen  %s", name, zeilen, s,
                    static_cast<double>(zeilen) / s, kataster.Zeilenzahl(), ergebnis ? "ok" : "FEHLER");
        return static_cast<bool>(ergebnis);
    });
    std::printf("  Spitze %ld MB\n", spitze);
}

} // namespace

int main(int argc, char** argv) {
    const long long tausend = argc > 1 ? std::atoll(argv[1]) : 1000;
    const std::filesystem::path ordner = argc > 2 ? argv[2] : std::filesystem::temp_directory_path() / "flurix_bench_schnell";
    std::filesystem::create_directories(ordner);
    const auto d32 = ordner / "format32.wldge";
    const auto d35 = ordner / "format35.wldge";
    // A fifth of the size and the size itself: the peak grows with the table, not beyond.
    for (const long long t : {std::max(1LL, tausend / 5), tausend}) {
        const long long z32 = Format32(d32, t * 1000);
        const long long z35 = Format35(d35, t * 1000);
        Messen("Format 32, eine Zeile je Eigentümer", d32, z32, false);
        Messen("Format 32, alle Eigentümer in einer Zeile", d32, z32, true);
        Messen("Format 35", d35, z35, true);
    }
    std::filesystem::remove_all(ordner);
    return 0;
}
