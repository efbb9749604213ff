// The main window with the readers of the program and what leaves it: a WLDGE file loaded through
// the window (complete and quick), "Speichern unter", the HTML report and the register extract.

#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/cp1252.hpp"
#include "export/speichern_unter.hpp"
#include "gui/form_datenbank_darstellung.hpp"
#include "gui/kataster_modell.hpp"
#include "gui/qt_text.hpp"
#include "import/tabelle_laden.hpp"
#include "gui_testhilfen.hpp"
#include "report/registerauszug.hpp"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QRadioButton>
#include <QTableView>

#include <gtest/gtest.h>

#include <cstdio>
#include <optional>
#include <set>
#include <sstream>
#include <string>

namespace flurix::gui {
namespace {

using test::Beantworter;
using test::Dialoghelfer;

/// The sample district of the repository: six parcels, seven owner entries.
const std::filesystem::path Musterkreis =
    std::filesystem::path(FLURIX_QUELLEN) / "samples" / "musterkreis_format32.wldge";

/// The sample with its parcels repeated `kopien` times, the copies spread over Flur 1 to 3: a
/// district of many rows with the key blocks of the sample.
std::string MusterkreisVervielfacht(int kopien) {
    std::string vorn, flurstücke, hinten;
    std::istringstream muster(test::DateiLesen(Musterkreis));
    for (std::string zeile; std::getline(muster, zeile);) // CR stays at the line's end
        (zeile.starts_with('3') ? flurstücke : flurstücke.empty() ? vorn : hinten) += zeile + '\n';
    std::string text = vorn;
    for (int k = 0; k < kopien; ++k) {
        std::istringstream block(flurstücke);
        for (std::string zeile; std::getline(block, zeile);) {
            // The key's Flur (columns 9 to 11) and Zähler (13 to 17), unique per copy.
            char schlüssel[24];
            std::snprintf(schlüssel, sizeof schlüssel, "%03d-%05d", 1 + k % 3,
                          k * 10 + std::stoi(zeile.substr(12, 5)) % 10);
            text += zeile.replace(8, 9, schlüssel) + '\n';
        }
    }
    return text + hinten;
}

/// A main window that has loaded a copy of `quelle` (the load may convert line ends in place)
/// with the options dialog answered: the complete reader or the quick one, one row per owner, and
/// "Flurstückssuche vereinfachen" as `vereinfachen` says.
struct WldgeFenster : test::Hauptfenster {
    Ergebnis geladen;
    bool dialogGesehen = false;
    std::vector<test::Box> boxen; ///< what the load showed

