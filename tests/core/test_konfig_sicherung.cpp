#include "core/konfig_sicherung.hpp"

#include "core/fehler.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "kernhilfen.hpp"

#include <gtest/gtest.h>
#include <zip.h>

#include <map>

namespace flurix {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using test::DateiLesen;
using test::DateiSchreiben;
using test::TempOrdner;
using Texte = std::vector<std::string>;

const std::string Zusammenstellen = "Fehler beim Daten zusammenstellen!   ";
const std::string Öffnen = "Fehler beim Zip-Datei öffnen!   ";
const std::string FrageEinlesen = "Frage [Flurix] \"Systemsicherung einlesen? Alle Daten werden überschrieben!   \"\n";
const std::string FrageWirklich = "Frage [Flurix] \"Sollen die Systemdateien wirklich überschrieben werden?   \"\n";

// Every file below a folder with its bytes, and every folder (bytes "<Ordner>").
std::map<std::string, std::string> Abbild(const fs::path& ordner) {
    std::map<std::string, std::string> abbild;
    for (const auto& e : fs::recursive_directory_iterator(ordner))
        abbild[e.path().lexically_relative(ordner).generic_string()] =
            e.is_directory() ? "<Ordner>" : DateiLesen(e.path());
    return abbild;
}

std::size_t Einträge(const fs::path& ordner) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(ordner), fs::directory_iterator()));
}

