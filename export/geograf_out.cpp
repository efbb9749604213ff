#include "export/geograf_out.hpp"

#include "core/zieldatei.hpp"

#include "core/cp1252.hpp"
#include "core/jetzt.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <optional>

namespace flurix::ausgabe {
namespace {

// A failure of the writer, with the number the message shows (errno of the failed call).
struct Ausgabefehler {
    int nummer;
    std::string text;
};

std::string Zahltext(double wert) {
    char puffer[32];
    const auto [ende, fehler] = std::to_chars(puffer, puffer + sizeof puffer, wert);
    return fehler == std::errc() ? std::string(puffer, ende) : std::string("0");
}

std::string Ganzzahltext(long long wert) { return std::to_string(wert); }

// A whole number as text without a heap string: the stamp writes seven of them a line.
class Nummer {
public:
    explicit Nummer(long long wert)
        : m_länge(static_cast<std::size_t>(std::to_chars(m_text, m_text + sizeof m_text, wert).ptr -
                                           m_text)) {}
    operator std::string_view() const { return {m_text, m_länge}; }

private:
    char m_text[24];
    std::size_t m_länge;
};

// A position in ten-thousandths written in its shortest form with a point: 1462970 -> "146.297".
std::string Zehntausendstel(long long wert) {
    std::string text = wert < 0 ? "-" : "";
    const long long betrag = wert < 0 ? -wert : wert;
    text += std::to_string(betrag / 10000);
    std::string rest = std::to_string(10000 + betrag % 10000).substr(1);
    while (!rest.empty() && rest.back() == '0')
        rest.pop_back();
    if (!rest.empty())
        text += "." + rest;
    return text;
}


// The parcel number's two parts at "/"; the second empty when there is none.
std::pair<std::string_view, std::string_view> FlurstückTeile(std::string_view wert) {
    const auto strich = wert.find('/');
    if (strich == std::string_view::npos)
        return {wert, {}};
    return {wert.substr(0, strich), wert.substr(strich + 1)};
}

bool IstEinerVon(std::string_view name, std::initializer_list<std::string_view> namen) {
    for (std::string_view n : namen)
        if (n == name)
            return true;
    return false;
}

// The columns whose numbers lose their leading zeros with "ohne führende Nullen".
bool NullenSpalte(std::string_view name) {
    return IstEinerVon(name, {"Flur", "Amtsgerichtsschlüssel", "Grundbuchblatt", "BVNR", "Fläche",
                              "Prüfzeichen", "Aktualitätsnummer", "Eigentümerposition"});
}

// The columns labelled with their name in the form "nur plausible Beschriftung": the offered
// columns but the names, shares, addresses and texts, which speak for themselves. Katasteramt
// is labelled too although the dialog offers Dienststelle: the labels have always been given so.
bool PlausibelSpalte(std::string_view name) {
    if (name == "Katasteramt")
        return true;
    if (IstEinerVon(name, {"Dienststelle", "Anteil_Grundstück", "Name", "Namenszusatz",
                           "Geburtsdatum", "Straße", "Ort", "sonstigesBOV", "Lagebezeichnung"}))
        return false;
    return std::find(GeografAngeboteneSpalten.begin(), GeografAngeboteneSpalten.end(), name) !=
           GeografAngeboteneSpalten.end();
}

std::string Einheit(std::string_view name) {
    if (name == "Rechtswert" || name == "Hochwert")
        return "m";
    if (name == "Fläche")
        return "m²";
    return {};
}

// The stamps' seven columns: x and alignment.
struct Stempelspalte {
    const char* x;
    int ausrichtung;
};
constexpr Stempelspalte Stempelspalten[7] = {{"247.611", 1},  {"258.3976", 2}, {"264.706", 2},
                                             {"270.4589", 2}, {"279.522", 1},  {"291.1221", 1},
                                             {"298.3471", 0}};

class GeografSchreiber {
public:
    GeografSchreiber(const Kataster& kataster, const GeografOptionen& optionen,
                     const std::filesystem::path& ziel, Oberfläche& ui)
        : m_k(kataster), m_opt(optionen), m_ziel(ziel), m_ui(ui) {
        m_spalten.reserve(optionen.spalten.size());
        for (const auto& name : optionen.spalten)
            m_spalten.push_back({name, kataster.SpaltenIndex(name)});
        m_ea = std::to_string(optionen.ebene) + "." + std::to_string(optionen.art);
        for (std::size_t i = 0; i < std::size(FesteSpalten); ++i)
            m_fest[i] = kataster.SpaltenIndex(FesteSpalten[i]);
        m_auswahl = kataster.AnzahlAusgewählt() > 0;
        for (std::size_t i = 0; i < std::size(Stempelspalten); ++i) {
            const Stempelspalte& sp = Stempelspalten[i];
            m_stücke[i] = {": ," + m_ea + "," + sp.x + ",", std::string(",") + sp.x + ",",
                           ",100.000000,0,0," + std::to_string(sp.ausrichtung) + ",0,,0,,,,,,,",
                           std::string(": ,0.1,") + sp.x + ","};
        }
    }

