#include "nas/zuordnung.hpp"

#include "core/datenbank.hpp"
#include "core/fehler.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "nas/geometrie.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace flurix::nas {
namespace {

// The table the script works on: the compilation makes it anew each time.
constexpr std::string_view Tabelle = "Alkis";
// The table a run of DEL lines copies the remaining columns into before it takes Alkis's place.
constexpr std::string_view NeueTabelle = "Alkis_Zuordnung_Neubau";
// The window gets a status line (and with it the time to stay alive) every this many lines.
constexpr std::size_t StatusAbstand = 10;

enum class Befehl { Keiner, Sql, Add, Chg, Del };

bool GleichOhneFall(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               const auto klein = [](char c) {
                   return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
               };
               return klein(x) == klein(y);
           });
}

// The command is the first three characters of the line; a blank (or the end of the line) must
// follow, so that a line such as "SQLite ..." is no command. Written in capitals in the shipped
// script; any case is taken.
Befehl BefehlDerZeile(std::string_view zeile) {
    if (zeile.size() > 3 && zeile[3] != ' ')
        return Befehl::Keiner;
    const auto wort = zeile.substr(0, 3);
    if (GleichOhneFall(wort, "SQL"))
        return Befehl::Sql;
    if (GleichOhneFall(wort, "ADD"))
        return Befehl::Add;
    if (GleichOhneFall(wort, "CHG"))
        return Befehl::Chg;
    if (GleichOhneFall(wort, "DEL"))
        return Befehl::Del;
    return Befehl::Keiner;
}

// Word number n (from 0) of the line, the words separated by one blank each; "" when missing.
std::string_view Wort(std::string_view zeile, std::size_t n) {
    const auto wörter = Teilen(zeile, ' ');
    return n < wörter.size() ? wörter[n] : std::string_view();
}

// The field types of ADD: 10 is Jet's text field, 12 its memo field. Both are TEXT in SQLite.
std::optional<int> FeldtypDesWorts(std::string_view wort) {
    if (GleichOhneFall(wort, "dbText"))
        return 10;
    if (GleichOhneFall(wort, "dbMemo"))
        return 12;
    return std::nullopt;
}

// --- the column list of a table, as its CREATE TABLE statement writes it ----------------------

struct Spaltendefinition {
    std::string name;       // the name, unquoted
    std::string definition; // what follows the name: type and constraints, as written
};

struct Tabellendefinition {
    std::vector<Spaltendefinition> spalten;
    std::string nachsatz; // behind the closing bracket ("WITHOUT ROWID", "STRICT", ...)
};

// Position behind the quoted text or comment that starts at i, or i when none starts there.
std::size_t HinterZitat(std::string_view sql, std::size_t i) {
    const char c = sql[i];
    if (c == '\'' || c == '"' || c == '`' || c == '[') {
        const char schluss = c == '[' ? ']' : c;
        for (std::size_t k = i + 1; k < sql.size(); ++k) {
            if (sql[k] != schluss)
                continue;
            if (schluss != ']' && k + 1 < sql.size() && sql[k + 1] == schluss) {
                ++k; // a doubled quote stands for one
                continue;
            }
            return k + 1;
        }
        return sql.size();
    }
    if (sql.substr(i, 2) == "--") {
        const auto ende = sql.find('\n', i);
        return ende == std::string_view::npos ? sql.size() : ende + 1;
    }
    if (sql.substr(i, 2) == "/*") {
        const auto ende = sql.find("*/", i + 2);
        return ende == std::string_view::npos ? sql.size() : ende + 2;
    }
    return i;
}

// A name as the column list writes it: quoted in one of SQLite's four ways, or bare.
std::string NameAusgelesen(std::string_view text) {
    if (text.empty())
        return {};
    const char c = text.front();
    if (c != '"' && c != '\'' && c != '`' && c != '[')
        return std::string(text);
    const char schluss = c == '[' ? ']' : c;
    std::string name;
    for (std::size_t k = 1; k + 1 < text.size(); ++k) {
        name += text[k];
        if (text[k] == schluss && schluss != ']')
            ++k;
    }
    return name;
}

bool IstLeerraum(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }

