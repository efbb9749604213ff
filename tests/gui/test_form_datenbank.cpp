// The main window with a cadastre table in it (offscreen): loading a saved table, the column
// views, the search bar, the marking group, header sorting, the edit lock, deletion, the column
// widths, and a table of half a million rows.

#include "core/cp1252.hpp"
#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/markierung.hpp"
#include "core/spaltenansicht.hpp"
#include "gui/flurstuecksliste_dialog.hpp"
#include "gui/form_alb_ansicht.hpp"
#include "gui/kataster_modell.hpp"
#include "gui/qt_text.hpp"
#include "gui/spaltenbreiten.hpp"
#include "gui_testhilfen.hpp"
#include "testtabelle.hpp"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QToolButton>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <set>
#include <string>
#include <vector>

namespace flurix::gui {
namespace {

using test::Beantworter;
using test::Dialoghelfer;
using test::Panel;
using test::TempOrdner;

/// The views file of the tests' installation, written in Windows-1252 as shipped.
constexpr std::string_view Ansichten =
    "Kataster ALKIS=checkdruck;Gemarkung;Flur;Flurstück;Fläche;Name;Flurstückskennzeichen\r\n"
    "AL-amtl.Lageplan=checkdruck;ID_GG;Gemarkung;Flur;Flurstück;Name\r\n"
    "Eigentümer=Name;Straße;Ort\r\n";

/// A main window started with the views file, so the view "Kataster ALKIS" of the settings'
/// default is chosen, and a made-up table of `zeilen` rows loaded from a saved-table file.
struct Tabellenfenster : test::Hauptfenster {
    std::filesystem::path datei = ordner / "tabelle.fil";
    Ergebnis geladen;

    explicit Tabellenfenster(std::size_t zeilen = 120) : test::Hauptfenster(Ansichten) {
        Kataster vorlage;
        test::TesttabelleErzeugen(vorlage, zeilen);
        KatasterSpeichern(vorlage, datei);
        geladen = Laden(datei);
    }

