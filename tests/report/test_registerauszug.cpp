// The register extract: its text forms, the owners of a parcel, the bytes of the frame and title,
// the places of the blocks, the page-full rule with continuation pages, Eigentümerzusatz, the
// message of a page that cannot be finished, and the judgement of qpdf and pdftotext.

#include "report/registerauszug.hpp"

#include "report/pdf_format.hpp"

#include "core/cp1252.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/oberflaeche_skript.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

using namespace flurix;
using namespace flurix::report;
using test::DateiLesen;
using test::DateiSchreiben;
using test::TempOrdner;

// Two parcels of the same Gemarkung: 120101-001-12/3 with two owners (notes, predecessors,
// Eigentümerzusatz "Erbengemeinschaft;"), 120101-002-7 with fourteen owners on two land-register
// sheets, and 120101-002-8 with one owner behind them.
const std::filesystem::path Fixture =
    test::Testdaten() / "report" / "flurstuecke_zwei_und_vierzehn_eigentuemer.tsv";
constexpr std::size_t ZweiEigentümer = 0;     // first row of parcel 12/3
constexpr std::size_t VierzehnEigentümer = 2; // first row of parcel 7

PdfHerkunft Fest() {
    return {"Flurix Test", [] {
                std::tm zeit{};
                zeit.tm_year = 2024 - 1900;
                zeit.tm_mon = 0;
                zeit.tm_mday = 31;
                zeit.tm_hour = 9;
                return zeit;
            }};
}

