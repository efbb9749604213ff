#include "import/wldge_komplett.hpp"

#include "core/cp1252.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "import/datenladen.hpp"
#include "wldge_satz_bauer.hpp"

#include <gtest/gtest.h>

#include <map>

namespace flurix::import {
namespace {

using test::Datei;
using test::Kopf;
using test::Satz;

// Owner lines of block 2: a new owner with its name, birth date, street and town.
std::vector<std::string> Eigentümer(std::string_view bestand, std::string_view position,
                                    char anrede, std::string_view name, std::string_view ort) {
    const auto zeile = [&](char nr) {
        return Satz('2', bestand, '1').Setze(28, position).Setze(48, std::string(1, nr));
    };
    return {zeile('0').Setze(45, std::string(1, anrede)).Setze(50, "01").Setze(53, "1/2").Text(),
            zeile('1').Setze(49, name).Text(),
            zeile('2').Setze(49, "geb. Muster").Setze(91, "12.08.1964").Text(),
            zeile('3').Setze(49, "Musterweg  3").Text(),
            zeile('4').Setze(49, ort).Text()};
}

std::string Flurstück(std::string_view zähler, std::string_view fläche) {
    return Satz('3', "051234-001-" + std::string(zähler) + "/000", 'B')
        .Setze(25, "A")
        .Setze(34, "2001/00123-00")
        .Setze(84, fläche)
        .Setze(95, "07")
        .Text();
}

std::string Buchung(std::string_view zähler, std::string_view blatt, std::string_view bvnr) {
    return Satz('3', "051234-001-" + std::string(zähler) + "/000", 'X')
        .Setze(33, "051234-" + std::string(blatt))
        .Setze(47, bvnr)
        .Setze(56, "1")
        .Text();
}

class WldgeKomplettTest : public ::testing::Test {
protected:
    Ergebnis Lesen(const std::vector<std::string>& zeilen) {
        test::DateiSchreiben(ordner / "kreis.wldge", Datei(zeilen));
        umgebung.arbeitsverzeichnis = ordner.pfad();
        return WldgeKomplettLesen(ordner / "kreis.wldge", optionen, umgebung, kataster, ui, &bericht);
    }
    // The rows as "key=value" of the chosen columns, in table order.
    std::vector<std::map<std::string, std::string>> Zeilen(std::initializer_list<const char*> spalten) {
        std::vector<std::map<std::string, std::string>> zeilen;
        for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z) {
            auto& zeile = zeilen.emplace_back();
            for (const char* s : spalten)
                zeile[s] = std::string(kataster.Zelle(z, s));
        }
        return zeilen;
    }

