// The web-service catalogue: its two files, the moves, the quick selections and templates, the
// logins and the layer choice.

#include "core/oberflaeche_skript.hpp"
#include "core/verschleiern.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "map/dienstkatalog.hpp"
#include "map/layerauswahl.hpp"
#include "map/schnellauswahl.hpp"
#include "map/zugang.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace flurix::karte {
namespace {

namespace fs = std::filesystem;

/// A catalogue whose every cell differs from every other, with umlauts, "©" and both check values.
Dienstkatalog VolleZeilen() {
    Dienstkatalog katalog;
    for (int n = 1; n <= 2; ++n) {
        std::vector<std::string> zellen;
        for (std::size_t s = 0; s < KatalogSpalten.size(); ++s) {
            const std::string spalte(KatalogSpalten[s]);
            if (IstPrüfspalte(spalte))
                zellen.emplace_back((s + static_cast<std::size_t>(n)) % 2 ? "true" : "false");
            else
                // Not the column name: a line naming "Web-Service" is a header to the reader.
                zellen.push_back("Zelle " + std::to_string(s) + " Größe© " + std::to_string(n));
        }
        katalog.ZeileAnfügen(zellen);
    }
    katalog.Nummerieren();
    return katalog;
}

std::vector<std::string> Namen(const Dienstkatalog& katalog) {
    std::vector<std::string> namen;
    for (std::size_t z = 0; z < katalog.Zeilenzahl(); ++z)
        namen.push_back(katalog.Zelle(z, "Web-Service") + "=" + katalog.Zelle(z, "id"));
    return namen;
}

TEST(Dienstkatalog, FilUndDatGebenAlleSpaltenZurück) {
    const test::TempOrdner ordner;
    const Dienstkatalog katalog = VolleZeilen();
    KatalogSpeichern(katalog, ordner / "WebService.fil");
    for (const char* datei : {"WebService.fil", "WebService.dat"}) {
        SCOPED_TRACE(datei);
        const Dienstkatalog gelesen = KatalogLesen(ordner / datei);
        ASSERT_EQ(gelesen.Zeilenzahl(), 2u);
        for (std::size_t z = 0; z < 2; ++z)
            for (std::string_view spalte : KatalogSpalten)
                EXPECT_EQ(gelesen.Zelle(z, spalte), katalog.Zelle(z, spalte)) << spalte;
    }
    // Windows-1252 like the other configuration files: "©" is one byte.
    EXPECT_NE(test::DateiLesen(ordner / "WebService.dat")
                  .find("Gr\xF6\xDF"
                        "e\xA9 1"),
              std::string::npos);
}

// The golden file also holds the defaults of a new service.
TEST(Dienstkatalog, DatTextIstKopfUndZellenMitSemikolon) {
    Dienstkatalog katalog;
    const auto zeile = katalog.NeuerDienst("TopPlusOpen");
    katalog.ZelleSetzen(zeile, "URL", "https://sgx.geodatenzentrum.de/wms_topplus_open");
    katalog.NeuerDienst("ALKIS Süd");
    EXPECT_EQ(test::GoldenVergleich(DatText(katalog),
                                    test::Testdaten() / "map" / "katalog_zwei_neue_dienste.dat"),
              "");
}

TEST(Dienstkatalog, DatLesenÜberspringtKopfzeilenUndNummeriert) {
    Dienstkatalog katalog;
    DatTextAnfügen(katalog, "id;Web-Service;URL;\r\n"
                            "7;A;http://a;ohne;;;;;1;png;\r\n"
                            "\r\n"
                            "id;Web-Service;URL;\r\n"
                            "9;B;http://b;\n");
    ASSERT_EQ(katalog.Zeilenzahl(), 2u);
    EXPECT_EQ(Namen(katalog), (std::vector<std::string>{"A=1", "B=2"}));
    EXPECT_EQ(katalog.Zelle(0, "Transparenz"), "true");
    EXPECT_EQ(katalog.Zelle(1, "Transparenz"), "false");
    EXPECT_EQ(katalog.Zelle(1, "Format"), "");
}

TEST(Dienstkatalog, PrüfzellenLesenEinsTrueWahr) {
    const struct {
        const char* zelle;
        bool wert;
    } fälle[] = {{"1", true},  {"true", true},   {"True", true}, {"wahr", true}, {"WAHR", true},
                 {"0", false}, {"false", false}, {"", false},    {"ja", false},  {"-1", false}};
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.zelle);
        EXPECT_EQ(PrüfwertLesen(f.zelle), f.wert);
    }
}

