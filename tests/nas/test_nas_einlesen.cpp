// The import of NAS files into their object database, with the shipped node file: rows, keys,
// relations, the enrichment, and what bad files do.

#include "nas/nas_einlesen.hpp"

#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/nas_datenbank.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"
#include "nas/tabellentext.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <tuple>

namespace flurix::nas {
namespace {

using test::DateiLesen;
using test::DateiSchreiben;
using test::TempOrdner;
using Zeilen = std::vector<std::string>;

const std::filesystem::path Konfig = std::filesystem::path(FLURIX_QUELLEN) / "config";

// A NAS extract around `objekte` (each one feature); "{p}" in the features stands for the prefix.
std::string Nas(const std::vector<std::string>& objekte, std::string_view mitglied = "gml:featureMember",
                std::string_view präfix = "", std::string_view zeilenende = "\n") {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<{p}AX_Bestandsdatenauszug "
                       "xmlns=\"http://www.adv-online.de/namespaces/adv/gid/6.0\" "
                       "xmlns:gml=\"http://www.opengis.net/gml/3.2\" xmlns:xlink=\"http://www.w3.org/1999/xlink\">\n"
                       "<{p}koordinatenangaben>\n<{p}AA_Koordinatenreferenzsystemangaben>\n"
                       "<{p}crs xlink:href=\"urn:adv:crs:ETRS89_UTM32\"></{p}crs>\n"
                       "<standard>true</standard>\n</{p}AA_Koordinatenreferenzsystemangaben>\n"
                       "</{p}koordinatenangaben>\n<{p}enthaelt>\n<wfs:FeatureCollection>\n";
    for (const auto& objekt : objekte)
        text += "<" + std::string(mitglied) + ">\n" + objekt + "\n</" + std::string(mitglied) + ">\n";
    text += "</wfs:FeatureCollection>\n</{p}enthaelt>\n</{p}AX_Bestandsdatenauszug>\n";
    std::string aus;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 3, "{p}") == 0) {
            aus += präfix;
            i += 2;
        } else {
            aus += text[i] == '\n' ? std::string(zeilenende) : std::string(1, text[i]);
        }
    }
    return aus;
}

std::string Flurstück(std::string_view id, std::string_view kennzeichen, std::string_view mehr = "") {
    return "<{p}AX_Flurstueck gml:id=\"" + std::string(id) + "\">\n<{p}flurstueckskennzeichen>" +
           std::string(kennzeichen) + "</{p}flurstueckskennzeichen>\n" + std::string(mehr) + "</{p}AX_Flurstueck>";
}

std::string Verweis(std::string_view element, std::string_view ziel) {
    return "<{p}" + std::string(element) + " xlink:href=\"urn:adv:oid:" + std::string(ziel) + "\"/>\n";
}

std::string Einfach(std::string_view klasse, std::string_view id, std::string_view inhalt) {
    return "<" + std::string(klasse) + " gml:id=\"" + std::string(id) + "\">\n" + std::string(inhalt) + "</" +
           std::string(klasse) + ">";
}

const std::filesystem::path Daten = test::Testdaten() / "nas";

std::string Datei(std::string_view name) { return DateiLesen(Daten / name); }

struct Lauf {
    TempOrdner ordner;
    SkriptOberfläche ui;
    NasStand stand;
    Ergebnis ergebnis;
    std::unique_ptr<Datenbank> db;

    Ergebnis Lesen(std::string_view nas, const std::filesystem::path& konfig = Konfig) {
        DateiSchreiben(ordner / "auszug.xml", nas);
        NasAuftrag auftrag{ordner / "auszug.xml", ordner / "nas.sqlite", konfig};
        NasProtokoll protokoll(ui, NasProtokoll::DateiZu(auftrag.xmlDatei));
        ergebnis = DAO_ALKISEinlesen(auftrag, stand, ui, protokoll);
        if (std::filesystem::exists(auftrag.datenbank))
            db = std::make_unique<Datenbank>(auftrag.datenbank);
        return ergebnis;
    }
    Zeilen Abfrage(const std::string& sql) { return test::Abfragezeilen(*db, sql); }
    std::string Protokolldatei() const { return DateiLesen(ordner / "auszug.xml.prn"); }
};

