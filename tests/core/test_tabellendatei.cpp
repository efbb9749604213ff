#include "core/tabellendatei.hpp"

#include "core/fehler.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "kernhilfen.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace flurix {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using test::Argumente;
using test::DateiLesen;
using test::DateiSchreiben;
using test::TempOrdner;
using test::Zitat;
using Zeilen = std::vector<std::vector<std::string>>;

Zeilen AllesLesen(const fs::path& datei, std::vector<TabellenSpalte>* spalten = nullptr) {
    TabellendateiLeser leser(datei);
    if (spalten)
        *spalten = leser.Spalten();
    Zeilen zeilen;
    while (const auto zeile = leser.NächsteZeile())
        zeilen.emplace_back(zeile->begin(), zeile->end());
    return zeilen;
}

void AllesSchreiben(const fs::path& datei, const std::vector<TabellenSpalte>& spalten, const Zeilen& zeilen) {
    TabellendateiSchreiber schreiber(datei, spalten);
    for (const auto& zeile : zeilen)
        schreiber.Zeile(zeile);
    schreiber.Abschließen();
}

TEST(Tabellendatei, Wertetabelle) {
    TempOrdner ordner;
    EXPECT_EQ(test::Wertetabelle("tabellendatei.txt", {
        {"Format", [](const Argumente& a) {
             return std::string(TabellenformatAusEndung(a[0]) == Tabellenformat::Fil ? "Fil" : "Tsv");
         }},
        {"Schreiben", [&](const Argumente& a) {
             TabellendateiSchreiber(ordner / a[0], {}).Abschließen();
             return std::string("geschrieben");
         }},
        {"Lesen", [&](const Argumente& a) {
             DateiSchreiben(ordner / a[0], a[1]);
             std::vector<TabellenSpalte> spalten;
             const Zeilen zeilen = AllesLesen(ordner / a[0], &spalten);
             std::vector<std::string> schlüssel;
             for (const auto& s : spalten)
                 schlüssel.push_back(s.schlüssel);
             std::string text = test::Liste(schlüssel);
             for (const auto& zeile : zeilen)
                 text += " " + test::Liste(zeile);
             const auto angekündigt = TabellendateiLeser(ordner / a[0]).AngekündigteZeilen();
             return text + (angekündigt ? ", angekündigt " + std::to_string(*angekündigt) : "");
         }},
        {"WfsSchlüssel", [&](const Argumente& a) {
             fs::remove(ordner / "wfs.key");
             if (!a.empty())
                 DateiSchreiben(ordner / "wfs.key", a[0]);
             const auto [benutzer, passwort] = WfsSchlüsselLesen(ordner / "wfs.key");
             return Zitat(benutzer) + " " + Zitat(passwort);
         }},
    }, ordner.pfad()), "");
}

// Cells that break naive table files: separators, line ends, escapes written as text, NUL, bytes
// that are no UTF-8, UTF-8 that must stay as it is; each in each column once, and one empty row.
TEST(Tabellendatei, FeindlicheZellenUndLangeZeilenÜberstehenBeideFormate) {
    const std::vector<std::string> feindlich = {
        "", "\\", "\t", "\n", "\r", "\r\n", "\0"s, "a\\tb", "\\x41", "ende\\", "\\\\n", "Größe äöüß",
        "\xF0\x9F\x98\x80", "\xC3", "\xFF\xFE", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82",
        test::AlleBytes(), std::string(100000, 'x') + "\t" + std::string(3, '\n'), "FLURIX-TABELLE\t1", "zeilen\t5",
    };
    const std::vector<TabellenSpalte> spalten = {
        {"Gemarkung", "Gemarkung", 1200, true, 2},
        {"Schlüssel\tmit\nallem\\", "Über\r\nschrift\0"s, -5, false, 0},
        {"\xFF", "", 0, true, -1},
    };
    Zeilen zeilen;
    for (std::size_t i = 0; i < feindlich.size(); ++i)
        zeilen.push_back({feindlich[i], feindlich[(i + 1) % feindlich.size()], feindlich[(i + 2) % feindlich.size()]});
    zeilen.emplace_back(spalten.size(), "");
    // Rows of many lengths and one cell larger than a read chunk: lines cross every buffer border.
    for (std::size_t i = 0; i < 30000; ++i)
        zeilen.push_back({std::to_string(i), std::string(i % 97, static_cast<char>('a' + i % 26)),
                          i == 12345 ? std::string(3 << 20, 'L') + "\n" : i % 1000 == 0 ? "\\\t\n" : ""});
    TempOrdner ordner;
    for (const std::string name : {"t.fil", "t.tsv"}) {
        SCOPED_TRACE(name);
        const auto datei = ordner / name;
        const bool fil = name.ends_with(".fil");
        AllesSchreiben(datei, spalten, zeilen);
        std::vector<TabellenSpalte> gelesen;
        EXPECT_EQ(AllesLesen(datei, &gelesen), zeilen);
        ASSERT_EQ(gelesen.size(), spalten.size());
        for (std::size_t i = 0; i < spalten.size(); ++i) {
            // The machine form keeps keys and order only.
            const TabellenSpalte tsv = {spalten[i].schlüssel, spalten[i].schlüssel, gelesen[i].breite,
                                        gelesen[i].sichtbar, static_cast<int>(i)};
            EXPECT_EQ(gelesen[i], fil ? spalten[i] : tsv);
        }
        // One line per header part and per row: no cell may carry a raw line end, CR or NUL.
        const std::string inhalt = DateiLesen(datei);
        EXPECT_EQ(static_cast<std::size_t>(std::count(inhalt.begin(), inhalt.end(), '\n')),
                  (fil ? 3 + spalten.size() : 1) + zeilen.size());
        EXPECT_EQ(inhalt.find_first_of("\r\0"s), std::string::npos);
        // iconv is the independent judge: it refuses any byte sequence that is not UTF-8.
        EXPECT_EQ(test::Ausführen("iconv -f UTF-8 -t UTF-8 " + test::Wort(datei) + " >/dev/null 2>&1").status, 0);
    }
    for (const std::string name : {"leer.fil", "leer.tsv"}) { // no columns, three rows
        AllesSchreiben(ordner / name, {}, Zeilen(3));
        std::vector<TabellenSpalte> gelesen;
        EXPECT_EQ(AllesLesen(ordner / name, &gelesen), Zeilen(3)) << name;
        EXPECT_TRUE(gelesen.empty()) << name;
    }
}

