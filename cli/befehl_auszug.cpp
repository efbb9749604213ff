#include "cli/befehle.hpp"

#include "cli/argumente.hpp"
#include "cli/sitzung.hpp"
#include "core/fehler.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/text.hpp"
#include "report/pdf_format.hpp"
#include "report/registerauszug.hpp"

#include <charconv>
#include <cstdlib>
#include <ctime>
#include <ostream>

namespace flurix::cli {
namespace {

// SOURCE_DATE_EPOCH (seconds since 1970, the usual convention of reproducible builds) fixes the
// creation date and the date of the header, in UTC so that the bytes do not depend on the time
// zone. Nothing when it is not set; false in `gültig` when it is set but is no number.
std::optional<std::tm> FesteZeit(bool& gültig) {
    gültig = true;
    const char* wert = std::getenv("SOURCE_DATE_EPOCH");
    if (wert == nullptr || *wert == '\0')
        return std::nullopt;
    const std::string_view text(wert);
    long long sekunden = 0;
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), sekunden);
    const std::time_t zeitpunkt = static_cast<std::time_t>(sekunden);
    std::tm zeit{};
    if (fehler != std::errc() || ende != text.data() + text.size() ||
        ::gmtime_r(&zeitpunkt, &zeit) == nullptr) {
        gültig = false;
        return std::nullopt;
    }
    return zeit;
}

// The row of --zeile (from 1) or the first row of --fkz, from 0; nothing, with the message
// written, when there is none.
std::optional<std::size_t> AuszugsZeile(const Kataster& kataster, const Argumente& args,
                                        std::ostream& fehler) {
    if (const auto zeile = args.Wert("--zeile")) {
        std::size_t nummer = 0;
        const auto [ende, f] =
            std::from_chars(zeile->data(), zeile->data() + zeile->size(), nummer);
        if (f != std::errc() || ende != zeile->data() + zeile->size() || nummer == 0 ||
            nummer > kataster.Zeilenzahl()) {
            fehler << "flurix auszug: Die Zeile " << *zeile << " gibt es nicht; die Tabelle hat "
                   << kataster.Zeilenzahl() << " Zeilen.\n";
            return std::nullopt;
        }
        return nummer - 1;
    }
    const std::string kennzeichen = *args.Wert("--fkz");
    const auto spalte = kataster.SpaltenIndex("Flurstückskennzeichen");
    if (!spalte) {
        fehler << "flurix auszug: Die Tabelle hat keine Spalte Flurstückskennzeichen; bitte "
                  "--zeile verwenden.\n";
        return std::nullopt;
    }
    const Kataster::Index index = kataster.IndexBauen(*spalte);
    const auto zeilen = index.Zeilen(kennzeichen);
    if (zeilen.empty()) {
        fehler << "flurix auszug: Das Flurstückskennzeichen " << kennzeichen
               << " steht nicht in der Tabelle.\n";
        return std::nullopt;
    }
    return zeilen.front();
}

} // namespace

int BefehlAuszug(const std::vector<std::string>& argumente, std::ostream& aus, std::ostream& fehler,
                 const Umgebung& umgebung) {
    const auto args =
        ArgumenteLesen(argumente, {}, {"--zeile", "--fkz", "--out", "--titel"}, fehler);
    if (!args)
        return 2;
    if (args->positionen.size() != 1 ||
        args->Wert("--zeile").has_value() == args->Wert("--fkz").has_value()) {
        fehler << "flurix auszug: Bitte eine Tabelle und entweder --zeile oder --fkz angeben. "
                  "Hilfe: flurix auszug --help\n";
        return 2;
    }
    bool zeitGültig = true;
    const auto zeit = FesteZeit(zeitGültig);
    if (!zeitGültig) {
        fehler << "flurix auszug: SOURCE_DATE_EPOCH ist keine Zahl von Sekunden.\n";
        return 2;
    }

    Sitzung sitzung(umgebung, fehler);
    if (!sitzung.Starten(""))
        return 1;
    Kataster kataster;
    std::optional<std::size_t> zeile;
    sitzung.Versuchen([&] {
        KatasterLaden(kataster, args->positionen.front());
        zeile = AuszugsZeile(kataster, *args, fehler);
    });
    if (!zeile)
        return sitzung.Beenden(1);

    report::PdfHerkunft herkunft{args->Wert("--titel").value_or(FensterTitel()), {}};
    if (zeit)
        herkunft.uhr = [t = *zeit] { return t; };
    report::Registerauszug bericht(std::move(herkunft));
    std::optional<std::filesystem::path> ziel;
    if (const auto out = args->Wert("--out"))
        ziel = *out;
    const auto auszug = bericht.CreateRegisterExtract(
        kataster, *zeile, sitzung.zustand.arbeitsverzeichnis, sitzung.ui, ziel);
    if (!auszug || !auszug->gespeichert) {
        fehler << "flurix auszug: Die Datei " << (auszug ? auszug->datei.string() : std::string())
               << " kann nicht geschrieben werden.\n";
        return sitzung.Beenden(1);
    }
    if (!ziel)
        aus << auszug->datei.string() << '\n';
    // The file holds what stands; the message has been written, and a script sees the fault.
    return sitzung.Beenden(auszug->unvollständig ? 1 : 0);
}

} // namespace flurix::cli
