// The Excel, XML and Access files read back by readers we did not write: Debian's python3 with its
// zipfile and xml.etree (the scripts lie in tests/daten/export), and the sqlite3 shell. A missing
// judge skips its test visibly.

#include "export/speichern_unter.hpp"

#include "beispiel.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <utility>

namespace flurix::ausgabe {
namespace {

namespace fs = std::filesystem;
using Zellen = std::vector<std::vector<std::string>>;

// A judge's output split: rows end in RS (0x1E), cells end in US (0x1F).
Zellen Zerlegen(std::string_view ausgabe) {
    Zellen zeilen;
    std::vector<std::string> zeile;
    std::string zelle;
    for (const char c : ausgabe) {
        if (c == '\x1f')
            zeile.push_back(std::exchange(zelle, {}));
        else if (c == '\x1e')
            zeilen.push_back(std::exchange(zeile, {}));
        else
            zelle += c;
    }
    return zeilen;
}

// The cells the example table shows, visible columns in the order shown, captions first.
Zellen SichtbareZellen(const std::vector<std::size_t>& zeilen) {
    Zellen erwartet{{"Eigentümer", "Gemarkung", "Flur", "Flurstück", " "}};
    const Kataster k = test::Beispieltabelle();
    for (const std::size_t z : zeilen)
        erwartet.push_back({std::string(k.Zelle(z, 3)), std::string(k.Zelle(z, 0)), std::string(k.Zelle(z, 1)),
                            std::string(k.Zelle(z, 2)), std::string(k.Zelle(z, 5))});
    return erwartet;
}

class Unabhängig : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directories(ordner / "arbeit");
        if (!fs::exists("/usr/bin/python3"))
            GTEST_SKIP() << "/usr/bin/python3 fehlt: die Datei wird nicht von Python geprüft.";
    }
    // The table saved in the format, read by the python script: its rows, the last one popped
    // into `rest` when asked.
    Zellen Gelesen(const Kataster& k, Speicherformat format, std::string_view endung, std::string_view skript) {
        const fs::path datei = ordner / ("t" + std::string(endung));
        EXPECT_TRUE(ALBDatenSpeichernUnter(k, format, datei, umgebung, ui));
        const auto lauf = test::Ausführen("/usr/bin/python3 " + test::Wort(test::Testdaten() / "export" / skript) +
                                          " " + test::Wort(datei));
        EXPECT_EQ(lauf.status, 0) << "python3 konnte " << datei << " nicht lesen";
        return Zerlegen(lauf.ausgabe);
    }

    test::TempOrdner ordner;
    Kataster tabelle = test::Beispieltabelle();
    Speicherumgebung umgebung{ordner / "arbeit", Zielname::WieAngegeben, {}};
    SkriptOberfläche ui;
};

TEST_F(Unabhängig, XlsxGibtDieZellenAlsTextZurück) {
    for (const auto& [auswahl, zeilen] : {std::pair{std::vector<std::size_t>{}, std::vector<std::size_t>{0, 1, 2}},
                                          std::pair{std::vector<std::size_t>{2}, std::vector<std::size_t>{2}}}) {
        tabelle.AuswahlLeeren();
        for (const std::size_t z : auswahl)
            tabelle.Auswählen(z);
        Zellen gelesen = Gelesen(tabelle, Speicherformat::Excel, ".xlsx", "xlsx_leser.py");
        ASSERT_FALSE(gelesen.empty());
        // Every data cell carries the text format "@" (built-in number 49), so "007" stays "007"
        // when a user edits the sheet.
        EXPECT_EQ(gelesen.back(), std::vector<std::string>{"49"});
        gelesen.pop_back();
        EXPECT_EQ(gelesen, SichtbareZellen(zeilen));
    }
    EXPECT_TRUE(fs::is_empty(ordner / "arbeit")); // libxlsxwriter's scratch files are gone
    // Characters XML can't hold become "?"; blanks at both ends stay.
    Kataster k;
    k.SpalteHinzufügen({"A", "A"});
    k.ZeileHinzufügen(std::vector<std::string_view>{"a\x01z \xFF  führend"});
    k.ZeileHinzufügen(std::vector<std::string_view>{"  Leerzeichen  "});
    Zellen gelesen = Gelesen(k, Speicherformat::Excel, ".xlsx", "xlsx_leser.py");
    ASSERT_FALSE(gelesen.empty());
    gelesen.pop_back();
    EXPECT_EQ(gelesen, (Zellen{{"A"}, {"a?z ?  führend"}, {"  Leerzeichen  "}}));
}

