// The area computation of the real district against an independent one: the same polygons (arcs
// as the same chords) intersected by SpatiaLite (GEOS) through the sqlite3 shell. Skipped with a
// message where the district, sqlite3 or mod_spatialite are missing.
#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "nas/flaechenergebnis.hpp"
#include "nas/flaechenverschneidung.hpp"
#include "nas/nas_einlesen.hpp"
#include "nas/nas_protokoll.hpp"

#include "gemeinsam/testumgebung.hpp"
#include "nas/polygon_wkt.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace flurix::nas {
namespace {

namespace fs = std::filesystem;
const fs::path Konfig = fs::path(FLURIX_QUELLEN) / "config";

/// Per parcel and class: the sum of the areas of the list columns.
struct Summe {
    double fläche = 0;
    int einträge = 0;
};
std::map<std::pair<std::string, std::string>, Summe> Listensummen(Datenbank& db) {
    std::map<std::pair<std::string, std::string>, Summe> summen;
    Anweisung a = db.VorbereitenNativ("SELECT flurstueckskennzeichen, AlkisNA, BS_Flaeche FROM AX_Flurstueck");
    while (a.Schritt()) {
        for (std::string_view eintrag : Teilen(a.Text(1), ';')) {
            const auto wörter = Teilen(TrimmeLeerzeichen(eintrag), ' ');
            if (wörter.size() == 2) {
                Summe& s = summen[{std::string(a.Text(0)), std::string(wörter[0])}];
                s.fläche += ZahlLesen(wörter[1]);
                ++s.einträge;
            }
        }
        for (std::string_view fläche : Teilen(a.Text(2), ';'))
            if (!TrimmeLeerzeichen(fläche).empty()) {
                Summe& s = summen[{std::string(a.Text(0)), "AX_Bodenschaetzung"}];
                s.fläche += ZahlLesen(TrimmeLeerzeichen(fläche));
                ++s.einträge;
            }
    }
    return summen;
}

TEST(FlächenverschneidungUnabhängig, BezirkStimmtMitSpatiaLiteÜberein) {
    const fs::path bezirk = test::GemeinsameTestdaten() / "postnas-rlp-gid60" / "gm2566-testdaten-gid60-2008-11-11.xml.xz";
    if (!fs::exists(bezirk) || !test::ImSuchpfad("sqlite3") || !test::ImSuchpfad("xz"))
        GTEST_SKIP() << "Bezirk, sqlite3 oder xz fehlt: " << bezirk;
    if (test::Ausführen("echo '.load mod_spatialite' | sqlite3 :memory: 2>&1").ausgabe.find("rror") != std::string::npos)
        GTEST_SKIP() << "mod_spatialite fehlt (Paket libsqlite3-mod-spatialite)";
    test::TempOrdner ordner;
    ASSERT_EQ(test::Ausführen("xz -dc " + test::Wort(bezirk) + " > " + test::Wort(ordner / "b.xml")).status, 0);
    SkriptOberfläche ui;
    NasProtokoll protokoll(ui, {});
    NasStand stand;
    ASSERT_TRUE(DAO_ALKISEinlesen({ordner / "b.xml", ordner / "b.sqlite", Konfig}, stand, ui, protokoll));
    Datenbank db(ordner / "b.sqlite");
    Flächenauftrag auftrag;
    auftrag.optionen.mitNaBerechnung = true;
    auftrag.optionen.svgLöschen = true;
    auftrag.konfigOrdner = Konfig;
    Flächenbericht bericht;
    ASSERT_TRUE(Flächenverschneidung(db, auftrag, protokoll, ui, bericht));
    ASSERT_EQ(bericht.flurstücke, 2369);
    const auto unsere = Listensummen(db);

    // The same polygons for SpatiaLite, and its intersections of every pair whose boxes meet.
    test::PolygoneAlsWkt(db, "AX_Flurstueck", "flurstueckskennzeichen");
    for (std::string_view klasse : Klassenliste(auftrag.optionen))
        if (klasse != "AX_BauRaumOderBodenordnungsrecht" && db.TabelleVorhanden(klasse))
            test::PolygoneAlsWkt(db, std::string(klasse), "rowid");
    test::DateiSchreiben(ordner / "schnitt.sql", test::SpatialiteSchnittSkript);
    const auto lauf = test::Ausführen("sqlite3 " + test::Wort(ordner / "b.sqlite") + " < " + test::Wort(ordner / "schnitt.sql"));
    ASSERT_EQ(lauf.status, 0);

    int verglichen = 0;
    for (std::string_view zeile : Teilen(lauf.ausgabe, '\n')) {
        const auto teile = Teilen(zeile, '|');
        if (teile.size() != 3)
            continue;
        const double fläche = ZahlLesen(teile[2]);
        const std::pair<std::string, std::string> paar{std::string(teile[0]), std::string(teile[1])};
        const auto it = unsere.find(paar);
        const Summe wir = it == unsere.end() ? Summe{} : it->second;
        // Soil areas are kept in whole square metres, each entry rounded; the others to 0.01 m².
        const double toleranz = paar.second == "AX_Bodenschaetzung" ? 0.5 * wir.einträge + 0.01 : 0.01;
        if (fläche < StandardMinFläche && wir.einträge == 0)
            continue;
        EXPECT_NEAR(wir.fläche, fläche, toleranz) << paar.first << " " << paar.second;
        ++verglichen;
    }
    EXPECT_GT(verglichen, 3000);

    // Every parcel of the district is covered by land use: fitted, its areas add up to the
    // official area, each entry rounded to 0.1 m².
    std::string spalten;
    for (std::string_view name : FlächenspaltenNamen)
        spalten += ", " + Bezeichner(name);
    Anweisung zeilen = db.VorbereitenNativ("SELECT amtlicheFlaeche" + spalten + " FROM AX_Flurstueck");
    int angepasst = 0;
    while (zeilen.Schritt()) {
        Flächenwerte werte;
        for (std::size_t i = 0; i < FlächenspaltenAnzahl; ++i)
            werte[static_cast<Flächenspalte>(i)] = std::string(zeilen.Text(static_cast<int>(i + 1)));
        const double amtlich = ZahlLesen(zeilen.Text(0));
        FlächenAnpassen(werte, amtlich);
        const auto einträge = Teilen(werte[Flächenspalte::AlkisNaFlaeche], ';');
        double summe = 0;
        for (std::string_view e : einträge)
            summe += ZahlLesen(TrimmeLeerzeichen(e));
        EXPECT_NEAR(summe, amtlich, 0.05 * static_cast<double>(einträge.size()) + 1e-6);
        ++angepasst;
    }
    EXPECT_EQ(angepasst, 2369);
}

} // namespace
} // namespace flurix::nas
