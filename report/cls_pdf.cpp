#include "report/cls_pdf.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/fehler.hpp"
#include "core/programm.hpp"
#include "report/pdf_format.hpp"

#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <new>

namespace flurix::report {

namespace {

constexpr char ZeilenEnde = '\r';

// Stroke colours are written in upper case, fill colours in lower case: this turns "gFC" into
// "GFC" or "gfc" and leaves "RG" or makes it "rg".
std::string GroßOderKlein(std::string text, bool groß) {
    for (char& c : text) {
        if (groß && c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
        else if (!groß && c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

std::string Zahlen(std::initializer_list<float> werte, std::string_view operatorText) {
    std::string zeile;
    for (const float wert : werte) {
        if (!zeile.empty())
            zeile.push_back(' ');
        zeile += FormatNumber(static_cast<double>(wert));
    }
    zeile += operatorText;
    return zeile;
}

} // namespace

clsPDF::clsPDF() : clsPDF(PdfHerkunft{FensterTitel(), {}}) {}

clsPDF::clsPDF(PdfHerkunft herkunft) : m_herkunft(std::move(herkunft)) {
    // The start values in the order the object has always set them. FillMode 0 makes "S" pending
    // and the Clear below flushes it into the drawing buffer, so a new object's first page stream
    // begins with a lone "S": readers take it as an empty stroke, and callers' files have it.
    m_DropBlankPages = true;
    m_FontSize = 10;
    m_NewPageString = "\f";
    PaperSize(5);
    m_LinesPerPage = 72;
    m_LeftMargin = 80.0F;
    m_TopMargin = 60.0F;
    FillMode(0);
    m_seitenObjekte.reserve(16);
    m_objektOffsets.reserve(64);
    Clear(0, 0);
}

// ---- settings -----------------------------------------------------------------------------------

void clsPDF::Color(std::int32_t farbe) {
    DrawColor(farbe);
    FillColor(farbe);
}

void clsPDF::DrawColor(std::int32_t farbe) {
    if (farbe == m_DrawColor)
        return;
    FlushPaintOp();
    m_DrawColor = farbe;
    m_strichfarbeNeu = true;
}

void clsPDF::DrawWidth(float breite) {
    if (breite == m_DrawWidth)
        return;
    m_DrawWidth = breite;
    FlushPaintOp();
    m_strichbreiteNeu = true;
}

void clsPDF::FillColor(std::int32_t farbe) {
    if (farbe == m_FillColor)
        return;
    m_FillColor = farbe;
    FlushPaintOp();
    m_füllfarbeNeu = true;
}

void clsPDF::FillMode(std::int32_t modus) {
    m_FillMode = modus;
    FlushPaintOp();
    SetFillOp(modus);
}

void clsPDF::Height(float höhe) {
    m_höhe = höhe;
    m_PaperSize = 0;
}

void clsPDF::Width(float breite) {
    m_breite = breite;
    m_PaperSize = 0;
}

void clsPDF::PaperSize(std::int32_t format) {
    m_PaperSize = format;
    if (format < 1 || format > 8)
        return;
    // A0 is 2384 × 3371 points; each smaller sheet is the larger one halved across its long side,
    // with the integer division the sizes have always had (A4: 596 × 842).
    std::int32_t breite = 2384;
    std::int32_t höhe = 3371;
    for (std::int32_t i = 1; i < format; ++i) {
        const std::int32_t halbe = höhe / 2;
        höhe = breite;
        breite = halbe;
    }
    m_breite = static_cast<float>(breite);
    m_höhe = static_cast<float>(höhe);
}

// ---- the two buffers ----------------------------------------------------------------------------

void clsPDF::PutFileText(std::string_view text) {
    const std::size_t neueLänge = m_dateiLänge + text.size();
    // Grows by doubling, not by line; a rendered end beyond the length is simply written over.
    if (neueLänge > m_datei.size())
        m_datei.resize(m_datei.size() + neueLänge, ' ');
    std::memcpy(m_datei.data() + m_dateiLänge, text.data(), text.size());
    m_dateiLänge = neueLänge;
}

void clsPDF::PutFileLine(std::string_view text) {
    PutFileText(text);
    PutFileText(std::string_view(&ZeilenEnde, 1));
}

void clsPDF::PutFileLine(std::initializer_list<std::string_view> teile) {
    for (const auto teil : teile)
        PutFileText(teil);
    PutFileText(std::string_view(&ZeilenEnde, 1));
}

void clsPDF::PutStreamText(std::string_view text) { m_zeichnung.append(text); }

void clsPDF::PutStreamLine(std::string_view text) {
    // Changed settings go out just before the operator that needs them, once.
    if (m_strichfarbeNeu) {
        PutStreamText(GroßOderKlein(FormatColor(m_DrawColor), true));
        m_zeichnung.push_back(ZeilenEnde);
        m_strichfarbeNeu = false;
    }
    if (m_füllfarbeNeu) {
        PutStreamText(GroßOderKlein(FormatColor(m_FillColor), false));
        m_zeichnung.push_back(ZeilenEnde);
        m_füllfarbeNeu = false;
    }
    if (m_strichbreiteNeu) {
        PutStreamText(FormatNumber(static_cast<double>(m_DrawWidth)));
        PutStreamText(" w");
        m_zeichnung.push_back(ZeilenEnde);
        m_strichbreiteNeu = false;
    }
    PutStreamText(text);
    m_zeichnung.push_back(ZeilenEnde);
}

void clsPDF::ZeichnungInDatei() {
    PutFileText(m_zeichnung);
    m_zeichnung.clear();
}

// ---- paint operators ----------------------------------------------------------------------------

void clsPDF::SetFillOp(std::int32_t modus) {
    switch (modus) {
    case -1: SetPaintOp("f"); break;
    case 0: SetPaintOp("S"); break;
    case 1: SetPaintOp("b"); break;
    case 2: SetPaintOp("s"); break;
    default: break;
    }
}

void clsPDF::SetPaintOp(std::string_view op) {
    if (op == m_malOperator)
        return;
    FlushPaintOp();
    m_malOperator = op;
}

void clsPDF::FlushPaintOp() {
    if (m_malOperator.empty())
        return;
    // Straight into the buffer: a paint operator needs no colour or width written before it.
    PutStreamText(m_malOperator);
    m_zeichnung.push_back(ZeilenEnde);
    m_malOperator.clear();
}

// ---- objects, pages, document -------------------------------------------------------------------

void clsPDF::NewObject() {
    ++m_objektZahl;
    m_objektOffsets.resize(static_cast<std::size_t>(m_objektZahl));
    m_objektOffsets.back() = static_cast<std::int64_t>(m_dateiLänge);
    PutFileLine({std::to_string(m_objektZahl), " 0 obj"});
}

void clsPDF::BeginObject() {
    NewObject();
    PutFileLine("<<");
}

void clsPDF::EndObject() {
    PutFileLine(">>");
    PutFileLine("endobj");
}

void clsPDF::WriteHeader() {
    m_fertig = false;
    PutFileLine("%PDF-1.1");
    // Four bytes above 127 tell transfer programs that the file is binary.
    PutFileLine("%\xE2\xE3\xCF\xD3");
    BeginObject();
    const std::tm zeit = m_herkunft.uhr ? m_herkunft.uhr() : LokaleZeit();
    PutFileLine({"/CreationDate (D:", Zeitstempel(zeit), ")"});
    PutFileLine({"/Producer (", Utf8NachCp1252(m_herkunft.producer), ")"});
    EndObject();
    BeginObject();
    PutFileLine("/Type /Catalog");
    PutFileLine("/Pages 3 0 R");
    EndObject();
    // Object 3 is the page tree. Only the trailer knows its pages, so the number is taken now and
    // the object is written, with its offset, at the end.
    ++m_objektZahl;
    m_objektOffsets.resize(static_cast<std::size_t>(m_objektZahl));
    BeginObject();
    PutFileLine("/Type /Font");
    PutFileLine("/Subtype /Type1");
    PutFileLine("/Name /F1");
    PutFileLine("/BaseFont /Arial");
    PutFileLine("/Encoding /WinAnsiEncoding");
    EndObject();
    BeginObject();
    PutFileLine("/Font << /F1 4 0 R >>");
    PutFileLine("/ProcSet [ /PDF /Text ]");
    EndObject();
}

void clsPDF::Clear(std::int16_t fontSize, std::int16_t linesPerPage) {
    if (fontSize != 0)
        m_FontSize = fontSize;
    if (linesPerPage != 0)
        m_LinesPerPage = linesPerPage;
    m_PageNumber = 0;
    m_LineNumber = 0;
    m_objektZahl = 0;
    m_objektOffsets.clear();
    m_seitenObjekte.clear();
    m_dateiLänge = 0;
    m_zeichnung.clear();
    WriteHeader();
    SetPaintOp("");
}

void clsPDF::StartPage() {
    ++m_PageNumber;
    BeginObject();
    m_seitenObjekte.resize(static_cast<std::size_t>(m_PageNumber));
    m_seitenObjekte.back() = m_objektZahl;
    PutFileLine("/Type /Page");
    PutFileLine("/Parent 3 0 R");
    PutFileLine("/Resources 5 0 R");
    PutFileLine({"/Contents ", std::to_string(m_objektZahl + 1), " 0 R"});
    EndObject();
    BeginObject();
    // The length is an object of its own behind the stream, so the stream is written in one pass.
    PutFileLine({"/Length ", std::to_string(m_objektZahl + 1), " 0 R"});
    PutFileLine(">>");
    PutFileLine("stream");
    m_streamStart = m_dateiLänge;

    // Each page stream starts with no graphics state: what differs from the default goes out again.
    if (m_DrawWidth != 0.0F)
        m_strichbreiteNeu = true;
    if (m_DrawColor != 0)
        m_strichfarbeNeu = true;
    if (m_FillColor != 0)
        m_füllfarbeNeu = true;
    SetPaintOp("");
    // The current point is reset to the height field even in landscape, where the page is only
    // as high as the width field; a MoveTo to exactly that point therefore still writes its "m".
    m_punktX = 0.0F;
    m_punktY = m_höhe;

    if (PageStarted)
        PageStarted();
    FlushPaintOp();
    ZeichnungInDatei();
    // The text takes the fill colour; black keeps the printed lines readable on a coloured page.
    if (m_FillColor != 0)
        PutFileLine("0 g");
    PutFileLine("BT");
    const std::string größe = std::to_string(m_FontSize);
    PutFileLine({"/F1 ", größe, " Tf"});
    PutFileLine({EinfacheZahl(m_LeftMargin), " ", EinfacheZahl(Height() - m_TopMargin), " Td"});
    PutFileLine({größe, " TL"});
}

void clsPDF::EndPage() {
    PutFileLine("ET");
    if (PageFinished)
        PageFinished();
    FlushPaintOp();
    ZeichnungInDatei();
    const std::size_t länge = m_dateiLänge - m_streamStart;
    PutFileLine("endstream");
    PutFileLine("endobj");
    NewObject();
    PutFileLine(std::to_string(länge));
    PutFileLine("endobj");
    m_LineNumber = 0;
    m_fertig = false;
}

void clsPDF::WriteTrailer() {
    m_objektOffsets.at(2) = static_cast<std::int64_t>(m_dateiLänge);
    PutFileLine("3 0 obj");
    PutFileLine("<<");
    PutFileLine("/Type /Pages");
    PutFileLine({"/Count ", std::to_string(m_PageNumber)});
    const bool hoch = m_Orientation == 0;
    PutFileLine({"/MediaBox [0 0 ", EinfacheZahl(hoch ? m_breite : m_höhe), " ",
                 EinfacheZahl(hoch ? m_höhe : m_breite), "]"});
    PutFileText("/Kids [ ");
    for (std::int32_t seite = 0; seite < m_PageNumber; ++seite) {
        PutFileText(std::to_string(m_seitenObjekte[static_cast<std::size_t>(seite)]));
        PutFileText(" 0 R ");
    }
    PutFileLine("]");
    EndObject();

    const std::string xrefPosition = std::to_string(m_dateiLänge);
    const std::string größe = std::to_string(m_objektZahl + 1);
    PutFileLine("xref");
    PutFileLine({"0 ", größe});
    // With the single CR an entry is 19 bytes, not the 20 the format asks for. Readers rebuild the
    // table from the "obj" lines then; the files of this program have always looked like this.
    PutFileLine("0000000000 65535 f");
    for (std::int32_t n = 1; n <= m_objektZahl; ++n) {
        std::string offset = std::to_string(m_objektOffsets[static_cast<std::size_t>(n - 1)]);
        if (offset.size() < 10)
            offset.insert(0, 10 - offset.size(), '0');
        PutFileLine({offset, " 00000 n"});
    }
    PutFileLine("trailer");
    PutFileLine("<<");
    PutFileLine({"/Size ", größe});
    PutFileLine("/Root 2 0 R");
    PutFileLine("/Info 1 0 R");
    PutFileLine(">>");
    PutFileLine("startxref");
    PutFileLine(xrefPosition);
    PutFileLine("%%EOF");
    m_fertig = true;
}

std::string clsPDF::value() {
    if (!m_fertig) {
        const std::size_t länge = m_dateiLänge;
        const std::int16_t zeile = m_LineNumber;
        const std::int32_t seiten = m_PageNumber;
        const std::int32_t objekte = m_objektZahl;
        if (m_LineNumber != 0)
            EndPage();
        WriteTrailer();
        m_endLänge = m_dateiLänge;
        // Only the counters go back: the document goes on from where it stood and writes over the
        // rendered end, which is why a read never closes the document.
        m_dateiLänge = länge;
        m_LineNumber = zeile;
        m_PageNumber = seiten;
        m_objektZahl = objekte;
        m_objektOffsets.resize(static_cast<std::size_t>(objekte));
    }
    return m_datei.substr(0, m_endLänge);
}

bool clsPDF::SavePDF(const std::filesystem::path& datei) {
    try {
        DateiSchreiben(datei, value());
        return true;
    } catch (const Fehler&) {
        return false;
    }
}

// ---- line printer -------------------------------------------------------------------------------

void clsPDF::PrintLine(std::string_view text) {
    // "Page full" needs an open page: with LinesPerPage 0 the bare comparison would end a page that
    // was never begun and break the file.
    if (m_LineNumber != 0 && m_LineNumber == m_LinesPerPage)
        EndPage();
    if (m_LineNumber == 0)
        StartPage();
    // The apostrophe moves to the next line before it shows the text: each line steps down by TL.
    PutFileLine({"(", EscapeText(Utf8NachCp1252(text)), ")'"});
    ++m_LineNumber;
    m_fertig = false;
}

void clsPDF::NewPage(std::int16_t fontSize, std::int16_t linesPerPage) {
    if (fontSize != 0)
        m_FontSize = fontSize;
    if (linesPerPage != 0)
        m_LinesPerPage = linesPerPage;
    if (m_LineNumber != 0) {
        EndPage();
    } else if (!m_DropBlankPages) {
        StartPage();
        EndPage();
    }
}

void clsPDF::PrintText(std::string_view text) {
    // One kind of line break for the whole text: the first candidate found anywhere decides.
    std::string_view umbruch = "\r\n";
    for (const std::string_view kandidat : {"\r\n", "\n\r", "\r\r", "\n", "\r"}) {
        if (text.find(kandidat) != std::string_view::npos) {
            umbruch = kandidat;
            break;
        }
    }
    std::size_t anfang = 0;
    while (true) {
        const std::size_t ende = text.find(umbruch, anfang);
        const std::string_view stück =
            text.substr(anfang, ende == std::string_view::npos ? std::string_view::npos : ende - anfang);
        if (stück == m_NewPageString)
            NewPage(0, 0);
        else
            PrintLine(stück);
        if (ende == std::string_view::npos)
            break;
        anfang = ende + umbruch.size();
    }
}

void clsPDF::PrintFile(const std::filesystem::path& datei) {
    std::string inhalt;
    std::ifstream ein(datei, std::ios::binary);
    if (ein)
        inhalt.assign(std::istreambuf_iterator<char>(ein), std::istreambuf_iterator<char>());
    // The lines are text for the page, so they enter as every text does: UTF-8, or 1252 when the
    // bytes are not UTF-8 (files of the older program are 1252).
    PrintText(DateitextNachUtf8(inhalt));
}

// ---- drawing ------------------------------------------------------------------------------------

void clsPDF::DrawBox(float x, float y, float breite, float höhe, std::int32_t modus) {
    SetFillOp(modus);
    PutStreamLine(Zahlen({x, Height() - y - höhe, breite, höhe}, " re"));
}

void clsPDF::DrawLine(float x1, float y1, float x2, float y2) {
    const float h = Height();
    m_punktX = x2;
    m_punktY = h - y2;
    SetPaintOp("S");
    PutStreamLine(Zahlen({x1, h - y1}, " m ") + Zahlen({x2, h - y2}, " l"));
}

void clsPDF::DrawLineTo(float x, float y) {
    m_punktX = x;
    m_punktY = Height() - y;
    PutStreamLine(Zahlen({x, m_punktY}, " l"));
}

void clsPDF::DrawCurveTo(float x1, float y1, float x2, float y2, float x3, float y3) {
    const float h = Height();
    PutStreamLine(Zahlen({x1, h - y1, x2, h - y2, x3, h - y3}, " c"));
}

void clsPDF::MoveTo(float x, float y) {
    const float yp = Height() - y;
    // Same point: no "m", and the pending paint operator stays pending, so the path goes on.
    if (x == m_punktX && yp == m_punktY)
        return;
    m_punktX = x;
    m_punktY = yp;
    FlushPaintOp();
    PutStreamLine(Zahlen({x, yp}, " m"));
}

void clsPDF::DrawShape(std::int32_t modus) {
    SetFillOp(modus);
    FlushPaintOp();
}

void clsPDF::DrawCircle(float x, float y, float r, std::int32_t modus) {
    // 0.5522847 × r puts the control points so that four cubic curves stay within 0.03 % of a circle.
    const auto k = static_cast<float>(static_cast<double>(r) * 0.5522847);
    MoveTo(x, y + r);
    DrawCurveTo(x + k, y + r, x + r, y + k, x + r, y);
    DrawCurveTo(x + r, y - k, x + k, y - r, x, y - r);
    DrawCurveTo(x - k, y - r, x - r, y - k, x - r, y);
    DrawCurveTo(x - r, y + k, x - k, y + r, x, y + r);
    DrawShape(modus);
}

void clsPDF::DrawText(float x, float y, std::string_view text, float winkel) {
    const std::string geschützt = EscapeText(Utf8NachCp1252(text));
    const float yp = Height() - y;
    FlushPaintOp();
    PutStreamLine("BT");
    PutStreamLine("/F1 " + std::to_string(m_FontSize) + " Tf");
    if (winkel == 0.0F) {
        PutStreamLine(Zahlen({x, yp}, " Td"));
    } else {
        const std::string c = FormatNumber(std::cos(static_cast<double>(winkel)));
        const std::string s = FormatNumber(std::sin(static_cast<double>(winkel)));
        // The sign of the sine is turned on its text, so a sine of 0 gives "-0".
        const std::string m = !s.empty() && s.front() == '-' ? s.substr(1) : "-" + s;
        PutStreamLine(c + " " + s + " " + m + " " + c + " " + Zahlen({x, yp}, " Tm"));
    }
    // The apostrophe, as in the line printer: the text lands one line pitch (TL of the page's text
    // block) below y, which the callers' layouts take into account.
    PutStreamLine("(" + geschützt + ")'");
    PutStreamLine("ET");
}

bool clsPDF::DrawPicture(float x, float y, float breite, float höhe, const PdfBild& bild,
                         bool grau) {
    if (!bild.Gültig())
        return false;
    // A negative size stays in the matrix and mirrors the image; the corner moves so that the
    // picture still covers the box.
    if (breite < 0.0F)
        x -= breite;
    if (höhe < 0.0F)
        y -= höhe;
    const float yp = Height() - y - höhe;
    try {
        FlushPaintOp();
        PutStreamLine("q");
        PutStreamLine(FormatNumber(static_cast<double>(breite)) + " 0 0 " +
                      Zahlen({höhe, x, yp}, " cm"));
        PutStreamLine("BI");
        PutStreamLine("/W " + std::to_string(bild.breite));
        PutStreamLine("/H " + std::to_string(bild.höhe));
        PutStreamLine("/BPC 8");
        // "/gDP" is no standard colour space name, but the gray pictures of this program have
        // always carried it; readers that don't know it show the picture in their default.
        PutStreamLine(grau ? "/CS /gDP" : "/CS /RGB");
        const std::string roh = BildBytes(bild, grau, PictureProgress);
        const std::string gepackt = PackRuns(roh);
        // Packed only when that saves more than seven bytes.
        if (gepackt.size() + 7 < roh.size()) {
            PutStreamLine("/F /RL");
            PutStreamLine("ID " + gepackt + '\x80');
        } else {
            // The ">" behind raw bytes is the end mark of a hex stream; without a filter a reader
            // stops at the image's size and skips it before "EI".
            PutStreamLine("ID " + roh + '>');
        }
        PutStreamLine("EI");
        PutStreamLine("Q");
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

} // namespace flurix::report
