#include "nas/nas_einlesen.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/datenbank.hpp"
#include "core/einstellungen.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "import/textvorbereitung.hpp"
#include "nas/knoten.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objekt_schneider.hpp"
#include "nas/objektdatenbank.hpp"

#include <chrono>
#include <fstream>

namespace flurix::nas {
namespace {

constexpr std::size_t KopfGröße = 1'000'000;
constexpr std::string_view Abbruch = "Abbruch Funktion!   ";
constexpr std::string_view Wurzel = "AX_Bestandsdatenauszug";
// Compaction points are the full tens of percent at or past this position.
constexpr std::uint64_t KomprimierenAb = 10'000'000;
// The UI port is asked for a cancel this often: asking costs an event loop turn.
constexpr auto AbfrageAbstand = std::chrono::milliseconds(100);

std::string KopfLesen(const std::filesystem::path& datei) {
    std::ifstream ein(datei, std::ios::binary);
    if (!ein)
        throw Fehler("Die Datei \"" + datei.string() + "\" kann nicht gelesen werden.");
    std::string kopf(KopfGröße, '\0');
    ein.read(kopf.data(), static_cast<std::streamsize>(kopf.size()));
    kopf.resize(static_cast<std::size_t>(ein.gcount()));
    return kopf;
}

bool IstNamenszeichen(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '.' || c == ':';
}

// A file that declares a code page other than UTF-8 in its XML declaration.
bool IstEinbytekodiert(std::string_view kopf) {
    const auto deklaration = Kleinbuchstaben(kopf.substr(0, kopf.find("?>")));
    return deklaration.find("iso-8859") != std::string::npos ||
           deklaration.find("windows-1252") != std::string::npos;
}

std::string NachUrn(std::string_view zeile, std::string_view marke) {
    const auto pos = zeile.find(marke);
    if (pos == std::string_view::npos)
        return {};
    const auto rest = zeile.substr(pos + marke.size());
    return std::string(rest.substr(0, rest.find('"')));
}

bool IstHöhensystem(std::string_view system) {
    return Kleinbuchstaben(system).find("dhhn") != std::string::npos;
}

void TabellenAuflisten(Datenbank& db, NasStand& stand) {
    stand.tabellen.clear();
    for (auto& name : DAO_Tabellen(db))
        if (std::find(stand.tabellen.begin(), stand.tabellen.end(), name) == stand.tabellen.end())
            stand.tabellen.push_back(std::move(name));
}

/// Gives the srsName columns that the scan left without a system (no reference system object in
/// the head) the value of the system the geometry names.
void SrsWertNachtragen(Datenbank& db, const std::string& wert) {
    Transaktion transaktion(db);
    for (const auto& tabelle : DAO_Tabellen(db))
        if (DAO_FeldVorhanden(db, tabelle, "srsName")) {
            auto setzen = db.VorbereitenNativ("UPDATE " + Bezeichner(tabelle) +
                                              " SET \"srsName\" = ? WHERE \"srsName\" = 'Bez: '");
            setzen.Binde(wert);
            setzen.Schritt();
        }
    transaktion.Bestätigen();
}

void StatistikProtokollieren(const Lesestatistik& statistik, const ObjektSchneider& schneider,
                             NasProtokoll& protokoll) {
    protokoll.Eintrag(", " + std::to_string(statistik.objekte) + " Objekte gelesen...");
    if (statistik.ladefehler)
        protokoll.Eintrag(", " + std::to_string(statistik.ladefehler) +
                          " Objekte nicht lesbar (Fehler beim Laden des Dokumentes)...");
    for (const auto& [tabelle, anzahl] : statistik.doppelteKennungen)
        protokoll.Eintrag(", " + tabelle + ": " + std::to_string(anzahl) +
                          " Objekte mit schon vorhandener gml:id nicht übernommen...");
    if (schneider.Unvollständige())
        protokoll.Eintrag(", " + std::to_string(schneider.Unvollständige()) +
                          " Objekte ohne Endtag übergangen...");
    if (schneider.Abgeschnitten())
        protokoll.Eintrag(", Die Datei endet innerhalb eines Objekts (unvollständige Datei?), "
                          "das letzte Objekt wurde nicht gelesen...");
}

} // namespace

void KoordinatenNotizen::Zeile(std::string_view zeile) {
    if (zeile.find("<AA_Koordinatenreferenzsystemangaben>") != std::string_view::npos)
        m_offen = true;
    if (m_offen) {
        if (zeile.find("href=\"urn:adv:crs:") != std::string_view::npos)
            m_aktuell = NachUrn(zeile, "href=\"urn:adv:crs:");
        if (zeile.find("<standard>true</standard>") != std::string_view::npos) {
            m_offen = false;
            m_standard = m_aktuell;
        }
    }
    Punkt(zeile);
}

void KoordinatenNotizen::Objekt(std::string_view text) {
    if (m_standard.empty() && m_geometrie.empty())
        for (auto pos = text.find("srsName=\"urn:adv:crs:"); pos != std::string_view::npos;
             pos = text.find("srsName=\"urn:adv:crs:", pos + 1)) {
            const std::string system = NachUrn(text.substr(pos), "urn:adv:crs:");
            if (!system.empty() && !IstHöhensystem(system)) {
                m_geometrie = system;
                break;
            }
        }
    if (!m_zweites.empty())
        return;
    for (auto pos = text.find("<gml:Point srsName="); pos != std::string_view::npos && m_zweites.empty();
         pos = text.find("<gml:Point srsName=", pos + 1)) {
        const auto zeilenende = text.find('\n', pos);
        Punkt(text.substr(pos, zeilenende == std::string_view::npos ? std::string_view::npos
                                                                   : zeilenende - pos));
    }
}

void KoordinatenNotizen::Punkt(std::string_view zeile) {
    if (!m_zweites.empty() || zeile.find("<gml:Point srsName=") == std::string_view::npos)
        return;
    const auto system = NachUrn(zeile, "urn:adv:crs:");
    const std::string& erstes = m_standard.empty() ? m_geometrie : m_standard;
    if (!system.empty() && system != erstes && !IstHöhensystem(system))
        m_zweites = system;
}

std::string SrsWert(std::string_view system, std::string_view epsgText) {
    const std::string epsg = system.empty() ? std::string() : KonfigWert(1, system, "=", 2, epsgText);
    return epsg.empty() ? "Bez: " + std::string(system) : epsg;
}

bool NasPräfix(std::string_view kopf, std::string& präfix) {
    for (auto pos = kopf.find(Wurzel); pos != std::string_view::npos; pos = kopf.find(Wurzel, pos + 1)) {
        const auto lt = kopf.rfind('<', pos);
        if (lt == std::string_view::npos)
            continue;
        const auto zwischen = TrimmeLeerzeichen(kopf.substr(lt + 1, pos - lt - 1));
        // Only an element name: "<AX_..." or "<adv:AX_...", not a word in a comment.
        if (std::all_of(zwischen.begin(), zwischen.end(), IstNamenszeichen) &&
            (zwischen.empty() || zwischen.back() == ':')) {
            präfix = std::string(zwischen);
            return true;
        }
    }
    return false;
}

Ergebnis DAO_ALKISEinlesen(const NasAuftrag& auftrag, NasStand& stand, Oberfläche& ui,
                           NasProtokoll& protokoll) {
    constexpr std::string_view Titel = "DAO_ALKISEinlesen";
    auto abbrechen = [&](std::string text, std::string_view titel) {
        ui.Meldung(text, titel, Stil::Fehler);
        return Ergebnis::Fehlschlag(std::move(text));
    };
    if (!std::filesystem::is_regular_file(auftrag.xmlDatei))
        return abbrechen("Die Datei \"" + auftrag.xmlDatei.string() + "\" ist nicht vorhanden!   ",
                         ProduktTitel);
    if (import::DateiZuGroß(auftrag.xmlDatei))
        return abbrechen(std::string(import::MeldungAusgangsdateiZuGroß), ProduktTitel);

    std::string kopf;
    try {
        kopf = KopfLesen(auftrag.xmlDatei);
    } catch (const Fehler& e) {
        return abbrechen(e.what(), ProduktTitel);
    }
    const auto größe = std::filesystem::file_size(auftrag.xmlDatei);
    if (größe > GroßeNasDatei) {
        Fragestellung frage;
        frage.titel = "NAS-Import";
        frage.text = "Die Ausgangsdatei ist zu groß! Die entsprechende Datenbank wird die zulässige "
                     "Datenbankgröße von 2.147.254.272 Bytes überschreiten. Soll trotzdem versucht "
                     "werden, alle Daten einzulesen? Planen Sie dann bitte eine längere Wartezeit ein!";
        if (ui.Frage(frage) != Antwort::Ja) {
            protokoll.Eintrag(", Datei zu groß, Import abgebrochen...");
            return Ergebnis::Abbruch();
        }
        stand.großeDatei = true;
    }
    // A document type declaration could define entities; NAS files never have one.
    if (kopf.find("<!DOCTYPE") != std::string::npos || kopf.find("<!ENTITY") != std::string::npos) {
        protokoll.Eintrag(", Import abgebrochen...");
        return abbrechen("Die Datei enthält eine DOCTYPE- oder ENTITY-Deklaration und wird aus "
                         "Sicherheitsgründen nicht eingelesen!   ",
                         Titel);
    }
    std::string präfix;
    if (!NasPräfix(kopf, präfix))
        return abbrechen("ERR: Knoten AX_Bestandsdatenauszug nicht vorhanden!\n" + std::string(Abbruch),
                         Titel);

    const auto knotenPfad = auftrag.konfigOrdner / "ALKIS_Knoten.dat";
    if (!DateiVorhanden(knotenPfad))
        return abbrechen("ERR: Knotendatei " + knotenPfad.string() + " nicht vorhanden!\n" +
                             std::string(Abbruch),
                         Titel);
    KnotenDatei knoten;
    try {
        knoten = KnotenLesen(knotenPfad);
    } catch (const Fehler& e) {
        return abbrechen(e.what(), Titel);
    }
    if (auto tag = MitgliedTagWählen(knoten.mitgliedTags, kopf); !tag.empty())
        stand.mitgliedTag = std::move(tag);
    for (const auto& klasse : knoten.klassen)
        if (klasse.felder.empty())
            return abbrechen("ERR: sVChild = 0!\n" + std::string(Abbruch), Titel);
    if (knoten.klassen.empty())
        return abbrechen("ERR: sVKnoten = 0!\n" + std::string(Abbruch), Titel);

    const Werttabellen werte{KonfigText(auftrag.konfigOrdner / "ALKIS_Werteart.dat"),
                             KonfigText(auftrag.konfigOrdner / "ALKIS_EPSG.dat")};
    KoordinatenNotizen notizen;
    // The head's system decides the srsName columns of every feature.
    for (auto zeile : Teilen(kopf.substr(0, kopf.find("<" + stand.mitgliedTag + ">")), '\n'))
        notizen.Zeile(zeile);
    const bool einbyte = IstEinbytekodiert(kopf);
    kopf.clear();
    kopf.shrink_to_fit();

    std::unique_ptr<Datenbank> db;
    try {
        db = DAO_DatenbankAnlegen(auftrag.datenbank);
        Transaktion transaktion(*db);
        DAO_CreateDB(*db, knoten, [&](std::string_view text) { protokoll.Eintrag(text); });
        transaktion.Bestätigen();
    } catch (const Fehler& e) {
        protokoll.Eintrag(std::string(", ") + e.what());
        ui.Meldung("Datenbank konnte nicht erstellt werden!   ", ProduktTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag("Datenbank konnte nicht erstellt werden!   ");
    }

    stand.standardSystem = notizen.Standard();
    try {
        ObjektSchneider schneider(auftrag.xmlDatei, stand.mitgliedTag);
        Dateirahmen rahmen{präfix, stand.mitgliedTag,
                           XPfadPräfix(knoten.xmlBaum, stand.mitgliedTag, präfix),
                           SrsWert(notizen.Standard(), werte.epsg)};
        ElementLeser leser(*db, knoten, std::move(rahmen), [&](std::string_view text) {
            ui.Meldung(text, "Fehler", Stil::Warnung);
        });
        auto transaktion = std::make_unique<Transaktion>(*db);
        int marke = 1;
        // The first feature is followed by a poll at once; then every AbfrageAbstand.
        auto letzteAbfrage = std::chrono::steady_clock::now() - AbfrageAbstand;
        std::string_view objekt;
        std::string umkodiert;
        const auto zwischenzeile = [&](std::string_view zeile) { notizen.Zeile(zeile); };
        while (schneider.Nächstes(objekt, zwischenzeile)) {
            if (einbyte) {
                umkodiert = Cp1252NachUtf8(objekt);
                objekt = umkodiert;
            }
            notizen.Objekt(objekt);
            const std::string_view klasse = leser.Objekt(objekt);

            const int prozent = größe ? static_cast<int>(schneider.Position() * 100 / größe) : 100;
            if (prozent >= marke) {
                if (prozent / 10 > (marke - 1) / 10 && schneider.Position() >= KomprimierenAb) {
                    // A full tenth: what was read is made safe and the file compacted.
                    transaktion->Bestätigen();
                    transaktion.reset();
                    DatenbankKomprimieren(*db);
                    transaktion = std::make_unique<Transaktion>(*db);
                }
                marke = prozent + 1;
                ui.Status(1, "Import: Abbruch mit [ESC], lese ALKIS-Objekte... " + std::to_string(prozent) +
                                 "% eingelesen, " + std::string(klasse));
                ui.Fortschritt(prozent, 100);
            }
            if (const auto jetzt = std::chrono::steady_clock::now(); jetzt - letzteAbfrage >= AbfrageAbstand) {
                letzteAbfrage = jetzt;
                if (ui.AbbruchGewünscht()) {
                    Fragestellung frage;
                    frage.titel = "Import";
                    frage.text = "Wollen Sie den Import wirklich abbrechen?   ";
                    frage.vorgabe = Antwort::Nein;
                    frage.unbeaufsichtigt = Antwort::Nein;
                    if (ui.Frage(frage) == Antwort::Ja) {
                        protokoll.Eintrag(", Abbruch DAO_ALKISEinlesen");
                        stand.abgebrochen = true;
                        break;
                    }
                }
            }
        }
        transaktion->Bestätigen();
        stand.statistik = leser.Statistik();
        StatistikProtokollieren(stand.statistik, schneider, protokoll);
    } catch (const Fehler& e) {
        // What was read stays; the steps after the scan run on it.
        protokoll.Eintrag(std::string(", ") + e.what());
        ui.Meldung(e.what(), Titel, Stil::Fehler);
    }
    stand.zweitesSystem = notizen.Zweites();
    if (notizen.Standard().empty() && !notizen.Geometrie().empty()) {
        // No reference system object in the file: the system its geometry names.
        SrsWertNachtragen(*db, SrsWert(notizen.Geometrie(), werte.epsg));
        stand.standardSystem = notizen.Geometrie();
        protokoll.Eintrag(", Koordinatenreferenzsystem aus srsName der Geometrie: " + notizen.Geometrie());
    }

    try {
        stand.antrag = NasAnreichern(*db, auftrag.xmlDatei, werte, ui);
        protokoll.Eintrag(stand.antrag.AntragsText());
        protokoll.Eintrag(stand.antrag.SystemText());
        ui.Status(1, "XML-Datei geladen");
        ui.Status(1, "Datenbank Reorganisation...");
        DatenbankKomprimieren(*db);
        DAO_FeldAnlegen(*db, "AP_PTO", "flstnr", TypText);
        TabellenAuflisten(*db, stand);
    } catch (const Fehler& e) {
        protokoll.Eintrag(std::string(", ") + e.what());
        ui.Meldung(e.what(), Titel, Stil::Fehler);
        return Ergebnis::Fehlschlag(e.what());
    }
    ui.Status(1, "ALKIS-Daten komplett eingelesen");
    protokoll.Eintrag(", ALKIS importiert...");
    if (!stand.zweitesSystem.empty())
        ui.Meldung("Koordinatenreferenzsystem: " + stand.standardSystem + "\nKoordinatensystem lokal: " +
                       stand.zweitesSystem +
                       "In den XML-Daten sind mehrere Koordinatensysteme hinterlegt!   "
                       "Beim Export nach Geograf oder DXF kann es zu Problemen kommen!   ",
                   "Koordinatenreferenzsystemangaben", Stil::Information);
    return Ergebnis::Ok();
}

} // namespace flurix::nas
