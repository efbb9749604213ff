#pragma once
// Colours of the map's raster work and the two colour operations on whole pictures.
//
// A colour is a 32-bit integer with red in the low byte, then green, then blue: 0xffffff is white,
// 0x0000ff red: the order of the map's colour values. QImage's QRgb has the opposite order (blue
// low, alpha high), so every colour crosses between the two only through FarbeNachQRgb and
// FarbeAusQRgb.

#include <QImage>
#include <QRgb>

#include <cstdint>

namespace flurix::karte {

/// A colour with red in the low byte (0x00bbggrr).
using Farbe = std::uint32_t;

/// The colour from its three channels, each 0 to 255.
constexpr Farbe Rgb(std::uint8_t rot, std::uint8_t grün, std::uint8_t blau) {
    return static_cast<Farbe>(rot) | (static_cast<Farbe>(grün) << 8) |
           (static_cast<Farbe>(blau) << 16);
}
constexpr std::uint8_t Rot(Farbe farbe) { return static_cast<std::uint8_t>(farbe & 0xff); }
constexpr std::uint8_t Grün(Farbe farbe) { return static_cast<std::uint8_t>((farbe >> 8) & 0xff); }
constexpr std::uint8_t Blau(Farbe farbe) { return static_cast<std::uint8_t>((farbe >> 16) & 0xff); }

/// The opaque QRgb of a colour (alpha 255). A top byte in `farbe` is ignored.
constexpr QRgb FarbeNachQRgb(Farbe farbe) {
    return 0xff000000u | (static_cast<QRgb>(Rot(farbe)) << 16) |
           (static_cast<QRgb>(Grün(farbe)) << 8) | Blau(farbe);
}
/// The colour of a QRgb; its alpha is dropped.
constexpr Farbe FarbeAusQRgb(QRgb farbe) {
    return Rgb(static_cast<std::uint8_t>((farbe >> 16) & 0xff),
               static_cast<std::uint8_t>((farbe >> 8) & 0xff),
               static_cast<std::uint8_t>(farbe & 0xff));
}

/// The see-through key of the map's blend: a pixel of exactly this colour shows the level below.
inline constexpr Farbe FarbeWeiss = Rgb(255, 255, 255);
inline constexpr Farbe FarbeSchwarz = Rgb(0, 0, 0);
/// Background on which a transparent service's picture is loaded when its white is to be kept:
/// afterwards this grey marks the parts the service left empty.
inline constexpr Farbe FarbeHintergrundFrei = Rgb(240, 240, 240);
/// The near-white that stands in for a service's own white, so that the blend does not key it out.
inline constexpr Farbe FarbeFastWeiss = Rgb(250, 250, 250);

/// A new picture (Format_RGB32) in which every pixel exactly equal to `alt` is `neu`; all other
/// pixels are kept as they are. There is no tolerance: 0xfefefe is not white. The picture may have
/// any format; it is compared as RGB32, so an alpha channel is dropped first. A picture with a
/// palette has its palette changed. The caller's picture is never changed; one handed over with
/// std::move in Format_RGB32 is worked on in place, without a copy. A null picture gives a null
/// picture.
QImage ReplaceColor(QImage bild, Farbe alt, Farbe neu);

/// The constant alpha of the map's blend for a transparency in percent: the percentage clamped to
/// 0 to 100 (not a number counts as 0) and turned into Int(percent / 100 · 255). 50 gives 127.
int AlphaWert(double prozent);

} // namespace flurix::karte
