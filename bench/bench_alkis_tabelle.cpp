// Benchmark of the two passes over the table Alkis of a district of 150,000 rows: the shipped
// column mapping ALKIS_Zuordnung.dat (timed per kind of line, a run of DEL lines being one piece)
// and "Daten ordnen" (with and without the parcel's own ring in the row, beside one plain UPDATE
// over every row as SQLite's floor). The rows are made here from the columns and the first row of
// the test fixtures tests/daten/nas/alkis_reorganisiert.tab and daten_ordnen.tab.
//   bench_alkis_tabelle [--benchmark_...]        (150,000 rows; the database in the temp dir)
#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "nas/daten_ordnen.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"
#include "nas/zuordnung.hpp"

#include "../tests/nas/tabellentext.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace flurix;
using namespace flurix::nas;

constexpr int Zeilenzahl = 150'000;
const fs::path Quellordner = fs::path(__FILE__).parent_path().parent_path();
const fs::path Testdaten = Quellordner / "tests" / "daten" / "nas";

/// A scratch folder removed at the end.
struct Ordner {
    fs::path pfad = fs::temp_directory_path() / ("flurix_bench_alkis_" + std::to_string(::getpid()));
    Ordner() { fs::create_directories(pfad); }
    Ordner(const Ordner&) = delete;
    Ordner& operator=(const Ordner&) = delete;
    ~Ordner() {
        std::error_code ec;
        fs::remove_all(pfad, ec);
    }
};

std::string Liste(const std::vector<std::string>& spalten, bool fragen) {
    std::string text;
    for (const auto& s : spalten)
        text += (text.empty() ? "" : ", ") + (fragen ? std::string("?") : Bezeichner(s));
    return text;
}

// A ring of 20 points, each segment's end written twice as NAS has it: about 900 characters.
std::string NasRing(int n) {
    std::string text;
    const double x = 350000 + n % 1000;
    const double y = 5530000 + n / 1000;
    for (int i = 0; i < 20; ++i) {
        const std::string punkt = std::to_string(x + i * 1.234567).substr(0, 10) + " " +
                                  std::to_string(y + (i % 7) * 2.345678).substr(0, 11);
        text += (text.empty() ? "" : " ") + punkt + (i > 0 && i < 19 ? " " + punkt : "");
    }
    return text;
}

/// Alkis as the reorganisation leaves it: the fixture's columns and offices, 150,000 rows made
/// from its first row, two owners a parcel.
void ReorganisierteAlkis(Datenbank& db) {
    auto tabellen = test::TabellentexteLesen(Testdaten / "alkis_reorganisiert.tab");
    const test::Tabellentext alkis = tabellen.front();
    tabellen.front().zeilen.clear();
    test::TabellenAnlegen(db, tabellen);
    Transaktion t(db);
    auto einfügen = db.VorbereitenNativ("INSERT INTO Alkis (" + Liste(alkis.spalten, false) +
                                        ") VALUES (" + Liste(alkis.spalten, true) + ")");
    for (int n = 0; n < Zeilenzahl; ++n) {
        einfügen.Zurücksetzen();
        for (std::size_t i = 0; i < alkis.spalten.size(); ++i) {
            const std::string& s = alkis.spalten[i];
            const std::string& vorlage = alkis.zeilen.front()[i];
            if (s == "gml:exterior" || s == "gml:LineStringSegment")
                einfügen.Binde(NasRing(n));
            else if (s == "flurstueckskennzeichen")
                einfügen.Binde("0725660040" + std::to_string(10000000 + n / 2) + "00");
            else if (s == "laufendeNummerNachDIN1421_AX_Namensnummer")
                einfügen.Binde(n % 2 == 0 ? "0001" : "0002");
            else if (s.starts_with("id") && vorlage == "\\N")
                einfügen.Binde("DERP1234000002" + std::to_string(n));
            else if (vorlage == "\\N")
                einfügen.Binde(nullptr);
            else
                einfügen.Binde(std::string_view(vorlage));
        }
        einfügen.Schritt();
    }
    t.Bestätigen();
    db.AusführenNativ("CREATE INDEX Alkis_fkz ON Alkis (flurstueckskennzeichen)");
}

void ZuordnungMitgelieferteDatei(benchmark::State& state) {
    const auto zeilen =
        ZuordnungLesen(DateitextNachUtf8(DateiKomplettLesen(Quellordner / "config" / "ALKIS_Zuordnung.dat")));
    std::map<std::string, double> sekunden;
    for (auto _ : state) {
        state.PauseTiming();
        Ordner ordner;
        SkriptOberfläche ui;
        auto db = DAO_DatenbankAnlegen(ordner.pfad / "gross.sqlite");
        ReorganisierteAlkis(*db);
        NasProtokoll protokoll(ui, ordner.pfad / "gross.xml.prn");
        state.ResumeTiming();
        std::int64_t fehler = 0;
        for (std::size_t i = 0; i < zeilen.size();) {
            std::size_t bis = i + 1;
            if (zeilen[i].starts_with("DEL "))
                while (bis < zeilen.size() && zeilen[bis].starts_with("DEL "))
                    ++bis;
            const std::vector<std::string> stück(zeilen.begin() + static_cast<std::ptrdiff_t>(i),
                                                 zeilen.begin() + static_cast<std::ptrdiff_t>(bis));
            const auto vorher = std::chrono::steady_clock::now();
            fehler += ZuordnungAusführen(*db, stück, protokoll, ui).fehlgeschlagen;
            sekunden[zeilen[i].starts_with("SQL UPDATE") ? "SQL_UPDATE" : zeilen[i].substr(0, 3)] +=
                std::chrono::duration<double>(std::chrono::steady_clock::now() - vorher).count();
            i = bis;
        }
        state.PauseTiming();
        if (fehler != 0)
            state.SkipWithError("Zeilen der Zuordnung fehlgeschlagen");
        db.reset();
        state.ResumeTiming();
    }
    for (const auto& [art, zeit] : sekunden)
        state.counters[art + "_s"] = zeit / static_cast<double>(state.iterations());
    state.counters["Zeilen"] = Zeilenzahl;
}
BENCHMARK(ZuordnungMitgelieferteDatei)->Unit(benchmark::kMillisecond)->Iterations(1);