    // Writes the whole file under a temporary name and renames it to the target; throws
    // Ausgabefehler or Fehler.
    void Schreiben() {
        Zieldatei datei(m_ziel);
        m_puffer = &datei.Puffer();
        const std::size_t zeilen = m_k.Zeilenzahl();
        long long k = 1;
        for (std::size_t r = 0; r < zeilen; ++r) {
            if ((r + 1) % 20 == 0)
                m_ui.Status(2, Ganzzahltext(std::llround(static_cast<double>(r + 1) /
                                                         static_cast<double>(zeilen) * 100.0)) +
                                   "% ausgelesen  ");
            if (r == 0)
                Kopf();
            if (m_auswahl && !m_k.Ausgewählt(r))
                continue;
            if (Stempel())
                r = Stempelzeile(r, k);
            else
                Textblock(r, k);
            ++k;
            datei.Weiter();
        }
        datei.Abschließen();
    }

    std::size_t OhneKoordinaten() const { return m_ohneKoordinaten; }

private:
    struct Spalte {
        std::string name;
        std::optional<std::size_t> index;
    };

    bool Stempel() const {
        return m_opt.form == GeografForm::StempelA || m_opt.form == GeografForm::StempelB;
    }

    // The columns the writer reads by name, looked up once: a look-up per cell would cost more
    // than the writing.
    static constexpr std::string_view FesteSpalten[] = {
        "Rechtswert",     "Hochwert", "Gemarkung",         "Flur", "Flurstück",   "Fläche",
        "Grundbuchblatt", "BVNR",     "Anteil_Grundstück", "Name", "Namenszusatz"};
    std::string_view Zelle(std::size_t zeile, std::string_view schlüssel) const {
        for (std::size_t i = 0; i < std::size(FesteSpalten); ++i)
            if (FesteSpalten[i] == schlüssel)
                return m_fest[i] ? m_k.Zelle(zeile, *m_fest[i]) : std::string_view();
        return m_k.Zelle(zeile, schlüssel);
    }
    std::string_view Wert(std::size_t zeile, std::string_view schlüssel) const {
        return TrimmeLeerzeichen(Zelle(zeile, schlüssel));
    }
    std::string_view Wert(std::size_t zeile, const Spalte& s) const {
        return s.index ? TrimmeLeerzeichen(m_k.Zelle(zeile, *s.index)) : std::string_view();
    }
    bool Gewählt(std::string_view name) const {
        for (const auto& s : m_spalten)
            if (s.name == name)
                return true;
        return false;
    }

