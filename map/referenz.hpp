#pragma once
// The map's reference state: which piece of the ground the map shows, at which scale, in how many
// pixels. One value of MapReferenz belongs to a map window; everything the viewer requests or
// draws is derived from it. The functions here change that value and speak to the person only
// through the UI port passed in.
//
// The scale number N is the scale 1:N at 72 pixels per inch (paper metres of FensterBreite times
// N are ground metres); what the person reads is S = N · dpi / 72 of the screen.

#include "core/kommandozeile.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace flurix {
class Einstellungen;
class Oberfläche;
} // namespace flurix

namespace flurix::karte {

/// The smallest scale S the map accepts; below it the former scale stays.
inline constexpr double KleinsterMaßstab = 100;
/// A requested bitmap wider or higher than this is warned about (and requested all the same).
inline constexpr double GrößteBildseite = 4000;

struct MapReferenz {
    double ZentrumY = 0;                 ///< centre in metres of the current strip, east
    double ZentrumX = 0;                 ///< north
    std::string MapStartMaßstab = "750"; ///< base scale number, a text field of the window
    double KorrMaßstab = 0;              ///< accumulated correction added to MapStartMaßstab
    double MapMaßstabKorr = 0; ///< the last step added to KorrMaßstab (taken back on failure)
    std::string MapScreenDpi = "96";     ///< pixel density of what the person reads as scale
    std::string MapBitmapFaktor = "1.0"; ///< pixel multiplier of requested bitmaps
    float BildBreite = 0;                ///< requested bitmap size in pixels (box × factor)
    float BildHöhe = 0;
    std::string BildBreiteText; ///< the same rounded to whole pixels: WIDTH and HEIGHT of a request
    std::string BildHöheText;
    double FensterBreite = 0; ///< the picture box (without the factor) in paper metres at 72 dpi
    double FensterHöhe = 0;
    std::string YMin, XMin, YMax, XMax; ///< the current bounding box as texts
    std::string BBox;                   ///< "YMin,XMin,YMax,XMax"
    std::string EPSG = "25833";
    std::string Referenzkoordinaten;  ///< the window's reference text, "Y;X" or a parcel key
    std::string MaßstabManu = "1000"; ///< the scale as typed (and shown) by the person
    std::string AnzMaßstab = "1:500"; ///< the scale display until the first request rewrites it
    /// The zoom window "YMin;XMin;YMax;XMax" while the zoom tool is active; empty otherwise.
    std::string ZoomFenster;
    /// Print preparation: the box size comes from the hidden print picture of this many pixels.
    bool Druckvorbereitung = false;
    double DruckBreite = 0;
    double DruckHöhe = 0;
    /// Bitmap factors from the settings, "" when the settings leave them open.
    std::string BitmapFaktorNurAlkis;
    std::string BitmapFaktorAllgemein;

    /// N, the working scale number of the last accepted scale (Start + correction).
    double MaßstabZahl() const { return m_maßstabZahl; }
    /// S = N · dpi / 72, the scale the person reads.
    double Bildschirmmaßstab() const;
    /// The last two characters of EPSG: the strip number ("33").
    std::string Streifen() const;

