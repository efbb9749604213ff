#pragma once
// The polygons of a NAS object database as WKT, for SpatiaLite: the test that checks the area
// computation against it and the benchmark that times both use the same copy.

#include "core/datenbank.hpp"
#include "nas/geometrie.hpp"
#include "nas/polygon.hpp"

#include <cstdio>
#include <string>
#include <vector>

namespace flurix::test {

/// Rings as a MULTIPOLYGON of one-ring polygons, each ring closed again; "" for none.
inline std::string MultipolygonWkt(const std::vector<nas::Ring>& ringe) {
    std::string wkt;
    char puffer[80];
    for (const nas::Ring& ring : ringe) {
        wkt += wkt.empty() ? "((" : ",((";
        for (std::size_t i = 0; i <= ring.punkte.size(); ++i) {
            const nas::Punkt& p = ring.punkte[i % ring.punkte.size()];
            std::snprintf(puffer, sizeof puffer, "%s%.4f %.4f", i ? "," : "", p.x, p.y);
            wkt += puffer;
        }
        wkt += "))";
    }
    return wkt.empty() ? "" : "MULTIPOLYGON(" + wkt + ")";
}

/// The table "wkt (klasse, schluessel, aussen, innen)" with each polygon of `von` (arcs as chords
/// of the standard sagitta); `schlüssel` is the SQL of its key column.
inline void PolygoneAlsWkt(Datenbank& db, const std::string& von, const std::string& schlüssel) {
    db.AusführenNativ("CREATE TABLE IF NOT EXISTS wkt (klasse TEXT, schluessel TEXT, aussen TEXT, innen TEXT)");
    Anweisung lesen = db.VorbereitenNativ("SELECT " + schlüssel + ", \"gml:exterior\", \"gml:interior\", \"gml:Arc\" FROM " +
                                          Bezeichner(von));
    Anweisung schreiben = db.VorbereitenNativ("INSERT INTO wkt VALUES (?, ?, ?, ?)");
    Transaktion t(db);
    while (lesen.Schritt()) {
        const nas::Polygonmenge p = nas::PolygonAusTexten(lesen.Text(1), lesen.Text(2), lesen.Text(3), nas::StandardPfeilhöhe);
        if (p.Leer())
            continue;
        schreiben.Zurücksetzen();
        schreiben.Binde(von).Binde(std::string(lesen.Text(0))).Binde(MultipolygonWkt(p.außen));
        if (p.innen.empty())
            schreiben.Binde(nullptr);
        else
            schreiben.Binde(MultipolygonWkt(p.innen));
        schreiben.Schritt();
    }
    t.Bestätigen();
}

/// The sqlite3 shell script that intersects every parcel of the table wkt with every class polygon
/// whose box meets it and prints "parcel|class|area" per pair.
inline constexpr char SpatialiteSchnittSkript[] =
    ".load mod_spatialite\n"
    "CREATE TEMP TABLE g AS SELECT klasse, schluessel, CASE WHEN innen IS NULL THEN "
    "ST_Union(GeomFromText(aussen)) ELSE ST_Difference(ST_Union(GeomFromText(aussen)), "
    "ST_Union(GeomFromText(innen))) END AS geom FROM wkt GROUP BY rowid;\n"
    ".mode list\n"
    "SELECT f.schluessel, n.klasse, sum(ST_Area(ST_Intersection(f.geom, n.geom))) FROM g f "
    "JOIN g n ON n.klasse <> 'AX_Flurstueck' AND MbrIntersects(f.geom, n.geom) "
    "WHERE f.klasse = 'AX_Flurstueck' GROUP BY 1, 2;\n";

} // namespace flurix::test
