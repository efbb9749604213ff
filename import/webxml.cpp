#include "import/webxml.hpp"

#include "core/cp1252.hpp"
#include "core/einstellungen.hpp"
#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "import/datenladen.hpp"
#include "import/wldge_satz.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <span>
#include <unordered_map>

namespace flurix::import {
namespace {

// One tag of a line: `<name attributes>text</name>`, `<name/>` or `</name>`.
struct Tag {
    std::string_view name;
    std::string_view attribute;
    std::string text;
    bool schließend = false;
};

// The five predefined entities and character references; anything else stays as it stands.
std::string Entschlüsseln(std::string_view roh) {
    std::string text;
    text.reserve(roh.size());
    for (std::size_t i = 0; i < roh.size(); ++i) {
        const auto ende = roh[i] == '&' ? roh.find(';', i) : std::string_view::npos;
        if (ende == std::string_view::npos || ende - i > 10) {
            text += roh[i];
            continue;
        }
        const std::string_view name = roh.substr(i + 1, ende - i - 1);
        static const std::pair<std::string_view, char> benannt[] = {
            {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
        bool ersetzt = false;
        for (const auto& [n, zeichen] : benannt)
            if (name == n)
                text += zeichen, ersetzt = true;
        if (!ersetzt && name.starts_with('#') && name.size() > 1) {
            const bool hex = name[1] == 'x' || name[1] == 'X';
            const std::string ziffern(name.substr(hex ? 2 : 1));
            char* rest = nullptr;
            const unsigned long code = std::strtoul(ziffern.c_str(), &rest, hex ? 16 : 10);
            if (!ziffern.empty() && rest && *rest == '\0' && code > 0 && code < 0x110000) {
                Utf8Anhängen(text, static_cast<char32_t>(code));
                ersetzt = true;
            }
        }
        if (ersetzt)
            i = ende;
        else
            text += roh[i];
    }
    return text;
}

// The tag a line starts with; nothing for a line that holds no whole tag (a tag broken over two
// lines, text, a comment or a declaration).
std::optional<Tag> TagLesen(std::string_view zeile) {
    zeile = TrimmeLeerzeichen(zeile);
    while (!zeile.empty() && (zeile.front() == '\t' || zeile.back() == '\t' || zeile.back() == '\r'))
        zeile = TrimmeLeerzeichen(zeile.front() == '\t' ? zeile.substr(1) : zeile.substr(0, zeile.size() - 1));
    if (zeile.size() < 3 || zeile[0] != '<' || zeile[1] == '?' || zeile[1] == '!')
        return std::nullopt;
    Tag tag;
    std::size_t i = 1;
    if (zeile[1] == '/') {
        tag.schließend = true;
        i = 2;
    }
    const std::size_t nameEnde = zeile.find_first_of(" \t/>", i);
    if (nameEnde == std::string_view::npos || nameEnde == i)
        return std::nullopt;
    tag.name = zeile.substr(i, nameEnde - i);
    // The end of the tag, outside quotes.
    char quote = 0;
    std::size_t ende = std::string_view::npos;
    for (std::size_t k = nameEnde; k < zeile.size(); ++k) {
        const char c = zeile[k];
        if (quote) {
            if (c == quote)
                quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '>') {
            ende = k;
            break;
        }
    }
    if (ende == std::string_view::npos)
        return std::nullopt; // broken over two lines: not seen
    tag.attribute = zeile.substr(nameEnde, ende - nameEnde);
    if (!tag.schließend && !tag.attribute.ends_with('/')) {
        const std::string_view rest = zeile.substr(ende + 1);
        tag.text = std::string(TrimmeLeerzeichen(Entschlüsseln(rest.substr(0, rest.find('<')))));
    }
    return tag;
}

// The value of an attribute by its exact name; "" when the tag has none.
std::string Attribut(const Tag& tag, std::string_view name) {
    std::string_view rest = tag.attribute;
    while (!rest.empty()) {
        const auto gleich = rest.find('=');
        if (gleich == std::string_view::npos)
            return {};
        std::string_view n = rest.substr(0, gleich);
        while (!n.empty() && (n.front() == ' ' || n.front() == '\t'))
            n.remove_prefix(1);
        while (!n.empty() && (n.back() == ' ' || n.back() == '\t'))
            n.remove_suffix(1);
        std::size_t k = gleich + 1;
        while (k < rest.size() && (rest[k] == ' ' || rest[k] == '\t'))
            ++k;
        if (k >= rest.size() || (rest[k] != '"' && rest[k] != '\''))
            return {};
        const auto schluss = rest.find(rest[k], k + 1);
        if (schluss == std::string_view::npos)
            return {};
        if (n == name)
            return Entschlüsseln(rest.substr(k + 1, schluss - k - 1));
        rest = rest.substr(schluss + 1);
    }
    return {};
}

bool NameEndetMit(std::string_view name, std::string_view lokal) {
    return name == lokal || (name.ends_with(lokal) && name.size() > lokal.size() &&
                             name[name.size() - lokal.size() - 1] == ':');
}

// A number padded with zeros to `stellen` digits ("000000000"); "" stays "", a text that is no
// number stays as it stands.
std::string MitNullen(std::string_view text, int stellen) {
    const std::string_view t = TrimmeLeerzeichen(text);
    if (t.empty() || t.find_first_not_of("0123456789.+-") != std::string_view::npos)
        return std::string(t);
    std::string zahl = std::to_string(std::llround(ZahlLesen(t)));
    if (static_cast<int>(zahl.size()) < stellen)
        zahl.insert(0, static_cast<std::size_t>(stellen) - zahl.size(), '0');
    return zahl;
}

std::string Ganz(double wert) { return std::to_string(std::llround(wert)); }

void Liste(std::string& feld, std::string_view text, std::string_view fuge = "; ") {
    if (!feld.empty())
        feld.append(fuge);
    feld.append(text);
}

enum class Abschnitt {
    Keiner, Stelle, Verwaltung, Basis, Lage, Nutzung, Klassifizierung, Ausführend, Hinweise, Historie,
};

// Keys of the values that belong to a Bestand or to one owner: cleared when the next one starts.
constexpr std::string_view BestandsFelder[] = {
    "BVNR", "Buchungsart", "GB-Aktualität", "F-Anteil", "Beschreibung Sondereigentum",
    "Grundbuchblatt", "Eigentümerzusatz", "Amtsgerichtsschlüssel", "Amtsgericht", "Grundbuchbezirk"};
constexpr std::string_view EigentümerFelder[] = {"Eigentümerposition", "Anteilsverhältnis", "Name",
                                                 "Namenszusatz", "Straße", "Ort"};

std::size_t XmlIndex(std::string_view schlüssel) {
    static const auto index = [] {
        std::unordered_map<std::string_view, std::size_t> m;
        for (std::size_t i = 0; i < XMLSpalten().size(); ++i)
            m.emplace(XMLSpalten()[i], i);
        return m;
    }();
    return index.at(schlüssel);
}

// One extract at a time: the values of the current extract, Bestand and owner.
class AuszugLeser {
public:
    AuszugLeser(const ImportOptionen& optionen, Kataster& kataster)
        : m_optionen(optionen), m_kataster(kataster), m_werte(XMLSpalten().size()) {
        for (std::size_t i = 0; i < XMLSpalten().size(); ++i)
            m_spalte.push_back(*m_kataster.SpaltenIndex(XMLSpalten()[i]));
        m_zellen.resize(m_kataster.Spaltenzahl());
    }

    // Reads the extracts of a text; returns the rows added.
    long long Lesen(std::string_view text) {
        std::vector<std::string_view> auszug;
        bool offen = false;
        for (std::string_view zeile : Teilen(text, '\n')) {
            const auto tag = TagLesen(zeile);
            if (tag && !tag->schließend && tag->name == "auszug") {
                if (offen)
                    Auszug(auszug);
                auszug.clear();
                offen = true;
            }
            if (offen)
                auszug.push_back(zeile);
            if (tag && tag->schließend && tag->name == "auszug" && offen) {
                Auszug(auszug);
                auszug.clear();
                offen = false;
            }
        }
        if (offen)
            Auszug(auszug); // a truncated file still gives the rows of what it holds
        return m_zeilen;
    }

private:
    std::string& W(std::string_view schlüssel) { return m_werte[XmlIndex(schlüssel)]; }

    // Takes the values of the current extract and owner and adds one row to the table.
    void XMLDatenSchreiben() {
        std::fill(m_zellen.begin(), m_zellen.end(), std::string_view());
        for (std::size_t i = 0; i < m_werte.size(); ++i)
            m_zellen[m_spalte[i]] = m_werte[i];
        m_kataster.ZeileHinzufügen(m_zellen);
        if (!m_epsg.empty()) {
            // The frame of the coordinates has a column of its own, made when a file names one.
            const std::size_t epsg = m_kataster.SpalteHinzufügen(KatasterSpalte("EPSG", "EPSG", 600));
            m_kataster.ZelleSetzen(m_kataster.Zeilenzahl() - 1, epsg, m_epsg);
        }
        ++m_zeilen;
        ++m_zeilenImAuszug;
    }

    void Auszug(const std::vector<std::string_view>& zeilen) {
        std::fill(m_werte.begin(), m_werte.end(), std::string());
        m_epsg.clear();
        m_zeilenImAuszug = 0;
        // First all sections of the parcel, then the Bestände.
        bool inBeständen = false;
        for (std::string_view zeile : zeilen) {
            const auto tag = TagLesen(zeile);
            if (!tag)
                continue;
            if (tag->name == "bestaende")
                inBeständen = !tag->schließend;
            else if (!inBeständen)
                Flurstück(*tag);
        }
        if (m_nachfolger)
            Liste(W("Bezeichnung_Hinweis_Flurstück"), "Flurstück historisch?");
        inBeständen = false;
        bool bestaendeGesehen = false;
        for (std::string_view zeile : zeilen) {
            const auto tag = TagLesen(zeile);
            if (!tag)
                continue;
            if (tag->name == "bestaende") {
                if (!tag->schließend) {
                    inBeständen = bestaendeGesehen = true;
                    m_bestände = 0;
                } else if (inBeständen) {
                    inBeständen = false;
                    if (m_bestände == 0)
                        XMLDatenSchreiben(); // the parcel has a row without a Bestand
                }
            } else if (inBeständen) {
                Bestand(*tag);
            }
        }
        if (m_zeilenImAuszug == 0)
            XMLDatenSchreiben(); // no Bestände section, or a file cut before its end
    }

    void Flurstück(const Tag& tag) {
        static const std::pair<std::string_view, Abschnitt> abschnitte[] = {
            {"zustaendigeStelle", Abschnitt::Stelle}, {"verwaltungsangaben", Abschnitt::Verwaltung},
            {"basisangaben", Abschnitt::Basis},       {"lage", Abschnitt::Lage},
            {"nutzungsarten", Abschnitt::Nutzung},    {"klassifizierung", Abschnitt::Klassifizierung},
            {"ausfuehrendeStelle", Abschnitt::Ausführend}, {"hinweise", Abschnitt::Hinweise},
            {"historie", Abschnitt::Historie}};
        for (const auto& [name, abschnitt] : abschnitte)
            if (tag.name == name) {
                m_abschnitt = tag.schließend ? Abschnitt::Keiner : abschnitt;
                return;
            }
        if (tag.schließend)
            return;
        const std::string_view n = tag.name;
        if (n == "auszug") {
            m_nachfolger = false;
            W("Auszug Format") = Attribut(tag, "format");
            W("Aktualitätsnummer") = Attribut(tag, "aktualitaet");
            Kennzeichen(Attribut(tag, "kennzeichen"));
            return;
        }
        AbschnittsTag(tag);
    }

    // An opening tag inside one of the sections of a parcel.
    void AbschnittsTag(const Tag& tag) {
        const std::string_view n = tag.name;
        switch (m_abschnitt) {
        case Abschnitt::Stelle:
            // Many offices write their name in both tags; it is shown once.
            if ((n == "amt" || n == "stelle") && tag.text != W("Katasteramt"))
                Liste(W("Katasteramt"), tag.text, " ");
            else if (n == "strasse")
                m_amtStraße = tag.text;
            else if (n == "ort")
                m_amtsanschrift.push_back(m_amtStraße + ", " + tag.text);
            break;
        case Abschnitt::Verwaltung:
            if (n == "kreis") {
                W("Landkreis") = tag.text;
            } else if (n == "gemeindezugehoerigkeit") {
                W("Gemeinde") = tag.text;
                W("Gemeindeschlüssel") = Attribut(tag, "id");
            } else if (n == "gemarkung") {
                W("Gemarkung") = tag.text;
                W("Gemarkungsschlüssel") = Attribut(tag, "id");
            } else if (n == "finanzamt") {
                W("Finanzamt") = tag.text;
                W("Finanzamtsschlüssel") = Attribut(tag, "id");
            }
            break;
        case Abschnitt::Basis:
            if (n == "entstehung")
                W("Entstehung") = tag.text;
            else if (n == "fortfuehrung")
                W("Fortführung") = tag.text;
            else if (n == "liegenschaftskarte")
                W("LiegenschKarte") = tag.text;
            else if (n == "amtlicheFlaeche")
                W("Fläche") = MitNullen(tag.text, 9);
            else if (NameEndetMit(n, "Point"))
                Rahmen(Attribut(tag, "srsName"));
            else if (NameEndetMit(n, "coordinates"))
                Koordinaten(tag.text);
            break;
        case Abschnitt::Lage:
            if (n == "unverschluesselt") {
                Liste(W("Lagebezeichnung"), tag.text);
            } else if (n == "verschluesselt") {
                Liste(W("Straßenschlüssel"), Attribut(tag, "id"));
                Liste(W("Lagebezeichnung"), tag.text);
            }
            break;
        case Abschnitt::Nutzung:
            if (n == "abschnitt") {
                const std::string schlüssel = Attribut(tag, "schluessel");
                const std::string fläche = MitNullen(Attribut(tag, "flaeche"), 7);
                Liste(W("Nutzungsart"), schlüssel + " " + fläche);
                Liste(W("Nutzung_tatsächlich"), tag.text);
                Liste(W("NA_Klassifizierung"), schlüssel);
                Liste(W("NA-Fläche"), fläche);
            }
            break;
        case Abschnitt::Klassifizierung:
            if (n == "klasse")
                Klasse(tag);
            break;
        case Abschnitt::Ausführend:
            if (n == "verfahren" || n.starts_with("verfZei") || n == "namenszeile")
                Liste(W("sonstigesBOV"), tag.text, ", ");
            break;
        case Abschnitt::Hinweise:
            if (n == "hinweis") {
                Liste(W("Schlüssel_Bezeichnung_Hinweis_Flurstück"), Attribut(tag, "schluessel"));
                Liste(W("Bezeichnung_Hinweis_Flurstück"), tag.text);
            }
            break;
        case Abschnitt::Historie:
            if (n == "vorgaengerFlurstueckskennzeichen") {
                Liste(W("Flurstück-Vorgänger"), tag.text);
            } else if (n == "nachfolgerFlurstueckskennzeichen") {
                Liste(W("Flurstück-Nachfolger"), tag.text);
                m_nachfolger = true; // a parcel with a successor has gone down
            }
            break;
        case Abschnitt::Keiner:
            break;
        }
    }

    // The parcel key: Land 2, Gemarkung 4, Flur 3, Zähler 5, Nenner 4, fill 2; "_" fills like "0".
    void Kennzeichen(const std::string& kennzeichen) {
        W("Flurstückskennzeichen") = kennzeichen;
        std::string ziffern = kennzeichen;
        std::replace(ziffern.begin(), ziffern.end(), '_', '0');
        const auto teil = [&](std::size_t von, std::size_t länge) {
            return von < ziffern.size() ? ziffern.substr(von, länge) : std::string();
        };
        W("Flur") = teil(6, 3);
        const std::string zähler = teil(9, 5);
        const std::string nenner = teil(14, 4);
        if (zähler.empty())
            return;
        W("Flurstück-Zähler") = ZahlOhneNullen(zähler);
        const long long n = FeldZahl(nenner);
        W("Flurstück-Nenner") = n ? std::to_string(n) : std::string();
        W("Flurstück") = W("Flurstück-Zähler") + (n ? "/" + std::to_string(n) : std::string());
    }

    void Rahmen(const std::string& srs) {
        for (std::string_view epsg : {"25832", "25833", "25834"})
            if (srs.find("EPSG:" + std::string(epsg)) != std::string::npos)
                m_epsg = epsg;
    }

    void Koordinaten(const std::string& text) {
        const auto trenner = text.find_first_of(", ");
        W("Rechtswert") = std::string(TrimmeLeerzeichen(text.substr(0, trenner)));
        W("Hochwert") = trenner == std::string::npos
                            ? std::string()
                            : std::string(TrimmeLeerzeichen(std::string_view(text).substr(trenner + 1)));
    }

    void Klasse(const Tag& tag) {
        const std::string schlüssel = Attribut(tag, "schluessel");
        const std::string flächeText = Attribut(tag, "flaeche");
        const std::string schätzung = Attribut(tag, "schaetzung");
        const std::string wertzahl = Attribut(tag, "wertzahl");
        Liste(W("Klassifizierung"), schlüssel + " " + MitNullen(flächeText, 7));
        Liste(W("Schlüssel_Klassifizierung"), schlüssel);
        Liste(W("Schätzung"), schätzung.empty() ? " " : schätzung);
        Liste(W("Angaben_Klassifizierung"), tag.text.empty() ? " " : tag.text);
        Liste(W("BZ-AZ-Fläche"), Ganz(ZahlLesen(flächeText)));
        // "Bodenzahl/Ackerzahl"; "-/-" stands for none, which keeps its place as "0".
        const auto strich = wertzahl.find('/');
        const double bz = strich == std::string::npos ? 0 : ZahlLesen(wertzahl.substr(0, strich));
        const double az = strich == std::string::npos ? 0 : ZahlLesen(wertzahl.substr(strich + 1));
        Liste(W("BZ"), Ganz(bz));
        Liste(W("AZ"), Ganz(az));
        Liste(W("EMZ"), Ganz(ZahlLesen(Attribut(tag, "emz"))));
        double summe = 0;
        int anzahl = 0;
        for (std::string_view wert : Teilen(W("AZ"), ';'))
            if (ZahlLesen(wert) > 0)
                summe += ZahlLesen(wert), ++anzahl;
        W("AZ-Mittel") = anzahl ? Ganz(summe / anzahl) : "0";
        double emz = 0;
        for (std::string_view wert : Teilen(W("EMZ"), ';'))
            emz += ZahlLesen(wert);
        W("EMZ-Summe") = Ganz(emz);
    }

    void Leeren(std::span<const std::string_view> felder) {
        for (std::string_view f : felder)
            W(f).clear();
    }

    void Bestand(const Tag& tag) {
        const std::string_view n = tag.name;
        if (n == "bestand") {
            if (!tag.schließend) {
                ++m_bestände;
                m_eigentümer = 0;
                Leeren(BestandsFelder);
                Leeren(EigentümerFelder);
                W("BVNR") = Attribut(tag, "laufendeNummer");
                W("Buchungsart") = Attribut(tag, "buchungsart");
                W("GB-Aktualität") = Attribut(tag, "gbaktualitaet");
                W("F-Anteil") = Attribut(tag, "f_anteil");
                W("Beschreibung Sondereigentum") = Attribut(tag, "beschreibungDesSondereigentums");
                W("Grundbuchblatt") = Attribut(tag, "buchungsblattkennzeichen");
            } else if (m_eigentümer == 0) {
                XMLDatenSchreiben(); // a Bestand without owner still has its row
            }
            return;
        }
        if (n == "eigentuemer") {
            if (!tag.schließend) {
                Leeren(EigentümerFelder);
                W("Eigentümerposition") = Attribut(tag, "nr");
                const std::string anteil = Attribut(tag, "anteil");
                W("Anteilsverhältnis") = anteil.empty() ? std::string() : "Anteil " + anteil;
            } else {
                ++m_eigentümer;
                XMLDatenSchreiben();
            }
            return;
        }
        if (tag.schließend)
            return;
        if (n == "zusatz") {
            W("Eigentümerzusatz") = tag.text;
        } else if (n == "amtsgericht") {
            W("Amtsgerichtsschlüssel") = Attribut(tag, "id");
            W("Amtsgericht") = tag.text;
        } else if (n == "buchungsblattbezirk") {
            W("Grundbuchbezirk") = Attribut(tag, "id");
        } else if (n == "namenszeile") {
            const std::string nr = Attribut(tag, "nr");
            if (nr == "1")
                W("Name") = NameAusStücken(tag.text, m_optionen.nameUmdrehen);
            else if (nr == "2")
                W("Namenszusatz") = tag.text;
            else if (nr == "3")
                W("Straße") = tag.text;
            else if (nr == "4")
                W("Ort") = TextSäubern(tag.text);
        }
    }

public:
    /// "Straße, Ort" of each extract's office, taken over by the caller.
    std::vector<std::string> Amtsanschriften() { return std::move(m_amtsanschrift); }

private:
    std::vector<std::string> m_amtsanschrift;
    const ImportOptionen& m_optionen;
    Kataster& m_kataster;
    std::vector<std::string> m_werte;          // by the index of XMLSpalten()
    std::vector<std::size_t> m_spalte;         // the table column of each value
    std::vector<std::string_view> m_zellen;
    std::string m_epsg;
    std::string m_amtStraße;
    Abschnitt m_abschnitt = Abschnitt::Keiner;
    bool m_nachfolger = false;
    long long m_bestände = 0;
    long long m_eigentümer = 0;
    long long m_zeilen = 0;
    long long m_zeilenImAuszug = 0;
};

// The columns of XMLSpalten() and checkdruck, made on an empty table or added to one that lacks them.
void SpaltenSichern(Kataster& kataster) {
    for (std::string_view schlüssel : XMLSpalten())
        if (!kataster.SpaltenIndex(schlüssel))
            kataster.SpalteHinzufügen(KatalogSpalteFür(schlüssel));
    if (!kataster.SpaltenIndex("checkdruck"))
        kataster.SpalteHinzufügen(KatalogSpalteFür("checkdruck"));
}

bool Gefragt(Oberfläche& ui, std::string text, std::string titel = ProduktTitel) {
    return ui.Frage(Fragestellung{std::move(text), std::move(titel), Knöpfe::JaNein, Antwort::Ja,
                                  Antwort::Ja}) == Antwort::Ja;
}

} // namespace

const std::vector<std::string_view>& XMLSpalten() {
    static const std::vector<std::string_view> spalten = {
        "Auszug Format", "Landkreis", "Katasteramt", "Gemeinde", "Gemeindeschlüssel", "Gemarkung",
        "Gemarkungsschlüssel", "Flur", "Amtsgericht", "Amtsgerichtsschlüssel", "Grundbuchbezirk",
        "Grundbuchblatt", "BVNR", "Buchungsart", "GB-Aktualität", "F-Anteil",
        "Beschreibung Sondereigentum", "Flurstück", "Nutzungsart", "Nutzung_tatsächlich", "Fläche",
        "Prüfzeichen", "Aktualitätsnummer", "Eigentümerposition", "Name", "Anteilsverhältnis",
        "Vorname_sonstiges", "Namenszusatz", "Straße", "Ort", "Eigentümerzusatz", "sonstigesBOV",
        "Lagebezeichnung", "Straßenschlüssel", "Rechtswert", "Hochwert", "Flurstückskennzeichen",
        "Finanzamt", "Finanzamtsschlüssel", "Klassifizierung", "Angaben_Klassifizierung",
        "Schlüssel_Klassifizierung", "Bezeichnung_Klassifizierung", "Namensnummer",
        "Flurstück-Vorgänger", "Flurstück-Nachfolger", "Flurstück-Zähler", "Flurstück-Nenner", "BZ",
        "AZ", "BZ-AZ-Fläche", "EMZ", "Schätzung", "NA_Klassifizierung", "NA-Fläche", "AZ-Mittel",
        "EMZ-Summe", "Entstehung", "Fortführung", "LiegenschKarte", "Grundbuchbezirkschlüssel",
        "Schlüssel_Bezeichnung_Hinweis_Flurstück", "Bezeichnung_Hinweis_Flurstück"};
    return spalten;
}

long long WebXmlTextLesen(std::string_view text, const ImportOptionen& optionen,
                          Kataster& kataster) {
    SpaltenSichern(kataster);
    AuszugLeser leser(optionen, kataster);
    return leser.Lesen(DateitextNachUtf8(text));
}

Ergebnis WebXmlLesen(const std::vector<std::filesystem::path>& dateien,
                     const ImportOptionen& optionen, bool anfügen, Kataster& kataster,
                     Oberfläche& ui, WebXmlBericht* bericht) {
    if (dateien.size() > 1 &&
        !Gefragt(ui, "Es werden " + std::to_string(dateien.size()) +
                         " ausgewählte XML-Dateien eingelesen! Weiter?   ",
                 "Flurix - XML-Import"))
        return Ergebnis::Abbruch();
    if (kataster.Zeilenzahl() > 0) {
        if (!Gefragt(ui, anfügen ? "Sollen die Daten an die vorhandene Datenbank angefügt werden?   "
                                 : "Soll die vorhandene Datenbank überschrieben werden?   "))
            return Ergebnis::Abbruch();
        if (!anfügen)
            kataster.Leeren();
    }
    SpaltenSichern(kataster);
    WebXmlBericht b;
    Ergebnis ergebnis = Ergebnis::Ok();
    {
        AuszugLeser leser(optionen, kataster);
        for (const auto& datei : dateien) {
            std::ifstream ein(datei, std::ios::binary);
            if (!ein) {
                std::string text = "Die Datei \"" + datei.string() + "\" kann nicht gelesen werden!";
                ui.Meldung(text, ProduktTitel, Stil::Fehler);
                ergebnis = Ergebnis::Fehlschlag(std::move(text));
                break;
            }
            const std::string roh((std::istreambuf_iterator<char>(ein)), std::istreambuf_iterator<char>());
            b.zeilen = leser.Lesen(DateitextNachUtf8(roh));
        }
        b.amtsanschrift = leser.Amtsanschriften();
    }

    kataster.AuswahlLeeren();
    const auto position = kataster.SpaltenIndex("Eigentümerposition");
    for (std::size_t z = 0; position && z < kataster.Zeilenzahl(); ++z)
        if (kataster.Zelle(z, *position) == "0001") {
            kataster.Auswählen(z);
            ++b.flurstücke;
        }
    ui.Status(4, "ALB-Zeilen: " + std::to_string(kataster.Zeilenzahl()) +
                     ", Flurstücke: " + std::to_string(b.flurstücke) + "   ");
    kataster.Sortieren(StandardSortierung);
    if (bericht)
        *bericht = std::move(b);
    return ergebnis;
}

} // namespace flurix::import
