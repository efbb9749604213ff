// The map's raster work: colours, Korrektur, FarbTiefe with the octree, BildLaden and the
// corrections of one level, on small pictures whose every pixel is known.
#include "map/bild_laden.hpp"
#include "map/ebenen_korrektur.hpp"
#include "map/farbe.hpp"
#include "map/farbtiefe.hpp"
#include "map/korrektur.hpp"
#include "map/octree.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <QSet>

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

namespace flurix::karte {
namespace {

constexpr QRgb Leer = 0x00000000; // fully transparent

// A picture of one row with the given pixels (ARGB32, so that transparent ones stay transparent).
QImage Zeile(const std::vector<QRgb>& pixel) {
    QImage bild(static_cast<int>(pixel.size()), 1, QImage::Format_ARGB32);
    for (std::size_t x = 0; x < pixel.size(); ++x)
        bild.setPixel(static_cast<int>(x), 0, pixel[x]);
    return bild;
}

QRgb Q(Farbe farbe) { return FarbeNachQRgb(farbe); }

// The colours of a picture, row by row, as the map's colours.
std::vector<Farbe> Farben(const QImage& bild) {
    const QImage rgb = bild.convertToFormat(QImage::Format_RGB32);
    std::vector<Farbe> farben;
    for (int y = 0; y < rgb.height(); ++y)
        for (int x = 0; x < rgb.width(); ++x)
            farben.push_back(FarbeAusQRgb(rgb.pixel(x, y)));
    return farben;
}

// The picture as Format_Indexed8 with one palette entry per colour (Qt's own conversion may merge
// near colours).
QImage MitPalette(const QImage& bild) {
    QList<QRgb> tabelle;
    for (int y = 0; y < bild.height(); ++y)
        for (int x = 0; x < bild.width(); ++x)
            if (!tabelle.contains(bild.pixel(x, y)))
                tabelle.push_back(bild.pixel(x, y));
    QImage indiziert(bild.size(), QImage::Format_Indexed8);
    indiziert.setColorTable(tabelle);
    for (int y = 0; y < bild.height(); ++y)
        for (int x = 0; x < bild.width(); ++x)
            indiziert.setPixel(x, y, static_cast<uint>(tabelle.indexOf(bild.pixel(x, y))));
    return indiziert;
}

// Every red and green level, blue stepping, and a few greys: 65,536 colours.
QImage Verlauf() {
    QImage bild(256, 256, QImage::Format_RGB32);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
            bild.setPixel(x, y, qRgb(x, y, (x * 7 + y * 13) & 0xff));
    return bild;
}

TEST(Farbe, RotImNiedrigenByte) {
    struct Fall {
        std::uint8_t r, g, b;
        Farbe farbe;
    };
    const Fall fälle[] = {
        {255, 0, 0, 0x0000ff},     {0, 255, 0, 0x00ff00},     {0, 0, 255, 0xff0000},
        {255, 255, 255, 0xffffff}, {240, 240, 240, 0xf0f0f0}, {1, 2, 3, 0x030201},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(testing::Message() << int(f.r) << "," << int(f.g) << "," << int(f.b));
        EXPECT_EQ(Rgb(f.r, f.g, f.b), f.farbe);
        EXPECT_EQ(FarbeNachQRgb(f.farbe), qRgb(f.r, f.g, f.b));
        EXPECT_EQ(FarbeAusQRgb(qRgba(f.r, f.g, f.b, 17)), f.farbe);
    }
    EXPECT_EQ(FarbeHintergrundFrei, Rgb(240, 240, 240));
    EXPECT_EQ(FarbeFastWeiss, Rgb(250, 250, 250));
}

TEST(AlphaWert, ProzentBegrenztUndAbgeschnitten) {
    struct Fall {
        double prozent;
        int alpha;
    };
    const Fall fälle[] = {
        {120, 255},
        {100, 255},
        {50, 127},
        {-1, 0},
        {0, 0},
        {1, 2},
        {99.9, 254},
        {std::numeric_limits<double>::quiet_NaN(), 0},
        {std::numeric_limits<double>::infinity(), 255},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.prozent);
        EXPECT_EQ(AlphaWert(f.prozent), f.alpha);
    }
}

TEST(ReplaceColor, NurGenauGleichePixel) {
    const Farbe fastWeiß = Rgb(254, 254, 254);
    const QImage bild =
        Zeile({Q(FarbeWeiss), Q(fastWeiß), Q(FarbeSchwarz), Q(Rgb(255, 0, 0)), Q(FarbeWeiss)});
    struct Fall {
        Farbe alt, neu;
        std::vector<Farbe> erwartet;
    };
    const Fall fälle[] = {
        {FarbeWeiss,
         FarbeFastWeiss,
         {FarbeFastWeiss, fastWeiß, FarbeSchwarz, Rgb(255, 0, 0), FarbeFastWeiss}},
        {FarbeSchwarz,
         FarbeFastWeiss,
         {FarbeWeiss, fastWeiß, FarbeFastWeiss, Rgb(255, 0, 0), FarbeWeiss}},
        // Red in the low byte: 0xff is red, not blue.
        {0x0000ff, FarbeSchwarz, {FarbeWeiss, fastWeiß, FarbeSchwarz, FarbeSchwarz, FarbeWeiss}},
        // A colour the picture lacks: the same pixels.
        {FarbeHintergrundFrei,
         FarbeWeiss,
         {FarbeWeiss, fastWeiß, FarbeSchwarz, Rgb(255, 0, 0), FarbeWeiss}},
        {0xff0000, FarbeWeiss, {FarbeWeiss, fastWeiß, FarbeSchwarz, Rgb(255, 0, 0), FarbeWeiss}},
    };
    // RGB32 may share its pixels with the result; a palette picture is changed through its palette.
    for (const QImage::Format format : {QImage::Format_ARGB32, QImage::Format_RGB32,
                                        QImage::Format_RGB888, QImage::Format_Indexed8}) {
        const QImage ein =
            format == QImage::Format_Indexed8 ? MitPalette(bild) : bild.convertToFormat(format);
        ASSERT_EQ(Farben(ein), Farben(bild));
        const QImage vorher = ein.copy();
        for (const Fall& f : fälle) {
            SCOPED_TRACE(testing::Message()
                         << "Format " << format << ": " << std::hex << f.alt << " -> " << f.neu);
            const QImage neu = ReplaceColor(ein, f.alt, f.neu);
            EXPECT_EQ(neu.format(), QImage::Format_RGB32);
            EXPECT_EQ(Farben(neu), f.erwartet);
            EXPECT_EQ(ein, vorher); // a new picture; the old one is untouched
        }
    }
    EXPECT_TRUE(ReplaceColor(QImage(), FarbeWeiss, FarbeSchwarz).isNull());
}

TEST(Korrektur, WerteDieGleichWirken) {
    const QImage bild = Verlauf();
    struct Fall {
        int kontrast, helligkeit;
        int wieKontrast, wieHelligkeit; // the values that must give the same picture
    };
    const Fall fälle[] = {
        {-95, 0, -90, 0}, {0, -95, 0, -90}, {-100, -100, -90, -90}, {-32768, 30, -90, 30},
        {101, 0, 0, 0},   {0, 200, 0, 0},   {-91, 40, -90, 40},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(testing::Message() << f.kontrast << "/" << f.helligkeit);
        for (const bool grau : {false, true})
            EXPECT_EQ(Korrektur(bild, f.kontrast, f.helligkeit, grau),
                      Korrektur(bild, f.wieKontrast, f.wieHelligkeit, grau));
    }
    // 0/0 is the identity, bit for bit, whatever the format came in.
    EXPECT_EQ(Korrektur(bild, 0, 0, false), bild);
    EXPECT_EQ(Farben(Korrektur(bild.convertToFormat(QImage::Format_RGB888), 0, 0, false)),
              Farben(bild));
    EXPECT_NE(Korrektur(bild, -90, 0, false), bild);
    const QImage vorher = bild.copy();
    EXPECT_FALSE(Korrektur(bild, 50, 50, true).isNull());
    EXPECT_EQ(bild, vorher); // worked on a copy: the caller's picture shares its pixels
    EXPECT_TRUE(Korrektur(QImage(), 10, 10, true).isNull());
}

TEST(Korrektur, KurveUmDieMitte) {
    // The curve's documented points: percentages around 127.5.
    struct Fall {
        int kontrast, helligkeit;
        std::uint8_t ein, aus;
    };
    const Fall fälle[] = {
        {0, 100, 0, 128},  {0, 100, 128, 255}, {0, -90, 255, 140}, {-90, 0, 255, 140},
        {-90, 0, 0, 115},  {100, 0, 64, 1},    {100, 0, 190, 253}, {100, 0, 255, 255},
        {50, 0, 127, 127}, {50, 0, 128, 128},  {0, 0, 77, 77},     {30, -30, 200, 184},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(testing::Message() << f.kontrast << "/" << f.helligkeit << " " << int(f.ein));
        const QImage bild = Zeile({Q(Rgb(f.ein, f.ein, f.ein)), Q(Rgb(f.ein, 0, 255))});
        const std::vector<Farbe> aus = Farben(Korrektur(bild, f.kontrast, f.helligkeit, false));
        EXPECT_EQ(aus[0], Rgb(f.aus, f.aus, f.aus));
        EXPECT_EQ(Rot(aus[1]), f.aus); // each channel alone
    }
}

TEST(Korrektur, GrauNimmtDieFarbe) {
    const QImage bild = Verlauf();
    for (const auto& [kontrast, helligkeit] : {std::pair{0, 0}, {40, -20}, {-90, 100}}) {
        SCOPED_TRACE(testing::Message() << kontrast << "/" << helligkeit);
        const QImage grau = Korrektur(bild, kontrast, helligkeit, true);
        ASSERT_EQ(grau.size(), bild.size());
        for (const Farbe f : Farben(grau))
            ASSERT_TRUE(Rot(f) == Grün(f) && Grün(f) == Blau(f)) << std::hex << f;
    }
    // Grey and white keep their value; green is lighter than blue.
    const QImage grautöne = Zeile(
        {Q(Rgb(0, 0, 0)), Q(Rgb(77, 77, 77)), Q(FarbeWeiss), Q(Rgb(0, 255, 0)), Q(Rgb(0, 0, 255))});
    const std::vector<Farbe> aus = Farben(Korrektur(grautöne, 0, 0, true));
    ASSERT_EQ(aus.size(), 5u);
    EXPECT_EQ(aus[0], FarbeSchwarz);
    EXPECT_EQ(aus[1], Rgb(77, 77, 77));
    EXPECT_EQ(aus[2], FarbeWeiss);
    EXPECT_GT(Rot(aus[3]), Rot(aus[4]));
}

TEST(FarbTiefe, FormatUndFarbenJeModus) {
    const QImage verlauf = Verlauf();
    struct Fall {
        int modus;
        QImage::Format format;
        int höchstensFarben; // 0: no palette
    };
    const Fall fälle[] = {
        {0, QImage::Format_Mono, 2},       {1, QImage::Format_Indexed8, 16},
        {2, QImage::Format_Indexed8, 16},  {3, QImage::Format_Indexed8, 256},
        {4, QImage::Format_Indexed8, 256}, {5, QImage::Format_RGB555, 0},
        {6, QImage::Format_RGB888, 0},     {7, QImage::Format_RGB32, 0},
        {8, QImage::Format_Invalid, 0},    {-1, QImage::Format_Invalid, 0},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.modus);
        const QImage tief = FarbTiefe(verlauf, f.modus);
        EXPECT_EQ(tief.format(), f.format);
        if (f.format == QImage::Format_Invalid) {
            EXPECT_TRUE(tief.isNull());
            continue;
        }
        EXPECT_EQ(tief.size(), verlauf.size());
        if (f.höchstensFarben > 0) {
            EXPECT_LE(tief.colorCount(), f.höchstensFarben);
            EXPECT_GE(tief.colorCount(), 2);
        }
        // The modes with a palette stay close to the picture on average.
        if (f.modus >= 1 && f.modus <= 4) {
            const std::vector<Farbe> vorher = Farben(verlauf), nachher = Farben(tief);
            double fehler = 0;
            for (std::size_t i = 0; i < vorher.size(); ++i)
                fehler += std::abs(Rot(vorher[i]) - Rot(nachher[i])) +
                          std::abs(Grün(vorher[i]) - Grün(nachher[i])) +
                          std::abs(Blau(vorher[i]) - Blau(nachher[i]));
            EXPECT_LT(fehler / static_cast<double>(vorher.size()) / 3,
                      f.höchstensFarben == 16 ? 40 : 16);
        }
    }
    // 24 and 32 bits keep every pixel.
    EXPECT_EQ(Farben(FarbTiefe(verlauf, 6)), Farben(verlauf));
    EXPECT_EQ(FarbTiefe(verlauf, 7), verlauf);
    EXPECT_TRUE(FarbTiefe(QImage(), 3).isNull());
}

