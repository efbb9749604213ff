#pragma once
// The XML reorganisation: the first stage of the compilation. It walks the parcels of the object
// database and joins to each its bookings (also those attached "an" its booking and those that
// lie "zu" it, as shares of a served parcel do), sheet, sheet
// district, municipality, Gemarkung, label point, office, locations and owners, one row of the
// table Alkis per parcel, booking and owner, with each owner's name number, person and address.
// What can't be joined is counted and noted; the row stays.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace flurix {
class Datenbank;
class Oberfläche;
}

namespace flurix::nas {

class NasProtokoll;

/// The kinds of missing reference the reorganisation counts, in the order of their hints.
enum class Bezug {
    Anschrift,
    Buchungsblatt,
    Buchungsblattbezirk,
    Dienststelle,
    Gemarkung,
    Gemeinde,
    LageMitHausnummer,
    LageOhneHausnummer,
    Namensnummer,
    NamensnummerId,
    NamensnummerPerson,
    Person,
    PersonAnschrift,
    LageAusMitHausnummer,
    LageAusOhneHausnummer,
    IdBuchungsblatt,
    PositionApPto,
    FlurstückOhneNamensnummer,
};
inline constexpr std::size_t BezugAnzahl = 18;

struct Reorganisationsbericht {
    std::array<std::int64_t, BezugAnzahl> fehlend{};
    std::int64_t flurstücke = 0;
    std::int64_t zeilen = 0;
    std::int64_t zuBuchungen = 0; ///< bookings that lie "zu" a parcel's booking, taken over
    std::int64_t zuZeilen = 0;    ///< the rows they gave

    /// The line of the protocol that counts the bookings taken over by "zu"; "" when none.
    std::string ZuBuchungenText() const;

    void Zählen(Bezug bezug) { ++fehlend[static_cast<std::size_t>(bezug)]; }
    std::int64_t Anzahl(Bezug bezug) const { return fehlend[static_cast<std::size_t>(bezug)]; }
    /// The hints of the counts above 0, in their order: "Hinweis: 3 \"AX_Person\" ohne Bezug...".
    std::vector<std::string> Hinweise() const;
};

/// Makes Alkis anew and fills it from the object database: the stage's status texts and the
/// per-row notes go through `ui` and `protokoll`. The indexes the joins seek by are made first
/// when missing. Throws Fehler when the database breaks.
Reorganisationsbericht XmlReorganisation(Datenbank& db, NasProtokoll& protokoll, Oberfläche& ui);

} // namespace flurix::nas