TEST(NasEinlesen, ZeilenSchlüsselUndBeziehungenJeDatei) {
    struct Fall {
        std::string name, nas;
        std::function<void(Lauf&)> mehr = {};
    };
    const std::string lang(300, 'a');
    std::string punkte;
    for (int i = 0; i < 800'000; ++i)
        punkte += std::to_string(350000 + i) + ".125 " + std::to_string(5530000 + i) + ".5 ";
    std::string eineZeile = Nas({Flurstück("F1", "1"), Flurstück("F2", "2"), Flurstück("F3", "3")});
    std::erase(eineZeile, '\n');
    std::string abgeschnitten = Nas({Flurstück("F1", "1"), Flurstück("F2", "2")});
    abgeschnitten.resize(abgeschnitten.find("F2") + 10);
    const auto system = [](std::string_view name) {
        return Ersetzen(Nas({Flurstück("F1", "1")}), "urn:adv:crs:ETRS89_UTM32", name);
    };
    const auto antrag = [](std::size_t leerzeilen) {
        std::string text = Nas({Flurstück("F1", "1")});
        return text.insert(text.find('\n') + 1, std::string(leerzeilen, '\n') + "<antragsnr>4711-0815</antragsnr>\n");
    };
    const std::vector<Fall> fälle = {
        {"Schlüssel, Geometrie und System; geometry is searched by tag anywhere in the feature, "
         "segments are cleaned point lists",
         Datei("flurstueck_mit_bogen_und_gemeindekennzeichen.xml"),
         [](Lauf& l) {
             EXPECT_EQ(l.stand.standardSystem, "ETRS89_UTM32");
             EXPECT_EQ(l.stand.antrag.SystemText(), "System: ETRS89_UTM32, EPSG: 25832 , MKZ: 32");
             EXPECT_EQ(l.ui.LetzterStatus(1), "ALKIS-Daten komplett eingelesen");
         }},
        {"every booking reference is a row, the locations of a parcel one; a booking keeps its first sheet "
         "and joins its \"an\"; any other class keeps the last reference",
         Datei("beziehungen_je_regel.xml")},
        {"identifiers that differ only in case; the reference meets its target through the same key form",
         Nas({Einfach("AX_Person", "DEabc", "<nachnameOderFirma>klein</nachnameOderFirma>\n"),
              Einfach("AX_Person", "DEABC", "<nachnameOderFirma>groß</nachnameOderFirma>\n"),
              Einfach("AX_Person", "DEABC", "<nachnameOderFirma>doppelt</nachnameOderFirma>\n"),
              Einfach("AX_Namensnummer", "N1", Verweis("benennt", "DEabc"))}),
         [](Lauf& l) { EXPECT_EQ(l.stand.statistik.doppelteKennungen.at("AX_Person"), 1u); }},
        {"text columns cut after 255 characters, not bytes; memo columns not",
         Nas({Einfach("AX_Anschrift", "A1",
                      "<strasse>" + lang + "</strasse>\n<ort_Post>" + std::string(254, 'x') + "äöü</ort_Post>\n"),
              Einfach("AX_Person", "P1", "<nachnameOderFirma>" + lang + "</nachnameOderFirma>\n")})},
        {"many features on one line after a byte order mark", "\xEF\xBB\xBF" + eineZeile},
        {"two positions, a building's key taken apart", Datei("punktorte_und_gebaeude_mit_lage.xml")},
        {"the enrichment: municipality, offices of a Gemarkung, value kinds",
         Datei("gemeinde_gemarkung_und_anreden.xml")},
        {"a broken feature is reported and the rest read; an entity stays text",
         Nas({Flurstück("F1", "1"), "<AX_Flurstueck gml:id=\"F2\"><offen></AX_Flurstueck>",
              "<AX_Person gml:id=\"P1\"><nachnameOderFirma>&xxe;</nachnameOderFirma></AX_Person>",
              Flurstück("F3", "3")}),
         [](Lauf& l) {
             ASSERT_EQ(l.ui.Meldungen().size(), 1u);
             EXPECT_TRUE(l.ui.Meldungen().front().starts_with(
                 "Fehler beim Laden des Dokumentes. Der Fehler wird ignoriert!\nGrund: "));
             EXPECT_NE(l.ui.Meldungen().front().find("\nZeile: "), std::string::npos);
             EXPECT_EQ(l.stand.statistik.ladefehler, 1u);
         }},
        {"a file cut inside a feature keeps what was read", abgeschnitten,
         [](Lauf& l) {
             EXPECT_NE(l.Protokolldatei().find("Die Datei endet innerhalb eines Objekts"), std::string::npos);
             EXPECT_NE(l.Protokolldatei().find(", ALKIS importiert...\r\n"), std::string::npos);
         }},
        {"a feature over more than two read blocks",
         Nas({Flurstück("F1", "1"),
              Flurstück("F2", "2", "<gml:exterior><gml:Ring><gml:posList>" + punkte + "</gml:posList></gml:Ring>"
                                   "</gml:exterior>\n"),
              Flurstück("F3", "3")})},
        {"the order number only in the first 50 lines", antrag(10),
         [](Lauf& l) { EXPECT_EQ(l.stand.antrag.AntragsText(), "AntragsNr.: 4711-0815"); }},
        {"no order number after 50 lines", antrag(60),
         [](Lauf& l) { EXPECT_EQ(l.stand.antrag.AntragsText(), "AntragsNr.: ohne"); }},
        {"a system with an EPSG code", system("urn:adv:crs:DE_DHDN_3GK3"),
         [](Lauf& l) { EXPECT_EQ(l.stand.antrag.SystemText(), "System: DE_DHDN_3GK3, EPSG: 31467 , MKZ: 3"); }},
        {"a local system has none", system("urn:adv:crs:LOKAL_RP_7"),
         [](Lauf& l) { EXPECT_EQ(l.stand.antrag.SystemText(), "System: LOKAL_RP_7, EPSG: 0000 , MKZ: 0"); }},
        {"no system at all", system(""),
         [](Lauf& l) { EXPECT_EQ(l.stand.antrag.SystemText(), "System: , EPSG: 0000 , MKZ: 0"); }},
        {"a second system is reported",
         Nas({Einfach("AX_PunktortTA", "P1", "<position><gml:Point srsName=\"urn:adv:crs:DE_DHHN92_NH\"><gml:pos>1"
                                             "</gml:pos></gml:Point></position>\n"),
              Einfach("AX_PunktortTA", "P2", "<position>\n<gml:Point srsName=\"urn:adv:crs:LOKAL_RP_7\">\n<gml:pos>1 2"
                                             "</gml:pos></gml:Point></position>\n")}),
         [](Lauf& l) {
             EXPECT_EQ(l.stand.zweitesSystem, "LOKAL_RP_7");
             ASSERT_FALSE(l.ui.Meldungen().empty());
             EXPECT_EQ(l.ui.Meldungen().back(),
                       "Koordinatenreferenzsystem: ETRS89_UTM32\nKoordinatensystem lokal: LOKAL_RP_7"
                       "In den XML-Daten sind mehrere Koordinatensysteme hinterlegt!   "
                       "Beim Export nach Geograf oder DXF kann es zu Problemen kommen!   ");
         }},
        {"the protocol's lines and the list of tables", Nas({Flurstück("F1", "1")}),
         [](Lauf& l) {
             const auto protokoll = l.ui.Texte(Ereignis::Art::Protokoll);
             ASSERT_FALSE(protokoll.empty());
             for (const auto& zeile : protokoll) // "hh:mm:ss, text"
                 EXPECT_TRUE(zeile.size() >= 10 && zeile[2] == ':' && zeile[5] == ':' && zeile.substr(8, 2) == ", ")
                     << zeile;
             EXPECT_EQ(protokoll.back().substr(8), ", ALKIS importiert...");
             EXPECT_EQ(l.stand.tabellen.front(), "AX_Flurstueck");
             EXPECT_NE(std::find(l.stand.tabellen.begin(), l.stand.tabellen.end(), "AX_Gemarkung_id#istAmtsbezirkVon"),
                       l.stand.tabellen.end());
             EXPECT_TRUE(DAO_FeldVorhanden(*l.db, "AP_PTO", "flstnr"));
         }},
    };
    // The queries of each case and their rows are in a golden file; it is run and written anew.
    const auto golden = Daten / "nas_einlesen_abfragen.txt";
    const std::string text = DateiLesen(golden);
    std::map<std::string, Zeilen> abfragen;
    std::string transkript, name;
    for (const auto zeile : Teilen(text, '\n')) {
        if (zeile.starts_with('#'))
            transkript += std::string(zeile) + "\n";
        else if (zeile.starts_with("%% "))
            name = zeile.substr(3);
        else if (!zeile.empty() && !zeile.starts_with("  "))
            abfragen[name].emplace_back(zeile);
    }
    for (const auto& fall : fälle) {
        SCOPED_TRACE(fall.name);
        Lauf lauf;
        ASSERT_TRUE(lauf.Lesen(fall.nas)) << lauf.ergebnis.Meldung();
        transkript += "%% " + fall.name + "\n";
        for (const auto& sql : abfragen[fall.name]) {
            transkript += sql + "\n";
            for (const auto& zeile : lauf.Abfrage(sql))
                transkript += "  " + zeile + "\n";
        }
        if (fall.mehr)
            fall.mehr(lauf);
    }
    EXPECT_EQ(test::GoldenVergleich(transkript, golden), "");
    for (const auto& [mitglied, präfix, zeilenende] : {std::tuple{"wfs:member", "", "\n"},
                                                       {"gml:featureMember", "adv:", "\n"},
                                                       {"gml:featureMember", "", "\r"}, {"wfs:member", "", "\r\n"}}) {
        SCOPED_TRACE(std::string(mitglied) + " " + präfix + " " + std::to_string(std::string_view(zeilenende).size()));
        Lauf lauf;
        ASSERT_TRUE(lauf.Lesen(Nas({Flurstück("F1", "07256600100001000000", Verweis("istGebucht", "B1")),
                                    Flurstück("F2", "07256600100002000000")},
                                   mitglied, präfix, zeilenende)));
        EXPECT_EQ(lauf.Abfrage("SELECT id, flurstueckskennzeichen FROM AX_Flurstueck ORDER BY rowid"),
                  (Zeilen{"F1|07256600100001000000", "F2|07256600100002000000"}));
        EXPECT_EQ(lauf.Abfrage("SELECT * FROM \"AX_Flurstueck_istGebucht#AX_Buchungsstelle\""), Zeilen{"F1|B1"});
        EXPECT_EQ(lauf.stand.mitgliedTag, mitglied);
    }
}

TEST(NasEinlesen, GroßeDateienFragenOderWerdenAbgewiesen) {
    struct Fall {
        std::uintmax_t größe;
        std::string meldung, frage, protokoll;
    };
    const std::vector<Fall> fälle{
        {GroßeNasDatei + 1, "",
         "Die Ausgangsdatei ist zu groß! Die entsprechende Datenbank wird die zulässige Datenbankgröße "
         "von 2.147.254.272 Bytes überschreiten. Soll trotzdem versucht werden, alle Daten einzulesen? "
         "Planen Sie dann bitte eine längere Wartezeit ein!",
         ", Datei zu groß, Import abgebrochen..."},
        {4'294'967'297, "Fehler: Ausgangsdatei ist mit > 4.294.967.296 Byte zu groß!   ", "", ""},
    };
    for (const auto& fall : fälle) {
        SCOPED_TRACE(fall.größe);
        TempOrdner ordner;
        const auto datei = ordner / "gross.xml";
        DateiSchreiben(datei, Nas({Flurstück("F1", "1")}));
        std::error_code fehler;
        std::filesystem::resize_file(datei, fall.größe, fehler);
        if (fehler)
            GTEST_SKIP() << "Keine Datei dieser Größe möglich: " << fehler.message();
        SkriptOberfläche ui({Antwort::Nein});
        NasStand stand;
        NasProtokoll protokoll(ui, {});
        EXPECT_FALSE(DAO_ALKISEinlesen({datei, ordner / "nas.sqlite", Konfig}, stand, ui, protokoll));
        EXPECT_FALSE(std::filesystem::exists(ordner / "nas.sqlite"));
        const auto liste = [](const std::string& text) { return text.empty() ? Zeilen{} : Zeilen{text}; };
        EXPECT_EQ(ui.Meldungen(), liste(fall.meldung));
        EXPECT_EQ(ui.Fragen(), liste(fall.frage));
        Zeilen zeilen;
        for (const auto& zeile : ui.Texte(Ereignis::Art::Protokoll))
            zeilen.push_back(zeile.substr(8));
        if (!fall.protokoll.empty()) {
            EXPECT_EQ(zeilen, liste(fall.protokoll));
        }
    }
}

TEST(NasEinlesen, SchlechteDateienEndenMitDerMeldung) {
    const std::string ohneAuszug = "ERR: Knoten AX_Bestandsdatenauszug nicht vorhanden!\nAbbruch Funktion!   ";
    const std::tuple<const char*, std::string, std::string, std::filesystem::path> fälle[] = {
        {"ohne Auszug", "<?xml version=\"1.0\"?>\n<wfs:FeatureCollection>\n</wfs:FeatureCollection>\n", ohneAuszug,
         Konfig},
        {"Auszug nur im Kommentar", "<!-- kein AX_Bestandsdatenauszug hier -->\n<a/>\n", ohneAuszug, Konfig},
        {"Entitäten",
         "<?xml version=\"1.0\"?>\n<!DOCTYPE x [<!ENTITY e \"boom\">]>\n<AX_Bestandsdatenauszug>&e;"
         "</AX_Bestandsdatenauszug>\n",
         "Die Datei enthält eine DOCTYPE- oder ENTITY-Deklaration und wird aus Sicherheitsgründen nicht eingelesen!   ",
         Konfig},
        {"Knotendatei fehlt", Nas({Flurstück("F1", "1")}),
         "ERR: Knotendatei /nirgends/ALKIS_Knoten.dat nicht vorhanden!\nAbbruch Funktion!   ", "/nirgends"},
    };
    for (const auto& [name, text, meldung, konfig] : fälle) {
        SCOPED_TRACE(name);
        Lauf lauf;
        EXPECT_FALSE(lauf.Lesen(text, konfig));
        EXPECT_EQ(lauf.ui.Meldungen(), Zeilen{meldung});
    }
}

TEST(NasEinlesen, AbbruchBehältDasGeleseneUndErgänztEs) {
    Lauf lauf;
    lauf.ui.Abbrechen();
    lauf.ui.Antworten({Antwort::Ja});
    ASSERT_TRUE(lauf.Lesen(Nas({Flurstück("F1", "07256600100001000000"), Flurstück("F2", "2")})));
    EXPECT_TRUE(lauf.stand.abgebrochen);
    EXPECT_EQ(lauf.ui.Fragen(), Zeilen{"Wollen Sie den Import wirklich abbrechen?   "});
    EXPECT_EQ(lauf.Abfrage("SELECT id, flurstueckskennzeichenAlkis FROM AX_Flurstueck"), Zeilen{"F1|072566|1|1"});
    EXPECT_EQ(lauf.Abfrage("SELECT COUNT(*) FROM Antragsbeschreibung"), Zeilen{"1"});
    EXPECT_NE(lauf.Protokolldatei().find(", Abbruch DAO_ALKISEinlesen\r\n"), std::string::npos);
}

TEST(NasDatenbank, GespeicherteWirdWiederGeöffnetAndereAbgewiesen) {
    Lauf lauf;
    std::string text = Nas({Flurstück("F1", "1")});
    ASSERT_TRUE(lauf.Lesen(text.insert(text.find('\n') + 1, "<antragsnr>A-1</antragsnr>\n")));
    lauf.db.reset();
    const auto gespeichert = lauf.ordner / "gespeichert.sqlite";
    std::filesystem::copy_file(lauf.ordner / "nas.sqlite", gespeichert);

    SkriptOberfläche ui;
    NasStand stand;
    ASSERT_TRUE(NasDatenbankÖffnen(gespeichert, lauf.ordner / "arbeit.sqlite", stand, ui));
    EXPECT_EQ(stand.antrag.AntragsText(), "AntragsNr.: A-1");
    EXPECT_EQ(stand.antrag.SystemText(), "System: ETRS89_UTM32, EPSG: 25832 , MKZ: 32");
    EXPECT_EQ(stand.tabellen, lauf.stand.tabellen);
    EXPECT_TRUE(std::filesystem::exists(lauf.ordner / "arbeit.sqlite"));

    // Without AP_PTO, or no database at all: refused, the work database untouched.
    Datenbank(lauf.ordner / "fremd.sqlite").AusführenNativ("CREATE TABLE AX_Flurstueck (id TEXT)");
    DateiSchreiben(lauf.ordner / "text.sqlite", "kein SQLite");
    for (const char* name : {"fremd.sqlite", "text.sqlite", "fehlt.sqlite"}) {
        SCOPED_TRACE(name);
        SkriptOberfläche abgewiesen;
        NasStand leer;
        EXPECT_FALSE(NasDatenbankÖffnen(lauf.ordner / name, lauf.ordner / "arbeit2.sqlite", leer, abgewiesen));
        EXPECT_EQ(abgewiesen.Meldungen(), Zeilen{MeldungUngültigeNasDatenbank});
        EXPECT_FALSE(std::filesystem::exists(lauf.ordner / "arbeit2.sqlite"));
    }
}

} // namespace
} // namespace flurix::nas
