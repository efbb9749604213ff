#include "core/markierung.hpp"

#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/suche.hpp"
#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "kernhilfen.hpp"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace flurix {
namespace {

namespace fs = std::filesystem;
using test::Argumente;
using test::DateiLesen;
using test::DateiSchreiben;
using test::Zitat;
using Zeilen = std::vector<std::string>;

const fs::path Fixtures = test::Testdaten() / "markierung";

std::string JaNein(bool b) { return b ? "ja" : "nein"; }

TEST(Markierung, Wertetabelle) {
    EXPECT_EQ(test::Wertetabelle("markierung.txt", {
        {"Säubern", [](const Argumente& a) { return Zitat(TextSäubern(a[0])); }},
        {"Listenzeile", [](const Argumente& a) {
             const Listenzeile l = ListenzeileLesen(a[0]);
             const char* formen[] = {"Kennzeichen", "Leerzeichen", "Bindestrich", "Formatfehler"};
             std::string text = formen[static_cast<int>(l.form)] + (" " + Zitat(l.kennzeichen));
             if (!(l.gemarkung + l.flur + l.flurstück).empty())
                 text += " " + Zitat(l.gemarkung) + " " + Zitat(l.flur) + " " + Zitat(l.flurstück);
             return text;
         }},
        {"Kennzeichen", [](const Argumente& a) { return Zitat(FlurstückskennzeichenBilden(a[0], a[1], a[2])); }},
        {"Listenzeilen", [](const Argumente& a) {
             const auto zeilen = ListenZeilen(a[0]);
             return test::Liste(std::vector<std::string>(zeilen.begin(), zeilen.end()));
         }},
        {"Marke", [](const Argumente& a) { return JaNein(IstMarke(a[0])); }},
    }), "");
}

// The table of seven rows: parcel 12195500700231000100 has three owners (Nr 1, 3, 6), and the
// table has no column checkdruck, as a table saved without it.
class MarkierungTest : public ::testing::Test {
protected:
    MarkierungTest() { KatasterLaden(k, Fixtures / "sieben_zeilen_drei_eigentuemer_ohne_checkdruck.tsv"); }

    std::size_t Zeile(std::string_view nr) const {
        for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
            if (k.Zelle(z, "Nr") == nr)
                return z;
        throw std::out_of_range(std::string(nr));
    }
    // The table's order, the rows chosen and the rows marked, by Nr.
    std::string Stand() const {
        std::string text[3] = {"Reihenfolge", "gewählt", "markiert"};
        for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
            for (const auto& [i, ja] : {std::pair{0, true}, {1, k.Ausgewählt(z)}, {2, Markiert(k, z)}})
                text[i] += ja ? " " + std::string(k.Zelle(z, "Nr")) : "";
        return text[0] + "\n" + text[1] + "\n" + text[2] + "\n";
    }
    void Wählen(std::initializer_list<std::string_view> nummern) {
        for (const auto nr : nummern)
            k.Auswählen(Zeile(nr));
    }

