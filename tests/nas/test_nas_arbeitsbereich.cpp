// The work of the NAS window without the window: opening files and saved databases (a bad one
// leaves the open data set as it was), the protocol with and without its file, "Speichern unter",
// and the run of the window and of the batch lines.

#include "nas/nas_arbeitsbereich.hpp"
#include "nas/nas_lauf.hpp"
#include "nas/nas_speichern.hpp"

#include "core/cp1252.hpp"
#include "core/datenbank.hpp"
#include "core/kataster.hpp"
#include "core/kommandozeile.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/programm.hpp"
#include "core/text.hpp"
#include "export/grafbat_leser.hpp"
#include "gemeinsam/nas_installation.hpp"
#include "nas/gdal_testbezirk.hpp"
#include "gemeinsam/dxf_pruefung.hpp"
#include "nas/polygon.hpp"
#include "nas/nas_datenbank.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <sstream>
#include <regex>
#include <set>

namespace flurix::nas {
namespace {

namespace fs = std::filesystem;
using test::DateiLesen;
using test::DateiSchreiben;

const fs::path Muster = fs::path(FLURIX_QUELLEN) / "samples" / "musterstadt_nas.xml";

/// The scratch installation with its state and a scripted face.
struct Arbeit : test::NasInstallation {
    Programmzustand zustand{Installation{ordner / "inst"}};
    SkriptOberfläche ui;

