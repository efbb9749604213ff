#include "map/ebenen_korrektur.hpp"

#include "map/farbe.hpp"
#include "map/farbtiefe.hpp"
#include "map/korrektur.hpp"

#include <utility>

namespace flurix::karte {

namespace {

// FarbTiefe 6. BildLaden gives RGB32, whose pixels are 24-bit colours that FarbTiefe 6 keeps one
// for one; such a picture is not copied to 24 bits and back (two passes over 16 MB for a picture of
// 2000 × 2000).
QImage VierundzwanzigBit(QImage bild) {
    if (bild.format() == QImage::Format_RGB32)
        return bild;
    return FarbTiefe(bild, 6);
}

} // namespace

BildErgebnis EbeneLadenUndKorrigieren(const std::filesystem::path& datei, QSize größe,
                                      const EbenenEinstellung& einstellung) {
    const bool mitSchaltern = einstellung.ebene != 3;
    const bool weißFreistellen =
        mitSchaltern && einstellung.transparenterDienst && einstellung.weißErhalten;

    BildErgebnis geladen = BildLaden(datei, größe, weißFreistellen, FarbeHintergrundFrei);
    if (!geladen)
        return geladen;
    QImage bild = std::move(geladen.bild);

    // Each step hands its picture on with std::move, so that the steps that keep RGB32 work in
    // place.
    if (mitSchaltern) {
        if (weißFreistellen) {
            bild = VierundzwanzigBit(std::move(bild));
            bild = ReplaceColor(std::move(bild), FarbeWeiss, FarbeFastWeiss);
            bild = ReplaceColor(std::move(bild), FarbeHintergrundFrei, FarbeWeiss);
        } else {
            bild =
                einstellung.weißErhalten ? FarbTiefe(bild, 5) : VierundzwanzigBit(std::move(bild));
        }
    }
    bild =
        Korrektur(std::move(bild), einstellung.kontrast, einstellung.helligkeit, einstellung.grau);
    if (mitSchaltern && einstellung.schwarzWeiß)
        bild = FarbTiefe(bild, 0);
    if (mitSchaltern && einstellung.schwarzInvers)
        bild = ReplaceColor(FarbTiefe(bild, 0), FarbeSchwarz, FarbeFastWeiss);
    return {std::move(bild).convertToFormat(QImage::Format_RGB32), {}};
}

} // namespace flurix::karte