Kataster Laden() {
    Kataster kataster;
    KatasterLaden(kataster, Fixture);
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

// The content streams of a file, page by page: what stands between "stream\r" and "endstream".
std::vector<std::string> Seiten(const std::string& datei) {
    std::vector<std::string> seiten;
    for (auto pos = datei.find(">>\rstream\r"); pos != std::string::npos;
         pos = datei.find(">>\rstream\r", pos + 1)) {
        const auto anfang = pos + 10;
        seiten.push_back(datei.substr(anfang, datei.find("endstream\r", anfang) - anfang));
    }
    return seiten;
}

// The "x y" of the Td before the text that shows `text` (UTF-8, escaped as in the file) on a page;
// "" when it is not there.
std::string Stelle(const std::string& seite, std::string_view text) {
    const auto pos = seite.find("\r(" + EscapeText(Utf8NachCp1252(text)) + ")'\r");
    if (pos == std::string::npos)
        return {};
    const auto td = seite.rfind(" Td\r", pos);
    const auto anfang = seite.rfind('\r', td - 1) + 1;
    return seite.substr(anfang, td - anfang);
}

// The y written for a text (points from the bottom of the page), NaN when it is not there.
double Höhe(const std::string& seite, std::string_view text) {
    const std::string stelle = Stelle(seite, text);
    return stelle.empty() ? std::nan("") : std::stod(stelle.substr(stelle.find(' ') + 1));
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
    auto seiten = Seiten(auszug->inhalt);
    return {std::move(*auszug), std::move(seiten), ui.Meldungen()};
}

Ergebnis Erstellen(const Kataster& kataster, std::size_t zeile, const TempOrdner& ordner) {
    Registerauszug bericht(Fest());
    return Erstellen(bericht, kataster, zeile, ordner);
}

// ---- text forms ---------------------------------------------------------------------------------

TEST(RegisterauszugText, FlächenZehnstelligMitFührendenNullen) {
    const std::pair<const char*, const char*> fälle[] = {{"1234", "0000001234"},
                                                         {" 0000512 ", "0000000512"},
                                                         {"12.5", "0000000013"},
                                                         {"-5", "-0000000005"},
                                                         {"", ""},
                                                         {"   ", ""},
                                                         {"12345678901", "12345678901"},
                                                         {"ca. 300", "ca. 300"}};
    for (const auto& [zelle, erwartet] : fälle)
        EXPECT_EQ(Flächenformat(zelle), erwartet) << '"' << zelle << '"';
}

TEST(RegisterauszugText, EigentümernummerAusDreiFeldern) {
    const std::pair<const char*, const char*> fälle[] = {
        {"00010002", "1.0.2"}, {"00121305", "12.13.5"}, {"", "0.0.0"},
        {"0001002", "1.0.2"},  {"0002001", "2.0.1"},    {"12", "12.0.0"}};
    for (const auto& [nummer, erwartet] : fälle)
        EXPECT_EQ(Eigentümernummer(nummer), erwartet) << nummer;
}

TEST(RegisterauszugText, LageBis65ZeichenGanzSonstGekürzt) {
    const std::string ü65 = std::string(5, 'x') + std::string(59, 'y') + "ü"; // 65 characters
    EXPECT_EQ(Lagetext("", ü65), ü65) << "65 characters, the ü two bytes";
    EXPECT_EQ(Lagetext("  01234", "Hauptstraße 7  "), "01234 Hauptstraße 7");
    const std::string lang = "ä" + std::string(65, 'z'); // 66 characters
    EXPECT_EQ(Lagetext(lang, ""), "ä" + std::string(59, 'z') + "...");
    EXPECT_EQ(Lagetext("", ""), "");
}

TEST(RegisterauszugText, ListenTrimmenDatum) {
    EXPECT_TRUE(Listenteile("").empty()) << "an empty list cell has no piece";
    EXPECT_EQ(Listenteile("a; b;").size(), 3u);
    EXPECT_EQ(Trimmen("  a b \t "), "a b \t");
    std::tm zeit{};
    zeit.tm_year = 124;
    zeit.tm_mon = 2;
    zeit.tm_mday = 5;
    EXPECT_EQ(Kurzdatum(zeit), "05.03.2024");
}

TEST(RegisterauszugDateiname, OhneSchrägstrichUndOhneLeerzeichen) {
    struct Fall {
        std::string_view gemarkung, flur, flurstück, erwartet;
    };
    const Fall fälle[] = {
        {"120101", "001", "12/3", "ALB-120101-001-123.pdf"},
        {"12 01 01", " 1", "00042/000 ", "ALB-120101-1-00042000.pdf"},
        {"", "", "", "ALB---.pdf"},
    };
    for (const auto& f : fälle) {
        const Kataster k = Tabelle({"Gemarkungsschlüssel", "Flur", "Flurstück"},
                                   {{f.gemarkung, f.flur, f.flurstück}});
        EXPECT_EQ(AuszugDateiname(k, 0), f.erwartet);
    }
}

// ---- the owners of a parcel ---------------------------------------------------------------------

TEST(RegisterauszugEigentümer, ZeilenDesFlurstücksInTabellenreihenfolge) {
    const Kataster k = Laden();
    EXPECT_EQ(ParcelRows(k, 1), (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(ParcelRows(k, 9).size(), 14u);
    EXPECT_EQ(ParcelRows(k, 9).front(), VierzehnEigentümer);
    EXPECT_EQ(ParcelRows(k, 16), (std::vector<std::size_t>{16}));

    // Without Flurstückskennzeichen: Gemarkung, Flur and Flurstück together; the same number in
    // another Flur is another parcel, and rows of the parcel need not stand together.
    const Kataster ohne =
        Tabelle({"Gemarkungsschlüssel", "Flur", "Flurstück", "Name"}, {{"1", "001", "5", "a"},
                                                                       {"1", "002", "5", "b"},
                                                                       {"1", "001", "6", "c"},
                                                                       {"1", "001", "5", "d"}});
    EXPECT_EQ(ParcelRows(ohne, 3), (std::vector<std::size_t>{0, 3}));
    EXPECT_EQ(ParcelRows(ohne, 1), (std::vector<std::size_t>{1}));
}

// ---- pages --------------------------------------------------------------------------------------

// The content streams of an extract as text, page by page (UTF-8, one operator a line), against
// their golden file.
std::string SeitenWieErwartet(const std::vector<std::string>& seiten, std::string_view golden) {
    std::string text;
    for (std::size_t p = 0; p < seiten.size(); ++p) {
        text += "%% Seite " + std::to_string(p + 1) + "\n" + Cp1252NachUtf8(seiten[p]);
        std::replace(text.begin(), text.end(), '\r', '\n');
    }
    return test::GoldenVergleich(text, test::Testdaten() / "report" / golden);
}

TEST(RegisterauszugSeite, RahmenBlöckeUndZeilenByteGenau) {
    // "S" of a new writer, "f" of FillMode -1, then the four boxes in millimetres (20/11 93×23,
    // 113/11 87×23, 20/34 180×32, 20/66 180×220), the footer in 6 points at 20/289 mm, the title
    // in 11 points 5 points right of the left edge; line k of a block at 11 mm + 13 k + 4 points
    // from the top. Texts escaped: parentheses and the backslash. One stand for both owners.
    TempOrdner ordner;
    const auto e = Erstellen(Laden(), ZweiEigentümer, ordner);
    ASSERT_EQ(e.seiten.size(), 1u);
    EXPECT_EQ(SeitenWieErwartet(e.seiten, "auszug_zwei_eigentuemer.txt"), "");
    EXPECT_TRUE(e.meldungen.empty());
    EXPECT_EQ(e.auszug.datei, ordner / "ALB-120101-001-123.pdf");
    EXPECT_EQ(DateiLesen(e.auszug.datei), e.auszug.inhalt);
}

TEST(RegisterauszugSeite, VieleEigentümerAufFolgeseiten) {
    // Fourteen owners: 4 on the first page, 7 on the second, 3 on the third, each block within
    // the main box; continuation pages without parcel data, the stand line with its blank first,
    // Straße above Ort; the sheet changes at owner 11 with a stand line of its own; the
    // Eigentümerzusatz on the last page only.
    TempOrdner ordner;
    const auto e = Erstellen(Laden(), 9, ordner); // a row in the middle of the parcel
    ASSERT_EQ(e.seiten.size(), 3u);
    EXPECT_EQ(e.auszug.seiten, 3);
    EXPECT_EQ(e.auszug.datei.filename(), "ALB-120101-002-7.pdf");
    EXPECT_EQ(SeitenWieErwartet(e.seiten, "auszug_vierzehn_eigentuemer.txt"), "");
}

TEST(RegisterauszugSeite, EigentümerzusatzErsteSeiteMitFUndLetztemJ0) {
    TempOrdner ordner;
    const Kataster k = Laden();
    // Two owners: R ends at 12, J at 2 (a row follows), F at 33: line 60, below the main box.
    Registerauszug bericht(Fest());
    const auto erst = Erstellen(bericht, k, ZweiEigentümer, ordner);
    EXPECT_NEAR(Höhe(erst.seiten.at(0), "Erbengemeinschaft"), 842.0 - 35.181 - 13 * 60, 0.0015);
    // The third page of the fourteen owners began at J0 = 11; the same window's next extract of
    // the first parcel places the line 11 lines higher.
    Erstellen(bericht, k, VierzehnEigentümer, ordner);
    const auto danach = Erstellen(bericht, k, ZweiEigentümer, ordner);
    EXPECT_NEAR(Höhe(danach.seiten.at(0), "Erbengemeinschaft"), 842.0 - 35.181 - 13 * 49, 0.0015);
}

TEST(RegisterauszugSeite, ZeileAußerhalbDerTabelleTutNichts) {
    TempOrdner ordner;
    SkriptOberfläche ui;
    Registerauszug bericht(Fest());
    EXPECT_FALSE(bericht.CreateRegisterExtract(Laden(), 17, ordner.pfad(), ui).has_value());
    EXPECT_TRUE(std::filesystem::is_empty(ordner.pfad()));
}

// ---- pages that cannot be finished --------------------------------------------------------------

TEST(RegisterauszugFehler, MeldungUndDateiMitDemWasSteht) {
    const std::vector<std::string> schlüssel = {
        "Gemarkungsschlüssel", "Flur",         "Flurstück",          "Eigentümerposition", "Name",
        "NA-Fläche",           "NA-Schlüssel", "Nutzung_tatsächlich"};
    struct Fall {
        const char* name;
        std::vector<std::vector<std::string_view>> zeilen;
        const char* steht;      // the last text drawn
        const char* stehtNicht; // what would have come next
    };
    const Fall fälle[] = {
        {"Flächenliste kürzer als die Namen",
         {{"1", "1", "5", "1", "Eins", "100", "11;12", "Acker;Wald"}},
         "0000000100",
         "Wald"},
        {"Schlüsselliste kürzer als die Namen",
         {{"1", "1", "5", "1", "Eins", "100;200", "11", "Acker;Wald"}},
         "0000000200",
         "Wald"},
        {"Eigentümerposition geht zurück",
         {{"1", "1", "5", "2", "Zweiter", "100", "11", "Acker"},
          {"1", "1", "5", "1", "Erster", "100", "11", "Acker"}},
         "Zweiter",
         "Erster"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        TempOrdner ordner;
        const auto e = Erstellen(Tabelle(schlüssel, f.zeilen), 0, ordner);
        ASSERT_EQ(e.meldungen, std::vector<std::string>{AuszugSortierfehler});
        EXPECT_EQ(std::string(AuszugSortierfehler),
                  "Die Mehrfacheigentümer je Flurstücke sind falsch sortiert!   \n"
                  "Bitte sortieren Sie entsprechend der Eigentümerposition!   ");
        EXPECT_TRUE(e.auszug.unvollständig);
        ASSERT_EQ(e.seiten.size(), 1u) << "the report ends with the page";
        EXPECT_FALSE(Stelle(e.seiten[0], f.steht).empty());
        EXPECT_TRUE(Stelle(e.seiten[0], f.stehtNicht).empty());
        EXPECT_TRUE(std::filesystem::exists(ordner / "ALB-1-1-5.pdf"));
    }
}

TEST(RegisterauszugFehler, LeereUndÜberlangeZellenUndFremdeZeichen) {
    const std::string lang(10000, 'x');
    const Kataster k =
        Tabelle({"Gemarkungsschlüssel", "Flur", "Flurstück", "Name", "Lagebezeichnung"},
                {{"", "", "", lang, "Łódź 文字"}});
    TempOrdner ordner;
    const auto e = Erstellen(k, 0, ordner);
    EXPECT_TRUE(e.meldungen.empty());
    ASSERT_EQ(e.seiten.size(), 1u);
    EXPECT_FALSE(Stelle(e.seiten[0], lang).empty());
    EXPECT_NE(e.seiten[0].find("(?\xF3"
                               "d? ?"
                               "?)'"),
              std::string::npos)
        << "1252 or \"?\"";
    EXPECT_EQ(e.auszug.datei.filename(), "ALB---.pdf");
}

// ---- independent judges -------------------------------------------------------------------------

bool Vorhanden(const char* programm) {
    return std::system((std::string("command -v ") + programm + " >/dev/null 2>&1").c_str()) == 0;
}

int Befehl(const std::string& zeile) {
    const int status = std::system(zeile.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(RegisterauszugPrüfer, QpdfNurDieWarnungDerZeilenenden) {
    if (!Vorhanden("qpdf"))
        GTEST_SKIP() << "qpdf fehlt (Paket qpdf): Prüfung übersprungen";
    TempOrdner ordner;
    const auto e = Erstellen(Laden(), VierzehnEigentümer, ordner);
    const int code = Befehl("qpdf --check " + e.auszug.datei.string() + " > " +
                            (ordner / "qpdf.txt").string() + " 2>&1");
    const std::string bericht = DateiLesen(ordner / "qpdf.txt");
    // Exit code 3, warnings only: the writer ends the "stream" line with a lone CR, and qpdf says
    // so once a page ("stream keyword followed by carriage return only"). Nothing else.
    EXPECT_EQ(code, 3) << bericht;
    EXPECT_EQ(bericht.find("ERROR"), std::string::npos) << bericht;
    std::size_t warnungen = 0;
    for (auto pos = bericht.find("WARNING"); pos != std::string::npos;
         pos = bericht.find("WARNING", pos + 1), ++warnungen)
        EXPECT_NE(bericht.find("stream keyword followed by carriage return only", pos),
                  std::string::npos);
    EXPECT_EQ(warnungen, 3u) << bericht;
}

TEST(RegisterauszugPrüfer, PdftotextInDerReihenfolgeDerSeite) {
    if (!Vorhanden("pdftotext"))
        GTEST_SKIP() << "pdftotext fehlt (Paket poppler-utils): Prüfung übersprungen";
    TempOrdner ordner;
    const Kataster k = Laden();
    const std::pair<std::size_t, std::vector<const char*>> fälle[] = {
        {ZweiEigentümer,
         {"AUSZUG AUS DEM LIEGENSCHAFTSKATASTER",
          "120101-001-12/3",
          "-LIEGENSCHAFTSBUCH-",
          "Flurstücks- und Eigentümernachweis",
          "Aktualität",
          "Katasteramt Meißen",
          "Gemarkung",
          "Tatsächliche Nutzung",
          "Wohnbaufläche",
          "Grünland (Wiese)",
          "Fläche",
          "Hinweise",
          "Vorgängerflurstück",
          "Amtsgericht Meißen",
          "Bestand GBBZ: 120101",
          "Müller, Jörg",
          "Schloßstraße 7",
          "Weiß (geb. Käßler), Änne \\ Ü",
          "Erbengemeinschaft",
          "erstellt mit Flurix Test"}},
        {VierzehnEigentümer,
         {"Schäfer, Günter", "Grün, Ulf", "\f", "Seite 2", "Straßburger, Anja", "Röderstraße 5",
          "01558 Großenhain", "Übel, Tom", "Bestand GBBZ: 120101 GBBL: 0000816", "Groß, Maß", "\f",
          "Zöllner, Rüdiger", "Weißgerber, Fröde", "Gemeinschaft nach Bruchteilen"}},
    };
    for (const auto& [zeile, texte] : fälle) {
        const auto e = Erstellen(k, zeile, ordner);
        const auto txt = ordner / "auszug.txt";
        ASSERT_EQ(Befehl("pdftotext -enc UTF-8 -layout " + e.auszug.datei.string() + " " +
                         txt.string() + " 2>/dev/null"),
                  0);
        std::string text = DateiLesen(txt);
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
