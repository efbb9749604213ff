// The DXF writer: the empty drawing and one entity of each kind byte for byte, every drawing read
// by ezdxf in strict mode (dxfcheck.py) and by GDAL with the entity counts written, the layer of a
// GEOgraf key, numbers, code page, and the file that only appears when it is whole.

#include "export/dxf_schreiber.hpp"

#include "core/fehler.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace flurix::ausgabe {
namespace {

namespace fs = std::filesystem;
using test::DateiLesen;

const fs::path DxfcheckSkript = FLURIX_GEMEINSAM "/tools/dxfcheck.py";

fs::path Golden(std::string_view name) { return test::Testdaten() / "export" / "dxf" / name; }

// The pairs of a drawing: group code (blanks removed) and value.
std::vector<std::pair<std::string, std::string>> Paare(const std::string& bytes) {
    std::vector<std::pair<std::string, std::string>> paare;
    std::vector<std::string> zeilen;
    std::size_t anfang = 0;
    while (anfang < bytes.size()) {
        const auto ende = bytes.find("\r\n", anfang);
        zeilen.push_back(bytes.substr(anfang, ende - anfang));
        anfang = ende == std::string::npos ? bytes.size() : ende + 2;
    }
    for (std::size_t i = 0; i + 1 < zeilen.size(); i += 2) {
        std::string code = zeilen[i];
        std::erase(code, ' ');
        paare.emplace_back(code, zeilen[i + 1]);
    }
    return paare;
}

bool EzdxfDa() {
    if (fs::exists(DxfcheckSkript) &&
        test::Ausführen("/usr/bin/python3 -c 'import ezdxf' 2>/dev/null").status == 0)
        return true;
    std::printf("dxfcheck.py oder python3-ezdxf fehlt: Prüfung mit ezdxf übersprungen\n");
    return false;
}

test::Programmlauf Dxfcheck(const fs::path& datei) {
    return test::Ausführen("/usr/bin/python3 " + test::Wort(DxfcheckSkript) + " " + test::Wort(datei) +
                           " 2>&1");
}

// ezdxf in strict mode with its audit; "" when it passed or can't run. ezdxf takes section names
// in capitals only, so it reads a copy whose header opens with "SECTION": the drawing itself keeps
// the mixed-case "Section" (see LeereZeichnungIstDasGerüst), everything else is checked as written.
std::string EzdxfPrüfung(const fs::path& datei) {
    if (!EzdxfDa())
        return {};
    std::string bytes = DateiLesen(datei);
    if (bytes.starts_with("  0\r\nSection\r\n"))
        bytes.replace(5, 7, "SECTION");
    const fs::path kopie = datei.parent_path() / ("strikt_" + datei.filename().string());
    test::DateiSchreiben(kopie, bytes);
    const auto lauf = Dxfcheck(kopie);
    fs::remove(kopie);
    if (lauf.status == 0)
        return {};
    return "dxfcheck " + datei.filename().string() + ": " + lauf.ausgabe.substr(0, 2000);
}

// The features GDAL reads from the drawing's entities (blocks not exploded), -1 without ogrinfo.
long GdalObjekte(const fs::path& datei) {
    if (!test::ImSuchpfad("ogrinfo")) {
        std::printf("ogrinfo fehlt: Prüfung mit GDAL übersprungen\n");
        return -1;
    }
    const auto lauf = test::Ausführen("ogrinfo --config DXF_INLINE_BLOCKS FALSE -ro -al -so " +
                                      test::Wort(datei) + " 2>&1");
    std::smatch treffer;
    if (lauf.status != 0 || !std::regex_search(lauf.ausgabe, treffer,
                                               std::regex("Layer name: entities[\\s\\S]*?Feature Count: (\\d+)")))
        return -2;
    return std::stol(treffer[1]);
}

void GelesenWieGeschrieben(const fs::path& datei, long objekte) {
    EXPECT_EQ(EzdxfPrüfung(datei), "");
    const long gelesen = GdalObjekte(datei);
    if (gelesen != -1) {
        EXPECT_EQ(gelesen, objekte) << datei;
    }
}

TEST(DxfSchreiber, LeereZeichnungIstDasGerüst) {
    test::TempOrdner ordner;
    {
        DxfSchreiber dxf(ordner / "leer.dxf");
        dxf.Anfang(350000.25, 5600000, 351000, 5601000.5);
        dxf.Abschließen();
    }
    const std::string bytes = DateiLesen(ordner / "leer.dxf");
    EXPECT_EQ(test::GoldenVergleich(bytes, Golden("leer.dxf")), "");
    const auto paare = Paare(bytes);
    ASSERT_FALSE(paare.empty());
    // "Section" opens the header alone; every other section is "SECTION".
    EXPECT_EQ(paare.front(), std::make_pair(std::string("0"), std::string("Section")));
    EXPECT_EQ(std::count(paare.begin(), paare.end(), std::make_pair(std::string("0"), std::string("SECTION"))), 3);
    EXPECT_EQ(paare.back(), std::make_pair(std::string("0"), std::string("EOF")));
    GelesenWieGeschrieben(ordner / "leer.dxf", 0);
    // The one thing ezdxf's strict loader holds against the drawing as written is that word.
    if (EzdxfDa()) {
        const auto lauf = Dxfcheck(ordner / "leer.dxf");
        EXPECT_NE(lauf.status, 0);
        EXPECT_NE(lauf.ausgabe.find("found ENDSEC tag without previous SECTION tag"), std::string::npos)
            << lauf.ausgabe;
    }
}

// One entity of each kind; the polyline counts once for GDAL, its vertices are part of it.
TEST(DxfSchreiber, JedeObjektartEinmal) {
    test::TempOrdner ordner;
    {
        DxfSchreiber dxf(ordner / "objekte.dxf");
        dxf.Anfang(0, 0, 100, 100);
        dxf.Punkt("PUNKTE_EINGELESEN", 1, 10.5, 20.25);
        dxf.Linie("FLURSTUECKE", "FLSTGRENZE", 3, 0, 0, 100, 50.125);
        dxf.Polylinie("AMTL_GEBAEUDE", "GEBAEUDE", 7);
        dxf.Vertex("AMTL_GEBAEUDE", "GEBAEUDE", 7, 10, 10);
        dxf.Vertex("AMTL_GEBAEUDE", "GEBAEUDE", 7, 20, 10);
        dxf.Vertex("AMTL_GEBAEUDE", "GEBAEUDE", 7, 20, 30);
        dxf.Seqend("AMTL_GEBAEUDE", "GEBAEUDE", 7);
        dxf.Bogen("TOPOGRAFIE_LK", "NUTZUNGSART", 7, 50, 50, 12.5, 0, 90);
        dxf.Text("AMTLTXT_FLURSTUECK", 3,
                 {.x = 40, .y = 60, .höhe = 1.5, .winkel = 100, .breitenfaktor = 0.8,
                  .text = "231/4", .stil = "ISO8", .horizontal = 1, .vertikal = 2});
        dxf.Einfügen("AMTLPKT_GRENZP", 3, "S3125", 12.5, 7.75);
        dxf.Einfügen("AMTLPKT_AUFNP", 7, "S3073", 80, 90);
        dxf.Abschließen();
    }
    EXPECT_EQ(test::GoldenVergleich(DateiLesen(ordner / "objekte.dxf"), Golden("objekte.dxf")), "");
    GelesenWieGeschrieben(ordner / "objekte.dxf", 7);
}

// An INSERT without a block has no coordinates and no scale, and is written all the same.
TEST(DxfSchreiber, EinfügenOhneBlockHatKeineKoordinaten) {
    test::TempOrdner ordner;
    {
        DxfSchreiber dxf(ordner / "ohne_block.dxf");
        dxf.Anfang(0, 0, 1, 1);
        dxf.Einfügen("SACHDATEN_PKT", 7, "", 5, 6);
        dxf.Abschließen();
    }
    const std::string bytes = DateiLesen(ordner / "ohne_block.dxf");
    EXPECT_NE(bytes.find("  0\r\nINSERT\r\n  8\r\nSACHDATEN_PKT\r\n 62\r\n7\r\n999\r\n"
                         "-------------------\r\n  0\r\nENDSEC\r\n"),
              std::string::npos);
    // ezdxf's audit drops such an INSERT and GDAL warns of the missing block: both still read the
    // drawing.
    EXPECT_EQ(EzdxfPrüfung(ordner / "ohne_block.dxf"), "");
}

// Groups 11/21 lie 0.05 from 10/20 in the direction of the angle read in gon; group 50 keeps it.
TEST(DxfSchreiber, TextAusrichtungspunktInGon) {
    struct Fall {
        double winkel, dx, dy;
    };
    const Fall fälle[] = {{0, 0, 0.05}, {100, 0.05, 0}, {200, 0, -0.05}, {300, -0.05, 0},
                          {50, 0.05 * std::sqrt(0.5), 0.05 * std::sqrt(0.5)}};
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.winkel);
        test::TempOrdner ordner;
        {
            DxfSchreiber dxf(ordner / "text.dxf");
            dxf.Anfang(0, 0, 1000, 1000);
            dxf.Text("AMTLTXT_GRENZP", 3,
                     {.x = 350123.5, .y = 5600456.25, .winkel = f.winkel, .text = "12", .stil = "ISO8"});
            dxf.Abschließen();
        }
        const auto paare = Paare(DateiLesen(ordner / "text.dxf"));
        auto text = std::find(paare.begin(), paare.end(), std::make_pair(std::string("0"), std::string("TEXT")));
        ASSERT_NE(text, paare.end());
        std::map<std::string, double> wert;
        for (auto p = text + 1; p != paare.end() && p->first != "0"; ++p)
            if (p->first != "1" && p->first != "7" && p->first != "8" && p->first != "999")
                wert[p->first] = std::stod(p->second);
        EXPECT_EQ(wert["50"], f.winkel);
        EXPECT_NEAR(wert["11"] - wert["10"], f.dx, 1e-6);
        EXPECT_NEAR(wert["21"] - wert["20"], f.dy, 1e-6);
    }
}

