#pragma once
// The UI port: the one way the core speaks to a person. Message boxes, questions, status-bar texts,
// progress, the Escape poll and the NAS protocol all pass here, so that their German texts can be
// shown by the GUI, written by the batch run, or recorded by a test.

#include <string>
#include <string_view>

namespace flurix {

/// Look of a message box.
enum class Stil { Information, Warnung, Fehler, Frage };

/// Buttons of a question.
enum class Knöpfe { JaNein, JaNeinAbbrechen, OkAbbrechen };

/// Answer to a question. The values are those the answers have always been kept as (6 yes, 7 no).
enum class Antwort { Ok = 1, Abbrechen = 2, Ja = 6, Nein = 7 };

/// One question: text and title as shown, the buttons, the button that is preselected, and the answer
/// an unattended run takes: the one that lets the run go on. It owns its texts, so a question may
/// be put together from temporaries.
struct Fragestellung {
    std::string text;
    std::string titel = "Flurix";
    Knöpfe knöpfe = Knöpfe::JaNein;
    Antwort vorgabe = Antwort::Ja;
    Antwort unbeaufsichtigt = Antwort::Ja;
};

/// Title of a message box unless a caller says otherwise.
inline constexpr char ProduktTitel[] = "Flurix";

class Oberfläche {
public:
    Oberfläche() = default;
    Oberfläche(const Oberfläche&) = delete;
    Oberfläche& operator=(const Oberfläche&) = delete;
    Oberfläche(Oberfläche&&) = delete;
    Oberfläche& operator=(Oberfläche&&) = delete;
    virtual ~Oberfläche() = default;

    /// A message box; returns when the person has seen it.
    virtual void Meldung(std::string_view text, std::string_view titel, Stil stil) = 0;
    /// A question; returns the answer.
    virtual Antwort Frage(const Fragestellung& frage) = 0;
    /// Text of status-bar panel 1..6.
    virtual void Status(int panel, std::string_view text) = 0;
    /// Progress of long work: wert of max.
    virtual void Fortschritt(long long wert, long long max) = 0;
    /// True when the person asked to stop the running work (Escape).
    virtual bool AbbruchGewünscht() = 0;
    /// One line of the NAS protocol.
    virtual void Protokoll(std::string_view zeile) = 0;
    /// A notice that closes itself after `sekunden`, so that an unattended run never waits on it.
    /// A face without such a box shows it as a plain message (a line on stderr in a batch run).
    virtual void Hinweis(std::string_view text, std::string_view titel, int sekunden) {
        static_cast<void>(sekunden);
        Meldung(text, titel, Stil::Information);
    }
    /// An input box: asks for a text and returns what was typed, "" when the person cancelled. A
    /// face that can't ask (an unattended run) returns `vorgabe`.
    virtual std::string Eingabe(std::string_view text, std::string_view titel,
                                std::string_view vorgabe) {
        static_cast<void>(text);
        static_cast<void>(titel);
        return std::string(vorgabe);
    }
};

} // namespace flurix
