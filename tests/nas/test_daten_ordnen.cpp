#include "nas/daten_ordnen.hpp"

#include "core/cp1252.hpp"
#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <map>
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

using Werte = std::map<std::string, std::optional<std::string>>;

const std::vector<std::string>& AlleSpalten() {
    static const std::vector<std::string> spalten = {"id",
                                                     "Flurstückskennzeichen",
                                                     "Gemeindeschlüssel",
                                                     "Grundbuchblatt",
                                                     "BVNR",
                                                     "Buchungsart",
                                                     "Namensnummer",
                                                     "Geburtsdatum",
                                                     "Nutzung_tatsächlich",
                                                     "Nutzungsart",
                                                     "Fläche",
                                                     "Bodenart",
                                                     "Angaben_Klassifizierung",
                                                     "Landkreis",
                                                     "Dienststelle",
                                                     "Katasteramt",
                                                     "Amtsgericht",
                                                     "Land",
                                                     "buchungsblattbezirk",
                                                     "Flurstück",
                                                     "FKZ-Original",
                                                     "Nachname_sonstiges",
                                                     "Vorname_sonstiges",
                                                     "Name",
                                                     "Namenszusatz",
                                                     "Strassenname",
                                                     "Hausnummer",
                                                     "Straße",
                                                     "PLZ",
                                                     "Ort",
                                                     "AntragsNr",
                                                     "Anteil_Grundstück",
                                                     "Anteil_Sondereigentum",
                                                     "Anteil_Buchungsstelle_Zähler",
                                                     "Anteil_Buchungsstelle_Nenner",
                                                     "sonstigesBOV",
                                                     "Rechtswert",
                                                     "Hochwert",
                                                     "UmringFlurstück",
                                                     "MKZ",
                                                     "EPSG",
                                                     "IDlfd_Nr",
                                                     "Eigentümerposition",
                                                     "Flächendifferenz"};
    return spalten;
}

void TabelleMitTexten(Datenbank& db, std::string_view name,
                      const std::vector<std::string>& spalten) {
    std::vector<Feld> felder;
    for (const auto& s : spalten)
        felder.push_back({s, Feldtyp::Text});
    db.TabelleAnlegen(name, felder);
}

