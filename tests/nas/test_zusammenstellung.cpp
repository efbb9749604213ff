// The NAS road as a whole: scan, compilation and transfer on the small samples, a bad line in the
// column mapping, and an extract without parcels.

#include "nas/nas_direkt.hpp"

#include "core/cp1252.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace flurix::nas {
namespace {

using test::DateiLesen;
using test::DateiSchreiben;

const std::filesystem::path Quellen(FLURIX_QUELLEN);
const std::filesystem::path Auszug = Quellen / "samples" / "musterstadt_bestandsdatenauszug.xml";

// A sample, changed by `ändern`, run through the road in a scratch installation.
struct Strecke {
    test::TempOrdner ordner;
    SkriptOberfläche ui;
    Kataster kataster;
    NasDirektBericht bericht;
    NasDirektAuftrag auftrag;

    explicit Strecke(const std::filesystem::path& muster, const std::function<void(std::string&)>& ändern = {}) {
        std::filesystem::copy(Quellen / "config", ordner / "config", std::filesystem::copy_options::recursive);
        auftrag.datei = ordner.pfad() / muster.filename();
        std::string text = DateiLesen(muster);
        if (ändern)
            ändern(text);
        DateiSchreiben(auftrag.datei, text);
        auftrag.datenbank = ordner / "nas.sqlite";
        auftrag.konfigOrdner = ordner / "config";
        auftrag.ansichtsdatei = ordner / "config" / "ALB_DatenbankSpalten.dat";
    }
    Ergebnis Lauf() { return NasDirektImport(auftrag, kataster, ui, bericht); }
    std::string Protokoll() const { return Cp1252NachUtf8(DateiLesen(auftrag.datei.string() + ".prn")); }
};

void Ersetzen(std::string& text, std::string_view alt, std::string_view neu) {
    const auto pos = text.find(alt);
    ASSERT_NE(pos, std::string::npos) << alt;
    text.replace(pos, alt.size(), neu);
}

TEST(NasStrecke, EinFlurstückMitEigentümerUndRing) {
    Strecke s(Auszug);
    ASSERT_TRUE(s.Lauf());
    ASSERT_EQ(s.kataster.Zeilenzahl(), 1U);
    for (const auto& [spalte, wert] : {std::pair{"Flurstück", "00042/0000"}, {"FKZ-Original", "05123400100042______"},
                                       {"Name", "Mustermann, Erika"}, {"Straße", "Musterweg 3"},
                                       {"Ort", "12345 Musterstadt"}, {"Eigentümerposition", "0001"},
                                       {"Flächendifferenz", "ohne Verteilung"}})
        EXPECT_EQ(s.kataster.Zelle(0, spalte), wert) << spalte;
    // No label point: the coordinates are the centre of the ring's box.
    EXPECT_FALSE(s.kataster.Zelle(0, "UmringFlurstück").empty());
    EXPECT_FALSE(s.kataster.Zelle(0, "Rechtswert").empty());
    EXPECT_EQ(s.bericht.zusammenstellung.zuordnung.fehlgeschlagen, 0);
    const std::string protokoll = s.Protokoll();
    for (const char* schritt :
         {", XML-Reorganisation...", ", Protokoll in Datei aktiviert...", ", Datenbank Reorganisation...",
          ", Hinweis: 1 \"position_AP_PTO\" ohne Bezug...", ", ALKIS-Zusammenstellung komplett...",
          ", Daten zusammenstellen...", "; Datei \"ALKIS-Zuordnung.dat\" abgearbeitet...", ", Daten ordnen...",
          ", ALKIS-Zusammenstellung beendet...", ", ALKIS nach ALB: Daten einlesen...",
          ", Daten nach Flurix exportiert..."})
        EXPECT_NE(protokoll.find(schritt), std::string::npos) << schritt;
    // The steps in their order.
    EXPECT_LT(protokoll.find(", ALKIS-Zusammenstellung komplett..."), protokoll.find(", Daten ordnen..."));
    EXPECT_LT(protokoll.find(", Daten ordnen..."), protokoll.find(", Daten nach Flurix exportiert..."));
}

// The row forms the table shares with the register readers, from an extract without a Gemarkung
// object and without a reference system object: the key from the parcel's own element, the
// system from the geometry's srsName, the name number without dots, shares as numbers and
// district keys compact.
TEST(NasStrecke, ZeilenformenWieBeiDenRegisterlesern) {
    Strecke s(Auszug, [](std::string& text) {
        Ersetzen(text, "<laufendeNummerNachDIN1421>0001</laufendeNummerNachDIN1421>",
                 "<laufendeNummerNachDIN1421>0011.11.00.00.00</laufendeNummerNachDIN1421>");
        Ersetzen(text, "<laufendeNummer>1</laufendeNummer>",
                 "<laufendeNummer>1</laufendeNummer><anteil><AX_Anteil><zaehler>1.000000000000</zaehler>"
                 "<nenner>1000.000000000000</nenner></AX_Anteil></anteil>");
    });
    ASSERT_TRUE(s.Lauf());
    ASSERT_EQ(s.kataster.Zeilenzahl(), 1U);
    for (const auto& [spalte, wert] :
         {std::pair{"Namensnummer", "001111000000"}, {"Anteil_Buchungsstelle_Zähler", "1"},
          {"Anteil_Buchungsstelle_Nenner", "1000"}, {"Anteil_Sondereigentum", "1/1000"},
          {"Gemarkungsschlüssel", "051234"}, {"buchungsblattbezirk", "051234"}, {"EPSG", "25832"}, {"MKZ", "32"}})
        EXPECT_EQ(s.kataster.Zelle(0, spalte), wert) << spalte;
    EXPECT_NE(s.Protokoll().find(", Koordinatenreferenzsystem aus srsName der Geometrie: ETRS89_UTM32"),
              std::string::npos);
}

TEST(NasStrecke, FehlerhafteZuordnungszeileWirdGezähltUndDerRestLäuft) {
    Strecke s(Quellen / "samples" / "musterstadt_nas.xml");
    const auto skript = s.ordner / "config" / "ALKIS_Zuordnung.dat";
    // A broken statement and a statement that tries to smuggle a second one in, at the start.
    DateiSchreiben(skript, "SQL UPDATE Alkis SET GibtEsNicht = 1\r\n"
                           "SQL UPDATE Alkis SET Gemeinde = 'x'; DROP TABLE Alkis\r\n" + DateiLesen(skript));
    ASSERT_TRUE(s.Lauf());
    EXPECT_EQ(s.bericht.zusammenstellung.zuordnung.fehlgeschlagen, 2);
    EXPECT_GT(s.kataster.Zeilenzahl(), 24U);
    EXPECT_NE(s.kataster.Zelle(0, "Gemeinde"), "x");
    EXPECT_NE(s.Protokoll().find(", Fehler Zeile Zuordnung: SQL UPDATE Alkis SET GibtEsNicht = 1"), std::string::npos);
}

TEST(NasStrecke, AuszugOhneFlurstückeMeldetKeineDaten) {
    Strecke s(Auszug, [](std::string& text) { // the same extract without its parcel
        const auto anfang = text.find("<AX_Flurstueck ");
        const auto ende = text.find("</AX_Flurstueck>");
        ASSERT_TRUE(anfang != std::string::npos && ende != std::string::npos);
        text.erase(anfang, ende + std::string_view("</AX_Flurstueck>").size() - anfang);
    });
    EXPECT_FALSE(s.Lauf());
    const auto meldungen = s.ui.Meldungen();
    EXPECT_NE(std::find(meldungen.begin(), meldungen.end(), "Keine Daten vorhanden!   "), meldungen.end());
    EXPECT_NE(s.Protokoll().find(", ERR: keine Daten vorhanden, ALKIS-Zusammenstellung..."), std::string::npos);
    EXPECT_EQ(s.kataster.Zeilenzahl(), 0U);
}

} // namespace
} // namespace flurix::nas
