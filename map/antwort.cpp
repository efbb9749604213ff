#include "map/antwort.hpp"

#include "core/datei.hpp"
#include "core/text.hpp"

#include <pugixml.hpp>

#include <algorithm>
#include <cctype>
#include <fstream>

namespace flurix::karte {
namespace {

std::string Titel(int ebene, std::string_view was) {
    return "Ebene: " + std::to_string(ebene) + ", " + std::string(was);
}

std::string Groß(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

// The text of the service exception; the answer is read as XML, and where it isn't well formed
// the text between the element's tags is taken as it stands.
std::string AusnahmeText(const std::string& antwort) {
    pugi::xml_document dokument;
    if (dokument.load_buffer(antwort.data(), antwort.size(), pugi::parse_default, pugi::encoding_auto)) {
        if (const auto knoten = dokument.select_node("//*[local-name()='ServiceException']"))
            return std::string(TrimmeLeerraum(knoten.node().text().get()));
    }
    auto anfang = antwort.find("<ServiceException ");
    if (anfang == std::string::npos)
        anfang = antwort.find("<ServiceException>");
    const auto tagEnde = antwort.find('>', anfang);
    if (tagEnde == std::string::npos)
        return {};
    const auto ende = antwort.find("</ServiceException>", tagEnde);
    return std::string(
        TrimmeLeerraum(std::string_view(antwort).substr(tagEnde + 1, ende == std::string::npos ? ende : ende - tagEnde - 1)));
}

// The tests of the file's text, in their order; nothing when the answer is no known failure.
std::optional<Kartenmeldung> TextPrüfen(const EbenenAnfrage& a, const std::string& antwort) {
    const std::string dienst = "Der Kartendienst " + a.dienst;
    if (antwort.find("invalid bbox") != std::string::npos)
        return Kartenmeldung{Titel(a.ebene, "Err: \"invalid bbox\""),
                             dienst + " ist für diesen Koordinatenausschnitt nicht definiert!\n"
                                      "Ändern Sie den Kartenausschnitt oder den Meriodianstreifen (EPSG)!"};
    if (antwort.find("Query error") != std::string::npos)
        return Kartenmeldung{Titel(a.ebene, "Err: \"Query error\""), dienst + " ist nicht erreichbar!"};
    if (antwort.find("<head>") != std::string::npos)
        return Kartenmeldung{Titel(a.ebene, "Err: \"XML-Rückantwort\""), dienst + " ist nicht erreichbar!"};
    // "<ServiceException " with its blank keeps the report element out; MapServer writes the
    // element without attributes when the box is bad, so "<ServiceException>" counts as well.
    if (antwort.find("<ServiceException ") != std::string::npos ||
        antwort.find("<ServiceException>") != std::string::npos)
        return Kartenmeldung{Titel(a.ebene, "Err: \"XML-Rückantwort\""),
                             "Meldung Dienst: " + AusnahmeText(antwort)};
    return std::nullopt;
}

} // namespace

Antwortbefund AntwortPrüfen(EbenenAnfrage& a, const Zeitangabe& jetzt) {
    Antwortbefund befund;
    befund.fehlerblock = "----------\r\n" + jetzt.datum + " " + jetzt.uhrzeit + "----------\r\n" +
                         a.anfrage + "\r\n" + a.datei.string() + "\r\n";
    if (!a.geladen) {
        befund.fehlerblock += a.fehlerText + "\r\n";
        const std::string groß = Groß(a.fehlerText);
        if (groß.find("WSAHOST_NOT_FOUND") != std::string::npos) {
            befund.meldung = Kartenmeldung{"Fehler HTTP: WSAHOST_NOT_FOUND",
                                           "HOST nicht gefunden!\nBitte prüfen Sie Ihre "
                                           "INTERNET-Verbindung und wiederholen Ihre Anfrage!"};
        } else if (a.fehlerText.find("WindowsErrorCode: 0x5") != std::string::npos) {
            befund.meldung = Kartenmeldung{"Fehler Chilkat: Schreibfehler", "Bitte wiederholen Sie Ihre Anfrage!"};
        }
        if (befund.meldung) {
            befund.abbruch = a.abbruch = true;
            return befund;
        }
    }
    if (DateiVorhanden(a.datei)) {
        befund.meldung = TextPrüfen(a, DateiKomplettLesen(a.datei));
    } else {
        befund.meldung = Kartenmeldung{Titel(a.ebene, "Fehler beim Download"),
                                       "Download Kartendienst " + std::to_string(a.ebene) + ".Ebene " +
                                           a.dienst + " fehlgeschlagen!\nBitte prüfen Sie Ihre WMS-Anfrage!"};
    }
    befund.abbruch = a.abbruch = befund.meldung.has_value();
    return befund;
}

std::string ProtokollZeilen(const EbenenAnfrage& a, const Zeitangabe& jetzt) {
    const std::string kopf = jetzt.uhrzeit + " " + jetzt.datum + ", " + std::to_string(a.ebene);
    return kopf + ".Ebene: URL: " + a.anfrage + "\r\n" + kopf + ".Ebene: Name: " + a.datei.string() + "\r\n";
}

void AnfrageProtokollieren(const std::filesystem::path& tempOrdner, const EbenenAnfrage& a,
                           const Zeitangabe& jetzt) {
    // The log grows line by line over many runs: appended in place, not rewritten.
    std::ofstream datei(tempOrdner / "_MAP-Anfrage.prn", std::ios::binary | std::ios::app);
    datei << ProtokollZeilen(a, jetzt);
}

} // namespace flurix::karte
