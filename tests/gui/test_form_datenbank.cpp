// The main window with a cadastre table in it (offscreen): loading a saved table, WLDGE and
// Web-XML, the column views, the search bar, the marking group, header sorting, the edit lock,
// deletion, the column widths, a table of half a million rows, and what leaves the window:
// "Speichern unter", the HTML report and the register extract.

#include "core/cp1252.hpp"
#include "core/kataster_datei.hpp"
#include "core/markierung.hpp"
#include "core/oberflaeche_skript.hpp"
#include "export/speichern_unter.hpp"
#include "gui/flurstuecksliste_dialog.hpp"
#include "gui/form_alb_ansicht.hpp"
#include "gui/form_datenbank_darstellung.hpp"
#include "gui/qt_text.hpp"
#include "gui_testhilfen.hpp"
#include "import/tabelle_laden.hpp"
#include "report/registerauszug.hpp"

#include <QAction>
#include <QFileDialog>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include <chrono>
#include <iostream>
#include <set>
#include <sstream>

namespace flurix::gui {
namespace {

using namespace Qt::Literals::StringLiterals;
using test::Beantworter;
using test::Dialoghelfer;
using test::Einträge;
using test::Panel;

/// 120 made-up rows in the catalogue's columns and the default order (see the folder's README).
const std::filesystem::path Testtabelle = test::Testdaten() / "gui" / "testtabelle.fil";

/// A main window with what the tests ask of its table.
struct Fenster : test::Hauptfenster {
    using test::Hauptfenster::Hauptfenster;
    Ergebnis geladen;

