// A map run whose picture lies in the cache: the frame, the request and its cache file, the answer
// test, loading and correcting a 2000 × 2000 level with every correction on, and the composition.
// This is what every pan and zoom back to a seen frame costs; the goal is under 100 ms.
// The generator draws a map-like picture (flat areas, lines, some white) and writes it as PNG
// where the request's cache file lies. Prints the median of the runs.
//   bench_karte_abruf [läufe]
// The first run decodes the PNG; the later ones find the decoded picture (map/bild_laden.cpp).

#include "map/dienstkatalog.hpp"
#include "map/kartenabruf.hpp"

#include "bench/messen.hpp"
#include "core/oberflaeche_skript.hpp"

#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

using namespace flurix;
using namespace flurix::karte;

QImage KartenBild(int seite) {
    QImage bild(seite, seite, QImage::Format_ARGB32);
    bild.fill(Qt::transparent);
    QPainter maler(&bild);
    for (int i = 0; i < 400; ++i) {
        const int x = (i * 7919) % seite, y = (i * 104729) % seite;
        maler.fillRect(x, y, 40 + i % 120, 30 + i % 90, QColor::fromRgb((i * 40) % 256, (i * 90) % 256, (i * 150) % 256));
        maler.setPen(QPen(Qt::red, 2));
        maler.drawLine(x, y, (x * 3) % seite, (y * 5) % seite);
    }
    maler.fillRect(seite / 4, seite / 4, seite / 8, seite / 8, Qt::white);
    return bild;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int läufe = argc > 1 ? std::atoi(argv[1]) : 20;
    bench::Ordner ordner("bench_karte_abruf");

    Dienstkatalog katalog;
    const auto zeile = katalog.NeuerDienst("Bench");
    katalog.ZelleSetzen(zeile, "URL", "http://127.0.0.1:9/wms");
    katalog.ZelleSetzen(zeile, "Layer", "a~A}{b~B");
    katalog.ZelleSetzen(zeile, "LayerAuswahl", "true,true");
    Kartenwahl wahl;
    wahl.dienste[0] = "Bench";
    auto& e = wahl.einstellungen[0];
    e.weißErhalten = true;
    e.kontrast = 30;
    e.helligkeit = -20;
    e.grau = true;
    Kartenumgebung umgebung;
    umgebung.tempOrdner = ordner.pfad();

    MapReferenz ref;
    SkriptOberfläche ui;
    NeueReferenz(ref, "391000;5819000", ui);
    // The first run fails (nothing listens on port 9) and names the cache file.
    const auto erster = MapLoad(ref, katalog, wahl, 2000, 2000, umgebung, ui);
    KartenBild(2000).save(QString::fromStdString(erster.ebenen[0].datei.string()));

    // The first run from the cache file decodes the PNG; the later ones find it decoded.
    std::vector<double> zeiten;
    double ersterLauf = 0;
    for (int i = 0; i <= läufe; ++i) {
        ui.Neu();
        const auto anfang = std::chrono::steady_clock::now();
        const auto bild = MapLoad(ref, katalog, wahl, 2000, 2000, umgebung, ui);
        (i == 0 ? ersterLauf : zeiten.emplace_back()) = bench::Sekunden(anfang) * 1000;
        if (!bild.ok || bild.downloads != 0 || bild.bild.width() != 2000) {
            std::fprintf(stderr, "Lauf ohne Bild aus dem Cache\n");
            return 1;
        }
    }
    std::sort(zeiten.begin(), zeiten.end());
    std::printf("MapLoad 2000x2000 aus dem Cache, alle Korrekturen: erster Lauf (PNG dekodieren) %.1f ms, "
                "danach Median %.1f ms, schnellster %.1f ms (%d Läufe)\n",
                ersterLauf, zeiten[zeiten.size() / 2], zeiten.front(), läufe);
    return 0;
}
