// The shipped configuration files of the NAS import: encoding, line forms, and everything the
// later steps read by name. Lookups in them are in test_umformungen.cpp.

#include "core/cp1252.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <algorithm>
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

std::vector<std::string> Teilen(const std::string& text, const std::string& trenner) {
    std::vector<std::string> teile;
    for (std::size_t anfang = 0;;) {
        const auto pos = text.find(trenner, anfang);
        teile.push_back(Trimmen(text.substr(anfang, pos - anfang)));
        if (pos == std::string::npos)
            return teile;
        anfang = pos + trenner.size();
    }
}

std::vector<std::string> Zeilen(const std::string& datei) {
    const std::string text = Cp1252NachUtf8(test::DateiLesen(Konfig / datei));
    std::vector<std::string> zeilen;
    for (std::size_t anfang = 0; anfang < text.size();) {
        const auto ende = std::min(text.find("\r\n", anfang), text.size());
        zeilen.push_back(text.substr(anfang, ende - anfang));
        anfang = ende + 2;
    }
    return zeilen;
}

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

std::vector<std::string> Listenzeilen(const std::string& datei) {
    std::vector<std::string> zeilen;
    for (std::string& zeile : Teilen(test::DateiLesen(test::Testdaten() / "nas" / datei), "\n"))
        if (!zeile.empty() && !zeile.starts_with('#'))
            zeilen.push_back(std::move(zeile));
    return zeilen;
}

TEST(NasKonfiguration, Windows1252MitCrLf) {
    for (const char* datei : {"ALKIS_Knoten.dat", "ALKIS_Werteart.dat", "ALKIS_EPSG.dat", "ALKIS_Amtsgerichte.dat",
                              "ALKIS_Zuordnung.dat"}) {
        SCOPED_TRACE(datei);
        const std::string bytes = test::DateiLesen(Konfig / datei);
        ASSERT_FALSE(bytes.empty());
        bool achtBit = false;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const auto b = static_cast<unsigned char>(bytes[i]);
            achtBit = achtBit || b >= 0x80;
            // Bytes that Windows-1252 leaves unassigned; CR and LF only as a pair.
            EXPECT_TRUE(b != 0x81 && b != 0x8D && b != 0x8F && b != 0x90 && b != 0x9D)
                << "Byte " << int(b) << " an " << i;
            EXPECT_TRUE(b != '\n' || (i > 0 && bytes[i - 1] == '\r')) << "LF ohne CR an " << i;
            EXPECT_TRUE(b != '\r' || (i + 1 < bytes.size() && bytes[i + 1] == '\n')) << "CR ohne LF an " << i;
        }
        EXPECT_TRUE(bytes.ends_with("\r\n"));
        EXPECT_FALSE(achtBit && IstGültigesUtf8(bytes)) << "als UTF-8 gespeichert";
        EXPECT_TRUE(Zeilen(datei).front().starts_with("*")) << "beginnt ohne Kopf";
    }
}

TEST(NasKonfiguration, ZeilenformUndEindeutigeSchlüssel) {
    struct Fall {
        const char* datei;
        const char* trenner;
        std::vector<const char*> teile; // a pattern for each part of a line
        std::size_t schlüsselteile;     // the first parts that make the key
        std::size_t mindestens;         // lines at least (the court list ships empty)
    };
    const Fall fälle[] = {
        {"ALKIS_Werteart.dat", " = ", {".+", ".+", "[0-9]{3,4}", "[^;\"=]+"}, 3, 100},
        {"ALKIS_Amtsgerichte.dat", "=", {"[0-9]{2}[0-9A-Z]{4}", ".+"}, 1, 0},
        {"ALKIS_EPSG.dat", "=", {"[^*]+", "[0-9]{4,5}_[0-9]{1,2}"}, 1, 5},
    };
    for (const auto& fall : fälle) {
        std::set<std::string> schlüssel;
        const auto zeilen = Datenzeilen(fall.datei);
        EXPECT_GE(zeilen.size(), fall.mindestens) << fall.datei;
        for (const std::string& zeile : zeilen) {
            SCOPED_TRACE(std::string(fall.datei) + ": " + zeile);
            const auto teile = Teilen(zeile, fall.trenner);
            ASSERT_EQ(teile.size(), fall.teile.size());
            std::string schlüsselText;
            for (std::size_t i = 0; i < teile.size(); ++i) {
                EXPECT_TRUE(std::regex_match(teile[i], std::regex(fall.teile[i]))) << teile[i];
                if (i < fall.schlüsselteile)
                    schlüsselText += teile[i] + "|";
            }
            EXPECT_TRUE(schlüssel.insert(schlüsselText).second) << "doppelt";
        }
    }
}

