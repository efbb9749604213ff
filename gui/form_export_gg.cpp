#include "gui/form_export_gg.hpp"

#include "core/benutzereinstellungen.hpp"
#include "core/text.hpp"
#include "gui/qt_text.hpp"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>
#include <charconv>

namespace flurix::gui {
namespace {

using ausgabe::GeografForm;

/// The option captions in the order the dialog shows them; the index of GeografForm decides what
/// each writes.
struct Formknopf {
    GeografForm form;
    const char* beschriftung;
};
constexpr std::array<Formknopf, 5> Formknöpfe = {
    {{GeografForm::Ohne, "ohne"},
     {GeografForm::Plausibel, "nur plausible Beschriftung"},
     {GeografForm::Alle, "alle  "},
     {GeografForm::StempelA, "für Geograf Stempel-A "},
     {GeografForm::StempelB, "für Geograf Stempel-B"}}};

bool IstStempel(GeografForm form) {
    return form == GeografForm::StempelA || form == GeografForm::StempelB;
}

/// The column name of an output list entry: from its fourth character on.
QString Spaltenname(const QListWidgetItem& eintrag) { return eintrag.text().mid(3); }

int Ganzzahl(const std::string& text, int vorgabe) {
    int wert = vorgabe;
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), wert);
    return fehler == std::errc() && ende == text.data() + text.size() ? wert : vorgabe;
}

QPushButton* Knopf(const char* name, const char* text, const char* tipp, QWidget* eltern) {
    auto* knopf = new QPushButton(QString::fromUtf8(text), eltern);
    knopf->setObjectName(QString::fromUtf8(name));
    knopf->setToolTip(QString::fromUtf8(tipp));
    return knopf;
}

QLineEdit* Zahlenfeld(const char* name, QWidget* eltern) {
    auto* feld = new QLineEdit(eltern);
    feld->setObjectName(QString::fromUtf8(name));
    // GEOgraf keeps Art and Ebene in 16 bits.
    feld->setValidator(new QIntValidator(-32768, 32767, feld));
    feld->setMaximumWidth(80);
    return feld;
}

} // namespace

QString GeografListeneintrag(std::string_view spalte) {
    const auto& angeboten = ausgabe::GeografAngeboteneSpalten;
    const auto stelle = std::find(angeboten.begin(), angeboten.end(), spalte);
    const long nummer = stelle == angeboten.end() ? 0 : stelle - angeboten.begin() + 1;
    return QStringLiteral("%1 ").arg(nummer, 2, 10, QLatin1Char('0')) + QText(spalte);
}

