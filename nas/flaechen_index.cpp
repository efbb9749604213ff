#include "nas/flaechen_index.hpp"

#include <algorithm>
#include <cmath>

namespace flurix::nas {

Flächenindex::Flächenindex(std::vector<std::optional<Box>> boxen)
    : m_boxen(std::move(boxen)), m_gesehen(m_boxen.size(), 0) {
    bool erste = true;
    std::size_t anzahl = 0;
    double flächen = 0;
    for (const auto& box : m_boxen) {
        if (!box)
            continue;
        ++anzahl;
        flächen += (box->maxX - box->minX) * (box->maxY - box->minY);
        if (erste) {
            m_gesamt = *box;
            erste = false;
            continue;
        }
        m_gesamt.minX = std::min(m_gesamt.minX, box->minX);
        m_gesamt.minY = std::min(m_gesamt.minY, box->minY);
        m_gesamt.maxX = std::max(m_gesamt.maxX, box->maxX);
        m_gesamt.maxY = std::max(m_gesamt.maxY, box->maxY);
    }
    if (anzahl == 0)
        return;
    // A cell about the size of a typical box keeps both the cells per box and the boxes per cell
    // small; the grid never has more cells than four per box.
    const double breite = std::max(m_gesamt.maxX - m_gesamt.minX, 1e-3);
    const double höhe = std::max(m_gesamt.maxY - m_gesamt.minY, 1e-3);
    const double mittel = std::sqrt(std::max(flächen / static_cast<double>(anzahl), 1e-6));
    m_zelle = std::max({mittel, std::sqrt(breite * höhe / (4.0 * static_cast<double>(anzahl))), 1e-3});
    m_spalten = static_cast<int>(std::min(breite / m_zelle, 65535.0)) + 1;
    m_zeilen = static_cast<int>(std::min(höhe / m_zelle, 65535.0)) + 1;

    const std::size_t zellen = static_cast<std::size_t>(m_spalten) * static_cast<std::size_t>(m_zeilen);
    m_anfang.assign(zellen + 1, 0);
    const auto jedeZelle = [&](const Box& box, auto&& tun) {
        const Zellbereich b = Bereich(box);
        for (int y = b.y0; y <= b.y1; ++y)
            for (int x = b.x0; x <= b.x1; ++x)
                tun(static_cast<std::size_t>(y) * static_cast<std::size_t>(m_spalten) + static_cast<std::size_t>(x));
    };
    for (const auto& box : m_boxen)
        if (box)
            jedeZelle(*box, [&](std::size_t z) { ++m_anfang[z + 1]; });
    for (std::size_t z = 0; z < zellen; ++z)
        m_anfang[z + 1] += m_anfang[z];
    m_zeilenNr.resize(m_anfang[zellen]);
    std::vector<std::uint32_t> füllstand(m_anfang.begin(), m_anfang.end() - 1);
    for (std::uint32_t i = 0; i < m_boxen.size(); ++i)
        if (m_boxen[i])
            jedeZelle(*m_boxen[i], [&](std::size_t z) { m_zeilenNr[füllstand[z]++] = i; });
}

Flächenindex::Zellbereich Flächenindex::Bereich(const Box& box) const {
    const auto zelle = [&](double wert, double anfang, int anzahl) {
        const double i = std::floor((wert - anfang) / m_zelle);
        return static_cast<int>(std::clamp(i, 0.0, static_cast<double>(anzahl - 1)));
    };
    return {zelle(box.minX, m_gesamt.minX, m_spalten), zelle(box.minY, m_gesamt.minY, m_zeilen),
            zelle(box.maxX, m_gesamt.minX, m_spalten), zelle(box.maxY, m_gesamt.minY, m_zeilen)};
}

std::vector<std::uint32_t> Flächenindex::Treffer(const Box& box) const {
    std::vector<std::uint32_t> treffer;
    if (m_spalten == 0 || !box.Überlappt(m_gesamt))
        return treffer;
    if (++m_abfrage == 0) { // after 4 billion queries the marks start again
        std::fill(m_gesehen.begin(), m_gesehen.end(), 0);
        m_abfrage = 1;
    }
    const Zellbereich b = Bereich(box);
    for (int y = b.y0; y <= b.y1; ++y)
        for (int x = b.x0; x <= b.x1; ++x) {
            const std::size_t z = static_cast<std::size_t>(y) * static_cast<std::size_t>(m_spalten) +
                                  static_cast<std::size_t>(x);
            for (std::uint32_t k = m_anfang[z]; k < m_anfang[z + 1]; ++k) {
                const std::uint32_t i = m_zeilenNr[k];
                if (m_gesehen[i] == m_abfrage)
                    continue;
                m_gesehen[i] = m_abfrage;
                if (m_boxen[i]->Überlappt(box))
                    treffer.push_back(i);
            }
        }
    std::sort(treffer.begin(), treffer.end());
    return treffer;
}

} // namespace flurix::nas
