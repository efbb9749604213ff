#include "import/wldge_schnell.hpp"

#include "core/katalog.hpp"
#include "core/text.hpp"
#include "gemeinsam/lesefixture.hpp"

#include <map>

namespace flurix::import {
namespace {

using test::Datei;
using test::Kopf;
using test::Satz;

constexpr std::string_view Fkz42 = "051234-001-00042/000";
constexpr std::string_view Fkz43 = "051234-001-00043/001";

// Block 2 of format 32: the owner lines of one owner (" 1" at 26, a name number with "." at 32,
// 35 and 41, the line number at 48 and the text from 49).
std::vector<std::string> Eigentümer32(std::string_view bestand, std::string_view name,
                                      std::string_view zusatz, std::string_view straße,
                                      std::string_view ort) {
    std::vector<std::string> zeilen;
    const std::string_view texte[] = {"", name, zusatz, straße, ort};
    for (char nr = '0'; nr <= '4'; ++nr)
        zeilen.push_back(Satz('2', bestand, '1')
                             .Setze(28, "0001.00.00000.00")
                             .Setze(48, std::string(1, nr))
                             .Setze(49, texte[nr - '0'])
                             .Text());
    return zeilen;
}

std::string Bemerkung32(std::string_view bestand, std::string_view text) {
    return Satz('2', bestand, '2').Setze(31, "01").Setze(34, text).Text();
}

// A booking line of block 2: Bestand key, BVNR at 16, Buchungsart at 26, the parcel at 31.
std::string Buchung32(std::string_view bestand, std::string_view fkz, std::string_view bvnr) {
    return Satz('2', bestand, '0').Setze(16, bvnr).Setze(26, "1").Setze(31, std::string(fkz) + ".00").Text();
}

// A parcel line of block 3 (format 32) or 4 (format 35).
Satz Flurstück(char block, std::string_view fkz, char art) {
    return Satz(block, fkz, art).Setze(22, ".00");
}
std::string FlurstückB(char block, std::string_view fkz, std::string_view fläche) {
    return Flurstück(block, fkz, 'B').Setze(25, "A").Setze(84, fläche).Setze(95, "07").Text();
}

// Blocks 7 and 8: Katasteramt, the place of Gemarkung 051234 with its Kreis and Gemeinde, two
// streets and the court.
std::vector<std::string> Schlüsseltexte() {
    return {Satz('7', "0512", 'A').Setze(28, "00").Setze(57, "Katasteramt Musterkreis").Text(),
            Satz('7', "051234", 'B').Setze(9, "05123000").Setze(22, "0815").Setze(28, "09").Setze(30, "Musterstadt").Text(),
            Satz('7', "05123", 'C').Setze(28, "09").Setze(30, "Landkreis Muster").Text(),
            Satz('7', "05123000", 'D').Setze(28, "09").Setze(30, "Stadt Muster").Text(),
            Satz('7', "05123000", 'E').Setze(14, "00100").Setze(28, "09").Setze(30, "Musterweg").Text(),
            Satz('7', "05123000", 'E').Setze(14, "00200").Setze(28, "09").Setze(30, "Lindenallee").Text(),
            Satz('8', "0815", 'A').Setze(28, "0").Setze(30, "Amtsgericht Musterstadt").Text()};
}

// A format-32 file: two owners with a remark on folio 000123, booking parcel 42, whose lines are
// `flurstück`.
std::vector<std::string> ZweiEigentümer(const std::vector<std::string>& flurstück) {
    std::vector<std::string> zeilen{Kopf("32")};
    for (auto& z : Eigentümer32("051234-000123", "Mustermann,Erika", "geb. Beispiel", "Musterweg 3", "12345 Musterstadt"))
        zeilen.push_back(z);
    for (auto& z : Eigentümer32("051234-000123", ",,,Dr.", "", "Postfach 1", "12346 Nordstadt"))
        zeilen.push_back(z);
    zeilen.push_back(Bemerkung32("051234-000123", "Gütergemeinschaft"));
    zeilen.push_back(Buchung32("051234-000123", Fkz42, "0004"));
    zeilen.insert(zeilen.end(), flurstück.begin(), flurstück.end());
    for (auto& z : Schlüsseltexte())
        zeilen.push_back(z);
    return zeilen;
}

class WldgeSchnellTest : public test::Lesefixture {
protected:
    Ergebnis Lesen(const std::vector<std::string>& zeilen) { return LesenText(Datei(zeilen)); }
    Ergebnis LesenText(const std::string& text) {
        return WldgeSchnellLesen(Schreiben("kreis.wldge", text), optionen, kataster, ui, &bericht);
    }
    WldgeSchnellBericht bericht;
};

TEST_F(WldgeSchnellTest, AlleEigentümerInEinerZeile) {
    optionen.alleEigentümerInEinerZeile = true;
    ASSERT_TRUE(Lesen(ZweiEigentümer({FlurstückB('3', Fkz42, "000000512")})));
    ASSERT_EQ(kataster.Zeilenzahl(), 1u);
    const std::map<std::string, std::string> erwartet = {
        {"Landkreis", "Landkreis Muster"}, {"Katasteramt", "Katasteramt Musterkreis"},
        {"Gemeinde", "Stadt Muster"}, {"Gemeindeschlüssel", "05123000"}, {"Gemarkung", "Musterstadt"},
        {"Gemarkungsschlüssel", "051234"}, {"Flur", "001"}, {"Amtsgericht", "Amtsgericht Musterstadt"},
        {"Amtsgerichtsschlüssel", "0815"}, {"Grundbuchbezirk", "1234"}, {"Grundbuchblatt", "00012; 00012"},
        {"BVNR", "0004"}, {"Buchungsart", "1"}, {"Flurstück", "00042/000"}, {"Fläche", "000000512"},
        {"Prüfzeichen", "00A"}, {"Aktualitätsnummer", "07"}, {"Eigentümerposition", "2"},
        {"Name", "Mustermann,Erika; Dr."}, {"Namenszusatz", "geb. Beispiel;"},
        {"Straße", "Musterweg 3; Postfach 1"}, {"Ort", "12345 Musterstadt; 12346 Nordstadt"},
        {"Eigentümerzusatz", "Gütergemeinschaft; Gütergemeinschaft"}, {"checkdruck", ""},
        {"Flurstückskennzeichen", ""}};
    for (const auto& [spalte, wert] : erwartet)
        EXPECT_EQ(Zelle(0, spalte), wert) << spalte;
    EXPECT_TRUE(ui.Meldungen().empty());
}

TEST_F(WldgeSchnellTest, EineZeileJeEigentümer) {
    ASSERT_TRUE(Lesen(ZweiEigentümer({FlurstückB('3', Fkz42, "000000512")})));
    EXPECT_EQ(Zeilen({"Eigentümerposition", "Name", "Namenszusatz", "Ort", "Eigentümerzusatz", "Grundbuchblatt",
                      "Flurstück", "Gemarkung"}),
              (std::vector<std::string>{
                  "1|Mustermann,Erika|geb. Beispiel|12345 Musterstadt|Gütergemeinschaft|00012|00042/000|Musterstadt",
                  "2|Dr.||12346 Nordstadt|Gütergemeinschaft|00012|00042/000|Musterstadt"}));
    EXPECT_EQ(ui.LetzterStatus(1), "2 Zeilen eingelesen  ");
    EXPECT_EQ(ui.LetzterStatus(4), "1 Flurstücke eingelesen, 2 Zeilen erzeugt  ");
}

TEST_F(WldgeSchnellTest, SatzartenDesFlurstücks) {
    optionen.alleEigentümerInEinerZeile = true;
    struct Fall {
        const char* name;
        std::string fläche;
        std::vector<Satz> zeilen;
        std::map<std::string, std::string> erwartet;
    };
    const auto G = [](std::string_view str, std::string_view nr, std::string_view buchst = "") {
        return Flurstück('3', Fkz42, 'G').Setze(43, str).Setze(49, nr).Setze(54, buchst);
    };
    const Fall fälle[] = {
        {"Kleinfläche", "000000000", {Flurstück('3', Fkz42, 'N').Setze(34, "Fläche 0,5")}, {{"Fläche", "00000.499"}}},
        {"Kleinfläche drei Zehntel", "000000000", {Flurstück('3', Fkz42, 'N').Setze(34, "0,3")}, {{"Fläche", "00000.3"}}},
        {"Fläche schon da", "000000512", {Flurstück('3', Fkz42, 'N').Setze(34, "0,5")}, {{"Fläche", "000000512"}}},
        {"gleiche Straße", "000000512", {G("00100", "0003"), G("00100", "0005", "a")},
         {{"Lagebezeichnung", "Musterweg 3,5a"}, {"Straßenschlüssel", "00100"}}},
        {"zwei Straßen", "000000512", {G("00100", "0003"), G("00200", "0000", "b")},
         {{"Lagebezeichnung", "Musterweg 3;Lindenallee b"}, {"Straßenschlüssel", "00100;00200"}}},
        {"unbekannte Straße", "000000512", {G("00999", "0012")}, {{"Lagebezeichnung", "12"}, {"Straßenschlüssel", "00999"}}},
        {"Koordinaten", "000000512", {Flurstück('3', Fkz42, 'D').Setze(72, "35001234").Setze(81, "00000000")},
         {{"Rechtswert", "3500123.4"}, {"Hochwert", ""}}},
        {"Lage", "000000512", {Flurstück('3', Fkz42, 'H').Setze(34, "  Am Feldrain"), Flurstück('3', Fkz42, 'H').Setze(34, "hinten")},
         {{"Lagebezeichnung", "Am Feldrain hinten"}}},
        {"Nutzung", "000000512", {Flurstück('3', Fkz42, 'K').Setze(34, "12-345 0000512"), Flurstück('3', Fkz42, 'K').Setze(34, "21-110 0000100")},
         {{"Nutzungsart", "12-345 0000512;21-110 0000100"}}},
        {"BOV", "000000512", {Flurstück('3', Fkz42, 'U').Setze(31, "12345 Flurbereinigung")},
         {{"sonstigesBOV", "Flurstück im BOV 12345 Flurbereinigung"}}},
        {"Semikolon wird Komma", "000000512", {Flurstück('3', Fkz42, 'H').Setze(34, "Hof; Scheune")},
         {{"Lagebezeichnung", "Hof, Scheune"}}},
        {"andere Satzart", "000000512", {Flurstück('3', Fkz42, 'X').Setze(34, "egal")}, {{"Lagebezeichnung", ""}}},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        std::vector<std::string> flurstück{FlurstückB('3', Fkz42, f.fläche)};
        for (const auto& z : f.zeilen)
            flurstück.push_back(z.Text());
        ASSERT_TRUE(Lesen(ZweiEigentümer(flurstück)));
        ASSERT_EQ(kataster.Zeilenzahl(), 1u);
        for (const auto& [spalte, wert] : f.erwartet)
            EXPECT_EQ(Zelle(0, spalte), wert) << spalte;
    }
    EXPECT_EQ(bericht.bov, 0); // the last case has none
}

TEST_F(WldgeSchnellTest, FlurstückAufZweiBlätternHatAlleEigentümerInEinerZeile) {
    optionen.alleEigentümerInEinerZeile = true;
    std::vector<std::string> zeilen = ZweiEigentümer({FlurstückB('3', Fkz42, "000000512")});
    std::vector<std::string> zweites;
    for (auto& z : Eigentümer32("051234-000456", "Gemeinde Musterstadt", "", "Rathausplatz 1", "12345 Musterstadt"))
        zweites.push_back(z);
    zweites.push_back(Buchung32("051234-000456", Fkz42, "0001"));
    zeilen.insert(zeilen.begin() + 1 + 10 + 1 + 1, zweites.begin(), zweites.end());
    ASSERT_TRUE(Lesen(zeilen));
    // BVNR: of the last booking.
    EXPECT_EQ(Zeilen({"Name", "Grundbuchblatt", "Eigentümerposition", "BVNR"}),
              std::vector<std::string>{"Mustermann,Erika; Dr.; Gemeinde Musterstadt|00012; 00012; 00045|3|0001"});
}

TEST_F(WldgeSchnellTest, EigentümerTexte) {
    optionen.alleEigentümerInEinerZeile = true;
    struct Fall {
        std::string name;
        bool umdrehen;
        std::string erwartet;
    };
    const Fall fälle[] = {
        {",,,Dr.", false, "Dr."},
        {"Muster,,Max", false, "Muster Max"}, // the blanks collapse when the rows are tidied
        {"Mustermann, Max", true, "Max Mustermann"},
        {"Mustermann, Max", false, "Mustermann, Max"},
        {".Firma: Muster GmbH", false, "Firma Muster GmbH"},
        {"Muster; Söhne", false, "Muster, Söhne"},
        {std::string(60, 'x'), false, std::string(52, 'x')},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        optionen.nameUmdrehen = f.umdrehen;
        std::vector<std::string> zeilen{Kopf("32")};
        for (auto& z : Eigentümer32("051234-000123", f.name, ":zusatz", "  Weg  1 ", "Ort"))
            zeilen.push_back(z);
        zeilen.push_back(Buchung32("051234-000123", Fkz42, "0001"));
        zeilen.push_back(FlurstückB('3', Fkz42, "000000512"));
        ASSERT_TRUE(Lesen(zeilen));
        EXPECT_EQ(Zelle(0, "Name"), f.erwartet);
        EXPECT_EQ(Zelle(0, "Namenszusatz"), "zusatz");
        EXPECT_EQ(Zelle(0, "Straße"), "Weg 1");
    }
}

TEST_F(WldgeSchnellTest, EigentümertabelleHatFünftausendPlätze) {
    for (const std::size_t anzahl : {HöchstzahlEigentümer, HöchstzahlEigentümer + 1}) {
        SCOPED_TRACE(anzahl);
        std::vector<std::string> zeilen{Kopf("32")};
        for (std::size_t e = 0; e < anzahl; ++e) {
            zeilen.push_back(Satz('2', "051234-000123", '1').Setze(28, "0001.00.00000.00").Setze(48, "0").Text());
            zeilen.push_back(Satz('2', "051234-000123", '1').Setze(28, "0001.00.00000.00").Setze(48, "1").Setze(49, "E" + std::to_string(e)).Text());
        }
        zeilen.push_back(Buchung32("051234-000123", Fkz42, "0001"));
        zeilen.push_back(FlurstückB('3', Fkz42, "000000512"));
        const std::size_t vorher = kataster.Zeilenzahl();
        const bool ok = static_cast<bool>(Lesen(zeilen));
        EXPECT_EQ(ok, anzahl == HöchstzahlEigentümer);
        if (ok) {
            EXPECT_EQ(kataster.Zeilenzahl(), HöchstzahlEigentümer);
            EXPECT_TRUE(ui.Meldungen().empty());
        } else {
            EXPECT_EQ(kataster.Zeilenzahl(), vorher); // the table stays as it was
            EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{
                "Der Bestand 051234-000123 hat mehr als 5000 Eigentümer (Zeile 10002)! Das schnelle "
                "Einlesen wird abgebrochen. Bitte wählen Sie [WLDGE-Daten komplett einlesen]!   "});
        }
    }
}

TEST_F(WldgeSchnellTest, Format35MitEigentümerzeilen) {
    const auto Z = [](std::string_view fkz, char unterteil, std::string_view text) {
        return Satz('4', fkz, 'Z').Setze(40, "00123").Setze(47, "0002").Setze(56, "1").Setze(57, "1")
            .Setze(77, std::string(1, unterteil)).Setze(78, text).Text();
    };
    std::vector<std::string> zeilen{Kopf("35"), FlurstückB('4', Fkz42, "000000512"),
                                    Flurstück('4', Fkz42, 'D').Setze(72, "00000000").Setze(81, "56001234").Text(),
                                    Z(Fkz42, '0', ""), Z(Fkz42, '1', "Mustermann, Erika"), Z(Fkz42, '4', "Musterstadt"),
                                    Z(Fkz42, '0', ""), Z(Fkz42, '1', "Mustermann, Max"), Z(Fkz42, '3', "Musterweg 3"),
                                    Satz('4', Fkz42, 'Z').Setze(57, "2").Setze(64, "Erbengemeinschaft").Text(),
                                    FlurstückB('4', Fkz43, "000000100")};
    for (auto& z : Schlüsseltexte())
        zeilen.push_back(z);
    optionen.nameUmdrehen = true;
    ASSERT_TRUE(Lesen(zeilen));
    EXPECT_EQ(Zeilen({"Flurstück", "Eigentümerposition", "Name", "Ort", "Straße", "Eigentümerzusatz", "Grundbuchblatt"}),
              (std::vector<std::string>{"00042/000|1|Erika Mustermann|Musterstadt||Erbengemeinschaft|123",
                                        "00042/000|2|Max Mustermann||Musterweg 3|Erbengemeinschaft|123",
                                        "00043/001||||||"}));
    EXPECT_EQ(Zelle(0, "Rechtswert"), ""); // format 35 keeps a coordinate of 0 out
    EXPECT_EQ(Zelle(0, "Hochwert"), "5600123.4");
    EXPECT_EQ(Zelle(0, "Amtsgericht"), "Amtsgericht Musterstadt");
    EXPECT_EQ(Zelle(0, "BVNR"), "0002");
    EXPECT_EQ(ui.LetzterStatus(4), "3 Zeilen erzeugt  ");
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{
        "In der ALB-Datei wurde(n) 1 Flurstück(e) ohne Eigentümer vorgefunden!   "});
}

