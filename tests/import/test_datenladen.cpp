// The one road of every load: which reader a file goes to with which options, what is asked first,
// what is converted, and the exact message of each refusal, against a golden transcript.

#include "import/datenladen.hpp"

#include "core/text.hpp"
#include "leseprotokoll.hpp"

#include <gtest/gtest.h>

namespace flurix::import {
namespace {

using test::DateiLesen;
using test::DateiSchreiben;

// A WLDGE header line: "1" in column 1, " E   01 " in columns 26 to 33, the format behind it.
std::string Kopfzeile(std::string_view format) {
    std::string zeile = "105";
    zeile.resize(25, ' ');
    return zeile + " E   01 " + std::string(format) + " Auszug";
}

std::string Wldge(std::string_view format, std::string_view zeilenende = "\r\n") {
    return Kopfzeile(format) + std::string(zeilenende) + "2051234-000123            A0001 Mustermann, Erika" +
           std::string(zeilenende);
}

struct Ladefall {
    const char* name;
    std::vector<std::pair<std::string, std::string>> dateien; // name and content; "fehlt..." is not written
    Eingabeart art;
    std::string schalter = ""; // K complete reader chosen, C from the command line, A dialog cancelled,
                               // L no readers, Z the table has rows
    std::deque<Antwort> antworten = {};
};

// One load in a folder of its own with readers that record what they were handed: the result, the
// readers called, the formats the options dialog was shown for, the options handed over, the
// questions, messages and status texts (the folder written as "<ordner>"), and the files changed.
std::string Protokoll(const Ladefall& f) {
    test::TempOrdner ordner;
    std::vector<std::filesystem::path> dateien;
    for (const auto& [name, inhalt] : f.dateien) {
        dateien.push_back(ordner / name);
        if (!name.starts_with("fehlt"))
            DateiSchreiben(ordner / name, inhalt);
    }
    const auto Schalter = [&](char c) { return f.schalter.find(c) != std::string::npos; };
    std::string aufrufe, dialog;
    ImportOptionen übergeben;
    const auto merken = [&](std::string name) {
        return [&, name](const std::filesystem::path& p, const ImportOptionen& o) {
            aufrufe += " " + name + ":" + p.filename().string();
            übergeben = o;
            return Ergebnis::Ok();
        };
    };
    const auto nurDatei = [&](std::string name) {
        return [&, name](const std::filesystem::path& p) {
            aufrufe += " " + name + ":" + p.filename().string();
            return Ergebnis::Ok();
        };
    };
    Ladeumgebung u;
    if (!Schalter('L'))
        u.leser = {merken("komplett"), merken("schnell"),
                   [&](const std::vector<std::filesystem::path>& d, const ImportOptionen& o) {
                       aufrufe += " webxml:" + std::to_string(d.size());
                       übergeben = o;
                       return Ergebnis::Ok();
                   },
                   nurDatei("tabelle"), nurDatei("nas"), {}};
    u.optionenDialog = [&](ImportOptionen& o) {
        dialog += " " + o.importFormat;
        return !Schalter('A');
    };
    u.tabellenZeilen = [&] { return Schalter('Z') ? std::size_t{3} : std::size_t{0}; };
    u.tabelleLeeren = [&] { aufrufe += " leeren"; };
    u.optionen.albKomplett = Schalter('K');
    SkriptOberfläche ui(f.antworten);
    const Ergebnis e = ALBDatenLaden({dateien, f.art, Schalter('C')}, u, ui);
    std::string text = std::string("%% ") + f.name + "\n" +
                       (e ? "Ok" : e.status() == Ergebnis::Status::Abgebrochen ? "Abgebrochen" : "Fehler") +
                       "; Leser:" + aufrufe + "; Dialog:" + dialog + "; übergeben: Format " + übergeben.importFormat +
                       (übergeben.alleEigentümerInEinerZeile ? ", alle Eigentümer in einer Zeile" : "") + "\n";
    for (const auto& [name, inhalt] : f.dateien)
        if (std::filesystem::exists(ordner / name) && DateiLesen(ordner / name) != inhalt)
            text += name + " geändert: " +
                    Ersetzen(Ersetzen(DateiLesen(ordner / name), "\r", "\\r"), "\n", "\\n") + "\n";
    return text + Ersetzen(test::Meldungsprotokoll(ui), ordner.pfad().string(), "<ordner>");
}

TEST(DatenLaden, WegeUndMeldungenWieImProtokoll) {
    std::string elfteZeile;
    for (int i = 0; i < 10; ++i)
        elfteZeile += "3051234-001-00042/000     B\r\n";
    elfteZeile += Kopfzeile("32") + "\r\n";
    const Ladefall fälle[] = {
        {"Format 32 komplett", {{"k.wldge", Wldge("32")}}, Eingabeart::Wldge, "K"},
        {"Format 32 schnell", {{"k.wldge", Wldge("32")}}, Eingabeart::Wldge},
        {"Format 35 schnell: alle Eigentümer in einer Zeile", {{"k.wldge", Wldge("35")}}, Eingabeart::Wldge},
        {"Format 35 kann nicht komplett gelesen werden", {{"k.wldge", Wldge("35")}}, Eingabeart::Wldge, "K"},
        {"UNIX-Datei wird vor dem Lesen umgewandelt", {{"unix.wldge", Wldge("32", "\n")}}, Eingabeart::Wldge},
        {"Dialog abgebrochen", {{"k.wldge", Wldge("32")}}, Eingabeart::Wldge, "A"},
        {"Format 33", {{"format33.wldge", Wldge("33")}}, Eingabeart::Wldge},
        {"Kopf erst in Zeile 11", {{"kopf_in_zeile_11.wldge", elfteZeile}}, Eingabeart::Wldge},
        {"leere Datei", {{"leer.wldge", ""}}, Eingabeart::Wldge},
        {"NUL-Bytes", {{"nul.wldge", std::string("\0\0\0\r\n", 5)}}, Eingabeart::Wldge},
        {"Binärdatei", {{"binaer.wldge", std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16)}}, Eingabeart::Wldge},
        {"Mehrfachauswahl nur für Web-XML", {{"a.wldge", Wldge("32")}, {"b.wldge", Wldge("32")}}, Eingabeart::Wldge},
        {"NAS-Datei im Web-XML-Filter", {{"nas.xml", "<?xml version=\"1.0\"?>\r\n<AX_Bestandsdatenauszug>\r\n"}},
         Eingabeart::WebXml},
        {"Leser fehlt", {{"k.wldge", Wldge("32")}}, Eingabeart::Wldge, "L"},
        {"Datei fehlt", {{"fehlt.wldge", ""}}, Eingabeart::Wldge},
        {"Kommandozeile, Nein", {{"Kreis.wldge", Wldge("32")}}, Eingabeart::Wldge, "C", {Antwort::Nein}},
        {"Kommandozeile, Ja", {{"Kreis.wldge", Wldge("32")}}, Eingabeart::Wldge, "C", {Antwort::Ja}},
        {"zwei Web-XML-Dateien, umgewandelt",
         {{"a.xml", "<Auszug>\n<Flurstueck/>\n</Auszug>\n"}, {"b.xml", "<Auszug>\r\n</Auszug>\r\n"}},
         Eingabeart::WebXml},
        {"XML nach Inhalt: NAS still zum NAS-Fenster", {{"nas.xml", "<x>\r\n  <AX_Person gml:id=\"1\">\r\n"}},
         Eingabeart::Xml},
        {"XML nach Inhalt: Web-XML", {{"auszug.xml", "<Auszug>\r\n</Auszug>\r\n"}}, Eingabeart::Xml},
        // The saved table replaces the grid only when it was read whole: nothing is emptied before.
        {"vorhandene Tabelle, Nein", {{"t.fil", "x"}}, Eingabeart::Tabelle, "Z", {Antwort::Nein}},
        {"vorhandene Tabelle, Ja", {{"t.fil", "x"}}, Eingabeart::Tabelle, "Z", {Antwort::Ja}},
    };
    std::string protokoll;
    for (const auto& f : fälle)
        protokoll += Protokoll(f);
    EXPECT_EQ(test::GoldenVergleich(protokoll, test::Testdaten() / "import" / "datenladen.txt"), "");
}

TEST(WldgeFormatLesen, KopfInDenErstenZehnZeilen) {
    EXPECT_EQ(WldgeFormatLesen(Kopfzeile("32") + "\r\n"), "32");
    EXPECT_EQ(WldgeFormatLesen("x\r\n" + Kopfzeile("35")), "35");
    std::string ohneLeerzeichen = Kopfzeile("32"), ohneEins = Kopfzeile("32");
    ohneLeerzeichen[32] = 'X'; // column 33 must be a blank
    ohneEins[0] = '2';
    EXPECT_EQ(WldgeFormatLesen(ohneLeerzeichen), "");
    EXPECT_EQ(WldgeFormatLesen(ohneEins), "");
    EXPECT_EQ(WldgeFormatLesen(Kopfzeile("")), " A"); // columns 34 and 35, whatever they hold
}

TEST(DateiErkennen, ArtUndLeser) {
    test::TempOrdner ordner;
    const std::tuple<std::string, std::string, Eingabeart, std::string, bool> fälle[] = {
        {"a.wldge", Wldge("32"), Eingabeart::Wldge, "32", true},
        {"b.WLDGE", Wldge("35"), Eingabeart::Wldge, "35", true},
        {"c.wldge", Wldge("31"), Eingabeart::Wldge, "31", false},
        {"n.xml", "<AX_Bestandsdatenauszug>\n", Eingabeart::NasXml, "", true},
        {"w.xml", "<Auszug/>\n", Eingabeart::WebXml, "", true}, {"x.txt", "", Eingabeart::Wldge, "", false}};
    for (const auto& [name, inhalt, art, format, unterstützt] : fälle) {
        SCOPED_TRACE(name);
        DateiSchreiben(ordner / name, inhalt);
        const Erkennung e = DateiErkennen(ordner / name);
        EXPECT_EQ(e.art, art);
        EXPECT_EQ(e.format, format);
        EXPECT_EQ(e.unterstützt, unterstützt);
        EXPECT_EQ(DateiLesen(ordner / name), inhalt); // looking changes nothing
    }
    EXPECT_THROW(DateiErkennen(ordner / "fehlt.wldge"), Fehler);
}

} // namespace
} // namespace flurix::import
