#pragma once
// The scale bar of the map picture: a bar of about 10 cm of paper, cut to a round length and
// drawn as segments alternating red and white, with its length written above it.

#include <QColor>

#include <string>

class QImage;

namespace flurix::karte {

/// A colour value as the program keeps them: red in the low byte, blue in the high one, so 255 is
/// red and 0xff0000 blue.
QColor FarbeAusWert(unsigned long wert);

/// The colour of the label unless the caller gives one: the value 0xff0000.
inline const QColor MaßstabsleisteTextfarbe = FarbeAusWert(0xff0000);

/// The bar for scale number n (1:n at 72 pixels per inch).
struct Maßstabsleiste {
    double länge = 0;         ///< metres on the ground; 0 when n gives no bar
    int segmente = 0;         ///< 4 or 5; 0 when there is no bar
    double segmentPixel = 0;  ///< length of one segment in the picture
    std::string beschriftung; ///< "500 m", "1 km", "2.5 km"
};

/// The bar without drawing it. The target length is 0.1 · n metres (10 cm of paper); its first
/// digit d and k = the number of digits of n minus 2 give the bar: d 1 or 2 → d · 10^k in 4
/// segments, 3 to 5 → 5 · 10^k in 5, 6 to 9 → 10 · 10^k in 4. A segment is
/// MeterNachPunkte(length / segments) / n pixels long. The label is the length with " m" below
/// 1000 m, else the kilometres rounded to 2 places with " km". n below 10 gives no bar.
Maßstabsleiste MaßstabsleisteBerechnen(long n);

/// Draws the bar of scale number n into the lower left corner of `bild` (10 pixels from both
/// edges, 6 pixels high, framed in black) with the label above it in `textfarbe`. Returns what it
/// drew; a picture QPainter can't paint on is left as it is.
Maßstabsleiste LinieMaßstab(QImage& bild, long n,
                            const QColor& textfarbe = MaßstabsleisteTextfarbe);

} // namespace flurix::karte
