// "Daten ordnen" over a small Alkis: every cell, options, missing columns and tables, protocol,
// status, the caller's transaction. Its row forms are in test_umformungen.cpp.

#include "nas/daten_ordnen.hpp"

#include "core/cp1252.hpp"
#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"
#include "nas/tabellentext.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace flurix::nas {
namespace {

const std::filesystem::path Daten = test::Testdaten() / "nas";

/// Seven rows of Alkis and the lookup tables of a small district (daten_ordnen.tab says what each
/// row is for); without the columns `ohne`.
void KleineAlkis(Datenbank& db, const std::set<std::string>& ohne = {}) {
    auto tabellen = test::TabellentexteLesen(Daten / "daten_ordnen.tab");
    auto& alkis = tabellen.front();
    for (std::size_t i = alkis.spalten.size(); i-- > 0;)
        if (ohne.contains(alkis.spalten[i])) {
            alkis.spalten.erase(alkis.spalten.begin() + static_cast<std::ptrdiff_t>(i));
            for (auto& zeile : alkis.zeilen)
                zeile.erase(zeile.begin() + static_cast<std::ptrdiff_t>(i));
        }
    test::TabellenAnlegen(db, tabellen);
}

void Alkis(Datenbank& db, std::vector<std::string> spalten, std::vector<std::vector<std::string>> zeilen) {
    test::TabellenAnlegen(db, {{"Alkis", std::move(spalten), std::move(zeilen)}});
}

std::optional<std::string> Zelle(Datenbank& db, std::string_view id, std::string_view spalte) {
    auto abfrage = db.VorbereitenNativ("SELECT " + Bezeichner(spalte) + " FROM Alkis WHERE id = ?");
    abfrage.Binde(id);
    if (!abfrage.Schritt())
        throw std::runtime_error("no row " + std::string(id));
    return abfrage.IstNull(0) ? std::nullopt : std::optional<std::string>(abfrage.Text(0));
}

OrdnenUmgebung Umgebung() {
    OrdnenUmgebung u;
    u.antragsnummer = "A-2024-17";
    u.systemWert = "25832_32";
    // The court of "07 2566" is in the office table too: the list wins.
    u.amtsgerichte = "* Amtsgerichte\r\n072408=Amtsgericht Wittlich\r\n071111=Amtsgericht Irgendwo\r\n";
    return u;
}

struct Lauf {
    test::TempOrdner ordner;
    SkriptOberfläche ui;
    std::unique_ptr<Datenbank> db;
    std::int64_t zeilen = -1;

    /// An object database as the NAS road makes it, or with `mitJournal` one a rollback works in.
    explicit Lauf(bool mitJournal = false)
        : db(mitJournal ? std::make_unique<Datenbank>(ordner / "nas.sqlite")
                        : DAO_DatenbankAnlegen(ordner / "nas.sqlite")) {}

