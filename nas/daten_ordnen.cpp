#include "nas/daten_ordnen.hpp"

#include "core/datenbank.hpp"
#include "core/jet_sql.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "nas/geometrie.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <initializer_list>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace flurix::nas {
namespace {

constexpr std::string_view Tabelle = "Alkis";
constexpr std::size_t MaxTextlänge = 255;

bool IstBlank(std::string_view text) { return JetTrim(text).empty(); }

/// Basic's Mid by characters (1-based start), as a view: never fails, a range past the end is cut.
std::string_view Mitte(std::string_view text, std::size_t start, std::size_t länge) {
    const std::string_view rest = text.substr(Utf8Anfang(text, start - 1).size());
    return Utf8Anfang(rest, länge);
}

/// True when Basic's Val reads the text as 0: blanks passed over, the number ends at the first
/// character that can't belong to it ("____" and "" read as 0, "0012" as 12).
bool ValIstNull(std::string_view text) {
    bool zeichenGesehen = false;
    bool punktGesehen = false;
    for (char c : text) {
        if (c == ' ' || c == '\t')
            continue;
        if (c >= '1' && c <= '9')
            return false;
        if (c == '0') {
            zeichenGesehen = true;
        } else if (c == '.' && !punktGesehen) {
            punktGesehen = true;
            zeichenGesehen = true;
        } else if ((c == '+' || c == '-') && !zeichenGesehen) {
            zeichenGesehen = true;
        } else {
            break;
        }
    }
    return true;
}

/// The words of a text: pieces between runs of blanks.
std::vector<std::string_view> Wörter(std::string_view text) {
    std::vector<std::string_view> wörter;
    std::size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && text[i] == ' ')
            ++i;
        const std::size_t anfang = i;
        while (i < text.size() && text[i] != ' ')
            ++i;
        if (i > anfang)
            wörter.push_back(text.substr(anfang, i - anfang));
    }
    return wörter;
}

/// The whole token as a finite number with "." as decimal mark (a "+" in front allowed).
std::optional<double> ZahlAusText(std::string_view text) {
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double wert = 0;
    const char* ende = text.data() + text.size();
    const auto [p, fehler] = std::from_chars(text.data(), ende, wert);
    if (text.empty() || fehler != std::errc() || p != ende || !std::isfinite(wert))
        return std::nullopt;
    return wert;
}

/// "ddd.ff" of a plain decimal text (sign, digits, optional "." and digits), rounded to two
/// decimals half away from zero on the digits themselves, so "0.125" gives "0.13" exactly.
/// std::nullopt when the text has another form.
std::optional<std::string> ZweiStellenDezimal(std::string_view text) {
    bool negativ = false;
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        negativ = text.front() == '-';
        text.remove_prefix(1);
    }
    const auto punkt = text.find('.');
    const std::string_view ganz = text.substr(0, punkt);
    const std::string_view bruch = punkt == std::string_view::npos ? "" : text.substr(punkt + 1);
    auto nurZiffern = [](std::string_view t) {
        return std::all_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; });
    };
    if ((ganz.empty() && bruch.empty()) || !nurZiffern(ganz) || !nurZiffern(bruch))
        return std::nullopt;
    // Digits of the value times 100, then one more digit to round by.
    std::string ziffern(ganz.empty() ? "0" : ganz);
    for (std::size_t i = 0; i < 2; ++i)
        ziffern += i < bruch.size() ? bruch[i] : '0';
    if (bruch.size() > 2 && bruch[2] >= '5') {
        std::size_t i = ziffern.size();
        while (i > 0 && ziffern[i - 1] == '9')
            ziffern[--i] = '0';
        if (i == 0)
            ziffern.insert(ziffern.begin(), '1');
        else
            ++ziffern[i - 1];
    }
    const auto erste = ziffern.find_first_not_of('0');
    if (erste == std::string::npos)
        negativ = false; // no "-0.00"
    ziffern.erase(0, std::min(erste, ziffern.size() - 3));
    std::string aus = negativ ? "-" : "";
    aus.append(ziffern, 0, ziffern.size() - 2).append(".").append(ziffern, ziffern.size() - 2);
    return aus;
}

// ---- The columns of Alkis the pass reads and writes ---------------------------------------

