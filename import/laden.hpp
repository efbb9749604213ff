#pragma once
// The one road of every load into the main table: which reader takes a file, with which options,
// and what happens to the table and to the Gemarkung/Flur box afterwards. The command line binds
// its arguments to it, the window its dialog and its model; both call DatenLaden and nothing else.

#include "core/fehler.hpp"
#include "import/datenladen.hpp"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace flurix {
class Kataster;
class Oberfläche;
struct Programmzustand;
} // namespace flurix

namespace flurix::import {

/// What a face binds to a load.
struct Ladebindung {
    /// The options dialog for a format ("32", "35", "XML"); false when the user cancels. Empty:
    /// the options stay as given.
    std::function<bool(ImportOptionen&)> optionenDialog;
    /// Runs a change of the table; the window wraps it in its model's reset. Empty: runs it.
    std::function<void(const std::function<void()>&)> tabelleÄndern;
    /// Runs before the table is emptied for a replacement (the window saves its column widths).
    std::function<void()> vorDemLeeren;
    /// Opens a NAS file or saved NAS database in the NAS window, which takes it from there. Empty:
    /// NAS goes the direct way into the table (scan, compilation, transfer).
    std::function<Ergebnis(const std::filesystem::path&)> nasFenster;
    std::string ansicht;       ///< the view to show afterwards; "" for the run's default
    bool interaktiv = false;   ///< a person answers (the window): NAS asks its questions
    bool anfügen = false;      ///< Web-XML goes behind the rows there are, without the replace question
    bool gemarkungsbox = false; ///< the face has the Gemarkung/Flur box: fill it by the reader's rule
};

/// What a load leaves besides the table.
struct Ladeergebnis {
    Ergebnis ergebnis;
    /// The entries of the Gemarkung/Flur box; std::nullopt leaves the box as it is.
    std::optional<std::vector<std::string>> gemarkungsbox;
    bool boxAusKennzeichen = false; ///< the entries come from the parcel keys
};

/// Runs one load into `kataster` with `optionen` (the dialog may change them; they hold for the
/// next load). The box rule: the complete reader, Web-XML and NAS fill the box from the columns
/// Gemarkung and Flur whatever the size, the quick reader when "Flurstückssuche vereinfachen" is
/// on, a saved table by its own rule; a filled box leaves the table in its default order.
Ladeergebnis DatenLaden(const Ladeauftrag& auftrag, ImportOptionen& optionen, Programmzustand& zustand,
                        const Ladebindung& bindung, Kataster& kataster, Oberfläche& ui);

/// A filling of the table from outside a load (the NAS window's transfer), run as a reader runs:
/// inside the bound change, the box filled from the columns Gemarkung and Flur afterwards.
Ladeergebnis TabelleFüllen(const std::function<Ergebnis(Kataster&, Oberfläche&)>& füllen,
                           Programmzustand& zustand, const Ladebindung& bindung, Kataster& kataster,
                           Oberfläche& ui);

} // namespace flurix::import
