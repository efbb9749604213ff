#include "nas/nas_arbeitsbereich.hpp"

#include "core/datenbank.hpp"
#include "core/oberflaeche.hpp"
#include "core/programm.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <algorithm>

namespace flurix::nas {
namespace {

constexpr char Titel[] = "Flurix-NAS";

/// The database file and what SQLite may have left beside it.
void DatenbankLöschen(const std::filesystem::path& pfad) {
    if (pfad.empty())
        return;
    std::error_code fehler;
    for (const char* endung : {"", "-journal", "-wal", "-shm"})
        std::filesystem::remove(pfad.string() + endung, fehler);
}

/// A work database name no earlier open of this run uses: the stamp has whole seconds only.
std::filesystem::path FreieArbeitsdatenbank(const std::filesystem::path& ordner) {
    std::filesystem::path pfad = NasArbeitsdatenbank(ordner);
    for (int n = 2; std::filesystem::exists(pfad); ++n)
        pfad = NasArbeitsdatenbank(ordner).replace_extension("").string() + "_" + std::to_string(n) +
               ".sqlite";
    return pfad;
}

} // namespace

NasArbeitsbereich::NasArbeitsbereich(Programmzustand& zustand, Oberfläche& ui)
    : m_zustand(zustand), m_ui(ui), m_protokoll(std::make_unique<NasProtokoll>(ui, std::filesystem::path())) {}

NasArbeitsbereich::~NasArbeitsbereich() {
    m_db.reset();
    if (!m_behalten)
        DatenbankLöschen(m_datenbankpfad);
}

Datenbank& NasArbeitsbereich::Db() {
    if (!m_db)
        throw Fehler("Keine NAS-Datenbank geöffnet!");
    return *m_db;
}

NasDirektAuftrag NasArbeitsbereich::Auftrag(const std::filesystem::path& datei,
                                            const std::filesystem::path& db) const {
    NasDirektAuftrag auftrag;
    auftrag.datei = datei;
    auftrag.datenbank = db;
    auftrag.konfigOrdner = m_zustand.installation.Konfig();
    auftrag.ansichtsdatei = m_zustand.installation.Spaltenansichten();
    auftrag.ansicht = !ansicht.empty() ? ansicht
                      : !m_zustand.gewünschteAnsicht.empty() ? m_zustand.gewünschteAnsicht
                                                             : auftrag.ansicht;
    auftrag.optionen = optionen;
    auftrag.interaktiv = interaktiv;
    auftrag.zeichnungsordner = m_zustand.arbeitsverzeichnis;
    auftrag.auswahl = auswahl;
    return auftrag;
}

Ergebnis NasArbeitsbereich::Öffnen(const std::filesystem::path& datei) {
    if (HatDaten() && interaktiv) {
        Fragestellung frage;
        frage.text = "Soll die vorhandene NAS-Datenbank überschrieben werden?   ";
        frage.titel = Titel;
        if (m_ui.Frage(frage) != Antwort::Ja)
            return Ergebnis::Abbruch();
    }
    const std::filesystem::path neu = FreieArbeitsdatenbank(m_zustand.arbeitsverzeichnis);
    m_zustand.arbeitsdatenbanken.push_back(neu);
    // A saved database is opened without a scan and writes no protocol of its own.
    const bool mitDatei = !optionen.protokollNichtSchreiben && !IstNasDatenbankDatei(datei);
    auto protokoll = std::make_unique<NasProtokoll>(m_ui, mitDatei ? NasProtokoll::DateiZu(datei)
                                                                   : std::filesystem::path());
    NasStand stand;
    Ergebnis ergebnis = NasEinlesenOderÖffnen(Auftrag(datei, neu), *protokoll, m_ui, stand);
    std::unique_ptr<Datenbank> db;
    if (ergebnis) {
        try {
            db = DAO_DatenbankÖffnen(neu);
        } catch (const Fehler& e) {
            m_ui.Meldung(e.what(), Titel, Stil::Fehler);
            ergebnis = Ergebnis::Fehlschlag(e.what());
        }
    }
    if (!ergebnis) {
        // What was open stays open.
        DatenbankLöschen(neu);
        return ergebnis;
    }
    m_db.reset();
    if (!m_behalten)
        DatenbankLöschen(m_datenbankpfad);
    m_behalten = false;
    m_db = std::move(db);
    m_datenbankpfad = neu;
    m_datei = datei;
    m_stand = std::move(stand);
    m_protokoll = std::move(protokoll);
    m_protokoll->Eintrag("Datenbank " + datei.filename().string() + " geladen...");
    return Ergebnis::Ok();
}

std::vector<std::string> NasArbeitsbereich::Tabellen() {
    return m_db ? DAO_Tabellen(*m_db) : std::vector<std::string>{};
}

bool NasArbeitsbereich::HatAlkis() { return m_db && DAO_TabelleVorhanden(*m_db, "Alkis"); }

Ergebnis NasArbeitsbereich::Zusammenstellen(Zusammenstellungsbericht& bericht) {
    if (!m_db)
        return Ergebnis::Fehlschlag("Keine NAS-Datenbank geöffnet!");
    return NasZusammenstellen(Auftrag(m_datei, m_datenbankpfad), m_stand, *m_protokoll, m_ui, bericht);
}

Ergebnis NasArbeitsbereich::DirektNachFlurix(Kataster& kataster, NasDirektBericht& bericht) {
    bericht.stand = m_stand;
    Ergebnis ergebnis = Zusammenstellen(bericht.zusammenstellung);
    if (ergebnis)
        ergebnis = NachFlurix(kataster, bericht.übernahme);
    return ergebnis;
}

Ergebnis NasArbeitsbereich::NachFlurix(Kataster& kataster, NachFlurixBericht& bericht) {
    if (!HatAlkis()) {
        m_ui.Meldung("Keine Daten vorhanden!   ", Titel, Stil::Warnung);
        return Ergebnis::Fehlschlag("Keine Daten vorhanden!   ");
    }
    return NasÜbernehmen(Auftrag(m_datei, m_datenbankpfad), *m_protokoll, kataster, m_ui, bericht);
}

} // namespace flurix::nas