TEST(DxfLayerName, EbeneUndArtAlsZahlen) {
    const std::pair<std::string_view, std::string_view> fälle[] = {
        {"0.0", "PUNKTE_EINGELESEN"},      {"1.1", "FLURSTUECKE"},
        {"2.5", "FLURSTUECKE"},            {"11.1001", "AMTL_GEBAEUDE"},
        {"21.0", "TATS_NUTZUNG_ALB"},      {"51.3", "AMTLPKT_AUFNP"},
        {"52.4", "AMTLPKT_GRENZP"},        {"81.251", "TOPOGRAFIE_GELAENDE"},
        {"81.0251", "TOPOGRAFIE_GELAENDE"}, {"081.251", "TOPOGRAFIE_GELAENDE"},
        {"81.1401", "BODENSCHAETZUNG"},    {"81.25", "TOPOGRAFIE_LK"},
        {"81", "TOPOGRAFIE_LK"},           {"82.7", "TOPOGRAFIE_LKWEITERE"},
        {"84.2", "NICHTAMTL_GEBAEUDE"},    {"99.0", "DEFPOINTS"},
        {"12.1", ""},                      {"", ""},
        {"abc.251", ""},                   {"8 1.251", ""},
    };
    for (const auto& [schlüssel, layer] : fälle) {
        SCOPED_TRACE(schlüssel);
        EXPECT_EQ(DxfLayerName(schlüssel), layer);
    }
}