TEST_F(Unabhängig, XmlWohlgeformtMitAllenZellen) {
    // Keys that no XML name can hold as they are.
    tabelle.Spalte(0).schlüssel = "1.Gemarkung";
    tabelle.Spalte(1).schlüssel = "Flur Nr";
    tabelle.Spalte(2).schlüssel = "a:b_x";
    tabelle.ZelleSetzen(1, 0, std::string("Steuer\x01zeichen \xFF"));
    Zellen gelesen = Gelesen(tabelle, Speicherformat::Xml, ".xml", "xml_leser.py");
    ASSERT_FALSE(gelesen.empty());
    EXPECT_EQ(gelesen.front(), std::vector<std::string>(5, "ok"));
    gelesen.erase(gelesen.begin());
    Zellen erwartet = SichtbareZellen({0, 1, 2});
    erwartet[2][1] = "Steuer?zeichen ?";
    EXPECT_EQ(gelesen, erwartet);
}

// The Access form: one text field per caption in the order shown, none for a blank caption,
// long values cut, rows as selected; read by the sqlite3 shell.
TEST(AccessUnabhängig, TabelleMitFeldernNachÜberschrift) {
    if (!test::ImSuchpfad("sqlite3"))
        GTEST_SKIP() << "sqlite3 fehlt (Paket sqlite3): die Access-Datei wird nicht geprüft.";
    test::TempOrdner ordner;
    fs::create_directories(ordner / "arbeit");
    Kataster tabelle = test::Beispieltabelle();
    tabelle.Spalte(1).überschrift = "Eigentümer"; // the caption of "Name" again
    tabelle.ZelleSetzen(0, 1, std::string(256, 'L'));
    tabelle.ZelleSetzen(1, 1, std::string(255, 'K'));
    tabelle.Auswählen(0);
    tabelle.Auswählen(1);
    const fs::path ziel = ordner / "ziel.sqlite";
    SkriptOberfläche ui;
    ASSERT_TRUE(ALBDatenSpeichernUnter(tabelle, Speicherformat::Access, ziel,
                                       {ordner / "arbeit", Zielname::WieAngegeben, {}}, ui));
    const std::string aufruf = "sqlite3 -batch -separator \"$(printf '\\037')\" -newline \"$(printf '\\037\\036')\" " +
                               test::Wort(ziel) + " ";
    const auto namen =
        test::Ausführen(aufruf + "\"SELECT group_concat(name, char(31)) FROM pragma_table_info('ACCESS')\"");
    const auto zeilen = test::Ausführen(aufruf + "\"SELECT * FROM ACCESS ORDER BY rowid\"");
    ASSERT_EQ(namen.status, 0);
    ASSERT_EQ(zeilen.status, 0);
    const Zellen gelesen = Zerlegen(namen.ausgabe + zeilen.ausgabe);
    EXPECT_EQ(gelesen, (Zellen{{"Eigentümer", "Gemarkung", "Eigentümer_2", "Flurstück"},
                               {"Meier & <Söhne> \"Erben\"", "Musterhausen", std::string(252, 'L') + "...",
                                "00231/0001"},
                               {"Tab\there$dollar", "Süd", std::string(255, 'K'), "00012/0000"}}));
    EXPECT_EQ(ui.LetzterStatus(2), "Datei " + ziel.string() + " erzeugt   ");
    EXPECT_TRUE(fs::is_empty(ordner / "arbeit")); // the scratch database in the working directory is gone
}

} // namespace
} // namespace flurix::ausgabe
