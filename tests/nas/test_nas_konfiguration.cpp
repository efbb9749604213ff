// The configuration files of the NAS import as an installation ships them: their encoding, their
// line forms, and that they declare everything the object database, the compilation and the
// area computation read by name.

#include "core/cp1252.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace flurix {
namespace {

const std::filesystem::path Konfig = FLURIX_QUELLEN "/config";

std::string Trimmen(std::string_view text) {
    const auto anfang = text.find_first_not_of(" \t");
    if (anfang == std::string_view::npos)
        return {};
    return std::string(text.substr(anfang, text.find_last_not_of(" \t") - anfang + 1));
}

// The lines of a shipped file as UTF-8, CR LF removed.
std::vector<std::string> Zeilen(const std::string& datei) {
    const std::string text = Cp1252NachUtf8(test::DateiLesen(Konfig / datei));
    std::vector<std::string> zeilen;
    std::size_t anfang = 0;
    while (anfang < text.size()) {
        auto ende = text.find("\r\n", anfang);
        if (ende == std::string::npos)
            ende = text.size();
        zeilen.push_back(text.substr(anfang, ende - anfang));
        anfang = ende + 2;
    }
    return zeilen;
}

// The lines that are not comments, tabs removed and blanks trimmed, as the readers see them.
std::vector<std::string> Datenzeilen(const std::string& datei) {
    std::vector<std::string> daten;
    for (std::string zeile : Zeilen(datei)) {
        std::erase(zeile, '\t');
        zeile = Trimmen(zeile);
        if (!zeile.empty() && zeile[0] != '*')
            daten.push_back(zeile);
    }
    return daten;
}

std::vector<std::string> Teilen(const std::string& text, const std::string& trenner) {
    std::vector<std::string> teile;
    std::size_t anfang = 0;
    for (;;) {
        const auto pos = text.find(trenner, anfang);
        teile.push_back(Trimmen(text.substr(anfang, pos - anfang)));
        if (pos == std::string::npos)
            return teile;
        anfang = pos + trenner.size();
    }
}

std::size_t Vorkommen(const std::string& text, const std::string& teil) {
    std::size_t anzahl = 0;
    for (auto pos = text.find(teil); pos != std::string::npos; pos = text.find(teil, pos + 1))
        ++anzahl;
    return anzahl;
}

const std::vector<std::string> Dateien = {"ALKIS_Knoten.dat", "ALKIS_Werteart.dat", "ALKIS_EPSG.dat",
                                          "ALKIS_Amtsgerichte.dat", "ALKIS_Zuordnung.dat"};

// --- all five files -------------------------------------------------------------------------

TEST(NasKonfiguration, Windows1252MitCrLf) {
    for (const std::string& datei : Dateien) {
        const std::string bytes = test::DateiLesen(Konfig / datei);
        ASSERT_FALSE(bytes.empty()) << datei;
        bool achtBit = false;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const auto b = static_cast<unsigned char>(bytes[i]);
            achtBit = achtBit || b >= 0x80;
            // Bytes that Windows-1252 leaves unassigned.
            EXPECT_TRUE(b != 0x81 && b != 0x8D && b != 0x8F && b != 0x90 && b != 0x9D)
                << datei << ": Byte " << int(b) << " an Stelle " << i;
            if (b == '\n') {
                EXPECT_TRUE(i > 0 && bytes[i - 1] == '\r') << datei << ": LF ohne CR an " << i;
            }
            if (b == '\r') {
                EXPECT_TRUE(i + 1 < bytes.size() && bytes[i + 1] == '\n')
                    << datei << ": CR ohne LF an " << i;
            }
        }
        EXPECT_TRUE(bytes.ends_with("\r\n")) << datei;
        // Umlauts saved as UTF-8 would read as two wrong letters each.
        if (achtBit) {
            EXPECT_FALSE(IstGültigesUtf8(bytes)) << datei << " ist als UTF-8 gespeichert";
        }
        EXPECT_TRUE(Zeilen(datei).front().starts_with("*")) << datei << " beginnt ohne Kopf";
    }
}

// --- ALKIS_Knoten.dat -----------------------------------------------------------------------

