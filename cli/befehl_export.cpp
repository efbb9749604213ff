#include "cli/befehle.hpp"

#include "cli/argumente.hpp"
#include "cli/sitzung.hpp"
#include "cli/tabelle_schreiben.hpp"
#include "core/fehler.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/markierung.hpp"
#include "core/spaltenansicht.hpp"
#include "core/text.hpp"
#include "export/geograf_out.hpp"
#include "export/speichern_unter.hpp"

#include <charconv>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <ostream>

namespace flurix::cli {
namespace {

// A whole number of an option in the 16 bits GEOgraf keeps Art and Ebene in; false when it is none.
bool GanzeZahl(const std::string& text, int& wert) {
    int zahl = 0;
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), zahl);
    if (fehler != std::errc() || ende != text.data() + text.size() || zahl < -32768 || zahl > 32767)
        return false;
    wert = zahl;
    return true;
}

// The options of the GEOgraf export from the arguments; nothing (and a message) when one is wrong.
// SOURCE_DATE_EPOCH fixes the time of the header (UTC), as for the register extract.
std::optional<ausgabe::GeografOptionen> GeografOptionenLesen(const Argumente& args,
                                                             std::ostream& fehler) {
    ausgabe::GeografOptionen opt;
    const auto form = args.Wert("--form");
    if (!form || !ausgabe::GeografFormAusName(*form, opt.form)) {
        fehler << "flurix export: --format geograf braucht --form ohne|alle|plausibel|stempel-a|"
                  "stempel-b.\n";
        return std::nullopt;
    }
    const bool stempel =
        opt.form == ausgabe::GeografForm::StempelA || opt.form == ausgabe::GeografForm::StempelB;
    if (const auto spalten = args.Wert("--spalten")) {
        for (std::string_view s : Teilen(*spalten, ','))
            if (!TrimmeLeerzeichen(s).empty())
                opt.spalten.emplace_back(TrimmeLeerzeichen(s));
    } else if (stempel) {
        opt.spalten.assign(ausgabe::GeografStempelSpalten.begin(),
                           ausgabe::GeografStempelSpalten.end());
    }
    if (opt.spalten.empty()) {
        fehler << "flurix export: Bitte die Ausgabespalten mit --spalten angeben, z.B. "
                  "--spalten Flurstück,Fläche.\n";
        return std::nullopt;
    }
    for (const auto& s : opt.spalten)
        if (s == "Flurstück")
            opt.art = ausgabe::GeografArtFürFlurstück;
    for (const auto& [name, ziel] : {std::pair<const char*, int*>{"--art", &opt.art},
                                     std::pair<const char*, int*>{"--ebene", &opt.ebene}})
        if (const auto wert = args.Wert(name); wert && !GanzeZahl(*wert, *ziel)) {
            fehler << "flurix export: " << name << " \"" << *wert
                   << "\" ist keine ganze Zahl von -32768 bis 32767.\n";
            return std::nullopt;
        }
    if (const auto mkz = args.Wert("--mkz"))
        opt.mkz = *mkz;
    opt.ohneFührendeNullen = args.Hat("--ohne-fuehrende-nullen");
    opt.eineZeile = args.Hat("--eine-zeile");
    const char* epoche = std::getenv("SOURCE_DATE_EPOCH");
    if (epoche != nullptr && *epoche != '\0') {
        long long sekunden = 0;
        const std::string_view text(epoche);
        const auto [ende, f] = std::from_chars(text.data(), text.data() + text.size(), sekunden);
        const std::time_t zeitpunkt = static_cast<std::time_t>(sekunden);
        std::tm zeit{};
        if (f != std::errc() || ende != text.data() + text.size() ||
            ::gmtime_r(&zeitpunkt, &zeit) == nullptr) {
            fehler << "flurix export: SOURCE_DATE_EPOCH ist keine Zahl von Sekunden.\n";
            return std::nullopt;
        }
        char datum[16], uhrzeit[16];
        std::strftime(datum, sizeof datum, "%d.%m.%Y", &zeit);
        std::strftime(uhrzeit, sizeof uhrzeit, "%H:%M:%S", &zeit);
        opt.datum = datum;
        opt.uhrzeit = uhrzeit;
    }
    return opt;
}

} // namespace

int BefehlExport(const std::vector<std::string>& argumente, std::ostream& aus, std::ostream& fehler,
                 const Umgebung& umgebung) {
    const auto args = ArgumenteLesen(
        argumente, {"--nur-markierte", "--ohne-fuehrende-nullen", "--eine-zeile"},
        {"--format", "--out", "--ansicht", "--form", "--spalten", "--art", "--ebene", "--mkz"},
        fehler);
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

    std::optional<ausgabe::GeografOptionen> geograf;
    if (format->dialog == ausgabe::Speicherformat::Geograf &&
        !(geograf = GeografOptionenLesen(*args, fehler)))
        return 2;

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

    Ergebnis ergebnis = Ergebnis::Ok();
    if (geograf) {
        // "Speichern unter" with its questions, the writer bound to exactly the named file.
        const ausgabe::Speicherumgebung ort{
            sitzung.zustand.arbeitsverzeichnis, ausgabe::Zielname::WieAngegeben,
            [&](const Kataster& k, const std::filesystem::path& ziel) {
                return ausgabe::GeografSpeichern(k, *geograf, ziel, sitzung.ui);
            }};
        ergebnis = ausgabe::ALBDatenSpeichernUnter(kataster, ausgabe::Speicherformat::Geograf, *out,
                                                   ort, sitzung.ui);
    } else {
        ergebnis = TabelleSchreiben(kataster, *format, *out, sitzung);
    }
    if (ergebnis)
        aus << *out << '\n';
    return sitzung.Beenden(Exitcode(ergebnis));
}

} // namespace flurix::cli
