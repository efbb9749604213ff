#include "map/kartenabruf.hpp"

#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "map/dienstkatalog.hpp"
#include "map/http.hpp"
#include "map/layerauswahl.hpp"
#include "map/zugang.hpp"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <map>
#include <system_error>

namespace flurix::karte {
namespace {

using namespace std::chrono_literals;

constexpr char Titel[] = "Map-Viewer";

bool Enthält(std::string_view text, std::string_view teil) {
    return text.find(teil) != std::string_view::npos;
}

// "von 1:a bis 1:b" of the row, or nothing when the cell gives no range.
std::optional<std::pair<double, double>> Maßstabsbereich(std::string_view zelle) {
    const auto von = zelle.find("von 1:");
    const auto bis = zelle.find(" bis 1:");
    if (von == std::string_view::npos || bis == std::string_view::npos)
        return std::nullopt;
    return std::pair{ZahlLesen(zelle.substr(von + 6)), ZahlLesen(zelle.substr(bis + 7))};
}

// The scale check of the parcel services (name with "ALK"): they draw nothing outside the range
// their catalogue row gives, so a scale outside it is refused before anything is requested.
bool MaßstabPrüfen(const MapReferenz& ref, const Dienstkatalog& katalog, const std::string& dienst,
                   Oberfläche& ui) {
    const auto zeile = katalog.ZeileFinden(dienst);
    if (!zeile)
        return true;
    const auto bereich = Maßstabsbereich(katalog.Zelle(*zeile, "Maßstab"));
    const double dpi = ZahlLesen(ref.MapScreenDpi);
    const double s = (ZahlLesen(ref.MapStartMaßstab) + ref.KorrMaßstab) * dpi / 72;
    if (!bereich || (s >= bereich->first && s <= bereich->second))
        return true;
    ui.Meldung("Der Kartendienst " + dienst + " ist nur von 1:" +
                   std::to_string(std::lround(bereich->first)) + " bis 1:" +
                   std::to_string(std::lround(bereich->second)) + " definiert!",
               Titel, Stil::Warnung);
    return false;
}

Dienstwerte WerteDerZeile(const Dienstkatalog& katalog, std::size_t zeile) {
    Dienstwerte w;
    w.url = katalog.Zelle(zeile, "URL");
    w.getCapabilities = katalog.Zelle(zeile, "GetCapabilities");
    w.layers = LayerListe(katalog.Zelle(zeile, "Layer"), katalog.Zelle(zeile, "LayerAuswahl"));
    w.format = katalog.Zelle(zeile, "Format");
    w.style = katalog.Zelle(zeile, "Style");
    w.transparent = katalog.Prüfzelle(zeile, "Transparenz");
    return w;
}

bool NurParzellendienst(const Kartenwahl& wahl) {
    const auto aktiv = [](const std::string& d) { return !d.empty() && d != "ohne"; };
    return aktiv(wahl.dienste[0]) && Enthält(wahl.dienste[0], "ALKIS") && !aktiv(wahl.dienste[1]) &&
           !aktiv(wahl.dienste[2]);
}

// The downloads of the levels that have no cache file, all at once; polls for a cancel.
int Herunterladen(std::array<EbenenAnfrage, 3>& ebenen, const std::array<std::optional<HttpOptionen>, 3>& logins,
                  const Kartenumgebung& umgebung, Oberfläche& ui) {
    HttpMehrfach mehrfach;
    std::map<int, EbenenAnfrage*> laufend;
    for (std::size_t i = 0; i < ebenen.size(); ++i) {
        auto& a = ebenen[i];
        if (!a.Aktiv() || a.abbruch)
            continue;
        std::error_code fehler;
        if (umgebung.neuLaden)
            std::filesystem::remove(a.datei, fehler);
        if (std::filesystem::exists(a.datei, fehler))
            continue;
        HttpOptionen optionen = *logins[i];
        optionen.zeitlimit = umgebung.zeitlimit;
        laufend[mehrfach.Hinzufügen(a.anfrage, a.datei, optionen)] = &a;
    }
    const int anzahl = static_cast<int>(laufend.size());
    while (!laufend.empty()) {
        if (ui.AbbruchGewünscht()) {
            for (const auto& [nummer, a] : laufend)
                mehrfach.Abbrechen(nummer);
        }
        for (auto& [nummer, ergebnis] : mehrfach.Weiter(100ms)) {
            EbenenAnfrage& a = *laufend.at(nummer);
            a.geladen = ergebnis.ok;
            a.fehlerText = ergebnis.fehlerText;
            laufend.erase(nummer);
        }
    }
    return anzahl;
}

} // namespace

Kartenbild MapLoad(MapReferenz& ref, const Dienstkatalog& katalog, const Kartenwahl& wahl,
                   double breitePx, double höhePx, const Kartenumgebung& umgebung, Oberfläche& ui) {
    Kartenbild ergebnis;
    // The input check: a first level is needed; the parcel services have their scale range.
    const std::string& erster = wahl.dienste[0];
    if (erster.empty() || erster == "ohne") {
        ui.Meldung("URL fehlt!", Titel, Stil::Warnung);
        ref.SchrittZurücknehmen();
        return ergebnis;
    }
    if (Enthält(erster, "ALK") && !MaßstabPrüfen(ref, katalog, erster, ui)) {
        ref.SchrittZurücknehmen();
        return ergebnis;
    }

    // The frame and the EPSG code.
    ref.BitmapFaktorWählen(NurParzellendienst(wahl));
    const Rahmen rahmen = RahmenBerechnen(ref, breitePx, höhePx, ui);
    if (!rahmen.weiter || !EpsgPrüfen(ref, ui))
        return ergebnis;
    if (erster == "BW-TOP")
        ref.EPSG = "31467";

    // The requests and their logins.
    ui.Status(1, "WMS-Anfragen...");
    const Anfragerahmen anfragerahmen{ref.EPSG, rahmen.BBox, rahmen.BildBreiteText,
                                      rahmen.BildHöheText, ref.MapBitmapFaktor};
    std::array<std::optional<HttpOptionen>, 3> logins;
    for (int i = 0; i < 3; ++i) {
        auto& a = ergebnis.ebenen[static_cast<std::size_t>(i)];
        a.ebene = i + 1;
        a.dienst = wahl.dienste[static_cast<std::size_t>(i)];
        if (!a.Aktiv())
            continue;
        const auto zeile = katalog.ZeileFinden(a.dienst);
        a = AnfrageBilden(i + 1, a.dienst, zeile ? WerteDerZeile(katalog, *zeile) : Dienstwerte{},
                          anfragerahmen, umgebung.tempOrdner);
        a.zeile = zeile ? static_cast<int>(*zeile) : -1;
        if (i == 0)
            ergebnis.capabilitiesAnfrage = CapabilitiesAnfrage(a);
        logins[static_cast<std::size_t>(i)] =
            zeile ? ZugangFürZeile(katalog, *zeile, umgebung.konfig, umgebung.besitzer, ui, Zugangszweck::Karte)
                  : std::optional<HttpOptionen>(HttpOptionen{});
        // A refused login: no request for this level.
        if (!logins[static_cast<std::size_t>(i)])
            a.abbruch = true;
    }

    ergebnis.downloads = Herunterladen(ergebnis.ebenen, logins, umgebung, ui);

    // The answers, level by level.
    ui.Status(1, "Prüfung HTTP-Anfrage...");
    const Zeitangabe jetzt = JetztLokal();
    for (auto& a : ergebnis.ebenen) {
        // A refused login has had its message, and nothing was asked.
        if (!a.Aktiv() || a.abbruch)
            continue;
        const Antwortbefund befund = AntwortPrüfen(a, jetzt);
        ergebnis.fehlertext += befund.fehlerblock;
        if (befund.meldung)
            ui.Meldung(befund.meldung->text, befund.meldung->titel, Stil::Fehler);
        if (umgebung.protokoll)
            AnfrageProtokollieren(umgebung.tempOrdner, a, jetzt);
    }

    // The corrections of each level and the composition.
    const QSize größe(static_cast<int>(ZahlLesen(rahmen.BildBreiteText)),
                      static_cast<int>(ZahlLesen(rahmen.BildHöheText)));
    std::array<QImage, 3> bilder;
    for (std::size_t i = 0; i < 3; ++i) {
        auto& a = ergebnis.ebenen[i];
        if (!a.Aktiv() || a.abbruch)
            continue;
        ui.Status(1, "Ausführung Bildkorrekturen Ebene " + std::to_string(i + 1) + " ...");
        EbenenEinstellung einstellung = wahl.einstellungen[i];
        einstellung.ebene = static_cast<int>(i + 1);
        einstellung.transparenterDienst = a.transparentWort == "TRUE";
        auto geladen = EbeneLadenUndKorrigieren(a.datei, größe, einstellung);
        if (!geladen) {
            ui.Meldung(geladen.fehlerText, Titel, Stil::Fehler);
            a.abbruch = true;
            continue;
        }
        bilder[i] = std::move(geladen.bild);
    }
    ui.Status(1, "Ausführung Bildkorrekturen beendet...");
    const bool irgendeine = std::any_of(bilder.begin(), bilder.end(), [](const QImage& b) { return !b.isNull(); });
    if (irgendeine)
        ergebnis.bild = EbenenZusammensetzen(bilder, größe);
    ergebnis.status = "    Maßstab: " + ref.AnzMaßstab + "    Plotbox: " + umgebung.plotbox;
    ui.Status(1, ergebnis.status);
    ergebnis.ok = irgendeine;
    return ergebnis;
}

QImage EbenenZusammensetzen(const std::array<QImage, 3>& ebenen, QSize größe) {
    QImage bild(größe, QImage::Format_RGB32);
    bild.fill(Qt::white);
    for (auto it = ebenen.rbegin(); it != ebenen.rend(); ++it) {
        if (it->isNull())
            continue;
        const QImage ebene = it->convertToFormat(QImage::Format_RGB32);
        const int breite = std::min(ebene.width(), bild.width());
        for (int y = 0; y < std::min(ebene.height(), bild.height()); ++y) {
            const auto* quelle = reinterpret_cast<const QRgb*>(ebene.constScanLine(y));
            auto* ziel = reinterpret_cast<QRgb*>(bild.scanLine(y));
            for (int x = 0; x < breite; ++x)
                if ((quelle[x] & 0xffffffu) != 0xffffffu)
                    ziel[x] = quelle[x];
        }
    }
    return bild;
}

int TempOrdnerAufräumen(const std::filesystem::path& ordner, Oberfläche& ui) {
    std::error_code fehler;
    int anzahl = 0;
    for (auto it = std::filesystem::directory_iterator(ordner, fehler);
         !fehler && it != std::filesystem::directory_iterator(); it.increment(fehler))
        anzahl += it->is_regular_file(fehler);
    if (anzahl <= 10000)
        return 0;
    Fragestellung frage;
    frage.text = "Im temporären Verzeichnis wurden über " + std::to_string(anzahl) +
                 " Dateien vorgefunden!\nAlle Dateien löschen?";
    frage.titel = Titel;
    frage.unbeaufsichtigt = Antwort::Nein;
    if (ui.Frage(frage) != Antwort::Ja)
        return 0;
    int gelöscht = 0;
    for (auto it = std::filesystem::directory_iterator(ordner, fehler);
         !fehler && it != std::filesystem::directory_iterator(); it.increment(fehler))
        if (it->is_regular_file(fehler) && std::filesystem::remove(it->path(), fehler))
            ++gelöscht;
    return gelöscht;
}

} // namespace flurix::karte
