#include "gui/form_nas_darstellung.hpp"

#include "core/benutzereinstellungen.hpp"
#include "gui/qt_text.hpp"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <array>
#include <string_view>

namespace flurix::gui {
namespace {

/// The frame a box stands in: the area computation, the GEOgraf output, the DXF output, or the
/// reading and the protocol. The two "mit Schraffur Gebäude" boxes are told apart by their frame.
int Rahmen(std::string_view name) {
    if (name == "chkMitNaBerechnung" || name.starts_with("chkQuick") ||
        name == "chkMitFlächenAnpassung" || name == "chkSVGlöschen")
        return 0;
    if (name == "chkSQLMeridianKZ" || name == "chkSQLGGmitSchraffur")
        return 2;
    if (name.starts_with("chkALKISDXF"))
        return 3;
    return 1;
}

constexpr std::array<const char*, 4> Rahmentitel = {"Flächenberechnung", "Einlesen und Protokoll",
                                                    "Geograf-Export", "DXF-Export"};

} // namespace

FormNasDarstellung::FormNasDarstellung(const nas::NasOptionen& optionen, QWidget* eltern)
    : QDialog(eltern), m_optionen(optionen) {
    setObjectName(QStringLiteral("FormNasDarstellung"));
    setWindowTitle(QStringLiteral("Flurix-NAS"));

    std::array<QVBoxLayout*, Rahmentitel.size()> spalten{};
    auto* rahmenLayout = new QHBoxLayout;
    auto* links = new QVBoxLayout;
    auto* rechts = new QVBoxLayout;
    for (std::size_t r = 0; r < Rahmentitel.size(); ++r) {
        auto* rahmen = new QGroupBox(QString::fromUtf8(Rahmentitel[r]), this);
        spalten[r] = new QVBoxLayout(rahmen);
        (r == 0 ? links : rechts)->addWidget(rahmen);
    }
    links->addStretch(1);
    rechts->addStretch(1);
    rahmenLayout->addLayout(links);
    rahmenLayout->addLayout(rechts);

    for (const nas::NasOptionsfeld& f : nas::NasOptionsfelder()) {
        auto* kästchen = new QCheckBox(QText(f.beschriftung), this);
        kästchen->setObjectName(QText(f.name));
        spalten[static_cast<std::size_t>(Rahmen(f.name))]->addWidget(kästchen);
        // The parts of the area computation are indented under it.
        if (nas::NasOptionen::HängtAnFlächenberechnung(f.feld))
            kästchen->setContentsMargins(20, 0, 0, 0);
        connect(kästchen, &QCheckBox::toggled, this, [this, feld = f.feld](bool an) {
            m_optionen.Setzen(feld, an);
            Zeigen();
        });
        m_kästchen.push_back(kästchen);
    }

    m_start = new QPushButton(this);
    m_start->setObjectName(QStringLiteral("cmdStart"));
    m_start->setDefault(true);
    auto* einlesen = new QPushButton(QStringLiteral("Nur in die NAS-Datenbank einlesen"), this);
    einlesen->setObjectName(QStringLiteral("cmdEinlesen"));
    auto* abbruch = new QPushButton(QStringLiteral("Abbruch"), this);
    abbruch->setObjectName(QStringLiteral("cmdAbbruch"));
    connect(m_start, &QPushButton::clicked, this, [this] {
        m_wahl = NasStart::Direkt;
        accept();
    });
    connect(einlesen, &QPushButton::clicked, this, [this] {
        m_wahl = NasStart::NurEinlesen;
        accept();
    });
    connect(abbruch, &QPushButton::clicked, this, &QDialog::reject);
    auto* knöpfe = new QHBoxLayout;
    knöpfe->addStretch(1);
    knöpfe->addWidget(m_start);
    knöpfe->addWidget(einlesen);
    knöpfe->addWidget(abbruch);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(rahmenLayout);
    layout->addLayout(knöpfe);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    Zeigen();
}

void FormNasDarstellung::Zeigen() {
    const auto felder = nas::NasOptionsfelder();
    for (std::size_t i = 0; i < felder.size(); ++i) {
        QCheckBox* kästchen = m_kästchen[i];
        const QSignalBlocker stumm(kästchen);
        kästchen->setChecked(m_optionen.*felder[i].feld);
        if (nas::NasOptionen::HängtAnFlächenberechnung(felder[i].feld))
            kästchen->setEnabled(m_optionen.mitNaBerechnung);
    }
    m_start->setText(QText(m_optionen.StartKnopfText()));
}

NasStart FormNasDarstellung::Bearbeiten(const Benutzereinstellungen& einstellungen,
                                        nas::NasOptionen& optionen, QWidget* eltern) {
    const auto gelesen = nas::NasOptionen::AusText(
        einstellungen.Lesen(nas::NasOptionenAnwendung, nas::NasOptionenAbschnitt,
                            nas::NasOptionenSchlüssel, nas::NasOptionen{}.AlsText()));
    FormNasDarstellung dialog(gelesen, eltern);
    if (dialog.exec() != QDialog::Accepted || dialog.Wahl() == NasStart::Abbruch)
        return NasStart::Abbruch;
    optionen = dialog.Optionen();
    einstellungen.Schreiben(nas::NasOptionenAnwendung, nas::NasOptionenAbschnitt,
                            nas::NasOptionenSchlüssel, optionen.AlsText());
    return dialog.Wahl();
}

} // namespace flurix::gui
