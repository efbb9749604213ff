#pragma once
// A NAS database saved earlier, opened again: it is recognised by its table AP_PTO and copied to
// the work database, so that the saved file itself is never changed by later work. The order
// number and the coordinate system come back from its table Antragsbeschreibung without a scan.

#include "core/fehler.hpp"

#include <filesystem>

namespace flurix {
class Datenbank;
class Oberfläche;
}

namespace flurix::nas {

struct NasStand;
struct Antragsbeschreibung;

/// Refusal of a file that is no NAS database.
inline constexpr char MeldungUngültigeNasDatenbank[] =
    "Die ausgewählte Datei ist ungültig! Daten unvollständig!?   ";

/// Checks `gespeichert` (table AP_PTO), copies it to `arbeitsdatenbank` and fills `stand` with
/// its tables and its Antragsbeschreibung. A file that is no SQLite database or lacks AP_PTO gets
/// the refusal with the caption "Flurix-NAS"; nothing else changes then.
Ergebnis NasDatenbankÖffnen(const std::filesystem::path& gespeichert,
                            const std::filesystem::path& arbeitsdatenbank, NasStand& stand,
                            Oberfläche& ui);

/// The order number and coordinate system kept in the table Antragsbeschreibung; the defaults of
/// Antragsbeschreibung when the table is missing or empty. Throws Fehler when the database fails.
Antragsbeschreibung AntragsbeschreibungLesen(Datenbank& db);

} // namespace flurix::nas
