// The areas of the NAS drawing: parcels with their administrative boundaries, the special parcel
// boundaries, BOV, buildings, land use and soil assessment. Each group's boundaries are collected
// segment by segment and written once per segment before the next group begins.

#include "core/datenbank.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "nas/flaechenklassen.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/nas_geograf_lesen.hpp"
#include "nas/nas_protokoll.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <numbers>
#include <unordered_map>

namespace flurix::nas {
namespace {

// Ranks of the parcel boundaries: where two meet on one segment the higher one is drawn.
enum Rang { Flurstücksgrenze = 1, Sonstige = 2, Flur = 3, Gemarkung = 4, Gemeinde = 5, Kreis = 6 };

std::string_view EbeneArtDesRangs(int rang) {
    constexpr std::array<std::string_view, 7> ea = {"1.1", "1.1", "1.7", "1.3",
                                                    "1.4", "1.5", "1.6"};
    return ea[static_cast<std::size_t>(std::clamp(rang, 0, 6))];
}

// The rank of a special boundary from its codes ("7003;3000;7106"): the highest it names.
int RangDerCodes(std::string_view codes) {
    int rang = Sonstige;
    for (std::string_view code : Teilen(codes, ';')) {
        code = TrimmeLeerzeichen(code);
        if (code == "7101" || code == "7102" || code == "7103" || code == "7104")
            rang = std::max<int>(rang, Kreis);
        else if (code == "7106")
            rang = std::max<int>(rang, Gemeinde);
        else if (code == "7003")
            rang = std::max<int>(rang, Gemarkung);
        else if (code == "3000")
            rang = std::max<int>(rang, Flur);
    }
    return rang;
}

// Where a parcel lies: two parcels on either side of a segment tell its rank.
struct Gebiet {
    std::string flur, gemarkung, gemeinde, kreis;
};

int RangZwischen(const Gebiet& a, const Gebiet& b) {
    if (a.kreis != b.kreis)
        return Kreis;
    if (a.gemeinde != b.gemeinde)
        return Gemeinde;
    if (a.gemarkung != b.gemarkung)
        return Gemarkung;
    if (a.flur != b.flur)
        return Flur;
    return Flurstücksgrenze;
}

std::string Segmentschlüssel(const Lage& a, const Lage& b, const std::optional<Lage>& mitte) {
    std::uint64_t ka = Lageschlüssel(a), kb = Lageschlüssel(b);
    if (ka > kb)
        std::swap(ka, kb);
    std::string text(reinterpret_cast<const char*>(&ka), sizeof ka);
    text.append(reinterpret_cast<const char*>(&kb), sizeof kb);
    if (mitte) {
        const std::uint64_t km = Lageschlüssel(*mitte);
        text.append(reinterpret_cast<const char*>(&km), sizeof km);
    }
    return text;
}

// The texts of the classes of actual use, as a map labels them.
constexpr std::pair<std::string_view, std::string_view> Nutzungsklassen[] = {
    {"AX_Wohnbauflaeche", "Wohnbaufläche"},
    {"AX_IndustrieUndGewerbeflaeche", "Industrie und Gewerbe"},
    {"AX_Halde", "Halde"},
    {"AX_Bergbaubetrieb", "Bergbaubetrieb"},
    {"AX_TagebauGrubeSteinbruch", "Tagebau"},
    {"AX_FlaecheGemischterNutzung", "Gemischte Nutzung"},
    {"AX_FlaecheBesondererFunktionalerPraegung", "Besondere funktionale Prägung"},
    {"AX_SportFreizeitUndErholungsflaeche", "Sport, Freizeit, Erholung"},
    {"AX_Friedhof", "Friedhof"},
    {"AX_Strassenverkehr", "Straßenverkehr"},
    {"AX_Weg", "Weg"},
    {"AX_Platz", "Platz"},
    {"AX_Bahnverkehr", "Bahnverkehr"},
    {"AX_Flugverkehr", "Flugverkehr"},
    {"AX_Schiffsverkehr", "Schiffsverkehr"},
    {"AX_Landwirtschaft", "Landwirtschaft"},
    {"AX_Wald", "Wald"},
    {"AX_Gehoelz", "Gehölz"},
    {"AX_Heide", "Heide"},
    {"AX_Moor", "Moor"},
    {"AX_Sumpf", "Sumpf"},
    {"AX_UnlandVegetationsloseFlaeche", "Unland"},
    {"AX_UnkultivierteFlaeche", "Unkultivierte Fläche"},
    {"AX_Fliessgewaesser", "Fließgewässer"},
    {"AX_Hafenbecken", "Hafenbecken"},
    {"AX_StehendesGewaesser", "Stehendes Gewässer"},
    {"AX_Meer", "Meer"}};

constexpr double Schrifthöhe = 2.5;      // parcel numbers
constexpr double KleineSchrift = 2.0;    // land use and soil
constexpr double Schraffurabstand = 1.0; // metres between the hatch lines of a building
constexpr double Schraffurwinkel = 50.0; // gon

class Flächenzeichner {
public:
    Flächenzeichner(Zeichnungslauf& lauf, const std::filesystem::path& konfig)
        : m_lauf(lauf), m_texte(KonfigText(konfig / "ALKIS_Werteart.dat"),
                                KonfigText(konfig / "ALKIS_Nutzungsart.dat")) {}

