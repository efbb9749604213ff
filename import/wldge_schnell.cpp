#include "import/wldge_schnell.hpp"

#include "core/cp1252.hpp"
#include "core/einstellungen.hpp"
#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche.hpp"
#include "core/spaltenansicht.hpp"
#include "core/suche.hpp"
#include "core/text.hpp"
#include "import/datenladen.hpp"
#include "import/textvorbereitung.hpp"
#include "import/wldge_satz.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fstream>
#include <unordered_map>

namespace flurix::import {
namespace {

// One parcel, or in format "35" one parcel and owner. Lists are joined with ";".
struct Eintrag {
    std::string fkz, kreis, katasteramt, gemeinde, gemeindeId, gemarkung, gemarkungId, flur;
    std::string gericht, gerichtId, bezirk, blatt, bvnr, art;
    std::string nutzung, fläche, pz, akt, position;
    std::string name, zusatz, strasse, ort, bemerkung, bov;
    std::string lage, strKey, rechts, hoch;
    std::string letzterStrKey; // the street of the last "G" line, for the house number list
};

// One place of block 7: the Gemarkung with its Gemeinde and court, and the names the "C09" and
// "D09" lines append in their order (the first is the Kreis, the second the Gemeinde).
struct Ortseintrag {
    std::string gemeindeId, gemarkungId, gerichtId, gemarkung, gericht;
    std::vector<std::string> namen;
    std::string Name(std::size_t i) const { return i < namen.size() ? namen[i] : std::string(); }
};

// One owner of the owner table.
struct Eigentümer {
    std::string name, zusatz, strasse, ort, blatt, bemerkung;
};

std::string Trim(std::string_view text) { return std::string(TrimmeLeerzeichen(text)); }

void Liste(std::string& feld, std::string_view text, std::string_view fuge) {
    if (!feld.empty())
        feld.append(fuge);
    feld.append(text);
}

// A coordinate: the number of the field divided by 10, as short as it goes; 0 gives "".
std::string Koordinate(long long zahl) {
    if (zahl == 0)
        return {};
    char puffer[32];
    const auto ende = std::to_chars(puffer, puffer + sizeof puffer, static_cast<double>(zahl) / 10.0).ptr;
    return std::string(puffer, ende);
}

// An owner's text from column 49 (format "32") or 78 (format "35") to the end of the line: the
// name's empty pieces become blanks, ":" goes, the text is cut to 52 characters and a leading "."
// goes. Worked on the 1252 bytes, so that 52 characters are 52 bytes.
std::string EigentümerText(std::string_view roh, bool istName, bool umdrehen) {
    std::string text(roh);
    if (istName) {
        text = Trim(Ersetzen(Ersetzen(text, ",,,", "   "), ",,", "  "));
        if (umdrehen) {
            const auto komma = text.find(',');
            if (komma != std::string::npos)
                text = Trim(std::string_view(text).substr(komma + 1)) + " " +
                       Trim(std::string_view(text).substr(0, komma));
        }
    } else {
        text = Trim(text);
    }
    std::erase(text, ':');
    if (text.size() > 52)
        text.resize(52);
    text = Trim(text);
    if (text.starts_with('.'))
        text.erase(0, 1);
    return Cp1252NachUtf8(text);
}

bool Ist(std::string_view zeile, std::size_t spalte, char zeichen) {
    return Spalte(zeile, spalte) == zeichen;
}

class SchnellLeser {
public:
    SchnellLeser(const ImportOptionen& optionen, Oberfläche& ui) : m_optionen(optionen), m_ui(ui) {}

