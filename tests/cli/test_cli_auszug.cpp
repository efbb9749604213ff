// "flurix auszug": the extract of a fixture row with a fixed date compared byte for byte with the
// expected file, the file name in the working directory, --fkz, and the messages of bad calls.

#include "cli/cli.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

namespace flurix::cli {
namespace {

namespace fs = std::filesystem;

const fs::path Tabelle =
    test::Testdaten() / "report" / "flurstuecke_zwei_und_vierzehn_eigentuemer.tsv";
const fs::path Erwartet = fs::path(FLURIX_QUELLEN) / "tests" / "cli" / "erwartet";

class Auszug : public ::testing::Test {
protected:
    Auszug() {
        test::DateiSchreiben(m_ordner / "inst" / "config" / "Flurix.dat",
                             "tempArbeitsverzeichnis =" + Arbeit().string() + "/\r\n");
        test::DateiSchreiben(m_ordner / "inst" / "config" / "WebService.fil", "");
        m_umgebung.installation = m_ordner / "inst";
        // 2024-01-31 09:00:00 UTC: creation date and "Datum" of the header.
        ::setenv("SOURCE_DATE_EPOCH", "1706691600", 1);
    }
    ~Auszug() override { ::unsetenv("SOURCE_DATE_EPOCH"); }
    Auszug(const Auszug&) = delete;
    Auszug& operator=(const Auszug&) = delete;
    Auszug(Auszug&&) = delete;
    Auszug& operator=(Auszug&&) = delete;

    fs::path Arbeit() const { return m_ordner / "arbeit"; }
    int Lauf(std::vector<std::string> argumente) {
        argumente.insert(argumente.begin(), {"auszug", Tabelle.string()});
        m_aus.str({});
        m_fehler.str({});
        return Ausführen(argumente, m_aus, m_fehler, m_umgebung);
    }

    test::TempOrdner m_ordner;
    Umgebung m_umgebung;
    std::ostringstream m_aus, m_fehler;
};

TEST_F(Auszug, VierzehnEigentümerWieDieVergleichsdatei) {
    const fs::path out = m_ordner / "auszug.pdf";
    ASSERT_EQ(Lauf({"--zeile", "5", "--out", out.string(), "--titel", "Flurix Test"}), 0)
        << m_fehler.str();
    EXPECT_EQ(m_fehler.str(), "");
    EXPECT_EQ(m_aus.str(), "") << "with --out nothing is printed";
    const std::string datei = test::DateiLesen(out);
    // FLURIX_AUSZUG_ERWARTET=1 writes the expected file anew (look at it before keeping it).
    if (std::getenv("FLURIX_AUSZUG_ERWARTET") != nullptr)
        test::DateiSchreiben(Erwartet / "auszug_vierzehn_eigentuemer.pdf", datei);
    EXPECT_EQ(datei, test::DateiLesen(Erwartet / "auszug_vierzehn_eigentuemer.pdf"));
    EXPECT_NE(datei.find("/CreationDate (D:20240131090000)"), std::string::npos);
    EXPECT_NE(datei.find("(31.01.2024)'"), std::string::npos);
}

TEST_F(Auszug, OhneOutInsArbeitsverzeichnisUnterDemAuszugsnamen) {
    struct Fall {
        std::vector<std::string> auswahl;
        const char* name;
    };
    const Fall fälle[] = {
        {{"--zeile", "1"}, "ALB-120101-001-123.pdf"},
        {{"--zeile", "2"}, "ALB-120101-001-123.pdf"},
        {{"--fkz", "14120100200007000"}, "ALB-120101-002-7.pdf"},
        {{"--zeile", "17"}, "ALB-120101-002-8.pdf"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        ASSERT_EQ(Lauf(f.auswahl), 0) << m_fehler.str();
        EXPECT_EQ(m_fehler.str(), "");
        const fs::path pfad = Arbeit() / f.name;
        EXPECT_EQ(m_aus.str(), pfad.string() + "\n");
        EXPECT_EQ(test::DateiLesen(pfad).substr(0, 8), "%PDF-1.1");
    }
}

TEST_F(Auszug, FalscheAufrufeUndFehlendeZeilen) {
    struct Fall {
        std::vector<std::string> argumente;
        int code;
        const char* meldung;
    };
    const Fall fälle[] = {
        {{}, 2, "flurix auszug: Bitte eine Tabelle und entweder --zeile oder --fkz angeben."},
        {{"--zeile", "1", "--fkz", "1"}, 2, "entweder --zeile oder --fkz"},
        {{"--zeile", "0"},
         1,
         "flurix auszug: Die Zeile 0 gibt es nicht; die Tabelle hat 17 Zeilen.\n"},
        {{"--zeile", "18"}, 1, "Die Zeile 18 gibt es nicht"},
        {{"--zeile", "x1"}, 1, "Die Zeile x1 gibt es nicht"},
        {{"--fkz", "999"},
         1,
         "flurix auszug: Das Flurstückskennzeichen 999 steht nicht in der Tabelle.\n"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.meldung);
        EXPECT_EQ(Lauf(f.argumente), f.code);
        EXPECT_NE(m_fehler.str().find(f.meldung), std::string::npos) << m_fehler.str();
    }
    ::setenv("SOURCE_DATE_EPOCH", "gestern", 1);
    EXPECT_EQ(Lauf({"--zeile", "1"}), 2);
    EXPECT_NE(m_fehler.str().find("SOURCE_DATE_EPOCH"), std::string::npos);
}

} // namespace
} // namespace flurix::cli
