#include "nas/anreicherung.hpp"

#include "core/dateikopf.hpp"
#include "core/datenbank.hpp"
#include "core/einstellungen.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/objektdatenbank.hpp"

#include <array>
#include <charconv>

namespace flurix::nas {
namespace {

constexpr int Schritte = 7;

void Schritt(Oberfläche& ui, int nummer, std::string_view text) {
    ui.Status(1, text);
    ui.Fortschritt(nummer, Schritte);
}

std::string Unterteil(std::string_view text, std::size_t ab, std::size_t länge) {
    return ab < text.size() ? std::string(text.substr(ab, länge)) : std::string();
}

// A whole number written without leading zeros; a text that is no whole number stays as it is.
bool GanzzahlLesen(std::string_view text, long long& zahl) {
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), zahl);
    return fehler == std::errc{} && ende == text.data() + text.size() && !text.empty();
}

// A number in a zero-padded format of `stellen` places ("0000"); other text stays as it is.
std::string Nullformat(std::string_view text, int stellen) {
    long long zahl = 0;
    if (!GanzzahlLesen(text, zahl) || zahl < 0)
        return std::string(text);
    std::string ziffern = std::to_string(zahl);
    if (ziffern.size() < static_cast<std::size_t>(stellen))
        ziffern.insert(0, static_cast<std::size_t>(stellen) - ziffern.size(), '0');
    return ziffern;
}

std::string OhneLeerzeichen(std::string_view text) {
    std::string aus;
    for (char c : text)
        if (c != ' ')
            aus += c;
    return aus;
}

std::string Gefunden(std::string wert) { return wert == "-1" ? std::string() : wert; }

// Step 1: code values of the enrichment's attributes become their texts.
void WerteErgänzen(Datenbank& db, std::string_view werteart) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 6> Paare{{
        {"AX_Person", "anrede"},
        {"AX_Namensnummer", "artDerRechtsgemeinschaft"},
        {"AX_Namensnummer", "eigentuemerart"},
        {"AX_Buchungsblatt", "blattart"},
        {"AX_Buchungsstelle", "buchungsart"},
        {"AX_BauRaumOderBodenordnungsrecht", "artDerFestlegung"},
    }};
    for (const auto& [tabelle, attribut] : Paare) {
        if (!DAO_FeldVorhanden(db, tabelle, attribut))
            continue;
        const std::string liste =
            KonfigWerteListe(std::string(tabelle) + " = " + std::string(attribut), werteart);
        if (liste.empty())
            continue;
        // One statement, bound once per code.
        auto ändern = db.VorbereitenNativ("UPDATE " + Bezeichner(tabelle) + " SET " +
                                          Bezeichner(attribut) + " = ? WHERE " +
                                          Bezeichner(attribut) + " = ?");
        for (auto eintrag : Teilen(liste, ';')) {
            const auto trenner = eintrag.find(" = ");
            if (trenner == std::string_view::npos)
                continue;
            ändern.Binde(eintrag.substr(trenner + 3)).Binde(eintrag.substr(0, trenner));
            ändern.Schritt();
            ändern.Zurücksetzen();
        }
    }
}

// Step 2: accuracies above 1 are millimetres and become metres.
void PunktorteErgänzen(Datenbank& db, Oberfläche& ui) {
    constexpr std::string_view Spalte = "qualitaetsangaben/AX_DQPunktort/genauigkeitswert";
    for (std::string_view tabelle : {"AX_PunktortAG", "AX_PunktortAU", "AX_PunktortTA"}) {
        Schritt(ui, 2, "ALKIS: " + std::string(tabelle) + " ergänzen...");
        if (!DAO_FeldVorhanden(db, tabelle, Spalte))
            continue;
        const std::string s = Bezeichner(Spalte);
        db.AusführenNativ("UPDATE " + Bezeichner(tabelle) + " SET " + s + " = printf('%.3f', CAST(" +
                          s + " AS REAL) / 1000) WHERE CAST(" + s + " AS REAL) > 1");
    }
}

// Step 3: the readable parcel key.
void FlurstückErgänzen(Datenbank& db) {
    if (!DAO_FeldVorhanden(db, "AX_Flurstueck", "flurstueckskennzeichenAlkis") ||
        !DAO_FeldVorhanden(db, "AX_Flurstueck", "flurstueckskennzeichen"))
        return;
    auto lesen = db.VorbereitenNativ("SELECT rowid, \"flurstueckskennzeichen\" FROM \"AX_Flurstueck\"");
    auto ändern = db.VorbereitenNativ(
        "UPDATE \"AX_Flurstueck\" SET \"flurstueckskennzeichenAlkis\" = ? WHERE rowid = ?");
    while (lesen.Schritt()) {
        ändern.Binde(FlurstückskennzeichenAlkis(lesen.Text(1))).Binde(lesen.Ganzzahl(0));
        ändern.Schritt();
        ändern.Zurücksetzen();
    }
}

