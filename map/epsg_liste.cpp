#include "map/epsg_liste.hpp"

#include "core/datei.hpp"
#include "core/einstellungen.hpp"
#include "core/text.hpp"
#include "core/cp1252.hpp"

namespace flurix::karte {

std::vector<EpsgEintrag> EpsgListe(std::string_view konfigText) {
    std::vector<EpsgEintrag> liste;
    for (const std::string_view zeile : TextZeilen(konfigText)) {
        if (zeile.find('*') != std::string_view::npos || TrimmeLeerzeichen(zeile).empty())
            continue;
        liste.push_back({TokenNr(zeile, 1, "="), TokenNr(zeile, 2, "=")});
    }
    return liste;
}

std::vector<EpsgEintrag> EpsgListeLesen(const std::filesystem::path& datei) {
    return EpsgListe(KonfigText(datei));
}

} // namespace flurix::karte
