#include "core/markierung.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/einstellungen.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche.hpp"
#include "core/spaltenansicht.hpp"
#include "core/suche.hpp"
#include "core/text.hpp"
#include "core/textkodierung.hpp"

#include <algorithm>
#include <limits>
#include <optional>
#include <unordered_set>

namespace flurix {
namespace {

void Markieren(Kataster& kataster, std::size_t spalte, std::size_t zeile, bool an) {
    kataster.ZelleSetzen(zeile, spalte, an ? MarkeGesetzt : std::string_view{});
}

void AuswahlMarkieren(Kataster& kataster) {
    const std::size_t spalte = MarkierungsspalteSicherstellen(kataster);
    for (std::size_t z : kataster.AusgewählteZeilen())
        Markieren(kataster, spalte, z, true);
}

void SpalteLeeren(Kataster& kataster, std::string_view schlüssel) {
    if (const auto spalte = kataster.SpaltenIndex(schlüssel))
        for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z)
            kataster.ZelleSetzen(z, *spalte, {});
}

// What tells a parcel's rows from those of other parcels: its key and its number within the
// Gemarkung and Flur, joined with a separator that no cell holds.
class FlurstücksIdentität {
public:
    explicit FlurstücksIdentität(const Kataster& kataster) : m_kataster(kataster) {
        for (std::string_view schlüssel :
             {"Flurstückskennzeichen", "Gemarkungsschlüssel", "Flur", "Flurstück"})
            if (const auto spalte = kataster.SpaltenIndex(schlüssel))
                m_spalten.push_back(*spalte);
    }
    /// "" when all the cells are empty: such a row is a parcel of its own.
    std::string Schlüssel(std::size_t zeile) const {
        std::string schlüssel;
        bool leer = true;
        for (std::size_t spalte : m_spalten) {
            const std::string_view zelle = m_kataster.Zelle(zeile, spalte);
            leer = leer && zelle.empty();
            schlüssel += zelle;
            schlüssel += '\x1F';
        }
        return leer ? std::string{} : schlüssel;
    }

private:
    const Kataster& m_kataster;
    std::vector<std::size_t> m_spalten;
};

bool EndetAufLst(std::string_view name) {
    return name.size() >= 4 && Kleinbuchstaben(name.substr(name.size() - 4)) == ".lst";
}

bool IstLeerzeichen(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f' || c == '\x1A';
}

} // namespace

bool IstMarke(std::string_view zelle) {
    const std::string text = Kleinbuchstaben(TrimmeLeerzeichen(zelle));
    return !(text.empty() || text == "0" || text == "false" || text == "falsch");
}

bool Markiert(const Kataster& kataster, std::size_t zeile) {
    const auto spalte = kataster.SpaltenIndex(SpalteMarkierung);
    return spalte && IstMarke(kataster.Zelle(zeile, *spalte));
}

std::size_t MarkierteAuswählen(Kataster& kataster) {
    kataster.AuswahlLeeren();
    for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z)
        kataster.Auswählen(z, Markiert(kataster, z));
    return kataster.AnzahlAusgewählt();
}

std::size_t MarkierungsspalteSicherstellen(Kataster& kataster) {
    const auto vorhanden = kataster.SpaltenIndex(SpalteMarkierung);
    KatasterSpalte neu(std::string(SpalteMarkierung), "", 600);
    const std::size_t spalte = vorhanden ? *vorhanden : kataster.SpalteHinzufügen(std::move(neu));
    // A column of this key read from a file is a check box column too, whatever the file said.
    kataster.Spalte(spalte).kontrollkästchen = true;
    kataster.Spalte(spalte).zentriert = true;
    return spalte;
}

std::size_t StempelspalteSicherstellen(Kataster& kataster) {
    return kataster.SpalteHinzufügen({std::string(SpalteStempel), std::string(SpalteStempel), 600});
}

void MarkeSetzen(Kataster& kataster, std::size_t zeile, bool an) {
    Markieren(kataster, MarkierungsspalteSicherstellen(kataster), zeile, an);
}

