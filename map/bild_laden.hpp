#pragma once
// Loading a service's picture file into a map picture of a given size.
//
// The file (PNG, JPEG, BMP, or any other format Qt's image readers know; the content decides, not
// the name) is drawn stretched over the whole picture, on a background: the given colour, or else
// white, the window colour of the desktop. Transparent parts of the file show that background,
// which is what the keep-white treatment of transparent services relies on.
//
// The checks are made in this order, and the first that fails gives its text:
//
//   "Eingabeparameter fehlen"          no file name, or a picture size that is not positive
//   "Datei existiert nicht"            the file is not there (or is not a file)
//   "GDIPlus nicht verfügbar"          the image library can't serve the map: Qt lacks a reader for
//                                      PNG, JPEG or BMP (a missing image format plugin)
//   "Bitmap <name> kann nicht geöffnet werden"
//                                      the file is not a picture any reader knows (a service's XML
//                                      answer under a picture's name, an empty file), or can't be
//                                      read
//   "Bitmap-Abmessungen nicht verfügbar"
//                                      the picture's header gives no size, or an empty one
//   "Graphikobjekt nicht verfügbar"    the map picture of that size can't be made (memory)
//   "Bild kann nicht gezeichnet werden"
//                                      decoding the picture's data fails (a cut or damaged file, a
//                                      picture beyond the readers' memory limit)
//
// The text is returned, not shown: the caller shows it through the UI port.

#include "map/farbe.hpp"

#include <QImage>
#include <QSize>

#include <filesystem>
#include <string>

namespace flurix::karte {

/// A picture, or the German text of why there is none.
struct BildErgebnis {
    QImage bild;            ///< Format_RGB32; null when fehlerText is set
    std::string fehlerText; ///< empty on success

    explicit operator bool() const { return fehlerText.empty() && !bild.isNull(); }
};

/// The window colour on which a picture is loaded when no background is given.
inline constexpr Farbe FarbeFenster = FarbeWeiss;

/// Loads `datei` stretched over a new picture of `größe` (Format_RGB32). The picture is first
/// filled with `hintergrund` when `mitHintergrund` is set, else with FarbeFenster. A picture of the
/// file's own size is copied pixel for pixel; another size is drawn with smooth scaling. With
/// `größeVomBild` the picture takes the file's size and `größe` is not used. On failure the result
/// holds no picture and one of the texts above, "<name>" being the path as given.
BildErgebnis BildLaden(const std::filesystem::path& datei, QSize größe, bool mitHintergrund,
                       Farbe hintergrund, bool größeVomBild = false);

} // namespace flurix::karte
