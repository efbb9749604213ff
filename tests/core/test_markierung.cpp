#include "core/markierung.hpp"
#include "core/text.hpp"

#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/suche.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

namespace flurix {
namespace {

namespace fs = std::filesystem;
using test::DateiLesen;
using test::DateiSchreiben;

using Zeilen = std::vector<std::string>;

const fs::path Fixtures = test::Testdaten() / "markierung";

// The table of seven rows: parcel 12195500700231000100 has three owners (Nr 1, 3, 6), and the
// table has no column checkdruck, as a table saved without it.
Kataster SiebenZeilen() {
    Kataster k;
    KatasterLaden(k, Fixtures / "sieben_zeilen_drei_eigentuemer_ohne_checkdruck.tsv");
    return k;
}

// The column "Nr" of the rows for which `wahl` holds, in table order.
template <class Wahl> Zeilen Nummern(const Kataster& k, Wahl wahl) {
    Zeilen nummern;
    for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
        if (wahl(z))
            nummern.emplace_back(k.Zelle(z, "Nr"));
    return nummern;
}
Zeilen Markierte(const Kataster& k) {
    return Nummern(k, [&](std::size_t z) { return Markiert(k, z); });
}
Zeilen Gewählte(const Kataster& k) {
    return Nummern(k, [&](std::size_t z) { return k.Ausgewählt(z); });
}
Zeilen Alle(const Kataster& k) {
    return Nummern(k, [](std::size_t) { return true; });
}
std::size_t ZeileMitNr(const Kataster& k, std::string_view nr) {
    for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
        if (k.Zelle(z, "Nr") == nr)
            return z;
    throw std::out_of_range(std::string(nr));
}

// Status texts with their panels, in order.
std::vector<std::pair<int, std::string>> Statustexte(const SkriptOberfläche& ui) {
    std::vector<std::pair<int, std::string>> texte;
    for (const auto& e : ui.Ereignisse())
        if (e.art == Ereignis::Art::Status)
            texte.emplace_back(e.panel, e.text);
    return texte;
}

TEST(TextSäubern, DoppelteLeerzeichenUndRänder) {
    const std::pair<std::string_view, std::string_view> fälle[] = {
        {"121955   7    231/1", "121955 7 231/1"}, {"  a  ", "a"}, {"     ", ""}, {"", ""},
        {"a\t\tb", "a\t\tb"}, {"a \t b", "a \t b"},
    };
    for (const auto& [ein, aus] : fälle)
        EXPECT_EQ(TextSäubern(ein), aus) << '"' << ein << '"';
}

TEST(ListenzeileLesen, VierFormenInIhrerReihenfolge) {
    const std::string a = "12195500700231000100";
    struct Fall {
        std::string_view zeile;
        Listenform form;
        std::string kennzeichen;
    };
    const Fall fälle[] = {
        {"12195500700231000100", Listenform::Kennzeichen, a},
        {"121955 007 00231/0001", Listenform::Leerzeichen, a},
        {"121955 7 231/1", Listenform::Leerzeichen, a},
        {"12-1955-007-00231/0001", Listenform::Bindestrich, a},
        {"12-1955-7-231/1", Listenform::Bindestrich, a},
        {"121955 7 231/1 Rest", Listenform::Leerzeichen, a}, // further pieces are ignored
        {"121955 7 231/", Listenform::Leerzeichen, "12195500700231" "00"},
        {"12195500700231X00100", Listenform::Kennzeichen, "12195500700231X00100"},
        // the blank form is tested before the dash form
        {"12-1955 7 231/1", Listenform::Leerzeichen, "12-19550070023100010" "0"},
        {"121955 7 231", Listenform::Formatfehler, ""},    // blank form without "/"
        {"1219550070023100010", Listenform::Formatfehler, ""}, // 19 characters
        {"121955007002310001000", Listenform::Formatfehler, ""},
        {"121955 231/1", Listenform::Formatfehler, ""},    // too few pieces
        {"12-1955-231/1", Listenform::Formatfehler, ""},
        {"12195500700231/00100", Listenform::Formatfehler, ""},
        {"", Listenform::Formatfehler, ""},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.zeile);
        const Listenzeile gelesen = ListenzeileLesen(f.zeile);
        EXPECT_EQ(gelesen.form, f.form);
        EXPECT_EQ(gelesen.kennzeichen, f.kennzeichen);
    }
    const Listenzeile bindestrich = ListenzeileLesen("12-1955-7-231/1");
    EXPECT_EQ(bindestrich.gemarkung, "121955");
    EXPECT_EQ(bindestrich.flur, "7");
    EXPECT_EQ(bindestrich.flurstück, "231/1");
}

TEST(FlurstückskennzeichenBilden, NullenJeTeil) {
    EXPECT_EQ(FlurstückskennzeichenBilden("121955", "7", "231"), "12195500700231000000");
    EXPECT_EQ(FlurstückskennzeichenBilden("121955", "012", "00231/12"), "12195501200231001200");
    EXPECT_EQ(FlurstückskennzeichenBilden("121955", "1", "123456/12345"), "121955001123456123450" "0");
}

TEST(ListenZeilen, ZeilenendenUndLetzteLeereZeile) {
    const std::pair<std::string_view, Zeilen> fälle[] = {
        {"a\r\nb\r\n", {"a", "b"}},
        {"a\nb\n", {"a", "b"}},          // written on Linux
        {"a\rb", {"a", "b"}},
        {"a\r\nb", {"a", "b"}},
        {"a\r\n\r\n", {"a", ""}},        // an empty line before the end is a line
        {"a\r\n \t\x1A", {"a"}},         // a blank end is none
        {"a\r\n\r\nb\r\n", {"a", "", "b"}},
        {"", {}},
        {"\r\n", {""}},
    };
    for (const auto& [text, zeilen] : fälle) {
        const auto gelesen = ListenZeilen(text);
        EXPECT_EQ(Zeilen(gelesen.begin(), gelesen.end()), zeilen) << testing::PrintToString(text);
    }
}

TEST(Markierung, ZellwerteEinerMarke) {
    const std::pair<std::string_view, bool> fälle[] = {
        {"1", true},      {"", false},     {"0", false},     {"True", true}, {"-1", true},
        {"FALSE", false}, {"falsch", false}, {" 0 ", false}, {"Wahr", true},
    };
    for (const auto& [zelle, marke] : fälle)
        EXPECT_EQ(IstMarke(zelle), marke) << '"' << zelle << '"';
    Kataster k = SiebenZeilen();
    EXPECT_FALSE(Markiert(k, 0)); // no column: no mark
    MarkeSetzen(k, 0, true);
    EXPECT_EQ(k.Zelle(0, "checkdruck"), MarkeGesetzt);
    EXPECT_TRUE(Markiert(k, 0));
    MarkeSetzen(k, 0, false);
    EXPECT_EQ(k.Zelle(0, "checkdruck"), "");
}

TEST(Markierung, FehlendeSpalteCheckdruckWirdEinmalAngelegt) {
    Kataster k = SiebenZeilen();
    const std::size_t spalten = k.Spaltenzahl();
    const std::size_t index = MarkierungsspalteSicherstellen(k);
    EXPECT_TRUE(k.Spalte(index).kontrollkästchen);
    EXPECT_EQ(MarkierungsspalteSicherstellen(k), index);
    EXPECT_EQ(k.Spaltenzahl(), spalten + 1);
}

TEST(MarkierungGeklickt, NummernFolgenDerReihenfolgeDerKlicks) {
    Kataster k = SiebenZeilen();
    Stempelnummerierung nummerierung;
    EXPECT_EQ(nummerierung.StempelNr(), 0);
    struct Klick {
        std::string_view nr;
        bool an;
        std::string_view stempelDanach;
        std::int32_t stempelNr;
    };
    const Klick klicks[] = {
        {"5", true, "1", 1}, {"2", true, "2", 2}, {"7", true, "3", 3},
        {"2", false, "", 3},  // cleared: the number goes
        {"2", true, "4", 4},  // set again: a new number
        {"5", true, "1", 4},  // set while numbered: it keeps its number, none is used up
    };
    for (const auto& klick : klicks) {
        SCOPED_TRACE(std::string(klick.nr) + (klick.an ? " an" : " aus"));
        const std::size_t z = ZeileMitNr(k, klick.nr);
        MarkierungGeklickt(k, z, klick.an, nummerierung);
        EXPECT_EQ(k.Zelle(z, "ID_GG"), klick.stempelDanach);
        EXPECT_EQ(Markiert(k, z), klick.an);
        EXPECT_EQ(nummerierung.StempelNr(), klick.stempelNr);
    }
    EXPECT_EQ(k.Spalte(*k.SpaltenIndex("ID_GG")).breite, 600);
}

TEST(DbEigentümerGGStempel, SetztNummerZurückUndZeigtLageplan) {
    test::TempOrdner ordner;
    const fs::path ansichten = ordner / "ALB_DatenbankSpalten.dat";
    DateiSchreiben(ansichten, "Kataster ALKIS=Nr;Name\r\nAL-amtl.Lageplan=Flurstück;Name;ID_GG\r\n");
    Kataster k = SiebenZeilen();
    Stempelnummerierung nummerierung;
    MarkierungGeklickt(k, 0, true, nummerierung);
    MarkierungGeklickt(k, 1, true, nummerierung);
    EXPECT_TRUE(DbEigentümerGGStempel(k, nummerierung, ansichten));
    EXPECT_EQ(nummerierung.StempelNr(), 0);
    std::vector<std::string> sichtbar;
    for (std::size_t s : k.Anzeigereihenfolge())
        if (k.Spalte(s).sichtbar)
            sichtbar.push_back(k.Spalte(s).schlüssel);
    EXPECT_EQ(sichtbar, (Zeilen{"Flurstück", "Name", "ID_GG"}));

    MarkierungGeklickt(k, 0, true, nummerierung);
    EXPECT_EQ(DbEigentümerGGStempel(k, nummerierung, ordner / "fehlt.dat"), false);
    EXPECT_EQ(nummerierung.StempelNr(), 0); // reset all the same
}

TEST(Markierungsleiste, StatustexteUndFrage) {
    struct Fall {
        std::string_view name;
        void (*aktion)(Kataster&, Oberfläche&);
        Zeilen markiert;
        std::string status;
    };
    const Fall fälle[] = {
        {"erzeugen", DbMarkierungErzeugen, {"3", "5"}, "alle Markierungen erzeugt  "},
        {"Marker", DbMarkerErzeugen, {"3", "5"}, "alle Marker erzeugt  "},
        {"alle", DbMarkierungAlle, {"1", "2", "3", "4", "5", "6", "7"}, "alle Zeilen markiert  "},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        Kataster k = SiebenZeilen();
        k.Auswählen(ZeileMitNr(k, "3"));
        k.Auswählen(ZeileMitNr(k, "5"));
        SkriptOberfläche ui;
        f.aktion(k, ui);
        EXPECT_EQ(Markierte(k), f.markiert);
        EXPECT_EQ(Statustexte(ui), (std::vector<std::pair<int, std::string>>{{1, f.status}}));
    }
}

TEST(Markierungsleiste, LöschenNurNachJa) {
    const std::string frage = "Es werden alle Markierungen und Marker gelöscht! Weiter?   ";
    for (const Antwort antwort : {Antwort::Nein, Antwort::Ja}) {
        Kataster k = SiebenZeilen();
        Stempelnummerierung nummerierung;
        MarkierungGeklickt(k, 1, true, nummerierung);
        MarkierungGeklickt(k, 4, true, nummerierung);
        SkriptOberfläche ui({antwort});
        EXPECT_EQ(DbMarkierungLöschen(k, ui), antwort == Antwort::Ja);
        ASSERT_EQ(ui.Fragen(), Zeilen{frage});
        EXPECT_EQ(ui.Ereignisse().front().titel, "Flurix");
        if (antwort == Antwort::Nein) {
            EXPECT_EQ(Markierte(k), (Zeilen{"2", "5"}));
            EXPECT_EQ(k.Zelle(4, "ID_GG"), "2");
            EXPECT_TRUE(ui.Texte(Ereignis::Art::Status).empty());
        } else {
            EXPECT_TRUE(Markierte(k).empty());
            EXPECT_EQ(k.Zelle(1, "ID_GG"), "");
            EXPECT_EQ(k.Zelle(4, "ID_GG"), "");
            EXPECT_EQ(ui.LetzterStatus(1), "alle Markierungen gelöscht  ");
            EXPECT_EQ(nummerierung.StempelNr(), 2); // the numbering goes on where it was
        }
    }
}

TEST(DbFlurstückMarkieren, AlleEigentümerZeilenDerGewähltenFlurstücke) {
    Kataster k = SiebenZeilen();
    k.Auswählen(ZeileMitNr(k, "6")); // third owner of 12195500700231000100
    k.Auswählen(ZeileMitNr(k, "4")); // a parcel of one owner
    SkriptOberfläche ui;
    EXPECT_EQ(DbFlurstückMarkieren(k, ui), 4u);
    EXPECT_EQ(Gewählte(k), (Zeilen{"1", "3", "4", "6"}));
    EXPECT_EQ(Markierte(k), (Zeilen{"1", "3", "4", "6"}));
    const auto texte = Statustexte(ui);
    ASSERT_EQ(texte.size(), 9u); // 7 rows: 0, 14, 28, 42, 57, 71, 85 %, then the counts
    EXPECT_EQ(texte[0], (std::pair<int, std::string>{1, "0% selektiert  "}));
    EXPECT_EQ(texte[4], (std::pair<int, std::string>{1, "57% selektiert  "}));
    EXPECT_EQ(texte[7], (std::pair<int, std::string>{1, "4 Zeile(n) selektiert  "}));
    EXPECT_EQ(texte[8], (std::pair<int, std::string>{2, "4 Markierungen erzeugt  "}));
}

TEST(DbMarkierungSpeichern, KennzeichenOhneFolgendeDoppelteUndMeldung) {
    test::TempOrdner ordner;
    Kataster k = SiebenZeilen();
    k.ZelleSetzen(ZeileMitNr(k, "7"), "Flurstückskennzeichen", ""); // a marked row without key
    for (std::string_view nr : {"1", "3", "4", "6", "7"})
        MarkeSetzen(k, ZeileMitNr(k, nr), true);
    k.Sortieren("Nr");
    for (const std::string name : {"auswahl", "auswahl.lst", "auswahl.LST"}) {
        SCOPED_TRACE(name);
        SkriptOberfläche ui;
        ASSERT_TRUE(DbMarkierungSpeichern(k, ordner / name, ui));
        const std::string stamm = (ordner / name.substr(0, 7)).string();
        // Rows 1 and 3 follow each other with one key: written once; 6 comes after 4: again.
        EXPECT_EQ(DateiLesen(stamm + ".lst"), "12195500700231000100\r\n12195500700233000200\r\n"
                                              "12195500700231000100\r\n");
        EXPECT_EQ(ui.Meldungen(),
                  Zeilen{"Markierte Daten wurden unter: " + stamm + ".lst abgespeichert!   "});
        EXPECT_FALSE(fs::exists(stamm + ".lst.lst"));
    }
    SkriptOberfläche ui;
    EXPECT_FALSE(DbMarkierungSpeichern(k, ordner / "fehlt" / "auswahl", ui));
    EXPECT_EQ(ui.Meldungen().size(), 1u);
}

// The list of the four forms; its fourth key has no row.
TEST(DbMarkierungLaden, VierFormenFehlerdateiStatusUndSortierung) {
    test::TempOrdner ordner;
    const fs::path liste = ordner / "vier_formen.lst";
    fs::copy_file(Fixtures / "vier_formen_ein_schluessel_fehlt.lst", liste);
    Kataster k = SiebenZeilen();
    k.Auswählen(ZeileMitNr(k, "2")); // chosen before: keeps its choice as a mark
    SkriptOberfläche ui;
    const Listenergebnis ergebnis = DbMarkierungLaden(k, liste, ui);

    EXPECT_TRUE(ergebnis.ergebnis);
    EXPECT_EQ(ergebnis.listenzeilen, 4u);
    EXPECT_EQ(ergebnis.flurstücke, 3u); // three owner rows are one parcel
    EXPECT_EQ(ergebnis.nichtGefunden, 1u);
    EXPECT_EQ(ergebnis.selektiert, 5u);
    // Marked rows first, by Gemarkungsschlüssel, Flur, Grundbuchblatt, Flurstück, position.
    // The order and the marks the command line's golden files hold; the choice is seen here.
    EXPECT_EQ(Gewählte(k), (Zeilen{"3", "1", "6", "5", "4"}));
    const std::string pfad = liste.string();
    EXPECT_EQ(Statustexte(ui), (std::vector<std::pair<int, std::string>>{
                                   {1, "1 von 4 Flurstück(e) gesucht  "},
                                   {1, "2 von 4 Flurstück(e) gesucht  "},
                                   {1, "3 von 4 Flurstück(e) gesucht  "},
                                   {1, "4 von 4 Flurstück(e) gesucht  "},
                                   {1, "5 Zeilen selektiert   "},
                                   {2, "1 Flurstücken nicht gefunden "},
                                   {3, "Fehler siehe in " + pfad + ".err   "},
                               }));
    EXPECT_TRUE(ui.Meldungen().empty());
}

// The marks of the lines before the bad one and the message are in the command line's golden
// files; here: no sort, the status stops at the line, and the error file stays empty.
TEST(DbMarkierungLaden, FünfteFormHältAn) {
    test::TempOrdner ordner;
    const fs::path liste = ordner / "fehler.lst";
    fs::copy_file(Fixtures / "blank_ohne_schraegstrich_in_zeile_3.lst", liste);
    Kataster k = SiebenZeilen();
    SkriptOberfläche ui;
    EXPECT_FALSE(DbMarkierungLaden(k, liste, ui).ergebnis);
    EXPECT_EQ(Alle(k), (Zeilen{"1", "2", "3", "4", "5", "6", "7"}));
    EXPECT_EQ(ui.Texte(Ereignis::Art::Status),
              (Zeilen{"1 von 4 Flurstück(e) gesucht  ", "2 von 4 Flurstück(e) gesucht  "}));
    EXPECT_EQ(DateiLesen(liste.string() + ".err"), "");
}

TEST(DbMarkierungLaden, LeereListeOderKeinTrefferGibtMeldung) {
    const std::string keine =
        "Es wurden keine identischen Flurstücke in der Datenbank gefunden und selektiert!";
    struct Fall {
        std::string_view name, inhalt;
        std::string status2;
    };
    const Fall fälle[] = {
        {"leer", "", ""},
        {"nur Zeilenende am Schluss", "\x1A", ""},
        {"kein Treffer", "12195500700999000000\r\n", "1 Flurstücken nicht gefunden "},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        test::TempOrdner ordner;
        DateiSchreiben(ordner / "l.lst", f.inhalt);
        Kataster k = SiebenZeilen();
        SkriptOberfläche ui;
        EXPECT_TRUE(DbMarkierungLaden(k, ordner / "l.lst", ui).ergebnis);
        EXPECT_EQ(ui.Meldungen(), Zeilen{keine});
        EXPECT_EQ(ui.LetzterStatus(1), "0 Zeilen selektiert   ");
        EXPECT_EQ(ui.LetzterStatus(2), f.status2);
    }
}

TEST(DbMarkierungLaden, LinuxZeilenendenUndUmlautImPfad) {
    test::TempOrdner ordner;
    const fs::path liste = ordner / "flurstücke_müller.lst";
    DateiSchreiben(liste, "121955 7 232/1\n121955 7 999/1\n");
    Kataster k = SiebenZeilen();
    SkriptOberfläche ui;
    EXPECT_EQ(DbMarkierungLaden(k, liste, ui).listenzeilen, 2u);
    EXPECT_EQ(Gewählte(k), Zeilen{"5"});
    // The error file is Windows-1252: "ü" is one byte 0xFC.
    const std::string ordner1252 = ordner.pfad().string(); // ASCII
    EXPECT_EQ(DateiLesen(liste.string() + ".err"),
              "2, FKZ: 12195500700999000100 in \"" + ordner1252 +
                  "/flurst\xFC" "cke_m\xFC" "ller.lst\" nicht gefunden\r\n");
}

TEST(DbMarkierungLaden, FehlendeListeIstEinFehler) {
    test::TempOrdner ordner;
    Kataster k = SiebenZeilen();
    SkriptOberfläche ui;
    const auto ergebnis = DbMarkierungLaden(k, ordner / "fehlt.lst", ui);
    EXPECT_FALSE(ergebnis.ergebnis);
    EXPECT_EQ(ui.Meldungen(),
              Zeilen{"Die Flurstücksliste \"" + (ordner / "fehlt.lst").string() +
                     "\" kann nicht gelesen werden!   "});
    EXPECT_FALSE(fs::exists(ordner / "fehlt.lst.err"));
}

// The index gives the rows that finding the key again and again from the row after the last hit
// gives, for keys with one, several and no rows.
TEST(DbMarkierungLaden, GleichWieSuchenAbLetztemTreffer) {
    std::mt19937 zufall(4711);
    Kataster k;
    k.SpalteHinzufügen({"Nr", "Nr", 600});
    k.SpalteHinzufügen({"Flurstückskennzeichen", "FKZ", 2000});
    const auto schlüssel = [](unsigned n) {
        return "121955007" + NullenAuffüllen(std::to_string(n), 5) + "000100";
    };
    for (int i = 0; i < 3000; ++i)
        k.ZeileHinzufügen(std::to_string(i) + "\t" + schlüssel(zufall() % 700));
    std::string liste;
    std::set<std::string> erwartet;
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
    const Zeilen gewählt = Gewählte(k);
    EXPECT_EQ(std::set<std::string>(gewählt.begin(), gewählt.end()), erwartet);
    EXPECT_EQ(gewählt.size(), erwartet.size());
    EXPECT_FALSE(erwartet.empty());
}

} // namespace
} // namespace flurix