TEST(Dienstkatalog, MitgelieferterKatalogWirdGelesen) {
    const Dienstkatalog katalog =
        KatalogLesen(fs::path(FLURIX_QUELLEN) / "config" / "WebService.fil");
    const auto zeile = katalog.ZeileFinden("ALKIS NRW");
    ASSERT_TRUE(zeile);
    EXPECT_EQ(katalog.Zelle(*zeile, "id"), "2");
    EXPECT_TRUE(katalog.Prüfzelle(*zeile, "Transparenz")); // "1" in the file
    EXPECT_EQ(katalog.Zelle(*zeile, "Transparenz"), "true");
    EXPECT_FALSE(katalog.Prüfzelle(*zeile, "Zugang"));
    EXPECT_FALSE(katalog.ZeileFinden("alkis nrw"));
    EXPECT_THROW((void)katalog.Zelle(*zeile, "Gibtsnicht"), Fehler);
}

TEST(Dienstkatalog, VerschiebenHältDieIdsInFolge) {
    const struct {
        const char* fall;
        std::size_t zeile;
        std::optional<Verschiebung> wohin;
        std::size_t zielId;
        std::vector<std::string> erwartet;
    } fälle[] = {
        {"an dieselbe id", 2, std::nullopt, 3, {"A=1", "B=2", "C=3", "D=4"}},
        {"nach oben auf id 2", 3, std::nullopt, 2, {"A=1", "D=2", "B=3", "C=4"}},
        {"nach unten auf id 3", 0, std::nullopt, 3, {"B=1", "C=2", "A=3", "D=4"}},
        {"über das Ende hinaus", 1, std::nullopt, 99, {"A=1", "C=2", "D=3", "B=4"}},
        {"first", 2, Verschiebung::Erste, 0, {"C=1", "A=2", "B=3", "D=4"}},
        {"vor", 2, Verschiebung::Vor, 0, {"A=1", "C=2", "B=3", "D=4"}},
        {"vor in der ersten Zeile", 0, Verschiebung::Vor, 0, {"A=1", "B=2", "C=3", "D=4"}},
        {"zurück", 1, Verschiebung::Zurück, 0, {"A=1", "C=2", "B=3", "D=4"}},
        {"zurück in der letzten Zeile", 3, Verschiebung::Zurück, 0, {"A=1", "B=2", "C=3", "D=4"}},
        {"last", 0, Verschiebung::Letzte, 0, {"B=1", "C=2", "D=3", "A=4"}},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.fall);
        Dienstkatalog katalog;
        for (const char* name : {"A", "B", "C", "D"})
            katalog.NeuerDienst(name);
        if (f.wohin)
            katalog.Verschieben(f.zeile, *f.wohin);
        else
            katalog.VerschiebenNach(f.zeile, f.zielId);
        EXPECT_EQ(Namen(katalog), f.erwartet);
    }
}

TEST(Dienstkatalog, KatalogPfadNachEinstellung) {
    const fs::path konfig = "/opt/flurix/config";
    const struct {
        const char* einstellung;
        fs::path erwartet;
    } fälle[] = {
        {"", konfig / "WebService.fil"},
        {"\\\\server\\user\\meier.fil", konfig / "user" / "meier.fil"},
        {"/srv/user/meier.fil", konfig / "user" / "meier.fil"},
        {"/srv/gemeinsam/Katalog.fil", "/srv/gemeinsam/Katalog.fil"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.einstellung);
        EXPECT_EQ(KatalogPfad(konfig, f.einstellung), f.erwartet);
    }
}

