#pragma once
// A pool of distinct texts for one column of the cadastre table: each distinct text is stored once
// and named by a 32-bit number, so that a cell costs four bytes and equal texts compare as numbers.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace flurix::detail {

class Textpool {
public:
    /// Number 0 is always the empty text.
    Textpool();

    /// The number of `text`, entered when it is new.
    std::uint32_t Aufnehmen(std::string_view text);
    /// The number of `text`, or nothing when the pool doesn't hold it.
    bool Finden(std::string_view text, std::uint32_t& nummer) const;
    std::string_view Text(std::uint32_t nummer) const {
        const Eintrag& e = m_einträge[nummer];
        return {m_zeichen[e.block].data() + e.versatz, e.länge};
    }
    std::size_t Anzahl() const { return m_einträge.size(); }
    /// Bytes held, for the memory figures of the benchmark.
    std::size_t Speicher() const;

private:
    struct Eintrag {
        std::uint32_t block;
        std::uint32_t versatz;
        std::uint32_t länge;
    };
    void Wachsen();
    std::size_t Platz(std::string_view text, std::uint64_t hash) const;

    // Texts live in blocks that never move, so a string_view into them stays valid.
    std::vector<std::string> m_zeichen;
    std::vector<Eintrag> m_einträge;
    std::vector<std::uint32_t> m_tabelle; // open addressing; 0 = free, else number + 1
};

} // namespace flurix::detail
