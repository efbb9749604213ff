// Benchmark of the NAS import: a NAS file built from real features with new identifiers (500 MB
// by default) is read into its object database, and GDAL's ogr2ogr converts the same file into
// SQLite for comparison. The import runs at two sizes (a fifth of the size and the size itself)
// to show that its memory does not grow with the file.
//   bench_nas [MB] [folder] [--ohne-gdal] [--gdal-bis <MB>] [--muster <file.xml|file.xml.xz>]
//             [--konfig <folder>]                    (or FLURIX_BENCH_NAS_MB)
// The features come from the RLP test district beside the repository (decompressed with xz into
// the work folder), or, when it is missing, from the state WFS samples. Every file is made in a
// folder of its own under [folder] (default: the system's temp dir) and deleted at the end.
#include "bench/nas_erzeugen.hpp"
#include "core/datenbank.hpp"
#include "core/oberflaeche_batch.hpp"
#include "core/text.hpp"
#include "nas/nas_einlesen.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <malloc.h>
#include <optional>
#include <sqlite3.h>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using flurix::bench::NasErzeugt;

// The shared test data and the config folder, found from this source file as the tests find
// them from the build.
const fs::path Quellordner = fs::path(__FILE__).parent_path().parent_path();
const fs::path Testdaten = Quellordner.parent_path() / "shared" / "testdata";

double Sekunden(std::chrono::steady_clock::time_point seit) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - seit).count();
}

double MB(std::uintmax_t bytes) { return static_cast<double>(bytes) / 1e6; }

bool ImSuchpfad(const std::string& programm) {
    const char* pfad = std::getenv("PATH");
    std::istringstream ordner(pfad ? pfad : "/usr/bin:/bin");
    std::string eintrag;
    while (std::getline(ordner, eintrag, ':'))
        if (!eintrag.empty() && ::access((fs::path(eintrag) / programm).c_str(), X_OK) == 0)
            return true;
    return false;
}

// A path as one word for the shell.
std::string Wort(const fs::path& pfad) {
    std::string aus = "'";
    for (const char c : pfad.string())
        aus += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return aus + "'";
}

// A value of /proc/self/status in kB ("VmHWM", "VmRSS"); -1 when there is none.
long long StatusKb(const std::string& feld) {
    std::ifstream status("/proc/self/status");
    std::string zeile;
    while (std::getline(status, zeile))
        if (zeile.starts_with(feld + ":"))
            return std::atoll(zeile.c_str() + feld.size() + 1);
    return -1;
}

// Runs a program with its output in `protokoll` and waits for it: the exit status (-1 when it
// could not be started) and the child's peak resident set in kB.
struct Kindlauf {
    int status = -1;
    long long spitzeKb = 0;
    double sekunden = 0;
};

Kindlauf Starten(const std::vector<std::string>& argumente, const fs::path& protokoll) {
    Kindlauf lauf;
    std::fflush(nullptr);
    const auto start = std::chrono::steady_clock::now();
    const pid_t kind = ::fork();
    if (kind < 0)
        return lauf;
    if (kind == 0) {
        // GDAL is to build its schema from the file, as a user's plain call does.
        ::unsetenv("NAS_GFS_TEMPLATE");
        ::unsetenv("GML_GFS_TEMPLATE");
        if (std::FILE* log = std::fopen(protokoll.c_str(), "w")) {
            ::dup2(::fileno(log), 1);
            ::dup2(::fileno(log), 2);
        }
        std::vector<char*> argv;
        for (const auto& a : argumente)
            argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        ::execvp(argv[0], argv.data());
        ::_exit(127);
    }
    int status = 0;
    rusage nutzung{};
    if (::wait4(kind, &status, 0, &nutzung) == kind) {
        lauf.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        lauf.spitzeKb = nutzung.ru_maxrss;
    }
    lauf.sekunden = Sekunden(start);
    return lauf;
}

