#pragma once
// The file dialogs of the parcel lists (btnDbMarkierungLaden, btnDbMarkierungSpeichern): the
// filter of the lists, and under the file list of the open dialog the text that tells the user
// what a list must hold.

#include <QString>

class QWidget;

namespace flurix::gui {

/// Object name of the label with the list format in the open dialog.
inline constexpr char ListenformatName[] = "lblListenformat";

/// The text of the list format, line by line (FlurstückslisteHinweis).
QString ListenformatText();

/// The open dialog for a parcel list: filters "FKZ (*.lst)", "Flurstücksformat (*.prn)", "alle
/// Daten (*.*)", starting in `startordner`, with the list format shown below the files (Qt's own
/// dialog, so that the text can stand in it). Returns the chosen file, "" on Cancel.
QString FlurstückslisteÖffnen(QWidget* eltern, const QString& startordner);

/// The save dialog for the marked parcels: filter "FKZ (*.lst)", starting in `startordner`.
/// Returns the chosen name ("" on Cancel); DbMarkierungSpeichern adds ".lst" where it is missing.
QString FlurstückslisteSpeichern(QWidget* eltern, const QString& startordner);

} // namespace flurix::gui
