#include "export/tabellenschreiber.hpp"

#include "core/dateikanal.hpp"
#include "core/fehler.hpp"
#include "core/zieldatei.hpp"

#include <xlsxwriter.h>

#include <algorithm>
#include <cmath>

namespace flurix::ausgabe {
namespace {

// Excel's longest cell text, in characters.
constexpr std::size_t LängsterText = 32767;

// A character a sheet can't hold: invalid UTF-8, control characters XML 1.0 refuses, non-characters.
bool Unzulässig(long c) {
    return c < 0 || (c < 0x20 && c != '\t' && c != '\n' && c != '\r') || c == 0xFFFE || c == 0xFFFF;
}

// A cell as libxlsxwriter takes it: well-formed UTF-8 without the control characters XML can't
// hold ("?" instead), cut at Excel's longest text. Most cells pass unchanged.
std::string_view Zelltext(std::string_view text, std::string& ersatz) {
    std::size_t pos = 0;
    std::size_t zeichen = 0;
    bool sauber = true;
    while (pos < text.size() && sauber) {
        const long c = detail::NächstesZeichen(text, pos);
        sauber = !Unzulässig(c) && ++zeichen <= LängsterText;
    }
    if (sauber)
        return text;
    ersatz.clear();
    pos = 0;
    zeichen = 0;
    while (pos < text.size() && zeichen < LängsterText) {
        const std::size_t anfang = pos;
        const long c = detail::NächstesZeichen(text, pos);
        if (Unzulässig(c))
            ersatz += '?';
        else
            ersatz.append(text.substr(anfang, pos - anfang));
        ++zeichen;
    }
    return ersatz;
}

std::string Grund(lxw_error fehler) {
    if (fehler == LXW_ERROR_CREATING_XLSX_FILE)
        return "keine Schreibberechtigung oder Ordner nicht vorhanden";
    if (fehler == LXW_ERROR_CREATING_TMPFILE)
        return "keine Zwischendatei im Arbeitsverzeichnis";
    return lxw_strerror(fehler);
}

} // namespace

struct XlsxSchreiber::Zustand {
    std::filesystem::path datei;
    std::filesystem::path temporär; // the workbook is written here and renamed when complete
    std::string arbeitsordner; // libxlsxwriter keeps the pointer until the workbook is closed
    lxw_workbook* buch = nullptr;
    lxw_worksheet* blatt = nullptr;
    lxw_format* text = nullptr;
    lxw_row_t zeile = 0;
    std::size_t spalten = 0;
    std::string ersatz;
    std::string cString;

    [[noreturn]] void Fehlschlag(lxw_error fehler) const {
        throw Fehler("Die Excel-Datei " + datei.string() + " kann nicht geschrieben werden (" +
                     Grund(fehler) + ")!");
    }
    void Schreiben(lxw_col_t spalte, std::string_view zelle, lxw_format* format) {
        const std::string_view sauber = Zelltext(zelle, ersatz);
        // libxlsxwriter takes C strings: the view is copied into one reused buffer.
        cString.assign(sauber);
        const lxw_error fehler =
            worksheet_write_string(blatt, zeile, spalte, cString.c_str(), format);
        if (fehler != LXW_NO_ERROR)
            Fehlschlag(fehler);
    }
};

XlsxSchreiber::XlsxSchreiber(const std::filesystem::path& datei,
                             std::span<const Ausgabespalte> spalten,
                             const std::filesystem::path& arbeitsordner, const std::string& blattname)
    : m_zustand(std::make_unique<Zustand>()) {
    Zustand& z = *m_zustand;
    z.datei = datei;
    z.arbeitsordner = arbeitsordner.string();
    z.spalten = spalten.size();
    if (spalten.size() > LXW_COL_MAX)
        throw Fehler("Die Excel-Datei " + datei.string() + " fasst höchstens " +
                     std::to_string(LXW_COL_MAX) + " Spalten!");
    lxw_workbook_options optionen{};
    optionen.constant_memory = LXW_TRUE;
    optionen.tmpdir = z.arbeitsordner.empty() ? nullptr : z.arbeitsordner.data();
    // Half a million rows of seventy columns make a sheet of more than 4 GB before packing.
    optionen.use_zip64 = LXW_TRUE;
    z.temporär = Zieldatei::Zwischenname(datei);
    z.buch = workbook_new_opt(z.temporär.c_str(), &optionen);
    if (z.buch == nullptr)
        z.Fehlschlag(LXW_ERROR_MEMORY_MALLOC_FAILED);
    z.blatt = workbook_add_worksheet(z.buch, blattname.c_str());
    z.text = workbook_add_format(z.buch);
    lxw_format* kopf = workbook_add_format(z.buch);
    if (z.blatt == nullptr || z.text == nullptr || kopf == nullptr)
        z.Fehlschlag(LXW_ERROR_MEMORY_MALLOC_FAILED);
    // Excel's built-in text format "@" (number 49): a cell typed in later stays text too.
    format_set_num_format_index(z.text, 49);
    format_set_num_format_index(kopf, 49);
    format_set_bold(kopf);
    for (std::size_t i = 0; i < spalten.size(); ++i) {
        // Twips to Excel's character widths: 15 twips a pixel, 7 pixels a character.
        const double breite = std::max(1.0, std::round(spalten[i].breite / 15.0 / 7.0 * 10) / 10);
        const auto spalte = static_cast<lxw_col_t>(i);
        worksheet_set_column(z.blatt, spalte, spalte, breite, z.text);
    }
    for (std::size_t i = 0; i < spalten.size(); ++i)
        z.Schreiben(static_cast<lxw_col_t>(i), spalten[i].überschrift, kopf);
    z.zeile = 1;
}

XlsxSchreiber::~XlsxSchreiber() {
    if (m_zustand->buch != nullptr) {
        lxw_workbook_free(m_zustand->buch);
        std::error_code ec;
        std::filesystem::remove(m_zustand->temporär, ec);
    }
}

void XlsxSchreiber::Zeile(std::span<const std::string_view> zellen) {
    Zustand& z = *m_zustand;
    if (z.zeile >= LXW_ROW_MAX)
        throw Fehler("Die Excel-Datei " + z.datei.string() + " fasst höchstens " +
                     std::to_string(LXW_ROW_MAX - 1) + " Datenzeilen!");
    for (std::size_t i = 0; i < zellen.size(); ++i)
        if (!zellen[i].empty())
            z.Schreiben(static_cast<lxw_col_t>(i), zellen[i], z.text);
    ++z.zeile;
}

void XlsxSchreiber::Abschließen() {
    Zustand& z = *m_zustand;
    lxw_workbook* buch = z.buch;
    z.buch = nullptr; // workbook_close frees it, whatever it returns
    const lxw_error fehler = workbook_close(buch);
    std::error_code ec;
    if (fehler != LXW_NO_ERROR) {
        std::filesystem::remove(z.temporär, ec);
        z.Fehlschlag(fehler);
    }
    std::filesystem::rename(z.temporär, z.datei, ec);
    if (ec) {
        const int grund = ec.value();
        std::filesystem::remove(z.temporär, ec);
        DateiFehler(z.datei, "geschrieben", grund);
    }
}

} // namespace flurix::ausgabe