// What one import measured.
struct Importmessung {
    bool ok = false;
    std::string meldung;
    double sekunden = 0;
    long long spitzeKb = 0;
    long long startKb = 0;    // resident set when the import began (what the fork brought)
    long long sqliteKb = 0;   // the most SQLite held at once: its page cache above all
    long long zeilen = 0;     // rows of the feature tables
    long long abweichend = 0; // classes whose rows differ from the features written
    std::string erstesBeispiel;
};

void ImportImKind(const fs::path& xml, const fs::path& db, const fs::path& konfig, int cacheMiB,
                  const NasErzeugt& erzeugt, int rohr) {
    std::ostringstream bericht;
    try {
        std::ostringstream meldungen;
        flurix::BatchOberfläche ui(meldungen);
        flurix::nas::NasProtokoll protokoll(ui, {});
        flurix::nas::NasStand stand;
        const long long anfang = StatusKb("VmRSS");
        const auto start = std::chrono::steady_clock::now();
        const auto ergebnis =
            flurix::nas::DAO_ALKISEinlesen({xml, db, konfig, cacheMiB}, stand, ui, protokoll);
        const double s = Sekunden(start);
        const long long spitze = StatusKb("VmHWM");
        sqlite3_int64 sqliteJetzt = 0, sqliteSpitze = 0;
        sqlite3_status64(SQLITE_STATUS_MEMORY_USED, &sqliteJetzt, &sqliteSpitze, 0);
        if (!ergebnis) {
            bericht << "0 " << ergebnis.Meldung() << " " << meldungen.str();
        } else {
            // Each class that the node file reads must have one row per feature written: a
            // repeated identifier would have lost rows.
            const auto datenbank = flurix::nas::DAO_DatenbankÖffnen(db);
            long long zeilen = 0, abweichend = 0;
            std::string beispiel;
            for (const auto& tabelle : flurix::nas::DAO_Tabellen(*datenbank)) {
                if (tabelle.find('#') != std::string::npos || tabelle == "Antragsbeschreibung")
                    continue;
                const auto n = flurix::nas::DAO_Zeilenzahl(*datenbank, tabelle);
                zeilen += n;
                const auto geschrieben = erzeugt.klassen.find(tabelle);
                const long long soll =
                    geschrieben == erzeugt.klassen.end() ? 0 : geschrieben->second;
                if (n != soll && ++abweichend == 1)
                    beispiel = tabelle + " " + std::to_string(n) + " statt " + std::to_string(soll);
            }
            bericht << "1 " << s << " " << spitze << " " << anfang << " " << sqliteSpitze / 1024
                    << " " << zeilen << " " << abweichend << " " << beispiel;
        }
    } catch (const std::exception& e) {
        bericht << "0 " << e.what();
    }
    const auto text = bericht.str();
    [[maybe_unused]] const auto geschrieben = ::write(rohr, text.data(), text.size());
}

// One import, run in a child process of its own so that its peak resident set is its own: the
// child reads its VmHWM when the import is done and reports through a pipe.
Importmessung ImportMessen(const fs::path& xml, const fs::path& db, const fs::path& konfig,
                           int cacheMiB, const NasErzeugt& erzeugt) {
    Importmessung messung;
    int rohr[2];
    if (::pipe(rohr) != 0) {
        messung.meldung = "keine Pipe";
        return messung;
    }
    // The child starts with what the generator left on the heap; give that back first.
    ::malloc_trim(0);
    std::fflush(nullptr);
    const pid_t kind = ::fork();
    if (kind == 0) {
        ::close(rohr[0]);
        ImportImKind(xml, db, konfig, cacheMiB, erzeugt, rohr[1]);
        ::close(rohr[1]);
        ::_exit(0);
    }
    ::close(rohr[1]);
    std::string text;
    char puffer[4096];
    ssize_t n = 0;
    while ((n = ::read(rohr[0], puffer, sizeof puffer)) > 0)
        text.append(puffer, static_cast<std::size_t>(n));
    ::close(rohr[0]);
    int status = 0;
    if (kind > 0)
        ::waitpid(kind, &status, 0);
    std::istringstream ein(text);
    int ok = 0;
    ein >> ok;
    if (ok == 1) {
        messung.ok = true;
        ein >> messung.sekunden >> messung.spitzeKb >> messung.startKb >> messung.sqliteKb >>
            messung.zeilen >> messung.abweichend;
        std::getline(ein >> std::ws, messung.erstesBeispiel);
    } else {
        messung.meldung = kind < 0       ? "fork fehlgeschlagen"
                          : text.empty() ? "Import abgestürzt"
                                         : text.substr(2);
    }
    return messung;
}

