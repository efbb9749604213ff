#include "nas/nas_optionen.hpp"

#include "core/einstellungen.hpp"
#include "core/text.hpp"

#include <array>
#include <utility>

namespace flurix::nas {
namespace {

using Eintrag = std::pair<std::string_view, bool NasOptionen::*>;

constexpr std::array<Eintrag, 11> Namen = {{
    {"chkMitNaBerechnung", &NasOptionen::mitNaBerechnung},
    {"chkQuickNaBerechnung", &NasOptionen::quickNaBerechnung},
    {"chkQuickBSBerechnung", &NasOptionen::quickBSBerechnung},
    {"chkQuickLWBerechnung", &NasOptionen::quickLWBerechnung},
    {"chkQuickBROBBerechnung", &NasOptionen::quickBROBBerechnung},
    {"chkMitFlächenAnpassung", &NasOptionen::mitFlächenAnpassung},
    {"chkSVGlöschen", &NasOptionen::svgLöschen},
    {"chkWriteAlkisProtokolldatei", &NasOptionen::protokollNichtSchreiben},
    {"chkNutzung_tatsächlich", &NasOptionen::nutzungOhneAx},
    {"chkAlkisAnschrift", &NasOptionen::mehrereAnschriften},
    {"chkFlurixSuchbegriffGemarkung", &NasOptionen::suchbegriffGemarkung},
}};

} // namespace

NasOptionen NasOptionen::AusText(std::string_view text) {
    NasOptionen optionen;
    for (std::string_view eintrag : Teilen(text, '#')) {
        const auto komma = eintrag.find(',');
        if (komma == std::string_view::npos)
            continue;
        const std::string_view name = TrimmeLeerzeichen(eintrag.substr(0, komma));
        const std::string_view wert = TrimmeLeerzeichen(eintrag.substr(komma + 1));
        for (const auto& [bekannt, feld] : Namen)
            if (bekannt == name)
                optionen.*feld = wert == "1";
    }
    return optionen;
}

} // namespace flurix::nas