enum Sp : std::size_t {
    Fkz,
    Gemeindeschlüssel,
    Grundbuchblatt,
    BVNR,
    Buchungsart,
    Namensnummer,
    Geburtsdatum,
    NutzungTatsächlich,
    Nutzungsart,
    Fläche,
    Bodenart,
    AngabenKlassifizierung,
    Landkreis,
    Dienststelle,
    Katasteramt,
    Amtsgericht,
    Land,
    Buchungsblattbezirk,
    Flurstück,
    FkzOrig,
    Nachname,
    Vorname,
    Name,
    Namenszusatz,
    Strassenname,
    Hausnummer,
    Straße,
    PLZ,
    Ort,
    AntragsNr,
    AnteilGrund,
    AnteilSonder,
    AnteilZähler,
    AnteilNenner,
    SonstigesBOV,
    Rechtswert,
    Hochwert,
    MKZ,
    EPSG,
    IDlfdNr,
    Eigentümerposition,
    Flächendifferenz,
    SpaltenAnzahl
};

struct Spaltenart {
    std::string_view name;
    bool geschrieben; ///< the pass may write it
};

constexpr std::array<Spaltenart, SpaltenAnzahl> Spaltenarten = {{
    {"Flurstückskennzeichen", false},
    {"Gemeindeschlüssel", false},
    {"Grundbuchblatt", false},
    {"BVNR", false},
    {"Buchungsart", false},
    {"Namensnummer", false},
    {"Geburtsdatum", true},
    {"Nutzung_tatsächlich", true},
    {"Nutzungsart", true},
    {"Fläche", true},
    {"Bodenart", false},
    {"Angaben_Klassifizierung", true},
    {"Landkreis", true},
    {"Dienststelle", true},
    {"Katasteramt", false},
    {"Amtsgericht", true},
    {"Land", true},
    {"buchungsblattbezirk", true},
    {"Flurstück", true},
    {"FKZ-Original", true},
    {"Nachname_sonstiges", false},
    {"Vorname_sonstiges", false},
    {"Name", true},
    {"Namenszusatz", true},
    {"Strassenname", false},
    {"Hausnummer", false},
    {"Straße", true},
    {"PLZ", false},
    {"Ort", true},
    {"AntragsNr", true},
    {"Anteil_Grundstück", true},
    {"Anteil_Sondereigentum", true},
    {"Anteil_Buchungsstelle_Zähler", false},
    {"Anteil_Buchungsstelle_Nenner", false},
    {"sonstigesBOV", true},
    {"Rechtswert", true},
    {"Hochwert", true},
    {"MKZ", true},
    {"EPSG", true},
    {"IDlfd_Nr", true},
    {"Eigentümerposition", true},
    {"Flächendifferenz", true},
}};

constexpr std::string_view UmringSpalte = "UmringFlurstück";

/// The real spelling of a column of Alkis: the same name as SQLite matches it (ASCII case aside)
/// first, else the one that folds like it as Jet compares names; std::nullopt when there is none.
std::optional<std::string> SpalteFinden(const std::vector<std::string>& spalten,
                                        std::string_view name) {
    auto asciiKlein = [](std::string_view t) {
        std::string k(t);
        for (char& c : k)
            if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c - 'A' + 'a');
        return k;
    };
    const std::string gesucht = asciiKlein(name);
    for (const auto& s : spalten)
        if (asciiKlein(s) == gesucht)
            return s;
    const std::string gefaltet = NameFalten(name);
    for (const auto& s : spalten)
        if (NameFalten(s) == gefaltet)
            return s;
    return std::nullopt;
}

/// One cell of the row being edited: its text, whether it was NULL, whether the pass changed it.
struct Zelle {
    std::string text;
    bool null = true;
    bool geändert = false;
};

void Setzen(Zelle& zelle, std::string_view neu) {
    if (!zelle.null && zelle.text == neu)
        return;
    zelle.text.assign(neu);
    zelle.null = false;
    zelle.geändert = true;
}

/// The lookups by key of the pass, through one Suchwerte object (its statements are prepared once)
/// and a small cache per kind: many rows share a municipality and a land-register district.
class Schlüsselsuche {
public:
    Schlüsselsuche(Datenbank& db, std::string_view amtsgerichte)
        : m_suche(db), m_amtsgerichte(amtsgerichte) {}

