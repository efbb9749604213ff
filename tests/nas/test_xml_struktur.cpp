// The generic XML reader: one row per record into the table XML, appending, load errors, refused
// and empty files. Record level, text preparation and database path are in test_umformungen.cpp.

#include "nas/xml_struktur.hpp"

#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/tabellentext.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace flurix::nas {
namespace {

const std::filesystem::path Daten = test::Testdaten() / "nas";

std::vector<std::string> Werte(const std::filesystem::path& datenbank, const std::string& sql) {
    Datenbank db(datenbank);
    return test::Abfragezeilen(db, sql);
}

std::vector<std::string> Spalten(const std::filesystem::path& datenbank) {
    return Datenbank(datenbank).Spaltennamen("XML");
}

// The table XML one cell a line, against its golden file.
std::string TabelleWieErwartet(const std::filesystem::path& datenbank, std::string_view golden) {
    Datenbank db(datenbank);
    return test::GoldenVergleich(test::ZellenText(db, "SELECT XMLId, * FROM \"XML\" ORDER BY rowid"),
                                 Daten / golden);
}

// Loads of files in a folder of their own, with the UI they spoke to.
struct Lauf {
    test::TempOrdner ordner;
    SkriptOberfläche ui;
    std::filesystem::path datei = ordner / "antwort.xml";

