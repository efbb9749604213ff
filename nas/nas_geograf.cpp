// PositionNachGG: the points and labels of the NAS drawing and the run around it; the areas and
// their boundaries are in nas_geograf_flaechen.cpp.

#include "nas/nas_geograf.hpp"

#include "core/datenbank.hpp"
#include "core/fehler.hpp"
#include "core/jetzt.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "core/zieldatei.hpp"
#include "nas/nas_geograf_lesen.hpp"
#include "nas/nas_protokoll.hpp"

#include <charconv>
#include <cmath>
#include <ctime>
#include <unordered_map>

namespace flurix::nas {
namespace {

// The place of a point from its Punktort and the quality the Punktort gives.
struct Punktort {
    Lage lage;
    std::string srs, stufe, wert, vertrauen;
};

// The Punktorte of all points by the point's id: of the map (TA), of the building (AG), then the
// others (AU); the first found wins.
std::unordered_map<std::string, Punktort> PunktorteLesen(Datenbank& db) {
    std::unordered_map<std::string, Punktort> orte;
    for (std::string_view art : {"TA", "AG", "AU"}) {
        const std::string tabelle = "AX_Punktort" + std::string(art);
        const std::string beziehung = tabelle + "_istTeilVon#ori_Punkt";
        if (!db.TabelleVorhanden(beziehung))
            continue;
        std::string sql =
            Auswahl(db, tabelle,
                    {"position", "srsName", "qualitaetsangaben/AX_DQPunktort/genauigkeitsstufe",
                     "qualitaetsangaben/AX_DQPunktort/genauigkeitswert",
                     "qualitaetsangaben/AX_DQPunktort/vertrauenswuerdigkeit"},
                    "JOIN \"" + beziehung + "\" r ON r.id = t.id");
        if (sql.empty())
            continue;
        Anweisung a = db.VorbereitenNativ(Ersetzen(sql, "SELECT ", "SELECT r.\"ori_Punkt\", "));
        while (a.Schritt()) {
            const auto lage = ErsteLage(a.Text(1));
            if (!lage)
                continue;
            orte.try_emplace(std::string(a.Text(0)),
                             Punktort{*lage, std::string(a.Text(2)), std::string(a.Text(3)),
                                      std::string(a.Text(4)), std::string(a.Text(5))});
        }
    }
    return orte;
}

// One class of points: its Ebene.Art, the column of its mark and of its remark ("" when it has
// none), whether a DA line carries its data.
struct Punktklasse {
    std::string_view klasse, ebeneArt, marke, bemerkung;
    bool daten;
};
constexpr Punktklasse Punktklassen[] = {
    {"AX_Grenzpunkt", "52.1", "abmarkung_Marke", "bemerkungZurAbmarkung", true},
    {"AX_Aufnahmepunkt", "51.1", "vermarkung_Marke", "", true},
    {"AX_Sicherungspunkt", "51.2", "vermarkung_Marke", "", true},
    {"AX_SonstigerVermessungspunkt", "51.3", "vermarkung_Marke", "", true},
    {"AX_BesondererGebaeudepunkt", "11.2", "", "", false}};

void PunkteZeichnen(Zeichnungslauf& lauf) {
    const auto orte = PunktorteLesen(lauf.db);
    for (const Punktklasse& k : Punktklassen) {
        const std::string sql = Auswahl(lauf.db, k.klasse,
                                        {"id", "punktkennung", k.marke.empty() ? "id" : k.marke,
                                         k.bemerkung.empty() ? "id" : k.bemerkung});
        if (sql.empty())
            continue;
        lauf.ui.Status(1, "GEOgraf-Ausgabe: " + std::string(k.klasse) + "...");
        std::size_t ohneOrt = 0;
        Anweisung a = lauf.db.VorbereitenNativ(sql);
        for (std::size_t zeile = 1; a.Schritt(); ++zeile) {
            lauf.Abbruchprüfung(zeile);
            const auto ort = orte.find(std::string(a.Text(0)));
            if (ort == orte.end()) {
                ++ohneOrt;
                continue;
            }
            if (!lauf.ImSystem(k.klasse, a.Text(0), ort->second.srs))
                continue;
            std::string daten;
            if (k.daten)
                daten = ";ABM=" + std::string(k.marke.empty() ? "" : a.Text(2)) +
                        ";GST=" + ort->second.stufe + ";GWT=" + ort->second.wert +
                        ";LZK=" + ort->second.vertrauen +
                        ";BEM=" + std::string(k.bemerkung.empty() ? "" : a.Text(3));
            lauf.zeichnung.Punkt(a.Text(1), k.ebeneArt, ort->second.lage, daten);
        }
        if (ohneOrt > 0)
            lauf.protokoll.Eintrag("GEOgraf-Ausgabe: " + std::to_string(ohneOrt) + " Punkte " +
                                   std::string(k.klasse) + " ohne Punktort übersprungen...");
        lauf.übersprungen += ohneOrt;
    }
}

// The labels of AP_PTO but the parcel numbers: house numbers (text from the address when the
// label has none) on the building layer, the others as topography; and those of AP_LTO.
void BeschriftungenZeichnen(Zeichnungslauf& lauf) {
    Datenbank& db = lauf.db;
    const bool mitBezug = db.TabelleVorhanden("AP_PTO_dientZurDarstellungVon#AX_Flurstueck") &&
                          db.TabelleVorhanden("AX_LagebezeichnungMitHausnummer");
    const std::string sql = Auswahl(
        db, "AP_PTO", {"id", "srsName", "art", "schriftinhalt", "position", "drehwinkel"},
        mitBezug ? "LEFT JOIN \"AP_PTO_dientZurDarstellungVon#AX_Flurstueck\" r ON r.id = t.id "
                   "LEFT JOIN \"AX_LagebezeichnungMitHausnummer\" l ON l.id = r.\"AX_Flurstueck\""
                 : "");
    if (!sql.empty()) {
        Anweisung a =
            db.VorbereitenNativ(mitBezug ? Ersetzen(sql, "SELECT ", "SELECT l.\"hausnummer\", ")
                                         : Ersetzen(sql, "SELECT ", "SELECT '', "));
        for (std::size_t zeile = 1; a.Schritt(); ++zeile) {
            lauf.Abbruchprüfung(zeile);
            const std::string_view art = a.Text(3);
            if (art == "ZAE_NEN" || !lauf.ImSystem("AP_PTO", a.Text(1), a.Text(2)))
                continue;
            std::string text(TrimmeLeerzeichen(a.Text(4)));
            if (text.empty() && art == "HNR")
                text = TrimmeLeerzeichen(a.Text(0));
            const auto lage = ErsteLage(a.Text(5));
            if (text.empty() || !lage)
                continue;
            lauf.zeichnung.Text(art == "HNR" ? "84.1" : "81.1", *lage, *lage,
                                art == "HNR" ? 2.0 : 2.5, LabelGon(a.Text(6)), 1, text);
        }
    }
    const std::string linien =
        Auswahl(db, "AP_LTO", {"id", "srsName", "schriftinhalt", "position"});
    if (linien.empty())
        return;
    Anweisung a = db.VorbereitenNativ(linien);
    while (a.Schritt()) {
        const std::string text(TrimmeLeerzeichen(a.Text(2)));
        const auto ringe = RingeAusText(a.Text(3), "", 0, nullptr);
        if (text.empty() || ringe.empty() || ringe.front().punkte.size() < 2 ||
            !lauf.ImSystem("AP_LTO", a.Text(0), a.Text(1)))
            continue;
        // Along the line: at its middle, in the direction from its first to its last point.
        const Punkt& p = ringe.front().punkte.front();
        const Punkt& q = ringe.front().punkte.back();
        const Lage mitte{(p.x + q.x) / 2, (p.y + q.y) / 2};
        char rad[32];
        const auto ende =
            std::to_chars(rad, rad + sizeof rad, std::atan2(q.y - p.y, q.x - p.x)).ptr;
        lauf.zeichnung.Text("81.1", mitte, mitte, 2.5, LabelGon(std::string_view(rad, ende)), 1,
                            text);
    }
}

// The coordinate system of the parcels: the srsName most of them have ("25832_32").
std::string SystemDerFlurstücke(Datenbank& db) {
    if (!db.TabelleVorhanden("AX_Flurstueck") ||
        Auswahl(db, "AX_Flurstueck", {"srsName"}).find("''") != std::string::npos)
        return {};
    Anweisung a =
        db.VorbereitenNativ("SELECT \"srsName\" FROM \"AX_Flurstueck\" WHERE \"srsName\" <> '' "
                            "GROUP BY 1 ORDER BY count(*) DESC LIMIT 1");
    return a.Schritt() ? std::string(a.Text(0)) : std::string();
}

// The zone written before each easting: that of a UTM system (EPSG 25831 to 25833, "25832_32"
// gives "32"). Gauß-Krüger eastings carry their strip already.
std::string Zone(std::string_view srs) {
    const std::string_view epsg = srs.substr(0, srs.find('_'));
    if (epsg == "25831" || epsg == "25832" || epsg == "25833")
        return std::string(epsg.substr(3));
    return {};
}

} // namespace

void DefAusgabeGGout(NasZeichnungsauftrag& auftrag, std::string_view auswahl) {
    auftrag.texte = auftrag.schraffur = false;
    for (std::string_view teil : Teilen(auswahl, ';')) {
        teil = TrimmeLeerzeichen(teil);
        if (teil == "te")
            auftrag.texte = true;
        else if (teil == "sch")
            auftrag.schraffur = true;
    }
}

NasZeichnungsbericht PositionNachGG(Datenbank& db, const std::filesystem::path& ziel,
                                    const NasZeichnungsauftrag& auftrag, NasProtokoll& protokoll,
                                    Oberfläche& ui) {
    Zieldatei datei(ziel);
    const std::string srs = SystemDerFlurstücke(db);
    GeografZeichnung zeichnung(datei, auftrag.meridianKZ ? Zone(srs) : std::string());
    std::string datum = auftrag.datum, uhrzeit = auftrag.uhrzeit;
    if (datum.empty() || uhrzeit.empty()) {
        const Zeitangabe jetzt = JetztLokal();
        datum = jetzt.datum;
        uhrzeit = jetzt.uhrzeit;
    }
    zeichnung.Kopf(datum, uhrzeit);
    Zeichnungslauf lauf{db, zeichnung, protokoll, ui, srs};
    lauf.texte = auftrag.texte;
    lauf.schraffur = auftrag.schraffur;
    lauf.umringe = auftrag.umringe;
    PunkteZeichnen(lauf);
    FlächenZeichnen(lauf, auftrag.konfigOrdner);
    if (lauf.texte)
        BeschriftungenZeichnen(lauf);
    datei.Abschließen();
    const auto& n = zeichnung.Gezählt();
    protokoll.Eintrag("GEOgraf-Ausgabe: " + std::to_string(n.punkte) + " Punkte, " +
                      std::to_string(n.linien) + " Linien, " + std::to_string(n.texte) +
                      " Texte, " + std::to_string(n.flächen) + " Flächen nach \"" + ziel.string() +
                      "\"...");
    return {n.punkte, n.linien, n.texte, n.flächen, lauf.übersprungen};
}

} // namespace flurix::nas
