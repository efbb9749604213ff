#pragma once
// The generator of the NAS benchmark: a NAS file of any size made of real features. The features
// of the sample files are written again and again, each copy with identifiers of its own, under
// one AX_Bestandsdatenauszug head, until the file has the size asked for.
//
// The samples are read as they are written, one tag a line: a line that begins with
// <gml:featureMember> or <wfs:member> opens a feature, the matching closing line ends it. The
// output is streamed; memory follows the largest feature and the set of feature identifiers of one
// copy, never the file.

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace flurix::bench {

/// The copy number as three digits of base 62 ("000" … "zzz"). Throws std::out_of_range above
/// 238,327 copies.
inline std::string Kopiekennung(long long kopie) {
    static constexpr std::string_view ziffern =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    if (kopie < 0 || kopie >= 62LL * 62 * 62)
        throw std::out_of_range("zu viele Kopien für dreistellige Kopiekennungen");
    std::string aus(3, '0');
    for (int i = 2; i >= 0; --i, kopie /= 62)
        aus[static_cast<std::size_t>(i)] = ziffern[static_cast<std::size_t>(kopie % 62)];
    return aus;
}

/// Appends the identifier of one copy: in an identifier of eight or more characters (the NAS
/// identifiers have 16) the characters 5 to 8 give way to "_" and the copy's three digits, so the
/// length stays; a shorter one (the geometry ids "A2" of a feature) gets "-" and the digits
/// behind it. The samples' identifiers hold neither "_" nor "-", so no two identifiers of the
/// samples, of one copy or of two copies, meet.
inline void KennungAnfügen(std::string_view kennung, std::string_view kopie, std::string& aus) {
    if (kennung.size() >= 8) {
        aus.append(kennung.substr(0, 4)).append("_").append(kopie).append(kennung.substr(8));
    } else {
        aus.append(kennung).append("-").append(kopie);
    }
}

inline bool Kennungszeichen(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// Appends `text` with every gml:id value and every identifier behind "urn:adv:oid:" (references
/// and gml:identifier) rewritten for the copy; the references of a copy so meet their targets in
/// the same copy. Other references ("urn:adv:crs:…") stay.
inline void KennungenUmschreiben(std::string_view text, std::string_view kopie, std::string& aus) {
    static constexpr std::array<std::string_view, 2> marken = {"gml:id=\"", "urn:adv:oid:"};
    std::array<std::size_t, 2> nächste = {text.find(marken[0]), text.find(marken[1])};
    std::size_t pos = 0;
    for (;;) {
        const std::size_t m = nächste[1] < nächste[0] ? 1 : 0;
        if (nächste[m] == std::string_view::npos)
            break;
        const std::size_t anfang = nächste[m] + marken[m].size();
        std::size_t ende = anfang;
        while (ende < text.size() && Kennungszeichen(text[ende]))
            ++ende;
        aus.append(text.substr(pos, anfang - pos));
        if (ende > anfang)
            KennungAnfügen(text.substr(anfang, ende - anfang), kopie, aus);
        pos = ende;
        nächste[m] = text.find(marken[m], ende);
    }
    aus.append(text.substr(pos));
}

/// Reads the features of one sample file, one at a time.
class MitgliedLeser {
public:
    /// Throws std::runtime_error when the file can't be opened.
    explicit MitgliedLeser(const std::filesystem::path& datei) : m_ein(datei, std::ios::binary) {
        if (!m_ein)
            throw std::runtime_error("Muster nicht lesbar: " + datei.string());
    }

    /// The text before the first feature (the head of the file), read on the first call.
    const std::string& Kopf() {
        if (!m_kopfGelesen) {
            m_kopfGelesen = true;
            std::string zeile;
            while (std::getline(m_ein, zeile)) {
                if (Öffnet(zeile)) {
                    m_offen = true;
                    break;
                }
                m_kopf.append(zeile).append("\n");
            }
        }
        return m_kopf;
    }

    /// The lines of the next feature, without its member tags; false at the end of the file.
    bool Nächstes(std::string& merkmal) {
        Kopf();
        merkmal.clear();
        std::string zeile;
        while (!m_offen && std::getline(m_ein, zeile))
            m_offen = Öffnet(zeile);
        if (!m_offen)
            return false;
        m_offen = false;
        while (std::getline(m_ein, zeile) && !Schließt(zeile))
            merkmal.append(zeile).append("\n");
        return true;
    }

private:
    static std::string_view Eingerückt(std::string_view zeile) {
        const auto anfang = zeile.find_first_not_of(" \t");
        return anfang == std::string_view::npos ? std::string_view{} : zeile.substr(anfang);
    }
    static bool Öffnet(std::string_view zeile) {
        const auto z = Eingerückt(zeile);
        return z.starts_with("<gml:featureMember") || z.starts_with("<wfs:member");
    }
    static bool Schließt(std::string_view zeile) {
        const auto z = Eingerückt(zeile);
        return z.starts_with("</gml:featureMember") || z.starts_with("</wfs:member");
    }

    std::ifstream m_ein;
    std::string m_kopf;
    bool m_kopfGelesen = false;
    bool m_offen = false;
};

/// The end of a NAS file behind its last feature ("</wfs:FeatureCollection>", "</enthaelt>",
/// "</AX_Bestandsdatenauszug>"), read from the file's last 64 KiB. "" when there is no feature.
inline std::string Schluss(const std::filesystem::path& datei) {
    std::ifstream ein(datei, std::ios::binary);
    const auto größe = std::filesystem::file_size(datei);
    const std::uintmax_t ab = größe > 65536 ? größe - 65536 : 0;
    ein.seekg(static_cast<std::streamoff>(ab));
    std::string rest(static_cast<std::size_t>(größe - ab), '\0');
    ein.read(rest.data(), static_cast<std::streamsize>(rest.size()));
    for (const std::string_view marke : {"</gml:featureMember", "</wfs:member"}) {
        const auto pos = rest.rfind(marke);
        if (pos != std::string::npos) {
            const auto zeilenende = rest.find('\n', pos);
            return zeilenende == std::string::npos ? std::string{} : rest.substr(zeilenende + 1);
        }
    }
    return {};
}

/// The head of a Bestandsdatenauszug around features that come without one (the features of a
/// WFS answer): standard system ETRS89_UTM32.
inline constexpr std::string_view EigenerKopf =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<AX_Bestandsdatenauszug xmlns=\"http://www.adv-online.de/namespaces/adv/gid/6.0\" "
    "xmlns:gml=\"http://www.opengis.net/gml/3.2\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
    "xmlns:wfs=\"http://www.adv-online.de/namespaces/adv/gid/wfs\" "
    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
    "xsi:schemaLocation=\"http://www.adv-online.de/namespaces/adv/gid/6.0 NAS-Operationen.xsd\">\n"
    "<erfolgreich>true</erfolgreich>\n"
    "<koordinatenangaben>\n"
    "<AA_Koordinatenreferenzsystemangaben>\n"
    "<crs xlink:href=\"urn:adv:crs:ETRS89_UTM32\"></crs>\n"
    "<anzahlDerNachkommastellen>3</anzahlDerNachkommastellen>\n"
    "<standard>true</standard>\n"
    "</AA_Koordinatenreferenzsystemangaben>\n"
    "</koordinatenangaben>\n"
    "<enthaelt>\n"
    "<wfs:FeatureCollection>\n";
inline constexpr std::string_view EigenerSchluss =
    "</wfs:FeatureCollection>\n</enthaelt>\n</AX_Bestandsdatenauszug>\n";

/// What NasErzeugen wrote.
struct NasErzeugt {
    std::uint64_t bytes = 0;
    long long objekte = 0;
    long long kopien = 0;                     ///< copies begun (the last one may end early)
    std::map<std::string, long long> klassen; ///< features written per class
};

/// Writes `ziel`: the head, then the features of all `muster` copy after copy, each copy with its
/// own identifiers, until the file holds `zielBytes` (checked after each feature), then the end.
/// With `eigenerKopf` the file gets EigenerKopf and EigenerSchluss; otherwise the head (up to the
/// first feature) and the end of the first sample, its AA_Koordinatenreferenzsystemangaben
/// included. A feature whose identifier came before in the samples (the same parcel in two
/// answers) is written once a copy. Throws std::runtime_error when a sample can't be read, when
/// the samples hold no feature, or when the file can't be written.
inline NasErzeugt NasErzeugen(const std::vector<std::filesystem::path>& muster, bool eigenerKopf,
                              const std::filesystem::path& ziel, std::uint64_t zielBytes) {
    if (muster.empty())
        throw std::runtime_error("keine Muster für die NAS-Datei");
    std::vector<char> puffer(1 << 20); // outlives the stream, which flushes it when closed
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> aus(std::fopen(ziel.c_str(), "wb"),
                                                        std::fclose);
    if (!aus)
        throw std::runtime_error("Datei nicht schreibbar: " + ziel.string());
    std::setvbuf(aus.get(), puffer.data(), _IOFBF, puffer.size());
    NasErzeugt erzeugt;
    const auto schreiben = [&](std::string_view text) {
        if (std::fwrite(text.data(), 1, text.size(), aus.get()) != text.size())
            throw std::runtime_error("Schreibfehler: " + ziel.string());
        erzeugt.bytes += text.size();
    };
    std::string schluss(EigenerSchluss);
    if (eigenerKopf) {
        schreiben(EigenerKopf);
    } else {
        MitgliedLeser leser(muster.front());
        schreiben(leser.Kopf());
        schluss = Schluss(muster.front());
    }
    std::string merkmal, text;
    std::unordered_set<std::string> gesehen;
    while (erzeugt.bytes < zielBytes) {
        const std::string kopie = Kopiekennung(erzeugt.kopien++);
        const long long vorher = erzeugt.objekte;
        gesehen.clear();
        for (const auto& datei : muster) {
            MitgliedLeser leser(datei);
            while (erzeugt.bytes < zielBytes && leser.Nächstes(merkmal)) {
                // The feature's class and identifier: its first element and first gml:id.
                const auto klasseAnfang = merkmal.find('<');
                const auto klasseEnde = merkmal.find_first_of(" >\t\r\n", klasseAnfang);
                const auto idAnfang = merkmal.find("gml:id=\"");
                const auto idEnde = merkmal.find('"', idAnfang + 8);
                if (idAnfang != std::string::npos &&
                    !gesehen.insert(merkmal.substr(idAnfang + 8, idEnde - idAnfang - 8)).second)
                    continue;
                text = "<gml:featureMember>\n";
                KennungenUmschreiben(merkmal, kopie, text);
                text += "</gml:featureMember>\n";
                schreiben(text);
                ++erzeugt.objekte;
                if (klasseAnfang != std::string::npos)
                    ++erzeugt
                          .klassen[merkmal.substr(klasseAnfang + 1, klasseEnde - klasseAnfang - 1)];
            }
        }
        if (erzeugt.objekte == vorher)
            throw std::runtime_error("die Muster enthalten keine Objekte");
    }
    schreiben(schluss);
    if (std::fflush(aus.get()) != 0)
        throw std::runtime_error("Schreibfehler: " + ziel.string());
    return erzeugt;
}

} // namespace flurix::bench
