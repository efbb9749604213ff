// "GG-Out Batch": a batch file that runs the unattended import with GEOgraf output for each file.
#include "nas/xml_werkzeuge.hpp"

#include "core/cp1252.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "nas/xml_werkzeug_basis.hpp"

#include <algorithm>
#include <system_error>

namespace flurix::nas {
namespace {

namespace fs = std::filesystem;
using namespace detail;

constexpr std::string_view Titel = "GG-Out Batch";
// What the job line takes behind the file: the unattended import with GEOgraf output.
constexpr std::string_view Schalter = " /ggout /still";

// A word for sh: in single quotes, a single quote inside as '\''.
std::string ShWort(const std::string& text) {
    std::string wort = "'";
    for (const char c : text)
        wort += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return wort + "'";
}

std::string Zeile(const fs::path& programm, const fs::path& datei, bool batForm) {
    if (batForm)
        // The form of Windows: the file unquoted, a blank at the end; the job line drops quotes
        // and joins its words with blanks either way.
        return Utf8NachCp1252("\"" + programm.string() + "\" " + datei.string() +
                              std::string(Schalter) + " \r\n");
    return ShWort(programm.string()) + " " + ShWort(datei.string()) + std::string(Schalter) + "\n";
}

} // namespace

Ergebnis GgOutBatch(const std::vector<fs::path>& dateien, const fs::path& programm,
                    const fs::path& zielordner, bool batForm, Oberfläche& ui, XmlBericht& bericht,
                    const XmlOptionen& optionen) {
    bericht = {};
    if (dateien.empty())
        return Fehlschlag(ui, Titel, "Keine XML-Dateien gefunden!   ");
    for (const auto& datei : dateien)
        if (auto fehler = EingabePrüfen(ui, Titel, datei))
            return *fehler;
    const Fragestellung frage{"Wollen Sie für " + std::to_string(dateien.size()) +
                                  " Dateien eine Batch-Datei erstellen?   ",
                              std::string(Titel)};
    if (ui.Frage(frage) != Antwort::Ja)
        return Ergebnis::Abbruch();
    const fs::path ziel = zielordner / (batForm ? "GG-Out-Batch.bat" : "GG-Out-Batch.sh");
    if (!ZielFreigegeben(ui, ziel, optionen, FrageErsetzen(ziel), "Datei schon vorhanden!"))
        return Ergebnis::Abbruch();
    ui.Status(1, "GG-Out Batch...");
    try {
        Zieldatei batch(ziel);
        if (!batForm)
            batch.Schreiben("#!/bin/sh\n");
        for (const auto& datei : dateien) {
            // The job line needs the file with its path.
            batch.Schreiben(Zeile(programm, fs::absolute(datei).lexically_normal(), batForm));
            ++bericht.dateien;
        }
        batch.Abschließen();
        if (!batForm) {
            std::error_code fehler;
            fs::permissions(ziel,
                            fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec,
                            fs::perm_options::add, fehler);
            if (fehler)
                throw Fehler("Die Datei \"" + ziel.string() +
                             "\" kann nicht ausführbar gemacht werden (" + fehler.message() +
                             ")!   ");
        }
    } catch (const std::exception& f) {
        return Fehlschlag(ui, Titel, f.what());
    }
    bericht.ziel = ziel;
    return Erledigt(ui, Titel,
                    std::to_string(dateien.size()) + " Dateien gelesen, Batchdatei erstellt!   ");
}

std::vector<fs::path> XmlDateienImOrdner(const fs::path& ordner) {
    std::vector<fs::path> dateien;
    std::error_code fehler;
    for (fs::directory_iterator eintrag(ordner, fehler), ende; !fehler && eintrag != ende;
         eintrag.increment(fehler))
        if (Kleinbuchstaben(eintrag->path().extension().string()) == ".xml" &&
            eintrag->is_regular_file(fehler))
            dateien.push_back(eintrag->path());
    std::sort(dateien.begin(), dateien.end());
    return dateien;
}

} // namespace flurix::nas
