#include "cli/cli.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

namespace flurix::cli {
namespace {

using test::DateiLesen;
using test::DateiSchreiben;

// The command line against an installation of its own, with the desktop program replaced by a
// recorder.
class CliTest : public ::testing::Test {
protected:
    CliTest() {
        DateiSchreiben(ordner / "inst" / "config" / "Flurix.dat",
                       "tempArbeitsverzeichnis =" + (ordner / "arbeit").string() + "/\r\n");
        DateiSchreiben(ordner / "inst" / "config" / "WebService.fil", "");
        umgebung.installation = ordner / "inst";
        umgebung.oberflächeStarten = [this](const std::vector<std::string>& argumente) {
            gestartet.push_back(argumente);
            return 0;
        };
    }
    int Lauf(const std::vector<std::string>& argumente) {
        aus.str({});
        fehler.str({});
        return Ausführen(argumente, aus, fehler, umgebung);
    }

    test::TempOrdner ordner;
    Umgebung umgebung;
    std::vector<std::vector<std::string>> gestartet;
    std::ostringstream aus, fehler;
};

TEST_F(CliTest, HilfeNenntAlleBefehle) {
    EXPECT_EQ(Lauf({"--help"}), 0);
    for (const char* befehl : {"erkennen", "import", "konfig", "/ggout /still", "/map"})
        EXPECT_NE(aus.str().find(befehl), std::string::npos) << befehl;
    EXPECT_EQ(Lauf({"import", "--help"}), 0);
    EXPECT_NE(aus.str().find("--alle-eigentuemer-in-einer-zeile"), std::string::npos);
    EXPECT_EQ(Lauf({}), 2);
    EXPECT_EQ(Lauf({"--gibtsnicht"}), 2);
    EXPECT_NE(fehler.str().find("unbekannte Option"), std::string::npos);
}

TEST_F(CliTest, AuftragszeilenUndIhreMeldungen) {
    struct Fall {
        std::vector<std::string> argumente;
        int code;
        std::string fehlerausgabe;
        bool oberfläche;
    };
    const std::string nas =
        "Der unbeaufsichtigte NAS-Lauf ist in dieser Version von Flurix noch nicht verfügbar!   \n";
    const Fall fälle[] = {
        {{"/daten/kreis.wldge"}, 0, "", true},
        {{"/daten/tabelle.fil"}, 0, "", true},
        {{"/map", "350000;5600000"}, 0, "", true},
        {{"kreis.wldge"}, 1, "Fehlerhafte Auftragspfadbeschreibung! Abbruch!   \n", false},
        {{"/daten/auftrag.xml", "/ggout", "/still"}, 1, nas, false},
        {{"/daten/auftrag.xml /dxfout /still"}, 1, nas, false},
        {{"/daten/auftrag.xml /ggout  /still"}, 1,
         "Der Dateityp \".xml /ggout  /still\" kann vom Flurix z.Z. nicht automatisiert "
         "eingelesen werden!   \n",
         false},
        {{"/daten/v1.2/t.fil"}, 0, "Der Dateiname /daten/v1xml ist nicht eineindeutig!   \n", true},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.argumente.front());
        gestartet.clear();
        EXPECT_EQ(Lauf(f.argumente), f.code);
        EXPECT_EQ(fehler.str(), f.fehlerausgabe);
        EXPECT_EQ(gestartet.size(), f.oberfläche ? 1u : 0u);
        if (f.oberfläche) {
            EXPECT_EQ(gestartet.front(), f.argumente);
        }
    }
}

TEST_F(CliTest, ErkennenSagtArtUndLeserOhneZuÄndern) {
    const auto wldge = std::filesystem::path(FLURIX_QUELLEN) / "samples" / "musterkreis_format32.wldge";
    const auto nas =
        std::filesystem::path(FLURIX_QUELLEN) / "samples" / "musterstadt_bestandsdatenauszug.xml";
    const auto vorher = DateiLesen(nas);
    EXPECT_EQ(Lauf({"erkennen", wldge.string(), nas.string()}), 0);
    EXPECT_EQ(aus.str(), wldge.string() +
                             "\tWLDGE-Datei, Abgabeformat \"32\"\tWLDGE-Leser (komplett oder "
                             "teilweise)\n" +
                             nas.string() + "\tNAS-Datei (ALKIS)\tNAS-Arbeitsbereich\n");
    EXPECT_EQ(DateiLesen(nas), vorher);
    EXPECT_EQ(Lauf({"erkennen", (ordner / "fehlt.wldge").string()}), 1);
    EXPECT_EQ(Lauf({"erkennen"}), 2);
}

TEST_F(CliTest, MusterkreisSchnellUndKomplett) {
    const auto datei = ordner / "kreis.wldge";
    std::filesystem::copy_file(
        std::filesystem::path(FLURIX_QUELLEN) / "samples" / "musterkreis_format32.wldge", datei);
    // One row per owner; the parcel on a folio that the extract lacks has no owner.
    EXPECT_EQ(Lauf({"import", datei.string(), "--schnell"}), 0);
    EXPECT_EQ(aus.str(), "7 Zeilen eingelesen\n");
    EXPECT_EQ(fehler.str(),
              "In der ALB-Datei wurde(n) 1 Flurstück(e) ohne Eigentümer vorgefunden!   \n");
    EXPECT_EQ(Lauf({"import", datei.string(), "--alle-eigentuemer-in-einer-zeile"}), 0);
    EXPECT_EQ(aus.str(), "4 Zeilen eingelesen\n");
    const auto tabelle = ordner / "kreis.tsv";
    EXPECT_EQ(Lauf({"import", datei.string(), "--komplett", "--out", tabelle.string()}), 0);
    EXPECT_EQ(fehler.str(), "");
    EXPECT_EQ(aus.str(), "6 Zeilen eingelesen\n");
    const std::string tsv = DateiLesen(tabelle);
    EXPECT_NE(tsv.find("\tDr. Mustermann, Max\t"), std::string::npos);
    EXPECT_NE(tsv.find("\tLand_aus_Bestandsdaten\t"), std::string::npos);
    EXPECT_EQ(Lauf({"import", datei.string(), "--komplett", "--schnell"}), 2);
    EXPECT_EQ(Lauf({"import", (ordner / "liste.txt").string()}), 2);
    EXPECT_EQ(Lauf({"import", datei.string(), "--out"}), 2);
}

TEST_F(CliTest, GespeicherteTabelleWirdEingelesenUndAlsTsvGeschrieben) {
    const auto fil = ordner / "tabelle.fil";
    DateiSchreiben(fil, "FLURIX-TABELLE\t1\nspalten\t2\n"
                        "Gemarkung\tGemarkung\t1200\t1\t1\nName\tEigentümer\t2400\t1\t0\n"
                        "zeilen\t00000000000000000002\nNord\tMeier\\nSchulze\nSüd\t\n");
    const auto tsv = ordner / "tabelle.tsv";
    EXPECT_EQ(Lauf({"import", fil.string(), "--out", tsv.string()}), 0);
    EXPECT_EQ(aus.str(), "2 Zeilen eingelesen\n");
    // A saved table gets its check box column back.
    const std::string erwartet = "Gemarkung\tName\tcheckdruck\nNord\tMeier\\nSchulze\t\nSüd\t\t\n";
    EXPECT_EQ(DateiLesen(tsv), erwartet);

    DateiSchreiben(fil, "FLURIX-TABELLE\t1\nspalten\t1\nA\tA\t1\t1\t0\nzeilen\t00000000000000000003\nx\n");
    EXPECT_EQ(Lauf({"import", fil.string(), "--out", tsv.string()}), 1);
    EXPECT_NE(fehler.str().find("Während des Lesens der Daten aus der Datei"), std::string::npos);
    EXPECT_EQ(DateiLesen(tsv), erwartet); // unchanged
}

TEST_F(CliTest, KonfigSichernUndEinlesen) {
    const auto konfig = ordner / "inst" / "config";
    DateiSchreiben(konfig / "ALB_DatenbankSpalten.dat", "Kataster ALKIS=Flur\r\n");
    const auto archiv = ordner / "sicherung.zip";
    EXPECT_EQ(Lauf({"konfig", "sichern", archiv.string()}), 0);
    DateiSchreiben(konfig / "ALB_DatenbankSpalten.dat", "verändert");
    EXPECT_EQ(Lauf({"konfig", "einlesen", archiv.string()}), 0);
    EXPECT_EQ(DateiLesen(konfig / "ALB_DatenbankSpalten.dat"), "Kataster ALKIS=Flur\r\n");
    EXPECT_EQ(Lauf({"konfig", "packen", archiv.string()}), 2);

    DateiSchreiben(konfig / "Flurix.dat", "StartMapWebService =\r\nStartMapWebServiceKoo =\r\n");
    EXPECT_EQ(Lauf({"konfig", "starteinstellung", "TopPlusOpen", "350000;5600000", "25832", "500"}), 0);
    EXPECT_EQ(DateiLesen(konfig / "Flurix.dat"),
              "StartMapWebService =TopPlusOpen\r\nStartMapWebServiceKoo =350000;5600000\r\n");
    EXPECT_EQ(fehler.str(), "Web-Service, Zentrumskoordinate, Maßstab und EPSG als "
                            "Standardvoreinstellung übernehmen?   \nSystemdatei Flurix.dat "
                            "erfolgreich geändert!   \n");
}

// The program itself, under a comma-decimal locale: the same bytes as under the C locale.
TEST_F(CliTest, GleicheAusgabeUnterDeutscherLocale) {
    const std::string programm = std::string(FLURIX_BINAER) + "/flurix";
    if (!std::filesystem::exists(programm))
        GTEST_SKIP() << "flurix nicht gebaut";
    const auto lauf = [&](const std::string& locale) {
        const std::string befehl = "LC_ALL=" + locale + " FLURIX_HOME=" +
                                   (ordner / "inst").string() + " " + programm +
                                   " erkennen " FLURIX_QUELLEN "/samples/musterkreis_format32.wldge 2>&1";
        std::string ausgabe;
        if (FILE* rohr = ::popen(befehl.c_str(), "r")) {
            char puffer[4096];
            for (std::size_t n; (n = std::fread(puffer, 1, sizeof puffer, rohr)) > 0;)
                ausgabe.append(puffer, n);
            ::pclose(rohr);
        }
        return ausgabe;
    };
    const std::string c = lauf("C");
    EXPECT_NE(c.find("Abgabeformat"), std::string::npos);
    EXPECT_EQ(lauf("de_DE.UTF-8"), c);
}

} // namespace
} // namespace flurix::cli
