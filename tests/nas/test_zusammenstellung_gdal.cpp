// The whole NAS import — scan, compilation into Alkis, transfer into the cadastre table — measured
// against GDAL's NAS reader on the real test district. GDAL reads the objects and the relations of
// the same file; from them follows what the table must hold for each parcel:
//
//  * Rows. The parcel's own booking B (istGebucht) and the bookings A1..Ak attached to it (their
//    relation "an" points to B) decide which bookings give rows: B alone when k = 0, B and A1 when
//    k = 1, A1..Ak without B when k >= 2; then each booking Z that lies "zu" B (a share of a
//    served parcel). Each of them gives one row per AX_Namensnummer of its sheet (the
//    Namensnummer whose istBestandteilVon is that sheet), at least one row.
//  * Register order. The owners of each booking stand in the rows in the order of their
//    laufendeNummerNachDIN1421, and the register extract numbers each of them with the first three
//    levels of that number (0001.02.00.00.00 is owner 1.2.0); checked for every parcel.
//  * Owners. The column Name holds "nachnameOderFirma, vorname" (the name alone without a first
//    name) of the person each Namensnummer names (benennt); as a multiset per parcel.
//  * Addresses. For a person with an address (hat): Straße "strasse hausnummer" and Ort
//    "postleitzahlPostzustellung ort_Post"; as a set per parcel.
//  * Sheets. Grundbuchblatt of each row is the number of the sheet the row comes from.
//  * Area. Fläche of each row is the parcel's amtlicheFlaeche, as a number.
//  * Location. Lagebezeichnung lists "street house numbers" parts joined by "; ": the locations
//    with house number (weistAuf), or where there are none those without (zeigtAuf). A keyed
//    location is named by the catalogue entry of the same land, regierungsbezirk, kreis, gemeinde
//    and lage; a key the catalogue has no entry for stands in the text as a part of its own that
//    begins with the key's digits.
//  * Key. Flurstückskennzeichen is GDAL's flurstueckskennzeichen with "0" where the file pads with
//    "_"; FKZ-Original keeps the file's form. Gemarkung is the name of the AX_Gemarkung of the
//    parcel's land and gemarkungsnummer, Flur the flurnummer in three digits, Flurstück
//    "zaehler/nenner" in five and four digits ("/0000" without nenner).
//
// The parcels compared: every 50th key in sorted order, the ten with the most owners, every parcel
// with attached bookings and every parcel whose location has a key without a catalogue name or
// locations without house number beside those with; the number of rows and the set of keys are
// compared over all parcels. The import and GDAL's reading run once per test program, side by
// side. GDAL reads every field as the text the file writes (GML_FIELDTYPES=ALWAYS_STRING:
// otherwise the postcode "00000" would come out as 0 and the street key "00104" as 104); a field
// that occurs more than once in a feature then keeps only its last value, so the relations are
// taken from GDAL's relation layer, which holds every reference.

#include "nas/nas_direkt.hpp"

