#include "map/referenz.hpp"

#include "core/einstellungen.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "map/geodaesie.hpp"
#include "core/text.hpp"

#include <cmath>
#include <vector>

namespace flurix::karte {
namespace {

// A coordinate as the map writes it: rounded to 3 places, in its shortest form, always with a
// point (to_chars never writes the comma of a locale).
std::string Koordinatentext(double wert) { return ZahlGerundet(wert, 3); }

std::string Ganzzahltext(double wert) { return std::to_string(std::llround(wert)); }

std::string PaarText(double y, double x) { return Koordinatentext(y) + ";" + Koordinatentext(x); }

std::string KommaZuPunkt(std::string_view text) { return Ersetzen(text, ",", "."); }

constexpr std::string_view MeldungMaßstabGroß =
    "Der Maßstab ist sehr groß! Die Anfrage kann eventuell nicht bearbeitet werden!";
constexpr std::string_view MeldungZoomKlein = "Zoom-Fenster zu klein! Bitte Bereich neu auswählen!";
constexpr std::string_view MeldungNichtImStreifen =
    "Die Referenzkoordinaten befinden sich nicht im EPSG:32583 2-3";
constexpr std::string_view MeldungPaarFalsch =
    "Die Referenzkoordinaten sind falsch vorgegebenen!\nBsp.: EPSG=25833 Y=457000 X=5754000";
constexpr std::string_view TitelMeridianstreifen = "unzulässiger Meridianstreifen";

} // namespace

double MapReferenz::Bildschirmmaßstab() const {
    return m_maßstabZahl * ZahlLesen(MapScreenDpi) / 72.0;
}

std::string MapReferenz::Streifen() const {
    return EPSG.size() >= 2 ? EPSG.substr(EPSG.size() - 2) : EPSG;
}

void MapReferenz::MaßstabSchritt(double schritt) {
    MapMaßstabKorr = schritt;
    KorrMaßstab += schritt;
}

void MapReferenz::SchrittZurücknehmen() {
    KorrMaßstab -= MapMaßstabKorr;
    MapMaßstabKorr = 0;
}

void MapReferenz::MaßstabEingeben(double S) {
    const double korrektur = S / ZahlLesen(MapScreenDpi) * 72.0 - ZahlLesen(MapStartMaßstab);
    MapMaßstabKorr = korrektur - KorrMaßstab;
    KorrMaßstab = korrektur;
}

bool MapReferenz::MaßstabRechnen() {
    const double n = ZahlLesen(MapStartMaßstab) + KorrMaßstab;
    const double s = n * ZahlLesen(MapScreenDpi) / 72.0;
    if (s < KleinsterMaßstab) {
        SchrittZurücknehmen();
        return false;
    }
    m_maßstabZahl = n;
    MaßstabManu = Ganzzahltext(s);
    AnzMaßstab = "1:" + MaßstabManu;
    return true;
}

void MapReferenz::BitmapFaktorSetzen(std::string_view text) {
    MapBitmapFaktor = KommaZuPunkt(text);
}

void MapReferenz::BitmapFaktorWählen(bool nurAlkis) {
    const std::string& faktor = nurAlkis ? BitmapFaktorNurAlkis : BitmapFaktorAllgemein;
    if (!faktor.empty())
        MapBitmapFaktor = faktor;
}

std::string BitmapFaktorText(double faktor) { return Zahlmuster(faktor, "0.0"); }

bool BoxTextGültig(std::string_view yMin, std::string_view xMin, std::string_view yMax,
                   std::string_view xMax) {
    // Kept as a comparison of texts: the map has always decided so, and a numeric test would let
    // other boxes through than the ones people know to be refused.
    return yMin < yMax || xMin < xMax;
}

Rahmen RahmenBerechnen(MapReferenz& ref, double breitePx, double höhePx, Oberfläche& ui) {
    ref.MaßstabRechnen();
    const double n = ref.MaßstabZahl();
    const double faktor = ZahlLesen(ref.MapBitmapFaktor);

    double bildBreite = breitePx * faktor;
    double bildHöhe = höhePx * faktor;
    double papierBreite = breitePx;
    double papierHöhe = höhePx;
    if (ref.Druckvorbereitung) {
        // The print picture is measured at the screen's density, its paper at 72 dpi.
        const double dpi = ZahlLesen(ref.MapScreenDpi);
        bildBreite = ref.DruckBreite * faktor * dpi / 72.0;
        bildHöhe = ref.DruckHöhe * faktor * dpi / 72.0;
        papierBreite = ref.DruckBreite;
        papierHöhe = ref.DruckHöhe;
    }
    ref.BildBreite = static_cast<float>(bildBreite);
    ref.BildHöhe = static_cast<float>(bildHöhe);
    ref.BildBreiteText = Ganzzahltext(bildBreite);
    ref.BildHöheText = Ganzzahltext(bildHöhe);
    ref.FensterBreite = PunkteNachMeter(papierBreite);
    ref.FensterHöhe = PunkteNachMeter(papierHöhe);

    const double halbeBreite = ref.FensterBreite / 2 * n;
    const double halbeHöhe = ref.FensterHöhe / 2 * n;
    double yMin, xMin, yMax, xMax;
    if (!ref.ZoomFenster.empty()) {
        // The zoom tool gives the corners; the factor never changes the ground, the centre follows.
        const std::vector<std::string_view> ecken = Teilen(ref.ZoomFenster, ';');
        const auto ecke = [&](std::size_t i) {
            return i < ecken.size() ? ZahlLesen(ecken[i]) : 0.0;
        };
        yMin = ecke(0);
        xMin = ecke(1);
        yMax = ecke(2);
        xMax = ecke(3);
        ref.ZentrumY = yMin + halbeBreite;
        ref.ZentrumX = xMin + halbeHöhe;
    } else {
        yMin = ref.ZentrumY - halbeBreite;
        xMin = ref.ZentrumX - halbeHöhe;
        yMax = ref.ZentrumY + halbeBreite;
        xMax = ref.ZentrumX + halbeHöhe;
    }
    ref.ZentrumY = Gerundet(ref.ZentrumY, 3);
    ref.ZentrumX = Gerundet(ref.ZentrumX, 3);
    ref.YMin = Koordinatentext(yMin);
    ref.XMin = Koordinatentext(xMin);
    ref.YMax = Koordinatentext(yMax);
    ref.XMax = Koordinatentext(xMax);
    ref.BBox = ref.YMin + "," + ref.XMin + "," + ref.YMax + "," + ref.XMax;
    ref.Referenzkoordinaten = PaarText(ref.ZentrumY, ref.ZentrumX);

    if (bildBreite > GrößteBildseite || bildHöhe > GrößteBildseite)
        ui.Meldung(MeldungMaßstabGroß, ProduktTitel, Stil::Warnung);

    Rahmen rahmen{ref.BBox, ref.BildBreiteText, ref.BildHöheText, true};
    if (!BoxTextGültig(ref.YMin, ref.XMin, ref.YMax, ref.XMax)) {
        ui.Meldung(MeldungZoomKlein, ProduktTitel, Stil::Warnung);
        rahmen.weiter = false;
    }
    return rahmen;
}

bool EpsgPrüfen(const MapReferenz& ref, Oberfläche& ui) {
    if (ZahlLesen(ref.EPSG) != 0)
        return true;
    ui.Meldung("EPSG-Code: " + ref.EPSG + " ist falsch! Bitte wiederholen Sie Ihre Aktion!",
               "Map-Viewer", Stil::Fehler);
    return false;
}

Referenzeingabe ReferenztextLesen(std::string_view text) {
    const std::string_view getrimmt = TrimmeLeerzeichen(text);
    if (getrimmt.empty())
        return {};
    if (getrimmt.find(';') != std::string_view::npos) {
        const std::vector<std::string_view> seiten = Teilen(getrimmt, ';');
        return {ReferenzArt::Paar, KommaZuPunkt(TrimmeLeerzeichen(seiten[0])) + ";" +
                                       KommaZuPunkt(TrimmeLeerzeichen(seiten[1]))};
    }
    if (getrimmt.find(' ') != std::string_view::npos) {
        const std::string gesäubert = TextSäubern(getrimmt);
        const std::vector<std::string_view> felder = Teilen(gesäubert, ' ');
        return {ReferenzArt::Paar, std::string(felder[0]) + ";" + std::string(felder[1])};
    }
    // One word and no separator: a parcel key, which the gazetteer search takes.
    return {ReferenzArt::Flurstückskennzeichen, std::string(getrimmt)};
}

bool NeueReferenz(MapReferenz& ref, std::string_view text, Oberfläche& ui) {
    const Referenzeingabe eingabe = ReferenztextLesen(text);
    const std::vector<std::string_view> teile = Teilen(eingabe.text, ';');
    if (teile.size() < 2) {
        ui.Meldung(MeldungPaarFalsch, ProduktTitel, Stil::Warnung);
        return false;
    }
    const double y = ZahlLesen(teile[0]);
    const double x = ZahlLesen(teile[1]);
    if (y < 0 || x <= 900000) {
        ui.Meldung(MeldungNichtImStreifen, ProduktTitel, Stil::Warnung);
        return false;
    }
    ref.ZentrumY = y;
    ref.ZentrumX = x;
    ref.Referenzkoordinaten = eingabe.text;
    return true;
}

bool StreifenWechseln(MapReferenz& ref, std::string_view neueEpsg) {
    if (ref.EPSG.empty())
        ref.EPSG = "25833";
    if (neueEpsg == ref.EPSG)
        return false;
    const std::vector<std::string_view> teile = Teilen(ref.Referenzkoordinaten, ';');
    KoordinatenSatz satz;
    satz.Wert1 = ZahlLesen(teile[0]);
    satz.Wert2 = teile.size() > 1 ? ZahlLesen(teile[1]) : 0.0;
    // The combo offers the two strips only: from 32 the way leads to 33, from any other to 32.
    const bool von32 = ref.EPSG == "25832";
    satz =
        GeographischNachETRS(ETRSNachGeographisch(std::move(satz), von32 ? 9 : 15), von32 ? 15 : 9);
    ref.ZentrumY = satz.Wert1;
    ref.ZentrumX = satz.Wert2;
    ref.Referenzkoordinaten = PaarText(satz.Wert1, satz.Wert2);
    ref.EPSG = std::string(neueEpsg);
    return true;
}

Startzustand StartzustandLesen(const Einstellungen& einstellungen,
                               const std::optional<Kartenmitte>& mitte, std::string_view epsg) {
    Startzustand start;
    MapReferenz& ref = start.referenz;
    start.dienst = einstellungen.Wert("StartMapWebService");
    ref.EPSG = std::string(epsg);
    if (mitte) {
        // A centre of the command line is a pair of strip 33 unless the window says otherwise.
        if (ref.EPSG.empty())
            ref.EPSG = "25833";
        ref.ZentrumY = mitte->y;
        ref.ZentrumX = mitte->x;
        ref.Referenzkoordinaten = PaarText(mitte->y, mitte->x);
    } else {
        const Referenzeingabe koo = ReferenztextLesen(einstellungen.Wert("StartMapWebServiceKoo"));
        if (koo.art == ReferenzArt::Paar) {
            const std::vector<std::string_view> teile = Teilen(koo.text, ';');
            ref.ZentrumY = ZahlLesen(teile[0]);
            ref.ZentrumX = ZahlLesen(teile[1]);
            ref.Referenzkoordinaten = koo.text;
        }
    }
    if (ref.EPSG.empty())
        ref.EPSG = einstellungen.Wert("StartMapWebServiceEPSG");
    if (ref.EPSG.empty())
        ref.EPSG = "25833";
    const double S = ZahlLesen(einstellungen.Wert("StartMapWebServiceMaßstab"));
    if (S > 0) {
        ref.MaßstabEingeben(S);
        ref.MaßstabManu = Ganzzahltext(S);
    }
    ref.BitmapFaktorNurAlkis = KommaZuPunkt(einstellungen.Wert("MapBitmapFaktor_nur_ALKIS"));
    ref.BitmapFaktorAllgemein = KommaZuPunkt(einstellungen.Wert("MapBitmapFaktor_allgemein"));
    return start;
}

bool MeridianstreifenPrüfen(std::string_view ersterRechtswert, Oberfläche& ui) {
    const std::string_view wert = TrimmeLeerzeichen(ersterRechtswert);
    if (!wert.empty() && (wert.front() == '2' || wert.front() == '3'))
        return true;
    ui.Meldung("Im Map-Viewer können nur ETRS89-Koordinaten im 32. und 33. Meridianstreifen "
               "visualisiert werden!\nFalsches Koordinatensystem? Bitte prüfen Sie Ihre Daten!\n\n"
               "Y-Koordinate: " +
                   std::string(ersterRechtswert),
               TitelMeridianstreifen, Stil::Warnung);
    return false;
}

} // namespace flurix::karte