struct Feld {
    std::string links; ///< the left side as written
    int typ = 0;
};
struct Klasse {
    bool mitKennung = false;
    std::vector<Feld> felder;
};
struct Knoten {
    std::vector<std::string> kopf; ///< the lines before the first class
    std::map<std::string, Klasse> klassen;
    std::vector<std::string> reihenfolge;
    std::vector<std::string> fehler; ///< lines of no known form
};

Knoten KnotenLesen() {
    Knoten k;
    std::string klasse;
    for (const std::string& zeile : Datenzeilen("ALKIS_Knoten.dat")) {
        if (zeile.starts_with("<")) {
            klasse = zeile.substr(1);
            if (k.klassen.contains(klasse))
                k.fehler.push_back("Objektart doppelt: " + zeile);
            k.klassen[klasse];
            k.reihenfolge.push_back(klasse);
        } else if (klasse.empty()) {
            k.kopf.push_back(zeile);
        } else if (zeile == klasse + "@gml:id") {
            k.klassen[klasse].mitKennung = true;
        } else {
            const auto teile = Teilen(zeile, "=");
            int typ = 0;
            if (teile.size() == 2 && !teile[0].empty() && (teile[1] == "10" || teile[1] == "12"))
                typ = std::stoi(teile[1]);
            else
                k.fehler.push_back(klasse + ": " + zeile);
            k.klassen[klasse].felder.push_back({teile[0], typ});
        }
    }
    return k;
}

std::set<std::string> Spalten(const Klasse& klasse) {
    std::set<std::string> spalten;
    for (const Feld& feld : klasse.felder)
        if (feld.links.find('@') == std::string::npos)
            spalten.insert(feld.links);
    return spalten;
}

// The land-use classes the area computation intersects.
const std::vector<std::string> Nutzungsarten = {
    "AX_Wohnbauflaeche", "AX_IndustrieUndGewerbeflaeche", "AX_Halde", "AX_Bergbaubetrieb",
    "AX_TagebauGrubeSteinbruch", "AX_FlaecheGemischterNutzung",
    "AX_FlaecheBesondererFunktionalerPraegung", "AX_SportFreizeitUndErholungsflaeche",
    "AX_Friedhof", "AX_Strassenverkehr", "AX_Weg", "AX_Platz", "AX_Bahnverkehr", "AX_Flugverkehr",
    "AX_Schiffsverkehr", "AX_Landwirtschaft", "AX_Wald", "AX_Gehoelz", "AX_Heide", "AX_Moor",
    "AX_Sumpf", "AX_UnlandVegetationsloseFlaeche", "AX_Fliessgewaesser", "AX_Hafenbecken",
    "AX_StehendesGewaesser", "AX_Meer", "AX_UnkultivierteFlaeche"};

TEST(AlkisKnoten, KopfzeilenUndZeilenformen) {
    const Knoten k = KnotenLesen();
    EXPECT_EQ(k.kopf, (std::vector<std::string>{"XMLBaumTree = gml:featureMember;wfs:member",
                                                "XMLBaum = /TypNameAX_Bestandsdatenauszug"}));
    EXPECT_TRUE(k.fehler.empty()) << ::testing::PrintToString(k.fehler);
    for (const auto& [name, klasse] : k.klassen) {
        // Every class but the one the program writes itself is keyed by its gml:id.
        EXPECT_EQ(klasse.mitKennung, name != "Antragsbeschreibung") << name;
        EXPECT_FALSE(klasse.felder.empty()) << name;
    }
}

TEST(AlkisKnoten, KeineZeileDoppeltInEinerObjektart) {
    const Knoten k = KnotenLesen();
    for (const auto& [name, klasse] : k.klassen) {
        std::set<std::string> gesehen;
        for (const Feld& feld : klasse.felder)
            EXPECT_TRUE(gesehen.insert(feld.links).second) << name << ": " << feld.links;
    }
}

TEST(AlkisKnoten, GeometrieUndLangeListenAlsMemo) {
    const std::set<std::string> geometrie = {"position", "gml:exterior", "gml:interior",
                                             "gml:LineStringSegment", "gml:Arc"};
    // Relations that collect every reference of a feature in one row, joined with "; ".
    const std::set<std::string> listen = {"weistAuf@xlink:href@ori_LagebezeichnungMitHausnummer",
                                          "zeigtAuf@xlink:href@ori_LagebezeichnungOhneHausnummer",
                                          "an@xlink:href@ori_Buchungsstelle"};
    const Knoten k = KnotenLesen();
    for (const auto& [name, klasse] : k.klassen)
        for (const Feld& feld : klasse.felder)
            if (geometrie.contains(feld.links) || listen.contains(feld.links)) {
                EXPECT_EQ(feld.typ, 12) << name << ": " << feld.links;
            }
}

