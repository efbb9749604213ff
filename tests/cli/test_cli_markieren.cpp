#include "cli/cli.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <sstream>

namespace flurix::cli {
namespace {

namespace fs = std::filesystem;

const fs::path Fixtures = test::Testdaten() / "markierung";

// "flurix suchen" and "flurix markieren" against an installation of their own, on the table of
// seven rows whose parcel 12195500700231000100 has three owners.
class SuchenUndMarkieren : public ::testing::Test {
protected:
    SuchenUndMarkieren() {
        test::DateiSchreiben(m_ordner / "inst" / "config" / "Flurix.dat",
                             "tempArbeitsverzeichnis =" + (m_ordner / "arbeit").string() + "/\r\n");
        test::DateiSchreiben(m_ordner / "inst" / "config" / "WebService.fil", "");
        m_umgebung.installation = m_ordner / "inst";
        fs::copy_file(Fixtures / "sieben_zeilen_drei_eigentuemer_ohne_checkdruck.tsv", Tabelle());
    }
    fs::path Tabelle() const { return m_ordner / "tabelle.tsv"; }
    fs::path Pfad(std::string_view name) const { return m_ordner / name; }

    /// Exit code; stdout and stderr are kept in m_aus and m_fehler.
    int Flurix(const std::vector<std::string>& argumente) {
        std::ostringstream aus, fehler;
        const int code = Ausführen(argumente, aus, fehler, m_umgebung);
        m_aus = aus.str();
        m_fehler = fehler.str();
        return code;
    }