TEST(FarbTiefe, WenigeFarbenBleibenGenau) {
    struct Fall {
        int modus, farben;
    };
    for (const Fall f : {Fall{1, 2}, Fall{1, 16}, Fall{2, 7}, Fall{3, 256}, Fall{4, 100}}) {
        SCOPED_TRACE(testing::Message() << "Modus " << f.modus << ", " << f.farben << " Farben");
        QImage bild(37, 29, QImage::Format_RGB32);
        for (int y = 0; y < bild.height(); ++y)
            for (int x = 0; x < bild.width(); ++x) {
                const int k = (x + y * bild.width()) % f.farben; // 1073 pixels: every colour occurs
                bild.setPixel(x, y, qRgb(k * 37 % 256, (k * 5) % 256, 255 - k));
            }
        const QImage tief = FarbTiefe(bild, f.modus);
        EXPECT_EQ(tief.colorCount(), f.farben);
        EXPECT_EQ(Farben(tief), Farben(bild));
    }
}

TEST(FarbTiefe, EinBitNachDerNäherenFarbe) {
    struct Fall {
        Farbe ein;
        Farbe aus;
    };
    const Fall fälle[] = {
        {Rgb(128, 128, 127), FarbeWeiss}, {Rgb(127, 128, 127), FarbeSchwarz},
        {Rgb(128, 128, 128), FarbeWeiss}, {Rgb(127, 127, 127), FarbeSchwarz},
        {Rgb(255, 0, 0), FarbeSchwarz},   {Rgb(255, 255, 0), FarbeWeiss},
        {Rgb(0, 0, 255), FarbeSchwarz},   {FarbeHintergrundFrei, FarbeWeiss},
        {FarbeSchwarz, FarbeSchwarz},     {FarbeWeiss, FarbeWeiss},
        {Rgb(255, 127, 0), FarbeSchwarz}, {Rgb(255, 128, 0), FarbeWeiss},
        {Rgb(250, 250, 250), FarbeWeiss},
    };
    // 13 pixels: the last byte of each row is only partly used.
    std::vector<QRgb> pixel;
    std::vector<Farbe> erwartet;
    for (const Fall& f : fälle) {
        pixel.push_back(Q(f.ein));
        erwartet.push_back(f.aus);
    }
    QImage bild(static_cast<int>(pixel.size()), 3, QImage::Format_RGB32);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < bild.width(); ++x)
            bild.setPixel(x, y, pixel[static_cast<std::size_t>((x + y) % bild.width())]);
    const QImage einBit = FarbTiefe(bild, 0);
    const std::vector<Farbe> aus = Farben(einBit);
    EXPECT_EQ(Farben(FarbTiefe(einBit, 0)), aus); // once black and white, it stays so
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < bild.width(); ++x) {
            const auto i = static_cast<std::size_t>((x + y) % bild.width());
            EXPECT_EQ(aus[static_cast<std::size_t>(y * bild.width() + x)], erwartet[i])
                << std::hex << FarbeAusQRgb(pixel[i]);
        }
}

