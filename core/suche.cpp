#include "core/suche.hpp"

#include "core/einstellungen.hpp"
#include "core/kataster.hpp"
#include "core/markierung.hpp"
#include "core/oberflaeche.hpp"

#include <algorithm>

namespace flurix {
namespace {

bool NurZiffern(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The two parts of a parcel number around its separator, each padded.
std::string ZählerNenner(std::string_view flurstück, char trenner) {
    const auto stelle = flurstück.find(trenner);
    return NullenAuffüllen(flurstück.substr(0, stelle), 5) + trenner +
           NullenAuffüllen(flurstück.substr(stelle + 1), 4);
}

// A term compared the way Kataster::Suchen compares: the whole cell, or its start when the term
// ends in "*", both folded by Vergleichsform. One pass over the rows with this is the same as
// searching again from the row after each hit, without walking the column's texts per hit.
class Suchmuster {
public:
    explicit Suchmuster(std::string_view begriff) : m_präfix(begriff.ends_with('*')) {
        if (m_präfix)
            begriff.remove_suffix(1);
        m_form = Vergleichsform(begriff);
    }
    bool Passt(std::string_view zelle) const {
        const std::string form = Vergleichsform(zelle);
        return m_präfix ? form.starts_with(m_form) : form == m_form;
    }

private:
    bool m_präfix;
    std::string m_form;
};

bool GleicheFlur(std::string_view a, std::string_view b) {
    if (NurZiffern(a) && NurZiffern(b)) {
        const auto ohneNullen = [](std::string_view z) {
            const auto erste = z.find_first_not_of('0');
            return erste == std::string_view::npos ? std::string_view{} : z.substr(erste);
        };
        return ohneNullen(a) == ohneNullen(b);
    }
    return a == b;
}

// The Gemarkung and Flur of rows, with the columns looked up once.
class GemarkungFlurLeser {
public:
    GemarkungFlurLeser(const Kataster& kataster, bool ausKennzeichen)
        : m_kataster(kataster), m_ausKennzeichen(ausKennzeichen),
          m_kennzeichen(kataster.SpaltenIndex("Flurstückskennzeichen")),
          m_gemarkung(kataster.SpaltenIndex("Gemarkung")), m_flur(kataster.SpaltenIndex("Flur")) {}

    /// Nothing when the row's key is too short to hold a Gemarkung and Flur.
    std::optional<std::pair<std::string_view, std::string_view>> Lesen(std::size_t zeile) const {
        if (m_ausKennzeichen) {
            const std::string_view fkz = Zelle(zeile, m_kennzeichen);
            if (fkz.size() < 9)
                return std::nullopt;
            return std::pair{fkz.substr(0, 6), fkz.substr(6, 3)};
        }
        return std::pair{Zelle(zeile, m_gemarkung), Zelle(zeile, m_flur)};
    }

private:
    std::string_view Zelle(std::size_t zeile, std::optional<std::size_t> spalte) const {
        return spalte ? m_kataster.Zelle(zeile, *spalte) : std::string_view{};
    }

    const Kataster& m_kataster;
    bool m_ausKennzeichen;
    std::optional<std::size_t> m_kennzeichen, m_gemarkung, m_flur;
};

bool InPaar(const GemarkungFlurLeser& leser, std::size_t zeile, const GemarkungFlur& paar) {
    const auto gf = leser.Lesen(zeile);
    return gf && gf->first == paar.gemarkung && GleicheFlur(gf->second, paar.flur);
}

std::vector<std::string> BoxFüllen(Kataster& kataster, std::string_view sortierung,
                                   bool ausKennzeichen, Oberfläche& ui) {
    kataster.Sortieren(sortierung);
    const GemarkungFlurLeser leser(kataster, ausKennzeichen);
    std::vector<std::string> einträge;
    std::optional<std::pair<std::string_view, std::string_view>> letztes;
    detail::Prozentanzeige prozent(ui, 1, "% Gemarkungschlüssel zuordnen  ");
    for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z) {
        prozent.Zeigen(z, kataster.Zeilenzahl());
        const auto gf = leser.Lesen(z);
        if (!gf || gf == letztes)
            continue;
        letztes = gf;
        einträge.push_back(BoxEintrag({std::string(gf->first), std::string(gf->second)}));
    }
    ui.Status(1, "100% Gemarkungschlüssel zuordnen  ");
    return einträge;
}

} // namespace

namespace detail {

void Prozentanzeige::Zeigen(std::size_t erledigt, std::size_t gesamt) {
    const std::size_t prozent = gesamt == 0 ? 100 : erledigt * 100 / gesamt;
    if (prozent == m_zuletzt)
        return;
    m_zuletzt = prozent;
    m_ui.Status(m_panel, std::to_string(prozent) + std::string(m_text));
}

} // namespace detail

std::string NullenAuffüllen(std::string_view zahl, std::size_t stellen) {
    const std::string_view ziffern = TrimmeLeerzeichen(zahl);
    if (!NurZiffern(ziffern))
        return std::string(zahl);
    const auto erste = ziffern.find_first_not_of('0');
    std::string_view wert = erste == std::string_view::npos ? "0" : ziffern.substr(erste);
    std::string text(stellen > wert.size() ? stellen - wert.size() : 0, '0');
    text += wert;
    return text;
}

std::string SuchbegriffAuffüllen(std::string_view spalte, std::string_view begriff) {
    const std::string_view getrimmt = TrimmeLeerzeichen(begriff);
    if (getrimmt.empty())
        return {};
    if (spalte == "Fläche")
        return NullenAuffüllen(begriff, 9);
    if (spalte == "Grundbuchblatt")
        return NullenAuffüllen(begriff, 7);
    if (spalte == "Flur")
        return NullenAuffüllen(begriff, 4);
    if (spalte == "Flurstück") {
        if (getrimmt.find('_') != std::string_view::npos)
            return ZählerNenner(getrimmt, '_');
        if (getrimmt.find('/') == std::string_view::npos)
            return NullenAuffüllen(getrimmt, 5) + "/0000";
        return ZählerNenner(getrimmt, '/');
    }
    return std::string(begriff);
}

std::string BoxEintrag(const GemarkungFlur& paar) { return paar.gemarkung + ", " + paar.flur; }

std::optional<GemarkungFlur> GemarkungFlurAusEintrag(std::string_view eintrag, bool ausKennzeichen) {
    const auto stelle = eintrag.rfind(", ");
    if (stelle == std::string_view::npos)
        return std::nullopt;
    return GemarkungFlur{std::string(eintrag.substr(0, stelle)), std::string(eintrag.substr(stelle + 2)),
                         ausKennzeichen};
}

bool ZeileInGemarkungFlur(const Kataster& kataster, std::size_t zeile, const GemarkungFlur& paar) {
    return InPaar(GemarkungFlurLeser(kataster, paar.ausKennzeichen), zeile, paar);
}

std::string WieEingegebenHinweis(std::string_view aufgefüllt, std::string_view eingegeben) {
    return "Kein Treffer für „" + std::string(aufgefüllt) + "“, gesucht wie eingegeben: " +
           std::string(eingegeben);
}

std::size_t CmdFlurixSuchbegriff(Kataster& kataster, std::string_view spalte,
                                 std::string_view begriff, const std::optional<GemarkungFlur>& paar,
                                 bool alleEigentümerInEinerZeile, Stempelnummerierung* lageplan,
                                 Oberfläche& ui, std::string* hinweis) {
    // A blank term is searched as "*", the start of every cell.
    const auto suchform = [alleEigentümerInEinerZeile](std::string text) {
        if (text.empty())
            text = "*";
        if (alleEigentümerInEinerZeile && !text.ends_with('*'))
            text += '*';
        return text;
    };
    const std::string gesucht = suchform(SuchbegriffAuffüllen(spalte, begriff));
    const std::string eingegeben = suchform(std::string(TrimmeLeerzeichen(begriff)));
    std::string wieEingegeben; // the note, when the term as typed found the rows

    kataster.AuswahlLeeren();
    std::size_t treffer = 0;
    if (const auto index = kataster.SpaltenIndex(spalte)) {
        const std::optional<GemarkungFlurLeser> leser =
            paar ? std::optional<GemarkungFlurLeser>(std::in_place, kataster, paar->ausKennzeichen)
                 : std::nullopt;
        if (lageplan) {
            // Added before the walk, so that no column is added while the leser holds indices.
            MarkierungsspalteSicherstellen(kataster);
            StempelspalteSicherstellen(kataster);
        }
        const auto durchsuchen = [&](std::string_view form) {
            const Suchmuster muster(form);
            std::size_t gefunden = 0;
            for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z) {
                if (!muster.Passt(kataster.Zelle(z, *index)) || (leser && !InPaar(*leser, z, *paar)))
                    continue;
                kataster.Auswählen(z);
                ++gefunden;
                if (lageplan)
                    MarkierungGeklickt(kataster, z, true, *lageplan);
            }
            return gefunden;
        };
        treffer = durchsuchen(gesucht);
        // The padded form is that of NAS data; WLDGE and Web-XML cells keep forms of their own.
        if (treffer == 0 && eingegeben != gesucht) {
            treffer = durchsuchen(eingegeben);
            if (treffer > 0)
                wieEingegeben = WieEingegebenHinweis(gesucht, eingegeben);
        }
    }
    ui.Status(1, std::to_string(treffer) + " Zeile(n) selektiert  ");
    // Also without a note: the note of an earlier search must not stay.
    ui.Status(2, wieEingegeben);
    if (hinweis)
        *hinweis = wieEingegeben;
    kataster.Sortieren("Gemarkungsschlüssel,Grunbuchblatt,Eigentümerposition");
    if (treffer == 0) {
        const std::string text =
            paar ? "Der Suchbegriff <" + gesucht + "> Gemarkung: " + paar->gemarkung +
                       ", Flur: " + paar->flur + " wurde nicht gefunden!   "
                 : "Der Suchbegriff <" + gesucht + "> wurde nicht gefunden!   ";
        ui.Meldung(text, ProduktTitel, Stil::Information);
    }
    return treffer;
}

std::vector<std::string> BoxGemFlurFüllen(Kataster& kataster, Oberfläche& ui) {
    return BoxFüllen(kataster, "Gemarkungsschlüssel,Flur", false, ui);
}

std::vector<std::string> BoxGemFlurNASFüllen(Kataster& kataster, Oberfläche& ui) {
    return BoxFüllen(kataster, "Flurstückskennzeichen", true, ui);
}

} // namespace flurix