void ZeileEinfügen(Datenbank& db, std::string_view tabelle, const Werte& werte) {
    std::string namen;
    std::string fragen;
    for (const auto& [name, wert] : werte) {
        namen += (namen.empty() ? "" : ", ") + Bezeichner(name);
        fragen += fragen.empty() ? "?" : ", ?";
    }
    auto einfügen = db.VorbereitenNativ("INSERT INTO " + Bezeichner(tabelle) + " (" + namen +
                                        ") VALUES (" + fragen + ")");
    for (const auto& [name, wert] : werte) {
        if (wert)
            einfügen.Binde(std::string_view(*wert));
        else
            einfügen.Binde(nullptr);
    }
    einfügen.Schritt();
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

/// The lookup tables of a small district: two counties, one Land, a cadastral office, two courts
/// as offices, two land-register districts.
void Schlüsseltabellen(Datenbank& db) {
    TabelleMitTexten(db, "AX_KreisRegion", {"id", "schluessel", "schluesselGesamt", "bezeichnung"});
    ZeileEinfügen(db, "AX_KreisRegion",
                  {{"id", "k1"},
                   {"schluessel", "07 2 31"},
                   {"schluesselGesamt", "07231"},
                   {"bezeichnung", "Bernkastel-Wittlich"}});
    std::string lang;
    for (int i = 0; i < 300; ++i)
        lang += "Ä";
    ZeileEinfügen(db, "AX_KreisRegion",
                  {{"id", "k2"},
                   {"schluessel", "08 1 11"},
                   {"schluesselGesamt", "08111"},
                   {"bezeichnung", lang}});
    TabelleMitTexten(db, "AX_Bundesland", {"id", "schluessel", "schluesselGesamt", "bezeichnung"});
    ZeileEinfügen(db, "AX_Bundesland",
                  {{"id", "b1"},
                   {"schluessel", "07"},
                   {"schluesselGesamt", "07"},
                   {"bezeichnung", "Rheinland-Pfalz"}});
    TabelleMitTexten(db, "AX_Dienststelle",
                     {"id", "schluessel", "schluesselGesamt", "bezeichnung"});
    ZeileEinfügen(db, "AX_Dienststelle",
                  {{"id", "d1"},
                   {"schluessel", "07 3100"},
                   {"schluesselGesamt", "073100"},
                   {"bezeichnung", "Vermessungs- und Katasteramt Westeifel-Mosel"}});
    // The court of "07 2566" is in the court list as well: the list wins.
    ZeileEinfügen(db, "AX_Dienststelle",
                  {{"id", "d2"},
                   {"schluessel", "07 2408"},
                   {"schluesselGesamt", "072408"},
                   {"bezeichnung", "Wittlich"}});
    ZeileEinfügen(db, "AX_Dienststelle",
                  {{"id", "d3"},
                   {"schluessel", "07 2409"},
                   {"schluesselGesamt", "072409"},
                   {"bezeichnung", "Bernkastel-Kues"}});
    TabelleMitTexten(db, "AX_Buchungsblattbezirk",
                     {"id", "schluessel", "schluesselGesamt", "bezeichnung", "gehoertZu"});
    ZeileEinfügen(db, "AX_Buchungsblattbezirk",
                  {{"id", "g1"},
                   {"schluessel", "07 2566"},
                   {"schluesselGesamt", "072566"},
                   {"bezeichnung", "Bausendorf"},
                   {"gehoertZu", "07 2408"}});
    ZeileEinfügen(db, "AX_Buchungsblattbezirk",
                  {{"id", "g2"},
                   {"schluessel", "07 2567"},
                   {"schluesselGesamt", "072567"},
                   {"bezeichnung", "Olkenbach"},
                   {"gehoertZu", "07 2409"}});
}

constexpr std::string_view AmtsgerichteText = "* Amtsgerichte\r\n"
                                              "072408=Amtsgericht Wittlich\r\n"
                                              "071111=Amtsgericht Irgendwo\r\n";

constexpr std::string_view KennzeichenA = "07256600400003000000"; // three owners
constexpr std::string_view KennzeichenB = "072566004000120003__"; // two folios
constexpr std::string_view KennzeichenC = "07256600400050______";
constexpr std::string_view KennzeichenD = "07256600500001000000";

// Two rings joined by "|": the box spans both (x 389000.1 .. 389021.0004, y 5600000 ..
// 5600021.2346).
constexpr std::string_view UmringA = "389000.1 5600000;389010 5600000;389010 5600021.2346;"
                                     "389000.1 5600000|389015 5600001;389021.0004 5600002;"
                                     "389015 5600001";

/// Seven rows, made in an order unlike the walk's.
void KleineAlkis(Datenbank& db, const std::vector<std::string>& spalten) {
    TabelleMitTexten(db, "Alkis", spalten);
    auto zeile = [&](Werte werte) {
        Werte vorhanden;
        for (auto& [name, wert] : werte)
            if (std::find(spalten.begin(), spalten.end(), name) != spalten.end())
                vorhanden[name] = wert;
        ZeileEinfügen(db, "Alkis", vorhanden);
    };
    const Werte a = {{"Flurstückskennzeichen", std::string(KennzeichenA)},
                     {"Gemeindeschlüssel", "07231103"},
                     {"Grundbuchblatt", "100"},
                     {"BVNR", "0001"},
                     {"Buchungsart", "1100"},
                     {"buchungsblattbezirk", "07 2566"},
                     {"Fläche", "49171.00"},
                     {"Nutzung_tatsächlich", "Wohnbaufläche;Wald"},
                     {"Nutzungsart", "AX_Wohnbauflaeche 1200.00;AX_Wald 300.50"},
                     {"Bodenart", "L3V"},
                     {"UmringFlurstück", std::string(UmringA)},
                     {"Landkreis", "alt"},
                     {"Dienststelle", "alt"},
                     {"Amtsgericht", "alt"},
                     {"Land", "alt"}};
    auto mit = [](Werte basis, const Werte& dazu) {
        for (const auto& [k, v] : dazu)
            basis[k] = v;
        return basis;
    };
    zeile(mit(a, {{"id", "r1"},
                  {"Namensnummer", "0003"},
                  {"Rechtswert", "389100.5"},
                  {"Hochwert", "5600100.25"},
                  {"Nachname_sonstiges", "Schmitz"},
                  {"Vorname_sonstiges", ""},
                  {"Anteil_Grundstück", "1 4"}}));
    zeile(Werte{{"id", "r2"},
                {"Flurstückskennzeichen", std::string(KennzeichenC)},
                {"Gemeindeschlüssel", "09162000"},
                {"Grundbuchblatt", "300"},
                {"Namensnummer", "0001"},
                {"buchungsblattbezirk", "07 2567"},
                {"Landkreis", "alter Kreis"},
                {"Land", "altes Land"},
                {"Dienststelle", "alte Stelle"},
                {"Katasteramt", "Katasteramt der Gemarkung"},
                {"Rechtswert", "1"},
                {"Hochwert", "2"},
                {"Fläche", "abc"}});
    zeile(mit(a, {{"id", "r3"},
                  {"Namensnummer", "0001"},
                  {"Rechtswert", ""},
                  {"Hochwert", ""},
                  {"Geburtsdatum", "1950-03-01"},
                  {"Nachname_sonstiges", "Müller"},
                  {"Vorname_sonstiges", "Hans"},
                  {"Namenszusatz", "Schmidt"},
                  {"Strassenname", "Hauptstraße"},
                  {"Hausnummer", "12a"},
                  {"PLZ", "54538"},
                  {"Ort", "Bausendorf"},
                  {"Anteil_Grundstück", "1 2"},
                  {"Anteil_Buchungsstelle_Zähler", "25"},
                  {"Anteil_Buchungsstelle_Nenner", "1000"}}));
    zeile(Werte{{"id", "r4"},
                {"Flurstückskennzeichen", std::string(KennzeichenB)},
                {"Gemeindeschlüssel", "07231999"},
                {"Grundbuchblatt", "200"},
                {"Namensnummer", "0001"},
                {"buchungsblattbezirk", "07 9999"},
                {"Amtsgericht", "altes Gericht"},
                {"Rechtswert", std::nullopt},
                {"UmringFlurstück", ""},
                {"Anteil_Buchungsstelle_Zähler", "3"},
                {"Anteil_Buchungsstelle_Nenner", ""}});
    zeile(mit(a, {{"id", "r5"},
                  {"Namensnummer", "0002"},
                  {"Rechtswert", " "},
                  {"Hochwert", "1"},
                  {"Geburtsdatum", "01.01.1960"}}));
    zeile(Werte{{"id", "r6"},
                {"Flurstückskennzeichen", std::string(KennzeichenD)},
                {"Gemeindeschlüssel", "08111000"},
                {"Grundbuchblatt", "400"},
                {"Namensnummer", "0001"},
                {"Land", std::nullopt},
                {"Dienststelle", "alte Stelle"}});
    zeile(Werte{{"id", "r7"},
                {"Flurstückskennzeichen", std::string(KennzeichenB)},
                {"Gemeindeschlüssel", "07231999"},
                {"Grundbuchblatt", "150"},
                {"Namensnummer", "0002"},
                {"buchungsblattbezirk", "07 2566"}});
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
    u.amtsgerichte = std::string(AmtsgerichteText);
    return u;
}

TEST(DatenOrdnen, LaufendeNummerUndEigentümerpositionInDerReihenfolgeDesGangs) {
    Lauf lauf;
    Schlüsseltabellen(*lauf.db);
    KleineAlkis(*lauf.db, AlleSpalten());
    lauf.Ordnen(Umgebung());
    ASSERT_EQ(lauf.zeilen, 7);

    // Order: key, then folio before owner number (B: folio 150 before 200).
    struct Fall {
        std::string_view id;
        std::string_view lfdNr;
        std::string_view position;
    };
    const Fall fälle[] = {
        {"r3", "0001", "0001"}, {"r5", "0002", "0002"}, {"r1", "0003", "0003"},
        {"r7", "0004", "0001"}, {"r4", "0005", "0002"}, {"r2", "0006", "0001"},
        {"r6", "0007", "0001"},
    };
    for (const auto& f : fälle) {
        EXPECT_EQ(Zelle(*lauf.db, f.id, "IDlfd_Nr"), f.lfdNr) << f.id;
        EXPECT_EQ(Zelle(*lauf.db, f.id, "Eigentümerposition"), f.position) << f.id;
    }

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
}

TEST(DatenOrdnen, KreisLandDienststelleAmtsgerichtNachSchlüssel) {
    Lauf lauf;
    Schlüsseltabellen(*lauf.db);
    KleineAlkis(*lauf.db, AlleSpalten());
    lauf.Ordnen(Umgebung());
    ASSERT_EQ(lauf.zeilen, 7);

    std::string lang255;
    for (int i = 0; i < 255; ++i)
        lang255 += "Ä";
    using O = std::optional<std::string>;
    struct Fall {
        std::string_view id;
        O landkreis, land, dienststelle, amtsgericht;
    };
    const Fall fälle[] = {
        // all found; the court from the court list, though the office table has "Wittlich" too
        {"r3", "Bernkastel-Wittlich", "Rheinland-Pfalz",
         "Vermessungs- und Katasteramt Westeifel-Mosel", "Amtsgericht Wittlich"},
        {"r1", "Bernkastel-Wittlich", "Rheinland-Pfalz",
         "Vermessungs- und Katasteramt Westeifel-Mosel", "Amtsgericht Wittlich"},
        // district not known: the court is emptied
        {"r4", "Bernkastel-Wittlich", "Rheinland-Pfalz",
         "Vermessungs- und Katasteramt Westeifel-Mosel", ""},
        // county and Land not found stay; no office of the municipality's key: the office of the
        // Gemarkung; the court not in the list is the office of its key
        {"r2", "alter Kreis", "altes Land", "Katasteramt der Gemarkung", "Bernkastel-Kues"},
        // a county's name cut to 255 characters (not bytes); Land NULL stays NULL; no district
        // at all: no court
        {"r6", lang255, std::nullopt, "", ""},
    };
    for (const auto& f : fälle) {
        EXPECT_EQ(Zelle(*lauf.db, f.id, "Landkreis"), f.landkreis) << f.id;
        EXPECT_EQ(Zelle(*lauf.db, f.id, "Land"), f.land) << f.id;
        EXPECT_EQ(Zelle(*lauf.db, f.id, "Dienststelle"), f.dienststelle) << f.id;
        EXPECT_EQ(Zelle(*lauf.db, f.id, "Amtsgericht"), f.amtsgericht) << f.id;
    }
    // The district is sought blank-joined and shown compact.
    EXPECT_EQ(Zelle(*lauf.db, "r1", "buchungsblattbezirk"), "072566");
    EXPECT_EQ(Zelle(*lauf.db, "r4", "buchungsblattbezirk"), "079999");
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
    Schlüsseltabellen(*lauf.db);
    lauf.db->AusführenNativ("DROP TABLE AX_KreisRegion");
    lauf.db->AusführenNativ("DROP TABLE AX_Bundesland");
    KleineAlkis(*lauf.db, AlleSpalten());
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

TEST(DatenOrdnen, ZellenEinerZeileInIhrenFormen) {
    Lauf lauf;
    Schlüsseltabellen(*lauf.db);
    KleineAlkis(*lauf.db, AlleSpalten());
    lauf.Ordnen(Umgebung());
    ASSERT_EQ(lauf.zeilen, 7);

    using O = std::optional<std::string>;
    struct Fall {
        std::string_view id;
        std::string_view spalte;
        O erwartet;
    };
    const Fall fälle[] = {
        {"r3", "Geburtsdatum", "01.03.1950"},
        {"r5", "Geburtsdatum", "01.01.1960"},
        {"r1", "Geburtsdatum", std::nullopt}, // NULL stays NULL
        {"r3", "Nutzung_tatsächlich", "AX_Wohnbauflaeche/Wohnbaufläche; AX_Wald/Wald"},
        {"r3", "Nutzungsart", "Wohnbauflaeche (Wohnbaufläche)=1200.00; Wald (Wald)=300.50"},
        {"r2", "Nutzung_tatsächlich", std::nullopt},
        {"r2", "Nutzungsart", std::nullopt},
        {"r3", "Flächendifferenz", "ohne Verteilung"},
        {"r3", "Angaben_Klassifizierung", "L3V"},
        {"r2", "Angaben_Klassifizierung", std::nullopt}, // Bodenart NULL
        {"r3", "Flurstück", "00003/0000"},
        {"r3", "FKZ-Original", "07256600400003______"},
        {"r4", "Flurstück", "00012/0003"},
        {"r4", "FKZ-Original", "072566004000120003__"},
        {"r2", "Flurstück", "00050/0000"},
        {"r2", "FKZ-Original", "07256600400050______"},
        {"r3", "Fläche", "0049171.00"},
        {"r2", "Fläche", "abc"},
        {"r4", "Fläche", std::nullopt},
        {"r3", "Name", "Müller, Hans"},
        {"r1", "Name", "Schmitz"},
        {"r4", "Name", ""},
        {"r3", "Namenszusatz", "geb. Schmidt"},
        {"r1", "Namenszusatz", std::nullopt},
        {"r3", "Straße", "Hauptstraße 12a"},
        {"r3", "Ort", "54538 Bausendorf"},
        {"r4", "Straße", ""},
        {"r4", "Ort", ""},
        {"r3", "AntragsNr", "A-2024-17"},
        {"r6", "AntragsNr", "A-2024-17"},
        {"r3", "Anteil_Grundstück", "1/2"},
        {"r1", "Anteil_Grundstück", "1/4"},
        {"r3", "Anteil_Sondereigentum", "25/1000"},
        {"r4", "Anteil_Sondereigentum", "3"},
        {"r1", "Anteil_Sondereigentum", ""},
        {"r3", "sonstigesBOV", "... ohne Prüfung"},
        {"r3", "MKZ", "32"},
        {"r3", "EPSG", "25832"},
        {"r6", "EPSG", "25832"},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(Zelle(*lauf.db, f.id, f.spalte), f.erwartet) << f.id << " " << f.spalte;
}

TEST(DatenOrdnen, KoordinatenAusDemRingNurWennRechtswertLeer) {
    Lauf lauf;
    Schlüsseltabellen(*lauf.db);
    KleineAlkis(*lauf.db, AlleSpalten());
    lauf.Ordnen(Umgebung());
    ASSERT_EQ(lauf.zeilen, 7);
    using O = std::optional<std::string>;
    struct Fall {
        std::string_view id;
        O rechts, hoch;
    };
    const Fall fälle[] = {
        {"r3", "389010.55", "5600010.617"}, // empty: centre of both rings' box, 3 places
        {"r5", "389010.55", "5600010.617"}, // a blank counts as empty; Hochwert replaced
        {"r1", "389100.5", "5600100.25"},   // given: kept
        {"r2", "1", "2"},                   // given, no ring
        {"r4", std::nullopt, std::nullopt}, // empty ring: nothing to write
    };
    for (const auto& f : fälle) {
        EXPECT_EQ(Zelle(*lauf.db, f.id, "Rechtswert"), f.rechts) << f.id;
        EXPECT_EQ(Zelle(*lauf.db, f.id, "Hochwert"), f.hoch) << f.id;
    }
    // The ring itself is not touched.
    EXPECT_EQ(Zelle(*lauf.db, "r3", "UmringFlurstück"), std::string(UmringA));
}

TEST(DatenOrdnen, OptionenSchaltenTexteUm) {
    Lauf lauf;
    Schlüsseltabellen(*lauf.db);
    KleineAlkis(*lauf.db, AlleSpalten());
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
        KleineAlkis(*einzeln.db, AlleSpalten());
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
    std::vector<std::string> spalten;
    for (const auto& s : AlleSpalten())
        if (s != "Nutzungsart" && s != "UmringFlurstück" && s != "Landkreis" && s != "IDlfd_Nr" &&
            s != "Vorname_sonstiges")
            spalten.push_back(s);
    Lauf lauf;
    Schlüsseltabellen(*lauf.db);
    KleineAlkis(*lauf.db, spalten);
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
    TabelleMitTexten(*karg.db, "Alkis", {"id", "Flurstückskennzeichen"});
    ZeileEinfügen(*karg.db, "Alkis",
                  {{"id", "x"}, {"Flurstückskennzeichen", "07256600400003000000"}});
    karg.Ordnen(Umgebung());
    EXPECT_EQ(karg.zeilen, 1);
    EXPECT_EQ(karg.ProtokollOhneZeit().back(), ", Zeile ALKIS: 00001,FKZ: 07256600400003000000");
}

TEST(DatenOrdnen, SpaltennamenWieJetSieVergleicht) {
    // Names compared without regard to case, "ß" as "ss".
    Lauf lauf;
    TabelleMitTexten(
        *lauf.db, "Alkis",
        {"id", "FLURSTÜCKSKENNZEICHEN", "flurstück", "Strasse", "STRASSENNAME", "hausnummer"});
    ZeileEinfügen(*lauf.db, "Alkis",
                  {{"id", "x"},
                   {"FLURSTÜCKSKENNZEICHEN", "072566004000120003__"},
                   {"STRASSENNAME", "Am Bach"},
                   {"hausnummer", "3"}});
    lauf.Ordnen(Umgebung());
    EXPECT_EQ(Zelle(*lauf.db, "x", "flurstück"), "00012/0003");
    EXPECT_EQ(Zelle(*lauf.db, "x", "Strasse"), "Am Bach 3");
}

TEST(DatenOrdnen, LeereOderFehlendeTabelleGibtNullZeilen) {
    // The caller tells the user; the pass changes nothing, not even the lookup indexes.
    for (const bool mitTabelle : {true, false}) {
        Lauf lauf;
        Schlüsseltabellen(*lauf.db);
        if (mitTabelle)
            TabelleMitTexten(*lauf.db, "Alkis", AlleSpalten());
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
    TabelleMitTexten(*lauf.db, "Alkis", {"id", "Flurstückskennzeichen", "IDlfd_Nr"});
    {
        Transaktion t(*lauf.db);
        for (int i = 0; i < 2500; ++i)
            ZeileEinfügen(*lauf.db, "Alkis",
                          {{"id", std::to_string(i)},
                           {"Flurstückskennzeichen", "0725660040" + MitNullen(i, 5) + "00000"}});
        t.Bestätigen();
    }
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
    KleineAlkis(*lauf.db, AlleSpalten());
    {
        Transaktion t(*lauf.db);
        lauf.Ordnen(Umgebung());
        EXPECT_TRUE(lauf.db->TransaktionOffen());
    } // rolled back
    EXPECT_EQ(Zelle(*lauf.db, "r3", "IDlfd_Nr"), std::nullopt);
    EXPECT_EQ(lauf.zeilen, 7);
}

// ---- Measure: 150,000 wide rows ----------------------------------------------------------
// Run with --gtest_also_run_disabled_tests --gtest_filter='DatenOrdnen*Messung*'.

/// Builds an Alkis of `zeilen` rows in a database file, runs the pass and prints the times. With
/// `mitAußenring` the parcel's own ring text stands in the row too (as when the columns of the
/// parcel table are kept), so each row holds two rings of about 3 KB.
void Messen(int zeilen, bool mitAußenring) {
    TempOrdner ordner;
    auto db = DAO_DatenbankAnlegen(ordner / "gross.sqlite");
    // As the compilation makes it: the parcel's own columns first, its ring among them, then
    // the joined columns, then the mapped columns with the point list.
    std::vector<std::string> spalten = {"id"};
    if (mitAußenring)
        spalten.push_back("gml:exterior");
    for (int i = 0; i < 60; ++i)
        spalten.push_back("quelle_" + std::to_string(i));
    for (const auto& s : AlleSpalten())
        if (s != "id")
            spalten.push_back(s);
    TabelleMitTexten(*db, "Alkis", spalten);
    Schlüsseltabellen(*db);

    std::string ring;
    for (int p = 0; ring.size() < 3000; ++p)
        ring += (p ? ";" : "") + std::to_string(389000 + p) + ".123 " +
                std::to_string(5600000 + p) + ".456";
    const auto start = std::chrono::steady_clock::now();
    {
        std::string namen;
        std::string fragen;
        for (const auto& s : spalten) {
            namen += (namen.empty() ? "" : ", ") + Bezeichner(s);
            fragen += fragen.empty() ? "?" : ", ?";
        }
        Transaktion t(*db);
        auto einfügen =
            db->VorbereitenNativ("INSERT INTO Alkis (" + namen + ") VALUES (" + fragen + ")");
        const int flurstücke = zeilen / 3;
        for (int i = 0; i < zeilen; ++i) {
            // Three owners per parcel, the rows of one parcel far apart in the file.
            const int flurstück =
                static_cast<int>((static_cast<std::int64_t>(i) * 7919) % flurstücke);
            const std::string gemeinde = "07231" + MitNullen(100 + flurstück % 50, 3);
            for (const auto& s : spalten) {
                std::string w;
                if (s == "id")
                    w = std::to_string(i);
                else if (s == "gml:exterior" || s == "UmringFlurstück")
                    w = ring;
                else if (s.starts_with("quelle_"))
                    w = "Wert " + std::to_string(i % 97);
                else if (s == "Flurstückskennzeichen")
                    w = "0725660040" + MitNullen(flurstück, 5) + "00000";
                else if (s == "Gemeindeschlüssel")
                    w = gemeinde;
                else if (s == "Grundbuchblatt")
                    w = std::to_string(1000 + flurstück % 900);
                else if (s == "Namensnummer")
                    w = MitNullen(i % 3 + 1, 4);
                else if (s == "buchungsblattbezirk")
                    w = i % 2 ? "07 2566" : "07 2567";
                else if (s == "Fläche")
                    w = std::to_string(flurstück) + ".00";
                else if (s == "Geburtsdatum")
                    w = "1950-03-01";
                else if (s == "Nutzung_tatsächlich")
                    w = "Wohnbaufläche;Wald";
                else if (s == "Nutzungsart")
                    w = "AX_Wohnbauflaeche 1200.00;AX_Wald 300.50";
                else if (s == "Nachname_sonstiges")
                    w = "Müller";
                else if (s == "Vorname_sonstiges")
                    w = "Hans";
                else if (s == "Anteil_Grundstück")
                    w = "1 3";
                else if (s == "Rechtswert")
                    w = i % 10 == 0 ? "" : "389012.5";
                else if (s == "Hochwert")
                    w = "5600123.25";
                einfügen.Binde(std::string_view(w));
            }
            einfügen.Schritt();
            einfügen.Zurücksetzen();
        }
        t.Bestätigen();
    }
    const auto geladen = std::chrono::steady_clock::now();
    SkriptOberfläche ui;
    NasProtokoll protokoll(ui, ordner / "gross.xml.prn");
    const std::int64_t n = DatenOrdnen(*db, Umgebung(), protokoll, ui);
    const auto fertig = std::chrono::steady_clock::now();
    // For comparison, SQLite's own floor: one UPDATE that rewrites every row once.
    db->AusführenNativ("UPDATE Alkis SET \"IDlfd_Nr\" = 'x' || \"IDlfd_Nr\"");
    const auto vergleich = std::chrono::steady_clock::now();
    const auto ms = [](auto d) {
        return std::chrono::duration_cast<std::chrono::milliseconds>(d).count();
    };
    std::cout << "Alkis " << zeilen << " Zeilen" << (mitAußenring ? " mit" : " ohne")
              << " gml:exterior, Datei "
              << std::filesystem::file_size(ordner / "gross.sqlite") / (1024 * 1024)
              << " MB; Laden " << ms(geladen - start) << " ms, Daten ordnen "
              << ms(fertig - geladen)
              << " ms (ein UPDATE über alle Zeilen: " << ms(vergleich - fertig) << " ms)\n";
    EXPECT_EQ(n, zeilen);
    auto probe = db->VorbereitenNativ(
        "SELECT COUNT(*) FROM Alkis WHERE \"Eigentümerposition\" = '0003' AND \"IDlfd_Nr\" "
        "LIKE 'x____%' AND Landkreis = "
        "'Bernkastel-Wittlich' AND Amtsgericht <> '' AND \"Fläche\" LIKE '00%.00' AND "
        "Rechtswert <> ''");
    ASSERT_TRUE(probe.Schritt());
    EXPECT_EQ(probe.Ganzzahl(0), zeilen / 3);
}

TEST(DatenOrdnen, DISABLED_Messung150000Zeilen) {
    Messen(150000, false);
    Messen(150000, true);
}

} // namespace
} // namespace flurix::nas
