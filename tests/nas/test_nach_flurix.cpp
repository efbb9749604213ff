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

using test::DateiSchreiben;
using test::TempOrdner;

struct Übergabe {
    TempOrdner ordner;
    SkriptOberfläche ui;
    Datenbank db{":memory:"};
    Kataster kataster;
    NachFlurixBericht bericht;

    Übergabe() {
        db.AusführenNativ("CREATE TABLE Alkis (Hausnummer TEXT, \"Flurstück\" TEXT, Gemarkung TEXT, "
                          "Flur TEXT, \"Fläche\" TEXT, \"Flurstückskennzeichen\" TEXT, "
                          "\"Eigentümerposition\" TEXT)");
    }
    void Zeilen(int anzahl) {
        Transaktion t(db);
        auto einfügen = db.VorbereitenNativ("INSERT INTO Alkis VALUES (?, ?, ?, ?, ?, ?, ?)");
        for (int i = 0; i < anzahl; ++i) {
            einfügen.Zurücksetzen();
            const std::string nummer = std::to_string(anzahl - i);
            einfügen.Binde(nummer).Binde("0000" + nummer + "/0000").Binde(i % 2 ? "Musterhausen" : "Beispielfeld")
                .Binde("001").Binde(nullptr).Binde("0760010010000" + nummer).Binde("0001");
            einfügen.Schritt();
        }
        t.Bestätigen();
    }
    Ergebnis Übernehmen(bool interaktiv = false) {
        NasProtokoll protokoll(ui, {});
        const NachFlurixUmgebung umgebung{ordner.pfad(), ordner / "ALB_DatenbankSpalten.dat", "alles",
                                          interaktiv};
        return ALKISnachFlurix(db, kataster, umgebung, protokoll, ui, bericht);
    }
    std::vector<std::string> Schlüssel() const {
        std::vector<std::string> s;
        for (std::size_t i = 0; i < kataster.Spaltenzahl(); ++i)
            s.push_back(kataster.Spalte(i).schlüssel);
        return s;
    }
};

TEST(NachFlurix, SpaltenFormateSortierungUndPaare) {
    Übergabe ü;
    ü.Zeilen(3);
    ASSERT_TRUE(ü.Übernehmen());
    // The catalogue's columns first in its order, the others behind, the mark last.
    EXPECT_EQ(ü.Schlüssel(),
              (std::vector<std::string>{"Gemarkung", "Flur", "Flurstück", "Fläche", "Eigentümerposition",
                                        "Flurstückskennzeichen", "Hausnummer", "checkdruck"}));
    const auto& k = ü.kataster;
    EXPECT_EQ(k.Spalte(*k.SpaltenIndex("Gemarkung")).überschrift, "Gemarkung");
    EXPECT_TRUE(k.Spalte(*k.SpaltenIndex("checkdruck")).kontrollkästchen);
    EXPECT_EQ(k.Spalte(*k.SpaltenIndex("Flur")).format, "0000");
    EXPECT_EQ(k.Spalte(*k.SpaltenIndex("Fläche")).format, "000000000.00");
    ASSERT_EQ(k.Zeilenzahl(), 3U);
    // Sorted by Gemarkung, Flur, parcel key; NULL became "".
    EXPECT_EQ(k.Zelle(0, "Gemarkung"), "Beispielfeld");
    EXPECT_EQ(k.Zelle(0, "Flurstückskennzeichen"), "07600100100001");
    EXPECT_EQ(k.Zelle(1, "Flurstückskennzeichen"), "07600100100003");
    EXPECT_EQ(k.Zelle(2, "Gemarkung"), "Musterhausen");
    EXPECT_EQ(k.Zelle(2, "Fläche"), "");
    EXPECT_EQ(ü.bericht.gemarkungFlur, (std::vector<std::string>{"Beispielfeld, 001", "Musterhausen, 001"}));
    EXPECT_TRUE(ü.ui.Meldungen().empty());
}

TEST(NachFlurix, ZeilengrenzeUndVorlage) {
    struct Fall {
        int zeilen;
        bool vorlage;
        std::size_t spalten; // without checkdruck
        const char* meldung;
    };
    const Fall fälle[] = {
        {50'000, true, 7, nullptr},
        {50'001, true, 2,
         "50001 Datenzeilen vorgefunden.\nAufgrund der Datengröße werden nur die wichtigsten Daten "
         "exportiert!   \nVorlage: ...\\config\\ALB_ALKISImport.dat"},
        {50'001, false, 7,
         "Dateivorlage: ...\\config\\ALB_ALKISImport.dat fehlt! Es werden alle Daten exportiert!   "},
    };
    for (const Fall& fall : fälle) {
        Übergabe ü;
        if (fall.vorlage)
            DateiSchreiben(ü.ordner / "ALB_ALKISImport.dat",
                           "Flurstückskennzeichen\r\nGibtEsNicht\r\n\tGemarkung\r\n");
        ü.Zeilen(fall.zeilen);
        ASSERT_TRUE(ü.Übernehmen());
        EXPECT_EQ(ü.kataster.Zeilenzahl(), static_cast<std::size_t>(fall.zeilen));
        EXPECT_EQ(ü.kataster.Spaltenzahl(), fall.spalten + 1) << fall.zeilen;
        if (fall.meldung) {
            ASSERT_EQ(ü.ui.Meldungen().size(), 1U);
            EXPECT_EQ(ü.ui.Meldungen()[0], fall.meldung);
        } else {
            EXPECT_TRUE(ü.ui.Meldungen().empty());
        }
    }
}

TEST(NachFlurix, ErweiternOderErsetzen) {
    struct Fall {
        bool interaktiv;
        Antwort antwort;
        std::size_t zeilen;
        std::size_t fragen;
    };
    const Fall fälle[] = {
        {true, Antwort::Ja, 4, 1},
        {true, Antwort::Nein, 2, 1},
        {false, Antwort::Nein, 4, 0}, // nobody to ask: extended, nothing lost
    };
    for (const Fall& fall : fälle) {
        Übergabe ü;
        ü.kataster.SpalteHinzufügen(KatasterSpalte("Name", "Name"));
        ü.kataster.ZeileHinzufügen("Muster, Erika");
        ü.kataster.ZeileHinzufügen("Muster, Max");
        ü.Zeilen(2);
        ü.ui.Antworten({fall.antwort});
        ASSERT_TRUE(ü.Übernehmen(fall.interaktiv));
        EXPECT_EQ(ü.kataster.Zeilenzahl(), fall.zeilen);
        ASSERT_EQ(ü.ui.Fragen().size(), fall.fragen);
        if (fall.fragen) {
            EXPECT_EQ(ü.ui.Fragen()[0], "<Ja> vorliegende Datenbank wird erweitert   \n"
                                        "<Nein> vorliegende Datenbank wird überschrieben   ");
        }
        // Extended: the old column stays beside the new ones.
        EXPECT_EQ(ü.kataster.SpaltenIndex("Name").has_value(), fall.zeilen == 4);
    }
}

TEST(NachFlurix, LeereTabelleWirdGemeldet) {
    Übergabe ü;
    EXPECT_FALSE(ü.Übernehmen());
    ASSERT_EQ(ü.ui.Meldungen().size(), 1U);
    EXPECT_EQ(ü.ui.Meldungen()[0], "Es liegen keine Daten in der Tabelle: Alkis zum Export nach Flurix vor!");
    EXPECT_EQ(ü.ui.Ereignisse().back().titel, "ALKIS-Export");
    EXPECT_EQ(ü.kataster.Zeilenzahl(), 0U);
}

} // namespace
} // namespace flurix::nas