// An archive made with libzip directly, with whatever names a hostile program might write.
void ArchivBauen(const fs::path& zipdatei, const std::vector<std::pair<std::string, std::string>>& einträge,
                 bool ungepackt = false) {
    int fehler = 0;
    zip_t* archiv = zip_open(zipdatei.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &fehler);
    ASSERT_NE(archiv, nullptr);
    for (const auto& [name, inhalt] : einträge) {
        zip_source_t* quelle = zip_source_buffer(archiv, inhalt.data(), inhalt.size(), 0);
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
        DateiSchreiben(konfig / "Flurix.dat", "tempArbeitsverzeichnis =/tmp/flurix/\r\nPrüfeNummerFormat=nein\r\n");
        DateiSchreiben(konfig / "ALKIS_Zuordnung.dat", "Zuordnung;1;2\r\n");
        DateiSchreiben(konfig / "wfs.key", "\0binär\xFF"s + test::AlleBytes());
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
    const std::string erfolg = "Zip-Systemsicherung    " + zip.string() + "   erfolgreich erstellt!   ";
    EXPECT_EQ(test::Verlauf(ui), "Meldung [Flurix Systemsicherung   ] " + test::Zitat(erfolg) + "\n");
    EXPECT_EQ(sicherung.Meldung(), erfolg);

    // Change the folder: edit, delete, add.
    DateiSchreiben(konfig / "Flurix.dat", "verdorben");
    fs::remove(konfig / "Unterordner" / "Größe.dat");
    fs::remove_all(konfig / "Unterordner" / "tief");
    fs::remove(konfig / "leerer Ordner");
    DateiSchreiben(konfig / "neu.dat", "bleibt");
    const auto vorher = Abbild(konfig);

    // No, cancel, or yes and then no change nothing.
    for (const std::deque<Antwort>& antworten : {std::deque{Antwort::Nein}, std::deque{Antwort::Abbrechen},
                                                std::deque{Antwort::Ja, Antwort::Nein}}) {
        SkriptOberfläche skript(antworten);
        EXPECT_EQ(KonfigEinlesen(konfig, zip, skript).status(), Ergebnis::Status::Abgebrochen);
        EXPECT_EQ(test::Verlauf(skript), antworten.size() == 1 ? FrageEinlesen : FrageEinlesen + FrageWirklich);
        EXPECT_EQ(Abbild(konfig), vorher);
    }
    SkriptOberfläche ja({Antwort::Ja, Antwort::Ja});
    const Ergebnis einlesen = KonfigEinlesen(konfig, zip, ja);
    ASSERT_TRUE(einlesen) << einlesen.Meldung();
    EXPECT_EQ(test::Verlauf(ja), FrageEinlesen + FrageWirklich);
    auto erwartet = original;
    erwartet["neu.dat"] = "bleibt"; // unpacked over the folder: other files stay
    EXPECT_EQ(Abbild(konfig), erwartet);
}

// unzip, a program we did not write, lists every file with its relative path and unpacks the
// same folder.
TEST_F(KonfigSicherungTest, UnzipLiestDasArchiv) {
    if (!test::ImSuchpfad("unzip"))
        GTEST_SKIP() << "unzip fehlt: das Archiv wird nicht unabhängig geprüft";
    SkriptOberfläche ui;
    ASSERT_TRUE(KonfigSichern(konfig, zip, ui));
    std::string namen;
    for (const auto& [name, inhalt] : original)
        namen += name + (inhalt == "<Ordner>" ? "/\n" : "\n");
    EXPECT_EQ(test::Ausführen("unzip -Z1 " + test::Wort(zip) + " | LC_ALL=C sort").ausgabe, namen);
    const fs::path aus = ordner / "ausgepackt";
    const auto auspacken = test::Ausführen("unzip -q " + test::Wort(zip) + " -d " + test::Wort(aus) + " 2>&1");
    ASSERT_EQ(auspacken.status, 0) << auspacken.ausgabe;
    EXPECT_EQ(Abbild(aus), original);
}

TEST_F(KonfigSicherungTest, VorhandeneDateiNurNachJaÜberschrieben) {
    DateiSchreiben(zip, "alte Sicherung");
    const std::string frage = "Frage [Flurix] \"Datei schon vorhanden! Überschreiben?   \"\n";
    SkriptOberfläche nein({Antwort::Nein});
    EXPECT_EQ(KonfigSichern(konfig, zip, nein).status(), Ergebnis::Status::Abgebrochen);
    EXPECT_EQ(test::Verlauf(nein), frage);
    EXPECT_EQ(DateiLesen(zip), "alte Sicherung");
    EXPECT_EQ(Einträge(ordner.pfad()), 2u); // nothing else written
    SkriptOberfläche ja({Antwort::Ja});
    ASSERT_TRUE(KonfigSichern(konfig, zip, ja));
    EXPECT_EQ(ja.Fragen().size(), 1u);
    EXPECT_TRUE(DateiLesen(zip).starts_with("PK\x03\x04"));

    // The archive may lie in the folder it saves: it must not hold itself or its temporary file.
    const fs::path innen = konfig / "sicherung.zip";
    SkriptOberfläche ui;
    ASSERT_TRUE(KonfigSichern(konfig, innen, ui));
    ASSERT_TRUE(KonfigSichern(konfig, innen, ui)); // the second time it exists already
    const fs::path zurück = ordner / "zurück";
    fs::create_directories(zurück);
    ASSERT_TRUE(KonfigEinlesen(zurück, innen, ui));
    EXPECT_EQ(Abbild(zurück), original);
}

TEST_F(KonfigSicherungTest, FeindlicheUndUnbrauchbareArchiveÄndernNichts) {
    // Each hostile archive first holds a good entry that would change Flurix.dat: it must not be
    // written either, as the whole archive is checked before anything is replaced.
    const fs::path draußen = ordner / "draussen.txt";
    std::vector<std::pair<fs::path, std::string>> fälle; // archive, message
    for (const std::string& name : {"../draussen.txt"s, "Unterordner/../../draussen.txt"s, "..\\draussen.txt"s,
                                   draußen.string(), "C:/draussen.txt"s, "\\draussen.txt"s, ".."s, ""s}) {
        fälle.emplace_back(ordner / ("böse" + std::to_string(fälle.size()) + ".zip"), Zusammenstellen);
        ArchivBauen(fälle.back().first, {{"Flurix.dat", "überschrieben"}, {name, "böse"}});
    }
    const fs::path beschädigt = ordner / "beschaedigt.zip";
    ArchivBauen(beschädigt, {{"Flurix.dat", "neu"}, {"ALKIS_Zuordnung.dat", "Inhalt, der verdorben wird"}}, true);
    std::string bytes = DateiLesen(beschädigt);
    ASSERT_NE(bytes.find("verdorben"), std::string::npos);
    bytes[bytes.find("verdorben")] = 'V'; // the CRC no longer fits
    DateiSchreiben(beschädigt, bytes);
    const fs::path konflikt = ordner / "konflikt.zip"; // "Flurix.dat" is a file, not a folder
    ArchivBauen(konflikt, {{"leer.dat", "neu"}, {"Flurix.dat/innen.txt", "x"}});
    DateiSchreiben(ordner / "text.zip", "Das ist kein Zip-Archiv.");
    DateiSchreiben(ordner / "leer.zip", "");
    fälle.insert(fälle.end(), {{ordner / "fehlt.zip", Öffnen}, {ordner / "text.zip", Öffnen},
                               {ordner / "leer.zip", Öffnen}, {beschädigt, Zusammenstellen},
                               {konflikt, Zusammenstellen}});
    for (const auto& [archiv, meldung] : fälle) {
        SCOPED_TRACE(archiv);
        SkriptOberfläche ui({Antwort::Ja, Antwort::Ja});
        const Ergebnis e = KonfigEinlesen(konfig, archiv, ui);
        EXPECT_EQ(e.status(), Ergebnis::Status::Fehler);
        EXPECT_EQ(e.Meldung(), meldung);
        EXPECT_EQ(test::Verlauf(ui), FrageEinlesen + FrageWirklich + "Meldung [Flurix] " + test::Zitat(meldung) + "\n");
        EXPECT_EQ(Abbild(konfig), original);
        EXPECT_FALSE(fs::exists(draußen));
    }

    // Archives from Windows: "\" separates folders, "./" may stand in front.
    ArchivBauen(zip, {{"Unterordner\\Größe.dat", "aus Windows"}, {"./Flurix.dat", "mit Punkt"}});
    SkriptOberfläche ui;
    ASSERT_TRUE(KonfigEinlesen(konfig, zip, ui));
    EXPECT_EQ(DateiLesen(konfig / "Unterordner" / "Größe.dat"), "aus Windows");
    EXPECT_EQ(DateiLesen(konfig / "Flurix.dat"), "mit Punkt");
}

TEST_F(KonfigSicherungTest, FehlerBeimSichernLassenAlteSicherungStehen) {
    DateiSchreiben(zip, "alte Sicherung");
    fs::create_directories(ordner / "leer");
    const std::tuple<fs::path, fs::path, std::string> fälle[] = {
        {konfig, ordner / "fehlt" / "neu.zip", "Fehler beim Zip-Datei erstellen!   "},
        {ordner / "gibtsnicht", zip, Zusammenstellen},
        {ordner / "leer", zip, Zusammenstellen},
    };
    for (const auto& [konfigordner, zipdatei, meldung] : fälle) {
        SkriptOberfläche ui({Antwort::Ja});
        EXPECT_EQ(KonfigSichern(konfigordner, zipdatei, ui).status(), Ergebnis::Status::Fehler);
        EXPECT_EQ(ui.Meldungen(), Texte{meldung}) << zipdatei;
        EXPECT_FALSE(fs::exists(ordner / "fehlt"));
        EXPECT_EQ(DateiLesen(zip), "alte Sicherung");
        EXPECT_EQ(Einträge(ordner.pfad()), 3u); // no temporary archive left behind
    }
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
        EXPECT_EQ(test::Verlauf(ohne),
                  "Meldung [Änderungen an den Systemdateien nicht möglich!] " + test::Zitat(text) + "\n");
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
    const auto meldung = test::FehlerText([&] { KonfigDateiSichern(ordner / "fehlt.dat", "1"); });
    EXPECT_NE(meldung.find("fehlt.dat"), std::string::npos) << meldung;
}

} // namespace
} // namespace flurix
