#include "map/farbe.hpp"

#include <QList>

#include <algorithm>
#include <cmath>
#include <utility>

namespace flurix::karte {

QImage ReplaceColor(QImage bild, Farbe alt, Farbe neu) {
    if (bild.isNull())
        return {};
    const QRgb suchen = FarbeNachQRgb(alt) & 0x00ffffffu;
    const QRgb ersatz = FarbeNachQRgb(neu);
    if (bild.format() == QImage::Format_Mono || bild.format() == QImage::Format_MonoLSB ||
        bild.format() == QImage::Format_Indexed8) {
        // A picture with a palette: its pixels are what the palette says, so the palette is changed
        // and the pixels are expanded once.
        QList<QRgb> tabelle = bild.colorTable();
        for (QRgb& eintrag : tabelle)
            if ((eintrag & 0x00ffffffu) == suchen)
                eintrag = ersatz;
        bild.setColorTable(tabelle);
        return std::move(bild).convertToFormat(QImage::Format_RGB32);
    }
    // A picture still shared with the caller is detached by the non-const scanLine below.
    QImage ergebnis = std::move(bild).convertToFormat(QImage::Format_RGB32);
    const int breite = ergebnis.width();
    for (int y = 0; y < ergebnis.height(); ++y) {
        auto* zeile = reinterpret_cast<QRgb*>(ergebnis.scanLine(y));
        for (int x = 0; x < breite; ++x)
            if ((zeile[x] & 0x00ffffffu) == suchen)
                zeile[x] = ersatz;
    }
    return ergebnis;
}

int AlphaWert(double prozent) {
    if (std::isnan(prozent))
        return 0;
    const double begrenzt = std::clamp(prozent, 0.0, 100.0);
    return static_cast<int>(std::floor(begrenzt / 100.0 * 255.0));
}

} // namespace flurix::karte
