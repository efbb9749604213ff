#include "nas/nas_lauf.hpp"

#include "core/cp1252.hpp"
#include "core/kataster.hpp"
#include "core/kommandozeile.hpp"
#include "core/oberflaeche.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/nas_speichern.hpp"

#include <fstream>

namespace flurix::nas {
namespace {

constexpr char Automatisch[] = "Dieses Fenster wird automatisch geschlossen!   ";

void FehlerdateiSchreiben(const std::filesystem::path& datei, const Ergebnis& ergebnis) {
    // The protocol beside it has the times; this file says what failed, for the batch's caller.
    std::ofstream aus(NasFehlerdatei(datei), std::ios::binary | std::ios::trunc);
    aus << Utf8NachCp1252(datei.string()) << "\r\n"
        << Utf8NachCp1252(ergebnis.Meldung().empty() ? "Der ALKIS Export wurde abgebrochen!   "
                                                     : ergebnis.Meldung())
        << "\r\n";
}

/// The notice at the end of an unattended run; it closes itself.
void Abschlusshinweis(Oberfläche& ui, const NasLaufauftrag& auftrag, const NasLaufbericht& bericht,
                      bool erfolgreich) {
    const std::string titel = "Info ALKIS Export - " + auftrag.datei.filename().string();
    const std::string text = erfolgreich ? "ALKIS Export erfolgreich...\n" + bericht.ausgabe.string() + "\n" +
                                               Automatisch
                                         : std::string("Der ALKIS Export wurde abgebrochen!   \n"
                                                       "Bitte prüfen Sie Ihre Daten!   \n") +
                                               Automatisch;
    ui.Hinweis(text, titel, 5);
}

Ergebnis Schritte(NasArbeitsbereich& bereich, const NasLaufauftrag& auftrag, const Tabellenänderung& tabelle,
                  NasLaufbericht& bericht) {
    Ergebnis ergebnis = bereich.Öffnen(auftrag.datei);
    if (!ergebnis)
        return ergebnis;
    bericht.direkt.stand = bereich.Stand();
    if (bereich.Stand().abgebrochen)
        return Ergebnis::Abbruch("Das Einlesen wurde abgebrochen!   ");
    if (auftrag.direktImport) {
        ergebnis = tabelle([&](Kataster& kataster) { return bereich.DirektNachFlurix(kataster, bericht.direkt); });
        if (!ergebnis)
            return ergebnis;
    }
    if (auftrag.ausgabe == NasAusgabe::Keine)
        return Ergebnis::Ok();
    const bool geograf = auftrag.ausgabe == NasAusgabe::Geograf;
    bereich.Protokoll().Eintrag(geograf ? "Export ALKIS/NAS nach Geograf..." : "Export ALKIS/NAS nach DXF...");
    NasSpeicherauftrag speichern;
    speichern.ziel = NasAusgabedatei(auftrag.datei, auftrag.ausgabe);
    speichern.format = geograf ? NasZiel::Geograf : NasZiel::Dxf;
    speichern.textSchraffur = auftrag.textSchraffur;
    speichern.still = auftrag.still;
    ergebnis = ALKISspeichernUnter(bereich, speichern, bereich.Ui());
    if (ergebnis) {
        bericht.ausgabe = speichern.ziel;
        if (auftrag.still)
            bereich.Protokoll().Eintrag(geograf ? "Konvertierung ALKIS nach Geograf..."
                                                : "Konvertierung ALKIS nach DXF...");
    }
    return ergebnis;
}

} // namespace

NasLaufauftrag NasStapelauftrag(const Auftrag& job) {
    NasLaufauftrag auftrag;
    auftrag.datei = job.AuftragsDatei;
    auftrag.direktImport = false;
    auftrag.ausgabe = job.AusgabeDXF ? NasAusgabe::Dxf : NasAusgabe::Geograf;
    auftrag.textSchraffur = job.AusgabeTxtSch;
    auftrag.still = true;
    return auftrag;
}

std::filesystem::path NasAusgabedatei(const std::filesystem::path& datei, NasAusgabe ausgabe) {
    std::filesystem::path ziel = datei;
    return ziel.replace_extension(ausgabe == NasAusgabe::Dxf ? ".dxf" : ".out");
}

std::filesystem::path NasFehlerdatei(const std::filesystem::path& datei) { return datei.string() + ".err"; }

Ergebnis NasLauf(NasArbeitsbereich& bereich, const NasLaufauftrag& auftrag, const Tabellenänderung& tabelle,
                 NasLaufbericht& bericht) {
    bericht = NasLaufbericht{};
    const Ergebnis ergebnis = Schritte(bereich, auftrag, tabelle, bericht);
    if (auftrag.still) {
        if (!ergebnis)
            FehlerdateiSchreiben(auftrag.datei, ergebnis);
        Abschlusshinweis(bereich.Ui(), auftrag, bericht, static_cast<bool>(ergebnis));
    }
    // What the writers leave in the work folder goes with the run.
    std::error_code fehler;
    std::filesystem::remove(bereich.Datenbankpfad().parent_path() / "#ggdxf.tmp", fehler);
    return ergebnis;
}

} // namespace flurix::nas