TEST(Dienstkatalog, ÖffnenAnfügenSpeichernMitIhrenMeldungen) {
    const test::TempOrdner ordner;
    Dienstkatalog katalog;
    katalog.NeuerDienst("Alt");
    Dienstkatalog zwei;
    zwei.NeuerDienst("X");
    zwei.NeuerDienst("Y");
    KatalogSpeichern(zwei, ordner / "zwei.fil");

    SkriptOberfläche ui({Antwort::Ja, Antwort::Nein});
    EXPECT_EQ(KatalogÖffnen(katalog, ordner / "zwei.dat", ui).status(),
              Ergebnis::Status::Abgebrochen);
    EXPECT_EQ(ui.Fragen(),
              (std::vector<std::string>{"Datei \"zwei.dat\" neu einlesen?",
                                        "Achtung: Alle Voreinstellungen werden überschrieben!"}));
    EXPECT_EQ(Namen(katalog), std::vector<std::string>{"Alt=1"});

    ui.Neu({Antwort::Ja});
    EXPECT_TRUE(KatalogAnfügen(katalog, ordner / "zwei.dat", ui));
    EXPECT_EQ(ui.Fragen(),
              std::vector<std::string>{
                  "Soll die Datei <zwei.dat> an die vorhandenen WMS-Daten anhängt werden?"});
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{"Es wurden 2 Datenzeilen angehängt!"});
    EXPECT_EQ(Namen(katalog), (std::vector<std::string>{"Alt=1", "X=2", "Y=3"}));

    ui.Neu();
    EXPECT_FALSE(KatalogÖffnen(katalog, ordner / "fehlt.fil", ui));
    EXPECT_EQ(ui.Meldungen(),
              std::vector<std::string>{"Web-Service \"fehlt.fil\" nicht gefunden! Abbruch!"});

    ui.Neu();
    EXPECT_TRUE(KatalogSpeichernUnter(katalog, ordner / "neu.fil", ui));
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{"Web-Service Daten gespeichert unter: " +
                                                       (ordner / "neu.fil").string() + "\n" +
                                                       (ordner / "neu.dat").string()});
    EXPECT_EQ(KatalogLesen(ordner / "neu.fil").Zeilenzahl(), 3u);

    ui.Neu();
    EXPECT_FALSE(KatalogFehlt("/x/WebService.fil", ui));
    ASSERT_EQ(ui.Ereignisse().size(), 1u);
    EXPECT_EQ(ui.Ereignisse()[0].text, "Web-Service Datei: \"/x/WebService.fil\" nicht vorhanden!\n"
                                       "Bitte Web-Service installieren!\nAbbruch!");
    EXPECT_EQ(ui.Ereignisse()[0].titel, "MAP-Viewer");

    ui.Neu();
    EXPECT_FALSE(FormatSetzen(katalog, 0, "gif", ui));
    EXPECT_EQ(katalog.Zelle(0, "Format"), "png");
    EXPECT_EQ(ui.Meldungen(),
              std::vector<std::string>{"Bitte geben Sie das Format <png> oder <jpeg> vor!"});
}