    /// bezeichnung of the county, std::nullopt when not found.
    std::optional<std::string> Landkreis(std::string_view gemeindeschlüssel) {
        return Gepuffert(m_landkreise, KreisSchlüssel(gemeindeschlüssel),
                         [this](const std::string& k) {
                             return Gefunden(m_suche.SuchWert(k, "AX_KreisRegion",
                                                              "schluesselGesamt", "bezeichnung"));
                         });
    }
    /// bezeichnung of the Land, std::nullopt when not found.
    std::optional<std::string> Land(std::string_view gemeindeschlüssel) {
        return Gepuffert(m_länder, LandSchlüssel(gemeindeschlüssel), [this](const std::string& k) {
            return Gefunden(
                m_suche.SuchWert(k, "AX_Bundesland", "schluesselGesamt", "bezeichnung"));
        });
    }
    /// bezeichnung of the cadastral office, "" when not found.
    std::string Dienststelle(std::string_view gemeindeschlüssel) {
        return Gepuffert(m_dienststellen, DienststellenSchlüssel(gemeindeschlüssel),
                         [this](const std::string& k) {
                             return Gefunden(m_suche.SuchWert(k, "AX_Dienststelle",
                                                              "schluesselGesamt", "bezeichnung"));
                         })
            .value_or(std::string());
    }
    /// The court of a land-register district, "" when none is found: the court's key from the
    /// district, its name from the court list, else the office of that key (a court is an office
    /// in the data: AX_Dienststelle holds "Wittlich" under the court's key).
    std::string Amtsgericht(std::string_view bezirk) {
        return Gepuffert(m_gerichte, std::string(bezirk),
                         [this](const std::string& b) -> std::optional<std::string> {
                             const std::string gehörtZu = m_suche.SuchWert(
                                 b, "AX_Buchungsblattbezirk", "schluessel", "gehoertZu");
                             if (gehörtZu == "-1")
                                 return std::nullopt;
                             const std::string schlüssel = AmtsgerichtSchlüssel(gehörtZu);
                             if (schlüssel.empty())
                                 return std::nullopt;
                             std::string name =
                                 KonfigAuswahl(schlüssel, "1", "2", "=", m_amtsgerichte);
                             if (!name.empty())
                                 return Gekürzt(name);
                             return Gefunden(m_suche.SuchWert(schlüssel, "AX_Dienststelle",
                                                              "schluesselGesamt", "bezeichnung"));
                         })
            .value_or(std::string());
    }

private:
    using Puffer = std::unordered_map<std::string, std::optional<std::string>>;
    // Keys are municipalities and districts: a few thousand at most in a whole Land. The bound
    // only guards against a table full of garbage keys.
    static constexpr std::size_t MaxPuffer = 20000;

    static std::string Gekürzt(std::string_view text) {
        return std::string(Utf8Anfang(text, MaxTextlänge));
    }
    static std::optional<std::string> Gefunden(const std::string& wert) {
        if (wert == "-1")
            return std::nullopt;
        return Gekürzt(wert);
    }
    template <class Suche>
    static const std::optional<std::string>& Gepuffert(Puffer& puffer, std::string schlüssel,
                                                       Suche suche) {
        if (auto it = puffer.find(schlüssel); it != puffer.end())
            return it->second;
        if (puffer.size() >= MaxPuffer)
            puffer.clear();
        auto wert = suche(schlüssel);
        return puffer.emplace(std::move(schlüssel), std::move(wert)).first->second;
    }

    Suchwerte m_suche;
    std::string_view m_amtsgerichte;
    Puffer m_landkreise;
    Puffer m_länder;
    Puffer m_dienststellen;
    Puffer m_gerichte;
};

/// The indexes the lookups seek by; made when missing. A missing table or column is normal (an
/// extract without counties): nothing is made, and the lookup finds nothing.
void SuchindizesAnlegen(Datenbank& db) {
    constexpr std::pair<std::string_view, std::string_view> indizes[] = {
        {"AX_KreisRegion", "schluessel"},        {"AX_KreisRegion", "schluesselGesamt"},
        {"AX_Bundesland", "schluessel"},         {"AX_Bundesland", "schluesselGesamt"},
        {"AX_Dienststelle", "schluesselGesamt"}, {"AX_Buchungsblattbezirk", "schluessel"},
    };
    for (const auto& [tabelle, spalte] : indizes)
        if (DAO_FeldVorhanden(db, tabelle, spalte) && !DAO_IndexVorhanden(db, tabelle, spalte))
            DAO_IndexAnlegen(db, tabelle, spalte, false, false);
}

/// A row of Alkis and its place in the walk.
struct Platz {
    std::int64_t zeile;    ///< rowid
    std::int64_t nummer;   ///< running number, from 1
    std::int64_t position; ///< owner's position within the parcel, from 1
};

} // namespace

// ---- Per-row forms --------------------------------------------------------------------------

std::string MitNullen(std::int64_t zahl, int stellen) {
    const bool negativ = zahl < 0;
    std::string ziffern = std::to_string(zahl);
    if (negativ)
        ziffern.erase(0, 1);
    if (ziffern.size() < static_cast<std::size_t>(std::max(stellen, 0)))
        ziffern.insert(0, static_cast<std::size_t>(stellen) - ziffern.size(), '0');
    return negativ ? "-" + ziffern : ziffern;
}

