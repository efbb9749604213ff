// The land-use areas: polygons, the intersection, the walk over parcels and class tables with its
// protocol, the fitting to the official area and the recoding into the land-use catalogue.
#include "core/cp1252.hpp"
#include "core/datenbank.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "nas/flaechen_index.hpp"
#include "nas/flaechenergebnis.hpp"
#include "nas/flaechenverschneidung.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/na_anpassung_2019.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/verschneidung.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace flurix::nas {
namespace {

namespace fs = std::filesystem;
const fs::path Konfig = fs::path(FLURIX_QUELLEN) / "config";

/// "x0 y0 x1 y1" as a closed rectangle ring text, counter-clockwise.
std::string Rechteck(double x0, double y0, double x1, double y1) {
    char puffer[256];
    std::snprintf(puffer, sizeof puffer, "%g %g %g %g %g %g %g %g %g %g", x0, y0, x1, y0, x1, y1, x0, y1, x0, y0);
    return puffer;
}

Polygonmenge Polygon(std::string_view außen, std::string_view innen = "", std::string_view bögen = "") {
    return PolygonAusTexten(außen, innen, bögen, StandardPfeilhöhe);
}

// ---- polygons ---------------------------------------------------------------------------------

TEST(Polygon, FlächenRingeUndAustauschtext) {
    const Polygonmenge mitLoch = Polygon(Rechteck(0, 0, 20, 20), Rechteck(5, 5, 15, 15));
    EXPECT_DOUBLE_EQ(RingFlaeche(mitLoch.außen), 400);
    EXPECT_DOUBLE_EQ(GesamtFlaeche(mitLoch), 300);
    // Clockwise rings count negative; the total takes absolute values whatever the data's direction.
    const Polygonmenge uhrzeiger = Polygon("0 0 0 20 20 20 20 0 0 0", "5 5 5 15 15 15 15 5 5 5");
    EXPECT_DOUBLE_EQ(RingFlaeche(uhrzeiger.außen), -400);
    EXPECT_DOUBLE_EQ(GesamtFlaeche(uhrzeiger), 300);
    // Equal whatever the start point and direction; not equal when one point differs by a millimetre.
    EXPECT_TRUE(RingeGleich(Polygon(Rechteck(0, 0, 20, 20)), Polygon("20 20 20 0 0 0 0 20 20 20")));
    EXPECT_FALSE(RingeGleich(Polygon(Rechteck(0, 0, 20, 20)), Polygon(Rechteck(0, 0, 20, 20.001))));

    // The exchange text: ring count (exterior and interior), then points per ring, "x,y", CR LF.
    const std::string clp = ClpText(Polygon(Rechteck(0, 0, 2, 1), Rechteck(0.5, 0.25, 1, 0.75)));
    EXPECT_EQ(clp, "2\r\n4\r\n0,0\r\n2,0\r\n2,1\r\n0,1\r\n4\r\n0.5,0.25\r\n1,0.25\r\n1,0.75\r\n0.5,0.75\r\n");
    const auto ringe = ClpAusText(clp);
    ASSERT_EQ(ringe.size(), 2u);
    EXPECT_EQ(ringe[1].punkte[2], (Punkt{1, 0.75}));
    EXPECT_TRUE(ClpAusText("0\r\n").empty());
    EXPECT_EQ(ClpAusText("1\r\n5\r\n0,0\r\n").size(), 0u) << "a cut-off file gives no ring";
}

TEST(Verschneidung, FlächeUndVortestStimmenÜberein) {
    struct Fall {
        const char* name;
        std::string a, aInnen, b;
        double fläche;  // of the intersection
        bool treffen;   // the pre-test's answer
    };
    const Fall fälle[] = {
        {"überlappend", Rechteck(0, 0, 10, 10), "", Rechteck(5, 5, 15, 15), 25, true},
        {"getrennt", Rechteck(0, 0, 10, 10), "", Rechteck(10.01, 0, 20, 10), 0, false},
        {"berührend", Rechteck(0, 0, 10, 10), "", Rechteck(10, 0, 20, 10), 0, true},
        {"enthalten", Rechteck(0, 0, 10, 10), "", Rechteck(2, 2, 3, 3), 1, true},
        {"im Loch", Rechteck(0, 0, 10, 10), Rechteck(2, 2, 8, 8), Rechteck(3, 3, 4, 4), 0, false},
        {"über dem Loch", Rechteck(0, 0, 10, 10), Rechteck(2, 2, 8, 8), Rechteck(1, 1, 9, 9), 64 - 36, true},
        {"Dreieck in Box", "0 0 10 0 0 10 0 0", "", Rechteck(6, 6, 9, 9), 0, false},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.name);
        const Polygonmenge a = Polygon(f.a, f.aInnen);
        const Polygonmenge b = Polygon(f.b);
        EXPECT_EQ(KönnenSichTreffen(a, *BoxVon(a), b, *BoxVon(b)), f.treffen);
        EXPECT_EQ(KönnenSichTreffen(b, *BoxVon(b), a, *BoxVon(a)), f.treffen);
        EXPECT_NEAR(Schneiden(Schnittpolygon(a), Schnittpolygon(b)).fläche, f.fläche, 1e-6);
    }
    // Holes of the result come with the opposite sign: the signed sum is the net area.
    const Schnitt loch = Schneiden(Schnittpolygon(Polygon(Rechteck(0, 0, 10, 10), Rechteck(4, 4, 6, 6))),
                                   Schnittpolygon(Polygon(Rechteck(1, 1, 9, 9))));
    ASSERT_EQ(loch.ringe.size(), 2u);
    EXPECT_NEAR(loch.fläche, 60, 1e-9);
    EXPECT_LT(RingFlaeche(loch.ringe[0]) * RingFlaeche(loch.ringe[1]), 0);
}

