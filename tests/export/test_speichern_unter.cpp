#include "export/speichern_unter.hpp"

#include "beispiel.hpp"
#include "core/kataster_datei.hpp"
#include "export/tabellenschreiber.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

namespace flurix::ausgabe {
namespace {

namespace fs = std::filesystem;
using test::DateiLesen;
using test::DateiSchreiben;
using test::Fragen;
using Frageliste = std::vector<std::pair<std::string, std::string>>;

const std::string Spaltenfrage = "Es werden alle sichtbaren Datenspalten exportiert! Weiter?   ";

class SpeichernUnter : public ::testing::Test {
protected:
    Ergebnis Speichern(Speicherformat format, const fs::path& gewählt) {
        return ALBDatenSpeichernUnter(tabelle, format, gewählt, umgebung, ui);
    }

    test::TempOrdner ordner;
    Kataster tabelle = test::Beispieltabelle();
    Speicherumgebung umgebung{ordner / "arbeit", Zielname::Stamm, {}};
    SkriptOberfläche ui;
    void SetUp() override { fs::create_directories(ordner / "arbeit"); }
};

// The delimited text byte for byte (the command line's golden files hold the whole forms): the
// selected rows only, the visible columns in the order shown, Windows-1252 with "?" for what it
// lacks, a delimiter behind every field, line ends in a cell as blanks.
TEST_F(SpeichernUnter, TrennzeichentextDerAusgewähltenZeilen) {
    tabelle.Auswählen(2);
    tabelle.Auswählen(0);
    ASSERT_TRUE(Speichern(Speicherformat::TextTab, ordner / "liste.txt"));
    EXPECT_EQ(DateiLesen(ordner / "liste.txt"),
              "Eigent\xFCmer\tGemarkung\tFlur\tFlurst\xFC" "ck\t \t\r\n"
              "Meier & <S\xF6hne> \"Erben\"\tMusterhausen\t007\t00231/0001\t1\t\r\n"
              "Zeile1  Zeile2\t?\xF3" "d? \x80\t010\t00001/0000\t1\t\r\n");
    EXPECT_EQ(Fragen(ui), (Frageliste{{Spaltenfrage, "Export-Spaltentrenner: TAB"},
                                      {"Es werden alle (2) selektierten Datenzeilen ausgegeben! Weiter?   ", "Flurix"}}));
    EXPECT_EQ(ui.LetzterStatus(2), "Datei " + (ordner / "liste.txt").string() + " erzeugt   ");
    EXPECT_TRUE(ui.Meldungen().empty());
}

// Each format asks its questions; a No to any of them writes nothing.
TEST_F(SpeichernUnter, FragenJeFormatUndNeinSchreibtNichts) {
    struct Fall {
        Speicherformat format;
        std::string endung;
        Frageliste fragen;
    };
    const std::pair<std::string, std::string> zeilenfrage{
        "Es werden alle (1) selektierten Datenzeilen ausgegeben! Weiter?   ", "Flurix"};
    const Fall fälle[] = {
        {Speicherformat::TextTab, ".txt", {{Spaltenfrage, "Export-Spaltentrenner: TAB"}, zeilenfrage}},
        {Speicherformat::TextDollar, ".txt", {{Spaltenfrage, "Export-Spaltentrenner: $"}, zeilenfrage}},
        {Speicherformat::Excel, ".xlsx", {{Spaltenfrage, "Flurix"}, zeilenfrage}},
        {Speicherformat::Xml, ".xml", {{Spaltenfrage, "Flurix"}, zeilenfrage}},
        {Speicherformat::Access, ".mdb", {{Spaltenfrage, "Flurix"}, zeilenfrage}},
        {Speicherformat::Flurix, ".fil", {{"Es werden alle Daten exportiert! Weiter?   ", "Flurix"}}},
    };
    tabelle.Auswählen(1);
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.endung);
        EXPECT_EQ(Endung(f.format), f.endung);
        const fs::path ziel = ordner / ("ausgabe" + f.endung);
        fs::remove(ziel); // TAB and $ share the name
        for (std::size_t nein = 0; nein < f.fragen.size(); ++nein) {
            std::deque<Antwort> antworten(nein, Antwort::Ja);
            antworten.push_back(Antwort::Nein);
            SkriptOberfläche skript(antworten);
            const Ergebnis e = ALBDatenSpeichernUnter(tabelle, f.format, ziel, umgebung, skript);
            EXPECT_EQ(e.status(), Ergebnis::Status::Abgebrochen);
            EXPECT_EQ(Fragen(skript), Frageliste(f.fragen.begin(), f.fragen.begin() + nein + 1));
            EXPECT_FALSE(fs::exists(ziel));
        }
        SkriptOberfläche ja;
        EXPECT_TRUE(ALBDatenSpeichernUnter(tabelle, f.format, ziel, umgebung, ja));
        EXPECT_EQ(Fragen(ja), f.fragen);
        EXPECT_TRUE(fs::exists(ziel));
        EXPECT_EQ(ja.LetzterStatus(2), "Datei " + ziel.string() + " erzeugt   ");
    }
}

