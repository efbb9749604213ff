#include "nas/konfig_suche.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/einstellungen.hpp"
#include "core/text.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <optional>
#include <vector>

namespace flurix::nas {

namespace {

/// A configuration line as every reader sees it: tabs removed, blanks trimmed at both ends.
std::string Zeilenform(std::string_view zeile) {
    std::string ohneTabs;
    ohneTabs.reserve(zeile.size());
    for (char c : zeile)
        if (c != '\t')
            ohneTabs += c;
    return std::string(TrimmeLeerzeichen(ohneTabs));
}

bool IstKommentar(std::string_view zeile) { return zeile.empty() || zeile.front() == '*'; }

/// The numbers of a ";"-separated column list; a piece that is no number gives 0, which TokenNr
/// answers with "".
std::vector<int> Spaltennummern(std::string_view liste) {
    std::vector<int> nummern;
    for (std::string_view stück : Teilen(liste, ';')) {
        stück = TrimmeLeerzeichen(stück);
        int n = 0;
        const auto [ende, fehler] = std::from_chars(stück.data(), stück.data() + stück.size(), n);
        if (fehler != std::errc() || ende != stück.data() + stück.size())
            n = 0;
        nummern.push_back(n);
    }
    return nummern;
}

/// TokenNr of each column, joined with ";".
std::string SpaltenVerbinden(std::string_view zeile, const std::vector<int>& spalten,
                             std::string_view trenner) {
    std::string ergebnis;
    for (std::size_t i = 0; i < spalten.size(); ++i) {
        if (i > 0)
            ergebnis += ';';
        ergebnis += TokenNr(zeile, spalten[i], trenner);
    }
    return ergebnis;
}

/// The rest of the line of the first hit of `anfang`, or nothing. A hit must end where a column
/// ends, unless `anfang` itself ends with a blank or the separator.
std::optional<std::string> ZeileAb(std::string_view anfang, std::string_view trenner,
                                   std::string_view text) {
    if (anfang.empty())
        return std::nullopt;
    const bool offenesEnde =
        anfang.ends_with(' ') || (!trenner.empty() && anfang.ends_with(trenner));
    for (std::string_view roh : TextZeilen(text)) {
        const std::string zeile = Zeilenform(roh);
        if (IstKommentar(zeile))
            continue;
        for (auto pos = zeile.find(anfang); pos != std::string::npos;
             pos = zeile.find(anfang, pos + 1)) {
            const std::string_view danach = std::string_view(zeile).substr(pos + anfang.size());
            if (offenesEnde || danach.empty() || danach.front() == ' ' ||
                (!trenner.empty() && danach.starts_with(trenner)))
                return zeile.substr(pos);
        }
    }
    return std::nullopt;
}

} // namespace

std::string KonfigWert(int schlüsselSpalte, std::string_view schlüssel, std::string_view trenner,
                       int wertSpalte, std::string_view text) {
    for (std::string_view zeile : TextZeilen(text)) {
        if (zeile.find('*') != std::string_view::npos)
            continue;
        const std::string a = TokenNr(zeile, schlüsselSpalte, trenner);
        // The line's key must stand in the asked key, not the other way round: the system names
        // of the files carry prefixes ("urn:adv:crs:") that the table leaves out.
        if (!a.empty() && schlüssel.find(a) != std::string_view::npos)
            return TokenNr(zeile, wertSpalte, trenner);
    }
    return {};
}

std::string KonfigWerteListe(std::string_view schlüssel, std::string_view text) {
    std::string liste;
    if (schlüssel.empty())
        return liste;
    bool erster = true;
    for (std::string_view roh : TextZeilen(text)) {
        const std::string zeile = Zeilenform(roh);
        if (IstKommentar(zeile))
            continue;
        for (auto pos = zeile.find(schlüssel); pos != std::string::npos;
             pos = zeile.find(schlüssel, pos + 1)) {
            std::string_view rest = std::string_view(zeile).substr(pos + schlüssel.size());
            rest = TrimmeLeerzeichen(rest);
            if (!rest.starts_with('='))
                continue; // the key is only the beginning of a longer name
            rest = TrimmeLeerzeichen(rest.substr(1));
            if (!erster)
                liste += ';';
            liste += rest;
            erster = false;
            break;
        }
    }
    return liste;
}

std::string KonfigZeile(std::string_view schlüssel, std::string_view spalten,
                        std::string_view trenner, std::string_view text) {
    std::string ohneBlanks;
    for (char c : schlüssel)
        if (c != ' ')
            ohneBlanks += c;

    // "a;b;c|d": the alternatives replace the last part of the key.
    const auto letztesSemikolon = ohneBlanks.rfind(';');
    const std::size_t teilAnfang = letztesSemikolon == std::string::npos ? 0 : letztesSemikolon + 1;
    const std::string_view stamm = std::string_view(ohneBlanks).substr(0, teilAnfang);
    const std::vector<std::string_view> varianten =
        Teilen(std::string_view(ohneBlanks).substr(teilAnfang), '|');

    std::string zwischen = " ";
    zwischen.append(trenner).append(" ");
    const std::vector<int> nummern = Spaltennummern(spalten);

    std::string ergebnis;
    for (std::size_t i = 0; i < varianten.size(); ++i) {
        std::string anfang = Ersetzen(stamm, ";", zwischen);
        anfang += varianten[i];
        const auto zeile = ZeileAb(anfang, trenner, text);
        if (i == 0) {
            if (zeile)
                ergebnis = SpaltenVerbinden(*zeile, nummern, trenner);
        } else if (zeile) {
            ergebnis += " / ";
            ergebnis += SpaltenVerbinden(*zeile, nummern, trenner);
        }
    }
    return ergebnis;
}

std::string KonfigAuswahl(std::string_view suchwerte, std::string_view suchspalten,
                          std::string_view wertspalten, std::string_view trenner,
                          std::string_view text) {
    const std::vector<int> such = Spaltennummern(suchspalten);
    std::vector<std::string> werte;
    werte.reserve(such.size());
    for (std::size_t i = 0; i < such.size(); ++i)
        werte.push_back(TokenNr(suchwerte, static_cast<int>(i) + 1, ";"));
    const std::vector<int> wert = Spaltennummern(wertspalten);

    for (std::string_view roh : TextZeilen(text)) {
        const std::string zeile = Zeilenform(roh);
        if (IstKommentar(zeile))
            continue;
        bool passt = true;
        for (std::size_t i = 0; i < such.size() && passt; ++i)
            passt = TokenNr(zeile, such[i], trenner) == werte[i];
        if (passt)
            return SpaltenVerbinden(zeile, wert, trenner);
    }
    return {};
}

std::string IdKennzeichnen(std::string_view wert, std::string_view attribut) {
    static constexpr std::array<std::string_view, 12> verweise = {
        "istGebucht",
        "zeigtAuf",
        "weistAuf",
        "gml:id",
        "istBestandteilVon",
        "hat",
        "dientZurDarstellungVon",
        "benennt",
        "zu",
        "an",
        "istTeilVon",
        "zeigtAufExternes/AA_Fachdatenverbindung/fachdatenobjekt"};
    const bool istVerweis = std::ranges::find(verweise, attribut) != verweise.end();
    const auto klein = static_cast<std::size_t>(
        std::ranges::count_if(wert, [](char c) { return c >= 'a' && c <= 'z'; }));
    if (!istVerweis || klein == 0)
        return std::string(wert);

    std::string kennzeichen;
    kennzeichen.reserve(wert.size() + klein);
    for (char c : wert) {
        kennzeichen += c;
        if (c >= 'a' && c <= 'z')
            kennzeichen += '\'';
    }
    return kennzeichen;
}

namespace {

struct Reparatur {
    std::string_view folge; ///< what follows "Ã" in the doubly encoded text
    std::string_view buchstabe;
};

// The second byte of each letter's UTF-8 form, read as Windows-1252 and encoded again.
constexpr std::array<Reparatur, 24> reparaturen = {{
    {"\u00A4", "\u00E4"}, // ¤ -> ä
    {"\u201E", "\u00C4"}, // „ -> Ä
    {"\u00B6", "\u00F6"}, // ¶ -> ö
    {"\u2013", "\u00D6"}, // – -> Ö
    {"\u00BC", "\u00FC"}, // ¼ -> ü
    {"\u0153", "\u00DC"}, // œ -> Ü
    {"\u0178", "\u00DF"}, // Ÿ -> ß
    {"\u02C6", "\u00C8"}, // ˆ -> È
    {"\u2030", "\u00C9"}, // ‰ -> É
    {"\u0152", "\u00CC"}, // Œ -> Ì
    {"\u2019", "\u00D2"}, // ’ -> Ò
    {"\u201C", "\u00D3"}, // “ -> Ó
    {"\u2122", "\u00D9"}, // ™ -> Ù
    {"\u0161", "\u00DA"}, // š -> Ú
    {"\u00A1", "\u00E1"}, // ¡ -> á
    {"\u00A8", "\u00E8"}, // ¨ -> è
    {"\u00A9", "\u00E9"}, // © -> é
    {"\u00AC", "\u00EC"}, // ¬ -> ì
    {"\u00AD", "\u00ED"}, // soft hyphen -> í
    {"\u00B2", "\u00F2"}, // ² -> ò
    {"\u00B3", "\u00F3"}, // ³ -> ó
    {"\u00B9", "\u00F9"}, // ¹ -> ù
    {"\u00BA", "\u00FA"}, // º -> ú
    {"\u00BD", "\u00FD"}, // ½ -> ý
}};

constexpr char C3 = '\xC3';
constexpr char AmitTilde = '\x83'; // second byte of "Ã"
constexpr char AmitDach = '\x82';  // second byte of "Â"

/// Position of the first "Ã" or "Â" at or after `ab`, or npos.
std::size_t NächsteStelle(std::string_view text, std::size_t ab) {
    const char* anfang = text.data();
    const char* ende = anfang + text.size();
    const char* p = anfang + ab;
    while (p < ende) {
        const void* fund = std::memchr(p, C3, static_cast<std::size_t>(ende - p));
        if (fund == nullptr)
            return std::string_view::npos;
        p = static_cast<const char*>(fund);
        if (p + 1 < ende && (p[1] == AmitTilde || p[1] == AmitDach))
            return static_cast<std::size_t>(p - anfang);
        ++p;
    }
    return std::string_view::npos;
}

} // namespace

std::string Utf8Reparatur(std::string_view text) {
    std::size_t stelle = NächsteStelle(text, 0);
    if (stelle == std::string_view::npos)
        return std::string(text);

    std::string heil;
    heil.reserve(text.size());
    std::size_t kopiertBis = 0;
    while (stelle != std::string_view::npos) {
        heil.append(text.substr(kopiertBis, stelle - kopiertBis));
        std::size_t weiter = stelle + 2;
        if (text[stelle + 1] == AmitTilde) {
            const std::string_view danach = text.substr(weiter);
            std::string_view buchstabe = "\u00E0"; // a lone "Ã" becomes "à"
            for (const Reparatur& r : reparaturen)
                if (danach.starts_with(r.folge)) {
                    buchstabe = r.buchstabe;
                    weiter += r.folge.size();
                    break;
                }
            heil.append(buchstabe);
        } // else "Â": removed
        kopiertBis = weiter;
        stelle = NächsteStelle(text, weiter);
    }
    heil.append(text.substr(kopiertBis));
    return heil;
}

} // namespace flurix::nas