TEST(Flächenindex, FindetGenauDieÜberlappendenBoxenInZeilenfolge) {
    std::mt19937 zufall(7);
    std::uniform_real_distribution<double> ort(0, 1000), größe(0, 80);
    std::vector<std::optional<Box>> boxen;
    for (int i = 0; i < 2000; ++i) {
        const double x = ort(zufall), y = ort(zufall);
        boxen.push_back(i % 97 == 0 ? std::nullopt : std::optional<Box>(Box{x, y, x + größe(zufall), y + größe(zufall)}));
    }
    boxen.push_back(Box{-50, -50, 1100, 1100}); // one that covers everything
    const Flächenindex index(boxen);
    for (int q = 0; q < 300; ++q) {
        const double x = ort(zufall) - 100, y = ort(zufall) - 100;
        const Box anfrage{x, y, x + größe(zufall) * 2, y + größe(zufall)};
        std::vector<std::uint32_t> erwartet;
        for (std::uint32_t i = 0; i < boxen.size(); ++i)
            if (boxen[i] && boxen[i]->Überlappt(anfrage))
                erwartet.push_back(i);
        ASSERT_EQ(index.Treffer(anfrage), erwartet) << "Anfrage " << q;
    }
}

TEST(Flächenwerte, ZahlformenUndAnpassungAnDieBuchfläche) {
    EXPECT_EQ(Zahlmuster(49171, "0000000.00"), "0049171.00");
    EXPECT_EQ(Zahlmuster(-12.345, "0000000.00"), "-0000012.35");
    EXPECT_EQ(Zahlmuster(-0.6, "00000"), "-00001");
    EXPECT_EQ(Zahlmuster(-0.04, "0.0"), "0.0");
    EXPECT_EQ(Zahlmuster(35.5, "000"), "036");
    EXPECT_EQ(ZahlGerundet(930.84999, 1), "930.8");
    EXPECT_EQ(ZahlGerundet(1227.0, 1), "1227");

    using enum Flächenspalte;
    Flächenwerte w;
    w.Beginnen(800);
    w.Nutzung({"AX_Wald", "Laubholz", "32000", std::nullopt, std::string("1100")}, 600);
    w.Nutzung({"AX_Weg", "Fußweg", "22000", std::string("5220"), std::nullopt}, 200);
    w.Bodenschätzung({"3000", "3100", "", "", "", "Gr", "L", "", "", "", "40", "36"}, 800);
    EXPECT_EQ(w[AlkisNA], "AX_Wald 600; AX_Weg 200");
    EXPECT_EQ(w[KL_funktion], "; 5220");
    EXPECT_EQ(w[KL_vegetationsmerkmal], "1100; ");
    EXPECT_EQ(w[BS_Bodenschaetzung], "Gr 800");
    EXPECT_EQ(w[BS_Ertragsmesszahl], "288");
    FlächenAnpassen(w, 804);
    EXPECT_EQ(w[AlkisNaFlaeche], "603; 201");
    EXPECT_EQ(w[AlkisNA], "AX_Wald 603; AX_Weg 201");
    EXPECT_EQ(w[AlkisNAFlaechenDifferenz], "0000000.00");
    EXPECT_EQ(w[AlkisAmtlichFlaechenDifferenz], "-00004m² --> -0.5%");
    EXPECT_EQ(w[BS_OriFlaeche], "800");
    EXPECT_EQ(w[BS_Flaeche], "804");
    EXPECT_EQ(w[BS_Ertragsmesszahl], "289");
    EXPECT_EQ(w[AlkisBSFlaechenDifferenz], "0000000.00");

    Flächenwerte leer;
    leer.Beginnen(500);
    FlächenAnpassen(leer, 500);
    for (Flächenspalte s : {AlkisNAFlaechenDifferenz, AlkisAmtlichFlaechenDifferenz, AlkisBSFlaechenDifferenz})
        EXPECT_EQ(leer[s], OhneVerteilung);
}