std::string DatumUmkehren(std::string_view datum) {
    if (datum.find('-') == std::string_view::npos)
        return std::string(datum);
    const auto teile = Teilen(datum, '-');
    std::string aus;
    for (auto it = teile.rbegin(); it != teile.rend(); ++it) {
        if (it != teile.rbegin())
            aus += '.';
        aus += *it;
    }
    return aus;
}

Nutzungstexte NutzungOrdnen(std::string_view nutzungTatsächlich, std::string_view nutzungsart,
                            bool ohneAx) {
    const auto tatsächlich = Teilen(nutzungTatsächlich, ';');
    const auto arten = Teilen(nutzungsart, ';');
    Nutzungstexte aus;
    for (std::size_t i = 0; i < tatsächlich.size(); ++i) {
        const std::string_view t = JetTrim(tatsächlich[i]);
        std::string_view a;
        std::string_view b;
        if (i < arten.size()) {
            const auto wörter = Wörter(arten[i]);
            if (!wörter.empty())
                a = wörter[0];
            if (wörter.size() > 1)
                b = wörter[1];
        }
        if (i > 0) {
            aus.nutzungTatsächlich += "; ";
            aus.nutzungsart += "; ";
        }
        if (!ohneAx)
            aus.nutzungTatsächlich.append(a).append("/");
        aus.nutzungTatsächlich.append(t);
        aus.nutzungsart.append(a).append(" (").append(t).append(")=").append(b);
    }
    aus.nutzungsart = Ersetzen(aus.nutzungsart, "AX_", "");
    return aus;
}

std::string KreisSchlüssel(std::string_view gemeindeschlüssel) {
    return std::string(Utf8Anfang(gemeindeschlüssel, 5));
}

std::string LandSchlüssel(std::string_view gemeindeschlüssel) {
    return std::string(Utf8Anfang(gemeindeschlüssel, 2));
}

std::string DienststellenSchlüssel(std::string_view gemeindeschlüssel) {
    std::string schlüssel(Mitte(gemeindeschlüssel, 1, 2));
    schlüssel.append(Mitte(gemeindeschlüssel, 4, 2)).append("00");
    return schlüssel;
}

std::string AmtsgerichtSchlüssel(std::string_view gehörtZu) { return Ersetzen(gehörtZu, " ", ""); }

std::string FlurstückAusKennzeichen(std::string_view kennzeichen) {
    const std::string_view nenner = Mitte(kennzeichen, 15, 4);
    std::string aus(Mitte(kennzeichen, 10, 5));
    aus += '/';
    aus += ValIstNull(nenner) ? std::string_view("0000") : nenner;
    return aus;
}

std::string FkzOriginal(std::string_view kennzeichen) {
    if (Mitte(kennzeichen, 15, 4) == "0000")
        return std::string(Utf8Anfang(kennzeichen, 14)) + "______";
    return std::string(Utf8Anfang(kennzeichen, 18)) + "__";
}

std::string FlächeFormat(std::string_view fläche) {
    const std::string_view zahl = JetTrim(fläche);
    std::optional<std::string> text = ZweiStellenDezimal(zahl);
    if (!text) {
        // Other forms of a number ("4.9171E4"): through the binary value.
        const auto wert = ZahlAusText(zahl);
        if (!wert)
            return std::string(fläche);
        std::array<char, 400> puffer{};
        const auto [ende, fehler] =
            std::to_chars(puffer.data(), puffer.data() + puffer.size(),
                          std::round(*wert * 100) / 100, std::chars_format::fixed, 2);
        if (fehler != std::errc())
            return std::string(fläche);
        text = ZweiStellenDezimal(std::string_view(puffer.data(), ende));
        if (!text)
            return std::string(fläche);
    }
    // At least 7 digits in front of the point.
    const bool negativ = text->starts_with('-');
    const std::size_t ganzeStellen = text->find('.') - (negativ ? 1 : 0);
    if (ganzeStellen < 7)
        text->insert(negativ ? 1 : 0, 7 - ganzeStellen, '0');
    return *text;
}

std::string NameZusammensetzen(std::string_view nachname, std::string_view vorname) {
    std::string name(nachname);
    if (!IstBlank(vorname))
        name.append(", ").append(vorname);
    return name;
}

std::string NamenszusatzMitGeb(std::string_view zusatz) {
    if (IstBlank(zusatz))
        return std::string(zusatz);
    return "geb. " + std::string(JetTrim(zusatz));
}

std::string MitLeerzeichen(std::string_view vorn, std::string_view hinten) {
    std::string text(vorn);
    text.append(" ").append(hinten);
    return std::string(JetTrim(text));
}

