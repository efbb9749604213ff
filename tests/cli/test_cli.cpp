// The command line as golden files: each group of calls runs in order in one scratch folder, and
// its transcript (call, exit code, stdout, stderr marked "! ") and the files it writes are
// compared byte for byte with tests/cli/erwartet/. Paths are written as <ordner> and <quellen>,
// the clock times of the NAS protocol as hh:mm:ss. After a deliberate change of an output,
// FLURIX_GOLDEN_NEU=1 ctest -L cli writes the expected files anew; read git diff before keeping them.

#include "cli/cli.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <sstream>

namespace flurix::cli {
namespace {

namespace fs = std::filesystem;
using test::DateiLesen;
using test::DateiSchreiben;

const fs::path Quellen = FLURIX_QUELLEN;
const fs::path Erwartet = Quellen / "tests" / "cli" / "erwartet";

struct Aufruf {
    std::vector<std::string> argumente; ///< "<ordner>" and "<quellen>" stand for the folders
    /// Files the call writes (in the folder) and their expected file in erwartet/.
    std::vector<std::pair<std::string, std::string>> dateien = {};
};

// An installation of its own (the NAS configuration of the source tree, a view "nurname"), the
// desktop program replaced by a line in the transcript.
class CliGolden : public ::testing::Test {
protected:
    CliGolden() {
        const fs::path konfig = ordner / "inst" / "config";
        DateiSchreiben(konfig / "Flurix.dat",
                       "tempArbeitsverzeichnis =" + (ordner / "arbeit").string() + "/\r\n");
        DateiSchreiben(konfig / "WebService.fil", "");
        for (const char* name : {"ALKIS_Knoten.dat", "ALKIS_Werteart.dat", "ALKIS_EPSG.dat",
                                 "ALKIS_Zuordnung.dat", "ALB_ALKISImport.dat", "ALKIS_Amtsgerichte.dat",
                                 "ALKIS_Nutzungsart.dat"})
            fs::copy_file(Quellen / "config" / name, konfig / name);
        DateiSchreiben(konfig / "ALB_DatenbankSpalten.dat", "nurname=Name;Flur\r\n");
        umgebung.installation = ordner / "inst";
        umgebung.oberflächeStarten = [this](const std::vector<std::string>& argumente) {
            protokoll << "[flurix-gui";
            for (const auto& a : argumente)
                protokoll << " " << a;
            protokoll << "]\n";
            return 0;
        };
    }

    std::string Maskiert(std::string text) const {
        for (const auto& [pfad, name] : pfade)
            for (auto stelle = text.find(pfad); stelle != std::string::npos; stelle = text.find(pfad, stelle))
                text.replace(stelle, pfad.size(), name);
        static const std::regex uhrzeit("(^|\n)[0-9]{2}:[0-9]{2}:[0-9]{2}");
        // The clock time in the head of a NAS drawing (the table's export takes SOURCE_DATE_EPOCH).
        static const std::regex kopf("erstellt am: [0-9.]+, Uhrzeit: [0-9:]+(\r?\n\\* erstellt mit)");
        return std::regex_replace(std::regex_replace(text, uhrzeit, "$1hh:mm:ss"), kopf,
                                  "erstellt am: tt.mm.jjjj, Uhrzeit: hh:mm:ss$1");
    }

    // Runs one call, "<ordner>" and "<quellen>" in its arguments replaced: exit code, stdout, stderr.
    std::tuple<int, std::string, std::string> Direkt(const std::vector<std::string>& argumente) {
        std::vector<std::string> eingesetzt;
        for (std::string arg : argumente) {
            for (const auto& [pfad, name] : pfade)
                if (const auto stelle = arg.find(name); stelle != std::string::npos)
                    arg.replace(stelle, name.size(), pfad);
            eingesetzt.push_back(arg);
        }
        std::ostringstream aus, fehler;
        const int code = Ausführen(eingesetzt, aus, fehler, umgebung);
        return {code, aus.str(), fehler.str()};
    }