#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/gdal_testbezirk.hpp"
#include "report/registerauszug.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <exception>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace flurix::nas {
namespace {

using test::TempOrdner;
using test::TestBezirk;

const std::filesystem::path Konfig = std::filesystem::path(FLURIX_QUELLEN) / "config";

// The layers GDAL writes out, each into <layer>.csv.
constexpr std::string_view Flurstücke = "AX_Flurstueck";
constexpr std::string_view Buchungsstellen = "AX_Buchungsstelle";
constexpr std::string_view Buchungsblätter = "AX_Buchungsblatt";
constexpr std::string_view Namensnummern = "AX_Namensnummer";
constexpr std::string_view Personen = "AX_Person";
constexpr std::string_view Anschriften = "AX_Anschrift";
constexpr std::string_view MitHausnummer = "AX_LagebezeichnungMitHausnummer";
constexpr std::string_view OhneHausnummer = "AX_LagebezeichnungOhneHausnummer";
constexpr std::string_view Katalog = "AX_LagebezeichnungKatalogeintrag";
constexpr std::string_view Gemarkungen = "AX_Gemarkung";
constexpr std::string_view Beziehungen = "ALKIS_beziehungen";

// --- small text helpers -------------------------------------------------------------------------

std::string Trimmen(std::string_view text) {
    const auto anfang = text.find_first_not_of(" \t\r\n");
    if (anfang == std::string_view::npos)
        return {};
    const auto ende = text.find_last_not_of(" \t\r\n");
    return std::string(text.substr(anfang, ende - anfang + 1));
}

// Two texts joined by a space, the whole trimmed (either may be empty).
std::string MitLeerzeichen(std::string_view a, std::string_view b) {
    return Trimmen(Trimmen(a) + " " + Trimmen(b));
}

// A key part without its leading zeros: "07" and "7", "00104" and "104" are the same key.
std::string OhneNullen(std::string_view text) {
    const std::string t = Trimmen(text);
    const auto erste = t.find_first_not_of('0');
    return erste == std::string::npos ? std::string() : t.substr(erste);
}

bool BeginntMitZiffer(std::string_view text) {
    return !text.empty() && std::isdigit(static_cast<unsigned char>(text.front())) != 0;
}

std::optional<double> Zahl(std::string_view text) {
    const std::string t = Trimmen(text);
    double wert = 0;
    const auto [ende, fehler] = std::from_chars(t.data(), t.data() + t.size(), wert);
    if (t.empty() || fehler != std::errc() || ende != t.data() + t.size())
        return std::nullopt;
    return wert;
}

std::optional<long long> Ganzzahl(std::string_view text) {
    const std::string t = Trimmen(text);
    long long wert = 0;
    const auto [ende, fehler] = std::from_chars(t.data(), t.data() + t.size(), wert);
    if (t.empty() || fehler != std::errc() || ende != t.data() + t.size())
        return std::nullopt;
    return wert;
}

// A number with leading zeros to `stellen` digits; "?" plus the text when it is no number.
std::string Stellen(std::string_view text, int stellen) {
    const auto wert = Ganzzahl(text);
    if (!wert)
        return "?" + std::string(text);
    std::string aus = std::to_string(*wert);
    if (aus.size() < static_cast<std::size_t>(stellen))
        aus.insert(0, static_cast<std::size_t>(stellen) - aus.size(), '0');
    return aus;
}

std::vector<std::string> Teilen(std::string_view text, std::string_view trenner) {
    std::vector<std::string> teile;
    std::size_t anfang = 0;
    while (true) {
        const auto ende = text.find(trenner, anfang);
        teile.emplace_back(text.substr(anfang, ende - anfang));
        if (ende == std::string_view::npos)
            return teile;
        anfang = ende + trenner.size();
    }
}

template <typename Menge> std::string Liste(const Menge& menge) {
    std::string aus = "{";
    for (const auto& eintrag : menge) {
        if (aus.size() > 1)
            aus += " | ";
        if constexpr (std::is_same_v<std::decay_t<decltype(eintrag)>, std::string>)
            aus += eintrag;
        else
            aus += eintrag.first + " / " + eintrag.second;
    }
    return aus + "}";
}

// What `soll` has and `ist` lacks, and the other way round; both sorted.
template <typename Menge> std::string Unterschied(const Menge& soll, const Menge& ist) {
    std::vector<typename Menge::value_type> fehlen, zuviel;
    std::set_difference(soll.begin(), soll.end(), ist.begin(), ist.end(), std::back_inserter(fehlen));
    std::set_difference(ist.begin(), ist.end(), soll.begin(), soll.end(), std::back_inserter(zuviel));
    return "es fehlen " + Liste(fehlen) + ", zu viel " + Liste(zuviel);
}

// --- GDAL's CSV files ---------------------------------------------------------------------------

// One feature: its fields by name, as GDAL writes them.
using Merkmale = std::map<std::string, std::string>;

// A CSV file as GDAL's CSV driver writes it: a header line, fields separated by commas and quoted
// where needed ("" inside quotes for a quote), lines ending in LF or CRLF. Every further line is
// one feature, its fields named by the header.
std::vector<Merkmale> CsvLesen(std::string_view text) {
    std::vector<std::vector<std::string>> sätze(1);
    std::string feld;
    bool zitat = false;
    bool feldDa = false;
    const auto feldEnde = [&] {
        sätze.back().push_back(std::move(feld));
        feld.clear();
        feldDa = false;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (zitat) {
            if (c == '"' && i + 1 < text.size() && text[i + 1] == '"') {
                feld += '"';
                ++i;
            } else if (c == '"') {
                zitat = false;
            } else {
                feld += c;
            }
        } else if (c == '"') {
            zitat = true;
            feldDa = true;
        } else if (c == ',') {
            feldEnde();
        } else if (c == '\n') {
            feldEnde();
            sätze.emplace_back();
        } else if (c != '\r') {
            feld += c;
            feldDa = true;
        }
    }
    if (feldDa || !feld.empty() || !sätze.back().empty())
        feldEnde();
    if (sätze.back().empty())
        sätze.pop_back();
    std::vector<Merkmale> merkmale;
    if (sätze.empty())
        return merkmale;
    const auto& kopf = sätze.front();
    for (std::size_t s = 1; s < sätze.size(); ++s) {
        Merkmale m;
        for (std::size_t i = 0; i < kopf.size() && i < sätze[s].size(); ++i)
            m[kopf[i]] = sätze[s][i];
        merkmale.push_back(std::move(m));
    }
    return merkmale;
}

// The field or "" when the feature has none.
std::string Feld(const Merkmale& m, const std::string& name) {
    const auto treffer = m.find(name);
    return treffer == m.end() ? std::string() : treffer->second;
}

// --- what GDAL reads ----------------------------------------------------------------------------

struct GdalBezirk {
    std::string fehler;
    std::vector<Merkmale> flurstücke; // in the order of the file
    std::map<std::string, Merkmale> buchungsstellen, buchungsblätter, namensnummern, personen,
        anschriften, mitHausnummer, ohneHausnummer; // by gml_id
    std::vector<Merkmale> katalog, gemarkungen;
    // The relation layer: by kind, the targets of each source and the sources of each target.
    std::map<std::string, std::map<std::string, std::vector<std::string>>> vorwärts, rückwärts;
    std::size_t beziehungen = 0;

