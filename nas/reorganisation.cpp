#include "nas/reorganisation.hpp"

#include "core/datenbank.hpp"
#include "core/einstellungen.hpp"
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
#include <optional>
#include <set>
#include <unordered_map>

namespace flurix::nas {
namespace {

using namespace std::string_view_literals;

constexpr std::array<std::string_view, BezugAnzahl> HinweisTexte = {
    " \"AX_Anschrift\"  ohne Bezug...",
    " \"AX_Buchungsblatt\"  ohne Bezug...",
    " \"AX_Buchungsblattbezirk\"  ohne Bezug...",
    " \"AX_Dienststelle\" ohne Bezug...",
    " \"AX_Gemarkung\" ohne Bezug...",
    " \"AX_Gemeinde\" ohne Bezug...",
    " \"AX_LagebezeichnungMitHausnummer\" ohne Bezug...",
    " \"AX_LagebezeichnungOhneHausnummer\" ohne Bezug...",
    " \"AX_Namensnummer\" ohne Bezug...",
    " \"AX_NamensnummerId\" ohne Bezug...",
    " \"AX_NamensnummerPerson\" ohne Bezug...",
    " \"AX_Person\" ohne Bezug...",
    " \"AX_PersonAnschrift\" ohne Bezug...",
    " \"LagebezeichnungAusMitHsnr\" ohne Bezug...",
    " \"LagebezeichnungAusOhneHsnr\" ohne Bezug...",
    " \"id_AX_Buchungsblatt\" ohne Bezug...",
    " \"position_AP_PTO\" ohne Bezug...",
    " \"AX_Flurstueck\" ohne AX_Namensnummer...",
};

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
    Flurstücksbezug FlurstückBezüge(const AlkisZeile& basis);
    void Lage(AlkisZeile& träger, Flurstücksbezug& bezug, std::string_view relation,
              std::string_view tabelle, bool mitHausnummer, std::vector<Lageeintrag>& einträge);
    void Buchungsblatt(AlkisZeile& zeile, Reorganisationsbericht& bericht);
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
    std::string wert = m_suche.MehrfachWert(tabelle, index, schlüssel, m_attributListe.at(tabelle));
    if (wert.empty())
        return false;
    if (nurErster) {
        if (const auto klammer = wert.find('}'); klammer != std::string::npos) {
            Notiz(tabelle, schlüssel, "mehrere Schlüssel...");
            wert.resize(klammer);
        }
    }
    const auto& spalten = m_attributSpalten.at(tabelle);
    const auto werte = Teilen(wert, '#');
    for (std::size_t i = 0; i < std::min(werte.size(), spalten.size()); ++i)
        zeile.Setzen(spalten[i], std::string(werte[i]));
    if (werte.size() > spalten.size())
        Notiz(tabelle, schlüssel, "Index außerhalb des gültigen Bereichs...");
    return true;
}

// The bookings of the parcel: its own, and those attached "an" it. One attached booking gives
// two rows (its own and the attached one); two or more give a row for each attached booking,
// the last first, and none for its own, as the register has always shown them. Then each booking
// that lies "zu" the parcel's own booking (the share of a served parcel that belongs to another
// property) gives a row: its owners are owners of this parcel too.
std::vector<AlkisZeile> Reorganisation::Buchungen(const AlkisZeile& basis,
                                                  Reorganisationsbericht& bericht) {
    const std::string gebucht =
        m_suche.MehrfachWert(Gebucht, "id", basis.Text("id"), "AX_Buchungsstelle");
    std::vector<AlkisZeile> zeilen;
    std::string liste;
    std::size_t c = 0;
    do {
        AlkisZeile zeile = basis;
        zeile.Setzen(I("id_AX_Buchungsstelle"), gebucht);
        if (c > 0) {
            zeile.Setzen(I("id_AX_Buchungsstelle"), TokenNr(liste, static_cast<int>(c), ";"));
            --c;
        } else {
            liste = Ersetzen(m_suche.MehrfachWert(An, "ori_Buchungsstelle", gebucht, "id"), "}", ";");
            if (!liste.empty()) {
                zeile.Setzen(I("id_an_AX_Buchungsstelle"), liste);
                c = static_cast<std::size_t>(std::count(liste.begin(), liste.end(), ';'));
                if (c > 0)
                    zeile.Setzen(I("id_AX_Buchungsstelle"), TokenNr(liste, static_cast<int>(c) + 1, ";"));
                else
                    c = 1;
            }
        }
        Attribute(zeile, "AX_Buchungsstelle", "id", zeile.Text("id_AX_Buchungsstelle"), false);
        zeilen.push_back(std::move(zeile));
    } while (c > 0);
    if (gebucht.empty())
        return zeilen;
    const std::string zuListe = m_suche.MehrfachWert(Zu, "ori_Buchungsstelle", gebucht, "id");
    for (std::string_view zu : Teilen(zuListe, '}')) {
        if (zu.empty())
            continue;
        AlkisZeile zeile = basis;
        zeile.Setzen(I("id_AX_Buchungsstelle"), std::string(zu));
        Attribute(zeile, "AX_Buchungsstelle", "id", zu, false);
        zeilen.push_back(std::move(zeile));
        ++bericht.zuBuchungen;
    }
    return zeilen;
}

void Reorganisation::Lage(AlkisZeile& träger, Flurstücksbezug& bezug, std::string_view relation,
                          std::string_view tabelle, bool mitHausnummer,
                          std::vector<Lageeintrag>& einträge) {
    const std::string ziel = mitHausnummer ? "ori_LagebezeichnungMitHausnummer"
                                           : "ori_LagebezeichnungOhneHausnummer";
    const std::string ids = m_suche.MehrfachWert(relation, "id", träger.Text("id"), ziel);
    const std::string idSpalte = "id_" + std::string(tabelle);
    if (ids.empty())
        return;
    bezug.werte.emplace_back(m_spalten.Index(idSpalte), ids);
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
    // The relation holds one reference or several joined with ";" (and "}" for several rows).
    const std::string idListe = Ersetzen(ids, "}", ";");
    for (std::string_view id : Teilen(idListe, ';')) {
        id = TrimmeLeerzeichen(id);
        if (id.empty())
            continue;
        const std::string wert = m_suche.MehrfachWert(tabelle, "id", id, felder);
        if (wert.empty()) {
            bezug.fehlend.push_back(ohneBezug);
            Notiz(tabelle, id, "ohne Bezug...");
            continue;
        }
        const std::string ersteZeile = wert.substr(0, wert.find('}'));
        const auto teile = Teilen(ersteZeile, '#');
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
            const std::string text = m_suche.SuchWert(bezeichnung, "AX_LagebezeichnungKatalogeintrag",
                                                      "schluessel", "bezeichnung");
            if (text == "-1") {
                bezug.fehlend.push_back(ohneText);
                Notiz("AX_LagebezeichnungKatalogeintrag", bezeichnung, "ohne Bezug...");
            } else {
                eintrag.text = text;
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
    const std::string pto =
        TokenNr(m_suche.MehrfachWert(Darstellung, "AX_Flurstueck", träger.Text("id"), "id"), 1, "}");
    const std::string position = pto.empty() ? "-1" : m_suche.SuchWert(pto, "AP_PTO", "id", "position");
    if (!pto.empty())
        bezug.werte.emplace_back(m_spalten.Index("id_AP_PTO"), pto);
    const std::string punkt = TextSäubern(position == "-1" ? std::string() : position);
    const auto worte = Teilen(punkt, ' ');
    if (worte.size() >= 2 && !worte[0].empty()) {
        bezug.werte.emplace_back(m_spalten.Index("position_AP_PTO"), position);
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
        const std::string amt = m_suche.SuchWert(träger.Text("id_AX_Gemarkung"), Amtsbezirk, "id",
                                                 "istAmtsbezirkVon");
        gefunden = amt != "-1" &&
                   Attribute(träger, "AX_Dienststelle", "schluesselGesamt", OhneBlanks(amt), true);
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

void Reorganisation::Buchungsblatt(AlkisZeile& zeile, Reorganisationsbericht& bericht) {
    const std::string stelle(zeile.Text("id_AX_Buchungsstelle"));
    const std::string blatt = m_suche.MehrfachWert(BlattVon, "id", stelle, "AX_Buchungsblatt");
    zeile.Setzen(I("id_AX_Buchungsblatt"), blatt);
    if (blatt.find('}') != std::string::npos) {
        Notiz("id_AX_Buchungsblatt", stelle, "Mehrfachbuchung...");
    } else if (blatt.empty()) {
        Notiz("id_AX_Buchungsblatt", stelle, "ohne Bezug...");
        bericht.Zählen(Bezug::IdBuchungsblatt);
    }
    if (!Attribute(zeile, "AX_Buchungsblatt", "id", blatt, false)) {
        Notiz("AX_Buchungsblatt", blatt, "ohne Bezug...");
        bericht.Zählen(Bezug::Buchungsblatt);
    }
    if (const auto& bezirk = zeile.Wert(I("buchungsblattbezirk_AX_Buchungsblatt"))) {
        if (!Attribute(zeile, "AX_Buchungsblattbezirk", "schluessel", *bezirk, true)) {
            Notiz("AX_Buchungsblattbezirk", *bezirk, "ohne Bezug...");
            bericht.Zählen(Bezug::Buchungsblattbezirk);
        }
    }
    zeile.Setzen(I("AnzZeilen_AX_Namensnummer"), "0001");
    const std::string namensnummern =
        m_suche.MehrfachWert(NamensnummernVon, "AX_Buchungsblatt", zeile.Text("id_AX_Buchungsblatt"), "id");
    if (namensnummern.empty()) {
        Notiz("AX_Namensnummer", zeile.Text("id_AX_Buchungsblatt"), "ohne Bezug...");
        bericht.Zählen(Bezug::FlurstückOhneNamensnummer);
        return;
    }
    zeile.Setzen(I("id_AX_Namensnummer"), namensnummern);
    zeile.Setzen(I("AnzZeilen_AX_Namensnummer"),
                 MitNullen(std::count(namensnummern.begin(), namensnummern.end(), '}') + 1, 4));
}

void Reorganisation::Eigentümer(AlkisZeile& zeile, Reorganisationsbericht& bericht) {
    const std::string namensnummer(zeile.Text("id_AX_Namensnummer"));
    if (namensnummer.empty()) {
        bericht.Zählen(Bezug::NamensnummerId);
        return;
    }
    if (!Attribute(zeile, "AX_Namensnummer", "id", namensnummer, false)) {
        Notiz("AX_Namensnummer", namensnummer, "ohne Bezug...");
        bericht.Zählen(Bezug::Namensnummer);
    }
    const std::string person = m_suche.MehrfachWert(Benennt, "id", namensnummer, "AX_Person");
    if (person.empty()) {
        Notiz("AX_NamensnummerPerson", namensnummer, "ohne Bezug...");
        bericht.Zählen(Bezug::NamensnummerPerson);
        return;
    }
    zeile.Setzen(I("id_AX_Person"), person);
    if (!Attribute(zeile, "AX_Person", "id", person, false)) {
        Notiz("AX_Person", person, "ohne Bezug...");
        bericht.Zählen(Bezug::Person);
    }
    const std::string anschrift = m_suche.MehrfachWert(Hat, "id", person, "AX_Anschrift");
    if (anschrift.empty()) {
        Notiz("AX_PersonAnschrift", person, "ohne Bezug...");
        bericht.Zählen(Bezug::PersonAnschrift);
        return;
    }
    zeile.Setzen(I("id_AX_Anschrift"), anschrift);
    if (!Attribute(zeile, "AX_Anschrift", "id", anschrift, false)) {
        Notiz("AX_Anschrift", anschrift, "ohne Bezug...");
        bericht.Zählen(Bezug::Anschrift);
    }
}

void Reorganisation::Flurstück(const AlkisZeile& basis, Reorganisationsbericht& bericht,
                               std::vector<AlkisZeile>& zeilen) {
    zeilen.clear();
    Flurstücksbezug bezug = FlurstückBezüge(basis);
    std::vector<AlkisZeile> einzeln;
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
        Buchungsblatt(buchung, bericht);
        // A row for each owner of the sheet.
        const std::size_t n = static_cast<std::size_t>(
            std::max(1.0, ZahlLesen(buchung.Text("AnzZeilen_AX_Namensnummer"))));
        if (b >= ersteZu)
            bericht.zuZeilen += static_cast<std::int64_t>(n);
        for (std::size_t k = 1; k < n; ++k)
            einzeln.push_back(buchung);
        einzeln.push_back(std::move(buchung));
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
        if (text(zeile, nn).find('}') != std::string_view::npos)
            zeile.Setzen(nn, TokenNr(text(zeile, nn), static_cast<int>(zähler), "}"));
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
            DAO_CreateIndex(db, index.tabelle, index.spalte, false, false);
}

} // namespace

std::string Reorganisationsbericht::ZuBuchungenText() const {
    if (zuBuchungen == 0)
        return {};
    return ", Buchungen \"zu\" der Buchung eines Flurstücks: " + std::to_string(zuBuchungen) +
           ", Zeilen: " + std::to_string(zuZeilen);
}

std::vector<std::string> Reorganisationsbericht::Hinweise() const {
    std::vector<std::string> hinweise;
    for (std::size_t i = 0; i < BezugAnzahl; ++i)
        if (fehlend[i] > 0)
            hinweise.push_back(", Hinweis: " + std::to_string(fehlend[i]) +
                               std::string(HinweisTexte[i]));
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
        protokoll.Eintrag(hinweis);
    if (const std::string zu = bericht.ZuBuchungenText(); !zu.empty())
        protokoll.Eintrag(zu);
    protokoll.NurDatei(", ALKIS-Zusammenstellung komplett...");
    return bericht;
}

} // namespace flurix::nas
