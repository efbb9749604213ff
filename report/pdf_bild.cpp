#include "report/pdf_bild.hpp"

#include <algorithm>

namespace flurix::report {

namespace {
// A control value of 128 or more means that no literal block is open.
constexpr unsigned KeinBlock = 128;
} // namespace

bool PdfBild::Gültig() const {
    if (breite < 0 || höhe < 0)
        return false;
    // Two 31-bit factors and a 3 fit into 64 bits: no overflow.
    return rgb.size() >= static_cast<std::uint64_t>(breite) * static_cast<std::uint64_t>(höhe) * 3u;
}

std::uint8_t Grauwert(std::uint8_t rot, std::uint8_t grün, std::uint8_t blau) {
    return static_cast<std::uint8_t>((77u * rot + 151u * grün + 28u * blau + 127u) / 256u);
}

std::string BildBytes(const PdfBild& bild, bool grau, const BildFortschritt& fortschritt) {
    const auto breite = static_cast<std::size_t>(bild.breite);
    std::string bytes;
    bytes.reserve(breite * static_cast<std::size_t>(bild.höhe) * (grau ? 1 : 3));
    const auto* zeilenanfang = bild.rgb.data();
    for (std::int32_t zeile = 0; zeile < bild.höhe; ++zeile, zeilenanfang += breite * 3) {
        if (fortschritt)
            fortschritt(zeile, bild.höhe - 1);
        if (grau) {
            for (std::size_t x = 0; x < breite; ++x) {
                const auto* p = zeilenanfang + x * 3;
                bytes.push_back(static_cast<char>(Grauwert(p[0], p[1], p[2])));
            }
        } else {
            bytes.append(reinterpret_cast<const char*>(zeilenanfang), breite * 3);
        }
    }
    return bytes;
}

std::size_t CountRun(std::string_view daten, std::size_t pos) {
    if (pos >= daten.size())
        return 0;
    const char b = daten[pos];
    const std::size_t grenze = std::min(daten.size(), pos + 128);
    std::size_t ende = pos + 1;
    while (ende < grenze && daten[ende] == b)
        ++ende;
    return ende - pos;
}

std::string PackRuns(std::string_view roh) {
    // Sized for the worst case (all literal: one length byte per 128 data bytes), cut at the end.
    std::string gepackt(roh.size() * 128 / 127 + 1, '\0');
    std::size_t ein = 0;
    std::size_t aus = 0;
    std::size_t blockPos = 0;
    unsigned steuer = KeinBlock;
    const auto blockSchließen = [&] {
        if (steuer < KeinBlock)
            gepackt[blockPos] = static_cast<char>(steuer);
    };
    while (ein < roh.size()) {
        const char b = roh[ein];
        const std::size_t lauf = CountRun(roh, ein);
        if (lauf == 2 && steuer < 126) {
            steuer += 2;
            gepackt[aus++] = b;
            gepackt[aus++] = b;
            ein += 2;
        } else if (lauf <= 1) {
            if (steuer < 127) {
                ++steuer;
                gepackt[aus++] = b;
            } else {
                blockSchließen();
                blockPos = aus;
                steuer = 0;
                gepackt[aus + 1] = b;
                aus += 2;
            }
            ein += 1;
        } else {
            blockSchließen();
            steuer = 257 - static_cast<unsigned>(lauf);
            gepackt[aus++] = static_cast<char>(steuer);
            gepackt[aus++] = b;
            ein += lauf;
        }
    }
    blockSchließen();
    gepackt.resize(aus);
    return gepackt;
}

} // namespace flurix::report
