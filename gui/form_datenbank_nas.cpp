// The main window's side of the NAS work: the NAS window opened for a NAS file of the open
// dialog or a job line, its "nach Flurix" into this window's table, and the unattended batch run.

#include "gui/form_alkis.hpp"
#include "gui/form_datenbank.hpp"
#include "gui/form_nas_darstellung.hpp"

#include "gui/qt_oberflaeche.hpp"

#include "core/benutzereinstellungen.hpp"
#include "nas/nas_lauf.hpp"

#include <QTimer>

namespace flurix::gui {

FormAlkis& FormDatenbank::NasFenster() {
    if (m_nasFenster == nullptr) {
        // A window of its own (no parent), so that it can stand beside the main window; this
        // window deletes it when it is ended.
        m_nasFenster = new FormAlkis(
            m_zustand, m_ui, [this](const auto& füllen) { return TabelleFüllen(füllen); });
        m_nasFenster->BenutzerordnerSetzen(m_benutzerordner);
        connect(m_nasFenster, &FormAlkis::beendet, this, [this] {
            m_nasFenster->deleteLater();
            m_nasFenster = nullptr;
            m_ui.FensterSetzen(this);
        });
    }
    return *m_nasFenster;
}

void FormDatenbank::NasFensterZeigen() {
    FormAlkis& fenster = NasFenster();
    fenster.show();
    fenster.raise();
    fenster.activateWindow();
}

Ergebnis FormDatenbank::NasFensterÖffnen(const std::filesystem::path& datei) {
    nas::NasOptionen optionen;
    NasStart wahl = NasStart::Abbruch;
    try {
        wahl = FormNasDarstellung::Bearbeiten(Benutzereinstellungen(m_benutzerordner), optionen, this);
    } catch (const Fehler& e) {
        m_ui.Meldung(e.what(), "Flurix-NAS", Stil::Fehler);
        return Ergebnis::Fehlschlag(e.what());
    }
    if (wahl == NasStart::Abbruch)
        return Ergebnis::Abbruch();
    nas::NasLaufauftrag auftrag;
    auftrag.datei = datei;
    auftrag.direktImport = wahl == NasStart::Direkt;
    // The window runs the file after its first paint; the main window is free again meanwhile.
    NasFenster().Starten(auftrag);
    return Ergebnis::Ok();
}

void FormDatenbank::NasStapelZeitgeber() {
    const nas::NasLaufauftrag auftrag = nas::NasStapelauftrag(m_zustand.auftrag);
    NasFensterZeigen();
    // After the NAS window's first paint; the run ends the program without a question.
    QTimer::singleShot(0, this, [this, auftrag] {
        const Ergebnis ergebnis = NasFenster().Laufen(auftrag);
        TimerEnd(ergebnis ? 0 : 1);
    });
}

} // namespace flurix::gui
