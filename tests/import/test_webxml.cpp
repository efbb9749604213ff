#include "import/webxml.hpp"

#include "gemeinsam/lesefixture.hpp"

#include <map>

namespace flurix::import {
namespace {

// An extract with one tag a line, from its sections; `bestände` is the inner text of <bestaende>.
std::string Auszug(std::string_view kennzeichen, std::string_view abschnitte, std::string_view bestände,
                   bool mitBeständen = true) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<auszug format=\"WebALB\" "
                       "aktualitaet=\"07\" kennzeichen=\"" + std::string(kennzeichen) + "\">\n";
    text += abschnitte;
    if (mitBeständen)
        text += "<bestaende>\n" + std::string(bestände) + "</bestaende>\n";
    return text + "</auszug>\n";
}

std::string Bestand(std::string_view nummer, std::string_view blatt, std::string_view eigentümer) {
    return "<bestand laufendeNummer=\"" + std::string(nummer) + "\" buchungsart=\"1\" f_anteil=\"1/2\" "
           "buchungsblattkennzeichen=\"" + std::string(blatt) + "\">\n<zusatz>Erben</zusatz>\n"
           "<amtsgericht id=\"0815\">Amtsgericht Muster</amtsgericht>\n"
           "<buchungsblattbezirk id=\"051234\">Muster</buchungsblattbezirk>\n" +
           std::string(eigentümer) + "</bestand>\n";
}

std::string Eigentümer(std::string_view nr, std::string_view name, std::string_view ort = "") {
    return "<eigentuemer nr=\"" + std::string(nr) + "\" anteil=\"1/2\">\n<namenszeile nr=\"1\">" +
           std::string(name) + "</namenszeile>\n<namenszeile nr=\"4\">" + std::string(ort) +
           "</namenszeile>\n</eigentuemer>\n";
}

constexpr std::string_view Kennzeichen42 = "05123400100042000100";

class WebXmlTest : public test::Lesefixture {
protected:
    Ergebnis Lesen(const std::vector<std::string>& texte, bool anfügen = false) {
        std::vector<std::filesystem::path> dateien;
        for (std::size_t i = 0; i < texte.size(); ++i)
            dateien.push_back(Schreiben("auszug" + std::to_string(i) + ".xml", texte[i]));
        return WebXmlLesen(dateien, optionen, anfügen, kataster, ui, &bericht);
    }
    WebXmlBericht bericht;
};

TEST_F(WebXmlTest, ZweiBeständeMitJeZweiEigentümernGebenVierZeilen) {
    const std::string bestände =
        Bestand("0001", "000123", Eigentümer("0001", "Muster, Erika, , Dr.", "12345   Musterstadt") +
                                      Eigentümer("0002", "Muster, Max")) +
        Bestand("0002", "000456", Eigentümer("0001", "Gemeinde") + Eigentümer("0002", "Stadtwerke &amp; Co"));
    ASSERT_TRUE(Lesen({Auszug(Kennzeichen42, "", bestände)}));
    // Sorted by Eigentümerposition within the parcel, stable otherwise; the "0001" rows are selected.
    EXPECT_EQ(Zeilen({"Eigentümerposition", "Name", "Grundbuchblatt", "BVNR", "Ort"}),
              (std::vector<std::string>{"0001|Dr. Muster, Erika|000123|0001|12345 Musterstadt", "0001|Gemeinde|000456|0002|",
                                        "0002|Muster, Max|000123|0001|", "0002|Stadtwerke & Co|000456|0002|"}));
    const std::pair<const char*, const char*> jedeZeile[] = {
        {"Anteilsverhältnis", "Anteil 1/2"}, {"Eigentümerzusatz", "Erben"}, {"Amtsgericht", "Amtsgericht Muster"},
        {"Amtsgerichtsschlüssel", "0815"}, {"Grundbuchbezirk", "051234"}, {"F-Anteil", "1/2"}, {"Flurstück", "42/1"},
        {"Flur", "001"}};
    for (std::size_t z = 0; z < 4; ++z) {
        for (const auto& [spalte, wert] : jedeZeile)
            EXPECT_EQ(Zelle(z, spalte), wert) << z << " " << spalte;
        EXPECT_EQ(kataster.Ausgewählt(z), z < 2) << z;
    }
    EXPECT_EQ(bericht.flurstücke, 2); // each "0001" row counts
    EXPECT_EQ(ui.LetzterStatus(4), "ALB-Zeilen: 4, Flurstücke: 2   ");
}

TEST_F(WebXmlTest, AbschnitteUndAttribute) {
    const std::string abschnitte =
        "<zustaendigeStelle>\n<amt id=\"0512\">Katasteramt Muster</amt>\n<strasse>Am Markt 1</strasse>\n"
        "<ort>12345 Muster</ort>\n</zustaendigeStelle>\n"
        "<verwaltungsangaben>\n<kreis id=\"05123\">Kreis Muster</kreis>\n"
        "<gemeindezugehoerigkeit id=\"05123000\">Gemeinde Muster</gemeindezugehoerigkeit>\n"
        "<gemarkung id=\"051234\">Musterflur</gemarkung>\n<finanzamt id=\"2301\">FA Muster</finanzamt>\n"
        "</verwaltungsangaben>\n<basisangaben>\n<entstehung>2001/1</entstehung>\n"
        "<fortfuehrung>2019/2</fortfuehrung>\n<liegenschaftskarte>Blatt 2</liegenschaftskarte>\n"
        "<amtlicheFlaeche einheit=\"m2\">512</amtlicheFlaeche>\n<gml:Point srsName=\"urn:EPSG:25833\">\n"
        "<gml:coordinates>450012.3,5700123.4</gml:coordinates>\n</gml:Point>\n</basisangaben>\n"
        "<lage>\n<unverschluesselt>Am Feldrain</unverschluesselt>\n"
        "<verschluesselt id=\"00100\">Musterweg 3</verschluesselt>\n</lage>\n"
        "<nutzungsarten>\n<abschnitt flaeche=\"412\" schluessel=\"12-345\">Wohnbaufläche</abschnitt>\n"
        "<abschnitt schluessel=\"21-110\" flaeche=\"100\">Ackerland</abschnitt>\n</nutzungsarten>\n"
        "<klassifizierung>\n<klasse schluessel=\"32-101\" flaeche=\"400\" schaetzung=\"L 4 V\" "
        "wertzahl=\"45/50\" emz=\"200\">Acker</klasse>\n<klasse schluessel=\"32-102\" flaeche=\"100\" "
        "schaetzung=\"\" wertzahl=\"-/-\" emz=\"\"></klasse>\n<klasse schluessel=\"32-103\" flaeche=\"50\" "
        "wertzahl=\"30/40\" emz=\"20\">Grünland</klasse>\n</klassifizierung>\n"
        "<ausfuehrendeStelle>\n<verfahren>12345 Flurbereinigung</verfahren>\n<verfZeile>seit 2018</verfZeile>\n"
        "</ausfuehrendeStelle>\n<hinweise>\n<hinweis schluessel=\"0815\">Baulast</hinweis>\n"
        "<hinweis schluessel=\"0816\">Denkmal</hinweis>\n</hinweise>\n<historie>\n"
        "<vorgaengerFlurstueckskennzeichen>05123400100041000000</vorgaengerFlurstueckskennzeichen>\n"
        "<nachfolgerFlurstueckskennzeichen>05123400100043000000</nachfolgerFlurstueckskennzeichen>\n"
        "</historie>\n";
    ASSERT_TRUE(Lesen({Auszug("051234001000420000__", abschnitte, Bestand("0001", "000123", Eigentümer("0001", "A")))}));
    ASSERT_EQ(kataster.Zeilenzahl(), 1u);
    const std::map<std::string, std::string> erwartet = {
        {"Auszug Format", "WebALB"}, {"Aktualitätsnummer", "07"}, {"Flurstückskennzeichen", "051234001000420000__"},
        {"Flur", "001"}, {"Flurstück", "42"}, {"Flurstück-Zähler", "42"}, {"Flurstück-Nenner", ""},
        {"Katasteramt", "Katasteramt Muster"}, {"Landkreis", "Kreis Muster"}, {"Gemeinde", "Gemeinde Muster"},
        {"Gemeindeschlüssel", "05123000"}, {"Gemarkung", "Musterflur"}, {"Gemarkungsschlüssel", "051234"},
        {"Finanzamt", "FA Muster"}, {"Finanzamtsschlüssel", "2301"}, {"Entstehung", "2001/1"},
        {"Fortführung", "2019/2"}, {"LiegenschKarte", "Blatt 2"}, {"Fläche", "000000512"},
        {"Rechtswert", "450012.3"}, {"Hochwert", "5700123.4"}, {"EPSG", "25833"},
        {"Lagebezeichnung", "Am Feldrain; Musterweg 3"}, {"Straßenschlüssel", "00100"},
        {"Nutzungsart", "12-345 0000412; 21-110 0000100"}, {"Nutzung_tatsächlich", "Wohnbaufläche; Ackerland"},
        {"NA_Klassifizierung", "12-345; 21-110"}, {"NA-Fläche", "0000412; 0000100"},
        {"Klassifizierung", "32-101 0000400; 32-102 0000100; 32-103 0000050"},
        {"Schlüssel_Klassifizierung", "32-101; 32-102; 32-103"}, {"Schätzung", "L 4 V;  ;  "},
        {"Angaben_Klassifizierung", "Acker;  ; Grünland"}, {"BZ", "45; 0; 30"}, {"AZ", "50; 0; 40"},
        {"EMZ", "200; 0; 20"}, {"BZ-AZ-Fläche", "400; 100; 50"}, {"AZ-Mittel", "45"}, {"EMZ-Summe", "220"},
        {"sonstigesBOV", "12345 Flurbereinigung, seit 2018"},
        {"Schlüssel_Bezeichnung_Hinweis_Flurstück", "0815; 0816"},
        {"Bezeichnung_Hinweis_Flurstück", "Baulast; Denkmal; Flurstück historisch?"},
        {"Flurstück-Vorgänger", "05123400100041000000"}, {"Flurstück-Nachfolger", "05123400100043000000"},
        {"checkdruck", ""}};
    for (const auto& [spalte, wert] : erwartet)
        EXPECT_EQ(Zelle(0, spalte), wert) << spalte;
    EXPECT_EQ(bericht.amtsanschrift, std::vector<std::string>{"Am Markt 1, 12345 Muster"});
}

TEST_F(WebXmlTest, KatasteramtAusAmtUndStelle) {
    const struct {
        std::string stelle;
        std::string katasteramt;
    } fälle[] = {
        {"<amt id=\"0512\">Katasteramt Muster</amt>\n<stelle>Außenstelle Nord</stelle>\n",
         "Katasteramt Muster Außenstelle Nord"},
        {"<amt id=\"0512\">Katasteramt Muster</amt>\n<stelle>Katasteramt Muster</stelle>\n",
         "Katasteramt Muster"},
        {"<stelle>Außenstelle Nord</stelle>\n", "Außenstelle Nord"},
    };
    for (const auto& f : fälle) {
        const std::string abschnitt = "<zustaendigeStelle>\n" + f.stelle + "</zustaendigeStelle>\n";
        ASSERT_TRUE(Lesen({Auszug("051234001000420000__", abschnitt, Bestand("0001", "000123", Eigentümer("0001", "A")))}));
        EXPECT_EQ(Zelle(0, "Katasteramt"), f.katasteramt) << f.stelle;
    }
}

TEST_F(WebXmlTest, AuszügeOhneEigentümerGebenEineZeile) {
    struct Fall {
        const char* name;
        std::string text;
        std::size_t zeilen;
    };
    const Fall fälle[] = {
        {"Bestand ohne Eigentümer", Auszug(Kennzeichen42, "", Bestand("0001", "000123", "")), 1},
        {"Bestände leer", Auszug(Kennzeichen42, "", ""), 1},
        {"ohne Bestände", Auszug(Kennzeichen42, "", "", false), 1},
        {"zwei Auszüge in einer Datei", Auszug(Kennzeichen42, "", "") + Auszug("05123400100043000000", "", ""), 2},
        {"kein Auszug", "<?xml version=\"1.0\"?>\n<fehler>kein Treffer</fehler>\n", 0},
        {"leer", "", 0},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        kataster.Leeren();
        ASSERT_TRUE(Lesen({f.text}));
        EXPECT_EQ(kataster.Zeilenzahl(), f.zeilen);
        for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z) {
            EXPECT_EQ(Zelle(z, "Name"), "");
            EXPECT_EQ(Zelle(z, "Eigentümerposition"), "");
        }
    }
}