    // Stage 1 and 2: counting and loading. False (with the message) when there is no parcel.
    bool Laden(std::string roh) {
        m_ui.Status(1, "14% eingelesen  ");
        // The lines of the file, without their line ends; a last piece of blanks is no line.
        std::vector<std::pair<std::size_t, std::size_t>> stücke;
        for (std::size_t anfang = 0; anfang < roh.size();) {
            auto ende = roh.find('\n', anfang);
            const std::size_t weiter = ende == std::string::npos ? roh.size() : ende + 1;
            if (ende == std::string::npos)
                ende = roh.size();
            std::size_t länge = ende - anfang;
            if (länge > 0 && roh[anfang + länge - 1] == '\r')
                --länge;
            stücke.emplace_back(anfang, länge);
            anfang = weiter;
        }
        while (!stücke.empty() &&
               TrimmeLeerzeichen(std::string_view(roh).substr(stücke.back().first, stücke.back().second))
                   .find_first_not_of("\x1a\t") == std::string_view::npos)
            stücke.pop_back();
        m_format = FormatAusKopf(roh, stücke);
        for (const auto& [anfang, länge] : stücke) {
            const std::string_view z(roh.data() + anfang, länge);
            if (m_format == "35" ? Ist(z, 1, '4') && FeldRoh(z, 26, 28) == " Z " && Ist(z, 77, '0')
                                 : Ist(z, 1, '3') && FeldRoh(z, 26, 28) == " B ")
                ++m_gezählt;
        }
        if (m_gezählt == 0) {
            m_ui.Meldung(MeldungKeineFlurstücke, ProduktTitel, Stil::Information);
            return false;
        }
        // Stage 2: every line corrected, and ";" made "," since ";" joins the lists.
        m_text.reserve(roh.size());
        m_zeilen.reserve(stücke.size());
        std::string zeile;
        for (std::size_t i = 0; i < stücke.size(); ++i) {
            zeile.assign(roh, stücke[i].first, stücke[i].second);
            ZeichenKorrektur(zeile);
            std::replace(zeile.begin(), zeile.end(), ';', ',');
            m_zeilen.emplace_back(m_text.size(), zeile.size());
            m_text += zeile;
            Fortschritt("28%/", i, stücke.size());
        }
        return true;
    }

    // Stage 3: places, courts and streets of blocks 7 and 8.
    void Schlüsselblöcke() {
        m_ui.Status(1, "43% eingelesen  ");
        for (std::size_t i = 0; i < m_zeilen.size(); ++i) {
            const std::string_view z = Zeile(i);
            if (Ist(z, 1, '8')) {
                for (std::size_t o : Treffer(m_nachGericht, FeldRoh(z, 2, 5)))
                    m_orte[o].gericht = FeldBisEnde(z, 30);
                continue;
            }
            if (!Ist(z, 1, '7'))
                continue;
            const std::string_view code = FeldRoh(z, 27, 29);
            if (code == "A00") {
                m_katasteramt = Trim(FeldText(z, 57, 82));
            } else if (code == "B09") {
                Ortseintrag ort;
                ort.gemarkung = FeldBisEnde(z, 30);
                ort.gemeindeId = FeldText(z, 9, 16);
                ort.gemarkungId = FeldText(z, 2, 7);
                ort.gerichtId = FeldText(z, 22, 25);
                const std::size_t nr = m_orte.size();
                m_nachGemarkung.emplace(ort.gemarkungId, nr); // the first entry is the one found
                m_nachKreis[ort.gemeindeId.substr(0, 5)].push_back(nr);
                m_nachGemeinde[ort.gemeindeId].push_back(nr);
                m_nachGericht[ort.gerichtId].push_back(nr);
                m_orte.push_back(std::move(ort));
            } else if (code == "C09" || code == "D09") {
                const auto& index = code == "C09" ? m_nachKreis : m_nachGemeinde;
                const std::string name = FeldText(z, 30, 59);
                for (std::size_t o : Treffer(index, FeldText(z, 2, code == "C09" ? 6 : 9)))
                    m_orte[o].namen.push_back(name);
            } else if (code == "E09") {
                m_straßen.emplace(FeldText(z, 2, 9) + "|" + FeldText(z, 14, 18), Trim(FeldText(z, 30, 59)));
            }
        }
    }

