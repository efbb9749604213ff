#include "map/getmap.hpp"

#include "core/text.hpp"

#include <algorithm>
#include <cctype>

namespace flurix::karte {

std::string KnotenAusAnfrage(const std::string& getCapabilities) {
    static constexpr std::string_view schlüssel = "nodeid=";
    std::string klein = getCapabilities;
    std::transform(klein.begin(), klein.end(), klein.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto anfang = klein.find(schlüssel);
    if (anfang == std::string::npos)
        return {};
    const auto wert = anfang + schlüssel.size();
    const auto ende = getCapabilities.find('&', wert);
    return "nodeid=" + getCapabilities.substr(wert, ende == std::string::npos ? ende : ende - wert) + "&";
}

std::string TrennerFür(const std::string& url) {
    // An address that ends in its separator already ("…/mapserv?map=x.map&") gets none more.
    if (!url.empty() && (url.back() == '?' || url.back() == '&'))
        return {};
    return url.find('?') == std::string::npos ? "?" : "&";
}

EbenenAnfrage AnfrageBilden(int ebene, const std::string& dienst, const Dienstwerte& werte,
                            const Anfragerahmen& rahmen, const std::filesystem::path& tempOrdner,
                            bool druck) {
    EbenenAnfrage a;
    a.ebene = ebene;
    a.dienst = dienst;
    a.url = werte.url;
    a.layers = werte.layers;
    a.knoten = KnotenAusAnfrage(werte.getCapabilities);
    a.format = werte.format.empty() ? "png" : werte.format;
    a.transparentWort = werte.transparent ? "TRUE" : "FALSE";
    a.trenner = TrennerFür(werte.url);
    a.style = ebene == 3 ? std::string() : werte.style;
    a.anfrage = a.url + a.trenner + a.knoten + (druck ? "SERVICE=WMS&" : "") +
                "VERSION=1.1.1&REQUEST=GetMap&SRS=EPSG:" + rahmen.epsg + "&BBOX=" + rahmen.bbox +
                "&WIDTH=" + rahmen.breite + "&HEIGHT=" + rahmen.höhe + "&LAYERS=" + a.layers +
                "&STYLES=" + a.style + "&FORMAT=image/" + a.format +
                "&BGCOLOR=0xFFFFFF&TRANSPARENT=" + a.transparentWort;
    a.datei = CacheDatei(a, rahmen, tempOrdner);
    return a;
}

std::filesystem::path CacheDatei(const EbenenAnfrage& anfrage, const Anfragerahmen& rahmen,
                                 const std::filesystem::path& tempOrdner) {
    std::string name = "#tmp_wms" + std::to_string(anfrage.ebene) + "_" + anfrage.url + "_" +
                       rahmen.epsg + "_" + rahmen.bbox + "_" + rahmen.breite + "_" + rahmen.höhe +
                       "_" + anfrage.layers + "_" + anfrage.style + "_" + rahmen.bitmapFaktor;
    std::erase_if(name, [](char c) { return c == '?' || c == '/' || c == ':' || c == '.' || c == ','; });
    std::string pfad(Utf8Anfang((tempOrdner / name).string(), 250));
    while (!pfad.empty() && pfad.back() == ' ')
        pfad.pop_back();
    pfad += "." + anfrage.format;
    pfad = Ersetzen(pfad, "adv_alkis", "");
    return pfad;
}

std::string CapabilitiesAnfrage(const EbenenAnfrage& anfrage) {
    return anfrage.url + anfrage.trenner + anfrage.knoten +
           "REQUEST=GetCapabilities&VERSION=1.1.1&SERVICE=WMS";
}

} // namespace flurix::karte
