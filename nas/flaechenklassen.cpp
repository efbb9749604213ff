#include "nas/flaechenklassen.hpp"

#include "core/datenbank.hpp"
#include "core/text.hpp"
#include "nas/flaechenergebnis.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/nas_protokoll.hpp"

#include <algorithm>
#include <cmath>

namespace flurix::nas {
namespace {

} // namespace

std::set<std::string, std::less<>> Spaltenliste(Datenbank& db, std::string_view tabelle) {
    std::set<std::string, std::less<>> spalten;
    Anweisung abfrage = db.VorbereitenNativ("SELECT name FROM pragma_table_info(?)");
    abfrage.Binde(tabelle);
    while (abfrage.Schritt())
        spalten.emplace(abfrage.Text(0));
    return spalten;
}

void SpaltenErgänzen(Datenbank& db, std::string_view tabelle, std::span<const std::string_view> spalten) {
    const auto vorhanden = Spaltenliste(db, tabelle);
    for (std::string_view spalte : spalten)
        if (!vorhanden.contains(spalte))
            db.AusführenNativ("ALTER TABLE " + Bezeichner(tabelle) + " ADD COLUMN " + Bezeichner(spalte) + " TEXT");
}

const std::vector<std::string_view>& Attributnamen(Klassenart art) {
    static const std::vector<std::string_view> nutzung = {"funktion", "vegetationsmerkmal"};
    static const std::vector<std::string_view> boden = {
        "kulturart", "bodenart", "zustandsstufeOderBodenstufe", "entstehungsartOderKlimastufeWasserverhaeltnisse",
        "sonstigeAngaben", "bodenzahlOderGruenlandgrundzahl", "ackerzahlOderGruenlandzahl"};
    static const std::vector<std::string_view> sonder = {"bezeichnung", "artDerFestlegung"};
    switch (art) {
    case Klassenart::Bodenschätzung:
        return boden;
    case Klassenart::Sonderfläche:
        return sonder;
    case Klassenart::Nutzung:
        break;
    }
    return nutzung;
}

Klassenart ArtDerKlasse(std::string_view klasse) {
    if (klasse == "AX_Bodenschaetzung")
        return Klassenart::Bodenschätzung;
    if (klasse == "AX_BauRaumOderBodenordnungsrecht")
        return Klassenart::Sonderfläche;
    return Klassenart::Nutzung;
}

std::optional<std::string_view> Klassentabelle::Attribut(std::size_t i, std::string_view spalte) const {
    for (std::size_t k = 0; k < attributnamen.size(); ++k)
        if (attributnamen[k] == spalte)
            return flächen[i].attribute[k];
    return std::nullopt;
}

std::optional<Klassentabelle> KlassentabelleLaden(Datenbank& db, std::string_view name, double pfeilhöhe,
                                                  NasProtokoll& protokoll) {
    const auto spalten = Spaltenliste(db, name);
    const auto spalteOderNull = [&](std::string_view spalte) {
        return spalten.contains(spalte) ? Bezeichner(spalte) : std::string("NULL");
    };
    if (!spalten.contains("gml:exterior")) {
        protokoll.Eintrag(", Tabelle \"" + std::string(name) + "\" ohne Geometriespalten, übergangen");
        return std::nullopt;
    }
    Klassentabelle tabelle;
    tabelle.name = std::string(name);
    tabelle.art = ArtDerKlasse(name);
    std::string sql = "SELECT rowid, " + Bezeichner("gml:exterior") + ", " +
                      spalteOderNull("gml:interior") + ", " + spalteOderNull("gml:Arc");
    for (std::string_view attribut : Attributnamen(tabelle.art))
        if (spalten.contains(attribut)) {
            tabelle.attributnamen.push_back(attribut);
            sql += ", " + Bezeichner(attribut);
        }
    sql += " FROM " + Bezeichner(name) + " ORDER BY rowid";
    Anweisung zeilen = db.VorbereitenNativ(sql);
    std::vector<std::optional<Box>> boxen;
    while (zeilen.Schritt()) {
        Klassenfläche fläche;
        fläche.zeile = zeilen.Ganzzahl(0);
        Ringbefund befund;
        fläche.polygon = PolygonAusTexten(zeilen.Text(1), zeilen.Text(2), zeilen.Text(3), pfeilhöhe, &befund);
        const std::string nummer = std::to_string(tabelle.flächen.size() + 1);
        if (befund.offen)
            protokoll.Liste(", " + tabelle.name + " lfd.Nr. " + nummer + ": Ring nicht geschlossen, geschlossen gerechnet");
        if (befund.zuWenigPunkte)
            protokoll.Liste(", " + tabelle.name + " lfd.Nr. " + nummer + ": Ring mit weniger als drei Punkten übergangen");
        fläche.fläche = Gerundet(GesamtFlaeche(fläche.polygon), 3);
        for (std::size_t k = 0; k < tabelle.attributnamen.size(); ++k)
            fläche.attribute.emplace_back(zeilen.Text(static_cast<int>(4 + k)));
        boxen.push_back(BoxVon(fläche.polygon));
        if (Gerundet(fläche.fläche, 1) == 0)
            tabelle.winzig.push_back(static_cast<std::uint32_t>(tabelle.flächen.size()));
        tabelle.flächen.push_back(std::move(fläche));
    }
    tabelle.index = std::make_unique<Flächenindex>(std::move(boxen));
    return tabelle;
}

const std::string& Flächentexte::Bodentext(std::string_view attribut, std::string_view wert) {
    std::string schlüssel = "AX_Bodenschaetzung;" + std::string(attribut) + ";" + Ersetzen(wert, ";", "|");
    auto it = m_boden.find(schlüssel);
    if (it == m_boden.end()) {
        std::string text = wert.empty() ? std::string() : KonfigZeile(schlüssel, "4", "=", m_werteart);
        it = m_boden.emplace(std::move(schlüssel), std::move(text)).first;
    }
    return it->second;
}

const std::pair<std::string, std::string>& Flächentexte::Nutzungstext(std::string_view klasse,
                                                                    std::string_view attribut,
                                                                    std::string_view wert) {
    std::string schlüssel = "Nutzungsart;" + std::string(klasse) + ";" + std::string(attribut) + ";" + std::string(wert);
    auto it = m_nutzung.find(schlüssel);
    if (it == m_nutzung.end()) {
        const std::string treffer = KonfigZeile(schlüssel, "5;6", "=", m_nutzungsart);
        const auto semikolon = treffer.find(';');
        std::pair<std::string, std::string> texte{treffer.substr(0, semikolon),
                                                  semikolon == std::string::npos ? "" : treffer.substr(semikolon + 1)};
        it = m_nutzung.emplace(std::move(schlüssel), std::move(texte)).first;
    }
    return it->second;
}

} // namespace flurix::nas
