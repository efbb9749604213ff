#pragma once
// Backup of the configuration folder (<installation>/config/): the system options dialog tests the
// right to change the system files, saves the whole folder as a zip archive and reads such an
// archive back over it; and a configuration file is copied beside itself before it is edited.

#include "core/fehler.hpp"
#include "core/oberflaeche.hpp"

#include <cstdint>
#include <filesystem>
#include <string>

namespace flurix {

/// Tests the right to change the system files: writes "#prüfe_schreibrecht#.dat" into the
/// configuration folder, checks that it is there and deletes it. Returns true when that works.
/// Otherwise it shows, titled "Änderungen an den Systemdateien nicht möglich!", the three lines
///   "Es liegen keine Schreibrechte für Änderungen an den Systemdateien im Programmverzeichnis"
///       with five blanks at its end,
///   "<folder>/... vor!   "
///   "Bitte informieren Sie bei Bedarf Ihren Systemadministrator!   "
/// joined with "\n" (the folder line finishes the sentence of the first one, so it stands on its
/// own line below it), and returns false; the dialog then closes again.
bool KonfigSchreibrechtPrüfen(const std::filesystem::path& konfigordner, Oberfläche& ui);

/// Saves every file of the configuration folder, subfolders included, with its path relative to the
/// folder (UTF-8, "/" between the parts), as the zip archive `zipdatei`.
/// - If `zipdatei` exists, asks "Datei schon vorhanden! Überschreiben?   "; No leaves everything
///   as it was and returns Abbruch.
/// - The archive is written under a temporary name beside `zipdatei` and renamed at the end, so a
///   failure never leaves half an archive in place of an old one.
/// - Failures are shown (title "Flurix") and returned as Fehlschlag with the same text:
///   "Fehler beim Zip-Datei erstellen!   "       the archive can't be created;
///   "Fehler beim Daten zusammenstellen!   "     a file can't be read or added, or there is none;
///   "Fehler beim Zip-Datei schreiben!   "       compressing, writing or renaming it fails.
/// - Success shows "Zip-Systemsicherung    " + zipdatei + "   erfolgreich erstellt!   ", titled
///   "Flurix Systemsicherung   ", and returns Ok with that text.
Ergebnis KonfigSichern(const std::filesystem::path& konfigordner,
                       const std::filesystem::path& zipdatei, Oberfläche& ui);

/// Most bytes a backup may unpack to: a configuration folder holds text files of a few megabytes,
/// and an archive that claims more is refused rather than allowed to fill the disk.
inline constexpr std::uintmax_t KonfigHöchstGröße = std::uintmax_t{1} << 30;

/// Reads a backup back: asks "Systemsicherung einlesen? Alle Daten werden überschrieben!   " and
/// then "Sollen die Systemdateien wirklich überschrieben werden?   ", both with No preselected (an
/// unattended run answers Yes); a No returns Abbruch and changes nothing. Then unpacks the archive
/// over the folder: its files replace those of the same name, other files of the folder stay.
/// Every entry is checked and unpacked into a scratch folder before anything in the folder is
/// replaced, so a bad archive leaves the folder as it was. An entry with an absolute path or a ".."
/// part, a damaged entry, or more than KonfigHöchstGröße bytes in all, refuses the whole archive.
/// Failures are shown (title "Flurix") and returned as Fehlschlag with the same text:
///   "Fehler beim Zip-Datei öffnen!   "          the file is missing or not a zip archive;
///   "Fehler beim Daten zusammenstellen!   "     an entry is refused, can't be unpacked or placed.
/// Success shows nothing (the dialog's own state tells it) and returns Ok.
Ergebnis KonfigEinlesen(const std::filesystem::path& konfigordner,
                        const std::filesystem::path& zipdatei, Oberfläche& ui);

/// Copies a configuration file beside itself as "<file name>_<stempel>.dat" before it is edited
/// ("Flurix.dat" becomes "Flurix.dat_23112026 072427.dat"); `stempel` is ZeitStempelText(). A copy
/// of that name is replaced. Returns the path of the copy. Throws Fehler naming both files when the
/// copy fails.
std::filesystem::path KonfigDateiSichern(const std::filesystem::path& datei,
                                         const std::string& stempel);

} // namespace flurix