    // Stage 4 (format "32") or the parcel pass of format "35". False when no parcel was found.
    bool Flurstücke() {
        const bool f35 = m_format == "35";
        m_einträge.reserve(static_cast<std::size_t>(m_gezählt));
        for (std::size_t i = 0; i < m_zeilen.size();) {
            const std::string_view z = Zeile(i);
            const bool anfang = f35 ? Ist(z, 1, '4') && z.size() >= 21
                                    : Ist(z, 1, '3') && Ist(z, 12, '-') && Ist(z, 18, '/') && Ist(z, 22, '.');
            if (!anfang) {
                ++i;
                continue;
            }
            const std::string_view fkz = FeldRoh(z, 2, 21);
            m_einträge.emplace_back().fkz = Cp1252NachUtf8(fkz);
            m_nachFkz.emplace(m_einträge.back().fkz, m_einträge.size() - 1);
            const std::size_t erster = m_einträge.size() - 1;
            for (; i < m_zeilen.size() && FeldRoh(Zeile(i), 2, 21) == fkz; ++i) {
                FlurstücksZeile(Zeile(i), f35, erster);
                Fortschritt(f35 ? "71%/" : "57%/", i, m_zeilen.size());
            }
        }
        if (m_einträge.empty()) {
            m_ui.Meldung(MeldungKeineDaten, ProduktTitel, Stil::Information);
            return false;
        }
        return true;
    }

    // Stage 5, format "32": owners and booking lines of block 2. False when a Bestand has more
    // owners than the owner table holds.
    bool Bestände() {
        for (std::size_t i = 0; i < m_zeilen.size();) {
            const std::string_view z = Zeile(i);
            if (Spalte(z, 1) >= '3' && Spalte(z, 1) <= '9')
                break; // block 2 stands before every other block that counts
            Fortschritt("85%/", i, m_zeilen.size());
            if (Ist(z, 1, '2') && Ist(z, 32, '.') && Ist(z, 35, '.') && Ist(z, 41, '.') && Ist(z, 48, '0')) {
                const std::size_t gruppe = i;
                if (!Eigentümergruppe(i))
                    return false;
                // A line of the group's form that is neither an owner nor a remark line (columns
                // 26-27 other than " 1" and " 2") holds no group: it is passed over.
                if (i == gruppe)
                    ++i;
                continue;
            }
            if (Ist(z, 1, '2') && Ist(z, 8, '-') && Ist(z, 37, '-') && Ist(z, 41, '-') &&
                Ist(z, 47, '/') && Ist(z, 51, '.'))
                Buchung(z);
            ++i;
        }
        return true;
    }

    // Stage 6 (format "32") or the last pass (format "35").
    void Aufräumen() {
        const bool f35 = m_format == "35";
        for (std::size_t k = 0; k < m_einträge.size(); ++k) {
            Eintrag& e = m_einträge[k];
            for (std::string* feld : {&e.name, &e.zusatz, &e.strasse, &e.ort})
                *feld = TextSäubern(*feld); // runs of blanks collapse
            if (!f35) {
                e.blatt = TextSäubern(e.blatt);
                for (std::string* feld : {&e.blatt, &e.name, &e.zusatz, &e.strasse, &e.ort, &e.bemerkung})
                    if (feld->starts_with(';'))
                        feld->erase(0, 1);
                e.position = std::to_string(std::count(e.name.begin(), e.name.end(), ';') + 1);
            } else {
                // The remark of a group's last owner goes to all its rows, each of them numbered
                // back from its position. Quadratic only in the owners of one parcel.
                const long long p = FeldZahl(e.position);
                for (long long d = p - 1; d >= 1; --d)
                    if (static_cast<long long>(k) >= d) {
                        Eintrag& davor = m_einträge[k - static_cast<std::size_t>(d)];
                        davor.bemerkung = e.bemerkung;
                        davor.position = std::to_string(p - d);
                    }
            }
            if (e.name.empty())
                ++m_ohneEigentümer;
            if (f35 && k % 20 == 0)
                Fortschritt("85%/", k, m_einträge.size());
        }
    }

