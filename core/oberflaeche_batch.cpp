#include "core/oberflaeche_batch.hpp"

#include <ostream>

namespace flurix {

BatchOberfläche::BatchOberfläche(std::ostream& fehlerausgabe, std::ostream* protokoll,
                                 bool fortschrittZeigen)
    : m_fehlerausgabe(fehlerausgabe), m_protokoll(protokoll),
      m_fortschrittZeigen(fortschrittZeigen) {}

void BatchOberfläche::Zeile(std::string_view text) {
    if (m_fortschrittZeigen)
        m_fehlerausgabe << "\r\033[K"; // clear a progress line first
    m_fehlerausgabe << text << '\n';
    if (m_protokoll)
        *m_protokoll << text << '\n';
}

void BatchOberfläche::Meldung(std::string_view text, std::string_view, Stil) { Zeile(text); }

Antwort BatchOberfläche::Frage(const Fragestellung& frage) {
    Zeile(frage.text);
    return frage.unbeaufsichtigt;
}

std::string BatchOberfläche::Eingabe(std::string_view text, std::string_view,
                                     std::string_view vorgabe) {
    Zeile(text);
    return std::string(vorgabe);
}

void BatchOberfläche::Status(int, std::string_view text) {
    if (m_fortschrittZeigen)
        m_fehlerausgabe << "\r\033[K" << text << std::flush;
}

void BatchOberfläche::Fortschritt(long long wert, long long max) {
    if (m_fortschrittZeigen && max > 0)
        m_fehlerausgabe << "\r\033[K" << (wert * 100 / max) << " %" << std::flush;
}

void BatchOberfläche::Protokoll(std::string_view zeile) {
    if (m_protokoll)
        *m_protokoll << zeile << '\n';
}

} // namespace flurix
