// The reorganisation of a NAS object database (shipped node file, filled by hand) into the rows of
// Alkis: rows per booking and owner, joins, location texts, hints on what could not be joined.

#include "nas/reorganisation.hpp"

#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/knoten.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"
#include "nas/tabellentext.hpp"

#include <gtest/gtest.h>

#include <map>

namespace flurix::nas {
namespace {

using test::DateiLesen;
using test::TempOrdner;

const std::filesystem::path Konfig = std::filesystem::path(FLURIX_QUELLEN) / "config";

struct Graph {
    TempOrdner ordner;
    SkriptOberfläche ui;
    std::unique_ptr<Datenbank> db;

    Graph() {
        db = DAO_DatenbankAnlegen(ordner / "nas.sqlite");
        DAO_DatenbankAnlegenAusKnoten(*db, KnotenLesen(Konfig / "ALKIS_Knoten.dat"), [](std::string_view) {});
    }

    void Zeile(std::string_view tabelle, const std::map<std::string, std::string>& werte) {
        std::string spalten, fragen;
        for (const auto& [spalte, wert] : werte) {
            spalten += (spalten.empty() ? "" : ", ") + Bezeichner(spalte);
            fragen += fragen.empty() ? "?" : ", ?";
        }
        auto einfügen =
            db->VorbereitenNativ("INSERT INTO " + Bezeichner(tabelle) + " (" + spalten + ") VALUES (" + fragen + ")");
        for (const auto& [spalte, wert] : werte)
            einfügen.Binde(wert);
        einfügen.Schritt();
    }
    void Beziehung(std::string_view tabelle, std::string_view von, std::string_view ziel,
                   std::string_view zielspalte) {
        Zeile(tabelle, {{"id", std::string(von)}, {std::string(zielspalte), std::string(ziel)}});
    }

    void Flurstück(const std::string& id, const std::string& kennzeichen,
                   std::map<std::string, std::string> mehr = {}) {
        mehr["id"] = id;
        mehr["flurstueckskennzeichen"] = kennzeichen;
        mehr.try_emplace("gemeindezugehoerigkeit", "07 2 31 103");
        mehr.try_emplace("gemarkung", "07 2566");
        Zeile("AX_Flurstueck", mehr);
    }
    void Buchung(const std::string& flurstück, const std::string& stelle, const std::string& blatt,
                 const std::string& nummer) {
        if (!flurstück.empty())
            Beziehung("AX_Flurstueck_istGebucht#AX_Buchungsstelle", flurstück, stelle, "AX_Buchungsstelle");
        Zeile("AX_Buchungsstelle", {{"id", stelle}, {"laufendeNummer", nummer}, {"buchungsart", "Grundstück"}});
        Beziehung("AX_Buchungsstelle_istBestandteilVon#AX_Buchungsblatt", stelle, blatt, "AX_Buchungsblatt");
    }
    void Blatt(const std::string& id, const std::string& nummer) {
        Zeile("AX_Buchungsblatt", {{"id", id},
                                   {"buchungsblattnummerMitBuchstabenerweiterung", nummer},
                                   {"buchungsblattbezirk", "07 2566"}});
    }
    // The rows of a fixture file (tests/daten/nas), into the node file's tables or new text tables.
    void Laden(const std::string& datei) {
        for (const auto& t : test::TabellentexteLesen(test::Testdaten() / "nas" / datei)) {
            if (!DAO_TabelleVorhanden(*db, t.name))
                test::TabellenAnlegen(*db, {{t.name, t.spalten, {}}});
            for (const auto& zeile : t.zeilen) {
                std::map<std::string, std::string> werte;
                for (std::size_t i = 0; i < zeile.size(); ++i)
                    if (zeile[i] != "\\N")
                        werte[t.spalten[i]] = zeile[i];
                Zeile(t.name, werte);
            }
        }
    }

    Reorganisationsbericht Reorganisieren() {
        NasProtokoll protokoll(ui, ordner / "auszug.xml.prn");
        return XmlReorganisation(*db, protokoll, ui);
    }

