#include "import/textvorbereitung.hpp"

#include "core/cp1252.hpp"
#include "core/fehler.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include <unistd.h>

namespace flurix::import {
namespace {

namespace fs = std::filesystem;
using test::DateiLesen;
using test::DateiSchreiben;
using test::TempOrdner;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr std::size_t Block = 1'000'000;

/// The replacements applied to the whole text, one after another: the result the converters must
/// give whatever their blocks are.
std::string GanzeErsetzungen(std::string_view text, bool mitLfCrLf) {
    std::string ergebnis = Ersetzen(text, "\n", "\r\n");
    if (mitLfCrLf)
        ergebnis = Ersetzen(ergebnis, "\n\r\n", "\r\n");
    return Ersetzen(ergebnis, "\r\r", "\r");
}

/// The status texts, each checked to stand in panel 3.
std::vector<std::string> StatusTexte(const SkriptOberfläche& ui) {
    std::vector<std::string> texte;
    for (const auto& e : ui.Ereignisse()) {
        EXPECT_EQ(e.art, Ereignis::Art::Status);
        EXPECT_EQ(e.panel, 3) << e.text;
        texte.push_back(e.text);
    }
    return texte;
}

fs::path Zwischenpfad(const fs::path& pfad) {
    fs::path z = pfad;
    z += "#";
    return z;
}

bool AlsRoot() { return ::geteuid() == 0; }

/// Text of lines with both line ends, cut so that it ends `links` before the block boundary
/// `grenze`, followed by `links` and `rechts`: the pair straddles the boundary.
void BisZurGrenze(std::string& text, std::size_t grenze, std::string_view links, std::string_view rechts) {
    while (text.size() < grenze)
        text += text.size() % 3 == 0 ? "Flurst\xFC" "ck 0123-456/7\n" : "Eigent\xFCmer Name\r\n";
    text.resize(grenze - links.size());
    if (text.back() == '\r' || text.back() == '\n')
        text.back() = '.'; // the cut pair alone stands at the boundary
    text.append(links).append(rechts);
}

// --- UNIX check ------------------------------------------------------------------------------

std::string AlleBytes() {
    std::string alle;
    for (int b = 0; b < 256; ++b)
        alle += static_cast<char>(b);
    return alle;
}

/// One input and what each converter makes of it.
struct Zeilenendfall {
    const char* name;
    std::string ein;
    std::string nachUnixPrüfung; ///< the file after UnixToPcDatei
    bool umgewandelt;            ///< its result: false when it found CR LF
    std::string nachGemischt;    ///< the file after AnsiUnixToAnsiPc (which always gives true)
};

TEST(Zeilenenden, BeideWandlerMitUndOhneErsetzen) {
    const std::string binär = AlleBytes(); // LF is byte 10; CR (13) is followed by 14
    const std::string binärPc = binär.substr(0, 10) + "\r" + binär.substr(10);
    const std::string nul(std::string("a\0b\nc\0", 6));
    const std::string nulPc(std::string("a\0b\r\nc\0", 7));
    const std::string binärCrLf("\x01\xFF\r\n\x00", 5);
    const Zeilenendfall fälle[] = {
        {"nur LF", "a\nb\n", "a\r\nb\r\n", true, "a\r\nb\r\n"},
        {"nur CR LF", "a\r\nb\r\n", "a\r\nb\r\n", false, "a\r\nb\r\n"},
        {"gemischt", "a\nb\r\nc", "a\nb\r\nc", false, "a\r\nb\r\nc"},
        {"CR CR wird CR", "a\r\rb\n", "a\rb\r\n", true, "a\rb\r\n"},
        {"drei CR werden zwei", "a\r\r\rb", "a\r\rb", true, "a\r\rb"},
        {"vier CR werden zwei", "\r\r\r\r", "\r\r", true, "\r\r"},
        {"einzelnes CR bleibt", "a\rb", "a\rb", true, "a\rb"},
        {"CR am Ende", "a\r", "a\r", true, "a\r"},
        {"LF vor CR", "a\n\rb", "a\r\n\rb", true, "a\r\n\rb"},
        // LF CR LF → CR LF merges an empty LF line into the line end before it
        {"leere LF-Zeile", "a\n\nb", "a\r\n\r\nb", true, "a\r\nb"},
        {"drei LF", "\n\n\n", "\r\n\r\n\r\n", true, "\r\n\r\n"},
        {"leere CR-LF-Zeile", "a\r\n\r\nb", "a\r\n\r\nb", false, "a\r\n\r\nb"},
        {"LF vor CR LF", "\n\r\n", "\n\r\n", false, "\r\n\r\n"},
        {"CR LF vor LF", "\r\n\n", "\r\n\n", false, "\r\r\n"},
        {"ohne Zeilenende am Schluss", "a\nb", "a\r\nb", true, "a\r\nb"},
        {"leere Datei", "", "", true, ""},
        {"NUL-Bytes", nul, nulPc, true, nulPc},
        {"Binärdatei", binär, binärPc, true, binärPc},
        {"CR LF in Binärdatei", binärCrLf, binärCrLf, false, binärCrLf},
    };
    for (const auto& f : fälle) {
        for (const bool ersetzen : {true, false}) {
            SCOPED_TRACE(std::string(f.name) + (ersetzen ? ", ersetzen" : ", prüfen"));
            TempOrdner ordner;
            const auto datei = ordner / "eingabe.txt";

            DateiSchreiben(datei, f.ein);
            SkriptOberfläche ui;
            EXPECT_EQ(UnixToPcDatei(datei, ersetzen, ui), f.umgewandelt);
            EXPECT_EQ(DateiLesen(datei), ersetzen ? f.nachUnixPrüfung : f.ein);
            EXPECT_FALSE(fs::exists(Zwischenpfad(datei)));
            EXPECT_EQ(ui.LetzterStatus(3) == "UNIX-Prüfung ohne Fehler  ", !f.umgewandelt);

            DateiSchreiben(datei, f.ein);
            EXPECT_TRUE(AnsiUnixToAnsiPc(datei, ersetzen, ui));
            EXPECT_EQ(DateiLesen(datei), ersetzen ? f.nachGemischt : f.ein);
            EXPECT_FALSE(fs::exists(Zwischenpfad(datei)));
        }
    }
}

using Schnitt = std::pair<std::string_view, std::string_view>;

/// Text whose block boundaries each cut one pair of `schnitte` apart, the list taken `runden` times.
std::string TextMitSchnitten(std::span<const Schnitt> schnitte, int runden = 1) {
    std::string text;
    std::size_t grenze = 0;
    for (int runde = 0; runde < runden; ++runde)
        for (const auto& [links, rechts] : schnitte)
            BisZurGrenze(text, grenze += Block, links, rechts);
    return text;
}

using Wandler = bool (*)(const fs::path&, bool, Oberfläche&);

/// The file after `wandler` replaced it, written with `inhalt` first; the converter must say it
/// converted and leave no temporary file.
std::string Umgewandelt(const std::string& inhalt, Wandler wandler, SkriptOberfläche& ui) {
    TempOrdner ordner;
    const auto datei = ordner / "eingabe.txt";
    DateiSchreiben(datei, inhalt);
    EXPECT_TRUE(wandler(datei, true, ui));
    EXPECT_FALSE(fs::exists(Zwischenpfad(datei)));
    return DateiLesen(datei);
}

/// LF lines up to `länge` bytes, then one CR LF line.
std::string UnixTextMitCrLfAb(std::size_t länge) {
    std::string text;
    BisZurGrenze(text, länge, "", "");
    text = Ersetzen(text, "\r\n", "\n") + "letzte\r\n";
    EXPECT_EQ(text.find("\r\n"), text.size() - 2);
    return text;
}

// Status per block of a million bytes; a CR LF anywhere, even in a later block, leaves the file as it is.
TEST(UnixToPcDatei, StatusJeBlockUndCrLfInEinemSpäterenBlock) {
    struct Fall {
        const char* name;
        std::string inhalt;
        bool umgewandelt;
        std::vector<std::string> status;
    };
    const std::string ohne = "UNIX-Prüfung ohne Fehler  ";
    const Fall fälle[] = {
        {"UNIX-Datei", "a\nb\n", true, {"0 Mbyte UNIX-Prüfung  "}},
        {"PC-Datei", "a\r\nb\r\n", false, {"0 Mbyte UNIX-Prüfung  ", ohne}},
        {"leere Datei", "", true, {}},
        {"zweieinhalb Blöcke", std::string(Block * 5 / 2, 'x'), true,
         {"0 Mbyte UNIX-Prüfung  ", "1 Mbyte UNIX-Prüfung  ", "2 Mbyte UNIX-Prüfung  "}},
        {"CR LF über der Blockgrenze", std::string(Block - 1, 'x') + "\r\ny\n", false,
         {"0 Mbyte UNIX-Prüfung  ", "1 Mbyte UNIX-Prüfung  ", ohne}},
        {"CR LF erst hinter 32.000 Zeichen", UnixTextMitCrLfAb(40'000), false, {"0 Mbyte UNIX-Prüfung  ", ohne}},
        {"CR LF erst im dritten Block", UnixTextMitCrLfAb(2 * Block + 500), false,
         {"0 Mbyte UNIX-Prüfung  ", "1 Mbyte UNIX-Prüfung  ", "2 Mbyte UNIX-Prüfung  ", ohne}},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        TempOrdner ordner;
        const auto datei = ordner / "a.wldge";
        DateiSchreiben(datei, f.inhalt);
        SkriptOberfläche ui;
        EXPECT_EQ(UnixToPcDatei(datei, true, ui), f.umgewandelt);
        if (!f.umgewandelt) {
            EXPECT_EQ(DateiLesen(datei), f.inhalt);
        }
        EXPECT_FALSE(fs::exists(Zwischenpfad(datei)));
        EXPECT_EQ(StatusTexte(ui), f.status);
    }
}

TEST(UnixToPcDatei, BlockgrenzenÄndernDasErgebnisNicht) {
    // At each boundary a different pair of line-end bytes is cut apart (none is CR LF).
    const Schnitt schnitte[] = {
        {"\r", "\r"}, {"\n", "\n"}, {"\r\r", "\r"}, {"\n", "\r"}, {"\r", "\rx"}, {"x", "\n"},
    };
    const std::string inhalt = Ersetzen(TextMitSchnitten(schnitte), "\r\n", "\n");
    ASSERT_EQ(inhalt.find("\r\n"), std::string::npos);
    SkriptOberfläche ui;
    EXPECT_EQ(Umgewandelt(inhalt, UnixToPcDatei, ui), GanzeErsetzungen(inhalt, false));
}

TEST(UnixToPcDatei, AlteZwischendateiWirdVorherGelöscht) {
    // A leftover file, and a leftover link: writing through it would change the file it points to.
    for (const bool alsVerweis : {false, true}) {
        for (const std::string inhalt : {"a\nb\n", "a\r\nb\r\n"}) {
            SCOPED_TRACE(inhalt + (alsVerweis ? " (Verweis)" : ""));
            TempOrdner ordner;
            const auto datei = ordner / "a.wldge";
            const auto anderes = ordner / "anderes.txt";
            DateiSchreiben(datei, inhalt);
            DateiSchreiben(anderes, std::string(3 * Block, 'z'));
            if (alsVerweis)
                fs::create_symlink(anderes, Zwischenpfad(datei));
            else
                fs::copy_file(anderes, Zwischenpfad(datei));
            SkriptOberfläche ui;
            UnixToPcDatei(datei, true, ui);
            EXPECT_EQ(DateiLesen(datei), "a\r\nb\r\n");
            EXPECT_FALSE(fs::exists(fs::symlink_status(Zwischenpfad(datei))));
            EXPECT_EQ(DateiLesen(anderes), std::string(3 * Block, 'z'));
        }
    }
}

TEST(UnixToPcDatei, PfadAb257ZeichenBleibtUnberührt) {
    TempOrdner ordner;
    const std::size_t vorne = ordner.pfad().string().size() + 1; // folder and "/"
    ASSERT_LT(vorne + 20, LängsterPfad);
    struct Fall {
        std::string name;
        bool umgewandelt;
    };
    const Fall fälle[] = {
        {std::string(256 - vorne, 'n'), true},
        {std::string(257 - vorne, 'n'), false},
        // 256 characters in more than 256 bytes: characters count, not bytes
        {std::string(256 - vorne - 10, 'n') + "üüüüüüüüüü", true},
        {std::string(257 - vorne - 10, 'n') + "üüüüüüüüüü", false},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name.size());
        const auto datei = ordner / f.name;
        DateiSchreiben(datei, "a\nb\n");
        SkriptOberfläche ui;
        EXPECT_EQ(UnixToPcDatei(datei, true, ui), f.umgewandelt);
        EXPECT_EQ(AnsiUnixToAnsiPc(datei, true, ui), f.umgewandelt);
        EXPECT_EQ(DateiLesen(datei), f.umgewandelt ? "a\r\nb\r\n" : "a\nb\n");
        EXPECT_EQ(ui.Ereignisse().empty(), !f.umgewandelt);
        fs::remove(datei);
    }
}

TEST(UnixToPcDatei, RechteDerDateiBleibenErhalten) {
    TempOrdner ordner;
    const auto datei = ordner / "a.wldge";
    DateiSchreiben(datei, "a\n");
    const auto rechte = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
    fs::permissions(datei, rechte);
    SkriptOberfläche ui;
    ASSERT_TRUE(UnixToPcDatei(datei, true, ui));
    EXPECT_EQ(fs::status(datei).permissions(), rechte);
}

// --- Failures: the converters and the readers of this module ----------------------------------

/// Every function of the module that opens a file, called on `datei`.
std::vector<std::pair<const char*, std::function<void(const fs::path&)>>> Dateizugriffe() {
    return {
        {"UnixToPcDatei", [](const fs::path& p) { SkriptOberfläche ui; UnixToPcDatei(p, true, ui); }},
        {"AnsiUnixToAnsiPc",
         [](const fs::path& p) { SkriptOberfläche ui; AnsiUnixToAnsiPc(p, true, ui); }},
        {"AnsiUnixToAnsiPcString",
         [](const fs::path& p) { SkriptOberfläche ui; AnsiUnixToAnsiPcString(p, ui); }},
        {"ZeilenZählen", [](const fs::path& p) { ZeilenZählen(p); }},
        {"DateiKopfLesen", [](const fs::path& p) { DateiKopfLesen(p, 10); }},
    };
}

void ErwarteFehlerMitDateiname(const fs::path& datei) {
    for (const auto& [name, zugriff] : Dateizugriffe()) {
        SCOPED_TRACE(name);
        try {
            zugriff(datei);
            ADD_FAILURE() << "kein Fehler gemeldet";
        } catch (const Fehler& e) {
            EXPECT_THAT(e.what(), HasSubstr("\"" + datei.string() + "\""));
        }
        EXPECT_FALSE(fs::exists(Zwischenpfad(datei)));
    }
}

TEST(Textvorbereitung, FehlendeDateiUndOrdnerWerdenMitNamenGemeldet) {
    TempOrdner ordner;
    fs::create_directory(ordner / "ordner.wldge");
    ErwarteFehlerMitDateiname(ordner / "fehlt.wldge");
    ErwarteFehlerMitDateiname(ordner / "ordner.wldge");
}

TEST(Textvorbereitung, UnlesbareDateiWirdGemeldet) {
    if (AlsRoot())
        GTEST_SKIP() << "läuft als root: Rechte 000 verhindern das Lesen nicht";
    TempOrdner ordner;
    const auto datei = ordner / "gesperrt.wldge";
    DateiSchreiben(datei, "a\nb\n");
    fs::permissions(datei, fs::perms::none);
    ErwarteFehlerMitDateiname(datei);
    fs::permissions(datei, fs::perms::owner_read);
    EXPECT_EQ(DateiLesen(datei), "a\nb\n");
}

TEST(UnixToPcDatei, NichtSchreibbarerOrdnerLässtDieDateiUnberührt) {
    if (AlsRoot())
        GTEST_SKIP() << "läuft als root: ein schreibgeschützter Ordner hält root nicht auf";
    TempOrdner ordner;
    const auto datei = ordner / "nur_lesen" / "a.wldge";
    DateiSchreiben(datei, "a\nb\n");
    fs::permissions(datei.parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
    SkriptOberfläche ui;
    try {
        UnixToPcDatei(datei, true, ui);
        ADD_FAILURE() << "kein Fehler gemeldet";
    } catch (const Fehler& e) {
        EXPECT_THAT(e.what(), HasSubstr(Zwischenpfad(datei).string()));
    }
    fs::permissions(datei.parent_path(), fs::perms::owner_all);
    EXPECT_EQ(DateiLesen(datei), "a\nb\n");
    EXPECT_FALSE(fs::exists(Zwischenpfad(datei)));
}

// --- Mixed line ends ---------------------------------------------------------------------------

TEST(AnsiUnixToAnsiPc, BlockgrenzenUndStatusAlleZehnMillionenByte) {
    // At each boundary a different pair is cut apart, among them every way to cut LF CR LF.
    const Schnitt schnitte[] = {
        {"\r", "\n"},   {"\n", "\r\n"}, {"\n\r", "\n"}, {"\r", "\r"},  {"\n", "\n"},
        {"\r\r", "\r"}, {"\n", "\r"},   {"\n\r", "\r"}, {"\r", "\n\n"}, {"\n", "\n\r\n"},
    };
    const std::string inhalt = TextMitSchnitten(schnitte, 2) + "Ende";
    SkriptOberfläche ui;
    EXPECT_EQ(Umgewandelt(inhalt, AnsiUnixToAnsiPc, ui), GanzeErsetzungen(inhalt, true));
    EXPECT_THAT(StatusTexte(ui), ElementsAre("0 Mbyte, ANSI-Unix nach Ansi-PC...",
                                             "10 Mbyte, ANSI-Unix nach Ansi-PC...",
                                             "20 Mbyte, ANSI-Unix nach Ansi-PC..."));
}

// --- The streaming converter against the replacements on the whole text ----------------------

/// Every text of up to `länge` bytes over "a", CR and LF.
std::vector<std::string> AlleTexte(std::size_t länge) {
    std::vector<std::string> texte{""};
    for (std::size_t von = 0; von < texte.size(); ++von) {
        if (texte[von].size() == länge)
            continue;
        for (const char c : {'a', '\r', '\n'})
            texte.push_back(texte[von] + c);
    }
    return texte;
}

/// The converter fed with the pieces between the cut positions `schnitte`.
std::string StückweiseUmwandeln(std::string_view text, bool mitLfCrLf,
                                const std::vector<std::size_t>& schnitte) {
    detail::Zeilenendwandler wandler(mitLfCrLf);
    std::string ergebnis;
    std::size_t von = 0;
    auto stück = [&](std::size_t bis) {
        std::string aus(detail::Zeilenendwandler::AusgabeFür(bis - von), '?');
        aus.resize(wandler.Umwandeln(text.substr(von, bis - von), aus.data()));
        ergebnis += aus;
        von = bis;
    };
    for (const std::size_t s : schnitte)
        stück(s);
    stück(text.size());
    std::string rest(4, '?');
    rest.resize(wandler.Abschließen(rest.data()));
    return ergebnis + rest;
}

TEST(Zeilenendwandler, GleichDenErsetzungenAufDemGanzenTextWoImmerGeschnitten) {
    std::size_t geprüft = 0;
    for (const auto& text : AlleTexte(8)) {
        for (const bool mitLfCrLf : {false, true}) {
            const std::string erwartet = GanzeErsetzungen(text, mitLfCrLf);
            std::vector<std::size_t> jedesByte;
            for (std::size_t i = 0; i < text.size(); ++i)
                jedesByte.push_back(i);
            ASSERT_EQ(StückweiseUmwandeln(text, mitLfCrLf, jedesByte), erwartet)
                << testing::PrintToString(text);
            for (std::size_t schnitt = 0; schnitt <= text.size(); ++schnitt) {
                ASSERT_EQ(StückweiseUmwandeln(text, mitLfCrLf, {schnitt}), erwartet)
                    << testing::PrintToString(text) << " geschnitten bei " << schnitt;
                ++geprüft;
            }
        }
    }
    EXPECT_GT(geprüft, 90'000u);
}

TEST(Zeilenendwandler, CrLfAuchÜberDieGrenzeZweierStücke) {
    struct Fall {
        std::string_view stück;
        bool crDavor;
        bool erwartet;
    };
    const Fall fälle[] = {
        {"a\r\nb", false, true}, {"a\nb\r", false, false}, {"\nb", true, true},  {"\nb", false, false},
        {"b\n", true, false},    {"\r\r\r", false, false}, {"\r\r\n", false, true}, {"", true, false},
        {"\n\r", false, false},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(detail::HatCrLf(f.stück, f.crDavor), f.erwartet) << testing::PrintToString(f.stück);
}

// --- Line counts -------------------------------------------------------------------------------

TEST(ZeilenZählen, CrZählenUndLetzteZeileNurWennNichtLeer) {
    struct Fall {
        std::string inhalt;
        long long zeilen;
    };
    const Fall fälle[] = {
        {"", 0},
        {"a", 1},
        {" \t ", 0},
        {"a\r\n", 1},
        {"a\r\nb", 2},
        {"a\r\nb\r\n  \t", 2},
        {"a\r\n\x1A", 1},
        {"\r\r", 2},
        {"a\nb\n", 1},            // without CR the whole file is one line
        {"a\r\n\r\n\r\n", 3},     // empty lines count
        {std::string("\0\r\n", 3), 1},
        // around the end of the first read block of 16,384 bytes
        {std::string(ZählBlock - 1, 'x') + "\r  ", 1},
        {std::string(ZählBlock - 1, 'x') + "\ry", 2},
        {"x\r" + std::string(ZählBlock - 2, 'y') + "\r\n", 2},
        {"x\r" + std::string(ZählBlock, 'y'), 2},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(testing::PrintToString(f.inhalt.substr(0, 20)) + ", " + std::to_string(f.inhalt.size()) +
                     " Byte");
        TempOrdner ordner;
        DateiSchreiben(ordner / "a.txt", f.inhalt);
        EXPECT_EQ(ZeilenZählen(ordner / "a.txt"), f.zeilen);
        SkriptOberfläche ui;
        EXPECT_EQ(AnsiUnixToAnsiPcString(ordner / "a.txt", ui), f.zeilen);
        EXPECT_THAT(ui.Ereignisse(), IsEmpty());
    }
}

TEST(AnsiUnixToAnsiPcString, FortschrittBeiJederMillionstenZeile) {
    TempOrdner ordner;
    std::string inhalt;
    inhalt.reserve(4'000'010);
    for (int i = 0; i < 2'000'000; ++i)
        inhalt += "\r\n";
    inhalt += "<letzte/>";
    DateiSchreiben(ordner / "nas.xml", inhalt);
    SkriptOberfläche ui;
    EXPECT_EQ(AnsiUnixToAnsiPcString(ordner / "nas.xml", ui), 2'000'001);
    EXPECT_THAT(StatusTexte(ui),
                ElementsAre("1000000 Zeilen vorgeprüft...", "2000000 Zeilen vorgeprüft..."));
}

// --- Character correction ----------------------------------------------------------------------

TEST(ZeichenKorrektur, AlteCodesWerdenUmlauteByte26FälltWegAnderesBleibt) {
    const std::pair<std::string, std::string> fälle[] = {
        {"a\x8E\x9A\x99\x84\x81\x94\xE1" "b", "aÄÜÖäüöß" "b"}, // the DOS codes
        {"{|}~", "äöüß"}, {"M\x84{del", "Määdel"},          // two codes for "ä": two "ä"
        {"Ende\x1A", "Ende"}, {"\x1A\x1A", ""}, {"a\x1A{b\x1A", "aäb"}, {"[\\]", "[\\]"},
        {"Stra\xDF" "e M\xFC" "ller", "Straße Müller"}, // Windows-1252 passes unchanged
        {std::string("a\0b", 3), std::string("a\0b", 3)}, {"", ""},
    };
    for (const auto& [ein, utf8] : fälle) {
        std::string zeile = ein;
        ZeichenKorrektur(zeile);
        EXPECT_EQ(Cp1252NachUtf8(zeile), utf8) << testing::PrintToString(ein);
    }
    const std::string geändert = std::string("\x8E\x9A\x99\x84\x81\x94\xE1{|}~\x1A");
    for (int b = 0; b < 256; ++b) {
        const char c = static_cast<char>(b);
        if (geändert.find(c) != std::string::npos)
            continue;
        std::string zeile(3, c);
        ZeichenKorrektur(zeile);
        EXPECT_EQ(zeile, std::string(3, c)) << b;
    }
}

// --- Head of a file ----------------------------------------------------------------------------

TEST(DateiKopfLesen, ErsteZeilenMitIhrenZeilenenden) {
    const std::string langeZeile(65'535, 'x'); // its CR is the last byte of the first read
    struct Fall {
        const char* name;
        std::string inhalt;
        int anzahl;
        std::size_t höchstens;
        std::string kopf;
    };
    const Fall fälle[] = {
        {"CR LF", "l1\r\nl2\r\nl3\r\n", 2, KopfHöchstlänge, "l1\r\nl2\r\n"},
        {"LF", "l1\nl2\nl3\n", 2, KopfHöchstlänge, "l1\nl2\n"},
        {"nur CR", "l1\rl2\rl3\r", 2, KopfHöchstlänge, "l1\rl2\r"},
        {"gemischt", "l1\nl2\r\nl3\rl4", 3, KopfHöchstlänge, "l1\nl2\r\nl3\r"},
        {"weniger Zeilen", "l1\r\nl2", 5, KopfHöchstlänge, "l1\r\nl2"},
        {"leere Zeilen zählen", "\r\n\r\nl3\r\n", 2, KopfHöchstlänge, "\r\n\r\n"},
        {"CR am Dateiende", "a\r", 1, KopfHöchstlänge, "a\r"},
        {"null Zeilen", "l1\r\n", 0, KopfHöchstlänge, ""},
        {"leere Datei", "", 3, KopfHöchstlänge, ""},
        {"höchstens", "l1\r\nl2\r\n", 2, 3, "l1\r"},
        {"CR LF über die Lesegrenze", langeZeile + "\r\nnoch\r\n", 1, KopfHöchstlänge,
         langeZeile + "\r\n"},
        {"CR allein an der Lesegrenze", langeZeile + "\rnoch\r\n", 1, KopfHöchstlänge, langeZeile + "\r"},
        {"zwei über die Lesegrenze", langeZeile + "\r\nnoch\r\nmehr", 2, KopfHöchstlänge,
         langeZeile + "\r\nnoch\r\n"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        TempOrdner ordner;
        DateiSchreiben(ordner / "kopf.txt", f.inhalt);
        EXPECT_EQ(DateiKopfLesen(ordner / "kopf.txt", f.anzahl, f.höchstens), f.kopf);
    }
}

// --- Lists, sizes ------------------------------------------------------------------------------

TEST(IstInText, IrgendeinEintragDerListe) {
    struct Fall {
        std::string_view text;
        std::string_view liste;
        bool erwartet;
    };
    const Fall fälle[] = {
        {"<AX_Person gml:id=", "AX_Bestandsdatenauszug,AX_Person", true},
        {"<AX_Bestandsdatenauszug>", "AX_Bestandsdatenauszug,AX_Person", true},
        {"<AX_Flurstueck>", "AX_Bestandsdatenauszug,AX_Person", false},
        {"ax_person", "AX_Person", false}, // exact bytes
        {"abc", "", false},                // an empty list finds nothing
        {"abc", ",", false},
        {"abc", "x,,y", false},
        {"abc", "x,,b", true},
        {"", "a", false},
        {"a b", " ", true}, // a blank item is searched as it is
        {"ab", "a ", false},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(IstInText(f.text, f.liste), f.erwartet) << f.text << " | " << f.liste;
}

TEST(DateiZuGroß, ÜberVierGiBMitDerVierundsechzigBitGröße) {
    TempOrdner ordner;
    struct Fall {
        std::uintmax_t größe;
        bool zuGroß;
    };
    const Fall fälle[] = {
        {0, false}, {4'294'967'295, false}, {4'294'967'296, false}, {4'294'967'297, true}};
    for (const auto& f : fälle) {
        const auto datei = ordner / ("gross" + std::to_string(f.größe) + ".xml");
        DateiSchreiben(datei, "");
        fs::resize_file(datei, f.größe); // sparse: takes no room on the disk
        EXPECT_EQ(DateiZuGroß(datei), f.zuGroß) << f.größe;
    }
    EXPECT_FALSE(DateiZuGroß(ordner / "fehlt.xml"));
    EXPECT_EQ(MeldungAusgangsdateiZuGroß,
              "Fehler: Ausgangsdatei ist mit > 4.294.967.296 Byte zu groß!   ");
    EXPECT_EQ(MeldungEineAusgangsdateiZuGroß,
              "Fehler: Eine Ausgangsdatei ist mit > 4.294.967.296 Byte zu groß!   ");
}

} // namespace
} // namespace flurix::import
