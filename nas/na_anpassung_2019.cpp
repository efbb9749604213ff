#include "nas/na_anpassung_2019.hpp"

#include "core/datei.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "nas/flaechenergebnis.hpp"

#include <map>
#include <string>
#include <vector>

namespace flurix::nas {
namespace {

/// Name and area text of a key, from the first line holding "= <key> =".
class Katalog {
public:
    explicit Katalog(std::string_view text) : m_zeilen(TextZeilen(text)) {}

    const std::string* Eintrag(std::string_view schlüssel) {
        auto it = m_treffer.find(schlüssel);
        if (it == m_treffer.end())
            it = m_treffer.emplace(std::string(schlüssel), Suchen(schlüssel)).first;
        return it->second.empty() ? nullptr : &it->second;
    }

private:
    std::string Suchen(std::string_view schlüssel) const {
        const std::string muster = "= " + std::string(schlüssel) + " =";
        for (std::string_view zeile : m_zeilen) {
            if (TrimmeLeerzeichen(zeile).starts_with('*'))
                continue;
            const auto stelle = zeile.find(muster);
            if (stelle == std::string_view::npos)
                continue;
            const auto spalten = Teilen(zeile.substr(stelle), '=');
            const auto spalte = [&](std::size_t nr) {
                return nr < spalten.size() ? std::string(TrimmeLeerzeichen(spalten[nr])) : std::string();
            };
            return spalte(2) + " (" + spalte(3) + ")";
        }
        return {};
    }

    std::vector<std::string_view> m_zeilen;
    std::map<std::string, std::string, std::less<>> m_treffer;
};

} // namespace

std::size_t NaAnpassung2019(Kataster& kataster, std::string_view nutzungsart, Oberfläche& ui) {
    const auto schlüsselSpalte = kataster.SpaltenIndex("NA-Schlüssel");
    if (!schlüsselSpalte)
        return 0;
    const auto artSpalte = kataster.SpaltenIndex("Nutzungsart");
    std::size_t ziel = kataster.SpaltenIndex("NA-2019").value_or(kataster.Spaltenzahl());
    if (ziel == kataster.Spaltenzahl())
        ziel = kataster.SpalteHinzufügen(KatasterSpalte("NA-2019", "NA-2019", 3000));
    Katalog katalog(nutzungsart);
    std::size_t geändert = 0;
    const std::size_t zeilen = kataster.Zeilenzahl();
    for (std::size_t z = 0; z < zeilen; ++z) {
        if (z % 1000 == 0)
            ui.Status(1, "ermittle " + std::to_string(z * 100 / std::max<std::size_t>(zeilen, 1)) + "% NA-2019 ...");
        const std::string_view schlüssel = kataster.Zelle(z, *schlüsselSpalte);
        if (TrimmeLeerzeichen(schlüssel).empty())
            continue;
        const auto arten = artSpalte ? Teilen(kataster.Zelle(z, *artSpalte), ';') : std::vector<std::string_view>{};
        const auto schlüsselListe = Teilen(schlüssel, ';');
        std::string neu;
        for (std::size_t i = 0; i < schlüsselListe.size(); ++i) {
            const std::string* name = katalog.Eintrag(TrimmeLeerzeichen(schlüsselListe[i]));
            if (name == nullptr)
                continue;
            double fläche = 0;
            if (i < arten.size()) {
                const auto teile = Teilen(arten[i], '=');
                if (teile.size() > 1)
                    fläche = ZahlLesen(TrimmeLeerzeichen(teile[1]));
            }
            if (!neu.empty())
                neu += "; ";
            neu += *name + "=" + Zahlmuster(fläche, "0.00");
        }
        kataster.ZelleSetzen(z, ziel, neu);
        ++geändert;
    }
    return geändert;
}

} // namespace flurix::nas
