#include "nas/nas_datenbank.hpp"

#include "core/datenbank.hpp"
#include "core/oberflaeche.hpp"
#include "nas/nas_einlesen.hpp"
#include "nas/objektdatenbank.hpp"

namespace flurix::nas {
namespace {

bool IstNasDatenbank(const std::filesystem::path& datei) {
    if (!std::filesystem::is_regular_file(datei))
        return false;
    try {
        Datenbank db(datei);
        return DAO_TabelleVorhanden(db, "AP_PTO");
    } catch (const Fehler&) {
        return false;
    }
}

} // namespace

Ergebnis NasDatenbankÖffnen(const std::filesystem::path& gespeichert,
                            const std::filesystem::path& arbeitsdatenbank, NasStand& stand,
                            Oberfläche& ui) {
    if (!IstNasDatenbank(gespeichert)) {
        ui.Meldung(MeldungUngültigeNasDatenbank, "Flurix-NAS", Stil::Warnung);
        return Ergebnis::Fehlschlag(MeldungUngültigeNasDatenbank);
    }
    try {
        if (std::filesystem::absolute(gespeichert) != std::filesystem::absolute(arbeitsdatenbank))
            std::filesystem::copy_file(gespeichert, arbeitsdatenbank,
                                       std::filesystem::copy_options::overwrite_existing);
        auto db = DAO_DatenbankÖffnen(arbeitsdatenbank);
        stand = NasStand{};
        for (auto& tabelle : DAO_Tabellen(*db))
            stand.tabellen.push_back(std::move(tabelle));
        stand.antrag = AntragsbeschreibungLesen(*db);
    } catch (const std::exception& e) {
        // Fehler of the database and filesystem_error of the copy alike.
        ui.Meldung(e.what(), "Flurix-NAS", Stil::Fehler);
        return Ergebnis::Fehlschlag(e.what());
    }
    return Ergebnis::Ok();
}

Antragsbeschreibung AntragsbeschreibungLesen(Datenbank& db) {
    Antragsbeschreibung antrag;
    if (!DAO_TabelleVorhanden(db, "Antragsbeschreibung"))
        return antrag;
    auto abfrage = db.VorbereitenNativ(
        "SELECT \"Antragsnummer\", \"Koordinatenreferenzsystem_Lage\", "
        "\"Koordinatenreferenzsystem_Hoehe\", \"EPSG\", \"MKZ\" FROM \"Antragsbeschreibung\" "
        "ORDER BY rowid LIMIT 1");
    if (abfrage.Schritt()) {
        antrag.antragsnummer = abfrage.Text(0);
        antrag.systemName = abfrage.Text(1);
        antrag.höhensystem = abfrage.Text(2);
        antrag.epsg = abfrage.Text(3);
        antrag.mkz = abfrage.Text(4);
    }
    return antrag;
}

} // namespace flurix::nas
