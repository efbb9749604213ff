// The grid of the NAS work window over a table of a million parcel rows (nas/nas_abfrage.hpp):
// opening it (columns, count, first page), the jump to its last page by the rowid beside SQLite's
// OFFSET, the same over a table whose rowids have gaps, and the two things that still read the
// whole table, a sort by a header click and a filter, at 100,000 to 1,000,000 rows: they set the
// row limit of the warning before a table is shown (VisualisierungWarnenAb).
//   bench_nas_abfrage [--benchmark_...]   (the database, about 1 GB, in the temp dir)
#include "core/datenbank.hpp"
#include "nas/nas_abfrage.hpp"

#include "messen.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace flurix;
using namespace flurix::nas;

constexpr std::int64_t Million = 1'000'000;
constexpr std::array<std::int64_t, 4> Größen = {100'000, 250'000, 500'000, Million};
/// Rows of the table whose rows carry a boundary ring (about 1.4 KB a row).
constexpr std::int64_t RingZeilen = 250'000;

std::string Tabellenname(std::int64_t zeilen) { return "AX_Flurstueck_" + std::to_string(zeilen); }

/// Rows shaped as the scan stores AX_Flurstueck: identifiers, keys, an area, a location text and
/// the label point, about 280 bytes a row; with `ringpunkte` the label point is followed by a ring
/// of that many points (about 27 bytes each), as the parcel's boundary stands in the real table.
/// The values follow from the row number through a cheap linear congruential sequence, so that
/// sorting has real work to do.
void TabelleFüllen(Datenbank& db, const std::string& tabelle, std::int64_t zeilen,
                   int ringpunkte = 0) {
    const std::vector<Feld> felder = {{"gml:id"},
                                      {"flurstueckskennzeichen"},
                                      {"gemarkung"},
                                      {"flur", Feldtyp::Ganzzahl},
                                      {"zaehler", Feldtyp::Ganzzahl},
                                      {"nenner"},
                                      {"amtlicheFlaeche", Feldtyp::Zahl},
                                      {"lage"},
                                      {"position"},
                                      {"beginnt"}};
    db.TabelleAnlegen(tabelle, felder);
    Transaktion t(db);
    auto einfügen = db.VorbereitenNativ("INSERT INTO " + Bezeichner(tabelle) +
                                        " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    std::uint64_t zustand = 4711;
    std::string ring;
    for (int p = 0; p < ringpunkte; ++p)
        ring += " 38" + std::to_string(1000 + p) + ".123 " + std::to_string(5800000 + 7 * p) +
                ".456789";
    const std::array<const char*, 6> straßen = {"Hauptstraße", "Am Anger",  "Bahnhofstraße",
                                                "Lindenweg",   "Zur Mühle", "Gartenstraße"};
    for (std::int64_t n = 0; n < zeilen; ++n) {
        zustand = zustand * 6364136223846793005ull + 1442695040888963407ull;
        const auto zufall = static_cast<std::int64_t>(zustand >> 33);
        const std::string zähler = std::to_string(1 + zufall % 9000);
        einfügen.Zurücksetzen();
        einfügen.Binde("DEBBAL42" + std::to_string(10'000'000 + n) + "h'HH")
            .Binde("12" + std::to_string(3000 + zufall % 40) + "00" +
                   std::to_string(100 + n % 900) + zähler + "______")
            .Binde("12" + std::to_string(3000 + zufall % 40))
            .Binde(1 + (zufall >> 8) % 30)
            .Binde(1 + zufall % 9000)
            .Binde(zufall % 5 == 0 ? std::to_string(zufall % 40) : std::string())
            .Binde(static_cast<double>(zufall % 100'000) + 0.5)
            .Binde(std::string(straßen[static_cast<std::size_t>(zufall % 6)]) + " " +
                   std::to_string(zufall % 150))
            .Binde("ETRS89_UTM33 " + std::to_string(380000 + zufall % 9000) + ".123 " +
                   std::to_string(5800000 + zufall % 7000) + ".456 " + std::string(80, 'x') + ring)
            .Binde("2019-0" + std::to_string(1 + zufall % 9) + "-14T09:12:44Z");
        einfügen.Schritt();
    }
    t.Bestätigen();
    db.IndexAnlegen("gml_id", tabelle, std::vector<std::string>{"gml:id"});
}

/// The database of the benchmarks, made once: a table per size, and one of a million rows with
/// every tenth row deleted (its rowids have gaps).
struct Bestand {
    bench::Ordner ordner{"flurix_bench_nas_abfrage"};
    std::unique_ptr<Datenbank> db;
    double erzeugtSekunden = 0;

    Bestand() {
        const auto anfang = std::chrono::steady_clock::now();
        db = std::make_unique<Datenbank>(ordner.pfad() / "abfrage.sqlite");
        for (const auto zeilen : Größen)
            TabelleFüllen(*db, Tabellenname(zeilen), zeilen);
        TabelleFüllen(*db, "mit_Luecken", Million);
        TabelleFüllen(*db, "mit_Ringen", RingZeilen, 40);
        db->AusführenNativ("DELETE FROM mit_Luecken WHERE rowid % 10 = 3");
        erzeugtSekunden = bench::Sekunden(anfang);
    }
};

Bestand& Daten() {
    static Bestand bestand;
    return bestand;
}

/// Columns, count and first page: what the window does when a table is chosen.
void Öffnen(benchmark::State& state, const std::string& tabelle) {
    auto& db = *Daten().db;
    std::int64_t zeilen = 0;
    for (auto _ : state) {
        auto abfrage = Seitenabfrage::ÜberTabelle(db, tabelle);
        zeilen = abfrage.Zeilenzahl();
        benchmark::DoNotOptimize(abfrage.Zeile(0).data());
    }
    state.counters["Zeilen"] = static_cast<double>(zeilen);
}
BENCHMARK_CAPTURE(Öffnen, lueckenlos, Tabellenname(Million))
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);
BENCHMARK_CAPTURE(Öffnen, mit_Luecken, std::string("mit_Luecken"))
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);

/// The jump to the last page of an open table (the count is done before the timing).
void LetzteSeite(benchmark::State& state, const std::string& tabelle) {
    auto& db = *Daten().db;
    for (auto _ : state) {
        state.PauseTiming();
        auto abfrage = Seitenabfrage::ÜberTabelle(db, tabelle);
        const auto letzte = abfrage.Zeilenzahl() - 1;
        state.ResumeTiming();
        benchmark::DoNotOptimize(abfrage.Zeile(letzte).data());
    }
}
BENCHMARK_CAPTURE(LetzteSeite, lueckenlos, Tabellenname(Million))
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);
BENCHMARK_CAPTURE(LetzteSeite, mit_Luecken, std::string("mit_Luecken"))
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);

