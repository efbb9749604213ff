#include "map/http.hpp"

#include "core/fehler.hpp"
#include "core/zieldatei.hpp"

#include <curl/curl.h>

#include <cstdio>
#include <memory>
#include <mutex>
#include <system_error>
#include <utility>

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

// A write that fails returns 0, which ends the transfer with CURLE_WRITE_ERROR.
size_t InDateiSchreiben(char* daten, size_t größe, size_t anzahl, void* ziel) {
    try {
        static_cast<Zieldatei*>(ziel)->Schreiben(std::string_view(daten, größe * anzahl));
    } catch (const Fehler&) {
        return 0;
    }
    return größe * anzahl;
}

// The options of one request on an easy handle; the body goes where `schreiben` puts it.
void Einrichten(CURL* c, const std::string& url, const HttpOptionen& optionen,
                curl_write_callback schreiben, void* ziel, char* fehlerpuffer) {
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
}

HttpErgebnis ErgebnisAus(CURL* c, CURLcode code, const char* fehlerpuffer) {
    HttpErgebnis ergebnis;
    curl_easy_getinfo(c, CURLINFO_RESPONSE_CODE, &ergebnis.status);
    if (const char* typ = nullptr; curl_easy_getinfo(c, CURLINFO_CONTENT_TYPE, &typ) == CURLE_OK && typ)
        ergebnis.inhaltstyp = typ;
    if (code != CURLE_OK)
        ergebnis.fehlerText = FehlerText(code, fehlerpuffer);
    ergebnis.ok = code == CURLE_OK;
    return ergebnis;
}

// A download goes to the project's target file: a temporary name beside the file, renamed when
// the body is complete, removed when the download fails or is cancelled.
std::unique_ptr<Zieldatei> ZielÖffnen(const std::filesystem::path& datei) {
    try {
        return std::make_unique<Zieldatei>(datei);
    } catch (const Fehler&) {
        return nullptr;
    }
}

HttpErgebnis NichtBeschreibbar(const std::filesystem::path& datei, std::string_view grund) {
    HttpErgebnis ergebnis;
    ergebnis.fehlerText = "WindowsErrorCode: 0x5 (" + std::string(grund) + "): " + datei.string();
    return ergebnis;
}

// Completes the target of a successful download (a failure to do so turns the result into one);
// the target of a failed one is dropped with its temporary file.
void ZielAbschließen(std::unique_ptr<Zieldatei>& ziel, HttpErgebnis& ergebnis) {
    if (ergebnis.ok) {
        try {
            ziel->Abschließen();
        } catch (const Fehler& f) {
            ergebnis = NichtBeschreibbar(ziel->Ziel(), f.what());
        }
    }
    ziel.reset();
}

HttpErgebnis Anfrage(const std::string& url, const HttpOptionen& optionen,
                     curl_write_callback schreiben, void* ziel) {
    CurlEinmalStarten();
    CurlZeiger curl(curl_easy_init());
    if (!curl) {
        HttpErgebnis ergebnis;
        ergebnis.fehlerText = "libcurl nicht verfügbar";
        return ergebnis;
    }
    char fehlerpuffer[CURL_ERROR_SIZE] = {};
    Einrichten(curl.get(), url, optionen, schreiben, ziel, fehlerpuffer);
    return ErgebnisAus(curl.get(), curl_easy_perform(curl.get()), fehlerpuffer);
}

} // namespace

HttpErgebnis HttpDateiLaden(const std::string& url, const std::filesystem::path& datei,
                            const HttpOptionen& optionen) {
    auto ziel = ZielÖffnen(datei);
    if (!ziel)
        return NichtBeschreibbar(datei, "Datei nicht beschreibbar");
    HttpErgebnis ergebnis = Anfrage(url, optionen, InDateiSchreiben, ziel.get());
    ZielAbschließen(ziel, ergebnis);
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

struct HttpMehrfach::Übertragung {
    int nummer = 0;
    CurlZeiger curl;
    std::unique_ptr<Zieldatei> ziel;
    char fehlerpuffer[CURL_ERROR_SIZE] = {};
};

HttpMehrfach::HttpMehrfach() {
    CurlEinmalStarten();
    m_multi = curl_multi_init();
}

HttpMehrfach::~HttpMehrfach() {
    for (auto& ü : m_übertragungen)
        curl_multi_remove_handle(static_cast<CURLM*>(m_multi), ü->curl.get());
    m_übertragungen.clear();
    curl_multi_cleanup(static_cast<CURLM*>(m_multi));
}

int HttpMehrfach::Hinzufügen(const std::string& url, const std::filesystem::path& datei,
                             const HttpOptionen& optionen) {
    auto ü = std::make_unique<Übertragung>();
    ü->nummer = m_nächste++;
    ü->ziel = ZielÖffnen(datei);
    ü->curl.reset(curl_easy_init());
    if (!ü->ziel || !ü->curl) {
        m_fertig.emplace_back(ü->nummer, NichtBeschreibbar(datei, "Datei nicht beschreibbar"));
        return ü->nummer;
    }
    Einrichten(ü->curl.get(), url, optionen, InDateiSchreiben, ü->ziel.get(), ü->fehlerpuffer);
    curl_easy_setopt(ü->curl.get(), CURLOPT_PRIVATE, ü.get());
    curl_multi_add_handle(static_cast<CURLM*>(m_multi), ü->curl.get());
    m_übertragungen.push_back(std::move(ü));
    return m_übertragungen.back()->nummer;
}

void HttpMehrfach::Beenden(Übertragung& ü, int curlCode, bool abgebrochen) {
    HttpErgebnis ergebnis = ErgebnisAus(ü.curl.get(), static_cast<CURLcode>(curlCode), ü.fehlerpuffer);
    if (abgebrochen) {
        ergebnis.ok = false;
        ergebnis.fehlerText = "abgebrochen";
    }
    ZielAbschließen(ü.ziel, ergebnis);
    curl_multi_remove_handle(static_cast<CURLM*>(m_multi), ü.curl.get());
    m_fertig.emplace_back(ü.nummer, std::move(ergebnis));
    std::erase_if(m_übertragungen, [&](const auto& p) { return p.get() == &ü; });
}

std::vector<std::pair<int, HttpErgebnis>> HttpMehrfach::Weiter(std::chrono::milliseconds warten) {
    auto* multi = static_cast<CURLM*>(m_multi);
    int laufend = 0;
    if (!m_übertragungen.empty()) {
        curl_multi_perform(multi, &laufend);
        if (laufend > 0 && m_fertig.empty()) {
            curl_multi_poll(multi, nullptr, 0, static_cast<int>(warten.count()), nullptr);
            curl_multi_perform(multi, &laufend);
        }
        int rest = 0;
        while (CURLMsg* nachricht = curl_multi_info_read(multi, &rest)) {
            if (nachricht->msg != CURLMSG_DONE)
                continue;
            Übertragung* ü = nullptr;
            curl_easy_getinfo(nachricht->easy_handle, CURLINFO_PRIVATE, &ü);
            if (ü)
                Beenden(*ü, nachricht->data.result, false);
        }
    }
    return std::exchange(m_fertig, {});
}

void HttpMehrfach::Abbrechen(int nummer) {
    for (auto& ü : m_übertragungen) {
        if (ü->nummer == nummer) {
            Beenden(*ü, CURLE_ABORTED_BY_CALLBACK, true);
            return;
        }
    }
}

int HttpMehrfach::Offen() const {
    return static_cast<int>(m_übertragungen.size() + m_fertig.size());
}

std::string HttpVersion() {
    CurlEinmalStarten();
    return curl_version();
}

} // namespace flurix::karte