TEST_F(WebXmlTest, MehrereDateienFragenUndAnfügen) {
    const std::string a = Auszug(Kennzeichen42, "", Bestand("0001", "000123", Eigentümer("0001", "A")));
    const std::string b = Auszug("05123400100043000000", "", Bestand("0001", "000456", Eigentümer("0001", "B")));
    ASSERT_TRUE(Lesen({a, b}));
    EXPECT_EQ(kataster.Zeilenzahl(), 2u);
    EXPECT_EQ(ui.Fragen(), std::vector<std::string>{"Es werden 2 ausgewählte XML-Dateien eingelesen! Weiter?   "});
    EXPECT_EQ(ui.Ereignisse().front().titel, "Flurix - XML-Import");

    struct Fall {
        bool anfügen;
        Antwort antwort;
        std::string frage;
        std::size_t zeilen;
        bool ok;
    };
    const Fall fälle[] = {
        {true, Antwort::Ja, "Sollen die Daten an die vorhandene Datenbank angefügt werden?   ", 3, true},
        {true, Antwort::Nein, "Sollen die Daten an die vorhandene Datenbank angefügt werden?   ", 2, false},
        {false, Antwort::Ja, "Soll die vorhandene Datenbank überschrieben werden?   ", 1, true},
        {false, Antwort::Nein, "Soll die vorhandene Datenbank überschrieben werden?   ", 2, false},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.frage + (f.antwort == Antwort::Ja ? "Ja" : "Nein"));
        kataster.Leeren();
        ui.Antworten({Antwort::Ja});
        ASSERT_TRUE(Lesen({a, b}));
        ui.Antworten({f.antwort});
        EXPECT_EQ(static_cast<bool>(Lesen({a}, f.anfügen)), f.ok);
        EXPECT_EQ(ui.Fragen().back(), f.frage);
        EXPECT_EQ(kataster.Zeilenzahl(), f.zeilen);
    }
    ui.Antworten({Antwort::Nein});
    EXPECT_EQ(Lesen({a, b}).status(), Ergebnis::Status::Abgebrochen);
}

