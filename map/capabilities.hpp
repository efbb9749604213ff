#pragma once
// The capabilities reader: a service's GetCapabilities answer turned into the catalogue row's
// layer list, scale range and legend address, and the reading of one row or of all rows of the
// catalogue (address, login, download, parse, fill the row).
//
// The layer list is the cell `Layer`: entries "Name~Title" joined with "}{". A layer counts when
// its <Name> has a following <Title> sibling and no following <Layer> sibling: the group layers
// that hold other layers are left out, their children are listed.

#include "core/fehler.hpp"
#include "map/http.hpp"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace flurix {
class Oberfläche;
}

namespace flurix::karte {

class Dienstkatalog;

/// The text that stands for an answer that never came; the parser fails on it without a message.
inline constexpr std::string_view OhneErgebnis = "<HTTP Download ohne Ergebnis";

/// Where and why a document could not be parsed.
struct Lesefehler {
    int nummer = 0;           ///< the parser's status number
    std::string grund;        ///< its description
    std::size_t zeile = 0;    ///< 1-based
    std::size_t spalte = 0;   ///< 1-based, in bytes
    std::size_t position = 0; ///< byte offset in the text
    std::string quelltext;    ///< the line where it failed
};

/// What a capabilities answer holds.
struct CapabilitiesInhalt {
    bool gelesen = false;    ///< the document parsed (at first or after the one repair)
    bool repariert = false;  ///< it parsed only after KnotenEntfernen
    bool mitRequest = false; ///< the text holds "<Request>": a capabilities document
    std::string layer;       ///< the layer list, "Name~Title" joined with "}{"
    std::size_t layerAnzahl = 0;
    std::string legende;              ///< URL-Legende
    std::string maßstab;              ///< Maßstab
    std::optional<Lesefehler> fehler; ///< of the first attempt, when it failed
};

/// Parses a capabilities answer and takes out what the catalogue keeps. When the text does not
/// parse, the element of the line where it failed is removed (KnotenEntfernen) and it is parsed
/// once more. When that fails too and the text holds neither "h1" (an HTML page) nor
/// "HTTP Download ohne Ergebnis", the failure is shown under "Error Web-Service" with its place
/// and `adresse`. An error answer with ItemSearchResponse/OperationRequest/Errors/Error/Message
/// shows that message under "Web-Service". With `speichern` the parsed document is written there.
/// Never throws for bad input; a file that can't be written throws Fehler.
CapabilitiesInhalt WebServiceAnfrage(std::string_view antwort, std::string_view adresse,
                                     Oberfläche& ui, const std::filesystem::path& speichern = {});

/// The umlaut repair of names and titles: the characters that the code page 850 umlauts become
/// when read as Windows-1252 (codes 142, 154, 153, 132, 129, 148, 225, as characters or as lone
/// bytes) become "Ä", "Ü", "Ö", "ä", "ü", "ö", "ß", and the German 7-bit letters "{", "|", "}",
/// "~" become "ä", "ö", "ü", "ß".
std::string UmlauteReparieren(std::string_view text);

/// The repair of a document that does not parse: from the line holding byte `position`, its first
/// element is removed from its opening tag to its closing tag (to the end of the line when there
/// is none; the whole line when it opens no element). std::nullopt when nothing can be removed.
std::optional<std::string> KnotenEntfernen(std::string_view text, std::size_t position);

/// `URL-Legende`: behind ` xlink:href="` inside the first "<LegendURL " ... "</LegendURL>" up to
/// the next `"`, "&amp;" made "&"; "" when there is none.
std::string LegendenAdresse(std::string_view text);
/// `Maßstab`: "ScaleHint: " + the trimmed attributes of the first <ScaleHint .../>; else the texts
/// of <MinScaleDenominator> and <MaxScaleDenominator> as "min-max"; "frei" when both are empty.
std::string MaßstabAusText(std::string_view text);
/// `LayerAuswahl` with every layer on: "true" `anzahl` times, joined with ",".
std::string LayerAuswahlAlle(std::size_t anzahl);

/// The capabilities address of row `zeile`: `URL` + the `GetCapabilities` query ("?REQUEST=
/// GetCapabilities&VERSION=1.1.1&SERVICE=WMS" when empty). A query without "version=" (in any
/// case) gets "&version=1.1.1", written back to the cell. When `URL` ends in ".map" the query's
/// leading "?" becomes "&": such addresses already hold a query.
std::string CapabilitiesAdresse(Dienstkatalog& katalog, std::size_t zeile);

/// The download of a text (HttpAnfrageAlsText); tests put their own in.
using TextAbruf =
    std::function<HttpErgebnis(const std::string& url, std::string& text, const HttpOptionen&)>;

/// What reading a row needs from outside.
struct Einleseumgebung {
    std::filesystem::path konfig; ///< the config folder with the login files
    std::string besitzer;         ///< the account the installation runs under (Besitzer())
    TextAbruf abruf;              ///< empty: HttpAnfrageAlsText
};

/// Reads the capabilities of row `zeile` into it, without a question: builds the address, takes
/// the login (a refused login: message, no request, the row unchanged, a failure), downloads
/// (no answer: the text OhneErgebnis), parses and fills `Anfrage`:
/// - "erfolgt": a capabilities document; `Layer`, `LayerAuswahl` (all on), `URL-Legende` and
///   `Maßstab` are new ("ohne" instead when it lists no layer);
/// - "ERROR": it did not parse and the row had no layers: `Layer`, `LayerAuswahl`, `URL-Legende`
///   are emptied;
/// - "alte Anfrage": it did not parse or is no capabilities document, and the row's old layers
///   stay;
/// - "ohne": it parsed but is no capabilities document and the row had no layers.
/// Ok only for "erfolgt" with layers.
Ergebnis DienstAnfragen(Dienstkatalog& katalog, std::size_t zeile, const Einleseumgebung& umgebung,
                        Oberfläche& ui);

/// The catalogue window's "read again" of the selected row: without a row "Wählen Sie bitte
/// zuerst den zu ändernden Web-Service aus!", else `Möchten Sie "Name" neu einlesen?` and on Yes
/// DienstAnfragen.
Ergebnis DienstNeuEinlesen(Dienstkatalog& katalog, std::optional<std::size_t> zeile,
                           const Einleseumgebung& umgebung, Oberfläche& ui);

/// All rows: "Möchten Sie alle Dienste neu anfragen?", then "Achtung: Alle Voreinstellungen
/// werden dann überschrieben!", then DienstAnfragen for each row (progress through `ui`, stops
/// when the person asks). Ok when every row gave "erfolgt".
Ergebnis AlleDiensteNeuEinlesen(Dienstkatalog& katalog, const Einleseumgebung& umgebung,
                                Oberfläche& ui);

} // namespace flurix::karte
