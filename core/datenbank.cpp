#include "core/datenbank.hpp"

#include "core/fehler.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <exception>
#include <new>
#include <optional>
#include <utility>

namespace flurix {
namespace {

// SQLite copies the value: SQLITE_TRANSIENT without its old-style cast.
const auto Kopieren = reinterpret_cast<sqlite3_destructor_type>(static_cast<std::intptr_t>(-1));

// The statement as it stands in a message: one line, at most about 300 bytes.
std::string Gekürzt(std::string_view sql) {
    constexpr std::size_t höchstens = 300;
    std::string text(sql.substr(0, höchstens));
    if (sql.size() > höchstens) {
        // Don't cut a UTF-8 sequence in two.
        while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80)
            text.pop_back();
        if (!text.empty() && static_cast<unsigned char>(text.back()) >= 0xC0)
            text.pop_back();
        text += " …";
    }
    for (char& c : text)
        if (c == '\n' || c == '\r' || c == '\t')
            c = ' ';
    return text;
}

std::string Meldung(std::string_view datei, std::string_view fehlertext, std::string_view sql) {
    std::string meldung = "Datenbank \"" + std::string(datei) + "\": " + std::string(fehlertext);
    if (!sql.empty())
        meldung += " – Anweisung: " + Gekürzt(sql);
    return meldung;
}

std::string DateiDerVerbindung(sqlite3* db) {
    const char* datei = sqlite3_db_filename(db, "main");
    return datei != nullptr && *datei != '\0' ? datei : ":memory:";
}

// True when the rest behind a prepared statement holds only blanks, comments and ";".
bool NurFüllsel(std::string_view rest) {
    for (std::size_t i = 0; i < rest.size();) {
        const char c = rest[i];
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v' || c == ';') {
            ++i;
        } else if (rest.substr(i, 2) == "--") {
            i = rest.find('\n', i);
        } else if (rest.substr(i, 2) == "/*") {
            const auto ende = rest.find("*/", i + 2);
            i = ende == std::string_view::npos ? rest.size() : ende + 2;
        } else {
            return false;
        }
    }
    return true;
}

// True for ROLLBACK (and ROLLBACK TO) at the start of the statement.
bool IstRückgängig(std::string_view sql) {
    const auto anfang = sql.find_first_not_of(" \t\r\n");
    if (anfang == std::string_view::npos)
        return false;
    const auto wort = sql.substr(anfang, 8);
    constexpr std::string_view rollback = "rollback";
    return wort.size() == rollback.size() &&
           std::equal(wort.begin(), wort.end(), rollback.begin(),
                      [](char a, char b) { return (a | 0x20) == b; });
}

// --- the functions of Jet's SQL --------------------------------------------------------------

std::string_view Textwert(sqlite3_value* wert) {
    const auto* text = sqlite3_value_text(wert);
    const auto länge = static_cast<std::size_t>(sqlite3_value_bytes(wert));
    return text == nullptr ? std::string_view()
                           : std::string_view(reinterpret_cast<const char*>(text), länge);
}

// A position or length as Basic takes it: a fraction rounds to the even neighbour.
std::int64_t Ganzzahlwert(sqlite3_value* wert) {
    if (sqlite3_value_type(wert) == SQLITE_INTEGER)
        return sqlite3_value_int64(wert);
    const double zahl = std::nearbyint(sqlite3_value_double(wert));
    if (!(zahl > -9.2e18 && zahl < 9.2e18))
        throw Fehler("eine Position oder Länge liegt außerhalb des Zahlbereichs");
    return static_cast<std::int64_t>(zahl);
}

bool EinerNull(int anzahl, sqlite3_value** werte) {
    for (int i = 0; i < anzahl; ++i)
        if (sqlite3_value_type(werte[i]) == SQLITE_NULL)
            return true;
    return false;
}

void TextErgebnis(sqlite3_context* kontext, std::string_view text) {
    sqlite3_result_text64(kontext, text.empty() ? "" : text.data(), text.size(), Kopieren,
                          SQLITE_UTF8);
}

// No exception may cross into SQLite: a failure becomes the function's SQL error.
template <typename Arbeit>
void Abgesichert(sqlite3_context* kontext, const char* funktion, Arbeit&& arbeit) {
    try {
        arbeit();
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(kontext);
    } catch (const std::exception& fehler) {
        sqlite3_result_error(kontext, fehler.what(), -1);
    } catch (...) {
        sqlite3_result_error(kontext, funktion, -1);
    }
}

