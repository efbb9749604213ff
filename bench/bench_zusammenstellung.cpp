// Benchmark of the NAS compilation: a synthetic district of 50,000 parcels with their bookings,
// sheets, owners, addresses and locations (made by samples/nas_muster_erzeugen.py) is scanned
// into its object database and compiled into the table Alkis and the cadastre table. Each stage
// is timed on its own, and the compilation runs at a fifth of the size as well, to show that its
// time grows with the rows, not faster.
//   bench_zusammenstellung [parcels] [folder]        (default 50000, the system's temp dir)
// The files are made in a folder of their own under [folder] and deleted at the end.
#include "bench/messen.hpp"
#include "core/datenbank.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_batch.hpp"
#include "nas/anreicherung.hpp"
#include "nas/daten_ordnen.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/nach_flurix.hpp"
#include "nas/nas_datenbank.hpp"
#include "nas/nas_einlesen.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"
#include "nas/reorganisation.hpp"
#include "nas/zuordnung.hpp"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace flurix;

const fs::path Quellordner = fs::path(__FILE__).parent_path().parent_path();

double Sekunden(std::chrono::steady_clock::time_point seit) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - seit).count();
}

struct Zeiten {
    double einlesen = 0, reorganisation = 0, zuordnung = 0, ordnen = 0, übernahme = 0;
    std::int64_t flurstücke = 0, zeilen = 0;
    double Zusammenstellung() const { return reorganisation + zuordnung + ordnen; }
};

Zeiten Lauf(long flurstücke, const fs::path& ordner) {
    const fs::path xml = ordner / ("bezirk" + std::to_string(flurstücke) + ".xml");
    const std::string befehl = "python3 '" + (Quellordner / "samples/nas_muster_erzeugen.py").string() +
                               "' --flurstuecke " + std::to_string(flurstücke) + " --out '" +
                               xml.string() + "'";
    if (std::system(befehl.c_str()) != 0)
        throw std::runtime_error("Der Generator lief nicht: " + befehl);
    std::cout << "  NAS-Datei: " << fs::file_size(xml) / 1'000'000 << " MB\n" << std::flush;

    BatchOberfläche ui(std::cerr, nullptr, false);
    nas::NasProtokoll protokoll(ui, fs::path());
    const fs::path konfig = Quellordner / "config";
    const fs::path datenbank = ordner / ("bezirk" + std::to_string(flurstücke) + ".sqlite");
    Zeiten z;
    auto start = std::chrono::steady_clock::now();
    nas::NasStand stand;
    if (!nas::DAO_ALKISEinlesen({xml, datenbank, konfig}, stand, ui, protokoll))
        throw std::runtime_error("Einlesen fehlgeschlagen");
    z.einlesen = Sekunden(start);

    auto db = nas::DAO_DatenbankÖffnen(datenbank);
    nas::ZuordnungsfunktionenRegistrieren(*db);
    start = std::chrono::steady_clock::now();
    const auto bericht = nas::XmlReorganisation(*db, protokoll, ui);
    z.reorganisation = Sekunden(start);
    z.flurstücke = bericht.flurstücke;

    start = std::chrono::steady_clock::now();
    const auto zeilen = nas::ZuordnungLesen(nas::KonfigText(konfig / "ALKIS_Zuordnung.dat"));
    const auto zuordnung = nas::ZuordnungAusführen(*db, zeilen, protokoll, ui);
    z.zuordnung = Sekunden(start);
    if (zuordnung.fehlgeschlagen > 0)
        std::cout << "  Achtung: " << zuordnung.fehlgeschlagen << " Zeilen der Zuordnung fehlgeschlagen\n";

    start = std::chrono::steady_clock::now();
    nas::OrdnenUmgebung umgebung;
    const auto antrag = nas::AntragsbeschreibungLesen(*db);
    umgebung.antragsnummer = antrag.antragsnummer;
    umgebung.systemWert = antrag.epsg + "_" + antrag.mkz;
    z.zeilen = nas::DatenOrdnen(*db, umgebung, protokoll, ui);
    z.ordnen = Sekunden(start);

    start = std::chrono::steady_clock::now();
    Kataster kataster;
    nas::NachFlurixBericht übernahme;
    const nas::NachFlurixUmgebung ziel{konfig, konfig / "ALB_DatenbankSpalten.dat", "alles", false};
    if (!nas::ALKISnachFlurix(*db, kataster, ziel, protokoll, ui, übernahme))
        throw std::runtime_error("Übernahme fehlgeschlagen");
    z.übernahme = Sekunden(start);
    return z;
}

void Zeigen(long flurstücke, const Zeiten& z) {
    std::printf("%7ld Flurstücke, %7lld Zeilen: Einlesen %6.2f s | Reorganisation %6.2f s, "
                "Zuordnung %6.2f s, Daten ordnen %6.2f s = Zusammenstellung %6.2f s "
                "(%5.1f µs/Zeile) | nach Flurix %6.2f s | Spitze %ld MB\n",
                flurstücke, static_cast<long long>(z.zeilen), z.einlesen, z.reorganisation,
                z.zuordnung, z.ordnen, z.Zusammenstellung(),
                1e6 * z.Zusammenstellung() / static_cast<double>(std::max<std::int64_t>(1, z.zeilen)),
                z.übernahme, bench::SpitzeMB());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    const long flurstücke = argc > 1 ? std::atol(argv[1]) : 50'000;
    const fs::path basis = argc > 2 ? fs::path(argv[2]) : fs::temp_directory_path();
    const fs::path ordner = basis / ("flurix-bench-zusammenstellung-" + std::to_string(::getpid()));
    fs::create_directories(ordner);
    int code = 0;
    try {
        // Each size in a process of its own, so that the second peak is not the first's.
        for (const long n : {flurstücke / 5, flurstücke})
            if (bench::SpitzeImKindMB([&] {
                    Zeigen(n, Lauf(n, ordner));
                    return true;
                }) < 0)
                throw std::runtime_error("Lauf mit " + std::to_string(n) + " Flurstücken fehlgeschlagen");
    } catch (const std::exception& e) {
        std::cerr << e.what() << '\n';
        code = 1;
    }
    fs::remove_all(ordner);
    return code;
}
