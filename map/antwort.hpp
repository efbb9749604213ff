#pragma once
// The test of a map service's answer: services answer failures with status 200 and a text (an XML
// service exception, an HTML page), so the file is read and looked at before it is taken for a
// picture. The tests, their order and their texts are what users of the map know.

#include "core/jetzt.hpp"
#include "map/getmap.hpp"

#include <optional>
#include <string>

namespace flurix::karte {

/// A message box of the map: title and text.
struct Kartenmeldung {
    std::string titel;
    std::string text;
    bool operator==(const Kartenmeldung&) const = default;
};

/// What the test found for one level.
struct Antwortbefund {
    /// The block for the window's error box: a line of dashes with date and time, the request, the
    /// file, and after a failed download the client's error text. Lines end in CR LF.
    std::string fehlerblock;
    std::optional<Kartenmeldung> meldung; ///< shown to the user when set
    bool abbruch = false;                 ///< the level's picture is not used
};

/// Tests the answer of `anfrage` (its download result and its file), in this order: the client's
/// error ("WSAHOST_NOT_FOUND", "WindowsErrorCode: 0x5"), then the file's text ("invalid bbox",
/// "Query error", "<head>", "<ServiceException "), then a file that is missing. Sets
/// `anfrage.abbruch` as the befund says.
Antwortbefund AntwortPrüfen(EbenenAnfrage& anfrage, const Zeitangabe& jetzt);

/// The two lines the request log "_MAP-Anfrage.prn" gets for a level, each ending in CR LF.
std::string ProtokollZeilen(const EbenenAnfrage& anfrage, const Zeitangabe& jetzt);

/// Appends the lines to "_MAP-Anfrage.prn" in the temp folder.
void AnfrageProtokollieren(const std::filesystem::path& tempOrdner, const EbenenAnfrage& anfrage,
                           const Zeitangabe& jetzt);

} // namespace flurix::karte
