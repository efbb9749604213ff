#include "nas/nas_abfrage.hpp"

#include "core/datenbank.hpp"
#include "core/fehler.hpp"
#include "core/jet_sql.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

namespace flurix::nas {
namespace {

constexpr char Titel[] = "Flurix-NAS";

char AsciiGroß(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 0x20) : c; }

bool EnthältOhneFall(std::string_view text, std::string_view teil) {
    return std::search(text.begin(), text.end(), teil.begin(), teil.end(),
                       [](char a, char b) { return AsciiGroß(a) == AsciiGroß(b); }) != text.end();
}

bool GleichOhneFall(std::string_view a, std::string_view b) {
    return a.size() == b.size() && EnthältOhneFall(a, b);
}

/// The first keyword of a statement in upper case, past blanks, comments and "(".
std::string ErstesWort(std::string_view sql) {
    std::size_t i = 0;
    while (i < sql.size()) {
        if (sql[i] == ' ' || sql[i] == '\t' || sql[i] == '\r' || sql[i] == '\n' || sql[i] == '(') {
            ++i;
        } else if (sql.substr(i, 2) == "--") {
            i = std::min(sql.find('\n', i), sql.size());
        } else if (sql.substr(i, 2) == "/*") {
            const auto ende = sql.find("*/", i + 2);
            i = ende == std::string_view::npos ? sql.size() : ende + 2;
        } else {
            break;
        }
    }
    std::string wort;
    for (; i < sql.size() && ((sql[i] | 0x20) >= 'a' && (sql[i] | 0x20) <= 'z'); ++i)
        wort += AsciiGroß(sql[i]);
    return wort;
}

/// A statement as the inside of "( ... )": the closing ";" and blanks behind it dropped.
std::string OhneSchluss(std::string_view sql) {
    while (!sql.empty() && (sql.back() == ';' || sql.back() == ' ' || sql.back() == '\t' ||
                            sql.back() == '\r' || sql.back() == '\n'))
        sql.remove_suffix(1);
    return std::string(sql);
}

std::vector<Abfragespalte> Tabellenspalten(Datenbank& db, std::string_view tabelle) {
    auto info = db.VorbereitenNativ("SELECT name, type FROM pragma_table_info(?)");
    info.Binde(tabelle);
    std::vector<Abfragespalte> spalten;
    while (info.Schritt()) {
        Abfragespalte spalte{std::string(info.Text(0)), std::string(info.Text(1))};
        spalte.zahl = IstZahlentyp(spalte.typ);
        spalten.push_back(std::move(spalte));
    }
    return spalten;
}

/// A name under which the table's rowid can be read: the first of SQLite's three that no column
/// takes. "" when the table has no rowid (a view, a table WITHOUT ROWID).
std::string RowidName(Datenbank& db, std::string_view tabelle, std::string_view quelle,
                      const std::vector<Abfragespalte>& spalten) {
    // A view answers for "rowid" too, but with NULL.
    auto art = db.VorbereitenNativ(
        "SELECT type FROM sqlite_master WHERE name = ? COLLATE NOCASE AND type = 'view'");
    art.Binde(tabelle);
    if (art.Schritt())
        return {};
    for (const char* name : {"rowid", "_rowid_", "oid"}) {
        const bool belegt = std::any_of(spalten.begin(), spalten.end(), [&](const auto& s) {
            return GleichOhneFall(s.name, name);
        });
        if (belegt)
            continue;
        try {
            db.VorbereitenNativ("SELECT " + std::string(name) + " FROM " + std::string(quelle) +
                                " LIMIT 0");
            return name;
        } catch (const Fehler&) {
            return {};
        }
    }
    return {};
}

std::int64_t EinWert(Datenbank& db, const std::string& sql) {
    auto anweisung = db.VorbereitenNativ(sql);
    return anweisung.Schritt() ? anweisung.Ganzzahl(0) : 0;
}

/// "12,5" as the number 12.5; nothing when the text is no number.
std::optional<double> Zahl(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    std::string punkt(text);
    std::replace(punkt.begin(), punkt.end(), ',', '.');
    if (!punkt.empty() && punkt.front() == '+')
        punkt.erase(0, 1);
    double zahl = 0;
    const auto [ende, fehler] = std::from_chars(punkt.data(), punkt.data() + punkt.size(), zahl);
    if (punkt.empty() || fehler != std::errc() || ende != punkt.data() + punkt.size() ||
        !std::isfinite(zahl))
        return std::nullopt;
    return zahl;
}

/// The user's text inside a Jet string after LIKE: `"` doubled; `#` (a digit in Jet) and `[` (a
/// character list) written as one plain character in brackets.
std::string MusterText(std::string_view text) {
    std::string muster;
    for (const char c : text) {
        if (c == '"')
            muster += "\"\"";
        else if (c == '#' || c == '[')
            muster.append("[").append(1, c).append("]");
        else
            muster += c;
    }
    return muster;
}

} // namespace