TEST(Schnellauswahl, HinzufügenAktualisierenLöschen) {
    const test::TempOrdner ordner;
    const fs::path datei = ordner / "ALKIS_WMSDienstErweitert.dat";
    const std::vector<Schnellauswahl> ohne = {{"ohne", {}}};
    EXPECT_EQ(SchnellauswahlenLesen(datei), ohne);
    EXPECT_EQ(VorlagenLesen(ordner / "ALKIS_WebMapDienst.dat"), std::vector<std::string>{"ohne"});

    test::DateiSchreiben(datei, "DOP;ALKIS NRW:Luftbild mit Flurst\xFC"
                                "cken\r\n");
    SkriptOberfläche ui;
    ui.Eingaben({"Topo"});
    EXPECT_TRUE(SchnellauswahlHinzufügen(datei, {"TopPlusOpen", "ALKIS NRW"}, ui));
    EXPECT_EQ(ui.Meldungen(),
              std::vector<std::string>{"Schnellauswahl WMS-Dienst mit \"Topo\" erweitert!"});
    // The file stays Windows-1252 with CR LF.
    EXPECT_EQ(test::DateiLesen(datei), "DOP;ALKIS NRW:Luftbild mit Flurst\xFC"
                                       "cken\r\n"
                                       "TopPlusOpen;ALKIS NRW:Topo\r\n");

    ui.Neu();
    EXPECT_TRUE(SchnellauswahlAktualisieren(datei, "Topo", {"TopPlusOpen"}, ui));
    EXPECT_EQ(ui.Meldungen(),
              std::vector<std::string>{"Schnellauswahl WMS-Dienst \"Topo\" aktualisiert!"});

    ui.Neu();
    EXPECT_EQ(SchnellauswahlLöschen(datei, "ohne", ui).status(), Ergebnis::Status::Abgebrochen);
    EXPECT_TRUE(ui.Ereignisse().empty());

    ui.Neu({Antwort::Ja});
    EXPECT_TRUE(SchnellauswahlLöschen(datei, "Luftbild mit Flurstücken", ui));
    EXPECT_EQ(ui.Fragen(), std::vector<std::string>{
                               "Schnellauswahl WMS-Dienst: \"Luftbild mit Flurstücken\" löschen?"});
    EXPECT_EQ(ui.Meldungen(),
              std::vector<std::string>{
                  "Schnellauswahl WMS-Dienst: \"Luftbild mit Flurstücken\" gelöscht!"});
    const std::vector<Schnellauswahl> übrig = {{"Topo", {"TopPlusOpen"}}};
    EXPECT_EQ(SchnellauswahlenLesen(datei), übrig);
    // The copy made first holds both lines.
    int kopien = 0;
    for (const auto& eintrag : fs::directory_iterator(ordner.pfad()))
        if (const auto name = eintrag.path().filename().string();
            name.starts_with("ALKIS_WMSDienstErweitert.dat_") && name.ends_with(".dat")) {
            ++kopien;
            EXPECT_NE(test::DateiLesen(eintrag.path()).find("Luftbild"), std::string::npos);
        }
    EXPECT_EQ(kopien, 1);
}

TEST(Zugang, DateinameOhneSonderzeichenUndBlanks) {
    const struct {
        const char* dienst;
        const char* datei;
    } fälle[] = {
        {"ALKIS NRW", "ALKISNRW.key"},
        {"a\\b/c:d?e*f^g\"h<i>j|k l", "abcdefghijkl.key"},
        {"Flurstücke (geschützt)", "Flurstücke(geschützt).key"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.dienst);
        EXPECT_EQ(ZugangDateiname(f.dienst), f.datei);
    }
}

TEST(Zugang, DateiIstVerschleierterTextMitBesitzer) {
    const std::string inhalt = ZugangVerschleiern("meier", "geheim", "kataster");
    EXPECT_EQ(Verschleiern(inhalt, std::string("kataster|") + std::string(ZugangKonstante)),
              "meier|geheim|kataster|");
    const auto daten = ZugangEntschlüsseln(inhalt, "kataster");
    ASSERT_TRUE(daten);
    EXPECT_EQ(daten->benutzer, "meier");
    EXPECT_EQ(daten->passwort, "geheim");
    EXPECT_FALSE(ZugangEntschlüsseln(inhalt, "fremd"));
}

