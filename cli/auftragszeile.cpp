#include "cli/befehle.hpp"

#include "cli/sitzung.hpp"
#include "core/benutzereinstellungen.hpp"
#include "core/kataster.hpp"
#include "nas/nas_lauf.hpp"

#include <cstdlib>
#include <ostream>
#include <unistd.h>

namespace flurix::cli {
namespace {

std::string Zusammenfügen(const std::vector<std::string>& argumente) {
    std::string zeile;
    for (const auto& arg : argumente) {
        if (!zeile.empty())
            zeile += ' ';
        zeile += arg;
    }
    return zeile;
}

// The desktop program replaces this process; returns only when it can't be started.
int OberflächeStarten(const std::vector<std::string>& argumente, std::ostream& fehler) {
    const char* anzeige = std::getenv("DISPLAY");
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    if (!(anzeige && *anzeige) && !(wayland && *wayland)) {
        fehler << "Dieser Auftrag wird im Fenster von flurix-gui bearbeitet, aber es ist kein "
                  "Bildschirm verfügbar (DISPLAY ist nicht gesetzt)!   \n";
        return 1;
    }
    std::error_code ec;
    const auto programm =
        std::filesystem::read_symlink("/proc/self/exe", ec).parent_path() / "flurix-gui";
    std::vector<std::string> kopie = argumente;
    std::vector<char*> argv;
    std::string name = programm.string();
    argv.push_back(name.data());
    for (auto& arg : kopie)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    fehler.flush();
    ::execv(name.c_str(), argv.data());
    fehler << "Das Programm \"" << name << "\" kann nicht gestartet werden!   \n";
    return 1;
}

/// "<file>.xml /ggout /still" and its siblings: the NAS run with its output beside the input, with
/// the options the NAS window keeps, without a display and without a question.
int NasStapel(Sitzung& sitzung) {
    const nas::NasLaufauftrag lauf = nas::NasStapelauftrag(sitzung.zustand.auftrag);
    Ergebnis ergebnis;
    {
        nas::NasArbeitsbereich bereich(sitzung.zustand, sitzung.ui);
        bereich.interaktiv = false;
        bereich.optionen = nas::NasOptionen::AusText(
            Benutzereinstellungen(Benutzereinstellungen::StandardOrdner())
                .Lesen(nas::NasOptionenAnwendung, nas::NasOptionenAbschnitt, nas::NasOptionenSchlüssel));
        Kataster kataster;
        nas::NasLaufbericht bericht;
        ergebnis = nas::NasLauf(bereich, lauf, [&](const auto& änderung) { return änderung(kataster); }, bericht);
    }
    return sitzung.Beenden(ergebnis ? 0 : 1);
}

} // namespace

int Auftragszeile(const std::vector<std::string>& argumente, std::ostream&, std::ostream& fehler,
                  const Umgebung& umgebung) {
    Sitzung sitzung(umgebung, fehler);
    if (!sitzung.Starten(Zusammenfügen(argumente)))
        return 1;
    const auto starten = [&] {
        return umgebung.oberflächeStarten ? umgebung.oberflächeStarten(argumente)
                                          : OberflächeStarten(argumente, fehler);
    };
    switch (sitzung.zustand.auftrag.art) {
    case Startart::DateiLaden:
    case Startart::Karte:
        return starten();
    case Startart::NasStapel:
        return NasStapel(sitzung);
    case Startart::Interaktiv:
        // An unknown type has been reported; a plain start without a job is the desktop program.
        return sitzung.zustand.auftrag.Kommandozeile.empty() ? starten() : sitzung.Beenden(1);
    case Startart::Beenden:
        break;
    }
    return 1;
}

} // namespace flurix::cli