// ---- the walk over a small district -----------------------------------------------------------

struct Fläche {
    std::string klasse, außen, innen = "", bögen = "", attribut = "";
};

/// A NAS object database of parcels and class polygons, the walk, and what it left.
class Verschneidungslauf : public ::testing::Test {
protected:
    void SetUp() override {
        db = std::make_unique<Datenbank>(ordner / "nas.sqlite");
        db->AusführenNativ("PRAGMA synchronous = OFF");
        db->AusführenNativ("CREATE TABLE AX_Flurstueck (id TEXT, flurstueckskennzeichen TEXT, "
                           "\"flurstuecksnummer/AX_Flurstuecksnummer/zaehler\" TEXT, "
                           "\"flurstuecksnummer/AX_Flurstuecksnummer/nenner\" TEXT, amtlicheFlaeche TEXT, "
                           "\"gml:exterior\" TEXT, \"gml:interior\" TEXT, \"gml:Arc\" TEXT)");
        db->AusführenNativ("CREATE TABLE AX_Person (id TEXT)");
        db->AusführenNativ("INSERT INTO AX_Person VALUES ('p')");
    }

    void Flurstück(int nr, const std::string& außen, const std::string& amtlich, const std::string& innen = "",
                   const std::string& bögen = "") {
        Anweisung a = db->VorbereitenNativ("INSERT INTO AX_Flurstueck VALUES (?, ?, ?, '', ?, ?, ?, ?)");
        a.Binde("F" + std::to_string(nr)).Binde(Kennzeichen(nr)).Binde(std::to_string(nr)).Binde(amtlich)
            .Binde(außen).Binde(innen).Binde(bögen);
        a.Schritt();
    }
    static std::string Kennzeichen(int nr) { return "0725660010000" + std::to_string(nr) + "000000"; }