bool IstZahlentyp(std::string_view typ) {
    if (EnthältOhneFall(typ, "INT"))
        return true;
    for (const char* text : {"CHAR", "CLOB", "TEXT", "BLOB"})
        if (EnthältOhneFall(typ, text))
            return false;
    return typ.find_first_not_of(' ') != std::string_view::npos;
}

// --- Seitenabfrage ---------------------------------------------------------------------------

Seitenabfrage::Seitenabfrage(Datenbank& db, std::string tabelle, std::string quelle,
                             std::vector<Abfragespalte> spalten, std::string rowid)
    : m_db(&db), m_tabelle(std::move(tabelle)), m_quelle(std::move(quelle)),
      m_spalten(std::move(spalten)), m_rowid(std::move(rowid)), m_leer(m_spalten.size()) {
    m_seiten.reserve(BehalteneSeiten);
}

Seitenabfrage Seitenabfrage::ÜberTabelle(Datenbank& db, std::string_view tabelle) {
    auto spalten = Tabellenspalten(db, tabelle);
    if (spalten.empty())
        throw Fehler("Eine Tabelle \"" + std::string(tabelle) +
                     "\" gibt es in der NAS-Datenbank nicht");
    const std::string quelle = Bezeichner(tabelle);
    std::string rowid = RowidName(db, tabelle, quelle, spalten);
    return Seitenabfrage(db, std::string(tabelle), quelle, std::move(spalten), std::move(rowid));
}

Seitenabfrage Seitenabfrage::ÜberAbfrage(Datenbank& db, std::string_view select) {
    // The outer SELECT names the columns as the pages see them (a name twice gets a suffix).
    const std::string quelle = "(\n" + OhneSchluss(select) + "\n)";
    auto anweisung = db.VorbereitenNativ("SELECT * FROM " + quelle);
    std::vector<Abfragespalte> spalten;
    for (int i = 0; i < anweisung.Spaltenanzahl(); ++i) {
        Abfragespalte spalte{std::string(anweisung.Spaltenname(i)), {}};
        // The declared type of a column taken unchanged from a table.
        if (const auto herkunft = anweisung.Spaltentabelle(i); !herkunft.empty())
            for (const auto& s : Tabellenspalten(db, herkunft))
                if (s.name == spalte.name)
                    spalte.typ = s.typ;
        spalte.zahl = IstZahlentyp(spalte.typ);
        spalten.push_back(std::move(spalte));
    }
    return Seitenabfrage(db, {}, quelle, std::move(spalten), {});
}

std::string Seitenabfrage::Auswahlquelle() const {
    return " FROM " + m_quelle + (m_filter.empty() ? "" : " WHERE (" + m_filter + "\n)");
}

std::string Seitenabfrage::Ordnung() const {
    if (!Schlüsselweise()) {
        if (m_sortierung < 0)
            return {};
        // The other columns after it: OFFSET needs the same order at every page, and SQLite
        // keeps no order among equal values.
        std::string ordnung =
            " ORDER BY " + std::to_string(m_sortierung + 1) + (m_absteigend ? " DESC" : "");
        for (std::size_t i = 1; i <= m_spalten.size(); ++i)
            if (static_cast<int>(i) != m_sortierung + 1)
                ordnung += ", " + std::to_string(i);
        return ordnung;
    }
    std::string ordnung = " ORDER BY ";
    if (m_sortierung >= 0)
        ordnung += Bezeichner(m_spalten[static_cast<std::size_t>(m_sortierung)].name) +
                   (m_absteigend ? " DESC, " : ", ");
    return ordnung + m_rowid;
}