struct Feld {
    std::string links; ///< the left side as written
    int typ = 0;
};
struct Knoten {
    std::vector<std::string> kopf; ///< the lines before the first class
    std::map<std::string, std::vector<Feld>> klassen;
    std::set<std::string> mitKennung;
    std::vector<std::string> fehler; ///< lines of no known form
};

Knoten KnotenLesen() {
    Knoten k;
    std::string klasse;
    for (const std::string& zeile : Datenzeilen("ALKIS_Knoten.dat")) {
        if (zeile.starts_with("<")) {
            klasse = zeile.substr(1);
            if (!k.klassen.emplace(klasse, std::vector<Feld>{}).second)
                k.fehler.push_back("Objektart doppelt: " + zeile);
        } else if (klasse.empty()) {
            k.kopf.push_back(zeile);
        } else if (zeile == klasse + "@gml:id") {
            k.mitKennung.insert(klasse);
        } else {
            const auto teile = Teilen(zeile, "=");
            // A third part names further element paths of the same column (no relation, no geometry).
            const bool weitere = teile.size() == 3 && !teile[2].empty() && teile[0].find('@') == std::string::npos;
            const bool gut = (teile.size() == 2 || weitere) && !teile[0].empty() && (teile[1] == "10" || teile[1] == "12");
            if (!gut)
                k.fehler.push_back(klasse + ": " + zeile);
            k.klassen[klasse].push_back({teile[0], gut ? std::stoi(teile[1]) : 0});
        }
    }
    return k;
}

std::set<std::string> Spalten(const std::vector<Feld>& felder) {
    std::set<std::string> spalten;
    for (const Feld& feld : felder)
        if (feld.links.find('@') == std::string::npos)
            spalten.insert(feld.links);
    return spalten;
}

TEST(AlkisKnoten, KopfZeilenformenUndMemoFürGeometrieUndListen) {
    const Knoten k = KnotenLesen();
    EXPECT_EQ(k.kopf, (std::vector<std::string>{"XMLBaumTree = gml:featureMember;wfs:member",
                                                "XMLBaum = /TypNameAX_Bestandsdatenauszug"}));
    EXPECT_TRUE(k.fehler.empty()) << ::testing::PrintToString(k.fehler);
    const std::set<std::string> memo = {"position", "gml:exterior", "gml:interior", "gml:LineStringSegment", "gml:Arc",
                                        "weistAuf@xlink:href@ori_LagebezeichnungMitHausnummer",
                                        "zeigtAuf@xlink:href@ori_LagebezeichnungOhneHausnummer",
                                        "an@xlink:href@ori_Buchungsstelle"};
    for (const auto& [name, felder] : k.klassen) {
        EXPECT_EQ(k.mitKennung.contains(name), name != "Antragsbeschreibung") << name;
        EXPECT_FALSE(felder.empty()) << name;
        std::set<std::string> gesehen;
        for (const Feld& feld : felder) {
            EXPECT_TRUE(gesehen.insert(feld.links).second) << name << ": doppelt " << feld.links;
            EXPECT_TRUE(!memo.contains(feld.links) || feld.typ == 12) << name << ": " << feld.links;
        }
    }
}

TEST(AlkisKnoten, SpaltenDieAnreicherungZusammenstellungUndFlaechenLesen) {
    const Knoten k = KnotenLesen();
    std::size_t klassen = 0;
    for (const std::string& zeile : Listenzeilen("knoten_gelesene_spalten.txt")) {
        const auto doppelpunkt = zeile.find(": ");
        const std::string objektart = zeile.substr(0, doppelpunkt);
        ASSERT_TRUE(k.klassen.contains(objektart)) << objektart;
        const auto vorhanden = Spalten(k.klassen.at(objektart));
        for (const std::string& spalte : Teilen(zeile.substr(doppelpunkt + 2), ","))
            EXPECT_EQ(vorhanden.contains(spalte.substr(spalte.starts_with('!'))), !spalte.starts_with('!'))
                << objektart << ": " << spalte;
        ++klassen;
    }
    EXPECT_EQ(klassen, 24u + 27u) << "Liste nicht gelesen";
}