    // One line from its pieces, straight into the buffer: a stamp line has 23 lines, and
    // joining them through temporaries first would cost more than writing them.
    void Zeile(std::initializer_list<std::string_view> teile) {
        for (std::string_view teil : teile) {
            // An OR over the bytes, which the compiler vectorises, tells whether any is not ASCII.
            unsigned char oder = 0;
            for (char c : teil)
                oder |= static_cast<unsigned char>(c);
            if (oder < 0x80)
                *m_puffer += teil;
            else
                *m_puffer += Utf8NachCp1252(teil);
        }
        *m_puffer += "\r\n";
    }
    // A line of pieces that are ASCII by making: our numbers and fixed texts.
    void AsciiZeile(std::initializer_list<std::string_view> teile) {
        for (std::string_view teil : teile)
            *m_puffer += teil;
        *m_puffer += "\r\n";
    }
    void Zeile(std::string_view utf8) { Zeile({utf8}); }
    void Kopf() {
        std::string datum = m_opt.datum, uhrzeit = m_opt.uhrzeit;
        if (datum.empty() || uhrzeit.empty()) {
            const Zeitangabe jetzt = JetztLokal();
            if (datum.empty())
                datum = jetzt.datum;
            if (uhrzeit.empty())
                uhrzeit = jetzt.uhrzeit;
        }
        Zeile("*");
        Zeile("* GRAFBAT - D A T E I  GEOgraf");
        Zeile("*");
        Zeile("* Textausgabe für Geograf");
        Zeile("* erstellt am: " + datum + ", Uhrzeit: " + uhrzeit);
        Zeile("*");
        Zeile("Typ: GRAFBAT V4");
        Zeile(Stempel() ? "PAR: \"500bk.art\",\"werk.sym\",\"GEOGRAF\", 500"
                        : "PAR: \"zvautneu.art\",\"zvautal.sym\",\"GEOGRAF\", 500");
    }

    void OhneGeoreferenz(std::size_t r) {
        std::string zeile = "Gemarkung " + std::string(Wert(r, "Gemarkung")) + ", Flur " +
                            std::string(Wert(r, "Flur")) + ", Flurstück " +
                            std::string(Wert(r, "Flurstück")) + " ohne Georeferenzierung!";
        std::ofstream err(m_ziel.string() + ".err", std::ios::binary | std::ios::app);
        err << Utf8NachCp1252(Einzeilig(zeile)) << "\r\n";
        if (!err)
            throw Ausgabefehler{errno, "Die Datei " + m_ziel.string() +
                                           ".err kann nicht geschrieben werden"};
        ++m_ohneKoordinaten;
    }

    void Textblock(std::size_t r, long long k) {
        const std::string_view rw = Wert(r, "Rechtswert"), hw = Wert(r, "Hochwert");
        if (!(ZahlLesen(rw) > 0 && ZahlLesen(hw) > 0)) {
            OhneGeoreferenz(r);
            return;
        }
        const std::string rwText(TrimmeLeerzeichen(m_opt.mkz + std::string(rw)));
        const std::string n = Ganzzahltext(k);
        Zeile("TE" + n + ": ," + m_ea + ", " + rwText + ", " + std::string(hw) + ", " + rwText +
              ", " + std::string(hw) + ", 100, 0, 0, 0, 0, , 0, , , , , , \"");
        for (const auto& s : m_spalten) {
            std::string v = Textwert(r, s);
            if (!TrimmeLeerzeichen(v).empty())
                Zeile("  TX" + n + ": " + Einzeilig(v));
        }
    }

    // The value of one output column in a text block form.
    std::string Textwert(std::size_t r, const Spalte& s) const {
        std::string v(Wert(r, s));
        const std::string_view name = s.name;
        if (m_opt.ohneFührendeNullen) {
            if (NullenSpalte(name))
                v = std::string(TrimmeLeerzeichen(Zahltext(ZahlLesen(v))));
            else if (name == "Flurstück") {
                const auto [vorn, hinten] = FlurstückTeile(v);
                v = Zahltext(ZahlLesen(vorn)) + "/" + Zahltext(ZahlLesen(hinten));
            }
        }
        switch (m_opt.form) {
        case GeografForm::Ohne:
            if (name == "Flurstück") {
                const auto [vorn, hinten] = FlurstückTeile(v);
                if (ZahlLesen(hinten) == 0)
                    v = std::string(vorn);
                else if (m_spalten.size() == 1)
                    v = std::string(vorn) + "_" + std::string(hinten);
                else
                    v = std::string(vorn) + "/" + std::string(hinten);
            }
            break;
        case GeografForm::Alle:
            v = std::string(name) + " " + v + Einheit(name);
            break;
        case GeografForm::Plausibel:
            if (PlausibelSpalte(name)) {
                if (name == "Flurstück") {
                    const auto [vorn, hinten] = FlurstückTeile(v);
                    if (ZahlLesen(hinten) == 0)
                        v = std::string(vorn);
                }
                const std::string_view etikett = name == "Grundbuchblatt" ? "Grbl." : name;
                v = std::string(etikett) + " " + v + Einheit(name);
            }
            break;
        default:
            break;
        }
        return v;
    }