TEST_F(SpeichernUnter, LeereTabelleWarntOhneFrage) {
    Kataster leer;
    leer.SpalteHinzufügen({"Gemarkung", "Gemarkung"});
    const Ergebnis e =
        ALBDatenSpeichernUnter(leer, Speicherformat::Xml, ordner / "x.xml", umgebung, ui);
    EXPECT_FALSE(e);
    EXPECT_EQ(ui.Meldungen(),
              std::vector<std::string>{"In der ALB-Datei wurden keine Flurstücke vorgefunden!   "});
    EXPECT_EQ(ui.Ereignisse().front().titel, "Flurix");
    EXPECT_EQ(ui.Stile(), std::vector<Stil>{Stil::Warnung});
    EXPECT_TRUE(Fragen(ui).empty());
    EXPECT_FALSE(fs::exists(ordner / "x.xml"));
}

TEST_F(SpeichernUnter, VorhandeneDateiNurNachJaErsetzt) {
    const fs::path ziel = ordner / "alt.xml";
    DateiSchreiben(ziel, "alt");
    ui.Antworten({Antwort::Nein});
    EXPECT_EQ(Speichern(Speicherformat::Xml, ziel).status(), Ergebnis::Status::Abgebrochen);
    EXPECT_EQ(Fragen(ui), (Frageliste{{"Datei " + ziel.string() + " ersetzen?   ",
                                       "Datei schon vorhanden!"}}));
    EXPECT_EQ(DateiLesen(ziel), "alt");

    SkriptOberfläche ja({Antwort::Ja});
    EXPECT_TRUE(ALBDatenSpeichernUnter(tabelle, Speicherformat::Xml, ziel, umgebung, ja));
    EXPECT_TRUE(DateiLesen(ziel).starts_with("<?xml"));
}

// A path that can't be deleted (here a folder with content, which fails for root too) is "in use".
TEST_F(SpeichernUnter, BelegteDateiMeldetZugriffVerweigert) {
    const fs::path ziel = ordner / "belegt.txt";
    DateiSchreiben(ziel / "inhalt", "x");
    const Ergebnis e = Speichern(Speicherformat::TextTab, ziel);
    EXPECT_FALSE(e);
    ASSERT_EQ(ui.Meldungen().size(), 1u);
    EXPECT_EQ(ui.Meldungen()[0], "Eingabedatei " + ziel.string() +
                                     " hat den Zugriff verweigert oder ist in Bearbeitung!?   ");
    EXPECT_EQ(ui.Ereignisse().back().titel, "Datei in Bearbeitung!?");
    EXPECT_EQ(ui.Stile(), std::vector<Stil>{Stil::Warnung});
    EXPECT_TRUE(fs::exists(ziel / "inhalt"));
}

