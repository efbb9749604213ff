#pragma once
// The raster pictures of the PDF writer: the pixel source, its bytes in file order and their
// run-length packing, which a PDF reader unpacks with RunLengthDecode.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace flurix::report {

/// A picture handed to clsPDF::DrawPicture: width and height in pixels and the pixels row by row
/// from the top, each row from the left, three bytes a pixel (red, green, blue). The bytes belong
/// to the caller and must live for the call.
struct PdfBild {
    std::int32_t breite = 0;
    std::int32_t höhe = 0;
    std::span<const std::uint8_t> rgb;

    /// True when the sizes are not negative and rgb holds at least breite × höhe × 3 bytes.
    bool Gültig() const;
};

/// Called once for every row read (zeile from 0 to letzteZeile = height − 1), so that a progress
/// bar can follow; the caller lets its user interface process events when zeile % 100 == 0.
using BildFortschritt = std::function<void(std::int32_t zeile, std::int32_t letzteZeile)>;

/// The gray value of a pixel: (77 × red + 151 × green + 28 × blue + 127) / 256, truncated.
std::uint8_t Grauwert(std::uint8_t rot, std::uint8_t grün, std::uint8_t blau);

/// The bytes of an image in file order: three a pixel (red, green, blue), or one gray byte a pixel
/// when grau is set. The picture must be Gültig(). May throw std::bad_alloc.
std::string BildBytes(const PdfBild& bild, bool grau, const BildFortschritt& fortschritt);

/// How many bytes in a row from position pos equal daten[pos], that byte counted, at most 128:
/// the byte itself and no more than 127 equal bytes behind it. 0 when pos is past the end.
std::size_t CountRun(std::string_view daten, std::size_t pos);

/// Run-length packing for RunLengthDecode, without the end mark 128: a run of 2 to 128 equal bytes
/// becomes (257 − length, byte); other bytes go into literal blocks of up to 128 bytes behind a
/// length byte (count − 1). A pair of equal bytes joins an open literal block while it has room
/// for both, which keeps short pairs from breaking a block in two. Never fails but for memory.
std::string PackRuns(std::string_view roh);

} // namespace flurix::report
