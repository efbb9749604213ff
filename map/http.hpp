#pragma once
// HTTP for the map: GetMap and GetCapabilities requests, tiles and the gazetteer, through libcurl.
//
// What the map needs of a client: a basic login by user and password, a body saved to a file or
// returned as text, and an error text that carries the platform's identifiers, because the callers
// decide on them: a host that does not resolve is reported with "WSAHOST_NOT_FOUND" in the text, a
// target that can't be written with "WindowsErrorCode: 0x5" (the texts the map's answer tests have
// always looked for). No retries: a failed request is reported and the user asks again.

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace flurix::karte {

/// The settings of one request. The login is sent as HTTP basic authentication when `benutzer` is
/// not empty.
struct HttpOptionen {
    std::string benutzer;
    std::string passwort;
    /// The whole request, connection and body, must be done within this time.
    std::chrono::milliseconds zeitlimit{std::chrono::seconds(60)};
    /// The connection alone (name lookup included).
    std::chrono::milliseconds verbindungslimit{std::chrono::seconds(15)};
};

/// What a request gave.
struct HttpErgebnis {
    bool ok = false;      ///< a body came back (any HTTP status: services answer errors as bodies)
    long status = 0;      ///< HTTP status, 0 when no answer came
    std::string fehlerText; ///< empty when ok; else the reason with its identifiers
    std::string inhaltstyp; ///< the Content-Type of the answer
};

/// Downloads `url` into `datei`. The body is written under a temporary name beside the file and
/// renamed when it is complete, so that a failed or cut download never leaves a file that a later
/// run would take for a cached answer. An existing `datei` is replaced only on success.
HttpErgebnis HttpDateiLaden(const std::string& url, const std::filesystem::path& datei,
                            const HttpOptionen& optionen = {});

/// The body of `url` as text (the bytes as they came). On failure `text` stays empty.
HttpErgebnis HttpAnfrageAlsText(const std::string& url, std::string& text,
                                const HttpOptionen& optionen = {});

/// Several downloads at once, each to its file, driven by the caller's loop: the map's levels and
/// the tile runs fetch in parallel while the caller polls, shows progress and may cancel. Each file
/// is written as HttpDateiLaden writes it (temporary name, renamed when complete).
class HttpMehrfach {
public:
    HttpMehrfach();
    HttpMehrfach(const HttpMehrfach&) = delete;
    HttpMehrfach& operator=(const HttpMehrfach&) = delete;
    HttpMehrfach(HttpMehrfach&&) = delete;
    HttpMehrfach& operator=(HttpMehrfach&&) = delete;
    /// Cancels what still runs.
    ~HttpMehrfach();

    /// Starts a download; the number names it in the results.
    int Hinzufügen(const std::string& url, const std::filesystem::path& datei, const HttpOptionen& optionen = {});

    /// Lets the transfers run for at most `warten` (returns earlier when one ends) and gives the
    /// downloads that ended since the last call, with their results.
    std::vector<std::pair<int, HttpErgebnis>> Weiter(std::chrono::milliseconds warten);

    /// Stops a download; its result, given by the next Weiter, says "abgebrochen". No file is left.
    void Abbrechen(int nummer);
    /// Number of downloads not yet reported.
    int Offen() const;

private:
    struct Übertragung;
    void Beenden(Übertragung& ü, int curlCode, bool abgebrochen);

    void* m_multi;
    std::vector<std::unique_ptr<Übertragung>> m_übertragungen;
    std::vector<std::pair<int, HttpErgebnis>> m_fertig;
    int m_nächste = 1;
};

/// libcurl's version for the info window and the protocol, e.g. "libcurl/7.88.1 OpenSSL/3.0.x".
std::string HttpVersion();

} // namespace flurix::karte