// The stem is the path up to the last dot of the file name; a folder's dot stays.
TEST_F(SpeichernUnter, StammBisZumLetztenPunktDesDateinamens) {
    struct Fall {
        std::string gewählt;
        Speicherformat format;
        std::string geschrieben;
    };
    const std::string o = ordner.pfad().string();
    const Fall fälle[] = {
        {o + "/a.b/daten.txt", Speicherformat::TextTab, o + "/a.b/daten.txt"},
        {o + "/a.b/daten.v2.xls", Speicherformat::Excel, o + "/a.b/daten.v2.xlsx"},
        {o + "/a.b/.liste", Speicherformat::TextDollar, o + "/a.b/.liste.txt"},
        {o + "/daten.xml.bak", Speicherformat::Xml, o + "/daten.xml.xml"},
        {o + "/ohne", Speicherformat::Flurix, o + "/ohne.fil"},
        {o + "/mappe.xls", Speicherformat::Excel, o + "/mappe.xlsx"},
    };
    fs::create_directories(ordner / "a.b");
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.gewählt);
        EXPECT_EQ(Speicherstamm(f.gewählt) + std::string(Endung(f.format)), f.geschrieben);
        EXPECT_TRUE(Speichern(f.format, f.gewählt));
        EXPECT_TRUE(fs::exists(f.geschrieben));
        if (f.gewählt != f.geschrieben) {
            EXPECT_FALSE(fs::exists(f.gewählt));
        }
    }
    // The command line writes exactly the path it names.
    umgebung.zielname = Zielname::WieAngegeben;
    EXPECT_TRUE(Speichern(Speicherformat::Xml, o + "/a.b/genau.xml"));
    EXPECT_TRUE(fs::exists(ordner / "a.b" / "genau.xml"));
}

TEST_F(SpeichernUnter, OrdnerFehltOderNichtBeschreibbar) {
    const fs::path fehlt = ordner / "fehlt" / "x.txt";
    EXPECT_FALSE(Speichern(Speicherformat::TextTab, fehlt));
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{
                                  "Die Datei " + fehlt.string() +
                                  " kann nicht erzeugt werden: Der Ordner " +
                                  (ordner / "fehlt").string() +
                                  " ist nicht vorhanden oder nicht beschreibbar!   "});
    EXPECT_TRUE(Fragen(ui).empty());

    if (::geteuid() == 0)
        GTEST_SKIP() << "Als root ist jeder Ordner beschreibbar: der Fall ohne Schreibrecht wird "
                        "übersprungen.";
    const fs::path gesperrt = ordner / "gesperrt";
    fs::create_directories(gesperrt);
    fs::permissions(gesperrt, fs::perms::owner_read | fs::perms::owner_exec);
    SkriptOberfläche skript;
    EXPECT_FALSE(ALBDatenSpeichernUnter(tabelle, Speicherformat::Xml, gesperrt / "x.xml", umgebung,
                                        skript));
    EXPECT_EQ(skript.Meldungen(),
              std::vector<std::string>{"Die Datei " + (gesperrt / "x.xml").string() +
                                       " kann nicht erzeugt werden: Der Ordner " +
                                       gesperrt.string() +
                                       " ist nicht vorhanden oder nicht beschreibbar!   "});
    EXPECT_FALSE(fs::exists(gesperrt / "x.xml"));
}

TEST_F(SpeichernUnter, GeografNochNichtVerfügbarOderÜbergeben) {
    EXPECT_FALSE(Speichern(Speicherformat::Geograf, ordner / "x.out"));
    EXPECT_EQ(ui.Meldungen(),
              std::vector<std::string>{
                  "Der GEOgraf-Export ist in dieser Version von Flurix noch nicht verfügbar!   "});
    EXPECT_FALSE(fs::exists(ordner / "x.out"));

    fs::path übergeben;
    umgebung.geograf = [&](const Kataster& k, const fs::path& pfad) {
        EXPECT_EQ(&k, &tabelle);
        übergeben = pfad;
        return Ergebnis::Ok();
    };
    EXPECT_TRUE(Speichern(Speicherformat::Geograf, ordner / "x.out"));
    EXPECT_EQ(übergeben, ordner / "x.out");
}

