#include "nas/konfig_suche.hpp"

#include "core/cp1252.hpp"
#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <filesystem>

#include <string>
#include <string_view>

namespace flurix::nas {
namespace {

// ALKIS_EPSG.dat as shipped: CR LF, one line with LF only, a comment, a tab.
std::string EpsgText() {
    return test::DateiLesen(test::Testdaten() / "nas" / "konfig_epsg_mit_kommentar_tab_und_lf.dat");
}

TEST(KonfigWert, SchlüsselDerZeileMussImGesuchtenSchlüsselStehen) {
    struct Fall {
        int schlüsselSpalte;
        std::string_view schlüssel;
        int wertSpalte;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {1, "urn:adv:crs:ETRS89_UTM32", 2, "25832_32"}, // the line with "*" is passed over
        {1, "ETRS89_UTM32", 2, "25832_32"},
        {1, "urn:adv:crs:ETRS89_UTM33", 2, "25833_33"}, // LF line, no CR in the value
        {1, "urn:adv:crs:DE_DHDN_3GK3", 2, "31467_3"},  // tabs removed
        {2, "25833_33", 1, "ETRS89_UTM33"},             // the other way round
        {1, "TM32", 2, ""},                             // a key inside the line's key is no hit
        {1, "DE_DHDN_3GK4", 2, ""},
        {1, "urn:adv:crs:ETRS89_UTM99", 2, "0000_0"}, // "UTM" stands in it
        {1, "urn:adv:crs:etrs89_utm32", 2, ""},       // case counts
        {1, "", 2, ""},
        {1, "ETRS89_UTM32", 3, ""}, // missing value column
    };
    for (const auto& f : fälle) {
        EXPECT_EQ(KonfigWert(f.schlüsselSpalte, f.schlüssel, "=", f.wertSpalte, EpsgText()),
                  f.erwartet)
            << f.schlüssel;
    }
}

TEST(KonfigWert, ErsteTrefferzeileGiltAuchWennSieKürzerIst) {
    // "UTM" stands in every UTM key: the line that comes first wins.
    const std::string_view text = "UTM=allgemein\r\nETRS89_UTM32=25832_32\r\n";
    EXPECT_EQ(KonfigWert(1, "urn:adv:crs:ETRS89_UTM32", "=", 2, text), "allgemein");
    EXPECT_EQ(KonfigWert(1, "DE_DHDN_3GK3", "=", 2, text), "");
    EXPECT_EQ(KonfigWert(1, "x", "=", 2, ""), "");
}

// Value kinds with comments, a tab, an LF line and keys that only begin alike.
std::string WerteartText() {
    return test::DateiLesen(test::Testdaten() / "nas" / "konfig_werteart_mit_kommentaren.dat");
}

TEST(KonfigWerteListe, WasHinterDemSchlüsselStehtMitSemikolon) {
    struct Fall {
        std::string_view schlüssel;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"AX_Person = anrede", "1000 = Frau;2000 = Herr;3000 = Firma"},
        {"AX_Buchungsblatt = blattart", "1000 = Grundbuchblatt;5000 = Fiktives Blatt"},
        {"AX_Person = anred", ""},  // only the beginning of a name
        {"ax_person = anrede", ""}, // case counts
        {"AX_Namensnummer = eigentuemerart", ""},
        {"", ""},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(KonfigWerteListe(f.schlüssel, WerteartText()), f.erwartet) << f.schlüssel;

    EXPECT_EQ(
        KonfigWerteListe("AX_Person = anrede",
                         "AX_Person = anrede = 1000 = Frau\r\nAX_Person = anrede = 2000 = Herr"),
        "1000 = Frau;2000 = Herr");
}

TEST(KonfigWerteListe, ZeilenEinesSchlüsselsDürfenGetrenntStehen) {
    const std::string_view text = "AX_Person = anrede = 1000 = Frau\r\n"
                                  "AX_Buchungsblatt = blattart = 1000 = Grundbuchblatt\r\n"
                                  "AX_Person = anrede = 2000 = Herr\r\n";
    EXPECT_EQ(KonfigWerteListe("AX_Person = anrede", text), "1000 = Frau;2000 = Herr");
}

TEST(KonfigZeile, SpaltenDerZeileDieMitDemSchlüsselBeginnt) {
    struct Fall {
        std::string_view schlüssel;
        std::string_view spalten;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"AX_Bodenschaetzung;bodenart;1200", "4", "S"}, // not the line of 12000
        {"AX_Bodenschaetzung;bodenart;12000", "4", "Xz"},
        {"AX_Bodenschaetzung;bodenart;2100", "4", "Sl"},          // LF line
        {"AX_Bodenschaetzung; bodenart ; 1200", "3;4", "1200;S"}, // blanks of the key removed
        {"AX_Bodenschaetzung;bodenart;1200", "4;1", "S;AX_Bodenschaetzung"},
        {"AX_Bodenschaetzung;bodenart;1200", "4;9", "S;"},
        {"AX_Bodenschaetzung;bodenart;120", "4", ""},
        {"AX_Bodenschaetzung;bodenart;3100", "4", ""}, // commented out
        {"ax_bodenschaetzung;bodenart;1200", "4", ""},
        {"AX_Bodenschaetzung;entstehungsartOderKlimastufeWasserverhaeltnisse;1000|2000", "4",
         "D / Al"},
        {"AX_Bodenschaetzung;entstehungsartOderKlimastufeWasserverhaeltnisse;1000|9999", "4", "D"},
        {"AX_Bodenschaetzung;entstehungsartOderKlimastufeWasserverhaeltnisse;9999|2000", "4",
         " / Al"},
        {"AX_Bodenschaetzung;entstehungsartOderKlimastufeWasserverhaeltnisse;9999|8888", "4", ""},
        {";7777;", "3;4", "Wald;Laubholz"}, // " = 7777 = ": the line from the hit on
        {"", "1", ""},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(KonfigZeile(f.schlüssel, f.spalten, "=", WerteartText()), f.erwartet)
            << f.schlüssel << " Spalten " << f.spalten;
}

TEST(KonfigZeile, ZweiZeilenMitSenkrechtemStrich) {
    const std::string_view text = "a = b = c = eins\r\nx = y\r\na = b = d = zwei\r\n";
    EXPECT_EQ(KonfigZeile("a;b;c|d", "4", "=", text), "eins / zwei");
    EXPECT_EQ(KonfigZeile("a;b;d|c", "4", "=", text), "zwei / eins");
    EXPECT_EQ(KonfigZeile("a;b;c", "4", "=", text), "eins");
    // Another separator makes another beginning of line.
    EXPECT_EQ(KonfigZeile("a;b;c", "3", "|", "a | b | c | drei\nb | c\n"), "c");
    EXPECT_EQ(KonfigZeile("b;c", "3", "|", "a | b | c | drei\nb | c\n"), "drei");
}

constexpr std::string_view GerichteText =
    "* Land = Bezirk = Amtsgericht = Sitz\r\n"
    "* 12 = 3001 = auskommentiert = x\r\n"
    "\r\n"
    "12 = 3001 = Amtsgericht Potsdam = Potsdam\r\n"
    "12 = 3002 = Amtsgericht Brandenburg = Brandenburg an der Havel\n"
    "11 = 3001 = Amtsgericht Mitte = Berlin\r\n"
    "11 = 3001 = zweiter Treffer = nie\r\n";

TEST(KonfigAuswahl, AlleSuchspaltenMüssenPassen) {
    struct Fall {
        std::string_view suchwerte;
        std::string_view suchspalten;
        std::string_view wertspalten;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"12;3001", "1;2", "3", "Amtsgericht Potsdam"},
        {"11;3001", "1;2", "3;4", "Amtsgericht Mitte;Berlin"}, // first match only
        {"3001;11", "2;1", "4", "Berlin"},
        {"3001", "2", "3", "Amtsgericht Potsdam"},
        {" 12 ; 3002 ", "1;2", "4", "Brandenburg an der Havel"},
        {"12;3003", "1;2", "3", ""},
        {"13;3001", "1;2", "3", ""},
        {"* 12;3001", "1;2", "3", ""}, // comment lines are passed over
        {"Amtsgericht Mitte", "3", "1;2;4", "11;3001;Berlin"},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(KonfigAuswahl(f.suchwerte, f.suchspalten, f.wertspalten, "=", GerichteText),
                  f.erwartet)
            << f.suchwerte;
    EXPECT_EQ(KonfigAuswahl("12", "1", "3", "=", ""), "");
}

TEST(KonfigSuche, MitgelieferteKonfigurationsdateien) {
    // The files an installation ships, read as the program reads them (Windows-1252 to UTF-8).
    const std::filesystem::path config = std::filesystem::path(FLURIX_QUELLEN) / "config";
    for (const char* name : {"ALKIS_EPSG.dat", "ALKIS_Werteart.dat"})
        if (!std::filesystem::exists(config / name))
            GTEST_SKIP() << "Konfigurationsdatei fehlt: " << (config / name).string();
    const std::string epsg = DateitextNachUtf8(test::DateiLesen(config / "ALKIS_EPSG.dat"));
    const std::string werteart = DateitextNachUtf8(test::DateiLesen(config / "ALKIS_Werteart.dat"));

    EXPECT_EQ(KonfigWert(1, "urn:adv:crs:ETRS89_UTM32", "=", 2, epsg), "25832_32");
    EXPECT_EQ(KonfigWert(1, "urn:adv:crs:DE_DHDN_3GK3_NW101", "=", 2, epsg), "31467_3");
    EXPECT_EQ(KonfigWert(1, "urn:adv:crs:ETRS89_Lat-Lon-h", "=", 2, epsg), "4937_0");
    EXPECT_EQ(KonfigWert(1, "urn:adv:crs:ETRS89_Lat-Lon", "=", 2, epsg), "4258_0");
    EXPECT_EQ(KonfigWert(2, "25833_33", "=", 1, epsg), "ETRS89_UTM33");
    EXPECT_TRUE(
        KonfigWerteListe("AX_Person = anrede", werteart).starts_with("1000 = Frau;2000 = Herr"))
        << KonfigWerteListe("AX_Person = anrede", werteart);
    EXPECT_EQ(KonfigZeile("AX_Bodenschaetzung;bodenart;1200", "4", "=", werteart), "Sl");
    EXPECT_EQ(
        KonfigZeile("AX_Bodenschaetzung;entstehungsartOderKlimastufeWasserverhaeltnisse;1000|1300",
                    "4", "=", werteart),
        "D / DV");
}

TEST(IdKennzeichnen, KleinbuchstabenBekommenEinHochkomma) {
    struct Fall {
        std::string_view wert;
        std::string_view attribut;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"DEBBAL4200001hHH", "gml:id", "DEBBAL4200001h'HH"},
        {"DEBBAL4200001HHH", "gml:id", "DEBBAL4200001HHH"},
        {"DEBBal42z", "istGebucht", "DEBBa'l'42z'"},
        {"DEBBAL4200001hHH", "gml:identifier", "DEBBAL4200001hHH"},
        {"DEBBAL4200001hHH", "IstGebucht", "DEBBAL4200001hHH"}, // the attribute is exact
        {"DEBBAL4200001hHH", "", "DEBBAL4200001hHH"},
        {"DEäöÜx", "zu", "DEäöÜx'"}, // only a..z are marked, other bytes stay
        {"", "gml:id", ""},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(IdKennzeichnen(f.wert, f.attribut), f.erwartet) << f.wert << " " << f.attribut;

    for (std::string_view attribut :
         {"istGebucht", "zeigtAuf", "weistAuf", "gml:id", "istBestandteilVon", "hat",
          "dientZurDarstellungVon", "benennt", "zu", "an", "istTeilVon",
          "zeigtAufExternes/AA_Fachdatenverbindung/fachdatenobjekt"})
        EXPECT_EQ(IdKennzeichnen("DEab1C", attribut), "DEa'b'1C") << attribut;
}

TEST(IdKennzeichnen, VerweisUndKennungTreffenSichOhneGroßKleinschreibung) {
    // The feature's own id and a reference to it in another feature.
    const std::string id = IdKennzeichnen("DEBBAL4200001hHH", "gml:id");
    const std::string_view href = "urn:adv:oid:DEBBAL4200001hHH";
    const std::string verweis = IdKennzeichnen(href.substr(href.rfind(':') + 1), "istGebucht");
    EXPECT_EQ(id, verweis);
    // Two ids that differ only in case differ still when case is ignored, as the database does.
    const std::string klein = IdKennzeichnen("DEBBAL42000abcD", "gml:id");
    const std::string groß = IdKennzeichnen("DEBBAL42000ABCD", "gml:id");
    EXPECT_NE(Kleinbuchstaben(klein), Kleinbuchstaben(groß));
}

TEST(Utf8Reparatur, DoppeltKodierteBuchstabenWerdenRepariert) {
    // Doubly encoded: the UTF-8 bytes of the letter read as Windows-1252 and encoded again.
    for (std::string_view buchstabe :
         {"ä", "Ä", "ö", "Ö", "ü", "Ü", "ß", "È", "É", "Ì", "Ò", "Ó",
          "Ù", "Ú", "á", "è", "é", "ì", "í", "ò", "ó", "ù", "ú", "ý"}) {
        const std::string doppelt = Cp1252NachUtf8(buchstabe);
        ASSERT_NE(doppelt, buchstabe);
        EXPECT_EQ(Utf8Reparatur(doppelt), buchstabe) << buchstabe;
    }
    const std::string_view wörter = "Müller, Größe: Straße; Übersee Ödland Äcker";
    EXPECT_EQ(Utf8Reparatur(Cp1252NachUtf8(wörter)), wörter);
    EXPECT_EQ(Utf8Reparatur("<bezeichnung>M\xC3\x83\xC2\xBCnchen</bezeichnung>"),
              "<bezeichnung>München</bezeichnung>");
}

TEST(Utf8Reparatur, EinzelnesAtildeWirdAgraveUndAcircFällt) {
    struct Fall {
        std::string_view text;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"Ã", "à"},
        {"xÃy", "xày"},
        {"Ã\xC2\xA0", "à\xC2\xA0"}, // à encoded twice: Ã + no-break space
        {"Â°", "°"},                // U+00A0..U+00BF encoded twice: Â + the character
        {"5 Â", "5 "},
        {"ÃÂ¤", "à¤"}, // removing Â makes no new pair
        {"ÃÃ¤", "àä"},
        {"Ã¤Ã", "äà"},
        {"ÃÍ", "àÍ"}, // Í is no letter of the repair
    };
    for (const auto& f : fälle)
        EXPECT_EQ(Utf8Reparatur(f.text), f.erwartet) << f.text;
}

TEST(Utf8Reparatur, TextOhneAtildeUndAcircBleibtWieEr) {
    for (std::string_view text :
         {std::string_view(""), std::string_view("DEBBAL4200001hHH"),
          std::string_view("Größe äöü ÄÖÜ ß àáÁ"), std::string_view("abc\xC3"),
          std::string_view("\xC3\xC3\xA4"), std::string_view("\x83\x82 ohne Leitbyte")})
        EXPECT_EQ(Utf8Reparatur(text), text);
    EXPECT_EQ(Utf8Reparatur("abc\xC3\x83"), "abcà");
}

} // namespace
} // namespace flurix::nas