    const std::vector<std::string>& Ziele(const std::string& art, const std::string& von) const {
        static const std::vector<std::string> keine;
        const auto a = vorwärts.find(art);
        if (a == vorwärts.end())
            return keine;
        const auto t = a->second.find(von);
        return t == a->second.end() ? keine : t->second;
    }
    const std::vector<std::string>& Quellen(const std::string& art, const std::string& zu) const {
        static const std::vector<std::string> keine;
        const auto a = rückwärts.find(art);
        if (a == rückwärts.end())
            return keine;
        const auto t = a->second.find(zu);
        return t == a->second.end() ? keine : t->second;
    }
};

std::map<std::string, Merkmale> NachId(std::vector<Merkmale> merkmale) {
    std::map<std::string, Merkmale> nachId;
    for (auto& m : merkmale) {
        const std::string id = Feld(m, "gml_id");
        nachId.emplace(id, std::move(m));
    }
    return nachId;
}

GdalBezirk GdalLesen() {
    GdalBezirk g;
    try {
        TempOrdner ordner;
        const auto ziel = ordner / "csv";
        std::string ebenen;
        for (const auto ebene : {Flurstücke, Buchungsstellen, Buchungsblätter, Namensnummern, Personen,
                                 Anschriften, MitHausnummer, OhneHausnummer, Katalog, Gemarkungen,
                                 Beziehungen})
            ebenen += " " + std::string(ebene);
        const auto lauf = test::GdalAufBezirk(
            ordner.pfad(),
            "ogr2ogr --config GML_FIELDTYPES ALWAYS_STRING -f CSV " + test::Wort(ziel), ebenen);
        if (lauf.status != 0) {
            g.fehler = lauf.ausgabe;
            return g;
        }
        const auto ebene = [&](std::string_view name) {
            return CsvLesen(test::DateiLesen(ziel / (std::string(name) + ".csv")));
        };
        g.flurstücke = ebene(Flurstücke);
        g.buchungsstellen = NachId(ebene(Buchungsstellen));
        g.buchungsblätter = NachId(ebene(Buchungsblätter));
        g.namensnummern = NachId(ebene(Namensnummern));
        g.personen = NachId(ebene(Personen));
        g.anschriften = NachId(ebene(Anschriften));
        g.mitHausnummer = NachId(ebene(MitHausnummer));
        g.ohneHausnummer = NachId(ebene(OhneHausnummer));
        g.katalog = ebene(Katalog);
        g.gemarkungen = ebene(Gemarkungen);
        for (const auto& b : ebene(Beziehungen)) {
            const auto von = Feld(b, "beziehung_von");
            const auto art = Feld(b, "beziehungsart");
            const auto zu = Feld(b, "beziehung_zu");
            g.vorwärts[art][von].push_back(zu);
            g.rückwärts[art][zu].push_back(von);
            ++g.beziehungen;
        }
    } catch (const std::exception& e) {
        g.fehler = std::string("GDALs CSV-Dateien nicht lesbar: ") + e.what();
    }
    return g;
}

// --- what the table must hold, per parcel -------------------------------------------------------

using Paare = std::set<std::pair<std::string, std::string>>;

// The location of a parcel: the street names, the pairs (street, house number; "" for a location
// without), and the keys the catalogue has no name for.
struct Lage {
    std::set<std::string> straßen;
    Paare hausnummern;
    std::set<std::string> unbenannt;
};

// The owners of one booking in the order of the register: the owner number as the register
// extract prints it, and the name.
using Eigentümerfolge = std::vector<std::pair<std::string, std::string>>;

// The first three levels of a number after DIN 1421 ("0001.02.00.00.00" gives "1.2.0").
std::string DreiStufen(std::string_view din) {
    const auto teile = Teilen(din, ".");
    std::string aus;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string stufe = i < teile.size() ? OhneNullen(teile[i]) : std::string();
        aus += (i > 0 ? "." : "") + (stufe.empty() ? std::string("0") : stufe);
    }
    return aus;
}

struct Erwartung {
    std::string kennzeichen;        // as the file writes it
    std::string tabellenKennzeichen; // "_" as "0"
    std::size_t zeilen = 0;
    std::size_t angehängt = 0;      // k: bookings attached to the parcel's booking
    std::vector<std::string> namen; // sorted
    Paare anschriften;              // (Straße, Ort)
    std::string fläche;
    std::string gemarkung, flur, flurstück;
    Lage lage;
    std::size_t übergangen = 0; // locations without house number passed over for those with
    std::map<std::string, Eigentümerfolge> eigentümerJeBuchung; // by "sheet|booking number"
    std::string hinweis; // what in GDAL's reading explains a difference, "" when nothing stands out
};