TEST(AlkisWerteart, PaareVorhandenUndZusammenhaengend) {
    const std::vector<std::string> zeilen = Zeilen("ALKIS_Werteart.dat");
    std::string ganz;
    for (const std::string& zeile : zeilen)
        ganz += zeile + "\r\n";
    for (const std::string& paar : Listenzeilen("werteart_gelesene_paare.txt")) {
        std::optional<std::size_t> erste, letzte;
        std::size_t anzahl = 0;
        for (std::size_t i = 0; i < zeilen.size(); ++i)
            if (zeilen[i].starts_with(paar + " = ")) {
                erste = erste.value_or(i);
                letzte = i;
                ++anzahl;
            }
        ASSERT_TRUE(erste) << paar;
        EXPECT_EQ(*letzte - *erste + 1, anzahl) << paar << ": Zeilen nicht beisammen";
        // The pair's list is cut wherever the pair occurs: no other line may hold it.
        std::size_t vorkommen = 0;
        for (auto pos = ganz.find(paar); pos != std::string::npos; pos = ganz.find(paar, pos + 1))
            ++vorkommen;
        EXPECT_EQ(vorkommen, anzahl) << paar;
    }
}

TEST(AlkisWerteart, SkriptErzeugtDieAusgelieferteDatei) {
    const auto liste = test::GemeinsameTestdaten() / "alkis-codelists" / "alkis-wertearten-gid6.csv";
    if (!std::filesystem::exists(liste))
        GTEST_SKIP() << "Liste der Wertearten fehlt: " << liste;
    if (!test::ImSuchpfad("python3"))
        GTEST_SKIP() << "python3 fehlt";
    test::TempOrdner ordner;
    const auto lauf = test::Ausführen("python3 " + test::Wort(Konfig / "werteart_erzeugen.py") + " " +
                                      test::Wort(liste) + " " + test::Wort(ordner / "ALKIS_Werteart.dat") + " 2>&1");
    ASSERT_EQ(lauf.status, 0) << lauf.ausgabe;
    EXPECT_TRUE(test::DateiLesen(ordner / "ALKIS_Werteart.dat") == test::DateiLesen(Konfig / "ALKIS_Werteart.dat"))
        << "config/ALKIS_Werteart.dat ist nicht mehr die Ausgabe von werteart_erzeugen.py";
}

TEST(AlkisEpsg, KeinNameStecktInEinemSpaeterenNamenUndDerMeridianIstDerDesNamens) {
    std::vector<std::vector<std::string>> zeilen;
    for (const std::string& zeile : Datenzeilen("ALKIS_EPSG.dat"))
        zeilen.push_back(Teilen(zeile, "="));
    ASSERT_GT(zeilen.size(), 5u);
    for (std::size_t i = 0; i < zeilen.size(); ++i) {
        ASSERT_EQ(zeilen[i].size(), 2u);
        // Both lookups take the first line whose name (or pair) is contained in what is sought.
        for (std::size_t j = i + 1; j < zeilen.size(); ++j) {
            EXPECT_EQ(zeilen[j][0].find(zeilen[i][0]), std::string::npos) << zeilen[i][0] << " vor " << zeilen[j][0];
            EXPECT_TRUE(zeilen[i][1] == zeilen[j][1] || zeilen[j][1].find(zeilen[i][1]) == std::string::npos)
                << zeilen[i][1] << " vor " << zeilen[j][1];
        }
        std::smatch treffer;
        if (std::regex_search(zeilen[i][0], treffer, std::regex("(UTM|3GK)([0-9]+)$"))) {
            EXPECT_TRUE(zeilen[i][1].ends_with("_" + treffer[2].str())) << zeilen[i][0];
        }
    }
}

} // namespace
} // namespace flurix