    test::TempOrdner ordner;
    ImportOptionen optionen;
    WldgeKomplettUmgebung umgebung;
    Kataster kataster;
    SkriptOberfläche ui;
    WldgeKomplettBericht bericht;
};

TEST_F(WldgeKomplettTest, FlurstückMitZweiEigentümernGibtZweiZeilen) {
    std::vector<std::string> zeilen{Kopf("32")};
    for (auto& z : Eigentümer("051234-000123", "0001.00", '1', "Mustermann, Max, , Dr.", "Musterstadt"))
        zeilen.push_back(z);
    for (auto& z : Eigentümer("051234-000123", "0002.00", '2', "Mustermann, Erika, Dr.", "Nordstadt"))
        zeilen.push_back(z);
    zeilen.push_back(Flurstück("00042", "000000512"));
    zeilen.push_back(Buchung("00042", "000123", "0001"));
    zeilen.push_back(Satz('9', "", 'Z').Setze(30, "0000010").Setze(37, "0000001").Setze(44, "0000001").Text());
    ASSERT_TRUE(Lesen(zeilen)) << (ui.Meldungen().empty() ? "" : ui.Meldungen().back());

    const auto rows = Zeilen({"Flurstück", "Fläche", "Eigentümerposition", "Name", "Anredekennung",
                              "Namenszusatz", "Ort", "Land", "Land_aus_Bestandsdaten",
                              "IDlfd_Nr_aus_Bestandsdaten", "Grundbuchblatt", "checkdruck"});
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].at("Flurstück"), "00042/000");
    EXPECT_EQ(rows[1].at("Flurstück"), "00042/000");
    EXPECT_EQ(rows[0].at("Fläche"), "000000512");
    EXPECT_EQ(rows[0].at("Eigentümerposition"), "0001");
    EXPECT_EQ(rows[1].at("Eigentümerposition"), "0002");
    EXPECT_EQ(rows[0].at("Name"), "Dr. Mustermann, Max");
    EXPECT_EQ(rows[1].at("Name"), "Mustermann, Erika, Dr."); // two commas: as it stands
    EXPECT_EQ(rows[0].at("Anredekennung"), "Herrn");
    EXPECT_EQ(rows[1].at("Anredekennung"), "Frau");
    EXPECT_EQ(rows[0].at("Namenszusatz"), "geb. Muster 12.08.1964");
    EXPECT_EQ(rows[1].at("Ort"), "Nordstadt");
    EXPECT_EQ(rows[0].at("Land"), "05");
    EXPECT_EQ(rows[0].at("Land_aus_Bestandsdaten"), "05");
    EXPECT_EQ(rows[0].at("IDlfd_Nr_aus_Bestandsdaten"), "2"); // ids grow by two
    EXPECT_EQ(rows[1].at("IDlfd_Nr_aus_Bestandsdaten"), "4");
    EXPECT_EQ(rows[0].at("Grundbuchblatt"), "000123");
    EXPECT_EQ(rows[0].at("checkdruck"), "");
    EXPECT_EQ(bericht.flurstücke, "1");
    EXPECT_EQ(bericht.bestände, "1");
    EXPECT_EQ(ui.LetzterStatus(4), "ALB-Zeilen: 2, Flurstücke: 1, Bestände: 1   ");
    EXPECT_EQ(ui.LetzterStatus(3), "Datenbank wurde erstellt   ");
    EXPECT_FALSE(std::filesystem::exists(ordner / "tmp_flurix"));
    EXPECT_TRUE(ui.Meldungen().empty());
}

TEST_F(WldgeKomplettTest, NamenUmdrehenUndFlurstückAufZweiBlättern) {
    optionen.nameUmdrehen = true;
    std::vector<std::string> zeilen{Kopf("32")};
    for (auto& z : Eigentümer("051234-000123", "0001.00", '1', "Mustermann, Max, , Dr.", "A"))
        zeilen.push_back(z);
    for (auto& z : Eigentümer("051234-000456", "0001.00", '3', "Muster GmbH", "B"))
        zeilen.push_back(z);
    zeilen.push_back(Flurstück("00042", "000000512"));
    zeilen.push_back(Satz('3', "051234-001-00042/000", 'G').Setze(31, "051234000001").Setze(43, "00100").Setze(49, "3").Text());
    zeilen.push_back(Buchung("00042", "000123", "0001"));
    zeilen.push_back(Buchung("00042", "000456", "0002"));
    ASSERT_TRUE(Lesen(zeilen));
    const auto rows = Zeilen({"Name", "Grundbuchblatt", "BVNR", "Hausnummer", "IDlfd_Nr", "Anredekennung"});
    ASSERT_EQ(rows.size(), 2u);
    std::map<std::string, std::map<std::string, std::string>> nachBlatt;
    for (const auto& r : rows)
        nachBlatt[r.at("Grundbuchblatt")] = r;
    EXPECT_EQ(nachBlatt["000123"].at("Name"), "Dr. Max Mustermann");
    EXPECT_EQ(nachBlatt["000123"].at("BVNR"), "0001");
    EXPECT_EQ(nachBlatt["000456"].at("Name"), "Muster GmbH");
    EXPECT_EQ(nachBlatt["000456"].at("BVNR"), "0002");
    EXPECT_EQ(nachBlatt["000456"].at("Anredekennung"), "Firma");
    // the copy carries the parcel data and the next id
    EXPECT_EQ(nachBlatt["000456"].at("Hausnummer"), "3");
    EXPECT_EQ(nachBlatt["000123"].at("IDlfd_Nr"), "1");
    EXPECT_EQ(nachBlatt["000456"].at("IDlfd_Nr"), "2");
    EXPECT_EQ(bericht.flurstücke, "0"); // no trailer
}

