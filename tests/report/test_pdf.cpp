// The PDF writer clsPDF: whole files byte for byte, the content streams of small documents, the
// number, colour and text forms, the run-length packing, the pagination of the line printer, and
// the judgement of qpdf and poppler on the files.

#include "report/cls_pdf.hpp"
#include "report/pdf_bild.hpp"
#include "report/pdf_format.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

namespace {

using namespace flurix::report;
namespace test = flurix::test;
using flurix::test::DateiLesen;
using flurix::test::DateiSchreiben;
using flurix::test::TempOrdner;

// ---- helpers ------------------------------------------------------------------------------------

// A fixed producer and creation time, so that whole files compare byte for byte.
PdfHerkunft Fest() {
    return {"Flurix Test", [] {
                std::tm zeit{};
                zeit.tm_year = 2024 - 1900;
                zeit.tm_mon = 2;
                zeit.tm_mday = 5;
                zeit.tm_hour = 7;
                zeit.tm_min = 8;
                zeit.tm_sec = 9;
                return zeit;
            }};
}

// Lines of the file, each ended by a single CR.
std::string Zeilen(std::initializer_list<std::string_view> zeilen) {
    std::string text;
    for (const auto z : zeilen) {
        text += z;
        text += '\r';
    }
    return text;
}

// What a page's text block starts with on A4 portrait with the default margins and font size.
const std::string TextAnfang = Zeilen({"BT", "/F1 10 Tf", "80 782 Td", "10 TL"});

// The number written on the line that starts at pos ("<n>\r...").
long ZahlAn(const std::string& datei, std::size_t pos) {
    return std::strtol(datei.c_str() + pos, nullptr, 10);
}

// The content stream of page k (from 1): object 3k + 4, its length read from object 3k + 5.
// Fails the test (and gives "") when the page's objects don't have their shape.
std::string Seiteninhalt(const std::string& datei, int k) {
    const std::string inhaltKopf = std::to_string(3 * k + 4) + " 0 obj\r<<\r/Length " +
                                   std::to_string(3 * k + 5) + " 0 R\r>>\rstream\r";
    const std::string längeKopf = "\rendobj\r" + std::to_string(3 * k + 5) + " 0 obj\r";
    const auto anfang = datei.find(inhaltKopf);
    const auto längePos = datei.find(längeKopf);
    EXPECT_NE(anfang, std::string::npos) << "Seite " << k;
    EXPECT_NE(längePos, std::string::npos) << "Seite " << k;
    if (anfang == std::string::npos || längePos == std::string::npos)
        return {};
    const auto start = anfang + inhaltKopf.size();
    const auto länge = static_cast<std::size_t>(ZahlAn(datei, längePos + längeKopf.size()));
    EXPECT_EQ(datei.compare(start + länge, 17, "endstream\rendobj\r"), 0) << "Seite " << k;
    return datei.substr(start, länge);
}

// Checks the xref table against the real byte positions: startxref points at "xref", there is one
// 19-byte entry per object, and each offset points at the line "<n> 0 obj".
void XrefPrüfen(const std::string& datei) {
    const auto sx = datei.rfind("startxref\r");
    ASSERT_NE(sx, std::string::npos);
    const auto xref = static_cast<std::size_t>(ZahlAn(datei, sx + 10));
    ASSERT_EQ(datei.compare(xref, 7, "xref\r0 "), 0);
    const auto größe = ZahlAn(datei, xref + 7);
    auto pos = datei.find('\r', xref + 7) + 1;
    ASSERT_EQ(datei.compare(pos, 19, "0000000000 65535 f\r"), 0);
    pos += 19;
    for (long n = 1; n < größe; ++n, pos += 19) {
        ASSERT_EQ(datei.compare(pos + 10, 9, " 00000 n\r"), 0) << "Eintrag " << n;
        const auto offset = static_cast<std::size_t>(std::stol(datei.substr(pos, 10)));
        const std::string kopf = std::to_string(n) + " 0 obj\r";
        EXPECT_EQ(datei.compare(offset, kopf.size(), kopf), 0) << "Objekt " << n;
    }
    EXPECT_EQ(datei.compare(pos, 8, "trailer\r"), 0);
}

// RunLengthDecode, written from the reader's side: 0-127 copy n+1 bytes, 129-255 repeat the next
// byte 257-n times, 128 ends.
std::string RunLengthEntpacken(std::string_view gepackt) {
    std::string aus;
    for (std::size_t i = 0; i < gepackt.size();) {
        const auto n = static_cast<unsigned char>(gepackt[i++]);
        if (n == 128)
            break;
        if (n < 128) {
            aus.append(gepackt.substr(i, n + 1u));
            i += n + 1u;
        } else {
            aus.append(257u - n, gepackt.at(i++));
        }
    }
    return aus;
}

std::string Bytes(std::initializer_list<int> werte) {
    std::string s;
    for (const int w : werte)
        s.push_back(static_cast<char>(w));
    return s;
}

// ---- whole files --------------------------------------------------------------------------------

TEST(PdfDatei, GanzeDateienByteGenau) {
    // Without a line: valid with no page, and a box waiting for a page that never comes is not in
    // the file. With one line: the lone "S" opens the first stream of a new object (FillMode 0,
    // flushed by Clear).
    const auto daten = test::Testdaten() / "report";
    clsPDF leer(Fest());
    leer.DrawBox(10, 10, 20, 20, 0);
    EXPECT_EQ(test::GoldenVergleich(leer.value(), daten / "pdf_ohne_seite.pdf"), "");
    EXPECT_EQ(leer.PageNumber(), 0);

    clsPDF pdf(Fest());
    pdf.PrintLine("Hallo");
    EXPECT_EQ(test::GoldenVergleich(pdf.value(), daten / "pdf_eine_zeile_hallo.pdf"), "");
    EXPECT_EQ(test::GoldenVergleich(pdf.value(), daten / "pdf_eine_zeile_hallo.pdf"), "")
        << "a second read gives the same bytes";
}

TEST(PdfDatei, ZweitesClearOhneWartendenOperatorSchreibtKeinS) {
    clsPDF pdf(Fest());
    pdf.PrintLine("x");
    pdf.Clear(12, 0);
    pdf.PrintLine("y");
    const std::string datei = pdf.value();
    EXPECT_EQ(Seiteninhalt(datei, 1), Zeilen({"BT", "/F1 12 Tf", "80 782 Td", "12 TL", "(y)'", "ET"}));
    EXPECT_NE(datei.find("/Count 1\r"), std::string::npos);
    XrefPrüfen(datei);
}

TEST(PdfDatei, ZeitstempelUndProducerVonDerUhr) {
    PdfHerkunft herkunft = Fest();
    herkunft.producer = "Prüfer (ü)";
    clsPDF pdf(herkunft);
    const std::string datei = pdf.value();
    // 1252 and not escaped: the producer stands as it is.
    EXPECT_NE(datei.find("\r/Producer (Pr\xFC" "fer (\xFC))\r"), std::string::npos);
    EXPECT_NE(datei.find("\r/CreationDate (D:20240305070809)\r"), std::string::npos);

    clsPDF standard; // the application title and the local clock
    const std::string echt = standard.value();
    const auto pos = echt.find("/CreationDate (D:");
    ASSERT_NE(pos, std::string::npos);
    EXPECT_EQ(echt.compare(pos + 17 + 14, 2, ")\r"), 0);
    EXPECT_NE(echt.find("/Producer (Flurix V"), std::string::npos);
}

// ---- content streams, table-driven --------------------------------------------------------------

struct Inhaltsfall {
    const char* name;
    std::function<void(clsPDF&)> zeichnen; // runs on a new object; the test prints one line "x" behind
    std::string erwartet;                  // content stream of page 1
};

std::string MitText(std::string_view vorher, std::string_view nachher = {}) {
    return std::string(vorher) + TextAnfang + "(x)'\rET\r" + std::string(nachher);
}

TEST(PdfInhalt, ZeichenoperatorenByteGenau) {
    const std::vector<Inhaltsfall> fälle = {
        {"Linie", [](clsPDF& p) { p.DrawLine(10, 20, 110, 20); },
         MitText("S\r10 822 m 110 822 l\rS\r")},
        {"zwei Linien teilen ein S",
         [](clsPDF& p) {
             p.DrawLine(10, 20, 110, 20);
             p.DrawLine(10, 10, 110, 10.25F);
         },
         MitText("S\r10 822 m 110 822 l\r10 832 m 110 831.75 l\rS\r")},
        {"Rechteck gestrichen dann gefüllt",
         [](clsPDF& p) {
             p.DrawBox(20, 30, 100, 50, 0);
             p.DrawBox(20, 30, 100, 50, 0);
             p.DrawBox(0, 0, 596, 842, -1);
         },
         MitText("S\r20 762 100 50 re\r20 762 100 50 re\rS\r0 0 596 842 re\rf\r")},
        {"Farbwechsel zwischen zwei Kästen schließt den Operator ab",
         [](clsPDF& p) {
             p.DrawBox(20, 30, 100, 50, 0);
             p.DrawColor(0x0000FF);
             p.DrawBox(20, 30, 100, 50, 0);
         },
         // The page start marks the colour again, but no operator follows on this page.
         MitText("S\r20 762 100 50 re\rS\r1 0 0 RG\r20 762 100 50 re\rS\r")},
        {"Grau als Strich GFC, als Füllung gfc, Breite",
         [](clsPDF& p) {
             p.DrawColor(0x808080);
             p.FillColor(0x336699);
             p.DrawWidth(0.5F);
             p.DrawBox(1, 2, 3, 4, 1);
         },
         "S\r0.502 GFC\r0.6 0.4 0.2 rg\r0.5 w\r1 836 3 4 re\rb\r0 g\r" + TextAnfang + "(x)'\rET\r"},
        {"Text mit Klammern und Backslash",
         [](clsPDF& p) { p.DrawText(50, 100, "a(b)\\c"); },
         MitText("S\rBT\r/F1 10 Tf\r50 742 Td\r(a\\(b\\)\\\\c)'\rET\r")},
        {"Umlaute in 1252, Fremdes als ?",
         [](clsPDF& p) { p.DrawText(0.0004F, 0, "Grüße € Łódź"); },
         MitText("S\rBT\r/F1 10 Tf\r0 842 Td\r(Gr\xFC\xDF" "e \x80 ?\xF3" "d?)'\rET\r")},
        {"Text um 30 Grad gedreht",
         [](clsPDF& p) { p.DrawText(100, 200, "Nord", std::numbers::pi_v<float> / 6); },
         MitText("S\rBT\r/F1 10 Tf\r0.866 0.5 -0.5 0.866 100 642 Tm\r(Nord)'\rET\r")},
        {"Text um -90 Grad in Größe 8",
         [](clsPDF& p) {
             p.FontSize(8);
             p.DrawText(10, 20, "Süd", -std::numbers::pi_v<float> / 2);
             p.FontSize(10);
         },
         MitText("S\rBT\r/F1 8 Tf\r0 -1 1 0 10 822 Tm\r(S\xFC" "d)'\rET\r")},
        {"Sinus 0 wird -0",
         [](clsPDF& p) { p.DrawText(1, 2, "u", std::numbers::pi_v<float>); },
         MitText("S\rBT\r/F1 10 Tf\r-1 0 -0 -1 1 840 Tm\r(u)'\rET\r")},
        {"Kreis aus vier Kurven",
         [](clsPDF& p) { p.DrawCircle(100, 100, 10, 0); },
         MitText("S\r100 732 m\r105.523 732 110 736.477 110 742 c\r"
                 "110 747.523 105.523 752 100 752 c\r94.477 752 90 747.523 90 742 c\r"
                 "90 736.477 94.477 732 100 732 c\rS\r")},
        {"MoveTo zum aktuellen Punkt schreibt nichts und schließt nichts ab",
         [](clsPDF& p) {
             p.DrawLine(10, 20, 30, 40);
             p.MoveTo(30, 40);
             p.DrawLineTo(50, 60);
             p.MoveTo(5, 5);
         },
         MitText("S\r10 822 m 30 802 l\r50 782 l\rS\r5 837 m\r")},
        {"Kurve und Fläche mit FillMode",
         [](clsPDF& p) {
             p.MoveTo(0, 0);
             p.DrawCurveTo(1, 2, 3, 4, 5, 6);
             p.DrawLineTo(0, 0);
             p.DrawShape(-1);
             p.FillMode(2);
             p.DrawShape(7); // no such mode: the "s" that FillMode made pending is painted
         },
         MitText("S\r0 842 m\r1 840 3 838 5 836 c\r0 842 l\rf\rs\r")},
    };
    for (const auto& fall : fälle) {
        clsPDF pdf(Fest());
        fall.zeichnen(pdf);
        pdf.PrintLine("x");
        const std::string datei = pdf.value();
        EXPECT_EQ(Seiteninhalt(datei, 1), fall.erwartet) << fall.name;
        XrefPrüfen(datei);
    }
}

TEST(PdfInhalt, EreignisseZeichnenUnterUndÜberDemText) {
    clsPDF pdf(Fest());
    int begonnen = 0;
    int beendet = 0;
    pdf.PageStarted = [&] {
        ++begonnen;
        pdf.DrawBox(0, 0, 10, 10, -1);
    };
    pdf.PageFinished = [&] {
        ++beendet;
        pdf.DrawText(0, 0, "Ende");
    };
    pdf.PrintLine("a");
    pdf.DrawLine(0, 0, 1, 1); // while the page is open: over the text
    pdf.NewPage();
    pdf.PrintLine("b");
    const std::string datei = pdf.value();
    EXPECT_EQ(begonnen, 2);
    EXPECT_EQ(beendet, 2);
    const std::string unten = "0 832 10 10 re\rf\r";
    const std::string ende = "BT\r/F1 10 Tf\r0 842 Td\r(Ende)'\rET\r";
    EXPECT_EQ(Seiteninhalt(datei, 1),
              "S\r" + unten + TextAnfang + "(a)'\rET\r0 842 m 1 841 l\rS\r" + ende);
    EXPECT_EQ(Seiteninhalt(datei, 2), unten + TextAnfang + "(b)'\rET\r" + ende);
    EXPECT_NE(datei.find("/Kids [ 6 0 R 9 0 R ]\r"), std::string::npos);
    XrefPrüfen(datei);
}

TEST(PdfInhalt, QuerformatUndGebrocheneRänderInEinfacherWandlung) {
    clsPDF pdf(Fest());
    pdf.Orientation(1);
    pdf.LeftMargin(72.5F);
    pdf.TopMargin(0.1F);
    pdf.DrawLine(0, 0, 0, 96); // H is the width field (596) in landscape
    pdf.PrintLine("q");
    const std::string datei = pdf.value();
    EXPECT_EQ(Seiteninhalt(datei, 1), "S\r0 596 m 0 500 l\rS\rBT\r/F1 10 Tf\r72.5 595.9 Td\r10 TL\r(q)'\rET\r");
    EXPECT_NE(datei.find("\r/MediaBox [0 0 842 596]\r"), std::string::npos);

    clsPDF frei(Fest());
    frei.Width(300.25F);
    frei.Height(400.5F);
    EXPECT_EQ(frei.PaperSize(), 0);
    EXPECT_NE(frei.value().find("\r/MediaBox [0 0 300.25 400.5]\r"), std::string::npos);
}

// ---- pictures -----------------------------------------------------------------------------------

std::vector<std::uint8_t> Einfarbig(int breite, int höhe, std::uint8_t r, std::uint8_t g, std::uint8_t b) {
    std::vector<std::uint8_t> px;
    for (int i = 0; i < breite * höhe; ++i)
        px.insert(px.end(), {r, g, b});
    return px;
}

TEST(PdfBild, FarbigUndGrauMitRunLengthOderRoh) {
    const auto weiß = Einfarbig(20, 10, 255, 255, 255);
    const std::vector<std::uint8_t> rgb3 = {255, 0, 0, 0, 255, 0, 0, 0, 255};
    const auto grau2x2 = Einfarbig(2, 2, 90, 90, 90);
    struct Fall {
        const char* name;
        PdfBild bild;
        bool grau;
        float breite, höhe;
        std::string kopf; // the cm and BI lines
        std::string daten;
    };
    const std::vector<Fall> fälle = {
        {"RGB weiß, gepackt: 600 Bytes in fünf Läufen", {20, 10, weiß}, false, 100, 50,
         "100 0 0 50 10 772 cm\rBI\r/W 20\r/H 10\r/BPC 8\r/CS /RGB\r/F /RL\r",
         "ID " + Bytes({129, 255, 129, 255, 129, 255, 129, 255, 169, 255, 128})},
        {"Grau weiß, gepackt: 200 Bytes", {20, 10, weiß}, true, 100, 50,
         "100 0 0 50 10 772 cm\rBI\r/W 20\r/H 10\r/BPC 8\r/CS /gDP\r/F /RL\r",
         "ID " + Bytes({129, 255, 185, 255, 128})},
        {"Grau aus Rot, Grün, Blau, roh", {3, 1, rgb3}, true, 30, 10,
         "30 0 0 10 10 812 cm\rBI\r/W 3\r/H 1\r/BPC 8\r/CS /gDP\r", "ID " + Bytes({77, 150, 28}) + ">"},
        {"2×2 gleich grau: gepackt zu kurz, roh", {2, 2, grau2x2}, true, 2, 2,
         "2 0 0 2 10 820 cm\rBI\r/W 2\r/H 2\r/BPC 8\r/CS /gDP\r", "ID " + Bytes({90, 90, 90, 90}) + ">"},
        {"negative Breite und Höhe spiegeln", {3, 1, rgb3}, false, -30, -10,
         "-30 0 0 -10 40 822 cm\rBI\r/W 3\r/H 1\r/BPC 8\r/CS /RGB\r",
         "ID " + Bytes({255, 0, 0, 0, 255, 0, 0, 0, 255}) + ">"},
    };
    for (const auto& fall : fälle) {
        clsPDF pdf(Fest());
        std::vector<std::int32_t> zeilen;
        pdf.PictureProgress = [&](std::int32_t zeile, std::int32_t letzte) {
            zeilen.push_back(zeile);
            EXPECT_EQ(letzte, fall.bild.höhe - 1);
        };
        pdf.PrintLine("x");
        EXPECT_TRUE(pdf.DrawPicture(10, 20, fall.breite, fall.höhe, fall.bild, fall.grau)) << fall.name;
        const std::string erwartet =
            "S\r" + TextAnfang + "(x)'\rET\rq\r" + fall.kopf + fall.daten + "\rEI\rQ\r";
        EXPECT_EQ(Seiteninhalt(pdf.value(), 1), erwartet) << fall.name;
        EXPECT_EQ(zeilen.size(), static_cast<std::size_t>(fall.bild.höhe)) << fall.name;
    }
}

TEST(PdfBild, UngültigesBildSchreibtNichts) {
    const std::vector<std::uint8_t> zuWenig(11, 0);
    for (const PdfBild& bild : {PdfBild{2, 2, zuWenig}, PdfBild{-1, 2, zuWenig}}) {
        clsPDF pdf(Fest());
        pdf.PrintLine("x");
        EXPECT_FALSE(pdf.DrawPicture(0, 0, 1, 1, bild, false));
        EXPECT_EQ(Seiteninhalt(pdf.value(), 1), "S\r" + TextAnfang + "(x)'\rET\r");
    }
}

TEST(PackRuns, BekannteFormen) {
    const struct {
        std::string roh, gepackt;
    } fälle[] = {
        {"", ""},
        {Bytes({7}), Bytes({0, 7})},
        {Bytes({90, 90, 90, 90}), Bytes({253, 90})},
        {Bytes({5, 5}), Bytes({255, 5})},                       // a pair with no open block is a run
        {Bytes({1, 2, 2, 3}), Bytes({3, 1, 2, 2, 3})},          // a pair joins the open block
        {Bytes({1, 2, 2, 2, 3}), Bytes({0, 1, 254, 2, 0, 3})},  // three are a run
        {std::string(129, 'a'), Bytes({129, 'a', 0, 'a'})},     // a run stops at 128
        {std::string(130, 'a'), Bytes({129, 'a', 255, 'a'})},
    };
    for (const auto& fall : fälle)
        EXPECT_EQ(PackRuns(fall.roh), fall.gepackt) << fall.roh.size() << " Bytes";
}

TEST(PackRuns, RundlaufGibtDieBytesZurückUndBlöckeBleibenInDenGrenzen) {
    std::vector<std::string> eingaben;
    std::string literal;
    for (int i = 0; i < 300; ++i)
        literal.push_back(static_cast<char>(i * 7));
    eingaben.push_back(literal); // a literal block of 128 must close and a new one start
    std::string paare;
    for (int i = 0; i < 200; ++i)
        paare += std::string(2, static_cast<char>(i));
    eingaben.push_back(paare); // pairs fill blocks up to 126, then become runs
    std::uint32_t zustand = 12345;
    for (int länge : {1, 2, 3, 127, 128, 129, 255, 256, 257, 1000, 5000}) {
        std::string zufall;
        for (int i = 0; i < länge; ++i) {
            zustand = zustand * 1103515245u + 12345u;
            // few distinct values, so runs, pairs and literals all occur
            zufall.push_back(static_cast<char>((zustand >> 16) % 3 == 0 ? 'z' : (zustand >> 20) % 4));
        }
        eingaben.push_back(zufall);
    }
    for (const auto& roh : eingaben) {
        const std::string gepackt = PackRuns(roh);
        EXPECT_EQ(RunLengthEntpacken(gepackt + '\x80'), roh) << roh.size();
        EXPECT_LE(gepackt.size(), roh.size() * 128 / 127 + 1);
        for (std::size_t i = 0; i < gepackt.size();) {
            const auto n = static_cast<unsigned char>(gepackt[i]);
            ASSERT_NE(n, 128u) << "no end mark inside the data";
            i += n < 128 ? n + 2u : 2u;
        }
    }
}

// ---- number, colour and text forms --------------------------------------------------------------

TEST(PdfFormat, FormatNumberRundetAufDreiStellen) {
    const struct {
        double wert;
        const char* text;
    } fälle[] = {{12, "12"},          {12.5, "12.5"},         {0.0004, "0"},     {0.0005, "0.001"},
                 {-0.0004, "0"},      {-0.0006, "-0.001"},    {-0.4, "-0.4"},    {0.25, "0.25"},
                 {1.0 / 3, "0.333"},  {2.0 / 3, "0.667"},     {-12.3456, "-12.346"},
                 {841.9999, "842"},   {100000.05, "100000.05"}, {0, "0"},        {-0.0, "0"},
                 {1234567.891, "1234567.891"}, {128.0 / 255, "0.502"}};
    for (const auto& fall : fälle)
        EXPECT_EQ(FormatNumber(fall.wert), fall.text) << fall.wert;
}

TEST(PdfFormat, EinfacheZahlOhneRundungAufTausendstel) {
    const struct {
        float wert;
        const char* text;
    } fälle[] = {{596, "596"}, {842, "842"}, {72.5F, "72.5"}, {841.9F, "841.9"},
                 {0.0004F, "0.0004"}, {1.0F / 3, "0.3333333"}, {-5, "-5"}};
    for (const auto& fall : fälle)
        EXPECT_EQ(EinfacheZahl(fall.wert), fall.text) << fall.wert;
}

TEST(PdfFormat, FormatColorGrauUndRgb) {
    const struct {
        std::int32_t farbe;
        const char* text;
    } fälle[] = {{0, "0 gFC"},
                 {0xFFFFFF, "1 gFC"},
                 {0x808080, "0.502 gFC"},
                 {0x0000FF, "1 0 0 RG"},
                 {0x00FF00, "0 1 0 RG"},
                 {0xFF0000, "0 0 1 RG"},
                 {0x336699, "0.6 0.4 0.2 RG"},
                 {static_cast<std::int32_t>(0xFF000000u), "0 gFC"}}; // the top byte is not a colour
    for (const auto& fall : fälle)
        EXPECT_EQ(FormatColor(fall.farbe), fall.text) << fall.farbe;
}

// ---- settings -----------------------------------------------------------------------------------

TEST(PdfEinstellungen, PapiertabelleUndAusrichtung) {
    const struct {
        std::int32_t format;
        float breite, höhe;
    } fälle[] = {{1, 2384, 3371}, {2, 1685, 2384}, {3, 1192, 1685}, {4, 842, 1192},
                 {5, 596, 842},   {6, 421, 596},   {7, 298, 421},   {8, 210, 298}};
    for (const auto& fall : fälle) {
        clsPDF pdf(Fest());
        pdf.PaperSize(fall.format);
        EXPECT_EQ(pdf.Width(), fall.breite) << fall.format;
        EXPECT_EQ(pdf.Height(), fall.höhe) << fall.format;
        pdf.Orientation(2);
        EXPECT_EQ(pdf.Width(), fall.höhe) << fall.format;
        EXPECT_EQ(pdf.Height(), fall.breite) << fall.format;
    }
    clsPDF pdf(Fest());
    pdf.PaperSize(9); // stored, size untouched
    EXPECT_EQ(pdf.PaperSize(), 9);
    EXPECT_EQ(pdf.Width(), 596);
    pdf.Orientation(1);
    pdf.Height(500); // sets the height field whatever the orientation
    EXPECT_EQ(pdf.PaperSize(), 0);
    EXPECT_EQ(pdf.Width(), 500);
    EXPECT_EQ(pdf.Height(), 596);
    pdf.Color(0x123456); // both colours at once
    EXPECT_EQ(pdf.DrawColor(), 0x123456);
    EXPECT_EQ(pdf.FillColor(), 0x123456);
}

// ---- line printer -------------------------------------------------------------------------------

TEST(PdfZeilendrucker, Zeile73ÖffnetSeite2) {
    clsPDF pdf(Fest());
    for (int i = 1; i <= 72; ++i)
        pdf.PrintLine("Zeile " + std::to_string(i));
    EXPECT_EQ(pdf.PageNumber(), 1);
    EXPECT_EQ(pdf.LineNumber(), 72);
    pdf.PrintLine("Zeile 73");
    EXPECT_EQ(pdf.PageNumber(), 2);
    EXPECT_EQ(pdf.LineNumber(), 1);
    const std::string datei = pdf.value();
    EXPECT_EQ(Seiteninhalt(datei, 2), TextAnfang + "(Zeile 73)'\rET\r");
    EXPECT_NE(Seiteninhalt(datei, 1).find("(Zeile 72)'\rET\r"), std::string::npos);
    XrefPrüfen(datei);
}

TEST(PdfZeilendrucker, NullZeilenJeSeiteBeendetKeineUngeöffneteSeite) {
    clsPDF pdf(Fest());
    pdf.LinesPerPage(0);
    pdf.PrintLine("a");
    pdf.PrintLine("b");
    EXPECT_EQ(pdf.PageNumber(), 1);
    const std::string datei = pdf.value();
    EXPECT_EQ(Seiteninhalt(datei, 1), "S\r" + TextAnfang + "(a)'\r(b)'\rET\r");
    XrefPrüfen(datei);
}

TEST(PdfZeilendrucker, LeereSeitenWegfallenLassenOderSchreiben) {
    clsPDF pdf(Fest());
    pdf.PrintLine("a");
    pdf.NewPage();
    pdf.NewPage(); // no page open: dropped
    EXPECT_EQ(pdf.PageNumber(), 1);
    pdf.DropBlankPages(false);
    pdf.NewPage(14, 3); // now an empty page, already in the new size
    EXPECT_EQ(pdf.PageNumber(), 2);
    EXPECT_EQ(pdf.LinesPerPage(), 3);
    const std::string datei = pdf.value();
    EXPECT_EQ(Seiteninhalt(datei, 2), Zeilen({"BT", "/F1 14 Tf", "80 782 Td", "14 TL", "ET"}));
    EXPECT_NE(datei.find("/Count 2\r"), std::string::npos);
    XrefPrüfen(datei);
}

TEST(PdfZeilendrucker, PrintTextErkenntDenZeilenumbruchEinmal) {
    const struct {
        const char* name;
        std::string text;
        std::vector<std::string> seiten; // the printed lines of each page, joined
    } fälle[] = {
        {"CR LF", "a\r\nb\r\nc", {"(a)'\r(b)'\r(c)'\r"}},
        {"LF mit Rest leer", "a\nb\n", {"(a)'\r(b)'\r()'\r"}},
        {"LF CR", "a\n\rb", {"(a)'\r(b)'\r"}},
        {"CR CR vor LF", "a\r\rb\nc", {"(a)'\r(b\nc)'\r"}},
        {"CR LF gewinnt vor LF", "a\nb\r\nc", {"(a\nb)'\r(c)'\r"}},
        {"nur CR", "a\rb", {"(a)'\r(b)'\r"}},
        {"ohne Umbruch", "eins", {"(eins)'\r"}},
        {"Seitenwechsel", "a\n\f\nb\n\f\n\f\nc", {"(a)'\r", "(b)'\r", "(c)'\r"}},
    };
    for (const auto& fall : fälle) {
        clsPDF pdf(Fest());
        pdf.PrintText(fall.text);
        const std::string datei = pdf.value();
        ASSERT_EQ(pdf.PageNumber(), static_cast<std::int32_t>(fall.seiten.size())) << fall.name;
        for (std::size_t k = 0; k < fall.seiten.size(); ++k) {
            const std::string anfang = k == 0 ? "S\r" : "";
            EXPECT_EQ(Seiteninhalt(datei, static_cast<int>(k + 1)),
                      anfang + TextAnfang + fall.seiten[k] + "ET\r")
                << fall.name << ", Seite " << k + 1;
        }
    }
}

TEST(PdfZeilendrucker, PrintFileLiestUtf8Und1252UndFehlendeDateiGibtLeereZeile) {
    TempOrdner ordner;
    DateiSchreiben(ordner / "utf8.txt", "Grüße\r\nMaß");
    DateiSchreiben(ordner / "ansi.txt", "Gr\xFC\xDF" "e\r\nMa\xDF");
    for (const char* name : {"utf8.txt", "ansi.txt"}) {
        clsPDF pdf(Fest());
        pdf.PrintFile(ordner / name);
        EXPECT_EQ(Seiteninhalt(pdf.value(), 1),
                  "S\r" + TextAnfang + "(Gr\xFC\xDF" "e)'\r(Ma\xDF)'\rET\r")
            << name;
    }
    clsPDF pdf(Fest());
    pdf.PrintFile(ordner / "fehlt.txt");
    EXPECT_EQ(Seiteninhalt(pdf.value(), 1), "S\r" + TextAnfang + "()'\rET\r");
}

TEST(PdfZeilendrucker, ValueZwischendurchÄndertDieSpätereAusgabeNicht) {
    clsPDF einmal(Fest());
    einmal.PrintLine("a");
    einmal.PrintLine("b");
    einmal.PrintLine("c");
    clsPDF zwischendurch(Fest());
    zwischendurch.PrintLine("a");
    const std::string früh = zwischendurch.value();
    zwischendurch.PrintLine("b");
    EXPECT_EQ(zwischendurch.value().substr(0, 400), früh.substr(0, 400));
    zwischendurch.PrintLine("c");
    EXPECT_EQ(zwischendurch.value(), einmal.value());
    EXPECT_EQ(zwischendurch.PageNumber(), 1);
    EXPECT_EQ(zwischendurch.LineNumber(), 3);

    // A drawing waiting at the time of the read goes into the rendered end only.
    clsPDF verloren(Fest());
    verloren.PrintLine("a");
    verloren.DrawLine(0, 0, 1, 1);
    EXPECT_NE(Seiteninhalt(verloren.value(), 1).find("0 842 m 1 841 l\rS\r"), std::string::npos);
    verloren.PrintLine("b");
    EXPECT_EQ(Seiteninhalt(verloren.value(), 1), "S\r" + TextAnfang + "(a)'\r(b)'\rET\r");
}

TEST(PdfZeilendrucker, SavePdfSchreibtValue) {
    TempOrdner ordner;
    clsPDF pdf(Fest());
    pdf.PrintLine("gespeichert");
    DateiSchreiben(ordner / "alt.pdf", std::string(5000, 'x'));
    EXPECT_TRUE(pdf.SavePDF(ordner / "alt.pdf"));
    EXPECT_EQ(DateiLesen(ordner / "alt.pdf"), pdf.value());
    EXPECT_FALSE(pdf.SavePDF(ordner / "fehlt" / "x.pdf"));
}

// ---- independent judges -------------------------------------------------------------------------

int Ausführen(const std::string& befehl) {
    const int status = test::Ausführen(befehl).status;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A page with what the writer can draw: frame, lines, circle, colours, text in 1252, turned text,
// an RGB picture with RunLength, and a second page of the line printer.
std::string Musterdokument() {
    clsPDF pdf(Fest());
    pdf.PageStarted = [&] {
        pdf.DrawWidth(1);
        pdf.DrawBox(56.7F, 31.2F, 510.2F, 779.5F, 0);
    };
    pdf.FontSize(11);
    pdf.PrintLine("Flurstücks- und Eigentümernachweis");
    pdf.PrintLine("Tatsächliche Nutzung: Straße (öffentlich) \\ Weg");
    pdf.DrawColor(0x0000C0);
    pdf.DrawLine(80, 120, 500, 120);
    pdf.DrawCircle(300, 300, 60, 0);
    pdf.FillColor(0x00A000);
    pdf.DrawBox(100, 400, 120, 60, -1);
    pdf.FillColor(0);
    pdf.FontSize(14);
    pdf.DrawText(100, 500, "Gedreht um 30°", std::numbers::pi_v<float> / 6);
    std::vector<std::uint8_t> px;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 96; ++x)
            px.insert(px.end(), {static_cast<std::uint8_t>(x < 48 ? 220 : 30),
                                 static_cast<std::uint8_t>(y < 32 ? 40 : 200), 90});
    pdf.DrawPicture(350, 400, 192, 128, PdfBild{96, 64, px}, false);
    pdf.NewPage(10);
    pdf.PrintLine("Seite zwei: Müller, Jörg");
    return pdf.value();
}

TEST(PdfPrüfer, QpdfFindetKeinenFehler) {
    if (!test::ImSuchpfad("qpdf"))
        GTEST_SKIP() << "qpdf fehlt (Paket qpdf): Prüfung übersprungen";
    TempOrdner ordner;
    const std::string datei = Musterdokument();
    XrefPrüfen(datei);
    DateiSchreiben(ordner / "muster.pdf", datei);
    const int code = Ausführen("qpdf --check " + (ordner / "muster.pdf").string() + " > " +
                               (ordner / "qpdf.txt").string() + " 2>&1");
    const std::string bericht = DateiLesen(ordner / "qpdf.txt");
    // Exit code 3 is "warnings only". The single-CR line ends cause the one warning qpdf gives,
    // once a page: "stream keyword followed by carriage return only" (the format wants CR LF or LF
    // there). qpdf reads the 19-byte xref entries without complaint, and it does not judge
    // operators, so "GFC"/"gfc" and "/CS /gDP" pass. Any other warning or an error fails.
    EXPECT_EQ(code, 3) << bericht;
    EXPECT_EQ(bericht.find("ERROR"), std::string::npos) << bericht;
    std::size_t warnungen = 0;
    for (std::size_t pos = bericht.find("WARNING"); pos != std::string::npos;
         pos = bericht.find("WARNING", pos + 1), ++warnungen) {
        const std::string zeile = bericht.substr(pos, bericht.find('\n', pos) - pos);
        EXPECT_NE(zeile.find("stream keyword followed by carriage return only"), std::string::npos)
            << zeile;
    }
    EXPECT_EQ(warnungen, 2u) << "one per page\n" << bericht;
}

TEST(PdfPrüfer, PdftotextGibtDieDeutschenTexteZurück) {
    if (!test::ImSuchpfad("pdftotext"))
        GTEST_SKIP() << "pdftotext fehlt (Paket poppler-utils): Prüfung übersprungen";
    TempOrdner ordner;
    DateiSchreiben(ordner / "muster.pdf", Musterdokument());
    ASSERT_EQ(Ausführen("pdftotext -enc UTF-8 " + (ordner / "muster.pdf").string() + " " +
                        (ordner / "muster.txt").string() + " 2>/dev/null"),
              0);
    const std::string text = DateiLesen(ordner / "muster.txt");
    for (const char* erwartet :
         {"Flurstücks- und Eigentümernachweis", "Tatsächliche Nutzung: Straße (öffentlich) \\ Weg",
          "Seite zwei: Müller, Jörg"})
        EXPECT_NE(text.find(erwartet), std::string::npos) << erwartet << "\n" << text;
    // The turned text comes back in pieces (pdftotext orders them by position); its one
    // character beyond ASCII must still be there.
    EXPECT_NE(text.find("°"), std::string::npos) << text;
    EXPECT_NE(text.find('\f'), std::string::npos) << "two pages";
}

TEST(PdfPrüfer, PdftoppmZeichnetDieSeiten) {
    if (!test::ImSuchpfad("pdftoppm"))
        GTEST_SKIP() << "pdftoppm fehlt (Paket poppler-utils): Prüfung übersprungen";
    TempOrdner ordner;
    DateiSchreiben(ordner / "muster.pdf", Musterdokument());
    ASSERT_EQ(Ausführen("pdftoppm -r 50 -png " + (ordner / "muster.pdf").string() + " " +
                        (ordner / "seite").string()),
              0);
    for (const char* seite : {"seite-1.png", "seite-2.png"})
        EXPECT_GT(DateiLesen(ordner / seite).size(), 1000u) << seite;
    // FLURIX_PDF_MUSTER=<folder> keeps the sample file for a look at it.
    if (const char* ziel = std::getenv("FLURIX_PDF_MUSTER"))
        DateiSchreiben(std::filesystem::path(ziel) / "muster.pdf", Musterdokument());
}

} // namespace
