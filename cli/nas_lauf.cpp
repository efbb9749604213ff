#include "cli/nas_lauf.hpp"

#include "cli/sitzung.hpp"

namespace flurix::cli {

nas::NasDirektAuftrag NasAuftragFür(Sitzung& sitzung, const std::filesystem::path& datei,
                                    const std::optional<std::filesystem::path>& datenbank) {
    nas::NasDirektAuftrag auftrag;
    auftrag.datei = datei;
    if (datenbank) {
        auftrag.datenbank = *datenbank;
    } else {
        auftrag.datenbank = nas::NasArbeitsdatenbank(sitzung.zustand.arbeitsverzeichnis);
        sitzung.zustand.arbeitsdatenbanken.push_back(auftrag.datenbank);
    }
    auftrag.konfigOrdner = sitzung.zustand.installation.Konfig();
    auftrag.ansichtsdatei = sitzung.zustand.installation.Spaltenansichten();
    if (!sitzung.zustand.gewünschteAnsicht.empty())
        auftrag.ansicht = sitzung.zustand.gewünschteAnsicht;
    return auftrag;
}

} // namespace flurix::cli
