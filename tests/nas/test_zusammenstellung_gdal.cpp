// The whole NAS import (scan, compilation, transfer into the cadastre table) measured against GDAL's
// NAS reader on the real district: features per class, and per parcel the rows, owners in register
// order, addresses, area, location and keys that follow from GDAL's objects and relations. GDAL
// reads every field as text (GML_FIELDTYPES=ALWAYS_STRING) and relations from its relation layer.

#include "nas/nas_direkt.hpp"

#include "core/datenbank.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/gdal_testbezirk.hpp"
#include "nas/knoten.hpp"
#include "nas/objektdatenbank.hpp"
#include "report/registerauszug.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace flurix::nas {
namespace {

using test::TestBezirk;

const std::filesystem::path Konfig = std::filesystem::path(FLURIX_QUELLEN) / "config";

std::string Trimmen(std::string_view text) {
    const auto anfang = text.find_first_not_of(" \t\r\n");
    if (anfang == std::string_view::npos)
        return {};
    return std::string(text.substr(anfang, text.find_last_not_of(" \t\r\n") - anfang + 1));
}

std::string MitLeerzeichen(std::string_view a, std::string_view b) { return Trimmen(Trimmen(a) + " " + Trimmen(b)); }

// A key part without its leading zeros: "07" and "7", "00104" and "104" are the same key.
std::string OhneNullen(std::string_view text) {
    const std::string t = Trimmen(text);
    const auto erste = t.find_first_not_of('0');
    return erste == std::string::npos ? std::string() : t.substr(erste);
}

bool BeginntMitZiffer(std::string_view t) { return !t.empty() && t[0] >= '0' && t[0] <= '9'; }

template <typename T> std::optional<T> Zahl(std::string_view text) {
    const std::string t = Trimmen(text);
    T wert{};
    const auto [ende, fehler] = std::from_chars(t.data(), t.data() + t.size(), wert);
    if (t.empty() || fehler != std::errc() || ende != t.data() + t.size())
        return std::nullopt;
    return wert;
}

// A number with leading zeros to `stellen` digits; "?" plus the text when it is no number.
std::string Stellen(std::string_view text, std::size_t stellen) {
    const auto wert = Zahl<long long>(text);
    if (!wert)
        return "?" + std::string(text);
    const std::string aus = std::to_string(*wert);
    return std::string(stellen > aus.size() ? stellen - aus.size() : 0, '0') + aus;
}

std::vector<std::string> Teilen(std::string_view text, std::string_view trenner) {
    std::vector<std::string> teile;
    for (std::size_t anfang = 0;;) {
        const auto ende = text.find(trenner, anfang);
        teile.emplace_back(text.substr(anfang, ende - anfang));
        if (ende == std::string_view::npos)
            return teile;
        anfang = ende + trenner.size();
    }
}

template <typename T> std::string Text(const T& wert) { return ::testing::PrintToString(wert); }

using Merkmale = std::map<std::string, std::string>;

std::string Feld(const Merkmale& m, const std::string& name) {
    const auto treffer = m.find(name);
    return treffer == m.end() ? std::string() : treffer->second;
}

// The relation layer: by kind, the ids each id refers to, or that refer to it.
using Verweise = std::map<std::string, std::map<std::string, std::vector<std::string>>>;

const char* const Ebenen[] = {"AX_Flurstueck", "AX_Buchungsstelle", "AX_Buchungsblatt", "AX_Namensnummer",
                              "AX_Person", "AX_Anschrift", "AX_LagebezeichnungMitHausnummer",
                              "AX_LagebezeichnungOhneHausnummer", "AX_LagebezeichnungKatalogeintrag", "AX_Gemarkung"};

struct GdalBezirk {
    std::string fehler;
    test::GdalKlassen klassen;
    std::map<std::string, std::map<std::string, Merkmale>> ebenen; // by layer, then gml_id
    Verweise vorwärts, rückwärts;
    std::size_t beziehungen = 0;

