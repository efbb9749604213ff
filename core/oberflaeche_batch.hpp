#pragma once
// The UI port of unattended runs and of the command line: no question is asked.

#include "core/oberflaeche.hpp"

#include <iosfwd>

namespace flurix {

/// Each question takes the answer that lets the run go on. Every message and every question goes to
/// `fehlerausgabe` (stderr) word for word, and also to `protokoll` when one is given (the run's log).
/// Status texts and progress are shown on `fehlerausgabe` only when `fortschrittZeigen` is set
/// (the CLI sets it when it writes to a terminal).
class BatchOberfläche final : public Oberfläche {
public:
    explicit BatchOberfläche(std::ostream& fehlerausgabe, std::ostream* protokoll = nullptr,
                             bool fortschrittZeigen = false);

    void Meldung(std::string_view text, std::string_view titel, Stil stil) override;
    Antwort Frage(const Fragestellung& frage) override;
    void Status(int panel, std::string_view text) override;
    void Fortschritt(long long wert, long long max) override;
    bool AbbruchGewünscht() override { return false; }
    void Protokoll(std::string_view zeile) override;
    /// Writes the prompt and takes the default: nobody is there to type.
    std::string Eingabe(std::string_view text, std::string_view titel,
                        std::string_view vorgabe) override;

private:
    void Zeile(std::string_view text);

    std::ostream& m_fehlerausgabe;
    std::ostream* m_protokoll;
    bool m_fortschrittZeigen;
};

} // namespace flurix
