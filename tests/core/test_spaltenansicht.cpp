#include "core/spaltenansicht.hpp"

#include "core/cp1252.hpp"
#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

namespace flurix {
namespace {

std::vector<std::string> SichtbareSchlüssel(const Kataster& k) {
    std::vector<std::string> schlüssel;
    for (std::size_t s : k.Anzeigereihenfolge())
        if (k.Spalte(s).sichtbar)
            schlüssel.push_back(k.Spalte(s).schlüssel);
    return schlüssel;
}

class AnsichtTest : public ::testing::Test {
protected:
    AnsichtTest() {
        SpaltenAnlegen(kataster);
        test::DateiSchreiben(datei, "Kataster ALKIS=Flur;Gemarkung;GibtEsNicht;Flurstück\r\n"
                                    "Doppelt=Name;Flur;Gemarkung;Name\r\n"
                                    "AL-amtl.Lageplan=checkdruck;ID_GG;Flurstück\r\n");
    }
    test::TempOrdner ordner;
    std::filesystem::path datei = ordner / "ALB_DatenbankSpalten.dat";
    Kataster kataster;
};

TEST_F(AnsichtTest, BenannteAnsichtZeigtIhreSpaltenInIhrerOrdnung) {
    ASSERT_TRUE(ComboColVis(kataster, "Kataster ALKIS", datei));
    EXPECT_EQ(SichtbareSchlüssel(kataster),
              (std::vector<std::string>{"Flur", "Gemarkung", "Flurstück"}));
    ASSERT_TRUE(ComboColVis(kataster, "Doppelt", datei));
    EXPECT_EQ(SichtbareSchlüssel(kataster), (std::vector<std::string>{"Flur", "Gemarkung", "Name"}));
}

TEST_F(AnsichtTest, AllesStelltDieOrdnungDesKatalogsWiederHer) {
    ComboColVis(kataster, "Doppelt", datei);
    ASSERT_TRUE(ComboColVis(kataster, "alles", datei));
    std::vector<std::string> katalog;
    for (const auto& k : Katalog())
        katalog.emplace_back(k.schlüssel);
    EXPECT_EQ(SichtbareSchlüssel(kataster), katalog);
}

TEST_F(AnsichtTest, UnbekannteAnsichtOderFehlendeDateiÄndertNichts) {
    ComboColVis(kataster, "Kataster ALKIS", datei);
    EXPECT_FALSE(ComboColVis(kataster, "Gibt es nicht", datei));
    EXPECT_EQ(SichtbareSchlüssel(kataster),
              (std::vector<std::string>{"Flur", "Gemarkung", "Flurstück"}));
    EXPECT_FALSE(ComboColVis(kataster, "Kataster ALKIS", ordner / "fehlt.dat"));
    EXPECT_EQ(AnsichtenNamen(ordner / "fehlt.dat"), std::vector<std::string>{"alles"});
    EXPECT_EQ(AnsichtenNamen(datei),
              (std::vector<std::string>{"alles", "Kataster ALKIS", "Doppelt", "AL-amtl.Lageplan"}));
}

TEST_F(AnsichtTest, LageplanMitZeilenBekommtDieNummernspalte) {
    ComboColVis(kataster, "AL-amtl.Lageplan", datei);
    EXPECT_FALSE(kataster.SpaltenIndex("ID_GG")); // no rows: nothing to number
    kataster.ZeileHinzufügen("x");
    ComboColVis(kataster, "AL-amtl.Lageplan", datei);
    ASSERT_TRUE(kataster.SpaltenIndex("ID_GG"));
    // the view places it: second, behind the marks
    EXPECT_EQ(SichtbareSchlüssel(kataster),
              (std::vector<std::string>{"checkdruck", "ID_GG", "Flurstück"}));
}

TEST_F(AnsichtTest, AnsichtSortiertNachDerStandardordnung) {
    Kataster k;
    for (const char* s : {"Gemarkung", "Flur", "Flurstück", "Eigentümerposition"})
        k.SpalteHinzufügen({s, s});
    k.ZeileHinzufügen("B\t001\t00001/000\t0001");
    k.ZeileHinzufügen("A\t002\t00001/000\t0002");
    k.ZeileHinzufügen("A\t002\t00001/000\t0001");
    ComboColVis(k, "alles", datei);
    EXPECT_EQ(k.ZeileAlsText(0), "A\t002\t00001/000\t0001");
    EXPECT_EQ(k.ZeileAlsText(2), "B\t001\t00001/000\t0001");
}

// The text exports write captions in Windows-1252: every caption must come through whole.
TEST(Spaltenformat, JedeÜberschriftPasstInWindows1252) {
    for (const KatalogSpalte& k : Katalog())
        EXPECT_EQ(Cp1252NachUtf8(Utf8NachCp1252(k.überschrift)), k.überschrift) << k.schlüssel;
    EXPECT_EQ(KatalogSpalteFür("checkdruck").überschrift, "×");
}

TEST(Spaltenformat, FlurstückWirdZurZahlUndBleibtBeimZweitenMal) {
    Kataster k;
    SpaltenAnlegen(k);
    const auto fs = *k.SpaltenIndex("Flurstück");
    const std::pair<std::string, std::string> fälle[] = {
        {"00231/001", "231/1"}, {"00231/000", "231"}, {"00231", "231"},
        {"", ""},               {"00007/010", "7/10"}, {"abc", "0"},
    };
    for (const auto& [vorher, nachher] : fälle) {
        k.ZeileHinzufügen("");
        k.ZelleSetzen(k.Zeilenzahl() - 1, fs, vorher);
    }
    SkriptOberfläche ui({Antwort::Nein, Antwort::Ja, Antwort::Ja});
    EXPECT_FALSE(FlurstückZahlenformat(k, ui));
    EXPECT_EQ(k.Zelle(0, fs), "00231/001");
    for (int durchgang = 0; durchgang < 2; ++durchgang) {
        EXPECT_TRUE(FlurstückZahlenformat(k, ui));
        for (std::size_t z = 0; z < std::size(fälle); ++z)
            EXPECT_EQ(k.Zelle(z, fs), fälle[z].second) << fälle[z].first;
    }
    EXPECT_EQ(ui.Fragen()[0], "Sollen die Spaltenformatierungen für Flur, Flurstück, Fläche, "
                              "Grundbuchblatt und BVNR  nicht umkehrbar geändert werden?    ");
    EXPECT_EQ(ui.Texte(Ereignis::Art::Status).front(), "0% umgewandelt  ");
    const auto& fläche = k.Spalte(*k.SpaltenIndex("Fläche"));
    EXPECT_EQ(fläche.format, "0");
    EXPECT_EQ(Anzeigeform(fläche, "000000512"), "512");
    EXPECT_EQ(Anzeigeform(fläche, ""), "");
    EXPECT_EQ(Anzeigeform(fläche, "12a"), "12a");
    EXPECT_EQ(Anzeigeform(k.Spalte(fs), "00042"), "00042"); // no format: as it stands
}

TEST(Spaltenformat, NullenmusterStellen) {
    struct Fall {
        const char* format;
        const char* text;
        const char* erwartet;
    };
    const Fall fälle[] = {
        {"0000", "4", "0004"},
        {"0000", "12345", "12345"},       // more places than the pattern: all of them
        {"0000", "0004", "0004"},
        {"000000000.00", "49171.00", "000049171.00"},
        {"000000000.00", "0049171.5", "000049171.50"},
        {"000000000.00", "12.346", "000000012.35"}, // rounded to the pattern's places
        {"000000000.00", "-3", "-000000003.00"},
        {"0000", "", ""},
        {"0000", "4a", "4a"},             // no number: as it stands
        {"0#00", "4", "4"},               // not a pattern of zeros: as it stands
    };
    for (const Fall& fall : fälle) {
        KatasterSpalte spalte("x", "x");
        spalte.format = fall.format;
        EXPECT_EQ(Anzeigeform(spalte, fall.text), fall.erwartet) << fall.format << " " << fall.text;
    }
}

TEST(Spaltenformat, BreitenNachInhaltMitGrenzen) {
    Kataster k;
    SpaltenAnlegen(k);
    const std::string lang(80, 'x');
    k.ZeileHinzufügen("");
    for (const char* s : {"Nutzungsart", "Name", "Fläche"})
        k.ZelleSetzen(0, s, lang);
    ALBDatenColFormatierung(k);
    EXPECT_EQ(k.Spalte(*k.SpaltenIndex("Nutzungsart")).breite, 2000);
    EXPECT_EQ(k.Spalte(*k.SpaltenIndex("Fläche")).breite, 1200);
    EXPECT_EQ(k.Spalte(*k.SpaltenIndex("Name")).breite, TextbreiteTwips(lang));
    EXPECT_GT(k.Spalte(*k.SpaltenIndex("Name")).breite, 2000); // names are not capped
    EXPECT_TRUE(k.Spalte(*k.SpaltenIndex("Flurstück")).schattiert);

    // Characters count, not bytes: four umlauts are shorter than five letters.
    Kataster zeichen;
    zeichen.SpalteHinzufügen({"N", "N"});
    zeichen.ZeileHinzufügen("ÄÖÜÄÖÜÄÖÜÄÖÜ");
    zeichen.ZeileHinzufügen("abcdefghijklm");
    ALBDatenColFormatierung(zeichen);
    EXPECT_EQ(zeichen.Spalte(0).breite, TextbreiteTwips("abcdefghijklm"));
}

TEST(ZeilenLöschen, FragenJeNachAnzahl) {
    Kataster k;
    k.SpalteHinzufügen({"Nr", "Nr"});
    for (int i = 0; i < 50; ++i)
        k.ZeileHinzufügen(std::to_string(i));
    SkriptOberfläche ui({Antwort::Nein, Antwort::Ja, Antwort::Ja});
    EXPECT_EQ(ZeilenLöschenMitFrage(k, {3}, ui), 0u);
    EXPECT_EQ(ZeilenLöschenMitFrage(k, {3}, ui), 1u);
    std::vector<std::size_t> viele(40);
    for (std::size_t i = 0; i < viele.size(); ++i)
        viele[i] = i;
    EXPECT_EQ(ZeilenLöschenMitFrage(k, viele, ui), 40u);
    EXPECT_EQ(k.Zeilenzahl(), 9u);
    EXPECT_EQ(k.Zelle(0, 0), "41");
    EXPECT_EQ(ui.Fragen(), (std::vector<std::string>{
                               "Datensatz löschen?   ", "Datensatz löschen?   ",
                               "Achtung!\nEs sind 40 Datenzeilen selektiert!\n\nAlle selektierten "
                               "Datenzeilen löschen?   "}));
    EXPECT_EQ(ui.Texte(Ereignis::Art::Status),
              (std::vector<std::string>{"0% gelöscht  ", "100% gelöscht  ", "0% gelöscht  ",
                                        "50% gelöscht  ", "100% gelöscht  "}));
}

} // namespace
} // namespace flurix