    const Merkmale* Objekt(const std::string& ebene, const std::string& id) const {
        const auto& objekte = ebenen.at(ebene);
        const auto treffer = objekte.find(id);
        return treffer == objekte.end() ? nullptr : &treffer->second;
    }
    // The ids `id` refers to (or that refer to it) by relations `art`; only objects of `ebene`.
    std::vector<std::string> Bezogen(bool vorwärtsGerichtet, const std::string& art, const std::string& id,
                                     const std::string& ebene = {}) const {
        std::vector<std::string> ids;
        const auto& verweise = vorwärtsGerichtet ? vorwärts : rückwärts;
        if (const auto a = verweise.find(art); a != verweise.end())
            if (const auto t = a->second.find(id); t != a->second.end())
                for (const auto& ziel : t->second)
                    if (ebene.empty() || Objekt(ebene, ziel))
                        ids.push_back(ziel);
        return ids;
    }
};

GdalBezirk GdalLesen() {
    GdalBezirk g;
    try {
        g.klassen = test::KlassenNachGdal(TestBezirk().xml);
        test::TempOrdner ordner;
        const auto ziel = ordner / "gdal.sqlite";
        std::string ebenen = "ALKIS_beziehungen";
        for (const char* ebene : Ebenen)
            ebenen += std::string(" ") + ebene;
        const auto lauf = test::GdalAuf(ordner.pfad(), TestBezirk().xml,
                                        "ogr2ogr --config GML_FIELDTYPES ALWAYS_STRING -f SQLite -lco LAUNDER=NO "
                                        "-nlt NONE " + test::Wort(ziel), ebenen);
        g.fehler = !g.klassen.fehler.empty() ? g.klassen.fehler : lauf.status != 0 ? lauf.ausgabe : "";
        if (!g.fehler.empty())
            return g;
        Datenbank db(ziel);
        const auto objekte = [&db](const std::string& ebene) {
            std::vector<Merkmale> merkmale;
            auto abfrage = db.VorbereitenNativ("SELECT * FROM " + Bezeichner(ebene));
            while (abfrage.Schritt()) {
                auto& m = merkmale.emplace_back();
                for (int i = 0; i < abfrage.Spaltenanzahl(); ++i)
                    m[std::string(abfrage.Spaltenname(i))] = abfrage.IstNull(i) ? "" : std::string(abfrage.Text(i));
            }
            return merkmale;
        };
        for (const char* ebene : Ebenen)
            for (auto& m : objekte(ebene))
                g.ebenen[ebene].emplace(Feld(m, "gml_id"), std::move(m));
        for (const char* ebene : Ebenen)
            if (g.ebenen[ebene].empty())
                g.fehler += std::string("GDAL liest keine Objekte ") + ebene + "; ";
        for (const auto& b : objekte("ALKIS_beziehungen")) {
            const auto von = Feld(b, "beziehung_von"), art = Feld(b, "beziehungsart"), zu = Feld(b, "beziehung_zu");
            g.vorwärts[art][von].push_back(zu);
            g.rückwärts[art][zu].push_back(von);
            ++g.beziehungen;
        }
    } catch (const std::exception& e) {
        g.fehler = std::string("GDALs Datenbank nicht lesbar: ") + e.what();
    }
    return g;
}

using Paare = std::set<std::pair<std::string, std::string>>;

// A parcel's location: street names, (street, house number) pairs, keys without catalogue entry.
struct Lage {
    std::set<std::string> straßen;
    Paare hausnummern;
    std::set<std::string> unbenannt;
};

// The owners of one booking in register order: (owner number as the extract prints it, name).
using Eigentümerfolge = std::vector<std::pair<std::string, std::string>>;

// The first three levels of a number after DIN 1421 ("0001.02.00.00.00" gives "1.2.0").
std::string DreiStufen(std::string_view din) {
    const auto teile = Teilen(din, ".");
    std::string aus;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string stufe = i < teile.size() ? OhneNullen(teile[i]) : std::string();
        aus += (i > 0 ? "." : "") + (stufe.empty() ? std::string("0") : stufe);
    }
    return aus;
}