    // One stamp line from row r (and the rows folded into it); returns the last row it used.
    std::size_t Stempelzeile(std::size_t r, long long k) {
        std::string texte[7];
        if (Gewählt("Flurstück")) {
            const auto [vorn, hinten] = FlurstückTeile(Wert(r, "Flurstück"));
            texte[0] = Zahltext(ZahlLesen(vorn));
            if (ZahlLesen(hinten) > 0)
                texte[0] += "/" + Zahltext(ZahlLesen(hinten));
        }
        if (Gewählt("Fläche"))
            Flächentexte(ZahlLesen(Wert(r, "Fläche")), texte[1], texte[2], texte[3]);
        if (Gewählt("Grundbuchblatt"))
            texte[4] = Zahltext(ZahlLesen(Wert(r, "Grundbuchblatt")));
        if (Gewählt("BVNR"))
            texte[5] = m_opt.ohneFührendeNullen ? Zahltext(ZahlLesen(Wert(r, "BVNR")))
                                                : std::string(Wert(r, "BVNR"));
        if (Gewählt("Name")) {
            texte[6] = Eigentümertext(r, Gewählt("Anteil_Grundstück"), Gewählt("Namenszusatz"));
        } else if (Gewählt("Anteil_Grundstück") && !Wert(r, "Anteil_Grundstück").empty()) {
            texte[6] = "(" + std::string(Wert(r, "Anteil_Grundstück")) + " Anteile)";
        }
        if (m_opt.eineZeile) {
            const std::string_view flurstück = Zelle(r, "Flurstück");
            const std::string_view blatt = Zelle(r, "Grundbuchblatt");
            while (r + 1 < m_k.Zeilenzahl() && m_k.Ausgewählt(r + 1) &&
                   Zelle(r + 1, "Flurstück") == flurstück &&
                   Zelle(r + 1, "Grundbuchblatt") == blatt) {
                ++r;
                texte[6] += "; " + Eigentümertext(r, true, true);
            }
        }

        const long long y0 = m_opt.form == GeografForm::StempelA ? 1462970 : 2113570;
        const std::string y = Zehntausendstel(y0 - (k - 1) * 35000);
        const long long erster = m_text;
        for (int i = 0; i < 7; ++i) {
            const Nummer n(m_text++);
            const Stempelstücke& st = m_stücke[static_cast<std::size_t>(i)];
            AsciiZeile({"TE", n, st.vorY, y, st.zwischenY, y, st.nachY, n, ","});
            Zeile({"  TX", n, ": ", Einzeilig(texte[i])});
            if (i == 0)
                AsciiZeile({"PK", n, st.punktVorY, y, ",,,0,0,,,,,,0,,0,,0,0,,1,0,0,0,,,,"});
        }
        const Nummer o(k);
        AsciiZeile({"OO", o, ": \"ALB\" ,", m_ea, ",", Stempelspalten[0].x, ",", y, ",0,,,,,,,,T"});
        for (long long t = erster; t < m_text; ++t)
            AsciiZeile({"  OR", o, ": TE=", Nummer(t), ",1"});
        if (k == 10 && m_opt.form == GeografForm::StempelA)
            m_ui.Meldung(
                "Bitte nutzen Sie StempelB! Es werden mehr als 9 Datenzeilen ausgegeben!   ",
                "Hinweis", Stil::Warnung);
        return r;
    }