    void Klassenfläche(const Fläche& f) {
        const std::string spalte = f.klasse == "AX_Bodenschaetzung" ? "kulturart"
                                   : f.klasse == "AX_BauRaumOderBodenordnungsrecht" ? "bezeichnung"
                                                                                    : "vegetationsmerkmal";
        if (!db->TabelleVorhanden(f.klasse))
            db->AusführenNativ("CREATE TABLE " + f.klasse + " (id TEXT, " + spalte +
                               " TEXT, ackerzahlOderGruenlandzahl TEXT, artDerFestlegung TEXT, "
                               "\"gml:exterior\" TEXT, \"gml:interior\" TEXT, \"gml:Arc\" TEXT)");
        Anweisung a = db->VorbereitenNativ("INSERT INTO " + f.klasse + " VALUES ('n', ?, '50', 'Baulast', ?, ?, ?)");
        a.Binde(f.attribut).Binde(f.außen).Binde(f.innen).Binde(f.bögen);
        a.Schritt();
    }

    /// Runs the walk with the options; the protocol file's lines as UTF-8.
    std::string Laufen(NasOptionen optionen, const fs::path& zeichnungen = {}) {
        Flächenauftrag auftrag;
        auftrag.optionen = optionen;
        auftrag.konfigOrdner = Konfig;
        auftrag.zeichnungsordner = zeichnungen;
        {
            NasProtokoll protokoll(ui, ordner / "lauf.prn");
            ergebnis = Flächenverschneidung(*db, auftrag, protokoll, ui, bericht);
        }
        return Cp1252NachUtf8(test::DateiLesen(ordner / "lauf.prn"));
    }

    std::string Wert(int nr, std::string_view spalte) {
        Anweisung a = db->VorbereitenNativ("SELECT " + Bezeichner(spalte) +
                                           " FROM AX_Flurstueck WHERE flurstueckskennzeichen = ?");
        a.Binde(Kennzeichen(nr));
        return a.Schritt() ? std::string(a.Text(0)) : "<keine Zeile>";
    }

    static NasOptionen Alle(bool anpassung = false) {
        NasOptionen o;
        o.mitNaBerechnung = true;
        o.mitFlächenAnpassung = anpassung;
        o.svgLöschen = true;
        return o;
    }

    test::TempOrdner ordner;
    std::unique_ptr<Datenbank> db;
    SkriptOberfläche ui;
    Flächenbericht bericht;
    Ergebnis ergebnis = Ergebnis::Ok();
};

TEST_F(Verschneidungslauf, RandfälleDerVerschneidung) {
    // 1: equal to a Wald polygon: no intersection needed. 2: cut by Landwirtschaft and Wald,
    // the Wald piece of 0.004 m² dropped. 3: has a hole. 4: an arc in its ring. 5: no use at all.
    Flurstück(1, Rechteck(0, 0, 20, 40), "800");
    Flurstück(2, Rechteck(20, 0, 40, 40), "804");
    Flurstück(3, Rechteck(100, 0, 120, 20), "300", Rechteck(105, 5, 115, 15));
    Flurstück(4, "200 0 220 0 224 10 220 20 200 20 200 0", "455", "", "220 0 224 10 220 20");
    Flurstück(5, Rechteck(500, 500, 510, 510), "100");
    Klassenfläche({"AX_Wald", Rechteck(0, 0, 20, 40), "", "", "1100"});
    Klassenfläche({"AX_Wald", Rechteck(39.998, 0, 60, 2), "", "", "1100"});
    Klassenfläche({"AX_Landwirtschaft", Rechteck(20, 0, 40, 40), "", "", "1020"});
    Klassenfläche({"AX_Landwirtschaft", Rechteck(90, -10, 130, 30), "", "", "1010"});
    Klassenfläche({"AX_Landwirtschaft", "190 -10 240 -10 240 30 190 30 190 -10", "", "", "1010"});
    const std::string protokoll = Laufen(Alle());
    ASSERT_TRUE(ergebnis);

    EXPECT_EQ(Wert(1, "AlkisNA"), "AX_Wald 800");
    EXPECT_EQ(Wert(1, "AlkisNaBeschreibung"), "Laubholz");
    EXPECT_EQ(Wert(1, "AlkisOriNA"), "32000");
    EXPECT_NE(protokoll.find("FKZ: " + Kennzeichen(1) + "; AX_Wald lfd.Nr. 0001; Fläche: 800; Umring ALKIS = Umring NA"),
              std::string::npos);
    EXPECT_EQ(Wert(2, "AlkisNA"), "AX_Landwirtschaft 800") << "0.004 m² of Wald is below the minimum";
    EXPECT_EQ(Wert(2, "AlkisNaBeschreibung"), "Grünland");
    EXPECT_EQ(Wert(3, "AlkisFlaeche"), "0000300.00");
    EXPECT_EQ(Wert(3, "AlkisNA"), "AX_Landwirtschaft 300");
    const double bogenfläche = ZahlLesen(Wert(4, "AlkisFlaeche"));
    EXPECT_GT(bogenfläche, 400 + 2.0 / 3 * 20 * 4 - 0.5) << "the arc's segment adds about 2/3 · chord · height";
    EXPECT_NEAR(ZahlLesen(Wert(4, "AlkisNaFlaeche")), bogenfläche, 0.01);
    EXPECT_EQ(Wert(5, "AlkisNA"), "");
    EXPECT_NE(protokoll.find("Info: Flst. " + Kennzeichen(5) + " ohne Verschneidung"), std::string::npos);
    EXPECT_EQ(bericht.gleicheUmringe, 2) << "parcels 1 and 2 equal their polygons";
    EXPECT_EQ(bericht.ohneVerschneidung, 1);

    // Used up polygons carry the key of the parcel that used them up and are not tried again.
    Anweisung a = db->VorbereitenNativ("SELECT checkFullNA, checkAlkisGesamtFlaeche, checkAlkisSummeTeilFlaechen "
                                       "FROM AX_Wald ORDER BY rowid");
    ASSERT_TRUE(a.Schritt());
    EXPECT_EQ(a.Text(0), "True " + Kennzeichen(1));
    EXPECT_EQ(a.Text(1), "800");
    ASSERT_TRUE(a.Schritt());
    EXPECT_EQ(a.Text(0), "") << "the sliver polygon stays";
    EXPECT_EQ(a.Text(2), "0");
}

