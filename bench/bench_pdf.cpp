// The PDF writer clsPDF: a document of 1,000 pages of text and lines, 10,000 pages of the plain
// line printer, and one page with a picture of 2000 × 2000 pixels, in colour and in gray.
// The generator makes register-like lines (names with umlauts, parcel numbers, areas, parentheses)
// and a picture of flat areas with noise in between, so that the run-length packing meets runs,
// pairs and literal stretches. Each case runs once and prints pages/s and MB/s.

#include "report/cls_pdf.hpp"

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using flurix::report::clsPDF;
using flurix::report::PdfBild;
using flurix::report::PdfHerkunft;

using Uhr = std::chrono::steady_clock;

// One line of a register-like listing; i picks the variant.
std::string Zeile(std::size_t i) {
    static const std::array<const char*, 6> namen = {
        "Müller, Hans-Jürgen", "Schäfer, Grete (geb. Groß)", "Weiß, Jörg",
        "Gemeinde Überlingen", "Öztürk, Ayşe", "Straßenbauamt \\ Nord"};
    return std::to_string(100000 + i % 9000) + "  Flurstück " + std::to_string(i % 997) + "/" +
           std::to_string(i % 13) + "  " + namen[i % namen.size()] + "  " +
           std::to_string(1000 + (i * 37) % 90000) + " m²";
}

void Ausgeben(const char* name, double sekunden, std::size_t seiten, std::size_t bytes) {
    std::printf("%-40s %8.3f s %10.0f Seiten/s %8.1f MB/s (%zu Seiten, %.1f MB)\n", name,
                sekunden, static_cast<double>(seiten) / sekunden,
                static_cast<double>(bytes) / 1e6 / sekunden, seiten, static_cast<double>(bytes) / 1e6);
}

template <class Arbeit> void Messen(const char* name, Arbeit arbeit) {
    const auto anfang = Uhr::now();
    const auto [seiten, bytes] = arbeit();
    const std::chrono::duration<double> dauer = Uhr::now() - anfang;
    Ausgeben(name, dauer.count(), seiten, bytes);
}

PdfHerkunft Bench() { return {"Flurix Bench", {}}; }

} // namespace

int main() {
    Messen("1000 Seiten Text und Linien", [] {
        clsPDF pdf(Bench());
        pdf.PageStarted = [&pdf] {
            pdf.DrawWidth(1);
            pdf.DrawBox(56.7F, 31.2F, 510.2F, 779.5F, 0);
            for (int k = 0; k < 20; ++k)
                pdf.DrawLine(60, 40.0F + 38.5F * static_cast<float>(k), 560, 40.0F + 38.5F * static_cast<float>(k));
            pdf.DrawText(60, 20, "Flurstücks- und Eigentümernachweis");
        };
        for (std::size_t i = 0; i < 1000 * 72; ++i)
            pdf.PrintLine(Zeile(i));
        const std::string datei = pdf.value();
        return std::pair{static_cast<std::size_t>(pdf.PageNumber()), datei.size()};
    });

    Messen("10000 Seiten Zeilendrucker", [] {
        clsPDF pdf(Bench());
        for (std::size_t i = 0; i < 10000 * 72; ++i)
            pdf.PrintLine(Zeile(i));
        const std::string datei = pdf.value();
        return std::pair{static_cast<std::size_t>(pdf.PageNumber()), datei.size()};
    });

    constexpr std::int32_t Kante = 2000;
    std::vector<std::uint8_t> pixel;
    pixel.reserve(static_cast<std::size_t>(Kante) * Kante * 3);
    std::uint32_t zufall = 1;
    for (std::int32_t y = 0; y < Kante; ++y) {
        for (std::int32_t x = 0; x < Kante; ++x) {
            zufall = zufall * 1664525u + 1013904223u;
            const bool fläche = ((x / 250) + (y / 250)) % 3 != 0; // flat areas between noisy ones
            const auto r = static_cast<std::uint8_t>(fläche ? 230 : zufall >> 24);
            const auto g = static_cast<std::uint8_t>(fläche ? 220 : (zufall >> 16) & 0xF0);
            pixel.insert(pixel.end(), {r, g, static_cast<std::uint8_t>(fläche ? 200 : 90)});
        }
    }
    for (const bool grau : {false, true}) {
        Messen(grau ? "Bild 2000x2000 grau" : "Bild 2000x2000 RGB", [&] {
            clsPDF pdf(Bench());
            pdf.DrawPicture(20, 20, 556, 556, PdfBild{Kante, Kante, pixel}, grau);
            pdf.PrintLine("");
            const std::string datei = pdf.value();
            return std::pair{static_cast<std::size_t>(pdf.PageNumber()), datei.size()};
        });
    }
    return 0;
}