TEST(AlkisKnoten, SpaltenDieAnreicherungZusammenstellungUndFlaechenLesen) {
    const std::set<std::string> flaeche = {"gml:exterior", "gml:interior", "gml:Arc"};
    // The list lies in tests/daten/nas/knoten_gelesene_spalten.txt, one class a line.
    std::map<std::string, std::set<std::string>> verlangt;
    for (const std::string& zeile :
         Teilen(test::DateiLesen(test::Testdaten() / "nas" / "knoten_gelesene_spalten.txt"), "\n")) {
        if (zeile.empty() || zeile.starts_with('#'))
            continue;
        const auto doppelpunkt = zeile.find(": ");
        for (const std::string& spalte : Teilen(zeile.substr(doppelpunkt + 2), ","))
            verlangt[zeile.substr(0, doppelpunkt)].insert(spalte);
    }
    ASSERT_EQ(verlangt.size(), 24u) << "Liste nicht gelesen";
    for (const std::string& nutzung : Nutzungsarten)
        verlangt[nutzung] = flaeche;

    const Knoten k = KnotenLesen();
    for (const auto& [objektart, spalten] : verlangt) {
        const auto it = k.klassen.find(objektart);
        ASSERT_NE(it, k.klassen.end()) << objektart;
        const auto vorhanden = Spalten(it->second);
        for (const std::string& spalte : spalten)
            EXPECT_TRUE(vorhanden.contains(spalte)) << objektart << ": " << spalte;
    }
}

TEST(AlkisKnoten, NutzungsartenHabenIhrenSchluessel) {
    // The area computation takes funktion, else vegetationsmerkmal; a class that has either in
    // the catalogue must declare it, or its areas come out without a name.
    const std::map<std::string, std::string> schlüssel = {
        {"AX_Landwirtschaft", "vegetationsmerkmal"}, {"AX_Wald", "vegetationsmerkmal"},
        {"AX_Gehoelz", "funktion"},                 {"AX_Strassenverkehr", "funktion"},
        {"AX_Weg", "funktion"},                     {"AX_Fliessgewaesser", "funktion"},
        {"AX_FlaecheGemischterNutzung", "funktion"}, {"AX_SportFreizeitUndErholungsflaeche", "funktion"},
    };
    const Knoten k = KnotenLesen();
    for (const auto& [objektart, attribut] : schlüssel)
        EXPECT_TRUE(Spalten(k.klassen.at(objektart)).contains(attribut)) << objektart;
    // A class without a code has neither column, so that it gets the code 0.
    for (const std::string objektart : {"AX_Wohnbauflaeche", "AX_Heide", "AX_Moor", "AX_Sumpf"}) {
        const auto spalten = Spalten(k.klassen.at(objektart));
        EXPECT_FALSE(spalten.contains("funktion") || spalten.contains("vegetationsmerkmal"))
            << objektart;
    }
}

// --- ALKIS_Werteart.dat ---------------------------------------------------------------------

// The pairs the enrichment replaces in the tables, and those the area computation looks up.
const std::vector<std::string> Wertepaare = {
    "AX_Person = anrede",
    "AX_Namensnummer = artDerRechtsgemeinschaft",
    "AX_Namensnummer = eigentuemerart",
    "AX_Buchungsblatt = blattart",
    "AX_Buchungsstelle = buchungsart",
    "AX_BauRaumOderBodenordnungsrecht = artDerFestlegung",
    "AX_Bodenschaetzung = bodenart",
    "AX_Bodenschaetzung = kulturart",
    "AX_Bodenschaetzung = zustandsstufeOderBodenstufe",
    "AX_Bodenschaetzung = entstehungsartOderKlimastufeWasserverhaeltnisse",
    "AX_Bodenschaetzung = sonstigeAngaben",
    "AX_Landwirtschaft = vegetationsmerkmal",
    "AX_Wald = vegetationsmerkmal",
    "AX_Strassenverkehr = funktion",
};

