// The main window with a cadastre table in it (offscreen): loads, views, search, marks, sorting,
// the edit lock, column widths, half a million rows, and saving, the report and the extract.

#include "core/cp1252.hpp"
#include "core/kataster_datei.hpp"
#include "core/markierung.hpp"
#include "core/oberflaeche_skript.hpp"
#include "export/speichern_unter.hpp"
#include "gui/flurstuecksliste_dialog.hpp"
#include "gui/form_alb_ansicht.hpp"
#include "gui/form_datenbank_darstellung.hpp"
#include "gui/form_export_gg.hpp"
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
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>

#include <chrono>
#include <set>
#include <sstream>

namespace flurix::gui {
namespace {

using namespace Qt::Literals::StringLiterals;
using test::Beantworter;
using test::Dialoghelfer;
using test::Einträge;
using test::Mitschrift;
using test::Panel;

const std::filesystem::path Testtabelle = test::Testdaten() / "gui" / "testtabelle.fil";

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
    std::vector<std::size_t>
    Zeilen(std::string_view spalte = "checkdruck",
           const std::function<bool(std::string_view)>& prüfen = IstMarke) {
        std::vector<std::size_t> zeilen;
        for (std::size_t z = 0; z < K().Zeilenzahl(); ++z)
            if (prüfen(K().Zelle(z, spalte)))
                zeilen.push_back(z);
        return zeilen;
    }
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
    std::set<QString> Paare() {
        std::set<QString> paare;
        for (std::size_t z = 0; z < K().Zeilenzahl(); ++z)
            paare.insert(QText(Zelle(z, "Gemarkung") + ", " + Zelle(z, "Flur")));
        return paare;
    }
    std::set<QString> BoxPaare() {
        QStringList einträge = Einträge(*Element<QComboBox>("FlurixSuchbegriffGemarkung"));
        EXPECT_EQ(einträge.takeFirst(), u"(alle Gemarkungen)"_s);
        EXPECT_EQ(std::set<QString>(einträge.begin(), einträge.end()).size(),
                  static_cast<std::size_t>(einträge.size()));
        return {einträge.begin(), einträge.end()};
    }
};

/// A window with "Kataster ALKIS" (the settings' default) chosen and a copy of a saved table
/// loaded.
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

TEST(Fenster, GespeicherteTabelleErscheintInDerGewähltenAnsicht) {
    Tabellenfenster t;
    Mitschrift m("tabelle_laden", t.ordner.pfad());
    ASSERT_TRUE(t.geladen) << t.geladen.Meldung();
    EXPECT_EQ(t.Grid().model(), &t.M());
    EXPECT_EQ(t.M().rowCount(), 120);
    ASSERT_EQ(t.M().columnCount(), 7);
    m << t.M().headerData(0, Qt::Horizontal).toString()
      << t.M().headerData(1, Qt::Horizontal).toString();
    EXPECT_TRUE(t.M().index(0, 0).data(Qt::CheckStateRole).isValid()) << "checkdruck is a box";
    m << Panel(t.fenster, 1);
    EXPECT_TRUE(t.Sortiert({"Gemarkung"})) << "the default order";
    EXPECT_EQ(t.Grid().verticalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
    EXPECT_FALSE(t.Grid().wordWrap());
    EXPECT_FALSE(t.M().Entsperrt()) << "locked after a load";
    EXPECT_FALSE(t.Element<QAction>("btnEntsperren")->isChecked());
    const QComboBox& spalten = *t.Element<QComboBox>("FlurixSuchenInFeld");
    m << Einträge(spalten) << spalten.currentData().toString();
    EXPECT_EQ(t.BoxPaare(), t.Paare());
    EXPECT_TRUE(t.Element<QComboBox>("FlurixSuchbegriffGemarkung")->isEnabled());
    for (std::string_view spalte : {"Flurstück", "Flurstückskennzeichen", "Name"})
        for (std::size_t z = 0; z < t.K().Zeilenzahl(); ++z)
            ASSERT_GE(t.Grid().columnWidth(t.Abschnitt(spalte)),
                      t.Grid().fontMetrics().horizontalAdvance(QText(t.K().Zelle(z, spalte))))
                << spalte << z;

    // A file that can't be read replaces nothing.
    const auto kaputt = t.ordner / "kaputt.fil";
    test::DateiSchreiben(kaputt, "kein Tabellenkopf\n");
    Beantworter ja;
    EXPECT_FALSE(t.Laden(kaputt));
    m << ja.Beschreibungen();
    EXPECT_EQ(t.K().Zeilenzahl(), 120U);
    EXPECT_EQ(t.M().rowCount(), 120);
    EXPECT_EQ(t.M().columnCount(), 7);
}

/// Six parcels, seven owner entries.
const std::filesystem::path Musterkreis =
    std::filesystem::path(FLURIX_QUELLEN) / "samples" / "musterkreis_format32.wldge";

/// The sample with its parcels repeated `kopien` times, the copies spread over Flur 1 to 3: a
/// district of many rows with the key blocks of the sample.
std::string MusterkreisVervielfacht(int kopien) {
    std::string vorn, flurstücke, hinten;
    std::istringstream muster(test::DateiLesen(Musterkreis));
    for (std::string zeile; std::getline(muster, zeile);)
        (zeile.starts_with('3') ? flurstücke : flurstücke.empty() ? vorn : hinten) += zeile + '\n';
    std::string text = vorn;
    for (int k = 0; k < kopien; ++k) {
        std::istringstream block(flurstücke);
        for (std::string zeile; std::getline(block, zeile);) {
            char schlüssel[24];
            std::snprintf(schlüssel, sizeof schlüssel, "%03d-%05d", 1 + k % 3,
                          k * 10 + std::stoi(zeile.substr(12, 5)) % 10);
            text += zeile.replace(8, 9, schlüssel) + '\n';
        }
    }
    return text + hinten;
}

/// A window that has loaded a copy of a WLDGE file (the load may convert line ends in place).
struct WldgeFenster : Fenster {
    std::filesystem::path kopie = ordner / "musterkreis.wldge";

    explicit WldgeFenster(bool komplett, bool vereinfachen = false,
                          const std::string& quelle = test::DateiLesen(Musterkreis)) {
        test::DateiSchreiben(kopie, quelle);
        geladen = Laden(komplett, vereinfachen);
    }
    /// Loads the copy with the options dialog answered (the quick reader: one row per owner) and
    /// every box given its default; the load must leave the grid locked again.
    Ergebnis Laden(bool komplett, bool vereinfachen = false) {
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

// The complete reader fills the Gemarkung and Flur box at any size, the quick one when
// "Flurstückssuche vereinfachen" asks for it: the limit of 5000 rows is the saved table's only.
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
    WldgeFenster t(true);
    ASSERT_TRUE(t.Laden(false));
    EXPECT_EQ(t.K().Zeilenzahl(), 7U);
}

TEST(Fenster, WebXmlFragtObErsetztWird) {
    std::size_t xmlZeilen = 0;
    for (const auto antwort : {QMessageBox::Yes, QMessageBox::No}) {
        WldgeFenster t(true);
        Mitschrift m("webxml", t.ordner.pfad());
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
        m << antworten.Beschreibungen();
        if (antwort == QMessageBox::Yes)
            xmlZeilen = t.K().Zeilenzahl();
        ASSERT_GT(xmlZeilen, 0U);
        EXPECT_EQ(t.K().Zeilenzahl(), antwort == QMessageBox::Yes ? xmlZeilen : 6U);
        EXPECT_EQ(t.M().rowCount(), static_cast<int>(t.K().Zeilenzahl()));
    }
}

TEST(Fenster, SuchenWähltDieTrefferImGridUndZeigtDenErsten) {
    Tabellenfenster t;
    Mitschrift m("suchen", t.ordner.pfad());
    // The parcel of the last row, typed without zeros.
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
    m << Panel(t.fenster, 1);
    EXPECT_EQ(t.Grid().currentIndex().row(), static_cast<int>(erwartet.front()));

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

    gemarkung.setCurrentIndex(0);
    suchbegriff.setText(u"99999"_s);
    {
        Beantworter ok;
        EXPECT_EQ(t.fenster.Suchen(), 0U);
        m << ok.Beschreibungen();
        EXPECT_TRUE(t.GridAuswahl().empty());
    }
    t.ZeilenWählen({2, 3, 4});
    EXPECT_EQ(t.K().AusgewählteZeilen(), (std::vector<std::size_t>{2, 3, 4}));
    m << Panel(t.fenster, 1);
    t.ZeilenWählen({3}, QItemSelectionModel::Deselect);
    EXPECT_EQ(t.K().AusgewählteZeilen(), (std::vector<std::size_t>{2, 4}));
    m << Panel(t.fenster, 1);
    t.Grid().selectAll();
    EXPECT_EQ(t.K().AnzahlAusgewählt(), t.K().Zeilenzahl());
}

TEST(Fenster, MarkierungsgruppeMarkiertLöschtUndNummeriert) {
    Tabellenfenster t;
    Mitschrift m("markierungsgruppe", t.ordner.pfad());
    t.ZeilenWählen({3, 4});
    t.Auslösen("btnDbMarkierungErzeugen");
    EXPECT_EQ(t.Zeilen(), (std::vector<std::size_t>{3, 4}));
    m << Panel(t.fenster, 1);
    t.Auslösen("btnDbMarkerErzeugen");
    m << Panel(t.fenster, 1);
    t.Auslösen("btnDbMarkierungAlle");
    m << Panel(t.fenster, 1);
    EXPECT_EQ(t.Zeilen().size(), t.K().Zeilenzahl());
    EXPECT_EQ(t.Gezeigt(119, "checkdruck", Qt::CheckStateRole).toInt(), Qt::Checked);
    for (const auto antwort : {QMessageBox::No, QMessageBox::Yes}) {
        Beantworter beantworter(antwort);
        t.Auslösen("btnDbMarkierungLöschen");
        m << beantworter.Beschreibungen();
        EXPECT_EQ(t.Zeilen().size(), antwort == QMessageBox::No ? t.K().Zeilenzahl() : 0U);
    }
    EXPECT_EQ(t.Gezeigt(0, "checkdruck", Qt::CheckStateRole).toInt(), Qt::Unchecked);
    m << Panel(t.fenster, 1);

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
    m << Panel(t.fenster, 2);

    // The site plan's view numbers the clicks from 1 again.
    t.fenster.Nummerierung().Weiterzählen();
    t.Auslösen("btnDbEigentümerGGStempel");
    m << t.Element<QComboBox>("ComboSpaltenansicht")->currentText();
    EXPECT_EQ(t.fenster.Nummerierung().StempelNr(), 0);
    ASSERT_GE(t.Abschnitt("ID_GG"), 0);
    for (int zeile : {7, 2})
        ASSERT_TRUE(t.M().setData(t.M().index(zeile, t.Abschnitt("checkdruck")),
                                  static_cast<int>(Qt::Checked), Qt::CheckStateRole));
    EXPECT_EQ(t.Zelle(7, "ID_GG") + t.Zelle(2, "ID_GG"), "12");
    EXPECT_EQ(t.Gezeigt(7, "ID_GG"), u"1"_s);
}

TEST(Fenster, FlurstückslisteÜberDenDialogLadenUndMarkierteSpeichern) {
    Tabellenfenster t;
    Mitschrift m("flurstuecksliste", t.ordner.pfad());
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
    m << formattext << filter << startordner;
    const auto treffer = t.Zeilen("Flurstückskennzeichen",
                                  [&](std::string_view fkz) { return fkz == a || fkz == b; });
    ASSERT_GE(treffer.size(), 2U);
    EXPECT_EQ(treffer.back(), treffer.size() - 1) << "marked rows first";
    EXPECT_EQ(t.Zeilen(), treffer);
    EXPECT_EQ(t.K().AusgewählteZeilen(), treffer);
    EXPECT_EQ(t.GridAuswahl(), treffer);
    m << Panel(t.fenster, 2);
    EXPECT_NE(test::DateiLesen(liste + ".err").find("12999900100001000100"), std::string::npos);

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
    m << ok.Beschreibungen();
    std::string erwartet, letzter;
    for (std::size_t z : t.Zeilen()) {
        const std::string fkz = t.Zelle(z, "Flurstückskennzeichen");
        if (fkz != std::exchange(letzter, fkz))
            erwartet += fkz + "\r\n";
    }
    ASSERT_NE(erwartet.find(t.Zelle(50, "Flurstückskennzeichen")), std::string::npos);
    EXPECT_EQ(test::DateiLesen(name + ".lst"), erwartet);
}

TEST(Fenster, KopfklickSortiertUndMehrfachsortierungBautDieListeAusKopfklicks) {
    Tabellenfenster t;
    Mitschrift m("kopfklick");
    QHeaderView* kopf = t.Grid().horizontalHeader();
    const auto klick = [&](std::string_view spalte) {
        emit kopf->sectionClicked(t.Abschnitt(spalte));
    };
    // The header's sort mark, its column and direction, the tooltip and the multiple sort's list.
    const auto zustand = [&] {
        return (kopf->isSortIndicatorShown() ? u"Pfeil "_s : u"ohne "_s) +
               t.M().headerData(kopf->sortIndicatorSection(), Qt::Horizontal).toString() +
               (kopf->sortIndicatorOrder() == Qt::AscendingOrder ? u" auf \""_s : u" ab \""_s) +
               kopf->toolTip() + u"\" "_s + QText(t.fenster.Mehrfachsortierung().Text());
    };
    klick("Name");
    EXPECT_TRUE(t.Sortiert({"Name"}));
    m << zustand();
    klick("Name");
    EXPECT_TRUE(t.Sortiert({"Name"}, true));
    m << zustand();
    // Work that sorts the table its own way takes the mark away.
    {
        Beantworter ok;
        t.Element<QLineEdit>("FlurixSuchbegriff")->setText(QText(t.Zelle(0, "Flurstück-Zähler")));
        t.fenster.Suchen();
    }
    m << zustand();
    klick("Name");
    m << zustand();

    t.Auslösen("btnMehrfachsortierung");
    for (const char* spalte : {"Name", "Fläche", "Name"})
        klick(spalte);
    EXPECT_TRUE(t.Sortiert({"Name", "Fläche"}));
    m << zustand();
    for (int i = 0; i < 3; ++i) {
        emit kopf->customContextMenuRequested(QPoint(5, 5));
        m << zustand();
    }
    t.Auslösen("btnMehrfachsortierung");
    klick("Gemarkung");
    m << zustand();
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
        EXPECT_EQ(ja.Beschreibungen().join(u'\n'),
                  u"[Frage] \"Löschen\" [Ja*|Nein]: Datensatz löschen?   "_s);
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

TEST(Fenster, AnsichtenAusBoxDateiUndDialog) {
    Tabellenfenster t;
    Mitschrift m("ansichten", t.ordner.pfad());
    QComboBox* box = t.Element<QComboBox>("ComboSpaltenansicht");
    m << Einträge(*box) << box->currentText();
    box->setCurrentText(u"Eigentümer"_s);
    ASSERT_EQ(t.M().columnCount(), 3);
    m << t.M().headerData(2, Qt::Horizontal).toString();
    m << Einträge(*t.Element<QComboBox>("FlurixSuchenInFeld"));
    box->setCurrentText(u"alles"_s);
    m << t.M().headerData(0, Qt::Horizontal).toString();
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

    // Read anew: the view shown is applied as the file has it now, or gives way to "alles".
    test::DateiSchreiben(datei, Utf8NachCp1252("Kataster ALKIS=Flurstück;Name\r\nNeu=Ort\r\n"));
    t.Auslösen("ALBDatenSpalteNeu");
    m << Einträge(*box) << box->currentText();
    EXPECT_EQ(t.M().columnCount(), 2);
    test::DateiSchreiben(datei, "Neu=Ort\r\n");
    t.Auslösen("ALBDatenSpalteNeu");
    m << box->currentText();
    EXPECT_EQ(t.M().columnCount(), static_cast<int>(t.K().Spaltenzahl()));
}

TEST(Fenster, SpaltenbreitenWerdenBeimBeendenGesichertUndBeimStartGelesen) {
    test::Hauptfenster erstes, zweites;
    erstes.zustand.auftrag.StillModus = true;
    const int gemarkung = erstes.M().Abschnitt(*erstes.K().SpaltenIndex("Gemarkung"));
    erstes.Grid().horizontalHeader()->resizeSection(gemarkung, 211);
    const int twips = erstes.K().Spalte(*erstes.K().SpaltenIndex("Gemarkung")).breite;
    EXPECT_NE(twips, 1200);
    ASSERT_TRUE(erstes.fenster.BeendenKlick());
    const std::string ini = test::DateiLesen(erstes.ordner / "benutzer" / "MyApplication.ini");
    EXPECT_NE(ini.find("[GridFlurix]\nColWidths="), std::string::npos) << ini;
    EXPECT_NE(ini.find(";Gemarkung:" + std::to_string(twips) + ";"), std::string::npos) << ini;

    zweites.fenster.BenutzerordnerSetzen(erstes.ordner / "benutzer");
    zweites.fenster.Starten();
    EXPECT_EQ(zweites.K().Spalte(*zweites.K().SpaltenIndex("Gemarkung")).breite, twips);
    EXPECT_NEAR(zweites.Grid().columnWidth(gemarkung), 211, 1);
}

// Minimised columns show their captions and Flurstück shaded, fitted ones their widest text; both
// are kept for the next run.
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
        EXPECT_GE(t.Grid().columnWidth(a), kopf(a)) << a;
    EXPECT_LT(t.Grid().columnWidth(name), breiteste(name));
    EXPECT_TRUE(gespeichert());
    t.Auslösen("ALBbtnDbSpaltenbreite");
    for (int a = 0; a < t.M().columnCount(); ++a)
        EXPECT_TRUE(a == t.Abschnitt("checkdruck") || t.Grid().columnWidth(a) >= breiteste(a)) << a;
    EXPECT_TRUE(gespeichert());
}

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
    Tabellenfenster t(ordner / "groß.fil");
    ASSERT_TRUE(t.geladen) << t.geladen.Meldung();
    ASSERT_EQ(t.M().rowCount(), Zeilen);
    t.fenster.resize(1400, 900);
    t.fenster.show();
    QCoreApplication::processEvents();

    // No work per row: resetting the model and its layout, a screen of rows with every role the
    // delegate asks for (top and end), painting the end.
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

    EXPECT_GT(gelesen, sichtbar * t.M().columnCount());
    EXPECT_FALSE(bild.isNull());
    EXPECT_LT(bildschirm, 50.0);
    EXPECT_LT(modellSetzen, 150.0);
    EXPECT_LT(zeichnen, 500.0);
    EXPECT_EQ(t.Element<QComboBox>("FlurixSuchbegriffGemarkung")->count(), 1)
        << "above 5000 rows the Gemarkung box stays empty";
}

TEST(Fenster, SpeichernUnterBerichtUndAuszug) {
    WldgeFenster t(true);
    ASSERT_TRUE(t.geladen);
    // "Excel-TAB": the captions of the shown columns in their order, then six lines.
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
    EXPECT_FALSE(t.fenster.SpeichernUnter(u"PDF (*.pdf)"_s, t.ordner / "ausgabe.txt"));
    EXPECT_FALSE(std::filesystem::exists(t.ordner / "ausgabe.txt"));

    // Status panel 2 shows how far an export has read, a step for each row.
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

    // The report and the current row's extract (in the working folder) are written and opened.
    const std::filesystem::path bericht = t.ordner / "bericht" / "report.htm";
    ASSERT_TRUE(t.fenster.Bericht(bericht));
    EXPECT_NE(test::DateiLesen(bericht).find("<table"), std::string::npos);
    t.Grid().setCurrentIndex(t.M().index(2, 1));
    const std::filesystem::path pdf = t.fenster.AuszugErstellen();
    EXPECT_EQ(pdf, t.ordner / "arbeit" / report::AuszugDateiname(t.K(), 2));
    EXPECT_EQ(test::DateiLesen(pdf).substr(0, 8), "%PDF-1.1");
    EXPECT_EQ(t.geöffnet,
              (std::vector{QUrl::fromLocalFile(QPfad(bericht)), QUrl::fromLocalFile(QPfad(pdf))}));

    test::Hauptfenster leer;
    Beantworter ok;
    EXPECT_TRUE(leer.fenster.AuszugErstellen().empty());
    EXPECT_EQ(ok.boxen.size(), 1U);
    EXPECT_TRUE(std::filesystem::is_empty(leer.zustand.arbeitsverzeichnis));
    EXPECT_TRUE(leer.geöffnet.empty());
}

// "Geograf (*.out)": the dialog, the marks as selection, the question, the file; the next time the
// dialog shows the choice kept, and its cancel writes nothing.
TEST(Fenster, GeografAusgabeÜberDenDialog) {
    WldgeFenster t(true);
    ASSERT_TRUE(t.geladen);
    MarkeSetzen(t.K(), 1, true);
    MarkeSetzen(t.K(), 3, true);
    Mitschrift mitschrift("geograf_dialog", t.ordner.pfad());
    const auto vorkommen = [](const std::string& text, std::string_view was) {
        int n = 0;
        for (auto i = text.find(was); i != std::string::npos; i = text.find(was, i + 1))
            ++n;
        return n;
    };
    const auto listeZeigen = [&](const FormExportGG& d, const char* name) {
        QStringList einträge;
        const auto* liste = test::Element<QListWidget>(d, name);
        for (int i = 0; i < liste->count(); ++i)
            einträge << liste->item(i)->text();
        mitschrift << QStringLiteral("%1: ").arg(QString::fromUtf8(name)) + einträge.join(u'|');
    };
    {
        Beantworter ja(QMessageBox::Yes);
        Dialoghelfer<FormExportGG> dialog([&](FormExportGG& d) {
            listeZeigen(d, "ListAlleSpalten");
            QStringList formen;
            for (const QRadioButton* k : d.findChildren<QRadioButton*>())
                formen << k->objectName() + u'=' + k->text();
            mitschrift << formen.join(u'|');
            test::Element<QAbstractButton>(d, "optAusgabeBeschreibung_3")->click();
            listeZeigen(d, "ListAusgabeSpalten");
            test::Element<QListWidget>(d, "ListAlleSpalten")->setCurrentRow(14);
            test::Element<QLineEdit>(d, "txtGGEbene")->setText(u"5"_s);
            test::Element<QAbstractButton>(d, "cmdWeiter")->click();
        });
        ASSERT_TRUE(t.fenster.SpeichernUnter(u"Geograf (*.out)"_s, t.ordner / "lageplan.txt"));
        EXPECT_TRUE(dialog.gesehen);
        mitschrift << ja.Beschreibungen() << Panel(t.fenster, 2);
    }
    // The two marked rows as stamp A: seven texts, a point and an object each.
    const std::string stempel = test::DateiLesen(t.ordner / "lageplan.out");
    for (const auto& [text, anzahl] : {std::pair{"\nTE", 14}, {"\nPK", 2}, {"\nOO", 2}, {",5.233,", 16}})
        EXPECT_EQ(vorkommen(stempel, text), anzahl) << text;
    EXPECT_EQ(t.K().AnzahlAusgewählt(), 2U);
    {
        Beantworter ja(QMessageBox::Yes);
        Dialoghelfer<FormExportGG> dialog([&](FormExportGG& d) {
            listeZeigen(d, "ListAusgabeSpalten");
            const auto optionen = d.Optionen();
            EXPECT_EQ(optionen.form, ausgabe::GeografForm::StempelA);
            EXPECT_EQ(std::pair(optionen.art, optionen.ebene), std::pair(233, 5));
            test::Element<QAbstractButton>(d, "Command1")->click();
        });
        EXPECT_EQ(t.fenster.SpeichernUnter(u"Geograf (*.out)"_s, t.ordner / "zwei.out").status(),
                  Ergebnis::Status::Abgebrochen);
        EXPECT_TRUE(dialog.gesehen);
        EXPECT_TRUE(ja.boxen.empty());
        EXPECT_FALSE(std::filesystem::exists(t.ordner / "zwei.out"));
    }
    // Without marks every row as a text block; the row without coordinates goes to the ".err".
    for (std::size_t z = 0; z < t.K().Zeilenzahl(); ++z)
        MarkeSetzen(t.K(), z, false);
    t.K().ZelleSetzen(5, "Rechtswert", "");
    t.K().AuswahlLeeren();
    Beantworter ja({QMessageBox::Yes, QMessageBox::Ok});
    Dialoghelfer<FormExportGG> dialog([&](FormExportGG& d) {
        test::Element<QAbstractButton>(d, "optAusgabeBeschreibung_0")->click();
        test::Element<QAbstractButton>(d, "cmdAL")->click();
        listeZeigen(d, "ListAusgabeSpalten");
        test::Element<QAbstractButton>(d, "cmdWeiter")->click();
    });
    ASSERT_TRUE(t.fenster.SpeichernUnter(u"Geograf (*.out)"_s, t.ordner / "text.out"));
    mitschrift << ja.Beschreibungen();

    EXPECT_EQ(vorkommen(test::DateiLesen(t.ordner / "text.out"), "\nTE"), 5);
    mitschrift << Cp1252NachUtf8(test::DateiLesen(t.ordner / "text.out.err"));
}

} // namespace
} // namespace flurix::gui
