#pragma once
// The fuzz entries: one function per reader of outside data, taking the raw bytes of one input.
// The libFuzzer programs fuzz/fuzz_<name>.cpp only call them, and the test tests/fuzz replays the
// inputs of tests/daten/fuzz/<name>/ through the same functions in the normal build.
//
// An entry returns for any input. What a reader says about bad input through its own error path (a
// flurix::Fehler where it documents one, a failed Ergebnis, a message, a count of bad records) is
// caught or ignored here; anything else (another exception, a crash, a sanitizer report, a hang)
// leaves the entry and is a finding.
//
// Readers that take a path get the bytes in a file of a private folder of the process (under
// /dev/shm when there is one, else the system's temporary folder), written anew for each input;
// the folder is removed when the process ends.
//
// Options of a reader come from the last byte of the input (the "choice"), which stays part of
// the data: so every plain file is a useful input as it is. Entries that take two texts split the
// input at its first 0 byte (before it the first text, after it the second); without a 0 byte the
// first text is the input's first line and the second the whole input.

#include <cstdint>
#include <span>
#include <string_view>

namespace flurix::fuzz {

using Eingabe = std::span<const std::uint8_t>;

/// The options of the three register readers come from the choice, each reader taking those it
/// knows: bit 0 turns names, bit 1 one row per parcel, bit 2 the Gemarkung/Flur entries, bit 3
/// turns the full land use off.
///
/// The complete WLDGE reader (staging database in the private folder), both formats, after the
/// line-end check of the load.
void FuzzWldgeKomplett(Eingabe daten);
/// The quick WLDGE reader, both formats, after the line-end check of the load.
void FuzzWldgeSchnell(Eingabe daten);
/// The Web-XML reader on one file (after the line-end check of the load) into an empty table.
void FuzzWebXml(Eingabe daten);
/// A whole NAS file through the scan (DAO_ALKISEinlesen) into a database in the private folder,
/// with the shipped configuration whose node file keeps only the classes of the register (made
/// once in the private folder).
void FuzzNasEinlesen(Eingabe daten);
/// The feature cutter and the coordinate notes on a file. Choice: bit 0 takes "wfs:member"
/// instead of "gml:featureMember" as the member tag.
void FuzzObjektSchneider(Eingabe daten);
/// One feature text through the element reader, against a database in memory made once from
/// config/ALKIS_Knoten.dat; each input's rows are rolled back. Choice: bit 0 the prefix "adv:",
/// bit 1 the member tag "wfs:member".
void FuzzElementLeser(Eingabe daten);
/// The form detection of a NAS head and the prefix of its root element.
void FuzzNasForm(Eingabe daten);
/// The operations of an update delivery, read from a file.
void FuzzNbaLeser(Eingabe daten);
/// A table file into the cadastre table (KatasterLaden). Choice: bit 0 ".tsv" instead of ".fil",
/// bit 1 the file read as the web key file instead.
void FuzzTabellendatei(Eingabe daten);
/// A settings file: the first text is the key, the second the file. Choice: bit 0 the separator
/// "," instead of "=", bit 1 the line of the key rewritten as well.
void FuzzEinstellungen(Eingabe daten);
/// The lookups on a configuration text: the first text is the key, the second the configuration.
/// Choice: the lookup (modulo 7: KonfigWert, KonfigWerteListe, KonfigZeile, KonfigAuswahl,
/// IdKennzeichnen, Utf8Reparatur, KonfigText of a file), bits 3-4 the key column, bits 5-6 the
/// value column, bit 7 the separator ",".
void FuzzKonfigSuche(Eingabe daten);
/// A node file from text, its derived paths, and the object database made in memory from its
/// first four classes.
void FuzzKnoten(Eingabe daten);
/// The mapping script read and run against a database in memory with a small table Alkis.
void FuzzZuordnung(Eingabe daten);
/// A parcel list: every line read, and the list loaded against a small table (marks, error file).
void FuzzMarkierung(Eingabe daten);
/// The ring and arc texts: the first text is the ring, the second the arcs. Choice: modulo 5 the
/// function (PosUmring, RingeAusText, BogenZuSehnen, BoxMitte/Punktliste/Prüfsumme,
/// BögenErsetzen), bits 4-5 the sagitta (0.01, 0.0001, 0, 1).
void FuzzGeometrie(Eingabe daten);
/// A GEOgraf batch file, line by line.
void FuzzGrafbat(Eingabe daten);
/// A WMS capabilities answer through the map's reader (with its one repair of a broken line),
/// then the layer list through LayerListe and the layer dialogue, the scale cell through the
/// 96 dpi conversion. Choice: bit 0 all layers chosen instead of every second one.
void FuzzCapabilities(Eingabe daten);
/// A map service's answer in the cache file of a request: the answer test (client errors, the
/// texts of failures, service exceptions), then, when it passes, the picture loaded and corrected
/// as level 1 over 64 × 48 pixels. Choice: bit 0 a transparent service keeping white, bit 1 black
/// inverted.
void FuzzWmsAntwort(Eingabe daten);

/// One entry under the name of its target (fuzz_<name>) and of its folder of inputs.
struct FuzzZiel {
    std::string_view name;
    void (*eintrag)(Eingabe);
};

/// Every entry, in the order above.
std::span<const FuzzZiel> FuzzZiele();

} // namespace flurix::fuzz