struct Erwartung {
    std::string kennzeichen;         // as the file writes it
    std::string tabellenKennzeichen; // "_" as "0"
    std::size_t zeilen = 0;
    std::size_t angehängt = 0; // k: bookings attached to the parcel's booking
    Paare anschriften;         // (Straße, Ort)
    std::string fläche, gemarkung, flur, flurstück;
    Lage lage;
    std::map<std::string, Eigentümerfolge> eigentümerJeBuchung; // by "sheet|booking number"
    std::string hinweis; // what in GDAL's reading explains a difference, "" when nothing stands out
};

std::string Lageschlüssel(const Merkmale& m) {
    std::string schlüssel;
    for (const char* teil : {"land", "regierungsbezirk", "kreis", "gemeinde", "lage"})
        schlüssel += OhneNullen(Feld(m, teil)) + "|";
    return schlüssel;
}

void LageHinzufügen(Lage& lage, const Merkmale& m, const std::map<std::string, std::string>& katalog,
                    bool mitNummer) {
    std::string name = Trimmen(Feld(m, "unverschluesselt"));
    if (name.empty()) {
        if (Trimmen(Feld(m, "lage")).empty())
            return;
        const auto treffer = katalog.find(Lageschlüssel(m));
        if (treffer == katalog.end()) {
            lage.unbenannt.insert(Lageschlüssel(m));
            return;
        }
        name = Trimmen(treffer->second);
    }
    lage.straßen.insert(name);
    lage.hausnummern.emplace(name, mitNummer ? Trimmen(Feld(m, "hausnummer")) : std::string());
}

Erwartung ErwartungBilden(const GdalBezirk& g, const Merkmale& f, const std::map<std::string, std::string>& katalog,
                          const std::map<std::string, std::string>& gemarkungsname) {
    Erwartung e;
    const std::string id = Feld(f, "gml_id");
    e.kennzeichen = Feld(f, "flurstueckskennzeichen");
    e.tabellenKennzeichen = e.kennzeichen;
    std::replace(e.tabellenKennzeichen.begin(), e.tabellenKennzeichen.end(), '_', '0');
    e.fläche = Feld(f, "amtlicheFlaeche");
    const auto gemarkung =
        gemarkungsname.find(OhneNullen(Feld(f, "land")) + "|" + OhneNullen(Feld(f, "gemarkungsnummer")));
    e.gemarkung = gemarkung == gemarkungsname.end() ? std::string() : gemarkung->second;
    e.flur = Stellen(Feld(f, "flurnummer"), 3);
    const std::string nenner = Trimmen(Feld(f, "nenner"));
    e.flurstück = Stellen(Feld(f, "zaehler"), 5) + "/" + (nenner.empty() ? "0000" : Stellen(nenner, 4));

    std::vector<std::string> buchungen;
    const auto gebucht = g.Bezogen(true, "istGebucht", id);
    if (gebucht.size() != 1)
        e.hinweis += " istGebucht nennt " + std::to_string(gebucht.size()) + " Buchungen;";
    if (!gebucht.empty()) {
        const std::string& b = gebucht.front();
        const auto angehängt = g.Bezogen(false, "an", b, "AX_Buchungsstelle");
        e.angehängt = angehängt.size();
        buchungen = angehängt.size() > 1 ? angehängt : std::vector<std::string>{b};
        if (angehängt.size() == 1)
            buchungen.push_back(angehängt.front());
        for (const auto& z : g.Bezogen(false, "zu", b, "AX_Buchungsstelle"))
            buchungen.push_back(z);
        for (const auto& a : angehängt)
            if (const auto an = g.Bezogen(true, "an", a); an.size() > 1)
                e.hinweis += " Buchung " + a + " hängt mit \"an\" an " + std::to_string(an.size()) + " Buchungen;";
    }
    for (const auto& buchung : buchungen) {
        const std::string bvnr = OhneNullen(Feld(*g.Objekt("AX_Buchungsstelle", buchung), "laufendeNummer"));
        const auto blätter = g.Bezogen(true, "istBestandteilVon", buchung, "AX_Buchungsblatt");
        if (blätter.size() != 1)
            e.hinweis += " Buchung " + buchung + " in " + std::to_string(blätter.size()) + " Blättern;";
        std::vector<std::pair<std::string, std::pair<std::string, std::string>>> folge;
        std::string blattnummer;
        if (!blätter.empty()) {
            const std::string& blatt = blätter.front();
            blattnummer = OhneNullen(
                Feld(*g.Objekt("AX_Buchungsblatt", blatt), "buchungsblattnummerMitBuchstabenerweiterung"));
            for (const auto& n : g.Bezogen(false, "istBestandteilVon", blatt, "AX_Namensnummer")) {
                const std::string din = Trimmen(Feld(*g.Objekt("AX_Namensnummer", n), "laufendeNummerNachDIN1421"));
                std::string name;
                for (const auto& p : g.Bezogen(true, "benennt", n, "AX_Person")) {
                    const Merkmale& person = *g.Objekt("AX_Person", p);
                    const std::string nachname = Trimmen(Feld(person, "nachnameOderFirma"));
                    const std::string vorname = Trimmen(Feld(person, "vorname"));
                    name = vorname.empty() ? nachname : nachname + ", " + vorname;
                    for (const auto& a : g.Bezogen(true, "hat", p, "AX_Anschrift")) {
                        const Merkmale& m = *g.Objekt("AX_Anschrift", a);
                        e.anschriften.emplace(
                            MitLeerzeichen(Feld(m, "strasse"), Feld(m, "hausnummer")),
                            MitLeerzeichen(Feld(m, "postleitzahlPostzustellung"), Feld(m, "ort_Post")));
                    }
                }
                folge.push_back({din, {DreiStufen(din), name}});
            }
        }
        std::stable_sort(folge.begin(), folge.end(), [](const auto& x, const auto& y) { return x.first < y.first; });
        auto& eigentümer = e.eigentümerJeBuchung[blattnummer + "|" + bvnr];
        for (auto& [din, eintrag] : folge)
            eigentümer.push_back(std::move(eintrag));
        if (folge.empty())
            eigentümer = {{"0.0.0", ""}};
        e.zeilen += std::max<std::size_t>(folge.size(), 1);
    }

    const auto mitNummer = g.Bezogen(true, "weistAuf", id, "AX_LagebezeichnungMitHausnummer");
    for (const auto& l : mitNummer)
        LageHinzufügen(e.lage, *g.Objekt("AX_LagebezeichnungMitHausnummer", l), katalog, true);
    if (mitNummer.empty())
        for (const auto& l : g.Bezogen(true, "zeigtAuf", id, "AX_LagebezeichnungOhneHausnummer"))
            LageHinzufügen(e.lage, *g.Objekt("AX_LagebezeichnungOhneHausnummer", l), katalog, false);
    return e;
}

