// What leaves the main window: "Speichern unter" in the formats of the save dialog, the HTML report
// of the table and the register extract of one parcel as PDF.

#include "gui/form_datenbank.hpp"

#include "core/benutzereinstellungen.hpp"
#include "core/markierung.hpp"
#include "core/oberflaeche.hpp"
#include "export/geograf_out.hpp"
#include "export/speichern_unter.hpp"
#include "gui/dateifilter.hpp"
#include "gui/form_export_gg.hpp"
#include "gui/qt_oberflaeche.hpp"
#include "gui/qt_text.hpp"
#include "report/registerauszug.hpp"

#include <QAction>
#include <QFileDialog>
#include <QGuiApplication>
#include <QItemSelectionModel>
#include <QTableView>
#include <QToolBar>

namespace flurix::gui {

void FormDatenbank::AusgabeAnlegen() {
    QAction* speichern = Befehl(
        QStringLiteral("btnSpeichernUnter"), QStyle::SP_DriveHDIcon, QStringLiteral("Speichern"),
        QStringLiteral("Tabelle speichern unter: Geograf, Text, Excel, XML, Flurix, Access"));
    speichern->setShortcut(QKeySequence::SaveAs);
    QAction* bericht = Befehl(QStringLiteral("btnBericht"), QStyle::SP_FileDialogContentsView,
                              QStringLiteral("Bericht"),
                              QStringLiteral("Tabelle als HTML-Bericht im Browser zeigen"));
    QAction* auszug =
        Befehl(QStringLiteral("btnPDFALB"), QStyle::SP_FileIcon, QStringLiteral("Auszug"),
               QStringLiteral("Auszug aus dem Liegenschaftskataster für das Flurstück der "
                              "aktuellen Zeile (PDF)"));
    connect(speichern, &QAction::triggered, this, [this] { SpeichernUnterDialog(); });
    connect(bericht, &QAction::triggered, this,
            [this] { Bericht(ausgabe::BerichtsdateiStandard()); });
    connect(auszug, &QAction::triggered, this, [this] { AuszugErstellen(); });
}

void FormDatenbank::DateiZeigen(const std::filesystem::path& datei) {
    // Without a screen no viewer could be seen, and a test must not start one.
    if (QGuiApplication::platformName() == QStringLiteral("offscreen") && !m_dateiÖffnenGesetzt)
        return;
    if (m_dateiÖffnen)
        m_dateiÖffnen(QUrl::fromLocalFile(QPfad(datei)));
}

void FormDatenbank::SpeichernUnterDialog() {
    if (m_beschaeftigt)
        return;
    const QStringList filter = QtDateifilterListe(ausgabe::SpeicherFilter);
    QString gewählt = filter.value(static_cast<int>(ausgabe::SpeicherFilterVorgabe) - 1);
    const QString datei =
        QFileDialog::getSaveFileName(this, QStringLiteral("Speichern unter"), Auftragsordner(),
                                     filter.join(QStringLiteral(";;")), &gewählt);
    if (datei.isEmpty())
        return;
    SpeichernUnter(gewählt, PfadAus(datei));
}

Ergebnis FormDatenbank::SpeichernUnter(const QString& filter,
                                       const std::filesystem::path& gewählt) {
    const int nummer = FilterNummer(QtDateifilterListe(ausgabe::SpeicherFilter), filter);
    if (nummer < 1)
        return Ergebnis::Fehlschlag("Kein Speicherformat: " + Utf8(filter));
    ausgabe::Speicherumgebung umgebung;
    umgebung.arbeitsverzeichnis = m_zustand.arbeitsverzeichnis;
    umgebung.geograf = [this](const Kataster&, const std::filesystem::path& ziel) {
        return GeografAusgeben(ziel);
    };
    // The questions may take a while to answer: no other command meanwhile.
    Sperren(true);
    const Ergebnis ergebnis = ausgabe::ALBDatenSpeichernUnter(
        m_kataster, static_cast<ausgabe::Speicherformat>(nummer), gewählt, umgebung, m_ui);
    Sperren(false);
    return ergebnis;
}

Ergebnis FormDatenbank::GeografAusgeben(const std::filesystem::path& gewählt) {
    const Benutzereinstellungen einstellungen(m_benutzerordner);
    FormExportGG dialog(FormExportGG::Gespeichert(einstellungen), this);
    if (dialog.exec() != QDialog::Accepted)
        return Ergebnis::Abbruch();
    const ausgabe::GeografOptionen optionen = dialog.Optionen();
    try {
        FormExportGG::Speichern(einstellungen, optionen);
    } catch (const std::exception& e) {
        // The choice stands even when it can't be kept for the next time.
        m_ui.Meldung(e.what(), ProduktTitel, Stil::Warnung);
    }
    bool markiert = false;
    for (std::size_t z = 0; z < m_kataster.Zeilenzahl() && !markiert; ++z)
        markiert = Markiert(m_kataster, z);
    if (markiert) {
        if (!m_einzelsortierung.empty()) {
            const bool absteigend = m_absteigend;
            Umbauen([&] {
                m_kataster.Sortieren("ID_GG,Flurstück,BVNR,Anteil_Grundstück,Name", absteigend);
            });
            SortierungZeigen();
        }
        MarkierteAuswählen(m_kataster);
        AuswahlZeigen();
    }
    return ausgabe::GeografSpeichern(
        m_kataster, optionen,
        ausgabe::Speicherstamm(gewählt.string()) +
            std::string(ausgabe::Endung(ausgabe::Speicherformat::Geograf)),
        m_ui);
}

Ergebnis FormDatenbank::Bericht(const std::filesystem::path& datei) {
    if (m_beschaeftigt)
        return Ergebnis::Abbruch();
    Ergebnis ergebnis = ausgabe::CreateGridReport(m_kataster, datei, m_ui);
    if (ergebnis)
        DateiZeigen(datei);
    return ergebnis;
}

std::filesystem::path FormDatenbank::AuszugErstellen() {
    if (m_beschaeftigt)
        return {};
    std::optional<std::size_t> zeile;
    if (const QModelIndex aktuell = m_tabelle->currentIndex(); aktuell.isValid())
        zeile = static_cast<std::size_t>(aktuell.row());
    else if (const auto gewählt = m_kataster.AusgewählteZeilen(); !gewählt.empty())
        zeile = gewählt.front();
    if (!zeile || *zeile >= m_kataster.Zeilenzahl()) {
        m_ui.Meldung("Bitte wählen Sie eine Zeile der Tabelle!   ", ProduktTitel,
                     Stil::Information);
        return {};
    }
    const std::optional<report::Auszug> auszug =
        m_auszug->CreateRegisterExtract(m_kataster, *zeile, m_zustand.arbeitsverzeichnis, m_ui);
    if (!auszug)
        return {};
    if (!auszug->gespeichert) {
        // The extract itself says nothing about a file it could not write.
        m_ui.Meldung("Die Datei " + auszug->datei.string() + " kann nicht erzeugt werden!   ",
                     ProduktTitel, Stil::Fehler);
        return {};
    }
    DateiZeigen(auszug->datei);
    return auszug->datei;
}

} // namespace flurix::gui