// Every cut of a .fil file is a Fehler. A .tsv file has no row count: a cut at a line end is a
// shorter table, anything else a Fehler or a last row cut short, never a changed earlier row.
TEST(Tabellendatei, GekürzteDateien) {
    TempOrdner ordner;
    const Zeilen zeilen = {{"1", "x\ty"}, {"", ""}, {"\xFF", "Größe"}};
    for (const std::string name : {"ganz.fil", "ganz.tsv"}) {
        AllesSchreiben(ordner / name, {{"a", "Ä", 10, true, 0}, {"b", "B\\", 20, false, 1}}, zeilen);
        EXPECT_EQ(AllesLesen(ordner / name), zeilen);
        const std::string inhalt = DateiLesen(ordner / name);
        const auto teil = ordner / ("teil" + name.substr(4));
        for (std::size_t länge = 0; länge < inhalt.size(); ++länge) {
            SCOPED_TRACE(name + " nach " + std::to_string(länge) + " Bytes gekürzt");
            DateiSchreiben(teil, std::string_view(inhalt).substr(0, länge));
            Zeilen gelesen;
            const std::string fehler = test::FehlerText([&] { gelesen = AllesLesen(teil); });
            if (name.ends_with(".fil")) {
                EXPECT_NE(fehler, "");
            } else if (fehler.empty()) {
                ASSERT_LE(gelesen.size(), zeilen.size());
                for (std::size_t i = 0; i + 1 < gelesen.size(); ++i)
                    EXPECT_EQ(gelesen[i], zeilen[i]);
            }
        }
    }
}

TEST(Tabellendatei, SchreiberPrüftZellenzahlUndLässtAlteDateiStehen) {
    TempOrdner ordner;
    EXPECT_THROW(TabellendateiLeser(ordner / "fehlt.fil"), Fehler);
    fs::create_directory(ordner / "ordner.fil");
    EXPECT_THROW(TabellendateiLeser(ordner / "ordner.fil"), Fehler);

    const std::vector<TabellenSpalte> spalten = {{"a", "a", 0, true, 0}, {"b", "b", 0, true, 1}};
    TabellendateiSchreiber schreiber(ordner / "t.fil", spalten);
    EXPECT_THROW(schreiber.Zeile(std::vector<std::string_view>{"x"}), Fehler);
    schreiber.Zeile(std::vector<std::string_view>{"x", "y"});
    schreiber.Abschließen();
    EXPECT_THROW(schreiber.Zeile(std::vector<std::string_view>{"x", "y"}), Fehler);
    EXPECT_EQ(AllesLesen(ordner / "t.fil"), (Zeilen{{"x", "y"}}));

    // A writer that does not finish leaves the old file and no temporary file.
    DateiSchreiben(ordner / "alt.fil", "alter Inhalt");
    EXPECT_NE(test::FehlerText([&] {
                  TabellendateiSchreiber abgebrochen(ordner / "alt.fil", spalten);
                  for (int i = 0; i < 100000; ++i) // past the write buffer, so bytes reach the disk
                      abgebrochen.Zeile(std::vector<std::string>{"Zeile " + std::to_string(i), ""});
                  throw Fehler("Abbruch mitten im Schreiben");
              }), "");
    EXPECT_EQ(DateiLesen(ordner / "alt.fil"), "alter Inhalt");
    EXPECT_EQ(std::distance(fs::directory_iterator(ordner.pfad()), fs::directory_iterator()), 3);
}

TEST(WfsSchlüssel, GespeichertVerschleiertUndGetrimmtGelesen) {
    TempOrdner ordner;
    const auto datei = ordner / "wfs.key";
    WfsSchlüsselSchreiben(datei, "  Vermessung ", "geheim\t!42 äöü");
    EXPECT_EQ(WfsSchlüsselLesen(datei), std::make_pair("Vermessung"s, "geheim\t!42 äöü"s));
    const std::string inhalt = DateiLesen(datei);
    EXPECT_EQ(inhalt.find("Vermessung"), std::string::npos);
    EXPECT_EQ(inhalt.find("geheim"), std::string::npos);
    EXPECT_TRUE(inhalt.starts_with("FLURIX-TABELLE\t1\n"));
}

} // namespace
} // namespace flurix
