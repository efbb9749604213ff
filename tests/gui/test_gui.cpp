// The desktop program without a screen (QT_QPA_PLATFORM=offscreen): the main window's caption and
// status bar, the Qt UI port, the open dialog's filters, the import options dialog, and the start
// of what the command line asked for.

#include "core/oberflaeche_skript.hpp"
#include "core/kataster.hpp"
#include "core/programm.hpp"
#include "gui/dateifilter.hpp"
#include "gui/form_datenbank.hpp"
#include "gui/form_datenbank_darstellung.hpp"
#include "gui/form_optionen_system.hpp"
#include "gui/qt_oberflaeche.hpp"
#include "gui/qt_text.hpp"
#include "gui_testhilfen.hpp"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QMouseEvent>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace flurix::gui {
namespace {

using test::Beantworter;
using test::Box;
using test::Hauptfenster;
using test::Panel;
using test::TempOrdner;
using test::Warten;

using GuiTest = ::testing::Test;

TEST_F(GuiTest, HilfeÖffnetDasLiesmichImBrowserUndInfoNenntRevisionUndLizenzen) {
    Hauptfenster h;
    {
        Beantworter ok;
        EXPECT_TRUE(h.fenster.Hilfe().empty());
        ASSERT_EQ(ok.boxen.size(), 1U) << "no README.md: the user is told";
        EXPECT_TRUE(ok.boxen[0].text.contains(QStringLiteral("README.md")));
        EXPECT_TRUE(h.geöffnet.empty());
    }
    test::DateiSchreiben(h.ordner / "README.md", "# Flurix\n\nDie **Suche** füllt auf.\n");
    h.fenster.findChild<QAction*>(QStringLiteral("btnHilfe"))->trigger();
    ASSERT_EQ(h.geöffnet.size(), 1U);
    const std::filesystem::path seite = PfadAus(h.geöffnet[0].toLocalFile());
    EXPECT_EQ(seite.extension(), ".html") << "a page for the browser, not the Markdown";
    const std::string html = test::DateiLesen(seite);
    EXPECT_NE(html.find("Suche"), std::string::npos);
    EXPECT_NE(html.find("füllt"), std::string::npos) << "UTF-8 kept";
    EXPECT_EQ(html.find("**"), std::string::npos) << "the Markdown is rendered";

    Beantworter ok;
    h.fenster.findChild<QAction*>(QStringLiteral("btnInfo"))->trigger();
    ASSERT_EQ(ok.boxen.size(), 1U);
    const QString info = ok.boxen[0].text;
    EXPECT_TRUE(info.contains(h.fenster.windowTitle()));
    // The revision the sources had when they were built: a commit of their repository.
    const QRegularExpressionMatch revision =
        QRegularExpression(QStringLiteral("Git-Revision: ([^\\s-]+)")).match(info);
    ASSERT_TRUE(revision.hasMatch()) << Utf8(info);
    const std::string git = "git -C " + test::Wort(FLURIX_QUELLEN) + " ";
    if (test::Ausführen(git + "rev-parse 2>/dev/null").status == 0) {
        EXPECT_EQ(test::Ausführen(git + "cat-file -e " + Utf8(revision.captured(1)) + "^{commit}")
                      .status,
                  0)
            << Utf8(info);
    }
    for (const char* bibliothekUndLizenz :
         {"Qt .*: LGPL-3.0", "SQLite .*: .*public domain", "pugixml .*: MIT",
          "libzip .*: BSD-3-Clause", "libxlsxwriter .*: BSD-2-Clause"})
        EXPECT_TRUE(info.contains(QRegularExpression(QString::fromUtf8(bibliothekUndLizenz))))
            << bibliothekUndLizenz;
}

TEST_F(GuiTest, StatusSchreibtNurDasGenanntePanelAlsUtf8) {
    Hauptfenster h;
    h.ui.Status(3, "12 Mbyte UNIX-Prüfung  ");
    h.ui.Status(6, "Flurstück 5");
    h.ui.Status(0, "daneben");
    h.ui.Status(7, "daneben");
    EXPECT_EQ(Panel(h.fenster, 1), QStringLiteral("Status  "));
    EXPECT_EQ(Panel(h.fenster, 2), QString());
    EXPECT_EQ(Panel(h.fenster, 3), QStringLiteral("12 Mbyte UNIX-Prüfung  "));
    EXPECT_EQ(Panel(h.fenster, 4), QString());
    EXPECT_EQ(Panel(h.fenster, 5), QString());
    EXPECT_EQ(Panel(h.fenster, 6), QStringLiteral("Flurstück 5"));
    // A text wider than its panel can be read whole in the tooltip.
    EXPECT_EQ(h.fenster.StatusPanel(3)->toolTip(), QStringLiteral("12 Mbyte UNIX-Prüfung  "));
}

TEST_F(GuiTest, FortschrittZeigtBalkenUndVerbirgtIhnAmEnde) {
    Hauptfenster h;
    h.fenster.show();
    auto* balken = h.fenster.findChild<QProgressBar*>(QStringLiteral("Fortschritt"));
    ASSERT_NE(balken, nullptr);
    EXPECT_FALSE(balken->isVisible());
    // Counts beyond the range of int, as for a file of several gigabytes.
    h.ui.Fortschritt(3'000'000'000LL, 12'000'000'000LL);
    EXPECT_TRUE(balken->isVisible());
    EXPECT_EQ(balken->value() * 4, balken->maximum());
    h.ui.Fortschritt(12'000'000'000LL, 12'000'000'000LL);
    EXPECT_FALSE(balken->isVisible());
    h.ui.Fortschritt(1, 2);
    h.ui.Fortschritt(0, 0);
    EXPECT_FALSE(balken->isVisible());
}

TEST_F(GuiTest, FrageZeigtKnöpfeUndVorgabeUndGibtDieVorgabeZurück) {
    struct Fall {
        Knöpfe knöpfe;
        Antwort vorgabe;
        QMessageBox::StandardButtons erwartet;
        QStringList beschriftungen;
    };
    const QMessageBox::StandardButtons jaNein = QMessageBox::Yes | QMessageBox::No;
    const QStringList jaNeinText = {QStringLiteral("Ja"), QStringLiteral("Nein")};
    const QStringList alleText = jaNeinText + QStringList{QStringLiteral("Abbrechen")};
    const QStringList okText = {QStringLiteral("Abbrechen"), QStringLiteral("OK")};
    const std::vector<Fall> fälle = {
        {Knöpfe::JaNein, Antwort::Ja, jaNein, jaNeinText},
        {Knöpfe::JaNein, Antwort::Nein, jaNein, jaNeinText},
        {Knöpfe::JaNeinAbbrechen, Antwort::Abbrechen, jaNein | QMessageBox::Cancel, alleText},
        {Knöpfe::JaNeinAbbrechen, Antwort::Nein, jaNein | QMessageBox::Cancel, alleText},
        {Knöpfe::OkAbbrechen, Antwort::Ok, QMessageBox::Ok | QMessageBox::Cancel, okText},
        {Knöpfe::OkAbbrechen, Antwort::Abbrechen, QMessageBox::Ok | QMessageBox::Cancel, okText},
    };
    QtOberfläche ui;
    for (const Fall& fall : fälle) {
        Beantworter beantworter;
        const Fragestellung frage{"Soll die vorhandene Datenbank überschrieben werden?   ",
                                  "Flurix", fall.knöpfe, fall.vorgabe, Antwort::Ja};
        EXPECT_EQ(ui.Frage(frage), fall.vorgabe);
        ASSERT_EQ(beantworter.boxen.size(), 1U);
        const Box& box = beantworter.boxen.front();
        EXPECT_EQ(box.knöpfe, fall.erwartet);
        EXPECT_EQ(box.beschriftungen, fall.beschriftungen);
        EXPECT_EQ(box.titel, QStringLiteral("Flurix"));
        EXPECT_EQ(box.text,
                  QStringLiteral("Soll die vorhandene Datenbank überschrieben werden?   "));
        EXPECT_EQ(box.symbol, QMessageBox::Question);
    }
}

TEST_F(GuiTest, FrageGibtDenGeklicktenKnopfZurückNichtDieVorgabe) {
    QtOberfläche ui;
    {
        Beantworter nein(QMessageBox::No);
        EXPECT_EQ(ui.Frage({"Weiter?", "Flurix", Knöpfe::JaNein, Antwort::Ja, Antwort::Ja}),
                  Antwort::Nein);
    }
    {
        Beantworter abbrechen(QMessageBox::Cancel);
        EXPECT_EQ(
            ui.Frage({"Weiter?", "Flurix", Knöpfe::JaNeinAbbrechen, Antwort::Ja, Antwort::Ja}),
            Antwort::Abbrechen);
    }
}

TEST_F(GuiTest, MeldungZeigtSymbolNachStilUndTitelWieGegeben) {
    const std::vector<std::pair<Stil, QMessageBox::Icon>> fälle = {
        {Stil::Information, QMessageBox::Information},
        {Stil::Warnung, QMessageBox::Warning},
        {Stil::Fehler, QMessageBox::Critical},
        {Stil::Frage, QMessageBox::Question},
    };
    QtOberfläche ui;
    for (const auto& [stil, symbol] : fälle) {
        Beantworter beantworter;
        ui.Meldung("Das Dezimaltrennzeichen wurde von 'Komma' nach 'Punkt' geändert!   ",
                   TitelDezimaltrennzeichen, stil);
        ASSERT_EQ(beantworter.boxen.size(), 1U);
        const Box& box = beantworter.boxen.front();
        EXPECT_EQ(box.symbol, symbol);
        EXPECT_EQ(box.titel, QStringLiteral("Ländereinstellung - Dezimaltrennzeichen"));
        EXPECT_EQ(
            box.text,
            QStringLiteral("Das Dezimaltrennzeichen wurde von 'Komma' nach 'Punkt' geändert!   "));
        EXPECT_EQ(box.knöpfe, QMessageBox::StandardButtons(QMessageBox::Ok));
        EXPECT_EQ(box.beschriftungen, QStringList{QStringLiteral("OK")});
    }
}

TEST_F(GuiTest, EscapeWirdEinmalGemeldetUndAndereEingabenVerworfen) {
    QtOberfläche ui;
    QPushButton knopf(QStringLiteral("Start"));
    knopf.resize(80, 30);
    knopf.show();
    int geklickt = 0;
    QObject::connect(&knopf, &QPushButton::clicked, [&] { ++geklickt; });
    const auto klicken = [&] {
        const QPointF mitte(40, 15);
        QCoreApplication::postEvent(
            &knopf, new QMouseEvent(QEvent::MouseButtonPress, mitte, knopf.mapToGlobal(mitte),
                                    Qt::LeftButton, Qt::LeftButton, Qt::NoModifier));
        QCoreApplication::postEvent(
            &knopf, new QMouseEvent(QEvent::MouseButtonRelease, mitte, knopf.mapToGlobal(mitte),
                                    Qt::LeftButton, Qt::NoButton, Qt::NoModifier));
    };

    EXPECT_FALSE(ui.AbbruchGewünscht());
    // A click that waits while the work runs is dropped by the poll, Escape is noted.
    klicken();
    QCoreApplication::postEvent(&knopf,
                                new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
    EXPECT_TRUE(ui.AbbruchGewünscht());
    EXPECT_EQ(geklickt, 0);
    EXPECT_FALSE(ui.AbbruchGewünscht()) << "reading the request resets it";

    // Outside a poll the program takes its input as always, and Escape cancels no later work.
    klicken();
    QCoreApplication::postEvent(&knopf,
                                new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
    QCoreApplication::processEvents();
    EXPECT_EQ(geklickt, 1);
    EXPECT_FALSE(ui.AbbruchGewünscht());
}

TEST_F(GuiTest, DateifilterWerdenAlsQtFilterGeschrieben) {
    EXPECT_EQ(QtDateifilter(import::DateiFilter),
              QStringLiteral("WLDGE-Format (*.wldge);;Flurix (*.fil);;Web-XML-Datei (*.xml);;"
                             "NAS (*.xml);;NAS (*.mdb);;FKZ (*.fkz)"));
    EXPECT_EQ(QtDateifilter("Zip-Datei (*.zip)|*.zip|"), QStringLiteral("Zip-Datei (*.zip)"));
    // A description without its pattern gets it; several patterns are separated by blanks.
    EXPECT_EQ(QtDateifilter("Texte|*.txt;*.csv|Alle|*.*"),
              QStringLiteral("Texte (*.txt *.csv);;Alle (*.*)"));
    EXPECT_EQ(QtDateifilter(""), QString());
}

TEST_F(GuiTest, GewählterFilterGibtDieEingabeart) {
    const QStringList filter = QtDateifilterListe(import::DateiFilter);
    ASSERT_EQ(filter.size(), 6);
    const std::vector<std::pair<QString, import::Eingabeart>> fälle = {
        {QStringLiteral("WLDGE-Format (*.wldge)"), import::Eingabeart::Wldge},
        {QStringLiteral("Flurix (*.fil)"), import::Eingabeart::Tabelle},
        {QStringLiteral("Web-XML-Datei (*.xml)"), import::Eingabeart::WebXml},
        {QStringLiteral("NAS (*.xml)"), import::Eingabeart::NasXml},
        {QStringLiteral("NAS (*.mdb)"), import::Eingabeart::NasDatenbank},
        {QStringLiteral("FKZ (*.fkz)"), import::Eingabeart::FkzListe},
    };
    for (const auto& [gewählt, art] : fälle)
        EXPECT_EQ(FilterNummer(filter, gewählt), static_cast<int>(art)) << Utf8(gewählt);
    EXPECT_EQ(FilterNummer(filter, QStringLiteral("Alle Dateien (*)")), 0);
}

// --- the import options dialog ---

template <typename T> T* Element(const QWidget& dialog, const char* name) {
    T* element = dialog.findChild<T*>(QString::fromUtf8(name));
    EXPECT_NE(element, nullptr) << name;
    return element;
}

import::ImportOptionen OptionenFür(const char* format) {
    import::ImportOptionen optionen;
    optionen.importFormat = format;
    return optionen;
}

TEST_F(GuiTest, OptionenDialogZeigtBeschriftungenUndTooltips) {
    FormDatenbankDarstellung dialog(OptionenFür("32"));
    struct Fall {
        const char* name;
        const char* text;
        const char* tipp;
    };
    const std::vector<Fall> fälle = {
        {"chkAlbTeilweise", "WLDGE-Daten teilweise einlesen",
         "hier werden nur die wichtigsten Informationen, wie Flurstücksnummer, Eigentümer, "
         "Grundbuchblattnummer etc., aus der WLDGE-Datei importiert"},
        {"chkAlbKomplett", "WLDGE-Daten komplett einlesen",
         "mittels SQL-Datenbank können (z.Z. fast) alle Informationen der WLDGE-Datei im "
         "Datenanforderungsformat 32 ausgwertet werden"},
        {"ALBNutzungTasächlich", "tatsächliche Nutzung vollständig",
         "Nutzung pro NA unverschlüsselt"},
        {"ALBNameVornameUmdrehen", "[Name, Vorname] in [Vorname Name] ändern", ""},
        {"EigentümerJeFlurstück_0", "je Eigentümer und Flurstück eine Datenzeile", ""},
        {"EigentümerJeFlurstück_1", "alle Eigentümer je Flurstück eine Datenzeile", ""},
        {"chkFlurixSuchbegriffGemarkung", "Flurstückssuche vereinfachen",
         "Auswahl Flurstück nach Gemarkung und Flur"},
    };
    for (const Fall& fall : fälle) {
        auto* knopf = Element<QAbstractButton>(dialog, fall.name);
        ASSERT_NE(knopf, nullptr);
        EXPECT_EQ(knopf->text(), QString::fromUtf8(fall.text)) << fall.name;
        EXPECT_EQ(knopf->toolTip(), QString::fromUtf8(fall.tipp)) << fall.name;
    }
    EXPECT_NE(Element<QPushButton>(dialog, "cmdAbbruch"), nullptr);
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("WLDGE-32-Datenformat"));
}

TEST_F(GuiTest, OptionenDialogStartetMitDenGegebenenOptionen) {
    const auto vorgabe = OptionenFür("32");
    FormDatenbankDarstellung dialog(vorgabe);
    EXPECT_TRUE(Element<QCheckBox>(dialog, "chkAlbTeilweise")->isChecked());
    EXPECT_TRUE(Element<QCheckBox>(dialog, "ALBNutzungTasächlich")->isChecked());
    EXPECT_FALSE(Element<QCheckBox>(dialog, "ALBNameVornameUmdrehen")->isChecked());
    EXPECT_TRUE(Element<QRadioButton>(dialog, "EigentümerJeFlurstück_0")->isChecked());
    const import::ImportOptionen o = dialog.Optionen();
    EXPECT_EQ(o.albKomplett, vorgabe.albKomplett);
    EXPECT_EQ(o.nutzungTatsächlich, vorgabe.nutzungTatsächlich);
    EXPECT_EQ(o.nameUmdrehen, vorgabe.nameUmdrehen);
    EXPECT_EQ(o.alleEigentümerInEinerZeile, vorgabe.alleEigentümerInEinerZeile);
    EXPECT_EQ(o.suchbegriffGemarkung, vorgabe.suchbegriffGemarkung);
    EXPECT_EQ(o.importFormat, "32");
}

TEST_F(GuiTest, TeilweiseUndKomplettSchließenSichAus) {
    FormDatenbankDarstellung dialog(OptionenFür("32"));
    auto* teilweise = Element<QCheckBox>(dialog, "chkAlbTeilweise");
    auto* komplett = Element<QCheckBox>(dialog, "chkAlbKomplett");
    ASSERT_TRUE(teilweise && komplett);
    komplett->click();
    EXPECT_TRUE(komplett->isChecked());
    EXPECT_FALSE(teilweise->isChecked());
    EXPECT_TRUE(dialog.Optionen().albKomplett);
    // The ticked box can't be cleared: one reader is always chosen.
    komplett->click();
    EXPECT_TRUE(komplett->isChecked());
    teilweise->click();
    EXPECT_TRUE(teilweise->isChecked());
    EXPECT_FALSE(komplett->isChecked());
    EXPECT_FALSE(dialog.Optionen().albKomplett);
}

TEST_F(GuiTest, OptionenDialogBietetJeFormatAn) {
    struct Fall {
        const char* format;
        const char* titel;
        bool teilweise, komplett, zeilenWählbar;
    };
    const std::vector<Fall> fälle = {
        {"32", "WLDGE-32-Datenformat", true, true, true},
        {"35", "WLDGE-35-Datenformat", true, false, false},
        {"XML", "Web-XML-Datenformat", false, false, true},
    };
    for (const Fall& fall : fälle) {
        auto optionen = OptionenFür(fall.format);
        optionen.albKomplett = true; // as a former load may have left it
        FormDatenbankDarstellung dialog(optionen);
        EXPECT_EQ(dialog.windowTitle(), QString::fromUtf8(fall.titel));
        auto* teilweise = Element<QCheckBox>(dialog, "chkAlbTeilweise");
        auto* komplett = Element<QCheckBox>(dialog, "chkAlbKomplett");
        auto* zeilen = Element<QGroupBox>(dialog, "EigentümerJeFlurstück");
        ASSERT_TRUE(teilweise && komplett && zeilen);
        EXPECT_EQ(teilweise->isVisibleTo(&dialog), fall.teilweise) << fall.format;
        EXPECT_EQ(komplett->isVisibleTo(&dialog), fall.komplett) << fall.format;
        EXPECT_EQ(zeilen->isEnabled(), fall.zeilenWählbar) << fall.format;
        const import::ImportOptionen o = dialog.Optionen();
        EXPECT_EQ(o.albKomplett, fall.komplett) << fall.format;
        EXPECT_EQ(o.importFormat, fall.format);
    }
    // Format 35 makes one row per parcel, and the dialog shows that.
    FormDatenbankDarstellung dialog35(OptionenFür("35"));
    EXPECT_TRUE(Element<QRadioButton>(dialog35, "EigentümerJeFlurstück_1")->isChecked());
    EXPECT_TRUE(dialog35.Optionen().alleEigentümerInEinerZeile);
}

TEST_F(GuiTest, OptionenDialogSchreibtNurBeiOk) {
    QWidget eltern;
    import::ImportOptionen optionen = OptionenFür("32");
    const auto ändern = [](QWidget& dialog, const char* knopf) {
        Element<QCheckBox>(dialog, "chkAlbKomplett")->click();
        Element<QCheckBox>(dialog, "ALBNameVornameUmdrehen")->click();
        Element<QRadioButton>(dialog, "EigentümerJeFlurstück_1")->click();
        Element<QPushButton>(dialog, knopf)->click();
    };
    const auto bearbeiten = [&](const char* knopf) {
        QTimer::singleShot(0, [&] {
            auto* dialog =
                qobject_cast<FormDatenbankDarstellung*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            ändern(*dialog, knopf);
        });
        return FormDatenbankDarstellung::Bearbeiten(optionen, &eltern);
    };
    EXPECT_FALSE(bearbeiten("cmdAbbruch"));
    EXPECT_FALSE(optionen.albKomplett);
    EXPECT_FALSE(optionen.nameUmdrehen);
    EXPECT_FALSE(optionen.alleEigentümerInEinerZeile);
    EXPECT_TRUE(bearbeiten("cmdOK"));
    EXPECT_TRUE(optionen.albKomplett);
    EXPECT_TRUE(optionen.nameUmdrehen);
    EXPECT_TRUE(optionen.alleEigentümerInEinerZeile);
    EXPECT_TRUE(optionen.nutzungTatsächlich);
    EXPECT_EQ(optionen.importFormat, "32");
}

// --- closing and the start by command line ---

TEST_F(GuiTest, SchließenMitNeinLässtDasProgrammLaufen) {
    Hauptfenster h;
    h.fenster.show();
    Beantworter nein(QMessageBox::No);
    EXPECT_FALSE(h.fenster.close());
    EXPECT_TRUE(h.fenster.isVisible());
    EXPECT_TRUE(h.zustand.BeendenFragen);
    EXPECT_FALSE(h.exitcode.has_value());
    ASSERT_EQ(nein.boxen.size(), 1U);
    EXPECT_EQ(nein.boxen[0].text,
              QStringLiteral("Wollen Sie den Flurix jetzt wirklich beenden?   "));
    EXPECT_EQ(nein.boxen[0].titel, QStringLiteral("Flurix"));
}

TEST_F(GuiTest, SchließenMitJaBeendetOhneZweiteFrage) {
    Hauptfenster h;
    h.fenster.show();
    Beantworter ja(QMessageBox::Yes);
    EXPECT_TRUE(h.fenster.close());
    EXPECT_FALSE(h.zustand.BeendenFragen);
    EXPECT_EQ(h.exitcode, 0);
    // Once ended, nothing asks again or ends a second time.
    EXPECT_TRUE(h.fenster.BeendenKlick());
    EXPECT_EQ(ja.boxen.size(), 1U);
    EXPECT_EQ(h.exitcode, 0);
}

TEST_F(GuiTest, DateiVonDerKommandozeileWirdNachDemAnzeigenErfragt) {
    Hauptfenster h;
    const auto datei = h.ordner / "auftrag.fil";
    test::DateiSchreiben(datei, "");
    h.zustand.auftrag.art = Startart::DateiLaden;
    h.zustand.auftrag.AutoStartDatei = true;
    h.zustand.auftrag.AuftragsDatei = "fil";
    h.zustand.auftrag.Kommandozeile = datei.string();
    Beantworter nein(QMessageBox::No);
    h.fenster.Starten();
    EXPECT_TRUE(h.fenster.isVisible());
    EXPECT_TRUE(nein.boxen.empty()) << "the question waits until the window is painted";
    Warten([&] { return !nein.boxen.empty(); });
    ASSERT_EQ(nein.boxen.size(), 1U);
    EXPECT_EQ(nein.boxen[0].text,
              QStringLiteral("Soll die Eingabedatei \"auftrag.fil\" eingelesen werden?   "));
    EXPECT_FALSE(h.exitcode.has_value());
}

TEST_F(GuiTest, NasDateiKommtDirektInDieTabelleUndFragtVorDemErsetzen) {
    Hauptfenster h;
    const auto quellen = std::filesystem::path(FLURIX_QUELLEN);
    std::filesystem::copy(quellen / "config", h.ordner / "config",
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::overwrite_existing);
    const auto datei = h.ordner / "muster.xml";
    std::filesystem::copy_file(quellen / "samples" / "musterstadt_nas.xml", datei);
    h.fenster.show();
    import::Ladeauftrag auftrag;
    auftrag.dateien = {datei};
    // As a job from the command line: a ".xml" that its content shows to be NAS.
    auftrag.art = import::Eingabeart::Xml;
    auftrag.vonKommandozeile = true;
    {
        Beantworter ja(QMessageBox::Yes);
        ASSERT_TRUE(h.fenster.Laden(auftrag));
        ASSERT_EQ(ja.boxen.size(), 1U) << "only the job's question; an empty table is filled";
        EXPECT_EQ(ja.boxen[0].text,
                  QStringLiteral("Soll die Eingabedatei \"muster.xml\" eingelesen werden?   "));
    }
    auftrag.art = import::Eingabeart::NasXml;
    auftrag.vonKommandozeile = false;
    const std::size_t zeilen = h.fenster.Tabelle().Zeilenzahl();
    EXPECT_GT(zeilen, 24U); // 24 parcels, several with more than one owner
    auto* tabelle = h.fenster.findChild<QTableView*>();
    ASSERT_NE(tabelle, nullptr);
    EXPECT_EQ(static_cast<std::size_t>(tabelle->model()->rowCount()), zeilen);
    EXPECT_EQ(h.fenster.Tabelle().Zelle(0, "Gemarkung"), "Beispielfeld");
    EXPECT_FALSE(h.zustand.arbeitsdatenbanken.empty()) << "the work database goes at the end";

    // With rows in the table the person chooses: No replaces, Yes extends.
    const QString frage = QStringLiteral("<Ja> vorliegende Datenbank wird erweitert   \n"
                                         "<Nein> vorliegende Datenbank wird überschrieben   ");
    {
        Beantworter nein(QMessageBox::No);
        ASSERT_EQ(h.fenster.Tabelle().Zeilenzahl(), zeilen);
        ASSERT_TRUE(h.fenster.Laden(auftrag));
        ASSERT_EQ(nein.boxen.size(), 1U);
        EXPECT_EQ(nein.boxen[0].text, frage);
        EXPECT_EQ(nein.boxen[0].titel, QStringLiteral("Auswahl Import NAS-Daten"));
        EXPECT_EQ(h.fenster.Tabelle().Zeilenzahl(), zeilen);
    }
    {
        Beantworter ja(QMessageBox::Yes);
        ASSERT_TRUE(h.fenster.Laden(auftrag));
        EXPECT_EQ(h.fenster.Tabelle().Zeilenzahl(), 2 * zeilen);
        EXPECT_EQ(static_cast<std::size_t>(tabelle->model()->rowCount()), 2 * zeilen);
    }
}

TEST_F(GuiTest, NasStapelUndKarteMeldenUndEndenOhneFrage) {
    struct Fall {
        Startart art;
        bool still, karte;
        const char* was;
    };
    const std::vector<Fall> fälle = {
        {Startart::NasStapel, true, false, "Der NAS-Arbeitsbereich"},
        {Startart::Karte, false, true, "Das Kartenfenster"},
    };
    for (const Fall& fall : fälle) {
        Hauptfenster h;
        h.zustand.auftrag.art = fall.art;
        h.zustand.auftrag.StillModus = fall.still;
        h.zustand.auftrag.MapModus = fall.karte;
        Beantworter ok;
        h.fenster.Starten();
        Warten([&] { return h.exitcode.has_value(); });
        EXPECT_FALSE(h.fenster.isVisible()) << fall.was;
        EXPECT_EQ(h.exitcode, 1) << fall.was;
        ASSERT_EQ(ok.boxen.size(), 1U) << "the message, and no question to end: " << fall.was;
        EXPECT_EQ(ok.boxen[0].text, QText(import::NochNichtVerfügbar(fall.was)));
        EXPECT_EQ(ok.boxen[0].titel, QStringLiteral("Flurix"));
    }
}

// --- the system options dialog ---

TEST_F(GuiTest, SystemdialogÖffnetNichtOhneSchreibrecht) {
    TempOrdner ordner;
    SkriptOberfläche ui;
    // A folder that isn't there can't be written to, whoever runs the test.
    EXPECT_FALSE(FormOptionenSystem::Anzeigen(ordner / "fehlt" / "config", ui, nullptr));
    ASSERT_EQ(ui.Meldungen().size(), 1U);
    EXPECT_TRUE(ui.Meldungen()[0].starts_with("Es liegen keine Schreibrechte für Änderungen an den "
                                              "Systemdateien im Programmverzeichnis"));
    EXPECT_EQ(ui.Ereignisse()[0].titel, "Änderungen an den Systemdateien nicht möglich!");
}

TEST_F(GuiTest, SystemsicherungZeigtIhrErgebnisImDialog) {
    TempOrdner ordner;
    const auto konfig = ordner / "config";
    test::DateiSchreiben(konfig / "Flurix.dat", "tempArbeitsverzeichnis =\r\n");
    SkriptOberfläche ui;
    FormOptionenSystem dialog(konfig, ui);
    const auto zip = ordner / "sicherung.zip";
    EXPECT_TRUE(dialog.Sichern(zip));
    EXPECT_TRUE(std::filesystem::exists(zip));
    EXPECT_TRUE(dialog.Zustand().contains(QStringLiteral("erfolgreich erstellt")));

    test::DateiSchreiben(konfig / "Flurix.dat", "geändert\r\n");
    EXPECT_TRUE(dialog.Einlesen(zip));
    EXPECT_EQ(test::DateiLesen(konfig / "Flurix.dat"), "tempArbeitsverzeichnis =\r\n");
    EXPECT_TRUE(dialog.Zustand().contains(QStringLiteral("eingelesen")));

    EXPECT_FALSE(dialog.Einlesen(ordner / "fehlt.zip"));
    EXPECT_EQ(dialog.Zustand(), QStringLiteral("Fehler beim Zip-Datei öffnen!"));
}

} // namespace
} // namespace flurix::gui