std::string AnteilGrundstück(std::string_view anteil) {
    const auto wörter = Wörter(anteil);
    if (wörter.size() != 2)
        return std::string(anteil);
    const auto zähler = ZahlAusText(wörter[0]);
    const auto nenner = ZahlAusText(wörter[1]);
    if (!zähler || !nenner)
        return std::string(anteil);
    return KoordinateText(*zähler) + "/" + KoordinateText(*nenner);
}

std::string AnteilSondereigentum(std::string_view zähler, std::string_view nenner) {
    if (IstBlank(zähler))
        return {};
    std::string text(JetTrim(zähler));
    if (!IstBlank(nenner))
        text.append("/").append(JetTrim(nenner));
    return text;
}

std::string KoordinateText(double wert) {
    std::array<char, 400> puffer{};
    const auto [ende, fehler] = std::to_chars(puffer.data(), puffer.data() + puffer.size(),
                                              wert + 0.0, std::chars_format::fixed);
    if (fehler != std::errc())
        return "0";
    std::string text(puffer.data(), ende);
    if (text == "-0")
        text = "0";
    return text;
}

Bezugssystem BezugssystemAusSystemwert(std::string_view systemWert) {
    const auto trenner = systemWert.find('_');
    if (trenner == std::string_view::npos)
        return {std::string(systemWert), {}};
    return {std::string(systemWert.substr(0, trenner)),
            std::string(systemWert.substr(trenner + 1))};
}

// ---- The pass -------------------------------------------------------------------------------

namespace {

/// The columns of the pass that the table has (a user's own mapping script may leave some out).
struct Ordnungsspalten {
    std::array<std::optional<std::string>, SpaltenAnzahl> name;
    std::optional<std::string> umring;

    bool Hat(Sp s) const { return name[s].has_value(); }
    bool HatAlle(std::initializer_list<Sp> benötigt) const {
        return std::all_of(benötigt.begin(), benötigt.end(), [this](Sp s) { return Hat(s); });
    }
};

Ordnungsspalten SpaltenDerTabelle(Datenbank& db) {
    const std::vector<std::string> vorhandene = db.Spaltennamen(Tabelle);
    Ordnungsspalten spalten;
    for (std::size_t s = 0; s < SpaltenAnzahl; ++s)
        spalten.name[s] = SpalteFinden(vorhandene, Spaltenarten[s].name);
    spalten.umring = SpalteFinden(vorhandene, UmringSpalte);
    return spalten;
}

/// The walk. Its order decides only the running number and the owner's position, and the
/// protocol lists the rows in it; so the order is read first, with the numbers and the list
/// lines, and the rows are then edited in the order they are stored. Reading and rewriting
/// wide rows (rings of several KB) in storage order keeps the file access sequential; in the
/// walk's order it jumps through the whole file. It also keeps the rule that a table is not
/// updated while a SELECT over it is being stepped. Rows that tie keep the order they were
/// made in. The result is sorted by rowid.
std::vector<Platz> PlätzeInLaufordnung(Datenbank& db, const Ordnungsspalten& spalten,
                                       NasProtokoll& protokoll) {
    std::vector<Platz> plätze;
    std::string reihenfolge;
    for (Sp s : {Fkz, Grundbuchblatt, BVNR, Buchungsart, Namensnummer})
        if (spalten.Hat(s))
            reihenfolge += Bezeichner(*spalten.name[s]) + ", ";
    const std::string kennzeichen = spalten.Hat(Fkz) ? Bezeichner(*spalten.name[Fkz]) : "''";
    auto abfrage = db.VorbereitenNativ("SELECT rowid, " + kennzeichen + " FROM " +
                                       Bezeichner(Tabelle) + " ORDER BY " + reihenfolge + "rowid");
    std::string voriges;
    std::int64_t position = 0;
    while (abfrage.Schritt()) {
        const std::int64_t nummer = static_cast<std::int64_t>(plätze.size()) + 1;
        const std::string_view fkz = abfrage.Text(1);
        position = (nummer > 1 && fkz == voriges) ? position + 1 : 1;
        voriges.assign(fkz);
        plätze.push_back({abfrage.Ganzzahl(0), nummer, position});
        protokoll.Liste(", Zeile ALKIS: " + MitNullen(nummer, 5) + ",FKZ: " + voriges);
    }
    std::sort(plätze.begin(), plätze.end(),
              [](const Platz& a, const Platz& b) { return a.zeile < b.zeile; });
    return plätze;
}

/// One statement reads a row's cells by rowid, one writes the edited cells back; the ring,
/// which may be long, is read only for a row without coordinates.
class Zeilenzugriff {
public:
    Zeilenzugriff(Datenbank& db, const Ordnungsspalten& spalten, bool mitKoordinaten) {
        std::string leseListe;
        std::string schreibListe;
        for (std::size_t i = 0; i < SpaltenAnzahl; ++i) {
            const Sp s = static_cast<Sp>(i);
            if (!spalten.Hat(s))
                continue;
            leseListe += (m_gelesen.empty() ? "" : ", ") + Bezeichner(*spalten.name[s]);
            m_gelesen.push_back(s);
            if (Spaltenarten[s].geschrieben) {
                schreibListe +=
                    (m_geschrieben.empty() ? "" : ", ") + Bezeichner(*spalten.name[s]) + " = ?";
                m_geschrieben.push_back(s);
            }
        }
        m_lesen.emplace(db.VorbereitenNativ("SELECT " + leseListe + " FROM " +
                                            Bezeichner(Tabelle) + " WHERE rowid = ?"));
        if (!m_geschrieben.empty())
            m_schreiben.emplace(db.VorbereitenNativ("UPDATE " + Bezeichner(Tabelle) + " SET " +
                                                    schreibListe + " WHERE rowid = ?"));
        if (mitKoordinaten)
            m_umringLesen.emplace(db.VorbereitenNativ("SELECT " + Bezeichner(*spalten.umring) +
                                                      " FROM " + Bezeichner(Tabelle) +
                                                      " WHERE rowid = ?"));
    }