// Shortest round trip, never in exponent form: CAD readers take "5600000", not "5.6e+06".
TEST(DxfSchreiber, ZahlenKürzestOhneExponent) {
    const std::pair<double, std::string_view> fälle[] = {
        {5600000, "5600000"}, {0.05, "0.05"}, {-12.5, "-12.5"}, {1e-7, "0.0000001"},
        {0.1 + 0.2, "0.30000000000000004"}, {350123.456, "350123.456"}, {1e22, "10000000000000000000000"},
    };
    for (const auto& [zahl, text] : fälle) {
        SCOPED_TRACE(text);
        EXPECT_EQ(detail::DxfZahl(zahl), text);
    }
}

// Windows-1252 in the file: "ğ" is not in it and becomes "?", a line break becomes a blank.
TEST(DxfSchreiber, TexteInWindows1252) {
    test::TempOrdner ordner;
    {
        DxfSchreiber dxf(ordner / "text.dxf");
        dxf.Anfang(0, 0, 1, 1);
        dxf.Text("AMTLTXT_GEBAEUDE", 7, {.text = "Grünfläche 5 €\nAğa", .stil = "ISO8"});
        dxf.Abschließen();
    }
    EXPECT_NE(DateiLesen(ordner / "text.dxf").find("\r\n  1\r\nGr\xFCnfl\xE4" "che 5 \x80 A?a\r\n  7\r\nISO8\r\n"),
              std::string::npos);
    EXPECT_EQ(EzdxfPrüfung(ordner / "text.dxf"), "");
}

