// The NAS drawing export: the work tables drawn as DXF, one ENTITIES section per group.

#include "export/dxf_nas.hpp"

#include "core/datenbank.hpp"
#include "core/text.hpp"
#include "export/dxf_nas_tabellen.hpp"
#include "export/dxf_schreiber.hpp"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <numbers>
#include <optional>
#include <string>
#include <system_error>

#include <unistd.h>

namespace flurix::ausgabe {

namespace {

// Every entity takes its colour from its layer (BYLAYER): the LAYER table holds the colours.
constexpr int NachLayer = 256;

// Point numbers and data stand beside the symbol, up and to the right of it, 1 m high.
constexpr double BeschriftungHöhe = 1.0;
constexpr double BeschriftungVersatz = 0.5;

// Ebene and Art of a key "11.2" as numbers; -1 for a piece that is none.
std::pair<long, long> EbeneUndArt(std::string_view schlüssel) {
    const auto zahl = [](std::string_view s) {
        long wert = -1;
        const auto [ende, fehler] = std::from_chars(s.data(), s.data() + s.size(), wert);
        return fehler == std::errc() && ende == s.data() + s.size() && !s.empty() ? wert : -1L;
    };
    const auto punkt = schlüssel.find('.');
    if (punkt == std::string_view::npos)
        return {zahl(schlüssel), -1};
    return {zahl(schlüssel.substr(0, punkt)), zahl(schlüssel.substr(punkt + 1))};
}

// The work database: "tmp_dao_dxf_export_<Zeitstempel>_<pid>.sqlite", the stamp to the
// millisecond, so that two exports never share one.
std::filesystem::path Arbeitsdatenbank(const std::filesystem::path& ordner) {
    const auto jetzt = std::chrono::system_clock::now();
    const std::time_t sekunden = std::chrono::system_clock::to_time_t(jetzt);
    const auto millis =
        std::chrono::duration_cast<std::chrono::milliseconds>(jetzt.time_since_epoch()).count() % 1000;
    std::tm zeit{};
    localtime_r(&sekunden, &zeit);
    char stempel[32];
    const std::size_t länge = std::strftime(stempel, sizeof stempel, "%Y%m%d%H%M%S", &zeit);
    std::snprintf(stempel + länge, sizeof stempel - länge, "%03d", static_cast<int>(millis));
    const std::filesystem::path basis = ordner.empty() ? std::filesystem::temp_directory_path() : ordner;
    return basis / ("tmp_dao_dxf_export_" + std::string(stempel) + "_" + std::to_string(::getpid()) + ".sqlite");
}

class Zeichner {
public:
    Zeichner(Datenbank& db, DxfSchreiber& dxf, const DxfNasOptionen& optionen, DxfNasZählung& zählung)
        : m_db(db), m_dxf(dxf), m_optionen(optionen), m_zählung(zählung),
          m_stil(optionen.calibri ? "Calibri" : "ISO8") {}

    void Linien();
    void Texte();
    void Punkte();
    void Polylinien();

private:
    void Beschriftung(std::string_view layer, double y, double x, double versatz, std::string_view text);

