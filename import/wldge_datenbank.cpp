#include "import/wldge_datenbank.hpp"

#include "core/datenbank.hpp"
#include "core/fehler.hpp"

namespace flurix::import {
namespace {

// Fields that hold a double; all others are text (Jet's text and memo fields alike).
bool IstZahlfeld(std::string_view name) { return name == "IDlfd_Nr"; }

void Anlegen(Datenbank& db, std::string_view tabelle, const std::vector<std::string_view>& namen) {
    std::vector<Feld> felder;
    for (std::string_view name : namen)
        felder.push_back({std::string(name), IstZahlfeld(name) ? Feldtyp::Zahl : Feldtyp::Text});
    db.TabelleAnlegen(tabelle, felder);
}

void Index(Datenbank& db, std::string_view name, std::string_view tabelle, std::string feld,
           bool eindeutig = false) {
    const std::vector<std::string> felder{std::move(feld)};
    db.IndexAnlegen(name, tabelle, felder, eindeutig);
}

} // namespace

const std::vector<std::string_view>& BestandFelder() {
    static const std::vector<std::string_view> felder = {
        "Land", "Grundbuchbezirk", "Grundbuchbezirkschlüssel", "Grundbuchblatt_Bestand",
        "Anredekennung", "Namensnummer", "Name", "Vorname_sonstiges", "Zusatz", "Geburtsdatum",
        "Namenszusatz", "Straße", "Ort", "Eigentümerartschlüssel", "Eigentümerart",
        "Anteilsverhältnis", "Nummer_Bestand", "Prüfzeichen_Bestand", "Eigentümerzusatz",
        "Anteil_Grundstück", "Aufteilungsplannummer", "Sondereigentum", "Eigentümerposition",
        "IDKeyGb", "IDlfd_Nr"};
    return felder;
}

const std::vector<std::string_view>& FlurstückFelder() {
    static const std::vector<std::string_view> felder = {
        "Aktualitätsnummer", "Amtsgericht", "Amtsgerichtsschlüssel", "Angaben_Klassifizierung",
        "Anliegervermerk", "Name_ausführende_Stelle", "Schlüssel_ausführende_Stelle", "Baublock",
        "Bemerkung_zum_Verfahren", "Bemerkung_zum_Verfahren_Schlüssel", "Bezeichnung_Buchungsart",
        "Bezeichnung_Hinweis_Flurstück", "Bezeichnung_Klassifizierung", "Blattnummer",
        "sonstigesBOV", "Buchungsart", "BVNR", "Entstehung", "Finanzamt", "Finanzamtsschlüssel",
        "Flur", "Flurstück", "Fläche", "Forstamt", "Forstamtsschlüssel", "Text_frei", "Gemarkung",
        "Gemarkungsschlüssel", "Gemeinde", "Gemeindeschlüssel", "Grundbuchbezirk",
        "Grundbuchbezirkschlüssel", "Grundbuchblatt", "Hausnummer", "IDKeyFlst", "IDKeyGb",
        "IDlfd_Nr", "Karte", "Katasteramt", "Schlüssel_Klassifizierung", "Klassifizierung",
        "Lagebezeichnung", "Land", "Landkreis", "FF_letzte", "Flurstück-Nachfolger",
        "Flurstück-Vorgänger", "Nummer_Verfahren", "Nutzungsart", "Prüfzeichen",
        "Prüfzeichen_Bestand", "Schlüssel_Bezeichnung_Hinweis_Flurstück", "Status",
        "Straßenschlüsselname", "Straßenschlüssel", "Nutzung_tatsächlich", "Rechtswert",
        "Hochwert", "Flurstück-Zähler", "Flurstück-Nenner", "BZ", "AZ", "BZ-AZ-Fläche",
        "Schätzung", "EMZ", "NA_Klassifizierung", "NA-Fläche", "AZ-Mittel", "EMZ-Summe"};
    return felder;
}

std::unique_ptr<Datenbank> StagingAnlegen(const std::filesystem::path& datei) {
    std::error_code ec;
    std::filesystem::remove(datei, ec);
    if (ec || std::filesystem::exists(datei))
        throw Fehler("Die Datenbank \"" + datei.string() + "\" kann nicht gelöscht werden!");
    auto db = std::make_unique<Datenbank>(datei);
    // The database lives for one import and is deleted after it: it needs no journal and no sync
    // to disk, and a page cache that holds a district keeps SQLite from reading its pages back.
    db->AusführenNativ("PRAGMA journal_mode = OFF");
    db->AusführenNativ("PRAGMA synchronous = OFF");
    db->AusführenNativ("PRAGMA temp_store = MEMORY");
    db->AusführenNativ("PRAGMA cache_size = -524288");
    Anlegen(*db, "tblBestand", BestandFelder());
    Anlegen(*db, "tblFlurstück", FlurstückFelder());
    Anlegen(*db, "tblAdresse", BestandFelder());
    Anlegen(*db, "tblGemFlur", {"Gemarkung", "Flur"});
    Index(*db, "IDKeyGrundbuch", "tblBestand", "IDKeyGb");
    Index(*db, "IDKeyLfd_Nr", "tblBestand", "IDlfd_Nr");
    Index(*db, "IDKeyLfd_Nr", "tblFlurstück", "IDlfd_Nr");
    Index(*db, "IDKeyGrundbuch", "tblFlurstück", "IDKeyGb");
    Index(*db, "IDKeyFlurstück", "tblFlurstück", "IDKeyFlst");
    Index(*db, "IDKeyGrundbuch", "tblAdresse", "IDKeyGb", true);
    Index(*db, "IDKeyLfd_Nr", "tblAdresse", "IDlfd_Nr");
    return db;
}

} // namespace flurix::import