    Kataster k;
    SkriptOberfläche ui;
    Stempelnummerierung nummerierung;
    test::TempOrdner ordner;
};

TEST_F(MarkierungTest, MarkeInDerSpalteCheckdruckDieEinmalAngelegtWird) {
    const std::size_t spalten = k.Spaltenzahl();
    EXPECT_FALSE(Markiert(k, 0)); // no column: no mark
    MarkeSetzen(k, 0, true);
    EXPECT_EQ(k.Zelle(0, "checkdruck"), MarkeGesetzt);
    EXPECT_TRUE(Markiert(k, 0));
    MarkeSetzen(k, 0, false);
    EXPECT_EQ(k.Zelle(0, "checkdruck"), "");
    EXPECT_TRUE(k.Spalte(MarkierungsspalteSicherstellen(k)).kontrollkästchen);
    EXPECT_EQ(k.Spaltenzahl(), spalten + 1);
}

// Clicks, the marking bar, the site plan button and the parcel marking on the seven rows, one
// after another; after each step its result, the rows marked and chosen, the stamp numbers and
// what the UI was told, as tests/daten/core/markierung_ablauf.txt.
TEST_F(MarkierungTest, Ablauf) {
    const fs::path ansichten = ordner / "ALB_DatenbankSpalten.dat";
    DateiSchreiben(ansichten, "Kataster ALKIS=Nr;Name\r\nAL-amtl.Lageplan=Flurstück;Name;ID_GG\r\n");
    std::optional<SkriptOberfläche> o; // the UI of the step
    const auto klick = [&](const char* nr, bool an) {
        return [=, this] { return MarkierungGeklickt(k, Zeile(nr), an, nummerierung), std::string(); };
    };
    const auto leiste = [&](void (*aktion)(Kataster&, Oberfläche&)) {
        return [&, aktion] { return k.AuswahlLeeren(), Wählen({"3", "5"}), aktion(k, *o), std::string(); };
    };
    const auto löschen = [&] { return JaNein(DbMarkierungLöschen(k, *o)); };
    const std::tuple<std::string, std::deque<Antwort>, std::function<std::string()>> schritte[] = {
        {"Klick 5 an", {}, klick("5", true)},
        {"Klick 2 an", {}, klick("2", true)},
        {"Klick 7 an", {}, klick("7", true)},
        {"Klick 2 aus: die Nummer geht", {}, klick("2", false)},
        {"Klick 2 an: eine neue Nummer", {}, klick("2", true)},
        {"Klick 5 an, schon nummeriert: die Nummer bleibt, keine wird verbraucht", {}, klick("5", true)},
        {"Löschen, Nein", {Antwort::Nein}, löschen},
        {"Löschen, Ja: die Nummerierung geht weiter", {Antwort::Ja}, löschen},
        {"Klick 1 an", {}, klick("1", true)},
        {"Lageplan-Knopf: Nummern von vorn, die Spalten der Ansicht", {}, [&] {
             const bool ok = DbEigentümerGGStempel(k, nummerierung, ansichten);
             std::string spalten;
             for (const auto& s : test::SichtbareSpalten(k))
                 spalten += " " + s;
             return JaNein(ok) + spalten;
         }},
        {"Klick 3 an", {}, klick("3", true)},
        {"Lageplan-Knopf ohne Ansichtsdatei: Nummern von vorn", {}, [&] {
             return JaNein(DbEigentümerGGStempel(k, nummerierung, ordner / "fehlt.dat"));
         }},
        {"Löschen, Ja", {Antwort::Ja}, löschen},
        {"3 und 5 gewählt: Markierungen erzeugen", {}, leiste(DbMarkierungErzeugen)},
        {"Löschen, Ja", {Antwort::Ja}, löschen},
        {"3 und 5 gewählt: Marker erzeugen", {}, leiste(DbMarkerErzeugen)},
        {"3 und 5 gewählt: alle markieren", {}, leiste(DbMarkierungAlle)},
        {"Löschen, Ja", {Antwort::Ja}, löschen},
        {"6 (dritte Eigentümerin von 231/1) und 4 gewählt: Flurstücke markieren", {}, [&] {
             k.AuswahlLeeren();
             Wählen({"6", "4"});
             return std::to_string(DbFlurstückMarkieren(k, *o));
         }},
    };
    std::string protokoll;
    for (const auto& [schritt, antworten, aktion] : schritte) {
        o.emplace(antworten);
        protokoll += "== " + schritt + ": " + aktion() + "\n";
        protokoll += Stand();
        protokoll += "Stempel " + std::to_string(nummerierung.StempelNr());
        for (std::size_t z = 0; k.SpaltenIndex("ID_GG") && z < k.Zeilenzahl(); ++z)
            if (!k.Zelle(z, "ID_GG").empty())
                protokoll += ", " + std::string(k.Zelle(z, "Nr")) + ":" + std::string(k.Zelle(z, "ID_GG"));
        protokoll += "\n" + test::Verlauf(*o);
    }
    EXPECT_EQ(test::GoldenVergleich(protokoll, test::Testdaten() / "core" / "markierung_ablauf.txt"), "");
    EXPECT_EQ(k.Spalte(*k.SpaltenIndex("ID_GG")).breite, 600);
}

TEST_F(MarkierungTest, SpeichernOhneFolgendeDoppelteUndMitMeldung) {
    k.ZelleSetzen(Zeile("7"), "Flurstückskennzeichen", ""); // a marked row without key
    for (const auto nr : {"1", "3", "4", "6", "7"})
        MarkeSetzen(k, Zeile(nr), true);
    k.Sortieren("Nr");
    for (const std::string name : {"auswahl", "auswahl.lst", "auswahl.LST"}) {
        SCOPED_TRACE(name);
        SkriptOberfläche speichern;
        ASSERT_TRUE(DbMarkierungSpeichern(k, ordner / name, speichern));
        const std::string stamm = (ordner / name.substr(0, 7)).string();
        // Rows 1 and 3 follow each other with one key: written once; 6 comes after 4: again.
        EXPECT_EQ(DateiLesen(stamm + ".lst"),
                  "12195500700231000100\r\n12195500700233000200\r\n12195500700231000100\r\n");
        EXPECT_EQ(speichern.Meldungen(),
                  Zeilen{"Markierte Daten wurden unter: " + stamm + ".lst abgespeichert!   "});
        EXPECT_FALSE(fs::exists(stamm + ".lst.lst"));
    }
    EXPECT_FALSE(DbMarkierungSpeichern(k, ordner / "fehlt" / "auswahl", ui));
    EXPECT_EQ(ui.Meldungen().size(), 1u);
}

// Loading lists: the result, the rows chosen, the table's order, what the UI was told and the
// error file, for every list, as tests/daten/core/markierung_laden.txt. A row chosen before keeps
// its choice; the order and the marks are in the command line's golden files too.
TEST_F(MarkierungTest, ListenLaden) {
    const std::tuple<std::string, std::optional<std::string>, bool> listen[] = { // name, text, row 2 chosen
        {"vier Formen, ein Schlüssel fehlt", DateiLesen(Fixtures / "vier_formen_ein_schluessel_fehlt.lst"), true},
        {"Zeile 3 ohne Schrägstrich: hält an", DateiLesen(Fixtures / "blank_ohne_schraegstrich_in_zeile_3.lst"), false},
        {"leer", "", false},
        {"nur Dateiende-Zeichen", "\x1A", false},
        {"kein Treffer", "12195500700999000000\r\n", false},
        {"Linux-Zeilenenden", "121955 7 232/1\n121955 7 999/1\n", false},
        {"fehlt", std::nullopt, false},
    };
    std::string protokoll;
    for (const auto& [name, inhalt, zweiGewählt] : listen) {
        KatasterLaden(k, Fixtures / "sieben_zeilen_drei_eigentuemer_ohne_checkdruck.tsv");
        if (zweiGewählt)
            Wählen({"2"});
        const fs::path liste = ordner / "flurstücke_müller.lst"; // the error file names it in Windows-1252
        fs::remove(liste.string() + ".err");
        fs::remove(liste);
        if (inhalt)
            DateiSchreiben(liste, *inhalt);
        SkriptOberfläche laden;
        const Listenergebnis e = DbMarkierungLaden(k, liste, laden);
        protokoll += "== " + name + "\n" + (e.ergebnis ? "ja" : "nein") + ", " +
                     std::to_string(e.listenzeilen) + " Listenzeilen, " + std::to_string(e.flurstücke) +
                     " Flurstücke, " + std::to_string(e.nichtGefunden) + " nicht gefunden, " +
                     std::to_string(e.selektiert) + " selektiert\n";
        protokoll += Stand();
        protokoll += test::Verlauf(laden);
        if (fs::exists(liste.string() + ".err"))
            protokoll += ".err " + Zitat(DateiLesen(liste.string() + ".err")) + "\n";
    }
    EXPECT_EQ(test::GoldenVergleich(test::Ersetzt(protokoll, ordner.pfad().string(), "<ordner>"),
                                    test::Testdaten() / "core" / "markierung_laden.txt"), "");
}

// The index gives the rows that finding the key again and again from the row after the last hit
// gives, for keys with one, several and no rows.
TEST(DbMarkierungLaden, GleichWieSuchenAbLetztemTreffer) {
    std::mt19937 zufall(4711);
    Kataster k = test::Tabelle("Nr\tFlurstückskennzeichen", {});
    const auto schlüssel = [](unsigned n) { return "121955007" + NullenAuffüllen(std::to_string(n), 5) + "000100"; };
    for (int i = 0; i < 3000; ++i)
        k.ZeileHinzufügen(std::to_string(i) + "\t" + schlüssel(zufall() % 700));
    std::string liste;
    std::set<std::string> erwartet, gewählt; // Nr of the rows
    for (int i = 0; i < 300; ++i) {
        const std::string fkz = schlüssel(zufall() % 900); // some beyond the table's keys
        liste += fkz + "\r\n";
        for (auto z = k.Suchen(1, fkz, 0); z; z = k.Suchen(1, fkz, *z + 1))
            erwartet.emplace(k.Zelle(*z, 0));
    }
    test::TempOrdner ordner;
    DateiSchreiben(ordner / "viele.lst", liste);
    SkriptOberfläche ui;
    DbMarkierungLaden(k, ordner / "viele.lst", ui);
    for (const std::size_t z : k.AusgewählteZeilen())
        gewählt.emplace(k.Zelle(z, 0));
    EXPECT_EQ(gewählt, erwartet);
    EXPECT_FALSE(erwartet.empty());
}

} // namespace
} // namespace flurix
