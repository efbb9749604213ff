// The NAS work window (offscreen) over the sample district: open, table list, grid with hidden
// columns, filter row, column widths, SQL box, protocol box; the options dialog; Escape during a
// run; a saved database without AP_PTO; hiding and ending; the notice that closes itself.

#include "gui/form_alkis.hpp"

#include "core/benutzereinstellungen.hpp"
#include "core/cp1252.hpp"
#include "core/datenbank.hpp"
#include "core/kataster.hpp"
#include "core/programm.hpp"
#include "gui/form_nas_darstellung.hpp"
#include "gui/nas_filterzeile.hpp"
#include "gui/nas_tabellenmodell.hpp"
#include "gui/qt_text.hpp"
#include "gui_testhilfen.hpp"
#include "nas/nas_abfrage.hpp"
#include "nas/nas_arbeitsbereich.hpp"
#include "nas/nas_datenbank.hpp"
#include "nas/nas_lauf.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/nas_speichern.hpp"

#include <QCheckBox>
#include <QHeaderView>
#include "gemeinsam/nas_installation.hpp"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <QToolBar>

#include <chrono>
#include <tuple>

namespace flurix::gui {
namespace {

namespace fs = std::filesystem;
using test::Beantworter;
using test::Mitschrift;

/// The window with a table standing in for the main window's; `übernahmen` counts the changes
/// of that table the window asked for.
struct NasFenster : test::NasInstallation {
    Programmzustand zustand{Installation{ordner / "inst"}};
    QtOberfläche ui;
    Kataster kataster;
    int übernahmen = 0;
    FormAlkis fenster{zustand, ui, [this](const std::function<Ergebnis(Kataster&)>& änderung) {
                          ++übernahmen;
                          return änderung(kataster);
                      }};

