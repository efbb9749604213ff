#include "core/kataster_datei.hpp"

#include "core/fehler.hpp"
#include "core/kataster.hpp"
#include "core/tabellendatei.hpp"
#include "core/textkodierung.hpp"

#include <algorithm>
#include <numeric>

namespace flurix {

void KatasterSpeichern(const Kataster& kataster, const std::filesystem::path& datei) {
    std::vector<TabellenSpalte> spalten(kataster.Spaltenzahl());
    const auto& anzeige = kataster.Anzeigereihenfolge();
    for (std::size_t i = 0; i < spalten.size(); ++i) {
        const auto& s = kataster.Spalte(i);
        spalten[i] = {s.schlüssel, s.überschrift, s.breite, s.sichtbar,
                      static_cast<int>(std::find(anzeige.begin(), anzeige.end(), i) - anzeige.begin())};
    }
    TabellendateiSchreiber schreiber(datei, spalten);
    std::vector<std::string_view> zellen(spalten.size());
    for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z) {
        for (std::size_t s = 0; s < zellen.size(); ++s)
            zellen[s] = kataster.Zelle(z, s);
        schreiber.Zeile(zellen);
    }
    schreiber.Abschließen();
}

void KatasterLaden(Kataster& kataster, const std::filesystem::path& datei) {
    // Read into a table of its own and swap only when all of it came in: a cut or foreign file
    // must not cost the user the table that is open.
    Kataster neu;
    if (IstUtf16Datei(datei))
        throw Fehler(MeldungUtf16(datei));
    TabellendateiLeser leser(datei);
    const auto& spalten = leser.Spalten();
    for (const auto& s : spalten) {
        KatasterSpalte spalte(s.schlüssel, s.überschrift, s.breite > 0 ? s.breite : 1000);
        spalte.sichtbar = s.sichtbar;
        if (s.schlüssel == "checkdruck") {
            spalte.kontrollkästchen = true;
            spalte.zentriert = true;
        }
        spalte.schattiert = s.schlüssel == "Flurstück";
        neu.SpalteHinzufügen(std::move(spalte));
    }
    // Keys are unique in the table: a file with a key twice keeps the first column.
    if (neu.Spaltenzahl() != spalten.size())
        throw Fehler("Die Tabellendatei \"" + datei.string() +
                     "\" enthält einen Spaltenschlüssel doppelt!");
    std::vector<std::size_t> ordnung(spalten.size());
    std::iota(ordnung.begin(), ordnung.end(), std::size_t{0});
    std::stable_sort(ordnung.begin(), ordnung.end(), [&](std::size_t a, std::size_t b) {
        return spalten[a].position < spalten[b].position;
    });
    for (std::size_t platz = 0; platz < ordnung.size(); ++platz)
        neu.SpalteVerschieben(ordnung[platz], platz);

    std::vector<std::string_view> zellen(spalten.size());
    while (const auto zeile = leser.NächsteZeile()) {
        std::copy(zeile->begin(), zeile->end(), zellen.begin());
        neu.ZeileHinzufügen(zellen);
    }
    kataster = std::move(neu);
}

} // namespace flurix