    // Name, then Namenszusatz, then the share in brackets, each when there is one.
    std::string Eigentümertext(std::size_t r, bool mitAnteil, bool mitZusatz) const {
        std::string text(Wert(r, "Name"));
        if (mitZusatz && !Wert(r, "Namenszusatz").empty())
            text += " " + std::string(Wert(r, "Namenszusatz"));
        if (mitAnteil && !Wert(r, "Anteil_Grundstück").empty())
            text += " (" + std::string(Wert(r, "Anteil_Grundstück")) + " Anteile)";
        return text;
    }

    static void Flächentexte(double fläche, std::string& ha, std::string& a, std::string& qm) {
        const std::string text = Zahltext(fläche);
        if (fläche / 10000 >= 1) {
            ha = Zahltext(std::floor(fläche / 10000));
            a = text.size() >= 4 ? text.substr(text.size() - 4, 2) : std::string();
            qm = text.substr(text.size() - 2);
        } else if (fläche / 100 >= 1) {
            a = Zahltext(std::floor(fläche / 100));
            qm = text.substr(text.size() - 2);
        } else if (fläche >= 1) {
            qm = text;
        }
    }

    const Kataster& m_k;
    const GeografOptionen& m_opt;
    const std::filesystem::path& m_ziel;
    Oberfläche& m_ui;
    std::vector<Spalte> m_spalten;
    std::optional<std::size_t> m_fest[std::size(FesteSpalten)];
    std::string m_ea;
    bool m_auswahl = false;
    std::string* m_puffer = nullptr; ///< of the target file while it is written
    // The fixed pieces of a stamp column's lines around the row's y, made once: a stamp line
    // would otherwise append twice as many pieces.
    struct Stempelstücke {
        std::string vorY, zwischenY, nachY, punktVorY;
    };
    std::array<Stempelstücke, std::size(Stempelspalten)> m_stücke;
    long long m_text = 1;
    std::size_t m_ohneKoordinaten = 0;
};

} // namespace

bool GeografFormAusName(std::string_view name, GeografForm& form) {
    constexpr std::pair<std::string_view, GeografForm> namen[] = {
        {"ohne", GeografForm::Ohne},
        {"alle", GeografForm::Alle},
        {"plausibel", GeografForm::Plausibel},
        {"stempel-a", GeografForm::StempelA},
        {"stempel-b", GeografForm::StempelB}};
    for (const auto& [n, f] : namen)
        if (n == name) {
            form = f;
            return true;
        }
    return false;
}

Ergebnis WriteGeografOut(const Kataster& kataster, const GeografOptionen& optionen,
                         const std::filesystem::path& ziel, Oberfläche& ui) {
    const auto fehlschlag = [&ui](std::string text) {
        ui.Meldung(text, ProduktTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag(std::move(text));
    };
    try {
        ui.Status(2, "0% ausgelesen  ");
        GeografSchreiber schreiber(kataster, optionen, ziel, ui);
        schreiber.Schreiben();
        ui.Status(2, "100% ausgelesen  ");
        if (const std::size_t m = schreiber.OhneKoordinaten(); m > 0)
            ui.Meldung("Es wurden " + std::to_string(m) +
                           " Flurstücke ohne Georeferenzierung vorgefunden! Ihre Ausgabe wurde "
                           "übersprungen!   ",
                       ProduktTitel, Stil::Warnung);
        const std::string stamm = ziel.extension() == ".out"
                                      ? std::filesystem::path(ziel).replace_extension().string()
                                      : ziel.string();
        ui.Status(2, "Datei " + stamm + ".out erzeugt   ");
        return Ergebnis::Ok();
    } catch (const Ausgabefehler& f) {
        return fehlschlag(
            "GeografAusgabe ErrNr: " + std::to_string(f.nummer) + " " + f.text +
            (f.nummer != 0 ? std::string(" (") + std::strerror(f.nummer) + ")" : "") + "!   ");
    } catch (const std::exception& e) {
        return fehlschlag(std::string("GeografAusgabe ErrNr: 0 ") + e.what());
    }
}

} // namespace flurix::ausgabe