std::map<std::string, Erwartung> ErwartungenBilden(const GdalBezirk& g) {
    std::map<std::string, std::string> katalog, gemarkungsname;
    for (const auto& [id, k] : g.ebenen.at("AX_LagebezeichnungKatalogeintrag"))
        katalog[Lageschlüssel(k)] = Feld(k, "bezeichnung");
    for (const auto& [id, m] : g.ebenen.at("AX_Gemarkung"))
        gemarkungsname[OhneNullen(Feld(m, "land")) + "|" + OhneNullen(Feld(m, "gemarkungsnummer"))] =
            Trimmen(Feld(m, "bezeichnung"));
    std::map<std::string, Erwartung> erwartungen;
    for (const auto& [id, f] : g.ebenen.at("AX_Flurstueck")) {
        Erwartung e = ErwartungBilden(g, f, katalog, gemarkungsname);
        erwartungen.emplace(e.tabellenKennzeichen, std::move(e));
    }
    return erwartungen;
}

// A Lagebezeichnung cell split into parts "name [numbers]" by the names the parcel should have.
Lage LageLesen(std::string_view zelle, const std::set<std::string>& bekannt) {
    Lage lage;
    for (const auto& roh : Teilen(zelle, "; ")) {
        const std::string teil = Trimmen(roh);
        if (teil.empty())
            continue;
        std::string name;
        for (const auto& kandidat : bekannt) {
            const bool passt =
                teil == kandidat || (teil.starts_with(kandidat + " ") &&
                                     BeginntMitZiffer(std::string_view(teil).substr(kandidat.size() + 1)));
            if (passt && kandidat.size() > name.size())
                name = kandidat;
        }
        if (name.empty() && BeginntMitZiffer(teil)) {
            lage.unbenannt.insert(teil);
            continue;
        }
        if (name.empty()) {
            const auto wörter = Teilen(teil, " ");
            std::size_t w = 1;
            while (w < wörter.size() && !BeginntMitZiffer(wörter[w]))
                ++w;
            for (std::size_t i = 0; i < w; ++i)
                name += (i > 0 ? " " : "") + wörter[i];
        }
        lage.straßen.insert(name);
        const std::string nummern = Trimmen(std::string_view(teil).substr(name.size()));
        if (nummern.empty())
            lage.hausnummern.emplace(name, "");
        for (const auto& nummer : Teilen(nummern, ", "))
            if (!Trimmen(nummer).empty())
                lage.hausnummern.emplace(name, Trimmen(nummer));
    }
    return lage;
}

