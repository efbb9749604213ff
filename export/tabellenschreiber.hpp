#pragma once
// The writers of the tabular exports: delimited text, Excel workbook, XML document, Access form
// (an SQLite database) and the HTML report. They are sibling classes behind one small interface:
// the caller hands them the columns once and then the rows one by one, so that memory follows one
// row, never the table. Which rows and columns leave the table is decided by the caller
// (Ausgabeauswahl), not by a writer.

#include "core/zieldatei.hpp"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Kataster;
class Oberfläche;
} // namespace flurix

namespace flurix::ausgabe {

/// One column as it leaves the table.
struct Ausgabespalte {
    std::string schlüssel;   ///< key: names the XML element
    std::string überschrift; ///< caption: the first line of text, Excel and HTML, Access field name
    int breite = 1000;       ///< width in twips: Excel column width
};

/// A writer of one export format. Zeile() takes one cell per column given at construction.
/// Abschließen() completes the file; a writer destroyed without it removes what it wrote, so that a
/// failed export never leaves a file that looks whole but lacks rows. Every failure throws Fehler
/// with a German message naming the file.
class Tabellenschreiber {
public:
    Tabellenschreiber() = default;
    Tabellenschreiber(const Tabellenschreiber&) = delete;
    Tabellenschreiber& operator=(const Tabellenschreiber&) = delete;
    Tabellenschreiber(Tabellenschreiber&&) = delete;
    Tabellenschreiber& operator=(Tabellenschreiber&&) = delete;
    virtual ~Tabellenschreiber() = default;

    /// Writes one row: one cell per column, UTF-8.
    virtual void Zeile(std::span<const std::string_view> zellen) = 0;
    /// Completes the file. Throws Fehler naming the file when that fails.
    virtual void Abschließen() = 0;
};

namespace detail {

/// The code point of the UTF-8 character at `pos`, which moves behind it; -1 for a byte that
/// starts no valid sequence (overlong forms and surrogates included), and `pos` moves one byte on.
long NächstesZeichen(std::string_view text, std::size_t& pos);

} // namespace detail

/// Delimited text: Windows-1252 (a character that 1252 can't hold becomes "?"), CR LF after each
/// line, the captions in the first line, and one delimiter behind every field, the last included.
/// The text has no quoting, so a cell's own delimiter, CR or LF would split it: each of them becomes
/// one blank, which keeps every row on one line and every cell in its column.
class TrennzeichenSchreiber final : public Tabellenschreiber {
public:
    /// Creates the file and writes the caption line. Throws Fehler when it can't be created.
    TrennzeichenSchreiber(const std::filesystem::path& datei, std::span<const Ausgabespalte> spalten,
                          char trenner);
    void Zeile(std::span<const std::string_view> zellen) override;
    void Abschließen() override { m_datei.Abschließen(); }

private:
    void Feld(std::string_view text);