FormExportGG::FormExportGG(const ausgabe::GeografOptionen& optionen, QWidget* eltern)
    : QDialog(eltern) {
    setObjectName(QStringLiteral("FormExportGG"));
    setWindowTitle(QStringLiteral("Geograf-Export"));

    m_alle = new QListWidget(this);
    m_alle->setObjectName(QStringLiteral("ListAlleSpalten"));
    for (std::string_view spalte : ausgabe::GeografAngeboteneSpalten)
        m_alle->addItem(QText(spalte));
    m_ausgabe = new QListWidget(this);
    m_ausgabe->setObjectName(QStringLiteral("ListAusgabeSpalten"));

    auto* hinzu = Knopf("cmdHinzufuegen", "  >  ", "Spalte ausgeben", this);
    auto* weg = Knopf("cmdEntfernen", "  <  ", "Spalte nicht ausgeben", this);
    auto* al = Knopf("cmdAL", "AL", "Nur Name und Fläche ausgeben", this);
    auto* alle = Knopf("cmdAllesAuswählen", "Alle", "Alle Spalten ausgeben", this);
    auto* keine = Knopf("cmdAllesAbwählen", "Keine", "Keine Spalte ausgeben", this);
    auto* auf = Knopf("cmdNachOben", "Auf", "Spalte früher ausgeben", this);
    auto* ab = Knopf("cmdNachUnten", "Ab", "Spalte später ausgeben", this);
    auto* mitte = new QVBoxLayout;
    mitte->addStretch(1);
    for (QPushButton* k : {hinzu, weg, al, alle, keine, auf, ab})
        mitte->addWidget(k);
    mitte->addStretch(1);

    const auto beschriftet = [this](const char* text, QListWidget* liste) {
        auto* spalte = new QVBoxLayout;
        spalte->addWidget(new QLabel(QString::fromUtf8(text), this));
        spalte->addWidget(liste);
        return spalte;
    };
    auto* listen = new QHBoxLayout;
    listen->addLayout(beschriftet("Alle Spalten", m_alle));
    listen->addLayout(mitte);
    listen->addLayout(beschriftet("Ausgabespalten", m_ausgabe));

    auto* formen = new QGroupBox(QStringLiteral("Beschriftung"), this);
    auto* formenLayout = new QVBoxLayout(formen);
    for (const Formknopf& k : Formknöpfe) {
        auto* knopf = new QRadioButton(QString::fromUtf8(k.beschriftung), formen);
        knopf->setObjectName(
            QStringLiteral("optAusgabeBeschreibung_%1").arg(static_cast<int>(k.form)));
        formenLayout->addWidget(knopf);
        m_formen[static_cast<std::size_t>(k.form)] = knopf;
        // A stamp has its fixed columns.
        if (IstStempel(k.form))
            connect(knopf, &QRadioButton::toggled, this, [this](bool an) {
                if (!an)
                    return;
                m_ausgabe->clear();
                for (std::string_view s : ausgabe::GeografStempelSpalten)
                    Hinzufügen(QText(s));
            });
    }

    m_art = Zahlenfeld("txtGGArt", this);
    m_ebene = Zahlenfeld("txtGGEbene", this);
    m_mkz = new QLineEdit(this);
    m_mkz->setObjectName(QStringLiteral("txtGGMKZ"));
    m_mkz->setMaximumWidth(80);
    auto* felder = new QFormLayout;
    felder->addRow(QStringLiteral("Ebene"), m_ebene);
    felder->addRow(QStringLiteral("Art"), m_art);
    felder->addRow(QStringLiteral("Meridiankennzahl"), m_mkz);
    m_ohneNullen = new QCheckBox(QStringLiteral("ohne führende Nullen"), this);
    m_ohneNullen->setObjectName(QStringLiteral("chkFührendeNullenEntfernen"));
    m_eineZeile = new QCheckBox(QStringLiteral("eine Zeile pro Flst/Gbb"), this);
    m_eineZeile->setObjectName(QStringLiteral("chkAllesEineZeile"));
    felder->addRow(m_ohneNullen);
    felder->addRow(m_eineZeile);

    auto* unten = new QHBoxLayout;
    unten->addWidget(formen);
    unten->addLayout(felder);

    auto* weiter = Knopf("cmdWeiter", "Weiter", "Geograf-Datei schreiben", this);
    weiter->setDefault(true);
    auto* abbrechen = Knopf("Command1", "Abbrechen", "Nichts ausgeben", this);
    auto* knöpfe = new QHBoxLayout;
    knöpfe->addStretch(1);
    knöpfe->addWidget(weiter);
    knöpfe->addWidget(abbrechen);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(listen, 1);
    layout->addLayout(unten);
    layout->addLayout(knöpfe);

    const auto gewählteSpalte = [this] {
        const QListWidgetItem* eintrag = m_alle->currentItem();
        if (eintrag != nullptr)
            Hinzufügen(eintrag->text());
    };
    connect(hinzu, &QPushButton::clicked, this, gewählteSpalte);
    connect(m_alle, &QListWidget::itemDoubleClicked, this, gewählteSpalte);
    const auto entfernen = [this] { delete m_ausgabe->currentItem(); };
    connect(weg, &QPushButton::clicked, this, entfernen);
    connect(m_ausgabe, &QListWidget::itemDoubleClicked, this, entfernen);
    connect(al, &QPushButton::clicked, this, [this] {
        m_ausgabe->clear();
        for (std::string_view s : ausgabe::GeografSpaltenAL)
            Hinzufügen(QText(s));
    });
    connect(alle, &QPushButton::clicked, this, [this] {
        m_ausgabe->clear();
        for (std::string_view s : ausgabe::GeografAngeboteneSpalten)
            Hinzufügen(QText(s));
    });
    connect(keine, &QPushButton::clicked, m_ausgabe, &QListWidget::clear);
    // The step is captured by value as a plain variable: clang 14 does not capture structured
    // bindings.
    for (const auto& [knopf, richtung] : {std::pair{auf, -1}, std::pair{ab, 1}})
        connect(knopf, &QPushButton::clicked, this, [this, schritt = richtung] {
            const int zeile = m_ausgabe->currentRow();
            const int ziel = zeile + schritt;
            if (zeile < 0 || ziel < 0 || ziel >= m_ausgabe->count())
                return;
            m_ausgabe->insertItem(ziel, m_ausgabe->takeItem(zeile));
            m_ausgabe->setCurrentRow(ziel);
        });
    // Parcel numbers have their own Art in the GEOgraf symbol table.
    connect(m_alle, &QListWidget::currentTextChanged, this, [this](const QString& spalte) {
        if (spalte == QText("Flurstück"))
            m_art->setText(QString::number(ausgabe::GeografArtFürFlurstück));
    });
    connect(weiter, &QPushButton::clicked, this, &FormExportGG::Weiter);
    connect(abbrechen, &QPushButton::clicked, this, &QDialog::reject);

    // The settings shown; the stamp's fixed columns must not replace the ones kept.
    m_formen[static_cast<std::size_t>(optionen.form)]->setChecked(true);
    m_ausgabe->clear();
    for (const std::string& s : optionen.spalten)
        Hinzufügen(QText(s));
    m_art->setText(QString::number(optionen.art));
    m_ebene->setText(QString::number(optionen.ebene));
    m_mkz->setText(QText(optionen.mkz));
    m_ohneNullen->setChecked(optionen.ohneFührendeNullen);
    m_eineZeile->setChecked(optionen.eineZeile);
}

