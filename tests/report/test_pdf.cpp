// The PDF writer clsPDF: whole files byte for byte, the content streams of small documents against
// one golden transcript, the number, colour and run-length forms, and qpdf and poppler on a sample.

#include "report/cls_pdf.hpp"
#include "report/pdf_bild.hpp"
#include "report/pdf_format.hpp"

#include "pdf_pruefung.hpp"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

namespace flurix::report {
namespace {

using test::DateiLesen;
using test::DateiSchreiben;
using test::Seiteninhalt;
using test::TempOrdner;

PdfHerkunft Fest() { return test::Fest(3, 5, 7, 8, 9); }
constexpr float Pi = std::numbers::pi_v<float>;

// Bytes as one readable text: CR ends a line, LF stands as "\n", other control bytes and all
// beyond ASCII as "\xNN".
std::string Lesbar(std::string_view bytes) {
    static const char ziffern[] = "0123456789ABCDEF";
    std::string aus;
    for (const char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (c == '\r')
            aus += '\n';
        else if (c == '\n')
            aus += "\\n";
        else if (b < 0x20 || b >= 0x7F)
            aus += std::string("\\x") + ziffern[b >> 4] + ziffern[b & 15];
        else
            aus += c;
    }
    return aus;
}

std::string Bytes(std::initializer_list<int> werte) {
    std::string s;
    for (const int w : werte)
        s.push_back(static_cast<char>(w));
    return s;
}

TEST(PdfDatei, GanzeDateienByteGenau) {
    // Without a line: valid with no page, and a box waiting for a page that never comes is not in
    // the file. With one line: the lone "S" opens the first stream of a new object.
    const auto daten = test::Testdaten() / "report";
    clsPDF leer(Fest());
    leer.DrawBox(10, 10, 20, 20, 0);
    EXPECT_EQ(test::GoldenVergleich(leer.value(), daten / "pdf_ohne_seite.pdf"), "");
    EXPECT_EQ(leer.PageNumber(), 0);
    clsPDF pdf(Fest());
    pdf.PrintLine("Hallo");
    for (int lesen = 0; lesen < 2; ++lesen) // a second read gives the same bytes
        EXPECT_EQ(test::GoldenVergleich(pdf.value(), daten / "pdf_eine_zeile_hallo.pdf"), "");
    // SavePDF writes value() in place of an older file, and fails where no folder is.
    TempOrdner ordner;
    DateiSchreiben(ordner / "alt.pdf", std::string(5000, 'x'));
    EXPECT_TRUE(pdf.SavePDF(ordner / "alt.pdf"));
    EXPECT_EQ(DateiLesen(ordner / "alt.pdf"), pdf.value());
    EXPECT_FALSE(pdf.SavePDF(ordner / "fehlt" / "x.pdf"));
}

TEST(PdfDatei, ZeitstempelUndProducerVonDerUhr) {
    PdfHerkunft herkunft = Fest();
    herkunft.producer = "Prüfer (ü)";
    const std::string datei = clsPDF(herkunft).value();
    // 1252 and not escaped: the producer stands as it is.
    EXPECT_NE(datei.find("\r/Producer (Pr\xFC" "fer (\xFC))\r"), std::string::npos);
    EXPECT_NE(datei.find("\r/CreationDate (D:20240305070809)\r"), std::string::npos);
    const std::string echt = clsPDF().value(); // the application title and the local clock
    const auto pos = echt.find("/CreationDate (D:");
    ASSERT_NE(pos, std::string::npos);
    EXPECT_EQ(echt.compare(pos + 17 + 14, 2, ")\r"), 0);
    EXPECT_NE(echt.find("/Producer (Flurix V"), std::string::npos);
}

// Each document is drawn by its steps (which may note what the writer answered); the transcript
// holds the notes, every page's content stream and the page tree, the xref table checked.
TEST(PdfInhalt, DokumenteWieImProtokoll) {
    TempOrdner ordner;
    DateiSchreiben(ordner / "utf8.txt", "Grüße\r\nMaß");
    DateiSchreiben(ordner / "ansi.txt", "Gr\xFC\xDF" "e\r\nMa\xDF");
    std::string notiz;
    const auto weiß = std::vector<std::uint8_t>(20 * 10 * 3, 255);
    const std::vector<std::uint8_t> rgb3 = {255, 0, 0, 0, 255, 0, 0, 0, 255};
    const std::vector<std::uint8_t> grau2x2(12, 90), zuWenig(11, 0);
    const auto Bild = [&](clsPDF& p, float b, float h, PdfBild bild, bool grau) {
        notiz += "Fortschritt:";
        p.PictureProgress = [&](std::int32_t z, std::int32_t letzte) {
            notiz += " " + std::to_string(z) + "/" + std::to_string(letzte);
        };
        p.PrintLine("x");
        notiz += p.DrawPicture(10, 20, b, h, bild, grau) ? ", gezeichnet" : ", nicht gezeichnet";
    };
    const auto Stand = [&](clsPDF& p) {
        notiz += "Seite " + std::to_string(p.PageNumber()) + " Zeile " +
                 std::to_string(p.LineNumber()) + "; ";
    };
    const std::pair<const char*, std::function<void(clsPDF&)>> fälle[] = {
        {"zweites Clear ohne wartenden Operator schreibt kein S",
         [](clsPDF& p) { p.PrintLine("x"); p.Clear(12, 0); p.PrintLine("y"); }},
        {"Linie", [](clsPDF& p) { p.DrawLine(10, 20, 110, 20); p.PrintLine("x"); }},
        {"zwei Linien teilen ein S",
         [](clsPDF& p) { p.DrawLine(10, 20, 110, 20); p.DrawLine(10, 10, 110, 10.25F); p.PrintLine("x"); }},
        {"Rechteck gestrichen, dann gefüllt", [](clsPDF& p) {
             p.DrawBox(20, 30, 100, 50, 0); p.DrawBox(20, 30, 100, 50, 0); p.DrawBox(0, 0, 596, 842, -1);
             p.PrintLine("x");
         }},
        {"Farbwechsel zwischen zwei Kästen schließt den Operator ab", [](clsPDF& p) {
             p.DrawBox(20, 30, 100, 50, 0); p.DrawColor(0x0000FF); p.DrawBox(20, 30, 100, 50, 0);
             p.PrintLine("x");
         }},
        {"Grau als Strich GFC, als Füllung gfc, Breite", [](clsPDF& p) {
             p.DrawColor(0x808080); p.FillColor(0x336699); p.DrawWidth(0.5F); p.DrawBox(1, 2, 3, 4, 1);
             p.PrintLine("x");
         }},
        {"Text mit Klammern und Backslash", [](clsPDF& p) { p.DrawText(50, 100, "a(b)\\c"); p.PrintLine("x"); }},
        {"Umlaute in 1252, Fremdes als ?",
         [](clsPDF& p) { p.DrawText(0.0004F, 0, "Grüße € Łódź"); p.PrintLine("x"); }},
        {"Text um 30 Grad gedreht", [](clsPDF& p) { p.DrawText(100, 200, "Nord", Pi / 6); p.PrintLine("x"); }},
        {"Text um -90 Grad in Größe 8", [](clsPDF& p) {
             p.FontSize(8); p.DrawText(10, 20, "Süd", -Pi / 2); p.FontSize(10); p.PrintLine("x");
         }},
        {"Sinus 0 wird -0", [](clsPDF& p) { p.DrawText(1, 2, "u", Pi); p.PrintLine("x"); }},
        {"Kreis aus vier Kurven", [](clsPDF& p) { p.DrawCircle(100, 100, 10, 0); p.PrintLine("x"); }},
        {"MoveTo zum aktuellen Punkt schreibt nichts und schließt nichts ab", [](clsPDF& p) {
             p.DrawLine(10, 20, 30, 40); p.MoveTo(30, 40); p.DrawLineTo(50, 60); p.MoveTo(5, 5);
             p.PrintLine("x");
         }},
        {"Kurve und Fläche; FillMode 2, dann ein Modus, den es nicht gibt", [](clsPDF& p) {
             p.MoveTo(0, 0); p.DrawCurveTo(1, 2, 3, 4, 5, 6); p.DrawLineTo(0, 0); p.DrawShape(-1);
             p.FillMode(2); p.DrawShape(7); p.PrintLine("x");
         }},
        {"Ereignisse zeichnen unter und über dem Text; die Linie bei offener Seite darüber",
         [&](clsPDF& p) {
             p.PageStarted = [&] { notiz += "begonnen; "; p.DrawBox(0, 0, 10, 10, -1); };
             p.PageFinished = [&] { notiz += "beendet; "; p.DrawText(0, 0, "Ende"); };
             p.PrintLine("a"); p.DrawLine(0, 0, 1, 1); p.NewPage(); p.PrintLine("b");
         }},
        {"Querformat und gebrochene Ränder in einfacher Wandlung", [](clsPDF& p) {
             p.Orientation(1); p.LeftMargin(72.5F); p.TopMargin(0.1F);
             p.DrawLine(0, 0, 0, 96); p.PrintLine("q"); // H is the width field (596) in landscape
         }},
        {"freie Seitengröße", [&](clsPDF& p) {
             p.Width(300.25F); p.Height(400.5F); notiz += "PaperSize " + std::to_string(p.PaperSize());
         }},
        {"Bild RGB weiß, gepackt: 600 Bytes in fünf Läufen",
         [&](clsPDF& p) { Bild(p, 100, 50, {20, 10, weiß}, false); }},
        {"Bild grau weiß, gepackt: 200 Bytes", [&](clsPDF& p) { Bild(p, 100, 50, {20, 10, weiß}, true); }},
        {"Bild grau aus Rot, Grün, Blau, roh", [&](clsPDF& p) { Bild(p, 30, 10, {3, 1, rgb3}, true); }},
        {"Bild 2x2 gleich grau: gepackt zu kurz, roh", [&](clsPDF& p) { Bild(p, 2, 2, {2, 2, grau2x2}, true); }},
        {"Bild mit negativer Breite und Höhe gespiegelt",
         [&](clsPDF& p) { Bild(p, -30, -10, {3, 1, rgb3}, false); }},
        {"Bild mit zu wenig Bytes", [&](clsPDF& p) { Bild(p, 1, 1, {2, 2, zuWenig}, false); }},
        {"Bild mit negativer Breite in Pixeln", [&](clsPDF& p) { Bild(p, 1, 1, {-1, 2, zuWenig}, false); }},
        {"Zeile 73 öffnet Seite 2", [&](clsPDF& p) {
             for (int i = 1; i <= 72; ++i)
                 p.PrintLine("Zeile " + std::to_string(i));
             Stand(p); p.PrintLine("Zeile 73"); Stand(p);
         }},
        {"null Zeilen je Seite beendet keine ungeöffnete Seite",
         [&](clsPDF& p) { p.LinesPerPage(0); p.PrintLine("a"); p.PrintLine("b"); Stand(p); }},
        {"leere Seiten wegfallen lassen, dann schreiben", [&](clsPDF& p) {
             p.PrintLine("a"); p.NewPage(); p.NewPage(); Stand(p); // no page open: dropped
             p.DropBlankPages(false); p.NewPage(14, 3); Stand(p); // now empty, in the new size
             notiz += "LinesPerPage " + std::to_string(p.LinesPerPage());
         }},
        {"eine beim Lesen wartende Zeichnung steht nur im damaligen Ende", [&](clsPDF& p) {
             p.PrintLine("a"); p.DrawLine(0, 0, 1, 1);
             notiz += Lesbar(Seiteninhalt(p.value(), 1));
             p.PrintLine("b");
         }},
        {"PrintText CR LF", [](clsPDF& p) { p.PrintText("a\r\nb\r\nc"); }},
        {"PrintText LF mit leerem Rest", [](clsPDF& p) { p.PrintText("a\nb\n"); }},
        {"PrintText LF CR", [](clsPDF& p) { p.PrintText("a\n\rb"); }},
        {"PrintText CR CR vor LF", [](clsPDF& p) { p.PrintText("a\r\rb\nc"); }},
        {"PrintText: CR LF gewinnt vor LF", [](clsPDF& p) { p.PrintText("a\nb\r\nc"); }},
        {"PrintText nur CR", [](clsPDF& p) { p.PrintText("a\rb"); }},
        {"PrintText ohne Umbruch", [](clsPDF& p) { p.PrintText("eins"); }},
        {"PrintText Seitenwechsel", [](clsPDF& p) { p.PrintText("a\n\f\nb\n\f\n\f\nc"); }},
        {"PrintFile UTF-8", [&](clsPDF& p) { p.PrintFile(ordner / "utf8.txt"); }},
        {"PrintFile Windows-1252", [&](clsPDF& p) { p.PrintFile(ordner / "ansi.txt"); }},
        {"PrintFile ohne Datei gibt eine leere Zeile", [&](clsPDF& p) { p.PrintFile(ordner / "fehlt.txt"); }},
    };
    std::string protokoll;
    for (const auto& [name, zeichnen] : fälle) {
        clsPDF pdf(Fest());
        notiz.clear();
        zeichnen(pdf);
        const std::string datei = pdf.value();
        protokoll += std::string("%% ") + name + "\n" + (notiz.empty() ? "" : notiz + "\n");
        const auto seiten = test::Seiten(datei);
        EXPECT_EQ(seiten.size(), static_cast<std::size_t>(pdf.PageNumber())) << name;
        for (std::size_t k = 0; k < seiten.size(); ++k)
            protokoll += "-- Seite " + std::to_string(k + 1) + "\n" + Lesbar(seiten[k]);
        const auto baum = datei.find("3 0 obj\r<<\r/Type /Pages\r/Count ");
        ASSERT_NE(baum, std::string::npos) << name;
        std::string knoten = datei.substr(baum + 24, datei.find("\r>>", baum) - baum - 24);
        std::replace(knoten.begin(), knoten.end(), '\r', ' ');
        protokoll += "-- Seitenbaum: " + knoten + "\n";
    }
    EXPECT_EQ(test::GoldenVergleich(protokoll, test::Testdaten() / "report" / "pdf_protokoll.txt"), "");
}

TEST(PdfInhalt, ValueZwischendurchÄndertDieSpätereAusgabeNicht) {
    clsPDF einmal(Fest()), zwischendurch(Fest());
    for (const char* z : {"a", "b", "c"})
        einmal.PrintLine(z);
    zwischendurch.PrintLine("a");
    const std::string früh = zwischendurch.value();
    zwischendurch.PrintLine("b");
    EXPECT_EQ(zwischendurch.value().substr(0, 400), früh.substr(0, 400));
    zwischendurch.PrintLine("c");
    EXPECT_EQ(zwischendurch.value(), einmal.value());
    EXPECT_EQ(zwischendurch.LineNumber(), 3);
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

TEST(PackRuns, BekannteFormen) {
    const std::pair<std::string, std::string> fälle[] = {
        {"", ""}, {Bytes({7}), Bytes({0, 7})}, {Bytes({90, 90, 90, 90}), Bytes({253, 90})},
        {Bytes({5, 5}), Bytes({255, 5})},                      // a pair with no open block is a run
        {Bytes({1, 2, 2, 3}), Bytes({3, 1, 2, 2, 3})},         // a pair joins the open block
        {Bytes({1, 2, 2, 2, 3}), Bytes({0, 1, 254, 2, 0, 3})}, // three are a run
        {std::string(129, 'a'), Bytes({129, 'a', 0, 'a'})},    // a run stops at 128
        {std::string(130, 'a'), Bytes({129, 'a', 255, 'a'})},
    };
    for (const auto& [roh, gepackt] : fälle)
        EXPECT_EQ(PackRuns(roh), gepackt) << roh.size() << " Bytes";
}

TEST(PackRuns, RundlaufGibtDieBytesZurückUndBlöckeBleibenInDenGrenzen) {
    std::vector<std::string> eingaben(2);
    for (int i = 0; i < 300; ++i) // a literal block of 128 must close and a new one start
        eingaben[0].push_back(static_cast<char>(i * 7));
    for (int i = 0; i < 200; ++i) // pairs fill blocks up to 126, then become runs
        eingaben[1] += std::string(2, static_cast<char>(i));
    std::uint32_t zustand = 12345;
    for (int länge : {1, 2, 3, 127, 128, 129, 255, 256, 257, 1000, 5000}) {
        std::string zufall; // few distinct values, so runs, pairs and literals all occur
        for (int i = 0; i < länge; ++i) {
            zustand = zustand * 1103515245u + 12345u;
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

TEST(PdfFormat, ZahlenUndFarben) {
    const std::pair<double, const char*> zahlen[] = {
        {12, "12"}, {12.5, "12.5"}, {0.0004, "0"}, {0.0005, "0.001"}, {-0.0004, "0"}, {-0.0006, "-0.001"},
        {-0.4, "-0.4"}, {0.25, "0.25"}, {1.0 / 3, "0.333"}, {2.0 / 3, "0.667"}, {-12.3456, "-12.346"},
        {841.9999, "842"}, {100000.05, "100000.05"}, {0, "0"}, {-0.0, "0"}, {1234567.891, "1234567.891"},
        {128.0 / 255, "0.502"}};
    for (const auto& [wert, text] : zahlen)
        EXPECT_EQ(FormatNumber(wert), text) << wert;
    // No rounding to thousandths in the plain form.
    const std::pair<float, const char*> einfach[] = {{596, "596"}, {842, "842"}, {72.5F, "72.5"},
        {841.9F, "841.9"}, {0.0004F, "0.0004"}, {1.0F / 3, "0.3333333"}, {-5, "-5"}};
    for (const auto& [wert, text] : einfach)
        EXPECT_EQ(EinfacheZahl(wert), text) << wert;
    const std::pair<std::int32_t, const char*> farben[] = {{0, "0 gFC"}, {0xFFFFFF, "1 gFC"},
        {0x808080, "0.502 gFC"}, {0x0000FF, "1 0 0 RG"}, {0x00FF00, "0 1 0 RG"}, {0xFF0000, "0 0 1 RG"},
        {0x336699, "0.6 0.4 0.2 RG"},
        {static_cast<std::int32_t>(0xFF000000u), "0 gFC"}}; // the top byte is not a colour
    for (const auto& [farbe, text] : farben)
        EXPECT_EQ(FormatColor(farbe), text) << farbe;
}

TEST(PdfEinstellungen, PapiertabelleUndAusrichtung) {
    const std::pair<float, float> größen[] = {{2384, 3371}, {1685, 2384}, {1192, 1685}, {842, 1192},
                                              {596, 842},   {421, 596},   {298, 421},   {210, 298}};
    for (int format = 1; format <= 8; ++format) {
        clsPDF pdf(Fest());
        pdf.PaperSize(format);
        const auto [breite, höhe] = größen[format - 1];
        EXPECT_EQ(std::pair(pdf.Width(), pdf.Height()), std::pair(breite, höhe)) << format;
        pdf.Orientation(2);
        EXPECT_EQ(std::pair(pdf.Width(), pdf.Height()), std::pair(höhe, breite)) << format;
    }
    clsPDF pdf(Fest());
    pdf.PaperSize(9); // no such size: the size stays
    pdf.Orientation(1);
    pdf.Height(500); // sets the height field whatever the orientation
    EXPECT_EQ(std::pair(pdf.Width(), pdf.Height()), std::pair(500.0F, 596.0F));
}

// ---- independent judges -------------------------------------------------------------------------

// A page with what the writer can draw: frame, lines, circle, colours, text in 1252, turned text,
// an RGB picture with RunLength, and a second page of the line printer. FLURIX_PDF_MUSTER=<folder>
// keeps the file for a look at it.
std::filesystem::path Musterdokument(const TempOrdner& ordner) {
    clsPDF pdf(Fest());
    pdf.PageStarted = [&] { pdf.DrawWidth(1); pdf.DrawBox(56.7F, 31.2F, 510.2F, 779.5F, 0); };
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
    pdf.DrawText(100, 500, "Gedreht um 30°", Pi / 6);
    std::vector<std::uint8_t> px;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 96; ++x)
            px.insert(px.end(), {static_cast<std::uint8_t>(x < 48 ? 220 : 30),
                                 static_cast<std::uint8_t>(y < 32 ? 40 : 200), 90});
    pdf.DrawPicture(350, 400, 192, 128, PdfBild{96, 64, px}, false);
    pdf.NewPage(10);
    pdf.PrintLine("Seite zwei: Müller, Jörg");
    const std::string datei = pdf.value();
    test::XrefPrüfen(datei);
    DateiSchreiben(ordner / "muster.pdf", datei);
    if (const char* ziel = std::getenv("FLURIX_PDF_MUSTER"))
        DateiSchreiben(std::filesystem::path(ziel) / "muster.pdf", datei);
    return ordner / "muster.pdf";
}

TEST(PdfPrüfer, QpdfFindetKeinenFehler) {
    if (!test::ImSuchpfad("qpdf"))
        GTEST_SKIP() << "qpdf fehlt (Paket qpdf): Prüfung übersprungen";
    TempOrdner ordner;
    test::QpdfNurZeilenendwarnungen(Musterdokument(ordner), 2);
}

TEST(PdfPrüfer, PopplerLiestDieTexteUndZeichnetDieSeiten) {
    if (!test::ImSuchpfad("pdftotext") || !test::ImSuchpfad("pdftoppm"))
        GTEST_SKIP() << "pdftotext/pdftoppm fehlen (Paket poppler-utils): Prüfung übersprungen";
    TempOrdner ordner;
    const auto muster = Musterdokument(ordner);
    const std::string text = test::Pdftotext(muster, false);
    for (const char* erwartet : {"Flurstücks- und Eigentümernachweis", "Seite zwei: Müller, Jörg",
                                 "Tatsächliche Nutzung: Straße (öffentlich) \\ Weg"})
        EXPECT_NE(text.find(erwartet), std::string::npos) << erwartet << "\n" << text;
    // The turned text comes back in pieces (ordered by position); its one character beyond ASCII
    // must still be there.
    EXPECT_NE(text.find("°"), std::string::npos) << text;
    EXPECT_NE(text.find('\f'), std::string::npos) << "two pages";
    ASSERT_EQ(test::Ausführen("pdftoppm -r 50 -png " + test::Wort(muster) + " " +
                              test::Wort(ordner / "seite") + " 2>/dev/null").status, 0);
    for (const char* seite : {"seite-1.png", "seite-2.png"})
        EXPECT_GT(DateiLesen(ordner / seite).size(), 1000u) << seite;
}

} // namespace
} // namespace flurix::report
