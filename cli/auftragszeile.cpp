#include "cli/befehle.hpp"

#include "cli/sitzung.hpp"
#include "import/datenladen.hpp"

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
        // The unattended run ends by itself, without a question.
        sitzung.ui.Meldung(import::NochNichtVerfügbar("Der unbeaufsichtigte NAS-Lauf"),
                           ProduktTitel, Stil::Information);
        return sitzung.Beenden(1);
    case Startart::Interaktiv:
        // An unknown type has been reported; a plain start without a job is the desktop program.
        return sitzung.zustand.auftrag.Kommandozeile.empty() ? starten() : sitzung.Beenden(1);
    case Startart::Beenden:
        break;
    }
    return 1;
}

} // namespace flurix::cli
