// The import of NAS files into their object database, with the shipped node file: rows, keys,
// relations, the enrichment, and what bad files do.

#include "nas/nas_einlesen.hpp"

#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/nas_datenbank.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <gtest/gtest.h>

namespace flurix::nas {
namespace {

using test::DateiLesen;
using test::DateiSchreiben;
using test::TempOrdner;

const std::filesystem::path Konfig = std::filesystem::path(FLURIX_QUELLEN) / "config";

// A NAS extract around `objekte` (each one feature); "{p}" in the features stands for the prefix.
std::string Nas(const std::vector<std::string>& objekte, std::string_view mitglied = "gml:featureMember",
                std::string_view präfix = "", std::string_view zeilenende = "\n") {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<{p}AX_Bestandsdatenauszug "
                       "xmlns=\"http://www.adv-online.de/namespaces/adv/gid/6.0\" "
                       "xmlns:gml=\"http://www.opengis.net/gml/3.2\" "
                       "xmlns:xlink=\"http://www.w3.org/1999/xlink\">\n"
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
        } else if (text[i] == '\n') {
            aus += zeilenende;
        } else {
            aus += text[i];
        }
    }
    return aus;
}

std::string Flurstück(std::string_view id, std::string_view kennzeichen, std::string_view mehr = "") {
    return "<{p}AX_Flurstueck gml:id=\"" + std::string(id) + "\">\n<{p}flurstueckskennzeichen>" +
           std::string(kennzeichen) + "</{p}flurstueckskennzeichen>\n" + std::string(mehr) +
           "</{p}AX_Flurstueck>";
}

std::string Verweis(std::string_view element, std::string_view ziel) {
    return "<{p}" + std::string(element) + " xlink:href=\"urn:adv:oid:" + std::string(ziel) + "\"/>\n";
}

std::string Einfach(std::string_view klasse, std::string_view id, std::string_view inhalt) {
    return "<" + std::string(klasse) + " gml:id=\"" + std::string(id) + "\">\n" + std::string(inhalt) +
           "</" + std::string(klasse) + ">";
}

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

    // The rows of a query, each as its cells joined with "|".
    std::vector<std::string> Zeilen(std::string_view sql) {
        std::vector<std::string> zeilen;
        auto abfrage = db->VorbereitenNativ(sql);
        while (abfrage.Schritt()) {
            std::string zeile;
            for (int i = 0; i < abfrage.Spaltenanzahl(); ++i)
                zeile += (i ? "|" : "") + std::string(abfrage.Text(i));
            zeilen.push_back(zeile);
        }
        return zeilen;
    }
    std::string Wert(std::string_view sql) {
        const auto zeilen = Zeilen(sql);
        return zeilen.empty() ? "<keine Zeile>" : zeilen.front();
    }
};

using Zeilen = std::vector<std::string>;

// A small NAS file of tests/daten/nas.
std::string Datei(std::string_view name) { return DateiLesen(test::Testdaten() / "nas" / name); }

TEST(NasEinlesen, FlurstückMitSchlüsselnGeometrieUndSystem) {
    Lauf lauf;
    ASSERT_TRUE(lauf.Lesen(Datei("flurstueck_mit_bogen_und_gemeindekennzeichen.xml")));
    EXPECT_EQ(lauf.Zeilen("SELECT id, flurstueckskennzeichen, flurstueckskennzeichenAlkis, "
                          "gemeindezugehoerigkeit, srsName FROM AX_Flurstueck"),
              Zeilen{"DERP1234h'HH|07256600100007000200|072566|1|7/2|07 31|25832_32"});
    // Geometry is searched by tag anywhere in the feature; segments are cleaned point lists.
    EXPECT_EQ(lauf.Wert("SELECT \"gml:exterior\" FROM AX_Flurstueck"), "1 2 3 4 3 4 5 6 7 8 7  8 7 8 1 2");
    EXPECT_EQ(lauf.Wert("SELECT \"gml:LineStringSegment\" FROM AX_Flurstueck"), "1 2;3 4;7 8;1 2");
    EXPECT_EQ(lauf.Wert("SELECT \"gml:Arc\" FROM AX_Flurstueck"), "3 4 5 6 7 8");
    EXPECT_EQ(lauf.stand.standardSystem, "ETRS89_UTM32");
    EXPECT_EQ(lauf.stand.antrag.SystemText(), "System: ETRS89_UTM32, EPSG: 25832 , MKZ: 32");
    EXPECT_EQ(lauf.Wert("SELECT Antragsnummer || '|' || EPSG || '|' || MKZ FROM Antragsbeschreibung"),
              "ohne|25832|32");
    EXPECT_EQ(lauf.ui.LetzterStatus(1), "ALKIS-Daten komplett eingelesen");
}

