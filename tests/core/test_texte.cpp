#include "core/cp1252.hpp"
#include "core/einstellungen.hpp"
#include "core/fehler.hpp"
#include "core/kataster.hpp"
#include "core/kommandozeile.hpp"
#include "core/spaltenansicht.hpp"
#include "core/verschleiern.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "kernhilfen.hpp"

#include <gtest/gtest.h>

#include <regex>

namespace flurix {
namespace {

using namespace std::literals;
using test::Argumente;
using test::DateiLesen;
using test::DateiSchreiben;
using test::Zitat;

TEST(Texte, Wertetabelle) {
    test::TempOrdner ordner;
    const auto datei = ordner / "Flurix.dat";
    const auto schreiben = [&](const std::string& inhalt) {
        std::filesystem::remove(datei);
        if (inhalt != "-")
            DateiSchreiben(datei, inhalt);
    };
    EXPECT_EQ(test::Wertetabelle("texte.txt", {
        {"NachUtf8", [](const Argumente& a) { return Zitat(Cp1252NachUtf8(a[0])); }},
        {"NachCp1252", [](const Argumente& a) { return Zitat(Utf8NachCp1252(a[0])); }},
        {"Dateitext", [](const Argumente& a) { return Zitat(DateitextNachUtf8(a[0])); }},
        {"Verschleiern", [](const Argumente& a) { return Zitat(Verschleiern(a[0], a[1])); }},
        {"TokenNr", [](const Argumente& a) { return Zitat(TokenNr(a[0], std::stoi(a[1]), a[2])); }},
        {"Vergleichsform", [](const Argumente& a) { return Zitat(Vergleichsform(a[0])); }},
        {"Anzeigeform", [](const Argumente& a) {
             KatasterSpalte spalte("x", "x");
             spalte.format = a[0];
             return Zitat(Anzeigeform(spalte, a[1]));
         }},
        {"Einstellung", [&](const Argumente& a) {
             schreiben(a[0]);
             const Einstellungen e(datei);
             return Zitat(e.Wert(a[1])) + (e.Ja(a[1]) ? " Ja" : "") + (e.Nein(a[1]) ? " Nein" : "");
         }},
        {"ZeileErsetzen", [&](const Argumente& a) {
             schreiben(a[0]);
             ZeileErsetzen(datei, a[1], a[2]);
             return Zitat(DateiLesen(datei));
         }},
    }, ordner.pfad()), "");
}

TEST(Cp1252, AlleBytesÜberlebenDenWegDurchUtf8) {
    const std::string alle = test::AlleBytes();
    EXPECT_TRUE(IstGültigesUtf8(Cp1252NachUtf8(alle)));
    EXPECT_EQ(Utf8NachCp1252(Cp1252NachUtf8(alle)), alle);
}

TEST(Verschleiern, IstSeineEigeneUmkehrung) {
    for (const std::string_view schlüssel : {"k"sv, WfsSchlüssel, "\xFF\x00"sv})
        for (const std::string& text : {"Benutzer"s, "Passwort mit Blanks  "s, "Größe\tund\nZeilen"s,
                                        "\0\xFF\x7F"s, std::string(1000, 'x')}) {
            const std::string verschleiert = Verschleiern(text, schlüssel);
            EXPECT_EQ(verschleiert.size(), text.size());
            EXPECT_EQ(Verschleiern(verschleiert, schlüssel), text);
        }
    EXPECT_NE(Verschleiern("Passwort", WfsSchlüssel), "Passwort");
}

TEST(KommandozeileLesen, Wertetabelle) {
    EXPECT_EQ(test::Wertetabelle("kommandozeile.txt", {
        {"Kommandozeile", [](const Argumente& a) {
             SkriptOberfläche ui;
             const Auftrag auftrag = KommandozeileLesen(a[0], ui);
             const char* arten[] = {"Interaktiv", "DateiLaden", "NasStapel", "Karte", "Beenden"};
             std::string text = arten[static_cast<int>(auftrag.art)] + (" zeile " + Zitat(auftrag.JobPfad())) +
                                " datei " + Zitat(auftrag.AuftragsDatei) + " pfad " + Zitat(auftrag.AuftragsPfad);
             for (const auto& [an, name] : {std::pair{auftrag.StillModus, " still"}, {auftrag.AusgabeGG, " gg"},
                                            {auftrag.AusgabeTxtSch, " txt-sch"}, {auftrag.AusgabeDXF, " dxf"},
                                            {auftrag.AutoStartDatei, " auto"}, {auftrag.MapModus, " map"}})
                 text += an ? name : "";
             if (auftrag.mitte) {
                 char mitte[64];
                 std::snprintf(mitte, sizeof mitte, " mitte %.10g;%.10g", auftrag.mitte->y, auftrag.mitte->x);
                 text += mitte;
             }
             return text + test::Verlauf(ui, true);
         }},
        {"Koordinatenpaar", [](const Argumente& a) { return Zitat(KoordinatenpaarNormalisieren(a[0])); }},
    }), "");
}


TEST(ZeitStempelText, DatumZuerstOhneTrennzeichen) {
    const std::string stempel = ZeitStempelText();
    EXPECT_TRUE(std::regex_match(stempel, std::regex(R"(\d{8} \d{6})"))) << stempel;
    const std::time_t jetzt = std::time(nullptr); // day, month, then the year of today
    std::tm lokal{};
    localtime_r(&jetzt, &lokal);
    EXPECT_EQ(stempel.substr(4, 4), std::to_string(lokal.tm_year + 1900));
}

} // namespace
} // namespace flurix
