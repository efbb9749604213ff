#include "cli/sitzung.hpp"

#include "core/kataster_datei.hpp"

namespace flurix::cli {

Sitzung::Sitzung(const Umgebung& umgebung, std::ostream& fehler)
    : zustand(umgebung.installation ? Installation{*umgebung.installation}
                                    : Installation::Finden()),
      ui(fehler, nullptr, umgebung.fortschritt) {}

bool Sitzung::Starten(std::string_view kommandozeile) {
    return Programmstart(zustand, kommandozeile, format, ui).status() != Ergebnis::Status::Beenden;
}

bool Sitzung::Versuchen(const std::function<void()>& arbeit) {
    try {
        arbeit();
        return true;
    } catch (const Fehler& f) {
        ui.Meldung(f.what(), ProduktTitel, Stil::Fehler);
        return false;
    }
}

bool Sitzung::TabelleLaden(Kataster& kataster, const std::filesystem::path& datei) {
    return Versuchen([&] { KatasterLaden(kataster, datei); });
}

bool Sitzung::TabelleSpeichern(const Kataster& kataster, const std::filesystem::path& datei) {
    return Versuchen([&] { KatasterSpeichern(kataster, datei); });
}

int Sitzung::Beenden(int code) {
    zustand.BeendenFragen = false;
    flurix::Beenden(zustand, format, ui, {});
    return code;
}

int Exitcode(const Ergebnis& ergebnis) { return ergebnis ? 0 : 1; }

} // namespace flurix::cli