// The catalogue: street name by key (land, regierungsbezirk, kreis, gemeinde, lage, without
// leading zeros).
using Straßenkatalog = std::map<std::string, std::string>;

std::string Lageschlüssel(const Merkmale& m) {
    std::string schlüssel;
    for (const char* teil : {"land", "regierungsbezirk", "kreis", "gemeinde", "lage"})
        schlüssel += OhneNullen(Feld(m, teil)) + "|";
    return schlüssel;
}

// One location object into the parcel's location: its plain text, or its key looked up.
void LageHinzufügen(Lage& lage, const Merkmale& m, const Straßenkatalog& katalog, bool mitNummer) {
    const std::string hausnummer = mitNummer ? Trimmen(Feld(m, "hausnummer")) : std::string();
    std::string name = Trimmen(Feld(m, "unverschluesselt"));
    if (name.empty()) {
        if (Trimmen(Feld(m, "lage")).empty())
            return;
        const auto treffer = katalog.find(Lageschlüssel(m));
        if (treffer == katalog.end()) {
            lage.unbenannt.insert(Lageschlüssel(m));
            return;
        }
        name = Trimmen(treffer->second);
    }
    lage.straßen.insert(name);
    lage.hausnummern.emplace(name, hausnummer);
}

std::map<std::string, Erwartung> ErwartungenBilden(const GdalBezirk& g) {
    Straßenkatalog katalog;
    for (const auto& k : g.katalog)
        katalog[Lageschlüssel(k)] = Feld(k, "bezeichnung");
    std::map<std::string, std::string> gemarkungsname;
    for (const auto& m : g.gemarkungen)
        gemarkungsname[OhneNullen(Feld(m, "land")) + "|" + OhneNullen(Feld(m, "gemarkungsnummer"))] =
            Trimmen(Feld(m, "bezeichnung"));

    std::map<std::string, Erwartung> erwartungen;
    for (const auto& f : g.flurstücke) {
        Erwartung e;
        const std::string id = Feld(f, "gml_id");
        e.kennzeichen = Feld(f, "flurstueckskennzeichen");
        e.tabellenKennzeichen = e.kennzeichen;
        std::replace(e.tabellenKennzeichen.begin(), e.tabellenKennzeichen.end(), '_', '0');
        e.fläche = Feld(f, "amtlicheFlaeche");
        const auto gemarkung = gemarkungsname.find(OhneNullen(Feld(f, "land")) + "|" +
                                                   OhneNullen(Feld(f, "gemarkungsnummer")));
        e.gemarkung = gemarkung == gemarkungsname.end() ? std::string() : gemarkung->second;
        e.flur = Stellen(Feld(f, "flurnummer"), 3);
        const std::string nenner = Trimmen(Feld(f, "nenner"));
        e.flurstück = Stellen(Feld(f, "zaehler"), 5) + "/" + (nenner.empty() ? "0000" : Stellen(nenner, 4));

        // The bookings that give rows.
        std::vector<std::string> buchungen;
        const auto& gebucht = g.Ziele("istGebucht", id);
        if (gebucht.size() != 1)
            e.hinweis += " istGebucht nennt " + std::to_string(gebucht.size()) + " Buchungen;";
        if (!gebucht.empty()) {
            const std::string& b = gebucht.front();
            std::vector<std::string> angehängt;
            for (const auto& a : g.Quellen("an", b))
                if (g.buchungsstellen.contains(a))
                    angehängt.push_back(a);
            e.angehängt = angehängt.size();
            if (angehängt.empty())
                buchungen = {b};
            else if (angehängt.size() == 1)
                buchungen = {b, angehängt.front()};
            else
                buchungen = angehängt;
            for (const auto& z : g.Quellen("zu", b))
                if (g.buchungsstellen.contains(z))
                    buchungen.push_back(z);
            for (const auto& a : angehängt)
                if (g.Ziele("an", a).size() > 1)
                    e.hinweis += " Buchung " + a + " hängt mit \"an\" an " +
                                 std::to_string(g.Ziele("an", a).size()) + " Buchungen;";
        }
        for (const auto& buchung : buchungen) {
            const std::string bvnr = OhneNullen(Feld(g.buchungsstellen.at(buchung), "laufendeNummer"));
            // A booking without owners still gives its row, with the number of an empty name number.
            const Eigentümerfolge ohneEigentümer = {{"0.0.0", ""}};
            std::vector<std::string> blätter;
            for (const auto& s : g.Ziele("istBestandteilVon", buchung))
                if (g.buchungsblätter.contains(s))
                    blätter.push_back(s);
            if (blätter.size() != 1)
                e.hinweis += " Buchung " + buchung + " in " + std::to_string(blätter.size()) + " Blättern;";
            if (blätter.empty()) {
                e.eigentümerJeBuchung["|" + bvnr] = ohneEigentümer;
                ++e.zeilen;
                continue;
            }
            const std::string& blatt = blätter.front();
            const std::string blattnummer =
                OhneNullen(Feld(g.buchungsblätter.at(blatt), "buchungsblattnummerMitBuchstabenerweiterung"));
            std::size_t eigentümer = 0;
            std::vector<std::pair<std::string, std::pair<std::string, std::string>>> folge; // by DIN
            for (const auto& n : g.Quellen("istBestandteilVon", blatt)) {
                if (!g.namensnummern.contains(n))
                    continue;
                ++eigentümer;
                const std::string din = Trimmen(Feld(g.namensnummern.at(n), "laufendeNummerNachDIN1421"));
                std::string name;
                for (const auto& p : g.Ziele("benennt", n)) {
                    const auto person = g.personen.find(p);
                    if (person == g.personen.end())
                        continue;
                    const std::string nachname = Trimmen(Feld(person->second, "nachnameOderFirma"));
                    const std::string vorname = Trimmen(Feld(person->second, "vorname"));
                    name = vorname.empty() ? nachname : nachname + ", " + vorname;
                    e.namen.push_back(name);
                    for (const auto& a : g.Ziele("hat", p)) {
                        const auto anschrift = g.anschriften.find(a);
                        if (anschrift == g.anschriften.end())
                            continue;
                        const auto& m = anschrift->second;
                        e.anschriften.emplace(MitLeerzeichen(Feld(m, "strasse"), Feld(m, "hausnummer")),
                                              MitLeerzeichen(Feld(m, "postleitzahlPostzustellung"),
                                                             Feld(m, "ort_Post")));
                    }
                }
                folge.push_back({din, {DreiStufen(din), name}});
            }
            std::stable_sort(folge.begin(), folge.end(),
                             [](const auto& a, const auto& b) { return a.first < b.first; });
            auto& eigentümerfolge = e.eigentümerJeBuchung[blattnummer + "|" + bvnr];
            for (auto& [din, eintrag] : folge)
                eigentümerfolge.push_back(std::move(eintrag));
            if (folge.empty())
                eigentümerfolge = ohneEigentümer;
            e.zeilen += std::max<std::size_t>(eigentümer, 1);
        }
        std::sort(e.namen.begin(), e.namen.end());

        // The location: with house numbers, or where there are none without.
        const auto& weistAuf = g.Ziele("weistAuf", id);
        bool mitNummer = false;
        for (const auto& l : weistAuf) {
            const auto treffer = g.mitHausnummer.find(l);
            if (treffer != g.mitHausnummer.end()) {
                LageHinzufügen(e.lage, treffer->second, katalog, true);
                mitNummer = true;
            }
        }
        for (const auto& l : g.Ziele("zeigtAuf", id)) {
            const auto treffer = g.ohneHausnummer.find(l);
            if (treffer == g.ohneHausnummer.end())
                continue;
            if (mitNummer)
                ++e.übergangen;
            else
                LageHinzufügen(e.lage, treffer->second, katalog, false);
        }
        erwartungen.emplace(e.tabellenKennzeichen, std::move(e));
    }
    return erwartungen;
}

