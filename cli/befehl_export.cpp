#include "cli/befehle.hpp"

#include "cli/argumente.hpp"
#include "cli/sitzung.hpp"
#include "cli/tabelle_schreiben.hpp"
#include "core/fehler.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/markierung.hpp"
#include "core/spaltenansicht.hpp"
#include "export/speichern_unter.hpp"

#include <optional>
#include <ostream>

namespace flurix::cli {
namespace {

// --nur-markierte: the marked rows become the selection, as marks do for the GEOgraf export.
std::size_t MarkierteAuswählen(Kataster& kataster) {
    kataster.AuswahlLeeren();
    for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z)
        kataster.Auswählen(z, Markiert(kataster, z));
    return kataster.AnzahlAusgewählt();
}

} // namespace

int BefehlExport(const std::vector<std::string>& argumente, std::ostream& aus, std::ostream& fehler,
                 const Umgebung& umgebung) {
    const auto args =
        ArgumenteLesen(argumente, {"--nur-markierte"}, {"--format", "--out", "--ansicht"}, fehler);
    if (!args)
        return 2;
    const auto formatName = args->Wert("--format");
    const auto out = args->Wert("--out");
    if (args->positionen.size() != 1 || !formatName || !out) {
        fehler << "flurix export: Bitte eine Tabelle, --format und --out angeben. Hilfe: flurix "
                  "export --help\n";
        return 2;
    }
    const Exportformat* format = FormatFinden(*formatName);
    if (format == nullptr) {
        fehler << "flurix export: unbekanntes Format \"" << *formatName << "\" (" << FormatNamen()
               << ").\n";
        return 2;
    }

    Sitzung sitzung(umgebung, fehler);
    if (!sitzung.Starten(""))
        return 1;
    Kataster kataster;
    if (!sitzung.TabelleLaden(kataster, args->positionen.front()))
        return sitzung.Beenden(1);
    if (const auto ansicht = args->Wert("--ansicht")) {
        const auto datei = sitzung.zustand.installation.Spaltenansichten();
        if (!ComboColVis(kataster, *ansicht, datei)) {
            fehler << "flurix export: Die Ansicht \"" << *ansicht << "\" steht nicht in "
                   << datei.string() << ".\n";
            return sitzung.Beenden(1);
        }
    }
    if (args->Hat("--nur-markierte") && MarkierteAuswählen(kataster) == 0) {
        fehler << "flurix export: Keine Zeile der Tabelle ist markiert (--nur-markierte).\n";
        return sitzung.Beenden(1);
    }

    const Ergebnis ergebnis = TabelleSchreiben(kataster, *format, *out, sitzung);
    if (ergebnis)
        aus << *out << '\n';
    return sitzung.Beenden(Exitcode(ergebnis));
}

} // namespace flurix::cli
