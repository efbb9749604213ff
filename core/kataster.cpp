#include "core/kataster.hpp"

#include "core/text.hpp"

#include <algorithm>
#include <numeric>

namespace flurix {

std::string Vergleichsform(std::string_view text) {
    std::string form;
    form.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c >= 'A' && c <= 'Z') {
            form += static_cast<char>(c - 'A' + 'a');
        } else if (c == '\xC3' && i + 1 < text.size()) {
            // Ä ä Ö ö Ü ü ß in UTF-8: C3 84/A4, 96/B6, 9C/BC, 9F.
            switch (text[i + 1]) {
            case '\x84': case '\xA4': form += 'a'; ++i; break;
            case '\x96': case '\xB6': form += 'o'; ++i; break;
            case '\x9C': case '\xBC': form += 'u'; ++i; break;
            case '\x9F': form += "ss"; ++i; break;
            default: form += c; break;
            }
        } else {
            form += c;
        }
    }
    return form;
}

std::optional<std::size_t> Kataster::SpaltenIndex(std::string_view schlüssel) const {
    for (std::size_t i = 0; i < m_spalten.size(); ++i)
        if (m_spalten[i].kopf.schlüssel == schlüssel)
            return i;
    return std::nullopt;
}

std::size_t Kataster::SpalteHinzufügen(KatasterSpalte spalte) {
    if (auto vorhanden = SpaltenIndex(spalte.schlüssel))
        return *vorhanden;
    Spaltendaten daten;
    daten.kopf = std::move(spalte);
    daten.zellen.assign(m_zeilen, 0);
    m_spalten.push_back(std::move(daten));
    m_anzeige.push_back(m_spalten.size() - 1);
    return m_spalten.size() - 1;
}

void Kataster::SpalteVerschieben(std::size_t spalte, std::size_t platz) {
    const auto it = std::find(m_anzeige.begin(), m_anzeige.end(), spalte);
    if (it == m_anzeige.end())
        return;
    m_anzeige.erase(it);
    m_anzeige.insert(m_anzeige.begin() + static_cast<std::ptrdiff_t>(std::min(platz, m_anzeige.size())),
                     spalte);
}

void Kataster::AlleSpaltenZeigen() {
    std::iota(m_anzeige.begin(), m_anzeige.end(), std::size_t{0});
    for (auto& s : m_spalten)
        s.kopf.sichtbar = true;
}

void Kataster::ZeileHinzufügen(std::string_view tabGetrennt) {
    std::size_t spalte = 0;
    std::size_t anfang = 0;
    while (spalte < m_spalten.size()) {
        const auto tab = tabGetrennt.find('\t', anfang);
        auto& s = m_spalten[spalte++];
        s.zellen.push_back(s.pool.Aufnehmen(tabGetrennt.substr(anfang, tab - anfang)));
        if (tab == std::string_view::npos)
            break;
        anfang = tab + 1;
    }
    for (; spalte < m_spalten.size(); ++spalte)
        m_spalten[spalte].zellen.push_back(0);
    m_auswahl.push_back(0);
    ++m_zeilen;
}

void Kataster::ZeileHinzufügen(std::span<const std::string_view> zellen) {
    for (std::size_t spalte = 0; spalte < m_spalten.size(); ++spalte) {
        auto& s = m_spalten[spalte];
        s.zellen.push_back(spalte < zellen.size() ? s.pool.Aufnehmen(zellen[spalte]) : 0);
    }
    m_auswahl.push_back(0);
    ++m_zeilen;
}

std::string_view Kataster::Zelle(std::size_t zeile, std::string_view schlüssel) const {
    const auto spalte = SpaltenIndex(schlüssel);
    return spalte ? Zelle(zeile, *spalte) : std::string_view{};
}

void Kataster::ZelleSetzen(std::size_t zeile, std::size_t spalte, std::string_view text) {
    auto& s = m_spalten[spalte];
    s.zellen[zeile] = s.pool.Aufnehmen(text);
}

bool Kataster::ZelleSetzen(std::size_t zeile, std::string_view schlüssel, std::string_view text) {
    const auto spalte = SpaltenIndex(schlüssel);
    if (!spalte)
        return false;
    ZelleSetzen(zeile, *spalte, text);
    return true;
}

std::string Kataster::ZeileAlsText(std::size_t zeile) const {
    std::string text;
    for (std::size_t spalte = 0; spalte < m_spalten.size(); ++spalte) {
        if (spalte > 0)
            text += '\t';
        text += Zelle(zeile, spalte);
    }
    return text;
}

void Kataster::ZeilenLeeren() {
    for (auto& s : m_spalten) {
        s.zellen.clear();
        s.pool = detail::Textpool();
    }
    m_auswahl.clear();
    m_zeilen = 0;
}

void Kataster::Leeren() {
    m_spalten.clear();
    m_anzeige.clear();
    m_auswahl.clear();
    m_zeilen = 0;
}

void Kataster::ZeilenLöschen(std::span<const std::size_t> zeilen) {
    std::vector<std::uint8_t> weg(m_zeilen, 0);
    for (std::size_t z : zeilen)
        if (z < m_zeilen)
            weg[z] = 1;
    const auto behalten = [&](auto& werte) {
        std::size_t ziel = 0;
        for (std::size_t z = 0; z < m_zeilen; ++z)
            if (!weg[z])
                werte[ziel++] = werte[z];
        werte.resize(ziel);
    };
    for (auto& s : m_spalten)
        behalten(s.zellen);
    behalten(m_auswahl);
    m_zeilen = m_auswahl.size();
}