    NasFenster() {
        zustand.arbeitsverzeichnis = ordner / "arbeit";
        fenster.BenutzerordnerSetzen(ordner / "benutzer");
        fenster.show();
    }
    /// The sample read (no box expected) and AX_Flurstueck shown; false when either failed.
    bool MusterZeigen() {
        Beantworter keine;
        const bool gezeigt =
            Laufen(ordner / "muster.xml") && fenster.TabelleZeigen("AX_Flurstueck");
        EXPECT_TRUE(keine.boxen.empty()) << Utf8(keine.Beschreibungen().join(u'\n'));
        return gezeigt;
    }
    Ergebnis Laufen(const fs::path& datei, bool direkt = false) {
        nas::NasLaufauftrag auftrag;
        auftrag.datei = datei;
        auftrag.direktImport = direkt;
        return fenster.Laufen(auftrag);
    }
    std::string Wert(const std::string& sql) {
        auto a = fenster.Bereich().Db().VorbereitenNativ(sql);
        return a.Schritt() ? std::string(a.Text(0)) : "<keine Zeile>";
    }
    NasTabellenModell& M() { return fenster.Modell(); }
    int Spalte(const std::string& name) {
        for (int s = 0; s < M().columnCount(); ++s)
            if (M().headerData(s, Qt::Horizontal).toString() == QText(name))
                return s;
        return -1;
    }
    QStringList Protokollzeilen() const {
        return fenster.Protokollbox()->toPlainText().split(u'\n', Qt::SkipEmptyParts);
    }
    /// Types `text` into a line edit as keys, then Return.
    static void Tippen(QLineEdit& feld, const QString& text) {
        for (const QChar zeichen : text) {
            QKeyEvent taste(QEvent::KeyPress, 0, Qt::NoModifier, QString(zeichen));
            QCoreApplication::sendEvent(&feld, &taste);
        }
        QKeyEvent eingabe(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QCoreApplication::sendEvent(&feld, &eingabe);
    }
};

TEST(FormAlkis, MusterÖffnenTabelleWählenFiltern) {
    NasFenster f;
    Beantworter ja(QMessageBox::Yes);
    ASSERT_TRUE(f.Laufen(f.ordner / "muster.xml")) << Utf8(ja.Beschreibungen().join(u'\n'));
    EXPECT_TRUE(ja.boxen.empty()) << ja.Beschreibungen().join(u'\n').toStdString();
    EXPECT_EQ(f.übernahmen, 0) << "only read, not taken into the table";
    EXPECT_EQ(f.fenster.windowTitle(), u"Flurix-NAS");

    // The table list is the database's, in its order; nothing is shown until one is chosen.
    QStringList tabellen;
    for (const auto& t : f.fenster.Bereich().Tabellen())
        tabellen << QText(t);
    EXPECT_EQ(test::Einträge(*f.fenster.Tabellenliste()), tabellen);
    ASSERT_TRUE(tabellen.contains(u"AX_Flurstueck"));
    EXPECT_EQ(f.M().rowCount(), 0);
    EXPECT_FALSE(f.fenster.findChild<QAction*>(QStringLiteral("btnNachFlurix"))->isEnabled());

    QComboBox& liste = *f.fenster.Tabellenliste();
    liste.setCurrentIndex(static_cast<int>(tabellen.indexOf(u"AX_Flurstueck")));
    emit liste.textActivated(QStringLiteral("AX_Flurstueck"));
    const int flurstücke = std::stoi(f.Wert("SELECT count(*) FROM AX_Flurstueck"));
    EXPECT_EQ(flurstücke, 24);
    EXPECT_EQ(f.M().rowCount(), flurstücke);
    EXPECT_EQ(f.fenster.Suchlabel()->text(), u"Suche:");
    // The geometry is hidden, the keys are not.
    int verborgen = 0;
    for (int s = 0; s < f.M().columnCount(); ++s) {
        const std::string name = Utf8(f.M().headerData(s, Qt::Horizontal).toString());
        SCOPED_TRACE(name);
        EXPECT_EQ(f.fenster.Grid()->isColumnHidden(s), nas::SpalteVerborgen("AX_Flurstueck", name));
        verborgen += f.fenster.Grid()->isColumnHidden(s);
    }
    for (const char* name : {"position", "gml:exterior", "gml:LineStringSegment"})
        EXPECT_TRUE(f.fenster.Grid()->isColumnHidden(f.Spalte(name))) << name;
    EXPECT_GE(verborgen, 3);
    const int kennzeichen = f.Spalte("flurstueckskennzeichen");
    ASSERT_GE(kennzeichen, 0);
    EXPECT_FALSE(f.fenster.Grid()->isColumnHidden(kennzeichen));

    // A header click sorts through the database, a second one turns the order round.
    QHeaderView& kopf = *f.fenster.Grid()->horizontalHeader();
    emit kopf.sectionClicked(kennzeichen);
    emit kopf.sectionClicked(kennzeichen);
    EXPECT_EQ(kopf.sortIndicatorOrder(), Qt::DescendingOrder);
    EXPECT_EQ(Utf8(f.M().index(0, kennzeichen).data().toString()),
              f.Wert("SELECT max(flurstueckskennzeichen) FROM AX_Flurstueck"));

    // The data view lists every field of the current row with its value.
    f.fenster.Grid()->setCurrentIndex(f.M().index(2, kennzeichen));
    int felder = 0;
    QString wert;
    test::Dialoghelfer<QDialog> ansicht([&](QDialog& d) {
        const auto* werte = test::Element<QTableWidget>(d, "lstDatenansicht");
        felder = werte->rowCount();
        wert = werte->item(kennzeichen, 1)->text();
        d.accept();
    });
    f.fenster.findChild<QAction*>(QStringLiteral("btnDatenansicht"))->trigger();
    EXPECT_EQ(felder, f.M().columnCount());
    EXPECT_EQ(wert, f.M().index(2, kennzeichen).data().toString());

    // The filter row: typing switches the label, Return filters through the database.
    const QString gesucht = f.M().index(5, kennzeichen).data().toString();
    QLineEdit* feld = f.fenster.Filterzeile()->Feld(kennzeichen);
    ASSERT_NE(feld, nullptr);
    EXPECT_TRUE(feld->isVisible());
    EXPECT_EQ(feld->width(), f.fenster.Grid()->columnWidth(kennzeichen));
    NasFenster::Tippen(*feld, gesucht.left(gesucht.size() - 3));
    EXPECT_EQ(f.fenster.Suchlabel()->text(),
              u"Filtersuche: Kennzeichnung Kleinbuchstabe immer mit Hochkomma, z.B.: t'");
    const int treffer = std::stoi(f.Wert("SELECT count(*) FROM AX_Flurstueck WHERE "
                                         "flurstueckskennzeichen LIKE '" +
                                         Utf8(gesucht.left(gesucht.size() - 3)) + "%'"));
    EXPECT_GT(treffer, 0);
    EXPECT_LT(treffer, flurstücke);
    EXPECT_EQ(f.M().rowCount(), treffer);
    for (int z = 0; z < f.M().rowCount(); ++z)
        EXPECT_TRUE(f.M()
                        .index(z, kennzeichen)
                        .data()
                        .toString()
                        .startsWith(gesucht.left(gesucht.size() - 3)));

    // Column widths are kept by name across tables.
    f.fenster.Grid()->setColumnWidth(kennzeichen, 333);
    EXPECT_TRUE(f.fenster.TabelleZeigen("AX_Buchungsstelle"));
    EXPECT_TRUE(f.fenster.TabelleZeigen("AX_Flurstueck"));
    EXPECT_EQ(f.M().rowCount(), flurstücke) << "a table chosen anew has no filter";
    EXPECT_EQ(f.fenster.Grid()->columnWidth(f.Spalte("flurstueckskennzeichen")), 333);
    const std::string ini = test::DateiLesen(f.ordner / "benutzer" / "MyApplication.ini");
    EXPECT_NE(ini.find("[GridDAO]"), std::string::npos);
    EXPECT_NE(ini.find("flurstueckskennzeichen:"), std::string::npos);

    // The protocol box has the protocol's lines, the file the same and more.
    const QStringList zeilen = f.Protokollzeilen();
    EXPECT_TRUE(zeilen.filter(u"Datenbank muster.xml geladen...").size() == 1);
    const std::string datei =
        Cp1252NachUtf8(test::DateiLesen(nas::NasProtokoll::DateiZu(f.ordner / "muster.xml")));
    for (const QString& zeile : zeilen)
        EXPECT_NE(datei.find(Utf8(zeile)), std::string::npos) << Utf8(zeile);
    EXPECT_GT(zeilen.size(), 5);
    f.fenster.findChild<QPushButton*>(QStringLiteral("btnClearInfoManager"))->click();
    EXPECT_TRUE(f.fenster.Protokollbox()->toPlainText().isEmpty());
}

// "Speichern unter" draws the data set: GEOgraf, DXF, and DXF with its GEOgraf file kept beside.
TEST(FormAlkis, SpeichernUnterZeichnetGeografUndDxf) {
    using namespace Qt::Literals::StringLiterals;
    NasFenster f;
    ASSERT_TRUE(f.MusterZeigen());
    const std::tuple<const char*, nas::NasZiel, const char*, bool> fälle[] = {
        {"plan.out", nas::NasZiel::Geograf, "GG-Export", false},
        {"plan.dxf", nas::NasZiel::Dxf, "DXF-Export", false},
        {"plan_mit.dxf", nas::NasZiel::DxfOut, "DXF-Export", true}};
    for (const auto& [name, ziel, frage, mitOut] : fälle) {
        SCOPED_TRACE(name);
        Beantworter ja(QMessageBox::Yes);
        ASSERT_TRUE(f.fenster.SpeichernUnter(f.ordner / name, ziel));
        ASSERT_EQ(ja.boxen.size(), 1U);
        EXPECT_EQ(ja.boxen.front().text,
                  u"Export-Optionen ausgewählt? "_s + QString::fromUtf8(frage) + u" ausführen?   "_s);
        EXPECT_TRUE(fs::file_size(f.ordner / name) > 0);
        fs::path out = f.ordner / name;
        out.replace_extension();
        out += "_dxf.out";
        EXPECT_EQ(fs::exists(out), mitOut);
    }
    const QString protokoll = f.Protokollzeilen().join(u'\n');
    EXPECT_TRUE(protokoll.contains(u"DXF-Export: "_s)) << Utf8(protokoll);
    EXPECT_TRUE(protokoll.contains(u"GEOgraf-Ausgabe: "_s)) << Utf8(protokoll);
}

// A WFS collection has no extract element: the window asks before it reads, and No reads nothing.
TEST(FormAlkis, WfsSammlungFragtVorDemEinlesen) {
    using namespace Qt::Literals::StringLiterals;
    const fs::path quelle = test::GemeinsameTestdaten() / "state-wfs-nas" / "HE_NAS-konform_10flst.xml";
    if (!fs::exists(quelle))
        GTEST_SKIP() << "WFS-Beispiel fehlt: " << quelle;
    NasFenster f;
    fs::copy_file(quelle, f.ordner / "wfs.xml");
    for (const auto antwort : {QMessageBox::No, QMessageBox::Yes}) {
        Beantworter beantworter(antwort);
        const Ergebnis ergebnis = f.Laufen(f.ordner / "wfs.xml");
        ASSERT_EQ(beantworter.boxen.size(), 1U);
        EXPECT_EQ(test::Beschreibung(beantworter.boxen.front()),
                  u"[Frage] \"NAS/Flurix-NAS FormLoad\" [Ja*|Nein]: Daten eventuell unvollständig! Daten "
                  u"trotzdem einlesen?   "_s);
        EXPECT_EQ(static_cast<bool>(ergebnis), antwort == QMessageBox::Yes);
        EXPECT_EQ(f.fenster.Bereich().HatDaten(), antwort == QMessageBox::Yes);
    }
    EXPECT_EQ(f.Wert("SELECT count(*) FROM AX_Flurstueck"), "10");
}

TEST(FormAlkis, SqlAbfrageZeigtAuswahlUndÄndertNurMitEinerAnweisung) {
    NasFenster f;
    ASSERT_TRUE(f.MusterZeigen());
    Beantworter ok;
    using Art = nas::SqlAbfrageErgebnis::Art;

    const auto auswahl =
        f.fenster.SqlAbfrage("SELECT [gml:id], flurstueckskennzeichen FROM AX_Flurstueck WHERE "
                             "flurstueckskennzeichen LIKE \"*1*\" ORDER BY 2");
    ASSERT_EQ(auswahl.art, Art::Auswahl) << auswahl.meldung;
    EXPECT_EQ(f.M().columnCount(), 2);
    EXPECT_EQ(f.M().rowCount(),
              std::stoi(f.Wert("SELECT count(*) FROM AX_Flurstueck WHERE flurstueckskennzeichen "
                               "LIKE '%1%'")));
    EXPECT_EQ(f.fenster.Tabellenliste()->currentIndex(), -1);

    const std::string vorher = f.Wert("SELECT count(*) FROM AX_Flurstueck");
    const auto zwei = f.fenster.SqlAbfrage("DELETE FROM AX_Flurstueck; DROP TABLE AP_PTO");
    EXPECT_EQ(zwei.art, Art::Fehler);
    const auto kaputt = f.fenster.SqlAbfrage("DELETE FROM AX_Flurstueck WHERE ( = 1");
    EXPECT_EQ(kaputt.art, Art::Fehler);
    ASSERT_EQ(ok.boxen.size(), 2u);
    EXPECT_TRUE(ok.boxen[0].text.contains(u"mehr als eine SQL-Anweisung"))
        << Utf8(ok.boxen[0].text);
    EXPECT_TRUE(ok.boxen[1].text.contains(u"syntax error")) << Utf8(ok.boxen[1].text);
    EXPECT_EQ(ok.boxen[1].symbol, QMessageBox::Critical);
    EXPECT_EQ(f.Wert("SELECT count(*) FROM AX_Flurstueck"), vorher);
    EXPECT_EQ(f.Wert("SELECT count(*) FROM sqlite_master WHERE name = 'AP_PTO'"), "1");

    const auto löschen = f.fenster.SqlAbfrage("DELETE FROM AX_Flurstueck WHERE rowid <= 4");
    EXPECT_EQ(löschen.art, Art::Änderung);
    EXPECT_EQ(löschen.geändert, 4);
    ASSERT_EQ(ok.boxen.size(), 3u);
    EXPECT_EQ(ok.boxen[2].text, u"SQL-Anweisung ausgeführt, geänderte Datensätze: 4   ");
    EXPECT_EQ(f.Wert("SELECT count(*) FROM AX_Flurstueck"), std::to_string(std::stoi(vorher) - 4));
}

TEST(FormAlkis, GroßeTabelleFragtVorDemZeigen) {
    NasFenster f;
    ASSERT_TRUE(f.MusterZeigen());
    f.fenster.Bereich().Db().AusführenNativ(
        "CREATE TABLE gross AS WITH RECURSIVE z(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM z "
        "WHERE n < " +
        std::to_string(nas::VisualisierungWarnenAb + 1) + ") SELECT n FROM z");
    {
        Beantworter ja(QMessageBox::Yes);
        EXPECT_FALSE(f.fenster.TabelleZeigen("gross"));
        ASSERT_EQ(ja.boxen.size(), 1u);
        EXPECT_EQ(test::Beschreibung(ja.boxen[0]),
                  u"[Frage] \"Flurix-NAS\" [Ja*|Nein]: Aufgrund der großen Datenmenge kann die "
                  u"Visualisierung der Tabelle \"gross\" zum Einfrieren des Programms führen!\n"
                  u"Wollen Sie die Visualisierung abbrechen?");
        EXPECT_EQ(f.M().rowCount(), 0);
        EXPECT_EQ(f.fenster.Tabellenliste()->currentIndex(), -1);
    }
    Beantworter nein(QMessageBox::No);
    EXPECT_TRUE(f.fenster.TabelleZeigen("gross"));
    EXPECT_EQ(f.M().rowCount(), nas::VisualisierungWarnenAb + 1);
    EXPECT_EQ(f.M().index(nas::VisualisierungWarnenAb, 0).data().toString(), u"500001");
    // At the limit itself nothing is asked.
    f.fenster.Bereich().Db().AusführenNativ("DELETE FROM gross WHERE n = 1");
    EXPECT_TRUE(f.fenster.TabelleZeigen("gross"));
    EXPECT_EQ(nein.boxen.size(), 1u);
}

TEST(FormAlkis, OptionsdialogKästchenUndStartknopf) {
    Mitschrift m("nas_optionen");
    FormNasDarstellung dialog{nas::NasOptionen{}};
    bool erster = true;
    // Every box at first, then those of the area computation.
    const auto zustand = [&](const char* schritt) {
        const bool alle = erster;
        erster = false;
        m << QString::fromUtf8(schritt);
        for (const nas::NasOptionsfeld& f : nas::NasOptionsfelder()) {
            if (!alle && !f.name.starts_with("chkMitNa") && !f.name.starts_with("chkQuick") &&
                f.name != "chkMitFlächenAnpassung")
                continue;
            const QCheckBox* k = test::Element<QCheckBox>(dialog, std::string(f.name).c_str());
            m << QStringLiteral("  %1 [%2%3] %4")
                     .arg(k->objectName(), k->isChecked() ? u"x" : u" ",
                          k->isEnabled() ? u"" : u", gesperrt", k->text());
        }
        m << QStringLiteral("  Start: ") + test::Element<QPushButton>(dialog, "cmdStart")->text();
    };
    const auto klick = [&](const char* name) { test::Element<QCheckBox>(dialog, name)->click(); };
    zustand("Vorgabe");
    klick("chkMitNaBerechnung");
    zustand("Flächenverschneidung an");
    klick("chkMitFlächenAnpassung");
    klick("chkQuickBSBerechnung");
    klick("chkQuickLWBerechnung");
    zustand("mit Anpassung, nur Bodenschätzung, dann nur Landwirtschaft");
    klick("chkMitNaBerechnung");
    zustand("Flächenverschneidung aus");
    m << test::Element<QPushButton>(dialog, "cmdEinlesen")->text()
      << test::Element<QPushButton>(dialog, "cmdAbbruch")->text();
}

TEST(FormAlkis, OptionsdialogSchreibtDieEinstellungenNurBeimStart) {
    test::TempOrdner ordner;
    const Benutzereinstellungen einstellungen(ordner / "benutzer");
    nas::NasOptionen gewählt;
    {
        test::Dialoghelfer<FormNasDarstellung> abbrechen([](FormNasDarstellung& d) {
            test::Element<QCheckBox>(d, "chkAlkisAnschrift")->click();
            test::Element<QPushButton>(d, "cmdAbbruch")->click();
        });
        EXPECT_EQ(FormNasDarstellung::Bearbeiten(einstellungen, gewählt, nullptr),
                  NasStart::Abbruch);
        EXPECT_TRUE(abbrechen.gesehen);
        EXPECT_FALSE(fs::exists(ordner / "benutzer" / "MyApplication.ini"));
        EXPECT_FALSE(gewählt.mehrereAnschriften);
    }
    {
        test::Dialoghelfer<FormNasDarstellung> einlesen([](FormNasDarstellung& d) {
            test::Element<QCheckBox>(d, "chkWriteAlkisProtokolldatei")->click();
            test::Element<QPushButton>(d, "cmdEinlesen")->click();
        });
        EXPECT_EQ(FormNasDarstellung::Bearbeiten(einstellungen, gewählt, nullptr),
                  NasStart::NurEinlesen);
        EXPECT_TRUE(gewählt.protokollNichtSchreiben);
    }
    // The next dialog starts with what was kept.
    test::Dialoghelfer<FormNasDarstellung> start([](FormNasDarstellung& d) {
        EXPECT_TRUE(test::Element<QCheckBox>(d, "chkWriteAlkisProtokolldatei")->isChecked());
        test::Element<QPushButton>(d, "cmdStart")->click();
    });
    EXPECT_EQ(FormNasDarstellung::Bearbeiten(einstellungen, gewählt, nullptr), NasStart::Direkt);
    EXPECT_TRUE(start.gesehen);
    EXPECT_EQ(nas::NasOptionen::AusText(einstellungen.Lesen(nas::NasOptionenAnwendung,
                                                            nas::NasOptionenAbschnitt,
                                                            nas::NasOptionenSchlüssel))
                  .AlsText(),
              gewählt.AlsText());
}

TEST(FormAlkis, EscapeBrichtDenLaufAb) {
    NasFenster f;
    // Ja to "Wollen Sie den Import wirklich abbrechen?".
    Beantworter ja(QMessageBox::Yes);
    QCoreApplication::postEvent(&f.fenster,
                                new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
    const Ergebnis ergebnis = f.Laufen(f.ordner / "muster.xml", true);
    EXPECT_EQ(ergebnis.status(), Ergebnis::Status::Abgebrochen) << ergebnis.Meldung();
    ASSERT_FALSE(ja.boxen.empty());
    EXPECT_EQ(test::Beschreibung(ja.boxen[0]),
              u"[Frage] \"Import\" [Ja|Nein*]: Wollen Sie den Import wirklich abbrechen?   ");
    EXPECT_EQ(f.übernahmen, 0) << "no transfer after a cancelled scan";
    EXPECT_EQ(f.kataster.Zeilenzahl(), 0u);
    EXPECT_FALSE(f.fenster.Beschaeftigt());
    EXPECT_TRUE(f.fenster.findChild<QToolBar*>(QStringLiteral("Coolbar2"))->isEnabled());
}

TEST(FormAlkis, DirektImportFülltDieTabelleUndZeigtAlkis) {
    NasFenster f;
    Beantworter ja(QMessageBox::Yes);
    ASSERT_TRUE(f.Laufen(f.ordner / "muster.xml", true));
    EXPECT_EQ(f.übernahmen, 1);
    EXPECT_GT(f.kataster.Zeilenzahl(), 0u);
    EXPECT_EQ(f.fenster.Tabellenliste()->currentText(), u"Alkis");
    EXPECT_EQ(f.M().rowCount(), std::stoi(f.Wert("SELECT count(*) FROM Alkis")));
    EXPECT_TRUE(f.fenster.findChild<QAction*>(QStringLiteral("btnNachFlurix"))->isEnabled());
    EXPECT_TRUE(f.fenster.NachFlurix());
    EXPECT_EQ(f.übernahmen, 2);
}

TEST(FormAlkis, GespeicherteDatenbankOhneApPtoWirdAbgelehnt) {
    NasFenster f;
    Mitschrift m("nas_ohne_ap_pto", f.ordner.pfad());
    ASSERT_TRUE(f.MusterZeigen());
    const fs::path db = f.fenster.Bereich().Datenbankpfad();
    const QStringList tabellen = test::Einträge(*f.fenster.Tabellenliste());
    {
        Datenbank ohne(f.ordner / "ohne.sqlite");
        ohne.AusführenNativ("CREATE TABLE AX_Flurstueck (a)");
    }
    // Ja to the question whether to replace the open data set, OK to the refusal.
    Beantworter ja(std::vector{QMessageBox::Yes, QMessageBox::Ok});
    EXPECT_FALSE(f.Laufen(f.ordner / "ohne.sqlite"));
    m << ja.Beschreibungen();
    EXPECT_EQ(ja.boxen.back().text, QText(nas::MeldungUngültigeNasDatenbank));
    EXPECT_EQ(f.fenster.Bereich().Datenbankpfad(), db);
    EXPECT_TRUE(fs::exists(db));
    EXPECT_EQ(test::Einträge(*f.fenster.Tabellenliste()), tabellen);
    EXPECT_EQ(f.fenster.Tabellenliste()->currentText(), u"AX_Flurstueck");
    EXPECT_EQ(f.M().rowCount(), 24);
}

TEST(FormAlkis, AusblendenBehältEndeFragtUndSchließt) {
    NasFenster f;
    Mitschrift m("nas_fenster_ende", f.ordner.pfad());
    ASSERT_TRUE(f.MusterZeigen());
    const fs::path db = f.fenster.Bereich().Datenbankpfad();
    int ausgeblendet = 0, beendet = 0;
    QObject::connect(&f.fenster, &FormAlkis::ausgeblendet, [&] { ++ausgeblendet; });
    QObject::connect(&f.fenster, &FormAlkis::beendet, [&] { ++beendet; });

    f.fenster.findChild<QAction*>(QStringLiteral("btnALKISausblenden"))->trigger();
    EXPECT_FALSE(f.fenster.isVisible());
    EXPECT_EQ(ausgeblendet, 1);
    EXPECT_TRUE(f.fenster.Bereich().HatDaten());
    EXPECT_TRUE(fs::exists(db));

    f.fenster.show();
    {
        Beantworter nein(QMessageBox::No);
        EXPECT_FALSE(f.fenster.close());
        m << nein.Beschreibungen();
    }
    EXPECT_TRUE(f.fenster.isVisible());
    EXPECT_EQ(f.M().rowCount(), 24);
    {
        Beantworter ja(QMessageBox::Yes);
        f.fenster.findChild<QAction*>(QStringLiteral("btnEnde"))->trigger();
        m << ja.Beschreibungen();
    }
    EXPECT_FALSE(f.fenster.isVisible());
    EXPECT_EQ(beendet, 1);
    EXPECT_FALSE(f.fenster.Bereich().HatDaten());
    EXPECT_FALSE(fs::exists(db)) << "the work database goes with the end";
    EXPECT_EQ(f.M().rowCount(), 0);
    EXPECT_EQ(f.fenster.Tabellenliste()->count(), 0);
}

TEST(FormAlkis, HinweisSchließtSichSelbst) {
    QtOberfläche ui;
    QString gesehen;
    QTimer beobachter;
    beobachter.setInterval(5);
    QObject::connect(&beobachter, &QTimer::timeout, [&] {
        // Looks, never clicks.
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            gesehen = box->windowTitle() + QStringLiteral(": ") + box->text();
    });
    beobachter.start();
    const auto anfang = std::chrono::steady_clock::now();
    ui.Hinweis("ALKIS Export erfolgreich...\nDieses Fenster wird automatisch geschlossen!   ",
               "Info ALKIS Export - a.xml", 1);
    const double sekunden =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - anfang).count();
    EXPECT_EQ(gesehen, u"Info ALKIS Export - a.xml: ALKIS Export erfolgreich...\nDieses Fenster "
                       u"wird automatisch geschlossen!   ");
    EXPECT_GE(sekunden, 0.9);
    EXPECT_LT(sekunden, 5.0);
}

} // namespace
} // namespace flurix::gui