TEST_F(WldgeKomplettTest, SchlüsseltexteDerBlöckeSiebenBisNeun) {
    std::vector<std::string> zeilen{Kopf("32")};
    for (auto& z : Eigentümer("051234-000123", "0001.00", '1', "Muster, Max, , ", "A"))
        zeilen.push_back(z);
    zeilen.push_back(Satz('2', "051234-000123", '2').Setze(31, "01").Setze(34, "Erben, Erbengemeinschaft").Text());
    zeilen.push_back(Satz('2', "051234-000123", '8').Setze(31, "01").Setze(34, "Keller O'Brien").Text());
    zeilen.push_back(Flurstück("00042", "000000512"));
    zeilen.push_back(Satz('3', "051234-001-00042/000", 'G').Setze(31, "051234000001").Setze(43, "00100").Text());
    zeilen.push_back(Satz('3', "051234-001-00042/000", 'G').Setze(31, "051234000001").Setze(43, "00200").Text());
    zeilen.push_back(Satz('3', "051234-001-00042/000", 'K').Setze(34, "12-345 0000512").Setze(41, "0000512").Text());
    zeilen.push_back(Satz('3', "051234-001-00042/000", 'M').Setze(34, "32-101 0000500").Setze(41, "0000500").Setze(49, "L 4 V").Setze(60, "045").Setze(64, "050").Text());
    zeilen.push_back(Satz('3', "051234-001-00042/000", 'M').Setze(34, "51-000 0000012").Setze(41, "0000012").Text());
    zeilen.push_back(Satz('3', "051234-001-00042/000", 'Q').Text());
    zeilen.push_back(Buchung("00042", "000123", "0001"));
    zeilen.push_back(Satz('7', "0512", 'A').Setze(28, "00").Setze(30, "Katasteramt").Setze(57, "Musterkreis").Text());
    zeilen.push_back(Satz('7', "051234", 'B').Setze(9, "051234000001").Setze(22, "0815").Setze(30, "Musterstadt").Text());
    zeilen.push_back(Satz('7', "051234000001", 'D').Setze(30, "Gemeinde Muster").Text());
    zeilen.push_back(Satz('7', "05123400000100100", 'E').Setze(28, "00").Setze(30, "Haupt").Text());
    zeilen.push_back(Satz('7', "05123400000100100", 'E').Setze(28, "09").Setze(30, "straße").Text());
    zeilen.push_back(Satz('8', "0815", 'A').Setze(28, "0").Setze(30, "Amtsgericht").Setze(57, "Musterstadt").Text());
    zeilen.push_back(Satz('9', "12345", 'D').Setze(30, "Wohnbaufläche").Text());
    zeilen.push_back(Satz('9', "", 'Z').Setze(30, "0000010").Setze(37, "0000001").Setze(44, "0000001").Text());
    ASSERT_TRUE(Lesen(zeilen));
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{"Satzart Q im Flurstück, Satzart 3, nicht "
                                                       "definiert! Zeile wird übersprungen!   "});
    ASSERT_EQ(kataster.Zeilenzahl(), 1u);
    const auto zelle = [&](const char* s) { return std::string(kataster.Zelle(0, s)); };
    EXPECT_EQ(zelle("Eigentümerzusatz"), "Erben Erbengemeinschaft");
    EXPECT_EQ(zelle("Sondereigentum"), ""); // a quote makes that statement fail
    EXPECT_EQ(zelle("Katasteramt"), "Katasteramt Musterkreis");
    EXPECT_EQ(zelle("Gemarkung"), "Musterstadt");
    EXPECT_EQ(zelle("Gemarkungsschlüssel"), "051234");
    EXPECT_EQ(zelle("Gemeinde"), "Gemeinde Muster");
    EXPECT_EQ(zelle("Amtsgericht"), "Amtsgericht Musterstadt");
    EXPECT_EQ(zelle("Straßenschlüssel"), "00100; 00200");
    EXPECT_EQ(zelle("Straßenschlüsselname"), "Hauptstraße; ");
    EXPECT_EQ(zelle("Hausnummer"), "ohne, ohne");
    EXPECT_EQ(zelle("Nutzungsart"), "12-345 0000512");
    EXPECT_EQ(zelle("Nutzung_tatsächlich"), "Wohnbaufläche");
    EXPECT_EQ(zelle("Klassifizierung"), "32-101 0000500; 51-000 0000012");
    EXPECT_EQ(zelle("BZ"), "45; 0");
    EXPECT_EQ(zelle("AZ"), "50; 0");
    EXPECT_EQ(zelle("EMZ"), "250; 0");
    EXPECT_EQ(zelle("EMZ-Summe"), "250");
    EXPECT_EQ(zelle("AZ-Mittel"), "50");
    EXPECT_EQ(zelle("BZ-AZ-Fläche"), "500; 12");
    EXPECT_EQ(zelle("Angaben_Klassifizierung"), "L 4 V 045 050;  "); // a blank remark keeps its place
    EXPECT_EQ(zelle("Schätzung"), "L 4 V;  ");
}

