#pragma once
// The work tables of the NAS drawing export: the GEOgraf file read into a temporary SQLite
// database, one table per record kind, in the file's order.
//
//   Daten(Layer)                      every layer a record was put on, once
//   GGPK(Layer, Nr, EbeneArt, Y, X, YXH, H, Sachdaten1, Sachdaten2, Sachdaten3, Punktkennung)
//   GGLI(Layer, PK1, PK2, EbeneArt, Radius, Richtung, PK1yx, PK2yx, PK1y, PK1x, PK2y, PK2x, id)
//   GGTE(Layer, TXPos, EbeneArt, Y, X, bY, bX, YX, TX, Winkel, Hoehe, Ausrichtung)
//   GGSCH(Layer, SCHPos, EbeneArt, Abstand, Winkel, Typ, Y, X, YX, id)
//
// Nr, TXPos and id are the record numbers of the file (PK<Nr>, TE<TXPos>, LI<id>, SCH<id>). YXH
// and YX are the position as text ("Y X H", "Y X"), as the file gives it. A point's data (its DA
// line) is kept so: Sachdaten1 the mark code (ABM), Sachdaten2 "GST=… GWT=… LZK=…" with the parts
// that have a value, Sachdaten3 "BEM=<Bemerkung>" when the line has a BEM part. The point's
// Punktkennung (the first field, the number it is labelled with) stands last. An LI by point
// numbers gets its coordinates from GGPK after the reading (PK1yx empty then); an LI by "PK=Y X"
// keeps PK1/PK2 NULL. SCHPos is the POS text; Y, X and YX its first point. GGTE keeps the text's
// height and alignment (fields 7 and 10 of the TE line) in the last two columns.

#include "core/datenbank.hpp"
#include "core/oberflaeche.hpp"

#include <cstddef>
#include <filesystem>
#include <functional>

namespace flurix::ausgabe::detail {

/// What the reading found besides the tables.
struct DxfNasBestand {
    bool mitPunkten = false; ///< at least one PK: then the extents below hold
    double yMin = 0, xMin = 0, yMax = 0, xMax = 0;
    std::size_t übergangen = 0; ///< lines passed over (each one also a protocol line)
};

/// Creates the work tables in `db` and reads `outDatei` into them, in one transaction, with
/// progress through ui.Fortschritt (by lines). Comment and header lines are passed over, and so
/// are the records of kinds the drawing does not use. A TE without its TX line, an SCH without
/// its POS line, a line the reader can't take apart, a record whose numbers can't be read, and
/// an LI whose point is not in the file are each a protocol line and left out. Throws Fehler when
/// the file can't be read or the database fails.
DxfNasBestand DxfNasTabellenFüllen(Datenbank& db, const std::filesystem::path& outDatei,
                                   Oberfläche& ui,
                                   const std::function<void(std::string_view)>& protokoll);

} // namespace flurix::ausgabe::detail
