#include "core/konfig_sicherung.hpp"

#include "core/fehler.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>
#include <zip.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace flurix {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using test::DateiLesen;
using test::DateiSchreiben;
using test::TempOrdner;

const std::string Zusammenstellen = "Fehler beim Daten zusammenstellen!   ";
const std::string Öffnen = "Fehler beim Zip-Datei öffnen!   ";
const std::string FrageEinlesen = "Systemsicherung einlesen? Alle Daten werden überschrieben!   ";
const std::string FrageWirklich = "Sollen die Systemdateien wirklich überschrieben werden?   ";

// Every file below a folder with its bytes, and every folder (bytes "<Ordner>").
std::map<std::string, std::string> Abbild(const fs::path& ordner) {
    std::map<std::string, std::string> abbild;
    for (const auto& e : fs::recursive_directory_iterator(ordner))
        abbild[e.path().lexically_relative(ordner).generic_string()] =
            e.is_directory() ? "<Ordner>" : DateiLesen(e.path());
    return abbild;
}

std::string AlleBytes() {
    std::string s;
    for (int b = 0; b < 256; ++b)
        s += static_cast<char>(b);
    return s;
}

// What a command prints on stdout, and whether it ended with 0.
std::pair<bool, std::string> Ausführen(const std::string& befehl) {
    std::unique_ptr<FILE, int (*)(FILE*)> rohr(popen(befehl.c_str(), "r"), pclose);
    std::string ausgabe;
    char puffer[4096];
    std::size_t n = 0;
    while (rohr && (n = std::fread(puffer, 1, sizeof puffer, rohr.get())) > 0)
        ausgabe.append(puffer, n);
    const int status = rohr ? pclose(rohr.release()) : -1;
    return {status == 0, ausgabe};
}

bool UnzipVorhanden() { return std::system("command -v unzip >/dev/null 2>&1") == 0; }

// An archive made with libzip directly, with whatever names a hostile program might write.
void ArchivBauen(const fs::path& zipdatei,
                 const std::vector<std::pair<std::string, std::string>>& einträge,
                 bool ungepackt = false) {
    int fehler = 0;
    zip_t* archiv = zip_open(zipdatei.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &fehler);
    ASSERT_NE(archiv, nullptr);
    for (const auto& [name, inhalt] : einträge) {
        zip_source_t* quelle = zip_source_buffer(archiv, inhalt.data(), inhalt.size(), 0);
        ASSERT_NE(quelle, nullptr);
        const zip_int64_t index = zip_file_add(archiv, name.c_str(), quelle, ZIP_FL_ENC_UTF_8);
        ASSERT_GE(index, 0) << name;
        if (ungepackt)
            zip_set_file_compression(archiv, static_cast<zip_uint64_t>(index), ZIP_CM_STORE, 0);
    }
    ASSERT_EQ(zip_close(archiv), 0);
}

class KonfigSicherungTest : public ::testing::Test {
protected:
    void SetUp() override {
        DateiSchreiben(konfig / "Flurix.dat",
                       "tempArbeitsverzeichnis =/tmp/flurix/\r\nPrüfeNummerFormat=nein\r\n");
        DateiSchreiben(konfig / "ALKIS_Zuordnung.dat", "Zuordnung;1;2\r\n");
        DateiSchreiben(konfig / "wfs.key", "\0binär\xFF"s + AlleBytes());
        DateiSchreiben(konfig / "leer.dat", "");
        DateiSchreiben(konfig / "Unterordner" / "Größe.dat", "Größe=groß\n");
        DateiSchreiben(konfig / "Unterordner" / "tief" / "Schlüssel äöü ß.txt", "tief unten");
        fs::create_directories(konfig / "leerer Ordner");
        original = Abbild(konfig);
    }

    TempOrdner ordner;
    fs::path konfig = ordner / "config";
    fs::path zip = ordner / "sicherung.zip";
    std::map<std::string, std::string> original;
};

