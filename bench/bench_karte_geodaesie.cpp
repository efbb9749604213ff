// The map's conversions per second: geographic to ETRS89/UTM and back, on a table of 4096
// points spread over Germany in strips 32 and 33. The floor is a million a second each way.
//   bench_karte_geodaesie [--benchmark_filter=...]

#include "map/geodaesie.hpp"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

namespace flurix::karte {
namespace {

constexpr std::size_t Anzahl = 4096;

struct Punkt {
    double phi, lambda; // radians
    int L0;
};

std::vector<Punkt> Punkte() {
    std::vector<Punkt> punkte;
    for (std::size_t i = 0; i < Anzahl; ++i) {
        const double breite = 47.0 + 8.5 * static_cast<double>((i * 37) % Anzahl) / Anzahl;
        const double länge = 6.0 + 9.0 * static_cast<double>((i * 101) % Anzahl) / Anzahl;
        punkte.push_back({breite * Pi / 180.0, länge * Pi / 180.0, länge < 12.0 ? 9 : 15});
    }
    return punkte;
}

void Zaehlen(benchmark::State& state) {
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(Anzahl));
}

void GeographischNachEtrs(benchmark::State& state) {
    const std::vector<Punkt> punkte = Punkte();
    for (auto _ : state)
        for (const Punkt& p : punkte) {
            auto yx = GeographischBogenNachETRS(p.phi, p.lambda, p.L0);
            benchmark::DoNotOptimize(yx);
        }
    Zaehlen(state);
}
BENCHMARK(GeographischNachEtrs);

void EtrsNachGeographisch(benchmark::State& state) {
    std::vector<KoordinatenSatz> sätze;
    std::vector<int> streifen;
    for (const Punkt& p : Punkte()) {
        const auto [y, x] = GeographischBogenNachETRS(p.phi, p.lambda, p.L0);
        sätze.push_back({"", "", y, x, 0});
        streifen.push_back(p.L0);
    }
    for (auto _ : state)
        for (std::size_t i = 0; i < sätze.size(); ++i) {
            KoordinatenSatz geo = ETRSNachGeographisch(sätze[i], streifen[i]);
            benchmark::DoNotOptimize(geo.Wert1);
            benchmark::DoNotOptimize(geo.Wert2);
        }
    Zaehlen(state);
}
BENCHMARK(EtrsNachGeographisch);

} // namespace
} // namespace flurix::karte

BENCHMARK_MAIN();
