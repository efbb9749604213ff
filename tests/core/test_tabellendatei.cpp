#include "core/tabellendatei.hpp"

#include "core/fehler.hpp"
#include "core/verschleiern.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace flurix {
namespace {

using namespace std::string_literals;
using test::DateiLesen;
using test::DateiSchreiben;
using test::TempOrdner;
using Zeilen = std::vector<std::vector<std::string>>;

struct Gelesen {
    std::vector<TabellenSpalte> spalten;
    Zeilen zeilen;
};

Gelesen AllesLesen(const std::filesystem::path& datei) {
    TabellendateiLeser leser(datei);
    Gelesen g{leser.Spalten(), {}};
    while (const auto zeile = leser.NächsteZeile())
        g.zeilen.emplace_back(zeile->begin(), zeile->end());
    return g;
}

void AllesSchreiben(const std::filesystem::path& datei, const std::vector<TabellenSpalte>& spalten,
                    const Zeilen& zeilen) {
    TabellendateiSchreiber schreiber(datei, spalten);
    for (const auto& zeile : zeilen)
        schreiber.Zeile(zeile);
    schreiber.Abschließen();
}

std::string AlleBytes() {
    std::string s;
    for (int b = 0; b < 256; ++b)
        s += static_cast<char>(b);
    return s;
}

// Cells that break naive table files: separators, line ends, escapes written as text, NUL, bytes
// that are no UTF-8, UTF-8 that must stay as it is.
const std::vector<std::string> FeindlicheZellen = {
    "",
    "\\",
    "\t",
    "\n",
    "\r",
    "\r\n",
    "\0"s,
    "a\\tb",
    "\\x41",
    "ende\\",
    "\\\\n",
    "Größe äöüß",
    "\xF0\x9F\x98\x80",
    "\xC3",
    "\xFF\xFE",
    "\xC0\xAF",
    "\xED\xA0\x80",
    "\xF4\x90\x80\x80",
    "\xE2\x82",
    AlleBytes(),
    std::string(100000, 'x') + "\t" + std::string(3, '\n'),
    "FLURIX-TABELLE\t1",
    "zeilen\t5",
};

Zeilen FeindlicheZeilen(std::size_t spalten) {
    // Each hostile cell stands in each column once, and one row is all empty.
    Zeilen zeilen;
    for (std::size_t i = 0; i < FeindlicheZellen.size(); ++i) {
        std::vector<std::string> zeile;
        for (std::size_t s = 0; s < spalten; ++s)
            zeile.push_back(FeindlicheZellen[(i + s) % FeindlicheZellen.size()]);
        zeilen.push_back(std::move(zeile));
    }
    zeilen.emplace_back(spalten, "");
    return zeilen;
}

bool IstUtf8(const std::filesystem::path& datei) {
    // iconv is the independent judge: it refuses any byte sequence that is not UTF-8.
    const std::string befehl = "iconv -f UTF-8 -t UTF-8 '" + datei.string() + "' >/dev/null 2>&1";
    return std::system(befehl.c_str()) == 0;
}

TEST(Tabellendatei, FeindlicheZellenÜberstehenBeideFormate) {
    const std::vector<TabellenSpalte> spalten = {
        {"Gemarkung", "Gemarkung", 1200, true, 2},
        {"Schlüssel\tmit\nallem\\", "Über\r\nschrift\0"s, -5, false, 0},
        {"\xFF", "", 0, true, -1},
    };
    const Zeilen zeilen = FeindlicheZeilen(spalten.size());
    TempOrdner ordner;
    for (const std::string name : {"t.fil", "t.tsv"}) {
        SCOPED_TRACE(name);
        const auto datei = ordner / name;
        AllesSchreiben(datei, spalten, zeilen);
        const Gelesen g = AllesLesen(datei);
        EXPECT_EQ(g.zeilen, zeilen);
        ASSERT_EQ(g.spalten.size(), spalten.size());
        for (std::size_t i = 0; i < spalten.size(); ++i) {
            if (name.ends_with(".fil")) {
                EXPECT_EQ(g.spalten[i], spalten[i]);
            } else { // the machine form keeps keys and order only
                EXPECT_EQ(g.spalten[i].schlüssel, spalten[i].schlüssel);
                EXPECT_EQ(g.spalten[i].überschrift, spalten[i].schlüssel);
                EXPECT_EQ(g.spalten[i].position, static_cast<int>(i));
            }
        }
        // One line per header part and per row: no cell may carry a raw line end, CR or NUL.
        const std::string inhalt = DateiLesen(datei);
        const std::size_t kopfzeilen = name.ends_with(".fil") ? 3 + spalten.size() : 1;
        EXPECT_EQ(static_cast<std::size_t>(std::count(inhalt.begin(), inhalt.end(), '\n')),
                  kopfzeilen + zeilen.size());
        EXPECT_EQ(inhalt.find('\r'), std::string::npos);
        EXPECT_EQ(inhalt.find('\0'), std::string::npos);
        EXPECT_TRUE(IstUtf8(datei));
    }
}

// The layouts byte for byte are in the command line's golden files; here the row count the
// saved table announces, which the machine form does not have.
TEST(Tabellendatei, NurFilKündigtZeilenAn) {
    TempOrdner ordner;
    const std::pair<std::string, std::optional<std::uint64_t>> fälle[] = {{"a.fil", 1}, {"a.tsv", std::nullopt}};
    for (const auto& [name, zeilen] : fälle) {
        AllesSchreiben(ordner / name, {{"Flur", "Flur", 500, true, 0}}, {{"001"}});
        EXPECT_EQ(TabellendateiLeser(ordner / name).AngekündigteZeilen(), zeilen) << name;
    }
}

TEST(Tabellendatei, TsvAusAnderenProgrammenMitCrLfUndOhneLetztesZeilenende) {
    TempOrdner ordner;
    const auto datei = ordner / "fremd.tsv";
    DateiSchreiben(datei, "Flur\tName\r\n001\tMeier\r\n002\tSchulze");
    const Gelesen g = AllesLesen(datei);
    ASSERT_EQ(g.spalten.size(), 2u);
    EXPECT_EQ(g.spalten[1].schlüssel, "Name");
    EXPECT_EQ(g.zeilen, (Zeilen{{"001", "Meier"}, {"002", "Schulze"}}));

    DateiSchreiben(datei, "Flur\tName\n");
    EXPECT_TRUE(AllesLesen(datei).zeilen.empty());
}

TEST(Tabellendatei, TabelleOhneSpaltenBehältIhreZeilen) {
    TempOrdner ordner;
    for (const std::string name : {"leer.fil", "leer.tsv"}) {
        AllesSchreiben(ordner / name, {}, Zeilen(3));
        const Gelesen g = AllesLesen(ordner / name);
        EXPECT_TRUE(g.spalten.empty()) << name;
        EXPECT_EQ(g.zeilen, Zeilen(3)) << name;
    }
}

TEST(Tabellendatei, FormatNachEndung) {
    EXPECT_EQ(TabellenformatAusEndung("a/b.fil"), Tabellenformat::Fil);
    EXPECT_EQ(TabellenformatAusEndung("B.FIL"), Tabellenformat::Fil);
    EXPECT_EQ(TabellenformatAusEndung("x.fil.Tsv"), Tabellenformat::Tsv);
    TempOrdner ordner;
    for (const std::string name : {"x.txt", "ohne_endung", "x.fil~", "x.csv"}) {
        const auto datei = ordner / name;
        DateiSchreiben(datei, "FLURIX-TABELLE\t1\nspalten\t0\nzeilen\t0\n");
        for (int versuch = 0; versuch < 3; ++versuch) {
            try {
                if (versuch == 0)
                    TabellenformatAusEndung(datei);
                else if (versuch == 1)
                    TabellendateiLeser{datei};
                else
                    TabellendateiSchreiber(ordner / ("neu_" + name), {});
                ADD_FAILURE() << name << " angenommen";
            } catch (const Fehler& f) {
                EXPECT_NE(std::string(f.what()).find(name), std::string::npos) << f.what();
                EXPECT_NE(std::string(f.what()).find("\".fil\" oder \".tsv\""), std::string::npos);
            }
        }
    }
}

// Reads the whole file; true when that ended in a Fehler. Any other exception fails the test.
bool LesenScheitert(const std::filesystem::path& datei, Zeilen* zeilen = nullptr) {
    try {
        TabellendateiLeser leser(datei);
        while (const auto zeile = leser.NächsteZeile())
            if (zeilen)
                zeilen->emplace_back(zeile->begin(), zeile->end());
        return false;
    } catch (const Fehler&) {
        return true;
    }
}

TEST(Tabellendatei, JedeGekürzteFilDateiIstEinFehler) {
    TempOrdner ordner;
    const auto ganz = ordner / "ganz.fil";
    AllesSchreiben(ganz, {{"a", "Ä", 10, true, 0}, {"b", "B\\", 20, false, 1}},
                   {{"1", "x\ty"}, {"", ""}, {"\xFF", "Größe"}});
    const std::string inhalt = DateiLesen(ganz);
    EXPECT_FALSE(LesenScheitert(ganz));
    const auto teil = ordner / "teil.fil";
    for (std::size_t länge = 0; länge < inhalt.size(); ++länge) {
        DateiSchreiben(teil, std::string_view(inhalt).substr(0, länge));
        EXPECT_TRUE(LesenScheitert(teil)) << "nach " << länge << " Bytes gekürzt";
    }
}

TEST(Tabellendatei, GekürzteTsvDateiGibtFehlerOderDieVorderenZeilen) {
    // The machine form has no row count: a cut at a line end is a shorter table. Anything else is
    // a Fehler or a last row cut short, never a crash or a changed earlier row.
    TempOrdner ordner;
    const auto ganz = ordner / "ganz.tsv";
    const Zeilen zeilen = {{"1", "x\ty"}, {"", ""}, {"\xFF", "Größe"}};
    AllesSchreiben(ganz, {{"a", "", 0, true, 0}, {"b", "", 0, true, 1}}, zeilen);
    const std::string inhalt = DateiLesen(ganz);
    const auto teil = ordner / "teil.tsv";
    for (std::size_t länge = 0; länge < inhalt.size(); ++länge) {
        DateiSchreiben(teil, std::string_view(inhalt).substr(0, länge));
        Zeilen gelesen;
        if (LesenScheitert(teil, &gelesen))
            continue;
        ASSERT_LE(gelesen.size(), zeilen.size()) << länge;
        for (std::size_t i = 0; i + 1 < gelesen.size(); ++i)
            EXPECT_EQ(gelesen[i], zeilen[i]) << "nach " << länge << " Bytes gekürzt";
    }
}

TEST(Tabellendatei, KaputteDateienNennenDateiUndZeile) {
    const std::string kopf = "FLURIX-TABELLE\t1\nspalten\t2\na\tA\t10\t1\t0\nb\tB\t20\t1\t1\n";
    struct Fall {
        std::string name, inhalt;
        int zeile;
        std::string meldung;
    };
    const Fall fälle[] = {
        {"leer.fil", "", 1, "die Datei ist leer"},
        {"kennung.fil", "FLURIX-TABELLX\t1\nspalten\t0\nzeilen\t0\n", 1,
         "keine Flurix-Tabellendatei"},
        {"fremd.fil", "PK\x03\x04\x14\0\0\0"s, 1, "keine Flurix-Tabellendatei"},
        {"version.fil", "FLURIX-TABELLE\t2\nspalten\t0\nzeilen\t0\n", 1,
         "die Version \"2\" wird nicht unterstützt"},
        {"ohneversion.fil", "FLURIX-TABELLE\nspalten\t0\nzeilen\t0\n", 1, "die Version \"\""},
        {"spaltenzahl.fil", "FLURIX-TABELLE\t1\nspalten\tzwei\n", 2, "erwartet wird \"spalten\""},
        {"überlauf.fil", "FLURIX-TABELLE\t1\nspalten\t99999999999999999999999\n", 2,
         "erwartet wird \"spalten\""},
        {"riesig.fil", "FLURIX-TABELLE\t1\nspalten\t18446744073709551615\n", 3, "abgeschnitten"},
        {"vierfelder.fil", "FLURIX-TABELLE\t1\nspalten\t1\na\tA\t10\t1\n", 3, "4 Felder statt 5"},
        {"sichtbar.fil", "FLURIX-TABELLE\t1\nspalten\t1\na\tA\t10\tja\t0\n", 3, "Sichtbarkeit"},
        {"breite.fil", "FLURIX-TABELLE\t1\nspalten\t1\na\tA\t1.5\t1\t0\n", 3, "ganze Zahlen"},
        {"zeilenzahl.fil", kopf + "zeilen\t-1\n", 5, "erwartet wird \"zeilen\""},
        {"zuwenig.fil", kopf + "zeilen\t1\nnur eine\n", 6, "1 Zellen statt 2"},
        {"zuviel.fil", kopf + "zeilen\t1\n1\t2\t3\n", 6, "3 Zellen statt 2"},
        {"maskierung.fil", kopf + "zeilen\t1\nx\\qy\tb\n", 6, "ungültige Maskierung \"\\qy\""},
        {"hex.fil", kopf + "zeilen\t1\na\t\\x4\n", 6, "ungültige Maskierung \"\\x4\""},
        {"hexziffer.fil", kopf + "zeilen\t1\na\t\\xG1\n", 6, "ungültige Maskierung"},
        {"rückstrich.fil", kopf + "zeilen\t1\na\tb\\\n", 6, "ungültige Maskierung \"\\\""},
        {"mehr.fil", kopf + "zeilen\t1\na\tb\nc\td\n", 7, "mehr Zeilen als die angekündigten 1"},
        {"weniger.fil", kopf + "zeilen\t18446744073709551615\na\tb\n", 7,
         "1 von 18446744073709551615"},
        {"offen.fil", kopf + "zeilen\t1\na\tb", 6, "die Zeile endet nicht"},
        {"leer.tsv", "", 1, "Kopfzeile fehlt"},
        {"zellen.tsv", "a\tb\n1\t2\n3\n", 3, "1 Zellen statt 2"},
        {"maskierung.tsv", "a\\\tb\n", 1, "ungültige Maskierung"},
    };
    TempOrdner ordner;
    for (const auto& f : fälle) {
        const auto datei = ordner / f.name;
        DateiSchreiben(datei, f.inhalt);
        try {
            TabellendateiLeser leser(datei);
            while (leser.NächsteZeile()) {
            }
            ADD_FAILURE() << f.name << " angenommen";
        } catch (const Fehler& fehler) {
            const std::string text = fehler.what();
            EXPECT_NE(
                text.find("\"" + datei.string() + "\", Zeile " + std::to_string(f.zeile) + ": "),
                std::string::npos)
                << text;
            EXPECT_NE(text.find(f.meldung), std::string::npos) << text;
        }
    }
}

TEST(Tabellendatei, FehlendeDateiUndOrdnerSindFehler) {
    TempOrdner ordner;
    EXPECT_THROW(TabellendateiLeser(ordner / "fehlt.fil"), Fehler);
    std::filesystem::create_directory(ordner / "ordner.fil");
    EXPECT_THROW(TabellendateiLeser(ordner / "ordner.fil"), Fehler);
    EXPECT_THROW(TabellendateiSchreiber(ordner / "fehlt" / "neu.fil", {}), Fehler);
}

TEST(Tabellendatei, SchreiberPrüftZellenzahl) {
    TempOrdner ordner;
    const std::vector<TabellenSpalte> spalten = {{"a", "a", 0, true, 0}, {"b", "b", 0, true, 1}};
    TabellendateiSchreiber schreiber(ordner / "t.fil", spalten);
    const std::vector<std::string_view> eine = {"x"};
    EXPECT_THROW(schreiber.Zeile(eine), Fehler);
    const std::vector<std::string_view> zwei = {"x", "y"};
    schreiber.Zeile(zwei);
    schreiber.Abschließen();
    EXPECT_THROW(schreiber.Zeile(zwei), Fehler);
    EXPECT_EQ(AllesLesen(ordner / "t.fil").zeilen, (Zeilen{{"x", "y"}}));
}

TEST(Tabellendatei, UnvollendeterSchreiberLässtAlteDateiStehen) {
    TempOrdner ordner;
    const auto datei = ordner / "alt.fil";
    DateiSchreiben(datei, "alter Inhalt");
    try {
        TabellendateiSchreiber schreiber(datei,
                                         std::vector<TabellenSpalte>{{"a", "a", 0, true, 0}});
        for (int i = 0; i < 100000; ++i) // past the write buffer, so bytes reach the disk
            schreiber.Zeile(std::vector<std::string>{"Zeile " + std::to_string(i)});
        throw Fehler("Abbruch mitten im Schreiben");
    } catch (const Fehler&) {
    }
    EXPECT_EQ(DateiLesen(datei), "alter Inhalt");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(ordner.pfad()),
                            std::filesystem::directory_iterator()),
              1); // no temporary file left behind
}

