#include "import/wldge_komplett.hpp"

#include "core/datenbank.hpp"
#include "core/einstellungen.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "import/datenladen.hpp"
#include "import/textvorbereitung.hpp"
#include "import/wldge_datenbank.hpp"
#include "import/wldge_konsolidierung.hpp"
#include "import/wldge_satz.hpp"

#include <charconv>
#include <cmath>
#include <fstream>
#include <map>
#include <optional>
#include <unordered_map>

namespace flurix::import {
namespace {

// Keys of the code list: "12-345".
constexpr std::size_t Nutzungsschlüssellänge = 6;

// The text of a number as the register's lists hold it: rounded, without decimals.
std::string Ganz(double wert) { return std::to_string(std::llround(wert)); }

// "a; b" lists: the new text is appended with the joint, or set when the field is empty.
void Liste(std::string& feld, std::string_view text, std::string_view fuge = "; ") {
    if (!feld.empty())
        feld.append(fuge);
    feld.append(text);
}

std::vector<double> Zahlen(std::string_view liste) {
    std::vector<double> zahlen;
    for (std::string_view teil : Teilen(liste, ';'))
        zahlen.push_back(ZahlLesen(teil));
    return zahlen;
}

std::string Prozent(long long gelesen, long long gesamt) {
    return std::to_string(gesamt > 0 ? std::llround(gelesen * 100.0 / gesamt) : 0);
}

// The three-piece key texts of blocks 8 and 9.
std::string DreiTeile(std::string_view zeile, std::size_t a, std::size_t b, std::size_t c,
                      std::size_t länge) {
    return TextSäubern(FeldText(zeile, a, a + länge - 1) + " " + FeldText(zeile, b, b + länge - 1) +
                       " " + FeldText(zeile, c, c + länge - 1));
}

class KomplettLeser {
public:
    KomplettLeser(Datenbank& db, const ImportOptionen& optionen, Oberfläche& ui)
        : m_db(db), m_optionen(optionen), m_ui(ui) {
        const auto& felder = FlurstückFelder();
        for (std::size_t i = 0; i < felder.size(); ++i)
            m_feldIndex.emplace(felder[i], i);
        m_flurstück.assign(felder.size(), {});
    }

    void NutzungstexteSammeln(std::string_view zeile) {
        if (Spalte(zeile, 1) != '9' || (Spalte(zeile, 27) != 'D' && Spalte(zeile, 27) != 'E'))
            return;
        const std::string schlüssel = FeldText(zeile, 2, 3) + "-" + FeldText(zeile, 4, 6);
        std::string text = std::string(TrimmeLeerzeichen(FeldText(zeile, 30, 63))) + " " +
                           std::string(TrimmeLeerzeichen(FeldText(zeile, 65, 98))) + " " +
                           std::string(TrimmeLeerzeichen(FeldText(zeile, 100, 133)));
        m_ersterNutzungstext.emplace(schlüssel, m_nutzungstexte.size()); // the first one counts
        m_nutzungstexte.emplace_back(schlüssel, std::move(text));
    }

    // Returns false when the header refuses the file.
    bool Zeile(std::string_view zeile, long long nummer, long long gesamt) {
        const char block = Spalte(zeile, 1);
        if (block != '3' && m_flurstückNr >= 1 && m_flurstückOffen)
            FlurstückSchreiben();
        switch (block) {
        case '1':
            return Kopf(zeile);
        case '2':
            Fortschritt(nummer, gesamt, block);
            Bestand(zeile);
            break;
        case '3':
            Fortschritt(nummer, gesamt, block);
            if (m_nochNichtÜbertragen) {
                BestandÜbertragen();
                m_nochNichtÜbertragen = false;
            }
            Flurstück(zeile);
            break;
        case '7':
        case '8':
        case '9':
            SchlüsselIndizesAnlegen();
            m_ui.Status(1, Prozent(nummer, gesamt) + "% eingelesen, noch fehlende Datenzeilen: " +
                               std::to_string(gesamt - nummer) + ", Block " + block +
                               std::string(1, Spalte(zeile, 27)) + "   ");
            if (block == '7')
                Block7(zeile);
            else if (block == '8')
                Block8(zeile);
            else
                Block9(zeile);
            break;
        default:
            break; // other blocks are passed over without a word
        }
        return true;
    }

