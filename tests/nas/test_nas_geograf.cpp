// The drawing of a NAS data set as GEOgraf file: a small object database with every kind of object
// and the awkward cases (shared edges of three ranks, an arc beyond a half circle, an open ring,
// another coordinate system, no geometry) against its golden file, read back by the GRAFBAT reader
// and drawn as DXF for the judge; the circle through three points.

#include "nas/nas_geograf.hpp"

#include "core/cp1252.hpp"
#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "export/dxf_nas.hpp"
#include "export/grafbat_leser.hpp"
#include "gemeinsam/dxf_pruefung.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/geograf_zeichnung.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/tabellentext.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <optional>
#include <string>

namespace flurix::nas {
namespace {

namespace fs = std::filesystem;

TEST(NasZeichnung, KleineZeichnungWieErwartet) {
    test::TempOrdner ordner;
    Datenbank db(ordner / "zeichnung.sqlite");
    test::TabellenAnlegen(db, test::Testdaten() / "nas" / "zeichnung.tab");
    SkriptOberfläche ui;
    NasProtokoll protokoll(ui, {});
    NasZeichnungsauftrag auftrag;
    auftrag.umringe = auftrag.schraffur = auftrag.meridianKZ = true;
    auftrag.konfigOrdner = fs::path(FLURIX_QUELLEN) / "config";
    auftrag.datum = "24.11.2026";
    auftrag.uhrzeit = "12:00:00";
    const fs::path out = ordner / "zeichnung_dxf.out";
    const NasZeichnungsbericht bericht = PositionNachGG(db, out, auftrag, protokoll, ui);
    // The file as UTF-8, then the protocol without its clock.
    std::string text = Cp1252NachUtf8(test::DateiLesen(out));
    for (const Ereignis& e : ui.Ereignisse())
        if (e.art == Ereignis::Art::Protokoll)
            text +=
                "Protokoll: " +
                Ersetzen(e.text.substr(e.text.find(", ") + 2), ordner.pfad().string(), "<ordner>") +
                "\n";
    EXPECT_EQ(test::GoldenVergleich(text, test::Testdaten() / "nas" / "zeichnung_erwartet.txt"),
              "");
    EXPECT_EQ(bericht.übersprungen, 2U) << "F4 in another system, F5 without geometry";

    ausgabe::GrafbatLeser leser(out);
    std::size_t sätze = 0;
    while (leser.NächsterSatz())
        ++sätze;
    EXPECT_GT(sätze, 40U);
    EXPECT_TRUE(leser.Probleme().empty()) << leser.Probleme().front().meldung;

    // The same file drawn as DXF passes the judge.
    const fs::path dxf = ordner / "zeichnung.dxf";
    ausgabe::DxfNasOptionen optionen;
    optionen.schraffur = optionen.punktnummern = optionen.sachdaten = true;
    optionen.arbeitsverzeichnis = ordner.pfad();
    ASSERT_TRUE(ausgabe::DXFExport(out, dxf, optionen, ui));
    if (test::EzdxfDa()) {
        const auto prüfung = test::Ausführen(test::DxfPrüfung(test::StrikteKopie(dxf)));
        EXPECT_EQ(prüfung.status, 0) << prüfung.ausgabe;
    }
}

TEST(NasZeichnung, KreisDurchDreiPunkte) {
    const double w = std::sqrt(0.5);
    struct Fall {
        const char* name;
        Lage a, b, c;
        std::optional<Kreisbogen> erwartet;
    };
    const Fall fälle[] = {
        {"Viertelkreis links",
         {10, 0},
         {10 * w, 10 * w},
         {0, 10},
         Kreisbogen{{0, 0}, 10, 1, std::numbers::pi / 2}},
        {"Viertelkreis rechts",
         {0, 10},
         {10 * w, 10 * w},
         {10, 0},
         Kreisbogen{{0, 0}, 10, -1, std::numbers::pi / 2}},
        {"Dreiviertelkreis",
         {10, 0},
         {-10, 0},
         {0, -10},
         Kreisbogen{{0, 0}, 10, 1, 1.5 * std::numbers::pi}},
        // Around (350000, 5600000) the arc keeps its digits.
        {"bei großen Koordinaten",
         {350010, 5600000},
         {350000 + 10 * w, 5600000 + 10 * w},
         {350000, 5600010},
         Kreisbogen{{350000, 5600000}, 10, 1, std::numbers::pi / 2}},
        {"auf einer Linie", {0, 0}, {5, 5}, {10, 10}, std::nullopt},
        {"zwei Punkte gleich", {0, 0}, {0, 0}, {10, 10}, std::nullopt},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.name);
        const auto k = BogenDurch(f.a, f.b, f.c);
        ASSERT_EQ(k.has_value(), f.erwartet.has_value());
        if (!k)
            continue;
        EXPECT_NEAR(k->mitte.rechts, f.erwartet->mitte.rechts, 1e-6);
        EXPECT_NEAR(k->mitte.hoch, f.erwartet->mitte.hoch, 1e-6);
        EXPECT_NEAR(k->radius, f.erwartet->radius, 1e-6);
        EXPECT_EQ(k->richtung, f.erwartet->richtung);
        EXPECT_NEAR(k->winkel, f.erwartet->winkel, 1e-6);
    }
}

} // namespace
} // namespace flurix::nas