TEST_F(Verschneidungslauf, VerbrauchtePolygoneWerdenNichtNochmalsGeschnitten) {
    // Three parcels side by side inside one polygon's box: the polygon covers only the first.
    for (int i = 0; i < 3; ++i)
        Flurstück(i + 1, Rechteck(i * 10.0, 0, i * 10.0 + 10, 10), "100");
    Klassenfläche({"AX_Wald", Rechteck(0, 0, 10, 10) , "", "", "1100"});
    Klassenfläche({"AX_Landwirtschaft", "0 0 30 0 30 10 0 10 0 0", "", "", "1010"});
    Laufen(Alle());
    EXPECT_EQ(Wert(1, "AlkisNA"), "AX_Landwirtschaft 100; AX_Wald 100")
        << "the classes in the order of the list; overlapping polygons both count";
    EXPECT_EQ(Wert(3, "AlkisNA"), "AX_Landwirtschaft 100");
    // Parcel 1 used up the Wald polygon: parcels 2 and 3 touch its box but never reach Clipper with it.
    EXPECT_EQ(bericht.schnitte, 3) << "only the Landwirtschaft polygon is cut, once per parcel";
}

TEST_F(Verschneidungslauf, BodenschätzungSonderflächeUndAnpassung) {
    Flurstück(1, Rechteck(0, 0, 20, 40), "804");
    Klassenfläche({"AX_Bodenschaetzung", Rechteck(0, 0, 20, 20), "", "", "1000"});
    Klassenfläche({"AX_Bodenschaetzung", Rechteck(0, 20, 20, 40), "", "", "3000"});
    Klassenfläche({"AX_BauRaumOderBodenordnungsrecht", Rechteck(-5, -5, 25, 45), "", "", "Umlegung 12"});
    Klassenfläche({"AX_BauRaumOderBodenordnungsrecht", Rechteck(-5, -5, 25, 45), "", "", "zweite"});
    Klassenfläche({"AX_Landwirtschaft", Rechteck(0, 0, 20, 40), "", "", "1010"});
    Laufen(Alle(true));
    EXPECT_EQ(Wert(1, "BS_Bodenschaetzung"), "A 400; Gr 400");
    EXPECT_EQ(Wert(1, "BS_OriFlaeche"), "400; 400");
    EXPECT_EQ(Wert(1, "BS_Flaeche"), "402; 402");
    EXPECT_EQ(Wert(1, "BS_Ertragsmesszahl"), "201; 201");
    EXPECT_EQ(Wert(1, "BS_GesamtErtragsmesszahl"), "402");
    EXPECT_EQ(Wert(1, "BS_AzMittel"), "050");
    EXPECT_EQ(Wert(1, "INFO_BauRaumOderBodenordnungsrecht"), "Umlegung 12; Baulast")
        << "once filled, the remaining rows of the parcel are passed over";
    EXPECT_EQ(Wert(1, "AlkisNA"), "AX_Landwirtschaft 804") << "fitted to the official area";
    EXPECT_EQ(Wert(1, "AlkisAmtlichFlaechenDifferenz"), "-00004m² --> -0.5%");
}

