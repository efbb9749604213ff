#include "nas/daten_ordnen.hpp"

#include "core/cp1252.hpp"
#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/tabellentext.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <set>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace flurix::nas {
namespace {

using test::TempOrdner;

// ---- Per-row forms --------------------------------------------------------------------------

TEST(DatenOrdnenFormen, NummernMitFührendenNullen) {
    struct Fall {
        std::int64_t zahl;
        int stellen;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {1, 4, "0001"},  {42, 4, "0042"},       {9999, 4, "9999"}, {10000, 4, "10000"},
        {7, 5, "00007"}, {123456, 5, "123456"}, {0, 4, "0000"},    {-3, 4, "-0003"},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(MitNullen(f.zahl, f.stellen), f.erwartet) << f.zahl << " " << f.stellen;
}

TEST(DatenOrdnenFormen, FlurstückAusKennzeichenMitNenner0000WennOhneNenner) {
    struct Fall {
        std::string_view kennzeichen;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"07256600400012______", "00012/0000"}, // no denominator, NAS fill
        {"072566004000120000__", "00012/0000"},
        {"07256600400003000000", "00003/0000"}, // "00" fill
        {"072566004000120003__", "00012/0003"},
        {"07256600400012001200", "00012/0012"},
        {"072566004012340100__", "01234/0100"},
        {"072566004000120_3___", "00012/0000"}, // Basic's Val stops at "_": 0
        {"072566004000120  7__", "00012/0  7"}, // Val passes over blanks and reads 7
        {"0725660040001", "0001/0000"},         // cut short: what is there
        {"", "/0000"},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(FlurstückAusKennzeichen(f.kennzeichen), f.erwartet) << f.kennzeichen;
}

TEST(DatenOrdnenFormen, FkzOriginalInBeidenFormen) {
    struct Fall {
        std::string_view kennzeichen;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"07256600400003000000", "07256600400003______"}, // denominator 0000: 14 + six "_"
        {"072566004000120000__", "07256600400012______"},
        {"072566004000120003__", "072566004000120003__"}, // 18 + "__"
        {"07256600400012001200", "072566004000120012__"},
        {"07256600400012______", "07256600400012______"}, // "____" is no "0000"
        {"0725660040001", "0725660040001__"},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(FkzOriginal(f.kennzeichen), f.erwartet) << f.kennzeichen;
}

TEST(DatenOrdnenFormen, DatumWirdUmgedrehtNurMitBindestrich) {
    struct Fall {
        std::string_view datum;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"1950-03-01", "01.03.1950"},
        {"2001-12-31", "31.12.2001"},
        {"01.03.1950", "01.03.1950"}, // already turned: unchanged
        {"1950", "1950"},
        {"", ""},
        {"1950-03", "03.1950"},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(DatumUmkehren(f.datum), f.erwartet) << f.datum;
}

TEST(DatenOrdnenFormen, NutzungslistenInBeidenOptionen) {
    struct Fall {
        std::string_view tatsächlich;
        std::string_view art;
        bool ohneAx;
        std::string_view erwartetTatsächlich;
        std::string_view erwartetArt;
    };
    const Fall fälle[] = {
        {"Wohnbaufläche;Wald", "AX_Wohnbauflaeche 1200.00;AX_Wald 300.50", false,
         "AX_Wohnbauflaeche/Wohnbaufläche; AX_Wald/Wald",
         "Wohnbauflaeche (Wohnbaufläche)=1200.00; Wald (Wald)=300.50"},
        {"Wohnbaufläche;Wald", "AX_Wohnbauflaeche 1200.00;AX_Wald 300.50", true,
         "Wohnbaufläche; Wald", "Wohnbauflaeche (Wohnbaufläche)=1200.00; Wald (Wald)=300.50"},
        // entries trimmed, words separated by runs of blanks
        {" Ackerland ", "  AX_Landwirtschaft   812.25 ", false, "AX_Landwirtschaft/Ackerland",
         "Landwirtschaft (Ackerland)=812.25"},
        // fewer land-use entries than texts: empty a and b
        {"Wald;Heide", "AX_Wald 10", false, "AX_Wald/Wald; /Heide", "Wald (Wald)=10;  (Heide)="},
        {"Wald;Heide", "AX_Wald 10", true, "Wald; Heide", "Wald (Wald)=10;  (Heide)="},
        // one word only: no area
        {"Wald", "AX_Wald", false, "AX_Wald/Wald", "Wald (Wald)="},
        // every "AX_" of the land-use list goes, the one in the text of Nutzung_tatsächlich stays
        {"Fläche AX_X", "AX_Wald 5", false, "AX_Wald/Fläche AX_X", "Wald (Fläche X)=5"},
    };
    for (const auto& f : fälle) {
        const Nutzungstexte texte = NutzungOrdnen(f.tatsächlich, f.art, f.ohneAx);
        EXPECT_EQ(texte.nutzungTatsächlich, f.erwartetTatsächlich) << f.tatsächlich << f.ohneAx;
        EXPECT_EQ(texte.nutzungsart, f.erwartetArt) << f.tatsächlich << f.ohneAx;
    }
}

TEST(DatenOrdnenFormen, FlächeSiebenStellenVorDemPunktZweiDahinter) {
    struct Fall {
        std::string_view fläche;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"49171.00", "0049171.00"},
        {"49171", "0049171.00"},
        {"7.5", "0000007.50"},
        {"0.125", "0000000.13"}, // half away from zero on the digits, not on the binary value
        {"2.675", "0000002.68"},
        {"0.124", "0000000.12"},
        {"12345678.9", "12345678.90"},
        {"9999999.995", "10000000.00"},
        {"-12.345", "-0000012.35"},
        {"-0.001", "0000000.00"},
        {".5", "0000000.50"},
        {"5.", "0000005.00"},
        {" 12 ", "0000012.00"},
        {"4.9171E4", "0049171.00"},
        {"", ""},
        {"-", "-"},
        {".", "."},
        {"abc", "abc"},
        {"49171,00", "49171,00"}, // no number with "." as decimal mark: unchanged
    };
    for (const auto& f : fälle)
        EXPECT_EQ(FlächeFormat(f.fläche), f.erwartet) << f.fläche;
}

TEST(DatenOrdnenFormen, NamenUndAnschriften) {
    EXPECT_EQ(NameZusammensetzen("Müller", "Hans"), "Müller, Hans");
    EXPECT_EQ(NameZusammensetzen("Müller", ""), "Müller");
    EXPECT_EQ(NameZusammensetzen("Müller", "  "), "Müller");
    EXPECT_EQ(NameZusammensetzen("Ortsgemeinde Bausendorf", ""), "Ortsgemeinde Bausendorf");
    EXPECT_EQ(NameZusammensetzen("", "Hans"), ", Hans");
    EXPECT_EQ(NameZusammensetzen("", ""), "");

    EXPECT_EQ(NamenszusatzMitGeb("Schmidt"), "geb. Schmidt");
    EXPECT_EQ(NamenszusatzMitGeb(" Schmidt "), "geb. Schmidt");
    EXPECT_EQ(NamenszusatzMitGeb(""), "");
    EXPECT_EQ(NamenszusatzMitGeb(" "), " ");

    struct Fall {
        std::string_view vorn;
        std::string_view hinten;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"Hauptstraße", "12a", "Hauptstraße 12a"},
        {"Hauptstraße", "", "Hauptstraße"},
        {"", "12", "12"},
        {"54516", "Wittlich", "54516 Wittlich"},
        {"", "Wittlich", "Wittlich"},
        {"", "", ""},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(MitLeerzeichen(f.vorn, f.hinten), f.erwartet) << f.vorn << "|" << f.hinten;
}

TEST(DatenOrdnenFormen, AnteilGrundstückZweiZahlenMitSchrägstrich) {
    struct Fall {
        std::string_view anteil;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"1 2", "1/2"},  {"1.0 2.0", "1/2"}, {"3 10", "3/10"},     {"0.5 1", "0.5/1"},
        {"1  2", "1/2"}, {" 1 2 ", "1/2"},   {"0001 0004", "1/4"}, {"1000000 3", "1000000/3"},
        {"1", "1"},      {"1 2 3", "1 2 3"}, {"a b", "a b"},       {"1 b", "1 b"},
        {"1/2", "1/2"},  {"", ""},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(AnteilGrundstück(f.anteil), f.erwartet) << f.anteil;
}

TEST(DatenOrdnenFormen, AnteilSondereigentumZählerMitOderOhneNenner) {
    struct Fall {
        std::string_view zähler;
        std::string_view nenner;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"1", "2", "1/2"}, {"25", "", "25"}, {"25", " ", "25"},           {"", "2", ""},
        {" ", " ", ""},    {"", "", ""},     {" 7 ", " 1000 ", "7/1000"},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(AnteilSondereigentum(f.zähler, f.nenner), f.erwartet)
            << f.zähler << "|" << f.nenner;
}

TEST(DatenOrdnenFormen, SchlüsselAusGemeindeschlüsselUndBezirk) {
    EXPECT_EQ(KreisSchlüssel("07231103"), "07231");
    EXPECT_EQ(LandSchlüssel("07231103"), "07");
    EXPECT_EQ(DienststellenSchlüssel("07231103"), "073100");
    EXPECT_EQ(DienststellenSchlüssel("09162000"), "096200");
    EXPECT_EQ(DienststellenSchlüssel("0723"), "07300");
    EXPECT_EQ(DienststellenSchlüssel(""), "00");
    EXPECT_EQ(KreisSchlüssel("072"), "072");
    EXPECT_EQ(LandSchlüssel(""), "");
    EXPECT_EQ(AmtsgerichtSchlüssel("07 2408"), "072408");
    EXPECT_EQ(AmtsgerichtSchlüssel(" 07  2408 "), "072408");
    EXPECT_EQ(AmtsgerichtSchlüssel("072408"), "072408");
}

TEST(DatenOrdnenFormen, KoordinatenUndBezugssystem) {
    struct Fall {
        double wert;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {389012.5, "389012.5"}, {5600000, "5600000"}, {5600010.617, "5600010.617"},
        {0.125, "0.125"},       {-0.0, "0"},          {-12.25, "-12.25"},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(KoordinateText(f.wert), f.erwartet) << f.wert;

    struct Systemfall {
        std::string_view wert;
        std::string_view epsg;
        std::string_view mkz;
    };
    const Systemfall systeme[] = {
        {"25832_32", "25832", "32"},
        {"31467_3", "31467", "3"},
        {"25832", "25832", ""},
        {"4258_", "4258", ""},
        {"", "", ""},
    };
    for (const auto& s : systeme) {
        const Bezugssystem b = BezugssystemAusSystemwert(s.wert);
        EXPECT_EQ(b.epsg, s.epsg) << s.wert;
        EXPECT_EQ(b.mkz, s.mkz) << s.wert;
    }
}

// ---- The pass over a small Alkis ------------------------------------------------------------

const std::filesystem::path Daten = test::Testdaten() / "nas";

/// Seven rows of Alkis, made in an order unlike the walk's, and the lookup tables of a small
/// district (tests/daten/nas/daten_ordnen.tab says what each row is for); without the columns
/// `ohne`.
void KleineAlkis(Datenbank& db, const std::set<std::string>& ohne = {}) {
    auto tabellen = test::TabellentexteLesen(Daten / "daten_ordnen.tab");
    auto& alkis = tabellen.front();
    for (std::size_t i = alkis.spalten.size(); i-- > 0;)
        if (ohne.contains(alkis.spalten[i])) {
            alkis.spalten.erase(alkis.spalten.begin() + static_cast<std::ptrdiff_t>(i));
            for (auto& zeile : alkis.zeilen)
                zeile.erase(zeile.begin() + static_cast<std::ptrdiff_t>(i));
        }
    test::TabellenAnlegen(db, tabellen);
}

/// The cell of the row with this id; std::nullopt for NULL.
std::optional<std::string> Zelle(Datenbank& db, std::string_view id, std::string_view spalte) {
    auto abfrage = db.VorbereitenNativ("SELECT " + Bezeichner(spalte) + " FROM Alkis WHERE id = ?");
    abfrage.Binde(id);
    if (!abfrage.Schritt())
        throw std::runtime_error("no row " + std::string(id));
    if (abfrage.IstNull(0))
        return std::nullopt;
    return std::string(abfrage.Text(0));
}

struct Lauf {
    TempOrdner ordner;
    SkriptOberfläche ui;
    std::unique_ptr<Datenbank> db;
    std::int64_t zeilen = -1;

    /// An object database as the NAS road makes it (no journal, no sync), or with `mitJournal` a
    /// plain one, in which a rollback works.
    explicit Lauf(bool mitJournal = false)
        : db(mitJournal ? std::make_unique<Datenbank>(ordner / "nas.sqlite")
                        : DAO_DatenbankAnlegen(ordner / "nas.sqlite")) {}

    void Ordnen(const OrdnenUmgebung& umgebung) {
        NasProtokoll protokoll(ui, ordner / "nas.xml.prn");
        zeilen = DatenOrdnen(*db, umgebung, protokoll, ui);
    }
    /// The protocol file's lines without their time ("12:34:56").
    std::vector<std::string> ProtokollOhneZeit() const {
        const std::string text = Cp1252NachUtf8(test::DateiLesen(ordner / "nas.xml.prn"));
        std::vector<std::string> liste;
        for (auto zeile : Teilen(text, '\n')) {
            if (zeile.empty())
                continue;
            EXPECT_TRUE(zeile.ends_with('\r')) << zeile;
            EXPECT_GE(zeile.size(), 8u);
            EXPECT_EQ(zeile[2], ':');
            EXPECT_EQ(zeile[5], ':');
            liste.emplace_back(zeile.substr(8, zeile.size() - 9));
        }
        return liste;
    }
};

OrdnenUmgebung Umgebung() {
    OrdnenUmgebung u;
    u.antragsnummer = "A-2024-17";
    u.systemWert = "25832_32";
    // The court of "07 2566" is in the office table as well: the list wins.
    u.amtsgerichte = "* Amtsgerichte\r\n072408=Amtsgericht Wittlich\r\n071111=Amtsgericht Irgendwo\r\n";
    return u;
}

/// A table Alkis of text columns with the rows given.
void Alkis(Datenbank& db, std::vector<std::string> spalten, std::vector<std::vector<std::string>> zeilen) {
    test::TabellenAnlegen(db, {{"Alkis", std::move(spalten), std::move(zeilen)}});
}

TEST(DatenOrdnen, JedeZelleDerSiebenZeilenNachDemGang) {
    // Running number and owner position in the order of the walk (key, then folio before owner
    // number); county, Land, office and court by their keys; the cells in their forms; the
    // coordinates from the ring's box where Rechtswert is empty. Every cell, NULL included.
    Lauf lauf;
    KleineAlkis(*lauf.db);
    lauf.Ordnen(Umgebung());
    ASSERT_EQ(lauf.zeilen, 7);
    EXPECT_EQ(test::GoldenVergleich(test::ZellenText(*lauf.db, "SELECT id, * FROM Alkis ORDER BY id"),
                                    Daten / "daten_ordnen_ergebnis.txt"),
              "");

    // Each row in the protocol file's list, in the walk's order.
    const std::vector<std::string> erwartet = {
        ", Zeile ALKIS: 00001,FKZ: 07256600400003000000",
        ", Zeile ALKIS: 00002,FKZ: 07256600400003000000",
        ", Zeile ALKIS: 00003,FKZ: 07256600400003000000",
        ", Zeile ALKIS: 00004,FKZ: 072566004000120003__",
        ", Zeile ALKIS: 00005,FKZ: 072566004000120003__",
        ", Zeile ALKIS: 00006,FKZ: 07256600400050______",
        ", Zeile ALKIS: 00007,FKZ: 07256600500001000000",
    };
    EXPECT_EQ(lauf.ProtokollOhneZeit(), erwartet);
    // The window gets no line per row, and below 1,000 rows no status either.
    EXPECT_TRUE(lauf.ui.Ereignisse().empty());
    // The indexes the lookups seek by were made.
    for (const auto& [tabelle, spalte] :
         std::vector<std::pair<std::string, std::string>>{{"AX_KreisRegion", "schluessel"},
                                                          {"AX_KreisRegion", "schluesselGesamt"},
                                                          {"AX_Bundesland", "schluessel"},
                                                          {"AX_Bundesland", "schluesselGesamt"},
                                                          {"AX_Dienststelle", "schluesselGesamt"},
                                                          {"AX_Buchungsblattbezirk", "schluessel"}})
        EXPECT_TRUE(DAO_IndexVorhanden(*lauf.db, tabelle, spalte)) << tabelle << "." << spalte;
}

TEST(DatenOrdnen, OhneAmtsgerichtslisteUndOhneSchlüsseltabellen) {
    // Without the court list the office of the court's key gives the name; a missing table is
    // no error, its lookups find nothing.
    Lauf lauf;
    KleineAlkis(*lauf.db);
    lauf.db->AusführenNativ("DROP TABLE AX_KreisRegion");
    lauf.db->AusführenNativ("DROP TABLE AX_Bundesland");
    OrdnenUmgebung u = Umgebung();
    u.amtsgerichte.clear();
    lauf.Ordnen(u);
    ASSERT_EQ(lauf.zeilen, 7);
    EXPECT_EQ(Zelle(*lauf.db, "r3", "Amtsgericht"), "Wittlich");
    EXPECT_EQ(Zelle(*lauf.db, "r2", "Amtsgericht"), "Bernkastel-Kues");
    EXPECT_EQ(Zelle(*lauf.db, "r3", "Landkreis"), "alt");
    EXPECT_EQ(Zelle(*lauf.db, "r3", "Land"), "alt");
    EXPECT_EQ(Zelle(*lauf.db, "r3", "Dienststelle"),
              "Vermessungs- und Katasteramt Westeifel-Mosel");
    EXPECT_FALSE(DAO_TabelleVorhanden(*lauf.db, "AX_KreisRegion"));
}

TEST(DatenOrdnen, OptionenSchaltenTexteUm) {
    Lauf lauf;
    KleineAlkis(*lauf.db);
    lauf.db->AusführenNativ("UPDATE Alkis SET \"Flächendifferenz\" = '12.5', sonstigesBOV = 'x'");
    OrdnenUmgebung u = Umgebung();
    u.optionen.nutzungOhneAx = true;
    u.optionen.mitFlächenAnpassung = true;
    u.systemWert.clear(); // unknown: MKZ and EPSG are left alone
    lauf.Ordnen(u);
    EXPECT_EQ(Zelle(*lauf.db, "r3", "Nutzung_tatsächlich"), "Wohnbaufläche; Wald");
    EXPECT_EQ(Zelle(*lauf.db, "r3", "Flächendifferenz"), "12.5");
    EXPECT_EQ(Zelle(*lauf.db, "r3", "MKZ"), std::nullopt);
    EXPECT_EQ(Zelle(*lauf.db, "r3", "EPSG"), std::nullopt);

    // Each one of the four area computations keeps sonstigesBOV for its own check.
    for (int welche = 0; welche < 5; ++welche) {
        Lauf einzeln;
        KleineAlkis(*einzeln.db);
        einzeln.db->AusführenNativ("UPDATE Alkis SET sonstigesBOV = 'x'");
        OrdnenUmgebung o = Umgebung();
        o.optionen.mitNaBerechnung = welche == 0;
        o.optionen.quickNaBerechnung = welche == 1;
        o.optionen.quickBSBerechnung = welche == 2;
        o.optionen.quickBROBBerechnung = welche == 3;
        o.optionen.quickLWBerechnung = welche == 4; // not one of them
        einzeln.Ordnen(o);
        EXPECT_EQ(Zelle(*einzeln.db, "r1", "sonstigesBOV"), welche == 4 ? "... ohne Prüfung" : "x")
            << welche;
    }
}

TEST(DatenOrdnen, FehlendeSpaltenLassenIhrenSchrittAus) {
    // A user's own mapping script without land use kinds, rings, county, running number and
    // owner's first name.
    Lauf lauf;
    KleineAlkis(*lauf.db, {"Nutzungsart", "UmringFlurstück", "Landkreis", "IDlfd_Nr", "Vorname_sonstiges"});
    lauf.Ordnen(Umgebung());
    ASSERT_EQ(lauf.zeilen, 7);
    EXPECT_EQ(Zelle(*lauf.db, "r3", "Nutzung_tatsächlich"), "Wohnbaufläche;Wald");
    EXPECT_EQ(Zelle(*lauf.db, "r3", "Rechtswert"), "");
    EXPECT_EQ(Zelle(*lauf.db, "r3", "Name"), std::nullopt);
    EXPECT_EQ(Zelle(*lauf.db, "r1", "Eigentümerposition"), "0003");
    EXPECT_EQ(Zelle(*lauf.db, "r3", "Land"), "Rheinland-Pfalz");
    EXPECT_EQ(Zelle(*lauf.db, "r3", "Flurstück"), "00003/0000");

    // Hardly any column: the pass still walks every row.
    Lauf karg;
    Alkis(*karg.db, {"id", "Flurstückskennzeichen"}, {{"x", "07256600400003000000"}});
    karg.Ordnen(Umgebung());
    EXPECT_EQ(karg.zeilen, 1);
    EXPECT_EQ(karg.ProtokollOhneZeit().back(), ", Zeile ALKIS: 00001,FKZ: 07256600400003000000");
}

TEST(DatenOrdnen, SpaltennamenWieJetSieVergleicht) {
    // Names compared without regard to case, "ß" as "ss".
    Lauf lauf;
    Alkis(*lauf.db, {"id", "FLURSTÜCKSKENNZEICHEN", "flurstück", "Strasse", "STRASSENNAME", "hausnummer"},
          {{"x", "072566004000120003__", "\\N", "\\N", "Am Bach", "3"}});
    lauf.Ordnen(Umgebung());
    EXPECT_EQ(Zelle(*lauf.db, "x", "flurstück"), "00012/0003");
    EXPECT_EQ(Zelle(*lauf.db, "x", "Strasse"), "Am Bach 3");
}

TEST(DatenOrdnen, LeereOderFehlendeTabelleGibtNullZeilen) {
    // The caller tells the user; the pass changes nothing, not even the lookup indexes.
    for (const bool mitTabelle : {true, false}) {
        Lauf lauf;
        KleineAlkis(*lauf.db);
        lauf.db->AusführenNativ(mitTabelle ? "DELETE FROM Alkis" : "DROP TABLE Alkis");
        lauf.Ordnen(Umgebung());
        EXPECT_EQ(lauf.zeilen, 0) << mitTabelle;
        EXPECT_TRUE(lauf.ui.Ereignisse().empty()) << mitTabelle;
        EXPECT_TRUE(lauf.ProtokollOhneZeit().empty()) << mitTabelle;
        EXPECT_FALSE(DAO_IndexVorhanden(*lauf.db, "AX_KreisRegion", "schluesselGesamt"));
        EXPECT_EQ(DAO_TabelleVorhanden(*lauf.db, "Alkis"), mitTabelle);
    }
}

TEST(DatenOrdnen, StatusJeTausendZeilen) {
    Lauf lauf;
    std::vector<std::vector<std::string>> zeilen;
    for (int i = 0; i < 2500; ++i)
        zeilen.push_back({std::to_string(i), "0725660040" + MitNullen(i, 5) + "00000", "\\N"});
    Alkis(*lauf.db, {"id", "Flurstückskennzeichen", "IDlfd_Nr"}, std::move(zeilen));
    lauf.Ordnen(Umgebung());
    EXPECT_EQ(lauf.zeilen, 2500);
    const std::vector<std::string> erwartet = {"Daten ordnen, Zeile: 1000",
                                               "Daten ordnen, Zeile: 2000"};
    EXPECT_EQ(lauf.ui.Texte(Ereignis::Art::Status), erwartet);
    EXPECT_EQ(Zelle(*lauf.db, "2499", "IDlfd_Nr"), "2500");
    const auto protokoll = lauf.ProtokollOhneZeit();
    ASSERT_EQ(protokoll.size(), 2500u);
    EXPECT_EQ(protokoll[2499], ", Zeile ALKIS: 02500,FKZ: 07256600400249900000");
}

TEST(DatenOrdnen, InDerTransaktionDesAufrufers) {
    // A caller that holds a transaction keeps it: the pass neither commits nor nests.
    Lauf lauf(true);
    KleineAlkis(*lauf.db);
    {
        Transaktion t(*lauf.db);
        lauf.Ordnen(Umgebung());
        EXPECT_TRUE(lauf.db->TransaktionOffen());
    } // rolled back
    EXPECT_EQ(Zelle(*lauf.db, "r3", "IDlfd_Nr"), std::nullopt);
    EXPECT_EQ(lauf.zeilen, 7);
}

} // namespace
} // namespace flurix::nas