    // Each key line updates the rows of one key with one statement. The indexes over the fields
    // those statements select by keep that from reading the whole parcel table for every key line,
    // which on a district with thousands of streets would make the key blocks the slowest part.
    void SchlüsselIndizesAnlegen() {
        if (m_schlüsselIndizes)
            return;
        m_schlüsselIndizes = true;
        for (const char* feld : {"Gemeindeschlüssel", "Amtsgerichtsschlüssel", "Forstamtsschlüssel",
                                 "Finanzamtsschlüssel", "Buchungsart", "Schlüssel_ausführende_Stelle",
                                 "Bemerkung_zum_Verfahren_Schlüssel"})
            m_db.IndexAnlegen(std::string("Schlüssel_") + feld, "tblFlurstück",
                              std::vector<std::string>{feld});
        // The street-name statement tests the street keys of every parcel of a Gemeinde: with both
        // fields in one index it tests them in the index, without reading the parcel rows.
        m_db.IndexAnlegen("Schlüssel_GemeindeStraße", "tblFlurstück",
                          std::vector<std::string>{"Gemeindeschlüssel", "Straßenschlüssel"});
        m_db.IndexAnlegen("Schlüssel_Eigentümerart", "tblBestand",
                          std::vector<std::string>{"Eigentümerartschlüssel"});
        // The statements of the Gemarkung and Kreis lines select by the start of a key.
        m_db.AusführenNativ("CREATE INDEX \"tblFlurstück_Schlüssel_Gemarkung\" ON \"tblFlurstück\" "
                            "(MID(\"IDKeyFlst\",1,6))");
        m_db.AusführenNativ("CREATE INDEX \"tblFlurstück_Schlüssel_Kreis\" ON \"tblFlurstück\" "
                            "(MID(\"Gemeindeschlüssel\",1,5))");
    }

    void Ende() {
        if (m_flurstückOffen)
            FlurstückSchreiben();
    }

    std::string flurstückeZahl = "0";
    std::string beständeZahl = "0";

private:
    void Fortschritt(long long nummer, long long gesamt, char block) {
        if (nummer % 20 == 0)
            m_ui.Status(1, Prozent(nummer, gesamt) + "% eingelesen, Block " + block + "   ");
    }

    bool Kopf(std::string_view zeile) {
        if (FeldText(zeile, 27, 32) != "E   01")
            return true; // not the request header
        const std::string format = FeldText(zeile, 34, 35);
        if (format == "32")
            return true;
        m_ui.Meldung("WLDGE-Daten mit dem Anforderungssatz " + format +
                         " werden z.Z. nicht eingelesen!   ",
                     ProduktTitel, Stil::Fehler);
        return false;
    }

    // A statement whose failure changes nothing: the reading goes on.
    void Versuchen(std::string_view anweisung) {
        try {
            m_db.Ausführen(anweisung);
        } catch (const Fehler&) {
        }
    }

    Anweisung& Setzer(const std::string& tabelle, std::string_view feld) {
        const std::string schlüssel = tabelle + "." + std::string(feld);
        auto it = m_setzer.find(schlüssel);
        if (it == m_setzer.end())
            it = m_setzer
                     .emplace(schlüssel, m_db.VorbereitenNativ("UPDATE " + Bezeichner(tabelle) +
                                                               " SET " + Bezeichner(feld) +
                                                               " = ? WHERE \"IDlfd_Nr\" = ?"))
                     .first;
        return it->second;
    }

    // The current owner row (id AdresseNr) of tblAdresse.
    void AdresseSetzen(std::string_view feld, std::string_view wert) {
        if (m_adresseNr <= 0)
            return;
        auto& a = Setzer("tblAdresse", feld);
        a.Zurücksetzen();
        a.Binde(wert).Binde(static_cast<double>(m_adresseNr));
        try {
            a.Schritt();
        } catch (const Fehler&) {
        }
    }

    // Runs once for every Bestand: its two statements are prepared once.
    void BestandÜbertragen() {
        if (!m_übertragen) {
            m_übertragen.emplace(m_db.Vorbereiten("INSERT INTO tblBestand SELECT * FROM tblAdresse"));
            m_leeren.emplace(m_db.Vorbereiten("DELETE FROM tblAdresse"));
        }
        for (auto* anweisung : {&*m_übertragen, &*m_leeren}) {
            anweisung->Zurücksetzen();
            try {
                anweisung->Schritt();
            } catch (const Fehler&) {
            }
        }
        m_adresseOffen = false;
    }

