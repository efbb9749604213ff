#pragma once
// "Daten ordnen": the last pass of the compilation over the table Alkis, after the column mapping.
// Row by row, in the order of parcel key, folio, BVNR, kind of booking and owner number, the
// cells are brought into the forms of the cadastre table: running numbers, owner positions,
// dates, land-use lists, county, office, court and Land by key, the parcel number with "/0000",
// names, addresses, shares, coordinates from the ring's box, MKZ and EPSG.
//
// The per-row forms are free functions below, so that each can be checked on its own; DatenOrdnen
// applies them in the order of its steps. None of the helpers throws.

#include "nas/nas_optionen.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace flurix {
class Datenbank;
class Oberfläche;
} // namespace flurix

namespace flurix::nas {

class NasProtokoll;

struct OrdnenUmgebung {
    std::string antragsnummer; ///< of the table Antragsbeschreibung ("ohne" when none)
    std::string systemWert;    ///< "<EPSG>_<MKZ>", e.g. "25832_32"; "" when unknown
    std::string amtsgerichte;  ///< the text of ALKIS_Amtsgerichte.dat ("" when missing)
    NasOptionen optionen;
};

/// Edits every row of Alkis. Status every 1,000 rows "Daten ordnen, Zeile: " + number; each row
/// goes to the protocol's list as ", Zeile ALKIS: " + number ("00000") + ",FKZ: " + key, in the
/// order of the walk. The step's own status and entry "Daten ordnen..." and the message for an
/// empty table are the caller's. A step whose columns Alkis lacks (a user's own mapping script)
/// is passed over. Makes the lookup indexes of AX_KreisRegion, AX_Bundesland, AX_Dienststelle and
/// AX_Buchungsblattbezirk when missing (a missing table is normal: its lookups find nothing).
/// Works in one transaction unless the caller holds one open. Returns the number of rows (0: the
/// table is empty or missing; nothing is changed then, not even an index). Throws Fehler when the
/// database breaks (the transaction is rolled back then).
std::int64_t DatenOrdnen(Datenbank& db, const OrdnenUmgebung& umgebung, NasProtokoll& protokoll,
                         Oberfläche& ui);

// ---- Per-row forms --------------------------------------------------------------------------

/// A whole number with at least `stellen` digits, zeros in front: (7, 4) gives "0007", 12345 with
/// 4 places stays "12345". A negative number keeps its sign in front of the zeros.
std::string MitNullen(std::int64_t zahl, int stellen);

/// The date of the form "yyyy-mm-dd" turned into "dd.mm.yyyy": the parts between "-" in reverse
/// order, joined with ".". A text without "-" is returned as it is.
std::string DatumUmkehren(std::string_view datum);

/// The land-use columns after the pass.
struct Nutzungstexte {
    std::string nutzungTatsächlich;
    std::string nutzungsart;
};

/// The land-use lists of a parcel. Both texts are split at ";"; for each entry i of
/// `nutzungTatsächlich` (t, trimmed) a and b are the first and second word of entry i of
/// `nutzungsart` ("" where it has no such entry or word). Nutzung_tatsächlich becomes the entries
/// a + "/" + t, or t alone with `ohneAx`; Nutzungsart becomes a + " (" + t + ")=" + b with every
/// "AX_" removed; entries joined with "; ". The caller leaves both alone when
/// `nutzungTatsächlich` is empty.
Nutzungstexte NutzungOrdnen(std::string_view nutzungTatsächlich, std::string_view nutzungsart,
                            bool ohneAx);

/// The key of AX_KreisRegion.schluesselGesamt for a Gemeindeschlüssel: its first 5 characters.
std::string KreisSchlüssel(std::string_view gemeindeschlüssel);
/// The key of AX_Bundesland.schluesselGesamt: the first 2 characters.
std::string LandSchlüssel(std::string_view gemeindeschlüssel);
/// The key of AX_Dienststelle.schluesselGesamt: characters 1-2 and 4-5, then "00"
/// ("07231103" gives "073100"). Characters the text lacks are left out.
std::string DienststellenSchlüssel(std::string_view gemeindeschlüssel);
/// The court's key from AX_Buchungsblattbezirk.gehoertZu: every blank removed
/// ("07 2408" gives "072408").
std::string AmtsgerichtSchlüssel(std::string_view gehörtZu);

/// The parcel number of the 20-character Flurstückskennzeichen: numerator (positions 10-14) + "/"
/// + denominator (positions 15-18), where a denominator whose leading digits read as 0 (Basic's
/// Val: "0000", "____", "") is written "0000": "07256600400012______" gives "00012/0000".
std::string FlurstückAusKennzeichen(std::string_view kennzeichen);

/// The key as NAS writes it: with denominator "0000" the first 14 characters + "______", else
/// the first 18 + "__".
std::string FkzOriginal(std::string_view kennzeichen);

/// The area in the form "0000000.00": at least 7 integer digits, 2 decimals rounded half away
/// from zero ("49171" gives "0049171.00", "-12.345" gives "-0000012.35"). Blanks around the number
/// are passed over; a text that is no number with "." as decimal mark is returned as it is.
std::string FlächeFormat(std::string_view fläche);

/// Name of the owner: Nachname, and ", " + Vorname when the first name is not blank.
std::string NameZusammensetzen(std::string_view nachname, std::string_view vorname);

/// The name addition with "geb. " in front; a blank text stays as it is.
std::string NamenszusatzMitGeb(std::string_view zusatz);

/// Two parts joined by a blank, as Straße (street and house number) and Ort (post code and place)
/// are built; the result is trimmed of blanks, so a missing part leaves no blank behind.
std::string MitLeerzeichen(std::string_view vorn, std::string_view hinten);

/// The share of the parcel: a value of exactly two words that are numbers, "z n", becomes the
/// numbers joined with "/" in their shortest form ("1 2" gives "1/2", "1.0 2.0" gives "1/2").
/// Anything else is returned as it is.
std::string AnteilGrundstück(std::string_view anteil);

/// The share of the Sondereigentum (separate ownership of a flat): numerator "/" denominator when
/// both are not blank, the numerator alone without denominator, "" without numerator (values
/// trimmed).
std::string AnteilSondereigentum(std::string_view zähler, std::string_view nenner);

/// A coordinate as it goes into Rechtswert or Hochwert: the shortest text that reads back to the
/// value, without exponent ("389012.5", "5600000"); -0 is written "0".
std::string KoordinateText(double wert);

/// EPSG code and MKZ of the system value "<EPSG>_<MKZ>": the parts before and behind the first
/// "_"; without "_" the whole value is the EPSG code and the MKZ is "".
struct Bezugssystem {
    std::string epsg;
    std::string mkz;
};
Bezugssystem BezugssystemAusSystemwert(std::string_view systemWert);

} // namespace flurix::nas
