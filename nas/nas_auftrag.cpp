#include "nas/nas_auftrag.hpp"

#include "core/programm.hpp"

namespace flurix::nas {

NasDirektAuftrag NasAuftragFür(Programmzustand& zustand, const std::filesystem::path& datei,
                               const std::optional<std::filesystem::path>& datenbank,
                               const std::string& ansicht, bool interaktiv) {
    NasDirektAuftrag auftrag;
    auftrag.datei = datei;
    if (datenbank) {
        auftrag.datenbank = *datenbank;
    } else {
        auftrag.datenbank = NasArbeitsdatenbank(zustand.arbeitsverzeichnis);
        zustand.arbeitsdatenbanken.push_back(auftrag.datenbank);
    }
    auftrag.konfigOrdner = zustand.installation.Konfig();
    auftrag.ansichtsdatei = zustand.installation.Spaltenansichten();
    if (!ansicht.empty())
        auftrag.ansicht = ansicht;
    auftrag.interaktiv = interaktiv;
    auftrag.zeichnungsordner = zustand.arbeitsverzeichnis;
    return auftrag;
}

} // namespace flurix::nas
