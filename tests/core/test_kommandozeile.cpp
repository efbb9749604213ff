#include "core/kommandozeile.hpp"

#include "core/oberflaeche_skript.hpp"

#include <gtest/gtest.h>

namespace flurix {
namespace {

struct Fall {
    std::string zeile;
    Startart art;
    std::string auftragsDatei;
    bool still, gg, txtSch, dxf, autoStart;
    std::vector<std::string> meldungen;
};

TEST(KommandozeileLesen, AuftragsformenUndIhreMeldungen) {
    const std::string unbekannt = "\" kann vom Flurix z.Z. nicht automatisiert eingelesen werden!   ";
    const Fall fälle[] = {
        {"", Startart::Interaktiv, "", false, false, false, false, false, {}},
        {"/daten/auftrag.xml /ggout /still", Startart::NasStapel, "/daten/auftrag.xml", true, true,
         false, false, false, {}},
        {"/daten/Auftrag.XML /GGOUT /still /txt-sch", Startart::NasStapel, "/daten/Auftrag.xml",
         true, true, true, false, false, {}},
        {"/daten/auftrag.xml /dxfout /still", Startart::NasStapel, "/daten/auftrag.xml", true, true,
         false, true, false, {}},
        {"\"/daten/mit blank/auftrag.xml /ggout /still\"", Startart::NasStapel,
         "/daten/mit blank/auftrag.xml", true, true, false, false, false, {}},
        // two blanks before /still: the batch form is one text behind the dot
        {"/daten/auftrag.xml /ggout  /still", Startart::Interaktiv, "", false, false, false, false,
         false, {"Der Dateityp \".xml /ggout  /still" + unbekannt}},
        {"/daten/kreis.wldge", Startart::DateiLaden, "wldge", false, false, false, false, true, {}},
        {"/daten/Kreis.WLDGE", Startart::DateiLaden, "wldge", false, false, false, false, true, {}},
        {"/daten/tabelle.fil", Startart::DateiLaden, "fil", false, false, false, false, true, {}},
        {"/daten/nas.mdb", Startart::DateiLaden, "mdb", false, false, false, false, true, {}},
        {"/daten/auszug.xml", Startart::DateiLaden, "xml", false, false, false, false, true, {}},
        {"/daten/liste.txt", Startart::Interaktiv, "", false, false, false, false, false,
         {"Der Dateityp \".txt" + unbekannt}},
        // a dot in a folder name: warned about, the type still works
        {"/daten/v1.2/tabelle.fil", Startart::DateiLaden, "fil", false, false, false, false, true,
         {"Der Dateiname /daten/v1xml ist nicht eineindeutig!   "}},
        {"/daten/v1.2/auftrag.xml /ggout /still", Startart::NasStapel, "/daten/v1.2/auftrag.xml",
         true, true, false, false, false, {"Der Dateiname /daten/v1xml ist nicht eineindeutig!   "}},
        // a job must be given with its path
        {"kreis.wldge", Startart::Beenden, "", false, false, false, false, false,
         {"Fehlerhafte Auftragspfadbeschreibung! Abbruch!   "}},
    };
    for (const auto& f : fälle) {
        SkriptOberfläche ui;
        const Auftrag a = KommandozeileLesen(f.zeile, ui);
        SCOPED_TRACE(f.zeile);
        EXPECT_EQ(a.art, f.art);
        EXPECT_EQ(a.AuftragsDatei, f.auftragsDatei);
        EXPECT_EQ(a.StillModus, f.still);
        EXPECT_EQ(a.AusgabeGG, f.gg);
        EXPECT_EQ(a.AusgabeTxtSch, f.txtSch);
        EXPECT_EQ(a.AusgabeDXF, f.dxf);
        EXPECT_EQ(a.AutoStartDatei, f.autoStart);
        EXPECT_FALSE(a.MapModus);
        EXPECT_EQ(ui.Meldungen(), f.meldungen);
    }
}

TEST(KommandozeileLesen, PfadBleibtInSeinerSchreibweise) {
    SkriptOberfläche ui;
    const Auftrag a = KommandozeileLesen("  /Daten/Kreis Nord/Auszug.wldge  ", ui);
    EXPECT_EQ(a.JobPfad(), "/Daten/Kreis Nord/Auszug.wldge");
    EXPECT_EQ(a.AuftragsPfad, "/Daten/Kreis Nord/");
}

TEST(KommandozeileLesen, TitelDerMeldungen) {
    SkriptOberfläche ui;
    KommandozeileLesen("/a.b/c.fil", ui);
    KommandozeileLesen("ohnepfad.fil", ui);
    ASSERT_EQ(ui.Ereignisse().size(), 2u);
    EXPECT_EQ(ui.Ereignisse()[0].titel, "Flurix: Dateiname");
    EXPECT_EQ(ui.Ereignisse()[1].titel, "Flurix");
}

TEST(KommandozeileLesen, KarteMitKoordinatenpaar) {
    struct KartenFall {
        std::string zeile;
        bool mitMitte;
        double y, x;
        bool meldung;
    };
    const KartenFall fälle[] = {
        {"/map", false, 0, 0, false},
        {"/map 32350000.5;5600000", true, 32350000.5, 5600000, false},
        {"/MAP  350000 ;  5600000 ", true, 350000, 5600000, false},
        {"/map 350000  5600000", true, 350000, 5600000, false}, // blanks become the separator
        {"/map 350000", false, 0, 0, true},
    };
    for (const auto& f : fälle) {
        SkriptOberfläche ui;
        const Auftrag a = KommandozeileLesen(f.zeile, ui);
        SCOPED_TRACE(f.zeile);
        EXPECT_EQ(a.art, Startart::Karte);
        EXPECT_TRUE(a.MapModus);
        ASSERT_EQ(a.mitte.has_value(), f.mitMitte);
        if (f.mitMitte) {
            EXPECT_DOUBLE_EQ(a.mitte->y, f.y);
            EXPECT_DOUBLE_EQ(a.mitte->x, f.x);
        }
        EXPECT_EQ(ui.Meldungen().size(), f.meldung ? 1u : 0u);
        if (f.meldung) {
            EXPECT_EQ(ui.Meldungen()[0], "ETRS89-Koordinaten müssen mit \";\" getrennt werden!   ");
        }
    }
}

TEST(KoordinatenpaarNormalisieren, BlanksUndSemikolaWerdenEinTrenner) {
    EXPECT_EQ(KoordinatenpaarNormalisieren("  1 ;  2  "), "1;2");
    EXPECT_EQ(KoordinatenpaarNormalisieren("1;;2"), "1;2");
    EXPECT_EQ(KoordinatenpaarNormalisieren("12"), "12");
}

} // namespace
} // namespace flurix
