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
    // The buffers grow with the text: a small file (a setting) costs no block of memory.
    m_kanal.emplace(m_temporär, Dateikanal::Zweck::Schreiben, m_ziel);
}

Zieldatei::~Zieldatei() {
    // The block on its way uses the channel and the buffer.
    if (m_auftrag.valid())
        m_auftrag.wait();
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

void Zieldatei::Abwarten() {
    if (m_auftrag.valid())
        m_auftrag.get();
}

void Zieldatei::Leeren() {
    Abwarten();
    if (m_puffer.empty())
        return;
    m_puffer.swap(m_unterwegs);
    m_puffer.clear();
    m_auftrag = std::async(std::launch::async,
                           [this] { m_kanal->Schreiben(m_unterwegs.data(), m_unterwegs.size()); });
}

void Zieldatei::Abschließen() {
    Leeren();
    Abwarten();
    m_kanal->Schließen();
    std::error_code fehler;
    std::filesystem::rename(m_temporär, m_ziel, fehler);
    if (fehler)
        DateiFehler(m_ziel, "geschrieben", fehler.value());
    m_fertig = true;
}

} // namespace flurix