// Step 4: the building keys from the building's location.
void GebäudeErgänzen(Datenbank& db) {
    if (!DAO_TabelleVorhanden(db, "AX_Gebaeude"))
        return;
    for (std::string_view spalte : {"hausnummer", "pseudonummer", "laufendeNummer",
                                    "gebaeudekennzeichen", "gebaeudekennzeichenALKIS"})
        if (!DAO_FeldVorhanden(db, "AX_Gebaeude", spalte))
            return;
    constexpr std::string_view Verschlüsselt = "lagebezeichnung/AX_Lagebezeichnung/verschluesselt";
    Suchwerte suche(db);
    auto lesen = db.VorbereitenNativ("SELECT rowid, \"id\", \"hausnummer\", \"pseudonummer\", "
                                     "\"laufendeNummer\", \"gebaeudekennzeichen\" FROM \"AX_Gebaeude\"");
    auto ändern = db.VorbereitenNativ(
        "UPDATE \"AX_Gebaeude\" SET \"hausnummer\" = ?, \"pseudonummer\" = ?, \"laufendeNummer\" = ?, "
        "\"gebaeudekennzeichen\" = ?, \"gebaeudekennzeichenALKIS\" = ? WHERE rowid = ?");
    while (lesen.Schritt()) {
        const std::string id(lesen.Text(1));
        std::string hausnummer(lesen.Text(2));
        std::string pseudonummer(lesen.Text(3));
        std::string laufendeNummer(lesen.Text(4));
        std::string kennzeichen(lesen.Text(5));
        auto lage = [&](std::string_view ziel) {
            return suche.SuchWert(id, "AX_Gebaeude_" + std::string(ziel), "id",
                                  ziel.substr(ziel.find('#') + 1));
        };
        auto wert = [&](const std::string& schlüssel, std::string_view tabelle, std::string_view spalte) {
            return Gefunden(suche.SuchWert(schlüssel, tabelle, "id", spalte));
        };
        if (const auto mit = lage("zeigtAuf#AX_LagebezeichnungMitHausnummer"); mit != "-1") {
            hausnummer = wert(mit, "AX_LagebezeichnungMitHausnummer", "hausnummer");
            kennzeichen = OhneLeerzeichen(wert(mit, "AX_LagebezeichnungMitHausnummer", Verschlüsselt));
        } else if (const auto ohne = lage("zeigtAuf#AX_LagebezeichnungOhneHausnummer"); ohne != "-1") {
            kennzeichen = OhneLeerzeichen(wert(ohne, "AX_LagebezeichnungOhneHausnummer", Verschlüsselt));
        } else if (const auto pseudo = lage("hat#AX_LagebezeichnungMitPseudonummer"); pseudo != "-1") {
            pseudonummer = wert(pseudo, "AX_LagebezeichnungMitPseudonummer", "pseudonummer");
            laufendeNummer = wert(pseudo, "AX_LagebezeichnungMitPseudonummer", "laufendeNummer");
            kennzeichen = OhneLeerzeichen(wert(pseudo, "AX_LagebezeichnungMitPseudonummer", Verschlüsselt));
        }
        const bool ohneHausnummer = TrimmeLeerzeichen(hausnummer).empty();
        kennzeichen += HausnummerTeil(ohneHausnummer ? pseudonummer : hausnummer);
        kennzeichen += LaufendeNummerTeil(laufendeNummer);
        ändern.Binde(hausnummer).Binde(pseudonummer).Binde(laufendeNummer).Binde(kennzeichen);
        ändern.Binde(GebäudekennzeichenAlkis(kennzeichen, hausnummer, laufendeNummer, pseudonummer));
        ändern.Binde(lesen.Ganzzahl(0));
        ändern.Schritt();
        ändern.Zurücksetzen();
    }
}

