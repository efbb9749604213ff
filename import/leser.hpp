#pragma once
// The readers of this version, entered into the slots of a load's surroundings: what the command
// line and the desktop program both call before ALBDatenLaden, so that both read the same way.

#include <filesystem>
#include <string>

namespace flurix {
class Kataster;
class Oberfläche;
} // namespace flurix

namespace flurix::import {

struct Ladeumgebung;

/// Where the readers work and what they show afterwards.
struct LeserOrt {
    std::filesystem::path arbeitsverzeichnis; ///< the staging database of the complete reader
    std::filesystem::path ansichtsdatei;      ///< ALB_DatenbankSpalten.dat
    std::string ansicht = "alles";            ///< the view chosen in the view box
    /// Web-XML is appended to the rows there are: the load's own replace question is left out (it
    /// would empty the table), and the Web-XML reader asks whether to append instead. Set it only
    /// for a Web-XML load.
    bool webXmlAnfügen = false;
};

/// Fills the reader slots of `umgebung` (complete and quick WLDGE, Web-XML, saved tables) and its
/// table callbacks (row count, clearing) for `kataster`, with messages through `ui`. `kataster`
/// and `ui` must outlive every load run with `umgebung`; `ort` is copied. Never fails.
void LeserEintragen(Ladeumgebung& umgebung, Kataster& kataster, Oberfläche& ui, const LeserOrt& ort);

} // namespace flurix::import