TEST(NasEinlesen, BeziehungenNachIhrerRegel) {
    Lauf lauf;
    ASSERT_TRUE(lauf.Lesen(Datei("beziehungen_je_regel.xml")));
    // Every booking reference is a row; the location references of a parcel are one row.
    EXPECT_EQ(lauf.Zeilen("SELECT * FROM \"AX_Flurstueck_istGebucht#AX_Buchungsstelle\" ORDER BY rowid"),
              (Zeilen{"F1|B1", "F1|b'2"}));
    EXPECT_EQ(lauf.Zeilen("SELECT * FROM \"AX_Flurstueck_weistAuf#ori_LagebezeichnungMitHausnummer\""),
              Zeilen{"F1|L1; l'2; L3"});
    // A booking keeps its first sheet and joins its "an" references.
    EXPECT_EQ(lauf.Zeilen("SELECT * FROM \"AX_Buchungsstelle_istBestandteilVon#AX_Buchungsblatt\""),
              Zeilen{"B1|BL1"});
    EXPECT_EQ(lauf.Zeilen("SELECT * FROM \"AX_Buchungsstelle_an#ori_Buchungsstelle\""),
              Zeilen{"B1|X1; X2"});
    // Any other class keeps the last reference.
    EXPECT_EQ(lauf.Zeilen("SELECT * FROM \"AX_Namensnummer_benennt#AX_Person\""), Zeilen{"N1|P2"});
}

TEST(NasEinlesen, KennungenDieSichNurImFallUnterscheiden) {
    Lauf lauf;
    ASSERT_TRUE(lauf.Lesen(Nas({Einfach("AX_Person", "DEabc", "<nachnameOderFirma>klein</nachnameOderFirma>\n"),
                                Einfach("AX_Person", "DEABC", "<nachnameOderFirma>groß</nachnameOderFirma>\n"),
                                Einfach("AX_Person", "DEABC", "<nachnameOderFirma>doppelt</nachnameOderFirma>\n"),
                                Einfach("AX_Namensnummer", "N1", Verweis("benennt", "DEabc"))})));
    EXPECT_EQ(lauf.Zeilen("SELECT id, nachnameOderFirma FROM AX_Person ORDER BY rowid"),
              (Zeilen{"DEa'b'c'|klein", "DEABC|groß"}));
    // The reference meets its target through the same key form.
    EXPECT_EQ(lauf.Wert("SELECT p.nachnameOderFirma FROM \"AX_Namensnummer_benennt#AX_Person\" r "
                        "JOIN AX_Person p ON p.id = r.AX_Person"),
              "klein");
    EXPECT_EQ(lauf.stand.statistik.doppelteKennungen.at("AX_Person"), 1u);
}

TEST(NasEinlesen, TextspaltenNach255ZeichenGekürztMemoNicht) {
    Lauf lauf;
    const std::string lang(300, 'a');
    const std::string umlaute = std::string(254, 'x') + "äöü";
    ASSERT_TRUE(lauf.Lesen(Nas({Einfach("AX_Anschrift", "A1", "<strasse>" + lang + "</strasse>\n<ort_Post>" +
                                                                umlaute + "</ort_Post>\n"),
                                Einfach("AX_Person", "P1", "<nachnameOderFirma>" + lang +
                                                               "</nachnameOderFirma>\n")})));
    EXPECT_EQ(lauf.Wert("SELECT strasse FROM AX_Anschrift"), std::string(255, 'a'));
    // Characters, not bytes: the cut never splits a letter.
    EXPECT_EQ(lauf.Wert("SELECT ort_Post FROM AX_Anschrift"), std::string(254, 'x') + "ä");
    EXPECT_EQ(lauf.Wert("SELECT nachnameOderFirma FROM AX_Person"), lang);
}

