#include "core/kataster.hpp"

#include <gtest/gtest.h>

namespace flurix {
namespace {

Kataster Tabelle(std::initializer_list<std::string_view> schlüssel) {
    Kataster k;
    for (std::string_view s : schlüssel)
        k.SpalteHinzufügen({std::string(s), std::string(s)});
    return k;
}

std::vector<std::string> Spalte(const Kataster& k, std::string_view schlüssel) {
    std::vector<std::string> werte;
    for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
        werte.emplace_back(k.Zelle(z, schlüssel));
    return werte;
}

TEST(Kataster, ZeilenAusTabGetrenntemText) {
    Kataster k = Tabelle({"Gemarkung", "Flur", "Flurstück"});
    k.ZeileHinzufügen("Musterstadt\t001\t00042/000");
    k.ZeileHinzufügen("Nord\t002");                    // missing cells stay empty
    k.ZeileHinzufügen("Süd\t003\t00001/000\tzuviel");  // surplus cells are dropped
    k.ZeileHinzufügen("");
    k.ZeileHinzufügen("\t\t");
    ASSERT_EQ(k.Zeilenzahl(), 5u);
    EXPECT_EQ(Spalte(k, "Flurstück"),
              (std::vector<std::string>{"00042/000", "", "00001/000", "", ""}));
    EXPECT_EQ(k.ZeileAlsText(2), "Süd\t003\t00001/000");
    EXPECT_EQ(k.Zelle(0, "gibtsnicht"), "");
    EXPECT_FALSE(k.ZelleSetzen(0, "gibtsnicht", "x"));
}

TEST(Kataster, SpalteJeSchlüsselNurEinmal) {
    Kataster k = Tabelle({"Name"});
    k.ZeileHinzufügen("Mustermann");
    const auto id = k.SpalteHinzufügen({"ID_GG", "ID_GG", 600});
    EXPECT_EQ(k.SpalteHinzufügen({"ID_GG", "andere Überschrift"}), id);
    EXPECT_EQ(k.Spalte(id).überschrift, "ID_GG");
    EXPECT_EQ(k.Zelle(0, id), ""); // existing rows get an empty cell
    k.ZelleSetzen(0, id, "7");
    EXPECT_EQ(k.Zelle(0, "ID_GG"), "7");
}

TEST(Kataster, SortierenNachSchlüssellisteÜberspringtFehlendeSchlüssel) {
    Kataster k = Tabelle({"Gemarkung", "Flur", "Flurstück", "Eigentümerposition"});
    for (std::string_view z : {"Nord\t002\t00010/000\t0002", "Äpfelbach\t001\t00005/000\t0001",
                               "Nord\t001\t00010/000\t0001", "apfelbach\t001\t00004/000\t0001",
                               "Nord\t002\t00010/000\t0001", "Zell\t001\t00001/000\t0001"})
        k.ZeileHinzufügen(z);
    k.Auswählen(0); // "Nord 002 0002" is selected and must stay so
    k.Sortieren("Gemarkung,Grunbuchblatt,Flur, Flurstück ,Eigentümerposition");
    EXPECT_EQ(Spalte(k, "Gemarkung"), (std::vector<std::string>{"apfelbach", "Äpfelbach", "Nord",
                                                                 "Nord", "Nord", "Zell"}));
    EXPECT_EQ(Spalte(k, "Eigentümerposition"),
              (std::vector<std::string>{"0001", "0001", "0001", "0001", "0002", "0001"}));
    EXPECT_EQ(k.AusgewählteZeilen(), std::vector<std::size_t>{4});

    k.Sortieren("Flur", true);
    EXPECT_EQ(Spalte(k, "Flur"),
              (std::vector<std::string>{"002", "002", "001", "001", "001", "001"}));
    // stable: equal keys keep their order
    EXPECT_EQ(Spalte(k, "Eigentümerposition")[0], "0001");
    EXPECT_EQ(Spalte(k, "Eigentümerposition")[1], "0002");

    const auto vorher = Spalte(k, "Gemarkung");
    k.Sortieren("Grunbuchblatt");
    EXPECT_EQ(Spalte(k, "Gemarkung"), vorher); // only missing keys: nothing moves
}

TEST(Kataster, SuchenGanzeZelleOderAnfangAbZeile) {
    Kataster k = Tabelle({"Name"});
    for (std::string_view z : {"Müller", "Mustermann", "Müller; Schmidt", "müller", "Meier"})
        k.ZeileHinzufügen(z);
    struct Fall {
        std::string begriff;
        std::size_t ab;
        std::optional<std::size_t> erwartet;
    };
    const Fall fälle[] = {
        {"Müller", 0, 0}, {"Müller", 1, 3},        {"MÜLLER", 1, 3}, {"Müller*", 1, 2},
        {"Mu*", 0, 0},    {"Schmidt", 0, std::nullopt}, {"Meier", 5, std::nullopt}, {"*", 4, 4},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(k.Suchen(0, f.begriff, f.ab), f.erwartet) << f.begriff << " ab " << f.ab;
}

TEST(Kataster, ZeilenLöschenBehältDieÜbrigenInIhrerOrdnung) {
    Kataster k = Tabelle({"Nr", "Text"});
    for (int i = 0; i < 6; ++i)
        k.ZeileHinzufügen(std::to_string(i) + "\tt" + std::to_string(i));
    k.Auswählen(5);
    const std::size_t weg[] = {4, 1, 1, 99};
    k.ZeilenLöschen(weg);
    EXPECT_EQ(Spalte(k, "Nr"), (std::vector<std::string>{"0", "2", "3", "5"}));
    EXPECT_EQ(Spalte(k, "Text"), (std::vector<std::string>{"t0", "t2", "t3", "t5"}));
    EXPECT_EQ(k.AusgewählteZeilen(), std::vector<std::size_t>{3});
}

TEST(Kataster, SpaltenVerschiebenUndAlleZeigen) {
    Kataster k = Tabelle({"a", "b", "c", "d"});
    k.SpalteVerschieben(3, 0);
    EXPECT_EQ(k.Anzeigereihenfolge(), (std::vector<std::size_t>{3, 0, 1, 2}));
    k.SpalteVerschieben(3, 2); // the same column again: it ends at its last place
    EXPECT_EQ(k.Anzeigereihenfolge(), (std::vector<std::size_t>{0, 1, 3, 2}));
    k.SpalteVerschieben(0, 99);
    EXPECT_EQ(k.Anzeigereihenfolge(), (std::vector<std::size_t>{1, 3, 2, 0}));
    k.Spalte(1).sichtbar = false;
    k.AlleSpaltenZeigen();
    EXPECT_EQ(k.Anzeigereihenfolge(), (std::vector<std::size_t>{0, 1, 2, 3}));
    EXPECT_TRUE(k.Spalte(1).sichtbar);
}

TEST(Vergleichsform, UmlauteUndGroßschreibung) {
    EXPECT_EQ(Vergleichsform("ÄÖÜäöüß Straße ABC"), "aouaouss strasse abc");
}

} // namespace
} // namespace flurix