// One cell of Lagebezeichnung read with the street names the parcel should have: each part is a
// known name alone or followed by its house numbers (", " between them); a part that matches no
// known name is cut before its first word that begins with a digit; a part that begins with a
// digit is a key without a name.
Lage LageLesen(std::string_view zelle, const std::set<std::string>& bekannt) {
    Lage lage;
    for (const auto& roh : Teilen(zelle, "; ")) {
        const std::string teil = Trimmen(roh);
        if (teil.empty())
            continue;
        std::string name;
        for (const auto& kandidat : bekannt) {
            const bool passt =
                teil == kandidat || (teil.starts_with(kandidat + " ") &&
                                     BeginntMitZiffer(std::string_view(teil).substr(kandidat.size() + 1)));
            if (passt && kandidat.size() > name.size())
                name = kandidat;
        }
        if (name.empty() && BeginntMitZiffer(teil)) {
            lage.unbenannt.insert(teil);
            continue;
        }
        if (name.empty()) {
            const auto wörter = Teilen(teil, " ");
            std::size_t w = 1;
            while (w < wörter.size() && !BeginntMitZiffer(wörter[w]))
                ++w;
            for (std::size_t i = 0; i < w; ++i)
                name += (i > 0 ? " " : "") + wörter[i];
        }
        lage.straßen.insert(name);
        const std::string nummern = Trimmen(std::string_view(teil).substr(name.size()));
        if (nummern.empty())
            lage.hausnummern.emplace(name, "");
        for (const auto& nummer : Teilen(nummern, ", "))
            if (!Trimmen(nummer).empty())
                lage.hausnummern.emplace(name, Trimmen(nummer));
    }
    return lage;
}

// --- the import and the fixture -----------------------------------------------------------------