TEST(NasEinlesen, MitgliedstagUndPräfixDerDatei) {
    struct Fall {
        std::string mitglied, präfix, zeilenende;
    };
    for (const auto& fall : {Fall{"wfs:member", "", "\n"}, Fall{"gml:featureMember", "adv:", "\n"},
                             Fall{"gml:featureMember", "", "\r"}, Fall{"wfs:member", "", "\r\n"}}) {
        SCOPED_TRACE(fall.mitglied + " " + fall.präfix + " " + std::to_string(fall.zeilenende.size()));
        Lauf lauf;
        ASSERT_TRUE(lauf.Lesen(Nas({Flurstück("F1", "07256600100001000000", Verweis("istGebucht", "B1")),
                                    Flurstück("F2", "07256600100002000000")},
                                   fall.mitglied, fall.präfix, fall.zeilenende)));
        EXPECT_EQ(lauf.Zeilen("SELECT id, flurstueckskennzeichen FROM AX_Flurstueck ORDER BY rowid"),
                  (Zeilen{"F1|07256600100001000000", "F2|07256600100002000000"}));
        EXPECT_EQ(lauf.Zeilen("SELECT * FROM \"AX_Flurstueck_istGebucht#AX_Buchungsstelle\""),
                  Zeilen{"F1|B1"});
        EXPECT_EQ(lauf.stand.mitgliedTag, fall.mitglied);
    }
}

TEST(NasEinlesen, VieleObjekteInEinerZeileUndEinBOM) {
    Lauf lauf;
    std::string text = Nas({Flurstück("F1", "1"), Flurstück("F2", "2"), Flurstück("F3", "3")});
    std::string eineZeile;
    for (char c : text)
        if (c != '\n')
            eineZeile += c;
    ASSERT_TRUE(lauf.Lesen("\xEF\xBB\xBF" + eineZeile));
    EXPECT_EQ(lauf.Zeilen("SELECT id FROM AX_Flurstueck ORDER BY rowid"), (Zeilen{"F1", "F2", "F3"}));
}

TEST(NasEinlesen, ZweiPositionenUndGebäudeschlüssel) {
    Lauf lauf;
    ASSERT_TRUE(lauf.Lesen(Datei("punktorte_und_gebaeude_mit_lage.xml")));
    EXPECT_EQ(lauf.Zeilen("SELECT id, position, \"qualitaetsangaben/AX_DQPunktort/genauigkeitswert\" "
                          "FROM AX_PunktortTA ORDER BY rowid"),
              (Zeilen{"P1|1 2;3 4|0.030", "P2||0.5"}));
    EXPECT_EQ(lauf.Zeilen("SELECT id, hausnummer, gebaeudekennzeichen, gebaeudekennzeichenALKIS "
                          "FROM AX_Gebaeude ORDER BY rowid"),
              (Zeilen{"G1|12 a|07231103001330012   a |07231103|00133|12 a",
                      "G2||07231103001330005    P03|07231103|00133|(P3)P5"}));
}

TEST(NasEinlesen, GemeindeGemarkungUndWertearten) {
    Lauf lauf;
    ASSERT_TRUE(lauf.Lesen(Datei("gemeinde_gemarkung_und_anreden.xml")));
    EXPECT_EQ(lauf.Wert("SELECT Gemeinde FROM AX_Flurstueck"), "Musterstadt");
    EXPECT_EQ(lauf.Zeilen("SELECT * FROM \"AX_Gemarkung_id#istAmtsbezirkVon\" ORDER BY rowid"),
              (Zeilen{"K1|07 1", "K1|07 2"}));
    EXPECT_FALSE(DAO_FeldVorhanden(*lauf.db, "AX_Gemarkung", "istAmtsbezirkVon"));
    EXPECT_EQ(lauf.Zeilen("SELECT anrede FROM AX_Person ORDER BY rowid"), (Zeilen{"Frau", "9999"}));
}

