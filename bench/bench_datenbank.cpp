// The database wrapper under the load of the WLDGE import: a million parcel rows inserted in one
// transaction through one prepared statement, and the set-based key-text statements of the
// staging database (MID, Instr, &) over 100,000 rows. Prints rows per second.

#include "core/datenbank.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <unistd.h>

namespace flurix {
namespace {

// A database file in the temp folder, removed (with its journal) before and after.
class Datenbankdatei {
public:
    Datenbankdatei()
        : m_pfad(std::filesystem::temp_directory_path() /
                 ("flurix-bench-" + std::to_string(::getpid()) + ".sqlite")) {
        Entfernen();
    }
    Datenbankdatei(const Datenbankdatei&) = delete;
    Datenbankdatei& operator=(const Datenbankdatei&) = delete;
    Datenbankdatei(Datenbankdatei&&) = delete;
    Datenbankdatei& operator=(Datenbankdatei&&) = delete;
    ~Datenbankdatei() { Entfernen(); }

    const std::filesystem::path& pfad() const { return m_pfad; }

private:
    void Entfernen() {
        std::error_code ec;
        std::filesystem::remove(m_pfad, ec);
        std::filesystem::remove(m_pfad.string() + "-journal", ec);
    }

    std::filesystem::path m_pfad;
};

constexpr std::size_t Feldanzahl = 10;

const std::vector<Feld>& Felder() {
    static const std::vector<Feld> felder = {{"Land"},
                                             {"Gemarkung"},
                                             {"Flur"},
                                             {"Flurstück"},
                                             {"IDKeyFlst"},
                                             {"IDKeyGb"},
                                             {"Gemeindeschlüssel"},
                                             {"Straßenschlüssel"},
                                             {"Nutzungsart"},
                                             {"Lagebezeichnung"}};
    return felder;
}

// Rows that look like the parcels of one district, computed from the row number: a cheap
// linear congruential sequence picks keys, so that generating costs little beside SQLite.
class Zeilengenerator {
    struct Nummer {
        std::int64_t zahl;
        int stellen;
    };

public:
    // The cells of row `nr`; the views are valid until the next call.
    const std::array<std::string_view, Feldanzahl>& Zeile(std::int64_t nr) {
        m_zustand = m_zustand * 6364136223846793005ull + 1442695040888963407ull;
        const auto zufall = static_cast<std::int64_t>(m_zustand >> 33);
        const auto gemarkung = 3001 + zufall % 40;
        const auto flur = 1 + (zufall >> 8) % 30;
        const auto blatt = 100000 + nr % 400000;
        m_text.clear();
        m_text.reserve(256);
        std::array<std::size_t, Feldanzahl + 1> grenzen{};
        auto feld = [&](std::size_t i, auto&&... teile) {
            grenzen[i] = m_text.size();
            (Anhängen(teile), ...);
        };
        feld(0, "05");
        feld(1, Nummer{gemarkung, 4});
        feld(2, Nummer{flur, 3});
        feld(3, Nummer{nr % 100000, 5}, "/", Nummer{zufall % 7, 3});
        feld(4, "05", Nummer{gemarkung, 4}, Nummer{flur, 3}, Nummer{nr % 100000, 5}, "000");
        feld(5, "05", Nummer{gemarkung, 4}, "-", Nummer{blatt, 6});
        feld(6, "05334000", Nummer{2000 + zufall % 20, 4});
        feld(7, Nummer{zufall % 900, 5}, "; ", Nummer{zufall % 700, 5});
        feld(8, zufall % 3 == 0 ? "12-345; 99-001" : "31-100");
        feld(9, "Hauptstraße ", Nummer{zufall % 200, 1});
        grenzen[Feldanzahl] = m_text.size();
        for (std::size_t i = 0; i < Feldanzahl; ++i)
            m_zellen[i] = std::string_view(m_text).substr(grenzen[i], grenzen[i + 1] - grenzen[i]);
        return m_zellen;
    }

private:
    void Anhängen(std::string_view teil) { m_text.append(teil); }
    // A number with leading zeros to at least `stellen` digits.
    void Anhängen(Nummer nummer) {
        std::array<char, 24> ziffern{};
        const auto ende =
            std::to_chars(ziffern.data(), ziffern.data() + ziffern.size(), nummer.zahl).ptr;
        const auto länge = static_cast<int>(ende - ziffern.data());
        if (länge < nummer.stellen)
            m_text.append(static_cast<std::size_t>(nummer.stellen - länge), '0');
        m_text.append(ziffern.data(), ende);
    }