TEST(Zugang, EingebenUndLöschen) {
    const test::TempOrdner ordner;
    Dienstkatalog katalog;
    const auto z = katalog.NeuerDienst("Geschützt 1");
    SkriptOberfläche ui;
    ui.Eingaben({"meier", "geheim"});
    ASSERT_TRUE(ZugangUmschalten(katalog, z, ordner.pfad(), "kataster", ui));
    EXPECT_EQ(ui.Fragen(),
              (std::vector<std::string>{"Geben Sie bitte Ihren User-Name für diesen Dienst ein!",
                                        "Geben Sie bitte Ihr Passwort für diesen Dienst ein!"}));
    EXPECT_EQ(katalog.Zelle(z, "ZugangKey"), "Geschützt1.key");
    EXPECT_TRUE(katalog.Prüfzelle(z, "Zugang"));
    const auto optionen = ZugangFürZeile(katalog, z, ordner.pfad(), "kataster", ui);
    ASSERT_TRUE(optionen);
    EXPECT_EQ(optionen->benutzer, "meier");
    EXPECT_EQ(optionen->passwort, "geheim");

    ui.Neu({Antwort::Nein});
    EXPECT_FALSE(ZugangUmschalten(katalog, z, ordner.pfad(), "kataster", ui));
    EXPECT_TRUE(fs::exists(ordner / "Geschützt1.key"));
    EXPECT_TRUE(katalog.Prüfzelle(z, "Zugang"));

    ui.Neu({Antwort::Ja});
    EXPECT_TRUE(ZugangUmschalten(katalog, z, ordner.pfad(), "kataster", ui));
    EXPECT_EQ(ui.Fragen(), std::vector<std::string>{"Soll der vorhandene Zugang gelöscht werden?"});
    EXPECT_FALSE(fs::exists(ordner / "Geschützt1.key"));
    EXPECT_EQ(katalog.Zelle(z, "ZugangKey"), "");
    EXPECT_FALSE(katalog.Prüfzelle(z, "Zugang"));
}

TEST(Zugang, FremderBesitzerOderFehlendeDateiWirdVerweigert) {
    const test::TempOrdner ordner;
    test::DateiSchreiben(ordner / "Dienst.key", ZugangVerschleiern("meier", "geheim", "anderer"));
    const struct {
        const char* fall;
        const char* schlüsseldatei;
        Zugangszweck zweck;
        std::string meldung;
    } fälle[] = {
        {"fremder Besitzer", "Dienst.key", Zugangszweck::Katalog,
         "Web-Service Sicherheitsabfrage ohne gültige Anmeldung! Abbruch!"},
        {"fremder Besitzer, Karte", "Dienst.key", Zugangszweck::Karte,
         "Web-Service Sicherheitsabfrage ohne gültige Anmeldung! Abbruch!"},
        {"Datei fehlt", "Fehlt.key", Zugangszweck::Katalog,
         "Web-Service Sicherheitsabfrage ohne gültige Anmeldung! Abbruch!"},
        {"Datei fehlt, Karte", "Fehlt.key", Zugangszweck::Karte,
         "Prüfen Sie bitte Ihre Zugangsdaten für WMS-Service: Dienst"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.fall);
        Dienstkatalog katalog;
        const auto z = katalog.NeuerDienst("Dienst");
        katalog.PrüfzelleSetzen(z, "Zugang", true);
        katalog.ZelleSetzen(z, "ZugangKey", f.schlüsseldatei);
        SkriptOberfläche ui;
        EXPECT_FALSE(ZugangFürZeile(katalog, z, ordner.pfad(), "kataster", ui, f.zweck));
        ASSERT_EQ(ui.Ereignisse().size(), 1u);
        EXPECT_EQ(ui.Ereignisse()[0].text, f.meldung);
        EXPECT_EQ(ui.Ereignisse()[0].titel, "WMS-Service");
    }
}