TEST_F(WldgeKomplettTest, GleicherEigentümerschlüsselGehtOhneMeldungVerloren) {
    std::vector<std::string> zeilen{Kopf("32")};
    for (auto& z : Eigentümer("051234-000123", "0001.00", '1', "Erster", "A"))
        zeilen.push_back(z);
    for (auto& z : Eigentümer("051234-000123", "0001.00", '1', "Zweiter", "B"))
        zeilen.push_back(z);
    zeilen.push_back(Flurstück("00042", "000000512"));
    zeilen.push_back(Buchung("00042", "000123", "0001"));
    ASSERT_TRUE(Lesen(zeilen));
    const auto rows = Zeilen({"Name", "Ort", "Eigentümerposition"});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].at("Name"), "Erster");
    EXPECT_EQ(rows[0].at("Ort"), "A");
    EXPECT_TRUE(ui.Meldungen().empty());
}

TEST_F(WldgeKomplettTest, NutzungstexteNachBlockNeunWennNichtVollständig) {
    // With the option off, the key texts of block 9 are appended in their own order.
    optionen.nutzungTatsächlich = false;
    std::vector<std::string> zeilen{Kopf("32")};
    for (auto& z : Eigentümer("051234-000123", "0001.00", '1', "Muster", "A"))
        zeilen.push_back(z);
    zeilen.push_back(Flurstück("00042", "000000512"));
    zeilen.push_back(Satz('3', "051234-001-00042/000", 'K').Setze(34, "21-110 0000100").Text());
    zeilen.push_back(Satz('3', "051234-001-00042/000", 'K').Setze(34, "12-345 0000412").Text());
    zeilen.push_back(Buchung("00042", "000123", "0001"));
    zeilen.push_back(Satz('9', "12345", 'D').Setze(30, "Wohnbaufläche").Text());
    zeilen.push_back(Satz('9', "21110", 'D').Setze(30, "Ackerland").Text());
    ASSERT_TRUE(Lesen(zeilen));
    ASSERT_EQ(kataster.Zeilenzahl(), 1u);
    EXPECT_EQ(kataster.Zelle(0, "Nutzung_tatsächlich"), "Wohnbaufläche; Ackerland; ");

    optionen.nutzungTatsächlich = true;
    ASSERT_TRUE(Lesen(zeilen));
    EXPECT_EQ(kataster.Zelle(0, "Nutzung_tatsächlich"), "Ackerland; Wohnbaufläche");
}

TEST_F(WldgeKomplettTest, BelegteStagingDatenbankWirdGemeldet) {
    // A folder of that name can't be deleted, as a database another instance holds open.
    test::DateiSchreiben(ordner / "tmp_flurix" / "belegt", "x");
    EXPECT_FALSE(Lesen({Kopf("32")}));
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{
                                  "Fehler: [Flurix doppelt geöffnet]! Bitte beenden Sie den Flurix "
                                  "oder wählen Sie [WLDGE-Daten teilweise einlesen - schnell]!   "});
    EXPECT_EQ(ui.Ereignisse().back().titel, "Achtung Fehler!");
}

TEST_F(WldgeKomplettTest, AnderesFormatImKopfWirdAbgelehnt) {
    EXPECT_FALSE(Lesen({Kopf("35"), Flurstück("00042", "000000512")}));
    EXPECT_EQ(ui.Meldungen(),
              std::vector<std::string>{"WLDGE-Daten mit dem Anforderungssatz 35 werden z.Z. nicht "
                                       "eingelesen!   "});
    EXPECT_EQ(kataster.Zeilenzahl(), 0u);
}

TEST_F(WldgeKomplettTest, UnbekannteSatzartImBestand) {
    std::vector<std::string> zeilen{Kopf("32"), Satz('2', "051234-000123", '7').Text()};
    ASSERT_TRUE(Lesen(zeilen));
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{"Satzart 7 im Bestand, Satzart 2, nicht "
                                                       "definiert! Zeile wird übersprungen!   "});
}

} // namespace
} // namespace flurix::import
