#pragma once
// The location text of a parcel, built from its locations with and without house number: the
// house numbers of one street merged behind the street ("Hauptstraße 1, 3, 5"), streets joined
// with "; ", and the street keys beside them in the same order.

#include <string>
#include <string_view>
#include <vector>

namespace flurix::nas {

/// One location of a parcel: the street or place name, the house number ("" without) and the
/// five-character street key ("" when the location is not keyed).
struct Lageeintrag {
    std::string text;
    std::string hausnummer;
    std::string schlüssel;
};

struct Lagetext {
    std::string lagebezeichnung; ///< "Hauptstraße 1, 3; Am Markt 2"
    std::string straßenschlüssel; ///< "00306; 00104"; "ohne" for a location without key
};

/// The text of the locations. With locations that have house numbers only they count (a
/// parcel's location without number is then the same street again): they are sorted by street
/// and house number (2 before 10, 10 before 10a), a repeated number is dropped, and the numbers
/// of one street are merged behind it with ", ". Otherwise the locations without number, each
/// name once, in their order. Streets are joined with "; ".
Lagetext LagebezeichnungBilden(const std::vector<Lageeintrag>& mitHausnummer,
                               const std::vector<Lageeintrag>& ohneHausnummer);

/// Compares house numbers as people read them: the leading number first, then the rest as text
/// ("2" < "10" < "10 a" < "10 b"). Negative, zero or positive.
int HausnummernVergleich(std::string_view a, std::string_view b);

} // namespace flurix::nas