    std::vector<std::string> Alkis(const std::string& spalten, const std::string& ordnung) {
        return test::Abfragezeilen(*db, "SELECT " + spalten + " FROM Alkis ORDER BY " + ordnung);
    }
};

using Zeilen = std::vector<std::string>;

TEST(Reorganisation, EineZeileJeEigentümerMitPersonUndAnschrift) {
    Graph g;
    g.Laden("reorganisation_umfeld.tab");
    g.Laden("reorganisation_drei_eigentuemer.tab");
    const auto bericht = g.Reorganisieren();

    EXPECT_EQ(bericht.flurstücke, 1);
    EXPECT_EQ(bericht.zeilen, 3);
    EXPECT_EQ(g.Alkis("id_AX_Buchungsstelle, [laufendeNummer_AX_Buchungsstelle], "
                      "[buchungsblattnummerMitBuchstabenerweiterung_AX_Buchungsblatt], "
                      "AnzZeilen_AX_Namensnummer, id_AX_Namensnummer, "
                      "[laufendeNummerNachDIN1421_AX_Namensnummer], id_AX_Person, "
                      "nachnameOderFirma_AX_Person, strasse_AX_Anschrift",
                      "laufendeNummerNachDIN1421_AX_Namensnummer"),
              (Zeilen{"B1|0003|0001234|0003|N1|0001|P1|Muster, Erika|Weg Muster, Erika",
                      "B1|0003|0001234|0003|N2|0002|P2|Beispiel, Otto|Weg Beispiel, Otto",
                      "B1|0003|0001234|0003|N3|0003|P3|Ohneweg, Anna|"}));
    EXPECT_EQ(g.Alkis("DISTINCT bezeichnung_AX_Gemeinde, bezeichnung_AX_Gemarkung, "
                      "schluesselGesamt_AX_Buchungsblattbezirk, bezeichnung_AX_Dienststelle",
                      "1"),
              (Zeilen{"Musterstadt|Musterhausen||Katasteramt Musterstadt"}));
    EXPECT_EQ(bericht.Anzahl(Bezug::PersonAnschrift), 1);
    // No label point: counted once for the booking, before the rows are made per owner.
    EXPECT_EQ(bericht.Anzahl(Bezug::PositionApPto), 1);
}

TEST(Reorganisation, AngehängteBuchungen) {
    struct Fall {
        const char* name;
        std::vector<std::string> angehängt;
        Zeilen erwartet; // id_AX_Buchungsstelle of the rows, in the order they were made
    };
    const Fall fälle[] = {
        {"keine", {}, {"B"}},
        {"eine", {"X1"}, {"B", "X1"}},
        {"zwei", {"X1", "X2"}, {"X2", "X1"}},
        {"drei", {"X1", "X2", "X3"}, {"X3", "X2", "X1"}},
    };
    for (const Fall& fall : fälle) {
        Graph g;
        g.Flurstück("F", "07256600100012______");
        g.Buchung("F", "B", "S", "0001");
        g.Blatt("S", "1");
        for (const auto& x : fall.angehängt) {
            g.Buchung("", x, "S", x);
            g.Beziehung("AX_Buchungsstelle_an#ori_Buchungsstelle", x, "B", "ori_Buchungsstelle");
        }
        g.Reorganisieren();
        EXPECT_EQ(g.Alkis("id_AX_Buchungsstelle", "rowid"), fall.erwartet) << fall.name;
        if (!fall.angehängt.empty()) {
            const auto liste = g.Alkis("id_an_AX_Buchungsstelle", "rowid");
            EXPECT_NE(liste.front().find("X1"), std::string::npos) << fall.name;
        }
    }
}

TEST(Reorganisation, EineBuchungAnZweiBuchungen) {
    // A share booked "an" the bookings of two parcels belongs to both.
    Graph g;
    g.Laden("reorganisation_buchung_an_zwei.tab");
    g.Reorganisieren();
    EXPECT_EQ(g.Alkis("flurstueckskennzeichen, id_AX_Buchungsstelle", "rowid"),
              (Zeilen{"07256600100012______|X2", "07256600100012______|X1",
                      "07256600100013______|X2", "07256600100013______|X1"}));
}

TEST(Reorganisation, FlurstückOhneBuchungBleibtMitHinweisen) {
    Graph g;
    g.Laden("reorganisation_umfeld.tab");
    g.Flurstück("F9", "07256600100099______");
    const auto bericht = g.Reorganisieren();
    EXPECT_EQ(g.Alkis("flurstueckskennzeichen, id_AX_Buchungsstelle, nachnameOderFirma_AX_Person",
                      "rowid"),
              (Zeilen{"07256600100099______||"}));
    EXPECT_EQ(bericht.Hinweise(),
              (std::vector<std::string>{"Hinweis: 1 \"AX_Buchungsblatt\"  ohne Bezug...",
                                        "Hinweis: 1 \"AX_NamensnummerId\" ohne Bezug...",
                                        "Hinweis: 1 \"id_AX_Buchungsblatt\" ohne Bezug...",
                                        "Hinweis: 1 \"position_AP_PTO\" ohne Bezug...",
                                        "Hinweis: 1 \"AX_Flurstueck\" ohne AX_Namensnummer..."}));
    const std::string prn = DateiLesen(g.ordner / "auszug.xml.prn");
    EXPECT_NE(prn.find(", id_AX_Buchungsblatt, Index:  ohne Bezug..."), std::string::npos);
    EXPECT_NE(prn.find("Hinweis: 1 \"AX_Flurstueck\" ohne AX_Namensnummer..."), std::string::npos);
}

TEST(Reorganisation, HängendeVerweiseWerdenGezählt) {
    Graph g;
    g.Flurstück("F1", "07256600100012______", {{"gemeindezugehoerigkeit", "07 9 99 999"}});
    g.Buchung("F1", "B1", "S-fehlt", "0001"); // the sheet does not exist
    g.Beziehung("AX_Flurstueck_weistAuf#ori_LagebezeichnungMitHausnummer", "F1", "L-fehlt",
                "ori_LagebezeichnungMitHausnummer");
    const auto bericht = g.Reorganisieren();
    EXPECT_EQ(bericht.zeilen, 1);
    for (const auto bezug : {Bezug::Buchungsblatt, Bezug::Gemeinde, Bezug::Gemarkung, Bezug::Dienststelle,
                             Bezug::LageMitHausnummer})
        EXPECT_EQ(bericht.Anzahl(bezug), 1) << static_cast<int>(bezug);
    EXPECT_EQ(bericht.Anzahl(Bezug::IdBuchungsblatt), 0); // the link itself is there
}

TEST(Reorganisation, LagebezeichnungUndBeschriftungspunkt) {
    Graph g;
    g.Laden("reorganisation_lagen.tab");
    g.Reorganisieren();
    EXPECT_EQ(g.Alkis("Lagebezeichnung, Straßenschlüssel, Rechtswert, Hochwert, id_AP_PTO",
                      "flurstueckskennzeichen"),
              (Zeilen{"Am Markt 7; Hauptstraße 1, 3, 10|ohne; 00306|350821.045|5532031.370|T1",
                      "Im Wiesengrund|ohne|||"}));
}

TEST(Reorganisation, BögenWerdenInBeidenRingenZuSehnen) {
    Graph g;
    const std::string bogen = "0 10 7.0710678 7.0710678 10 0";
    g.Flurstück("F1", "07256600100012______",
                {{"gml:exterior", "0 0 " + bogen + " 0 0"},
                 {"gml:interior", "5 5 6 5 " + bogen + " 5 5"},
                 {"gml:Arc", bogen}});
    g.Reorganisieren();
    const auto ringe = g.Alkis("[gml:exterior], [gml:interior]", "rowid");
    ASSERT_EQ(ringe.size(), 1u);
    EXPECT_EQ(ringe.front().find(bogen), std::string::npos);
    // A quarter circle of radius 10 with a sagitta of 0.1 mm needs well over a hundred chords.
    const auto außen = ringe.front().substr(0, ringe.front().find('|'));
    EXPECT_GT(std::count(außen.begin(), außen.end(), ' '), 200);
    EXPECT_NE(ringe.front().find("|5 5 6 5 0.0000 10.0000 "), std::string::npos) << ringe.front().substr(0, 80);
}

} // namespace
} // namespace flurix::nas
