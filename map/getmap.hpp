#pragma once
// The GetMap request of one map level: its URL, byte for byte as the services have always been
// asked, and the name of the file it is kept in. The file name holds every parameter of the
// request, so an existing file is the answer of an earlier identical request: the cache.

#include <filesystem>
#include <string>

namespace flurix::karte {

/// What the catalogue row of a service gives a request.
struct Dienstwerte {
    std::string url;             ///< the `URL` cell
    std::string getCapabilities; ///< the `GetCapabilities` cell (for the node id of some services)
    std::string layers;          ///< LAYERS: the chosen names of the row, joined with ","
    std::string format;          ///< the `Format` cell; "png" when empty
    std::string style;           ///< the `Style` cell
    bool transparent = true;     ///< the `Transparenz` cell
};

/// The frame of the picture, as texts in the form they go into the request.
struct Anfragerahmen {
    std::string epsg;          ///< e.g. "25833"
    std::string bbox;          ///< "YMin,XMin,YMax,XMax", points, at most 3 decimals
    std::string breite;        ///< WIDTH in whole pixels
    std::string höhe;          ///< HEIGHT
    std::string bitmapFaktor;  ///< the bitmap factor as the window shows it, e.g. "1.0"
};

/// One level's request for the length of one map run.
struct EbenenAnfrage {
    int ebene = 1;             ///< 1 (foreground) to 3 (background)
    int zeile = -1;            ///< catalogue row, -1 when the service was not found
    std::string dienst = "ohne";
    std::string url;
    std::string layers;
    std::string knoten;        ///< "nodeid=<value>&" or ""
    std::string format = "png";
    std::string transparentWort = "TRUE";
    std::string trenner = "?";
    std::string style;
    std::string anfrage;       ///< the complete GetMap URL
    std::filesystem::path datei; ///< the cache file
    bool geladen = true;       ///< false when the download failed
    std::string fehlerText;    ///< the HTTP client's text after a failed download
    bool abbruch = false;      ///< this level's answer failed

    bool Aktiv() const { return dienst != "ohne" && !dienst.empty(); }
};

/// "nodeid=<value up to the next &>&" when the capabilities query holds "nodeid=" (any case).
std::string KnotenAusAnfrage(const std::string& getCapabilities);

/// "&" when the URL already holds a query ("?"), else "?"; nothing when it ends in "?" or "&".
std::string TrennerFür(const std::string& url);

/// The request of level `ebene` with the service `dienst`: every field above except the download's.
/// `druck` gives the high-resolution variant of the print copies ("SERVICE=WMS&" ahead).
/// Level 3 always asks with an empty STYLES.
EbenenAnfrage AnfrageBilden(int ebene, const std::string& dienst, const Dienstwerte& werte,
                            const Anfragerahmen& rahmen, const std::filesystem::path& tempOrdner,
                            bool druck = false);

/// The cache file of a request: "#tmp_wms<level>_<URL>_<EPSG>_<BBox>_<w>_<h>_<layers>_<style>_
/// <factor>" without "?", "/", ":", "." and ",", behind the temp folder, cut to 250 characters,
/// trailing blanks removed, "." + format appended, and the word "adv_alkis" taken out of the path.
std::filesystem::path CacheDatei(const EbenenAnfrage& anfrage, const Anfragerahmen& rahmen,
                                 const std::filesystem::path& tempOrdner);

/// The capabilities request the window shows beside the maps: URL + separator + node +
/// "REQUEST=GetCapabilities&VERSION=1.1.1&SERVICE=WMS".
std::string CapabilitiesAnfrage(const EbenenAnfrage& anfrage);

} // namespace flurix::karte
