#include "export/grafbat_leser.hpp"

#include "core/cp1252.hpp"
#include "core/fehler.hpp"
#include "core/text.hpp"
#include "core/textkodierung.hpp"

#include <charconv>
#include <cstring>

namespace flurix::ausgabe {
namespace {

bool Großbuchstabe(char c) { return c >= 'A' && c <= 'Z'; }
bool Ziffer(char c) { return c >= '0' && c <= '9'; }

} // namespace

std::vector<std::string> GrafbatFelder(std::string_view text) {
    std::vector<std::string> felder;
    bool inAnführung = false;
    std::size_t anfang = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"') {
            inAnführung = !inAnführung;
        } else if (text[i] == ',' && !inAnführung) {
            felder.emplace_back(text.substr(anfang, i - anfang));
            anfang = i + 1;
        }
    }
    felder.emplace_back(text.substr(anfang));
    return felder;
}

std::optional<GrafbatSatz> GrafbatZeileLesen(std::string_view zeile, std::size_t nummer,
                                             std::string* problem) {
    const auto melden = [&](std::string_view warum) -> std::optional<GrafbatSatz> {
        if (problem != nullptr)
            *problem = "Zeile " + std::to_string(nummer) + ": " + std::string(warum);
        return std::nullopt;
    };
    if (zeile.empty())
        return std::nullopt;
    GrafbatSatz satz;
    satz.zeile = nummer;
    if (zeile.front() == '*') {
        satz.art = GrafbatArt::Kommentar;
        satz.text = std::string(zeile.substr(1));
        const std::string_view rest = TrimmeLeerzeichen(zeile.substr(1));
        constexpr std::string_view marke = "erstellt mit";
        if (rest.starts_with(marke)) {
            std::string_view programm = rest.substr(marke.size());
            if (programm.starts_with(':'))
                programm.remove_prefix(1);
            satz.erstelltMit = std::string(TrimmeLeerzeichen(programm));
        }
        return satz;
    }
    for (std::string_view kopf : {"Typ", "PAR"})
        if (zeile.starts_with(kopf) && zeile.substr(kopf.size()).starts_with(": ")) {
            satz.art = GrafbatArt::Kopf;
            satz.kennung = std::string(kopf);
            satz.text = std::string(zeile.substr(kopf.size() + 2));
            satz.felder = GrafbatFelder(satz.text);
            return satz;
        }
    std::string_view rest = zeile;
    if (rest.starts_with("  ")) {
        satz.unterSatz = true;
        rest.remove_prefix(2);
    }
    if (rest.size() < 3 || !Großbuchstabe(rest[0]) || !Großbuchstabe(rest[1]))
        return melden("kein Satz (erwartet zwei Großbuchstaben, Nummer, \": \")");
    // The hatched areas of a drawing are "SCH" records with their outline in "  POS": kinds of
    // three letters, read like those of two.
    const std::size_t kennungLänge = Großbuchstabe(rest[2]) ? 3 : 2;
    if (rest.size() <= kennungLänge || !Ziffer(rest[kennungLänge]))
        return melden("kein Satz (erwartet zwei Großbuchstaben, Nummer, \": \")");
    satz.kennung = std::string(rest.substr(0, kennungLänge));
    rest.remove_prefix(kennungLänge);
    const auto [ende, fehler] =
        std::from_chars(rest.data(), rest.data() + rest.size(), satz.nummer);
    if (fehler != std::errc())
        return melden("Satznummer zu groß");
    rest.remove_prefix(static_cast<std::size_t>(ende - rest.data()));
    if (rest.starts_with(": "))
        rest.remove_prefix(2);
    else if (rest == ":")
        rest = {};
    else
        return melden("hinter der Satznummer fehlt \": \"");
    satz.text = std::string(rest);
    satz.felder = GrafbatFelder(rest);
    return satz;
}

GrafbatLeser::GrafbatLeser(const std::filesystem::path& datei) : m_datei(datei, std::ios::binary) {
    if (!m_datei)
        throw Fehler("Die GEOgraf-Datei " + datei.string() + " kann nicht geöffnet werden!");
    if (IstUtf16Datei(datei))
        throw Fehler(MeldungUtf16(datei));
}

bool GrafbatLeser::ZeileHolen(std::string& zeile, bool& zuLang) {
    zeile.clear();
    zuLang = false;
    bool gelesen = false;
    for (;;) {
        if (m_pos == m_puffer.size()) {
            m_puffer.resize(1 << 16);
            m_puffer.resize(static_cast<std::size_t>(m_datei.rdbuf()->sgetn(
                m_puffer.data(), static_cast<std::streamsize>(m_puffer.size()))));
            m_pos = 0;
            if (m_puffer.empty())
                return gelesen;
        }
        gelesen = true;
        const char* anfang = m_puffer.data() + m_pos;
        const std::size_t rest = m_puffer.size() - m_pos;
        const void* ende = std::memchr(anfang, '\n', rest);
        const std::size_t länge =
            ende != nullptr ? static_cast<std::size_t>(static_cast<const char*>(ende) - anfang)
                            : rest;
        // A line past the limit is dropped while it is read on: memory stays bounded.
        if (zeile.size() + länge <= GrafbatZeileMax)
            zeile.append(anfang, länge);
        else
            zuLang = true;
        m_pos += ende != nullptr ? länge + 1 : länge;
        if (ende != nullptr)
            return true;
    }
}

std::optional<GrafbatSatz> GrafbatLeser::NächsterSatz() {
    std::string zeile;
    bool zuLang = false;
    while (ZeileHolen(zeile, zuLang)) {
        ++m_zeile;
        if (zuLang) {
            m_probleme.push_back({m_zeile, "Zeile " + std::to_string(m_zeile) + ": länger als " +
                                               std::to_string(GrafbatZeileMax) +
                                               " Zeichen, übergangen"});
            continue;
        }
        if (!zeile.empty() && zeile.back() == '\r')
            zeile.pop_back();
        std::string problem;
        if (auto satz = GrafbatZeileLesen(Cp1252NachUtf8(zeile), m_zeile, &problem))
            return satz;
        if (!problem.empty())
            m_probleme.push_back({m_zeile, std::move(problem)});
    }
    return std::nullopt;
}

} // namespace flurix::ausgabe
