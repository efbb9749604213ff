#pragma once
// A copy of a map picture at another colour depth. The depth is the only change; what each depth
// does to the colours:
//
//   mode 0     1 bit (Format_Mono, colour table black, white): each pixel takes the nearer of the
//              two, so a pixel is white when R + G + B ≥ 383 (above 3 · 127.5), else black.
//              Mid-grey 128 is white, 127 is black; saturated red, green and blue are black.
//   mode 1, 2  4 bits: Format_Indexed8 with a palette of at most 16 colours made by the octree
//              (map/octree.hpp); each pixel takes the entry its colour's path leads to.
//   mode 3, 4  8 bits: the same with at most 256 colours.
//   mode 5     16 bits as the 5-5-5 layout of a 16-bit device-independent bitmap
//              (Format_RGB555): each channel keeps its high 5 bits. Converted back to 32 bits, Qt
//              repeats the high bits in the low ones, so black and white come back exact.
//   mode 6     24 bits (Format_RGB888): the pixels unchanged.
//   mode 7     32 bits (Format_RGB32): the pixels unchanged.
//
// Every result converts back with QImage::convertToFormat(QImage::Format_RGB32).

#include <QImage>

namespace flurix::karte {

/// The picture at the depth of `modus` (0 to 7, see above), the same size. An alpha channel is
/// dropped first. Another mode, or a null picture, gives a null picture.
QImage FarbTiefe(const QImage& bild, int modus);

} // namespace flurix::karte