// A second ENTITIES section: ezdxf reads both. GDAL reads the first only, so the count is not
// checked with it here.
TEST(DxfSchreiber, AbschnittWechselnÖffnetNeueEntities) {
    test::TempOrdner ordner;
    {
        DxfSchreiber dxf(ordner / "zwei.dxf");
        dxf.Anfang(0, 0, 1, 1);
        dxf.Punkt("0", 1, 0.5, 0.5);
        dxf.AbschnittWechseln();
        dxf.Punkt("0", 1, 0.25, 0.75);
        dxf.Abschließen();
    }
    const std::string bytes = DateiLesen(ordner / "zwei.dxf");
    EXPECT_NE(bytes.find("-------------------\r\n  0\r\nENDSEC\r\n999\r\n-------------------\r\n"
                         "  0\r\nSECTION\r\n999\r\n-------------------\r\n  2\r\nENTITIES\r\n999\r\n"
                         "-------------------\r\n  0\r\nPOINT\r\n"),
              std::string::npos);
    EXPECT_EQ(EzdxfPrüfung(ordner / "zwei.dxf"), "");
}

// The target only changes when the drawing is whole; the temporary file never stays.
TEST(DxfSchreiber, ZielErstNachAbschließen) {
    test::TempOrdner ordner;
    const fs::path temporär = Zieldatei::Zwischenname(ordner / "karte.dxf");
    test::DateiSchreiben(ordner / "karte.dxf", "alt");
    {
        DxfSchreiber dxf(ordner / "karte.dxf");
        dxf.Anfang(0, 0, 1, 1);
        dxf.Punkt("0", 1, 0.5, 0.5);
        EXPECT_TRUE(fs::exists(temporär));
    }
    EXPECT_EQ(DateiLesen(ordner / "karte.dxf"), "alt");
    EXPECT_FALSE(fs::exists(temporär));
    {
        DxfSchreiber dxf(ordner / "karte.dxf");
        dxf.Anfang(0, 0, 1, 1);
        dxf.Abschließen();
    }
    EXPECT_EQ(DateiLesen(ordner / "karte.dxf").substr(0, 20), "  0\r\nSection\r\n  2\r\nH");
    EXPECT_FALSE(fs::exists(temporär));
}

TEST(DxfSchreiber, OrdnerFehltGibtFehlerMitDateiname) {
    test::TempOrdner ordner;
    try {
        DxfSchreiber dxf(ordner / "fehlt" / "karte.dxf");
        FAIL() << "kein Fehler";
    } catch (const Fehler& f) {
        // The message names the user's file, not the temporary one it is written under.
        EXPECT_EQ(std::string(f.what()), "Die Datei \"" + (ordner / "fehlt" / "karte.dxf").string() +
                                             "\" kann nicht angelegt werden (nicht gefunden)!");
    }
}

// A generated drawing of 100,000 entities of every kind is read whole by ezdxf and GDAL.
TEST(DxfSchreiber, HunderttausendObjekteGelesen) {
    test::TempOrdner ordner;
    long objekte = 0;
    {
        DxfSchreiber dxf(ordner / "gross.dxf");
        dxf.Anfang(350000, 5600000, 360000, 5610000);
        // Five entities a round: a point or an arc, a line, a closed polyline, a text, an insert.
        for (int i = 0; objekte < 100000; ++i, objekte += 5) {
            const double x = 350000 + (i % 100) * 100.125, y = 5600000 + (i / 100) * 50.5;
            if (i % 2 == 0)
                dxf.Punkt("PUNKTE_EINGELESEN", 1, x, y);
            else
                dxf.Bogen("TOPOGRAFIE_LK", "NUTZUNGSART", 7, x, y, 2.5, 10, 80);
            dxf.Linie("FLURSTUECKE", "FLSTGRENZE", 3, x, y, x + 5, y + 2.5);
            dxf.Polylinie("AMTL_GEBAEUDE", "GEBAEUDE", 7);
            for (const auto& [dx, dy] : {std::pair{0.0, 0.0}, {4.0, 0.0}, {4.0, 3.0}})
                dxf.Vertex("AMTL_GEBAEUDE", "GEBAEUDE", 7, x + dx, y + dy);
            dxf.Seqend("AMTL_GEBAEUDE", "GEBAEUDE", 7);
            dxf.Text("AMTLTXT_FLURSTUECK", 3,
                     {.x = x, .y = y, .winkel = i % 400 * 1.0, .text = std::to_string(i), .stil = "ISO8"});
            dxf.Einfügen("AMTLPKT_GRENZP", 3, i % 3 == 0 ? "S3125" : "S4", x, y);
        }
        dxf.Abschließen();
    }
    GelesenWieGeschrieben(ordner / "gross.dxf", objekte);
}

} // namespace
} // namespace flurix::ausgabe