void FormExportGG::Hinzufügen(const QString& spalte) {
    for (int i = 0; i < m_ausgabe->count(); ++i)
        if (Spaltenname(*m_ausgabe->item(i)) == spalte)
            return;
    m_ausgabe->addItem(GeografListeneintrag(Utf8(spalte)));
}

ausgabe::GeografOptionen FormExportGG::Optionen() const {
    ausgabe::GeografOptionen optionen;
    for (std::size_t i = 0; i < m_formen.size(); ++i)
        if (m_formen[i]->isChecked())
            optionen.form = static_cast<GeografForm>(i);
    for (int i = 0; i < m_ausgabe->count(); ++i)
        optionen.spalten.push_back(Utf8(Spaltenname(*m_ausgabe->item(i))));
    optionen.art = m_art->text().toInt();
    optionen.ebene = m_ebene->text().toInt();
    optionen.mkz = Utf8(m_mkz->text());
    optionen.ohneFührendeNullen = m_ohneNullen->isChecked();
    optionen.eineZeile = m_eineZeile->isChecked();
    return optionen;
}

void FormExportGG::Weiter() {
    if (m_ausgabe->count() == 0) {
        QMessageBox::information(
            this, QStringLiteral("Flurix"),
            QStringLiteral("Bitte wählen Sie mindestens eine Ausgabespalte!   "));
        return;
    }
    accept();
}

ausgabe::GeografOptionen FormExportGG::Gespeichert(const Benutzereinstellungen& einstellungen) {
    const auto lesen = [&](std::string_view schlüssel, std::string_view vorgabe = {}) {
        return einstellungen.Lesen(GeografEinstellungenAnwendung, GeografEinstellungenAbschnitt,
                                   schlüssel, vorgabe);
    };
    ausgabe::GeografOptionen optionen;
    const int form = Ganzzahl(lesen("optAusgabeBeschreibung"), 0);
    optionen.form = form >= 0 && form <= 4 ? static_cast<GeografForm>(form) : GeografForm::Ohne;
    const std::string spalten = lesen("ListAusgabeSpalten");
    for (std::string_view s : Teilen(spalten, ','))
        if (!s.empty())
            optionen.spalten.emplace_back(s);
    optionen.art = Ganzzahl(lesen("txtGGArt"), 0);
    optionen.ebene = Ganzzahl(lesen("txtGGEbene"), 0);
    optionen.mkz = lesen("txtGGMKZ", optionen.mkz);
    optionen.ohneFührendeNullen = lesen("chkFührendeNullenEntfernen") == "1";
    optionen.eineZeile = lesen("chkAllesEineZeile") == "1";
    return optionen;
}

void FormExportGG::Speichern(const Benutzereinstellungen& einstellungen,
                             const ausgabe::GeografOptionen& optionen) {
    std::string spalten;
    for (const std::string& s : optionen.spalten)
        spalten += (spalten.empty() ? "" : ",") + s;
    const std::pair<std::string_view, std::string> werte[] = {
        {"optAusgabeBeschreibung", std::to_string(static_cast<int>(optionen.form))},
        {"ListAusgabeSpalten", spalten},
        {"txtGGArt", std::to_string(optionen.art)},
        {"txtGGEbene", std::to_string(optionen.ebene)},
        {"txtGGMKZ", optionen.mkz},
        {"chkFührendeNullenEntfernen", optionen.ohneFührendeNullen ? "1" : "0"},
        {"chkAllesEineZeile", optionen.eineZeile ? "1" : "0"}};
    for (const auto& [schlüssel, wert] : werte)
        einstellungen.Schreiben(GeografEinstellungenAnwendung, GeografEinstellungenAbschnitt,
                                schlüssel, wert);
}

} // namespace flurix::gui
