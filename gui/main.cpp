// flurix-gui: the desktop program. The start-up and the commands are the core's; this file only
// ties them to the Qt windows.

#include "core/programm.hpp"
#include "gui/form_datenbank.hpp"
#include "gui/qt_oberflaeche.hpp"

#include <QApplication>

#include <string>

int main(int argc, char** argv) {
    // QApplication sets the C library's locale from the environment (setlocale(LC_ALL, "")), so the
    // number format found below is the user's; it also takes its own options out of argv.
    QApplication app(argc, argv);
    flurix::gui::QtTexteDeutsch(app);

    flurix::Programmzustand zustand(flurix::Installation::Finden());
    flurix::ProzessZahlenformat format;
    flurix::gui::QtOberfläche ui;

    std::string kommandozeile;
    for (int i = 1; i < argc; ++i) {
        if (i > 1)
            kommandozeile += ' ';
        kommandozeile += argv[i];
    }
    const flurix::Ergebnis start = flurix::Programmstart(zustand, kommandozeile, format, ui);
    if (start.status() == flurix::Ergebnis::Status::Beenden)
        return 1;

    flurix::gui::FormDatenbank fenster(zustand, format, ui);
    fenster.Starten();
    return QApplication::exec();
}
