#pragma once
// What the tests of the PDF writer and the register extract share: a fixed clock, the content
// streams of a file found through its objects, the xref table against the real byte positions,
// and the judgement of qpdf and pdftotext.

#include "report/cls_pdf.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace flurix::test {

/// A fixed producer "Flurix Test" and creation time, so that whole files compare byte for byte.
inline report::PdfHerkunft Fest(int monat, int tag, int stunde, int minute = 0, int sekunde = 0) {
    std::tm zeit{};
    zeit.tm_year = 2024 - 1900; zeit.tm_mon = monat - 1; zeit.tm_mday = tag;
    zeit.tm_hour = stunde; zeit.tm_min = minute; zeit.tm_sec = sekunde;
    return {"Flurix Test", [=] { return zeit; }};
}

/// The number written at pos.
inline long ZahlAn(const std::string& datei, std::size_t pos) {
    return std::strtol(datei.c_str() + pos, nullptr, 10);
}

/// The content stream of page k (from 1): object 3k + 4, its length read from object 3k + 5.
/// Fails the test (and gives "") when the page's objects don't have their shape.
inline std::string Seiteninhalt(const std::string& datei, int k) {
    const std::string kopf = std::to_string(3 * k + 4) + " 0 obj\r<<\r/Length " +
                             std::to_string(3 * k + 5) + " 0 R\r>>\rstream\r";
    const std::string längeKopf = "\rendobj\r" + std::to_string(3 * k + 5) + " 0 obj\r";
    const auto anfang = datei.find(kopf);
    const auto längePos = datei.find(längeKopf);
    EXPECT_NE(anfang, std::string::npos) << "Seite " << k;
    EXPECT_NE(längePos, std::string::npos) << "Seite " << k;
    if (anfang == std::string::npos || längePos == std::string::npos)
        return {};
    const auto start = anfang + kopf.size();
    const auto länge = static_cast<std::size_t>(ZahlAn(datei, längePos + längeKopf.size()));
    EXPECT_EQ(datei.compare(start + länge, 17, "endstream\rendobj\r"), 0) << "Seite " << k;
    return datei.substr(start, länge);
}

/// Checks the xref table against the real byte positions: startxref points at "xref", there is
/// one 19-byte entry per object, and each offset points at the line "<n> 0 obj".
inline void XrefPrüfen(const std::string& datei) {
    const auto sx = datei.rfind("startxref\r");
    ASSERT_NE(sx, std::string::npos);
    const auto xref = static_cast<std::size_t>(ZahlAn(datei, sx + 10));
    ASSERT_EQ(datei.compare(xref, 7, "xref\r0 "), 0);
    const auto größe = ZahlAn(datei, xref + 7);
    auto pos = datei.find('\r', xref + 7) + 1;
    ASSERT_EQ(datei.compare(pos, 19, "0000000000 65535 f\r"), 0);
    for (long n = 1; n < größe; ++n) {
        pos += 19;
        ASSERT_EQ(datei.compare(pos + 10, 9, " 00000 n\r"), 0) << "Eintrag " << n;
        const auto offset = static_cast<std::size_t>(std::stol(datei.substr(pos, 10)));
        const std::string kopf = std::to_string(n) + " 0 obj\r";
        EXPECT_EQ(datei.compare(offset, kopf.size(), kopf), 0) << "Objekt " << n;
    }
    EXPECT_EQ(datei.compare(pos + 19, 8, "trailer\r"), 0);
}

/// The content streams of all pages (as many as /Count says), the xref table checked.
inline std::vector<std::string> Seiten(const std::string& datei) {
    XrefPrüfen(datei);
    const auto count = datei.find("\r/Count ");
    std::vector<std::string> seiten;
    for (long k = 1; count != std::string::npos && k <= ZahlAn(datei, count + 8); ++k)
        seiten.push_back(Seiteninhalt(datei, static_cast<int>(k)));
    return seiten;
}

/// `qpdf --check` on the file: exit code 3 (warnings only) and no warning but the one for the
/// single CR behind "stream" ("stream keyword followed by carriage return only", the format wants
/// CR LF or LF there), once a page. qpdf does not judge operators, so "GFC"/"gfc" and "/CS /gDP"
/// pass.
inline void QpdfNurZeilenendwarnungen(const std::filesystem::path& datei, std::size_t seiten) {
    const Programmlauf lauf = Ausführen("qpdf --check " + Wort(datei) + " 2>&1");
    const std::string& bericht = lauf.ausgabe;
    EXPECT_TRUE(WIFEXITED(lauf.status) && WEXITSTATUS(lauf.status) == 3) << bericht;
    EXPECT_EQ(bericht.find("ERROR"), std::string::npos) << bericht;
    std::size_t warnungen = 0;
    for (auto pos = bericht.find("WARNING"); pos != std::string::npos;
         pos = bericht.find("WARNING", pos + 1), ++warnungen) {
        const std::string zeile = bericht.substr(pos, bericht.find('\n', pos) - pos);
        EXPECT_NE(zeile.find("stream keyword followed by carriage return only"), std::string::npos)
            << zeile;
    }
    EXPECT_EQ(warnungen, seiten) << "one per page\n" << bericht;
}

/// The text pdftotext reads from the file (UTF-8, pages ended by form feeds); `layout` keeps the
/// columns apart. Fails the test when pdftotext fails.
inline std::string Pdftotext(const std::filesystem::path& datei, bool layout) {
    const Programmlauf lauf = Ausführen("pdftotext -enc UTF-8 " + std::string(layout ? "-layout " : "") +
                                        Wort(datei) + " - 2>/dev/null");
    EXPECT_EQ(lauf.status, 0);
    return lauf.ausgabe;
}

} // namespace flurix::test
