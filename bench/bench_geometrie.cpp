// Parcel geometry in its text forms: posUmring on the text of a ring of 10,000 points, and an arc
// turned into chords with the sagitta of the settings (0.01) and the finer one of the XML
// reorganisation (0.0001). The generator makes a ring of UTM coordinates with three decimals,
// uneven blanks and a repeated point now and then, as line segments of NAS files hold them.

#include "nas/geometrie.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>

namespace flurix::nas {
namespace {

void ZahlAnhängen(std::string& text, double wert) {
    std::array<char, 64> puffer{};
    const auto ergebnis = std::to_chars(puffer.data(), puffer.data() + puffer.size(), wert,
                                        std::chars_format::fixed, 3);
    text.append(puffer.data(), ergebnis.ptr);
}

/// A closed ring of `punkte` points around a parcel in UTM zone 33, every 37th point repeated.
std::string RingText(int punkte) {
    std::string text;
    for (int i = 0; i <= punkte; ++i) {
        const double w = 2 * std::numbers::pi * (i % punkte) / punkte;
        const double r = 120 + 15 * std::sin(7 * w);
        for (int mal = 0; mal < (i % 37 == 0 ? 2 : 1); ++mal) {
            ZahlAnhängen(text, 412345.678 + r * std::cos(w));
            text += i % 11 == 0 ? "  " : " ";
            ZahlAnhängen(text, 5712345.678 + r * std::sin(w));
            text += ' ';
        }
    }
    return text;
}

void PosUmringRing(benchmark::State& state) {
    const std::string text = RingText(static_cast<int>(state.range(0)));
    std::size_t länge = 0;
    for (auto _ : state) {
        const std::string liste = PosUmring(text);
        länge = liste.size();
        benchmark::DoNotOptimize(liste.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
    state.counters["Punkte/s"] = benchmark::Counter(static_cast<double>(state.range(0)) *
                                                        static_cast<double>(state.iterations()),
                                                    benchmark::Counter::kIsRate);
    state.counters["Ausgabe_Bytes"] = static_cast<double>(länge);
}
BENCHMARK(PosUmringRing)->Arg(10000);

/// A quarter circle of radius 25 m and a flat arc of 250 m radius over 40 degrees.
void BogenSehnen(benchmark::State& state, const char* bogen, double pfeilhöhe) {
    std::size_t punkte = 0;
    for (auto _ : state) {
        const std::string liste = BogenZuSehnen(bogen, pfeilhöhe);
        punkte = static_cast<std::size_t>(std::count(liste.begin(), liste.end(), ';')) + 1;
        benchmark::DoNotOptimize(liste.data());
    }
    state.counters["Punkte"] = static_cast<double>(punkte);
    state.counters["Bögen/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

constexpr const char* Viertelkreis =
    "412370.678 5712345.678 412363.356 5712363.356 412345.678 5712370.678";
constexpr const char* FlacherBogen =
    "412595.678 5712345.678 412580.601 5712431.183 412537.189 5712506.375";

BENCHMARK_CAPTURE(BogenSehnen, viertelkreis_001, Viertelkreis, 0.01);
BENCHMARK_CAPTURE(BogenSehnen, viertelkreis_00001, Viertelkreis, 0.0001);
BENCHMARK_CAPTURE(BogenSehnen, flach_r250_001, FlacherBogen, 0.01);
BENCHMARK_CAPTURE(BogenSehnen, flach_r250_00001, FlacherBogen, 0.0001);

} // namespace
} // namespace flurix::nas

BENCHMARK_MAIN();
