// The rows of Alkis into the cadastre table: columns and their order, the row limit above which
// only the template's columns go over, extending or replacing the table, and the messages.

#include "nas/nach_flurix.hpp"

#include "core/datenbank.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/nas_protokoll.hpp"

#include <gtest/gtest.h>

namespace flurix::nas {
namespace {

using Texte = std::vector<std::string>;

struct Übergabe {
    test::TempOrdner ordner;
    SkriptOberfläche ui;
    Datenbank db{":memory:"};
    Kataster kataster;
    NachFlurixBericht bericht;

    explicit Übergabe(int zeilen = 0) {
        db.AusführenNativ("CREATE TABLE Alkis (Hausnummer TEXT, \"Flurstück\" TEXT, Gemarkung TEXT, Flur TEXT, "
                          "\"Fläche\" TEXT, \"Flurstückskennzeichen\" TEXT, \"Eigentümerposition\" TEXT)");
        Transaktion t(db);
        auto einfügen = db.VorbereitenNativ("INSERT INTO Alkis VALUES (?, ?, ?, ?, ?, ?, ?)");
        for (int i = 0; i < zeilen; ++i) {
            einfügen.Zurücksetzen();
            const std::string nummer = std::to_string(zeilen - i);
            einfügen.Binde(nummer).Binde("0000" + nummer + "/0000").Binde(i % 2 ? "Musterhausen" : "Beispielfeld")
                .Binde("001").Binde(nullptr).Binde("0760010010000" + nummer).Binde("0001");
            einfügen.Schritt();
        }
        t.Bestätigen();
    }
    Ergebnis Übernehmen(bool interaktiv = false) {
        NasProtokoll protokoll(ui, {});
        const NachFlurixUmgebung umgebung{ordner.pfad(), ordner / "ALB_DatenbankSpalten.dat", "alles", interaktiv};
        return ALKISnachFlurix(db, kataster, umgebung, protokoll, ui, bericht);
    }
};

TEST(NachFlurix, SpaltenFormateSortierungUndPaare) {
    Übergabe ü(3);
    ASSERT_TRUE(ü.Übernehmen());
    // The catalogue's columns first in its order, the others behind, the mark last.
    const auto& k = ü.kataster;
    Texte schlüssel;
    for (std::size_t i = 0; i < k.Spaltenzahl(); ++i)
        schlüssel.push_back(k.Spalte(i).schlüssel);
    EXPECT_EQ(schlüssel, (Texte{"Gemarkung", "Flur", "Flurstück", "Fläche", "Eigentümerposition",
                                "Flurstückskennzeichen", "Hausnummer", "checkdruck"}));
    EXPECT_EQ(k.Spalte(*k.SpaltenIndex("Gemarkung")).überschrift, "Gemarkung");
    EXPECT_TRUE(k.Spalte(*k.SpaltenIndex("checkdruck")).kontrollkästchen);
    EXPECT_EQ(k.Spalte(*k.SpaltenIndex("Flur")).format, "0000");
    EXPECT_EQ(k.Spalte(*k.SpaltenIndex("Fläche")).format, "000000000.00");
    // Sorted by Gemarkung, Flur, parcel key; NULL became "".
    Texte zeilen;
    for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
        zeilen.push_back(std::string(k.Zelle(z, "Gemarkung")) + "|" + std::string(k.Zelle(z, "Flurstückskennzeichen")) +
                         "|" + std::string(k.Zelle(z, "Fläche")));
    EXPECT_EQ(zeilen,
              (Texte{"Beispielfeld|07600100100001|", "Beispielfeld|07600100100003|", "Musterhausen|07600100100002|"}));
    EXPECT_EQ(ü.bericht.gemarkungFlur, (Texte{"Beispielfeld, 001", "Musterhausen, 001"}));
    EXPECT_TRUE(ü.ui.Meldungen().empty());
}

TEST(NachFlurix, ZeilengrenzeUndVorlage) {
    struct Fall {
        int zeilen;
        bool vorlage;
        std::size_t spalten; // without checkdruck
        Texte meldungen;
    };
    const Fall fälle[] = {
        {50'000, true, 7, {}},
        {50'001, true, 2,
         {"50001 Datenzeilen vorgefunden.\nAufgrund der Datengröße werden nur die wichtigsten Daten exportiert!   "
          "\nVorlage: ...\\config\\ALB_ALKISImport.dat"}},
        {50'001, false, 7,
         {"Dateivorlage: ...\\config\\ALB_ALKISImport.dat fehlt! Es werden alle Daten exportiert!   "}},
    };
    for (const Fall& fall : fälle) {
        SCOPED_TRACE(std::to_string(fall.zeilen) + (fall.vorlage ? " mit Vorlage" : ""));
        Übergabe ü(fall.zeilen);
        if (fall.vorlage)
            test::DateiSchreiben(ü.ordner / "ALB_ALKISImport.dat",
                                 "Flurstückskennzeichen\r\nGibtEsNicht\r\n\tGemarkung\r\n");
        ASSERT_TRUE(ü.Übernehmen());
        EXPECT_EQ(ü.kataster.Zeilenzahl(), static_cast<std::size_t>(fall.zeilen));
        EXPECT_EQ(ü.kataster.Spaltenzahl(), fall.spalten + 1);
        EXPECT_EQ(ü.ui.Meldungen(), fall.meldungen);
    }
}

TEST(NachFlurix, ErweiternOderErsetzen) {
    struct Fall {
        bool interaktiv;
        Antwort antwort;
        std::size_t zeilen;
        bool gefragt;
    };
    const Fall fälle[] = {
        {true, Antwort::Ja, 4, true},
        {true, Antwort::Nein, 2, true},
        {false, Antwort::Nein, 4, false}, // nobody to ask: extended, nothing lost
    };
    for (const Fall& fall : fälle) {
        Übergabe ü(2);
        ü.kataster.SpalteHinzufügen(KatasterSpalte("Name", "Name"));
        ü.kataster.ZeileHinzufügen("Muster, Erika");
        ü.kataster.ZeileHinzufügen("Muster, Max");
        ü.ui.Antworten({fall.antwort});
        ASSERT_TRUE(ü.Übernehmen(fall.interaktiv));
        EXPECT_EQ(ü.kataster.Zeilenzahl(), fall.zeilen);
        EXPECT_EQ(ü.ui.Fragen(), fall.gefragt ? Texte{"<Ja> vorliegende Datenbank wird erweitert   \n"
                                                      "<Nein> vorliegende Datenbank wird überschrieben   "}
                                              : Texte{});
        // Extended: the old column stays beside the new ones.
        EXPECT_EQ(ü.kataster.SpaltenIndex("Name").has_value(), fall.zeilen == 4);
    }
}

TEST(NachFlurix, LeereTabelleWirdGemeldet) {
    Übergabe ü;
    EXPECT_FALSE(ü.Übernehmen());
    EXPECT_EQ(ü.ui.Meldungen(), Texte{"Es liegen keine Daten in der Tabelle: Alkis zum Export nach Flurix vor!"});
    EXPECT_EQ(ü.ui.Ereignisse().back().titel, "ALKIS-Export");
    EXPECT_EQ(ü.kataster.Zeilenzahl(), 0U);
}

} // namespace
} // namespace flurix::nas
