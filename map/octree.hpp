#pragma once
// Colour reduction by an octree: the palette of a picture that is to be stored with 16 or 256
// colours.
//
// Every colour added walks down from the root, one level per bit of red, green and blue (the
// highest bit first), to a leaf at depth 8 at the most, where its channels and its pixel count are
// summed. Whenever there are more leaves than the palette may hold, the deepest node that still has
// children is reduced: the children's sums and counts are merged into it and it becomes a leaf. A
// palette entry is a leaf's sums divided by its count (cut to whole numbers). A picture with no
// more colours than the palette holds therefore keeps every colour exactly.
//
// The nodes are made in blocks of 1024, so a node never moves; merged children go to a free list
// and are used again.

#include "map/farbe.hpp"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace flurix::karte {

class OcTree {
public:
    /// A tree for at most `palettengröße` colours (at least 1), `tiefe` levels deep (1 to 8).
    explicit OcTree(int palettengröße, int tiefe = 8);
    OcTree(const OcTree&) = delete;
    OcTree& operator=(const OcTree&) = delete;
    OcTree(OcTree&&) = default;
    OcTree& operator=(OcTree&&) = default;
    ~OcTree() = default;

    /// Adds `anzahl` pixels of the colour and reduces until the leaves fit the palette again.
    void FarbeHinzufügen(Farbe farbe, std::uint32_t anzahl = 1);

    /// The count of leaves, that is of the palette's entries.
    int Blätter() const { return m_blätter; }

    /// The palette, one entry per leaf. Numbers the leaves for PaletteIndex; call it after the last
    /// colour was added.
    std::vector<Farbe> Palette();

    /// The palette entry of a colour: the leaf its path leads to. A colour that was never added
    /// gets the nearest entry. Only valid after Palette().
    int PaletteIndex(Farbe farbe) const;

private:
    static constexpr std::int32_t Keiner = -1;
    struct Knoten {
        std::uint64_t summeRot = 0;
        std::uint64_t summeGrün = 0;
        std::uint64_t summeBlau = 0;
        std::uint64_t anzahl = 0;
        std::array<std::int32_t, 8> kinder{Keiner, Keiner, Keiner, Keiner,
                                           Keiner, Keiner, Keiner, Keiner};
        std::int32_t nächsterReduzierbarer =
            Keiner; ///< the list of nodes with children on its level
        std::int32_t paletteIndex = Keiner;
        bool blatt = false;
    };
    static constexpr std::int32_t Blockgröße = 1024;

    Knoten& At(std::int32_t nummer) {
        return m_blöcke[static_cast<std::size_t>(nummer / Blockgröße)][nummer % Blockgröße];
    }
    const Knoten& At(std::int32_t nummer) const {
        return m_blöcke[static_cast<std::size_t>(nummer / Blockgröße)][nummer % Blockgröße];
    }
    std::int32_t NeuerKnoten(int ebene);
    bool Reduzieren(); ///< false when nothing is left to merge
    void Nummerieren(std::int32_t nummer, std::vector<Farbe>& palette);

    int m_palettengröße;
    int m_tiefe;
    int m_blätter = 0;
    std::int32_t m_wurzel = Keiner;
    std::int32_t m_belegt = 0;        ///< nodes handed out of the blocks so far
    std::vector<std::int32_t> m_frei; ///< merged children, to be used again
    std::vector<std::unique_ptr<Knoten[]>> m_blöcke;
    std::array<std::int32_t, 8> m_reduzierbar{Keiner, Keiner, Keiner, Keiner,
                                              Keiner, Keiner, Keiner, Keiner};
    std::vector<Farbe> m_palette;
};

} // namespace flurix::karte
