#include "nas/xml_struktur.hpp"

#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/tabellentext.hpp"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace flurix::nas {
namespace {

using Zeile = std::map<std::string, std::optional<std::string>>;

// The rows of the table XML in the order they were written, each cell by column name.
std::vector<Zeile> Zeilen(const std::filesystem::path& datenbank) {
    Datenbank db(datenbank);
    Anweisung abfrage = db.VorbereitenNativ("SELECT * FROM \"XML\" ORDER BY rowid");
    std::vector<Zeile> zeilen;
    while (abfrage.Schritt()) {
        Zeile zeile;
        for (int i = 0; i < abfrage.Spaltenanzahl(); ++i)
            zeile[std::string(abfrage.Spaltenname(i))] =
                abfrage.IstNull(i) ? std::nullopt : std::optional<std::string>(abfrage.Text(i));
        zeilen.push_back(std::move(zeile));
    }
    return zeilen;
}

std::vector<std::string> Spalten(const std::filesystem::path& datenbank) {
    Datenbank db(datenbank);
    return db.Spaltennamen("XML");
}

std::optional<std::string> Zelle(const Zeile& zeile, const std::string& spalte) {
    const auto it = zeile.find(spalte);
    return it == zeile.end() ? std::nullopt : it->second;
}

// One load of a text written to "antwort.xml" in a folder of its own, with the UI it spoke to.
struct Lauf {
    test::TempOrdner ordner;
    SkriptOberfläche ui;
    XmlStrukturErgebnis ergebnis;