TEST_F(KonfigSicherungTest, SicherungUndEinlesenGebenDieBytesZurück) {
    SkriptOberfläche ui;
    const Ergebnis sicherung = KonfigSichern(konfig, zip, ui);
    ASSERT_TRUE(sicherung) << sicherung.Meldung();
    const std::string erfolg =
        "Zip-Systemsicherung    " + zip.string() + "   erfolgreich erstellt!   ";
    EXPECT_EQ(ui.Ereignisse(), (std::vector<Ereignis>{{Ereignis::Art::Meldung, erfolg,
                                                       "Flurix Systemsicherung   ", 0}}));
    EXPECT_EQ(sicherung.Meldung(), erfolg);

    // Change the folder: edit, delete, add.
    DateiSchreiben(konfig / "Flurix.dat", "verdorben");
    fs::remove(konfig / "Unterordner" / "Größe.dat");
    fs::remove_all(konfig / "Unterordner" / "tief");
    fs::remove(konfig / "leerer Ordner");
    DateiSchreiben(konfig / "neu.dat", "bleibt");

    SkriptOberfläche ui2({Antwort::Ja, Antwort::Ja});
    const Ergebnis einlesen = KonfigEinlesen(konfig, zip, ui2);
    ASSERT_TRUE(einlesen) << einlesen.Meldung();
    EXPECT_EQ(ui2.Ereignisse(),
              (std::vector<Ereignis>{{Ereignis::Art::Frage, FrageEinlesen, "Flurix", 0},
                                     {Ereignis::Art::Frage, FrageWirklich, "Flurix", 0}}));
    auto erwartet = original;
    erwartet["neu.dat"] = "bleibt"; // unpacked over the folder: other files stay
    EXPECT_EQ(Abbild(konfig), erwartet);
}

TEST_F(KonfigSicherungTest, ArchivHältJedeDateiMitRelativemPfad) {
    if (!UnzipVorhanden())
        GTEST_SKIP() << "unzip fehlt: das Archiv wird nicht unabhängig geprüft";
    SkriptOberfläche ui;
    ASSERT_TRUE(KonfigSichern(konfig, zip, ui));

    const auto [listeOk, liste] = Ausführen("unzip -l '" + zip.string() + "'");
    ASSERT_TRUE(listeOk) << liste;
    // The rows between the two dashed lines: length, date, time, then the name (blanks included).
    std::set<std::string> namen;
    std::istringstream zeilen(liste);
    std::string zeile;
    int striche = 0;
    while (std::getline(zeilen, zeile)) {
        if (zeile.starts_with("---------")) {
            ++striche;
            continue;
        }
        if (striche != 1)
            continue;
        std::istringstream felder(zeile);
        std::string länge, datum, zeit, name;
        felder >> länge >> datum >> zeit >> std::ws;
        std::getline(felder, name);
        namen.insert(name);
    }
    std::set<std::string> erwartet;
    for (const auto& [name, inhalt] : original)
        erwartet.insert(inhalt == "<Ordner>" ? name + "/" : name);
    EXPECT_EQ(namen, erwartet) << liste;

    // unzip's own extraction must give the same folder back.
    const fs::path aus = ordner / "ausgepackt";
    const auto [auspackenOk, meldung] =
        Ausführen("unzip -q '" + zip.string() + "' -d '" + aus.string() + "' 2>&1");
    ASSERT_TRUE(auspackenOk) << meldung;
    EXPECT_EQ(Abbild(aus), original);
}

TEST_F(KonfigSicherungTest, VorhandeneDateiNurNachJaÜberschrieben) {
    DateiSchreiben(zip, "alte Sicherung");
    SkriptOberfläche nein({Antwort::Nein});
    const Ergebnis e = KonfigSichern(konfig, zip, nein);
    EXPECT_EQ(e.status(), Ergebnis::Status::Abgebrochen);
    EXPECT_EQ(nein.Ereignisse(),
              (std::vector<Ereignis>{{Ereignis::Art::Frage,
                                      "Datei schon vorhanden! Überschreiben?   ", "Flurix", 0}}));
    EXPECT_EQ(DateiLesen(zip), "alte Sicherung");
    EXPECT_EQ(std::distance(fs::directory_iterator(ordner.pfad()), fs::directory_iterator()),
              2); // nothing else written

    SkriptOberfläche ja({Antwort::Ja});
    ASSERT_TRUE(KonfigSichern(konfig, zip, ja));
    EXPECT_EQ(ja.Fragen(), std::vector<std::string>{"Datei schon vorhanden! Überschreiben?   "});
    EXPECT_TRUE(DateiLesen(zip).starts_with("PK\x03\x04"));
}