    // Stage 7: the rows, in the catalogue's order from Landkreis to Hochwert, then checkdruck.
    void ZeilenMachen(Kataster& kataster) {
        kataster.Leeren();
        SpaltenAnlegen(kataster);
        const bool jeEigentümer = m_format == "32" && !m_optionen.alleEigentümerInEinerZeile;
        std::array<std::string, 30> zellen;
        std::array<std::string_view, 30> ansichten;
        for (std::size_t k = 0; k < m_einträge.size(); ++k) {
            const Eintrag& e = m_einträge[k];
            zellen = {e.kreis, e.katasteramt, e.gemeinde, e.gemeindeId, e.gemarkung, e.gemarkungId,
                      e.flur, e.gericht, e.gerichtId, e.bezirk, e.blatt, e.bvnr, e.art,
                      e.fkz.size() >= 20 ? e.fkz.substr(11, 9) : std::string(), e.nutzung, e.fläche,
                      e.pz, e.akt, e.position, e.name, e.zusatz, e.strasse, e.ort, e.bemerkung,
                      e.bov, e.lage, e.strKey, e.rechts, e.hoch, std::string()};
            for (auto& zelle : zellen)
                zelle = Trim(zelle);
            if (!jeEigentümer) {
                Hinzufügen(kataster, zellen, ansichten);
            } else {
                // One row for each owner: the lists are taken apart, item by item.
                const long long anzahl = std::max<long long>(1, FeldZahl(e.position));
                constexpr std::array<std::size_t, 6> listen = {10, 23, 19, 20, 21, 22};
                std::array<std::vector<std::string_view>, 6> teile;
                std::array<std::string, 6> ganz;
                for (std::size_t l = 0; l < listen.size(); ++l) {
                    ganz[l] = zellen[listen[l]];
                    teile[l] = Teilen(ganz[l], ';');
                }
                for (long long n = 0; n < anzahl; ++n) {
                    for (std::size_t l = 0; l < listen.size(); ++l)
                        zellen[listen[l]] = static_cast<std::size_t>(n) < teile[l].size()
                                                ? Trim(teile[l][static_cast<std::size_t>(n)])
                                                : std::string();
                    zellen[18] = std::to_string(n + 1);
                    Hinzufügen(kataster, zellen, ansichten);
                }
            }
            Fortschritt("95%/", k, m_einträge.size());
        }
        m_ui.Status(1, "100% eingelesen  ");
    }

    const std::string& Format() const { return m_format; }
    long long Gezählt() const { return m_gezählt; }
    std::size_t Einträge() const { return m_einträge.size(); }
    long long OhneEigentümer() const { return m_ohneEigentümer; }
    long long Bov() const { return m_bov; }
    std::size_t Zeilenzahl() const { return m_zeilen.size(); }

private:
    static std::string FormatAusKopf(const std::string& roh,
                                     const std::vector<std::pair<std::size_t, std::size_t>>& stücke) {
        for (const auto& [anfang, länge] : stücke) {
            const std::string_view z(roh.data() + anfang, länge);
            if (Ist(z, 1, '1') && FeldRoh(z, 27, 32) == "E   01")
                return std::string(FeldRoh(z, 34, 35));
        }
        return {};
    }

    std::string_view Zeile(std::size_t i) const {
        return std::string_view(m_text).substr(m_zeilen[i].first, m_zeilen[i].second);
    }

    template <typename Index>
    static const std::vector<std::size_t>& Treffer(const Index& index, std::string_view schlüssel) {
        static const std::vector<std::size_t> keine;
        const auto it = index.find(std::string(schlüssel));
        return it == index.end() ? keine : it->second;
    }

    const Ortseintrag* Ort(const std::string& gemarkungId) const {
        const auto it = m_nachGemarkung.find(gemarkungId);
        return it == m_nachGemarkung.end() ? nullptr : &m_orte[it->second];
    }

    void Fortschritt(std::string_view stufe, std::size_t i, std::size_t gesamt) {
        if (i % 20 != 0)
            return;
        const long long prozent = gesamt ? std::llround(static_cast<double>(i) * 100.0 / static_cast<double>(gesamt)) : 0;
        m_ui.Status(1, std::string(stufe) + std::to_string(prozent) + "% eingelesen  ");
    }

