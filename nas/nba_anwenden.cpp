#include "nas/nba_anwenden.hpp"

#include "core/datenbank.hpp"
#include "core/fehler.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "nas/anreicherung.hpp"
#include "nas/element_leser.hpp"
#include "nas/knoten.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/nas_form.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/nba_leser.hpp"
#include "nas/objektdatenbank.hpp"

#include <fstream>
#include <set>

namespace flurix::nas {
namespace {

std::string Kopf(const std::filesystem::path& datei) {
    std::ifstream ein(datei, std::ios::binary);
    std::string kopf(64 * 1024, '\0');
    ein.read(kopf.data(), static_cast<std::streamsize>(kopf.size()));
    kopf.resize(static_cast<std::size_t>(ein.gcount()));
    return kopf;
}

class Anwendung {
public:
    explicit Anwendung(Datenbank& db) : m_db(db) {
        for (const std::string& tabelle : DAO_Tabellen(db))
            m_tabellen.push_back(tabelle);
    }

    // Deletes the object's rows and those of its references; how many rows of the class went.
    std::int64_t Löschen(std::string_view klasse, std::string_view kennung) {
        const std::string id = IdKennzeichnen(Objektkennung(kennung), "gml:id");
        std::int64_t gelöscht = 0;
        for (const std::string& tabelle : m_tabellen) {
            const bool eigene = tabelle == klasse;
            if (!eigene && !(tabelle.starts_with(std::string(klasse) + "_") &&
                             tabelle.find('#') != std::string::npos))
                continue;
            Anweisung a =
                m_db.VorbereitenNativ("DELETE FROM " + Bezeichner(tabelle) + " WHERE id = ?");
            a.Binde(id);
            a.Schritt();
            if (eigene)
                gelöscht = m_db.Änderungen();
        }
        return gelöscht;
    }

private:
    Datenbank& m_db;
    std::vector<std::string> m_tabellen;
};

// The feature with the object's identifier in place of the version's.
std::string OhneZeitstempel(const NbaOperation& op) {
    if (op.neueKennung.size() <= 16)
        return op.objekt;
    return Ersetzen(op.objekt, "gml:id=\"" + op.neueKennung + "\"",
                    "gml:id=\"" + std::string(Objektkennung(op.neueKennung)) + "\"");
}

} // namespace

NbaBericht NbaAnwenden(const std::filesystem::path& datei, const std::filesystem::path& datenbank,
                       const std::filesystem::path& konfigOrdner, NasProtokoll& protokoll,
                       Oberfläche& ui) {
    const NasFormbefund form = NasFormErkennen(Kopf(datei));
    if (form.form != NasForm::Aktualisierung)
        throw Fehler("Die Datei \"" + datei.string() + "\" ist keine NBA-Aktualisierung (" +
                     form.Name() + ")!");
    auto db = DAO_DatenbankÖffnen(datenbank);
    if (!db->TabelleVorhanden("AX_Flurstueck"))
        throw Fehler("Die Datenbank \"" + datenbank.string() + "\" ist keine NAS-Datenbank!");
    // The scan writes without a journal; an update must be able to roll back.
    db->AusführenNativ("PRAGMA journal_mode = DELETE");
    db->AusführenNativ("PRAGMA synchronous = NORMAL");
    // Only the classes the update inserts: after the scan's enrichment some tables of others no
    // longer have the columns of the node file, and the reader prepares a statement per class.
    std::set<std::string, std::less<>> klassen;
    {
        NbaLeser vorlauf(datei);
        while (const auto op = vorlauf.Nächste())
            if (op->art == NbaOperation::Art::Einfügen || op->art == NbaOperation::Art::Ersetzen)
                klassen.insert(op->typName);
    }
    KnotenDatei knoten = KnotenLesen(konfigOrdner / "ALKIS_Knoten.dat");
    std::erase_if(knoten.klassen,
                  [&](const KnotenKlasse& k) { return !klassen.contains(k.tabelle); });
    std::string srs;
    {
        Anweisung a =
            db->VorbereitenNativ("SELECT srsName FROM AX_Flurstueck WHERE srsName <> '' LIMIT 1");
        if (a.Schritt())
            srs = a.Text(0);
    }
    const std::string tag = knoten.mitgliedTags.empty() ? std::string("gml:featureMember")
                                                        : knoten.mitgliedTags.front();
    Dateirahmen rahmen{form.präfix, tag, XPfadPräfix(knoten.xmlBaum, tag, form.präfix), srs};
    protokoll.Eintrag(", " + form.Name() + " auf " + datenbank.string() + " anwenden...");
    NbaBericht bericht;
    Transaktion transaktion(*db);
    std::string fehler;
    ElementLeser leser(*db, knoten, std::move(rahmen),
                       [&](std::string_view text) { fehler = text; });
    Anwendung anwendung(*db);
    NbaLeser operationen(datei);
    std::size_t nummer = 0;
    while (const auto op = operationen.Nächste()) {
        if (++nummer % 256 == 0 && ui.AbbruchGewünscht())
            throw Fehler("Die Aktualisierung wurde abgebrochen; die Datenbank bleibt unverändert!");
        const std::string kennung(Objektkennung(op->kennung));
        switch (op->art) {
        case NbaOperation::Art::Löschen:
        case NbaOperation::Art::Ersetzen:
            if (anwendung.Löschen(op->typName, op->kennung) == 0) {
                ++bericht.nichtVorhanden;
                protokoll.Eintrag(", " + op->typName + " " + kennung + " nicht vorhanden...");
            }
            if (op->art == NbaOperation::Art::Löschen) {
                ++bericht.gelöscht;
                protokoll.Liste("gelöscht: " + op->typName + " " + kennung);
                break;
            }
            [[fallthrough]];
        case NbaOperation::Art::Einfügen:
            fehler.clear();
            leser.Objekt(OhneZeitstempel(*op));
            if (!fehler.empty())
                throw Fehler(op->typName + " " + op->neueKennung + ": " + fehler);
            if (op->art == NbaOperation::Art::Ersetzen) {
                ++bericht.ersetzt;
                protokoll.Liste("ersetzt: " + op->typName + " " + kennung);
            } else {
                ++bericht.eingefügt;
                protokoll.Liste("eingefügt: " + op->typName + " " +
                                std::string(Objektkennung(op->neueKennung)));
            }
            break;
        case NbaOperation::Art::Ändern:
            ++bericht.übergangen;
            protokoll.Eintrag(", " + op->typName + " " + kennung +
                              ": Änderung einzelner Eigenschaften (wfs:Update) übergangen...");
            break;
        }
    }
    // An update for another data set finds none of the objects it deletes or replaces.
    if (const std::size_t ziele = bericht.gelöscht + bericht.ersetzt;
        ziele > 0 && bericht.nichtVorhanden == ziele)
        throw Fehler("Die Aktualisierung \"" + datei.string() +
                     "\" passt nicht zu dieser Datenbank: keines der " + std::to_string(ziele) +
                     " gelöschten oder ersetzten Objekte ist vorhanden; die Datenbank bleibt "
                     "unverändert!");
    if (operationen.Abgeschnitten())
        throw Fehler("Die Datei \"" + datei.string() +
                     "\" endet mitten in einer Operation; die Datenbank bleibt unverändert!");
    // The new rows get what a scan's enrichment gives every row (texts of codes, keys); its steps
    // leave rows alone that have it already. The description of the order is the update's now.
    if (db->TabelleVorhanden("Antragsbeschreibung"))
        db->AusführenNativ("DELETE FROM Antragsbeschreibung");
    NasAnreichern(*db, datei,
                  Werttabellen{KonfigText(konfigOrdner / "ALKIS_Werteart.dat"),
                               KonfigText(konfigOrdner / "ALKIS_EPSG.dat")},
                  ui);
    transaktion.Bestätigen();
    protokoll.Eintrag(", NBA-Aktualisierung: " + std::to_string(bericht.eingefügt) +
                      " eingefügt, " + std::to_string(bericht.ersetzt) + " ersetzt, " +
                      std::to_string(bericht.gelöscht) + " gelöscht, " +
                      std::to_string(bericht.nichtVorhanden) + " nicht vorhanden, " +
                      std::to_string(bericht.übergangen) + " übergangen...");
    return bericht;
}

} // namespace flurix::nas