    Ergebnis Laden(const std::filesystem::path& pfad) {
        import::Ladeauftrag auftrag;
        auftrag.dateien = {pfad};
        auftrag.art = import::Eingabeart::Tabelle;
        return fenster.Laden(auftrag);
    }
    Kataster& K() { return fenster.Tabelle(); }
    KatasterModell& M() { return fenster.Modell(); }
    QTableView& Grid() { return *fenster.Grid(); }
    template <typename T> T* Element(const char* name) {
        return fenster.findChild<T*>(QString::fromUtf8(name));
    }
    void Auslösen(const char* aktion) {
        QAction* a = Element<QAction>(aktion);
        ASSERT_NE(a, nullptr) << aktion;
        a->trigger();
    }
    int Abschnitt(std::string_view schlüssel) {
        return M().Abschnitt(*K().SpaltenIndex(schlüssel));
    }
    std::string Zelle(std::size_t zeile, std::string_view schlüssel) {
        return std::string(K().Zelle(zeile, schlüssel));
    }
    /// The rows the grid shows selected, ascending.
    std::vector<std::size_t> GridAuswahl() {
        std::vector<std::size_t> zeilen;
        for (const QModelIndex& i : Grid().selectionModel()->selectedRows())
            zeilen.push_back(static_cast<std::size_t>(i.row()));
        std::sort(zeilen.begin(), zeilen.end());
        return zeilen;
    }
    void ZeilenWählen(std::initializer_list<int> zeilen) {
        for (int z : zeilen)
            Grid().selectionModel()->select(M().index(z, 0), QItemSelectionModel::Select |
                                                                 QItemSelectionModel::Rows);
    }
    Qt::CheckState Marke(std::size_t zeile) {
        return static_cast<Qt::CheckState>(
            M().index(static_cast<int>(zeile), Abschnitt("checkdruck"))
                .data(Qt::CheckStateRole)
                .toInt());
    }
    /// Rows whose cells of these columns equal those of row `zeile`.
    std::vector<std::size_t> GleicheZeilen(std::size_t zeile,
                                           std::initializer_list<std::string_view> spalten) {
        std::vector<std::size_t> gleiche;
        for (std::size_t z = 0; z < K().Zeilenzahl(); ++z)
            if (std::all_of(spalten.begin(), spalten.end(), [&](std::string_view s) {
                    return K().Zelle(z, s) == K().Zelle(zeile, s);
                }))
                gleiche.push_back(z);
        return gleiche;
    }
};

QStringList Einträge(const QComboBox& box) {
    QStringList texte;
    for (int i = 0; i < box.count(); ++i)
        texte << box.itemText(i);
    return texte;
}

using Fenster = ::testing::Test;

// --- the empty window and the load ---------------------------------------------------------------

TEST_F(Fenster, LeeresFensterZeigtDieKatalogspaltenOhneZeilen) {
    test::Hauptfenster h;
    EXPECT_EQ(h.fenster.Grid()->model(), &h.fenster.Modell());
    EXPECT_EQ(h.fenster.Modell().rowCount(), 0);
    EXPECT_EQ(h.fenster.Modell().columnCount(), static_cast<int>(Katalog().size()) - 1);
    // Rows have one fixed height: the grid places them without asking the model.
    EXPECT_EQ(h.fenster.Grid()->verticalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
    EXPECT_FALSE(h.fenster.Grid()->wordWrap());
}

TEST_F(Fenster, GespeicherteTabelleErscheintInDerGewähltenAnsicht) {
    Tabellenfenster t;
    ASSERT_TRUE(t.geladen) << t.geladen.Meldung();
    EXPECT_EQ(t.M().rowCount(), 120);
    ASSERT_EQ(t.M().columnCount(), 7);
    EXPECT_EQ(t.M().headerData(0, Qt::Horizontal).toString(), QStringLiteral("×"));
    EXPECT_EQ(t.M().headerData(1, Qt::Horizontal).toString(), QStringLiteral("Gemarkung"));
    EXPECT_TRUE(t.M().index(0, 0).data(Qt::CheckStateRole).isValid()) << "checkdruck is a box";
    EXPECT_EQ(Panel(t.fenster, 1), QStringLiteral("120 Zeilen eingelesen  "));
    // The default order.
    for (std::size_t z = 1; z < t.K().Zeilenzahl(); ++z)
        ASSERT_LE(Vergleichsform(t.K().Zelle(z - 1, "Gemarkung")),
                  Vergleichsform(t.K().Zelle(z, "Gemarkung")));
    // Locked after a load.
    EXPECT_FALSE(t.M().Entsperrt());
    EXPECT_FALSE(t.Element<QAction>("btnEntsperren")->isChecked());

    // The search columns are the shown ones but the box, Flurstück chosen.
    const QComboBox& spalten = *t.Element<QComboBox>("FlurixSuchenInFeld");
    EXPECT_EQ(Einträge(spalten),
              (QStringList{QStringLiteral("Gemarkung"), QStringLiteral("Flur"),
                           QStringLiteral("Flurstück"), QStringLiteral("Fläche"),
                           QStringLiteral("Name"), QStringLiteral("Flurstückskennzeichen")}));
    EXPECT_EQ(spalten.currentData().toString(), QStringLiteral("Flurstück"));

    // Below 5000 rows the Gemarkung and Flur box holds each pair once.
    std::set<std::string> paare;
    for (std::size_t z = 0; z < t.K().Zeilenzahl(); ++z)
        paare.insert(t.Zelle(z, "Gemarkung") + ", " + t.Zelle(z, "Flur"));
    const QComboBox& gemarkung = *t.Element<QComboBox>("FlurixSuchbegriffGemarkung");
    ASSERT_EQ(gemarkung.count(), static_cast<int>(paare.size()) + 1);
    EXPECT_EQ(gemarkung.itemText(0), QStringLiteral("(alle Gemarkungen)"));
    for (int i = 1; i < gemarkung.count(); ++i)
        EXPECT_TRUE(paare.contains(Utf8(gemarkung.itemText(i)))) << Utf8(gemarkung.itemText(i));
    EXPECT_TRUE(gemarkung.isEnabled());

    // Fitted columns show their longest text whole.
    const QFontMetrics schrift = t.Grid().fontMetrics();
    for (std::string_view spalte : {"Flurstück", "Flurstückskennzeichen", "Name"}) {
        int längste = 0;
        for (std::size_t z = 0; z < t.K().Zeilenzahl(); ++z)
            längste = std::max(längste, schrift.horizontalAdvance(QText(t.K().Zelle(z, spalte))));
        EXPECT_GE(t.Grid().columnWidth(t.Abschnitt(spalte)), längste) << spalte;
    }
}

TEST_F(Fenster, UnlesbareTabelleMeldetDenFehler) {
    Tabellenfenster t;
    const auto kaputt = t.ordner / "kaputt.fil";
    test::DateiSchreiben(kaputt, "kein Tabellenkopf\n");
    Beantworter ja; // "überschreiben?" Yes, then the message
    EXPECT_FALSE(t.Laden(kaputt));
    ASSERT_EQ(ja.boxen.size(), 2U);
    EXPECT_EQ(ja.boxen[0].text,
              QStringLiteral("Soll die vorhandene Datenbank überschrieben werden?   "));
    EXPECT_EQ(ja.boxen[1].text, QText("Während des Lesens der Daten aus der Datei " +
                                      kaputt.string() + " ist ein Fehler aufgetreten!"));
    EXPECT_EQ(ja.boxen[1].titel, QStringLiteral("Flurix"));
    // A file that can't be read replaces nothing: the grid shows the table as it was.
    EXPECT_EQ(t.K().Zeilenzahl(), 120U);
    EXPECT_EQ(t.M().rowCount(), 120);
    EXPECT_EQ(t.M().columnCount(), 7);
}

// --- search and selection ------------------------------------------------------------------------

TEST_F(Fenster, SuchenWähltDieTrefferImGridUndZeigtDenErsten) {
    Tabellenfenster t;
    // The parcel of the last row, typed as a person would: without zeros.
    const std::size_t vorlage = t.K().Zeilenzahl() - 1;
    const std::string flurstück = t.Zelle(vorlage, "Flurstück");
    std::string begriff = t.Zelle(vorlage, "Flurstück-Zähler");
    if (!t.Zelle(vorlage, "Flurstück-Nenner").empty())
        begriff += "/" + t.Zelle(vorlage, "Flurstück-Nenner");
    t.Element<QLineEdit>("FlurixSuchbegriff")->setText(QText(begriff));
    t.Element<QPushButton>("cmdFlurixSuchen")->click();

    std::vector<std::size_t> erwartet;
    for (std::size_t z = 0; z < t.K().Zeilenzahl(); ++z)
        if (t.K().Zelle(z, "Flurstück") == flurstück)
            erwartet.push_back(z);
    ASSERT_FALSE(erwartet.empty());
    EXPECT_EQ(t.GridAuswahl(), erwartet);
    EXPECT_EQ(t.K().AusgewählteZeilen(), erwartet);
    EXPECT_EQ(Panel(t.fenster, 1),
              QString::number(erwartet.size()) + QStringLiteral(" Zeile(n) selektiert  "));
    EXPECT_EQ(t.Grid().currentIndex().row(), static_cast<int>(erwartet.front()));

    // Within one Gemarkung and Flur only its rows count.
    const std::size_t erster = erwartet.front();
    const QString paar = QText(t.Zelle(erster, "Gemarkung") + ", " + t.Zelle(erster, "Flur"));
    QComboBox* gemarkung = t.Element<QComboBox>("FlurixSuchbegriffGemarkung");
    gemarkung->setCurrentText(paar);
    ASSERT_EQ(gemarkung->currentText(), paar);
    t.Element<QLineEdit>("FlurixSuchbegriff")->setText(QText(begriff));
    QMetaObject::invokeMethod(t.Element<QLineEdit>("FlurixSuchbegriff"), "returnPressed");
    const std::vector<std::size_t> imPaar = t.GridAuswahl();
    ASSERT_FALSE(imPaar.empty());
    EXPECT_LE(imPaar.size(), erwartet.size());
    for (std::size_t z : imPaar) {
        EXPECT_EQ(t.Zelle(z, "Flurstück"), flurstück);
        EXPECT_EQ(QText(t.Zelle(z, "Gemarkung") + ", " + t.Zelle(z, "Flur")), paar);
    }
}

TEST_F(Fenster, NichtGefundenMeldetDenAufgefülltenBegriff) {
    Tabellenfenster t;
    t.Element<QLineEdit>("FlurixSuchbegriff")->setText(QStringLiteral("99999"));
    Beantworter ok;
    EXPECT_EQ(t.fenster.Suchen(), 0U);
    ASSERT_EQ(ok.boxen.size(), 1U);
    EXPECT_EQ(ok.boxen[0].text,
              QStringLiteral("Der Suchbegriff <99999/0000> wurde nicht gefunden!   "));
    EXPECT_TRUE(t.GridAuswahl().empty());
}

TEST_F(Fenster, AuswahlImGridGehtInDieTabelle) {
    Tabellenfenster t;
    t.ZeilenWählen({2, 3, 4});
    EXPECT_EQ(t.K().AusgewählteZeilen(), (std::vector<std::size_t>{2, 3, 4}));
    EXPECT_EQ(Panel(t.fenster, 1), QStringLiteral("3 Zeile(n) selektiert  "));
    t.Grid().selectionModel()->select(t.M().index(3, 0),
                                      QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
    EXPECT_EQ(t.K().AusgewählteZeilen(), (std::vector<std::size_t>{2, 4}));
    EXPECT_EQ(Panel(t.fenster, 1), QStringLiteral("2 Zeile(n) selektiert  "));
    t.Grid().selectAll();
    EXPECT_EQ(t.K().AnzahlAusgewählt(), t.K().Zeilenzahl());
}

// --- the marking group ---------------------------------------------------------------------------

TEST_F(Fenster, MarkierenUndLöschenÜberDieGruppe) {
    Tabellenfenster t;
    t.ZeilenWählen({3, 4});
    t.Auslösen("btnDbMarkierungErzeugen");
    for (std::size_t z = 0; z < 8; ++z)
        EXPECT_EQ(t.Marke(z), z == 3 || z == 4 ? Qt::Checked : Qt::Unchecked) << z;
    EXPECT_EQ(Panel(t.fenster, 1), QStringLiteral("alle Markierungen erzeugt  "));
    t.Auslösen("btnDbMarkerErzeugen");
    EXPECT_EQ(Panel(t.fenster, 1), QStringLiteral("alle Marker erzeugt  "));

    t.Auslösen("btnDbMarkierungAlle");
    EXPECT_EQ(Panel(t.fenster, 1), QStringLiteral("alle Zeilen markiert  "));
    for (std::size_t z = 0; z < t.K().Zeilenzahl(); ++z)
        ASSERT_EQ(t.Marke(z), Qt::Checked) << z;

    {
        Beantworter nein(QMessageBox::No);
        t.Auslösen("btnDbMarkierungLöschen");
        ASSERT_EQ(nein.boxen.size(), 1U);
        EXPECT_EQ(nein.boxen[0].text,
                  QStringLiteral("Es werden alle Markierungen und Marker gelöscht! Weiter?   "));
        EXPECT_EQ(t.Marke(0), Qt::Checked);
    }
    Beantworter ja(QMessageBox::Yes);
    t.Auslösen("btnDbMarkierungLöschen");
    for (std::size_t z = 0; z < t.K().Zeilenzahl(); ++z)
        ASSERT_EQ(t.Marke(z), Qt::Unchecked) << z;
    EXPECT_EQ(Panel(t.fenster, 1), QStringLiteral("alle Markierungen gelöscht  "));
}

TEST_F(Fenster, FlurstückMarkierenNimmtAlleEigentümerzeilen) {
    Tabellenfenster t;
    // A parcel with three owners, chosen by its last row.
    std::size_t dritter = 0;
    while (t.Zelle(dritter, "Eigentümerposition") != "0003")
        ++dritter;
    const auto parzelle = t.GleicheZeilen(dritter, {"Flurstückskennzeichen"});
    ASSERT_EQ(parzelle.size(), 3U);
    t.ZeilenWählen({static_cast<int>(dritter)});
    t.Auslösen("btnDbFlurstückMarkieren");
    EXPECT_EQ(t.GridAuswahl(), parzelle);
    for (std::size_t z : parzelle)
        EXPECT_EQ(t.Marke(z), Qt::Checked) << z;
    EXPECT_EQ(Panel(t.fenster, 2), QStringLiteral("3 Markierungen erzeugt  "));
}

TEST_F(Fenster, FlurstückslisteÜberDenDialogLaden) {
    Tabellenfenster t;
    t.zustand.auftrag.AuftragsPfad = t.ordner.pfad().string();
    // Two parcels of the table, in two of the list's forms, and one that isn't there.
    const std::string a = t.Zelle(10, "Flurstückskennzeichen");
    const std::string b = t.Zelle(60, "Flurstückskennzeichen");
    const std::string liste = (t.ordner / "auftrag.lst").string();
    test::DateiSchreiben(liste, a + "\r\n" + b.substr(0, 2) + "-" + b.substr(2, 4) + "-" +
                                    b.substr(6, 3) + "-" + b.substr(9, 5) + "/" + b.substr(14, 4) +
                                    "\r\n12999900100001000100\r\n");
    QString formattext;
    QStringList filter;
    QString startordner;
    Dialoghelfer<QFileDialog> wählen([&](QFileDialog& dialog) {
        if (const auto* label = dialog.findChild<QLabel*>(QString::fromUtf8(ListenformatName)))
            formattext = label->text();
        filter = dialog.nameFilters();
        startordner = dialog.directory().absolutePath();
        dialog.selectFile(QString::fromStdString(liste));
        static_cast<QDialog&>(dialog).accept(); // QFileDialog's own accept checks the file
    });
    t.Auslösen("btnDbMarkierungLaden");
    ASSERT_TRUE(wählen.gesehen);
    EXPECT_EQ(formattext, ListenformatText());
    EXPECT_TRUE(formattext.contains(QStringLiteral("\"121955 7 231/1\"")));
    EXPECT_EQ(filter, (QStringList{QStringLiteral("FKZ (*.lst)"),
                                   QStringLiteral("Flurstücksformat (*.prn)"),
                                   QStringLiteral("alle Daten (*.*)")}));
    EXPECT_EQ(startordner, QPfad(t.ordner.pfad()));

    // The found rows are marked, selected and stand at the top.
    std::size_t gefunden = 0;
    for (std::size_t z = 0; z < t.K().Zeilenzahl(); ++z) {
        const std::string fkz = t.Zelle(z, "Flurstückskennzeichen");
        const bool treffer = fkz == a || fkz == b;
        gefunden += treffer;
        EXPECT_EQ(t.Marke(z) == Qt::Checked, treffer) << z;
        EXPECT_EQ(t.K().Ausgewählt(z), treffer) << z;
    }
    ASSERT_GE(gefunden, 2U);
    const auto auswahl = t.GridAuswahl();
    ASSERT_EQ(auswahl.size(), gefunden);
    EXPECT_EQ(auswahl.back(), gefunden - 1) << "marked rows first";
    EXPECT_EQ(Panel(t.fenster, 2), QStringLiteral("1 Flurstücken nicht gefunden "));
    EXPECT_NE(test::DateiLesen(liste + ".err").find("12999900100001000100"), std::string::npos);
}

TEST_F(Fenster, MarkierteÜberDenDialogSpeichern) {
    Tabellenfenster t;
    t.ZeilenWählen({0, 1, 2, 50});
    t.Auslösen("btnDbMarkierungErzeugen");
    const std::string name = (t.ordner / "markiert").string();
    Dialoghelfer<QFileDialog> speichern([&](QFileDialog& dialog) {
        dialog.selectFile(QString::fromStdString(name));
        static_cast<QDialog&>(dialog).accept();
    });
    Beantworter ok;
    t.Auslösen("btnDbMarkierungSpeichern");
    ASSERT_TRUE(speichern.gesehen);
    ASSERT_EQ(ok.boxen.size(), 1U);
    EXPECT_EQ(ok.boxen[0].text,
              QText("Markierte Daten wurden unter: " + name + ".lst abgespeichert!   "));
    std::string erwartet, letzter;
    for (std::size_t z : {0, 1, 2, 50}) {
        if (t.Zelle(z, "Flurstückskennzeichen") != letzter)
            erwartet += t.Zelle(z, "Flurstückskennzeichen") + "\r\n";
        letzter = t.Zelle(z, "Flurstückskennzeichen");
    }
    EXPECT_EQ(test::DateiLesen(name + ".lst"), erwartet);
}

TEST_F(Fenster, StempelansichtNummeriertKlicksVonVorn) {
    Tabellenfenster t;
    t.fenster.Nummerierung().Weiterzählen();
    t.Auslösen("btnDbEigentümerGGStempel");
    EXPECT_EQ(t.Element<QComboBox>("ComboSpaltenansicht")->currentText(),
              QStringLiteral("AL-amtl.Lageplan"));
    EXPECT_EQ(t.fenster.Nummerierung().StempelNr(), 0);
    ASSERT_GE(t.Abschnitt("ID_GG"), 0) << "the view shows the numbers";
    for (int zeile : {7, 2})
        ASSERT_TRUE(t.M().setData(t.M().index(zeile, t.Abschnitt("checkdruck")),
                                  static_cast<int>(Qt::Checked), Qt::CheckStateRole));
    EXPECT_EQ(t.Zelle(7, "ID_GG"), "1");
    EXPECT_EQ(t.Zelle(2, "ID_GG"), "2");
    EXPECT_EQ(t.M().index(7, t.Abschnitt("ID_GG")).data().toString(), QStringLiteral("1"));
}

// --- header sort ---------------------------------------------------------------------------------

TEST_F(Fenster, KopfklickSortiertAufUndBeimZweitenMalAb) {
    Tabellenfenster t;
    QHeaderView* kopf = t.Grid().horizontalHeader();
    const int name = t.Abschnitt("Name");
    emit kopf->sectionClicked(name);
    for (std::size_t z = 1; z < t.K().Zeilenzahl(); ++z)
        ASSERT_LE(Vergleichsform(t.K().Zelle(z - 1, "Name")),
                  Vergleichsform(t.K().Zelle(z, "Name")));
    EXPECT_TRUE(kopf->isSortIndicatorShown());
    EXPECT_EQ(kopf->sortIndicatorSection(), name);
    EXPECT_EQ(kopf->sortIndicatorOrder(), Qt::AscendingOrder);
    emit kopf->sectionClicked(name);
    for (std::size_t z = 1; z < t.K().Zeilenzahl(); ++z)
        ASSERT_GE(Vergleichsform(t.K().Zelle(z - 1, "Name")),
                  Vergleichsform(t.K().Zelle(z, "Name")));
    EXPECT_EQ(kopf->sortIndicatorOrder(), Qt::DescendingOrder);
    // Work that sorts the table its own way takes the mark away.
    Beantworter ok; // in case nothing is found
    t.Element<QLineEdit>("FlurixSuchbegriff")->setText(QText(t.Zelle(0, "Flurstück-Zähler")));
    t.fenster.Suchen();
    EXPECT_FALSE(kopf->isSortIndicatorShown());
    emit kopf->sectionClicked(name);
    EXPECT_EQ(kopf->sortIndicatorOrder(), Qt::AscendingOrder) << "a new sort starts ascending";
}

TEST_F(Fenster, MehrfachsortierungBautDieListeAusKopfklicks) {
    Tabellenfenster t;
    t.Auslösen("btnMehrfachsortierung");
    QHeaderView* kopf = t.Grid().horizontalHeader();
    emit kopf->sectionClicked(t.Abschnitt("Name"));
    emit kopf->sectionClicked(t.Abschnitt("Fläche"));
    EXPECT_EQ(t.fenster.Mehrfachsortierung().Text(), "Name,Fläche");
    const auto folge = [&](std::size_t z) {
        return std::make_pair(Vergleichsform(t.K().Zelle(z, "Name")),
                              std::string(t.K().Zelle(z, "Fläche")));
    };
    for (std::size_t z = 1; z < t.K().Zeilenzahl(); ++z)
        ASSERT_LE(folge(z - 1), folge(z)) << z;
    EXPECT_FALSE(kopf->isSortIndicatorShown());
    EXPECT_EQ(kopf->toolTip(), QStringLiteral("Sortierung: Name,Fläche"));

    emit kopf->customContextMenuRequested(QPoint(5, 5));
    EXPECT_EQ(t.fenster.Mehrfachsortierung().Text(), "Name");
    emit kopf->customContextMenuRequested(QPoint(5, 5));
    emit kopf->customContextMenuRequested(QPoint(5, 5));
    EXPECT_TRUE(t.fenster.Mehrfachsortierung().Leer());

    // Off again: a click sorts by its column alone, and the list starts empty next time.
    t.Auslösen("btnMehrfachsortierung");
    emit kopf->sectionClicked(t.Abschnitt("Gemarkung"));
    EXPECT_TRUE(t.fenster.Mehrfachsortierung().Leer());
    EXPECT_EQ(kopf->sortIndicatorSection(), t.Abschnitt("Gemarkung"));
}

// --- edit lock and deletion ----------------------------------------------------------------------

TEST_F(Fenster, EntfernenLöschtNurBeiEntsperrterTabelle) {
    Tabellenfenster t;
    const std::string zweite = t.K().ZeileAlsText(1);
    t.ZeilenWählen({0});
    const auto entfernen = [&] {
        QKeyEvent taste(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier);
        QCoreApplication::sendEvent(&t.Grid(), &taste);
    };
    {
        Beantworter keine;
        entfernen();
        EXPECT_TRUE(keine.boxen.empty());
        EXPECT_EQ(t.M().rowCount(), 120);
    }
    t.Auslösen("btnEntsperren");
    EXPECT_TRUE(t.M().Entsperrt());
    Beantworter ja(QMessageBox::Yes);
    entfernen();
    ASSERT_EQ(ja.boxen.size(), 1U);
    EXPECT_EQ(ja.boxen[0].text, QStringLiteral("Datensatz löschen?   "));
    EXPECT_EQ(ja.boxen[0].titel, QStringLiteral("Löschen"));
    EXPECT_EQ(t.M().rowCount(), 119);
    EXPECT_EQ(t.K().ZeileAlsText(0), zweite);
}

TEST_F(Fenster, ZahlenformatZeigtZahlenOhneNullen) {
    Tabellenfenster t;
    const std::string flur = t.Zelle(0, "Flur");
    {
        Beantworter nein(QMessageBox::No);
        t.Auslösen("btnStempelPlus");
        ASSERT_EQ(nein.boxen.size(), 1U);
        EXPECT_EQ(t.M().index(0, t.Abschnitt("Flur")).data().toString(), QText(flur));
    }
    Beantworter ja(QMessageBox::Yes);
    t.Auslösen("btnStempelPlus");
    EXPECT_EQ(t.M().index(0, t.Abschnitt("Flur")).data().toString(),
              QString::number(std::stoi(flur)));
    const QString flurstück = t.M().index(0, t.Abschnitt("Flurstück")).data().toString();
    EXPECT_FALSE(flurstück.startsWith(u'0')) << Utf8(flurstück);
}

// --- views and widths ----------------------------------------------------------------------------

TEST_F(Fenster, AnsichtsboxWendetDieAnsichtAnUndAllesStelltDieReihenfolgeHer) {
    Tabellenfenster t;
    // As the start-up leaves it: "alles", built in, before the views of the file; the view of
    // the settings (here their default) chosen.
    QComboBox* box = t.Element<QComboBox>("ComboSpaltenansicht");
    EXPECT_EQ(Einträge(*box),
              (QStringList{QStringLiteral("alles"), QStringLiteral("Kataster ALKIS"),
                           QStringLiteral("AL-amtl.Lageplan"), QStringLiteral("Eigentümer")}));
    EXPECT_EQ(box->currentText(), QStringLiteral("Kataster ALKIS"));
    box->setCurrentText(QStringLiteral("Eigentümer"));
    ASSERT_EQ(t.M().columnCount(), 3);
    EXPECT_EQ(t.M().headerData(2, Qt::Horizontal).toString(), QStringLiteral("Ort"));
    EXPECT_EQ(
        Einträge(*t.Element<QComboBox>("FlurixSuchenInFeld")),
        (QStringList{QStringLiteral("Name"), QStringLiteral("Straße"), QStringLiteral("Ort")}));
    box->setCurrentText(QStringLiteral("alles"));
    EXPECT_EQ(t.M().headerData(0, Qt::Horizontal).toString(), QStringLiteral("Landkreis"));
    EXPECT_EQ(t.M().columnCount(), static_cast<int>(t.K().Spaltenzahl()));
    // The view change keeps the widths for the next run.
    EXPECT_NE(test::DateiLesen(t.ordner / "benutzer" / "MyApplication.ini").find("[GridFlurix]"),
              std::string::npos);
}

TEST_F(Fenster, SpaltenbreitenWerdenBeimBeendenGesichertUndBeimStartGelesen) {
    test::Hauptfenster erstes;
    erstes.zustand.auftrag.StillModus = true; // no question on the way out
    QTableView& grid = *erstes.fenster.Grid();
    const int gemarkung =
        erstes.fenster.Modell().Abschnitt(*erstes.fenster.Tabelle().SpaltenIndex("Gemarkung"));
    grid.horizontalHeader()->resizeSection(gemarkung, 211);
    const int twips =
        erstes.fenster.Tabelle().Spalte(*erstes.fenster.Tabelle().SpaltenIndex("Gemarkung")).breite;
    EXPECT_NE(twips, 1200) << "a width the user drags goes into the table";
    ASSERT_TRUE(erstes.fenster.BeendenKlick());
    const std::string ini = test::DateiLesen(erstes.ordner / "benutzer" / "MyApplication.ini");
    EXPECT_NE(ini.find("[GridFlurix]\nColWidths="), std::string::npos) << ini;
    EXPECT_NE(ini.find(";Gemarkung:" + std::to_string(twips) + ";"), std::string::npos) << ini;

    test::Hauptfenster zweites;
    zweites.fenster.BenutzerordnerSetzen(erstes.ordner / "benutzer");
    zweites.fenster.Starten();
    EXPECT_EQ(zweites.fenster.Tabelle()
                  .Spalte(*zweites.fenster.Tabelle().SpaltenIndex("Gemarkung"))
                  .breite,
              twips);
    EXPECT_NEAR(zweites.fenster.Grid()->columnWidth(gemarkung), 211, 1);
}

// "Spalten minimieren" narrows every shown column to its caption and shades Flurstück; "Spalten-
// breiten anpassen" widens each to its widest text again. Both keep the widths for the next run.
TEST_F(Fenster, SpaltenMinimierenUndBreitenAnpassen) {
    Tabellenfenster t;
    t.K().Spalte(*t.K().SpaltenIndex("Flurstück")).schattiert = false;
    const QFontMetrics zellen = t.Grid().fontMetrics();
    const QFontMetrics köpfe = t.Grid().horizontalHeader()->fontMetrics();
    const auto breiteste = [&](int abschnitt) {
        int breite = köpfe.horizontalAdvance(t.M().headerData(abschnitt, Qt::Horizontal).toString());
        for (int z = 0; z < t.M().rowCount(); ++z)
            breite = std::max(breite, zellen.horizontalAdvance(t.M().index(z, abschnitt).data().toString()));
        return breite;
    };
    const int name = t.Abschnitt("Name");
    const int flurstück = t.Abschnitt("Flurstück");

    t.Auslösen("ALBDatenSpalteMin");
    EXPECT_TRUE(t.M().index(0, flurstück).data(Qt::BackgroundRole).isValid()) << "shaded";
    for (int a = 0; a < t.M().columnCount(); ++a)
        EXPECT_GE(t.Grid().columnWidth(a),
                  köpfe.horizontalAdvance(t.M().headerData(a, Qt::Horizontal).toString()))
            << "the caption stays readable: " << a;
    EXPECT_LT(t.Grid().columnWidth(name), breiteste(name)) << "names are cut";
    const auto ini = t.ordner / "benutzer" / "MyApplication.ini";
    const auto gespeichert = [&](int abschnitt) {
        const KatasterSpalte& spalte = t.K().Spalte(*t.M().Spalte(abschnitt));
        return test::DateiLesen(ini).find(spalte.schlüssel + ":" + std::to_string(spalte.breite)) !=
               std::string::npos;
    };
    EXPECT_TRUE(gespeichert(name));

    t.Auslösen("ALBbtnDbSpaltenbreite");
    for (int a = 0; a < t.M().columnCount(); ++a) {
        if (a != t.Abschnitt("checkdruck")) {
            EXPECT_GE(t.Grid().columnWidth(a), breiteste(a)) << "shown whole: " << a;
        }
    }
    EXPECT_TRUE(gespeichert(name));
}

TEST_F(Fenster, SpaltenManuellWählen) {
    Tabellenfenster t;
    const std::size_t name = *t.K().SpaltenIndex("Name");
    const std::size_t ort = *t.K().SpaltenIndex("Ort");
    Dialoghelfer<FormALBAnsicht> wählen([&](FormALBAnsicht& dialog) {
        // The list holds every column, ticked as it is shown.
        EXPECT_EQ(dialog.Spalten().size(), t.K().Spaltenzahl());
        const auto spalten = dialog.Spalten();
        const auto angehakt = dialog.Angehakt();
        for (std::size_t i = 0; i < spalten.size(); ++i)
            EXPECT_EQ(angehakt[i], t.K().Spalte(spalten[i]).sichtbar) << i;
        dialog.Anhaken(name, false);
        dialog.Anhaken(ort, true);
        dialog.accept();
    });
    t.Auslösen("ALBDatenAnsichtManuell");
    ASSERT_TRUE(wählen.gesehen);
    EXPECT_EQ(t.M().Abschnitt(name), -1);
    EXPECT_GE(t.M().Abschnitt(ort), 0);
    EXPECT_EQ(t.M().columnCount(), 7);

    // Cancel changes nothing.
    Dialoghelfer<FormALBAnsicht> abbrechen([&](FormALBAnsicht& dialog) {
        dialog.Anhaken(ort, false);
        dialog.reject();
    });
    t.Auslösen("ALBDatenAnsichtManuell");
    ASSERT_TRUE(abbrechen.gesehen);
    EXPECT_GE(t.M().Abschnitt(ort), 0);
}

TEST_F(Fenster, AnsichtsdateiBearbeitenSichertZuerst) {
    Tabellenfenster t;
    const auto datei = t.zustand.installation.Spaltenansichten();
    t.Auslösen("ALBDatenSpalteEdit");
    ASSERT_EQ(t.geöffnet.size(), 1U);
    EXPECT_EQ(t.geöffnet[0], QUrl::fromLocalFile(QPfad(datei)));
    std::vector<std::filesystem::path> kopien;
    for (const auto& eintrag : std::filesystem::directory_iterator(datei.parent_path()))
        if (eintrag.path().filename().string().starts_with("ALB_DatenbankSpalten.dat_"))
            kopien.push_back(eintrag.path());
    ASSERT_EQ(kopien.size(), 1U);
    EXPECT_EQ(test::DateiLesen(kopien[0]), test::DateiLesen(datei));

    // Without the file there is nothing to copy: the error is shown, nothing opened.
    std::filesystem::remove(datei);
    Beantworter ok;
    t.Auslösen("ALBDatenSpalteEdit");
    EXPECT_EQ(ok.boxen.size(), 1U);
    EXPECT_EQ(t.geöffnet.size(), 1U);
}

TEST_F(Fenster, AnsichtenNeuLesenFolgtDerDatei) {
    Tabellenfenster t;
    QComboBox* box = t.Element<QComboBox>("ComboSpaltenansicht");
    test::DateiSchreiben(t.zustand.installation.Spaltenansichten(),
                         Utf8NachCp1252("Kataster ALKIS=Flurstück;Name\r\nNeu=Ort\r\n"));
    t.Auslösen("ALBDatenSpalteNeu");
    EXPECT_EQ(Einträge(*box),
              (QStringList{QStringLiteral("alles"), QStringLiteral("Kataster ALKIS"),
                           QStringLiteral("Neu")}));
    // The view shown is applied as the file now has it.
    EXPECT_EQ(box->currentText(), QStringLiteral("Kataster ALKIS"));
    EXPECT_EQ(t.M().columnCount(), 2);
    // A view the file no longer has gives way to "alles".
    test::DateiSchreiben(t.zustand.installation.Spaltenansichten(), "Neu=Ort\r\n");
    t.Auslösen("ALBDatenSpalteNeu");
    EXPECT_EQ(box->currentText(), QStringLiteral("alles"));
    EXPECT_EQ(t.M().columnCount(), static_cast<int>(t.K().Spaltenzahl()));
}

// --- half a million rows -------------------------------------------------------------------------

double MsSeit(std::chrono::steady_clock::time_point anfang) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - anfang)
        .count();
}

TEST_F(Fenster, HalbeMillionZeilenLadenUndAnzeigenOhneArbeitJeZeile) {
    constexpr std::size_t Zeilen = 500'000;
    const auto anfang = std::chrono::steady_clock::now();
    Tabellenfenster t(Zeilen);
    const double laden = MsSeit(anfang);
    ASSERT_TRUE(t.geladen) << t.geladen.Meldung();
    ASSERT_EQ(t.M().rowCount(), static_cast<int>(Zeilen));
    t.fenster.resize(1400, 900);
    t.fenster.show();
    QCoreApplication::processEvents();

    // Telling the grid of the new table, with the layout the grid makes of it, costs nothing
    // per row.
    auto schritt = std::chrono::steady_clock::now();
    { KatasterModell::Umbau umbau(t.M()); }
    QCoreApplication::processEvents();
    const double modellSetzen = MsSeit(schritt);

    // A screen of rows: every cell and role the delegate asks for, at the top and at the end.
    const int sichtbar =
        t.Grid().viewport()->height() / t.Grid().verticalHeader()->defaultSectionSize() + 1;
    int gelesen = 0;
    schritt = std::chrono::steady_clock::now();
    for (int oben : {0, static_cast<int>(Zeilen) - sichtbar})
        for (int z = oben; z < oben + sichtbar; ++z)
            for (int s = 0; s < t.M().columnCount(); ++s) {
                const QModelIndex i = t.M().index(z, s);
                for (int rolle :
                     {Qt::DisplayRole, Qt::CheckStateRole, Qt::BackgroundRole,
                      Qt::TextAlignmentRole, Qt::ForegroundRole, Qt::FontRole, Qt::DecorationRole})
                    gelesen += i.data(rolle).isValid();
            }
    const double bildschirm = MsSeit(schritt) / 2;

    // Painting the grid at the end of the table.
    t.Grid().scrollToBottom();
    schritt = std::chrono::steady_clock::now();
    const QPixmap bild = t.Grid().viewport()->grab();
    const double zeichnen = MsSeit(schritt);

    std::cout << "[ Messung ] " << Zeilen << " Zeilen: Laden " << laden << " ms, Modell setzen "
              << modellSetzen << " ms, data() eines Bildschirms (" << sichtbar << " Zeilen) "
              << bildschirm << " ms, Zeichnen " << zeichnen << " ms\n";
    EXPECT_GT(gelesen, sichtbar * t.M().columnCount());
    EXPECT_FALSE(bild.isNull());
    EXPECT_LT(bildschirm, 50.0);
    EXPECT_LT(modellSetzen, 150.0);
    EXPECT_LT(zeichnen, 500.0);
    // Above 5000 rows the Gemarkung box stays empty.
    EXPECT_EQ(t.Element<QComboBox>("FlurixSuchbegriffGemarkung")->count(), 1);
}

} // namespace
} // namespace flurix::gui