// Step 5: the municipality of every parcel, by the key index of AX_Gemeinde.
void GemeindeErgänzen(Datenbank& db) {
    if (!DAO_FeldVorhanden(db, "AX_Flurstueck", "Gemeinde") ||
        !DAO_FeldVorhanden(db, "AX_Flurstueck", "gemeindezugehoerigkeit") ||
        !DAO_FeldVorhanden(db, "AX_Gemeinde", "gemeindekennzeichen") ||
        !DAO_FeldVorhanden(db, "AX_Gemeinde", "bezeichnung"))
        return;
    if (!DAO_IndexVorhanden(db, "AX_Gemeinde", "gemeindekennzeichen"))
        DAO_IndexAnlegen(db, "AX_Gemeinde", "gemeindekennzeichen", false, false);
    db.AusführenNativ(
        "UPDATE \"AX_Flurstueck\" SET \"Gemeinde\" = COALESCE((SELECT g.\"bezeichnung\" FROM "
        "\"AX_Gemeinde\" g WHERE g.\"gemeindekennzeichen\" = \"AX_Flurstueck\".\"gemeindezugehoerigkeit\" "
        "AND trim(\"AX_Flurstueck\".\"gemeindezugehoerigkeit\") <> '' ORDER BY g.rowid LIMIT 1), '')");
    // "Musterstadt [Amt Muster]" is "Musterstadt".
    db.AusführenNativ("UPDATE \"AX_Flurstueck\" SET \"Gemeinde\" = rtrim(substr(\"Gemeinde\", 1, "
                      "instr(\"Gemeinde\", '[') - 1)) WHERE instr(\"Gemeinde\", '[') > 0 AND "
                      "instr(\"Gemeinde\", ']') > 0");
}

// Step 6: one relation row per office of a Gemarkung.
void GemarkungErgänzen(Datenbank& db) {
    if (!DAO_FeldVorhanden(db, "AX_Gemarkung", "istAmtsbezirkVon"))
        return;
    constexpr std::string_view Tabelle = "AX_Gemarkung_id#istAmtsbezirkVon";
    DAO_TabelleLöschen(db, Tabelle);
    db.AusführenNativ("CREATE TABLE " + Bezeichner(Tabelle) +
                      " (\"id\" TEXT COLLATE NOCASE, \"istAmtsbezirkVon\" TEXT COLLATE NOCASE)");
    DAO_IndexAnlegen(db, Tabelle, "id", false, false);
    {
        auto lesen = db.VorbereitenNativ("SELECT \"id\", \"istAmtsbezirkVon\" FROM \"AX_Gemarkung\"");
        auto schreiben = db.VorbereitenNativ("INSERT INTO " + Bezeichner(Tabelle) + " VALUES (?, ?)");
        while (lesen.Schritt()) {
            for (auto eintrag : Teilen(lesen.Text(1), ';')) {
                if (TrimmeLeerzeichen(eintrag).empty())
                    continue;
                schreiben.Binde(lesen.Text(0)).Binde(eintrag);
                schreiben.Schritt();
                schreiben.Zurücksetzen();
            }
        }
    }
    DAO_FeldLöschen(db, "AX_Gemarkung", "istAmtsbezirkVon");
}

// Step 7: order number, coordinate and height system of the file.
Antragsbeschreibung AntragErgänzen(Datenbank& db, const std::filesystem::path& nasDatei,
                                   std::string_view epsgText) {
    Antragsbeschreibung antrag;
    const std::string kopf = DateiKopfLesen(nasDatei, 100'000);
    std::size_t zeilenNr = 0;
    for (std::string_view zeile : Teilen(kopf, '\n')) {
        if (++zeilenNr > 50)
            break;
        const auto pos = zeile.find("<antragsnr>");
        if (pos == std::string_view::npos)
            continue;
        std::string_view roh = zeile.substr(pos + 11);
        if (const auto ende = roh.find("</antragsnr>"); ende != std::string_view::npos)
            roh = roh.substr(0, ende);
        antrag.antragsnummer = std::string(TrimmeLeerzeichen(roh));
        if (!antrag.antragsnummer.empty() && antrag.antragsnummer.back() == '\r')
            antrag.antragsnummer.pop_back();
        break;
    }
    for (std::string_view zeile : Teilen(kopf, '\n')) {
        for (std::string_view system : {"DE_DHHN92_NH", "DE_DHHN2016_NH", "GRS80_h"})
            if (zeile.find(system) != std::string_view::npos) {
                antrag.höhensystem = system;
                break;
            }
        if (!antrag.höhensystem.empty())
            break;
    }
    std::string paar;
    if (DAO_FeldVorhanden(db, "AX_Flurstueck", "srsName")) {
        auto erste = db.VorbereitenNativ("SELECT \"srsName\" FROM \"AX_Flurstueck\" ORDER BY rowid LIMIT 1");
        if (erste.Schritt())
            paar = erste.Text(0);
    }
    if (paar.starts_with("Bez: ")) {
        // A system without EPSG code: its name is all there is.
        antrag.systemName = paar.substr(5);
    } else if (!paar.empty()) {
        antrag.systemName = KonfigWert(2, paar, "=", 1, epsgText);
        antrag.epsg = TokenNr(paar, 1, "_");
        antrag.mkz = TokenNr(paar, 2, "_");
    }
    if (antrag.epsg.empty()) {
        antrag.epsg = "0000";
        antrag.mkz = "0";
    }
    auto schreiben = db.VorbereitenNativ(
        "INSERT INTO \"Antragsbeschreibung\" (\"id\", \"Antragsnummer\", \"Koordinatenreferenzsystem_Lage\", "
        "\"Koordinatenreferenzsystem_Hoehe\", \"EPSG\", \"MKZ\") VALUES ('0', ?, ?, ?, ?, ?)");
    schreiben.Binde(antrag.antragsnummer).Binde(antrag.systemName).Binde(antrag.höhensystem);
    schreiben.Binde(antrag.epsg).Binde(antrag.mkz);
    schreiben.Schritt();
    return antrag;
}

} // namespace

