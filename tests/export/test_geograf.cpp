// The GEOgraf batch export and the GRAFBAT reader: the rules of the text block and stamp forms
// as a table of cases, a golden file per form, every written file read back to the same lines,
// and the lines the reader must refuse without stopping.

#include "export/geograf_out.hpp"

#include "core/cp1252.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"
#include "export/grafbat_leser.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sstream>

namespace flurix::ausgabe {
namespace {

namespace fs = std::filesystem;
using test::DateiLesen;
using test::DateiSchreiben;

constexpr const char* Spalten[] = {"Gemarkung",      "Flur",       "Flurstück",         "Fläche",
                                   "Grundbuchblatt", "BVNR",       "Anteil_Grundstück", "Name",
                                   "Namenszusatz",   "Rechtswert", "Hochwert"};

// A table of the columns above from tab-separated rows; a row beginning with "+" is selected.
Kataster Tabelle(const std::vector<std::string>& zeilen) {
    Kataster k;
    for (const char* s : Spalten)
        k.SpalteHinzufügen({s, s});
    for (const auto& z : zeilen) {
        const bool gewählt = z.starts_with('+');
        k.ZeileHinzufügen(gewählt ? std::string_view(z).substr(1) : std::string_view(z));
        if (gewählt)
            k.Auswählen(k.Zeilenzahl() - 1);
    }
    return k;
}

GeografOptionen Optionen(GeografForm form, std::vector<std::string> spalten) {
    GeografOptionen o;
    o.form = form;
    o.art = 233;
    o.spalten = std::move(spalten);
    o.datum = "24.11.2026";
    o.uhrzeit = "22:05:00";
    return o;
}

// The file's lines as UTF-8 without their CR LF.
std::vector<std::string> Zeilen(const std::string& bytes) {
    std::vector<std::string> zeilen;
    std::size_t anfang = 0;
    for (std::size_t ende; (ende = bytes.find("\r\n", anfang)) != std::string::npos;
         anfang = ende + 2)
        zeilen.push_back(Cp1252NachUtf8(bytes.substr(anfang, ende - anfang)));
    EXPECT_EQ(anfang, bytes.size()) << "die Datei endet nicht mit CR LF";
    return zeilen;
}

const std::string Stempelkopf = "PAR: \"500bk.art\",\"werk.sym\",\"GEOGRAF\", 500";

struct Fall {
    const char* name;
    std::vector<std::string> zeilen;
    GeografOptionen optionen;
    std::vector<std::string> enthalten; ///< whole lines that must be in the file
    std::vector<std::string> fehlen;    ///< line starts that must not be
    std::string err;                    ///< the .err file (UTF-8, lines ended by "\n")
    std::vector<std::string> meldungen; ///< messages shown
};

GeografOptionen Mit(GeografOptionen o, const std::function<void(GeografOptionen&)>& ändern) {
    ändern(o);
    return o;
}

TEST(GeografOut, RegelnDerTextblöckeUndStempel) {
    const std::string te1 = "TE1: ,0.233, 3456789.12, 5600000.5, 3456789.12, 5600000.5, 100, 0, 0, "
                            "0, 0, , 0, , , , , , \"";
    const std::string nord = "Nord\t007\t";
    const std::string koord = "\t456789.12\t5600000.5";
    const std::string warnungB =
        "Bitte nutzen Sie StempelB! Es werden mehr als 9 Datenzeilen ausgegeben!   ";
    std::vector<std::string> elf;
    for (int i = 1; i <= 11; ++i)
        elf.push_back(nord + std::to_string(i) + "/0\t100\t1\t1\t\tN" + std::to_string(i) +
                      "\t\t0\t0");
    const std::vector<std::string> flächen = {
        nord + "1/0\t12345\t\t\t\t\t\t\t", nord + "2/0\t345\t\t\t\t\t\t\t",
        nord + "3/0\t45\t\t\t\t\t\t\t", nord + "4/0\t100\t\t\t\t\t\t\t"};
    const Fall fälle[] = {
        {"Flurstück allein: Strich wird Unterstrich",
         {nord + "12/3\t\t\t\t\t\t" + koord},
         Optionen(GeografForm::Ohne, {"Flurstück"}),
         {te1, "  TX1: 12_3"},
         {},
         "",
         {}},
        {"zwei Spalten: Strich bleibt",
         {nord + "12/3\t\t\t\t\tMeier\t" + koord},
         Optionen(GeografForm::Ohne, {"Flurstück", "Name"}),
         {"  TX1: 12/3", "  TX1: Meier"},
         {},
         "",
         {}},
        {"Nenner 0 fällt weg",
         {nord + "12/0\t\t\t\t\t\t" + koord},
         Optionen(GeografForm::Ohne, {"Flurstück", "Name"}),
         {"  TX1: 12"},
         {"  TX1: 12/"},
         "",
         {}},
        {"Rechtswert 0: Lücke in der Nummer und .err",
         {nord + "12/1\t\t\t\t\t\t" + koord, nord + "12/2\t\t\t\t\t\t\t0\t5600000.5",
          nord + "12/3\t\t\t\t\t\t" + koord},
         Optionen(GeografForm::Ohne, {"Flurstück"}),
         {"  TX1: 12_1", "  TX3: 12_3"},
         {"TE2:", "  TX2:"},
         "Gemarkung Nord, Flur 007, Flurstück 12/2 ohne Georeferenzierung!\n",
         {"Es wurden 1 Flurstücke ohne Georeferenzierung vorgefunden! Ihre Ausgabe wurde "
          "übersprungen!   "}},
        {"MKZ leer",
         {nord + "1\t\t\t\t\t\t" + koord},
         Mit(Optionen(GeografForm::Ohne, {"Flurstück"}), [](GeografOptionen& o) { o.mkz = ""; }),
         {"TE1: ,0.233, 456789.12, 5600000.5, 456789.12, 5600000.5, 100, 0, 0, 0, 0, , 0, , , , , "
          ", \""},
         {},
         "",
         {}},
        {"nur ausgewählte Zeilen, Nummer nur für sie",
         {nord + "1\t\t\t\t\t\t" + koord, "+" + nord + "2\t\t\t\t\t\t" + koord},
         Optionen(GeografForm::Ohne, {"Flurstück"}),
         {te1, "  TX1: 2"},
         {"TE2:", "  TX1: 1"},
         "",
         {}},
        {"alle: Name vor jedem Wert, Einheiten",
         {nord + "12/3\t345\t0000123\t\t\tMüller\t" + koord},
         Optionen(GeografForm::Alle,
                  {"Flurstück", "Fläche", "Grundbuchblatt", "Rechtswert", "Name"}),
         {"  TX1: Flurstück 12/3", "  TX1: Fläche 345m²", "  TX1: Grundbuchblatt 0000123",
          "  TX1: Rechtswert 456789.12m", "  TX1: Name Müller"},
         {},
         "",
         {}},
        {"plausibel: Grbl., Name unbeschriftet",
         {nord + "12/0\t345\t0000123\t\t\tMüller\t" + koord},
         Optionen(GeografForm::Plausibel, {"Flurstück", "Fläche", "Grundbuchblatt", "Name"}),
         {"  TX1: Flurstück 12", "  TX1: Fläche 345m²", "  TX1: Grbl. 0000123", "  TX1: Müller"},
         {},
         "",
         {}},
        {"ohne führende Nullen",
         {nord + "00012/0003\t000345\t0000123\t\t\t\t" + koord},
         Mit(Optionen(GeografForm::Ohne, {"Flur", "Flurstück", "Fläche", "Grundbuchblatt"}),
             [](GeografOptionen& o) { o.ohneFührendeNullen = true; }),
         {"  TX1: 7", "  TX1: 12/3", "  TX1: 345", "  TX1: 123"},
         {},
         "",
         {}},
        {"Zeichen: Zeilenende wird Leerzeichen, Quote und Komma bleiben, Fremdes wird ?",
         {nord + "1\t\t\t\t\tMeier, \"Hans\"\r\nZweite\tŁukasz" + koord},
         Optionen(GeografForm::Ohne, {"Name", "Namenszusatz"}),
         {"  TX1: Meier, \"Hans\"  Zweite", "  TX1: ?ukasz"},
         {},
         "",
         {}},
        {"Stempel A: Flächen in ha, a, m², Koordinaten zählen nicht",
         flächen,
         Optionen(GeografForm::StempelA, {"Flurstück", "Fläche"}),
         {Stempelkopf,
          "  TX1: 1",
          "  TX2: 1",
          "  TX3: 23",
          "  TX4: 45",
          "  TX9: ",
          "  TX10: 3",
          "  TX11: 45",
          "  TX16: ",
          "  TX17: ",
          "  TX18: 45",
          "  TX23: ",
          "  TX24: 1",
          "  TX25: 00",
          "TE1: ,0.233,247.611,146.297,247.611,146.297,100.000000,0,0,1,0,,0,,,,,,,1,",
          "TE4: ,0.233,270.4589,146.297,270.4589,146.297,100.000000,0,0,2,0,,0,,,,,,,4,",
          "PK1: ,0.1,247.611,146.297,,,0,0,,,,,,0,,0,,0,0,,1,0,0,0,,,,",
          "TE8: ,0.233,247.611,142.797,247.611,142.797,100.000000,0,0,1,0,,0,,,,,,,8,",
          "OO2: \"ALB\" ,0.233,247.611,142.797,0,,,,,,,,T",
          "  OR2: TE=8,1",
          "  OR2: TE=14,1"},
         {"  OR2: TE=7,", "  OR2: TE=15,"},
         "",
         {}},
        {"Stempel A: elfte Zeile 35 tiefer, Hinweis einmal",
         elf,
         Optionen(GeografForm::StempelA, {"Flurstück", "Name"}),
         {"OO1: \"ALB\" ,0.233,247.611,146.297,0,,,,,,,,T",
          "OO11: \"ALB\" ,0.233,247.611,111.297,0,,,,,,,,T", "  TX71: 11", "  TX77: N11",
          "  OR11: TE=77,1"},
         {},
         "",
         {warnungB}},
        {"Stempel B: kein Hinweis",
         elf,
         Optionen(GeografForm::StempelB, {"Flurstück"}),
         {"OO1: \"ALB\" ,0.233,247.611,211.357,0,,,,,,,,T",
          "OO11: \"ALB\" ,0.233,247.611,176.357,0,,,,,,,,T"},
         {},
         "",
         {}},
        {"Stempel: Blatt, Nummer, Eigentümer mit Zusatz und Anteil",
         {nord + "00012/0003\t1234\t0000123\t0004\t1/2\tMeier\tErbe\t\t"},
         Optionen(GeografForm::StempelB, std::vector<std::string>(GeografStempelSpalten.begin(),
                                                                  GeografStempelSpalten.end())),
         {"  TX1: 12/3", "  TX2: ", "  TX3: 12", "  TX4: 34", "  TX5: 123", "  TX6: 0004",
          "  TX7: Meier Erbe (1/2 Anteile)"},
         {},
         "",
         {}},
        {"eine Zeile: ausgewählte Zeilen gleichen Flurstücks und Blatts zusammen",
         {"+" + nord + "5/0\t100\t77\t1\t1/2\tMeier\tErbe\t\t",
          "+" + nord + "5/0\t100\t77\t1\t1/2\tSchulz\t\t\t",
          "+" + nord + "6/0\t100\t77\t1\t\tLang\t\t\t", nord + "6/0\t100\t77\t1\t\tNicht\t\t\t"},
         Mit(Optionen(GeografForm::StempelA, std::vector<std::string>(GeografStempelSpalten.begin(),
                                                                      GeografStempelSpalten.end())),
             [](GeografOptionen& o) {
                 o.eineZeile = true;
                 o.ohneFührendeNullen = true;
             }),
         {"  TX7: Meier Erbe (1/2 Anteile); Schulz (1/2 Anteile)", "  TX14: Lang", "  TX6: 1"},
         {"OO3:", "  TX21:"},
         "",
         {}},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        test::TempOrdner ordner;
        const Kataster k = Tabelle(f.zeilen);
        SkriptOberfläche ui;
        ASSERT_TRUE(WriteGeografOut(k, f.optionen, ordner / "x.out", ui));
        const auto zeilen = Zeilen(DateiLesen(ordner / "x.out"));
        for (const auto& z : f.enthalten)
            EXPECT_NE(std::find(zeilen.begin(), zeilen.end(), z), zeilen.end()) << "fehlt: " << z;
        for (const auto& z : f.fehlen)
            EXPECT_EQ(std::find_if(zeilen.begin(), zeilen.end(),
                                   [&](const std::string& l) { return l.starts_with(z); }),
                      zeilen.end())
                << "unerwartet: " << z;
        std::string err;
        if (fs::exists(ordner / "x.out.err"))
            for (const auto& z : Zeilen(DateiLesen(ordner / "x.out.err")))
                err += z + "\n";
        EXPECT_EQ(err, f.err);
        EXPECT_EQ(ui.Meldungen(), f.meldungen);
        EXPECT_EQ(ui.LetzterStatus(2), "Datei " + (ordner / "x").string() + ".out erzeugt   ");
        // Only the target and its .err are left: no temporary file beside them.
        EXPECT_EQ(std::distance(fs::directory_iterator(ordner.pfad()), fs::directory_iterator()),
                  err.empty() ? 1 : 2);
    }
}

// The .err of an earlier run is extended, not replaced; progress every 20 rows.
TEST(GeografOut, ErrWirdErweitertUndFortschrittAlle20Zeilen) {
    test::TempOrdner ordner;
    DateiSchreiben(ordner / "x.out.err", "alt\r\n");
    std::vector<std::string> zeilen(40, "Nord\t1\t1/0\t\t\t\t\t\t\t\t");
    SkriptOberfläche ui;
    ASSERT_TRUE(WriteGeografOut(Tabelle(zeilen), Optionen(GeografForm::Ohne, {"Flurstück"}),
                                ordner / "x.out", ui));
    const std::string err = DateiLesen(ordner / "x.out.err");
    EXPECT_TRUE(err.starts_with("alt\r\nGemarkung Nord, Flur 1, Flurst\xFC"
                                "ck 1/0 ohne Georeferenzierung!\r\n"));
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 41);
    EXPECT_EQ(ui.Texte(Ereignis::Art::Status),
              (std::vector<std::string>{"0% ausgelesen  ", "50% ausgelesen  ", "100% ausgelesen  ",
                                        "100% ausgelesen  ",
                                        "Datei " + (ordner / "x").string() + ".out erzeugt   "}));
}

// A file that can't be written leaves the old target as it was and says why.
TEST(GeografOut, FehlerLässtAlteDateiStehen) {
    test::TempOrdner ordner;
    SkriptOberfläche ui;
    const auto ergebnis =
        WriteGeografOut(Tabelle({"Nord\t1\t1\t\t\t\t\t\t\t1\t1"}),
                        Optionen(GeografForm::Ohne, {"Flurstück"}), ordner / "fehlt" / "x.out", ui);
    EXPECT_FALSE(ergebnis);
    EXPECT_TRUE(ergebnis.Meldung().starts_with("GeografAusgabe ErrNr: ")) << ergebnis.Meldung();
    EXPECT_FALSE(fs::exists(ordner / "fehlt"));

    // The target a folder: the rename fails, the folder stays and no temporary file is left.
    fs::create_directories(ordner / "ordner.out" / "drin");
    EXPECT_FALSE(WriteGeografOut(Tabelle({"Nord\t1\t1\t\t\t\t\t\t\t1\t1"}),
                                 Optionen(GeografForm::Ohne, {"Flurstück"}), ordner / "ordner.out",
                                 ui));
    EXPECT_TRUE(fs::is_directory(ordner / "ordner.out" / "drin"));
    EXPECT_EQ(std::distance(fs::directory_iterator(ordner.pfad()), fs::directory_iterator()), 1);
}

// A line rebuilt from what the reader made of it.
std::string Zusammengesetzt(const GrafbatSatz& s) {
    if (s.art == GrafbatArt::Kommentar)
        return "*" + s.text;
    std::string zeile = s.art == GrafbatArt::Kopf ? s.kennung + ": "
                                                  : (s.unterSatz ? "  " : "") + s.kennung +
                                                        std::to_string(s.nummer) + ": ";
    for (std::size_t i = 0; i < s.felder.size(); ++i)
        zeile += (i > 0 ? "," : "") + s.felder[i];
    return zeile;
}

// One small table in each of the five forms, byte for byte; each file read back by the reader
// to the same lines, with no problem reported.
TEST(GeografOut, GoldenJeFormUndZurückGelesen) {
    const Kataster k =
        Tabelle({"Nord\t007\t00012/0003\t12345\t0000123\t0001\t1/2\tMüller, "
                 "\"Hans\"\tErbe\t456789.12\t5600000.5",
                 "Nord\t007\t00012/0000\t345\t0000124\t0002\t\tSchulz\t\t456790\t5600001",
                 "Süd\t001\t00004/0001\t45\t0000124\t0003\t\tLang\t\t0\t0"});
    const std::pair<GeografForm, const char*> formen[] = {{GeografForm::Ohne, "ohne"},
                                                          {GeografForm::Alle, "alle"},
                                                          {GeografForm::Plausibel, "plausibel"},
                                                          {GeografForm::StempelA, "stempel_a"},
                                                          {GeografForm::StempelB, "stempel_b"}};
    for (const auto& [form, name] : formen) {
        SCOPED_TRACE(name);
        test::TempOrdner ordner;
        SkriptOberfläche ui;
        auto opt = Optionen(form, {"Flurstück", "Fläche", "Grundbuchblatt", "Name", "Namenszusatz",
                                   "Anteil_Grundstück", "Rechtswert"});
        opt.ebene = 5;
        ASSERT_TRUE(WriteGeografOut(k, opt, ordner / "x.out", ui));
        const std::string bytes = DateiLesen(ordner / "x.out");
        EXPECT_EQ(test::GoldenVergleich(bytes, test::Testdaten() / "export" / "geograf" /
                                                   (std::string("form_") + name + ".out")),
                  "");
        GrafbatLeser leser(ordner / "x.out");
        std::vector<std::string> gelesen;
        bool erstelltAm = false;
        while (const auto satz = leser.NächsterSatz()) {
            gelesen.push_back(Zusammengesetzt(*satz));
            erstelltAm |= satz->text == " erstellt am: 24.11.2026, Uhrzeit: 22:05:00";
        }
        EXPECT_TRUE(leser.Probleme().empty());
        EXPECT_TRUE(erstelltAm);
        EXPECT_EQ(gelesen, Zeilen(bytes));
    }
}

// Every kind of bad line is reported with its number and passed over; the good ones around it
// are read.
TEST(GrafbatLeser, SchlechteZeilenWerdenGemeldetUndÜbergangen) {
    struct Zeile {
        std::string text;
        std::string problem; ///< "" for a line that is read (or an empty line)
    };
    const Zeile zeilen[] = {
        {"* erstellt mit Flurix 2.1", ""},
        {"TE: ,0.1", "kein Satz (erwartet zwei Großbuchstaben, Nummer, \": \")"},
        {"T1: x", "kein Satz (erwartet zwei Großbuchstaben, Nummer, \": \")"},
        {"te1: x", "kein Satz (erwartet zwei Großbuchstaben, Nummer, \": \")"},
        {"   TX1: drei Blanks", "kein Satz (erwartet zwei Großbuchstaben, Nummer, \": \")"},
        {"TE12 x", "hinter der Satznummer fehlt \": \""},
        {"TE99999999999999999999: x", "Satznummer zu groß"},
        {"", ""},
        {"OO3: \"A,B\" ,0.1,\"offen, bis zum Ende", ""},
        {std::string(GrafbatZeileMax + 5, 'x'), "länger als 65536 Zeichen, übergangen"},
        {"  OR3: TE=7,1", ""},
    };
    std::string datei;
    for (const auto& z : zeilen)
        datei += Utf8NachCp1252(z.text) + (z.text.starts_with("OO") ? "\n" : "\r\n");
    datei += "PK5: ohne Zeilenende";
    test::TempOrdner ordner;
    DateiSchreiben(ordner / "s.out", datei);
    GrafbatLeser leser(ordner / "s.out");
    std::vector<GrafbatSatz> sätze;
    while (auto s = leser.NächsterSatz())
        sätze.push_back(std::move(*s));
    std::vector<std::string> erwartet;
    for (std::size_t i = 0; i < std::size(zeilen); ++i)
        if (!zeilen[i].problem.empty())
            erwartet.push_back("Zeile " + std::to_string(i + 1) + ": " + zeilen[i].problem);
    std::vector<std::string> gemeldet;
    for (const auto& p : leser.Probleme())
        gemeldet.push_back(p.meldung);
    EXPECT_EQ(gemeldet, erwartet);
    ASSERT_EQ(sätze.size(), 4u);
    EXPECT_EQ(sätze[0].art, GrafbatArt::Kommentar);
    EXPECT_EQ(sätze[0].erstelltMit, "Flurix 2.1");
    EXPECT_EQ(sätze[1].kennung, "OO");
    EXPECT_EQ(sätze[1].nummer, 3);
    EXPECT_EQ(sätze[1].zeile, 9u);
    EXPECT_EQ(sätze[1].felder,
              (std::vector<std::string>{"\"A,B\" ", "0.1", "\"offen, bis zum Ende"}));
    EXPECT_TRUE(sätze[2].unterSatz);
    EXPECT_EQ(sätze[2].felder, (std::vector<std::string>{"TE=7", "1"}));
    EXPECT_EQ(sätze[3].text, "ohne Zeilenende");
    EXPECT_THROW(GrafbatLeser(ordner / "fehlt.out"), Fehler);
}

} // namespace
} // namespace flurix::ausgabe