    std::uint64_t m_zustand = 4711;
    std::string m_text;
    std::array<std::string_view, Feldanzahl> m_zellen{};
};

// Fills the generated fields of tblFlurstück with `anzahl` rows in one transaction through one
// prepared statement.
void Füllen(Datenbank& db, std::int64_t anzahl) {
    std::string felder, parameter;
    for (std::size_t i = 0; i < Feldanzahl; ++i) {
        felder += (i > 0 ? ", " : "") + JetBezeichner(Felder()[i].name);
        parameter += i > 0 ? ", ?" : "?";
    }
    Zeilengenerator generator;
    Transaktion transaktion(db);
    auto einfügen =
        db.Vorbereiten("INSERT INTO tblFlurstück (" + felder + ") VALUES (" + parameter + ")");
    for (std::int64_t nr = 0; nr < anzahl; ++nr) {
        for (const auto zelle : generator.Zeile(nr))
            einfügen.Binde(zelle);
        einfügen.Schritt();
        einfügen.Zurücksetzen();
    }
    transaktion.Bestätigen();
}

void Zeilenrate(benchmark::State& state, std::int64_t zeilenJeDurchlauf) {
    state.counters["Zeilen/s"] = benchmark::Counter(static_cast<double>(zeilenJeDurchlauf) *
                                                        static_cast<double>(state.iterations()),
                                                    benchmark::Counter::kIsRate);
}

void BM_MasseneinfügenInEinerTransaktion(benchmark::State& state) {
    const auto anzahl = state.range(0);
    for (auto _ : state) {
        state.PauseTiming();
        Datenbankdatei datei;
        {
            Datenbank db(datei.pfad());
            db.TabelleAnlegen("tblFlurstück", Felder());
            state.ResumeTiming();
            Füllen(db, anzahl);
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
    Zeilenrate(state, anzahl);
}
BENCHMARK(BM_MasseneinfügenInEinerTransaktion)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();

// One key-text statement of the staging database over a table of `state.range(0)` rows; each
// run is rolled back outside the timing, so that every run sees the same table.
void SchlüsseltextAnweisung(benchmark::State& state, const std::string& anweisung) {
    const auto anzahl = state.range(0);
    Datenbankdatei datei;
    Datenbank db(datei.pfad());
    auto felder = Felder();
    felder.push_back({"Nutzung_tatsächlich"});
    db.TabelleAnlegen("tblFlurstück", felder);
    Füllen(db, anzahl);
    std::int64_t geändert = 0;
    for (auto _ : state) {
        std::optional<Transaktion> transaktion(std::in_place, db);
        db.Ausführen(anweisung);
        geändert = db.Änderungen();
        state.PauseTiming();
        transaktion.reset(); // rolled back
        state.ResumeTiming();
    }
    state.counters["geändert"] = static_cast<double>(geändert);
    Zeilenrate(state, anzahl);
}

void BM_InstrAnweisung(benchmark::State& state) {
    SchlüsseltextAnweisung(state,
                           "UPDATE tblFlurstück SET Nutzung_tatsächlich = Nutzung_tatsächlich & "
                           "'Wohnbaufläche; ' WHERE Instr(Nutzungsart,  '12-345' ) > 0");
}
BENCHMARK(BM_InstrAnweisung)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_MidAnweisung(benchmark::State& state) {
    SchlüsseltextAnweisung(
        state,
        "UPDATE tblFlurstück SET Gemarkung = 'Musterdorf' WHERE MID(IDKeyFlst,1,6) = '053001'");
}
BENCHMARK(BM_MidAnweisung)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_StraßennamenAnweisung(benchmark::State& state) {
    SchlüsseltextAnweisung(
        state, "UPDATE tblFlurstück SET Lagebezeichnung = Lagebezeichnung & 'Hauptstraße; ' "
               "WHERE Gemeindeschlüssel = '053340002003' AND Strassenschlüssel LIKE '*00123*'");
}
BENCHMARK(BM_StraßennamenAnweisung)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseRealTime();

// Translating and preparing one statement: the reader does it once per key line.
void BM_ÜbersetzenUndVorbereiten(benchmark::State& state) {
    Datenbank db(":memory:");
    db.TabelleAnlegen("tblFlurstück", Felder());
    for (auto _ : state) {
        auto anweisung = db.Vorbereiten(
            "UPDATE tblFlurstück SET Lagebezeichnung = Lagebezeichnung & 'Hauptstraße; ' WHERE "
            "Gemeindeschlüssel = '053340002003' AND Strassenschlüssel LIKE '*00123*'");
        benchmark::DoNotOptimize(anweisung);
    }
    state.counters["Anweisungen/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ÜbersetzenUndVorbereiten);

} // namespace
} // namespace flurix

BENCHMARK_MAIN();