struct Befund {
    std::string fehlt;
    std::string fehler;
    GdalBezirk gdal;
    std::map<std::string, Erwartung> erwartungen; // by the table's key
    std::vector<const Erwartung*> auswahl;        // the parcels compared
    Kataster kataster;
    Ergebnis ergebnis;
    std::vector<std::string> meldungen;
    std::optional<Kataster::Index> index;
};

std::unique_ptr<Befund> BefundErheben() {
    auto b = std::make_unique<Befund>();
    if (!TestBezirk().fehlt.empty()) {
        b->fehlt = TestBezirk().fehlt;
        return b;
    }
    if (!TestBezirk().fehler.empty()) {
        b->fehler = TestBezirk().fehler;
        return b;
    }
    if (!test::ImSuchpfad("ogr2ogr")) {
        b->fehlt = "ogr2ogr (gdal-bin) fehlt: kein Vergleich mit GDAL.";
        return b;
    }
    // GDAL reads while we import: both read the whole file, each on a core of its own.
    std::thread gdal([&b] { b->gdal = GdalLesen(); });
    try {
        TempOrdner ordner;
        NasDirektAuftrag auftrag;
        auftrag.datei = TestBezirk().xml;
        auftrag.datenbank = ordner / "bezirk.sqlite";
        auftrag.konfigOrdner = Konfig;
        auftrag.ansichtsdatei = Konfig / "ALB_DatenbankSpalten.dat";
        // No protocol beside the district: other test programs read the same file.
        auftrag.optionen.protokollNichtSchreiben = true;
        SkriptOberfläche ui;
        NasDirektBericht bericht;
        b->ergebnis = NasDirektImport(auftrag, b->kataster, ui, bericht);
        b->meldungen = ui.Meldungen();
    } catch (const std::exception& e) {
        b->ergebnis = Ergebnis::Fehlschlag(std::string("Ausnahme: ") + e.what());
    }
    gdal.join();
    if (!b->gdal.fehler.empty() || !b->ergebnis)
        return b;

    b->erwartungen = ErwartungenBilden(b->gdal);
    const auto spalte = b->kataster.SpaltenIndex("Flurstückskennzeichen");
    if (spalte)
        b->index = b->kataster.IndexBauen(*spalte);

    // The choice: every 50th key, the ten parcels with the most owners, every parcel with
    // attached bookings, and the few whose location needs care: a key the catalogue has no name
    // for, or locations without house number beside those with.
    std::vector<const Erwartung*> sortiert;
    for (const auto& [schlüssel, e] : b->erwartungen)
        sortiert.push_back(&e);
    std::sort(sortiert.begin(), sortiert.end(),
              [](const Erwartung* x, const Erwartung* y) { return x->kennzeichen < y->kennzeichen; });
    std::set<const Erwartung*> auswahl;
    for (std::size_t i = 0; i < sortiert.size(); i += 50)
        auswahl.insert(sortiert[i]);
    auto nachEigentümern = sortiert;
    std::stable_sort(nachEigentümern.begin(), nachEigentümern.end(),
                     [](const Erwartung* x, const Erwartung* y) { return x->namen.size() > y->namen.size(); });
    for (std::size_t i = 0; i < std::min<std::size_t>(10, nachEigentümern.size()); ++i)
        auswahl.insert(nachEigentümern[i]);
    for (const auto* e : sortiert)
        if (e->angehängt > 0 || !e->lage.unbenannt.empty() || e->übergangen > 0)
            auswahl.insert(e);
    b->auswahl.assign(auswahl.begin(), auswahl.end());
    std::sort(b->auswahl.begin(), b->auswahl.end(),
              [](const Erwartung* x, const Erwartung* y) { return x->kennzeichen < y->kennzeichen; });
    return b;
}

class ZusammenstellungGdal : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (!s_befund)
            s_befund = BefundErheben();
    }
    static void TearDownTestSuite() { s_befund.reset(); }

    void SetUp() override {
        ASSERT_TRUE(s_befund);
        if (!s_befund->fehlt.empty())
            GTEST_SKIP() << s_befund->fehlt;
        ASSERT_EQ(s_befund->fehler, "");
        ASSERT_EQ(s_befund->gdal.fehler, "");
        std::string meldungen;
        for (const auto& m : s_befund->meldungen)
            meldungen += "\n" + m;
        ASSERT_TRUE(s_befund->ergebnis) << s_befund->ergebnis.Meldung() << meldungen;
        ASSERT_GT(s_befund->gdal.flurstücke.size(), 0u) << "GDAL hat die Datei nicht als NAS gelesen";
        ASSERT_GT(s_befund->gdal.beziehungen, 0u) << "GDAL liefert keine Beziehungen";
        ASSERT_TRUE(s_befund->index) << "die Tabelle hat keine Spalte Flurstückskennzeichen";
        ASSERT_GT(s_befund->auswahl.size(), 60u);
    }

    static const Kataster& Tabelle() { return s_befund->kataster; }
    static const std::vector<const Erwartung*>& Auswahl() { return s_befund->auswahl; }
    static std::span<const std::size_t> Zeilen(const Erwartung& e) {
        return s_befund->index->Zeilen(e.tabellenKennzeichen);
    }
    static std::string Zelle(std::size_t zeile, std::string_view spalte) {
        return std::string(Tabelle().Zelle(zeile, spalte));
    }

    // The differences found, the first ones shown.
    static void Melden(const std::vector<std::string>& abweichungen, std::string_view was,
                       std::size_t von = Auswahl().size()) {
        std::string erste;
        for (std::size_t i = 0; i < std::min<std::size_t>(abweichungen.size(), 12); ++i)
            erste += "\n  " + abweichungen[i];
        EXPECT_EQ(abweichungen.size(), 0u)
            << was << " bei " << abweichungen.size() << " von " << von << " verglichenen Flurstücken, die ersten:"
            << erste;
    }
    static std::string Kopf(const Erwartung& e) {
        return e.kennzeichen + (e.hinweis.empty() ? std::string() : " [GDAL:" + e.hinweis + "]") + ": ";
    }

    static inline std::unique_ptr<Befund> s_befund;
};

