#pragma once
// A grid over the boxes of the polygons of one class table, built once per run of the area
// computation: for a parcel's box it gives the rows whose boxes overlap it, in row order, without
// looking at the others. Time per query depends on the polygons near the box, not on the table.

#include "nas/polygon.hpp"

#include <cstdint>
#include <vector>

namespace flurix::nas {

class Flächenindex {
public:
    /// Index over the boxes of the rows; a row without a box (empty polygon) is never found.
    explicit Flächenindex(std::vector<std::optional<Box>> boxen);

    /// The box of row i.
    const std::optional<Box>& BoxVon(std::size_t i) const { return m_boxen[i]; }

    /// The numbers of the rows whose boxes overlap `box` (touching counts), ascending.
    std::vector<std::uint32_t> Treffer(const Box& box) const;

private:
    struct Zellbereich {
        int x0, y0, x1, y1;
    };
    Zellbereich Bereich(const Box& box) const;

    std::vector<std::optional<Box>> m_boxen;
    Box m_gesamt{};
    double m_zelle = 1;
    int m_spalten = 0;
    int m_zeilen = 0;
    std::vector<std::uint32_t> m_anfang; ///< per cell: start of its rows in m_zeilenNr (CSR form)
    std::vector<std::uint32_t> m_zeilenNr;
    mutable std::vector<std::uint32_t> m_gesehen; ///< per row: the query that last found it
    mutable std::uint32_t m_abfrage = 0;
};

} // namespace flurix::nas