TEST(AlkisWerteart, ZeilenformUndEindeutigeSchluessel) {
    std::set<std::string> schlüssel;
    for (const std::string& zeile : Datenzeilen("ALKIS_Werteart.dat")) {
        const auto teile = Teilen(zeile, " = ");
        ASSERT_EQ(teile.size(), 4u) << zeile;
        for (const std::string& teil : teile)
            EXPECT_FALSE(teil.empty()) << zeile;
        EXPECT_TRUE(std::regex_match(teile[2], std::regex("[0-9]{3,4}"))) << zeile;
        // The text goes into a list joined with ";" and into a quoted SQL string.
        EXPECT_EQ(teile[3].find_first_of(";\"="), std::string::npos) << zeile;
        EXPECT_TRUE(schlüssel.insert(teile[0] + " = " + teile[1] + " = " + teile[2]).second)
            << zeile;
    }
}

TEST(AlkisWerteart, PaareVorhandenUndZusammenhaengend) {
    const std::vector<std::string> zeilen = Zeilen("ALKIS_Werteart.dat");
    std::string ganz;
    for (const std::string& zeile : zeilen)
        ganz += zeile + "\r\n";
    for (const std::string& paar : Wertepaare) {
        std::optional<std::size_t> erste, letzte;
        std::size_t anzahl = 0;
        for (std::size_t i = 0; i < zeilen.size(); ++i)
            if (zeilen[i].starts_with(paar + " = ")) {
                if (!erste)
                    erste = i;
                letzte = i;
                ++anzahl;
            }
        ASSERT_TRUE(erste) << paar;
        EXPECT_EQ(*letzte - *erste + 1, anzahl) << paar << ": Zeilen nicht beisammen";
        // The list of a pair is cut from the text wherever the pair occurs: no comment and no
        // other line may hold it.
        EXPECT_EQ(Vorkommen(ganz, paar), anzahl) << paar;
    }
}

TEST(AlkisWerteart, KurzzeichenDerBodenschaetzung) {
    std::map<std::string, std::string> text;
    for (const std::string& zeile : Datenzeilen("ALKIS_Werteart.dat")) {
        const auto teile = Teilen(zeile, " = ");
        text[teile[0] + ";" + teile[1] + ";" + teile[2]] = teile[3];
    }
    ASSERT_TRUE(text.contains("AX_Bodenschaetzung;bodenart;1200"));
    // The soil assessment writes the notation ("L 4 V"), not the long description.
    struct Fall {
        std::string schlüssel, erwartet;
    };
    const std::vector<Fall> fälle = {
        {"AX_Bodenschaetzung;bodenart;1200", "Sl"},
        {"AX_Bodenschaetzung;bodenart;7120", "S/L"},
        {"AX_Bodenschaetzung;kulturart;1000", "A"},
        {"AX_Bodenschaetzung;zustandsstufeOderBodenstufe;3200", "(III)"},
        {"AX_Bodenschaetzung;entstehungsartOderKlimastufeWasserverhaeltnisse;4000", "V"},
        {"AX_Bodenschaetzung;entstehungsartOderKlimastufeWasserverhaeltnisse;7530", "3+4"},
        {"AX_Bodenschaetzung;sonstigeAngaben;2600", "G"},
        {"AX_Person;anrede;2000", "Herr"},
    };
    for (const Fall& fall : fälle)
        EXPECT_EQ(text[fall.schlüssel], fall.erwartet) << fall.schlüssel;
}