struct Optionen {
    long long mb = 500;
    fs::path ordner = fs::temp_directory_path();
    bool gdal = true;
    long long gdalBis = -1; // -1: every size
    fs::path muster;
    fs::path konfig = Quellordner / "config";
    /// SQLite page cache sizes of the import; the first for both sizes, the others once more at
    /// the large size (speed and memory against the cache).
    std::vector<int> cachesMiB = {flurix::nas::NasSeitencacheMiB};
};

std::optional<Optionen> OptionenLesen(int argc, char** argv) {
    Optionen o;
    if (const char* env = std::getenv("FLURIX_BENCH_NAS_MB"))
        o.mb = std::atoll(env);
    int position = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        const bool wert = i + 1 < argc;
        if (a == "--ohne-gdal") {
            o.gdal = false;
        } else if (a == "--gdal-bis" && wert) {
            o.gdalBis = std::atoll(argv[++i]);
        } else if (a == "--muster" && wert) {
            o.muster = argv[++i];
        } else if (a == "--konfig" && wert) {
            o.konfig = argv[++i];
        } else if (a == "--cache" && wert) {
            o.cachesMiB.clear();
            for (std::string_view teil : flurix::Teilen(argv[++i], ','))
                o.cachesMiB.push_back(std::atoi(std::string(teil).c_str()));
            if (o.cachesMiB.empty() || o.cachesMiB.front() < 1)
                return std::nullopt;
        } else if (!a.starts_with("--") && position == 0) {
            o.mb = std::atoll(a.c_str());
            ++position;
        } else if (!a.starts_with("--") && position == 1) {
            o.ordner = a;
            ++position;
        } else {
            return std::nullopt;
        }
    }
    if (o.mb < 1)
        return std::nullopt;
    return o;
}

// The samples: the district (decompressed into the work folder when it is an .xz), or the state
// WFS samples under a head of our own. Throws std::runtime_error when there are none.
struct Muster {
    std::vector<fs::path> dateien;
    bool eigenerKopf = false;
    std::string beschreibung;
};

Muster MusterBereitstellen(const Optionen& o, const fs::path& arbeit) {
    Muster m;
    fs::path quelle = o.muster;
    if (quelle.empty()) {
        quelle = Testdaten / "postnas-rlp-gid60" / "gm2566-testdaten-gid60-2008-11-11.xml.xz";
        if (!fs::exists(quelle) || !ImSuchpfad("xz"))
            quelle.clear();
    }
    if (!quelle.empty()) {
        if (quelle.extension() == ".xz") {
            const auto start = std::chrono::steady_clock::now();
            const auto ziel = arbeit / "muster.xml";
            const std::string befehl = "xz -dc " + Wort(quelle) + " > " + Wort(ziel);
            if (std::system(befehl.c_str()) != 0)
                throw std::runtime_error("nicht entpackt: " + quelle.string());
            char text[160];
            std::snprintf(text, sizeof text, ", entpackt %.1f MB in %.2f s",
                          MB(fs::file_size(ziel)), Sekunden(start));
            m.beschreibung = quelle.filename().string() + text;
            quelle = ziel;
        } else {
            m.beschreibung = quelle.filename().string();
        }
        m.dateien.push_back(quelle);
        return m;
    }
    const auto wfs = Testdaten / "state-wfs-nas";
    if (fs::is_directory(wfs))
        for (const auto& eintrag : fs::directory_iterator(wfs))
            if (eintrag.path().extension() == ".xml")
                m.dateien.push_back(eintrag.path());
    if (m.dateien.empty())
        throw std::runtime_error("keine Muster: weder der Testbezirk noch " + wfs.string() +
                                 " (--muster <datei> angeben)");
    std::sort(m.dateien.begin(), m.dateien.end());
    m.eigenerKopf = true;
    m.beschreibung = std::to_string(m.dateien.size()) + " WFS-Muster aus " + wfs.string();
    return m;
}