TEST(FarbTiefe, SechzehnBitFünfBitJeKanal) {
    const QImage verlauf = Verlauf();
    const std::vector<Farbe> vorher = Farben(verlauf), nachher = Farben(FarbTiefe(verlauf, 5));
    for (std::size_t i = 0; i < vorher.size(); ++i)
        for (const auto kanal : {Rot, Grün, Blau})
            ASSERT_EQ(kanal(nachher[i]) >> 3, kanal(vorher[i]) >> 3)
                << std::hex << vorher[i] << " " << nachher[i];
    const QImage ränder = Zeile({Q(FarbeWeiss), Q(FarbeSchwarz), Q(FarbeFastWeiss)});
    EXPECT_EQ(Farben(FarbTiefe(ränder, 5)),
              (std::vector<Farbe>{FarbeWeiss, FarbeSchwarz, Rgb(255, 255, 255)}));
}

TEST(OcTree, MischtDieTiefstenKnoten) {
    struct Fall {
        int palette;
        std::vector<std::pair<Farbe, std::uint32_t>> farben; // colour, pixels
        std::vector<Farbe> erwartet;
    };
    const Fall fälle[] = {
        // Fits: every colour exact.
        {4, {{FarbeWeiss, 5}, {FarbeSchwarz, 1}}, {FarbeSchwarz, FarbeWeiss}},
        // One entry: the mean by pixel count, cut to whole numbers (255 · 1 / 4 = 63.75).
        {1, {{FarbeSchwarz, 3}, {FarbeWeiss, 1}}, {Rgb(63, 63, 63)}},
        // Two neighbours in the low bit merge first; the distant colour stays.
        {2,
         {{Rgb(10, 10, 10), 1}, {Rgb(11, 11, 11), 1}, {Rgb(200, 0, 0), 2}},
         {Rgb(10, 10, 10), Rgb(200, 0, 0)}},
        {2,
         {{Rgb(100, 0, 0), 1}, {Rgb(101, 0, 0), 3}, {Rgb(0, 0, 200), 1}},
         {Rgb(100, 0, 0), Rgb(0, 0, 200)}},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.palette);
        OcTree baum(f.palette);
        for (const auto& [farbe, anzahl] : f.farben)
            baum.FarbeHinzufügen(farbe, anzahl);
        const std::vector<Farbe> palette = baum.Palette();
        EXPECT_EQ(static_cast<int>(palette.size()), baum.Blätter());
        EXPECT_EQ(QSet<Farbe>(palette.begin(), palette.end()),
                  QSet<Farbe>(f.erwartet.begin(), f.erwartet.end()));
        for (const auto& [farbe, anzahl] : f.farben) {
            const int index = baum.PaletteIndex(farbe);
            ASSERT_TRUE(index >= 0 && index < static_cast<int>(palette.size()));
        }
    }
    // Many colours never give more leaves than the palette holds, at any moment.
    OcTree baum(16);
    for (std::uint32_t i = 0; i < 20000; ++i) {
        baum.FarbeHinzufügen(static_cast<Farbe>((i * 2654435761u) & 0xffffff));
        ASSERT_LE(baum.Blätter(), 16);
    }
    EXPECT_EQ(static_cast<int>(baum.Palette().size()), baum.Blätter());
}

