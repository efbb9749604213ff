// "Speichern unter": the delimited text byte for byte, every format's questions and the refusals
// against a golden transcript, the saved table read back whole, the Access and XML names, the report.

#include "export/speichern_unter.hpp"

#include "beispiel.hpp"
#include "core/kataster_datei.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "export/tabellenschreiber.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <set>
#include <unistd.h>

namespace flurix::ausgabe {
namespace {

namespace fs = std::filesystem;
using test::DateiLesen;
using test::DateiSchreiben;

// The delimited text byte for byte (the command line's golden files hold the whole forms): the
// selected rows only, the visible columns in the order shown, Windows-1252 with "?" for what it
// lacks, a delimiter behind every field, line ends in a cell as blanks.
TEST(SpeichernUnter, TrennzeichentextDerAusgewähltenZeilen) {
    test::TempOrdner ordner;
    Kataster tabelle = test::Beispieltabelle();
    tabelle.Auswählen(2);
    tabelle.Auswählen(0);
    SkriptOberfläche ui;
    ASSERT_TRUE(ALBDatenSpeichernUnter(tabelle, Speicherformat::TextTab, ordner / "liste.txt",
                                       {ordner.pfad(), Zielname::Stamm, {}}, ui));
    EXPECT_EQ(DateiLesen(ordner / "liste.txt"),
              "Eigent\xFCmer\tGemarkung\tFlur\tFlurst\xFC" "ck\t \t\r\n"
              "Meier & <S\xF6hne> \"Erben\"\tMusterhausen\t007\t00231/0001\t1\t\r\n"
              "Zeile1  Zeile2\t?\xF3" "d? \x80\t010\t00001/0000\t1\t\r\n");
}

// One save in a folder of its own (with the folders "arbeit" and "a.b"): the result, what the UI
// was asked and told (the folder written as "<ordner>"), and the files made or gone.
struct Speichern {
    Speicherformat format;
    std::string ziel;
    std::deque<Antwort> antworten;
    std::function<void(const fs::path&, Kataster&, Speicherumgebung&)> vorher = {};
};

std::string Protokoll(const Speichern& s) {
    test::TempOrdner ordner;
    fs::create_directories(ordner / "arbeit");
    fs::create_directories(ordner / "a.b");
    Kataster tabelle = test::Beispieltabelle();
    Speicherumgebung umgebung{ordner / "arbeit", Zielname::Stamm, {}};
    if (s.vorher)
        s.vorher(ordner.pfad(), tabelle, umgebung);
    std::set<fs::path> davor;
    for (const auto& e : fs::recursive_directory_iterator(ordner.pfad()))
        davor.insert(e.path());
    SkriptOberfläche ui(s.antworten);
    const Ergebnis e = ALBDatenSpeichernUnter(tabelle, s.format, ordner / s.ziel, umgebung, ui);
    std::string text = e ? "Ok\n" : e.status() == Ergebnis::Status::Abgebrochen ? "Abgebrochen\n" : "Fehler\n";
    for (const auto& ereignis : ui.Ereignisse())
        if (ereignis.art != Ereignis::Art::Status)
            text += (ereignis.art == Ereignis::Art::Frage ? "Frage [" : "Meldung [") + ereignis.titel + "]: " +
                    ereignis.text + "\n";
    for (const auto stil : ui.Stile())
        text += std::string("Stil ") + std::array{"Information", "Warnung", "Fehler", "Frage"}[std::size_t(stil)] + "\n";
    text += "Status 2: " + ui.LetzterStatus(2) + "\n";
    for (const auto& neu : fs::recursive_directory_iterator(ordner.pfad()))
        if (!davor.erase(neu.path()))
            text += "neu: " + fs::relative(neu.path(), ordner.pfad()).string() + "\n";
    for (const auto& weg : davor)
        text += "weg: " + fs::relative(weg, ordner.pfad()).string() + "\n";
    return Ersetzen(text, ordner.pfad().string(), "<ordner>");
}

// Each format asks its questions (one row selected), a No to any of them writes nothing; an empty
// table, an existing file (No, then Yes), a path in use, a missing folder, GEOgraf missing or
// handed over; the stem up to the last dot of the file name (a folder's dot stays), or the path
// exactly as the command line names it.
TEST(SpeichernUnter, FragenUndMeldungenWieImProtokoll) {
    const auto Auswahl = [](const fs::path&, Kataster& k, Speicherumgebung&) { k.Auswählen(1); };
    std::string protokoll;
    for (const auto format : {Speicherformat::TextTab, Speicherformat::TextDollar, Speicherformat::Excel,
                              Speicherformat::Xml, Speicherformat::Access, Speicherformat::Flurix}) {
        std::deque<Antwort> antworten{Antwort::Nein};
        for (std::string ergebnis; !ergebnis.starts_with("Ok"); antworten.push_front(Antwort::Ja)) {
            ergebnis = Protokoll({format, "ausgabe", antworten, Auswahl});
            protokoll += "%% Format " + std::to_string(static_cast<int>(format)) + ", " +
                         std::to_string(antworten.size() - 1) + " mal Ja\n" + ergebnis;
            ASSERT_LT(antworten.size(), 5u);
        }
    }
    const auto Vorhanden = [](const fs::path& o, Kataster&, Speicherumgebung&) {
        DateiSchreiben(o / "alt.xml", "alt");
    };
    const auto Geograf = [](const fs::path&, Kataster&, Speicherumgebung& u) {
        u.geograf = [](const Kataster& k, const fs::path& pfad) {
            DateiSchreiben(pfad, std::to_string(k.Zeilenzahl()) + " Zeilen");
            return Ergebnis::Ok();
        };
    };
    const std::pair<const char*, Speichern> fälle[] = {
        {"leere Tabelle", {Speicherformat::Xml, "x.xml", {}, [](const fs::path&, Kataster& k, Speicherumgebung&) {
             k.ZeilenLeeren();
         }}},
        {"vorhandene Datei, Nein", {Speicherformat::Xml, "alt.xml", {Antwort::Nein}, Vorhanden}},
        {"vorhandene Datei, Ja", {Speicherformat::Xml, "alt.xml", {Antwort::Ja}, Vorhanden}},
        {"Ordner mit Inhalt als Ziel: belegt", {Speicherformat::TextTab, "belegt.txt", {},
             [](const fs::path& o, Kataster&, Speicherumgebung&) {
                 DateiSchreiben(o / "belegt.txt" / "inhalt", "x");
             }}},
        {"Ordner fehlt", {Speicherformat::TextTab, "fehlt/x.txt", {}}},
        {"GEOgraf fehlt", {Speicherformat::Geograf, "x.out", {}}},
        {"GEOgraf übergeben", {Speicherformat::Geograf, "x.out", {}, Geograf}},
        {"Stamm a.b/daten.txt", {Speicherformat::TextTab, "a.b/daten.txt", {}}},
        {"Stamm a.b/daten.v2.xls", {Speicherformat::Excel, "a.b/daten.v2.xls", {}}},
        {"Stamm a.b/.liste", {Speicherformat::TextDollar, "a.b/.liste", {}}},
        {"Stamm daten.xml.bak", {Speicherformat::Xml, "daten.xml.bak", {}}},
        {"Stamm ohne Punkt", {Speicherformat::Flurix, "ohne", {}}},
        {"Stamm mappe.xls", {Speicherformat::Excel, "mappe.xls", {}}},
        {"wie angegeben", {Speicherformat::Xml, "a.b/genau.txt", {},
             [](const fs::path&, Kataster&, Speicherumgebung& u) { u.zielname = Zielname::WieAngegeben; }}},
    };
    for (const auto& [name, speichern] : fälle)
        protokoll += std::string("%% ") + name + "\n" + Protokoll(speichern);
    EXPECT_EQ(test::GoldenVergleich(protokoll, test::Testdaten() / "export" / "speichern_unter.txt"), "");
    EXPECT_EQ(Speicherstamm("/a.b/daten.v2.xls"), "/a.b/daten.v2");
}

TEST(SpeichernUnter, OrdnerOhneSchreibrecht) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "Als root ist jeder Ordner beschreibbar: der Fall ohne Schreibrecht wird übersprungen.";
    test::TempOrdner ordner;
    const fs::path gesperrt = ordner / "gesperrt";
    fs::create_directories(gesperrt);
    fs::permissions(gesperrt, fs::perms::owner_read | fs::perms::owner_exec);
    SkriptOberfläche ui;
    EXPECT_FALSE(ALBDatenSpeichernUnter(test::Beispieltabelle(), Speicherformat::Xml, gesperrt / "x.xml",
                                       {ordner.pfad(), Zielname::Stamm, {}}, ui));
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{"Die Datei " + (gesperrt / "x.xml").string() +
                                  " kann nicht erzeugt werden: Der Ordner " + gesperrt.string() +
                                  " ist nicht vorhanden oder nicht beschreibbar!   "});
    EXPECT_FALSE(fs::exists(gesperrt / "x.xml"));
}

