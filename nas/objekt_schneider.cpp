#include "nas/objekt_schneider.hpp"

#include "core/fehler.hpp"

#include <cstring>

namespace flurix::nas {
namespace {

constexpr std::size_t Lesemenge = 4u << 20;
// Text between features without any line end is handed on in pieces of this size, so that a file
// that is one long line without features can't fill the memory.
constexpr std::size_t LängsteZwischenzeile = 16u << 20;

std::size_t Suchen(std::string_view text, std::string_view muster, std::size_t ab) {
    if (ab >= text.size())
        return std::string_view::npos;
    const void* fund = memmem(text.data() + ab, text.size() - ab, muster.data(), muster.size());
    return fund ? static_cast<std::size_t>(static_cast<const char*>(fund) - text.data())
                : std::string_view::npos;
}

} // namespace

ObjektSchneider::ObjektSchneider(const std::filesystem::path& datei, std::string mitgliedTag)
    : m_datei(datei, std::ios::binary), m_start("<" + mitgliedTag + ">"),
      m_ende("</" + mitgliedTag + ">") {
    std::error_code fehler;
    m_größe = std::filesystem::file_size(datei, fehler);
    if (!m_datei || fehler)
        throw Fehler("Die Datei \"" + datei.string() + "\" kann nicht gelesen werden.");
}

bool ObjektSchneider::Nachlesen() {
    if (m_dateiende)
        return false;
    // What was consumed goes first: the buffer holds at most one feature and one block.
    m_puffer.erase(0, m_anfang);
    m_anfang = 0;
    const std::size_t alt = m_puffer.size();
    m_puffer.resize(alt + Lesemenge);
    m_datei.read(m_puffer.data() + alt, static_cast<std::streamsize>(Lesemenge));
    const auto gelesen = static_cast<std::size_t>(m_datei.gcount());
    m_puffer.resize(alt + gelesen);
    m_gelesen += gelesen;
    if (gelesen < Lesemenge)
        m_dateiende = true;
    return gelesen > 0;
}

void ObjektSchneider::ZwischenzeilenAbgeben(std::size_t bis, bool auchLetzte,
                                           const std::function<void(std::string_view)>& zeile) {
    const std::string_view text(m_puffer);
    std::size_t pos = m_anfang;
    while (pos < bis) {
        std::size_t ende = pos;
        while (ende < bis && text[ende] != '\n' && text[ende] != '\r')
            ++ende;
        if (ende == bis && !auchLetzte && bis - pos < LängsteZwischenzeile)
            break; // the line goes on in the next block
        if (ende > pos)
            zeile(text.substr(pos, ende - pos));
        pos = ende < bis ? ende + 1 : ende;
    }
    m_anfang = pos;
}

bool ObjektSchneider::Nächstes(std::string_view& objekt,
                               const std::function<void(std::string_view)>& zwischenzeile) {
    // The start tag and the text before it.
    for (;;) {
        const std::size_t start = Suchen(m_puffer, m_start, m_anfang);
        if (start != std::string_view::npos) {
            ZwischenzeilenAbgeben(start, true, zwischenzeile);
            m_anfang = start + m_start.size();
            break;
        }
        if (m_dateiende) {
            ZwischenzeilenAbgeben(m_puffer.size(), true, zwischenzeile);
            return false;
        }
        // Keep what could be the beginning of a start tag cut by the block.
        const std::size_t sicher = m_puffer.size() > m_start.size() ? m_puffer.size() - m_start.size() : 0;
        if (sicher > m_anfang)
            ZwischenzeilenAbgeben(sicher, false, zwischenzeile);
        Nachlesen();
    }
    // The end tag. Both tags hold "<tag>" behind "<" or "</": one search finds either.
    const std::string_view name = std::string_view(m_start).substr(1);
    std::size_t suchAb = m_anfang;
    for (;;) {
        const std::size_t fund = Suchen(m_puffer, name, suchAb);
        if (fund == std::string_view::npos) {
            if (m_dateiende) {
                m_abgeschnitten = !std::string_view(m_puffer).substr(m_anfang).empty();
                m_anfang = m_puffer.size();
                return false;
            }
            const std::size_t bekannt = m_puffer.size() - m_anfang;
            Nachlesen();
            // Search on where the last search ended, less what could be a tag cut by the block.
            suchAb = m_anfang + (bekannt > name.size() ? bekannt - name.size() : 0);
            continue;
        }
        if (fund >= m_anfang + 2 && m_puffer[fund - 1] == '/' && m_puffer[fund - 2] == '<') {
            objekt = std::string_view(m_puffer).substr(m_anfang, fund - 2 - m_anfang);
            m_anfang = fund + name.size();
            return true;
        }
        if (fund >= m_anfang + 1 && m_puffer[fund - 1] == '<') {
            // A new feature begins before this one ended: the piece before it is dropped.
            ++m_unvollständige;
            m_anfang = fund + name.size();
            suchAb = m_anfang;
            continue;
        }
        suchAb = fund + name.size();
    }
}

} // namespace flurix::nas