TEST(NasEinlesen, AntragsnummerNurInDenErsten50Zeilen) {
    for (const int leerzeilen : {10, 60}) {
        Lauf lauf;
        std::string text = Nas({Flurstück("F1", "1")});
        text.insert(text.find('\n') + 1, std::string(static_cast<std::size_t>(leerzeilen), '\n') +
                                             "<antragsnr>4711-0815</antragsnr>\n");
        ASSERT_TRUE(lauf.Lesen(text));
        EXPECT_EQ(lauf.stand.antrag.AntragsText(), leerzeilen < 50 ? "AntragsNr.: 4711-0815" : "AntragsNr.: ohne");
    }
}

TEST(NasEinlesen, ZweitesKoordinatensystemWirdGemeldet) {
    Lauf lauf;
    ASSERT_TRUE(lauf.Lesen(Nas({Einfach("AX_PunktortTA", "P1",
                                        "<position><gml:Point srsName=\"urn:adv:crs:DE_DHHN92_NH\"><gml:pos>1"
                                        "</gml:pos></gml:Point></position>\n"),
                                Einfach("AX_PunktortTA", "P2",
                                        "<position>\n<gml:Point srsName=\"urn:adv:crs:LOKAL_RP_7\">\n<gml:pos>1 2"
                                        "</gml:pos></gml:Point></position>\n")})));
    EXPECT_EQ(lauf.stand.zweitesSystem, "LOKAL_RP_7");
    const auto meldungen = lauf.ui.Meldungen();
    ASSERT_FALSE(meldungen.empty());
    EXPECT_EQ(meldungen.back(), "Koordinatenreferenzsystem: ETRS89_UTM32\nKoordinatensystem lokal: LOKAL_RP_7"
                                "In den XML-Daten sind mehrere Koordinatensysteme hinterlegt!   "
                                "Beim Export nach Geograf oder DXF kann es zu Problemen kommen!   ");
}

TEST(NasEinlesen, SystemOhneEpsgCode) {
    struct Fall {
        std::string system, srsName, systemText;
    };
    for (const auto& fall : {Fall{"DE_DHDN_3GK3", "31467_3", "System: DE_DHDN_3GK3, EPSG: 31467 , MKZ: 3"},
                             Fall{"LOKAL_RP_7", "Bez: LOKAL_RP_7", "System: LOKAL_RP_7, EPSG: 0000 , MKZ: 0"},
                             Fall{"", "Bez: ", "System: , EPSG: 0000 , MKZ: 0"}}) {
        SCOPED_TRACE(fall.system);
        Lauf lauf;
        std::string text = Nas({Flurstück("F1", "1")});
        const std::string marke = "urn:adv:crs:ETRS89_UTM32";
        text.replace(text.find(marke), marke.size(), fall.system.empty() ? "" : "urn:adv:crs:" + fall.system);
        ASSERT_TRUE(lauf.Lesen(text));
        EXPECT_EQ(lauf.Wert("SELECT srsName FROM AX_Flurstueck"), fall.srsName);
        EXPECT_EQ(lauf.stand.antrag.SystemText(), fall.systemText);
    }
}

TEST(NasEinlesen, GroßeDateienFragenOderWerdenAbgewiesen) {
    // Sparse files: the size counts, not the bytes on the disk.
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
        const auto ergebnis = DAO_ALKISEinlesen({datei, ordner / "nas.sqlite", Konfig}, stand, ui, protokoll);
        EXPECT_FALSE(ergebnis);
        EXPECT_FALSE(std::filesystem::exists(ordner / "nas.sqlite"));
        EXPECT_EQ(ui.Meldungen(), fall.meldung.empty() ? std::vector<std::string>{}
                                                       : std::vector<std::string>{fall.meldung});
        EXPECT_EQ(ui.Fragen(), fall.frage.empty() ? std::vector<std::string>{}
                                                  : std::vector<std::string>{fall.frage});
        const auto zeilen = ui.Texte(Ereignis::Art::Protokoll);
        if (!fall.protokoll.empty()) {
            ASSERT_EQ(zeilen.size(), 1u);
            EXPECT_EQ(zeilen.front().substr(8), fall.protokoll);
        }
    }
}