    Datenbank& m_db;
    DxfSchreiber& m_dxf;
    const DxfNasOptionen& m_optionen;
    DxfNasZählung& m_zählung;
    std::string_view m_stil;
};

void Zeichner::Linien() {
    Anweisung a = m_db.VorbereitenNativ(
        "SELECT Layer, Radius, Richtung, PK1y, PK1x, PK2y, PK2x FROM GGLI ORDER BY rowid");
    while (a.Schritt()) {
        const std::string_view layer = a.Text(0);
        const std::string_view typ = NasDxfLinientyp(layer);
        const detail::DxfPunkt p1{a.Zahl(3), a.Zahl(4)}, p2{a.Zahl(5), a.Zahl(6)};
        const double radius = a.Zahl(1);
        if (!a.IstNull(1) && radius > 0) {
            const auto b = detail::BogenAusEndpunkten(p1, p2, radius, a.Ganzzahl(2) < 0 ? -1 : 1);
            m_dxf.Bogen(layer, typ, NachLayer, b.x, b.y, b.radius, b.start, b.ende);
        } else {
            m_dxf.Linie(layer, typ, NachLayer, p1.x, p1.y, p2.x, p2.y);
        }
        ++m_zählung.linien;
    }
}

void Zeichner::Texte() {
    Anweisung a = m_db.VorbereitenNativ(
        "SELECT Layer, Y, X, TX, Winkel, Hoehe, Ausrichtung FROM GGTE ORDER BY rowid");
    while (a.Schritt()) {
        const std::string_view layer = a.Text(0);
        const double y = a.Zahl(1), x = a.Zahl(2), winkel = a.Zahl(4), höhe = a.Zahl(5);
        const std::string_view text = a.Text(3);
        // The file counts the angle in gon from the Y axis, DXF in degrees from the x axis,
        // which is the same axis.
        DxfTextAngaben angaben{.x = y, .y = x, .höhe = höhe, .winkel = winkel * 0.9, .text = text,
                               .stil = m_stil, .horizontal = static_cast<int>(a.Ganzzahl(6)),
                               .vertikal = 2};
        const auto strich = text.find('_');
        if (strich == std::string_view::npos) {
            m_dxf.Text(layer, NachLayer, angaben);
        } else {
            // "Zähler_Nenner" as a fraction: the numerator above a stroke, the denominator below,
            // both centred on the text's point, the stroke as long as the longer of the two.
            const double bogen = winkel * std::numbers::pi / 200.0;
            const double rx = std::cos(bogen), ry = std::sin(bogen);
            const double abstand = 0.6 * höhe;
            const std::string_view zähler = text.substr(0, strich), nenner = text.substr(strich + 1);
            const double halbeBreite =
                0.5 * 0.8 * höhe * static_cast<double>(std::max(zähler.size(), nenner.size()));
            angaben.horizontal = 1;
            angaben.text = zähler;
            angaben.x = y - ry * abstand;
            angaben.y = x + rx * abstand;
            m_dxf.Text(layer, NachLayer, angaben);
            angaben.text = nenner;
            angaben.x = y + ry * abstand;
            angaben.y = x - rx * abstand;
            m_dxf.Text(layer, NachLayer, angaben);
            m_dxf.Linie(layer, "CONTINUOUS", NachLayer, y - rx * halbeBreite, x - ry * halbeBreite,
                        y + rx * halbeBreite, x + ry * halbeBreite);
        }
        ++m_zählung.texte;
    }
}

void Zeichner::Beschriftung(std::string_view layer, double y, double x, double versatz,
                            std::string_view text) {
    m_dxf.Text(layer, NachLayer,
               {.x = y + BeschriftungVersatz, .y = x + versatz, .höhe = BeschriftungHöhe,
                .text = text, .stil = m_stil, .vertikal = 2});
}

void Zeichner::Punkte() {
    Anweisung a = m_db.VorbereitenNativ(
        "SELECT Layer, EbeneArt, Y, X, Punktkennung, Nr, Sachdaten1, Sachdaten2, Sachdaten3 "
        "FROM GGPK ORDER BY rowid");
    while (a.Schritt()) {
        const std::string_view layer = a.Text(0);
        const long ebene = EbeneUndArt(a.Text(1)).first;
        const double y = a.Zahl(2), x = a.Zahl(3);
        std::string_view nummernLayer;
        if (ebene == 51) {
            m_dxf.Einfügen(layer, NachLayer, "S4", y, x);
            nummernLayer = "AMTLTXT_AUFNP";
        } else if (ebene == 52) {
            // The symbol by the mark: a stone, pipe, bolt ... (codes below 9000), "ohne Marke"
            // and the other codes from 9000, no mark given.
            const std::string_view marke = a.Text(6);
            long code = 0;
            const auto [ende, fehler] = std::from_chars(marke.data(), marke.data() + marke.size(), code);
            const bool zahl = fehler == std::errc() && ende == marke.data() + marke.size();
            m_dxf.Einfügen(layer, NachLayer, marke.empty() ? "S3073" : zahl && code < 9000 ? "S3125" : "S3005",
                           y, x);
            nummernLayer = "AMTLTXT_GRENZP";
        } else {
            m_dxf.Punkt(layer, NachLayer, y, x);
            if (ebene == 11)
                nummernLayer = "AMTLTXT_GEBAEUDE";
        }
        ++m_zählung.punkte;
        if (m_optionen.punktnummern && !nummernLayer.empty()) {
            const std::string_view kennung = a.Text(4);
            Beschriftung(nummernLayer, y, x, BeschriftungVersatz, kennung.empty() ? a.Text(5) : kennung);
        }
        if (m_optionen.sachdaten) {
            std::string daten(a.Text(7));
            const std::string_view bemerkung = a.Text(8);
            if (!bemerkung.empty() && (bemerkung != "BEM=" || daten.empty()))
                daten += (daten.empty() ? "" : " ") + std::string(bemerkung);
            // A remark without text says nothing.
            if (!daten.empty() && daten != "BEM=")
                Beschriftung("SACHDATEN_PKT", y, x, -BeschriftungVersatz - BeschriftungHöhe, daten);
        }
    }
}

void Zeichner::Polylinien() {
    Anweisung a = m_db.VorbereitenNativ(
        "SELECT Layer, SCHPos, Typ, Abstand, Winkel FROM GGSCH "
        "WHERE Layer IN ('AMTL_GEBAEUDE', 'FLURSTUECKE') ORDER BY rowid");
    while (a.Schritt()) {
        const std::string_view layer = a.Text(0);
        const bool gebäude = layer == "AMTL_GEBAEUDE";
        const std::string_view ziel = gebäude ? "GEBAEUDE_POLYLINE" : "FLURSTUECKE_POLYLINE";
        const std::string_view typ = NasDxfLinientyp(layer);
        const auto ringe = detail::PosRinge(a.Text(1));
        for (const auto& ring : ringe) {
            m_dxf.Polylinie(ziel, typ, NachLayer);
            for (const auto& p : ring)
                m_dxf.Vertex(ziel, typ, NachLayer, p.x, p.y);
            m_dxf.Seqend(ziel, typ, NachLayer);
            ++m_zählung.polylinien;
        }
        if (m_optionen.schraffur && a.Ganzzahl(2) == 1) {
            const auto strecken = detail::Schraffurlinien(ringe, a.Zahl(3), a.Zahl(4));
            for (const auto& s : strecken)
                m_dxf.Linie("GEBAEUDE_SCHRAFFUR", "CONTINUOUS", NachLayer, s.a.x, s.a.y, s.b.x, s.b.y);
            if (!strecken.empty())
                ++m_zählung.schraffuren;
        }
    }
}

std::string Anzahl(std::size_t n) { return std::to_string(n); }

Ergebnis Fehlgeschlagen(std::string_view was, Oberfläche& ui, const DxfNasZählung& gezählt,
                        DxfNasZählung* zählung) {
    const std::string meldung = "Error DXF-Export: " + std::string(was);
    ui.Meldung(meldung, ProduktTitel, Stil::Fehler);
    if (zählung != nullptr)
        *zählung = gezählt;
    return Ergebnis::Fehlschlag(meldung);
}

} // namespace

std::string NasDxfLayer(std::string_view kennung, std::string_view ebeneArt) {
    std::string layer = DxfLayerName(ebeneArt);
    if (layer.empty())
        return "0";
    const auto [ebene, art] = EbeneUndArt(TrimmeLeerzeichen(ebeneArt));
    if (kennung == "LI" && ebene == 1) {
        switch (art) {
        case 3:
            return "FLURGRENZE";
        case 4:
            return "GEMARKUNGSGRENZE";
        case 5:
            return "GEMEINDEGRENZE";
        case 6:
            return "KREISGRENZE";
        case 7:
            return "SONST_BESONDERE_FLSTGRENZE";
        default:
            return "FLURSTUECKE";
        }
    }
    if (kennung == "LI" && ebene == 2)
        return "BOV-GRENZEN";
    if (kennung == "TE" && (ebene == 1 || ebene == 2))
        return "AMTLTXT_FLURSTUECK";
    if (kennung == "PK" && ebene == 11)
        return "AMTLPKT_GEBAEUDE";
    return layer;
}

std::string_view NasDxfLinientyp(std::string_view layer) {
    struct Paar {
        std::string_view layer, linientyp;
    };
    // GEMARKUNGGRENZE without the "S" is the line type's name in the LTYPE table.
    static constexpr Paar paare[] = {
        {"FLURSTUECKE", "FLSTGRENZE"},         {"FLURGRENZE", "FLURGRENZE"},
        {"GEMARKUNGSGRENZE", "GEMARKUNGGRENZE"}, {"GEMEINDEGRENZE", "GEMEINDEGRENZE"},
        {"KREISGRENZE", "KREISGRENZE"},         {"BOV-GRENZEN", "BOVGRENZE"},
        {"AMTL_GEBAEUDE", "GEBAEUDE"},          {"TATS_NUTZUNG_ALB", "NUTZUNGSART"},
        {"BODENSCHAETZUNG", "BODENSCHAETZUNG"}, {"TOPOGRAFIE_GELAENDE", "GELAENDE"},
    };
    for (const Paar& p : paare)
        if (p.layer == layer)
            return p.linientyp;
    return "CONTINUOUS";
}

Ergebnis DXFExport(const std::filesystem::path& outDatei, const std::filesystem::path& ziel,
                   const DxfNasOptionen& optionen, Oberfläche& ui, DxfNasZählung* zählung) {
    const std::function<void(std::string_view)> protokoll =
        optionen.protokoll ? optionen.protokoll
                           : std::function<void(std::string_view)>(
                                 [&ui](std::string_view zeile) { ui.Protokoll(zeile); });
    DxfNasZählung gezählt;
    std::filesystem::path datenbank;
    // The work database goes whatever happens.
    struct Aufräumen {
        const std::filesystem::path& datei;
        ~Aufräumen() {
            std::error_code ec;
            if (!datei.empty())
                std::filesystem::remove(datei, ec);
        }
    } aufräumen{datenbank};
    try {
        datenbank = Arbeitsdatenbank(optionen.arbeitsverzeichnis);
        {
            std::error_code ec;
            std::filesystem::remove(datenbank, ec);
        }
        Datenbank db(datenbank);
        const detail::DxfNasBestand bestand = detail::DxfNasTabellenFüllen(db, outDatei, ui, protokoll);
        gezählt.übergangen = bestand.übergangen;
        DxfSchreiber dxf(ziel);
        // DXF x is the easting Y, DXF y the northing X.
        dxf.Anfang(bestand.yMin, bestand.xMin, bestand.yMax, bestand.xMax);
        Zeichner zeichner(db, dxf, optionen, gezählt);
        zeichner.Linien();
        dxf.AbschnittWechseln();
        zeichner.Texte();
        dxf.AbschnittWechseln();
        zeichner.Punkte();
        dxf.AbschnittWechseln();
        zeichner.Polylinien();
        dxf.Abschließen();
    } catch (const std::exception& e) {
        return Fehlgeschlagen(e.what(), ui, gezählt, zählung);
    } catch (...) {
        return Fehlgeschlagen("unbekannter Fehler", ui, gezählt, zählung);
    }
    protokoll("DXF-Export: " + Anzahl(gezählt.punkte) + " Punkte, " + Anzahl(gezählt.linien) +
                 " Linien, " + Anzahl(gezählt.texte) + " Texte, " + Anzahl(gezählt.polylinien) +
                 " Polylines, " + Anzahl(gezählt.schraffuren) + " Schraffuren exportiert...");
    protokoll(", DXF-Export nach \"" + ziel.string() + "\" komplett...");
    ui.Status(2, "DXF exportiert nach \"" + ziel.string() + "\"...");
    if (zählung != nullptr)
        *zählung = gezählt;
    return Ergebnis::Ok();
}

} // namespace flurix::ausgabe
