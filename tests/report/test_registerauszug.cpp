// The register extract: its text forms, the owners of a parcel, the pages against golden files,
// the page-full rule with continuation pages, Eigentümerzusatz, the message of a page that cannot
// be finished, and the judgement of qpdf and pdftotext.

#include "report/registerauszug.hpp"

#include "report/pdf_format.hpp"

#include "core/cp1252.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/oberflaeche_skript.hpp"

#include "pdf_pruefung.hpp"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace flurix::report {
namespace {

using test::TempOrdner;

// Two parcels of the same Gemarkung: 120101-001-12/3 with two owners (notes, predecessors,
// Eigentümerzusatz "Erbengemeinschaft;"), 120101-002-7 with fourteen owners on two land-register
// sheets, and 120101-002-8 with one owner behind them.
constexpr std::size_t ZweiEigentümer = 0;     // first row of parcel 12/3
constexpr std::size_t VierzehnEigentümer = 2; // first row of parcel 7

Kataster Laden() {
    Kataster kataster;
    KatasterLaden(kataster, test::Testdaten() / "report" / "flurstuecke_zwei_und_vierzehn_eigentuemer.tsv");
    return kataster;
}

// A table from a header of keys and rows of cells.
Kataster Tabelle(const std::vector<std::string>& schlüssel,
                 const std::vector<std::vector<std::string_view>>& zeilen) {
    Kataster kataster;
    for (const auto& s : schlüssel)
        kataster.SpalteHinzufügen({s, s});
    for (const auto& z : zeilen)
        kataster.ZeileHinzufügen(z);
    return kataster;
}

// The "x y" of the Td before the text that shows `text` (UTF-8) on a page; "" when it is not there.
std::string Stelle(const std::string& seite, std::string_view text) {
    const auto pos = seite.find("\r(" + EscapeText(Utf8NachCp1252(text)) + ")'\r");
    if (pos == std::string::npos)
        return {};
    const auto td = seite.rfind(" Td\r", pos);
    const auto anfang = seite.rfind('\r', td - 1) + 1;
    return seite.substr(anfang, td - anfang);
}

struct Ergebnis {
    Auszug auszug;
    std::vector<std::string> seiten;
    std::vector<std::string> meldungen;
};

Ergebnis Erstellen(Registerauszug& bericht, const Kataster& kataster, std::size_t zeile,
                   const TempOrdner& ordner) {
    SkriptOberfläche ui;
    auto auszug = bericht.CreateRegisterExtract(kataster, zeile, ordner.pfad(), ui);
    EXPECT_TRUE(auszug.has_value());
    if (!auszug)
        return {};
    EXPECT_TRUE(auszug->gespeichert);
    EXPECT_EQ(test::DateiLesen(auszug->datei), auszug->inhalt);
    auto seiten = test::Seiten(auszug->inhalt);
    EXPECT_EQ(seiten.size(), static_cast<std::size_t>(auszug->seiten));
    return {std::move(*auszug), std::move(seiten), ui.Meldungen()};
}

Ergebnis Erstellen(const Kataster& kataster, std::size_t zeile, const TempOrdner& ordner) {
    Registerauszug bericht(test::Fest(1, 31, 9));
    return Erstellen(bericht, kataster, zeile, ordner);
}

TEST(RegisterauszugText, FlächenNummernLageListenDatum) {
    const std::pair<const char*, const char*> flächen[] = {
        {"1234", "0000001234"}, {" 0000512 ", "0000000512"}, {"12.5", "0000000013"}, {"-5", "-0000000005"},
        {"", ""}, {"   ", ""}, {"12345678901", "12345678901"}, {"ca. 300", "ca. 300"}};
    for (const auto& [zelle, erwartet] : flächen)
        EXPECT_EQ(Flächenformat(zelle), erwartet) << '"' << zelle << '"';
    const std::pair<const char*, const char*> nummern[] = {{"00010002", "1.0.2"}, {"00121305", "12.13.5"},
        {"", "0.0.0"}, {"0001002", "1.0.2"}, {"0002001", "2.0.1"}, {"12", "12.0.0"}};
    for (const auto& [nummer, erwartet] : nummern)
        EXPECT_EQ(Eigentümernummer(nummer), erwartet) << nummer;
    // The location up to 65 characters whole (the ü two bytes), else cut with "...".
    const std::string ü65 = std::string(5, 'x') + std::string(59, 'y') + "ü";
    EXPECT_EQ(Lagetext("", ü65), ü65);
    EXPECT_EQ(Lagetext("  01234", "Hauptstraße 7  "), "01234 Hauptstraße 7");
    EXPECT_EQ(Lagetext("ä" + std::string(65, 'z'), ""), "ä" + std::string(59, 'z') + "...");
    EXPECT_EQ(Lagetext("", ""), "");
    EXPECT_TRUE(Listenteile("").empty()) << "an empty list cell has no piece";
    EXPECT_EQ(Listenteile("a; b;").size(), 3u);
    EXPECT_EQ(Trimmen("  a b \t "), "a b \t");
    std::tm zeit{};
    zeit.tm_year = 124; zeit.tm_mon = 2; zeit.tm_mday = 5;
    EXPECT_EQ(Kurzdatum(zeit), "05.03.2024");
}

TEST(RegisterauszugText, DateinameOhneSchrägstrichUndOhneLeerzeichen) {
    const std::vector<std::vector<std::string_view>> fälle = {{"120101", "001", "12/3", "ALB-120101-001-123.pdf"},
        {"12 01 01", " 1", "00042/000 ", "ALB-120101-1-00042000.pdf"}, {"", "", "", "ALB---.pdf"}};
    for (const auto& f : fälle)
        EXPECT_EQ(AuszugDateiname(Tabelle({"Gemarkungsschlüssel", "Flur", "Flurstück"}, {f}), 0), f[3]);
}

TEST(RegisterauszugEigentümer, ZeilenDesFlurstücksInTabellenreihenfolge) {
    const Kataster k = Laden();
    EXPECT_EQ(ParcelRows(k, 1), (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(ParcelRows(k, 9).size(), 14u);
    EXPECT_EQ(ParcelRows(k, 9).front(), VierzehnEigentümer);
    EXPECT_EQ(ParcelRows(k, 16), (std::vector<std::size_t>{16}));
    // Without Flurstückskennzeichen: Gemarkung, Flur and Flurstück together; the same number in
    // another Flur is another parcel, and rows of the parcel need not stand together.
    const Kataster ohne = Tabelle({"Gemarkungsschlüssel", "Flur", "Flurstück", "Name"},
        {{"1", "001", "5", "a"}, {"1", "002", "5", "b"}, {"1", "001", "6", "c"}, {"1", "001", "5", "d"}});
    EXPECT_EQ(ParcelRows(ohne, 3), (std::vector<std::size_t>{0, 3}));
    EXPECT_EQ(ParcelRows(ohne, 1), (std::vector<std::size_t>{1}));
}

// The content streams as text, page by page (UTF-8, one operator a line), against a golden file.
std::string SeitenWieErwartet(const std::vector<std::string>& seiten, std::string_view golden) {
    std::string text;
    for (std::size_t p = 0; p < seiten.size(); ++p)
        text += "%% Seite " + std::to_string(p + 1) + "\n" + Cp1252NachUtf8(seiten[p]);
    std::replace(text.begin(), text.end(), '\r', '\n');
    return test::GoldenVergleich(text, test::Testdaten() / "report" / golden);
}

// Two owners: "S" of a new writer, "f" of FillMode -1, then the four boxes in millimetres (20/11
// 93×23, 113/11 87×23, 20/34 180×32, 20/66 180×220), the footer in 6 points at 20/289 mm, the title
// in 11 points 5 points right of the left edge; line k of a block at 11 mm + 13 k + 4 points from
// the top; texts escaped; one stand for both owners. Fourteen owners (from a row in the middle of
// the parcel): 4 on the first page, 7 on the second, 3 on the third, each block within the main
// box; continuation pages without parcel data, the stand line with its blank first, Straße above
// Ort; the sheet changes at owner 11 with a stand line of its own; Eigentümerzusatz on the last page.
TEST(RegisterauszugSeite, SeitenByteGenau) {
    const std::tuple<std::size_t, const char*, const char*, std::size_t> fälle[] = {
        {ZweiEigentümer, "auszug_zwei_eigentuemer.txt", "ALB-120101-001-123.pdf", 1},
        {9, "auszug_vierzehn_eigentuemer.txt", "ALB-120101-002-7.pdf", 3}};
    for (const auto& [zeile, golden, datei, seiten] : fälle) {
        TempOrdner ordner;
        const auto e = Erstellen(Laden(), zeile, ordner);
        EXPECT_EQ(e.seiten.size(), seiten);
        EXPECT_EQ(SeitenWieErwartet(e.seiten, golden), "");
        EXPECT_TRUE(e.meldungen.empty());
        EXPECT_EQ(e.auszug.datei, ordner / datei);
    }
}

TEST(RegisterauszugSeite, EigentümerzusatzErsteSeiteMitFUndLetztemJ0) {
    TempOrdner ordner;
    const Kataster k = Laden();
    const auto Höhe = [](const Ergebnis& e) {
        const std::string stelle = Stelle(e.seiten.at(0), "Erbengemeinschaft");
        return stelle.empty() ? std::nan("") : std::stod(stelle.substr(stelle.find(' ') + 1));
    };
    // Two owners: R ends at 12, J at 2 (a row follows), F at 33: line 60, below the main box.
    Registerauszug bericht(test::Fest(1, 31, 9));
    EXPECT_NEAR(Höhe(Erstellen(bericht, k, ZweiEigentümer, ordner)), 842.0 - 35.181 - 13 * 60, 0.0015);
    // The third page of the fourteen owners began at J0 = 11; the same window's next extract of
    // the first parcel places the line 11 lines higher.
    Erstellen(bericht, k, VierzehnEigentümer, ordner);
    EXPECT_NEAR(Höhe(Erstellen(bericht, k, ZweiEigentümer, ordner)), 842.0 - 35.181 - 13 * 49, 0.0015);
}

TEST(RegisterauszugSeite, ZeileAußerhalbDerTabelleTutNichts) {
    TempOrdner ordner;
    SkriptOberfläche ui;
    Registerauszug bericht(test::Fest(1, 31, 9));
    EXPECT_FALSE(bericht.CreateRegisterExtract(Laden(), 17, ordner.pfad(), ui).has_value());
    EXPECT_TRUE(std::filesystem::is_empty(ordner.pfad()));
}

TEST(RegisterauszugFehler, MeldungUndDateiMitDemWasSteht) {
    const std::vector<std::string> schlüssel = {"Gemarkungsschlüssel", "Flur", "Flurstück",
        "Eigentümerposition", "Name", "NA-Fläche", "NA-Schlüssel", "Nutzung_tatsächlich"};
    struct Fall {
        const char* name;
        std::vector<std::vector<std::string_view>> zeilen;
        const char* steht;      // the last text drawn
        const char* stehtNicht; // what would have come next
    };
    const Fall fälle[] = {
        {"Flächenliste kürzer als die Namen", {{"1", "1", "5", "1", "Eins", "100", "11;12", "Acker;Wald"}},
         "0000000100", "Wald"},
        {"Schlüsselliste kürzer als die Namen", {{"1", "1", "5", "1", "Eins", "100;200", "11", "Acker;Wald"}},
         "0000000200", "Wald"},
        {"Eigentümerposition geht zurück",
         {{"1", "1", "5", "2", "Zweiter", "100", "11", "Acker"}, {"1", "1", "5", "1", "Erster", "100", "11", "Acker"}},
         "Zweiter", "Erster"},
    };
    EXPECT_EQ(std::string(AuszugSortierfehler), "Die Mehrfacheigentümer je Flurstücke sind falsch sortiert!   \n"
                                                "Bitte sortieren Sie entsprechend der Eigentümerposition!   ");
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        TempOrdner ordner;
        const auto e = Erstellen(Tabelle(schlüssel, f.zeilen), 0, ordner);
        ASSERT_EQ(e.meldungen, std::vector<std::string>{AuszugSortierfehler});
        EXPECT_TRUE(e.auszug.unvollständig);
        ASSERT_EQ(e.seiten.size(), 1u) << "the report ends with the page";
        EXPECT_FALSE(Stelle(e.seiten[0], f.steht).empty());
        EXPECT_TRUE(Stelle(e.seiten[0], f.stehtNicht).empty());
        EXPECT_TRUE(std::filesystem::exists(ordner / "ALB-1-1-5.pdf"));
    }
}

TEST(RegisterauszugFehler, LeereUndÜberlangeZellenUndFremdeZeichen) {
    const std::string lang(10000, 'x');
    const Kataster k = Tabelle({"Gemarkungsschlüssel", "Flur", "Flurstück", "Name", "Lagebezeichnung"},
                               {{"", "", "", lang, "Łódź 文字"}});
    TempOrdner ordner;
    const auto e = Erstellen(k, 0, ordner);
    EXPECT_TRUE(e.meldungen.empty());
    ASSERT_EQ(e.seiten.size(), 1u);
    EXPECT_FALSE(Stelle(e.seiten[0], lang).empty());
    EXPECT_NE(e.seiten[0].find("(?\xF3" "d? ?" "?)'"), std::string::npos) << "1252 or \"?\"";
    EXPECT_EQ(e.auszug.datei.filename(), "ALB---.pdf");
}

TEST(RegisterauszugPrüfer, QpdfNurDieWarnungDerZeilenenden) {
    if (!test::ImSuchpfad("qpdf"))
        GTEST_SKIP() << "qpdf fehlt (Paket qpdf): Prüfung übersprungen";
    TempOrdner ordner;
    test::QpdfNurZeilenendwarnungen(Erstellen(Laden(), VierzehnEigentümer, ordner).auszug.datei, 3);
}

TEST(RegisterauszugPrüfer, PdftotextInDerReihenfolgeDerSeite) {
    if (!test::ImSuchpfad("pdftotext"))
        GTEST_SKIP() << "pdftotext fehlt (Paket poppler-utils): Prüfung übersprungen";
    TempOrdner ordner;
    const Kataster k = Laden();
    const std::pair<std::size_t, std::vector<const char*>> fälle[] = {
        {ZweiEigentümer,
         {"AUSZUG AUS DEM LIEGENSCHAFTSKATASTER", "120101-001-12/3", "-LIEGENSCHAFTSBUCH-",
          "Flurstücks- und Eigentümernachweis", "Aktualität", "Katasteramt Meißen", "Gemarkung",
          "Tatsächliche Nutzung", "Wohnbaufläche", "Grünland (Wiese)", "Fläche", "Hinweise",
          "Vorgängerflurstück", "Amtsgericht Meißen", "Bestand GBBZ: 120101", "Müller, Jörg",
          "Schloßstraße 7", "Weiß (geb. Käßler), Änne \\ Ü", "Erbengemeinschaft", "erstellt mit Flurix Test"}},
        {VierzehnEigentümer,
         {"Schäfer, Günter", "Grün, Ulf", "\f", "Seite 2", "Straßburger, Anja", "Röderstraße 5",
          "01558 Großenhain", "Übel, Tom", "Bestand GBBZ: 120101 GBBL: 0000816", "Groß, Maß", "\f",
          "Zöllner, Rüdiger", "Weißgerber, Fröde", "Gemeinschaft nach Bruchteilen"}},
    };
    for (const auto& [zeile, texte] : fälle) {
        std::string text = test::Pdftotext(Erstellen(k, zeile, ordner).auszug.datei, true);
        // -layout keeps the columns apart with runs of blanks; one blank is enough here.
        for (auto p = text.find("  "); p != std::string::npos; p = text.find("  ", p))
            text.erase(p, 1);
        std::size_t pos = 0;
        for (const char* t : texte) {
            const auto gefunden = text.find(t, pos);
            EXPECT_NE(gefunden, std::string::npos) << t << " nach Stelle " << pos << "\n" << text;
            if (gefunden != std::string::npos)
                pos = gefunden + 1;
        }
    }
}

} // namespace
} // namespace flurix::report