    void Ordnen(const OrdnenUmgebung& umgebung = Umgebung()) {
        NasProtokoll protokoll(ui, ordner / "nas.xml.prn");
        zeilen = DatenOrdnen(*db, umgebung, protokoll, ui);
    }
    /// The protocol file's lines (CR LF) without their time ("12:34:56").
    std::vector<std::string> ProtokollOhneZeit() const {
        const std::string text = Cp1252NachUtf8(test::DateiLesen(ordner / "nas.xml.prn"));
        std::vector<std::string> liste;
        for (auto zeile : Teilen(text, '\n')) {
            if (zeile.empty())
                continue;
            EXPECT_TRUE(zeile.size() >= 9 && zeile[2] == ':' && zeile[5] == ':' && zeile.ends_with('\r'))
                << zeile;
            liste.emplace_back(zeile.substr(8, zeile.size() - 9));
        }
        return liste;
    }
};

TEST(DatenOrdnen, JedeZelleDerSiebenZeilenNachDemGang) {
    Lauf lauf;
    KleineAlkis(*lauf.db);
    lauf.Ordnen();
    ASSERT_EQ(lauf.zeilen, 7);
    // Every cell, then the protocol file's line for each row in the walk's order.
    std::string ergebnis = test::ZellenText(*lauf.db, "SELECT id, * FROM Alkis ORDER BY id");
    for (const auto& zeile : lauf.ProtokollOhneZeit())
        ergebnis += "Protokoll" + zeile + "\n";
    EXPECT_EQ(test::GoldenVergleich(ergebnis, Daten / "daten_ordnen_ergebnis.txt"), "");
    EXPECT_TRUE(lauf.ui.Ereignisse().empty());
    for (const auto& [tabelle, spalte] : {std::pair{"AX_KreisRegion", "schluessel"},
                                          {"AX_KreisRegion", "schluesselGesamt"},
                                          {"AX_Bundesland", "schluessel"},
                                          {"AX_Bundesland", "schluesselGesamt"},
                                          {"AX_Dienststelle", "schluesselGesamt"},
                                          {"AX_Buchungsblattbezirk", "schluessel"}})
        EXPECT_TRUE(DAO_IndexVorhanden(*lauf.db, tabelle, spalte)) << tabelle << "." << spalte;
}

TEST(DatenOrdnen, VariantenDerUmgebungUndDerTabellen) {
    using Zellen = std::vector<std::tuple<const char*, const char*, std::optional<std::string>>>;
    struct Fall {
        const char* name;
        std::set<std::string> ohne;  // columns the user's mapping script does not make
        const char* sql;             // run on the small Alkis before the walk
        std::function<void(OrdnenUmgebung&)> umgebung;
        Zellen zellen;               // id, column, value afterwards
    };
    const Fall fälle[] = {
        {"ohne Gerichtsliste die Dienststelle des Gerichtsschlüssels, fehlende Tabellen finden nichts",
         {}, "DROP TABLE AX_KreisRegion; DROP TABLE AX_Bundesland",
         [](OrdnenUmgebung& u) { u.amtsgerichte.clear(); },
         {{"r3", "Amtsgericht", "Wittlich"}, {"r2", "Amtsgericht", "Bernkastel-Kues"},
          {"r3", "Landkreis", "alt"}, {"r3", "Land", "alt"},
          {"r3", "Dienststelle", "Vermessungs- und Katasteramt Westeifel-Mosel"}}},
        {"Optionen schalten Texte um; ohne System bleiben MKZ und EPSG", {},
         "UPDATE Alkis SET \"Flächendifferenz\" = '12.5'",
         [](OrdnenUmgebung& u) {
             u.optionen.nutzungOhneAx = true;
             u.optionen.mitFlächenAnpassung = true;
             u.systemWert.clear();
         },
         {{"r3", "Nutzung_tatsächlich", "Wohnbaufläche; Wald"}, {"r3", "Flächendifferenz", "12.5"},
          {"r3", "MKZ", std::nullopt}, {"r3", "EPSG", std::nullopt}}},
        {"fehlende Spalten lassen ihren Schritt aus",
         {"Nutzungsart", "UmringFlurstück", "Landkreis", "IDlfd_Nr", "Vorname_sonstiges"}, "", {},
         {{"r3", "Nutzung_tatsächlich", "Wohnbaufläche;Wald"}, {"r3", "Rechtswert", ""},
          {"r3", "Name", std::nullopt}, {"r1", "Eigentümerposition", "0003"},
          {"r3", "Land", "Rheinland-Pfalz"}, {"r3", "Flurstück", "00003/0000"}}},
    };
    for (const auto& fall : fälle) {
        SCOPED_TRACE(fall.name);
        Lauf lauf;
        KleineAlkis(*lauf.db, fall.ohne);
        for (auto sql : Teilen(fall.sql, ';'))
            if (!sql.empty())
                lauf.db->AusführenNativ(std::string(sql));
        OrdnenUmgebung u = Umgebung();
        if (fall.umgebung)
            fall.umgebung(u);
        lauf.Ordnen(u);
        EXPECT_EQ(lauf.zeilen, 7);
        for (const auto& [id, spalte, wert] : fall.zellen)
            EXPECT_EQ(Zelle(*lauf.db, id, spalte), wert) << id << " " << spalte;
    }
    // Each one of the four area computations keeps sonstigesBOV for its own check.
    for (int welche = 0; welche < 5; ++welche) {
        Lauf lauf;
        KleineAlkis(*lauf.db);
        lauf.db->AusführenNativ("UPDATE Alkis SET sonstigesBOV = 'x'");
        OrdnenUmgebung u = Umgebung();
        u.optionen.mitNaBerechnung = welche == 0;
        u.optionen.quickNaBerechnung = welche == 1;
        u.optionen.quickBSBerechnung = welche == 2;
        u.optionen.quickBROBBerechnung = welche == 3;
        u.optionen.quickLWBerechnung = welche == 4; // not one of them
        lauf.Ordnen(u);
        EXPECT_EQ(Zelle(*lauf.db, "r1", "sonstigesBOV"), welche == 4 ? "... ohne Prüfung" : "x") << welche;
    }
}

TEST(DatenOrdnen, KargeTabelleUndSpaltennamenWieJetSieVergleicht) {
    Lauf karg;
    Alkis(*karg.db, {"id", "Flurstückskennzeichen"}, {{"x", "07256600400003000000"}});
    karg.Ordnen();
    EXPECT_EQ(karg.zeilen, 1);
    EXPECT_EQ(karg.ProtokollOhneZeit(), std::vector<std::string>{", Zeile ALKIS: 00001,FKZ: 07256600400003000000"});
    // Names compared without regard to case, "ß" as "ss".
    Lauf lauf;
    Alkis(*lauf.db, {"id", "FLURSTÜCKSKENNZEICHEN", "flurstück", "Strasse", "STRASSENNAME", "hausnummer"},
          {{"x", "072566004000120003__", "\\N", "\\N", "Am Bach", "3"}});
    lauf.Ordnen();
    EXPECT_EQ(Zelle(*lauf.db, "x", "flurstück"), "00012/0003");
    EXPECT_EQ(Zelle(*lauf.db, "x", "Strasse"), "Am Bach 3");
}

TEST(DatenOrdnen, LeereOderFehlendeTabelleGibtNullZeilen) {
    for (const bool mitTabelle : {true, false}) {
        SCOPED_TRACE(mitTabelle);
        Lauf lauf;
        KleineAlkis(*lauf.db);
        lauf.db->AusführenNativ(mitTabelle ? "DELETE FROM Alkis" : "DROP TABLE Alkis");
        lauf.Ordnen();
        EXPECT_EQ(lauf.zeilen, 0);
        EXPECT_TRUE(lauf.ui.Ereignisse().empty());
        EXPECT_TRUE(lauf.ProtokollOhneZeit().empty());
        EXPECT_FALSE(DAO_IndexVorhanden(*lauf.db, "AX_KreisRegion", "schluesselGesamt"));
        EXPECT_EQ(DAO_TabelleVorhanden(*lauf.db, "Alkis"), mitTabelle);
    }
}

TEST(DatenOrdnen, StatusJeTausendZeilen) {
    Lauf lauf;
    std::vector<std::vector<std::string>> zeilen;
    for (int i = 0; i < 2500; ++i)
        zeilen.push_back({std::to_string(i), "0725660040" + MitNullen(i, 5) + "00000", "\\N"});
    Alkis(*lauf.db, {"id", "Flurstückskennzeichen", "IDlfd_Nr"}, std::move(zeilen));
    lauf.Ordnen();
    EXPECT_EQ(lauf.zeilen, 2500);
    EXPECT_EQ(lauf.ui.Texte(Ereignis::Art::Status),
              (std::vector<std::string>{"Daten ordnen, Zeile: 1000", "Daten ordnen, Zeile: 2000"}));
    EXPECT_EQ(Zelle(*lauf.db, "2499", "IDlfd_Nr"), "2500");
    const auto protokoll = lauf.ProtokollOhneZeit();
    ASSERT_EQ(protokoll.size(), 2500u);
    EXPECT_EQ(protokoll[2499], ", Zeile ALKIS: 02500,FKZ: 07256600400249900000");
}

TEST(DatenOrdnen, InDerTransaktionDesAufrufers) {
    Lauf lauf(true);
    KleineAlkis(*lauf.db);
    {
        Transaktion t(*lauf.db);
        lauf.Ordnen();
        EXPECT_TRUE(lauf.db->TransaktionOffen());
    } // rolled back
    EXPECT_EQ(Zelle(*lauf.db, "r3", "IDlfd_Nr"), std::nullopt);
    EXPECT_EQ(lauf.zeilen, 7);
}

} // namespace
} // namespace flurix::nas
