#include "core/nummernformat.hpp"

#include "core/einstellungen.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <clocale>

namespace flurix {
namespace {

// A system whose separator the test chooses; it counts how often the program sets it.
class SpielZahlenformat final : public Zahlenformat {
public:
    explicit SpielZahlenformat(char dezimal) : m_dezimal(dezimal) {}
    std::string EinsKommaEins() const override { return std::string("1") + m_dezimal + "1"; }
    bool SeparatorenSetzen(char dezimal, char) override {
        m_dezimal = dezimal;
        ++gesetzt;
        return true;
    }
    void Umstellen(char dezimal) { m_dezimal = dezimal; }
    int gesetzt = 0;

private:
    char m_dezimal;
};

const std::string NachPunkt = "Das Dezimaltrennzeichen wurde von 'Komma' nach 'Punkt' geändert!   ";
const std::string NachKomma = "Das Dezimalkennzeichen wurde von 'Punkt' nach 'Komma' geändert!   ";

struct Fall {
    std::string name;
    std::string einstellungen;
    char system;
    bool nutzerStelltZurück; // the system writes a comma again before the second call
    bool kommaGeändert;
    int gesetzt;             // calls of the separator setter by the two checks
    std::vector<std::string> meldungen;
};

TEST(PrüfeNummerFormat, ErsterUndSpätererAufrufUndEnde) {
    const Fall fälle[] = {
        {"punktsystem", "", '.', false, false, 0, {}},
        {"kommasystem_still", "", ',', false, true, 1, {}},
        {"kommasystem_meldung", "PrüfeNummerFormatMitMeldung =ja\r\n", ',', false, true, 1,
         {NachPunkt, NachKomma}},
        {"abgeschaltet", "PrüfeNummerFormat =nein\r\nPrüfeNummerFormatMitMeldung =ja\r\n", ',',
         true, false, 0, {}},
        {"nur_erster_aufruf", "PrüfeNummerFormatMitMeldung =ja\r\n", ',', true, true, 1,
         {NachPunkt, NachKomma}},
        {"bei_benutzung",
         "PrüfeNummerFormatMitMeldung =ja\r\nPrüfeNummerFormatBeiBenutzung =ja\r\n", ',', true,
         true, 2, {NachPunkt, NachPunkt, NachKomma}},
        {"bei_benutzung_ohne_rueckstellung", "PrüfeNummerFormatBeiBenutzung =ja\r\n", ',', false,
         true, 1, {}},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        test::TempOrdner ordner;
        test::DateiSchreiben(ordner / "Flurix.dat", f.einstellungen);
        const Einstellungen einstellungen(ordner / "Flurix.dat");
        SpielZahlenformat format(f.system);
        NummernformatZustand zustand;
        SkriptOberfläche ui;

        PrüfeNummerFormatAufruf(einstellungen, format, zustand, ui);
        EXPECT_EQ(zustand.FormatGeprüft, !einstellungen.Nein("PrüfeNummerFormat"));
        if (f.nutzerStelltZurück)
            format.Umstellen(',');
        PrüfeNummerFormatAufruf(einstellungen, format, zustand, ui);
        EXPECT_EQ(zustand.KommaGeändert, f.kommaGeändert);
        EXPECT_EQ(format.gesetzt, f.gesetzt);

        NummerFormatZurücksetzen(einstellungen, format, zustand, ui);
        EXPECT_EQ(format.gesetzt, f.gesetzt + (f.kommaGeändert ? 1 : 0));
        if (f.kommaGeändert) {
            EXPECT_EQ(format.EinsKommaEins(), "1,1"); // given back to the system
        }
        EXPECT_EQ(ui.Meldungen(), f.meldungen);
        for (const auto& e : ui.Ereignisse())
            EXPECT_EQ(e.titel, "Ländereinstellung - Dezimaltrennzeichen");
    }
}

TEST(ProzessZahlenformat, KommaLocaleWirdFürDenProzessAufPunktGestellt) {
    const std::string vorher = std::setlocale(LC_NUMERIC, nullptr);
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8"))
        GTEST_SKIP() << "Locale de_DE.UTF-8 ist nicht installiert (./flurix.sh setup erzeugt sie)";
    {
        ProzessZahlenformat format;
        EXPECT_EQ(format.EinsKommaEins(), "1,1");
        EXPECT_TRUE(format.SeparatorenSetzen('.', ' '));
        EXPECT_EQ(format.EinsKommaEins(), "1.1");
        EXPECT_TRUE(format.SeparatorenSetzen(',', '.'));
        EXPECT_EQ(format.EinsKommaEins(), "1,1");
    }
    std::setlocale(LC_NUMERIC, vorher.c_str());
}

} // namespace
} // namespace flurix