    // Runs the calls in order, then compares the transcript with erwartet/<gruppe>.txt and each
    // written file with its expected file.
    void Laufen(const std::string& gruppe, const std::vector<Aufruf>& aufrufe) {
        for (const auto& a : aufrufe) {
            protokoll << "$ flurix";
            for (const auto& arg : a.argumente)
                protokoll << " " << arg;
            protokoll << "\n"; // the desktop program's line follows, when the call starts it
            const auto [code, aus, fehler] = Direkt(a.argumente);
            protokoll << "Ende " << code << "\n" << Maskiert(aus);
            std::istringstream zeilen(Maskiert(fehler));
            for (std::string zeile; std::getline(zeilen, zeile);)
                protokoll << "! " << zeile << "\n";
            protokoll << "\n";
            for (const auto& [datei, golden] : a.dateien) {
                SCOPED_TRACE(datei);
                ASSERT_TRUE(fs::exists(ordner / datei)) << "nicht geschrieben";
                EXPECT_EQ(test::GoldenVergleich(Maskiert(DateiLesen(ordner / datei)), Erwartet / golden), "");
            }
        }
        EXPECT_EQ(test::GoldenVergleich(protokoll.str(), Erwartet / (gruppe + ".txt")), "");
    }

    void Kopieren(const char* probe, const std::string& name) {
        fs::copy_file(Quellen / "samples" / probe, ordner / name);
    }