    XmlStrukturErgebnis Laden(std::optional<std::string_view> inhalt, int satzebene, bool anhängen = false,
                              bool fortschritt = false) {
        if (inhalt)
            test::DateiSchreiben(datei, *inhalt);
        return XmlStrukturLaden(datei, satzebene, anhängen, fortschritt, ui);
    }
};

TEST(XmlStrukturLaden, ZeilenSpaltenUndXmlDaten) {
    // One row per feature, one column per element name in the order first met; a value met
    // twice is joined with ";", XMLDaten lists the elements of the row. The database lies beside
    // the file, its path written as the file's.
    Lauf lauf;
    lauf.datei = lauf.ordner / "Gross" / "Ortsantwort.XML";
    const auto ergebnis = lauf.Laden(test::DateiLesen(Daten / "ortsantwort_zwei_orte.xml"), 2);
    ASSERT_TRUE(ergebnis) << ergebnis.ergebnis.Meldung();
    EXPECT_TRUE(lauf.ui.Ereignisse().empty());
    EXPECT_EQ(ergebnis.datenbank, lauf.ordner / "Gross" / "Ortsantwort.sqlite");
    EXPECT_TRUE(std::filesystem::exists(ergebnis.datenbank));
    EXPECT_EQ(ergebnis.zeilen, 2);
    EXPECT_EQ(TabelleWieErwartet(ergebnis.datenbank, "xml_ortsantwort_tabelle.txt"), "");
}

TEST(XmlStrukturLaden, SatzebeneAusBestandsdatenauszug) {
    // A NAS extract: AX_Bestandsdatenauszug (1) / enthaelt (2) / wfs:FeatureCollection (3) /
    // gml:featureMember (4) / feature (5). The Antragsnummer before the features is a row of its
    // own (record 0); the nested values of a feature go to the feature's row.
    Lauf lauf;
    const auto ergebnis =
        lauf.Laden(test::DateiLesen(Daten / "bestandsdatenauszug_antrag_zwei_flurstuecke.xml"), 0);
    ASSERT_TRUE(ergebnis) << ergebnis.ergebnis.Meldung();
    EXPECT_EQ(ergebnis.satzebene, 5);
    EXPECT_EQ(TabelleWieErwartet(ergebnis.datenbank, "xml_bestandsdatenauszug_tabelle.txt"), "");
}

TEST(XmlStrukturLaden, TypnameUndFortschrittstexte) {
    Lauf lauf;
    const std::string antwort = test::DateiLesen(Daten / "ortsantwort_zwei_orte.xml");
    const auto ergebnis = lauf.Laden("<!-- Anfrage: ...;TYPENAME=dog:Ort&MAXFEATURES=5 -->\n" +
                                         antwort.substr(antwort.find('\n') + 1),
                                     0, false, true);
    ASSERT_TRUE(ergebnis) << ergebnis.ergebnis.Meldung();
    EXPECT_EQ(ergebnis.satzebene, 2);
    EXPECT_EQ(ergebnis.typname, "Ort");
    EXPECT_EQ(lauf.ui.Texte(Ereignis::Art::Status),
              (std::vector<std::string>{"XML(DOM)-Datei wird geladen...", "XML-DAO-Datenbank anlegen...",
                                        "XML-Daten der DAO-Datenbank zuordnen..."}));
    EXPECT_EQ(lauf.ui.LetzterFortschritt(), 2);
    EXPECT_EQ(Werte(ergebnis.datenbank, "SELECT DISTINCT typename FROM XML"), std::vector<std::string>{"Ort"});
}

TEST(XmlStrukturLaden, AnhängenOderNeu) {
    Lauf lauf;
    ASSERT_TRUE(lauf.Laden(test::DateiLesen(Daten / "ortsantwort_zwei_orte.xml"), 2));
    // A second answer with a new element: appended, the table gains the column.
    const std::string zweite = "<r><m><dog:name>Kesten</dog:name><dog:gemeinde>07231066</dog:gemeinde></m></r>";
    const auto angehängt = lauf.Laden(zweite, 2, true);
    ASSERT_TRUE(angehängt) << angehängt.ergebnis.Meldung();
    EXPECT_EQ(angehängt.zeilen, 1);
    const std::string sql = "SELECT XMLId, \"dog:name\", \"dog:gemeinde\" FROM XML ORDER BY rowid";
    const auto zeilen = Werte(angehängt.datenbank, sql);
    ASSERT_EQ(zeilen.size(), 3u);
    EXPECT_TRUE(zeilen[0].starts_with("1|Osann|")) << zeilen[0];
    EXPECT_EQ(zeilen[2], "1|Kesten|07231066");
    EXPECT_EQ(Spalten(angehängt.datenbank).back(), "dog:gemeinde");
    // Without the flag the old database goes.
    const auto neu = lauf.Laden(std::nullopt, 2);
    ASSERT_TRUE(neu);
    EXPECT_EQ(Werte(neu.datenbank, sql), std::vector<std::string>{"1|Kesten|07231066"});
    EXPECT_EQ(Spalten(neu.datenbank).size(), 4u + 3u); // m, dog:name, dog:gemeinde
    EXPECT_TRUE(lauf.ui.Meldungen().empty());
}

TEST(XmlStrukturLaden, SpaltennamenOhneUnterschiedDerSchreibweiseUndWindows1252) {
    Lauf lauf;
    const auto ergebnis = lauf.Laden("<r><x><Name>a</Name><name>b</name></x></r>", 2);
    ASSERT_TRUE(ergebnis) << ergebnis.ergebnis.Meldung();
    EXPECT_EQ(Spalten(ergebnis.datenbank),
              (std::vector<std::string>{"XMLId", "XMLlfdKnotenNr", "XMLDaten", "typename", "x", "Name"}));
    EXPECT_EQ(Werte(ergebnis.datenbank, "SELECT Name, XMLDaten FROM XML"), std::vector<std::string>{"a;b|Name;name"});

    const auto latin =
        lauf.Laden("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r><m><ort>M\xFCnster</ort></m></r>", 2);
    ASSERT_TRUE(latin) << latin.ergebnis.Meldung();
    EXPECT_EQ(Werte(latin.datenbank, "SELECT ort FROM XML"), std::vector<std::string>{"Münster"});
}

TEST(XmlStrukturLaden, AbgewieseneDateienOhneDatenbank) {
    // The file is not read: the message, its title and kind; nothing is made.
    struct Fall {
        const char* warum;
        std::optional<std::string> inhalt; // std::nullopt: no file at all
        std::string meldung;               // "" for none; "{datei}" stands for the file's path
        std::string titel;
        Stil stil = Stil::Fehler;
    };
    const std::string leer = "OpenXMLDocumentAndFillStructure: leeres Abfrageergebnis! Bitte kontaktieren Sie "
                             "den Programmautor!   ";
    const std::string doctype = "Die XML-Datei \"{datei}\" enthält eine Dokumenttypdeklaration (DOCTYPE). Solche "
                                "Dateien werden nicht gelesen, denn ihre Entitäten könnten Inhalte von außerhalb "
                                "einschleusen.   ";
    const Fall fälle[] = {
        {"five blanks", "     ", leer, "Map-Viewer", Stil::Warnung},
        {"four characters between blanks", " \r\n\t <a/> ", leer, "Map-Viewer", Stil::Warnung},
        {"an empty file", "", leer, "Map-Viewer", Stil::Warnung},
        {"internal entity", "<?xml version=\"1.0\"?>\n<!DOCTYPE r [<!ENTITY x \"viel\">]>\n<r><a>&x;</a></r>",
         doctype, "Fehler"},
        {"external subset", "<!DOCTYPE r SYSTEM \"file:///etc/passwd\"><r><a>1</a></r>", doctype, "Fehler"},
        {"declaration left open", "<!DOCTYPE r [<!ENTITY x SYSTEM \"file:///etc/passwd\">\n<r><a>&x;</a></r>",
         doctype, "Fehler"},
        {"missing file: no message", std::nullopt, "", ""},
    };
    for (const auto& fall : fälle) {
        SCOPED_TRACE(fall.warum);
        Lauf lauf;
        const auto ergebnis = lauf.Laden(fall.inhalt, fall.titel == "Fehler" ? 2 : 0, false, !fall.inhalt);
        EXPECT_FALSE(ergebnis);
        EXPECT_FALSE(std::filesystem::exists(lauf.ordner / "antwort.sqlite"));
        if (fall.meldung.empty()) {
            EXPECT_TRUE(lauf.ui.Ereignisse().empty());
            EXPECT_TRUE(ergebnis.datenbank.empty());
            continue;
        }
        std::string meldung = fall.meldung;
        if (const auto stelle = meldung.find("{datei}"); stelle != std::string::npos)
            meldung.replace(stelle, 7, lauf.datei.string());
        EXPECT_EQ(lauf.ui.Ereignisse(), (std::vector<Ereignis>{{Ereignis::Art::Meldung, meldung, fall.titel}}));
        EXPECT_EQ(lauf.ui.Stile(), std::vector<Stil>{fall.stil});
    }
}

TEST(XmlStrukturLaden, LadefehlerWirdGemeldetUndDerAnfangGelesen) {
    // The end tag on line 3 does not match; the umlauts before it count as one character each.
    Lauf lauf;
    const auto ergebnis = lauf.Laden("<r>\n<a><w>eins</w></a>\n<a><w>zwö</w><ä>x</ä></b>\n</r>\n", 2);
    ASSERT_TRUE(ergebnis) << ergebnis.ergebnis.Meldung();
    ASSERT_EQ(lauf.ui.Meldungen(), std::vector<std::string>{"Fehler beim Laden des Dokumentes. Der Fehler wird "
                                                            "ignoriert!   \nGrund: Das Endtag passt nicht zum "
                                                            "Starttag\nZeile: 3\nZeichen: 24"});
    EXPECT_EQ(lauf.ui.Ereignisse()[0].titel, "Fehler");
    EXPECT_EQ(Werte(ergebnis.datenbank, "SELECT w, ifnull(\"ä\", 'NULL') FROM XML ORDER BY rowid"),
              (std::vector<std::string>{"eins|NULL", "zwö|x"}));
}

TEST(XmlStrukturLaden, ZuVieleElementnamen) {
    Lauf lauf;
    const auto text = [](int namen) {
        std::string elemente;
        for (int i = 0; i < namen; ++i)
            elemente += "<e" + std::to_string(i) + ">1</e" + std::to_string(i) + ">";
        return "<r><m>" + elemente + "</m></r>";
    };
    // m and 1995 value elements: 4 + 1996 = 2000 columns, the most a table has.
    const auto passt = lauf.Laden(text(1995), 2);
    ASSERT_TRUE(passt) << passt.ergebnis.Meldung();
    EXPECT_EQ(Spalten(passt.datenbank).size(), 2000u);

    EXPECT_FALSE(lauf.Laden(text(1996), 2));
    EXPECT_EQ(lauf.ui.Meldungen(),
              std::vector<std::string>{"Die XML-Datei \"" + lauf.datei.string() +
                                       "\" enthält 1.997 verschiedene Elementnamen. Eine Tabelle kann höchstens "
                                       "2.000 Spalten aufnehmen, mit diesen wären es 2.001. Die Datei wird nicht "
                                       "gelesen.   "});
    // The database of the first load is left as it was.
    EXPECT_EQ(Werte(passt.datenbank, "SELECT count(*) FROM XML"), std::vector<std::string>{"1"});
}

} // namespace
} // namespace flurix::nas