/// The last page through LIMIT/OFFSET, as a grid without a key would read it.
void LetzteSeiteOffset(benchmark::State& state) {
    auto& db = *Daten().db;
    const std::string sql = "SELECT * FROM " + Bezeichner(Tabellenname(Million)) + " LIMIT " +
                            std::to_string(SeitenGröße) + " OFFSET " +
                            std::to_string(Million - SeitenGröße);
    for (auto _ : state) {
        auto seite = db.VorbereitenNativ(sql);
        while (seite.Schritt())
            benchmark::DoNotOptimize(seite.Text(0).data());
    }
}
BENCHMARK(LetzteSeiteOffset)->Unit(benchmark::kMillisecond)->Iterations(5);

/// A header click on a column without index: the order of every row, then the first page; and
/// then a page in the middle, which reads its rows by rowid.
void Sortieren(benchmark::State& state, const std::string& tabelle) {
    auto& db = *Daten().db;
    auto abfrage = Seitenabfrage::ÜberTabelle(db, tabelle);
    double mitteMs = 0;
    for (auto _ : state) {
        abfrage.Sortieren(7); // lage
        benchmark::DoNotOptimize(abfrage.Zeile(0).data());
        state.PauseTiming();
        const auto anfang = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(abfrage.Zeile(abfrage.Zeilenzahl() / 2).data());
        mitteMs = bench::Sekunden(anfang) * 1000;
        state.ResumeTiming();
    }
    state.counters["Seite_Mitte_ms"] = mitteMs;
}
/// A filter on a text column without index (LIKE "Haupt*", a sixth of the rows): count and first
/// page.
void Filtern(benchmark::State& state, const std::string& tabelle) {
    auto& db = *Daten().db;
    auto abfrage = Seitenabfrage::ÜberTabelle(db, tabelle);
    std::vector<std::string> texte(abfrage.Spalten().size());
    texte[7] = "Haupt";
    const std::string bedingung = Filterbedingung(abfrage.Spalten(), texte);
    std::int64_t treffer = 0;
    for (auto _ : state) {
        abfrage.Filtern(bedingung);
        treffer = abfrage.Zeilenzahl();
        benchmark::DoNotOptimize(abfrage.Zeile(0).data());
    }
    state.counters["Treffer"] = static_cast<double>(treffer);
}
/// Sort and filter over each size and over the table whose rows carry rings.
[[maybe_unused]] const bool sortierenUndFiltern = [] {
    std::vector<std::pair<std::string, std::string>> tabellen;
    for (const auto zeilen : Größen)
        tabellen.emplace_back(std::to_string(zeilen), Tabellenname(zeilen));
    tabellen.emplace_back(std::to_string(RingZeilen) + "_mit_Ringen", "mit_Ringen");
    for (const auto& [name, tabelle] : tabellen)
        for (const auto& [art, lauf] :
             {std::pair{"Sortieren/", &Sortieren}, {"Filtern/", &Filtern}})
            benchmark::RegisterBenchmark((art + name).c_str(), lauf, tabelle)
                ->Unit(benchmark::kMillisecond)
                ->Iterations(3);
    return true;
}();

/// How long making the tables took, and the peak memory (the pages of the grid stay small).
void Bestandsdaten(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(Daten().db.get());
    state.counters["erzeugt_s"] = Daten().erzeugtSekunden;
    state.counters["Spitze_MB"] = static_cast<double>(bench::SpitzeMB());
}
BENCHMARK(Bestandsdaten)->Iterations(1);

} // namespace

BENCHMARK_MAIN();