TEST_F(WldgeSchnellTest, FortschrittUndFesteAnsicht) {
    optionen.alleEigentümerInEinerZeile = true;
    std::vector<std::string> flurstück{FlurstückB('3', Fkz42, "000000512"),
                                       Flurstück('3', Fkz42, 'U').Setze(31, "1 BOV").Text()};
    ASSERT_TRUE(Lesen(ZweiEigentümer(flurstück)));
    const auto status = ui.Texte(Ereignis::Art::Status);
    std::vector<std::string> stufen;
    for (const auto& s : status)
        if (s.find(" eingelesen  ") != std::string::npos && (stufen.empty() || stufen.back().substr(0, 3) != s.substr(0, 3)))
            stufen.push_back(s);
    // Stages with a percent show it at every 20th item: no parcel line is one here.
    EXPECT_EQ(stufen, (std::vector<std::string>{"14% eingelesen  ", "28%/0% eingelesen  ", "43% eingelesen  ",
                                                "85%/0% eingelesen  ", "95%/0% eingelesen  ",
                                                "100% eingelesen  ", "1 Zeilen eingelesen  "}));
    EXPECT_EQ(ui.LetzterStatus(3), "1 Flurstücke befinden sich in einem BOV  ");
    EXPECT_EQ(ui.LetzterStatus(2), "kreis.wldge");
    // the fixed view: its keys in its order, the key the table hasn't passed over
    std::vector<std::string> gezeigt;
    for (std::size_t s : kataster.Anzeigereihenfolge())
        if (kataster.Spalte(s).sichtbar)
            gezeigt.push_back(kataster.Spalte(s).schlüssel);
    std::vector<std::string> ansicht;
    for (auto teil : Teilen(SchnellimportAnsicht, ';'))
        if (teil != "Straßenschlüsselname")
            ansicht.emplace_back(teil);
    EXPECT_EQ(gezeigt, ansicht);
}