struct Befund {
    std::string fehlt;
    std::string fehler;
    GdalBezirk gdal;
    std::map<std::string, Erwartung> erwartungen; // by the table's key
    Kataster kataster;
    Ergebnis ergebnis;
    std::vector<std::string> meldungen;
    std::optional<Kataster::Index> index;
    std::map<std::string, std::int64_t> klassen; // rows per class of the object database
};

std::unique_ptr<Befund> BefundErheben() {
    auto b = std::make_unique<Befund>();
    b->fehlt = TestBezirk().fehlt;
    b->fehler = TestBezirk().fehler;
    if (!b->fehlt.empty() || !b->fehler.empty())
        return b;
    std::thread gdal([&b] { b->gdal = GdalLesen(); });
    try {
        test::TempOrdner ordner;
        NasDirektAuftrag auftrag;
        auftrag.datei = TestBezirk().xml;
        auftrag.datenbank = ordner / "bezirk.sqlite";
        auftrag.konfigOrdner = Konfig;
        auftrag.ansichtsdatei = Konfig / "ALB_DatenbankSpalten.dat";
        auftrag.optionen.protokollNichtSchreiben = true;
        SkriptOberfläche ui;
        NasDirektBericht bericht;
        b->ergebnis = NasDirektImport(auftrag, b->kataster, ui, bericht);
        b->meldungen = ui.Meldungen();
        if (b->ergebnis)
            b->klassen = test::KlassenDerDatenbank(*DAO_DatenbankÖffnen(auftrag.datenbank));
    } catch (const std::exception& e) {
        b->ergebnis = Ergebnis::Fehlschlag(std::string("Ausnahme: ") + e.what());
    }
    gdal.join();
    if (!b->gdal.fehler.empty() || !b->ergebnis)
        return b;

    b->erwartungen = ErwartungenBilden(b->gdal);
    if (const auto spalte = b->kataster.SpaltenIndex("Flurstückskennzeichen"))
        b->index = b->kataster.IndexBauen(*spalte);
    return b;
}

class ZusammenstellungGdal : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (!s_befund)
            s_befund = BefundErheben();
    }
    static void TearDownTestSuite() { s_befund.reset(); }

    void SetUp() override {
        ASSERT_TRUE(s_befund);
        if (!s_befund->fehlt.empty())
            GTEST_SKIP() << s_befund->fehlt;
        ASSERT_EQ(s_befund->fehler + s_befund->gdal.fehler, "");
        ASSERT_TRUE(s_befund->ergebnis)
            << s_befund->ergebnis.Meldung() << Text(s_befund->meldungen);
        ASSERT_TRUE(s_befund->gdal.klassen.nas) << "GDAL hat die Datei nicht als NAS gelesen";
        ASSERT_GT(s_befund->gdal.ebenen.at("AX_Flurstueck").size(), 0u);
        ASSERT_GT(s_befund->gdal.beziehungen, 0u) << "GDAL liefert keine Beziehungen";
        ASSERT_TRUE(s_befund->index) << "die Tabelle hat keine Spalte Flurstückskennzeichen";
    }

    static const Kataster& Tabelle() { return s_befund->kataster; }
    static std::span<const std::size_t> Zeilen(const Erwartung& e) {
        return s_befund->index->Zeilen(e.tabellenKennzeichen);
    }
    static std::string Zelle(std::size_t zeile, std::string_view spalte) {
        return std::string(Tabelle().Zelle(zeile, spalte));
    }

    static void Vergleichen(std::string_view was, const std::function<std::string(const Erwartung&)>& prüfen) {
        std::size_t abweichungen = 0;
        std::string erste;
        for (const auto& [schlüssel, e] : s_befund->erwartungen)
            if (const auto fehler = prüfen(e); !fehler.empty() && ++abweichungen <= 12)
                erste += "\n  " + e.kennzeichen + (e.hinweis.empty() ? "" : " [GDAL:" + e.hinweis + "]") + ": " +
                         fehler;
        EXPECT_EQ(abweichungen, 0u) << was << " bei " << abweichungen << " von " << s_befund->erwartungen.size()
                                    << " Flurstücken, die ersten:" << erste;
    }

    static inline std::unique_ptr<Befund> s_befund;
};