TEST_F(ZusammenstellungGdal, EineZeileJeFlurstückBuchungUndEigentümer) {
    std::vector<std::string> abweichungen;
    for (const auto* e : Auswahl())
        if (Zeilen(*e).size() != e->zeilen)
            abweichungen.push_back(Kopf(*e) + std::to_string(Zeilen(*e).size()) + " Zeilen statt " +
                                   std::to_string(e->zeilen) + " (" + std::to_string(e->angehängt) +
                                   " angehängte Buchungen)");
    Melden(abweichungen, "falsche Zeilenzahl");
}

TEST_F(ZusammenstellungGdal, ZeilenInsgesamtWieAusGdalsBuchungenGezählt) {
    std::size_t erwartet = 0;
    for (const auto& [schlüssel, e] : s_befund->erwartungen)
        erwartet += e.zeilen;
    std::string angehängt;
    for (const auto& [schlüssel, e] : s_befund->erwartungen)
        if (!e.hinweis.empty())
            angehängt += "\n  " + e.kennzeichen + ":" + e.hinweis;
    EXPECT_EQ(Tabelle().Zeilenzahl(), erwartet)
        << "Flurstücke, bei denen GDALs Buchungen auffallen:" << angehängt;

    // Every parcel GDAL reads is in the table, and no other.
    std::set<std::string> inTabelle;
    const auto spalte = *Tabelle().SpaltenIndex("Flurstückskennzeichen");
    for (std::size_t z = 0; z < Tabelle().Zeilenzahl(); ++z)
        inTabelle.insert(std::string(Tabelle().Zelle(z, spalte)));
    std::set<std::string> nachGdal;
    for (const auto& [schlüssel, e] : s_befund->erwartungen)
        nachGdal.insert(schlüssel);
    EXPECT_EQ(s_befund->erwartungen.size(), s_befund->gdal.flurstücke.size()) << "doppelte Kennzeichen";
    EXPECT_EQ(inTabelle, nachGdal);
}

TEST_F(ZusammenstellungGdal, AnschriftenWieGdalsAnschriftenDerPersonen) {
    std::vector<std::string> abweichungen;
    std::size_t anschriften = 0;
    for (const auto* e : Auswahl()) {
        Paare gelesen;
        for (const auto z : Zeilen(*e))
            if (!Zelle(z, "Straße").empty() || !Zelle(z, "Ort").empty())
                gelesen.emplace(Zelle(z, "Straße"), Zelle(z, "Ort"));
        anschriften += e->anschriften.size();
        if (gelesen != e->anschriften)
            abweichungen.push_back(Kopf(*e) + Unterschied(e->anschriften, gelesen));
    }
    EXPECT_GT(anschriften, 300u);
    Melden(abweichungen, "andere Anschriften");
}

TEST_F(ZusammenstellungGdal, FlächeJeZeileIstDieAmtlicheFläche) {
    std::vector<std::string> abweichungen;
    for (const auto* e : Auswahl()) {
        const auto soll = Zahl(e->fläche);
        if (!soll) {
            abweichungen.push_back(Kopf(*e) + "GDAL liest keine Zahl als amtlicheFlaeche: " + e->fläche);
            continue;
        }
        for (const auto z : Zeilen(*e)) {
            const auto ist = Zahl(Zelle(z, "Fläche"));
            if (!ist || *ist != *soll) {
                abweichungen.push_back(Kopf(*e) + "Fläche " + Zelle(z, "Fläche") + " statt " + e->fläche);
                break;
            }
        }
    }
    Melden(abweichungen, "andere Fläche");
}

