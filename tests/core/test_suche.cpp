#include "core/suche.hpp"

#include "core/kataster.hpp"
#include "core/markierung.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "kernhilfen.hpp"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace flurix {
namespace {

using test::Argumente;
using test::Zitat;

// Which rows were hit: their "Nr".
std::vector<std::string> GewählteNummern(const Kataster& k) { return test::Spalte(k, "Nr", true); }

constexpr std::string_view Kopf =
    "Nr\tGemarkung\tGemarkungsschlüssel\tFlur\tFlurstück\tEigentümerposition\tName\t"
    "Flurstückskennzeichen";

// Two Gemarkungen; parcel 231 of Nordheim Flur 7 has two owners; rows not in the default order.
Kataster Suchtabelle() {
    return test::Tabelle(Kopf, {
        "1\tSüdheim\t121956\t007\t00231/0000\t0001\tMeier\t12195600700231000000",
        "2\tNordheim\t121955\t007\t00231/0000\t0002\tSchulze\t12195500700231000000",
        "3\tNordheim\t121955\t007\t00231/0000\t0001\tmeier\t12195500700231000000",
        "4\tNordheim\t121955\t008\t00231/0001\t0001\tMeier; Schulze\t12195500800231000100",
        "5\tNordheim\t121955\t007\t00012_0003\t0001\tKrause\t12195500700012000300",
        "6\tSüdheim\t121956\t001\t00231/0000\t0001\tMEIER\t12195600100231000000",
    });
}

// The rows a search selects (their Nr, in table order after the search's sort), the hint of a
// term found as typed, and everything the UI was told, one line.
std::string Suchergebnis(Kataster k, const Argumente& a, std::size_t paarAb) {
    const std::size_t spalten = k.Spaltenzahl();
    k.Auswählen(0); // an earlier selection doesn't stay
    const auto paar = a.size() > paarAb ? GemarkungFlurAusEintrag(a[paarAb], a.size() > paarAb + 1) : std::nullopt;
    SkriptOberfläche ui;
    std::string hinweis;
    const std::size_t treffer =
        CmdFlurixSuchbegriff(k, a[0], a[1], paar, a[paarAb - 1] == "alle", nullptr, ui, &hinweis);
    std::string text;
    for (const auto& nr : GewählteNummern(k))
        text += (text.empty() ? "" : " ") + nr;
    text = "[" + text + "]" + (treffer != GewählteNummern(k).size() ? " Anzahl " + std::to_string(treffer) : "");
    if (k.Spaltenzahl() != spalten)
        text += " neue Spalten"; // no marks without the site plan
    if (!hinweis.empty())
        text += " Hinweis " + Zitat(hinweis);
    return text + test::Verlauf(ui, true);
}

TEST(Suche, Wertetabelle) {
    EXPECT_EQ(test::Wertetabelle("suche.txt", {
        {"Auffüllen", [](const Argumente& a) { return Zitat(NullenAuffüllen(a[0], std::stoul(a[1]))); }},
        {"Suchbegriff", [](const Argumente& a) { return Zitat(SuchbegriffAuffüllen(a[0], a[1])); }},
        {"Box", [](const Argumente& a) {
             const auto paar = GemarkungFlurAusEintrag(a[0], a.size() > 1);
             if (!paar)
                 return std::string("NULL");
             return Zitat(paar->gemarkung) + " " + Zitat(paar->flur) +
                    (paar->ausKennzeichen ? " aus Kennzeichen" : "") + " -> " + Zitat(BoxEintrag(*paar));
         }},
        // The Gemarkung/Flur box of a table (a header and rows): its entries, the column Flur
        // afterwards (sorted), or for the box of NAS tables the keys of the rows in the pair of the
        // first entry; and what the UI was told.
        {"GemFlurBox", [](const Argumente& a) {
             Kataster k = test::Tabelle(a[0], Argumente(a.begin() + 1, a.end()));
             SkriptOberfläche ui;
             const std::string einträge = test::Liste(BoxGemFlurFüllen(k, ui));
             return einträge + " Flur " + test::Liste(test::Spalte(k, "Flur")) + test::Verlauf(ui, true);
         }},
        {"NasBox", [](const Argumente& a) {
             Kataster k = test::Tabelle(a[0], Argumente(a.begin() + 1, a.end()));
             SkriptOberfläche ui;
             const auto einträge = BoxGemFlurNASFüllen(k, ui);
             std::vector<std::string> imPaar;
             for (std::size_t z = 0; z < k.Zeilenzahl() && !einträge.empty(); ++z)
                 if (ZeileInGemarkungFlur(k, z, *GemarkungFlurAusEintrag(einträge[0], true)))
                     imPaar.emplace_back(k.Zelle(z, "Flurstückskennzeichen"));
             return test::Liste(einträge) + " im ersten Paar " + test::Liste(imPaar) + test::Verlauf(ui, true);
         }},
        {"Suchen", [](const Argumente& a) { return Suchergebnis(Suchtabelle(), a, 3); }},
        {"Formen", [](const Argumente& a) {
             const Argumente mitSpalte = {"Flurstück", a[0], a[1]};
             return Suchergebnis(test::Tabelle("Nr\tFlurstück", {"1\t00012/0003", "2\t00045/006", "3\t78/9", "4\t78"}),
                                 mitSpalte, 3);
         }},
    }), "");
}

TEST(CmdFlurixSuchbegriff, ImLageplanWerdenTrefferMarkiertUndNummeriert) {
    Kataster k = Suchtabelle();
    SkriptOberfläche ui;
    Stempelnummerierung nummerierung;
    MarkierungGeklickt(k, 5, true, nummerierung); // row "6" has stamp 1 already
    CmdFlurixSuchbegriff(k, "Name", "meier", std::nullopt, false, &nummerierung, ui);
    // Numbers in the order of the hits before the sort: row 1, then row 3; row 6 keeps its 1.
    std::vector<std::string> je; // Nr:checkdruck:ID_GG
    for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
        je.push_back(std::string(k.Zelle(z, "Nr")) + ":" + std::string(k.Zelle(z, "checkdruck")) + ":" +
                     std::string(k.Zelle(z, "ID_GG")));
    EXPECT_EQ(je, (std::vector<std::string>{"3:1:3", "4::", "5::", "2::", "1:1:2", "6:1:1"}));
    EXPECT_EQ(nummerierung.StempelNr(), 3);
}

// One pass over the rows must select exactly what finding again and again from the row after the
// last hit selects, with the table's own find.
TEST(CmdFlurixSuchbegriff, GleichWieWiederholtesSuchenAbLetztemTreffer) {
    const std::string_view namen[] = {"Meier", "meier", "MEIER", "Meierhof", "Müller", "müller",
                                      "Mueller", "Schulze; Meier", "", "Straße", "STRASSE"};
    std::mt19937 zufall(17);
    Kataster k = test::Tabelle("Nr\tName", {});
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

} // namespace
} // namespace flurix
