// The desktop program offscreen: help, info, status bar, the Qt UI port, file filters, the option
// dialogs, closing, and the start of what the command line asked for.

#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gui/dateifilter.hpp"
#include "gui/form_alkis.hpp"
#include "gui/form_nas_darstellung.hpp"
#include "gui/form_datenbank_darstellung.hpp"
#include "gui/form_optionen_system.hpp"
#include "gui/qt_text.hpp"
#include "gui_testhilfen.hpp"
#include "nas/nas_lauf.hpp"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTableView>

#include <gtest/gtest.h>

#include <map>

namespace flurix::gui {
namespace {

using namespace Qt::Literals::StringLiterals;
using test::Beantworter;
using test::Element;
using test::Hauptfenster;
using test::Mitschrift;
using test::Panel;

TEST(Gui, HilfeÖffnetDasLiesmichImBrowserUndInfoNenntRevisionUndLizenzen) {
    Hauptfenster h;
    {
        Beantworter ok;
        EXPECT_TRUE(h.fenster.Hilfe().empty());
        EXPECT_TRUE(ok.Beschreibungen().join(u'\n').contains(u"README.md"_s));
        EXPECT_TRUE(h.geöffnet.empty());
    }
    test::DateiSchreiben(h.ordner / "README.md", "# Flurix\n\nDie **Suche** füllt auf.\n");
    Element<QAction>(h.fenster, "btnHilfe")->trigger();
    ASSERT_EQ(h.geöffnet.size(), 1U);
    const std::filesystem::path seite = PfadAus(h.geöffnet[0].toLocalFile());
    EXPECT_EQ(seite.extension(), ".html");
    const std::string html = test::DateiLesen(seite);
    EXPECT_NE(html.find("Suche"), std::string::npos);
    EXPECT_NE(html.find("füllt"), std::string::npos) << "UTF-8 kept";
    EXPECT_EQ(html.find("**"), std::string::npos) << "the Markdown is rendered";

    Beantworter ok;
    Element<QAction>(h.fenster, "btnInfo")->trigger();
    ASSERT_EQ(ok.boxen.size(), 1U);
    const QString info = ok.boxen[0].text;
    EXPECT_TRUE(info.contains(h.fenster.windowTitle()));
    // The revision: a commit of the sources' repository.
    const QRegularExpressionMatch revision =
        QRegularExpression(u"Git-Revision: ([^\\s-]+)"_s).match(info);
    ASSERT_TRUE(revision.hasMatch()) << Utf8(info);
    const std::string git = "git -C " + test::Wort(FLURIX_QUELLEN) + " ";
    const bool imRepository = test::Ausführen(git + "rev-parse 2>/dev/null").status == 0;
    EXPECT_TRUE(
        !imRepository ||
        test::Ausführen(git + "cat-file -e " + Utf8(revision.captured(1)) + "^{commit}").status ==
            0)
        << Utf8(info);
    for (const char* lizenz : {"Qt .*: LGPL-3.0", "SQLite .*: .*public domain", "pugixml .*: MIT",
                               "libzip .*: BSD-3-Clause", "libxlsxwriter .*: BSD-2-Clause"})
        EXPECT_TRUE(info.contains(QRegularExpression(QString::fromUtf8(lizenz)))) << lizenz;
}

TEST(Gui, StatusSchreibtNurDasGenanntePanelUndFortschrittZeigtDenBalken) {
    Hauptfenster h;
    h.fenster.show();
    h.ui.Status(3, "12 Mbyte UNIX-Prüfung  ");
    h.ui.Status(6, "Flurstück 5");
    h.ui.Status(0, "daneben");
    h.ui.Status(7, "daneben");
    const QString panels[] = {u"Status  "_s,   {}, u"12 Mbyte UNIX-Prüfung  "_s, {}, {},
                              u"Flurstück 5"_s};
    for (int nummer = 1; nummer <= 6; ++nummer)
        EXPECT_EQ(Panel(h.fenster, nummer), panels[nummer - 1]) << nummer;
    EXPECT_EQ(h.fenster.StatusPanel(3)->toolTip(), panels[2]);

    auto* balken = Element<QProgressBar>(h.fenster, "Fortschritt");
    EXPECT_FALSE(balken->isVisible());
    h.ui.Fortschritt(3'000'000'000LL, 12'000'000'000LL);
    EXPECT_TRUE(balken->isVisible());
    EXPECT_EQ(balken->value() * 4, balken->maximum());
    h.ui.Fortschritt(12'000'000'000LL, 12'000'000'000LL);
    EXPECT_FALSE(balken->isVisible());
    h.ui.Fortschritt(1, 2);
    h.ui.Fortschritt(0, 0);
    EXPECT_FALSE(balken->isVisible());
}

// Each kind of question with each default, answered by the default and by each button, and a
// message in each style.
TEST(Gui, FrageUndMeldungZeigenKnöpfeVorgabeUndSymbol) {
    const std::map<Antwort, std::pair<QMessageBox::StandardButton, std::string>> knöpfe{
        {Antwort::Ja, {QMessageBox::Yes, "Ja"}},
        {Antwort::Nein, {QMessageBox::No, "Nein"}},
        {Antwort::Abbrechen, {QMessageBox::Cancel, "Abbrechen"}},
        {Antwort::Ok, {QMessageBox::Ok, "Ok"}}};
    const std::pair<Knöpfe, std::vector<Antwort>> arten[] = {
        {Knöpfe::JaNein, {Antwort::Ja, Antwort::Nein}},
        {Knöpfe::JaNeinAbbrechen, {Antwort::Ja, Antwort::Nein, Antwort::Abbrechen}},
        {Knöpfe::OkAbbrechen, {Antwort::Ok, Antwort::Abbrechen}}};
    QtOberfläche ui;
    std::string protokoll;
    for (const auto& [art, antworten] : arten)
        for (const Antwort vorgabe : antworten)
            for (std::size_t i = 0; i <= antworten.size(); ++i) {
                Beantworter beantworter(i ? knöpfe.at(antworten[i - 1]).first
                                          : QMessageBox::NoButton);
                const Antwort antwort =
                    ui.Frage({"Soll die vorhandene Datenbank überschrieben werden?   ", "Flurix",
                              art, vorgabe, Antwort::Ja});
                protokoll += "Vorgabe " + knöpfe.at(vorgabe).second + ", " +
                             (i ? "Knopf " + knöpfe.at(antworten[i - 1]).second : "Vorgabeknopf") +
                             ": " + knöpfe.at(antwort).second + "\n" +
                             Utf8(beantworter.Beschreibungen().join(u'\n')) + "\n";
            }
    for (const Stil stil : {Stil::Information, Stil::Warnung, Stil::Fehler, Stil::Frage}) {
        Beantworter beantworter;
        ui.Meldung("Das Dezimaltrennzeichen wurde von 'Komma' nach 'Punkt' geändert!   ",
                   TitelDezimaltrennzeichen, stil);
        protokoll += Utf8(beantworter.Beschreibungen().join(u'\n')) + "\n";
    }
    EXPECT_EQ(test::GoldenVergleich(protokoll, test::Testdaten() / "gui" / "frage_und_meldung.txt"),
              "");
}

TEST(Gui, EscapeWirdEinmalGemeldetUndAndereEingabenVerworfen) {
    QtOberfläche ui;
    QPushButton knopf(u"Start"_s);
    knopf.resize(80, 30);
    knopf.show();
    int geklickt = 0;
    QObject::connect(&knopf, &QPushButton::clicked, [&] { ++geklickt; });
    const auto klickenUndEscape = [&] {
        const QPointF mitte(40, 15);
        for (const auto& [art, knöpfe] : {std::pair{QEvent::MouseButtonPress, Qt::LeftButton},
                                          std::pair{QEvent::MouseButtonRelease, Qt::NoButton}})
            QCoreApplication::postEvent(&knopf,
                                        new QMouseEvent(art, mitte, knopf.mapToGlobal(mitte),
                                                        Qt::LeftButton, knöpfe, Qt::NoModifier));
        QCoreApplication::postEvent(
            &knopf, new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
    };
    EXPECT_FALSE(ui.AbbruchGewünscht());
    // The poll drops a waiting click and notes Escape; outside a poll input is taken as always.
    klickenUndEscape();
    EXPECT_TRUE(ui.AbbruchGewünscht());
    EXPECT_EQ(geklickt, 0);
    EXPECT_FALSE(ui.AbbruchGewünscht()) << "reading the request resets it";
    klickenUndEscape();
    QCoreApplication::processEvents();
    EXPECT_EQ(geklickt, 1);
    EXPECT_FALSE(ui.AbbruchGewünscht());
}

TEST(Gui, DateifilterWerdenQtFilterUndDerGewählteGibtDieEingabeart) {
    EXPECT_EQ(QtDateifilter("Zip-Datei (*.zip)|*.zip|"), u"Zip-Datei (*.zip)"_s);
    EXPECT_EQ(QtDateifilter("Texte|*.txt;*.csv|Alle|*.*"), u"Texte (*.txt *.csv);;Alle (*.*)"_s);
    EXPECT_EQ(QtDateifilter(""), QString());
    const QStringList filter = QtDateifilterListe(import::DateiFilter);
    EXPECT_EQ(filter.join(u";;"_s), QtDateifilter(import::DateiFilter));
    const std::pair<QString, import::Eingabeart> fälle[] = {
        {u"WLDGE-Format (*.wldge)"_s, import::Eingabeart::Wldge},
        {u"Flurix (*.fil)"_s, import::Eingabeart::Tabelle},
        {u"Web-XML-Datei (*.xml)"_s, import::Eingabeart::WebXml},
        {u"NAS (*.xml)"_s, import::Eingabeart::NasXml},
        {u"NAS (*.mdb)"_s, import::Eingabeart::NasDatenbank},
        {u"FKZ (*.fkz)"_s, import::Eingabeart::FkzListe},
    };
    ASSERT_EQ(filter.size(), 6);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(filter[i], fälle[i].first);
        EXPECT_EQ(FilterNummer(filter, fälle[i].first), static_cast<int>(fälle[i].second));
    }
    EXPECT_EQ(FilterNummer(filter, u"Alle Dateien (*)"_s), 0);
}

auto Importoptionen(const char* format) {
    import::ImportOptionen optionen;
    optionen.importFormat = format;
    return optionen;
}

// Per format, the complete reader chosen before: each named control and the options given back.
TEST(Gui, OptionenDialogZeigtJeFormatSeineKnöpfeUndGibtDieOptionenZurück) {
    std::string ist;
    for (const char* format : {"32", "35", "XML"}) {
        auto optionen = Importoptionen(format);
        optionen.albKomplett = true;
        FormDatenbankDarstellung dialog(optionen);
        ist += "--- " + Utf8(dialog.windowTitle()) + "\n";
        for (const QWidget* w : dialog.findChildren<QWidget*>()) {
            const auto* knopf = qobject_cast<const QAbstractButton*>(w);
            const auto* gruppe = qobject_cast<const QGroupBox*>(w);
            if (w->objectName().isEmpty() || !(knopf || gruppe))
                continue;
            ist += Utf8(w->objectName() + u'\t' + (knopf ? knopf->text() : gruppe->title()) +
                        u'\t' + w->toolTip()) +
                   (w->isVisibleTo(&dialog) ? "\tgezeigt" : "\tverborgen") +
                   (w->isEnabled() ? "" : " gesperrt") +
                   (knopf && knopf->isChecked() ? " an" : "") + "\n";
        }
        const import::ImportOptionen o = dialog.Optionen();
        ist += "Optionen: Format " + o.importFormat + (o.albKomplett ? ", komplett" : "") +
               (o.nutzungTatsächlich ? ", Nutzung tatsächlich" : "") +
               (o.nameUmdrehen ? ", Name umdrehen" : "") +
               (o.alleEigentümerInEinerZeile ? ", alle Eigentümer in einer Zeile" : "") +
               (o.suchbegriffGemarkung ? ", Suchbegriff Gemarkung" : "") + "\n";
    }
    EXPECT_EQ(test::GoldenVergleich(ist, test::Testdaten() / "gui" / "optionen_dialog.txt"), "");
}

TEST(Gui, TeilweiseUndKomplettSchließenSichAus) {
    FormDatenbankDarstellung dialog(Importoptionen("32"));
    auto* teilweise = Element<QCheckBox>(dialog, "chkAlbTeilweise");
    auto* komplett = Element<QCheckBox>(dialog, "chkAlbKomplett");
    EXPECT_TRUE(teilweise->isChecked());
    komplett->click();
    EXPECT_TRUE(komplett->isChecked());
    EXPECT_FALSE(teilweise->isChecked());
    EXPECT_TRUE(dialog.Optionen().albKomplett);
    komplett->click();
    EXPECT_TRUE(komplett->isChecked());
    teilweise->click();
    EXPECT_TRUE(teilweise->isChecked());
    EXPECT_FALSE(komplett->isChecked());
    EXPECT_FALSE(dialog.Optionen().albKomplett);
}

TEST(Gui, OptionenDialogSchreibtNurBeiOk) {
    QWidget eltern;
    import::ImportOptionen optionen = Importoptionen("32");
    const auto bearbeiten = [&](const char* knopf) {
        test::Dialoghelfer<FormDatenbankDarstellung> ändern([&](FormDatenbankDarstellung& dialog) {
            for (const char* name :
                 {"chkAlbKomplett", "ALBNameVornameUmdrehen", "EigentümerJeFlurstück_1", knopf})
                Element<QAbstractButton>(dialog, name)->click();
        });
        const bool ok = FormDatenbankDarstellung::Bearbeiten(optionen, &eltern);
        EXPECT_TRUE(ändern.gesehen);
        return ok;
    };
    EXPECT_FALSE(bearbeiten("cmdAbbruch"));
    EXPECT_FALSE(optionen.albKomplett || optionen.nameUmdrehen ||
                 optionen.alleEigentümerInEinerZeile);
    EXPECT_TRUE(bearbeiten("cmdOK"));
    EXPECT_TRUE(optionen.albKomplett && optionen.nameUmdrehen &&
                optionen.alleEigentümerInEinerZeile && optionen.nutzungTatsächlich);
    EXPECT_EQ(optionen.importFormat, "32");
}

TEST(Gui, SystemdialogBrauchtSchreibrechtUndZeigtDasErgebnisDerSicherung) {
    test::TempOrdner ordner;
    SkriptOberfläche ui;
    EXPECT_FALSE(FormOptionenSystem::Anzeigen(ordner / "fehlt" / "config", ui, nullptr));
    ASSERT_EQ(ui.Meldungen().size(), 1U);
    EXPECT_TRUE(ui.Meldungen()[0].starts_with("Es liegen keine Schreibrechte für Änderungen an den "
                                              "Systemdateien im Programmverzeichnis"));
    EXPECT_EQ(ui.Ereignisse()[0].titel, "Änderungen an den Systemdateien nicht möglich!");

    const auto konfig = ordner / "config";
    test::DateiSchreiben(konfig / "Flurix.dat", "tempArbeitsverzeichnis =\r\n");
    FormOptionenSystem dialog(konfig, ui);
    const auto zip = ordner / "sicherung.zip";
    EXPECT_TRUE(dialog.Sichern(zip));
    EXPECT_TRUE(std::filesystem::exists(zip));
    EXPECT_TRUE(dialog.Zustand().contains(u"erfolgreich erstellt"_s));
    EXPECT_TRUE(dialog.Einlesen(zip));
    EXPECT_TRUE(dialog.Zustand().contains(u"eingelesen"_s));
    EXPECT_FALSE(dialog.Einlesen(ordner / "fehlt.zip"));
    EXPECT_EQ(dialog.Zustand(), u"Fehler beim Zip-Datei öffnen!"_s);
}

TEST(Gui, SchließenFragtUndNeinLässtDasProgrammLaufen) {
    Hauptfenster h;
    Mitschrift m("schliessen");
    h.fenster.show();
    Beantworter antworten({QMessageBox::No, QMessageBox::Yes});
    EXPECT_FALSE(h.fenster.close());
    EXPECT_TRUE(h.fenster.isVisible());
    EXPECT_TRUE(h.zustand.BeendenFragen);
    EXPECT_FALSE(h.exitcode.has_value());
    m << antworten.Beschreibungen();
    EXPECT_TRUE(h.fenster.close());
    EXPECT_FALSE(h.zustand.BeendenFragen);
    EXPECT_EQ(h.exitcode, 0);
    h.exitcode.reset();
    EXPECT_TRUE(h.fenster.BeendenKlick());
    EXPECT_EQ(antworten.boxen.size(), 2U);
    EXPECT_FALSE(h.exitcode.has_value());
}

TEST(Gui, DateiVonDerKommandozeileWirdNachDemAnzeigenErfragt) {
    Hauptfenster h;
    Mitschrift m("kommandozeile");
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
    test::Warten([&] { return !nein.boxen.empty(); });
    m << nein.Beschreibungen();
    EXPECT_FALSE(h.exitcode.has_value());
}

/// The sample NAS file and the configuration in the window's installation.
std::filesystem::path NasMuster(Hauptfenster& h) {
    const auto quellen = std::filesystem::path(FLURIX_QUELLEN);
    std::filesystem::copy(quellen / "config", h.ordner / "config",
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::overwrite_existing);
    const auto datei = h.ordner / "muster.xml";
    std::filesystem::copy_file(quellen / "samples" / "musterstadt_nas.xml", datei);
    h.fenster.BenutzerordnerSetzen(h.ordner / "benutzer");
    return datei;
}

TEST(Gui, NasDateiGehtÜberDasNasFensterInDieTabelle) {
    Hauptfenster h;
    Mitschrift m("nas_laden");
    const auto datei = NasMuster(h);
    h.fenster.show();
    // A job from the command line: a ".xml" that its content shows to be NAS.
    import::Ladeauftrag auftrag;
    auftrag.dateien = {datei};
    auftrag.art = import::Eingabeart::Xml;
    auftrag.vonKommandozeile = true;
    // The options dialog in front of the NAS window, started straight into the table; the run
    // follows after the NAS window's first paint, the main window free meanwhile.
    const auto laden = [&](QMessageBox::StandardButton antwort) {
        Beantworter beantworter(antwort);
        test::Dialoghelfer<FormNasDarstellung> start(
            [](FormNasDarstellung& d) { test::Element<QPushButton>(d, "cmdStart")->click(); });
        const std::size_t vorher = h.fenster.Tabelle().Zeilenzahl();
        EXPECT_TRUE(h.fenster.Laden(auftrag));
        EXPECT_TRUE(start.gesehen);
        test::Warten([&] { return h.fenster.Tabelle().Zeilenzahl() != vorher && !h.fenster.NasFenster().Beschaeftigt(); });
        EXPECT_TRUE(h.fenster.NasFenster().isVisible());
        return beantworter.Beschreibungen();
    };
    m << laden(QMessageBox::Yes);
    const std::size_t zeilen = h.fenster.Tabelle().Zeilenzahl();
    EXPECT_GT(zeilen, 24U); // 24 parcels, several with more than one owner
    auto* tabelle = h.fenster.findChild<QTableView*>();
    EXPECT_EQ(static_cast<std::size_t>(tabelle->model()->rowCount()), zeilen);
    EXPECT_EQ(h.fenster.Tabelle().Zelle(0, "Gemarkung"), "Beispielfeld");
    EXPECT_EQ(h.fenster.NasFenster().Tabellenliste()->currentText(), u"Alkis");
    EXPECT_FALSE(h.zustand.arbeitsdatenbanken.empty()) << "the work database goes at the end";

    // Again, with rows in the table: the NAS window asks before its database is replaced, and
    // Yes to the question of the transfer extends the table.
    m << laden(QMessageBox::Yes);
    EXPECT_EQ(h.fenster.Tabelle().Zeilenzahl(), 2 * zeilen);
    EXPECT_EQ(static_cast<std::size_t>(tabelle->model()->rowCount()), 2 * zeilen);
}

TEST(Gui, NasStapelLäuftImNasFensterUndEndetOhneFrage) {
    Hauptfenster h;
    const auto datei = NasMuster(h);
    h.zustand.auftrag.art = Startart::NasStapel;
    h.zustand.auftrag.StillModus = true;
    h.zustand.auftrag.AusgabeGG = true;
    h.zustand.auftrag.AuftragsDatei = datei.string();
    Beantworter ok;
    h.fenster.Starten();
    test::Warten([&] { return h.exitcode.has_value(); });
    EXPECT_FALSE(h.fenster.isVisible());
    // The drawing beside the input, the notice that closes itself, no .err.
    EXPECT_EQ(h.exitcode, 0);
    ASSERT_FALSE(ok.boxen.empty());
    EXPECT_EQ(ok.boxen.back().titel, u"Info ALKIS Export - muster.xml");
    EXPECT_TRUE(ok.boxen.back().text.startsWith(u"ALKIS Export erfolgreich..."_s));
    EXPECT_FALSE(std::filesystem::exists(nas::NasFehlerdatei(datei)));
    EXPECT_TRUE(std::filesystem::exists(nas::NasAusgabedatei(datei, nas::NasAusgabe::Geograf)));
}

TEST(Gui, KarteMeldetUndEndetOhneFrage) {
    Hauptfenster h;
    h.zustand.auftrag.art = Startart::Karte;
    h.zustand.auftrag.MapModus = true;
    Beantworter ok;
    h.fenster.Starten();
    test::Warten([&] { return h.exitcode.has_value(); });
    EXPECT_FALSE(h.fenster.isVisible());
    EXPECT_EQ(h.exitcode, 1);
    EXPECT_EQ(ok.Beschreibungen(), QStringList{u"[Information] \"Flurix\" [OK*]: "_s +
                                               QText(NochNichtVerfügbar("Das Kartenfenster"))})
        << "the message, and no question to end";
}

} // namespace
} // namespace flurix::gui
