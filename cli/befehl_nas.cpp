#include "cli/befehle.hpp"

#include "cli/argumente.hpp"
#include "nas/nas_auftrag.hpp"
#include "cli/sitzung.hpp"
#include "cli/tabelle_schreiben.hpp"
#include "core/datenbank.hpp"
#include "core/kataster.hpp"
#include "nas/nas_datenbank.hpp"
#include "nas/nas_direkt.hpp"
#include "nas/nba_anwenden.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <ostream>

namespace flurix::cli {
namespace {

/// The scan alone: the tables of the object database with their rows.
int Einlesen(Sitzung& sitzung, const nas::NasDirektAuftrag& auftrag, bool behalten,
             std::ostream& aus, std::ostream& fehler) {
    nas::NasStand stand;
    // A saved database is opened again without a scan and writes no protocol.
    nas::NasProtokoll protokoll(sitzung.ui, auftrag.optionen.protokollNichtSchreiben ||
                                                    nas::IstNasDatenbankDatei(auftrag.datei)
                                                ? std::filesystem::path()
                                                : nas::NasProtokoll::DateiZu(auftrag.datei));
    if (!nas::NasEinlesenOderÖffnen(auftrag, protokoll, sitzung.ui, stand))
        return sitzung.Beenden(1);
    fehler << stand.antrag.AntragsText() << '\n' << stand.antrag.SystemText() << '\n';
    const bool gezählt = sitzung.Versuchen([&] {
        auto db = nas::DAO_DatenbankÖffnen(auftrag.datenbank);
        for (const auto& tabelle : stand.tabellen)
            aus << tabelle << '\t' << nas::DAO_Zeilenzahl(*db, tabelle) << '\n';
    });
    if (!gezählt)
        return sitzung.Beenden(1);
    if (behalten)
        fehler << "Datenbank: " << auftrag.datenbank.string() << '\n';
    return sitzung.Beenden(0);
}

/// --flaechen alle|schnell|bs|lw|bov [--ohne-anpassung] [--svg <folder>]: the area computation of
/// the compilation, with the fitting to the official area unless told otherwise; the drawings of
/// the intersections go to the folder only when it is given.
bool FlächenoptionenSetzen(const Argumente& args, nas::NasDirektAuftrag& auftrag, std::ostream& fehler) {
    auto& o = auftrag.optionen;
    const auto flächen = args.Wert("--flaechen");
    if (!flächen) {
        if (args.Hat("--ohne-anpassung") || args.Wert("--svg")) {
            fehler << "flurix nas: --ohne-anpassung und --svg gelten nur mit --flaechen.\n";
            return false;
        }
        return true;
    }
    const std::pair<std::string_view, bool nas::NasOptionen::*> arten[] = {
        {"alle", &nas::NasOptionen::mitNaBerechnung},       {"schnell", &nas::NasOptionen::quickNaBerechnung},
        {"bs", &nas::NasOptionen::quickBSBerechnung},       {"lw", &nas::NasOptionen::quickLWBerechnung},
        {"bov", &nas::NasOptionen::quickBROBBerechnung}};
    bool bekannt = false;
    for (const auto& [name, feld] : arten)
        if (*flächen == name) {
            o.mitNaBerechnung = true; // the "nur ..." options hang on the area computation
            o.*feld = true;
            bekannt = true;
        }
    if (!bekannt) {
        fehler << "flurix nas: --flaechen erwartet alle, schnell, bs, lw oder bov.\n";
        return false;
    }
    o.mitFlächenAnpassung = !args.Hat("--ohne-anpassung");
    o.svgLöschen = !args.Wert("--svg");
    if (const auto ordner = args.Wert("--svg")) {
        o.svgLöschen = false;
        auftrag.zeichnungsordner = *ordner;
        std::error_code fehlercode;
        std::filesystem::create_directories(auftrag.zeichnungsordner, fehlercode);
    }
    return true;
}

// --aktualisieren: an update delivery applied to the object database of --db.
int Aktualisieren(const Argumente& args, std::ostream& aus, std::ostream& fehler, const Umgebung& umgebung) {
    const auto db = args.Wert("--db");
    if (!db || args.Wert("--out")) {
        fehler << "flurix nas: --aktualisieren braucht --db <objektdatenbank.sqlite> und kein --out.\n";
        return 2;
    }
    Sitzung sitzung(umgebung, fehler);
    if (!sitzung.Starten(""))
        return 1;
    const std::filesystem::path datei = args.positionen.front();
    nas::NasProtokoll protokoll(sitzung.ui, args.Hat("--ohne-protokoll") ? std::filesystem::path()
                                                                         : nas::NasProtokoll::DateiZu(datei));
    try {
        const nas::NbaBericht bericht =
            nas::NbaAnwenden(datei, *db, sitzung.zustand.installation.Konfig(), protokoll, sitzung.ui);
        aus << bericht.eingefügt << " eingefügt, " << bericht.ersetzt << " ersetzt, " << bericht.gelöscht
            << " gelöscht, " << bericht.nichtVorhanden << " nicht vorhanden, " << bericht.übergangen
            << " übergangen\n";
        return sitzung.Beenden(0);
    } catch (const std::exception& e) {
        fehler << e.what() << '\n';
        return sitzung.Beenden(1);
    }
}

} // namespace

int BefehlNas(const std::vector<std::string>& argumente, std::ostream& aus, std::ostream& fehler,
              const Umgebung& umgebung) {
    const auto args = ArgumenteLesen(argumente,
                                     {"--ohne-protokoll", "--nutzung-ohne-ax", "--ohne-anpassung", "--aktualisieren"},
                                     {"--db", "--out", "--format", "--optionen", "--flaechen", "--svg"}, fehler);
    if (!args)
        return 2;
    if (args->positionen.size() != 1) {
        fehler << "flurix nas: Bitte genau eine NAS-Datei angeben.\n";
        return 2;
    }
    const auto out = args->Wert("--out");
    const Exportformat* format = nullptr;
    if (out) {
        const auto name = args->Wert("--format");
        format = name ? FormatFinden(*name) : FormatAusEndung(*out);
        if (format == nullptr) {
            fehler << "flurix nas: Das Format der Tabelle ist unbekannt; --format mit "
                   << FormatNamen() << " angeben.\n";
            return 2;
        }
    } else if (args->Wert("--format")) {
        fehler << "flurix nas: --format gilt nur mit --out.\n";
        return 2;
    }

    if (args->Hat("--aktualisieren"))
        return Aktualisieren(*args, aus, fehler, umgebung);

    Sitzung sitzung(umgebung, fehler);
    if (!sitzung.Starten(""))
        return 1;
    const auto db = args->Wert("--db");
    // Without --db the work database goes with the end of the run.
    nas::NasDirektAuftrag auftrag = nas::NasAuftragFür(
        sitzung.zustand, args->positionen.front(),
        db ? std::optional<std::filesystem::path>(*db) : std::nullopt, sitzung.zustand.gewünschteAnsicht,
        false);
    auftrag.optionen = nas::NasOptionen::AusText(args->Wert("--optionen").value_or(""));
    if (args->Hat("--ohne-protokoll"))
        auftrag.optionen.protokollNichtSchreiben = true;
    if (args->Hat("--nutzung-ohne-ax"))
        auftrag.optionen.nutzungOhneAx = true;
    if (!FlächenoptionenSetzen(*args, auftrag, fehler))
        return sitzung.Beenden(2);
    if (!out)
        return Einlesen(sitzung, auftrag, db.has_value(), aus, fehler);

    Kataster kataster;
    nas::NasDirektBericht bericht;
    const Ergebnis importiert = nas::NasDirektImport(auftrag, kataster, sitzung.ui, bericht);
    // The protocol goes to the run's log; the hints on what could not be joined belong on screen.
    const auto& reorganisation = bericht.zusammenstellung.reorganisation;
    for (const auto& hinweis : reorganisation.Hinweise())
        fehler << hinweis << '\n';
    if (const std::string zu = reorganisation.ZuBuchungenText(); !zu.empty())
        fehler << zu << '\n';
    if (bericht.zusammenstellung.zuordnung.fehlgeschlagen > 0)
        fehler << "Hinweis: " << bericht.zusammenstellung.zuordnung.fehlgeschlagen
               << " Zeile(n) von ALKIS_Zuordnung.dat fehlgeschlagen (siehe Protokoll)\n";
    if (!importiert)
        return sitzung.Beenden(1);
    const Ergebnis geschrieben = TabelleSchreiben(kataster, *format, *out, sitzung);
    if (!geschrieben)
        return sitzung.Beenden(1);
    aus << kataster.Zeilenzahl() << " Zeilen, " << bericht.zusammenstellung.reorganisation.flurstücke
        << " Flurstücke\n";
    return sitzung.Beenden(0);
}

} // namespace flurix::cli
