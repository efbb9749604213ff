#pragma once
// Brightness, contrast and grey of a map picture.
//
// The transfer. Each channel value x (0 to 255) goes through one curve, the same for red, green and
// blue, with c the contrast and h the brightness in effect (see KorrekturWert):
//
//     y = x + (x − 127.5) · c / 100 + 127.5 · h / 100,   rounded to the nearest, cut to 0 … 255
//
// So both are percentages around the mid-point 127.5: the contrast stretches or shrinks the
// distance from the mid-point by c percent (−90 leaves a tenth of it, 100 doubles it), the
// brightness moves every value by h percent of the half range (100 lifts black to mid-grey, −90
// takes white down to 140). With c = h = 0 the curve is the identity, bit for bit.
//
// Grey is the colourfulness at −100: the colour is removed before the curve, each pixel taking its
// luminance Y = (77·R + 150·G + 29·B + 128) / 256 (the weights 0.299, 0.587, 0.114 in 1/256) in all
// three channels. Grey stays the same grey and white stays white.
//
// The picture is gone through once, with a 256-entry table of the curve (and, for grey, three
// tables of the weighted channels).

#include <QImage>

namespace flurix::karte {

/// The contrast or brightness that takes effect for a slider value: 0 stays 0, anything below −90
/// acts as −90, −90 to 100 as it is. Above 100 the colour adjustment refuses the value and keeps
/// its neutral setting, so such a value acts as 0.
int KorrekturWert(int wert);

/// A new picture (Format_RGB32, same size) with the contrast, brightness and grey applied as
/// described above. `kontrast` and `helligkeit` are slider values, passed through KorrekturWert.
/// Any picture format is accepted; an alpha channel is dropped. The caller's picture is never
/// changed; one handed over with std::move in Format_RGB32 is worked on in place. A null picture
/// gives a null picture.
QImage Korrektur(QImage bild, int kontrast, int helligkeit, bool grau);

} // namespace flurix::karte