    void Bestand(std::string_view zeile) {
        const std::string bestandKey = FeldText(zeile, 2, 14);
        const std::string wo = " WHERE MID(IDKeyGb,1,13) = " + SqlText(bestandKey);
        switch (Spalte(zeile, 27)) {
        case '0':
        case '4':
        case '6':
            return;
        case '1':
            switch (Spalte(zeile, 48)) {
            case '0':
                NeuerEigentümer(zeile, bestandKey);
                return;
            case '1':
                AdresseSetzen("Name", Name(FeldText(zeile, 49, 100)));
                return;
            case '2':
                AdresseSetzen("Zusatz", TextSäubern(FeldText(zeile, 49, 89)));
                AdresseSetzen("Geburtsdatum", TextSäubern(FeldText(zeile, 91, 100)));
                return;
            case '3':
                AdresseSetzen("Straße", TextSäubern(FeldText(zeile, 49, 100)));
                return;
            case '4':
                AdresseSetzen("Ort", TextSäubern(FeldText(zeile, 49, 100)));
                return;
            default:
                return;
            }
        case '2': {
            const std::string text = TextSäubern(FeldText(zeile, 34, 85));
            if (FeldText(zeile, 31, 32) == "01")
                m_eigentümerzusatz = text;
            else
                m_eigentümerzusatz += "; " + text;
            m_eigentümerzusatz = Ersetzen(m_eigentümerzusatz, ", Erbengemeinschaft", " Erbengemeinschaft");
            Versuchen("UPDATE tblAdresse SET Eigentümerzusatz = " + SqlText(m_eigentümerzusatz) + wo);
            return;
        }
        case '5':
            Versuchen("UPDATE tblAdresse SET Anteil_Grundstück = " +
                      SqlText(TextSäubern(FeldText(zeile, 31, 54))) + wo);
            Versuchen("UPDATE tblAdresse SET Aufteilungsplannummer = " +
                      SqlText(FeldText(zeile, 56, 67)) + wo);
            return;
        case '8': {
            const std::string text = TextSäubern(FeldText(zeile, 34, 85));
            if (FeldText(zeile, 31, 32) == "01")
                m_sondereigentum = text;
            else
                m_sondereigentum += "; " + text;
            // This statement has always taken the text without doubling its quotes, so a quote
            // makes it fail and the owners keep their former text. That failure is kept; the text
            // itself is still quoted, so that it can never become part of the statement.
            if (m_sondereigentum.find('\'') == std::string::npos)
                Versuchen("UPDATE tblAdresse SET Sondereigentum = " + SqlText(m_sondereigentum) + wo);
            return;
        }
        default:
            m_ui.Meldung("Satzart " + std::string(1, Spalte(zeile, 27)) +
                             " im Bestand, Satzart 2, nicht definiert! Zeile wird übersprungen!   ",
                         ProduktTitel, Stil::Warnung);
        }
    }

    std::string Name(const std::string& text) const {
        return NameAusStücken(text, m_optionen.nameUmdrehen);
    }

    void NeuerEigentümer(std::string_view zeile, const std::string& bestandKey) {
        ++m_adresseNr;
        if (bestandKey == m_bestandKey) {
            ++m_eigentümerNr;
        } else {
            if (m_adresseOffen)
                BestandÜbertragen();
            m_eigentümerNr = 1;
        }
        ++m_adresseNr;
        std::string namensnummer = FeldText(zeile, 28, 46);
        std::erase_if(namensnummer, [](char c) { return c == '.' || c == ' '; });
        std::string anrede;
        switch (Spalte(zeile, 45)) {
        case ' ': anrede = " "; break;
        case '1': anrede = "Herrn"; break;
        case '2': anrede = "Frau"; break;
        case '3': anrede = "Firma"; break;
        case '4': anrede = "sonstige juristische Person"; break;
        default: break;
        }
        char position[8];
        std::snprintf(position, sizeof position, "%04d", m_eigentümerNr % 10000);
        if (!m_neueAdresse)
            m_neueAdresse.emplace(m_db.VorbereitenNativ(
                "INSERT INTO \"tblAdresse\" (\"IDlfd_Nr\", \"Eigentümerposition\", \"Land\", "
                "\"Grundbuchbezirkschlüssel\", \"Grundbuchblatt_Bestand\", \"Prüfzeichen_Bestand\", "
                "\"Namensnummer\", \"Eigentümerartschlüssel\", \"Anteilsverhältnis\", "
                "\"Nummer_Bestand\", \"Anredekennung\", \"IDKeyGb\", \"Name\", \"Zusatz\", "
                "\"Geburtsdatum\", \"Straße\", \"Ort\", \"Eigentümerzusatz\", \"Sondereigentum\", "
                "\"Anteil_Grundstück\", \"Aufteilungsplannummer\", \"Grundbuchbezirk\", "
                "\"Vorname_sonstiges\", \"Namenszusatz\", \"Eigentümerart\") VALUES "
                "(?,?,?,?,?,?,?,?,?,?,?,?,'','','','','','','','','','','','','')"));
        auto& a = *m_neueAdresse;
        a.Zurücksetzen();
        a.Binde(static_cast<double>(m_adresseNr))
            .Binde(std::string_view(position))
            .Binde(FeldText(zeile, 2, 3))
            .Binde(FeldText(zeile, 2, 7))
            .Binde(FeldText(zeile, 9, 14))
            .Binde(FeldText(zeile, 25, 25))
            .Binde(namensnummer)
            .Binde(FeldText(zeile, 50, 51))
            .Binde(FeldText(zeile, 53, 68))
            .Binde(FeldText(zeile, 95, 98))
            .Binde(anrede)
            .Binde(FeldText(zeile, 2, 14) + FeldText(zeile, 28, 43));
        try {
            a.Schritt();
            m_adresseOffen = true;
        } catch (const Fehler&) {
            // A second owner with the same key is lost without a word: the key is unique by the
            // register's rules.
        }
        m_bestandKey = bestandKey;
    }

