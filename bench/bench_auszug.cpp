// Benchmark of the register extract: extracts for many parcels in a row, each written as a file.
//   bench_auszug [parcels] [folder]        (default 10,000 parcels with 1-3 owners each)
#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_batch.hpp"
#include "report/registerauszug.hpp"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace {

std::string Ziffern(long wert, int breite) {
    std::string s = std::to_string(wert);
    return std::string(static_cast<std::size_t>(std::max<int>(0, breite - static_cast<int>(s.size()))), '0') + s;
}

// Rows of `flurstücke` parcels, 1 to 3 owners each, the cells an extract prints.
std::vector<std::size_t> TabelleFüllen(flurix::Kataster& k, long flurstücke) {
    flurix::SpaltenAnlegen(k);
    const char* namen[] = {"Müller, Jürgen", "Schäfer, Anna", "Weiß, Günter", "Groß, Käthe"};
    std::vector<std::size_t> erste;
    for (long f = 0; f < flurstücke; ++f) {
        const int eigentümer = 1 + static_cast<int>(f % 3);
        for (int e = 1; e <= eigentümer; ++e) {
            const std::size_t z = k.Zeilenzahl();
            k.ZeileHinzufügen("");
            if (e == 1)
                erste.push_back(z);
            const std::string flurstück = Ziffern(f + 1, 5) + "/000";
            const std::pair<const char*, std::string> zellen[] = {
                {"Landkreis", "Musterkreis"}, {"Katasteramt", "Katasteramt Musterkreis"},
                {"Gemeinde", "Musterstadt"}, {"Gemarkung", "Musterstadt"},
                {"Gemarkungsschlüssel", "051234"}, {"Flur", Ziffern(1 + f % 30, 3)},
                {"Flurstück", flurstück}, {"Fläche", Ziffern(100 + f % 9000, 9)},
                {"Nutzungsart", "12-345 0000512"}, {"Nutzung_tatsächlich", "Wohnbaufläche"},
                {"NA-Fläche", "0000512"}, {"Lagebezeichnung", "Musterweg " + std::to_string(f % 90)},
                {"Amtsgericht", "Musterstadt"}, {"Grundbuchbezirk", "Musterstadt"},
                {"Grundbuchblatt", Ziffern(f, 6)}, {"BVNR", "0001"},
                {"Eigentümerposition", Ziffern(e, 4)}, {"Name", namen[(f + e) % 4]},
                {"Namenszusatz", "geb. 01.01.1960"}, {"Straße", "Lindenallee 17"},
                {"Ort", "12345 Musterstadt"}};
            for (const auto& [schlüssel, wert] : zellen)
                k.ZelleSetzen(z, schlüssel, wert);
        }
    }
    return erste;
}

} // namespace

int main(int argc, char** argv) {
    const long flurstücke = argc > 1 ? std::atol(argv[1]) : 10000;
    const std::filesystem::path ordner =
        argc > 2 ? std::filesystem::path(argv[2]) : std::filesystem::temp_directory_path() / "flurix-bench-auszug";
    std::filesystem::create_directories(ordner);

    flurix::Kataster kataster;
    const auto erste = TabelleFüllen(kataster, flurstücke);
    flurix::BatchOberfläche ui(std::cerr);
    flurix::report::Registerauszug auszug(flurix::report::PdfHerkunft{"Flurix Benchmark", {}});
    std::size_t bytes = 0, seiten = 0;
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < erste.size(); ++i) {
        const auto datei = ordner / ("auszug_" + std::to_string(i) + ".pdf");
        if (const auto a = auszug.CreateRegisterExtract(kataster, erste[i], ordner, ui, datei)) {
            bytes += a->inhalt.size();
            seiten += static_cast<std::size_t>(a->seiten);
        }
    }
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("%zu Auszüge (%zu Zeilen in der Tabelle, %zu Seiten, %.1f MB) in %.2f s: %.0f Auszüge/s\n",
                erste.size(), kataster.Zeilenzahl(), seiten, static_cast<double>(bytes) / 1e6, s,
                static_cast<double>(erste.size()) / s);
    std::filesystem::remove_all(ordner);
    return 0;
}