TEST_F(KonfigSicherungTest, NeinBeimEinlesenÄndertNichts) {
    SkriptOberfläche ui;
    ASSERT_TRUE(KonfigSichern(konfig, zip, ui));
    DateiSchreiben(konfig / "Flurix.dat", "geändert");
    const auto vorher = Abbild(konfig);
    struct Fall {
        std::deque<Antwort> antworten;
        std::vector<std::string> fragen;
    };
    const Fall fälle[] = {
        {{Antwort::Nein}, {FrageEinlesen}},
        {{Antwort::Abbrechen}, {FrageEinlesen}},
        {{Antwort::Ja, Antwort::Nein}, {FrageEinlesen, FrageWirklich}},
    };
    for (const auto& f : fälle) {
        SkriptOberfläche skript(f.antworten);
        EXPECT_EQ(KonfigEinlesen(konfig, zip, skript).status(), Ergebnis::Status::Abgebrochen);
        EXPECT_EQ(skript.Fragen(), f.fragen);
        EXPECT_TRUE(skript.Meldungen().empty());
        EXPECT_EQ(Abbild(konfig), vorher);
    }
}

TEST_F(KonfigSicherungTest, FeindlichesArchivWirdAbgelehntUndOrdnerBleibt) {
    // Each archive first holds a good entry that would change Flurix.dat: it must not be written
    // either, as the whole archive is checked before anything is replaced.
    const fs::path draußen = ordner / "draussen.txt";
    const std::string böseNamen[] = {
        "../draussen.txt",
        "Unterordner/../../draussen.txt",
        "..\\draussen.txt",
        draußen.string(),
        "C:/draussen.txt",
        "\\draussen.txt",
        "..",
        "",
    };
    for (const auto& name : böseNamen) {
        SCOPED_TRACE(name);
        ArchivBauen(zip, {{"Flurix.dat", "überschrieben"}, {name, "böse"}});
        SkriptOberfläche ui;
        const Ergebnis e = KonfigEinlesen(konfig, zip, ui);
        EXPECT_EQ(e.status(), Ergebnis::Status::Fehler);
        EXPECT_EQ(e.Meldung(), Zusammenstellen);
        EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{Zusammenstellen});
        EXPECT_EQ(Abbild(konfig), original);
        EXPECT_FALSE(fs::exists(draußen));
    }
}

TEST_F(KonfigSicherungTest, ArchivMitWindowsTrennernWirdEingelesen) {
    ArchivBauen(zip, {{"Unterordner\\Größe.dat", "aus Windows"}, {"./Flurix.dat", "mit Punkt"}});
    SkriptOberfläche ui;
    ASSERT_TRUE(KonfigEinlesen(konfig, zip, ui));
    EXPECT_EQ(DateiLesen(konfig / "Unterordner" / "Größe.dat"), "aus Windows");
    EXPECT_EQ(DateiLesen(konfig / "Flurix.dat"), "mit Punkt");
}

TEST_F(KonfigSicherungTest, UnbrauchbareArchiveÄndernNichts) {
    const fs::path beschädigt = ordner / "beschaedigt.zip";
    ArchivBauen(beschädigt,
                {{"Flurix.dat", "neu"}, {"ALKIS_Zuordnung.dat", "Inhalt, der verdorben wird"}},
                true);
    std::string bytes = DateiLesen(beschädigt);
    const auto stelle = bytes.find("verdorben");
    ASSERT_NE(stelle, std::string::npos);
    bytes[stelle] = 'V'; // the CRC no longer fits
    DateiSchreiben(beschädigt, bytes);

    const fs::path ordnerUndDatei = ordner / "konflikt.zip"; // "Flurix.dat" is a file, not a folder
    ArchivBauen(ordnerUndDatei, {{"leer.dat", "neu"}, {"Flurix.dat/innen.txt", "x"}});

    DateiSchreiben(ordner / "text.zip", "Das ist kein Zip-Archiv.");
    DateiSchreiben(ordner / "leer.zip", "");
    struct Fall {
        fs::path datei;
        std::string meldung;
    };
    const Fall fälle[] = {
        {ordner / "fehlt.zip", Öffnen},    {ordner / "text.zip", Öffnen},
        {ordner / "leer.zip", Öffnen},     {beschädigt, Zusammenstellen},
        {ordnerUndDatei, Zusammenstellen},
    };
    for (const auto& f : fälle) {
        SkriptOberfläche ui({Antwort::Ja, Antwort::Ja});
        const Ergebnis e = KonfigEinlesen(konfig, f.datei, ui);
        EXPECT_EQ(e.Meldung(), f.meldung) << f.datei;
        EXPECT_EQ(ui.Ereignisse().back(),
                  (Ereignis{Ereignis::Art::Meldung, f.meldung, "Flurix", 0}));
        EXPECT_EQ(Abbild(konfig), original) << f.datei;
    }
}

