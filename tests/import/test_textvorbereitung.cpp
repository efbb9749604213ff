// The text preparation: both line-end converters, the line counts and the head of a file on one
// list of inputs against a golden transcript; the streaming converter against the replacements on
// the whole text at every cut; block boundaries, stale temporary files, long paths and failures.

#include "import/textvorbereitung.hpp"

#include "core/cp1252.hpp"
#include "core/fehler.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <span>
#include <unistd.h>

namespace flurix::import {
namespace {

namespace fs = std::filesystem;
using test::DateiLesen;
using test::DateiSchreiben;
using test::TempOrdner;
using ::testing::HasSubstr;

constexpr std::size_t Block = UmwandlungsBlock;
using Wandler = bool (*)(const fs::path&, bool, Oberfläche&);

/// The replacements applied to the whole text, one after another: the result the converters must
/// give whatever their blocks are.
std::string GanzeErsetzungen(std::string_view text, bool mitLfCrLf) {
    std::string ergebnis = Ersetzen(text, "\n", "\r\n");
    if (mitLfCrLf)
        ergebnis = Ersetzen(ergebnis, "\n\r\n", "\r\n");
    return Ersetzen(ergebnis, "\r\r", "\r");
}

fs::path Zwischenpfad(fs::path pfad) { return pfad += "#"; }

/// The status texts, each checked to stand in panel 3, joined by "|".
std::string Status(const SkriptOberfläche& ui) {
    std::string texte;
    for (const auto& e : ui.Ereignisse()) {
        EXPECT_EQ(e.art, Ereignis::Art::Status);
        EXPECT_EQ(e.panel, 3) << e.text;
        texte += "|" + e.text;
    }
    return texte.empty() ? "" : texte.substr(1);
}

/// Bytes as a quoted text: control bytes and bytes beyond ASCII as \xNN, a run of eight or more
/// equal bytes as {count×byte}, a text longer than 160 characters as its size.
std::string Zeigen(std::string_view bytes) {
    static const char Hex[] = "0123456789ABCDEF";
    std::string aus;
    for (std::size_t i = 0; i < bytes.size();) {
        std::size_t lauf = 1;
        while (i + lauf < bytes.size() && bytes[i + lauf] == bytes[i])
            ++lauf;
        const auto b = static_cast<unsigned char>(bytes[i]);
        std::string zeichen(1, bytes[i]);
        if (b == '\r' || b == '\n')
            zeichen = b == '\r' ? "\\r" : "\\n";
        else if (b < 0x20 || b >= 0x7F)
            zeichen = std::string("\\x") + Hex[b >> 4] + Hex[b & 15];
        aus += lauf >= 8 ? "{" + std::to_string(lauf) + "×" + zeichen + "}" : zeichen;
        i += lauf >= 8 ? lauf : 1;
    }
    return aus.size() > 160 ? "<" + std::to_string(bytes.size()) + " Byte>" : "\"" + aus + "\"";
}

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

/// LF lines up to `länge` bytes, then one CR LF line.
std::string UnixTextMitCrLfAb(std::size_t länge) {
    std::string text;
    BisZurGrenze(text, länge, "", "");
    return Ersetzen(text, "\r\n", "\n") + "letzte\r\n";
}

// Each input through UnixToPcDatei and AnsiUnixToAnsiPc (result, file and status), ZeilenZählen
// and DateiKopfLesen of one to three lines. Besides the transcript: without `ersetzen` the file
// stays as it is, the converted files equal the replacements on the whole text, no temporary file
// is left, and AnsiUnixToAnsiPcString counts as ZeilenZählen without a status below a million lines.
TEST(Textvorbereitung, JedeEingabeWieImProtokoll) {
    std::string alleBytes;
    for (int b = 0; b < 256; ++b)
        alleBytes += static_cast<char>(b);
    const std::string langeZeile(65'535, 'x'); // its CR is the last byte of the first read of the head
    const std::pair<const char*, std::string> eingaben[] = {
        {"nur LF", "a\nb\n"}, {"nur CR LF", "a\r\nb\r\n"}, {"gemischt", "a\nb\r\nc"}, {"CR CR", "a\r\rb\n"},
        {"drei CR", "a\r\r\rb"}, {"vier CR", "\r\r\r\r"}, {"einzelnes CR", "a\rb"}, {"CR am Ende", "a\r"},
        {"LF vor CR", "a\n\rb"}, {"leere LF-Zeile", "a\n\nb"}, {"drei LF", "\n\n\n"},
        {"leere CR-LF-Zeile", "a\r\n\r\nb"}, {"LF vor CR LF", "\n\r\n"}, {"CR LF vor LF", "\r\n\n"},
        {"ohne Zeilenende am Schluss", "a\nb"}, {"leere Datei", ""}, {"NUL-Bytes", std::string("a\0b\nc\0", 6)},
        {"alle Bytes: CR (13) folgt LF (10) nicht", alleBytes},
        {"CR LF in Binärdatei", std::string("\x01\xFF\r\n\x00", 5)},
        {"zweieinhalb Blöcke", std::string(Block * 5 / 2, 'x')},
        {"CR LF über der Blockgrenze", std::string(Block - 1, 'x') + "\r\ny\n"},
        {"CR LF erst hinter 32.000 Zeichen", UnixTextMitCrLfAb(40'000)},
        {"CR LF erst im dritten Block", UnixTextMitCrLfAb(2 * Block + 500)},
        {"eine Zeile ohne Ende", "a"}, {"leere CR-LF-Zeilen am Ende", "a\r\n\r\n\r\n"}, {"nur Leerraum", " \t "},
        {"CR LF und Leerraum", "a\r\nb\r\n  \t"}, {"Endemarke", "a\r\n\x1A"},
        {"NUL vor CR LF", std::string("\0\r\n", 3)},
        {"CR und Leerraum am Ende des Zählblocks", std::string(ZählBlock - 1, 'x') + "\r  "},
        {"CR am Ende des Zählblocks", std::string(ZählBlock - 1, 'x') + "\ry"},
        {"CR LF über die Grenze des Zählblocks", "x\r" + std::string(ZählBlock - 2, 'y') + "\r\n"},
        {"Zählblock ohne CR", "x\r" + std::string(ZählBlock, 'y')},
        {"Kopf gemischt", "l1\nl2\r\nl3\rl4"}, {"Kopf leere Zeilen", "\r\n\r\nl3\r\n"},
        {"Kopf: CR LF über die Lesegrenze", langeZeile + "\r\nnoch\r\nmehr"},
        {"Kopf: CR allein an der Lesegrenze", langeZeile + "\rnoch\r\n"},
    };
    TempOrdner ordner;
    const auto datei = ordner / "eingabe.txt";
    std::string protokoll;
    for (const auto& [name, ein] : eingaben) {
        SCOPED_TRACE(name);
        protokoll += std::string("%% ") + name + ": " + Zeigen(ein) + "\n";
        for (const auto& [wandler, art, mitLfCrLf] : {std::tuple{Wandler{UnixToPcDatei}, "UNIX-Prüfung", false},
                                                      std::tuple{Wandler{AnsiUnixToAnsiPc}, "gemischt", true}}) {
            DateiSchreiben(datei, ein);
            SkriptOberfläche ui, prüfen;
            const bool umgewandelt = wandler(datei, true, ui);
            const std::string aus = DateiLesen(datei);
            EXPECT_EQ(aus, umgewandelt ? GanzeErsetzungen(ein, mitLfCrLf) : ein) << art;
            DateiSchreiben(datei, ein);
            EXPECT_EQ(wandler(datei, false, prüfen), umgewandelt) << art;
            EXPECT_EQ(DateiLesen(datei), ein) << art;
            EXPECT_FALSE(fs::exists(Zwischenpfad(datei)));
            protokoll += std::string(art) + ": " + (umgewandelt ? Zeigen(aus) : "nicht umgewandelt") + " [" +
                         Status(ui) + "]\n";
        }
        SkriptOberfläche ui;
        const long long zeilen = ZeilenZählen(datei);
        EXPECT_EQ(AnsiUnixToAnsiPcString(datei, ui), zeilen);
        EXPECT_TRUE(ui.Ereignisse().empty());
        protokoll += "Zeilen: " + std::to_string(zeilen) + "; Kopf:";
        for (int anzahl = 1; anzahl <= 3; ++anzahl)
            protokoll += " " + Zeigen(DateiKopfLesen(datei, anzahl));
        protokoll += "\n";
    }
    EXPECT_EQ(test::GoldenVergleich(protokoll, test::Testdaten() / "import" / "textvorbereitung.txt"), "");
    DateiSchreiben(datei, "l1\r\nl2\r\n"); // the head: no line, or no more than so many bytes
    EXPECT_EQ(DateiKopfLesen(datei, 0), "");
    EXPECT_EQ(DateiKopfLesen(datei, 2, 3), "l1\r");
}

using Schnitt = std::pair<std::string_view, std::string_view>;

// At each block boundary a different pair of line-end bytes is cut apart: for the UNIX check none
// is CR LF, for mixed files every way to cut LF CR LF is among them. The mixed converter shows its
// status every ten million bytes.
TEST(Zeilenendwandler, BlockgrenzenÄndernDasErgebnisDerDateiNicht) {
    const Schnitt unixSchnitte[] = {{"\r", "\r"}, {"\n", "\n"}, {"\r\r", "\r"},
                                    {"\n", "\r"}, {"\r", "\rx"}, {"x", "\n"}};
    const Schnitt gemischt[] = {{"\r", "\n"}, {"\n", "\r\n"}, {"\n\r", "\n"}, {"\r", "\r"}, {"\n", "\n"},
                                {"\r\r", "\r"}, {"\n", "\r"}, {"\n\r", "\r"}, {"\r", "\n\n"}, {"\n", "\n\r\n"}};
    for (const auto& [wandler, schnitte, runden, mitLfCrLf, status] :
         {std::tuple{Wandler{UnixToPcDatei}, std::span<const Schnitt>(unixSchnitte), 1, false, std::string("")},
          std::tuple{Wandler{AnsiUnixToAnsiPc}, std::span<const Schnitt>(gemischt), 2, true,
                     std::string("0 Mbyte, ANSI-Unix nach Ansi-PC...|10 Mbyte, ANSI-Unix nach Ansi-PC...|"
                                 "20 Mbyte, ANSI-Unix nach Ansi-PC...")}}) {
        std::string inhalt;
        std::size_t grenze = 0;
        for (int runde = 0; runde < runden; ++runde)
            for (const auto& [links, rechts] : schnitte)
                BisZurGrenze(inhalt, grenze += Block, links, rechts);
        inhalt = mitLfCrLf ? inhalt + "Ende" : Ersetzen(inhalt, "\r\n", "\n");
        TempOrdner ordner;
        DateiSchreiben(ordner / "a.txt", inhalt);
        SkriptOberfläche ui;
        EXPECT_TRUE(wandler(ordner / "a.txt", true, ui));
        EXPECT_EQ(DateiLesen(ordner / "a.txt"), GanzeErsetzungen(inhalt, mitLfCrLf));
        EXPECT_FALSE(fs::exists(Zwischenpfad(ordner / "a.txt")));
        if (mitLfCrLf) {
            EXPECT_EQ(Status(ui), status);
        }
    }
}

/// Every text of up to `länge` bytes over "a", CR and LF.
std::vector<std::string> AlleTexte(std::size_t länge) {
    std::vector<std::string> texte{""};
    for (std::size_t von = 0; von < texte.size(); ++von)
        if (texte[von].size() < länge)
            for (const char c : {'a', '\r', '\n'})
                texte.push_back(texte[von] + c);
    return texte;
}

/// The converter fed with the pieces between the cut positions `schnitte`.
std::string StückweiseUmwandeln(std::string_view text, bool mitLfCrLf, const std::vector<std::size_t>& schnitte) {
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
            ASSERT_EQ(StückweiseUmwandeln(text, mitLfCrLf, jedesByte), erwartet) << testing::PrintToString(text);
            for (std::size_t schnitt = 0; schnitt <= text.size(); ++schnitt, ++geprüft)
                ASSERT_EQ(StückweiseUmwandeln(text, mitLfCrLf, {schnitt}), erwartet)
                    << testing::PrintToString(text) << " geschnitten bei " << schnitt;
        }
    }
    EXPECT_GT(geprüft, 90'000u);
    // CR LF also across the border of two pieces.
    const std::tuple<std::string_view, bool, bool> fälle[] = {
        {"a\r\nb", false, true}, {"a\nb\r", false, false}, {"\nb", true, true}, {"\nb", false, false},
        {"b\n", true, false}, {"\r\r\r", false, false}, {"\r\r\n", false, true}, {"", true, false},
        {"\n\r", false, false}};
    for (const auto& [stück, crDavor, erwartet] : fälle)
        EXPECT_EQ(detail::HatCrLf(stück, crDavor), erwartet) << testing::PrintToString(stück) << crDavor;
}

TEST(UnixToPcDatei, AlteZwischendateiOderVerweisWirdVorherGelöscht) {
    // A leftover link: writing through it would change the file it points to.
    for (const bool alsVerweis : {false, true}) {
        for (const std::string inhalt : {"a\nb\n", "a\r\nb\r\n"}) {
            SCOPED_TRACE(inhalt + (alsVerweis ? " (Verweis)" : ""));
            TempOrdner ordner;
            const auto datei = ordner / "a.wldge", anderes = ordner / "anderes.txt";
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

TEST(UnixToPcDatei, PfadAb257ZeichenBleibtUnberührtRechteBleibenErhalten) {
    TempOrdner ordner;
    const std::size_t vorne = ordner.pfad().string().size() + 1; // folder and "/"
    ASSERT_LT(vorne + 20, LängsterPfad);
    // Characters count, not bytes: 256 characters may be more than 256 bytes.
    const std::pair<std::string, bool> fälle[] = {{std::string(256 - vorne, 'n'), true},
        {std::string(257 - vorne, 'n'), false}, {std::string(256 - vorne - 10, 'n') + "üüüüüüüüüü", true},
        {std::string(257 - vorne - 10, 'n') + "üüüüüüüüüü", false}};
    for (const auto& [name, umgewandelt] : fälle) {
        SCOPED_TRACE(name.size());
        const auto datei = ordner / name;
        DateiSchreiben(datei, "a\nb\n");
        SkriptOberfläche ui;
        EXPECT_EQ(UnixToPcDatei(datei, true, ui), umgewandelt);
        EXPECT_EQ(AnsiUnixToAnsiPc(datei, true, ui), umgewandelt);
        EXPECT_EQ(DateiLesen(datei), umgewandelt ? "a\r\nb\r\n" : "a\nb\n");
        EXPECT_EQ(ui.Ereignisse().empty(), !umgewandelt);
        fs::remove(datei);
    }
    const auto datei = ordner / "a.wldge";
    DateiSchreiben(datei, "a\n");
    const auto rechte = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
    fs::permissions(datei, rechte);
    SkriptOberfläche ui;
    ASSERT_TRUE(UnixToPcDatei(datei, true, ui));
    EXPECT_EQ(fs::status(datei).permissions(), rechte);
}

/// Every function of the module that opens a file, called on `datei`: each must throw Fehler
/// naming the file and leave no temporary file.
void ErwarteFehlerMitDateiname(const fs::path& datei) {
    const std::pair<const char*, std::function<void(Oberfläche&)>> zugriffe[] = {
        {"UnixToPcDatei", [&](Oberfläche& ui) { UnixToPcDatei(datei, true, ui); }},
        {"AnsiUnixToAnsiPc", [&](Oberfläche& ui) { AnsiUnixToAnsiPc(datei, true, ui); }},
        {"AnsiUnixToAnsiPcString", [&](Oberfläche& ui) { AnsiUnixToAnsiPcString(datei, ui); }},
        {"ZeilenZählen", [&](Oberfläche&) { ZeilenZählen(datei); }},
        {"DateiKopfLesen", [&](Oberfläche&) { DateiKopfLesen(datei, 10); }},
    };
    for (const auto& [name, zugriff] : zugriffe) {
        SCOPED_TRACE(name);
        SkriptOberfläche ui;
        try {
            zugriff(ui);
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

// An unreadable file is reported; a folder that can't be written to names the temporary file and
// leaves the file as it was.
TEST(Textvorbereitung, OhneRechteWirdGemeldetUndNichtsÄndertSich) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "läuft als root: fehlende Rechte halten root nicht auf";
    TempOrdner ordner;
    const auto datei = ordner / "nur_lesen" / "a.wldge";
    DateiSchreiben(datei, "a\nb\n");
    fs::permissions(datei, fs::perms::none);
    ErwarteFehlerMitDateiname(datei);
    fs::permissions(datei, fs::perms::owner_read);
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

TEST(AnsiUnixToAnsiPcString, FortschrittBeiJederMillionstenZeile) {
    TempOrdner ordner;
    std::string inhalt;
    for (int i = 0; i < 2'000'000; ++i)
        inhalt += "\r\n";
    DateiSchreiben(ordner / "nas.xml", inhalt + "<letzte/>");
    SkriptOberfläche ui;
    EXPECT_EQ(AnsiUnixToAnsiPcString(ordner / "nas.xml", ui), 2'000'001);
    EXPECT_EQ(Status(ui), "1000000 Zeilen vorgeprüft...|2000000 Zeilen vorgeprüft...");
}

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
    const std::string geändert = "\x8E\x9A\x99\x84\x81\x94\xE1{|}~\x1A";
    for (int b = 0; b < 256; ++b) {
        std::string zeile(3, static_cast<char>(b));
        ZeichenKorrektur(zeile);
        if (geändert.find(static_cast<char>(b)) == std::string::npos) {
            EXPECT_EQ(zeile, std::string(3, static_cast<char>(b))) << b;
        }
    }
}

TEST(IstInText, IrgendeinEintragDerListe) {
    const std::tuple<std::string_view, std::string_view, bool> fälle[] = {
        {"<AX_Person gml:id=", "AX_Bestandsdatenauszug,AX_Person", true},
        {"<AX_Bestandsdatenauszug>", "AX_Bestandsdatenauszug,AX_Person", true},
        {"<AX_Flurstueck>", "AX_Bestandsdatenauszug,AX_Person", false},
        {"ax_person", "AX_Person", false}, // exact bytes
        {"abc", "", false}, {"abc", ",", false}, {"abc", "x,,y", false}, {"abc", "x,,b", true}, // empty items
        {"", "a", false}, {"a b", " ", true}, {"ab", "a ", false}, // a blank item is searched as it is
    };
    for (const auto& [text, liste, erwartet] : fälle)
        EXPECT_EQ(IstInText(text, liste), erwartet) << text << " | " << liste;
}

TEST(DateiZuGroß, ÜberVierGiBMitDerVierundsechzigBitGröße) {
    TempOrdner ordner;
    for (const std::uintmax_t größe : {0ULL, 4'294'967'295ULL, 4'294'967'296ULL, 4'294'967'297ULL}) {
        const auto datei = ordner / ("gross" + std::to_string(größe) + ".xml");
        DateiSchreiben(datei, "");
        fs::resize_file(datei, größe); // sparse: takes no room on the disk
        EXPECT_EQ(DateiZuGroß(datei), größe > 4'294'967'296ULL) << größe;
    }
    EXPECT_FALSE(DateiZuGroß(ordner / "fehlt.xml"));
    EXPECT_EQ(MeldungAusgangsdateiZuGroß, "Fehler: Ausgangsdatei ist mit > 4.294.967.296 Byte zu groß!   ");
    EXPECT_EQ(MeldungEineAusgangsdateiZuGroß, "Fehler: Eine Ausgangsdatei ist mit > 4.294.967.296 Byte zu groß!   ");
}

} // namespace
} // namespace flurix::import
