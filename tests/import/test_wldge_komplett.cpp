#include "import/wldge_komplett.hpp"

#include "gemeinsam/lesefixture.hpp"

#include <algorithm>
#include <map>

namespace flurix::import {
namespace {

using test::Kopf;
using test::Satz;

// Owner lines of block 2: a new owner with its name, birth date, street and town.
std::vector<std::string> Eigentümer(std::string_view bestand, std::string_view position, char anrede,
                                    std::string_view name, std::string_view ort) {
    const auto zeile = [&](char nr) { return Satz('2', bestand, '1').Setze(28, position).Setze(48, std::string(1, nr)); };
    return {zeile('0').Setze(45, std::string(1, anrede)).Setze(50, "01").Setze(53, "1/2").Text(),
            zeile('1').Setze(49, name).Text(), zeile('2').Setze(49, "geb. Muster").Setze(91, "12.08.1964").Text(),
            zeile('3').Setze(49, "Musterweg  3").Text(), zeile('4').Setze(49, ort).Text()};
}

std::string Flurstück(std::string_view zähler = "00042") {
    return Satz('3', "051234-001-" + std::string(zähler) + "/000", 'B')
        .Setze(25, "A").Setze(34, "2001/00123-00").Setze(84, "000000512").Setze(95, "07").Text();
}
Satz Zeile3(char art) { return Satz('3', "051234-001-00042/000", art); }

std::string Buchung(std::string_view blatt, std::string_view bvnr) {
    return Zeile3('X').Setze(33, "051234-" + std::string(blatt)).Setze(47, bvnr).Setze(56, "1").Text();
}

const std::string Schluss = Satz('9', "", 'Z').Setze(30, "0000010").Setze(37, "0000001").Setze(44, "0000001").Text();

// A format-32 file: the header, the given owners, parcel 42 and its bookings, and `rest`.
std::vector<std::string> Datei(std::vector<std::vector<std::string>> eigentümer, std::vector<std::string> rest) {
    std::vector<std::string> zeilen{Kopf("32")};
    for (const auto& e : eigentümer)
        zeilen.insert(zeilen.end(), e.begin(), e.end());
    zeilen.push_back(Flurstück());
    zeilen.insert(zeilen.end(), rest.begin(), rest.end());
    return zeilen;
}

class WldgeKomplettTest : public test::Lesefixture {
protected:
    Ergebnis Lesen(const std::vector<std::string>& zeilen) {
        umgebung.arbeitsverzeichnis = ordner.pfad();
        return WldgeKomplettLesen(Schreiben("kreis.wldge", test::Datei(zeilen)), optionen, umgebung, kataster, ui, &bericht);
    }
    WldgeKomplettUmgebung umgebung;
    WldgeKomplettBericht bericht;
};

TEST_F(WldgeKomplettTest, FlurstückMitZweiEigentümernGibtZweiZeilen) {
    ASSERT_TRUE(Lesen(Datei({Eigentümer("051234-000123", "0001.00", '1', "Mustermann, Max, , Dr.", "Musterstadt"),
                             Eigentümer("051234-000123", "0002.00", '2', "Mustermann, Erika, Dr.", "Nordstadt")},
                            {Buchung("000123", "0001"), Schluss})));
    // Two commas: the name stays as it stands; ids grow by two.
    EXPECT_EQ(Zeilen({"Flurstück", "Fläche", "Eigentümerposition", "Name", "Anredekennung", "Namenszusatz", "Ort",
                      "Land", "Land_aus_Bestandsdaten", "IDlfd_Nr_aus_Bestandsdaten", "Grundbuchblatt", "checkdruck"}),
              (std::vector<std::string>{
                  "00042/000|000000512|0001|Dr. Mustermann, Max|Herrn|geb. Muster 12.08.1964|Musterstadt|05|05|2|000123|",
                  "00042/000|000000512|0002|Mustermann, Erika, Dr.|Frau|geb. Muster 12.08.1964|Nordstadt|05|05|4|000123|"}));
    EXPECT_EQ(bericht.flurstücke + "/" + bericht.bestände, "1/1");
    EXPECT_EQ(ui.LetzterStatus(4), "ALB-Zeilen: 2, Flurstücke: 1, Bestände: 1   ");
    EXPECT_EQ(ui.LetzterStatus(3), "Datenbank wurde erstellt   ");
    EXPECT_FALSE(std::filesystem::exists(ordner / "tmp_flurix"));
    EXPECT_TRUE(ui.Meldungen().empty());
}

TEST_F(WldgeKomplettTest, NamenUmdrehenUndFlurstückAufZweiBlättern) {
    optionen.nameUmdrehen = true;
    ASSERT_TRUE(Lesen(Datei({Eigentümer("051234-000123", "0001.00", '1', "Mustermann, Max, , Dr.", "A"),
                             Eigentümer("051234-000456", "0001.00", '3', "Muster GmbH", "B")},
                            {Zeile3('G').Setze(31, "051234000001").Setze(43, "00100").Setze(49, "3").Text(),
                             Buchung("000123", "0001"), Buchung("000456", "0002")})));
    // The copy for the second sheet carries the parcel data and the next id.
    auto zeilen = Zeilen({"Grundbuchblatt", "Name", "BVNR", "Hausnummer", "IDlfd_Nr", "Anredekennung"});
    std::sort(zeilen.begin(), zeilen.end());
    EXPECT_EQ(zeilen, (std::vector<std::string>{"000123|Dr. Max Mustermann|0001|3|1|Herrn",
                                                "000456|Muster GmbH|0002|3|2|Firma"}));
    EXPECT_EQ(bericht.flurstücke, "0"); // no trailer
}

TEST_F(WldgeKomplettTest, SchlüsseltexteDerBlöckeSiebenBisNeun) {
    ASSERT_TRUE(Lesen(Datei(
        {Eigentümer("051234-000123", "0001.00", '1', "Muster, Max, , ", "A"),
         {Satz('2', "051234-000123", '2').Setze(31, "01").Setze(34, "Erben, Erbengemeinschaft").Text(),
          Satz('2', "051234-000123", '8').Setze(31, "01").Setze(34, "Keller O'Brien").Text()}},
        {Zeile3('G').Setze(31, "051234000001").Setze(43, "00100").Text(),
         Zeile3('G').Setze(31, "051234000001").Setze(43, "00200").Text(),
         Zeile3('K').Setze(34, "12-345 0000512").Setze(41, "0000512").Text(),
         Zeile3('M').Setze(34, "32-101 0000500").Setze(41, "0000500").Setze(49, "L 4 V").Setze(60, "045").Setze(64, "050").Text(),
         Zeile3('M').Setze(34, "51-000 0000012").Setze(41, "0000012").Text(), Zeile3('Q').Text(),
         Buchung("000123", "0001"),
         Satz('7', "0512", 'A').Setze(28, "00").Setze(30, "Katasteramt").Setze(57, "Musterkreis").Text(),
         Satz('7', "051234", 'B').Setze(9, "051234000001").Setze(22, "0815").Setze(30, "Musterstadt").Text(),
         Satz('7', "051234000001", 'D').Setze(30, "Gemeinde Muster").Text(),
         Satz('7', "05123400000100100", 'E').Setze(28, "00").Setze(30, "Haupt").Text(),
         Satz('7', "05123400000100100", 'E').Setze(28, "09").Setze(30, "straße").Text(),
         Satz('8', "0815", 'A').Setze(28, "0").Setze(30, "Amtsgericht").Setze(57, "Musterstadt").Text(),
         Satz('9', "12345", 'D').Setze(30, "Wohnbaufläche").Text(), Schluss})));
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{"Satzart Q im Flurstück, Satzart 3, nicht "
                                                       "definiert! Zeile wird übersprungen!   "});
    ASSERT_EQ(kataster.Zeilenzahl(), 1u);
    // A quote makes the statement of Sondereigentum fail; a blank remark keeps its place.
    const std::map<std::string, std::string> erwartet = {
        {"Eigentümerzusatz", "Erben Erbengemeinschaft"}, {"Sondereigentum", ""},
        {"Katasteramt", "Katasteramt Musterkreis"}, {"Gemarkung", "Musterstadt"}, {"Gemarkungsschlüssel", "051234"},
        {"Gemeinde", "Gemeinde Muster"}, {"Amtsgericht", "Amtsgericht Musterstadt"},
        {"Straßenschlüssel", "00100; 00200"}, {"Straßenschlüsselname", "Hauptstraße; "}, {"Hausnummer", "ohne, ohne"},
        {"Nutzungsart", "12-345 0000512"}, {"Nutzung_tatsächlich", "Wohnbaufläche"},
        {"Klassifizierung", "32-101 0000500; 51-000 0000012"}, {"BZ", "45; 0"}, {"AZ", "50; 0"}, {"EMZ", "250; 0"},
        {"EMZ-Summe", "250"}, {"AZ-Mittel", "50"}, {"BZ-AZ-Fläche", "500; 12"},
        {"Angaben_Klassifizierung", "L 4 V 045 050;  "}, {"Schätzung", "L 4 V;  "}};
    for (const auto& [spalte, wert] : erwartet)
        EXPECT_EQ(Zelle(0, spalte), wert) << spalte;
}

TEST_F(WldgeKomplettTest, GleicherEigentümerschlüsselGehtOhneMeldungVerloren) {
    ASSERT_TRUE(Lesen(Datei({Eigentümer("051234-000123", "0001.00", '1', "Erster", "A"),
                             Eigentümer("051234-000123", "0001.00", '1', "Zweiter", "B")},
                            {Buchung("000123", "0001")})));
    EXPECT_EQ(Zeilen({"Name", "Ort"}), std::vector<std::string>{"Erster|A"});
    EXPECT_TRUE(ui.Meldungen().empty());
}

TEST_F(WldgeKomplettTest, NutzungstexteNachBlockNeunWennNichtVollständig) {
    // With the option off, the key texts of block 9 are appended in their own order.
    const auto zeilen = Datei({Eigentümer("051234-000123", "0001.00", '1', "Muster", "A")},
                              {Zeile3('K').Setze(34, "21-110 0000100").Text(), Zeile3('K').Setze(34, "12-345 0000412").Text(),
                               Buchung("000123", "0001"), Satz('9', "12345", 'D').Setze(30, "Wohnbaufläche").Text(),
                               Satz('9', "21110", 'D').Setze(30, "Ackerland").Text()});
    for (const auto& [vollständig, text] : {std::pair{false, "Wohnbaufläche; Ackerland; "},
                                            std::pair{true, "Ackerland; Wohnbaufläche"}}) {
        optionen.nutzungTatsächlich = vollständig;
        ASSERT_TRUE(Lesen(zeilen));
        EXPECT_EQ(Zeilen({"Nutzung_tatsächlich"}), std::vector<std::string>{text});
    }
}

TEST_F(WldgeKomplettTest, MeldungenOhneOderMitÜbersprungenenDaten) {
    struct Fall {
        const char* name;
        std::vector<std::string> zeilen;
        bool ok;
        std::string meldung, titel;
    };
    const Fall fälle[] = {
        // A folder of that name can't be deleted, as a database another instance holds open.
        {"belegt", {Kopf("32")}, false,
         "Fehler: [Flurix doppelt geöffnet]! Bitte beenden Sie den Flurix oder wählen Sie "
         "[WLDGE-Daten teilweise einlesen - schnell]!   ", "Achtung Fehler!"},
        {"Format 35", {Kopf("35"), Flurstück()}, false,
         "WLDGE-Daten mit dem Anforderungssatz 35 werden z.Z. nicht eingelesen!   ", ""},
        {"Satzart 7", {Kopf("32"), Satz('2', "051234-000123", '7').Text()}, true,
         "Satzart 7 im Bestand, Satzart 2, nicht definiert! Zeile wird übersprungen!   ", ""},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        if (f.name == std::string("belegt"))
            test::DateiSchreiben(ordner / "tmp_flurix" / "belegt", "x");
        else
            std::filesystem::remove_all(ordner / "tmp_flurix");
        const std::size_t vorher = ui.Meldungen().size();
        EXPECT_EQ(static_cast<bool>(Lesen(f.zeilen)), f.ok);
        ASSERT_EQ(ui.Meldungen().size(), vorher + 1);
        EXPECT_EQ(ui.Meldungen().back(), f.meldung);
        if (!f.titel.empty()) {
            EXPECT_EQ(ui.Ereignisse().back().titel, f.titel);
        }
        if (!f.ok) {
            EXPECT_EQ(kataster.Zeilenzahl(), 0u);
        }
    }
}

} // namespace
} // namespace flurix::import
