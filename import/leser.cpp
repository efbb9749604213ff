#include "import/leser.hpp"

#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/oberflaeche.hpp"
#include "import/datenladen.hpp"
#include "import/tabelle_laden.hpp"
#include "import/webxml.hpp"
#include "import/wldge_komplett.hpp"
#include "import/wldge_schnell.hpp"

namespace flurix::import {

void LeserEintragen(Ladeumgebung& umgebung, Kataster& kataster, Oberfläche& ui, const LeserOrt& ort) {
    auto& leser = umgebung.leser;
    leser.wldgeKomplett = [&kataster, &ui, ort](const std::filesystem::path& datei,
                                                const ImportOptionen& optionen) {
        const WldgeKomplettUmgebung komplett{ort.arbeitsverzeichnis, ort.ansichtsdatei, ort.ansicht};
        return WldgeKomplettLesen(datei, optionen, komplett, kataster, ui);
    };
    leser.wldgeSchnell = [&kataster, &ui](const std::filesystem::path& datei,
                                          const ImportOptionen& optionen) {
        return WldgeSchnellLesen(datei, optionen, kataster, ui);
    };
    leser.webXml = [&kataster, &ui, anfügen = ort.webXmlAnfügen](
                       const std::vector<std::filesystem::path>& dateien,
                       const ImportOptionen& optionen) {
        return WebXmlLesen(dateien, optionen, anfügen, kataster, ui);
    };
    leser.tabelle = [&kataster, &ui, ort, &optionen = umgebung.optionen](
                        const std::filesystem::path& datei) {
        const TabellenLadeumgebung tabelle{ort.ansichtsdatei, ort.ansicht,
                                           optionen.suchbegriffGemarkung};
        return GespeicherteTabelleLaden(datei, tabelle, kataster, ui);
    };
    if (ort.webXmlAnfügen)
        umgebung.tabellenZeilen = [] { return std::size_t{0}; };
    else
        umgebung.tabellenZeilen = [&kataster] { return kataster.Zeilenzahl(); };
    umgebung.tabelleLeeren = [&kataster] { kataster.Leeren(); };
}

} // namespace flurix::import