class RasterDateien : public testing::Test {
protected:
    std::filesystem::path Png(const std::string& name, const QImage& bild) {
        const auto pfad = m_ordner / name;
        EXPECT_TRUE(bild.save(QString::fromStdString(pfad.string()), "PNG"));
        return pfad;
    }
    test::TempOrdner m_ordner;
};

TEST_F(RasterDateien, BildLadenFehlertexte) {
    const auto png = Png("karte.png", Zeile({Q(FarbeWeiss), Q(FarbeSchwarz)}));
    const std::string inhalt = test::DateiLesen(png);
    const auto abgeschnitten = m_ordner / "abgeschnitten.png";
    test::DateiSchreiben(abgeschnitten, inhalt.substr(0, inhalt.size() - 20));
    const auto xml = m_ordner / "antwort.png";
    test::DateiSchreiben(xml, "<?xml version=\"1.0\"?><ServiceExceptionReport/>");
    const auto leer = m_ordner / "leer.png";
    test::DateiSchreiben(leer, "");
    // A BMP header that says 0 × 0 pixels.
    const auto bmp = m_ordner / "nichts.bmp";
    std::string kopf = "BM" + std::string(4, '\0') + std::string(4, '\0') +
                       std::string("\x36\0\0\0", 4) + std::string("\x28\0\0\0", 4) +
                       std::string(8, '\0') + std::string("\x01\0\x18\0", 4) +
                       std::string(24, '\0');
    test::DateiSchreiben(bmp, kopf);

    struct Fall {
        std::filesystem::path datei;
        QSize größe;
        std::string text;
    };
    const Fall fälle[] = {
        {"", {10, 10}, "Eingabeparameter fehlen"},
        {png, {0, 10}, "Eingabeparameter fehlen"},
        {png, {10, -1}, "Eingabeparameter fehlen"},
        {m_ordner / "fehlt.png", {10, 10}, "Datei existiert nicht"},
        {m_ordner.pfad(), {10, 10}, "Datei existiert nicht"},
        {xml, {10, 10}, "Bitmap " + xml.string() + " kann nicht geöffnet werden"},
        {leer, {10, 10}, "Bitmap " + leer.string() + " kann nicht geöffnet werden"},
        {bmp, {10, 10}, "Bitmap-Abmessungen nicht verfügbar"},
        {png, {1 << 20, 1 << 20}, "Graphikobjekt nicht verfügbar"},
        {abgeschnitten, {10, 10}, "Bild kann nicht gezeichnet werden"},
        {png, {10, 10}, ""},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.datei.filename().string() + " " + f.text);
        const BildErgebnis ergebnis = BildLaden(f.datei, f.größe, false, FarbeWeiss);
        EXPECT_EQ(ergebnis.fehlerText, f.text);
        EXPECT_EQ(static_cast<bool>(ergebnis), f.text.empty());
        EXPECT_EQ(ergebnis.bild.isNull(), !f.text.empty());
    }
}

