#include "nas/nach_flurix.hpp"

#include "core/datei.hpp"
#include "core/datenbank.hpp"
#include "core/einstellungen.hpp"
#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche.hpp"
#include "core/spaltenansicht.hpp"
#include "core/text.hpp"
#include "nas/alkis_tabelle.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <algorithm>
#include <set>
#include <unordered_map>

namespace flurix::nas {
namespace {

constexpr char Titel[] = "ALKIS-Export";
constexpr std::string_view Sortierung = "Gemarkung,Flur,Flurstückskennzeichen,Eigentümerposition";

/// The columns in the order the table shows them: the catalogue's first, in its order, then the
/// others as Alkis has them.
std::vector<std::string> Anordnen(const std::vector<std::string>& spalten) {
    std::vector<std::string> geordnet;
    std::set<std::string_view> vergeben;
    for (const auto& k : Katalog())
        if (std::find(spalten.begin(), spalten.end(), k.schlüssel) != spalten.end()) {
            geordnet.emplace_back(k.schlüssel);
            vergeben.insert(k.schlüssel);
        }
    for (const auto& spalte : spalten)
        if (!vergeben.contains(spalte))
            geordnet.push_back(spalte);
    return geordnet;
}

bool Anhängen(Kataster& kataster, Oberfläche& ui, bool interaktiv) {
    if (kataster.Leer())
        return false;
    Fragestellung frage{"<Ja> vorliegende Datenbank wird erweitert   \n"
                        "<Nein> vorliegende Datenbank wird überschrieben   ",
                        "Auswahl Import NAS-Daten", Knöpfe::JaNein, Antwort::Ja, Antwort::Ja};
    return !interaktiv || ui.Frage(frage) == Antwort::Ja;
}

} // namespace

std::vector<std::string> ÜbernahmeSpalten(const std::vector<std::string>& alkisSpalten,
                                          std::int64_t zeilen, const std::string* vorlage) {
    if (zeilen <= GroßeAlkisTabelle || vorlage == nullptr)
        return alkisSpalten;
    std::vector<std::string> gewählt;
    for (std::string_view zeile : TextZeilen(*vorlage)) {
        const std::string name(TrimmeLeerzeichen(Ersetzen(zeile, "\t", "")));
        if (!name.empty() &&
            std::find(alkisSpalten.begin(), alkisSpalten.end(), name) != alkisSpalten.end() &&
            std::find(gewählt.begin(), gewählt.end(), name) == gewählt.end())
            gewählt.push_back(name);
    }
    return gewählt.empty() ? alkisSpalten : gewählt;
}

Ergebnis ALKISnachFlurix(Datenbank& db, Kataster& kataster, const NachFlurixUmgebung& umgebung,
                         NasProtokoll& protokoll, Oberfläche& ui, NachFlurixBericht& bericht) {
    bericht = NachFlurixBericht{};
    const bool anhängen = Anhängen(kataster, ui, umgebung.interaktiv);
    const std::int64_t zeilen =
        db.TabelleVorhanden(AlkisTabelle) ? DAO_Zeilenzahl(db, AlkisTabelle) : 0;
    if (zeilen <= 0) {
        const std::string text =
            "Es liegen keine Daten in der Tabelle: Alkis zum Export nach Flurix vor!";
        ui.Meldung(text, Titel, Stil::Warnung);
        return Ergebnis::Fehlschlag(text);
    }

    const std::vector<std::string> alkisSpalten = db.Spaltennamen(AlkisTabelle);
    std::string vorlage;
    const std::string* vorlageZeiger = nullptr;
    if (zeilen > GroßeAlkisTabelle) {
        const auto datei = umgebung.konfigOrdner / "ALB_ALKISImport.dat";
        if (DateiVorhanden(datei)) {
            vorlage = KonfigText(datei);
            vorlageZeiger = &vorlage;
            ui.Meldung(std::to_string(zeilen) + " Datenzeilen vorgefunden.\n"
                           "Aufgrund der Datengröße werden nur die wichtigsten Daten exportiert!   \n"
                           "Vorlage: ...\\config\\ALB_ALKISImport.dat",
                       Titel, Stil::Information);
        } else {
            ui.Meldung("Dateivorlage: ...\\config\\ALB_ALKISImport.dat fehlt! Es werden alle Daten "
                       "exportiert!   ",
                       Titel, Stil::Warnung);
        }
    }
    const std::vector<std::string> spalten =
        Anordnen(ÜbernahmeSpalten(alkisSpalten, zeilen, vorlageZeiger));
    bericht.nurVorlage = spalten.size() < alkisSpalten.size();

    protokoll.Eintrag(", ALKIS nach ALB: Datenbank vorbereiten...");
    if (!anhängen)
        kataster.Leeren();
    std::vector<std::size_t> ziel;
    for (const std::string& name : spalten)
        ziel.push_back(kataster.SpalteHinzufügen(KatalogSpalteFür(name)));
    kataster.SpalteHinzufügen(KatalogSpalteFür("checkdruck")); // kept when extending

    protokoll.Eintrag(", ALKIS nach ALB: Gemarkung/Flur einlesen...");
    protokoll.Eintrag(", ALKIS nach ALB: Daten einlesen...");
    std::string liste;
    for (const std::string& name : spalten)
        liste += (liste.empty() ? "" : ", ") + Bezeichner(name);
    auto abfrage = db.VorbereitenNativ("SELECT " + liste + " FROM " + Bezeichner(AlkisTabelle) +
                                       " ORDER BY rowid");
    const auto gemarkung = std::find(spalten.begin(), spalten.end(), "Gemarkung");
    const auto flur = std::find(spalten.begin(), spalten.end(), "Flur");
    std::set<std::pair<std::string, std::string>> paare;
    std::vector<std::string_view> zellen(kataster.Spaltenzahl());
    while (abfrage.Schritt()) {
        std::fill(zellen.begin(), zellen.end(), std::string_view{});
        for (std::size_t i = 0; i < spalten.size(); ++i)
            zellen[ziel[i]] = abfrage.Text(static_cast<int>(i)); // NULL reads as ""
        if (gemarkung != spalten.end() && flur != spalten.end()) {
            const auto g = abfrage.Text(static_cast<int>(gemarkung - spalten.begin()));
            const auto f = abfrage.Text(static_cast<int>(flur - spalten.begin()));
            if (!g.empty() && !f.empty() && paare.emplace(g, f).second)
                bericht.gemarkungFlur.push_back(std::string(g) + ", " + std::string(f));
        }
        kataster.ZeileHinzufügen(zellen);
        if (++bericht.zeilen % 1000 == 0)
            ui.Status(1, "Import nach Flurix, Zeile: " + std::to_string(bericht.zeilen));
    }

    protokoll.Eintrag(", ALKIS nach ALB: Grid anpassen...");
    if (const auto s = kataster.SpaltenIndex("Flur"))
        kataster.Spalte(*s).format = "0000";
    if (const auto s = kataster.SpaltenIndex("Fläche"))
        kataster.Spalte(*s).format = "000000000.00";

    protokoll.Eintrag(", ALKIS nach ALB: Grid optimieren...");
    ALBDatenColFormatierung(kataster);
    // A ring's text runs to thousands of characters; its column keeps the width of a list.
    for (const char* ring : {"UmringFlurstück", "InteriorFlurstück"})
        if (const auto s = kataster.SpaltenIndex(ring))
            kataster.Spalte(*s).breite = std::min(kataster.Spalte(*s).breite, 2000);
    ComboColVis(kataster, umgebung.ansicht, umgebung.ansichtsdatei);
    kataster.Sortieren(Sortierung);
    protokoll.Eintrag(", Daten nach Flurix exportiert...");
    return Ergebnis::Ok();
}

} // namespace flurix::nas
