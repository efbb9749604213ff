#pragma once
// The map's geodesy: ETRS89/UTM in the strips 32 and 33 and geographic coordinates on GRS 1980,
// the paper arithmetic of the viewer and the angle texts.
//
// The series are the viewer's own, term by term (a transverse Mercator series to the 8th power of
// the longitude difference and its footpoint inverse), not a general projection library: what the
// map has always requested and drawn must stay where it was. Inside a strip they agree with the
// exact projection to well under a millimetre. The numeric routines have no guards of their own
// and allocate nothing; a NaN or infinity passes through to the caller.
//
// Metric pairs are written Y (east) first, X (north) second, everywhere.

#include <array>
#include <string>
#include <string_view>

namespace flurix::karte {

/// π as the conversions have always used it: the literal, not the full double. Every turn between
/// degrees and radians in this module goes through it, so that a round trip gives the same value.
inline constexpr double Pi = 3.14159265358979;

/// The one ellipsoid in use, named "GRS1980". The inverse flattening is the constant as it
/// stands in the program (298.25722210088, not 298.257222101).
inline constexpr double GrsHalbachse = 6378137.0;
inline constexpr double GrsInverseAbplattung = 298.25722210088;
inline constexpr std::string_view GrsName = "GRS1980";
/// Scale on the central meridian of the UTM strips.
inline constexpr double UtmMaßstab = 0.9996;
/// False easting of the UTM strips.
inline constexpr double UtmRechtswertOffset = 500000.0;

/// Semi-major axis a, flattening f, semi-minor axis b = a (1 − f), first eccentricity e.
struct Ellipsoid {
    double a = 0;
    double f = 0;
    double b = 0;
    double e = 0;
};
/// The GRS1980 constants, computed once from the two numbers above.
const Ellipsoid& Grs1980();

/// The record handed between the conversions. `Punkt` and `Code` pass through unchanged.
struct KoordinatenSatz {
    std::string Punkt;
    std::string Code;
    double Wert1 = 0; ///< east Y in metres, or latitude in decimal degrees
    double Wert2 = 0; ///< north X in metres, or longitude in decimal degrees
    double Höhe = 0;  ///< ellipsoidal height in metres; 0 becomes 75.0 on entry to a conversion
};

/// Pixels at 72 per inch to metres on paper: p · 2.54 / 7200.
double PunkteNachMeter(double p);
/// Metres on paper to pixels at 72 per inch, rounded to a whole number (halves away from zero).
double MeterNachPunkte(double m);

/// An angle text to radians. "°" and "'" count as blanks and '"' is dropped; the blank-separated
/// fields 1, 2, 3 are degrees, minutes and seconds by their numeric value (a missing field counts
/// 0, runs of blanks separate like one). "52.5" and "52°30'0\"" give the same radians. The
/// fields are added as they stand, so a minus sign belongs to the degrees alone.
double GradTextNachBogen(std::string_view text);
/// Radians as degree text: whole degrees, "°", minutes "00", "'", seconds to 5 places
/// "00.00000", '"': 0.9162978572970 gives "52°30'00.00000\"". Seconds that round up to 60 carry
/// into the minutes.
std::string BogenNachGradText(double bogen);

/// The six coefficients of the meridian arc for semi-major axis a and first eccentricity e.
std::array<double, 6> MeridianKoeffizienten(double a, double e);

/// Geographic (φ, λ in radians) to transverse Mercator in the strip of central meridian L0 (whole
/// degrees). Returns {north, east}. A k0 of 0 counts as 1.
std::array<double, 2> TransverseMercatorVorwärts(double phi, double lambda, double a, double e,
                                                 const std::array<double, 6>& C, double k0,
                                                 double falscherOstwert, int L0);
/// Transverse Mercator to geographic by the footpoint latitude; b is the semi-minor axis. Returns
/// {φ, λ} in radians. The footpoint latitude is taken as an absolute value: northern hemisphere
/// only. A k0 of 0 counts as 1.
std::array<double, 2> TransverseMercatorRückwärts(double nord, double ost, double a, double b,
                                                  double k0, double falscherOstwert, int L0);

/// Geographic (radians) and ellipsoidal height to geocentric {X, Y, Z} in metres.
std::array<double, 3> GeographischNachKartesisch(double phi, double lambda, double h, double a,
                                                 double e);

/// False easting of a strip: 500000 for "GRS1980" and "WGS1984"; for "Bessel" and "Krassowski"
/// the Gauss-Krüger value of L0 = 3, 6, ... 21 (1500000 ... 7500000). 0 for anything else.
double RechtswertOffset(int L0, std::string_view ellipsoid);

/// The text every failed zone lookup shows, blank included.
inline constexpr std::string_view MeldungZoneUngültig = "Zone ungültig! ";

/// What ZoneAusRechtswert found: L0, or the message for the caller to show (L0 stays 0).
struct Zone {
    int L0 = 0;
    std::string_view meldung;
    explicit operator bool() const { return meldung.empty(); }
};
/// Central meridian from the first character of the trimmed text of an easting. For "GRS1980"
/// and "WGS1984" the digits 1, 2, 3, 4 (of the UTM zones 31 to 34) give 3, 9, 15, 21; for "Bessel"
/// and "Krassowski" the Gauss-Krüger digits 1 to 7 give 3 · digit. Anything else gives
/// MeldungZoneUngültig; the caller shows it (the map through its UI port, the command line on
/// stderr).
Zone ZoneAusRechtswert(std::string_view y, std::string_view ellipsoid = GrsName);

/// Central meridian of an EPSG code of the viewer: "25832" gives 9, "25833" 15, anything else 0.
int MittelmeridianAusEpsg(std::string_view epsg);

/// Metric to geographic: `Wert1` east and `Wert2` north in the strip of L0 become latitude and
/// longitude in decimal degrees. With L0 = 0 the strip is that of `epsg` (the map's current
/// code, see MittelmeridianAusEpsg); the code is a value the caller passes, never a global.
/// `Höhe` 0 becomes 75; `Punkt` and `Code` pass through.
KoordinatenSatz ETRSNachGeographisch(KoordinatenSatz satz, int L0, std::string_view epsg = {});

/// ETRSNachGeographisch with the strip read off `Wert1`: 6 digits before the point are strip 33
/// (L0 15), as they stand; 7 digits carry the zone digit first (1..4, stripped from the value);
/// 8 digits carry "3" and the zone digit (both stripped). Other counts leave L0 at 0. A zone digit
/// that is no zone gives MeldungZoneUngültig in `meldung`; the conversion then runs on with L0 0,
/// as a failed step leaves its value as it stood.
struct ZonenUmrechnung {
    KoordinatenSatz satz;
    std::string_view meldung;
};
ZonenUmrechnung ETRSNachGeographischAuto(KoordinatenSatz satz);

/// Geographic (radians) to metric in the strip of central meridian L0: {east, north}, each
/// rounded to millimetres (3 places, halves away from zero).
std::array<double, 2> GeographischBogenNachETRS(double phi, double lambda, int L0);

/// Geographic to metric: `Wert1` latitude and `Wert2` longitude in decimal degrees become `Wert1`
/// east and `Wert2` north in the strip of L0, rounded to millimetres. Angle texts in degrees,
/// minutes and seconds go through GradTextNachBogen and GeographischBogenNachETRS. `Höhe` 0
/// becomes 75; `Punkt` and `Code` pass through.
KoordinatenSatz GeographischNachETRS(KoordinatenSatz satz, int L0);

} // namespace flurix::karte