    /// The cells of the row into `z`, unchanged; false when the row is not there.
    bool Lesen(std::int64_t zeile, std::array<Zelle, SpaltenAnzahl>& z) {
        m_lesen->Zurücksetzen();
        m_lesen->Binde(zeile);
        if (!m_lesen->Schritt())
            return false;
        for (std::size_t i = 0; i < m_gelesen.size(); ++i) {
            Zelle& zelle = z[m_gelesen[i]];
            const int spalte = static_cast<int>(i);
            zelle.null = m_lesen->IstNull(spalte);
            zelle.text.assign(m_lesen->Text(spalte));
            zelle.geändert = false;
        }
        m_lesen->Zurücksetzen();
        return true;
    }

    /// The rings of the row joined with "|"; nullopt when it can't be read.
    std::optional<std::string> Umring(std::int64_t zeile) {
        m_umringLesen->Zurücksetzen();
        m_umringLesen->Binde(zeile);
        std::optional<std::string> umring;
        if (m_umringLesen->Schritt())
            umring.emplace(m_umringLesen->Text(0));
        m_umringLesen->Zurücksetzen();
        return umring;
    }

    /// Writes the written columns back when one of them was changed.
    void Zurückschreiben(std::int64_t zeile, const std::array<Zelle, SpaltenAnzahl>& z) {
        if (!m_schreiben || std::none_of(m_geschrieben.begin(), m_geschrieben.end(),
                                         [&z](Sp s) { return z[s].geändert; }))
            return;
        m_schreiben->Zurücksetzen();
        for (Sp s : m_geschrieben) {
            if (z[s].null)
                m_schreiben->Binde(nullptr);
            else
                m_schreiben->Binde(std::string_view(z[s].text));
        }
        m_schreiben->Binde(zeile);
        m_schreiben->Schritt();
        m_schreiben->Zurücksetzen();
    }

private:
    std::vector<Sp> m_gelesen;
    std::vector<Sp> m_geschrieben;
    std::optional<Anweisung> m_lesen;
    std::optional<Anweisung> m_schreiben;
    std::optional<Anweisung> m_umringLesen;
};

/// What every row gets alike: which rules apply, decided once from the columns and the options.
struct Ordnungsregeln {
    bool nutzung, klassifizierung, landkreis, dienststelle, amtsgericht, land, name, straße, ort,
        sondereigentum, flächendifferenz, ohnePrüfung, mitKoordinaten, mitBezugssystem;
    bool nutzungOhneAx;
    Bezugssystem bezugssystem;
};

Ordnungsregeln RegelnFestlegen(const Ordnungsspalten& spalten, const OrdnenUmgebung& umgebung) {
    const NasOptionen& o = umgebung.optionen;
    Ordnungsregeln r{};
    r.nutzung = spalten.HatAlle({NutzungTatsächlich, Nutzungsart});
    r.klassifizierung = spalten.HatAlle({AngabenKlassifizierung, Bodenart});
    r.landkreis = spalten.HatAlle({Landkreis, Gemeindeschlüssel});
    r.dienststelle = spalten.HatAlle({Dienststelle, Gemeindeschlüssel});
    r.amtsgericht = spalten.HatAlle({Amtsgericht, Buchungsblattbezirk});
    r.land = spalten.HatAlle({Land, Gemeindeschlüssel});
    r.name = spalten.HatAlle({Name, Nachname, Vorname});
    r.straße = spalten.HatAlle({Straße, Strassenname, Hausnummer});
    r.ort = spalten.HatAlle({Ort, PLZ});
    r.sondereigentum = spalten.HatAlle({AnteilSonder, AnteilZähler, AnteilNenner});
    r.flächendifferenz = !o.mitFlächenAnpassung;
    r.ohnePrüfung =
        !(o.mitNaBerechnung || o.quickNaBerechnung || o.quickBSBerechnung || o.quickBROBBerechnung);
    r.mitKoordinaten = spalten.HatAlle({Rechtswert, Hochwert}) && spalten.umring.has_value();
    r.mitBezugssystem = !umgebung.systemWert.empty();
    r.nutzungOhneAx = o.nutzungOhneAx;
    r.bezugssystem = BezugssystemAusSystemwert(umgebung.systemWert);
    return r;
}

using Zellen = std::array<Zelle, SpaltenAnzahl>;

/// Running number, the owner's place among the rows of the parcel, and the date of birth.
void NummerPositionUndGeburtsdatum(Zellen& z, const Ordnungsspalten& spalten, const Platz& platz) {
    if (spalten.Hat(IDlfdNr))
        Setzen(z[IDlfdNr], MitNullen(platz.nummer, 4));
    if (spalten.Hat(Eigentümerposition))
        Setzen(z[Eigentümerposition], MitNullen(platz.position, 4));
    if (spalten.Hat(Geburtsdatum) && z[Geburtsdatum].text.find('-') != std::string::npos)
        Setzen(z[Geburtsdatum], DatumUmkehren(z[Geburtsdatum].text));
}

/// Land-use lists, the area difference and the classification.
void NutzungUndKlassifizierung(Zellen& z, const Ordnungsspalten& spalten,
                               const Ordnungsregeln& r) {
    if (r.nutzung && !IstBlank(z[NutzungTatsächlich].text)) {
        const Nutzungstexte texte =
            NutzungOrdnen(z[NutzungTatsächlich].text, z[Nutzungsart].text, r.nutzungOhneAx);
        Setzen(z[NutzungTatsächlich], texte.nutzungTatsächlich);
        Setzen(z[Nutzungsart], texte.nutzungsart);
    }
    if (r.flächendifferenz && spalten.Hat(Flächendifferenz))
        Setzen(z[Flächendifferenz], "ohne Verteilung");
    if (r.klassifizierung && !z[Bodenart].null)
        Setzen(z[AngabenKlassifizierung], z[Bodenart].text);
}

/// County, office, court and Land by key; the sheet district in its compact form.
void BehördenNachSchlüssel(Zellen& z, const Ordnungsspalten& spalten, const Ordnungsregeln& r,
                           Schlüsselsuche& suche) {
    if (r.landkreis)
        if (const auto& wert = suche.Landkreis(z[Gemeindeschlüssel].text))
            Setzen(z[Landkreis], *wert);
    if (r.dienststelle) {
        // Where no office has the municipality's key, the office of the Gemarkung.
        std::string amt = suche.Dienststelle(z[Gemeindeschlüssel].text);
        if (amt.empty() && spalten.Hat(Katasteramt))
            amt = Utf8Anfang(z[Katasteramt].text, MaxTextlänge);
        Setzen(z[Dienststelle], amt);
    }
    if (r.amtsgericht)
        Setzen(z[Amtsgericht], suche.Amtsgericht(z[Buchungsblattbezirk].text));
    // The district is sought in its blank-joined form ("07 2566") and shown compact.
    if (spalten.Hat(Buchungsblattbezirk) && !z[Buchungsblattbezirk].null)
        Setzen(z[Buchungsblattbezirk], Ersetzen(z[Buchungsblattbezirk].text, " ", ""));
    if (r.land)
        if (const auto& wert = suche.Land(z[Gemeindeschlüssel].text))
            Setzen(z[Land], *wert);
}

/// The parcel number and the key in NAS's form, and the area.
void FlurstückUndFläche(Zellen& z, const Ordnungsspalten& spalten) {
    if (spalten.Hat(Fkz)) {
        const std::string_view kennzeichen = z[Fkz].text;
        if (spalten.Hat(Flurstück))
            Setzen(z[Flurstück], FlurstückAusKennzeichen(kennzeichen));
        if (spalten.Hat(FkzOrig))
            Setzen(z[FkzOrig], FkzOriginal(kennzeichen));
    }
    if (spalten.Hat(Fläche) && !z[Fläche].null)
        Setzen(z[Fläche], FlächeFormat(z[Fläche].text));
}

/// Name, name suffix, street, application number, place, shares and the check note.
void PersonAnschriftUndAnteile(Zellen& z, const Ordnungsspalten& spalten, const Ordnungsregeln& r,
                               const std::string& antragsnummer) {
    if (r.name)
        Setzen(z[Name], NameZusammensetzen(z[Nachname].text, z[Vorname].text));
    if (spalten.Hat(Namenszusatz) && !IstBlank(z[Namenszusatz].text))
        Setzen(z[Namenszusatz], NamenszusatzMitGeb(z[Namenszusatz].text));
    if (r.straße)
        Setzen(z[Straße], MitLeerzeichen(z[Strassenname].text, z[Hausnummer].text));
    if (spalten.Hat(AntragsNr))
        Setzen(z[AntragsNr], antragsnummer);
    if (r.ort)
        Setzen(z[Ort], MitLeerzeichen(z[PLZ].text, z[Ort].text));
    if (spalten.Hat(AnteilGrund) && !z[AnteilGrund].null)
        Setzen(z[AnteilGrund], AnteilGrundstück(z[AnteilGrund].text));
    if (r.sondereigentum)
        Setzen(z[AnteilSonder], AnteilSondereigentum(z[AnteilZähler].text, z[AnteilNenner].text));
    if (r.ohnePrüfung && spalten.Hat(SonstigesBOV))
        Setzen(z[SonstigesBOV], "... ohne Prüfung");
}

/// A parcel without label point gets the centre of its ring's box; then the reference system.
void KoordinatenUndBezugssystem(Zellen& z, const Ordnungsspalten& spalten,
                                const Ordnungsregeln& r, Zeilenzugriff& zugriff,
                                std::int64_t zeile) {
    if (r.mitKoordinaten && IstBlank(z[Rechtswert].text)) {
        if (std::optional<std::string> umring = zugriff.Umring(zeile)) {
            // Rings are joined with "|"; the box takes the points of all of them.
            std::replace(umring->begin(), umring->end(), '|', ';');
            if (const auto mitte = BoxMitte(*umring)) {
                Setzen(z[Rechtswert], KoordinateText(mitte->x));
                Setzen(z[Hochwert], KoordinateText(mitte->y));
            }
        }
    }
    if (r.mitBezugssystem) {
        if (spalten.Hat(MKZ))
            Setzen(z[MKZ], r.bezugssystem.mkz);
        if (spalten.Hat(EPSG))
            Setzen(z[EPSG], r.bezugssystem.epsg);
    }
}

} // namespace