std::int32_t Stempelnummerierung::Weiterzählen() {
    if (m_stempelNr < std::numeric_limits<std::int32_t>::max())
        ++m_stempelNr;
    return m_stempelNr;
}

void MarkierungGeklickt(Kataster& kataster, std::size_t zeile, bool an,
                        Stempelnummerierung& nummerierung) {
    const std::size_t marke = MarkierungsspalteSicherstellen(kataster);
    const std::size_t stempel = StempelspalteSicherstellen(kataster);
    Markieren(kataster, marke, zeile, an);
    if (!an)
        kataster.ZelleSetzen(zeile, stempel, {});
    else if (kataster.Zelle(zeile, stempel).empty())
        kataster.ZelleSetzen(zeile, stempel, std::to_string(nummerierung.Weiterzählen()));
}

bool DbEigentümerGGStempel(Kataster& kataster, Stempelnummerierung& nummerierung,
                           const std::filesystem::path& ansichtsdatei) {
    nummerierung.Zurücksetzen();
    return ComboColVis(kataster, AnsichtLageplan, ansichtsdatei);
}

void DbMarkierungErzeugen(Kataster& kataster, Oberfläche& ui) {
    AuswahlMarkieren(kataster);
    ui.Status(1, "alle Markierungen erzeugt  ");
}

void DbMarkerErzeugen(Kataster& kataster, Oberfläche& ui) {
    AuswahlMarkieren(kataster);
    ui.Status(1, "alle Marker erzeugt  ");
}

bool DbMarkierungLöschen(Kataster& kataster, Oberfläche& ui) {
    const Fragestellung frage{"Es werden alle Markierungen und Marker gelöscht! Weiter?   ",
                              ProduktTitel, Knöpfe::JaNein, Antwort::Ja, Antwort::Ja};
    if (ui.Frage(frage) != Antwort::Ja)
        return false;
    SpalteLeeren(kataster, SpalteMarkierung);
    SpalteLeeren(kataster, SpalteStempel);
    ui.Status(1, "alle Markierungen gelöscht  ");
    return true;
}

void DbMarkierungAlle(Kataster& kataster, Oberfläche& ui) {
    const std::size_t spalte = MarkierungsspalteSicherstellen(kataster);
    for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z)
        Markieren(kataster, spalte, z, true);
    ui.Status(1, "alle Zeilen markiert  ");
}

std::size_t DbFlurstückMarkieren(Kataster& kataster, Oberfläche& ui) {
    const std::size_t spalte = MarkierungsspalteSicherstellen(kataster);
    const FlurstücksIdentität identität(kataster);
    std::unordered_set<std::string> gewählt;
    for (std::size_t z : kataster.AusgewählteZeilen()) {
        if (std::string schlüssel = identität.Schlüssel(z); !schlüssel.empty())
            gewählt.insert(std::move(schlüssel));
        else
            Markieren(kataster, spalte, z, true); // a row without parcel cells stands alone
    }
    detail::Prozentanzeige prozent(ui, 1, "% selektiert  ");
    for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z) {
        prozent.Zeigen(z, kataster.Zeilenzahl());
        if (gewählt.empty() || !gewählt.contains(identität.Schlüssel(z)))
            continue;
        kataster.Auswählen(z);
        Markieren(kataster, spalte, z, true);
    }
    const std::string anzahl = std::to_string(kataster.AnzahlAusgewählt());
    ui.Status(1, anzahl + " Zeile(n) selektiert  ");
    ui.Status(2, anzahl + " Markierungen erzeugt  ");
    return kataster.AnzahlAusgewählt();
}

