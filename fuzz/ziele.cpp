#include "fuzz/ziele.hpp"

#include "core/datei.hpp"
#include "core/datenbank.hpp"
#include "core/einstellungen.hpp"
#include "core/fehler.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/markierung.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/tabellendatei.hpp"
#include "core/text.hpp"
#include "export/grafbat_leser.hpp"
#include "import/datenladen.hpp"
#include "map/antwort.hpp"
#include "map/capabilities.hpp"
#include "map/ebenen_korrektur.hpp"
#include "map/layerauswahl.hpp"
#include "import/textvorbereitung.hpp"
#include "import/webxml.hpp"
#include "import/wldge_komplett.hpp"
#include "import/wldge_schnell.hpp"
#include "nas/element_leser.hpp"
#include "nas/geometrie.hpp"
#include "nas/knoten.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/nas_einlesen.hpp"
#include "nas/nas_form.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/nba_leser.hpp"
#include "nas/objekt_schneider.hpp"
#include "nas/objektdatenbank.hpp"
#include "nas/zuordnung.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <unistd.h>

namespace flurix::fuzz {
namespace {

namespace fs = std::filesystem;

const fs::path Konfig = FLURIX_KONFIG;

std::string_view Text(Eingabe daten) {
    return {reinterpret_cast<const char*>(daten.data()), daten.size()};
}

/// The last byte of the input, which stays part of the data; 0 for an empty input.
std::uint8_t Wahl(Eingabe daten) { return daten.empty() ? 0 : daten.back(); }

/// The two texts of an input: split at the first 0 byte; without one, the first line and the
/// whole input.
struct Zwei {
    std::string_view erster;
    std::string_view zweiter;
};

Zwei Teilen(Eingabe daten) {
    const std::string_view text = Text(daten);
    if (const auto null = text.find('\0'); null != std::string_view::npos)
        return {text.substr(0, null), text.substr(null + 1)};
    return {text.substr(0, text.find_first_of("\r\n")), text};
}

/// The private folder of this process, removed when the process ends: "eingabe" holds the files
/// of one input (emptied after each), "konfig" what is made once.
class Arbeitsordner {
public:
    Arbeitsordner() {
        std::error_code fehler;
        const fs::path basis =
            fs::is_directory("/dev/shm", fehler) ? fs::path("/dev/shm") : fs::temp_directory_path();
        // A process that ended on a finding could not remove its folder: gone processes' go now.
        for (const auto& eintrag : fs::directory_iterator(basis, fehler)) {
            const std::string name = eintrag.path().filename().string();
            if (name.starts_with(Vorsilbe) &&
                !fs::exists("/proc/" + name.substr(Vorsilbe.size()), fehler))
                fs::remove_all(eintrag.path(), fehler);
        }
        m_pfad = basis / (std::string(Vorsilbe) + std::to_string(::getpid()));
        fs::remove_all(m_pfad, fehler);
        fs::create_directories(m_pfad / "eingabe");
        fs::create_directories(m_pfad / "konfig");
    }
    Arbeitsordner(const Arbeitsordner&) = delete;
    Arbeitsordner& operator=(const Arbeitsordner&) = delete;
    Arbeitsordner(Arbeitsordner&&) = delete;
    Arbeitsordner& operator=(Arbeitsordner&&) = delete;
    ~Arbeitsordner() {
        std::error_code fehler;
        fs::remove_all(m_pfad, fehler);
    }

    /// The folder of one input's files.
    fs::path Pfad() const { return m_pfad / "eingabe"; }
    /// The folder of what is made once.
    fs::path Konfig() const { return m_pfad / "konfig"; }

    /// The input as the file `name` of the input's folder, written anew.
    fs::path Datei(std::string_view name, std::string_view inhalt) const {
        const fs::path datei = Pfad() / name;
        DateiSchreiben(datei, inhalt);
        return datei;
    }

