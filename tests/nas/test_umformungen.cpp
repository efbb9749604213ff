// The text forms of the NAS modules (row forms of "Daten ordnen", geometry, mapping script, XML
// and configuration lookups) against the cases of tests/daten/nas/umformungen.txt.

#include "core/cp1252.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/daten_ordnen.hpp"
#include "nas/geometrie.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/lagebezeichnung.hpp"
#include "nas/xml_struktur.hpp"
#include "nas/zuordnung.hpp"

#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace flurix::nas {
namespace {

using Argumente = std::vector<std::string>;

double Zahl(const std::string& text) {
    double wert = 0;
    std::from_chars(text.data(), text.data() + text.size(), wert);
    return wert;
}

std::string Text(double wert) {
    std::array<char, 32> puffer{};
    return std::string(puffer.data(), std::to_chars(puffer.data(), puffer.data() + puffer.size(), wert).ptr);
}

std::string Verbunden(const std::vector<std::string>& liste) {
    std::string aus;
    for (const auto& eintrag : liste)
        aus += (aus.empty() ? "" : " | ") + eintrag;
    return aus;
}

// Each function of the file: its number of arguments and the call, its result as text.
using A = const Argumente&;
const std::map<std::string, std::pair<std::size_t, std::function<std::string(A)>>> Funktionen = {
    {"MitNullen", {2, [](A a) { return MitNullen(std::stoll(a[0]), std::stoi(a[1])); }}},
    {"FlurstückAusKennzeichen", {1, [](A a) { return FlurstückAusKennzeichen(a[0]); }}},
    {"FkzOriginal", {1, [](A a) { return FkzOriginal(a[0]); }}},
    {"DatumUmkehren", {1, [](A a) { return DatumUmkehren(a[0]); }}},
    {"NutzungOrdnen", {3, [](A a) {
         const auto t = NutzungOrdnen(a[0], a[1], a[2] == "1");
         return t.nutzungTatsächlich + "|" + t.nutzungsart;
     }}},
    {"FlächeFormat", {1, [](A a) { return FlächeFormat(a[0]); }}},
    {"NameZusammensetzen", {2, [](A a) { return NameZusammensetzen(a[0], a[1]); }}},
    {"NamenszusatzMitGeb", {1, [](A a) { return NamenszusatzMitGeb(a[0]); }}},
    {"MitLeerzeichen", {2, [](A a) { return MitLeerzeichen(a[0], a[1]); }}},
    {"AnteilGrundstück", {1, [](A a) { return AnteilGrundstück(a[0]); }}},
    {"AnteilSondereigentum", {2, [](A a) { return AnteilSondereigentum(a[0], a[1]); }}},
    {"KreisSchlüssel", {1, [](A a) { return KreisSchlüssel(a[0]); }}},
    {"LandSchlüssel", {1, [](A a) { return LandSchlüssel(a[0]); }}},
    {"DienststellenSchlüssel", {1, [](A a) { return DienststellenSchlüssel(a[0]); }}},
    {"AmtsgerichtSchlüssel", {1, [](A a) { return AmtsgerichtSchlüssel(a[0]); }}},
    {"KoordinateText", {1, [](A a) { return KoordinateText(Zahl(a[0])); }}},
    {"BezugssystemAusSystemwert", {1, [](A a) { return BezugssystemAusSystemwert(a[0]).epsg + "|" +
                                                      BezugssystemAusSystemwert(a[0]).mkz; }}},
    {"PosUmring", {1, [](A a) { return PosUmring(a[0]); }}},
    {"BogenZuSehnen", {2, [](A a) { return BogenZuSehnen(a[0], Zahl(a[1])); }}},
    {"PfeilhöheAusEinstellung", {1, [](A a) { return Text(PfeilhöheAusEinstellung(a[0])); }}},
    {"RingeAusText", {1, [](A a) {
         SkriptOberfläche ui;
         std::vector<std::string> ringe;
         for (const Ring& ring : RingeAusText(a[0], "", 0.01, &ui))
             ringe.push_back(PunktlisteText(ring));
         for (const auto& meldung : ui.Meldungen())
             ringe.push_back("! " + meldung);
         return Verbunden(ringe);
     }}},
    {"BoxMitte", {1, [](A a) { return BoxMitte(a[0]) ? Text(BoxMitte(a[0])->x) + " " + Text(BoxMitte(a[0])->y)
                                                     : "-"; }}},
    {"Prüfsumme", {1, [](A a) { return Prüfsumme(a[0]); }}},
    {"ZuordnungLesen", {1, [](A a) { return Verbunden(ZuordnungLesen(a[0])); }}},
    {"Punktliste", {1, [](A a) { return Punktliste(a[0]); }}},
    {"XmlSatzebene", {1, [](A a) { return std::to_string(XmlSatzebene(a[0]).ebene) + "|" +
                                          XmlSatzebene(a[0]).typname; }}},
    {"XmlTextVorbereiten", {1, [](A a) { return XmlTextVorbereiten(a[0]); }}},
    {"XmlDatenbankPfad", {1, [](A a) { return XmlDatenbankPfad(a[0]).string(); }}},
    {"KonfigWert", {5, [](A a) { return KonfigWert(std::stoi(a[0]), a[1], a[2], std::stoi(a[3]), a[4]); }}},
    {"KonfigWerteListe", {2, [](A a) { return KonfigWerteListe(a[0], a[1]); }}},
    {"KonfigZeile", {4, [](A a) { return KonfigZeile(a[0], a[1], a[2], a[3]); }}},
    {"KonfigAuswahl", {5, [](A a) { return KonfigAuswahl(a[0], a[1], a[2], a[3], a[4]); }}},
    {"IdKennzeichnen", {2, [](A a) { return IdKennzeichnen(a[0], a[1]); }}},
    {"Utf8Reparatur", {1, [](A a) { return Utf8Reparatur(a[0]); }}},
    {"LagebezeichnungBilden", {2, [](A a) {
         std::vector<Lageeintrag> listen[2]; // "text/number/key;..." with and without house number
         for (int i = 0; i < 2; ++i)
             for (const auto eintrag : Teilen(a[i], ';'))
                 if (const auto teile = Teilen(eintrag, '/'); teile.size() == 3)
                     listen[i].push_back({std::string(teile[0]), std::string(teile[1]), std::string(teile[2])});
         const auto lage = LagebezeichnungBilden(listen[0], listen[1]);
         return lage.lagebezeichnung + "|" + lage.straßenschlüssel;
     }}},
    {"HausnummernVergleich", {2, [](A a) {
         const int v = HausnummernVergleich(a[0], a[1]);
         return std::string(v < 0 ? "<" : v > 0 ? ">" : "=");
     }}},
};

// One quoted field from `pos` on, its escapes resolved; "@name" read as a file.
std::string Feld(const std::string& zeile, std::size_t& pos) {
    std::string feld;
    for (++pos; pos < zeile.size() && zeile[pos] != '"'; ++pos) {
        if (zeile[pos] != '\\' || pos + 1 >= zeile.size()) {
            feld += zeile[pos];
            continue;
        }
        const char c = zeile[++pos];
        if (c == 'x') {
            feld += static_cast<char>(std::stoi(zeile.substr(pos + 1, 2), nullptr, 16));
            pos += 2;
        } else {
            feld += c == 't' ? '\t' : c == 'r' ? '\r' : c == 'n' ? '\n' : c;
        }
    }
    if (pos >= zeile.size())
        throw std::runtime_error("Anführungszeichen fehlt");
    ++pos;
    if (feld.starts_with("@config/"))
        return DateitextNachUtf8(test::DateiLesen(std::filesystem::path(FLURIX_QUELLEN) / feld.substr(1)));
    if (feld.starts_with("@"))
        return DateitextNachUtf8(test::DateiLesen(test::Testdaten() / "nas" / feld.substr(1)));
    return feld;
}

TEST(Umformungen, JederFallDerTabelle) {
    std::istringstream datei(test::DateiLesen(test::Testdaten() / "nas" / "umformungen.txt"));
    std::set<std::string> geprüft;
    int nummer = 0;
    for (std::string zeile; std::getline(datei, zeile);) {
        ++nummer;
        if (zeile.empty() || zeile.starts_with('#'))
            continue;
        SCOPED_TRACE("umformungen.txt:" + std::to_string(nummer) + ": " + zeile);
        const std::string name = zeile.substr(0, zeile.find(' '));
        Argumente argumente;
        std::string erwartet;
        bool ergebnis = false;
        std::size_t pos = name.size();
        try {
            while ((pos = zeile.find_first_not_of(' ', pos)) != std::string::npos && zeile[pos] != '#') {
                if (zeile.compare(pos, 2, "=>") == 0) {
                    ergebnis = true;
                    pos += 2;
                } else if (zeile[pos] != '"') {
                    throw std::runtime_error("Feld ohne Anführungszeichen");
                } else if (ergebnis) {
                    erwartet = Feld(zeile, pos);
                } else {
                    argumente.push_back(Feld(zeile, pos));
                }
            }
        } catch (const std::exception& e) {
            ADD_FAILURE() << e.what();
            continue;
        }
        const auto funktion = Funktionen.find(name);
        if (funktion == Funktionen.end() || !ergebnis || argumente.size() != funktion->second.first) {
            ADD_FAILURE() << "unbekannte Funktion, kein \"=>\" oder falsche Zahl der Argumente";
            continue;
        }
        EXPECT_EQ(funktion->second.second(argumente), erwartet);
        geprüft.insert(name);
    }
    for (const auto& [name, funktion] : Funktionen)
        EXPECT_TRUE(geprüft.contains(name)) << name << ": kein Fall";
}

// Doubly encoded: the UTF-8 bytes of the letter read as Windows-1252 and encoded again.
TEST(Umformungen, DoppeltKodierteBuchstabenWerdenRepariert) {
    for (std::string_view buchstabe : {"ä", "Ä", "ö", "Ö", "ü", "Ü", "ß", "È", "É", "Ì", "Ò", "Ó", "Ù", "Ú",
                                       "á", "è", "é", "ì", "í", "ò", "ó", "ù", "ú", "ý",
                                       "Müller, Größe: Straße; Übersee Ödland Äcker"}) {
        const std::string doppelt = Cp1252NachUtf8(buchstabe);
        ASSERT_NE(doppelt, buchstabe);
        EXPECT_EQ(Utf8Reparatur(doppelt), buchstabe);
    }
}

} // namespace
} // namespace flurix::nas