    test::TempOrdner m_ordner;
    Umgebung m_umgebung;
    std::string m_aus, m_fehler;
};

// The lines of a .tsv reduced to two columns, by their keys in the header line.
std::vector<std::string> ZweiSpalten(const std::string& tsv, std::string_view a, std::string_view b) {
    std::istringstream ein(tsv);
    std::string zeile;
    std::getline(ein, zeile);
    std::vector<std::string> kopf;
    for (std::istringstream k(zeile); std::getline(k, zeile, '\t');)
        kopf.push_back(zeile);
    const auto stelle = [&](std::string_view schlüssel) {
        return static_cast<std::size_t>(std::find(kopf.begin(), kopf.end(), schlüssel) - kopf.begin());
    };
    std::vector<std::string> werte;
    while (std::getline(ein, zeile)) {
        std::vector<std::string> zellen;
        std::string zelle;
        for (std::istringstream z(zeile); std::getline(z, zelle, '\t');)
            zellen.push_back(zelle);
        zellen.resize(kopf.size());
        werte.push_back(zellen.at(stelle(a)) + "|" + zellen.at(stelle(b)));
    }
    return werte;
}

TEST_F(SuchenUndMarkieren, HilfeNenntBeideBefehle) {
    ASSERT_EQ(Flurix({"--help"}), 0);
    EXPECT_NE(m_aus.find("  suchen "), std::string::npos);
    EXPECT_NE(m_aus.find("  markieren "), std::string::npos);
    ASSERT_EQ(Flurix({"suchen", "--help"}), 0);
    EXPECT_NE(m_aus.find("--gemarkung <name> --flur <nr>"), std::string::npos);
    ASSERT_EQ(Flurix({"markieren", "--help"}), 0);
    EXPECT_NE(m_aus.find(".err"), std::string::npos);
}

TEST_F(SuchenUndMarkieren, FalscheAufrufeEndenMitZwei) {
    const std::vector<std::string> aufrufe[] = {
        {"suchen", Tabelle().string()},
        {"suchen", "--spalte", "Name"},
        {"suchen", Tabelle().string(), "--spalte", "Name", "--gemarkung", "Nordheim"},
        {"suchen", Tabelle().string(), "--spalte"},
        {"markieren", Tabelle().string(), "--liste", "x.lst"},
        {"markieren", Tabelle().string(), "--out", "y.tsv"},
        {"markieren", "--liste", "x.lst", "--out", "y.tsv"},
        {"markieren", Tabelle().string(), "--liste", "x.lst", "--out", "y.tsv", "--gibtsnicht"},
    };
    for (const auto& aufruf : aufrufe) {
        SCOPED_TRACE(testing::PrintToString(aufruf));
        EXPECT_EQ(Flurix(aufruf), 2);
        EXPECT_FALSE(m_fehler.empty());
    }
}

TEST_F(SuchenUndMarkieren, SuchenGibtTrefferzeilenAlsTsvOderDatei) {
    struct Fall {
        std::vector<std::string> optionen;
        std::vector<std::string> nrUndName; ///< the hit rows, in their sorted order
        std::string fehler;
    };
    const Fall fälle[] = {
        {{"--spalte", "Flurstück", "--begriff", "231/1"}, {"3|Meier", "1|Schulze", "6|Otto"}, ""},
        {{"--spalte", "Name", "--begriff", "MEIER"}, {"3|Meier"}, ""},
        {{"--spalte", "Name", "--begriff", "O", "--alle-eigentuemer-in-einer-zeile"}, {"6|Otto"}, ""},
        {{"--spalte", "Flurstück", "--begriff", "99"}, {},
         "Der Suchbegriff <00099/0000> wurde nicht gefunden!   \n"},
        {{"--spalte", "Name", "--begriff", "Frei", "--gemarkung", "Nordheim", "--flur", "8"}, {},
         "Der Suchbegriff <Frei> Gemarkung: Nordheim, Flur: 8 wurde nicht gefunden!   \n"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(testing::PrintToString(f.optionen));
        std::vector<std::string> aufruf{"suchen", Tabelle().string()};
        aufruf.insert(aufruf.end(), f.optionen.begin(), f.optionen.end());
        ASSERT_EQ(Flurix(aufruf), 0);
        EXPECT_EQ(m_fehler, f.fehler);
        EXPECT_EQ(ZweiSpalten(m_aus, "Nr", "Name"), f.nrUndName);
        EXPECT_TRUE(m_aus.starts_with("Nr\tGemarkungsschlüssel\tFlur\t")) << m_aus;

        aufruf.insert(aufruf.end(), {"--out", Pfad("treffer.tsv").string()});
        ASSERT_EQ(Flurix(aufruf), 0);
        EXPECT_EQ(m_aus, std::to_string(f.nrUndName.size()) + "\n");
        EXPECT_EQ(ZweiSpalten(test::DateiLesen(Pfad("treffer.tsv")), "Nr", "Name"), f.nrUndName);
    }
}

TEST_F(SuchenUndMarkieren, SuchenOhneTabelleEndetMitEins) {
    EXPECT_EQ(Flurix({"suchen", Pfad("fehlt.tsv").string(), "--spalte", "Name", "--begriff", "x"}), 1);
    EXPECT_NE(m_fehler.find("fehlt.tsv"), std::string::npos);
}

TEST_F(SuchenUndMarkieren, MarkierenSchreibtTabelleUndFehlerdatei) {
    const fs::path liste = Pfad("liste.lst");
    fs::copy_file(Fixtures / "vier_formen_ein_schluessel_fehlt.lst", liste);
    ASSERT_EQ(Flurix({"markieren", Tabelle().string(), "--liste", liste.string(), "--out",
                      Pfad("markiert.tsv").string()}),
              0);
    EXPECT_EQ(m_fehler, "");
    EXPECT_EQ(m_aus, "");
    EXPECT_EQ(ZweiSpalten(test::DateiLesen(Pfad("markiert.tsv")), "Nr", "checkdruck"),
              (std::vector<std::string>{"3|1", "1|1", "6|1", "5|1", "4|1", "7|", "2|"}));
    EXPECT_EQ(test::DateiLesen(liste.string() + ".err"),
              "4, FKZ: 12195500800005000100 in \"" + liste.string() + "\" nicht gefunden\r\n");
    // The saved table keeps the added column with its empty caption and width.
    ASSERT_EQ(Flurix({"markieren", Tabelle().string(), "--liste", liste.string(),
                      "--out", Pfad("markiert.fil").string()}),
              0);
    EXPECT_NE(test::DateiLesen(Pfad("markiert.fil")).find("\ncheckdruck\t\t600\t"), std::string::npos);
}

TEST_F(SuchenUndMarkieren, MarkierenMitFormatfehlerBehältMarkenUndEndetMitEins) {
    const fs::path liste = Pfad("fehler.lst");
    fs::copy_file(Fixtures / "blank_ohne_schraegstrich_in_zeile_3.lst", liste);
    EXPECT_EQ(Flurix({"markieren", Tabelle().string(), "--liste", liste.string(), "--out",
                      Pfad("teil.tsv").string()}),
              1);
    EXPECT_EQ(m_fehler,
              "Bitte überprüfen Sie die Eingabedatei " + liste.string() + "! Formatfehler?!   \n");
    EXPECT_EQ(ZweiSpalten(test::DateiLesen(Pfad("teil.tsv")), "Nr", "checkdruck"),
              (std::vector<std::string>{"1|1", "2|", "3|1", "4|", "5|1", "6|1", "7|"}));

    const fs::path leer = Pfad("leer.lst");
    test::DateiSchreiben(leer, "");
    EXPECT_EQ(Flurix({"markieren", Tabelle().string(), "--liste", leer.string(), "--out",
                      Pfad("leer.tsv").string()}),
              0);
    EXPECT_EQ(m_fehler, "Es wurden keine identischen Flurstücke in der Datenbank gefunden und "
                        "selektiert!\n");
}

} // namespace
} // namespace flurix::cli