// The columns of a CREATE TABLE text, each with its definition as written: so a table made anew
// from them keeps the declared types and collations. std::nullopt for a text this reading does not
// follow, and for a table with table constraints (they may name a column that goes).
std::optional<Tabellendefinition> TabellendefinitionLesen(std::string_view sql) {
    std::size_t i = 0;
    while (i < sql.size() && sql[i] != '(') {
        const auto weiter = HinterZitat(sql, i);
        i = weiter == i ? i + 1 : weiter;
    }
    if (i >= sql.size())
        return std::nullopt;
    std::vector<std::string_view> teile;
    std::size_t anfang = i + 1;
    int tiefe = 1;
    std::size_t ende = std::string_view::npos;
    for (std::size_t k = anfang; k < sql.size() && ende == std::string_view::npos;) {
        const auto weiter = HinterZitat(sql, k);
        if (weiter != k) {
            k = weiter;
            continue;
        }
        const char c = sql[k];
        if (c == '(') {
            ++tiefe;
        } else if (c == ')') {
            if (--tiefe == 0) {
                teile.push_back(sql.substr(anfang, k - anfang));
                ende = k;
            }
        } else if (c == ',' && tiefe == 1) {
            teile.push_back(sql.substr(anfang, k - anfang));
            anfang = k + 1;
        }
        ++k;
    }
    if (ende == std::string_view::npos)
        return std::nullopt;

    Tabellendefinition tabelle;
    tabelle.nachsatz = std::string(sql.substr(ende + 1));
    for (std::string_view teil : teile) {
        std::size_t a = 0;
        while (a < teil.size() && IstLeerraum(teil[a]))
            ++a;
        std::size_t b = teil.size();
        while (b > a && IstLeerraum(teil[b - 1]))
            --b;
        teil = teil.substr(a, b - a);
        if (teil.empty())
            return std::nullopt;
        std::size_t nameEnde = HinterZitat(teil, 0);
        const bool zitiert = nameEnde != 0;
        if (!zitiert)
            while (nameEnde < teil.size() && !IstLeerraum(teil[nameEnde]))
                ++nameEnde;
        const auto name = teil.substr(0, nameEnde);
        if (!zitiert) {
            for (std::string_view wort : {"CONSTRAINT", "PRIMARY", "UNIQUE", "CHECK", "FOREIGN"})
                if (GleichOhneFall(name, wort))
                    return std::nullopt;
        }
        std::size_t rest = nameEnde;
        while (rest < teil.size() && IstLeerraum(teil[rest]))
            ++rest;
        tabelle.spalten.push_back({NameAusgelesen(name), std::string(teil.substr(rest))});
    }
    return tabelle;
}

// --- one line -------------------------------------------------------------------------------

class Lauf {
public:
    Lauf(Datenbank& db, NasProtokoll& protokoll, Oberfläche& ui, std::size_t zeilenzahl)
        : m_db(db), m_protokoll(protokoll), m_ui(ui), m_zeilenzahl(zeilenzahl) {}

    // Every line (from 0) passes here: a status line each StatusAbstand lines.
    void Zeile(std::size_t nummer) {
        if (nummer % StatusAbstand == 0)
            m_ui.Status(1, "Zusammenstellung, Zeile Zuordnung: " + std::to_string(nummer + 1) +
                               " von " + std::to_string(m_zeilenzahl));
    }

    // The list line: each command line passes here before it runs.
    void Ankündigen(const std::string& zeile) { m_protokoll.Liste(", Zeile Zuordnung: " + zeile); }

    void Gelungen() { ++m_bericht.ausgeführt; }

    void Fehlschlag(const std::string& zeile, std::string_view grund) {
        ++m_bericht.fehlgeschlagen;
        m_protokoll.Eintrag(", Fehler Zeile Zuordnung: " + zeile + ", " + std::string(grund));
    }

    void Sql(const std::string& zeile) {
        const auto anweisung = TrimmeLeerzeichen(std::string_view(zeile).substr(3));
        if (anweisung.empty()) {
            Fehlschlag(zeile, "die Zeile enthält keine SQL-Anweisung");
            return;
        }
        try {
            m_db.Ausführen(anweisung);
        } catch (const Fehler& fehler) {
            DatenbankPrüfen();
            Fehlschlag(zeile, std::string("SQL-Anweisung nicht ausgeführt: ") + fehler.what());
            return;
        }
        Gelungen();
    }

    void Add(const std::string& zeile) {
        const auto spalte = Wort(zeile, 1);
        const auto typwort = Wort(zeile, 2);
        if (spalte.empty() || typwort.empty()) {
            Fehlschlag(zeile, "Spaltenname oder Feldtyp fehlt");
            return;
        }
        if (!TabellePrüfen(zeile))
            return;
        const auto typ = FeldtypDesWorts(typwort);
        if (!typ) {
            // Only text and memo fields are made; any other type word leaves the line unused.
            Gelungen();
            return;
        }
        if (!DAO_FeldAnlegen(m_db, Tabelle, spalte, *typ)) {
            Fehlschlag(zeile,
                       "die Spalte \"" + std::string(spalte) + "\" kann nicht angelegt werden");
            return;
        }
        Gelungen();
    }

