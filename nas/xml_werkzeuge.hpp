#pragma once
// The NAS XML tools of the work window: merge, identifier check, thinning, UTF-8 to Windows-1252
// and the GG-Out batch builder. They work on NAS files as text, without the object database: the
// feature cutter (nas/objekt_schneider.hpp) hands each feature's text between its member tags, so
// memory follows the largest feature (and, for merge and check, the set of identifiers), never the
// file, and a file of several GB goes through at the speed of the disk. The member tag is taken
// from the head of a file, "gml:featureMember" before "wfs:member". The cut does not depend on line
// ends, so the user's file is never rewritten for them; the status still names the UNIX check of
// each file.
//
// Every message, question and status goes through the UI port; the questions carry the answer an
// unattended run takes. A target is written under a temporary name beside it and renamed when it is
// whole, so a failure or a cancel never leaves half a file, and a target that is kept ("No" to the
// question whether to replace it) is not touched.
//
// Identifiers. Merge and check keep the gml:id of every feature written in memory, not in a
// database: a lookup with an insert per feature costs SQLite a microsecond and more inside a write
// transaction, the set about 50 ns. The set keeps a 128-bit hash of each identifier in one flat
// open-addressing table (16 bytes a slot, at most three quarters full): ten million identifiers
// take 256 MB. Two different identifiers meet only when their 128-bit hashes are equal, which for
// the tens of millions of identifiers of even the largest extracts has a chance far below 1e-20,
// practically impossible. The comparison is exact, case included: "DEBWL001hHH" and "DEBWL001HHH"
// are two features, as the object database keeps them apart with the marked form of IdKennzeichnen.

#include "core/fehler.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace flurix {
class Oberfläche;
}

namespace flurix::nas {

/// What a tool did. The counts stay 0 where a tool has no such thing.
struct XmlBericht {
    std::uint64_t dateien = 0;      ///< input files read (GG-Out batch: lines written)
    std::uint64_t geschrieben = 0;  ///< features written to the target
    std::uint64_t doppelt = 0;      ///< features dropped because their gml:id came before
    std::uint64_t übersprungen = 0; ///< features dropped because their type is on the list
    std::uint64_t fehler = 0;   ///< ID check: repeated identifiers; to ANSI: invalid UTF-8 bytes
    std::uint64_t ersetzt = 0;  ///< to ANSI: characters written as character references
    std::filesystem::path ziel; ///< the file written (set once it is complete)
};

/// How a tool treats an existing target.
struct XmlOptionen {
    /// The answer of an unattended run to "replace the existing target?": Yes when set, else No
    /// (the old file is kept and the tool ends with Abbruch). A person is asked either way.
    bool ersetzen = false;
};

/// "ALKIS-XML-Merge": the features of all files into one, `<first file>_MERGE.xml` beside the
/// first file. The head (everything before the first member) is copied from the first file
/// unchanged; a feature whose gml:id was written before is dropped (`bericht.doppelt`), and with
/// `reduzierung` filled, features of those types are dropped too (`bericht.übersprungen`; types as
/// XmlAusdünnen matches them). A feature without a gml:id is always written. The file ends with the
/// closing tags of the elements the first file's head left open, innermost first. At least two
/// files; a file above 4 GiB is refused. Ok with the result message; Abbruch when the person said
/// No; Fehlschlag after a message naming the cause (missing or locked input, an input that ends
/// inside a feature, a write error), and then no target is left.
Ergebnis XmlZusammenfügen(const std::vector<std::filesystem::path>& dateien,
                          const std::vector<std::string>& reduzierung, Oberfläche& ui,
                          XmlBericht& bericht, const XmlOptionen& optionen = {});

/// "ALKIS-ID-Prüfung": copies one file to `<name>_Prüfung.xml` without the second and further
/// occurrences of a gml:id. In place of each one the target gets the comment
/// `<!-- XML-Pruefung: ID: <id> mehrfach vorgefunden -->`, and the line
/// ", XML-Prüfung: ID: <id> mehrfach vorgefunden" goes to the protocol of the window and to
/// `<name>_Prüfung.err` (Windows-1252, CR LF; removed when a run finds no repeat). The count is
/// `bericht.fehler`. Results and failures as XmlZusammenfügen.
Ergebnis XmlIdPrüfung(const std::filesystem::path& datei, Oberfläche& ui, XmlBericht& bericht,
                      const XmlOptionen& optionen = {});

/// "ALKIS-XML-Ausdünnen": copies one file to `<name>_Ausdünnen.xml` without the features whose
/// type is on `reduzierung`. The type is the first element name inside the feature's text; a
/// prefixed name ("adv:AX_Gebaeude") also matches the entry without its prefix ("AX_Gebaeude").
/// An empty list drops nothing. Results and failures as XmlZusammenfügen.
Ergebnis XmlAusdünnen(const std::filesystem::path& datei,
                      const std::vector<std::string>& reduzierung, Oberfläche& ui,
                      XmlBericht& bericht, const XmlOptionen& optionen = {});

/// "UTF8 nach ANSI": writes one UTF-8 file as Windows-1252 to `<name>_Ansi.xml`, streaming. The
/// XML declaration then says encoding="windows-1252" (one is put in front when the file has none),
/// so XML readers take the bytes right; a byte order mark is dropped. A character that Windows-1252
/// has no byte for is written as the character reference "&#NNNN;" (decimal), which keeps it
/// exactly in element text and attribute values (in a comment it stays as those characters);
/// `bericht.ersetzt` counts them. A byte that is not valid UTF-8 becomes "?" (`bericht.fehler`).
/// A file whose declaration already names a one-byte code page is refused. Failures as above.
Ergebnis XmlNachAnsi(const std::filesystem::path& datei, Oberfläche& ui, XmlBericht& bericht,
                     const XmlOptionen& optionen = {});

/// "GG-Out Batch": a batch file in `zielordner` that runs the unattended import with GEOgraf
/// output for each file: `GG-Out-Batch.sh` (executable, "#!/bin/sh", one line a file:
/// `'<programm>' '<datei>' /ggout /still`, words quoted for sh, LF), or with `batForm` the form of
/// Windows, `GG-Out-Batch.bat` (`"<programm>" <datei> /ggout /still ` a line, CR LF, Windows-1252).
/// Paths are made absolute: the job line needs a path. Choosing the files (all of a folder, or at
/// least two picked) is the caller's part. Ok with "<n> Dateien gelesen, Batchdatei erstellt!   ";
/// Abbruch when the person said No; Fehlschlag without files or when the file can't be written.
Ergebnis GgOutBatch(const std::vector<std::filesystem::path>& dateien,
                    const std::filesystem::path& programm, const std::filesystem::path& zielordner,
                    bool batForm, Oberfläche& ui, XmlBericht& bericht,
                    const XmlOptionen& optionen = {});

/// The object types of ALKIS_Objektreduzierung.dat, one a line; lines beginning with "*" and
/// empty lines are left out, blanks around a name dropped. A missing file gives an empty list.
std::vector<std::string> ObjektreduzierungLesen(const std::filesystem::path& datei);

/// The files "*.xml" of a folder (".XML" too: the job line matches the type without regard to
/// case and keeps the name as written), sorted by name; empty when the folder can't be read.
std::vector<std::filesystem::path> XmlDateienImOrdner(const std::filesystem::path& ordner);

} // namespace flurix::nas