    /// Removes what an input left in its folder.
    void Aufräumen() const {
        std::error_code fehler;
        for (const auto& eintrag : fs::directory_iterator(Pfad(), fehler))
            fs::remove_all(eintrag.path(), fehler);
    }

private:
    static constexpr std::string_view Vorsilbe = "flurix_fuzz_";
    fs::path m_pfad;
};

const Arbeitsordner& Ordner() {
    static const Arbeitsordner ordner;
    return ordner;
}

/// Cleans the private folder when an entry ends, however it ends.
struct Aufräumer {
    Aufräumer() = default;
    Aufräumer(const Aufräumer&) = delete;
    Aufräumer& operator=(const Aufräumer&) = delete;
    Aufräumer(Aufräumer&&) = delete;
    Aufräumer& operator=(Aufräumer&&) = delete;
    ~Aufräumer() { Ordner().Aufräumen(); }
};

/// The options of the register readers from the choice (each reader takes those it knows).
/// The return type is named through an alias: a line that begins with "import" is taken for a
/// module import by clang-format.
using Leseoptionen = import::ImportOptionen;
Leseoptionen Optionen(std::uint8_t wahl) {
    Leseoptionen optionen;
    optionen.nameUmdrehen = (wahl & 1) != 0;
    optionen.alleEigentümerInEinerZeile = (wahl & 2) != 0;
    optionen.suchbegriffGemarkung = (wahl & 4) != 0;
    optionen.nutzungTatsächlich = (wahl & 8) == 0;
    return optionen;
}

/// The WLDGE file as the load hands it to a reader: line ends made CR LF where the file has none.
fs::path WldgeDatei(Eingabe daten, Oberfläche& ui) {
    const fs::path datei = Ordner().Datei("kreis.wldge", Text(daten));
    try {
        import::UnixToPcDatei(datei, true, ui);
    } catch (const Fehler&) {
        // The load goes on with the file as it is.
    }
    return datei;
}

} // namespace

void FuzzWldgeKomplett(Eingabe daten) {
    const Aufräumer aufräumer;
    SkriptOberfläche ui;
    const fs::path datei = WldgeDatei(daten, ui);
    const import::WldgeKomplettUmgebung umgebung{Ordner().Pfad(),
                                                 Konfig / "ALB_DatenbankSpalten.dat", "alles"};
    Kataster kataster;
    import::WldgeKomplettBericht bericht;
    (void)import::WldgeKomplettLesen(datei, Optionen(Wahl(daten)), umgebung, kataster, ui,
                                     &bericht);
}

void FuzzWldgeSchnell(Eingabe daten) {
    const Aufräumer aufräumer;
    SkriptOberfläche ui;
    const fs::path datei = WldgeDatei(daten, ui);
    Kataster kataster;
    import::WldgeSchnellBericht bericht;
    (void)import::WldgeSchnellLesen(datei, Optionen(Wahl(daten)), kataster, ui, &bericht);
}

void FuzzWebXml(Eingabe daten) {
    const Aufräumer aufräumer;
    SkriptOberfläche ui;
    const fs::path datei = Ordner().Datei("auszug.xml", Text(daten));
    try {
        import::UnixToPcDatei(datei, true, ui);
    } catch (const Fehler&) {
    }
    Kataster kataster;
    import::WebXmlBericht bericht;
    (void)import::WebXmlLesen({datei}, Optionen(Wahl(daten)), false, kataster, ui, &bericht);
}

namespace {

/// The configuration of the scan: the shipped one, its node file reduced to the classes of the
/// register (parcel, booking, sheet, name number, person, address, Gemarkung, Gemeinde) and the
/// order description. With all classes the database alone takes seconds per input under the
/// sanitizers; the element reader's target reads every class of the shipped node file.
const fs::path& NasKonfig() {
    static const fs::path ordner = [] {
        const fs::path ziel = Ordner().Konfig() / "nas";
        fs::create_directories(ziel);
        for (const char* datei : {"ALKIS_EPSG.dat", "ALKIS_Werteart.dat"})
            fs::copy_file(Konfig / datei, ziel / datei, fs::copy_options::overwrite_existing);
        std::string knoten;
        bool behalten = true;
        const std::string geliefert = DateiKomplettLesen(Konfig / "ALKIS_Knoten.dat");
        for (const auto zeile : TextZeilen(geliefert)) {
            if (zeile.starts_with("<")) {
                const std::string_view klasse = TrimmeLeerzeichen(zeile.substr(1));
                behalten = false;
                for (std::string_view k : {"AX_Flurstueck", "AX_Buchungsstelle", "AX_Buchungsblatt",
                                           "AX_Namensnummer", "AX_Person", "AX_Anschrift",
                                           "AX_Gemarkung", "AX_Gemeinde", "Antragsbeschreibung"})
                    behalten = behalten || klasse == k;
            }
            if (behalten)
                knoten.append(zeile).append("\r\n");
        }
        DateiSchreiben(ziel / "ALKIS_Knoten.dat", knoten);
        return ziel;
    }();
    return ordner;
}

} // namespace

void FuzzNasEinlesen(Eingabe daten) {
    const Aufräumer aufräumer;
    SkriptOberfläche ui;
    const nas::NasAuftrag auftrag{Ordner().Datei("nas.xml", Text(daten)),
                                  Ordner().Pfad() / "nas.sqlite", NasKonfig()};
    nas::NasStand stand;
    nas::NasProtokoll protokoll(ui, {});
    (void)nas::DAO_ALKISEinlesen(auftrag, stand, ui, protokoll);
}

void FuzzObjektSchneider(Eingabe daten) {
    const Aufräumer aufräumer;
    const fs::path datei = Ordner().Datei("nas.xml", Text(daten));
    try {
        nas::ObjektSchneider schneider(datei,
                                       (Wahl(daten) & 1) ? "wfs:member" : "gml:featureMember");
        nas::KoordinatenNotizen notizen;
        std::string_view objekt;
        while (schneider.Nächstes(objekt, [&](std::string_view zeile) { notizen.Zeile(zeile); }))
            notizen.Objekt(objekt);
        (void)schneider.Position();
    } catch (const Fehler&) {
    }
}

namespace {

/// The object database of the shipped node file, in memory, and one element reader for each
/// prefix and member tag; made at the first input.
struct Elementumgebung {
    nas::KnotenDatei knoten = nas::KnotenLesen(Konfig / "ALKIS_Knoten.dat");
    Datenbank db{":memory:"};
    std::array<std::unique_ptr<nas::ElementLeser>, 4> leser;

