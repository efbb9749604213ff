#include "gui/form_alb_ansicht.hpp"

#include "core/kataster.hpp"
#include "gui/qt_text.hpp"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace flurix::gui {
namespace {

/// Item data: the table's column index.
constexpr int SpaltenRolle = Qt::UserRole;

/// The text of a column in the list: its caption, and the key behind it where they differ (the
/// check mark column has no caption that says anything).
QString Eintrag(const KatasterSpalte& spalte) {
    if (spalte.überschrift.empty() || spalte.überschrift == spalte.schlüssel)
        return QText(spalte.schlüssel);
    return QText(spalte.überschrift) + QStringLiteral("  (") + QText(spalte.schlüssel) +
           QStringLiteral(")");
}

} // namespace

FormALBAnsicht::FormALBAnsicht(const Kataster& kataster, QWidget* eltern) : QDialog(eltern) {
    setObjectName(QStringLiteral("FormALBAnsicht"));
    setWindowTitle(QStringLiteral("Spaltenansicht manuell"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Angezeigte Spalten der Tabelle:"), this));

    m_liste = new QListWidget(this);
    m_liste->setObjectName(QStringLiteral("lstSpalten"));
    for (std::size_t spalte : kataster.Anzeigereihenfolge()) {
        auto* eintrag = new QListWidgetItem(Eintrag(kataster.Spalte(spalte)), m_liste);
        eintrag->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsSelectable);
        eintrag->setCheckState(kataster.Spalte(spalte).sichtbar ? Qt::Checked : Qt::Unchecked);
        eintrag->setData(SpaltenRolle, QVariant::fromValue(static_cast<qulonglong>(spalte)));
    }
    layout->addWidget(m_liste);

    auto* knöpfe = new QHBoxLayout;
    auto* alle = new QPushButton(QStringLiteral("Alle"), this);
    alle->setObjectName(QStringLiteral("cmdAlle"));
    auto* keine = new QPushButton(QStringLiteral("Keine"), this);
    keine->setObjectName(QStringLiteral("cmdKeine"));
    knöpfe->addWidget(alle);
    knöpfe->addWidget(keine);
    knöpfe->addStretch();
    auto* okAbbruch = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    okAbbruch->button(QDialogButtonBox::Ok)->setText(QStringLiteral("OK"));
    okAbbruch->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Abbrechen"));
    knöpfe->addWidget(okAbbruch);
    layout->addLayout(knöpfe);

    connect(alle, &QPushButton::clicked, this, [this] { AlleSetzen(true); });
    connect(keine, &QPushButton::clicked, this, [this] { AlleSetzen(false); });
    connect(okAbbruch, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(okAbbruch, &QDialogButtonBox::rejected, this, &QDialog::reject);
    resize(380, 520);
}

std::vector<std::size_t> FormALBAnsicht::Spalten() const {
    std::vector<std::size_t> spalten;
    for (int i = 0; i < m_liste->count(); ++i)
        spalten.push_back(
            static_cast<std::size_t>(m_liste->item(i)->data(SpaltenRolle).toULongLong()));
    return spalten;
}

std::vector<bool> FormALBAnsicht::Angehakt() const {
    std::vector<bool> angehakt;
    for (int i = 0; i < m_liste->count(); ++i)
        angehakt.push_back(m_liste->item(i)->checkState() == Qt::Checked);
    return angehakt;
}

bool FormALBAnsicht::Anhaken(std::size_t spalte, bool an) {
    const std::vector<std::size_t> spalten = Spalten();
    for (std::size_t i = 0; i < spalten.size(); ++i) {
        if (spalten[i] == spalte) {
            m_liste->item(static_cast<int>(i))->setCheckState(an ? Qt::Checked : Qt::Unchecked);
            return true;
        }
    }
    return false;
}

void FormALBAnsicht::AlleSetzen(bool an) {
    for (int i = 0; i < m_liste->count(); ++i)
        m_liste->item(i)->setCheckState(an ? Qt::Checked : Qt::Unchecked);
}

void FormALBAnsicht::Übernehmen(Kataster& kataster) const {
    const std::vector<std::size_t> spalten = Spalten();
    const std::vector<bool> angehakt = Angehakt();
    for (std::size_t i = 0; i < spalten.size(); ++i)
        if (spalten[i] < kataster.Spaltenzahl())
            kataster.Spalte(spalten[i]).sichtbar = angehakt[i];
}

} // namespace flurix::gui