// The saved table keeps every row and column whatever is selected or hidden.
TEST(SpeichernUnter, FilIgnoriertAuswahlUndVerliertNichts) {
    test::TempOrdner ordner;
    Kataster tabelle = test::Beispieltabelle();
    tabelle.Auswählen(1);
    tabelle.ZelleSetzen(0, 4, std::string("a\\b\tc\nd\re \x01 \xFF"));
    SkriptOberfläche ui;
    ASSERT_TRUE(ALBDatenSpeichernUnter(tabelle, Speicherformat::Flurix, ordner / "t.fil",
                                       {ordner.pfad(), Zielname::Stamm, {}}, ui));
    Kataster zurück;
    KatasterLaden(zurück, ordner / "t.fil");
    EXPECT_EQ(test::Abbild(zurück), test::Abbild(tabelle));
}

TEST(AccessWert, Bis255ZeichenGanzDarüber252UndPunkte) {
    const auto Mal = [](int n, std::string_view s) {
        std::string aus;
        for (int i = 0; i < n; ++i)
            aus += s;
        return aus;
    };
    // Characters, not bytes: 255 umlauts are 510 bytes and stay whole.
    const std::pair<std::string, std::string> fälle[] = {{"", ""}, {Mal(255, "a"), Mal(255, "a")},
        {Mal(256, "a"), Mal(252, "a") + "..."}, {Mal(300, "b"), Mal(252, "b") + "..."},
        {Mal(255, "ä"), Mal(255, "ä")}, {Mal(256, "€"), Mal(252, "€") + "..."}};
    for (const auto& [wert, erwartet] : fälle)
        EXPECT_EQ(AccessWert(wert), erwartet) << wert.size();
}

