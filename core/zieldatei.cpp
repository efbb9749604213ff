#include "core/zieldatei.hpp"

#include "core/fehler.hpp"

#include <unistd.h>

namespace flurix {

std::filesystem::path Zieldatei::Zwischenname(const std::filesystem::path& ziel) {
    std::filesystem::path pfad = ziel;
    pfad += "." + std::to_string(::getpid()) + ".tmp";
    return pfad;
}

Zieldatei::Zieldatei(std::filesystem::path ziel)
    : m_ziel(std::move(ziel)), m_temporär(Zwischenname(m_ziel)) {
    m_kanal.emplace(m_temporär, Dateikanal::Zweck::Schreiben);
    m_puffer.reserve(Blockgröße + (1u << 16));
}

Zieldatei::~Zieldatei() {
    if (m_fertig)
        return;
    try {
        m_kanal.reset();
    } catch (...) {
        // Nothing to report: the half-written file goes anyway.
    }
    std::error_code fehler;
    std::filesystem::remove(m_temporär, fehler);
}

void Zieldatei::Leeren() {
    m_kanal->Schreiben(m_puffer.data(), m_puffer.size());
    m_puffer.clear();
}

void Zieldatei::Abschließen() {
    Leeren();
    m_kanal->Schließen();
    std::error_code fehler;
    std::filesystem::rename(m_temporär, m_ziel, fehler);
    if (fehler)
        throw Fehler("Die Datei \"" + m_ziel.string() + "\" kann nicht geschrieben werden (" +
                     fehler.message() + ")!   ");
    m_fertig = true;
}

} // namespace flurix
