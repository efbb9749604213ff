// The map's raster work on a picture of 2000 × 2000 pixels, as a map service sends it: a PNG with
// a transparent ground, filled blocks with white insides and black outlines, coloured areas,
// roads, hatching and labels. The file is written to a scratch folder and read once before the
// runs, so each run loads it from the system's cache.
//
// The picture is stored twice, with alpha (32 bits) and with a palette of 256 colours and one
// transparent entry, as services deliver either.
//
// Cases: the whole correction chain of one level (load, keep-white, Korrektur, black and white,
// inverted) which must stay under 100 ms, the plain chain of an opaque level, BildLaden alone, Qt's
// decoding alone (the floor of every chain), Korrektur alone and FarbTiefe 3 (the octree's 256
// colours) alone. Each case runs 7 times after one warm-up; the fastest and the median run are
// printed, and the median processor time, which a busy machine disturbs less.

#include "bench/messen.hpp"
#include "map/bild_laden.hpp"
#include "map/ebenen_korrektur.hpp"
#include "map/farbtiefe.hpp"
#include "map/korrektur.hpp"

#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

#include <time.h>

namespace {

using namespace flurix::karte;

constexpr int Kante = 2000;

QImage KarteZeichnen() {
    QImage bild(Kante, Kante, QImage::Format_ARGB32);
    bild.fill(Qt::transparent);
    QPainter maler(&bild);
    maler.setRenderHint(QPainter::Antialiasing);
    std::uint32_t zufall = 7;
    const auto nächste = [&zufall](int grenze) {
        zufall = zufall * 1664525u + 1013904223u;
        return static_cast<int>((zufall >> 8) % static_cast<std::uint32_t>(grenze));
    };
    // Coloured areas (land use) with some see-through ground between them.
    const QColor flächen[] = {QColor(255, 255, 200), QColor(200, 230, 190), QColor(230, 210, 230),
                              QColor(190, 215, 240)};
    for (int i = 0; i < 60; ++i) {
        maler.setPen(Qt::NoPen);
        maler.setBrush(flächen[i % 4]);
        maler.drawRect(nächste(Kante), nächste(Kante), 100 + nächste(300), 100 + nächste(300));
    }
    // Roads.
    maler.setPen(QPen(QColor(250, 200, 120), 14, Qt::SolidLine, Qt::RoundCap));
    for (int i = 0; i < 25; ++i)
        maler.drawLine(nächste(Kante), nächste(Kante), nächste(Kante), nächste(Kante));
    // Buildings: white inside, black outline, some hatched.
    maler.setPen(QPen(Qt::black, 2));
    for (int i = 0; i < 1500; ++i) {
        maler.setBrush(i % 5 == 0 ? QBrush(Qt::black, Qt::BDiagPattern) : QBrush(Qt::white));
        maler.drawRect(nächste(Kante), nächste(Kante), 8 + nächste(30), 8 + nächste(30));
    }
    // Parcel boundaries and labels.
    maler.setPen(QPen(QColor(200, 0, 0), 1));
    for (int i = 0; i < 400; ++i)
        maler.drawLine(nächste(Kante), nächste(Kante), nächste(Kante), nächste(Kante));
    maler.setPen(Qt::black);
    for (int i = 0; i < 600; ++i)
        maler.drawText(nächste(Kante), nächste(Kante),
                       QString::number(100 + nächste(900)) + QStringLiteral("/") +
                           QString::number(1 + nächste(20)));
    return bild;
}

// The map with a palette of 256 colours, its see-through ground as one transparent entry: the
// ground is painted in a colour the map lacks, the octree keeps it apart, then it is made clear.
QImage PaletteFassung(const QImage& karte) {
    const QRgb grundfarbe = qRgb(255, 0, 255);
    QImage grund(karte.size(), QImage::Format_RGB32);
    grund.fill(grundfarbe);
    QPainter(&grund).drawImage(0, 0, karte);
    QImage palette = FarbTiefe(grund, 3);
    QList<QRgb> tabelle = palette.colorTable();
    for (QRgb& eintrag : tabelle)
        if (eintrag == grundfarbe)
            eintrag = qRgba(0, 0, 0, 0);
    palette.setColorTable(tabelle);
    return palette;
}

// Processor time of this process: on a shared machine it says more than the wall clock.
double CpuMs() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1000.0 + static_cast<double>(t.tv_nsec) / 1e6;
}