    void Chg(const std::string& zeile) {
        const auto alt = Wort(zeile, 1);
        const auto neu = Wort(zeile, 2);
        if (alt.empty() || neu.empty()) {
            Fehlschlag(zeile, "alter oder neuer Spaltenname fehlt");
            return;
        }
        if (!TabellePrüfen(zeile))
            return;
        // Renamed only when the old column is there and the new one is not: the script may run
        // against a table that has the new name already.
        if (DAO_FeldVorhanden(m_db, Tabelle, alt) && !DAO_FeldVorhanden(m_db, Tabelle, neu) &&
            !DAO_FeldUmbenennen(m_db, Tabelle, alt, neu)) {
            Fehlschlag(zeile,
                       "die Spalte \"" + std::string(alt) + "\" kann nicht umbenannt werden");
            return;
        }
        Gelungen();
    }

    // A run of DEL lines: one new build of the table without their columns. SQLite's DROP COLUMN
    // rewrites the whole table for every column; Alkis holds a hundred thousand wide rows and the
    // script drops a hundred columns.
    void DelBlock(const std::vector<std::string>& zeilen, std::size_t von, std::size_t bis) {
        std::vector<std::pair<std::size_t, std::string>> weg; // line number, real column name
        std::vector<std::string> vorhanden;
        const bool tabelleDa = DAO_TabelleVorhanden(m_db, Tabelle);
        if (tabelleDa)
            vorhanden = m_db.Spaltennamen(Tabelle);
        for (std::size_t i = von; i < bis; ++i) {
            const std::string& zeile = zeilen[i];
            Zeile(i);
            Ankündigen(zeile);
            const auto spalte = Wort(zeile, 1);
            if (spalte.empty()) {
                Fehlschlag(zeile, "Spaltenname fehlt");
                continue;
            }
            if (!tabelleDa) {
                Fehlschlag(zeile, "die Tabelle \"" + std::string(Tabelle) + "\" fehlt");
                continue;
            }
            const auto echt =
                std::find_if(vorhanden.begin(), vorhanden.end(),
                             [&](const std::string& name) { return GleichOhneFall(name, spalte); });
            const bool schonDabei = echt != vorhanden.end() &&
                                    std::any_of(weg.begin(), weg.end(),
                                                [&](const auto& w) { return w.second == *echt; });
            if (echt == vorhanden.end() || schonDabei) {
                Gelungen(); // a column that isn't there is passed over
                continue;
            }
            weg.emplace_back(i, *echt);
        }
        if (weg.empty())
            return;

        std::vector<std::string> namen;
        for (const auto& w : weg)
            namen.push_back(w.second);
        std::string grund;
        if (OhneSpaltenNeuAnlegen(namen, grund)) {
            m_bericht.ausgeführt += static_cast<std::int64_t>(weg.size());
            return;
        }
        // The new build was not possible (a table constraint, a failing statement): the columns
        // go one by one, the slow way, each line on its own account.
        m_protokoll.Eintrag(", Hinweis Zuordnung: Spalten werden einzeln gelöscht, " + grund);
        for (const auto& [nummer, spalte] : weg) {
            if (DAO_FeldLöschen(m_db, Tabelle, spalte))
                Gelungen();
            else
                Fehlschlag(zeilen[nummer],
                           "die Spalte \"" + spalte + "\" kann nicht gelöscht werden");
        }
    }

    Zuordnungsbericht Bericht() const { return m_bericht; }

private:
    bool TabellePrüfen(const std::string& zeile) {
        if (DAO_TabelleVorhanden(m_db, Tabelle))
            return true;
        Fehlschlag(zeile, "die Tabelle \"" + std::string(Tabelle) + "\" fehlt");
        return false;
    }

    // A statement's failure is the line's; a database that can't even be read any more is the
    // whole run's.
    void DatenbankPrüfen() {
        try {
            m_db.AusführenNativ("SELECT count(*) FROM sqlite_master");
        } catch (const Fehler& fehler) {
            throw Fehler(std::string("Zuordnung abgebrochen, die Datenbank ist nicht mehr "
                                     "lesbar: ") +
                         fehler.what());
        }
    }

    static bool GehtWeg(const std::vector<std::string>& weg, std::string_view name) {
        return std::any_of(weg.begin(), weg.end(),
                           [&](const std::string& w) { return GleichOhneFall(w, name); });
    }

