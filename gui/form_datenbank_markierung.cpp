// The search bar and the toolbar group btnMarkierung of the main window: each runs the core's
// command on the cadastre table and shows the outcome in the grid.

#include "gui/form_datenbank.hpp"

#include "core/spaltenansicht.hpp"
#include "core/suche.hpp"
#include "gui/flurstuecksliste_dialog.hpp"
#include "gui/kataster_modell.hpp"
#include "gui/qt_oberflaeche.hpp"
#include "gui/qt_text.hpp"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStyle>
#include <QToolBar>

#include <optional>

namespace flurix::gui {

// --- the search bar ------------------------------------------------------------------------------

QToolBar* FormDatenbank::SuchleisteAnlegen() {
    auto* leiste = new QToolBar(QStringLiteral("Suche"), this);
    leiste->setObjectName(QStringLiteral("Suchleiste"));
    leiste->setMovable(false);

    leiste->addWidget(new QLabel(QStringLiteral(" Suchbegriff: "), leiste));
    m_suchbegriff = new QLineEdit(leiste);
    m_suchbegriff->setObjectName(QStringLiteral("FlurixSuchbegriff"));
    m_suchbegriff->setPlaceholderText(QStringLiteral("z.B. 231/1"));
    // The padding rule of the search, so that no one wonders why "12/3" finds "00012/0003".
    m_suchbegriff->setToolTip(QStringLiteral(
        "Der Begriff wird für die Spalte mit Nullen aufgefüllt wie in NAS-Daten: Flurstück 231 "
        "als 00231/0000, 12/3 als 00012/0003, Flur auf 4, Grundbuchblatt auf 7, Fläche auf 9 "
        "Stellen.\nFindet das nichts (WLDGE: 00012/003, Web-XML: 12/3), wird der Begriff wie "
        "eingegeben gesucht; die Statusleiste sagt es dann."));
    m_suchbegriff->setClearButtonEnabled(true);
    m_suchbegriff->setMinimumWidth(180);
    leiste->addWidget(m_suchbegriff);

    // A list box of the bar with its caption before it.
    const auto auswahl = [leiste](const QString& beschriftung, const QString& name,
                                  const QString& tipp, int zeichen) {
        leiste->addWidget(new QLabel(beschriftung, leiste));
        auto* box = new QComboBox(leiste);
        box->setObjectName(name);
        box->setToolTip(tipp);
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(zeichen);
        leiste->addWidget(box);
        return box;
    };
    m_suchspalte = auswahl(QStringLiteral("  in Spalte: "), QStringLiteral("FlurixSuchenInFeld"),
                           QStringLiteral("Spalte, in der gesucht wird"), 16);
    m_gemarkung =
        auswahl(QStringLiteral("  Gemarkung, Flur: "), QStringLiteral("FlurixSuchbegriffGemarkung"),
                QStringLiteral("Suche nur in dieser Gemarkung und Flur"), 20);
    m_gemarkung->setEnabled(false);

    auto* suchen = new QPushButton(style()->standardIcon(QStyle::SP_FileDialogContentsView),
                                   QStringLiteral("Suchen"), leiste);
    suchen->setObjectName(QStringLiteral("cmdFlurixSuchen"));
    leiste->addWidget(suchen);

    connect(m_suchbegriff, &QLineEdit::returnPressed, this, [this] { Suchen(); });
    connect(suchen, &QPushButton::clicked, this, [this] { Suchen(); });
    SuchspaltenFüllen();
    return leiste;
}

void FormDatenbank::SuchspaltenFüllen() {
    const QString gewählt = m_suchspalte->currentData().toString();
    const QSignalBlocker sperre(m_suchspalte);
    m_suchspalte->clear();
    for (int abschnitt = 0; abschnitt < m_modell->columnCount(); ++abschnitt) {
        const auto spalte = m_modell->Spalte(abschnitt);
        if (!spalte || m_kataster.Spalte(*spalte).kontrollkästchen)
            continue;
        const KatasterSpalte& kopf = m_kataster.Spalte(*spalte);
        m_suchspalte->addItem(QText(kopf.überschrift.empty() ? kopf.schlüssel : kopf.überschrift),
                              QText(kopf.schlüssel));
    }
    int stelle = static_cast<int>(m_suchspalte->findData(gewählt));
    if (stelle < 0)
        stelle = static_cast<int>(m_suchspalte->findData(QStringLiteral("Flurstück")));
    m_suchspalte->setCurrentIndex(std::max(stelle, 0));
}

void FormDatenbank::GemarkungsboxFüllen(const std::vector<std::string>& einträge,
                                        bool ausKennzeichen) {
    m_gemarkungAusKennzeichen = ausKennzeichen;
    QStringList liste{QStringLiteral("(alle Gemarkungen)")}; // the first entry chooses no pair
    for (const std::string& eintrag : einträge)
        liste << QText(eintrag);
    m_gemarkung->clear();
    m_gemarkung->addItems(liste);
    m_gemarkung->setEnabled(!einträge.empty());
}

std::size_t FormDatenbank::Suchen() {
    if (m_beschaeftigt)
        return 0;
    const std::string spalte = Utf8(m_suchspalte->currentData().toString());
    const std::string begriff = Utf8(m_suchbegriff->text());
    std::optional<GemarkungFlur> paar;
    if (m_gemarkung->currentIndex() > 0)
        paar = GemarkungFlurAusEintrag(Utf8(m_gemarkung->currentText()), m_gemarkungAusKennzeichen);
    // In the site plan view the hits are marked and numbered as well.
    Stempelnummerierung* lageplan = Spaltenansicht() == AnsichtLageplan ? &m_nummerierung : nullptr;
    std::size_t treffer = 0;
    Umbauen([&] {
        treffer = CmdFlurixSuchbegriff(m_kataster, spalte, begriff, paar,
                                       m_optionen.alleEigentümerInEinerZeile, lageplan, m_ui);
    });
    ZurErstenAuswahl();
    return treffer;
}

// --- the toolbar group btnMarkierung -------------------------------------------------------------

QString FormDatenbank::Auftragsordner() const {
    const std::string& ordner = m_zustand.auftrag.AuftragsPfad.empty()
                                    ? m_zustand.dialogStartordner
                                    : m_zustand.auftrag.AuftragsPfad;
    return QText(ordner);
}

void FormDatenbank::EigentümerGGStempel() {
    bool angewandt = false;
    Umbauen([&] {
        angewandt = DbEigentümerGGStempel(m_kataster, m_nummerierung,
                                          m_zustand.installation.Spaltenansichten());
    });
    if (angewandt)
        AnsichtsboxSetzen(std::string(AnsichtLageplan));
    SuchspaltenFüllen();
}

void FormDatenbank::MarkierungSpeichern() {
    const QString name = FlurstückslisteSpeichern(this, Auftragsordner());
    if (!name.isEmpty())
        DbMarkierungSpeichern(m_kataster, PfadAus(name), m_ui);
}

void FormDatenbank::MarkierungLaden() {
    const QString liste = FlurstückslisteÖffnen(this, Auftragsordner());
    if (liste.isEmpty())
        return;
    Umbauen([&] { DbMarkierungLaden(m_kataster, PfadAus(liste), m_ui); });
    ZurErstenAuswahl();
}

void FormDatenbank::FlurstückMarkieren() {
    Zellenarbeit([this] { DbFlurstückMarkieren(m_kataster, m_ui); });
}

void FormDatenbank::MarkierungErzeugen() {
    Zellenarbeit([this] { DbMarkierungErzeugen(m_kataster, m_ui); });
}

void FormDatenbank::MarkerErzeugen() {
    Zellenarbeit([this] { DbMarkerErzeugen(m_kataster, m_ui); });
}

void FormDatenbank::MarkierungLöschen() {
    Zellenarbeit([this] { DbMarkierungLöschen(m_kataster, m_ui); });
}

void FormDatenbank::MarkierungAlle() {
    Zellenarbeit([this] { DbMarkierungAlle(m_kataster, m_ui); });
}

} // namespace flurix::gui
