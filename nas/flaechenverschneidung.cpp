#include "nas/flaechenverschneidung.hpp"

#include "core/datei.hpp"
#include "core/datenbank.hpp"
#include "core/nummernformat.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "nas/flaechenergebnis.hpp"
#include "nas/flaechenklassen.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace flurix::nas {
namespace {

using Uhr = std::chrono::steady_clock;
using enum Flächenspalte;

constexpr char TitelNas[] = "Flurix-NAS";
constexpr char TitelVerschneidung[] = "Flächenverschneidung";

constexpr std::string_view AlleKlassen[] = {
    "AX_Bodenschaetzung", "AX_Landwirtschaft", "AX_Wohnbauflaeche", "AX_FlaecheGemischterNutzung", "AX_Wald",
    "AX_SportFreizeitUndErholungsflaeche", "AX_Gehoelz", "AX_Platz", "AX_Bahnverkehr", "AX_Bergbaubetrieb",
    "AX_FlaecheBesondererFunktionalerPraegung", "AX_Flugverkehr", "AX_Friedhof", "AX_Hafenbecken", "AX_Halde",
    "AX_Heide", "AX_IndustrieUndGewerbeflaeche", "AX_Meer", "AX_Moor", "AX_Schiffsverkehr", "AX_Sumpf",
    "AX_TagebauGrubeSteinbruch", "AX_UnkultivierteFlaeche", "AX_UnlandVegetationsloseFlaeche",
    "AX_StehendesGewaesser", "AX_Fliessgewaesser", "AX_Weg", "AX_Strassenverkehr",
    "AX_BauRaumOderBodenordnungsrecht"};
constexpr std::string_view SchnelleKlassen[] = {
    "AX_Bodenschaetzung", "AX_Landwirtschaft", "AX_FlaecheGemischterNutzung", "AX_Wald", "AX_Gehoelz",
    "AX_UnkultivierteFlaeche", "AX_UnlandVegetationsloseFlaeche"};

std::string Dauer(double sekunden) {
    const auto s = static_cast<long long>(std::max(sekunden, 0.0));
    char puffer[40];
    std::snprintf(puffer, sizeof puffer, "%02lld:%02lld:%02lld", s / 3600, s / 60 % 60, s % 60);
    return puffer;
}

std::string Nr(std::size_t nummer) {
    char puffer[24];
    std::snprintf(puffer, sizeof puffer, "%04zu", nummer);
    return puffer;
}

/// One parcel of the walk.
struct Flurstück {
    std::int64_t zeile = 0;
    std::string kennzeichen, zähler, nenner;
    Polygonmenge polygon;
    Box box{};
    double fläche = 0;
    std::optional<Schnittpolygon> schnitt;
};

class Lauf {
public:
    Lauf(Datenbank& db, const Flächenauftrag& auftrag, NasProtokoll& protokoll, Oberfläche& ui,
         Flächenbericht& bericht)
        : m_db(db), m_auftrag(auftrag), m_protokoll(protokoll), m_ui(ui), m_bericht(bericht),
          m_texte(KonfigText(auftrag.konfigOrdner / "ALKIS_Werteart.dat"),
                  KonfigText(auftrag.konfigOrdner / "ALKIS_Nutzungsart.dat")),
          m_zeichnen(!auftrag.optionen.svgLöschen && !auftrag.zeichnungsordner.empty()) {}

    void KlassenLaden(const std::vector<std::string_view>& namen) {
        for (std::string_view name : namen)
            if (DAO_TabelleVorhanden(m_db, name))
                if (auto tabelle = KlassentabelleLaden(m_db, name, m_auftrag.pfeilhöhe, m_protokoll))
                    m_klassen.push_back(std::move(*tabelle));
    }

