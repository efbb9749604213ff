#include "core/programm.hpp"

#include "core/benutzereinstellungen.hpp"
#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/oberflaeche.hpp"
#include "core/tabellendatei.hpp"

#include <array>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include <unistd.h>

namespace flurix {
namespace {

std::filesystem::path ProgrammOrdner() {
    std::error_code ec;
    const auto datei = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::filesystem::current_path() : datei.parent_path();
}

// Step 4: the working directory must take a file, or nothing works.
bool SchreibrechtPrüfen(const std::filesystem::path& ordner) {
    // One probe a process: two programs starting at once must not take each other's away.
    const auto probe = ordner / ("###schreibrecht###" + std::to_string(::getpid()));
    {
        std::ofstream aus(probe, std::ios::binary | std::ios::trunc);
        aus << "test\r\n";
        if (!aus)
            return false;
    }
    const bool da = DateiVorhanden(probe);
    std::error_code ec;
    std::filesystem::remove(probe, ec);
    return da && !ec;
}

void ArbeitsverzeichnisBereinigen(const std::filesystem::path& ordner) {
    for (const char* name : {"tmp_dao_Gaz.xml", "tmp_dao_Gaz.mdb", "tmp_dao_GGVis.mdb",
                             "tmp_dao_GGVis.out", "tmp_dao_GGVis.out.prn"}) {
        std::error_code ec;
        std::filesystem::remove(ordner / name, ec);
    }
    DateienLöschen(ordner, "_tmpDAOdbFile*.*");
}

std::vector<std::string> AnsichtenLesen(const std::filesystem::path& datei) {
    std::vector<std::string> namen;
    const std::string text = DateitextNachUtf8(DateiKomplettLesen(datei));
    for (std::string_view zeile : TextZeilen(text))
        if (std::string name = TokenNr(zeile, 1, "="); !name.empty())
            namen.push_back(std::move(name));
    return namen;
}

void WebSchlüsselLaden(Programmzustand& zustand, Oberfläche& ui) {
    zustand.webBenutzer.clear();
    zustand.webPasswort.clear();
    const auto datei = zustand.installation.WebSchlüsseldatei();
    if (!DateiVorhanden(datei))
        return;
    try {
        auto [benutzer, passwort] = WfsSchlüsselLesen(datei);
        zustand.webBenutzer = std::move(benutzer);
        zustand.webPasswort = std::move(passwort);
    } catch (const std::exception&) {
        ui.Meldung("Fehler beim Einlesen der Key-Datei " + datei.string() + "!   ", ProduktTitel,
                   Stil::Fehler);
    }
}

} // namespace

Installation Installation::Finden() {
    if (const char* heim = std::getenv("FLURIX_HOME"); heim && *heim)
        return {PfadNormalisieren(heim)};
    const auto programm = ProgrammOrdner();
    auto ordner = programm;
    for (int ebene = 0; ebene <= 4; ++ebene) {
        if (DateiVorhanden(ordner / "config" / "Flurix.dat"))
            return {ordner};
        if (!ordner.has_parent_path() || ordner.parent_path() == ordner)
            break;
        ordner = ordner.parent_path();
    }
    return {programm};
}

std::string FensterTitel() {
    return "Flurix V" + std::to_string(FLURIX_VERSION_MAJOR) + "." +
           std::to_string(FLURIX_VERSION_MINOR) + "(" + std::to_string(FLURIX_VERSION_REVISION) +
           ")";
}

std::filesystem::path StandardArbeitsverzeichnis() {
    return std::filesystem::temp_directory_path() / "flurix" / "";
}

Ergebnis Programmstart(Programmzustand& zustand, std::string_view kommandozeile,
                       Zahlenformat& format, Oberfläche& ui) {
    zustand.auftrag = Auftrag{};
    zustand.nummernformat.FormatGeprüft = false;
    zustand.BeendenFragen = true;

    // Everything that follows may parse numbers.
    PrüfeNummerFormatAufruf(zustand.einstellungen, format, zustand.nummernformat, ui);

    const std::string wert = zustand.einstellungen.Wert("tempArbeitsverzeichnis");
    zustand.arbeitsverzeichnis =
        wert.empty() ? StandardArbeitsverzeichnis() : std::filesystem::path(wert) / "";
    std::error_code ec;
    std::filesystem::create_directories(zustand.arbeitsverzeichnis, ec);
    zustand.dialogStartordner = zustand.arbeitsverzeichnis.string();

    if (!SchreibrechtPrüfen(zustand.arbeitsverzeichnis)) {
        std::string text = "Das Arbeitsverzeichnis: \"" + zustand.arbeitsverzeichnis.string() +
                           "\" konnte nicht erstellt werden.\n"
                           "Bitte prüfen Sie Ihre Lese- und Schreibrechte,\n"
                           "oder informieren Ihren System-Administrator!\n"
                           "Abbruch!   ";
        ui.Meldung(text, ProduktTitel, Stil::Fehler);
        return Ergebnis::Ende(std::move(text));
    }
    ArbeitsverzeichnisBereinigen(zustand.arbeitsverzeichnis);

    if (DateiVorhanden(zustand.installation.Spaltenansichten()))
        zustand.spaltenansichten = AnsichtenLesen(zustand.installation.Spaltenansichten());
    WebSchlüsselLaden(zustand, ui);
    zustand.protokollMapAnfrage = zustand.einstellungen.Ja("ProtokollMapAnfrage");
    zustand.gewünschteAnsicht = zustand.einstellungen.Wert("FlurixSpaltenanzeige");
    if (zustand.gewünschteAnsicht.empty())
        zustand.gewünschteAnsicht = "Kataster ALKIS";

    zustand.dienstkatalog = zustand.installation.Dienstkatalog();
    if (!DateiVorhanden(zustand.dienstkatalog)) {
        const std::string text = "Flurix nicht korrekt installiert! Abbruch!   ";
        ui.Meldung(text, "MAP-Viewer", Stil::Fehler);
        return Ergebnis::Ende(text);
    }

    zustand.auftrag = KommandozeileLesen(kommandozeile, ui);
    if (!zustand.auftrag.AuftragsPfad.empty())
        zustand.dialogStartordner = zustand.auftrag.AuftragsPfad;
    if (zustand.auftrag.art == Startart::Beenden)
        return Ergebnis::Ende("Fehlerhafte Auftragspfadbeschreibung! Abbruch!   ");
    return Ergebnis::Ok();
}

Ergebnis Beenden(Programmzustand& zustand, Zahlenformat& format, Oberfläche& ui,
                 const Beendenumgebung& umgebung) {
    if (zustand.BeendenFragen && !zustand.auftrag.StillModus) {
        const Fragestellung frage{"Wollen Sie den Flurix jetzt wirklich beenden?   ", ProduktTitel,
                                  Knöpfe::JaNein, Antwort::Ja, Antwort::Ja};
        if (ui.Frage(frage) == Antwort::Nein)
            return Ergebnis::Abbruch();
    }
    NummerFormatZurücksetzen(zustand.einstellungen, format, zustand.nummernformat, ui);
    if (umgebung.karteSchließen)
        umgebung.karteSchließen();
    if (!umgebung.spaltenbreiten.empty() && !umgebung.benutzerordner.empty()) {
        try {
            Benutzereinstellungen(umgebung.benutzerordner)
                .Schreiben("MyApplication", "GridFlurix", "ColWidths", umgebung.spaltenbreiten);
        } catch (const Fehler&) {
            // Column widths are a convenience: the program still ends.
        }
    }
    const auto& ordner = zustand.arbeitsverzeichnis;
    if (!ordner.empty()) {
        std::error_code ec;
        for (const auto& db : zustand.arbeitsdatenbanken)
            std::filesystem::remove(db, ec);
        for (const char* name : {"tmp_dao_GGVis.mdb", "tmp_dao_GGVis.out", "tmp_dao_GGVis.out.prn"})
            std::filesystem::remove(ordner / name, ec);
        DateienLöschen(ordner, "_tmpDAOdbFile*.*");
        DateienLöschen(ordner, "_tmp_DAODB_QGIS_*.*");
    }
    return Ergebnis::Ok();
}

Ergebnis StarteinstellungÜbernehmen(const Einstellungen& einstellungen, const Kartenstart& werte,
                                    Oberfläche& ui) {
    const Fragestellung frage{
        "Web-Service, Zentrumskoordinate, Maßstab und EPSG als Standardvoreinstellung übernehmen?   ",
        ProduktTitel, Knöpfe::JaNein, Antwort::Ja, Antwort::Ja};
    if (ui.Frage(frage) != Antwort::Ja)
        return Ergebnis::Abbruch();
    try {
        const auto& datei = einstellungen.Datei();
        std::filesystem::copy_file(datei, datei.string() + "_" + ZeitStempelText() + ".dat",
                                   std::filesystem::copy_options::overwrite_existing);
        const std::array<std::pair<std::string_view, const std::string*>, 4> schlüssel = {{
            {"StartMapWebService", &werte.dienst},
            {"StartMapWebServiceKoo", &werte.koordinate},
            {"StartMapWebServiceEPSG", &werte.epsg},
            {"StartMapWebServiceMaßstab", &werte.maßstab},
        }};
        // The blank before "=" keeps "StartMapWebService =" from matching the longer keys.
        for (const auto& [name, wert] : schlüssel) {
            const std::string präfix = std::string(name) + " =";
            ZeileErsetzen(datei, präfix, präfix + *wert);
        }
    } catch (const std::exception& e) {
        ui.Meldung(e.what(), ProduktTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag(e.what());
    }
    ui.Meldung("Systemdatei Flurix.dat erfolgreich geändert!   ", ProduktTitel, Stil::Information);
    return Ergebnis::Ok();
}

} // namespace flurix