    void Flurstücke();
    void BesondereGrenzen();
    // One class of areas: boundaries under `ea`, and a text at an inner point when `text` gives
    // one. `umriss`: SCH records too (buildings).
    void Klasse(std::string_view klasse, std::string_view ea,
                std::initializer_list<std::string_view> textspalten,
                const std::function<std::string(const Anweisung&)>& text, bool umriss = false);
    std::string Bodentext(const Anweisung& a);

private:
    Zeichnungslauf& m_lauf;
    Flächentexte m_texte;
};

void Flächenzeichner::Flurstücke() {
    Datenbank& db = m_lauf.db;
    std::unordered_map<std::string, std::pair<Lage, double>> nummernorte;
    if (db.TabelleVorhanden("AP_PTO_dientZurDarstellungVon#AX_Flurstueck")) {
        const std::string sql = Auswahl(db, "AP_PTO", {"position", "drehwinkel"},
                                        "JOIN \"AP_PTO_dientZurDarstellungVon#AX_Flurstueck\" r ON "
                                        "r.id = t.id WHERE t.art = 'ZAE_NEN'");
        if (!sql.empty()) {
            Anweisung a =
                db.VorbereitenNativ(Ersetzen(sql, "SELECT ", "SELECT r.\"AX_Flurstueck\", "));
            while (a.Schritt())
                if (const auto lage = ErsteLage(a.Text(1)))
                    nummernorte.emplace(a.Text(0), std::pair{*lage, LabelGon(a.Text(2))});
        }
    }
    const std::string sql =
        Auswahl(db, "AX_Flurstueck",
                {"id", "srsName", "gml:exterior", "gml:interior", "gml:Arc", "flurnummer",
                 "gemarkung/AX_Gemarkung_Schluessel/land",
                 "gemarkung/AX_Gemarkung_Schluessel/gemarkungsnummer",
                 "gemeindezugehoerigkeit/AX_Gemeindekennzeichen/regierungsbezirk",
                 "gemeindezugehoerigkeit/AX_Gemeindekennzeichen/kreis",
                 "gemeindezugehoerigkeit/AX_Gemeindekennzeichen/gemeinde",
                 "flurstuecksnummer/AX_Flurstuecksnummer/zaehler",
                 "flurstuecksnummer/AX_Flurstuecksnummer/nenner"});
    if (sql.empty())
        return;
    m_lauf.ui.Status(1, "GEOgraf-Ausgabe: Flurstücke...");
    std::vector<Gebiet> gebiete;
    std::unordered_map<std::string, std::uint32_t> erstesFlurstück;
    std::size_t ohneGeometrie = 0, offen = 0;
    Anweisung a = db.VorbereitenNativ(sql);
    for (std::size_t zeile = 1; a.Schritt(); ++zeile) {
        m_lauf.Abbruchprüfung(zeile);
        const std::string_view id = a.Text(0);
        if (!m_lauf.ImSystem("Flurstück", id, a.Text(1)))
            continue;
        const std::string land(a.Text(6));
        gebiete.push_back(
            {std::string(a.Text(5)), land + "-" + std::string(a.Text(7)),
             land + std::string(a.Text(8)) + std::string(a.Text(9)) + std::string(a.Text(10)),
             land + std::string(a.Text(8)) + std::string(a.Text(9))});
        const auto nummer = static_cast<std::uint32_t>(gebiete.size() - 1);
        bool ringOffen = false;
        const std::size_t ringe = UmringeGehen(
            a.Text(2), a.Text(3), a.Text(4),
            [&](const Lage& p, const Lage& q, const std::optional<Lage>& m) {
                const auto [eintrag, neu] =
                    erstesFlurstück.try_emplace(Segmentschlüssel(p, q, m), nummer);
                const int rang = neu ? Flurstücksgrenze
                                     : RangZwischen(gebiete[eintrag->second], gebiete[nummer]);
                m_lauf.zeichnung.Segment(p, q, m, rang, EbeneArtDesRangs(rang));
            },
            &ringOffen);
        if (ringe == 0) {
            ++ohneGeometrie;
            continue;
        }
        offen += ringOffen ? 1 : 0;
        const Polygonmenge polygon =
            PolygonAusTexten(a.Text(2), a.Text(3), a.Text(4), StandardPfeilhöhe);
        if (m_lauf.umringe)
            m_lauf.zeichnung.Fläche("1.1", 0, 0, 0, polygon.außen, polygon.innen);
        if (!m_lauf.texte)
            continue;
        std::string text = std::to_string(std::atoll(std::string(a.Text(11)).c_str()));
        if (const long long nenner = std::atoll(std::string(a.Text(12)).c_str()); nenner > 0)
            text += "_" + std::to_string(nenner);
        if (const auto ort = nummernorte.find(std::string(id)); ort != nummernorte.end()) {
            m_lauf.zeichnung.Text("2.233", ort->second.first, ort->second.first, Schrifthöhe,
                                  ort->second.second, 1, text);
        } else if (const auto mitte = Innenpunkt(polygon)) {
            m_lauf.zeichnung.Text("2.233", *mitte, *mitte, Schrifthöhe, 0, 1, text);
        }
    }
    if (ohneGeometrie > 0)
        m_lauf.protokoll.Eintrag("GEOgraf-Ausgabe: " + std::to_string(ohneGeometrie) +
                                 " Flurstücke ohne Geometrie übersprungen...");
    if (offen > 0)
        m_lauf.protokoll.Eintrag(
            "GEOgraf-Ausgabe: " + std::to_string(offen) +
            " Flurstücke mit nicht geschlossenem Umring, geschlossen gezeichnet...");
    m_lauf.übersprungen += ohneGeometrie;
}

void Flächenzeichner::BesondereGrenzen() {
    const std::string sql =
        Auswahl(m_lauf.db, "AX_BesondereFlurstuecksgrenze",
                {"id", "srsName", "position", "gml:Arc", "artDerFlurstuecksgrenze"});
    if (sql.empty())
        return;
    Anweisung a = m_lauf.db.VorbereitenNativ(sql);
    for (std::size_t zeile = 1; a.Schritt(); ++zeile) {
        m_lauf.Abbruchprüfung(zeile);
        if (!m_lauf.ImSystem("Besondere Flurstücksgrenze", a.Text(0), a.Text(1)))
            continue;
        const int rang = RangDerCodes(a.Text(4));
        const Bögen bögen(a.Text(3));
        for (const Ring& linie : RingeAusText(a.Text(2), "", 0, nullptr))
            SegmenteGehen(linie.punkte, bögen, false,
                          [&](const Lage& p, const Lage& q, const std::optional<Lage>& m) {
                              m_lauf.zeichnung.Segment(p, q, m, rang, EbeneArtDesRangs(rang));
                          });
    }
}

void Flächenzeichner::Klasse(std::string_view klasse, std::string_view ea,
                             std::initializer_list<std::string_view> textspalten,
                             const std::function<std::string(const Anweisung&)>& text,
                             bool umriss) {
    std::vector<std::string_view> spalten = {"id", "srsName", "gml:exterior", "gml:interior",
                                             "gml:Arc"};
    spalten.insert(spalten.end(), textspalten.begin(), textspalten.end());
    const std::string sql = Auswahl(m_lauf.db, klasse, spalten);
    if (sql.empty())
        return;
    m_lauf.ui.Status(1, "GEOgraf-Ausgabe: " + std::string(klasse) + "...");
    std::size_t ohneGeometrie = 0;
    Anweisung a = m_lauf.db.VorbereitenNativ(sql);
    for (std::size_t zeile = 1; a.Schritt(); ++zeile) {
        m_lauf.Abbruchprüfung(zeile);
        if (!m_lauf.ImSystem(klasse, a.Text(0), a.Text(1)))
            continue;
        const std::size_t ringe =
            UmringeGehen(a.Text(2), a.Text(3), a.Text(4),
                         [&](const Lage& p, const Lage& q, const std::optional<Lage>& m) {
                             m_lauf.zeichnung.Segment(p, q, m, 1, ea);
                         });
        if (ringe == 0) {
            ++ohneGeometrie;
            continue;
        }
        if (!(umriss && (m_lauf.umringe || m_lauf.schraffur)) && !(m_lauf.texte && text))
            continue;
        const Polygonmenge polygon =
            PolygonAusTexten(a.Text(2), a.Text(3), a.Text(4), StandardPfeilhöhe);
        if (umriss && m_lauf.schraffur)
            m_lauf.zeichnung.Fläche(ea, 1, Schraffurabstand, Schraffurwinkel, polygon.außen,
                                    polygon.innen);
        else if (umriss && m_lauf.umringe)
            m_lauf.zeichnung.Fläche(ea, 0, 0, 0, polygon.außen, polygon.innen);
        if (m_lauf.texte && text)
            if (const std::string t = text(a); !t.empty())
                if (const auto mitte = Innenpunkt(polygon))
                    m_lauf.zeichnung.Text(ea, *mitte, *mitte, KleineSchrift, 0, 1, t);
    }
    if (ohneGeometrie > 0)
        m_lauf.protokoll.Eintrag("GEOgraf-Ausgabe: " + std::to_string(ohneGeometrie) + " Objekte " +
                                 std::string(klasse) + " ohne Geometrie übersprungen...");
    m_lauf.übersprungen += ohneGeometrie;
}

std::string Flächenzeichner::Bodentext(const Anweisung& a) {
    // "L4V 60/58": soil type, state and origin, then the soil number and the field number.
    std::string text =
        m_texte.Bodentext("bodenart", a.Text(5)) +
        m_texte.Bodentext("zustandsstufeOderBodenstufe", a.Text(6)) +
        m_texte.Bodentext("entstehungsartOderKlimastufeWasserverhaeltnisse", a.Text(7));
    text = Ersetzen(text, " / ", "");
    const auto zahl = [](std::string_view t) {
        const long long z = std::atoll(std::string(TrimmeLeerzeichen(t)).c_str());
        return z > 0 ? std::to_string(z) : std::string();
    };
    const std::string boden = zahl(a.Text(8)), acker = zahl(a.Text(9));
    if (!boden.empty())
        text += " " + boden + (acker.empty() ? "" : "/" + acker);
    return std::string(TrimmeLeerzeichen(text));
}

} // namespace

void FlächenZeichnen(Zeichnungslauf& lauf, const std::filesystem::path& konfigOrdner) {
    Flächenzeichner z(lauf, konfigOrdner);
    z.Flurstücke();
    z.BesondereGrenzen();
    lauf.zeichnung.SegmenteSchreiben();
    z.Klasse("AX_BauRaumOderBodenordnungsrecht", "2.1", {}, nullptr);
    lauf.zeichnung.SegmenteSchreiben();
    z.Klasse("AX_Gebaeude", "11.1", {}, nullptr, true);
    lauf.zeichnung.SegmenteSchreiben();
    for (const auto& [klasse, beschriftung] : Nutzungsklassen)
        z.Klasse(klasse, "21.1", {},
                 [t = std::string(beschriftung)](const Anweisung&) { return t; });
    lauf.zeichnung.SegmenteSchreiben();
    const auto bodentext = [&z](const Anweisung& a) { return z.Bodentext(a); };
    for (std::string_view klasse :
         {"AX_Bodenschaetzung", "AX_MusterLandesmusterUndVergleichsstueck"})
        z.Klasse(klasse, "81.1401",
                 {"bodenart", "zustandsstufeOderBodenstufe",
                  "entstehungsartOderKlimastufeWasserverhaeltnisse",
                  "bodenzahlOderGruenlandgrundzahl", "ackerzahlOderGruenlandzahl"},
                 bodentext);
    lauf.zeichnung.SegmenteSchreiben();
}

} // namespace flurix::nas