// One size: generate, import, convert with GDAL. The measurement of the import; nullopt when it
// failed.
std::optional<Importmessung> GrößeMessen(const Optionen& o, const Muster& muster,
                                         const fs::path& arbeit, long long mb) {
    std::printf("== %lld MB\n", mb);
    const auto xml = arbeit / ("nas_" + std::to_string(mb) + "mb.xml");
    auto start = std::chrono::steady_clock::now();
    const auto erzeugt = flurix::bench::NasErzeugen(muster.dateien, muster.eigenerKopf, xml,
                                                    static_cast<std::uint64_t>(mb) * 1'000'000);
    const double sErzeugt = Sekunden(start);
    std::printf("Erzeugt: %.1f MB, %lld Objekte in %zu Klassen, %lld Kopie(n) mit eigenen "
                "Kennungen, %.2f s (%.0f MB/s)\n",
                MB(erzeugt.bytes), erzeugt.objekte, erzeugt.klassen.size(), erzeugt.kopien,
                sErzeugt, MB(erzeugt.bytes) / sErzeugt);

    // The file goes to disk before the clock starts: its write-back would otherwise slow down
    // the database writes of the import (and of GDAL) measured next.
    ::sync();
    const auto db = arbeit / ("nas_" + std::to_string(mb) + "mb.sqlite");
    const auto import = ImportMessen(xml, db, o.konfig, o.cachesMiB.front(), erzeugt);
    if (!import.ok) {
        std::printf("Eigener Import: FEHLER %s\n", import.meldung.c_str());
        fs::remove(xml);
        return std::nullopt;
    }
    std::printf(
        "Eigener Import: %.2f s, %.1f MB/s, Spitzen-RSS %.1f MB (beim Start %.1f MB; SQLite "
        "hielt höchstens %.1f MB), Datenbank %.1f MB, %lld Zeilen in "
        "den Objekttabellen\n",
        import.sekunden, MB(erzeugt.bytes) / import.sekunden,
        static_cast<double>(import.spitzeKb) / 1024, static_cast<double>(import.startKb) / 1024,
        static_cast<double>(import.sqliteKb) / 1024, MB(fs::file_size(db)), import.zeilen);
    if (import.abweichend == 0)
        std::printf("Zeilen je Klasse = geschriebene Objekte: ja (keine Kennung doppelt)\n");
    else
        std::printf("Zeilen je Klasse = geschriebene Objekte: NEIN, %lld Klassen, z. B. %s\n",
                    import.abweichend, import.erstesBeispiel.c_str());
    fs::remove(db);
    // The further cache sizes on the same file (at the large size only).
    for (std::size_t c = 1; c < o.cachesMiB.size() && mb == o.mb; ++c) {
        const auto weitere = ImportMessen(xml, db, o.konfig, o.cachesMiB[c], erzeugt);
        if (weitere.ok)
            std::printf("Seitencache %d MiB: %.2f s, %.1f MB/s, Spitzen-RSS %.1f MB (SQLite %.1f MB)\n",
                        o.cachesMiB[c], weitere.sekunden, MB(erzeugt.bytes) / weitere.sekunden,
                        static_cast<double>(weitere.spitzeKb) / 1024,
                        static_cast<double>(weitere.sqliteKb) / 1024);
        else
            std::printf("Seitencache %d MiB: FEHLER %s\n", o.cachesMiB[c], weitere.meldung.c_str());
        fs::remove(db);
    }
    if (o.cachesMiB.size() > 1 && mb == o.mb)
        std::printf("(der erste Import oben: Seitencache %d MiB)\n", o.cachesMiB.front());

    if (!o.gdal) {
        std::printf("GDAL: ausgelassen (--ohne-gdal)\n");
    } else if (o.gdalBis >= 0 && mb > o.gdalBis) {
        std::printf("GDAL: ausgelassen (über --gdal-bis %lld MB)\n", o.gdalBis);
    } else if (!ImSuchpfad("ogr2ogr")) {
        std::printf("GDAL: ogr2ogr fehlt (gdal-bin), kein Vergleich\n");
    } else {
        ::sync();
        const auto gdalDb = arbeit / ("gdal_" + std::to_string(mb) + "mb.sqlite");
        const auto lauf = Starten({"ogr2ogr", "-f", "SQLite", gdalDb.string(), xml.string()},
                                  arbeit / "ogr2ogr.log");
        if (lauf.status != 0) {
            std::ifstream log(arbeit / "ogr2ogr.log");
            std::string zeile, letzte;
            while (std::getline(log, zeile))
                if (!zeile.starts_with("Warning"))
                    letzte = zeile;
            std::printf("GDAL ogr2ogr -f SQLite: FEHLER (Status %d) %s\n", lauf.status,
                        letzte.c_str());
        } else {
            std::printf("GDAL ogr2ogr -f SQLite: %.2f s, %.2f MB/s, Spitzen-RSS %.1f MB, Datenbank "
                        "%.1f MB\n",
                        lauf.sekunden, MB(erzeugt.bytes) / lauf.sekunden,
                        static_cast<double>(lauf.spitzeKb) / 1024, MB(fs::file_size(gdalDb)));
            std::printf("Verhältnis: GDAL braucht %.1f-mal so lange wie der eigene Import\n",
                        lauf.sekunden / import.sekunden);
        }
        std::error_code ec;
        fs::remove(gdalDb, ec);
        fs::remove(fs::path(xml).replace_extension(".gfs"), ec);
    }
    fs::remove(xml);
    return import;
}

} // namespace

