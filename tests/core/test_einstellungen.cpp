#include "core/einstellungen.hpp"

#include "core/fehler.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <regex>

namespace flurix {
namespace {

using test::DateiLesen;
using test::DateiSchreiben;
using test::TempOrdner;

TEST(TokenNr, StückeNachTrennerGetrimmtOhneTabs) {
    struct Fall {
        std::string_view text;
        int n;
        std::string_view trenner;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"tempArbeitsverzeichnis =/tmp/x/", 1, "=", "tempArbeitsverzeichnis"},
        {"tempArbeitsverzeichnis =/tmp/x/", 2, "=", "/tmp/x/"},
        {"  schlüssel  =  wert mit blanks  ", 2, "=", "wert mit blanks"},
        {"a\t=\tb", 2, "=", "b"},               // tabs are deleted, not trimmed
        {"a=b\tc", 2, "=", "bc"},
        {"wert=mit=gleich", 2, "=", "mit"},     // a value with "=" is cut there
        {"wert=mit=gleich", 3, "=", "gleich"},
        {"ohne trenner", 2, "=", ""},           // missing piece gives ""
        {"ohne trenner", 1, "=", "ohne trenner"},
        {"a;b;c", 3, ";", "c"},
        {"a;b;c", 4, ";", ""},
        {"a;;c", 2, ";", ""},
        {"x", 0, "=", ""},
        {"", 1, "=", ""},
        {"a<>b", 2, "<>", "b"},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(TokenNr(f.text, f.n, f.trenner), f.erwartet)
            << "\"" << f.text << "\" Stück " << f.n;
}

class EinstellungsdateiTest : public ::testing::Test {
protected:
    TempOrdner ordner;
    std::filesystem::path datei = ordner / "Flurix.dat";
};

TEST_F(EinstellungsdateiTest, ErsteZeileEinesSchlüsselsGiltUndRestIstKommentar) {
    DateiSchreiben(datei, "Kommentarzeile ohne Schlüssel\r\n"
                          "tempArbeitsverzeichnis =/tmp/eins/=zwei\r\n"
                          "tempArbeitsverzeichnis =/tmp/später/\r\n"
                          "PrüfeNummerFormat=nein\r\n"
                          "ProtokollMapAnfrage\r\n"
                          "  FlurixSpaltenanzeige  =  Kataster ALKIS  \n"
                          "* StartMapWebService =kommentiert\r\n");
    const Einstellungen e(datei);
    EXPECT_EQ(e.Wert("tempArbeitsverzeichnis"), "/tmp/eins/");
    EXPECT_EQ(e.Wert("PrüfeNummerFormat"), "nein");
    EXPECT_TRUE(e.Nein("PrüfeNummerFormat"));
    EXPECT_EQ(e.Wert("ProtokollMapAnfrage"), "");
    EXPECT_EQ(e.Wert("FlurixSpaltenanzeige"), "Kataster ALKIS");
    EXPECT_EQ(e.Wert("StartMapWebService"), "");
    EXPECT_EQ(e.Wert("Kommentarzeile ohne Schlüssel"), "");
    EXPECT_EQ(e.Wert("tempArbeits"), "");  // the key must match exactly
}

TEST_F(EinstellungsdateiTest, WindowsUndUtf8DateienWerdenGelesen) {
    DateiSchreiben(datei, "PfeilhöheKreisZuLinie =0.02\r\n");
    EXPECT_EQ(EinstellungLesen(datei, "PfeilhöheKreisZuLinie"), "0.02");
    DateiSchreiben(datei, "Pfeilh\xF6heKreisZuLinie =0.03\r\nBeschriftungFlurst\xFC" "ck =Gr\xF6\xDF" "e\r\n");
    EXPECT_EQ(EinstellungLesen(datei, "PfeilhöheKreisZuLinie"), "0.03");
    EXPECT_EQ(EinstellungLesen(datei, "BeschriftungFlurstück"), "Größe");
}

TEST_F(EinstellungsdateiTest, FehlendeDateiGibtLeer) {
    EXPECT_EQ(EinstellungLesen(ordner / "gibtsnicht.dat", "tempArbeitsverzeichnis"), "");
    EXPECT_FALSE(Einstellungen(ordner / "gibtsnicht.dat").Ja("ProtokollMapAnfrage"));
}

TEST_F(EinstellungsdateiTest, JaGiltNurGenau) {
    DateiSchreiben(datei, "a =ja\r\nb =Ja\r\nc =ja \r\nd =jaa\r\n");
    const Einstellungen e(datei);
    EXPECT_TRUE(e.Ja("a"));
    EXPECT_FALSE(e.Ja("b"));
    EXPECT_TRUE(e.Ja("c")); // trailing blank is trimmed away
    EXPECT_FALSE(e.Ja("d"));
    EXPECT_FALSE(e.Ja("fehlt"));
}

TEST_F(EinstellungsdateiTest, ZeileErsetzenTauschtTrefferUndLässtLeerzeilenWeg) {
    DateiSchreiben(datei, "Kopf\r\n"
                          "\r\n"
                          "StartMapWebService =alt\r\n"
                          "   \r\n"
                          "StartMapWebServiceKoo =1;2\n"
                          "StartMapWebServiceMaßstab =0\r\n");
    ZeileErsetzen(datei, "StartMapWebService =", "StartMapWebService =neu");
    EXPECT_EQ(DateiLesen(datei), "Kopf\r\n"
                                 "StartMapWebService =neu\r\n"
                                 "StartMapWebServiceKoo =1;2\r\n"
                                 "StartMapWebServiceMaßstab =0\r\n");
    ZeileErsetzen(datei, "StartMapWebServiceEPSG =", "StartMapWebServiceEPSG =25832");
    EXPECT_EQ(DateiLesen(datei).find("EPSG"), std::string::npos); // no line, nothing added
}

TEST_F(EinstellungsdateiTest, ZeileErsetzenBehältDieCodepage) {
    DateiSchreiben(datei, "StartMapWebServiceMa\xDF" "stab =0\r\nStra\xDF" "e\r\n");
    ZeileErsetzen(datei, "StartMapWebServiceMaßstab =", "StartMapWebServiceMaßstab =1000");
    EXPECT_EQ(DateiLesen(datei), "StartMapWebServiceMa\xDF" "stab =1000\r\nStra\xDF" "e\r\n");
}

TEST_F(EinstellungsdateiTest, ZeileErsetzenOhneDateiIstEinFehler) {
    EXPECT_THROW(ZeileErsetzen(ordner / "fehlt.dat", "a =", "a =b"), Fehler);
}

TEST(ZeitStempelText, DatumZuerstOhneTrennzeichen) {
    const std::string stempel = ZeitStempelText();
    EXPECT_TRUE(std::regex_match(stempel, std::regex(R"(\d{8} \d{6})"))) << stempel;
    // Date first: day, month, year of today.
    const std::time_t jetzt = std::time(nullptr);
    std::tm lokal{};
    localtime_r(&jetzt, &lokal);
    char jahr[8];
    std::strftime(jahr, sizeof jahr, "%Y", &lokal);
    EXPECT_EQ(stempel.substr(4, 4), jahr);
}

} // namespace
} // namespace flurix
