// The main window with the readers of the program and what leaves it: a WLDGE file loaded through
// the window (complete and quick), "Speichern unter", the HTML report and the register extract.

#include "core/kataster.hpp"
#include "core/cp1252.hpp"
#include "export/speichern_unter.hpp"
#include "gui/form_datenbank_darstellung.hpp"
#include "gui/kataster_modell.hpp"
#include "gui/qt_text.hpp"
#include "gui_testhilfen.hpp"
#include "report/registerauszug.hpp"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QRadioButton>
#include <QTableView>

#include <gtest/gtest.h>

#include <string>

namespace flurix::gui {
namespace {

using test::Beantworter;
using test::Dialoghelfer;

/// The sample district of the repository: six parcels, seven owner entries.
const std::filesystem::path Musterkreis =
    std::filesystem::path(FLURIX_QUELLEN) / "samples" / "musterkreis_format32.wldge";

/// A main window that has loaded a copy of the sample (the load may convert line ends in place)
/// with the options dialog answered: the complete reader or the quick one, one row per owner.
struct WldgeFenster : test::Hauptfenster {
    Ergebnis geladen;
    bool dialogGesehen = false;
    std::vector<test::Box> boxen; ///< what the load showed

    explicit WldgeFenster(bool komplett) {
        const std::filesystem::path kopie = ordner / "musterkreis.wldge";
        std::filesystem::copy_file(Musterkreis, kopie);
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
    EXPECT_GT(t.Element<QComboBox>("FlurixSuchbegriffGemarkung")->count(), 1);
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

TEST_F(FensterAusgabe, AusgabeknöpfeStehenInDerWerkzeugleiste) {
    test::Hauptfenster h;
    for (const char* name : {"btnSpeichernUnter", "btnBericht", "btnPDFALB"})
        EXPECT_NE(h.fenster.findChild<QAction*>(QString::fromUtf8(name)), nullptr) << name;
}

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
    EXPECT_EQ(pdf.parent_path(), t.zustand.arbeitsverzeichnis);
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
