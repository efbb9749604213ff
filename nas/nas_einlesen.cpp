#include "nas/nas_einlesen.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/dateikopf.hpp"
#include "core/datenbank.hpp"
#include "core/einstellungen.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "core/textkodierung.hpp"
#include "nas/knoten.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/nas_form.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objekt_schneider.hpp"
#include "nas/objektdatenbank.hpp"

#include <chrono>
#include <fstream>

namespace flurix::nas {
namespace {

constexpr std::size_t KopfGröße = 1'000'000;
constexpr std::string_view Abbruch = "Abbruch Funktion!   ";
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

// The system a srsName names: "urn:adv:crs:ETRS89_UTM32" gives "ETRS89_UTM32", the EPSG forms of
// the WFS services ("urn:ogc:def:crs:EPSG::25832", "EPSG:25832", ".../def/crs/EPSG/0/25832") give
// "EPSG:25832"; "" for none of them.
std::string SystemAusSrsName(std::string_view text) {
    if (const std::string adv = NachUrn(text, "urn:adv:crs:"); !adv.empty())
        return adv;
    for (std::string_view marke : {"EPSG::", "EPSG/0/", "EPSG:"}) {
        const auto pos = text.find(marke);
        if (pos == std::string_view::npos)
            continue;
        auto ende = pos + marke.size();
        while (ende < text.size() && text[ende] >= '0' && text[ende] <= '9')
            ++ende;
        if (ende > pos + marke.size())
            return "EPSG:" + std::string(text.substr(pos + marke.size(), ende - pos - marke.size()));
    }
    return {};
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

constexpr char MeldungAbgeschnitten[] =
    "Die Datei endet innerhalb eines Objekts (unvollständige Datei?), das letzte Objekt wurde nicht "
    "gelesen...";

void StatistikProtokollieren(const Lesestatistik& statistik, const ObjektSchneider& schneider,
                             NasProtokoll& protokoll) {
    protokoll.Eintrag(", " + std::to_string(statistik.objekte) + " Objekte gelesen...");
    if (statistik.ladefehler)
        protokoll.Eintrag(", " + std::to_string(statistik.ladefehler) +
                          " Objekte nicht lesbar (Fehler beim Laden des Dokumentes)...");
    if (statistik.ohneKennung)
        protokoll.Eintrag(", " + std::to_string(statistik.ohneKennung) +
                          " Objekte ohne gml:id gelesen (kein Bezug kann sie erreichen)...");
    for (const auto& [tabelle, anzahl] : statistik.doppelteKennungen)
        protokoll.Eintrag(", " + tabelle + ": " + std::to_string(anzahl) +
                          " Objekte mit schon vorhandener gml:id nicht übernommen...");
    if (schneider.Unvollständige())
        protokoll.Eintrag(", " + std::to_string(schneider.Unvollständige()) +
                          " Objekte ohne Endtag übergangen...");
    if (schneider.Abgeschnitten())
        protokoll.Eintrag(std::string(", ") + MeldungAbgeschnitten);
}

} // namespace

void KoordinatenNotizen::Zeile(std::string_view zeile) {
    // A WFS collection names its system only at its envelope.
    if (m_standard.empty() && m_geometrie.empty() && zeile.find("Envelope srsName=\"") != std::string_view::npos)
        m_geometrie = SystemAusSrsName(zeile.substr(zeile.find("srsName=\"")));
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
        for (auto pos = text.find("srsName=\""); pos != std::string_view::npos;
             pos = text.find("srsName=\"", pos + 1)) {
            const std::string_view wert = text.substr(pos + 9, text.find('"', pos + 9) - pos - 9);
            const std::string system = SystemAusSrsName(wert);
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
    if (system.starts_with("EPSG:")) {
        // The pair of the first line with this code ("ETRS89_UTM32=25832_32").
        const std::string code(system.substr(5));
        for (std::string_view zeile : Teilen(epsgText, '\n')) {
            const auto gleich = zeile.find('=');
            if (zeile.starts_with('*') || gleich == std::string_view::npos)
                continue;
            std::string_view wert = zeile.substr(gleich + 1);
            while (!wert.empty() && (wert.back() == '\r' || wert.back() == ' '))
                wert.remove_suffix(1);
            wert = TrimmeLeerzeichen(wert);
            if (wert.starts_with(code + "_"))
                return std::string(wert);
        }
        return code;
    }
    const std::string epsg = system.empty() ? std::string() : KonfigWert(1, system, "=", 2, epsgText);
    return epsg.empty() ? "Bez: " + std::string(system) : epsg;
}


namespace {

constexpr std::string_view Titel = "DAO_ALKISEinlesen";

/// One scan of a NAS file into a new object database, in stages. A stage that fails writes its
/// protocol lines and returns the failure; the scan shows it in one place (Gemeldet).
class NasEinlesen {
public:
    NasEinlesen(const NasAuftrag& auftrag, NasStand& stand, Oberfläche& ui, NasProtokoll& protokoll)
        : m_auftrag(auftrag), m_stand(stand), m_ui(ui), m_protokoll(protokoll) {}

    Ergebnis Ausführen() {
        using Stufe = Ergebnis (NasEinlesen::*)();
        const std::pair<Stufe, std::string_view> vorbereitung[] = {
            {&NasEinlesen::DateiPrüfen, ProduktTitel},
            {&NasEinlesen::KopfPrüfen, Titel},
            {&NasEinlesen::KnotenLaden, Titel},
            {&NasEinlesen::DatenbankAnlegen, ProduktTitel},
        };
        for (const auto& [stufe, titel] : vorbereitung)
            if (Ergebnis ergebnis = (this->*stufe)(); !ergebnis)
                return Gemeldet(std::move(ergebnis), titel);
        // What was read stays also after an error; the steps after the scan run on it.
        Gemeldet(ObjekteEinlesen(), Titel);
        SystemAusGeometrieNachtragen();
        if (Ergebnis ergebnis = Anreichern(); !ergebnis)
            return Gemeldet(std::move(ergebnis), Titel);
        Abschließen();
        return Ergebnis::Ok();
    }

private:
    /// The one place where a failed stage is shown; a cancel is not.
    Ergebnis Gemeldet(Ergebnis ergebnis, std::string_view titel) {
        if (ergebnis.status() == Ergebnis::Status::Fehler)
            m_ui.Meldung(ergebnis.Meldung(), titel, Stil::Fehler);
        return ergebnis;
    }

    /// The file is there, not above 4 GiB, its head can be read, and a file above the old
    /// database limit is read only when the user agrees.
    Ergebnis DateiPrüfen() {
        const auto& datei = m_auftrag.xmlDatei;
        if (!std::filesystem::is_regular_file(datei))
            return Ergebnis::Fehlschlag("Die Datei \"" + datei.string() + "\" ist nicht vorhanden!   ");
        if (DateiZuGroß(datei))
            return Ergebnis::Fehlschlag(std::string(MeldungAusgangsdateiZuGroß));
        try {
            m_kopf = KopfLesen(datei);
        } catch (const Fehler& e) {
            return Ergebnis::Fehlschlag(e.what());
        }
        m_größe = std::filesystem::file_size(datei);
        if (m_größe > GroßeNasDatei) {
            Fragestellung frage;
            frage.titel = "NAS-Import";
            frage.text = "Die Ausgangsdatei ist zu groß! Die entsprechende Datenbank wird die zulässige "
                         "Datenbankgröße von 2.147.254.272 Bytes überschreiten. Soll trotzdem versucht "
                         "werden, alle Daten einzulesen? Planen Sie dann bitte eine längere Wartezeit ein!";
            if (m_ui.Frage(frage) != Antwort::Ja) {
                m_protokoll.Eintrag(", Datei zu groß, Import abgebrochen...");
                return Ergebnis::Abbruch();
            }
            m_stand.großeDatei = true;
        }
        return Ergebnis::Ok();
    }

    /// No document type declaration (it could define entities; NAS files never have one), and the
    /// root element, whose prefix the element paths take.
    Ergebnis KopfPrüfen() {
        if (m_kopf.find("<!DOCTYPE") != std::string::npos ||
            m_kopf.find("<!ENTITY") != std::string::npos) {
            m_protokoll.Eintrag(", Import abgebrochen...");
            return Ergebnis::Fehlschlag("Die Datei enthält eine DOCTYPE- oder ENTITY-Deklaration und "
                                        "wird aus Sicherheitsgründen nicht eingelesen!   ");
        }
        if (IstUtf16(m_kopf)) {
            m_protokoll.Eintrag(", Import abgebrochen...");
            return Ergebnis::Fehlschlag(MeldungUtf16(m_auftrag.xmlDatei));
        }
        const NasFormbefund form = NasFormErkennen(m_kopf);
        m_präfix = form.präfix;
        // One node file reads every version alike; a mix is worth a line, not a refusal.
        for (const std::string& version : form.weitereVersionen)
            m_protokoll.Eintrag(", Hinweis: Die Datei nennt neben GID " + form.gid + " auch GID " + version +
                                "; die Objekte werden nach der Knotendatei gelesen...");
        switch (form.form) {
        case NasForm::Bestandsdatenauszug:
            // The extracts of GeoInfoDok 7.1 read into the same columns (the node file names the
            // renamed elements); the protocol says which version was read.
            if (form.gid.starts_with("7"))
                m_protokoll.Eintrag(", " + form.Name() + " erkannt...");
            break;
        case NasForm::WfsSammlung: {
            // The collections of today's WFS services carry no extract element: the check of the
            // classic extract would refuse them. A person decides; an unattended run goes on.
            m_protokoll.Eintrag(", " + form.Name() + " erkannt: Knoten \"AX_Bestandsdatenauszug/AX_Person\" fehlt!");
            Fragestellung frage;
            frage.titel = "NAS/Flurix-NAS FormLoad";
            frage.text = "Daten eventuell unvollständig! Daten trotzdem einlesen?   ";
            frage.knöpfe = Knöpfe::JaNein;
            frage.vorgabe = Antwort::Ja;
            frage.unbeaufsichtigt = Antwort::Ja;
            if (m_ui.Frage(frage) != Antwort::Ja) {
                m_protokoll.Eintrag(", Import abgebrochen...");
                return Ergebnis::Abbruch();
            }
            break;
        }
        case NasForm::Aktualisierung:
            return Ergebnis::Fehlschlag("Die Datei ist eine NBA-Aktualisierung: sie wird in eine bestehende "
                                        "NAS-Datenbank übernommen (flurix nas <datei> --db <datenbank> "
                                        "--aktualisieren)!   ");
        case NasForm::Unbekannt:
            return Ergebnis::Fehlschlag("ERR: Knoten AX_Bestandsdatenauszug nicht vorhanden!\n" +
                                        std::string(Abbruch));
        }
        return Ergebnis::Ok();
    }

    /// The node file with at least one class, each with at least one field; the member tag of the
    /// file. Then the value tables and the coordinate notes of the head.
    Ergebnis KnotenLaden() {
        const auto knotenPfad = m_auftrag.konfigOrdner / "ALKIS_Knoten.dat";
        if (!DateiVorhanden(knotenPfad))
            return Ergebnis::Fehlschlag("ERR: Knotendatei " + knotenPfad.string() +
                                        " nicht vorhanden!\n" + std::string(Abbruch));
        try {
            m_knoten = KnotenLesen(knotenPfad);
        } catch (const Fehler& e) {
            return Ergebnis::Fehlschlag(e.what());
        }
        if (auto tag = MitgliedTagWählen(m_knoten.mitgliedTags, m_kopf); !tag.empty())
            m_stand.mitgliedTag = std::move(tag);
        for (const auto& klasse : m_knoten.klassen)
            if (klasse.felder.empty())
                return Ergebnis::Fehlschlag("ERR: sVChild = 0!\n" + std::string(Abbruch));
        if (m_knoten.klassen.empty())
            return Ergebnis::Fehlschlag("ERR: sVKnoten = 0!\n" + std::string(Abbruch));
        KopfAuswerten();
        return Ergebnis::Ok();
    }

    void KopfAuswerten() {
        m_werte = Werttabellen{KonfigText(m_auftrag.konfigOrdner / "ALKIS_Werteart.dat"),
                               KonfigText(m_auftrag.konfigOrdner / "ALKIS_EPSG.dat")};
        // The head's system decides the srsName columns of every feature.
        // Teilen gives views into its text: the head before the first member stays a view of m_kopf.
        const std::string_view vorMitglied =
            std::string_view(m_kopf).substr(0, m_kopf.find("<" + m_stand.mitgliedTag + ">"));
        for (auto zeile : Teilen(vorMitglied, '\n'))
            m_notizen.Zeile(zeile);
        m_einbyte = IstEinbytekodiert(m_kopf);
        m_kopf.clear();
        m_kopf.shrink_to_fit();
    }

    Ergebnis DatenbankAnlegen() {
        try {
            m_db = DAO_DatenbankAnlegen(m_auftrag.datenbank, m_auftrag.seitencacheMiB);
            Transaktion transaktion(*m_db);
            DAO_DatenbankAnlegenAusKnoten(*m_db, m_knoten,
                                          [&](std::string_view text) { m_protokoll.Eintrag(text); });
            transaktion.Bestätigen();
        } catch (const Fehler& e) {
            m_protokoll.Eintrag(std::string(", ") + e.what());
            return Ergebnis::Fehlschlag("Datenbank konnte nicht erstellt werden!   ");
        }
        m_stand.standardSystem = m_notizen.Standard();
        return Ergebnis::Ok();
    }

    /// The scan: each feature cut from the file goes through the element reader.
    Ergebnis ObjekteEinlesen() {
        try {
            ObjektSchneider schneider(m_auftrag.xmlDatei, m_stand.mitgliedTag);
            Dateirahmen rahmen{m_präfix, m_stand.mitgliedTag,
                               XPfadPräfix(m_knoten.xmlBaum, m_stand.mitgliedTag, m_präfix),
                               SrsWert(m_notizen.Standard(), m_werte.epsg)};
            ElementLeser leser(*m_db, m_knoten, std::move(rahmen), [&](std::string_view text) {
                m_ui.Meldung(text, "Fehler", Stil::Warnung);
            });
            auto transaktion = std::make_unique<Transaktion>(*m_db);
            std::string_view objekt;
            std::string umkodiert;
            std::uint64_t ohneKennung = 0;
            const auto zwischenzeile = [&](std::string_view zeile) { m_notizen.Zeile(zeile); };
            while (schneider.Nächstes(objekt, zwischenzeile)) {
                if (m_einbyte) {
                    umkodiert = Cp1252NachUtf8(objekt);
                    objekt = umkodiert;
                }
                m_notizen.Objekt(objekt);
                // The start tag of the feature names its identifier; a service may leave it out.
                const std::string_view starttag = objekt.substr(0, objekt.find('>', objekt.find('<')));
                ohneKennung += starttag.find("gml:id") == std::string_view::npos ? 1 : 0;
                const std::string_view klasse = leser.Objekt(objekt);
                FortschrittZeigen(schneider.Position(), klasse, transaktion);
                if (AbbruchBestätigt()) {
                    m_protokoll.Eintrag(", Abbruch DAO_ALKISEinlesen");
                    m_stand.abgebrochen = true;
                    break;
                }
            }
            transaktion->Bestätigen();
            m_stand.statistik = leser.Statistik();
            m_stand.statistik.ohneKennung = ohneKennung;
            StatistikProtokollieren(m_stand.statistik, schneider, m_protokoll);
            // A cut-off file is read up to its last whole feature; the person must know that the
            // data set is incomplete, not only the protocol.
            if (schneider.Abgeschnitten())
                m_ui.Meldung(MeldungAbgeschnitten, "Flurix-NAS", Stil::Warnung);
        } catch (const Fehler& e) {
            m_protokoll.Eintrag(std::string(", ") + e.what());
            return Ergebnis::Fehlschlag(e.what());
        }
        return Ergebnis::Ok();
    }

    /// Status and progress at each new percent; at a full tenth (from KomprimierenAb on) what
    /// was read is made safe and the file compacted.
    void FortschrittZeigen(std::uint64_t position, std::string_view klasse,
                           std::unique_ptr<Transaktion>& transaktion) {
        const int prozent = m_größe ? static_cast<int>(position * 100 / m_größe) : 100;
        if (prozent < m_marke)
            return;
        if (prozent / 10 > (m_marke - 1) / 10 && position >= KomprimierenAb) {
            transaktion->Bestätigen();
            transaktion.reset();
            DatenbankKomprimieren(*m_db);
            transaktion = std::make_unique<Transaktion>(*m_db);
        }
        m_marke = prozent + 1;
        m_ui.Status(1, "Import: Abbruch mit [ESC], lese ALKIS-Objekte... " + std::to_string(prozent) +
                           "% eingelesen, " + std::string(klasse));
        m_ui.Fortschritt(prozent, 100);
    }

    /// Asks the UI port for a cancel every AbfrageAbstand (the first feature at once) and, when
    /// asked for one, whether the user really wants it.
    bool AbbruchBestätigt() {
        const auto jetzt = std::chrono::steady_clock::now();
        if (jetzt - m_letzteAbfrage < AbfrageAbstand)
            return false;
        m_letzteAbfrage = jetzt;
        if (!m_ui.AbbruchGewünscht())
            return false;
        Fragestellung frage;
        frage.titel = "Import";
        frage.text = "Wollen Sie den Import wirklich abbrechen?   ";
        frage.vorgabe = Antwort::Nein;
        frage.unbeaufsichtigt = Antwort::Nein;
        return m_ui.Frage(frage) == Antwort::Ja;
    }

    void SystemAusGeometrieNachtragen() {
        m_stand.zweitesSystem = m_notizen.Zweites();
        if (m_notizen.Standard().empty() && !m_notizen.Geometrie().empty()) {
            // No reference system object in the file: the system its geometry names.
            SrsWertNachtragen(*m_db, SrsWert(m_notizen.Geometrie(), m_werte.epsg));
            m_stand.standardSystem = m_notizen.Geometrie();
            m_protokoll.Eintrag(", Koordinatenreferenzsystem aus srsName der Geometrie: " +
                                m_notizen.Geometrie());
        }
    }

    /// The enrichment, the compaction and the list of tables.
    Ergebnis Anreichern() {
        try {
            m_stand.antrag = NasAnreichern(*m_db, m_auftrag.xmlDatei, m_werte, m_ui);
            m_protokoll.Eintrag(m_stand.antrag.AntragsText());
            m_protokoll.Eintrag(m_stand.antrag.SystemText());
            m_ui.Status(1, "XML-Datei geladen");
            m_ui.Status(1, "Datenbank Reorganisation...");
            DatenbankKomprimieren(*m_db);
            DAO_FeldAnlegen(*m_db, "AP_PTO", "flstnr", TypText);
            TabellenAuflisten(*m_db, m_stand);
        } catch (const Fehler& e) {
            m_protokoll.Eintrag(std::string(", ") + e.what());
            return Ergebnis::Fehlschlag(e.what());
        }
        return Ergebnis::Ok();
    }

    void Abschließen() {
        m_ui.Status(1, "ALKIS-Daten komplett eingelesen");
        m_protokoll.Eintrag(", ALKIS importiert...");
        if (!m_stand.zweitesSystem.empty())
            m_ui.Meldung("Koordinatenreferenzsystem: " + m_stand.standardSystem +
                             "\nKoordinatensystem lokal: " + m_stand.zweitesSystem +
                             "In den XML-Daten sind mehrere Koordinatensysteme hinterlegt!   "
                             "Beim Export nach Geograf oder DXF kann es zu Problemen kommen!   ",
                         "Koordinatenreferenzsystemangaben", Stil::Information);
    }

    const NasAuftrag& m_auftrag;
    NasStand& m_stand;
    Oberfläche& m_ui;
    NasProtokoll& m_protokoll;
    std::string m_kopf;
    std::uintmax_t m_größe = 0;
    std::string m_präfix;
    KnotenDatei m_knoten;
    Werttabellen m_werte;
    KoordinatenNotizen m_notizen;
    bool m_einbyte = false;
    std::unique_ptr<Datenbank> m_db;
    int m_marke = 1;
    // The first feature is followed by a poll at once; then every AbfrageAbstand.
    std::chrono::steady_clock::time_point m_letzteAbfrage =
        std::chrono::steady_clock::now() - AbfrageAbstand;
};

} // namespace

Ergebnis DAO_ALKISEinlesen(const NasAuftrag& auftrag, NasStand& stand, Oberfläche& ui,
                           NasProtokoll& protokoll) {
    return NasEinlesen(auftrag, stand, ui, protokoll).Ausführen();
}

} // namespace flurix::nas
