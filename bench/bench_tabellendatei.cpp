// Table files: writing and reading a table of 500,000 rows × 70 columns as ".fil" and ".tsv".
// The generator makes cadastre-like cells (names with umlauts, parcel numbers, areas, remarks that
// now and then hold a TAB, a line break or a backslash), so that the escaping does real work.
// Each case runs once; it prints the seconds and the file's megabytes per second.

#include "core/tabellendatei.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

using namespace flurix;

constexpr std::size_t Zeilen = 500000;
constexpr std::size_t Spaltenzahl = 70;
constexpr std::size_t Varianten = 1009; // prime, so that rows don't repeat in short cycles

// A pool of cell texts per kind of column; the row and column pick one.
class Generator {
public:
    Generator() {
        const std::array<std::string_view, 6> orte = {"Musterhausen", "Groß Schönebeck",
                                                      "Altdorf",      "Neuenkirchen",
                                                      "Überlingen",   "Bad Sülze"};
        const std::array<std::string_view, 6> namen = {
            "Müller, Hans-Jürgen", "Schäfer, Grete", "Weiß, Jörg",
            "Öztürk, Ayşe",        "Meier",          "Gemeinde Musterhausen"};
        for (std::size_t i = 0; i < Varianten; ++i) {
            const std::string n = std::to_string(i);
            m_pool[0].push_back(std::string(orte[i % orte.size()]));
            m_pool[1].push_back(std::string(3 - std::min<std::size_t>(3, n.size()), '0') + n);
            m_pool[2].push_back("0" + n + "/000" + std::to_string(i % 7));
            m_pool[3].push_back(std::string(namen[i % namen.size()]));
            m_pool[4].push_back(std::to_string(100000 + i * 37));
            m_pool[5].push_back("Hauptstraße " + n + (i % 3 == 0 ? "a" : ""));
            m_pool[6].push_back(i % 5 == 0    ? std::string()
                                : i % 11 == 0 ? "Zeile eins\nZeile zwei\tmit Tab"
                                : i % 13 == 0 ? "C:\\alt\\pfad"
                                              : "Bemerkung " + n);
        }
        m_zeile.resize(Spaltenzahl);
        for (std::size_t s = 0; s < Spaltenzahl; ++s)
            m_spalten.push_back({"Spalte" + std::to_string(s), "Überschrift " + std::to_string(s),
                                 1000, s % 4 != 0, static_cast<int>(s)});
    }

    const std::vector<TabellenSpalte>& Spalten() const { return m_spalten; }

    std::span<const std::string_view> Zeile(std::size_t r) {
        for (std::size_t s = 0; s < Spaltenzahl; ++s)
            m_zeile[s] = m_pool[s % m_pool.size()][(r * 31 + s * 17) % Varianten];
        return m_zeile;
    }

private:
    std::array<std::vector<std::string>, 7> m_pool;
    std::vector<TabellenSpalte> m_spalten;
    std::vector<std::string_view> m_zeile;
};

std::filesystem::path Datei(std::string_view endung) {
    return std::filesystem::temp_directory_path() /
           ("flurix-bench-" + std::to_string(::getpid()) + "-tabelle" + std::string(endung));
}

void TabelleSchreiben(const std::filesystem::path& datei) {
    Generator generator;
    TabellendateiSchreiber schreiber(datei, generator.Spalten());
    for (std::size_t r = 0; r < Zeilen; ++r)
        schreiber.Zeile(generator.Zeile(r));
    schreiber.Abschließen();
}

void Kennzahlen(benchmark::State& state, const std::filesystem::path& datei) {
    const auto bytes = std::filesystem::file_size(datei);
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
    state.counters["Datei_MB"] = static_cast<double>(bytes) / 1e6;
    state.counters["MB"] = benchmark::Counter(static_cast<double>(bytes) / 1e6 *
                                                  static_cast<double>(state.iterations()),
                                              benchmark::Counter::kIsRate);
}

void Schreiben(benchmark::State& state, std::string_view endung) {
    const auto datei = Datei(endung);
    for (auto _ : state)
        TabelleSchreiben(datei);
    Kennzahlen(state, datei);
    std::filesystem::remove(datei);
}

void Lesen(benchmark::State& state, std::string_view endung) {
    const auto datei = Datei(endung);
    TabelleSchreiben(datei);
    std::size_t zellen = 0;
    for (auto _ : state) {
        TabellendateiLeser leser(datei);
        zellen = 0;
        while (const auto zeile = leser.NächsteZeile())
            zellen += zeile->size();
        benchmark::DoNotOptimize(zellen);
    }
    if (zellen != Zeilen * Spaltenzahl)
        state.SkipWithError("falsche Zahl von Zellen gelesen");
    Kennzahlen(state, datei);
    std::filesystem::remove(datei);
}

BENCHMARK_CAPTURE(Schreiben, fil, ".fil")->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK_CAPTURE(Lesen, fil, ".fil")->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK_CAPTURE(Schreiben, tsv, ".tsv")->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK_CAPTURE(Lesen, tsv, ".tsv")->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