    std::string& F(std::string_view feld) { return m_flurstück[m_feldIndex.at(feld)]; }

    void FlurstückSchreiben() {
        if (!m_neuesFlurstück) {
            std::string sql = "INSERT INTO \"tblFlurstück\" VALUES (";
            for (std::size_t i = 0; i < m_flurstück.size(); ++i)
                sql += i ? ",?" : "?";
            m_neuesFlurstück.emplace(m_db.VorbereitenNativ(sql + ")"));
        }
        auto& a = *m_neuesFlurstück;
        a.Zurücksetzen();
        const std::size_t id = m_feldIndex.at("IDlfd_Nr");
        for (std::size_t i = 0; i < m_flurstück.size(); ++i) {
            if (i == id)
                a.Binde(static_cast<double>(m_flurstückNr));
            else
                a.Binde(std::string_view(m_flurstück[i]));
        }
        try {
            a.Schritt();
        } catch (const Fehler&) {
        }
        m_flurstückOffen = false;
    }

    void Flurstück(std::string_view zeile) {
        const char art = Spalte(zeile, 27);
        if (art == 'B') {
            if (m_flurstückOffen)
                FlurstückSchreiben();
            NeuesFlurstück(zeile);
            return;
        }
        if (m_flurstückNr < 1) {
            if (std::string_view("DFGHKMNPRUVWX").find(art) == std::string_view::npos)
                UnbekannteSatzart(art);
            return; // no parcel yet: nothing to write to
        }
        switch (art) {
        case 'D':
            F("Karte") = FeldText(zeile, 31, 44);
            F("Baublock") = FeldText(zeile, 59, 70);
            F("Rechtswert") = EineStelle(FeldZahl(FeldText(zeile, 72, 79)) / 10.0);
            F("Hochwert") = EineStelle(FeldZahl(FeldText(zeile, 81, 88)) / 10.0);
            F("Forstamtsschlüssel") = FeldText(zeile, 90, 93);
            F("Finanzamtsschlüssel") = FeldText(zeile, 95, 98);
            break;
        case 'F':
            F("Schlüssel_Bezeichnung_Hinweis_Flurstück") = FeldText(zeile, 31, 89);
            break;
        case 'G': {
            F("Gemeinde") = FeldText(zeile, 31, 42);
            Liste(F("Straßenschlüssel"), FeldText(zeile, 43, 47));
            const std::string nummer(TrimmeLeerzeichen(FeldText(zeile, 49, 56)));
            std::string& haus = F("Hausnummer");
            if (haus.empty())
                haus = nummer.empty() ? "ohne" : nummer;
            else
                haus += nummer.empty() ? ", ohne" : "; " + nummer;
            break;
        }
        case 'H': {
            const std::string nr = FeldText(zeile, 31, 32);
            const std::string text = TextSäubern(FeldText(zeile, 34, 63));
            if (nr == "01")
                F("Lagebezeichnung") = text;
            else if (nr == "02" || nr == "03" || nr == "04")
                Liste(F("Lagebezeichnung"), text, " ");
            break;
        }
        case 'K': {
            const std::string text = TextSäubern(FeldText(zeile, 34, 47));
            Liste(F("Nutzungsart"), text);
            if (m_optionen.nutzungTatsächlich)
                Liste(F("Nutzung_tatsächlich"), NutzungText(text.substr(0, 6)));
            Liste(F("NA_Klassifizierung"), TextSäubern(FeldText(zeile, 34, 39)));
            Liste(F("NA-Fläche"), TextSäubern(FeldText(zeile, 41, 47)));
            break;
        }
        case 'M':
            Klassifizierung(zeile);
            break;
        case 'N':
            Liste(F("Text_frei"), TextSäubern(FeldText(zeile, 34, 85)), " ");
            break;
        case 'P':
            F("Anliegervermerk") = TextSäubern(FeldBisEnde(zeile, 31));
            break;
        case 'R':
            F("Blattnummer") = TextSäubern(FeldText(zeile, 31, 63));
            break;
        case 'U':
            F("Schlüssel_ausführende_Stelle") = FeldText(zeile, 31, 35);
            F("Nummer_Verfahren") = FeldText(zeile, 37, 42);
            F("Bemerkung_zum_Verfahren_Schlüssel") = FeldText(zeile, 44, 45);
            break;
        case 'V':
            Liste(F("Flurstück-Vorgänger"), TextSäubern(FeldText(zeile, 31, 53)));
            break;
        case 'W':
            F("Flurstück-Nachfolger") = FeldText(zeile, 31, 53);
            break;
        case 'X':
            Buchung(zeile);
            break;
        default:
            UnbekannteSatzart(art);
        }
    }

