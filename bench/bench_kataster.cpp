// The cadastre table at the size of a county: 500,000 rows of the 66 catalogue columns and four
// more (70), filled with cadastre-like texts: Gemarkung names from a short list, Flur 001 to 030,
// parcel numbers "00231/001", 20-digit parcel keys, one to three owners a parcel with names,
// birth dates, streets and towns, areas, coordinates, and empty cells where the register leaves
// them empty. Each step runs once and prints its figures:
//   - adding rows from tab-joined strings (rows a minute; the strings are made beforehand),
//   - memory of the table (Kataster::Speicher) and of the process (VmRSS),
//   - the default sort "Gemarkung,Flur,Flurstück,Eigentümerposition",
//   - a parcel list of 10,000 keys marked against the table,
//   - one find in a column, and one search of the search bar.
// Sizes: bench_kataster [<rows> [<keys of the list>]], by default 500000 and 10000.

#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/markierung.hpp"
#include "core/oberflaeche.hpp"
#include "core/suche.hpp"

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

using namespace flurix;
using Uhr = std::chrono::steady_clock;

std::size_t Zeilen = 500'000;
std::size_t Listenlänge = 10'000;
constexpr std::size_t Stapel = 20'000; // rows made as strings before each timed add

double Sekunden(Uhr::time_point seit) {
    return std::chrono::duration<double>(Uhr::now() - seit).count();
}

// Resident memory of the process in MB, from /proc/self/status.
double VmRssMB() {
    std::ifstream status("/proc/self/status");
    for (std::string zeile; std::getline(status, zeile);)
        if (zeile.starts_with("VmRSS:"))
            return std::stod(zeile.substr(6)) / 1024.0;
    return -1;
}