TEST_F(ZusammenstellungGdal, ObjekteJeKlasseWieGdalSieZählt) {
    const auto& gdal = s_befund->gdal.klassen.anzahl;
    int verglichen = 0;
    for (const auto& klasse : KnotenLesen(Konfig / "ALKIS_Knoten.dat").klassen) {
        const auto name = test::Klein(klasse.tabelle);
        if (name == "antragsbeschreibung")
            continue;
        const auto anzahl = [&name](const std::map<std::string, std::int64_t>& klassen) {
            const auto treffer = klassen.find(name);
            return treffer == klassen.end() ? std::int64_t{0} : treffer->second;
        };
        const std::int64_t soll = anzahl(gdal);
        EXPECT_EQ(anzahl(s_befund->klassen), soll) << klasse.tabelle;
        verglichen += soll > 0 ? 1 : 0;
    }
    EXPECT_GT(verglichen, 10);
}

TEST_F(ZusammenstellungGdal, EineZeileJeFlurstückBuchungUndEigentümer) {
    Vergleichen("falsche Zeilenzahl", [](const Erwartung& e) {
        if (Zeilen(e).size() == e.zeilen)
            return std::string();
        return std::to_string(Zeilen(e).size()) + " Zeilen statt " + std::to_string(e.zeilen) + " (" +
               std::to_string(e.angehängt) + " angehängte Buchungen)";
    });
    std::size_t erwartet = 0;
    std::set<std::string> nachGdal, inTabelle;
    for (const auto& [schlüssel, e] : s_befund->erwartungen) {
        erwartet += e.zeilen;
        nachGdal.insert(schlüssel);
    }
    EXPECT_EQ(Tabelle().Zeilenzahl(), erwartet);
    for (std::size_t z = 0; z < Tabelle().Zeilenzahl(); ++z)
        inTabelle.insert(Zelle(z, "Flurstückskennzeichen"));
    EXPECT_EQ(s_befund->erwartungen.size(), s_befund->gdal.ebenen.at("AX_Flurstueck").size()) << "doppelte Kennzeichen";
    EXPECT_EQ(inTabelle, nachGdal);
}

TEST_F(ZusammenstellungGdal, EigentümerJeBuchungInZahlUndReihenfolgeDesRegisters) {
    std::size_t eigentümer = 0;
    Vergleichen("Eigentümer anders als im Register", [&eigentümer](const Erwartung& e) {
        std::vector<std::size_t> zeilen(Zeilen(e).begin(), Zeilen(e).end());
        std::sort(zeilen.begin(), zeilen.end(), [](std::size_t a, std::size_t b) {
            return Zelle(a, "Eigentümerposition") < Zelle(b, "Eigentümerposition");
        });
        std::map<std::string, Eigentümerfolge> gelesen;
        for (const auto z : zeilen)
            gelesen[OhneNullen(Zelle(z, "Grundbuchblatt")) + "|" + OhneNullen(Zelle(z, "BVNR"))].emplace_back(
                report::Eigentümernummer(Zelle(z, "Namensnummer")), Zelle(z, "Name"));
        std::string text;
        for (const auto& [buchung, folge] : e.eigentümerJeBuchung) {
            eigentümer += folge.size();
            const auto ist = gelesen.find(buchung);
            if (ist == gelesen.end() || ist->second != folge)
                text += " Blatt|BVNR " + buchung + ": " + Text(folge) + " statt " +
                        (ist == gelesen.end() ? std::string("keiner Zeile") : Text(ist->second)) + ";";
        }
        for (const auto& [buchung, folge] : gelesen)
            if (!e.eigentümerJeBuchung.contains(buchung))
                text += " Zeilen für Blatt|BVNR " + buchung + " zu viel: " + Text(folge) + ";";
        return text;
    });
    EXPECT_GT(eigentümer, 6000u);
}

