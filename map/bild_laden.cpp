#include "map/bild_laden.hpp"

#include <QByteArray>
#include <QImageReader>
#include <QList>
#include <QPainter>
#include <QString>

#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace flurix::karte {

namespace {

BildErgebnis Fehlschlag(std::string text) { return {QImage(), std::move(text)}; }

// The formats map services deliver. Without one of them a broken installation would fail on some
// services only; it is told at the first picture instead.
bool LeserVorhanden() {
    static const bool vorhanden = [] {
        const QList<QByteArray> formate = QImageReader::supportedImageFormats();
        return formate.contains("png") && formate.contains("jpeg") && formate.contains("bmp");
    }();
    return vorhanden;
}

// One colour (non-premultiplied) over the background colour.
QRgb ÜberGrund(QRgb p, unsigned gr, unsigned gg, unsigned gb) {
    const unsigned a = qAlpha(p);
    const unsigned rest = 255 - a;
    return qRgb(static_cast<int>((qRed(p) * a + gr * rest + 127) / 255),
                static_cast<int>((qGreen(p) * a + gg * rest + 127) / 255),
                static_cast<int>((qBlue(p) * a + gb * rest + 127) / 255));
}

QList<QRgb> PaletteAufHintergrund(QList<QRgb> tabelle, Farbe grund) {
    const QRgb g = FarbeNachQRgb(grund);
    for (QRgb& eintrag : tabelle)
        eintrag = ÜberGrund(eintrag, qRed(g), qGreen(g), qBlue(g));
    return tabelle;
}

// Source-over of a picture (Format_ARGB32) on a plain background, in place: afterwards every
// pixel is opaque and the picture is taken as RGB32 without a copy. Most pixels of a service's
// picture are fully opaque or fully transparent and cost no arithmetic.
QImage AufHintergrund(QImage bild, Farbe grund) {
    const QRgb g = FarbeNachQRgb(grund);
    const unsigned gr = qRed(g), gg = qGreen(g), gb = qBlue(g);
    const int breite = bild.width();
    for (int y = 0; y < bild.height(); ++y) {
        auto* zeile = reinterpret_cast<QRgb*>(bild.scanLine(y));
        for (int x = 0; x < breite; ++x) {
            const QRgb p = zeile[x];
            const unsigned a = qAlpha(p);
            if (a == 255)
                continue;
            zeile[x] = a == 0 ? g : ÜberGrund(p, gr, gg, gb);
        }
    }
    bild.reinterpretAsFormat(QImage::Format_RGB32);
    return bild;
}

// The last decoded files. A map is redrawn from the same cached answers again and again (panning
// back, other corrections, another level switched on), and decoding a PNG of 2000 × 2000 costs
// more than all corrections together. The key holds the file's size and time, and answers are
// written under a temporary name and renamed, so a changed file is never taken for the old one.
class Dekodierspeicher {
public:
    static Dekodierspeicher& Prozess() {
        static Dekodierspeicher speicher;
        return speicher;
    }

    std::optional<QImage> Holen(const std::string& schlüssel) {
        std::lock_guard sperre(m_sperre);
        for (auto it = m_einträge.begin(); it != m_einträge.end(); ++it) {
            if (it->first == schlüssel) {
                m_einträge.splice(m_einträge.begin(), m_einträge, it);
                return it->second;
            }
        }
        return std::nullopt;
    }

    void Ablegen(std::string schlüssel, const QImage& bild) {
        if (bild.sizeInBytes() > Grenze / 2)
            return;
        std::lock_guard sperre(m_sperre);
        m_einträge.emplace_front(std::move(schlüssel), bild);
        qsizetype summe = 0;
        for (auto it = m_einträge.begin(); it != m_einträge.end();) {
            summe += it->second.sizeInBytes();
            it = summe > Grenze ? m_einträge.erase(it) : std::next(it);
        }
    }

private:
    static constexpr qsizetype Grenze = qsizetype(96) << 20;
    std::mutex m_sperre;
    std::list<std::pair<std::string, QImage>> m_einträge;
};

std::string Dateischlüssel(const std::filesystem::path& datei) {
    std::error_code fehler;
    const auto größe = std::filesystem::file_size(datei, fehler);
    const auto zeit = std::filesystem::last_write_time(datei, fehler).time_since_epoch().count();
    return datei.string() + "|" + std::to_string(größe) + "|" + std::to_string(zeit);
}

} // namespace

BildErgebnis BildLaden(const std::filesystem::path& datei, QSize größe, bool mitHintergrund,
                       Farbe hintergrund, bool größeVomBild) {
    if (datei.empty() || (!größeVomBild && (größe.width() <= 0 || größe.height() <= 0)))
        return Fehlschlag("Eingabeparameter fehlen");
    std::error_code fehler;
    if (!std::filesystem::is_regular_file(datei, fehler))
        return Fehlschlag("Datei existiert nicht");
    if (!LeserVorhanden())
        return Fehlschlag("GDIPlus nicht verfügbar");

    // The content decides the format: services answer errors as XML under the picture's name, and
    // a JPEG saved as .png must still load.
    QImageReader leser(QString::fromStdString(datei.string()));
    leser.setDecideFormatFromContent(true);
    leser.setAutoTransform(false);
    if (!leser.canRead())
        return Fehlschlag("Bitmap " + datei.string() + " kann nicht geöffnet werden");
    const QSize dateigröße = leser.size();
    if (!dateigröße.isValid() || dateigröße.isEmpty())
        return Fehlschlag("Bitmap-Abmessungen nicht verfügbar");
    if (größeVomBild)
        größe = dateigröße;

    // Made before decoding, as the check order says; its memory is touched only when the picture
    // is drawn scaled.
    QImage ziel(größe, QImage::Format_RGB32);
    if (ziel.isNull())
        return Fehlschlag("Graphikobjekt nicht verfügbar");
    const std::string schlüssel = Dateischlüssel(datei);
    QImage inhalt;
    if (auto bekannt = Dekodierspeicher::Prozess().Holen(schlüssel)) {
        inhalt = std::move(*bekannt);
    } else {
        if (!leser.read(&inhalt) || inhalt.isNull())
            return Fehlschlag("Bild kann nicht gezeichnet werden");
        Dekodierspeicher::Prozess().Ablegen(schlüssel, inhalt);
    }

    const Farbe grund = mitHintergrund ? hintergrund : FarbeFenster;
    if (inhalt.size() == größe) {
        if (!inhalt.hasAlphaChannel())
            return {std::move(inhalt).convertToFormat(QImage::Format_RGB32), {}};
        if (inhalt.format() == QImage::Format_Indexed8 || inhalt.format() == QImage::Format_Mono ||
            inhalt.format() == QImage::Format_MonoLSB) {
            // A palette picture (PNG with a transparent entry): its palette is put on the
            // background, and the pixels are expanded once.
            inhalt.setColorTable(PaletteAufHintergrund(inhalt.colorTable(), grund));
            return {std::move(inhalt).convertToFormat(QImage::Format_RGB32), {}};
        }
        return {AufHintergrund(std::move(inhalt).convertToFormat(QImage::Format_ARGB32), grund),
                {}};
    }
    ziel.fill(FarbeNachQRgb(grund));
    QPainter maler;
    if (!maler.begin(&ziel))
        return Fehlschlag("Graphikobjekt nicht verfügbar");
    maler.setRenderHint(QPainter::SmoothPixmapTransform);
    maler.drawImage(QRect(QPoint(0, 0), größe), inhalt);
    maler.end();
    return {ziel, {}};
}

} // namespace flurix::karte
