#pragma once
// The options dialog of a register import (FormDatenbankDarstellung): which WLDGE reader runs, and
// how owners, names and land use come into the table.
// The class name, its slots and signals stay ASCII for moc.

#include "import/datenladen.hpp"

#include <QDialog>
#include <QString>

#include <string_view>

class QCheckBox;
class QGroupBox;
class QRadioButton;

namespace flurix::gui {

/// The options dialog for one load. It shows the options it is given for their `importFormat`
/// ("32", "35" or "XML") and hides what doesn't apply: the complete WLDGE reader is offered only
/// for other formats than "35" and Web-XML; Web-XML has no choice of reader at all; for "35" the
/// row choice is fixed to one row per parcel, as that reader makes its rows itself.
class FormDatenbankDarstellung : public QDialog {
    Q_OBJECT

public:
    explicit FormDatenbankDarstellung(const import::ImportOptionen& optionen,
                                      QWidget* eltern = nullptr);

    /// The options as the dialog shows them now; importFormat as given.
    import::ImportOptionen Optionen() const;

    /// Caption for a format: "WLDGE-" + format + "-Datenformat"; Web-XML extracts are no WLDGE
    /// data, so "XML" gives "Web-XML-Datenformat".
    static QString Titel(std::string_view format);

    /// Runs the dialog modally over `eltern`. OK writes the choice into `optionen` and returns
    /// true; cmdAbbruch or the close button return false and leave `optionen` as it was.
    static bool Bearbeiten(import::ImportOptionen& optionen, QWidget* eltern);

private:
    import::ImportOptionen m_vorgabe;
    bool m_komplettAngeboten = false;
    QCheckBox* m_teilweise = nullptr;
    QCheckBox* m_komplett = nullptr;
    QCheckBox* m_nutzungTatsaechlich = nullptr;
    QCheckBox* m_nameUmdrehen = nullptr;
    QGroupBox* m_zeilen = nullptr;
    QRadioButton* m_jeEigentuemer = nullptr;
    QRadioButton* m_jeFlurstueck = nullptr;
    QCheckBox* m_suchbegriff = nullptr;
};

/// True for the format mark of Web-XML extracts ("XML", any case).
bool IstWebXml(std::string_view format);

} // namespace flurix::gui
