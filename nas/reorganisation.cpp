#include "nas/reorganisation.hpp"

#include "core/datenbank.hpp"
#include "core/fehler.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "nas/alkis_tabelle.hpp"
#include "nas/daten_ordnen.hpp"
#include "nas/geometrie.hpp"
#include "nas/lagebezeichnung.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <unordered_map>

namespace flurix::nas {
namespace {

using namespace std::string_view_literals;

/// The hint text of each kind of missing reference; a switch over the enum, so that a new kind
/// can't be left without its text (-Wswitch).
std::string_view HinweisText(Bezug bezug) {
    switch (bezug) {
    case Bezug::Anschrift: return " \"AX_Anschrift\"  ohne Bezug...";
    case Bezug::Buchungsblatt: return " \"AX_Buchungsblatt\"  ohne Bezug...";
    case Bezug::Buchungsblattbezirk: return " \"AX_Buchungsblattbezirk\"  ohne Bezug...";
    case Bezug::Dienststelle: return " \"AX_Dienststelle\" ohne Bezug...";
    case Bezug::Gemarkung: return " \"AX_Gemarkung\" ohne Bezug...";
    case Bezug::Gemeinde: return " \"AX_Gemeinde\" ohne Bezug...";
    case Bezug::LageMitHausnummer: return " \"AX_LagebezeichnungMitHausnummer\" ohne Bezug...";
    case Bezug::LageOhneHausnummer: return " \"AX_LagebezeichnungOhneHausnummer\" ohne Bezug...";
    case Bezug::Namensnummer: return " \"AX_Namensnummer\" ohne Bezug...";
    case Bezug::NamensnummerId: return " \"AX_NamensnummerId\" ohne Bezug...";
    case Bezug::NamensnummerPerson: return " \"AX_NamensnummerPerson\" ohne Bezug...";
    case Bezug::Person: return " \"AX_Person\" ohne Bezug...";
    case Bezug::PersonAnschrift: return " \"AX_PersonAnschrift\" ohne Bezug...";
    case Bezug::LageAusMitHausnummer: return " \"LagebezeichnungAusMitHsnr\" ohne Bezug...";
    case Bezug::LageAusOhneHausnummer: return " \"LagebezeichnungAusOhneHsnr\" ohne Bezug...";
    case Bezug::IdBuchungsblatt: return " \"id_AX_Buchungsblatt\" ohne Bezug...";
    case Bezug::PositionApPto: return " \"position_AP_PTO\" ohne Bezug...";
    case Bezug::FlurstückOhneNamensnummer: return " \"AX_Flurstueck\" ohne AX_Namensnummer...";
    }
    return {};
}
static_assert(static_cast<std::size_t>(Bezug::FlurstückOhneNamensnummer) + 1 == BezugAnzahl,
              "BezugAnzahl counts the kinds of Bezug");

// The relations the joins follow.
constexpr std::string_view Gebucht = "AX_Flurstueck_istGebucht#AX_Buchungsstelle";
constexpr std::string_view An = "AX_Buchungsstelle_an#ori_Buchungsstelle";
constexpr std::string_view Zu = "AX_Buchungsstelle_zu#ori_Buchungsstelle";
constexpr std::string_view BlattVon = "AX_Buchungsstelle_istBestandteilVon#AX_Buchungsblatt";
constexpr std::string_view Darstellung = "AP_PTO_dientZurDarstellungVon#AX_Flurstueck";
constexpr std::string_view WeistAuf = "AX_Flurstueck_weistAuf#ori_LagebezeichnungMitHausnummer";
constexpr std::string_view ZeigtAuf = "AX_Flurstueck_zeigtAuf#ori_LagebezeichnungOhneHausnummer";
constexpr std::string_view NamensnummernVon = "AX_Namensnummer_istBestandteilVon#AX_Buchungsblatt";
constexpr std::string_view Benennt = "AX_Namensnummer_benennt#AX_Person";
constexpr std::string_view Hat = "AX_Person_hat#AX_Anschrift";
constexpr std::string_view Amtsbezirk = "AX_Gemarkung_id#istAmtsbezirkVon";
constexpr std::string_view SchlüsselElement =
    "lagebezeichnung/AX_Lagebezeichnung/verschluesselt/AX_VerschluesselteLagebezeichnung/lage";

struct Suchindex {
    std::string_view tabelle;
    std::string_view spalte;
};

// Every join seeks by an index; these are not made by the scan.
constexpr std::array<Suchindex, 9> Indizes = {{
    {Darstellung, "AX_Flurstueck"},
    {"AX_Buchungsblattbezirk", "schluessel"},
    {"AX_Gemeinde", "gemeindekennzeichen"},
    {"AX_Gemarkung", "schluessel"},
    {"AX_Dienststelle", "schluesselGesamt"},
    {An, "ori_Buchungsstelle"},
    {Zu, "ori_Buchungsstelle"},
    {"AX_LagebezeichnungKatalogeintrag", "schluessel"},
    {NamensnummernVon, "AX_Buchungsblatt"},
}};

std::string OhneBlanks(std::string_view text) { return Ersetzen(text, " ", ""); }

/// The values of several rows in one cell, joined with "}" as the table shows them.
std::string Verbunden(const std::vector<std::string>& werte) {
    std::string text;
    for (std::size_t i = 0; i < werte.size(); ++i)
        text.append(i == 0 ? "" : "}").append(werte[i]);
    return text;
}

/// Several rows for a key that should be unique: the cells have always taken the rows run
/// together, the last value of a row and the first of the next in one cell joined with "}".
std::vector<std::string> ZeilenAneinander(const std::vector<std::vector<std::string>>& zeilen) {
    std::vector<std::string> werte;
    for (const auto& zeile : zeilen)
        for (std::size_t i = 0; i < zeile.size(); ++i) {
            if (i == 0 && !werte.empty())
                werte.back().append("}").append(zeile[i]);
            else
                werte.push_back(zeile[i]);
        }
    return werte;
}

bool BeginntMitZiffer(std::string_view text) {
    return !text.empty() && text.front() >= '0' && text.front() <= '9';
}

/// Case-blind order of two cells, as the database sorts its text columns.
int OhneGroßKlein(std::string_view a, std::string_view b) {
    const std::size_t n = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < n; ++i) {
        auto klein = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
        const auto ca = static_cast<unsigned char>(klein(a[i]));
        const auto cb = static_cast<unsigned char>(klein(b[i]));
        if (ca != cb)
            return ca < cb ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

/// What the joins that belong to the parcel found: the same for each of its rows.
struct Flurstücksbezug {
    std::vector<std::pair<std::size_t, std::string>> werte; // Alkis column, value
    std::vector<Bezug> fehlend;
};

class Reorganisation {
public:
    Reorganisation(Datenbank& db, const AlkisSpalten& spalten, NasProtokoll& protokoll)
        : m_suche(db), m_spalten(spalten), m_protokoll(protokoll) {
        for (std::string_view tabelle :
             {"AX_LagebezeichnungMitHausnummer"sv, "AX_LagebezeichnungOhneHausnummer"sv})
            if (DAO_FeldVorhanden(db, tabelle, SchlüsselElement))
                m_schlüsselSpalte.insert(tabelle);
        for (const auto& quelle : Quelltabellen()) {
            auto& indizes = m_attributSpalten[quelle.tabelle];
            std::string liste;
            for (std::string_view attribut : quelle.attribute) {
                indizes.push_back(spalten.Index(AlkisSpalte(attribut, quelle.tabelle)));
                liste += (liste.empty() ? "" : "#") + std::string(attribut);
            }
            m_attributListe[quelle.tabelle] = std::move(liste);
        }
        for (std::string_view name : {"id", "id_AX_Buchungsstelle", "id_an_AX_Buchungsstelle",
                                      "id_AX_Buchungsblatt", "buchungsblattbezirk_AX_Buchungsblatt",
                                      "id_AX_Namensnummer", "AnzZeilen_AX_Namensnummer",
                                      "laufendeNummer_AX_Buchungsstelle", "id_AX_Person",
                                      "id_AX_Anschrift",
                                      "buchungsblattnummerMitBuchstabenerweiterung_AX_Buchungsblatt"})
            m_index[std::string(name)] = spalten.Index(name);
    }

    /// The rows of one parcel, in the order the owners were taken.
    void Flurstück(const AlkisZeile& basis, Reorganisationsbericht& bericht,
                   std::vector<AlkisZeile>& zeilen);

private:
    std::size_t I(std::string_view name) const { return m_index.at(std::string(name)); }

    /// The attributes of `tabelle` in the first row (or rows) whose `index` equals the key, into
    /// their columns. False when there is none; then `bezug` is counted, when given.
    bool Attribute(AlkisZeile& zeile, std::string_view tabelle, std::string_view index,
                   std::string_view schlüssel, bool nurErster);
    void Notiz(std::string_view tabelle, std::string_view schlüssel, std::string_view was) {
        m_protokoll.NurDatei(", " + std::string(tabelle) + ", Index: " + std::string(schlüssel) +
                             " " + std::string(was));
    }
    std::vector<AlkisZeile> Buchungen(const AlkisZeile& basis, Reorganisationsbericht& bericht);
    std::vector<AlkisZeile> AnBuchungen(const AlkisZeile& basis, const std::string& gebucht);
    AlkisZeile BuchungsZeile(const AlkisZeile& basis, std::string_view buchung);
    /// The targets of a relation for the key; a single empty target is none, as the joins have
    /// always taken it.
    std::vector<std::string> Verweise(std::string_view relation, std::string_view index,
                                      std::string_view schlüssel, std::string_view ziel) {
        std::vector<std::string> ziele = m_suche.Werte(relation, index, schlüssel, ziel);
        if (ziele.size() == 1 && ziele.front().empty())
            ziele.clear();
        return ziele;
    }
    /// A reference that leads nowhere: a line in the protocol file, and the count of its kind.
    void OhneBezug(Reorganisationsbericht& bericht, std::string_view tabelle,
                   std::string_view schlüssel, Bezug bezug) {
        Notiz(tabelle, schlüssel, "ohne Bezug...");
        bericht.Zählen(bezug);
    }
    Flurstücksbezug FlurstückBezüge(const AlkisZeile& basis);
    void Lage(AlkisZeile& träger, Flurstücksbezug& bezug, std::string_view relation,
              std::string_view tabelle, bool mitHausnummer, std::vector<Lageeintrag>& einträge);
    std::vector<std::string> Buchungsblatt(AlkisZeile& zeile, Reorganisationsbericht& bericht);
    void Eigentümer(AlkisZeile& zeile, Reorganisationsbericht& bericht);

    Suchwerte m_suche;
    const AlkisSpalten& m_spalten;
    NasProtokoll& m_protokoll;
    std::unordered_map<std::string_view, std::vector<std::size_t>> m_attributSpalten;
    std::unordered_map<std::string_view, std::string> m_attributListe;
    std::unordered_map<std::string, std::size_t> m_index;
    std::set<std::string_view> m_schlüsselSpalte; // location tables with the key element
};

bool Reorganisation::Attribute(AlkisZeile& zeile, std::string_view tabelle,
                               std::string_view index, std::string_view schlüssel,
                               bool nurErster) {
    const auto zeilen = m_suche.Zeilen(tabelle, index, schlüssel, m_attributListe.at(tabelle));
    if (zeilen.empty())
        return false;
    std::vector<std::string> werte = zeilen.front();
    if (zeilen.size() > 1) {
        if (nurErster)
            Notiz(tabelle, schlüssel, "mehrere Schlüssel...");
        else
            werte = ZeilenAneinander(zeilen);
    }
    const auto& spalten = m_attributSpalten.at(tabelle);
    for (std::size_t i = 0; i < std::min(werte.size(), spalten.size()); ++i)
        zeile.Setzen(spalten[i], werte[i]);
    if (werte.size() > spalten.size())
        Notiz(tabelle, schlüssel, "Index außerhalb des gültigen Bereichs...");
    return true;
}

// The bookings of the parcel: its own, and those attached "an" it (AnBuchungen). Then each
// booking that lies "zu" the parcel's own booking (the share of a served parcel that belongs to
// another property) gives a row: its owners are owners of this parcel too.
std::vector<AlkisZeile> Reorganisation::Buchungen(const AlkisZeile& basis,
                                                  Reorganisationsbericht& bericht) {
    const std::string gebucht =
        Verbunden(Verweise(Gebucht, "id", basis.Text("id"), "AX_Buchungsstelle"));
    std::vector<AlkisZeile> zeilen = AnBuchungen(basis, gebucht);
    if (gebucht.empty())
        return zeilen;
    for (const std::string& zu : Verweise(Zu, "ori_Buchungsstelle", gebucht, "id")) {
        if (zu.empty())
            continue;
        zeilen.push_back(BuchungsZeile(basis, zu));
        ++bericht.zuBuchungen;
    }
    return zeilen;
}

AlkisZeile Reorganisation::BuchungsZeile(const AlkisZeile& basis, std::string_view buchung) {
    AlkisZeile zeile = basis;
    zeile.Setzen(I("id_AX_Buchungsstelle"), std::string(buchung));
    Attribute(zeile, "AX_Buchungsstelle", "id", buchung, false);
    return zeile;
}

// The parcel's own booking and those attached "an" it, as the register has always shown them:
// none attached gives the own booking; one gives two rows, the own booking (naming the attached
// one) and the attached; two or more give a row for each attached booking only, the last first,
// and the first of them names all attached bookings, joined with ";".
std::vector<AlkisZeile> Reorganisation::AnBuchungen(const AlkisZeile& basis,
                                                    const std::string& gebucht) {
    const std::vector<std::string> an = Verweise(An, "ori_Buchungsstelle", gebucht, "id");
    std::vector<AlkisZeile> zeilen;
    if (an.empty()) {
        zeilen.push_back(BuchungsZeile(basis, gebucht));
    } else if (an.size() == 1) {
        AlkisZeile eigene = basis;
        eigene.Setzen(I("id_an_AX_Buchungsstelle"), an.front());
        eigene.Setzen(I("id_AX_Buchungsstelle"), gebucht);
        Attribute(eigene, "AX_Buchungsstelle", "id", gebucht, false);
        zeilen.push_back(std::move(eigene));
        zeilen.push_back(BuchungsZeile(basis, an.front()));
    } else {
        std::string liste;
        for (const std::string& id : an)
            liste.append(liste.empty() ? "" : ";").append(id);
        for (auto it = an.rbegin(); it != an.rend(); ++it) {
            AlkisZeile zeile = basis;
            if (it == an.rbegin())
                zeile.Setzen(I("id_an_AX_Buchungsstelle"), liste);
            zeile.Setzen(I("id_AX_Buchungsstelle"), *it);
            Attribute(zeile, "AX_Buchungsstelle", "id", *it, false);
            zeilen.push_back(std::move(zeile));
        }
    }
    return zeilen;
}

void Reorganisation::Lage(AlkisZeile& träger, Flurstücksbezug& bezug, std::string_view relation,
                          std::string_view tabelle, bool mitHausnummer,
                          std::vector<Lageeintrag>& einträge) {
    const std::string ziel = mitHausnummer ? "ori_LagebezeichnungMitHausnummer"
                                           : "ori_LagebezeichnungOhneHausnummer";
    const std::vector<std::string> ids = Verweise(relation, "id", träger.Text("id"), ziel);
    const std::string idSpalte = "id_" + std::string(tabelle);
    if (ids.empty())
        return;
    bezug.werte.emplace_back(m_spalten.Index(idSpalte), Verbunden(ids));
    // The street key of a keyed location stands in its own element; `lage` holds it only in
    // some Länder's files.
    std::string felder = mitHausnummer ? "id#lagebezeichnung#lage#hausnummer"
                                       : "id#lagebezeichnung#lage";
    const std::size_t schlüsselTeil = mitHausnummer ? 4 : 3;
    if (m_schlüsselSpalte.contains(tabelle))
        felder += "#" + std::string(SchlüsselElement);
    const Bezug ohneBezug = mitHausnummer ? Bezug::LageMitHausnummer : Bezug::LageOhneHausnummer;
    const Bezug ohneText = mitHausnummer ? Bezug::LageAusMitHausnummer : Bezug::LageAusOhneHausnummer;
    std::string lagen;
    std::string bezeichnungen;
    std::string hausnummern;
    // Each row of the relation holds one reference or several joined with ";".
    std::vector<std::string_view> verweise;
    for (const std::string& verweis : ids)
        for (std::string_view id : Teilen(verweis, ';'))
            if (id = TrimmeLeerzeichen(id); !id.empty())
                verweise.push_back(id);
    for (std::string_view id : verweise) {
        const auto zeilen = m_suche.Zeilen(tabelle, "id", id, felder);
        if (zeilen.empty()) {
            bezug.fehlend.push_back(ohneBezug);
            Notiz(tabelle, id, "ohne Bezug...");
            continue;
        }
        const std::vector<std::string>& teile = zeilen.front();
        auto teil = [&teile](std::size_t i) {
            return i < teile.size() ? std::string(TrimmeLeerzeichen(teile[i])) : std::string();
        };
        const std::string bezeichnung = teil(1);
        const std::string lage = teil(2).empty() ? teil(schlüsselTeil) : teil(2);
        const std::string hausnummer = mitHausnummer ? teil(3) : std::string();
        // A keyed location without its street key, or a location without any text, shows nothing.
        if (bezeichnung.empty() || (BeginntMitZiffer(bezeichnung) && lage.empty()))
            continue;
        const auto anhängen = [](std::string& liste, std::string_view text) {
            liste += liste.empty() ? "" : ";";
            liste += text;
        };
        anhängen(lagen, lage);
        anhängen(bezeichnungen, bezeichnung);
        anhängen(hausnummern, hausnummer);
        Lageeintrag eintrag{bezeichnung, hausnummer, {}};
        if (BeginntMitZiffer(bezeichnung)) {
            // A key of the street catalogue: the street's name stands there.
            eintrag.schlüssel = std::string(Utf8Anfang(lage, 5));
            const auto text = m_suche.Wert(bezeichnung, "AX_LagebezeichnungKatalogeintrag",
                                           "schluessel", "bezeichnung");
            if (!text) {
                bezug.fehlend.push_back(ohneText);
                Notiz("AX_LagebezeichnungKatalogeintrag", bezeichnung, "ohne Bezug...");
            } else {
                eintrag.text = *text;
            }
        }
        einträge.push_back(std::move(eintrag));
    }
    const auto spalte = [&](std::string_view attribut) {
        return m_spalten.Index(AlkisSpalte(attribut, tabelle));
    };
    bezug.werte.emplace_back(spalte("lage"), lagen);
    bezug.werte.emplace_back(spalte("lagebezeichnung"), bezeichnungen);
    if (mitHausnummer)
        bezug.werte.emplace_back(spalte("hausnummer"), hausnummern);
}

Flurstücksbezug Reorganisation::FlurstückBezüge(const AlkisZeile& basis) {
    Flurstücksbezug bezug;
    AlkisZeile träger = basis;
    const auto übernehmen = [&](std::string_view tabelle) {
        for (std::size_t spalte : m_attributSpalten.at(tabelle))
            if (träger.Wert(spalte))
                bezug.werte.emplace_back(spalte, *träger.Wert(spalte));
    };
    const std::string gemeinde(träger.Text("gemeindezugehoerigkeit"));
    if (Attribute(träger, "AX_Gemeinde", "gemeindekennzeichen", gemeinde, true))
        übernehmen("AX_Gemeinde");
    else
        bezug.fehlend.push_back(Bezug::Gemeinde);
    if (Attribute(träger, "AX_Gemarkung", "schluessel", träger.Text("gemarkung"), true))
        übernehmen("AX_Gemarkung");
    else
        bezug.fehlend.push_back(Bezug::Gemarkung);

    // The label point of the parcel gives its coordinates.
    const std::vector<std::string> ptos =
        Verweise(Darstellung, "AX_Flurstueck", träger.Text("id"), "id");
    const std::string pto = ptos.empty() ? std::string() : ptos.front();
    const std::optional<std::string> position =
        pto.empty() ? std::nullopt : m_suche.Wert(pto, "AP_PTO", "id", "position");
    if (!pto.empty())
        bezug.werte.emplace_back(m_spalten.Index("id_AP_PTO"), pto);
    const std::string punkt = TextSäubern(position.value_or(std::string()));
    const auto worte = Teilen(punkt, ' ');
    if (worte.size() >= 2 && !worte[0].empty()) {
        bezug.werte.emplace_back(m_spalten.Index("position_AP_PTO"), *position);
        bezug.werte.emplace_back(m_spalten.Index("Rechtswert"), std::string(worte[0]));
        bezug.werte.emplace_back(m_spalten.Index("Hochwert"), std::string(worte[1]));
    } else {
        bezug.werte.emplace_back(m_spalten.Index("Rechtswert"), std::string());
        bezug.werte.emplace_back(m_spalten.Index("Hochwert"), std::string());
        bezug.fehlend.push_back(Bezug::PositionApPto);
        Notiz("position_AP_PTO", träger.Text("id"), "ohne Bezug...");
    }

    // The office by the municipality's key (Land, then the district's two digits, "00"); where
    // no office has that key, the office the Gemarkung belongs to.
    const std::string kompakt = OhneBlanks(gemeinde);
    const std::string dienststelle = kompakt.size() >= 7
                                         ? kompakt.substr(0, 2) + kompakt.substr(5, 2) + "00"
                                         : std::string();
    bool gefunden = Attribute(träger, "AX_Dienststelle", "schluesselGesamt", dienststelle, true);
    if (!gefunden) {
        const auto amt =
            m_suche.Wert(träger.Text("id_AX_Gemarkung"), Amtsbezirk, "id", "istAmtsbezirkVon");
        gefunden =
            amt && Attribute(träger, "AX_Dienststelle", "schluesselGesamt", OhneBlanks(*amt), true);
    }
    if (gefunden)
        übernehmen("AX_Dienststelle");
    else
        bezug.fehlend.push_back(Bezug::Dienststelle);

    std::vector<Lageeintrag> mit;
    std::vector<Lageeintrag> ohne;
    Lage(träger, bezug, WeistAuf, "AX_LagebezeichnungMitHausnummer", true, mit);
    Lage(träger, bezug, ZeigtAuf, "AX_LagebezeichnungOhneHausnummer", false, ohne);
    const Lagetext lage = LagebezeichnungBilden(mit, ohne);
    bezug.werte.emplace_back(m_spalten.Index("Lagebezeichnung"), lage.lagebezeichnung);
    bezug.werte.emplace_back(m_spalten.Index("Straßenschlüssel"), lage.straßenschlüssel);
    return bezug;
}

// The sheet of the booking, its district and its name numbers; gives the name numbers (none
// when the sheet has no owners).
std::vector<std::string> Reorganisation::Buchungsblatt(AlkisZeile& zeile,
                                                       Reorganisationsbericht& bericht) {
    const std::string stelle(zeile.Text("id_AX_Buchungsstelle"));
    const std::vector<std::string> blätter = Verweise(BlattVon, "id", stelle, "AX_Buchungsblatt");
    const std::string blatt = Verbunden(blätter);
    zeile.Setzen(I("id_AX_Buchungsblatt"), blatt);
    if (blätter.size() > 1)
        Notiz("id_AX_Buchungsblatt", stelle, "Mehrfachbuchung...");
    else if (blatt.empty())
        OhneBezug(bericht, "id_AX_Buchungsblatt", stelle, Bezug::IdBuchungsblatt);
    if (!Attribute(zeile, "AX_Buchungsblatt", "id", blatt, false))
        OhneBezug(bericht, "AX_Buchungsblatt", blatt, Bezug::Buchungsblatt);
    if (const auto& bezirk = zeile.Wert(I("buchungsblattbezirk_AX_Buchungsblatt")))
        if (!Attribute(zeile, "AX_Buchungsblattbezirk", "schluessel", *bezirk, true))
            OhneBezug(bericht, "AX_Buchungsblattbezirk", *bezirk, Bezug::Buchungsblattbezirk);
    zeile.Setzen(I("AnzZeilen_AX_Namensnummer"), "0001");
    std::vector<std::string> namensnummern = Verweise(
        NamensnummernVon, "AX_Buchungsblatt", zeile.Text("id_AX_Buchungsblatt"), "id");
    if (namensnummern.empty()) {
        OhneBezug(bericht, "AX_Namensnummer", zeile.Text("id_AX_Buchungsblatt"),
                  Bezug::FlurstückOhneNamensnummer);
        return namensnummern;
    }
    zeile.Setzen(I("id_AX_Namensnummer"), Verbunden(namensnummern));
    zeile.Setzen(I("AnzZeilen_AX_Namensnummer"),
                 MitNullen(static_cast<std::int64_t>(namensnummern.size()), 4));
    return namensnummern;
}

void Reorganisation::Eigentümer(AlkisZeile& zeile, Reorganisationsbericht& bericht) {
    const std::string namensnummer(zeile.Text("id_AX_Namensnummer"));
    if (namensnummer.empty()) {
        bericht.Zählen(Bezug::NamensnummerId);
        return;
    }
    if (!Attribute(zeile, "AX_Namensnummer", "id", namensnummer, false))
        OhneBezug(bericht, "AX_Namensnummer", namensnummer, Bezug::Namensnummer);
    const std::string person = Verbunden(Verweise(Benennt, "id", namensnummer, "AX_Person"));
    if (person.empty()) {
        OhneBezug(bericht, "AX_NamensnummerPerson", namensnummer, Bezug::NamensnummerPerson);
        return;
    }
    zeile.Setzen(I("id_AX_Person"), person);
    if (!Attribute(zeile, "AX_Person", "id", person, false))
        OhneBezug(bericht, "AX_Person", person, Bezug::Person);
    const std::string anschrift = Verbunden(Verweise(Hat, "id", person, "AX_Anschrift"));
    if (anschrift.empty()) {
        OhneBezug(bericht, "AX_PersonAnschrift", person, Bezug::PersonAnschrift);
        return;
    }
    zeile.Setzen(I("id_AX_Anschrift"), anschrift);
    if (!Attribute(zeile, "AX_Anschrift", "id", anschrift, false))
        OhneBezug(bericht, "AX_Anschrift", anschrift, Bezug::Anschrift);
}

void Reorganisation::Flurstück(const AlkisZeile& basis, Reorganisationsbericht& bericht,
                               std::vector<AlkisZeile>& zeilen) {
    zeilen.clear();
    Flurstücksbezug bezug = FlurstückBezüge(basis);
    std::vector<AlkisZeile> einzeln;
    std::vector<std::shared_ptr<const std::vector<std::string>>> nummernJeZeile;
    const std::int64_t zuVorher = bericht.zuBuchungen;
    std::vector<AlkisZeile> buchungen = Buchungen(basis, bericht);
    // The bookings taken over by "zu" stand last.
    const std::size_t ersteZu = buchungen.size() - static_cast<std::size_t>(bericht.zuBuchungen - zuVorher);
    for (std::size_t b = 0; b < buchungen.size(); ++b) {
        AlkisZeile& buchung = buchungen[b];
        for (const auto& [spalte, wert] : bezug.werte)
            buchung.Setzen(spalte, wert);
        for (Bezug fehlend : bezug.fehlend)
            bericht.Zählen(fehlend);
        const auto namensnummern = std::make_shared<const std::vector<std::string>>(
            Buchungsblatt(buchung, bericht));
        // A row for each owner of the sheet.
        const std::size_t n = std::max<std::size_t>(1, namensnummern->size());
        if (b >= ersteZu)
            bericht.zuZeilen += static_cast<std::int64_t>(n);
        for (std::size_t k = 1; k < n; ++k)
            einzeln.push_back(buchung);
        einzeln.push_back(std::move(buchung));
        nummernJeZeile.insert(nummernJeZeile.end(), n, namensnummern);
    }
    // The owners are handed out in the order of the booking's number and the sheet's number; a
    // counter runs over rows of the same sheet, parcel and booking number and picks each row's
    // name number.
    const std::size_t lfd = I("laufendeNummer_AX_Buchungsstelle");
    const std::size_t blattnummer = I("buchungsblattnummerMitBuchstabenerweiterung_AX_Buchungsblatt");
    const auto text = [](const AlkisZeile& z, std::size_t i) {
        return z.Wert(i) ? std::string_view(*z.Wert(i)) : std::string_view();
    };
    // The rows keep the order they were made in; the counter walks them in the sorted order.
    std::vector<std::size_t> reihenfolge(einzeln.size());
    for (std::size_t i = 0; i < reihenfolge.size(); ++i)
        reihenfolge[i] = i;
    std::stable_sort(reihenfolge.begin(), reihenfolge.end(), [&](std::size_t ia, std::size_t ib) {
        const AlkisZeile& a = einzeln[ia];
        const AlkisZeile& b = einzeln[ib];
        if (const int c = OhneGroßKlein(text(a, lfd), text(b, lfd)); c != 0)
            return c < 0;
        return OhneGroßKlein(text(a, blattnummer), text(b, blattnummer)) < 0;
    });
    const std::size_t blatt = I("id_AX_Buchungsblatt");
    const std::size_t nn = I("id_AX_Namensnummer");
    std::size_t zähler = 0;
    std::string vorigesBlatt;
    std::string vorigeNummer;
    for (std::size_t r = 0; r < reihenfolge.size(); ++r) {
        AlkisZeile& zeile = einzeln[reihenfolge[r]];
        const bool gleich = r > 0 && text(zeile, blatt) == vorigesBlatt && text(zeile, lfd) == vorigeNummer;
        zähler = gleich ? zähler + 1 : 1;
        vorigesBlatt = text(zeile, blatt);
        vorigeNummer = text(zeile, lfd);
        // A sheet with several owners: the counter picks the row's name number.
        if (const auto& nummern = *nummernJeZeile[reihenfolge[r]]; nummern.size() > 1)
            zeile.Setzen(nn, zähler <= nummern.size() ? nummern[zähler - 1] : std::string());
        Eigentümer(zeile, bericht);
    }
    zeilen = std::move(einzeln);
}

/// A booking may lie "an" or "zu" several bookings; the scan keeps its targets in one cell,
/// joined with ";". The joins seek a parcel's booking among the targets by index, so each target
/// gets a row of its own first.
void BuchungsverweiseVereinzeln(Datenbank& db, std::string_view relation) {
    if (!DAO_TabelleVorhanden(db, relation))
        return;
    std::vector<std::pair<std::string, std::string>> mehrfach;
    {
        auto abfrage = db.VorbereitenNativ("SELECT id, ori_Buchungsstelle FROM " + Bezeichner(relation) +
                                           " WHERE ori_Buchungsstelle LIKE '%;%'");
        while (abfrage.Schritt())
            mehrfach.emplace_back(abfrage.Text(0), abfrage.Text(1));
    }
    if (mehrfach.empty())
        return;
    Transaktion transaktion(db);
    db.AusführenNativ("DELETE FROM " + Bezeichner(relation) + " WHERE ori_Buchungsstelle LIKE '%;%'");
    auto einfügen = db.VorbereitenNativ("INSERT INTO " + Bezeichner(relation) +
                                        " (id, ori_Buchungsstelle) VALUES (?, ?)");
    for (const auto& [id, ziele] : mehrfach)
        for (std::string_view ziel : Teilen(ziele, ';')) {
            ziel = TrimmeLeerzeichen(ziel);
            if (ziel.empty())
                continue;
            einfügen.Zurücksetzen();
            einfügen.Binde(id).Binde(ziel);
            einfügen.Schritt();
        }
    transaktion.Bestätigen();
}

void IndizesAnlegen(Datenbank& db) {
    for (const auto& index : Indizes)
        if (DAO_TabelleVorhanden(db, index.tabelle) &&
            !DAO_IndexVorhanden(db, index.tabelle, index.spalte))
            DAO_IndexAnlegen(db, index.tabelle, index.spalte, false, false);
}

} // namespace

std::string Reorganisationsbericht::ZuBuchungenText() const {
    if (zuBuchungen == 0)
        return {};
    return "Buchungen \"zu\" der Buchung eines Flurstücks: " + std::to_string(zuBuchungen) +
           ", Zeilen: " + std::to_string(zuZeilen);
}

std::vector<std::string> Reorganisationsbericht::Hinweise() const {
    std::vector<std::string> hinweise;
    for (std::size_t i = 0; i < BezugAnzahl; ++i)
        if (fehlend[i] > 0)
            hinweise.push_back("Hinweis: " + std::to_string(fehlend[i]) +
                               std::string(HinweisText(static_cast<Bezug>(i))));
    return hinweise;
}

Reorganisationsbericht XmlReorganisation(Datenbank& db, NasProtokoll& protokoll, Oberfläche& ui) {
    ui.Status(1, "XML-Reorganisation-Datenbank erzeugen...");
    protokoll.Eintrag(protokoll.MitDatei() ? ", Protokoll in Datei aktiviert..."
                                           : ", Protokoll in Datei deaktiviert...");
    const AlkisSpalten spalten(db);
    AlkisAnlegen(db, spalten);
    for (const std::string_view relation : {An, Zu})
        BuchungsverweiseVereinzeln(db, relation);
    IndizesAnlegen(db);

    Reorganisationsbericht bericht;
    if (!db.TabelleVorhanden("AX_Flurstueck"))
        return bericht;
    const std::int64_t gesamt = std::max<std::int64_t>(1, DAO_Zeilenzahl(db, "AX_Flurstueck"));
    ui.Status(1, "XML-Reorganisation AX_Buchungsstelle zuordnen...");

    Reorganisation reorganisation(db, spalten, protokoll);
    AlkisSchreiber schreiber(db, spalten);
    auto flurstücke = db.VorbereitenNativ("SELECT * FROM " + Bezeichner("AX_Flurstueck"));
    std::vector<std::pair<int, std::size_t>> quelle; // result column -> Alkis column
    for (const auto& [name, index] : spalten.Flurstücksspalten())
        quelle.emplace_back(flurstücke.Spaltenindex(name), index);
    const int idSpalte = flurstücke.Spaltenindex("id");
    const auto bogenSpalte = [&]() -> std::optional<int> {
        for (int i = 0; i < flurstücke.Spaltenanzahl(); ++i)
            if (flurstücke.Spaltenname(i) == "gml:Arc")
                return i;
        return std::nullopt;
    }();
    const auto außen = spalten.Suchen("gml:exterior");
    const auto innen = spalten.Suchen("gml:interior");

    Transaktion transaktion(db);
    std::vector<AlkisZeile> zeilen;
    while (flurstücke.Schritt()) {
        AlkisZeile basis(spalten);
        basis.Setzen(0, std::string(flurstücke.Text(idSpalte)));
        for (const auto& [ergebnis, index] : quelle)
            if (!flurstücke.IstNull(ergebnis))
                basis.Setzen(index, std::string(flurstücke.Text(ergebnis)));
        // Arcs become chords in both rings, fine enough for areas to the square centimetre.
        if (bogenSpalte && !TrimmeLeerzeichen(flurstücke.Text(*bogenSpalte)).empty()) {
            const std::string_view bögen = flurstücke.Text(*bogenSpalte);
            for (const auto ring : {außen, innen})
                if (ring && basis.Wert(*ring))
                    basis.Setzen(*ring, BögenErsetzen(*basis.Wert(*ring), bögen,
                                                      ReorganisationsPfeilhöhe));
        }
        reorganisation.Flurstück(basis, bericht, zeilen);
        for (const AlkisZeile& zeile : zeilen)
            schreiber.Schreiben(zeile);
        bericht.zeilen += static_cast<std::int64_t>(zeilen.size());
        if (++bericht.flurstücke % 100 == 0) {
            ui.Status(1, "XML-Reorganisation..., Zeile: " + std::to_string(bericht.flurstücke));
            ui.Fortschritt(static_cast<int>(bericht.flurstücke * 100 / gesamt), 100);
        }
    }
    transaktion.Bestätigen();

    ui.Status(1, "Datenbank Reorganisation...");
    protokoll.Eintrag(", Datenbank Reorganisation...");
    DatenbankKomprimieren(db);
    for (const std::string& hinweis : bericht.Hinweise())
        protokoll.Eintrag(", " + hinweis);
    if (const std::string zu = bericht.ZuBuchungenText(); !zu.empty())
        protokoll.Eintrag(", " + zu);
    protokoll.NurDatei(", ALKIS-Zusammenstellung komplett...");
    return bericht;
}

} // namespace flurix::nas