TEST_F(WldgeSchnellTest, MeldungenOhneDaten) {
    struct Fall {
        const char* name;
        std::vector<std::string> zeilen;
        std::string meldung;
    };
    // A parcel line without the "." of a parcel start: counted, but not read.
    const Fall fälle[] = {
        {"ohne Flurstück", {Kopf("32"), Satz('7', "0512", 'A').Text()}, "In der ALB-Datei wurden keine Flurstücke vorgefunden!   "},
        {"leere Datei", {}, "In der ALB-Datei wurden keine Flurstücke vorgefunden!   "},
        {"fremdes Format", {Kopf("32"), Satz('3', Fkz42, 'B').Setze(84, "000000512").Text()}, "In der ALB-Datei wurden keine Daten vorgefunden!   "},
        {"Format 34", {Kopf("34"), FlurstückB('3', Fkz42, "000000512")}, "In der ALB-Datei wurden keine Daten vorgefunden!   "},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        const std::size_t vorher = ui.Meldungen().size();
        EXPECT_FALSE(Lesen(f.zeilen));
        ASSERT_EQ(ui.Meldungen().size(), vorher + 1);
        EXPECT_EQ(ui.Meldungen().back(), f.meldung);
        EXPECT_EQ(ui.Ereignisse().back().titel, "Flurix");
        EXPECT_EQ(kataster.Spaltenzahl(), 0u);
    }
}