    explicit WldgeFenster(bool komplett, bool vereinfachen = false,
                          const std::string& quelle = test::DateiLesen(Musterkreis)) {
        const std::filesystem::path kopie = ordner / "musterkreis.wldge";
        test::DateiSchreiben(kopie, quelle);
        // The load must start the grid locked: unlock it first, so that the lock is seen.
        Element<QAction>("btnEntsperren")->setChecked(true);
        // The boxes of the load get their default buttons (the notes on the file have OK only).
        Beantworter vorgabe;
        Dialoghelfer<FormDatenbankDarstellung> optionen([&](FormDatenbankDarstellung& dialog) {
            dialog.findChild<QAbstractButton*>(komplett ? QStringLiteral("chkAlbKomplett")
                                                        : QStringLiteral("chkAlbTeilweise"))
                ->setChecked(true);
            if (!komplett)
                dialog.findChild<QRadioButton*>(QStringLiteral("EigentümerJeFlurstück_0"))
                    ->setChecked(true);
            dialog.findChild<QAbstractButton*>(QStringLiteral("chkFlurixSuchbegriffGemarkung"))
                ->setChecked(vereinfachen);
            dialog.findChild<QAbstractButton*>(QStringLiteral("cmdOK"))->click();
        });
        import::Ladeauftrag auftrag;
        auftrag.dateien = {kopie};
        auftrag.art = import::Eingabeart::Wldge;
        geladen = fenster.Laden(auftrag);
        dialogGesehen = optionen.gesehen;
        boxen = vorgabe.boxen;
    }
    template <typename T> T* Element(const char* name) {
        return fenster.findChild<T*>(QString::fromUtf8(name));
    }
};

using FensterAusgabe = ::testing::Test;

// --- the readers ---------------------------------------------------------------------------------

TEST_F(FensterAusgabe, WldgeKomplettÜberDasFensterLaden) {
    WldgeFenster t(true);
    ASSERT_TRUE(t.dialogGesehen);
    ASSERT_TRUE(t.geladen) << t.geladen.Meldung();
    EXPECT_EQ(t.fenster.Tabelle().Zeilenzahl(), 6U);
    // The model was reset around the reader: the grid shows the new rows.
    EXPECT_EQ(t.fenster.Modell().rowCount(), 6);
    EXPECT_FALSE(t.Element<QAction>("btnEntsperren")->isChecked());
    // The search boxes follow the new table.
    auto* spalten = t.Element<QComboBox>("FlurixSuchenInFeld");
    ASSERT_NE(spalten, nullptr);
    EXPECT_GE(spalten->findData(QStringLiteral("Flurstück")), 0);
    auto* gemarkung = t.Element<QComboBox>("FlurixSuchbegriffGemarkung");
    ASSERT_NE(gemarkung, nullptr);
    EXPECT_GT(gemarkung->count(), 1);
    EXPECT_TRUE(gemarkung->isEnabled());
    EXPECT_TRUE(t.fenster.Tabelle().SpaltenIndex("Gemarkung").has_value());
}

TEST_F(FensterAusgabe, WldgeSchnellEineZeileJeEigentümer) {
    WldgeFenster t(false);
    ASSERT_TRUE(t.dialogGesehen);
    ASSERT_TRUE(t.geladen) << t.geladen.Meldung();
    EXPECT_EQ(t.fenster.Tabelle().Zeilenzahl(), 7U);
    EXPECT_EQ(t.fenster.Modell().rowCount(), 7);
    EXPECT_FALSE(t.Element<QAction>("btnEntsperren")->isChecked());
}

// The complete reader fills the Gemarkung and Flur box whatever the size of the table, the quick
// reader when "Flurstückssuche vereinfachen" asks for it, from the columns: the limit of 5000 rows
// and the parcel keys of the option belong to loading a saved table only.
TEST_F(FensterAusgabe, LeserFüllenDieGemarkungsbox) {
    struct Fall {
        const char* name;
        bool komplett, vereinfachen;
        int kopien; ///< of the sample's parcels; 0 for the sample itself
        bool gefüllt;
    };
    const Fall fälle[] = {
        {"komplett, über 5000 Zeilen", true, false, 834, true},
        {"schnell, Flurstückssuche vereinfachen", false, true, 0, true},
        {"schnell, über 5000 Zeilen, vereinfachen", false, true, 1300, true},
        {"schnell, ohne vereinfachen", false, false, 0, false},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.name);
        WldgeFenster t(f.komplett, f.vereinfachen,
                       f.kopien > 0 ? MusterkreisVervielfacht(f.kopien)
                                    : test::DateiLesen(Musterkreis));
        ASSERT_TRUE(t.geladen) << t.geladen.Meldung();
        const Kataster& k = t.fenster.Tabelle();
        if (f.kopien > 0) {
            ASSERT_GT(k.Zeilenzahl(), import::GemFlurBoxGrenze);
        }
        std::set<QString> paare;
        for (std::size_t z = 0; f.gefüllt && z < k.Zeilenzahl(); ++z)
            paare.insert(QText(std::string(k.Zelle(z, "Gemarkung")) + ", " +
                               std::string(k.Zelle(z, "Flur"))));
        const auto* box = t.Element<QComboBox>("FlurixSuchbegriffGemarkung");
        std::set<QString> einträge;
        for (int i = 1; i < box->count(); ++i)
            einträge.insert(box->itemText(i));
        EXPECT_EQ(einträge, paare);
        EXPECT_EQ(box->count(), static_cast<int>(paare.size()) + 1);
        EXPECT_EQ(box->isEnabled(), f.gefüllt);
    }
}

// A Web-XML file chosen in the dialog asks first whether the table is to be replaced; a No leaves
// it as it is.
TEST_F(FensterAusgabe, WebXmlFragtObErsetztWird) {
    const std::string ersetzen = "Soll die vorhandene Datenbank überschrieben werden?   ";
    struct Fall {
        std::vector<QMessageBox::StandardButton> antworten;
        std::vector<std::string> fragen;
        bool geladen;
        std::size_t wldgeZeilen; ///< of the six rows of the complete load that stay
    };
    const Fall fälle[] = {
        {{QMessageBox::Yes}, {ersetzen}, true, 0},
        {{QMessageBox::No}, {ersetzen}, false, 6},
    };
    std::optional<std::size_t> xmlZeilen;
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.antworten.size());
        WldgeFenster t(true);
        ASSERT_EQ(t.fenster.Tabelle().Zeilenzahl(), 6U);
        const auto datei = t.ordner / "auszug.xml";
        std::filesystem::copy_file(std::filesystem::path(FLURIX_QUELLEN) / "samples" /
                                       "musterstadt_webxml_auszug.xml",
                                   datei);
        Beantworter antworten(f.antworten);
        Dialoghelfer<FormDatenbankDarstellung> optionen([](FormDatenbankDarstellung& dialog) {
            dialog.findChild<QAbstractButton*>(QStringLiteral("cmdOK"))->click();
        });
        import::Ladeauftrag auftrag;
        auftrag.dateien = {datei};
        auftrag.art = import::Eingabeart::WebXml;
        EXPECT_EQ(static_cast<bool>(t.fenster.Laden(auftrag)), f.geladen);
        std::vector<std::string> fragen;
        for (const test::Box& box : antworten.boxen)
            fragen.push_back(Utf8(box.text));
        ASSERT_EQ(fragen, f.fragen);
        EXPECT_EQ(antworten.boxen.front().titel, QStringLiteral("Flurix"));
        EXPECT_EQ(antworten.boxen.front().vorgabe, QMessageBox::Yes);
        const std::size_t zeilen = t.fenster.Tabelle().Zeilenzahl();
        if (!xmlZeilen)
            xmlZeilen = zeilen; // the first case replaces: the extract's rows alone
        ASSERT_GT(*xmlZeilen, 0U);
        EXPECT_EQ(zeilen, f.wldgeZeilen + (f.geladen ? *xmlZeilen : 0));
        EXPECT_EQ(t.fenster.Modell().rowCount(), static_cast<int>(zeilen));
    }
}

