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
#include "gemeinsam/nas_installation.hpp"
#include "nas/gdal_testbezirk.hpp"
#include "nas/nas_datenbank.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <gtest/gtest.h>

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
    EXPECT_EQ(namen.size(), 17U);
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
    bereich.interaktiv = false;
    Kataster kataster;
    NasLaufauftrag lauf;
    lauf.datei = datei;
    NasLaufbericht bericht;
    ASSERT_TRUE(NasLauf(bereich, lauf, [&](const auto& f) { return f(kataster); }, bericht));
    ASSERT_EQ(kataster.Zeilenzahl(), direkt.Zeilenzahl());
    ASSERT_EQ(kataster.Spaltenzahl(), direkt.Spaltenzahl());
    for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z)
        for (std::size_t s = 0; s < kataster.Spaltenzahl(); ++s)
            ASSERT_EQ(kataster.Zelle(z, s), direkt.Zelle(z, s)) << z << "/" << s;
    EXPECT_TRUE(bereich.HatAlkis());
}

TEST(NasLauf, UnbeaufsichtigterLaufOhneAusgabeSchreibtFehlerdatei) {
    Arbeit a;
    const fs::path datei = a.Kopie("muster.xml");
    {
        NasArbeitsbereich bereich(a.zustand, a.ui);
        bereich.interaktiv = false;
        NasLaufauftrag lauf;
        lauf.datei = datei;
        lauf.direktImport = false;
        lauf.ausgabe = NasAusgabe::Geograf;
        lauf.still = true;
        NasLaufbericht bericht;
        EXPECT_FALSE(NasLauf(bereich, lauf, [](const auto&) { return Ergebnis::Fehlschlag("keine Tabelle"); },
                             bericht));
    }
    ASSERT_FALSE(a.ui.Ereignisse().empty());
    const Ereignis& hinweis = a.ui.Ereignisse().back();
    EXPECT_EQ(hinweis.titel, "Info ALKIS Export - muster.xml");
    EXPECT_EQ(hinweis.text, "Der ALKIS Export wurde abgebrochen!   \nBitte prüfen Sie Ihre Daten!   \n"
                            "Dieses Fenster wird automatisch geschlossen!   ");
    const std::string fehler = Cp1252NachUtf8(DateiLesen(NasFehlerdatei(datei)));
    EXPECT_TRUE(fehler.starts_with(datei.string() + "\r\n")) << fehler;
    EXPECT_NE(fehler.find("GEOgraf-Export"), std::string::npos) << fehler;
    EXPECT_FALSE(fs::exists(NasAusgabedatei(datei, NasAusgabe::Geograf)));
    EXPECT_EQ(a.Arbeitsdatenbanken(), 0);
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
        EXPECT_FALSE(NasLauf(bereich, NasStapelauftrag(job), [](const auto&) { return Ergebnis::Ok(); }, bericht));
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
    EXPECT_NE(Cp1252NachUtf8(DateiLesen(NasFehlerdatei(datei))).find("GEOgraf-Export"), std::string::npos);
    EXPECT_EQ(fs::file_size(bezirk.xml), test::BezirkBytes) << "the input stays as it was";
    EXPECT_EQ(a.Arbeitsdatenbanken(), 0);
}

} // namespace
} // namespace flurix::nas
