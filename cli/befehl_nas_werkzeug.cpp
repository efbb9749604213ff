// flurix nas-werkzeug: the NAS XML tools of the work window without a window.
#include "cli/argumente.hpp"
#include "cli/befehle.hpp"
#include "cli/sitzung.hpp"
#include "nas/xml_werkzeuge.hpp"

#include <array>
#include <ostream>

namespace flurix::cli {
namespace {

namespace fs = std::filesystem;

struct Werkzeug {
    std::string_view name;
    std::string_view hilfe;
};

constexpr std::array<Werkzeug, 5> Werkzeuge = {{
    {"zusammenfuegen",
     "Aufruf: flurix nas-werkzeug zusammenfuegen <a.xml> <b.xml>... [--liste <datei>] "
     "[--ersetzen]\n"
     "  \"ALKIS-XML-Merge\": schreibt die Objekte aller Dateien nach <a>_MERGE.xml neben der "
     "ersten\n"
     "  Datei. Der Kopf kommt unverändert aus der ersten Datei; ein Objekt, dessen gml:id schon\n"
     "  geschrieben ist, wird übergangen (Groß- und Kleinschreibung zählen), ebenso Objekte der\n"
     "  Objektarten aus config/ALKIS_Objektreduzierung.dat oder --liste.\n"},
    {"idpruefung",
     "Aufruf: flurix nas-werkzeug idpruefung <a.xml> [--ersetzen]\n"
     "  \"ALKIS-ID-Prüfung\": kopiert die Datei nach <a>_Prüfung.xml ohne jedes weitere Vorkommen\n"
     "  einer gml:id. An seiner Stelle steht <!-- XML-Pruefung: ID: <id> mehrfach vorgefunden "
     "-->,\n"
     "  und <a>_Prüfung.err nennt jede Wiederholung (Windows-1252, CR LF).\n"},
    {"ausduennen",
     "Aufruf: flurix nas-werkzeug ausduennen <a.xml> [--liste <datei>] [--ersetzen]\n"
     "  \"XML-Ausdünnen\": kopiert die Datei nach <a>_Ausdünnen.xml ohne die Objekte der\n"
     "  Objektarten aus config/ALKIS_Objektreduzierung.dat oder --liste (eine Objektart je Zeile,\n"
     "  \"*\" am Zeilenanfang für Kommentare; AX_Gebaeude trifft auch adv:AX_Gebaeude). Eine "
     "leere\n"
     "  Liste übergeht nichts.\n"},
    {"ansi",
     "Aufruf: flurix nas-werkzeug ansi <a.xml> [--ersetzen]\n"
     "  \"UTF8 nach ANSI\": schreibt die UTF-8-Datei als Windows-1252 nach <a>_Ansi.xml; die\n"
     "  XML-Deklaration nennt dann encoding=\"windows-1252\". Zeichen ohne Windows-1252-Form "
     "werden\n"
     "  Zeichenreferenzen (&#322;), ungültige UTF-8-Bytes \"?\".\n"},
    {"ggout-batch",
     "Aufruf: flurix nas-werkzeug ggout-batch <ordner>|<a.xml> <b.xml>... [--bat] [--ziel "
     "<ordner>]\n"
     "                                        [--ersetzen]\n"
     "  \"GG-Out Batch\": schreibt GG-Out-Batch.sh (ausführbar) mit einer Zeile je Datei:\n"
     "  '<flurix>' '<datei>' /ggout /still, den unbeaufsichtigten NAS-Lauf mit GEOgraf-Ausgabe.\n"
     "  Ein Ordner nimmt alle *.xml darin, sonst mindestens zwei Dateien.\n"
     "  --bat             GG-Out-Batch.bat in der Form von Windows (CR LF, Windows-1252)\n"
     "  --ziel <ordner>   dort schreiben; sonst im Ordner der Dateien\n"},
}};

constexpr std::string_view Gemeinsam =
    "  --ersetzen        eine vorhandene Zieldatei ersetzen (sonst bleibt sie, Ende mit 1)\n"
    "  Meldungen und Fragen stehen auf stderr, die geschriebene Datei und die Zahlen auf stdout.\n";

const Werkzeug* WerkzeugFinden(std::string_view name) {
    for (const auto& werkzeug : Werkzeuge)
        if (werkzeug.name == name)
            return &werkzeug;
    return nullptr;
}

std::vector<fs::path> Pfade(const std::vector<std::string>& positionen) {
    return {positionen.begin() + 1, positionen.end()};
}

} // namespace

int BefehlNasWerkzeug(const std::vector<std::string>& argumente, std::ostream& aus,
                      std::ostream& fehler, const Umgebung& umgebung) {
    const Werkzeug* werkzeug = argumente.empty() ? nullptr : WerkzeugFinden(argumente.front());
    if (werkzeug == nullptr) {
        fehler
            << "flurix nas-werkzeug: zusammenfuegen, idpruefung, ausduennen, ansi oder ggout-batch "
               "angeben. Hilfe: flurix nas-werkzeug --help\n";
        return 2;
    }
    if (argumente.size() > 1 && (argumente[1] == "--help" || argumente[1] == "-h")) {
        aus << werkzeug->hilfe << Gemeinsam;
        return 0;
    }
    const auto args =
        ArgumenteLesen(argumente, {"--ersetzen", "--bat"}, {"--liste", "--ziel"}, fehler);
    if (!args)
        return 2;
    const std::string_view name = werkzeug->name;
    const std::size_t dateien = args->positionen.size() - 1;
    const bool mehrere = name == "zusammenfuegen" || name == "ggout-batch";
    if ((name == "ggout-batch" ? dateien == 0
         : mehrere             ? dateien < 2
                               : dateien != 1) ||
        (args->Wert("--liste") && name != "zusammenfuegen" && name != "ausduennen") ||
        ((args->Wert("--ziel") || args->Hat("--bat")) && name != "ggout-batch")) {
        fehler << werkzeug->hilfe;
        return 2;
    }

    Sitzung sitzung(umgebung, fehler);
    const nas::XmlOptionen optionen{args->Hat("--ersetzen")};
    const auto liste = [&] {
        return nas::ObjektreduzierungLesen(args->Wert("--liste").value_or(
            (sitzung.zustand.installation.Konfig() / "ALKIS_Objektreduzierung.dat").string()));
    };
    nas::XmlBericht bericht;
    Ergebnis ergebnis;
    if (name == "zusammenfuegen") {
        ergebnis =
            nas::XmlZusammenfügen(Pfade(args->positionen), liste(), sitzung.ui, bericht, optionen);
    } else if (name == "idpruefung") {
        ergebnis = nas::XmlIdPrüfung(args->positionen[1], sitzung.ui, bericht, optionen);
    } else if (name == "ausduennen") {
        ergebnis = nas::XmlAusdünnen(args->positionen[1], liste(), sitzung.ui, bericht, optionen);
    } else if (name == "ansi") {
        ergebnis = nas::XmlNachAnsi(args->positionen[1], sitzung.ui, bericht, optionen);
    } else {
        std::vector<fs::path> pfade = Pfade(args->positionen);
        fs::path ordner = pfade.front().parent_path();
        std::error_code ec;
        if (pfade.size() == 1 && fs::is_directory(pfade.front(), ec)) {
            ordner = pfade.front();
            pfade = nas::XmlDateienImOrdner(ordner);
        } else if (pfade.size() < 2) {
            fehler << "Bitte wählen Sie mindestens zwei XML-Dateien aus!   \n";
            return 2;
        }
        const fs::path programm = fs::read_symlink("/proc/self/exe", ec);
        ergebnis = nas::GgOutBatch(pfade, programm, args->Wert("--ziel").value_or(ordner.string()),
                                   args->Hat("--bat"), sitzung.ui, bericht, optionen);
    }
    if (!ergebnis) {
        if (ergebnis.status() == Ergebnis::Status::Abgebrochen && !optionen.ersetzen)
            fehler << "Hinweis: --ersetzen ersetzt eine vorhandene Zieldatei.\n";
        return 1;
    }
    aus << bericht.ziel.string() << '\n';
    if (name == "ansi")
        aus << bericht.ersetzt << " Zeichenreferenzen, " << bericht.fehler << " ungültige Bytes\n";
    else if (name == "ggout-batch")
        aus << bericht.dateien << " Zeilen\n";
    else
        aus << bericht.geschrieben << " Objekte geschrieben, " << bericht.doppelt
            << " mit doppelter gml:id, " << bericht.übersprungen << " nach Objektart übergangen\n";
    return 0;
}

} // namespace flurix::cli
