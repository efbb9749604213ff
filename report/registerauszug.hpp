#pragma once
// The register extract "AUSZUG AUS DEM LIEGENSCHAFTSKATASTER": for the parcel of one table row a
// one- or more-page PDF with the administrative header, the parcel data, the land use, notes,
// predecessors, the land-register stand and all owners of the parcel. Every page is drawn with
// DrawBox and DrawText of clsPDF from its PageStarted event (pdf_PageStarted); the line printer
// only forces the pages into being.
//
// The cells come from the table Kataster, one row per owner. The owners of a parcel are the rows
// with the same parcel key as the row the extract starts at (see ParcelRows), in table order; a
// table sorted by parcel and Eigentümerposition, as the program sorts it, has them on consecutive
// rows.

#include "report/cls_pdf.hpp"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Kataster;
class Oberfläche;
} // namespace flurix

namespace flurix::report {

/// The message of a page that could not be finished: a split list shorter than its partner, an
/// owner whose Eigentümerposition is lower than the one before it. Shown with the title
/// ProduktTitel in information style.
inline constexpr char AuszugSortierfehler[] =
    "Die Mehrfacheigentümer je Flurstücke sind falsch sortiert!   \n"
    "Bitte sortieren Sie entsprechend der Eigentümerposition!   ";

/// What one extract produced.
struct Auszug {
    std::filesystem::path datei; ///< where the file was written
    std::string inhalt;          ///< the bytes of the file
    std::int32_t seiten = 0;     ///< pages of the document
    bool gespeichert = false;    ///< false when the file could not be written (no message)
    bool unvollständig = false;  ///< a page ended in AuszugSortierfehler (the message was shown)
};

/// The register extract of the main window. One object lives as long as the window: the first
/// owner of the last continuation page (J0) carries over to the next extract, where it shifts the
/// line of Eigentümerzusatz on a first page, as that line has always been placed.
class Registerauszug {
public:
    /// Producer text, footer title and clock of the documents: the footer names herkunft.producer
    /// (the main window's title) and the date "Datum" comes from herkunft.uhr, the clock of
    /// /CreationDate, so that a fixed clock fixes the whole file.
    explicit Registerauszug(PdfHerkunft herkunft);
    Registerauszug(const Registerauszug&) = delete;
    Registerauszug& operator=(const Registerauszug&) = delete;
    Registerauszug(Registerauszug&&) = delete;
    Registerauszug& operator=(Registerauszug&&) = delete;
    ~Registerauszug() = default;

    /// The extract of the parcel of row `zeile` (from 0): header and parcel data from the parcel's
    /// first row, then every owner row of the parcel (ParcelRows) in table order, so that any
    /// row of the parcel gives the same extract. The file goes to `datei` when given, else into
    /// `ordner` under AuszugDateiname. A page that cannot be finished shows AuszugSortierfehler on
    /// `ui` and ends the report there; the file is still written with what stands. Returns nothing,
    /// and does nothing, for a row outside the table. Never throws for bad cells.
    std::optional<Auszug>
    CreateRegisterExtract(const Kataster& kataster, std::size_t zeile,
                          const std::filesystem::path& ordner, Oberfläche& ui,
                          const std::optional<std::filesystem::path>& datei = {});

private:
    void pdf_PageStarted();
    void Rahmen();
    void Kopfbereich();
    void Flurstücksdaten();
    void Nutzung();
    void Hinweise();
    void Vorgänger();
    void Grundbuch();
    // How a page lists its owners: the line of the first owner number (R = 0, J = J0), how many
    // lines below it the page-full test looks, the stand label, the order of Ort and Straße,
    // whether F follows the owners, and the J the lines count from.
    struct Eigentümerform {
        std::int32_t nummernzeile;
        std::int32_t prüfabstand;
        std::string_view bestand;
        bool ortVorStraße;
        bool merktF;
        std::int32_t j0;
    };
    bool Eigentümerschleife(const Eigentümerform& form); ///< false: the page is full
    bool NächsterEigentümer();                           ///< false: the owners are done
    void Eigentümerzusatz();
    void Flächenzeile(std::int32_t zeile, std::string_view fläche);
    std::string Bestandsdetail(std::size_t zeile) const;
    std::string Bestandstext(std::size_t zeile) const;
    void Bestandszeile(std::size_t zeile, std::string_view beschriftung, std::int32_t linie);
    std::string_view Eigene(std::string_view schlüssel) const;
    std::string_view Zeile(std::size_t zeile, std::string_view schlüssel) const;
    void Text(float x, float y, std::string_view text);

    PdfHerkunft m_herkunft;
    std::int32_t m_J0 = 0; ///< J at the start of the last continuation page, across extracts

    // State of one extract, valid while CreateRegisterExtract runs.
    clsPDF* m_pdf = nullptr;
    const Kataster* m_kataster = nullptr;
    std::vector<std::size_t> m_eigentümer; ///< rows of the parcel, in table order
    std::string m_datum;                   ///< "Datum" of the header, dd.mm.yyyy
    std::int32_t m_seitenstand = 1;        ///< 1 first page, 2 and up continuation pages
    bool m_weitereSeiten = false;
    std::int32_t m_J = 0; ///< owners done: m_eigentümer[m_J] is the next one
    // Per page: row offset R, correction F, remembered stand text S.
    std::int32_t m_R = 0;
    std::int32_t m_F = 0;
    std::string m_S;
    bool m_fehler = false; ///< a page ended in AuszugSortierfehler
};

/// The file name of the extract of row `zeile`: "ALB-<Gemarkungsschlüssel>-<Flur>-<Flurstück
/// without "/">.pdf" with every blank removed (120101, 001, 12/3 → "ALB-120101-001-123.pdf").
std::string AuszugDateiname(const Kataster& kataster, std::size_t zeile);

/// The rows of the parcel of row `zeile`, in table order: the rows whose Flurstückskennzeichen
/// equals the row's when the table has that column and the row's cell is not empty; otherwise
/// the rows with the same Gemarkungsschlüssel, Flur and Flurstück (WLDGE tables have no
/// Flurstückskennzeichen). Found through an index of one column, not by a scan per owner.
std::vector<std::size_t> ParcelRows(const Kataster& kataster, std::size_t zeile);

// ---- the text forms of the extract
// ----------------------------------------------------------------

/// Blanks cut from the right end, then from the left end (tabs and other white space stay).
std::string_view Trimmen(std::string_view text);

/// An area as "0000000000" formats it: a number rounded to a whole one, at least ten digits with
/// leading zeros (1234 → "0000001234", "-5" → "-0000000005"); "" for an empty cell; a text that
/// is no number stays as it is. Blanks around the cell are cut.
std::string Flächenformat(std::string_view zelle);

/// The owner number of a Namensnummer: the numeric values of characters 1-4, 5-6 and 7-8 joined
/// by "." (00010002 → "1.0.2"; a part that holds no number counts 0).
std::string Eigentümernummer(std::string_view namensnummer);

/// The Lage line: Straßenschlüssel, a blank, Lagebezeichnung, trimmed; longer than 65 characters
/// it is cut to its first 60 and "...". Characters are counted, not bytes.
std::string Lagetext(std::string_view straßenschlüssel, std::string_view lagebezeichnung);

/// Today's date of the header in the short German form, dd.mm.yyyy.
std::string Kurzdatum(const std::tm& zeit);

/// The pieces of a list cell split at ";". An empty cell has no piece at all, as list cells have
/// always been read, so an empty Nutzung_tatsächlich prints no land-use line.
std::vector<std::string_view> Listenteile(std::string_view zelle);

} // namespace flurix::report
