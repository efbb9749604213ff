#include "gui/form_datenbank_darstellung.hpp"

#include "gui/qt_text.hpp"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace flurix::gui {
namespace {

template <typename Knopf>
Knopf* Anlegen(const QString& name, const QString& text, const QString& tipp, QWidget* eltern) {
    auto* knopf = new Knopf(text, eltern);
    knopf->setObjectName(name);
    if (!tipp.isEmpty())
        knopf->setToolTip(tipp);
    return knopf;
}

} // namespace

bool IstWebXml(std::string_view format) {
    return QText(format).compare(QStringLiteral("XML"), Qt::CaseInsensitive) == 0;
}

QString FormDatenbankDarstellung::Titel(std::string_view format) {
    if (IstWebXml(format))
        return QStringLiteral("Web-XML-Datenformat");
    return QStringLiteral("WLDGE-") + QText(format) + QStringLiteral("-Datenformat");
}

FormDatenbankDarstellung::FormDatenbankDarstellung(const import::ImportOptionen& optionen,
                                                   QWidget* eltern)
    : QDialog(eltern), m_vorgabe(optionen) {
    setObjectName(QStringLiteral("FormDatenbankDarstellung"));
    setWindowTitle(Titel(optionen.importFormat));

    const bool webXml = IstWebXml(optionen.importFormat);
    const bool format35 = optionen.importFormat == "35";

    // The reader: the two boxes exclude each other, one of them is always ticked.
    auto* leser = new QGroupBox(this);
    leser->setObjectName(QStringLiteral("fraLeser"));
    m_teilweise = Anlegen<QCheckBox>(
        QStringLiteral("chkAlbTeilweise"), QStringLiteral("WLDGE-Daten teilweise einlesen"),
        QStringLiteral("hier werden nur die wichtigsten Informationen, wie Flurstücksnummer, "
                       "Eigentümer, Grundbuchblattnummer etc., aus der WLDGE-Datei importiert"),
        leser);
    m_komplett = Anlegen<QCheckBox>(
        QStringLiteral("chkAlbKomplett"), QStringLiteral("WLDGE-Daten komplett einlesen"),
        QStringLiteral("mittels SQL-Datenbank können (z.Z. fast) alle Informationen der "
                       "WLDGE-Datei im Datenanforderungsformat 32 ausgwertet werden"),
        leser);
    auto* leserGruppe = new QButtonGroup(this);
    leserGruppe->setExclusive(true);
    leserGruppe->addButton(m_teilweise);
    leserGruppe->addButton(m_komplett);
    m_komplettAngeboten = !webXml && !format35;
    m_komplett->setVisible(m_komplettAngeboten);
    (m_komplettAngeboten && optionen.albKomplett ? m_komplett : m_teilweise)->setChecked(true);
    auto* leserLayout = new QVBoxLayout(leser);
    leserLayout->addWidget(m_teilweise);
    leserLayout->addWidget(m_komplett);
    // A Web-XML extract has one reader only: there is nothing to choose.
    leser->setVisible(!webXml);

    auto* inhalt = new QGroupBox(this);
    inhalt->setObjectName(QStringLiteral("fraInhalt"));
    m_nutzungTatsaechlich = Anlegen<QCheckBox>(
        QStringLiteral("ALBNutzungTasächlich"), QStringLiteral("tatsächliche Nutzung vollständig"),
        QStringLiteral("Nutzung pro NA unverschlüsselt"), inhalt);
    m_nutzungTatsaechlich->setChecked(optionen.nutzungTatsächlich);
    m_nameUmdrehen =
        Anlegen<QCheckBox>(QStringLiteral("ALBNameVornameUmdrehen"),
                           QStringLiteral("[Name, Vorname] in [Vorname Name] ändern"), {}, inhalt);
    m_nameUmdrehen->setChecked(optionen.nameUmdrehen);
    auto* inhaltLayout = new QVBoxLayout(inhalt);
    inhaltLayout->addWidget(m_nutzungTatsaechlich);
    inhaltLayout->addWidget(m_nameUmdrehen);

    m_zeilen = new QGroupBox(this);
    m_zeilen->setObjectName(QStringLiteral("EigentümerJeFlurstück"));
    m_jeEigentuemer = Anlegen<QRadioButton>(
        QStringLiteral("EigentümerJeFlurstück_0"),
        QStringLiteral("je Eigentümer und Flurstück eine Datenzeile"), {}, m_zeilen);
    m_jeFlurstueck = Anlegen<QRadioButton>(
        QStringLiteral("EigentümerJeFlurstück_1"),
        QStringLiteral("alle Eigentümer je Flurstück eine Datenzeile"), {}, m_zeilen);
    // The reader of format 35 makes one row per parcel whatever is chosen: show it so.
    (format35 || optionen.alleEigentümerInEinerZeile ? m_jeFlurstueck : m_jeEigentuemer)
        ->setChecked(true);
    m_zeilen->setEnabled(!format35);
    auto* zeilenLayout = new QVBoxLayout(m_zeilen);
    zeilenLayout->addWidget(m_jeEigentuemer);
    zeilenLayout->addWidget(m_jeFlurstueck);

    m_suchbegriff =
        Anlegen<QCheckBox>(QStringLiteral("chkFlurixSuchbegriffGemarkung"),
                           QStringLiteral("Flurstückssuche vereinfachen"),
                           QStringLiteral("Auswahl Flurstück nach Gemarkung und Flur"), this);
    m_suchbegriff->setChecked(optionen.suchbegriffGemarkung);

    auto* ok = Anlegen<QPushButton>(QStringLiteral("cmdOK"), QStringLiteral("OK"), {}, this);
    ok->setDefault(true);
    auto* abbruch =
        Anlegen<QPushButton>(QStringLiteral("cmdAbbruch"), QStringLiteral("Abbruch"), {}, this);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(abbruch, &QPushButton::clicked, this, &QDialog::reject);
    auto* knöpfe = new QHBoxLayout;
    knöpfe->addStretch(1);
    knöpfe->addWidget(ok);
    knöpfe->addWidget(abbruch);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(leser);
    layout->addWidget(inhalt);
    layout->addWidget(m_zeilen);
    layout->addWidget(m_suchbegriff);
    layout->addLayout(knöpfe);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

import::ImportOptionen FormDatenbankDarstellung::Optionen() const {
    import::ImportOptionen optionen = m_vorgabe;
optionen.albKomplett = m_komplettAngeboten && m_komplett->isChecked();
optionen.nutzungTatsächlich = m_nutzungTatsaechlich->isChecked();
optionen.nameUmdrehen = m_nameUmdrehen->isChecked();
optionen.alleEigentümerInEinerZeile = m_jeFlurstueck->isChecked();
optionen.suchbegriffGemarkung = m_suchbegriff->isChecked();
return optionen;
} // namespace flurix::gui

bool FormDatenbankDarstellung::Bearbeiten(import::ImportOptionen& optionen, QWidget* eltern) {
    FormDatenbankDarstellung dialog(optionen, eltern);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    optionen = dialog.Optionen();
    return true;
}

} // namespace flurix::gui