    Zieldatei m_datei;
    char m_trenner;
};

/// The XML document of the export; its layout is told in README.md ("XML-Export"). UTF-8; a row is
/// a <Zeile> element, a cell the child named by its column's key (ElementName); characters that XML
/// 1.0 can't hold (control characters other than TAB, LF, CR, and invalid UTF-8) become "?".
class XmlSchreiber final : public Tabellenschreiber {
public:
    XmlSchreiber(const std::filesystem::path& datei, std::span<const Ausgabespalte> spalten);
    void Zeile(std::span<const std::string_view> zellen) override;
    void Abschließen() override;

private:
    Zieldatei m_datei;
    std::vector<std::string> m_namen; ///< element name per column
};

/// The element name of a column key: characters a name can hold stay, every other character c
/// becomes "_xHHHH_" (c's code point in 4 upper-case hex digits, 8 beyond U+FFFF), and a "_" that
/// would read as the start of such a sequence becomes "_x005F_"; so a key is always told back
/// from its name. ":" is escaped too (namespace-aware readers take it as a prefix). An empty key
/// gives "_". Never fails.
std::string ElementName(std::string_view schlüssel);

/// The Excel workbook (.xlsx) through libxlsxwriter: one sheet (the main table's "ALB-Daten"), the captions in the
/// first row (bold), every column formatted as text ("@") and every cell written as a string, so
/// that "00231" stays "00231". A cell longer than Excel's 32767 characters is cut there. Rows are
/// written in constant-memory mode; the library's scratch files go to `arbeitsordner`.
class XlsxSchreiber final : public Tabellenschreiber {
public:
    /// Throws Fehler when the workbook can't be started or more columns are given than a sheet has.
    XlsxSchreiber(const std::filesystem::path& datei, std::span<const Ausgabespalte> spalten,
                  const std::filesystem::path& arbeitsordner,
                  const std::string& blattname = "ALB-Daten");
    ~XlsxSchreiber() override;
    /// Throws Fehler past Excel's last row (1,048,576 with the captions).
    void Zeile(std::span<const std::string_view> zellen) override;
    void Abschließen() override;

private:
    struct Zustand;
    std::unique_ptr<Zustand> m_zustand;
};

/// The Access form: a new SQLite database whose table "ACCESS" has one text field per column,
/// named by its caption with blanks trimmed, in the order given. A column whose caption is blank
/// gets no field, and its cells are left out. A caption that comes again (names compare without
/// regard to case) gets "_2", "_3", ... so that no field is lost. A value longer than 255
/// characters is cut to its first 252 characters and "...". The rows are inserted in one
/// transaction.
class AccessSchreiber final : public Tabellenschreiber {
public:
    /// Creates the database (the file must not exist yet) and the table. Throws Fehler when that
    /// fails or no caption is left.
    AccessSchreiber(const std::filesystem::path& datenbank, std::span<const Ausgabespalte> spalten);
    ~AccessSchreiber() override;
    void Zeile(std::span<const std::string_view> zellen) override;
    void Abschließen() override;

    /// The field names, in the order of the table.
    const std::vector<std::string>& Feldnamen() const { return m_felder; }

private:
    struct Zustand;
    std::unique_ptr<Zustand> m_zustand;
    std::vector<std::string> m_felder;
    std::vector<std::size_t> m_quellen; ///< per field: the column it takes its cell from
};

/// A value as the Access form keeps it: up to 255 characters as it is, longer ones cut to their
/// first 252 characters and "...". Characters, not bytes: an umlaut counts once.
std::string AccessWert(std::string_view wert);

/// The HTML report of the table: UTF-8, title "DataGrid Report", header "ALB-Daten", Arial 9 pt,
/// one table row per row, every cell HTML-escaped (a line break in a cell shows as <br>), and the
/// row count below. No date or version, so the same table gives the same bytes.
class HtmlSchreiber final : public Tabellenschreiber {
public:
    HtmlSchreiber(const std::filesystem::path& datei, std::span<const Ausgabespalte> spalten);
    void Zeile(std::span<const std::string_view> zellen) override;
    void Abschließen() override;

private:
    Zieldatei m_datei;
    std::size_t m_zeilen = 0;
};

/// Which part of the table an export takes: the visible columns in the order they are shown, and
/// the selected rows, or all rows when none is selected.
struct Ausgabeauswahl {
    std::vector<std::size_t> spalten; ///< column indices, shown order
    std::vector<std::size_t> zeilen;  ///< row indices, table order
};

/// The visible columns in shown order, and the selected rows or all.
Ausgabeauswahl AusgabeauswahlBilden(const Kataster& kataster);

/// The columns of the choice as the writers take them.
std::vector<Ausgabespalte> Ausgabespalten(const Kataster& kataster, const Ausgabeauswahl& auswahl);

/// Passes the chosen rows through the writer and completes it. With `ui`, panel 2 shows the
/// percent written + `statustext` each time it grows. Throws what the writer throws.
void TabelleSchreiben(const Kataster& kataster, const Ausgabeauswahl& auswahl,
                      Tabellenschreiber& schreiber, Oberfläche* ui = nullptr,
                      std::string_view statustext = "% exportiert  ");

} // namespace flurix::ausgabe
