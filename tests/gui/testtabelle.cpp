#include "testtabelle.hpp"

#include "core/katalog.hpp"
#include "core/kataster.hpp"

#include <array>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace flurix::test {
namespace {

struct Gemarkung {
    std::string_view name;
    std::string_view nummer; ///< four digits behind the Land
    std::string_view ort;    ///< town of the court and tax office
};

constexpr std::array<Gemarkung, 8> Gemarkungen{{
    {"Zehdenick", "1955", "Zehdenick"},
    {"Mildenberg", "1961", "Zehdenick"},
    {"Badingen", "1902", "Gransee"},
    {"Ribbeck", "1947", "Gransee"},
    {"Burgwall", "1908", "Zehdenick"},
    {"Kappe", "1927", "Oranienburg"},
    {"Klein-Mutz", "1931", "Oranienburg"},
    {"Wesendorf", "1982", "Fürstenberg/Havel"},
}};

constexpr std::array<std::string_view, 16> Nachnamen{
    "Müller",  "Schmidt", "Schulze",  "Krüger",  "Köhler",  "Böttcher", "Weiß",  "Groß",
    "Schäfer", "Fischer", "Hoffmann", "Lehmann", "Günther", "Wöhlert",  "Jäger", "Märtens"};
constexpr std::array<std::string_view, 12> Vornamen{"Jörg",        "Jürgen", "Björn",  "Günter",
                                                    "Käthe",       "Sören",  "Ute",    "Anja",
                                                    "Hans-Jürgen", "Bärbel", "Gisela", "Uwe"};
constexpr std::array<std::string_view, 10> Straßen{
    "Hauptstraße", "Lindenallee",  "Am Mühlenteich", "Schloßstraße", "Dorfstraße",
    "Birkenweg",   "Gartenstraße", "Kirchplatz",     "Fährweg",      "Schulstraße"};
constexpr std::array<std::string_view, 6> Orte{"16792 Zehdenick", "16515 Oranienburg",
                                               "16775 Gransee",   "10115 Berlin",
                                               "14467 Potsdam",   "16798 Fürstenberg/Havel"};
constexpr std::array<std::string_view, 8> Nutzungen{"Ackerland",
                                                    "Grünland",
                                                    "Wald",
                                                    "Wohnbaufläche",
                                                    "Gehölz",
                                                    "Unland/Vegetationslose Fläche",
                                                    "Wohnbaufläche; Gartenland",
                                                    "Ackerland; Grünland"};
constexpr std::array<std::string_view, 8> Tatsächlich{"Landwirtschaft", "Landwirtschaft", "Wald",
                                                      "Wohnbaufläche",  "Gehölz",         "Unland",
                                                      "Wohnbaufläche",  "Landwirtschaft"};

/// A small generator of its own, so that every platform makes the same table.
class Zufall {
public:
    explicit Zufall(std::uint32_t startwert) : m_zustand(startwert ? startwert : 1) {}
    std::uint32_t Zahl(std::uint32_t bis) { // 0 .. bis-1
        m_zustand ^= m_zustand << 13;
        m_zustand ^= m_zustand >> 17;
        m_zustand ^= m_zustand << 5;
        return m_zustand % bis;
    }
    template <typename T, std::size_t N> std::string_view Wahl(const std::array<T, N>& liste) {
        return liste[Zahl(static_cast<std::uint32_t>(N))];
    }

private:
    std::uint32_t m_zustand;
};

std::string Nullen(unsigned wert, int stellen) {
    char puffer[16];
    std::snprintf(puffer, sizeof puffer, "%0*u", stellen, wert);
    return puffer;
}

} // namespace

