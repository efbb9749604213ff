#include "core/textpool.hpp"

namespace flurix::detail {
namespace {

constexpr std::size_t Blockgröße = 1 << 20;

std::uint64_t Streuwert(std::string_view text) {
    // FNV-1a: short texts, fast, and good enough with the power-of-two table below.
    std::uint64_t h = 14695981039346656037ull;
    for (unsigned char c : text)
        h = (h ^ c) * 1099511628211ull;
    return h ^ (h >> 29);
}

} // namespace

Textpool::Textpool() : m_tabelle(64, 0) {
    m_zeichen.emplace_back();
    m_zeichen.back().reserve(Blockgröße);
    m_einträge.push_back({0, 0, 0});
    m_tabelle[Platz("", Streuwert(""))] = 1;
}

std::size_t Textpool::Platz(std::string_view text, std::uint64_t hash) const {
    const std::size_t maske = m_tabelle.size() - 1;
    for (std::size_t i = hash & maske;; i = (i + 1) & maske) {
        const std::uint32_t belegt = m_tabelle[i];
        if (belegt == 0 || Text(belegt - 1) == text)
            return i;
    }
}

bool Textpool::Finden(std::string_view text, std::uint32_t& nummer) const {
    const std::uint32_t belegt = m_tabelle[Platz(text, Streuwert(text))];
    if (belegt == 0)
        return false;
    nummer = belegt - 1;
    return true;
}

std::uint32_t Textpool::Aufnehmen(std::string_view text) {
    const std::uint64_t hash = Streuwert(text);
    std::size_t platz = Platz(text, hash);
    if (m_tabelle[platz] != 0)
        return m_tabelle[platz] - 1;

    if (m_zeichen.back().size() + text.size() > m_zeichen.back().capacity()) {
        m_zeichen.emplace_back();
        m_zeichen.back().reserve(std::max(Blockgröße, text.size()));
    }
    std::string& block = m_zeichen.back();
    const Eintrag eintrag{static_cast<std::uint32_t>(m_zeichen.size() - 1),
                          static_cast<std::uint32_t>(block.size()),
                          static_cast<std::uint32_t>(text.size())};
    block.append(text);
    const auto nummer = static_cast<std::uint32_t>(m_einträge.size());
    m_einträge.push_back(eintrag);
    m_tabelle[platz] = nummer + 1;
    if (m_einträge.size() * 2 > m_tabelle.size())
        Wachsen();
    return nummer;
}

void Textpool::Wachsen() {
    std::vector<std::uint32_t> alt(m_tabelle.size() * 2, 0);
    alt.swap(m_tabelle);
    const std::size_t maske = m_tabelle.size() - 1;
    for (std::uint32_t belegt : alt) {
        if (belegt == 0)
            continue;
        std::size_t i = Streuwert(Text(belegt - 1)) & maske;
        while (m_tabelle[i] != 0)
            i = (i + 1) & maske;
        m_tabelle[i] = belegt;
    }
}

std::size_t Textpool::Speicher() const {
    std::size_t summe = m_einträge.capacity() * sizeof(Eintrag) +
                        m_tabelle.capacity() * sizeof(std::uint32_t);
    for (const auto& block : m_zeichen)
        summe += block.capacity();
    return summe;
}

} // namespace flurix::detail