TEST_F(RasterDateien, BildLadenAufHintergrundGestreckt) {
    const std::vector<QRgb> pixel = {Leer, Q(FarbeWeiss), Q(Rgb(12, 34, 56)),
                                     qRgba(255, 0, 0, 128)};
    const auto png = Png("vier.png", Zeile(pixel));
    const auto palette =
        Png("palette.png", MitPalette(Zeile(pixel))); // a transparent palette entry
    const auto durchsichtig = Png("durchsichtig.png", Zeile({Leer, Leer}));
    const auto jpeg = m_ordner / "foto.png"; // a JPEG under a picture's other name
    ASSERT_TRUE(Zeile({Q(FarbeSchwarz), Q(FarbeSchwarz)})
                    .save(QString::fromStdString(jpeg.string()), "JPEG"));

    struct Fall {
        std::filesystem::path datei;
        QSize größe;
        bool mitHintergrund;
        bool größeVomBild;
        std::vector<Farbe> erwartet; // of the first row; empty: only the size is checked
    };
    const Fall fälle[] = {
        {png, {4, 1}, false, false, {FarbeWeiss, FarbeWeiss, Rgb(12, 34, 56), Rgb(255, 127, 127)}},
        {png,
         {4, 1},
         true,
         false,
         {FarbeHintergrundFrei, FarbeWeiss, Rgb(12, 34, 56), Rgb(248, 120, 120)}},
        {palette,
         {4, 1},
         false,
         false,
         {FarbeWeiss, FarbeWeiss, Rgb(12, 34, 56), Rgb(255, 127, 127)}},
        {palette,
         {4, 1},
         true,
         false,
         {FarbeHintergrundFrei, FarbeWeiss, Rgb(12, 34, 56), Rgb(248, 120, 120)}},
        {durchsichtig, {8, 5}, true, false, std::vector<Farbe>(8, FarbeHintergrundFrei)},
        {durchsichtig, {8, 5}, false, false, std::vector<Farbe>(8, FarbeFenster)},
        {png, {1, 1}, true, true, {FarbeHintergrundFrei, FarbeWeiss, Rgb(12, 34, 56)}},
        {png, {4, 3}, false, false, {}},
        {jpeg, {2, 2}, false, false, {}},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(testing::Message()
                     << f.datei.filename() << " " << f.größe.width() << "x" << f.größe.height());
        const BildErgebnis ergebnis =
            BildLaden(f.datei, f.größe, f.mitHintergrund, FarbeHintergrundFrei, f.größeVomBild);
        ASSERT_TRUE(ergebnis) << ergebnis.fehlerText;
        EXPECT_EQ(ergebnis.bild.format(), QImage::Format_RGB32);
        EXPECT_EQ(ergebnis.bild.size(), f.größeVomBild ? QSize(4, 1) : f.größe);
        const std::vector<Farbe> farben = Farben(ergebnis.bild);
        for (std::size_t i = 0; i < f.erwartet.size(); ++i) {
            // Half-transparent red is blended; allow the rounding of the painter.
            EXPECT_NEAR(Rot(farben[i]), Rot(f.erwartet[i]), 1) << i;
            EXPECT_NEAR(Grün(farben[i]), Grün(f.erwartet[i]), 1) << i;
            EXPECT_NEAR(Blau(farben[i]), Blau(f.erwartet[i]), 1) << i;
        }
    }
}

