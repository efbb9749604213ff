// Benchmark of the land-use areas: the area computation over every parcel of a district, beside
// the same intersections in SpatiaLite SQL (sqlite3 with mod_spatialite, when installed), timed
// in the same run. Districts: generated ones of 10,000 and 50,000 parcels (a grid of parcels with
// jagged boundaries, land-use blocks of about two parcels and soil-assessment blocks of about four,
// both shifted against the parcels so that most parcels are cut), and the real district of the
// shared test data when it lies beside the repository.
//   bench_flaechen [parcels...]        (default 10000 50000)
#include "core/datenbank.hpp"
#include "core/oberflaeche_batch.hpp"
#include "nas/flaechenverschneidung.hpp"
#include "nas/nas_einlesen.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include "messen.hpp"

#include "../tests/nas/polygon_wkt.hpp"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <string>

namespace {

namespace fs = std::filesystem;
using namespace flurix;

const fs::path Quellordner = fs::path(__FILE__).parent_path().parent_path();
const fs::path Bezirk = Quellordner.parent_path() / "shared/testdata/postnas-rlp-gid60/gm2566-testdaten-gid60-2008-11-11.xml.xz";

using bench::Sekunden;
using bench::SpitzeMB;

/// A rectangle whose edges carry `zacken` extra points, each moved sideways a little: a ring of
/// the kind parcels have, as ring text and as WKT.
struct Rechteck {
    double x0, y0, x1, y1;
};

std::string Ringtext(const Rechteck& r, int zacken, std::mt19937& zufall, std::string* wkt) {
    std::uniform_real_distribution<double> versatz(-0.4, 0.4);
    const double ecken[5][2] = {{r.x0, r.y0}, {r.x1, r.y0}, {r.x1, r.y1}, {r.x0, r.y1}, {r.x0, r.y0}};
    std::string text;
    std::string punkte;
    char puffer[64];
    const auto punkt = [&](double x, double y) {
        std::snprintf(puffer, sizeof puffer, "%.3f %.3f", x, y);
        text += (text.empty() ? "" : " ") + std::string(puffer);
        punkte += (punkte.empty() ? "" : ",") + std::string(puffer);
    };
    for (int e = 0; e < 4; ++e) {
        punkt(ecken[e][0], ecken[e][1]);
        for (int k = 1; k <= zacken; ++k) {
            const double t = static_cast<double>(k) / (zacken + 1);
            const double x = ecken[e][0] + t * (ecken[e + 1][0] - ecken[e][0]);
            const double y = ecken[e][1] + t * (ecken[e + 1][1] - ecken[e][1]);
            const bool waagrecht = ecken[e][1] == ecken[e + 1][1];
            punkt(waagrecht ? x : x + versatz(zufall), waagrecht ? y + versatz(zufall) : y);
        }
    }
    punkt(r.x0, r.y0);
    if (wkt)
        *wkt = "POLYGON((" + punkte + "))";
    return text;
}

/// A district of `n` parcels (20 m × 40 m) in rows of 100, with land-use and soil blocks.
void DistriktAnlegen(const fs::path& datei, long n) {
    Datenbank db(datei);
    db.AusführenNativ("CREATE TABLE AX_Flurstueck (id TEXT, flurstueckskennzeichen TEXT, "
                      "\"flurstuecksnummer/AX_Flurstuecksnummer/zaehler\" TEXT, "
                      "\"flurstuecksnummer/AX_Flurstuecksnummer/nenner\" TEXT, amtlicheFlaeche TEXT, "
                      "\"gml:exterior\" TEXT, \"gml:interior\" TEXT, \"gml:Arc\" TEXT, wkt TEXT)");
    db.AusführenNativ("CREATE TABLE AX_Person (id TEXT)");
    db.AusführenNativ("INSERT INTO AX_Person VALUES ('p')");
    for (const char* klasse : {"AX_Landwirtschaft", "AX_Bodenschaetzung"})
        db.AusführenNativ(std::string("CREATE TABLE ") + klasse +
                          " (id TEXT, vegetationsmerkmal TEXT, kulturart TEXT, bodenart TEXT, "
                          "ackerzahlOderGruenlandzahl TEXT, \"gml:exterior\" TEXT, \"gml:interior\" TEXT, "
                          "\"gml:Arc\" TEXT, wkt TEXT)");
    std::mt19937 zufall(42);
    Transaktion t(db);
    Anweisung flurstück = db.VorbereitenNativ("INSERT INTO AX_Flurstueck VALUES (?, ?, ?, '', ?, ?, '', '', ?)");
    const long spalten = 100;
    for (long i = 0; i < n; ++i) {
        const double x = 350000.0 + static_cast<double>(i % spalten) * 20.0;
        const double y = 5530000.0 + static_cast<double>(i / spalten) * 40.0;
        std::string wkt;
        const std::string ring = Ringtext({x, y, x + 20, y + 40}, 3, zufall, &wkt);
        char kennzeichen[48];
        std::snprintf(kennzeichen, sizeof kennzeichen, "072566001%05ld000000", i + 1);
        flurstück.Zurücksetzen();
        flurstück.Binde("F" + std::to_string(i)).Binde(std::string(kennzeichen)).Binde(std::to_string(i + 1))
            .Binde("800").Binde(ring).Binde(wkt);
        flurstück.Schritt();
    }
    const long zeilen = (n + spalten - 1) / spalten;
    const auto blöcke = [&](const char* klasse, double breite, double höhe, double dx, double dy) {
        Anweisung block = db.VorbereitenNativ(std::string("INSERT INTO ") + klasse +
                                              " VALUES (?, '1020', '3000', '3100', '40', ?, '', '', ?)");
        long k = 0;
        for (double y = 5530000.0 - dy; y < 5530000.0 + static_cast<double>(zeilen) * 40.0; y += höhe)
            for (double x = 350000.0 - dx; x < 350000.0 + spalten * 20.0; x += breite) {
                std::string wkt;
                const std::string ring = Ringtext({x, y, x + breite, y + höhe}, 2, zufall, &wkt);
                block.Zurücksetzen();
                block.Binde(std::string(klasse) + std::to_string(k++)).Binde(ring).Binde(wkt);
                block.Schritt();
            }
    };
    blöcke("AX_Landwirtschaft", 40.0, 40.0, 7.3, 11.1);
    blöcke("AX_Bodenschaetzung", 40.0, 80.0, 13.7, 23.9);
    t.Bestätigen();
}

double Flächenschritt(const fs::path& datei, nas::Flächenbericht& bericht) {
    BatchOberfläche ui(std::cerr, nullptr, false);
    nas::NasProtokoll protokoll(ui, fs::path());
    auto db = nas::DAO_DatenbankÖffnen(datei);
    nas::Flächenauftrag auftrag;
    auftrag.optionen.mitNaBerechnung = true;
    auftrag.optionen.svgLöschen = true;
    auftrag.konfigOrdner = Quellordner / "config";
    const auto start = std::chrono::steady_clock::now();
    nas::Flächenverschneidung(*db, auftrag, protokoll, ui, bericht);
    return Sekunden(start);
}

/// The intersections of every parcel with every class polygon whose box meets it, summed per
/// pair, in SpatiaLite; -1 when sqlite3 or mod_spatialite are missing.
double SpatiaLite(const fs::path& datei, const fs::path& ordner, const std::string& klassen) {
    const fs::path skript = ordner / "spatialite.sql";
    std::string sql = ".load mod_spatialite\n"
                      "CREATE TEMP TABLE p AS SELECT rowid AS r, GeomFromText(wkt) AS g FROM AX_Flurstueck;\n"
                      "CREATE TEMP TABLE n AS SELECT 0 AS r, NULL AS g WHERE 0;\n";
    for (const std::string& k : {std::string("AX_Landwirtschaft"), std::string("AX_Bodenschaetzung")})
        if (klassen.find(k) != std::string::npos)
            sql += "INSERT INTO n SELECT rowid, GeomFromText(wkt) FROM " + k + ";\n";
    sql += "SELECT count(*), sum(a) FROM (SELECT ST_Area(ST_Intersection(p.g, n.g)) AS a FROM p JOIN n "
           "ON MbrIntersects(p.g, n.g));\n";
    std::FILE* f = std::fopen(skript.c_str(), "w");
    if (!f)
        return -1;
    std::fputs(sql.c_str(), f);
    std::fclose(f);
    const std::string befehl = "sqlite3 '" + datei.string() + "' < '" + skript.string() + "' > /dev/null 2>&1";
    const auto start = std::chrono::steady_clock::now();
    if (std::system(befehl.c_str()) != 0)
        return -1;
    return Sekunden(start);
}

/// The district's intersections in SpatiaLite, from the same polygons (arcs as the same chords).
double BezirkSpatiaLite(const fs::path& datei, const fs::path& ordner) {
    if (std::getenv("FLURIX_BENCH_OHNE_SPATIALITE"))
        return -1;
    {
        Datenbank db(datei);
        test::PolygoneAlsWkt(db, "AX_Flurstueck", "flurstueckskennzeichen");
        for (std::string_view klasse : nas::Klassenliste([] {
                 nas::NasOptionen o;
                 o.mitNaBerechnung = true;
                 return o;
             }()))
            if (klasse != "AX_BauRaumOderBodenordnungsrecht" && db.TabelleVorhanden(klasse))
                test::PolygoneAlsWkt(db, std::string(klasse), "rowid");
    }
    const fs::path skript = ordner / "bezirk.sql";
    std::FILE* f = std::fopen(skript.c_str(), "w");
    if (!f)
        return -1;
    std::fputs(test::SpatialiteSchnittSkript, f);
    std::fclose(f);
    const auto start = std::chrono::steady_clock::now();
    if (std::system(("sqlite3 '" + datei.string() + "' < '" + skript.string() + "' > /dev/null 2>&1").c_str()) != 0)
        return -1;
    return Sekunden(start);
}

void Zeile(const std::string& name, long flurstücke, double flurix, double spatialite,
           const nas::Flächenbericht& b) {
    std::printf("%-22s %7ld Flst. %8.3f s  %6.1f µs/Flst.  %7lld Schnitte", name.c_str(), flurstücke, flurix,
                flurix * 1e6 / static_cast<double>(std::max<long>(flurstücke, 1)),
                static_cast<long long>(b.schnitte));
    if (spatialite >= 0)
        std::printf("  SpatiaLite %8.3f s (%.1f×)", spatialite, spatialite / flurix);
    std::printf("  Spitze %ld MB\n", SpitzeMB());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    bench::Ordner ordner("flurix_bench_flaechen");
    std::vector<long> größen;
    for (int i = 1; i < argc; ++i)
        größen.push_back(std::atol(argv[i]));
    if (größen.empty())
        größen = {10000, 50000};
    std::printf("Flächenverschneidung (alle Klassen, ohne Flächenanpassung)\n");
    for (long n : größen) {
        const fs::path datei = ordner.pfad() / ("distrikt" + std::to_string(n) + ".sqlite");
        DistriktAnlegen(datei, n);
        const double spatialite = std::getenv("FLURIX_BENCH_OHNE_SPATIALITE") ? -1 : SpatiaLite(datei, ordner.pfad(), "AX_Landwirtschaft AX_Bodenschaetzung");
        nas::Flächenbericht bericht;
        const double zeit = Flächenschritt(datei, bericht);
        Zeile("erzeugt", n, zeit, spatialite, bericht);
    }
    if (fs::exists(Bezirk)) {
        const fs::path xml = ordner.pfad() / "bezirk.xml";
        if (std::system(("xz -dc '" + Bezirk.string() + "' > '" + xml.string() + "'").c_str()) == 0) {
            BatchOberfläche ui(std::cerr, nullptr, false);
            nas::NasProtokoll protokoll(ui, fs::path());
            nas::NasStand stand;
            const fs::path datei = ordner.pfad() / "bezirk.sqlite";
            if (nas::DAO_ALKISEinlesen({xml, datei, Quellordner / "config"}, stand, ui, protokoll)) {
                nas::Flächenbericht bericht;
                const double zeit = Flächenschritt(datei, bericht);
                Zeile("Bezirk gm2566", bericht.flurstücke, zeit, BezirkSpatiaLite(datei, ordner.pfad()), bericht);
            }
        }
    } else {
        std::printf("(Bezirk der Testdaten nicht vorhanden: %s)\n", Bezirk.c_str());
    }
    return 0;
}