// MID(text, start[, länge])
void SqlMid(sqlite3_context* kontext, int anzahl, sqlite3_value** werte) {
    Abgesichert(kontext, "MID", [&] {
        if (EinerNull(anzahl, werte)) {
            sqlite3_result_null(kontext);
            return;
        }
        std::optional<std::int64_t> länge;
        if (anzahl > 2)
            länge = Ganzzahlwert(werte[2]);
        TextErgebnis(kontext, JetMid(Textwert(werte[0]), Ganzzahlwert(werte[1]), länge));
    });
}

// Instr([start,] text, suche[, vergleich]): vergleich 0 compares bytes, anything else (and no
// vergleich at all) compares as text, as Jet does.
void SqlInstr(sqlite3_context* kontext, int anzahl, sqlite3_value** werte) {
    Abgesichert(kontext, "Instr", [&] {
        if (EinerNull(anzahl, werte)) {
            sqlite3_result_null(kontext);
            return;
        }
        const int erster = anzahl == 2 ? 0 : 1;
        const std::int64_t start = anzahl == 2 ? 1 : Ganzzahlwert(werte[0]);
        const bool textvergleich = anzahl < 4 || Ganzzahlwert(werte[3]) != 0;
        sqlite3_result_int64(kontext, JetInstr(start, Textwert(werte[erster]),
                                               Textwert(werte[erster + 1]), textvergleich));
    });
}

// Trim(text)
void SqlTrim(sqlite3_context* kontext, int, sqlite3_value** werte) {
    Abgesichert(kontext, "Trim", [&] {
        if (sqlite3_value_type(werte[0]) == SQLITE_NULL)
            sqlite3_result_null(kontext);
        else
            TextErgebnis(kontext, JetTrim(Textwert(werte[0])));
    });
}

// JETTEXT(x): one side of Jet's `&`: NULL gives "", a number is written as Basic writes it.
void SqlJetText(sqlite3_context* kontext, int, sqlite3_value** werte) {
    Abgesichert(kontext, "JETTEXT", [&] {
        switch (sqlite3_value_type(werte[0])) {
        case SQLITE_NULL:
            TextErgebnis(kontext, "");
            break;
        case SQLITE_INTEGER:
            TextErgebnis(kontext, std::to_string(sqlite3_value_int64(werte[0])));
            break;
        case SQLITE_FLOAT:
            TextErgebnis(kontext, JetZahlText(sqlite3_value_double(werte[0])));
            break;
        default:
            TextErgebnis(kontext, Textwert(werte[0]));
            break;
        }
    });
}

// A function registered by TextFunktionRegistrieren; the C++ function rides as user data.
void SqlTextFunktion(sqlite3_context* kontext, int, sqlite3_value** werte) {
    Abgesichert(kontext, "Textfunktion", [&] {
        if (sqlite3_value_type(werte[0]) == SQLITE_NULL) {
            sqlite3_result_null(kontext);
            return;
        }
        const auto funktion = reinterpret_cast<Datenbank::TextFunktion>(sqlite3_user_data(kontext));
        TextErgebnis(kontext, funktion(Textwert(werte[0])));
    });
}

using SqlFunktion = void (*)(sqlite3_context*, int, sqlite3_value**);

struct Registrierung {
    const char* name;
    int anzahl;
    SqlFunktion funktion;
};

// Returns SQLite's error text, or "" when all are registered.
std::string FunktionenRegistrieren(sqlite3* db) {
    static constexpr Registrierung funktionen[] = {
        {"MID", 2, SqlMid},         {"MID", 3, SqlMid},     {"INSTR", 2, SqlInstr},
        {"INSTR", 3, SqlInstr},     {"INSTR", 4, SqlInstr}, {"TRIM", 1, SqlTrim},
        {"JETTEXT", 1, SqlJetText},
    };
    constexpr int art = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    for (const auto& f : funktionen) {
        if (sqlite3_create_function_v2(db, f.name, f.anzahl, art, nullptr, f.funktion, nullptr,
                                       nullptr, nullptr) != SQLITE_OK)
            return std::string(f.name) + ": " + sqlite3_errmsg(db);
    }
    return {};
}

} // namespace

// --- Anweisung -------------------------------------------------------------------------------

Anweisung::Anweisung(Anweisung&& andere) noexcept
    : m_anweisung(std::exchange(andere.m_anweisung, nullptr)),
      m_nächsterParameter(std::exchange(andere.m_nächsterParameter, 1)) {}

Anweisung& Anweisung::operator=(Anweisung&& andere) noexcept {
    if (this != &andere) {
        sqlite3_finalize(m_anweisung);
        m_anweisung = std::exchange(andere.m_anweisung, nullptr);
        m_nächsterParameter = std::exchange(andere.m_nächsterParameter, 1);
    }
    return *this;
}