TEST(AlkisWerteart, SkriptErzeugtDieAusgelieferteDatei) {
    const auto liste =
        test::GemeinsameTestdaten() / "alkis-codelists" / "alkis-wertearten-gid6.csv";
    if (!std::filesystem::exists(liste))
        GTEST_SKIP() << "Liste der Wertearten fehlt: " << liste;
    if (std::system("python3 --version > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "python3 fehlt";
    test::TempOrdner ordner;
    const auto ziel = ordner / "ALKIS_Werteart.dat";
    const std::string befehl = "python3 \"" + (Konfig / "werteart_erzeugen.py").string() +
                               "\" \"" + liste.string() + "\" \"" + ziel.string() +
                               "\" > /dev/null";
    ASSERT_EQ(std::system(befehl.c_str()), 0) << befehl;
    EXPECT_EQ(test::DateiLesen(ziel), test::DateiLesen(Konfig / "ALKIS_Werteart.dat"));
}

// --- ALKIS_EPSG.dat -------------------------------------------------------------------------

struct EpsgZeile {
    std::string name, wert;
};

std::vector<EpsgZeile> EpsgLesen() {
    std::vector<EpsgZeile> zeilen;
    for (const std::string& zeile : Datenzeilen("ALKIS_EPSG.dat")) {
        const auto teile = Teilen(zeile, "=");
        EXPECT_EQ(teile.size(), 2u) << zeile;
        EXPECT_TRUE(std::regex_match(teile.at(1), std::regex("[0-9]{4,5}_[0-9]{1,2}"))) << zeile;
        // The lookup passes over every line that holds "*".
        EXPECT_EQ(zeile.find('*'), std::string::npos) << zeile;
        zeilen.push_back({teile.at(0), teile.at(1)});
    }
    return zeilen;
}

// The system name of a file finds the first line whose name it contains.
std::string EpsgFür(const std::vector<EpsgZeile>& zeilen, const std::string& system) {
    for (const EpsgZeile& zeile : zeilen)
        if (!zeile.name.empty() && system.find(zeile.name) != std::string::npos)
            return zeile.wert;
    return {};
}

TEST(AlkisEpsg, KeinNameStecktInEinemSpaeterenNamen) {
    const auto zeilen = EpsgLesen();
    ASSERT_FALSE(zeilen.empty());
    for (std::size_t i = 0; i < zeilen.size(); ++i)
        for (std::size_t j = i + 1; j < zeilen.size(); ++j) {
            EXPECT_EQ(zeilen[j].name.find(zeilen[i].name), std::string::npos)
                << zeilen[i].name << " vor " << zeilen[j].name;
            // The way back, from the EPSG pair to the name, uses the same rule.
            if (zeilen[i].wert != zeilen[j].wert) {
                EXPECT_EQ(zeilen[j].wert.find(zeilen[i].wert), std::string::npos)
                    << zeilen[i].wert << " vor " << zeilen[j].wert;
            }
        }
}

TEST(AlkisEpsg, SystemnamenDerDaten) {
    const auto zeilen = EpsgLesen();
    struct Fall {
        std::string system, erwartet;
    };
    const std::vector<Fall> fälle = {
        {"ETRS89_UTM32", "25832_32"},
        {"ETRS89_UTM33", "25833_33"},
        {"DE_DHDN_3GK3_NW101", "31467_3"},     // a state's variant of the strip system
        {"DE_DHDN_3GK2", "31466_2"},
        {"ETRS89_Lat-Lon-h", "4937_0"},
        {"ETRS89_Lat-Lon", "4258_0"},
        {"DE_DHHN2016_NH", "7837_0"},
        {"LOKAL_RP_UTM32101", ""},             // a local system has no EPSG code
    };
    for (const Fall& fall : fälle)
        EXPECT_EQ(EpsgFür(zeilen, fall.system), fall.erwartet) << fall.system;
    // The meridian code is the zone or strip of the name.
    for (const EpsgZeile& zeile : zeilen) {
        std::smatch treffer;
        if (std::regex_search(zeile.name, treffer, std::regex("(UTM|3GK)([0-9]+)$"))) {
            EXPECT_TRUE(zeile.wert.ends_with("_" + treffer[2].str())) << zeile.name;
        }
    }
}

// --- ALKIS_Amtsgerichte.dat -----------------------------------------------------------------

TEST(AlkisAmtsgerichte, ZeilenformUndEindeutigeSchluessel) {
    std::set<std::string> schlüssel;
    for (const std::string& zeile : Datenzeilen("ALKIS_Amtsgerichte.dat")) {
        const auto teile = Teilen(zeile, "=");
        ASSERT_EQ(teile.size(), 2u) << zeile;
        // Land (two digits) and office, without a blank, as AX_Dienststelle/schluesselGesamt.
        EXPECT_TRUE(std::regex_match(teile[0], std::regex("[0-9]{2}[0-9A-Z]{4}"))) << zeile;
        EXPECT_FALSE(teile[1].empty()) << zeile;
        EXPECT_TRUE(schlüssel.insert(teile[0]).second) << zeile;
    }
}

} // namespace
} // namespace flurix