    void FlurstücksZeile(std::string_view z, bool f35, std::size_t erster) {
        Eintrag& e = m_einträge.back();
        switch (Spalte(z, 27)) {
        case 'B':
            e.fläche = FeldText(z, 84, 92);
            e.akt = FeldText(z, 95, 96);
            e.pz = FeldText(z, 23, 25);
            e.flur = FeldText(z, 9, 11);
            e.gemarkungId = FeldText(z, 2, 7);
            if (const Ortseintrag* ort = Ort(e.gemarkungId)) {
                e.gemeinde = Trim(ort->Name(1));
                e.gemeindeId = Trim(ort->gemeindeId);
                e.gemarkung = Trim(ort->gemarkung);
                e.kreis = Trim(ort->Name(0));
            }
            break;
        case 'D': {
            const long long rechts = FeldZahl(FeldText(z, 72, 79));
            const long long hoch = FeldZahl(FeldText(z, 81, 88));
            // Format "35" sets a coordinate only when the file gives one.
            if (!f35 || rechts > 0)
                e.rechts = Koordinate(rechts);
            if (!f35 || hoch > 0)
                e.hoch = Koordinate(hoch);
            break;
        }
        case 'G':
            Straße(z, e);
            break;
        case 'H':
            if (e.lage.empty())
                e.lage = Trim(FeldBisEnde(z, 34));
            else
                e.lage += " " + FeldBisEnde(z, 34);
            break;
        case 'K':
            Liste(e.nutzung, FeldText(z, 34, 47), ";");
            break;
        case 'N':
            KleineFläche(z, e);
            break;
        case 'U':
            e.bov = Trim("Flurstück im BOV " + FeldBisEnde(z, 31));
            ++m_bov;
            break;
        case 'Z':
            if (f35)
                EigentümerZeile(z, erster);
            break;
        default:
            break; // "X" and all others are passed over
        }
    }

    void Straße(std::string_view z, Eintrag& e) const {
        const std::string schlüssel = FeldText(z, 43, 47);
        const long long zahl = FeldZahl(FeldText(z, 49, 52));
        const std::string buchstaben = Trim(FeldBisEnde(z, 54));
        const std::string nummer = zahl == 0 ? buchstaben : std::to_string(zahl) + buchstaben;
        const auto it = m_straßen.find(e.gemeindeId.substr(0, 8) + "|" + schlüssel);
        const std::string name = it == m_straßen.end() ? std::string() : it->second;
        if (e.strKey.empty()) {
            e.lage = name + " " + nummer;
            e.strKey = schlüssel;
        } else if (schlüssel == e.letzterStrKey) {
            e.lage += "," + nummer;
        } else {
            e.lage += ";" + name + " " + nummer;
            e.strKey += ";" + schlüssel;
        }
        e.letzterStrKey = schlüssel;
    }

    // An area below one unit stands as "000000000"; the text line tells the fraction. ",5" becomes
    // "00000.499", so that such a parcel doesn't round up to 1 in sums.
    static void KleineFläche(std::string_view z, Eintrag& e) {
        if (e.fläche != "000000000")
            return;
        const auto komma = z.find(',');
        if (komma == std::string_view::npos)
            return;
        e.fläche = "00000." + Cp1252NachUtf8(z.substr(komma + 1));
        if (TrimmeLeerzeichen(e.fläche) == "00000.5")
            e.fläche = "00000.499";
    }

    void Gericht(Eintrag& e, std::string_view z) const {
        e.katasteramt = m_katasteramt;
        if (const Ortseintrag* ort = Ort(FeldText(z, 2, 7))) {
            e.gericht = ort->gericht;
            e.gerichtId = ort->gerichtId;
        }
    }

    // Format "35": an owner line "Z" of the parcel whose first entry is `erster`.
    void EigentümerZeile(std::string_view z, std::size_t erster) {
        const char teil = Spalte(z, 57);
        const char unterteil = Spalte(z, 77);
        if (teil == '2') {
            m_einträge.back().bemerkung = FeldBisEnde(z, 64);
            return;
        }
        if (teil != '1')
            return;
        if (unterteil == '0') {
            if (m_eigentümerImFlurstück.first == erster) {
                // A further owner: the parcel's entry is copied; the owner's own fields start empty.
                Eintrag kopie = m_einträge.back();
                kopie.name.clear(), kopie.zusatz.clear(), kopie.strasse.clear(), kopie.ort.clear();
                kopie.bemerkung.clear();
                m_einträge.push_back(std::move(kopie));
                ++m_eigentümerImFlurstück.second;
            } else {
                m_eigentümerImFlurstück = {erster, 1};
            }
            return;
        }
        Eintrag& e = m_einträge.back();
        const std::string_view roh = FeldRoh(z, 78);
        switch (unterteil) {
        case '1':
            e.name = EigentümerText(roh, true, m_optionen.nameUmdrehen);
            e.blatt = ZahlOhneNullen(FeldText(z, 40, 44));
            e.position = std::to_string(m_eigentümerImFlurstück.first == erster
                                            ? m_eigentümerImFlurstück.second : 1);
            e.bezirk = FeldText(z, 4, 7);
            e.bvnr = FeldText(z, 47, 50);
            e.art = FeldText(z, 56, 56);
            Gericht(e, z);
            break;
        case '2': e.zusatz = EigentümerText(roh, false, false); break;
        case '3': e.strasse = EigentümerText(roh, false, false); break;
        case '4': e.ort = EigentümerText(roh, false, false); break;
        default: break;
        }
    }

