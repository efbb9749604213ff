#pragma once
// The table Alkis of the NAS object database: one row per parcel and owner, the flat form the
// compilation builds from the feature graph. Its columns are those of AX_Flurstueck (but its
// point position and its arcs), an "<attribute>_<table>" column for each attribute joined from
// the bookings, sheets, districts, offices, locations, name numbers, persons and addresses, and
// the link and text columns of the joins.

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace flurix {
class Datenbank;
}

namespace flurix::nas {

inline constexpr std::string_view AlkisTabelle = "Alkis";

/// A source table of the joins and the attributes it gives to Alkis.
struct Quelltabelle {
    std::string_view tabelle;
    std::span<const std::string_view> attribute;
};

/// The joined tables in the order their columns stand in Alkis.
std::span<const Quelltabelle> Quelltabellen();
/// "<attribute>_<table>": the Alkis column of a joined attribute.
std::string AlkisSpalte(std::string_view attribut, std::string_view tabelle);

/// The columns of Alkis, in order, with their SQLite declarations.
class AlkisSpalten {
public:
    /// Reads the parcel table's columns from `db` and adds the joined and link columns.
    explicit AlkisSpalten(Datenbank& db);

    std::size_t Anzahl() const { return m_namen.size(); }
    const std::string& Name(std::size_t i) const { return m_namen[i]; }
    const std::string& Deklaration(std::size_t i) const { return m_deklarationen[i]; }
    /// The index of a column; throws std::out_of_range for a name Alkis doesn't have.
    std::size_t Index(std::string_view name) const;
    std::optional<std::size_t> Suchen(std::string_view name) const;
    /// The columns of AX_Flurstueck that the rows copy, with their index in Alkis.
    const std::vector<std::pair<std::string, std::size_t>>& Flurstücksspalten() const {
        return m_flurstück;
    }

private:
    void Hinzufügen(std::string name, std::string deklaration);

    std::vector<std::string> m_namen;
    std::vector<std::string> m_deklarationen;
    std::unordered_map<std::string, std::size_t> m_index;
    std::vector<std::pair<std::string, std::size_t>> m_flurstück;
};

/// Drops Alkis when it exists and makes it anew with these columns (text compared without regard
/// to case, as in every table of the object database). Throws Fehler.
void AlkisAnlegen(Datenbank& db, const AlkisSpalten& spalten);

/// One row of Alkis under construction: a value per column, or none (NULL).
class AlkisZeile {
public:
    explicit AlkisZeile(const AlkisSpalten& spalten) : m_spalten(&spalten), m_werte(spalten.Anzahl()) {}

    std::size_t Anzahl() const { return m_werte.size(); }
    const std::optional<std::string>& Wert(std::size_t i) const { return m_werte[i]; }
    /// The text of a column; "" for NULL.
    std::string_view Text(std::string_view spalte) const;
    void Setzen(std::size_t i, std::string wert) { m_werte[i] = std::move(wert); }
    void Setzen(std::string_view spalte, std::string wert);

private:
    const AlkisSpalten* m_spalten;
    std::vector<std::optional<std::string>> m_werte;
};

/// Inserts rows into Alkis with one prepared statement.
class AlkisSchreiber {
public:
    AlkisSchreiber(Datenbank& db, const AlkisSpalten& spalten);
    ~AlkisSchreiber();
    AlkisSchreiber(const AlkisSchreiber&) = delete;
    AlkisSchreiber& operator=(const AlkisSchreiber&) = delete;
    void Schreiben(const AlkisZeile& zeile);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace flurix::nas
