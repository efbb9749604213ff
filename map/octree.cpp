#include "map/octree.hpp"

#include <algorithm>
#include <limits>

namespace flurix::karte {

OcTree::OcTree(int palettengröße, int tiefe)
    : m_palettengröße(std::max(1, palettengröße)), m_tiefe(std::clamp(tiefe, 1, 8)) {
    m_wurzel = NeuerKnoten(0);
}

std::int32_t OcTree::NeuerKnoten(int ebene) {
    std::int32_t nummer;
    if (!m_frei.empty()) {
        nummer = m_frei.back();
        m_frei.pop_back();
    } else {
        if (m_belegt % Blockgröße == 0)
            m_blöcke.push_back(std::make_unique<Knoten[]>(Blockgröße));
        nummer = m_belegt++;
    }
    Knoten& knoten = At(nummer);
    knoten = Knoten{};
    if (ebene == m_tiefe) {
        knoten.blatt = true;
        ++m_blätter;
    } else {
        knoten.nächsterReduzierbarer = m_reduzierbar[static_cast<std::size_t>(ebene)];
        m_reduzierbar[static_cast<std::size_t>(ebene)] = nummer;
    }
    return nummer;
}

void OcTree::FarbeHinzufügen(Farbe farbe, std::uint32_t anzahl) {
    const unsigned r = Rot(farbe), g = Grün(farbe), b = Blau(farbe);
    std::int32_t nummer = m_wurzel;
    for (int ebene = 0;; ++ebene) {
        if (At(nummer).blatt) {
            Knoten& blatt = At(nummer);
            blatt.summeRot += static_cast<std::uint64_t>(r) * anzahl;
            blatt.summeGrün += static_cast<std::uint64_t>(g) * anzahl;
            blatt.summeBlau += static_cast<std::uint64_t>(b) * anzahl;
            blatt.anzahl += anzahl;
            break;
        }
        const int schiebe = 7 - ebene;
        const auto kind = static_cast<std::size_t>(
            (((r >> schiebe) & 1u) << 2) | (((g >> schiebe) & 1u) << 1) | ((b >> schiebe) & 1u));
        if (At(nummer).kinder[kind] == Keiner) {
            const std::int32_t neu = NeuerKnoten(ebene + 1);
            At(nummer).kinder[kind] = neu;
        }
        nummer = At(nummer).kinder[kind];
    }
    while (m_blätter > m_palettengröße && Reduzieren()) {
    }
}

bool OcTree::Reduzieren() {
    // The deepest level with a node that still has children: its children are all leaves, since a
    // deeper node with children would sit on a deeper list.
    int ebene = m_tiefe - 1;
    while (ebene > 0 && m_reduzierbar[static_cast<std::size_t>(ebene)] == Keiner)
        --ebene;
    const std::int32_t nummer = m_reduzierbar[static_cast<std::size_t>(ebene)];
    if (nummer == Keiner)
        return false; // only the root is left, and it is a leaf
    Knoten& knoten = At(nummer);
    m_reduzierbar[static_cast<std::size_t>(ebene)] = knoten.nächsterReduzierbarer;
    knoten.nächsterReduzierbarer = Keiner;
    int kinder = 0;
    for (std::int32_t& kind : knoten.kinder) {
        if (kind == Keiner)
            continue;
        const Knoten& k = At(kind);
        knoten.summeRot += k.summeRot;
        knoten.summeGrün += k.summeGrün;
        knoten.summeBlau += k.summeBlau;
        knoten.anzahl += k.anzahl;
        m_frei.push_back(kind);
        kind = Keiner;
        ++kinder;
    }
    knoten.blatt = true;
    m_blätter += 1 - kinder;
    return true;
}

void OcTree::Nummerieren(std::int32_t nummer, std::vector<Farbe>& palette) {
    Knoten& knoten = At(nummer);
    if (knoten.blatt) {
        knoten.paletteIndex = static_cast<std::int32_t>(palette.size());
        const std::uint64_t n = std::max<std::uint64_t>(knoten.anzahl, 1);
        palette.push_back(Rgb(static_cast<std::uint8_t>(knoten.summeRot / n),
                              static_cast<std::uint8_t>(knoten.summeGrün / n),
                              static_cast<std::uint8_t>(knoten.summeBlau / n)));
        return;
    }
    for (const std::int32_t kind : knoten.kinder)
        if (kind != Keiner)
            Nummerieren(kind, palette);
}

std::vector<Farbe> OcTree::Palette() {
    m_palette.clear();
    m_palette.reserve(static_cast<std::size_t>(m_blätter));
    Nummerieren(m_wurzel, m_palette);
    return m_palette;
}

int OcTree::PaletteIndex(Farbe farbe) const {
    const unsigned r = Rot(farbe), g = Grün(farbe), b = Blau(farbe);
    std::int32_t nummer = m_wurzel;
    for (int ebene = 0; nummer != Keiner; ++ebene) {
        const Knoten& knoten = At(nummer);
        if (knoten.blatt)
            return knoten.paletteIndex;
        const int schiebe = 7 - ebene;
        nummer = knoten.kinder[static_cast<std::size_t>(
            (((r >> schiebe) & 1u) << 2) | (((g >> schiebe) & 1u) << 1) | ((b >> schiebe) & 1u))];
    }
    // A colour off every path: the nearest entry of the palette.
    int beste = 0;
    long besterAbstand = std::numeric_limits<long>::max();
    for (std::size_t i = 0; i < m_palette.size(); ++i) {
        const long dr = static_cast<long>(Rot(m_palette[i])) - r;
        const long dg = static_cast<long>(Grün(m_palette[i])) - g;
        const long db = static_cast<long>(Blau(m_palette[i])) - b;
        const long abstand = dr * dr + dg * dg + db * db;
        if (abstand < besterAbstand) {
            besterAbstand = abstand;
            beste = static_cast<int>(i);
        }
    }
    return beste;
}

} // namespace flurix::karte