TEST(NasEinlesen, SchlechteDateienEndenMitDerMeldung) {
    struct Fall {
        std::string name, text, meldung;
        bool knotenFehlt = false;
    };
    const std::string knotenPfad = "/nirgends/ALKIS_Knoten.dat";
    const std::vector<Fall> fälle{
        {"ohne Auszug", "<?xml version=\"1.0\"?>\n<wfs:FeatureCollection>\n</wfs:FeatureCollection>\n",
         "ERR: Knoten AX_Bestandsdatenauszug nicht vorhanden!\nAbbruch Funktion!   "},
        {"Auszug nur im Kommentar", "<!-- kein AX_Bestandsdatenauszug hier -->\n<a/>\n",
         "ERR: Knoten AX_Bestandsdatenauszug nicht vorhanden!\nAbbruch Funktion!   "},
        {"Entitäten", "<?xml version=\"1.0\"?>\n<!DOCTYPE x [<!ENTITY e \"boom\">]>\n"
                      "<AX_Bestandsdatenauszug>&e;</AX_Bestandsdatenauszug>\n",
         "Die Datei enthält eine DOCTYPE- oder ENTITY-Deklaration und wird aus Sicherheitsgründen nicht "
         "eingelesen!   "},
        {"Knotendatei fehlt", Nas({Flurstück("F1", "1")}),
         "ERR: Knotendatei " + knotenPfad + " nicht vorhanden!\nAbbruch Funktion!   ", true},
    };
    for (const auto& fall : fälle) {
        SCOPED_TRACE(fall.name);
        Lauf lauf;
        const auto ergebnis = lauf.Lesen(fall.text, fall.knotenFehlt ? "/nirgends" : Konfig);
        EXPECT_FALSE(ergebnis);
        ASSERT_EQ(lauf.ui.Meldungen().size(), 1u);
        EXPECT_EQ(lauf.ui.Meldungen().front(), fall.meldung);
    }
}

TEST(NasEinlesen, KaputtesObjektWirdGemeldetUndDerRestGelesen) {
    Lauf lauf;
    ASSERT_TRUE(lauf.Lesen(Nas({Flurstück("F1", "1"), "<AX_Flurstueck gml:id=\"F2\"><offen></AX_Flurstueck>",
                                "<AX_Person gml:id=\"P1\"><nachnameOderFirma>&xxe;</nachnameOderFirma></AX_Person>", Flurstück("F3", "3")})));
    EXPECT_EQ(lauf.Zeilen("SELECT id FROM AX_Flurstueck ORDER BY rowid"), (Zeilen{"F1", "F3"}));
    EXPECT_EQ(lauf.Zeilen("SELECT id, nachnameOderFirma FROM AX_Person"), Zeilen{"P1|&xxe;"});
    ASSERT_EQ(lauf.ui.Meldungen().size(), 1u);
    EXPECT_TRUE(lauf.ui.Meldungen().front().starts_with(
        "Fehler beim Laden des Dokumentes. Der Fehler wird ignoriert!\nGrund: "));
    EXPECT_NE(lauf.ui.Meldungen().front().find("\nZeile: "), std::string::npos);
    EXPECT_EQ(lauf.stand.statistik.ladefehler, 1u);
}

TEST(NasEinlesen, AbgeschnitteneDateiBehältDasGelesene) {
    Lauf lauf;
    std::string text = Nas({Flurstück("F1", "1"), Flurstück("F2", "2")});
    text.resize(text.find("F2") + 10);
    ASSERT_TRUE(lauf.Lesen(text));
    EXPECT_EQ(lauf.Zeilen("SELECT id FROM AX_Flurstueck"), Zeilen{"F1"});
    const auto prn = DateiLesen(lauf.ordner / "auszug.xml.prn");
    EXPECT_NE(prn.find("Die Datei endet innerhalb eines Objekts"), std::string::npos);
    EXPECT_NE(prn.find(", ALKIS importiert...\r\n"), std::string::npos);
}