    test::TempOrdner ordner;
    const std::pair<std::string, std::string> pfade[2] = {{ordner.pfad().string(), "<ordner>"},
                                                           {Quellen.string(), "<quellen>"}};
    Umgebung umgebung;
    std::ostringstream protokoll;
};

TEST_F(CliGolden, HilfeUndAuftragszeilen) {
    Kopieren("musterstadt_bestandsdatenauszug.xml", "nas.xml");
    const std::string vorher = DateiLesen(ordner / "nas.xml");
    Laufen("aufrufe", {
        {{"--help"}}, {{"import", "--help"}}, {{"export", "--help"}}, {{"suchen", "--help"}},
        {{"markieren", "--help"}}, {{}}, {{"--gibtsnicht"}},
        {{"/daten/kreis.wldge"}}, {{"/daten/tabelle.fil"}}, {{"/map", "350000;5600000"}},
        {{"kreis.wldge"}},
        // The batch runs without a display and draws the data set beside its input.
        {{"<ordner>/nas.xml", "/ggout", "/still"}, {{"nas.out", "stapel_ggout.out"}}},
        {{"/daten/auftrag.xml /dxfout /still"}}, {{"/daten/auftrag.xml /ggout  /still"}},
        {{"/daten/v1.2/t.fil"}},
        {{"erkennen", "<quellen>/samples/musterkreis_format32.wldge", "<ordner>/nas.xml"}},
        {{"erkennen", "<ordner>/fehlt.wldge"}}, {{"erkennen"}},
    });
    EXPECT_EQ(DateiLesen(ordner / "nas.xml"), vorher) << "erkennen and the batch change nothing";
    for (const auto& datei : fs::directory_iterator(ordner / "arbeit"))
        EXPECT_EQ(datei.path().filename().string().find("_tmpDAOdbFile"), std::string::npos)
            << "the batch's work database is removed";
}

TEST_F(CliGolden, Import) {
    Kopieren("musterkreis_format32.wldge", "k32.wldge");
    Kopieren("musterkreis_format35.wldge", "k35.wldge");
    Kopieren("musterstadt_webxml_auszug.xml", "a.xml");
    Kopieren("musterstadt_webxml_auszug.xml", "b.xml");
    DateiSchreiben(ordner / "t.fil", "FLURIX-TABELLE\t1\nspalten\t2\n"
                                     "Gemarkung\tGemarkung\t1200\t1\t1\nName\tEigentümer\t2400\t1\t0\n"
                                     "zeilen\t00000000000000000002\nNord\tMeier\\nSchulze\nSüd\t\n");
    DateiSchreiben(ordner / "kaputt.fil",
                   "FLURIX-TABELLE\t1\nspalten\t1\nA\tA\t1\t1\t0\nzeilen\t00000000000000000003\nx\n");
    Laufen("import", {
        {{"import", "<ordner>/k32.wldge", "--komplett", "--out", "<ordner>/k.tsv"}, {{"k.tsv", "import_32_komplett.tsv"}}},
        {{"import", "<ordner>/k32.wldge", "--schnell", "--out", "<ordner>/s.tsv"}, {{"s.tsv", "import_32_schnell.tsv"}}},
        {{"import", "<ordner>/k32.wldge", "--alle-eigentuemer-in-einer-zeile", "--out", "<ordner>/e.tsv"},
         {{"e.tsv", "import_32_eine_zeile.tsv"}}},
        {{"import", "<ordner>/k35.wldge", "--out", "<ordner>/k35.tsv"}, {{"k35.tsv", "import_35.tsv"}}},
        {{"import", "<ordner>/k35.wldge", "--schnell", "--alle-eigentuemer-in-einer-zeile", "--out", "<ordner>/k35.tsv"},
         {{"k35.tsv", "import_35.tsv"}}},
        {{"import", "<ordner>/a.xml", "<ordner>/b.xml", "--out", "<ordner>/w.tsv"}, {{"w.tsv", "import_webxml_zwei.tsv"}}},
        {{"import", "<ordner>/a.xml", "--anfuegen", "--out", "<ordner>/w.tsv"}},
        {{"import", "<ordner>/a.xml", "--out", "<ordner>/w.tsv"}},
        {{"import", "<ordner>/k35.wldge", "--anfuegen", "--out", "<ordner>/w.tsv"}},
        {{"import", "<ordner>/t.fil", "--out", "<ordner>/t.tsv"}, {{"t.tsv", "import_fil.tsv"}}},
        // A broken saved table: exit 1, and the table written before stays as it was.
        {{"import", "<ordner>/kaputt.fil", "--out", "<ordner>/t.tsv"}, {{"t.tsv", "import_fil.tsv"}}},
        {{"import", "<ordner>/k32.wldge", "--komplett", "--schnell"}},
        {{"import", "<ordner>/liste.txt"}},
        {{"import", "<ordner>/k32.wldge", "--out"}},
    });
}

TEST_F(CliGolden, Nas) {
    Kopieren("musterstadt_bestandsdatenauszug.xml", "auszug.xml");
    Kopieren("musterstadt_nas.xml", "muster.xml");
    DateiSchreiben(ordner / "kein.xml", "<?xml version=\"1.0\"?>\n<auszug/>\n");
    DateiSchreiben(ordner / "fremd.sqlite", "kein SQLite");
    Laufen("nas", {
        {{"nas", "<ordner>/auszug.xml", "--db", "<ordner>/nas.sqlite"}, {{"auszug.xml.prn", "nas_auszug.prn"}}},
        // Opened again from the saved database: the same tables, no scan.
        {{"nas", "<ordner>/nas.sqlite", "--db", "<ordner>/neu.sqlite"}},
        {{"nas", "<ordner>/muster.xml", "--out", "<ordner>/nas.tsv"},
         {{"nas.tsv", "nas_muster.tsv"}, {"muster.xml.prn", "nas_muster.prn"}}},
        // "flurix import" takes the same road for a NAS file.
        {{"import", "<ordner>/muster.xml", "--out", "<ordner>/import.tsv", }, {{"import.tsv", "nas_muster.tsv"}}},
        // With the land-use areas, fitted to the official area.
        {{"nas", "<ordner>/muster.xml", "--out", "<ordner>/flaechen.tsv", "--flaechen", "alle", "--ohne-protokoll"},
         {{"flaechen.tsv", "nas_muster_flaechen.tsv"}}},
        {{"nas", "<ordner>/muster.xml", "--out", "<ordner>/f.tsv", "--flaechen", "manche"}},
        {{"nas", "<ordner>/muster.xml", "--out", "<ordner>/f.tsv", "--svg", "<ordner>/svg"}},
        {{"nas", "<ordner>/muster.xml", "--out", "<ordner>/t.abc"}},
        {{"nas", "<ordner>/muster.xml", "--format", "tsv"}},
        {{"nas", "<ordner>/kein.xml", "--db", "<ordner>/b.sqlite", "--ohne-protokoll"}},
        {{"nas", "<ordner>/fremd.sqlite"}},
        {{"nas"}},
        {{"nas-werkzeug", "zusammenfuegen", "<ordner>/auszug.xml", "<ordner>/muster.xml"}},
    });
    EXPECT_FALSE(fs::exists(ordner / "kein.xml.prn")) << "--ohne-protokoll";
    fs::remove(ordner / "inst" / "config" / "ALKIS_Zuordnung.dat");
    const auto [code, aus, fehler] = Direkt({"nas", "<ordner>/muster.xml", "--out", "<ordner>/z.tsv"});
    EXPECT_EQ(code, 1);
    EXPECT_NE(fehler.find("ERR: Knotendatei \"ALKIS_Zuordnung.dat\" nicht vorhanden!"), std::string::npos);
    EXPECT_FALSE(fs::exists(ordner / "z.tsv"));
}

TEST_F(CliGolden, Export) {
    DateiSchreiben(ordner / "t.tsv", "Gemarkung\tFlur\tName\tcheckdruck\n"
                                     "Nord\t007\tMeier & Co <\"x\"> $5\t1\n"
                                     "Süd\t001\tŁukasz\\tTab\\r\\nZeile\t\n");
    fs::create_directories(ordner / "aus");
    std::vector<Aufruf> aufrufe;
    const std::pair<std::string, std::string> formate[] = {{"txt-tab", "a.txt"}, {"txt-dollar", "a.dollar"},
        {"xml", "a.xml"}, {"fil", "a.fil"}, {"html", "a.htm"}, {"tsv", "a.tsv"}};
    for (const auto& [format, datei] : formate)
        aufrufe.push_back({{"export", "<ordner>/t.tsv", "--format", format, "--out", "<ordner>/aus/" + datei},
                           {{"aus/" + datei, "export_" + datei}}});
    aufrufe.push_back({{"export", "<ordner>/t.tsv", "--format", "txt-tab", "--out", "<ordner>/aus/a.txt"}});
    // The GEOgraf batch file of text blocks: the row without coordinates goes to g.out.err and
    // is counted in the warning. The time of the header comes from SOURCE_DATE_EPOCH.
    DateiSchreiben(ordner / "g.tsv", "Gemarkung\tFlur\tFlurstück\tName\tRechtswert\tHochwert\n"
                                     "Nord\t007\t00012/0003\tMüller, \"Hans\"\t456789.12\t5600000.5\n"
                                     "Süd\t001\t00004/0000\tLang\t0\t0\n");
    aufrufe.push_back({{"export", "<ordner>/g.tsv", "--format", "geograf", "--form", "ohne",
                        "--spalten", "Flurstück,Name", "--ebene", "4", "--ohne-fuehrende-nullen",
                        "--out", "<ordner>/aus/g.out"},
                       {{"aus/g.out", "export_geograf_ohne.out"}, {"aus/g.out.err", "export_geograf_ohne.err"}}});
    aufrufe.push_back({{"export", "<ordner>/t.tsv", "--format", "txt-tab", "--out", "<ordner>/m.txt",
                        "--nur-markierte", "--ansicht", "nurname"}, {{"m.txt", "export_markiert_nurname.txt"}}});
    for (const std::vector<std::string>& falsch : std::vector<std::vector<std::string>>{
             {"--format", "xml", "--out", "<ordner>/x.xml", "--ansicht", "gibtsnicht"},
             {"--format", "txt-tab"}, {"--format", "pdf", "--out", "<ordner>/x.txt"},
             {"--format", "txt-tab", "--out", "<ordner>/fehlt/x.txt"},
             {"--format", "geograf", "--out", "<ordner>/x.out"},
             {"--format", "geograf", "--form", "ohne", "--out", "<ordner>/x.out"},
             {"--format", "geograf", "--form", "stempel-c", "--out", "<ordner>/x.out"},
             {"--format", "geograf", "--form", "ohne", "--spalten", "Name", "--art", "x", "--out", "<ordner>/x.out"}}) {
        aufrufe.push_back({{"export", "<ordner>/t.tsv"}});
        aufrufe.back().argumente.insert(aufrufe.back().argumente.end(), falsch.begin(), falsch.end());
    }
    aufrufe.push_back({{"export", "<ordner>/fehlt.fil", "--format", "xml", "--out", "<ordner>/x.xml"}});
    ::setenv("SOURCE_DATE_EPOCH", "1706691600", 1);
    Laufen("export", aufrufe);
    ::unsetenv("SOURCE_DATE_EPOCH");

    // The binary formats: a workbook and an SQLite file at exactly the named path.
    const std::pair<std::string, std::string> binär[] = {{"xlsx", "PK\x03\x04"},
                                                          {"sqlite", std::string("SQLite format 3\0", 16)}};
    for (const auto& [format, anfang] : binär) {
        const fs::path out = ordner / "aus" / ("b." + format);
        const auto [code, aus, fehler] = Direkt({"export", "<ordner>/t.tsv", "--format", format, "--out", out.string()});
        EXPECT_EQ(code, 0) << fehler;
        EXPECT_EQ(DateiLesen(out).substr(0, anfang.size()), anfang) << format;
    }
    // Without marks, --nur-markierte has nothing to write.
    DateiSchreiben(ordner / "leer.tsv", "Gemarkung\tcheckdruck\nNord\t\n");
    const auto [code, aus, fehler] =
        Direkt({"export", "<ordner>/leer.tsv", "--format", "xml", "--out", "<ordner>/l.xml", "--nur-markierte"});
    EXPECT_EQ(code, 1);
    EXPECT_NE(fehler.find("Keine Zeile der Tabelle ist markiert"), std::string::npos);
}

TEST_F(CliGolden, SuchenUndMarkieren) {
    const fs::path daten = test::Testdaten() / "markierung";
    fs::copy_file(daten / "sieben_zeilen_drei_eigentuemer_ohne_checkdruck.tsv", ordner / "t.tsv");
    fs::copy_file(daten / "vier_formen_ein_schluessel_fehlt.lst", ordner / "liste.lst");
    fs::copy_file(daten / "blank_ohne_schraegstrich_in_zeile_3.lst", ordner / "fehler.lst");
    DateiSchreiben(ordner / "leer.lst", "");
    const auto suchen = [](std::vector<std::string> optionen) {
        optionen.insert(optionen.begin(), {"suchen", "<ordner>/t.tsv"});
        return Aufruf{optionen};
    };
    Laufen("suchen_markieren", {
        suchen({"--spalte", "Flurstück", "--begriff", "231/1"}),
        suchen({"--spalte", "Name", "--begriff", "MEIER"}),
        suchen({"--spalte", "Name", "--begriff", "O", "--alle-eigentuemer-in-einer-zeile"}),
        suchen({"--spalte", "Flurstück", "--begriff", "99"}),
        suchen({"--spalte", "Name", "--begriff", "Frei", "--gemarkung", "Nordheim", "--flur", "8"}),
        {{"suchen", "<ordner>/t.tsv", "--spalte", "Flurstück", "--begriff", "231/1", "--out", "<ordner>/treffer.tsv"},
         {{"treffer.tsv", "suchen_treffer.tsv"}}},
        {{"suchen", "<ordner>/fehlt.tsv", "--spalte", "Name", "--begriff", "x"}},
        {{"markieren", "<ordner>/t.tsv", "--liste", "<ordner>/liste.lst", "--out", "<ordner>/m.tsv"},
         {{"m.tsv", "markieren.tsv"}, {"liste.lst.err", "markieren.err"}}},
        {{"markieren", "<ordner>/t.tsv", "--liste", "<ordner>/liste.lst", "--out", "<ordner>/m.fil"},
         {{"m.fil", "markieren.fil"}}},
        {{"markieren", "<ordner>/t.tsv", "--liste", "<ordner>/fehler.lst", "--out", "<ordner>/teil.tsv"},
         {{"teil.tsv", "markieren_formatfehler.tsv"}}},
        {{"markieren", "<ordner>/t.tsv", "--liste", "<ordner>/leer.lst", "--out", "<ordner>/leer.tsv"}},
        {{"suchen", "<ordner>/t.tsv"}}, {{"suchen", "--spalte", "Name"}},
        {{"suchen", "<ordner>/t.tsv", "--spalte", "Name", "--gemarkung", "Nordheim"}},
        {{"suchen", "<ordner>/t.tsv", "--spalte"}},
        {{"markieren", "<ordner>/t.tsv", "--liste", "x.lst"}}, {{"markieren", "<ordner>/t.tsv", "--out", "y.tsv"}},
        {{"markieren", "--liste", "x.lst", "--out", "y.tsv"}},
        {{"markieren", "<ordner>/t.tsv", "--liste", "x.lst", "--out", "y.tsv", "--gibtsnicht"}},
    });
}

// The register extract with a fixed date (2024-01-31 09:00:00 UTC): the PDF byte for byte, the
// file names in the working directory, and the messages of bad calls.
TEST_F(CliGolden, Auszug) {
    ::setenv("SOURCE_DATE_EPOCH", "1706691600", 1);
    fs::copy_file(test::Testdaten() / "report" / "flurstuecke_zwei_und_vierzehn_eigentuemer.tsv", ordner / "t.tsv");
    const auto auszug = [](std::vector<std::string> optionen) {
        optionen.insert(optionen.begin(), {"auszug", "<ordner>/t.tsv"});
        return Aufruf{optionen};
    };
    Laufen("auszug", {
        {auszug({"--zeile", "5", "--out", "<ordner>/a.pdf", "--titel", "Flurix Test"}).argumente,
         {{"a.pdf", "auszug_vierzehn_eigentuemer.pdf"}}},
        auszug({"--zeile", "1"}), auszug({"--zeile", "2"}), auszug({"--fkz", "14120100200007000"}),
        auszug({"--zeile", "17"}), auszug({}), auszug({"--zeile", "1", "--fkz", "1"}), auszug({"--zeile", "0"}),
        auszug({"--zeile", "18"}), auszug({"--zeile", "x1"}), auszug({"--fkz", "999"}),
    });
    for (const char* name : {"ALB-120101-001-123.pdf", "ALB-120101-002-7.pdf", "ALB-120101-002-8.pdf"})
        EXPECT_EQ(DateiLesen(ordner / "arbeit" / name).substr(0, 8), "%PDF-1.1") << name;
    ::setenv("SOURCE_DATE_EPOCH", "gestern", 1);
    const auto [code, aus, fehler] = Direkt({"auszug", "<ordner>/t.tsv", "--zeile", "1"});
    EXPECT_EQ(code, 2);
    EXPECT_NE(fehler.find("SOURCE_DATE_EPOCH"), std::string::npos);
    ::unsetenv("SOURCE_DATE_EPOCH");
}

TEST_F(CliGolden, KonfigSichernUndEinlesen) {
    const auto konfig = ordner / "inst" / "config";
    DateiSchreiben(konfig / "ALB_DatenbankSpalten.dat", "Kataster ALKIS=Flur\r\n");
    DateiSchreiben(konfig / "Flurix.dat", "StartMapWebService =\r\nStartMapWebServiceKoo =\r\n");
    Laufen("konfig", {
        {{"konfig", "sichern", "<ordner>/sicherung.zip"}},
        {{"konfig", "starteinstellung", "TopPlusOpen", "350000;5600000", "25832", "500"},
         {{"inst/config/Flurix.dat", "konfig_Flurix.dat"}}},
        {{"konfig", "packen", "<ordner>/sicherung.zip"}},
    });
    DateiSchreiben(konfig / "ALB_DatenbankSpalten.dat", "verändert");
    EXPECT_EQ(std::get<0>(Direkt({"konfig", "einlesen", "<ordner>/sicherung.zip"})), 0);
    EXPECT_EQ(DateiLesen(konfig / "ALB_DatenbankSpalten.dat"), "Kataster ALKIS=Flur\r\n");
}

} // namespace
} // namespace flurix::cli