    // The statements of the indexes on columns that stay; those on a dropped column go with it.
    std::vector<std::string> BleibendeIndizes(const std::string& tabelle,
                                              const std::vector<std::string>& weg) {
        std::vector<std::string> indizes;
        auto abfrage = m_db.VorbereitenNativ(
            "SELECT name, sql FROM sqlite_master WHERE type = 'index' AND tbl_name = ? AND "
            "sql IS NOT NULL");
        abfrage.Binde(tabelle);
        auto info = m_db.VorbereitenNativ("SELECT name FROM pragma_index_info(?)");
        while (abfrage.Schritt()) {
            info.Zurücksetzen();
            info.Binde(abfrage.Text(0));
            bool bleibt = true;
            while (info.Schritt())
                if (!info.IstNull(0) && GehtWeg(weg, info.Text(0)))
                    bleibt = false;
            if (bleibt)
                indizes.emplace_back(abfrage.Text(1));
        }
        return indizes;
    }

    // Makes Alkis anew without the columns `weg` (real names): a new table with the remaining
    // columns in their order and with their definitions, the rows copied with their rowids, the
    // old table dropped and the new one renamed; the indexes on remaining columns are made again.
    // False with `grund` when it could not be done; the table is then as before.
    bool OhneSpaltenNeuAnlegen(const std::vector<std::string>& weg, std::string& grund) {
        std::string tabelle; // as the schema spells it
        std::string sql;
        {
            auto abfrage = m_db.VorbereitenNativ(
                "SELECT name, sql FROM sqlite_master WHERE type = 'table' AND name = ? COLLATE "
                "NOCASE");
            abfrage.Binde(Tabelle);
            if (!abfrage.Schritt()) {
                grund = "Tabelle nicht gefunden";
                return false;
            }
            tabelle = abfrage.Text(0);
            sql = abfrage.Text(1);
        }
        const auto definition = TabellendefinitionLesen(sql);
        const auto spalten = m_db.Spaltennamen(tabelle);
        if (!definition || definition->spalten.size() != spalten.size()) {
            grund = "die Tabellendefinition lässt sich nicht neu aufbauen";
            return false;
        }
        bool mitSchlüssel = false; // an INTEGER PRIMARY KEY carries the rowid itself
        {
            auto pk = m_db.VorbereitenNativ("SELECT 1 FROM pragma_table_info(?) WHERE pk > 0");
            pk.Binde(tabelle);
            mitSchlüssel = pk.Schritt();
        }
        const auto gehtWeg = [&](std::string_view name) { return GehtWeg(weg, name); };
        std::string neueSpalten;
        std::string liste;
        for (std::size_t i = 0; i < spalten.size(); ++i) {
            if (definition->spalten[i].name != spalten[i]) {
                grund = "die Tabellendefinition lässt sich nicht neu aufbauen";
                return false;
            }
            if (gehtWeg(spalten[i]))
                continue;
            const auto& d = definition->spalten[i];
            neueSpalten += (neueSpalten.empty() ? "" : ", ") + Bezeichner(d.name) +
                           (d.definition.empty() ? "" : " " + d.definition);
            liste += (liste.empty() ? "" : ", ") + Bezeichner(d.name);
        }
        if (liste.empty()) {
            grund = "eine Tabelle ohne Spalten gibt es nicht";
            return false;
        }

        const std::vector<std::string> indizes = BleibendeIndizes(tabelle, weg);

        const bool eigeneTransaktion = !m_db.TransaktionOffen();
        try {
            if (eigeneTransaktion)
                m_db.AusführenNativ("BEGIN");
            if (DAO_TabelleVorhanden(m_db, NeueTabelle))
                m_db.AusführenNativ("DROP TABLE " + Bezeichner(NeueTabelle));
            m_db.AusführenNativ("CREATE TABLE " + Bezeichner(NeueTabelle) + " (" + neueSpalten +
                                ")" + definition->nachsatz);
            if (mitSchlüssel)
                m_db.AusführenNativ("INSERT INTO " + Bezeichner(NeueTabelle) + " (" + liste +
                                    ") SELECT " + liste + " FROM " + Bezeichner(tabelle));
            else
                m_db.AusführenNativ("INSERT INTO " + Bezeichner(NeueTabelle) + " (rowid, " + liste +
                                    ") SELECT rowid, " + liste + " FROM " + Bezeichner(tabelle));
            m_db.AusführenNativ("DROP TABLE " + Bezeichner(tabelle));
            m_db.AusführenNativ("ALTER TABLE " + Bezeichner(NeueTabelle) + " RENAME TO " +
                                Bezeichner(tabelle));
            for (const auto& index : indizes) {
                try {
                    m_db.AusführenNativ(index);
                } catch (const Fehler& fehler) {
                    m_protokoll.Eintrag(", Hinweis Zuordnung: Index nicht wieder angelegt, " +
                                        std::string(fehler.what()));
                }
            }
            if (eigeneTransaktion)
                m_db.AusführenNativ("COMMIT");
        } catch (const Fehler& fehler) {
            grund = fehler.what();
            Aufräumen(tabelle, eigeneTransaktion);
            return false;
        }
        return true;
    }