    void UnbekannteSatzart(char art) {
        m_ui.Meldung("Satzart " + std::string(1, art) +
                         " im Flurstück, Satzart 3, nicht definiert! Zeile wird übersprungen!   ",
                     ProduktTitel, Stil::Warnung);
    }

    static std::string EineStelle(double wert) {
        char puffer[32];
        const auto ende = std::to_chars(puffer, puffer + sizeof puffer, wert, std::chars_format::fixed, 1).ptr;
        return std::string(puffer, ende);
    }

    void NeuesFlurstück(std::string_view zeile) {
        ++m_flurstückNr;
        m_ersteBuchung = false;
        std::fill(m_flurstück.begin(), m_flurstück.end(), std::string());
        F("Land") = FeldText(zeile, 2, 3);
        F("Gemarkung") = FeldText(zeile, 4, 7);
        F("Flur") = FeldText(zeile, 9, 11);
        F("Flurstück") = FeldText(zeile, 13, 17) + "/" + FeldText(zeile, 19, 21);
        F("Flurstück-Zähler") = ZahlOhneNullen(FeldText(zeile, 13, 17));
        F("Flurstück-Nenner") = ZahlOhneNullen(FeldText(zeile, 19, 21));
        F("Prüfzeichen") = FeldText(zeile, 25, 25);
        F("Status") = FeldText(zeile, 32, 32);
        if (!TrimmeLeerzeichen(FeldText(zeile, 34, 37)).empty())
            F("Entstehung") = FeldText(zeile, 34, 46);
        F("FF_letzte") = FeldText(zeile, 48, 60);
        F("Fläche") = FeldText(zeile, 84, 92);
        F("Aktualitätsnummer") = FeldText(zeile, 95, 96);
        F("IDKeyFlst") = FeldText(zeile, 2, 3) + FeldText(zeile, 4, 7) + FeldText(zeile, 9, 11) +
                         FeldText(zeile, 13, 17) + FeldText(zeile, 19, 21);
        m_flurstückOffen = true;
    }

    void Klassifizierung(std::string_view zeile) {
        const std::string klasse = FeldText(zeile, 34, 35);
        const std::string schlüssel = TextSäubern(FeldText(zeile, 34, 39));
        const std::string bemerkung = TextSäubern(FeldBisEnde(zeile, 49));
        const std::string schätzung = TextSäubern(FeldText(zeile, 49, 58));
        const double fläche = static_cast<double>(FeldZahl(FeldText(zeile, 41, 47)));
        Liste(F("Klassifizierung"), TextSäubern(FeldText(zeile, 34, 47)));
        Liste(F("Angaben_Klassifizierung"), bemerkung.empty() ? " " : bemerkung);
        Liste(F("Schlüssel_Klassifizierung"), schlüssel);
        if (m_optionen.nutzungTatsächlich)
            Liste(F("Bezeichnung_Klassifizierung"), TextSäubern(NutzungText(schlüssel)));
        Liste(F("Schätzung"), schätzung.empty() ? " " : schätzung);
        Liste(F("BZ-AZ-Fläche"), Ganz(fläche));
        if (klasse != "32") {
            Liste(F("BZ"), "0");
            Liste(F("AZ"), "0");
            Liste(F("EMZ"), "0");
            return;
        }
        const double bodenzahl = static_cast<double>(FeldZahl(FeldText(zeile, 60, 62)));
        const double ackerzahl = static_cast<double>(FeldZahl(FeldText(zeile, 64, 66)));
        Liste(F("BZ"), Ganz(bodenzahl));
        Liste(F("AZ"), Ganz(ackerzahl));
        double summe = 0;
        int anzahl = 0;
        for (double az : Zahlen(F("AZ")))
            if (az > 0)
                summe += az, ++anzahl;
        F("AZ-Mittel") = anzahl ? Ganz(summe / anzahl) : "0";
        Liste(F("EMZ"), Ganz(fläche / 100 * ackerzahl));
        double emz = 0;
        for (double wert : Zahlen(F("EMZ")))
            emz += wert;
        F("EMZ-Summe") = Ganz(emz);
    }