void Messen(const char* name, const std::function<bool()>& arbeit) {
    if (!arbeit()) { // warm-up; also tells when the case can't run
        std::printf("%-44s fehlgeschlagen\n", name);
        return;
    }
    std::vector<double> zeiten, cpu;
    for (int i = 0; i < 7; ++i) {
        const double cpuAnfang = CpuMs();
        const auto anfang = std::chrono::steady_clock::now();
        arbeit();
        zeiten.push_back(flurix::bench::Sekunden(anfang) * 1000.0);
        cpu.push_back(CpuMs() - cpuAnfang);
    }
    std::sort(zeiten.begin(), zeiten.end());
    std::sort(cpu.begin(), cpu.end());
    std::printf("%-44s %7.1f ms schnellster, %7.1f ms Median, %7.1f ms CPU (Median)\n", name,
                zeiten.front(), zeiten[zeiten.size() / 2], cpu[cpu.size() / 2]);
}

// The level's chain on one file, and its parts that depend on the file.
void Laeufe(const std::filesystem::path& datei) {
    const QSize größe(Kante, Kante);
    EbenenEinstellung alles;
    alles.ebene = 1;
    alles.transparenterDienst = true;
    alles.weißErhalten = true;
    alles.kontrast = 20;
    alles.helligkeit = -10;
    alles.grau = true;
    alles.schwarzWeiß = true;
    alles.schwarzInvers = true;
    Messen("Ebene: alle Korrekturen (Grenze 100 ms)",
           [&] { return static_cast<bool>(EbeneLadenUndKorrigieren(datei, größe, alles)); });

    EbenenEinstellung freigestellt = alles;
    freigestellt.schwarzWeiß = false;
    freigestellt.schwarzInvers = false;
    freigestellt.grau = false;
    Messen("Ebene: Weiß erhalten + Korrektur",
           [&] { return static_cast<bool>(EbeneLadenUndKorrigieren(datei, größe, freigestellt)); });
    Messen("Ebene: undurchsichtig, ohne Korrektur", [&] {
        return static_cast<bool>(EbeneLadenUndKorrigieren(datei, größe, EbenenEinstellung{}));
    });
    Messen("BildLaden",
           [&] { return static_cast<bool>(BildLaden(datei, größe, true, FarbeHintergrundFrei)); });
    // The floor: Qt's PNG reader alone, without any of the map's work.
    Messen("nur Dekodieren (QImageReader)", [&] {
        QImage bild;
        return QImageReader(QString::fromStdString(datei.string())).read(&bild);
    });
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    flurix::bench::Ordner ordner("bench_karte_raster");
    const QImage karte = KarteZeichnen();
    // The picture as services send it: 32 bits with alpha, and with a palette of 256 colours.
    const std::pair<const char*, QImage> fassungen[] = {
        {"RGBA", karte},
        {"Palette", PaletteFassung(karte)},
    };
    for (const auto& [fassung, bild] : fassungen) {
        const auto datei = ordner.pfad() / (std::string(fassung) + ".png");
        if (!bild.save(QString::fromStdString(datei.string()), "PNG")) {
            std::fprintf(stderr, "Bild nicht geschrieben: %s\n", datei.string().c_str());
            return 1;
        }
        std::printf("== PNG %s %dx%d, %.1f MB\n", fassung, Kante, Kante,
                    static_cast<double>(std::filesystem::file_size(datei)) / 1e6);
        Laeufe(datei);
    }
    const QImage geladen =
        BildLaden(ordner.pfad() / "RGBA.png", QSize(Kante, Kante), false, FarbeWeiss).bild;
    std::printf("== ohne Laden\n");
    Messen("Korrektur 20/-10", [&] { return !Korrektur(geladen, 20, -10, false).isNull(); });
    Messen("Korrektur 20/-10 grau", [&] { return !Korrektur(geladen, 20, -10, true).isNull(); });
    Messen("FarbTiefe 3 (Octree, 256 Farben)", [&] { return !FarbTiefe(geladen, 3).isNull(); });
    Messen("FarbTiefe 0 (1 Bit)", [&] { return !FarbTiefe(geladen, 0).isNull(); });
    return 0;
}