TEST_F(Verschneidungslauf, SchlechteGeometrieGibtProtokollzeilenUndDerLaufGehtWeiter) {
    Flurstück(1, "0 0 10 0 10 10 0 10", "100");       // not closed
    Flurstück(2, "0 20 10 30 10 20 0 30 0 20", "0");   // a bow tie
    Flurstück(3, "", "50");                           // no geometry
    std::string riesig;
    for (int i = 0; i < 100000; ++i) {
        const double w = 2 * M_PI * i / 100000;
        riesig += std::to_string(5 + 50 * std::cos(w)) + " " + std::to_string(5 + 50 * std::sin(w)) + " ";
    }
    Flurstück(4, riesig + std::to_string(55.0) + " " + std::to_string(5.0), "7854");
    Klassenfläche({"AX_Landwirtschaft", Rechteck(-100, -100, 100, 100), "", "", "1010"});
    db->AusführenNativ("CREATE TABLE AX_Wald (id TEXT)");
    db->AusführenNativ("ALTER TABLE AX_Flurstueck ADD COLUMN eigene TEXT");
    db->AusführenNativ("UPDATE AX_Flurstueck SET eigene = 'bleibt'");
    const std::string protokoll = Laufen(Alle());
    ASSERT_TRUE(ergebnis);
    EXPECT_NE(protokoll.find("Flst.: " + Kennzeichen(1) + " Ring nicht geschlossen"), std::string::npos);
    EXPECT_NE(protokoll.find("Flst.: " + Kennzeichen(3) + " ohne Geometrie"), std::string::npos);
    EXPECT_NE(protokoll.find("Tabelle \"AX_Wald\" ohne Geometriespalten, übergangen"), std::string::npos);
    EXPECT_EQ(Wert(1, "AlkisNA"), "AX_Landwirtschaft 100");
    EXPECT_FALSE(Wert(2, "AlkisNA").empty()) << "the non-zero rule fills both loops of the bow tie";
    EXPECT_NEAR(ZahlLesen(Wert(4, "AlkisNaFlaeche")), M_PI * 2500, 1);
    for (int nr = 1; nr <= 4; ++nr)
        EXPECT_EQ(Wert(nr, "eigene"), "bleibt");
}