    void Buchung(std::string_view zeile) {
        if (m_ersteBuchung) {
            // A further folio: the entry so far is kept, and a copy takes the new folio.
            FlurstückSchreiben();
            ++m_flurstückNr;
            m_flurstückOffen = true;
        }
        F("Grundbuchbezirkschlüssel") = FeldText(zeile, 33, 38);
        F("Grundbuchblatt") = FeldText(zeile, 40, 45);
        F("BVNR") = FeldText(zeile, 47, 50);
        F("Prüfzeichen_Bestand") = FeldText(zeile, 55, 55);
        F("Buchungsart") = FeldText(zeile, 56, 56);
        F("IDKeyGb") = FeldText(zeile, 33, 45);
        m_ersteBuchung = true;
    }

    // The text of the first code line whose key starts with `schlüssel`. Every land-use line
    // asks, so a whole key is looked up directly; only a shorter one walks the list.
    std::string NutzungText(std::string_view schlüssel) const {
        const auto treffer = m_ersterNutzungstext.find(std::string(schlüssel));
        std::size_t erster = treffer != m_ersterNutzungstext.end() ? treffer->second
                                                                   : m_nutzungstexte.size();
        if (schlüssel.size() < Nutzungsschlüssellänge)
            for (std::size_t i = 0; i < erster; ++i)
                if (m_nutzungstexte[i].first.starts_with(schlüssel)) {
                    erster = i;
                    break;
                }
        return erster < m_nutzungstexte.size()
                   ? std::string(TrimmeLeerzeichen(m_nutzungstexte[erster].second))
                   : std::string();
    }

    void Block7(std::string_view zeile) {
        const std::string code = FeldText(zeile, 27, 29);
        if (code == "A00") {
            Versuchen("UPDATE tblFlurstück SET Katasteramt = " +
                      SqlText(TextSäubern(FeldText(zeile, 30, 55) + " " + FeldText(zeile, 57, 82))));
        } else if (code.starts_with('B')) {
            const std::string gemarkung = FeldText(zeile, 2, 7);
            const std::string text = TextSäubern(FeldText(zeile, 30, 55));
            const std::string wo = " WHERE MID(IDKeyFlst,1,6) = " + SqlText(gemarkung);
            Versuchen("UPDATE tblFlurstück SET Grundbuchbezirk = " + SqlText(text) + wo);
            Versuchen("UPDATE tblFlurstück SET Gemarkungsschlüssel = " + SqlText(gemarkung) + wo);
            Versuchen("UPDATE tblFlurstück SET Gemeindeschlüssel = " + SqlText(FeldText(zeile, 9, 20)) + wo);
            Versuchen("UPDATE tblFlurstück SET Amtsgerichtsschlüssel = " + SqlText(FeldText(zeile, 22, 25)) + wo);
            Versuchen("UPDATE tblFlurstück SET Gemarkung = " + SqlText(text) + wo);
        } else if (code.starts_with('C')) {
            Versuchen("UPDATE tblFlurstück SET Landkreis = " +
                      SqlText(TrimmeLeerzeichen(FeldText(zeile, 30, 55))) +
                      " WHERE MID(Gemeindeschlüssel,1,5) = " + SqlText(FeldText(zeile, 2, 6)));
        } else if (code.starts_with('D')) {
            Versuchen("UPDATE tblFlurstück SET Gemeinde = " +
                      SqlText(TrimmeLeerzeichen(FeldText(zeile, 30, 55))) +
                      " WHERE Gemeindeschlüssel = " + SqlText(FeldText(zeile, 2, 13)));
        } else if (code == "E00") {
            m_straßenname = TextSäubern(FeldText(zeile, 30, 59));
        } else if (code == "E09") {
            m_straßenname += TextSäubern(FeldText(zeile, 30, 59));
            Versuchen("UPDATE tblFlurstück SET Straßenschlüsselname = Straßenschlüsselname & " +
                      SqlText(m_straßenname + "; ") + " WHERE Gemeindeschlüssel = " +
                      SqlText(FeldText(zeile, 2, 13)) + " AND Strassenschlüssel LIKE " +
                      SqlText("*" + FeldText(zeile, 14, 18) + "*"));
            m_straßenname.clear();
        }
    }

