#include "gui/form_optionen_system.hpp"

#include "core/einstellungen.hpp"
#include "core/konfig_sicherung.hpp"
#include "gui/dateifilter.hpp"
#include "gui/qt_text.hpp"

#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace flurix::gui {
namespace {

constexpr std::string_view ZipFilter = "Zip-Datei (*.zip)|*.zip|";

QPushButton* Knopf(const QString& name, const QString& text, const QString& tipp, QWidget* eltern) {
    auto* knopf = new QPushButton(text, eltern);
    knopf->setObjectName(name);
    knopf->setToolTip(tipp);
    return knopf;
}

} // namespace

FormOptionenSystem::FormOptionenSystem(std::filesystem::path konfigordner, Oberfläche& ui,
                                       QWidget* eltern)
    : QDialog(eltern), m_konfig(std::move(konfigordner)), m_ui(ui) {
    setObjectName(QStringLiteral("FormOptionenSystem"));
    setWindowTitle(QStringLiteral("Systemoptionen"));

    auto* ordner = new QLabel(QStringLiteral("Systemdateien im Ordner ") + QPfad(m_konfig), this);
    ordner->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* sicherung =
        Knopf(QStringLiteral("cmdSicherung"), QStringLiteral("Systemsicherung erstellen"),
              QStringLiteral("alle Systemdateien als Zip-Datei sichern"), this);
    auto* zurück =
        Knopf(QStringLiteral("smdZurück"), QStringLiteral("Systemsicherung einlesen"),
              QStringLiteral("die Systemdateien aus einer Zip-Datei wiederherstellen"), this);
    auto* bearbeiten =
        Knopf(QStringLiteral("btnOptAlkisEditDat"), QStringLiteral("Systemdatei bearbeiten"),
              QStringLiteral("eine Systemdatei sichern und im Editor öffnen"), this);
    auto* schließen = Knopf(QStringLiteral("cmdSchliessen"), QStringLiteral("Schließen"), {}, this);
    // Enter closes the dialog; no backup starts by accident.
    schließen->setDefault(true);
    m_zustand = new QLabel(this);
    m_zustand->setObjectName(QStringLiteral("lblZustand"));
    m_zustand->setWordWrap(true);

    connect(sicherung, &QPushButton::clicked, this, [this] { SicherungKlick(); });
    connect(zurück, &QPushButton::clicked, this, [this] { ZurueckKlick(); });
    connect(bearbeiten, &QPushButton::clicked, this, [this] { EditDatKlick(); });
    connect(schließen, &QPushButton::clicked, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(ordner);
    layout->addWidget(sicherung);
    layout->addWidget(zurück);
    layout->addWidget(bearbeiten);
    layout->addWidget(m_zustand);
    layout->addStretch(1);
    layout->addWidget(schließen, 0, Qt::AlignRight);
    resize(460, sizeHint().height());
}

bool FormOptionenSystem::Anzeigen(const std::filesystem::path& konfigordner, Oberfläche& ui,
                                  QWidget* eltern) {
    if (!KonfigSchreibrechtPrüfen(konfigordner, ui))
        return false;
    FormOptionenSystem dialog(konfigordner, ui, eltern);
    dialog.exec();
    return true;
}

Ergebnis FormOptionenSystem::Sichern(const std::filesystem::path& zipdatei) {
    Ergebnis ergebnis = KonfigSichern(m_konfig, zipdatei, m_ui);
    m_zustand->setText(QText(ergebnis.Meldung()).trimmed());
    return ergebnis;
}

Ergebnis FormOptionenSystem::Einlesen(const std::filesystem::path& zipdatei) {
    Ergebnis ergebnis = KonfigEinlesen(m_konfig, zipdatei, m_ui);
    if (ergebnis)
        m_zustand->setText(QStringLiteral("Systemsicherung ") + QPfad(zipdatei) +
                           QStringLiteral(" eingelesen."));
    else
        m_zustand->setText(QText(ergebnis.Meldung()).trimmed());
    return ergebnis;
}

Ergebnis FormOptionenSystem::DateiBearbeiten(const std::filesystem::path& datei) {
    std::filesystem::path kopie;
    try {
        kopie = KonfigDateiSichern(datei, ZeitStempelText());
    } catch (const Fehler& fehler) {
        m_ui.Meldung(fehler.what(), ProduktTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag(fehler.what());
    }
    m_zustand->setText(QStringLiteral("Sicherungskopie ") + QPfad(kopie) +
                       QStringLiteral(" angelegt."));
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(QPfad(datei)))) {
        const std::string text =
            "Die Datei " + datei.string() + " konnte nicht im Editor geöffnet werden!   ";
        m_ui.Meldung(text, ProduktTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag(text);
    }
    return Ergebnis::Ok(kopie.string());
}

QString FormOptionenSystem::Zustand() const { return m_zustand->text(); }

void FormOptionenSystem::SicherungKlick() {
    // The core asks before an existing archive is replaced; the dialog must not ask as well.
    QFileDialog dialog(this, QStringLiteral("Systemsicherung erstellen"), QDir::homePath(),
                       QtDateifilter(ZipFilter));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setDefaultSuffix(QStringLiteral("zip"));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    Sichern(PfadAus(dialog.selectedFiles().constFirst()));
}

void FormOptionenSystem::ZurueckKlick() {
    const QString datei =
        QFileDialog::getOpenFileName(this, QStringLiteral("Systemsicherung einlesen"),
                                     QDir::homePath(), QtDateifilter(ZipFilter));
    if (datei.isEmpty())
        return;
    Einlesen(PfadAus(datei));
}

void FormOptionenSystem::EditDatKlick() {
    const QString datei = QFileDialog::getOpenFileName(
        this, QStringLiteral("Systemdatei bearbeiten"), QPfad(m_konfig),
        QStringLiteral("Systemdateien (*.dat);;Alle Dateien (*)"));
    if (datei.isEmpty())
        return;
    DateiBearbeiten(PfadAus(datei));
}

} // namespace flurix::gui