    Elementumgebung() {
        nas::DAO_DatenbankAnlegenAusKnoten(db, knoten, [](std::string_view) {});
        for (unsigned art = 0; art < leser.size(); ++art) {
            const std::string präfix = (art & 1) ? "adv:" : "";
            const std::string tag = (art & 2) ? "wfs:member" : "gml:featureMember";
            leser[art] = std::make_unique<nas::ElementLeser>(
                db, knoten,
                nas::Dateirahmen{präfix, tag, nas::XPfadPräfix(knoten.xmlBaum, tag, präfix),
                                 "25832_32"},
                [](std::string_view) {});
        }
    }
};

} // namespace

void FuzzElementLeser(Eingabe daten) {
    static Elementumgebung umgebung;
    try {
        const Transaktion transaktion(umgebung.db); // rolled back: every input meets empty tables
        (void)umgebung.leser[Wahl(daten) & 3]->Objekt(Text(daten));
    } catch (const Fehler&) {
    }
}

void FuzzNasForm(Eingabe daten) {
    const nas::NasFormbefund befund = nas::NasFormErkennen(Text(daten));
    (void)befund.Name();
    std::string präfix;
    (void)nas::NasPräfix(Text(daten), präfix);
}

void FuzzNbaLeser(Eingabe daten) {
    const Aufräumer aufräumer;
    const fs::path datei = Ordner().Datei("nba.xml", Text(daten));
    try {
        nas::NbaLeser leser(datei);
        while (const auto operation = leser.Nächste())
            (void)nas::Objektkennung(operation->kennung);
        (void)leser.Abgeschnitten();
    } catch (const Fehler&) {
    }
}

void FuzzTabellendatei(Eingabe daten) {
    const Aufräumer aufräumer;
    const std::uint8_t wahl = Wahl(daten);
    const fs::path datei = Ordner().Datei((wahl & 1) ? "tabelle.tsv" : "tabelle.fil", Text(daten));
    try {
        if (wahl & 2) {
            (void)WfsSchlüsselLesen(datei);
        } else {
            Kataster kataster;
            KatasterLaden(kataster, datei);
        }
    } catch (const Fehler&) {
    }
}

void FuzzEinstellungen(Eingabe daten) {
    const Aufräumer aufräumer;
    const std::uint8_t wahl = Wahl(daten);
    const auto [schlüssel, text] = Teilen(daten);
    const fs::path datei = Ordner().Datei("Flurix.dat", text);
    (void)EinstellungLesen(datei, schlüssel, (wahl & 1) ? "," : "=");
    (void)TokenNr(text, 2, (wahl & 1) ? "," : "=");
    if (wahl & 2) {
        try {
            ZeileErsetzen(datei, schlüssel, std::string(schlüssel) + " =ja");
        } catch (const Fehler&) {
        }
    }
}

void FuzzKonfigSuche(Eingabe daten) {
    const Aufräumer aufräumer;
    const std::uint8_t wahl = Wahl(daten);
    const auto [schlüssel, text] = Teilen(daten);
    const int schlüsselSpalte = 1 + ((wahl >> 3) & 3);
    const int wertSpalte = 1 + ((wahl >> 5) & 3);
    const std::string_view trenner = (wahl & 0x80) ? "," : "=";
    switch (wahl % 7) {
    case 0:
        (void)nas::KonfigWert(schlüsselSpalte, schlüssel, trenner, wertSpalte, text);
        break;
    case 1:
        (void)nas::KonfigWerteListe(schlüssel, text);
        break;
    case 2:
        (void)nas::KonfigZeile(schlüssel, "1;" + std::to_string(wertSpalte), trenner, text);
        break;
    case 3:
        (void)nas::KonfigAuswahl(schlüssel, std::to_string(schlüsselSpalte),
                                 std::to_string(wertSpalte), trenner, text);
        break;
    case 4:
        (void)nas::IdKennzeichnen(text, schlüssel);
        break;
    case 5:
        (void)nas::Utf8Reparatur(text);
        break;
    default:
        try {
            const std::string konfig = nas::KonfigText(Ordner().Datei("ALKIS_EPSG.dat", text));
            (void)nas::KonfigWert(schlüsselSpalte, schlüssel, trenner, wertSpalte, konfig);
        } catch (const Fehler&) {
        }
        break;
    }
}

void FuzzKnoten(Eingabe daten) {
    const nas::KnotenDatei knoten = nas::KnotenAusText(Text(daten));
    for (const auto& klasse : knoten.klassen)
        for (const auto& feld : klasse.felder)
            if (feld.art == nas::Feldart::Relation)
                (void)feld.RelationsTabelle(klasse.tabelle);
    (void)nas::MitgliedTagWählen(knoten.mitgliedTags, Text(daten));
    for (const auto& tag : knoten.mitgliedTags)
        (void)nas::XPfadPräfix(knoten.xmlBaum, tag, "adv:");
    // The database of the first classes only: made from all classes of a full node file it
    // takes a second per input under the sanitizers, and the names of four are enough to try.
    nas::KnotenDatei anfang = knoten;
    anfang.klassen.resize(std::min<std::size_t>(anfang.klassen.size(), 4));
    try {
        Datenbank db(":memory:");
        nas::DAO_DatenbankAnlegenAusKnoten(db, anfang, [](std::string_view) {});
    } catch (const Fehler&) {
    }
}

void FuzzZuordnung(Eingabe daten) {
    const std::vector<std::string> zeilen = nas::ZuordnungLesen(Text(daten));
    Datenbank db(":memory:");
    db.AusführenNativ("CREATE TABLE Alkis (id TEXT, flurstueckskennzeichen TEXT, "
                      "amtlicheFlaeche TEXT, \"gml:exterior\" TEXT, name TEXT)");
    db.AusführenNativ("INSERT INTO Alkis VALUES ('F1', '05123400100012000300', '120', "
                      "'1 2 3 4 5 6 1 2', 'Meier'), ('F2', '05123400100013000000', '7.5', "
                      "'1 1 2 2;3 3 4 4', NULL), ('F3', NULL, '', '', 'Schulze, Anna')");
    SkriptOberfläche ui;
    nas::NasProtokoll protokoll(ui, {});
    try {
        (void)nas::ZuordnungAusführen(db, zeilen, protokoll, ui);
    } catch (const Fehler&) {
    }
}

void FuzzMarkierung(Eingabe daten) {
    const Aufräumer aufräumer;
    for (const auto zeile : ListenZeilen(Text(daten)))
        (void)ListenzeileLesen(TextSäubern(zeile));
    Kataster kataster;
    for (const char* spalte : {"Flurstückskennzeichen", "Gemarkungsschlüssel", "Flur",
                               "Grundbuchblatt", "Flurstück", "Eigentümerposition"})
        kataster.SpalteHinzufügen(KatasterSpalte(spalte, spalte));
    kataster.ZeileHinzufügen("12195500700231000100\t121955\t007\t0000123\t00231/0001\t0001");
    kataster.ZeileHinzufügen("12195500700231000100\t121955\t007\t0000123\t00231/0001\t0002");
    kataster.ZeileHinzufügen("05123400100012000300\t051234\t001\t0000007\t00012/0003\t0001");
    kataster.Auswählen(2);
    SkriptOberfläche ui;
    (void)DbMarkierungLaden(kataster, Ordner().Datei("liste.lst", Text(daten)), ui);
}

void FuzzGeometrie(Eingabe daten) {
    const std::uint8_t wahl = Wahl(daten);
    const auto [ring, bögen] = Teilen(daten);
    constexpr std::array<double, 4> pfeilhöhen{0.01, 0.0001, 0, 1};
    const double pfeilhöhe = pfeilhöhen[(wahl >> 4) & 3];
    switch (wahl % 5) {
    case 0:
        (void)nas::PosUmring(ring);
        break;
    case 1: {
        SkriptOberfläche ui;
        const auto ringe = nas::RingeAusText(ring, bögen, pfeilhöhe, &ui);
        for (const auto& r : ringe)
            (void)nas::PunktlisteText(r);
        (void)nas::BoxMitte(ringe);
        break;
    }
    case 2:
        (void)nas::BogenZuSehnen(ring, pfeilhöhe);
        (void)nas::PfeilhöheAusEinstellung(bögen);
        break;
    case 3:
        (void)nas::BoxMitte(ring);
        (void)nas::Punktliste(ring);
        (void)nas::Prüfsumme(ring);
        break;
    default:
        (void)nas::BögenErsetzen(ring, bögen, pfeilhöhe);
        break;
    }
}

void FuzzGrafbat(Eingabe daten) {
    const Aufräumer aufräumer;
    try {
        ausgabe::GrafbatLeser leser(Ordner().Datei("zeichnung.out", Text(daten)));
        while (const auto satz = leser.NächsterSatz())
            (void)satz->felder.size();
        (void)leser.Probleme();
    } catch (const Fehler&) {
    }
}

void FuzzCapabilities(Eingabe daten) {
    SkriptOberfläche ui;
    const auto inhalt = karte::WebServiceAnfrage(Text(daten), "fuzz", ui);
    std::string auswahl;
    for (std::size_t i = 0; i < inhalt.layerAnzahl; ++i)
        auswahl += (Wahl(daten) & 1) || i % 2 == 0 ? "true," : "false,";
    (void)karte::LayerListe(inhalt.layer, auswahl);
    (void)karte::LayerEinträge(inhalt.layer, auswahl);
    (void)karte::MaßstabUmrechnen(inhalt.maßstab);
}

void FuzzWmsAntwort(Eingabe daten) {
    const Aufräumer aufräumer;
    karte::EbenenAnfrage anfrage;
    anfrage.dienst = "Fuzz";
    anfrage.anfrage = "http://fuzz/wms?";
    anfrage.datei = Ordner().Datei("#tmp_wms1_fuzz.png", Text(daten));
    (void)karte::AntwortPrüfen(anfrage, {"25.11.2026", "10:00:00"});
    // What survives the test is loaded as a picture, as the map does with it.
    if (!anfrage.abbruch) {
        karte::EbenenEinstellung einstellung;
        einstellung.transparenterDienst = einstellung.weißErhalten = (Wahl(daten) & 1) != 0;
        einstellung.schwarzInvers = (Wahl(daten) & 2) != 0;
        (void)karte::EbeneLadenUndKorrigieren(anfrage.datei, QSize(64, 48), einstellung);
    }
}

std::span<const FuzzZiel> FuzzZiele() {
    static constexpr std::array<FuzzZiel, 18> ziele{{
        {"wldge_komplett", FuzzWldgeKomplett},
        {"wldge_schnell", FuzzWldgeSchnell},
        {"webxml", FuzzWebXml},
        {"nas_einlesen", FuzzNasEinlesen},
        {"objekt_schneider", FuzzObjektSchneider},
        {"element_leser", FuzzElementLeser},
        {"nas_form", FuzzNasForm},
        {"nba_leser", FuzzNbaLeser},
        {"tabellendatei", FuzzTabellendatei},
        {"einstellungen", FuzzEinstellungen},
        {"konfig_suche", FuzzKonfigSuche},
        {"knoten", FuzzKnoten},
        {"zuordnung", FuzzZuordnung},
        {"markierung", FuzzMarkierung},
        {"geometrie", FuzzGeometrie},
        {"grafbat", FuzzGrafbat},
        {"capabilities", FuzzCapabilities},
        {"wms_antwort", FuzzWmsAntwort},
    }};
    return ziele;
}

} // namespace flurix::fuzz