    Lauf(std::string_view inhalt, int satzebene) {
        test::DateiSchreiben(Datei(), inhalt);
        ergebnis = XmlStrukturLaden(Datei(), satzebene, false, false, ui);
    }
    std::filesystem::path Datei() const { return ordner / "antwort.xml"; }
    bool DatenbankDa() const { return std::filesystem::exists(ordner / "antwort.sqlite"); }
};

// A file content and why it is a case.
struct TextFall {
    std::string inhalt;
    const char* warum;
};

const std::filesystem::path Daten = test::Testdaten() / "nas";

// A gazetteer answer: two features, one element twice, one only in the second feature.
std::string Ortsantwort() { return test::DateiLesen(Daten / "ortsantwort_zwei_orte.xml"); }

// The table XML one cell a line, against its golden file.
std::string TabelleWieErwartet(const std::filesystem::path& datenbank, std::string_view golden) {
    Datenbank db(datenbank);
    return test::GoldenVergleich(test::ZellenText(db, "SELECT XMLId, * FROM \"XML\" ORDER BY rowid"),
                                 Daten / golden);
}

// --- record level and type name -------------------------------------------------------------

TEST(XmlSatzebene, AusDemTextErmittelt) {
    struct Fall {
        std::string text;
        int ebene;
        std::string typname;
    };
    const std::vector<Fall> fälle = {
        {"<a><b>1</b></a>", 1, ""},
        {"<!-- GetFeature&SERVICE=WFS;TYPENAME=dog:Gemeinde&MAXFEATURES=10 --><a/>", 2, "Gemeinde"},
        {"<!-- ;TYPENAME=app:Strasse&x --><a/>", 2, "Strasse"},
        {"<a/> ?REQUEST=GetFeature;TYPENAME=app:Strasse", 2, "Strasse"},
        {"<!-- TYPENAME=app:Strasse ohne Semikolon davor --><a/>", 2, ""},
        {"<!-- typename=dog:Gemeinde --><a/>", 1, ""},
        {"<AX_Bestandsdatenauszug><enthaelt/></AX_Bestandsdatenauszug>", 5, ""},
        {"<AX_Bestandsdatenauszug><!-- ;TYPENAME=dog:Flur&x --></AX_Bestandsdatenauszug>", 5,
         "Flur"},
    };
    for (const Fall& fall : fälle) {
        const XmlSatz satz = XmlSatzebene(fall.text);
        EXPECT_EQ(satz.ebene, fall.ebene) << fall.text;
        EXPECT_EQ(satz.typname, fall.typname) << fall.text;
    }
}

// --- text preparation -----------------------------------------------------------------------

TEST(XmlTextVorbereiten, ZeilenendenUndZeichen) {
    struct Fall {
        std::string bytes;
        std::string erwartet;
        const char* warum;
    };
    const std::vector<Fall> fälle = {
        {"<a>\n<b/>\n</a>", "<a>\r\n<b/>\r\n</a>", "LF alone becomes CR LF"},
        {"<a>\r\r\n<b/>\r\r\r\n</a>", "<a>\r\n<b/>\r\n</a>", "a run of CR becomes one"},
        {"<a>\r\n</a>", "<a>\r\n</a>", "CR LF stays"},
        {"\xEF\xBB\xBF<a/>", "<a/>", "byte order mark dropped"},
        {"<a>M\xC3\xBCller {x|y}~</a>", "<a>M\xC3\xBCller {x|y}~</a>",
         "UTF-8 keeps its letters and the characters { | } ~"},
        {"<a>M\x81ller Stra\xE1" "e \x8E\x99\x9A \x84\x94</a>",
         "<a>M\xC3\xBCller Stra\xC3\x9F" "e \xC3\x84\xC3\x96\xC3\x9C \xC3\xA4\xC3\xB6</a>",
         "8-bit text with umlauts at the DOS places"},
        {"<a>\x84M\xFCller\x94 Ren\xE1</a>",
         "<a>\xE2\x80\x9EM\xC3\xBCller\xE2\x80\x9D Ren\xC3\xA1</a>",
         "Windows-1252 text keeps its quotes and accents"},
    };
    for (const Fall& fall : fälle)
        EXPECT_EQ(XmlTextVorbereiten(fall.bytes), fall.erwartet) << fall.warum;
}

TEST(XmlDatenbankPfad, SqliteStattXml) {
    EXPECT_EQ(XmlDatenbankPfad("/daten/Antwort.XML"), "/daten/Antwort.sqlite");
    EXPECT_EQ(XmlDatenbankPfad("/daten/antwort.xml"), "/daten/antwort.sqlite");
    EXPECT_EQ(XmlDatenbankPfad("/daten/antwort"), "/daten/antwort.sqlite");
    EXPECT_EQ(XmlDatenbankPfad("/daten/antwort.sqlite"), "/daten/antwort.sqlite.sqlite");
}

// --- loading --------------------------------------------------------------------------------

TEST(XmlStrukturLaden, ZeilenSpaltenUndXmlDaten) {
    // One row per feature, one column per element name in the order first met; a value met
    // twice is joined with ";", XMLDaten lists the elements of the row.
    test::TempOrdner ordner;
    const auto datei = ordner / "Ortsantwort.xml";
    test::DateiSchreiben(datei, Ortsantwort());
    SkriptOberfläche ui;

    const auto ergebnis = XmlStrukturLaden(datei, 2, false, false, ui);

    ASSERT_TRUE(ergebnis) << ergebnis.ergebnis.Meldung();
    EXPECT_TRUE(ui.Ereignisse().empty());
    EXPECT_EQ(ergebnis.datenbank, ordner / "Ortsantwort.sqlite");
    EXPECT_EQ(ergebnis.zeilen, 2);
    EXPECT_EQ(TabelleWieErwartet(ergebnis.datenbank, "xml_ortsantwort_tabelle.txt"), "");
}

TEST(XmlStrukturLaden, SatzebeneAusBestandsdatenauszug) {
    // A NAS extract: AX_Bestandsdatenauszug (1) / enthaelt (2) / wfs:FeatureCollection (3) /
    // gml:featureMember (4) / feature (5). The Antragsnummer before the features is a row of its
    // own (record 0); the nested values of a feature go to the feature's row.
    test::TempOrdner ordner;
    std::filesystem::copy_file(Daten / "bestandsdatenauszug_antrag_zwei_flurstuecke.xml", ordner / "auszug.xml");
    SkriptOberfläche ui;
    const auto ergebnis = XmlStrukturLaden(ordner / "auszug.xml", 0, false, false, ui);

    ASSERT_TRUE(ergebnis) << ergebnis.ergebnis.Meldung();
    EXPECT_EQ(ergebnis.satzebene, 5);
    EXPECT_EQ(TabelleWieErwartet(ergebnis.datenbank, "xml_bestandsdatenauszug_tabelle.txt"), "");
}

TEST(XmlStrukturLaden, TypnameUndFortschrittstexte) {
    test::TempOrdner ordner;
    const auto datei = ordner / "antwort.xml";
    test::DateiSchreiben(datei, "<!-- Anfrage: ...;TYPENAME=dog:Ort&MAXFEATURES=5 -->\n" +
                                    Ortsantwort().substr(Ortsantwort().find('\n') + 1));
    SkriptOberfläche ui;

    const auto ergebnis = XmlStrukturLaden(datei, 0, false, true, ui);

    ASSERT_TRUE(ergebnis) << ergebnis.ergebnis.Meldung();
    EXPECT_EQ(ergebnis.satzebene, 2);
    EXPECT_EQ(ergebnis.typname, "Ort");
    EXPECT_EQ(ui.Texte(Ereignis::Art::Status),
              (std::vector<std::string>{"XML(DOM)-Datei wird geladen...",
                                        "XML-DAO-Datenbank anlegen...",
                                        "XML-Daten der DAO-Datenbank zuordnen..."}));
    EXPECT_EQ(ui.LetzterFortschritt(), 2);
    for (const auto& zeile : Zeilen(ergebnis.datenbank))
        EXPECT_EQ(Zelle(zeile, "typename"), "Ort");
}

TEST(XmlStrukturLaden, AnhängenOderNeu) {
    test::TempOrdner ordner;
    const auto datei = ordner / "antwort.xml";
    test::DateiSchreiben(datei, Ortsantwort());
    SkriptOberfläche ui;
    ASSERT_TRUE(XmlStrukturLaden(datei, 2, false, false, ui));

    // A second answer with a new element: appended, the table gains the column.
    test::DateiSchreiben(datei, "<r><m><dog:name>Kesten</dog:name><dog:gemeinde>07231066"
                                "</dog:gemeinde></m></r>");
    const auto angehängt = XmlStrukturLaden(datei, 2, true, false, ui);
    ASSERT_TRUE(angehängt) << angehängt.ergebnis.Meldung();
    EXPECT_EQ(angehängt.zeilen, 1);
    auto zeilen = Zeilen(angehängt.datenbank);
    ASSERT_EQ(zeilen.size(), 3u);
    EXPECT_EQ(Zelle(zeilen[0], "dog:name"), "Osann");
    EXPECT_EQ(Zelle(zeilen[2], "dog:name"), "Kesten");
    EXPECT_EQ(Zelle(zeilen[2], "dog:gemeinde"), "07231066");
    EXPECT_EQ(Zelle(zeilen[2], "XMLId"), "1");
    EXPECT_EQ(Spalten(angehängt.datenbank).back(), "dog:gemeinde");

    // Without the flag the old database goes.
    const auto neu = XmlStrukturLaden(datei, 2, false, false, ui);
    ASSERT_TRUE(neu);
    zeilen = Zeilen(neu.datenbank);
    ASSERT_EQ(zeilen.size(), 1u);
    EXPECT_EQ(Zelle(zeilen[0], "dog:name"), "Kesten");
    EXPECT_EQ(Spalten(neu.datenbank).size(), 4u + 3u); // m, dog:name, dog:gemeinde
    EXPECT_TRUE(ui.Meldungen().empty());
}

TEST(XmlStrukturLaden, SpaltennamenOhneUnterschiedDerSchreibweise) {
    const Lauf lauf("<r><x><Name>a</Name><name>b</name></x></r>", 2);
    const auto& ergebnis = lauf.ergebnis;

    ASSERT_TRUE(ergebnis) << ergebnis.ergebnis.Meldung();
    EXPECT_EQ(Spalten(ergebnis.datenbank),
              (std::vector<std::string>{"XMLId", "XMLlfdKnotenNr", "XMLDaten", "typename", "x",
                                        "Name"}));
    const auto zeilen = Zeilen(ergebnis.datenbank);
    ASSERT_EQ(zeilen.size(), 1u);
    EXPECT_EQ(Zelle(zeilen[0], "Name"), "a;b");
    EXPECT_EQ(Zelle(zeilen[0], "XMLDaten"), "Name;name");
}

TEST(XmlStrukturLaden, LeeresAbfrageergebnis) {
    const std::vector<TextFall> fälle = {
        {"     ", "five blanks"},
        {" \r\n\t <a/> ", "four characters between blanks"},
        {"", "an empty file"},
    };
    for (const TextFall& fall : fälle) {
        const Lauf lauf(fall.inhalt, 0);

        EXPECT_FALSE(lauf.ergebnis) << fall.warum;
        ASSERT_EQ(lauf.ui.Ereignisse().size(), 1u) << fall.warum;
        EXPECT_EQ(lauf.ui.Ereignisse()[0],
                  (Ereignis{Ereignis::Art::Meldung,
                            "OpenXMLDocumentAndFillStructure: leeres Abfrageergebnis! Bitte "
                            "kontaktieren Sie den Programmautor!   ",
                            "Map-Viewer", 0}))
            << fall.warum;
        EXPECT_FALSE(lauf.DatenbankDa()) << fall.warum;
    }
}

TEST(XmlStrukturLaden, LadefehlerWirdGemeldetUndDerAnfangGelesen) {
    // The end tag on line 3 does not match; the umlauts before it count as one character each.
    const Lauf lauf("<r>\n<a><w>eins</w></a>\n<a><w>zwö</w><ä>x</ä></b>\n</r>\n", 2);
    const auto& ergebnis = lauf.ergebnis;
    const auto& ui = lauf.ui;

    ASSERT_TRUE(ergebnis) << ergebnis.ergebnis.Meldung();
    ASSERT_EQ(ui.Meldungen().size(), 1u);
    EXPECT_EQ(ui.Ereignisse()[0].titel, "Fehler");
    EXPECT_EQ(ui.Meldungen()[0], "Fehler beim Laden des Dokumentes. Der Fehler wird ignoriert!   \n"
                                 "Grund: Das Endtag passt nicht zum Starttag\n"
                                 "Zeile: 3\n"
                                 "Zeichen: 24");
    const auto zeilen = Zeilen(ergebnis.datenbank);
    ASSERT_EQ(zeilen.size(), 2u);
    EXPECT_EQ(Zelle(zeilen[0], "w"), "eins");
    EXPECT_EQ(Zelle(zeilen[1], "w"), "zwö");
    EXPECT_EQ(Zelle(zeilen[1], "ä"), "x");
}

TEST(XmlStrukturLaden, DoctypeWirdAbgelehnt) {
    const std::vector<TextFall> fälle = {
        {"<?xml version=\"1.0\"?>\n<!DOCTYPE r [<!ENTITY x \"viel\">]>\n<r><a>&x;</a></r>",
         "internal entity"},
        {"<!DOCTYPE r SYSTEM \"file:///etc/passwd\"><r><a>1</a></r>", "external subset"},
        {"<!DOCTYPE r [<!ENTITY x SYSTEM \"file:///etc/passwd\">\n<r><a>&x;</a></r>",
         "declaration left open"},
    };
    for (const TextFall& fall : fälle) {
        const Lauf lauf(fall.inhalt, 2);
        const auto& meldungen = lauf.ui.Meldungen();

        EXPECT_FALSE(lauf.ergebnis) << fall.warum;
        ASSERT_EQ(meldungen.size(), 1u) << fall.warum;
        EXPECT_NE(meldungen[0].find("Dokumenttypdeklaration (DOCTYPE)"), std::string::npos)
            << meldungen[0];
        EXPECT_NE(meldungen[0].find(lauf.Datei().string()), std::string::npos) << fall.warum;
        EXPECT_EQ(lauf.ui.Stile(), std::vector<Stil>{Stil::Fehler}) << fall.warum;
        EXPECT_FALSE(lauf.DatenbankDa()) << fall.warum;
    }
}

TEST(XmlStrukturLaden, ZuVieleElementnamen) {
    test::TempOrdner ordner;
    const auto datei = ordner / "antwort.xml";
    const auto erzeugen = [&](int namen) {
        std::string text = "<r><m>";
        for (int i = 0; i < namen; ++i)
            text += "<e" + std::to_string(i) + ">1</e" + std::to_string(i) + ">";
        test::DateiSchreiben(datei, text + "</m></r>");
    };
    SkriptOberfläche ui;

    // m and 1995 value elements: 4 + 1996 = 2000 columns, the most a table has.
    erzeugen(1995);
    const auto passt = XmlStrukturLaden(datei, 2, false, false, ui);
    ASSERT_TRUE(passt) << passt.ergebnis.Meldung();
    EXPECT_EQ(Spalten(passt.datenbank).size(), 2000u);

    erzeugen(1996);
    const auto zuViel = XmlStrukturLaden(datei, 2, false, false, ui);
    EXPECT_FALSE(zuViel);
    ASSERT_EQ(ui.Meldungen().size(), 1u);
    EXPECT_EQ(ui.Meldungen()[0], "Die XML-Datei \"" + datei.string() +
                                     "\" enthält 1.997 verschiedene Elementnamen. Eine Tabelle "
                                     "kann höchstens 2.000 Spalten aufnehmen, mit diesen wären "
                                     "es 2.001. Die Datei wird nicht gelesen.   ");
    // The database of the first load is left as it was.
    EXPECT_EQ(Zeilen(passt.datenbank).size(), 1u);
}

TEST(XmlStrukturLaden, FehlendeDateiOhneMeldung) {
    test::TempOrdner ordner;
    SkriptOberfläche ui;

    const auto ergebnis = XmlStrukturLaden(ordner / "fehlt.xml", 0, false, true, ui);

    EXPECT_FALSE(ergebnis);
    EXPECT_TRUE(ui.Ereignisse().empty());
    EXPECT_TRUE(ergebnis.datenbank.empty());
}

TEST(XmlStrukturLaden, PfadBehältSeineSchreibweise) {
    test::TempOrdner ordner;
    const auto datei = ordner / "Gross" / "Antwort.XML";
    test::DateiSchreiben(datei, Ortsantwort());
    SkriptOberfläche ui;

    const auto ergebnis = XmlStrukturLaden(datei, 2, false, false, ui);

    ASSERT_TRUE(ergebnis) << ergebnis.ergebnis.Meldung();
    EXPECT_TRUE(std::filesystem::exists(ordner / "Gross" / "Antwort.sqlite"));
}

TEST(XmlStrukturLaden, Windows1252TextWirdGelesen) {
    const Lauf lauf("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
                    "<r><m><ort>M\xFCnster</ort></m></r>",
                    2);

    ASSERT_TRUE(lauf.ergebnis) << lauf.ergebnis.ergebnis.Meldung();
    const auto zeilen = Zeilen(lauf.ergebnis.datenbank);
    ASSERT_EQ(zeilen.size(), 1u);
    EXPECT_EQ(Zelle(zeilen[0], "ort"), "Münster");
}

} // namespace
} // namespace flurix::nas