Anweisung::~Anweisung() { sqlite3_finalize(m_anweisung); }

sqlite3_stmt* Anweisung::Roh() const {
    if (m_anweisung == nullptr)
        throw Fehler("Datenbank: die Anweisung ist nicht mehr vorbereitet (sie wurde verschoben)");
    return m_anweisung;
}

void Anweisung::Melden(std::string_view fehlertext) const {
    throw Fehler(Meldung(DateiDerVerbindung(sqlite3_db_handle(m_anweisung)), fehlertext,
                         sqlite3_sql(m_anweisung)));
}

void Anweisung::BindeErgebnisPrüfen(int ergebnis) {
    if (ergebnis == SQLITE_RANGE)
        Melden("die Anweisung hat keinen Parameter Nr. " + std::to_string(m_nächsterParameter));
    if (ergebnis != SQLITE_OK)
        Melden(sqlite3_errmsg(sqlite3_db_handle(m_anweisung)));
    ++m_nächsterParameter;
}

Anweisung& Anweisung::Binde(std::string_view text) {
    // An empty view may have no data at all; SQLite would take that as NULL.
    BindeErgebnisPrüfen(sqlite3_bind_text64(Roh(), m_nächsterParameter,
                                            text.empty() ? "" : text.data(), text.size(), Kopieren,
                                            SQLITE_UTF8));
    return *this;
}

Anweisung& Anweisung::BindeGanzzahl(std::int64_t zahl) {
    BindeErgebnisPrüfen(sqlite3_bind_int64(Roh(), m_nächsterParameter, zahl));
    return *this;
}

Anweisung& Anweisung::Binde(double zahl) {
    BindeErgebnisPrüfen(sqlite3_bind_double(Roh(), m_nächsterParameter, zahl));
    return *this;
}

Anweisung& Anweisung::Binde(std::nullptr_t) {
    BindeErgebnisPrüfen(sqlite3_bind_null(Roh(), m_nächsterParameter));
    return *this;
}

bool Anweisung::Schritt() {
    const int ergebnis = sqlite3_step(Roh());
    if (ergebnis == SQLITE_ROW)
        return true;
    if (ergebnis == SQLITE_DONE)
        return false;
    const std::string fehlertext = sqlite3_errmsg(sqlite3_db_handle(m_anweisung));
    sqlite3_reset(m_anweisung);
    Melden(fehlertext);
}

void Anweisung::Zurücksetzen() {
    if (m_anweisung == nullptr)
        return;
    sqlite3_reset(m_anweisung);
    sqlite3_clear_bindings(m_anweisung);
    m_nächsterParameter = 1;
}

int Anweisung::Spaltenanzahl() const { return sqlite3_column_count(Roh()); }

void Anweisung::SpaltePrüfen(int spalte) const {
    if (spalte < 0 || spalte >= Spaltenanzahl())
        Melden("eine Spalte Nr. " + std::to_string(spalte) + " gibt es nicht, das Ergebnis hat " +
               std::to_string(Spaltenanzahl()) + " Spalten");
}

std::string_view Anweisung::Spaltenname(int spalte) const {
    SpaltePrüfen(spalte);
    const char* name = sqlite3_column_name(m_anweisung, spalte);
    return name == nullptr ? std::string_view() : name;
}

std::string_view Anweisung::Spaltentabelle(int spalte) const {
    SpaltePrüfen(spalte);
    const char* tabelle = sqlite3_column_table_name(m_anweisung, spalte);
    return tabelle == nullptr ? std::string_view() : tabelle;
}

int Anweisung::Spaltenindex(std::string_view name) const {
    const int anzahl = Spaltenanzahl();
    for (int i = 0; i < anzahl; ++i)
        if (Spaltenname(i) == name)
            return i;
    const auto gefaltet = NameFalten(name);
    for (int i = 0; i < anzahl; ++i)
        if (NameFalten(Spaltenname(i)) == gefaltet)
            return i;
    Melden("eine Spalte \"" + std::string(name) + "\" gibt es im Ergebnis nicht");
}

std::string_view Anweisung::Text(int spalte) const {
    SpaltePrüfen(spalte);
    const auto* text = sqlite3_column_text(m_anweisung, spalte);
    const auto länge = static_cast<std::size_t>(sqlite3_column_bytes(m_anweisung, spalte));
    return text == nullptr ? std::string_view()
                           : std::string_view(reinterpret_cast<const char*>(text), länge);
}

std::int64_t Anweisung::Ganzzahl(int spalte) const {
    SpaltePrüfen(spalte);
    return sqlite3_column_int64(m_anweisung, spalte);
}