std::string Antragsbeschreibung::AntragsText() const {
    return "AntragsNr.: " + std::string(Utf8Anfang(antragsnummer, 30));
}

std::string Antragsbeschreibung::SystemText() const {
    return "System: " + systemName + ", EPSG: " + epsg + " , MKZ: " + mkz;
}

std::string HausnummerTeil(std::string_view nummer) {
    const auto wörter = Teilen(TrimmeLeerzeichen(nummer), ' ');
    std::string teil = Nullformat(wörter.empty() ? std::string_view() : wörter[0], 4);
    std::string zweites;
    for (std::size_t i = 1; i < wörter.size() && zweites.empty(); ++i)
        zweites = wörter[i];
    if (zweites.size() < 4)
        teil.append(4 - zweites.size(), ' ');
    return teil + zweites;
}

std::string LaufendeNummerTeil(std::string_view laufendeNummer) {
    if (const auto p = laufendeNummer.find('P'); p != std::string_view::npos)
        return "P" + Nullformat(laufendeNummer.substr(p + 1), 2);
    if (laufendeNummer.size() > 2)
        return Nullformat(laufendeNummer, 3);
    return " " + (laufendeNummer.empty() ? std::string() : Nullformat(laufendeNummer, 2));
}

std::string GebäudekennzeichenAlkis(std::string_view kennzeichen, std::string_view hausnummer,
                                    std::string_view laufendeNummer, std::string_view pseudonummer) {
    std::string alkis = Unterteil(kennzeichen, 0, 8) + "|" + Unterteil(kennzeichen, 8, 5) + "|";
    if (!TrimmeLeerzeichen(hausnummer).empty())
        return alkis + std::string(hausnummer);
    if (TrimmeLeerzeichen(laufendeNummer).empty())
        return alkis + "P" + std::string(pseudonummer);
    return alkis + "(" + std::string(laufendeNummer) + ")P" + std::string(pseudonummer);
}

std::string FlurstückskennzeichenAlkis(std::string_view kennzeichen) {
    auto zahl = [&](std::size_t ab, std::size_t länge) {
        const std::string teil = Unterteil(kennzeichen, ab, länge);
        long long wert = 0;
        std::from_chars(teil.data(), teil.data() + teil.size(), wert);
        return wert;
    };
    std::string alkis = Unterteil(kennzeichen, 0, 6) + "|" + std::to_string(zahl(6, 3)) + "|" +
                        std::to_string(zahl(9, 5));
    if (const auto nenner = zahl(14, 4); nenner != 0)
        alkis += "/" + std::to_string(nenner);
    return alkis;
}

Antragsbeschreibung NasAnreichern(Datenbank& db, const std::filesystem::path& nasDatei,
                                  const Werttabellen& tabellen, Oberfläche& ui) {
    Transaktion transaktion(db);
    Schritt(ui, 1, "ALKIS: Werte/Arten ergänzen...");
    WerteErgänzen(db, tabellen.werteart);
    PunktorteErgänzen(db, ui);
    Schritt(ui, 3, "ALKIS: Flurstueck ergänzen...");
    FlurstückErgänzen(db);
    Schritt(ui, 4, "ALKIS: Gebaeude ergänzen...");
    GebäudeErgänzen(db);
    Schritt(ui, 5, "ALKIS: Gemeinde ergänzen...");
    GemeindeErgänzen(db);
    Schritt(ui, 6, "ALKIS: Gemarkung ergänzen...");
    GemarkungErgänzen(db);
    Antragsbeschreibung antrag;
    if (DAO_TabelleVorhanden(db, "Antragsbeschreibung")) {
        Schritt(ui, 7, "ALKIS: Antragsbeschreibung ergänzen...");
        antrag = AntragErgänzen(db, nasDatei, tabellen.epsg);
    }
    transaktion.Bestätigen();
    return antrag;
}

} // namespace flurix::nas