int main(int argc, char** argv) {
    const auto optionen = OptionenLesen(argc, argv);
    if (!optionen) {
        std::fprintf(stderr, "Aufruf: bench_nas [MB] [ordner] [--ohne-gdal] [--gdal-bis <MB>] "
                             "[--muster <datei.xml|datei.xml.xz>] [--konfig <ordner>] "
                             "[--cache <MiB>[,<MiB>...]]\n");
        return 2;
    }
    const auto& o = *optionen;
    const auto arbeit = o.ordner / ("flurix-bench-nas-" + std::to_string(::getpid()));
    fs::create_directories(arbeit);
    int rückgabe = 0;
    try {
        const auto muster = MusterBereitstellen(o, arbeit);
        std::printf("Muster: %s\n", muster.beschreibung.c_str());
        const long long klein = std::max<long long>(1, o.mb / 5);
        const auto kleinGemessen = GrößeMessen(o, muster, arbeit, klein);
        const auto großGemessen = GrößeMessen(o, muster, arbeit, o.mb);
        if (kleinGemessen && großGemessen) {
            // SQLite's page cache follows the database up to its set size; what is left is the
            // reader's own memory, which must not follow the file.
            const auto zeile = [](long long mb, const Importmessung& m) {
                std::printf(
                    "Speicher bei %lld MB: Spitzen-RSS %.1f MB, davon SQLite höchstens %.1f MB, "
                    "ohne SQLite %.1f MB\n",
                    mb, static_cast<double>(m.spitzeKb) / 1024,
                    static_cast<double>(m.sqliteKb) / 1024,
                    static_cast<double>(m.spitzeKb - m.sqliteKb) / 1024);
            };
            zeile(klein, *kleinGemessen);
            zeile(o.mb, *großGemessen);
        } else {
            rückgabe = 1;
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "bench_nas: %s\n", e.what());
        rückgabe = 1;
    }
    std::error_code ec;
    fs::remove_all(arbeit, ec);
    return rückgabe;
}
