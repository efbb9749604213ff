#include "nas/objektdatenbank.hpp"

#include "core/datenbank.hpp"
#include "core/einstellungen.hpp"
#include "core/fehler.hpp"
#include "core/text.hpp"
#include "nas/knoten.hpp"

#include <map>
#include <set>

namespace flurix::nas {
namespace {

// Settings of a bulk load: the file is a work file that the next import rebuilds, so a journal
// or a sync to the disk would only cost time; the page cache has a fixed size, so that memory
// follows the largest feature, not the file.
void Einstellen(Datenbank& db, int seitencacheMiB = NasSeitencacheMiB) {
    db.AusführenNativ("PRAGMA journal_mode = OFF");
    db.AusführenNativ("PRAGMA synchronous = OFF");
    db.AusführenNativ("PRAGMA cache_size = -" + std::to_string(seitencacheMiB * 1024));
    db.AusführenNativ("PRAGMA temp_store = MEMORY");
}

// The statements of the helpers run outside the caller's view: a failure is a result, not an
// exception.
template <class F>
bool Versuchen(F&& arbeit) {
    try {
        arbeit();
        return true;
    } catch (const Fehler&) {
        return false;
    }
}

// A table or column name as SQLite compares it: ASCII letters without regard to case.
std::string SqliteFalten(std::string name) {
    for (char& c : name)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return name;
}

std::string IndexName(std::string_view tabelle, std::string_view index) {
    return std::string(tabelle) + "_" + std::string(index);
}

} // namespace

std::string SpaltenDeklaration(int typ) {
    switch (typ) {
    case 3:
    case 4:
        return "INTEGER";
    case 6:
    case 7:
        return "REAL";
    default:
        return "TEXT COLLATE NOCASE";
    }
}

std::unique_ptr<Datenbank> DAO_DatenbankAnlegen(const std::filesystem::path& pfad, int seitencacheMiB) {
    std::error_code fehler;
    std::filesystem::remove(pfad, fehler);
    std::filesystem::remove(pfad.string() + "-journal", fehler);
    if (std::filesystem::exists(pfad))
        throw Fehler("Die Datenbank \"" + pfad.string() + "\" kann nicht ersetzt werden.");
    auto db = std::make_unique<Datenbank>(pfad);
    Einstellen(*db, seitencacheMiB);
    return db;
}

std::unique_ptr<Datenbank> DAO_DatenbankÖffnen(const std::filesystem::path& pfad) {
    if (!std::filesystem::is_regular_file(pfad))
        throw Fehler("Die Datenbank \"" + pfad.string() + "\" ist nicht vorhanden.");
    auto db = std::make_unique<Datenbank>(pfad);
    Einstellen(*db);
    return db;
}

bool DAO_TabelleVorhanden(Datenbank& db, std::string_view tabelle) {
    bool vorhanden = false;
    Versuchen([&] { vorhanden = db.TabelleVorhanden(tabelle); });
    return vorhanden;
}

bool DAO_FeldVorhanden(Datenbank& db, std::string_view tabelle, std::string_view spalte) {
    if (!DAO_TabelleVorhanden(db, tabelle))
        return false;
    bool vorhanden = false;
    Versuchen([&] {
        auto abfrage = db.VorbereitenNativ("SELECT 1 FROM pragma_table_info(?) WHERE name = ? "
                                           "COLLATE NOCASE");
        abfrage.Binde(tabelle).Binde(spalte);
        vorhanden = abfrage.Schritt();
    });
    return vorhanden;
}

bool DAO_IndexVorhanden(Datenbank& db, std::string_view tabelle, std::string_view index) {
    bool vorhanden = false;
    Versuchen([&] {
        auto abfrage = db.VorbereitenNativ(
            "SELECT 1 FROM sqlite_master WHERE type = 'index' AND name = ? COLLATE NOCASE");
        abfrage.Binde(IndexName(tabelle, index));
        vorhanden = abfrage.Schritt();
    });
    return vorhanden;
}

bool DAO_TabelleNeuAnlegen(Datenbank& db, std::string_view tabelle, std::string_view spalte, int typ) {
    if (DAO_TabelleVorhanden(db, tabelle))
        return true;
    const std::string deklaration = typ == 4 ? "INTEGER" : "TEXT COLLATE NOCASE";
    return Versuchen([&] {
        db.AusführenNativ("CREATE TABLE " + Bezeichner(tabelle) + " (" + Bezeichner(spalte) + " " +
                          deklaration + ")");
    });
}

bool DAO_FeldAnlegen(Datenbank& db, std::string_view tabelle, std::string_view spalte, int typ) {
    if (DAO_FeldVorhanden(db, tabelle, spalte))
        return true;
    return Versuchen([&] {
        db.AusführenNativ("ALTER TABLE " + Bezeichner(tabelle) + " ADD COLUMN " +
                          Bezeichner(spalte) + " " + SpaltenDeklaration(typ));
    });
}

bool DAO_FeldLöschen(Datenbank& db, std::string_view tabelle, std::string_view spalte) {
    if (!DAO_FeldVorhanden(db, tabelle, spalte))
        return false;
    return Versuchen([&] {
        // SQLite refuses to drop an indexed column: its indexes go first.
        std::vector<std::string> indizes;
        auto abfrage = db.VorbereitenNativ(
            "SELECT DISTINCT l.name FROM pragma_index_list(?1) l, pragma_index_info(l.name) i "
            "WHERE i.name = ?2 COLLATE NOCASE");
        abfrage.Binde(tabelle).Binde(spalte);
        while (abfrage.Schritt())
            indizes.emplace_back(abfrage.Text(0));
        for (const auto& index : indizes)
            db.AusführenNativ("DROP INDEX " + Bezeichner(index));
        db.AusführenNativ("ALTER TABLE " + Bezeichner(tabelle) + " DROP COLUMN " + Bezeichner(spalte));
    });
}

bool DAO_FeldUmbenennen(Datenbank& db, std::string_view tabelle, std::string_view alt,
                        std::string_view neu) {
    if (!DAO_FeldVorhanden(db, tabelle, alt))
        return false;
    return Versuchen([&] {
        db.AusführenNativ("ALTER TABLE " + Bezeichner(tabelle) + " RENAME COLUMN " + Bezeichner(alt) +
                          " TO " + Bezeichner(neu));
    });
}

bool DAO_TabelleLöschen(Datenbank& db, std::string_view tabelle) {
    if (!DAO_TabelleVorhanden(db, tabelle))
        return false;
    return Versuchen([&] { db.AusführenNativ("DROP TABLE " + Bezeichner(tabelle)); });
}

bool DAO_IndexAnlegen(Datenbank& db, std::string_view tabelle, std::string_view spalte, bool primär,
                      bool eindeutig, std::string_view name) {
    const std::string index = name.empty() ? std::string(spalte) : std::string(name);
    const std::string felder[] = {std::string(spalte)};
    return Versuchen([&] { db.IndexAnlegen(index, tabelle, felder, primär || eindeutig); });
}

std::vector<std::string> DAO_Tabellen(Datenbank& db) {
    std::vector<std::string> tabellen;
    Versuchen([&] {
        auto abfrage = db.VorbereitenNativ("SELECT name FROM sqlite_master WHERE type = 'table' "
                                           "AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY rowid");
        while (abfrage.Schritt())
            tabellen.emplace_back(abfrage.Text(0));
    });
    return tabellen;
}

std::int64_t DAO_Zeilenzahl(Datenbank& db, std::string_view tabelle) {
    std::int64_t zahl = -1;
    Versuchen([&] {
        auto abfrage = db.VorbereitenNativ("SELECT COUNT(*) FROM " + Bezeichner(tabelle));
        if (abfrage.Schritt())
            zahl = abfrage.Ganzzahl(0);
    });
    return zahl;
}

Suchwerte::Suchwerte(Datenbank& db) : m_db(db) {}
Suchwerte::~Suchwerte() = default;

void Suchwerte::Vergessen() { m_abfragen.clear(); }

Anweisung* Suchwerte::Abfrage(std::string_view tabelle, std::string_view index,
                              std::string_view spalten) {
    std::string schlüssel = std::string(tabelle) + '\x1f' + std::string(index) + '\x1f' +
                            std::string(spalten);
    if (auto it = m_abfragen.find(schlüssel); it != m_abfragen.end())
        return it->second.get();
    std::unique_ptr<Anweisung> abfrage;
    Versuchen([&] {
        std::string liste;
        for (auto spalte : Teilen(spalten, '#'))
            liste += (liste.empty() ? "" : ", ") + Bezeichner(spalte);
        abfrage = std::make_unique<Anweisung>(
            m_db.VorbereitenNativ("SELECT " + liste + " FROM " + Bezeichner(tabelle) + " WHERE " +
                                  Bezeichner(index) + " = ? ORDER BY " + Bezeichner(index) +
                                  ", rowid"));
    });
    // A failed preparation is kept as "none": the lookup will not succeed on the next call either.
    return m_abfragen.emplace(std::move(schlüssel), std::move(abfrage)).first->second.get();
}

std::string Suchwerte::SuchWert(std::string_view schlüssel, std::string_view tabelle,
                                std::string_view index, std::string_view spalte) {
    return Wert(schlüssel, tabelle, index, spalte).value_or("-1");
}

std::optional<std::string> Suchwerte::Wert(std::string_view schlüssel, std::string_view tabelle,
                                           std::string_view index, std::string_view spalte) {
    if (TrimmeLeerzeichen(schlüssel).empty())
        return std::nullopt;
    Anweisung* abfrage = Abfrage(tabelle, index, spalte);
    if (!abfrage)
        return std::nullopt;
    std::optional<std::string> wert;
    Versuchen([&] {
        abfrage->Zurücksetzen();
        abfrage->Binde(schlüssel);
        if (abfrage->Schritt())
            wert.emplace(abfrage->Text(0));
    });
    abfrage->Zurücksetzen();
    return wert;
}

std::vector<std::vector<std::string>> Suchwerte::Zeilen(std::string_view tabelle,
                                                        std::string_view index,
                                                        std::string_view schlüssel,
                                                        std::string_view spalten) {
    std::vector<std::vector<std::string>> zeilen;
    if (TrimmeLeerzeichen(schlüssel).empty())
        return zeilen;
    Anweisung* abfrage = Abfrage(tabelle, index, spalten);
    if (!abfrage)
        return zeilen;
    Versuchen([&] {
        abfrage->Zurücksetzen();
        abfrage->Binde(schlüssel);
        while (abfrage->Schritt()) {
            std::vector<std::string>& zeile = zeilen.emplace_back();
            for (int i = 0; i < abfrage->Spaltenanzahl(); ++i)
                zeile.emplace_back(abfrage->Text(i));
        }
    });
    abfrage->Zurücksetzen();
    return zeilen;
}

std::vector<std::string> Suchwerte::Werte(std::string_view tabelle, std::string_view index,
                                          std::string_view schlüssel, std::string_view spalte) {
    std::vector<std::string> werte;
    for (auto& zeile : Zeilen(tabelle, index, schlüssel, spalte))
        werte.push_back(zeile.empty() ? std::string() : std::move(zeile.front()));
    return werte;
}

std::string DAO_SuchWert(Datenbank& db, std::string_view schlüssel, std::string_view tabelle,
                         std::string_view index, std::string_view spalte) {
    Suchwerte suche(db);
    return suche.SuchWert(schlüssel, tabelle, index, spalte);
}

bool DatenbankKomprimieren(Datenbank& db) {
    return Versuchen([&] {
        auto frei = db.VorbereitenNativ("PRAGMA freelist_count");
        const bool nötig = frei.Schritt() && frei.Ganzzahl(0) > 0;
        frei.Zurücksetzen();
        if (nötig)
            db.AusführenNativ("VACUUM");
    });
}

bool DAO_DatenbankKomprimieren(const std::filesystem::path& pfad) {
    try {
        auto db = DAO_DatenbankÖffnen(pfad);
        return DatenbankKomprimieren(*db);
    } catch (const Fehler&) {
        return false;
    }
}

void DAO_DatenbankAnlegenAusKnoten(Datenbank& db, const KnotenDatei& knoten,
                                   const std::function<void(std::string_view)>& log) {
    // The tables are gathered first and each is made with all its columns in one statement: a
    // column added at a time would change the schema a thousand times, and the database module
    // reads the grown schema anew after each change.
    struct Tabelle {
        std::string name;
        bool eindeutig = true;
        std::vector<std::pair<std::string, int>> spalten; // in the order of the node file
        std::set<std::string> gefaltet;                   // as SQLite compares column names
    };
    std::vector<Tabelle> tabellen;
    std::map<std::string, std::size_t> nachName; // folded table name -> index
    // Adds a table; false when it is there already.
    const auto tabelle = [&](const std::string& name, bool eindeutig) {
        const bool neu = nachName.emplace(SqliteFalten(name), tabellen.size()).second;
        if (neu)
            tabellen.push_back({name, eindeutig, {}, {"id"}});
        return neu;
    };
    const auto spalte = [](Tabelle& t, const std::string& name, int typ) {
        if (t.gefaltet.insert(SqliteFalten(name)).second)
            t.spalten.emplace_back(name, typ);
    };
    for (const auto& klasse : knoten.klassen) {
        if (!tabelle(klasse.tabelle, true))
            log(", DAO_CreatedNewTable: " + klasse.tabelle + " Tabelle schon vorhanden...");
        // By number: a relation's table added below moves the vector.
        const std::size_t eigene = nachName.at(SqliteFalten(klasse.tabelle));
        for (const auto& feld : klasse.felder) {
            switch (feld.art) {
            case Feldart::Kennung:
                break;
            case Feldart::Relation: {
                const std::string name = feld.RelationsTabelle(klasse.tabelle);
                tabelle(name, false);
                spalte(tabellen[nachName.at(SqliteFalten(name))], feld.ziel, feld.typ);
                break;
            }
            case Feldart::Attribut:
            case Feldart::Geometrie:
                spalte(tabellen[eigene], feld.text, feld.typ);
                break;
            }
        }
    }
    for (const auto& t : tabellen) {
        std::string sql = "CREATE TABLE " + Bezeichner(t.name) + " (\"id\" TEXT COLLATE NOCASE";
        for (const auto& [name, typ] : t.spalten)
            sql += ", " + Bezeichner(name) + " " + SpaltenDeklaration(typ);
        if (!Versuchen([&] { db.AusführenNativ(sql + ")"); })) {
            log(", DAO_CreatedNewTable: " + t.name + " Tabellenfehler...");
            continue;
        }
        if (!DAO_IndexAnlegen(db, t.name, "id", t.eindeutig, t.eindeutig))
            log(", DAO_CreateIndex: " + t.name + " Indexfehler...");
    }
}

} // namespace flurix::nas
