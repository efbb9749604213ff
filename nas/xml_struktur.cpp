#include "nas/xml_struktur.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/datenbank.hpp"
#include "core/oberflaeche.hpp"

#include <pugixml.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

namespace flurix::nas {
namespace {

constexpr std::string_view TitelKarte = "Map-Viewer";
constexpr std::string_view TitelFehler = "Fehler";
constexpr std::string_view TextLeer = "OpenXMLDocumentAndFillStructure: leeres Abfrageergebnis! "
                                      "Bitte kontaktieren Sie den Programmautor!   ";
constexpr std::string_view TextLadefehler =
    "Fehler beim Laden des Dokumentes. Der Fehler wird ignoriert!   ";
constexpr std::string_view StatusLaden = "XML(DOM)-Datei wird geladen...";
constexpr std::string_view StatusAnlegen = "XML-DAO-Datenbank anlegen...";
constexpr std::string_view StatusZuordnen = "XML-Daten der DAO-Datenbank zuordnen...";

constexpr std::string_view Tabelle = "XML";
// The fixed columns, in this order before the element columns.
constexpr std::array<std::string_view, 4> FesteSpalten = {"XMLId", "XMLlfdKnotenNr", "XMLDaten",
                                                           "typename"};
constexpr std::size_t SpalteId = 0, SpalteKnoten = 1, SpalteDaten = 2, SpalteTypname = 3;
// SQLite's default limit of columns per table (SQLITE_MAX_COLUMN).
constexpr std::size_t HöchstSpalten = 2000;
// The progress display is touched every so many rows.
constexpr std::int64_t FortschrittSchritt = 500;

// Column names as SQLite compares them: ASCII letters without regard to case.
std::string NameFalten(std::string_view name) {
    std::string text(name);
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::string_view Trimmen(std::string_view text) {
    constexpr std::string_view leer = " \t\r\n";
    const auto anfang = text.find_first_not_of(leer);
    if (anfang == std::string_view::npos)
        return {};
    return text.substr(anfang, text.find_last_not_of(leer) - anfang + 1);
}

// The local part of an element name: "dog:Ort" gives "Ort".
std::string_view Basisname(std::string_view name) {
    const auto doppelpunkt = name.rfind(':');
    return doppelpunkt == std::string_view::npos ? name : name.substr(doppelpunkt + 1);
}

bool IstText(const pugi::xml_node& knoten) {
    return knoten.type() == pugi::node_pcdata || knoten.type() == pugi::node_cdata;
}

// A number with "." as thousands separator, as the messages write counts: 2001 gives "2.001".
std::string MitTausendern(std::size_t zahl) {
    const std::string ziffern = std::to_string(zahl);
    std::string text;
    for (std::size_t i = 0; i < ziffern.size(); ++i) {
        if (i > 0 && (ziffern.size() - i) % 3 == 0)
            text += '.';
        text += ziffern[i];
    }
    return text;
}

// The reason of a parse error in German words.
std::string_view Grund(pugi::xml_parse_status status) {
    switch (status) {
    case pugi::status_out_of_memory:
        return "Zu wenig Speicher für das Dokument";
    case pugi::status_unrecognized_tag:
        return "Unbekannte Markierung";
    case pugi::status_bad_pi:
        return "Fehlerhafte Verarbeitungsanweisung oder XML-Deklaration";
    case pugi::status_bad_comment:
        return "Fehlerhafter Kommentar";
    case pugi::status_bad_cdata:
        return "Fehlerhafter CDATA-Abschnitt";
    case pugi::status_bad_doctype:
        return "Fehlerhafte Dokumenttypdeklaration";
    case pugi::status_bad_pcdata:
        return "Fehlerhafter Text";
    case pugi::status_bad_start_element:
        return "Fehlerhaftes Starttag";
    case pugi::status_bad_attribute:
        return "Fehlerhaftes Attribut";
    case pugi::status_bad_end_element:
        return "Fehlerhaftes Endtag";
    case pugi::status_end_element_mismatch:
        return "Das Endtag passt nicht zum Starttag";
    case pugi::status_no_document_element:
        return "Das Dokument hat kein Wurzelelement";
    default:
        return "Das Dokument kann nicht gelesen werden";
    }
}

// Line and character (both from 1) of a byte offset in UTF-8 text; characters, not bytes, are
// counted, as a person counts them in an editor.
std::pair<std::size_t, std::size_t> Stelle(std::string_view text, std::size_t offset) {
    offset = std::min(offset, text.size());
    std::size_t zeile = 1, zeichen = 1;
    for (std::size_t i = 0; i < offset; ++i) {
        const auto b = static_cast<unsigned char>(text[i]);
        if (b == '\n') {
            ++zeile;
            zeichen = 1;
        } else if ((b & 0xC0) != 0x80) {
            ++zeichen;
        }
    }
    return {zeile, zeichen};
}

// The walk over the elements of the document that both passes share: depth, record counter and
// row counter move the same way in both, so that the second pass writes the rows the first one
// counted. The walk keeps its place in a stack, not in recursion, so a deeply nested document
// can't exhaust the call stack.
struct Zähler {
    int tiefe = 0;
    std::int64_t knoten = 0;        // records opened so far
    std::int64_t zeile = 0;         // rows started so far
    std::int64_t letzterKnoten = -1; // the record of the last row; -1: no row yet
};

template <typename Besuch>
void Gehen(const pugi::xml_node& wurzel, int satzebene, Zähler& z, Besuch&& besuch) {
    if (!wurzel)
        return;
    struct Kontext {
        pugi::xml_node knoten;
        pugi::xml_node nächstesKind;
    };
    std::vector<Kontext> stapel;
    auto betreten = [&](const pugi::xml_node& element) {
        ++z.tiefe;
        if (z.tiefe == satzebene)
            ++z.knoten;
        bool neueZeile = false;
        if (IstText(element.first_child()) && z.knoten != z.letzterKnoten) {
            ++z.zeile;
            z.letzterKnoten = z.knoten;
            neueZeile = true;
        }
        besuch(element, neueZeile);
        stapel.push_back({element, element.first_child()});
    };
    betreten(wurzel);
    while (!stapel.empty()) {
        Kontext& oben = stapel.back();
        pugi::xml_node kind = oben.nächstesKind;
        while (kind && kind.type() != pugi::node_element)
            kind = kind.next_sibling();
        if (!kind) {
            stapel.pop_back();
            --z.tiefe;
            continue;
        }
        oben.nächstesKind = kind.next_sibling();
        betreten(kind);
    }
}

// The text of a value element: its first text child, trimmed.
std::string_view Wert(const pugi::xml_node& element) {
    return Trimmen(element.first_child().value());
}

// The columns of the table XML as this load writes them: the fixed ones, then the element
// columns, each with the real name it has in the table.
class Spalten {
public:
    // Adds a name unless a column of the same folded name exists; returns its index.
    std::size_t Hinzufügen(std::string_view name) {
        const auto [it, neu] = m_index.try_emplace(NameFalten(name), m_namen.size());
        if (neu)
            m_namen.emplace_back(name);
        return it->second;
    }
    std::optional<std::size_t> Finden(std::string_view name) const {
        const auto it = m_index.find(NameFalten(name));
        if (it == m_index.end())
            return std::nullopt;
        return it->second;
    }
    const std::vector<std::string>& Namen() const { return m_namen; }

private:
    std::vector<std::string> m_namen;
    std::unordered_map<std::string, std::size_t> m_index;
};

// Fails the load: the message is shown and returned.
XmlStrukturErgebnis Fehlschlag(XmlStrukturErgebnis ergebnis, std::string meldung,
                               std::string_view titel, Stil stil, Oberfläche& ui) {
    ui.Meldung(meldung, titel, stil);
    ergebnis.ergebnis = Ergebnis::Fehlschlag(std::move(meldung));
    ergebnis.datenbank.clear();
    ergebnis.zeilen = 0;
    return ergebnis;
}

/// The refusal of a document with a document type declaration.
std::string DoctypeMeldung(const std::filesystem::path& datei) {
    return "Die XML-Datei \"" + datei.string() +
           "\" enthält eine Dokumenttypdeklaration (DOCTYPE). Solche "
           "Dateien werden nicht gelesen, denn ihre Entitäten könnten "
           "Inhalte von außerhalb einschleusen.   ";
}

/// The refusal of a document with more element names than a table can hold.
std::string ZuVieleSpaltenMeldung(const std::filesystem::path& datei, std::size_t elementSpalten,
                                  std::size_t spalten) {
    return "Die XML-Datei \"" + datei.string() + "\" enthält " + MitTausendern(elementSpalten) +
           " verschiedene Elementnamen. Eine Tabelle kann höchstens " +
           MitTausendern(HöchstSpalten) + " Spalten aufnehmen, mit diesen wären es " +
           MitTausendern(spalten) + ". Die Datei wird nicht gelesen.   ";
}

/// Parses the prepared text. The text is UTF-8 by now: the encoding is given, so that a
/// declaration such as encoding="ISO-8859-1" does not make the parser convert it a second time.
/// The document type declaration is parsed only to be found and refused; pugixml never expands
/// entities, and a document with a DOCTYPE is not read at all. True when it has one.
bool DokumentParsenMitDoctype(pugi::xml_document& dokument, pugi::xml_parse_result& geparst,
                              const std::string& text) {
    geparst = dokument.load_buffer(text.data(), text.size(),
                                   pugi::parse_default | pugi::parse_doctype, pugi::encoding_utf8);
    bool mitDoctype = geparst.status == pugi::status_bad_doctype;
    for (const pugi::xml_node& kind : dokument.children())
        mitDoctype = mitDoctype || kind.type() == pugi::node_doctype;
    return mitDoctype;
}

/// A parse error is shown and passed over: what was read until then is kept.
void LadefehlerZeigen(const std::string& text, const pugi::xml_parse_result& geparst,
                      Oberfläche& ui) {
    const auto [zeile, zeichen] = Stelle(text, static_cast<std::size_t>(geparst.offset));
    ui.Meldung(std::string(TextLadefehler) + "\nGrund: " + std::string(Grund(geparst.status)) +
                   "\nZeile: " + std::to_string(zeile) + "\nZeichen: " + std::to_string(zeichen),
               TitelFehler, Stil::Warnung);
}

/// First pass: the element columns (the rows are counted in `zähler`).
Spalten ElementSpaltenSammeln(const pugi::xml_node& wurzel, int satzebene, Zähler& zähler) {
    const std::string_view wurzelBasis = wurzel ? Basisname(wurzel.name()) : std::string_view{};
    Spalten neueSpalten;
    Gehen(wurzel, satzebene, zähler, [&](const pugi::xml_node& element, bool) {
        if (Basisname(element.name()) != wurzelBasis && element.first_child())
            neueSpalten.Hinzufügen(element.name());
    });
    return neueSpalten;
}

/// Without the append flag the old database goes first. Throws Fehler when it can't.
void AlteDatenbankLöschen(const std::filesystem::path& pfad) {
    std::error_code fehler;
    std::filesystem::remove(pfad, fehler);
    if (fehler)
        throw Fehler("Die Datenbank \"" + pfad.string() +
                     "\" kann nicht gelöscht werden: " + fehler.message());
}

/// The columns of the table in the order of the insert: what the table has, then what this
/// document adds.
Spalten TabellenSpalten(Datenbank& db, bool tabelleDa, const Spalten& neueSpalten) {
    Spalten spalten;
    if (tabelleDa) {
        for (const std::string& name : db.Spaltennamen(Tabelle))
            spalten.Hinzufügen(name);
        for (std::string_view fest : FesteSpalten)
            if (!spalten.Finden(fest))
                spalten.Hinzufügen(fest);
    } else {
        for (std::string_view fest : FesteSpalten)
            spalten.Hinzufügen(fest);
    }
    for (const std::string& name : neueSpalten.Namen())
        spalten.Hinzufügen(name);
    return spalten;
}

/// Creates the table, or adds the columns from `vorhanden` on to the one there.
void TabelleAnlegenOderErweitern(Datenbank& db, bool tabelleDa, const Spalten& spalten,
                                 std::size_t vorhanden) {
    if (!tabelleDa) {
        std::vector<Feld> felder;
        for (const std::string& name : spalten.Namen())
            felder.push_back({name, Feldtyp::Text});
        db.TabelleAnlegen(Tabelle, felder);
    } else {
        for (std::size_t i = vorhanden; i < spalten.Namen().size(); ++i)
            db.AusführenNativ("ALTER TABLE " + Bezeichner(Tabelle) + " ADD COLUMN " +
                              Bezeichner(spalten.Namen()[i]) + " TEXT COLLATE NOCASE");
    }
}

Anweisung EinfügenVorbereiten(Datenbank& db, const Spalten& spalten) {
    std::string sql = "INSERT INTO " + Bezeichner(Tabelle) + " (";
    std::string platzhalter;
    for (std::size_t i = 0; i < spalten.Namen().size(); ++i) {
        sql += (i == 0 ? "" : ", ") + Bezeichner(spalten.Namen()[i]);
        platzhalter += i == 0 ? "?" : ", ?";
    }
    sql += ") VALUES (" + platzhalter + ")";
    return db.VorbereitenNativ(sql);
}

void AnZelleAnhängen(std::optional<std::string>& zelle, std::string_view wert) {
    if (!zelle)
        zelle.emplace();
    if (!zelle->empty())
        *zelle += ';';
    *zelle += wert;
}

/// Second pass: the rows. A row is edited only while it is the last one, so it is built in
/// memory and written when the next row starts or the walk ends. Counts the rows written in
/// `ergebnis.zeilen`; `zeilenGesamt` is the count of the first pass, for the progress.
void ZeilenEinfügen(const pugi::xml_node& wurzel, const Spalten& spalten, Anweisung& einfügen,
                    XmlStrukturErgebnis& ergebnis, std::int64_t zeilenGesamt,
                    bool fortschrittZeigen, Oberfläche& ui) {
    const std::string_view wurzelBasis = wurzel ? Basisname(wurzel.name()) : std::string_view{};
    std::vector<std::size_t> festIndex;
    for (std::string_view name : FesteSpalten)
        festIndex.push_back(*spalten.Finden(name));
    std::vector<std::optional<std::string>> zeile(spalten.Namen().size());
    bool zeileOffen = false;
    auto schreiben = [&] {
        if (!zeileOffen)
            return;
        for (const auto& zelle : zeile) {
            if (zelle)
                einfügen.Binde(*zelle);
            else
                einfügen.Binde(nullptr);
        }
        einfügen.Schritt();
        einfügen.Zurücksetzen();
        ++ergebnis.zeilen;
        if (fortschrittZeigen && ergebnis.zeilen % FortschrittSchritt == 0)
            ui.Fortschritt(ergebnis.zeilen, zeilenGesamt);
    };
    Zähler zweiter;
    Gehen(wurzel, ergebnis.satzebene, zweiter, [&](const pugi::xml_node& element, bool neueZeile) {
        if (!IstText(element.first_child()))
            return;
        if (neueZeile) {
            schreiben();
            std::fill(zeile.begin(), zeile.end(), std::nullopt);
            zeileOffen = true;
        }
        zeile[festIndex[SpalteTypname]] = ergebnis.typname;
        zeile[festIndex[SpalteId]] = std::to_string(zweiter.zeile);
        zeile[festIndex[SpalteKnoten]] = std::to_string(zweiter.knoten);
        AnZelleAnhängen(zeile[festIndex[SpalteDaten]], element.name());
        // An element named like the document element has no column of its own.
        if (Basisname(element.name()) != wurzelBasis)
            if (const auto spalte = spalten.Finden(element.name()))
                AnZelleAnhängen(zeile[*spalte], Wert(element));
    });
    schreiben();
}

/// The load after the file was found; throws on database errors (the caller reports them).
XmlStrukturErgebnis StrukturEinlesen(XmlStrukturErgebnis& ergebnis,
                                     const std::filesystem::path& datei, int satzebene,
                                     bool anhängen, bool fortschrittZeigen, Oberfläche& ui) {
    const std::string bytes = DateiKomplettLesen(datei);
    if (Trimmen(bytes).size() < 5)
        return Fehlschlag(std::move(ergebnis), std::string(TextLeer), TitelKarte, Stil::Warnung,
                          ui);
    const std::string text = XmlTextVorbereiten(bytes);
    const XmlSatz gefunden = XmlSatzebene(text);
    ergebnis.satzebene = satzebene > 0 ? satzebene : gefunden.ebene;
    ergebnis.typname = gefunden.typname;

    if (fortschrittZeigen)
        ui.Status(1, StatusLaden);
    pugi::xml_document dokument;
    pugi::xml_parse_result geparst;
    if (DokumentParsenMitDoctype(dokument, geparst, text))
        return Fehlschlag(std::move(ergebnis), DoctypeMeldung(datei), TitelFehler, Stil::Fehler,
                          ui);
    if (!geparst)
        LadefehlerZeigen(text, geparst, ui);
    const pugi::xml_node wurzel = dokument.document_element();

    if (fortschrittZeigen)
        ui.Status(1, StatusAnlegen);
    Zähler erster;
    const Spalten neueSpalten = ElementSpaltenSammeln(wurzel, ergebnis.satzebene, erster);
    ergebnis.elementSpalten = neueSpalten.Namen().size();

    const std::filesystem::path pfad = XmlDatenbankPfad(datei);
    // Without the append flag, more names than a table can hold are refused before the old
    // database is deleted; with it, the columns the table has already count as well.
    auto zuVieleSpalten = [&](std::size_t spalten) {
        return Fehlschlag(std::move(ergebnis),
                          ZuVieleSpaltenMeldung(datei, ergebnis.elementSpalten, spalten),
                          TitelFehler, Stil::Fehler, ui);
    };
    if (FesteSpalten.size() + neueSpalten.Namen().size() > HöchstSpalten)
        return zuVieleSpalten(FesteSpalten.size() + neueSpalten.Namen().size());
    if (!anhängen)
        AlteDatenbankLöschen(pfad);
    Datenbank db(pfad);
    const bool tabelleDa = db.TabelleVorhanden(Tabelle);
    const Spalten spalten = TabellenSpalten(db, tabelleDa, neueSpalten);
    const std::size_t vorhanden = tabelleDa ? db.Spaltennamen(Tabelle).size() : 0;
    if (spalten.Namen().size() > HöchstSpalten)
        return zuVieleSpalten(spalten.Namen().size());

    Transaktion transaktion(db);
    TabelleAnlegenOderErweitern(db, tabelleDa, spalten, vorhanden);
    Anweisung einfügen = EinfügenVorbereiten(db, spalten);
    if (fortschrittZeigen)
        ui.Status(1, StatusZuordnen);
    ZeilenEinfügen(wurzel, spalten, einfügen, ergebnis, erster.zeile, fortschrittZeigen, ui);
    transaktion.Bestätigen();
    if (fortschrittZeigen)
        ui.Fortschritt(ergebnis.zeilen, erster.zeile);

    ergebnis.datenbank = pfad;
    ergebnis.ergebnis = Ergebnis::Ok();
    return ergebnis;
}

} // namespace

std::filesystem::path XmlDatenbankPfad(const std::filesystem::path& datei) {
    std::filesystem::path pfad = datei;
    if (pfad.extension() == ".sqlite")
        pfad += ".sqlite";
    else
        pfad.replace_extension(".sqlite");
    return pfad;
}

XmlSatz XmlSatzebene(std::string_view text) {
    XmlSatz satz;
    if (text.find("TYPENAME=dog") != std::string_view::npos ||
        text.find("TYPENAME=app") != std::string_view::npos)
        satz.ebene = 2;
    if (text.find("AX_Bestandsdatenauszug") != std::string_view::npos)
        satz.ebene = 5;
    for (std::string_view marke : {";TYPENAME=dog:", ";TYPENAME=app:"}) {
        const auto pos = text.find(marke);
        if (pos == std::string_view::npos)
            continue;
        const auto rest = text.substr(pos + marke.size());
        satz.typname = std::string(rest.substr(0, rest.find('&')));
        break;
    }
    return satz;
}

std::string XmlTextVorbereiten(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);