std::string Seitenabfrage::Spaltenliste() const {
    // A table's columns by name: a column added under the grid doesn't shift the cells.
    if (!Schlüsselweise())
        return "*";
    std::string liste;
    for (const auto& spalte : m_spalten)
        liste += (liste.empty() ? "" : ", ") + Bezeichner(spalte.name);
    return liste;
}

std::string Seitenabfrage::Sql() const {
    return "SELECT " + Spaltenliste() + Auswahlquelle() + Ordnung();
}

void Seitenabfrage::Verwerfen() {
    m_zeilen.reset();
    m_schlüssel.clear();
    m_schlüssel.shrink_to_fit();
    m_seiten.clear();
}

void Seitenabfrage::Sortieren(int spalte, bool absteigend) {
    if (spalte >= static_cast<int>(m_spalten.size()))
        throw Fehler("Sortierung: eine Spalte Nr. " + std::to_string(spalte) + " gibt es nicht");
    m_sortierung = std::max(spalte, -1);
    m_absteigend = m_sortierung >= 0 && absteigend;
    Verwerfen();
}

void Seitenabfrage::Filtern(std::string_view jetBedingung) {
    std::string filter;
    if (jetBedingung.find_first_not_of(" \t\r\n") != std::string_view::npos) {
        filter = m_db->Übersetzen(jetBedingung);
        // Tried before it is kept: a condition that doesn't prepare leaves the rows as they were.
        m_db->VorbereitenNativ("SELECT 1 FROM " + m_quelle + " WHERE (" + filter + "\n) LIMIT 0");
    }
    m_filter = std::move(filter);
    Verwerfen();
}

void Seitenabfrage::Zählen() {
    m_lückenlos = false;
    m_schlüssel.clear();
    if (!Schlüsselweise()) {
        m_zeilen = EinWert(*m_db, "SELECT count(*)" + Auswahlquelle());
        return;
    }
    if (m_filter.empty() && m_sortierung < 0) {
        const std::int64_t zeilen = EinWert(*m_db, "SELECT count(*) FROM " + m_quelle);
        // min and max of the rowid are single seeks; together with the count they tell whether
        // the rowids run without gaps.
        m_ersteRowid = EinWert(*m_db, "SELECT min(" + m_rowid + ") FROM " + m_quelle);
        const std::int64_t letzte = EinWert(*m_db, "SELECT max(" + m_rowid + ") FROM " + m_quelle);
        m_lückenlos = zeilen == 0 || letzte - m_ersteRowid + 1 == zeilen;
        if (m_lückenlos) {
            m_zeilen = zeilen;
            return;
        }
        auto durchgang =
            m_db->VorbereitenNativ("SELECT " + m_rowid + " FROM " + m_quelle + Ordnung());
        std::int64_t n = 0;
        for (; durchgang.Schritt(); ++n)
            if (n % SeitenGröße == 0)
                m_schlüssel.push_back(durchgang.Ganzzahl(0));
        m_zeilen = n;
        return;
    }
    auto durchgang = m_db->VorbereitenNativ("SELECT " + m_rowid + Auswahlquelle() + Ordnung());
    while (durchgang.Schritt())
        m_schlüssel.push_back(durchgang.Ganzzahl(0));
    m_schlüssel.shrink_to_fit();
    m_zeilen = static_cast<std::int64_t>(m_schlüssel.size());
}

std::int64_t Seitenabfrage::Zeilenzahl() {
    if (!m_zeilen)
        Zählen();
    return *m_zeilen;
}