TEST(ElementName, SchlüsselDieKeinXmlNameSindWerdenMaskiert) {
    const std::pair<std::string, std::string> fälle[] = {
        {"Gemarkung", "Gemarkung"}, {"Flurstück", "Flurstück"}, {"Anteil Grundstück", "Anteil_x0020_Grundstück"},
        {"1.Name", "_x0031_.Name"}, {"a:b", "a_x003A_b"}, {"_x", "_x005F_x"}, {"a_b", "a_b"},
        {"Fläche/ha", "Fläche_x002F_ha"}, {"€", "€"}, {"a×b", "a_x00D7_b"}, {"a\xFF", "a_x00FF_"},
        {"𝄞", "𝄞"}, {"\xF3\xB0\x80\x80", "_x000F0000_"}, {"", "_"}};
    for (const auto& [schlüssel, name] : fälle)
        EXPECT_EQ(ElementName(schlüssel), name) << schlüssel;
}

// The report (its form is in the command line's golden files): every row whatever is selected,
// no hidden column, and a message when its folder can't be made.
TEST(SpeichernUnter, BerichtHtmlAlleZeilenOhneVerborgeneSpalte) {
    test::TempOrdner ordner;
    Kataster tabelle = test::Beispieltabelle();
    tabelle.Auswählen(0);
    SkriptOberfläche ui;
    ASSERT_TRUE(CreateGridReport(tabelle, ordner / "daten" / "report" / "report.htm", ui));
    const std::string html = DateiLesen(ordner / "daten" / "report" / "report.htm");
    EXPECT_NE(html.find("<footer>3 Zeilen</footer>"), std::string::npos);
    EXPECT_NE(html.find("<td>Zeile1<br>Zeile2</td><td>Łódź €</td>"), std::string::npos);
    EXPECT_EQ(html.find("Geheim"), std::string::npos);
    EXPECT_EQ(BerichtsdateiStandard().filename(), "report.htm");
    DateiSchreiben(ordner / "datei", "x"); // a file in its way
    EXPECT_FALSE(CreateGridReport(tabelle, ordner / "datei" / "report" / "report.htm", ui));
    ASSERT_EQ(ui.Meldungen().size(), 1u);
    EXPECT_TRUE(ui.Meldungen()[0].starts_with(
        "Der Bericht " + (ordner / "datei" / "report" / "report.htm").string() + " kann nicht erzeugt werden: "));
}

} // namespace
} // namespace flurix::ausgabe