    // Format "32": the owners of a group, then its remark. `i` moves past the group's lines.
    bool Eigentümergruppe(std::size_t& i) {
        m_tabelle.clear();
        const std::string bestand = FeldText(Zeile(i), 2, 14);
        for (; i < m_zeilen.size() && FeldRoh(Zeile(i), 26, 27) == " 1"; ++i) {
            const std::string_view z = Zeile(i);
            Fortschritt("85%/", i, m_zeilen.size());
            const char nr = Spalte(z, 48);
            if (nr == '0') {
                if (m_tabelle.size() == HöchstzahlEigentümer) {
                    m_ui.Meldung("Der Bestand " + Trim(bestand) + " hat mehr als " +
                                     std::to_string(HöchstzahlEigentümer) +
                                     " Eigentümer (Zeile " + std::to_string(i + 1) +
                                     ")! Das schnelle Einlesen wird abgebrochen. Bitte wählen Sie "
                                     "[WLDGE-Daten komplett einlesen]!   ",
                                 ProduktTitel, Stil::Fehler);
                    return false;
                }
                m_tabelle.emplace_back();
                continue;
            }
            if (m_tabelle.empty())
                continue; // owner lines before the first owner have no place
            Eigentümer& e = m_tabelle.back();
            const std::string_view roh = FeldRoh(z, 49);
            switch (nr) {
            case '1':
                e.blatt = FeldText(z, 9, 13);
                e.name = EigentümerText(roh, true, m_optionen.nameUmdrehen);
                break;
            case '2': e.zusatz = EigentümerText(roh, false, false); break;
            case '3': e.strasse = EigentümerText(roh, false, false); break;
            case '4': e.ort = EigentümerText(roh, false, false); break;
            default: break;
            }
        }
        std::string bemerkung;
        for (; i < m_zeilen.size() && FeldRoh(Zeile(i), 26, 27) == " 2"; ++i)
            Liste(bemerkung, Trim(FeldBisEnde(Zeile(i), 34)), " ");
        for (auto& e : m_tabelle)
            e.bemerkung = bemerkung;
        return true;
    }

    // Format "32": a booking line gives the parcel its folio and the owners of the table.
    void Buchung(std::string_view z) {
        const auto it = m_nachFkz.find(FeldText(z, 31, 50));
        if (it == m_nachFkz.end())
            return;
        Eintrag& e = m_einträge[it->second];
        Gericht(e, z);
        e.bezirk = FeldText(z, 4, 7);
        e.bvnr = FeldText(z, 16, 19);
        e.art = FeldText(z, 26, 26);
        // A parcel booked before keeps its lists and gets the new owners behind them.
        for (const auto& eigentümer : m_tabelle) {
            e.blatt += "; " + eigentümer.blatt;
            e.bemerkung += "; " + eigentümer.bemerkung;
            e.name += "; " + eigentümer.name;
            e.zusatz += "; " + eigentümer.zusatz;
            e.strasse += "; " + eigentümer.strasse;
            e.ort += "; " + eigentümer.ort;
        }
    }

    static void Hinzufügen(Kataster& kataster, const std::array<std::string, 30>& zellen,
                           std::array<std::string_view, 30>& ansichten) {
        for (std::size_t s = 0; s < zellen.size(); ++s)
            ansichten[s] = zellen[s];
        kataster.ZeileHinzufügen(ansichten);
    }