TEST_F(WebXmlTest, KaputteEingabenStürzenNichtAb) {
    const std::string ganz = Auszug(Kennzeichen42, "<lage>\n<unverschluesselt>Am Feldrain</unverschluesselt>\n</lage>\n",
                                    Bestand("0001", "000123", Eigentümer("0001", "Muster, Max", "Ort")));
    // Every cut of the file: never more than its one row, never a crash.
    for (std::size_t länge = 0; länge <= ganz.size(); ++länge) {
        kataster.Leeren();
        EXPECT_EQ(WebXmlTextLesen(std::string_view(ganz).substr(0, länge), optionen, kataster) > 1, false) << länge;
    }
    struct Fall {
        const char* name;
        std::string text;
        std::string name_;
        std::string lage;
    };
    const Fall fälle[] = {
        {"Tag über zwei Zeilen", Auszug(Kennzeichen42, "<lage>\n<unverschluesselt\n>Am Feldrain</unverschluesselt>\n</lage>\n", ""), "", ""},
        {"fehlendes Attribut", Auszug("", "", Bestand("0001", "000123", "<eigentuemer>\n<namenszeile>X</namenszeile>\n</eigentuemer>\n")), "", ""},
        {"Windows-1252", Auszug(Kennzeichen42, "<lage>\n<unverschluesselt>Stra\xDF" "e</unverschluesselt>\n</lage>\n", ""), "", "Straße"},
        {"Anführungszeichen offen", "<auszug kennzeichen=\"05\">\n<lage>\n<verschluesselt id=\"001>M</verschluesselt>\n<unverschluesselt>x</unverschluesselt>\n", "", "x"},
        {"Entitäten", Auszug(Kennzeichen42, "<lage>\n<unverschluesselt>&lt;A&gt; &#228;&#x20AC; &foo;</unverschluesselt>\n</lage>\n", ""), "", "<A> ä€ &foo;"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        kataster.Leeren();
        EXPECT_EQ(WebXmlTextLesen(f.text, optionen, kataster), 1);
        EXPECT_EQ(Zelle(0, "Name"), f.name_);
        EXPECT_EQ(Zelle(0, "Lagebezeichnung"), f.lage);
    }
}

TEST_F(WebXmlTest, FehlendeDateiBeendetDasLesenHinterDenVorigen) {
    const auto datei = Schreiben("a.xml", Auszug(Kennzeichen42, "", Bestand("0001", "000123", Eigentümer("0001", "A"))));
    const auto fehlt = ordner / "fehlt.xml";
    EXPECT_FALSE(WebXmlLesen({datei, fehlt}, optionen, true, kataster, ui));
    EXPECT_EQ(ui.Meldungen().back(), "Die Datei \"" + fehlt.string() + "\" kann nicht gelesen werden!");
    EXPECT_EQ(kataster.Zeilenzahl(), 1u); // the file before it stays
}

} // namespace
} // namespace flurix::import
