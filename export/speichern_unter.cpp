#include "export/speichern_unter.hpp"

#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/oberflaeche.hpp"
#include "export/geograf_out.hpp"
#include "export/tabellenschreiber.hpp"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <unistd.h>

namespace flurix::ausgabe {
namespace {

// The title of the question about visible columns, per format.
std::string SpaltenfrageTitel(Speicherformat format) {
    switch (format) {
    case Speicherformat::TextTab:
        return "Export-Spaltentrenner: TAB";
    case Speicherformat::TextDollar:
        return "Export-Spaltentrenner: $";
    default:
        return ProduktTitel;
    }
}

bool Gefragt(Oberfläche& ui, std::string text, std::string titel) {
    const Fragestellung frage{std::move(text), std::move(titel), Knöpfe::JaNein, Antwort::Ja,
                              Antwort::Ja};
    return ui.Frage(frage) == Antwort::Ja;
}

// The questions before a branch; false when the user says No.
bool Bestätigt(const Kataster& kataster, Speicherformat format, Oberfläche& ui) {
    if (format == Speicherformat::Flurix)
        return Gefragt(ui, "Es werden alle Daten exportiert! Weiter?   ", ProduktTitel);
    if (!Gefragt(ui, "Es werden alle sichtbaren Datenspalten exportiert! Weiter?   ",
                 SpaltenfrageTitel(format)))
        return false;
    const std::size_t ausgewählt = kataster.AnzahlAusgewählt();
    return ausgewählt == 0 || Gefragt(ui,
                                      "Es werden alle (" + std::to_string(ausgewählt) +
                                          ") selektierten Datenzeilen ausgegeben! Weiter?   ",
                                      ProduktTitel);
}

bool OrdnerBeschreibbar(const std::filesystem::path& datei) {
    std::filesystem::path ordner = datei.parent_path();
    if (ordner.empty())
        ordner = ".";
    std::error_code ec;
    return std::filesystem::is_directory(ordner, ec) && ::access(ordner.c_str(), W_OK) == 0;
}

// Whether an existing file can be replaced: it is no folder, and its folder takes a new entry. The
// file itself stays until its successor is complete and renamed over it, so that a failed export
// never costs the user the older file.
bool Ersetzbar(const std::filesystem::path& datei) {
    std::error_code ec;
    return !std::filesystem::is_directory(datei, ec) && OrdnerBeschreibbar(datei);
}

// Writes one format; throws Fehler.
void Schreiben(const Kataster& kataster, Speicherformat format, const std::filesystem::path& ziel,
               const Speicherumgebung& umgebung, Oberfläche& ui) {
    if (format == Speicherformat::Flurix) {
        KatasterSpeichern(kataster, ziel);
        return;
    }
    if (format == Speicherformat::Access) {
        ExportGridToAccess(kataster, ziel, umgebung.arbeitsverzeichnis, ui);
        return;
    }
    const Ausgabeauswahl auswahl = AusgabeauswahlBilden(kataster);
    const auto spalten = Ausgabespalten(kataster, auswahl);
    std::unique_ptr<Tabellenschreiber> schreiber;
    switch (format) {
    case Speicherformat::TextTab:
        schreiber = std::make_unique<TrennzeichenSchreiber>(ziel, spalten, '\t');
        break;
    case Speicherformat::TextDollar:
        schreiber = std::make_unique<TrennzeichenSchreiber>(ziel, spalten, '$');
        break;
    case Speicherformat::Excel:
        schreiber = std::make_unique<XlsxSchreiber>(ziel, spalten, umgebung.arbeitsverzeichnis);
        break;
    default:
        schreiber = std::make_unique<XmlSchreiber>(ziel, spalten);
        break;
    }
    // The grid is read out row by row: the status bar shows how far.
    TabelleSchreiben(kataster, auswahl, *schreiber, &ui, "% ausgelesen  ");
}

} // namespace

std::string_view Endung(Speicherformat format) {
    switch (format) {
    case Speicherformat::Geograf:
        return ".out";
    case Speicherformat::TextTab:
    case Speicherformat::TextDollar:
        return ".txt";
    case Speicherformat::Excel:
        return ".xlsx";
    case Speicherformat::Xml:
        return ".xml";
    case Speicherformat::Flurix:
        return ".fil";
    case Speicherformat::Access:
        return ".mdb";
    }
    return {};
}

std::string Speicherstamm(std::string_view pfad) {
    // The last dot of the file name: a dot in a folder ("/home/jan.mueller/") or a name's
    // leading dot (".liste") is no extension.
    const auto trenner = pfad.rfind('/');
    const auto name = trenner == std::string_view::npos ? 0 : trenner + 1;
    const auto punkt = pfad.rfind('.');
    if (punkt == std::string_view::npos || punkt <= name)
        return std::string(pfad);
    return std::string(pfad.substr(0, punkt));
}

Ergebnis ALBDatenSpeichernUnter(const Kataster& kataster, Speicherformat format,
                                const std::filesystem::path& gewählt,
                                const Speicherumgebung& umgebung, Oberfläche& ui) {
    const auto fehlschlag = [&ui](std::string text, std::string_view titel, Stil stil) {
        ui.Meldung(text, titel, stil);
        return Ergebnis::Fehlschlag(std::move(text));
    };
    try {
        if (kataster.Leer())
            return fehlschlag("In der ALB-Datei wurden keine Flurstücke vorgefunden!   ",
                              ProduktTitel, Stil::Warnung);
        const std::string pfad = gewählt.string();
        std::error_code ec;
        if (std::filesystem::exists(gewählt, ec)) {
            if (!Gefragt(ui, "Datei " + pfad + " ersetzen?   ", "Datei schon vorhanden!"))
                return Ergebnis::Abbruch();
            if (!Ersetzbar(gewählt))
                return fehlschlag("Eingabedatei " + pfad +
                                      " hat den Zugriff verweigert oder ist in Bearbeitung!?   ",
                                  "Datei in Bearbeitung!?", Stil::Warnung);
        }
        if (format == Speicherformat::Geograf) {
            if (umgebung.geograf)
                return umgebung.geograf(kataster, gewählt);
            return fehlschlag("Der GEOgraf-Export ist in dieser Version von Flurix noch nicht "
                              "verfügbar!   ",
                              ProduktTitel, Stil::Information);
        }
        const std::filesystem::path ziel =
            umgebung.zielname == Zielname::Stamm
                ? std::filesystem::path(Speicherstamm(pfad) + std::string(Endung(format)))
                : gewählt;
        if (!OrdnerBeschreibbar(ziel)) {
            const std::string ordner =
                ziel.parent_path().empty() ? std::string(".") : ziel.parent_path().string();
            return fehlschlag("Die Datei " + ziel.string() +
                                  " kann nicht erzeugt werden: Der Ordner " + ordner +
                                  " ist nicht vorhanden oder nicht beschreibbar!   ",
                              ProduktTitel, Stil::Fehler);
        }
        if (!Bestätigt(kataster, format, ui))
            return Ergebnis::Abbruch();
        Schreiben(kataster, format, ziel, umgebung, ui);
        ui.Status(2, "Datei " + ziel.string() + " erzeugt   ");
        return Ergebnis::Ok();
    } catch (const std::exception& e) {
        return fehlschlag(std::string(e.what()) + "   ", ProduktTitel, Stil::Fehler);
    }
}

Ergebnis GeografSpeichern(const Kataster& kataster, const GeografOptionen& optionen,
                          const std::filesystem::path& ziel, Oberfläche& ui) {
    const std::size_t ausgewählt = kataster.AnzahlAusgewählt();
    const std::string frage = ausgewählt > 0
                                  ? "Es werden alle (" + std::to_string(ausgewählt) +
                                        ") selektierten Datenzeilen ausgegeben! Weiter?   "
                                  : "Es werden alle (" + std::to_string(kataster.Zeilenzahl()) +
                                        ") Datenzeilen ausgegeben! Weiter?   ";
    if (!Gefragt(ui, frage, std::string(ProduktTitel)))
        return Ergebnis::Abbruch();
    return WriteGeografOut(kataster, optionen, ziel, ui);
}

void ExportGridToAccess(const Kataster& kataster, const std::filesystem::path& ziel,
                        const std::filesystem::path& arbeitsverzeichnis, Oberfläche& ui) {
    static std::atomic<unsigned> zähler{0};
    const std::filesystem::path temp =
        arbeitsverzeichnis / ("tmp_DAODB_GridFlurixToAccess_" + std::to_string(::getpid()) + "_" +
                              std::to_string(zähler++) + ".mdb");
    // The scratch database goes whatever happens: it holds a copy of the table.
    struct Aufräumen {
        const std::filesystem::path& datei;
        ~Aufräumen() {
            std::error_code ec;
            std::filesystem::remove(datei, ec);
        }
    } aufräumen{temp};
    std::error_code ec;
    std::filesystem::remove(temp, ec);

    const Ausgabeauswahl auswahl = AusgabeauswahlBilden(kataster);
    {
        AccessSchreiber schreiber(temp, Ausgabespalten(kataster, auswahl));
        TabelleSchreiben(kataster, auswahl, schreiber, &ui);
    }
    // Copied beside the target and renamed: the scratch database may lie on another file system.
    const std::filesystem::path zwischen = Zieldatei::Zwischenname(ziel);
    const Aufräumen zwischenWeg{zwischen};
    std::filesystem::copy_file(temp, zwischen, std::filesystem::copy_options::overwrite_existing, ec);
    if (!ec)
        std::filesystem::rename(zwischen, ziel, ec);
    if (ec)
        throw Fehler("Die Access-Datei " + ziel.string() + " kann nicht geschrieben werden (" +
                     ec.message() + ")!");
}

std::filesystem::path BerichtsdateiStandard() {
    std::filesystem::path daten;
    if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg != nullptr && *xdg != '\0')
        daten = std::filesystem::path(xdg) / "flurix";
    else if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0')
        daten = std::filesystem::path(home) / ".local" / "share" / "flurix";
    else
        daten = std::filesystem::temp_directory_path() / "flurix";
    return daten / "report" / "report.htm";
}

Ergebnis CreateGridReport(const Kataster& kataster, const std::filesystem::path& datei,
                          Oberfläche& ui) {
    try {
        if (datei.has_parent_path())
            std::filesystem::create_directories(datei.parent_path());
        Ausgabeauswahl auswahl = AusgabeauswahlBilden(kataster);
        // The report shows the whole table, whatever is selected.
        auswahl.zeilen.resize(kataster.Zeilenzahl());
        for (std::size_t z = 0; z < auswahl.zeilen.size(); ++z)
            auswahl.zeilen[z] = z;
        HtmlSchreiber schreiber(datei, Ausgabespalten(kataster, auswahl));
        TabelleSchreiben(kataster, auswahl, schreiber, &ui, "% ausgelesen  ");
        return Ergebnis::Ok();
    } catch (const std::exception& e) {
        std::string text =
            "Der Bericht " + datei.string() + " kann nicht erzeugt werden: " + e.what() + "   ";
        ui.Meldung(text, ProduktTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag(std::move(text));
    }
}

} // namespace flurix::ausgabe
