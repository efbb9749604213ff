#include "nas/nas_speichern.hpp"

#include "core/datenbank.hpp"
#include "core/oberflaeche.hpp"
#include "core/programm.hpp"
#include "core/text.hpp"
#include "core/zieldatei.hpp"
#include "export/dxf_nas.hpp"
#include "export/tabellenschreiber.hpp"
#include "nas/nas_arbeitsbereich.hpp"
#include "nas/nas_geograf.hpp"
#include "nas/nas_protokoll.hpp"

#include <algorithm>
#include <memory>

namespace flurix::nas {
namespace {

constexpr char Titel[] = "Flurix-NAS";

bool Weiter(Oberfläche& ui, std::string text, bool still = false) {
    if (still)
        return true;
    Fragestellung frage;
    frage.text = std::move(text);
    frage.titel = Titel;
    return ui.Frage(frage) == Antwort::Ja;
}

void Umbenennen(const std::filesystem::path& zwischen, const std::filesystem::path& ziel) {
    std::error_code fehler;
    std::filesystem::rename(zwischen, ziel, fehler);
    if (fehler) {
        std::filesystem::remove(zwischen, fehler);
        throw Fehler("Die Datei \"" + ziel.string() + "\" kann nicht geschrieben werden!   ");
    }
}

std::string Spaltenliste(const std::vector<std::string>& spalten) {
    if (spalten.empty())
        return "*";
    std::string liste;
    for (const auto& spalte : spalten) {
        if (!liste.empty())
            liste += ", ";
        liste += '"' + Ersetzen(spalte, "\"", "\"\"") + '"';
    }
    return liste;
}

/// The rows of the grid's query, the chosen ones or all, through one writer.
void Zeilenschreiben(Datenbank& db, const NasSpeicherauftrag& auftrag, const std::filesystem::path& ziel,
                     Oberfläche& ui) {
    const std::string quelle = !auftrag.abfrage.empty()
                                   ? "(" + auftrag.abfrage + ")"
                                   : "\"" + Ersetzen(auftrag.tabelle, "\"", "\"\"") + "\"";
    auto abfrage = db.VorbereitenNativ("SELECT " + Spaltenliste(auftrag.spalten) + " FROM " + quelle);
    std::vector<ausgabe::Ausgabespalte> spalten;
    for (int i = 0; i < abfrage.Spaltenanzahl(); ++i) {
        ausgabe::Ausgabespalte spalte;
        spalte.schlüssel = spalte.überschrift = std::string(abfrage.Spaltenname(i));
        spalten.push_back(std::move(spalte));
    }
    std::unique_ptr<ausgabe::Tabellenschreiber> schreiber;
    if (auftrag.format == NasZiel::Csv)
        schreiber = std::make_unique<ausgabe::TrennzeichenSchreiber>(ziel, spalten, ';');
    else
        schreiber = std::make_unique<ausgabe::XlsxSchreiber>(ziel, spalten, ziel.parent_path(), "WorkSheet1");

    std::vector<std::int64_t> gewählt = auftrag.zeilen;
    std::sort(gewählt.begin(), gewählt.end());
    auto nächste = gewählt.begin();
    std::vector<std::string> werte(spalten.size());
    std::vector<std::string_view> zellen(spalten.size());
    for (std::int64_t zeile = 0; abfrage.Schritt(); ++zeile) {
        if (!gewählt.empty()) {
            while (nächste != gewählt.end() && *nächste < zeile)
                ++nächste;
            if (nächste == gewählt.end())
                break;
            if (*nächste != zeile)
                continue;
        }
        for (std::size_t i = 0; i < werte.size(); ++i) {
            werte[i] = abfrage.Text(static_cast<int>(i));
            zellen[i] = werte[i];
        }
        schreiber->Zeile(zellen);
        if (zeile % 4096 == 0 && ui.AbbruchGewünscht())
            throw Fehler("Der Export wurde abgebrochen!   ");
    }
    schreiber->Abschließen();
}

Ergebnis Schreiben(NasArbeitsbereich& bereich, const NasSpeicherauftrag& auftrag, Oberfläche& ui) {
    const std::filesystem::path zwischen = Zieldatei::Zwischenname(auftrag.ziel);
    switch (auftrag.format) {
    case NasZiel::Datenbank:
        ui.Status(1, "Bitte warten, Datenbank wird kopiert...");
        // VACUUM INTO writes a consistent, compact copy of the open database.
        std::filesystem::remove(zwischen);
        bereich.Db().AusführenNativ("VACUUM INTO '" + Ersetzen(zwischen.string(), "'", "''") + "'");
        Umbenennen(zwischen, auftrag.ziel);
        break;
    case NasZiel::Csv:
    case NasZiel::Excel:
        if (!Weiter(ui, "Es werden alle sichtbaren Datenspalten exportiert! Weiter?   "))
            return Ergebnis::Abbruch();
        if (!auftrag.zeilen.empty() &&
            !Weiter(ui, "Es werden " + std::to_string(auftrag.zeilen.size()) +
                            " selektierte Datenzeilen ausgegeben! Weiter?   "))
            return Ergebnis::Abbruch();
        Zeilenschreiben(bereich.Db(), auftrag, zwischen, ui);
        Umbenennen(zwischen, auftrag.ziel);
        if (auftrag.format == NasZiel::Csv) {
            std::filesystem::path name = auftrag.ziel;
            ui.Meldung("Datei " + name.replace_extension("").string() + ".csv erzeugt   ", Titel,
                       Stil::Information);
        }
        break;
    case NasZiel::Geograf:
    case NasZiel::Dxf:
    case NasZiel::DxfOut: {
        const bool geograf = auftrag.format == NasZiel::Geograf;
        if (!Weiter(ui, geograf ? "Export-Optionen ausgewählt? GG-Export ausführen?   "
                                : "Export-Optionen ausgewählt? DXF-Export ausführen?   ",
                    auftrag.still))
            return Ergebnis::Abbruch();
        NasZeichnungsauftrag zeichnung;
        zeichnung.konfigOrdner = bereich.Zustand().installation.Konfig();
        zeichnung.meridianKZ = bereich.optionen.sqlMeridianKZ;
        if (geograf) {
            zeichnung.schraffur = bereich.optionen.ggMitSchraffur;
            // The batch switch "/txt-sch": texts and hatching.
            if (auftrag.textSchraffur)
                DefAusgabeGGout(zeichnung, "te;sch");
            PositionNachGG(bereich.Db(), auftrag.ziel, zeichnung, bereich.Protokoll(), ui);
            break;
        }
        // The DXF draws the GEOgraf file of the data set with its outlines: "ACAD-out" keeps that
        // file beside the drawing, "ACAD" makes it in the working folder and deletes it.
        zeichnung.umringe = true;
        zeichnung.schraffur = bereich.optionen.dxfMitSchraffur;
        const std::filesystem::path& arbeit = bereich.Zustand().arbeitsverzeichnis;
        std::filesystem::path zwischenstand = auftrag.ziel;
        zwischenstand.replace_extension();
        zwischenstand += "_dxf.out";
        if (auftrag.format == NasZiel::Dxf && !arbeit.empty())
            zwischenstand = arbeit / zwischenstand.filename();
        struct Aufräumen {
            const std::filesystem::path* datei;
            ~Aufräumen() {
                std::error_code fehler;
                if (datei != nullptr)
                    std::filesystem::remove(*datei, fehler);
            }
        } aufräumen{auftrag.format == NasZiel::Dxf ? &zwischenstand : nullptr};
        PositionNachGG(bereich.Db(), zwischenstand, zeichnung, bereich.Protokoll(), ui);
        ausgabe::DxfNasOptionen dxf;
        dxf.schraffur = bereich.optionen.dxfMitSchraffur;
        dxf.punktnummern = bereich.optionen.dxfMitPunktbeschriftung;
        dxf.sachdaten = bereich.optionen.dxfMitSachdaten;
        dxf.calibri = bereich.optionen.dxfMitCalibri;
        dxf.arbeitsverzeichnis = arbeit;
        dxf.protokoll = [&bereich](std::string_view zeile) { bereich.Protokoll().Eintrag(zeile); };
        if (Ergebnis ergebnis = ausgabe::DXFExport(zwischenstand, auftrag.ziel, dxf, ui); !ergebnis)
            return ergebnis;
        break;
    }
    }
    bereich.Protokoll().Eintrag("Datei " + auftrag.ziel.string() + " gespeichert...");
    return Ergebnis::Ok();
}

} // namespace

bool NasZielAusEndung(const std::filesystem::path& datei, NasZiel& ziel) {
    const std::string endung = Kleinbuchstaben(datei.extension().string());
    if (endung == ".sqlite" || endung == ".mdb" || endung == ".db")
        ziel = NasZiel::Datenbank;
    else if (endung == ".csv")
        ziel = NasZiel::Csv;
    else if (endung == ".xlsx" || endung == ".xls")
        ziel = NasZiel::Excel;
    else if (endung == ".out")
        ziel = NasZiel::Geograf;
    else if (endung == ".dxf")
        ziel = NasZiel::Dxf;
    else
        return false;
    return true;
}

Ergebnis ALKISspeichernUnter(NasArbeitsbereich& bereich, const NasSpeicherauftrag& auftrag, Oberfläche& ui) {
    if (!bereich.HatDaten()) {
        ui.Meldung("Keine Daten zum Speichern vorhanden! Abbruch!   ", Titel, Stil::Warnung);
        return Ergebnis::Fehlschlag("Keine Daten zum Speichern vorhanden! Abbruch!   ");
    }
    if (!auftrag.still && std::filesystem::exists(auftrag.ziel)) {
        Fragestellung frage;
        frage.text = "Datei \"" + auftrag.ziel.string() + "\" ersetzen?   ";
        frage.titel = "Datei schon vorhanden!";
        if (ui.Frage(frage) != Antwort::Ja)
            return Ergebnis::Abbruch();
    }
    try {
        return Schreiben(bereich, auftrag, ui);
    } catch (const std::exception& e) {
        std::error_code fehler;
        std::filesystem::remove(Zieldatei::Zwischenname(auftrag.ziel), fehler);
        ui.Meldung(e.what(), Titel, Stil::Fehler);
        return Ergebnis::Fehlschlag(e.what());
    }
}

} // namespace flurix::nas