TEST_F(ZusammenstellungGdal, AnschriftenFlächeLageUndKennzeichenWieGdal) {
    std::size_t anschriften = 0, straßen = 0, hausnummern = 0;
    Vergleichen("andere Anschriften", [&anschriften](const Erwartung& e) {
        Paare gelesen;
        for (const auto z : Zeilen(e))
            if (!Zelle(z, "Straße").empty() || !Zelle(z, "Ort").empty())
                gelesen.emplace(Zelle(z, "Straße"), Zelle(z, "Ort"));
        anschriften += e.anschriften.size();
        return gelesen == e.anschriften ? std::string() : Text(e.anschriften) + " statt " + Text(gelesen);
    });
    EXPECT_GT(anschriften, 300u);

    Vergleichen("andere Fläche", [](const Erwartung& e) {
        const auto soll = Zahl<double>(e.fläche);
        if (!soll)
            return "GDAL liest keine Zahl als amtlicheFlaeche: " + e.fläche;
        for (const auto z : Zeilen(e))
            if (Zahl<double>(Zelle(z, "Fläche")) != soll)
                return "Fläche " + Zelle(z, "Fläche") + " statt " + e.fläche;
        return std::string();
    });

    Vergleichen("andere Lagebezeichnung", [&straßen, &hausnummern](const Erwartung& e) {
        straßen += e.lage.straßen.size();
        for (const auto& [straße, nummer] : e.lage.hausnummern)
            hausnummern += nummer.empty() ? 0 : 1;
        for (const auto z : Zeilen(e)) {
            const std::string zelle = Zelle(z, "Lagebezeichnung");
            const Lage gelesen = LageLesen(zelle, e.lage.straßen);
            std::string fehler;
            if (gelesen.straßen != e.lage.straßen)
                fehler += " Straßen " + Text(gelesen.straßen) + " statt " + Text(e.lage.straßen) + ";";
            else if (gelesen.hausnummern != e.lage.hausnummern)
                fehler += " Hausnummern " + Text(gelesen.hausnummern) + " statt " + Text(e.lage.hausnummern) + ";";
            if (gelesen.unbenannt.size() != e.lage.unbenannt.size())
                fehler += " " + std::to_string(gelesen.unbenannt.size()) + " Teile ohne Straßennamen statt " +
                          std::to_string(e.lage.unbenannt.size()) + " Schlüssel ohne Katalogeintrag " +
                          Text(e.lage.unbenannt) + ";";
            if (!fehler.empty())
                return "\"" + zelle + "\":" + fehler;
        }
        return std::string();
    });
    EXPECT_GT(straßen, 40u);
    EXPECT_GT(hausnummern, 5u);

    Vergleichen("andere Merkmale des Flurstücks", [](const Erwartung& e) {
        if (e.gemarkung.empty())
            return std::string("GDAL kennt keine Gemarkung des Flurstücks");
        for (const auto z : Zeilen(e)) {
            std::string fehler;
            using Soll = std::pair<std::string_view, const std::string&>;
            for (const auto& [spalte, soll] : {Soll{"Flurstückskennzeichen", e.tabellenKennzeichen},
                                               Soll{"FKZ-Original", e.kennzeichen}, Soll{"Gemarkung", e.gemarkung},
                                               Soll{"Flur", e.flur}, Soll{"Flurstück", e.flurstück}})
                if (Zelle(z, spalte) != soll)
                    fehler += " " + std::string(spalte) + " \"" + Zelle(z, spalte) + "\" statt \"" + soll + "\";";
            if (!fehler.empty())
                return fehler;
        }
        return std::string();
    });
}

} // namespace
} // namespace flurix::nas
