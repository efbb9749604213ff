#include "cli/befehle.hpp"

#include "cli/argumente.hpp"
#include "cli/sitzung.hpp"
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

// The formats of --format. html and tsv have no entry in the save dialog: they are told apart by
// an empty Speicherformat.
struct Exportformat {
    std::string_view name;
    std::optional<ausgabe::Speicherformat> dialog;
};

constexpr Exportformat Exportformate[] = {
    {"txt-tab", ausgabe::Speicherformat::TextTab}, {"txt-dollar", ausgabe::Speicherformat::TextDollar},
    {"xlsx", ausgabe::Speicherformat::Excel},      {"xml", ausgabe::Speicherformat::Xml},
    {"fil", ausgabe::Speicherformat::Flurix},      {"sqlite", ausgabe::Speicherformat::Access},
    {"geograf", ausgabe::Speicherformat::Geograf}, {"html", std::nullopt},
    {"tsv", std::nullopt},
};

const Exportformat* FormatFinden(std::string_view name) {
    for (const auto& format : Exportformate)
        if (format.name == name)
            return &format;
    return nullptr;
}

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
        fehler << "flurix export: unbekanntes Format \"" << *formatName
               << "\" (txt-tab, txt-dollar, xlsx, xml, fil, sqlite, html, tsv, geograf).\n";
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

    Ergebnis ergebnis;
    if (format->dialog) {
        const ausgabe::Speicherumgebung ort{sitzung.zustand.arbeitsverzeichnis,
                                            ausgabe::Zielname::WieAngegeben, {}};
        ergebnis = ausgabe::ALBDatenSpeichernUnter(kataster, *format->dialog, *out, ort, sitzung.ui);
    } else if (format->name == "html") {
        ergebnis = ausgabe::CreateGridReport(kataster, *out, sitzung.ui);
    } else {
        try {
            KatasterSpeichern(kataster, *out);
            ergebnis = Ergebnis::Ok();
        } catch (const Fehler& f) {
            fehler << f.what() << '\n';
        }
    }
    if (ergebnis)
        aus << *out << '\n';
    return sitzung.Beenden(Exitcode(ergebnis));
}

} // namespace flurix::cli
