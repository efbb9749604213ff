#pragma once
// The node file ALKIS_Knoten.dat: which feature classes of a NAS file are read, which of their
// elements become columns and which of their references become relation tables. The file is the
// schema of the NAS object database and the program of the scanner at the same time, so that a
// site can take in a further class or attribute without a new program.
//
// Line forms (after tabs are removed and blanks trimmed; empty lines and "*" lines are comments):
//   XMLBaumTree = gml:featureMember;wfs:member     the tags that can enclose one feature
//   XMLBaum = /TypNameAX_Bestandsdatenauszug        the path from the root to the member tags
//   <AX_Flurstueck                                  a feature class and its table
//   AX_Flurstueck@gml:id                            the key of the row (column "id" of every table)
//   gemarkung/AX_Gemarkung_Schluessel/land = 10     an element path and the column's type
//   kulturart = 10 = nutzungsart                    further element paths (";"-separated) whose
//                                                   values go into the same column: the names a
//                                                   later schema version gives the element
//   istGebucht@xlink:href@AX_Buchungsstelle = 10    a reference: element@attribute@target column
// Types are the old numeric field types: 10 text of 255 characters, 12 memo (any length); 3 and 4
// are whole numbers, 6 and 7 floating point, anything else text.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace flurix::nas {

/// What a field of a feature class is.
enum class Feldart {
    Attribut,  ///< an element path below the feature; its value goes into a column
    Geometrie, ///< gml:exterior, gml:interior, gml:LineStringSegment or gml:Arc: searched by tag
    Kennung,   ///< <class>@gml:id, the key of the row
    Relation,  ///< element@attribute@target: rows of a relation table
};

/// The column types of the node file.
inline constexpr int TypText = 10;
inline constexpr int TypMemo = 12;
/// A text column of the default size: the scanner cuts its values here (in characters).
inline constexpr std::size_t TextLänge = 255;

struct KnotenFeld {
    std::string text; ///< the left side of the line, as written
    Feldart art = Feldart::Attribut;
    int typ = TypText;
    /// Attribute only: further element paths read into the same column after the first.
    std::vector<std::string> auch;
    // Relation only:
    std::string element;  ///< "istGebucht"
    std::string attribut; ///< "xlink:href"
    std::string ziel;     ///< target column, "AX_Buchungsstelle"

    /// The name of the relation table: "<class>_<element>#<target>".
    std::string RelationsTabelle(std::string_view klasse) const;
};

/// One feature class: its table and its fields in the order of the file.
struct KnotenKlasse {
    std::string tabelle;
    std::vector<KnotenFeld> felder;
};

struct KnotenDatei {
    std::vector<std::string> mitgliedTags; ///< from XMLBaumTree, in order
    std::string xmlBaum;                   ///< the value of XMLBaum, as written
    std::vector<KnotenKlasse> klassen;     ///< in the order of the file; a repeated class twice
};

/// Reads the node file (Windows-1252 or UTF-8, any line ends). Throws Fehler when it can't be
/// read; the caller words the missing file itself.
KnotenDatei KnotenLesen(const std::filesystem::path& datei);
/// The same from text in memory (UTF-8).
KnotenDatei KnotenAusText(std::string_view text);

/// The member tag of a file: the first entry of `tags` that occurs in the head of the file; ""
/// when none does (the caller keeps the tag it had).
std::string MitgliedTagWählen(const std::vector<std::string>& tags, std::string_view kopf);

/// The path prefix of the features: "/" + XMLBaum + "/" + member tag + "/", with "/TypName"
/// replaced by "/" + the file's namespace prefix, blanks removed and "//" made "/".
std::string XPfadPräfix(std::string_view xmlBaum, std::string_view mitgliedTag,
                        std::string_view präfix);

} // namespace flurix::nas