double Anweisung::Zahl(int spalte) const {
    SpaltePrüfen(spalte);
    return sqlite3_column_double(m_anweisung, spalte);
}

bool Anweisung::IstNull(int spalte) const {
    SpaltePrüfen(spalte);
    return sqlite3_column_type(m_anweisung, spalte) == SQLITE_NULL;
}

std::string_view Anweisung::Sql() const {
    const char* sql = m_anweisung == nullptr ? nullptr : sqlite3_sql(m_anweisung);
    return sql == nullptr ? std::string_view() : sql;
}

// --- Datenbank -------------------------------------------------------------------------------

Datenbank::Datenbank(const std::filesystem::path& datei) : m_name(datei.string()) {
    const int ergebnis =
        sqlite3_open_v2(m_name.c_str(), &m_db,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    std::string fehlertext;
    if (ergebnis != SQLITE_OK)
        fehlertext = m_db != nullptr ? sqlite3_errmsg(m_db) : sqlite3_errstr(ergebnis);
    else
        fehlertext = FunktionenRegistrieren(m_db);
    if (!fehlertext.empty()) {
        sqlite3_close_v2(m_db);
        m_db = nullptr;
        throw Fehler(Meldung(m_name, "kann nicht geöffnet werden: " + fehlertext, {}));
    }
}

Datenbank::~Datenbank() { sqlite3_close_v2(m_db); }

void Datenbank::TextFunktionRegistrieren(const char* name, TextFunktion funktion) {
    constexpr int art = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    if (sqlite3_create_function_v2(m_db, name, 1, art, reinterpret_cast<void*>(funktion),
                                   SqlTextFunktion, nullptr, nullptr, nullptr) != SQLITE_OK)
        throw Fehler(Meldung(m_name, sqlite3_errmsg(m_db), name));
}

Anweisung Datenbank::Vorbereitet(std::string_view sql) {
    if (sql.size() > static_cast<std::size_t>(INT_MAX))
        throw Fehler(Meldung(m_name, "die Anweisung ist zu lang", sql));
    const char* text = sql.empty() ? "" : sql.data();
    sqlite3_stmt* roh = nullptr;
    const char* rest = nullptr;
    const int ergebnis = sqlite3_prepare_v2(m_db, text, static_cast<int>(sql.size()), &roh, &rest);
    Anweisung anweisung(roh); // finalized on every way out
    if (ergebnis != SQLITE_OK)
        throw Fehler(Meldung(m_name, sqlite3_errmsg(m_db), sql));
    // The one-statement rule: what SQLite did not take must be nothing.
    const auto genommen = rest == nullptr ? sql.size() : static_cast<std::size_t>(rest - text);
    if (!NurFüllsel(sql.substr(genommen)))
        throw Fehler(Meldung(m_name,
                             "der Text enthält mehr als eine SQL-Anweisung; es wurde nichts "
                             "ausgeführt",
                             sql));
    if (roh == nullptr)
        throw Fehler(Meldung(m_name, "der Text enthält keine SQL-Anweisung", sql));
    // A rollback can take the schema back to a version number the names were already read at,
    // with other tables behind it: read them anew.
    if (IstRückgängig(sql))
        m_schemaStand = -1;
    return anweisung;
}

void Datenbank::NamenAktualisieren() {
    auto version = Vorbereitet("PRAGMA schema_version");
    version.Schritt();
    const auto stand = version.Ganzzahl(0);
    if (stand == m_schemaStand)
        return;
    m_namen.Leeren();
    m_tabellen.Leeren();
    auto tabellen = Vorbereitet("SELECT name FROM sqlite_master WHERE type IN ('table', 'view') "
                                "AND substr(name, 1, 7) <> 'sqlite_'");
    auto felder = Vorbereitet("SELECT name FROM pragma_table_info(?)");
    while (tabellen.Schritt()) {
        const std::string tabelle(tabellen.Text(0));
        m_tabellen.Hinzufügen(tabelle);
        m_namen.Hinzufügen(tabelle);
        felder.Zurücksetzen();
        felder.Binde(tabelle);
        while (felder.Schritt())
            m_namen.Hinzufügen(felder.Text(0));
    }
    m_schemaStand = stand;
}

std::string Datenbank::Übersetzen(std::string_view anweisung) {
    NamenAktualisieren();
    try {
        return JetNachSqlite(anweisung, &m_namen);
    } catch (const Fehler& fehler) {
        throw Fehler(Meldung(m_name, fehler.what(), {}));
    }
}

Anweisung Datenbank::Vorbereiten(std::string_view anweisung) {
    return Vorbereitet(Übersetzen(anweisung));
}

Anweisung Datenbank::VorbereitenNativ(std::string_view anweisung) { return Vorbereitet(anweisung); }

void Datenbank::Ausführen(std::string_view anweisung) {
    auto vorbereitet = Vorbereiten(anweisung);
    while (vorbereitet.Schritt()) {
    }
}

void Datenbank::AusführenNativ(std::string_view anweisung) {
    auto vorbereitet = Vorbereitet(anweisung);
    while (vorbereitet.Schritt()) {
    }
}

std::int64_t Datenbank::LetzteZeilenId() const { return sqlite3_last_insert_rowid(m_db); }

std::int64_t Datenbank::Änderungen() const { return sqlite3_changes64(m_db); }

bool Datenbank::TransaktionOffen() const { return sqlite3_get_autocommit(m_db) == 0; }

bool Datenbank::TabelleVorhanden(std::string_view name) {
    NamenAktualisieren();
    return m_tabellen.Auflösen(name).has_value();
}

std::vector<std::string> Datenbank::Spaltennamen(std::string_view tabelle) {
    NamenAktualisieren();
    const auto echt = m_tabellen.Auflösen(tabelle);
    if (!echt)
        throw Fehler(
            Meldung(m_name, "eine Tabelle \"" + std::string(tabelle) + "\" gibt es nicht", {}));
    auto felder = Vorbereitet("SELECT name FROM pragma_table_info(?)");
    felder.Binde(*echt);
    std::vector<std::string> namen;
    while (felder.Schritt())
        namen.emplace_back(felder.Text(0));
    return namen;
}

void Datenbank::TabelleAnlegen(std::string_view tabelle, std::span<const Feld> felder) {
    if (felder.empty())
        throw Fehler(
            Meldung(m_name, "die Tabelle \"" + std::string(tabelle) + "\" hat keine Felder", {}));
    std::string ddl = "CREATE TABLE " + Bezeichner(tabelle) + " (";
    for (std::size_t i = 0; i < felder.size(); ++i) {
        if (i > 0)
            ddl += ", ";
        ddl += Bezeichner(felder[i].name);
        switch (felder[i].typ) {
        case Feldtyp::Text:
            ddl += " TEXT COLLATE NOCASE";
            break;
        case Feldtyp::Zahl:
            ddl += " REAL";
            break;
        case Feldtyp::Ganzzahl:
            ddl += " INTEGER";
            break;
        }
    }
    AusführenNativ(ddl + ")");
}

void Datenbank::IndexAnlegen(std::string_view index, std::string_view tabelle,
                             std::span<const std::string> felder, bool eindeutig) {
    std::string ddl = eindeutig ? "CREATE UNIQUE INDEX " : "CREATE INDEX ";
    ddl += Bezeichner(std::string(tabelle) + "_" + std::string(index)) + " ON " +
           Bezeichner(tabelle) + " (";
    for (std::size_t i = 0; i < felder.size(); ++i)
        ddl += (i > 0 ? ", " : "") + Bezeichner(felder[i]);
    AusführenNativ(ddl + ")");
}

// --- Transaktion -----------------------------------------------------------------------------

Transaktion::Transaktion(Datenbank& db) : m_db(db), m_innen(db.TransaktionOffen()) {
    m_db.AusführenNativ(m_innen ? "SAVEPOINT innere_transaktion" : "BEGIN");
}

Transaktion::~Transaktion() {
    if (m_bestätigt || !m_db.TransaktionOffen())
        return; // SQLite may have rolled back already after a hard error
    try {
        if (m_innen) {
            m_db.AusführenNativ("ROLLBACK TO innere_transaktion");
            m_db.AusführenNativ("RELEASE innere_transaktion");
        } else {
            m_db.AusführenNativ("ROLLBACK");
        }
    } catch (...) {
        // A destructor must not throw; the connection closes the transaction at the latest.
    }
}

void Transaktion::Bestätigen() {
    m_db.AusführenNativ(m_innen ? "RELEASE innere_transaktion" : "COMMIT");
    m_bestätigt = true;
}

// --- quoting ---------------------------------------------------------------------------------

namespace {

std::string Zitiert(std::string_view wert, char zeichen) {
    std::string text(1, zeichen);
    text.reserve(wert.size() + 2);
    for (const char c : wert) {
        text += c;
        if (c == zeichen)
            text += zeichen;
    }
    return text + zeichen;
}

} // namespace

std::string SqlText(std::string_view wert) { return Zitiert(wert, '\''); }

std::string Bezeichner(std::string_view name) { return Zitiert(name, '"'); }

} // namespace flurix