TEST(LayerAuswahl, LayerListeNimmtDieGewähltenNamen) {
    const struct {
        const char* layer;
        const char* auswahl;
        const char* erwartet;
    } fälle[] = {
        {"a~Erster}{b~Zweiter}{c~Dritter", "true,false,true", "a,c"},
        {"a~Erster}{b~Zweiter}{c~Dritter", "false,false,false", ""},
        {"a~Erster}{b~Zweiter}{c~Dritter", "true,true", "a,b"},
        {"a~Erster}{b~Zweiter", "TRUE,true", "b"},
        {"nur_name}{mit~Titel~Tilde", "true,true", "nur_name,mit"},
        {"", "true", ""},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(std::string(f.layer) + " / " + f.auswahl);
        EXPECT_EQ(LayerListe(f.layer, f.auswahl), f.erwartet);
    }
}

TEST(LayerAuswahl, DialogZeigtTitelUndÜbernimmtAuswahlUndStyle) {
    EXPECT_EQ(LayerEinträge("a~Erster}{b~Zweiter~x}{c", "false,true"),
              (std::vector<LayerEintrag>{{"Erster", false}, {"Zweiter~x", true}, {"c", false}}));
    const struct {
        const char* fall;
        bool vStyle;
        const char* style;
        std::vector<bool> gewählt;
        const char* auswahl;
        const char* neuerStyle;
    } fälle[] = {
        {"ohne vStyle", false, "default", {true, false, true}, "true,false,true", ""},
        {"letztes Wort",
         true,
         "alt default",
         {true, false, true},
         "true,false,true",
         "default,default"},
        {"zweimal übernommen",
         true,
         "default,default",
         {true, true, true},
         "true,true,true",
         "default,default,default"},
        {"nichts gewählt", true, "default", {false, false}, "false,false", ""},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.fall);
        Dienstkatalog katalog;
        const auto z = katalog.NeuerDienst("D");
        katalog.PrüfzelleSetzen(z, "vStyle", f.vStyle);
        katalog.ZelleSetzen(z, "Style", f.style);
        LayerAuswahlÜbernehmen(katalog, z, f.gewählt);
        EXPECT_EQ(katalog.Zelle(z, "LayerAuswahl"), f.auswahl);
        EXPECT_EQ(katalog.Zelle(z, "Style"), f.neuerStyle);
    }
}

TEST(LayerAuswahl, ScaleHintWirdZuMaßstabBei96Dpi) {
    // k = 96000 / (√2 · 25.4) ≈ 2672.5: 2.5 · k ≈ 6681 -> 6600 + 100; 0.5 · k ≈ 1336 -> 1400.
    const struct {
        const char* zelle;
        const char* erwartet;
    } fälle[] = {
        {"ScaleHint: min=\"0.5\" max=\"2.5\"", "von 1:1400 bis 1:6700"},
        {"ScaleHint: min=\"0\" max=\"2.5\"", "von 1:1 bis 1:6700"},
        {"ScaleHint: min=\"-1\" max=\"0.0374\"", "von 1:1 bis 1:100"},
        {"ScaleHint: min=\"100.0\" max=\"5000.0\"", "von 1:100.0 bis 1:5000.0"},
        {"frei", "frei"},
        {"5000-50000", "5000-50000"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.zelle);
        EXPECT_EQ(MaßstabUmrechnen(f.zelle), f.erwartet);
    }
    Dienstkatalog katalog;
    katalog.ZelleSetzen(katalog.NeuerDienst("A"), "Maßstab", "ScaleHint: min=\"0\" max=\"1\"");
    katalog.ZelleSetzen(katalog.NeuerDienst("B"), "Maßstab", "frei");
    SkriptOberfläche ui({Antwort::Ja});
    EXPECT_TRUE(MaßstäbeUmrechnen(katalog, ui));
    ASSERT_EQ(ui.Ereignisse().size(), 1u);
    EXPECT_EQ(ui.Ereignisse()[0].titel, "Web-Service, 96 dpi");
    EXPECT_EQ(katalog.Zelle(0, "Maßstab"), "von 1:1 bis 1:2700");
    EXPECT_EQ(katalog.Zelle(1, "Maßstab"), "frei");
}

} // namespace
} // namespace flurix::karte