    void Gehen(const std::vector<std::int64_t>& zeilen);
    void KlassenSchreiben();
    const std::vector<std::int64_t>& Berechnet() const { return m_berechnet; }

private:
    bool FlurstückLesen(Anweisung& lesen, std::int64_t zeile, Flurstück& f);
    void FlurstückRechnen(Flurstück& f);
    void Prüfen(Flurstück& f, Klassentabelle& tabelle, std::uint32_t i);
    std::optional<double> Schnittfläche(Flurstück& f, Klassentabelle& tabelle, std::uint32_t i, const Box& box,
                                        bool& gleich);
    void Eintragen(Flurstück& f, Klassentabelle& tabelle, std::uint32_t i, double a, bool gleich);
    void Zeichnen(const Flurstück& f, const Klassentabelle& tabelle, std::uint32_t i, const Schnitt& s);
    void StatusZeigen(const Flurstück& f, std::size_t nummer, std::size_t alle);
    std::string Prozent() const { return ", " + Zahlmuster(m_prozent, "0.0") + "%; "; }

    Datenbank& m_db;
    const Flächenauftrag& m_auftrag;
    NasProtokoll& m_protokoll;
    Oberfläche& m_ui;
    Flächenbericht& m_bericht;
    Flächentexte m_texte;
    bool m_zeichnen;
    std::vector<Klassentabelle> m_klassen;
    std::vector<std::int64_t> m_berechnet;
    Flächenwerte m_werte;
    double m_prozent = 0;
    Uhr::time_point m_beginn = Uhr::now();
    Uhr::time_point m_letzterStatus{};
};

void Lauf::StatusZeigen(const Flurstück& f, std::size_t nummer, std::size_t alle) {
    const auto jetzt = Uhr::now();
    if (nummer > 1 && jetzt - m_letzterStatus < std::chrono::milliseconds(250))
        return;
    m_letzterStatus = jetzt;
    const double vergangen = std::chrono::duration<double>(jetzt - m_beginn).count();
    const double dauer = nummer > 1 ? vergangen / static_cast<double>(nummer - 1) * static_cast<double>(alle) : 360000;
    m_ui.Status(1, "Abbruch Flächenverschneidung mit [ESC], " + std::to_string(nummer) + " Flst., Berechnungsdauer ca. " +
                       Dauer(dauer) + ", FKZ: " + f.kennzeichen);
    m_ui.Fortschritt(static_cast<long long>(nummer), static_cast<long long>(alle));
}

bool Lauf::FlurstückLesen(Anweisung& lesen, std::int64_t zeile, Flurstück& f) {
    lesen.Zurücksetzen();
    lesen.Binde(zeile);
    if (!lesen.Schritt())
        return false;
    f.zeile = zeile;
    f.kennzeichen = std::string(lesen.Text(0));
    f.zähler = std::string(lesen.Text(1));
    f.nenner = std::string(lesen.Text(2));
    Ringbefund befund;
    f.polygon = PolygonAusTexten(lesen.Text(3), lesen.Text(4), lesen.Text(5), m_auftrag.pfeilhöhe, &befund);
    if (befund.offen)
        m_protokoll.Liste(", Flst.: " + f.kennzeichen + " Ring nicht geschlossen, geschlossen gerechnet");
    if (befund.zuWenigPunkte)
        m_protokoll.Liste(", Flst.: " + f.kennzeichen + " Ring mit weniger als drei Punkten übergangen");
    f.schnitt.reset();
    return true;
}

void Lauf::Gehen(const std::vector<std::int64_t>& zeilen) {
    Anweisung lesen = m_db.VorbereitenNativ(
        "SELECT flurstueckskennzeichen, \"flurstuecksnummer/AX_Flurstuecksnummer/zaehler\", "
        "\"flurstuecksnummer/AX_Flurstuecksnummer/nenner\", \"gml:exterior\", \"gml:interior\", \"gml:Arc\" "
        "FROM AX_Flurstueck WHERE rowid = ?");
    std::string sql = "UPDATE AX_Flurstueck SET ";
    for (std::size_t s = 0; s < FlächenspaltenAnzahl; ++s)
        sql += (s ? ", " : "") + Bezeichner(FlächenspaltenNamen[s]) + " = ?";
    Anweisung schreiben = m_db.VorbereitenNativ(sql + " WHERE rowid = ?");

    Transaktion transaktion(m_db);
    Flurstück f;
    for (std::size_t n = 0; n < zeilen.size(); ++n) {
        if (m_ui.AbbruchGewünscht()) {
            const Fragestellung frage{"Wollen Sie die Berechnungen wirklich abbrechen?   ", TitelVerschneidung,
                                      Knöpfe::JaNein, Antwort::Nein, Antwort::Ja};
            if (m_ui.Frage(frage) == Antwort::Ja) {
                m_protokoll.Eintrag(", Abbruch Flächenverschneidung");
                m_bericht.abgebrochen = true;
                break;
            }
        }
        if (!FlurstückLesen(lesen, zeilen[n], f))
            continue;
        if (m_auftrag.auswahl && !m_auftrag.auswahl->contains(f.kennzeichen))
            continue;
        m_prozent = static_cast<double>(n + 1) * 100.0 / static_cast<double>(zeilen.size());
        StatusZeigen(f, n + 1, zeilen.size());
        FlurstückRechnen(f);
        schreiben.Zurücksetzen();
        for (std::size_t s = 0; s < FlächenspaltenAnzahl; ++s)
            schreiben.Binde(m_werte[static_cast<Flächenspalte>(s)]);
        schreiben.Binde(f.zeile);
        schreiben.Schritt();
        m_berechnet.push_back(f.zeile);
    }
    transaktion.Bestätigen();
}

void Lauf::FlurstückRechnen(Flurstück& f) {
    ++m_bericht.flurstücke;
    f.fläche = GesamtFlaeche(f.polygon);
    m_werte.Beginnen(Gerundet(f.fläche, 2));
    const auto box = BoxVon(f.polygon);
    if (!box) {
        m_protokoll.Liste(", Flst.: " + f.kennzeichen + " ohne Geometrie");
    } else {
        f.box = *box;
        for (Klassentabelle& tabelle : m_klassen) {
            // The rows whose boxes meet the parcel's and the tiny polygons, in row order.
            std::vector<std::uint32_t> zeilen = tabelle.index->Treffer(f.box);
            if (!tabelle.winzig.empty()) {
                std::vector<std::uint32_t> alle;
                std::set_union(zeilen.begin(), zeilen.end(), tabelle.winzig.begin(), tabelle.winzig.end(),
                               std::back_inserter(alle));
                zeilen = std::move(alle);
            }
            for (std::uint32_t i : zeilen)
                Prüfen(f, tabelle, i);
            std::erase_if(tabelle.winzig, [&](std::uint32_t i) { return !tabelle.flächen[i].verbraucht.empty(); });
        }
    }
    if (!m_werte.HatTreffer()) {
        ++m_bericht.ohneVerschneidung;
        m_protokoll.Eintrag(", Info: Flst. " + f.kennzeichen + " ohne Verschneidung");
        m_protokoll.Liste(Prozent() + "FKZ: " + f.kennzeichen + "; Flächenverschneidung ohne Ergebnis für: " +
                          f.zähler + "/" + f.nenner);
    }
}

void Lauf::Prüfen(Flurstück& f, Klassentabelle& tabelle, std::uint32_t i) {
    Klassenfläche& fläche = tabelle.flächen[i];
    if (fläche.verbraucht.starts_with("True") || !m_werte[INFO_BauRaumOderBodenordnungsrecht].empty())
        return;
    if (!fläche.erreicht) {
        fläche.erreicht = true;
    } else if (Gerundet(fläche.fläche, 1) == Gerundet(fläche.summe, 1)) {
        fläche.verbraucht = "True " + f.kennzeichen;
        return;
    }
    const std::optional<Box>& box = tabelle.index->BoxVon(i);
    if (!box || !box->Überlappt(f.box))
        return;
    bool gleich = false;
    const std::optional<double> a = Schnittfläche(f, tabelle, i, *box, gleich);
    if (a && *a > m_auftrag.minFläche)
        Eintragen(f, tabelle, i, *a, gleich);
}

std::optional<double> Lauf::Schnittfläche(Flurstück& f, Klassentabelle& tabelle, std::uint32_t i,
                                          const Box& box, bool& gleich) {
    Klassenfläche& fläche = tabelle.flächen[i];
    if (RingeGleich(f.polygon, fläche.polygon)) {
        ++m_bericht.gleicheUmringe;
        gleich = true;
        return f.fläche;
    }
    if (!KönnenSichTreffen(f.polygon, f.box, fläche.polygon, box))
        return std::nullopt;
    try {
        if (!f.schnitt)
            f.schnitt.emplace(f.polygon);
        if (!fläche.schnitt)
            fläche.schnitt.emplace(fläche.polygon);
        const Schnitt schnitt = Schneiden(*f.schnitt, *fläche.schnitt);
        ++m_bericht.schnitte;
        if (m_zeichnen)
            Zeichnen(f, tabelle, i, schnitt);
        if (schnitt.ringe.empty())
            m_protokoll.Liste(Prozent() + "keine Clipping-Fläche gefunden!; Fläche: " + tabelle.name + " lfd.Nr. " +
                              Nr(i + 1) + "; FKZ: " + f.kennzeichen);
        return schnitt.fläche;
    } catch (const Fehler& e) {
        m_protokoll.Liste(", Flst.: " + f.zähler + "/" + f.nenner + " " + tabelle.name + " lfd.Nr. " + Nr(i + 1) +
                          ": " + e.what());
        return std::nullopt;
    }
}

void Lauf::Eintragen(Flurstück& f, Klassentabelle& tabelle, std::uint32_t i, double a, bool gleich) {
    Klassenfläche& fläche = tabelle.flächen[i];
    fläche.summe = Gerundet(fläche.summe + a, 3);
    const std::string ort = tabelle.name + " lfd.Nr. " + Nr(i + 1);
    if (Gerundet(fläche.summe, 1) >= Gerundet(fläche.fläche, 1)) {
        fläche.verbraucht = "True " + f.kennzeichen;
        m_protokoll.Liste(Prozent() + "Fläche verbraucht; FKZ: " + f.kennzeichen + "; " + ort);
    }
    ++m_bericht.treffer;
    switch (tabelle.art) {
    case Klassenart::Sonderfläche: {
        const std::string bezeichnung(tabelle.Attribut(i, "bezeichnung").value_or(""));
        m_werte.Sonderfläche(bezeichnung, tabelle.Attribut(i, "artDerFestlegung").value_or(""));
        m_protokoll.Liste(Prozent() + "Sonderfläche: " + f.kennzeichen + "; lfd.Nr." + Nr(i + 1) +
                          "; mit Bezeichnung: " + bezeichnung);
        return;
    }
    case Klassenart::Bodenschätzung: {
        Bodenwerte w;
        const auto attribut = [&](std::string_view name) { return std::string(tabelle.Attribut(i, name).value_or("")); };
        w.kulturart = attribut("kulturart");
        w.bodenart = attribut("bodenart");
        w.zustandsstufe = attribut("zustandsstufeOderBodenstufe");
        w.entstehungsart = attribut("entstehungsartOderKlimastufeWasserverhaeltnisse");
        w.sonstigeAngaben = attribut("sonstigeAngaben");
        w.bodenzahl = attribut("bodenzahlOderGruenlandgrundzahl");
        w.ackerzahl = attribut("ackerzahlOderGruenlandzahl");
        w.kulturartText = m_texte.Bodentext("kulturart", w.kulturart);
        w.bodenartText = m_texte.Bodentext("bodenart", w.bodenart);
        w.zustandsstufeText = m_texte.Bodentext("zustandsstufeOderBodenstufe", w.zustandsstufe);
        w.entstehungsartText = m_texte.Bodentext("entstehungsartOderKlimastufeWasserverhaeltnisse", w.entstehungsart);
        w.sonstigeText = m_texte.Bodentext("sonstigeAngaben", w.sonstigeAngaben);
        m_werte.Bodenschätzung(w, a);
        break;
    }
    case Klassenart::Nutzung: {
        Nutzungswerte w;
        w.klasse = tabelle.name;
        const auto funktion = tabelle.Attribut(i, "funktion");
        const auto vegetation = tabelle.Attribut(i, "vegetationsmerkmal");
        if (funktion)
            w.funktion = std::string(*funktion);
        if (vegetation)
            w.vegetationsmerkmal = std::string(*vegetation);
        const std::string_view attribut = funktion ? "funktion" : "vegetationsmerkmal";
        std::string_view code = funktion ? *funktion : vegetation.value_or("");
        if (TrimmeLeerzeichen(code).empty())
            code = "0";
        const auto& [text, schlüssel] = m_texte.Nutzungstext(tabelle.name, attribut, code);
        w.beschreibung = text;
        w.schlüssel = schlüssel;
        m_werte.Nutzung(w, a);
        break;
    }
    }
    m_protokoll.Liste(Prozent() + "FKZ: " + f.kennzeichen + "; " + ort + "; Fläche: " + ZahlGerundet(a, 3) +
                      (gleich ? "; Umring ALKIS = Umring NA" : ""));
}

void Lauf::Zeichnen(const Flurstück& f, const Klassentabelle& tabelle, std::uint32_t i, const Schnitt& s) {
    const std::string stamm = std::string(TrimmeLeerzeichen(f.zähler)) + "-" + f.nenner + "_" + tabelle.name +
                              "_Nr." + std::to_string(i + 1);
    const auto& ordner = m_auftrag.zeichnungsordner;
    try {
        const Klassenfläche& fläche = tabelle.flächen[i];
        DateiSchreiben(ordner / (stamm + ".svg"), SchnittSvg(f.polygon, fläche.polygon, s.ringe));
        DateiSchreiben(ordner / (stamm + "_fkz.clp"), ClpText(f.polygon));
        DateiSchreiben(ordner / (stamm + "_na.clp"), ClpText(fläche.polygon));
        DateiSchreiben(ordner / (stamm + "_solution.txt"), ClpText(Polygonmenge{s.ringe, {}}));
    } catch (const Fehler& e) {
        m_protokoll.Eintrag(std::string(", ") + e.what() + "; keine weiteren Zeichnungen");
        m_zeichnen = false;
    }
}

void Lauf::KlassenSchreiben() {
    for (const Klassentabelle& tabelle : m_klassen) {
        // Every row gets all three values, which is what dropping and making them anew comes to.
        constexpr std::string_view spalten[] = {"checkFullNA", "checkAlkisGesamtFlaeche", "checkAlkisSummeTeilFlaechen"};
        SpaltenErgänzen(m_db, tabelle.name, spalten);
        Anweisung schreiben = m_db.VorbereitenNativ(
            "UPDATE " + Bezeichner(tabelle.name) +
            " SET checkFullNA = ?, checkAlkisGesamtFlaeche = ?, checkAlkisSummeTeilFlaechen = ? WHERE rowid = ?");
        Transaktion transaktion(m_db);
        for (const Klassenfläche& fläche : tabelle.flächen) {
            schreiben.Zurücksetzen();
            if (fläche.verbraucht.empty())
                schreiben.Binde(nullptr);
            else
                schreiben.Binde(fläche.verbraucht);
            schreiben.Binde(ZahlGerundet(fläche.fläche, 3)).Binde(ZahlGerundet(fläche.summe, 3)).Binde(fläche.zeile);
            schreiben.Schritt();
        }
        transaktion.Bestätigen();
    }
}

/// The fitting of the computed parcels to their official areas.
void Anpassen(Datenbank& db, const std::vector<std::int64_t>& zeilen, NasProtokoll& protokoll, Oberfläche& ui) {
    ui.Status(1, "Flächenprüfung...");
    protokoll.Eintrag(", Flächenprüfung...");
    protokoll.Liste(", Flächenprüfung für folgende Flächen...");
    std::string spalten;
    std::string setzen;
    for (std::size_t s = 0; s < FlächenspaltenAnzahl; ++s) {
        spalten += ", " + Bezeichner(FlächenspaltenNamen[s]);
        setzen += (s ? ", " : "") + Bezeichner(FlächenspaltenNamen[s]) + " = ?";
    }
    Anweisung lesen = db.VorbereitenNativ("SELECT flurstueckskennzeichen, amtlicheFlaeche" + spalten +
                                          " FROM AX_Flurstueck WHERE rowid = ?");
    Anweisung schreiben = db.VorbereitenNativ("UPDATE AX_Flurstueck SET " + setzen + " WHERE rowid = ?");
    Transaktion transaktion(db);
    Flächenwerte werte;
    for (std::int64_t zeile : zeilen) {
        lesen.Zurücksetzen();
        lesen.Binde(zeile);
        if (!lesen.Schritt())
            continue;
        const std::string kennzeichen(lesen.Text(0));
        const double amtlich = ZahlLesen(lesen.Text(1));
        for (std::size_t s = 0; s < FlächenspaltenAnzahl; ++s)
            werte[static_cast<Flächenspalte>(s)] = std::string(lesen.Text(static_cast<int>(2 + s)));
        FlächenAnpassen(werte, amtlich);
        protokoll.Liste(", NA-Fläche FKZ: " + kennzeichen + "; " + werte[AlkisNaFlaeche] + "; " +
                        werte[AlkisAmtlichFlaechenDifferenz]);
        protokoll.Liste(", BS-Fläche FKZ: " + kennzeichen + "; " + werte[BS_Flaeche] + "; " +
                        werte[AlkisBSFlaechenDifferenz]);
        schreiben.Zurücksetzen();
        for (std::size_t s = 0; s < FlächenspaltenAnzahl; ++s)
            schreiben.Binde(werte[static_cast<Flächenspalte>(s)]);
        schreiben.Binde(zeile);
        schreiben.Schritt();
    }
    transaktion.Bestätigen();
}

std::vector<std::int64_t> Flurstückszeilen(Datenbank& db) {
    std::vector<std::int64_t> zeilen;
    Anweisung alle = db.VorbereitenNativ("SELECT rowid FROM AX_Flurstueck ORDER BY rowid");
    while (alle.Schritt())
        zeilen.push_back(alle.Ganzzahl(0));
    return zeilen;
}

/// The result columns the walk writes, added where the node file of the database lacked them.
void ErgebnisspaltenAnlegen(Datenbank& db) {
    std::vector<std::string_view> spalten(FlächenspaltenNamen.begin(), FlächenspaltenNamen.end());
    for (std::string_view gelesen : {"flurstuecksnummer/AX_Flurstuecksnummer/zaehler",
                                     "flurstuecksnummer/AX_Flurstuecksnummer/nenner", "flurstueckskennzeichen",
                                     "amtlicheFlaeche", "gml:exterior", "gml:interior", "gml:Arc"})
        spalten.push_back(gelesen);
    SpaltenErgänzen(db, "AX_Flurstueck", spalten);
}

} // namespace