std::vector<std::uint32_t> Kataster::Ränge(std::size_t spalte) const {
    // Sort the distinct texts once; a row then compares by the rank of its text.
    const auto& pool = m_spalten[spalte].pool;
    std::vector<std::string> formen(pool.Anzahl());
    for (std::uint32_t n = 0; n < pool.Anzahl(); ++n)
        formen[n] = Vergleichsform(pool.Text(n));
    std::vector<std::uint32_t> ordnung(pool.Anzahl());
    std::iota(ordnung.begin(), ordnung.end(), 0u);
    std::sort(ordnung.begin(), ordnung.end(), [&](std::uint32_t a, std::uint32_t b) {
        if (formen[a] != formen[b])
            return formen[a] < formen[b];
        return pool.Text(a) < pool.Text(b);
    });
    std::vector<std::uint32_t> rang(pool.Anzahl());
    for (std::uint32_t r = 0; r < ordnung.size(); ++r)
        rang[ordnung[r]] = r;
    return rang;
}

void Kataster::Sortieren(std::string_view schlüsselliste, bool absteigend) {
    // Per key column, the rank of each row's text: the sort compares these numbers.
    std::vector<std::vector<std::uint32_t>> schlüssel;
    for (std::string_view teil : Teilen(schlüsselliste, ',')) {
        const auto spalte = SpaltenIndex(TrimmeLeerzeichen(teil));
        if (!spalte)
            continue; // a key without column is passed over
        const auto rang = Ränge(*spalte);
        std::vector<std::uint32_t> zeilenrang(m_zeilen);
        const auto& zellen = m_spalten[*spalte].zellen;
        for (std::size_t z = 0; z < m_zeilen; ++z)
            zeilenrang[z] = rang[zellen[z]];
        schlüssel.push_back(std::move(zeilenrang));
    }
    if (schlüssel.empty() || m_zeilen < 2)
        return;

    std::vector<std::uint32_t> ordnung(m_zeilen);
    std::iota(ordnung.begin(), ordnung.end(), 0u);
    std::stable_sort(ordnung.begin(), ordnung.end(), [&](std::uint32_t a, std::uint32_t b) {
        for (const auto& r : schlüssel)
            if (r[a] != r[b])
                return absteigend ? r[a] > r[b] : r[a] < r[b];
        return false;
    });

    const auto umordnen = [&](auto& werte) {
        std::remove_reference_t<decltype(werte)> neu(werte.size());
        for (std::size_t z = 0; z < m_zeilen; ++z)
            neu[z] = werte[ordnung[z]];
        werte.swap(neu);
    };
    for (auto& s : m_spalten)
        umordnen(s.zellen);
    umordnen(m_auswahl);
}

std::optional<std::size_t> Kataster::Suchen(std::size_t spalte, std::string_view begriff,
                                            std::size_t abZeile) const {
    if (spalte >= m_spalten.size() || abZeile >= m_zeilen)
        return std::nullopt;
    const bool präfix = begriff.ends_with('*');
    if (präfix)
        begriff.remove_suffix(1);
    const std::string gesucht = Vergleichsform(begriff);
    const auto& s = m_spalten[spalte];
    // Decide once per distinct text, then walk the rows by number.
    std::vector<std::uint8_t> passt(s.pool.Anzahl());
    for (std::uint32_t n = 0; n < s.pool.Anzahl(); ++n) {
        const std::string form = Vergleichsform(s.pool.Text(n));
        passt[n] = präfix ? form.starts_with(gesucht) : form == gesucht;
    }
    for (std::size_t z = abZeile; z < m_zeilen; ++z)
        if (passt[s.zellen[z]])
            return z;
    return std::nullopt;
}

Kataster::Index Kataster::IndexBauen(std::size_t spalte) const {
    Index index;
    const auto& s = m_spalten[spalte];
    index.m_pool = &s.pool;
    index.m_anfang.assign(s.pool.Anzahl() + 1, 0);
    for (std::uint32_t n : s.zellen)
        ++index.m_anfang[n + 1];
    std::partial_sum(index.m_anfang.begin(), index.m_anfang.end(), index.m_anfang.begin());
    index.m_zeilen.resize(m_zeilen);
    std::vector<std::size_t> stelle(index.m_anfang.begin(), index.m_anfang.end() - 1);
    for (std::size_t z = 0; z < m_zeilen; ++z)
        index.m_zeilen[stelle[s.zellen[z]]++] = z;
    return index;
}

std::span<const std::size_t> Kataster::Index::Zeilen(std::string_view text) const {
    std::uint32_t n = 0;
    if (!m_pool || !m_pool->Finden(text, n))
        return {};
    return {m_zeilen.data() + m_anfang[n], m_anfang[n + 1] - m_anfang[n]};
}

void Kataster::AuswahlLeeren() { std::fill(m_auswahl.begin(), m_auswahl.end(), 0); }

std::size_t Kataster::AnzahlAusgewählt() const {
    return static_cast<std::size_t>(std::count(m_auswahl.begin(), m_auswahl.end(), 1));
}

std::vector<std::size_t> Kataster::AusgewählteZeilen() const {
    std::vector<std::size_t> zeilen;
    for (std::size_t z = 0; z < m_zeilen; ++z)
        if (m_auswahl[z])
            zeilen.push_back(z);
    return zeilen;
}

std::size_t Kataster::Speicher() const {
    std::size_t summe = m_auswahl.capacity();
    for (const auto& s : m_spalten)
        summe += s.pool.Speicher() + s.zellen.capacity() * sizeof(std::uint32_t);
    return summe;
}

} // namespace flurix
