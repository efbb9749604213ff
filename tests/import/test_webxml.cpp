// The Web-XML reader: the extracts of tests/daten/import/webxml_faelle.txt (every section, several
// Bestände, no owners, broken lines, entities) with their rows against a golden transcript; the
// questions of several files and of a filled table; every cut of a file; a missing file.

#include "import/webxml.hpp"

#include "gemeinsam/lesefixture.hpp"
#include "leseprotokoll.hpp"

namespace flurix::import {
namespace {

class WebXmlTest : public test::Lesefixture {
protected:
    // The text of the case with this name.
    std::string Text(std::string_view name) const {
        for (const auto& f : fälle)
            if (f.name == name)
                return f.Text();
        throw std::runtime_error("kein Fall " + std::string(name));
    }
    Ergebnis Lesen(const std::vector<std::string>& namen, bool anfügen = false) {
        std::vector<std::filesystem::path> dateien;
        for (const auto& name : namen)
            dateien.push_back(Schreiben(name + ".xml", Text(name)));
        return WebXmlLesen(dateien, optionen, anfügen, kataster, ui);
    }

    const std::vector<test::Lesefall> fälle = test::Lesefälle("webxml_faelle.txt", false);
};

// Rows sorted by Eigentümerposition within the parcel and stable otherwise; the "0001" rows are
// selected and counted as parcels. The office is named from "amt" and "stelle".
TEST_F(WebXmlTest, AuszügeWieImProtokoll) {
    ASSERT_GT(fälle.size(), 15u);
    std::string protokoll;
    for (const auto& f : fälle) {
        Kataster tabelle;
        SkriptOberfläche skript;
        WebXmlBericht b;
        const std::string text = f.optionen.find('W') != std::string::npos ? Utf8NachCp1252(f.Text()) : f.Text();
        const bool ok =
            static_cast<bool>(WebXmlLesen({Schreiben("a.xml", text)}, optionen, false, tabelle, skript, &b));
        protokoll += "%% " + f.name + (ok ? "" : " (Fehlschlag)") + "\nBericht: " + std::to_string(b.zeilen) +
                     " Zeilen, " + std::to_string(b.flurstücke) + " Flurstücke";
        for (const auto& anschrift : b.amtsanschrift)
            protokoll += ", Amt: " + anschrift;
        protokoll += "\n" + test::Leseprotokoll(skript, tabelle);
    }
    EXPECT_EQ(test::GoldenVergleich(protokoll, test::Testdaten() / "import" / "webxml.txt"), "");
}

TEST_F(WebXmlTest, MehrereDateienFragenUndAnfügen) {
    ASSERT_TRUE(Lesen({"Auszug A", "Auszug B"}));
    EXPECT_EQ(kataster.Zeilenzahl(), 2u);
    EXPECT_EQ(ui.Fragen(), std::vector<std::string>{"Es werden 2 ausgewählte XML-Dateien eingelesen! Weiter?   "});
    EXPECT_EQ(ui.Ereignisse().front().titel, "Flurix - XML-Import");
    const std::string anfügen = "Sollen die Daten an die vorhandene Datenbank angefügt werden?   ";
    const std::string ersetzen = "Soll die vorhandene Datenbank überschrieben werden?   ";
    const std::tuple<bool, Antwort, std::string, std::size_t> antworten[] = {
        {true, Antwort::Ja, anfügen, 3}, {true, Antwort::Nein, anfügen, 2},
        {false, Antwort::Ja, ersetzen, 1}, {false, Antwort::Nein, ersetzen, 2}};
    for (const auto& [anfügenGewählt, antwort, frage, zeilen] : antworten) {
        SCOPED_TRACE(frage + (antwort == Antwort::Ja ? "Ja" : "Nein"));
        kataster.Leeren();
        ui.Antworten({Antwort::Ja});
        ASSERT_TRUE(Lesen({"Auszug A", "Auszug B"}));
        ui.Antworten({antwort});
        EXPECT_EQ(static_cast<bool>(Lesen({"Auszug A"}, anfügenGewählt)), antwort == Antwort::Ja);
        EXPECT_EQ(ui.Fragen().back(), frage);
        EXPECT_EQ(kataster.Zeilenzahl(), zeilen);
    }
    ui.Antworten({Antwort::Nein});
    EXPECT_EQ(Lesen({"Auszug A", "Auszug B"}).status(), Ergebnis::Status::Abgebrochen);
}

TEST_F(WebXmlTest, JederSchnittGibtHöchstensDieEineZeile) {
    const std::string ganz = Text("ein Eigentümer mit Lage");
    for (std::size_t länge = 0; länge <= ganz.size(); ++länge) {
        kataster.Leeren();
        EXPECT_LE(WebXmlTextLesen(std::string_view(ganz).substr(0, länge), optionen, kataster), 1) << länge;
    }
}

TEST_F(WebXmlTest, FehlendeDateiBeendetDasLesenHinterDenVorigen) {
    const auto datei = Schreiben("a.xml", Text("Auszug A"));
    const auto fehlt = ordner / "fehlt.xml";
    EXPECT_FALSE(WebXmlLesen({datei, fehlt}, optionen, true, kataster, ui));
    EXPECT_EQ(ui.Meldungen().back(), "Die Datei \"" + fehlt.string() + "\" kann nicht gelesen werden!");
    EXPECT_EQ(kataster.Zeilenzahl(), 1u); // the file before it stays
}

} // namespace
} // namespace flurix::import