    std::string text;
    if (IstGültigesUtf8(bytes)) {
        text = std::string(bytes);
    } else {
        // An 8-bit text. Its umlauts at the Windows-1252 places mean it is 1252, and then bytes
        // such as 132 („) and 225 (á) are meant as they are; without them, umlauts at the DOS
        // places are what the old program repaired.
        std::string achtBit(bytes);
        constexpr std::string_view umlaute1252 = "\xC4\xD6\xDC\xE4\xF6\xFC\xDF";
        if (achtBit.find_first_of(umlaute1252) == std::string::npos) {
            for (char& c : achtBit) {
                switch (static_cast<unsigned char>(c)) {
                case 142: c = '\xC4'; break; // Ä
                case 154: c = '\xDC'; break; // Ü
                case 153: c = '\xD6'; break; // Ö
                case 132: c = '\xE4'; break; // ä
                case 129: c = '\xFC'; break; // ü
                case 148: c = '\xF6'; break; // ö
                case 225: c = '\xDF'; break; // ß
                default: break;
                }
            }
        }
        text = Cp1252NachUtf8(achtBit);
    }

    // Line ends: a run of CR becomes one CR; an LF without CR before it becomes CR LF.
    std::string ergebnis;
    ergebnis.reserve(text.size() + text.size() / 32);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\r')
            continue;
        if (c == '\n' && (ergebnis.empty() || ergebnis.back() != '\r'))
            ergebnis += '\r';
        ergebnis += c;
    }
    return ergebnis;
}

XmlStrukturErgebnis XmlStrukturLaden(const std::filesystem::path& datei, int satzebene,
                                     bool anhängen, bool fortschrittZeigen, Oberfläche& ui) {
    XmlStrukturErgebnis ergebnis;
    // The Windows program lower-cased the path first. Linux file names are case-sensitive:
    // the lower-cased name would name another file, or none.
    if (!DateiVorhanden(datei)) {
        ergebnis.ergebnis = Ergebnis::Fehlschlag("XML-Datei nicht vorhanden: " + datei.string());
        return ergebnis;
    }
    try {
        return StrukturEinlesen(ergebnis, datei, satzebene, anhängen, fortschrittZeigen, ui);
    } catch (const std::exception& e) {
        return Fehlschlag(std::move(ergebnis), e.what(), TitelFehler, Stil::Fehler, ui);
    }
}

} // namespace flurix::nas