    void Block8(std::string_view zeile) {
        const std::string code = FeldText(zeile, 27, 28);
        const std::string text = DreiTeile(zeile, 30, 57, 84, 26);
        if (code == "A0")
            Versuchen("UPDATE tblFlurstück SET Amtsgericht = " + SqlText(text) +
                      " WHERE Amtsgerichtsschlüssel = " + SqlText(FeldText(zeile, 2, 5)));
        else if (code == "B0")
            Versuchen("UPDATE tblBestand SET Eigentümerart = " + SqlText(text) +
                      " WHERE Eigentümerartschlüssel = " + SqlText(FeldText(zeile, 2, 3)));
        else if (code == "C0")
            Versuchen("UPDATE tblFlurstück SET Bezeichnung_Buchungsart = " +
                      SqlText(TextSäubern(FeldText(zeile, 30, 89))) +
                      " WHERE Buchungsart = " + SqlText(FeldText(zeile, 2, 2)));
    }

    void Block9(std::string_view zeile) {
        const char code = Spalte(zeile, 27);
        const auto drei = [&] { return DreiTeile(zeile, 30, 57, 84, 26); };
        const auto ohneStrich = [](std::string text) {
            while (!text.empty() && text.back() == '-')
                text.pop_back();
            return text;
        };
        switch (code) {
        case 'A':
            Versuchen("UPDATE tblFlurstück SET Forstamt = " + SqlText(drei()) +
                      " WHERE Forstamtsschlüssel = " + SqlText(FeldText(zeile, 2, 5)));
            break;
        case 'B':
            Versuchen("UPDATE tblFlurstück SET Finanzamt = " + SqlText(drei()) +
                      " WHERE Finanzamtsschlüssel = " + SqlText(FeldText(zeile, 2, 5)));
            break;
        case 'C':
            Versuchen("UPDATE tblFlurstück SET Bezeichnung_Hinweis_Flurstück = "
                      "Bezeichnung_Hinweis_Flurstück & " +
                      SqlText(Ersetzen(drei() + ", ", "- ", "")) +
                      " WHERE Instr(Schlüssel_Bezeichnung_Hinweis_Flurstück,  " +
                      SqlText(TrimmeLeerzeichen(FeldText(zeile, 2, 5))) + " ) > 0");
            break;
        case 'D':
        case 'E':
            if (!m_optionen.nutzungTatsächlich) {
                const std::string feld = code == 'D' ? "Nutzung_tatsächlich" : "Bezeichnung_Klassifizierung";
                const std::string nach = code == 'D' ? "Nutzungsart" : "Klassifizierung";
                Versuchen("UPDATE tblFlurstück SET " + feld + " = " + feld + " & " +
                          SqlText(DreiTeile(zeile, 30, 65, 100, 34) + "; ") + " WHERE Instr(" +
                          nach + ",  " + SqlText(FeldText(zeile, 2, 3) + "-" + FeldText(zeile, 4, 6)) +
                          " ) > 0");
            }
            break;
        case 'F':
            Versuchen("UPDATE tblFlurstück SET Name_ausführende_Stelle = Name_ausführende_Stelle & " +
                      SqlText(TrimmeLeerzeichen(ohneStrich(drei()))) +
                      " WHERE Schlüssel_ausführende_Stelle = " + SqlText(FeldText(zeile, 2, 6)));
            break;
        case 'G': {
            const std::string text = ohneStrich(drei());
            const std::string wo = " WHERE Bemerkung_zum_Verfahren_Schlüssel = " + SqlText(FeldText(zeile, 2, 3));
            Versuchen("UPDATE tblFlurstück SET Bemerkung_zum_Verfahren = Bemerkung_zum_Verfahren & " +
                      SqlText(text) + wo);
            Versuchen("UPDATE tblFlurstück SET sonstigesBOV = Schlüssel_ausführende_Stelle & '-' & "
                      "Nummer_Verfahren & " + SqlText(", " + text) + wo);
            break;
        }
        case 'Z':
            flurstückeZahl = ZahlOhneNullen(FeldText(zeile, 37, 43));
            beständeZahl = ZahlOhneNullen(FeldText(zeile, 44, 50));
            Versuchen("UPDATE tblBestand SET Namenszusatz = Trim(Zusatz & ' ' & Geburtsdatum)");
            break;
        default:
            break;
        }
    }

