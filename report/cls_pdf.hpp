#pragma once
// clsPDF, the program's own PDF writer: the register extract and the map output print through it.
// It keeps the whole document in memory as one byte string and offers a line printer with automatic
// pagination (PrintLine, PrintText, PrintFile), a small drawing vocabulary (boxes, lines, curves,
// circles, free-placed text, raster pictures), and the finished file through value and SavePDF.
// The file has one fixed, simple shape: PDF 1.1, page content not compressed, one font (Arial,
// WinAnsiEncoding), and every line ended by a single carriage return, the xref table included.
//
// Coordinates are points with the origin at the top left corner of the page and y growing downwards;
// the class flips them. Text enters as UTF-8 and is written in Windows-1252, "?" for what that code
// page cannot hold. The class shows no message: file errors are ignored, as callers rely on.

#include "report/pdf_bild.hpp"

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace flurix::report {

/// Where a document says it comes from and when it was made (object 1, the information dictionary).
struct PdfHerkunft {
    /// The /Producer text (UTF-8): the application title. Written as it is, not escaped.
    std::string producer;
    /// The clock of /CreationDate. Empty: the machine's local time. Tests set a fixed time so that
    /// whole files compare byte for byte.
    std::function<std::tm()> uhr;
};

/// The PDF writer. Neither copied nor moved: its event handlers usually point back at the object
/// (a function may still return one, as a new object is built in place).
class clsPDF {
public:
    /// A document with the application title as producer and the local clock, ready for the first
    /// line: A4 portrait, font size 10, 72 lines a page, margins 80 (left) and 60 (top).
    clsPDF();
    /// The same with another producer text and clock.
    explicit clsPDF(PdfHerkunft herkunft);
    clsPDF(const clsPDF&) = delete;
    clsPDF& operator=(const clsPDF&) = delete;
    clsPDF(clsPDF&&) = delete;
    clsPDF& operator=(clsPDF&&) = delete;
    ~clsPDF() = default;

    // ---- settings -------------------------------------------------------------------------------
    // A colour is red in bits 0-7, green in bits 8-15 and blue in bits 16-23.

    /// Sets DrawColor and then FillColor to the colour.
    void Color(std::int32_t farbe);
    std::int32_t DrawColor() const { return m_DrawColor; }
    /// The stroke colour. A change ends the pending paint operator and is written before the next
    /// drawing operator ("RG", or "GFC" for a gray).
    void DrawColor(std::int32_t farbe);
    float DrawWidth() const { return m_DrawWidth; }
    /// The line width in points. A change ends the pending paint operator and is written before
    /// the next drawing operator ("w").
    void DrawWidth(float breite);
    bool DropBlankPages() const { return m_DropBlankPages; }
    /// When set (the default), NewPage on a page with no line makes no page.
    void DropBlankPages(bool weglassen) { m_DropBlankPages = weglassen; }
    std::int32_t FillColor() const { return m_FillColor; }
    /// The fill colour (also the colour of DrawText). A change ends the pending paint operator and
    /// is written before the next drawing operator ("rg", or "gfc" for a gray).
    void FillColor(std::int32_t farbe);
    std::int32_t FillMode() const { return m_FillMode; }
    /// -1 fill, 0 stroke, 1 close-fill-stroke, 2 close-stroke: ends the pending paint operator and
    /// makes the mode's operator pending. Other values are stored and change nothing else.
    void FillMode(std::int32_t modus);
    std::int16_t FontSize() const { return m_FontSize; }
    /// Font size in points: DrawText uses it at once, the line printer from the next page on.
    void FontSize(std::int16_t größe) { m_FontSize = größe; }
    /// The page height in use: the height field in portrait, the width field in landscape.
    float Height() const { return m_Orientation == 0 ? m_höhe : m_breite; }
    /// Sets the height field (the long side in portrait use) whatever the orientation; PaperSize 0.
    void Height(float höhe);
    float LeftMargin() const { return m_LeftMargin; }
    /// Left margin of the line printer, used from the next page on.
    void LeftMargin(float rand) { m_LeftMargin = rand; }
    /// Lines printed on the open page; 0 means that no page is open.
    std::int16_t LineNumber() const { return m_LineNumber; }
    std::int16_t LinesPerPage() const { return m_LinesPerPage; }
    /// Lines a page of the line printer; the next line after that many opens a new page.
    void LinesPerPage(std::int16_t zeilen) { m_LinesPerPage = zeilen; }
    const std::string& NewPageString() const { return m_NewPageString; }
    /// A line of PrintText that equals this text (default: one form feed) starts a new page.
    void NewPageString(std::string text) { m_NewPageString = std::move(text); }
    /// Pages begun so far.
    std::int32_t PageNumber() const { return m_PageNumber; }
    std::int32_t Orientation() const { return m_Orientation; }
    /// 0 portrait, anything else landscape (the sides swap in /MediaBox and in Height/Width).
    void Orientation(std::int32_t ausrichtung) { m_Orientation = ausrichtung; }
    std::int32_t PaperSize() const { return m_PaperSize; }
    /// 1 A0 … 8 A7 sets the page size (A4 is 596 × 842). Any other value is stored and leaves the
    /// size alone; 0 says the size was set through Height or Width.
    void PaperSize(std::int32_t format);
    float TopMargin() const { return m_TopMargin; }
    /// Top margin of the line printer (to the first baseline less one line), used from the next page.
    void TopMargin(float rand) { m_TopMargin = rand; }
    /// The page width in use: the width field in portrait, the height field in landscape.
    float Width() const { return m_Orientation == 0 ? m_breite : m_höhe; }
    /// Sets the width field (the short side in portrait use) whatever the orientation; PaperSize 0.
    void Width(float breite);

    // ---- document and line printer --------------------------------------------------------------

    /// Starts a new document (pages, objects and both buffers emptied, new creation date).
    /// A non-zero argument replaces FontSize or LinesPerPage.
    void Clear(std::int16_t fontSize = 0, std::int16_t linesPerPage = 0);
    /// One line of the line printer: ends the page when it is full, opens one when none is open.
    void PrintLine(std::string_view text);
    /// Many lines. The line break is found once for the whole text (the first of CR LF, LF CR,
    /// CR CR, LF, CR that occurs; CR LF when none does); the text after the last break is a line
    /// too, even when empty. A line equal to NewPageString calls NewPage instead.
    void PrintText(std::string_view text);
    /// PrintText of a file's content (UTF-8, or Windows-1252 when it is not valid UTF-8).
    /// A file that can't be read prints one empty line, with no message.
    void PrintFile(const std::filesystem::path& datei);
    /// Ends the open page; a non-zero argument replaces FontSize or LinesPerPage for the next one.
    /// With no page open it makes an empty page only when DropBlankPages is off.
    void NewPage(std::int16_t fontSize = 0, std::int16_t linesPerPage = 0);
    /// The finished file. The open page is ended and the trailer written behind the document, but
    /// the document stays open: the next line goes on where it stood and the next read renders
    /// anew. Drawings waiting for a page at the time of the read go into the rendered end and are
    /// lost for the continued document.
    std::string value();
    /// Writes value() to the file, replacing an older one. Shows no message; returns false when
    /// the file could not be written.
    bool SavePDF(const std::filesystem::path& datei);

    // ---- drawing --------------------------------------------------------------------------------
    // Mode: -1 fill, 0 stroke, 1 close-fill-stroke, 2 close-stroke. Shapes of one mode in a row
    // share one path and one paint operator. Drawings made while no page is open land on the next
    // page begun; on an open page they lie over its text.

    /// Rectangle with its top left corner at x, y.
    void DrawBox(float x, float y, float breite, float höhe, std::int32_t modus);
    /// Circle of four Bézier curves around x, y, painted at once in the mode.
    void DrawCircle(float x, float y, float radius, std::int32_t modus);
    /// One Bézier segment from the current point (which it leaves where it was).
    void DrawCurveTo(float x1, float y1, float x2, float y2, float x3, float y3);
    /// One stroked segment; x2, y2 become the current point.
    void DrawLine(float x1, float y1, float x2, float y2);
    /// A line from the current point to x, y.
    void DrawLineTo(float x, float y);
    /// An inline image filling the box x, y, width, height; a negative width or height mirrors it.
    /// grau writes one gray byte a pixel. Returns false, having written nothing, for a picture that
    /// is not Gültig(); false when memory runs out, with what was written so far left in place.
    bool DrawPicture(float x, float y, float breite, float höhe, const PdfBild& bild, bool grau);
    /// Paints the path built so far in the mode.
    void DrawShape(std::int32_t modus);
    /// Text placed freely, in FontSize, turned by the angle (radians, counter-clockwise). Its
    /// baseline lies one line pitch of the open page below y.
    void DrawText(float x, float y, std::string_view text, float winkel = 0.0F);
    /// New current point; nothing is written when it is the current point already.
    void MoveTo(float x, float y);

    // ---- events ---------------------------------------------------------------------------------

    /// Raised at the start of each page, before its text: what the handler draws lies beneath the
    /// text. The handler may draw and change settings but must not print lines or end pages.
    std::function<void()> PageStarted;
    /// Raised at the end of each page, behind its text: what the handler draws lies over it.
    std::function<void()> PageFinished;
    /// Progress of DrawPicture, once a row.
    BildFortschritt PictureProgress;

private:
    void PutFileText(std::string_view text);
    void PutFileLine(std::string_view text);
    void PutFileLine(std::initializer_list<std::string_view> teile);
    void PutStreamText(std::string_view text);
    void PutStreamLine(std::string_view text);
    void SetFillOp(std::int32_t modus);
    void SetPaintOp(std::string_view op);
    void FlushPaintOp();
    void ZeichnungInDatei();
    void StartPage();
    void EndPage();
    void WriteHeader();
    void WriteTrailer();
    void NewObject();
    void BeginObject();
    void EndObject();

    PdfHerkunft m_herkunft;

    std::int32_t m_DrawColor = 0;
    float m_DrawWidth = 0.0F;
    bool m_DropBlankPages = true;
    std::int32_t m_FillColor = 0;
    std::int32_t m_FillMode = 0;
    std::int16_t m_FontSize = 10;
    float m_höhe = 0.0F;  ///< height field: the long side in portrait use
    float m_breite = 0.0F; ///< width field: the short side in portrait use
    std::int16_t m_LinesPerPage = 72;
    float m_LeftMargin = 80.0F;
    float m_TopMargin = 60.0F;
    std::string m_NewPageString;
    std::int32_t m_Orientation = 0;
    std::int32_t m_PaperSize = 0;
    std::int32_t m_PageNumber = 0;
    std::int16_t m_LineNumber = 0;

    std::vector<std::int32_t> m_seitenObjekte; ///< object number of page k at index k − 1
    std::vector<std::int64_t> m_objektOffsets; ///< byte offset of object n at index n − 1
    std::int32_t m_objektZahl = 0;             ///< highest object number given out

    std::string m_datei;        ///< file buffer; only the first m_dateiLänge bytes are in use
    std::size_t m_dateiLänge = 0; ///< also the current file offset
    std::string m_zeichnung;    ///< drawing operators waiting for the page
    std::size_t m_endLänge = 0; ///< length of the file at the last rendering
    bool m_fertig = false;      ///< the buffer holds a rendered end that value can return as it is
    std::size_t m_streamStart = 0;

    bool m_strichfarbeNeu = false;
    bool m_strichbreiteNeu = false;
    bool m_füllfarbeNeu = false;
    float m_punktX = 0.0F; ///< current point, y already flipped
    float m_punktY = 0.0F;
    std::string m_malOperator; ///< pending paint operator, empty when none
};

} // namespace flurix::report
