#include "cli/befehle.hpp"

#include "cli/argumente.hpp"
#include "cli/sitzung.hpp"
#include "core/datei.hpp"
#include "core/fehler.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/suche.hpp"

#include <atomic>
#include <ostream>
#include <unistd.h>

namespace flurix::cli {
namespace {

// The selected rows as a table of their own, with every column of the table in its place.
Kataster AuswahlAlsTabelle(const Kataster& kataster) {
    Kataster auswahl;
    for (std::size_t s = 0; s < kataster.Spaltenzahl(); ++s)
        auswahl.SpalteHinzufügen(kataster.Spalte(s));
    const auto& reihenfolge = kataster.Anzeigereihenfolge();
    for (std::size_t platz = 0; platz < reihenfolge.size(); ++platz)
        auswahl.SpalteVerschieben(reihenfolge[platz], platz);
    std::vector<std::string_view> zellen(kataster.Spaltenzahl());
    for (std::size_t z : kataster.AusgewählteZeilen()) {
        for (std::size_t s = 0; s < zellen.size(); ++s)
            zellen[s] = kataster.Zelle(z, s);
        auswahl.ZeileHinzufügen(zellen);
    }
    return auswahl;
}

// The machine form of a table on a stream: written through a scratch file, so that the one
// writer of table files decides every byte.
void AlsTsvAusgeben(const Kataster& kataster, std::ostream& aus) {
    static std::atomic<int> zähler{0};
    const auto datei = std::filesystem::temp_directory_path() /
                       ("flurix-suchen-" + std::to_string(::getpid()) + "-" +
                        std::to_string(zähler++) + ".tsv");
    KatasterSpeichern(kataster, datei);
    aus << DateiKomplettLesen(datei);
    std::error_code ec;
    std::filesystem::remove(datei, ec);
}

} // namespace

int BefehlSuchen(const std::vector<std::string>& argumente, std::ostream& aus, std::ostream& fehler,
                 const Umgebung& umgebung) {
    const auto args = ArgumenteLesen(argumente, {"--alle-eigentuemer-in-einer-zeile"},
                                     {"--spalte", "--begriff", "--gemarkung", "--flur", "--out"},
                                     fehler);
    if (!args)
        return 2;
    if (args->positionen.size() != 1 || !args->Wert("--spalte")) {
        fehler << "flurix suchen: Bitte eine Tabelle und --spalte angeben. Hilfe: flurix suchen "
                  "--help\n";
        return 2;
    }
    const auto gemarkung = args->Wert("--gemarkung");
    const auto flur = args->Wert("--flur");
    if (gemarkung.has_value() != flur.has_value()) {
        fehler << "flurix suchen: --gemarkung und --flur gehören zusammen.\n";
        return 2;
    }
    std::optional<GemarkungFlur> paar;
    if (gemarkung)
        paar = GemarkungFlur{*gemarkung, *flur, false};

    Sitzung sitzung(umgebung, fehler);
    if (!sitzung.Starten(""))
        return 1;
    const bool gesucht = sitzung.Versuchen([&] {
        Kataster kataster;
        KatasterLaden(kataster, args->positionen.front());
        std::string hinweis;
        const std::size_t treffer = CmdFlurixSuchbegriff(
            kataster, *args->Wert("--spalte"), args->Wert("--begriff").value_or(""), paar,
            args->Hat("--alle-eigentuemer-in-einer-zeile"), nullptr, sitzung.ui, &hinweis);
        // The status bar's note: the rows were found by the term as typed, not by its padded form.
        if (!hinweis.empty())
            fehler << hinweis << '\n';
        const Kataster auswahl = AuswahlAlsTabelle(kataster);
        if (const auto out = args->Wert("--out")) {
            KatasterSpeichern(auswahl, *out);
            aus << treffer << '\n';
        } else {
            AlsTsvAusgeben(auswahl, aus);
        }
    });
    if (!gesucht)
        return sitzung.Beenden(1);
    return sitzung.Beenden(0);
}

} // namespace flurix::cli