TEST(NasEinlesen, RiesigesObjektÜberBlockgrenzen) {
    Lauf lauf;
    std::string punkte;
    for (int i = 0; i < 800'000; ++i)
        punkte += std::to_string(350000 + i) + ".125 " + std::to_string(5530000 + i) + ".5 ";
    ASSERT_TRUE(lauf.Lesen(Nas({Flurstück("F1", "1"),
                                Flurstück("F2", "2", "<gml:exterior><gml:Ring><gml:posList>" + punkte +
                                                         "</gml:posList></gml:Ring></gml:exterior>\n"),
                                Flurstück("F3", "3")})));
    EXPECT_GT(punkte.size(), 10u << 20); // more than two read blocks
    EXPECT_EQ(lauf.Zeilen("SELECT id, length(\"gml:exterior\") FROM AX_Flurstueck ORDER BY rowid"),
              (Zeilen{"F1|0", "F2|" + std::to_string(punkte.size() - 1), "F3|0"}));
}

TEST(NasEinlesen, AbbruchBehältDasGeleseneUndErgänztEs) {
    Lauf lauf;
    lauf.ui.Abbrechen();
    lauf.ui.Antworten({Antwort::Ja});
    ASSERT_TRUE(lauf.Lesen(Nas({Flurstück("F1", "07256600100001000000"), Flurstück("F2", "2")})));
    EXPECT_TRUE(lauf.stand.abgebrochen);
    EXPECT_EQ(lauf.ui.Fragen(), std::vector<std::string>{"Wollen Sie den Import wirklich abbrechen?   "});
    EXPECT_EQ(lauf.Zeilen("SELECT id, flurstueckskennzeichenAlkis FROM AX_Flurstueck"),
              Zeilen{"F1|072566|1|1"});
    EXPECT_EQ(lauf.Wert("SELECT COUNT(*) FROM Antragsbeschreibung"), "1");
    const auto prn = DateiLesen(lauf.ordner / "auszug.xml.prn");
    EXPECT_NE(prn.find(", Abbruch DAO_ALKISEinlesen\r\n"), std::string::npos);
}

TEST(NasEinlesen, ProtokollZeilenUndTabellenliste) {
    Lauf lauf;
    ASSERT_TRUE(lauf.Lesen(Nas({Flurstück("F1", "1")})));
    const auto protokoll = lauf.ui.Texte(Ereignis::Art::Protokoll);
    ASSERT_FALSE(protokoll.empty());
    // "hh:mm:ss, text"
    for (const auto& zeile : protokoll) {
        ASSERT_GE(zeile.size(), 10u);
        EXPECT_EQ(zeile.substr(2, 1) + zeile.substr(5, 1) + zeile.substr(8, 2), "::, ") << zeile;
    }
    EXPECT_EQ(protokoll.back().substr(8), ", ALKIS importiert...");
    EXPECT_EQ(lauf.stand.tabellen.front(), "AX_Flurstueck");
    EXPECT_NE(std::find(lauf.stand.tabellen.begin(), lauf.stand.tabellen.end(), "AX_Gemarkung_id#istAmtsbezirkVon"),
              lauf.stand.tabellen.end());
    EXPECT_TRUE(DAO_FeldVorhanden(*lauf.db, "AP_PTO", "flstnr"));
}

TEST(NasDatenbank, GespeicherteWirdWiederGeöffnetAndereAbgewiesen) {
    Lauf lauf;
    std::string text = Nas({Flurstück("F1", "1")});
    text.insert(text.find('\n') + 1, "<antragsnr>A-1</antragsnr>\n");
    ASSERT_TRUE(lauf.Lesen(text));
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
    {
        Datenbank fremd(lauf.ordner / "fremd.sqlite");
        fremd.AusführenNativ("CREATE TABLE AX_Flurstueck (id TEXT)");
    }
    DateiSchreiben(lauf.ordner / "text.sqlite", "kein SQLite");
    for (const char* name : {"fremd.sqlite", "text.sqlite", "fehlt.sqlite"}) {
        SCOPED_TRACE(name);
        SkriptOberfläche abgewiesen;
        NasStand leer;
        EXPECT_FALSE(NasDatenbankÖffnen(lauf.ordner / name, lauf.ordner / "arbeit2.sqlite", leer, abgewiesen));
        EXPECT_EQ(abgewiesen.Meldungen(), std::vector<std::string>{MeldungUngültigeNasDatenbank});
        EXPECT_FALSE(std::filesystem::exists(lauf.ordner / "arbeit2.sqlite"));
    }
}

} // namespace
} // namespace flurix::nas
