#pragma once
// Servers on loopback for the map tests: the real WMS (MapServer behind a small HTTP server, from
// the shared tools) and a stub that answers with the failures services produce (an HTML page, no
// answer at all, a login). Each is stopped with its object.

#include "gemeinsam/testumgebung.hpp"

#include <string>

namespace flurix::test {

/// MapServer with the layers "nutzung" and "flurstuecke" in EPSG:25833 (and 25832, 4258, 4326).
/// `Url()` is the service address; it already holds a query ("…/mapserv?map=…&"). Empty when
/// MapServer is not installed: the test then skips with `Fehlt()` as its message.
class WmsTestserver {
public:
    WmsTestserver();
    WmsTestserver(const WmsTestserver&) = delete;
    WmsTestserver& operator=(const WmsTestserver&) = delete;
    WmsTestserver(WmsTestserver&&) = delete;
    WmsTestserver& operator=(WmsTestserver&&) = delete;
    ~WmsTestserver();

    const std::string& Url() const { return m_url; }
    std::string Fehlt() const { return m_fehlt; }
    /// GetMap requests the server has answered so far.
    int KartenAnfragen() const;

private:
    TempOrdner m_ordner;
    std::string m_url;
    std::string m_fehlt;
};

/// tests/werkzeuge/http_stub.py: "/html/…", "/still/…", "/login/…" (flurix:geheim), "/bild/…".
class HttpStub {
public:
    HttpStub();
    HttpStub(const HttpStub&) = delete;
    HttpStub& operator=(const HttpStub&) = delete;
    HttpStub(HttpStub&&) = delete;
    HttpStub& operator=(HttpStub&&) = delete;
    ~HttpStub();

    /// "http://127.0.0.1:<port>"
    const std::string& Basis() const { return m_basis; }
    /// Requests answered so far.
    int Anfragen() const;

private:
    int m_pid = -1;
    std::string m_basis;
};

/// A port on loopback that is free at the moment of asking.
int FreierPort();

} // namespace flurix::test