    /// Adds one step to the correction and remembers it, so that a refusal can take it back.
    void MaßstabSchritt(double schritt);
    /// Takes the last step back (a failed input: an empty service address, a refused scale).
    void SchrittZurücknehmen();
    /// Sets the correction so that the typed scale S is reached: S / dpi · 72 − MapStartMaßstab
    /// (750 at 96 dpi and S 1000 give 0). The change counts as the last step.
    void MaßstabEingeben(double S);
    /// The scale arithmetic of a request: N = start + correction. With S below 100 the step is
    /// taken back, N and both displays keep their values, and false is returned (the request goes
    /// on with the former scale); else N is taken and AnzMaßstab ("1:1000") and MaßstabManu
    /// ("1000") show S as a whole number.
    bool MaßstabRechnen();
    /// A typed bitmap factor: a comma becomes a point.
    void BitmapFaktorSetzen(std::string_view text);
    /// The factor for a request: the settings' value for a request that shows only the parcel
    /// service or for any other, when the settings give one; else the factor stays.
    void BitmapFaktorWählen(bool nurAlkis);

private:
    double m_maßstabZahl = 750;
};

/// The bitmap factor as the window shows it: one decimal ("1.0", "1.5").
std::string BitmapFaktorText(double faktor);

/// What a request takes from the frame.
struct Rahmen {
    std::string BBox;
    std::string BildBreiteText;
    std::string BildHöheText;
    bool weiter = false; ///< false: the box is refused and the request must stop
};

/// Computes the frame of a picture box of breitePx × höhePx pixels: the scale (MaßstabRechnen),
/// the bitmap size with MapBitmapFaktor, the paper extent, the box around the centre (or the
/// zoom window's corners, the centre then recomputed), the six numbers rounded to 3 places, the
/// reference text "Y;X" from the centre. A bitmap side above 4000 pixels is warned about ("Der
/// Maßstab ist sehr groß! ..."), the request goes on. The box is refused with "Zoom-Fenster zu
/// klein! Bitte Bereich neu auswählen!" unless YMin sorts before YMax or XMin before XMax AS
/// TEXT. Messages go through `ui` under the title "Flurix". `ref` holds every value afterwards.
Rahmen RahmenBerechnen(MapReferenz& ref, double breitePx, double höhePx, Oberfläche& ui);

/// True when the box test lets the texts pass: YMin < YMax or XMin < XMax, compared as strings
/// the way the map always has. This is not the numeric order: "99950" sorts after "100050", so a
/// box across 100000 m east and 1000000 m north is refused although it is valid, and "1000"
/// sorts before "500", so corners given the wrong way round pass.
bool BoxTextGültig(std::string_view yMin, std::string_view xMin, std::string_view yMax,
                   std::string_view xMax);

/// The refusal of an EPSG code that reads as 0: "EPSG-Code: <code> ist falsch! Bitte
/// wiederholen Sie Ihre Aktion!" under "Map-Viewer". True when the code is usable.
bool EpsgPrüfen(const MapReferenz& ref, Oberfläche& ui);

/// What the reference text holds.
enum class ReferenzArt { Paar, Flurstückskennzeichen, Leer };
struct Referenzeingabe {
    ReferenzArt art = ReferenzArt::Leer;
    std::string text; ///< a pair as "Y;X", a parcel key as typed (trimmed)
};
/// Reads the reference text. Blanks at the ends go. A text with ";" keeps its two sides (each
/// trimmed, a decimal comma made a point); a text with blanks has its blank runs collapsed and
/// its first two fields joined with ";". A single word is a parcel key, which the gazetteer
/// search takes.
Referenzeingabe ReferenztextLesen(std::string_view text);

/// Takes a new reference "Y;X": with two parts Y must be ≥ 0 and X above 900000, else "Die
/// Referenzkoordinaten befinden sich nicht im EPSG:32583 2-3"; with fewer parts "Die
/// Referenzkoordinaten sind falsch vorgegebenen!" and the example on a second line; both under
/// "Flurix". On success sets the centre and the reference text and returns true: the caller
/// requests the map.
bool NeueReferenz(MapReferenz& ref, std::string_view text, Oberfläche& ui);

/// Changes the strip to `neueEpsg` (25832 or 25833): an empty EPSG counts as "25833"; the same
/// code changes nothing (false). The reference pair goes to geographic in the old strip and to
/// metric in the new one (central meridians 9 and 15), so the centre stays on the same ground;
/// the reference text, the centre and EPSG take the new values. True: the caller requests a map.
bool StreifenWechseln(MapReferenz& ref, std::string_view neueEpsg);

/// The state a map window opens with, and the service it shows first.
struct Startzustand {
    MapReferenz referenz;
    std::string dienst; ///< StartMapWebService: name of the first service or template, may be ""
};
/// Reads the start of a map window from the settings: StartMapWebService, StartMapWebServiceKoo
/// (the centre "Y;X"), StartMapWebServiceEPSG (only when the window has no code yet: `epsg` is
/// the window's code, "" for a new one), StartMapWebServiceMaßstab (the scale S, taken when above
/// 0) and the bitmap factors MapBitmapFaktor_nur_ALKIS and MapBitmapFaktor_allgemein. A "/map y;x"
/// centre of the command line (read by KommandozeileLesen) comes before the settings' centre.
/// Without any code EPSG becomes "25833". Missing keys leave the defaults of MapReferenz.
Startzustand StartzustandLesen(const Einstellungen& einstellungen,
                               const std::optional<Kartenmitte>& mitte = std::nullopt,
                               std::string_view epsg = {});

/// The strip test of a point file dropped on the map: the first character of its first easting
/// must be "2" or "3"; else a message box "unzulässiger Meridianstreifen" says which easting is
/// refused, and false is returned. The map is redrawn either way.
bool MeridianstreifenPrüfen(std::string_view ersterRechtswert, Oberfläche& ui);

} // namespace flurix::karte