void TesttabelleErzeugen(Kataster& kataster, std::size_t zeilen, std::uint32_t startwert) {
    SpaltenAnlegen(kataster);
    const std::size_t spalten = kataster.Spaltenzahl();
    const auto index = [&](std::string_view schlüssel) {
        return *kataster.SpaltenIndex(schlüssel);
    };
    const std::size_t iLandkreis = index("Landkreis"), iAmt = index("Katasteramt"),
                      iGemeinde = index("Gemeinde"), iGdSchl = index("Gemeindeschlüssel"),
                      iGemarkung = index("Gemarkung"), iGkSchl = index("Gemarkungsschlüssel"),
                      iFlur = index("Flur"), iAg = index("Amtsgericht"),
                      iAgSchl = index("Amtsgerichtsschlüssel"),
                      iGbBezirk = index("Grundbuchbezirk"), iBlatt = index("Grundbuchblatt"),
                      iBvnr = index("BVNR"), iBa = index("Buchungsart"), iFlst = index("Flurstück"),
                      iNutzung = index("Nutzungsart"), iFläche = index("Fläche"),
                      iPos = index("Eigentümerposition"), iName = index("Name"),
                      iZusatz = index("Namenszusatz"), iStraße = index("Straße"),
                      iOrt = index("Ort"), iLage = index("Lagebezeichnung"),
                      iRw = index("Rechtswert"), iHw = index("Hochwert"),
                      iTats = index("Nutzung_tatsächlich"), iFkz = index("Flurstückskennzeichen"),
                      iFa = index("Finanzamt"), iNamNr = index("Namensnummer"),
                      iZähler = index("Flurstück-Zähler"), iNenner = index("Flurstück-Nenner"),
                      iVorname = index("Vorname_sonstiges"), iGeburt = index("Geburtsname"),
                      iAnteil = index("Anteilsverhältnis");

    Zufall zufall(startwert);
    std::vector<std::string> zellen(spalten);
    std::vector<std::string_view> ansicht(spalten);
    std::size_t flurstück = 0;
    while (kataster.Zeilenzahl() < zeilen) {
        // Fifty parcels a Flur, twelve Flure a Gemarkung, then the next Gemarkung; after the last
        // one the round starts again with higher numbers, so that every parcel is one of its own.
        constexpr std::size_t JeFlur = 50, Flure = 12,
                              JeRunde = JeFlur * Flure * Gemarkungen.size();
        const Gemarkung& g = Gemarkungen[flurstück / (JeFlur * Flure) % Gemarkungen.size()];
        const unsigned flur = static_cast<unsigned>(flurstück / JeFlur % Flure + 1);
        const unsigned zähler = static_cast<unsigned>(flurstück / JeRunde * JeFlur * 3 +
                                                      flurstück % JeFlur * 3 + 1 + zufall.Zahl(3));
        const unsigned nenner = zufall.Zahl(4) == 0 ? 1 + zufall.Zahl(12) : 0;
        ++flurstück;
        const unsigned eigentümer = 1 + zufall.Zahl(3);
        const std::string blatt = Nullen(100 + zufall.Zahl(9000), 6);
        const std::size_t nutzung = zufall.Zahl(static_cast<std::uint32_t>(Nutzungen.size()));

        for (auto& z : zellen)
            z.clear();
        zellen[iLandkreis] = "Oberhavel";
        zellen[iAmt] = "Kataster- und Vermessungsamt Oberhavel";
        zellen[iGemeinde] = "Zehdenick";
        zellen[iGdSchl] = "12065356";
        zellen[iGemarkung] = g.name;
        zellen[iGkSchl] = "12" + std::string(g.nummer);
        zellen[iFlur] = Nullen(flur, 3);
        zellen[iAg] = g.ort;
        zellen[iAgSchl] = "1238";
        zellen[iGbBezirk] = g.name;
        zellen[iBlatt] = blatt;
        zellen[iBvnr] = Nullen(1 + zufall.Zahl(20), 4);
        zellen[iBa] = "Grundstück";
        zellen[iFlst] = Nullen(zähler, 5) + "/" + Nullen(nenner, 4);
        zellen[iNutzung] = Nutzungen[nutzung];
        zellen[iTats] = Tatsächlich[nutzung];
        zellen[iFläche] = Nullen(150 + zufall.Zahl(90000), 9);
        zellen[iLage] =
            std::string(zufall.Wahl(Straßen)) + " " + std::to_string(1 + zufall.Zahl(80));
        zellen[iRw] =
            "33" + std::to_string(380000 + zufall.Zahl(20000)) + "." + Nullen(zufall.Zahl(100), 2);
        zellen[iHw] =
            std::to_string(5870000 + zufall.Zahl(30000)) + "." + Nullen(zufall.Zahl(100), 2);
        zellen[iFkz] = "12" + std::string(g.nummer) + Nullen(flur, 3) + Nullen(zähler, 5) +
                       Nullen(nenner, 4) + "00";
        zellen[iFa] = g.ort;
        zellen[iZähler] = std::to_string(zähler);
        zellen[iNenner] = nenner ? std::to_string(nenner) : std::string();

        for (unsigned e = 1; e <= eigentümer && kataster.Zeilenzahl() < zeilen; ++e) {
            const std::string_view nachname = zufall.Wahl(Nachnamen);
            const std::string_view vorname = zufall.Wahl(Vornamen);
            zellen[iPos] = Nullen(e, 4);
            zellen[iName] = std::string(nachname) + ", " + std::string(vorname);
            zellen[iVorname] = vorname;
            zellen[iGeburt] =
                zufall.Zahl(4) == 0 ? std::string(zufall.Wahl(Nachnamen)) : std::string();
            zellen[iZusatz] = zellen[iGeburt].empty()
                                  ? "geb. " + Nullen(1 + zufall.Zahl(28), 2) + "." +
                                        Nullen(1 + zufall.Zahl(12), 2) + "." +
                                        std::to_string(1930 + zufall.Zahl(70))
                                  : "geb. " + zellen[iGeburt];
            zellen[iStraße] =
                std::string(zufall.Wahl(Straßen)) + " " + std::to_string(1 + zufall.Zahl(120));
            zellen[iOrt] = zufall.Wahl(Orte);
            zellen[iNamNr] = std::to_string(e);
            zellen[iAnteil] = eigentümer > 1 ? "1/" + std::to_string(eigentümer) : std::string();
            for (std::size_t s = 0; s < spalten; ++s)
                ansicht[s] = zellen[s];
            kataster.ZeileHinzufügen(ansicht);
        }
    }
    kataster.Sortieren(StandardSortierung);
}

} // namespace flurix::test
