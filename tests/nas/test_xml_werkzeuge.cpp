// The NAS XML tools: each case runs one tool in a scratch folder holding the inputs of
// tests/daten/nas/xml_werkzeuge/; what it said (messages, questions, protocol, status), its result,
// its counts and the folder afterwards go into one transcript compared with ablauf.txt, and the
// files it wrote with their expected files. Beside them: exact bytes of the conversion to
// Windows-1252, the batch file run through sh into the job line reader, and real files merged and
// thinned and read again by our scan and by GDAL.

#include "nas/xml_werkzeuge.hpp"

#include "core/kommandozeile.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/gdal_testbezirk.hpp"
#include "nas/nas_einlesen.hpp"
#include "nas/nas_protokoll.hpp"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <algorithm>
#include <functional>
#include <map>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace flurix::nas {
namespace {

namespace fs = std::filesystem;
using test::DateiLesen;
using test::DateiSchreiben;
using test::TempOrdner;

const fs::path Daten = test::Testdaten() / "nas" / "xml_werkzeuge";
const fs::path Konfig = fs::path(FLURIX_QUELLEN) / "config";

std::string Maskiert(std::string text, const fs::path& ordner) {
    const std::string pfad = ordner.string();
    for (auto stelle = text.find(pfad); stelle != std::string::npos;
         stelle = text.find(pfad, stelle))
        text.replace(stelle, pfad.size(), "<ordner>");
    return text;
}

std::string StatusText(Ergebnis::Status status) {
    switch (status) {
    case Ergebnis::Status::Ok:
        return "Ok";
    case Ergebnis::Status::Fehler:
        return "Fehler";
    case Ergebnis::Status::Abgebrochen:
        return "Abgebrochen";
    case Ergebnis::Status::Beenden:
        break;
    }
    return "Beenden";
}

// The status texts a run shows every 100 ms (turning sign, running counts) depend on the clock;
// the transcript keeps the others and the last one of a run.
bool IstLaufstatus(const std::string& text) {
    for (const char* zeichen : {"  --", "  \\", "  |", "  /"})
        if (text.ends_with(zeichen))
            return true;
    return false;
}

std::string Ablauf(const SkriptOberfläche& ui) {
    std::string text;
    const auto& ereignisse = ui.Ereignisse();
    for (std::size_t i = 0; i < ereignisse.size(); ++i) {
        const auto& e = ereignisse[i];
        std::string zeile = e.text;
        std::replace(zeile.begin(), zeile.end(), '\n', '|');
        switch (e.art) {
        case Ereignis::Art::Meldung:
            text += "Meldung [" + e.titel + "] " + zeile + "\n";
            break;
        case Ereignis::Art::Frage:
            text += "Frage [" + e.titel + "] " + zeile + "\n";
            break;
        case Ereignis::Art::Protokoll:
            text += "Protokoll " + zeile + "\n";
            break;
        case Ereignis::Art::Status: {
            const bool folgt = i + 1 < ereignisse.size() &&
                               ereignisse[i + 1].art == Ereignis::Art::Status &&
                               zeile.starts_with("ALKIS-XML-Ausdünnen:") &&
                               ereignisse[i + 1].text.starts_with("ALKIS-XML-Ausdünnen:");
            if (!IstLaufstatus(zeile) && !folgt)
                text += "Status " + zeile + "\n";
            break;
        }
        }
    }
    return text;
}

std::string Ordnerinhalt(const fs::path& ordner) {
    std::vector<std::string> namen;
    for (const auto& eintrag : fs::directory_iterator(ordner))
        namen.push_back(eintrag.path().filename().string());
    std::sort(namen.begin(), namen.end());
    std::string text;
    for (const auto& name : namen)
        text += (text.empty() ? "" : " ") + name;
    return text;
}

using Aufruf = std::function<Ergebnis(const fs::path& ordner, Oberfläche& ui, XmlBericht& bericht)>;

struct Fall {
    std::string name;
    Aufruf aufruf;
    /// Files written and their expected file in xml_werkzeuge/ ("=<input>": equal to that input).
    std::vector<std::pair<std::string, std::string>> ziele = {};
    std::deque<Antwort> antworten = {};
    std::function<void(const fs::path&)> vorbereiten = {};
};

const std::vector<std::string> Eingaben = {"auszug_a.xml",          "auszug_b.xml",
                                           "dritte_wfs_member.xml", "wfs_member.xml",
                                           "praefix_adv_crlf.xml",  "abgeschnitten.xml"};

Aufruf Zusammenfügen(std::vector<std::string> namen, std::vector<std::string> liste = {}) {
    return [=](const fs::path& ordner, Oberfläche& ui, XmlBericht& bericht) {
        std::vector<fs::path> dateien;
        for (const auto& name : namen)
            dateien.push_back(ordner / name);
        return XmlZusammenfügen(dateien, liste, ui, bericht);
    };
}

void AltesZielAnlegen(const fs::path& ordner, const std::string& name) {
    DateiSchreiben(ordner / name, "alte Fassung\n");
}

TEST(XmlWerkzeuge, AblaufZieleUndMeldungenJeFall) {
    const std::vector<Fall> fälle = {
        {"Zusammenfügen: Kopf der ersten Datei, bekannte gml:id der zweiten und dritten Datei "
         "übergangen, "
         "DEXX0000000000HH neben DEXX0000000000hH behalten",
         Zusammenfügen({"auszug_a.xml", "auszug_b.xml", "dritte_wfs_member.xml"}),
         {{"auszug_a_MERGE.xml", "erwartet_merge_abc.xml"}}},
        {"Zusammenfügen mit Objektreduzierung AX_Gebaeude",
         Zusammenfügen({"auszug_a.xml", "auszug_b.xml", "dritte_wfs_member.xml"}, {"AX_Gebaeude"}),
         {{"auszug_a_MERGE.xml", "erwartet_merge_ohne_gebaeude.xml"}}},
        {"Zusammenfügen mit wfs:member zuerst: Ende </wfs:FeatureCollection>",
         Zusammenfügen({"dritte_wfs_member.xml", "auszug_a.xml"}),
         {{"dritte_wfs_member_MERGE.xml", "erwartet_merge_wfs_member.xml"}}},
        {"Zusammenfügen einer Datei", Zusammenfügen({"auszug_a.xml"})},
        {"Zusammenfügen mit abgeschnittener Datei: keine halbe Ausgabe",
         Zusammenfügen({"auszug_a.xml", "abgeschnitten.xml"})},
        {"Zusammenfügen mit fehlender Datei", Zusammenfügen({"auszug_a.xml", "fehlt.xml"})},
        {"Zusammenfügen, Ziel vorhanden, unbeaufsichtigt: bleibt",
         Zusammenfügen({"auszug_a.xml", "auszug_b.xml"}),
         {{"auszug_a_MERGE.xml", "=alt"}},
         {},
         [](const fs::path& o) { AltesZielAnlegen(o, "auszug_a_MERGE.xml"); }},
        {"ID-Prüfung mit Wiederholungen",
         [](const fs::path& o, Oberfläche& ui, XmlBericht& b) {
             return XmlIdPrüfung(o / "wfs_member.xml", ui, b);
         },
         {{"wfs_member_Prüfung.xml", "erwartet_pruefung.xml"},
          {"wfs_member_Prüfung.err", "erwartet_pruefung.err"}}},
        {"ID-Prüfung, Ziel vorhanden, Antwort Nein: die alte Datei bleibt",
         [](const fs::path& o, Oberfläche& ui, XmlBericht& b) {
             return XmlIdPrüfung(o / "wfs_member.xml", ui, b);
         },
         {{"wfs_member_Prüfung.xml", "=alt"}},
         {Antwort::Nein},
         [](const fs::path& o) { AltesZielAnlegen(o, "wfs_member_Prüfung.xml"); }},
        {"ID-Prüfung, Ziel vorhanden, unbeaufsichtigt mit Ersetzen",
         [](const fs::path& o, Oberfläche& ui, XmlBericht& b) {
             return XmlIdPrüfung(o / "wfs_member.xml", ui, b, {.ersetzen = true});
         },
         {{"wfs_member_Prüfung.xml", "erwartet_pruefung.xml"}},
         {},
         [](const fs::path& o) { AltesZielAnlegen(o, "wfs_member_Prüfung.xml"); }},
        {"ID-Prüfung ohne Wiederholung: die Fehlerliste eines früheren Laufs geht",
         [](const fs::path& o, Oberfläche& ui, XmlBericht& b) {
             return XmlIdPrüfung(o / "auszug_a.xml", ui, b);
         },
         {{"auszug_a_Prüfung.xml", "erwartet_pruefung_ohne_wiederholung.xml"}},
         {},
         [](const fs::path& o) { AltesZielAnlegen(o, "auszug_a_Prüfung.err"); }},
        {"ID-Prüfung einer Datei ohne Objekte",
         [](const fs::path& o, Oberfläche& ui, XmlBericht& b) {
             DateiSchreiben(o / "leer.xml", "<?xml version=\"1.0\"?>\n<wfs:FeatureCollection/>\n");
             return XmlIdPrüfung(o / "leer.xml", ui, b);
         }},
        {"Ausdünnen mit Präfix und CR LF: adv:AX_Gebaeude und AX_Gebaeude übersprungen, "
         "adv:AX_Gebaeudeteil nicht",
         [](const fs::path& o, Oberfläche& ui, XmlBericht& b) {
             return XmlAusdünnen(o / "praefix_adv_crlf.xml", {"AX_Gebaeude"}, ui, b);
         },
         {{"praefix_adv_crlf_Ausdünnen.xml", "erwartet_ausduennen_crlf.xml"}}},
        {"Ausdünnen mit leerer Liste: jedes Byte wie in der Eingabe",
         [](const fs::path& o, Oberfläche& ui, XmlBericht& b) {
             return XmlAusdünnen(o / "praefix_adv_crlf.xml", {}, ui, b);
         },
         {{"praefix_adv_crlf_Ausdünnen.xml", "=praefix_adv_crlf.xml"}}},
        {"Ausdünnen abgelehnt",
         [](const fs::path& o, Oberfläche& ui, XmlBericht& b) {
             return XmlAusdünnen(o / "auszug_a.xml", {"AX_Person"}, ui, b);
         },
         {},
         {Antwort::Nein}},
        {"UTF-8 nach Windows-1252",
         [](const fs::path& o, Oberfläche& ui, XmlBericht& b) {
             return XmlNachAnsi(o / "wfs_member.xml", ui, b);
         },
         {{"wfs_member_Ansi.xml", "erwartet_ansi.xml"}}},
        {"UTF-8 nach Windows-1252, Ziel vorhanden, Antwort Nein",
         [](const fs::path& o, Oberfläche& ui, XmlBericht& b) {
             return XmlNachAnsi(o / "wfs_member.xml", ui, b);
         },
         {{"wfs_member_Ansi.xml", "=alt"}},
         {Antwort::Nein},
         [](const fs::path& o) { AltesZielAnlegen(o, "wfs_member_Ansi.xml"); }},
    };

    std::string ablauf;
    for (const auto& fall : fälle) {
        SCOPED_TRACE(fall.name);
        TempOrdner ordner;
        for (const auto& name : Eingaben)
            fs::copy_file(Daten / name, ordner / name);
        if (fall.vorbereiten)
            fall.vorbereiten(ordner.pfad());
        SkriptOberfläche ui(fall.antworten);
        XmlBericht bericht;
        const Ergebnis ergebnis = fall.aufruf(ordner.pfad(), ui, bericht);
        std::ostringstream zahlen;
        zahlen << "Bericht: " << bericht.dateien << " Dateien, " << bericht.geschrieben
               << " geschrieben, " << bericht.doppelt << " doppelt, " << bericht.übersprungen
               << " übersprungen, " << bericht.fehler << " Fehler, " << bericht.ersetzt
               << " ersetzt, Ziel "
               << (bericht.ziel.empty() ? "-" : bericht.ziel.filename().string()) << "\n";
        ablauf += "== " + fall.name + "\n" + Maskiert(Ablauf(ui), ordner.pfad()) +
                  "Ergebnis: " + StatusText(ergebnis.status()) + " " +
                  Maskiert(ergebnis.Meldung(), ordner.pfad()) + "\n" + zahlen.str() +
                  "Ordner: " + Ordnerinhalt(ordner.pfad()) + "\n\n";
        for (const auto& [datei, erwartet] : fall.ziele) {
            SCOPED_TRACE(datei);
            ASSERT_TRUE(fs::exists(ordner / datei));
            const std::string ist = DateiLesen(ordner / datei);
            if (erwartet == "=alt")
                EXPECT_EQ(ist, "alte Fassung\n");
            else if (erwartet.starts_with("="))
                EXPECT_EQ(ist, DateiLesen(Daten / erwartet.substr(1)));
            else
                EXPECT_EQ(test::GoldenVergleich(ist, Daten / erwartet), "");
            if (datei.ends_with(".xml") && erwartet != "=alt") {
                pugi::xml_document dokument;
                const auto gelesen = dokument.load_string(ist.c_str());
                EXPECT_TRUE(gelesen) << gelesen.description() << " bei Byte " << gelesen.offset;
            }
        }
    }
    EXPECT_EQ(test::GoldenVergleich(ablauf, Daten / "ablauf.txt"), "");
}

TEST(XmlNachAnsi, BytesGenau) {
    struct Bytefall {
        std::string name, eingabe, erwartet;
        std::uint64_t ersetzt = 0, fehler = 0;
    };
    // A character cut by the block boundary of the reader (4 MiB) is put together again.
    const std::string block(4u * 1024 * 1024 - 1, 'x');
    const std::string deklaration = "<?xml version=\"1.0\" encoding=\"windows-1252\"?>";
    const std::vector<Bytefall> fälle = {
        {"Umlaute, Eurozeichen, typografische Anführung",
         "<?xml version='1.0' encoding='UTF-8'?>\n<a b=\"Ä\">Grüße 5 € „x“ ß</a>\n",
         "<?xml version='1.0' encoding='windows-1252'?>\n<a b=\"\xC4\">Gr\xFC\xDF"
         "e 5 \x80 \x84x\x93 \xDF</a>\n"},
        {"Zeichen ohne Windows-1252-Form als Zeichenreferenz",
         "<?xml version=\"1.0\" encoding=\"utf-8\"?><a>Łódź 😀 Ω</a>",
         deklaration + "<a>&#321;\xF3"
                       "d&#378; &#128512; &#937;</a>",
         4},
        {"ohne Deklaration, mit Bytefolgemarke", "\xEF\xBB\xBF<a>ü</a>\r\n",
         deklaration + "\r\n<a>\xFC</a>\r\n"},
        {"Deklaration ohne encoding", "<?xml version=\"1.0\" standalone=\"yes\"?><a/>",
         "<?xml version=\"1.0\" encoding=\"windows-1252\" standalone=\"yes\"?><a/>"},
        {"ungültiges UTF-8 wird ?", "<?xml version=\"1.0\"?><a>\xFF\xC3(\xE2\x82</a>",
         deklaration + "<a>?\?(?\?</a>", 0, 4},
        {"Zeichen über der Blockgrenze", "<?xml version=\"1.0\"?>" + block + "ü€",
         deklaration + block + "\xFC\x80"},
    };
    for (const auto& fall : fälle) {
        SCOPED_TRACE(fall.name);
        TempOrdner ordner;
        DateiSchreiben(ordner / "a.xml", fall.eingabe);
        SkriptOberfläche ui;
        XmlBericht bericht;
        ASSERT_TRUE(XmlNachAnsi(ordner / "a.xml", ui, bericht));
        const std::string ist = DateiLesen(ordner / "a_Ansi.xml");
        if (ist.size() > 200) {
            EXPECT_EQ(ist.size(), fall.erwartet.size());
            EXPECT_EQ(ist.substr(ist.size() - 4), fall.erwartet.substr(fall.erwartet.size() - 4));
            EXPECT_TRUE(ist == fall.erwartet);
        } else {
            EXPECT_EQ(ist, fall.erwartet);
        }
        EXPECT_EQ(bericht.ersetzt, fall.ersetzt);
        EXPECT_EQ(bericht.fehler, fall.fehler);
    }
    // A file that says it is a one-byte code page already is not converted twice.
    TempOrdner ordner;
    DateiSchreiben(ordner / "b.xml", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xFC</a>");
    SkriptOberfläche ui;
    XmlBericht bericht;
    EXPECT_FALSE(XmlNachAnsi(ordner / "b.xml", ui, bericht));
    EXPECT_FALSE(fs::exists(ordner / "b_Ansi.xml"));
    EXPECT_EQ(ui.Meldungen().back(),
              "Die Datei \"" + (ordner / "b.xml").string() +
                  "\" ist laut XML-Deklaration schon iso-8859-1-kodiert, nicht UTF-8!   \n"
                  "Die Datei \"" +
                  (ordner / "b_Ansi.xml").string() +
                  "\" wurde nicht erstellt.\n"
                  "Bei weiteren Problemen kontaktieren Sie bitte den Programmautor!   ");
}

// The batch file's lines, run by sh with a program that prints its command line, are read by the
// job line reader as unattended NAS runs of exactly those files.
TEST(GgOutBatch, ZeilenGenauUndVomAuftragszeilenleserAngenommen) {
    TempOrdner ordner;
    const std::vector<std::string> namen = {"a b.xml", "o'neil.xml", "v1.2/z.xml"};
    std::vector<fs::path> dateien;
    for (const auto& name : namen) {
        DateiSchreiben(ordner / "daten" / name, "<a/>");
        dateien.push_back(ordner / "daten" / name);
    }
    const fs::path programm = ordner / "prog ramm";
    DateiSchreiben(programm, "#!/bin/sh\nprintf '%s\\n' \"$*\"\n");
    fs::permissions(programm, fs::perms::owner_all);

    for (const bool bat : {false, true}) {
        SCOPED_TRACE(bat ? "bat" : "sh");
        SkriptOberfläche ui;
        XmlBericht bericht;
        const Ergebnis ergebnis = GgOutBatch(dateien, programm, ordner.pfad(), bat, ui, bericht);
        ASSERT_TRUE(ergebnis) << ergebnis.Meldung();
        EXPECT_EQ(ergebnis.Meldung(), "3 Dateien gelesen, Batchdatei erstellt!   ");
        EXPECT_EQ(ui.Fragen(), std::vector<std::string>{
                                   "Wollen Sie für 3 Dateien eine Batch-Datei erstellen?   "});
        const std::string d = (ordner / "daten").string();
        if (bat) {
            const std::string p = programm.string();
            EXPECT_EQ(DateiLesen(ordner / "GG-Out-Batch.bat"),
                      "\"" + p + "\" " + d + "/a b.xml /ggout /still \r\n" + "\"" + p + "\" " + d +
                          "/o'neil.xml /ggout /still \r\n" + "\"" + p + "\" " + d +
                          "/v1.2/z.xml /ggout /still \r\n");
            continue;
        }
        const fs::path skript = ordner / "GG-Out-Batch.sh";
        const std::string p = Maskiert(programm.string(), ordner.pfad());
        EXPECT_EQ(Maskiert(DateiLesen(skript), ordner.pfad()),
                  "#!/bin/sh\n'<ordner>/prog ramm' '<ordner>/daten/a b.xml' /ggout /still\n"
                  "'<ordner>/prog ramm' '<ordner>/daten/o'\\''neil.xml' /ggout /still\n"
                  "'<ordner>/prog ramm' '<ordner>/daten/v1.2/z.xml' /ggout /still\n");
        EXPECT_NE(fs::status(skript).permissions() & fs::perms::owner_exec, fs::perms::none);
        const auto lauf = test::Ausführen(test::Wort(skript));
        ASSERT_EQ(lauf.status, 0);
        std::istringstream zeilen(lauf.ausgabe);
        std::size_t i = 0;
        for (std::string zeile; std::getline(zeilen, zeile); ++i) {
            SCOPED_TRACE(zeile);
            SkriptOberfläche leser;
            const Auftrag auftrag = KommandozeileLesen(zeile, leser);
            EXPECT_EQ(auftrag.art, Startart::NasStapel);
            EXPECT_TRUE(auftrag.StillModus && auftrag.AusgabeGG && !auftrag.AusgabeDXF);
            ASSERT_LT(i, dateien.size());
            EXPECT_EQ(auftrag.AuftragsDatei, dateien[i].string());
        }
        EXPECT_EQ(i, dateien.size());
    }
    // The folder form takes the *.xml of the folder, sorted.
    const auto imOrdner = XmlDateienImOrdner(ordner / "daten");
    EXPECT_EQ(imOrdner, (std::vector<fs::path>{ordner / "daten" / "a b.xml",
                                               ordner / "daten" / "o'neil.xml"}));
}

TEST(XmlWerkzeuge, GesperrteEingabeWirdGemeldet) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "als root ist jede Datei lesbar: chmod 000 sperrt nichts";
    TempOrdner ordner;
    fs::copy_file(Daten / "wfs_member.xml", ordner / "w.xml");
    fs::permissions(ordner / "w.xml", fs::perms::none);
    SkriptOberfläche ui;
    XmlBericht bericht;
    EXPECT_FALSE(XmlIdPrüfung(ordner / "w.xml", ui, bericht));
    EXPECT_EQ(ui.Meldungen().back(),
              "Eingabedatei \"" + (ordner / "w.xml").string() +
                  "\" hat den Zugriff verweigert oder ist in Bearbeitung!?   \n"
                  "Bei weiteren Problemen kontaktieren Sie bitte den Programmautor!   ");
    EXPECT_FALSE(fs::exists(ordner / "w_Prüfung.xml"));
}

TEST(ObjektreduzierungLesen, KommentareUndLeerzeilenGeltenNicht) {
    TempOrdner ordner;
    DateiSchreiben(ordner / "r.dat",
                   "* Kopf\r\n\r\n AX_Gebaeude \r\n*AX_Person\r\n\tAX_Bewertung\r\n");
    EXPECT_EQ(ObjektreduzierungLesen(ordner / "r.dat"),
              (std::vector<std::string>{"AX_Gebaeude", "AX_Bewertung"}));
    EXPECT_TRUE(ObjektreduzierungLesen(Konfig / "ALKIS_Objektreduzierung.dat").empty())
        << "the shipped list thins nothing";
    EXPECT_TRUE(ObjektreduzierungLesen(ordner / "fehlt.dat").empty());
}

// The rows of each feature class after our scan of `xml`.
std::map<std::string, std::int64_t> Eingelesen(const fs::path& xml, const fs::path& ordner) {
    SkriptOberfläche ui;
    NasProtokoll protokoll(ui, {});
    NasStand stand;
    const auto db = ordner / (xml.stem().string() + ".sqlite");
    const Ergebnis ergebnis = DAO_ALKISEinlesen({xml, db, Konfig}, stand, ui, protokoll);
    EXPECT_TRUE(ergebnis) << xml << ": " << ergebnis.Meldung();
    if (!ergebnis)
        return {};
    Datenbank datenbank(db);
    return test::KlassenDerDatenbank(datenbank);
}

std::int64_t Anzahl(const std::map<std::string, std::int64_t>& klassen, const std::string& klasse) {
    const auto fund = klassen.find(klasse);
    return fund == klassen.end() ? 0 : fund->second;
}

// Real parcels of three Länder (the public WFS samples, wfs:member) merged behind the invented
// district of samples/ (gml:featureMember), one sample given twice, then thinned: our scan and GDAL
// find the district's features plus the thirty parcels, and after thinning no person.
TEST(XmlWerkzeugeMitEchtenDaten, ZusammengefügtUndAusgedünntLesenSichWieder) {
    const fs::path wfs = test::GemeinsameTestdaten() / "state-wfs-nas";
    const std::vector<std::string> proben = {
        "NW_NAS-konform_10flst.xml", "HE_NAS-konform_10flst.xml", "BB_NAS-konform_10flst.xml"};
    for (const auto& probe : proben)
        if (!fs::exists(wfs / probe))
            GTEST_SKIP() << "öffentliche WFS-Proben fehlen: " << wfs / probe;
    TempOrdner ordner;
    const fs::path bezirk = ordner / "musterstadt.xml";
    fs::copy_file(fs::path(FLURIX_QUELLEN) / "samples" / "musterstadt_nas.xml", bezirk);
    std::vector<fs::path> dateien = {bezirk};
    std::int64_t flurstückeDerProben = 0;
    for (const auto& probe : proben) {
        dateien.push_back(wfs / probe);
        const std::string text = DateiLesen(wfs / probe);
        for (auto pos = text.find("<AX_Flurstueck "); pos != std::string::npos;
             pos = text.find("<AX_Flurstueck ", pos + 1))
            ++flurstückeDerProben;
    }
    dateien.push_back(wfs / proben.front());
    ASSERT_EQ(flurstückeDerProben, 30);

    SkriptOberfläche ui;
    XmlBericht zusammen, dünn;
    ASSERT_TRUE(XmlZusammenfügen(dateien, {}, ui, zusammen));
    EXPECT_EQ(zusammen.doppelt, 10u);
    const fs::path merge = ordner / "musterstadt_MERGE.xml";
    ASSERT_TRUE(XmlAusdünnen(merge, {"AX_Person"}, ui, dünn));
    const fs::path ausgedünnt = ordner / "musterstadt_MERGE_Ausdünnen.xml";

    const auto vorher = Eingelesen(bezirk, ordner.pfad());
    ASSERT_GT(Anzahl(vorher, "ax_person"), 0);
    auto erwartet = vorher;
    erwartet["ax_flurstueck"] += flurstückeDerProben;
    EXPECT_EQ(Eingelesen(merge, ordner.pfad()), erwartet);
    auto ohnePersonen = Eingelesen(ausgedünnt, ordner.pfad());
    EXPECT_EQ(Anzahl(ohnePersonen, "ax_person"), 0);
    EXPECT_EQ(static_cast<std::int64_t>(dünn.übersprungen), Anzahl(vorher, "ax_person"));
    erwartet.erase("ax_person");
    ohnePersonen.erase("ax_person");
    EXPECT_EQ(ohnePersonen, erwartet);

    if (!test::ImSuchpfad("ogrinfo"))
        GTEST_SKIP() << "ogrinfo (gdal-bin) fehlt: GDAL liest die Ergebnisse nicht nach";
    const auto gdalVorher = test::KlassenNachGdal(bezirk);
    const auto gdalMerge = test::KlassenNachGdal(merge);
    const auto gdalDünn = test::KlassenNachGdal(ausgedünnt);
    for (const auto* k : {&gdalVorher, &gdalMerge, &gdalDünn})
        ASSERT_TRUE(k->fehler.empty() && k->nas) << k->fehler;
    EXPECT_EQ(Anzahl(gdalMerge.anzahl, "ax_flurstueck"),
              Anzahl(gdalVorher.anzahl, "ax_flurstueck") + 30);
    EXPECT_EQ(Anzahl(gdalDünn.anzahl, "ax_person"), 0);
    EXPECT_EQ(Anzahl(gdalDünn.anzahl, "ax_flurstueck"), Anzahl(gdalMerge.anzahl, "ax_flurstueck"));
}

} // namespace
} // namespace flurix::nas