    Ergebnis Laden(const std::filesystem::path& pfad, import::Eingabeart art) {
        import::Ladeauftrag auftrag;
        auftrag.dateien = {pfad};
        auftrag.art = art;
        return fenster.Laden(auftrag);
    }
    int Abschnitt(std::string_view schlüssel) {
        return M().Abschnitt(*K().SpaltenIndex(schlüssel));
    }
    std::string Zelle(std::size_t zeile, std::string_view schlüssel) {
        return std::string(K().Zelle(zeile, schlüssel));
    }
    QString Gezeigt(int zeile, std::string_view schlüssel, int rolle = Qt::DisplayRole) {
        return M().index(zeile, Abschnitt(schlüssel)).data(rolle).toString();
    }
    /// The rows the grid shows selected, ascending.
    std::vector<std::size_t> GridAuswahl() {
        std::vector<std::size_t> zeilen;
        for (const QModelIndex& i : Grid().selectionModel()->selectedRows())
            zeilen.push_back(static_cast<std::size_t>(i.row()));
        std::sort(zeilen.begin(), zeilen.end());
        return zeilen;
    }
    void ZeilenWählen(std::initializer_list<int> zeilen,
                      QItemSelectionModel::SelectionFlag art = QItemSelectionModel::Select) {
        for (int z : zeilen)
            Grid().selectionModel()->select(M().index(z, 0), art | QItemSelectionModel::Rows);
    }
    /// The rows whose cell in `spalte` passes `prüfen`; the marked rows by default.
    std::vector<std::size_t>
    Zeilen(std::string_view spalte = "checkdruck",
           const std::function<bool(std::string_view)>& prüfen = IstMarke) {
        std::vector<std::size_t> zeilen;
        for (std::size_t z = 0; z < K().Zeilenzahl(); ++z)
            if (prüfen(K().Zelle(z, spalte)))
                zeilen.push_back(z);
        return zeilen;
    }
    /// Whether the rows stand in the order of these columns' texts, as the grid sorts them.
    bool Sortiert(std::initializer_list<std::string_view> spalten, bool absteigend = false) {
        const auto schlüssel = [&](std::size_t z) {
            std::vector<std::string> s;
            for (std::string_view spalte : spalten)
                s.push_back(Vergleichsform(K().Zelle(z, spalte)));
            return s;
        };
        for (std::size_t z = 1; z < K().Zeilenzahl(); ++z)
            if (absteigend ? schlüssel(z - 1) < schlüssel(z) : schlüssel(z) < schlüssel(z - 1))
                return false;
        return true;
    }
    std::string Ini() { return test::DateiLesen(ordner / "benutzer" / "MyApplication.ini"); }
    /// Each "Gemarkung, Flur" of the table, as the Gemarkung and Flur box offers them.
    std::set<QString> Paare() {
        std::set<QString> paare;
        for (std::size_t z = 0; z < K().Zeilenzahl(); ++z)
            paare.insert(QText(Zelle(z, "Gemarkung") + ", " + Zelle(z, "Flur")));
        return paare;
    }
    /// The pairs the Gemarkung and Flur box offers after its "(alle Gemarkungen)".
    std::set<QString> BoxPaare() {
        QStringList einträge = Einträge(*Element<QComboBox>("FlurixSuchbegriffGemarkung"));
        EXPECT_EQ(einträge.takeFirst(), u"(alle Gemarkungen)"_s);
        EXPECT_EQ(std::set<QString>(einträge.begin(), einträge.end()).size(),
                  static_cast<std::size_t>(einträge.size()));
        return {einträge.begin(), einträge.end()};
    }
};

/// A main window whose views file makes "Kataster ALKIS" (the settings' default view) the chosen
/// view, with a saved table loaded from a copy in its folder.
struct Tabellenfenster : Fenster {
    explicit Tabellenfenster(const std::filesystem::path& quelle = Testtabelle)
        : Fenster("Kataster ALKIS=checkdruck;Gemarkung;Flur;Flurstück;Fläche;Name;"
                  "Flurstückskennzeichen\r\nAL-amtl.Lageplan=checkdruck;ID_GG;Gemarkung;Flur;"
                  "Flurstück;Name\r\nEigentümer=Name;Straße;Ort\r\n") {
        std::filesystem::copy_file(quelle, ordner / "tabelle.fil");
        geladen = Laden(ordner / "tabelle.fil");
    }
    Ergebnis Laden(const std::filesystem::path& pfad) {
        return Fenster::Laden(pfad, import::Eingabeart::Tabelle);
    }
};

// --- loading -------------------------------------------------------------------------------------

TEST(Fenster, GespeicherteTabelleErscheintInDerGewähltenAnsicht) {
    Tabellenfenster t;
    ASSERT_TRUE(t.geladen) << t.geladen.Meldung();
    EXPECT_EQ(t.Grid().model(), &t.M());
    EXPECT_EQ(t.M().rowCount(), 120);
    ASSERT_EQ(t.M().columnCount(), 7);
    EXPECT_EQ(t.M().headerData(0, Qt::Horizontal).toString(), u"×"_s);
    EXPECT_EQ(t.M().headerData(1, Qt::Horizontal).toString(), u"Gemarkung"_s);
    EXPECT_TRUE(t.M().index(0, 0).data(Qt::CheckStateRole).isValid()) << "checkdruck is a box";
    EXPECT_EQ(Panel(t.fenster, 1), u"120 Zeilen eingelesen  "_s);
    EXPECT_TRUE(t.Sortiert({"Gemarkung"})) << "the default order";
    // Rows have one fixed height: the grid places them without asking the model.
    EXPECT_EQ(t.Grid().verticalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
    EXPECT_FALSE(t.Grid().wordWrap());
    EXPECT_FALSE(t.M().Entsperrt()) << "locked after a load";
    EXPECT_FALSE(t.Element<QAction>("btnEntsperren")->isChecked());
    // The search columns are the shown ones but the box, Flurstück chosen.
    const QComboBox& spalten = *t.Element<QComboBox>("FlurixSuchenInFeld");
    EXPECT_EQ(Einträge(spalten), (QStringList{u"Gemarkung"_s, u"Flur"_s, u"Flurstück"_s,
                                              u"Fläche"_s, u"Name"_s, u"Flurstückskennzeichen"_s}));
    EXPECT_EQ(spalten.currentData().toString(), u"Flurstück"_s);
    // Below 5000 rows the Gemarkung and Flur box holds each pair once.
    EXPECT_EQ(t.BoxPaare(), t.Paare());
    EXPECT_TRUE(t.Element<QComboBox>("FlurixSuchbegriffGemarkung")->isEnabled());
    // Fitted columns show their longest text whole.
    for (std::string_view spalte : {"Flurstück", "Flurstückskennzeichen", "Name"})
        for (std::size_t z = 0; z < t.K().Zeilenzahl(); ++z)
            ASSERT_GE(t.Grid().columnWidth(t.Abschnitt(spalte)),
                      t.Grid().fontMetrics().horizontalAdvance(QText(t.K().Zelle(z, spalte))))
                << spalte << z;

    // A file that can't be read replaces nothing: the grid shows the table as it was.
    const auto kaputt = t.ordner / "kaputt.fil";
    test::DateiSchreiben(kaputt, "kein Tabellenkopf\n");
    Beantworter ja; // "überschreiben?" Yes, then the message
    EXPECT_FALSE(t.Laden(kaputt));
    EXPECT_EQ(
        ja.Beschreibungen(),
        (QStringList{u"[Frage] \"Flurix\" [Ja*|Nein]: Soll die vorhandene Datenbank "
                     "überschrieben werden?   "_s,
                     u"[Fehler] \"Flurix\" [OK*]: Während des Lesens der Daten aus der Datei "_s +
                         QPfad(kaputt) + u" ist ein Fehler aufgetreten!"_s}));
    EXPECT_EQ(t.K().Zeilenzahl(), 120U);
    EXPECT_EQ(t.M().rowCount(), 120);
    EXPECT_EQ(t.M().columnCount(), 7);
}

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

/// A main window that has loaded a copy of a WLDGE file (the load may convert line ends in place).
struct WldgeFenster : Fenster {
    std::filesystem::path kopie = ordner / "musterkreis.wldge";

    explicit WldgeFenster(bool komplett, bool vereinfachen = false,
                          const std::string& quelle = test::DateiLesen(Musterkreis)) {
        test::DateiSchreiben(kopie, quelle);
        geladen = Laden(komplett, vereinfachen);
    }
    /// Loads the copy with the options dialog answered: the complete reader or the quick one, one
    /// row per owner, and "Flurstückssuche vereinfachen" as `vereinfachen` says; the boxes of the
    /// load get their default buttons (the question to replace, the notes on the file).
    Ergebnis Laden(bool komplett, bool vereinfachen = false) {
        // The load must leave the grid locked: unlock it first, so that the lock is seen.
        Element<QAction>("btnEntsperren")->setChecked(true);
        Beantworter vorgabe;
        Dialoghelfer<FormDatenbankDarstellung> optionen([&](FormDatenbankDarstellung& dialog) {
            using test::Element;
            Element<QAbstractButton>(dialog, komplett ? "chkAlbKomplett" : "chkAlbTeilweise")
                ->setChecked(true);
            if (!komplett)
                Element<QRadioButton>(dialog, "EigentümerJeFlurstück_0")->setChecked(true);
            Element<QAbstractButton>(dialog, "chkFlurixSuchbegriffGemarkung")
                ->setChecked(vereinfachen);
            Element<QAbstractButton>(dialog, "cmdOK")->click();
        });
        const Ergebnis ergebnis = Fenster::Laden(kopie, import::Eingabeart::Wldge);
        EXPECT_TRUE(optionen.gesehen);
        EXPECT_FALSE(Element<QAction>("btnEntsperren")->isChecked());
        EXPECT_EQ(M().rowCount(), static_cast<int>(K().Zeilenzahl())) << "the model was reset";
        return ergebnis;
    }
};

// The complete reader (one row per parcel) and the quick one (one per owner) replace the table.
// The complete reader fills the Gemarkung and Flur box whatever the size of the table, the quick
// reader when "Flurstückssuche vereinfachen" asks for it, from the columns: the limit of 5000 rows
// and the parcel keys of the option belong to loading a saved table only.
TEST(Fenster, WldgeLeserErsetzenDieTabelleUndFüllenDieGemarkungsbox) {
    struct Fall {
        bool komplett, vereinfachen;
        int kopien;         ///< of the sample's parcels; 0 for the sample itself
        std::size_t zeilen; ///< 0: more than the limit of the box
        bool gefüllt;
    };
    const Fall fälle[] = {{true, false, 0, 6, true},
                          {true, false, 834, 0, true},
                          {false, true, 0, 7, true},
                          {false, true, 1300, 0, true},
                          {false, false, 0, 7, false}};
    for (const Fall& f : fälle) {
        SCOPED_TRACE(testing::Message() << f.komplett << f.vereinfachen << f.kopien);
        WldgeFenster t(f.komplett, f.vereinfachen,
                       f.kopien ? MusterkreisVervielfacht(f.kopien)
                                : test::DateiLesen(Musterkreis));
        ASSERT_TRUE(t.geladen) << t.geladen.Meldung();
        const std::size_t zeilen = t.K().Zeilenzahl();
        EXPECT_TRUE(f.zeilen ? zeilen == f.zeilen : zeilen > import::GemFlurBoxGrenze) << zeilen;
        EXPECT_EQ(t.BoxPaare(), f.gefüllt ? t.Paare() : std::set<QString>{});
        EXPECT_EQ(t.Element<QComboBox>("FlurixSuchbegriffGemarkung")->isEnabled(), f.gefüllt);
        EXPECT_GE(t.Element<QComboBox>("FlurixSuchenInFeld")->findData(u"Flurstück"_s), 0);
    }
    // A second load replaces the rows of the first, they are not doubled.
    WldgeFenster t(true);
    ASSERT_TRUE(t.Laden(false));
    EXPECT_EQ(t.K().Zeilenzahl(), 7U);
}

// A Web-XML file chosen in the dialog asks first whether the table is to be replaced; a No leaves
// it as it is.
TEST(Fenster, WebXmlFragtObErsetztWird) {
    std::size_t xmlZeilen = 0;
    for (const auto antwort : {QMessageBox::Yes, QMessageBox::No}) {
        WldgeFenster t(true);
        const auto datei = t.ordner / "auszug.xml";
        std::filesystem::copy_file(std::filesystem::path(FLURIX_QUELLEN) / "samples" /
                                       "musterstadt_webxml_auszug.xml",
                                   datei);
        Beantworter antworten(antwort);
        Dialoghelfer<FormDatenbankDarstellung> optionen([](FormDatenbankDarstellung& dialog) {
            test::Element<QAbstractButton>(dialog, "cmdOK")->click();
        });
        EXPECT_EQ(static_cast<bool>(t.Fenster::Laden(datei, import::Eingabeart::WebXml)),
                  antwort == QMessageBox::Yes);
        EXPECT_EQ(antworten.Beschreibungen(),
                  QStringList{u"[Frage] \"Flurix\" [Ja*|Nein]: Soll die vorhandene Datenbank "
                              "überschrieben werden?   "_s});
        if (antwort == QMessageBox::Yes)
            xmlZeilen = t.K().Zeilenzahl(); // replaced: the extract's rows alone
        ASSERT_GT(xmlZeilen, 0U);
        EXPECT_EQ(t.K().Zeilenzahl(), antwort == QMessageBox::Yes ? xmlZeilen : 6U);
        EXPECT_EQ(t.M().rowCount(), static_cast<int>(t.K().Zeilenzahl()));
    }
}

// --- search and selection ------------------------------------------------------------------------

TEST(Fenster, SuchenWähltDieTrefferImGridUndZeigtDenErsten) {
    Tabellenfenster t;
    // The parcel of the last row, typed as a person would: without zeros.
    const std::size_t vorlage = t.K().Zeilenzahl() - 1;
    const std::string flurstück = t.Zelle(vorlage, "Flurstück");
    std::string begriff = t.Zelle(vorlage, "Flurstück-Zähler");
    if (!t.Zelle(vorlage, "Flurstück-Nenner").empty())
        begriff += "/" + t.Zelle(vorlage, "Flurstück-Nenner");
    QLineEdit& suchbegriff = *t.Element<QLineEdit>("FlurixSuchbegriff");
    suchbegriff.setText(QText(begriff));
    t.Element<QPushButton>("cmdFlurixSuchen")->click();
    const auto erwartet = t.Zeilen("Flurstück", [&](std::string_view f) { return f == flurstück; });
    ASSERT_FALSE(erwartet.empty());
    EXPECT_EQ(t.GridAuswahl(), erwartet);
    EXPECT_EQ(t.K().AusgewählteZeilen(), erwartet);
    EXPECT_EQ(Panel(t.fenster, 1), QString::number(erwartet.size()) + u" Zeile(n) selektiert  "_s);
    EXPECT_EQ(t.Grid().currentIndex().row(), static_cast<int>(erwartet.front()));

    // Within one Gemarkung and Flur only its rows count.
    const QString paar =
        QText(t.Zelle(erwartet[0], "Gemarkung") + ", " + t.Zelle(erwartet[0], "Flur"));
    QComboBox& gemarkung = *t.Element<QComboBox>("FlurixSuchbegriffGemarkung");
    gemarkung.setCurrentText(paar);
    ASSERT_EQ(gemarkung.currentText(), paar);
    QMetaObject::invokeMethod(&suchbegriff, "returnPressed");
    const std::vector<std::size_t> imPaar = t.GridAuswahl();
    ASSERT_FALSE(imPaar.empty());
    EXPECT_LE(imPaar.size(), erwartet.size());
    for (std::size_t z : imPaar)
        EXPECT_EQ(QText(t.Zelle(z, "Flurstück") + " " + t.Zelle(z, "Gemarkung") + ", " +
                        t.Zelle(z, "Flur")),
                  QText(flurstück + " ") + paar);

    // Not found: the message names the term as the search filled it up.
    gemarkung.setCurrentIndex(0);
    suchbegriff.setText(u"99999"_s);
    {
        Beantworter ok;
        EXPECT_EQ(t.fenster.Suchen(), 0U);
        EXPECT_EQ(ok.Texte(),
                  QStringList{u"Der Suchbegriff <99999/0000> wurde nicht gefunden!   "_s});
        EXPECT_TRUE(t.GridAuswahl().empty());
    }
    // What the person selects in the grid is the table's selection.
    t.ZeilenWählen({2, 3, 4});
    EXPECT_EQ(t.K().AusgewählteZeilen(), (std::vector<std::size_t>{2, 3, 4}));
    EXPECT_EQ(Panel(t.fenster, 1), u"3 Zeile(n) selektiert  "_s);
    t.ZeilenWählen({3}, QItemSelectionModel::Deselect);
    EXPECT_EQ(t.K().AusgewählteZeilen(), (std::vector<std::size_t>{2, 4}));
    EXPECT_EQ(Panel(t.fenster, 1), u"2 Zeile(n) selektiert  "_s);
    t.Grid().selectAll();
    EXPECT_EQ(t.K().AnzahlAusgewählt(), t.K().Zeilenzahl());
}

// --- the marking group ---------------------------------------------------------------------------

TEST(Fenster, MarkierungsgruppeMarkiertLöschtUndNummeriert) {
    Tabellenfenster t;
    t.ZeilenWählen({3, 4});
    t.Auslösen("btnDbMarkierungErzeugen");
    EXPECT_EQ(t.Zeilen(), (std::vector<std::size_t>{3, 4}));
    EXPECT_EQ(Panel(t.fenster, 1), u"alle Markierungen erzeugt  "_s);
    t.Auslösen("btnDbMarkerErzeugen");
    EXPECT_EQ(Panel(t.fenster, 1), u"alle Marker erzeugt  "_s);
    t.Auslösen("btnDbMarkierungAlle");
    EXPECT_EQ(Panel(t.fenster, 1), u"alle Zeilen markiert  "_s);
    EXPECT_EQ(t.Zeilen().size(), t.K().Zeilenzahl());
    EXPECT_EQ(t.Gezeigt(119, "checkdruck", Qt::CheckStateRole).toInt(), Qt::Checked);
    for (const auto antwort : {QMessageBox::No, QMessageBox::Yes}) {
        Beantworter beantworter(antwort);
        t.Auslösen("btnDbMarkierungLöschen");
        EXPECT_EQ(beantworter.Texte(),
                  QStringList{u"Es werden alle Markierungen und Marker gelöscht! Weiter?   "_s});
        EXPECT_EQ(t.Zeilen().size(), antwort == QMessageBox::No ? t.K().Zeilenzahl() : 0U);
    }
    EXPECT_EQ(t.Gezeigt(0, "checkdruck", Qt::CheckStateRole).toInt(), Qt::Unchecked);
    EXPECT_EQ(Panel(t.fenster, 1), u"alle Markierungen gelöscht  "_s);

    // A parcel with three owners, chosen by its last row: all its rows are marked.
    const std::size_t dritter =
        t.Zeilen("Eigentümerposition", [](std::string_view p) { return p == "0003"; }).at(0);
    const std::string fkz = t.Zelle(dritter, "Flurstückskennzeichen");
    const auto parzelle =
        t.Zeilen("Flurstückskennzeichen", [&](std::string_view f) { return f == fkz; });
    ASSERT_EQ(parzelle.size(), 3U);
    t.Grid().clearSelection();
    t.ZeilenWählen({static_cast<int>(dritter)});
    t.Auslösen("btnDbFlurstückMarkieren");
    EXPECT_EQ(t.GridAuswahl(), parzelle);
    EXPECT_EQ(t.Zeilen(), parzelle);
    EXPECT_EQ(Panel(t.fenster, 2), u"3 Markierungen erzeugt  "_s);

    // The site plan's view numbers the clicks from 1 again.
    t.fenster.Nummerierung().Weiterzählen();
    t.Auslösen("btnDbEigentümerGGStempel");
    EXPECT_EQ(t.Element<QComboBox>("ComboSpaltenansicht")->currentText(), u"AL-amtl.Lageplan"_s);
    EXPECT_EQ(t.fenster.Nummerierung().StempelNr(), 0);
    ASSERT_GE(t.Abschnitt("ID_GG"), 0) << "the view shows the numbers";
    for (int zeile : {7, 2})
        ASSERT_TRUE(t.M().setData(t.M().index(zeile, t.Abschnitt("checkdruck")),
                                  static_cast<int>(Qt::Checked), Qt::CheckStateRole));
    EXPECT_EQ(t.Zelle(7, "ID_GG") + t.Zelle(2, "ID_GG"), "12");
    EXPECT_EQ(t.Gezeigt(7, "ID_GG"), u"1"_s);
}

TEST(Fenster, FlurstückslisteÜberDenDialogLadenUndMarkierteSpeichern) {
    Tabellenfenster t;
    t.zustand.auftrag.AuftragsPfad = t.ordner.pfad().string();
    // Two parcels of the table, in two of the list's forms, and one that isn't there.
    const std::string a = t.Zelle(10, "Flurstückskennzeichen");
    const std::string b = t.Zelle(60, "Flurstückskennzeichen");
    const std::string liste = (t.ordner / "auftrag.lst").string();
    test::DateiSchreiben(liste, a + "\r\n" + b.substr(0, 2) + "-" + b.substr(2, 4) + "-" +
                                    b.substr(6, 3) + "-" + b.substr(9, 5) + "/" + b.substr(14, 4) +
                                    "\r\n12999900100001000100\r\n");
    QString formattext, startordner;
    QStringList filter;
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
    EXPECT_TRUE(formattext.contains(u"\"121955 7 231/1\""_s));
    EXPECT_EQ(filter, (QStringList{u"FKZ (*.lst)"_s, u"Flurstücksformat (*.prn)"_s,
                                   u"alle Daten (*.*)"_s}));
    EXPECT_EQ(startordner, QPfad(t.ordner.pfad()));
    // The found rows are marked, selected and stand at the top.
    const auto treffer = t.Zeilen("Flurstückskennzeichen",
                                  [&](std::string_view fkz) { return fkz == a || fkz == b; });
    ASSERT_GE(treffer.size(), 2U);
    EXPECT_EQ(treffer.back(), treffer.size() - 1) << "marked rows first";
    EXPECT_EQ(t.Zeilen(), treffer);
    EXPECT_EQ(t.K().AusgewählteZeilen(), treffer);
    EXPECT_EQ(t.GridAuswahl(), treffer);
    EXPECT_EQ(Panel(t.fenster, 2), u"1 Flurstücken nicht gefunden "_s);
    EXPECT_NE(test::DateiLesen(liste + ".err").find("12999900100001000100"), std::string::npos);

    // Saved, the marked rows give each parcel's key once.
    t.ZeilenWählen({50});
    t.Auslösen("btnDbMarkierungErzeugen");
    const std::string name = (t.ordner / "markiert").string();
    Dialoghelfer<QFileDialog> speichern([&](QFileDialog& dialog) {
        dialog.selectFile(QString::fromStdString(name));
        static_cast<QDialog&>(dialog).accept();
    });
    Beantworter ok;
    t.Auslösen("btnDbMarkierungSpeichern");
    ASSERT_TRUE(speichern.gesehen);
    EXPECT_EQ(ok.Texte(), QStringList{QText("Markierte Daten wurden unter: " + name +
                                            ".lst abgespeichert!   ")});
    std::string erwartet, letzter;
    for (std::size_t z : t.Zeilen()) {
        const std::string fkz = t.Zelle(z, "Flurstückskennzeichen");
        if (fkz != std::exchange(letzter, fkz))
            erwartet += fkz + "\r\n";
    }
    ASSERT_NE(erwartet.find(t.Zelle(50, "Flurstückskennzeichen")), std::string::npos);
    EXPECT_EQ(test::DateiLesen(name + ".lst"), erwartet);
}

// --- header sort, edit lock, deletion, number format ---------------------------------------------

TEST(Fenster, KopfklickSortiertUndMehrfachsortierungBautDieListeAusKopfklicks) {
    Tabellenfenster t;
    QHeaderView* kopf = t.Grid().horizontalHeader();
    const auto klick = [&](std::string_view spalte) {
        emit kopf->sectionClicked(t.Abschnitt(spalte));
    };
    klick("Name");
    EXPECT_TRUE(t.Sortiert({"Name"}));
    EXPECT_TRUE(kopf->isSortIndicatorShown());
    EXPECT_EQ(kopf->sortIndicatorSection(), t.Abschnitt("Name"));
    EXPECT_EQ(kopf->sortIndicatorOrder(), Qt::AscendingOrder);
    klick("Name");
    EXPECT_TRUE(t.Sortiert({"Name"}, true));
    EXPECT_EQ(kopf->sortIndicatorOrder(), Qt::DescendingOrder);
    // Work that sorts the table its own way takes the mark away.
    {
        Beantworter ok; // in case nothing is found
        t.Element<QLineEdit>("FlurixSuchbegriff")->setText(QText(t.Zelle(0, "Flurstück-Zähler")));
        t.fenster.Suchen();
    }
    EXPECT_FALSE(kopf->isSortIndicatorShown());
    klick("Name");
    EXPECT_EQ(kopf->sortIndicatorOrder(), Qt::AscendingOrder) << "a new sort starts ascending";

    t.Auslösen("btnMehrfachsortierung");
    for (const char* spalte : {"Name", "Fläche", "Name"}) // a key twice can't change the order
        klick(spalte);
    EXPECT_EQ(t.fenster.Mehrfachsortierung().Text(), "Name,Fläche");
    EXPECT_TRUE(t.Sortiert({"Name", "Fläche"}));
    EXPECT_FALSE(kopf->isSortIndicatorShown());
    EXPECT_EQ(kopf->toolTip(), u"Sortierung: Name,Fläche"_s);
    emit kopf->customContextMenuRequested(QPoint(5, 5));
    EXPECT_EQ(t.fenster.Mehrfachsortierung().Text(), "Name");
    emit kopf->customContextMenuRequested(QPoint(5, 5));
    emit kopf->customContextMenuRequested(QPoint(5, 5));
    EXPECT_TRUE(t.fenster.Mehrfachsortierung().Leer());
    // Off again: a click sorts by its column alone, and the list starts empty next time.
    t.Auslösen("btnMehrfachsortierung");
    klick("Gemarkung");
    EXPECT_TRUE(t.fenster.Mehrfachsortierung().Leer());
    EXPECT_EQ(kopf->sortIndicatorSection(), t.Abschnitt("Gemarkung"));
}

TEST(Fenster, EntfernenLöschtNurBeiEntsperrterTabelleUndZahlenformatZeigtZahlenOhneNullen) {
    Tabellenfenster t;
    const std::string zweite = t.K().ZeileAlsText(1);
    t.ZeilenWählen({0});
    QKeyEvent entfernen(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier);
    {
        Beantworter keine;
        QCoreApplication::sendEvent(&t.Grid(), &entfernen);
        EXPECT_TRUE(keine.boxen.empty());
        EXPECT_EQ(t.M().rowCount(), 120);
    }
    t.Auslösen("btnEntsperren");
    EXPECT_TRUE(t.M().Entsperrt());
    {
        Beantworter ja(QMessageBox::Yes);
        QCoreApplication::sendEvent(&t.Grid(), &entfernen);
        EXPECT_EQ(ja.Beschreibungen(),
                  QStringList{u"[Frage] \"Löschen\" [Ja*|Nein]: Datensatz löschen?   "_s});
        EXPECT_EQ(t.M().rowCount(), 119);
        EXPECT_EQ(t.K().ZeileAlsText(0), zweite);
    }

    const std::string flur = t.Zelle(0, "Flur");
    for (const auto antwort : {QMessageBox::No, QMessageBox::Yes}) {
        Beantworter beantworter(antwort);
        t.Auslösen("btnStempelPlus");
        EXPECT_EQ(beantworter.boxen.size(), 1U);
        EXPECT_EQ(t.Gezeigt(0, "Flur"),
                  antwort == QMessageBox::No ? QText(flur) : QString::number(std::stoi(flur)));
    }
    EXPECT_FALSE(t.Gezeigt(0, "Flurstück").startsWith(u'0')) << Utf8(t.Gezeigt(0, "Flurstück"));
}

// --- views and widths ----------------------------------------------------------------------------

TEST(Fenster, AnsichtenAusBoxDateiUndDialog) {
    Tabellenfenster t;
    // As the start-up leaves it: "alles", built in, before the views of the file; the view of
    // the settings (here their default) chosen.
    QComboBox* box = t.Element<QComboBox>("ComboSpaltenansicht");
    EXPECT_EQ(Einträge(*box), (QStringList{u"alles"_s, u"Kataster ALKIS"_s, u"AL-amtl.Lageplan"_s,
                                           u"Eigentümer"_s}));
    EXPECT_EQ(box->currentText(), u"Kataster ALKIS"_s);
    box->setCurrentText(u"Eigentümer"_s);
    ASSERT_EQ(t.M().columnCount(), 3);
    EXPECT_EQ(t.M().headerData(2, Qt::Horizontal).toString(), u"Ort"_s);
    EXPECT_EQ(Einträge(*t.Element<QComboBox>("FlurixSuchenInFeld")),
              (QStringList{u"Name"_s, u"Straße"_s, u"Ort"_s}));
    box->setCurrentText(u"alles"_s);
    EXPECT_EQ(t.M().headerData(0, Qt::Horizontal).toString(), u"Landkreis"_s);
    EXPECT_EQ(t.M().columnCount(), static_cast<int>(t.K().Spaltenzahl()));
    EXPECT_NE(t.Ini().find("[GridFlurix]"), std::string::npos) << "widths kept for the next run";

    // Chosen by hand: the list holds every column, ticked as it is shown; Cancel changes nothing.
    box->setCurrentText(u"Kataster ALKIS"_s);
    const std::size_t name = *t.K().SpaltenIndex("Name"), ort = *t.K().SpaltenIndex("Ort");
    for (const bool ok : {true, false}) {
        Dialoghelfer<FormALBAnsicht> wählen([&](FormALBAnsicht& dialog) {
            const auto spalten = dialog.Spalten();
            EXPECT_EQ(spalten.size(), t.K().Spaltenzahl());
            for (std::size_t i = 0; i < spalten.size(); ++i)
                EXPECT_EQ(dialog.Angehakt()[i], t.K().Spalte(spalten[i]).sichtbar) << i;
            dialog.Anhaken(name, !ok);
            dialog.Anhaken(ort, ok);
            ok ? dialog.accept() : dialog.reject();
        });
        t.Auslösen("ALBDatenAnsichtManuell");
        ASSERT_TRUE(wählen.gesehen);
        EXPECT_EQ(t.M().Abschnitt(name), -1);
        EXPECT_GE(t.M().Abschnitt(ort), 0);
        EXPECT_EQ(t.M().columnCount(), 7);
    }

    // The file is copied before it is opened for editing; without it, an error and nothing opened.
    const auto datei = t.zustand.installation.Spaltenansichten();
    t.Auslösen("ALBDatenSpalteEdit");
    EXPECT_EQ(t.geöffnet, std::vector{QUrl::fromLocalFile(QPfad(datei))});
    std::vector<std::filesystem::path> kopien;
    for (const auto& eintrag : std::filesystem::directory_iterator(datei.parent_path()))
        if (eintrag.path().filename().string().starts_with("ALB_DatenbankSpalten.dat_"))
            kopien.push_back(eintrag.path());
    ASSERT_EQ(kopien.size(), 1U);
    EXPECT_EQ(test::DateiLesen(kopien[0]), test::DateiLesen(datei));
    std::filesystem::remove(datei);
    {
        Beantworter ok;
        t.Auslösen("ALBDatenSpalteEdit");
        EXPECT_EQ(ok.boxen.size(), 1U);
        EXPECT_EQ(t.geöffnet.size(), 1U);
    }

    // Read anew, the box follows the file and the view shown is applied as the file has it now;
    // a view the file no longer has gives way to "alles".
    test::DateiSchreiben(datei, Utf8NachCp1252("Kataster ALKIS=Flurstück;Name\r\nNeu=Ort\r\n"));
    t.Auslösen("ALBDatenSpalteNeu");
    EXPECT_EQ(Einträge(*box), (QStringList{u"alles"_s, u"Kataster ALKIS"_s, u"Neu"_s}));
    EXPECT_EQ(box->currentText(), u"Kataster ALKIS"_s);
    EXPECT_EQ(t.M().columnCount(), 2);
    test::DateiSchreiben(datei, "Neu=Ort\r\n");
    t.Auslösen("ALBDatenSpalteNeu");
    EXPECT_EQ(box->currentText(), u"alles"_s);
    EXPECT_EQ(t.M().columnCount(), static_cast<int>(t.K().Spaltenzahl()));
}

TEST(Fenster, SpaltenbreitenWerdenBeimBeendenGesichertUndBeimStartGelesen) {
    test::Hauptfenster erstes, zweites;
    erstes.zustand.auftrag.StillModus = true; // no question on the way out
    const int gemarkung = erstes.M().Abschnitt(*erstes.K().SpaltenIndex("Gemarkung"));
    erstes.Grid().horizontalHeader()->resizeSection(gemarkung, 211);
    const int twips = erstes.K().Spalte(*erstes.K().SpaltenIndex("Gemarkung")).breite;
    EXPECT_NE(twips, 1200) << "a width the user drags goes into the table";
    ASSERT_TRUE(erstes.fenster.BeendenKlick());
    const std::string ini = test::DateiLesen(erstes.ordner / "benutzer" / "MyApplication.ini");
    EXPECT_NE(ini.find("[GridFlurix]\nColWidths="), std::string::npos) << ini;
    EXPECT_NE(ini.find(";Gemarkung:" + std::to_string(twips) + ";"), std::string::npos) << ini;

    zweites.fenster.BenutzerordnerSetzen(erstes.ordner / "benutzer");
    zweites.fenster.Starten();
    EXPECT_EQ(zweites.K().Spalte(*zweites.K().SpaltenIndex("Gemarkung")).breite, twips);
    EXPECT_NEAR(zweites.Grid().columnWidth(gemarkung), 211, 1);
}

// "Spalten minimieren" narrows every shown column to its caption and shades Flurstück; "Spalten-
// breiten anpassen" widens each to its widest text again. Both keep the widths for the next run.
TEST(Fenster, SpaltenMinimierenUndBreitenAnpassen) {
    Tabellenfenster t;
    t.K().Spalte(*t.K().SpaltenIndex("Flurstück")).schattiert = false;
    const auto kopf = [&](int a) {
        return t.Grid().horizontalHeader()->fontMetrics().horizontalAdvance(
            t.M().headerData(a, Qt::Horizontal).toString());
    };
    const auto breiteste = [&](int a) {
        int breite = kopf(a);
        for (int z = 0; z < t.M().rowCount(); ++z)
            breite = std::max(breite, t.Grid().fontMetrics().horizontalAdvance(
                                          t.M().index(z, a).data().toString()));
        return breite;
    };
    const int name = t.Abschnitt("Name");
    const auto gespeichert = [&] {
        return t.Ini().find("Name:" + std::to_string(t.K().Spalte(*t.M().Spalte(name)).breite)) !=
               std::string::npos;
    };
    t.Auslösen("ALBDatenSpalteMin");
    EXPECT_TRUE(t.M().index(0, t.Abschnitt("Flurstück")).data(Qt::BackgroundRole).isValid());
    for (int a = 0; a < t.M().columnCount(); ++a)
        EXPECT_GE(t.Grid().columnWidth(a), kopf(a)) << "the caption stays readable: " << a;
    EXPECT_LT(t.Grid().columnWidth(name), breiteste(name)) << "names are cut";
    EXPECT_TRUE(gespeichert());
    t.Auslösen("ALBbtnDbSpaltenbreite");
    for (int a = 0; a < t.M().columnCount(); ++a)
        EXPECT_TRUE(a == t.Abschnitt("checkdruck") || t.Grid().columnWidth(a) >= breiteste(a))
            << "shown whole: " << a;
    EXPECT_TRUE(gespeichert());
}

// --- half a million rows -------------------------------------------------------------------------

TEST(Fenster, HalbeMillionZeilenLadenUndAnzeigenOhneArbeitJeZeile) {
    constexpr int Zeilen = 500'000;
    const auto ms = [](const std::function<void()>& tun) {
        const auto anfang = std::chrono::steady_clock::now();
        tun();
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - anfang)
            .count();
    };
    test::TempOrdner ordner;
    Kataster groß;
    KatasterLaden(groß, Testtabelle);
    for (std::size_t vorlage = groß.Zeilenzahl(); groß.Zeilenzahl() < Zeilen;)
        groß.ZeileHinzufügen(groß.ZeileAlsText(groß.Zeilenzahl() % vorlage));
    KatasterSpeichern(groß, ordner / "groß.fil");
    std::optional<Tabellenfenster> fenster;
    const double laden = ms([&] { fenster.emplace(ordner / "groß.fil"); });
    Tabellenfenster& t = *fenster;
    ASSERT_TRUE(t.geladen) << t.geladen.Meldung();
    ASSERT_EQ(t.M().rowCount(), Zeilen);
    t.fenster.resize(1400, 900);
    t.fenster.show();
    QCoreApplication::processEvents();

    // Telling the grid of the new table, with the layout the grid makes of it, costs nothing
    // per row; so does a screen of rows with every role the delegate asks for, at the top and at
    // the end, and painting the grid at the end.
    const double modellSetzen = ms([&] {
        { KatasterModell::Umbau umbau(t.M()); }
        QCoreApplication::processEvents();
    });
    const int sichtbar =
        t.Grid().viewport()->height() / t.Grid().verticalHeader()->defaultSectionSize() + 1;
    int gelesen = 0;
    const double bildschirm =
        ms([&] {
            for (int oben : {0, Zeilen - sichtbar})
                for (int z = oben; z < oben + sichtbar; ++z)
                    for (int s = 0; s < t.M().columnCount(); ++s)
                        for (int rolle : {Qt::DisplayRole, Qt::CheckStateRole, Qt::BackgroundRole,
                                          Qt::TextAlignmentRole, Qt::ForegroundRole, Qt::FontRole,
                                          Qt::DecorationRole})
                            gelesen += t.M().index(z, s).data(rolle).isValid();
        }) /
        2;
    t.Grid().scrollToBottom();
    QPixmap bild;
    const double zeichnen = ms([&] { bild = t.Grid().viewport()->grab(); });

    std::cout << "[ Messung ] " << Zeilen << " Zeilen: Laden " << laden << " ms, Modell setzen "
              << modellSetzen << " ms, data() eines Bildschirms (" << sichtbar << " Zeilen) "
              << bildschirm << " ms, Zeichnen " << zeichnen << " ms\n";
    EXPECT_GT(gelesen, sichtbar * t.M().columnCount());
    EXPECT_FALSE(bild.isNull());
    EXPECT_LT(bildschirm, 50.0);
    EXPECT_LT(modellSetzen, 150.0);
    EXPECT_LT(zeichnen, 500.0);
    EXPECT_EQ(t.Element<QComboBox>("FlurixSuchbegriffGemarkung")->count(), 1)
        << "above 5000 rows the Gemarkung box stays empty";
}

// --- output --------------------------------------------------------------------------------------

TEST(Fenster, SpeichernUnterBerichtUndAuszug) {
    WldgeFenster t(true);
    ASSERT_TRUE(t.geladen);
    // "Excel-TAB": the caption line holds the visible columns' captions in the order shown, each
    // line ends with separators, six data lines follow. The file is named from the save stem: a
    // folder without dots keeps it predictable.
    const std::filesystem::path ziel = t.ordner / "ausgabe" / "tabelle.txt";
    std::filesystem::create_directories(ziel.parent_path());
    {
        Beantworter ja(QMessageBox::Yes);
        const Ergebnis ergebnis = t.fenster.SpeichernUnter(u"Excel-TAB (*.txt)"_s, ziel);
        ASSERT_TRUE(ergebnis) << ergebnis.Meldung();
    }
    const std::string inhalt = test::DateiLesen(ziel);
    const std::string kopf = inhalt.substr(0, inhalt.find_first_of("\r\n"));
    std::string erwartet;
    for (int abschnitt = 0; abschnitt < t.M().columnCount(); ++abschnitt)
        if (const KatasterSpalte& spalte = t.K().Spalte(*t.M().Spalte(abschnitt));
            !spalte.kontrollkästchen)
            erwartet += (erwartet.empty() ? "" : "\t") + spalte.überschrift;
    ASSERT_FALSE(erwartet.empty());
    EXPECT_EQ(kopf.substr(0, kopf.find_last_not_of('\t') + 1), Utf8NachCp1252(erwartet));
    EXPECT_EQ(std::count(inhalt.begin(), inhalt.end(), '\n'), 7) << inhalt;
    // A filter of no format saves nothing.
    EXPECT_FALSE(t.fenster.SpeichernUnter(u"PDF (*.pdf)"_s, t.ordner / "ausgabe.txt"));
    EXPECT_FALSE(std::filesystem::exists(t.ordner / "ausgabe.txt"));

    // While an export reads the table, status panel 2 shows how far, a step for each row.
    ausgabe::Speicherumgebung umgebung;
    umgebung.arbeitsverzeichnis = t.zustand.arbeitsverzeichnis;
    const std::pair<int, std::string_view> fälle[] = {// format (0: the HTML report), text
                                                      {2, "% ausgelesen  "},
                                                      {5, "% ausgelesen  "},
                                                      {7, "% exportiert  "},
                                                      {0, "% ausgelesen  "}};
    for (const auto& [format, text] : fälle) {
        SCOPED_TRACE(format);
        SkriptOberfläche ui;
        const auto datei = t.ordner / ("fortschritt" + std::to_string(format));
        ASSERT_TRUE(format > 0 ? ausgabe::ALBDatenSpeichernUnter(
                                     t.K(), static_cast<ausgabe::Speicherformat>(format), datei,
                                     umgebung, ui)
                               : ausgabe::CreateGridReport(t.K(), datei, ui));
        std::vector<std::string> schritte;
        for (const Ereignis& e : ui.Ereignisse())
            if (e.art == Ereignis::Art::Status && e.panel == 2 && e.text.ends_with(text))
                schritte.push_back(e.text.substr(0, e.text.size() - text.size()));
        EXPECT_EQ(schritte, (std::vector<std::string>{"16", "33", "50", "66", "83", "100"}));
    }

    // The report, written and opened in the browser; the register extract of the current row, a
    // PDF in the working folder, opened too.
    const std::filesystem::path bericht = t.ordner / "bericht" / "report.htm";
    ASSERT_TRUE(t.fenster.Bericht(bericht));
    EXPECT_NE(test::DateiLesen(bericht).find("<table"), std::string::npos);
    t.Grid().setCurrentIndex(t.M().index(2, 1));
    const std::filesystem::path pdf = t.fenster.AuszugErstellen();
    EXPECT_EQ(pdf, t.ordner / "arbeit" / report::AuszugDateiname(t.K(), 2));
    EXPECT_EQ(test::DateiLesen(pdf).substr(0, 8), "%PDF-1.1");
    EXPECT_EQ(t.geöffnet,
              (std::vector{QUrl::fromLocalFile(QPfad(bericht)), QUrl::fromLocalFile(QPfad(pdf))}));

    // Without a row nothing is written: the person is told.
    test::Hauptfenster leer;
    Beantworter ok;
    EXPECT_TRUE(leer.fenster.AuszugErstellen().empty());
    EXPECT_EQ(ok.boxen.size(), 1U);
    EXPECT_TRUE(std::filesystem::is_empty(leer.zustand.arbeitsverzeichnis));
    EXPECT_TRUE(leer.geöffnet.empty());
}

} // namespace
} // namespace flurix::gui