    Datenbank& m_db;
    const ImportOptionen& m_optionen;
    Oberfläche& m_ui;
    std::vector<std::pair<std::string, std::string>> m_nutzungstexte;
    std::unordered_map<std::string, std::size_t> m_ersterNutzungstext;
    std::unordered_map<std::string_view, std::size_t> m_feldIndex;
    std::map<std::string, Anweisung> m_setzer;
    std::optional<Anweisung> m_neueAdresse;
    std::optional<Anweisung> m_neuesFlurstück;
    std::optional<Anweisung> m_übertragen;
    std::optional<Anweisung> m_leeren;
    std::vector<std::string> m_flurstück; // the current parcel entry, written when it is complete

    long long m_adresseNr = 0;
    int m_eigentümerNr = 0;
    std::string m_bestandKey;
    bool m_adresseOffen = false; // tblAdresse holds owners not yet moved
    long long m_flurstückNr = 0;
    bool m_flurstückOffen = false;
    bool m_ersteBuchung = false;
    bool m_nochNichtÜbertragen = true;
    bool m_schlüsselIndizes = false;
    std::string m_eigentümerzusatz;
    std::string m_sondereigentum;
    std::string m_straßenname;
};

// Calls `zeile` for each line of the file, without its line end, after the character correction.
template <typename Fn> void ZeilenLesen(const std::filesystem::path& datei, Fn&& zeile) {
    std::ifstream ein(datei, std::ios::binary);
    if (!ein)
        throw Fehler("Die Datei \"" + datei.string() + "\" kann nicht gelesen werden!");
    std::string text;
    long long nummer = 0;
    while (std::getline(ein, text)) {
        if (!text.empty() && text.back() == '\r')
            text.pop_back();
        ZeichenKorrektur(text);
        if (!zeile(text, ++nummer))
            return;
    }
}

} // namespace

Ergebnis WldgeKomplettLesen(const std::filesystem::path& datei, const ImportOptionen& optionen,
                            const WldgeKomplettUmgebung& umgebung, Kataster& kataster,
                            Oberfläche& ui, WldgeKomplettBericht* bericht) {
    for (int panel = 1; panel <= 6; ++panel)
        ui.Status(panel, "");
    ui.Status(2, datei.filename().string());
    const auto dbDatei = umgebung.arbeitsverzeichnis / StagingDateiname;
    std::unique_ptr<Datenbank> db;
    try {
        db = StagingAnlegen(dbDatei);
    } catch (const Fehler&) {
        const std::string text = "Fehler: [Flurix doppelt geöffnet]! Bitte beenden Sie den Flurix "
                                 "oder wählen Sie [WLDGE-Daten teilweise einlesen - schnell]!   ";
        ui.Meldung(text, "Achtung Fehler!", Stil::Fehler);
        return Ergebnis::Fehlschlag(text);
    }

    const long long gesamt = ZeilenZählen(datei);
    KomplettLeser leser(*db, optionen, ui);
    ZeilenLesen(datei, [&](const std::string& zeile, long long) {
        leser.NutzungstexteSammeln(zeile);
        return true;
    });
    bool angenommen = true;
    {
        Transaktion transaktion(*db);
        ZeilenLesen(datei, [&](const std::string& zeile, long long nummer) {
            angenommen = leser.Zeile(zeile, nummer, gesamt);
            return angenommen;
        });
        leser.Ende();
        transaktion.Bestätigen();
    }
    if (!angenommen) {
        // A file of another format leaves no staging database behind either.
        db.reset();
        std::error_code ec;
        std::filesystem::remove(dbDatei, ec);
        return Ergebnis::Abbruch("Abgabeformat nicht 32");
    }

    WldgeKomplettBericht b;
    b.zeilen = gesamt;
    b.flurstücke = leser.flurstückeZahl;
    b.bestände = leser.beständeZahl;
    WldgeZusammenführen(*db, kataster, umgebung.ansichtsdatei, umgebung.ansicht, ui, b);
    db.reset();
    std::error_code ec;
    std::filesystem::remove(dbDatei, ec);
    ui.Status(3, "Datenbank wurde erstellt   ");
    ui.Status(4, "ALB-Zeilen: " + std::to_string(kataster.Zeilenzahl()) + ", Flurstücke: " +
                     b.flurstücke + ", Bestände: " + b.bestände + "   ");
    if (bericht)
        *bericht = std::move(b);
    return Ergebnis::Ok();
}

} // namespace flurix::import
