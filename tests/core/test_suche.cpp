#include "core/suche.hpp"

#include "core/kataster.hpp"
#include "core/markierung.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

namespace flurix {
namespace {

// A table from a header line of keys and rows, all tab-joined.
Kataster TabelleAus(std::string_view kopf, std::initializer_list<std::string_view> zeilen) {
    Kataster k;
    for (std::string_view schlüssel : Teilen(kopf, '\t'))
        k.SpalteHinzufügen({std::string(schlüssel), std::string(schlüssel), 1000});
    for (std::string_view zeile : zeilen)
        k.ZeileHinzufügen(zeile);
    return k;
}

// The cells of one column in table order: of every row, or of the selected rows only.
std::vector<std::string> Zellen(const Kataster& k, std::string_view schlüssel, bool nurGewählte) {
    std::vector<std::string> werte;
    for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
        if (!nurGewählte || k.Ausgewählt(z))
            werte.emplace_back(k.Zelle(z, schlüssel));
    return werte;
}
// Which rows were hit: their "Nr".
std::vector<std::string> GewählteNummern(const Kataster& k) { return Zellen(k, "Nr", true); }

TEST(NullenAuffüllen, ZiffernWerdenAufgefülltAnderesBleibt) {
    struct Fall {
        std::string_view zahl;
        std::size_t stellen;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"231", 5, "00231"}, {"0007", 3, "007"}, {"123456", 5, "123456"}, {"0", 3, "000"},
        {" 7 ", 3, "007"},   {"", 3, ""},        {"12a", 3, "12a"},       {"-3", 3, "-3"},
        {"1.5", 4, "1.5"},   {"000", 2, "00"},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(NullenAuffüllen(f.zahl, f.stellen), f.erwartet) << f.zahl << " / " << f.stellen;
}

TEST(SuchbegriffAuffüllen, JeSpalteInDerReihenfolgeDerPrüfungen) {
    struct Fall {
        std::string_view spalte, begriff, erwartet;
    };
    const Fall fälle[] = {
        {"Fläche", "1234", "000001234"},
        {"Fläche", " 42 ", "000000042"},
        {"Fläche", "viel", "viel"},
        {"Grundbuchblatt", "815", "0000815"},
        {"Flur", "7", "0007"},
        {"Flur", "007", "0007"},
        {"Flurstück", "231", "00231/0000"},
        {"Flurstück", "123456", "123456/0000"},
        {"Flurstück", "12_3", "00012_0003"},
        {"Flurstück", "231/1", "00231/0001"},
        {"Flurstück", "00231/001", "00231/0001"},
        {"Flurstück", " 231 / 1 ", "00231/0001"},
        // "_" is tested before "/": the Nenner "3/4" is no number and stays as typed
        {"Flurstück", "12_3/4", "00012_3/4"},
        {"Flurstück", "231a", "231a/0000"},
        {"Name", " Meier ", " Meier "},
        {"Gemarkungsschlüssel", "1955", "1955"},
        {"Flurstück", "   ", ""},
        {"Fläche", "", ""},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(SuchbegriffAuffüllen(f.spalte, f.begriff), f.erwartet)
            << f.spalte << ": \"" << f.begriff << "\"";
}

TEST(GemarkungFlur, BoxEintragHinUndZurück) {
    const auto paar = GemarkungFlurAusEintrag("Bad Muster, Nord, 007");
    ASSERT_TRUE(paar.has_value());
    EXPECT_EQ(paar->gemarkung, "Bad Muster, Nord"); // split at the last ", "
    EXPECT_EQ(paar->flur, "007");
    EXPECT_FALSE(paar->ausKennzeichen);
    EXPECT_EQ(BoxEintrag(*paar), "Bad Muster, Nord, 007");
    EXPECT_TRUE(GemarkungFlurAusEintrag("121955, 007", true)->ausKennzeichen);
    EXPECT_FALSE(GemarkungFlurAusEintrag("Musterstadt 007").has_value());
}

constexpr std::string_view Kopf =
    "Nr\tGemarkung\tGemarkungsschlüssel\tFlur\tFlurstück\tEigentümerposition\tName\t"
    "Flurstückskennzeichen";

// Two Gemarkungen; parcel 231 of Nordheim Flur 7 has two owners; rows not in the default order.
Kataster Suchtabelle() {
    return TabelleAus(Kopf, {
        "1\tSüdheim\t121956\t007\t00231/0000\t0001\tMeier\t12195600700231000000",
        "2\tNordheim\t121955\t007\t00231/0000\t0002\tSchulze\t12195500700231000000",
        "3\tNordheim\t121955\t007\t00231/0000\t0001\tmeier\t12195500700231000000",
        "4\tNordheim\t121955\t008\t00231/0001\t0001\tMeier; Schulze\t12195500800231000100",
        "5\tNordheim\t121955\t007\t00012_0003\t0001\tKrause\t12195500700012000300",
        "6\tSüdheim\t121956\t001\t00231/0000\t0001\tMEIER\t12195600100231000000",
    });
}

TEST(CmdFlurixSuchbegriff, TrefferAuswahlStatusUndMeldung) {
    const GemarkungFlur nordheim7{"Nordheim", "007", false};
    const GemarkungFlur nas7{"121955", "7", true};
    struct Fall {
        std::string_view name;
        std::string_view spalte, begriff;
        std::optional<GemarkungFlur> paar;
        bool alleEigentümer;
        std::vector<std::string> treffer; ///< Nr of the hit rows after the sort
        std::string meldung;              ///< "" when there is a hit
    };
    const Fall fälle[] = {
        {"gepolstert", "Flurstück", "231", std::nullopt, false, {"3", "2", "1", "6"}, ""},
        {"Unterstrich", "Flurstück", "12_3", std::nullopt, false, {"5"}, ""},
        {"ohne Groß/klein", "Name", "meier", std::nullopt, false, {"3", "1", "6"}, ""},
        {"Liste nur mit Stern", "Name", "Meier", std::nullopt, true, {"3", "4", "1", "6"}, ""},
        {"Stern nicht doppelt", "Name", "Mei*", std::nullopt, true, {"3", "4", "1", "6"}, ""},
        {"im Paar", "Flurstück", "231", nordheim7, false, {"3", "2"}, ""},
        {"Paar aus Kennzeichen", "Name", "meier", nas7, false, {"3"}, ""},
        {"leer mit Paar", "Name", "", nordheim7, false, {"3", "5", "2"}, ""},
        {"leer ohne Paar", "Flur", "  ", std::nullopt, false, {"3", "4", "5", "2", "1", "6"}, ""},
        {"kein Treffer", "Name", "Huber", std::nullopt, false, {},
         "Der Suchbegriff <Huber> wurde nicht gefunden!   "},
        {"kein Treffer, gepolstert mit Stern", "Flurstück", "99", std::nullopt, true, {},
         "Der Suchbegriff <00099/0000*> wurde nicht gefunden!   "},
        {"kein Treffer im Paar", "Name", "Krause", GemarkungFlur{"Nordheim", "008", false}, false, {},
         "Der Suchbegriff <Krause> Gemarkung: Nordheim, Flur: 008 wurde nicht gefunden!   "},
        {"Spalte fehlt", "Lagebezeichnung", "Weg", std::nullopt, false, {},
         "Der Suchbegriff <Weg> wurde nicht gefunden!   "},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        Kataster k = Suchtabelle();
        k.Auswählen(0); // an earlier selection doesn't stay
        SkriptOberfläche ui;
        EXPECT_EQ(CmdFlurixSuchbegriff(k, f.spalte, f.begriff, f.paar, f.alleEigentümer, nullptr, ui),
                  f.treffer.size());
        EXPECT_EQ(GewählteNummern(k), f.treffer);
        EXPECT_EQ(ui.LetzterStatus(1), std::to_string(f.treffer.size()) + " Zeile(n) selektiert  ");
        EXPECT_EQ(ui.Meldungen(),
                  f.meldung.empty() ? std::vector<std::string>{} : std::vector{f.meldung});
        if (!f.meldung.empty()) {
            EXPECT_EQ(ui.Ereignisse().back().titel, "Flurix");
        }
        EXPECT_EQ(k.Spaltenzahl(), Suchtabelle().Spaltenzahl()); // no mark without the site plan
    }
}

// The three forms of a parcel number: NAS pads Zähler and Nenner to 5 and 4 digits, WLDGE to 5
// and 3, Web-XML not at all. The padded term finds the first; the term as typed the others.
TEST(CmdFlurixSuchbegriff, AufgefülltDannWieEingegebenInAllenDreiFormen) {
    const auto tabelle = [] {
        return TabelleAus("Nr\tFlurstück", {"1\t00012/0003", "2\t00045/006", "3\t78/9", "4\t78"});
    };
    struct Fall {
        std::string_view begriff;
        bool alleEigentümer;
        std::vector<std::string> treffer;
        std::string hinweis; ///< "" when the padded form found the rows, or nothing did
    };
    const Fall fälle[] = {
        {"12/3", false, {"1"}, ""},
        {"00012/0003", false, {"1"}, ""},
        {"45/6", false, {}, ""},
        {"00045/006", false, {"2"}, "Kein Treffer für „00045/0006“, gesucht wie eingegeben: 00045/006"},
        {" 78/9 ", false, {"3"}, "Kein Treffer für „00078/0009“, gesucht wie eingegeben: 78/9"},
        {"78", false, {"4"}, "Kein Treffer für „00078/0000“, gesucht wie eingegeben: 78"},
        {"78", true, {"3", "4"}, "Kein Treffer für „00078/0000*“, gesucht wie eingegeben: 78*"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.begriff);
        Kataster k = tabelle();
        SkriptOberfläche ui;
        std::string hinweis = "alt";
        EXPECT_EQ(CmdFlurixSuchbegriff(k, "Flurstück", f.begriff, std::nullopt, f.alleEigentümer,
                                       nullptr, ui, &hinweis),
                  f.treffer.size());
        EXPECT_EQ(GewählteNummern(k), f.treffer);
        EXPECT_EQ(hinweis, f.hinweis);
        EXPECT_EQ(ui.LetzterStatus(2), f.hinweis);
        EXPECT_EQ(ui.Meldungen().size(), f.treffer.empty() ? 1U : 0U);
    }
}

TEST(CmdFlurixSuchbegriff, ImLageplanWerdenTrefferMarkiertUndNummeriert) {
    Kataster k = Suchtabelle();
    SkriptOberfläche ui;
    Stempelnummerierung nummerierung;
    MarkierungGeklickt(k, 5, true, nummerierung); // row "6" has stamp 1 already
    CmdFlurixSuchbegriff(k, "Name", "meier", std::nullopt, false, &nummerierung, ui);
    // Numbers in the order of the hits before the sort: row 1, then row 3; row 6 keeps its 1.
    using Paar = std::pair<std::string, std::string>; // checkdruck, ID_GG
    std::map<std::string, Paar> je;
    for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
        je[std::string(k.Zelle(z, "Nr"))] = {std::string(k.Zelle(z, "checkdruck")),
                                            std::string(k.Zelle(z, "ID_GG"))};
    EXPECT_EQ(je["1"], Paar("1", "2"));
    EXPECT_EQ(je["3"], Paar("1", "3"));
    EXPECT_EQ(je["6"], Paar("1", "1"));
    EXPECT_EQ(je["2"], Paar("", ""));
    EXPECT_EQ(nummerierung.StempelNr(), 3);
}

// One pass over the rows must select exactly what finding again and again from the row after the
// last hit selects, with the table's own find.
TEST(CmdFlurixSuchbegriff, GleichWieWiederholtesSuchenAbLetztemTreffer) {
    const std::string_view namen[] = {"Meier", "meier", "MEIER", "Meierhof", "Müller", "müller",
                                      "Mueller", "Schulze; Meier", "", "Straße", "STRASSE"};
    std::mt19937 zufall(17);
    Kataster k = TabelleAus("Nr\tName", {});
    for (int i = 0; i < 2000; ++i)
        k.ZeileHinzufügen(std::to_string(i) + "\t" + std::string(namen[zufall() % std::size(namen)]));
    for (std::string_view begriff : {"meier", "Meier*", "MÜLLER", "strasse", "Straße*", "x", "*"}) {
        SCOPED_TRACE(begriff);
        std::vector<std::size_t> erwartet;
        for (auto z = k.Suchen(1, begriff, 0); z; z = k.Suchen(1, begriff, *z + 1))
            erwartet.push_back(*z);
        SkriptOberfläche ui;
        CmdFlurixSuchbegriff(k, "Name", begriff, std::nullopt, false, nullptr, ui);
        // The search sorts; without the sort keys in this table the order stays.
        EXPECT_EQ(k.AusgewählteZeilen(), erwartet);
    }
}

TEST(BoxGemFlurFüllen, JePaarEinEintragMitProzentImStatus) {
    Kataster k = TabelleAus("Gemarkung\tGemarkungsschlüssel\tFlur", {
        "Südheim\t121956\t001", "Nordheim\t121955\t008", "Nordheim\t121955\t007",
        "Südheim\t121956\t001", "Nordheim\t121955\t007"});
    SkriptOberfläche ui;
    EXPECT_EQ(BoxGemFlurFüllen(k, ui),
              (std::vector<std::string>{"Nordheim, 007", "Nordheim, 008", "Südheim, 001"}));
    EXPECT_EQ(ui.Texte(Ereignis::Art::Status),
              (std::vector<std::string>{"0% Gemarkungschlüssel zuordnen  ",
                                        "20% Gemarkungschlüssel zuordnen  ",
                                        "40% Gemarkungschlüssel zuordnen  ",
                                        "60% Gemarkungschlüssel zuordnen  ",
                                        "80% Gemarkungschlüssel zuordnen  ",
                                        "100% Gemarkungschlüssel zuordnen  "}));
    EXPECT_EQ(Zellen(k, "Flur", false),
              (std::vector<std::string>{"007", "007", "008", "001", "001"})); // sorted

    Kataster leer = TabelleAus("Gemarkung\tGemarkungsschlüssel\tFlur", {});
    SkriptOberfläche ui2;
    EXPECT_TRUE(BoxGemFlurFüllen(leer, ui2).empty());
    EXPECT_EQ(ui2.Texte(Ereignis::Art::Status),
              std::vector<std::string>{"100% Gemarkungschlüssel zuordnen  "});
}

TEST(BoxGemFlurFüllen, NasTabelleNimmtGemarkungAusDemKennzeichen) {
    Kataster k = TabelleAus("Gemarkung\tFlur\tFlurstückskennzeichen", {
        "\t\t12195600100231000000", "\t\t12195500700231000000", "\t\t1219",
        "\t\t12195500700012000300", "\t\t12195500800231000100"});
    SkriptOberfläche ui;
    const auto einträge = BoxGemFlurNASFüllen(k, ui);
    EXPECT_EQ(einträge, (std::vector<std::string>{"121955, 007", "121955, 008", "121956, 001"}));
    EXPECT_EQ(ui.LetzterStatus(1), "100% Gemarkungschlüssel zuordnen  ");
    // An entry chosen in that box finds the rows of its pair.
    const auto paar = GemarkungFlurAusEintrag(einträge[0], true);
    std::vector<std::string> imPaar;
    for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
        if (ZeileInGemarkungFlur(k, z, *paar))
            imPaar.emplace_back(k.Zelle(z, "Flurstückskennzeichen"));
    EXPECT_EQ(imPaar, (std::vector<std::string>{"12195500700012000300", "12195500700231000000"}));
}

} // namespace
} // namespace flurix
