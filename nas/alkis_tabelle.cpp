#include "nas/alkis_tabelle.hpp"

#include "core/datenbank.hpp"
#include "core/fehler.hpp"

#include <array>
#include <stdexcept>

namespace flurix::nas {
namespace {

using namespace std::string_view_literals;

constexpr std::array Buchungsstelle = {"anlass"sv,        "anteil/AX_Anteil/zaehler"sv,
                                       "anteil/AX_Anteil/nenner"sv, "buchungsart"sv,
                                       "laufendeNummer"sv, "beschreibungDesSondereigentums"sv};
constexpr std::array Buchungsblatt = {"id"sv, "buchungsblattkennzeichen"sv, "buchungsblattbezirk"sv,
                                      "buchungsblattnummerMitBuchstabenerweiterung"sv, "blattart"sv};
constexpr std::array Buchungsblattbezirk = {"id"sv, "schluesselGesamt"sv, "bezeichnung"sv,
                                            "schluessel"sv, "gehoertZu"sv};
constexpr std::array Gemeinde = {"id"sv, "schluesselGesamt"sv, "bezeichnung"sv,
                                 "gemeindekennzeichen"sv};
constexpr std::array Gemarkung = {"id"sv, "schluesselGesamt"sv, "bezeichnung"sv, "schluessel"sv};
constexpr std::array Dienststelle = {"id"sv, "schluesselGesamt"sv, "bezeichnung"sv, "schluessel"sv,
                                     "stellenart"sv};
constexpr std::array Katalogeintrag = {"id"sv, "schluesselGesamt"sv, "bezeichnung"sv,
                                       "schluessel"sv};
constexpr std::array MitHausnummer = {"lage"sv, "lagebezeichnung"sv, "hausnummer"sv};
constexpr std::array OhneHausnummer = {"lagebezeichnung"sv, "lage"sv};
constexpr std::array Namensnummer = {"anteil"sv,
                                     "artDerRechtsgemeinschaft"sv,
                                     "beschriebDerRechtsgemeinschaft"sv,
                                     "eigentuemerart"sv,
                                     "laufendeNummerNachDIN1421"sv,
                                     "nummer"sv,
                                     "strichblattnummer"sv};
constexpr std::array Person = {"id"sv,
                               "akademischerGrad"sv,
                               "anrede"sv,
                               "beruf"sv,
                               "geburtsdatum"sv,
                               "geburtsname"sv,
                               "haushaltsstelleLandesgrundbesitz"sv,
                               "nachnameOderFirma"sv,
                               "namensbestandteil"sv,
                               "sonstigeEigenschaften"sv,
                               "vorname"sv,
                               "wirdVertretenVon"sv,
                               "wohnortOderSitz"sv};
constexpr std::array Anschrift = {"id"sv,
                                  "bestimmungsland"sv,
                                  "fax"sv,
                                  "hausnummer"sv,
                                  "ort_Post"sv,
                                  "ortsteil"sv,
                                  "ort_AmtlichesOrtsnamensverzeichnis"sv,
                                  "postleitzahlPostzustellung"sv,
                                  "postleitzahlPostfach"sv,
                                  "postfach"sv,
                                  "strasse"sv,
                                  "telefon"sv,
                                  "weitereAdressen"sv};

const std::array<Quelltabelle, 12> QuellListe = {{
    {"AX_Buchungsstelle", Buchungsstelle},
    {"AX_Buchungsblatt", Buchungsblatt},
    {"AX_Buchungsblattbezirk", Buchungsblattbezirk},
    {"AX_Gemeinde", Gemeinde},
    {"AX_Gemarkung", Gemarkung},
    {"AX_Dienststelle", Dienststelle},
    {"AX_LagebezeichnungKatalogeintrag", Katalogeintrag},
    {"AX_LagebezeichnungMitHausnummer", MitHausnummer},
    {"AX_LagebezeichnungOhneHausnummer", OhneHausnummer},
    {"AX_Namensnummer", Namensnummer},
    {"AX_Person", Person},
    {"AX_Anschrift", Anschrift},
}};

constexpr std::array Zusatz = {"id_AX_Buchungsstelle"sv,
                               "id_an_AX_Buchungsstelle"sv,
                               "Straßenschlüssel"sv,
                               "Lagebezeichnung"sv,
                               "id_AX_LagebezeichnungMitHausnummer"sv,
                               "id_AX_LagebezeichnungOhneHausnummer"sv,
                               "id_AX_Namensnummer"sv,
                               "AnzZeilen_AX_Namensnummer"sv,
                               "id_AP_PTO"sv,
                               "position_AP_PTO"sv,
                               "Hochwert"sv,
                               "Rechtswert"sv,
                               "id_AX_Buchungsblatt"sv,
                               "id_AX_Person"sv,
                               "id_AX_Anschrift"sv};

constexpr std::string_view TextDeklaration = "TEXT COLLATE NOCASE";

/// A column's declaration as the source table has it; text keeps its case-blind comparison.
std::string DeklarationAus(std::string_view typ) {
    if (typ.empty() || typ.starts_with("TEXT") || typ.starts_with("text"))
        return std::string(TextDeklaration);
    return std::string(typ);
}

} // namespace

std::span<const Quelltabelle> Quelltabellen() { return QuellListe; }

std::string AlkisSpalte(std::string_view attribut, std::string_view tabelle) {
    return std::string(attribut) + "_" + std::string(tabelle);
}

AlkisSpalten::AlkisSpalten(Datenbank& db) {
    Hinzufügen("id", std::string(TextDeklaration));
    if (db.TabelleVorhanden("AX_Flurstueck")) {
        auto info = db.VorbereitenNativ("SELECT name, type FROM pragma_table_info('AX_Flurstueck')");
        while (info.Schritt()) {
            const std::string name(info.Text(0));
            if (name == "id" || name == "position" || name == "gml:Arc")
                continue;
            Hinzufügen(name, DeklarationAus(info.Text(1)));
            m_flurstück.emplace_back(name, m_namen.size() - 1);
        }
    }
    // The joined columns take the declaration of their source column.
    for (const auto& quelle : QuellListe) {
        std::unordered_map<std::string, std::string> typen;
        if (db.TabelleVorhanden(quelle.tabelle)) {
            auto info = db.VorbereitenNativ("SELECT name, type FROM pragma_table_info(?)");
            info.Binde(quelle.tabelle);
            while (info.Schritt())
                typen.emplace(info.Text(0), info.Text(1));
        }
        for (std::string_view attribut : quelle.attribute) {
            const auto typ = typen.find(std::string(attribut));
            Hinzufügen(AlkisSpalte(attribut, quelle.tabelle),
                       DeklarationAus(typ == typen.end() ? std::string_view{} : typ->second));
        }
    }
    for (std::string_view spalte : Zusatz)
        Hinzufügen(std::string(spalte), std::string(TextDeklaration));
}

void AlkisSpalten::Hinzufügen(std::string name, std::string deklaration) {
    // A link column that is also a joined attribute (id_AX_Buchungsblatt, ...) stands once.
    if (m_index.contains(name))
        return;
    m_index.emplace(name, m_namen.size());
    m_namen.push_back(std::move(name));
    m_deklarationen.push_back(std::move(deklaration));
}

std::size_t AlkisSpalten::Index(std::string_view name) const {
    const auto i = Suchen(name);
    if (!i)
        throw std::out_of_range("Alkis hat keine Spalte " + std::string(name));
    return *i;
}

std::optional<std::size_t> AlkisSpalten::Suchen(std::string_view name) const {
    const auto it = m_index.find(std::string(name));
    if (it == m_index.end())
        return std::nullopt;
    return it->second;
}

void AlkisAnlegen(Datenbank& db, const AlkisSpalten& spalten) {
    db.AusführenNativ("DROP TABLE IF EXISTS " + Bezeichner(AlkisTabelle));
    std::string sql = "CREATE TABLE " + Bezeichner(AlkisTabelle) + " (";
    for (std::size_t i = 0; i < spalten.Anzahl(); ++i) {
        if (i > 0)
            sql += ", ";
        sql += Bezeichner(spalten.Name(i)) + " " + spalten.Deklaration(i);
    }
    sql += ")";
    db.AusführenNativ(sql);
}

std::string_view AlkisZeile::Text(std::string_view spalte) const {
    const auto& wert = m_werte[m_spalten->Index(spalte)];
    return wert ? std::string_view(*wert) : std::string_view{};
}

void AlkisZeile::Setzen(std::string_view spalte, std::string wert) {
    m_werte[m_spalten->Index(spalte)] = std::move(wert);
}

struct AlkisSchreiber::Impl {
    Anweisung einfügen;
};

AlkisSchreiber::AlkisSchreiber(Datenbank& db, const AlkisSpalten& spalten) {
    std::string sql = "INSERT INTO " + Bezeichner(AlkisTabelle) + " VALUES (";
    for (std::size_t i = 0; i < spalten.Anzahl(); ++i)
        sql += i == 0 ? "?" : ", ?";
    sql += ")";
    m_impl = std::make_unique<Impl>(Impl{db.VorbereitenNativ(sql)});
}

AlkisSchreiber::~AlkisSchreiber() = default;

void AlkisSchreiber::Schreiben(const AlkisZeile& zeile) {
    Anweisung& einfügen = m_impl->einfügen;
    einfügen.Zurücksetzen();
    for (std::size_t i = 0; i < zeile.Anzahl(); ++i) {
        if (const auto& wert = zeile.Wert(i))
            einfügen.Binde(std::string_view(*wert));
        else
            einfügen.Binde(nullptr);
    }
    einfügen.Schritt();
}

} // namespace flurix::nas