TEST_F(KonfigSicherungTest, FehlerBeimSichernLassenAlteSicherungStehen) {
    DateiSchreiben(zip, "alte Sicherung");
    fs::create_directories(ordner / "leer");
    struct Fall {
        fs::path konfigordner, zipdatei;
        std::string meldung;
    };
    const Fall fälle[] = {
        {konfig, ordner / "fehlt" / "neu.zip", "Fehler beim Zip-Datei erstellen!   "},
        {ordner / "gibtsnicht", zip, Zusammenstellen},
        {ordner / "leer", zip, Zusammenstellen},
    };
    for (const auto& f : fälle) {
        SkriptOberfläche ui({Antwort::Ja});
        const Ergebnis e = KonfigSichern(f.konfigordner, f.zipdatei, ui);
        EXPECT_EQ(e.status(), Ergebnis::Status::Fehler);
        EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{f.meldung}) << f.zipdatei;
        EXPECT_FALSE(fs::exists(ordner / "fehlt"));
        EXPECT_EQ(DateiLesen(zip), "alte Sicherung");
        // no temporary archive left behind
        EXPECT_EQ(std::distance(fs::directory_iterator(ordner.pfad()), fs::directory_iterator()),
                  3);
    }
}

TEST_F(KonfigSicherungTest, SicherungImKonfigordnerSelbst) {
    // The archive may be saved into the folder it saves: it must not hold itself or its temporary
    // file.
    const fs::path innen = konfig / "sicherung.zip";
    SkriptOberfläche ui;
    ASSERT_TRUE(KonfigSichern(konfig, innen, ui));
    ASSERT_TRUE(KonfigSichern(konfig, innen, ui)); // the second time it exists already
    const fs::path zurück = ordner / "zurück";
    fs::create_directories(zurück);
    SkriptOberfläche ui2;
    ASSERT_TRUE(KonfigEinlesen(zurück, innen, ui2));
    EXPECT_EQ(Abbild(zurück), original);
}

TEST(KonfigSchreibrecht, MeldungInDreiZeilenNurOhneRecht) {
    TempOrdner ordner;
    SkriptOberfläche ui;
    EXPECT_TRUE(KonfigSchreibrechtPrüfen(ordner.pfad(), ui));
    EXPECT_TRUE(ui.Ereignisse().empty());
    EXPECT_TRUE(fs::is_empty(ordner.pfad())) << "the probe file is gone";
    // A folder that can't be written to: one that isn't there (permissions don't stop root).
    const fs::path konfig = ordner / "installation" / "config";
    const std::string text = "Es liegen keine Schreibrechte für Änderungen an den Systemdateien im "
                             "Programmverzeichnis     \n" + konfig.string() + "/... vor!   \n"
                             "Bitte informieren Sie bei Bedarf Ihren Systemadministrator!   ";
    for (const std::string& pfad : {konfig.string(), konfig.string() + "/"}) { // one "/" before "..."
        SkriptOberfläche ohne;
        EXPECT_FALSE(KonfigSchreibrechtPrüfen(pfad, ohne));
        EXPECT_EQ(ohne.Ereignisse(), (std::vector<Ereignis>{{Ereignis::Art::Meldung, text,
                                                             "Änderungen an den Systemdateien nicht möglich!", 0}}));
    }
}

TEST(KonfigDateiSichern, KopieNebenDerDateiMitZeitstempel) {
    TempOrdner ordner;
    const fs::path datei = ordner / "Flurix.dat";
    DateiSchreiben(datei, "a=b\r\n\xFF");
    const fs::path kopie = KonfigDateiSichern(datei, "23112026 072427");
    EXPECT_EQ(kopie, ordner / "Flurix.dat_23112026 072427.dat");
    EXPECT_EQ(DateiLesen(kopie), "a=b\r\n\xFF");
    DateiSchreiben(datei, "neu");
    EXPECT_EQ(KonfigDateiSichern(datei, "23112026 072427"), kopie); // same second: replaced
    EXPECT_EQ(DateiLesen(kopie), "neu");
    try {
        KonfigDateiSichern(ordner / "fehlt.dat", "1");
        ADD_FAILURE() << "fehlende Datei kopiert";
    } catch (const Fehler& f) {
        EXPECT_NE(std::string(f.what()).find("fehlt.dat"), std::string::npos) << f.what();
    }
}

} // namespace
} // namespace flurix
