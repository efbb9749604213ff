#pragma once
// Tables of an object database as text, for the NAS tests and benchmarks: fixtures in the form of
// tests/daten/nas/README.md ("# Tabelle <name>", a header line, TAB-separated rows, \N for NULL),
// made as Datenbank::TabelleAnlegen makes text; results one cell a line for golden files.

#include "core/datenbank.hpp"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace flurix::test {

/// One table of a fixture file.
struct Tabellentext {
    std::string name;
    std::vector<std::string> spalten;
    std::vector<std::vector<std::string>> zeilen; ///< "\\N" stands for NULL
};

inline std::vector<std::string> TabGeteilt(std::string_view zeile) {
    std::vector<std::string> teile;
    for (std::size_t anfang = 0;;) {
        const auto tab = zeile.find('\t', anfang);
        teile.emplace_back(zeile.substr(anfang, tab - anfang));
        if (tab == std::string_view::npos)
            return teile;
        anfang = tab + 1;
    }
}

/// The tables of a fixture file; throws std::runtime_error when it can't be read or a row has
/// another number of cells than its header.
inline std::vector<Tabellentext> TabellentexteLesen(const std::filesystem::path& datei) {
    std::ifstream ein(datei, std::ios::binary);
    if (!ein)
        throw std::runtime_error("nicht lesbar: " + datei.string());
    std::vector<Tabellentext> tabellen;
    bool kopf = false;
    for (std::string zeile; std::getline(ein, zeile);) {
        if (!zeile.empty() && zeile.back() == '\r')
            zeile.pop_back();
        if (zeile.starts_with("# Tabelle ")) {
            tabellen.push_back({zeile.substr(10), {}, {}});
            kopf = true;
        } else if (zeile.empty() || zeile.starts_with('#')) {
            continue;
        } else if (tabellen.empty()) {
            throw std::runtime_error(datei.string() + ": Zeile vor der ersten Tabelle");
        } else if (kopf) {
            tabellen.back().spalten = TabGeteilt(zeile);
            kopf = false;
        } else {
            tabellen.back().zeilen.push_back(TabGeteilt(zeile));
            if (tabellen.back().zeilen.back().size() != tabellen.back().spalten.size())
                throw std::runtime_error(datei.string() + ": Zellenzahl in " + tabellen.back().name);
        }
    }
    return tabellen;
}

/// Makes the tables of a fixture file in the database and fills them.
inline void TabellenAnlegen(Datenbank& db, const std::vector<Tabellentext>& tabellen) {
    for (const auto& t : tabellen) {
        std::vector<Feld> felder;
        std::string namen;
        std::string fragen;
        for (const auto& s : t.spalten) {
            felder.push_back({s, Feldtyp::Text});
            namen += (namen.empty() ? "" : ", ") + Bezeichner(s);
            fragen += fragen.empty() ? "?" : ", ?";
        }
        db.TabelleAnlegen(t.name, felder);
        auto einfügen = db.VorbereitenNativ("INSERT INTO " + Bezeichner(t.name) + " (" + namen +
                                            ") VALUES (" + fragen + ")");
        for (const auto& zeile : t.zeilen) {
            einfügen.Zurücksetzen();
            for (const auto& zelle : zeile) {
                if (zelle == "\\N")
                    einfügen.Binde(nullptr);
                else
                    einfügen.Binde(std::string_view(zelle));
            }
            einfügen.Schritt();
        }
    }
}

inline void TabellenAnlegen(Datenbank& db, const std::filesystem::path& datei) {
    TabellenAnlegen(db, TabellentexteLesen(datei));
}

/// The rows of a query one cell a line: "<first column> | <column> = <value>" (NULL for NULL),
/// the first column naming the row; for a golden-file comparison whose first differing line
/// says which row and column went wrong.
inline std::string ZellenText(Datenbank& db, const std::string& sql) {
    auto abfrage = db.VorbereitenNativ(sql);
    std::ostringstream aus;
    while (abfrage.Schritt()) {
        const std::string zeile = abfrage.IstNull(0) ? "NULL" : std::string(abfrage.Text(0));
        for (int i = 1; i < abfrage.Spaltenanzahl(); ++i)
            aus << zeile << " | " << abfrage.Spaltenname(i) << " = "
                << (abfrage.IstNull(i) ? std::string("NULL") : std::string(abfrage.Text(i))) << '\n';
    }
    return aus.str();
}

/// The rows of a query, each its cells joined with "|" (NULL as "").
inline std::vector<std::string> Abfragezeilen(Datenbank& db, const std::string& sql) {
    std::vector<std::string> zeilen;
    auto abfrage = db.VorbereitenNativ(sql);
    while (abfrage.Schritt()) {
        std::string& zeile = zeilen.emplace_back();
        for (int i = 0; i < abfrage.Spaltenanzahl(); ++i)
            zeile += (i ? "|" : "") + std::string(abfrage.Text(i));
    }
    return zeilen;
}

} // namespace flurix::test
