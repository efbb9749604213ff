#include "cli/befehle.hpp"

#include "cli/argumente.hpp"
#include "cli/sitzung.hpp"
#include "core/tabellendatei.hpp"
#include "core/text.hpp"
#include "map/capabilities.hpp"
#include "map/dienstkatalog.hpp"
#include "map/layerauswahl.hpp"
#include "map/zugang.hpp"

#include <array>
#include <ostream>

namespace flurix::cli {
namespace {

namespace fs = std::filesystem;
using karte::Dienstkatalog;

constexpr std::array<std::string_view, 6> Listenspalten = {"id",      "Web-Service", "URL",
                                                           "Anfrage", "LAYERS",      "Maßstab"};

std::array<std::string, 6> Listenzeile(const Dienstkatalog& katalog, std::size_t zeile) {
    return {katalog.Zelle(zeile, "id"),
            katalog.Zelle(zeile, "Web-Service"),
            katalog.Zelle(zeile, "URL"),
            katalog.Zelle(zeile, "Anfrage"),
            karte::LayerListe(katalog.Zelle(zeile, "Layer"), katalog.Zelle(zeile, "LayerAuswahl")),
            katalog.Zelle(zeile, "Maßstab")};
}

void ZeileAusgeben(std::ostream& aus, const auto& zellen) {
    bool erste = true;
    for (const auto& zelle : zellen) {
        // TAB and line ends in a cell would break the table's lines.
        aus << (erste ? "" : "\t") << Einzeilig(zelle);
        erste = false;
    }
    aus << '\n';
}

int Liste(const Dienstkatalog& katalog, const std::optional<std::string>& out, std::ostream& aus,
          Sitzung& sitzung) {
    if (!out) {
        ZeileAusgeben(aus, Listenspalten);
        for (std::size_t zeile = 0; zeile < katalog.Zeilenzahl(); ++zeile)
            ZeileAusgeben(aus, Listenzeile(katalog, zeile));
        return 0;
    }
    return sitzung.Versuchen([&] {
        std::vector<TabellenSpalte> spalten;
        for (std::string_view name : Listenspalten)
            spalten.push_back(
                {std::string(name), std::string(name), 0, true, static_cast<int>(spalten.size())});
        TabellendateiSchreiber schreiber(*out, spalten, Tabellenformat::Tsv);
        for (std::size_t zeile = 0; zeile < katalog.Zeilenzahl(); ++zeile)
            schreiber.Zeile(std::span<const std::string>(Listenzeile(katalog, zeile)));
        schreiber.Abschließen();
        aus << *out << '\n';
    })
               ? 0
               : 1;
}

int Einlesen(Dienstkatalog& katalog, const fs::path& datei, const Argumente& args,
             const fs::path& konfig, std::ostream& aus, std::ostream& fehler, Sitzung& sitzung) {
    const bool alle = args.Hat("--alle");
    if (alle == (args.positionen.size() == 2)) {
        fehler << "flurix dienste einlesen: Bitte einen Dienstnamen oder --alle angeben.\n";
        return 2;
    }
    const karte::Einleseumgebung umgebung{konfig, karte::Besitzer(), {}};
    std::vector<std::size_t> zeilen;
    Ergebnis ergebnis;
    if (alle) {
        ergebnis = karte::AlleDiensteNeuEinlesen(katalog, umgebung, sitzung.ui);
        for (std::size_t zeile = 0; zeile < katalog.Zeilenzahl(); ++zeile)
            zeilen.push_back(zeile);
    } else {
        const auto zeile = katalog.ZeileFinden(args.positionen[1]);
        if (!zeile) {
            sitzung.ui.Meldung("Web-Service \"" + args.positionen[1] +
                                   "\" nicht gefunden! Abbruch!",
                               "Web-Service", Stil::Fehler);
            return 1;
        }
        ergebnis = karte::DienstNeuEinlesen(katalog, *zeile, umgebung, sitzung.ui);
        zeilen.push_back(*zeile);
    }
    if (ergebnis.status() == Ergebnis::Status::Abgebrochen)
        return 1;
    const bool gespeichert = sitzung.Versuchen([&] {
        if (Kleinbuchstaben(datei.extension().string()) == ".dat")
            karte::KatalogDatSpeichern(katalog, datei);
        else
            karte::KatalogSpeichern(katalog, datei);
    });
    ZeileAusgeben(aus, Listenspalten);
    for (std::size_t zeile : zeilen)
        ZeileAusgeben(aus, Listenzeile(katalog, zeile));
    return gespeichert && ergebnis ? 0 : 1;
}

} // namespace

int BefehlDienste(const std::vector<std::string>& argumente, std::ostream& aus,
                  std::ostream& fehler, const Umgebung& umgebung) {
    const auto args = ArgumenteLesen(argumente, {"--alle"}, {"--katalog", "--out"}, fehler);
    if (!args)
        return 2;
    const bool liste = !args->positionen.empty() && args->positionen[0] == "liste";
    const bool einlesen = !args->positionen.empty() && args->positionen[0] == "einlesen";
    if ((!liste && !einlesen) || (liste && args->positionen.size() != 1)) {
        fehler << "Aufruf: flurix dienste liste [--katalog <datei>] [--out <datei.tsv>]\n"
                  "       flurix dienste einlesen <name>|--alle [--katalog <datei>]\n";
        return 2;
    }
    Sitzung sitzung(umgebung, fehler);
    const auto& installation = sitzung.zustand.installation;
    const auto gewählt = args->Wert("--katalog");
    const fs::path datei = gewählt ? fs::path(*gewählt) : installation.Dienstkatalog();
    // Login files lie beside the installation's catalogue, or beside the one named.
    const fs::path konfig = gewählt ? datei.parent_path() : installation.Konfig();
    if (!fs::exists(datei))
        return karte::KatalogFehlt(datei, sitzung.ui), 1;
    Dienstkatalog katalog;
    if (!sitzung.Versuchen([&] { katalog = karte::KatalogLesen(datei); }))
        return 1;
    if (liste)
        return Liste(katalog, args->Wert("--out"), aus, sitzung);
    return Einlesen(katalog, datei, *args, konfig, aus, fehler, sitzung);
}

} // namespace flurix::cli