TEST(Tabellendatei, LangeZeilenÜberPuffergrenzen) {
    // Rows of many lengths and one cell larger than a read chunk: lines cross every buffer border.
    TempOrdner ordner;
    Zeilen zeilen;
    for (int i = 0; i < 30000; ++i)
        zeilen.push_back({std::to_string(i),
                          std::string(static_cast<std::size_t>(i % 97), 'a' + i % 26),
                          i % 1000 == 0 ? "\\\t\n" : ""});
    zeilen[12345][1] = std::string(3 << 20, 'L') + "\n";
    for (const std::string name : {"lang.fil", "lang.tsv"}) {
        AllesSchreiben(
            ordner / name,
            {{"nr", "nr", 0, true, 0}, {"text", "text", 0, true, 1}, {"rest", "rest", 0, true, 2}},
            zeilen);
        EXPECT_EQ(AllesLesen(ordner / name).zeilen, zeilen) << name;
    }
}

TEST(WfsSchlüssel, SchreibenUndLesenMitGetrimmtenWerten) {
    TempOrdner ordner;
    const auto datei = ordner / "wfs.key";
    WfsSchlüsselSchreiben(datei, "  Vermessung ", "geheim\t!42 äöü");
    EXPECT_EQ(WfsSchlüsselLesen(datei), std::make_pair("Vermessung"s, "geheim\t!42 äöü"s));
    const std::string inhalt = DateiLesen(datei);
    EXPECT_EQ(inhalt.find("Vermessung"), std::string::npos); // stored scrambled
    EXPECT_EQ(inhalt.find("geheim"), std::string::npos);
    EXPECT_TRUE(inhalt.starts_with("FLURIX-TABELLE\t1\n"));
}