// splitmix64: the same table on every run, without the cost of a standard engine's state.
class Zufall {
public:
    explicit Zufall(std::uint64_t start) : m_zustand(start) {}
    std::uint64_t Nächste() {
        std::uint64_t z = (m_zustand += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    std::size_t Bis(std::size_t n) { return static_cast<std::size_t>(Nächste() % n); }
    template <class T, std::size_t N> const T& Aus(const std::array<T, N>& liste) {
        return liste[Bis(N)];
    }

private:
    std::uint64_t m_zustand;
};

std::string Nullen(std::uint64_t zahl, std::size_t stellen) {
    std::string text = std::to_string(zahl);
    return std::string(stellen > text.size() ? stellen - text.size() : 0, '0') + text;
}

constexpr std::array<std::string_view, 12> Gemarkungen = {
    "Falkensee", "Dallgow",   "Seeburg",      "Groß Glienicke", "Schönwalde", "Wustermark",
    "Elstal",    "Priort",    "Buchow-Karpzow", "Zeestow",      "Brieselang", "Bredow"};
constexpr std::array<std::string_view, 24> Nachnamen = {
    "Müller", "Schmidt", "Schneider", "Fischer", "Weber",   "Meyer",   "Wagner",  "Becker",
    "Schulz", "Hoffmann", "Schäfer",  "Koch",    "Bauer",   "Richter", "Klein",   "Wolf",
    "Schröder", "Neumann", "Schwarz", "Zimmermann", "Braun", "Krüger", "Hofmann", "Hartmann"};
constexpr std::array<std::string_view, 16> Vornamen = {
    "Hans", "Jürgen", "Petra", "Sabine", "Klaus", "Ursula", "Thomas", "Monika",
    "Günter", "Renate", "Andreas", "Karin", "Michael", "Brigitte", "Jörg", "Gisela"};
constexpr std::array<std::string_view, 14> Straßen = {
    "Hauptstraße", "Bahnhofstraße", "Dorfstraße", "Gartenstraße", "Schulstraße", "Am Anger",
    "Lindenallee", "Birkenweg", "Feldweg", "Spandauer Straße", "Potsdamer Chaussee",
    "Falkenseer Damm", "Am Mühlenberg", "Seepromenade"};
constexpr std::array<std::string_view, 8> Orte = {
    "14612 Falkensee", "14624 Dallgow-Döberitz", "14641 Wustermark", "13591 Berlin",
    "14656 Brieselang", "14467 Potsdam", "10115 Berlin", "14641 Nauen"};
constexpr std::array<std::string_view, 8> Nutzungen = {
    "Wohnbaufläche", "Ackerland", "Grünland", "Wald", "Straßenverkehr", "Gartenland",
    "Ackerland; Grünland", "Wohnbaufläche; Gartenland"};

// One parcel with its owners; the cells of its rows come from here.
struct Flurstück {
    std::size_t gemarkung;
    std::string flur, zähler, nenner, fläche, rechts, hoch, blatt, lage, fkz;
    std::size_t eigentümer;
};

// The cell of a catalogue column for a parcel and its owner at `position` (1, 2, 3).
using Zellfunktion = std::function<std::string(const Flurstück&, std::size_t, Zufall&)>;

std::vector<Zellfunktion> Zellfunktionen(const Kataster& kataster) {
    const auto gk = [](const Flurstück& f) { return "12" + Nullen(4000 + f.gemarkung * 37, 4); };
    const std::vector<std::pair<std::string_view, Zellfunktion>> je = {
        {"Landkreis", [](auto&, auto, auto&) { return std::string("Havelland"); }},
        {"Katasteramt", [](auto&, auto, auto&) { return std::string("Kataster- und Vermessungsamt Havelland"); }},
        {"Gemeinde", [](const Flurstück& f, auto, auto&) { return std::string(Gemarkungen[f.gemarkung / 2 * 2]); }},
        {"Gemeindeschlüssel", [](const Flurstück& f, auto, auto&) { return "12063" + Nullen(f.gemarkung / 2 * 8, 3); }},
        {"Gemarkung", [](const Flurstück& f, auto, auto&) { return std::string(Gemarkungen[f.gemarkung]); }},
        {"Gemarkungsschlüssel", [gk](const Flurstück& f, auto, auto&) { return gk(f); }},
        {"Flur", [](const Flurstück& f, auto, auto&) { return f.flur; }},
        {"Amtsgericht", [](auto&, auto, auto&) { return std::string("Nauen"); }},
        {"Amtsgerichtsschlüssel", [](auto&, auto, auto&) { return std::string("0312"); }},
        {"Grundbuchbezirk", [](const Flurstück& f, auto, auto&) { return std::string(Gemarkungen[f.gemarkung]); }},
        {"Grundbuchblatt", [](const Flurstück& f, auto, auto&) { return f.blatt; }},
        {"BVNR", [](auto&, auto, Zufall& z) { return Nullen(1 + z.Bis(40), 4); }},
        {"Buchungsart", [](auto&, auto, auto&) { return std::string("Grundstück"); }},
        {"Flurstück", [](const Flurstück& f, auto, auto&) { return f.zähler + "/" + f.nenner; }},
        {"Nutzungsart", [](auto&, auto, Zufall& z) { return std::string(z.Aus(Nutzungen)); }},
        {"Fläche", [](const Flurstück& f, auto, auto&) { return f.fläche; }},
        {"Prüfzeichen", [](auto&, auto, Zufall& z) { return std::string(1, static_cast<char>('A' + z.Bis(26))); }},
        {"Aktualitätsnummer", [](auto&, auto, Zufall& z) { return std::to_string(z.Bis(10)); }},
        {"Eigentümerposition", [](auto&, std::size_t p, auto&) { return Nullen(p, 4); }},
        {"Name", [](auto&, auto, Zufall& z) { return std::string(z.Aus(Nachnamen)) + ", " + std::string(z.Aus(Vornamen)); }},
        {"Namenszusatz", [](auto&, auto, Zufall& z) {
             return "geb. " + Nullen(1 + z.Bis(28), 2) + "." + Nullen(1 + z.Bis(12), 2) + "." +
                    std::to_string(1925 + z.Bis(80));
         }},
        {"Straße", [](auto&, auto, Zufall& z) { return std::string(z.Aus(Straßen)) + " " + std::to_string(1 + z.Bis(120)); }},
        {"Ort", [](auto&, auto, Zufall& z) { return std::string(z.Aus(Orte)); }},
        {"Eigentümerzusatz", [](auto&, auto, Zufall& z) { return z.Bis(20) == 0 ? std::string("Erbengemeinschaft") : std::string(); }},
        {"sonstigesBOV", [](auto&, auto, Zufall& z) { return z.Bis(50) == 0 ? std::string("Bodenordnungsverfahren Nr. 12") : std::string(); }},
        {"Lagebezeichnung", [](const Flurstück& f, auto, auto&) { return f.lage; }},
        {"Straßenschlüssel", [](auto&, auto, Zufall& z) { return Nullen(z.Bis(900), 5); }},
        {"Rechtswert", [](const Flurstück& f, auto, auto&) { return f.rechts; }},
        {"Hochwert", [](const Flurstück& f, auto, auto&) { return f.hoch; }},
        {"Nutzung_tatsächlich", [](auto&, auto, Zufall& z) { return std::string(z.Aus(Nutzungen)); }},
        {"NA_Klassifizierung", [](auto&, auto, Zufall& z) { return z.Bis(3) == 0 ? std::string("A; GR") : std::string(); }},
        {"NA-Fläche", [](const Flurstück& f, auto, auto&) { return f.fläche.substr(3); }},
        {"Flurstückskennzeichen", [](const Flurstück& f, auto, auto&) { return f.fkz; }},
        {"Finanzamt", [](auto&, auto, auto&) { return std::string("Nauen"); }},
        {"Finanzamtsschlüssel", [](auto&, auto, auto&) { return std::string("3047"); }},
        {"Klassifizierung", [](auto&, auto, Zufall& z) { return z.Bis(3) == 0 ? std::string("L IIa 3; GR II b 2") : std::string(); }},
        {"Namensnummer", [](auto&, std::size_t p, auto&) { return "0" + std::to_string(p) + ".00"; }},
        {"Flurstück-Vorgänger", [](auto&, auto, Zufall& z) { return z.Bis(10) == 0 ? std::string("121955-007-00230/000") : std::string(); }},
        {"Flurstück-Zähler", [](const Flurstück& f, auto, auto&) { return std::to_string(std::stoi(f.zähler)); }},
        {"Flurstück-Nenner", [](const Flurstück& f, auto, auto&) { return std::to_string(std::stoi(f.nenner)); }},
        {"BZ", [](auto&, auto, Zufall& z) { return z.Bis(3) == 0 ? std::to_string(20 + z.Bis(60)) : std::string(); }},
        {"AZ", [](auto&, auto, Zufall& z) { return z.Bis(3) == 0 ? std::to_string(20 + z.Bis(60)) : std::string(); }},
        {"EMZ", [](auto&, auto, Zufall& z) { return z.Bis(3) == 0 ? std::to_string(z.Bis(90000)) : std::string(); }},
        {"Vorname_sonstiges", [](auto&, auto, Zufall& z) { return std::string(z.Aus(Vornamen)); }},
        {"Geburtsname", [](auto&, auto, Zufall& z) { return z.Bis(4) == 0 ? std::string(z.Aus(Nachnamen)) : std::string(); }},
        {"Anteilsverhältnis", [](const Flurstück& f, auto, auto&) { return "1/" + std::to_string(f.eigentümer); }},
        {"Entstehung", [](auto&, auto, Zufall& z) { return std::to_string(1960 + z.Bis(60)) + "/" + Nullen(z.Bis(999), 4); }},
        {"Fortführung", [](auto&, auto, Zufall& z) { return std::to_string(2000 + z.Bis(24)) + "/" + Nullen(z.Bis(999), 4); }},
        {"Grundbuchbezirkschlüssel", [gk](const Flurstück& f, auto, auto&) { return gk(f); }},
        {"GB-Aktualität", [](auto&, auto, Zufall& z) { return std::to_string(z.Bis(20)); }},
        {"Auszug Format", [](auto&, auto, auto&) { return std::string("NAS"); }},
        {"EPSG", [](auto&, auto, auto&) { return std::string("25833"); }},
        {"Straßenschlüsselname", [](const Flurstück& f, auto, auto&) { return f.lage.substr(0, f.lage.rfind(' ')); }},
    };
    std::vector<Zellfunktion> funktionen(kataster.Spaltenzahl());
    for (const auto& [schlüssel, funktion] : je)
        if (const auto spalte = kataster.SpaltenIndex(schlüssel))
            funktionen[*spalte] = funktion;
    return funktionen;
}

Flurstück NeuesFlurstück(Zufall& z) {
    Flurstück f;
    f.gemarkung = z.Bis(Gemarkungen.size());
    f.flur = Nullen(1 + z.Bis(30), 3);
    const std::size_t zähler = 1 + z.Bis(3000);
    const std::size_t nenner = z.Bis(4) == 0 ? 0 : 1 + z.Bis(12);
    f.zähler = Nullen(zähler, 5);
    f.nenner = Nullen(nenner, 3);
    f.fläche = Nullen(50 + z.Bis(250'000), 9);
    f.rechts = std::to_string(33'360'000 + z.Bis(40'000)) + "." + Nullen(z.Bis(100), 2);
    f.hoch = std::to_string(5'820'000 + z.Bis(40'000)) + "." + Nullen(z.Bis(100), 2);
    f.blatt = Nullen(1 + z.Bis(8000), 6);
    f.lage = std::string(z.Aus(Straßen)) + " " + std::to_string(1 + z.Bis(120));
    f.fkz = "12" + Nullen(4000 + f.gemarkung * 37, 4) + f.flur + f.zähler + Nullen(nenner, 4) + "00";
    f.eigentümer = 1 + (z.Bis(10) < 6 ? 0 : z.Bis(3));
    return f;
}

// A table that answers nothing and counts its status texts.
class StilleOberfläche final : public Oberfläche {
public:
    void Meldung(std::string_view, std::string_view, Stil) override { ++meldungen; }
    Antwort Frage(const Fragestellung& frage) override { return frage.unbeaufsichtigt; }
    void Status(int, std::string_view) override { ++status; }
    void Fortschritt(long long, long long) override {}
    bool AbbruchGewünscht() override { return false; }
    void Protokoll(std::string_view) override {}
    std::size_t meldungen = 0, status = 0;
};

} // namespace

int main(int argc, char** argv) {
    if (argc > 1)
        Zeilen = std::stoul(argv[1]);
    if (argc > 2)
        Listenlänge = std::stoul(argv[2]);
    const double rssVorher = VmRssMB();
    Kataster kataster;
    SpaltenAnlegen(kataster);
    for (const char* weitere : {"ID_GG", "UmringFlurstück", "EPSG", "Straßenschlüsselname"})
        kataster.SpalteHinzufügen({weitere, weitere, 1000});
    const auto funktionen = Zellfunktionen(kataster);
    std::printf("Tabelle: %zu Zeilen x %zu Spalten\n", Zeilen, kataster.Spaltenzahl());

    // 1. Rows from tab-joined strings; only the adding is timed.
    Zufall zufall(20261123);
    std::vector<std::string> stapel;
    std::vector<std::string> schlüssel; // one key of each parcel, for the list
    double hinzufügen = 0;
    std::size_t textBytes = 0;
    Flurstück f = NeuesFlurstück(zufall);
    std::size_t position = 1;
    while (kataster.Zeilenzahl() < Zeilen) {
        stapel.clear();
        while (stapel.size() < Stapel && kataster.Zeilenzahl() + stapel.size() < Zeilen) {
            if (position > f.eigentümer) {
                f = NeuesFlurstück(zufall);
                position = 1;
            }
            if (position == 1)
                schlüssel.push_back(f.fkz);
            std::string zeile;
            for (std::size_t s = 0; s < funktionen.size(); ++s) {
                if (s > 0)
                    zeile += '\t';
                if (funktionen[s])
                    zeile += funktionen[s](f, position, zufall);
            }
            textBytes += zeile.size();
            stapel.push_back(std::move(zeile));
            ++position;
        }
        const auto start = Uhr::now();
        for (const auto& zeile : stapel)
            kataster.ZeileHinzufügen(zeile);
        hinzufügen += Sekunden(start);
    }
    stapel = {};
    std::printf("Zeilen hinzufügen:     %.3f s, %.0f Zeilen/Minute (%.0f MB Text, %zu Flurstücke)\n",
                hinzufügen, Zeilen / hinzufügen * 60, textBytes / 1e6, schlüssel.size());

    // 2. Memory.
    std::printf("Speicher der Tabelle:  %.1f MB (Kataster::Speicher)\n", kataster.Speicher() / 1e6);
    std::printf("VmRSS des Prozesses:   %.1f MB (vor der Tabelle %.1f MB)\n", VmRssMB(), rssVorher);

    // 3. The default sort.
    auto start = Uhr::now();
    kataster.Sortieren(StandardSortierung);
    std::printf("Sortieren %s: %.3f s\n", std::string(StandardSortierung).c_str(), Sekunden(start));

    // 4. A parcel list of 10,000 keys: most of them in the table, every 20th not; every 10th in
    // the blank form.
    const auto liste = std::filesystem::temp_directory_path() /
                       ("flurix-bench-" + std::to_string(::getpid()) + "-liste.lst");
    {
        std::ofstream aus(liste, std::ios::binary);
        for (std::size_t i = 0; i < Listenlänge; ++i) {
            std::string fkz = schlüssel[zufall.Bis(schlüssel.size())];
            if (i % 20 == 19)
                fkz.replace(9, 5, "99999");
            if (i % 10 == 3)
                aus << fkz.substr(0, 6) << "  " << std::stoi(fkz.substr(6, 3)) << " "
                    << std::stoi(fkz.substr(9, 5)) << "/" << std::stoi(fkz.substr(14, 4)) << "\r\n";
            else
                aus << fkz << "\r\n";
        }
    }
    start = Uhr::now();
    const auto index = kataster.IndexBauen(*kataster.SpaltenIndex("Flurstückskennzeichen"));
    const double indexZeit = Sekunden(start);
    StilleOberfläche ui;
    start = Uhr::now();
    const Listenergebnis ergebnis = DbMarkierungLaden(kataster, liste, ui);
    std::printf("Flurstücksliste:       %.3f s für %zu Schlüssel: %zu gefunden, %zu nicht, %zu Zeilen "
                "markiert (darin: Index %.3f s, zwei Sortierungen)\n",
                Sekunden(start), ergebnis.listenzeilen, ergebnis.flurstücke, ergebnis.nichtGefunden,
                ergebnis.selektiert, indexZeit);
    std::filesystem::remove(liste);
    std::filesystem::remove(liste.string() + ".err");

    // 5. One find in a column: a column of few texts, and the key column of one text a parcel
    // (each find folds every distinct text of its column once).
    for (const char* spalte : {"Name", "Flurstückskennzeichen"}) {
        start = Uhr::now();
        const auto gefunden = kataster.Suchen(*kataster.SpaltenIndex(spalte), "Zimmermann, Otto");
        std::printf("Suchen in %-22s %.1f ms (%s)\n", spalte, Sekunden(start) * 1000,
                    gefunden ? "gefunden" : "kein Treffer: die ganze Spalte");
    }
    start = Uhr::now();
    const std::size_t treffer =
        CmdFlurixSuchbegriff(kataster, "Name", "müller, hans", std::nullopt, false, nullptr, ui);
    std::printf("CmdFlurixSuchbegriff:  %.1f ms (Name \"müller, hans\", %zu Treffer, mit Sortierung)\n",
                Sekunden(start) * 1000, treffer);
    return 0;
}
