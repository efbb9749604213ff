#include "core/kataster.hpp"

#include "core/cp1252.hpp"
#include "core/katalog.hpp"
#include "core/spaltenansicht.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "kernhilfen.hpp"

#include <gtest/gtest.h>

#include <numeric>

namespace flurix {
namespace {

using test::Spalte;
using test::Tabelle;
using Texte = std::vector<std::string>;
using Nummern = std::vector<std::size_t>;

TEST(Kataster, ZeilenAusTabGetrenntemTextUndSpaltenJeSchlüsselEinmal) {
    // Missing cells stay empty, surplus cells are dropped.
    Kataster k = Tabelle("Gemarkung\tFlur\tFlurstück",
                         {"Musterstadt\t001\t00042/000", "Nord\t002", "Süd\t003\t00001/000\tzuviel", "", "\t\t"});
    EXPECT_EQ(Spalte(k, "Flurstück"), (Texte{"00042/000", "", "00001/000", "", ""}));
    EXPECT_EQ(k.ZeileAlsText(2), "Süd\t003\t00001/000");
    EXPECT_EQ(k.Zelle(0, "gibtsnicht"), "");
    EXPECT_FALSE(k.ZelleSetzen(0, "gibtsnicht", "x"));
    const auto id = k.SpalteHinzufügen({"ID_GG", "ID_GG", 600});
    EXPECT_EQ(k.SpalteHinzufügen({"ID_GG", "andere Überschrift"}), id);
    EXPECT_EQ(k.Spalte(id).überschrift, "ID_GG");
    EXPECT_EQ(k.Zelle(0, id), ""); // existing rows get an empty cell
    k.ZelleSetzen(0, id, "7");
    EXPECT_EQ(k.Zelle(0, "ID_GG"), "7");
}

TEST(Kataster, SortierenNachSchlüssellisteÜberspringtFehlendeSchlüssel) {
    Kataster k = Tabelle("Gemarkung\tFlur\tFlurstück\tEigentümerposition",
                         {"Nord\t002\t00010/000\t0002", "Äpfelbach\t001\t00005/000\t0001", "Nord\t001\t00010/000\t0001",
                          "apfelbach\t001\t00004/000\t0001", "Nord\t002\t00010/000\t0001", "Zell\t001\t00001/000\t0001"});
    k.Auswählen(0); // "Nord 002 0002" is selected and must stay so
    k.Sortieren("Gemarkung,Grunbuchblatt,Flur, Flurstück ,Eigentümerposition");
    EXPECT_EQ(Spalte(k, "Gemarkung"), (Texte{"apfelbach", "Äpfelbach", "Nord", "Nord", "Nord", "Zell"}));
    EXPECT_EQ(Spalte(k, "Eigentümerposition"), (Texte{"0001", "0001", "0001", "0001", "0002", "0001"}));
    EXPECT_EQ(k.AusgewählteZeilen(), Nummern{4});
    k.Sortieren("Flur", true); // descending, stable: equal keys keep their order
    EXPECT_EQ(Spalte(k, "Flur"), (Texte{"002", "002", "001", "001", "001", "001"}));
    EXPECT_EQ(Spalte(k, "Eigentümerposition"), (Texte{"0001", "0002", "0001", "0001", "0001", "0001"}));
    const auto vorher = Spalte(k, "Gemarkung");
    k.Sortieren("Grunbuchblatt");
    EXPECT_EQ(Spalte(k, "Gemarkung"), vorher); // only missing keys: nothing moves
}

TEST(Kataster, SuchenGanzeZelleOderAnfangAbZeile) {
    const Kataster k = Tabelle("Name", {"Müller", "Mustermann", "Müller; Schmidt", "müller", "Meier"});
    const std::tuple<std::string, std::size_t, std::optional<std::size_t>> fälle[] = {
        {"Müller", 0, 0}, {"Müller", 1, 3},           {"MÜLLER", 1, 3},          {"Müller*", 1, 2},
        {"Mu*", 0, 0},    {"Schmidt", 0, std::nullopt}, {"Meier", 5, std::nullopt}, {"*", 4, 4},
    };
    for (const auto& [begriff, ab, erwartet] : fälle)
        EXPECT_EQ(k.Suchen(0, begriff, ab), erwartet) << begriff << " ab " << ab;
}

TEST(Kataster, ZeilenLöschenUndSpaltenVerschieben) {
    Kataster k = Tabelle("Nr\tText", {"0\tt0", "1\tt1", "2\tt2", "3\tt3", "4\tt4", "5\tt5"});
    k.Auswählen(5);
    const std::size_t weg[] = {4, 1, 1, 99};
    k.ZeilenLöschen(weg); // the others keep their order and their choice
    EXPECT_EQ(Spalte(k, "Nr"), (Texte{"0", "2", "3", "5"}));
    EXPECT_EQ(Spalte(k, "Text"), (Texte{"t0", "t2", "t3", "t5"}));
    EXPECT_EQ(k.AusgewählteZeilen(), Nummern{3});

    Kataster s = Tabelle("a\tb\tc\td", {});
    s.SpalteVerschieben(3, 0);
    EXPECT_EQ(s.Anzeigereihenfolge(), (Nummern{3, 0, 1, 2}));
    s.SpalteVerschieben(3, 2); // the same column again: it ends at its last place
    EXPECT_EQ(s.Anzeigereihenfolge(), (Nummern{0, 1, 3, 2}));
    s.SpalteVerschieben(0, 99);
    EXPECT_EQ(s.Anzeigereihenfolge(), (Nummern{1, 3, 2, 0}));
    s.Spalte(1).sichtbar = false;
    s.AlleSpaltenZeigen();
    EXPECT_EQ(s.Anzeigereihenfolge(), (Nummern{0, 1, 2, 3}));
    EXPECT_TRUE(s.Spalte(1).sichtbar);
}

TEST(Spaltenansicht, AnsichtenAusDerDatei) {
    test::TempOrdner ordner;
    const auto datei = ordner / "ALB_DatenbankSpalten.dat";
    test::DateiSchreiben(datei, "Kataster ALKIS=Flur;Gemarkung;GibtEsNicht;Flurstück\r\n"
                                "Doppelt=Name;Flur;Gemarkung;Name\r\nAL-amtl.Lageplan=checkdruck;ID_GG;Flurstück\r\n");
    EXPECT_EQ(AnsichtenNamen(datei), (Texte{"alles", "Kataster ALKIS", "Doppelt", "AL-amtl.Lageplan"}));
    EXPECT_EQ(AnsichtenNamen(ordner / "fehlt.dat"), Texte{"alles"});
    Kataster k;
    SpaltenAnlegen(k);
    // A named view shows its columns in its order; an unknown view or file changes nothing.
    ASSERT_TRUE(ComboColVis(k, "Doppelt", datei));
    EXPECT_EQ(test::SichtbareSpalten(k), (Texte{"Flur", "Gemarkung", "Name"}));
    ASSERT_TRUE(ComboColVis(k, "Kataster ALKIS", datei));
    EXPECT_EQ(test::SichtbareSpalten(k), (Texte{"Flur", "Gemarkung", "Flurstück"}));
    EXPECT_FALSE(ComboColVis(k, "Gibt es nicht", datei));
    EXPECT_FALSE(ComboColVis(k, "AL-amtl.Lageplan", ordner / "fehlt.dat"));
    EXPECT_EQ(test::SichtbareSpalten(k), (Texte{"Flur", "Gemarkung", "Flurstück"}));
    // "alles" brings back the catalogue's order.
    ASSERT_TRUE(ComboColVis(k, "alles", datei));
    const auto sichtbar = test::SichtbareSpalten(k);
    ASSERT_EQ(sichtbar.size(), Katalog().size());
    for (std::size_t i = 0; i < sichtbar.size(); ++i)
        EXPECT_EQ(sichtbar[i], Katalog()[i].schlüssel);
    // The site plan numbers rows: with rows it gets the number column, second behind the marks.
    ComboColVis(k, "AL-amtl.Lageplan", datei);
    EXPECT_FALSE(k.SpaltenIndex("ID_GG"));
    k.ZeileHinzufügen("x");
    ComboColVis(k, "AL-amtl.Lageplan", datei);
    EXPECT_EQ(test::SichtbareSpalten(k), (Texte{"checkdruck", "ID_GG", "Flurstück"}));
    // A view sorts the rows in the default order.
    Kataster sortiert = Tabelle("Gemarkung\tFlur\tFlurstück\tEigentümerposition",
                                {"B\t001\t00001/000\t0001", "A\t002\t00001/000\t0002", "A\t002\t00001/000\t0001"});
    ComboColVis(sortiert, "alles", datei);
    EXPECT_EQ(sortiert.ZeileAlsText(0), "A\t002\t00001/000\t0001");
    EXPECT_EQ(sortiert.ZeileAlsText(2), "B\t001\t00001/000\t0001");
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
        {"00231/001", "231/1"}, {"00231/000", "231"}, {"00231", "231"}, {"", ""}, {"00007/010", "7/10"}, {"abc", "0"},
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
    EXPECT_EQ(k.Spalte(*k.SpaltenIndex("Fläche")).format, "0"); // shown as a plain number
    EXPECT_EQ(k.Spalte(fs).format, "");                           // as it stands
}

TEST(Spaltenformat, BreitenNachInhaltMitGrenzen) {
    Kataster k;
    SpaltenAnlegen(k);
    const std::string lang(80, 'x');
    k.ZeileHinzufügen("");
    for (const char* s : {"Nutzungsart", "Name", "Fläche"})
        k.ZelleSetzen(0, s, lang);
    ALBDatenColFormatierung(k);
    const auto breite = [&](const char* s) { return k.Spalte(*k.SpaltenIndex(s)).breite; };
    EXPECT_EQ(breite("Nutzungsart"), 2000);
    EXPECT_EQ(breite("Fläche"), 1200);
    EXPECT_EQ(breite("Name"), TextbreiteTwips(lang));
    EXPECT_GT(breite("Name"), 2000); // names are not capped
    EXPECT_TRUE(k.Spalte(*k.SpaltenIndex("Flurstück")).schattiert);
    // Characters count, not bytes: four umlauts are shorter than five letters.
    Kataster zeichen = Tabelle("N", {"ÄÖÜÄÖÜÄÖÜÄÖÜ", "abcdefghijklm"});
    ALBDatenColFormatierung(zeichen);
    EXPECT_EQ(zeichen.Spalte(0).breite, TextbreiteTwips("abcdefghijklm"));
}

TEST(ZeilenLöschen, FragenJeNachAnzahl) {
    Kataster k = Tabelle("Nr", {});
    for (int i = 0; i < 50; ++i)
        k.ZeileHinzufügen(std::to_string(i));
    SkriptOberfläche ui({Antwort::Nein, Antwort::Ja, Antwort::Ja});
    EXPECT_EQ(ZeilenLöschenMitFrage(k, {3}, ui), 0u);
    EXPECT_EQ(ZeilenLöschenMitFrage(k, {3}, ui), 1u);
    std::vector<std::size_t> viele(40);
    std::iota(viele.begin(), viele.end(), 0);
    EXPECT_EQ(ZeilenLöschenMitFrage(k, viele, ui), 40u);
    EXPECT_EQ(k.Zeilenzahl(), 9u);
    EXPECT_EQ(k.Zelle(0, 0), "41");
    const std::string frage = "Frage [Löschen] \"Datensatz löschen?   \"\n", status = "Status 1 \"";
    EXPECT_EQ(test::Verlauf(ui), frage + frage + status + "0% gelöscht  \"\n" + status + "100% gelöscht  \"\n" +
                                     "Frage [Löschen] \"Achtung!\\nEs sind 40 Datenzeilen selektiert!\\n\\nAlle "
                                     "selektierten Datenzeilen löschen?   \"\n" + status + "0% gelöscht  \"\n" +
                                     status + "50% gelöscht  \"\n" + status + "100% gelöscht  \"\n");
}

} // namespace
} // namespace flurix