TEST_F(WldgeSchnellTest, AbgeschnitteneUndFremdeZeilenStürzenNichtAb) {
    optionen.alleEigentümerInEinerZeile = true;
    const std::vector<std::string> ganz = ZweiEigentümer(
        {FlurstückB('3', Fkz42, "000000000"),
         Flurstück('3', Fkz42, 'G').Setze(43, "00100").Setze(49, "0003").Setze(54, "a").Text(),
         Flurstück('3', Fkz42, 'D').Setze(72, "35001234").Setze(81, "56001234").Text(),
         Flurstück('3', Fkz42, 'N').Setze(34, "0,5").Text()});
    // Every line cut at every length, one at a time.
    for (std::size_t z = 1; z < ganz.size(); ++z)
        for (std::size_t länge = 0; länge < ganz[z].size(); länge += 3) {
            auto zeilen = ganz;
            zeilen[z].resize(länge);
            kataster.Leeren();
            Lesen(zeilen);
            EXPECT_LE(kataster.Zeilenzahl(), 2u);
        }
    // Bytes of another code page and control bytes.
    std::string fremd = Datei(ganz);
    for (std::size_t i = 40; i < fremd.size(); i += 37)
        fremd[i] = static_cast<char>(0x80 + i % 128);
    for (const std::string& text : {fremd, std::string("1\x00\xff\r\n3\x1a", 7)}) {
        EXPECT_NO_THROW(LesenText(text));
    }
}

} // namespace
} // namespace flurix::import