// The saved table keeps every row and column whatever is selected or hidden.
TEST_F(SpeichernUnter, FilIgnoriertAuswahlUndVerliertNichts) {
    tabelle.Auswählen(1);
    tabelle.ZelleSetzen(0, 4, std::string("a\\b\tc\nd\re \x01 \xFF"));
    ASSERT_TRUE(Speichern(Speicherformat::Flurix, ordner / "t.fil"));
    Kataster zurück;
    KatasterLaden(zurück, ordner / "t.fil");
    ASSERT_EQ(zurück.Spaltenzahl(), tabelle.Spaltenzahl());
    ASSERT_EQ(zurück.Zeilenzahl(), tabelle.Zeilenzahl());
    EXPECT_EQ(zurück.Anzeigereihenfolge(), tabelle.Anzeigereihenfolge());
    for (std::size_t s = 0; s < tabelle.Spaltenzahl(); ++s) {
        EXPECT_EQ(zurück.Spalte(s).schlüssel, tabelle.Spalte(s).schlüssel);
        EXPECT_EQ(zurück.Spalte(s).überschrift, tabelle.Spalte(s).überschrift);
        EXPECT_EQ(zurück.Spalte(s).breite, tabelle.Spalte(s).breite);
        EXPECT_EQ(zurück.Spalte(s).sichtbar, tabelle.Spalte(s).sichtbar);
        for (std::size_t z = 0; z < tabelle.Zeilenzahl(); ++z)
            EXPECT_EQ(zurück.Zelle(z, s), tabelle.Zelle(z, s)) << z << "/" << s;
    }
}

TEST(AccessWert, Bis255ZeichenGanzDarüber252UndPunkte) {
    struct Fall {
        std::string wert;
        std::string erwartet;
    };
    const Fall fälle[] = {
        {"", ""},
        {std::string(255, 'a'), std::string(255, 'a')},
        {std::string(256, 'a'), std::string(252, 'a') + "..."},
        {std::string(300, 'b'), std::string(252, 'b') + "..."},
        // Characters, not bytes: 255 umlauts are 510 bytes and stay whole.
        {[] { std::string s; for (int i = 0; i < 255; ++i) s += "ä"; return s; }(),
         [] { std::string s; for (int i = 0; i < 255; ++i) s += "ä"; return s; }()},
        {[] { std::string s; for (int i = 0; i < 256; ++i) s += "€"; return s; }(),
         [] { std::string s; for (int i = 0; i < 252; ++i) s += "€"; return s + "..."; }()},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(AccessWert(f.wert), f.erwartet) << f.wert.size();
}

TEST(ElementName, SchlüsselDieKeinXmlNameSindWerdenMaskiert) {
    struct Fall {
        std::string schlüssel;
        std::string name;
    };
    const Fall fälle[] = {
        {"Gemarkung", "Gemarkung"},
        {"Flurstück", "Flurstück"},
        {"Anteil Grundstück", "Anteil_x0020_Grundstück"},
        {"1.Name", "_x0031_.Name"},
        {"a:b", "a_x003A_b"},
        {"_x", "_x005F_x"},
        {"a_b", "a_b"},
        {"Fläche/ha", "Fläche_x002F_ha"},
        {"€", "€"},
        {"a×b", "a_x00D7_b"},
        {"a\xFF", "a_x00FF_"},
        {"𝄞", "𝄞"},
        {"\xF3\xB0\x80\x80", "_x000F0000_"},
        {"", "_"},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(ElementName(f.schlüssel), f.name) << f.schlüssel;
}

// The report (its form is in the command line's golden files): every row whatever is selected,
// no hidden column, and a message when its folder can't be made.
TEST_F(SpeichernUnter, BerichtHtmlAlleZeilenOhneVerborgeneSpalte) {
    tabelle.Auswählen(0);
    const fs::path datei = ordner / "daten" / "report" / "report.htm";
    ASSERT_TRUE(CreateGridReport(tabelle, datei, ui));
    const std::string html = DateiLesen(datei);
    EXPECT_NE(html.find("<footer>3 Zeilen</footer>"), std::string::npos);
    EXPECT_NE(html.find("<td>Zeile1<br>Zeile2</td><td>Łódź €</td>"), std::string::npos);
    EXPECT_EQ(html.find("Geheim"), std::string::npos);
    EXPECT_EQ(BerichtsdateiStandard().filename(), "report.htm");

    DateiSchreiben(ordner / "datei", "x"); // a file in its way
    SkriptOberfläche skript;
    EXPECT_FALSE(CreateGridReport(tabelle, ordner / "datei" / "report" / "report.htm", skript));
    ASSERT_EQ(skript.Meldungen().size(), 1u);
    EXPECT_TRUE(skript.Meldungen()[0].starts_with(
        "Der Bericht " + (ordner / "datei" / "report" / "report.htm").string() + " kann nicht erzeugt werden: "));
}

} // namespace
} // namespace flurix::ausgabe