TEST(WfsSchlüssel, GespeicherteDateiBleibtLesbar) {
    // A wfs.key as the program stores it; its cells were scrambled outside the program. If the key
    // or the file format ever changed, installed key files would stop working.
    TempOrdner ordner;
    const auto datei = ordner / "wfs.key";
    DateiSchreiben(datei, "FLURIX-TABELLE\t1\n"
                          "spalten\t2\n"
                          "user\tuser\t1000\t1\t0\n"
                          "pw\tpw\t1000\t1\t1\n"
                          "zeilen\t00000000000000000001\n"
                          "gR=H4\x01\x10\\0\x16\x1b)\x15K\t\\0\\0\\xA8\\x9B\\x85\\xF3\x10\n");
    EXPECT_EQ(WfsSchlüsselLesen(datei), std::make_pair("Vermessung"s, "Größe"s));
}

TEST(WfsSchlüssel, UnbrauchbareDateienSindFehler) {
    TempOrdner ordner;
    const auto datei = ordner / "wfs.key";
    EXPECT_THROW(WfsSchlüsselLesen(datei), Fehler);
    const std::string kopf = "FLURIX-TABELLE\t1\nspalten\t2\nuser\tuser\t0\t1\t0\n";
    const std::string fälle[] = {
        kopf + "passwort\tpw\t0\t1\t1\nzeilen\t1\na\tb\n", // no column "pw"
        kopf + "pw\tpw\t0\t1\t1\nzeilen\t0\n",             // no row
        "user\tpw\na\tb\n",                                // not a saved table
    };
    for (const auto& inhalt : fälle) {
        DateiSchreiben(datei, inhalt);
        try {
            WfsSchlüsselLesen(datei);
            ADD_FAILURE() << inhalt;
        } catch (const Fehler& f) {
            EXPECT_NE(std::string(f.what()).find(datei.string()), std::string::npos) << f.what();
        }
    }
}

} // namespace
} // namespace flurix