TEST_F(RasterDateien, EbeneInDerReihenfolgeDerKorrekturen) {
    const Farbe grau240 = FarbeHintergrundFrei, fastWeiß = Rgb(254, 254, 254),
                blau = Rgb(13, 77, 201);
    const auto png = Png("ebene.png", Zeile({Leer, Q(FarbeWeiss), Q(FarbeSchwarz),
                                             Q(Rgb(255, 0, 0)), Q(grau240), Q(fastWeiß), Q(blau)}));
    const Farbe W = FarbeWeiss, F = FarbeFastWeiss, S = FarbeSchwarz;
    struct Fall {
        const char* name;
        EbenenEinstellung einstellung;
        std::vector<Farbe> erwartet;
    };
    const Fall fälle[] = {
        {"undurchsichtig, ohne Schalter",
         {1, false, false, 0, 0, false, false, false},
         {W, W, S, Rgb(255, 0, 0), grau240, fastWeiß, blau}},
        // What the service left empty is the see-through key, its own white is near-white; its own
        // 240-grey can't be told from the background and turns see-through as well.
        {"transparent, Weiß erhalten",
         {1, true, true, 0, 0, false, false, false},
         {W, F, S, Rgb(255, 0, 0), W, fastWeiß, blau}},
        {"Weiß erhalten auf Ebene 2",
         {2, true, true, 0, 0, false, false, false},
         {W, F, S, Rgb(255, 0, 0), W, fastWeiß, blau}},
        // Keep-white on an opaque service: 16 bits, 5 bits per channel, repeated into the low bits.
        {"undurchsichtig, Weiß erhalten",
         {1, false, true, 0, 0, false, false, false},
         {W, W, S, Rgb(255, 0, 0), Rgb(247, 247, 247), W, Rgb(8, 74, 206)}},
        {"transparent ohne Weiß erhalten",
         {2, true, false, 0, 0, false, false, false},
         {W, W, S, Rgb(255, 0, 0), grau240, fastWeiß, blau}},
        {"schwarz/weiß", {1, false, false, 0, 0, false, true, false}, {W, W, S, S, W, W, S}},
        {"schwarz invers", {2, false, false, 0, 0, false, false, true}, {W, W, F, F, W, W, F}},
        // The near-white of keep-white is white in 1 bit, so it is see-through after the inversion.
        {"Weiß erhalten und invers",
         {1, true, true, 0, 0, false, false, true},
         {W, W, F, F, W, W, F}},
        // Korrektur comes before the 1 bit: lifted by half the range, black is mid-grey 128 and so
        // white.
        {"heller, dann schwarz/weiß",
         {1, false, false, 0, 100, false, true, false},
         {W, W, W, W, W, W, W}},
        {"flau und dunkel, dann schwarz/weiß",
         {2, false, false, -90, -90, false, true, false},
         {S, S, S, S, S, S, S}},
        {"grau",
         {2, false, false, 0, 0, true, false, false},
         {W, W, S, Rgb(77, 77, 77), grau240, fastWeiß, Rgb(72, 72, 72)}},
        // Level 3 has no checks: only Korrektur.
        {"Ebene 3 ohne Schalter",
         {3, true, true, 0, 0, false, true, true},
         {W, W, S, Rgb(255, 0, 0), grau240, fastWeiß, blau}},
        {"Ebene 3 grau",
         {3, false, false, 0, 0, true, true, false},
         {W, W, S, Rgb(77, 77, 77), grau240, fastWeiß, Rgb(72, 72, 72)}},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.name);
        const BildErgebnis ergebnis = EbeneLadenUndKorrigieren(png, QSize(7, 1), f.einstellung);
        ASSERT_TRUE(ergebnis) << ergebnis.fehlerText;
        EXPECT_EQ(ergebnis.bild.format(), QImage::Format_RGB32);
        EXPECT_EQ(Farben(ergebnis.bild), f.erwartet);
    }
    const BildErgebnis fehlt = EbeneLadenUndKorrigieren(m_ordner / "fehlt.png", QSize(7, 1), {});
    EXPECT_EQ(fehlt.fehlerText, "Datei existiert nicht");
    EXPECT_TRUE(fehlt.bild.isNull());
}

} // namespace
} // namespace flurix::karte