std::vector<std::string_view> Klassenliste(const NasOptionen& o) {
    if (o.quickNaBerechnung)
        return {std::begin(SchnelleKlassen), std::end(SchnelleKlassen)};
    if (o.quickBSBerechnung)
        return {"AX_Bodenschaetzung"};
    if (o.quickBROBBerechnung)
        return {"AX_BauRaumOderBodenordnungsrecht"};
    if (o.quickLWBerechnung)
        return {"AX_Landwirtschaft"};
    if (o.mitNaBerechnung)
        return {std::begin(AlleKlassen), std::end(AlleKlassen)};
    return {};
}

bool AuswahlNaBerechnung(Oberfläche& ui, std::optional<std::size_t> ausgewählt) {
    const std::string wer = ausgewählt ? "Sollen für " + std::to_string(*ausgewählt) + " Flurstücke"
                                       : std::string("Sollen für alle Flurstücke");
    const Fragestellung frage{wer + " zusätzlich Flächenverschneidungen durchgeführt werden?   ", TitelVerschneidung,
                              Knöpfe::JaNein, Antwort::Ja, Antwort::Ja};
    return ui.Frage(frage) == Antwort::Ja;
}

Ergebnis Flächenverschneidung(Datenbank& db, const Flächenauftrag& auftrag, NasProtokoll& protokoll,
                              Oberfläche& ui, Flächenbericht& bericht) {
    bericht = Flächenbericht{};
    const std::vector<std::string_view> klassen = Klassenliste(auftrag.optionen);
    if (klassen.empty())
        return Ergebnis::Ok();
    if (!auftrag.optionen.svgLöschen && !auftrag.zeichnungsordner.empty())
        DateienLöschen(auftrag.zeichnungsordner, "*.svg");
    ui.Status(1, "Flächenzuordnung...");
    protokoll.Eintrag(", Flächenzuordnung...");
    if (!DAO_TabelleVorhanden(db, "AX_Person") || DAO_Zeilenzahl(db, "AX_Person") == 0) {
        const Fragestellung frage{"Keine Eigentümerdaten vorhanden! Zuordnung abbrechen?   ", TitelNas,
                                  Knöpfe::JaNein, Antwort::Ja, Antwort::Nein};
        if (ui.Frage(frage) == Antwort::Ja) {
            protokoll.Eintrag(", Flächenzuordnung abgebrochen: keine Eigentümerdaten");
            return Ergebnis::Ok();
        }
    }
    if (!DAO_TabelleVorhanden(db, "AX_Flurstueck") || DAO_Zeilenzahl(db, "AX_Flurstueck") == 0) {
        ui.Meldung("Keine Flurstücksdaten vorhanden! Abbruch!   ", TitelNas, Stil::Warnung);
        protokoll.Eintrag(", Keine Flurstücksdaten vorhanden! Abbruch!");
        return Ergebnis::Fehlschlag("Keine Flurstücksdaten vorhanden!");
    }
    ErgebnisspaltenAnlegen(db);
    ProzessZahlenformat zahlenformat;
    const std::string vorher = zahlenformat.EinsKommaEins();
    Lauf lauf(db, auftrag, protokoll, ui, bericht);
    lauf.KlassenLaden(klassen);
    lauf.Gehen(Flurstückszeilen(db));
    lauf.KlassenSchreiben();
    if (auftrag.optionen.mitFlächenAnpassung)
        Anpassen(db, lauf.Berechnet(), protokoll, ui);
    protokoll.Eintrag(", Flächenzuordnung beendet: " + std::to_string(bericht.flurstücke) + " Flurstücke, " +
                      std::to_string(bericht.schnitte) + " Verschneidungen, " + std::to_string(bericht.treffer) +
                      " Teilflächen");
    // Numbers are written with "." whatever the locale; a change of the process's number format
    // during the run still means that something else in the process misbehaved.
    if (zahlenformat.EinsKommaEins() != vorher)
        ui.Meldung("Die Ländereinstellungen wurden während der Datenbearbeitung geändert!\n"
                   "Die Ergebnisse sind wahrscheinlich nicht korrekt!\n"
                   "Bitte führen Sie Ihre letzte Aktion erneut durch!",
                   TitelVerschneidung, Stil::Warnung);
    return Ergebnis::Ok();
}

} // namespace flurix::nas
