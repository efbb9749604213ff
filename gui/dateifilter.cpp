#include "gui/dateifilter.hpp"

#include "gui/qt_text.hpp"

namespace flurix::gui {

QStringList QtDateifilterListe(std::string_view filter) {
    const QStringList teile = QText(filter).split(QLatin1Char('|'));
    QStringList liste;
    for (qsizetype i = 0; i < teile.size(); i += 2) {
        const QString beschreibung = teile[i].trimmed();
        const QString muster =
            i + 1 < teile.size()
                ? teile[i + 1].trimmed().replace(QLatin1Char(';'), QLatin1Char(' '))
                : QString();
        if (beschreibung.isEmpty() && muster.isEmpty())
            continue;
        if (beschreibung.isEmpty())
            liste << muster;
        else if (muster.isEmpty() || beschreibung.contains(QLatin1Char('(')))
            liste << beschreibung;
        else
            liste << beschreibung + QStringLiteral(" (") + muster + QLatin1Char(')');
    }
    return liste;
}

QString QtDateifilter(std::string_view filter) {
    return QtDateifilterListe(filter).join(QStringLiteral(";;"));
}

int FilterNummer(const QStringList& filter, const QString& gewählt) {
    return static_cast<int>(filter.indexOf(gewählt)) + 1;
}

} // namespace flurix::gui