std::span<const std::string> Seitenabfrage::Zeile(std::int64_t zeile) {
    if (zeile < 0 || zeile >= Zeilenzahl())
        return m_leer;
    const Seite& seite = SeiteHolen(zeile / SeitenGröße);
    const auto breite = m_spalten.size();
    const auto anfang = static_cast<std::size_t>(zeile % SeitenGröße) * breite;
    if (anfang + breite > seite.zellen.size())
        return m_leer;
    return std::span<const std::string>(seite.zellen).subspan(anfang, breite);
}

const Seitenabfrage::Seite& Seitenabfrage::SeiteHolen(std::int64_t nummer) {
    for (Seite& seite : m_seiten)
        if (seite.nummer == nummer) {
            seite.benutzt = ++m_uhr;
            return seite;
        }
    Seite* frei = nullptr;
    if (m_seiten.size() < BehalteneSeiten) {
        frei = &m_seiten.emplace_back();
    } else {
        frei =
            &*std::min_element(m_seiten.begin(), m_seiten.end(),
                               [](const auto& a, const auto& b) { return a.benutzt < b.benutzt; });
    }
    frei->nummer = -1; // not a valid page until it is read whole
    frei->zellen.clear();
    SeiteLesen(nummer, frei->zellen);
    frei->nummer = nummer;
    frei->benutzt = ++m_uhr;
    return *frei;
}

void Seitenabfrage::SeiteLesen(std::int64_t nummer, std::vector<std::string>& zellen) {
    const int breite = static_cast<int>(m_spalten.size());
    const auto zeileAnhängen = [&](const Anweisung& anweisung) {
        // A column dropped under the grid: the cells it had stay empty.
        const int da = std::min(breite, anweisung.Spaltenanzahl());
        for (int s = 0; s < breite; ++s)
            zellen.emplace_back(s < da ? anweisung.Text(s) : std::string_view());
    };
    const std::int64_t erste = nummer * SeitenGröße;
    const std::int64_t anzahl = std::min(SeitenGröße, *m_zeilen - erste);
    zellen.reserve(static_cast<std::size_t>(std::max<std::int64_t>(anzahl, 0) * breite));
    if (!Schlüsselweise()) {
        // A query has no key: its page is found by counting the rows before it.
        auto seite = m_db->VorbereitenNativ("SELECT *" + Auswahlquelle() + Ordnung() + " LIMIT " +
                                            std::to_string(SeitenGröße) + " OFFSET " +
                                            std::to_string(erste));
        while (seite.Schritt())
            zeileAnhängen(seite);
        return;
    }
    const std::string von = "SELECT " + Spaltenliste() + " FROM " + m_quelle;
    if (m_lückenlos) {
        auto seite = m_db->VorbereitenNativ(von + " WHERE " + m_rowid + " >= ? AND " + m_rowid +
                                            " < ? ORDER BY " + m_rowid);
        seite.Binde(m_ersteRowid + erste).Binde(m_ersteRowid + erste + SeitenGröße);
        while (seite.Schritt())
            zeileAnhängen(seite);
    } else if (m_filter.empty() && m_sortierung < 0) {
        auto seite = m_db->VorbereitenNativ(von + " WHERE " + m_rowid + " >= ? ORDER BY " +
                                            m_rowid + " LIMIT " + std::to_string(SeitenGröße));
        seite.Binde(m_schlüssel.at(static_cast<std::size_t>(nummer)));
        while (seite.Schritt())
            zeileAnhängen(seite);
    } else {
        auto zeile = m_db->VorbereitenNativ(von + " WHERE " + m_rowid + " = ?");
        for (std::int64_t i = erste; i < erste + anzahl; ++i) {
            zeile.Zurücksetzen();
            zeile.Binde(m_schlüssel[static_cast<std::size_t>(i)]);
            if (zeile.Schritt())
                zeileAnhängen(zeile);
            else
                zellen.resize(zellen.size() + static_cast<std::size_t>(breite)); // deleted since
        }
    }
}

// --- the filter row, hidden columns, the warning ---------------------------------------------