TEST_F(FensterAusgabe, ZweiterLadevorgangErsetztDieTabelle) {
    WldgeFenster t(true);
    ASSERT_TRUE(t.geladen);
    // The rows of the first load are gone, not doubled: the table was emptied through the model.
    Beantworter vorgabe;
    Dialoghelfer<FormDatenbankDarstellung> optionen([](FormDatenbankDarstellung& dialog) {
        dialog.findChild<QAbstractButton*>(QStringLiteral("chkAlbTeilweise"))->setChecked(true);
        dialog.findChild<QRadioButton*>(QStringLiteral("EigentümerJeFlurstück_0"))
            ->setChecked(true);
        dialog.findChild<QAbstractButton*>(QStringLiteral("cmdOK"))->click();
    });
    import::Ladeauftrag auftrag;
    auftrag.dateien = {t.ordner / "musterkreis.wldge"};
    ASSERT_TRUE(t.fenster.Laden(auftrag));
    EXPECT_EQ(t.fenster.Tabelle().Zeilenzahl(), 7U);
    EXPECT_EQ(t.fenster.Modell().rowCount(), 7);
}

// --- output --------------------------------------------------------------------------------------

TEST_F(FensterAusgabe, SpeichernUnterExcelTabSchreibtDieÜberschriften) {
    WldgeFenster t(true);
    ASSERT_TRUE(t.geladen);
    // The file is named from the save stem: a folder without dots keeps it predictable.
    const std::filesystem::path ziel = t.ordner / "ausgabe" / "tabelle.txt";
    std::filesystem::create_directories(ziel.parent_path());
    ASSERT_EQ(ausgabe::Speicherstamm(ziel.string()) + ".txt", ziel.string());
    Beantworter ja(QMessageBox::Yes);
    const Ergebnis ergebnis = t.fenster.SpeichernUnter(QStringLiteral("Excel-TAB (*.txt)"), ziel);
    ASSERT_TRUE(ergebnis) << ergebnis.Meldung();
    ASSERT_TRUE(std::filesystem::exists(ziel));
    const std::string inhalt = test::DateiLesen(ziel);
    const std::string kopf = inhalt.substr(0, inhalt.find_first_of("\r\n"));
    // The caption line: the visible columns' captions in the order shown, tab-separated.
    std::string erwartet;
    const KatasterModell& modell = t.fenster.Modell();
    for (int abschnitt = 0; abschnitt < modell.columnCount(); ++abschnitt) {
        const KatasterSpalte& spalte = t.fenster.Tabelle().Spalte(*modell.Spalte(abschnitt));
        if (spalte.kontrollkästchen)
            continue;
        if (!erwartet.empty())
            erwartet += '\t';
        erwartet += spalte.überschrift;
    }
    // The writer ends every line with separators; what comes before them are the captions.
    ASSERT_FALSE(erwartet.empty());
    EXPECT_EQ(kopf.substr(0, kopf.find_last_not_of('\t') + 1), Utf8NachCp1252(erwartet));
    // Six data lines follow the caption line.
    std::size_t zeilen = 0;
    for (char c : inhalt)
        zeilen += c == '\n' ? 1 : 0;
    EXPECT_EQ(zeilen, 7U) << inhalt;
}