TEST_F(ZusammenstellungGdal, LagebezeichnungWieGdalsLagen) {
    std::vector<std::string> abweichungen;
    std::size_t straßen = 0, hausnummern = 0;
    for (const auto* e : Auswahl()) {
        straßen += e->lage.straßen.size();
        for (const auto& [straße, nummer] : e->lage.hausnummern)
            hausnummern += nummer.empty() ? 0 : 1;
        for (const auto z : Zeilen(*e)) {
            const std::string zelle = Zelle(z, "Lagebezeichnung");
            const Lage gelesen = LageLesen(zelle, e->lage.straßen);
            std::string fehler;
            if (gelesen.straßen != e->lage.straßen)
                fehler += " Straßen " + Liste(gelesen.straßen) + " statt " + Liste(e->lage.straßen) + ";";
            else if (gelesen.hausnummern != e->lage.hausnummern)
                fehler += " Hausnummern " + Liste(gelesen.hausnummern) + " statt " +
                          Liste(e->lage.hausnummern) + ";";
            if (gelesen.unbenannt.size() != e->lage.unbenannt.size())
                fehler += " " + std::to_string(gelesen.unbenannt.size()) +
                          " Teile ohne Straßennamen statt " + std::to_string(e->lage.unbenannt.size()) +
                          " Schlüssel ohne Katalogeintrag " + Liste(e->lage.unbenannt) + ";";
            if (!fehler.empty()) {
                abweichungen.push_back(Kopf(*e) + "\"" + zelle + "\":" + fehler);
                break;
            }
        }
    }
    EXPECT_GT(straßen, 40u);
    EXPECT_GT(hausnummern, 5u);
    Melden(abweichungen, "andere Lagebezeichnung");
}

TEST_F(ZusammenstellungGdal, KennzeichenGemarkungFlurUndFlurstückWieGdal) {
    std::vector<std::string> abweichungen;
    for (const auto* e : Auswahl()) {
        for (const auto z : Zeilen(*e)) {
            std::string fehler;
            const auto prüfen = [&](std::string_view spalte, const std::string& soll) {
                if (Zelle(z, spalte) != soll)
                    fehler += " " + std::string(spalte) + " \"" + Zelle(z, spalte) + "\" statt \"" + soll + "\";";
            };
            prüfen("Flurstückskennzeichen", e->tabellenKennzeichen);
            prüfen("FKZ-Original", e->kennzeichen);
            prüfen("Gemarkung", e->gemarkung);
            prüfen("Flur", e->flur);
            prüfen("Flurstück", e->flurstück);
            if (!fehler.empty()) {
                abweichungen.push_back(Kopf(*e) + fehler);
                break;
            }
        }
        if (e->gemarkung.empty())
            abweichungen.push_back(Kopf(*e) + "GDAL kennt keine Gemarkung des Flurstücks");
    }
    Melden(abweichungen, "andere Merkmale des Flurstücks");
}

// Every parcel: the owners of each of its bookings in the number and order of the register, each
// numbered by the register extract as the register numbers it. Its rows grouped by sheet and
// booking number hold the owners' names: this also checks the sheet of every row and the owners
// of every parcel as a multiset.
TEST_F(ZusammenstellungGdal, EigentümerJeBuchungInZahlUndReihenfolgeDesRegisters) {
    std::vector<std::string> abweichungen;
    std::size_t eigentümer = 0;
    for (const auto& [schlüssel, e] : s_befund->erwartungen) {
        std::vector<std::size_t> zeilen(Zeilen(e).begin(), Zeilen(e).end());
        std::sort(zeilen.begin(), zeilen.end(), [](std::size_t a, std::size_t b) {
            return Zelle(a, "Eigentümerposition") < Zelle(b, "Eigentümerposition");
        });
        std::map<std::string, Eigentümerfolge> gelesen;
        for (const auto z : zeilen)
            gelesen[OhneNullen(Zelle(z, "Grundbuchblatt")) + "|" + OhneNullen(Zelle(z, "BVNR"))]
                .emplace_back(report::Eigentümernummer(Zelle(z, "Namensnummer")), Zelle(z, "Name"));
        const auto& soll = e.eigentümerJeBuchung;
        for (const auto& [buchung, folge] : soll)
            eigentümer += folge.size();
        if (gelesen == soll)
            continue;
        std::string text;
        for (const auto& [buchung, folge] : soll) {
            const auto ist = gelesen.find(buchung);
            if (ist != gelesen.end() && ist->second == folge)
                continue;
            text += " Blatt|BVNR " + buchung + ": " + Liste(folge) + " statt " +
                    (ist == gelesen.end() ? std::string("keiner Zeile") : Liste(ist->second)) + ";";
        }
        for (const auto& [buchung, folge] : gelesen)
            if (!soll.contains(buchung))
                text += " Zeilen für Blatt|BVNR " + buchung + " zu viel: " + Liste(folge) + ";";
        abweichungen.push_back(Kopf(e) + text);
    }
    EXPECT_GT(eigentümer, 6000u);
    Melden(abweichungen, "Eigentümer anders als im Register", s_befund->erwartungen.size());
}

} // namespace
} // namespace flurix::nas
