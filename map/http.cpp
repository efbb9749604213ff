#include "map/http.hpp"

#include "core/zieldatei.hpp"

#include <curl/curl.h>

#include <cstdio>
#include <memory>
#include <mutex>
#include <system_error>

namespace flurix::karte {
namespace {

void CurlEinmalStarten() {
    static std::once_flag einmal;
    std::call_once(einmal, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

struct CurlLöschen {
    void operator()(CURL* c) const { curl_easy_cleanup(c); }
};
using CurlZeiger = std::unique_ptr<CURL, CurlLöschen>;

// The identifier the map's answer tests look for, in front of libcurl's own words.
std::string FehlerText(CURLcode code, const char* puffer) {
    std::string text;
    switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        text = "WSAHOST_NOT_FOUND: ";
        break;
    case CURLE_WRITE_ERROR:
        text = "WindowsErrorCode: 0x5 (Schreibfehler): ";
        break;
    case CURLE_OPERATION_TIMEDOUT:
        text = "WSAETIMEDOUT: ";
        break;
    case CURLE_COULDNT_CONNECT:
        text = "WSAECONNREFUSED: ";
        break;
    default:
        break;
    }
    text += "CURLE " + std::to_string(static_cast<int>(code)) + " ";
    text += (puffer && *puffer) ? puffer : curl_easy_strerror(code);
    return text;
}

size_t InTextSchreiben(char* daten, size_t größe, size_t anzahl, void* ziel) {
    static_cast<std::string*>(ziel)->append(daten, größe * anzahl);
    return größe * anzahl;
}

size_t InDateiSchreiben(char* daten, size_t größe, size_t anzahl, void* ziel) {
    return std::fwrite(daten, größe, anzahl, static_cast<std::FILE*>(ziel)) * größe;
}

// One request with the options; the body goes where `schreiben` puts it.
HttpErgebnis Anfrage(const std::string& url, const HttpOptionen& optionen,
                     curl_write_callback schreiben, void* ziel) {
    CurlEinmalStarten();
    HttpErgebnis ergebnis;
    CurlZeiger curl(curl_easy_init());
    if (!curl) {
        ergebnis.fehlerText = "libcurl nicht verfügbar";
        return ergebnis;
    }
    char fehlerpuffer[CURL_ERROR_SIZE] = {};
    CURL* c = curl.get();
    curl_easy_setopt(c, CURLOPT_URL, url.c_str());
    curl_easy_setopt(c, CURLOPT_ERRORBUFFER, fehlerpuffer);
    curl_easy_setopt(c, CURLOPT_WRITEFUNCTION, schreiben);
    curl_easy_setopt(c, CURLOPT_WRITEDATA, ziel);
    curl_easy_setopt(c, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(c, CURLOPT_MAXREDIRS, 5L);
    curl_easy_setopt(c, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(c, CURLOPT_TIMEOUT_MS, static_cast<long>(optionen.zeitlimit.count()));
    curl_easy_setopt(c, CURLOPT_CONNECTTIMEOUT_MS,
                     static_cast<long>(optionen.verbindungslimit.count()));
    curl_easy_setopt(c, CURLOPT_USERAGENT, "Flurix");
    curl_easy_setopt(c, CURLOPT_ACCEPT_ENCODING, ""); // whatever the library can unpack
    if (!optionen.benutzer.empty()) {
        curl_easy_setopt(c, CURLOPT_HTTPAUTH, CURLAUTH_BASIC);
        curl_easy_setopt(c, CURLOPT_USERNAME, optionen.benutzer.c_str());
        curl_easy_setopt(c, CURLOPT_PASSWORD, optionen.passwort.c_str());
    }
    const CURLcode code = curl_easy_perform(c);
    curl_easy_getinfo(c, CURLINFO_RESPONSE_CODE, &ergebnis.status);
    if (const char* typ = nullptr; curl_easy_getinfo(c, CURLINFO_CONTENT_TYPE, &typ) == CURLE_OK && typ)
        ergebnis.inhaltstyp = typ;
    if (code != CURLE_OK) {
        ergebnis.fehlerText = FehlerText(code, fehlerpuffer);
        return ergebnis;
    }
    ergebnis.ok = true;
    return ergebnis;
}

} // namespace

HttpErgebnis HttpDateiLaden(const std::string& url, const std::filesystem::path& datei,
                            const HttpOptionen& optionen) {
    const std::filesystem::path temporär = Zieldatei::Zwischenname(datei);
    std::FILE* f = std::fopen(temporär.c_str(), "wb");
    if (!f) {
        HttpErgebnis ergebnis;
        ergebnis.fehlerText = "WindowsErrorCode: 0x5 (Datei nicht beschreibbar): " + datei.string();
        return ergebnis;
    }
    HttpErgebnis ergebnis = Anfrage(url, optionen, InDateiSchreiben, f);
    const bool geschlossen = std::fclose(f) == 0;
    if (ergebnis.ok && !geschlossen) {
        ergebnis.ok = false;
        ergebnis.fehlerText = "WindowsErrorCode: 0x5 (Schreibfehler): " + datei.string();
    }
    std::error_code fehler;
    if (ergebnis.ok) {
        std::filesystem::rename(temporär, datei, fehler);
        if (fehler) {
            ergebnis.ok = false;
            ergebnis.fehlerText = "WindowsErrorCode: 0x5 (" + fehler.message() + "): " + datei.string();
        }
    }
    if (!ergebnis.ok)
        std::filesystem::remove(temporär, fehler);
    return ergebnis;
}

HttpErgebnis HttpAnfrageAlsText(const std::string& url, std::string& text,
                                const HttpOptionen& optionen) {
    text.clear();
    HttpErgebnis ergebnis = Anfrage(url, optionen, InTextSchreiben, &text);
    if (!ergebnis.ok)
        text.clear();
    return ergebnis;
}

std::string HttpVersion() {
    CurlEinmalStarten();
    return curl_version();
}

} // namespace flurix::karte