    Arbeit() { zustand.arbeitsverzeichnis = ordner / "arbeit"; }
    fs::path Kopie(const std::string& name) const {
        if (name != "muster.xml")
            fs::copy_file(Muster, ordner / name);
        return ordner / name;
    }
    /// The window's run, unattended, straight into `kataster`.
    Ergebnis DirektLaufen(NasArbeitsbereich& bereich, const fs::path& datei, Kataster& kataster) {
        bereich.interaktiv = false;
        NasLaufauftrag lauf;
        lauf.datei = datei;
        NasLaufbericht bericht;
        return NasLauf(bereich, lauf, [&](const auto& f) { return f(kataster); }, bericht);
    }
    /// The unattended batch run: read, then the drawing beside the input; no table.
    Ergebnis AusgabeLaufen(NasArbeitsbereich& bereich, const fs::path& datei, NasAusgabe ausgabe) {
        bereich.interaktiv = false;
        NasLaufauftrag lauf;
        lauf.datei = datei;
        lauf.direktImport = false;
        lauf.ausgabe = ausgabe;
        lauf.still = true;
        NasLaufbericht bericht;
        return NasLauf(bereich, lauf, [](const auto&) { return Ergebnis::Fehlschlag("keine Tabelle"); }, bericht);
    }
    /// The work databases lying in the work folder.
    int Arbeitsdatenbanken() const {
        int anzahl = 0;
        for (const auto& d : fs::directory_iterator(zustand.arbeitsverzeichnis))
            anzahl += d.path().filename().string().starts_with("_tmpDAOdbFile");
        return anzahl;
    }
};

/// Protocol lines without their time.
std::vector<std::string> OhneUhrzeit(const std::vector<std::string>& zeilen) {
    static const std::regex uhrzeit("^[0-9]{2}:[0-9]{2}:[0-9]{2}, ");
    std::vector<std::string> ergebnis;
    for (const auto& z : zeilen)
        ergebnis.push_back(std::regex_replace(z, uhrzeit, ""));
    return ergebnis;
}

TEST(NasOptionen, JedesKästchenKommtAusDemEinstellungstextZurück) {
    // Each box goes into the settings text under its own name and comes back alone.
    std::set<std::string_view> namen;
    for (const auto& feld : NasOptionsfelder()) {
        SCOPED_TRACE(feld.name);
        EXPECT_TRUE(namen.insert(feld.name).second);
        NasOptionen o;
        o.*feld.feld = true;
        const NasOptionen zurück = NasOptionen::AusText(o.AlsText());
        for (const auto& anderes : NasOptionsfelder())
            EXPECT_EQ(zurück.*anderes.feld, anderes.name == feld.name) << anderes.name;
    }
    EXPECT_EQ(namen.size(), 18U);
}

TEST(NasArbeitsbereich, EineSchlechteDateiLässtDenGeöffnetenDatenbestand) {
    Arbeit a;
    NasArbeitsbereich bereich(a.zustand, a.ui);
    ASSERT_TRUE(bereich.Öffnen(a.Kopie("muster.xml")));
    const fs::path db = bereich.Datenbankpfad();
    const auto tabellen = bereich.Tabellen();
    const auto flurstücke = DAO_Zeilenzahl(bereich.Db(), "AX_Flurstueck");
    ASSERT_GT(flurstücke, 0);

    DateiSchreiben(a.ordner / "leer.xml", "");
    DateiSchreiben(a.ordner / "kein.xml", "<?xml version=\"1.0\"?>\n<auszug/>\n");
    DateiSchreiben(a.ordner / "fremd.sqlite", "kein SQLite");
    {
        Datenbank ohne(a.ordner / "ohne.sqlite");
        ohne.AusführenNativ("CREATE TABLE AX_Flurstueck(id)");
    }
    const struct {
        const char* datei;
        std::string meldung; ///< a part of the message shown
    } fälle[] = {
        {"leer.xml", "ERR: Knoten AX_Bestandsdatenauszug nicht vorhanden!"},
        {"kein.xml", "ERR: Knoten AX_Bestandsdatenauszug nicht vorhanden!"},
        {"ohne.sqlite", MeldungUngültigeNasDatenbank},
        {"fremd.sqlite", MeldungUngültigeNasDatenbank},
        {"fehlt.xml", "ist nicht vorhanden!"},
    };
    for (const auto& fall : fälle) {
        SCOPED_TRACE(fall.datei);
        a.ui.Neu({Antwort::Ja});
        EXPECT_FALSE(bereich.Öffnen(a.ordner / fall.datei));
        ASSERT_FALSE(a.ui.Fragen().empty());
        EXPECT_EQ(a.ui.Fragen().front(), "Soll die vorhandene NAS-Datenbank überschrieben werden?   ");
        ASSERT_FALSE(a.ui.Meldungen().empty());
        EXPECT_NE(a.ui.Meldungen().back().find(fall.meldung), std::string::npos) << a.ui.Meldungen().back();
        EXPECT_EQ(bereich.Datenbankpfad(), db);
        EXPECT_EQ(bereich.Tabellen(), tabellen);
        EXPECT_EQ(DAO_Zeilenzahl(bereich.Db(), "AX_Flurstueck"), flurstücke);
        EXPECT_EQ(a.Arbeitsdatenbanken(), 1);
    }

    // No to the question: nothing is read at all.
    a.ui.Neu({Antwort::Nein});
    EXPECT_EQ(bereich.Öffnen(a.ordner / "leer.xml").status(), Ergebnis::Status::Abgebrochen);
    EXPECT_TRUE(a.ui.Meldungen().empty());

    // A file cut off inside a feature is read up to it, and the person is told.
    const std::string text = DateiLesen(Muster);
    DateiSchreiben(a.ordner / "abgeschnitten.xml", text.substr(0, text.size() / 2));
    a.ui.Neu({Antwort::Ja});
    ASSERT_TRUE(bereich.Öffnen(a.ordner / "abgeschnitten.xml"));
    ASSERT_FALSE(a.ui.Meldungen().empty());
    EXPECT_NE(a.ui.Meldungen().back().find("Die Datei endet innerhalb eines Objekts"), std::string::npos);
    EXPECT_FALSE(fs::exists(db)) << "the replaced work database is removed";
    EXPECT_EQ(a.Arbeitsdatenbanken(), 1);
}

TEST(NasArbeitsbereich, OhneProtokolldateiIstDasFensterprotokollVollständig) {
    std::vector<std::string> mitDatei;
    for (const bool nichtSchreiben : {false, true}) {
        SCOPED_TRACE(nichtSchreiben);
        Arbeit a;
        const fs::path datei = a.Kopie("muster.xml");
        {
            NasArbeitsbereich bereich(a.zustand, a.ui);
            bereich.optionen.protokollNichtSchreiben = nichtSchreiben;
            Kataster kataster;
            NasLaufbericht bericht;
            NasLaufauftrag lauf;
            lauf.datei = datei;
            ASSERT_TRUE(NasLauf(bereich, lauf, [&](const auto& f) { return f(kataster); }, bericht));
            EXPECT_GT(kataster.Zeilenzahl(), 0U);
        }
        const auto fenster = OhneUhrzeit(a.ui.Texte(Ereignis::Art::Protokoll));
        EXPECT_EQ(fs::exists(NasProtokoll::DateiZu(datei)), !nichtSchreiben);
        EXPECT_EQ(a.Arbeitsdatenbanken(), 0) << "the work database goes with the work";
        if (!nichtSchreiben) {
            mitDatei = fenster;
            for (auto& zeile : mitDatei)
                if (const auto stelle = zeile.find(a.ordner.pfad().string()); stelle != std::string::npos)
                    zeile.replace(stelle, a.ordner.pfad().string().size(), "<ordner>");
            // Every line of the window is in the file, in the same order.
            std::string rest = Cp1252NachUtf8(DateiLesen(NasProtokoll::DateiZu(datei)));
            for (const auto& zeile : fenster) {
                const auto stelle = rest.find(zeile);
                ASSERT_NE(stelle, std::string::npos) << zeile;
                rest.erase(0, stelle + zeile.size());
            }
        } else {
            // The same lines, but for the folder and the line that tells where the protocol goes.
            auto gleich = fenster;
            for (auto& zeile : gleich) {
                if (const auto stelle = zeile.find(a.ordner.pfad().string()); stelle != std::string::npos)
                    zeile.replace(stelle, a.ordner.pfad().string().size(), "<ordner>");
                if (zeile == "Protokoll in Datei deaktiviert...")
                    zeile = "Protokoll in Datei aktiviert...";
            }
            EXPECT_EQ(gleich, mitDatei);
        }
    }
}

TEST(NasArbeitsbereich, SpeichernUnter) {
    Arbeit a;
    NasArbeitsbereich bereich(a.zustand, a.ui);
    NasSpeicherauftrag auftrag;
    auftrag.ziel = a.ordner / "leer.csv";
    auftrag.format = NasZiel::Csv;
    EXPECT_FALSE(ALKISspeichernUnter(bereich, auftrag, a.ui));
    EXPECT_EQ(a.ui.Meldungen(), std::vector<std::string>{"Keine Daten zum Speichern vorhanden! Abbruch!   "});
    EXPECT_FALSE(fs::exists(auftrag.ziel));

    ASSERT_TRUE(bereich.Öffnen(a.Kopie("muster.xml")));
    bereich.Db().AusführenNativ("CREATE TABLE T(a, \"b;c\", d)");
    bereich.Db().AusführenNativ("INSERT INTO T VALUES ('Müller', 'x;y', 1), ('zwei', NULL, 2.5), ('drei', '€', 3)");

    // The visible columns of the selected rows, ';' behind every field, Windows-1252, CR LF; the
    // delimiter inside a cell becomes a blank.
    auftrag.ziel = a.ordner / "t.csv";
    auftrag.tabelle = "T";
    auftrag.spalten = {"d", "a", "b;c"};
    auftrag.zeilen = {2, 0};
    a.ui.Neu();
    ASSERT_TRUE(ALKISspeichernUnter(bereich, auftrag, a.ui));
    EXPECT_EQ(DateiLesen(auftrag.ziel), Utf8NachCp1252("d;a;b c;\r\n1;Müller;x y;\r\n3;drei;€;\r\n"));
    EXPECT_EQ(a.ui.Fragen(), (std::vector<std::string>{"Es werden alle sichtbaren Datenspalten exportiert! Weiter?   ",
                                                       "Es werden 2 selektierte Datenzeilen ausgegeben! Weiter?   "}));
    EXPECT_EQ(a.ui.Meldungen(), std::vector<std::string>{"Datei " + (a.ordner / "t").string() + ".csv erzeugt   "});

    // An existing target: No keeps it as it was; Yes replaces it.
    auftrag.zeilen.clear();
    a.ui.Neu({Antwort::Nein});
    EXPECT_EQ(ALKISspeichernUnter(bereich, auftrag, a.ui).status(), Ergebnis::Status::Abgebrochen);
    EXPECT_EQ(a.ui.Fragen(), std::vector<std::string>{"Datei \"" + auftrag.ziel.string() + "\" ersetzen?   "});
    EXPECT_EQ(DateiLesen(auftrag.ziel).size(), Utf8NachCp1252("d;a;b c;\r\n1;Müller;x y;\r\n3;drei;€;\r\n").size());
    a.ui.Neu({Antwort::Ja});
    ASSERT_TRUE(ALKISspeichernUnter(bereich, auftrag, a.ui));
    EXPECT_EQ(Cp1252NachUtf8(DateiLesen(auftrag.ziel)), "d;a;b c;\r\n1;Müller;x y;\r\n2.5;zwei;;\r\n3;drei;€;\r\n");

    // The database copy opens again as a NAS database, with the same parcels.
    auftrag = NasSpeicherauftrag{};
    auftrag.ziel = a.ordner / "kopie.sqlite";
    ASSERT_TRUE(ALKISspeichernUnter(bereich, auftrag, a.ui));
    NasArbeitsbereich zweiter(a.zustand, a.ui);
    ASSERT_TRUE(zweiter.Öffnen(auftrag.ziel));
    EXPECT_EQ(DAO_Zeilenzahl(zweiter.Db(), "AX_Flurstueck"), DAO_Zeilenzahl(bereich.Db(), "AX_Flurstueck"));
    EXPECT_EQ(DAO_Zeilenzahl(zweiter.Db(), "T"), 3);
    for (const auto& d : fs::directory_iterator(a.ordner.pfad()))
        EXPECT_NE(d.path().extension(), ".tmp") << "no temporary file is left";
}

TEST(NasLauf, DirektImportGleichDemDirektenWeg) {
    Arbeit a;
    const fs::path datei = a.Kopie("muster.xml");
    Kataster direkt;
    {
        NasDirektAuftrag auftrag;
        auftrag.datei = datei;
        auftrag.datenbank = a.ordner / "direkt.sqlite";
        auftrag.konfigOrdner = a.zustand.installation.Konfig();
        auftrag.ansichtsdatei = a.zustand.installation.Spaltenansichten();
        NasDirektBericht bericht;
        ASSERT_TRUE(NasDirektImport(auftrag, direkt, a.ui, bericht));
    }
    NasArbeitsbereich bereich(a.zustand, a.ui);
    Kataster kataster;
    ASSERT_TRUE(a.DirektLaufen(bereich, datei, kataster));
    ASSERT_EQ(kataster.Zeilenzahl(), direkt.Zeilenzahl());
    ASSERT_EQ(kataster.Spaltenzahl(), direkt.Spaltenzahl());
    for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z)
        for (std::size_t s = 0; s < kataster.Spaltenzahl(); ++s)
            ASSERT_EQ(kataster.Zelle(z, s), direkt.Zelle(z, s)) << z << "/" << s;
    EXPECT_TRUE(bereich.HatAlkis());
}

TEST(NasLauf, UnbeaufsichtigterLaufMitVersperrtemZielSchreibtFehlerdatei) {
    Arbeit a;
    const fs::path datei = a.Kopie("muster.xml");
    // A folder where the drawing should go: the file can't take its place.
    fs::create_directory(NasAusgabedatei(datei, NasAusgabe::Geograf));
    {
        NasArbeitsbereich bereich(a.zustand, a.ui);
        EXPECT_FALSE(a.AusgabeLaufen(bereich, datei, NasAusgabe::Geograf));
    }
    ASSERT_FALSE(a.ui.Ereignisse().empty());
    const Ereignis& hinweis = a.ui.Ereignisse().back();
    EXPECT_EQ(hinweis.titel, "Info ALKIS Export - muster.xml");
    EXPECT_EQ(hinweis.text, "Der ALKIS Export wurde abgebrochen!   \nBitte prüfen Sie Ihre Daten!   \n"
                            "Dieses Fenster wird automatisch geschlossen!   ");
    const std::string fehler = Cp1252NachUtf8(DateiLesen(NasFehlerdatei(datei)));
    EXPECT_TRUE(fehler.starts_with(datei.string() + "\r\n")) << fehler;
    EXPECT_NE(fehler.find("kann nicht"), std::string::npos) << fehler;
    EXPECT_TRUE(fs::is_directory(NasAusgabedatei(datei, NasAusgabe::Geograf)));
    for (const auto& eintrag : fs::directory_iterator(a.ordner.pfad()))
        EXPECT_NE(eintrag.path().extension(), ".tmp") << "no half-written drawing is left";
    EXPECT_EQ(a.Arbeitsdatenbanken(), 0);
}

// GDAL's count of the district's features by class ("ax_flurstueck"), kept beside the data.
std::map<std::string, std::size_t, std::less<>> GdalZählung() {
    std::map<std::string, std::size_t, std::less<>> gdal;
    const std::string zählung =
        DateiLesen(test::GemeinsameTestdaten() / "postnas-rlp-gid60" / "gdal-3.6.2-layer-counts.csv");
    for (std::string_view zeile : Teilen(zählung, '\n'))
        if (const auto trenner = zeile.find(';'); trenner != std::string_view::npos)
            gdal[std::string(zeile.substr(0, trenner))] =
                std::strtoull(std::string(zeile.substr(trenner + 1)).c_str(), nullptr, 10);
    return gdal;
}

TEST(NasLauf, StapellaufAufDemTestbezirk) {
    const test::Bezirk bezirk = test::BezirkBereitstellen();
    if (!bezirk.fehlt.empty())
        GTEST_SKIP() << bezirk.fehlt;
    ASSERT_EQ(bezirk.fehler, "");
    Arbeit a;
    // A link in the scratch folder: the run writes its protocol and .err beside its input.
    const fs::path datei = a.ordner / "bezirk.xml";
    fs::create_symlink(fs::absolute(bezirk.xml), datei);
    {
        NasArbeitsbereich bereich(a.zustand, a.ui);
        bereich.interaktiv = false;
        Auftrag job;
        job.AuftragsDatei = datei.string();
        job.AusgabeGG = true;
        NasLaufbericht bericht;
        EXPECT_TRUE(NasLauf(bereich, NasStapelauftrag(job), [](const auto&) { return Ergebnis::Ok(); }, bericht));
        // Every feature of the file, counted by its member tag.
        const std::string text = DateiLesen(bezirk.xml);
        std::uint64_t mitglieder = 0;
        for (auto stelle = text.find("<gml:featureMember>"); stelle != std::string::npos;
             stelle = text.find("<gml:featureMember>", stelle + 1))
            ++mitglieder;
        EXPECT_EQ(bericht.direkt.stand.statistik.objekte, mitglieder);
        EXPECT_GT(DAO_Zeilenzahl(bereich.Db(), "AX_Flurstueck"), 1'000);
    }
    const std::string protokoll = Cp1252NachUtf8(DateiLesen(NasProtokoll::DateiZu(datei)));
    EXPECT_NE(protokoll.find("Export ALKIS/NAS nach Geograf..."), std::string::npos) << protokoll;
    EXPECT_FALSE(fs::exists(NasFehlerdatei(datei)));
    // The drawing against GDAL's own count of the district's features: a number text per
    // parcel, a point per boundary, building and other survey point.
    auto gdal = GdalZählung();
    std::map<std::string, std::size_t> gezählt;
    ausgabe::GrafbatLeser leser(a.ordner / "bezirk.out");
    while (const auto satz = leser.NächsterSatz())
        if (satz->art == ausgabe::GrafbatArt::Satz && !satz->unterSatz && satz->felder.size() > 1)
            ++gezählt[satz->kennung + " " + satz->felder[1]];
    EXPECT_TRUE(leser.Probleme().empty());
    const std::pair<std::string, std::string> paare[] = {{"TE 2.233", "ax_flurstueck"},
                                                         {"PK 52.1", "ax_grenzpunkt"},
                                                         {"PK 11.2", "ax_besonderergebaeudepunkt"},
                                                         {"PK 51.3", "ax_sonstigervermessungspunkt"}};
    for (const auto& [unser, ihr] : paare) {
        SCOPED_TRACE(unser);
        EXPECT_GT(gdal[ihr], 0U);
        EXPECT_EQ(gezählt[unser], gdal[ihr]);
    }
    EXPECT_EQ(fs::file_size(bezirk.xml), test::BezirkBytes) << "the input stays as it was";
    EXPECT_EQ(a.Arbeitsdatenbanken(), 0);
}

// The DXF of the district, judged from outside: ezdxf's strict reader and GDAL open it; per layer
// the entities agree with GDAL's count of the NAS features; every parcel polyline is closed and its
// area (ezdxf's points, the shoelace) agrees with the parcel's official area within the error
// limit 0.5·√F + 0.0003·F + 1 m² (the official area of an old parcel may come from an older
// survey than its coordinates, so a few lie outside: at most one in a hundred).
TEST(NasLauf, DxfDesTestbezirks) {
    const test::Bezirk bezirk = test::BezirkBereitstellen();
    if (!bezirk.fehlt.empty())
        GTEST_SKIP() << bezirk.fehlt;
    ASSERT_EQ(bezirk.fehler, "");
    if (!test::EzdxfDa())
        GTEST_SKIP() << "ezdxf fehlt: keine Prüfung der Zeichnung";
    Arbeit a;
    const fs::path datei = a.ordner / "bezirk.xml";
    fs::create_symlink(fs::absolute(bezirk.xml), datei);
    std::vector<std::array<std::string, 3>> umringe; // official area, exterior, interior
    std::size_t hausnummern = 0;
    {
        NasArbeitsbereich bereich(a.zustand, a.ui);
        bereich.optionen.dxfMitPunktbeschriftung = true;
        ASSERT_TRUE(a.AusgabeLaufen(bereich, datei, NasAusgabe::Dxf));
        Anweisung abfrage = bereich.Db().VorbereitenNativ(
            "SELECT amtlicheFlaeche, \"gml:exterior\", \"gml:interior\" FROM AX_Flurstueck ORDER BY rowid");
        while (abfrage.Schritt())
            umringe.push_back({std::string(abfrage.Text(0)), std::string(abfrage.Text(1)),
                               std::string(abfrage.Text(2))});
        Anweisung hnr = bereich.Db().VorbereitenNativ("SELECT count(*) FROM AP_PTO WHERE art = 'HNR'");
        ASSERT_TRUE(hnr.Schritt());
        hausnummern = static_cast<std::size_t>(hnr.Ganzzahl(0));
    }
    const fs::path dxf = NasAusgabedatei(datei, NasAusgabe::Dxf);
    EXPECT_FALSE(fs::exists(a.ordner / "bezirk_dxf.out")) << "the batch keeps no GEOgraf file";
    const fs::path strikt = test::StrikteKopie(dxf);
    const auto prüfung = test::Ausführen(test::DxfPrüfung(strikt));
    EXPECT_EQ(prüfung.status, 0) << prüfung.ausgabe.substr(0, 2000);
    if (test::ImSuchpfad("ogrinfo")) {
        const auto gdal = test::Ausführen("ogrinfo -ro -al -so " + test::Wort(dxf) + " 2>&1");
        EXPECT_EQ(gdal.status, 0) << gdal.ausgabe;
        EXPECT_NE(gdal.ausgabe.find("Feature Count: "), std::string::npos) << gdal.ausgabe;
    }
    const auto lauf = test::Ausführen("/usr/bin/python3 " + test::Wort(fs::path(FLURIX_QUELLEN) / "tests" /
                                                                  "werkzeuge" / "dxf_auswertung.py") +
                                      " " + test::Wort(strikt) + " FLURSTUECKE_POLYLINE 2>&1");
    ASSERT_EQ(lauf.status, 0) << lauf.ausgabe.substr(0, 2000);
    std::map<std::string, std::size_t, std::less<>> je;
    std::vector<std::pair<int, double>> polylinien;
    std::istringstream zeilen(lauf.ausgabe);
    for (std::string art; zeilen >> art;) {
        if (art == "L") {
            std::string layer, typ;
            std::size_t n = 0;
            zeilen >> layer >> typ >> n;
            je[layer + " " + typ] = n;
        } else if (art == "P") {
            int zu = 0;
            double fläche = 0;
            zeilen >> zu >> fläche;
            polylinien.emplace_back(zu, fläche);
        } else if (art == "NULL") {
            std::size_t n = 0;
            zeilen >> n;
            EXPECT_EQ(n, 0U) << "nothing at 0,0";
        }
    }
    auto gdal = GdalZählung();
    const std::pair<std::string, std::size_t> erwartet[] = {
        {"AMTLPKT_GRENZP INSERT", gdal["ax_grenzpunkt"]},
        {"AMTLTXT_GRENZP TEXT", gdal["ax_grenzpunkt"]},
        {"AMTLPKT_GEBAEUDE POINT", gdal["ax_besonderergebaeudepunkt"]},
        {"AMTLPKT_AUFNP INSERT", gdal["ax_sonstigervermessungspunkt"]},
        {"NICHTAMTL_GEBAEUDE TEXT", hausnummern}, // the house number labels (AP_PTO "HNR")
        {"AMTLTXT_FLURSTUECK TEXT", gdal["ax_flurstueck"] + je["AMTLTXT_FLURSTUECK LINE"]}};
    for (const auto& [schlüssel, anzahl] : erwartet) {
        SCOPED_TRACE(schlüssel);
        EXPECT_GT(anzahl, 0U);
        EXPECT_EQ(je[schlüssel], anzahl);
    }
    EXPECT_GE(je["GEBAEUDE_POLYLINE POLYLINE"], gdal["ax_gebaeude"]);
    // The parcels' polylines, a ring each in the order of the table: exterior rings, then holes.
    std::size_t p = 0, außerhalb = 0;
    for (const auto& [amtlich, außen, innen] : umringe) {
        const Polygonmenge polygon = PolygonAusTexten(außen, innen, "", StandardPfeilhöhe);
        double fläche = 0;
        for (std::size_t r = 0; r < polygon.außen.size() + polygon.innen.size(); ++r, ++p) {
            ASSERT_LT(p, polylinien.size());
            EXPECT_EQ(polylinien[p].first, 1) << "polyline " << p << " is closed";
            fläche += r < polygon.außen.size() ? polylinien[p].second : -polylinien[p].second;
        }
        const double f = std::strtod(amtlich.c_str(), nullptr);
        if (std::abs(fläche - f) > 0.5 * std::sqrt(f) + 0.0003 * f + 1)
            ++außerhalb;
    }
    EXPECT_EQ(p, polylinien.size());
    EXPECT_EQ(umringe.size(), gdal["ax_flurstueck"]);
    EXPECT_LE(außerhalb * 100, umringe.size()) << außerhalb << " parcels outside the error limit";
    std::printf("Testbezirk: %zu von %zu Flurstücken außerhalb der Fehlergrenze der amtlichen Fläche\n",
                außerhalb, umringe.size());
}

// The parcels of the states' WFS services (collections without an extract element and without
// owners) compile into rows; their keys, areas and Gemeinde keys agree with GDAL's reading.
TEST(NasLauf, WfsSammlungenWieGdal) {
    const fs::path quellen[] = {
        test::GemeinsameTestdaten() / "state-wfs-nas" / "BB_NAS-konform_10flst.xml",
        test::GemeinsameTestdaten() / "state-wfs-nas" / "BB_AAA-basiert_10flst.xml",
        test::GemeinsameTestdaten() / "state-wfs-nas" / "HE_NAS-konform_10flst.xml",
        test::GemeinsameTestdaten() / "state-wfs-nas" / "NW_NAS-konform_10flst.xml",
        test::GemeinsameTestdaten() / "nrw-wfs-nas" / "NW_flurstueck_DENW21AL100077H6.gml"};
    if (!fs::exists(quellen[0]))
        GTEST_SKIP() << "WFS-Beispiele fehlen (" << quellen[0] << ")";
    const bool mitGdal = test::ImSuchpfad("ogrinfo");
    for (const fs::path& quelle : quellen) {
        SCOPED_TRACE(quelle.filename().string());
        Arbeit a;
        const fs::path datei = a.ordner.pfad() / quelle.filename();
        fs::copy_file(quelle, datei);
        NasArbeitsbereich bereich(a.zustand, a.ui);
        Kataster kataster;
        ASSERT_TRUE(a.DirektLaufen(bereich, datei, kataster));
        EXPECT_TRUE(std::any_of(a.ui.Ereignisse().begin(), a.ui.Ereignisse().end(), [](const Ereignis& e) {
            return e.art == Ereignis::Art::Protokoll && e.text.find("WFS-Sammlung (GID 6.0) erkannt") != std::string::npos;
        }));
        // Ours: key → area and Gemeinde key (Kreis and Gemeinde, as GDAL reads them as numbers).
        std::map<std::string, std::string> unsere;
        for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z) {
            const std::string schlüssel(kataster.Zelle(z, "Gemeindeschlüssel"));
            ASSERT_EQ(schlüssel.size(), 8U) << schlüssel;
            unsere[std::string(kataster.Zelle(z, "Flurstückskennzeichen"))] =
                std::to_string(std::atoll(std::string(kataster.Zelle(z, "Fläche")).c_str())) + " " +
                std::to_string(std::atoi(schlüssel.substr(3, 2).c_str())) + " " +
                std::to_string(std::atoi(schlüssel.substr(5).c_str()));
        }
        EXPECT_FALSE(unsere.empty());
        EXPECT_EQ(kataster.Zeilenzahl(), unsere.size()) << "one row per parcel: no owners";
        if (!mitGdal)
            continue;
        const auto gdal = test::GdalAuf(a.ordner.pfad(), datei, "ogrinfo -ro -al -q");
        ASSERT_EQ(gdal.status, 0) << gdal.ausgabe;
        std::map<std::string, std::string> ihre;
        std::string kennzeichen, fläche, kreis;
        std::istringstream zeilen(gdal.ausgabe);
        const auto wert = [](const std::string& zeile) { return zeile.substr(zeile.find(" = ") + 3); };
        for (std::string zeile; std::getline(zeilen, zeile);) {
            if (zeile.find("flurstueckskennzeichen (String) = ") != std::string::npos) {
                kennzeichen = wert(zeile);
                std::replace(kennzeichen.begin(), kennzeichen.end(), '_', '0');
            } else if (zeile.find("amtlicheFlaeche (") != std::string::npos) {
                fläche = std::to_string(std::atoll(wert(zeile).c_str()));
            } else if (zeile.find("kreis (Integer) = ") != std::string::npos) {
                kreis = wert(zeile);
            } else if (zeile.find("gemeinde (Integer) = ") != std::string::npos && !kennzeichen.empty()) {
                ihre[kennzeichen] = fläche + " " + kreis + " " + wert(zeile);
                kennzeichen.clear();
            }
        }
        EXPECT_EQ(unsere, ihre);
    }
}

// One invented district with its soil assessment, written once in GeoInfoDok 6.0 and once in 7.1
// (namespace gid/7.1, the soil assessment's renamed and split elements): both compile to the same
// table, cell for cell, and the assessment reaches the table.
TEST(NasLauf, Gid71ErgibtDieselbeTabelleWie60) {
    if (!test::ImSuchpfad("python3"))
        GTEST_SKIP() << "python3 fehlt: der Erzeuger kann nicht laufen.";
    Arbeit a;
    std::vector<Kataster> tabellen;
    std::vector<std::vector<std::string>> protokolle;
    for (const std::string gid : {"6.0", "7.1"}) {
        SCOPED_TRACE(gid);
        const fs::path datei = a.ordner.pfad() / ("muster_" + gid + ".xml");
        const fs::path erzeuger = fs::path(FLURIX_QUELLEN) / "samples" / "nas_muster_erzeugen.py";
        const auto lauf = test::Ausführen("python3 " + test::Wort(erzeuger) + " --bodenschaetzung --gid " + gid +
                                          " --out " + test::Wort(datei) + " 2>&1");
        ASSERT_EQ(lauf.status, 0) << lauf.ausgabe;
        SkriptOberfläche ui;
        NasArbeitsbereich bereich(a.zustand, ui);
        bereich.optionen.mitNaBerechnung = true;
        ASSERT_TRUE(a.DirektLaufen(bereich, datei, tabellen.emplace_back()));
        auto& protokoll = protokolle.emplace_back();
        for (const Ereignis& e : ui.Ereignisse())
            if (e.art == Ereignis::Art::Protokoll)
                protokoll.push_back(e.text);
    }
    const auto erkannt = [](const std::vector<std::string>& zeilen) {
        return std::any_of(zeilen.begin(), zeilen.end(), [](const std::string& z) {
            return z.find("NAS-Bestandsdatenauszug (GID 7.1) erkannt") != std::string::npos;
        });
    };
    EXPECT_FALSE(erkannt(protokolle[0]));
    EXPECT_TRUE(erkannt(protokolle[1]));
    const Kataster &alt = tabellen[0], &neu = tabellen[1];
    ASSERT_EQ(alt.Spaltenzahl(), neu.Spaltenzahl());
    ASSERT_EQ(alt.Zeilenzahl(), neu.Zeilenzahl());
    ASSERT_GT(alt.Zeilenzahl(), 24U);
    for (std::size_t s = 0; s < alt.Spaltenzahl(); ++s) {
        ASSERT_EQ(alt.Spalte(s).schlüssel, neu.Spalte(s).schlüssel);
        for (std::size_t z = 0; z < alt.Zeilenzahl(); ++z)
            EXPECT_EQ(alt.Zelle(z, s), neu.Zelle(z, s)) << alt.Spalte(s).schlüssel << ", Zeile " << z;
    }
    const auto klassifizierung = alt.SpaltenIndex("Klassifizierung");
    ASSERT_TRUE(klassifizierung);
    std::size_t bewertet = 0;
    for (std::size_t z = 0; z < alt.Zeilenzahl(); ++z)
        bewertet += !alt.Zelle(z, *klassifizierung).empty();
    EXPECT_GT(bewertet, 0U) << "the soil assessment reaches the table";
}

// A collection of buildings only, one of them without gml:id: both are read, the protocol counts
// the one no reference can reach, and the compilation says there are no parcels.
TEST(NasLauf, WfsSammlungNurGebäude) {
    Arbeit a;
    const fs::path datei = a.ordner.pfad() / "gebaeude.xml";
    DateiSchreiben(datei, R"(<?xml version="1.0" encoding="utf-8"?>
<wfs:FeatureCollection xmlns="http://www.adv-online.de/namespaces/adv/gid/7.1" xmlns:gml="http://www.opengis.net/gml/3.2" xmlns:wfs="http://www.opengis.net/wfs/2.0">
<wfs:boundedBy><gml:Envelope srsName="urn:ogc:def:crs:EPSG::25832"><gml:lowerCorner>350000 5600000</gml:lowerCorner></gml:Envelope></wfs:boundedBy>
<wfs:member><AX_Gebaeude gml:id="DENW000000000001"><gebaeudefunktion>2000</gebaeudefunktion></AX_Gebaeude></wfs:member>
<wfs:member><AX_Gebaeude><gebaeudefunktion>2000</gebaeudefunktion></AX_Gebaeude></wfs:member>
</wfs:FeatureCollection>
)");
    NasArbeitsbereich bereich(a.zustand, a.ui);
    Kataster kataster;
    EXPECT_FALSE(a.DirektLaufen(bereich, datei, kataster));
    EXPECT_EQ(kataster.Zeilenzahl(), 0U);
    std::vector<std::string> protokoll, meldungen;
    for (const Ereignis& e : a.ui.Ereignisse())
        (e.art == Ereignis::Art::Protokoll ? protokoll : meldungen).push_back(e.text);
    const auto enthält = [](const std::vector<std::string>& zeilen, std::string_view text) {
        return std::any_of(zeilen.begin(), zeilen.end(),
                           [&](const std::string& z) { return z.find(text) != std::string::npos; });
    };
    EXPECT_TRUE(enthält(protokoll, "WFS-Sammlung (GID 7.1) erkannt"));
    EXPECT_TRUE(enthält(protokoll, "1 Objekte ohne gml:id gelesen"));
    EXPECT_TRUE(enthält(meldungen, "Keine Daten vorhanden!"));
    EXPECT_EQ(DAO_Zeilenzahl(bereich.Db(), "AX_Gebaeude"), 2);
}

} // namespace
} // namespace flurix::nas