std::string Filterbedingung(std::span<const Abfragespalte> spalten,
                            std::span<const std::string> texte) {
    std::string bedingung;
    for (std::size_t i = 0; i < spalten.size() && i < texte.size(); ++i) {
        const std::string& text = texte[i];
        if (text.find_first_not_of(' ') == std::string::npos)
            continue;
        std::string teil = JetBezeichner(spalten[i].name);
        if (spalten[i].zahl) {
            const auto zahl = Zahl(text);
            if (!zahl)
                throw Fehler("Filtersuche: \"" + text + "\" ist keine Zahl (Spalte \"" +
                             spalten[i].name + "\")");
            teil += " >= " + JetZahlText(*zahl);
        } else {
            teil += " LIKE \"" + MusterText(text) + "*\"";
        }
        bedingung += (bedingung.empty() ? "" : " AND ") + teil;
    }
    return bedingung;
}

bool SpalteVerborgen(std::string_view tabelle, std::string_view spalte) {
    if (NameFalten(tabelle) != "ax_flurstueck")
        return false;
    static constexpr std::array<std::string_view, 7> geometrie = {
        "UmringFlurstück", "InteriorFlurstück", "position",    "gml:LineStringSegment",
        "gml:Arc",         "gml:exterior",      "gml:interior"};
    return spalte.starts_with("DAO_") ||
           std::find(geometrie.begin(), geometrie.end(), spalte) != geometrie.end();
}

Fragestellung VisualisierungAbbrechenFrage(std::string_view tabelle) {
    Fragestellung frage;
    frage.text =
        "Aufgrund der großen Datenmenge kann die Visualisierung der Tabelle \"" +
        std::string(tabelle) +
        "\" zum Einfrieren des Programms führen!\nWollen Sie die Visualisierung abbrechen?";
    frage.titel = Titel;
    return frage;
}

// --- the SQL query box -----------------------------------------------------------------------

SqlAbfrageErgebnis SqlAbfrageAusführen(Datenbank& db, std::string_view jetAnweisung) {
    static constexpr std::array<std::string_view, 6> transaktion = {
        "BEGIN", "COMMIT", "END", "ROLLBACK", "SAVEPOINT", "RELEASE"};
    constexpr char Sicherung[] = "flurix_sql_abfrage";
    SqlAbfrageErgebnis ergebnis;
    try {
        Anweisung anweisung = db.Vorbereiten(jetAnweisung);
        const std::string sql(anweisung.Sql());
        const std::string wort = ErstesWort(sql);
        if (anweisung.Spaltenanzahl() > 0 &&
            (wort == "SELECT" || wort == "WITH" || wort == "VALUES")) {
            ergebnis.art = SqlAbfrageErgebnis::Art::Auswahl;
            ergebnis.auswahl = OhneSchluss(sql);
            return ergebnis;
        }
        if (std::find(transaktion.begin(), transaktion.end(), wort) != transaktion.end()) {
            ergebnis.meldung = "Die SQL-Abfrage nimmt keine Anweisung " + wort +
                               " an: jede Anweisung läuft für sich und wird bei einem Fehler "
                               "ganz zurückgenommen.";
            return ergebnis;
        }
        const std::int64_t vorher = EinWert(db, "SELECT total_changes()");
        db.AusführenNativ(std::string("SAVEPOINT ") + Sicherung);
        try {
            while (anweisung.Schritt()) {
            }
        } catch (const Fehler&) {
            // SQLite may have rolled back the whole transaction already (a full disk).
            if (db.TransaktionOffen()) {
                db.AusführenNativ(std::string("ROLLBACK TO ") + Sicherung);
                db.AusführenNativ(std::string("RELEASE ") + Sicherung);
            }
            throw;
        }
        db.AusführenNativ(std::string("RELEASE ") + Sicherung);
        ergebnis.art = SqlAbfrageErgebnis::Art::Änderung;
        ergebnis.geändert = EinWert(db, "SELECT total_changes()") - vorher;
    } catch (const Fehler& fehler) {
        ergebnis.art = SqlAbfrageErgebnis::Art::Fehler;
        ergebnis.meldung = fehler.what();
    }
    return ergebnis;
}

} // namespace flurix::nas