// While an export reads the table, status panel 2 shows how far, a step for each of the six rows.
TEST_F(FensterAusgabe, ExportZeigtDenFortschrittDesAuslesens) {
    WldgeFenster t(true);
    ASSERT_TRUE(t.geladen);
    ausgabe::Speicherumgebung umgebung;
    umgebung.arbeitsverzeichnis = t.zustand.arbeitsverzeichnis;
    const std::pair<int, std::string_view> fälle[] = { // format (0: the HTML report), text
        {2, "% ausgelesen  "}, {5, "% ausgelesen  "}, {7, "% exportiert  "}, {0, "% ausgelesen  "}};
    for (const auto& [format, text] : fälle) {
        SCOPED_TRACE(format);
        SkriptOberfläche ui;
        const auto ziel = t.ordner / ("fortschritt" + std::to_string(format));
        ASSERT_TRUE(format > 0 ? ausgabe::ALBDatenSpeichernUnter(
                                     t.fenster.Tabelle(), static_cast<ausgabe::Speicherformat>(format),
                                     ziel, umgebung, ui)
                               : ausgabe::CreateGridReport(t.fenster.Tabelle(), ziel, ui));
        std::vector<std::string> schritte;
        for (const Ereignis& e : ui.Ereignisse())
            if (e.art == Ereignis::Art::Status && e.panel == 2 && e.text.ends_with(text))
                schritte.push_back(e.text.substr(0, e.text.size() - text.size()));
        EXPECT_EQ(schritte, (std::vector<std::string>{"16", "33", "50", "66", "83", "100"}));
    }
}

TEST_F(FensterAusgabe, UnbekannterFilterSpeichertNichts) {
    WldgeFenster t(true);
    ASSERT_TRUE(t.geladen);
    const std::filesystem::path ziel = t.ordner / "ausgabe.txt";
    EXPECT_FALSE(t.fenster.SpeichernUnter(QStringLiteral("PDF (*.pdf)"), ziel));
    EXPECT_FALSE(std::filesystem::exists(ziel));
}

TEST_F(FensterAusgabe, BerichtWirdGeschriebenUndGeöffnet) {
    WldgeFenster t(true);
    ASSERT_TRUE(t.geladen);
    const std::filesystem::path datei = t.ordner / "bericht" / "report.htm";
    ASSERT_TRUE(t.fenster.Bericht(datei));
    ASSERT_TRUE(std::filesystem::exists(datei));
    EXPECT_NE(test::DateiLesen(datei).find("<table"), std::string::npos);
    ASSERT_EQ(t.geöffnet.size(), 1U);
    EXPECT_EQ(t.geöffnet.front(), QUrl::fromLocalFile(QPfad(datei)));
}

TEST_F(FensterAusgabe, AuszugDerAktuellenZeileAlsPdfImArbeitsverzeichnis) {
    WldgeFenster t(true);
    ASSERT_TRUE(t.geladen);
    t.fenster.Grid()->setCurrentIndex(t.fenster.Modell().index(2, 1));
    const std::filesystem::path pdf = t.fenster.AuszugErstellen();
    ASSERT_FALSE(pdf.empty());
    EXPECT_EQ(pdf.parent_path(), t.ordner / "arbeit");
    EXPECT_EQ(pdf.filename().string(), report::AuszugDateiname(t.fenster.Tabelle(), 2));
    ASSERT_TRUE(std::filesystem::exists(pdf));
    EXPECT_EQ(test::DateiLesen(pdf).substr(0, 8), "%PDF-1.1");
    ASSERT_EQ(t.geöffnet.size(), 1U);
    EXPECT_EQ(t.geöffnet.front(), QUrl::fromLocalFile(QPfad(pdf)));
}

TEST_F(FensterAusgabe, AuszugOhneZeileMeldetUndSchreibtNichts) {
    test::Hauptfenster h;
    Beantworter ok;
    EXPECT_TRUE(h.fenster.AuszugErstellen().empty());
    ASSERT_EQ(ok.boxen.size(), 1U);
    EXPECT_TRUE(std::filesystem::is_empty(h.zustand.arbeitsverzeichnis));
    EXPECT_TRUE(h.geöffnet.empty());
}

} // namespace
} // namespace flurix::gui