Ergebnis DbMarkierungSpeichern(const Kataster& kataster, const std::filesystem::path& name,
                               Oberfläche& ui) {
    std::string stamm = name.string();
    if (EndetAufLst(stamm))
        stamm.resize(stamm.size() - 4);
    std::string inhalt;
    const auto marke = kataster.SpaltenIndex(SpalteMarkierung);
    const auto kennzeichen = kataster.SpaltenIndex("Flurstückskennzeichen");
    std::string_view letztes;
    for (std::size_t z = 0; marke && kennzeichen && z < kataster.Zeilenzahl(); ++z) {
        const std::string_view fkz = kataster.Zelle(z, *kennzeichen);
        if (!IstMarke(kataster.Zelle(z, *marke)) || fkz.empty() || fkz == letztes)
            continue;
        letztes = fkz;
        inhalt += Utf8NachCp1252(fkz);
        inhalt += "\r\n";
    }
    try {
        DateiSchreiben(stamm + ".lst", inhalt);
    } catch (const Fehler& fehler) {
        ui.Meldung(fehler.what(), ProduktTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag(fehler.what());
    }
    ui.Meldung("Markierte Daten wurden unter: " + stamm + ".lst abgespeichert!   ", ProduktTitel,
               Stil::Information);
    return Ergebnis::Ok();
}

std::string FlurstückskennzeichenBilden(std::string_view gemarkung, std::string_view flur,
                                        std::string_view flurstück) {
    std::string kennzeichen(gemarkung);
    kennzeichen += NullenAuffüllen(flur, 3);
    const auto strich = flurstück.find('/');
    if (strich == std::string_view::npos) {
        kennzeichen += NullenAuffüllen(flurstück, 5);
        kennzeichen += "0000";
    } else {
        kennzeichen += NullenAuffüllen(flurstück.substr(0, strich), 5);
        kennzeichen += NullenAuffüllen(flurstück.substr(strich + 1), 4);
    }
    kennzeichen += "00";
    return kennzeichen;
}

Listenzeile ListenzeileLesen(std::string_view zeile) {
    const bool blank = zeile.find(' ') != std::string_view::npos;
    const bool strich = zeile.find('/') != std::string_view::npos;
    const bool bindestrich = zeile.find('-') != std::string_view::npos;
    Listenzeile gelesen;
    if (zeile.size() == 20 && !blank && !strich && !bindestrich) {
        gelesen.form = Listenform::Kennzeichen;
        gelesen.gemarkung = zeile.substr(0, 6);
        gelesen.flur = zeile.substr(6, 3);
        gelesen.flurstück = zeile.substr(9);
        gelesen.kennzeichen = zeile;
        return gelesen;
    }
    const auto teile = Teilen(zeile, strich && blank ? ' ' : '-');
    if (strich && blank && teile.size() >= 3) {
        gelesen.form = Listenform::Leerzeichen;
        gelesen.gemarkung = teile[0];
        gelesen.flur = teile[1];
        gelesen.flurstück = teile[2];
    } else if (strich && !blank && bindestrich && teile.size() >= 4) {
        gelesen.form = Listenform::Bindestrich;
        gelesen.gemarkung = std::string(teile[0]) + std::string(teile[1]);
        gelesen.flur = teile[2];
        gelesen.flurstück = teile[3];
    } else {
        return gelesen;
    }
    gelesen.kennzeichen =
        FlurstückskennzeichenBilden(gelesen.gemarkung, gelesen.flur, gelesen.flurstück);
    return gelesen;
}

std::vector<std::string_view> ListenZeilen(std::string_view text) {
    std::vector<std::string_view> zeilen;
    std::size_t anfang = 0;
    while (true) {
        const auto ende = text.find_first_of("\r\n", anfang);
        if (ende == std::string_view::npos)
            break;
        zeilen.push_back(text.substr(anfang, ende - anfang));
        anfang = ende + (text.substr(ende, 2) == "\r\n" ? 2 : 1);
    }
    const std::string_view rest = text.substr(anfang);
    if (!std::all_of(rest.begin(), rest.end(), IstLeerzeichen))
        zeilen.push_back(rest);
    return zeilen;
}

Listenergebnis DbMarkierungLaden(Kataster& kataster, const std::filesystem::path& liste,
                                 Oberfläche& ui) {
    Listenergebnis ergebnis;
    const std::string pfad = liste.string();
    std::string fehlerliste;
    const auto fehlerlisteSchreiben = [&] {
        DateiSchreiben(pfad + ".err", Utf8NachCp1252(fehlerliste));
    };
    try {
        if (!DateiVorhanden(liste))
            throw Fehler("Die Flurstücksliste \"" + pfad + "\" kann nicht gelesen werden!   ");
        if (IstUtf16Datei(liste))
            throw Fehler(MeldungUtf16(liste));
        const std::string text = DateitextNachUtf8(DateiKomplettLesen(liste));
        const std::vector<std::string_view> zeilen = ListenZeilen(text);
        ergebnis.listenzeilen = zeilen.size();

        // The column first: an index of the table stays valid only while no column is added.
        const std::size_t marke = MarkierungsspalteSicherstellen(kataster);
        for (std::size_t z : kataster.AusgewählteZeilen())
            Markieren(kataster, marke, z, true);
        kataster.AuswahlLeeren();
        std::optional<Kataster::Index> index;
        if (const auto kennzeichen = kataster.SpaltenIndex("Flurstückskennzeichen"))
            index = kataster.IndexBauen(*kennzeichen);

        const std::string anzahl = std::to_string(zeilen.size());
        for (std::size_t i = 0; i < zeilen.size(); ++i) {
            const Listenzeile zeile = ListenzeileLesen(TextSäubern(zeilen[i]));
            if (zeile.form == Listenform::Formatfehler) {
                fehlerlisteSchreiben();
                const std::string meldung =
                    "Bitte überprüfen Sie die Eingabedatei " + pfad + "! Formatfehler?!   ";
                ui.Meldung(meldung, ProduktTitel, Stil::Fehler);
                ergebnis.ergebnis = Ergebnis::Fehlschlag(meldung);
                return ergebnis;
            }
            ui.Status(1, std::to_string(i + 1) + " von " + anzahl + " Flurstück(e) gesucht  ");
            const auto treffer =
                index ? index->Zeilen(zeile.kennzeichen) : std::span<const std::size_t>{};
            if (treffer.empty()) {
                ++ergebnis.nichtGefunden;
                fehlerliste += std::to_string(i + 1) + ", FKZ: " + zeile.kennzeichen + " in \"" +
                               pfad + "\" nicht gefunden\r\n";
                continue;
            }
            ++ergebnis.flurstücke;
            for (std::size_t z : treffer) {
                kataster.Auswählen(z);
                Markieren(kataster, marke, z, true);
            }
        }
        fehlerlisteSchreiben();

        // Marked rows first: two stable sorts, the second by the mark alone, descending, so that
        // within marked and unmarked rows the order of the first stays.
        kataster.Sortieren("Gemarkungsschlüssel,Flur,Grundbuchblatt,Flurstück,Eigentümerposition");
        kataster.Sortieren(SpalteMarkierung, true);

        ergebnis.selektiert = kataster.AnzahlAusgewählt();
        ui.Status(1, std::to_string(ergebnis.selektiert) + " Zeilen selektiert   ");
        if (ergebnis.nichtGefunden > 0) {
            ui.Status(2, std::to_string(ergebnis.nichtGefunden) + " Flurstücken nicht gefunden ");
            ui.Status(3, "Fehler siehe in " + pfad + ".err   ");
        }
        if (ergebnis.selektiert == 0)
            ui.Meldung("Es wurden keine identischen Flurstücke in der Datenbank gefunden und "
                       "selektiert!",
                       ProduktTitel, Stil::Information);
        ergebnis.ergebnis = Ergebnis::Ok();
    } catch (const Fehler& fehler) {
        ui.Meldung(fehler.what(), ProduktTitel, Stil::Fehler);
        ergebnis.ergebnis = Ergebnis::Fehlschlag(fehler.what());
    }
    return ergebnis;
}

} // namespace flurix
