#include "map/lokale_dienste.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace flurix::test {
namespace {

std::string Abrufen(const std::string& url) {
    return Ausführen("curl -s --max-time 5 '" + url + "'").ausgabe;
}

} // namespace

int FreierPort() {
    const int s = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in adresse{};
    adresse.sin_family = AF_INET;
    adresse.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t länge = sizeof adresse;
    ::bind(s, reinterpret_cast<sockaddr*>(&adresse), sizeof adresse);
    ::getsockname(s, reinterpret_cast<sockaddr*>(&adresse), &länge);
    ::close(s);
    return ntohs(adresse.sin_port);
}

WmsTestserver::WmsTestserver() {
    if (!ImSuchpfad("mapserv")) {
        m_fehlt = "MapServer (mapserv) fehlt: Pakete mapserver-bin und cgi-mapserver";
        return;
    }
    const std::string start = std::string(FLURIX_GEMEINSAM) + "/tools/wms-testserver/start.sh";
    const auto lauf = Ausführen("PORT=" + std::to_string(FreierPort()) + " " + Wort(start) + " " +
                                Wort(m_ordner.pfad()) + " 2>&1");
    std::istringstream zeilen(lauf.ausgabe);
    for (std::string zeile; std::getline(zeilen, zeile);)
        if (zeile.starts_with("http://"))
            m_url = zeile;
    if (m_url.empty())
        m_fehlt = "WMS-Testserver startet nicht: " + lauf.ausgabe;
}

WmsTestserver::~WmsTestserver() {
    std::ifstream datei(m_ordner / "pid");
    if (int pid = 0; datei >> pid && pid > 0)
        ::kill(pid, SIGTERM);
}

int WmsTestserver::KartenAnfragen() const {
    std::ifstream log(m_ordner / "server.log");
    int anzahl = 0;
    for (std::string zeile; std::getline(log, zeile);)
        anzahl += zeile.find("REQUEST=GetMap") != std::string::npos && zeile.find("\"GET ") != std::string::npos;
    return anzahl;
}

HttpStub::HttpStub() {
    int rohr[2];
    if (::pipe(rohr) != 0)
        throw std::runtime_error("pipe");
    m_pid = ::fork();
    if (m_pid == 0) {
        ::dup2(rohr[1], 1);
        ::close(rohr[0]);
        ::close(rohr[1]);
        const std::string skript = std::string(FLURIX_QUELLEN) + "/tests/werkzeuge/http_stub.py";
        ::execlp("python3", "python3", skript.c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(rohr[1]);
    std::string port;
    char c = 0;
    while (::read(rohr[0], &c, 1) == 1 && c != '\n')
        port += c;
    ::close(rohr[0]);
    if (port.empty())
        throw std::runtime_error("http_stub.py startet nicht");
    m_basis = "http://127.0.0.1:" + port;
}

HttpStub::~HttpStub() {
    if (m_pid > 0) {
        ::kill(m_pid, SIGTERM);
        ::waitpid(m_pid, nullptr, 0);
    }
}

int HttpStub::Anfragen() const {
    return std::stoi("0" + Abrufen(m_basis + "/anzahl"));
}

} // namespace flurix::test
