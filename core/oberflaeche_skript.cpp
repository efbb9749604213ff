#include "core/oberflaeche_skript.hpp"

namespace flurix {

void SkriptOberfläche::Meldung(std::string_view text, std::string_view titel, Stil stil) {
    m_ereignisse.push_back({Ereignis::Art::Meldung, std::string(text), std::string(titel), 0});
    m_stile.push_back(stil);
}

Antwort SkriptOberfläche::Frage(const Fragestellung& frage) {
    m_ereignisse.push_back(
        {Ereignis::Art::Frage, std::string(frage.text), std::string(frage.titel), 0});
    if (m_antworten.empty())
        return frage.unbeaufsichtigt;
    Antwort antwort = m_antworten.front();
    m_antworten.pop_front();
    return antwort;
}

std::string SkriptOberfläche::Eingabe(std::string_view text, std::string_view titel,
                                     std::string_view vorgabe) {
    m_ereignisse.push_back({Ereignis::Art::Frage, std::string(text), std::string(titel), 0});
    if (m_eingaben.empty())
        return std::string(vorgabe);
    std::string eingabe = std::move(m_eingaben.front());
    m_eingaben.pop_front();
    return eingabe;
}

void SkriptOberfläche::Status(int panel, std::string_view text) {
    m_ereignisse.push_back({Ereignis::Art::Status, std::string(text), {}, panel});
}

void SkriptOberfläche::Fortschritt(long long wert, long long) { m_fortschritt = wert; }

void SkriptOberfläche::Protokoll(std::string_view zeile) {
    m_ereignisse.push_back({Ereignis::Art::Protokoll, std::string(zeile), {}, 0});
}

std::vector<std::string> SkriptOberfläche::Texte(Ereignis::Art art) const {
    std::vector<std::string> texte;
    for (const auto& e : m_ereignisse)
        if (e.art == art)
            texte.push_back(e.text);
    return texte;
}

std::string SkriptOberfläche::LetzterStatus(int panel) const {
    for (auto it = m_ereignisse.rbegin(); it != m_ereignisse.rend(); ++it)
        if (it->art == Ereignis::Art::Status && it->panel == panel)
            return it->text;
    return {};
}

} // namespace flurix