    const ImportOptionen& m_optionen;
    Oberfläche& m_ui;
    std::string m_format;
    long long m_gezählt = 0;
    std::string m_text;                                      // all lines, corrected, one after another
    std::vector<std::pair<std::size_t, std::size_t>> m_zeilen; // start and length of each line
    std::string m_katasteramt;
    std::vector<Ortseintrag> m_orte;
    std::unordered_map<std::string, std::size_t> m_nachGemarkung;
    std::unordered_map<std::string, std::vector<std::size_t>> m_nachKreis, m_nachGemeinde, m_nachGericht;
    std::unordered_map<std::string, std::string> m_straßen; // Gemeinde key 8 + "|" + street key
    std::vector<Eintrag> m_einträge;
    std::unordered_map<std::string, std::size_t> m_nachFkz;  // the first entry of each parcel
    std::vector<Eigentümer> m_tabelle;                       // the owners of the Bestand being read
    std::pair<std::size_t, long long> m_eigentümerImFlurstück{static_cast<std::size_t>(-1), 0};
    long long m_ohneEigentümer = 0;
    long long m_bov = 0;
};

std::string DateiLesen(const std::filesystem::path& datei) {
    std::ifstream ein(datei, std::ios::binary);
    if (!ein)
        throw Fehler("Die Datei \"" + datei.string() + "\" kann nicht gelesen werden!");
    return std::string(std::istreambuf_iterator<char>(ein), std::istreambuf_iterator<char>());
}

} // namespace

Ergebnis WldgeSchnellLesen(const std::filesystem::path& datei, const ImportOptionen& optionen,
                           Kataster& kataster, Oberfläche& ui, WldgeSchnellBericht* bericht) {
    ui.Status(2, datei.filename().string());
    SchnellLeser leser(optionen, ui);
    try {
        if (!leser.Laden(DateiLesen(datei)))
            return Ergebnis::Fehlschlag(std::string(MeldungKeineFlurstücke));
    } catch (const std::exception& e) {
        ui.Meldung(e.what(), ProduktTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag(e.what());
    }
    if (leser.Format() != "32" && leser.Format() != "35") {
        ui.Meldung(MeldungKeineDaten, ProduktTitel, Stil::Information);
        return Ergebnis::Fehlschlag(std::string(MeldungKeineDaten));
    }
    leser.Schlüsselblöcke();
    if (!leser.Flurstücke())
        return Ergebnis::Fehlschlag(std::string(MeldungKeineDaten));
    if (leser.Format() == "32" && !leser.Bestände())
        return Ergebnis::Fehlschlag("Bestand mit mehr als " + std::to_string(HöchstzahlEigentümer) +
                                    " Eigentümern");
    leser.Aufräumen();
    leser.ZeilenMachen(kataster);

    WldgeSchnellBericht b;
    b.format = leser.Format();
    b.zeilen = static_cast<long long>(leser.Zeilenzahl());
    b.flurstücke = static_cast<long long>(leser.Einträge());
    b.ohneEigentümer = leser.OhneEigentümer();
    b.bov = leser.Bov();
    if (optionen.suchbegriffGemarkung)
        b.gemarkungFlur = BoxGemFlurFüllen(kataster, ui);
    SpaltenlisteAnwenden(kataster, SchnellimportAnsicht);
    kataster.Sortieren(StandardSortierung);
    ALBDatenColFormatierung(kataster);
    const std::string zeilen = std::to_string(kataster.Zeilenzahl());
    ui.Status(1, zeilen + " Zeilen eingelesen  ");
    if (b.bov > 0)
        ui.Status(3, std::to_string(b.bov) + " Flurstücke befinden sich in einem BOV  ");
    ui.Status(4, b.format == "32" ? std::to_string(b.flurstücke) + " Flurstücke eingelesen, " +
                                        zeilen + " Zeilen erzeugt  "
                                  : zeilen + " Zeilen erzeugt  ");
    if (b.ohneEigentümer > 0)
        ui.Meldung("In der ALB-Datei wurde(n) " + std::to_string(b.ohneEigentümer) +
                       " Flurstück(e) ohne Eigentümer vorgefunden!   ",
                   ProduktTitel, Stil::Information);
    if (bericht)
        *bericht = std::move(b);
    return Ergebnis::Ok();
}

} // namespace flurix::import
