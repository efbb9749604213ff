#pragma once
// The file-type filters of the open dialogs. The core writes them as one string of description and
// pattern pairs, "A (*.a)|*.a|B (*.b)|*.b|"; Qt's dialogs take the descriptions, "A (*.a);;B
// (*.b)".

#include <QString>
#include <QStringList>

#include <string_view>

namespace flurix::gui {

/// The filters of a "description|pattern|..." string, one entry per pair, in their order. A
/// description that names no pattern in parentheses gets the pattern appended (";" between several
/// patterns becomes a blank). Empty pairs, as after the closing "|", are left out.
QStringList QtDateifilterListe(std::string_view filter);

/// The same filters joined with ";;", as QFileDialog takes them.
QString QtDateifilter(std::string_view filter);

/// The number (1 for the first) of the filter the dialog returned as selected; 0 when it is none
/// of them. Filters of the same pattern ("Web-XML-Datei (*.xml)", "NAS (*.xml)") stay apart, since
/// the dialog returns the whole description.
int FilterNummer(const QStringList& filter, const QString& gewählt);

} // namespace flurix::gui