std::int64_t DatenOrdnen(Datenbank& db, const OrdnenUmgebung& umgebung, NasProtokoll& protokoll,
                         Oberfläche& ui) {
    if (!DAO_TabelleVorhanden(db, Tabelle))
        return 0;
    const Ordnungsspalten spalten = SpaltenDerTabelle(db);
    const std::vector<Platz> plätze = PlätzeInLaufordnung(db, spalten, protokoll);
    if (plätze.empty())
        return 0;
    SuchindizesAnlegen(db);

    std::optional<Transaktion> transaktion;
    if (!db.TransaktionOffen())
        transaktion.emplace(db);
    const Ordnungsregeln regeln = RegelnFestlegen(spalten, umgebung);
    Zeilenzugriff zugriff(db, spalten, regeln.mitKoordinaten);
    Schlüsselsuche suche(db, umgebung.amtsgerichte);
    Zellen z;
    std::int64_t bearbeitet = 0;
    for (const Platz& platz : plätze) {
        if (!zugriff.Lesen(platz.zeile, z))
            continue; // cannot happen: the pass deletes no rows
        if (++bearbeitet % 1000 == 0)
            ui.Status(1, "Daten ordnen, Zeile: " + std::to_string(bearbeitet));
        NummerPositionUndGeburtsdatum(z, spalten, platz);
        NutzungUndKlassifizierung(z, spalten, regeln);
        BehördenNachSchlüssel(z, spalten, regeln, suche);
        FlurstückUndFläche(z, spalten);
        PersonAnschriftUndAnteile(z, spalten, regeln, umgebung.antragsnummer);
        KoordinatenUndBezugssystem(z, spalten, regeln, zugriff, platz.zeile);
        zugriff.Zurückschreiben(platz.zeile, z);
    }
    if (transaktion)
        transaktion->Bestätigen();
    return static_cast<std::int64_t>(plätze.size());
}

} // namespace flurix::nas