std::string MitNullen(int zahl, int stellen) {
    std::string text = std::to_string(zahl);
    return std::string(static_cast<std::size_t>(std::max(0, stellen - static_cast<int>(text.size()))), '0') +
           text;
}

/// Alkis as the column mapping leaves it, three owners a parcel, the rows of one parcel far apart;
/// with `mitAußenring` the parcel's own ring stands in the row too (about 3 KB a ring).
void ZugeordneteAlkis(Datenbank& db, bool mitAußenring) {
    auto tabellen = test::TabellentexteLesen(Testdaten / "daten_ordnen.tab");
    std::vector<std::string> spalten = {"id"};
    if (mitAußenring)
        spalten.push_back("gml:exterior");
    for (int i = 0; i < 60; ++i)
        spalten.push_back("quelle_" + std::to_string(i));
    for (const auto& s : tabellen.front().spalten)
        if (s != "id")
            spalten.push_back(s);
    tabellen.front() = {"Alkis", spalten, {}};
    test::TabellenAnlegen(db, tabellen);

    std::string ring;
    for (int p = 0; ring.size() < 3000; ++p)
        ring += (p ? ";" : "") + std::to_string(389000 + p) + ".123 " + std::to_string(5600000 + p) + ".456";
    Transaktion t(db);
    auto einfügen =
        db.VorbereitenNativ("INSERT INTO Alkis (" + Liste(spalten, false) + ") VALUES (" + Liste(spalten, true) + ")");
    const int flurstücke = Zeilenzahl / 3;
    const std::map<std::string, std::string> fest = {
        {"Geburtsdatum", "1950-03-01"},       {"Nutzung_tatsächlich", "Wohnbaufläche;Wald"},
        {"Nachname_sonstiges", "Müller"},     {"Nutzungsart", "AX_Wohnbauflaeche 1200.00;AX_Wald 300.50"},
        {"Vorname_sonstiges", "Hans"},        {"Anteil_Grundstück", "1 3"},
        {"Hochwert", "5600123.25"},
    };
    for (int i = 0; i < Zeilenzahl; ++i) {
        const int flurstück = static_cast<int>((static_cast<std::int64_t>(i) * 7919) % flurstücke);
        einfügen.Zurücksetzen();
        for (const auto& s : spalten) {
            std::string w;
            if (s == "id")
                w = std::to_string(i);
            else if (s == "gml:exterior" || s == "UmringFlurstück")
                w = ring;
            else if (s.starts_with("quelle_"))
                w = "Wert " + std::to_string(i % 97);
            else if (s == "Flurstückskennzeichen")
                w = "0725660040" + MitNullen(flurstück, 5) + "00000";
            else if (s == "Gemeindeschlüssel")
                w = "07231" + MitNullen(100 + flurstück % 50, 3);
            else if (s == "Grundbuchblatt")
                w = std::to_string(1000 + flurstück % 900);
            else if (s == "Namensnummer")
                w = MitNullen(i % 3 + 1, 4);
            else if (s == "buchungsblattbezirk")
                w = i % 2 ? "07 2566" : "07 2567";
            else if (s == "Fläche")
                w = std::to_string(flurstück) + ".00";
            else if (s == "Rechtswert")
                w = i % 10 == 0 ? "" : "389012.5";
            else if (const auto it = fest.find(s); it != fest.end())
                w = it->second;
            einfügen.Binde(std::string_view(w));
        }
        einfügen.Schritt();
    }
    t.Bestätigen();
}

void DatenOrdnen150000(benchmark::State& state, bool mitAußenring) {
    double update = 0;
    for (auto _ : state) {
        state.PauseTiming();
        Ordner ordner;
        auto db = DAO_DatenbankAnlegen(ordner.pfad / "gross.sqlite");
        ZugeordneteAlkis(*db, mitAußenring);
        SkriptOberfläche ui;
        NasProtokoll protokoll(ui, ordner.pfad / "gross.xml.prn");
        OrdnenUmgebung umgebung;
        umgebung.antragsnummer = "A-2024-17";
        umgebung.systemWert = "25832_32";
        umgebung.amtsgerichte = "072408=Amtsgericht Wittlich\r\n";
        state.ResumeTiming();
        const std::int64_t n = DatenOrdnen(*db, umgebung, protokoll, ui);
        state.PauseTiming();
        if (n != Zeilenzahl)
            state.SkipWithError("Daten ordnen hat nicht jede Zeile gesehen");
        // SQLite's own floor: one UPDATE that rewrites every row once.
        const auto vorher = std::chrono::steady_clock::now();
        db->AusführenNativ("UPDATE Alkis SET \"IDlfd_Nr\" = 'x' || \"IDlfd_Nr\"");
        update += std::chrono::duration<double>(std::chrono::steady_clock::now() - vorher).count();
        db.reset();
        state.ResumeTiming();
    }
    state.counters["ein_UPDATE_s"] = update / static_cast<double>(state.iterations());
    state.counters["Zeilen"] = Zeilenzahl;
}
BENCHMARK_CAPTURE(DatenOrdnen150000, ohne_gml_exterior, false)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK_CAPTURE(DatenOrdnen150000, mit_gml_exterior, true)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

BENCHMARK_MAIN();
