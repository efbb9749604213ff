#include "nas/xml_werkzeug_basis.hpp"

#include "core/datei.hpp"
#include "core/dateikopf.hpp"
#include "core/oberflaeche.hpp"
#include "nas/objekt_schneider.hpp"
#include "nas/xml_werkzeuge.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cstring>
#include <fstream>
#include <system_error>

namespace flurix::nas::detail {
namespace {

namespace fs = std::filesystem;

constexpr auto Anzeigeabstand = std::chrono::milliseconds(100);

bool IstNamensende(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '>' || c == '/';
}

// The end of the tag that begins at `anfang` ("<"): the position of its ">", or npos. A ">" inside
// a quoted attribute value does not count.
std::size_t TagEnde(std::string_view text, std::size_t anfang) {
    char anführung = 0;
    for (std::size_t i = anfang + 1; i < text.size(); ++i) {
        const char c = text[i];
        if (anführung) {
            if (c == anführung)
                anführung = 0;
        } else if (c == '"' || c == '\'') {
            anführung = c;
        } else if (c == '>') {
            return i;
        }
    }
    return std::string_view::npos;
}

// Passes over a comment, a CDATA section, a processing instruction or a declaration that begins at
// `anfang`: the position behind it (npos when it does not end), or `anfang` when none begins there.
std::size_t Überspringen(std::string_view text, std::size_t anfang) {
    const auto bis = [&](std::string_view ende) {
        const auto fund = text.find(ende, anfang);
        return fund == std::string_view::npos ? fund : fund + ende.size();
    };
    const std::string_view rest = text.substr(anfang);
    if (rest.starts_with("<!--"))
        return bis("-->");
    if (rest.starts_with("<![CDATA["))
        return bis("]]>");
    if (rest.starts_with("<?"))
        return bis("?>");
    if (rest.starts_with("<!"))
        return bis(">");
    return anfang;
}

__extension__ using Produkt = unsigned __int128;

// The high and the low half of the 128-bit product, joined: every bit of the result depends on
// every bit of both factors.
std::uint64_t Falten(std::uint64_t x, std::uint64_t y) {
    const Produkt p = static_cast<Produkt>(x) * y;
    return static_cast<std::uint64_t>(p) ^ static_cast<std::uint64_t>(p >> 64);
}

} // namespace

XmlKopf KopfLesen(const fs::path& datei) {
    XmlKopf kopf;
    const std::string anfang = DateiKopfLesen(datei, INT_MAX, KopfSuchlänge);
    for (const char* tag : {"gml:featureMember", "wfs:member"}) {
        const auto fund = anfang.find("<" + std::string(tag) + ">");
        if (fund != std::string::npos) {
            kopf.mitgliedTag = tag;
            kopf.text = anfang.substr(0, fund);
            break;
        }
    }
    kopf.zeilenende = anfang.find("\r\n") != std::string::npos ? "\r\n" : "\n";
    return kopf;
}

std::vector<std::string> OffeneElemente(std::string_view kopf) {
    std::vector<std::string> offen;
    std::size_t pos = 0;
    while ((pos = kopf.find('<', pos)) != std::string_view::npos) {
        if (const auto weiter = Überspringen(kopf, pos); weiter != pos) {
            pos = weiter;
            continue;
        }
        const std::size_t ende = TagEnde(kopf, pos);
        if (ende == std::string_view::npos)
            break;
        const bool schließt = kopf.substr(pos, 2) == "</";
        std::size_t nameEnde = pos + (schließt ? 2 : 1);
        while (nameEnde < ende && !IstNamensende(kopf[nameEnde]))
            ++nameEnde;
        const std::string_view name =
            kopf.substr(pos + (schließt ? 2 : 1), nameEnde - pos - (schließt ? 2 : 1));
        if (schließt) {
            // Closes the innermost element of that name and any left open inside it.
            for (auto i = offen.size(); i-- > 0;)
                if (offen[i] == name) {
                    offen.resize(i);
                    break;
                }
        } else if (kopf[ende - 1] != '/' && !name.empty()) {
            offen.emplace_back(name);
        }
        pos = ende + 1;
    }
    return offen;
}

std::string_view GmlId(std::string_view objekt) {
    const auto fund = objekt.find("gml:id=");
    if (fund == std::string_view::npos || fund + 8 > objekt.size())
        return {};
    const char anführung = objekt[fund + 7];
    if (anführung != '"' && anführung != '\'')
        return {};
    const auto anfang = fund + 8;
    const auto ende = objekt.find(anführung, anfang);
    return ende == std::string_view::npos ? std::string_view()
                                          : objekt.substr(anfang, ende - anfang);
}

std::string_view Objektart(std::string_view objekt) {
    std::size_t pos = 0;
    while ((pos = objekt.find('<', pos)) != std::string_view::npos) {
        const auto weiter = Überspringen(objekt, pos);
        if (weiter == std::string_view::npos)
            return {};
        if (weiter != pos) {
            pos = weiter;
            continue;
        }
        std::size_t ende = pos + 1;
        while (ende < objekt.size() && !IstNamensende(objekt[ende]))
            ++ende;
        return objekt.substr(pos + 1, ende - pos - 1);
    }
    return {};
}

Typliste::Typliste(const std::vector<std::string>& namen) : m_namen(namen.begin(), namen.end()) {
    m_namen.erase("");
}

bool Typliste::Enthält(std::string_view art) const {
    if (m_namen.empty() || art.empty())
        return false;
    if (m_namen.contains(art))
        return true;
    const auto doppelpunkt = art.find(':');
    return doppelpunkt != std::string_view::npos && m_namen.contains(art.substr(doppelpunkt + 1));
}

Kennungsmenge::Kennungsmenge() : m_tabelle(std::size_t{1} << 16) {}

bool Kennungsmenge::Einfügen(std::string_view kennung) {
    // Two lanes over the 8-byte words of the identifier, each with constants of its own, so that
    // the 128 bits are two independent hashes. The length goes in first: identifiers that differ
    // only by trailing zero bytes stay apart.
    constexpr std::uint64_t K1 = 0x9E3779B97F4A7C15ull, K2 = 0xC2B2AE3D27D4EB4Full;
    constexpr std::uint64_t S1 = 0x165667B19E3779F9ull, S2 = 0xD6E8FEB86659FD93ull;
    std::uint64_t a = S1 ^ kennung.size(), b = S2 + kennung.size() * K1;
    std::size_t i = 0;
    do {
        std::uint64_t wort = 0;
        std::memcpy(&wort, kennung.data() + i, std::min<std::size_t>(8, kennung.size() - i));
        a = Falten(a ^ wort ^ K2, K1);
        b = Falten(b ^ std::rotl(wort, 29) ^ S1, K2);
        i += 8;
    } while (i < kennung.size());
    Schlüssel schlüssel{Falten(a ^ S2, K1 ^ b), Falten(b ^ K1, S1 ^ a)};
    if (schlüssel.a == 0 && schlüssel.b == 0)
        schlüssel.b = 1; // (0, 0) marks an empty slot
    if ((m_anzahl + 1) * 4 > m_tabelle.size() * 3)
        Wachsen();
    return Setzen(schlüssel);
}

bool Kennungsmenge::Setzen(const Schlüssel& schlüssel) {
    const std::size_t maske = m_tabelle.size() - 1;
    for (std::size_t i = schlüssel.a & maske;; i = (i + 1) & maske) {
        Schlüssel& platz = m_tabelle[i];
        if (platz.a == schlüssel.a && platz.b == schlüssel.b)
            return false;
        if (platz.a == 0 && platz.b == 0) {
            platz = schlüssel;
            ++m_anzahl;
            return true;
        }
    }
}

void Kennungsmenge::Wachsen() {
    std::vector<Schlüssel> alt(m_tabelle.size() * 2);
    alt.swap(m_tabelle);
    m_anzahl = 0;
    for (const auto& schlüssel : alt)
        if (schlüssel.a != 0 || schlüssel.b != 0)
            Setzen(schlüssel);
}

XmlAusgabe::XmlAusgabe(const fs::path& ziel, const XmlKopf& kopf)
    : m_datei(ziel), m_start("<" + kopf.mitgliedTag + ">"), m_ende("</" + kopf.mitgliedTag + ">"),
      m_zeilenende(kopf.zeilenende), m_offen(OffeneElemente(kopf.text)) {
    m_datei.Schreiben(kopf.text);
}

void XmlAusgabe::Zeilenanfang(std::string_view einrückung) {
    // The head ends with the indentation of the first member.
    if (!m_erstes) {
        m_datei.Schreiben(m_zeilenende);
        m_datei.Schreiben(einrückung);
    }
    m_erstes = false;
}

void XmlAusgabe::Objekt(std::string_view einrückung, std::string_view text) {
    Zeilenanfang(einrückung);
    m_datei.Schreiben(m_start);
    m_datei.Schreiben(text);
    m_datei.Schreiben(m_ende);
}

void XmlAusgabe::Kommentar(std::string_view einrückung, std::string_view text) {
    Zeilenanfang(einrückung);
    m_datei.Schreiben("<!-- ");
    m_datei.Schreiben(text);
    m_datei.Schreiben(" -->");
}

void XmlAusgabe::Abschließen() {
    if (!m_erstes)
        m_datei.Schreiben(m_zeilenende);
    for (auto element = m_offen.rbegin(); element != m_offen.rend(); ++element)
        m_datei.Schreiben("</" + *element + ">" + m_zeilenende);
    m_datei.Abschließen();
}

std::string_view Drehzeichen(int schritt) {
    static constexpr std::array<std::string_view, 4> zeichen = {"--", "\\", "|", "/"};
    return zeichen[static_cast<std::size_t>(schritt) % zeichen.size()];
}

Laufanzeige::Laufanzeige(Oberfläche& ui, std::uint64_t gesamt, std::function<std::string(int)> text)
    : m_ui(ui), m_gesamt(gesamt), m_text(std::move(text)),
      m_zuletzt(std::chrono::steady_clock::now()) {}

bool Laufanzeige::Weiter(std::uint64_t position) {
    const auto jetzt = std::chrono::steady_clock::now();
    if (jetzt - m_zuletzt < Anzeigeabstand)
        return true;
    m_zuletzt = jetzt;
    Zeigen(position);
    return !m_ui.AbbruchGewünscht();
}

void Laufanzeige::Zeigen(std::uint64_t position) {
    m_ui.Status(1, m_text(m_schritt));
    m_schritt = (m_schritt + 1) % 4;
    m_ui.Fortschritt(static_cast<long long>(position), static_cast<long long>(m_gesamt));
}

bool ObjekteLesen(const fs::path& datei, const std::string& mitgliedTag, Laufanzeige& anzeige,
                  std::uint64_t basis,
                  const std::function<void(std::string_view, std::string_view)>& jeObjekt) {
    ObjektSchneider schneider(datei, mitgliedTag);
    std::string einrückung;
    // The last line before a member is its indentation when it holds only blanks and tabs.
    const auto zwischenzeile = [&](std::string_view zeile) {
        einrückung.assign(
            zeile.find_first_not_of(" \t") == std::string_view::npos ? zeile : std::string_view());
    };
    std::string_view objekt;
    while (schneider.Nächstes(objekt, zwischenzeile)) {
        jeObjekt(objekt, einrückung);
        einrückung.clear();
        if (!anzeige.Weiter(basis + schneider.Position()))
            return false;
    }
    if (schneider.Abgeschnitten())
        throw Fehler("Die Datei \"" + datei.string() +
                     "\" endet innerhalb eines Objekts (unvollständige Datei?)!   ");
    if (schneider.Unvollständige() > 0)
        throw Fehler("Die Datei \"" + datei.string() + "\" enthält " +
                     std::to_string(schneider.Unvollständige()) + " Objekt(e) ohne Endtag <" + "/" +
                     mitgliedTag + ">!   ");
    return true;
}

Ergebnis Fehlschlag(Oberfläche& ui, std::string_view titel, const std::string& text) {
    ui.Meldung(text + "\n" + std::string(MeldungProgrammautor), titel, Stil::Fehler);
    return Ergebnis::Fehlschlag(text);
}

Ergebnis ZielNichtErstellt(Oberfläche& ui, std::string_view titel, const fs::path& ziel,
                           const std::exception& ursache) {
    return Fehlschlag(ui, titel,
                      std::string(ursache.what()) + "\nDie Datei \"" + ziel.string() +
                          "\" wurde nicht erstellt.");
}

Ergebnis Erledigt(Oberfläche& ui, std::string_view titel, const std::string& meldung,
                  const std::string& status) {
    ui.Status(1, status.empty() ? meldung : status);
    ui.Meldung(meldung, titel, Stil::Information);
    return Ergebnis::Ok(meldung);
}

Ergebnis Abgebrochen() { return Ergebnis::Abbruch("Abbruch Funktion!   "); }

std::optional<Ergebnis> EingabePrüfen(Oberfläche& ui, std::string_view titel,
                                      const fs::path& datei) {
    if (!DateiVorhanden(datei))
        return Fehlschlag(ui, titel, "Eingabedatei \"" + datei.string() + "\" nicht vorhanden!   ");
    std::ifstream probe(datei, std::ios::binary);
    if (!probe)
        return Fehlschlag(ui, titel,
                          "Eingabedatei \"" + datei.string() +
                              "\" hat den Zugriff verweigert oder ist in Bearbeitung!?   ");
    return std::nullopt;
}

bool ZielFreigegeben(Oberfläche& ui, const fs::path& ziel, const XmlOptionen& optionen,
                     const std::string& frage, std::string_view titel) {
    std::error_code fehler;
    if (!fs::exists(ziel, fehler))
        return true;
    Fragestellung f{frage, std::string(titel), Knöpfe::JaNein, Antwort::Nein,
                    optionen.ersetzen ? Antwort::Ja : Antwort::Nein};
    return ui.Frage(f) == Antwort::Ja;
}

std::string FrageErsetzen(const fs::path& ziel) {
    return "Datei \"" + ziel.string() + "\" ersetzen?   ";
}

fs::path ZielNeben(const fs::path& datei, std::string_view anhang) {
    return datei.parent_path() / (datei.stem().string() + std::string(anhang));
}

} // namespace flurix::nas::detail