    // After a failed new build: the old table is kept when it is still there, else the new one
    // takes its place. No ROLLBACK: the object database runs without a journal, where SQLite
    // can't undo; the steps are ordered so that the rows are never lost.
    void Aufräumen(const std::string& tabelle, bool eigeneTransaktion) {
        try {
            const bool alt = DAO_TabelleVorhanden(m_db, tabelle);
            const bool neu = DAO_TabelleVorhanden(m_db, NeueTabelle);
            if (alt && neu)
                m_db.AusführenNativ("DROP TABLE " + Bezeichner(NeueTabelle));
            else if (!alt && neu)
                m_db.AusführenNativ("ALTER TABLE " + Bezeichner(NeueTabelle) + " RENAME TO " +
                                    Bezeichner(tabelle));
            if (eigeneTransaktion && m_db.TransaktionOffen())
                m_db.AusführenNativ("COMMIT");
        } catch (const Fehler& fehler) {
            throw Fehler("Zuordnung abgebrochen, die Tabelle \"" + tabelle +
                         "\" lässt sich nicht wiederherstellen: " + fehler.what());
        }
    }

    Datenbank& m_db;
    NasProtokoll& m_protokoll;
    Oberfläche& m_ui;
    std::size_t m_zeilenzahl;
    Zuordnungsbericht m_bericht;
};

} // namespace

std::vector<std::string> ZuordnungLesen(std::string_view text) {
    std::vector<std::string> zeilen;
    for (std::string_view roh : Teilen(text, '\n')) {
        std::string zeile;
        zeile.reserve(roh.size());
        for (const char c : roh)
            if (c != '\t' && c != '\r')
                zeile += c;
        const auto getrimmt = TrimmeLeerzeichen(zeile);
        if (getrimmt.empty() || getrimmt.front() == '*')
            continue;
        zeilen.emplace_back(getrimmt);
    }
    return zeilen;
}

Zuordnungsbericht ZuordnungAusführen(Datenbank& db, const std::vector<std::string>& zeilen,
                                     NasProtokoll& protokoll, Oberfläche& ui) {
    ZuordnungsfunktionenRegistrieren(db);
    Lauf lauf(db, protokoll, ui, zeilen.size());
    for (std::size_t i = 0; i < zeilen.size();) {
        const std::string& zeile = zeilen[i];
        const Befehl befehl = BefehlDerZeile(zeile);
        if (befehl != Befehl::Del)
            lauf.Zeile(i);
        if (befehl == Befehl::Del) {
            std::size_t bis = i + 1;
            while (bis < zeilen.size() && BefehlDerZeile(zeilen[bis]) == Befehl::Del)
                ++bis;
            lauf.DelBlock(zeilen, i, bis);
            i = bis;
            continue;
        }
        if (befehl != Befehl::Keiner)
            lauf.Ankündigen(zeile);
        switch (befehl) {
        case Befehl::Sql:
            lauf.Sql(zeile);
            break;
        case Befehl::Add:
            lauf.Add(zeile);
            break;
        case Befehl::Chg:
            lauf.Chg(zeile);
            break;
        case Befehl::Del:
        case Befehl::Keiner:
            break;
        }
        ++i;
    }
    return lauf.Bericht();
}

std::string Punktliste(std::string_view ringText) {
    // The reorganisation has put the chords of the arcs into the ring text already.
    const auto ringe = RingeAusText(ringText, {}, ReorganisationsPfeilhöhe, nullptr);
    std::string liste;
    for (const Ring& ring : ringe) {
        if (!liste.empty())
            liste += '|';
        liste += PunktlisteText(ring);
    }
    return liste;
}

void ZuordnungsfunktionenRegistrieren(Datenbank& db) {
    db.TextFunktionRegistrieren("PUNKTLISTE", &Punktliste);
}

} // namespace flurix::nas
