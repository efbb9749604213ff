#include "map/farbtiefe.hpp"

#include "map/farbe.hpp"
#include "map/octree.hpp"

#include <QList>

#include <cstdint>
#include <vector>

namespace flurix::karte {

namespace {

QImage EinBit(const QImage& quelle) {
    QImage ergebnis(quelle.size(), QImage::Format_Mono);
    ergebnis.setColorTable({FarbeNachQRgb(FarbeSchwarz), FarbeNachQRgb(FarbeWeiss)});
    const int breite = quelle.width();
    for (int y = 0; y < quelle.height(); ++y) {
        const auto* ein = reinterpret_cast<const QRgb*>(quelle.constScanLine(y));
        std::uint8_t* aus = ergebnis.scanLine(y);
        std::uint8_t byte = 0;
        for (int x = 0; x < breite; ++x) {
            const QRgb p = ein[x];
            // Nearer to white than to black: 3·255² − 2·255·(R+G+B) < 0.
            const unsigned summe = ((p >> 16) & 0xff) + ((p >> 8) & 0xff) + (p & 0xff);
            byte = static_cast<std::uint8_t>((byte << 1) | (summe >= 383 ? 1u : 0u));
            if ((x & 7) == 7) {
                aus[x >> 3] = byte;
                byte = 0;
            }
        }
        if ((breite & 7) != 0)
            aus[breite >> 3] = static_cast<std::uint8_t>(byte << (8 - (breite & 7)));
    }
    return ergebnis;
}

QImage MitPalette(const QImage& quelle, int farben) {
    OcTree baum(farben);
    const int breite = quelle.width();
    // Map pictures have long runs of one colour: each run goes into the tree once.
    for (int y = 0; y < quelle.height(); ++y) {
        const auto* ein = reinterpret_cast<const QRgb*>(quelle.constScanLine(y));
        int x = 0;
        while (x < breite) {
            const QRgb p = ein[x];
            int ende = x + 1;
            while (ende < breite && ein[ende] == p)
                ++ende;
            baum.FarbeHinzufügen(FarbeAusQRgb(p), static_cast<std::uint32_t>(ende - x));
            x = ende;
        }
    }
    const std::vector<Farbe> palette = baum.Palette();
    QList<QRgb> tabelle;
    tabelle.reserve(static_cast<qsizetype>(palette.size()));
    for (const Farbe farbe : palette)
        tabelle.push_back(FarbeNachQRgb(farbe));

    QImage ergebnis(quelle.size(), QImage::Format_Indexed8);
    ergebnis.setColorTable(tabelle);
    // A colour met before is found in a small direct-mapped store instead of walking the tree
    // again; 0 marks an empty slot, as every RGB32 pixel has alpha 255.
    constexpr std::uint32_t Plätze = 1u << 12;
    std::vector<QRgb> gemerkt(Plätze, 0);
    std::vector<std::uint8_t> gemerkterIndex(Plätze, 0);
    for (int y = 0; y < quelle.height(); ++y) {
        const auto* ein = reinterpret_cast<const QRgb*>(quelle.constScanLine(y));
        std::uint8_t* aus = ergebnis.scanLine(y);
        for (int x = 0; x < breite; ++x) {
            const QRgb p = ein[x];
            const std::uint32_t platz = ((p & 0xffffffu) * 2654435761u) >> 20;
            if (gemerkt[platz] != p) {
                gemerkt[platz] = p;
                gemerkterIndex[platz] =
                    static_cast<std::uint8_t>(baum.PaletteIndex(FarbeAusQRgb(p)));
            }
            aus[x] = gemerkterIndex[platz];
        }
    }
    return ergebnis;
}

} // namespace

QImage FarbTiefe(const QImage& bild, int modus) {
    if (bild.isNull() || modus < 0 || modus > 7)
        return {};
    // Already black and white: the threshold would give the same pixels again.
    if (modus == 0 && bild.format() == QImage::Format_Mono &&
        bild.colorTable() == QList<QRgb>{FarbeNachQRgb(FarbeSchwarz), FarbeNachQRgb(FarbeWeiss)})
        return bild;
    const QImage quelle = bild.convertToFormat(QImage::Format_RGB32);
    switch (modus) {
    case 0:
        return EinBit(quelle);
    case 1:
    case 2:
        return MitPalette(quelle, 16);
    case 3:
    case 4:
        return MitPalette(quelle, 256);
    case 5:
        return quelle.convertToFormat(QImage::Format_RGB555);
    case 6:
        return quelle.convertToFormat(QImage::Format_RGB888);
    default:
        return quelle;
    }
}

} // namespace flurix::karte
