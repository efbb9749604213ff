#pragma once
// The UI port of tests: answers come from a queue, and every text is recorded in order.

#include "core/oberflaeche.hpp"

#include <deque>
#include <string>
#include <vector>

namespace flurix {

/// What the core said, in the order it said it.
struct Ereignis {
    enum class Art { Meldung, Frage, Status, Protokoll };
    Art art;
    std::string text;
    std::string titel; ///< message and question only
    int panel = 0;     ///< status only

    bool operator==(const Ereignis&) const = default;
};

/// Answers questions from a queue; when the queue is empty it takes the unattended answer. Input
/// boxes are recorded as questions and take their texts from a queue of their own (the default
/// when it is empty).
/// `Abbrechen()` makes the next polls of AbbruchGewünscht() true.
class SkriptOberfläche final : public Oberfläche {
public:
    SkriptOberfläche() = default;
    explicit SkriptOberfläche(std::deque<Antwort> antworten) : m_antworten(std::move(antworten)) {}

    void Meldung(std::string_view text, std::string_view titel, Stil stil) override;
    Antwort Frage(const Fragestellung& frage) override;
    void Status(int panel, std::string_view text) override;
    void Fortschritt(long long wert, long long max) override;
    bool AbbruchGewünscht() override { return m_abbruch; }
    void Protokoll(std::string_view zeile) override;
    std::string Eingabe(std::string_view text, std::string_view titel,
                        std::string_view vorgabe) override;

    /// The texts the next input boxes return, in order.
    void Eingaben(std::deque<std::string> texte) { m_eingaben = std::move(texte); }
    void Antworten(std::deque<Antwort> antworten) { m_antworten = std::move(antworten); }
    /// Forgets what was recorded and takes new answers: one face for several steps of a test.
    void Neu(std::deque<Antwort> antworten = {}) {
        m_antworten = std::move(antworten);
        m_ereignisse.clear();
        m_stile.clear();
        m_fortschritt = -1;
        m_abbruch = false;
    }
    void Abbrechen() { m_abbruch = true; }

    const std::vector<Ereignis>& Ereignisse() const { return m_ereignisse; }
    /// The texts of one kind only, in order.
    std::vector<std::string> Texte(Ereignis::Art art) const;
    std::vector<std::string> Meldungen() const { return Texte(Ereignis::Art::Meldung); }
    std::vector<std::string> Fragen() const { return Texte(Ereignis::Art::Frage); }
    /// The last text shown in a status panel, "" when none was.
    std::string LetzterStatus(int panel) const;
    long long LetzterFortschritt() const { return m_fortschritt; }
    std::vector<Stil> Stile() const { return m_stile; }

private:
    std::deque<Antwort> m_antworten;
    std::deque<std::string> m_eingaben;
    std::vector<Ereignis> m_ereignisse;
    std::vector<Stil> m_stile;
    long long m_fortschritt = -1;
    bool m_abbruch = false;
};

} // namespace flurix