TEST_F(Verschneidungslauf, ZeichnungenUndAustauschdateienAufWunsch) {
    Flurstück(1, Rechteck(0, 0, 20, 40), "800");
    Klassenfläche({"AX_Landwirtschaft", Rechteck(10, 10, 30, 30), "", "", "1010"});
    NasOptionen o = Alle();
    o.svgLöschen = false;
    test::DateiSchreiben(ordner / "zeichnungen" / "alt.svg", "<svg/>");
    Laufen(o, ordner / "zeichnungen");
    EXPECT_FALSE(fs::exists(ordner / "zeichnungen" / "alt.svg")) << "old drawings go at the start";
    const fs::path stamm = ordner / "zeichnungen" / "1-_AX_Landwirtschaft_Nr.1";
    EXPECT_TRUE(fs::exists(stamm.string() + ".svg"));
    // What the program wrote reads back as the rings of the intersection.
    const auto gelesen = ClpLesen(stamm.string() + "_solution.txt");
    const Schnitt schnitt = Schneiden(Schnittpolygon(Polygon(Rechteck(0, 0, 20, 40))),
                                      Schnittpolygon(Polygon(Rechteck(10, 10, 30, 30))));
    ASSERT_EQ(gelesen.size(), schnitt.ringe.size());
    EXPECT_EQ(gelesen[0].punkte, schnitt.ringe[0].punkte);
    EXPECT_NEAR(RingFlaeche(gelesen), 200, 1e-9);
}

TEST_F(Verschneidungslauf, FragenUndAbbruch) {
    Flurstück(1, Rechteck(0, 0, 10, 10), "100");
    Flurstück(2, Rechteck(10, 0, 20, 10), "100");
    Klassenfläche({"AX_Landwirtschaft", Rechteck(0, 0, 20, 10), "", "", "1010"});
    db->AusführenNativ("DELETE FROM AX_Person");
    ui.Antworten({Antwort::Nein, Antwort::Ja});
    ui.Abbrechen();
    const std::string protokoll = Laufen(Alle());
    EXPECT_EQ(ui.Fragen(), (std::vector<std::string>{"Keine Eigentümerdaten vorhanden! Zuordnung abbrechen?   ",
                                                     "Wollen Sie die Berechnungen wirklich abbrechen?   "}));
    EXPECT_TRUE(bericht.abgebrochen);
    EXPECT_EQ(bericht.flurstücke, 0);
    EXPECT_NE(protokoll.find(", Abbruch Flächenverschneidung"), std::string::npos);

    SkriptOberfläche frage;
    EXPECT_TRUE(AuswahlNaBerechnung(frage, 12));
    EXPECT_EQ(frage.Fragen().front(), "Sollen für 12 Flurstücke zusätzlich Flächenverschneidungen durchgeführt werden?   ");
}

// ---- the recoding into the land-use catalogue and its file ------------------------------------

TEST(NaAnpassung2019, SchlüsselWerdenGruppenMitFläche) {
    Kataster k;
    for (const char* s : {"NA-Schlüssel", "Nutzungsart"})
        k.SpalteHinzufügen(KatasterSpalte(s, s));
    k.ZeileHinzufügen("31000; 99999; 33000\tLandwirtschaft (Grünland)=930.8; X (y)=5; Gehoelz (Gehölz)=1419.25");
    k.ZeileHinzufügen("\tWald (Laubholz)=10");
    SkriptOberfläche ui;
    EXPECT_EQ(NaAnpassung2019(k, KonfigText(Konfig / "ALKIS_Nutzungsart.dat"), ui), 1u);
    EXPECT_EQ(k.Zelle(0, "NA-2019"), "Landwirtschaft (Vegetation)=930.80; Gehölz (Vegetation)=1419.25");
    EXPECT_EQ(k.Zelle(1, "NA-2019"), "");
}

TEST(NutzungsartDatei, IstAusDenWertelistenErzeugt) {
    const fs::path liste = test::GemeinsameTestdaten() / "alkis-codelists" / "alkis-wertearten-gid6.csv";
    if (!fs::exists(liste) || !test::ImSuchpfad("python3"))
        GTEST_SKIP() << "Werteliste oder python3 fehlt: " << liste;
    test::TempOrdner ordner;
    const auto lauf = test::Ausführen("python3 " + test::Wort(Konfig / "nutzungsart_erzeugen.py") + " " +
                                      test::Wort(liste) + " " + test::Wort(ordner / "n.dat"));
    ASSERT_EQ(lauf.status, 0);
    EXPECT_EQ(test::DateiLesen(ordner / "n.dat"), test::DateiLesen(Konfig / "ALKIS_Nutzungsart.dat"));
}

} // namespace
} // namespace flurix::nas
